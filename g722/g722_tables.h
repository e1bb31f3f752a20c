/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.722 constant tables (G.722 clause 6, Tables 6 to 14 and the QMF
// coefficients of clause 3.2), and the per-code lookups the sub-band ADPCM
// coders derive from them at compile time.
//
// Quantiser levels and inverse-quantiser outputs are the standard's values
// (Q-format of the detectors DETL, DETH: 15-bit scale factors); the derived
// tables hold them already shifted left by 3 and signed, as INVQAL, INVQBL,
// INVQAH form them before multiplying by the scale factor.
#pragma once

#include <array>
#include <cstdint>

namespace zeps {

/// Lower sub-band 6-bit quantiser decision levels Q6 (G.722 Table 6).
extern const std::int16_t g722_q6[31];
/// Codes IL of the 6-bit quantiser by sign (0 negative, 1 positive) and
/// interval mil (G.722 Table 6).
extern const std::int16_t g722_misil[2][32];
/// Inverse quantiser output levels: QQ4 (4 bits), QQ5 (5 bits), QQ6 (6 bits)
/// of the lower sub-band, QQ2 of the higher sub-band (G.722 Tables 7, 8).
extern const std::int16_t g722_qq4[8];
extern const std::int16_t g722_qq5[16];
extern const std::int16_t g722_qq6[31];
extern const std::int16_t g722_qq2[3];
/// Code to level index and sign: RIL4/RISI4 (by IL >> 2), RIL5/RISI5 (by
/// IL >> 1), RIL6/RISI6 (by IL), IH2/SIH (by IH).
extern const std::int16_t g722_ril4[16];
extern const std::int16_t g722_risi4[16];
extern const std::int16_t g722_ril5[32];
extern const std::int16_t g722_risi5[32];
extern const std::int16_t g722_ril6[64];
extern const std::int16_t g722_risi6[64];
extern const std::int16_t g722_ih2[4];
extern const std::int16_t g722_sih[4];
/// Log scale-factor multipliers WL (lower, by level index) and WH (higher)
/// (G.722 Tables 9, 10).
extern const std::int16_t g722_wl[8];
extern const std::int16_t g722_wh[3];
/// Antilog table ILA of SCALEL and SCALEH (G.722 Table 11).
extern const std::int16_t g722_ila[353];
/// QMF coefficients h0..h23, doubled as the reference stores them (G.722 3.2).
extern const std::int16_t g722_qmf_coef[24];

/// Signed inverse-quantiser multiplicands (level << 3, negated for a
/// negative code): INVQAL by IL >> 2, INVQBL in mode 1, 2, 3 by the whole
/// 6-bit code IL, INVQAH by IH.
extern const std::array<std::int16_t, 16> g722_invqal;
extern const std::array<std::array<std::int16_t, 64>, 3> g722_invqbl;
extern const std::array<std::int16_t, 4> g722_invqah;
/// WL by IL >> 2 and WH by IH (the log scale-factor adders by code).
extern const std::array<std::int16_t, 16> g722_wl_code;
extern const std::array<std::int16_t, 4> g722_wh_code;
/// The lower sub-band encoder's entry per QUANTL outcome, indexed by
/// sign (1 negative) * 32 + interval mil: the code IL (Table 6) and its
/// INVQAL multiplicand and WL adder.
struct G722LowCode {
    std::int16_t il, invqal, wl;
};
extern const std::array<G722LowCode, 64> g722_low_code;
/// Q6 decision levels shifted left by 3 (the quantiser's multiplicands).
extern const std::array<std::int16_t, 31> g722_q6_x8;

}  // namespace zeps

/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR algebraic codebook searches (3GPP TS 26.073 c2_9pf.c, c2_11pf.c,
// c3_14pf.c, c4_17pf.c, c8_31pf.c, c1035pf.c): the per-mode searches and the
// pieces they share. Target Q0, impulse response Q12, code vector Q13 (Q12
// for MR122), filtered code Q12.
#pragma once

#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace amr_cb {

inline constexpr int kLCode = 40;  ///< L_CODE

/// Signed autocorrelation matrix of the impulse response (cor_h rr[][]).
using CorrMatrix = Word16[kLCode][kLCode];

/// The impulse response with the 40 zeros the reference keeps before it
/// (h[-L_SUBFR..-1]), so that h[i - pos] reads 0 for i < pos.
struct PaddedResponse {
    Word16 buf[2 * kLCode];
    Word16* h() { return buf + kLCode; }
    const Word16* h() const { return buf + kLCode; }
};

/// The fixed-gain pitch contribution added to a vector in place:
/// v[i] += mult(v[i - T0], sharp) for i = T0..39.
inline void add_pitch_contribution(Word16* v, int T0, Word16 sharp) {
    for (int i = T0; i < kLCode; i++) v[i] = add(v[i], mult(v[i - T0], sharp));
}

/// The search criterion sq1 / alp1 > sq / alp, written by the reference as
/// L_msu(L_mult(alp, sq1), sq, alp1) > 0. The squares sq1, sq lie in
/// -1..32767 (mult(ps, ps) or the start value -1), so neither L_mult meets
/// -32768 * -32768 and both are exact, and the saturation of L_msu keeps the
/// sign of the exact difference: the test is the plain product comparison.
inline bool improves(Word16 sq1, Word16 alp1, Word16 sq, Word16 alp) {
    return std::int32_t{alp} * sq1 > std::int32_t{sq} * alp1;
}

/// Filtered code of n pulses: y[i] = round(sum_k h[i - pos_k] * sign_k),
/// each product accumulated with the reference's saturating L_mac (the
/// baseline of filter_pulses in cb_candidates.h).
inline void filter_pulses_scalar(const PaddedResponse& hp, const Word16* pos, const Word16* sgn, int n, Word16* y) {
    const Word16* h = hp.h();
    for (int i = 0; i < kLCode; i++) {
        Word32 s = 0;
        for (int k = 0; k < n; k++) s = L_mac(s, h[i - pos[k]], sgn[k]);
        y[i] = round_fx(s);
    }
}

/// code_2i40_9bits (MR475, MR515); returns the position index, *sign the sign bits.
Word16 code_2i40_9bits(Word16 subNr, const Word16* x, PaddedResponse& h, Word16 T0, Word16 pitch_sharp,
                       Word16* code, Word16* y, Word16* sign);
/// code_2i40_11bits (MR59).
Word16 code_2i40_11bits(const Word16* x, PaddedResponse& h, Word16 T0, Word16 pitch_sharp, Word16* code,
                        Word16* y, Word16* sign);
/// code_3i40_14bits (MR67).
Word16 code_3i40_14bits(const Word16* x, PaddedResponse& h, Word16 T0, Word16 pitch_sharp, Word16* code,
                        Word16* y, Word16* sign);
/// code_4i40_17bits (MR74, MR795).
Word16 code_4i40_17bits(const Word16* x, PaddedResponse& h, Word16 T0, Word16 pitch_sharp, Word16* code,
                        Word16* y, Word16* sign);
/// code_8i40_31bits (MR102): 7 index words.
void code_8i40_31bits(const Word16* x, const Word16* cn, const PaddedResponse& h, Word16* cod, Word16* y,
                      Word16* indx);
/// code_10i40_35bits (MR122): 10 index words.
void code_10i40_35bits(const Word16* x, const Word16* cn, const PaddedResponse& h, Word16* cod, Word16* y,
                       Word16* indx);

}  // namespace amr_cb
ZEPS_END_VARIANT

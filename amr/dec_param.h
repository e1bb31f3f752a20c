/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR decoder parameters of a frame (3GPP TS 26.073 bits2prm.c
// Bits2prm, d_homing.c decoder homing frame test, b_cn_cod.c parameter
// widths): parameter counts and widths per mode, MRDTX last.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_dtx.h"
#include "amr/dec_state.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline constexpr int kMaxPrm = 57;    ///< MAX_PRM_SIZE
inline constexpr int kSerialBits = 244;  ///< MAX_SERIAL_SIZE

/// prmno: parameters per mode (MRDTX last).
inline constexpr Word16 kPrmNo[9] = {17, 19, 19, 19, 19, 23, 39, 57, 5};
/// prmnofsf: parameters up to the end of the first subframe.
inline constexpr Word16 kPrmNoFsf[8] = {7, 7, 7, 7, 7, 8, 12, 18};

inline const std::int16_t* bitno(int mode) {
    namespace t = zeps::amr_dec_tab;
    static const std::int16_t* const tab[9] = {t::bitno_MR475, t::bitno_MR515, t::bitno_MR59,
                                               t::bitno_MR67,  t::bitno_MR74,  t::bitno_MR795,
                                               t::bitno_MR102, t::bitno_MR122, t::bitno_MRDTX};
    return tab[mode];
}

/// Bits2prm: serial bits (one a word, nonzero = 1, MSB first) to parameters.
inline void bits2prm(int mode, const Word16* bits, Word16* prm) {
    const std::int16_t* widths = bitno(mode);
    for (int i = 0; i < kPrmNo[mode]; i++) {
        Word16 v = 0;
        for (int b = 0; b < widths[i]; b++) v = static_cast<Word16>((v << 1) | (*bits++ != 0 ? 1 : 0));
        prm[i] = v;
    }
}

/// dhf_test: true when the first nparms parameters of the frame equal the
/// decoder homing frame of the mode.
inline bool homing_frame_test(const Word16* bits, int mode, bool first_subframe_only) {
    namespace t = zeps::amr_dec_tab;
    static const std::int16_t* const dhf[8] = {t::dhf_MR475, t::dhf_MR515, t::dhf_MR59,  t::dhf_MR67,
                                               t::dhf_MR74,  t::dhf_MR795, t::dhf_MR102, t::dhf_MR122};
    // Each parameter read and compared in turn: the first that differs decides.
    const std::int16_t* widths = bitno(mode);
    const int n = first_subframe_only ? kPrmNoFsf[mode] : kPrmNo[mode];
    for (int i = 0; i < n; i++) {
        Word16 v = 0;
        for (int b = 0; b < widths[i]; b++) v = static_cast<Word16>((v << 1) | (*bits++ != 0 ? 1 : 0));
        if (v != dhf[mode][i]) return false;
    }
    return true;
}

}  // namespace amr_dec
ZEPS_END_VARIANT

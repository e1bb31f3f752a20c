/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR decoder parameters of a frame (3GPP TS 26.073 bits2prm.c
// Bits2prm, d_homing.c decoder homing frame test, b_cn_cod.c parameter
// widths): parameter counts and widths per mode, MRDTX last.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_dtx.h"
#include "amr/dec_state.h"

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline constexpr int kMaxPrm = 57;    ///< MAX_PRM_SIZE
inline constexpr int kSerialBits = 244;  ///< MAX_SERIAL_SIZE

/// prmno: parameters per mode (MRDTX last).
inline constexpr Word16 kPrmNo[9] = {17, 19, 19, 19, 19, 23, 39, 57, 5};
/// prmnofsf: parameters up to the end of the first subframe.
inline constexpr Word16 kPrmNoFsf[8] = {7, 7, 7, 7, 7, 8, 12, 18};

/// Serial bits per mode (the sum of its parameter widths; MRDTX last).
inline constexpr Word16 kBitsNo[9] = {95, 103, 118, 134, 148, 159, 204, 244, 35};

inline const std::int16_t* bitno(int mode) {
    namespace t = zeps::amr_dec_tab;
    static const std::int16_t* const tab[9] = {t::bitno_MR475, t::bitno_MR515, t::bitno_MR59,
                                               t::bitno_MR67,  t::bitno_MR74,  t::bitno_MR795,
                                               t::bitno_MR102, t::bitno_MR122, t::bitno_MRDTX};
    return tab[mode];
}

/// Bits2prm: serial bits (one a word, nonzero = 1, MSB first) to parameters.
/// The bit-serial form (the baseline of bits2prm).
inline void bits2prm_serial(int mode, const Word16* bits, Word16* prm) {
    const std::int16_t* widths = bitno(mode);
    for (int i = 0; i < kPrmNo[mode]; i++) {
        Word16 v = 0;
        for (int b = 0; b < widths[i]; b++) v = static_cast<Word16>((v << 1) | (*bits++ != 0 ? 1 : 0));
        prm[i] = v;
    }
}

/// Bits2prm on packed bits: the n serial words (nonzero = 1) as a string of
/// 64-bit words, bit 63 of word 0 first (with SSSE3 sixteen words at a time:
/// the block reversed, compared with zero and gathered by pmovmskb); each
/// parameter then the next width (at most 16) bits of a 64-bit window.
inline void bits2prm(int mode, const Word16* bits, Word16* prm) {
    const std::int16_t* widths = bitno(mode);
    const int nprm = kPrmNo[mode];
    const int n = kBitsNo[mode];
    std::uint64_t w[kSerialBits / 64 + 2] = {};
    int k = 0;
#if defined(__SSSE3__)
    const __m128i rev = _mm_set_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
    const __m128i zero = _mm_setzero_si128();
    for (; k + 16 <= n; k += 16) {
        const __m128i a = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bits + k + 8)), rev);
        const __m128i b = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bits + k)), rev);
        const __m128i z = _mm_packs_epi16(_mm_cmpeq_epi16(a, zero), _mm_cmpeq_epi16(b, zero));
        const std::uint64_t m = ~static_cast<std::uint32_t>(_mm_movemask_epi8(z)) & 0xFFFFu;  // bit 15 = bits[k]
        w[k >> 6] |= m << (48 - (k & 63));
    }
#endif
    for (; k < n; k++)
        if (bits[k] != 0) w[k >> 6] |= std::uint64_t{1} << (63 - (k & 63));
    // No branch: the next word enters as (w >> 1) >> (63 - r), nothing at r = 0,
    // and a width of 0 leaves (win >> 1) >> 63 = 0 for any window.
    int pos = 0;
    for (int i = 0; i < nprm; i++) {
        const int q = pos >> 6, r = pos & 63;
        const std::uint64_t win = (w[q] << r) | ((w[q + 1] >> 1) >> (63 - r));
        prm[i] = static_cast<Word16>((win >> 1) >> (63 - widths[i]));
        pos += widths[i];
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

/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR adaptive codebook decoding (3GPP TS 26.073 dec_lag3.c, dec_lag6.c,
// pred_lt.c). Lags in samples with fractions in 1/3 (resolution 3) or 1/6
// (MR122); the excitation is Q0.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_state.h"
#include "amr/mac_bound.h"

#include <algorithm>

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

ZEPS_BEGIN_VARIANT
namespace amr_dec {

/// Dec_lag3: 1/3-resolution lag of the seven lower modes. subfr_flag 0 for
/// the absolutely coded subframes; flag4 selects the 4-bit delta coding
/// (MR475, MR515, MR59, MR67).
inline void dec_lag3(Word16 index, Word16 t0_min, Word16 t0_max, Word16 subfr_flag, Word16 T0_prev, Word16& T0,
                     Word16& T0_frac, Word16 flag4) {
    if (subfr_flag == 0) {
        if (index < 197) {
            T0 = add(mult(add(index, 2), 10923), 19);
            const Word16 i = add(add(T0, T0), T0);
            T0_frac = add(sub(index, i), 58);
        } else {
            T0 = sub(index, 112);
            T0_frac = 0;
        }
    } else if (flag4 == 0) {
        Word16 i = sub(mult(add(index, 2), 10923), 1);
        T0 = add(i, t0_min);
        i = add(add(i, i), i);
        T0_frac = sub(sub(index, 2), i);
    } else {
        Word16 tmp_lag = T0_prev;
        if (sub(sub(tmp_lag, t0_min), 5) > 0) tmp_lag = add(t0_min, 5);
        if (sub(sub(t0_max, tmp_lag), 4) > 0) tmp_lag = sub(t0_max, 4);
        if (index < 4) {
            T0 = add(sub(tmp_lag, 5), index);
            T0_frac = 0;
        } else if (index < 12) {
            Word16 i = sub(mult(sub(index, 5), 10923), 1);
            T0 = add(i, tmp_lag);
            i = add(add(i, i), i);
            T0_frac = sub(sub(index, 9), i);
        } else {
            T0 = add(add(sub(index, 12), tmp_lag), 1);
            T0_frac = 0;
        }
    }
}

/// Dec_lag6: 1/6-resolution lag of MR122; T0 carries the previous lag in.
inline void dec_lag6(Word16 index, Word16 pit_min, Word16 pit_max, Word16 subfr_flag, Word16& T0, Word16& T0_frac) {
    if (subfr_flag == 0) {
        if (index < 463) {
            T0 = add(mult(add(index, 5), 5462), 17);
            const Word16 i = add(add(T0, T0), T0);
            T0_frac = add(sub(index, add(i, i)), 105);
        } else {
            T0 = sub(index, 368);
            T0_frac = 0;
        }
    } else {
        Word16 T0_min = sub(T0, 5);
        if (T0_min < pit_min) T0_min = pit_min;
        Word16 T0_max = add(T0_min, 9);
        if (T0_max > pit_max) {
            T0_max = pit_max;
            T0_min = sub(T0_max, 9);
        }
        Word16 i = sub(mult(add(index, 5), 5462), 1);
        T0 = add(i, T0_min);
        i = add(add(i, i), i);
        T0_frac = sub(sub(index, 3), add(i, i));
    }
}

/// One interpolated sample of Pred_lt_3or6 on the plain bound: x points at
/// the first of the 20 samples, w holds the taps in their order; the
/// reference's round(2 p) is (p + 2^14) >> 15, clamped only at the top.
inline Word16 pred_lt_plain(const Word16* x, const std::int16_t* w) {
    std::int32_t p = 0;
    for (int k = 0; k < 20; k++) p += x[k] * w[k];
    const std::int32_t r = (p + 0x4000) >> 15;
    return static_cast<Word16>(r > MAX_16 ? MAX_16 : r);
}

#if defined(__SSSE3__)
/// The 20-tap products of one output (x at its first sample) as four
/// 32-bit partial sums: x[0..7] against taps 0..7, x[8..15] against 8..15
/// and x[12..19] against (0, 0, 0, 0, taps 16..19), so nothing past x[19]
/// is read.
inline __m128i pred_lt_dot(const Word16* x, const __m128i* wv) {
    const __m128i a = _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x)), wv[0]);
    const __m128i b = _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + 8)), wv[1]);
    const __m128i c = _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + 12)), wv[2]);
    return _mm_add_epi32(_mm_add_epi32(a, b), c);
}

/// Four outputs of pred_lt_plain, their sums gathered by two rounds of phaddd.
inline __m128i pred_lt_sums4(const Word16* x, const __m128i* wv) {
    const __m128i s01 = _mm_hadd_epi32(pred_lt_dot(x, wv), pred_lt_dot(x + 1, wv));
    const __m128i s23 = _mm_hadd_epi32(pred_lt_dot(x + 2, wv), pred_lt_dot(x + 3, wv));
    return _mm_hadd_epi32(s01, s23);
}

/// Eight samples of pred_lt_plain at once (outputs n = 0..7 from x + n),
/// wv the taps as pred_lt_dot takes them. Exact while the plain bound
/// holds: every partial sum of products is at most 2^30 in magnitude, so no
/// lane sum can wrap in any order; the rounding as psrad, the clamp as
/// packssdw.
inline void pred_lt_lanes8(const Word16* x, const __m128i* wv, Word16* y) {
    const __m128i half = _mm_set1_epi32(0x4000);
    const __m128i lo = _mm_srai_epi32(_mm_add_epi32(pred_lt_sums4(x, wv), half), 15);
    const __m128i hi = _mm_srai_epi32(_mm_add_epi32(pred_lt_sums4(x + 4, wv), half), 15);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y), _mm_packs_epi32(lo, hi));
}
#endif

/// Pred_lt_3or6: the adaptive codebook vector at exc[0..L_subfr-1] by
/// interpolating the past excitation exc[-T0 - 10 ..] with inter_6
/// (every second tap for 1/3 resolution, flag3 != 0).
inline void pred_lt_3or6(Word16* exc, Word16 T0, Word16 frac, int L_subfr, Word16 flag3) {
    using zeps::amr_dec_tab::inter_6;
    constexpr int kUpSamp = 6, kLInter10 = 10;
    Word16* x0 = exc - T0;
    frac = negate(frac);
    if (flag3 != 0) frac = shl(frac, 1);
    if (frac < 0) {
        frac = add(frac, kUpSamp);
        x0--;
    }
    const std::int16_t* c1 = &inter_6[frac];
    const std::int16_t* c2 = &inter_6[kUpSamp - frac];
    // The 20 taps in the order of the samples x1[-9] .. x1[0], x2[0] .. x2[9].
    std::int16_t w[2 * kLInter10];
    std::int64_t c_mag = 0;
    for (int i = 0; i < kLInter10; i++) {
        w[kLInter10 - 1 - i] = c1[kUpSamp * i];
        w[kLInter10 + i] = c2[kUpSamp * i];
        c_mag += mag(c1[kUpSamp * i]) + mag(c2[kUpSamp * i]);
    }
    // m bounds every |sample| read so far: the past excitation the window
    // covers, then each output as it is written (short lags read them back).
    const Word16* first = x0 - (kLInter10 - 1);
    const Word16* last = x0 + L_subfr + kLInter10 - 1;
    std::int32_t m = mag_max(first, static_cast<int>((last < exc ? last + 1 : exc) - first));
    // Output j reads x0[j - 9 .. j + 10]; a block of eight from j reads
    // nothing it writes when x0 + j + 17 < exc + j.
    const bool blocks = x0 + 17 < exc;
    // With lags past the window no output is read back, and m stays as it is.
    const bool reads_back = last >= exc;
#if defined(__SSSE3__)
    const std::int16_t w_tail[8] = {0, 0, 0, 0, w[16], w[17], w[18], w[19]};
    const __m128i wv[3] = {_mm_loadu_si128(reinterpret_cast<const __m128i*>(w)),
                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(w + 8)),
                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(w_tail))};
    // No output read back: m holds for the whole subframe, one check for all blocks.
    if (!reads_back && L_subfr % 8 == 0 && chain_exact(c_mag, m)) {
        for (int j = 0; j < L_subfr; j += 8) pred_lt_lanes8(first + j, wv, exc + j);
        return;
    }
#endif
    for (int j = 0; j < L_subfr;) {
        const Word16* x = x0 + j - (kLInter10 - 1);
        if (!chain_exact(c_mag, m)) {
            Word32 s = 0;
            for (int i = 0, k = 0; i < kLInter10; i++, k += kUpSamp) {
                s = L_mac(s, x0[j - i], c1[k]);
                s = L_mac(s, x0[j + 1 + i], c2[k]);
            }
            exc[j] = round_fx(s);
            m = m > mag(exc[j]) ? m : mag(exc[j]);
            j++;
            continue;
        }
#if defined(__SSSE3__)
        if (blocks && j + 8 <= L_subfr) {
            pred_lt_lanes8(x, wv, exc + j);
            if (reads_back) m = std::max(m, mag_max(exc + j, 8));
            j += 8;
            continue;
        }
#endif
        (void)blocks;
        (void)reads_back;
        exc[j] = pred_lt_plain(x, w);
        m = m > mag(exc[j]) ? m : mag(exc[j]);
        j++;
    }
}

}  // namespace amr_dec
ZEPS_END_VARIANT

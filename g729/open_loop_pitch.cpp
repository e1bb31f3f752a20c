// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 3.4, open-loop pitch analysis (Pitch_ol, Lag_max): the lag of
// the 80-sample weighted-speech frame that maximises the normalised
// autocorrelation over three lag sections, lower sections favoured.
//
// Q formats: weighted speech Q0 (scaled by 2^-3, 1 or 2^3 into a work copy
// by its energy), correlations Q1 (doubled products), normalised maxima Q0
// as the reference's Mpy_32 by the Q30 inverse square root yields them.
#include "common/args.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"
#include "common/pitch_simd.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729p;

inline constexpr int kSpan = kPitMax + kFrame;  // 223 samples read
inline constexpr Word16 kThreshPit = 27853;     // THRESHPIT, 0.85 in Q15

/// Copies pSrc[-143..79] into scal[0..222] scaled as Pitch_ol does: down by
/// 3 bits when the doubled energy saturates, up by 3 bits when it is below
/// 2^20, unchanged otherwise. The energy is a sum of non-negative terms, so
/// the reference's chain saturates exactly when the exact sum exceeds MAX_32.
void scale_signal(const Word16* sig, Word16* scal) {
    const std::int64_t t0 = 2 * energy64(sig, kSpan);
    if (t0 > MAX_32) {
        for (int i = 0; i < kSpan; ++i) scal[i] = shr(sig[i], 3);
    } else if (t0 < 1048576L) {
        for (int i = 0; i < kSpan; ++i) scal[i] = shl(sig[i], 3);
    } else {
        for (int i = 0; i < kSpan; ++i) scal[i] = sig[i];
    }
}

/// Saturating correlation of the frame with the signal delayed by `lag`
/// (step 1 for the base search, 2 for the decimated Annex A search).
inline Word32 corr_at(const Word16* s, int lag, int step) {
    Word32 t = 0;
    for (int j = 0; j < kFrame; j += step) t = L_mac(t, s[j], s[j - lag]);
    return t;
}

/// Correlations of the frame with the signal delayed by lag_hi, lag_hi-1,
/// ..., lag_lo into c[0..]: four lags at a time in 32-bit lanes when
/// `fast` (no partial sum can saturate), else the reference's L_mac loop.
void correlations(const Word16* s, int lag_hi, int lag_lo, bool fast, Word32* c) {
    int i = lag_hi, n = 0;
#if defined(__SSSE3__)
    if (fast) {
        for (; i - 3 >= lag_lo; i -= 4, n += 4) {
            const __m128i v = dot4_lanes(s, s - i, s - i + 1, s - i + 2, s - i + 3, kFrame);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(c + n), _mm_slli_epi32(v, 1));
        }
    }
#endif
    for (; i >= lag_lo; --i, ++n) c[n] = fast ? 2 * dot_lanes(s, s - i, kFrame) : corr_at(s, i, 1);
}

/// Lag_max: the lag of lag_max..lag_min (scanned downwards, a later equal
/// value replaces) with the largest correlation, and that correlation
/// normalised by the energy of the delayed signal.
Word16 lag_max(const Word16* s, Word16 lag_hi, Word16 lag_lo, bool fast, Word16& cor_max) {
    Word32 c[kPitMax];
    correlations(s, lag_hi, lag_lo, fast, c);
    Word32 max = MIN_32;
    Word16 p_max = lag_hi;
    for (int n = 0, i = lag_hi; i >= lag_lo; --i, ++n) {
        if (c[n] >= max) {
            max = c[n];
            p_max = static_cast<Word16>(i);
        }
    }
    Word32 en = 0;
    if (fast) {
        en = static_cast<Word32>(2 * energy64(s - p_max, kFrame));
    } else {
        for (int i = 0; i < kFrame; ++i) en = L_mac(en, s[i - p_max], s[i - p_max]);
    }
    Word16 max_h, max_l, en_h, en_l;
    L_Extract(max, max_h, max_l);
    L_Extract(Inv_sqrt(en), en_h, en_l);
    cor_max = extract_l(Mpy_32(max_h, max_l, en_h, en_l));
    return p_max;
}

}  // namespace

ZepStatus zepsOpenLoopPitchSearch_G729_16s(const Zep16s* pSrc, Zep16s* pBestLag) {
    if (any_null(pSrc, pBestLag)) return zepStsNullPtrErr;
    alignas(16) Word16 scaled[kSpan + 1];
    scale_signal(pSrc - kPitMax, scaled);
    const Word16* s = scaled + kPitMax;
    // Any correlation or energy of two 80-sample windows is bounded by the
    // energy of the whole scaled signal: 2 sum|x y| <= sum x^2 + sum y^2.
    const bool fast = 2 * energy64(scaled, kSpan) <= MAX_32;

    Word16 max1, max2, max3;
    Word16 p1 = lag_max(s, kPitMax, 4 * kPitMin, fast, max1);
    const Word16 p2 = lag_max(s, 4 * kPitMin - 1, 2 * kPitMin, fast, max2);
    const Word16 p3 = lag_max(s, 2 * kPitMin - 1, kPitMin, fast, max3);

    if (mult(max1, kThreshPit) < max2) {
        max1 = max2;
        p1 = p2;
    }
    if (mult(max1, kThreshPit) < max3) p1 = p3;
    *pBestLag = p1;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

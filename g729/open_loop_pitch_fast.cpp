// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 Annex A A.3.4, fast open-loop pitch analysis (Pitch_ol_fast):
// correlations on every second sample, lags 20..39, 40..79 and the even
// lags 80..142 refined by +-1, then the favouring of sub-multiples.
//
// Q formats: weighted speech Q0 (scaled by 2^-3, 1 or 2^3 by the energy of
// every second sample), correlations Q1, normalised maxima Q0 (Mpy_32 by the
// Q30 inverse square root).
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"
#include "common/pitch_simd.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729p;

inline constexpr int kSpan = kPitMax + kFrame;

/// The reference's scaling of the weighted speech (saturating L_mac over
/// every second sample, then shr or shl by 3 with saturation).
void scale_signal_ref(const Word16* sig, Word16* scal) {
    Flag ovf = false;
    Word32 sum = 0;
    for (int i = 0; i < kSpan; i += 2) sum = L_mac(sum, sig[i], sig[i], ovf);
    if (ovf) {
        for (int i = 0; i < kSpan; ++i) scal[i] = shr(sig[i], 3);
    } else if (sum < 1048576L) {
        for (int i = 0; i < kSpan; ++i) scal[i] = shl(sig[i], 3);
    } else {
        for (int i = 0; i < kSpan; ++i) scal[i] = sig[i];
    }
}

/// The same scaling in plain arithmetic: the terms of the chain are
/// non-negative, so it saturates (and sets the overflow) exactly when the
/// exact doubled sum exceeds MAX_32 (-32768^2 doubled included); shr by 3
/// is the arithmetic shift and shl by 3 the product clamped to 16 bits
/// (the odd samples are not bounded by the even ones' energy).
void scale_signal_fast(const Word16* sig, Word16* scal) {
    std::int64_t e = 0;
    for (int i = 0; i < kSpan; i += 2) e += std::int32_t{sig[i]} * sig[i];
    e *= 2;
    if (e > MAX_32) {
        for (int i = 0; i < kSpan; ++i) scal[i] = static_cast<Word16>(sig[i] >> 3);
    } else if (e < 1048576L) {
        for (int i = 0; i < kSpan; ++i)
            scal[i] = static_cast<Word16>(std::clamp(static_cast<std::int32_t>(sig[i]) * 8, std::int32_t{MIN_16}, std::int32_t{MAX_16}));
    } else {
        std::memcpy(scal, sig, kSpan * sizeof(Word16));
    }
}

/// The scaled signal split by parity for the decimated search: ev[k] =
/// scal[2k], od[k] = scal[2k+1] (scal[0] is pSrc[-143]), so the frame's even
/// samples pSrc[2k] are od[71 + k] and pSrc[2k - lag] is od[71 + k - lag/2]
/// for even lags and ev[71 + k - (lag-1)/2] for odd ones.
struct Decimated {
    alignas(16) Word16 ev[120] = {};
    alignas(16) Word16 od[120] = {};
    const Word16* s;  // the scaled frame, for the reference loops
    bool fast;        // no correlation can saturate
    bool fast_energy; // no energy can saturate

    /// lanes false: the reference's L_mac loops throughout.
    Decimated(const Word16* scal, bool lanes) : s(scal + kPitMax) {
        for (int k = 0; k < 112; ++k) ev[k] = scal[2 * k];
        for (int k = 0; k < 111; ++k) od[k] = scal[2 * k + 1];
        // Every delayed window lies in ev or od, the frame in od[71..110]:
        // each partial sum of a correlation is at most 2 sqrt(ef ed) in
        // magnitude (Cauchy-Schwarz), each energy chain at most 1 + 2 ed.
        const std::int64_t ed = std::max(energy64(ev, 112), energy64(od, 112));
        fast = lanes && dot_is_safe(energy64(frame(), 40), ed);
        fast_energy = lanes && 1 + 2 * ed <= MAX_32;
    }
    const Word16* frame() const { return od + 71; }
    const Word16* delayed(int lag) const { return (lag & 1) ? ev + 71 - (lag - 1) / 2 : od + 71 - lag / 2; }

    Word32 corr(int lag) const {
        if (fast) return 2 * dot_lanes(frame(), delayed(lag), 40);
        Word32 t = 0;
        for (int j = 0; j < kFrame; j += 2) t = L_mac(t, s[j], s[j - lag]);
        return t;
    }
#if defined(__SSSE3__)
    /// corr() of the lags lag, lag + step, lag + 2 step, lag + 3 step when
    /// fast: four dot products sharing each load of the frame (the same
    /// pmaddwd pairs and 32-bit sums as dot_lanes, so the same values).
    void corr4(int lag, int step, Word32* c) const {
        const __m128i v = dot4_lanes(frame(), delayed(lag), delayed(lag + step), delayed(lag + 2 * step),
                                     delayed(lag + 3 * step), 40);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(c), _mm_slli_epi32(v, 1));
    }
#endif
    Word32 energy(int lag) const {  // 1 + doubled energy of the delayed even samples
        if (fast_energy) return static_cast<Word32>(1 + 2 * energy64(delayed(lag), 40));
        Word32 en = 1;
        for (int i = 0; i < kFrame; i += 2) en = L_mac(en, s[i - lag], s[i - lag]);
        return en;
    }
};

/// Strict maximum of the decimated correlation over lo..hi (step), first
/// of equal values kept; four lags a step in lanes when no correlation can
/// saturate.
Word16 best_lag(const Decimated& d, int lo, int hi, int step, Word32& max) {
    max = MIN_32;
    Word16 best = static_cast<Word16>(lo);
    int i = lo;
#if defined(__SSSE3__)
    if (d.fast)
        for (; i + 3 * step <= hi; i += 4 * step) {
            Word32 c[4];
            d.corr4(i, step, c);
            for (int k = 0; k < 4; ++k)
                if (c[k] > max) {
                    max = c[k];
                    best = static_cast<Word16>(i + k * step);
                }
        }
#endif
    for (; i <= hi; i += step) {
        const Word32 c = d.corr(i);
        if (c > max) {
            max = c;
            best = static_cast<Word16>(i);
        }
    }
    return best;
}

/// max / sqrt(1 + energy of every second delayed sample), as Pitch_ol_fast.
Word16 normalise(const Decimated& d, Word16 lag, Word32 max) {
    Word16 max_h, max_l, en_h, en_l;
    L_Extract(max, max_h, max_l);
    L_Extract(Inv_sqrt(d.energy(lag)), en_h, en_l);
    return extract_l(Mpy_32(max_h, max_l, en_h, en_l));
}

/// Pitch_ol_fast on pSrc[-143..79]; fast false: the reference's
/// saturating scaling and L_mac loops throughout.
Word16 pitch_ol_fast(const Word16* pSrc, bool fast) {
    Word16 scaled[kSpan];
    if (fast)
        scale_signal_fast(pSrc - kPitMax, scaled);
    else
        scale_signal_ref(pSrc - kPitMax, scaled);
    const Decimated s(scaled, fast);

    Word32 m;
    Word16 T1 = best_lag(s, 20, 39, 1, m);
    Word16 max1 = normalise(s, T1, m);
    const Word16 T2 = best_lag(s, 40, 79, 1, m);
    Word16 max2 = normalise(s, T2, m);
    Word16 T3 = best_lag(s, 80, 142, 2, m);
    const Word16 t3 = T3;
    Word32 c = s.corr(t3 + 1);
    if (c > m) { m = c; T3 = static_cast<Word16>(t3 + 1); }
    c = s.corr(t3 - 1);
    if (c > m) { m = c; T3 = static_cast<Word16>(t3 - 1); }
    const Word16 max3 = normalise(s, T3, m);

    // Favour sub-multiples: |2 T2 - T3| < 5, |3 T2 - T3| < 7, then T1 vs T2.
    Word16 i = sub(shl(T2, 1), T3);
    if (abs_s(i) < 5) max2 = add(max2, shr(max3, 2));
    i = add(i, T2);
    if (abs_s(i) < 7) max2 = add(max2, shr(max3, 2));
    i = sub(shl(T1, 1), T2);
    if (abs_s(i) < 5) max1 = add(max1, mult(max2, 6554));
    i = add(i, T1);
    if (abs_s(i) < 7) max1 = add(max1, mult(max2, 6554));

    if (max1 < max2) {
        max1 = max2;
        T1 = T2;
    }
    if (max1 < max3) T1 = T3;
    return T1;
}

}  // namespace

ZepStatus zepsOpenLoopPitchSearch_G729A_16s(const Zep16s* pSrc, Zep16s* pBestLag) {
    if (any_null(pSrc, pBestLag)) return zepStsNullPtrErr;
    *pBestLag = pitch_ol_fast(pSrc, true);
    return zepStsNoErr;
}

/// Out-of-line entries to the fast and reference forms (scaling alone, and
/// the whole search on pSrc[-143..79]), for the tests that hold them against
/// each other (not exported from the library).
void g729_ol_scale(bool fast, const Word16* sig, Word16* scal) {
    if (fast)
        scale_signal_fast(sig, scal);
    else
        scale_signal_ref(sig, scal);
}

Word16 g729_ol_pitch_a(bool fast, const Word16* src) { return pitch_ol_fast(src, fast); }

ZEPS_END_VARIANT

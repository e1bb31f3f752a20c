// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 Annex A A.3.4, fast open-loop pitch analysis (Pitch_ol_fast):
// correlations on every second sample, lags 20..39, 40..79 and the even
// lags 80..142 refined by +-1, then the favouring of sub-multiples.
//
// Q formats: weighted speech Q0 (scaled by 2^-3, 1 or 2^3 by the energy of
// every second sample), correlations Q1, normalised maxima Q0 (Mpy_32 by the
// Q30 inverse square root).
#include "common/args.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"
#include "g729/pitch_simd.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729p;

inline constexpr int kSpan = kPitMax + kFrame;

void scale_signal_fast(const Word16* sig, Word16* scal) {
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

/// The scaled signal split by parity for the decimated search: ev[k] =
/// scal[2k], od[k] = scal[2k+1] (scal[0] is pSrc[-143]), so the frame's even
/// samples pSrc[2k] are od[71 + k] and pSrc[2k - lag] is od[71 + k - lag/2]
/// for even lags and ev[71 + k - (lag-1)/2] for odd ones.
struct Decimated {
    alignas(16) Word16 ev[120] = {};
    alignas(16) Word16 od[120] = {};
    const Word16* s;  // the scaled frame, for the reference loops
    bool fast;        // no correlation or energy can saturate

    explicit Decimated(const Word16* scal) : s(scal + kPitMax) {
        for (int k = 0; k < 112; ++k) ev[k] = scal[2 * k];
        for (int k = 0; k < 111; ++k) od[k] = scal[2 * k + 1];
        // 2 sum|x y| <= sum x^2 + sum y^2 <= 2 (energy of all samples).
        fast = 2 * (energy64(ev, 112) + energy64(od, 112)) < MAX_32;
    }
    const Word16* frame() const { return od + 71; }
    const Word16* delayed(int lag) const { return (lag & 1) ? ev + 71 - (lag - 1) / 2 : od + 71 - lag / 2; }

    Word32 corr(int lag) const {
        if (fast) return 2 * dot_lanes(frame(), delayed(lag), 40);
        Word32 t = 0;
        for (int j = 0; j < kFrame; j += 2) t = L_mac(t, s[j], s[j - lag]);
        return t;
    }
    Word32 energy(int lag) const {  // 1 + doubled energy of the delayed even samples
        if (fast) return static_cast<Word32>(1 + 2 * energy64(delayed(lag), 40));
        Word32 en = 1;
        for (int i = 0; i < kFrame; i += 2) en = L_mac(en, s[i - lag], s[i - lag]);
        return en;
    }
};

/// Strict maximum of the decimated correlation over lo..hi (step), first
/// of equal values kept.
Word16 best_lag(const Decimated& d, int lo, int hi, int step, Word32& max) {
    max = MIN_32;
    Word16 best = static_cast<Word16>(lo);
    for (int i = lo; i <= hi; i += step) {
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

}  // namespace

ZepStatus zepsOpenLoopPitchSearch_G729A_16s(const Zep16s* pSrc, Zep16s* pBestLag) {
    if (any_null(pSrc, pBestLag)) return zepStsNullPtrErr;
    Word16 scaled[kSpan];
    scale_signal_fast(pSrc - kPitMax, scaled);
    const Decimated s(scaled);

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
    *pBestLag = T1;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

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

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729p;

inline constexpr int kSpan = kPitMax + kFrame;  // 223 samples read
inline constexpr Word16 kThreshPit = 27853;     // THRESHPIT, 0.85 in Q15

/// Copies pSrc[-143..79] into scal[0..222] scaled as Pitch_ol does: down by
/// 3 bits when the doubled energy saturates, up by 3 bits when it is below
/// 2^20, unchanged otherwise.
void scale_signal(const Word16* sig, Word16* scal) {
    Flag ovf = false;
    Word32 t0 = 0;
    for (int i = 0; i < kSpan; ++i) t0 = L_mac(t0, sig[i], sig[i], ovf);
    if (ovf) {
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

/// Lag_max: the lag of lag_max..lag_min (scanned downwards, a later equal
/// value replaces) with the largest correlation, and that correlation
/// normalised by the energy of the delayed signal.
Word16 lag_max(const Word16* s, Word16 lag_hi, Word16 lag_lo, Word16& cor_max) {
    Word32 max = MIN_32;
    Word16 p_max = lag_hi;
    for (Word16 i = lag_hi; i >= lag_lo; --i) {
        const Word32 t0 = corr_at(s, i, 1);
        if (t0 >= max) {
            max = t0;
            p_max = i;
        }
    }
    Word32 en = 0;
    for (int i = 0; i < kFrame; ++i) en = L_mac(en, s[i - p_max], s[i - p_max]);
    Word16 max_h, max_l, en_h, en_l;
    L_Extract(max, max_h, max_l);
    L_Extract(Inv_sqrt(en), en_h, en_l);
    cor_max = extract_l(Mpy_32(max_h, max_l, en_h, en_l));
    return p_max;
}

}  // namespace

ZepStatus zepsOpenLoopPitchSearch_G729_16s(const Zep16s* pSrc, Zep16s* pBestLag) {
    if (any_null(pSrc, pBestLag)) return zepStsNullPtrErr;
    Word16 scaled[kSpan];
    scale_signal(pSrc - kPitMax, scaled);
    const Word16* s = scaled + kPitMax;

    Word16 max1, max2, max3;
    Word16 p1 = lag_max(s, kPitMax, 4 * kPitMin, max1);
    const Word16 p2 = lag_max(s, 4 * kPitMin - 1, 2 * kPitMin, max2);
    const Word16 p3 = lag_max(s, 2 * kPitMin - 1, kPitMin, max3);

    if (mult(max1, kThreshPit) < max2) {
        max1 = max2;
        p1 = p2;
    }
    if (mult(max1, kThreshPit) < max3) p1 = p3;
    *pBestLag = p1;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 3.7 (Pitch_fr3, Norm_Corr, Interpol_3) and Annex D D.3.7
// (Pitch_fr3D at 6.4 kbit/s): closed-loop fractional pitch search of one
// subframe, followed by the adaptive vector's construction (Pred_lt_3).
//
// Q formats: target Q0, impulse response Q12, excitation Q0, normalised
// correlations Q0 (16 bits), interpolated correlations Q0 (inter_3 Q15).
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729p;

/// Best fraction of frac_lo..frac_hi by the interpolated correlation around
/// corr[0]; the first value is the start, a later one wins if strictly larger.
Word16 best_fraction(const Word16* corr, Word16 frac_lo, Word16 frac_hi) {
    Word16 max = interpol_3(corr, frac_lo);
    Word16 frac = frac_lo;
    for (Word16 f = static_cast<Word16>(frac_lo + 1); f <= frac_hi; ++f) {
        const Word16 c = interpol_3(corr, f);
        if (c > max) {
            max = c;
            frac = f;
        }
    }
    return frac;
}

enum class Rule { Base, AnnexD };

/// Fraction search window of the subframe-1 Annex D rule (Pitch_fr3D,
/// 4-bit delta lag): lag - (t_max - 4) of -1 or 0 searches -2..2, -2
/// searches 0..2, +1 searches -2..0, any other lag keeps fraction 0; so
/// that Enc_lag3D can code every result.
bool annex_d_window(Word16 lag, Word16 t0_max, Word16& lo, Word16& hi) {
    const Word16 rel = sub(lag, sub(t0_max, 4));
    if (rel == -1 || rel == 0) { lo = -2; hi = 2; return true; }
    if (rel == -2) { lo = 0; hi = 2; return true; }
    if (rel == 1) { lo = -2; hi = 0; return true; }
    return false;
}

ZepStatus search(Rule rule, Zep16s valOpenDelay, const Zep16s* xn, const Zep16s* h, Zep16s* prevExc,
                 Zep16s* pDstDelay, Zep16s* pDstAdptVector, Zep16s subframe) {
    if (any_null(xn, h, prevExc, pDstDelay, pDstAdptVector)) return zepStsNullPtrErr;
    if (!in_range<Word16>(valOpenDelay, 18, 145) || !in_range<Word16>(subframe, 0, 1)) return zepStsRangeErr;

    Word16* exc = prevExc + kExcOffset;
    const LagRange r = lag_range(valOpenDelay, subframe);
    const Word16 t_min = static_cast<Word16>(r.t_min - kPitchInter4);
    const Word16 t_max = static_cast<Word16>(r.t_max + kPitchInter4);
    Word16 corr_v[20];
    norm_corr(exc, xn, h, t_min, t_max, corr_v);
    // corr(t) = corr_v[t - t_min] for t_min <= t <= t_max (indexed, never a
    // pointer before the array).
    const auto corr = [&](Word16 t) -> const Word16* { return corr_v + (t - t_min); };

    Word16 max = *corr(r.t_min);
    Word16 lag = r.t_min;
    for (Word16 i = static_cast<Word16>(r.t_min + 1); i <= r.t_max; ++i) {
        if (*corr(i) >= max) {
            max = *corr(i);
            lag = i;
        }
    }

    Word16 frac = 0;
    if (!(subframe == 0 && lag > 84)) {
        Word16 lo = -2, hi = 2;
        const bool searched = rule == Rule::Base || subframe == 0 || annex_d_window(lag, r.t_max, lo, hi);
        if (searched) frac = best_fraction(corr(lag), lo, hi);
        if (frac == -2) {
            frac = 1;
            lag = sub(lag, 1);
        } else if (frac == 2) {
            frac = -1;
            lag = add(lag, 1);
        }
    }

    pred_lt_3(exc, lag, frac);
    std::memcpy(pDstAdptVector, exc, kSubfr * sizeof(Word16));
    pDstDelay[0] = lag;
    pDstDelay[1] = frac;
    return zepStsNoErr;
}

}  // namespace

ZepStatus zepsAdaptiveCodebookSearch_G729_16s(Zep16s valOpenDelay, const Zep16s* pSrcAdptTarget,
                                              const Zep16s* pSrcImpulseResponse, Zep16s* pSrcDstPrevExcitation,
                                              Zep16s* pDstDelay, Zep16s* pDstAdptVector, Zep16s subframe) {
    return search(Rule::Base, valOpenDelay, pSrcAdptTarget, pSrcImpulseResponse, pSrcDstPrevExcitation, pDstDelay,
                  pDstAdptVector, subframe);
}

ZepStatus zepsAdaptiveCodebookSearch_G729D_16s(Zep16s valOpenDelay, const Zep16s* pSrcAdptTarget,
                                               const Zep16s* pSrcImpulseResponse, Zep16s* pSrcDstPrevExcitation,
                                               Zep16s* pDstDelay, Zep16s* pDstAdptVector, Zep16s subframe) {
    return search(Rule::AnnexD, valOpenDelay, pSrcAdptTarget, pSrcImpulseResponse, pSrcDstPrevExcitation, pDstDelay,
                  pDstAdptVector, subframe);
}

ZEPS_END_VARIANT

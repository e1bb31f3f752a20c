// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 Annex A A.3.7, fast closed-loop pitch search (Pitch_fr3_fast):
// the integer lag maximises the correlation of the backward-filtered target
// (Cor_h_X) with the past excitation; the fractions 0, -1/3, +1/3 are then
// compared on the interpolated vectors (Pred_lt_3).
//
// Q formats: target Q0, impulse response Q12, backward-filtered target
// normalised to 13 bits, excitation Q0, correlations Q1.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729p;

/// Integer lag of t0_min..t0_max with the largest correlation; the first of
/// equal values is kept (strict comparison, as Pitch_fr3_fast). The window's
/// sum of squares (which decides whether the correlation needs the
/// saturating chain) slides from lag to lag in exact 64-bit arithmetic.
Word16 integer_lag(const Word16* dn, std::int64_t edn, const Word16* exc, const LagRange& r) {
    Word32 max = MIN_32;
    Word16 t0 = r.t_min;
    std::int64_t ex = energy64(exc - r.t_min, kSubfr);
    for (Word16 t = r.t_min; t <= r.t_max; ++t) {
        Flag f = false;
        const Word32 c = dot40_known(dn, exc - t, edn, ex, 0, f);
        if (c > max) {
            max = c;
            t0 = t;
        }
        if (t == r.t_max) break;
        // Lag t + 1 gains exc[-t-1] and loses exc[39-t].
        const std::int64_t in = exc[-t - 1], out = exc[kSubfr - 1 - t];
        ex += in * in - out * out;
    }
    return t0;
}

/// Fraction of the lag t0 among 0, -1, +1 (a later one wins only if strictly
/// larger); the chosen vector is left in exc[0..39].
Word32 dot_dn(const Word16* dn, std::int64_t edn, const Word16* exc) {
    Flag f = false;
    return dot40_known(dn, exc, edn, energy64(exc, kSubfr), 0, f);
}

Word16 fraction(const Word16* dn, std::int64_t edn, Word16* exc, Word16 t0) {
    Word16 keep[kSubfr];
    std::memcpy(keep, exc, sizeof keep);
    Word16 frac = 0;
    Word32 max = dot_dn(dn, edn, exc);
    pred_lt_3(exc, t0, -1);
    Word32 c = dot_dn(dn, edn, exc);
    if (c > max) {
        max = c;
        frac = -1;
        std::memcpy(keep, exc, sizeof keep);
    }
    pred_lt_3(exc, t0, 1);
    c = dot_dn(dn, edn, exc);
    if (c > max)
        frac = 1;
    else
        std::memcpy(exc, keep, sizeof keep);
    return frac;
}

}  // namespace

ZepStatus zepsAdaptiveCodebookSearch_G729A_16s(Zep16s valOpenDelay, const Zep16s* pSrcAdptTarget,
                                               const Zep16s* pSrcImpulseResponse, Zep16s* pSrcDstPrevExcitation,
                                               Zep16s* pDstDelay, Zep16s* pDstAdptVector, Zep16s subframe) {
    if (any_null(pSrcAdptTarget, pSrcImpulseResponse, pSrcDstPrevExcitation, pDstDelay, pDstAdptVector))
        return zepStsNullPtrErr;
    if (!in_range<Word16>(valOpenDelay, 18, 145) || !in_range<Word16>(subframe, 0, 1)) return zepStsRangeErr;

    Word16* exc = pSrcDstPrevExcitation + kExcOffset;
    Word16 dn[kSubfr];
    cor_h_x(pSrcImpulseResponse, pSrcAdptTarget, dn);
    const LagRange r = lag_range(valOpenDelay, subframe);
    const std::int64_t edn = energy64(dn, kSubfr);
    const Word16 t0 = integer_lag(dn, edn, exc, r);

    pred_lt_3(exc, t0, 0);
    Word16 frac = 0;
    if (!(subframe == 0 && t0 > 84)) frac = fraction(dn, edn, exc, t0);

    std::memcpy(pDstAdptVector, exc, kSubfr * sizeof(Word16));
    pDstDelay[0] = t0;
    pDstDelay[1] = frac;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

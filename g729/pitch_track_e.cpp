// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E pitch tracking for frame-erasure concealment (E.4.4,
// track_pit): a delay within 4 of the previous one counts towards
// stationarity (at most 7) and is remembered; a delay near a multiple or
// sub-multiple (2..4 times) of the previous one is replaced by the last
// stationary delay while the count is positive (the count then drops);
// otherwise the count restarts. Delays in samples, fractions in thirds.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsPitchTrack_G729E_16s(Zep16s* pSrcDstDelay, Zep16s* pSrcDstTrack) {
    if (any_null(pSrcDstDelay, pSrcDstTrack)) return zepStsNullPtrErr;
    Word16 t0 = pSrcDstDelay[0], frac = pSrcDstDelay[1];
    Word16 prev = pSrcDstTrack[0], stat = pSrcDstTrack[1], sta = pSrcDstTrack[2], frac_sta = pSrcDstTrack[3];
    Word16 dist = sub(t0, prev);
    const bool mult_of_prev = dist >= 0;
    if (!mult_of_prev) dist = negate(dist);
    if (dist < 5) {
        stat = stat >= 7 ? Word16{7} : static_cast<Word16>(stat + 1);
        sta = t0;
        frac_sta = frac;
    } else {
        Word16 dist_min = dist;
        const Word16 base = mult_of_prev ? prev : t0;
        const Word16 other = mult_of_prev ? t0 : prev;
        Word16 pm = add(base, base);
        for (int j = 2; j < 5; ++j) {
            dist = abs_s(sub(pm, other));
            if (sub(dist, dist_min) <= 0) dist_min = dist;
            pm = add(base, pm);
        }
        if (dist_min < 5) {
            if (stat > 0) {
                t0 = sta;
                frac = frac_sta;
            }
            stat = stat <= 0 ? Word16{0} : static_cast<Word16>(stat - 1);
        } else {
            stat = 0;
            sta = t0;
            frac_sta = frac;
        }
    }
    pSrcDstDelay[0] = t0;
    pSrcDstDelay[1] = frac;
    pSrcDstTrack[0] = t0;
    pSrcDstTrack[1] = stat;
    pSrcDstTrack[2] = sta;
    pSrcDstTrack[3] = frac_sta;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

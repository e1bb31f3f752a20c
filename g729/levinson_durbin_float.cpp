// SPDX-License-Identifier: BSD-3-Clause
// G.729 Levinson-Durbin recursion in single-precision floating point,
// following the G.729 Annex C routine levinson (3.2.2), generalised to
// orders 1..30: a[0] = 1, reflection coefficients and the prediction error,
// which is floored at 0.001 whenever it drops to zero or below. Results that
// leave the float range are refused (status 12, nothing written).
#include <cmath>

#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsLevinsonDurbin_G729_32f(const Zep32f* pSrcAutoCorr, int order, Zep32f* pDstLPC, Zep32f* pDstRC,
                                      Zep32f* pResultResidualEnergy) {
    if (any_null(pSrcAutoCorr, pDstLPC, pDstRC, pResultResidualEnergy)) return zepStsNullPtrErr;
    if (order < 1 || order > 30) return zepStsRangeErr;
    const float* r = pSrcAutoCorr;
    if (!(r[0] > 0.0f)) return zepStsOverflow;  // no energy: the recursion has no defined result
    float a[31], rc[30];
    rc[0] = (-r[1]) / r[0];
    a[0] = 1.0f;
    a[1] = rc[0];
    float err = r[0] + r[1] * rc[0];
    for (int i = 2; i <= order; ++i) {
        float s = 0.0f;
        for (int j = 0; j < i; ++j) s += r[i - j] * a[j];
        rc[i - 1] = (-s) / err;
        for (int j = 1; j <= i / 2; ++j) {
            const int l = i - j;
            const float at = a[j] + rc[i - 1] * a[l];
            a[l] += rc[i - 1] * a[j];
            a[j] = at;
        }
        a[i] = rc[i - 1];
        err += rc[i - 1] * s;
        if (err <= 0.0f) err = 0.001f;
    }
    // An unstable autocorrelation can run the recursion out of the float
    // range; such a result is refused rather than written as inf/NaN.
    bool finite = std::isfinite(err);
    for (int i = 1; i <= order; ++i) finite = finite && std::isfinite(a[i]) && std::isfinite(rc[i - 1]);
    if (!finite) return zepStsOverflow;
    for (int i = 0; i <= order; ++i) pDstLPC[i] = a[i];
    for (int i = 0; i < order; ++i) pDstRC[i] = rc[i];
    *pResultResidualEnergy = err;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

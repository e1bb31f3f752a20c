// SPDX-License-Identifier: BSD-3-Clause
// Full-band NLMS echo canceller, sample by sample (narrow-band line echo):
// for n = 0..len-1, with u the T newest far-end samples x[n+T-1-k]:
//   e[n] = d[n] - sum c[k] u[k]
//   c[k] += step e[n] u[k] / (|u|^2 + delta)
// x holds len + T - 1 far-end samples, oldest first; d the near-end (line)
// input. |u|^2 is recomputed exactly every 256 samples and updated by the
// entering and leaving samples in between (double-precision running sum).
// step 0 filters without adapting.
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

double window_energy(const Zep32f* u, int taps) {
    double e = 0.0;
    for (int k = 0; k < taps; ++k) e += double{u[-k]} * u[-k];
    return e;
}

}  // namespace

ZepStatus zepsFullbandNLMS_EC_32f(const Zep32f* pSrc, const Zep32f* pIn, Zep32f* pErr, Zep32f* pCoef, int len,
                                  int taps, Zep32f step, Zep32f delta) {
    if (any_null(pSrc, pIn, pErr, pCoef)) return zepStsNullPtrErr;
    if (len < 1 || taps < 1) return zepStsSizeErr;
    if (!(step >= 0.0f && step <= 2.0f) || !(delta > 0.0f && delta <= 3.0e38f)) return zepStsRangeErr;
    double energy = 0.0;
    for (int n = 0; n < len; ++n) {
        const Zep32f* u = pSrc + n + taps - 1;
        if (n % 256 == 0) energy = window_energy(u, taps);
        else energy += double{u[0]} * u[0] - double{u[-taps]} * u[-taps];
        float y = 0.0f;
        for (int k = 0; k < taps; ++k) y += pCoef[k] * u[-k];
        const float e = pIn[n] - y;
        pErr[n] = e;
        if (step == 0.0f) continue;
        const float g = static_cast<float>(step * e / (energy > 0.0 ? energy + delta : delta));
        for (int k = 0; k < taps; ++k) pCoef[k] += g * u[-k];
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

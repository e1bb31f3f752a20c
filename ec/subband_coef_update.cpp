// SPDX-License-Identifier: BSD-3-Clause
// Sub-band NLMS coefficient update (complex float), one frame:
//   P[k]    = sum over s of |X_s[k]|^2            (far-end power in band k)
//   C_s[k] += step E[k] conj(X_s[k]) / (P[k] + delta)
// X_s the far-end sub-band spectrum s frames ago (segment 0 the newest, the
// spectrum the frame's error E was formed with), E the sub-band error of the
// frame (near end minus the filter output). step 0 leaves the coefficients
// as they are (adaptation frozen).
#include <cstddef>

#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsSubbandCoefUpdate_EC_32fc_I(const Zep32fc* pSrc, const Zep32fc* pErr, Zep32fc* pCoef, int numBands,
                                          int numSegments, Zep32f step, Zep32f delta) {
    if (any_null(pSrc, pErr, pCoef)) return zepStsNullPtrErr;
    if (!in_range(numBands, 1, 4097)) return zepStsSubbandNumErr;
    if (!in_range(numSegments, 1, 255)) return zepStsRangeErr;
    if (!(step >= 0.0f && step <= 2.0f) || !(delta > 0.0f && delta <= 3.0e38f)) return zepStsRangeErr;
    if (step == 0.0f) return zepStsNoErr;
    const std::size_t B = static_cast<std::size_t>(numBands), S = static_cast<std::size_t>(numSegments);
    for (std::size_t k = 0; k < B; ++k) {
        float p = 0.0f;
        for (std::size_t s = 0; s < S; ++s) p += pSrc[s * B + k].re * pSrc[s * B + k].re + pSrc[s * B + k].im * pSrc[s * B + k].im;
        const float g = step / (p + delta);
        const float er = g * pErr[k].re, ei = g * pErr[k].im;
        for (std::size_t s = 0; s < S; ++s) {
            const Zep32fc x = pSrc[s * B + k];
            pCoef[s * B + k].re += er * x.re + ei * x.im;  // (er + j ei)(x.re - j x.im)
            pCoef[s * B + k].im += ei * x.re - er * x.im;
        }
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

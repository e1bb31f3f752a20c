// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 Annex A/C float closed-loop search: the update of the
// filtered past excitation from one lag to the next (norm_corr of the
// Annex C floating-point reference). With h the impulse response (pSrc) and
// e the excitation sample entering at the new lag (val):
//     y[j] = y[j-1] + e * h[j]  for j = len-1 .. 1,   y[0] = e.
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsFilteredExcitation_G729_32f(const Zep32f* pSrc, Zep32f* pSrcDst, int len, Zep32f val) {
    if (any_null(pSrc, pSrcDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    for (int j = len - 1; j > 0; --j) pSrcDst[j] = pSrcDst[j - 1] + val * pSrc[j];
    pSrcDst[0] = val;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

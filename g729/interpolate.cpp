// SPDX-License-Identifier: BSD-3-Clause
// G.729 LSP interpolation for the first subframe (3.2.5, Int_qlpc): the
// average of two Q15 vectors, each halved by an arithmetic shift.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsInterpolate_G729_16s(const Zep16s* pSrc1, const Zep16s* pSrc2, Zep16s* pDst, int len) {
    if (any_null(pSrc1, pSrc2, pDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    for (int i = 0; i < len; ++i) pDst[i] = add(shr(pSrc1[i], 1), shr(pSrc2[i], 1));
    return zepStsNoErr;
}

ZEPS_END_VARIANT

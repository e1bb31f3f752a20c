// SPDX-License-Identifier: BSD-3-Clause
// Dot product of two 16-bit vectors as the G.729 Annex A routines accumulate
// it (L_mac, Q15 x Q15 -> Q31 with doubling), computed exactly in 64 bits and
// clamped once to the 32-bit range.
#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsDotProd_G729A_16s32s(const Zep16s* pSrc1, const Zep16s* pSrc2, int len, Zep32s* pDp) {
    if (any_null(pSrc1, pSrc2, pDp)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    std::int64_t sum = 0;
    for (int i = 0; i < len; ++i) sum += std::int32_t{pSrc1[i]} * pSrc2[i];
    Flag clamped = false;
    *pDp = saturate32(2 * sum, clamped);
    return clamped ? zepStsOverflow : zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.722.1 forward and inverse MLT exports (G.722.1 3.2, 4.3 and
// Annex C); the transforms are in g7221_mlt.h.
#include "common/args.h"
#include "common/exports.h"
#include "g722/g7221_mlt.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsMLTFwd_G7221_16s(const Zep16s* pSrc, Zep16s* pHistory, Zep16s* pDst, Zep32s len, Zep32s* pMagShift) {
    if (any_null(pSrc, pHistory, pDst, pMagShift)) return zepStsNullPtrErr;
    if (len != 320 && len != 640) return zepStsSizeErr;
    *pMagShift = g7221::samples_to_rmlt(pSrc, pHistory, pDst, len);
    return zepStsNoErr;
}

ZepStatus zepsMLTInv_G7221_16s(const Zep16s* pSrc, Zep16s* pHistory, Zep16s* pDst, Zep32s len, Zep32s magShift) {
    if (any_null(pSrc, pHistory, pDst)) return zepStsNullPtrErr;
    if (len != 320 && len != 640) return zepStsSizeErr;
    if (!in_range(magShift, -1, 9)) return zepStsRangeErr;
    g7221::rmlt_to_samples(pSrc, pHistory, pDst, len, magShift);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

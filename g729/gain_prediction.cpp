// SPDX-License-Identifier: BSD-3-Clause
// G.729 MA prediction of the fixed-codebook gain (ITU-T G.729 3.9.1,
// Gain_predict and Gain_update): the predicted gain from the energy of the
// innovation (Q13) and the four past quantised energies (Q10, newest
// first); the update stores 20 log10 of the chosen correction factor.
#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsGainPredict_G729_16s(const Zep16s* pPastQuaEn, const Zep16s* pCode, Zep16s* pGcode0, Zep16s* pExpGcode0) {
    if (any_null(pPastQuaEn, pCode, pGcode0, pExpGcode0)) return zepStsNullPtrErr;
    Word16 g, e;
    g729c::gain_predict(pPastQuaEn, pCode, g, e);
    *pGcode0 = g;
    *pExpGcode0 = e;
    return zepStsNoErr;
}

ZepStatus zepsGainUpdate_G729_16s(Zep32s gbk12, Zep16s* pPastQuaEn) {
    if (any_null(pPastQuaEn)) return zepStsNullPtrErr;
    if (gbk12 < 1) return zepStsRangeErr;
    g729c::gain_update(pPastQuaEn, gbk12);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

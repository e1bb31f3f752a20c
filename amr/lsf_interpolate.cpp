// SPDX-License-Identifier: BSD-3-Clause
// zepsInterpolateLSF_GSMAMR_16s and zepsLSPAverage_GSMAMR_16s: the
// subframe LSFs and the running LSF mean the decoder's code gain averaging
// compares (3GPP TS 26.073 int_lsf.c Int_lsf, lsp_avg.c lsp_avg).
// LSFs normalised (16384 = 4 kHz), weights Q15.
#include "amr/dec_lpc.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsInterpolateLSF_GSMAMR_16s(const Zep16s* pLSFOld, const Zep16s* pLSFNew, Zep32s subframeStart,
                                        Zep16s* pDstLSF) {
    if (any_null(pLSFOld, pLSFNew, pDstLSF)) return zepStsNullPtrErr;
    if (subframeStart != 0 && subframeStart != 40 && subframeStart != 80 && subframeStart != 120)
        return zepStsRangeErr;
    Word16 out[amr_dec::kM];
    amr_dec::int_lsf(pLSFOld, pLSFNew, subframeStart, out);
    for (int i = 0; i < amr_dec::kM; i++) pDstLSF[i] = out[i];
    return zepStsNoErr;
}

ZepStatus zepsLSPAverage_GSMAMR_16s(Zep16s* pSrcDstMean, const Zep16s* pSrcLSF) {
    if (any_null(pSrcDstMean, pSrcLSF)) return zepStsNullPtrErr;
    Word16 lsf[amr_dec::kM];
    for (int i = 0; i < amr_dec::kM; i++) lsf[i] = pSrcLSF[i];
    amr_dec::lsp_avg(pSrcDstMean, lsf);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

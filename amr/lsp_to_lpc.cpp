// SPDX-License-Identifier: BSD-3-Clause
// zepsLSPToLPC_GSMAMR_16s and zepsInterpolateLSP_GSMAMR_16s: LSPs (Q15) to
// A(z) (Q12) and the interpolation of the four subframes (3GPP TS 26.073
// lsp_az.c Lsp_Az, int_lpc.c Int_lpc_1to3, Int_lpc_1and3).
#include "amr/amr_rate.h"
#include "amr/dec_lpc.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsLSPToLPC_GSMAMR_16s(const Zep16s* pSrcLSP, Zep16s* pDstLPC) {
    if (any_null(pSrcLSP, pDstLPC)) return zepStsNullPtrErr;
    Word16 a[amr_dec::kMp1];
    amr_dec::lsp_az(pSrcLSP, a);
    for (int i = 0; i < amr_dec::kMp1; i++) pDstLPC[i] = a[i];
    return zepStsNoErr;
}

ZepStatus zepsInterpolateLSP_GSMAMR_16s(const Zep16s* pLSPOld, const Zep16s* pLSPMid, const Zep16s* pLSPNew,
                                        Zep16s* pDstLPC, Zep32s rate) {
    if (any_null(pLSPOld, pLSPMid, pLSPNew, pDstLPC)) return zepStsNullPtrErr;
    if (amr_rate::mode_of_rate(rate) < 0) return zepStsRangeErr;
    Word16 az[4 * amr_dec::kMp1];
    if (rate == 12) amr_dec::int_lpc_1and3(pLSPOld, pLSPMid, pLSPNew, az);
    else amr_dec::int_lpc_1to3(pLSPOld, pLSPNew, az);
    for (int i = 0; i < 4 * amr_dec::kMp1; i++) pDstLPC[i] = az[i];
    return zepStsNoErr;
}

ZEPS_END_VARIANT

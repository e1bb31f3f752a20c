// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR encoder LP analysis exports (3GPP TS 26.073 autocorr.c Autocorr,
// levinson.c Levinson, az_lsp.c Az_lsp, int_lpc.c Int_lpc_1and3_2 and
// Int_lpc_1to3_2). Autocorrelations 32-bit double precision, A(z) Q12,
// LSPs Q15.
#include "amr/amr_dec_tables.h"
#include "amr/amr_enc_tables.h"
#include "amr/amr_rate.h"
#include "amr/enc_lpc.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsAutoCorr_GSMAMR_16s32s(const Zep16s* pSrc, Zep32s* pDst, Zep32s window) {
    if (any_null(pSrc, pDst)) return zepStsNullPtrErr;
    if (window < 0 || window > 2) return zepStsRangeErr;
    const std::int16_t* const wind[3] = {zeps::amr_dec_tab::window_200_40, zeps::amr_enc_tab::window_160_80,
                                         zeps::amr_enc_tab::window_232_8};
    Word32 r[amr_enc::kMp1];
    amr_enc::autocorr(pSrc, wind[window], r);
    for (int i = 0; i < amr_enc::kMp1; i++) pDst[i] = r[i];
    return zepStsNoErr;
}

ZepStatus zepsLevinsonDurbin_GSMAMR_32s16s(Zep16s* pOldLPC, const Zep32s* pSrcAutoCorr, Zep16s* pDstLPC,
                                           Zep16s* pDstRC) {
    if (any_null(pOldLPC, pSrcAutoCorr, pDstLPC, pDstRC)) return zepStsNullPtrErr;
    Word16 old[amr_enc::kMp1], a[amr_enc::kMp1], rc[4];
    Word32 r[amr_enc::kMp1];
    for (int i = 0; i < amr_enc::kMp1; i++) {
        old[i] = pOldLPC[i];
        r[i] = pSrcAutoCorr[i];
    }
    amr_enc::levinson(old, r, a, rc);
    for (int i = 0; i < amr_enc::kMp1; i++) {
        pOldLPC[i] = old[i];
        pDstLPC[i] = a[i];
    }
    for (int i = 0; i < 4; i++) pDstRC[i] = rc[i];
    return zepStsNoErr;
}

ZepStatus zepsLPCToLSP_GSMAMR_16s(const Zep16s* pSrcLPC, Zep16s* pDstLSP, const Zep16s* pSrcOldLSP) {
    if (any_null(pSrcLPC, pDstLSP, pSrcOldLSP)) return zepStsNullPtrErr;
    Word16 a[amr_enc::kMp1], old[amr_enc::kM], lsp[amr_enc::kM];
    for (int i = 0; i < amr_enc::kMp1; i++) a[i] = pSrcLPC[i];
    for (int i = 0; i < amr_enc::kM; i++) old[i] = pSrcOldLSP[i];
    amr_enc::az_lsp(a, lsp, old);
    for (int i = 0; i < amr_enc::kM; i++) pDstLSP[i] = lsp[i];
    return zepStsNoErr;
}

ZepStatus zepsInterpolateLSPAnalysis_GSMAMR_16s_I(const Zep16s* pLSPOld, const Zep16s* pLSPMid,
                                                  const Zep16s* pLSPNew, Zep16s* pSrcDstLPC, Zep32s rate) {
    if (any_null(pLSPOld, pLSPMid, pLSPNew, pSrcDstLPC)) return zepStsNullPtrErr;
    if (amr_rate::mode_of_rate(rate) < 0) return zepStsRangeErr;
    Word16 az[4 * amr_enc::kMp1];
    for (int i = 0; i < 4 * amr_enc::kMp1; i++) az[i] = pSrcDstLPC[i];
    if (rate == 12) amr_enc::int_lpc_1and3_2(pLSPOld, pLSPMid, pLSPNew, az);
    else amr_enc::int_lpc_1to3_2(pLSPOld, pLSPNew, az);
    for (int i = 0; i < 4 * amr_enc::kMp1; i++) pSrcDstLPC[i] = az[i];
    return zepStsNoErr;
}

ZepStatus zepsCheckLSP_GSMAMR_16s(Zep16s* pToneState, const Zep16s* pSrcLSP, Zep16s* pFlag) {
    if (any_null(pToneState, pSrcLSP, pFlag)) return zepStsNullPtrErr;
    *pFlag = amr_enc::check_lsp(pToneState, pSrcLSP);
    return zepStsNoErr;
}

ZepStatus zepsUpdateGpClipping_GSMAMR_16s(Zep16s* pToneState, Zep16s gainPitch) {
    if (any_null(pToneState)) return zepStsNullPtrErr;
    amr_enc::update_gp_clipping(pToneState, gainPitch);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

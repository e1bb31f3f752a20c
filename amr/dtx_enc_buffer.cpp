// SPDX-License-Identifier: BSD-3-Clause
// zepsEncDTXBuffer_GSMAMR_16s: the encoder's DTX history update, 3GPP
// TS 26.073 dtx_enc.c dtx_buffer. LSPs Q15; log energies Q10, halved (the
// SID computation averages them as sums of quarters).
#include "amr/dtx_enc_log_energy.h"
#include "amr/lsp_quant_lsf.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsEncDTXBuffer_GSMAMR_16s(const Zep16s* pSrcSpch, const Zep16s* pSrcLSP, Zep16s* pHistPtr,
                                      Zep16s* pLSPHistory, Zep16s* pLogEnergyHistory) {
    if (any_null(pSrcSpch, pSrcLSP, pHistPtr, pLSPHistory, pLogEnergyHistory)) return zepStsNullPtrErr;
    const Word16 ptr = amr_dtx::next_hist_ptr(*pHistPtr);
    for (int i = 0; i < amr_dtx::kM; i++) pLSPHistory[ptr * amr_dtx::kM + i] = pSrcLSP[i];
    pLogEnergyHistory[ptr] = shr(amr_dtx::frame_log_energy(pSrcSpch), 1);
    *pHistPtr = ptr;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// zepsDecDTXBuffer_GSMAMR_16s: the decoder's DTX history update on each
// synthesised frame, 3GPP TS 26.073 dtx_dec.c dtx_dec_activity_update.
// LSFs as the decoder keeps them; log energies Q10 stored without halving
// (the decoder reads them as Q11 halves).
//
// The reference moves two pointers together, lsf_hist_ptr (element offset
// 0, 10, .., 70) and log_en_hist_ptr (0..7); the single history pointer here
// is log_en_hist_ptr, and the LSF row it selects starts at 10 x pointer.
#include "amr/dtx_enc_log_energy.h"
#include "amr/lsp_quant_lsf.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsDecDTXBuffer_GSMAMR_16s(const Zep16s* pSrcSpch, const Zep16s* pSrcLSF, Zep16s* pHistPtr,
                                      Zep16s* pLSFHistory, Zep16s* pLogEnergyHistory) {
    if (any_null(pSrcSpch, pSrcLSF, pHistPtr, pLSFHistory, pLogEnergyHistory)) return zepStsNullPtrErr;
    const Word16 ptr = amr_dtx::next_hist_ptr(*pHistPtr);
    for (int i = 0; i < amr_dtx::kM; i++) pLSFHistory[ptr * amr_dtx::kM + i] = pSrcLSF[i];
    pLogEnergyHistory[ptr] = amr_dtx::frame_log_energy(pSrcSpch);
    *pHistPtr = ptr;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

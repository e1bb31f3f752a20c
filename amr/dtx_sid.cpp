// SPDX-License-Identifier: BSD-3-Clause
// zepsEncDTXSID_GSMAMR_16s: SID parameters of a GSM-AMR DTX frame, 3GPP
// TS 26.073 dtx_enc.c dtx_enc with its Q_plsf_3(MRDTX) call and the gain
// predictor update it makes. LSPs Q15; log energy history Q10 halved (as
// zepsEncDTXBuffer_GSMAMR_16s stores it); gain predictor memories past_qua_en
// Q10 (log2) and past_qua_en_MR122 Q10 (20 log10).
#include "amr/dtx_enc_log_energy.h"
#include "amr/lsp_quant_lsf.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

using amr_dtx::kHistSize;
using amr_dtx::kM;

/// Mean of the 8 stored LSP vectors and the averaged log energy (Q10).
Word16 average_history(const Word16* lsp_hist, const Word16* log_en_hist, Word16* lsp) {
    Word16 log_en = 0;
    Word32 L_lsp[kM] = {};
    for (int i = 0; i < kHistSize; i++) {
        log_en = add(log_en, shr(log_en_hist[i], 2));
        for (int j = 0; j < kM; j++) L_lsp[j] = L_add(L_lsp[j], L_deposit_l(lsp_hist[i * kM + j]));
    }
    for (int j = 0; j < kM; j++) lsp[j] = extract_l(L_shr(L_lsp[j], 3));  // divide by 8
    return shr(log_en, 1);
}

/// 6-bit log energy index: (log_en + 2.5 + 0.125) in Q10 >> 8, 0..63.
Word16 log_energy_index(Word16 log_en) {
    Word16 index = add(log_en, 2560);  // +2.5 in Q10
    index = add(index, 128);           // +0.5/4 in Q10
    index = shr(index, 8);
    if (sub(index, 63) > 0) index = 63;
    if (index < 0) index = 0;
    return index;
}

/// Gain predictor memories of all modes set from the quantised SID energy.
void update_gain_predictor(Word16 log_en_index, Word16* past_qua_en, Word16* past_qua_en_MR122) {
    Word16 log_en = shl(log_en_index, -2 + 10);  // Q11 and divide by 4
    log_en = sub(log_en, 2560);                  // add 2.5 in Q11
    log_en = sub(log_en, 9000);
    if (log_en > 0) log_en = 0;
    if (sub(log_en, -14436) < 0) log_en = -14436;
    const Word16 log_en_MR122 = mult(5443, log_en);  // scale by 20 log10(2) in Q15
    for (int i = 0; i < 4; i++) {
        past_qua_en[i] = log_en;
        past_qua_en_MR122[i] = log_en_MR122;
    }
}

}  // namespace

ZepStatus zepsEncDTXSID_GSMAMR_16s(const Zep16s* pLSPHistory, const Zep16s* pLogEnergyHistory, Zep16s* pSidParams,
                                   Zep16s* pPastRq, Zep16s* pPastQuaEn, Zep16s* pPastQuaEnMR122,
                                   Zep16s computeSidFlag) {
    if (any_null(pLSPHistory, pLogEnergyHistory, pSidParams, pPastRq, pPastQuaEn, pPastQuaEnMR122))
        return zepStsNullPtrErr;
    // Compute new parameters when asked, and always while the stored energy
    // index is 0 (the reference's st->log_en_index == 0 test); otherwise the
    // stored parameters are sent again.
    if (computeSidFlag == 0 && pSidParams[4] != 0) return zepStsNoErr;

    Word16 lsp[kM], lsf[kM], lsp_q[kM];
    const Word16 log_en = average_history(pLSPHistory, pLogEnergyHistory, lsp);
    const Word16 log_en_index = log_energy_index(log_en);
    update_gain_predictor(log_en_index, pPastQuaEn, pPastQuaEnMR122);

    // Make sure the LSPs are ordered, then quantise as an MRDTX frame.
    amr_dtx::lsp_to_lsf(lsp, lsf);
    amr_dtx::reorder_lsf(lsf, amr_dtx::kLsfGap);
    amr_dtx::lsf_to_lsp(lsf, lsp);
    Word16 index[4];  // lsp_index[0..2], init_lsf_vq_index
    zepsLSPQuant_GSMAMR_16s(pPastRq, lsp, lsp_q, index, Zep32s{zepRateDTX});

    pSidParams[0] = index[3];
    pSidParams[1] = index[0];
    pSidParams[2] = index[1];
    pSidParams[3] = index[2];
    pSidParams[4] = log_en_index;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

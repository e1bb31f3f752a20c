// SPDX-License-Identifier: BSD-3-Clause
// zepsLSPQuant_GSMAMR_16s: the GSM-AMR LSP quantiser selected by rate code,
// as the 3GPP TS 26.073 encoder calls it (lsp.c: Q_plsf_5 for MR122,
// Q_plsf_3 for the other modes and for SID frames). LSPs Q15, predictor
// memory in the LSF domain (16384 = 4 kHz).
#include "amr/lsp_quant.h"
#include "amr/lsp_quant_lsf.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

bool is_lsp_quant_rate(Zep32s rate) {
    switch (rate) {
        case 0: case 1: case 3: case 6: case 7: case 8: case 11: case 12: case 25:
            return true;
        default:
            return false;
    }
}

amr_dtx::Plsf3Set plsf3_set(Zep32s rate) {
    switch (rate) {
        case 0: case 1: return amr_dtx::Plsf3Set::MR475_515;
        case 8: return amr_dtx::Plsf3Set::MR795;
        case 25: return amr_dtx::Plsf3Set::DTX;
        default: return amr_dtx::Plsf3Set::Other;
    }
}

}  // namespace

ZepStatus zepsLSPQuant_GSMAMR_16s(Zep16s* pPastRq, const Zep16s* pSrcLSP, Zep16s* pDstQLSP, Zep16s* pDstIndex,
                                  Zep32s rate) {
    if (any_null(pPastRq, pSrcLSP, pDstQLSP, pDstIndex)) return zepStsNullPtrErr;
    if (!is_lsp_quant_rate(rate)) return zepStsRangeErr;
    if (rate == zepRateGSMAMR_122) {
        amr_dtx::q_plsf_5(pPastRq, pSrcLSP, pSrcLSP + amr_dtx::kM, pDstQLSP, pDstQLSP + amr_dtx::kM, pDstIndex);
    } else {
        // indice[0..2], then for SID frames the predictor start index.
        amr_dtx::q_plsf_3(pPastRq, plsf3_set(rate), pSrcLSP, pDstQLSP, pDstIndex, pDstIndex + 3);
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 LSF decoder (4.1.1, Lsp_iqua_cs): good frames (Lsp_get_quant with
// Lsp_stability) and erased frames (Lsp_prev_extract, Lsp_prev_update).
// LSFs Q13, MA memory freq_prev 4 x 10 Q13, newest row first.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/lsf_codebook.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsLSFDecode_G729_16s(const Zep16s* pIdx, Zep16s* pPrevFreq, Zep16s* pQLSF) {
    if (any_null(pIdx, pPrevFreq, pQLSF)) return zepStsNullPtrErr;
    if (pIdx[0] != 0 && pIdx[0] != 1) return zepStsOutOfRangeErr;
    // The indices are masked to their field widths as Lsp_iqua_cs unpacks them.
    return lsp_get_quant(pIdx[0], pIdx[1] & 127, pIdx[2] & 31, pIdx[3] & 31, pPrevFreq, pQLSF);
}

ZepStatus zepsLSFDecodeErased_G729_16s(Zep16s maMode, Zep16s* pPrevFreq, const Zep16s* pLSF) {
    if (any_null(pPrevFreq, pLSF)) return zepStsNullPtrErr;
    if (maMode != 0 && maMode != 1) return zepStsOutOfRangeErr;
    Word16 ele[kLpcOrder];
    lsp_prev_extract(pLSF, ele, maMode, pPrevFreq);
    lsp_prev_update(ele, pPrevFreq);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 LSF quantiser (3.2.4, Lsp_qua_cs: Get_wegt, Relspwed, Lsp_get_quant)
// and the LSP quantiser around it (Qua_lsp). Two-stage split VQ with
// fourth-order MA prediction in two modes; LSFs Q13, weights normalised Q11,
// distortions Q26/Q27. Also the Annex E forward quantiser (E.3.2, Qua_lspe),
// which leaves the MA memory to the caller.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fast_ops.h"
#include "g729/lsf_codebook.h"
#include "g729/lsf_lsp.h"
#include "g729/lsf_search.h"

ZEPS_BEGIN_VARIANT
namespace {

/// Lsp_get_tdist: weighted distortion of a candidate against the target.
Word32 total_distortion(const Word16* w, const Word16* cand, const Word16* target, int mode) {
    Word32 d = 0;
    for (int j = 0; j < kLpcOrder; ++j) {
        const Word16 tmp = mult(sub(cand[j], target[j]), fg_sum[mode][j]);
        const Word16 tmp2 = extract_h(L_shl_fast(L_mult(w[j], tmp), 4));
        d = L_mac(d, tmp2, tmp);
    }
    return d;
}

struct ModeChoice {
    int l1, l2, l3;
    Word32 dist;
};

/// Relspwed for one MA mode.
ModeChoice search_mode(const Word16* lsf, const Word16* w, const Word16* prev, int mode) {
    Word16 target[kLpcOrder];
    lsp_prev_extract(lsf, target, mode, prev);
    ModeChoice c;
    c.l1 = lsf_first_stage_search(target);
    c.l2 = lsf_second_stage_search(target, lspcb1[c.l1], w, 0);
    c.l3 = lsf_second_stage_search(target, lspcb1[c.l1], w, 5);
    Word16 buf[kLpcOrder];
    for (int j = 0; j < 5; ++j) buf[j] = add(lspcb1[c.l1][j], lspcb2[c.l2][j]);
    for (int j = 5; j < kLpcOrder; ++j) buf[j] = add(lspcb1[c.l1][j], lspcb2[c.l3][j]);
    lsp_expand(buf, kGap1, 1, kLpcOrder - 1);
    lsp_expand(buf, kGap2, 1, kLpcOrder - 1);
    c.dist = total_distortion(w, buf, target, mode);
    return c;
}

/// The quantiser proper: indices {mode, L1, L2, L3} and the decoded LSFs.
/// With freq_cur null the MA memory is updated (Lsp_get_quant); otherwise
/// it is only read and the new codebook vector goes to freq_cur
/// (Annex E Lsp_get_quante).
void quantize_lsf(const Word16* lsf, Word16* prev, Word16* qlsf, Word16* idx, Word16* freq_cur = nullptr) {
    Word16 w[kLpcOrder];
    get_wegt(lsf, w);
    const ModeChoice m0 = search_mode(lsf, w, prev, 0);
    const ModeChoice m1 = search_mode(lsf, w, prev, 1);
    const int mode = L_sub(m1.dist, m0.dist) < 0 ? 1 : 0;
    const ModeChoice& c = mode ? m1 : m0;
    idx[0] = static_cast<Word16>(mode);
    idx[1] = static_cast<Word16>(c.l1);
    idx[2] = static_cast<Word16>(c.l2);
    idx[3] = static_cast<Word16>(c.l3);
    if (freq_cur == nullptr) {
        lsp_get_quant(mode, c.l1, c.l2, c.l3, prev, qlsf);
        return;
    }
    lsp_codebook_vector(c.l1, c.l2, c.l3, freq_cur);
    lsp_prev_compose(freq_cur, qlsf, mode, prev);
    lsp_stability(qlsf);
}

}  // namespace

ZepStatus zepsLSFQuant_G729_16s(const Zep16s* pLSF, Zep16s* pPrevFreq, Zep16s* pQLSF, Zep16s* pIdx) {
    if (any_null(pLSF, pPrevFreq, pQLSF, pIdx)) return zepStsNullPtrErr;
    quantize_lsf(pLSF, pPrevFreq, pQLSF, pIdx);
    return zepStsNoErr;
}

ZepStatus zepsLSPQuant_G729_16s(const Zep16s* pLSP, Zep16s* pPrevFreq, Zep16s* pQLSP, Zep16s* pIdx) {
    if (any_null(pLSP, pPrevFreq, pQLSP, pIdx)) return zepStsNullPtrErr;
    Word16 lsf[kLpcOrder], qlsf[kLpcOrder], idx[4];
    lsp_to_lsf(pLSP, lsf, kLpcOrder);
    quantize_lsf(lsf, pPrevFreq, qlsf, idx);
    pIdx[0] = static_cast<Word16>((idx[0] << 7) | idx[1]);
    pIdx[1] = static_cast<Word16>((idx[2] << 5) | idx[3]);
    return lsf_to_lsp(qlsf, pQLSP, kLpcOrder) ? zepStsNoErr : zepStsNegativeLSFErr;
}

ZepStatus zepsLSPQuant_G729E_16s(const Zep16s* pLSP, const Zep16s* pPrevFreq, Zep16s* pQLSP, Zep16s* pIdx,
                                 Zep16s* pFreqCur) {
    if (any_null(pLSP, pPrevFreq, pQLSP, pIdx, pFreqCur)) return zepStsNullPtrErr;
    Word16 lsf[kLpcOrder], qlsf[kLpcOrder], idx[4], prev[kMaOrder * kLpcOrder], cur[kLpcOrder];
    for (int i = 0; i < kMaOrder * kLpcOrder; ++i) prev[i] = pPrevFreq[i];
    lsp_to_lsf(pLSP, lsf, kLpcOrder);
    quantize_lsf(lsf, prev, qlsf, idx, cur);
    pIdx[0] = static_cast<Word16>((idx[0] << 7) | idx[1]);
    pIdx[1] = static_cast<Word16>((idx[2] << 5) | idx[3]);
    for (int i = 0; i < kLpcOrder; ++i) pFreqCur[i] = cur[i];
    return lsf_to_lsp(qlsf, pQLSP, kLpcOrder) ? zepStsNoErr : zepStsNegativeLSFErr;
}

ZEPS_END_VARIANT

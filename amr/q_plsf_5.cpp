// SPDX-License-Identifier: BSD-3-Clause
// Q_plsf_5 of 3GPP TS 26.073 (q_plsf_5.c), the MR122 LSP quantiser: the
// residuals of two LSF vectors (2nd and 4th subframe) after 1st-order MA
// prediction are quantised jointly by split matrix quantisation in 5 parts
// of 2 x 2 values. LSPs Q15; LSFs 16384 = 4 kHz; weights Q13.
#include "amr/amr_dtx_tables.h"
#include "amr/lsp_quant.h"
#include "amr/lsp_quant_lsf.h"
#include "amr/lsp_quant_vq.h"

ZEPS_BEGIN_VARIANT
namespace amr_dtx {
namespace {

namespace tab = zeps::amr_dtx_tab;

/// Vq_subvec (signed = false) and Vq_subvec_s (signed = true, index =
/// 2 x row + sign): the best row for (r1[0], r1[1], r2[0], r2[1]); the
/// residuals are replaced by it.
Word16 vq_subvec(Word16* r1, Word16* r2, const Word16* dico, const Word16* wf1, const Word16* wf2, int dico_size,
                 bool signed_rows = false) {
    const Word16 r[4] = {r1[0], r1[1], r2[0], r2[1]};
    const Word16 w[4] = {wf1[0], wf1[1], wf2[0], wf2[1]};
    const int index = vq_search<4>(r, dico, w, dico_size, 1, signed_rows);
    const Word16* row = dico + 4 * (signed_rows ? index >> 1 : index);
    const bool neg = signed_rows && (index & 1) != 0;
    r1[0] = neg ? negate(row[0]) : row[0];
    r1[1] = neg ? negate(row[1]) : row[1];
    r2[0] = neg ? negate(row[2]) : row[2];
    r2[1] = neg ? negate(row[3]) : row[3];
    return static_cast<Word16>(index);
}

}  // namespace

void q_plsf_5(Word16* past_rq, const Word16* lsp1, const Word16* lsp2, Word16* lsp1_q, Word16* lsp2_q,
              Word16* indice) {
    Word16 lsf1[kM], lsf2[kM], wf1[kM], wf2[kM], lsf_p[kM], lsf_r1[kM], lsf_r2[kM];
    lsp_to_lsf(lsp1, lsf1);
    lsp_to_lsf(lsp2, lsf2);
    lsf_weights(lsf1, wf1);
    lsf_weights(lsf2, wf2);

    for (int i = 0; i < kM; i++) {
        lsf_p[i] = add(tab::mean_lsf_5[i], mult(past_rq[i], kLspPredFacMR122));
        lsf_r1[i] = sub(lsf1[i], lsf_p[i]);
        lsf_r2[i] = sub(lsf2[i], lsf_p[i]);
    }

    indice[0] = vq_subvec(&lsf_r1[0], &lsf_r2[0], tab::dico1_lsf_5, &wf1[0], &wf2[0], tab::kDico1_5Size);
    indice[1] = vq_subvec(&lsf_r1[2], &lsf_r2[2], tab::dico2_lsf_5, &wf1[2], &wf2[2], tab::kDico2_5Size);
    indice[2] = vq_subvec(&lsf_r1[4], &lsf_r2[4], tab::dico3_lsf_5, &wf1[4], &wf2[4], tab::kDico3_5Size, true);
    indice[3] = vq_subvec(&lsf_r1[6], &lsf_r2[6], tab::dico4_lsf_5, &wf1[6], &wf2[6], tab::kDico4_5Size);
    indice[4] = vq_subvec(&lsf_r1[8], &lsf_r2[8], tab::dico5_lsf_5, &wf1[8], &wf2[8], tab::kDico5_5Size);

    Word16 lsf1_q[kM], lsf2_q[kM];
    for (int i = 0; i < kM; i++) {
        lsf1_q[i] = add(lsf_r1[i], lsf_p[i]);
        lsf2_q[i] = add(lsf_r2[i], lsf_p[i]);
        past_rq[i] = lsf_r2[i];
    }
    reorder_lsf(lsf1_q, kLsfGap);
    reorder_lsf(lsf2_q, kLsfGap);
    lsf_to_lsp(lsf1_q, lsp1_q);
    lsf_to_lsp(lsf2_q, lsp2_q);
}

}  // namespace amr_dtx
ZEPS_END_VARIANT

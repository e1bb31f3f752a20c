// SPDX-License-Identifier: BSD-3-Clause
// Q_plsf_3 of 3GPP TS 26.073 (q_plsf_3.c): quantisation of one LSF vector
// with 1st-order MA prediction and split-VQ in 3 sub-vectors (3 + 3 + 4),
// used by every GSM-AMR mode but MR122 and by the SID frame (MRDTX).
// LSPs Q15; LSFs and residuals 16384 = 4 kHz; weights Q13; prediction
// factors Q15.
#include "amr/amr_dtx_tables.h"
#include "amr/lsp_quant.h"
#include "amr/lsp_quant_lsf.h"
#include "amr/lsp_quant_vq.h"

ZEPS_BEGIN_VARIANT
namespace amr_dtx {
namespace {

namespace tab = zeps::amr_dtx_tab;

/// Vq_subvec3 / Vq_subvec4: nearest row of an N-wide codebook; `stride`
/// rows apart (2 when only every second row is searched, the reference's
/// use_half). Replaces r[] by the chosen row and returns its index.
template <int N>
Word16 vq_subvec(Word16* r, const Word16* dico, const Word16* wf, int dico_size, int stride) {
    const int index = vq_search<N>(r, dico, wf, dico_size, stride, false);
    const Word16* row = dico + index * N * stride;
    for (int k = 0; k < N; k++) r[k] = row[k];
    return static_cast<Word16>(index);
}

/// Prediction lsf_p and residual lsf_r1 from the predictor memory.
void predict(const Word16* past_rq, const Word16* lsf1, Word16* lsf_p, Word16* lsf_r1) {
    for (int i = 0; i < kM; i++) {
        lsf_p[i] = add(tab::mean_lsf_3[i], mult(past_rq[i], tab::pred_fac_3[i]));
        lsf_r1[i] = sub(lsf1[i], lsf_p[i]);
    }
}

/// SID frames: the start vector of past_rq_init that leaves the smallest
/// residual energy; it becomes the predictor memory.
Word16 predict_dtx(Word16* past_rq, const Word16* lsf1, Word16* lsf_p, Word16* lsf_r1) {
    Word16 pred_init_i = 0;
    Word32 L_min_err = MAX_32;
    for (int j = 0; j < tab::kPastRqInitSize; j++) {
        Word16 temp_p[kM], temp_r1[kM];
        Word32 L_err = 0;
        for (int i = 0; i < kM; i++) {
            temp_p[i] = add(tab::mean_lsf_3[i], tab::past_rq_init[j * kM + i]);
            temp_r1[i] = sub(lsf1[i], temp_p[i]);
            L_err = L_mac(L_err, temp_r1[i], temp_r1[i]);
        }
        if (L_sub(L_err, L_min_err) < 0) {
            L_min_err = L_err;
            for (int i = 0; i < kM; i++) {
                lsf_r1[i] = temp_r1[i];
                lsf_p[i] = temp_p[i];
                past_rq[i] = tab::past_rq_init[j * kM + i];
            }
            pred_init_i = static_cast<Word16>(j);
        }
    }
    return pred_init_i;
}

}  // namespace

void q_plsf_3(Word16* past_rq, Plsf3Set set, const Word16* lsp1, Word16* lsp1_q, Word16* indice,
              Word16* pred_init_i) {
    Word16 lsf1[kM], wf1[kM], lsf_p[kM] = {}, lsf_r1[kM] = {}, lsf1_q[kM];
    lsp_to_lsf(lsp1, lsf1);
    lsf_weights(lsf1, wf1);

    if (set != Plsf3Set::DTX)
        predict(past_rq, lsf1, lsf_p, lsf_r1);
    else
        *pred_init_i = predict_dtx(past_rq, lsf1, lsf_p, lsf_r1);

    switch (set) {
        case Plsf3Set::MR475_515:
            indice[0] = vq_subvec<3>(&lsf_r1[0], tab::dico1_lsf_3, &wf1[0], tab::kDico1Size, 1);
            indice[1] = vq_subvec<3>(&lsf_r1[3], tab::dico2_lsf_3, &wf1[3], tab::kDico2Size / 2, 2);
            indice[2] = vq_subvec<4>(&lsf_r1[6], tab::mr515_3_lsf, &wf1[6], tab::kMr515_3Size, 1);
            break;
        case Plsf3Set::MR795:
            indice[0] = vq_subvec<3>(&lsf_r1[0], tab::mr795_1_lsf, &wf1[0], tab::kMr795_1Size, 1);
            indice[1] = vq_subvec<3>(&lsf_r1[3], tab::dico2_lsf_3, &wf1[3], tab::kDico2Size, 1);
            indice[2] = vq_subvec<4>(&lsf_r1[6], tab::dico3_lsf_3, &wf1[6], tab::kDico3Size, 1);
            break;
        default:  // MR59, MR67, MR74, MR102, MRDTX
            indice[0] = vq_subvec<3>(&lsf_r1[0], tab::dico1_lsf_3, &wf1[0], tab::kDico1Size, 1);
            indice[1] = vq_subvec<3>(&lsf_r1[3], tab::dico2_lsf_3, &wf1[3], tab::kDico2Size, 1);
            indice[2] = vq_subvec<4>(&lsf_r1[6], tab::dico3_lsf_3, &wf1[6], tab::kDico3Size, 1);
            break;
    }

    for (int i = 0; i < kM; i++) {
        lsf1_q[i] = add(lsf_r1[i], lsf_p[i]);
        past_rq[i] = lsf_r1[i];
    }
    reorder_lsf(lsf1_q, kLsfGap);
    lsf_to_lsp(lsf1_q, lsp1_q);
}

}  // namespace amr_dtx
ZEPS_END_VARIANT

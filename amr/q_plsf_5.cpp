// Q_plsf_5 of 3GPP TS 26.073 (q_plsf_5.c), the MR122 LSP quantiser: the
// residuals of two LSF vectors (2nd and 4th subframe) after 1st-order MA
// prediction are quantised jointly by split matrix quantisation in 5 parts
// of 2 x 2 values. LSPs Q15; LSFs 16384 = 4 kHz; weights Q13.
#include "amr/amr_dtx_tables.h"
#include "amr/lsp_quant.h"
#include "amr/lsp_quant_lsf.h"

ZEPS_BEGIN_VARIANT
namespace amr_dtx {
namespace {

namespace tab = zeps::amr_dtx_tab;

/// Weighted error of one 4-value row (r1[0], r1[1], r2[0], r2[1]); with
/// negated = true the row is taken with the opposite sign (add for sub).
Word32 split_distance(const Word16* r1, const Word16* r2, const Word16* row, const Word16* wf1,
                      const Word16* wf2, bool negated) {
    const Word16 r[4] = {r1[0], r1[1], r2[0], r2[1]};
    const Word16 w[4] = {wf1[0], wf1[1], wf2[0], wf2[1]};
    Word32 dist = 0;
    for (int k = 0; k < 4; k++) {
        const Word16 temp = mult(w[k], negated ? add(r[k], row[k]) : sub(r[k], row[k]));
        dist = L_mac(dist, temp, temp);
    }
    return dist;
}

void take_row(Word16* r1, Word16* r2, const Word16* row, bool negated) {
    r1[0] = negated ? negate(row[0]) : row[0];
    r1[1] = negated ? negate(row[1]) : row[1];
    r2[0] = negated ? negate(row[2]) : row[2];
    r2[1] = negated ? negate(row[3]) : row[3];
}

/// Vq_subvec: nearest row; the residuals are replaced by it.
Word16 vq_subvec(Word16* r1, Word16* r2, const Word16* dico, const Word16* wf1, const Word16* wf2,
                 int dico_size) {
    Word32 dist_min = MAX_32;
    Word16 index = 0;
    for (int i = 0; i < dico_size; i++) {
        const Word32 dist = split_distance(r1, r2, dico + 4 * i, wf1, wf2, false);
        if (L_sub(dist, dist_min) < 0) {
            dist_min = dist;
            index = static_cast<Word16>(i);
        }
    }
    take_row(r1, r2, dico + 4 * index, false);
    return index;
}

/// Vq_subvec_s: nearest row or its negative; index = 2 * row + sign.
Word16 vq_subvec_s(Word16* r1, Word16* r2, const Word16* dico, const Word16* wf1, const Word16* wf2,
                   int dico_size) {
    Word32 dist_min = MAX_32;
    Word16 index = 0;
    bool sign = false;
    for (int i = 0; i < dico_size; i++) {
        for (int s = 0; s < 2; s++) {
            const bool neg = s != 0;
            const Word32 dist = split_distance(r1, r2, dico + 4 * i, wf1, wf2, neg);
            if (L_sub(dist, dist_min) < 0) {
                dist_min = dist;
                index = static_cast<Word16>(i);
                sign = neg;
            }
        }
    }
    take_row(r1, r2, dico + 4 * index, sign);
    return add(shl(index, 1), sign ? 1 : 0);
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
    indice[2] = vq_subvec_s(&lsf_r1[4], &lsf_r2[4], tab::dico3_lsf_5, &wf1[4], &wf2[4], tab::kDico3_5Size);
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

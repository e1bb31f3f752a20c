/* SPDX-License-Identifier: BSD-3-Clause */
// The conjugate-structure gain codebook search of the G.729 gain quantisers
// (ITU-T G.729 3.9 Qua_gain with Gbk_presel, Annex D D.4.9 Qua_gain_6k),
// written once over a codebook description: the 8 kbit/s book (3 + 4 bits,
// 4 x 8 candidates) and the 6.4 kbit/s one of Annex D (3 + 3 bits, 6 x 6).
// The pre-selection keeps the candidates around the unquantised gains, the
// search picks the pair of least weighted error |x - gp y1 - gc y2|^2, pitch
// gains of 1 and above skipped when taming is on. Target and filtered
// adaptive vector Q0, filtered fixed vector Q12, fixed vector Q13, pitch
// gain Q14, code gain Q1.
#pragma once

#include "common/basic_op.h"
#include "common/fast_ops.h"
#include "g729/codec_kernels.h"
#include "g729/gain_kernels.h"
#include "g729/gain_lanes.h"

ZEPS_BEGIN_VARIANT
namespace g729c {

using GainRow = Word16[2];  // a codebook row or a pair of coefficients
using GainRow32 = Word32[2];

/// A two-stage gain codebook and the constants of its search.
struct GainBook {
    int size1, size2;         // rows of the two stages
    int ncan1, ncan2;         // candidates kept of each stage
    int corr_q;               // Q of the halved code-gain correction
    int thr1_q;               // Q of the first stage's thresholds
    int presel_shift;         // alignment of the Q2 code gain in Gbk_presel
    Word16 inv_coef;          // INV_COEF of the pre-selection
    const GainRow* gbk1;       // {pitch gain Q14, correction Q(corr_q + 1)}
    const GainRow* gbk2;
    const Word16* map1;  // codebook rows -> transmitted indices
    const Word16* map2;
    const GainRow* coef;       // pre-selection coefficients
    const GainRow32* L_coef;
    const Word16* thr1;  // pre-selection thresholds (Q thr1_q, Q15)
    const Word16* thr2;
};

/// Gbk_presel: the first of the ncan1 / ncan2 candidates of each stage
/// around the unquantised gains (best_gain Q9 / Q2, gcode0 Q4).
inline void gbk_presel(const GainBook& book, const Word16* best_gain, Word16& cand1, Word16& cand2, Word16 gcode0) {
    const Word32 L_cfbg = L_mult(book.coef[0][0], best_gain[0]);
    Word32 L_acc = L_add(L_cfbg, L_shr(book.L_coef[1][1], 15));
    Word16 acc_h = extract_h(L_acc);
    Word32 L_preg = L_mult(acc_h, gcode0);
    L_acc = L_shl(L_deposit_l(best_gain[1]), static_cast<Word16>(book.presel_shift));
    L_acc = L_sub(L_acc, L_preg);
    acc_h = extract_h(L_shl(L_acc, 2));
    const Word32 L_tmp_x = L_mult(acc_h, book.inv_coef);

    L_acc = L_sub(L_cfbg, L_shr(book.L_coef[0][1], 10));
    acc_h = mult(extract_h(L_acc), gcode0);
    const Word32 L_tmp = L_mult(acc_h, book.coef[1][0]);
    L_preg = L_mult(book.coef[0][0], best_gain[1]);
    L_acc = L_sub(L_tmp, L_shr(L_preg, 3));
    acc_h = extract_h(L_shl(L_acc, 2));
    const Word32 L_tmp_y = L_mult(acc_h, book.inv_coef);
    const auto sft_y = static_cast<Word16>((book.thr1_q + 4 + 1) - 16);
    constexpr Word16 sft_x = (15 + 4 + 1) - 15;
    const int last1 = book.size1 - book.ncan1, last2 = book.size2 - book.ncan2;
    cand1 = 0;
    cand2 = 0;
    if (gcode0 > 0) {
        while (L_sub(L_tmp_y, L_shr(L_mult(book.thr1[cand1], gcode0), sft_y)) > 0 && ++cand1 < last1) {}
        while (L_sub(L_tmp_x, L_shr(L_mult(book.thr2[cand2], gcode0), sft_x)) > 0 && ++cand2 < last2) {}
    } else {
        while (L_sub(L_tmp_y, L_shr(L_mult(book.thr1[cand1], gcode0), sft_y)) < 0 && ++cand1 < last1) {}
        while (L_sub(L_tmp_x, L_shr(L_mult(book.thr2[cand2], gcode0), sft_x)) < 0 && ++cand2 < last2) {}
    }
}

/// The halved code-gain correction of a codebook pair, Q(corr_q).
inline Word32 correction(const GainBook& book, int i, int j) {
    return L_shr(L_add(book.gbk1[i][1], book.gbk2[j][1]), 1);
}

/// The gain quantiser's correlations: G_pitch's <y1,y1> and <x,y1> with
/// Corr_xy2's three, each with its Q format (the inputs of Qua_gain).
inline void gain_correlations(const Word16* xn, const Word16* y1, const Word16* y2, Word16* cs, Word16* exp_cs) {
    Word16 g_coeff[4];
    (void)g_pitch(xn, y1, g_coeff);
    cs[0] = g_coeff[0];
    exp_cs[0] = negate(g_coeff[1]);
    cs[1] = negate(g_coeff[2]);
    exp_cs[1] = negate(add(g_coeff[3], 1));
    corr_xy2(xn, y1, y2, cs, exp_cs);
}

/// Qua_gain: the index (map1[i1] * size2 + map2[i2]) and the quantised
/// gains; updates past_qua_en.
inline Word16 qua_gain(const GainBook& book, const Word16* code, const Word16* g_coeff, const Word16* exp_coeff,
                       Word16* past_qua_en, Word16 tameflag, Word16& gain_pit, Word16& gain_cod) {
    Word16 gcode0, exp_gcode0;
    gain_predict(past_qua_en, code, gcode0, exp_gcode0);

    Word16 best_gain[2];
    optimum_gains(g_coeff, exp_coeff, tameflag, kGpClip2, best_gain);

    Word16 gcode0_org;
    if (exp_gcode0 >= 4)
        gcode0_org = shr(gcode0, sub(exp_gcode0, 4));
    else
        gcode0_org = extract_h(L_shl(L_deposit_l(gcode0), sub(4 + 16, exp_gcode0)));
    Word16 cand1, cand2;
    gbk_presel(book, best_gain, cand1, cand2, gcode0_org);

    // The code gain gcode0 * correction is Q(16 - corr_q) below gcode0's Q.
    const auto code_sft = static_cast<Word16>(16 - book.corr_q);
    Word16 exp_min[5];
    exp_min[0] = add(exp_coeff[0], 13);
    exp_min[1] = add(exp_coeff[1], 14);
    exp_min[2] = add(exp_coeff[2], sub(shl(exp_gcode0, 1), static_cast<Word16>(2 * code_sft + 13)));
    exp_min[3] = add(exp_coeff[3], sub(exp_gcode0, static_cast<Word16>(code_sft - 1)));
    exp_min[4] = add(exp_coeff[4], sub(exp_gcode0, code_sft));
    Word16 e_min = exp_min[0];
    for (int i = 1; i < 5; ++i)
        if (exp_min[i] < e_min) e_min = exp_min[i];
    DPF c[5];
    for (int i = 0; i < 5; ++i) c[i] = L_Extract(L_shr(L_deposit_h(g_coeff[i]), sub(exp_min[i], e_min)));

    Word32 L_dist_min = MAX_32;
    Word16 index1 = cand1, index2 = cand2;
    if (book.ncan2 == 8) {
        // Eight second-stage rows at a time, the choice in the same order.
        Word16 chi[5], clo[5], p2[8], c2[8];
        for (int k = 0; k < 5; ++k) {
            chi[k] = c[k].hi;
            clo[k] = c[k].lo;
        }
        for (int j = 0; j < 8; ++j) {
            p2[j] = book.gbk2[cand2 + j][0];
            c2[j] = book.gbk2[cand2 + j][1];
        }
        for (int i = 0; i < book.ncan1; ++i) {
            Word32 d[8];
            gain_dist8(chi, clo, gcode0, book.gbk1[cand1 + i][0], book.gbk1[cand1 + i][1], p2, c2, tameflag == 1, d);
            for (int j = 0; j < 8; ++j)
                if (d[j] < L_dist_min) {  // L_sub(d, L_dist_min) < 0: saturation keeps the sign
                    L_dist_min = d[j];
                    index1 = static_cast<Word16>(cand1 + i);
                    index2 = static_cast<Word16>(cand2 + j);
                }
        }
    } else {
        for (int i = 0; i < book.ncan1; ++i)
            for (int j = 0; j < book.ncan2; ++j) {
                const Word16 g_pitch = add(book.gbk1[cand1 + i][0], book.gbk2[cand2 + j][0]);
                if (tameflag == 1 && g_pitch >= kGp0999) continue;
                const Word16 g_code = mult(gcode0, extract_l(correction(book, cand1 + i, cand2 + j)));
                const Word16 g2_pitch = mult(g_pitch, g_pitch);
                const Word16 g2_code = mult(g_code, g_code);
                const Word16 g_pit_cod = mult(g_code, g_pitch);
                Word32 d = Mpy_32_16_fast(c[0].hi, c[0].lo, g2_pitch);
                d = L_add(d, Mpy_32_16_fast(c[1].hi, c[1].lo, g_pitch));
                d = L_add(d, Mpy_32_16_fast(c[2].hi, c[2].lo, g2_code));
                d = L_add(d, Mpy_32_16_fast(c[3].hi, c[3].lo, g_code));
                d = L_add(d, Mpy_32_16_fast(c[4].hi, c[4].lo, g_pit_cod));
                if (L_sub(d, L_dist_min) < 0) {
                    L_dist_min = d;
                    index1 = static_cast<Word16>(cand1 + i);
                    index2 = static_cast<Word16>(cand2 + j);
                }
            }
    }
    gain_pit = add(book.gbk1[index1][0], book.gbk2[index2][0]);
    const Word32 L_acc = L_mult(extract_l(correction(book, index1, index2)), gcode0);
    gain_cod = extract_h(L_shl(L_acc, add(negate(exp_gcode0), code_sft)));
    // Gain_update takes the unhalved correction in Q13.
    const Word32 L_gbk12 = L_add(book.gbk1[index1][1], book.gbk2[index2][1]);
    gain_update(past_qua_en, L_shr(L_gbk12, static_cast<Word16>(book.corr_q - 12)));
    return add(static_cast<Word16>(book.map1[index1] * book.size2), book.map2[index2]);
}

}  // namespace g729c
ZEPS_END_VARIANT

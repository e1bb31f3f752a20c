// SPDX-License-Identifier: BSD-3-Clause
// G.729 pitch gain and gain quantisation (ITU-T G.729 3.7.3 G_pitch, 3.9
// Qua_gain with Corr_xy2 and Gbk_presel, 3.9.1 Gain_update), identical in
// Annex A: the conjugate-structure codebook (3 + 4 bits) searched over the
// 4 x 8 pre-selected candidates for the least weighted error
// |x - gp y1 - gc y2|^2, pitch gains of 1 and above skipped when taming is
// on. Target and filtered adaptive vector Q0, filtered fixed vector Q12,
// fixed vector Q13, pitch gain Q14, code gain Q1.
#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"
#include "g729/fast_ops.h"
#include "g729/gain_kernels.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

constexpr int kNcan1 = 4, kNcan2 = 8;
constexpr Word16 kInvCoef = -17103;  // INV_COEF, Q19

/// Gbk_presel: the first of the NCAN1 / NCAN2 candidates of each stage
/// around the unquantised gains (best_gain Q9 / Q2, gcode0 Q4).
void gbk_presel(const Word16* best_gain, Word16& cand1, Word16& cand2, Word16 gcode0) {
    const Word32 L_cfbg = L_mult(coef[0][0], best_gain[0]);
    Word32 L_acc = L_add(L_cfbg, L_shr(L_coef[1][1], 15));
    Word16 acc_h = extract_h(L_acc);
    Word32 L_preg = L_mult(acc_h, gcode0);
    L_acc = L_shl(L_deposit_l(best_gain[1]), 7);
    L_acc = L_sub(L_acc, L_preg);
    acc_h = extract_h(L_shl(L_acc, 2));
    const Word32 L_tmp_x = L_mult(acc_h, kInvCoef);

    L_acc = L_sub(L_cfbg, L_shr(L_coef[0][1], 10));
    acc_h = mult(extract_h(L_acc), gcode0);
    const Word32 L_tmp = L_mult(acc_h, coef[1][0]);
    L_preg = L_mult(coef[0][0], best_gain[1]);
    L_acc = L_sub(L_tmp, L_shr(L_preg, 3));
    acc_h = extract_h(L_shl(L_acc, 2));
    const Word32 L_tmp_y = L_mult(acc_h, kInvCoef);
    constexpr Word16 sft_y = (14 + 4 + 1) - 16;
    constexpr Word16 sft_x = (15 + 4 + 1) - 15;
    cand1 = 0;
    cand2 = 0;
    if (gcode0 > 0) {
        while (L_sub(L_tmp_y, L_shr(L_mult(thr1[cand1], gcode0), sft_y)) > 0 && ++cand1 < 8 - kNcan1) {}
        while (L_sub(L_tmp_x, L_shr(L_mult(thr2[cand2], gcode0), sft_x)) > 0 && ++cand2 < 16 - kNcan2) {}
    } else {
        while (L_sub(L_tmp_y, L_shr(L_mult(thr1[cand1], gcode0), sft_y)) < 0 && ++cand1 < 8 - kNcan1) {}
        while (L_sub(L_tmp_x, L_shr(L_mult(thr2[cand2], gcode0), sft_x)) < 0 && ++cand2 < 16 - kNcan2) {}
    }
}

/// Qua_gain: the index (map1[i1] * 16 + map2[i2]) and the quantised gains;
/// updates past_qua_en.
Word16 qua_gain(const Word16* code, const Word16* g_coeff, const Word16* exp_coeff, Word16* past_qua_en,
                Word16 tameflag, Word16& gain_pit, Word16& gain_cod) {
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
    gbk_presel(best_gain, cand1, cand2, gcode0_org);

    Word16 exp_min[5];
    exp_min[0] = add(exp_coeff[0], 13);
    exp_min[1] = add(exp_coeff[1], 14);
    exp_min[2] = add(exp_coeff[2], sub(shl(exp_gcode0, 1), 21));
    exp_min[3] = add(exp_coeff[3], sub(exp_gcode0, 3));
    exp_min[4] = add(exp_coeff[4], sub(exp_gcode0, 4));
    Word16 e_min = exp_min[0];
    for (int i = 1; i < 5; ++i)
        if (exp_min[i] < e_min) e_min = exp_min[i];
    DPF c[5];
    for (int i = 0; i < 5; ++i) c[i] = L_Extract(L_shr(L_deposit_h(g_coeff[i]), sub(exp_min[i], e_min)));

    Word32 L_dist_min = MAX_32;
    Word16 index1 = cand1, index2 = cand2;
    for (int i = 0; i < kNcan1; ++i)
        for (int j = 0; j < kNcan2; ++j) {
            const Word16 g_pitch = add(gbk1[cand1 + i][0], gbk2[cand2 + j][0]);
            if (tameflag == 1 && g_pitch >= kGp0999) continue;
            const Word32 L_sum = L_add(gbk1[cand1 + i][1], gbk2[cand2 + j][1]);
            const Word16 tmp = extract_l(L_shr(L_sum, 1));
            const Word16 g_code = mult(gcode0, tmp);
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
    gain_pit = add(gbk1[index1][0], gbk2[index2][0]);
    const Word32 L_gbk12 = L_add(gbk1[index1][1], gbk2[index2][1]);
    gain_cod = code_gain(L_gbk12, gcode0, exp_gcode0);
    gain_update(past_qua_en, L_gbk12);
    return add(static_cast<Word16>(map1[index1] * 16), map2[index2]);
}

}  // namespace

ZepStatus zepsPitchGain_G729_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcFltAdptVector, Zep16s* pResultAdptGain) {
    if (any_null(pSrcAdptTarget, pSrcFltAdptVector, pResultAdptGain)) return zepStsNullPtrErr;
    Word16 g_coeff[4];
    *pResultAdptGain = g_pitch(pSrcAdptTarget, pSrcFltAdptVector, g_coeff);
    return zepStsNoErr;
}

ZepStatus zepsGainQuant_G729_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcFltAdptVector,
                                 const Zep16s* pSrcFixedVector, const Zep16s* pSrcFltFixedVector, Zep16s* pPastQuaEn,
                                 Zep16s tameFlag, Zep16s* pDstGain, Zep16s* pDstIndex) {
    if (any_null(pSrcAdptTarget, pSrcFltAdptVector, pSrcFixedVector, pSrcFltFixedVector, pPastQuaEn, pDstGain,
                 pDstIndex))
        return zepStsNullPtrErr;
    if (!in_range<Word16>(tameFlag, 0, 1)) return zepStsRangeErr;
    Word16 g_coeff[4];
    (void)g_pitch(pSrcAdptTarget, pSrcFltAdptVector, g_coeff);
    Word16 cs[5], exp_cs[5];
    cs[0] = g_coeff[0];
    exp_cs[0] = negate(g_coeff[1]);
    cs[1] = negate(g_coeff[2]);
    exp_cs[1] = negate(add(g_coeff[3], 1));
    corr_xy2(pSrcAdptTarget, pSrcFltAdptVector, pSrcFltFixedVector, cs, exp_cs);
    Word16 gp, gc;
    *pDstIndex = qua_gain(pSrcFixedVector, cs, exp_cs, pPastQuaEn, tameFlag, gp, gc);
    pDstGain[0] = gp;
    pDstGain[1] = gc;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

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
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

constexpr int kNcan1 = 4, kNcan2 = 8;
constexpr Word16 kInvCoef = -17103;  // INV_COEF, Q19
constexpr Word16 kGpClip2 = 481;     // GPCLIP2, Q9
constexpr Word16 kGp0999 = 16383;    // GP0999, Q14

/// An L_mac chain over 40 products from init (0 or 1): exact in 32-bit lanes
/// when the sums of squares ex, ey prove that no partial sum can saturate
/// (2 sqrt(ex ey) <= MAX_32, so 2 |sum| is even and at most MAX_32 - 1);
/// the reference's loop with its overflow flag otherwise.
inline Word32 mac40(Word32 init, const Word16* x, const Word16* y, std::int64_t ex, std::int64_t ey, Flag& ovf) {
    if (g729p::dot_is_safe(ex, ey)) return init + 2 * g729p::dot_lanes(x, y, kSubfr);
    return g729p::dot40(x, y, init, ovf);
}

/// G_pitch: the gain <x,y>/<y,y> (Q14, 0..1.2) and the normalised
/// correlations g_coeff = {yy, 15 - exp_yy, xy, 15 - exp_xy}. An energy
/// chain of non-negative terms saturates exactly when its exact sum passes
/// MAX_32 and then stays there: the clamped exact sum is its value.
Word16 g_pitch(const Word16* xn, const Word16* y1, Word16* g_coeff) {
    Word16 scaled[kSubfr];
    for (int i = 0; i < kSubfr; ++i) scaled[i] = shr(y1[i], 2);
    const std::int64_t ey = g729p::energy64(y1, kSubfr), ex = g729p::energy64(xn, kSubfr);
    Flag ovf = false;
    Word32 s = g729p::energy40_sat(ey, 1, ovf);
    Word16 exp_yy, yy;
    if (!ovf) {
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
    } else {
        Flag unused = false;
        s = g729p::energy40_sat(g729p::energy64(scaled, kSubfr), 1, unused);
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
        exp_yy = sub(exp_yy, 4);
    }
    ovf = false;
    s = mac40(0, xn, y1, ex, ey, ovf);
    Word16 exp_xy, xy;
    if (!ovf) {
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
    } else {
        Flag unused = false;
        s = mac40(0, xn, scaled, ex, g729p::energy64(scaled, kSubfr), unused);
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
        exp_xy = sub(exp_xy, 2);
    }
    g_coeff[0] = yy;
    g_coeff[1] = sub(15, exp_yy);
    g_coeff[2] = xy;
    g_coeff[3] = sub(15, exp_xy);
    if (xy <= 0) {
        g_coeff[3] = -15;
        return 0;
    }
    Word16 gain = div_s(shr(xy, 1), yy);
    gain = shr(gain, sub(exp_xy, exp_yy));
    return gain > 19661 ? Word16{19661} : gain;
}

/// Corr_xy2: <y2,y2>, -2<xn,y2>, 2<y1,y2> with their Q formats into
/// g_coeff[2..4], exp_g_coeff[2..4].
void corr_xy2(const Word16* xn, const Word16* y1, const Word16* y2, Word16* g_coeff, Word16* exp_g_coeff) {
    Word16 scaled_y2[kSubfr];
    for (int i = 0; i < kSubfr; ++i) scaled_y2[i] = shr(y2[i], 3);
    const std::int64_t es = g729p::energy64(scaled_y2, kSubfr);
    Flag unused = false;
    Word32 L_acc = g729p::energy40_sat(es, 1, unused);
    Word16 exp = norm_l(L_acc);
    g_coeff[2] = round_fx(L_shl(L_acc, exp));
    exp_g_coeff[2] = add(exp, 19 - 16);
    L_acc = mac40(1, xn, scaled_y2, g729p::energy64(xn, kSubfr), es, unused);
    exp = norm_l(L_acc);
    g_coeff[3] = negate(round_fx(L_shl(L_acc, exp)));
    exp_g_coeff[3] = sub(add(exp, 10 - 16), 1);
    L_acc = mac40(1, y1, scaled_y2, g729p::energy64(y1, kSubfr), es, unused);
    exp = norm_l(L_acc);
    g_coeff[4] = round_fx(L_shl(L_acc, exp));
    exp_g_coeff[4] = sub(add(exp, 10 - 16), 1);
}

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

/// L_tmp1 / 2^exp1 - L_tmp2 / 2^exp2 at the smaller exponent, both halved
/// (the two "nume" forms of Qua_gain); exp receives the result's exponent.
Word32 aligned_difference_half(Word32 L_tmp1, Word16 exp1, Word32 L_tmp2, Word16 exp2, Word16& exp) {
    if (exp1 > exp2) {
        exp = sub(exp2, 1);
        return L_sub(L_shr(L_tmp1, add(sub(exp1, exp2), 1)), L_shr(L_tmp2, 1));
    }
    exp = sub(exp1, 1);
    return L_sub(L_shr(L_tmp1, 1), L_shr(L_tmp2, add(sub(exp2, exp1), 1)));
}

/// Qua_gain: the index (map1[i1] * 16 + map2[i2]) and the quantised gains;
/// updates past_qua_en.
Word16 qua_gain(const Word16* code, const Word16* g_coeff, const Word16* exp_coeff, Word16* past_qua_en,
                Word16 tameflag, Word16& gain_pit, Word16& gain_cod) {
    Word16 gcode0, exp_gcode0;
    gain_predict(past_qua_en, code, gcode0, exp_gcode0);

    Word32 L_tmp1 = L_mult(g_coeff[0], g_coeff[2]);
    Word16 exp1 = add(add(exp_coeff[0], exp_coeff[2]), 1 - 2);
    Word32 L_tmp2 = L_mult(g_coeff[4], g_coeff[4]);
    Word16 exp2 = add(add(exp_coeff[4], exp_coeff[4]), 1);
    Word32 L_tmp;
    Word16 exp;
    if (exp1 > exp2) {
        L_tmp = L_sub(L_shr(L_tmp1, sub(exp1, exp2)), L_tmp2);
        exp = exp2;
    } else {
        L_tmp = L_sub(L_tmp1, L_shr(L_tmp2, sub(exp2, exp1)));
        exp = exp1;
    }
    Word16 sft = norm_l(L_tmp);
    const Word16 denom = extract_h(L_shl(L_tmp, sft));
    const Word16 exp_denom = sub(add(exp, sft), 16);
    const Word16 inv_denom = negate(div_s(16384, denom));
    const Word16 exp_inv_denom = sub(14 + 15, exp_denom);

    Word16 best_gain[2];
    L_tmp = aligned_difference_half(L_mult(g_coeff[2], g_coeff[1]), add(exp_coeff[2], exp_coeff[1]),
                                    L_mult(g_coeff[3], g_coeff[4]), add(add(exp_coeff[3], exp_coeff[4]), 1), exp);
    sft = norm_l(L_tmp);
    Word16 nume = extract_h(L_shl(L_tmp, sft));
    Word16 exp_nume = sub(add(exp, sft), 16);
    sft = sub(add(exp_nume, exp_inv_denom), 9 + 16 - 1);
    best_gain[0] = extract_h(L_shr(L_mult(nume, inv_denom), sft));
    if (tameflag == 1 && best_gain[0] > kGpClip2) best_gain[0] = kGpClip2;

    L_tmp = aligned_difference_half(L_mult(g_coeff[0], g_coeff[3]), add(exp_coeff[0], exp_coeff[3]),
                                    L_mult(g_coeff[1], g_coeff[4]), add(add(exp_coeff[1], exp_coeff[4]), 1), exp);
    sft = norm_l(L_tmp);
    nume = extract_h(L_shl(L_tmp, sft));
    exp_nume = sub(add(exp, sft), 16);
    sft = sub(add(exp_nume, exp_inv_denom), 2 + 16 - 1);
    best_gain[1] = extract_h(L_shr(L_mult(nume, inv_denom), sft));

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

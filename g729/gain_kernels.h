/* SPDX-License-Identifier: BSD-3-Clause */
// Private kernels of the G.729 gain quantisers (ITU-T G.729 3.7.3 G_pitch,
// 3.9 Corr_xy2 and the optimum gains of Qua_gain), shared by the 8 kbit/s
// quantiser and the 6.4 kbit/s one of Annex D. Target and filtered adaptive
// vector Q0, filtered fixed vector Q12, pitch gain Q14.
#pragma once

#include "common/basic_op.h"
#include "g729/codec_kernels.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace g729c {

inline constexpr Word16 kGpClip2 = 481;   // GPCLIP2, Q9
inline constexpr Word16 kGp0999 = 16383;  // GP0999, Q14

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
inline Word16 g_pitch(const Word16* xn, const Word16* y1, Word16* g_coeff) {
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
inline void corr_xy2(const Word16* xn, const Word16* y1, const Word16* y2, Word16* g_coeff, Word16* exp_g_coeff) {
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

/// L_tmp1 / 2^exp1 - L_tmp2 / 2^exp2 at the smaller exponent, both halved
/// (the two "nume" forms of Qua_gain); exp receives the result's exponent.
inline Word32 aligned_difference_half(Word32 L_tmp1, Word16 exp1, Word32 L_tmp2, Word16 exp2, Word16& exp) {
    if (exp1 > exp2) {
        exp = sub(exp2, 1);
        return L_sub(L_shr(L_tmp1, add(sub(exp1, exp2), 1)), L_shr(L_tmp2, 1));
    }
    exp = sub(exp1, 1);
    return L_sub(L_shr(L_tmp1, 1), L_shr(L_tmp2, add(sub(exp2, exp1), 1)));
}

/// The unquantised optimum gains of Qua_gain from the five correlations
/// (g_coeff with their Q formats exp_coeff): best_gain[0] the pitch gain
/// (Q9, at most gp_clip2 when tameflag is 1), best_gain[1] the code gain (Q2).
inline void optimum_gains(const Word16* g_coeff, const Word16* exp_coeff, Word16 tameflag, Word16 gp_clip2,
                          Word16* best_gain) {
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

    L_tmp = aligned_difference_half(L_mult(g_coeff[2], g_coeff[1]), add(exp_coeff[2], exp_coeff[1]),
                                    L_mult(g_coeff[3], g_coeff[4]), add(add(exp_coeff[3], exp_coeff[4]), 1), exp);
    sft = norm_l(L_tmp);
    Word16 nume = extract_h(L_shl(L_tmp, sft));
    Word16 exp_nume = sub(add(exp, sft), 16);
    sft = sub(add(exp_nume, exp_inv_denom), 9 + 16 - 1);
    best_gain[0] = extract_h(L_shr(L_mult(nume, inv_denom), sft));
    if (tameflag == 1 && best_gain[0] > gp_clip2) best_gain[0] = gp_clip2;

    L_tmp = aligned_difference_half(L_mult(g_coeff[0], g_coeff[3]), add(exp_coeff[0], exp_coeff[3]),
                                    L_mult(g_coeff[1], g_coeff[4]), add(add(exp_coeff[1], exp_coeff[4]), 1), exp);
    sft = norm_l(L_tmp);
    nume = extract_h(L_shl(L_tmp, sft));
    exp_nume = sub(add(exp, sft), 16);
    sft = sub(add(exp_nume, exp_inv_denom), 2 + 16 - 1);
    best_gain[1] = extract_h(L_shr(L_mult(nume, inv_denom), sft));
}

}  // namespace g729c
ZEPS_END_VARIANT

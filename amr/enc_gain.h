/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR encoder gain quantisation (3GPP TS 26.073 g_code.c, q_gain_c.c,
// calc_en.c, qua_gain.c, gain_q.c, gc_pred.c).
//
// Formats: pitch gain Q14, code gain Q1 (Q0 scaled as the reference per
// mode), energies as exponent/fraction pairs, predictor memories Q10.
#pragma once

#include "amr/dec_gain.h"
#include "amr/enc_pitch.h"

ZEPS_BEGIN_VARIANT
namespace amr_enc {

/// The gain quantiser's memory between subframes and frames (gainQuantState
/// with its gc_pred states and the MR475 first-subframe values).
struct GainQuantState {
    GainPredState pred;      ///< gc_predSt
    GainPredState pred_unq;  ///< gc_predUnqSt (MR475)
    Word16 sf0_exp_gcode0, sf0_frac_gcode0, sf0_exp_target_en, sf0_frac_target_en;
    Word16 sf0_exp_coeff[5], sf0_frac_coeff[5];
    Word16 onset, prev_alpha, prev_gc, ltpg_mem[5];  ///< gain adaptation of MR795 (GainAdaptState)
};

inline void gain_quant_reset(GainQuantState& st) {
    gc_pred_reset(st.pred);
    gc_pred_reset(st.pred_unq);
    st.sf0_exp_gcode0 = st.sf0_frac_gcode0 = st.sf0_exp_target_en = st.sf0_frac_target_en = 0;
    for (int i = 0; i < 5; i++) st.sf0_exp_coeff[i] = st.sf0_frac_coeff[i] = 0;
    st.onset = st.prev_alpha = st.prev_gc = 0;
    for (int i = 0; i < 5; i++) st.ltpg_mem[i] = 0;
}

/// G_code: innovative gain xn2.y2 / y2.y2 of 12.2 kbit/s, Q1.
inline Word16 g_code(const Word16* xn2, const Word16* y2) {
    Word16 scal_y2[kLSubfr];
    for (int i = 0; i < kLSubfr; i++) scal_y2[i] = shr(y2[i], 1);
    Word32 s = 1;
    for (int i = 0; i < kLSubfr; i++) s = L_mac(s, xn2[i], scal_y2[i]);
    const Word16 exp_xy = norm_l(s);
    Word16 xy = extract_h(L_shl(s, exp_xy));
    if (xy <= 0) return 0;
    s = 0;
    for (int i = 0; i < kLSubfr; i++) s = L_mac(s, scal_y2[i], scal_y2[i]);
    const Word16 exp_yy = norm_l(s);
    const Word16 yy = extract_h(L_shl(s, exp_yy));
    xy = shr(xy, 1);
    const Word16 gain = div_s(xy, yy);
    const Word16 i = sub(add(exp_xy, 5), exp_yy);
    return shl(shr(gain, i), 1);
}

/// q_gain_code: scalar code-gain quantiser (12.2 and 7.95 kbit/s).
inline Word16 q_gain_code(Word16 mode, Word16 exp_gcode0, Word16 frac_gcode0, Word16& gain, Word16& qua_ener_MR122,
                          Word16& qua_ener) {
    using zeps::amr_dec_tab::qua_gain_code;
    constexpr int kNb = 32;
    const bool m122 = mode == MR122;
    const Word16 g_q0 = m122 ? shr(gain, 1) : 0;
    Word16 gcode0 = extract_l(Pow2(exp_gcode0, frac_gcode0));
    gcode0 = m122 ? shl(gcode0, 4) : shl(gcode0, 5);
    const Word16 target = m122 ? g_q0 : gain;
    Word16 err_min = abs_s(sub(target, mult(gcode0, qua_gain_code[0]))), index = 0;
    for (int i = 1; i < kNb; i++) {
        const Word16 err = abs_s(sub(target, mult(gcode0, qua_gain_code[3 * i])));
        if (err < err_min) {
            err_min = err;
            index = static_cast<Word16>(i);
        }
    }
    const std::int16_t* p = &qua_gain_code[3 * index];
    gain = m122 ? shl(mult(gcode0, p[0]), 1) : mult(gcode0, p[0]);
    qua_ener_MR122 = p[1];
    qua_ener = p[2];
    return index;
}

/// calc_filt_energies: the five correlation terms of the gain error as
/// fraction/exponent pairs, and for 4.75 and 7.95 kbit/s the optimum code gain.
inline void calc_filt_energies(Word16 mode, const Word16* xn, const Word16* xn2, const Word16* y1, const Word16* Y2,
                               const Word16* g_coeff, Word16* frac_coeff, Word16* exp_coeff, Word16& cod_gain_frac,
                               Word16& cod_gain_exp) {
    const Word32 ener_init = (mode == MR795 || mode == MR475) ? 0 : 1;
    Word16 y2[kLSubfr];
    for (int i = 0; i < kLSubfr; i++) y2[i] = shr(Y2[i], 3);
    frac_coeff[0] = g_coeff[0];
    exp_coeff[0] = g_coeff[1];
    frac_coeff[1] = negate(g_coeff[2]);
    exp_coeff[1] = add(g_coeff[3], 1);
    auto dot = [&](const Word16* a) {
        Word32 s = L_mac(ener_init, a[0], y2[0]);
        for (int i = 1; i < kLSubfr; i++) s = L_mac(s, a[i], y2[i]);
        return s;
    };
    Word32 s = dot(y2);
    Word16 exp = norm_l(s);
    frac_coeff[2] = extract_h(L_shl(s, exp));
    exp_coeff[2] = sub(15 - 18, exp);
    s = dot(xn);
    exp = norm_l(s);
    frac_coeff[3] = negate(extract_h(L_shl(s, exp)));
    exp_coeff[3] = sub(15 - 9 + 1, exp);
    s = dot(y1);
    exp = norm_l(s);
    frac_coeff[4] = extract_h(L_shl(s, exp));
    exp_coeff[4] = sub(15 - 9 + 1, exp);
    if (mode == MR475 || mode == MR795) {
        s = dot(xn2);
        exp = norm_l(s);
        const Word16 frac = extract_h(L_shl(s, exp));
        exp = sub(15 - 9, exp);
        if (frac <= 0) {
            cod_gain_frac = 0;
            cod_gain_exp = 0;
        } else {
            cod_gain_frac = div_s(shr(frac, 1), frac_coeff[2]);
            cod_gain_exp = sub(sub(exp, exp_coeff[2]), 14);
        }
    }
}

/// Qua_gain: joint pitch/code gain VQ of 5.15, 5.9, 6.7, 7.4 and 10.2 kbit/s.
inline Word16 qua_gain(Word16 mode, Word16 exp_gcode0, Word16 frac_gcode0, const Word16* frac_coeff,
                       const Word16* exp_coeff, Word16 gp_limit, Word16& gain_pit, Word16& gain_cod,
                       Word16& qua_ener_MR122, Word16& qua_ener) {
    namespace t = zeps::amr_dec_tab;
    const bool high = mode == MR102 || mode == MR74 || mode == MR67;
    const std::int16_t* table_gain = high ? t::table_gain_highrates : t::table_gain_lowrates;
    const int table_len = high ? 128 : 64;
    const Word16 gcode0 = extract_l(Pow2(14, frac_gcode0));
    const Word16 exp_code = sub(exp_gcode0, 11);
    Word16 exp_max[5], coeff[5], coeff_lo[5];
    exp_max[0] = sub(exp_coeff[0], 13);
    exp_max[1] = sub(exp_coeff[1], 14);
    exp_max[2] = add(exp_coeff[2], add(15, shl(exp_code, 1)));
    exp_max[3] = add(exp_coeff[3], exp_code);
    exp_max[4] = add(exp_coeff[4], add(1, exp_code));
    Word16 e_max = exp_max[0];
    for (int i = 1; i < 5; i++) e_max = std::max(e_max, exp_max[i]);
    e_max = add(e_max, 1);
    for (int i = 0; i < 5; i++) L_Extract(L_shr(L_deposit_h(frac_coeff[i]), sub(e_max, exp_max[i])), coeff[i], coeff_lo[i]);
    Word32 dist_min = MAX_32;
    int index = 0;
    for (int i = 0; i < table_len; i++) {
        const Word16 g_pitch = table_gain[4 * i];
        if (g_pitch > gp_limit) continue;
        const Word16 g_code = mult(table_gain[4 * i + 1], gcode0);
        const Word16 g2_pitch = mult(g_pitch, g_pitch);
        const Word16 g2_code = mult(g_code, g_code);
        const Word16 g_pit_cod = mult(g_code, g_pitch);
        Word32 L_tmp = Mpy_32_16(coeff[0], coeff_lo[0], g2_pitch);
        L_tmp = L_add(L_tmp, Mpy_32_16(coeff[1], coeff_lo[1], g_pitch));
        L_tmp = L_add(L_tmp, Mpy_32_16(coeff[2], coeff_lo[2], g2_code));
        L_tmp = L_add(L_tmp, Mpy_32_16(coeff[3], coeff_lo[3], g_code));
        L_tmp = L_add(L_tmp, Mpy_32_16(coeff[4], coeff_lo[4], g_pit_cod));
        if (L_sub(L_tmp, dist_min) < 0) {
            dist_min = L_tmp;
            index = i;
        }
    }
    const std::int16_t* p = &table_gain[4 * index];
    gain_pit = p[0];
    qua_ener_MR122 = p[2];
    qua_ener = p[3];
    gain_cod = extract_h(L_shr(L_mult(p[1], gcode0), sub(10, exp_gcode0)));
    return static_cast<Word16>(index);
}

}  // namespace amr_enc
ZEPS_END_VARIANT

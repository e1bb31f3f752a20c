/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR encoder gain quantisation (3GPP TS 26.073 g_code.c, q_gain_c.c,
// calc_en.c, qua_gain.c, gain_q.c, gc_pred.c).
//
// Formats: pitch gain Q14, code gain Q1 (Q0 scaled as the reference per
// mode), energies as exponent/fraction pairs, predictor memories Q10.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "amr/dec_gain.h"
#include "amr/enc_gain_lanes.h"
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

/// L_shl(s, norm_l(s)): the normalising shift never saturates, so it is
/// the plain shift (without the reference's bit loop).
inline Word32 normalised(Word32 s) { return static_cast<Word32>(static_cast<std::uint32_t>(s) << norm_l(s)); }

/// init + sum 2 a[i]^2 as the L_mac chain leaves it (init >= 0): the terms
/// are not negative, so the chain is the plain sum clamped at MAX_32.
inline Word32 sum_sq_sat(const Word16* a, Word32 init = 0) {
    const std::int64_t s = init + 2 * g729p::energy64(a, kLSubfr);
    return s > MAX_32 ? MAX_32 : static_cast<Word32>(s);
}

/// The L_mac chain init + sum 2 a[i] b[i] over a subframe. By Cauchy-Schwarz
/// every partial sum lies within |init| + 2 sqrt(Ea Eb) of 0 (E the sums of
/// squares); when that is at most MAX_32 the chain is the plain sum,
/// otherwise it runs term by term. The sums of squares are exact 64-bit
/// sums; the plain sum of products then lies within 31 bits, so its
/// wrapping 32-bit lanes are exact.
inline Word32 mac_chain(const Word16* a, const Word16* b, Word32 init = 0) {
    const std::int64_t ea = g729p::energy64(a, kLSubfr), eb = g729p::energy64(b, kLSubfr);
    const std::int64_t room = MAX_32 - (init < 0 ? -std::int64_t{init} : std::int64_t{init});
    if (4 * static_cast<unsigned __int128>(ea) * static_cast<unsigned __int128>(eb) <=
        static_cast<unsigned __int128>(room) * static_cast<unsigned __int128>(room))
        return static_cast<Word32>(init + 2 * std::int64_t{g729p::dot_lanes(a, b, kLSubfr)});
    Word32 s = init;
    for (int i = 0; i < kLSubfr; i++) s = L_mac(s, a[i], b[i]);
    return s;
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
    auto dot = [&](const Word16* a) { return mac_chain(a, y2, ener_init); };
    Word32 s = sum_sq_sat(y2, ener_init);
    Word16 exp = norm_l(s);
    frac_coeff[2] = extract_h(normalised(s));
    exp_coeff[2] = sub(15 - 18, exp);
    s = dot(xn);
    exp = norm_l(s);
    frac_coeff[3] = negate(extract_h(normalised(s)));
    exp_coeff[3] = sub(15 - 9 + 1, exp);
    s = dot(y1);
    exp = norm_l(s);
    frac_coeff[4] = extract_h(normalised(s));
    exp_coeff[4] = sub(15 - 9 + 1, exp);
    if (mode == MR475 || mode == MR795) {
        s = dot(xn2);
        exp = norm_l(s);
        const Word16 frac = extract_h(normalised(s));
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

/// The search of Qua_gain (reference loop): the table row of least error
/// among those whose pitch gain stays within gp_limit.
inline int qua_gain_search_scalar(const std::int16_t* table_gain, int table_len, Word16 gcode0, const Word16* coeff,
                                  const Word16* coeff_lo, Word16 gp_limit) {
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
    return index;
}

/// Largest entries of the pitch gain (Q14) and code gain factor (Q12 or
/// Q11) columns of table_gain_highrates and table_gain_lowrates; both
/// columns hold no negative entry.
inline constexpr std::int32_t kHighRatesColumnMax[2] = {21318, 32764};
inline constexpr std::int32_t kLowRatesColumnMax[2] = {21626, 28753};

/// |mult(a, b)| for |a| <= a_max, |b| <= b_max.
constexpr std::int64_t mult_bound(std::int64_t a_max, std::int64_t b_max) { return ((a_max * b_max) >> 15) + 1; }

/// Bounds of the five gains of one subframe's error terms (g2_pitch,
/// g_pitch, g2_code, g_code, g_pit_cod) from the column bounds and gcode0.
inline void gain_term_bounds(std::int64_t gp_max, std::int64_t factor_max, Word16 gcode0, std::int64_t* n) {
    const std::int64_t gc = mult_bound(factor_max, gcode0);
    n[0] = mult_bound(gp_max, gp_max);
    n[1] = gp_max;
    n[2] = mult_bound(gc, gc);
    n[3] = gc;
    n[4] = mult_bound(gc, gp_max);
}

/// True when no partial sum of the error chains can saturate: every term
/// Mpy_32_16(hi, lo, n) = 2 hi n + 2 mult(lo, n) with 0 <= lo < 2^15 is at
/// most (2 |hi| + 2) |n| in magnitude, and those bounds add up to MAX_32 at most.
inline bool gain_chain_is_exact(const Word16* coeff, const std::int64_t* n_max, int nterms) {
    std::int64_t bound = 0;
    for (int k = 0; k < nterms; k++) bound += (2 * std::abs(std::int64_t{coeff[k]}) + 2) * n_max[k];
    return bound <= MAX_32;
}

/// The search of Qua_gain as computed: with gcode0 > 0 (Pow2's range) every
/// gain is non-negative, and where gain_chain_is_exact holds the error is
/// plain arithmetic, eight rows at a time; otherwise the reference loop.
inline int qua_gain_search(const std::int16_t* table_gain, int table_len, const std::int32_t* column_max,
                           Word16 gcode0, const Word16* coeff, const Word16* coeff_lo, Word16 gp_limit) {
#if defined(__SSSE3__)
    std::int64_t n_max[5];
    gain_term_bounds(column_max[0], column_max[1], gcode0, n_max);
    if (gcode0 >= 0 && gain_chain_is_exact(coeff, n_max, 5))
        return gain_lanes::qua_gain_search(table_gain, table_len, gcode0, coeff, coeff_lo, gp_limit);
#else
    static_cast<void>(column_max);
#endif
    return qua_gain_search_scalar(table_gain, table_len, gcode0, coeff, coeff_lo, gp_limit);
}

/// The exponents of the five error terms of the joint gain searches (g_p^2,
/// g_p, g_c^2, g_c, g_p g_c) from the correlations' exponents and the code
/// gain's exponent exp_code.
inline void gain_term_exponents(const Word16* exp_coeff, Word16 exp_code, Word16* exp_max) {
    exp_max[0] = sub(exp_coeff[0], 13);
    exp_max[1] = sub(exp_coeff[1], 14);
    exp_max[2] = add(exp_coeff[2], add(15, shl(exp_code, 1)));
    exp_max[3] = add(exp_coeff[3], exp_code);
    exp_max[4] = add(exp_coeff[4], add(1, exp_code));
}

/// The five terms brought to the largest exponent plus one, split into
/// L_Extract halves.
inline void normalise_gain_terms(const Word16* frac_coeff, const Word16* exp_max, Word16* coeff, Word16* coeff_lo) {
    Word16 e_max = exp_max[0];
    for (int i = 1; i < 5; i++) e_max = std::max(e_max, exp_max[i]);
    e_max = add(e_max, 1);
    for (int i = 0; i < 5; i++) L_Extract(L_shr(L_deposit_h(frac_coeff[i]), sub(e_max, exp_max[i])), coeff[i], coeff_lo[i]);
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
    gain_term_exponents(exp_coeff, exp_code, exp_max);
    normalise_gain_terms(frac_coeff, exp_max, coeff, coeff_lo);
    const int index = qua_gain_search(table_gain, table_len, high ? kHighRatesColumnMax : kLowRatesColumnMax, gcode0,
                                      coeff, coeff_lo, gp_limit);
    const std::int16_t* p = &table_gain[4 * index];
    gain_pit = p[0];
    qua_ener_MR122 = p[2];
    qua_ener = p[3];
    gain_cod = extract_h(L_shr(L_mult(p[1], gcode0), sub(10, exp_gcode0)));
    return static_cast<Word16>(index);
}

inline Word32 Mac_32(Word32 L_32, Word16 hi1, Word16 lo1, Word16 hi2, Word16 lo2) {
    L_32 = L_mac(L_32, hi1, hi2);
    L_32 = L_mac(L_32, mult(hi1, lo2), 1);
    return L_mac(L_32, mult(lo1, hi2), 1);
}
inline Word32 Mac_32_16(Word32 L_32, Word16 hi, Word16 lo, Word16 n) {
    L_32 = L_mac(L_32, hi, n);
    return L_mac(L_32, mult(lo, n), 1);
}

/// The innovation energy gc_pred returns at 7.95 kbit/s, as fraction and exponent.
inline void code_energy(const Word16* code, Word16& exp_en, Word16& frac_en) {
    const Word32 ener_code = sum_sq_sat(code);
    const Word16 exp_code = norm_l(ener_code);
    frac_en = extract_h(normalised(ener_code));
    exp_en = sub(-11, exp_code);
}

/// calc_target_energy: energy of the target as fraction and exponent.
inline void calc_target_energy(const Word16* xn, Word16& en_exp, Word16& en_frac) {
    const Word32 s = sum_sq_sat(xn);
    const Word16 exp = norm_l(s);
    en_frac = extract_h(normalised(s));
    en_exp = sub(16, exp);
}

/// calc_unfilt_energies: energies of the LP residual, the adaptive vector,
/// their correlation with the code and the LTP residual; the LTP gain in dB (Q13).
inline void calc_unfilt_energies(const Word16* res, const Word16* exc, const Word16* code, Word16 gain_pit,
                                 Word16* frac_en, Word16* exp_en, Word16& ltpg) {
    Word32 s = sum_sq_sat(res);
    Word16 exp;
    if (s < 400) {
        frac_en[0] = 0;
        exp_en[0] = -15;
    } else {
        exp = norm_l(s);
        frac_en[0] = extract_h(normalised(s));
        exp_en[0] = sub(15, exp);
    }
    s = sum_sq_sat(exc);
    exp = norm_l(s);
    frac_en[1] = extract_h(normalised(s));
    exp_en[1] = sub(15, exp);
    s = mac_chain(exc, code);
    exp = norm_l(s);
    frac_en[2] = extract_h(normalised(s));
    exp_en[2] = sub(16 - 14, exp);
    Word16 ltp_res[kLSubfr];
    for (int i = 0; i < kLSubfr; i++) ltp_res[i] = sub(res[i], round_fx(L_shl(L_mult(exc[i], gain_pit), 1)));
    s = sum_sq_sat(ltp_res);
    exp = norm_l(s);
    const Word16 ltp_res_en = extract_h(normalised(s));
    exp = sub(15, exp);
    frac_en[3] = ltp_res_en;
    exp_en[3] = exp;
    if (ltp_res_en > 0 && frac_en[0] != 0) {
        const Word16 pred_gain = div_s(shr(frac_en[0], 1), ltp_res_en);
        exp = sub(exp, exp_en[0]);
        Word32 L_temp = L_shr(L_deposit_h(pred_gain), add(exp, 3));
        Word16 ltpg_exp, ltpg_frac;
        Log2(L_temp, ltpg_exp, ltpg_frac);
        L_temp = L_Comp(sub(ltpg_exp, 27), ltpg_frac);
        ltpg = round_fx(L_shl(L_temp, 13));
    } else {
        ltpg = 0;
    }
}

/// gain_adapt: the adaptation factor alpha (Q15) of the 7.95 kbit/s code-gain
/// quantiser from the LTP gain history and code-gain onsets.
inline Word16 gain_adapt(GainQuantState& st, Word16 ltpg, Word16 gain_cod) {
    constexpr Word16 kThr1 = 2721, kThr2 = 5443;
    Word16 adapt = ltpg <= kThr1 ? 0 : ltpg <= kThr2 ? 1 : 2;
    const Word16 tmp = shr_r(gain_cod, 1);
    if (tmp > st.prev_gc && gain_cod > 200) st.onset = 8;
    else if (st.onset != 0) st.onset = sub(st.onset, 1);
    if (st.onset != 0 && adapt < 2) adapt = add(adapt, 1);
    st.ltpg_mem[0] = ltpg;
    Word16 filt = gmed_n(st.ltpg_mem, 5), result;
    if (adapt == 0) {
        if (filt > 5443) result = 0;
        else if (filt < 0) result = 16384;
        else {
            filt = shl(filt, 2);
            result = sub(16384, mult(24660, filt));
        }
    } else {
        result = 0;
    }
    if (st.prev_alpha == 0) result = shr(result, 1);
    st.prev_alpha = result;
    st.prev_gc = gain_cod;
    for (int i = 4; i > 0; i--) st.ltpg_mem[i] = st.ltpg_mem[i - 1];
    return result;
}

/// The pitch part of a candidate's error in MR795_gain_code_quant3.
inline Word32 mr795_pitch_part(const Word16* coeff, const Word16* coeff_lo, Word16 g_pitch) {
    const Word32 L_tmp0 = Mpy_32_16(coeff[0], coeff_lo[0], mult(g_pitch, g_pitch));
    return Mac_32_16(L_tmp0, coeff[1], coeff_lo[1], g_pitch);
}

/// The joint search of MR795_gain_code_quant3 (reference loop): returns
/// 32 j + i for pitch candidate j and code gain row i.
inline int mr795_code_search_scalar(const Word16* coeff, const Word16* coeff_lo, Word16 gcode0,
                                    const Word16* g_pitch_cand) {
    using zeps::amr_dec_tab::qua_gain_code;
    Word32 dist_min = MAX_32;
    int cod_ind = 0, pit_ind = 0;
    for (int j = 0; j < 3; j++) {
        const Word16 g_pitch = g_pitch_cand[j];
        const Word32 L_tmp0 = mr795_pitch_part(coeff, coeff_lo, g_pitch);
        for (int i = 0; i < 32; i++) {
            const Word16 g_code = mult(qua_gain_code[3 * i], gcode0);
            Word16 g2_code_h, g2_code_l, g_pit_cod_h, g_pit_cod_l;
            L_Extract(L_mult(g_code, g_code), g2_code_h, g2_code_l);
            L_Extract(L_mult(g_code, g_pitch), g_pit_cod_h, g_pit_cod_l);
            Word32 L_tmp = Mac_32(L_tmp0, coeff[2], coeff_lo[2], g2_code_h, g2_code_l);
            L_tmp = Mac_32_16(L_tmp, coeff[3], coeff_lo[3], g_code);
            L_tmp = Mac_32(L_tmp, coeff[4], coeff_lo[4], g_pit_cod_h, g_pit_cod_l);
            if (L_sub(L_tmp, dist_min) < 0) {
                dist_min = L_tmp;
                cod_ind = i;
                pit_ind = j;
            }
        }
    }
    return 32 * pit_ind + cod_ind;
}

/// Largest entry of the code gain factor column of qua_gain_code (Q11);
/// the column holds no negative entry.
inline constexpr std::int32_t kQuaGainCodeMax = 27485;

/// The search of MR795_gain_code_quant3 as computed. With gcode0 and the
/// pitch candidates non-negative every gain is; each Mac_32 term is at most
/// 2 (|hi| |H| + |hi| + |H|) in magnitude (|mult(x, lo)| <= |x| for
/// 0 <= lo < 2^15), each Mac_32_16 term 2 (|hi| + 1) |n|. When the pitch
/// part plus those bounds stays within MAX_32 for every candidate, no
/// partial sum saturates and the errors are plain arithmetic, eight rows
/// at a time; otherwise the reference loop.
inline int mr795_code_search(const Word16* coeff, const Word16* coeff_lo, Word16 gcode0, const Word16* g_pitch_cand) {
#if defined(__SSSE3__)
    const Word16 gp_max = std::max({g_pitch_cand[0], g_pitch_cand[1], g_pitch_cand[2]});
    const Word16 gp_min = std::min({g_pitch_cand[0], g_pitch_cand[1], g_pitch_cand[2]});
    if (gcode0 >= 0 && gp_min >= 0) {
        const auto mag = [coeff](int k) { return std::abs(std::int64_t{coeff[k]}); };
        const std::int64_t gc = mult_bound(kQuaGainCodeMax, gcode0), h = mult_bound(gc, gc), p = mult_bound(gc, gp_max);
        const std::int64_t terms =
            2 * (mag(2) * h + mag(2) + h) + 2 * (mag(3) + 1) * gc + 2 * (mag(4) * p + mag(4) + p);
        Word32 l_tmp0[3];
        bool exact = true;
        for (int j = 0; j < 3; j++) {
            l_tmp0[j] = mr795_pitch_part(coeff, coeff_lo, g_pitch_cand[j]);
            exact = exact && std::abs(std::int64_t{l_tmp0[j]}) + terms <= MAX_32;
        }
        if (exact)
            return gain_lanes::mr795_code_search(zeps::amr_dec_tab::qua_gain_code, gcode0, g_pitch_cand, l_tmp0, coeff,
                                                 coeff_lo);
    }
#endif
    return mr795_code_search_scalar(coeff, coeff_lo, gcode0, g_pitch_cand);
}

/// MR795_gain_code_quant3: code gain jointly with the three pitch-gain candidates.
inline void mr795_gain_code_quant3(Word16 exp_gcode0, Word16 gcode0, const Word16* g_pitch_cand,
                                   const Word16* g_pitch_cind, const Word16* frac_coeff, const Word16* exp_coeff,
                                   Word16& gain_pit, Word16& gain_pit_ind, Word16& gain_cod, Word16& gain_cod_ind,
                                   Word16& qua_ener_MR122, Word16& qua_ener) {
    using zeps::amr_dec_tab::qua_gain_code;
    const Word16 exp_code = sub(exp_gcode0, 10);
    Word16 exp_max[5], coeff[5], coeff_lo[5];
    gain_term_exponents(exp_coeff, exp_code, exp_max);
    normalise_gain_terms(frac_coeff, exp_max, coeff, coeff_lo);
    const int best = mr795_code_search(coeff, coeff_lo, gcode0, g_pitch_cand);
    const int cod_ind = best & 31, pit_ind = best >> 5;
    const std::int16_t* p = &qua_gain_code[3 * cod_ind];
    qua_ener_MR122 = p[1];
    qua_ener = p[2];
    gain_cod = extract_h(L_shr(L_mult(p[0], gcode0), sub(9, exp_gcode0)));
    gain_cod_ind = static_cast<Word16>(cod_ind);
    gain_pit = g_pitch_cand[pit_ind];
    gain_pit_ind = g_pitch_cind[pit_ind];
}

/// MR795_gain_code_quant_mod: the code gain requantised with the
/// energy-matching criterion weighted by alpha.
inline Word16 mr795_gain_code_quant_mod(Word16 gain_pit, Word16 exp_gcode0, Word16 gcode0, const Word16* frac_en,
                                        const Word16* exp_en, Word16 alpha, Word16 gain_cod_unq, Word16& gain_cod,
                                        Word16& qua_ener_MR122, Word16& qua_ener) {
    using zeps::amr_dec_tab::qua_gain_code;
    Word16 coeff[5], coeff_lo[5], exp_coeff[5], exp, tmp;
    const Word16 gain_code = shl(gain_cod, sub(10, exp_gcode0));
    const Word16 g2_pitch = mult(gain_pit, gain_pit);
    const Word16 one_alpha = add(sub(32767, alpha), 1);
    tmp = extract_h(L_shl(L_mult(alpha, frac_en[1]), 1));
    Word32 L_t1 = L_mult(tmp, g2_pitch);
    exp_coeff[1] = sub(exp_en[1], 15);
    tmp = extract_h(L_shl(L_mult(alpha, frac_en[2]), 1));
    coeff[2] = mult(tmp, gain_pit);
    exp = sub(exp_gcode0, 10);
    exp_coeff[2] = add(exp_en[2], exp);
    coeff[3] = extract_h(L_shl(L_mult(alpha, frac_en[3]), 1));
    exp = sub(shl(exp_gcode0, 1), 7);
    exp_coeff[3] = add(exp_en[3], exp);
    coeff[4] = mult(one_alpha, frac_en[3]);
    exp_coeff[4] = add(exp_coeff[3], 1);
    Word32 L_t0 = sqrt_l_exp(L_mult(alpha, frac_en[0]), exp);
    exp = add(exp, 47);
    exp_coeff[0] = sub(exp_en[0], exp);
    Word16 e_max = add(exp_coeff[0], 31);
    for (int i = 1; i <= 4; i++) e_max = std::max(e_max, exp_coeff[i]);
    L_t1 = L_shr(L_t1, sub(e_max, exp_coeff[1]));
    for (int i = 2; i <= 4; i++) L_Extract(L_shr(L_deposit_h(coeff[i]), sub(e_max, exp_coeff[i])), coeff[i], coeff_lo[i]);
    exp = sub(e_max, 31);
    tmp = sub(exp, exp_coeff[0]);
    L_t0 = L_shr(L_t0, shr(tmp, 1));
    if ((tmp & 0x1) != 0) {
        L_Extract(L_t0, coeff[0], coeff_lo[0]);
        L_t0 = Mpy_32_16(coeff[0], coeff_lo[0], 23170);
    }
    Word32 dist_min = MAX_32;
    int index = 0;
    for (int i = 0; i < 32; i++) {
        const Word16 g_code = mult(qua_gain_code[3 * i], gcode0);
        if (g_code >= gain_code) break;
        Word16 g2_code_h, g2_code_l, d2_code_h, d2_code_l;
        L_Extract(L_mult(g_code, g_code), g2_code_h, g2_code_l);
        tmp = sub(g_code, gain_cod_unq);
        L_Extract(L_mult(tmp, tmp), d2_code_h, d2_code_l);
        Word32 L_tmp = Mac_32_16(L_t1, coeff[2], coeff_lo[2], g_code);
        L_tmp = Mac_32(L_tmp, coeff[3], coeff_lo[3], g2_code_h, g2_code_l);
        L_tmp = sqrt_l_exp(L_tmp, exp);
        L_tmp = L_shr(L_tmp, shr(exp, 1));
        tmp = round_fx(L_sub(L_tmp, L_t0));
        L_tmp = L_mult(tmp, tmp);
        L_tmp = Mac_32(L_tmp, coeff[4], coeff_lo[4], d2_code_h, d2_code_l);
        if (L_sub(L_tmp, dist_min) < 0) {
            dist_min = L_tmp;
            index = i;
        }
    }
    const std::int16_t* p = &qua_gain_code[3 * index];
    qua_ener_MR122 = p[1];
    qua_ener = p[2];
    gain_cod = extract_h(L_shr(L_mult(p[0], gcode0), sub(9, exp_gcode0)));
    return static_cast<Word16>(index);
}

/// MR795_gain_quant: pitch-gain candidates, joint code-gain search, then the
/// adaptive requantisation of the code gain; ana receives both indices.
inline void mr795_gain_quant(GainQuantState& st, const Word16* res, const Word16* exc, const Word16* code,
                             const Word16* frac_coeff, const Word16* exp_coeff, Word16 exp_code_en, Word16 frac_code_en,
                             Word16 exp_gcode0, Word16 frac_gcode0, Word16 cod_gain_frac, Word16 cod_gain_exp,
                             Word16 gp_limit, Word16& gain_pit, Word16& gain_cod, Word16& qua_ener_MR122,
                             Word16& qua_ener, Word16* ana) {
    Word16 g_pitch_cand[3], g_pitch_cind[3], gain_cod_index, frac_en[4], exp_en[4], ltpg;
    Word16 gain_pit_index = q_gain_pitch(MR795, gp_limit, gain_pit, g_pitch_cand, g_pitch_cind);
    const Word16 gcode0 = extract_l(Pow2(14, frac_gcode0));
    mr795_gain_code_quant3(exp_gcode0, gcode0, g_pitch_cand, g_pitch_cind, frac_coeff, exp_coeff, gain_pit,
                           gain_pit_index, gain_cod, gain_cod_index, qua_ener_MR122, qua_ener);
    calc_unfilt_energies(res, exc, code, gain_pit, frac_en, exp_en, ltpg);
    const Word16 alpha = gain_adapt(st, ltpg, gain_cod);
    if (frac_en[0] != 0 && alpha > 0) {
        frac_en[3] = frac_code_en;
        exp_en[3] = exp_code_en;
        const Word16 exp = add(sub(cod_gain_exp, exp_gcode0), 10);
        const Word16 gain_cod_unq = shl(cod_gain_frac, exp);
        gain_cod_index = mr795_gain_code_quant_mod(gain_pit, exp_gcode0, gcode0, frac_en, exp_en, alpha, gain_cod_unq,
                                                   gain_cod, qua_ener_MR122, qua_ener);
    }
    ana[0] = gain_pit_index;
    ana[1] = gain_cod_index;
}

/// MR475_update_unq_pred: the unquantised predictor of 4.75 kbit/s updated
/// with the optimum code gain of the first subframe.
inline void mr475_update_unq_pred(GainPredState& pred, Word16 exp_gcode0, Word16 frac_gcode0, Word16 cod_gain_exp,
                                  Word16 cod_gain_frac) {
    constexpr Word16 kMinQuaEner = -5443, kMinQuaEnerMR122 = -32768, kMaxQuaEner = 3037, kMaxQuaEnerMR122 = 18284;
    Word16 qua_ener, qua_ener_MR122;
    if (cod_gain_frac <= 0) {
        qua_ener = kMinQuaEner;
        qua_ener_MR122 = kMinQuaEnerMR122;
    } else {
        frac_gcode0 = extract_l(Pow2(14, frac_gcode0));
        if (cod_gain_frac >= frac_gcode0) {
            cod_gain_frac = shr(cod_gain_frac, 1);
            cod_gain_exp = add(cod_gain_exp, 1);
        }
        Word16 frac = div_s(cod_gain_frac, frac_gcode0), exp;
        const Word16 tmp = sub(sub(cod_gain_exp, exp_gcode0), 1);
        Log2(L_deposit_l(frac), exp, frac);
        exp = add(exp, tmp);
        qua_ener_MR122 = add(shr_r(frac, 5), shl(exp, 10));
        if (qua_ener_MR122 < kMinQuaEnerMR122) {
            qua_ener = kMinQuaEner;
            qua_ener_MR122 = kMinQuaEnerMR122;
        } else if (qua_ener_MR122 > kMaxQuaEnerMR122) {
            qua_ener = kMaxQuaEner;
            qua_ener_MR122 = kMaxQuaEnerMR122;
        } else {
            qua_ener = round_fx(L_shl(Mpy_32_16(exp, frac, 24660), 13));
        }
    }
    gc_pred_update(pred, qua_ener_MR122, qua_ener);
}

/// MR475_quant_store_results: the gains of one subframe from a table row and the predictor update.
inline void mr475_store(GainPredState& pred, const std::int16_t* p, Word16 gcode0, Word16 exp_gcode0,
                        Word16& gain_pit, Word16& gain_cod) {
    gain_pit = p[0];
    const Word16 g_code = p[1];
    gain_cod = extract_h(L_shr(L_mult(g_code, gcode0), sub(10, exp_gcode0)));
    Word16 exp, frac;
    Log2(L_deposit_l(g_code), exp, frac);
    exp = sub(exp, 12);
    const Word16 qua_ener_MR122 = add(shr_r(frac, 5), shl(exp, 10));
    const Word16 qua_ener = round_fx(L_shl(Mpy_32_16(exp, frac, 24660), 13));
    gc_pred_update(pred, qua_ener_MR122, qua_ener);
}

/// The 256-entry search of MR475_gain_quant (reference loop): the entry of
/// least weighted error of the two subframes among those whose pitch gains
/// stay within gp_limit.
inline int mr475_search_scalar(const Word16* coeff, const Word16* coeff_lo, Word16 sf0_gcode0, Word16 sf1_gcode0,
                               Word16 gp_limit) {
    using zeps::amr_dec_tab::table_gain_MR475;
    Word32 dist_min = MAX_32;
    int index = 0;
    Word16 tmp;
    for (int i = 0; i < 256; i++) {
        const std::int16_t* p = &table_gain_MR475[4 * i];
        Word16 g_pitch = p[0];
        Word16 g_code = mult(p[1], sf0_gcode0);
        Word16 g2_pitch = mult(g_pitch, g_pitch), g2_code = mult(g_code, g_code), g_pit_cod = mult(g_code, g_pitch);
        Word32 L_tmp = Mpy_32_16(coeff[0], coeff_lo[0], g2_pitch);
        L_tmp = Mac_32_16(L_tmp, coeff[1], coeff_lo[1], g_pitch);
        L_tmp = Mac_32_16(L_tmp, coeff[2], coeff_lo[2], g2_code);
        L_tmp = Mac_32_16(L_tmp, coeff[3], coeff_lo[3], g_code);
        L_tmp = Mac_32_16(L_tmp, coeff[4], coeff_lo[4], g_pit_cod);
        tmp = sub(g_pitch, gp_limit);
        g_pitch = p[2];
        if (tmp <= 0 && g_pitch <= gp_limit) {
            g_code = mult(p[3], sf1_gcode0);
            g2_pitch = mult(g_pitch, g_pitch);
            g2_code = mult(g_code, g_code);
            g_pit_cod = mult(g_code, g_pitch);
            L_tmp = Mac_32_16(L_tmp, coeff[5], coeff_lo[5], g2_pitch);
            L_tmp = Mac_32_16(L_tmp, coeff[6], coeff_lo[6], g_pitch);
            L_tmp = Mac_32_16(L_tmp, coeff[7], coeff_lo[7], g2_code);
            L_tmp = Mac_32_16(L_tmp, coeff[8], coeff_lo[8], g_code);
            L_tmp = Mac_32_16(L_tmp, coeff[9], coeff_lo[9], g_pit_cod);
            if (L_sub(L_tmp, dist_min) < 0) {
                dist_min = L_tmp;
                index = i;
            }
        }
    }
    return index;
}

/// Largest magnitudes of the four columns of table_gain_MR475 (pitch gain
/// Q14, code gain factor Q12 of each subframe); all entries are positive.
inline constexpr std::int32_t kMr475ColumnMax[4] = {20490, 26526, 20717, 26358};

/// The MR475 search in plain 32-bit arithmetic (valid where
/// gain_chain_is_exact holds for the ten terms).
inline int mr475_search_plain(const Word16* coeff, const Word16* coeff_lo, Word16 sf0_gcode0, Word16 sf1_gcode0,
                              Word16 gp_limit) {
    using zeps::amr_dec_tab::table_gain_MR475;
    auto term = [&](int k, Word16 n) { return 2 * coeff[k] * n + 2 * mult(coeff_lo[k], n); };
    std::int32_t dist_min = MAX_32;
    int index = 0;
    for (int i = 0; i < 256; i++) {
        const std::int16_t* p = &table_gain_MR475[4 * i];
        if (p[0] > gp_limit || p[2] > gp_limit) continue;
        const Word16 gc0 = mult(p[1], sf0_gcode0), gc1 = mult(p[3], sf1_gcode0);
        const std::int32_t d = term(0, mult(p[0], p[0])) + term(1, p[0]) + term(2, mult(gc0, gc0)) + term(3, gc0) +
                               term(4, mult(gc0, p[0])) + term(5, mult(p[2], p[2])) + term(6, p[2]) +
                               term(7, mult(gc1, gc1)) + term(8, gc1) + term(9, mult(gc1, p[2]));
        if (d < dist_min) {
            dist_min = d;
            index = i;
        }
    }
    return index;
}

/// The MR475 search as computed: the table's columns (all entries
/// positive) and the two gcode0 (Pow2's range, positive) bound every gain;
/// when gain_chain_is_exact holds for the ten terms no partial sum of the
/// reference's chain saturates and the error is plain 32-bit arithmetic,
/// eight rows at a time where SSSE3 is present; otherwise the reference loop.
inline int mr475_search(const Word16* coeff, const Word16* coeff_lo, Word16 sf0_gcode0, Word16 sf1_gcode0,
                        Word16 gp_limit) {
    std::int64_t n_max[10] = {};
    gain_term_bounds(kMr475ColumnMax[0], kMr475ColumnMax[1], sf0_gcode0, n_max);
    gain_term_bounds(kMr475ColumnMax[2], kMr475ColumnMax[3], sf1_gcode0, n_max + 5);
    if (sf0_gcode0 < 0 || sf1_gcode0 < 0 || !gain_chain_is_exact(coeff, n_max, 10))
        return mr475_search_scalar(coeff, coeff_lo, sf0_gcode0, sf1_gcode0, gp_limit);
#if defined(__SSSE3__)
    return gain_lanes::mr475_search(zeps::amr_dec_tab::table_gain_MR475, sf0_gcode0, sf1_gcode0, coeff, coeff_lo,
                                    gp_limit);
#else
    return mr475_search_plain(coeff, coeff_lo, sf0_gcode0, sf1_gcode0, gp_limit);
#endif
}

/// MR475_gain_quant: joint VQ of the gains of two subframes; returns the index.
inline Word16 mr475_gain_quant(GainQuantState& st, const Word16* sf1_code, Word16 sf1_exp_gcode0,
                               Word16 sf1_frac_gcode0, const Word16* sf1_exp_coeff, const Word16* sf1_frac_coeff,
                               Word16 sf1_exp_target_en, Word16 sf1_frac_target_en, Word16 gp_limit,
                               Word16& sf0_gain_pit, Word16& sf0_gain_cod, Word16& sf1_gain_pit, Word16& sf1_gain_cod) {
    using zeps::amr_dec_tab::table_gain_MR475;
    Word16 sf0_frac_target_en = st.sf0_frac_target_en;
    const Word16 sf0_gcode0 = extract_l(Pow2(14, st.sf0_frac_gcode0));
    Word16 sf1_gcode0 = extract_l(Pow2(14, sf1_frac_gcode0));
    Word16 exp_max[10], coeff[10], coeff_lo[10];
    gain_term_exponents(st.sf0_exp_coeff, sub(st.sf0_exp_gcode0, 11), exp_max);
    gain_term_exponents(sf1_exp_coeff, sub(sf1_exp_gcode0, 11), exp_max + 5);
    Word16 exp = static_cast<Word16>(st.sf0_exp_target_en - sf1_exp_target_en);
    if (exp > 0) sf1_frac_target_en = shr(sf1_frac_target_en, exp);
    else sf0_frac_target_en = shl(sf0_frac_target_en, exp);
    exp = 0;
    Word16 tmp = shr_r(sf1_frac_target_en, 1);
    if (tmp > sf0_frac_target_en) {
        exp = 1;
    } else {
        tmp = shr(add(sf0_frac_target_en, 3), 2);
        if (tmp > sf1_frac_target_en) exp = -1;
    }
    for (int i = 0; i < 5; i++) exp_max[i] = add(exp_max[i], exp);
    exp = exp_max[0];
    for (int i = 1; i < 10; i++) exp = std::max(exp, exp_max[i]);
    exp = add(exp, 1);
    for (int i = 0; i < 10; i++) {
        const Word16 f = i < 5 ? st.sf0_frac_coeff[i] : sf1_frac_coeff[i - 5];
        L_Extract(L_shr(L_deposit_h(f), sub(exp, exp_max[i])), coeff[i], coeff_lo[i]);
    }
    const int index = mr475_search(coeff, coeff_lo, sf0_gcode0, sf1_gcode0, gp_limit);
    mr475_store(st.pred, &table_gain_MR475[4 * index], sf0_gcode0, st.sf0_exp_gcode0, sf0_gain_pit, sf0_gain_cod);
    gc_pred(st.pred, MR475, sf1_code, sf1_exp_gcode0, sf1_frac_gcode0);
    sf1_gcode0 = extract_l(Pow2(14, sf1_frac_gcode0));
    mr475_store(st.pred, &table_gain_MR475[4 * index + 2], sf1_gcode0, sf1_exp_gcode0, sf1_gain_pit, sf1_gain_cod);
    return static_cast<Word16>(index);
}


}  // namespace amr_enc
ZEPS_END_VARIANT

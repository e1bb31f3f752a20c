/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR encoder subframe stages (3GPP TS 26.073 spreproc.c, convolve.c,
// pitch_fr.c, inter_36.c, enc_lag3.c, enc_lag6.c, g_pitch.c, q_gain_p.c,
// cl_ltp.c, spstproc.c).
//
// Formats: speech and excitation Q0, A(z) Q12, impulse response Q12, pitch
// gain Q14; the excitation buffer holds PIT_MAX + L_INTERPOL = 154 past
// samples before the subframe.
#pragma once

#include <algorithm>
#include <cstdint>

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "amr/amr_dec_tables.h"
#include "amr/amr_enc_tables.h"
#include "amr/amr_vad_tables.h"
#include "amr/dec_excitation.h"
#include "amr/dec_pitch.h"
#include "amr/dec_post.h"
#include "amr/enc_lpc.h"
#include "common/norm_corr.h"

ZEPS_BEGIN_VARIANT
namespace amr_enc {

/// subframePreProc: impulse response h1 of the weighted synthesis filter
/// A(z/g1) / (Aq(z) A(z/g2)), the LP residual res2 (also copied into exc)
/// and the target xn of the pitch search.
inline void subframe_pre_proc(Word16 mode, const Word16* A, const Word16* Aq, const Word16* speech,
                              const Word16* mem_err, Word16* mem_w0, Word16* exc, Word16* h1, Word16* xn,
                              Word16* res2) {
    namespace t = zeps;
    const std::int16_t* g1 = (mode == MR122 || mode == MR102) ? t::gamma1_12k2 : t::gamma1;
    Word16 Ap1[kMp1], Ap2[kMp1];
    weight_ai(A, g1, Ap1);
    weight_ai(A, t::gamma2, Ap2);
    Word16 ai_zero[kLSubfr] = {};
    for (int i = 0; i <= kM; i++) ai_zero[i] = Ap1[i];
    Word16 zero[kM] = {};
    syn_filt(Aq, ai_zero, h1, kLSubfr, zero, false);
    syn_filt(Ap2, h1, h1, kLSubfr, zero, false);
    residu(Aq, speech, res2, kLSubfr);
    for (int i = 0; i < kLSubfr; i++) exc[i] = res2[i];
    Word16 err[kM + kLSubfr];
    for (int i = 0; i < kM; i++) err[i] = mem_err[i];
    Word16 mem[kM];
    for (int i = 0; i < kM; i++) mem[i] = mem_err[i];
    syn_filt(Aq, exc, err + kM, kLSubfr, mem, false);
    residu(Ap1, err + kM, xn, kLSubfr);
    syn_filt(Ap2, xn, xn, kLSubfr, mem_w0, false);
}

/// Convolve: y[n] = sum x[i] h[n-i], Q12 h, result Q0 (reference loop).
inline void convolve_scalar(const Word16* x, const Word16* h, Word16* y, int L) {
    for (int n = 0; n < L; n++) {
        Word32 s = 0;
        for (int i = 0; i <= n; i++) s = L_mac(s, x[i], h[n - i]);
        y[n] = extract_h(L_shl(s, 3));
    }
}

/// Convolve; a 40-sample subframe takes the shared kernel that sums in
/// 32-bit lanes when an energy bound proves the L_mac chain cannot saturate.
inline void convolve(const Word16* x, const Word16* h, Word16* y, int L) {
    if (L == kLSubfr) g729p::convolve_q12(x, h, y);
    else convolve_scalar(x, h, y, L);
}

inline constexpr int kLInterSrch = 4;  ///< L_INTER_SRCH

/// Norm_Corr: correlation of the target with the filtered past excitation,
/// normalised by its energy, for lags t_min..t_max (corr indexed by lag).
/// Normalised correlations indexed by lag (t_min .. t_min + 39), stored
/// from element 0 (the reference's pointer below the array start is not
/// valid C++).
struct LagCorr {
    Word16 v[40];
    int t_min;
    Word16& operator[](int lag) { return v[lag - t_min]; }
    Word16 operator[](int lag) const { return v[lag - t_min]; }
    const Word16* at(int lag) const { return &v[lag - t_min]; }
};

/// Reference loop of Norm_Corr.
inline void norm_corr_scalar(const Word16* exc, const Word16* xn, const Word16* h, int t_min, int t_max,
                             LagCorr& corr_norm) {
    Word16 excf[kLSubfr], scaled_excf[kLSubfr];
    int k = -t_min;
    convolve_scalar(&exc[k], h, excf, kLSubfr);
    for (int j = 0; j < kLSubfr; j++) scaled_excf[j] = shr(excf[j], 2);
    Word32 s = 0;
    for (int j = 0; j < kLSubfr; j++) s = L_mac(s, excf[j], excf[j]);
    Word16* s_excf;
    Word16 h_fac, scaling;
    if (s <= 67108864L) {
        s_excf = excf;
        h_fac = 15 - 12;
        scaling = 0;
    } else {
        s_excf = scaled_excf;
        h_fac = 15 - 12 - 2;
        scaling = 2;
    }
    for (int i = t_min; i <= t_max; i++) {
        s = 0;
        for (int j = 0; j < kLSubfr; j++) s = L_mac(s, s_excf[j], s_excf[j]);
        Word16 norm_h, norm_l, corr_h, corr_l;
        L_Extract(Inv_sqrt(s), norm_h, norm_l);
        s = 0;
        for (int j = 0; j < kLSubfr; j++) s = L_mac(s, xn[j], s_excf[j]);
        L_Extract(s, corr_h, corr_l);
        s = Mpy_32(corr_h, corr_l, norm_h, norm_l);
        corr_norm[i] = extract_h(L_shl(s, 16));
        if (i != t_max) {
            k--;
            for (int j = kLSubfr - 1; j > 0; j--) {
                s = L_shl(L_mult(exc[k], h[j]), h_fac);
                s_excf[j] = add(extract_h(s), s_excf[j - 1]);
            }
            s_excf[0] = shr(exc[k], scaling);
        }
    }
}

/// Norm_Corr as computed: the same stage as ITU-T G.729 Norm_Corr, whose
/// kernel keeps energies and correlations in 32-bit lanes under the
/// Cauchy-Schwarz bound and updates the filtered excitation eight samples
/// at a time (the reference loop where the bound fails).
inline void norm_corr(const Word16* exc, const Word16* xn, const Word16* h, int t_min, int t_max,
                      LagCorr& corr_norm) {
    g729p::norm_corr(exc, xn, h, static_cast<Word16>(t_min), static_cast<Word16>(t_max), corr_norm.v);
}

/// Interpol_3or6: the normalised correlation interpolated at a fraction.
inline Word16 interpol_3or6(const Word16* x, Word16 frac, Word16 flag3) {
    using zeps::amr_enc_tab::inter_6_srch;
    constexpr int kUpSampMax = 6;
    if (flag3 != 0) frac = shl(frac, 1);
    if (frac < 0) {
        frac = add(frac, kUpSampMax);
        x--;
    }
    const Word16* x1 = x;
    const Word16* x2 = x + 1;
    const std::int16_t* c1 = &inter_6_srch[frac];
    const std::int16_t* c2 = &inter_6_srch[kUpSampMax - frac];
    Word32 s = 0;
    for (int i = 0, k = 0; i < kLInterSrch; i++, k += kUpSampMax) {
        s = L_mac(s, x1[-i], c1[k]);
        s = L_mac(s, x2[i], c2[k]);
    }
    return round_fx(s);
}

/// searchFrac: the best fraction from *frac to last_frac around lag.
inline void search_frac(Word16& lag, Word16& frac, Word16 last_frac, const LagCorr& corr, Word16 flag3) {
    Word16 max = interpol_3or6(corr.at(lag), frac, flag3);
    for (Word16 i = add(frac, 1); i <= last_frac; i++) {
        const Word16 corr_int = interpol_3or6(corr.at(lag), i, flag3);
        if (corr_int > max) {
            max = corr_int;
            frac = i;
        }
    }
    if (flag3 == 0) {
        if (frac == -3) {
            frac = 3;
            lag = sub(lag, 1);
        }
    } else {
        if (frac == -2) {
            frac = 1;
            lag = sub(lag, 1);
        }
        if (frac == 2) {
            frac = -1;
            lag = add(lag, 1);
        }
    }
}

inline void get_range(Word16 T0, Word16 delta_low, Word16 delta_range, Word16 pitmin, Word16 pitmax, Word16& t0_min,
                      Word16& t0_max) {
    t0_min = sub(T0, delta_low);
    if (t0_min < pitmin) t0_min = pitmin;
    t0_max = add(t0_min, delta_range);
    if (t0_max > pitmax) {
        t0_max = pitmax;
        t0_min = sub(t0_max, delta_range);
    }
}

/// Enc_lag3: lag index of the 1/3-resolution modes.
inline Word16 enc_lag3(Word16 T0, Word16 T0_frac, Word16 T0_prev, Word16 T0_min, Word16 T0_max, Word16 delta_flag,
                       Word16 flag4) {
    if (delta_flag == 0) {
        if (T0 <= 85) return add(sub(add(add(T0, T0), T0), 58), T0_frac);
        return add(T0, 112);
    }
    if (flag4 == 0) {
        Word16 i = sub(T0, T0_min);
        i = add(add(i, i), i);
        return add(add(i, 2), T0_frac);
    }
    Word16 tmp_lag = T0_prev;
    if (sub(sub(tmp_lag, T0_min), 5) > 0) tmp_lag = add(T0_min, 5);
    if (sub(sub(T0_max, tmp_lag), 4) > 0) tmp_lag = sub(T0_max, 4);
    const Word16 uplag = add(add(add(T0, T0), T0), T0_frac);
    Word16 i = sub(tmp_lag, 2);
    const Word16 tmp_ind = add(add(i, i), i);
    if (tmp_ind >= uplag) return add(sub(T0, tmp_lag), 5);
    i = add(tmp_lag, 1);
    i = add(add(i, i), i);
    if (i > uplag) return add(sub(uplag, tmp_ind), 3);
    return add(sub(T0, tmp_lag), 11);
}

/// Enc_lag6: lag index of 12.2 kbit/s (1/6 resolution).
inline Word16 enc_lag6(Word16 T0, Word16 T0_frac, Word16 T0_min, Word16 delta_flag) {
    if (delta_flag == 0) {
        if (T0 <= 94) {
            const Word16 i = add(add(T0, T0), T0);
            return add(sub(add(i, i), 105), T0_frac);
        }
        return add(T0, 368);
    }
    Word16 i = sub(T0, T0_min);
    i = add(add(i, i), i);
    return add(add(add(i, i), 3), T0_frac);
}

/// Pitch_fr: closed-loop fractional pitch search of one subframe. Returns
/// the integer lag; T0_prev is the Pitch_frState (previous subframe's lag).
inline Word16 pitch_fr(Word16& T0_prev, Word16 mode, const Word16* T_op, const Word16* exc, const Word16* xn,
                       const Word16* h, Word16 i_subfr, Word16& pit_frac, Word16& resu3, Word16& ana_index) {
    struct Parm {
        Word16 max_frac_lag, flag3, first_frac, last_frac, delta_int_low, delta_int_range, delta_frc_low,
            delta_frc_range, pit_min;
    };
    static constexpr Parm kParm[8] = {
        {84, 1, -2, 2, 5, 10, 5, 9, 20}, {84, 1, -2, 2, 5, 10, 5, 9, 20}, {84, 1, -2, 2, 3, 6, 5, 9, 20},
        {84, 1, -2, 2, 3, 6, 5, 9, 20},  {84, 1, -2, 2, 3, 6, 5, 9, 20},  {84, 1, -2, 2, 3, 6, 10, 19, 20},
        {84, 1, -2, 2, 3, 6, 5, 9, 20},  {94, 0, -3, 3, 3, 6, 5, 9, 18}};
    const Parm& p = kParm[mode];
    const Word16 flag3 = p.flag3;
    Word16 frac = p.first_frac, last_frac = p.last_frac;
    const bool low = mode == MR475 || mode == MR515;
    Word16 delta_search = 1, t0_min, t0_max;
    if ((i_subfr == 0 || i_subfr == kLFrame / 2) && (!low || i_subfr != kLFrame / 2)) {
        delta_search = 0;
        const int frame_offset = i_subfr == 0 ? 0 : 1;
        get_range(T_op[frame_offset], p.delta_int_low, p.delta_int_range, p.pit_min, kPitMax, t0_min, t0_max);
    } else {
        get_range(T0_prev, p.delta_frc_low, p.delta_frc_range, p.pit_min, kPitMax, t0_min, t0_max);
    }
    const int t_min = t0_min - kLInterSrch, t_max = t0_max + kLInterSrch;
    LagCorr corr;
    corr.t_min = t_min;
    norm_corr(exc, xn, h, t_min, t_max, corr);
    Word16 max = corr[t0_min], lag = t0_min;
    for (int i = t0_min + 1; i <= t0_max; i++) {
        if (corr[i] >= max) {
            max = corr[i];
            lag = static_cast<Word16>(i);
        }
    }
    const bool frac4 = mode == MR475 || mode == MR515 || mode == MR59 || mode == MR67;
    if (delta_search == 0 && lag > p.max_frac_lag) {
        frac = 0;
    } else if (delta_search != 0 && frac4) {
        Word16 tmp_lag = T0_prev;
        if (sub(sub(tmp_lag, t0_min), 5) > 0) tmp_lag = add(t0_min, 5);
        if (sub(sub(t0_max, tmp_lag), 4) > 0) tmp_lag = sub(t0_max, 4);
        if (lag == tmp_lag || lag == sub(tmp_lag, 1)) {
            search_frac(lag, frac, last_frac, corr, flag3);
        } else if (lag == sub(tmp_lag, 2)) {
            frac = 0;
            search_frac(lag, frac, last_frac, corr, flag3);
        } else if (lag == add(tmp_lag, 1)) {
            last_frac = 0;
            search_frac(lag, frac, last_frac, corr, flag3);
        } else {
            frac = 0;
        }
    } else {
        search_frac(lag, frac, last_frac, corr, flag3);
    }
    if (flag3 != 0) ana_index = enc_lag3(lag, frac, T0_prev, t0_min, t0_max, delta_search, frac4 ? 1 : 0);
    else ana_index = enc_lag6(lag, frac, t0_min, delta_search);
    T0_prev = lag;
    resu3 = flag3;
    pit_frac = frac;
    return lag;
}

/// G_pitch: pitch gain xn.y1 / y1.y1 (Q14, at most 1.2; 12.2 kbit/s clears
/// the two low bits) and the correlations g_coeff[0..3]. Reference loops.
inline Word16 g_pitch_scalar(Word16 mode, const Word16* xn, const Word16* y1, Word16* g_coeff) {
    Word16 scaled_y1[kLSubfr];
    for (int i = 0; i < kLSubfr; i++) scaled_y1[i] = shr(y1[i], 2);
    Flag ovf = false;
    Word32 s = 1;
    for (int i = 0; i < kLSubfr; i++) s = L_mac(s, y1[i], y1[i], ovf);
    Word16 exp_yy, yy, exp_xy, xy;
    if (!ovf) {
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
    } else {
        s = 1;
        for (int i = 0; i < kLSubfr; i++) s = L_mac(s, scaled_y1[i], scaled_y1[i]);
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
        exp_yy = sub(exp_yy, 4);
    }
    ovf = false;
    s = 1;
    for (int i = 0; i < kLSubfr; i++) s = L_mac(s, xn[i], y1[i], ovf);
    if (!ovf) {
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
    } else {
        s = 1;
        for (int i = 0; i < kLSubfr; i++) s = L_mac(s, xn[i], scaled_y1[i]);
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
        exp_xy = sub(exp_xy, 2);
    }
    g_coeff[0] = yy;
    g_coeff[1] = sub(15, exp_yy);
    g_coeff[2] = xy;
    g_coeff[3] = sub(15, exp_xy);
    if (sub(xy, 4) < 0) return 0;
    xy = shr(xy, 1);
    Word16 gain = div_s(xy, yy);
    gain = shr(gain, sub(exp_xy, exp_yy));
    if (gain > 19661) gain = 19661;
    if (mode == MR122) gain = static_cast<Word16>(gain & 0xfffc);
    return gain;
}

/// The gain from the two correlations (G_pitch's tail).
inline Word16 g_pitch_gain(Word16 mode, Word16 yy, Word16 exp_yy, Word16 xy, Word16 exp_xy, Word16* g_coeff) {
    g_coeff[0] = yy;
    g_coeff[1] = sub(15, exp_yy);
    g_coeff[2] = xy;
    g_coeff[3] = sub(15, exp_xy);
    if (sub(xy, 4) < 0) return 0;
    xy = shr(xy, 1);
    Word16 gain = div_s(xy, yy);
    gain = shr(gain, sub(exp_xy, exp_yy));
    if (gain > 19661) gain = 19661;
    if (mode == MR122) gain = static_cast<Word16>(gain & 0xfffc);
    return gain;
}

/// G_pitch as computed: y1.y1 from its exact 64-bit sum (a chain of
/// non-negative terms saturates exactly when the sum passes MAX_32), and
/// xn.y1 in 32-bit lanes when 4 (xn.xn)(y1.y1) <= MAX_32^2 (1 + twice a
/// partial sum then stays inside the 32-bit range, so the chain neither
/// saturates nor sets its overflow flag).
inline Word16 g_pitch(Word16 mode, const Word16* xn, const Word16* y1, Word16* g_coeff) {
    alignas(16) Word16 scaled_y1[kLSubfr];
    for (int i = 0; i < kLSubfr; i++) scaled_y1[i] = shr(y1[i], 2);
    const std::int64_t ey = g729p::energy64(y1, kLSubfr);
    Flag ovf = false;
    Word32 s = g729p::energy40_sat(ey, 1, ovf);
    Word16 exp_yy, yy, exp_xy, xy;
    if (!ovf) {
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
    } else {
        s = g729p::energy40_sat(g729p::energy64(scaled_y1, kLSubfr), 1, ovf);
        exp_yy = norm_l(s);
        yy = round_fx(L_shl(s, exp_yy));
        exp_yy = sub(exp_yy, 4);
    }
    ovf = false;
    if (g729p::dot_is_safe(g729p::energy64(xn, kLSubfr), ey)) {
        s = 1 + 2 * g729p::dot_lanes(xn, y1, kLSubfr);
    } else {
        s = 1;
        for (int i = 0; i < kLSubfr; i++) s = L_mac(s, xn[i], y1[i], ovf);
    }
    if (!ovf) {
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
    } else {
        s = 1;
        for (int i = 0; i < kLSubfr; i++) s = L_mac(s, xn[i], scaled_y1[i]);
        exp_xy = norm_l(s);
        xy = round_fx(L_shl(s, exp_xy));
        exp_xy = sub(exp_xy, 2);
    }
    return g_pitch_gain(mode, yy, exp_yy, xy, exp_xy, g_coeff);
}

/// q_gain_pitch: the nearest pitch gain at most gp_limit; 7.95 kbit/s also
/// returns the three candidates around it.
inline Word16 q_gain_pitch(Word16 mode, Word16 gp_limit, Word16& gain, Word16* gain_cand, Word16* gain_cind) {
    using zeps::amr_dec_tab::qua_gain_pitch;
    constexpr int kNb = 16;
    Word16 err_min = abs_s(sub(gain, qua_gain_pitch[0])), index = 0;
    for (int i = 1; i < kNb; i++) {
        if (qua_gain_pitch[i] <= gp_limit) {
            const Word16 err = abs_s(sub(gain, qua_gain_pitch[i]));
            if (err < err_min) {
                err_min = err;
                index = static_cast<Word16>(i);
            }
        }
    }
    if (mode == MR795) {
        Word16 ii;
        if (index == 0) ii = 0;
        else if (index == kNb - 1 || qua_gain_pitch[index + 1] > gp_limit) ii = sub(index, 2);
        else ii = sub(index, 1);
        for (int i = 0; i < 3; i++) {
            gain_cind[i] = ii;
            gain_cand[i] = qua_gain_pitch[ii];
            ii = add(ii, 1);
        }
        gain = qua_gain_pitch[index];
    } else if (mode == MR122) {
        gain = static_cast<Word16>(qua_gain_pitch[index] & 0xfffc);
    } else {
        gain = qua_gain_pitch[index];
    }
    return index;
}

/// out[i] = sub(x[i], extract_h(L_shl(L_mult(v[i], g), 1))) for a subframe
/// (cl_ltp's xn2 and res2; out may be x). Reference operators.
inline void subtract_gained_scalar(const Word16* x, const Word16* v, Word16 g, Word16* out) {
    for (int i = 0; i < kLSubfr; i++) out[i] = sub(x[i], extract_h(L_shl(L_mult(v[i], g), 1)));
}

/// subtract_gained_scalar eight samples at a time, for any inputs: with the
/// exact product p = v g, extract_h(L_shl(L_mult(v, g), 1)) is p >> 14
/// clamped to 16 bits (4 p leaves 32 bits exactly when p >> 14 leaves 16;
/// the one saturating L_mult, (-32768)^2, gives 32767 both ways), which
/// psrad and packssdw form; sub is psubsw.
inline void subtract_gained(const Word16* x, const Word16* v, Word16 g, Word16* out) {
#if defined(__SSSE3__)
    const __m128i gv = _mm_set1_epi16(g);
    for (int i = 0; i < kLSubfr; i += 8) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(v + i));
        const __m128i lo = _mm_mullo_epi16(a, gv), hi = _mm_mulhi_epi16(a, gv);
        const __m128i q = _mm_packs_epi32(_mm_srai_epi32(_mm_unpacklo_epi16(lo, hi), 14),
                                          _mm_srai_epi32(_mm_unpackhi_epi16(lo, hi), 14));
        const __m128i xv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_subs_epi16(xv, q));
    }
#else
    subtract_gained_scalar(x, v, g, out);
#endif
}

/// cl_ltp: closed-loop pitch search, adaptive codebook vector, its filtered
/// form y1, pitch gain (limited by the tone-stability check; quantised here
/// at 12.2 kbit/s), target xn2 of the codebook search and LTP residual res2.
/// exc points at the subframe in a buffer with 154 past samples.
/// ana receives the lag index and, at 12.2 kbit/s, the pitch-gain index.
inline void cl_ltp(Word16& T0_prev, const Word16* ton, Word16 mode, Word16 frameOffset, const Word16* T_op,
                   const Word16* h1, Word16* exc, Word16* res2, const Word16* xn, Word16 lsp_flag, Word16* xn2,
                   Word16* y1, Word16& T0, Word16& T0_frac, Word16& gain_pit, Word16* g_coeff, Word16* ana,
                   Word16& gp_limit) {
    Word16 resu3, index;
    T0 = pitch_fr(T0_prev, mode, T_op, exc, xn, h1, frameOffset, T0_frac, resu3, index);
    ana[0] = index;
    pred_lt_3or6(exc, T0, T0_frac, kLSubfr, resu3);
    convolve(exc, h1, y1, kLSubfr);
    gain_pit = g_pitch(mode, xn, y1, g_coeff);
    Word16 gpc_flag = 0;
    gp_limit = MAX_16;
    if (lsp_flag != 0 && gain_pit > kGpClip) gpc_flag = check_gp_clipping(ton, gain_pit);
    if (mode == MR475 || mode == MR515) {
        if (gain_pit > 13926) gain_pit = 13926;
        if (gpc_flag != 0) gp_limit = kGpClip;
    } else {
        if (gpc_flag != 0) {
            gp_limit = kGpClip;
            gain_pit = kGpClip;
        }
        if (mode == MR122) ana[1] = q_gain_pitch(MR122, gp_limit, gain_pit, nullptr, nullptr);
    }
    subtract_gained(xn, y1, gain_pit, xn2);
    subtract_gained(res2, exc, gain_pit, res2);
}

/// exc[i] = round(L_shl(L_mac(L_mult(exc[i], pitch_fac), code[i], gain_code),
/// shift)) for a subframe (subframePostProc's total excitation). Reference
/// operators.
inline void gained_excitation_scalar(Word16* exc, const Word16* code, Word16 pitch_fac, Word16 gain_code,
                                     Word16 shift) {
    for (int i = 0; i < kLSubfr; i++) {
        Word32 L_temp = L_mult(exc[i], pitch_fac);
        L_temp = L_mac(L_temp, code[i], gain_code);
        exc[i] = round_fx(L_shl(L_temp, shift));
    }
}

/// gained_excitation_scalar eight samples at a time where both gains are
/// not negative (shift 1 or 2): then neither product is (-32768)^2 and
/// H = exc pitch_fac + code gain_code (one pmaddwd) lies within 32 bits with
/// room for the rounding, and the saturations of L_mac, L_shl and round_fx,
/// all monotone, make the result (2 H 2^shift + 2^15) >> 16 clamped to 16
/// bits, that is (H + 2^(14 - shift)) >> (15 - shift) through packssdw.
/// Negative gains take the scalar form.
inline void gained_excitation(Word16* exc, const Word16* code, Word16 pitch_fac, Word16 gain_code, Word16 shift) {
#if defined(__SSSE3__)
    if (pitch_fac >= 0 && gain_code >= 0 && (shift == 1 || shift == 2)) {
        const __m128i g = _mm_set1_epi32(static_cast<std::int32_t>(static_cast<std::uint16_t>(pitch_fac)) |
                                         static_cast<std::int32_t>(static_cast<std::uint32_t>(gain_code) << 16));
        const __m128i bias = _mm_set1_epi32(1 << (14 - shift));
        const __m128i cnt = _mm_cvtsi32_si128(15 - shift);
        for (int i = 0; i < kLSubfr; i += 8) {
            const __m128i e = _mm_loadu_si128(reinterpret_cast<const __m128i*>(exc + i));
            const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(code + i));
            const __m128i lo = _mm_sra_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(e, c), g), bias), cnt);
            const __m128i hi = _mm_sra_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(e, c), g), bias), cnt);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(exc + i), _mm_packs_epi32(lo, hi));
        }
        return;
    }
#endif
    gained_excitation_scalar(exc, code, pitch_fac, gain_code, shift);
}

/// subframePostProc: excitation exc = gp v + gc c, local synthesis, and the
/// error and weighting-filter memories for the next subframe; sharp is the
/// quantised pitch gain limited to SHARPMAX. speech, exc and synth point
/// at the subframe.
inline void subframe_post_proc(const Word16* speech, Word16 mode, Word16 gain_pit, Word16 gain_code,
                               const Word16* Aq, Word16* synth, const Word16* xn, const Word16* code,
                               const Word16* y1, const Word16* y2, Word16* mem_syn, Word16* mem_err,
                               Word16* mem_w0, Word16* exc, Word16& sharp) {
    Word16 tempShift = 1, kShift = 2, pitch_fac = gain_pit;
    if (mode == MR122) {
        tempShift = 2;
        kShift = 4;
        pitch_fac = shr(gain_pit, 1);
    }
    sharp = gain_pit;
    if (sharp > kSharpMax) sharp = kSharpMax;
    gained_excitation(exc, code, pitch_fac, gain_code, tempShift);
    syn_filt(Aq, exc, synth, kLSubfr, mem_syn, true);
    for (int i = kLSubfr - kM, j = 0; i < kLSubfr; i++, j++) {
        mem_err[j] = sub(speech[i], synth[i]);
        const Word16 temp = extract_h(L_shl(L_mult(y1[i], gain_pit), 1));
        const Word16 k = extract_h(L_shl(L_mult(y2[i], gain_code), kShift));
        mem_w0[j] = sub(xn[i], add(temp, k));
    }
}

}  // namespace amr_enc
ZEPS_END_VARIANT

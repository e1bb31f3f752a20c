/* SPDX-License-Identifier: BSD-3-Clause */
// The stages the G.729 main-body post-filter (ITU-T G.729 4.2, pst.c) and the
// Annex E post-filter (E.4.2, Poste) share: the 1/8-sample delay search of
// the long-term filter around the decoded lag, its gain (1/(1 + 0.5 g) with
// the main body's harmonic factor 0.5, else g weighted by the factor), the
// first reflection coefficient of the short-term filter's impulse response,
// the tilt compensation and the gain control (AGC factor 0.9875). Speech
// Q0, factors Q15, gains Q15 / Q14.
#pragma once

#include <cstring>

#include "common/basic_op.h"
#include "g729/codec_kernels.h"

ZEPS_BEGIN_VARIANT
namespace g729pst {

using namespace g729c;

inline constexpr Word16 kGammaHarmMain = 16384;  // GAMMA_HARM
inline constexpr Word16 kGamma3Plus = 6554;  // GAMMA3_PLUS
inline constexpr Word16 kGamma3Minus = 29491;
inline constexpr int kFUp = 8;               // F_UP_PST
inline constexpr int kLh2S = 4;              // LH2_S
inline constexpr int kLh2L = 16;             // LH2_L
inline constexpr int kLhUpSm1 = kLh2S / 2 - 1;
inline constexpr int kLhUpL = kLh2L / 2;
inline constexpr Word16 kMinGplt = 21845;    // MIN_GPLT
inline constexpr Word16 kAgcFac = 32358;     // AGC_FAC, 0.9875
inline constexpr Word16 kAgcFac1 = static_cast<Word16>(32768 - kAgcFac);
inline constexpr int kMemRes2 = kPitMax + 1 + kLhUpL;  // MEM_RES2 = 152
inline constexpr int kSubfrP1 = kSubfr + 1;

struct LtpChoice {
    Word16 ltpdel = 0, phase = 0, num = 0, den = 1, sh_num = 0, sh_den = 0, off_yup = 0;
};

/// search_del: best integer delay around t0, then the best of 7 phases on
/// either side with the short interpolation filters (y_up receives the
/// interpolated signals, kSubfrP1 samples per phase).
inline LtpChoice search_del(Word16 t0, const Word16* sig, Word16* y_up) {
    LtpChoice none;
    Word32 L_acc = 0;
    for (int i = 0; i < kSubfr; ++i) L_acc = L_mac(L_acc, sig[i], sig[i]);
    if (L_acc == 0) return none;
    Word16 sh_ener = sub(16, norm_l(L_acc));
    Word16 ener;
    if (sh_ener > 0) {
        ener = extract_l(L_shr(L_acc, sh_ener));
    } else {
        sh_ener = 0;
        ener = extract_l(L_acc);
    }
    Word16 lambda = sub(t0, 1);
    Word32 L_num_int = -1;
    Word16 i_max = 0;
    for (int i = 0; i < 3; ++i) {
        const Word16* past = sig - lambda - i;
        L_acc = 0;
        for (int n = 0; n < kSubfr; ++n) L_acc = L_mac(L_acc, sig[n], past[n]);
        if (L_acc < 0) L_acc = 0;
        if (L_sub(L_acc, L_num_int) > 0) {
            L_num_int = L_acc;
            i_max = static_cast<Word16>(i);
        }
    }
    if (L_num_int == 0) return none;
    lambda = add(lambda, i_max);
    L_acc = 0;
    for (int i = 0; i < kSubfr; ++i) L_acc = L_mac(L_acc, sig[i - lambda], sig[i - lambda]);
    if (L_acc == 0) return none;
    const Word32 L_den_int = L_acc;

    Word32 L_den0[kFUp - 1], L_den1[kFUp - 1];
    Word32 L_den_max = L_den_int;
    const Word16* past0 = sig - sub(lambda, kLhUpSm1);
    for (int phi = 1; phi < kFUp; ++phi) {
        Word16* yu = y_up + (phi - 1) * kSubfrP1;
        const std::int16_t* h = tab_hup_s + (phi - 1) * kLh2S;
        for (int n = 0; n <= kSubfr; ++n) {
            const Word16* p1 = past0 + n;
            L_acc = 0;
            for (int i = 0; i < kLh2S; ++i) L_acc = L_mac(L_acc, h[i], p1[-i]);
            yu[n] = round_fx(L_acc);
        }
        L_acc = 0;
        for (int n = 1; n < kSubfr; ++n) L_acc = L_mac(L_acc, yu[n], yu[n]);
        const Word32 L_temp0 = L_acc;
        L_den0[phi - 1] = L_mac(L_acc, yu[0], yu[0]);
        L_den1[phi - 1] = L_mac(L_temp0, yu[kSubfr], yu[kSubfr]);
        if (abs_s(yu[0]) > abs_s(yu[kSubfr])) {
            if (L_sub(L_den0[phi - 1], L_den_max) > 0) L_den_max = L_den0[phi - 1];
        } else {
            if (L_sub(L_den1[phi - 1], L_den_max) > 0) L_den_max = L_den1[phi - 1];
        }
    }
    if (L_den_max == 0) return none;
    const Word16 sh_den = sub(16, norm_l(L_den_max));
    if (sh_den <= 0) return none;
    const Word16 sh_num = sh_den >= sh_ener ? sh_den : sh_ener;

    Word16 den_max = extract_l(L_shr(L_den_int, sh_den));
    Word16 num_max = extract_l(L_shr(L_num_int, sh_num));
    DPF numsq_max = L_Extract(L_mult(num_max, num_max));
    Word16 phi_max = 0, ioff = 1;
    for (int phi = 1; phi < kFUp; ++phi) {
        const Word16* yu = y_up + (phi - 1) * kSubfrP1;
        for (int side = 0; side < 2; ++side) {  // lambda + 1 - phi/8, then lambda - phi/8
            const Word16* y = yu + side;
            L_acc = 0;
            for (int n = 0; n < kSubfr; ++n) L_acc = L_mac(L_acc, sig[n], y[n]);
            L_acc = L_shr(L_acc, sh_num);
            const Word16 num = L_acc < 0 ? Word16{0} : extract_l(L_acc);
            const DPF numsq = L_Extract(L_mult(num, num));
            const Word32 L_temp0 = Mpy_32_16(numsq.hi, numsq.lo, den_max);
            const Word16 den = extract_l(L_shr(side == 0 ? L_den0[phi - 1] : L_den1[phi - 1], sh_den));
            const Word32 L_temp1 = Mpy_32_16(numsq_max.hi, numsq_max.lo, den);
            if (L_sub(L_temp0, L_temp1) > 0) {
                num_max = num;
                numsq_max = numsq;
                den_max = den;
                ioff = static_cast<Word16>(side);
                phi_max = static_cast<Word16>(phi);
            }
        }
    }
    if (num_max == 0 || den_max <= 1) return none;
    Word32 L_temp1 = L_mult(den_max, ener);
    Word32 L_temp0 = L_Comp(numsq_max.hi, numsq_max.lo);
    Word16 temp = sub(sub(shl(sh_num, 1), sh_den), sh_ener);
    temp = add(temp, 1);
    if (temp < 0)
        L_temp0 = L_shr(L_temp0, negate(temp));
    else if (temp > 0)
        L_temp1 = L_shr(L_temp1, temp);
    if (L_sub(L_temp0, L_temp1) < 0) return none;
    LtpChoice c;
    c.ltpdel = sub(add(lambda, 1), ioff);
    c.off_yup = ioff;
    c.phase = phi_max;
    c.num = num_max;
    c.den = den_max;
    c.sh_den = sh_den;
    c.sh_num = sh_num;
    return c;
}

/// compute_ltp_l: the delayed signal with the 16-tap filter of the chosen
/// phase, and the numerator and denominator of its gain.
inline void compute_ltp_l(const Word16* s_in, Word16 ltpdel, Word16 phase, Word16* y_up, Word16& num, Word16& den,
                          Word16& sh_num, Word16& sh_den) {
    const std::int16_t* h = tab_hup_l + (phase - 1) * kLh2L;
    for (int n = 0; n < kSubfr; ++n) {
        const Word16* p2 = s_in + kLhUpL - ltpdel + n;
        Word32 L_acc = 0;
        for (int i = 0; i < kLh2L; ++i) L_acc = L_mac(L_acc, h[i], p2[-i]);
        y_up[n] = round_fx(L_acc);
    }
    Word32 L_acc = 0;
    for (int n = 0; n < kSubfr; ++n) L_acc = L_mac(L_acc, y_up[n], s_in[n]);
    if (L_acc < 0) {
        num = 0;
        sh_num = 0;
    } else {
        Word16 t = sub(16, norm_l(L_acc));
        if (t < 0) t = 0;
        num = extract_l(L_shr(L_acc, t));
        sh_num = t;
    }
    L_acc = 0;
    for (int n = 0; n < kSubfr; ++n) L_acc = L_mac(L_acc, y_up[n], y_up[n]);
    Word16 t = sub(16, norm_l(L_acc));
    if (t < 0) t = 0;
    den = extract_l(L_shr(L_acc, t));
    sh_den = t;
}

/// select_ltp: 2 when the second gain's num^2/den is strictly larger, else 1.
inline int select_ltp(Word16 num1, Word16 den1, Word16 sh_num1, Word16 sh_den1, Word16 num2, Word16 den2,
                      Word16 sh_num2, Word16 sh_den2) {
    if (den2 == 0) return 1;
    DPF d = L_Extract(L_mult(num1, num1));
    Word32 L_temp1 = Mpy_32_16(d.hi, d.lo, den2);
    d = L_Extract(L_mult(num2, num2));
    Word32 L_temp2 = Mpy_32_16(d.hi, d.lo, den1);
    const Word16 temp1 = add(shl(sh_num1, 1), sh_den2);
    const Word16 temp2 = add(shl(sh_num2, 1), sh_den1);
    if (temp2 > temp1)
        L_temp1 = L_shr(L_temp1, sub(temp2, temp1));
    else if (temp1 > temp2)
        L_temp2 = L_shr(L_temp2, sub(temp1, temp2));
    return L_sub(L_temp2, L_temp1) > 0 ? 2 : 1;
}

/// pst_ltp: the harmonic post-filter of the residual res (kMemRes2 past
/// samples before it); writes out and the voicing decision (the delay, 0
/// when unvoiced); gamma_harm is the harmonic weighting factor (Q15,
/// kGammaHarmMain in the main body).
inline void pst_ltp(Word16 t0, const Word16* res, Word16* out, Word16& vo, Word16 gamma_harm) {
    const Word16* ptr_sig = res - kMemRes2;
    Word16 temp = 0;
    for (int i = 0; i < kMemRes2 + kSubfr; ++i) temp = static_cast<Word16>(temp | abs_s(ptr_sig[i]));
    const Word16 nb_sh_sig = sub(3, norm_s(temp));
    Word16 sig_cadr[kMemRes2 + kSubfr];
    for (int i = 0; i < kMemRes2 + kSubfr; ++i) sig_cadr[i] = shr(ptr_sig[i], nb_sh_sig);
    const Word16* cadr = sig_cadr + kMemRes2;

    Word16 y_up[(kFUp - 1) * kSubfrP1];
    LtpChoice c = search_del(t0, cadr, y_up);
    vo = c.ltpdel;
    if (c.num == 0) {
        std::memcpy(out, res, kSubfr * sizeof(Word16));
        return;
    }
    Word16 num = c.num, den = c.den, sh_num = c.sh_num, sh_den = c.sh_den;
    Word16 y_long[kSubfr];
    const Word16* y;
    if (c.phase == 0) {
        y = res - c.ltpdel;
    } else {
        Word16 num2, den2, sh_num2, sh_den2;
        compute_ltp_l(cadr, c.ltpdel, c.phase, y_long, num2, den2, sh_num2, sh_den2);
        Word16* yy;
        if (select_ltp(num, den, sh_num, sh_den, num2, den2, sh_num2, sh_den2) == 1) {
            yy = y_up + (c.phase - 1) * kSubfrP1 + c.off_yup;
        } else {
            num = num2;
            den = den2;
            sh_num = sh_num2;
            sh_den = sh_den2;
            yy = y_long;
        }
        for (int i = 0; i < kSubfr; ++i) yy[i] = shl(yy[i], nb_sh_sig);
        y = yy;
    }
    temp = sub(sh_num, sh_den);
    if (temp >= 0)
        den = shr(den, temp);
    else
        num = shl(num, temp);
    Word16 gain_plt;
    if (num >= den) {  // gain bounded to 1
        if (gamma_harm == kGammaHarmMain) {
            gain_plt = kMinGplt;
        } else {
            num = shr(mult_r(den, gamma_harm), 1);
            den = shr(den, 1);
            gain_plt = div_s(den, add(den, num));
        }
    } else {
        num = gamma_harm == kGammaHarmMain ? shr(num, 2) : shr(mult_r(num, gamma_harm), 1);
        den = shr(den, 1);
        gain_plt = div_s(den, add(den, num));
    }
    const Word16 gain_plt_1 = add(sub(32767, gain_plt), 1);
    for (int n = 0; n < kSubfr; ++n) {
        Word32 L_acc = L_mult(gain_plt, res[n]);
        L_acc = L_mac(L_acc, gain_plt_1, y[n]);
        out[n] = round_fx(L_acc);
    }
}

/// calc_rc0_h: first reflection coefficient of the impulse response h.
inline Word16 calc_rc0_h(const Word16* h, int long_h) {
    Word32 L_acc = 0;
    for (int i = 0; i < long_h; ++i) L_acc = L_mac(L_acc, h[i], h[i]);
    const Word16 sh_acf = norm_l(L_acc);
    const Word16 acf0 = extract_h(L_shl(L_acc, sh_acf));
    L_acc = 0;
    for (int i = 0; i < long_h - 1; ++i) L_acc = L_mac(L_acc, h[i], h[i + 1]);
    const Word16 acf1 = extract_h(L_shl(L_acc, sh_acf));
    if (acf0 < abs_s(acf1)) return 0;
    const Word16 rc0 = div_s(abs_s(acf1), acf0);
    return acf1 > 0 ? negate(rc0) : rc0;
}


/// The short-term filter's input scaled by the inverse of the sum of |h|
/// (the impulse response of its long_h first samples) when that sum is
/// above 1 (Q10 on the Q12 response).
inline void scale_by_h_sum(const Word16* h, int long_h, Word16* sig) {
    Word32 L_g0 = 0;
    for (int i = 0; i < long_h; ++i) L_g0 = L_add(L_g0, L_deposit_l(abs_s(h[i])));
    const Word16 g0 = extract_h(L_shl(L_g0, 14));
    if (g0 > 1024) {
        const Word16 temp = div_s(1024, g0);
        for (int i = 0; i < kSubfr; ++i) sig[i] = mult_r(sig[i], temp);
    }
}

/// filt_mu: y[n] = (x[n] + mu x[n-1]) / (1 - |mu|); sig_in starts at x[-1].
inline void filt_mu(const Word16* sig_in, Word16* out, Word16 parcor0) {
    Word16 mu, fact, sh_fact1;
    Word32 L_fact;
    if (parcor0 > 0) {
        mu = mult_r(parcor0, kGamma3Plus);
        sh_fact1 = 15;
        fact = 0x4000;
        L_fact = 0x4000;
    } else {
        mu = mult_r(parcor0, kGamma3Minus);
        sh_fact1 = 12;
        fact = 0x0800;
        L_fact = 0x0800;
    }
    const Word16 mu2 = add(32767, sub(1, abs_s(mu)));
    const Word16 ga = div_s(fact, mu2);
    mu = shr(mu, 1);
    for (int n = 0; n < kSubfr; ++n) {
        const Word16 prev = sig_in[n];
        Word32 L_temp = L_shl(L_deposit_l(sig_in[n + 1]), 15);
        L_temp = L_mac(L_temp, mu, prev);
        L_temp = L_add(L_temp, 0x4000);
        const Word16 temp = extract_l(L_shr(L_temp, 15));
        L_temp = L_add(L_mult(temp, ga), L_fact);
        L_temp = L_shr(L_temp, sh_fact1);
        out[n] = saturate(L_temp);
    }
}

/// scale_st: gain control on the sums of absolute values.
inline void scale_st(const Word16* in, Word16* out, Word16& gain_prec) {
    Word32 L_acc = 0;
    for (int i = 0; i < kSubfr; ++i) L_acc = L_add(L_acc, L_abs(L_deposit_l(in[i])));
    Word16 g0;
    if (L_acc == 0) {
        g0 = 0;
    } else {
        const Word16 scal_in = norm_l(L_acc);
        const Word16 s_g_in = extract_h(L_shl(L_acc, scal_in));
        L_acc = 0;
        for (int i = 0; i < kSubfr; ++i) L_acc = L_add(L_acc, L_abs(L_deposit_l(out[i])));
        if (L_acc == 0) {
            gain_prec = 0;
            return;
        }
        const Word16 scal_out = norm_l(L_acc);
        const Word16 s_g_out = extract_h(L_shl(L_acc, scal_out));
        Word16 sh_g0 = sub(add(scal_in, 1), scal_out);
        if (s_g_in < s_g_out) {
            g0 = div_s(s_g_in, s_g_out);
        } else {
            g0 = shr(div_s(sub(s_g_in, s_g_out), s_g_out), 1);
            g0 = add(g0, 0x4000);
            sh_g0 = sub(sh_g0, 1);
        }
        g0 = shr(g0, sh_g0);
        g0 = mult_r(g0, kAgcFac1);
    }
    Word16 gain = gain_prec;
    for (int i = 0; i < kSubfr; ++i) {
        gain = add(mult_r(kAgcFac, gain), g0);
        out[i] = round_fx(L_shl(L_mult(gain, out[i]), 1));
    }
    gain_prec = gain;
}

}  // namespace g729pst
ZEPS_END_VARIANT

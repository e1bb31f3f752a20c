/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR post-filter and post-processing (3GPP TS 26.073 pstfilt.c,
// weight_a.c, residu.c, preemph.c, agc.c, post_pro.c). Speech Q0, LP
// coefficients Q12.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_excitation.h"
#include "amr/dec_state.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline void post_filter_reset(PostFilterState& st) {
    for (Word16& v : st.mem_syn_pst) v = 0;
    for (Word16& v : st.res2) v = 0;
    for (Word16& v : st.synth_buf) v = 0;
    st.past_gain = 4096;
    st.mem_pre = 0;
}

/// Weight_Ai: a_exp[i] = a[i] fac[i-1].
inline void weight_ai(const Word16* a, const std::int16_t* fac, Word16* a_exp) {
    a_exp[0] = a[0];
    for (int i = 1; i <= kM; i++) a_exp[i] = round_fx(L_mult(a[i], fac[i - 1]));
}

/// Residu: y = A(z) x over lg samples (x[-10..-1] read).
/// The reference's chain (the saturating form, taken when the bound fails).
inline void residu_chain(const Word16* a, const Word16* x, Word16* y, int lg) {
    for (int i = 0; i < lg; i++) {
        Word32 s = L_mult(x[i], a[0]);
        for (int j = 1; j <= kM; j++) s = L_mac(s, a[j], x[i - j]);
        s = L_shl(s, 3);
        y[i] = round_fx(s);
    }
}

/// Residu: plain sums when sum|a| max|x| bounds every chain (mac_bound.h).
inline void residu(const Word16* a, const Word16* x, Word16* y, int lg) {
    if (!chain_exact(mag_sum(a, kMp1), mag_max(x - kM, lg + kM))) {
        residu_chain(a, x, y, lg);
        return;
    }
    for (int i = 0; i < lg; i++) {
        std::int32_t s = 0;
        for (int j = 0; j <= kM; j++) s += std::int32_t{a[j]} * x[i - j];
        y[i] = round_fx(L_shl(2 * s, 3));
    }
}

/// preemphasis: in place, x[n] - g x[n-1].
inline void preemphasis(Word16& mem_pre, Word16* signal, Word16 g, int L) {
    const Word16 temp = signal[L - 1];
    for (int i = L - 1; i > 0; i--) signal[i] = sub(signal[i], mult(g, signal[i - 1]));
    signal[0] = sub(signal[0], mult(g, mem_pre));
    mem_pre = temp;
}

/// agc: smoothed gain control (factor agc_fac) of sig_out to the energy of sig_in.
inline void agc(Word16& past_gain, const Word16* sig_in, Word16* sig_out, Word16 agc_fac, int l_trm) {
    Word16 g0;
    if (!agc_gain(sig_in, sig_out, l_trm, g0)) {
        past_gain = 0;
        return;
    }
    g0 = mult(g0, sub(32767, agc_fac));
    Word16 gain = past_gain;
    for (int i = 0; i < l_trm; i++) {
        gain = mult(gain, agc_fac);
        gain = add(gain, g0);
        sig_out[i] = extract_h(L_shl(L_mult(sig_out[i], gain), 3));
    }
    past_gain = gain;
}

/// Post_Filter: formant post-filter A(z/g3)/A(z/g4) with tilt compensation
/// and gain control, per subframe, in place on the 160-sample frame.
inline void post_filter(PostFilterState& st, Word16 mode, Word16* syn, const Word16* Az_4) {
    namespace t = zeps::amr_dec_tab;
    constexpr int kLH = 22;
    constexpr Word16 kMu = 26214, kAgcFac = 29491;
    Word16* syn_work = &st.synth_buf[kM];
    for (int i = 0; i < kLFrame; i++) syn_work[i] = syn[i];
    const bool high = mode == MR122 || mode == MR102;
    const Word16* Az = Az_4;
    for (int i_subfr = 0; i_subfr < kLFrame; i_subfr += kLSubfr, Az += kMp1) {
        Word16 Ap3[kMp1], Ap4[kMp1], h[kLH];
        weight_ai(Az, high ? t::gamma3_MR122 : t::gamma3, Ap3);
        weight_ai(Az, high ? t::gamma4_MR122 : t::gamma4, Ap4);
        residu(Ap3, &syn_work[i_subfr], st.res2, kLSubfr);
        for (int i = 0; i < kMp1; i++) h[i] = Ap3[i];
        for (int i = kMp1; i < kLH; i++) h[i] = 0;
        syn_filt(Ap4, h, h, kLH, &h[kMp1], false);
        const Word16 temp1 = extract_h(energy_sat(h, kLH));
        Word32 L_tmp = L_mult(h[0], h[1]);
        for (int i = 1; i < kLH - 1; i++) L_tmp = L_mac(L_tmp, h[i], h[i + 1]);
        Word16 temp2 = extract_h(L_tmp);
        if (temp2 <= 0) temp2 = 0;
        else temp2 = div_s(mult(temp2, kMu), temp1);
        preemphasis(st.mem_pre, st.res2, temp2, kLSubfr);
        syn_filt(Ap4, st.res2, &syn[i_subfr], kLSubfr, st.mem_syn_pst, true);
        agc(st.past_gain, &syn_work[i_subfr], &syn[i_subfr], kAgcFac, kLSubfr);
    }
    for (int i = 0; i < kM; i++) st.synth_buf[i] = syn_work[kLFrame - kM + i];
}

inline void post_process_reset(PostProcessState& st) { st = PostProcessState{0, 0, 0, 0, 0, 0}; }

/// Post_Process: second-order high-pass at 60 Hz with the output doubled.
inline void post_process(PostProcessState& st, Word16* signal, int lg) {
    static constexpr Word16 b[3] = {7699, -15398, 7699};
    static constexpr Word16 a[3] = {8192, 15836, -7667};
    for (int i = 0; i < lg; i++) {
        const Word16 x2 = st.x1;
        st.x1 = st.x0;
        st.x0 = signal[i];
        Word32 L_tmp = Mpy_32_16(st.y1_hi, st.y1_lo, a[1]);
        L_tmp = L_add(L_tmp, Mpy_32_16(st.y2_hi, st.y2_lo, a[2]));
        L_tmp = L_mac(L_tmp, st.x0, b[0]);
        L_tmp = L_mac(L_tmp, st.x1, b[1]);
        L_tmp = L_mac(L_tmp, x2, b[2]);
        L_tmp = L_shl(L_tmp, 2);
        signal[i] = round_fx(L_shl(L_tmp, 1));
        st.y2_hi = st.y1_hi;
        st.y2_lo = st.y1_lo;
        L_Extract(L_tmp, st.y1_hi, st.y1_lo);
    }
}

}  // namespace amr_dec
ZEPS_END_VARIANT

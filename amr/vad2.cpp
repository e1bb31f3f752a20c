// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR voice activity detector, option 2 (3GPP TS 26.094; fixed-point
// routine vad2 of TS 26.073 vad2.c), run on the two 10 ms halves of a frame.
// Input Q0. Channel energies Q9 ("22,9", shift state 0) or Q4 ("27,4",
// shift state 1), noise energies Q9, dB values Q8, smoothing factors Q15.
#include <cstdint>

#include "amr/amr_vad_tables.h"
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fixed_math.h"

ZEPS_BEGIN_VARIANT

namespace {

constexpr int kHalf = 80;      // FRM_LEN
constexpr int kDelay = 24;     // zeros before the data in the FFT buffer
constexpr int kFft = 128;
constexpr int kChannels = 16;
constexpr Word16 kHeadroom = 2;          // FFT_HEADROOM
constexpr Word16 kPreEmpFac = -26214;    // -0.8 in Q15
constexpr Word16 kUpdateThld = 35;
constexpr Word16 kHysterCntThld = 6;
constexpr Word16 kUpdateCntThld = 50;
constexpr Word16 kDevThld = 7168;        // 28 dB in Q8
constexpr Word16 kHighAlpha = 29491, kLowAlpha = 22938, kAlphaRange = kHighAlpha - kLowAlpha;
constexpr Word16 kCeeSmFac = 18022, kOneMinusCeeSmFac = 14746;
constexpr Word16 kCneSmFac = 3277, kOneMinusCneSmFac = 29491;
constexpr Word32 kMinNoiseEnrg0 = 32;
constexpr Word32 kIneNoise0 = 8192;

// Per shift state (0: Q9, 1: Q4).
constexpr Word32 kNoiseFloorChan[2] = {512, 16};
constexpr Word32 kMinChanEnrg[2] = {32, 1};
constexpr Word32 kIneNoise[2] = {8192, 256};
constexpr Word16 kFracBits[2] = {9, 4};
constexpr Word16 kStateChangeShiftR[2] = {4 - 9, 9 - 4};
constexpr Word16 kEnrgNormShift[2] = {9 - 1 + 2, 4 - 1 + 2};

/// Index of the per-state constants; a state word other than 0 or 1 (never
/// produced by the detector) reads as state 1 instead of leaving the tables.
inline int state_index(const ZepVAD2State_GSMAMR& st) { return st.shift_state == 0 ? 0 : 1; }

/// 10 log10(x) / 128 for x with fbits fractional bits, Q8 (fn10Log10).
Word16 fn10Log10(Word32 x, Word16 fbits) {
    Word16 integer = 0, fraction = 0;
    if (x > 0) {  // Log2, normalised with the count norm_l gives for x > 0
        const Word16 e = static_cast<Word16>(__builtin_clz(static_cast<std::uint32_t>(x)) - 1);
        Log2_norm(x << e, e, integer, fraction);
    }
    integer = sub(integer, fbits);
    const Word32 t = Mpy_32_16(integer, fraction, 24660);  // 10 log10(2) / 4
    return extract_l(L_shr_r(t, 5 + 1));
}

/// Block normalisation, pre-emphasis and FFT of one half frame into data;
/// returns the block-normalisation shift.
Word16 spectrum(ZepVAD2State_GSMAMR& st, const Word16* in, Word16* data) {
    Word16 norm[kHalf];
    Zep32s shift32 = 0;
    zepsAutoScale_16s(in, norm, kHalf, &shift32, kHeadroom);
    const Word16 shift = static_cast<Word16>(shift32);
    for (int i = 0; i < kDelay; ++i) data[i] = 0;
    st.pre_emp_mem = shr_r(st.pre_emp_mem, sub(st.last_normb_shift, shift));
    st.last_normb_shift = shift;
    zepsPreemphasize_GSMAMR_16s(norm, data + kDelay, kHalf, kPreEmpFac, &st.pre_emp_mem);
    for (int i = kDelay + kHalf; i < kFft; ++i) data[i] = 0;
    zepsFFTFwd_RToPerm_GSMAMR_16s_I(data);
    return shift;
}

/// Switches between the Q9 and Q4 energy scaling when the input level moves.
void update_shift_state(ZepVAD2State_GSMAMR& st, Word16 normb_shift) {
    bool change = false;
    if (st.shift_state == 0) {
        if (normb_shift <= -kHeadroom + 2) {
            change = true;
            st.shift_state = 1;
        }
    } else if (normb_shift >= -kHeadroom + 5) {
        change = true;
        st.shift_state = 0;
    }
    if (change)
        for (int i = 0; i < kChannels; ++i)
            st.Lch_enrg[i] = L_shr(st.Lch_enrg[i], kStateChangeShiftR[state_index(st)]);
}

/// Smoothed energy per channel: e = alpha * enrg / bins + (1 - alpha) * e.
void channel_energies(ZepVAD2State_GSMAMR& st, const Word16* data, Word16 normb_shift) {
    Word16 alpha = kCeeSmFac, one_m_alpha = kOneMinusCeeSmFac;
    if (st.Lframe_cnt == 1) {
        alpha = 32767;
        one_m_alpha = 0;
    }
    const int s = state_index(st);
    for (int i = 0; i < kChannels; ++i) {
        // The L_mac chain of squares only grows, so it equals the exact sum
        // clamped to MAX_32 (a -32768 term alone reaches the clamp).
        std::int64_t sum = 0;
        for (int j = 2 * ch_tbl[i][0]; j <= 2 * ch_tbl[i][1] + 1; ++j) sum += std::int32_t{data[j]} * data[j];
        Word32 e = sum >= (std::int64_t{1} << 30) ? MAX_32 : static_cast<Word32>(2 * sum);
        e = L_shr_r(e, sub(shl(normb_shift, 1), kEnrgNormShift[s]));
        const Word16 k = mult(alpha, ch_tbl_sh[i]);
        const DPF ed = L_Extract(e);
        const DPF old = L_Extract(st.Lch_enrg[i]);
        st.Lch_enrg[i] = L_add(Mpy_32_16(ed.hi, ed.lo, k), Mpy_32_16(old.hi, old.lo, one_m_alpha));
        if (st.Lch_enrg[i] < kMinChanEnrg[s]) st.Lch_enrg[i] = kMinChanEnrg[s];
    }
}

/// True when the peak channel (from channel 2 up) exceeds 10/16 of the total.
bool peak_to_average_high(const ZepVAD2State_GSMAMR& st, Word32 total) {
    Word32 peak = 0;
    for (int i = 2; i < kChannels; ++i)
        if (st.Lch_enrg[i] > peak) peak = st.Lch_enrg[i];
    const DPF t = L_Extract(total);
    return peak > Mpy_32_16(t.hi, t.lo, 20480);
}

/// Noise estimates of the first four half frames.
void initial_noise(ZepVAD2State_GSMAMR& st, bool p2a) {
    for (int i = 0; i < kChannels; ++i) {
        if (p2a || st.Lch_enrg[i] < kIneNoise[state_index(st)])
            st.Lch_noise[i] = kIneNoise0;
        else
            st.Lch_noise[i] = st.shift_state == 1 ? L_shr(st.Lch_enrg[i], kStateChangeShiftR[0]) : st.Lch_enrg[i];
    }
}

/// Instantaneous SNR of the half frame from the channel SNRs, Q8.
Word16 frame_snr(const Word16* ch_snr) {
    Word32 sum = 0;
    for (int i = 0; i < kChannels; ++i) {
        const Word32 t = L_shr(L_mult(ch_snr[i], 10885), 8);  // snr * 0.1 * log2(10)
        DPF d = L_Extract(t);
        d.hi = add(d.hi, 3);
        sum = L_add(sum, Pow2(d.hi, d.lo));
    }
    return fn10Log10(sum, 4 + 3);
}

void negative_snr_bias(ZepVAD2State_GSMAMR& st, Word16 xt) {
    if (xt >= 0) return;
    const Word16 sq = round_fx(L_shl(L_mult(xt, xt), 7));
    st.negSNRvar = round_fx(L_add(L_mult(32440, st.negSNRvar), L_mult(328, sq)));
    if (st.negSNRvar > 1024) st.negSNRvar = 1024;
    const Word16 t = mult_r(shl(sub(st.negSNRvar, 166), 4), 24576);
    st.negSNRbias = t < 0 ? Word16{0} : shr(t, 8);
}

Word16 hangover_decision(ZepVAD2State_GSMAMR& st, Word16 vm_sum, Word16 tsnrq) {
    if (vm_sum > add(vm_threshold_table[tsnrq], st.negSNRbias)) {
        st.burstcount = add(st.burstcount, 1);
        if (st.burstcount > burstcount_table[tsnrq]) st.hangover = hangover_table[tsnrq];
        return 1;
    }
    st.burstcount = 0;
    st.hangover = sub(st.hangover, 1);
    if (st.hangover <= 0) {
        st.hangover = 0;
        return 0;
    }
    return 1;
}

void long_term_energies(ZepVAD2State_GSMAMR& st, const Word16* ch_enrg_db, Word16 xt) {
    Word16 alpha, one_m_alpha;
    const Word16 d = sub(st.tsnr, xt);
    if (d <= 0 || st.tsnr <= 0) {
        alpha = kHighAlpha;
        one_m_alpha = 32768 - kHighAlpha;
    } else if (d > st.tsnr) {
        alpha = kLowAlpha;
        one_m_alpha = 32768 - kLowAlpha;
    } else {
        alpha = sub(kHighAlpha, mult(kAlphaRange, div_s(d, st.tsnr)));
        one_m_alpha = sub(32767, alpha);
    }
    for (int i = 0; i < kChannels; ++i)
        st.ch_enrg_long_db[i] = round_fx(L_add(L_mult(one_m_alpha, ch_enrg_db[i]), L_mult(alpha, st.ch_enrg_long_db[i])));
}

/// Noise-update decision with hysteresis; true when the noise is updated.
bool noise_update_flag(ZepVAD2State_GSMAMR& st, Word16 vm_sum, Word32 tce, Word16 dev, bool p2a) {
    bool update = false;
    st.fupdate_flag = 0;
    if (vm_sum <= kUpdateThld) {
        if (st.burstcount == 0) {
            update = true;
            st.update_cnt = 0;
        }
    } else if (tce > kNoiseFloorChan[state_index(st)] && dev < kDevThld && !p2a && st.LTP_flag == 0) {
        st.update_cnt = add(st.update_cnt, 1);
        if (st.update_cnt >= kUpdateCntThld) {
            update = true;
            st.fupdate_flag = 1;
        }
    }
    st.hyster_cnt = st.update_cnt == st.last_update_cnt ? add(st.hyster_cnt, 1) : Word16{0};
    st.last_update_cnt = st.update_cnt;
    if (st.hyster_cnt > kHysterCntThld) st.update_cnt = 0;
    return update;
}

void update_noise(ZepVAD2State_GSMAMR& st) {
    const Word16 sh = st.shift_state == 1 ? kStateChangeShiftR[0] : Word16{0};
    for (int i = 0; i < kChannels; ++i) {
        const DPF e = L_Extract(L_shr(st.Lch_enrg[i], sh));
        const DPF n = L_Extract(st.Lch_noise[i]);
        st.Lch_noise[i] = L_add(Mpy_32_16(e.hi, e.lo, kCneSmFac), Mpy_32_16(n.hi, n.lo, kOneMinusCneSmFac));
        if (st.Lch_noise[i] < kMinNoiseEnrg0) st.Lch_noise[i] = kMinNoiseEnrg0;
    }
}

/// One vad2 call on 80 samples; returns the half-frame decision.
Word16 vad2_half(ZepVAD2State_GSMAMR& st, const Word16* in) {
    st.Lframe_cnt = L_add(st.Lframe_cnt, 1);
    Word16 data[kFft];
    const Word16 normb_shift = spectrum(st, in, data);
    update_shift_state(st, normb_shift);
    channel_energies(st, data, normb_shift);

    Word32 tce = 0;
    for (int i = 0; i < kChannels; ++i) tce = L_add(tce, st.Lch_enrg[i]);
    const bool p2a = peak_to_average_high(st, tce);
    if (st.Lframe_cnt <= 4) initial_noise(st, p2a);

    Word16 ch_snr[kChannels], ch_enrg_db[kChannels];
    Word16 vm_sum = 0;
    for (int i = 0; i < kChannels; ++i) {
        ch_enrg_db[i] = fn10Log10(st.Lch_enrg[i], kFracBits[state_index(st)]);
        ch_snr[i] = sub(ch_enrg_db[i], fn10Log10(st.Lch_noise[i], kFracBits[0]));
        const Word16 q = shr_r(mult(21845, ch_snr[i]), 6);  // 3/8 dB steps
        vm_sum = add(vm_sum, vm_tbl[q < 89 ? (q > 0 ? q : 0) : 89]);
    }

    Word16 xt;
    if (st.Lframe_cnt <= 4 || st.fupdate_flag == 1) {
        st.negSNRvar = 0;
        st.negSNRbias = 0;
        Word32 tne = 0;
        for (int i = 0; i < kChannels; ++i) tne = L_add(tne, st.Lch_noise[i]);
        xt = sub(14320, fn10Log10(tne, kFracBits[0]));  // 14320: 96 - 22 - 10 log10(64) dB
        st.tsnr = xt;
    } else {
        xt = frame_snr(ch_snr);
        if (xt > st.tsnr)
            st.tsnr = round_fx(L_add(L_mult(29491, st.tsnr), L_mult(3277, xt)));
        else if (xt > mult(20480, st.tsnr))
            st.tsnr = round_fx(L_add(L_mult(32702, st.tsnr), L_mult(66, xt)));
    }
    Word16 tsnrq = shr(mult(st.tsnr, 10923), 8);
    if (tsnrq > 19) tsnrq = 19;
    else if (tsnrq < 0) tsnrq = 0;
    negative_snr_bias(st, xt);
    const Word16 ivad = hangover_decision(st, vm_sum, tsnrq);

    Word16 dev = 0;
    if (st.Lframe_cnt == 1) {
        for (int i = 0; i < kChannels; ++i) st.ch_enrg_long_db[i] = ch_enrg_db[i];
    } else {
        for (int i = 0; i < kChannels; ++i) dev = add(dev, abs_s(sub(st.ch_enrg_long_db[i], ch_enrg_db[i])));
    }
    long_term_energies(st, ch_enrg_db, xt);
    if (noise_update_flag(st, vm_sum, tce, dev, p2a)) update_noise(st);
    return ivad;
}

}  // namespace

ZepStatus zepsVAD2_GSMAMR_16s(const Zep16s* pSrc, ZepVAD2State_GSMAMR* pState, Zep16s* pVadFlag, Zep32s ltpFlag) {
    if (any_null(pSrc, pState, pVadFlag)) return zepStsNullPtrErr;
    ZepVAD2State_GSMAMR& st = *pState;
    st.LTP_flag = ltpFlag != 0 ? 1 : 0;
    const Word16 first = vad2_half(st, pSrc);
    const Word16 second = vad2_half(st, pSrc + kHalf);
    *pVadFlag = (first != 0 || second != 0) ? 1 : 0;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

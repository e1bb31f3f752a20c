// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR voice activity detector, option 1 (3GPP TS 26.094; fixed-point
// routine vad1 of TS 26.073 vad1.c). Input: pre-processed speech, Q0. Band
// levels and noise estimates Q0 (filter-bank scaled), correlations Q15,
// SNR sum as the reference scales it (UNITY 512).
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

namespace {

constexpr int kFrame = 160;
constexpr int kLookahead = 40;
constexpr int kBands = 9;

constexpr Word16 kCoeff3 = 13363;
constexpr Word16 kCoeff5_1 = 21955;
constexpr Word16 kCoeff5_2 = 6390;
constexpr Word32 kPowLow = 15000;          // VAD_POW_LOW, POW_COMPLEX_THR
constexpr Word32 kPowPitch = 343040;       // POW_PITCH_THR
constexpr Word16 kSlope = -2808;           // VAD_SLOPE
constexpr Word16 kThrHigh = 1260;
constexpr Word16 kThrLow = 720;
constexpr Word16 kInvBands = 3641;         // INV_COMPLEN
constexpr Word16 kCorrAdaptHigh = 19660;   // CVAD_THRESH_ADAPT_HIGH
constexpr Word16 kCorrAdaptLow = 16383;    // CVAD_THRESH_ADAPT_LOW
constexpr Word16 kCorrInNoise = 21298;     // CVAD_THRESH_IN_NOISE
constexpr Word16 kCorrHang = 22936;        // CVAD_THRESH_HANG
constexpr Word16 kCorrMin = 13106;         // CVAD_MIN_CORR
constexpr Word16 kAdaptSlow = 655, kAdaptFast = 2621, kAdaptReallyFast = 6553;

struct Vad1 {
    ZepVAD1State_GSMAMR& st;
    Word16 tone;
    Word16 best_corr_hp;
};

// ---- filter bank (first_filter_stage, filter5, filter3, level_calculation)

void first_filter_stage(const Word16* in, Word16* out, Zep16s* data) {
    Word16 d0 = data[0], d1 = data[1];
    for (int i = 0; i < kFrame / 4; ++i) {
        const Word16 t0 = sub(shr(in[4 * i], 2), mult(kCoeff5_1, d0));
        Word16 t1 = add(d0, mult(kCoeff5_1, t0));
        const Word16 t3 = sub(shr(in[4 * i + 1], 2), mult(kCoeff5_2, d1));
        Word16 t2 = add(d1, mult(kCoeff5_2, t3));
        out[4 * i] = add(t1, t2);
        out[4 * i + 1] = sub(t1, t2);
        d0 = sub(shr(in[4 * i + 2], 2), mult(kCoeff5_1, t0));
        t1 = add(t0, mult(kCoeff5_1, d0));
        d1 = sub(shr(in[4 * i + 3], 2), mult(kCoeff5_2, t3));
        t2 = add(t3, mult(kCoeff5_2, d1));
        out[4 * i + 2] = add(t1, t2);
        out[4 * i + 3] = sub(t1, t2);
    }
    data[0] = d0;
    data[1] = d1;
}

void filter5(Word16* in0, Word16* in1, Zep16s* data) {
    Word16 t0 = sub(*in0, mult(kCoeff5_1, data[0]));
    const Word16 t1 = add(data[0], mult(kCoeff5_1, t0));
    data[0] = t0;
    t0 = sub(*in1, mult(kCoeff5_2, data[1]));
    const Word16 t2 = add(data[1], mult(kCoeff5_2, t0));
    data[1] = t0;
    *in0 = shr(add(t1, t2), 1);
    *in1 = shr(sub(t1, t2), 1);
}

void filter3(Word16* in0, Word16* in1, Zep16s* data) {
    const Word16 t1 = sub(*in1, mult(kCoeff3, *data));
    const Word16 t2 = add(*data, mult(kCoeff3, t1));
    *data = t1;
    *in1 = shr(sub(*in0, t2), 1);
    *in0 = shr(add(*in0, t2), 1);
}

/// Sum of |data[step*i + start]|: samples count1..count2-1 form the new
/// look-ahead level, samples 0..count1-1 complete the frame level.
Word16 level_calculation(const Word16* data, Zep16s* sub_level, int count1, int count2, int step, int start,
                         Word16 scale) {
    Word32 l1 = 0;
    for (int i = count1; i < count2; ++i) l1 = L_mac(l1, 1, abs_s(data[step * i + start]));
    Word32 l2 = L_add(l1, L_shl(*sub_level, sub(16, scale)));
    *sub_level = extract_h(L_shl(l1, scale));
    for (int i = 0; i < count1; ++i) l2 = L_mac(l2, 1, abs_s(data[step * i + start]));
    return extract_h(L_shl(l2, scale));
}

void filter_bank(ZepVAD1State_GSMAMR& st, const Word16* in, Word16* level) {
    Word16 buf[kFrame];
    first_filter_stage(in, buf, st.a_data5[0]);
    for (int i = 0; i < kFrame / 4; ++i) {
        filter5(&buf[4 * i], &buf[4 * i + 2], st.a_data5[1]);
        filter5(&buf[4 * i + 1], &buf[4 * i + 3], st.a_data5[2]);
    }
    for (int i = 0; i < kFrame / 8; ++i) {
        filter3(&buf[8 * i], &buf[8 * i + 4], &st.a_data3[0]);
        filter3(&buf[8 * i + 2], &buf[8 * i + 6], &st.a_data3[1]);
        filter3(&buf[8 * i + 3], &buf[8 * i + 7], &st.a_data3[4]);
    }
    for (int i = 0; i < kFrame / 16; ++i) {
        filter3(&buf[16 * i], &buf[16 * i + 8], &st.a_data3[2]);
        filter3(&buf[16 * i + 4], &buf[16 * i + 12], &st.a_data3[3]);
    }
    level[8] = level_calculation(buf, &st.sub_level[8], kFrame / 4 - 8, kFrame / 4, 4, 1, 15);
    level[7] = level_calculation(buf, &st.sub_level[7], kFrame / 8 - 4, kFrame / 8, 8, 7, 16);
    level[6] = level_calculation(buf, &st.sub_level[6], kFrame / 8 - 4, kFrame / 8, 8, 3, 16);
    level[5] = level_calculation(buf, &st.sub_level[5], kFrame / 8 - 4, kFrame / 8, 8, 2, 16);
    level[4] = level_calculation(buf, &st.sub_level[4], kFrame / 8 - 4, kFrame / 8, 8, 6, 16);
    level[3] = level_calculation(buf, &st.sub_level[3], kFrame / 16 - 2, kFrame / 16, 16, 4, 16);
    level[2] = level_calculation(buf, &st.sub_level[2], kFrame / 16 - 2, kFrame / 16, 16, 12, 16);
    level[1] = level_calculation(buf, &st.sub_level[1], kFrame / 16 - 2, kFrame / 16, 16, 8, 16);
    level[0] = level_calculation(buf, &st.sub_level[0], kFrame / 16 - 2, kFrame / 16, 16, 0, 16);
}

// ---- background noise update (update_cntrl, noise_estimate_update)

/// Stationarity ratio sum(max/min * 64) over the bands, each level at least 184.
Word16 stationarity_ratio(const ZepVAD1State_GSMAMR& st, const Word16* level) {
    Word16 stat_rat = 0;
    for (int i = 0; i < kBands; ++i) {
        Word16 num = level[i], den = st.ave_level[i];
        if (level[i] <= st.ave_level[i]) {
            num = st.ave_level[i];
            den = level[i];
        }
        if (num < 184) num = 184;
        if (den < 184) den = 184;
        const Word16 e = norm_s(den);
        const Word16 q = div_s(shr(num, 1), shl(den, e));
        stat_rat = add(stat_rat, shr(q, sub(8, e)));
    }
    return stat_rat;
}

void update_cntrl(Vad1& v, const Word16* level) {
    ZepVAD1State_GSMAMR& st = v.st;
    if (st.complex_warning != 0 && st.stat_count < 5) st.stat_count = 5;
    if ((st.pitch & 0x6000) == 0x6000 || (v.tone & 0x7c00) == 0x7c00) {  // NOLINT(bugprone-branch-clone): the branches of the reference)
        st.stat_count = 20;
    } else if ((st.vadreg & 0x7f80) == 0) {
        st.stat_count = 20;
    } else if (stationarity_ratio(st, level) > 1000) {
        st.stat_count = 20;
    } else if ((st.vadreg & 0x4000) != 0 && st.stat_count != 0) {
        st.stat_count = sub(st.stat_count, 1);
    }
    Word16 alpha = 3276;  // ALPHA4
    if (st.stat_count == 20)
        alpha = 32767;
    else if ((st.vadreg & 0x4000) == 0)
        alpha = 16383;  // ALPHA5
    for (int i = 0; i < kBands; ++i)
        st.ave_level[i] = add(st.ave_level[i], mult_r(alpha, sub(level[i], st.ave_level[i])));
}

void noise_estimate_update(Vad1& v, const Word16* level) {
    ZepVAD1State_GSMAMR& st = v.st;
    update_cntrl(v, level);
    Word16 up, down, step = 2;
    if ((st.vadreg & 0x7800) == 0 && (st.pitch & 0x7800) == 0 && st.complex_hang_count == 0) {
        up = 1638;    // ALPHA_UP1
        down = 2097;  // ALPHA_DOWN1
    } else if (st.stat_count == 0 && st.complex_hang_count == 0) {
        up = 491;     // ALPHA_UP2
        down = 1867;  // ALPHA_DOWN2
    } else {
        up = 0;
        down = 1638;  // ALPHA3
        step = 0;
    }
    for (int i = 0; i < kBands; ++i) {
        const Word16 d = sub(st.old_level[i], st.bckr_est[i]);
        if (d < 0) {
            Word16 b = add(-2, add(st.bckr_est[i], mult_r(down, d)));
            st.bckr_est[i] = b < 40 ? Word16{40} : b;
        } else {
            Word16 b = add(step, add(st.bckr_est[i], mult_r(up, d)));
            st.bckr_est[i] = b > 16000 ? Word16{16000} : b;
        }
    }
    for (int i = 0; i < kBands; ++i) st.old_level[i] = level[i];
}

// ---- complex-signal detection (complex_estimate_adapt, complex_vad)

void complex_estimate_adapt(Vad1& v, bool low_power) {
    ZepVAD1State_GSMAMR& st = v.st;
    Word16 alpha;
    if (v.best_corr_hp < st.corr_hp_fast)
        alpha = st.corr_hp_fast < kCorrAdaptHigh ? kAdaptFast : kAdaptReallyFast;
    else
        alpha = st.corr_hp_fast < kCorrAdaptHigh ? kAdaptFast : kAdaptSlow;
    Word32 t = L_deposit_h(st.corr_hp_fast);
    t = L_msu(t, alpha, st.corr_hp_fast);
    t = L_mac(t, alpha, v.best_corr_hp);
    st.corr_hp_fast = round_fx(t);
    if (st.corr_hp_fast < kCorrMin) st.corr_hp_fast = kCorrMin;
    if (low_power) st.corr_hp_fast = kCorrMin;
}

Word16 complex_vad(ZepVAD1State_GSMAMR& st, bool low_power) {
    st.complex_high = shr(st.complex_high, 1);
    st.complex_low = shr(st.complex_low, 1);
    if (!low_power) {
        if (st.corr_hp_fast > kCorrAdaptHigh) st.complex_high = static_cast<Word16>(st.complex_high | 0x4000);
        if (st.corr_hp_fast > kCorrAdaptLow) st.complex_low = static_cast<Word16>(st.complex_low | 0x4000);
    }
    st.complex_hang_timer = st.corr_hp_fast > kCorrHang ? add(st.complex_hang_timer, 1) : Word16{0};
    return ((st.complex_high & 0x7f80) == 0x7f80 || (st.complex_low & 0x7fff) == 0x7fff) ? 1 : 0;
}

// ---- decision (hangover_addition, vad_decision)

Word16 hangover_addition(ZepVAD1State_GSMAMR& st, Word16 noise_level, bool low_power) {
    const Word16 burst_len = noise_level > 100 ? 4 : 5;
    const Word16 hang_len = noise_level > 100 ? 7 : 4;
    if (low_power) {
        st.burst_count = 0;
        st.hang_count = 0;
        st.complex_hang_count = 0;
        st.complex_hang_timer = 0;
        return 0;
    }
    if (st.complex_hang_timer > 100 && st.complex_hang_count < 250) st.complex_hang_count = 250;
    if (st.complex_hang_count != 0) {
        st.burst_count = 4;
        st.complex_hang_count = sub(st.complex_hang_count, 1);
        return 1;
    }
    if ((st.vadreg & 0x3ff0) == 0 && st.corr_hp_fast > kCorrInNoise) return 1;
    if ((st.vadreg & 0x4000) != 0) {
        st.burst_count = add(st.burst_count, 1);
        if (st.burst_count >= burst_len) st.hang_count = hang_len;
        return 1;
    }
    st.burst_count = 0;
    if (st.hang_count > 0) {
        st.hang_count = sub(st.hang_count, 1);
        return 1;
    }
    return 0;
}

/// Sum over the bands of (level / noise)^2, scaled as the reference's snr_sum.
Word16 snr_sum(const ZepVAD1State_GSMAMR& st, const Word16* level) {
    Word32 acc = 0;
    for (int i = 0; i < kBands; ++i) {
        const Word16 e = norm_s(st.bckr_est[i]);
        Word16 q = div_s(shr(level[i], 1), shl(st.bckr_est[i], e));
        q = shl(q, sub(e, 5));  // UNIRSHFT - 1
        acc = L_mac(acc, q, q);
    }
    return mult(extract_h(L_shl(acc, 6)), kInvBands);
}

Word16 vad_decision(Vad1& v, const Word16* level, Word32 pow_sum) {
    ZepVAD1State_GSMAMR& st = v.st;
    const Word16 snr = snr_sum(st, level);
    Word32 noise = 0;
    for (int i = 0; i < kBands; ++i) noise = L_add(noise, st.bckr_est[i]);
    const Word16 noise_level = extract_h(L_shl(noise, 13));
    Word16 thr = add(mult(kSlope, noise_level), kThrHigh);
    if (thr < kThrLow) thr = kThrLow;
    st.vadreg = shr(st.vadreg, 1);
    if (snr > thr) st.vadreg = static_cast<Word16>(st.vadreg | 0x4000);
    const bool low_power = pow_sum < kPowLow;
    complex_estimate_adapt(v, low_power);
    st.complex_warning = complex_vad(st, low_power);
    noise_estimate_update(v, level);
    return hangover_addition(st, noise_level, low_power);
}

}  // namespace

ZepStatus zepsVAD1_GSMAMR_16s(const Zep16s* pSrc, ZepVAD1State_GSMAMR* pState, Zep16s* pVadFlag, Zep32s bestCorrHp,
                              Zep16s toneFlag) {
    if (any_null(pSrc, pState, pVadFlag)) return zepStsNullPtrErr;

    Vad1 v{*pState, toneFlag, saturate(bestCorrHp)};
    ZepVAD1State_GSMAMR& st = v.st;
    Word32 pow_sum = 0;
    for (int i = 0; i < kFrame; ++i) pow_sum = L_mac(pow_sum, pSrc[i], pSrc[i]);
    if (pow_sum < kPowPitch) {
        st.pitch = static_cast<Word16>(st.pitch & 0x3fff);
        if (pow_sum < kPowLow) st.complex_low = static_cast<Word16>(st.complex_low & 0x3fff);
    }
    Word16 level[kBands];
    filter_bank(st, pSrc + kLookahead, level);
    *pVadFlag = vad_decision(v, level, pow_sum);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

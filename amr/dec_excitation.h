/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR decoder excitation stages (3GPP TS 26.073 ph_disp.c, c_g_aver.c,
// ex_ctrl.c, bgnscd.c, sqrt_l.c, agc.c agc2, syn_filt.c). Excitation Q0,
// innovation Q13 (Q12 for MR122), gains as in dec_gain.h, LP coefficients Q12.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_gain.h"
#include "amr/dec_state.h"
#include "amr/mac_bound.h"
#include "common/syn_filt10.h"

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline void ph_disp_reset(PhDispState& st) {
    for (Word16& v : st.gainMem) v = 0;
    st.prevState = 0;
    st.prevCbGain = 0;
    st.lockFull = 0;
    st.onset = 0;
}

/// The total excitation of ph_disp, round(L_shl(L_mac(L_mult(x, pitch_fac),
/// inno, cbGain), shift)), with the basic operators' saturations as clamps:
/// L_mult saturates only at -32768 x -32768, and the rounded shift is
/// (s << shift) rounded and clamped to 16 bits.
inline void excitation_mix_chain(Word16* x, const Word16* inno, Word16 pitch_fac, Word16 cbGain, int shift, int n) {
    for (int i = 0; i < n; i++) {
        const Word32 p = saturate32(2 * std::int64_t{x[i]} * pitch_fac);
        const Word32 s = saturate32(std::int64_t{p} + 2 * std::int64_t{inno[i]} * cbGain);
        const std::int64_t o = ((std::int64_t{s} << shift) + 0x8000) >> 16;
        x[i] = static_cast<Word16>(o > MAX_16 ? MAX_16 : (o < MIN_16 ? MIN_16 : o));
    }
}

/// With neither gain -32768 no product saturates and m = x pitch_fac +
/// inno cbGain fits 32 bits (|m| < 2^31); a saturating sum or shift then
/// saturates the output anyway, so the sample is (m + 2^(14-shift)) >>
/// (15 - shift) clamped to 16 bits.
inline void excitation_mix_plain_scalar(Word16* x, const Word16* inno, Word16 pitch_fac, Word16 cbGain, int shift, int n) {
    for (int i = 0; i < n; i++) {
        const std::int32_t m = x[i] * pitch_fac + inno[i] * cbGain;
        const std::int32_t o = (m + (1 << (14 - shift))) >> (15 - shift);
        x[i] = static_cast<Word16>(o > MAX_16 ? MAX_16 : (o < MIN_16 ? MIN_16 : o));
    }
}

#if defined(__SSSE3__)
/// excitation_mix_plain_scalar eight samples at a time: (x, inno) pairs by
/// (pitch_fac, cbGain) in one pmaddwd, the clamp as packssdw.
inline void excitation_mix_plain_lanes(Word16* x, const Word16* inno, Word16 pitch_fac, Word16 cbGain, int shift, int n) {
    const __m128i g = _mm_set1_epi32(static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(pitch_fac)) |
                                                      (static_cast<std::uint32_t>(static_cast<std::uint16_t>(cbGain)) << 16)));
    const __m128i half = _mm_set1_epi32(1 << (14 - shift)), sh = _mm_cvtsi32_si128(15 - shift);
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(inno + i));
        const __m128i lo = _mm_sra_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(a, b), g), half), sh);
        const __m128i hi = _mm_sra_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(a, b), g), half), sh);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(x + i), _mm_packs_epi32(lo, hi));
    }
    excitation_mix_plain_scalar(x + i, inno + i, pitch_fac, cbGain, shift, n - i);
}
#endif

/// The total excitation (shift 1 or 2): plain unless a gain is -32768.
inline void excitation_mix(Word16* x, const Word16* inno, Word16 pitch_fac, Word16 cbGain, int shift, int n) {
    if (pitch_fac == MIN_16 || cbGain == MIN_16) {
        excitation_mix_chain(x, inno, pitch_fac, cbGain, shift, n);
        return;
    }
#if defined(__SSSE3__)
    excitation_mix_plain_lanes(x, inno, pitch_fac, cbGain, shift, n);
#else
    excitation_mix_plain_scalar(x, inno, pitch_fac, cbGain, shift, n);
#endif
}

/// The pitch-sharpened excitation of Decoder_amr (dec_amr.c, pit_sharp >
/// 1.0): excp = round(L_mult(mult(exc, pit_sharp), gain_pit) >> down), down
/// 1 for MR122, 0 otherwise, with the reference's operators (the baseline).
inline void sharpened_excitation_chain(const Word16* exc, Word16* excp, Word16 pit_sharp, Word16 gain_pit, int down,
                                       int n) {
    for (int i = 0; i < n; i++) excp[i] = round_fx(L_shr(L_mult(mult(exc[i], pit_sharp), gain_pit), static_cast<Word16>(down)));
}

/// With pit_sharp not -32768, m = (exc pit_sharp) >> 15 lies in -32767..32767
/// (mult cannot saturate), so |2 m gain_pit| <= 2^31 - 2^16 for any gain_pit:
/// neither L_mult nor the rounding can saturate, plain integers throughout.
inline void sharpened_excitation_plain(const Word16* exc, Word16* excp, Word16 pit_sharp, Word16 gain_pit, int down,
                                       int n) {
    for (int i = 0; i < n; i++) {
        const std::int32_t m = (exc[i] * pit_sharp) >> 15;
        excp[i] = static_cast<Word16>(((2 * m * gain_pit >> down) + 0x8000) >> 16);
    }
}

/// The pitch-sharpened excitation: plain unless pit_sharp is -32768.
inline void sharpened_excitation(const Word16* exc, Word16* excp, Word16 pit_sharp, Word16 gain_pit, int down, int n) {
    if (pit_sharp == MIN_16) sharpened_excitation_chain(exc, excp, pit_sharp, gain_pit, down, n);
    else sharpened_excitation_plain(exc, excp, pit_sharp, gain_pit, down, n);
}

/// One pulse v at ppos spread over the subframe by the circular impulse
/// response imp, with the reference's operators (the baseline).
inline void disperse_chain(Word16* inno, Word16 v, int ppos, const std::int16_t* imp) {
    int j = 0;
    for (int i = ppos; i < kLSubfr; i++) inno[i] = add(inno[i], mult(v, imp[j++]));
    for (int i = 0; i < ppos; i++) inno[i] = add(inno[i], mult(v, imp[j++]));
}

/// disperse_chain of the nze pulses v = sav[pos[n]] when sum |v| <= 32767:
/// |mult(v, c)| <= |v|, so no partial sum can leave 16 bits and mult is
/// (v c) >> 15 (v is not -32768); plain adds, one pulse at a time.
inline void disperse_plain_scalar(Word16* inno, const Word16* sav, const Word16* pos, int nze, const std::int16_t* imp) {
    for (int n = 0; n < nze; n++) {
        const int ppos = pos[n];
        const Word16 v = sav[ppos];
        for (int i = ppos; i < kLSubfr; i++) inno[i] = static_cast<Word16>(inno[i] + ((v * imp[i - ppos]) >> 15));
        for (int i = 0; i < ppos; i++) inno[i] = static_cast<Word16>(inno[i] + ((v * imp[kLSubfr - ppos + i]) >> 15));
    }
}

/// disperse_plain_scalar with SSSE3: the impulse response twice in a row, so
/// that the pulse at ppos meets imp2[40 - ppos + i] at sample i, eight
/// samples at a time; (v c) >> 15 from the high and low product halves
/// (pmulhw, pmullw), exact in 16 bits as v is not -32768, the sum as paddw.
inline void disperse_plain(Word16* inno, const Word16* sav, const Word16* pos, int nze, const std::int16_t* imp) {
#if defined(__SSSE3__)
    static_assert(kLSubfr % 8 == 0);
    std::int16_t imp2[2 * kLSubfr];
    for (int i = 0; i < kLSubfr; i++) imp2[i] = imp2[kLSubfr + i] = imp[i];
    for (int n = 0; n < nze; n++) {
        const std::int16_t* c = imp2 + kLSubfr - pos[n];
        const __m128i v = _mm_set1_epi16(sav[pos[n]]);
        for (int i = 0; i < kLSubfr; i += 8) {
            const __m128i k = _mm_loadu_si128(reinterpret_cast<const __m128i*>(c + i));
            const __m128i m = _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(k, v), 1), _mm_srli_epi16(_mm_mullo_epi16(k, v), 15));
            __m128i* at = reinterpret_cast<__m128i*>(inno + i);
            _mm_storeu_si128(at, _mm_add_epi16(_mm_loadu_si128(at), m));
        }
    }
#else
    disperse_plain_scalar(inno, sav, pos, nze, imp);
#endif
}

/// ph_disp: adaptive anti-sparseness filtering of the innovation (not in
/// MR74, MR102, MR122) and the total excitation x = pitch_fac x + cbGain inno,
/// shifted by tmp_shift and rounded.
inline void ph_disp(PhDispState& st, Word16 mode, Word16* x, Word16 cbGain, Word16 ltpGain, Word16* inno,
                    Word16 pitch_fac, Word16 tmp_shift) {
    namespace t = zeps::amr_dec_tab;
    constexpr Word16 kThr1 = 9830, kThr2 = 14746, kOnFactPlus1 = 16384, kOnLength = 2;
    for (int i = 4; i > 0; i--) st.gainMem[i] = st.gainMem[i - 1];
    st.gainMem[0] = ltpGain;
    Word16 impNr = ltpGain < kThr2 ? (ltpGain > kThr1 ? 1 : 0) : 2;
    const Word16 tmp1 = round_fx(L_shl(L_mult(st.prevCbGain, kOnFactPlus1), 2));
    if (cbGain > tmp1) st.onset = kOnLength;
    else if (st.onset > 0) st.onset = sub(st.onset, 1);
    if (st.onset == 0) {
        int i1 = 0;
        for (Word16 g : st.gainMem)
            if (g < kThr1) i1++;
        if (i1 > 2) impNr = 0;
    }
    if (impNr > add(st.prevState, 1) && st.onset == 0) impNr = sub(impNr, 1);
    if (impNr < 2 && st.onset > 0) impNr = add(impNr, 1);
    if (cbGain < 10) impNr = 2;
    if (st.lockFull == 1) impNr = 0;
    st.prevState = impNr;
    st.prevCbGain = cbGain;
    if (mode != MR122 && mode != MR102 && mode != MR74 && impNr < 2) {
        Word16 ps_poss[kLSubfr], inno_sav[kLSubfr];
        int nze = 0;
        for (int i = 0; i < kLSubfr; i++) {
            if (inno[i] != 0) ps_poss[nze++] = static_cast<Word16>(i);
            inno_sav[i] = inno[i];
            inno[i] = 0;
        }
        const std::int16_t* ph_imp = mode == MR795 ? (impNr == 0 ? t::ph_imp_low_MR795 : t::ph_imp_mid_MR795)
                                                   : (impNr == 0 ? t::ph_imp_low : t::ph_imp_mid);
        std::int32_t amp = 0;
        for (int n = 0; n < nze; n++) amp += mag(inno_sav[ps_poss[n]]);
        if (amp <= MAX_16) {
            disperse_plain(inno, inno_sav, ps_poss, nze, ph_imp);
        } else {
            for (int n = 0; n < nze; n++) disperse_chain(inno, inno_sav[ps_poss[n]], ps_poss[n], ph_imp);
        }
    }
    excitation_mix(x, inno, pitch_fac, cbGain, tmp_shift, kLSubfr);
}

/// One term of Cb_gain_average's LSF deviation, |aver - lsp| / aver in Q13,
/// with the reference's operators (the baseline of lsf_deviation).
inline Word16 lsf_deviation_chain(Word16 lsp, Word16 aver) {
    Word16 tmp1 = abs_s(sub(aver, lsp));
    const Word16 shift1 = sub(norm_s(tmp1), 1);
    tmp1 = shl(tmp1, shift1);
    const Word16 shift2 = norm_s(aver);
    const Word16 tmp2 = shl(aver, shift2);
    const Word16 q = div_s(tmp1, tmp2);
    const Word16 shift = sub(add(2, shift1), shift2);
    return shift >= 0 ? shr(q, shift) : shl(q, negate(shift));
}

/// lsf_deviation_chain as one division: the normalised numerator d 2^s1 (d >> 1
/// when d >= 16384, s1 = -1) is below the normalised aver 2^s2, so div_s is
/// floor(num 2^15 / den), and a right shift by 2 + s1 - s2 >= 0 of it is
/// floor(d 2^13 / aver) (floor((d >> 1) 2^14 / aver) when s1 = -1). A left
/// shift (2 + s1 < s2) keeps the reference's operators.
inline Word16 lsf_deviation(Word16 lsp, Word16 aver) {
    // abs_s(sub(aver, lsp)): either saturation ends at 32767
    const std::int32_t delta = std::int32_t{aver} - lsp;
    const std::int32_t mag_delta = delta < 0 ? -delta : delta;
    const Word16 d = static_cast<Word16>(mag_delta > MAX_16 ? MAX_16 : mag_delta);
    const int s1 = norm_s(d) - 1;
    if (aver <= 0 || 2 + s1 < norm_s(aver)) return lsf_deviation_chain(lsp, aver);
    const std::int32_t num = s1 < 0 ? (std::int32_t{d} >> 1) << 14 : std::int32_t{d} << 13;
    return static_cast<Word16>(num / aver);
}

/// Cb_gain_average: smoothed code gain in stationary background noise
/// (MR475 .. MR67 and MR102; the caller keeps gain_code for the others).
inline Word16 cb_gain_average(CbGainAverageState& st, Word16 mode, Word16 gain_code, const Word16* lsp,
                              const Word16* lspAver, Word16 bfi, Word16 prev_bf, Word16 pdfi, Word16 prev_pdf,
                              Word16 inBackgroundNoise, Word16 voicedHangover) {
    constexpr int kHist = 7;
    Word16 cbGainMix = gain_code;
    for (int i = 0; i < kHist - 1; i++) st.cbGainHistory[i] = st.cbGainHistory[i + 1];
    st.cbGainHistory[kHist - 1] = gain_code;
    // add() of the terms as a clamped sum
    std::int32_t sum = 0;
    for (int i = 0; i < kM; i++) {
        sum += lsf_deviation(lsp[i], lspAver[i]);
        sum = sum > MAX_16 ? MAX_16 : (sum < MIN_16 ? MIN_16 : sum);
    }
    const Word16 diff = static_cast<Word16>(sum);
    if (diff > 5325) st.hangVar = add(st.hangVar, 1);
    else st.hangVar = 0;
    if (st.hangVar > 10) st.hangCount = 0;
    if (mode <= MR67 || mode == MR102) {
        const bool low = mode == MR475 || mode == MR515 || mode == MR59;
        const bool errors = (pdfi != 0 && prev_pdf != 0) || bfi != 0 || prev_bf != 0;
        const Word16 offset = errors && voicedHangover > 1 && inBackgroundNoise != 0 && low ? 4506 : 3277;
        const Word16 tmp_diff = sub(diff, offset);
        const Word16 tmp1 = tmp_diff > 0 ? tmp_diff : Word16{0};
        Word16 bgMix = tmp1 > 2048 ? Word16{8192} : shl(tmp1, 2);
        if (st.hangCount < 40 || diff > 5325) bgMix = 8192;
        Word32 L_sum = L_mult(6554, st.cbGainHistory[2]);
        for (int i = 3; i < kHist; i++) L_sum = L_mac(L_sum, 6554, st.cbGainHistory[i]);
        Word16 cbGainMean = round_fx(L_sum);
        if ((bfi != 0 || prev_bf != 0) && inBackgroundNoise != 0 && low) {
            L_sum = L_mult(4681, st.cbGainHistory[0]);
            for (int i = 1; i < kHist; i++) L_sum = L_mac(L_sum, 4681, st.cbGainHistory[i]);
            cbGainMean = round_fx(L_sum);
        }
        L_sum = L_mult(bgMix, cbGainMix);
        L_sum = L_mac(L_sum, 8192, cbGainMean);
        L_sum = L_msu(L_sum, bgMix, cbGainMean);
        cbGainMix = round_fx(L_shl(L_sum, 2));
    }
    st.hangCount = add(st.hangCount, 1);
    return cbGainMix;
}

/// sqrt_l_exp: sqrt of L_x as a normalised value and the (even) right
/// shift exp to apply, halved, by the caller.
inline Word32 sqrt_l_exp(Word32 L_x, Word16& exp) {
    using zeps::amr_dec_tab::sqrt_l_table;
    if (L_x <= 0) {
        exp = 0;
        return 0;
    }
    const Word16 e = static_cast<Word16>(norm_l(L_x) & 0xFFFE);
    L_x = L_shl(L_x, e);
    exp = e;
    L_x = L_shr(L_x, 9);
    Word16 i = extract_h(L_x);
    L_x = L_shr(L_x, 1);
    const Word16 a = static_cast<Word16>(extract_l(L_x) & 0x7fff);
    i = sub(i, 16);
    Word32 L_y = L_deposit_h(sqrt_l_table[i]);
    const Word16 tmp = sub(sqrt_l_table[i], sqrt_l_table[i + 1]);
    return L_msu(L_y, tmp, a);
}

/// Ex_ctrl: limits energy rises of the excitation in concealed background noise.
inline void ex_ctrl(Word16* excitation, Word16 excEnergy, const Word16* exEnergyHist, Word16 voicedHangover,
                    Word16 prevBFI, Word16 carefulFlag) {
    Word16 avgEnergy = gmed_n(exEnergyHist, 9);
    Word16 prevEnergy = shr(add(exEnergyHist[7], exEnergyHist[8]), 1);
    if (exEnergyHist[8] < prevEnergy) prevEnergy = exEnergyHist[8];
    if (excEnergy < avgEnergy && excEnergy > 5) {
        Word16 testEnergy = shl(prevEnergy, 2);
        if (voicedHangover < 7 || prevBFI != 0) testEnergy = sub(testEnergy, prevEnergy);
        if (avgEnergy > testEnergy) avgEnergy = testEnergy;
        const Word16 exp = norm_s(excEnergy);
        excEnergy = shl(excEnergy, exp);
        excEnergy = div_s(16383, excEnergy);
        Word32 t0 = L_mult(avgEnergy, excEnergy);
        t0 = L_shr(t0, sub(20, exp));
        if (t0 > 32767) t0 = 32767;
        Word16 scaleFactor = extract_l(t0);
        if (carefulFlag != 0 && scaleFactor > 3072) scaleFactor = 3072;
        for (int i = 0; i < kLSubfr; i++) excitation[i] = extract_l(L_shr(L_mult(scaleFactor, excitation[i]), 11));
    }
}

inline void bgn_scd_reset(BgnScdState& st) {
    for (Word16& v : st.frameEnergyHist) v = 0;
    st.bgHangover = 0;
}

/// Bgn_scd: background-noise source characteristic detector on the
/// synthesised frame; returns inBackgroundNoise and updates voicedHangover.
inline Word16 bgn_scd(BgnScdState& st, const Word16* ltpGainHist, const Word16* speech, Word16& voicedHangover) {
    constexpr int kHist = 60;
    constexpr Word16 kFrameEnergyLimit = 17578, kLowerNoiseLimit = 20, kUpperNoiseLimit = 1953;
    const Word16 currEnergy = extract_h(shl_sat32(energy_sat(speech, kLFrame), 2));
    Word16 frameEnergyMin = 32767;
    for (Word16 v : st.frameEnergyHist)
        if (v < frameEnergyMin) frameEnergyMin = v;
    const Word16 noiseFloor = shl(frameEnergyMin, 4);
    Word16 maxEnergy = st.frameEnergyHist[0];
    for (int i = 1; i < kHist - 4; i++)
        if (maxEnergy < st.frameEnergyHist[i]) maxEnergy = st.frameEnergyHist[i];
    Word16 maxEnergyLastPart = st.frameEnergyHist[2 * kHist / 3];
    for (int i = 2 * kHist / 3 + 1; i < kHist; i++)
        if (maxEnergyLastPart < st.frameEnergyHist[i]) maxEnergyLastPart = st.frameEnergyHist[i];
    if (maxEnergy > kLowerNoiseLimit && currEnergy < kFrameEnergyLimit && currEnergy > kLowerNoiseLimit &&
        (currEnergy < noiseFloor || maxEnergyLastPart < kUpperNoiseLimit)) {
        st.bgHangover = add(st.bgHangover, 1) > 30 ? Word16{30} : add(st.bgHangover, 1);
    } else {
        st.bgHangover = 0;
    }
    const Word16 inbgNoise = st.bgHangover > 1 ? 1 : 0;
    for (int i = 0; i < kHist - 1; i++) st.frameEnergyHist[i] = st.frameEnergyHist[i + 1];
    st.frameEnergyHist[kHist - 1] = currEnergy;
    Word16 ltpLimit = 13926;
    if (st.bgHangover > 8) ltpLimit = 15565;
    if (st.bgHangover > 15) ltpLimit = 16383;
    bool prevVoiced = gmed_n(&ltpGainHist[4], 5) > ltpLimit;
    if (st.bgHangover > 20) prevVoiced = gmed_n(ltpGainHist, 9) > ltpLimit;
    if (prevVoiced) voicedHangover = 0;
    else voicedHangover = add(voicedHangover, 1) > 10 ? Word16{10} : add(voicedHangover, 1);
    return inbgNoise;
}

/// energy_new of agc.c: sum of squares >> 4, or of the samples >> 2 on saturation.
inline Word32 agc_energy(const Word16* in, int l_trm) {
    const Word32 s = energy_sat(in, l_trm);
    return s == MAX_32 ? energy_sat(in, l_trm, 2) : L_shr(s, 4);
}

/// The gain sqrt(energy(in) / energy(out)) of agc and agc2, Q12 (0 when the input is silent);
/// returns false when the output has zero energy.
inline bool agc_gain(const Word16* sig_in, const Word16* sig_out, int l_trm, Word16& g0) {
    Word32 s = agc_energy(sig_out, l_trm);
    if (s == 0) return false;
    Word16 exp = sub(norm_l(s), 1);
    const Word16 gain_out = round_fx(L_shl(s, exp));
    s = agc_energy(sig_in, l_trm);
    if (s == 0) {
        g0 = 0;
        return true;
    }
    const Word16 i = norm_l(s);
    const Word16 gain_in = round_fx(L_shl(s, i));
    exp = sub(exp, i);
    s = L_deposit_l(div_s(gain_out, gain_in));
    s = L_shl(s, 7);
    s = L_shr(s, exp);
    s = Inv_sqrt(s);
    g0 = round_fx(L_shl(s, 9));
    return true;
}

/// x[i] = scale_q12(x[i], g[i]) one sample at a time (the scalar twin).
inline void scale_q12_block_scalar(Word16* x, const Word16* g, int n) {
    for (int i = 0; i < n; i++) x[i] = scale_q12(x[i], g[i]);
}

/// x[i] = scale_q12(x[i], g[i]): with SSSE3 eight samples at a time, the
/// 32-bit product from pmullw and pmulhw, >> 12 as psrad and the clamp to
/// 16 bits as packssdw; the last n % 8 samples scalar.
inline void scale_q12_block(Word16* x, const Word16* g, int n) {
    int i = 0;
#if defined(__SSSE3__)
    for (; i + 8 <= n; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i));
        const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i*>(g + i));
        const __m128i lo = _mm_mullo_epi16(v, w), hi = _mm_mulhi_epi16(v, w);
        const __m128i p0 = _mm_srai_epi32(_mm_unpacklo_epi16(lo, hi), 12);
        const __m128i p1 = _mm_srai_epi32(_mm_unpackhi_epi16(lo, hi), 12);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(x + i), _mm_packs_epi32(p0, p1));
    }
#endif
    scale_q12_block_scalar(x + i, g + i, n - i);
}

/// agc2: scales sig_out to the energy of sig_in without smoothing.
inline void agc2(const Word16* sig_in, Word16* sig_out, int l_trm) {
    Word16 g0;
    if (!agc_gain(sig_in, sig_out, l_trm, g0)) return;
    Word16 gains[40];
    for (int at = 0; at < l_trm; at += 40) {
        const int n = l_trm - at < 40 ? l_trm - at : 40;
        for (int k = 0; k < n; k++) gains[k] = g0;
        scale_q12_block(sig_out + at, gains, n);
    }
}

/// The reference's chain of one Syn_filt output before scaling (yy[-10..-1]
/// read): the saturating baseline the shared kernel is tested against.
inline Word32 syn_filt_chain(const Word16* a, Word16 x, const Word16* yy, Flag& ovf) {
    Word32 s = L_mult(x, a[0], ovf);
    for (int j = 1; j <= kM; j++) s = L_msu(s, a[j], yy[-j], ovf);
    return s;
}

/// Syn_filt: 1/A(z) over lg (kM..160) samples with memory mem (updated when
/// update != 0); returns true when a basic operation saturated (the
/// reference's Overflow). The arithmetic is G.729's Syn_filt to the bit, so
/// the order-10 kernel shared with it runs here: plain sums while 2 sum|a|
/// max|value| stays within 31 bits (with SSSE3 in blocks of ten samples, the
/// seven oldest products of a sample pair in one pmaddwd), the saturating
/// chain otherwise. y may be x, and mem may lie inside y (read before
/// anything is written).
inline bool syn_filt(const Word16* a, const Word16* x, Word16* y, int lg, Word16* mem, bool update) {
    const bool ovf = syn10::syn_filt(a, x, y, lg, mem);
    if (update)
        for (int i = 0; i < kM; i++) mem[i] = y[lg - kM + i];
    return ovf;
}

}  // namespace amr_dec
ZEPS_END_VARIANT

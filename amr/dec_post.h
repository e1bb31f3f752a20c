/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR post-filter and post-processing (3GPP TS 26.073 pstfilt.c,
// weight_a.c, residu.c, preemph.c, agc.c, post_pro.c). Speech Q0, LP
// coefficients Q12.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_excitation.h"
#include "amr/dec_state.h"
#include "common/post_highpass.h"

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline void post_filter_reset(PostFilterState& st) {
    for (Word16& v : st.mem_syn_pst) v = 0;
    for (Word16& v : st.res2) v = 0;
    for (Word16& v : st.synth_buf) v = 0;
    st.past_gain = 4096;
    st.mem_pre = 0;
}

/// Weight_Ai with the reference's operators (the baseline of weight_ai).
inline void weight_ai_chain(const Word16* a, const std::int16_t* fac, Word16* a_exp) {
    a_exp[0] = a[0];
    for (int i = 1; i <= kM; i++) a_exp[i] = round_fx(L_mult(a[i], fac[i - 1]));
}

/// Weight_Ai: a_exp[i] = round(L_mult(a[i], fac[i-1])). The post-filter's
/// factors (powers of gamma) are positive, so L_mult cannot saturate and
/// 2 a f + 2^15 stays below 2^31: the value is (a f + 2^14) >> 15, which is
/// pmulhrsw; with SSSE3 a[1..8] and a[3..10] in two of them (the overlap
/// written twice with the same values).
inline void weight_ai(const Word16* a, const std::int16_t* fac, Word16* a_exp) {
#if defined(__SSSE3__)
    a_exp[0] = a[0];
    for (int at : {1, 3}) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + at));
        const __m128i f = _mm_loadu_si128(reinterpret_cast<const __m128i*>(fac + at - 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(a_exp + at), _mm_mulhrs_epi16(x, f));
    }
#else
    weight_ai_chain(a, fac, a_exp);
#endif
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

/// round(L_shl(2 s, 3)) of a plain sum s (|2 s| <= MAX_32): the saturating
/// shift and rounding reduce to (s + 2^11) >> 12 clamped to 16 bits.
inline Word16 residu_round(std::int32_t s) {
    const std::int32_t v = (s + 0x800) >> 12;
    return static_cast<Word16>(v > MAX_16 ? MAX_16 : (v < MIN_16 ? MIN_16 : v));
}

/// Residu on the plain sum, one output at a time (the scalar twin of the lane form).
inline void residu_plain_scalar(const Word16* a, const Word16* x, Word16* y, int lg) {
    for (int i = 0; i < lg; i++) {
        std::int32_t s = 0;
        for (int j = 0; j <= kM; j++) s += std::int32_t{a[j]} * x[i - j];
        y[i] = residu_round(s);
    }
}

#if defined(__SSSE3__)
/// Residu on the plain sum, eight outputs at a time: tap pair p < 5
/// multiplies (x[n-2p], x[n-2p-1]) by (a[2p], a[2p+1]) in one pmaddwd, the
/// last (x[n-10], x[n-9]) by (a[10], 0) so that nothing before x[-10] is
/// read; the rounding as psrad and the clamp as packssdw. Exact while the plain bound
/// holds (no pair sum or lane sum can wrap); the last lg % 8 outputs scalar.
inline void residu_plain_lanes(const Word16* a, const Word16* x, Word16* y, int lg) {
    __m128i ap[6];
    for (int p = 0; p < 6; p++) {
        const Word16 hi = p < 5 ? a[2 * p + 1] : Word16{0};
        ap[p] = _mm_set1_epi32(static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(a[2 * p])) |
                                                (static_cast<std::uint32_t>(static_cast<std::uint16_t>(hi)) << 16)));
    }
    const __m128i half = _mm_set1_epi32(0x800);
    int i = 0;
    for (; i + 8 <= lg; i += 8) {
        __m128i lo = _mm_setzero_si128(), hi = _mm_setzero_si128();
        for (int p = 0; p < 6; p++) {
            const __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i - 2 * p));
            const __m128i x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i - (p < 5 ? 2 * p + 1 : 9)));
            lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(x0, x1), ap[p]));
            hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(x0, x1), ap[p]));
        }
        lo = _mm_srai_epi32(_mm_add_epi32(lo, half), 12);
        hi = _mm_srai_epi32(_mm_add_epi32(hi, half), 12);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i), _mm_packs_epi32(lo, hi));
    }
    residu_plain_scalar(a, x + i, y + i, lg - i);
}

/// residu_plain_lanes over one subframe (40 outputs) with the sample pairs
/// interleaved once: pairs[9 + k] = (x[k], x[k-1]) for k = -9 .. 39 (x[-10]
/// the oldest read), so that tap pair p < 5 of output n is pairs[9 + n - 2p]
/// against (a[2p], a[2p+1]) and the last, pairs[n] = (x[n-9], x[n-10]),
/// against (0, a[10]): the same products and sums as residu_plain_lanes.
inline void residu_plain_pairs40(const Word16* a, const Word16* x, Word16* y) {
    alignas(16) std::int32_t pairs[52] = {};
    for (int c = 0; c < 6; c++) {  // k = -9 + 8c .. -2 + 8c, reading x[-10 + 8c .. -2 + 8c]
        const __m128i cur = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x - 9 + 8 * c));
        const __m128i prev = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x - 10 + 8 * c));
        _mm_store_si128(reinterpret_cast<__m128i*>(pairs + 8 * c), _mm_unpacklo_epi16(cur, prev));
        _mm_store_si128(reinterpret_cast<__m128i*>(pairs + 8 * c + 4), _mm_unpackhi_epi16(cur, prev));
    }
    pairs[48] = static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(x[39])) |
                                          (static_cast<std::uint32_t>(static_cast<std::uint16_t>(x[38])) << 16));
    __m128i ap[6];
    for (int p = 0; p < 6; p++) {
        const Word16 lo = p < 5 ? a[2 * p] : Word16{0}, hi = p < 5 ? a[2 * p + 1] : a[10];
        ap[p] = _mm_set1_epi32(static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(lo)) |
                                                (static_cast<std::uint32_t>(static_cast<std::uint16_t>(hi)) << 16)));
    }
    const __m128i half = _mm_set1_epi32(0x800);
    for (int n = 0; n < 40; n += 8) {
        __m128i lo = half, hi = half;
        for (int p = 0; p < 6; p++) {
            const std::int32_t* at = pairs + (p < 5 ? 9 + n - 2 * p : n);
            lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)), ap[p]));
            hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at + 4)), ap[p]));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + n), _mm_packs_epi32(_mm_srai_epi32(lo, 12), _mm_srai_epi32(hi, 12)));
    }
}
#endif

/// Residu: plain sums when sum|a| max|x| bounds every chain (mac_bound.h),
/// the reference's chain otherwise. y must not overlap x.
inline void residu(const Word16* a, const Word16* x, Word16* y, int lg) {
    if (!chain_exact(mag_sum(a, kMp1), mag_max(x - kM, lg + kM))) {
        residu_chain(a, x, y, lg);
        return;
    }
#if defined(__SSSE3__)
    if (lg == kLSubfr) residu_plain_pairs40(a, x, y);
    else residu_plain_lanes(a, x, y, lg);
#else
    residu_plain_scalar(a, x, y, lg);
#endif
}

/// preemphasis with the basic operators, in place from the end (the baseline).
inline void preemphasis_chain(Word16& mem_pre, Word16* signal, Word16 g, int L) {
    const Word16 last = signal[L - 1];
    for (int i = L - 1; i > 0; i--) signal[i] = sub(signal[i], mult(g, signal[i - 1]));
    signal[0] = sub(signal[0], mult(g, mem_pre));
    mem_pre = last;
}

/// preemphasis: in place, x[n] - g x[n-1]. With SSSE3 and g > -32768 in
/// blocks of eight from the end (a block reads the sample before it, not
/// yet rewritten): mult(g, x) = (g x) >> 15 from the high and low product
/// halves, exact in 16 bits unless g = x = -32768, the difference as psubsw.
inline void preemphasis(Word16& mem_pre, Word16* signal, Word16 g, int L) {
    int i = L;  // samples i .. L-1 done
#if defined(__SSSE3__)
    if (g != MIN_16) {
        const Word16 last = signal[L - 1];
        const __m128i gv = _mm_set1_epi16(g);
        for (; i >= 9; i -= 8) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(signal + i - 8));
            const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(signal + i - 9));
            const __m128i m = _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(p, gv), 1), _mm_srli_epi16(_mm_mullo_epi16(p, gv), 15));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(signal + i - 8), _mm_subs_epi16(x, m));
        }
        preemphasis_chain(mem_pre, signal, g, i);
        mem_pre = last;
        return;
    }
#endif
    preemphasis_chain(mem_pre, signal, g, i);
}

/// agc: smoothed gain control (factor agc_fac) of sig_out to the energy of sig_in.
/// For 0 <= agc_fac the gain recursion add(mult(gain, agc_fac), g0) cannot
/// saturate (|mult(gain, agc_fac)| <= agc_fac, |g0| <= 32767 - agc_fac), so
/// it runs on plain integers: the gains first (the serial part), then the
/// samples scaled independently.
inline void agc(Word16& past_gain, const Word16* sig_in, Word16* sig_out, Word16 agc_fac, int l_trm) {
    Word16 g0;
    if (!agc_gain(sig_in, sig_out, l_trm, g0)) {
        past_gain = 0;
        return;
    }
    g0 = mult(g0, sub(32767, agc_fac));
    Word16 gain = past_gain;
    if (agc_fac < 0) {
        for (int i = 0; i < l_trm; i++) {
            gain = add(mult(gain, agc_fac), g0);
            sig_out[i] = scale_q12(sig_out[i], gain);
        }
        past_gain = gain;
        return;
    }
    constexpr int kChunk = 40;
    for (int at = 0; at < l_trm; at += kChunk) {
        const int n = l_trm - at < kChunk ? l_trm - at : kChunk;
        Word16 gains[kChunk];
        std::int32_t g = gain;
        int i = 0;
        // The map g -> mult(g, agc_fac) + g0 is nondecreasing, so its iterates
        // move monotonically to a fixed point; once one repeats, all the rest
        // do. Four steps between checks (a repeat inside them is harmless).
        auto step = [&](std::int32_t v) { return ((v * agc_fac) >> 15) + g0; };
        for (; i + 4 <= n; i += 4) {
            const std::int32_t g1 = step(g), g2 = step(g1), g3 = step(g2), g4 = step(g3);
            gains[i] = static_cast<Word16>(g1);
            gains[i + 1] = static_cast<Word16>(g2);
            gains[i + 2] = static_cast<Word16>(g3);
            gains[i + 3] = static_cast<Word16>(g4);
            const bool settled = g4 == g3;
            g = g4;
            if (settled) {
                i += 4;
                break;
            }
        }
        for (; i < n && g != step(g); i++) gains[i] = static_cast<Word16>(g = step(g));
        for (; i < n; i++) gains[i] = static_cast<Word16>(g);
        gain = static_cast<Word16>(g);
        scale_q12_block(sig_out + at, gains, n);
    }
    past_gain = gain;
}

/// The tilt correlation L_mac(... L_mult(h0, h1) ..., h20, h21) of the
/// post-filter's impulse response, given energy2 = 2 sum h^2 (unclamped):
/// 2 sum |h[i] h[i+1]| <= sum (h[i]^2 + h[i+1]^2) <= energy2, so while
/// energy2 <= MAX_32 no term or partial sum can saturate and the chain is
/// the plain sum; otherwise the reference's chain.
inline Word32 lag1_correlation(const Word16* h, int n, std::int64_t energy2) {
    if (energy2 <= MAX_32) {
        std::int32_t s = 0;
        for (int i = 0; i < n - 1; i++) s += h[i] * h[i + 1];
        return 2 * s;
    }
    Word32 L_tmp = L_mult(h[0], h[1]);
    for (int i = 1; i < n - 1; i++) L_tmp = L_mac(L_tmp, h[i], h[i + 1]);
    return L_tmp;
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
        const std::int64_t energy2 = 2 * sum_squares(h, kLH);
        const Word16 temp1 = extract_h(energy2 > MAX_32 ? MAX_32 : static_cast<Word32>(energy2));
        Word16 temp2 = extract_h(lag1_correlation(h, kLH, energy2));
        if (temp2 <= 0) temp2 = 0;
        else temp2 = div_s(mult(temp2, kMu), temp1);
        preemphasis(st.mem_pre, st.res2, temp2, kLSubfr);
        syn_filt(Ap4, st.res2, &syn[i_subfr], kLSubfr, st.mem_syn_pst, true);
        agc(st.past_gain, &syn_work[i_subfr], &syn[i_subfr], kAgcFac, kLSubfr);
    }
    for (int i = 0; i < kM; i++) st.synth_buf[i] = syn_work[kLFrame - kM + i];
}

inline void post_process_reset(PostProcessState& st) { st = PostProcessState{0, 0, 0, 0, 0, 0}; }

/// Post_Process with the reference's operators (the baseline of post_process).
inline void post_process_chain(PostProcessState& st, Word16* signal, int lg) {
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

/// Post_Process's taps (Q13): G.729's post-processing filter.
inline constexpr post_hp::Taps kPostProcessTaps = post_hp::kDecoderTaps;
static_assert(post_hp::exact_for(kPostProcessTaps));

/// Post_Process: second-order high-pass at 60 Hz with the output doubled,
/// the shared kernel (common/post_highpass.h) on the hi/lo memory as the
/// half value hi 2^15 + lo (any lo).
inline void post_process(PostProcessState& st, Word16* signal, int lg) {
    post_hp::Memory m{std::int64_t{st.y1_hi} * 32768 + st.y1_lo, std::int64_t{st.y2_hi} * 32768 + st.y2_lo, st.x0, st.x1};
    post_hp::run(m, signal, lg, kPostProcessTaps);
    // The older output of a one-sample call is the incoming pair as it was.
    const Word16 y2_hi = lg == 1 ? st.y1_hi : static_cast<Word16>(m.h2 >> 15);
    const Word16 y2_lo = lg == 1 ? st.y1_lo : static_cast<Word16>(m.h2 & 0x7fff);
    st = PostProcessState{y2_hi, y2_lo, static_cast<Word16>(m.h1 >> 15), static_cast<Word16>(m.h1 & 0x7fff), m.x1, m.x2};
}

}  // namespace amr_dec
ZEPS_END_VARIANT

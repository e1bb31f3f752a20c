/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.722.1 modulated lapped transform and its inverse (G.722.1 3.2,
// 4.3 / 5.3.4 and Annex C for the 640-sample frame; reference routines
// samples_to_rmlt_coefs, dct_type_iv_a, rmlt_coefs_to_samples and
// dct_type_iv_s of the fixed-point reference):
//  - forward: the window over the previous and the new frame, the block
//    scaling that brings the windowed data's peak near 14000 (mag_shift),
//    then the fixed-point DCT-IV (butterfly stages halving the span, the
//    10-point core matrix, rotation stages back up to the full length);
//  - inverse: the DCT-IV with the first stage's dither, the scaling undone,
//    then the overlap-add of the windowed halves with the previous frame.
// Samples and coefficients are 16-bit; the windows and rotations Q15; every
// operation is the reference's saturating basic operator.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>
#include <cstring>

#include "common/basic_op.h"
#include "g722/g7221_tables.h"

ZEPS_BEGIN_VARIANT
namespace g7221 {

constexpr int kMaxDctLength = 640;
constexpr int kCoreSize = 10;

/// log2(n / 5): 6 for 320, 7 for 640.
constexpr int dct_length_log(int n) { return n == 320 ? 6 : 7; }

/// The 10-point core of both transforms: each group of ten inputs times the
/// core matrix, rounded.
inline void dct_core(const Word16* in, Word16* out, int n, const std::int16_t (&core)[10][10]) {
    for (int base = 0; base < n; base += kCoreSize)
        for (int k = 0; k < kCoreSize; ++k) {
            Word32 sum = 0;
            for (int i = 0; i < kCoreSize; ++i) sum = L_mac(sum, in[base + i], core[i][k]);
            out[base + k] = round_fx(sum);
        }
}

/// The rotation stages from span 20 up to n. Synthesis doubles each sum
/// (L_shl by 1) before rounding; analysis does not.
template <bool Synthesis>
inline void rotation_stages(Word16* in, Word16* out, Word16* spare, int n, const G7221CosMsin* const* table) {
    const int log = dct_length_log(n);
    Word16* in_buffer = in;
    Word16* out_buffer = spare;
    auto rnd = [](Word32 s) { return round_fx(Synthesis ? L_shl(s, 1) : s); };
    for (int set_count_log = log - 2; set_count_log >= 0; --set_count_log, ++table) {
        const int set_span = n >> set_count_log;
        const int set_count = 1 << set_count_log;
        Word16* next_out = set_count_log == 0 ? out : out_buffer;
        for (int set = 0; set < set_count; ++set) {
            const Word16* low = in_buffer + set * set_span;
            const Word16* high = low + set_span / 2;
            Word16* out_low = next_out + set * set_span;
            Word16* out_high = out_low + set_span;
            const G7221CosMsin* cm = *table;
            while (out_low < out_high) {
                const Word16 low_even = *low++, low_odd = *low++;
                const Word16 high_even = *high++, high_odd = *high++;
                const Word16 cos_even = cm[0].cosine, msin_even = cm[0].minus_sine;
                const Word16 cos_odd = cm[1].cosine, msin_odd = cm[1].minus_sine;
                cm += 2;
                *out_low++ = rnd(L_mac(L_mac(0, cos_even, low_even), negate(msin_even), high_even));
                *--out_high = rnd(L_mac(L_mac(0, msin_even, low_even), cos_even, high_even));
                *out_low++ = rnd(L_mac(L_mac(0, cos_odd, low_odd), msin_odd, high_odd));
                *--out_high = rnd(L_mac(L_mac(0, msin_odd, low_odd), negate(cos_odd), high_odd));
            }
        }
        Word16* swap = in_buffer;
        in_buffer = out_buffer;
        out_buffer = swap;
    }
}

/// The rotation stages with pmaddwd (SSSE3), equal to rotation_stages for
/// every input. Each output is round(sat(2 (A l + B h))) (analysis) or
/// round(sat(4 (A l + B h))) (synthesis) of an input pair (l, h) and a
/// coefficient pair (A, B) from the stage's table (cos, -sin, sin or -cos;
/// no entry is -32768, so negate() is plain negation and L_mac's first
/// product cannot saturate). |A| + |B| <= 50868, so A l + B h is exact in
/// a 32-bit lane, and the saturations and the rounding reduce to
/// (x + 2^14) >> 15, resp. (x + 2^13) >> 14, clamped by packssdw.
struct RotationPairs {
    // Per stage: span / 2 (A, B) pairs for the low outputs, then as many
    // for the high outputs (in the order of the low index j).
    alignas(16) Word16 pairs[6][2 * 640];
    explicit RotationPairs(const G7221CosMsin* const* table) {
        for (int stage = 0; stage < 6; ++stage) {
            const int half = 10 << stage;  // span / 2
            const G7221CosMsin* cm = table[stage];
            for (int j = 0; j < half; ++j) {
                const Word16 c = cm[j].cosine, ms = cm[j].minus_sine;
                Word16* lo = pairs[stage] + 2 * j;
                Word16* hi = pairs[stage] + 2 * half + 2 * j;
                if (j % 2 == 0) {  // even: (c, -ms) low, (ms, c) high
                    lo[0] = c, lo[1] = static_cast<Word16>(-ms), hi[0] = ms, hi[1] = c;
                } else {  // odd: (c, ms) low, (ms, -c) high
                    lo[0] = c, lo[1] = ms, hi[0] = ms, hi[1] = static_cast<Word16>(-c);
                }
            }
        }
    }
};

#if defined(__SSSE3__)
template <bool Synthesis>
[[gnu::always_inline]] inline __m128i rotate4(__m128i lh, const Word16* pair) {
    const __m128i x = _mm_madd_epi16(lh, _mm_loadu_si128(reinterpret_cast<const __m128i*>(pair)));
    return Synthesis ? _mm_srai_epi32(_mm_add_epi32(x, _mm_set1_epi32(1 << 13)), 14)
                     : _mm_srai_epi32(_mm_add_epi32(x, _mm_set1_epi32(1 << 14)), 15);
}
#endif

template <bool Synthesis>
inline void rotation_stages_simd(Word16* in, Word16* out, Word16* spare, int n, const RotationPairs& rp) {
    const int log = dct_length_log(n);
    Word16* in_buffer = in;
    Word16* out_buffer = spare;
#if defined(__SSSE3__)
    const __m128i reverse4 = _mm_setr_epi8(6, 7, 4, 5, 2, 3, 0, 1, 8, 9, 10, 11, 12, 13, 14, 15);
#endif
    for (int set_count_log = log - 2, stage = 0; set_count_log >= 0; --set_count_log, ++stage) {
        const int set_span = n >> set_count_log;
        const int half = set_span / 2;  // a multiple of 10: groups of four, then a pair
        const Word16* low_pairs = rp.pairs[stage];
        const Word16* high_pairs = low_pairs + 2 * half;
        Word16* next_out = set_count_log == 0 ? out : out_buffer;
        for (int set = 0; set < (1 << set_count_log); ++set) {
            const Word16* low = in_buffer + set * set_span;
            const Word16* high = low + half;
            Word16* out_low = next_out + set * set_span;
            Word16* out_high_end = out_low + set_span;  // out_high[-1 - j] = high output j
            int j = 0;
#if defined(__SSSE3__)
            for (; j + 4 <= half; j += 4) {
                const __m128i lh = _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(low + j)),
                                                      _mm_loadl_epi64(reinterpret_cast<const __m128i*>(high + j)));
                const __m128i a = rotate4<Synthesis>(lh, low_pairs + 2 * j);
                const __m128i b = rotate4<Synthesis>(lh, high_pairs + 2 * j);
                const __m128i packed = _mm_packs_epi32(a, b);  // low j..j+3, high j..j+3
                _mm_storel_epi64(reinterpret_cast<__m128i*>(out_low + j), packed);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(out_high_end - j - 4),
                                 _mm_shuffle_epi8(_mm_srli_si128(packed, 8), reverse4));
            }
#endif
            for (; j < half; ++j) {
                const int l = low[j], h = high[j];
                const Word16* pl = low_pairs + 2 * j;
                const Word16* ph = high_pairs + 2 * j;
                const int xl = pl[0] * l + pl[1] * h, xh = ph[0] * l + ph[1] * h;
                const int sh = Synthesis ? 14 : 15;
                out_low[j] = saturate((xl + (1 << (sh - 1))) >> sh);
                out_high_end[-1 - j] = saturate((xh + (1 << (sh - 1))) >> sh);
            }
        }
        Word16* swap = in_buffer;
        in_buffer = out_buffer;
        out_buffer = swap;
    }
}

/// The 10-point core with pmaddwd (SSSE3), equal to dct_core for every
/// input. A group whose ten inputs all lie within +-limit, where limit *
/// (largest column sum of |core|) * 2 + 2^15 < 2^31, can saturate at no
/// step of the reference's L_mac chain, so its outputs are the plain sums
/// rounded, (x + 2^14) >> 15; other groups take the scalar path.
struct CoreColumns {
    alignas(16) Word16 col[10][16];  // column k of the core, padded with zeros
    Word16 limit;
    explicit CoreColumns(const std::int16_t (&core)[10][10]) {
        int widest = 0;
        for (int k = 0; k < 10; ++k) {
            int sum = 0;
            for (int i = 0; i < 16; ++i) col[k][i] = i < 10 ? core[i][k] : 0;
            for (int i = 0; i < 10; ++i) sum += core[i][k] < 0 ? -core[i][k] : core[i][k];
            if (sum > widest) widest = sum;
        }
        limit = static_cast<Word16>((2147483647 - 32768) / (2 * widest));
    }
};

#if defined(__SSSE3__)
inline void dct_core_simd(const Word16* in, Word16* out, int n, const CoreColumns& cc,
                          const std::int16_t (&core)[10][10]) {
    const __m128i hi = _mm_set1_epi16(cc.limit), lo = _mm_set1_epi16(static_cast<Word16>(-cc.limit));
    const __m128i bias = _mm_set1_epi32(1 << 14);
    for (int base = 0; base < n; base += kCoreSize) {
        std::int32_t tail;
        std::memcpy(&tail, in + base + 8, 4);
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + base));
        const __m128i b = _mm_cvtsi32_si128(tail);
        const __m128i outside = _mm_or_si128(_mm_or_si128(_mm_cmpgt_epi16(a, hi), _mm_cmplt_epi16(a, lo)),
                                             _mm_or_si128(_mm_cmpgt_epi16(b, hi), _mm_cmplt_epi16(b, lo)));
        if (_mm_movemask_epi8(outside) != 0) [[unlikely]] {
            dct_core(in + base, out + base, kCoreSize, core);
            continue;
        }
        __m128i s[10];
        for (int k = 0; k < 10; ++k)
            s[k] = _mm_add_epi32(_mm_madd_epi16(a, _mm_load_si128(reinterpret_cast<const __m128i*>(cc.col[k]))),
                                 _mm_madd_epi16(b, _mm_load_si128(reinterpret_cast<const __m128i*>(cc.col[k] + 8))));
        const __m128i x0 = _mm_hadd_epi32(_mm_hadd_epi32(s[0], s[1]), _mm_hadd_epi32(s[2], s[3]));
        const __m128i x1 = _mm_hadd_epi32(_mm_hadd_epi32(s[4], s[5]), _mm_hadd_epi32(s[6], s[7]));
        const __m128i x2 = _mm_hadd_epi32(_mm_hadd_epi32(s[8], s[9]), _mm_setzero_si128());
        const __m128i r0 = _mm_srai_epi32(_mm_add_epi32(x0, bias), 15);
        const __m128i r1 = _mm_srai_epi32(_mm_add_epi32(x1, bias), 15);
        const __m128i r2 = _mm_srai_epi32(_mm_add_epi32(x2, bias), 15);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + base), _mm_packs_epi32(r0, r1));
        const std::int32_t last = _mm_cvtsi128_si32(_mm_packs_epi32(r2, r2));
        std::memcpy(out + base + 8, &last, 4);
    }
}
#else
// Hosts without SSSE3: the scalar core (the same results).
inline void dct_core_simd(const Word16* in, Word16* out, int n, const CoreColumns&,
                          const std::int16_t (&core)[10][10]) {
    dct_core(in, out, n, core);
}
#endif


/// Vector forms of the transform tables, built once when the library is
/// loaded, so no call pays for (or locks on) a first-use initialisation.
inline const CoreColumns kAnalysisColumns(g7221_dct_core_a);
inline const RotationPairs kAnalysisPairs(g7221_a_cos_msin_table);
inline const CoreColumns kSynthesisColumns(g7221_dct_core_s);
inline const RotationPairs kSynthesisPairs(g7221_s_cos_msin_table);

/// Analysis DCT-IV (dct_type_iv_a); input is modified (the 320-point bias).
inline void dct4_analysis(Word16* input, Word16* output, int n) {
    Word16 a[kMaxDctLength], b[kMaxDctLength], c[kMaxDctLength];
    if (n == 320)
        for (int i = 0; i < n; ++i) input[i] = add(input[i], g7221_anal_bias[i]);
    const int log = dct_length_log(n);
    Word16* in_buffer = input;
    Word16* out_buffer = a;
    for (int set_count_log = 0; set_count_log <= log - 2; ++set_count_log) {
        const int set_span = n >> set_count_log;
        const int set_count = 1 << set_count_log;
        const Word16* in = in_buffer;
        for (int set = 0; set < set_count; ++set) {
            Word16* out_low = out_buffer + set * set_span;
            Word16* out_high = out_low + set_span;
            while (out_low < out_high) {
                const Word16 lo = *in++, hi = *in++;
                *out_low++ = extract_l(L_shr(L_add(lo, hi), 1));
                *--out_high = extract_l(L_shr(L_sub(lo, hi), 1));
            }
        }
        in_buffer = out_buffer;
        out_buffer = out_buffer == a ? b : a;
    }
    dct_core_simd(in_buffer, c, n, kAnalysisColumns, g7221_dct_core_a);
    for (int i = 0; i < n; ++i) in_buffer[i] = c[i];
    rotation_stages_simd<false>(in_buffer, output, out_buffer, n, kAnalysisPairs);
}

/// Synthesis DCT-IV (dct_type_iv_s).
inline void dct4_synthesis(const Word16* input, Word16* output, int n) {
    Word16 a[kMaxDctLength], b[kMaxDctLength], c[kMaxDctLength];
    const std::int16_t* dither = n == 320 ? g7221_dither : g7221_max_dither;
    const int log = dct_length_log(n);
    const Word16* in_buffer = input;
    Word16* out_buffer = a;
    int d = 0;
    for (int set_count_log = 0; set_count_log <= log - 2; ++set_count_log) {
        const int set_span = n >> set_count_log;
        const int set_count = 1 << set_count_log;
        const Word16* in = in_buffer;
        for (int set = 0; set < set_count; ++set) {
            Word16* out_low = out_buffer + set * set_span;
            Word16* out_high = out_low + set_span;
            while (out_low < out_high) {
                const Word16 lo = *in++, hi = *in++;
                if (set_count_log == 0) {  // first stage: dithered, halved
                    *out_low++ = extract_l(L_shr(L_add(add(lo, dither[d]), hi), 1));
                    ++d;
                    *--out_high = extract_l(L_shr(L_add(add(lo, dither[d]), -Word32{hi}), 1));
                    ++d;
                } else {
                    *out_low++ = add(lo, hi);
                    *--out_high = add(lo, negate(hi));
                }
            }
        }
        in_buffer = out_buffer;
        out_buffer = out_buffer == a ? b : a;
    }
    Word16* core_in = const_cast<Word16*>(in_buffer);  // one of a, b
    dct_core_simd(core_in, c, n, kSynthesisColumns, g7221_dct_core_s);
    for (int i = 0; i < n; ++i) core_in[i] = c[i];
    rotation_stages_simd<true>(core_in, output, out_buffer, n, kSynthesisPairs);
    if (n == 320)
        for (int i = 0; i < 320; ++i) output[i] = saturate(Word32{output[i]} + g7221_syn_bias_7khz[i]);
}

/// Forward MLT (samples_to_rmlt_coefs): n new samples and the n previous
/// ones (replaced by the new ones) to n coefficients; returns mag_shift,
/// the power of two the windowed data was scaled by.
inline int samples_to_rmlt(const Word16* new_samples, Word16* old_samples, Word16* coefs, int n) {
    Word16 windowed[kMaxDctLength];
    const int half = n / 2;
    const std::int16_t* win = n == 320 ? g7221_samples_to_rmlt_window : g7221_max_samples_to_rmlt_window;
    for (int i = 0; i < half; ++i)  // first half: old samples, mirrored about the middle
        windowed[i] = round_fx(L_mac(L_mac(0, win[half - 1 - i], old_samples[half - 1 - i]), win[half + i],
                                     old_samples[half + i]));
    for (int i = 0; i < half; ++i)  // second half: new samples
        windowed[half + i] = round_fx(
            L_mac(L_mac(0, win[n - 1 - i], new_samples[i]), negate(win[i]), new_samples[n - 1 - i]));
    for (int i = 0; i < n; ++i) old_samples[i] = new_samples[i];

    Word16 peak = 0;
    Word32 total = 0;
    for (int i = 0; i < n; ++i) {
        const Word16 m = abs_s(windowed[i]);
        if (m > peak) peak = m;
        total = L_add(total, m);
    }
    int mag_shift = 0;
    if (peak < 14000) {
        const Word16 t = peak < 438 ? add(peak, 1) : peak;
        const Word16 t5 = extract_l(L_shr(L_mult(t, 9587), 20));
        const int norm = norm_s(t5);
        mag_shift = norm == 0 ? 9 : norm - 6;
    }
    if (peak < L_shr(total, 7)) --mag_shift;
    if (mag_shift > 0)
        for (int i = 0; i < n; ++i) windowed[i] = shl(windowed[i], static_cast<Word16>(mag_shift));
    else if (mag_shift < 0)
        for (int i = 0; i < n; ++i) windowed[i] = shr(windowed[i], static_cast<Word16>(-mag_shift));
    dct4_analysis(windowed, coefs, n);
    return mag_shift;
}

/// Inverse MLT (rmlt_coefs_to_samples): n coefficients scaled by 2^mag_shift
/// to n output samples, overlapped with the half frame kept in old_samples
/// (n / 2 values, replaced).
inline void rmlt_to_samples(const Word16* coefs, Word16* old_samples, Word16* out, int n, int mag_shift) {
    Word16 fresh[kMaxDctLength];
    const int half = n / 2;
    dct4_synthesis(coefs, fresh, n);
    if (mag_shift > 0)
        for (int i = 0; i < n; ++i) fresh[i] = shr(fresh[i], static_cast<Word16>(mag_shift));
    else if (mag_shift < 0)
        for (int i = 0; i < n; ++i) fresh[i] = shl(fresh[i], static_cast<Word16>(-mag_shift));
    const std::int16_t* win = n == 320 ? g7221_rmlt_to_samples_window : g7221_max_rmlt_to_samples_window;
    for (int i = 0; i < half; ++i)
        out[i] = round_fx(L_shl(L_mac(L_mac(0, win[i], fresh[half - 1 - i]), win[n - 1 - i], old_samples[i]), 2));
    for (int i = 0; i < half; ++i)
        out[half + i] = round_fx(
            L_shl(L_mac(L_mac(0, win[half + i], fresh[i]), negate(win[half - 1 - i]), old_samples[half - 1 - i]),
                  2));
    for (int i = 0; i < half; ++i) old_samples[i] = fresh[half + i];
}

}  // namespace g7221
ZEPS_END_VARIANT

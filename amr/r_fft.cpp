// SPDX-License-Identifier: BSD-3-Clause
// 128-point fixed-point real FFT of GSM-AMR VAD option 2 (3GPP TS 26.073
// r_fft.c: c_fft + r_fft). Input: 128 real samples (Q0, block-normalised by
// the caller). A 64-point complex radix-2 decimation-in-time FFT halves its
// data at each of the six stages (total scaling 1/64), and the real-spectrum
// split halves once more. Twiddles phs_tbl are Q15.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "amr/amr_vad_tables.h"
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

namespace {

constexpr int kSize = 128;
constexpr int kHalf = 64;
constexpr int kStages = 6;

/// Swaps the complex samples (re/im pairs) into bit-reversed order (c_fft).
void bit_reverse(Word16* x) {
    for (int i = 0, j = 0; i < kSize - 2; i += 2) {
        if (j > i) {
            const Word16 re = x[i], im = x[i + 1];
            x[i] = x[j];
            x[i + 1] = x[j + 1];
            x[j] = re;
            x[j + 1] = im;
        }
        int k = kHalf;
        while (j >= k) {
            j -= k;
            k >>= 1;
        }
        j += k;
    }
}

/// round(L_msu(L_mult(a, c), b, s)) and round(L_mac(L_mult(a, c), b, s)) of
/// the reference, formed directly. No cosine twiddle is -32768, so |a c| <
/// 2^30 and with |b s| <= 2^30 the exact p = a c -/+ b s fits 32 bits;
/// L_mult's lone saturation (b = s = -32768, only where c = 0) never changes
/// the rounded result, and 32-bit saturation followed by round equals
/// clamping (p + 2^14) >> 15 to 16 bits.
inline Word16 round_diff(Word16 a, Word16 c, Word16 b, Word16 s) {
    return saturate((std::int32_t{a} * c - std::int32_t{b} * s + 0x4000) >> 15);
}
inline Word16 round_sum(Word16 a, Word16 c, Word16 b, Word16 s) {
    return saturate((std::int32_t{a} * c + std::int32_t{b} * s + 0x4000) >> 15);
}

/// One radix-2 butterfly with twiddle (c, s), both outputs halved.
inline void butterfly(Word16* top, Word16* bot, Word16 c, Word16 s) {
    const Word16 re = round_diff(bot[0], c, bot[1], s);
    const Word16 im = round_sum(bot[1], c, bot[0], s);
    bot[0] = shr(sub(top[0], re), 1);
    bot[1] = shr(sub(top[1], im), 1);
    top[0] = shr(add(top[0], re), 1);
    top[1] = shr(add(top[1], im), 1);
}

/// Butterflies of one stage between x[k..] and x[k+span..], scalar.
void stage_scalar(Word16* x, int stage) {
    const int span = 2 << stage;      // butterfly distance in Word16s
    const int step = kSize >> stage;  // twiddle index step (2 * number of FFTs)
    for (int j = 0, ji = 0; j < span; j += 2, ji += step) {
        const Word16 c = phs_tbl[ji], s = phs_tbl[ji + 1];
        for (int k = j; k < kSize; k += 2 * span) butterfly(&x[k], &x[k + span], c, s);
    }
}

#if defined(__SSSE3__)
/// Twiddles of four butterflies, laid out for the SSSE3 rotation: the
/// rotation is pmaddwd of (re, im) with (c, -s) and of (im, re) with (c, s),
/// then the rounding shift and the saturating pack of round_diff / round_sum.
/// The one twiddle whose -s is 32768 (c = 0, s = -32768) uses 32767 plus one
/// more product of im (w_fix), so every sum stays exact.
struct Twiddle4 {
    __m128i w_re, w_fix, w_im;
};

Twiddle4 twiddles(int ji0, int ji1, int ji2, int ji3) {
    const int ji[4] = {ji0, ji1, ji2, ji3};
    alignas(16) Word16 wr[8], wf[8], wi[8];
    for (int l = 0; l < 4; ++l) {
        const Word16 c = phs_tbl[ji[l]], s = phs_tbl[ji[l] + 1];
        wr[2 * l] = c;
        wr[2 * l + 1] = s == MIN_16 ? MAX_16 : static_cast<Word16>(-s);
        wf[2 * l] = 0;
        wf[2 * l + 1] = s == MIN_16 ? 1 : 0;
        wi[2 * l] = c;
        wi[2 * l + 1] = s;
    }
    return {_mm_load_si128(reinterpret_cast<const __m128i*>(wr)), _mm_load_si128(reinterpret_cast<const __m128i*>(wf)),
            _mm_load_si128(reinterpret_cast<const __m128i*>(wi))};
}

/// Four butterflies at once: complex lanes of top and bot, the same as
/// butterfly() lane by lane.
inline void butterfly4(__m128i& top, __m128i& bot, const Twiddle4& w) {
    const __m128i round = _mm_set1_epi32(0x4000);
    const __m128i swap = _mm_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13);
    __m128i re = _mm_add_epi32(_mm_madd_epi16(bot, w.w_re), _mm_madd_epi16(bot, w.w_fix));
    __m128i im = _mm_madd_epi16(_mm_shuffle_epi8(bot, swap), w.w_im);
    re = _mm_srai_epi32(_mm_add_epi32(re, round), 15);
    im = _mm_srai_epi32(_mm_add_epi32(im, round), 15);
    const __m128i packed = _mm_packs_epi32(re, im);  // re0..3, im0..3
    const __m128i rot = _mm_unpacklo_epi16(packed, _mm_srli_si128(packed, 8));
    bot = _mm_srai_epi16(_mm_subs_epi16(top, rot), 1);
    top = _mm_srai_epi16(_mm_adds_epi16(top, rot), 1);
}

inline __m128i pick_ps(__m128i a, __m128i b, int which) {
    const __m128 fa = _mm_castsi128_ps(a), fb = _mm_castsi128_ps(b);
    return _mm_castps_si128(which == 0 ? _mm_shuffle_ps(fa, fb, _MM_SHUFFLE(2, 0, 2, 0))
                                       : _mm_shuffle_ps(fa, fb, _MM_SHUFFLE(3, 1, 3, 1)));
}

/// Stages 0 and 1 on blocks of eight complex samples held in registers.
void stages01_ssse3(Word16* x) {
    const Twiddle4 w0 = twiddles(0, 0, 0, 0);
    const Twiddle4 w1 = twiddles(0, 64, 0, 64);
    for (int k = 0; k < kSize; k += 16) {
        __m128i* p = reinterpret_cast<__m128i*>(&x[k]);
        const __m128i v0 = _mm_loadu_si128(p), v1 = _mm_loadu_si128(p + 1);
        // Stage 0: complex 0,2,4,6 against 1,3,5,7.
        __m128i top = pick_ps(v0, v1, 0), bot = pick_ps(v0, v1, 1);
        butterfly4(top, bot, w0);
        const __m128i s0 = _mm_unpacklo_epi32(top, bot), s1 = _mm_unpackhi_epi32(top, bot);
        // Stage 1: complex 0,1,4,5 against 2,3,6,7.
        top = _mm_unpacklo_epi64(s0, s1);
        bot = _mm_unpackhi_epi64(s0, s1);
        butterfly4(top, bot, w1);
        _mm_storeu_si128(p, _mm_unpacklo_epi64(top, bot));
        _mm_storeu_si128(p + 1, _mm_unpackhi_epi64(top, bot));
    }
}

/// Stages 2 to 5 (span >= 8), four butterflies per step.
void stage_ssse3(Word16* x, int stage) {
    const int span = 2 << stage;
    const int step = kSize >> stage;
    for (int j = 0; j < span; j += 8) {
        const int ji = (j / 2) * step;
        const Twiddle4 w = twiddles(ji, ji + step, ji + 2 * step, ji + 3 * step);
        for (int k = j; k < kSize; k += 2 * span) {
            __m128i* pt = reinterpret_cast<__m128i*>(&x[k]);
            __m128i* pb = reinterpret_cast<__m128i*>(&x[k + span]);
            __m128i top = _mm_loadu_si128(pt), bot = _mm_loadu_si128(pb);
            butterfly4(top, bot, w);
            _mm_storeu_si128(pt, top);
            _mm_storeu_si128(pb, bot);
        }
    }
}
#else
// Hosts without SSSE3: the scalar stages (the same results).
void stages01_ssse3(Word16* x) {
    stage_scalar(x, 0);
    stage_scalar(x, 1);
}
void stage_ssse3(Word16* x, int stage) { stage_scalar(x, stage); }
#endif

/// 64-point complex FFT of re/im pairs, scaled by 1/64 (c_fft).
void complex_fft(Word16* x, bool simd) {
    bit_reverse(x);
    if (simd) {
        stages01_ssse3(x);
        for (int stage = 2; stage < kStages; ++stage) stage_ssse3(x, stage);
    } else {
        for (int stage = 0; stage < kStages; ++stage) stage_scalar(x, stage);
    }
}

/// The reference's L_mult, widened: 2 a b, or MAX_32 for -32768 x -32768.
inline std::int64_t lmult(Word16 a, Word16 b) {
    return (a == MIN_16 && b == MIN_16) ? std::int64_t{MAX_32} : 2 * std::int64_t{a} * b;
}
inline std::int64_t sat32(std::int64_t v) { return v < MIN_32 ? MIN_32 : (v > MAX_32 ? MAX_32 : v); }

/// round(L_shr(L_mac/L_msu(L_mac/L_msu(acc, a, c), b, s), 1)) with each
/// step saturating as the reference's operators do; a sign of +1 is L_mac,
/// -1 is L_msu.
inline Word16 split_term(std::int64_t acc, int sign1, Word16 a, Word16 c, int sign2, Word16 b, Word16 s) {
    const std::int64_t t = sat32(sat32(acc + sign1 * lmult(a, c)) + sign2 * lmult(b, s));
    return static_cast<Word16>(((t >> 1) + 0x8000) >> 16);
}

/// Splits the complex spectrum of the packed real sequence into the real
/// spectrum, halving it (r_fft).
void real_split(Word16* x) {
    const Word16 dc = x[0], ny = x[1];
    x[0] = add(dc, ny);
    x[1] = sub(dc, ny);
    for (int i = 2; i <= kHalf; i += 2) {
        const int j = kSize - i;
        const Word16 r1 = add(x[i], x[j]);
        const Word16 i1 = sub(x[i + 1], x[j + 1]);
        const Word16 r2 = add(x[i + 1], x[j + 1]);
        const Word16 i2 = sub(x[j], x[i]);
        const std::int64_t lr1 = std::int64_t{r1} * 65536;
        const std::int64_t li1 = std::int64_t{i1} * 65536;
        const std::int64_t nli1 = i1 == MIN_16 ? std::int64_t{MAX_32} : -li1;  // L_negate
        x[i] = split_term(lr1, 1, r2, phs_tbl[i], -1, i2, phs_tbl[i + 1]);
        x[i + 1] = split_term(li1, 1, i2, phs_tbl[i], 1, r2, phs_tbl[i + 1]);
        x[j] = split_term(lr1, 1, r2, phs_tbl[j], 1, i2, phs_tbl[j + 1]);
        x[j + 1] = split_term(nli1, -1, i2, phs_tbl[j], 1, r2, phs_tbl[j + 1]);
    }
}

}  // namespace

ZepStatus zepsFFTFwd_RToPerm_GSMAMR_16s_I(Zep16s* pSrcDst) {
    if (any_null(pSrcDst)) return zepStsNullPtrErr;
    complex_fft(pSrcDst, true);
    real_split(pSrcDst);
    return zepStsNoErr;
}

namespace amr {
/// The same transform with scalar butterflies only (test and benchmark baseline).
void r_fft_scalar(Word16* x) {
    complex_fft(x, false);
    real_split(x);
}
}  // namespace amr

ZEPS_END_VARIANT

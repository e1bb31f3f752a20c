// SPDX-License-Identifier: BSD-3-Clause
// G.729 post-processing (ITU-T G.729 4.2.5, Post_Process): the 100 Hz
// second-order high-pass filter (coefficients Q13) with the output doubled
// and rounded, on the state of zepsHighPassFilterInit_G729. The filter
// memory is the unshifted Q15 accumulator, as in zepsHighPassFilter_G729_16s_ISfs
// with scaleFactor 13; only the output differs (round(2 acc) for round(acc)).
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/fast_ops.h"

ZEPS_BEGIN_VARIANT
namespace {

/// The state layout of zepsHighPassFilterInit_G729 (24 bytes).
struct HighPassState {
    Word32 y1, y2;
    Word16 x1, x2;
    Word16 coef[6];
};
static_assert(sizeof(HighPassState) == 24);

/// Mpy_32_16(L_Extract(y), a) as a plain value; ok is cleared when the
/// reference's L_mult or L_mac inside it would saturate.
inline std::int64_t memory_term_exact(Word32 y, Word16 a, bool& ok) {
    const std::int64_t hi = y >> 16, lo = (y >> 1) & 0x7fff;
    const std::int64_t p = 2 * hi * a;
    const std::int64_t m = p + 2 * ((lo * a) >> 15);
    ok = ok && fits32(p) && fits32(m);
    return m;
}

/// One accumulator of the filter (before the output doubling): plain 64-bit
/// sums in the reference's order, each partial sum the reference saturates
/// range-checked; the saturating operators redo a sample that leaves the
/// 32-bit range.
inline Word32 accumulate(Word32 y1, Word32 y2, Word16 xn, Word16 xm1, Word16 xm2, const Word16* c) {
    const Word16 b0 = c[0], b1 = c[1], b2 = c[2], a1 = c[4], a2 = c[5];
    bool ok = true;
    const std::int64_t s1 = memory_term_exact(y1, a1, ok) + memory_term_exact(y2, a2, ok);
    const std::int64_t s2 = s1 + 2 * std::int64_t{xn} * b0;
    const std::int64_t s3 = s2 + 2 * std::int64_t{xm1} * b1;
    const std::int64_t s4 = s3 + 2 * std::int64_t{xm2} * b2;
    if (ok && fits32(s1) && fits32(s2) && fits32(s3) && fits32(s4)) return L_shl_fast(static_cast<Word32>(s4), 2);
    const DPF d1 = L_Extract(y1), d2 = L_Extract(y2);
    Word32 t = Mpy_32_16(d1.hi, d1.lo, a1);
    t = L_add(t, Mpy_32_16(d2.hi, d2.lo, a2));
    t = L_mac(t, xn, b0);
    t = L_mac(t, xm1, b1);
    t = L_mac(t, xm2, b2);
    return L_shl(t, 2);
}

/// Whether the first two partial sums of every sample are exact for any
/// state and input: the memory terms |Mpy_32_16(L_Extract(y), a)| <=
/// 2 32768 |a| + 2 |a| each (hi in [-32768, 32767], 0 <= lo < 32768), plus
/// |L_mult(x, b0)| <= 65536 |b0|, within 31 bits (the 100 Hz filter's
/// coefficients give 1.5404e9 + 504.6e6 < 2^31); only the two later taps,
/// the shifts and the rounding can then saturate. b1 and b2 above -32768
/// keep their L_mult products plain, and 2^28 + 65536 |b2| <= MAX_32 lets a
/// whole sum within +-2^28 prove the sum before the last tap exact too.
inline bool first_sums_fit(const Word16* c) {
    const std::int64_t a = std::abs(std::int64_t{c[4]}) + std::abs(std::int64_t{c[5]});
    return 65538 * a + 65536 * std::abs(std::int64_t{c[0]}) <= MAX_32 && c[1] > MIN_16 && c[2] > MIN_16 &&
           (std::int64_t{1} << 28) + 65536 * std::abs(std::int64_t{c[2]}) <= MAX_32;
}

/// Mpy_32_16(hi, lo, n) of the half value h = y >> 1 = hi 2^15 + lo: for
/// n > -32768, 2 hi n + 2 mult(lo, n) = 2 ((h n) >> 15) (hi n 2^15 is a
/// multiple of 2^15, and neither product saturates).
inline std::int64_t memory_term_half(std::int64_t h, std::int64_t n) { return 2 * ((h * n) >> 15); }

/// The input part x[n] b0 + x[n-1] b1 + x[n-2] b2 of n samples (undoubled),
/// ext[k] = x[k-2] (the two previous inputs first), in[] holding whole
/// lanes (n rounded up to 8). In pmaddwd lanes when
/// (|b0| + |b1| + |b2|) 32768 fits in 31 bits (every pair and lane sum
/// exact; the 100 Hz filter's 30796 does), else as plain 64-bit sums.
void input_terms(const Word16* ext, int n, const Word16* c, std::int64_t* in) {
    const std::int64_t sum_b = std::abs(static_cast<std::int64_t>(c[0])) + std::abs(static_cast<std::int64_t>(c[1])) +
                               std::abs(static_cast<std::int64_t>(c[2]));
#if defined(__SSSE3__)
    if (sum_b * 32768 <= MAX_32) {
        const __m128i b01 = _mm_unpacklo_epi16(_mm_set1_epi16(c[0]), _mm_set1_epi16(c[1]));
        const __m128i b2 = _mm_unpacklo_epi16(_mm_set1_epi16(c[2]), _mm_setzero_si128());
        const __m128i zero = _mm_setzero_si128();
        for (int i = 0; i < n; i += 8) {
            const __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(ext + 2 + i));
            const __m128i x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(ext + 1 + i));
            const __m128i x2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(ext + i));
            const __m128i lo = _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(x0, x1), b01),
                                             _mm_madd_epi16(_mm_unpacklo_epi16(x2, zero), b2));
            const __m128i hi = _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(x0, x1), b01),
                                             _mm_madd_epi16(_mm_unpackhi_epi16(x2, zero), b2));
            // Sign-extended to 64 bits, two lanes a store.
            const __m128i slo = _mm_srai_epi32(lo, 31), shi = _mm_srai_epi32(hi, 31);
            __m128i* out = reinterpret_cast<__m128i*>(in + i);
            _mm_store_si128(out, _mm_unpacklo_epi32(lo, slo));
            _mm_store_si128(out + 1, _mm_unpackhi_epi32(lo, slo));
            _mm_store_si128(out + 2, _mm_unpacklo_epi32(hi, shi));
            _mm_store_si128(out + 3, _mm_unpackhi_epi32(hi, shi));
        }
        return;
    }
#endif
    (void)sum_b;
    for (int i = 0; i < n; ++i)
        in[i] = static_cast<std::int64_t>(ext[i + 2]) * c[0] + static_cast<std::int64_t>(ext[i + 1]) * c[1] +
                static_cast<std::int64_t>(ext[i]) * c[2];
}

/// The filter under first_sums_fit, one range check a sample: while the
/// whole sum t lies within +-(2^28 - 2^12) no partial sum saturates, nor do
/// L_shl by 2, the doubling and the rounding, and the sample is
/// (8 t + 2^15) >> 16; otherwise each saturation is applied as one clamp.
/// The recursion runs on h = y >> 1 (unclamped, y = 4 t and h = 2 t), so
/// the next h is one multiply, a shift and an add after the last; the input
/// part of each sample is summed ahead of it (input_terms), blocks of up to
/// 80 samples. y is a multiple of 4 unless clamped, so y = 2 h except
/// y = MAX_32 (h odd).
void filter_fast(Zep16s* x, int len, HighPassState& st) {
    constexpr std::int64_t kQuiet = (std::int64_t{1} << 28) - (1 << 12);
    constexpr int kBlock = 80;
    const std::int64_t b2 = st.coef[2];
    const std::int64_t a1 = st.coef[4], a2 = st.coef[5];
    std::int64_t h1 = st.y1 >> 1, h2 = st.y2 >> 1;
    const Word32 y1_in = st.y1;
    alignas(16) Word16 ext[kBlock + 2 + 8] = {};  // x[-2 ..] of the block, zero-padded to whole lanes
    ext[0] = st.x2;
    ext[1] = st.x1;
    for (int at = 0; at < len; at += kBlock) {
        const int n = std::min(kBlock, len - at);
        Zep16s* xb = x + at;
        std::memcpy(ext + 2, xb, static_cast<std::size_t>(n) * sizeof(Word16));
        std::memset(ext + 2 + n, 0, static_cast<std::size_t>(kBlock + 8 - n) * sizeof(Word16));
        alignas(16) std::int64_t in[kBlock + 8];
        input_terms(ext, n, st.coef, in);
        for (int i = 0; i < n; ++i) {
            // 2 t with the newest product added last.
            const std::int64_t t2 = 2 * (memory_term_half(h2, a2) + 2 * in[i]) + 4 * ((h1 * a1) >> 15);
            h2 = h1;
            if (t2 > -2 * kQuiet && t2 < 2 * kQuiet) [[likely]] {
                h1 = t2;
                xb[i] = static_cast<Word16>((4 * t2 + 0x8000) >> 16);
            } else {
                const std::int64_t t = t2 >> 1, in2 = 2 * ext[i] * b2;  // ext[i] = x[i-2]
                const Word32 y = L_shl_fast(saturate32(std::int64_t{saturate32(t - in2)} + in2), 2);
                const std::int64_t o = (2 * std::int64_t{y} + 0x8000) >> 16;
                xb[i] = static_cast<Word16>(o > MAX_16 ? MAX_16 : (o < MIN_16 ? MIN_16 : o));
                h1 = y >> 1;
            }
        }
        ext[0] = ext[n];
        ext[1] = ext[n + 1];
    }
    auto full = [](std::int64_t h) { return h & 1 ? MAX_32 : static_cast<Word32>(2 * h); };
    st.y2 = len == 1 ? y1_in : full(h2);
    st.y1 = full(h1);
    st.x1 = ext[1];
    st.x2 = ext[0];
}

/// The filter for any input: each partial sum range-checked (accumulate).
void filter_checked(Zep16s* x, int len, HighPassState& st) {
    for (int i = 0; i < len; ++i) {
        const Word16 x0 = x[i];
        const Word32 t = accumulate(st.y1, st.y2, x0, st.x1, st.x2, st.coef);
        x[i] = round_fx(L_shl_fast(t, 1));
        st.y2 = st.y1;
        st.y1 = t;
        st.x2 = st.x1;
        st.x1 = x0;
    }
}

}  // namespace

ZepStatus zepsPostProcess_G729_16s_I(Zep16s* pSrcDst, int len, Zep8u* pState) {
    if (any_null(pSrcDst, pState)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    HighPassState st;
    std::memcpy(&st, pState, sizeof st);
    if (first_sums_fit(st.coef))
        filter_fast(pSrcDst, len, st);
    else
        filter_checked(pSrcDst, len, st);
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

/// The range-checked form alone, for the test holding the fast form equal
/// to it (not exported from the library).
void g729_post_process_checked(Zep16s* x, int len, Zep8u* pState) {
    HighPassState st;
    std::memcpy(&st, pState, sizeof st);
    filter_checked(x, len, st);
    std::memcpy(pState, &st, sizeof st);
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 input/output high-pass filter (G.729 3.1 Pre_Process, 4.2.5
// Post_Process): second-order pole/zero filter, coefficients in Q12 (140 Hz
// pre-filter) or Q13 (100 Hz post-filter), output memories in double
// precision (hi/lo), samples Q0.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fast_ops.h"

ZEPS_BEGIN_VARIANT
namespace {

/// The 24-byte state: y[n-1], y[n-2] (32-bit, as L_Extract leaves them),
/// x[n-1], x[n-2], then b0, b1, b2, a0, a1, a2.
struct HighPassState {
    Word32 y1, y2;
    Word16 x1, x2;
    Word16 coef[6];
};
static_assert(sizeof(HighPassState) == 24);

/// One output memory times a coefficient (Mpy_32_16 on its hi/lo split).
inline Word32 memory_term(Word32 y, Word16 a) {
    const DPF d = L_Extract(y);
    return Mpy_32_16_fast(d.hi, d.lo, a);
}

/// memory_term without saturation; ok is cleared when the reference's
/// L_mult or L_mac inside Mpy_32_16 would saturate.
inline std::int64_t memory_term_exact(Word32 y, Word16 a, bool& ok) {
    const std::int64_t hi = y >> 16, lo = (y >> 1) & 0x7fff;
    const std::int64_t p = 2 * hi * a;
    const std::int64_t m = p + 2 * ((lo * a) >> 15);
    ok = ok && fits32(p) && fits32(m);
    return m;
}

/// True when no partial sum of a sample can leave the 32-bit range, whatever
/// the samples and memories: |2 hi a| <= 2^16 |a|, |2 mult(lo, a)| <= 2 |a|,
/// |2 x b| <= 2^16 |b|. Holds for the 140 Hz pre-filter (Q12), not for the
/// 100 Hz post-filter (Q13).
inline bool sums_never_saturate(const Word16* c) {
    const std::int64_t a = std::abs(std::int64_t{c[4]}) + std::abs(std::int64_t{c[5]});
    const std::int64_t b = std::abs(std::int64_t{c[0]}) + std::abs(std::int64_t{c[1]}) + std::abs(std::int64_t{c[2]});
    return 65536 * (a + b) + 2 * a <= MAX_32;
}

/// Mpy_32_16(L_Extract(y), a) without saturation, y in the 32-bit range: 2 hi a + 2 ((lo a) >> 15)
/// is 2 (((y >> 1) a) >> 15), since y >> 1 = hi 2^15 + lo.
inline std::int64_t memory_term_unsaturated64(std::int64_t y, Word16 a) { return 2 * (((y >> 1) * a) >> 15); }

/// The input part of a block, fir[i] = 2 (b0 x[i] + b1 x[i-1] + b2 x[i-2]),
/// from xin[i + 2] = x[i] (xin[0], xin[1] the two samples before the block).
/// Under sums_never_saturate |b0| + |b1| + |b2| <= 32767, so each sum fits 31
/// bits and no b is -32768 (pmaddwd's one overflow, -32768 * -32768 twice,
/// cannot occur). n + 8 entries of fir may be written.
[[maybe_unused]] inline void fir_block_scalar(const Word16* xin, int n, Word16 b0, Word16 b1, Word16 b2, Word32* fir) {
    for (int i = 0; i < n; ++i) fir[i] = 2 * (static_cast<Word32>(xin[i + 2]) * b0 + static_cast<Word32>(xin[i + 1]) * b1 + static_cast<Word32>(xin[i]) * b2);
}

inline void fir_block(const Word16* xin, int n, Word16 b0, Word16 b1, Word16 b2, Word32* fir) {
#if defined(__SSSE3__)
    const __m128i w01 = _mm_set1_epi32(static_cast<int>((std::uint32_t{static_cast<std::uint16_t>(b1)} << 16) |
                                                        static_cast<std::uint16_t>(b0)));
    const __m128i w2 = _mm_set1_epi32(static_cast<std::uint16_t>(b2));
    const __m128i z = _mm_setzero_si128();
    for (int i = 0; i < n; i += 8) {
        const __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(xin + i + 2));
        const __m128i x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(xin + i + 1));
        const __m128i x2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(xin + i));
        const __m128i lo = _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(x0, x1), w01),
                                         _mm_madd_epi16(_mm_unpacklo_epi16(x2, z), w2));
        const __m128i hi = _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(x0, x1), w01),
                                         _mm_madd_epi16(_mm_unpackhi_epi16(x2, z), w2));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(fir + i), _mm_slli_epi32(lo, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(fir + i + 4), _mm_slli_epi32(hi, 1));
    }
#else
    fir_block_scalar(xin, n, b0, b1, b2, fir);
#endif
}

/// The filter when sums_never_saturate(coef): every L_mult, L_mac and L_add
/// of the reference is its plain value, only the final L_shl by Shift clamps.
/// The input part of each sample does not depend on the output, so it is
/// summed for a block of samples first (fir_block); the recursion then adds
/// the two memory terms. The clamp is a branch (taken only on overload),
/// which keeps it off the sample-to-sample dependency chain.
template <int Shift>
void filter_unsaturated(Zep16s* x, int len, HighPassState& st) {
    const Word16 b0 = st.coef[0], b1 = st.coef[1], b2 = st.coef[2], a1 = st.coef[4], a2 = st.coef[5];
    // The memories as 64-bit values (always in the 32-bit range), so that the
    // newest one feeds its multiply without a sign extension.
    std::int64_t y1 = st.y1, y2 = st.y2;
    constexpr int kBlock = 80;
    Word16 xin[kBlock + 2 + 8] = {};
    Word32 fir[kBlock + 8];
    for (int at = 0; at < len; at += kBlock) {
        const int n = len - at < kBlock ? len - at : kBlock;
        Zep16s* xb = x + at;
        xin[0] = st.x2;
        xin[1] = st.x1;
        std::memcpy(xin + 2, xb, static_cast<std::size_t>(n) * sizeof(Word16));
        fir_block(xin, n, b0, b1, b2, fir);
        st.x2 = xin[n];
        st.x1 = xin[n + 1];
        for (int i = 0; i < n; ++i) {
            // The newest memory's term joins last, so that only its
            // multiply, shifts and one add lie on the sample-to-sample chain.
            const std::int64_t rest = (memory_term_unsaturated64(y2, a2) + fir[i]) * (std::int64_t{1} << Shift);
            std::int64_t acc = (((y1 >> 1) * a1) >> 15) * (std::int64_t{2} << Shift) + rest;
            if (__builtin_expect(acc != static_cast<Word32>(acc), 0)) acc = acc > 0 ? MAX_32 : MIN_32;
            xb[i] = round_fx(static_cast<Word32>(acc));
            y2 = y1;
            y1 = acc;
        }
    }
    st.y1 = static_cast<Word32>(y1);
    st.y2 = static_cast<Word32>(y2);
}

/// The filter for any coefficients: plain 64-bit sums in the reference's
/// order; each partial sum that the reference saturates is range-checked,
/// and the sample is redone with the saturating operators when one leaves
/// the 32-bit range.
void filter_checked(Zep16s* x, int len, Word16 shift, HighPassState& st) {
    const Word16 b0 = st.coef[0], b1 = st.coef[1], b2 = st.coef[2], a1 = st.coef[4], a2 = st.coef[5];
    // x[n-1], x[n-2] and y[n-1], y[n-2] on entry to each sample.
    Word16 xm1 = st.x1, xm2 = st.x2;
    Word32 y1 = st.y1, y2 = st.y2;
    for (int i = 0; i < len; ++i) {
        const Word16 xn = x[i];
        bool ok = true;
        const std::int64_t m1 = memory_term_exact(y1, a1, ok), m2 = memory_term_exact(y2, a2, ok);
        const std::int64_t s1 = m1 + m2;
        const std::int64_t s2 = s1 + 2 * std::int64_t{xn} * b0;
        const std::int64_t s3 = s2 + 2 * std::int64_t{xm1} * b1;
        const std::int64_t s4 = s3 + 2 * std::int64_t{xm2} * b2;
        Word32 acc;
        if (ok && fits32(s1) && fits32(s2) && fits32(s3) && fits32(s4)) {
            const std::int64_t sh = s4 * (std::int64_t{1} << shift);
            acc = sh > MAX_32 ? MAX_32 : (sh < MIN_32 ? MIN_32 : static_cast<Word32>(sh));
        } else {
            acc = L_add(memory_term(y1, a1), memory_term(y2, a2));
            acc = L_mac(acc, xn, b0);
            acc = L_mac(acc, xm1, b1);
            acc = L_mac(acc, xm2, b2);
            acc = L_shl_fast(acc, shift);
        }
        x[i] = round_fx(acc);
        y2 = y1;
        y1 = acc;
        xm2 = xm1;
        xm1 = xn;
    }
    st.y1 = y1;
    st.y2 = y2;
    st.x1 = xm1;
    st.x2 = xm2;
}

}  // namespace

ZepStatus zepsHighPassFilterSize_G729(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<Zep32s>(sizeof(HighPassState));
    return zepStsNoErr;
}

ZepStatus zepsHighPassFilterInit_G729(const Zep16s* pCoeffs, Zep8u* pState) {
    if (any_null(pCoeffs, pState)) return zepStsNullPtrErr;
    HighPassState st{};
    std::memcpy(st.coef, pCoeffs, sizeof st.coef);
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZepStatus zepsHighPassFilter_G729_16s_ISfs(Zep16s* pSrcDst, int len, int scaleFactor, Zep8u* pState) {
    if (any_null(pSrcDst, pState)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (scaleFactor != 12 && scaleFactor != 13) return zepStsScaleRangeErr;
    HighPassState st;
    std::memcpy(&st, pState, sizeof st);
    if (!sums_never_saturate(st.coef))
        filter_checked(pSrcDst, len, static_cast<Word16>(15 - scaleFactor), st);
    else if (scaleFactor == 12)
        filter_unsaturated<3>(pSrcDst, len, st);
    else
        filter_unsaturated<2>(pSrcDst, len, st);
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

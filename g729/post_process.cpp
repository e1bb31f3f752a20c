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

/// Whether no partial sum of any sample of the call can leave the 32-bit
/// range, from the coefficients and the largest input magnitude xmax (the
/// two input memories included). Each output memory is a Word32, so
/// |Mpy_32_16(L_Extract(y), a)| <= 2^16 |a| (and so are its own L_mult and
/// L_mac), and |L_mult(x, b)| <= 2 xmax |b|: when the sum of those bounds
/// fits, every partial sum in any order is its plain value. With the
/// 100 Hz filter's coefficients this holds for xmax up to 9858.
inline bool sums_fit(const Word16* c, std::int64_t xmax) {
    const std::int64_t a = std::abs(std::int64_t{c[4]}) + std::abs(std::int64_t{c[5]});
    const std::int64_t b = std::abs(std::int64_t{c[0]}) + std::abs(std::int64_t{c[1]}) + std::abs(std::int64_t{c[2]});
    return 65536 * a + 2 * xmax * b <= MAX_32;
}

/// The filter under sums_fit: Mpy_32_16(L_Extract(y), a) is
/// 2 (((y >> 1) a) >> 15) and the chain the plain sum; only the L_shl by 2
/// clamps (a branch off the sample-to-sample dependency chain). The
/// recursion runs on h = y >> 1, the half the memory terms read: unclamped,
/// y = 4 t and h = 2 t, so the next h is one multiply, a shift and an add
/// after the last (4 ((h a1) >> 15) + 2 rest).
void filter_plain(Zep16s* x, int len, HighPassState& st) {
    const std::int64_t b0 = 2 * st.coef[0], b1 = 2 * st.coef[1], b2 = 2 * st.coef[2];
    const std::int64_t a1 = st.coef[4], a2 = st.coef[5];
    Word16 xm1 = st.x1, xm2 = st.x2;
    Word32 y1 = st.y1, y2 = st.y2;
    std::int64_t h1 = y1 >> 1, h2 = y2 >> 1;
    for (int i = 0; i < len; ++i) {
        const Word16 xn = x[i];
        const std::int64_t rest = 2 * ((h2 * a2) >> 15) + xn * b0 + xm1 * b1 + xm2 * b2;
        const std::int64_t q = (h1 * a1) >> 15;
        const std::int64_t t = 2 * q + rest;  // the accumulator before L_shl by 2
        Word32 acc;
        std::int64_t h;
        if (__builtin_expect(t >= -0x20000000 && t < 0x20000000, 1)) {
            acc = static_cast<Word32>(4 * t);
            h = 4 * q + 2 * rest;
        } else {
            acc = t > 0 ? MAX_32 : MIN_32;
            h = acc >> 1;
        }
        x[i] = round_fx(L_shl_fast(acc, 1));
        h2 = h1;
        h1 = h;
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
    std::int64_t xmax = std::max(std::abs(std::int64_t{st.x1}), std::abs(std::int64_t{st.x2}));
    for (int i = 0; i < len; ++i) xmax = std::max(xmax, std::abs(std::int64_t{pSrcDst[i]}));
    if (sums_fit(st.coef, xmax))
        filter_plain(pSrcDst, len, st);
    else
        filter_checked(pSrcDst, len, st);
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

/// The range-checked form alone, for the test holding the plain form equal
/// to it (not exported from the library).
void g729_post_process_checked(Zep16s* x, int len, Zep8u* pState) {
    HighPassState st;
    std::memcpy(&st, pState, sizeof st);
    filter_checked(x, len, st);
    std::memcpy(pState, &st, sizeof st);
}

ZEPS_END_VARIANT

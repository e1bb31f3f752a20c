// SPDX-License-Identifier: BSD-3-Clause
// G.729 post-processing (ITU-T G.729 4.2.5, Post_Process): the 100 Hz
// second-order high-pass filter (coefficients Q13) with the output doubled
// and rounded, on the state of zepsHighPassFilterInit_G729. The filter
// memory is the unshifted Q15 accumulator, as in zepsHighPassFilter_G729_16s_ISfs
// with scaleFactor 13; only the output differs (round(2 acc) for round(acc)).
#include <cstdint>
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fast_ops.h"
#include "common/post_highpass.h"

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

/// The filter under post_hp::exact_for (the 100 Hz filter among others):
/// the shared kernel on the half values y >> 1. y is a multiple of 4 unless
/// clamped, so y = 2 h except y = MAX_32 (h odd); the older output of a
/// one-sample call is the incoming y1 as it was.
void filter_fast(Zep16s* x, int len, HighPassState& st, const post_hp::Taps& taps) {
    static_assert(post_hp::exact_for(post_hp::kDecoderTaps));
    post_hp::Memory m{st.y1 >> 1, st.y2 >> 1, st.x1, st.x2};
    // The decoder's own taps as constants (immediate multiplies), any others as given.
    if (post_hp::same_taps(taps, post_hp::kDecoderTaps))
        post_hp::run(m, x, len, post_hp::kDecoderTaps);
    else
        post_hp::run(m, x, len, taps);
    auto full = [](std::int64_t h) { return h & 1 ? MAX_32 : static_cast<Word32>(2 * h); };
    st.y2 = len == 1 ? st.y1 : full(m.h2);
    st.y1 = full(m.h1);
    st.x1 = m.x1;
    st.x2 = m.x2;
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
    if (const post_hp::Taps taps{st.coef[0], st.coef[1], st.coef[2], st.coef[4], st.coef[5]}; post_hp::exact_for(taps))
        filter_fast(pSrcDst, len, st, taps);
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

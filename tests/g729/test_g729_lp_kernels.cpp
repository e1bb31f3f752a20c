// SPDX-License-Identifier: BSD-3-Clause
// The SSSE3 kernels of the G.729 LP stages against their scalar twins, on
// speech-like and extreme inputs (both builds).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <vector>

#include "g729/g729_tables.h"
#include "tests/variant_check.h"

#define ZEPS_DECLARE_LP_KERNELS(ns)                                                     \
    namespace zeps::ns {                                                                \
    void g729_corr240_scalar(const std::int16_t* y, std::int64_t& energy, std::int32_t* r); \
    void g729_corr240_ssse3(const std::int16_t* y, std::int64_t& energy, std::int32_t* r);  \
    int lsf_first_stage_search(const std::int16_t* target);                             \
    int lsf_first_stage_search_scalar(const std::int16_t* target);                      \
    int lsf_second_stage_search(const std::int16_t* t, const std::int16_t* cb1, const std::int16_t* w, int first); \
    int lsf_second_stage_search_scalar(const std::int16_t* t, const std::int16_t* cb1, const std::int16_t* w, int first); \
    std::int16_t chebps(std::int16_t x, const std::int16_t* f, int q);                \
    bool chebps_never_saturates(const std::int16_t* f, int q);                        \
    void chebps_x8(const std::int16_t* x, const std::int16_t* f, int q, std::int16_t* y); \
    std::int16_t chebps_unsaturated(std::int16_t x, const std::int16_t* f, int q);    \
    }
ZEPS_DECLARE_LP_KERNELS(u8)
#if defined(__x86_64__)  // elsewhere n8 names the one generic build, u8
ZEPS_DECLARE_LP_KERNELS(n8)
#endif

namespace {

template <class F>
void for_both(F f) {
    f(&zeps::u8::g729_corr240_scalar, &zeps::u8::g729_corr240_ssse3, &zeps::u8::lsf_first_stage_search,
      &zeps::u8::lsf_first_stage_search_scalar, &zeps::u8::lsf_second_stage_search,
      &zeps::u8::lsf_second_stage_search_scalar);
    f(&zeps::n8::g729_corr240_scalar, &zeps::n8::g729_corr240_ssse3, &zeps::n8::lsf_first_stage_search,
      &zeps::n8::lsf_first_stage_search_scalar, &zeps::n8::lsf_second_stage_search,
      &zeps::n8::lsf_second_stage_search_scalar);
}

// The first-stage search on targets that make the reference's sub() or
// L_mac() saturate (the vector path then hands over to the scalar loop),
// against indices computed outside the library by a separate model of
// Lsp_pre_select (sub, L_mac, L_sub with their saturation): the first two
// are won by the last row, 127, one with a distance just below 2^31.
struct SearchCase {
    std::int16_t target[10];
    int index;
};
constexpr SearchCase kSaturatingTargets[] = {
    {{14871, -26165, 9210, 8755, 4764, 8696, 15220, 19242, 15940, 16545}, 127},
    {{-28270, 13038, 5545, 7616, 4241, 8649, 15215, 21142, 15269, 16996}, 127},
    {{32767, 2577, 5553, 7195, 8651, 10686, 15069, 16953, 18703, 19929}, 85},
    {{1721, 32767, 5553, 7195, 8651, 10686, 15069, 16953, 18703, 19929}, 116},
    {{1721, 2577, 32767, 7195, 8651, 10686, 15069, 16953, 18703, 19929}, 84},
    {{-32768, -32768, -32768, -32768, -32768, -32768, -32768, -32768, -32768, -32768}, 0},  // all saturate
    {{32767, 32767, 32767, 32767, 32767, 32767, 32767, 32767, 32767, 32767}, 0},
};

TEST(G729LpKernels, FirstStageSearchOnSaturatingTargets) {
    for_both([](auto, auto, auto search, auto search_scalar, auto, auto) {
        for (const SearchCase& c : kSaturatingTargets) {
            EXPECT_EQ(search_scalar(c.target), c.index) << "target[0] " << c.target[0];
            EXPECT_EQ(search(c.target), c.index) << "target[0] " << c.target[0];
        }
    });
}

TEST(G729LpKernels, SimdEqualsScalar) {
    for_both([](auto corr_scalar, auto corr_simd, auto search_simd, auto search_scalar, auto second_simd, auto second_scalar) {
        zeps::test::Rng rng(7);
        for (int rep = 0; rep < 300; ++rep) {
            // Windowed speech never exceeds 32767 in magnitude after the window;
            // the kernels are exact whenever 2 * energy fits in 32 bits.
            std::vector<std::int16_t> y(256, 0);
            const int amp = rep % 3 == 0 ? 3000 : (rep % 3 == 1 ? 600 : 40);
            for (int j = 0; j < 240; ++j) y[j] = static_cast<std::int16_t>(rng.uniform(-amp, amp));
            std::int64_t e1, e2;
            std::vector<std::int32_t> r1(13, 0), r2(13, 0);
            corr_scalar(y.data(), e1, r1.data());
            corr_simd(y.data(), e2, r2.data());
            ASSERT_EQ(e1, e2);
            ASSERT_EQ(r1, r2);
            // Targets near the codebook, far from it, and at the 16-bit limits.
            std::vector<std::int16_t> t(10);
            for (int j = 0; j < 10; ++j) {
                const int centre = 2300 * (j + 1);
                t[j] = rep % 4 == 3 ? rng.s16() : static_cast<std::int16_t>(centre + rng.uniform(-4000 * (rep % 4 + 1), 4000 * (rep % 4 + 1)));
            }
            ASSERT_EQ(search_simd(t.data()), search_scalar(t.data())) << "rep " << rep;
            // Second stage: weights as Get_wegt leaves them (normalised, positive).
            std::vector<std::int16_t> w(10);
            for (auto& v : w) v = static_cast<std::int16_t>(rng.uniform(1, 32767));
            const std::int16_t* cb1 = zeps::lspcb1[rng.uniform(0, 127)];
            for (int first : {0, 5})
                ASSERT_EQ(second_simd(t.data(), cb1, w.data(), first), second_scalar(t.data(), cb1, w.data(), first))
                    << "rep " << rep;
            // Tiny weights make many distances equal: the first row of the
            // smallest distance must win, as in the reference's scan.
            for (auto& v : w) v = static_cast<std::int16_t>(rng.uniform(1, 3));
            for (int first : {0, 5})
                ASSERT_EQ(second_simd(t.data(), cb1, w.data(), first), second_scalar(t.data(), cb1, w.data(), first))
                    << "rep " << rep;
        }
    });
}

// The second-stage lanes run while every residual |target - lspcb1| is at
// most 12000, a bound derived from the largest |lspcb2| entry (2337): hold
// the table to it, and the search to the scalar one at and just past the
// bound with full weights (the largest distances the lanes accept).
TEST(G729LpKernels, SecondStageBoundEdges) {
    int amax = 0;
    for (const auto& row : zeps::lspcb2)
        for (const std::int16_t v : row) amax = std::max(amax, std::abs(int{v}));
    EXPECT_EQ(amax, 2337);
    const std::int16_t w[10] = {32767, 32767, 32767, 32767, 32767, 32767, 32767, 32767, 32767, 32767};
    for_both([&](auto, auto, auto, auto, auto second_simd, auto second_scalar) {
        for (const std::int16_t* cb1 : {zeps::lspcb1[0], zeps::lspcb1[127]})
            for (const int edge : {-12001, -12000, 11999, 12000, 12001})
                for (int lane = 0; lane < 5; ++lane) {
                    std::int16_t t[10];
                    for (int j = 0; j < 10; ++j)
                        t[j] = static_cast<std::int16_t>(std::clamp(cb1[j] + (j % 5 == lane ? edge : (j % 2 ? 12000 : -12000)), -32768, 32767));
                    for (int first : {0, 5})
                        ASSERT_EQ(second_simd(t, cb1, w, first), second_scalar(t, cb1, w, first))
                            << "edge " << edge << " lane " << lane;
                }
    });
}

TEST(G729LpKernels, BatchedChebyshevEqualsChebps) {
    zeps::test::Rng rng(11);
    int batched = 0;
    for (int rep = 0; rep < 2000; ++rep) {
        std::int16_t f[6] = {2048};
        const int span = rep % 4 == 0 ? 32767 : (rep % 4 == 1 ? 12000 : 4000);
        for (int i = 1; i < 6; ++i) f[i] = static_cast<std::int16_t>(rng.uniform(-span, span));
        const int q = rep % 5 == 0 ? 10 : 11;
        if (!zeps::u8::chebps_never_saturates(f, q)) continue;
        ++batched;
        std::int16_t x[8], y8[8], yn[8];
        for (auto& v : x) v = static_cast<std::int16_t>(rng.uniform(-32768, 32767));
        x[0] = 32767;  // the ends of the range, where the bound is tightest
        x[1] = -32768;
        zeps::u8::chebps_x8(x, f, q, y8);
        zeps::n8::chebps_x8(x, f, q, yn);
        for (int k = 0; k < 8; ++k) {
            ASSERT_EQ(y8[k], zeps::u8::chebps(x[k], f, q)) << "rep " << rep << " x " << x[k];
            ASSERT_EQ(yn[k], y8[k]);
            ASSERT_EQ(zeps::u8::chebps_unsaturated(x[k], f, q), y8[k]) << "rep " << rep << " x " << x[k];
            ASSERT_EQ(zeps::n8::chebps_unsaturated(x[k], f, q), y8[k]);
        }
    }
    EXPECT_GT(batched, 500);
}

}  // namespace

#include "common/fast_ops.h"

namespace {
namespace r = zeps::ref;

TEST(G729LpKernels, FastOperatorsEqualBasicOperators) {
    zeps::test::Rng rng(5);
    const std::int16_t edge16[] = {-32768, -32767, -1, 0, 1, 16383, 16384, 32767};
    for (int rep = 0; rep < 200000; ++rep) {
        const std::int16_t a = rep < 64 ? edge16[rep % 8] : rng.s16(), b = rep < 64 ? edge16[rep / 8] : rng.s16();
        const std::int16_t c = rng.s16(), d = rng.s16();
        const std::int32_t l = rng.s32();
        ASSERT_EQ(r::norm_l_fast(l), r::norm_l(l));
        ASSERT_EQ(r::norm_s_fast(a), r::norm_s(a));
        ASSERT_EQ(r::div_s_fast(a, b), r::div_s(a, b)) << a << " / " << b;
        const int n = static_cast<int>(rng.uniform(0, 40));
        ASSERT_EQ(r::L_shl_fast(l, n), r::L_shl(l, static_cast<std::int16_t>(n)));
        const std::int16_t lo1 = static_cast<std::int16_t>(c & 0x7fff), lo2 = static_cast<std::int16_t>(d & 0x7fff);
        ASSERT_EQ(r::Mpy_32_fast(a, lo1, b, lo2), r::Mpy_32(a, lo1, b, lo2));
        if (r::abs_s(a) <= r::kStableK) {
            ASSERT_EQ(r::Mpy_32_bounded(a, lo1, b, lo2), r::Mpy_32(a, lo1, b, lo2));
        }
        ASSERT_EQ(r::Mpy_32_16_fast(a, lo1, b), r::Mpy_32_16(a, lo1, b));
        const auto e1 = r::L_Extract_fast(l), e2 = r::L_Extract(l);
        ASSERT_TRUE(e1.hi == e2.hi && e1.lo == e2.lo);
        ASSERT_EQ(r::L_Comp_fast(a, lo1), r::L_Comp(a, lo1));
        ASSERT_EQ(r::Div_32_fast(l, a, lo1), r::Div_32(l, a, lo1)) << l << " / " << a << "," << lo1;
        if (a > 0x3fff) {
            ASSERT_EQ(r::Div_32_fast(l & 0x7fffffff, a, lo1), r::Div_32(l & 0x7fffffff, a, lo1));
        }
    }
    // Div_32 at the corners of its domain: the smallest and largest
    // normalised denominators and numerators 0 .. MAX_32.
    for (const std::int16_t dh : {16384, 16385, 24575, 32766, 32767})
        for (const std::int16_t dl : {0, 1, 32766, 32767})
            for (const std::int32_t num : {0, 1, 0x3fffffff, 0x40000000, 0x7ffffffe, 0x7fffffff})
                ASSERT_EQ(r::Div_32_fast(num, dh, dl), r::Div_32(num, dh, dl)) << num << " / " << dh << "," << dl;
    // Mpy_32_bounded at the corners of its range (the largest products).
    const std::int16_t ks[] = {-r::kStableK, -r::kStableK + 1, r::kStableK - 1, r::kStableK};
    const std::int16_t his[] = {-32768, -32767, 32766, 32767};
    const std::int16_t los[] = {0, 1, 32766, 32767};
    for (std::int16_t k : ks)
        for (std::int16_t h : his)
            for (std::int16_t kl : los)
                for (std::int16_t hl : los) {
                    ASSERT_EQ(r::Mpy_32_bounded(k, kl, h, hl), r::Mpy_32(k, kl, h, hl)) << k << " " << h;
                    ASSERT_EQ(r::Mpy_32_bounded(k, kl, k, kl), r::Mpy_32(k, kl, k, kl)) << k;
                }
}

/// Five coefficients (b0, b1, b2, a1, a2) whose absolute values sum to
/// `total`, with random signs and split.
void coefficients_summing_to(zeps::test::Rng& rng, int total, std::int16_t* coef) {
    int left = total;
    const int slots[5] = {0, 1, 2, 4, 5};
    for (int k = 0; k < 5; ++k) {
        const int v = k == 4 ? left : static_cast<int>(rng.uniform(0, left));
        left -= v;
        coef[slots[k]] = static_cast<std::int16_t>(rng.chance(2) ? -v : v);
    }
    coef[3] = 4096;
}

TEST(G729LpKernels, HighPassFastPathEqualsSaturatingFilter) {
    // Extreme coefficients and full-scale input drive the filter into every
    // saturation; the export must equal the plain operator form of Pre_Process.
    // Reps 200.. use coefficients whose absolute sum is 32766..32768, around
    // the limit below which no partial sum can saturate (the unsaturated
    // path), and the 140 Hz pre-filter on full-scale input (the final shift
    // clamps).
    constexpr std::int16_t kPreFilter[6] = {1899, -3798, 1899, 4096, 7807, -3733};
    zeps::test::Rng rng(3);
    for (int rep = 0; rep < 400; ++rep) {
        std::int16_t coef[6];
        if (rep < 200)
            for (auto& v : coef) v = rng.s16();
        else if (rep % 4 == 3)
            std::copy(kPreFilter, kPreFilter + 6, coef);
        else
            coefficients_summing_to(rng, 32766 + rep % 4, coef);
        const int sf = rep % 2 ? 12 : 13;
        std::vector<Zep8u> st(24), st_n8(24);
        zeps::u8::zepsHighPassFilterInit_G729(coef, st.data());
        zeps::n8::zepsHighPassFilterInit_G729(coef, st_n8.data());
        std::int32_t y1 = 0, y2 = 0;
        std::int16_t x1 = 0, x2 = 0;
        // Calls of several lengths (the fast path works in blocks of 80).
        constexpr int kLengths[4] = {40, 81, 1, 200};
        for (int blk = 0; blk < 4; ++blk) {
            const int len = kLengths[blk];
            std::vector<std::int16_t> x = rng.vec<std::int16_t>(static_cast<std::size_t>(len)), out = x, out_n8 = x;
            ASSERT_EQ(zeps::u8::zepsHighPassFilter_G729_16s_ISfs(out.data(), len, sf, st.data()), 0);
            ASSERT_EQ(zeps::n8::zepsHighPassFilter_G729_16s_ISfs(out_n8.data(), len, sf, st_n8.data()), 0);
            ASSERT_EQ(out, out_n8);
            ASSERT_EQ(st, st_n8);
            for (int i = 0; i < len; ++i) {
                const auto e1 = r::L_Extract(y1), e2 = r::L_Extract(y2);
                std::int32_t acc = r::L_add(r::Mpy_32_16(e1.hi, e1.lo, coef[4]), r::Mpy_32_16(e2.hi, e2.lo, coef[5]));
                acc = r::L_mac(r::L_mac(r::L_mac(acc, x[i], coef[0]), x1, coef[1]), x2, coef[2]);
                acc = r::L_shl(acc, static_cast<std::int16_t>(15 - sf));
                ASSERT_EQ(out[i], r::round_fx(acc)) << "rep " << rep << " sample " << i;
                y2 = y1;
                y1 = acc;
                x2 = x1;
                x1 = x[i];
            }
        }
    }
}

}  // namespace

namespace {

TEST(G729LpKernels, LspToLsfEqualsTableScan) {
    // Lsp_lsf2's downward scan of table2, on sorted, unsorted and full-scale
    // LSPs (the index carried from one LSP to the next must never rise).
    zeps::test::Rng rng(13);
    for (int rep = 0; rep < 3000; ++rep) {
        std::vector<std::int16_t> lsp = rng.vec<std::int16_t>(10);
        if (rep % 3 == 0) std::sort(lsp.begin(), lsp.end(), std::greater<>());
        if (rep % 5 == 0) lsp[rep % 10] = zeps::table2[rng.uniform(0, 63)];
        std::vector<std::int16_t> want(10), got(10), got_n8(10);
        std::int16_t ind = 63;
        for (int i = 9; i >= 0; --i) {
            while (r::sub(zeps::table2[ind], lsp[i]) < 0) {
                ind = r::sub(ind, 1);
                if (ind <= 0) break;
            }
            const std::int32_t t = r::L_mult(zeps::slope_acos[ind], r::sub(lsp[i], zeps::table2[ind]));
            want[i] = r::mult(r::add(r::shl(ind, 9), r::extract_l(r::L_shr(t, 12))), 25736);
        }
        ASSERT_EQ(zeps::u8::zepsLSPToLSF_G729_16s(lsp.data(), got.data()), 0);
        ASSERT_EQ(zeps::n8::zepsLSPToLSF_G729_16s(lsp.data(), got_n8.data()), 0);
        ASSERT_EQ(got, want) << "rep " << rep;
        ASSERT_EQ(got_n8, want) << "rep " << rep;
    }
}

}  // namespace

#include "g729/lsf_codebook.h"

namespace {

TEST(G729LpKernels, LsfPredictionIsPlainSum) {
    // The plain MA prediction rests on fg_sum + sum |fg| <= 32767 for every
    // mode and coefficient; then it equals the L_mult / L_mac chain for any
    // inputs, full-scale ones included.
    for (int mode = 0; mode < 2; ++mode) {
        for (int j = 0; j < 10; ++j) {
            int sum = std::abs(zeps::fg_sum[mode][j]);
            for (int k = 0; k < 4; ++k) sum += std::abs(zeps::fg[mode][k][j]);
            ASSERT_LE(sum, 32767) << "mode " << mode << " coefficient " << j;
        }
    }
    zeps::test::Rng rng(17);
    for (int rep = 0; rep < 20000; ++rep) {
        std::vector<std::int16_t> ele(10), prev(40), want(10), got(10);
        for (auto& v : ele) v = rep % 4 == 0 ? static_cast<std::int16_t>(rep % 8 == 0 ? -32768 : 32767) : rng.s16();
        for (auto& v : prev) v = rep % 4 == 0 ? ele[0] : rng.s16();
        const int mode = rep & 1;
        zeps::ref::lsp_prev_compose_chain(ele.data(), want.data(), mode, prev.data());
        zeps::ref::lsp_prev_compose(ele.data(), got.data(), mode, prev.data());
        ASSERT_EQ(got, want) << "rep " << rep;
    }
}

}  // namespace

namespace {
namespace r = zeps::ref;

TEST(G729LpKernels, LevinsonRecursionSumEqualsChain) {
    // Hi halves anywhere (full scale included, where the chain saturates and
    // the plain sum must hand over to it), lo halves as L_Extract leaves them.
    zeps::test::Rng rng(29);
    const std::int16_t edge[] = {-32768, -32767, 32767, 0};
    for (int rep = 0; rep < 100000; ++rep) {
        std::int16_t rh[31], rl[31], ah[31], al[31];
        const int i = static_cast<int>(rng.uniform(1, 30));
        const int kind = rep % 4;  // 0: small, 1: speech-like, 2: full scale, 3: corners
        for (int j = 0; j < 31; ++j) {
            const std::int16_t v = rng.s16(), w = rng.s16();
            rh[j] = kind == 0 ? static_cast<std::int16_t>(v >> 6) : kind == 3 ? edge[(rep / 4 + j) % 4] : v;
            ah[j] = kind == 1 ? static_cast<std::int16_t>(w >> 3) : kind == 3 ? edge[(rep / 16 + j) % 4] : w;
            rl[j] = kind == 3 ? 32767 : static_cast<std::int16_t>(rng.s16() & 0x7fff);
            al[j] = kind == 3 ? 32767 : static_cast<std::int16_t>(rng.s16() & 0x7fff);
        }
        std::int32_t want = 0;
        for (int j = 1; j < i; ++j) want = r::L_add(want, r::Mpy_32(rh[j], rl[j], ah[i - j], al[i - j]));
        ASSERT_EQ(r::levinson_recursion_sum(rh, rl, ah, al, i), want) << "rep " << rep << " i " << i;
        ASSERT_EQ(r::levinson_recursion_sum_chain(rh, rl, ah, al, i), want) << "rep " << rep << " i " << i;
    }
}

}  // namespace

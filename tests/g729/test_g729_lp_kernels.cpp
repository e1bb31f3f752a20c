// The SSSE3 kernels of the G.729 LP stages against their scalar twins, on
// speech-like and extreme inputs (both builds).
#include <gtest/gtest.h>

#include <cstdint>
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
    }
ZEPS_DECLARE_LP_KERNELS(u8)
ZEPS_DECLARE_LP_KERNELS(n8)

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
        zeps::u8::chebps_x8(x, f, q, y8);
        zeps::n8::chebps_x8(x, f, q, yn);
        for (int k = 0; k < 8; ++k) {
            ASSERT_EQ(y8[k], zeps::u8::chebps(x[k], f, q)) << "rep " << rep << " x " << x[k];
            ASSERT_EQ(yn[k], y8[k]);
        }
    }
    EXPECT_GT(batched, 500);
}

}  // namespace

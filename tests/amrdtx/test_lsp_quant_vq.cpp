// SPDX-License-Identifier: BSD-3-Clause
// The LSP quantisers' codebook searches: the SSSE3 scores, the plain scalar
// scores and the reference's operators (mult, sub/add, saturating L_mac)
// must choose the same row for every codebook and search shape, including
// residuals and weights at the 16-bit extremes and ties.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "amr/amr_dtx_tables.h"
#include "amr/lsp_quant_lsf.h"
#include "amr/lsp_quant_vq.h"
#include "tests/variant_check.h"

namespace {

using namespace zeps::ref::amr_dtx;
namespace tab = zeps::amr_dtx_tab;

struct Book {
    const std::int16_t* dico;
    int n, size, stride;
    bool signed_rows;
};

template <int N>
void expect_same_choice(const Book& b, zeps::test::Rng& rng, int trials) {
    for (int t = 0; t < trials; t++) {
        std::int16_t r[N], wf[N];
        for (int k = 0; k < N; k++) {
            // Residuals: codebook-sized, or a row itself (a tie with 0), or extremes.
            switch (t % 4) {
                case 0: r[k] = static_cast<std::int16_t>(rng.uniform(-3000, 3000)); break;
                case 1: r[k] = b.dico[(t % b.size) * N * b.stride + k]; break;
                default: r[k] = rng.s16(); break;
            }
            wf[k] = static_cast<std::int16_t>(t % 3 ? rng.uniform(8 * 120, 8 * 3427) : rng.uniform(-32376, 32767));
        }
        const int ref = vq_search_ref<N>(r, b.dico, wf, b.size, b.stride, b.signed_rows);
        ASSERT_EQ(vq_search<N>(r, b.dico, wf, b.size, b.stride, b.signed_rows, true), ref) << "trial " << t;
        ASSERT_EQ(vq_search<N>(r, b.dico, wf, b.size, b.stride, b.signed_rows, false), ref) << "trial " << t;
        if (t % 8 == 0) {  // every row's score, either sign
            std::vector<std::uint32_t> fast(static_cast<std::size_t>(b.size * b.stride)), plain(fast.size());
            for (int sign = 1; sign >= -1; sign -= 2) {
                vq_scores<N>(r, b.dico, wf, b.size * b.stride, sign, fast.data());
                vq_scores_scalar<N>(r, b.dico, wf, b.size * b.stride, sign, plain.data());
                ASSERT_EQ(fast, plain) << "trial " << t << " sign " << sign;
            }
        }
    }
}

TEST(AmrLspQuantVq, FastSearchesChooseTheReferenceRow) {
    zeps::test::Rng rng(0x5eed);
    const Book books3[] = {{tab::dico1_lsf_3, 3, tab::kDico1Size, 1, false},
                           {tab::dico2_lsf_3, 3, tab::kDico2Size, 1, false},
                           {tab::dico2_lsf_3, 3, tab::kDico2Size / 2, 2, false},  // MR475/MR515 half search
                           {tab::mr795_1_lsf, 3, tab::kMr795_1Size, 1, false}};
    const Book books4[] = {{tab::dico3_lsf_3, 4, tab::kDico3Size, 1, false},
                           {tab::mr515_3_lsf, 4, tab::kMr515_3Size, 1, false},
                           {tab::dico1_lsf_5, 4, tab::kDico1_5Size, 1, false},
                           {tab::dico3_lsf_5, 4, tab::kDico3_5Size, 1, true},
                           {tab::dico5_lsf_5, 4, tab::kDico5_5Size, 1, false}};
    for (const auto& b : books3) expect_same_choice<3>(b, rng, 400);
    for (const auto& b : books4) expect_same_choice<4>(b, rng, 400);
}

#if defined(__SSSE3__)
TEST(AmrLspQuantVq, LaneMinimaKeepTheFirstSmallestScore) {
    // Few distinct values (ties everywhere), values at and around the 2^30
    // start, scores above 2^31 (the biased compare), every tail length.
    zeps::test::Rng rng(0x30);
    const std::uint32_t kVals[] = {0, 1, 7, 0x3fffffffu, 0x40000000u, 0x40000001u, 0x80000000u, 0xffffffffu};
    for (int t = 0; t < 3000; t++) {
        const int n = static_cast<int>(rng.uniform(1, 70));
        std::vector<std::uint32_t> pos(static_cast<std::size_t>(n)), neg(pos.size()), both;
        for (std::size_t i = 0; i < pos.size(); i++) {
            pos[i] = kVals[rng.uniform(t % 2 ? 3 : 0, 7)];
            neg[i] = kVals[rng.uniform(t % 2 ? 3 : 0, 7)];
            both.push_back(pos[i]);
            both.push_back(neg[i]);
        }
        ASSERT_EQ(vq_first_min_lanes(pos.data(), n), vq_first_min(pos.data(), n)) << "trial " << t;
        ASSERT_EQ(vq_first_min_pairs_lanes(pos.data(), neg.data(), n), vq_first_min(both.data(), 2 * n)) << "trial " << t;
    }
}
#endif

TEST(AmrLspQuantVq, LsfToLspStaysInsideTheCosineTable) {
    // 16384 (4 kHz) gives the reference's table[64]; beyond it and below 0
    // the conversion saturates instead of reading outside the table.
    const std::int16_t lsf[10] = {16384, 20000, 32767, -5, -32768, 0, 256, 128, 16383, 8192};
    std::int16_t lsp[10];
    lsf_to_lsp(lsf, lsp);
    const std::int16_t expected[10] = {-32768, -32768, -32768, 32767, 32767, 32767, 32729,
                                       32748 /* 32767 + (-39 * 128 >> 8) */, -32768, 0};
    for (int i = 0; i < 10; i++) EXPECT_EQ(lsp[i], expected[i]) << i;
}

}  // namespace

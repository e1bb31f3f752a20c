// SPDX-License-Identifier: BSD-3-Clause
// G.729 codec stages: round trips between the encoder and decoder members
// (pitch-delay codes, fixed-codebook codes, gain indices), the synthesis
// filter's overflow report, and both-builds equality of every export of
// the excitation, encoder and post-filter groups. The bit-exact replays of
// whole streams are in tests/codecs/test_g729.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "g729/codec_kernels.h"
#include "tests/g729/g729_stage_util.h"

// The post-processing's range-checked form alone (g729/post_process.cpp).
// The LSP to LP conversion on the saturating chain alone (g729/lsp_to_lpc.cpp).
namespace zeps::u8 {
void g729_post_process_checked(std::int16_t*, int, std::uint8_t*);
void g729_lsp_to_lpc_chain(const std::int16_t*, std::int16_t*);
}  // namespace zeps::u8
#if defined(__x86_64__)  // elsewhere n8 names the one generic build, u8
namespace zeps::n8 {
void g729_post_process_checked(std::int16_t*, int, std::uint8_t*);
void g729_lsp_to_lpc_chain(const std::int16_t*, std::int16_t*);
}  // namespace zeps::n8
#endif

namespace {

using namespace zeps::test::g729st;
namespace u8 = zeps::u8;
namespace n8 = zeps::n8;

TEST(G729CodecStages, LagCodesRoundTrip) {
    for (int index = 0; index < 256; ++index) {
        Zep16s d[2] = {0, 0}, back = -1;
        ASSERT_EQ(u8::zepsDecodeLag_G729_16s(static_cast<Zep16s>(index), 0, d), zepStsNoErr);
        if (index == 0) {  // the shortest delay, 19 + 1/3
            EXPECT_EQ(d[0], 19);
            EXPECT_EQ(d[1], 1);
        }
        ASSERT_EQ(u8::zepsEncodeLag_G729_16s(d, 0, 0, &back), zepStsNoErr) << index;
        EXPECT_EQ(back, index);
    }
    for (Zep16s t1 : {19, 20, 24, 25, 60, 138, 139, 143}) {
        for (int index = 0; index < 32; ++index) {
            Zep16s d[2] = {t1, 0}, back = -1;
            ASSERT_EQ(u8::zepsDecodeLag_G729_16s(static_cast<Zep16s>(index), 1, d), zepStsNoErr);
            ASSERT_EQ(u8::zepsEncodeLag_G729_16s(d, t1, 1, &back), zepStsNoErr) << t1 << " " << index;
            EXPECT_EQ(back, index);
        }
    }
    // Parity: 1 XOR the six most significant bits (2..7) of the code.
    Zep16s p = -1;
    for (int index : {0, 1, 2, 3, 127, 128, 255}) {
        int want = 1;
        for (int b = 2; b <= 7; ++b) want ^= (index >> b) & 1;
        ASSERT_EQ(u8::zepsParityPitch_G729_16s(static_cast<Zep16s>(index), &p), zepStsNoErr);
        EXPECT_EQ(p, want) << index;
    }
}

TEST(G729CodecStages, SearchedCodesDecodeToTheSearchedVectors) {
    zeps::test::Rng rng(29);
    for (int rep = 0; rep < 60; ++rep) {
        const V16 x = small16(rng, 40, 2000);
        const V16 a = stable_lpc(rng);
        V16 h(40, 0), zero(10, 0);
        h[0] = 4096;
        ASSERT_GE(u8::zepsSynthesisFilter_G729_16s(a.data(), h.data(), h.data(), 40, zero.data(), 0), 0);
        const Zep16s lag = static_cast<Zep16s>(rng.uniform(20, 143)), sharp = static_cast<Zep16s>(rng.uniform(3277, 13017));
        Zep16s budget = 30;
        for (int variant = 0; variant < 2; ++variant) {
            V16 code(40), y(40), code2(40);
            Zep16s idx[2];
            const ZepStatus s =
                variant == 0
                    ? u8::zepsFixedCodebookSearch_G729A_16s(x.data(), h.data(), lag, sharp, code.data(), y.data(), idx)
                    : u8::zepsFixedCodebookSearch_G729_16s(x.data(), h.data(), lag, sharp, 0, &budget, code.data(),
                                                           y.data(), idx);
            ASSERT_EQ(s, zepStsNoErr);
            ASSERT_EQ(u8::zepsDecodeFixedCodebook_G729_16s(idx[1], idx[0], code2.data()), zepStsNoErr);
            ASSERT_EQ(u8::zepsPitchSharpening_G729_16s_I(lag, sharp, code2.data()), zepStsNoErr);
            EXPECT_EQ(code, code2) << "variant " << variant;
        }
        // The quantised gains decode to the same gains and predictor memory.
        const V16 y1 = small16(rng, 40, 3000);
        V16 code(40), y2(40);
        Zep16s idx[2];
        u8::zepsFixedCodebookSearch_G729A_16s(x.data(), h.data(), lag, sharp, code.data(), y2.data(), idx);
        Zep16s enc_mem[4] = {-14336, -14336, -14336, -14336}, dec_mem[4] = {-14336, -14336, -14336, -14336};
        for (int k = 0; k < 4; ++k) enc_mem[k] = dec_mem[k] = static_cast<Zep16s>(rng.uniform(-14336, 8000));
        Zep16s gq[2], gd[2], gi = -1;
        ASSERT_EQ(u8::zepsGainQuant_G729_16s(x.data(), y1.data(), code.data(), y2.data(), enc_mem,
                                             static_cast<Zep16s>(rep & 1), gq, &gi),
                  zepStsNoErr);
        ASSERT_EQ(u8::zepsDecodeGain_G729_16s(gi, code.data(), dec_mem, gd), zepStsNoErr);
        EXPECT_EQ(gq[0], gd[0]);
        EXPECT_EQ(gq[1], gd[1]);
        EXPECT_EQ(V16(enc_mem, enc_mem + 4), V16(dec_mem, dec_mem + 4));
        if (rep & 1) {
            EXPECT_LT(gq[0], 16383);  // taming keeps the pitch gain below 1
        }
    }
}

TEST(G729CodecStages, SynthesisOverflowIsReportedWithTheSaturatedOutput) {
    const V16 a = {4096, -8000, 4000, 0, 0, 0, 0, 0, 0, 0, 0};  // resonant
    V16 x(40, 20000), y(40), mem(10, 0);
    EXPECT_EQ(u8::zepsSynthesisFilter_G729_16s(a.data(), x.data(), y.data(), 40, mem.data(), 0), zepStsOverflow);
    EXPECT_EQ(mem, V16(10, 0));  // update 0: memory kept
    bool clamped = false;
    for (Zep16s v : y) clamped = clamped || v == 32767 || v == -32768;
    EXPECT_TRUE(clamped);
    V16 small(40, 10);
    EXPECT_EQ(u8::zepsSynthesisFilter_G729_16s(a.data(), small.data(), y.data(), 40, mem.data(), 1), zepStsNoErr);
    EXPECT_EQ(V16(y.end() - 10, y.end()), mem);
}

// ---- both builds -----------------------------------------------------------

ZEPS_VARIANT_CHECK(zepsDecodeLag_G729_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const Zep16s index = static_cast<Zep16s>(rng.uniform(-2, 258)), sf = static_cast<Zep16s>(rng.uniform(-1, 2));
        both(u8::zepsDecodeLag_G729_16s, n8::zepsDecodeLag_G729_16s, {V16{static_cast<Zep16s>(rng.uniform(15, 150)), 0}},
             [&](auto f, auto& v) { return f(index, sf, v[0].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsEncodeLag_G729_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const V16 d = {static_cast<Zep16s>(rng.uniform(15, 150)), static_cast<Zep16s>(rng.uniform(-2, 2))};
        const Zep16s t1 = static_cast<Zep16s>(rng.uniform(15, 150)), sf = static_cast<Zep16s>(rng.uniform(-1, 2));
        both(u8::zepsEncodeLag_G729_16s, n8::zepsEncodeLag_G729_16s, {d, V16(1, -7)},
             [&](auto f, auto& v) { return f(v[0].data(), t1, sf, v[1].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsParityPitch_G729_16s) {
    for (int index = -1; index <= 256; ++index)
        both(u8::zepsParityPitch_G729_16s, n8::zepsParityPitch_G729_16s, {V16(1, 5)},
             [&](auto f, auto& v) { return f(static_cast<Zep16s>(index), v[0].data()); });
}
ZEPS_VARIANT_CHECK(zepsDecodeFixedCodebook_G729_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const Zep16s s = static_cast<Zep16s>(rng.uniform(-1, 16)), i = static_cast<Zep16s>(rng.uniform(-1, 8192));
        both(u8::zepsDecodeFixedCodebook_G729_16s, n8::zepsDecodeFixedCodebook_G729_16s, {V16(40, 3)},
             [&](auto f, auto& v) { return f(s, i, v[0].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsPitchSharpening_G729_16s_I) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep16s lag = static_cast<Zep16s>(rng.uniform(-1, 45)), sharp = rng.s16();
        both(u8::zepsPitchSharpening_G729_16s_I, n8::zepsPitchSharpening_G729_16s_I, {rand16(rng, 40)},
             [&](auto f, auto& v) { return f(lag, sharp, v[0].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsGainPredict_G729_16s) {
    for (int rep = 0; rep < 40; ++rep)
        both(u8::zepsGainPredict_G729_16s, n8::zepsGainPredict_G729_16s,
             {rand16(rng, 4), rand16(rng, 40), V16(1), V16(1)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), v[2].data(), v[3].data()); });
}
ZEPS_VARIANT_CHECK(zepsGainUpdate_G729_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep32s g = rep < 4 ? rep - 1 : rng.s32();
        both(u8::zepsGainUpdate_G729_16s, n8::zepsGainUpdate_G729_16s, {rand16(rng, 4)},
             [&](auto f, auto& v) { return f(g, v[0].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsDecodeGain_G729_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep16s index = static_cast<Zep16s>(rng.uniform(-1, 128));
        both(u8::zepsDecodeGain_G729_16s, n8::zepsDecodeGain_G729_16s, {rand16(rng, 40), rand16(rng, 4), V16(2)},
             [&](auto f, auto& v) { return f(index, v[0].data(), v[1].data(), v[2].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsDecodeGainErased_G729_16s) {
    for (int rep = 0; rep < 40; ++rep)
        both(u8::zepsDecodeGainErased_G729_16s, n8::zepsDecodeGainErased_G729_16s, {rand16(rng, 4), rand16(rng, 2)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data()); });
}
ZEPS_VARIANT_CHECK(zepsMixExcitation_G729_16s_I) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep16s gp = rng.s16(), gc = rng.s16();
        const int len = static_cast<int>(rng.uniform(0, 40));
        both(u8::zepsMixExcitation_G729_16s_I, n8::zepsMixExcitation_G729_16s_I, {rand16(rng, 40), rand16(rng, 40)},
             [&](auto f, auto& v) { return f(gp, gc, v[0].data(), v[1].data(), len); });
    }
}
ZEPS_VARIANT_CHECK(zepsSynthesisFilter_G729_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 40)), update = static_cast<int>(rep & 1);
        const V16 a = rep % 3 ? stable_lpc(rng) : rand16(rng, 11);
        both(u8::zepsSynthesisFilter_G729_16s, n8::zepsSynthesisFilter_G729_16s,
             {a, rep % 4 ? small16(rng, 40, 3000) : rand16(rng, 40), V16(40), rand16(rng, 10)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), v[2].data(), len, v[3].data(), update); });
    }
}
ZEPS_VARIANT_CHECK(zepsResidual_G729_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 40));
        both(u8::zepsResidual_G729_16s, n8::zepsResidual_G729_16s, {rand16(rng, 11), rand16(rng, 50), V16(40)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data() + 10, v[2].data(), len); });
    }
}
ZEPS_VARIANT_CHECK(zepsWeightLPC_G729_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep16s g = rng.s16();
        both(u8::zepsWeightLPC_G729_16s, n8::zepsWeightLPC_G729_16s, {rand16(rng, 11), V16(11)},
             [&](auto f, auto& v) { return f(v[0].data(), g, v[1].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsWeightingDenominator_G729A_16s) {
    for (int rep = 0; rep < 40; ++rep)
        both(u8::zepsWeightingDenominator_G729A_16s, n8::zepsWeightingDenominator_G729A_16s, {rand16(rng, 11), V16(11)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data()); });
}
ZEPS_VARIANT_CHECK(zepsFixedCodebookSearch_G729A_16s) {
    for (int rep = 0; rep < 30; ++rep) {
        const Zep16s lag = static_cast<Zep16s>(rng.uniform(0, 143)), sharp = static_cast<Zep16s>(rng.uniform(3277, 13017));
        both(u8::zepsFixedCodebookSearch_G729A_16s, n8::zepsFixedCodebookSearch_G729A_16s,
             {rep % 2 ? small16(rng, 40, 3000) : rand16(rng, 40), rep % 3 ? small16(rng, 40, 8000) : rand16(rng, 40),
              V16(40), V16(40), V16(2)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), lag, sharp, v[2].data(), v[3].data(), v[4].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsFixedCodebookSearch_G729_16s) {
    for (int rep = 0; rep < 30; ++rep) {
        const Zep16s lag = static_cast<Zep16s>(rng.uniform(0, 143)), sharp = static_cast<Zep16s>(rng.uniform(3277, 13017));
        const Zep16s sf = static_cast<Zep16s>(rng.uniform(-1, 1));
        both(u8::zepsFixedCodebookSearch_G729_16s, n8::zepsFixedCodebookSearch_G729_16s,
             {rep % 2 ? small16(rng, 40, 3000) : rand16(rng, 40), rep % 3 ? small16(rng, 40, 8000) : rand16(rng, 40),
              V16{static_cast<Zep16s>(rng.uniform(0, 105))}, V16(40), V16(40), V16(2)},
             [&](auto f, auto& v) {
                 return f(v[0].data(), v[1].data(), lag, sharp, sf, v[2].data(), v[3].data(), v[4].data(), v[5].data());
             });
    }
}
ZEPS_VARIANT_CHECK(zepsWeightingFactors_G729_16s) {
    for (int rep = 0; rep < 40; ++rep)
        both(u8::zepsWeightingFactors_G729_16s, n8::zepsWeightingFactors_G729_16s,
             {rand16(rng, 10), rand16(rng, 10), rand16(rng, 2),
              V16{rng.s16(), rng.s16(), static_cast<Zep16s>(rng.uniform(-1, 2))}, V16(4)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), v[2].data(), v[3].data(), v[4].data()); });
}
ZEPS_VARIANT_CHECK(zepsPitchGain_G729_16s) {
    for (int rep = 0; rep < 40; ++rep)
        both(u8::zepsPitchGain_G729_16s, n8::zepsPitchGain_G729_16s, {rand16(rng, 40), rand16(rng, 40), V16(1)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), v[2].data()); });
}
ZEPS_VARIANT_CHECK(zepsGainQuant_G729_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep16s tame = static_cast<Zep16s>(rng.uniform(-1, 2));
        both(u8::zepsGainQuant_G729_16s, n8::zepsGainQuant_G729_16s,
             {rand16(rng, 40), rand16(rng, 40), rand16(rng, 40), rand16(rng, 40), rand16(rng, 4), V16(2), V16(1)},
             [&](auto f, auto& v) {
                 return f(v[0].data(), v[1].data(), v[2].data(), v[3].data(), v[4].data(), tame, v[5].data(), v[6].data());
             });
    }
}
ZEPS_VARIANT_CHECK(zepsTamingTest_G729_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const V32 err = rng.vec<std::int32_t>(4);
        const Zep16s d[2] = {static_cast<Zep16s>(rng.uniform(-1, 146)), static_cast<Zep16s>(rng.uniform(-2, 2))};
        Zep16s a = 7, b = 7;
        EXPECT_EQ(u8::zepsTamingTest_G729_16s(err.data(), d, &a), n8::zepsTamingTest_G729_16s(err.data(), d, &b));
        EXPECT_EQ(a, b);
    }
}
ZEPS_VARIANT_CHECK(zepsTamingUpdate_G729_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        V32 a = rng.vec<std::int32_t>(4), b = a;
        const Zep16s g = rng.s16(), lag = static_cast<Zep16s>(rng.uniform(-1, 146));
        EXPECT_EQ(u8::zepsTamingUpdate_G729_16s(g, lag, a.data()), n8::zepsTamingUpdate_G729_16s(g, lag, b.data()));
        EXPECT_EQ(a, b);
    }
}
ZEPS_VARIANT_CHECK(zepsWeightedErrorMemory_G729_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep16s gp = rng.s16(), gc = rng.s16();
        both(u8::zepsWeightedErrorMemory_G729_16s, n8::zepsWeightedErrorMemory_G729_16s,
             {rand16(rng, 40), rand16(rng, 40), rand16(rng, 40), V16(10)},
             [&](auto f, auto& v) { return f(gp, gc, v[0].data(), v[1].data(), v[2].data(), v[3].data()); });
    }
}

// Post-filters: a run of subframes on each build's own state.
template <class Size, class Init, class Run>
void post_filter_run(Size su, Size sn, Init iu, Init in, Run run) {
    Zep32s za = 0, zb = 1;
    EXPECT_EQ(su(&za), sn(&zb));
    EXPECT_EQ(za, zb);
    EXPECT_EQ(su(nullptr), zepStsNullPtrErr);
    std::vector<Zep8u> a(static_cast<std::size_t>(za), 0x5a), b(static_cast<std::size_t>(zb), 0xa5);
    EXPECT_EQ(iu(a.data()), in(b.data()));
    EXPECT_EQ(a, b);
    for (int rep = 0; rep < 40; ++rep) run(a, b, rep);
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPostFilterGetStateSize_G729A_16s) {
    Zep32s a = 0, b = 1;
    EXPECT_EQ(u8::zepsPostFilterGetStateSize_G729A_16s(&a), n8::zepsPostFilterGetStateSize_G729A_16s(&b));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPostFilterInit_G729A_16s) {
    std::vector<Zep8u> a(616, 1), b(616, 2);
    EXPECT_EQ(u8::zepsPostFilterInit_G729A_16s(a.data()), n8::zepsPostFilterInit_G729A_16s(b.data()));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPostFilter_G729A_16s) {
    post_filter_run(u8::zepsPostFilterGetStateSize_G729A_16s, n8::zepsPostFilterGetStateSize_G729A_16s,
                    u8::zepsPostFilterInit_G729A_16s, n8::zepsPostFilterInit_G729A_16s,
                    [&](std::vector<Zep8u>& a, std::vector<Zep8u>& b, int rep) {
                        const V16 lpc = rep % 5 ? stable_lpc(rng) : rand16(rng, 11);
                        V16 x = rep % 7 ? small16(rng, 40, 6000) : rand16(rng, 40), y = x;
                        const Zep16s lag = static_cast<Zep16s>(rng.uniform(17, 146));
                        EXPECT_EQ(u8::zepsPostFilter_G729A_16s(lag, lpc.data(), x.data(), a.data()),
                                  n8::zepsPostFilter_G729A_16s(lag, lpc.data(), y.data(), b.data()));
                        EXPECT_EQ(x, y);
                    });
}
ZEPS_VARIANT_CHECK(zepsPostFilterInactive_G729A_16s) {
    post_filter_run(u8::zepsPostFilterGetStateSize_G729A_16s, n8::zepsPostFilterGetStateSize_G729A_16s,
                    u8::zepsPostFilterInit_G729A_16s, n8::zepsPostFilterInit_G729A_16s,
                    [&](std::vector<Zep8u>& a, std::vector<Zep8u>& b, int rep) {
                        const V16 lpc = rep % 5 ? stable_lpc(rng) : rand16(rng, 11);
                        V16 x = rep % 7 ? small16(rng, 40, 6000) : rand16(rng, 40), y = x;
                        EXPECT_EQ(u8::zepsPostFilterInactive_G729A_16s(lpc.data(), x.data(), a.data()),
                                  n8::zepsPostFilterInactive_G729A_16s(lpc.data(), y.data(), b.data()));
                        EXPECT_EQ(x, y);
                    });
}
ZEPS_VARIANT_CHECK(zepsPostFilterGetStateSize_G729_16s) {
    Zep32s a = 0, b = 1;
    EXPECT_EQ(u8::zepsPostFilterGetStateSize_G729_16s(&a), n8::zepsPostFilterGetStateSize_G729_16s(&b));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPostFilterInit_G729_16s) {
    std::vector<Zep8u> a(348, 1), b(348, 2);
    EXPECT_EQ(u8::zepsPostFilterInit_G729_16s(a.data()), n8::zepsPostFilterInit_G729_16s(b.data()));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPostFilter_G729_16s) {
    post_filter_run(u8::zepsPostFilterGetStateSize_G729_16s, n8::zepsPostFilterGetStateSize_G729_16s,
                    u8::zepsPostFilterInit_G729_16s, n8::zepsPostFilterInit_G729_16s,
                    [&](std::vector<Zep8u>& a, std::vector<Zep8u>& b, int rep) {
                        const V16 lpc = rep % 5 ? stable_lpc(rng) : rand16(rng, 11);
                        const V16 x = rep % 7 ? small16(rng, 40, 6000) : rand16(rng, 40);
                        V16 ya(40), yb(40);
                        Zep16s va = -1, vb = -1;
                        const Zep16s lag = static_cast<Zep16s>(rng.uniform(17, 144));
                        EXPECT_EQ(u8::zepsPostFilter_G729_16s(lag, lpc.data(), x.data(), ya.data(), &va, a.data()),
                                  n8::zepsPostFilter_G729_16s(lag, lpc.data(), x.data(), yb.data(), &vb, b.data()));
                        EXPECT_EQ(ya, yb);
                        EXPECT_EQ(va, vb);
                    });
}
ZEPS_VARIANT_CHECK(zepsPostFilterInactive_G729_16s) {
    post_filter_run(u8::zepsPostFilterGetStateSize_G729_16s, n8::zepsPostFilterGetStateSize_G729_16s,
                    u8::zepsPostFilterInit_G729_16s, n8::zepsPostFilterInit_G729_16s,
                    [&](std::vector<Zep8u>& a, std::vector<Zep8u>& b, int rep) {
                        const V16 lpc = rep % 5 ? stable_lpc(rng) : rand16(rng, 11);
                        const V16 x = rep % 7 ? small16(rng, 40, 6000) : rand16(rng, 40);
                        V16 ya(40), yb(40);
                        EXPECT_EQ(u8::zepsPostFilterInactive_G729_16s(lpc.data(), x.data(), ya.data(), a.data()),
                                  n8::zepsPostFilterInactive_G729_16s(lpc.data(), x.data(), yb.data(), b.data()));
                        EXPECT_EQ(ya, yb);
                    });
}
ZEPS_VARIANT_CHECK(zepsPostProcess_G729_16s_I) {
    const Zep16s c[6] = {7699, -15398, 7699, 8192, 15836, -7667};
    std::vector<Zep8u> a(24), b(24);
    u8::zepsHighPassFilterInit_G729(c, a.data());
    n8::zepsHighPassFilterInit_G729(c, b.data());
    for (int rep = 0; rep < 30; ++rep) {
        V16 x = rand16(rng, 80), y = x;
        const int len = static_cast<int>(rng.uniform(0, 80));
        EXPECT_EQ(u8::zepsPostProcess_G729_16s_I(x.data(), len, a.data()),
                  n8::zepsPostProcess_G729_16s_I(y.data(), len, b.data()));
        EXPECT_EQ(x, y);
        EXPECT_EQ(a, b);
    }
}


/// The post-processing's fast form (any inputs and memories: quiet samples,
/// inputs near full scale that drive the later taps, the shifts and the
/// rounding into saturation) against the range-checked form, both builds:
/// outputs and states equal.
template <class Export, class Checked>
void post_process_fast_agrees(Export exported, Checked checked) {
    zeps::test::Rng rng(53);
    // The 100 Hz filter, unequal taps, taps whose doubled input part just
    // fits a 32-bit lane (65536 32700), and input taps too large for it
    // (the exported function then takes the checked form).
    const Zep16s coefs[4][6] = {{7699, -15398, 7699, 8192, 15836, -7667},
                                {5000, -12000, 9000, 8192, 15836, -7667},
                                {20000, 11000, -1700, 8192, 1200, -900},
                                {30000, 32767, -28000, 8192, 1200, -900}};
    for (int rep = 0; rep < 4000; ++rep) {
        std::vector<Zep8u> a(24), b;
        u8::zepsHighPassFilterInit_G729(coefs[rep / 4 % 4], a.data());
        const int lims[4] = {9858, 32767, static_cast<int>(rng.uniform(0, 9858)), static_cast<int>(rng.uniform(0, 32767))};
        const int lim = lims[rep % 4];
        V16 mem = small16(rng, 2, lim);
        const std::int32_t y[2] = {rep % 8 == 1 ? INT32_MAX : rng.s32(), rep % 8 == 2 ? INT32_MIN : rng.s32()};
        std::memcpy(a.data(), y, sizeof y);
        std::memcpy(a.data() + 8, mem.data(), 4);
        b = a;
        V16 x = lim == 32767 ? rand16(rng, 80) : small16(rng, 80, lim), z = x;
        const int len = static_cast<int>(rng.uniform(1, 80));
        ASSERT_EQ(exported(x.data(), len, a.data()), zepStsNoErr);
        checked(z.data(), len, b.data());
        ASSERT_EQ(x, z) << "rep " << rep;
        ASSERT_EQ(a, b) << "rep " << rep;
    }
}

TEST(G729CodecStages, PostProcessFastFormEqualsCheckedForm) {
    post_process_fast_agrees(u8::zepsPostProcess_G729_16s_I, u8::g729_post_process_checked);
    post_process_fast_agrees(n8::zepsPostProcess_G729_16s_I, n8::g729_post_process_checked);
}

/// The LSP to LP conversion's plain polynomial expansion against the
/// saturating chain, both builds: ordered cosines (speech), any samples,
/// and constant or alternating extremes that drive the chain into
/// saturation (and -32768, which the plain form leaves to the chain).
template <class Export, class Chain>
void lsp_to_lpc_plain_agrees(Export exported, Chain chain) {
    zeps::test::Rng rng(729);
    for (int rep = 0; rep < 6000; ++rep) {
        V16 lsp(10);
        const int kind = rep % 4;
        if (kind == 0) {  // ordered cosines of random frequencies
            std::vector<double> w(10);
            for (auto& v : w) v = rng.uniform(1, 32000) * (3.14159265358979 / 32768.0);
            std::sort(w.begin(), w.end());
            for (int i = 0; i < 10; ++i) lsp[i] = static_cast<Zep16s>(std::lround(32767.0 * std::cos(w[i])));
        } else if (kind == 1) {
            lsp = rand16(rng, 10);
        } else {
            const Zep16s ends[4] = {32767, -32767, -32768, static_cast<Zep16s>(rng.uniform(-32768, 32767))};
            for (int i = 0; i < 10; ++i) {
                const Zep16s v = ends[(rep / 4 + (kind == 3 ? i : 0)) % 4];
                lsp[i] = rng.uniform(0, 3) == 0 ? static_cast<Zep16s>(rng.uniform(-32768, 32767)) : v;
            }
        }
        V16 a(11, 0x5a5a), b(11, 0x5a5a);
        ASSERT_EQ(exported(lsp.data(), a.data()), zepStsNoErr);
        chain(lsp.data(), b.data());
        ASSERT_EQ(a, b) << "rep " << rep;
    }
}

TEST(G729CodecStages, LspToLpcPlainFormEqualsChain) {
    lsp_to_lpc_plain_agrees(u8::zepsLSPToLPC_G729_16s, u8::g729_lsp_to_lpc_chain);
#if defined(__x86_64__)
    lsp_to_lpc_plain_agrees(n8::zepsLSPToLPC_G729_16s, n8::g729_lsp_to_lpc_chain);
#endif
}

// The decoder's gain memory update (a table of the codebook rows) against
// Gain_update on the rows' correction, every index, both builds.
TEST(G729CodecStages, DecodedGainMemoryEqualsGainUpdate) {
    V16 code(40, 0);
    code[3] = 8191, code[17] = -8192;
    for (int index = 0; index < 128; ++index) {
        const int i1 = zeps::imap1[index >> 4], i2 = zeps::imap2[index & 15];
        std::int16_t want[4] = {-14336, 100, -200, 300};
        zeps::ref::g729c::gain_update(want, zeps::ref::L_add(zeps::gbk1[i1][1], zeps::gbk2[i2][1]));
        for (auto dec : {u8::zepsDecodeGain_G729_16s, n8::zepsDecodeGain_G729_16s}) {
            V16 mem = {-14336, 100, -200, 300}, gains(2);
            ASSERT_EQ(dec(static_cast<Zep16s>(index), code.data(), mem.data(), gains.data()), zepStsNoErr);
            ASSERT_EQ(mem, V16(want, want + 4)) << "index " << index;
        }
    }
}

}  // namespace

// ---- no-rounding synthesis filters and constant multiply -----------------

namespace {

TEST(CommonNR, SynthesisTruncatesWhereTheG729FilterRounds) {
    // a = {4096, -2048}: y[n] = x[n] + y[n-1] / 2 in Q12, shift 12.
    const V16 a = {4096, -2048, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const V16 x = {3, 0, 0, 0, -3, 0};
    V16 y(6), mem(10, 0);
    ASSERT_EQ(u8::zepsSynthesisFilter_NR_16s_Sfs(a.data(), x.data(), y.data(), 6, 12, mem.data()), zepStsNoErr);
    EXPECT_EQ(y, (V16{3, 1, 0, 0, -3, -2}));  // 3/2 -> 1, -3/2 -> -2: toward minus infinity
    V16 r(6);
    ASSERT_EQ(u8::zepsSynthesisFilter_G729_16s(a.data(), x.data(), r.data(), 6, mem.data(), 0), zepStsNoErr);
    EXPECT_EQ(r, (V16{3, 2, 1, 1, -2, -1}));  // the rounding member
    // Zero-state response equals the Sfs member with zero memory; ISfs updates the memory.
    V16 z(6), io = x;
    ASSERT_EQ(u8::zepsSynthesisFilterZeroStateResponse_NR_16s(a.data(), x.data(), z.data(), 6, 12), zepStsNoErr);
    EXPECT_EQ(z, y);
    ASSERT_EQ(u8::zepsSynthesisFilter_NR_16s_ISfs(a.data(), io.data(), 6, 12, mem.data()), zepStsNoErr);
    EXPECT_EQ(io, y);
    EXPECT_EQ(V16(mem.begin() + 4, mem.end()), y);
    // Order 1 of the Low member ignores the other coefficients.
    V16 a_low = a, lo = x, lm(10, 0);
    a_low[5] = 30000;
    ASSERT_EQ(u8::zepsSynthesisFilterLow_NR_16s_ISfs(a_low.data(), lo.data(), 6, 1, 12, lm.data()), zepStsNoErr);
    EXPECT_EQ(lo, y);
}

TEST(CommonNR, OverflowAndMultiplyBoundaries) {
    const V16 a = {4096, -4096, 0, 0, 0, 0, 0, 0, 0, 0, 0};  // integrator
    V16 x(40, 30000), y(40, 0), mem(10, 0);
    EXPECT_EQ(u8::zepsSynthesisFilter_NR_16s_Sfs(a.data(), x.data(), y.data(), 40, 12, mem.data()), zepStsOverflow);
    EXPECT_EQ(y.back(), 32767);
    const V16 s = {-32768, 32767, -1, 3};
    V16 d(4, 7);
    ASSERT_EQ(u8::zepsMulC_NR_16s_Sfs(s.data(), -32768, d.data(), 4, 15), zepStsNoErr);
    EXPECT_EQ(d, (V16{32767, -32767, 1, -3}));  // 2^30 >> 15 saturates; -1 * -32768 >> 15 = 1
    V16 keep(4, 7);
    EXPECT_EQ(u8::zepsMulC_NR_16s_Sfs(s.data(), 2, keep.data(), 4, 32), zepStsScaleRangeErr);
    EXPECT_EQ(keep, V16(4, 7));
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsSynthesisFilter_NR_16s_Sfs) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 40)), sf = static_cast<int>(rng.uniform(-1, 32));
        both(u8::zepsSynthesisFilter_NR_16s_Sfs, n8::zepsSynthesisFilter_NR_16s_Sfs,
             {rep % 2 ? stable_lpc(rng) : rand16(rng, 11), rand16(rng, 40), V16(40), rand16(rng, 10)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), v[2].data(), len, sf, v[3].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsSynthesisFilter_NR_16s_ISfs) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 40)), sf = static_cast<int>(rng.uniform(-1, 32));
        both(u8::zepsSynthesisFilter_NR_16s_ISfs, n8::zepsSynthesisFilter_NR_16s_ISfs,
             {rep % 2 ? stable_lpc(rng) : rand16(rng, 11), rand16(rng, 40), rand16(rng, 10)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), len, sf, v[2].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsSynthesisFilterLow_NR_16s_ISfs) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 40)), sf = static_cast<int>(rng.uniform(-1, 32));
        const int order = static_cast<int>(rng.uniform(0, 11));
        both(u8::zepsSynthesisFilterLow_NR_16s_ISfs, n8::zepsSynthesisFilterLow_NR_16s_ISfs,
             {rand16(rng, 11), rand16(rng, 40), rand16(rng, 10)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), len, order, sf, v[2].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsSynthesisFilterZeroStateResponse_NR_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 40)), sf = static_cast<int>(rng.uniform(-1, 32));
        both(u8::zepsSynthesisFilterZeroStateResponse_NR_16s, n8::zepsSynthesisFilterZeroStateResponse_NR_16s,
             {rand16(rng, 11), rand16(rng, 40), V16(40)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), v[2].data(), len, sf); });
    }
}
ZEPS_VARIANT_CHECK(zepsMulC_NR_16s_Sfs) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 40)), sf = static_cast<int>(rng.uniform(-1, 32));
        const Zep16s val = rng.s16();
        both(u8::zepsMulC_NR_16s_Sfs, n8::zepsMulC_NR_16s_Sfs, {rand16(rng, 40), V16(40)},
             [&](auto f, auto& v) { return f(v[0].data(), val, v[1].data(), len, sf); });
    }
}

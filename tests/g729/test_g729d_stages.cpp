// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D stages: round trips between the encoder and decoder members
// (4-bit lag codes, 11-bit fixed-codebook codes, 6-bit gain indices), the
// phase dispersion's limiting cases, and both-builds equality of every
// Annex D export. The bit-exact replays of whole streams are in
// tests/codecs/test_g729d.cpp.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tests/g729/g729_stage_util.h"

namespace {

using namespace zeps::test::g729st;
namespace u8 = zeps::u8;
namespace n8 = zeps::n8;

TEST(G729DStages, LagCodesRoundTrip) {
    for (Zep16s t1 : {19, 20, 24, 25, 60, 138, 139, 143}) {
        Zep16s prev_lag = 0, prev_frac = -2;
        for (int index = 0; index < 16; ++index) {
            Zep16s d[2] = {t1, 0}, back = -1;
            ASSERT_EQ(u8::zepsDecodeLag_G729D_16s(static_cast<Zep16s>(index), 1, d), zepStsNoErr);
            ASSERT_EQ(u8::zepsEncodeLag_G729D_16s(d, t1, 1, &back), zepStsNoErr) << t1 << " " << index;
            EXPECT_EQ(back, index);
            // The codes are in increasing delay order.
            EXPECT_GT(3 * d[0] + d[1], 3 * prev_lag + prev_frac) << t1 << " " << index;
            prev_lag = d[0];
            prev_frac = d[1];
        }
    }
    // Delays outside the 4-bit grid have no code; subframe 0 is the main body's.
    const Zep16s no_code[][2] = {{55, 1}, {58, -1}, {61, 1}, {62, 1}, {65, 0}, {54, 0}};  // t0_min 55
    for (const auto& d : no_code) {
        Zep16s index = -7;
        EXPECT_EQ(u8::zepsEncodeLag_G729D_16s(d, 60, 1, &index), zepStsOutOfRangeErr) << d[0] << " " << d[1];
        EXPECT_EQ(index, -7);
    }
    for (int index = 0; index < 256; index += 17) {
        Zep16s a[2] = {0, 0}, b[2] = {0, 0};
        ASSERT_EQ(u8::zepsDecodeLag_G729D_16s(static_cast<Zep16s>(index), 0, a), zepStsNoErr);
        ASSERT_EQ(u8::zepsDecodeLag_G729_16s(static_cast<Zep16s>(index), 0, b), zepStsNoErr);
        EXPECT_EQ(V16(a, a + 2), V16(b, b + 2));
    }
}

TEST(G729DStages, SearchedCodesAndGainsDecodeToTheSearchedValues) {
    zeps::test::Rng rng(41);
    for (int rep = 0; rep < 60; ++rep) {
        const V16 x = small16(rng, 40, 2000), y1 = small16(rng, 40, 3000);
        V16 h(40, 0), zero(10, 0);
        h[0] = 4096;
        const V16 a = {4096, static_cast<Zep16s>(rng.uniform(-5000, 5000)), static_cast<Zep16s>(rng.uniform(-2000, 2000)),
                       0, 0, 0, 0, 0, 0, 0, 0};
        ASSERT_GE(u8::zepsSynthesisFilter_G729_16s(a.data(), h.data(), h.data(), 40, zero.data(), 0), 0);
        const Zep16s lag = static_cast<Zep16s>(rng.uniform(20, 143)), sharp = static_cast<Zep16s>(rng.uniform(3277, 13017));
        V16 code(40), y2(40), code2(40);
        Zep16s idx[2];
        ASSERT_EQ(u8::zepsFixedCodebookSearch_G729D_16s(x.data(), h.data(), lag, sharp, code.data(), y2.data(), idx),
                  zepStsNoErr);
        ASSERT_EQ(u8::zepsDecodeFixedCodebook_G729D_16s(idx[1], idx[0], code2.data()), zepStsNoErr);
        ASSERT_EQ(u8::zepsPitchSharpening_G729_16s_I(lag, sharp, code2.data()), zepStsNoErr);
        EXPECT_EQ(code, code2);
        Zep16s enc_mem[4], dec_mem[4];
        for (int k = 0; k < 4; ++k) enc_mem[k] = dec_mem[k] = static_cast<Zep16s>(rng.uniform(-14336, 8000));
        Zep16s gq[2], gd[2], gi = -1;
        ASSERT_EQ(u8::zepsGainQuant_G729D_16s(x.data(), y1.data(), code.data(), y2.data(), enc_mem,
                                              static_cast<Zep16s>(rep & 1), gq, &gi),
                  zepStsNoErr);
        ASSERT_EQ(u8::zepsDecodeGain_G729D_16s(gi, code.data(), dec_mem, gd), zepStsNoErr);
        EXPECT_EQ(V16(gq, gq + 2), V16(gd, gd + 2));
        EXPECT_EQ(V16(enc_mem, enc_mem + 4), V16(dec_mem, dec_mem + 4));
        if (rep & 1) {
            EXPECT_LT(gq[0], 16383);  // taming keeps the pitch gain below 1
        }
    }
    // Two pulses on one position add: both tracks hold position 1.
    V16 c(40, 7);
    ASSERT_EQ(u8::zepsDecodeFixedCodebook_G729D_16s(3, 20 << 4, c.data()), zepStsNoErr);  // Gray 20 -> entry 24: position 1
    EXPECT_EQ(c[1], 16382);
}

TEST(G729DStages, PhaseDispersionLimits) {
    Zep32s size = 0;
    ASSERT_EQ(u8::zepsPhaseDispersionGetStateSize_G729D(&size), zepStsNoErr);
    EXPECT_EQ(size, 20);
    std::vector<Zep8u> st(20, 0xAB);
    ASSERT_EQ(u8::zepsPhaseDispersionInit_G729D(st.data()), zepStsNoErr);
    zeps::test::Rng rng(5);
    const V16 exc = small16(rng, 40, 5000);
    V16 code(40, 0), out(40);
    code[3] = 8191;
    code[17] = -8192;
    // A strongly voiced run (pitch gain 1.0) disperses nothing: the output is the input.
    for (int k = 0; k < 8; ++k)
        ASSERT_EQ(u8::zepsPhaseDispersionUpdate_G729D_16s(16384, 100, st.data()), zepStsNoErr);
    ASSERT_EQ(u8::zepsPhaseDispersion_G729D_16s(exc.data(), 100, 16384, code.data(), out.data(), st.data()), zepStsNoErr);
    for (int i = 0; i < 40; ++i) EXPECT_LE(std::abs(out[i] - exc[i]), 1) << i;
    // An unvoiced run spreads each pulse over the whole subframe; a zero code gain changes nothing.
    V16 spread(40);
    for (int k = 0; k < 8; ++k)
        ASSERT_EQ(u8::zepsPhaseDispersion_G729D_16s(exc.data(), 2000, 0, code.data(), spread.data(), st.data()),
                  zepStsNoErr);
    int changed = 0;
    for (int i = 0; i < 40; ++i) changed += spread[i] != exc[i];
    EXPECT_GT(changed, 30);
    ASSERT_EQ(u8::zepsPhaseDispersion_G729D_16s(exc.data(), 0, 0, code.data(), out.data(), st.data()), zepStsNoErr);
    EXPECT_EQ(out, exc);
}

// ---- both builds -----------------------------------------------------------

ZEPS_VARIANT_CHECK(zepsDecodeLag_G729D_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const Zep16s index = static_cast<Zep16s>(rng.uniform(-2, 258)), sf = static_cast<Zep16s>(rng.uniform(-1, 2));
        both(u8::zepsDecodeLag_G729D_16s, n8::zepsDecodeLag_G729D_16s, {V16{static_cast<Zep16s>(rng.uniform(15, 150)), 0}},
             [&](auto f, auto& v) { return f(index, sf, v[0].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsEncodeLag_G729D_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const V16 d = {static_cast<Zep16s>(rng.uniform(15, 150)), static_cast<Zep16s>(rng.uniform(-2, 2))};
        const Zep16s t1 = static_cast<Zep16s>(rng.uniform(15, 150)), sf = static_cast<Zep16s>(rng.uniform(-1, 2));
        both(u8::zepsEncodeLag_G729D_16s, n8::zepsEncodeLag_G729D_16s, {d, V16(1, -7)},
             [&](auto f, auto& v) { return f(v[0].data(), t1, sf, v[1].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsDecodeFixedCodebook_G729D_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const Zep16s s = static_cast<Zep16s>(rng.uniform(-1, 4)), i = static_cast<Zep16s>(rng.uniform(-1, 512));
        both(u8::zepsDecodeFixedCodebook_G729D_16s, n8::zepsDecodeFixedCodebook_G729D_16s, {V16(40, 3)},
             [&](auto f, auto& v) { return f(s, i, v[0].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsFixedCodebookSearch_G729D_16s) {
    for (int rep = 0; rep < 30; ++rep) {
        const Zep16s lag = static_cast<Zep16s>(rng.uniform(0, 143)), sharp = static_cast<Zep16s>(rng.uniform(3277, 13017));
        both(u8::zepsFixedCodebookSearch_G729D_16s, n8::zepsFixedCodebookSearch_G729D_16s,
             {rep % 2 ? small16(rng, 40, 3000) : rand16(rng, 40), rep % 3 ? small16(rng, 40, 8000) : rand16(rng, 40),
              V16(40), V16(40), V16(2)},
             [&](auto f, auto& v) { return f(v[0].data(), v[1].data(), lag, sharp, v[2].data(), v[3].data(), v[4].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsDecodeGain_G729D_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep16s index = static_cast<Zep16s>(rng.uniform(-1, 64));
        both(u8::zepsDecodeGain_G729D_16s, n8::zepsDecodeGain_G729D_16s, {rand16(rng, 40), rand16(rng, 4), V16(2)},
             [&](auto f, auto& v) { return f(index, v[0].data(), v[1].data(), v[2].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsGainQuant_G729D_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const Zep16s tame = static_cast<Zep16s>(rng.uniform(-1, 2));
        both(u8::zepsGainQuant_G729D_16s, n8::zepsGainQuant_G729D_16s,
             {rand16(rng, 40), rand16(rng, 40), rand16(rng, 40), rand16(rng, 40), rand16(rng, 4), V16(2), V16(1)},
             [&](auto f, auto& v) {
                 return f(v[0].data(), v[1].data(), v[2].data(), v[3].data(), v[4].data(), tame, v[5].data(), v[6].data());
             });
    }
}
ZEPS_VARIANT_CHECK(zepsPhaseDispersionGetStateSize_G729D) {
    Zep32s a = 0, b = 1;
    EXPECT_EQ(u8::zepsPhaseDispersionGetStateSize_G729D(&a), n8::zepsPhaseDispersionGetStateSize_G729D(&b));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPhaseDispersionInit_G729D) {
    std::vector<Zep8u> a(20, 1), b(20, 2);
    EXPECT_EQ(u8::zepsPhaseDispersionInit_G729D(a.data()), n8::zepsPhaseDispersionInit_G729D(b.data()));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPhaseDispersion_G729D_16s) {
    std::vector<Zep8u> a(20), b(20);
    u8::zepsPhaseDispersionInit_G729D(a.data());
    n8::zepsPhaseDispersionInit_G729D(b.data());
    for (int rep = 0; rep < 60; ++rep) {
        const Zep16s gc = rep % 5 ? static_cast<Zep16s>(rng.uniform(0, 4000)) : rng.s16();
        const Zep16s gp = static_cast<Zep16s>(rng.uniform(0, 19661));
        V16 code(40, 0);
        for (int k = 0; k < 3; ++k) code[rng.uniform(0, 39)] = rng.s16();
        const V16 exc = rep % 4 ? small16(rng, 40, 8000) : rand16(rng, 40);
        V16 x(40), y(40);
        EXPECT_EQ(u8::zepsPhaseDispersion_G729D_16s(exc.data(), gc, gp, code.data(), x.data(), a.data()),
                  n8::zepsPhaseDispersion_G729D_16s(exc.data(), gc, gp, code.data(), y.data(), b.data()));
        EXPECT_EQ(x, y);
        EXPECT_EQ(a, b);
    }
}
ZEPS_VARIANT_CHECK(zepsPhaseDispersionUpdate_G729D_16s) {
    std::vector<Zep8u> a(20), b(20);
    u8::zepsPhaseDispersionInit_G729D(a.data());
    n8::zepsPhaseDispersionInit_G729D(b.data());
    for (int rep = 0; rep < 20; ++rep) {
        const Zep16s gp = rng.s16(), gc = rng.s16();
        EXPECT_EQ(u8::zepsPhaseDispersionUpdate_G729D_16s(gp, gc, a.data()),
                  n8::zepsPhaseDispersionUpdate_G729D_16s(gp, gc, b.data()));
        EXPECT_EQ(a, b);
    }
}

}  // namespace

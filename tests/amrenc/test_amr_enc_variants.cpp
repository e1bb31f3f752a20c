// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR encoder exports: both processor builds give the same bytes and
// statuses on random, extreme and invalid arguments.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"

namespace {

using V16 = std::vector<std::int16_t>;
using V32 = std::vector<std::int32_t>;
using Bytes = std::vector<std::uint8_t>;
constexpr std::int32_t kRates[8] = {0, 1, 3, 6, 7, 8, 11, 12};

std::int32_t some_rate(zeps::test::Rng& rng) {
    return rng.chance(8) ? static_cast<std::int32_t>(rng.uniform(-1, 26)) : kRates[rng.uniform(0, 7)];
}
V16 small(zeps::test::Rng& rng, std::size_t n, std::int64_t lo, std::int64_t hi) {
    V16 v(n);
    for (auto& x : v) x = static_cast<std::int16_t>(rng.chance(16) ? rng.s16() : rng.uniform(lo, hi));
    return v;
}
/// A(z) of n subframes: a[0] = 4096, moderate coefficients.
V16 lpc(zeps::test::Rng& rng, std::size_t n) {
    V16 a = small(rng, 11 * n, -3000, 3000);
    for (std::size_t s = 0; s < n; s++) a[11 * s] = 4096;
    return a;
}
template <class T>
T* as(Bytes& b) { return reinterpret_cast<T*>(b.data()); }

}  // namespace

ZEPS_VARIANT_CHECK(zepsAutoCorr_GSMAMR_16s32s) {
    for (int t = 0; t < 60; t++) {
        const V16 x = rng.chance(4) ? V16(240, rng.s16()) : rng.vec<std::int16_t>(240);
        const auto w = static_cast<std::int32_t>(rng.uniform(-1, 3));
        V32 a(11, 0x5a5a5a5a), b = a;
        EXPECT_EQ(zeps::u8::zepsAutoCorr_GSMAMR_16s32s(x.data(), a.data(), w),
                  zeps::n8::zepsAutoCorr_GSMAMR_16s32s(x.data(), b.data(), w));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsLevinsonDurbin_GSMAMR_32s16s) {
    for (int t = 0; t < 100; t++) {
        V32 r(11);
        r[0] = static_cast<std::int32_t>(rng.uniform(0x40000000, 0x7fffffff));
        for (int i = 1; i < 11; i++) r[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(r[0] / (i + 1) * (rng.chance(2) ? 1 : -1));
        if (rng.chance(4)) r[1] = r[0];
        V16 oa = lpc(rng, 1), ob = oa, la(11, 0x5a5a), lb = la, ca(4, 0x5a5a), cb = ca;
        EXPECT_EQ(zeps::u8::zepsLevinsonDurbin_GSMAMR_32s16s(oa.data(), r.data(), la.data(), ca.data()),
                  zeps::n8::zepsLevinsonDurbin_GSMAMR_32s16s(ob.data(), r.data(), lb.data(), cb.data()));
        EXPECT_EQ(oa, ob);
        EXPECT_EQ(la, lb);
        EXPECT_EQ(ca, cb);
    }
}

ZEPS_VARIANT_CHECK(zepsLPCToLSP_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        const V16 a = rng.chance(4) ? rng.vec<std::int16_t>(11) : lpc(rng, 1), old = rng.vec<std::int16_t>(10);
        V16 la(10, 0x5a5a), lb = la;
        EXPECT_EQ(zeps::u8::zepsLPCToLSP_GSMAMR_16s(a.data(), la.data(), old.data()),
                  zeps::n8::zepsLPCToLSP_GSMAMR_16s(a.data(), lb.data(), old.data()));
        EXPECT_EQ(la, lb);
    }
}

ZEPS_VARIANT_CHECK(zepsInterpolateLSPAnalysis_GSMAMR_16s_I) {
    for (int t = 0; t < 100; t++) {
        const V16 o = rng.vec<std::int16_t>(10), m = rng.vec<std::int16_t>(10), n = rng.vec<std::int16_t>(10);
        const std::int32_t rate = some_rate(rng);
        V16 a = rng.vec<std::int16_t>(44), b = a;
        EXPECT_EQ(zeps::u8::zepsInterpolateLSPAnalysis_GSMAMR_16s_I(o.data(), m.data(), n.data(), a.data(), rate),
                  zeps::n8::zepsInterpolateLSPAnalysis_GSMAMR_16s_I(o.data(), m.data(), n.data(), b.data(), rate));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsCheckLSP_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        V16 sa = small(rng, 8, 0, 12), sb = sa, fa(1, 7), fb(1, 7);
        const V16 lsp = rng.vec<std::int16_t>(10);
        EXPECT_EQ(zeps::u8::zepsCheckLSP_GSMAMR_16s(sa.data(), lsp.data(), fa.data()),
                  zeps::n8::zepsCheckLSP_GSMAMR_16s(sb.data(), lsp.data(), fb.data()));
        EXPECT_EQ(sa, sb);
        EXPECT_EQ(fa, fb);
    }
}

ZEPS_VARIANT_CHECK(zepsUpdateGpClipping_GSMAMR_16s) {
    for (int t = 0; t < 50; t++) {
        V16 sa = rng.vec<std::int16_t>(8), sb = sa;
        const std::int16_t g = rng.s16();
        EXPECT_EQ(zeps::u8::zepsUpdateGpClipping_GSMAMR_16s(sa.data(), g),
                  zeps::n8::zepsUpdateGpClipping_GSMAMR_16s(sb.data(), g));
        EXPECT_EQ(sa, sb);
    }
}

ZEPS_VARIANT_CHECK(zepsTargetImpulseResponse_GSMAMR_16s) {
    for (int t = 0; t < 60; t++) {
        const V16 A = lpc(rng, 1), Aq = lpc(rng, 1), sp = rng.vec<std::int16_t>(50);
        const V16 me = rng.vec<std::int16_t>(10), mw = rng.vec<std::int16_t>(10);
        const std::int32_t rate = some_rate(rng);
        std::vector<V16> a(4, V16(40, 0x5a5a)), b = a;
        EXPECT_EQ(zeps::u8::zepsTargetImpulseResponse_GSMAMR_16s(A.data(), Aq.data(), sp.data(), me.data(), mw.data(),
                                                                 a[0].data(), a[1].data(), a[2].data(), a[3].data(), rate),
                  zeps::n8::zepsTargetImpulseResponse_GSMAMR_16s(A.data(), Aq.data(), sp.data(), me.data(), mw.data(),
                                                                 b[0].data(), b[1].data(), b[2].data(), b[3].data(), rate));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsClosedLoopPitchSearch_GSMAMR_16s) {
    for (int t = 0; t < 60; t++) {
        V16 prev_a = small(rng, 1, 18, 144), prev_b = prev_a, ea = rng.vec<std::int16_t>(194), eb = ea;
        V16 ra = rng.vec<std::int16_t>(40), rb = ra;
        const V16 tone = small(rng, 8, 0, 4000), op = small(rng, 2, 18, 143), h = small(rng, 40, -4096, 4096);
        const V16 xn = rng.vec<std::int16_t>(40);
        const auto flag = static_cast<std::int16_t>(rng.uniform(0, 1));
        const auto sf = static_cast<std::int32_t>(rng.uniform(-1, 4));
        const std::int32_t rate = some_rate(rng);
        std::vector<V16> a = {V16(40, 0x5a5a), V16(40, 0x5a5a), V16(4, 0x5a5a), V16(4, 0x5a5a), V16(2, 0x5a5a)}, b = a;
        EXPECT_EQ(zeps::u8::zepsClosedLoopPitchSearch_GSMAMR_16s(prev_a.data(), tone.data(), op.data(), h.data(), ea.data(),
                                                                 ra.data(), xn.data(), flag, a[0].data(), a[1].data(),
                                                                 a[2].data(), a[3].data(), a[4].data(), sf, rate),
                  zeps::n8::zepsClosedLoopPitchSearch_GSMAMR_16s(prev_b.data(), tone.data(), op.data(), h.data(), eb.data(),
                                                                 rb.data(), xn.data(), flag, b[0].data(), b[1].data(),
                                                                 b[2].data(), b[3].data(), b[4].data(), sf, rate));
        EXPECT_EQ(prev_a, prev_b);
        EXPECT_EQ(ea, eb);
        EXPECT_EQ(ra, rb);
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsGainQuantGetStateSize_GSMAMR_16s) {
    Zep32s a = 0, b = 0;
    EXPECT_EQ(zeps::u8::zepsGainQuantGetStateSize_GSMAMR_16s(&a), zeps::n8::zepsGainQuantGetStateSize_GSMAMR_16s(&b));
    EXPECT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsGainQuantInit_GSMAMR_16s) {
    Bytes a(96, 0x5a), b(96, 0xa5);
    EXPECT_EQ(zeps::u8::zepsGainQuantInit_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(a)),
              zeps::n8::zepsGainQuantInit_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(b)));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsGainQuant_GSMAMR_16s) {
    Bytes sa(96), sb(96);
    ASSERT_EQ(zeps::u8::zepsGainQuantInit_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sa)), 0);
    ASSERT_EQ(zeps::n8::zepsGainQuantInit_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sb)), 0);
    for (int t = 0; t < 100; t++) {
        std::vector<V16> in;
        for (int i = 0; i < 7; i++) in.push_back(rng.chance(3) ? small(rng, 40, -200, 200) : rng.vec<std::int16_t>(40));
        const V16 gc = {static_cast<std::int16_t>(rng.uniform(16384, 32767)), static_cast<std::int16_t>(rng.uniform(-10, 20)),
                        static_cast<std::int16_t>(rng.uniform(-32768, 32767)), static_cast<std::int16_t>(rng.uniform(-10, 20))};
        V16 ga = {static_cast<std::int16_t>(rng.uniform(0, 19661)), 0, 0, 0}, gb = ga, ia(2, 0x5a5a), ib = ia;
        const auto even = static_cast<std::int16_t>(t & 1);
        const auto lim = static_cast<std::int16_t>(rng.chance(3) ? 15565 : 32767);
        const std::int32_t rate = some_rate(rng);
        EXPECT_EQ(zeps::u8::zepsGainQuant_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sa), in[0].data(), in[1].data(), in[2].data(),
                                                     in[3].data(), in[4].data(), in[5].data(), in[6].data(), gc.data(),
                                                     ga.data(), ia.data(), even, lim, rate),
                  zeps::n8::zepsGainQuant_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sb), in[0].data(), in[1].data(), in[2].data(),
                                                     in[3].data(), in[4].data(), in[5].data(), in[6].data(), gc.data(),
                                                     gb.data(), ib.data(), even, lim, rate));
        EXPECT_EQ(ga, gb);
        EXPECT_EQ(ia, ib);
        EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
    }
}

// The predictor written by one build reads back the same from both, and a
// quantisation after it gives the same bytes.
ZEPS_VARIANT_CHECK(zepsGainQuantSetPredictor_GSMAMR_16s) {
    for (int t = 0; t < 40; t++) {
        Bytes sa(96), sb(96);
        ASSERT_EQ(zeps::u8::zepsGainQuantInit_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sa)), 0);
        ASSERT_EQ(zeps::n8::zepsGainQuantInit_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sb)), 0);
        const V16 en = small(rng, 4, -14436, 0), en122 = small(rng, 4, -4701, 0);
        EXPECT_EQ(zeps::u8::zepsGainQuantSetPredictor_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sa), en.data(), en122.data()),
                  zeps::n8::zepsGainQuantSetPredictor_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sb), en.data(), en122.data()));
        EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
        std::vector<V16> in;
        for (int i = 0; i < 7; i++) in.push_back(small(rng, 40, -2000, 2000));
        const V16 gc = {20000, 3, 0, 5};
        V16 ga = {8000, 0, 0, 0}, gb = ga, ia(2, 0), ib = ia;
        const std::int32_t rate = kRates[rng.uniform(1, 7)];
        ASSERT_EQ(zeps::u8::zepsGainQuant_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sa), in[0].data(), in[1].data(), in[2].data(),
                                                     in[3].data(), in[4].data(), in[5].data(), in[6].data(), gc.data(),
                                                     ga.data(), ia.data(), 1, 32767, rate), 0);
        ASSERT_EQ(zeps::n8::zepsGainQuant_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(sb), in[0].data(), in[1].data(), in[2].data(),
                                                     in[3].data(), in[4].data(), in[5].data(), in[6].data(), gc.data(),
                                                     gb.data(), ib.data(), 1, 32767, rate), 0);
        EXPECT_EQ(ga, gb);
        EXPECT_EQ(ia, ib);
        EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
    }
}

ZEPS_VARIANT_CHECK(zepsGainQuantGetPredictor_GSMAMR_16s) {
    for (int t = 0; t < 20; t++) {
        Bytes s(96);
        for (auto& x : s) x = static_cast<std::uint8_t>(rng.uniform(0, 255));
        V16 a1(4, 0x5a5a), a2(4, 0x5a5a), b1(4, 0x1234), b2(4, 0x1234);
        EXPECT_EQ(zeps::u8::zepsGainQuantGetPredictor_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(s), a1.data(), a2.data()),
                  zeps::n8::zepsGainQuantGetPredictor_GSMAMR_16s(as<ZepGainQuantState_GSMAMR>(s), b1.data(), b2.data()));
        EXPECT_EQ(a1, b1);
        EXPECT_EQ(a2, b2);
    }
}

ZEPS_VARIANT_CHECK(zepsEncoderSubframeUpdate_GSMAMR_16s) {
    for (int t = 0; t < 60; t++) {
        const V16 sp = rng.vec<std::int16_t>(40), Aq = lpc(rng, 1), xn = rng.vec<std::int16_t>(40),
                  code = small(rng, 40, -8192, 8192), y1 = rng.vec<std::int16_t>(40), y2 = rng.vec<std::int16_t>(40);
        const std::int16_t gp = rng.s16(), gc = rng.s16();
        const std::int32_t rate = some_rate(rng);
        std::vector<V16> a = {rng.vec<std::int16_t>(10), V16(10, 0x5a5a), V16(10, 0x5a5a), rng.vec<std::int16_t>(40),
                              V16(40, 0x5a5a), V16(1, 0x5a5a)},
                         b = a;
        EXPECT_EQ(zeps::u8::zepsEncoderSubframeUpdate_GSMAMR_16s(sp.data(), Aq.data(), xn.data(), code.data(), y1.data(),
                                                                 y2.data(), gp, gc, a[0].data(), a[1].data(), a[2].data(),
                                                                 a[3].data(), a[4].data(), a[5].data(), rate),
                  zeps::n8::zepsEncoderSubframeUpdate_GSMAMR_16s(sp.data(), Aq.data(), xn.data(), code.data(), y1.data(),
                                                                 y2.data(), gp, gc, b[0].data(), b[1].data(), b[2].data(),
                                                                 b[3].data(), b[4].data(), b[5].data(), rate));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsConvolve_GSMAMR_16s) {
    for (int t = 0; t < 50; t++) {
        const V16 x = rng.vec<std::int16_t>(160), h = rng.vec<std::int16_t>(160);
        const auto len = static_cast<std::int32_t>(rng.uniform(-1, 161));
        V16 a(160, 0x5a5a), b = a;
        EXPECT_EQ(zeps::u8::zepsConvolve_GSMAMR_16s(x.data(), h.data(), a.data(), len),
                  zeps::n8::zepsConvolve_GSMAMR_16s(x.data(), h.data(), b.data(), len));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsParamToBits_GSMAMR_16s) {
    for (int t = 0; t < 50; t++) {
        const V16 prm = small(rng, 57, 0, 255);
        const std::int32_t rate = rng.chance(8) ? 25 : some_rate(rng);
        V16 a(244, 0x5a5a), b = a;
        EXPECT_EQ(zeps::u8::zepsParamToBits_GSMAMR_16s(prm.data(), a.data(), rate),
                  zeps::n8::zepsParamToBits_GSMAMR_16s(prm.data(), b.data(), rate));
        EXPECT_EQ(a, b);
    }
}

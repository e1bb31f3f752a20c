// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR decoder exports: both processor builds give the same bytes and
// statuses on random, extreme and invalid arguments.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"

namespace {

using V16 = std::vector<std::int16_t>;
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
V16 bits(zeps::test::Rng& rng) { return small(rng, 244, 0, 1); }
template <class T>
T* as(Bytes& b) { return reinterpret_cast<T*>(b.data()); }

}  // namespace

ZEPS_VARIANT_CHECK(zepsDecodeHomingFrameTest_GSMAMR_16s) {
    for (int t = 0; t < 50; t++) {
        const V16 in = rng.chance(2) ? V16(244, 0) : bits(rng);
        const std::int32_t rate = some_rate(rng);
        const auto first = static_cast<std::int32_t>(rng.uniform(0, 1));
        V16 fa(1, 7), fb(1, 7);
        EXPECT_EQ(zeps::u8::zepsDecodeHomingFrameTest_GSMAMR_16s(in.data(), fa.data(), rate, first),
                  zeps::n8::zepsDecodeHomingFrameTest_GSMAMR_16s(in.data(), fb.data(), rate, first));
        EXPECT_EQ(fa, fb);
    }
}

ZEPS_VARIANT_CHECK(zepsLSFDecode_GSMAMR_16s) {
    for (int t = 0; t < 200; t++) {
        V16 ra = small(rng, 10, -2000, 2000), la = small(rng, 10, 0, 16384), rb = ra, lb = la;
        const V16 idx = small(rng, 5, 0, 127);
        const std::int32_t rate = rng.chance(8) ? 25 : some_rate(rng);
        const auto bfi = static_cast<std::int32_t>(rng.uniform(0, 1));
        V16 oa(20, 0x5a5a), ob = oa;
        EXPECT_EQ(zeps::u8::zepsLSFDecode_GSMAMR_16s(ra.data(), la.data(), idx.data(), oa.data(), rate, bfi),
                  zeps::n8::zepsLSFDecode_GSMAMR_16s(rb.data(), lb.data(), idx.data(), ob.data(), rate, bfi));
        EXPECT_EQ(ra, rb);
        EXPECT_EQ(la, lb);
        EXPECT_EQ(oa, ob);
    }
}

ZEPS_VARIANT_CHECK(zepsLSPToLPC_GSMAMR_16s) {
    for (int t = 0; t < 200; t++) {
        const V16 lsp = rng.vec<std::int16_t>(10);
        V16 oa(11, 0x5a5a), ob = oa;
        EXPECT_EQ(zeps::u8::zepsLSPToLPC_GSMAMR_16s(lsp.data(), oa.data()),
                  zeps::n8::zepsLSPToLPC_GSMAMR_16s(lsp.data(), ob.data()));
        EXPECT_EQ(oa, ob);
    }
}

ZEPS_VARIANT_CHECK(zepsInterpolateLSP_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        const V16 o = rng.vec<std::int16_t>(10), m = rng.vec<std::int16_t>(10), n = rng.vec<std::int16_t>(10);
        const std::int32_t rate = some_rate(rng);
        V16 oa(44, 0x5a5a), ob = oa;
        EXPECT_EQ(zeps::u8::zepsInterpolateLSP_GSMAMR_16s(o.data(), m.data(), n.data(), oa.data(), rate),
                  zeps::n8::zepsInterpolateLSP_GSMAMR_16s(o.data(), m.data(), n.data(), ob.data(), rate));
        EXPECT_EQ(oa, ob);
    }
}

ZEPS_VARIANT_CHECK(zepsAdaptiveLagDecode_GSMAMR_16s) {
    for (int t = 0; t < 300; t++) {
        const auto index = static_cast<std::int16_t>(rng.chance(8) ? rng.s16() : rng.uniform(0, 511));
        const auto flag = static_cast<std::int16_t>(rng.uniform(0, 1));
        const auto prev = static_cast<std::int16_t>(rng.chance(8) ? rng.s16() : rng.uniform(18, 143));
        const std::int32_t rate = some_rate(rng);
        std::int16_t ta = 0x5a5a, fa = 0x5a5a, tb = ta, fb = fa;
        EXPECT_EQ(zeps::u8::zepsAdaptiveLagDecode_GSMAMR_16s(index, flag, prev, &ta, &fa, rate),
                  zeps::n8::zepsAdaptiveLagDecode_GSMAMR_16s(index, flag, prev, &tb, &fb, rate));
        EXPECT_EQ(ta, tb);
        EXPECT_EQ(fa, fb);
    }
}

ZEPS_VARIANT_CHECK(zepsAdaptiveCodebookDecode_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        V16 a = rng.vec<std::int16_t>(194), b = a;
        const auto T0 = static_cast<std::int16_t>(rng.uniform(16, 146));
        const auto frac = static_cast<std::int16_t>(rng.uniform(-3, 4));
        const std::int32_t rate = some_rate(rng);
        EXPECT_EQ(zeps::u8::zepsAdaptiveCodebookDecode_GSMAMR_16s(a.data(), T0, frac, rate),
                  zeps::n8::zepsAdaptiveCodebookDecode_GSMAMR_16s(b.data(), T0, frac, rate));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsFixedCodebookDecode_GSMAMR_16s) {
    for (int t = 0; t < 300; t++) {
        const V16 idx = small(rng, 10, 0, 1023);
        const std::int32_t rate = some_rate(rng);
        const auto sub = static_cast<std::int32_t>(rng.uniform(-1, 4));
        V16 oa(40, 0x5a5a), ob = oa;
        EXPECT_EQ(zeps::u8::zepsFixedCodebookDecode_GSMAMR_16s(idx.data(), oa.data(), sub, rate),
                  zeps::n8::zepsFixedCodebookDecode_GSMAMR_16s(idx.data(), ob.data(), sub, rate));
        EXPECT_EQ(oa, ob);
    }
}

ZEPS_VARIANT_CHECK(zepsPitchSharpening_GSMAMR_16s_I) {
    for (int t = 0; t < 100; t++) {
        V16 a = rng.vec<std::int16_t>(40), b = a;
        const auto T0 = static_cast<std::int16_t>(rng.uniform(-2, 45));
        const std::int16_t sharp = rng.s16();
        EXPECT_EQ(zeps::u8::zepsPitchSharpening_GSMAMR_16s_I(a.data(), T0, sharp),
                  zeps::n8::zepsPitchSharpening_GSMAMR_16s_I(b.data(), T0, sharp));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsDecodeGain_GSMAMR_16s) {
    for (int t = 0; t < 200; t++) {
        V16 pa = small(rng, 8, -14336, 2000), pb = pa;
        const V16 code = rng.vec<std::int16_t>(40), idx = small(rng, 2, 0, 255);
        const std::int32_t rate = some_rate(rng);
        const auto even = static_cast<std::int32_t>(rng.uniform(0, 1));
        std::int16_t ga = 0x5a5a, ca = 0x5a5a, gb = ga, cb = ca;
        EXPECT_EQ(zeps::u8::zepsDecodeGain_GSMAMR_16s(pa.data(), code.data(), idx.data(), &ga, &ca, rate, even),
                  zeps::n8::zepsDecodeGain_GSMAMR_16s(pb.data(), code.data(), idx.data(), &gb, &cb, rate, even));
        EXPECT_EQ(pa, pb);
        EXPECT_EQ(ga, gb);
        EXPECT_EQ(ca, cb);
    }
}

ZEPS_VARIANT_CHECK(zepsConcealPitchGain_GSMAMR_16s) {
    for (int t = 0; t < 200; t++) {
        V16 sa = small(rng, 7, 0, 16384), sb = sa;
        std::int16_t ga = rng.s16(), gb = ga;
        const auto state = static_cast<std::int16_t>(rng.uniform(-1, 7));
        const auto bfi = static_cast<std::int16_t>(rng.uniform(0, 1)), prev = static_cast<std::int16_t>(rng.uniform(0, 1));
        EXPECT_EQ(zeps::u8::zepsConcealPitchGain_GSMAMR_16s(sa.data(), &ga, state, bfi, prev),
                  zeps::n8::zepsConcealPitchGain_GSMAMR_16s(sb.data(), &gb, state, bfi, prev));
        EXPECT_EQ(sa, sb);
        EXPECT_EQ(ga, gb);
    }
}

ZEPS_VARIANT_CHECK(zepsConcealCodeGain_GSMAMR_16s) {
    for (int t = 0; t < 200; t++) {
        V16 sa = small(rng, 7, 0, 8000), sb = sa, pa = small(rng, 8, -14336, 2000), pb = pa;
        std::int16_t ga = rng.s16(), gb = ga;
        const auto state = static_cast<std::int16_t>(rng.uniform(-1, 7));
        const auto bfi = static_cast<std::int16_t>(rng.uniform(0, 1)), prev = static_cast<std::int16_t>(rng.uniform(0, 1));
        EXPECT_EQ(zeps::u8::zepsConcealCodeGain_GSMAMR_16s(sa.data(), pa.data(), &ga, state, bfi, prev),
                  zeps::n8::zepsConcealCodeGain_GSMAMR_16s(sb.data(), pb.data(), &gb, state, bfi, prev));
        EXPECT_EQ(sa, sb);
        EXPECT_EQ(pa, pb);
        EXPECT_EQ(ga, gb);
    }
}

ZEPS_VARIANT_CHECK(zepsPhaseDispersion_GSMAMR_16s) {
    for (int t = 0; t < 200; t++) {
        V16 sa = small(rng, 8, 0, 16384), sb = sa, ea = rng.vec<std::int16_t>(40), eb = ea;
        V16 ia = small(rng, 40, 0, 0), ib;
        for (int k = 0; k < 4; k++) ia[static_cast<std::size_t>(rng.uniform(0, 39))] = rng.s16();
        ib = ia;
        const std::int16_t cb = rng.s16(), ltp = static_cast<std::int16_t>(rng.uniform(0, 20000)), fac = rng.s16();
        const auto shift = static_cast<std::int32_t>(rng.uniform(0, 3));
        const std::int32_t rate = some_rate(rng);
        const auto lock = static_cast<std::int32_t>(rng.uniform(0, 1));
        EXPECT_EQ(zeps::u8::zepsPhaseDispersion_GSMAMR_16s(sa.data(), ea.data(), ia.data(), cb, ltp, fac, shift, rate, lock),
                  zeps::n8::zepsPhaseDispersion_GSMAMR_16s(sb.data(), eb.data(), ib.data(), cb, ltp, fac, shift, rate, lock));
        EXPECT_EQ(sa, sb);
        EXPECT_EQ(ea, eb);
        EXPECT_EQ(ia, ib);
    }
}

ZEPS_VARIANT_CHECK(zepsTotalExcitation_GSMAMR_16s_I) {
    for (int t = 0; t < 100; t++) {
        V16 ea = rng.vec<std::int16_t>(40), eb = ea;
        const V16 code = rng.vec<std::int16_t>(40);
        const std::int16_t fac = rng.chance(8) ? std::int16_t{-32768} : rng.s16(), gain = rng.s16();
        const auto shift = static_cast<std::int32_t>(rng.uniform(0, 3));
        EXPECT_EQ(zeps::u8::zepsTotalExcitation_GSMAMR_16s_I(ea.data(), code.data(), fac, gain, shift),
                  zeps::n8::zepsTotalExcitation_GSMAMR_16s_I(eb.data(), code.data(), fac, gain, shift));
        EXPECT_EQ(ea, eb);
    }
}

ZEPS_VARIANT_CHECK(zepsSharpenedExcitation_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        const V16 exc = rng.vec<std::int16_t>(40);
        V16 da(40, 0x5a5a), db = da;
        const std::int16_t sharp = rng.chance(8) ? std::int16_t{-32768} : rng.s16(), gain = rng.s16();
        const std::int32_t rate = some_rate(rng);
        EXPECT_EQ(zeps::u8::zepsSharpenedExcitation_GSMAMR_16s(exc.data(), da.data(), sharp, gain, rate),
                  zeps::n8::zepsSharpenedExcitation_GSMAMR_16s(exc.data(), db.data(), sharp, gain, rate));
        EXPECT_EQ(da, db);
    }
}

ZEPS_VARIANT_CHECK(zepsSynthesisFilter_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        const V16 a = rng.vec<std::int16_t>(11), x = rng.vec<std::int16_t>(160);
        V16 ma = rng.vec<std::int16_t>(10), mb = ma, ya(160, 0x5a5a), yb = ya;
        const auto len = static_cast<std::int32_t>(rng.uniform(8, 161));
        const auto update = static_cast<std::int32_t>(rng.uniform(0, 1));
        EXPECT_EQ(zeps::u8::zepsSynthesisFilter_GSMAMR_16s(a.data(), x.data(), ya.data(), ma.data(), len, update),
                  zeps::n8::zepsSynthesisFilter_GSMAMR_16s(a.data(), x.data(), yb.data(), mb.data(), len, update));
        EXPECT_EQ(ya, yb);
        EXPECT_EQ(ma, mb);
    }
}

ZEPS_VARIANT_CHECK(zepsPostFilterGetStateSize_GSMAMR_16s) {
    Zep32s a = 0, b = 0;
    EXPECT_EQ(zeps::u8::zepsPostFilterGetStateSize_GSMAMR_16s(&a), zeps::n8::zepsPostFilterGetStateSize_GSMAMR_16s(&b));
    EXPECT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsPostFilterInit_GSMAMR_16s) {
    Bytes a(512, 0x5a), b(512, 0xa5);
    EXPECT_EQ(zeps::u8::zepsPostFilterInit_GSMAMR_16s(as<ZepPostFilterState_GSMAMR>(a)),
              zeps::n8::zepsPostFilterInit_GSMAMR_16s(as<ZepPostFilterState_GSMAMR>(b)));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsPostFilter_GSMAMR_16s_I) {
    Bytes a(512), b(512);
    ASSERT_EQ(zeps::u8::zepsPostFilterInit_GSMAMR_16s(as<ZepPostFilterState_GSMAMR>(a)), 0);
    ASSERT_EQ(zeps::n8::zepsPostFilterInit_GSMAMR_16s(as<ZepPostFilterState_GSMAMR>(b)), 0);
    for (int f = 0; f < 20; f++) {
        V16 sa = rng.vec<std::int16_t>(160), sb = sa;
        V16 az = small(rng, 44, -4096, 4096);
        for (int s = 0; s < 4; s++) az[static_cast<std::size_t>(11 * s)] = 4096;
        const std::int32_t rate = some_rate(rng);
        EXPECT_EQ(zeps::u8::zepsPostFilter_GSMAMR_16s_I(as<ZepPostFilterState_GSMAMR>(a), sa.data(), az.data(), rate),
                  zeps::n8::zepsPostFilter_GSMAMR_16s_I(as<ZepPostFilterState_GSMAMR>(b), sb.data(), az.data(), rate));
        EXPECT_EQ(sa, sb);
        EXPECT_TRUE(zeps::test::same_bytes(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsPostProcess_GSMAMR_16s_I) {
    for (int t = 0; t < 50; t++) {
        V16 sa = rng.vec<std::int16_t>(6), sb = sa, xa = rng.vec<std::int16_t>(200), xb = xa;
        const auto len = static_cast<std::int32_t>(rng.uniform(-1, 200));
        EXPECT_EQ(zeps::u8::zepsPostProcess_GSMAMR_16s_I(sa.data(), xa.data(), len),
                  zeps::n8::zepsPostProcess_GSMAMR_16s_I(sb.data(), xb.data(), len));
        EXPECT_EQ(sa, sb);
        EXPECT_EQ(xa, xb);
    }
}

ZEPS_VARIANT_CHECK(zepsGainControl_GSMAMR_16s_I) {
    for (int t = 0; t < 50; t++) {
        const V16 ref = rng.chance(8) ? V16(200, 0) : rng.vec<std::int16_t>(200);
        V16 xa = rng.chance(8) ? V16(200, 0) : rng.vec<std::int16_t>(200), xb = xa;
        const auto len = static_cast<std::int32_t>(rng.uniform(-1, 200));
        EXPECT_EQ(zeps::u8::zepsGainControl_GSMAMR_16s_I(ref.data(), xa.data(), len),
                  zeps::n8::zepsGainControl_GSMAMR_16s_I(ref.data(), xb.data(), len));
        EXPECT_EQ(xa, xb);
    }
}

ZEPS_VARIANT_CHECK(zepsDecodePitchGain_GSMAMR_16s) {
    for (int t = 0; t < 50; t++) {
        const auto index = static_cast<std::int16_t>(rng.uniform(-2, 17));
        const std::int32_t rate = rng.chance(2) ? static_cast<std::int32_t>(rng.uniform(7, 12)) : some_rate(rng);
        std::int16_t a = 0x5a5a, b = a;
        EXPECT_EQ(zeps::u8::zepsDecodePitchGain_GSMAMR_16s(index, &a, rate),
                  zeps::n8::zepsDecodePitchGain_GSMAMR_16s(index, &b, rate));
        EXPECT_EQ(a, b);
    }
}

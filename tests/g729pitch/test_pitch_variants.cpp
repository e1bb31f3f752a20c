// SPDX-License-Identifier: BSD-3-Clause
// Both processor builds of every G.729 pitch-stage export give identical
// statuses and bytes on typical, extreme and invalid inputs.
#include "tests/variant_check.h"

namespace {

using zeps::test::Rng;
using zeps::test::same_bytes;
using V16 = std::vector<Zep16s>;
using VF = std::vector<Zep32f>;

/// A speech-like 16-bit vector: a noisy periodic signal of random level,
/// sometimes saturated noise or silence.
V16 signal(Rng& rng, std::size_t n) {
    V16 v(n);
    const int mode = static_cast<int>(rng.uniform(0, 5));
    const int period = static_cast<int>(rng.uniform(20, 150));
    const int amp = static_cast<int>(rng.uniform(1, 20000));
    for (std::size_t i = 0; i < n; ++i) {
        if (mode == 0) v[i] = rng.s16();
        else if (mode == 1) v[i] = 0;
        else v[i] = static_cast<Zep16s>(((static_cast<int>(i) % period) < 3 ? amp : 0) + rng.uniform(-amp / 8, amp / 8));
    }
    return v;
}

V16 impulse_response(Rng& rng) {
    V16 h(40);
    h[0] = 4096;
    for (int i = 1; i < 40; ++i) h[i] = static_cast<Zep16s>(rng.uniform(-3000, 3000) >> (i / 4));
    if (rng.chance(10)) h = rng.vec<Zep16s>(40);
    return h;
}

VF fsignal(Rng& rng, std::size_t n) {
    VF v(n);
    for (auto& x : v) x = rng.f32(rng.chance(4) ? 30000.0f : 1000.0f);
    return v;
}

template <class Fn>
void check_open_loop(Rng& rng, Fn u8, Fn n8) {
    const V16 s = signal(rng, 223);
    Zep16s a = -1, b = -1;
    EXPECT_EQ(u8(s.data() + 143, &a), n8(s.data() + 143, &b));
    EXPECT_EQ(a, b);
    EXPECT_EQ(u8(nullptr, &a), n8(nullptr, &b));
}

template <class Fn>
void check_search(Rng& rng, Fn u8, Fn n8) {
    const Zep16s delay = static_cast<Zep16s>(rng.uniform(16, 147));
    const Zep16s sub = static_cast<Zep16s>(rng.chance(8) ? rng.uniform(-1, 2) : rng.uniform(0, 1));
    const V16 xn = signal(rng, 40), h = impulse_response(rng), exc = signal(rng, 194);
    V16 e1 = exc, e2 = exc, d1(2, 7), d2(2, 7), v1(40, 7), v2(40, 7);
    EXPECT_EQ(u8(delay, xn.data(), h.data(), e1.data(), d1.data(), v1.data(), sub),
              n8(delay, xn.data(), h.data(), e2.data(), d2.data(), v2.data(), sub));
    EXPECT_TRUE(same_bytes(e1, e2));
    EXPECT_TRUE(same_bytes(d1, d2));
    EXPECT_TRUE(same_bytes(v1, v2));
}

template <class Fn>
void check_gain(Rng& rng, Fn u8, Fn n8) {
    const V16 xn = signal(rng, 40), h = impulse_response(rng), v = signal(rng, 40);
    V16 y1(40, 7), y2(40, 7);
    Zep16s g1 = 7, g2 = 7;
    EXPECT_EQ(u8(xn.data(), h.data(), v.data(), y1.data(), &g1), n8(xn.data(), h.data(), v.data(), y2.data(), &g2));
    EXPECT_TRUE(same_bytes(y1, y2));
    EXPECT_EQ(g1, g2);
}

template <class Fn>
void check_interp16(Rng& rng, Fn u8, Fn n8) {
    const int len = static_cast<int>(rng.uniform(-1, 50));
    const int sf = static_cast<int>(rng.uniform(-2, 33));
    const V16 a = rng.vec<Zep16s>(50), b = rng.vec<Zep16s>(50);
    const Zep16s va = rng.s16(), vb = rng.s16();
    V16 d1(50, 7), d2(50, 7);
    EXPECT_EQ(u8(a.data(), va, b.data(), vb, d1.data(), len, sf), n8(a.data(), va, b.data(), vb, d2.data(), len, sf));
    EXPECT_TRUE(same_bytes(d1, d2));
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsOpenLoopPitchSearch_G729_16s) {
    check_open_loop(rng, &zeps::u8::zepsOpenLoopPitchSearch_G729_16s, &zeps::n8::zepsOpenLoopPitchSearch_G729_16s);
}
ZEPS_VARIANT_CHECK(zepsOpenLoopPitchSearch_G729A_16s) {
    check_open_loop(rng, &zeps::u8::zepsOpenLoopPitchSearch_G729A_16s, &zeps::n8::zepsOpenLoopPitchSearch_G729A_16s);
}
ZEPS_VARIANT_CHECK(zepsOpenLoopPitchSearch_G729A_32f) {
    const VF s = fsignal(rng, 223);
    Zep32s a = -1, b = -1;
    EXPECT_EQ(zeps::u8::zepsOpenLoopPitchSearch_G729A_32f(s.data() + 143, &a),
              zeps::n8::zepsOpenLoopPitchSearch_G729A_32f(s.data() + 143, &b));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsAdaptiveCodebookSearch_G729_16s) {
    check_search(rng, &zeps::u8::zepsAdaptiveCodebookSearch_G729_16s, &zeps::n8::zepsAdaptiveCodebookSearch_G729_16s);
}
ZEPS_VARIANT_CHECK(zepsAdaptiveCodebookSearch_G729A_16s) {
    check_search(rng, &zeps::u8::zepsAdaptiveCodebookSearch_G729A_16s,
                 &zeps::n8::zepsAdaptiveCodebookSearch_G729A_16s);
}
ZEPS_VARIANT_CHECK(zepsAdaptiveCodebookSearch_G729D_16s) {
    check_search(rng, &zeps::u8::zepsAdaptiveCodebookSearch_G729D_16s,
                 &zeps::n8::zepsAdaptiveCodebookSearch_G729D_16s);
}
ZEPS_VARIANT_CHECK(zepsDecodeAdaptiveVector_G729_16s) {
    const Zep16s d[2] = {static_cast<Zep16s>(rng.uniform(16, 146)), static_cast<Zep16s>(rng.uniform(-2, 2))};
    const V16 exc = signal(rng, 194);
    V16 e1 = exc, e2 = exc, v1(40, 7), v2(40, 7);
    EXPECT_EQ(zeps::u8::zepsDecodeAdaptiveVector_G729_16s(d, e1.data(), v1.data()),
              zeps::n8::zepsDecodeAdaptiveVector_G729_16s(d, e2.data(), v2.data()));
    EXPECT_TRUE(same_bytes(e1, e2));
    EXPECT_TRUE(same_bytes(v1, v2));
}
ZEPS_VARIANT_CHECK(zepsDecodeAdaptiveVector_G729_16s_I) {
    const Zep16s d[2] = {static_cast<Zep16s>(rng.uniform(16, 146)), static_cast<Zep16s>(rng.uniform(-2, 2))};
    const V16 exc = signal(rng, 194);
    V16 e1 = exc, e2 = exc;
    EXPECT_EQ(zeps::u8::zepsDecodeAdaptiveVector_G729_16s_I(d, e1.data()),
              zeps::n8::zepsDecodeAdaptiveVector_G729_16s_I(d, e2.data()));
    EXPECT_TRUE(same_bytes(e1, e2));
}
ZEPS_VARIANT_CHECK(zepsDecodeAdaptiveVector_G729_32f_I) {
    const Zep32s d[2] = {static_cast<Zep32s>(rng.uniform(16, 146)), static_cast<Zep32s>(rng.uniform(-2, 2))};
    const VF exc = fsignal(rng, 194);
    VF e1 = exc, e2 = exc;
    EXPECT_EQ(zeps::u8::zepsDecodeAdaptiveVector_G729_32f_I(d, e1.data()),
              zeps::n8::zepsDecodeAdaptiveVector_G729_32f_I(d, e2.data()));
    EXPECT_TRUE(same_bytes(e1, e2));
}
ZEPS_VARIANT_CHECK(zepsAdaptiveCodebookGain_G729_16s) {
    check_gain(rng, &zeps::u8::zepsAdaptiveCodebookGain_G729_16s, &zeps::n8::zepsAdaptiveCodebookGain_G729_16s);
}
ZEPS_VARIANT_CHECK(zepsAdaptiveCodebookGain_G729A_16s) {
    check_gain(rng, &zeps::u8::zepsAdaptiveCodebookGain_G729A_16s, &zeps::n8::zepsAdaptiveCodebookGain_G729A_16s);
}
ZEPS_VARIANT_CHECK(zepsAdaptiveCodebookContribution_G729_16s) {
    const V16 y = rng.vec<Zep16s>(40), xn = rng.vec<Zep16s>(40);
    const Zep16s g = rng.s16();
    V16 o1(40, 7), o2(40, 7);
    EXPECT_EQ(zeps::u8::zepsAdaptiveCodebookContribution_G729_16s(g, y.data(), xn.data(), o1.data()),
              zeps::n8::zepsAdaptiveCodebookContribution_G729_16s(g, y.data(), xn.data(), o2.data()));
    EXPECT_TRUE(same_bytes(o1, o2));
}
ZEPS_VARIANT_CHECK(zepsAdaptiveCodebookContribution_G729_32f) {
    const VF y = fsignal(rng, 40), xn = fsignal(rng, 40);
    const Zep32f g = rng.f32(1.2f);
    VF o1(40, 7), o2(40, 7);
    EXPECT_EQ(zeps::u8::zepsAdaptiveCodebookContribution_G729_32f(g, y.data(), xn.data(), o1.data()),
              zeps::n8::zepsAdaptiveCodebookContribution_G729_32f(g, y.data(), xn.data(), o2.data()));
    EXPECT_TRUE(same_bytes(o1, o2));
}
ZEPS_VARIANT_CHECK(zepsFilteredExcitation_G729_32f) {
    const int len = static_cast<int>(rng.uniform(-1, 40));
    const VF h = fsignal(rng, 40), y = fsignal(rng, 40);
    const Zep32f e = rng.f32(1000.0f);
    VF y1 = y, y2 = y;
    EXPECT_EQ(zeps::u8::zepsFilteredExcitation_G729_32f(h.data(), y1.data(), len, e),
              zeps::n8::zepsFilteredExcitation_G729_32f(h.data(), y2.data(), len, e));
    EXPECT_TRUE(same_bytes(y1, y2));
}
ZEPS_VARIANT_CHECK(zepsInterpolateC_G729_32f) {
    const int len = static_cast<int>(rng.uniform(-1, 50));
    const VF a = fsignal(rng, 50), b = fsignal(rng, 50);
    const Zep32f va = rng.f32(), vb = rng.f32();
    VF d1(50, 7), d2(50, 7);
    EXPECT_EQ(zeps::u8::zepsInterpolateC_G729_32f(a.data(), va, b.data(), vb, d1.data(), len),
              zeps::n8::zepsInterpolateC_G729_32f(a.data(), va, b.data(), vb, d2.data(), len));
    EXPECT_TRUE(same_bytes(d1, d2));
}
ZEPS_VARIANT_CHECK(zepsInterpolateC_G729_16s_Sfs) {
    check_interp16(rng, &zeps::u8::zepsInterpolateC_G729_16s_Sfs, &zeps::n8::zepsInterpolateC_G729_16s_Sfs);
}
ZEPS_VARIANT_CHECK(zepsInterpolateC_NR_G729_16s_Sfs) {
    check_interp16(rng, &zeps::u8::zepsInterpolateC_NR_G729_16s_Sfs, &zeps::n8::zepsInterpolateC_NR_G729_16s_Sfs);
}

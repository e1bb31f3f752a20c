// SPDX-License-Identifier: BSD-3-Clause
// Both processor builds of the echo-canceller stages (adaptive filters,
// controllers, double-talk detector, NLP, tone detector, noise filter) give
// identical statuses, outputs and states, on valid and invalid arguments.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "tests/ec/subband_fixture.h"
#include "tests/variant_check.h"

namespace {

using zeps::test::Block;
using zeps::test::Rng;
using zeps::test::same_bytes;
using zeps::test::same_state;

std::vector<Zep32fc> cvec(Rng& rng, std::size_t n, float scale) {
    std::vector<Zep32fc> v(n);
    for (auto& x : v) x = {rng.f32(scale), rng.f32(scale)};
    return v;
}

std::vector<float> fvec(Rng& rng, std::size_t n, float scale) {
    std::vector<float> v(n);
    for (auto& x : v) x = rng.f32(scale);
    return v;
}

int shape(Rng& rng, int lo, int hi) { return rng.chance(8) ? static_cast<int>(rng.uniform(lo - 2, hi + 2)) : static_cast<int>(rng.uniform(lo, hi)); }

std::size_t count(int a, int b) { return a > 0 && b > 0 ? static_cast<std::size_t>(a) * static_cast<std::size_t>(b) : 1; }

/// Two blocks of the same size and skew (never copied: a state points into itself).
struct Pair {
    Block a, b;
    Pair(std::size_t size, unsigned skew) : a(size, skew), b(size, skew) {}
};

/// State blocks of `size` bytes from Init on both builds (random skew), the
/// two statuses and states equal.
template <class Init>
std::unique_ptr<Pair> init_both(Rng& rng, int size, Init init) {
    auto st = std::make_unique<Pair>(static_cast<std::size_t>(size), static_cast<unsigned>(rng.uniform(0, 15)));
    const ZepStatus sa = init(0, st->a.p), sb = init(1, st->b.p);
    EXPECT_EQ(sa, sb);
    EXPECT_TRUE(same_state(st->a, st->b));
    return st;
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsSubbandFilter_EC_32fc) {
    const int B = shape(rng, 1, 40), S = shape(rng, 1, 10);
    const auto x = cvec(rng, count(B, S), 3000.0f), c = cvec(rng, count(B, S), 1.0f);
    std::vector<Zep32fc> a(count(B, 1), {1, 1}), b = a;
    ASSERT_EQ(zeps::u8::zepsSubbandFilter_EC_32fc(x.data(), c.data(), a.data(), B, S),
              zeps::n8::zepsSubbandFilter_EC_32fc(x.data(), c.data(), b.data(), B, S));
    ASSERT_TRUE(same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsSubbandFilter_EC_32sc_Sfs) {
    const int B = shape(rng, 1, 40), S = shape(rng, 1, 10), sf = shape(rng, -31, 31);
    std::vector<Zep32sc> x(count(B, S)), c(count(B, S));
    for (auto& v : x) v = {rng.s32(), rng.s32()};
    for (auto& v : c) v = {rng.s32(), rng.s32()};
    std::vector<Zep32sc> a(count(B, 1), {1, 1}), b = a;
    ASSERT_EQ(zeps::u8::zepsSubbandFilter_EC_32sc_Sfs(x.data(), c.data(), a.data(), B, S, sf),
              zeps::n8::zepsSubbandFilter_EC_32sc_Sfs(x.data(), c.data(), b.data(), B, S, sf));
    ASSERT_TRUE(same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsSubbandCoefUpdate_EC_32fc_I) {
    const int B = shape(rng, 1, 40), S = shape(rng, 1, 10);
    const auto x = cvec(rng, count(B, S), 3000.0f), e = cvec(rng, count(B, 1), 300.0f);
    auto a = cvec(rng, count(B, S), 1.0f), b = a;
    const float step = rng.chance(8) ? rng.f32(3.0f) : std::fabs(rng.f32(1.0f)), delta = rng.f32(100.0f);
    ASSERT_EQ(zeps::u8::zepsSubbandCoefUpdate_EC_32fc_I(x.data(), e.data(), a.data(), B, S, step, delta),
              zeps::n8::zepsSubbandCoefUpdate_EC_32fc_I(x.data(), e.data(), b.data(), B, S, step, delta));
    ASSERT_TRUE(same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsFullbandFilter_EC_32f) {
    const int len = shape(rng, 1, 80), taps = shape(rng, 1, 200);
    const auto x = fvec(rng, static_cast<std::size_t>(std::max(len, 0) + std::max(taps, 0)), 30000.0f);
    const auto c = fvec(rng, count(taps, 1), 0.5f);
    std::vector<float> a(count(len, 1), 1.0f), b = a;
    ASSERT_EQ(zeps::u8::zepsFullbandFilter_EC_32f(x.data(), c.data(), a.data(), len, taps),
              zeps::n8::zepsFullbandFilter_EC_32f(x.data(), c.data(), b.data(), len, taps));
    ASSERT_TRUE(same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsFullbandFilter_EC_16s) {
    const int len = shape(rng, 1, 80), taps = shape(rng, 1, 200);
    const auto x = rng.vec<Zep16s>(static_cast<std::size_t>(std::max(len, 0) + std::max(taps, 0)));
    const auto c = rng.vec<Zep16s>(count(taps, 1));
    std::vector<Zep16s> a(count(len, 1), 1), b = a;
    ASSERT_EQ(zeps::u8::zepsFullbandFilter_EC_16s(x.data(), c.data(), a.data(), len, taps),
              zeps::n8::zepsFullbandFilter_EC_16s(x.data(), c.data(), b.data(), len, taps));
    ASSERT_TRUE(same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsFullbandNLMS_EC_32f) {
    const int len = shape(rng, 1, 600), taps = shape(rng, 1, 128);
    const auto x = fvec(rng, static_cast<std::size_t>(std::max(len, 0) + std::max(taps, 0)), 30000.0f);
    const auto d = fvec(rng, count(len, 1), 30000.0f);
    std::vector<float> ea(count(len, 1), 1.0f), eb = ea;
    auto ca = fvec(rng, count(taps, 1), 0.1f), cb = ca;
    const float step = rng.chance(8) ? rng.f32(3.0f) : std::fabs(rng.f32(1.0f)), delta = rng.f32(1000.0f);
    ASSERT_EQ(zeps::u8::zepsFullbandNLMS_EC_32f(x.data(), d.data(), ea.data(), ca.data(), len, taps, step, delta),
              zeps::n8::zepsFullbandNLMS_EC_32f(x.data(), d.data(), eb.data(), cb.data(), len, taps, step, delta));
    ASSERT_TRUE(same_bytes(ea, eb));
    ASSERT_TRUE(same_bytes(ca, cb));
}

ZEPS_VARIANT_CHECK(zepsEchoControlGetSize_EC_32f) {
    int a = -1, b = -1;
    ASSERT_EQ(zeps::u8::zepsEchoControlGetSize_EC_32f(&a), zeps::n8::zepsEchoControlGetSize_EC_32f(&b));
    ASSERT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsEchoControlInit_EC_32f) {
    int size = 0;
    zeps::u8::zepsEchoControlGetSize_EC_32f(&size);
    const int mode = shape(rng, 0, 1);
    init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsEchoControlInit_EC_32f(p, mode) : zeps::n8::zepsEchoControlInit_EC_32f(p, mode);
    });
}

ZEPS_VARIANT_CHECK(zepsEchoControl_EC_32f) {
    int size = 0;
    zeps::u8::zepsEchoControlGetSize_EC_32f(&size);
    const int mode = static_cast<int>(rng.uniform(0, 1));
    auto st = init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsEchoControlInit_EC_32f(p, mode) : zeps::n8::zepsEchoControlInit_EC_32f(p, mode);
    });
    Block& a = st->a;
    Block& b = st->b;
    const float echoGain = std::fabs(rng.f32(1.0f));
    for (int frame = 0; frame < 200; ++frame) {
        const float far = std::fabs(rng.f32(1e7f));
        const float nearL = far * echoGain + std::fabs(rng.f32(1e5f)), err = nearL * std::fabs(rng.f32(1.0f));
        const float levels[4] = {rng.chance(50) ? -1.0f : far, nearL, err, far * echoGain};
        const int dt = shape(rng, 0, 1);
        float sa = -1, sb = -1;
        Zep32s fa = -1, fb = -1;
        ASSERT_EQ(zeps::u8::zepsEchoControl_EC_32f(levels, dt, &sa, &fa, a.p),
                  zeps::n8::zepsEchoControl_EC_32f(levels, dt, &sb, &fb, b.p));
        ASSERT_EQ(std::memcmp(&sa, &sb, 4), 0);
        ASSERT_EQ(fa, fb);
        ASSERT_TRUE(same_state(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsCoefGuardGetSize_EC_32f) {
    int a = -1, b = -1;
    ASSERT_EQ(zeps::u8::zepsCoefGuardGetSize_EC_32f(&a), zeps::n8::zepsCoefGuardGetSize_EC_32f(&b));
    ASSERT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsCoefGuardInit_EC_32f) {
    int size = 0;
    zeps::u8::zepsCoefGuardGetSize_EC_32f(&size);
    init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsCoefGuardInit_EC_32f(p) : zeps::n8::zepsCoefGuardInit_EC_32f(p);
    });
}

ZEPS_VARIANT_CHECK(zepsCoefGuard_EC_32f) {
    int size = 0;
    zeps::u8::zepsCoefGuardGetSize_EC_32f(&size);
    auto st = init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsCoefGuardInit_EC_32f(p) : zeps::n8::zepsCoefGuardInit_EC_32f(p);
    });
    Block& a = st->a;
    Block& b = st->b;
    for (int frame = 0; frame < 200; ++frame) {
        const float nearL = std::fabs(rng.f32(1e7f));
        // Errors around the near level down to 30 dB below it: every action occurs.
        const float errA = nearL * std::fabs(rng.f32(1.0f)) * (rng.chance(2) ? 0.001f : 1.0f);
        const float errK = nearL * std::fabs(rng.f32(1.0f)) * (rng.chance(2) ? 0.001f : 1.0f);
        const float levels[3] = {rng.chance(50) ? -1.0f : nearL, errA, errK};
        const int dt = shape(rng, 0, 1);
        Zep32s xa = -1, xb = -1;
        ASSERT_EQ(zeps::u8::zepsCoefGuard_EC_32f(levels, dt, &xa, a.p), zeps::n8::zepsCoefGuard_EC_32f(levels, dt, &xb, b.p));
        ASSERT_EQ(xa, xb);
        ASSERT_TRUE(same_state(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsCoefGuardSetRestore_EC_32f) {
    int size = 0;
    zeps::u8::zepsCoefGuardGetSize_EC_32f(&size);
    auto st = init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsCoefGuardInit_EC_32f(p) : zeps::n8::zepsCoefGuardInit_EC_32f(p);
    });
    const float ratio = rng.chance(4) ? (rng.chance(2) ? 1.5f : 0.0f) : static_cast<float>(rng.uniform(1, 100)) / 100.0f;
    ASSERT_EQ(zeps::u8::zepsCoefGuardSetRestore_EC_32f(ratio, st->a.p), zeps::n8::zepsCoefGuardSetRestore_EC_32f(ratio, st->b.p));
    ASSERT_TRUE(same_state(st->a, st->b));
    for (int frame = 0; frame < 100; ++frame) {
        const float nearL = std::fabs(rng.f32(1e7f));
        const float levels[3] = {nearL, nearL * std::fabs(rng.f32(0.1f)), nearL * std::fabs(rng.f32(0.1f))};
        Zep32s xa = -1, xb = -1;
        ASSERT_EQ(zeps::u8::zepsCoefGuard_EC_32f(levels, 0, &xa, st->a.p), zeps::n8::zepsCoefGuard_EC_32f(levels, 0, &xb, st->b.p));
        ASSERT_EQ(xa, xb);
        ASSERT_TRUE(same_state(st->a, st->b));
    }
}

ZEPS_VARIANT_CHECK(zepsDoubleTalkGetSize_EC_32f) {
    const int tail = shape(rng, 1, 2048);
    int a = -1, b = -1;
    ASSERT_EQ(zeps::u8::zepsDoubleTalkGetSize_EC_32f(tail, &a), zeps::n8::zepsDoubleTalkGetSize_EC_32f(tail, &b));
    ASSERT_EQ(a, b);
}

namespace {
std::unique_ptr<Pair> dtd_states(Rng& rng, int tail) {
    int size = 0;
    if (zeps::u8::zepsDoubleTalkGetSize_EC_32f(tail > 0 ? tail : 1, &size) != zepStsNoErr) size = 64;
    const float thr = rng.chance(8) ? rng.f32(20.0f) : 0.5f;
    const int hang = shape(rng, 0, 400);
    return init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsDoubleTalkInit_EC_32f(p, tail, thr, hang)
                      : zeps::n8::zepsDoubleTalkInit_EC_32f(p, tail, thr, hang);
    });
}
}  // namespace

ZEPS_VARIANT_CHECK(zepsDoubleTalkInit_EC_32f) { dtd_states(rng, shape(rng, 1, 600)); }

ZEPS_VARIANT_CHECK(zepsDoubleTalk_EC_32f) {
    auto st = dtd_states(rng, static_cast<int>(rng.uniform(1, 600)));
    Block& a = st->a;
    Block& b = st->b;
    for (int blk = 0; blk < 20; ++blk) {
        const int len = shape(rng, 1, 200);
        const auto far = fvec(rng, count(len, 1), 20000.0f), nearS = fvec(rng, count(len, 1), 12000.0f);
        Zep32s da = -1, db = -1;
        ASSERT_EQ(zeps::u8::zepsDoubleTalk_EC_32f(far.data(), nearS.data(), &da, len, a.p),
                  zeps::n8::zepsDoubleTalk_EC_32f(far.data(), nearS.data(), &db, len, b.p));
        ASSERT_EQ(da, db);
        ASSERT_TRUE(same_state(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsDoubleTalkSetFloor_EC_32f) {
    auto st = dtd_states(rng, static_cast<int>(rng.uniform(1, 600)));
    const float fl = rng.chance(4) ? -1.0f : std::fabs(rng.f32(3000.0f));
    ASSERT_EQ(zeps::u8::zepsDoubleTalkSetFloor_EC_32f(fl, st->a.p), zeps::n8::zepsDoubleTalkSetFloor_EC_32f(fl, st->b.p));
    ASSERT_TRUE(same_state(st->a, st->b));
    for (int blk = 0; blk < 20; ++blk) {
        const int len = shape(rng, 1, 200);
        const auto far = fvec(rng, count(len, 1), rng.chance(2) ? 2000.0f : 20.0f), nearS = fvec(rng, count(len, 1), 1200.0f);
        Zep32s da = -1, db = -1;
        ASSERT_EQ(zeps::u8::zepsDoubleTalk_EC_32f(far.data(), nearS.data(), &da, len, st->a.p),
                  zeps::n8::zepsDoubleTalk_EC_32f(far.data(), nearS.data(), &db, len, st->b.p));
        ASSERT_EQ(da, db);
        ASSERT_TRUE(same_state(st->a, st->b));
    }
}

ZEPS_VARIANT_CHECK(zepsNLPGetSize_EC_32f) {
    int a = -1, b = -1;
    ASSERT_EQ(zeps::u8::zepsNLPGetSize_EC_32f(&a), zeps::n8::zepsNLPGetSize_EC_32f(&b));
    ASSERT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsNLPInit_EC_32f) {
    int size = 0;
    zeps::u8::zepsNLPGetSize_EC_32f(&size);
    init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsNLPInit_EC_32f(p) : zeps::n8::zepsNLPInit_EC_32f(p);
    });
}

ZEPS_VARIANT_CHECK(zepsNLP_EC_32f) {
    int size = 0;
    zeps::u8::zepsNLPGetSize_EC_32f(&size);
    auto st = init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsNLPInit_EC_32f(p) : zeps::n8::zepsNLPInit_EC_32f(p);
    });
    Block& a = st->a;
    Block& b = st->b;
    for (int blk = 0; blk < 30; ++blk) {
        const int len = shape(rng, 1, 160), sup = shape(rng, 0, 1);
        const auto x = fvec(rng, count(len, 1), rng.chance(2) ? 100.0f : 10000.0f);
        std::vector<float> ya(count(len, 1), 1.0f), yb = ya;
        ASSERT_EQ(zeps::u8::zepsNLP_EC_32f(x.data(), ya.data(), len, sup, a.p),
                  zeps::n8::zepsNLP_EC_32f(x.data(), yb.data(), len, sup, b.p));
        ASSERT_TRUE(same_bytes(ya, yb));
        ASSERT_TRUE(same_state(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsToneDetectGetSize_EC_16s) {
    int a = -1, b = -1;
    ASSERT_EQ(zeps::u8::zepsToneDetectGetSize_EC_16s(&a), zeps::n8::zepsToneDetectGetSize_EC_16s(&b));
    ASSERT_EQ(a, b);
}

namespace {
std::unique_ptr<Pair> tone_states(Rng& rng, int rate, int rule) {
    int size = 0;
    zeps::u8::zepsToneDetectGetSize_EC_16s(&size);
    return init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsToneDetectInit_EC_16s(p, rate, rule) : zeps::n8::zepsToneDetectInit_EC_16s(p, rate, rule);
    });
}
}  // namespace

ZEPS_VARIANT_CHECK(zepsToneDetectInit_EC_16s) {
    tone_states(rng, rng.chance(6) ? static_cast<int>(rng.uniform(0, 20000)) : rng.chance(2) ? 8000 : 16000,
                shape(rng, 0, 1));
}

ZEPS_VARIANT_CHECK(zepsToneDetect_EC_16s) {
    const int rate = rng.chance(2) ? 8000 : 16000;
    auto st = tone_states(rng, rate, static_cast<int>(rng.uniform(0, 1)));
    Block& a = st->a;
    Block& b = st->b;
    // A 2100 Hz tone with phase reversals every 450 ms, noise added, in random blocks.
    const double amp = static_cast<double>(rng.uniform(200, 30000));
    long t = 0;
    for (int blk = 0; blk < 40; ++blk) {
        const int len = shape(rng, 1, 700);
        std::vector<Zep16s> x(count(len, 1));
        for (auto& v : x) {
            const bool flip = (t * 1000 / rate / 450) % 2 == 1;
            const double s = amp * std::sin(2.0 * 3.14159265358979 * 2100.0 * t / rate) * (flip ? -1 : 1) +
                             static_cast<double>(rng.uniform(-300, 300));
            v = static_cast<Zep16s>(std::lround(std::fmax(-32768.0, std::fmin(32767.0, s))));
            ++t;
        }
        Zep32s ra = -1, rb = -1;
        ASSERT_EQ(zeps::u8::zepsToneDetect_EC_16s(x.data(), len, &ra, a.p),
                  zeps::n8::zepsToneDetect_EC_16s(x.data(), len, &rb, b.p));
        ASSERT_EQ(ra, rb);
        ASSERT_TRUE(same_state(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsNoiseFilterGetSize_NR_32f) {
    const int bands = shape(rng, 1, 4097);
    int a = -1, b = -1;
    ASSERT_EQ(zeps::u8::zepsNoiseFilterGetSize_NR_32f(bands, &a), zeps::n8::zepsNoiseFilterGetSize_NR_32f(bands, &b));
    ASSERT_EQ(a, b);
}

namespace {
std::unique_ptr<Pair> nr_states(Rng& rng, int bands) {
    int size = 0;
    if (zeps::u8::zepsNoiseFilterGetSize_NR_32f(bands, &size) != zepStsNoErr) size = 64;
    return init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsNoiseFilterInit_NR_32f(p, bands) : zeps::n8::zepsNoiseFilterInit_NR_32f(p, bands);
    });
}
}  // namespace

ZEPS_VARIANT_CHECK(zepsNoiseFilterInit_NR_32f) { nr_states(rng, shape(rng, 1, 65)); }

ZEPS_VARIANT_CHECK(zepsNoiseFilter_NR_32fc_I) {
    const int bands = static_cast<int>(rng.uniform(1, 65));
    auto st = nr_states(rng, bands);
    Block& a = st->a;
    Block& b = st->b;
    for (int frame = 0; frame < 50; ++frame) {
        auto xa = cvec(rng, static_cast<std::size_t>(bands), rng.chance(3) ? 1e5f : 300.0f), xb = xa;
        ASSERT_EQ(zeps::u8::zepsNoiseFilter_NR_32fc_I(xa.data(), a.p), zeps::n8::zepsNoiseFilter_NR_32fc_I(xb.data(), b.p));
        ASSERT_TRUE(same_bytes(xa, xb));
        ASSERT_TRUE(same_state(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsFreqDomainFilterGetSize_EC_32f) {
    const int order = shape(rng, 2, 12), parts = shape(rng, 1, 255);
    int a = -1, b = -1;
    ASSERT_EQ(zeps::u8::zepsFreqDomainFilterGetSize_EC_32f(order, parts, &a),
              zeps::n8::zepsFreqDomainFilterGetSize_EC_32f(order, parts, &b));
    ASSERT_EQ(a, b);
}

namespace {
std::unique_ptr<Pair> fd_states(Rng& rng, int order, int parts) {
    int size = 0;
    if (zeps::u8::zepsFreqDomainFilterGetSize_EC_32f(order, parts, &size) != zepStsNoErr) size = 64;
    return init_both(rng, size, [&](int v, Zep8u* p) {
        return v == 0 ? zeps::u8::zepsFreqDomainFilterInit_EC_32f(p, order, parts)
                      : zeps::n8::zepsFreqDomainFilterInit_EC_32f(p, order, parts);
    });
}

/// Blocks of a random echo path (an exponentially decaying FIR) with noise
/// through filter and update on both builds, random guard actions and steps;
/// the leakage update (with its restart action) when `leak`; a random
/// proportionate share (0 included, and refused values) when `prop`; a random
/// hold decay of the leakage update (1 included, and refused values) when `hold`.
void fd_run(Rng& rng, bool leak = false, bool prop = false, bool hold = false) {
    const int order = static_cast<int>(rng.uniform(2, 8)), parts = static_cast<int>(rng.uniform(1, 9));
    const int B = 1 << (order - 1);
    auto st = fd_states(rng, order, parts);
    if (prop) {
        const float share = rng.chance(4) ? (rng.chance(2) ? 1.5f : 0.0f) : static_cast<float>(rng.uniform(0, 100)) / 100.0f;
        ASSERT_EQ(zeps::u8::zepsFreqDomainFilterSetProp_EC_32f(share, st->a.p),
                  zeps::n8::zepsFreqDomainFilterSetProp_EC_32f(share, st->b.p));
        ASSERT_TRUE(same_state(st->a, st->b));
    }
    if (hold) {
        const float decay = rng.chance(4) ? (rng.chance(2) ? 1.0f : 0.0f) : static_cast<float>(rng.uniform(1, 100)) / 100.0f;
        ASSERT_EQ(zeps::u8::zepsFreqDomainFilterSetHold_EC_32f(decay, st->a.p),
                  zeps::n8::zepsFreqDomainFilterSetHold_EC_32f(decay, st->b.p));
        ASSERT_TRUE(same_state(st->a, st->b));
    }
    std::vector<float> h(static_cast<std::size_t>(B * parts));
    for (std::size_t i = 0; i < h.size(); ++i) h[i] = rng.f32(0.5f) * std::exp(-0.05f * static_cast<float>(i));
    std::vector<float> hist(h.size() + static_cast<std::size_t>(B), 0.0f);
    for (int blk = 0; blk < 60; ++blk) {
        std::memmove(hist.data(), hist.data() + B, sizeof(float) * h.size());
        const auto far = fvec(rng, static_cast<std::size_t>(B), rng.chance(4) ? 32000.0f : 3000.0f);
        std::copy(far.begin(), far.end(), hist.end() - B);
        std::vector<float> nearIn(static_cast<std::size_t>(B));
        for (int n = 0; n < B; ++n) {
            double y = rng.f32(10.0f);
            for (std::size_t k = 0; k < h.size(); ++k) y += h[k] * hist[h.size() + static_cast<std::size_t>(n) - k];
            nearIn[static_cast<std::size_t>(n)] = static_cast<float>(y);
        }
        std::vector<float> e[2], v[2];
        for (int b = 0; b < 2; ++b) e[b].assign(static_cast<std::size_t>(B), 7.0f), v[b] = e[b];
        if (rng.chance(3)) {  // the adapting filter alone (a restore then forms the saved filter's error late)
            ASSERT_EQ(zeps::u8::zepsFreqDomainFilterAdapt_EC_32f(far.data(), nearIn.data(), e[0].data(), st->a.p),
                      zeps::n8::zepsFreqDomainFilterAdapt_EC_32f(far.data(), nearIn.data(), e[1].data(), st->b.p));
        } else {
            ASSERT_EQ(zeps::u8::zepsFreqDomainFilter_EC_32f(far.data(), nearIn.data(), e[0].data(), v[0].data(), st->a.p),
                      zeps::n8::zepsFreqDomainFilter_EC_32f(far.data(), nearIn.data(), e[1].data(), v[1].data(), st->b.p));
        }
        ASSERT_TRUE(same_bytes(e[0], e[1]));
        ASSERT_TRUE(same_bytes(v[0], v[1]));
        const int action = rng.chance(6) ? static_cast<int>(rng.uniform(-1, leak ? 4 : 3)) : 0;
        const float step = rng.chance(8) ? 2.5f : static_cast<float>(rng.uniform(0, 100)) / 100.0f;
        const float delta = 1000.0f * static_cast<float>(2 * B * parts);
        if (leak)
            ASSERT_EQ(zeps::u8::zepsFreqDomainLeakUpdate_EC_32f(action, step, delta, st->a.p),
                      zeps::n8::zepsFreqDomainLeakUpdate_EC_32f(action, step, delta, st->b.p));
        else
            ASSERT_EQ(zeps::u8::zepsFreqDomainCoefUpdate_EC_32f(action, step, delta, st->a.p),
                      zeps::n8::zepsFreqDomainCoefUpdate_EC_32f(action, step, delta, st->b.p));
        ASSERT_TRUE(same_state(st->a, st->b));
    }
}
}  // namespace

ZEPS_VARIANT_CHECK(zepsFreqDomainFilterInit_EC_32f) { fd_states(rng, shape(rng, 2, 12), shape(rng, 1, 20)); }
ZEPS_VARIANT_CHECK(zepsFreqDomainFilter_EC_32f) { fd_run(rng); }
ZEPS_VARIANT_CHECK(zepsFreqDomainFilterAdapt_EC_32f) { fd_run(rng, rng.chance(2)); }
ZEPS_VARIANT_CHECK(zepsFreqDomainCoefUpdate_EC_32f) { fd_run(rng); }
ZEPS_VARIANT_CHECK(zepsFreqDomainLeakUpdate_EC_32f) { fd_run(rng, true); }
ZEPS_VARIANT_CHECK(zepsFreqDomainFilterSetProp_EC_32f) { fd_run(rng, rng.chance(2), true); }
ZEPS_VARIANT_CHECK(zepsFreqDomainFilterSetHold_EC_32f) { fd_run(rng, true, rng.chance(2), true); }

// SPDX-License-Identifier: BSD-3-Clause
// Both processor builds of the sub-band filter bank give identical statuses,
// outputs and states (states compared with their self-pointers rebased).
#include <deque>

#include "tests/ec/subband_fixture.h"
#include "tests/variant_check.h"

namespace {

using zeps::test::Block;
using zeps::test::Rng;
using zeps::test::same_state;

struct Cfg {
    int order, F, L;
    bool builtin;
};

/// Mostly valid configurations (including A and B with their built-in
/// windows), sometimes invalid ones.
Cfg random_cfg(Rng& rng) {
    switch (rng.uniform(0, 7)) {
        case 0: return {5, 24, 128, true};
        case 1: return {6, 44, 256, true};
        case 2: return {static_cast<int>(rng.uniform(-1, 18)), static_cast<int>(rng.uniform(-1, 70)),
                        static_cast<int>(rng.uniform(-1, 300)), rng.chance(2)};
        default: {
            const int order = static_cast<int>(rng.uniform(1, 7)), N = 1 << order;
            return {order, static_cast<int>(rng.uniform(1, N)), N * static_cast<int>(rng.uniform(1, 4)), false};
        }
    }
}

template <class T>
std::vector<T> random_window(Rng& rng, int L);
template <>
std::vector<Zep16s> random_window<Zep16s>(Rng& rng, int L) {
    std::vector<Zep16s> w(static_cast<std::size_t>(std::max(L, 1)));
    for (auto& v : w) v = rng.chance(8) ? rng.s16() : static_cast<Zep16s>(rng.uniform(-2000, 9000));
    return w;
}
template <>
std::vector<float> random_window<float>(Rng& rng, int L) {
    std::vector<float> w(static_cast<std::size_t>(std::max(L, 1)));
    for (auto& v : w) v = rng.f32(1.2f);
    return w;
}

/// Sizes for a valid configuration (0 when GetSize refuses it).
template <bool Float>
void sizes(const Cfg& c, int& state, int& buf) {
    int i = 0;
    const ZepStatus st = Float ? zeps::u8::zepsSubbandProcessGetSize_32f(c.order, c.L, &state, &i, &buf)
                               : zeps::u8::zepsSubbandProcessGetSize_16s(c.order, c.L, &state, &i, &buf);
    if (st != zepStsNoErr) state = buf = 0;
}

/// Two states of the configuration, one built by each build's Init.
template <bool Float>
struct Pair {
    Cfg c;
    int ss = 0, bs = 0;
    unsigned skew;
    std::deque<Block> st, bf;
    bool ok = false;
    explicit Pair(Rng& rng) : c(random_cfg(rng)), skew(static_cast<unsigned>(rng.uniform(0, 15))) {
        sizes<Float>(c, ss, bs);
        if (ss == 0) return;
        for (int b = 0; b < 2; ++b) st.emplace_back(ss, skew, 0x5A), bf.emplace_back(bs, skew + 3);
        std::vector<Zep16s> w16 = random_window<Zep16s>(rng, c.L);
        std::vector<float> wf = random_window<float>(rng, c.L);
        ZepStatus r0, r1;
        if (Float) {
            r0 = zeps::u8::zepsSubbandProcessInit_32f(st[0].p, c.order, c.F, c.L, c.builtin ? nullptr : wf.data(), nullptr);
            r1 = zeps::n8::zepsSubbandProcessInit_32f(st[1].p, c.order, c.F, c.L, c.builtin ? nullptr : wf.data(), nullptr);
        } else {
            r0 = zeps::u8::zepsSubbandProcessInit_16s(st[0].p, c.order, c.F, c.L, c.builtin ? nullptr : w16.data(), nullptr);
            r1 = zeps::n8::zepsSubbandProcessInit_16s(st[1].p, c.order, c.F, c.L, c.builtin ? nullptr : w16.data(), nullptr);
        }
        EXPECT_EQ(r0, r1);
        EXPECT_TRUE(same_state(st[0], st[1]));
        ok = r0 == zepStsNoErr;
    }
    int N() const { return 1 << c.order; }
};

template <bool Float>
void check_get_size(Rng& rng) {
    const Cfg c = random_cfg(rng);
    int a[3] = {-1, -1, -1}, b[3] = {-1, -1, -1};
    const int nul = static_cast<int>(rng.uniform(0, 8));
    auto p = [&](int* q, int i) { return nul == i ? nullptr : q; };
    const auto f0 = Float ? zeps::u8::zepsSubbandProcessGetSize_32f : zeps::u8::zepsSubbandProcessGetSize_16s;
    const auto f1 = Float ? zeps::n8::zepsSubbandProcessGetSize_32f : zeps::n8::zepsSubbandProcessGetSize_16s;
    EXPECT_EQ(f0(c.order, c.L, p(a, 0), p(a + 1, 1), p(a + 2, 2)), f1(c.order, c.L, p(b, 0), p(b + 1, 1), p(b + 2, 2)));
    EXPECT_EQ(std::vector<int>(a, a + 3), std::vector<int>(b, b + 3));
}

template <bool Float>
void check_init(Rng& rng) {
    Pair<Float> pr(rng);  // Init of both builds compared inside
    if (pr.ss == 0) {
        // refused configurations: statuses agree and nothing is written
        Block s0(64, 1), s1(64, 1);
        const std::vector<float> wf(8, 1.0f);
        const std::vector<Zep16s> w16(8, 1);
        const Cfg& c = pr.c;
        if (Float)
            EXPECT_EQ(zeps::u8::zepsSubbandProcessInit_32f(s0.p, c.order, c.F, c.L, nullptr, nullptr),
                      zeps::n8::zepsSubbandProcessInit_32f(s1.p, c.order, c.F, c.L, nullptr, nullptr));
        else
            EXPECT_EQ(zeps::u8::zepsSubbandProcessInit_16s(s0.p, c.order, c.F, c.L, nullptr, nullptr),
                      zeps::n8::zepsSubbandProcessInit_16s(s1.p, c.order, c.F, c.L, nullptr, nullptr));
        EXPECT_EQ(s0.bytes(), s1.bytes());
    }
}

/// Runs a few frames of analysis (or synthesis) on both builds' states.
template <bool Float, bool Analysis>
void check_process(Rng& rng) {
    Pair<Float> pr(rng);
    if (!pr.ok) return;
    const int N = pr.N(), F = pr.c.F, bins = N / 2 + 1;
    for (int frame = 0; frame < 4; ++frame) {
        const int sf = rng.chance(6) ? static_cast<int>(rng.uniform(-40, 40)) : static_cast<int>(rng.uniform(-4, 6));
        const int nul = rng.chance(5) ? static_cast<int>(rng.uniform(0, 3)) : -1;
        auto p = [&](auto* q, int i) { return nul == i ? nullptr : q; };
        ZepStatus r[2];
        if (Float) {
            std::vector<float> x = rng.vec<float>(static_cast<std::size_t>(2 * bins + F));
            std::vector<float> out[2] = {std::vector<float>(2 * bins + F, 3.0f), std::vector<float>(2 * bins + F, 3.0f)};
            for (int b = 0; b < 2; ++b) {
                auto* s = pr.st[b].p;
                auto* w = pr.bf[b].p;
                if (Analysis) {
                    auto* dst = reinterpret_cast<Zep32fc*>(out[b].data());
                    r[b] = b ? zeps::n8::zepsSubbandAnalysis_32f32fc(p(x.data(), 0), p(dst, 1), p(s, 2), p(w, 3))
                             : zeps::u8::zepsSubbandAnalysis_32f32fc(p(x.data(), 0), p(dst, 1), p(s, 2), p(w, 3));
                } else {
                    auto* src = reinterpret_cast<const Zep32fc*>(x.data());
                    r[b] = b ? zeps::n8::zepsSubbandSynthesis_32fc32f(p(src, 0), p(out[b].data(), 1), p(s, 2), p(w, 3))
                             : zeps::u8::zepsSubbandSynthesis_32fc32f(p(src, 0), p(out[b].data(), 1), p(s, 2), p(w, 3));
                }
            }
            EXPECT_TRUE(zeps::test::same_bytes(out[0], out[1]));
        } else {
            std::vector<std::int32_t> x(static_cast<std::size_t>(2 * bins + F));
            for (auto& v : x) v = Analysis ? rng.s16() : (rng.chance(4) ? rng.s32() : static_cast<std::int32_t>(rng.uniform(-(1 << 22), 1 << 22)));
            std::vector<Zep16s> x16(x.begin(), x.end());
            std::vector<std::int32_t> out[2] = {std::vector<std::int32_t>(2 * bins + F, 3), std::vector<std::int32_t>(2 * bins + F, 3)};
            for (int b = 0; b < 2; ++b) {
                auto* s = pr.st[b].p;
                auto* w = pr.bf[b].p;
                if (Analysis) {
                    auto* dst = reinterpret_cast<Zep32sc*>(out[b].data());
                    r[b] = b ? zeps::n8::zepsSubbandAnalysis_16s32sc_Sfs(p(x16.data(), 0), p(dst, 1), p(s, 2), sf, p(w, 3))
                             : zeps::u8::zepsSubbandAnalysis_16s32sc_Sfs(p(x16.data(), 0), p(dst, 1), p(s, 2), sf, p(w, 3));
                } else {
                    auto* src = reinterpret_cast<const Zep32sc*>(x.data());
                    auto* dst = reinterpret_cast<Zep16s*>(out[b].data());
                    r[b] = b ? zeps::n8::zepsSubbandSynthesis_32sc16s_Sfs(p(src, 0), p(dst, 1), p(s, 2), sf, p(w, 3))
                             : zeps::u8::zepsSubbandSynthesis_32sc16s_Sfs(p(src, 0), p(dst, 1), p(s, 2), sf, p(w, 3));
                }
            }
            EXPECT_TRUE(zeps::test::same_bytes(out[0], out[1]));
        }
        EXPECT_EQ(r[0], r[1]);
        EXPECT_TRUE(same_state(pr.st[0], pr.st[1]));
    }
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsSubbandProcessGetSize_16s) { check_get_size<false>(rng); }
ZEPS_VARIANT_CHECK(zepsSubbandProcessGetSize_32f) { check_get_size<true>(rng); }
ZEPS_VARIANT_CHECK(zepsSubbandProcessInit_16s) { check_init<false>(rng); }
ZEPS_VARIANT_CHECK(zepsSubbandProcessInit_32f) { check_init<true>(rng); }
ZEPS_VARIANT_CHECK(zepsSubbandAnalysis_16s32sc_Sfs) { check_process<false, true>(rng); }
ZEPS_VARIANT_CHECK(zepsSubbandAnalysis_32f32fc) { check_process<true, true>(rng); }
ZEPS_VARIANT_CHECK(zepsSubbandSynthesis_32fc32f) { check_process<true, false>(rng); }
ZEPS_VARIANT_CHECK(zepsSubbandSynthesis_32sc16s_Sfs) { check_process<false, false>(rng); }

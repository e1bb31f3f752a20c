// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E stages: the order-generic members against the main-body
// stages at order 10 (synthesis, residual, weighting, post-filter with the
// main body's factors), the codebook decoder's pulse layout, the Levinson
// recursion's fallback to the last stable filter, and both-builds equality
// of every export of the group. The bit-exact decoder replays are in
// tests/codecs/test_g729e.cpp.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <utility>
#include <fstream>
#include <string>
#include <vector>

#include "tests/g729/g729_stage_util.h"

namespace {

using namespace zeps::test::g729st;
namespace u8 = zeps::u8;
namespace n8 = zeps::n8;

/// An order-30 filter: an order-10 one padded with small coefficients.
V16 lpc30(zeps::test::Rng& rng) {
    V16 a = stable_lpc(rng);
    for (int i = 11; i <= 30; ++i) a.push_back(static_cast<Zep16s>(rng.uniform(-60, 60)));
    return a;
}

TEST(G729EStages, OrderTenMatchesMainBody) {
    zeps::test::Rng rng(29);
    for (int rep = 0; rep < 50; ++rep) {
        const V16 a = stable_lpc(rng);
        const V16 x = small16(rng, 50, rep % 5 ? 3000 : 32767);
        V16 y1(40), y2(40), m1 = small16(rng, 10, 2000), m2 = m1;
        EXPECT_EQ(u8::zepsSynthesisFilter_G729E_16s(10, a.data(), x.data() + 10, y1.data(), 40, m1.data(), 1),
                  u8::zepsSynthesisFilter_G729_16s(a.data(), x.data() + 10, y2.data(), 40, m2.data(), 1));
        EXPECT_EQ(y1, y2);
        EXPECT_EQ(m1, m2);
        ASSERT_EQ(u8::zepsResidual_G729E_16s(10, a.data(), x.data() + 10, y1.data(), 40), zepStsNoErr);
        ASSERT_EQ(u8::zepsResidual_G729_16s(a.data(), x.data() + 10, y2.data(), 40), zepStsNoErr);
        EXPECT_EQ(y1, y2);
        V16 w1(11), w2(11);
        const Zep16s g = rng.s16();
        u8::zepsWeightLPC_G729E_16s(a.data(), g, 10, w1.data());
        u8::zepsWeightLPC_G729_16s(a.data(), g, w2.data());
        EXPECT_EQ(w1, w2);
    }
}

// With the main body's factors the Annex E post-filter is the main body's.
TEST(G729EStages, PostFilterWithMainBodyFactors) {
    zeps::test::Rng rng(7);
    Zep32s ne = 0, nm = 0;
    ASSERT_EQ(u8::zepsPostFilterGetStateSize_G729E_16s(&ne), zepStsNoErr);
    ASSERT_EQ(u8::zepsPostFilterGetStateSize_G729_16s(&nm), zepStsNoErr);
    std::vector<Zep8u> se(static_cast<std::size_t>(ne)), sm(static_cast<std::size_t>(nm));
    u8::zepsPostFilterInit_G729E_16s(se.data());
    u8::zepsPostFilterInit_G729_16s(sm.data());
    for (int rep = 0; rep < 200; ++rep) {
        const V16 a = stable_lpc(rng), x = small16(rng, 40, 8000);
        const Zep16s lag = static_cast<Zep16s>(rng.uniform(18, 143));
        V16 ye(40), ym(40);
        Zep16s ve = -1, vm = -1;
        ASSERT_EQ(u8::zepsPostFilter_G729E_16s(lag, x.data(), a.data(), ye.data(), &ve, 22938, 18022, 16384, 20, 10,
                                               se.data()),
                  zepStsNoErr);
        ASSERT_EQ(u8::zepsPostFilter_G729_16s(lag, a.data(), x.data(), ym.data(), &vm, sm.data()), zepStsNoErr);
        ASSERT_EQ(ye, ym) << rep;
        EXPECT_EQ(ve, vm);
    }
}

TEST(G729EStages, CodebookPulses) {
    // Forward: two pulses on each of the 5 tracks; code 0x08 | (1 << 4):
    // positions t and 5 + t, the first negative, the second (after it) positive.
    const Zep16s fwd[5] = {0x18, 0x18, 0x18, 0x18, 0x18};
    V16 c(40);
    ASSERT_EQ(u8::zepsDecodeFixedCodebook_G729E_16s(fwd, 0, c.data()), zepStsNoErr);
    for (int t = 0; t < 5; ++t) {
        EXPECT_EQ(c[t], -4096);
        EXPECT_EQ(c[5 + t], 4096);
    }
    // Backward: starting track 7 reads as 4; three pulses at one position add up.
    const Zep16s bwd[5] = {static_cast<Zep16s>(7 << 10), 0, 0, 0, 0};
    ASSERT_EQ(u8::zepsDecodeFixedCodebook_G729E_16s(bwd, 1, c.data()), zepStsNoErr);
    EXPECT_EQ(c[4], 3 * 4096);  // track 4, then 0, 1 (3 pulses), 2, 3 (2 pulses)
    EXPECT_EQ(c[0], 3 * 4096);
    EXPECT_EQ(c[1], 2 * 4096);
    int pulses = 0;
    for (Zep16s v : c) pulses += std::abs(v) / 4096;
    EXPECT_EQ(pulses, 12);
}

// tests/g729/data/acelp_e.cases: 300 calls of the ITU-T G.729 Annex E
// ACELP_10i40_35bits (even cases) and ACELP_12i40_44bits (odd) on random
// targets, residuals and decaying impulse responses (some with extreme
// values), recorded from the reference: per call 206 little-endian words,
// mode, x[40], cn[40], H[40], then code[40], y[40], indx[5].
TEST(G729EStages, FixedCodebookSearchRecordedCalls) {
    std::ifstream f(std::string(ZEPS_TESTS_SOURCE_DIR) + "/g729/data/acelp_e.cases", std::ios::binary);
    ASSERT_TRUE(f.good());
    std::vector<char> raw((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    ASSERT_EQ(raw.size(), 300u * 206u * 2u);
    const auto word = [&](std::size_t i) {
        return static_cast<Zep16s>(static_cast<unsigned char>(raw[2 * i]) |
                                   (static_cast<unsigned char>(raw[2 * i + 1]) << 8));
    };
    for (std::size_t c = 0; c < 300; ++c) {
        V16 w(206);
        for (std::size_t i = 0; i < 206; ++i) w[i] = word(c * 206 + i);
        const V16 h(w.begin() + 81, w.begin() + 121);
        V16 code(40), y(40), idx(5);
        ASSERT_EQ(u8::zepsFixedCodebookSearch_G729E_16s(w.data() + 1, w.data() + 41, h.data(), code.data(), y.data(),
                                                        idx.data(), w[0]),
                  zepStsNoErr);
        EXPECT_EQ(code, V16(w.begin() + 121, w.begin() + 161)) << c;
        EXPECT_EQ(y, V16(w.begin() + 161, w.begin() + 201)) << c;
        EXPECT_EQ(idx, V16(w.begin() + 201, w.end())) << c;
        EXPECT_EQ(V16(w.begin() + 81, w.begin() + 121), h);  // the response is read only
        // The decoder rebuilds the codeword from the codes.
        V16 dec(40);
        ASSERT_EQ(u8::zepsDecodeFixedCodebook_G729E_16s(idx.data(), w[0], dec.data()), zepStsNoErr);
        EXPECT_EQ(dec, code) << c;
    }
}

TEST(G729EStages, LevinsonKeepsLastStableFilter) {
    // A ramp autocorrelation of r[2] = -r[0]-ish makes the second coefficient unstable.
    Zep16s rh[31] = {16384, 16000, -16384}, rl[31] = {};
    Zep16s a[31], rc[30], old_a[31] = {4096, 100, -50}, old_rc[2] = {11, 22};
    const V16 before(old_a, old_a + 31);
    EXPECT_EQ(u8::zepsLevinsonDurbin_G729E_16s(30, rh, rl, a, rc, old_a, old_rc), zepStsOverflow);
    EXPECT_EQ(V16(a, a + 31), before);
    EXPECT_EQ(rc[0], 11);
    EXPECT_EQ(rc[1], 22);
    rh[0] = 16383;
    EXPECT_EQ(u8::zepsLevinsonDurbin_G729E_16s(30, rh, rl, a, rc, old_a, old_rc), zepStsRangeErr);
}

// ---- both builds

ZEPS_VARIANT_CHECK(zepsLagWindow_G729E_32s16s) {
    for (int rep = 0; rep < 40; ++rep) {
        V32 r = rng.vec<std::int32_t>(31);
        if (rep % 2) r[0] = static_cast<Zep32s>(rng.uniform(0, 0x7fffffff));
        V16 h(31, 5), l(31, 5), h2 = h, l2 = l;
        EXPECT_EQ(u8::zepsLagWindow_G729E_32s16s(r.data(), h.data(), l.data()),
                  n8::zepsLagWindow_G729E_32s16s(r.data(), h2.data(), l2.data()));
        EXPECT_EQ(h, h2);
        EXPECT_EQ(l, l2);
    }
}
ZEPS_VARIANT_CHECK(zepsLevinsonDurbin_G729E_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const int order = static_cast<int>(rng.uniform(1, 31));
        V16 rh = rand16(rng, 31), rl = small16(rng, 31, 32767);
        if (rep % 4) {  // a decaying autocorrelation: mostly stable
            rh[0] = 32000;
            for (int i = 1; i < 31; ++i) rh[i] = static_cast<Zep16s>(rh[i - 1] * 7 / 10 + rng.uniform(-500, 500));
        }
        for (auto& v : rl) v = static_cast<Zep16s>(std::abs(v));
        both<V16>(u8::zepsLevinsonDurbin_G729E_16s, n8::zepsLevinsonDurbin_G729E_16s,
                  {rh, rl, V16(31, 1), V16(30, 2), lpc30(rng), V16(2, 3)}, [&](auto f, auto& v) {
                      return f(order, v[0].data(), v[1].data(), v[2].data(), v[3].data(), v[4].data(), v[5].data());
                  });
    }
}
ZEPS_VARIANT_CHECK(zepsSynthesisFilter_G729E_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int order = static_cast<int>(rng.uniform(0, 31)), len = static_cast<int>(rng.uniform(0, 80));
        const V16 a = rep % 3 ? lpc30(rng) : rand16(rng, 31);
        both<V16>(u8::zepsSynthesisFilter_G729E_16s, n8::zepsSynthesisFilter_G729E_16s,
                  {small16(rng, 80, rep % 4 ? 3000 : 32767), V16(80, 7), small16(rng, 30, 3000)},
                  [&](auto f, auto& v) { return f(order, a.data(), v[0].data(), v[1].data(), len, v[2].data(), rep % 2); });
    }
}
ZEPS_VARIANT_CHECK(zepsSynthesisFilter_G729E_16s_I) {
    for (int rep = 0; rep < 40; ++rep) {
        const int order = static_cast<int>(rng.uniform(0, 31)), len = static_cast<int>(rng.uniform(0, 80));
        const V16 a = rep % 3 ? lpc30(rng) : rand16(rng, 31);
        both<V16>(u8::zepsSynthesisFilter_G729E_16s_I, n8::zepsSynthesisFilter_G729E_16s_I,
                  {small16(rng, 80, rep % 4 ? 3000 : 32767), small16(rng, 30, 3000)},
                  [&](auto f, auto& v) { return f(order, a.data(), v[0].data(), len, v[1].data(), rep % 2); });
    }
}
ZEPS_VARIANT_CHECK(zepsResidual_G729E_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int order = static_cast<int>(rng.uniform(0, 31)), len = static_cast<int>(rng.uniform(0, 50));
        const V16 a = rand16(rng, 31), x = rand16(rng, 80);
        both<V16>(u8::zepsResidual_G729E_16s, n8::zepsResidual_G729E_16s, {V16(50, 9)},
                  [&](auto f, auto& v) { return f(order, a.data(), x.data() + 30, v[0].data(), len); });
    }
}
ZEPS_VARIANT_CHECK(zepsWeightLPC_G729E_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int order = static_cast<int>(rng.uniform(0, 31));
        const Zep16s g = rng.s16();
        both<V16>(u8::zepsWeightLPC_G729E_16s, n8::zepsWeightLPC_G729E_16s, {rand16(rng, 31), V16(31, 4)},
                  [&](auto f, auto& v) { return f(v[0].data(), g, order, v[1].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsEnergyDB_G729E_16s) {
    for (int rep = 0; rep < 40; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 80));
        both<V16>(u8::zepsEnergyDB_G729E_16s, n8::zepsEnergyDB_G729E_16s,
                  {rep % 3 ? small16(rng, 80, 1 << (rep % 15)) : rand16(rng, 80), V16(1, 3)},
                  [&](auto f, auto& v) { return f(v[0].data(), len, v[1].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsPitchTrack_G729E_16s) {
    V16 ta = {30, 0, 0, 0}, tb = ta;
    for (int rep = 0; rep < 200; ++rep) {
        V16 da = {static_cast<Zep16s>(rep % 9 ? rng.uniform(20, 143) : rng.s16()), static_cast<Zep16s>(rng.uniform(-1, 1))};
        V16 db = da;
        EXPECT_EQ(u8::zepsPitchTrack_G729E_16s(da.data(), ta.data()), n8::zepsPitchTrack_G729E_16s(db.data(), tb.data()));
        EXPECT_EQ(da, db);
        EXPECT_EQ(ta, tb);
    }
}
ZEPS_VARIANT_CHECK(zepsDecodeFixedCodebook_G729E_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const Zep16s mode = static_cast<Zep16s>(rng.uniform(-1, 2));
        both<V16>(u8::zepsDecodeFixedCodebook_G729E_16s, n8::zepsDecodeFixedCodebook_G729E_16s,
                  {rand16(rng, 5), V16(40, 3)}, [&](auto f, auto& v) { return f(v[0].data(), mode, v[1].data()); });
    }
}
ZEPS_VARIANT_CHECK(zepsFixedCodebookSearch_G729E_16s) {
    for (int rep = 0; rep < 30; ++rep) {
        const Zep16s mode = static_cast<Zep16s>(rng.uniform(-1, 2));
        V16 h = small16(rng, 40, 3000);
        h[0] = 4096;
        const V16 x = rep % 5 ? small16(rng, 40, 5000) : rand16(rng, 40), cn = small16(rng, 40, 5000);
        both<V16>(u8::zepsFixedCodebookSearch_G729E_16s, n8::zepsFixedCodebookSearch_G729E_16s,
                  {V16(40, 1), V16(40, 2), V16(5, 3)}, [&](auto f, auto& v) {
                      return f(x.data(), cn.data(), h.data(), v[0].data(), v[1].data(), v[2].data(), mode);
                  });
    }
}
ZEPS_VARIANT_CHECK(zepsDecodeGainErased_G729E_16s) {
    for (int rep = 0; rep < 60; ++rep) {
        const int count = static_cast<int>(rng.uniform(-1, 14)), stationary = static_cast<int>(rng.uniform(-1, 2));
        both<V16>(u8::zepsDecodeGainErased_G729E_16s, n8::zepsDecodeGainErased_G729E_16s,
                  {rand16(rng, 4), rand16(rng, 2), rand16(rng, 1)}, [&](auto f, auto& v) {
                      return f(v[0].data(), v[1].data(), v[2].data(), count, stationary);
                  });
    }
}
ZEPS_VARIANT_CHECK(zepsPostFilterGetStateSize_G729E_16s) {
    Zep32s a = 0, b = 1;
    EXPECT_EQ(u8::zepsPostFilterGetStateSize_G729E_16s(&a), n8::zepsPostFilterGetStateSize_G729E_16s(&b));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPostFilterInit_G729E_16s) {
    std::vector<Zep8u> a(428, 0x5a), b(428, 0xa5);
    EXPECT_EQ(u8::zepsPostFilterInit_G729E_16s(a.data()), n8::zepsPostFilterInit_G729E_16s(b.data()));
    EXPECT_EQ(a, b);
}
ZEPS_VARIANT_CHECK(zepsPostFilter_G729E_16s) {
    std::vector<Zep8u> sa(428), sb(428);
    u8::zepsPostFilterInit_G729E_16s(sa.data());
    n8::zepsPostFilterInit_G729E_16s(sb.data());
    for (int rep = 0; rep < 60; ++rep) {
        const bool high = rep % 2 != 0;
        const int order = rep % 7 == 0 ? static_cast<int>(rng.uniform(0, 31)) : high ? 30 : 10;
        const V16 a = high ? lpc30(rng) : stable_lpc(rng), x = rep % 5 ? small16(rng, 40, 8000) : rand16(rng, 40);
        const Zep16s lag = static_cast<Zep16s>(rng.uniform(17, 144));
        const Zep16s g1 = static_cast<Zep16s>(rng.uniform(-1, 22938)), g2 = static_cast<Zep16s>(rng.uniform(0, 21300));
        const Zep16s gh = static_cast<Zep16s>(rep % 3 ? rng.uniform(0, 8192) : 16384);
        const int len = high ? 32 : static_cast<int>(rng.uniform(1, 33));
        V16 ya(40), yb(40), az = a;
        az.resize(31);
        Zep16s va = -1, vb = -1;
        EXPECT_EQ(u8::zepsPostFilter_G729E_16s(lag, x.data(), az.data(), ya.data(), &va, g1, g2, gh, len, order, sa.data()),
                  n8::zepsPostFilter_G729E_16s(lag, x.data(), az.data(), yb.data(), &vb, g1, g2, gh, len, order, sb.data()));
        EXPECT_EQ(ya, yb);
        EXPECT_EQ(va, vb);
        EXPECT_EQ(sa, sb);
    }
}

TEST(G729EStages, ModeDecisionForcedCases) {
    zeps::test::Rng rng(31);
    V16 signal = small16(rng, 110, 3000), a_fwd = stable_lpc(rng), a2 = stable_lpc(rng);
    a_fwd.insert(a_fwd.end(), a2.begin(), a2.end());
    V16 a_bwd = lpc30(rng), prev = lpc30(rng), lsp = small16(rng, 10, 30000);
    a_bwd.insert(a_bwd.begin(), a_bwd.begin(), a_bwd.end());
    const auto decide = [&](int rate, const V16& sig, V16& bwd, V16& stat, Zep16s& c_int, Zep16s& dominant) {
        Zep16s mode = 7;
        EXPECT_EQ(u8::zepsLPCModeDecision_G729E_16s(sig.data() + 30, a_fwd.data(), bwd.data(), &mode, lsp.data(),
                                                lsp.data(), rate, &dominant, 1, prev.data(), &c_int, stat.data()),
                  zepStsNoErr);
        return mode;
    };
    // 8 kbit/s: forward, not dominant, the index decaying by 2621 down to 10000, filters untouched.
    for (const auto& [from, to] : {std::pair<Zep16s, Zep16s>{20000, 17379}, {12000, 10000}, {9000, 9000}}) {
        V16 stat = {from, 3, 750, 4, 5}, bwd = a_bwd;
        Zep16s c_int = 4506, dominant = 1;
        EXPECT_EQ(decide(0, signal, bwd, stat, c_int, dominant), 0);
        EXPECT_EQ(stat, (V16{to, 3, 750, 4, 5}));
        EXPECT_EQ(dominant, 0);
        EXPECT_EQ(c_int, 4506);
        EXPECT_EQ(bwd, a_bwd);
    }
    // A silent frame at 11.8 kbit/s: forward, the index capped at 13000, the
    // counters and the dominance left as they were; the backward filters are
    // still interpolated (c_int - 410, subframe 1 the mean with the previous).
    V16 stat = {20000, 3, 750, 4, 5}, bwd = a_bwd;
    Zep16s c_int = 4506, dominant = 1;
    EXPECT_EQ(decide(1, V16(110, 0), bwd, stat, c_int, dominant), 0);
    EXPECT_EQ(stat, (V16{13000, 3, 750, 4, 5}));
    EXPECT_EQ(dominant, 1);
    EXPECT_EQ(c_int, 4096);
    for (int i = 0; i <= 30; ++i) {
        const int w = (a_bwd[31 + i] * (4096 - 4096) * 2 >> 13) + (prev[i] * 4096 * 2 >> 13);
        EXPECT_EQ(bwd[31 + i], static_cast<Zep16s>(w)) << i;
        EXPECT_EQ(bwd[i], static_cast<Zep16s>((bwd[31 + i] >> 1) + (prev[i] >> 1))) << i;
    }
}

ZEPS_VARIANT_CHECK(zepsLPCModeDecision_G729E_16s) {
    // A run of frames with the records carried over, so that the
    // stationarity index, the counters and the interpolation factor move.
    V16 sa = {10000, 0, 0, 0, 0}, sb = sa, ca = {4506}, cb = ca, da = {0}, db = da;
    Zep16s prev_mode = 0;
    for (int rep = 0; rep < 120; ++rep) {
        const int rate = rep % 17 == 16 ? 0 : 1;
        V16 signal = rep % 9 == 0 ? rand16(rng, 110) : small16(rng, 110, 1 << (rep % 14 + 1));
        V16 a_fwd = stable_lpc(rng), a2 = stable_lpc(rng);
        a_fwd.insert(a_fwd.end(), a2.begin(), a2.end());
        V16 a_bwd = small16(rng, 62, rep % 5 ? 600 : 30000);
        a_bwd[0] = a_bwd[31] = 4096;
        V16 prev = small16(rng, 31, 800), lsp_new = small16(rng, 10, 30000), lsp_old = small16(rng, 10, 30000);
        prev[0] = 4096;
        if (rep % 3 == 0) lsp_old = lsp_new;
        V16 ba = a_bwd, bb = a_bwd, ma = {7}, mb = ma;
        const ZepStatus ra = u8::zepsLPCModeDecision_G729E_16s(signal.data() + 30, a_fwd.data(), ba.data(), ma.data(),
                                                               lsp_new.data(), lsp_old.data(), rate, da.data(),
                                                               prev_mode, prev.data(), ca.data(), sa.data());
        const ZepStatus rb = n8::zepsLPCModeDecision_G729E_16s(signal.data() + 30, a_fwd.data(), bb.data(), mb.data(),
                                                               lsp_new.data(), lsp_old.data(), rate, db.data(),
                                                               prev_mode, prev.data(), cb.data(), sb.data());
        EXPECT_EQ(ra, rb);
        EXPECT_EQ(ba, bb);
        EXPECT_EQ(ma, mb);
        EXPECT_EQ(da, db);
        EXPECT_EQ(ca, cb);
        EXPECT_EQ(sa, sb);
        prev_mode = ma[0];
        if (prev_mode == 0) ca[0] = cb[0] = 4506;
    }
}
ZEPS_VARIANT_CHECK(zepsWeightingFactors_G729E_16s) {
    for (Zep16s dominant = -1; dominant <= 2; ++dominant)
        both<V16>(u8::zepsWeightingFactors_G729E_16s, n8::zepsWeightingFactors_G729E_16s, {V16(4, 5)},
                  [&](auto f, auto& v) { return f(dominant, v[0].data()); });
}

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex B stages: boundary cases the replays do not reach (LSF
// clamping statuses, the ends of the SID energy scale, zero gain, saturated
// energy, the VAD's start-up rule), the state protocol, and the both-builds
// checks of every export.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/g729b/g729b_test_util.h"
#include "tests/variant_check.h"

using namespace zeps::test::g729b;
namespace u8 = zeps::u8;
namespace n8 = zeps::n8;

namespace {

using Bytes = std::vector<Zep8u>;

/// MA memory with rows 0..3 = lo for elements below 5 and hi for the rest.
V16 memory(Zep16s lo, Zep16s hi) {
    V16 m(40);
    for (int i = 0; i < 40; ++i) m[i] = (i % 10) < 5 ? lo : hi;
    return m;
}

}  // namespace

TEST(G729BChecks, SidLsfDecodeReportsEachClamp) {
    struct Case {
        Zep16s lo, hi;
        int status;
        bool first40, last25681;
    };
    const Case cases[] = {
        {2339, 14037, zepStsNoErr, false, false},                   // reset-like memory: nothing clamped
        {-20000, -20000, zepStsLSFLowClamped, true, false},          // everything far below zero
        {30000, 30000, zepStsLSFHighClamped, false, true},           // everything above pi
        {-20000, 32767, zepStsLSFLowHighClamped, true, true},        // both ends out
    };
    const Zep16s idx[3] = {1, 7, 3};
    for (const Build& b : kBuilds) {
        for (const Case& c : cases) {
            V16 prev = memory(c.lo, c.hi);
            V16 lsf(10, 0x5a5a);
            EXPECT_EQ(b.sidLsfDecode(idx, prev.data(), lsf.data()), c.status) << b.name << " " << c.lo;
            EXPECT_EQ(lsf[0] == 40, c.first40);
            EXPECT_EQ(lsf[9] == 25681, c.last25681);
            if (!c.last25681) {  // unsaturated: the minimum spacing holds everywhere
                for (int j = 1; j < 10; ++j) EXPECT_GE(lsf[j] - lsf[j - 1], 321) << "spacing at " << j;
            }
        }
    }
}

TEST(G729BChecks, SidEnergyScaleEndsAndMonotony) {
    for (const Build& b : kBuilds) {
        Zep16s q = 0, idx = -1;
        const Zep16s tiny[2] = {1, 1}, tinySh[2] = {40, 40};
        ASSERT_EQ(b.gainQuant(tiny, tinySh, 2, &q, &idx), 0);
        EXPECT_EQ(idx, 0);
        EXPECT_EQ(q, -12);
        const Zep16s huge[2] = {32767, 32767}, hugeSh[2] = {-20, -20};
        ASSERT_EQ(b.gainQuant(huge, hugeSh, 2, &q, &idx), 0);
        EXPECT_EQ(idx, 31);
        EXPECT_EQ(q, 66);
        // Rising energies never lower the index; the two slopes of the scale meet at index 6.
        Zep16s last = 0;
        for (int sh = 30; sh >= -40; --sh)
            for (Zep16s e = 16384; e < 32767 - 2048; e = static_cast<Zep16s>(e + 2048)) {
                const Zep16s en[1] = {e}, s[1] = {static_cast<Zep16s>(sh)};
                ASSERT_EQ(b.gainQuant(en, s, 1, &q, &idx), 0);
                ASSERT_GE(idx, last) << "energy " << e << " exponent " << sh;
                ASSERT_TRUE(idx == 0 ? q == -12 : idx <= 6 ? q == 4 * idx - 8 : q == 2 * idx + 4) << idx << " " << q;
                last = idx;
            }
        EXPECT_EQ(last, 31);
    }
}

TEST(G729BChecks, ZeroGainExcitationIsSilentAndKeepsTheSeed) {
    for (const Build& b : kBuilds) {
        V16 exc(234, 1234);
        Zep16s seed = 11111, pitch[4] = {-1, -1, -1, -1};
        ASSERT_EQ(b.cngExc(0, exc.data(), &seed, pitch), 0);
        EXPECT_TRUE(std::all_of(exc.begin() + 154, exc.end(), [](Zep16s v) { return v == 0; }));
        EXPECT_EQ(seed, 11111);
        EXPECT_EQ(V16(pitch, pitch + 4), (V16{0, 41, 0, 41}));
    }
}

TEST(G729BChecks, FrameEnergyEnds) {
    struct Case {
        Zep16s sample, ener, shift;
    };
    const Case cases[] = {{0, 0, 16}, {32767, 32767, 16}, {-32768, 32767, 16}, {1, 20480, -7}};
    for (const Build& b : kBuilds)
        for (const Case& c : cases) {
            const V16 exc(80, c.sample);
            Zep16s e = 0, s = 0;
            ASSERT_EQ(b.frameEnergy(exc.data(), &e, &s), 0);
            EXPECT_EQ(e, c.ener) << c.sample;
            EXPECT_EQ(s, c.shift) << c.sample;
        }
}

TEST(G729BChecks, VadCallsQuietStartFramesNoise) {
    // A frame whose energy is below the fixed floor is noise, at start-up
    // and after it when nothing voiced preceded it.
    for (const Build& b : kBuilds) {
        Bytes st(80);
        ASSERT_EQ(b.vadInit(st.data()), 0);
        const V16 lsf(10, 1000), x(240, 0);
        V32 r(13, 0);
        r[0] = 1 << 30;
        Zep16s prev = 1, pprev = 1;
        for (Zep16s f = 1; f <= 40; ++f) {
            Zep16s vad = -1;
            ASSERT_EQ(b.vad(0, lsf.data(), r.data(), -30, x.data(), f, prev, pprev, &vad, st.data()), 0);
            EXPECT_EQ(vad, 0) << "frame " << f;
            pprev = prev;
            prev = vad;
        }
    }
}

TEST(G729BChecks, InitialisersFillTheWholeState) {
    struct State {
        decltype(&u8::zepsVADGetStateSize_G729B) size;
        decltype(&u8::zepsVADInit_G729B) init;
        Zep32s bytes;
    };
    const State states[] = {{u8::zepsVADGetStateSize_G729B, u8::zepsVADInit_G729B, 80},
                            {u8::zepsDTXGetStateSize_G729B, u8::zepsDTXInit_G729B, 168},
                            {u8::zepsSIDGainDecodeGetStateSize_G729B, u8::zepsSIDGainDecodeInit_G729B, 4}};
    for (const State& s : states) {
        Zep32s n = 0;
        ASSERT_EQ(s.size(&n), 0);
        ASSERT_EQ(n, s.bytes);
        Bytes a(static_cast<std::size_t>(n), 0x00), b(static_cast<std::size_t>(n), 0xff);
        ASSERT_EQ(s.init(a.data()), 0);
        ASSERT_EQ(s.init(b.data()), 0);
        EXPECT_EQ(a, b);
    }
}

// ---- both builds ----------------------------------------------------------

namespace {

template <class F>
void same_state_size(F u, F n) {
    Zep32s a = -1, b = -2;
    ASSERT_EQ(u(&a), n(&b));
    ASSERT_EQ(a, b);
    ASSERT_EQ(u(nullptr), n(nullptr));
}

template <class F>
void same_init(F u, F n, std::size_t bytes, zeps::test::Rng& rng) {
    Bytes a(bytes), b(bytes);
    for (auto& x : a) x = static_cast<Zep8u>(rng.next());
    for (auto& x : b) x = static_cast<Zep8u>(rng.next());
    ASSERT_EQ(u(a.data()), n(b.data()));
    ASSERT_TRUE(zeps::test::same_bytes(a, b));
}

Zep16s flag(zeps::test::Rng& rng) { return static_cast<Zep16s>(rng.chance(8) ? rng.uniform(-1, 2) : rng.uniform(0, 1)); }

}  // namespace

ZEPS_VARIANT_CHECK(zepsVADGetStateSize_G729B) { same_state_size(u8::zepsVADGetStateSize_G729B, n8::zepsVADGetStateSize_G729B); }
ZEPS_VARIANT_CHECK(zepsDTXGetStateSize_G729B) { same_state_size(u8::zepsDTXGetStateSize_G729B, n8::zepsDTXGetStateSize_G729B); }
ZEPS_VARIANT_CHECK(zepsSIDGainDecodeGetStateSize_G729B) {
    same_state_size(u8::zepsSIDGainDecodeGetStateSize_G729B, n8::zepsSIDGainDecodeGetStateSize_G729B);
}
ZEPS_VARIANT_CHECK(zepsVADInit_G729B) { same_init(u8::zepsVADInit_G729B, n8::zepsVADInit_G729B, 80, rng); }
ZEPS_VARIANT_CHECK(zepsDTXInit_G729B) { same_init(u8::zepsDTXInit_G729B, n8::zepsDTXInit_G729B, 168, rng); }
ZEPS_VARIANT_CHECK(zepsSIDGainDecodeInit_G729B) {
    same_init(u8::zepsSIDGainDecodeInit_G729B, n8::zepsSIDGainDecodeInit_G729B, 4, rng);
}

ZEPS_VARIANT_CHECK(zepsVAD_G729B_16s) {
    Bytes a(80), b(80);
    u8::zepsVADInit_G729B(a.data());
    n8::zepsVADInit_G729B(b.data());
    Zep16s frame = static_cast<Zep16s>(rng.chance(2) ? 1 : rng.uniform(100, 140));
    for (int k = 0; k < 40; ++k, ++frame) {
        const V16 lsf = rng.vec<Zep16s>(10), x = rng.vec<Zep16s>(240);
        const V32 r = rng.vec<Zep32s>(13);
        const Zep16s rc = rng.s16(), e = static_cast<Zep16s>(rng.uniform(-40, 40));
        const Zep16s f = rng.chance(16) ? static_cast<Zep16s>(rng.uniform(-2, 0)) : frame;
        const Zep16s p = flag(rng), pp = flag(rng);
        Zep16s va = -5, vb = -5;
        ASSERT_EQ(u8::zepsVAD_G729B_16s(rc, lsf.data(), r.data(), e, x.data(), f, p, pp, &va, a.data()),
                  n8::zepsVAD_G729B_16s(rc, lsf.data(), r.data(), e, x.data(), f, p, pp, &vb, b.data()));
        ASSERT_EQ(va, vb);
        ASSERT_TRUE(zeps::test::same_bytes(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsDTXUpdate_G729B_16s) {
    Bytes a(168), b(168);
    u8::zepsDTXInit_G729B(a.data());
    n8::zepsDTXInit_G729B(b.data());
    for (int k = 0; k < 8; ++k) {
        const V32 r = rng.vec<Zep32s>(11);
        const Zep16s e = static_cast<Zep16s>(rng.uniform(-40, 40)), v = flag(rng);
        ASSERT_EQ(u8::zepsDTXUpdate_G729B_16s(r.data(), e, v, a.data()),
                  n8::zepsDTXUpdate_G729B_16s(r.data(), e, v, b.data()));
        ASSERT_TRUE(zeps::test::same_bytes(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsDTX_G729B_16s) {
    Bytes a(168), b(168);
    u8::zepsDTXInit_G729B(a.data());
    n8::zepsDTXInit_G729B(b.data());
    V16 pa(13, 0), pb;
    pa[0] = 4096;
    pb = pa;
    for (int k = 0; k < 12; ++k) {
        // Autocorrelations of a smooth random signal, sometimes arbitrary words.
        V32 r(11);
        const double decay = 0.5 + 0.45 * static_cast<double>(rng.uniform(0, 100)) / 100.0;
        double v = static_cast<double>(rng.uniform(1 << 20, 1 << 30));
        for (auto& x : r) {
            x = static_cast<Zep32s>(v);
            v *= decay;
        }
        if (rng.chance(5)) r = rng.vec<Zep32s>(11);
        const Zep16s e = static_cast<Zep16s>(rng.uniform(-20, 10));
        u8::zepsDTXUpdate_G729B_16s(r.data(), e, 0, a.data());
        n8::zepsDTXUpdate_G729B_16s(r.data(), e, 0, b.data());
        const Zep16s past = flag(rng);
        V16 oa(14, 0x5a5a), ob(14, 0x5a5a);
        ASSERT_EQ(u8::zepsDTX_G729B_16s(past, pa.data(), &oa[0], &oa[1], &oa[12], &oa[13], a.data()),
                  n8::zepsDTX_G729B_16s(past, pb.data(), &ob[0], &ob[1], &ob[12], &ob[13], b.data()));
        ASSERT_TRUE(zeps::test::same_bytes(oa, ob));
        ASSERT_TRUE(zeps::test::same_bytes(pa, pb));
        ASSERT_TRUE(zeps::test::same_bytes(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsSIDGainQuant_G729B_16s) {
    const V16 e = rng.vec<Zep16s>(2);
    const V16 s = {static_cast<Zep16s>(rng.uniform(-40, 40)), static_cast<Zep16s>(rng.uniform(-40, 40))};
    const int nb = static_cast<int>(rng.uniform(-1, 3));
    V16 a(2, 0x5a5a), b(2, 0x5a5a);
    ASSERT_EQ(u8::zepsSIDGainQuant_G729B_16s(e.data(), s.data(), nb, &a[0], &a[1]),
              n8::zepsSIDGainQuant_G729B_16s(e.data(), s.data(), nb, &b[0], &b[1]));
    ASSERT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsLSPQuant_G729B_16s) {
    V16 lsp(10);
    for (int i = 0; i < 10; ++i) lsp[i] = static_cast<Zep16s>(32000 - 6400 * i + rng.uniform(-3000, 3000));
    if (rng.chance(4)) lsp = rng.vec<Zep16s>(10);
    V16 pa = memory(static_cast<Zep16s>(rng.uniform(0, 9000)), static_cast<Zep16s>(rng.uniform(9000, 25000))), pb = pa;
    V16 qa(13, 0x5a5a), qb(13, 0x5a5a);
    ASSERT_EQ(u8::zepsLSPQuant_G729B_16s(lsp.data(), pa.data(), qa.data(), qa.data() + 10),
              n8::zepsLSPQuant_G729B_16s(lsp.data(), pb.data(), qb.data(), qb.data() + 10));
    ASSERT_TRUE(zeps::test::same_bytes(qa, qb));
    ASSERT_TRUE(zeps::test::same_bytes(pa, pb));
}

ZEPS_VARIANT_CHECK(zepsLSFDecode_G729B_16s) {
    const Zep16s idx[3] = {flag(rng), rng.s16(), rng.s16()};
    V16 pa = rng.vec<Zep16s>(40), pb = pa, qa(10, 0x5a5a), qb(10, 0x5a5a);
    ASSERT_EQ(u8::zepsLSFDecode_G729B_16s(idx, pa.data(), qa.data()), n8::zepsLSFDecode_G729B_16s(idx, pb.data(), qb.data()));
    ASSERT_TRUE(zeps::test::same_bytes(qa, qb));
    ASSERT_TRUE(zeps::test::same_bytes(pa, pb));
}

ZEPS_VARIANT_CHECK(zepsCNGExcitation_G729B_16s) {
    V16 a = rng.vec<Zep16s>(234), b = a;
    Zep16s sa = rng.s16(), sb = sa;
    const Zep16s g = rng.chance(4) ? rng.s16() : static_cast<Zep16s>(rng.uniform(0, 16000));
    V16 pa(4, 0x5a5a), pb(4, 0x5a5a);
    const bool pitch = rng.chance(2);
    ASSERT_EQ(u8::zepsCNGExcitation_G729B_16s(g, a.data(), &sa, pitch ? pa.data() : nullptr),
              n8::zepsCNGExcitation_G729B_16s(g, b.data(), &sb, pitch ? pb.data() : nullptr));
    ASSERT_TRUE(zeps::test::same_bytes(a, b));
    ASSERT_TRUE(zeps::test::same_bytes(pa, pb));
    ASSERT_EQ(sa, sb);
}

ZEPS_VARIANT_CHECK(zepsCNGExcitation_G729I_16s) {
    V16 a = rng.vec<Zep16s>(234), b = a, c = a;
    Zep16s sa = rng.s16(), sb = sa, sc = sa;
    const Zep16s g = rng.chance(4) ? rng.s16() : static_cast<Zep16s>(rng.uniform(0, 16000));
    V16 pa(4, 0x5a5a), pb(4, 0x5a5a), pitch(4);
    ASSERT_EQ(u8::zepsCNGExcitation_G729I_16s(g, a.data(), &sa, pa.data()),
              n8::zepsCNGExcitation_G729I_16s(g, b.data(), &sb, pb.data()));
    ASSERT_TRUE(zeps::test::same_bytes(a, b));
    ASSERT_TRUE(zeps::test::same_bytes(pa, pb));
    ASSERT_EQ(sa, sb);
    // The excitation and the pitch gains are those of the Annex B stage.
    if (g < 0) return;
    ASSERT_EQ(u8::zepsCNGExcitation_G729B_16s(g, c.data(), &sc, pitch.data()), zepStsNoErr);
    ASSERT_TRUE(zeps::test::same_bytes(a, c));
    EXPECT_EQ(pa[0], pitch[0]);
    EXPECT_EQ(pa[2], pitch[2]);
    EXPECT_TRUE(pa[1] >= 0 && pa[1] <= 5000 && pa[3] >= 0 && pa[3] <= 5000);
}

ZEPS_VARIANT_CHECK(zepsSIDGainDecode_G729B_16s) {
    Bytes a(4), b(4);
    u8::zepsSIDGainDecodeInit_G729B(a.data());
    n8::zepsSIDGainDecodeInit_G729B(b.data());
    for (int k = 0; k < 6; ++k) {
        const Zep16s t = static_cast<Zep16s>(rng.chance(8) ? rng.uniform(-1, 3) : 2 * rng.uniform(0, 1));
        const Zep16s idx = static_cast<Zep16s>(rng.chance(8) ? rng.s16() : rng.uniform(0, 31));
        const Zep16s past = static_cast<Zep16s>(rng.uniform(-1, 3)), e = rng.s16();
        const Zep16s sh = static_cast<Zep16s>(rng.uniform(-20, 20));
        Zep16s ga = -1, gb = -1;
        ASSERT_EQ(u8::zepsSIDGainDecode_G729B_16s(t, idx, past, e, sh, &ga, a.data()),
                  n8::zepsSIDGainDecode_G729B_16s(t, idx, past, e, sh, &gb, b.data()));
        ASSERT_EQ(ga, gb);
        ASSERT_TRUE(zeps::test::same_bytes(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsFrameEnergy_G729B_16s) {
    const V16 x = rng.vec<Zep16s>(80);
    Zep16s a[2] = {1, 1}, b[2] = {1, 1};
    ASSERT_EQ(u8::zepsFrameEnergy_G729B_16s(x.data(), &a[0], &a[1]), n8::zepsFrameEnergy_G729B_16s(x.data(), &b[0], &b[1]));
    ASSERT_EQ(a[0], b[0]);
    ASSERT_EQ(a[1], b[1]);
}

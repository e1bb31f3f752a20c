// SPDX-License-Identifier: BSD-3-Clause
// G.729 LP analysis and LSP quantisation: edge cases of the stages and
// both-builds equality of every export (the argument checks of every export
// are in the contract table).
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "frame/variants.h"
#include "g729/g729_tables.h"
#include "tests/variant_check.h"
#include "tests/vec_reader.h"

namespace {

using V16 = std::vector<std::int16_t>;
using V32 = std::vector<std::int32_t>;
namespace u8 = zeps::u8;
namespace n8 = zeps::n8;

// ---- edge cases ---------------------------------------------------------------

TEST(G729LpEdges, LagWindowAndLevinsonLimits) {
    V32 r(13, 1 << 29), saved = r;
    EXPECT_EQ(u8::zepsLagWindow_G729_32s_I(r.data(), 12), 0);
    EXPECT_NE(r[11], saved[11]);
    // r0 = 65535 is too small: status 12, nothing written.
    V32 ac(11, 0);
    ac[0] = 65535;
    V16 a(11, -1), k(10, -1), e(1, -1);
    EXPECT_EQ(u8::zepsLevinsonDurbin_G729_32s16s(ac.data(), 10, a.data(), k.data(), e.data()), zepStsOverflow);
    EXPECT_EQ(a, V16(11, -1));
    EXPECT_EQ(k, V16(10, -1));
    // A first reflection coefficient beyond 32750 is refused as well.
    ac = {1 << 30, (1 << 30) - 1000, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(u8::zepsLevinsonDurbin_G729B(ac.data(), a.data(), k.data(), e.data()), zepStsOverflow);
    EXPECT_EQ(k, V16(10, -1));
    // Order 30 works on a white spectrum: a = {4096, 0...}, energy 16383.
    V32 white(31, 0);
    white[0] = 1 << 30;
    V16 a30(31), k30(30), e30(1);
    EXPECT_EQ(u8::zepsLevinsonDurbin_G729_32s16s(white.data(), 30, a30.data(), k30.data(), e30.data()), 0);
    EXPECT_EQ(a30[0], 4096);
    EXPECT_EQ(a30[30], 0);
    EXPECT_EQ(e30[0], 16383);
}

TEST(G729LpEdges, LspSearchFallbackAndDecoderStatuses) {
    // A filter far from minimum phase has fewer than 10 roots on the grid:
    // the previous LSPs return with status 0.
    const V16 lpc = {4096, -6653, -1344, -6962, 7638, 6030, -5748, -2323, 3146, 4598, -4304};
    const V16 prev = {30000, 26000, 21000, 13000, 4000, -4000, -13000, -21000, -26000, -30000};
    V16 lsp(10);
    EXPECT_EQ(u8::zepsLPCToLSP_G729_16s(lpc.data(), prev.data(), lsp.data()), 0);
    EXPECT_EQ(lsp, prev);
    EXPECT_EQ(u8::zepsLPCToLSP_G729A_16s(lpc.data(), prev.data(), lsp.data()), 0);
    EXPECT_EQ(lsp, prev);

    // Mode 2 is refused and leaves the memory alone; modes 0/1 decode.
    V16 mem(40, 2339), q(10, -1);
    const V16 mem0 = mem;
    const V16 bad = {2, 0, 0, 0};
    EXPECT_EQ(u8::zepsLSFDecode_G729_16s(bad.data(), mem.data(), q.data()), zepStsOutOfRangeErr);
    EXPECT_EQ(mem, mem0);
    EXPECT_EQ(q, V16(10, -1));
    // Memories far below / above the LSF range force the low, high and both clamps.
    struct { std::int16_t fill_lo, fill_hi; int status; } clamps[] = {
        {-20000, 0, 13}, {0, 32000, 14}, {-20000, 32000, 15}};
    for (auto c : clamps) {
        V16 m(40);
        for (int r = 0; r < 4; ++r)
            for (int j = 0; j < 10; ++j) m[r * 10 + j] = j < 5 ? c.fill_lo : c.fill_hi;
        const V16 idx = {0, 0, 0, 0};
        EXPECT_EQ(u8::zepsLSFDecode_G729_16s(idx.data(), m.data(), q.data()), c.status);
        EXPECT_GE(q[0], 40);
        EXPECT_LE(q[9], 25681);
    }
}

TEST(G729LpEdges, HighPassSaturatesAndKeepsStateOnError) {
    const V16 coef = {7699, -15398, 7699, 8192, 15836, -7667};
    std::vector<Zep8u> st(24);
    Zep32s size = 0;
    EXPECT_EQ(u8::zepsHighPassFilterSize_G729(&size), 0);
    EXPECT_EQ(size, 24);
    ASSERT_EQ(u8::zepsHighPassFilterInit_G729(coef.data(), st.data()), 0);
    // A full-scale jump drives the 100 Hz filter's accumulator and output into saturation.
    V16 x(80);
    for (int i = 0; i < 80; ++i) x[i] = i < 40 ? -32768 : 32767;
    EXPECT_EQ(u8::zepsHighPassFilter_G729_16s_ISfs(x.data(), 80, 13, st.data()), 0);
    EXPECT_EQ(x[40], 32767);
    const auto keep = st;
    V16 y(80, 1);
    EXPECT_EQ(u8::zepsHighPassFilter_G729_16s_ISfs(y.data(), 80, 11, st.data()), zepStsScaleRangeErr);
    EXPECT_EQ(st, keep);
    EXPECT_EQ(y, V16(80, 1));
}

TEST(G729LpEdges, AnnexEQuantiserLeavesTheMemoryToTheCaller) {
    // Same indices and LSPs as the base quantiser; the memory is untouched and
    // the vector the base quantiser pushes comes back in pFreqCur.
    const V16 lsp = {31441, 27567, 21458, 13612, 4664, -4662, -13612, -21458, -27566, -31440};
    V16 mem(40);
    for (int k = 0; k < 40; ++k) mem[k] = static_cast<std::int16_t>(2339 * (k % 10 + 1) + 37 * (k / 10));
    V16 base_mem = mem, q1(10), i1(2), q2(10), i2(2), cur(10);
    const V16 keep = mem;
    ASSERT_EQ(u8::zepsLSPQuant_G729_16s(lsp.data(), base_mem.data(), q1.data(), i1.data()), 0);
    ASSERT_EQ(u8::zepsLSPQuant_G729E_16s(lsp.data(), mem.data(), q2.data(), i2.data(), cur.data()), 0);
    EXPECT_EQ(q1, q2);
    EXPECT_EQ(i1, i2);
    EXPECT_EQ(mem, keep);
    EXPECT_EQ(cur, V16(base_mem.begin(), base_mem.begin() + 10));
}

TEST(G729LpEdges, HybridWindowMatchesAnnexE) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    // autocorr_hyb_window of the Annex E reference on male.s16 from sample
    // 8000, three consecutive frames from a reset state.
    const std::int32_t expected[3][31] = {
        {575388536, 490714620, 389799096, 303868851, 227514146, 160573207, 102630717, 36956529, -115394687, -285047741, -359685946, -377849088, -383897515, -339306584, -313224025, -302019820, -309446742, -236971142, -110519410, -8055076, 92250684, 163085992, 188979128, 193021600, 219898955, 262491659, 277582085, 245748361, 199535728, 116827269, 34207237},
        {579493206, 500512853, 401422237, 310852567, 228286684, 158934998, 101339259, 36208365, -107180306, -271349459, -354579897, -384989847, -394922738, -346261813, -311044492, -292226425, -295968217, -236754797, -130371751, -36148822, 65792157, 146260266, 178609534, 183113733, 201168136, 230117366, 242107389, 222516727, 194307890, 129433621, 54537698},
        {463851407, 406626440, 329747994, 253781727, 183176920, 126220722, 79089854, 26702319, -78884446, -204103628, -276951291, -310923267, -322372380, -283117443, -248696399, -224695398, -221051105, -182183356, -112012484, -43791501, 36264111, 106543274, 140371989, 148313315, 157005857, 168687305, 173448157, 161907308, 148474543, 108755448, 56509390},
    };
    const V16 s = zeps::test::load_speech("male.s16");
    Zep32s size = 0;
    ASSERT_EQ(u8::zepsWinHybridGetStateSize_G729E_16s(&size), 0);
    ASSERT_EQ(size, 124);
    std::vector<Zep8u> st(124, 0xa5);
    ASSERT_EQ(u8::zepsWinHybridInit_G729E_16s(st.data()), 0);
    for (int c = 0; c < 3; ++c) {
        V32 r(31, -1);
        ASSERT_EQ(u8::zepsWinHybrid_G729E_16s32s(s.data() + 8000 + 80 * c, r.data(), st.data()), 0);
        EXPECT_EQ(r, V32(expected[c], expected[c] + 31)) << "frame " << c;
    }
}

// ---- both builds --------------------------------------------------------------

/// A realistic frame: windowed speech autocorrelation, LPC, LSP.
struct Frame {
    V16 speech = V16(240);
    V32 r = V32(13);
    V16 a = V16(11), lsp = V16(10), lsf = V16(10);
};

Frame speech_frame(zeps::test::Rng& rng) {
    static const V16 s = zeps::test::load_speech("male.s16");
    Frame f;
    const std::size_t off = static_cast<std::size_t>(rng.uniform(0, static_cast<std::int64_t>(s.size()) - 241));
    std::copy(s.begin() + off, s.begin() + off + 240, f.speech.begin());
    Zep16s norm, rc[10], err;
    u8::zepsAutoCorr_G729B(f.speech.data(), &norm, f.r.data());
    u8::zepsLagWindow_G729_32s_I(f.r.data() + 1, 10);
    static const V16 flat = {30000, 26000, 21000, 13000, 4000, -4000, -13000, -21000, -26000, -30000};
    if (u8::zepsLevinsonDurbin_G729_32s16s(f.r.data(), 10, f.a.data(), rc, &err) != 0) f.a = {4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    u8::zepsLPCToLSP_G729_16s(f.a.data(), flat.data(), f.lsp.data());
    u8::zepsLSPToLSF_G729_16s(f.lsp.data(), f.lsf.data());
    return f;
}

/// Calls fn on copies of the same buffers with both builds and compares all.
template <class F>
void both(F body) {
    auto a = body(0);
    auto b = body(1);
    EXPECT_EQ(a, b);
}

V16 rand16(zeps::test::Rng& rng, std::size_t n) { return rng.vec<std::int16_t>(n); }

}  // namespace

#define BOTH(expr_u8, expr_n8) EXPECT_EQ((expr_u8), (expr_n8))

ZEPS_VARIANT_CHECK(zepsHighPassFilterSize_G729) {
    Zep32s a = 0, b = 1;
    BOTH(u8::zepsHighPassFilterSize_G729(&a), n8::zepsHighPassFilterSize_G729(&b));
    EXPECT_EQ(a, b);
    BOTH(u8::zepsHighPassFilterSize_G729(nullptr), n8::zepsHighPassFilterSize_G729(nullptr));
}

ZEPS_VARIANT_CHECK(zepsHighPassFilterInit_G729) {
    const V16 c = rand16(rng, 6);
    std::vector<Zep8u> a(24, 1), b(24, 2);
    BOTH(u8::zepsHighPassFilterInit_G729(c.data(), a.data()), n8::zepsHighPassFilterInit_G729(c.data(), b.data()));
    EXPECT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsHighPassFilter_G729_16s_ISfs) {
    const V16 sets[2] = {{1899, -3798, 1899, 4096, 7807, -3733}, {7699, -15398, 7699, 8192, 15836, -7667}};
    for (int sf : {12, 13, 11}) {
        std::vector<Zep8u> a(24), b(24);
        u8::zepsHighPassFilterInit_G729(sets[sf & 1].data(), a.data());
        n8::zepsHighPassFilterInit_G729(sets[sf & 1].data(), b.data());
        for (int rep = 0; rep < 20; ++rep) {
            const int len = static_cast<int>(rng.uniform(1, 160));
            V16 x = rep < 10 ? speech_frame(rng).speech : rand16(rng, 240), y = x;
            BOTH(u8::zepsHighPassFilter_G729_16s_ISfs(x.data(), len, sf, a.data()),
                 n8::zepsHighPassFilter_G729_16s_ISfs(y.data(), len, sf, b.data()));
            EXPECT_EQ(x, y);
            EXPECT_EQ(a, b);
        }
    }
}

ZEPS_VARIANT_CHECK(zepsAutoCorr_G729B) {
    for (int rep = 0; rep < 40; ++rep) {
        const V16 x = rep % 2 ? speech_frame(rng).speech : rand16(rng, 240);
        Zep16s na = 0, nb = 1;
        V32 ra(13), rb(13, 1);
        BOTH(u8::zepsAutoCorr_G729B(x.data(), &na, ra.data()), n8::zepsAutoCorr_G729B(x.data(), &nb, rb.data()));
        EXPECT_EQ(na, nb);
        EXPECT_EQ(ra, rb);
    }
}

// Every length, lags at the 32-bit extremes and around them: Mpy_32 of the
// double-precision parts (its saturation cannot occur for this window).
TEST(G729LpEdges, LagWindowIsMpy32AtEveryLength) {
    const std::int32_t ext[] = {INT32_MIN, INT32_MIN + 1, -65537, -65536, -2, -1, 0, 1, 2, 32767, 65535, 65536, INT32_MAX - 1, INT32_MAX};
    zeps::test::Rng rng(7);
    for (int len = 1; len <= 12; ++len)
        for (int rep = 0; rep < 20; ++rep) {
            V32 r(13);
            for (auto& v : r) v = rep < 10 ? ext[rng.uniform(0, 13)] : static_cast<std::int32_t>(rng.next());
            V32 w = r;
            ASSERT_EQ(u8::zepsLagWindow_G729_32s_I(w.data(), len), 0);
            for (int i = 0; i < len; ++i) {
                const std::int16_t hi = static_cast<std::int16_t>(r[i] >> 16);
                const std::int16_t lo = static_cast<std::int16_t>((r[i] >> 1) - hi * 32768);
                const std::int64_t p = 2LL * hi * zeps::lag_h[i] + 2LL * ((std::int32_t{hi} * zeps::lag_l[i]) >> 15) +
                                       2LL * ((std::int32_t{lo} * zeps::lag_h[i]) >> 15);
                ASSERT_EQ(w[i], static_cast<std::int32_t>(p)) << "len " << len << " i " << i << " r " << r[i];
            }
            ASSERT_EQ(w[len], r[len]);
        }
}

ZEPS_VARIANT_CHECK(zepsLagWindow_G729_32s_I) {
    for (int len : {1, 10, 12, 13, 0}) {
        V32 a = rng.vec<std::int32_t>(13), b = a;
        BOTH(u8::zepsLagWindow_G729_32s_I(a.data(), len), n8::zepsLagWindow_G729_32s_I(b.data(), len));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsLevinsonDurbin_G729_32s16s) {
    for (int rep = 0; rep < 40; ++rep) {
        Frame f = speech_frame(rng);
        const int order = rep < 30 ? static_cast<int>(rng.uniform(1, 12)) : static_cast<int>(rng.uniform(0, 31));
        V32 r(31, 0);
        std::copy(f.r.begin(), f.r.end(), r.begin());
        if (rep % 7 == 0) r = rng.vec<std::int32_t>(31);
        V16 a1(31, -1), k1(30, -1), e1(1, -1), a2 = a1, k2 = k1, e2 = e1;
        BOTH(u8::zepsLevinsonDurbin_G729_32s16s(r.data(), order, a1.data(), k1.data(), e1.data()),
             n8::zepsLevinsonDurbin_G729_32s16s(r.data(), order, a2.data(), k2.data(), e2.data()));
        EXPECT_EQ(a1, a2);
        EXPECT_EQ(k1, k2);
        EXPECT_EQ(e1, e2);
    }
}

ZEPS_VARIANT_CHECK(zepsLevinsonDurbin_G729B) {
    for (int rep = 0; rep < 20; ++rep) {
        V32 r = rep % 5 ? speech_frame(rng).r : rng.vec<std::int32_t>(13);
        V16 a1(11, -1), k1(2, -1), e1(1, -1), a2 = a1, k2 = k1, e2 = e1;
        BOTH(u8::zepsLevinsonDurbin_G729B(r.data(), a1.data(), k1.data(), e1.data()),
             n8::zepsLevinsonDurbin_G729B(r.data(), a2.data(), k2.data(), e2.data()));
        EXPECT_EQ(a1, a2);
        EXPECT_EQ(k1, k2);
        EXPECT_EQ(e1, e2);
    }
}

#define CHECK_UNARY16(name, nin, nout, make)                                  \
    ZEPS_VARIANT_CHECK(name) {                                                \
        for (int rep = 0; rep < 40; ++rep) {                                  \
            const V16 x = (make);                                             \
            V16 a(nout, -1), b(nout, -1);                                     \
            BOTH(u8::name(x.data(), a.data()), n8::name(x.data(), b.data())); \
            EXPECT_EQ(a, b);                                                  \
        }                                                                     \
    }

CHECK_UNARY16(zepsLSPToLPC_G729_16s, 10, 11, rep % 2 ? speech_frame(rng).lsp : rand16(rng, 10))
CHECK_UNARY16(zepsLSFToLSP_G729_16s, 10, 10, rep % 2 ? speech_frame(rng).lsf : rand16(rng, 10))
CHECK_UNARY16(zepsLSPToLSF_G729_16s, 10, 10, rep % 2 ? speech_frame(rng).lsp : rand16(rng, 10))
CHECK_UNARY16(zepsLSPToLSF_Norm_G729_16s, 10, 10, speech_frame(rng).lsp)

#define CHECK_LPC_TO_LSP(name)                                                                          \
    ZEPS_VARIANT_CHECK(name) {                                                                          \
        for (int rep = 0; rep < 40; ++rep) {                                                            \
            const V16 a = rep % 2 ? speech_frame(rng).a : rand16(rng, 11), prev = rand16(rng, 10);      \
            V16 x(10, -1), y(10, -1);                                                                   \
            BOTH(u8::name(a.data(), prev.data(), x.data()), n8::name(a.data(), prev.data(), y.data())); \
            EXPECT_EQ(x, y);                                                                            \
        }                                                                                               \
    }
CHECK_LPC_TO_LSP(zepsLPCToLSP_G729_16s)
CHECK_LPC_TO_LSP(zepsLPCToLSP_G729A_16s)

V16 reset_memory() {
    V16 m;
    for (int r = 0; r < 4; ++r)
        for (int v : {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396}) m.push_back(static_cast<std::int16_t>(v));
    return m;
}

#define CHECK_QUANT(name, field)                                                                            \
    ZEPS_VARIANT_CHECK(name) {                                                                              \
        V16 ma = reset_memory(), mb = ma;                                                                   \
        for (int rep = 0; rep < 40; ++rep) {                                                                \
            const V16 x = rep % 4 ? speech_frame(rng).field : rand16(rng, 10);                              \
            V16 qa(10, -1), qb(10, -1), ia(4, -1), ib(4, -1);                                               \
            BOTH(u8::name(x.data(), ma.data(), qa.data(), ia.data()),                                       \
                 n8::name(x.data(), mb.data(), qb.data(), ib.data()));                                      \
            EXPECT_EQ(ma, mb);                                                                              \
            EXPECT_EQ(qa, qb);                                                                              \
            EXPECT_EQ(ia, ib);                                                                              \
        }                                                                                                   \
    }
CHECK_QUANT(zepsLSFQuant_G729_16s, lsf)
CHECK_QUANT(zepsLSPQuant_G729_16s, lsp)

ZEPS_VARIANT_CHECK(zepsLSFDecode_G729_16s) {
    V16 ma = reset_memory(), mb = ma;
    for (int rep = 0; rep < 40; ++rep) {
        const V16 idx = {static_cast<std::int16_t>(rng.uniform(-1, 2)), static_cast<std::int16_t>(rng.uniform(0, 127)),
                         static_cast<std::int16_t>(rng.uniform(0, 31)), static_cast<std::int16_t>(rng.uniform(0, 31))};
        if (rep % 8 == 7) ma = mb = rand16(rng, 40);
        V16 qa(10, -1), qb(10, -1);
        BOTH(u8::zepsLSFDecode_G729_16s(idx.data(), ma.data(), qa.data()),
             n8::zepsLSFDecode_G729_16s(idx.data(), mb.data(), qb.data()));
        EXPECT_EQ(ma, mb);
        EXPECT_EQ(qa, qb);
    }
}

ZEPS_VARIANT_CHECK(zepsLSFDecodeErased_G729_16s) {
    V16 ma = reset_memory(), mb = ma;
    for (int rep = 0; rep < 40; ++rep) {
        const V16 lsf = rep % 2 ? speech_frame(rng).lsf : rand16(rng, 10);
        const auto mode = static_cast<Zep16s>(rng.uniform(-1, 2));
        BOTH(u8::zepsLSFDecodeErased_G729_16s(mode, ma.data(), lsf.data()),
             n8::zepsLSFDecodeErased_G729_16s(mode, mb.data(), lsf.data()));
        EXPECT_EQ(ma, mb);
    }
}

ZEPS_VARIANT_CHECK(zepsInterpolate_G729_16s) {
    for (int rep = 0; rep < 20; ++rep) {
        const int len = static_cast<int>(rng.uniform(0, 64));
        const V16 p = rand16(rng, 64), q = rand16(rng, 64);
        V16 a(64, -1), b(64, -1);
        BOTH(u8::zepsInterpolate_G729_16s(p.data(), q.data(), a.data(), len),
             n8::zepsInterpolate_G729_16s(p.data(), q.data(), b.data(), len));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsLSPQuant_G729E_16s) {
    const V16 mem = reset_memory();
    for (int rep = 0; rep < 40; ++rep) {
        const V16 x = rep % 4 ? speech_frame(rng).lsp : rand16(rng, 10);
        V16 qa(10, -1), qb(10, -1), ia(2, -1), ib(2, -1), ca(10, -1), cb(10, -1);
        BOTH(u8::zepsLSPQuant_G729E_16s(x.data(), mem.data(), qa.data(), ia.data(), ca.data()),
             n8::zepsLSPQuant_G729E_16s(x.data(), mem.data(), qb.data(), ib.data(), cb.data()));
        EXPECT_EQ(qa, qb);
        EXPECT_EQ(ia, ib);
        EXPECT_EQ(ca, cb);
    }
}

ZEPS_VARIANT_CHECK(zepsWinHybridGetStateSize_G729E_16s) {
    Zep32s a = 0, b = 1;
    BOTH(u8::zepsWinHybridGetStateSize_G729E_16s(&a), n8::zepsWinHybridGetStateSize_G729E_16s(&b));
    EXPECT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsWinHybridInit_G729E_16s) {
    std::vector<Zep8u> a(124, 1), b(124, 2);
    BOTH(u8::zepsWinHybridInit_G729E_16s(a.data()), n8::zepsWinHybridInit_G729E_16s(b.data()));
    EXPECT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsWinHybrid_G729E_16s32s) {
    std::vector<Zep8u> sa(124), sb(124);
    u8::zepsWinHybridInit_G729E_16s(sa.data());
    n8::zepsWinHybridInit_G729E_16s(sb.data());
    for (int rep = 0; rep < 20; ++rep) {
        V16 x = rep % 3 ? V16(145) : rand16(rng, 145);
        if (rep % 3) {
            const Frame f = speech_frame(rng);
            std::copy(f.speech.begin(), f.speech.begin() + 145, x.begin());
        }
        V32 ra(31, -1), rb(31, -1);
        BOTH(u8::zepsWinHybrid_G729E_16s32s(x.data(), ra.data(), sa.data()),
             n8::zepsWinHybrid_G729E_16s32s(x.data(), rb.data(), sb.data()));
        EXPECT_EQ(ra, rb);
        EXPECT_EQ(sa, sb);
    }
}

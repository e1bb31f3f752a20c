// GSM-AMR DTX exports: boundary behaviour of the 3GPP TS 26.073 routines,
// argument checks (null pointers in order, rate code, nothing written on
// error) and equality of both processor builds.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"

namespace {

using V16 = std::vector<std::int16_t>;
constexpr std::int16_t kCanary = 0x5a5a;

V16 canaries(std::size_t n) { return V16(n, kCanary); }

TEST(AmrDtxEdges, HandlerCountersAndModeSwitch) {
    struct Step {
        std::int16_t hang, elapsed, mode, vad;           // before
        std::int16_t hang_after, elapsed_after, mode_after, sid;
    };
    const Step steps[] = {
        {3, 32767, 7, 1, 7, 32767, 7, 0},   // saturating increment: 32767 stays
        {3, 32767, 7, 0, 2, 32767, 7, 0},   // long since the last SID: extra hangover, mode kept
        {0, 32767, 7, 0, 0, 0, 25, 1},      // hangover over: DTX, new SID possible
        {5, 24, 12, 0, 4, 25, 25, 0},       // 25 + 4 < 30: DTX without new SID
        {5, 25, 12, 0, 4, 26, 12, 0},       // 26 + 4 = 30: stays speech
    };
    for (const auto& s : steps) {
        V16 v = {s.hang, s.elapsed, s.mode, kCanary};
        ASSERT_EQ(zeps::u8::zepsEncDTXHandler_GSMAMR_16s(&v[0], &v[1], &v[2], &v[3], s.vad), zepStsNoErr);
        EXPECT_EQ(v, (V16{s.hang_after, s.elapsed_after, s.mode_after, s.sid}));
    }
}

TEST(AmrDtxEdges, HistoryPointerWrapsAndLogEnergyScaling) {
    // Same frame through both buffers: the encoder halves the Q10 log
    // energy, the decoder does not; pointer 7 wraps to row 0.
    for (const std::int16_t amp : {0, 1000, 32767, -32768}) {
        const V16 spch(160, amp), vec = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
        V16 e_ptr = {7}, e_hist = canaries(80), e_log = canaries(8);
        V16 d_ptr = {7}, d_hist = canaries(80), d_log = canaries(8);
        zeps::u8::zepsEncDTXBuffer_GSMAMR_16s(spch.data(), vec.data(), e_ptr.data(), e_hist.data(), e_log.data());
        zeps::u8::zepsDecDTXBuffer_GSMAMR_16s(spch.data(), vec.data(), d_ptr.data(), d_hist.data(), d_log.data());
        EXPECT_EQ(e_ptr[0], 0);
        EXPECT_EQ(d_ptr[0], 0);
        EXPECT_EQ(V16(e_hist.begin(), e_hist.begin() + 10), vec);
        EXPECT_EQ(V16(e_hist.begin() + 10, e_hist.end()), canaries(70));
        EXPECT_EQ(d_hist, e_hist);
        EXPECT_EQ(V16(e_log.begin() + 1, e_log.end()), canaries(7));
        EXPECT_EQ(e_log[0], d_log[0] >> 1);
        // 0: Log2(0) = 0 gives -8521; +-full scale: the energy saturates at 2^31 - 1.
        if (amp == 0) {
            EXPECT_EQ(d_log[0], -8521);
        }
        if (amp == 32767 || amp == -32768) {
            EXPECT_EQ(d_log[0], 30 * 1024 + 1023 - 8521);
        }
    }
    // A pointer the library never writes is taken modulo 8.
    const V16 spch(160, 5), vec(10, 9);
    V16 ptr = {-3}, hist = canaries(80), log_en = canaries(8);
    zeps::u8::zepsEncDTXBuffer_GSMAMR_16s(spch.data(), vec.data(), ptr.data(), hist.data(), log_en.data());
    EXPECT_EQ(ptr[0], 6);
    EXPECT_EQ(hist[60], 9);
}

TEST(AmrDtxEdges, SidRecomputesOnlyWhenAskedOrIndexZero) {
    const V16 lsp_hist = [] {
        V16 h;
        for (int r = 0; r < 8; r++)
            for (std::int16_t v : {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000}) h.push_back(v);
        return h;
    }();
    const V16 log_en(8, 3000);
    for (const std::int16_t stored_index : {0, 40}) {
        V16 sid = {1, 2, 3, 4, stored_index}, past_rq = canaries(10), qua = canaries(4), qua122 = canaries(4);
        zeps::u8::zepsEncDTXSID_GSMAMR_16s(lsp_hist.data(), log_en.data(), sid.data(), past_rq.data(), qua.data(),
                                          qua122.data(), 0);
        if (stored_index != 0) {
            EXPECT_EQ(sid, (V16{1, 2, 3, 4, 40}));
            EXPECT_EQ(past_rq, canaries(10));
            EXPECT_EQ(qua, canaries(4));
        } else {
            // (8 x (3000 >> 2)) >> 1 = 3000: index (3000 + 2560 + 128) >> 8 = 22.
            EXPECT_EQ(sid[4], 22);
            EXPECT_EQ(qua, V16(4, 22 * 256 - 11560));
            EXPECT_NE(past_rq, canaries(10));
        }
    }
}

TEST(AmrDtxEdges, LspQuantRatesAndIndexCounts) {
    V16 lsp = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    lsp.insert(lsp.end(), lsp.begin(), lsp.end());
    for (const Zep32s rate : {0, 1, 3, 6, 7, 8, 11, 12, 25}) {
        const std::size_t n_lsp = rate == 12 ? 20 : 10, n_idx = rate == 12 ? 5 : rate == 25 ? 4 : 3;
        V16 past_rq(10, 0), q = canaries(20), idx = canaries(6);
        ASSERT_EQ(zeps::u8::zepsLSPQuant_GSMAMR_16s(past_rq.data(), lsp.data(), q.data(), idx.data(), rate),
                  zepStsNoErr);
        EXPECT_EQ(V16(q.begin() + n_lsp, q.end()), canaries(20 - n_lsp)) << rate;
        EXPECT_EQ(V16(idx.begin() + n_idx, idx.end()), canaries(6 - n_idx)) << rate;
        for (std::size_t i = 1; i < n_lsp; i++)
            if (i != 10) {
                EXPECT_LT(q[i], q[i - 1]) << rate;  // ordered, decreasing cosines
            }
    }
    for (const Zep32s rate : {-1, 2, 5, 13, 24, 26}) {
        V16 past_rq = canaries(10), q = canaries(20), idx = canaries(6);
        EXPECT_EQ(zeps::u8::zepsLSPQuant_GSMAMR_16s(past_rq.data(), lsp.data(), q.data(), idx.data(), rate),
                  zepStsRangeErr);
        EXPECT_EQ(past_rq, canaries(10));
        EXPECT_EQ(q, canaries(20));
        EXPECT_EQ(idx, canaries(6));
    }
}

// ---- both builds

/// Random LSPs: mostly ordered cosines, sometimes anything.
V16 random_lsp(zeps::test::Rng& rng, std::size_t n) {
    V16 v = rng.vec<std::int16_t>(n);
    if (!rng.chance(4)) {
        std::int16_t x = 32000;
        for (auto& e : v) e = x = static_cast<std::int16_t>(x - rng.uniform(0, 6500));
    }
    return v;
}

/// Both history buffers: random frames, histories and pointers (a third of
/// them outside 0..7), sometimes a null speech pointer.
template <class Fn>
void buffer_builds_agree(zeps::test::Rng& rng, Fn u8, Fn n8) {
    for (int t = 0; t < 200; t++) {
        const V16 spch = rng.vec<std::int16_t>(160), vec = rng.vec<std::int16_t>(10);
        std::vector<V16> a = {{static_cast<std::int16_t>(t % 3 ? rng.uniform(0, 7) : rng.s16())},
                              rng.vec<std::int16_t>(80), rng.vec<std::int16_t>(8)};
        std::vector<V16> b = a;
        const auto* s = rng.chance(10) ? nullptr : spch.data();
        EXPECT_EQ(u8(s, vec.data(), a[0].data(), a[1].data(), a[2].data()),
                  n8(s, vec.data(), b[0].data(), b[1].data(), b[2].data()));
        for (int i = 0; i < 3; i++) EXPECT_TRUE(zeps::test::same_bytes(a[i], b[i]));
    }
}

ZEPS_VARIANT_CHECK(zepsEncDTXBuffer_GSMAMR_16s) {
    buffer_builds_agree(rng, zeps::u8::zepsEncDTXBuffer_GSMAMR_16s, zeps::n8::zepsEncDTXBuffer_GSMAMR_16s);
}

ZEPS_VARIANT_CHECK(zepsDecDTXBuffer_GSMAMR_16s) {
    buffer_builds_agree(rng, zeps::u8::zepsDecDTXBuffer_GSMAMR_16s, zeps::n8::zepsDecDTXBuffer_GSMAMR_16s);
}

ZEPS_VARIANT_CHECK(zepsEncDTXHandler_GSMAMR_16s) {
    for (int t = 0; t < 500; t++) {
        V16 a = {static_cast<std::int16_t>(rng.uniform(0, 7)), rng.s16(), static_cast<std::int16_t>(rng.uniform(0, 25)),
                 kCanary};
        V16 b = a;
        const auto vad = static_cast<std::int16_t>(rng.uniform(0, 1));
        auto* sid_a = rng.chance(20) ? nullptr : &a[3];
        auto* sid_b = sid_a ? &b[3] : nullptr;
        EXPECT_EQ(zeps::u8::zepsEncDTXHandler_GSMAMR_16s(&a[0], &a[1], &a[2], sid_a, vad),
                  zeps::n8::zepsEncDTXHandler_GSMAMR_16s(&b[0], &b[1], &b[2], sid_b, vad));
        EXPECT_TRUE(zeps::test::same_bytes(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsEncDTXSID_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        const V16 lsp_hist = random_lsp(rng, 80);
        const V16 log_en = t % 4 ? V16(8, static_cast<std::int16_t>(rng.uniform(-5000, 12000)))
                                 : rng.vec<std::int16_t>(8);
        V16 a_sid = {0, 0, 0, 0, static_cast<std::int16_t>(rng.uniform(0, 2))};
        V16 a_rq = rng.vec<std::int16_t>(10), a_q = rng.vec<std::int16_t>(4), a_q122 = rng.vec<std::int16_t>(4);
        V16 b_sid = a_sid, b_rq = a_rq, b_q = a_q, b_q122 = a_q122;
        const auto flag = static_cast<std::int16_t>(rng.uniform(0, 1));
        const auto* h = rng.chance(10) ? nullptr : lsp_hist.data();
        EXPECT_EQ(zeps::u8::zepsEncDTXSID_GSMAMR_16s(h, log_en.data(), a_sid.data(), a_rq.data(), a_q.data(),
                                                    a_q122.data(), flag),
                  zeps::n8::zepsEncDTXSID_GSMAMR_16s(h, log_en.data(), b_sid.data(), b_rq.data(), b_q.data(),
                                                    b_q122.data(), flag));
        EXPECT_TRUE(zeps::test::same_bytes(a_sid, b_sid) && zeps::test::same_bytes(a_rq, b_rq) &&
                    zeps::test::same_bytes(a_q, b_q) && zeps::test::same_bytes(a_q122, b_q122));
    }
}

ZEPS_VARIANT_CHECK(zepsLSPQuant_GSMAMR_16s) {
    const Zep32s rates[] = {0, 1, 3, 6, 7, 8, 11, 12, 25, 2, -7};
    for (int t = 0; t < 120; t++) {
        const Zep32s rate = rates[t % 11];
        const V16 lsp = random_lsp(rng, 20);
        V16 a_rq = t % 5 ? V16(10, static_cast<std::int16_t>(rng.uniform(-2000, 2000))) : rng.vec<std::int16_t>(10);
        V16 a_q = canaries(20), a_idx = canaries(5);
        V16 b_rq = a_rq, b_q = a_q, b_idx = a_idx;
        const auto* src = rng.chance(12) ? nullptr : lsp.data();
        EXPECT_EQ(zeps::u8::zepsLSPQuant_GSMAMR_16s(a_rq.data(), src, a_q.data(), a_idx.data(), rate),
                  zeps::n8::zepsLSPQuant_GSMAMR_16s(b_rq.data(), src, b_q.data(), b_idx.data(), rate));
        EXPECT_TRUE(zeps::test::same_bytes(a_rq, b_rq) && zeps::test::same_bytes(a_q, b_q) &&
                    zeps::test::same_bytes(a_idx, b_idx));
    }
}

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR decoder background-noise, comfort-noise and parameter exports:
// both processor builds give the same bytes and statuses on random, extreme
// and invalid arguments (a comfort-noise run goes through SID, NO_DATA and
// speech frames in random order).
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
std::int16_t flag(zeps::test::Rng& rng) { return static_cast<std::int16_t>(rng.uniform(0, 1)); }
template <class T>
T* as(Bytes& b) { return reinterpret_cast<T*>(b.data()); }

}  // namespace

ZEPS_VARIANT_CHECK(zepsBitsToParam_GSMAMR_16s) {
    for (int t = 0; t < 50; t++) {
        const V16 bits = small(rng, 244, 0, 1);
        const std::int32_t rate = rng.chance(4) ? 25 : some_rate(rng);
        V16 a(57, 0x5a5a), b = a;
        EXPECT_EQ(zeps::u8::zepsBitsToParam_GSMAMR_16s(bits.data(), a.data(), rate),
                  zeps::n8::zepsBitsToParam_GSMAMR_16s(bits.data(), b.data(), rate));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsBuildCNParam_GSMAMR_16s) {
    for (int t = 0; t < 50; t++) {
        std::int16_t sa = rng.s16(), sb = sa;
        const std::int32_t rate = some_rate(rng);
        V16 a(57, 0x5a5a), b = a;
        EXPECT_EQ(zeps::u8::zepsBuildCNParam_GSMAMR_16s(&sa, a.data(), rate),
                  zeps::n8::zepsBuildCNParam_GSMAMR_16s(&sb, b.data(), rate));
        EXPECT_EQ(sa, sb);
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsInterpolateLSF_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        const V16 o = rng.vec<std::int16_t>(10), n = rng.vec<std::int16_t>(10);
        const auto start = static_cast<std::int32_t>(rng.chance(8) ? rng.uniform(-1, 121) : 40 * rng.uniform(0, 3));
        V16 a(10, 0x5a5a), b = a;
        EXPECT_EQ(zeps::u8::zepsInterpolateLSF_GSMAMR_16s(o.data(), n.data(), start, a.data()),
                  zeps::n8::zepsInterpolateLSF_GSMAMR_16s(o.data(), n.data(), start, b.data()));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsLSPAverage_GSMAMR_16s) {
    for (int t = 0; t < 100; t++) {
        V16 a = rng.vec<std::int16_t>(10), b = a;
        const V16 lsf = rng.vec<std::int16_t>(10);
        EXPECT_EQ(zeps::u8::zepsLSPAverage_GSMAMR_16s(a.data(), lsf.data()),
                  zeps::n8::zepsLSPAverage_GSMAMR_16s(b.data(), lsf.data()));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsCbGainAverage_GSMAMR_16s) {
    V16 sa(9, 0), sb = sa;
    for (int t = 0; t < 300; t++) {
        const V16 lsf = small(rng, 10, 0, 16384), mean = small(rng, 10, 1, 16384);
        const std::int16_t gain = static_cast<std::int16_t>(rng.chance(4) ? rng.s16() : rng.uniform(0, 4000));
        const std::int16_t bfi = flag(rng), pbf = flag(rng), pdfi = flag(rng), ppdf = flag(rng), bg = flag(rng);
        const auto vh = static_cast<std::int16_t>(rng.uniform(0, 10));
        const std::int32_t rate = some_rate(rng);
        std::int16_t ma = 0x5a5a, mb = ma;
        EXPECT_EQ(zeps::u8::zepsCbGainAverage_GSMAMR_16s(sa.data(), gain, lsf.data(), mean.data(), bfi, pbf, pdfi, ppdf,
                                                         bg, vh, &ma, rate),
                  zeps::n8::zepsCbGainAverage_GSMAMR_16s(sb.data(), gain, lsf.data(), mean.data(), bfi, pbf, pdfi, ppdf,
                                                         bg, vh, &mb, rate));
        EXPECT_EQ(sa, sb);
        EXPECT_EQ(ma, mb);
    }
}

ZEPS_VARIANT_CHECK(zepsBackgroundNoiseDetect_GSMAMR_16s) {
    V16 sa(61, 0), sb = sa;
    std::int16_t va = 0, vb = 0;
    for (int t = 0; t < 200; t++) {
        const V16 hist = small(rng, 9, 0, 16384);
        const std::int64_t amp = rng.chance(2) ? 40 : 3000;
        const V16 speech = small(rng, 160, -amp, amp);
        std::int16_t ia = 0x5a5a, ib = ia;
        EXPECT_EQ(zeps::u8::zepsBackgroundNoiseDetect_GSMAMR_16s(sa.data(), hist.data(), speech.data(), &va, &ia),
                  zeps::n8::zepsBackgroundNoiseDetect_GSMAMR_16s(sb.data(), hist.data(), speech.data(), &vb, &ib));
        EXPECT_EQ(sa, sb);
        EXPECT_EQ(va, vb);
        EXPECT_EQ(ia, ib);
    }
}

ZEPS_VARIANT_CHECK(zepsExcitationEnergy_GSMAMR_16s) {
    for (int t = 0; t < 200; t++) {
        const V16 exc = rng.chance(4) ? rng.vec<std::int16_t>(40) : small(rng, 40, -500, 500);
        std::int16_t a = 0x5a5a, b = a;
        EXPECT_EQ(zeps::u8::zepsExcitationEnergy_GSMAMR_16s(exc.data(), &a),
                  zeps::n8::zepsExcitationEnergy_GSMAMR_16s(exc.data(), &b));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsExcitationControl_GSMAMR_16s_I) {
    for (int t = 0; t < 200; t++) {
        V16 a = small(rng, 40, -3000, 3000), b = a;
        const V16 hist = small(rng, 9, 0, 2000);
        const auto energy = static_cast<std::int16_t>(rng.chance(8) ? rng.s16() : rng.uniform(0, 2000));
        const auto vh = static_cast<std::int16_t>(rng.uniform(0, 10));
        const std::int16_t pbf = flag(rng), careful = flag(rng);
        EXPECT_EQ(zeps::u8::zepsExcitationControl_GSMAMR_16s_I(a.data(), energy, hist.data(), vh, pbf, careful),
                  zeps::n8::zepsExcitationControl_GSMAMR_16s_I(b.data(), energy, hist.data(), vh, pbf, careful));
        EXPECT_EQ(a, b);
    }
}

ZEPS_VARIANT_CHECK(zepsDTXDecodeGetStateSize_GSMAMR_16s) {
    Zep32s a = 0, b = 0;
    EXPECT_EQ(zeps::u8::zepsDTXDecodeGetStateSize_GSMAMR_16s(&a), zeps::n8::zepsDTXDecodeGetStateSize_GSMAMR_16s(&b));
    EXPECT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsDTXDecodeInit_GSMAMR_16s) {
    Bytes a(512, 0x5a), b(512, 0xa5);
    EXPECT_EQ(zeps::u8::zepsDTXDecodeInit_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(a)),
              zeps::n8::zepsDTXDecodeInit_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(b)));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

// The handler, comfort-noise frames and speech-frame updates in random order.
static void dtx_run(zeps::test::Rng& rng) {
    Bytes a(512), b(512);
    ASSERT_EQ(zeps::u8::zepsDTXDecodeInit_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(a)), 0);
    ASSERT_EQ(zeps::n8::zepsDTXDecodeInit_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(b)), 0);
    V16 mem(10, 0), rq(10, 0), lsf = {1384, 2077, 3420, 5108, 6742, 8122, 9863, 11092, 12714, 13701};
    V16 qua = {-14336, -14336, -14336, -14336, -2381, -2381, -2381, -2381}, aver(9, 0);
    for (int f = 0; f < 120; f++) {
        const auto type = static_cast<std::int32_t>(rng.chance(10) ? rng.uniform(-1, 8) : rng.uniform(3, 7));
        std::int16_t na = 9, nb = 9, pa = 9, pb = 9;
        EXPECT_EQ(zeps::u8::zepsRxDTXHandler_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(a), type, &na, &pa),
                  zeps::n8::zepsRxDTXHandler_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(b), type, &nb, &pb));
        EXPECT_EQ(na, nb);
        EXPECT_EQ(pa, pb);
        const V16 speech = small(rng, 160, -2000, 2000);
        if (na == 0 || rng.chance(10)) {
            EXPECT_EQ(zeps::u8::zepsDTXDecodeUpdate_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(a), lsf.data(), speech.data()),
                      zeps::n8::zepsDTXDecodeUpdate_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(b), lsf.data(), speech.data()));
        } else {
            const V16 prm = small(rng, 5, 0, 63);
            const std::int32_t rate = some_rate(rng);
            const std::int32_t state = rng.chance(10) ? static_cast<std::int32_t>(rng.uniform(-1, 3)) : na;
            V16 m2 = mem, rq2 = rq, lsf2 = lsf, qua2 = qua, aver2 = aver;
            V16 sa(160, 0x5a5a), sb = sa, la(44, 0x5a5a), lb = la, pa2(10, 0x5a5a), pb2 = pa2;
            EXPECT_EQ(zeps::u8::zepsDTXDecode_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(a), mem.data(), rq.data(),
                                                         lsf.data(), qua.data(), aver.data(), prm.data(), sa.data(),
                                                         la.data(), pa2.data(), state, rate),
                      zeps::n8::zepsDTXDecode_GSMAMR_16s(as<ZepDTXDecodeState_GSMAMR>(b), m2.data(), rq2.data(),
                                                         lsf2.data(), qua2.data(), aver2.data(), prm.data(), sb.data(),
                                                         lb.data(), pb2.data(), state, rate));
            EXPECT_EQ(mem, m2);
            EXPECT_EQ(rq, rq2);
            EXPECT_EQ(lsf, lsf2);
            EXPECT_EQ(qua, qua2);
            EXPECT_EQ(aver, aver2);
            EXPECT_EQ(sa, sb);
            EXPECT_EQ(la, lb);
            EXPECT_EQ(pa2, pb2);
        }
        EXPECT_TRUE(zeps::test::same_bytes(a, b));
    }
}

ZEPS_VARIANT_CHECK(zepsRxDTXHandler_GSMAMR_16s) { dtx_run(rng); }
ZEPS_VARIANT_CHECK(zepsDTXDecode_GSMAMR_16s) { dtx_run(rng); }
ZEPS_VARIANT_CHECK(zepsDTXDecodeUpdate_GSMAMR_16s) { dtx_run(rng); }

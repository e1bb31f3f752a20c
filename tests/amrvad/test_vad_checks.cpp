// GSM-AMR VAD family: edge cases, argument checks (null order, rate codes,
// nothing written on error) and the both-builds checks.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "tests/amrvad/amrvad_util.h"
#include "tests/variant_check.h"

namespace zeps::test::amrvad {
namespace {

constexpr Zep16s kCanary = 0x5a5a;

static_assert(sizeof(ZepVAD1State_GSMAMR) == 58 * sizeof(Zep16s), "the VAD option 1 state is 58 words");

/// Buffers of one open-loop search call, canary-filled outputs.
struct OlArgs {
    std::vector<Zep16s> lpc = std::vector<Zep16s>(44, 0), spch = std::vector<Zep16s>(170, 0),
                        mem = std::vector<Zep16s>(10, 0), hist = std::vector<Zep16s>(143, 0),
                        lags = std::vector<Zep16s>(5, 40), gain = std::vector<Zep16s>(2, 0),
                        wght = std::vector<Zep16s>{40, 0, 0, 0, 0, 0, 0, 13106},
                        wsp = std::vector<Zep16s>(160, kCanary), T = std::vector<Zep16s>(2, kCanary);
    Zep32s rmax = kCanary, r0 = kCanary;
    OlArgs(Rng& rng, bool loud) {
        for (int k = 0; k < 4; ++k) {
            lpc[11 * k] = 4096;
            for (int i = 1; i <= 10; ++i) lpc[11 * k + i] = static_cast<Zep16s>(rng.uniform(-1500, 1500) / i);
        }
        for (auto& x : spch) x = loud ? rng.s16() : static_cast<Zep16s>(rng.uniform(-3000, 3000));
        for (auto& x : hist) x = loud ? rng.s16() : static_cast<Zep16s>(rng.uniform(-3000, 3000));
        for (auto& x : mem) x = static_cast<Zep16s>(rng.uniform(-2000, 2000));
        for (auto& x : lags) x = static_cast<Zep16s>(rng.uniform(20, 143));
        wght[0] = static_cast<Zep16s>(rng.uniform(20, 143));
        wght[1] = static_cast<Zep16s>(rng.uniform(0, 32767));
        wght[2] = static_cast<Zep16s>(rng.uniform(0, 1));
        wght[3] = rng.s16();
        wght[4] = rng.s16();
        wght[5] = static_cast<Zep16s>(rng.uniform(0, 2));
        wght[6] = static_cast<Zep16s>(rng.uniform(20, 143));
        wght[7] = static_cast<Zep16s>(rng.uniform(0, 32767));
    }
    auto bytes() const {
        std::vector<Zep16s> all;
        for (const auto* v : {&mem, &hist, &lags, &gain, &wght, &wsp, &T}) all.insert(all.end(), v->begin(), v->end());
        all.push_back(static_cast<Zep16s>(rmax));
        all.push_back(static_cast<Zep16s>(r0 >> 16));
        return all;
    }
};

ZepStatus call_ol(const Build& b, int which, OlArgs& a, Zep32s rate) {
    if (which == 0)
        return b.ol(a.lpc.data(), a.spch.data(), a.mem.data(), a.hist.data(), a.lags.data(), a.gain.data(),
                    a.wght.data(), a.wsp.data(), a.T.data(), rate);
    if (which == 1)
        return b.ol1(a.lpc.data(), a.spch.data(), a.mem.data(), a.hist.data(), a.lags.data(), a.gain.data(),
                     a.wght.data(), a.wsp.data(), a.T.data(), rate);
    return b.ol2(a.lpc.data(), a.spch.data(), a.mem.data(), a.hist.data(), a.lags.data(), a.gain.data(),
                 a.wght.data(), a.wsp.data(), a.T.data(), &a.rmax, &a.r0, rate);
}

TEST(AmrVadEdges, AllZeroSpeechTakesTheLowPowerExit) {
    for (const Build& b : kBuilds) {
        ZepVAD1State_GSMAMR st;
        zepsVAD1StateReset_GSMAMR(&st);
        st.burst_count = 3;
        st.hang_count = 5;
        st.complex_hang_count = 7;
        st.complex_hang_timer = 9;
        st.pitch = 0x7fff;
        st.complex_low = 0x7fff;
        const std::vector<Zep16s> zeros(200, 0);
        Zep16s flag = -1;
        ASSERT_EQ(b.vad1(zeros.data(), &st, &flag, 30000, 0), zepStsNoErr);
        EXPECT_EQ(flag, 0);
        EXPECT_EQ(st.burst_count, 0);
        EXPECT_EQ(st.hang_count, 0);
        EXPECT_EQ(st.complex_hang_count, 0);
        EXPECT_EQ(st.complex_hang_timer, 0);
        EXPECT_EQ(st.pitch & 0x4000, 0);         // bits 14-15 of pitch and complex_low cleared
        EXPECT_EQ(st.corr_hp_fast, 13106);       // low power resets the smoothed correlation
    }
}

TEST(AmrVadEdges, Vad2FlagsSpeechInTheSecondHalfOnly) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    // The stream file holds frames where only the second half is speech;
    // replaying up to them must give 1 from the OR of the halves.
    const VecFile f = load_vec(shared_path("vectors/amr/zepsVAD2_GSMAMR_16s.vec"));
    for (const Build& b : kBuilds) {
        ZepVAD2State_GSMAMR st;
        int second_only = 0;
        for (const VecCase& c : f.cases) {
            if (c.reset) {
                zepsVAD2StateReset_GSMAMR(&st);
                continue;
            }
            Zep16s flag = -1;
            b.vad2(c.in("pSrc").as<Zep16s>().data(), &st, &flag, c.in("ltpFlag").as<Zep32s>()[0]);
            if (comment_values(c, "half decisions") == std::vector<long long>{0, 1}) {
                EXPECT_EQ(flag, 1);
                ++second_only;
            }
        }
        EXPECT_EQ(second_only, 12);
    }
}

TEST(AmrVadEdges, OpenLoopRateCodes) {
    Rng rng(7);
    for (const Build& b : kBuilds) {
        for (int which = 0; which < 3; ++which) {
            for (Zep32s rate : {2, 4, 5, 9, 10, 13, 17, 24, 26, -1}) {
                OlArgs a(rng, false);
                const auto before = a.bytes();
                EXPECT_EQ(call_ol(b, which, a, rate), zepStsRangeErr) << rate;
                EXPECT_EQ(a.bytes(), before);
            }
            OlArgs a(rng, false);
            EXPECT_EQ(call_ol(b, which, a, 25), zepStsNoErr);  // DTX frame code accepted
            EXPECT_GE(a.T[0], 18);
            EXPECT_LE(a.T[0], 143);
        }
    }
}

TEST(AmrVadChecks, AutoScaleAndPreemphasisValues) {
    // block_norm: largest magnitude to 2 bits of headroom; zeros give 16 - headroom.
    const std::vector<Zep16s> in = {-32768, 100, -3, 0};
    std::vector<Zep16s> out(4);
    Zep32s scale = 0;
    ASSERT_EQ(zeps::n8::zepsAutoScale_16s(in.data(), out.data(), 4, &scale, 2), zepStsNoErr);
    EXPECT_EQ(scale, -2);
    EXPECT_EQ(out, (std::vector<Zep16s>{-8192, 25, -1, 0}));
    const std::vector<Zep16s> zeros(5, 0);
    ASSERT_EQ(zeps::n8::zepsAutoScale_16s(zeros.data(), out.data(), 4, &scale, 2), zepStsNoErr);
    EXPECT_EQ(scale, 14);
    ASSERT_EQ(zeps::n8::zepsAutoScale_16s(in.data() + 1, out.data(), 1, &scale, 0), zepStsNoErr);
    EXPECT_EQ(scale, 8);
    EXPECT_EQ(out[0], 25600);
    // Pre-emphasis in place, saturating: 32767 + 0.8 * 32767 clamps, -0.8 * 1 truncates to -1.
    std::vector<Zep16s> x = {32767, -32768, 1, 0};
    Zep16s mem = -32768;
    ASSERT_EQ(zeps::n8::zepsPreemphasize_GSMAMR_16s(x.data(), x.data(), 4, -26214, &mem), zepStsNoErr);
    EXPECT_EQ(x, (std::vector<Zep16s>{32767, -32768, 26215, -1}));
    EXPECT_EQ(mem, 0);
}

// ---- both builds agree

template <class T>
std::vector<unsigned char> raw(const T& v) {
    std::vector<unsigned char> r(sizeof(T));
    std::memcpy(r.data(), &v, sizeof(T));
    return r;
}

std::vector<Zep16s> speech_like(Rng& rng, int n) {
    std::vector<Zep16s> x(static_cast<std::size_t>(n));
    const int kind = static_cast<int>(rng.uniform(0, 3));
    for (int i = 0; i < n; ++i)
        x[i] = kind == 0 ? Zep16s{0} : kind == 1 ? static_cast<Zep16s>(rng.uniform(-200, 200)) : rng.s16();
    return x;
}

}  // namespace
}  // namespace zeps::test::amrvad

using namespace zeps::test::amrvad;

ZEPS_VARIANT_CHECK(zepsVAD1_GSMAMR_16s) {
    ZepVAD1State_GSMAMR a;
    zepsVAD1StateReset_GSMAMR(&a);
    for (auto& w : a.bckr_est) w = static_cast<Zep16s>(rng.uniform(40, 16000));
    a.vadreg = rng.s16();
    a.pitch = rng.s16();
    a.complex_hang_timer = static_cast<Zep16s>(rng.uniform(0, 120));
    ZepVAD1State_GSMAMR b = a;
    for (int frame = 0; frame < 3; ++frame) {
        const auto x = speech_like(rng, 200);
        const Zep32s corr = rng.chance(4) ? rng.s32() : static_cast<Zep32s>(rng.uniform(0, 32767));
        const Zep16s tone = rng.s16();
        Zep16s fa = -1, fb = -1;
        ASSERT_EQ(zeps::u8::zepsVAD1_GSMAMR_16s(x.data(), &a, &fa, corr, tone),
                  zeps::n8::zepsVAD1_GSMAMR_16s(x.data(), &b, &fb, corr, tone));
        ASSERT_EQ(fa, fb);
        ASSERT_EQ(raw(a), raw(b));
    }
}

ZEPS_VARIANT_CHECK(zepsVAD2_GSMAMR_16s) {
    ZepVAD2State_GSMAMR a;
    zepsVAD2StateReset_GSMAMR(&a);
    if (rng.chance(2)) {  // a state from the middle of a stream, or a corrupt one
        for (int i = 0; i < 16; ++i) {
            a.Lch_enrg[i] = static_cast<Zep32s>(rng.uniform(0, 1 << 24));
            a.Lch_noise[i] = static_cast<Zep32s>(rng.uniform(0, 1 << 24));
            a.ch_enrg_long_db[i] = rng.s16();
        }
        a.Lframe_cnt = rng.s32();
        a.shift_state = static_cast<Zep16s>(rng.uniform(0, 2));
        a.tsnr = rng.s16();
        a.pre_emp_mem = rng.s16();
        a.last_normb_shift = static_cast<Zep16s>(rng.uniform(-2, 16));
    }
    ZepVAD2State_GSMAMR b = a;
    for (int frame = 0; frame < 6; ++frame) {
        const auto x = speech_like(rng, 160);
        const Zep32s ltp = static_cast<Zep32s>(rng.uniform(0, 1));
        Zep16s fa = -1, fb = -1;
        ASSERT_EQ(zeps::u8::zepsVAD2_GSMAMR_16s(x.data(), &a, &fa, ltp),
                  zeps::n8::zepsVAD2_GSMAMR_16s(x.data(), &b, &fb, ltp));
        ASSERT_EQ(fa, fb);
        ASSERT_EQ(raw(a), raw(b));
    }
    Zep16s f = 0;
    ASSERT_EQ(zeps::u8::zepsVAD2_GSMAMR_16s(nullptr, &a, &f, 0), zeps::n8::zepsVAD2_GSMAMR_16s(nullptr, &b, &f, 0));
}

ZEPS_VARIANT_CHECK(zepsFFTFwd_RToPerm_GSMAMR_16s_I) {
    auto a = speech_like(rng, 128);
    auto b = a;
    ASSERT_EQ(zeps::u8::zepsFFTFwd_RToPerm_GSMAMR_16s_I(a.data()), zeps::n8::zepsFFTFwd_RToPerm_GSMAMR_16s_I(b.data()));
    ASSERT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsPreemphasize_GSMAMR_16s) {
    const int len = static_cast<int>(rng.uniform(-1, 100));
    const auto x = rng.vec<Zep16s>(100);
    std::vector<Zep16s> a(100, 1), b(100, 1);
    Zep16s ma = rng.s16(), mb = ma;
    const Zep16s g = rng.s16();
    ASSERT_EQ(zeps::u8::zepsPreemphasize_GSMAMR_16s(x.data(), a.data(), len, g, &ma),
              zeps::n8::zepsPreemphasize_GSMAMR_16s(x.data(), b.data(), len, g, &mb));
    ASSERT_TRUE(zeps::test::same_bytes(a, b));
    ASSERT_EQ(ma, mb);
}

ZEPS_VARIANT_CHECK(zepsAutoScale_16s) {
    const int len = static_cast<int>(rng.uniform(-1, 64));
    const Zep32s room = static_cast<Zep32s>(rng.uniform(-1, 20));
    const auto x = speech_like(rng, 64);
    std::vector<Zep16s> a(64, 1), b(64, 1);
    Zep32s sa = 3, sb = 3;
    ASSERT_EQ(zeps::u8::zepsAutoScale_16s(x.data(), a.data(), len, &sa, room),
              zeps::n8::zepsAutoScale_16s(x.data(), b.data(), len, &sb, room));
    ASSERT_TRUE(zeps::test::same_bytes(a, b));
    ASSERT_EQ(sa, sb);
}

namespace {
void open_loop_variants(zeps::test::Rng& rng, int which) {
    static const Zep32s kRates[] = {0, 1, 3, 6, 7, 8, 11, 12, 25, 2};
    const Zep32s rate = kRates[rng.uniform(0, 9)];
    OlArgs a(rng, rng.chance(3));
    OlArgs b = a;
    ASSERT_EQ(call_ol(kBuilds[0], which, a, rate), call_ol(kBuilds[1], which, b, rate));
    ASSERT_EQ(a.bytes(), b.bytes());
    ASSERT_EQ(a.rmax, b.rmax);
    ASSERT_EQ(a.r0, b.r0);
}
}  // namespace

ZEPS_VARIANT_CHECK(zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s) { open_loop_variants(rng, 0); }
ZEPS_VARIANT_CHECK(zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s) { open_loop_variants(rng, 1); }
ZEPS_VARIANT_CHECK(zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s) { open_loop_variants(rng, 2); }

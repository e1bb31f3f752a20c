// G.729 pitch stages: search range and fraction edges, the Annex D second-subframe rule against the
// Annex D reference, the float members against the Annex C reference and
// the fixed-point routines, and saturation boundaries.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "frame/variants.h"
#include "tests/g729pitch/annex_reference_results.h"
#include "tests/vec_reader.h"

namespace {

namespace z = zeps::u8;
using V16 = std::vector<Zep16s>;
using VF = std::vector<Zep32f>;
constexpr Zep16s kCanary = 0x5A5A;

zeps::test::VecFile load(const std::string& name) {
    return zeps::test::load_vec(zeps::test::shared_path("vectors/g729/" + name));
}

/// A periodic excitation buffer (194 samples) with pulses every `period`.
V16 pulse_train(int period) {
    V16 e(194, 0);
    for (int i = 153; i >= 0; i -= period) {
        e[i] = 8000;
        if (i + 1 < 154) e[i + 1] = -3000;
    }
    return e;
}

/// A noise excitation buffer (194 samples, current subframe zero): its
/// fractional delays are told apart by the interpolation.
V16 noise_excitation() {
    V16 e(194, 0);
    unsigned x = 12345;
    for (int i = 0; i < 154; ++i) {
        x = x * 1103515245u + 12345u;
        e[i] = static_cast<Zep16s>(static_cast<int>((x >> 16) % 8001) - 4000);
    }
    return e;
}

V16 decaying_h() {
    V16 h(40, 0);
    h[0] = 4096;
    for (int i = 1; i < 20; ++i) h[i] = static_cast<Zep16s>(h[i - 1] * 7 / 10);
    return h;
}

/// Target = the adaptive vector of (lag, frac) filtered through h.
V16 target_for(const V16& exc, const V16& h, Zep16s lag, Zep16s frac) {
    V16 e = exc, v(40), y(40);
    Zep16s d[2] = {lag, frac}, g;
    EXPECT_EQ(z::zepsDecodeAdaptiveVector_G729_16s(d, e.data(), v.data()), zepStsNoErr);
    EXPECT_EQ(z::zepsAdaptiveCodebookGain_G729_16s(v.data(), h.data(), v.data(), y.data(), &g), zepStsNoErr);
    return y;
}

using SearchFn = decltype(&z::zepsAdaptiveCodebookSearch_G729_16s);

std::pair<Zep16s, Zep16s> run_search(SearchFn fn, Zep16s delay, Zep16s sub, const V16& xn, const V16& h, V16 exc) {
    V16 d(2, kCanary), v(40, kCanary);
    EXPECT_EQ(fn(delay, xn.data(), h.data(), exc.data(), d.data(), v.data(), sub), zepStsNoErr);
    EXPECT_TRUE(std::equal(v.begin(), v.end(), exc.begin() + 154)) << "vector and buffer differ";
    return {d[0], d[1]};
}

TEST(G729PitchEdges, SearchRangeAndFractionLimits) {
    const V16 h = decaying_h();
    for (SearchFn fn : {&z::zepsAdaptiveCodebookSearch_G729_16s, &z::zepsAdaptiveCodebookSearch_G729A_16s,
                        &z::zepsAdaptiveCodebookSearch_G729D_16s}) {
        // Open-loop 142 in subframe 0 searches 137..143: a period of 136 is
        // out of reach, 137 and 143 are reached.
        for (int period : {136, 137, 143}) {
            const V16 exc = pulse_train(period);
            const auto [lag, frac] = run_search(fn, 142, 0, target_for(exc, h, static_cast<Zep16s>(period), 0), h, exc);
            EXPECT_GE(lag, 137);
            EXPECT_LE(lag, 143);
            if (period != 136) {
                EXPECT_EQ(lag, period);
            }
            EXPECT_EQ(frac, 0);  // above 84: no fraction in subframe 0
        }
        // Subframe 0: lag 85 gets fraction 0 without a fractional search,
        // lag 84 is still searched; subframe 1 searches either.
        for (Zep16s t : {Zep16s{84}, Zep16s{85}}) {
            const V16 exc = noise_excitation();
            const V16 xn = target_for(exc, h, t, 1);
            EXPECT_EQ(run_search(fn, t, 0, xn, h, exc), std::make_pair(t, Zep16s(t == 84 ? 1 : 0)));
            EXPECT_EQ(run_search(fn, t, 1, xn, h, exc), std::make_pair(t, Zep16s{1}));
        }
    }
}

TEST(G729PitchEdges, AnnexDSecondSubframeMatchesReference) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    const auto f = load("zepsAdaptiveCodebookSearch_G729_16s.vec");
    std::size_t k = 0;
    int differs_from_base = 0;
    for (const auto& c : f.cases) {
        if (c.ret != 0) continue;
        const Zep16s delay = c.in("valOpenDelay").as<Zep16s>()[0];
        const Zep16s sub = c.in("subframe").as<Zep16s>()[0];
        const auto [lag, frac] =
            run_search(&z::zepsAdaptiveCodebookSearch_G729D_16s, delay, sub, c.in("pSrcAdptTarget").as<Zep16s>(),
                       c.in("pSrcImpulseResponse").as<Zep16s>(), c.in("pSrcDstPrevExcitation").as<Zep16s>());
        const V16 base = c.out("pDstDelay").as<Zep16s>();
        if (sub == 0) {  // the first subframe is the base codec's
            EXPECT_EQ(lag, base[0]) << "case " << c.number;
            EXPECT_EQ(frac, base[1]) << "case " << c.number;
            continue;
        }
        ASSERT_LT(k, std::size(zeps::test::kAnnexDSubframe1Delays));
        EXPECT_EQ(lag, zeps::test::kAnnexDSubframe1Delays[k][0]) << "case " << c.number;
        EXPECT_EQ(frac, zeps::test::kAnnexDSubframe1Delays[k][1]) << "case " << c.number;
        ++k;
        differs_from_base += (lag != base[0] || frac != base[1]);
        // Enc_lag3D codes fractions only for lag - t_min in 3..6, and none
        // that would share a code with a neighbouring integer lag.
        const int t_min = std::min(std::max(20, delay - 5), 134);
        const int i = lag - t_min;
        EXPECT_TRUE((i >= 3 && i <= 6) || frac == 0) << "case " << c.number;
        EXPECT_FALSE((i == 3 && frac == -1) || (i == 6 && frac == 1)) << "case " << c.number;
    }
    EXPECT_EQ(k, std::size(zeps::test::kAnnexDSubframe1Delays));
    EXPECT_GT(differs_from_base, 100);  // the vectors exercise the Annex D rule
}

TEST(G729PitchEdges, FloatMembersFollowAnnexC) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    // Open loop: the lag of the Annex C single-precision reference, exactly.
    const auto f = load("zepsOpenLoopPitchSearch_G729A_16s.vec");
    ASSERT_EQ(f.cases.size(), std::size(zeps::test::kAnnexCOpenLoopLags));
    for (std::size_t n = 0; n < f.cases.size(); ++n) {
        const VF s = f.cases[n].in("pSrc").as<Zep32f>();
        Zep32s lag = -1;
        ASSERT_EQ(z::zepsOpenLoopPitchSearch_G729A_32f(s.data() + 143, &lag), zepStsNoErr);
        EXPECT_EQ(lag, zeps::test::kAnnexCOpenLoopLags[n]) << "case " << f.cases[n].number;
    }
    // Adaptive vector: within 2 of the fixed-point Pred_lt_3 on the encoder's
    // excitation. The float filter differs from the Q15 one by the
    // coefficient rounding (< 2^-16 a tap) and the fixed point rounds each
    // output; in-place lags below 40 carry that rounding forward once more.
    // The largest difference over the file is 1.38.
    const auto d = load("zepsDecodeAdaptiveVector_G729_16s.vec");
    for (const auto& c : d.cases) {
        if (c.ret != 0) continue;
        const V16 delay = c.in("pSrcDelay").as<Zep16s>();
        const Zep32s fd[2] = {delay[0], delay[1]};
        VF e = c.in("pSrcDstPrevExcitation").as<Zep32f>();
        ASSERT_EQ(z::zepsDecodeAdaptiveVector_G729_32f_I(fd, e.data()), zepStsNoErr);
        const V16 want = c.out("pDstAdptVector").as<Zep16s>();
        for (int j = 0; j < 40; ++j) ASSERT_NEAR(e[154 + j], want[j], 2.0f) << "case " << c.number << " j " << j;
    }
    // The filtered-excitation update from lag t to t+1 equals the direct
    // convolution of the excitation at lag t+1 (to float rounding).
    VF exc(120), h(40);
    for (int i = 0; i < 120; ++i) exc[i] = static_cast<float>((i * 37) % 23 - 11);
    for (int i = 0; i < 40; ++i) h[i] = std::pow(0.8f, static_cast<float>(i));
    auto conv = [&](int start) {
        VF y(40, 0.0f);
        for (int n = 0; n < 40; ++n)
            for (int i = 0; i <= n; ++i) y[n] += exc[start + i] * h[n - i];
        return y;
    };
    VF y = conv(60);
    for (int start = 59; start >= 20; --start) {
        ASSERT_EQ(z::zepsFilteredExcitation_G729_32f(h.data(), y.data(), 40, exc[start]), zepStsNoErr);
        const VF want = conv(start);
        for (int j = 0; j < 40; ++j) ASSERT_NEAR(y[j], want[j], 1e-3f) << start << " " << j;
    }
}

TEST(G729PitchEdges, SaturationAndRounding) {
    // Target update: y = -32768 at gain 1.0 (Q14) removes -32768, which
    // saturates a positive target; gain 2.0 saturates the product itself.
    const V16 y(40, -32768), xn(40, 32767);
    V16 o(40);
    ASSERT_EQ(z::zepsAdaptiveCodebookContribution_G729_16s(16384, y.data(), xn.data(), o.data()), zepStsNoErr);
    EXPECT_EQ(o, V16(40, 32767));
    const V16 y2(40, 20000), xn2(40, -100);
    ASSERT_EQ(z::zepsAdaptiveCodebookContribution_G729_16s(32767, y2.data(), xn2.data(), o.data()), zepStsNoErr);
    EXPECT_EQ(o[0], -32768);  // -100 - (L_shl saturated: 32767)
    ASSERT_EQ(z::zepsAdaptiveCodebookContribution_G729_16s(8192, y2.data(), xn2.data(), o.data()), zepStsNoErr);
    EXPECT_EQ(o[0], -100 - 10000);

    // Weighted sums: per-term rounding versus truncation, and saturation.
    const V16 a = {3, -3, 32767, -32768}, b = {1, 1, 32767, -32768};
    V16 r(4), t(4);
    ASSERT_EQ(z::zepsInterpolateC_G729_16s_Sfs(a.data(), 1, b.data(), 1, r.data(), 4, 1), zepStsNoErr);
    ASSERT_EQ(z::zepsInterpolateC_NR_G729_16s_Sfs(a.data(), 1, b.data(), 1, t.data(), 4, 1), zepStsNoErr);
    EXPECT_EQ(r, (V16{2 + 1, -1 + 1, 32767, -32768}));   // round(1.5)+round(0.5), round(-1.5)+round(0.5)
    EXPECT_EQ(t, (V16{1 + 0, -2 + 0, 32766, -32768}));   // floor per term
    ASSERT_EQ(z::zepsInterpolateC_G729_16s_Sfs(a.data(), -32768, b.data(), -32768, r.data(), 4, 15), zepStsNoErr);
    EXPECT_EQ(r, (V16{-4, 2, -32767 - 1, 32767}));      // 2^30 * 2 >> 15 saturates
    ASSERT_EQ(z::zepsInterpolateC_NR_G729_16s_Sfs(a.data(), 32767, b.data(), 32767, t.data(), 4, 31), zepStsNoErr);
    EXPECT_EQ(t, (V16{0, -1, 0, -2}));

    // Open loop on full-scale input: the scaled-down path, where the base
    // search's correlations still saturate (the reference answers 20) and
    // the decimated Annex A search finds the period; silence gives the
    // reference's answers. Values checked against the ITU-T routines.
    V16 s(223);
    for (int i = 0; i < 223; ++i) s[i] = (i % 57) < 5 ? 32767 : -32768;
    Zep16s lag = 0;
    ASSERT_EQ(z::zepsOpenLoopPitchSearch_G729_16s(s.data() + 143, &lag), zepStsNoErr);
    EXPECT_EQ(lag, 20);
    ASSERT_EQ(z::zepsOpenLoopPitchSearch_G729A_16s(s.data() + 143, &lag), zepStsNoErr);
    EXPECT_EQ(lag, 57);
    const V16 zero(223, 0);
    ASSERT_EQ(z::zepsOpenLoopPitchSearch_G729_16s(zero.data() + 143, &lag), zepStsNoErr);
    EXPECT_EQ(lag, 80);  // base: downward scans with ">=" end on each section's lowest lag
    ASSERT_EQ(z::zepsOpenLoopPitchSearch_G729A_16s(zero.data() + 143, &lag), zepStsNoErr);
    EXPECT_EQ(lag, 20);  // Annex A: strict ">" keeps each section's first lag
}

}  // namespace

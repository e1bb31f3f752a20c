// SPDX-License-Identifier: BSD-3-Clause
// Echo-canceller sub-band filter bank: sizes, failure orders, the built-in
// windows, the 16-bit fold, agreement with a direct double-precision model,
// the analysis -> synthesis round trip and the reversed synthesis window.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "tests/ec/subband_fixture.h"
#include "tests/variant_check.h"
#include "tests/vec_reader.h"

namespace zeps::test {
namespace {

std::vector<float> speech_f(const char* name) {
    const std::vector<std::int16_t> s = load_speech(name);
    return {s.begin(), s.end()};
}

struct Config {
    int order, F, L;
};
constexpr Config kA{5, 24, 128}, kB{6, 44, 256};

// ---------------------------------------------------------------- sizes and failures

TEST(Subband, SizesFollowTheFftSizes) {
    for (int order = 1; order <= 10; ++order) {
        const int N = 1 << order, L = 3 * N;
        int S, W, I, s, i, b;
        ASSERT_TRUE(u8::rfft_get_size_32s(order, &S, &W, &I));
        ASSERT_EQ(u8::zepsSubbandProcessGetSize_16s(order, L, &s, &i, &b), zepStsNoErr);
        auto r16 = [](int v) { return (v + 15) / 16 * 16; };
        EXPECT_EQ(s, r16(S) + 2 * r16(2 * L) + 64);
        EXPECT_EQ(b, r16(4 * N) + W + 16);
        EXPECT_EQ(i, I);
        ASSERT_TRUE(u8::rfft_get_size_32f(order, &S, &W, &I));
        ASSERT_EQ(u8::zepsSubbandProcessGetSize_32f(order, L, &s, &i, &b), zepStsNoErr);
        EXPECT_EQ(s, S + 8 * L + 56);
        EXPECT_EQ(b, W + 4 * N + 16);
        EXPECT_EQ(i, I);
    }
}

TEST(Subband, GetSizeChecksInOrder) {
    for (auto get : {u8::zepsSubbandProcessGetSize_16s, u8::zepsSubbandProcessGetSize_32f}) {
        int s = -1, i = -1, b = -1;
        EXPECT_EQ(get(0, 128, nullptr, &i, &b), zepStsBadArgErr);  // order before pointers
        EXPECT_EQ(get(5, -1, &s, nullptr, &b), zepStsBadArgErr);   // L before pointers
        EXPECT_EQ(get(5, 100, &s, &i, nullptr), zepStsNullPtrErr);  // pointers before L % N
        EXPECT_EQ(get(5, 100, &s, &i, &b), zepStsBadArgErr);
        EXPECT_EQ(get(40, 128, &s, &i, &b), zepStsBadArgErr);
        EXPECT_EQ(get(17, 1 << 17, &s, &i, &b), zepStsBadArgErr);  // the FFT refuses the order
        EXPECT_EQ(get(16, 1 << 30, &s, &i, &b), zepStsBadArgErr);  // size beyond 2^31 - 1
        EXPECT_EQ(s, -1);
        EXPECT_EQ(i, -1);
        EXPECT_EQ(b, -1);
    }
}

TEST(Subband, InitChecksInOrderAndWritesNothingOnFailure) {
    Block st(Bank32f<>::size(7, 1 << 17, 0) + 8 * (1 << 17), 5);
    const std::vector<std::uint8_t> before = st.bytes();
    const std::vector<float> wf(1 << 17, 0.5f);
    const std::vector<Zep16s> w16(1 << 17, 4096);
    auto check = [&](int order, int F, int L, bool state, bool window, ZepStatus want) {
        EXPECT_EQ(u8::zepsSubbandProcessInit_32f(state ? st.p : nullptr, order, F, L, window ? wf.data() : nullptr,
                                                 nullptr),
                  want)
            << order << " " << F << " " << L;
        EXPECT_EQ(u8::zepsSubbandProcessInit_16s(state ? st.p : nullptr, order, F, L, window ? w16.data() : nullptr,
                                                 nullptr),
                  want)
            << order << " " << F << " " << L;
    };
    check(0, 24, 128, false, true, zepStsBadArgErr);  // configuration before the state pointer
    check(5, 0, 128, false, true, zepStsBadArgErr);
    check(5, 33, 128, false, true, zepStsBadArgErr);   // F > N
    check(5, 24, 0, false, true, zepStsBadArgErr);
    check(5, 24, 128, false, true, zepStsNullPtrErr);
    check(5, 24, 100, true, true, zepStsBadArgErr);   // L not a multiple of N
    check(5, 24, 256, true, false, zepStsBadArgErr);  // no built-in window for (5, 24, 256)
    check(6, 24, 256, true, false, zepStsBadArgErr);
    check(17, 24, 1 << 17, true, true, zepStsErr);    // the FFT set-up refuses order 17
    EXPECT_EQ(st.bytes(), before);
}

TEST(Subband, ProcessingChecksPointersAndReportsFftFailures) {
    Bank16s<> a(5, 24, 128, nullptr), s(5, 24, 128, nullptr);
    Bank32f<> af(5, 24, 128, nullptr);
    std::vector<Zep16s> x(24, 1000), y(24, 7);
    std::vector<Zep32sc> X(17, Zep32sc{9, 9});
    std::vector<float> xf(24, 1.0f), yf(24, 7.0f);
    std::vector<Zep32fc> Xf(17, Zep32fc{9, 9});
    const auto a0 = a.state.bytes(), s0 = s.state.bytes(), f0 = af.state.bytes();
    const auto X0 = X;
    std::uint8_t* st = a.state.p;
    std::uint8_t* bf = a.buf.p;
    for (int nul = 0; nul < 4; ++nul) {
        auto p = [&](auto* q, int i) { return nul == i ? nullptr : q; };
        EXPECT_EQ(u8::zepsSubbandAnalysis_16s32sc_Sfs(p(x.data(), 0), p(X.data(), 1), p(st, 2), 40, p(bf, 3)),
                  zepStsNullPtrErr);
        EXPECT_EQ(u8::zepsSubbandSynthesis_32sc16s_Sfs(p(X.data(), 0), p(y.data(), 1), p(s.state.p, 2), 40,
                                                       p(s.buf.p, 3)),
                  zepStsNullPtrErr);
        EXPECT_EQ(u8::zepsSubbandAnalysis_32f32fc(p(xf.data(), 0), p(Xf.data(), 1), p(af.state.p, 2), p(af.buf.p, 3)),
                  zepStsNullPtrErr);
        EXPECT_EQ(u8::zepsSubbandSynthesis_32fc32f(p(Xf.data(), 0), p(yf.data(), 1), p(af.state.p, 2),
                                                   p(af.buf.p, 3)),
                  zepStsNullPtrErr);
    }
    EXPECT_EQ(a.state.bytes(), a0);
    EXPECT_EQ(s.state.bytes(), s0);
    EXPECT_EQ(af.state.bytes(), f0);
    EXPECT_TRUE(std::all_of(y.begin(), y.end(), [](Zep16s v) { return v == 7; }));
    EXPECT_TRUE(std::all_of(yf.begin(), yf.end(), [](float v) { return v == 7.0f; }));
    // A scale factor the FFT refuses: -2, no output; the analysis delay line
    // has taken the frame, the synthesis delay line is untouched.
    Bank16s<> ref(5, 24, 128, nullptr);
    ref.analyse(x.data(), 0);
    EXPECT_EQ(u8::zepsSubbandAnalysis_16s32sc_Sfs(x.data(), X.data(), st, 32, bf), zepStsErr);
    EXPECT_EQ(std::memcmp(X.data(), X0.data(), sizeof(Zep32sc) * X.size()), 0);
    EXPECT_TRUE(same_state(a.state, ref.state));
    EXPECT_EQ(u8::zepsSubbandSynthesis_32sc16s_Sfs(X.data(), y.data(), s.state.p, -32, s.buf.p), zepStsErr);
    EXPECT_EQ(s.state.bytes(), s0);
    EXPECT_TRUE(std::all_of(y.begin(), y.end(), [](Zep16s v) { return v == 7; }));
}

/// A block holding something other than a state built in it.
enum class Bad { Zero, Random, Copied, Realigned, LengthEdited, OtherPrecision };

/// The state block of `good` spoilt as `bad` (`other`: a state of the other
/// precision of the same configuration).
Block spoilt(const Block& good, const Block& other, Bad bad) {
    Block b(good);  // a byte copy at another address (and the same skew)
    switch (bad) {
        case Bad::Zero: std::memset(b.p, 0, b.size); break;
        case Bad::Random: {
            std::mt19937 r(11);
            for (std::size_t i = 0; i < b.size; ++i) b.p[i] = static_cast<std::uint8_t>(r());
            break;
        }
        case Bad::Copied: break;
        case Bad::Realigned: {  // moved to another place inside its buffer
            Block m(good.size, good.skew + 8);
            std::memcpy(m.p, good.p, good.size);
            return m;
        }
        case Bad::LengthEdited: {  // in place: pointers right, length wrong
            Block e(good.size, good.skew);
            std::memcpy(e.p, good.p, good.size);
            return e;  // edited by the caller (needs the original addresses)
        }
        case Bad::OtherPrecision: {
            Block o(std::max(good.size, other.size), good.skew);
            std::memcpy(o.p, other.p, other.size);
            return o;
        }
    }
    return b;
}

// A copied, moved, zero, random or edited block is refused (-5) before its
// pointers are used: nothing read out of bounds (sanitizers), nothing written.
TEST(Subband, ProcessingRefusesABlockThatIsNotAStateBuiltThere) {
    for (const Config c : {kA, kB})
        for (Bad bad : {Bad::Zero, Bad::Random, Bad::Copied, Bad::Realigned, Bad::LengthEdited, Bad::OtherPrecision}) {
            SCOPED_TRACE(testing::Message() << "order " << c.order << ", case " << static_cast<int>(bad));
            Bank16s<> b16(c.order, c.F, c.L, nullptr);
            Bank32f<> b32(c.order, c.F, c.L, nullptr);
            const int N = 1 << c.order;
            for (bool fixed : {true, false}) {
                Block& good = fixed ? b16.state : b32.state;
                Block st = spoilt(good, fixed ? b32.state : b16.state, bad);
                if (bad == Bad::LengthEdited) {
                    // Same block address as a fresh Init there would use.
                    ASSERT_EQ(fixed ? u8::zepsSubbandProcessInit_16s(st.p, c.order, c.F, c.L, nullptr, nullptr)
                                    : u8::zepsSubbandProcessInit_32f(st.p, c.order, c.F, c.L, nullptr, nullptr),
                              zepStsNoErr);
                    std::int32_t len;
                    const std::size_t at = static_cast<std::size_t>((16 - (reinterpret_cast<std::uintptr_t>(st.p) & 15)) & 15) + (fixed ? 24 : 0);
                    std::memcpy(&len, st.p + at, 4);
                    len += N;
                    std::memcpy(st.p + at, &len, 4);
                }
                Block& buf = fixed ? b16.buf : b32.buf;
                const auto st0 = st.bytes(), buf0 = buf.bytes();
                std::vector<Zep16s> x(c.F, 1000), y(c.F, 7);
                std::vector<Zep32sc> X(N / 2 + 1, Zep32sc{9, 9});
                std::vector<float> xf(c.F, 1.0f), yf(c.F, 7.0f);
                std::vector<Zep32fc> Xf(N / 2 + 1, Zep32fc{9, 9});
                for (int build : {0, 1}) {
                    if (fixed) {
                        EXPECT_EQ((build ? n8::zepsSubbandAnalysis_16s32sc_Sfs : u8::zepsSubbandAnalysis_16s32sc_Sfs)(
                                      x.data(), X.data(), st.p, 0, buf.p), zepStsBadArgErr);
                        EXPECT_EQ((build ? n8::zepsSubbandSynthesis_32sc16s_Sfs : u8::zepsSubbandSynthesis_32sc16s_Sfs)(
                                      X.data(), y.data(), st.p, 0, buf.p), zepStsBadArgErr);
                    } else {
                        EXPECT_EQ((build ? n8::zepsSubbandAnalysis_32f32fc : u8::zepsSubbandAnalysis_32f32fc)(
                                      xf.data(), Xf.data(), st.p, buf.p), zepStsBadArgErr);
                        EXPECT_EQ((build ? n8::zepsSubbandSynthesis_32fc32f : u8::zepsSubbandSynthesis_32fc32f)(
                                      Xf.data(), yf.data(), st.p, buf.p), zepStsBadArgErr);
                    }
                }
                EXPECT_EQ(st.bytes(), st0);
                EXPECT_EQ(buf.bytes(), buf0);
                EXPECT_TRUE(std::all_of(X.begin(), X.end(), [](Zep32sc v) { return v.re == 9 && v.im == 9; }));
                EXPECT_TRUE(std::all_of(Xf.begin(), Xf.end(), [](Zep32fc v) { return v.re == 9 && v.im == 9; }));
                EXPECT_TRUE(std::all_of(y.begin(), y.end(), [](Zep16s v) { return v == 7; }));
                EXPECT_TRUE(std::all_of(yf.begin(), yf.end(), [](float v) { return v == 7.0f; }));
            }
            // The originals still work: the check refuses nothing valid.
            std::vector<Zep16s> x(c.F, 1000);
            b16.analyse(x.data(), 0);
            std::vector<float> xf(c.F, 1.0f);
            b32.analyse(xf.data());
        }
}

// ---------------------------------------------------------------- windows and edge cases

/// FNV-1a, 64 bits, of a block of bytes.
std::uint64_t fnv1a(const void* p, std::size_t n) {
    std::uint64_t h = 14695981039346656037ull;
    for (std::size_t i = 0; i < n; ++i) h = (h ^ static_cast<const unsigned char*>(p)[i]) * 1099511628211ull;
    return h;
}

// Every tap of both built-in windows, pinned by checksums of the float half
// tables and of their Q13 truncations (a changed tap changes both).
TEST(Subband, BuiltInWindowTablesArePinned) {
    struct Pinned {
        const float* half;
        int taps;
        std::uint64_t f32, q13;
    };
    const Pinned tables[] = {{kSubbandWinA_32f, kSubbandWinAHalf, 0x62a3400bffee6ff2ull, 0x334b1740cd7a9b97ull},
                             {kSubbandWinB_32f, kSubbandWinBHalf, 0xb06f5e0c58442972ull, 0x77807b1e2c56a0d8ull}};
    for (const Pinned& t : tables) {
        std::vector<Zep16s> q(static_cast<std::size_t>(t.taps));
        for (int n = 0; n < t.taps; ++n) q[static_cast<std::size_t>(n)] = static_cast<Zep16s>(t.half[n] * 8192.0f);
        EXPECT_EQ(fnv1a(t.half, sizeof(float) * static_cast<std::size_t>(t.taps)), t.f32) << t.taps * 2 << " taps";
        EXPECT_EQ(fnv1a(q.data(), sizeof(Zep16s) * q.size()), t.q13) << t.taps * 2 << " taps";
    }
}

TEST(Subband, BuiltInWindowsAndTheirTruncatedQ13Taps) {
    for (const Config c : {kA, kB}) {
        const std::vector<float> w = builtin_window(c.L);
        std::vector<Zep16s> q(c.L);
        for (int n = 0; n < c.L; ++n) q[n] = static_cast<Zep16s>(std::trunc(w[n] * 8192.0));
        Bank32f<> implicit(c.order, c.F, c.L, nullptr), explicit_(c.order, c.F, c.L, w.data());
        ASSERT_EQ(implicit.init_status, zepStsNoErr);
        EXPECT_TRUE(same_state(implicit.state, explicit_.state));
        Bank16s<> implicit16(c.order, c.F, c.L, nullptr), explicit16(c.order, c.F, c.L, q.data());
        ASSERT_EQ(implicit16.init_status, zepStsNoErr);
        EXPECT_TRUE(same_state(implicit16.state, explicit16.state));
        if (c.L == 128) {  // truncation toward zero, not rounding
            EXPECT_EQ(q[63], 7627);
            EXPECT_EQ(q[64], 7627);
            EXPECT_EQ(q[3], -56);
            EXPECT_EQ(q[124], -56);
            q[63] = 7628;  // the rounded value gives another state
            Bank16s<> rounded(c.order, c.F, c.L, q.data());
            EXPECT_FALSE(same_state(implicit16.state, rounded.state));
        }
    }
}

// L = N: the fold is a plain windowing and the synthesis adds one block;
// F = N as well: no frame sees its predecessor.
TEST(Subband, OneBlockWindowAndFullHop) {
    Rng rng(3);
    std::vector<float> w(32);
    for (float& v : w) v = rng.f32(1.0f);
    Bank32f<> a(5, 32, 32, w.data()), b(5, 32, 32, w.data());
    std::vector<float> x1(32), x2(32), zero(32, 0.0f);
    for (int n = 0; n < 32; ++n) x1[n] = rng.f32(1000.0f), x2[n] = rng.f32(1000.0f);
    a.analyse(x1.data());
    b.analyse(zero.data());
    const std::vector<Zep32fc> Xa = a.analyse(x2.data()), Xb = b.analyse(x2.data());
    EXPECT_EQ(std::memcmp(Xa.data(), Xb.data(), sizeof(Zep32fc) * Xa.size()), 0);
    std::vector<float> u(32);
    for (int n = 0; n < 32; ++n) u[n] = x2[n] * w[n];
    std::vector<float> U(34);
    std::vector<std::uint8_t> desc(4096), work(4096);
    ASSERT_TRUE(u8::rfft_fwd_32f(u.data(), U.data(), u8::rfft_init_32f(5, desc.data()), work.data()));
    EXPECT_EQ(std::memcmp(Xa.data(), U.data(), 4 * U.size()), 0);
    // synthesis of one block: output = y[n] w[31 - n], nothing carried over
    const std::vector<float> y1 = a.synthesise(Xa.data());
    const std::vector<float> y2 = b.synthesise(Xb.data());
    std::vector<float> yy(32);
    ASSERT_TRUE(u8::rfft_inv_32f(U.data(), yy.data(), u8::rfft_init_32f(5, desc.data()), work.data()));
    for (int n = 0; n < 32; ++n) EXPECT_EQ(y1[n], 0.0f + yy[n] * w[31 - n]) << n;
    EXPECT_EQ(y1, y2);
}

// 16-bit fold: each product rounded in Q13 and saturated, the running sum
// saturated after each block; full-scale input saturates instead of wrapping.
std::vector<std::int32_t> fold_model(const std::vector<Zep16s>& d, const std::vector<Zep16s>& w, int N) {
    std::vector<std::int32_t> u(N);
    auto sat = [](std::int64_t v) { return static_cast<std::int32_t>(std::clamp<std::int64_t>(v, -32768, 32767)); };
    for (int n = 0; n < N; ++n) {
        std::int32_t acc = sat((std::int64_t{d[n]} * w[n] + 4096) >> 13);
        for (std::size_t b = N; b < d.size(); b += N) acc = sat(acc + sat((std::int64_t{d[b + n]} * w[b + n] + 4096) >> 13));
        u[n] = acc;
    }
    return u;
}

TEST(Subband, FoldIsExactAndSaturates) {
    Rng rng(5);
    for (int order = 1; order <= 7; ++order) {
        const int N = 1 << order;
        for (int m : {1, 2, 4}) {
            std::vector<Zep16s> d = rng.vec<std::int16_t>(m * N), w = rng.vec<std::int16_t>(m * N);
            const std::vector<std::int32_t> want = fold_model(d, w, N);
            std::vector<std::int32_t> u(N);
            for (auto fold : {u8::subband_fold_16s, u8::subband_fold_16s_scalar, n8::subband_fold_16s}) {
                fold(d.data(), w.data(), m * N, N, u.data());
                ASSERT_EQ(u, want) << order << " " << m;
            }
        }
    }
    // Full-scale frames through the analysis with configuration B: the folded
    // block saturates, so bin 0 is N * 32767 (N * -32768), not a wrapped sum.
    for (Zep16s full : {Zep16s{32767}, Zep16s{-32768}}) {
        std::vector<Zep16s> ones(256, 8191);
        Bank16s<> bank(6, 44, 256, ones.data());
        const std::vector<Zep16s> x(44, full);
        std::vector<Zep32sc> X;
        for (int f = 0; f < 6; ++f) X = bank.analyse(x.data(), 0);
        EXPECT_NEAR(X[0].re, 64 * (full > 0 ? 32767 : -32768), 1);
        for (int k = 1; k <= 32; ++k) EXPECT_LE(std::abs(X[k].re) + std::abs(X[k].im), 1) << k;
    }
}

// The narrow 16-bit kernels (one rounding high multiply per product) give
// the general scalar kernels' bits for every window in -8191 .. 8191: taps
// at both ends of that range against full-scale samples (-32768 included),
// sums that saturate both ways, 32-bit time blocks beyond 16 bits. The
// range test is exact at its ends, and the built-in windows take the path.
TEST(Subband, NarrowKernelsMatchScalarAtTheTapBounds) {
    EXPECT_TRUE(u8::subband_window_is_narrow(std::vector<Zep16s>{8191, -8191, 0}.data(), 3));
    EXPECT_FALSE(u8::subband_window_is_narrow(std::vector<Zep16s>{0, 8192}.data(), 2));
    EXPECT_FALSE(n8::subband_window_is_narrow(std::vector<Zep16s>{-8192, 0}.data(), 2));
    Rng rng(15);
    for (int order = 1; order <= 7; ++order) {
        const int N = 1 << order;
        for (int m : {1, 2, 4}) {
            const int L = m * N;
            for (int round = 0; round < 6; ++round) {
                std::vector<Zep16s> w(L), d = rng.vec<std::int16_t>(L);
                for (Zep16s& v : w) v = static_cast<Zep16s>(rng.chance(3) ? (rng.chance(2) ? 8191 : -8191) : rng.uniform(-8191, 8191));
                if (round == 0) std::fill(d.begin(), d.end(), Zep16s{-32768});
                if (round == 1) std::fill(w.begin(), w.end(), Zep16s{-8191});
                std::vector<std::int32_t> y(N);
                for (auto& v : y) v = round == 2 ? rng.s32() : static_cast<std::int32_t>(rng.uniform(-40000, 40000));
                std::vector<std::int32_t> want(N), u(N);
                u8::subband_fold_16s_scalar(d.data(), w.data(), L, N, want.data());
                for (auto fold : {u8::subband_fold_16s_narrow, n8::subband_fold_16s_narrow}) {
                    fold(d.data(), w.data(), L, N, u.data());
                    ASSERT_EQ(u, want) << order << " " << m << " " << round;
                }
                std::vector<Zep16s> ref = d;
                u8::subband_ola_16s_scalar(ref.data(), w.data(), y.data(), L, N);
                for (auto ola : {u8::subband_ola_16s_narrow, n8::subband_ola_16s_narrow}) {
                    std::vector<Zep16s> got = d;
                    ola(got.data(), w.data(), y.data(), L, N);
                    ASSERT_EQ(got, ref) << order << " " << m << " " << round;
                }
            }
        }
    }
    for (const Config& c : {kA, kB}) {  // the Q13 built-in windows (mirrored halves)
        const float* half = c.L == 128 ? kSubbandWinA_32f : kSubbandWinB_32f;
        std::vector<Zep16s> q13(c.L / 2);
        for (int n = 0; n < c.L / 2; ++n) q13[n] = static_cast<Zep16s>(half[n] * 8192.0f);
        EXPECT_TRUE(u8::subband_window_is_narrow(q13.data(), c.L / 2)) << c.L;
    }
}

// The float SSE kernels give the bits of their scalar twins.
TEST(Subband, FloatKernelsMatchScalarTwins) {
    Rng rng(6);
    for (int order = 1; order <= 7; ++order) {
        const int N = 1 << order;
        for (int m : {1, 3}) {
            const std::vector<float> d = rng.vec<float>(m * N), w = rng.vec<float>(m * N), y = rng.vec<float>(N);
            std::vector<float> u(N), u2(N), re(N / 2), im(N / 2);
            u8::subband_fold_32f(d.data(), w.data(), m * N, N, u.data());
            u8::subband_fold_32f_scalar(d.data(), w.data(), m * N, N, u2.data());
            ASSERT_TRUE(same_bytes(u, u2));
            u8::subband_fold_32f_split(d.data(), w.data(), m * N, N, re.data(), im.data());
            for (int n = 0; n < N / 2; ++n) ASSERT_TRUE(re[n] == u[2 * n] && im[n] == u[2 * n + 1]) << n;
            std::vector<float> a = d, b = d;
            u8::subband_ola_32f(a.data(), w.data(), y.data(), m * N, N);
            u8::subband_ola_32f_scalar(b.data(), w.data(), y.data(), m * N, N);
            ASSERT_TRUE(same_bytes(a, b));
            for (int F : {1, N / 2 + 1, N}) {
                std::vector<float> c = d, e = d;
                u8::subband_shift_ola_32f(c.data(), w.data(), y.data(), m * N, N, F);
                std::copy(e.begin() + F, e.end(), e.begin());
                std::fill(e.end() - F, e.end(), 0.0f);
                u8::subband_ola_32f_scalar(e.data(), w.data(), y.data(), m * N, N);
                ASSERT_TRUE(same_bytes(c, e)) << F;
            }
        }
    }
}

// ---------------------------------------------------------------- against the direct model

/// Largest error over a frame relative to the frame's largest magnitude.
template <class C>
double frame_error(const std::vector<C>& got, const std::vector<double>& ref) {
    double e = 0, m = 0;
    for (std::size_t i = 0; i < ref.size(); ++i) {
        const double g = i % 2 ? got[i / 2].im : got[i / 2].re;
        e = std::max(e, std::fabs(g - ref[i]));
        m = std::max(m, std::fabs(ref[i]));
    }
    return m > 0 ? e / m : e;
}

// Float analysis and synthesis on speech against the bank evaluated directly
// in double precision. Analysis: largest error per frame relative to the
// frame's largest bin; synthesis: largest error relative to the output's
// peak (an output frame sums several input frames of unrelated size).
// Measured (docs/ec.md): analysis 2.0e-7, synthesis 1.7e-7.
TEST(Subband, FloatMatchesDirectModelOnSpeech) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    const std::vector<float> s = speech_f("male.s16");
    for (const Config c : {kA, kB}) {
        const std::vector<float> w = builtin_window(c.L);
        Bank32f<> an(c.order, c.F, c.L, nullptr), sy(c.order, c.F, c.L, nullptr);
        RefBank ra(c.order, c.F, c.L, {w.begin(), w.end()}), rs = ra;
        double ea = 0, es = 0, peak = 0;
        for (std::size_t t = 0; (t + 1) * c.F <= s.size() && t < 600; ++t) {
            const float* x = s.data() + 8000 + t * c.F;
            const std::vector<Zep32fc> X = an.analyse(x);
            ea = std::max(ea, frame_error(X, ra.analyse({x, x + c.F})));
            std::vector<double> V(2 * X.size());
            for (std::size_t k = 0; k < X.size(); ++k) V[2 * k] = X[k].re, V[2 * k + 1] = X[k].im;
            const std::vector<float> y = sy.synthesise(X.data());
            const std::vector<double> yr = rs.synthesise(V);
            for (int n = 0; n < c.F; ++n) es = std::max(es, std::fabs(y[n] - yr[n])), peak = std::max(peak, std::fabs(yr[n]));
        }
        es /= peak;
        std::printf("[ float vs direct %s ] analysis rel err %.3g, synthesis rel err %.3g\n", c.order == 5 ? "A" : "B",
                    ea, es);
        EXPECT_LT(ea, 1e-6) << c.order;
        EXPECT_LT(es, 1e-6) << c.order;
    }
}

// 16-bit analysis on speech: every bin within 1 of the exactly rounded DFT
// of the folded block computed here.
TEST(Subband, FixedAnalysisMatchesRoundedDftOfTheFold) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    const std::vector<std::int16_t> s = load_speech("loud.s16");
    for (const Config c : {kA, kB}) {
        const int N = 1 << c.order;
        Bank16s<> bank(c.order, c.F, c.L, nullptr);
        const std::vector<float> wf = builtin_window(c.L);
        std::vector<Zep16s> w(c.L), d(c.L, 0);
        for (int n = 0; n < c.L; ++n) w[n] = static_cast<Zep16s>(wf[n] * 8192.0f);
        for (std::size_t t = 0; t < 300; ++t) {
            const int sf = static_cast<int>(t % 4);
            const Zep16s* x = s.data() + 20000 + t * c.F;
            std::copy(d.begin() + c.F, d.end(), d.begin());
            std::copy(x, x + c.F, d.end() - c.F);
            const std::vector<std::int32_t> u = fold_model(d, w, N);
            const std::vector<double> R = dft_real({u.begin(), u.end()});
            const std::vector<Zep32sc> X = bank.analyse(x, sf);
            for (int k = 0; k <= N / 2; ++k) {
                ASSERT_LE(std::fabs(X[k].re - std::floor(std::ldexp(R[2 * k], -sf) + 0.5)), 1.0) << t;
                ASSERT_LE(std::fabs(X[k].im - std::floor(std::ldexp(R[2 * k + 1], -sf) + 0.5)), 1.0) << t;
            }
        }
    }
}

// ---------------------------------------------------------------- round trip

struct RoundTrip {
    int delay;
    double gain, snr_db;
};

/// Finds the delay of y against x (largest normalised correlation), the
/// least-squares gain and the SNR of x against gain * y.
RoundTrip measure(const std::vector<double>& x, const std::vector<double>& y, int max_delay, int skip) {
    RoundTrip best{0, 0, -1e9};
    double best_c = -1;
    for (int D = 0; D <= max_delay; ++D) {
        double xy = 0, yy = 0, xx = 0;
        for (std::size_t n = skip; n + D < y.size(); ++n) xy += x[n] * y[n + D], yy += y[n + D] * y[n + D], xx += x[n] * x[n];
        const double c = xy / std::sqrt(xx * yy + 1e-30);
        if (c > best_c) best_c = c, best = {D, xy / yy, 0};
    }
    double sig = 0, err = 0;
    for (std::size_t n = skip; n + best.delay < y.size(); ++n) {
        const double e = x[n] - best.gain * y[n + best.delay];
        sig += x[n] * x[n], err += e * e;
    }
    best.snr_db = 10 * std::log10(sig / err);
    return best;
}

// The built-in prototypes do not reconstruct perfectly (sub-band aliasing
// at a hop of 3/4 and 11/16 of the FFT length); the test pins the delay
// (L - F samples), and requires the float and 16-bit banks to reach the SNR
// of the bank evaluated in double precision (figures in docs/ec.md).
TEST(Subband, RoundTripOnSpeech) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    std::vector<std::int16_t> s = load_speech("female.s16");
    s.resize(std::min<std::size_t>(s.size(), 48000));  // 6 s
    for (const Config c : {kA, kB}) {
        const std::vector<float> w = builtin_window(c.L);
        Bank32f<> an(c.order, c.F, c.L, nullptr), sy(c.order, c.F, c.L, nullptr);
        Bank16s<> an16(c.order, c.F, c.L, nullptr), sy16(c.order, c.F, c.L, nullptr);
        RefBank ra(c.order, c.F, c.L, {w.begin(), w.end()}), rs = ra;
        std::vector<double> x, yf, y16, yd;
        for (std::size_t t = 0; (t + 1) * c.F <= s.size(); ++t) {
            const Zep16s* p = s.data() + t * c.F;
            const std::vector<float> xf(p, p + c.F);
            const std::vector<float> of = sy.synthesise(an.analyse(xf.data()).data());
            const std::vector<Zep16s> o16 = sy16.synthesise(an16.analyse(p, 0).data(), 0);
            const std::vector<double> od = rs.synthesise(ra.analyse({p, p + c.F}));
            x.insert(x.end(), p, p + c.F);
            yf.insert(yf.end(), of.begin(), of.end());
            y16.insert(y16.end(), o16.begin(), o16.end());
            yd.insert(yd.end(), od.begin(), od.end());
        }
        const RoundTrip rf = measure(x, yf, 2 * c.L, c.L), r16 = measure(x, y16, 2 * c.L, c.L);
        const RoundTrip rd = measure(x, yd, 2 * c.L, c.L);
        std::printf("[ round trip %s ] delay %d; gain / SNR: double %.4f / %.2f dB, float %.4f / %.2f dB, "
                    "16-bit %.4f / %.2f dB\n",
                    c.order == 5 ? "A" : "B", rf.delay, rd.gain, rd.snr_db, rf.gain, rf.snr_db, r16.gain, r16.snr_db);
        EXPECT_EQ(rd.delay, c.L - c.F);
        EXPECT_EQ(rf.delay, c.L - c.F);
        EXPECT_EQ(r16.delay, c.L - c.F);
        EXPECT_NEAR(rf.snr_db, rd.snr_db, 0.01);
        EXPECT_NEAR(r16.snr_db, rd.snr_db, 0.1);
    }
}

// A caller's asymmetric window: the synthesis filter is the time reverse of
// the analysis filter, i.e. the synthesis reads the window backwards.
TEST(Subband, SynthesisReadsTheWindowReversed) {
    Rng rng(9);
    const Config c{5, 24, 96};
    std::vector<float> w(c.L);
    for (int n = 0; n < c.L; ++n) w[n] = static_cast<float>(n) / c.L;  // a ramp
    Bank32f<> sy(c.order, c.F, c.L, w.data());
    RefBank rev(c.order, c.F, c.L, {w.begin(), w.end()}), fwd = rev;
    double e_rev = 0, e_fwd = 0;
    for (int t = 0; t < 20; ++t) {
        std::vector<Zep32fc> V(17);
        std::vector<double> Vd(34);
        for (int k = 0; k < 17; ++k) Vd[2 * k] = V[k].re = rng.f32(100.0f), Vd[2 * k + 1] = V[k].im = rng.f32(100.0f);
        const std::vector<float> y = sy.synthesise(V.data());
        const std::vector<double> yr = rev.synthesise(Vd, true), yf = fwd.synthesise(Vd, false);
        for (int n = 0; n < c.F; ++n) e_rev = std::max(e_rev, std::fabs(y[n] - yr[n])), e_fwd = std::max(e_fwd, std::fabs(y[n] - yf[n]));
    }
    EXPECT_LT(e_rev, 1e-3);
    EXPECT_GT(e_fwd, 1.0);
    // the 16-bit overlap-add kernel reads it backwards too, exactly
    std::vector<Zep16s> w16(c.L), d(c.L, 0), d2(c.L, 0);
    for (int n = 0; n < c.L; ++n) w16[n] = static_cast<Zep16s>(n * 80);
    std::vector<std::int32_t> y32(32);
    for (auto& v : y32) v = static_cast<std::int32_t>(rng.uniform(-40000, 40000));
    u8::subband_ola_16s(d.data(), w16.data(), y32.data(), c.L, 32);
    for (int n = 0; n < c.L; ++n) {
        const std::int32_t yv = std::clamp(y32[n % 32], -32768, 32767);
        ASSERT_EQ(d[n], std::clamp((yv * w16[c.L - 1 - n] + 4096) >> 13, -32768, 32767)) << n;
    }
    u8::subband_ola_16s_scalar(d2.data(), w16.data(), y32.data(), c.L, 32);
    EXPECT_EQ(d, d2);
}

}  // namespace
}  // namespace zeps::test

// SPDX-License-Identifier: BSD-3-Clause
// The vector kernels of the G.729 fixed-codebook searches against their
// scalar twins (the reference's operators), on random, speech-scale and
// extreme inputs, both builds: the fourth pulse of the main-body search, the
// first pulse's scan and last pulse pair of the Annex A fast search and its
// candidate test, the sign folding of the
// correlation rows, the rows' magnitude bounds, and Cor_h's scaling of the
// response and its plain chains.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "tests/variant_check.h"

#define ZEPS_DECLARE_FCB_KERNELS(ns)                                                                          \
    namespace zeps::ns {                                                                                      \
    void g729_fourth_pulse(std::int16_t, std::int32_t, const std::int16_t*, const std::int16_t*,             \
                           const std::int16_t*, const std::int16_t*, const std::int16_t*, std::int16_t*,     \
                           std::int16_t*);                                                                   \
    void g729_fourth_pulse_scalar(std::int16_t, std::int32_t, const std::int16_t*, const std::int16_t*,      \
                                  const std::int16_t*, const std::int16_t*, const std::int16_t*, std::int16_t*, \
                                  std::int16_t*);                                                            \
    void g729_pair_pulse_a(std::int16_t, std::int32_t, const std::int16_t*, const std::int16_t*,             \
                           const std::int16_t*, std::int16_t*, std::int16_t*);                               \
    void g729_pair_pulse_a_scalar(std::int16_t, std::int32_t, const std::int16_t*, const std::int16_t*,      \
                                  const std::int16_t*, std::int16_t*, std::int16_t*);                        \
    void g729_cor_h_chains(const std::int16_t* h, std::int16_t* rr, bool plain);                             \
    void g729_cor_h_lanes(const std::int16_t* h, std::int16_t* rr);                                          \
    void g729_cor_h_scale(const std::int16_t* H, bool halve, std::int16_t k, std::int16_t* h);              \
    int g729_first_max8(const std::int16_t* v, int skip);                                                   \
    int g729_first_max8_scalar(const std::int16_t* v, int skip);                                            \
    void g729_cor_h_scale_scalar(const std::int16_t* H, bool halve, std::int16_t k, std::int16_t* h);       \
    void g729_first_pair_a(std::int16_t, std::int16_t, const std::int16_t*, const std::int16_t*,              \
                           const std::int16_t*, std::int16_t*, std::int16_t*, std::int16_t*);                \
    void g729_first_pair_a_scalar(std::int16_t, std::int16_t, const std::int16_t*, const std::int16_t*,       \
                                  const std::int16_t*, std::int16_t*, std::int16_t*, std::int16_t*);         \
    void g729_add_pulse_response(std::int16_t* y, const std::int16_t* hz, int at, bool positive);            \
    void g729_add_pulse_response_scalar(std::int16_t* y, const std::int16_t* h, int at, bool positive);      \
    void g729_gain_dist8(const std::int16_t*, const std::int16_t*, std::int16_t, std::int16_t, std::int16_t,  \
                         const std::int16_t*, const std::int16_t*, bool, std::int32_t*);                     \
    void g729_gain_dist8_scalar(const std::int16_t*, const std::int16_t*, std::int16_t, std::int16_t,         \
                                std::int16_t, const std::int16_t*, const std::int16_t*, bool, std::int32_t*); \
    unsigned g729_better_mask8(const std::int16_t*, const std::int16_t*, std::int16_t, std::int16_t);       \
    unsigned g729_better_mask8_scalar(const std::int16_t*, const std::int16_t*, std::int16_t, std::int16_t); \
    void g729_target_signs(std::int16_t* d, std::int16_t* sign, std::int16_t* inv);                           \
    void g729_target_signs_scalar(std::int16_t* d, std::int16_t* sign, std::int16_t* inv);                    \
    bool g729_any_better8(const std::int16_t*, const std::int16_t*, std::int16_t, std::int16_t);            \
    bool g729_any_better8_scalar(const std::int16_t*, const std::int16_t*, std::int16_t, std::int16_t);     \
    void g729_mult8(std::int16_t* row, const std::int16_t* g);                                               \
    void g729_mult8_scalar(std::int16_t* row, const std::int16_t* g);                                        \
    void g729_pair_rows_a(std::int16_t, std::int32_t, const std::int16_t*, const std::int16_t*,              \
                          const std::int16_t*, const std::int16_t*, std::int16_t*, std::int32_t*);           \
    void g729_pair_rows_a_scalar(std::int16_t, std::int32_t, const std::int16_t*, const std::int16_t*,       \
                                 const std::int16_t*, const std::int16_t*, std::int16_t*, std::int32_t*);    \
    unsigned g729_pair_lanes_fit8(const std::int32_t*, const std::int32_t*, std::int32_t);                  \
    unsigned g729_pair_lanes_fit8_scalar(const std::int32_t*, const std::int32_t*, std::int32_t);           \
    void g729_fold8(std::int16_t* row, const std::int16_t* neg);                                              \
    void g729_fold8_scalar(std::int16_t* row, const std::int16_t* neg);                                       \
    std::int32_t g729_max_abs8(const std::int16_t* v);                                                        \
    std::int32_t g729_max_abs8_scalar(const std::int16_t* v);                                                 \
    }
ZEPS_DECLARE_FCB_KERNELS(u8)
#if defined(__x86_64__)  // elsewhere n8 names the one generic build, u8
ZEPS_DECLARE_FCB_KERNELS(n8)
#endif

namespace {
using V16 = std::vector<std::int16_t>;
using zeps::test::Rng;

/// Eight values: extremes, small, or full-range at random.
V16 eight(Rng& rng, int mode) {
    V16 v(8);
    for (auto& x : v) {
        switch (mode) {
            case 0: x = static_cast<std::int16_t>(rng.uniform(-3000, 3000)); break;
            case 1: x = static_cast<std::int16_t>(rng.uniform(0, 1) ? 32767 : -32768); break;
            default: x = rng.s16(); break;
        }
    }
    return v;
}

std::int32_t alp_value(Rng& rng) {
    switch (rng.uniform(0, 4)) {
        case 0: return static_cast<std::int32_t>(rng.uniform(-300000, 300000));
        case 1: return rng.uniform(0, 1) ? INT32_MAX : INT32_MIN;
        case 2: return static_cast<std::int32_t>(rng.uniform(0x7ff00000, 0x7fffffff));
        case 3: return static_cast<std::int32_t>(rng.uniform(-0x7fffffff - 1, -0x7ff00000));
        default: return rng.s32();
    }
}

template <class Fast, class Slow>
void fourth_agrees(Fast fast, Slow slow) {
    Rng rng(29);
    for (int rep = 0; rep < 20000; ++rep) {
        const int mode = rep % 3;
        const V16 dn = eight(rng, mode), rd = eight(rng, mode), r0 = eight(rng, mode), r1 = eight(rng, mode),
                  r2 = eight(rng, mode);
        const std::int16_t ps = mode == 1 ? static_cast<std::int16_t>(rng.uniform(0, 1) ? 32767 : -32768) : rng.s16();
        const std::int32_t alp = alp_value(rng);
        V16 s1(8), a1(8), s2(8), a2(8);
        fast(ps, alp, dn.data(), rd.data(), r0.data(), r1.data(), r2.data(), s1.data(), a1.data());
        slow(ps, alp, dn.data(), rd.data(), r0.data(), r1.data(), r2.data(), s2.data(), a2.data());
        ASSERT_EQ(s1, s2) << "rep " << rep;
        ASSERT_EQ(a1, a2) << "rep " << rep;
    }
}

template <class Fast, class Slow>
void pair_agrees(Fast fast, Slow slow) {
    Rng rng(31);
    for (int rep = 0; rep < 20000; ++rep) {
        const int mode = rep % 3;
        const V16 dn = eight(rng, mode), r = eight(rng, mode), t = eight(rng, mode);
        const std::int16_t ps = rng.s16();
        const std::int32_t alp = alp_value(rng);
        V16 s1(8), a1(8), s2(8), a2(8);
        fast(ps, alp, dn.data(), r.data(), t.data(), s1.data(), a1.data());
        slow(ps, alp, dn.data(), r.data(), t.data(), s2.data(), a2.data());
        ASSERT_EQ(s1, s2) << "rep " << rep;
        ASSERT_EQ(a1, a2) << "rep " << rep;
    }
    // At the lanes' bound (|alp1| + 2^13 max|r| + 2^15 max|t| = MAX_32 - 2^15,
    // where round_fx's L_add reaches MAX_32) and one past it (scalar).
    for (const std::int16_t x : {static_cast<std::int16_t>(32767), static_cast<std::int16_t>(-32768)})
        for (const std::int32_t over : {0, 1}) {
            const std::int64_t rest = std::int64_t{0x7fffffff} - 0x8000 - (8192 + 32768) * (x < 0 ? -std::int64_t{x} : x);
            const std::int32_t alp = static_cast<std::int32_t>((x < 0 ? -rest : rest) + (x < 0 ? -over : over));
            const V16 e(8, x);
            V16 s1(8), a1(8), s2(8), a2(8);
            fast(x, alp, e.data(), e.data(), e.data(), s1.data(), a1.data());
            slow(x, alp, e.data(), e.data(), e.data(), s2.data(), a2.data());
            ASSERT_EQ(a1, a2) << "x " << x << " over " << over;
            ASSERT_EQ(s1, s2) << "x " << x << " over " << over;
        }
}

template <class Chains, class Lanes>
void chains_agree(Chains chains, Lanes lanes) {
    Rng rng(37);
    const auto check = [&](const V16& h, int rep) {
        V16 a(616), b(616), c(616, 0x5a5a);
        chains(h.data(), a.data(), true);
        chains(h.data(), b.data(), false);
        lanes(h.data(), c.data());
        ASSERT_EQ(a, b) << "rep " << rep;
        ASSERT_EQ(c, b) << "rep " << rep;
    };
    // At the plain bound: a lone +-32767 (2 e = 2147352578) at either end or
    // inside, a constant 5181 (2 e = 2147420880, the largest constant under
    // MAX_32: every lag's sum at its extreme), alternating signs, last tap flipped.
    const std::int16_t lone[] = {32767, -32767};
    for (int s = 0; s < 2; ++s)
        for (int at : {0, 1, 20, 39}) {
            V16 h(40, 0);
            h[static_cast<std::size_t>(at)] = lone[s];
            check(h, -1);
        }
    for (int sign_mode = 0; sign_mode < 3; ++sign_mode) {
        V16 h(40);
        for (int i = 0; i < 40; ++i)
            h[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(sign_mode == 1 && i % 2 ? -5181 : 5181);
        if (sign_mode == 2) h[39] = -5181;
        check(h, -2);
    }
    for (int rep = 0; rep < 2000; ++rep) {
        // Impulse responses scaled as Cor_h scales them: 2 sum h^2 just inside 31 bits.
        V16 h(40);
        const int amp = rep % 2 ? 32767 : 8000;
        for (auto& x : h) x = static_cast<std::int16_t>(rng.uniform(-amp, amp));
        std::int64_t e = 0;
        for (auto x : h) e += std::int64_t{x} * x;
        while (2 * e > INT32_MAX) {
            e = 0;
            for (auto& x : h) {
                x = static_cast<std::int16_t>(x / 2);
                e += std::int64_t{x} * x;
            }
        }
        check(h, rep);
    }
}

TEST(G729FcbKernels, FourthPulseVectorEqualsScalar) {
    fourth_agrees(zeps::u8::g729_fourth_pulse, zeps::u8::g729_fourth_pulse_scalar);
    fourth_agrees(zeps::n8::g729_fourth_pulse, zeps::n8::g729_fourth_pulse_scalar);
}

/// The rows' sums of a last-pair loop for alp0 = L_mult(alp, 1/4): random
/// rows and every combination of extremes (each chain at its largest).
template <class Fast, class Slow>
void pair_rows_agree(Fast fast, Slow slow) {
    Rng rng(53);
    const auto check = [&](std::int16_t ps, std::int16_t alp, const V16& dn, const V16& a, const V16& b, const V16& c) {
        const std::int32_t alp0 = 2 * 8192 * std::int32_t{alp};
        V16 p1(8), p2(8);
        std::vector<std::int32_t> a1(8), a2(8);
        fast(ps, alp0, dn.data(), a.data(), b.data(), c.data(), p1.data(), a1.data());
        slow(ps, alp0, dn.data(), a.data(), b.data(), c.data(), p2.data(), a2.data());
        ASSERT_EQ(p1, p2) << "alp " << alp;
        ASSERT_EQ(a1, a2) << "alp " << alp;
    };
    for (int rep = 0; rep < 20000; ++rep) {
        const int mode = rep % 3;
        check(rng.s16(), rng.s16(), eight(rng, mode), eight(rng, mode), eight(rng, mode), eight(rng, mode));
    }
    for (const std::int16_t e0 : {-32768, 32767})
        for (const std::int16_t e1 : {-32768, 32767})
            for (const std::int16_t e2 : {-32768, 32767}) {
                const V16 a(8, e1), b(8, e1), c(8, e2), dn(8, e2);
                check(e0, e0, dn, a, b, c);
                check(e0, e1, dn, a, V16(8, e2), c);
            }
}

/// The lanes' condition of eight rows at its bound: |alp1| + 2^13 rmax +
/// 2^15 tmax equal to MAX_32 - 2^15 and one past it, both signs of alp1, the
/// largest row and target bounds, and alp1 at MIN_32 / MAX_32.
template <class Fast, class Slow>
void fit_agrees(Fast fast, Slow slow) {
    const std::int64_t limit = 0x7fffffff - 0x8000;
    for (const std::int32_t tmax : {0, 1, 32767, 32768})
        for (const std::int32_t rmax : {0, 1, 32767, 32768}) {
            const std::int64_t room = limit - 8192 * std::int64_t{rmax} - 32768 * std::int64_t{tmax};
            const std::int32_t alp1[8] = {static_cast<std::int32_t>(room), static_cast<std::int32_t>(room + 1),
                                          static_cast<std::int32_t>(-room), static_cast<std::int32_t>(-room - 1),
                                          static_cast<std::int32_t>(0x7fffffff), static_cast<std::int32_t>(-0x7fffffff - 1),
                                          0, static_cast<std::int32_t>(room - 1)};
            const std::int32_t rm[8] = {rmax, rmax, rmax, rmax, rmax, rmax, rmax, rmax};
            const unsigned want = slow(alp1, rm, tmax);
            ASSERT_EQ(want & 0x3Fu, 0x05u) << rmax << " " << tmax;  // the bound fits, one past it does not
            ASSERT_EQ(fast(alp1, rm, tmax), want) << rmax << " " << tmax;
        }
    Rng rng(59);
    for (int rep = 0; rep < 20000; ++rep) {
        std::int32_t alp1[8], rm[8];
        for (int k = 0; k < 8; ++k) {
            alp1[k] = static_cast<std::int32_t>((std::uint32_t{static_cast<std::uint16_t>(rng.s16())} << 16) |
                                                static_cast<std::uint16_t>(rng.s16()));
            rm[k] = static_cast<std::int32_t>(rng.uniform(0, 32768));
        }
        const auto tmax = static_cast<std::int32_t>(rng.uniform(0, 32768));
        ASSERT_EQ(fast(alp1, rm, tmax), slow(alp1, rm, tmax)) << "rep " << rep;
    }
}

TEST(G729FcbKernels, AnnexAPairVectorEqualsScalar) {
    fit_agrees(zeps::u8::g729_pair_lanes_fit8, zeps::u8::g729_pair_lanes_fit8_scalar);
    fit_agrees(zeps::n8::g729_pair_lanes_fit8, zeps::n8::g729_pair_lanes_fit8_scalar);
    pair_agrees(zeps::u8::g729_pair_pulse_a, zeps::u8::g729_pair_pulse_a_scalar);
    pair_agrees(zeps::n8::g729_pair_pulse_a, zeps::n8::g729_pair_pulse_a_scalar);
    pair_rows_agree(zeps::u8::g729_pair_rows_a, zeps::u8::g729_pair_rows_a_scalar);
    pair_rows_agree(zeps::n8::g729_pair_rows_a, zeps::n8::g729_pair_rows_a_scalar);
}

/// The first pair over the whole input range (every value exact in lanes).
template <class Fast, class Slow>
void first_pair_agrees(Fast fast, Slow slow) {
    Rng rng(47);
    for (int rep = 0; rep < 20000; ++rep) {
        const int mode = rep % 3;
        const V16 dn = eight(rng, mode), t = eight(rng, mode), d = eight(rng, mode);
        const std::int16_t ps = mode == 1 ? static_cast<std::int16_t>(rng.uniform(0, 1) ? 32767 : -32768) : rng.s16();
        const std::int16_t r0 = mode == 1 ? static_cast<std::int16_t>(rng.uniform(0, 1) ? 32767 : -32768) : rng.s16();
        V16 p1(8), s1(8), a1(8), p2(8), s2(8), a2(8);
        fast(ps, r0, dn.data(), t.data(), d.data(), p1.data(), s1.data(), a1.data());
        slow(ps, r0, dn.data(), t.data(), d.data(), p2.data(), s2.data(), a2.data());
        ASSERT_EQ(p1, p2) << "rep " << rep;
        ASSERT_EQ(s1, s2) << "rep " << rep;
        ASSERT_EQ(a1, a2) << "rep " << rep;
    }
    // All extremes together: alp2 at -2^31 and 2^31 - 2^16, round_fx's edge.
    for (std::int16_t x : {static_cast<std::int16_t>(-32768), static_cast<std::int16_t>(32767)}) {
        const V16 e(8, x);
        V16 p1(8), s1(8), a1(8), p2(8), s2(8), a2(8);
        fast(x, x, e.data(), e.data(), e.data(), p1.data(), s1.data(), a1.data());
        slow(x, x, e.data(), e.data(), e.data(), p2.data(), s2.data(), a2.data());
        ASSERT_EQ(a1, a2);
        ASSERT_EQ(s1, s2);
    }
}

TEST(G729FcbKernels, AnnexAFirstPairVectorEqualsScalar) {
    first_pair_agrees(zeps::u8::g729_first_pair_a, zeps::u8::g729_first_pair_a_scalar);
    first_pair_agrees(zeps::n8::g729_first_pair_a, zeps::n8::g729_first_pair_a_scalar);
}

/// The target's signs, -32768, -1, 0 and 32767 included.
template <class Fast, class Slow>
void signs_agree(Fast fast, Slow slow) {
    Rng rng(61);
    for (int rep = 0; rep < 3000; ++rep) {
        V16 d(40);
        for (auto& x : d) {
            const int pick = static_cast<int>(rng.uniform(0, 5));
            x = pick == 0 ? static_cast<std::int16_t>(-32768) : pick == 1 ? static_cast<std::int16_t>(-1)
                : pick == 2 ? static_cast<std::int16_t>(0) : pick == 3 ? static_cast<std::int16_t>(32767) : rng.s16();
        }
        V16 d2 = d, s1(40), i1(40), s2(40), i2(40);
        fast(d.data(), s1.data(), i1.data());
        slow(d2.data(), s2.data(), i2.data());
        ASSERT_EQ(d, d2) << "rep " << rep;
        ASSERT_EQ(s1, s2) << "rep " << rep;
        ASSERT_EQ(i1, i2) << "rep " << rep;
    }
}

TEST(G729FcbKernels, AnnexATargetSignsVectorEqualsScalar) {
    signs_agree(zeps::u8::g729_target_signs, zeps::u8::g729_target_signs_scalar);
    signs_agree(zeps::n8::g729_target_signs, zeps::n8::g729_target_signs_scalar);
}

/// Four pulses' responses summed with saturation (extreme h included).
template <class Fast, class Slow>
void pulse_response_agrees(Fast fast, Slow slow) {
    Rng rng(53);
    for (int rep = 0; rep < 5000; ++rep) {
        V16 hz(80, 0);
        for (int i = 40; i < 80; ++i) hz[static_cast<std::size_t>(i)] = eight(rng, rep % 3)[0];
        V16 a(40, 0), b(40, 0);
        for (int k = 0; k < 4; ++k) {
            const int at = static_cast<int>(rng.uniform(0, 39));
            const bool positive = rng.uniform(0, 1) != 0;
            fast(a.data(), hz.data(), at, positive);
            slow(b.data(), hz.data() + 40, at, positive);
            ASSERT_EQ(a, b) << "rep " << rep;
        }
    }
}

TEST(G729FcbKernels, FilteredCodewordVectorEqualsScalar) {
    pulse_response_agrees(zeps::u8::g729_add_pulse_response, zeps::u8::g729_add_pulse_response_scalar);
    pulse_response_agrees(zeps::n8::g729_add_pulse_response, zeps::n8::g729_add_pulse_response_scalar);
}

/// The gain search's distances: coefficients and gains over their whole
/// range (L_add chains that saturate either way, taming on and off, hi at
/// -32768 and lo outside L_Extract's range taking the scalar way).
template <class Fast, class Slow>
void gain_dist_agrees(Fast fast, Slow slow) {
    Rng rng(59);
    int saturated = 0;
    for (int rep = 0; rep < 20000; ++rep) {
        const int mode = rep % 3;
        V16 chi = eight(rng, mode), clo = eight(rng, 0);
        for (auto& x : clo) x = static_cast<std::int16_t>(rep % 97 ? (x < 0 ? -x : x) * 10 : x);
        if (rep % 89 == 0) chi[static_cast<std::size_t>(rep % 5)] = -32768;
        const V16 p2 = eight(rng, mode), c2 = eight(rng, mode);
        const std::int16_t g0 = rng.s16(), p1 = rng.s16(), c1 = rng.s16();
        const bool tame = rep % 2 != 0;
        std::vector<std::int32_t> a(8), b(8);
        fast(chi.data(), clo.data(), g0, p1, c1, p2.data(), c2.data(), tame, a.data());
        slow(chi.data(), clo.data(), g0, p1, c1, p2.data(), c2.data(), tame, b.data());
        ASSERT_EQ(a, b) << "rep " << rep;
        for (auto x : b) saturated += x == INT32_MIN || (x == INT32_MAX && !tame);
    }
    EXPECT_GT(saturated, 100);
}

TEST(G729FcbKernels, GainSearchDistancesVectorEqualsScalar) {
    gain_dist_agrees(zeps::u8::g729_gain_dist8, zeps::u8::g729_gain_dist8_scalar);
    gain_dist_agrees(zeps::n8::g729_gain_dist8, zeps::n8::g729_gain_dist8_scalar);
}

/// The candidate test over eight squares against a best so far from -1 up,
/// near ties included (equal ratios must not pass).
template <class Fast, class Slow>
void better_agrees(Fast fast, Slow slow) {
    Rng rng(43);
    int passed = 0;
    for (int rep = 0; rep < 40000; ++rep) {
        const int mode = rep % 4;
        V16 sq8 = eight(rng, mode == 3 ? 2 : mode), alp8 = eight(rng, mode == 3 ? 2 : mode);
        for (auto& x : sq8) x = static_cast<std::int16_t>(x < 0 ? (x == -32768 ? 32767 : -x) : x);
        std::int16_t sq = static_cast<std::int16_t>(rng.uniform(-1, 32767));
        std::int16_t alp = mode == 1 ? static_cast<std::int16_t>(rng.uniform(0, 1) ? 32767 : -32768) : rng.s16();
        if (mode == 3) {  // a tie: (sq, alp) proportional to one candidate
            const int k = static_cast<int>(rng.uniform(0, 7));
            sq = sq8[k];
            alp = alp8[k];
        }
        const bool f = fast(sq8.data(), alp8.data(), sq, alp);
        ASSERT_EQ(f, slow(sq8.data(), alp8.data(), sq, alp)) << "rep " << rep;
        passed += f;
    }
    EXPECT_GT(passed, 1000);
    EXPECT_LT(passed, 39000);
}

TEST(G729FcbKernels, AnnexACandidateTestVectorEqualsScalar) {
    better_agrees(zeps::u8::g729_any_better8, zeps::u8::g729_any_better8_scalar);
    better_agrees(zeps::n8::g729_any_better8, zeps::n8::g729_any_better8_scalar);
    // The candidate masks, lane by lane.
    using Mask = unsigned (*)(const std::int16_t*, const std::int16_t*, std::int16_t, std::int16_t);
    const std::pair<Mask, Mask> masks[] = {{zeps::u8::g729_better_mask8, zeps::u8::g729_better_mask8_scalar},
                                           {zeps::n8::g729_better_mask8, zeps::n8::g729_better_mask8_scalar}};
    for (const auto& [fast, slow] : masks) {
        const auto check = [f = fast, s = slow](const std::int16_t* s8, const std::int16_t* a8, std::int16_t sq,
                                               std::int16_t a) {
            const unsigned m = f(s8, a8, sq, a);
            EXPECT_EQ(m, s(s8, a8, sq, a));
            return m != 0;
        };
        better_agrees(check, [s = slow](const std::int16_t* s8, const std::int16_t* a8, std::int16_t sq,
                                       std::int16_t a) { return s(s8, a8, sq, a) != 0; });
    }
}

template <class Fast, class Slow>
void mult8_agrees(Fast fast, Slow slow) {
    Rng rng(41);
    for (int rep = 0; rep < 20000; ++rep) {
        const V16 g = eight(rng, rep % 3), row = eight(rng, (rep / 3) % 3);
        V16 a = row, b = row;
        fast(a.data(), g.data());
        slow(b.data(), g.data());
        ASSERT_EQ(a, b) << "rep " << rep;
    }
}

/// The basic operator mult: (x y) >> 15, saturated.
int model_mult(int x, int y) { return std::clamp((x * y) >> 15, -32768, 32767); }

/// The Annex A folding by sign masks against mult() by MAX_16 / MIN_16 (the
/// reference's sign values) on every row value from -32768 to 32767.
template <class Fast, class Slow>
void fold8_agrees(Fast fast, Slow slow) {
    const V16 neg = {0, -1, 0, -1, -1, 0, 0, -1};
    for (int x0 = -32768; x0 <= 32767; x0 += 8) {
        V16 row(8), a, b;
        for (int k = 0; k < 8; ++k) row[k] = static_cast<std::int16_t>(x0 + k);
        for (int flip = 0; flip < 2; ++flip) {
            V16 n = neg;
            if (flip != 0)
                for (auto& v : n) v = static_cast<std::int16_t>(~v);
            a = row;
            b = row;
            fast(a.data(), n.data());
            slow(b.data(), n.data());
            ASSERT_EQ(a, b) << "x0 " << x0;
            for (int k = 0; k < 8; ++k)
                ASSERT_EQ(b[k], model_mult(row[k], n[k] != 0 ? -32768 : 32767)) << "x " << row[k];
        }
    }
}

TEST(G729FcbKernels, SignFoldingVectorEqualsScalar) {
    mult8_agrees(zeps::u8::g729_mult8, zeps::u8::g729_mult8_scalar);
    mult8_agrees(zeps::n8::g729_mult8, zeps::n8::g729_mult8_scalar);
    fold8_agrees(zeps::u8::g729_fold8, zeps::u8::g729_fold8_scalar);
    fold8_agrees(zeps::n8::g729_fold8, zeps::n8::g729_fold8_scalar);
}

template <class Fast, class Slow>
void max_abs8_agrees(Fast fast, Slow slow) {
    // Each extreme in each lane over small values (the bias must not move
    // 32768 or 0 past any other magnitude), then random rows.
    for (const std::int16_t x : {-32768, -32767, 32767, -1, 1, 0})
        for (int k = 0; k < 8; ++k) {
            V16 v = {3, -2, 0, 1, -3, 2, -1, 0};
            v[k] = x;
            const std::int32_t want = std::max<std::int32_t>(3, x < 0 ? -std::int32_t{x} : x);
            ASSERT_EQ(slow(v.data()), want) << x << " at " << k;
            ASSERT_EQ(fast(v.data()), want) << x << " at " << k;
        }
    Rng rng(43);
    for (int rep = 0; rep < 20000; ++rep) {
        const V16 v = eight(rng, rep % 3);
        ASSERT_EQ(fast(v.data()), slow(v.data())) << "rep " << rep;
    }
}

TEST(G729FcbKernels, RowMagnitudeBoundVectorEqualsScalar) {
    max_abs8_agrees(zeps::u8::g729_max_abs8, zeps::u8::g729_max_abs8_scalar);
    max_abs8_agrees(zeps::n8::g729_max_abs8, zeps::n8::g729_max_abs8_scalar);
}

/// Cor_h's scaling of the response: every shift 0..15 and the halving on
/// rows holding both 16-bit extremes and values just either side of each
/// shift's saturation edge 2^(15 - k).
template <class Fast, class Slow>
void scale_agrees(Fast fast, Slow slow) {
    Rng rng(61);
    for (int k = -1; k < 16; ++k)
        for (int rep = 0; rep < 50; ++rep) {
            V16 H(40), a(40, 0x5a5a), b(40, 0x5a5a);
            const int edge = k < 0 ? 1 : 1 << (15 - k);
            for (int i = 0; i < 40; ++i) {
                const int pick = static_cast<int>(rng.uniform(0, 3));
                const int v = pick == 0 ? edge - 1 + static_cast<int>(rng.uniform(0, 1)) : pick == 1 ? -edge - 1 + static_cast<int>(rng.uniform(0, 1)) : rng.s16();
                H[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(std::clamp(v, -32768, 32767));
            }
            H[static_cast<std::size_t>(rep % 40)] = -32768;
            H[static_cast<std::size_t>((rep + 7) % 40)] = 32767;
            const bool halve = k < 0;
            const auto sh = static_cast<std::int16_t>(halve ? 0 : k);
            fast(H.data(), halve, sh, a.data());
            slow(H.data(), halve, sh, b.data());
            ASSERT_EQ(a, b) << "k " << k << " rep " << rep;
        }
}

/// The first pulse's scan: ties in every arrangement (few distinct values),
/// 0 and 32767, with each lane skipped or none.
template <class Fast, class Slow>
void first_max_agrees(Fast fast, Slow slow) {
    Rng rng(67);
    for (int rep = 0; rep < 4000; ++rep) {
        V16 v(8);
        for (auto& x : v)
            x = static_cast<std::int16_t>(rep % 2 ? rng.uniform(0, 2) * 16383 + (rng.uniform(0, 1) ? 1 : 0) : rng.uniform(0, 32767));
        for (int skip = -1; skip < 8; ++skip) {
            const int want = slow(v.data(), skip);
            ASSERT_NE(want, skip);
            ASSERT_EQ(fast(v.data(), skip), want) << "rep " << rep << " skip " << skip;
        }
    }
}

TEST(G729FcbKernels, FirstPulseScanVectorEqualsScalar) {
    first_max_agrees(zeps::u8::g729_first_max8, zeps::u8::g729_first_max8_scalar);
    first_max_agrees(zeps::n8::g729_first_max8, zeps::n8::g729_first_max8_scalar);
}

TEST(G729FcbKernels, CorHScalingVectorEqualsScalar) {
    scale_agrees(zeps::u8::g729_cor_h_scale, zeps::u8::g729_cor_h_scale_scalar);
    scale_agrees(zeps::n8::g729_cor_h_scale, zeps::n8::g729_cor_h_scale_scalar);
}

TEST(G729FcbKernels, CorHPlainChainsEqualSaturating) {
    chains_agree(zeps::u8::g729_cor_h_chains, zeps::u8::g729_cor_h_lanes);
    chains_agree(zeps::n8::g729_cor_h_chains, zeps::n8::g729_cor_h_lanes);
}

}  // namespace

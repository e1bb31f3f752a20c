// SPDX-License-Identifier: BSD-3-Clause
// Fast forms of private G.729 kernels against their reference forms, both
// builds. The lane form of the synthesis filter (Syn_filt, blocks of ten
// samples under the plain-sum bound) against its scalar form: outputs and
// the overflow report on filters and signals at the bound (2 sum|a|
// max|value| about 2^31, crossed inside a block), saturating ones, every
// length 1..80 and in-place use, memories holding -32768; sums on the
// rounding's saturation boundaries at every position of a block. The gain
// predictor's innovation energy as a clamped exact sum against the
// saturating L_mac chain, at and around MAX_32 and with -32768 samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tests/variant_check.h"

#define ZEPS_DECLARE_SYN_KERNEL(ns)                                                                        \
    namespace zeps::ns {                                                                                   \
    bool g729_syn_filt_kernel(bool, const std::int16_t*, const std::int16_t*, std::int16_t*, int,          \
                              const std::int16_t*);                                                        \
    std::int32_t g729_code_energy_kernel(bool, const std::int16_t*);                                      \
    }
ZEPS_DECLARE_SYN_KERNEL(u8)
#if defined(__x86_64__)  // elsewhere n8 names the one generic build, u8
ZEPS_DECLARE_SYN_KERNEL(n8)
#endif

namespace {
using V16 = std::vector<std::int16_t>;
using zeps::test::Rng;

/// A Q12 filter: a stable one from reflection coefficients (mode 0), one
/// with small taps that keeps every Word16 in the bound (mode 1), or
/// arbitrary taps with extremes (mode 2).
V16 filter(Rng& rng, int mode) {
    V16 a(11, 0);
    a[0] = 4096;
    if (mode == 2) {
        for (int j = 1; j <= 10; ++j) a[j] = rng.s16();
        if (rng.next() % 4 == 0) a[0] = rng.s16();
        return a;
    }
    double p[11] = {1.0};
    const double mag = mode == 1 ? 0.15 : 0.97;
    for (int i = 0; i < 10; ++i) {
        const double k = mag * (static_cast<double>(rng.uniform(-1000, 1000)) / 1000.0);
        double t[11];
        std::copy(p, p + 11, t);
        for (int j = 1; j <= i; ++j) p[j] = t[j] + k * t[i + 1 - j];
        p[i + 1] = k;
    }
    for (int j = 1; j <= 10; ++j) a[j] = static_cast<std::int16_t>(std::clamp(p[j] * 4096.0, -32768.0, 32767.0));
    return a;
}

template <class Kernel>
void check_syn(Kernel k) {
    Rng rng(4161);
    for (int round = 0; round < 6000; ++round) {
        const V16 a = filter(rng, round % 3);
        std::int64_t sum_a = 0;
        for (auto v : a) sum_a += std::abs(int{v});
        // Amplitude: at the plain-sum limit (outputs cross it inside a block),
        // well inside it, or full scale.
        const std::int64_t limit = sum_a == 0 ? 32767 : std::min<std::int64_t>(32767, 0x7fffffff / (2 * sum_a));
        const int kind = static_cast<int>(rng.next() % 4);
        const std::int64_t amp = kind == 0 ? limit : kind == 1 ? std::max<std::int64_t>(1, limit / 8)
                                  : kind == 2 ? std::min<std::int64_t>(32767, limit + 1 + rng.uniform(0, 3))
                                              : 32767;
        const int lg = 1 + round % 80;
        V16 x(lg), mem(10);
        for (auto& v : x) v = static_cast<std::int16_t>(rng.next() % 8 == 0 ? (rng.next() % 2 ? amp : -amp)
                                                                            : rng.uniform(-amp, amp));
        for (auto& v : mem) v = static_cast<std::int16_t>(rng.uniform(-amp, amp));
        if (kind == 3 && rng.next() % 4 == 0) mem[rng.uniform(0, 9)] = -32768;  // |mem| 32768
        V16 yl(lg), ys(lg), inplace = x;
        const bool ol = k(true, a.data(), x.data(), yl.data(), lg, mem.data());
        const bool os = k(false, a.data(), x.data(), ys.data(), lg, mem.data());
        const bool oi = k(true, a.data(), inplace.data(), inplace.data(), lg, mem.data());
        ASSERT_EQ(yl, ys) << "round " << round;
        ASSERT_EQ(ol, os) << "round " << round;
        ASSERT_EQ(inplace, ys) << "in place, round " << round;
        ASSERT_EQ(oi, os) << "in place, round " << round;
    }
}

/// Sums acc = 4096 q + r on the saturation boundaries of round(L_shl(2 acc,
/// 3)) (0x07fff7ff, 0x07fff800, 2^27; -2^27, -2^27 - 1) at every position of
/// a block, r entering by tap 10 on the memory or by tap 1 on the previous
/// output (the odd sample's cross term): the overflow report must flip there.
template <class Kernel>
void check_syn_boundaries(Kernel k) {
    const struct { std::int16_t q, r; bool ovf; } sums[] = {
        {32767, 2047, false}, {32767, 2048, true}, {32767, 4096, true}, {-32768, 0, false}, {-32768, -1, true}};
    for (int tap : {1, 10})
        for (int lg : {10, 14, 30})
            for (int pos = 0; pos < 10; ++pos)
                for (const auto& s : sums) {
                    V16 a(11, 0), x(lg, 0), mem(10, 0);
                    a[0] = 4096;
                    a[tap] = -1;
                    x[pos] = s.q;
                    (tap == 10 ? mem[pos] : pos == 0 ? mem[9] : x[pos - 1]) = s.r;
                    V16 yl(lg), ys(lg);
                    const bool ol = k(true, a.data(), x.data(), yl.data(), lg, mem.data());
                    ASSERT_EQ(k(false, a.data(), x.data(), ys.data(), lg, mem.data()), s.ovf);
                    ASSERT_EQ(ol, s.ovf) << "tap " << tap << " lg " << lg << " at " << pos << " r " << s.r;
                    ASSERT_EQ(yl, ys) << "tap " << tap << " lg " << lg << " at " << pos << " r " << s.r;
                }
}

/// Codes whose doubled energy lands exactly on, just below and just above
/// MAX_32 (one sample tuned), full-scale and -32768 samples, sparse pulses.
template <class Energy>
void check_energy(Energy e) {
    Rng rng(2);
    for (int round = 0; round < 4000; ++round) {
        V16 code(40, 0);
        const int kind = round % 4;
        if (kind == 0) {
            for (auto& v : code) v = rng.s16();
        } else if (kind == 1) {  // four signed pulses and a sharpened echo, Q13
            for (int p = 0; p < 4; ++p) code[rng.uniform(0, 39)] = static_cast<std::int16_t>(rng.uniform(0, 1) ? 8191 : -8192);
            for (int i = 20 + static_cast<int>(rng.uniform(0, 19)); i < 40; ++i) code[i] = rng.s16();
        } else {  // sum of squares (MAX_32 - 1) / 2 + d, d in -1..1: doubled MAX_32 - 3, - 1 or + 1
            const std::int64_t target = 0x3fffffff + rng.uniform(-1, 1);
            std::int64_t e2 = 0;
            for (int i = 0; i < 30; ++i) {
                const auto v = static_cast<std::int16_t>(rng.uniform(-12000, 12000));
                if (e2 + std::int64_t{v} * v > target - (1 << 20)) break;
                code[i] = v;
                e2 += std::int64_t{v} * v;
            }
            auto isqrt = [](std::int64_t n) {
                std::int64_t r = static_cast<std::int64_t>(std::sqrt(static_cast<double>(n)));
                while (r * r > n) --r;
                while ((r + 1) * (r + 1) <= n) ++r;
                return std::min<std::int64_t>(r, 32767);
            };
            std::int64_t rem = target - e2;
            for (int i = 30; i < 40 && rem > 0; ++i) {  // greedy squares fill the remainder
                const std::int64_t q = isqrt(rem);
                code[i] = static_cast<std::int16_t>(rng.uniform(0, 1) ? q : -q);
                rem -= q * q;
            }
            ASSERT_EQ(rem, 0);
            if (kind == 3) code[rng.uniform(0, 39)] = -32768;  // a saturating product
        }
        ASSERT_EQ(e(true, code.data()), e(false, code.data())) << "round " << round;
    }
}

TEST(G729CodecKernels, CodeEnergyEqualsChainU8) { check_energy(zeps::u8::g729_code_energy_kernel); }
#if defined(__x86_64__)
TEST(G729CodecKernels, CodeEnergyEqualsChainN8) { check_energy(zeps::n8::g729_code_energy_kernel); }
#endif

TEST(G729SynthesisKernels, LanesEqualScalarU8) { check_syn(zeps::u8::g729_syn_filt_kernel); }
TEST(G729SynthesisKernels, RoundingBoundariesU8) { check_syn_boundaries(zeps::u8::g729_syn_filt_kernel); }
#if defined(__x86_64__)
TEST(G729SynthesisKernels, LanesEqualScalarN8) { check_syn(zeps::n8::g729_syn_filt_kernel); }
TEST(G729SynthesisKernels, RoundingBoundariesN8) { check_syn_boundaries(zeps::n8::g729_syn_filt_kernel); }
#endif

}  // namespace

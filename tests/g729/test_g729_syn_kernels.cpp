// SPDX-License-Identifier: BSD-3-Clause
// The lane form of the G.729 synthesis filter (Syn_filt, blocks of ten
// samples under the plain-sum bound) against its scalar form, both builds:
// outputs and the overflow report on filters and signals at the bound
// (2 sum|a| max|value| about 2^31, crossed inside a block), saturating ones,
// every length 1..80 and in-place use.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tests/variant_check.h"

#define ZEPS_DECLARE_SYN_KERNEL(ns)                                                                        \
    namespace zeps::ns {                                                                                   \
    bool g729_syn_filt_kernel(bool, const std::int16_t*, const std::int16_t*, std::int16_t*, int,          \
                              const std::int16_t*);                                                        \
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

TEST(G729SynthesisKernels, LanesEqualScalarU8) { check_syn(zeps::u8::g729_syn_filt_kernel); }
#if defined(__x86_64__)
TEST(G729SynthesisKernels, LanesEqualScalarN8) { check_syn(zeps::n8::g729_syn_filt_kernel); }
#endif

}  // namespace

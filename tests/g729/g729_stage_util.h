/* SPDX-License-Identifier: BSD-3-Clause */
// Helpers of the G.729 stage tests (main body, Annex D, Annex E): both-builds
// calls on identical buffers and the random inputs they are fed.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"

namespace zeps::test::g729st {

using V16 = std::vector<std::int16_t>;
using V32 = std::vector<std::int32_t>;

/// Calls the same export of both builds on identical copies of bufs; the
/// statuses and every buffer afterwards must agree.
template <class V = V16, class F, class Call>
void both(F fu, F fn, const std::vector<V>& bufs, Call call) {
    std::vector<V> a = bufs, b = bufs;
    EXPECT_EQ(call(fu, a), call(fn, b));
    for (std::size_t i = 0; i < a.size(); ++i) EXPECT_EQ(a[i], b[i]) << "buffer " << i;
}

inline V16 rand16(Rng& rng, std::size_t n) { return rng.vec<std::int16_t>(n); }
/// A small random vector (|x| <= lim): the range of speech-like signals.
inline V16 small16(Rng& rng, std::size_t n, int lim) {
    V16 v(n);
    for (auto& x : v) x = static_cast<std::int16_t>(rng.uniform(-lim, lim));
    return v;
}
/// A stable order-10 LP filter (Q12): the bandwidth-expanded expansion of
/// ordered LSPs.
inline V16 stable_lpc(Rng& rng) {
    Zep16s lsp[10], a[11];
    int f = 0;
    for (int i = 0; i < 10; ++i) {
        f += static_cast<int>(rng.uniform(1000, 2900));
        lsp[i] = static_cast<Zep16s>(32767.0 * __builtin_cos(3.14159 * f / 29000.0));
    }
    zeps::u8::zepsLSPToLPC_G729_16s(lsp, a);
    return V16(a, a + 11);
}

}  // namespace zeps::test::g729st

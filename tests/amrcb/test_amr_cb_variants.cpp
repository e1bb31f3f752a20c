// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR algebraic codebook search: both processor builds give the same
// bytes and statuses on random, extreme and invalid arguments.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"

namespace {

using V16 = std::vector<std::int16_t>;
constexpr std::int32_t kRates[8] = {0, 1, 3, 6, 7, 8, 11, 12};

}  // namespace

ZEPS_VARIANT_CHECK(zepsAlgebraicCodebookSearch_GSMAMR_16s) {
    for (int t = 0; t < 400; t++) {
        const V16 x = rng.vec<std::int16_t>(40), h = rng.vec<std::int16_t>(40), res = rng.vec<std::int16_t>(40);
        const std::int32_t rate = rng.chance(10) ? static_cast<std::int32_t>(rng.uniform(-1, 26)) : kRates[rng.uniform(0, 7)];
        const auto T0 = static_cast<std::int16_t>(rng.uniform(-1, 150));
        const auto sub = static_cast<std::int32_t>(rng.uniform(-1, 4));
        const std::int16_t sharp = rng.s16(), gain = rng.s16();
        V16 ca(40, 0x5a5a), ya(40, 0x5a5a), ia(10, 0x5a5a), cb = ca, yb = ya, ib = ia;
        EXPECT_EQ(zeps::u8::zepsAlgebraicCodebookSearch_GSMAMR_16s(x.data(), h.data(), T0, sharp, gain, res.data(),
                                                                   ca.data(), ya.data(), ia.data(), rate, sub),
                  zeps::n8::zepsAlgebraicCodebookSearch_GSMAMR_16s(x.data(), h.data(), T0, sharp, gain, res.data(),
                                                                   cb.data(), yb.data(), ib.data(), rate, sub));
        EXPECT_EQ(ca, cb);
        EXPECT_EQ(ya, yb);
        EXPECT_EQ(ia, ib);
    }
}

// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR 3- and 4-pulse searches: the last pulse's choice is skipped only
// where the reference's sequential choice followed by its codevector test
// could not have replaced the codevector (energy terms <= 0, the start value
// (-1, 1) and a codevector of negative energy included).
#include <gtest/gtest.h>

#include <cstdint>

#include "amr/cb_last_choice.h"
#include "tests/variant_check.h"

namespace {

TEST(AmrCbLastChoice, SkipsOnlyWhereTheSequentialChoiceCannotImprove) {
    namespace k = zeps::ref::amr_cb;
    using namespace zeps::ref;
    auto reference_replaces = [](const k::Candidates& c, std::int16_t psk, std::int16_t alpk) {
        std::int16_t sq = -1, alp = 1;  // the track's choice from its start value
        for (int i = 0; i < 8; i++)
            if (L_msu(L_mult(alp, c.sq[i]), sq, c.alp[i]) > 0) {
                sq = c.sq[i];
                alp = c.alp[i];
            }
        return L_msu(L_mult(alpk, sq), psk, alp) > 0;
    };
    zeps::test::Rng rng(74);
    const std::int16_t edge_alp[] = {-32768, -32767, -1, 0, 1, 2, 32767};
    int skipped = 0, replaced = 0, start_kept = 0;
    for (int round = 0; round < 200000; ++round) {
        k::Candidates c{};
        const bool negative = rng.chance(4);  // every energy term <= 0: the choice keeps (-1, 1)
        for (int i = 0; i < 16; i++) {
            c.sq[i] = rng.chance(8) ? static_cast<std::int16_t>(rng.uniform(0, 2)) : static_cast<std::int16_t>(rng.uniform(0, 32767));
            c.alp[i] = negative ? static_cast<std::int16_t>(rng.uniform(-32768, 0))
                       : rng.chance(8) ? edge_alp[rng.uniform(0, 6)]
                                       : static_cast<std::int16_t>(rng.uniform(1, 32767));
            c.ps[i] = rng.s16();
        }
        // the codevector so far: its start (-1, 1), a candidate's values, or anything a search keeps
        std::int16_t psk = -1, alpk = 1;
        switch (rng.uniform(0, 3)) {
            case 0: break;
            case 1: {
                const int i = static_cast<int>(rng.uniform(0, 7));
                psk = c.sq[i];
                alpk = c.alp[i];
                break;
            }
            case 2:
                psk = static_cast<std::int16_t>(rng.uniform(-1, 32767));
                alpk = edge_alp[rng.uniform(0, 6)];
                break;
            default:
                psk = static_cast<std::int16_t>(rng.uniform(-1, 32767));
                alpk = rng.s16();
        }
        const bool may = k::last_choice_may_improve(c, 8, psk, alpk);
        const bool scalar = k::improves(-1, 1, psk, alpk) || k::any_improves_scalar(c, 8, psk, alpk);
        ASSERT_EQ(may, scalar) << "round " << round;
        const bool replaces = reference_replaces(c, psk, alpk);
        if (replaces) {
            ASSERT_TRUE(may) << "round " << round << " psk " << psk << " alpk " << alpk;
            replaced++;
            if (negative) start_kept++;
        }
        if (!may) skipped++;
    }
    EXPECT_GT(skipped, 20000);
    EXPECT_GT(replaced, 20000);
    EXPECT_GT(start_kept, 100);
}

}  // namespace

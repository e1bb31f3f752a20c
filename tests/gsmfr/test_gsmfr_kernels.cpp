// The SSSE3 forms of the GSM full-rate short-term lattices and
// de-emphasis against their scalar baselines, bit for bit, on coefficient
// sets and signals from quiet to full scale (rp over its whole range
// -32767..32767, memories and samples at -32768 and 32767).
#include <gtest/gtest.h>

#include <vector>

#include "amr/gsmfr_lattice.h"
#include "tests/variant_check.h"

namespace {

using zeps::test::Rng;

Zep16s sample(Rng& rng, int kind) {
    switch (kind) {
        case 0: return static_cast<Zep16s>(rng.uniform(-64, 64));
        case 1: return static_cast<Zep16s>(rng.uniform(-12000, 12000));
        case 2: return rng.uniform(0, 1) ? 32767 : -32768;
        default: return rng.s16();
    }
}
Zep16s coefficient(Rng& rng, int kind) {
    return kind == 2 ? static_cast<Zep16s>(rng.uniform(0, 1) ? 32767 : -32767)
                     : static_cast<Zep16s>(rng.uniform(-32767, 32767));
}

TEST(GsmfrKernels, SimdFormsMatchTheScalarBaselines) {
    Rng rng(0x65f1);
    for (int kind = 0; kind < 4; ++kind) {
        for (int trial = 0; trial < 300; ++trial) {
            SCOPED_TRACE(::testing::Message() << "signal kind " << kind << ", trial " << trial);
            Zep16s rp[4][8], mem[9];
            for (auto& set : rp)
                for (auto& r : set) r = coefficient(rng, kind);
            for (auto& m : mem) m = sample(rng, kind);
            std::vector<Zep16s> x(160);
            for (auto& s : x) s = sample(rng, kind);

            std::vector<Zep16s> a = x, b = x;
            Zep16s ua[8], ub[8];
            std::copy(mem, mem + 8, ua);
            std::copy(mem, mem + 8, ub);
            zeps::ref::gsmfr::analysis_frame_scalar(rp, ua, a.data());
            zeps::ref::gsmfr::analysis_frame_simd(rp, ub, b.data());
            ASSERT_EQ(a, b) << "analysis output";
            ASSERT_TRUE(std::equal(ua, ua + 8, ub)) << "analysis memories";

            std::vector<Zep16s> sa(160, 0x5a5a), sb(160, 0x5a5a);
            Zep16s va[9], vb[9];
            std::copy(mem, mem + 9, va);
            std::copy(mem, mem + 9, vb);
            zeps::ref::gsmfr::synthesis_frame_scalar(rp, va, x.data(), sa.data());
            zeps::ref::gsmfr::synthesis_frame_simd(rp, vb, x.data(), sb.data());
            ASSERT_EQ(sa, sb) << "synthesis output";
            ASSERT_TRUE(std::equal(va, va + 9, vb)) << "synthesis memories";

            std::vector<Zep16s> pa(160, 0x5a5a), pb(160, 0x5a5a);
            ASSERT_EQ(zeps::ref::gsmfr::postprocess_frame_scalar(mem[0], x.data(), pa.data()),
                      zeps::ref::gsmfr::postprocess_frame_simd(mem[0], x.data(), pb.data()));
            ASSERT_EQ(pa, pb) << "postprocessing output";
        }
    }
}

}  // namespace

// GSM-AMR open-loop pitch searches against the 3GPP reference's pre_big +
// ol_ltp intermediates, for all rates, with and without the VAD hooks.
#include <gtest/gtest.h>

#include "tests/amrvad/amrvad_util.h"

namespace zeps::test::amrvad {
namespace {

/// The caller memories of one case, before the call.
struct OlCase {
    std::vector<Zep16s> lpc, spch, mem, hist, lags, gain, wght, wsp, T;
    Zep32s rate;
    explicit OlCase(const VecCase& c)
        : lpc(c.in("pSrcLPC").as<Zep16s>()), spch(c.in("pSrcSpch").as<Zep16s>()),
          mem(c.in("pWgtFltMem").as<Zep16s>()), hist(c.in("pWgtSpchHist").as<Zep16s>()),
          lags(c.in("pOldLags").as<Zep16s>()), gain(c.in("pOlGainFlg").as<Zep16s>()),
          wght(c.in("pWghtState").as<Zep16s>()), wsp(160, -1), T(2, -1), rate(c.in("rate").as<Zep32s>()[0]) {}

    void expect_matches(const VecCase& c) const {
        EXPECT_EQ(wsp, c.out("pDstWgtSpch").as<Zep16s>());
        EXPECT_EQ(mem, c.out("pWgtFltMem").as<Zep16s>());
        EXPECT_EQ(hist, c.out("pWgtSpchHist").as<Zep16s>());
        EXPECT_EQ(lags, c.out("pOldLags").as<Zep16s>());
        EXPECT_EQ(gain, c.out("pOlGainFlg").as<Zep16s>());
        EXPECT_EQ(T, c.out("pDstOpenLoopLag").as<Zep16s>());
    }
};

VecFile load_ol(const char* name, std::size_t count) {
    VecFile f = load_vec(shared_path(std::string("vectors/amr/") + name));
    EXPECT_EQ(f.cases.size(), count);
    return f;
}

TEST(AmrOpenLoop, NonDtxMatchesReference) {
    const VecFile f = load_ol("zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s.vec", 816);
    for (const Build& b : kBuilds) {
        for (const VecCase& c : f.cases) {
            SCOPED_TRACE(testing::Message() << b.name << " case " << c.number);
            OlCase o(c);
            ASSERT_EQ(b.ol(o.lpc.data(), o.spch.data(), o.mem.data(), o.hist.data(), o.lags.data(), o.gain.data(),
                           o.wght.data(), o.wsp.data(), o.T.data(), o.rate),
                      c.ret);
            o.expect_matches(c);
            EXPECT_EQ(o.wght, c.out("pWghtState").as<Zep16s>());
            if (HasFailure()) return;
        }
    }
}

TEST(AmrOpenLoop, DtxVad1MatchesReference) {
    const VecFile f = load_ol("zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s.vec", 816);
    for (const Build& b : kBuilds) {
        for (const VecCase& c : f.cases) {
            SCOPED_TRACE(testing::Message() << b.name << " case " << c.number);
            OlCase o(c);
            // Weighting state then [tone, pitch, oldlag_count, oldlag, best_corr_hp].
            std::vector<Zep16s> regs = o.wght;
            for (Zep16s v : c.in("pVad1Regs").as<Zep16s>()) regs.push_back(v);
            ASSERT_EQ(b.ol1(o.lpc.data(), o.spch.data(), o.mem.data(), o.hist.data(), o.lags.data(), o.gain.data(),
                            regs.data(), o.wsp.data(), o.T.data(), o.rate),
                      c.ret);
            o.expect_matches(c);
            std::vector<Zep16s> want = c.out("pWghtState").as<Zep16s>();
            for (Zep16s v : c.out("pVad1Regs").as<Zep16s>()) want.push_back(v);
            EXPECT_EQ(regs, want);
            if (HasFailure()) return;
        }
    }
}

TEST(AmrOpenLoop, DtxVad2MatchesReference) {
    const VecFile f = load_ol("zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s.vec", 816);
    for (const Build& b : kBuilds) {
        for (const VecCase& c : f.cases) {
            SCOPED_TRACE(testing::Message() << b.name << " case " << c.number);
            OlCase o(c);
            Zep32s rmax = -1, r0 = -1;
            ASSERT_EQ(b.ol2(o.lpc.data(), o.spch.data(), o.mem.data(), o.hist.data(), o.lags.data(), o.gain.data(),
                            o.wght.data(), o.wsp.data(), o.T.data(), &rmax, &r0, o.rate),
                      c.ret);
            o.expect_matches(c);
            EXPECT_EQ(o.wght, c.out("pWghtState").as<Zep16s>());
            EXPECT_EQ((std::vector<Zep32s>{rmax, r0}), c.out("pMaxCorrEnergy").as<Zep32s>());
            if (HasFailure()) return;
        }
    }
}

}  // namespace
}  // namespace zeps::test::amrvad

// GSM-AMR open-loop pitch searches against the 3GPP reference's pre_big +
// ol_ltp intermediates, for all rates, with and without the VAD hooks.
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <tuple>

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

VecFile load_ol(const char* name) { return load_vec(shared_path(std::string("vectors/amr/") + name)); }

TEST(AmrOpenLoop, NonDtxMatchesReference) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const VecFile f = load_ol("zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s.vec");
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
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const VecFile f = load_ol("zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s.vec");
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
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const VecFile f = load_ol("zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s.vec");
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


/// The VAD option 1 stream's view of one frame: the registers its call read
/// and the pitch register it left.
struct Vad1Frame {
    long long tone, best_corr_hp, pitch_in, pitch_after;
};

/// Frames of the VAD option 1 stream by (speech file, mode, frame).
std::map<std::tuple<std::string, std::string, int>, Vad1Frame> vad1_frames() {
    std::map<std::tuple<std::string, std::string, int>, Vad1Frame> m;
    const VecFile f = load_vec(shared_path("vectors/amr/zepsVAD1_GSMAMR_16s.vec"));
    std::string file, mode;
    for (const VecCase& c : f.cases) {
        if (c.reset) {
            for (const std::string& line : c.comments) {
                std::istringstream in(line);
                std::string w, skip;
                in >> w;
                if (w != "speech") continue;
                in >> skip >> file;
                while (in >> w && w != "mode") {
                }
                in >> mode;
            }
            continue;
        }
        const long long frame = comment_values(c, "frame").at(0);
        m[{file, mode, static_cast<int>(frame)}] = {c.in("toneFlag").ints[0], c.in("bestCorrHp").ints[0],
                                                     c.in("statePitch").ints[0], comment_values(c, "burst_count").at(4)};
    }
    return m;
}

// The register round trip documented for the VAD option 1 search: the VAD of
// frame n reads the tone, correlation and (copied-in) pitch the search of
// frame n-1 left, the search of frame n starts from the pitch the VAD left,
// and what it leaves is what the VAD of frame n+1 reads.
TEST(AmrOpenLoop, Vad1RegistersFlowBetweenSearchAndDetector) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const auto vad = vad1_frames();
    const VecFile f = load_ol("zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s.vec");
    int linked = 0;
    for (const VecCase& c : f.cases) {
        std::istringstream src(c.comments.at(0));
        std::string w, file, mode;
        src >> w >> file >> mode;
        const int frame = static_cast<int>(comment_values(c, "frame").at(0));
        const auto now = vad.find({file, mode, frame});
        const auto next = vad.find({file, mode, frame + 1});
        if (now == vad.end() || next == vad.end()) continue;
        OlCase o(c);
        std::vector<Zep16s> regs = o.wght;
        for (Zep16s v : c.in("pVad1Regs").as<Zep16s>()) regs.push_back(v);
        EXPECT_EQ(regs[3], now->second.tone);
        EXPECT_EQ(regs[4], now->second.pitch_after);
        EXPECT_EQ(regs[7], now->second.best_corr_hp);
        ASSERT_EQ(kBuilds[1].ol1(o.lpc.data(), o.spch.data(), o.mem.data(), o.hist.data(), o.lags.data(),
                                 o.gain.data(), regs.data(), o.wsp.data(), o.T.data(), o.rate),
                  zepStsNoErr);
        EXPECT_EQ(regs[3], next->second.tone) << file << " " << mode << " " << frame;
        EXPECT_EQ(regs[4], next->second.pitch_in) << file << " " << mode << " " << frame;
        EXPECT_EQ(regs[7], next->second.best_corr_hp) << file << " " << mode << " " << frame;
        ++linked;
    }
    EXPECT_GT(linked, 100);
}

}  // namespace
}  // namespace zeps::test::amrvad

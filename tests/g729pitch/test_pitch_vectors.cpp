// Bit-exact replay of the G.729 pitch-stage reference vectors on both
// processor builds: every output element and the status, with outputs that
// must stay untouched pre-filled as recorded and the others canary-filled.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/variants.h"
#include "tests/vec_reader.h"

namespace {

using zeps::test::VecCase;
using zeps::test::VecFile;
using V16 = std::vector<Zep16s>;

constexpr Zep16s kCanary = 0x5A5A;

VecFile load(const std::string& name) { return zeps::test::load_vec(zeps::test::shared_path("vectors/g729/" + name)); }

/// The caller's output buffer before the call: the recorded content when the
/// case says it stays unchanged, a canary fill otherwise.
V16 out_buffer(const VecCase& c, const std::string& name) {
    const auto& o = c.out(name);
    return o.unchanged ? o.as<Zep16s>() : V16(o.size(), kCanary);
}

void expect_out(const VecCase& c, const std::string& name, const V16& got, const char* build) {
    EXPECT_EQ(got, c.out(name).as<Zep16s>()) << build << " case " << c.number << " " << name;
}

template <class Fn>
int replay_open_loop(const char* file, Fn u8, Fn n8) {
    const VecFile f = load(file);
    int n = 0;
    for (const VecCase& c : f.cases) {
        const V16 src = c.in("pSrc").as<Zep16s>();
        for (auto [fn, build] : {std::pair{u8, "u8"}, std::pair{n8, "n8"}}) {
            V16 lag = out_buffer(c, "pBestLag");
            EXPECT_EQ(fn(src.data() + 143, lag.data()), c.ret) << build << " case " << c.number;
            expect_out(c, "pBestLag", lag, build);
        }
        ++n;
    }
    return n;
}

TEST(G729PitchVectors, OpenLoopPitchSearch) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_open_loop("zepsOpenLoopPitchSearch_G729_16s.vec", &zeps::u8::zepsOpenLoopPitchSearch_G729_16s,
                               &zeps::n8::zepsOpenLoopPitchSearch_G729_16s);
    replay_open_loop("zepsOpenLoopPitchSearch_G729A_16s.vec", &zeps::u8::zepsOpenLoopPitchSearch_G729A_16s,
                               &zeps::n8::zepsOpenLoopPitchSearch_G729A_16s);
}

template <class Fn>
int replay_search(const char* file, Fn u8, Fn n8) {
    const VecFile f = load(file);
    int n = 0;
    for (const VecCase& c : f.cases) {
        const Zep16s delay = c.in("valOpenDelay").as<Zep16s>()[0];
        const Zep16s sub = c.in("subframe").as<Zep16s>()[0];
        const V16 xn = c.in("pSrcAdptTarget").as<Zep16s>();
        const V16 h = c.in("pSrcImpulseResponse").as<Zep16s>();
        for (auto [fn, build] : {std::pair{u8, "u8"}, std::pair{n8, "n8"}}) {
            V16 exc = c.in("pSrcDstPrevExcitation").as<Zep16s>();
            V16 d = out_buffer(c, "pDstDelay");
            V16 v = out_buffer(c, "pDstAdptVector");
            EXPECT_EQ(fn(delay, xn.data(), h.data(), exc.data(), d.data(), v.data(), sub), c.ret)
                << build << " case " << c.number;
            expect_out(c, "pSrcDstPrevExcitation", exc, build);
            expect_out(c, "pDstDelay", d, build);
            expect_out(c, "pDstAdptVector", v, build);
        }
        ++n;
    }
    return n;
}

TEST(G729PitchVectors, AdaptiveCodebookSearch) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_search("zepsAdaptiveCodebookSearch_G729_16s.vec", &zeps::u8::zepsAdaptiveCodebookSearch_G729_16s,
                            &zeps::n8::zepsAdaptiveCodebookSearch_G729_16s);
    replay_search("zepsAdaptiveCodebookSearch_G729A_16s.vec",
                            &zeps::u8::zepsAdaptiveCodebookSearch_G729A_16s,
                            &zeps::n8::zepsAdaptiveCodebookSearch_G729A_16s);
}

TEST(G729PitchVectors, DecodeAdaptiveVector) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    const VecFile f = load("zepsDecodeAdaptiveVector_G729_16s.vec");
    int n = 0;
    for (const VecCase& c : f.cases) {
        const V16 delay = c.in("pSrcDelay").as<Zep16s>();
        for (auto [fn, build] : {std::pair{&zeps::u8::zepsDecodeAdaptiveVector_G729_16s, "u8"},
                                 std::pair{&zeps::n8::zepsDecodeAdaptiveVector_G729_16s, "n8"}}) {
            V16 exc = c.in("pSrcDstPrevExcitation").as<Zep16s>();
            V16 v = out_buffer(c, "pDstAdptVector");
            EXPECT_EQ(fn(delay.data(), exc.data(), v.data()), c.ret) << build << " case " << c.number;
            expect_out(c, "pSrcDstPrevExcitation", exc, build);
            expect_out(c, "pDstAdptVector", v, build);
        }
        // The in-place member writes the same samples into the buffer only.
        for (auto fn : {&zeps::u8::zepsDecodeAdaptiveVector_G729_16s_I, &zeps::n8::zepsDecodeAdaptiveVector_G729_16s_I}) {
            V16 exc = c.in("pSrcDstPrevExcitation").as<Zep16s>();
            EXPECT_EQ(fn(delay.data(), exc.data()), c.ret) << "_I case " << c.number;
            expect_out(c, "pSrcDstPrevExcitation", exc, "_I");
        }
        ++n;
    }
    EXPECT_EQ(n, 1766);
}

template <class Fn>
int replay_gain(const char* file, Fn u8, Fn n8) {
    const VecFile f = load(file);
    int n = 0;
    for (const VecCase& c : f.cases) {
        const V16 xn = c.in("pSrcAdptTarget").as<Zep16s>();
        const V16 h = c.in("pSrcImpulseResponse").as<Zep16s>();
        const V16 v = c.in("pSrcAdptVector").as<Zep16s>();
        for (auto [fn, build] : {std::pair{u8, "u8"}, std::pair{n8, "n8"}}) {
            V16 y = out_buffer(c, "pDstFltAdptVector");
            V16 g = out_buffer(c, "pResultAdptGain");
            EXPECT_EQ(fn(xn.data(), h.data(), v.data(), y.data(), g.data()), c.ret) << build << " case " << c.number;
            expect_out(c, "pDstFltAdptVector", y, build);
            expect_out(c, "pResultAdptGain", g, build);
        }
        ++n;
    }
    return n;
}

TEST(G729PitchVectors, AdaptiveCodebookGain) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_gain("zepsAdaptiveCodebookGain_G729_16s.vec", &zeps::u8::zepsAdaptiveCodebookGain_G729_16s,
                          &zeps::n8::zepsAdaptiveCodebookGain_G729_16s);
    replay_gain("zepsAdaptiveCodebookGain_G729A_16s.vec", &zeps::u8::zepsAdaptiveCodebookGain_G729A_16s,
                          &zeps::n8::zepsAdaptiveCodebookGain_G729A_16s);
}

}  // namespace

// Bit-exact replay of the G.729 LP analysis and LSP quantisation reference
// vectors (ITU-T G.729 / Annex A / Annex B fixed-point routines) on both builds.
#include <cstdint>
#include <vector>

#include "tests/g729/g729_lp_test_util.h"

using namespace zeps::test;
using namespace zeps::test::g729lp;
using V16 = std::vector<std::int16_t>;
using V32 = std::vector<std::int32_t>;

TEST(G729LpVectors, HighPassFilter) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay("zepsHighPassFilter_G729_16s_ISfs.vec", zeps::u8::zepsHighPassFilter_G729_16s_ISfs,
           zeps::n8::zepsHighPassFilter_G729_16s_ISfs, [](auto fn, const VecFile& vf, Checker& ck) {
               std::vector<Zep8u> state(24);
               for (const VecCase& c : vf.cases) {
                   if (c.reset) {
                       const V16 coef = c.in("pCoeffs").as<std::int16_t>();
                       ASSERT_EQ(zeps::u8::zepsHighPassFilterInit_G729(coef.data(), state.data()), 0);
                       if (c.input("pSrcDst") == nullptr) continue;
                   }
                   V16 x = before<std::int16_t>(c, "pSrcDst");
                   const std::vector<Zep8u> saved = state;
                   const int st = fn(x.data(), c.in("len").as<int>()[0], c.in("scaleFactor").as<int>()[0],
                                     state.data());
                   ck.ret(c, st);
                   ck.out(c, "pSrcDst", x);
                   if (st < 0) {
                       EXPECT_EQ(state, saved) << "case " << c.number;
                   }
               }
           });
}

TEST(G729LpVectors, AutoCorrG729B) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_cases("zepsAutoCorr_G729B.vec", zeps::u8::zepsAutoCorr_G729B, zeps::n8::zepsAutoCorr_G729B,
                 [](auto fn, const VecCase& c, Checker& ck) {
                     const V16 x = c.in("pSrc").as<std::int16_t>();
                     V16 norm = before<std::int16_t>(c, "pNormOut");
                     V32 r = before<std::int32_t>(c, "pDst");
                     ck.ret(c, fn(x.data(), norm.data(), r.data()));
                     ck.out(c, "pNormOut", norm);
                     ck.out(c, "pDst", r);
                 });
}

TEST(G729LpVectors, LagWindow) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_cases("zepsLagWindow_G729_32s_I.vec", zeps::u8::zepsLagWindow_G729_32s_I,
                 zeps::n8::zepsLagWindow_G729_32s_I, [](auto fn, const VecCase& c, Checker& ck) {
                     V32 r = before<std::int32_t>(c, "pSrcDstAutoCorr");
                     ck.ret(c, fn(r.data(), c.in("len").as<int>()[0]));
                     ck.out(c, "pSrcDstAutoCorr", r);
                 });
}

TEST(G729LpVectors, LevinsonDurbin) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_cases("zepsLevinsonDurbin_G729_32s16s.vec", zeps::u8::zepsLevinsonDurbin_G729_32s16s,
                 zeps::n8::zepsLevinsonDurbin_G729_32s16s, [](auto fn, const VecCase& c, Checker& ck) {
                     const V32 r = c.in("pSrcAutoCorr").as<std::int32_t>();
                     V16 a = before<std::int16_t>(c, "pDstLPC");
                     V16 k = before<std::int16_t>(c, "pDstRC");
                     V16 e = before<std::int16_t>(c, "pResultResidualEnergy");
                     ck.ret(c, fn(r.data(), c.in("order").as<int>()[0], a.data(), k.data(), e.data()));
                     ck.out(c, "pDstLPC", a);
                     ck.out(c, "pDstRC", k);
                     ck.out(c, "pResultResidualEnergy", e);
                 });
}

namespace {
template <class Fn>
void lpc_to_lsp(Fn fn, const VecCase& c, Checker& ck) {
    const V16 a = c.in("pLPC").as<std::int16_t>();
    const V16 prev = c.in("pPrevLSP").as<std::int16_t>();
    V16 lsp = before<std::int16_t>(c, "pLSP");
    ck.ret(c, fn(a.data(), prev.data(), lsp.data()));
    ck.out(c, "pLSP", lsp);
}

/// One input vector to one output vector of 16-bit values.
template <class Fn>
void unary16(Fn fn, const VecCase& c, Checker& ck, const char* in, const char* out) {
    const V16 x = c.in(in).as<std::int16_t>();
    V16 y = before<std::int16_t>(c, out);
    ck.ret(c, fn(x.data(), y.data()));
    ck.out(c, out, y);
}
}  // namespace

TEST(G729LpVectors, LPCToLSP) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_cases("zepsLPCToLSP_G729_16s.vec", zeps::u8::zepsLPCToLSP_G729_16s, zeps::n8::zepsLPCToLSP_G729_16s,
                 [](auto fn, const VecCase& c, Checker& ck) { lpc_to_lsp(fn, c, ck); });
    replay_cases("zepsLPCToLSP_G729A_16s.vec", zeps::u8::zepsLPCToLSP_G729A_16s, zeps::n8::zepsLPCToLSP_G729A_16s,
                 [](auto fn, const VecCase& c, Checker& ck) { lpc_to_lsp(fn, c, ck); });
}

TEST(G729LpVectors, Conversions) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_cases("zepsLSPToLPC_G729_16s.vec", zeps::u8::zepsLSPToLPC_G729_16s, zeps::n8::zepsLSPToLPC_G729_16s,
                 [](auto fn, const VecCase& c, Checker& ck) { unary16(fn, c, ck, "pLSP", "pLPC"); });
    replay_cases("zepsLSFToLSP_G729_16s.vec", zeps::u8::zepsLSFToLSP_G729_16s, zeps::n8::zepsLSFToLSP_G729_16s,
                 [](auto fn, const VecCase& c, Checker& ck) { unary16(fn, c, ck, "pLSF", "pLSP"); });
    replay_cases("zepsLSPToLSF_G729_16s.vec", zeps::u8::zepsLSPToLSF_G729_16s, zeps::n8::zepsLSPToLSF_G729_16s,
                 [](auto fn, const VecCase& c, Checker& ck) { unary16(fn, c, ck, "pLSP", "pLSF"); });
    replay_cases("zepsLSPToLSF_Norm_G729_16s.vec", zeps::u8::zepsLSPToLSF_Norm_G729_16s,
                 zeps::n8::zepsLSPToLSF_Norm_G729_16s,
                 [](auto fn, const VecCase& c, Checker& ck) { unary16(fn, c, ck, "pLSP", "pLSF"); });
}

TEST(G729LpVectors, Quantisers) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    auto quant = [](const char* in, const char* q) {
        return [=](auto fn, const VecCase& c, Checker& ck) {
            const V16 x = c.in(in).as<std::int16_t>();
            V16 prev = before<std::int16_t>(c, "pPrevFreq");
            V16 y = before<std::int16_t>(c, q);
            V16 idx = before<std::int16_t>(c, "pIdx");
            ck.ret(c, fn(x.data(), prev.data(), y.data(), idx.data()));
            ck.out(c, "pPrevFreq", prev);
            ck.out(c, q, y);
            ck.out(c, "pIdx", idx);
        };
    };
    replay_cases("zepsLSFQuant_G729_16s.vec", zeps::u8::zepsLSFQuant_G729_16s, zeps::n8::zepsLSFQuant_G729_16s,
                 quant("pLSF", "pQLSF"));
    replay_cases("zepsLSPQuant_G729_16s.vec", zeps::u8::zepsLSPQuant_G729_16s, zeps::n8::zepsLSPQuant_G729_16s,
                 quant("pLSP", "pQLSP"));
}

TEST(G729LpVectors, Decoders) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_cases("zepsLSFDecode_G729_16s.vec", zeps::u8::zepsLSFDecode_G729_16s, zeps::n8::zepsLSFDecode_G729_16s,
                 [](auto fn, const VecCase& c, Checker& ck) {
                     const V16 idx = c.in("pIdx").as<std::int16_t>();
                     V16 prev = before<std::int16_t>(c, "pPrevFreq");
                     V16 q = before<std::int16_t>(c, "pQLSF");
                     ck.ret(c, fn(idx.data(), prev.data(), q.data()));
                     ck.out(c, "pPrevFreq", prev);
                     ck.out(c, "pQLSF", q);
                 });
    replay_cases("zepsLSFDecodeErased_G729_16s.vec", zeps::u8::zepsLSFDecodeErased_G729_16s,
                 zeps::n8::zepsLSFDecodeErased_G729_16s, [](auto fn, const VecCase& c, Checker& ck) {
                     V16 prev = before<std::int16_t>(c, "pPrevFreq");
                     const V16 lsf = before<std::int16_t>(c, "pLSF");
                     ck.ret(c, fn(c.in("maMode").as<std::int16_t>()[0], prev.data(), lsf.data()));
                     ck.out(c, "pPrevFreq", prev);
                     ck.out(c, "pLSF", lsf);
                 });
}

TEST(G729LpVectors, Interpolate) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g729");
    replay_cases("zepsInterpolate_G729_16s.vec", zeps::u8::zepsInterpolate_G729_16s,
                 zeps::n8::zepsInterpolate_G729_16s, [](auto fn, const VecCase& c, Checker& ck) {
                     const V16 a = c.in("pSrc1").as<std::int16_t>();
                     const V16 b = c.in("pSrc2").as<std::int16_t>();
                     V16 y = before<std::int16_t>(c, "pDst");
                     ck.ret(c, fn(a.data(), b.data(), y.data(), c.in("len").as<int>()[0]));
                     ck.out(c, "pDst", y);
                 });
}

// GSM full-rate stages: both processor builds give the same outputs, states
// and statuses, over a few frames of loud, quiet and extreme input and
// out-of-range codes.
#include <gtest/gtest.h>

#include <vector>

#include "tests/variant_check.h"

namespace {

using zeps::test::Rng;
using V = std::vector<Zep16s>;

/// A signal of n samples: speech-like, quiet, or full-scale extremes.
V signal(Rng& rng, std::size_t n) {
    V x(n);
    const int kind = static_cast<int>(rng.uniform(0, 2));
    for (auto& s : x)
        s = kind == 0 ? static_cast<Zep16s>(rng.uniform(-12000, 12000))
            : kind == 1 ? static_cast<Zep16s>(rng.uniform(-40, 40))
                        : rng.s16();
    return x;
}

/// Valid LARc codes, sometimes one spoiled.
V lar_codes(Rng& rng) {
    static const int kMax[8] = {63, 63, 31, 31, 15, 15, 7, 7};
    V c(8);
    for (int i = 0; i < 8; ++i) c[static_cast<std::size_t>(i)] = static_cast<Zep16s>(rng.uniform(0, kMax[i]));
    if (rng.chance(6)) c[static_cast<std::size_t>(rng.uniform(0, 7))] = static_cast<Zep16s>(rng.uniform(-2, 70));
    return c;
}

/// Runs a stateful stage three frames on both builds: size query, init,
/// then `frame(build, state, rng)` returning the status and writing its
/// outputs into the vector it is given.
template <class S, class Size, class Init, class Frame>
void stateful(Rng& rng, Size size_u8, Size size_n8, Init init_u8, Init init_n8, Frame frame) {
    Zep32s na = 0, nb = 0;
    ASSERT_EQ(size_u8(&na), size_n8(&nb));
    ASSERT_EQ(na, nb);
    std::vector<unsigned char> a(static_cast<std::size_t>(na), 0x11), b(static_cast<std::size_t>(nb), 0x77);
    ASSERT_EQ(init_u8(reinterpret_cast<S*>(a.data())), init_n8(reinterpret_cast<S*>(b.data())));
    ASSERT_EQ(a, b);
    for (int f = 0; f < 3; ++f) {
        const std::uint64_t seed = rng.next();
        Rng ra(seed), rb(seed);
        V oa, ob;
        ASSERT_EQ(frame(0, reinterpret_cast<S*>(a.data()), ra, oa), frame(1, reinterpret_cast<S*>(b.data()), rb, ob));
        ASSERT_EQ(oa, ob);
        ASSERT_EQ(a, b);
    }
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsPreprocess_GSMFR_16s) {
    stateful<ZepGSMFRPreprocessState>(
        rng, zeps::u8::zepsPreprocessGetStateSize_GSMFR_16s, zeps::n8::zepsPreprocessGetStateSize_GSMFR_16s,
        zeps::u8::zepsPreprocessInit_GSMFR_16s, zeps::n8::zepsPreprocessInit_GSMFR_16s,
        [](int b, ZepGSMFRPreprocessState* st, Rng& r, V& out) {
            const V x = signal(r, 160);
            out.assign(160, 0x5a5a);
            return (b ? zeps::n8::zepsPreprocess_GSMFR_16s : zeps::u8::zepsPreprocess_GSMFR_16s)(st, x.data(),
                                                                                                 out.data());
        });
}
ZEPS_VARIANT_CHECK(zepsPreprocessGetStateSize_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsPreprocessGetStateSize_GSMFR_16s(nullptr),
              zeps::n8::zepsPreprocessGetStateSize_GSMFR_16s(nullptr));
}
ZEPS_VARIANT_CHECK(zepsPreprocessInit_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsPreprocessInit_GSMFR_16s(nullptr), zeps::n8::zepsPreprocessInit_GSMFR_16s(nullptr));
}

ZEPS_VARIANT_CHECK(zepsLPCAnalysis_GSMFR_16s_I) {
    V a = signal(rng, 160), b = a, la(8, 0x5a5a), lb(8, 0x5a5a);
    ASSERT_EQ(zeps::u8::zepsLPCAnalysis_GSMFR_16s_I(a.data(), la.data()),
              zeps::n8::zepsLPCAnalysis_GSMFR_16s_I(b.data(), lb.data()));
    ASSERT_EQ(a, b);
    ASSERT_EQ(la, lb);
}

ZEPS_VARIANT_CHECK(zepsShortTermAnalysisFilter_GSMFR_16s_I) {
    stateful<ZepGSMFRShortTermAnalysisState>(
        rng, zeps::u8::zepsShortTermAnalysisFilterGetStateSize_GSMFR_16s,
        zeps::n8::zepsShortTermAnalysisFilterGetStateSize_GSMFR_16s, zeps::u8::zepsShortTermAnalysisFilterInit_GSMFR_16s,
        zeps::n8::zepsShortTermAnalysisFilterInit_GSMFR_16s,
        [](int b, ZepGSMFRShortTermAnalysisState* st, Rng& r, V& out) {
            const V lar = lar_codes(r);
            out = signal(r, 160);
            return (b ? zeps::n8::zepsShortTermAnalysisFilter_GSMFR_16s_I
                      : zeps::u8::zepsShortTermAnalysisFilter_GSMFR_16s_I)(st, lar.data(), out.data());
        });
}
ZEPS_VARIANT_CHECK(zepsShortTermAnalysisFilterGetStateSize_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsShortTermAnalysisFilterGetStateSize_GSMFR_16s(nullptr),
              zeps::n8::zepsShortTermAnalysisFilterGetStateSize_GSMFR_16s(nullptr));
}
ZEPS_VARIANT_CHECK(zepsShortTermAnalysisFilterInit_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsShortTermAnalysisFilterInit_GSMFR_16s(nullptr),
              zeps::n8::zepsShortTermAnalysisFilterInit_GSMFR_16s(nullptr));
}

ZEPS_VARIANT_CHECK(zepsLongTermPredict_GSMFR_16s) {
    const V d = signal(rng, 40), dp = signal(rng, 120);
    V e[2], dpp[2], nc[2], bc[2];
    ZepStatus st[2];
    for (int b = 0; b < 2; ++b) {
        e[b].assign(40, 0x5a5a), dpp[b].assign(40, 0x5a5a), nc[b].assign(1, 0x5a5a), bc[b].assign(1, 0x5a5a);
        st[b] = (b ? zeps::n8::zepsLongTermPredict_GSMFR_16s : zeps::u8::zepsLongTermPredict_GSMFR_16s)(
            d.data(), dp.data(), e[b].data(), dpp[b].data(), nc[b].data(), bc[b].data());
    }
    ASSERT_EQ(st[0], st[1]);
    ASSERT_EQ(e[0], e[1]);
    ASSERT_EQ(dpp[0], dpp[1]);
    ASSERT_EQ(nc[0], nc[1]);
    ASSERT_EQ(bc[0], bc[1]);
}

ZEPS_VARIANT_CHECK(zepsRPEEncode_GSMFR_16s) {
    const V e = signal(rng, 40);
    V out[2];
    ZepStatus st[2];
    for (int b = 0; b < 2; ++b) {
        out[b].assign(1 + 1 + 13 + 40, 0x5a5a);
        Zep16s* o = out[b].data();
        st[b] = (b ? zeps::n8::zepsRPEEncode_GSMFR_16s : zeps::u8::zepsRPEEncode_GSMFR_16s)(e.data(), o, o + 1, o + 2,
                                                                                          o + 15);
    }
    ASSERT_EQ(st[0], st[1]);
    ASSERT_EQ(out[0], out[1]);
}

ZEPS_VARIANT_CHECK(zepsRPEDecode_GSMFR_16s) {
    const Zep16s xmaxc = static_cast<Zep16s>(rng.chance(8) ? rng.uniform(-2, 70) : rng.uniform(0, 63));
    const Zep16s mc = static_cast<Zep16s>(rng.chance(8) ? rng.uniform(-2, 5) : rng.uniform(0, 3));
    V xmc(13);
    for (auto& x : xmc) x = static_cast<Zep16s>(rng.chance(40) ? rng.uniform(-1, 9) : rng.uniform(0, 7));
    V a(40, 0x5a5a), b(40, 0x5a5a);
    ASSERT_EQ(zeps::u8::zepsRPEDecode_GSMFR_16s(xmaxc, mc, xmc.data(), a.data()),
              zeps::n8::zepsRPEDecode_GSMFR_16s(xmaxc, mc, xmc.data(), b.data()));
    ASSERT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsLongTermSynthesisFilter_GSMFR_16s) {
    stateful<ZepGSMFRLongTermSynthesisState>(
        rng, zeps::u8::zepsLongTermSynthesisFilterGetStateSize_GSMFR_16s,
        zeps::n8::zepsLongTermSynthesisFilterGetStateSize_GSMFR_16s, zeps::u8::zepsLongTermSynthesisFilterInit_GSMFR_16s,
        zeps::n8::zepsLongTermSynthesisFilterInit_GSMFR_16s,
        [](int b, ZepGSMFRLongTermSynthesisState* st, Rng& r, V& out) {
            ZepStatus s = zepStsNoErr;
            out.assign(160, 0x5a5a);
            for (int k = 0; k < 4 && s == zepStsNoErr; ++k) {
                const Zep16s nc = static_cast<Zep16s>(r.chance(5) ? r.s16() : r.uniform(40, 120));
                const Zep16s bc = static_cast<Zep16s>(r.chance(10) ? r.uniform(-1, 4) : r.uniform(0, 3));
                const V erp = signal(r, 40);
                s = (b ? zeps::n8::zepsLongTermSynthesisFilter_GSMFR_16s
                       : zeps::u8::zepsLongTermSynthesisFilter_GSMFR_16s)(st, nc, bc, erp.data(), out.data() + 40 * k);
            }
            return s;
        });
}
ZEPS_VARIANT_CHECK(zepsLongTermSynthesisFilterGetStateSize_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsLongTermSynthesisFilterGetStateSize_GSMFR_16s(nullptr),
              zeps::n8::zepsLongTermSynthesisFilterGetStateSize_GSMFR_16s(nullptr));
}
ZEPS_VARIANT_CHECK(zepsLongTermSynthesisFilterInit_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsLongTermSynthesisFilterInit_GSMFR_16s(nullptr),
              zeps::n8::zepsLongTermSynthesisFilterInit_GSMFR_16s(nullptr));
}

ZEPS_VARIANT_CHECK(zepsShortTermSynthesisFilter_GSMFR_16s) {
    stateful<ZepGSMFRShortTermSynthesisState>(
        rng, zeps::u8::zepsShortTermSynthesisFilterGetStateSize_GSMFR_16s,
        zeps::n8::zepsShortTermSynthesisFilterGetStateSize_GSMFR_16s,
        zeps::u8::zepsShortTermSynthesisFilterInit_GSMFR_16s, zeps::n8::zepsShortTermSynthesisFilterInit_GSMFR_16s,
        [](int b, ZepGSMFRShortTermSynthesisState* st, Rng& r, V& out) {
            const V lar = lar_codes(r), wt = signal(r, 160);
            out.assign(160, 0x5a5a);
            return (b ? zeps::n8::zepsShortTermSynthesisFilter_GSMFR_16s
                      : zeps::u8::zepsShortTermSynthesisFilter_GSMFR_16s)(st, lar.data(), wt.data(), out.data());
        });
}
ZEPS_VARIANT_CHECK(zepsShortTermSynthesisFilterGetStateSize_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsShortTermSynthesisFilterGetStateSize_GSMFR_16s(nullptr),
              zeps::n8::zepsShortTermSynthesisFilterGetStateSize_GSMFR_16s(nullptr));
}
ZEPS_VARIANT_CHECK(zepsShortTermSynthesisFilterInit_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsShortTermSynthesisFilterInit_GSMFR_16s(nullptr),
              zeps::n8::zepsShortTermSynthesisFilterInit_GSMFR_16s(nullptr));
}

ZEPS_VARIANT_CHECK(zepsPostprocess_GSMFR_16s) {
    stateful<ZepGSMFRPostprocessState>(
        rng, zeps::u8::zepsPostprocessGetStateSize_GSMFR_16s, zeps::n8::zepsPostprocessGetStateSize_GSMFR_16s,
        zeps::u8::zepsPostprocessInit_GSMFR_16s, zeps::n8::zepsPostprocessInit_GSMFR_16s,
        [](int b, ZepGSMFRPostprocessState* st, Rng& r, V& out) {
            const V x = signal(r, 160);
            out.assign(160, 0x5a5a);
            return (b ? zeps::n8::zepsPostprocess_GSMFR_16s : zeps::u8::zepsPostprocess_GSMFR_16s)(st, x.data(),
                                                                                                   out.data());
        });
}
ZEPS_VARIANT_CHECK(zepsPostprocessGetStateSize_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsPostprocessGetStateSize_GSMFR_16s(nullptr),
              zeps::n8::zepsPostprocessGetStateSize_GSMFR_16s(nullptr));
}
ZEPS_VARIANT_CHECK(zepsPostprocessInit_GSMFR_16s) {
    ASSERT_EQ(zeps::u8::zepsPostprocessInit_GSMFR_16s(nullptr), zeps::n8::zepsPostprocessInit_GSMFR_16s(nullptr));
}

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E post-filter of one 40-sample subframe (ITU-T G.729 Annex E
// E.4.2, Poste): the main-body post-filter (4.2) with the LP order (10 or
// 30), the short-term weighting factors, the harmonic weighting factor and
// the impulse-response length as arguments. Long-term filter on the
// residual of A(z/gamma2) with a delay of 1/8-sample resolution searched
// around the first subframe's lag; gain 1/(1 + 0.5 g) when gammaHarm is
// 0.5, else g weighted by gammaHarm; short-term filter
// A(z/gamma2)/A(z/gamma1) normalised by the sum of its impulse response;
// tilt compensation; gain control (AGC factor 0.9875). Speech Q0, LP
// coefficients Q12, factors Q15, gains Q15 / Q14.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"
#include "g729/g729e_kernels.h"
#include "g729/post_filter_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;
using namespace g729pst;

constexpr int kOrderMax = 30;         // M_BWD
constexpr int kLongHMax = 32;         // LONG_H_ST_E

/// The 428-byte state: residual history, memory of 1/A(z/gamma1), the last
/// 30 input samples, the gain of the previous subframe (Q14).
struct PostFilterState {
    Word16 res2[kMemRes2];
    Word16 mem_stp[kOrderMax];
    Word16 syn[kOrderMax];
    Word16 gain_prec;
    Word16 pad;
};
static_assert(sizeof(PostFilterState) == 428);

/// calc_st_filte: parcor0 of A(z/gamma2)/A(z/gamma1) of order m, and the
/// input of 1/A(z/gamma1) scaled by the inverse of the sum of |h| when above 1.
Word16 calc_st_filte(const Word16* apond2, const Word16* apond1, Word16* sig, int long_h, int m) {
    Word16 h[kLongHMax];
    const Word16 zero[kOrderMax] = {};
    g729e::syn_filte(m, apond1, apond2, h, long_h, zero);
    const Word16 parcor0 = calc_rc0_h(h, long_h);
    scale_by_h_sum(h, long_h, sig);
    return parcor0;
}

}  // namespace

ZepStatus zepsPostFilterGetStateSize_G729E_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(PostFilterState);
    return zepStsNoErr;
}

ZepStatus zepsPostFilterInit_G729E_16s(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    PostFilterState st{};
    st.gain_prec = 16384;
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZepStatus zepsPostFilter_G729E_16s(Zep16s lag, const Zep16s* pSrc, const Zep16s* pLPC, Zep16s* pDst,
                                   Zep16s* pVoicing, Zep16s gamma1, Zep16s gamma2, Zep16s gammaHarm, int lenImpulse,
                                   int order, Zep8u* pState) {
    if (any_null(pSrc, pLPC, pDst, pVoicing, pState)) return zepStsNullPtrErr;
    if (!in_range<Word16>(lag, 18, 143)) return zepStsRangeErr;
    if (gamma1 < 0 || gamma2 < 0 || gammaHarm < 0) return zepStsRangeErr;
    if (!in_range(lenImpulse, 2, kLongHMax)) return zepStsRangeErr;
    if (!in_range(order, 1, kOrderMax)) return zepStsRangeErr;

    PostFilterState st;
    std::memcpy(&st, pState, sizeof st);
    Word16 apond1[kOrderMax + 1], apond2[kLongHMax] = {};
    g729e::weight_az(pLPC, gamma1, order, apond1);
    g729e::weight_az(pLPC, gamma2, order, apond2);

    Word16 syn[kOrderMax + kSubfr];
    std::memcpy(syn, st.syn, sizeof st.syn);
    std::memcpy(syn + kOrderMax, pSrc, kSubfr * sizeof(Word16));
    Word16 res2[kMemRes2 + kSubfr];
    std::memcpy(res2, st.res2, sizeof st.res2);
    g729e::residue(order, apond2, syn + kOrderMax, res2 + kMemRes2, kSubfr);

    Word16 sig_ltp[kSubfrP1];
    Word16 vo = 0;
    pst_ltp(lag, res2 + kMemRes2, sig_ltp + 1, vo, gammaHarm);
    sig_ltp[0] = st.mem_stp[kOrderMax - 1];
    const Word16 parcor0 = calc_st_filte(apond2, apond1, sig_ltp + 1, lenImpulse, order);
    g729e::syn_filte(order, apond1, sig_ltp + 1, sig_ltp + 1, kSubfr, st.mem_stp + kOrderMax - order);
    std::memcpy(st.mem_stp, sig_ltp + 1 + kSubfr - kOrderMax, sizeof st.mem_stp);
    Word16 out[kSubfr];
    filt_mu(sig_ltp, out, parcor0);
    scale_st(syn + kOrderMax, out, st.gain_prec);

    std::memcpy(st.res2, res2 + kSubfr, sizeof st.res2);
    std::memcpy(st.syn, syn + kSubfr, sizeof st.syn);
    std::memcpy(pDst, out, sizeof out);
    *pVoicing = vo;
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

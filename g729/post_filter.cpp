// SPDX-License-Identifier: BSD-3-Clause
// G.729 main-body post-filter of one 40-sample subframe (ITU-T G.729 4.2,
// pst.c): long-term filter on the residual of A(z/0.55) with a delay of
// 1/8-sample resolution searched around the first subframe's decoded lag
// (3 integer delays, then 7 phases with the 4-tap filters and the chosen
// phase again with the 16-tap filter), short-term filter
// A(z/0.55)/A(z/0.7) normalised by the sum of its impulse response, tilt
// compensation from its first reflection coefficient, and gain control
// (AGC factor 0.9875). Speech Q0, LP coefficients Q12, gains Q15 / Q14.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"
#include "g729/post_filter_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;
using namespace g729pst;

constexpr Word16 kGamma1 = 22938;     // GAMMA1_PST, 0.70
constexpr Word16 kGamma2 = 18022;     // GAMMA2_PST, 0.55
constexpr int kLongH = 20;            // LONG_H_ST

/// The 348-byte state: residual history, memory of 1/A(z/0.7), the last 10
/// input samples, the gain of the previous subframe (Q14).
struct PostFilterState {
    Word16 res2[kMemRes2];
    Word16 mem_stp[kOrder];
    Word16 syn[kOrder];
    Word16 gain_prec;
    Word16 pad;
};
static_assert(sizeof(PostFilterState) == 348);

/// calc_st_filt: parcor0 of A(z/0.55)/A(z/0.7), and the input of
/// 1/A(z/0.7) scaled by the inverse of the sum of |h| when above 1.
Word16 calc_st_filt(const Word16* apond2, const Word16* apond1, Word16* sig) {
    Word16 x[kLongH] = {};
    std::memcpy(x, apond2, (kOrder + 1) * sizeof(Word16));
    Word16 h[kLongH];
    const Word16 zero[kOrder] = {};
    syn_filt(apond1, x, h, kLongH, zero);
    const Word16 parcor0 = calc_rc0_h(h, kLongH);
    scale_by_h_sum(h, kLongH, sig);
    return parcor0;
}

}  // namespace

ZepStatus zepsPostFilterGetStateSize_G729_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(PostFilterState);
    return zepStsNoErr;
}

ZepStatus zepsPostFilterInit_G729_16s(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    PostFilterState st{};
    st.gain_prec = 16384;
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

namespace {

/// Post of one subframe; harmonic false skips pst_ltp (G.729 Annex B: SID
/// and untransmitted frames), the residual passing through unchanged.
void post_subframe(Word16 lag, bool harmonic, const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst,
                   Zep16s* pVoicing, Zep8u* pState) {
    PostFilterState st;
    std::memcpy(&st, pState, sizeof st);

    Word16 apond1[kOrder + 1], apond2[kOrder + 1];
    weight_az(pLPC, kGamma1, apond1);
    weight_az(pLPC, kGamma2, apond2);

    Word16 syn[kOrder + kSubfr];
    std::memcpy(syn, st.syn, sizeof st.syn);
    std::memcpy(syn + kOrder, pSrc, kSubfr * sizeof(Word16));
    Word16 res2[kMemRes2 + kSubfr];
    std::memcpy(res2, st.res2, sizeof st.res2);
    residu(apond2, syn + kOrder, res2 + kMemRes2, kSubfr);

    Word16 sig_ltp[kSubfrP1];
    Word16 vo = 0;
    if (harmonic)
        pst_ltp(lag, res2 + kMemRes2, sig_ltp + 1, vo, kGammaHarmMain);
    else
        std::memcpy(sig_ltp + 1, res2 + kMemRes2, kSubfr * sizeof(Word16));
    sig_ltp[0] = st.mem_stp[kOrder - 1];
    const Word16 parcor0 = calc_st_filt(apond2, apond1, sig_ltp + 1);
    syn_filt(apond1, sig_ltp + 1, sig_ltp + 1, kSubfr, st.mem_stp);
    std::memcpy(st.mem_stp, sig_ltp + 1 + kSubfr - kOrder, sizeof st.mem_stp);
    Word16 out[kSubfr];
    filt_mu(sig_ltp, out, parcor0);
    scale_st(syn + kOrder, out, st.gain_prec);

    std::memcpy(st.res2, res2 + kSubfr, sizeof st.res2);
    std::memcpy(st.syn, syn + kSubfr, sizeof st.syn);
    std::memcpy(pDst, out, sizeof out);
    if (pVoicing != nullptr) *pVoicing = vo;
    std::memcpy(pState, &st, sizeof st);
}

}  // namespace

ZepStatus zepsPostFilter_G729_16s(Zep16s lag, const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst,
                                  Zep16s* pVoicing, Zep8u* pState) {
    if (any_null(pLPC, pSrc, pDst, pVoicing, pState)) return zepStsNullPtrErr;
    if (!in_range<Word16>(lag, 18, 143)) return zepStsRangeErr;
    post_subframe(lag, true, pLPC, pSrc, pDst, pVoicing, pState);
    return zepStsNoErr;
}

ZepStatus zepsPostFilterInactive_G729_16s(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, Zep8u* pState) {
    if (any_null(pLPC, pSrc, pDst, pState)) return zepStsNullPtrErr;
    post_subframe(0, false, pLPC, pSrc, pDst, nullptr, pState);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

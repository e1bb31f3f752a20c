// GSM 06.10 4.2.8 to 4.2.10 short-term analysis filter of the full-rate
// encoder and 4.3.3 short-term synthesis filter of the decoder: order-8
// lattice filters with the reflection coefficients rp (Q15) of the four
// interpolation segments of a frame; signals in the Q15 of the
// pre-processed speech, 16-bit saturating arithmetic.
#include "amr/gsmfr_lar.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

struct AnalysisState {
    Word16 LARpp[8];  // decoded LARs of the previous frame
    Word16 u[8];      // lattice memories
};
static_assert(sizeof(AnalysisState) == 32);

struct SynthesisState {
    Word16 LARpp[8];  // decoded LARs of the previous frame
    Word16 v[9];      // lattice memories
    Word16 pad;
};
static_assert(sizeof(SynthesisState) == 36);

/// 4.2.10: d[k] from s[k] through the analysis lattice, in place.
void analysis_lattice(const Word16* rp, Word16* u, Word16* s, int n) {
    for (int k = 0; k < n; ++k) {
        Word16 di = s[k], sav = di;
        for (int i = 0; i < 8; ++i) {
            const Word16 ui = u[i];
            u[i] = sav;
            sav = add(ui, mult_r(rp[i], di));
            di = add(di, mult_r(rp[i], ui));
        }
        s[k] = di;
    }
}

/// 4.3.3: sr[k] from wt[k] through the synthesis lattice.
void synthesis_lattice(const Word16* rrp, Word16* v, const Word16* wt, Word16* sr, int n) {
    for (int k = 0; k < n; ++k) {
        Word16 sri = wt[k];
        for (int i = 7; i >= 0; --i) {
            sri = sub(sri, mult_r(rrp[i], v[i]));
            v[i + 1] = add(v[i], mult_r(rrp[i], sri));
        }
        sr[k] = v[0] = sri;
    }
}

}  // namespace

ZepStatus zepsShortTermAnalysisFilterGetStateSize_GSMFR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(AnalysisState);
    return zepStsNoErr;
}

ZepStatus zepsShortTermAnalysisFilterInit_GSMFR_16s(ZepGSMFRShortTermAnalysisState* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    gsmfr::store_state(pState, AnalysisState{});
    return zepStsNoErr;
}

ZepStatus zepsShortTermAnalysisFilter_GSMFR_16s_I(ZepGSMFRShortTermAnalysisState* pState, const Zep16s* pLARc,
                                                  Zep16s* pSrcDst) {
    if (any_null(pState, pLARc, pSrcDst)) return zepStsNullPtrErr;
    if (!gsmfr::lar_codes_valid(pLARc)) return zepStsOutOfRangeErr;
    AnalysisState st = gsmfr::load_state<AnalysisState>(pState);
    Word16 cur[8], rp[8];
    gsmfr::decode_lar(pLARc, cur);
    Word16* s = pSrcDst;
    for (int seg = 0; seg < 4; ++seg) {
        gsmfr::segment_rp(seg, st.LARpp, cur, rp);
        analysis_lattice(rp, st.u, s, gsmfr::kSegmentLength[seg]);
        s += gsmfr::kSegmentLength[seg];
    }
    std::memcpy(st.LARpp, cur, sizeof cur);
    gsmfr::store_state(pState, st);
    return zepStsNoErr;
}

ZepStatus zepsShortTermSynthesisFilterGetStateSize_GSMFR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(SynthesisState);
    return zepStsNoErr;
}

ZepStatus zepsShortTermSynthesisFilterInit_GSMFR_16s(ZepGSMFRShortTermSynthesisState* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    gsmfr::store_state(pState, SynthesisState{});
    return zepStsNoErr;
}

ZepStatus zepsShortTermSynthesisFilter_GSMFR_16s(ZepGSMFRShortTermSynthesisState* pState, const Zep16s* pLARc,
                                                 const Zep16s* pSrc, Zep16s* pDst) {
    if (any_null(pState, pLARc, pSrc, pDst)) return zepStsNullPtrErr;
    if (!gsmfr::lar_codes_valid(pLARc)) return zepStsOutOfRangeErr;
    SynthesisState st = gsmfr::load_state<SynthesisState>(pState);
    Word16 cur[8], rrp[8];
    gsmfr::decode_lar(pLARc, cur);
    int at = 0;
    for (int seg = 0; seg < 4; ++seg) {
        gsmfr::segment_rp(seg, st.LARpp, cur, rrp);
        synthesis_lattice(rrp, st.v, pSrc + at, pDst + at, gsmfr::kSegmentLength[seg]);
        at += gsmfr::kSegmentLength[seg];
    }
    std::memcpy(st.LARpp, cur, sizeof cur);
    gsmfr::store_state(pState, st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

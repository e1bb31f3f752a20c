// GSM 06.10 4.2.8 to 4.2.10 short-term analysis filter of the full-rate
// encoder and 4.3.3 short-term synthesis filter of the decoder: the LAR
// decoding and interpolation of gsmfr_lar.h, then the order-8 lattice
// filters of gsmfr_lattice.h over the frame (rp in Q15, signals in the Q15
// of the pre-processed speech, 16-bit saturating arithmetic).
#include "amr/gsmfr_lar.h"
#include "amr/gsmfr_lattice.h"
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
    Word16 cur[8], rp[4][8];
    gsmfr::decode_lar(pLARc, cur);
    for (int seg = 0; seg < 4; ++seg) gsmfr::segment_rp(seg, st.LARpp, cur, rp[seg]);
    gsmfr::analysis_frame_simd(rp, st.u, pSrcDst);
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
    Word16 cur[8], rrp[4][8];
    gsmfr::decode_lar(pLARc, cur);
    for (int seg = 0; seg < 4; ++seg) gsmfr::segment_rp(seg, st.LARpp, cur, rrp[seg]);
    gsmfr::synthesis_frame_simd(rrp, st.v, pSrc, pDst);
    std::memcpy(st.LARpp, cur, sizeof cur);
    gsmfr::store_state(pState, st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// GSM 06.10 4.3.4 to 4.3.6 postprocessing of the full-rate decoder:
// de-emphasis (coefficient 28180 in Q15), upscaling by 2 and truncation of
// the output to 13 bits, left-justified in 16-bit PCM.
#include "amr/gsmfr_lar.h"
#include "amr/gsmfr_lattice.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

struct PostprocessState {
    Word16 msr;  // de-emphasis memory
    Word16 pad;
};
static_assert(sizeof(PostprocessState) == 4);

}  // namespace

ZepStatus zepsPostprocessGetStateSize_GSMFR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(PostprocessState);
    return zepStsNoErr;
}

ZepStatus zepsPostprocessInit_GSMFR_16s(ZepGSMFRPostprocessState* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    gsmfr::store_state(pState, PostprocessState{0, 0});
    return zepStsNoErr;
}

ZepStatus zepsPostprocess_GSMFR_16s(ZepGSMFRPostprocessState* pState, const Zep16s* pSrc, Zep16s* pDst) {
    if (any_null(pState, pSrc, pDst)) return zepStsNullPtrErr;
    PostprocessState st = gsmfr::load_state<PostprocessState>(pState);
    Word16 msr = st.msr;
    st.msr = gsmfr::postprocess_frame_simd(msr, pSrc, pDst);
    gsmfr::store_state(pState, st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

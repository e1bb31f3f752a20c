// SPDX-License-Identifier: BSD-3-Clause
// zepsPostFilter_GSMAMR_16s_I with its state, and zepsPostProcess_GSMAMR_16s_I:
// the decoder's formant post-filter with tilt compensation and gain control
// (3GPP TS 26.073 pstfilt.c Post_Filter, preemph.c, agc.c) and the output
// high-pass filter with its doubling (post_pro.c Post_Process). The
// post-filter state is copied in and out, so any byte alignment is accepted.
#include <cstring>

#include "amr/amr_rate.h"
#include "amr/dec_post.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kPostFilterStateSize = 512;
static_assert(sizeof(amr_dec::PostFilterState) <= kPostFilterStateSize);

}  // namespace

ZepStatus zepsPostFilterGetStateSize_GSMAMR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kPostFilterStateSize;
    return zepStsNoErr;
}

ZepStatus zepsPostFilterInit_GSMAMR_16s(ZepPostFilterState_GSMAMR* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    amr_dec::PostFilterState s;
    amr_dec::post_filter_reset(s);
    std::memset(pState, 0, kPostFilterStateSize);
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsPostFilter_GSMAMR_16s_I(ZepPostFilterState_GSMAMR* pState, Zep16s* pSrcDstSpeech,
                                      const Zep16s* pSrcLPC, Zep32s rate) {
    if (any_null(pState, pSrcDstSpeech, pSrcLPC)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    amr_dec::PostFilterState s;
    std::memcpy(&s, pState, sizeof s);
    Word16 syn[amr_dec::kLFrame], az[4 * amr_dec::kMp1];
    for (int i = 0; i < amr_dec::kLFrame; i++) syn[i] = pSrcDstSpeech[i];
    for (int i = 0; i < 4 * amr_dec::kMp1; i++) az[i] = pSrcLPC[i];
    amr_dec::post_filter(s, static_cast<Word16>(mode), syn, az);
    for (int i = 0; i < amr_dec::kLFrame; i++) pSrcDstSpeech[i] = syn[i];
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsPostProcess_GSMAMR_16s_I(Zep16s* pState, Zep16s* pSrcDst, Zep32s len) {
    if (any_null(pState, pSrcDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    amr_dec::PostProcessState s{pState[0], pState[1], pState[2], pState[3], pState[4], pState[5]};
    amr_dec::post_process(s, pSrcDst, len);
    const Zep16s out[6] = {s.y2_hi, s.y2_lo, s.y1_hi, s.y1_lo, s.x0, s.x1};
    for (int i = 0; i < 6; i++) pState[i] = out[i];
    return zepStsNoErr;
}

ZEPS_END_VARIANT

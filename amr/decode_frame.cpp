// GSM-AMR speech decoder frame exports (3GPP TS 26.073 sp_dec.c
// Speech_Decode_Frame with its reset, d_homing.c decoder homing test).
// The state block holds amr_dec::SpeechDecoderState; it is copied in and out
// so that any byte alignment of the caller's block is accepted.
#include <cstring>

#include "amr/amr_rate.h"
#include "amr/dec_frame.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kDecoderStateSize = 2048;
static_assert(sizeof(amr_dec::SpeechDecoderState) <= kDecoderStateSize);

}  // namespace

ZepStatus zepsDecodeGetStateSize_GSMAMR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kDecoderStateSize;
    return zepStsNoErr;
}

ZepStatus zepsDecodeInit_GSMAMR_16s(ZepDecodeState_GSMAMR* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    amr_dec::SpeechDecoderState s;
    std::memset(&s, 0, sizeof s);
    amr_dec::speech_decoder_reset(s);
    std::memset(pState, 0, kDecoderStateSize);
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsDecode_GSMAMR_16s(const Zep16s* pSrcBits, ZepDecodeState_GSMAMR* pState, Zep16s* pDstSpeech,
                                Zep32s rate, Zep32s frameType) {
    if (any_null(pSrcBits, pState, pDstSpeech)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    if (frameType < 0 || frameType > 7) return zepStsRangeErr;
    amr_dec::SpeechDecoderState s;
    std::memcpy(&s, pState, sizeof s);
    Word16 synth[amr_dec::kLFrame];
    amr_dec::speech_decode_frame(s, static_cast<Word16>(mode), pSrcBits, static_cast<Word16>(frameType), synth);
    std::memcpy(pDstSpeech, synth, sizeof synth);
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsDecodeHomingFrameTest_GSMAMR_16s(const Zep16s* pSrcBits, Zep16s* pFlag, Zep32s rate,
                                                Zep32s firstSubframe) {
    if (any_null(pSrcBits, pFlag)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    *pFlag = amr_dec::homing_frame_test(pSrcBits, mode, firstSubframe != 0) ? 1 : 0;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

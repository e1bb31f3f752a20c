// SPDX-License-Identifier: BSD-3-Clause
// zepsEncDTXHandler_GSMAMR_16s: the encoder's DTX hangover state machine,
// 3GPP TS 26.073 dtx_enc.c tx_dtx_handler (in step with the GSM EFR TX DTX
// handler). All counters Q0.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr Word16 kDtxHangConst = 7;             // DTX_HANG_CONST
constexpr Word16 kDtxElapsedFramesThresh = 30;  // DTX_ELAPSED_FRAMES_THRESH

}  // namespace

ZepStatus zepsEncDTXHandler_GSMAMR_16s(Zep16s* pHangoverCount, Zep16s* pElapsedCount, Zep16s* pUsedMode,
                                       Zep16s* pSidFlag, Zep16s vadFlag) {
    if (any_null(pHangoverCount, pElapsedCount, pUsedMode, pSidFlag)) return zepStsNullPtrErr;
    Word16 hangover = *pHangoverCount;
    Word16 elapsed = add(*pElapsedCount, 1);  // saturates: 32767 stays
    Word16 sid = 0;
    if (vadFlag != 0) {
        hangover = kDtxHangConst;
    } else if (hangover == 0) {  // out of decoder analysis hangover
        elapsed = 0;
        *pUsedMode = zepRateDTX;
        sid = 1;
    } else {  // in possible analysis hangover
        hangover = sub(hangover, 1);
        // A short time since the last decoder analysis: no extra hangover.
        if (sub(add(elapsed, hangover), kDtxElapsedFramesThresh) < 0) *pUsedMode = zepRateDTX;
    }
    *pHangoverCount = hangover;
    *pElapsedCount = elapsed;
    *pSidFlag = sid;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

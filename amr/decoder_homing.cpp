// SPDX-License-Identifier: BSD-3-Clause
// zepsDecodeHomingFrameTest_GSMAMR_16s: the decoder homing frame test
// (3GPP TS 26.073 d_homing.c decoder_homing_frame_test and
// decoder_homing_frame_test_first) on the parameters of the serial bits.
#include "amr/amr_rate.h"
#include "amr/dec_param.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsDecodeHomingFrameTest_GSMAMR_16s(const Zep16s* pSrcBits, Zep16s* pFlag, Zep32s rate,
                                                Zep32s firstSubframe) {
    if (any_null(pSrcBits, pFlag)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    *pFlag = amr_dec::homing_frame_test(pSrcBits, mode, firstSubframe != 0) ? 1 : 0;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// zepsGainControl_GSMAMR_16s_I: scaling of a signal to the energy of a
// reference without smoothing (3GPP TS 26.073 agc.c agc2), used by the
// decoder on the pitch-sharpened excitation.
#include "amr/dec_excitation.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsGainControl_GSMAMR_16s_I(const Zep16s* pSrcRef, Zep16s* pSrcDst, Zep32s len) {
    if (any_null(pSrcRef, pSrcDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    amr_dec::agc2(pSrcRef, pSrcDst, len);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

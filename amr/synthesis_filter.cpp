// SPDX-License-Identifier: BSD-3-Clause
// zepsSynthesisFilter_GSMAMR_16s: the LP synthesis filter 1/A(z) (3GPP TS
// 26.073 syn_filt.c Syn_filt) with the saturation report the decoder uses to
// rescale its excitation (dec_amr.c). A(z) Q12, signals Q0.
#include "amr/dec_excitation.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsSynthesisFilter_GSMAMR_16s(const Zep16s* pSrcLPC, const Zep16s* pSrc, Zep16s* pDst, Zep16s* pMem,
                                         Zep32s len, Zep32s update) {
    if (any_null(pSrcLPC, pSrc, pDst, pMem)) return zepStsNullPtrErr;
    if (len < amr_dec::kM || len > amr_dec::kLFrame) return zepStsSizeErr;
    Word16 a[amr_dec::kMp1], y[amr_dec::kLFrame];
    for (int i = 0; i < amr_dec::kMp1; i++) a[i] = pSrcLPC[i];
    const bool ovf = amr_dec::syn_filt(a, pSrc, y, len, pMem, update != 0);
    for (int i = 0; i < len; i++) pDst[i] = y[i];
    return ovf ? zepStsOverflow : zepStsNoErr;
}

ZEPS_END_VARIANT

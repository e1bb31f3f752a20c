// SPDX-License-Identifier: BSD-3-Clause
// zepsParamToBits_GSMAMR_16s: the encoder's parameters to serial bits
// (3GPP TS 26.073 prm2bits.c Prm2bits), one bit a word, MSB first.
#include "amr/amr_rate.h"
#include "amr/dec_param.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsParamToBits_GSMAMR_16s(const Zep16s* pSrcParam, Zep16s* pDstBits, Zep32s rate) {
    if (any_null(pSrcParam, pDstBits)) return zepStsNullPtrErr;
    const int mode = rate == 25 ? int{amr_dec::MRDTX} : amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    const std::int16_t* widths = amr_dec::bitno(mode);
    for (int i = 0; i < amr_dec::kPrmNo[mode]; i++)
        for (int b = widths[i] - 1; b >= 0; b--) *pDstBits++ = static_cast<Zep16s>((pSrcParam[i] >> b) & 1);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

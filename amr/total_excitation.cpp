// SPDX-License-Identifier: BSD-3-Clause
// zepsTotalExcitation_GSMAMR_16s_I and zepsSharpenedExcitation_GSMAMR_16s:
// the decoder's total excitation and its pitch-sharpened excitation (3GPP TS
// 26.073 dec_amr.c Decoder_amr). Excitation Q0, innovation Q13 (Q12 for
// MR122), gains as in dec_gain.h. Both run as plain integers where the
// operands prove that no basic operator saturates (amr/dec_excitation.h).
#include "amr/amr_rate.h"
#include "amr/dec_excitation.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsTotalExcitation_GSMAMR_16s_I(Zep16s* pSrcDstExc, const Zep16s* pSrcCode, Zep16s pitchFac,
                                           Zep16s gainCode, Zep32s tmpShift) {
    if (any_null(pSrcDstExc, pSrcCode)) return zepStsNullPtrErr;
    if (tmpShift < 1 || tmpShift > 2) return zepStsRangeErr;
    amr_dec::excitation_mix(pSrcDstExc, pSrcCode, pitchFac, gainCode, static_cast<int>(tmpShift), amr_dec::kLSubfr);
    return zepStsNoErr;
}

ZepStatus zepsSharpenedExcitation_GSMAMR_16s(const Zep16s* pSrcExc, Zep16s* pDst, Zep16s pitSharp, Zep16s gainPit,
                                             Zep32s rate) {
    using namespace amr_dec;
    if (any_null(pSrcExc, pDst)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    sharpened_excitation(pSrcExc, pDst, pitSharp, gainPit, mode == MR122 ? 1 : 0, kLSubfr);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

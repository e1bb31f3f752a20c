// SPDX-License-Identifier: BSD-3-Clause
// zepsAlgebraicCodebookSearch_GSMAMR_16s: the GSM-AMR innovative codebook
// search of every mode (3GPP TS 26.073 cbsearch.c), dispatched by rate
// code. MR102 and MR122 add the pitch contribution to the impulse response
// and the code vector here (sharpening factor 2 sharp resp. 2 gain_pit,
// Q14 -> Q15); the other modes do it inside their codebook routine.
#include "amr/amr_rate.h"
#include "amr/cb_search.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsAlgebraicCodebookSearch_GSMAMR_16s(const Zep16s* pSrcTarget, const Zep16s* pSrcImpulse, Zep16s T0,
                                                 Zep16s pitchSharp, Zep16s gainPit, const Zep16s* pSrcLtpResidual,
                                                 Zep16s* pDstCode, Zep16s* pDstFiltCode, Zep16s* pDstIndex, Zep32s rate,
                                                 Zep32s subframe) {
    using namespace amr_cb;
    if (any_null(pSrcTarget, pSrcImpulse, pSrcLtpResidual, pDstCode, pDstFiltCode, pDstIndex)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    if (T0 < 1) return zepStsRangeErr;
    if (subframe < 0 || subframe > 3) return zepStsRangeErr;

    PaddedResponse h;
    for (int i = 0; i < kLCode; i++) {
        h.buf[i] = 0;
        h.buf[kLCode + i] = pSrcImpulse[i];
    }
    Word16 x[kLCode], res2[kLCode], code[kLCode], y[kLCode];
    for (int i = 0; i < kLCode; i++) {
        x[i] = pSrcTarget[i];
        res2[i] = pSrcLtpResidual[i];
    }
    Word16 index[10];
    int count = 2;
    switch (mode) {
        case 0: case 1:
            index[0] = code_2i40_9bits(static_cast<Word16>(subframe), x, h, T0, pitchSharp, code, y, &index[1]);
            break;
        case 2: index[0] = code_2i40_11bits(x, h, T0, pitchSharp, code, y, &index[1]); break;
        case 3: index[0] = code_3i40_14bits(x, h, T0, pitchSharp, code, y, &index[1]); break;
        case 4: case 5: index[0] = code_4i40_17bits(x, h, T0, pitchSharp, code, y, &index[1]); break;
        default: {
            // MR102 and MR122: the pitch contribution in the response, the search, then in the code
            const Word16 sharp = shl(mode == 6 ? pitchSharp : gainPit, 1);
            add_pitch_contribution(h.h(), T0, sharp);
            if (mode == 6) {
                code_8i40_31bits(x, res2, h, code, y, index);
                count = 7;
            } else {
                code_10i40_35bits(x, res2, h, code, y, index);
                count = 10;
            }
            add_pitch_contribution(code, T0, sharp);
            break;
        }
    }
    for (int i = 0; i < kLCode; i++) {
        pDstCode[i] = code[i];
        pDstFiltCode[i] = y[i];
    }
    for (int i = 0; i < count; i++) pDstIndex[i] = index[i];
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D gain decoding (ITU-T G.729 Annex D D.5.3, Dec_gain_6k):
// the pitch gain (Q14) and the fixed-codebook gain (Q1) from the 6-bit
// conjugate-structure index (3 + 3 bits) of the 6.4 kbit/s codebooks
// (corrections Q14, halved to Q13) and the main body's MA predictor. An
// erased subframe is decoded as in the main body (zepsDecodeGainErased_G729_16s).
#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"
#include "g729/g729d_tables.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsDecodeGain_G729D_16s(Zep16s index, const Zep16s* pCode, Zep16s* pPastQuaEn, Zep16s* pDstGain) {
    if (any_null(pCode, pPastQuaEn, pDstGain)) return zepStsNullPtrErr;
    if (!in_range<Word16>(index, 0, 63)) return zepStsOutOfRangeErr;
    const Word16 index1 = imap1_6k[index >> 3];
    const Word16 index2 = imap2_6k[index & 7];
    Word16 gcode0, exp_gcode0;
    g729c::gain_predict(pPastQuaEn, pCode, gcode0, exp_gcode0);
    const Word32 L_gbk12 = L_shr(L_add(gbk1_6k[index1][1], gbk2_6k[index2][1]), 1);  // Q13
    Word32 L_acc = L_mult(extract_l(L_gbk12), gcode0);
    L_acc = L_shl(L_acc, add(negate(exp_gcode0), -13 - 1 + 1 + 16));
    pDstGain[0] = add(gbk1_6k[index1][0], gbk2_6k[index2][0]);
    pDstGain[1] = extract_h(L_acc);
    g729c::gain_update(pPastQuaEn, L_gbk12);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

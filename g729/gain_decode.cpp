// SPDX-License-Identifier: BSD-3-Clause
// G.729 gain decoding (ITU-T G.729 4.1.5, Dec_gain): the pitch gain (Q14)
// and the fixed-codebook gain (Q1) from the 7-bit conjugate-structure index
// (3 bits first stage, 4 bits second stage) and the MA predictor; on an
// erased frame (4.4.2) the previous gains are attenuated (0.9 with a 0.9
// ceiling, 0.98) and the predictor memory gets the mean energy minus 4 dB.
#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsDecodeGain_G729_16s(Zep16s index, const Zep16s* pCode, Zep16s* pPastQuaEn, Zep16s* pDstGain) {
    if (any_null(pCode, pPastQuaEn, pDstGain)) return zepStsNullPtrErr;
    if (!in_range<Word16>(index, 0, 127)) return zepStsOutOfRangeErr;
    const Word16 index1 = imap1[index >> 4];
    const Word16 index2 = imap2[index & 15];
    Word16 gcode0, exp_gcode0;
    g729c::gain_predict(pPastQuaEn, pCode, gcode0, exp_gcode0);
    const Word32 L_gbk12 = L_add(gbk1[index1][1], gbk2[index2][1]);
    pDstGain[0] = add(gbk1[index1][0], gbk2[index2][0]);
    pDstGain[1] = g729c::code_gain(L_gbk12, gcode0, exp_gcode0);
    // Gain_update on the decoded rows: the memory shifts, the newest entry
    // comes from the rows' table (their Log2 computed once).
    for (int i = 3; i > 0; --i) pPastQuaEn[i] = pPastQuaEn[i - 1];
    pPastQuaEn[0] = gbk12_qua_en[index1][index2];
    return zepStsNoErr;
}

ZepStatus zepsDecodeGainErased_G729_16s(Zep16s* pPastQuaEn, Zep16s* pSrcDstGain) {
    if (any_null(pPastQuaEn, pSrcDstGain)) return zepStsNullPtrErr;
    Word16 gp = mult(pSrcDstGain[0], 29491);
    if (gp > 29491) gp = 29491;
    pSrcDstGain[0] = gp;
    pSrcDstGain[1] = mult(pSrcDstGain[1], 32111);
    g729c::gain_update_erasure(pPastQuaEn);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

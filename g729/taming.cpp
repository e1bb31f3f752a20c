// SPDX-License-Identifier: BSD-3-Clause
// G.729 taming procedure (ITU-T G.729 3.9 / taming.c, identical in Annex
// A): a running worst-case estimate of the excitation error in four zones
// of 40 samples (32-bit values Q14, newest first, reset to 0x00004000 each
// by the caller); when the zones a lag reaches exceed 60000 (Q14) the
// pitch gain is limited.
#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr Word32 kThreshErr = 983040000;  // L_THRESH_ERR, 60000 in Q14

/// L_exc_err[i] * gain_pit (Q14), doubled, plus 1.0 in Q14.
inline Word32 scaled_error(Word32 err, Word16 gain_pit) {
    const DPF d = L_Extract(err);
    return L_add(0x00004000, L_shl(Mpy_32_16(d.hi, d.lo, gain_pit), 1));
}

}  // namespace

ZepStatus zepsTamingTest_G729_16s(const Zep32s* pExcErr, const Zep16s* pSrcDelay, Zep16s* pTaming) {
    if (any_null(pExcErr, pSrcDelay, pTaming)) return zepStsNullPtrErr;
    if (!in_range<Word16>(pSrcDelay[0], 1, 144) || !in_range<Word16>(pSrcDelay[1], -1, 1) ||
        (pSrcDelay[0] == 144 && pSrcDelay[1] > 0))
        return zepStsRangeErr;
    const Word16 t1 = pSrcDelay[1] > 0 ? add(pSrcDelay[0], 1) : pSrcDelay[0];
    Word16 i = sub(t1, 40 + 10);
    if (i < 0) i = 0;
    const Word16 zone1 = tab_zone[i];
    const Word16 zone2 = tab_zone[add(t1, 10 - 2)];
    Word32 L_maxloc = -1;
    for (int z = zone2; z >= zone1; --z)
        if (L_sub(pExcErr[z], L_maxloc) > 0) L_maxloc = pExcErr[z];
    *pTaming = L_sub(L_maxloc, kThreshErr) > 0 ? 1 : 0;
    return zepStsNoErr;
}

ZepStatus zepsTamingUpdate_G729_16s(Zep16s gainPitch, Zep16s lag, Zep32s* pSrcDstExcErr) {
    if (any_null(pSrcDstExcErr)) return zepStsNullPtrErr;
    if (!in_range<Word16>(lag, 1, 144)) return zepStsRangeErr;
    Word32 L_worst = -1;
    const Word16 n = sub(lag, 40);
    if (n < 0) {
        Word32 t = scaled_error(pSrcDstExcErr[0], gainPitch);
        if (L_sub(t, L_worst) > 0) L_worst = t;
        t = scaled_error(t, gainPitch);
        if (L_sub(t, L_worst) > 0) L_worst = t;
    } else {
        const Word16 zone1 = tab_zone[n];
        const Word16 zone2 = tab_zone[sub(lag, 1)];
        for (int z = zone1; z <= zone2; ++z) {
            const Word32 t = scaled_error(pSrcDstExcErr[z], gainPitch);
            if (L_sub(t, L_worst) > 0) L_worst = t;
        }
    }
    for (int z = 3; z >= 1; --z) pSrcDstExcErr[z] = pSrcDstExcErr[z - 1];
    pSrcDstExcErr[0] = L_worst;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

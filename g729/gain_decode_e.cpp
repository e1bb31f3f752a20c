// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E gains of an erased 11.8 kbit/s subframe (E.4.4, the erasure
// branch of Dec_gaine): for the first two erased subframes the pitch gain
// is 1.0 (stationary backward-mode signal) or 0.95 and the code gain is
// kept; from the third on both gains are the previous ones times the muting
// factor, which then decays by 0.995 per subframe (stationary, after 10
// erased subframes) or 0.98. The gain predictor's memory gets the erasure
// update (mean minus 4 dB, at least -14336). Pitch gains Q14, code gains
// Q1, muting factor Q15, past quantised energies Q10.
#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsDecodeGainErased_G729E_16s(Zep16s* pPastQuaEn, Zep16s* pSrcDstGain, Zep16s* pSrcDstMuting,
                                         int countBfi, int stationary) {
    if (any_null(pPastQuaEn, pSrcDstGain, pSrcDstMuting)) return zepStsNullPtrErr;
    if (countBfi < 0) return zepStsRangeErr;
    if (stationary != 0 && stationary != 1) return zepStsRangeErr;
    const Word16 gp_mem = pSrcDstGain[0], gc_mem = pSrcDstGain[1];
    Word16 muting = *pSrcDstMuting;
    if (countBfi < 2) {
        pSrcDstGain[0] = stationary != 0 ? Word16{16384} : Word16{15564};
        pSrcDstGain[1] = gc_mem;
    } else {
        pSrcDstGain[0] = mult(gp_mem, muting);
        pSrcDstGain[1] = mult(gc_mem, muting);
        if (stationary != 0) {
            if (countBfi > 10) muting = mult(muting, 32604);
        } else {
            muting = mult(muting, 32112);
        }
    }
    *pSrcDstMuting = muting;
    g729c::gain_update_erasure(pPastQuaEn);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

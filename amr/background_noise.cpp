// SPDX-License-Identifier: BSD-3-Clause
// zepsBackgroundNoiseDetect_GSMAMR_16s: the decoder's background-noise
// source characteristic detector (3GPP TS 26.073 bgnscd.c Bgn_scd).
// Frame energies as the high word of 4 x the sum of squares, pitch gains Q14.
#include "amr/dec_excitation.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsBackgroundNoiseDetect_GSMAMR_16s(Zep16s* pState, const Zep16s* pSrcLTPGainHist,
                                               const Zep16s* pSrcSpeech, Zep16s* pVoicedHangover,
                                               Zep16s* pInBackgroundNoise) {
    if (any_null(pState, pSrcLTPGainHist, pSrcSpeech, pVoicedHangover, pInBackgroundNoise)) return zepStsNullPtrErr;
    amr_dec::BgnScdState st;
    for (int i = 0; i < 60; i++) st.frameEnergyHist[i] = pState[i];
    st.bgHangover = pState[60];
    Word16 voiced = *pVoicedHangover;
    const Word16 in_noise = amr_dec::bgn_scd(st, pSrcLTPGainHist, pSrcSpeech, voiced);
    for (int i = 0; i < 60; i++) pState[i] = st.frameEnergyHist[i];
    pState[60] = st.bgHangover;
    *pVoicedHangover = voiced;
    *pInBackgroundNoise = in_noise;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

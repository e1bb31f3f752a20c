// SPDX-License-Identifier: BSD-3-Clause
// zepsCbGainAverage_GSMAMR_16s: the decoder's code gain smoothing in
// stationary background noise (3GPP TS 26.073 c_g_aver.c Cb_gain_average).
// Gains as decoded (Q1), LSFs normalised, mixing factor Q13.
#include "amr/amr_rate.h"
#include "amr/dec_excitation.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsCbGainAverage_GSMAMR_16s(Zep16s* pState, Zep16s gainCode, const Zep16s* pSrcLSF,
                                       const Zep16s* pSrcLSFMean, Zep16s bfi, Zep16s prevBF, Zep16s pdfi,
                                       Zep16s prevPDF, Zep16s inBackgroundNoise, Zep16s voicedHangover,
                                       Zep16s* pGainMix, Zep32s rate) {
    if (any_null(pState, pSrcLSF, pSrcLSFMean, pGainMix)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    for (int i = 0; i < amr_dec::kM; i++)
        if (pSrcLSFMean[i] < 1) return zepStsOutOfRangeErr;
    amr_dec::CbGainAverageState st;
    for (int i = 0; i < 7; i++) st.cbGainHistory[i] = pState[i];
    st.hangVar = pState[7];
    st.hangCount = pState[8];
    const Word16 mix = amr_dec::cb_gain_average(st, static_cast<Word16>(mode), gainCode, pSrcLSF, pSrcLSFMean, bfi,
                                                prevBF, pdfi, prevPDF, inBackgroundNoise, voicedHangover);
    for (int i = 0; i < 7; i++) pState[i] = st.cbGainHistory[i];
    pState[7] = st.hangVar;
    pState[8] = st.hangCount;
    *pGainMix = mix;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

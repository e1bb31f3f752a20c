// SPDX-License-Identifier: BSD-3-Clause
// zepsDecodeGain_GSMAMR_16s, zepsDecodePitchGain_GSMAMR_16s, zepsConcealPitchGain_GSMAMR_16s and
// zepsConcealCodeGain_GSMAMR_16s: gain decoding of every mode with the MA
// prediction of the code gain, and the concealment of lost gains (3GPP TS
// 26.073 dec_gain.c Dec_gain, d_gain_p.c d_gain_pitch, d_gain_c.c
// d_gain_code, gc_pred.c, ec_gains.c). Pitch gain Q14, code gain Q1 (MR122:
// Q0 scaled by 2), predictor memory Q10.
#include "amr/amr_rate.h"
#include "amr/dec_gain.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

amr_dec::GainPredState load_pred(const Zep16s* p) {
    amr_dec::GainPredState s;
    for (int i = 0; i < 4; i++) {
        s.past_qua_en[i] = p[i];
        s.past_qua_en_MR122[i] = p[4 + i];
    }
    return s;
}
void store_pred(const amr_dec::GainPredState& s, Zep16s* p) {
    for (int i = 0; i < 4; i++) {
        p[i] = s.past_qua_en[i];
        p[4 + i] = s.past_qua_en_MR122[i];
    }
}

/// Index count: the joint index, or the code gain index of MR795 and MR122.
void index_counts(int mode, int& n0) {
    switch (mode) {
        case amr_dec::MR475: n0 = 256; break;
        case amr_dec::MR515: case amr_dec::MR59: n0 = 64; break;
        case amr_dec::MR795: case amr_dec::MR122: n0 = 32; break;
        default: n0 = 128; break;
    }
}

}  // namespace

ZepStatus zepsDecodeGain_GSMAMR_16s(Zep16s* pPastQuaEn, const Zep16s* pSrcCode, const Zep16s* pSrcIndex,
                                    Zep16s* pGainPitch, Zep16s* pGainCode, Zep32s rate, Zep32s evenSubframe) {
    using namespace amr_dec;
    if (any_null(pPastQuaEn, pSrcCode, pSrcIndex, pGainPitch, pGainCode)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    int n0;
    index_counts(mode, n0);
    if (pSrcIndex[0] < 0 || pSrcIndex[0] >= n0) return zepStsOutOfRangeErr;
    GainPredState pred = load_pred(pPastQuaEn);
    if (mode == MR795 || mode == MR122) {
        *pGainCode = d_gain_code(pred, static_cast<Word16>(mode), pSrcIndex[0], pSrcCode);
    } else {
        Word16 gain_pit, gain_code;
        dec_gain(pred, static_cast<Word16>(mode), pSrcIndex[0], pSrcCode, evenSubframe != 0 ? 1 : 0, gain_pit, gain_code);
        *pGainPitch = gain_pit;
        *pGainCode = gain_code;
    }
    store_pred(pred, pPastQuaEn);
    return zepStsNoErr;
}

ZepStatus zepsDecodePitchGain_GSMAMR_16s(Zep16s index, Zep16s* pGainPitch, Zep32s rate) {
    if (any_null(pGainPitch)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode != amr_dec::MR795 && mode != amr_dec::MR122) return zepStsRangeErr;
    if (index < 0 || index > 15) return zepStsOutOfRangeErr;
    *pGainPitch = amr_dec::d_gain_pitch(static_cast<Word16>(mode), index);
    return zepStsNoErr;
}

ZepStatus zepsConcealPitchGain_GSMAMR_16s(Zep16s* pECState, Zep16s* pGainPitch, Zep16s state, Zep16s bfi,
                                          Zep16s prevBF) {
    using namespace amr_dec;
    if (any_null(pECState, pGainPitch)) return zepStsNullPtrErr;
    if (state < 0 || state > 6) return zepStsRangeErr;
    EcGainPitchState st;
    for (int i = 0; i < 5; i++) st.pbuf[i] = pECState[i];
    st.past_gain_pit = pECState[5];
    st.prev_gp = pECState[6];
    Word16 g = bfi != 0 ? ec_gain_pitch(st, state) : *pGainPitch;
    ec_gain_pitch_update(st, bfi, prevBF, g);
    for (int i = 0; i < 5; i++) pECState[i] = st.pbuf[i];
    pECState[5] = st.past_gain_pit;
    pECState[6] = st.prev_gp;
    *pGainPitch = g;
    return zepStsNoErr;
}

ZepStatus zepsConcealCodeGain_GSMAMR_16s(Zep16s* pECState, Zep16s* pPastQuaEn, Zep16s* pGainCode, Zep16s state,
                                         Zep16s bfi, Zep16s prevBF) {
    using namespace amr_dec;
    if (any_null(pECState, pPastQuaEn, pGainCode)) return zepStsNullPtrErr;
    if (state < 0 || state > 6) return zepStsRangeErr;
    EcGainCodeState st;
    for (int i = 0; i < 5; i++) st.gbuf[i] = pECState[i];
    st.past_gain_code = pECState[5];
    st.prev_gc = pECState[6];
    GainPredState pred = load_pred(pPastQuaEn);
    Word16 g = bfi != 0 ? ec_gain_code(st, pred, state) : *pGainCode;
    ec_gain_code_update(st, bfi, prevBF, g);
    for (int i = 0; i < 5; i++) pECState[i] = st.gbuf[i];
    pECState[5] = st.past_gain_code;
    pECState[6] = st.prev_gc;
    store_pred(pred, pPastQuaEn);
    *pGainCode = g;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

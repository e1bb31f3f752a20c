// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR comfort-noise decoder exports (3GPP TS 26.073 dtx_dec.c:
// dtx_dec_reset, rx_dtx_handler, dtx_dec, dtx_dec_activity_update). The
// state block holds amr_dec::DtxDecState; it is copied in and out so that
// any byte alignment of the caller's block is accepted. Log energies Q11
// (log2), LSFs normalised, LSPs Q15, LP coefficients Q12.
#include <cstring>

#include "amr/amr_rate.h"
#include "amr/dec_dtx.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kDtxStateSize = 512;
static_assert(sizeof(amr_dec::DtxDecState) <= kDtxStateSize);

amr_dec::DtxDecState load(const ZepDTXDecodeState_GSMAMR* p) {
    amr_dec::DtxDecState s;
    std::memcpy(&s, p, sizeof s);
    return s;
}
void store(ZepDTXDecodeState_GSMAMR* p, const amr_dec::DtxDecState& s) { std::memcpy(p, &s, sizeof s); }

/// The SID parameters dtx_dec reads lie inside their widths (3, 8, 9, 9, 6 bits).
bool sid_param_valid(const Zep16s* prm) {
    constexpr Zep16s kLimit[5] = {8, 256, 512, 512, 64};
    for (int i = 0; i < 5; i++)
        if (prm[i] < 0 || prm[i] >= kLimit[i]) return false;
    return true;
}

}  // namespace

ZepStatus zepsDTXDecodeGetStateSize_GSMAMR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kDtxStateSize;
    return zepStsNoErr;
}

ZepStatus zepsDTXDecodeInit_GSMAMR_16s(ZepDTXDecodeState_GSMAMR* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    amr_dec::DtxDecState s;
    std::memset(&s, 0, sizeof s);
    amr_dec::dtx_dec_reset(s);
    std::memset(pState, 0, kDtxStateSize);
    store(pState, s);
    return zepStsNoErr;
}

ZepStatus zepsRxDTXHandler_GSMAMR_16s(ZepDTXDecodeState_GSMAMR* pState, Zep32s frameType, Zep16s* pNewState,
                                      Zep16s* pPrevState) {
    if (any_null(pState, pNewState, pPrevState)) return zepStsNullPtrErr;
    if (frameType < 0 || frameType > 7) return zepStsRangeErr;
    amr_dec::DtxDecState s = load(pState);
    const Word16 prev = s.dtxGlobalState;
    const Word16 next = amr_dec::rx_dtx_handler(s, static_cast<Word16>(frameType));
    store(pState, s);
    *pNewState = next;
    *pPrevState = prev;
    return zepStsNoErr;
}

ZepStatus zepsDTXDecode_GSMAMR_16s(ZepDTXDecodeState_GSMAMR* pState, Zep16s* pMemSyn, Zep16s* pPastRq,
                                   Zep16s* pPastLSFQ, Zep16s* pPastQuaEn, Zep16s* pCbGainAver,
                                   const Zep16s* pSrcParam, Zep16s* pDstSpeech, Zep16s* pDstLPC, Zep16s* pDstLSP,
                                   Zep32s newState, Zep32s rate) {
    using namespace amr_dec;
    if (any_null(pState, pMemSyn, pPastRq, pPastLSFQ, pPastQuaEn, pCbGainAver, pSrcParam, pDstSpeech, pDstLPC,
                 pDstLSP))
        return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    if (newState != DTX && newState != DTX_MUTE) return zepStsRangeErr;
    DtxDecState s = load(pState);
    if (s.sid_frame != 0 && s.valid_data != 0 && !sid_param_valid(pSrcParam)) return zepStsOutOfRangeErr;

    Word16 mem_syn[kM];
    LsfState lsf;
    GainPredState pred;
    CbGainAverageState aver;
    for (int i = 0; i < kM; i++) {
        mem_syn[i] = pMemSyn[i];
        lsf.past_r_q[i] = pPastRq[i];
        lsf.past_lsf_q[i] = pPastLSFQ[i];
    }
    for (int i = 0; i < 4; i++) {
        pred.past_qua_en[i] = pPastQuaEn[i];
        pred.past_qua_en_MR122[i] = pPastQuaEn[4 + i];
    }
    for (int i = 0; i < 7; i++) aver.cbGainHistory[i] = pCbGainAver[i];
    aver.hangVar = pCbGainAver[7];
    aver.hangCount = pCbGainAver[8];
    Word16 prm[5];
    for (int i = 0; i < 5; i++) prm[i] = pSrcParam[i];
    Word16 synth[kLFrame], a_t[4 * kMp1], lsp[kM];
    dtx_dec(s, mem_syn, lsf, pred, aver, static_cast<Word16>(newState), static_cast<Word16>(mode), prm, synth, a_t);
    amr_dtx::lsf_to_lsp(lsf.past_lsf_q, lsp);
    s.dtxGlobalState = static_cast<Word16>(newState);

    store(pState, s);
    for (int i = 0; i < kM; i++) {
        pMemSyn[i] = mem_syn[i];
        pPastRq[i] = lsf.past_r_q[i];
        pPastLSFQ[i] = lsf.past_lsf_q[i];
        pDstLSP[i] = lsp[i];
    }
    for (int i = 0; i < 4; i++) {
        pPastQuaEn[i] = pred.past_qua_en[i];
        pPastQuaEn[4 + i] = pred.past_qua_en_MR122[i];
    }
    for (int i = 0; i < 7; i++) pCbGainAver[i] = aver.cbGainHistory[i];
    pCbGainAver[7] = aver.hangVar;
    pCbGainAver[8] = aver.hangCount;
    for (int i = 0; i < kLFrame; i++) pDstSpeech[i] = synth[i];
    for (int i = 0; i < 4 * kMp1; i++) pDstLPC[i] = a_t[i];
    return zepStsNoErr;
}

ZepStatus zepsDTXDecodeUpdate_GSMAMR_16s(ZepDTXDecodeState_GSMAMR* pState, const Zep16s* pSrcLSF,
                                         const Zep16s* pSrcSpeech) {
    if (any_null(pState, pSrcLSF, pSrcSpeech)) return zepStsNullPtrErr;
    amr_dec::DtxDecState s = load(pState);
    amr_dec::dtx_dec_activity_update(s, pSrcLSF, pSrcSpeech);
    s.dtxGlobalState = amr_dec::SPEECH;
    store(pState, s);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

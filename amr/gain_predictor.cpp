// SPDX-License-Identifier: BSD-3-Clause
// Access to the MA gain predictor memories inside the GSM-AMR gain
// quantiser state (3GPP TS 26.073 gc_pred.c, gc_predState): the DTX encoder
// (dtx_enc.c dtx_enc) overwrites them with the comfort-noise energy of each
// new SID frame. past_qua_en Q10 (log2), past_qua_en_MR122 Q10 (20 log10).
// The state block is copied in and out, so any byte alignment is accepted.
#include <cstring>

#include "amr/enc_gain.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsGainQuantGetPredictor_GSMAMR_16s(const ZepGainQuantState_GSMAMR* pState, Zep16s* pPastQuaEn,
                                               Zep16s* pPastQuaEnMR122) {
    if (any_null(pState, pPastQuaEn, pPastQuaEnMR122)) return zepStsNullPtrErr;
    amr_enc::GainQuantState st;
    std::memcpy(&st, pState, sizeof st);
    for (int i = 0; i < 4; i++) {
        pPastQuaEn[i] = st.pred.past_qua_en[i];
        pPastQuaEnMR122[i] = st.pred.past_qua_en_MR122[i];
    }
    return zepStsNoErr;
}

ZepStatus zepsGainQuantSetPredictor_GSMAMR_16s(ZepGainQuantState_GSMAMR* pState, const Zep16s* pPastQuaEn,
                                               const Zep16s* pPastQuaEnMR122) {
    if (any_null(pState, pPastQuaEn, pPastQuaEnMR122)) return zepStsNullPtrErr;
    amr_enc::GainQuantState st;
    std::memcpy(&st, pState, sizeof st);
    for (int i = 0; i < 4; i++) {
        st.pred.past_qua_en[i] = pPastQuaEn[i];
        st.pred.past_qua_en_MR122[i] = pPastQuaEnMR122[i];
    }
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

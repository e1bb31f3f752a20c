// SPDX-License-Identifier: BSD-3-Clause
// zepsPhaseDispersion_GSMAMR_16s: adaptive anti-sparseness processing of the
// innovation and the total excitation of the decoder's synthesis (3GPP TS
// 26.073 ph_disp.c ph_disp with ph_disp_lock/ph_disp_release).
#include "amr/amr_rate.h"
#include "amr/dec_excitation.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsPhaseDispersion_GSMAMR_16s(Zep16s* pState, Zep16s* pSrcDstExc, Zep16s* pSrcDstInno, Zep16s cbGain,
                                         Zep16s ltpGain, Zep16s pitchFac, Zep32s tmpShift, Zep32s rate,
                                         Zep32s lockFull) {
    using namespace amr_dec;
    if (any_null(pState, pSrcDstExc, pSrcDstInno)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    if (tmpShift < 1 || tmpShift > 2) return zepStsRangeErr;
    PhDispState st;
    for (int i = 0; i < 5; i++) st.gainMem[i] = pState[i];
    st.prevState = pState[5];
    st.prevCbGain = pState[6];
    st.onset = pState[7];
    st.lockFull = lockFull != 0 ? 1 : 0;
    ph_disp(st, static_cast<Word16>(mode), pSrcDstExc, cbGain, ltpGain, pSrcDstInno, pitchFac,
            static_cast<Word16>(tmpShift));
    for (int i = 0; i < 5; i++) pState[i] = st.gainMem[i];
    pState[5] = st.prevState;
    pState[6] = st.prevCbGain;
    pState[7] = st.onset;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

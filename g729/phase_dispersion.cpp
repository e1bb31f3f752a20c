// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D adaptive phase dispersion (ITU-T G.729 Annex D D.5.4,
// Syn_filt64 before its synthesis filter, and Update64): at 6.4 kbit/s the
// fixed-codebook contribution of the excitation is circularly convolved
// with one of three all-pass responses (low, medium or no dispersion),
// chosen from the pitch gain with a hysteresis over the last six pitch
// gains and an onset detector on the code gain. Excitation Q0, code Q13,
// code gain Q1, pitch gain Q14, responses Q15.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729d_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kSubfr = 40;
constexpr Word16 kGain06 = 9830;   // 0.6 in Q14
constexpr Word16 kGain09 = 14745;  // 0.9 in Q14

/// The 20-byte state: the last six pitch gains (newest first), the previous
/// dispersion state (0 low .. 2 none), the previous code gain, the onset
/// counter, and two bytes of padding.
struct PhaseDispersionState {
    Word16 gain_mem[6];
    Word16 prev_state;
    Word16 prev_cb_gain;
    Word16 onset;
    Word16 pad;
};
static_assert(sizeof(PhaseDispersionState) == 20);

PhaseDispersionState load(const Zep8u* p) {
    PhaseDispersionState st;
    std::memcpy(&st, p, sizeof st);
    return st;
}

void push_gain(PhaseDispersionState& st, Word16 ltp_gain) {
    for (int i = 5; i > 0; --i) st.gain_mem[i] = st.gain_mem[i - 1];
    st.gain_mem[0] = ltp_gain;
}

/// The dispersion state of this subframe (0 strong, 1 medium, 2 none),
/// with the onset and hysteresis rules; updates the state block.
Word16 dispersion_state(PhaseDispersionState& st, Word16 cb_gain, Word16 ltp_gain) {
    Word16 d = ltp_gain < kGain09 ? (ltp_gain > kGain06 ? Word16{1} : Word16{0}) : Word16{2};
    push_gain(st, ltp_gain);
    if (shr(cb_gain, 1) > st.prev_cb_gain) {
        st.onset = 2;
    } else {
        st.onset = static_cast<Word16>(st.onset - 1);
        if (st.onset < 0) st.onset = 0;
    }
    int low = 0;
    for (int i = 0; i < 6; ++i)
        if (st.gain_mem[i] < kGain06) ++low;
    if (low > 2 && st.onset == 0) d = 0;
    if (d > add(st.prev_state, 1) && st.onset == 0) --d;
    if (st.onset != 0 && d < 2) ++d;
    st.prev_state = d;
    st.prev_cb_gain = cb_gain;
    return d;
}

}  // namespace

ZepStatus zepsPhaseDispersionGetStateSize_G729D(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(PhaseDispersionState);
    return zepStsNoErr;
}

ZepStatus zepsPhaseDispersionInit_G729D(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    const PhaseDispersionState st{};
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZepStatus zepsPhaseDispersion_G729D_16s(const Zep16s* pSrcExc, Zep16s gainCode, Zep16s gainPitch, const Zep16s* pCode,
                                        Zep16s* pDst, Zep8u* pState) {
    if (any_null(pSrcExc, pCode, pDst, pState)) return zepStsNullPtrErr;
    PhaseDispersionState st = load(pState);
    // The adaptive part: the excitation less the code-gain-scaled innovation.
    Word16 ltp_ex[kSubfr], inno[kSubfr];
    for (int i = 0; i < kSubfr; ++i) {
        ltp_ex[i] = sub(pSrcExc[i], round_fx(L_shl(L_mult(gainCode, pCode[i]), 1)));
        inno[i] = pCode[i];
    }
    const Word16 d = dispersion_state(st, gainCode, gainPitch);
    // Circular convolution of every nonzero innovation sample with the response.
    Word16 out[kSubfr] = {};
    if (d == 2) {
        for (int p = 0; p < kSubfr; ++p)
            if (inno[p] != 0) out[p] = add(out[p], mult(inno[p], 32767));
    } else {
        const Word16* imp = d == 1 ? ph_imp_mid : ph_imp_low;
        for (int p = 0; p < kSubfr; ++p) {
            if (inno[p] == 0) continue;
            for (int i = p; i < kSubfr; ++i) out[i] = add(out[i], mult(inno[p], imp[i - p]));
            for (int i = 0; i < p; ++i) out[i] = add(out[i], mult(inno[p], imp[kSubfr - p + i]));
        }
    }
    for (int i = 0; i < kSubfr; ++i) pDst[i] = add(ltp_ex[i], round_fx(L_shl(L_mult(gainCode, out[i]), 1)));
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZepStatus zepsPhaseDispersionUpdate_G729D_16s(Zep16s gainPitch, Zep16s gainCode, Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    PhaseDispersionState st = load(pState);
    push_gain(st, gainPitch);
    st.prev_state = 2;
    st.prev_cb_gain = gainCode;
    st.onset = 0;
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR gain decoding with its MA prediction and error concealment
// (3GPP TS 26.073 gc_pred.c, d_gain_p.c, d_gain_c.c, dec_gain.c,
// ec_gains.c, gmed_n.c). Pitch gains Q14, code gains Q1 (Q0 scaled for
// MR122), predictor memories Q10.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_state.h"
#include "amr/mac_bound.h"
#include "common/fixed_math.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline constexpr Word16 kMinEnergy = -14336;      ///< MIN_ENERGY, Q10
inline constexpr Word16 kMinEnergyMR122 = -2381;  ///< MIN_ENERGY_MR122, Q10

/// gmed_n: the median of n (odd, <= 9) values, by the reference's selection.
inline Word16 gmed_n(const Word16* ind, int n) {
    Word16 tmp[9], tmp2[9];
    int ix = 0;
    for (int i = 0; i < n; i++) tmp2[i] = ind[i];
    for (int i = 0; i < n; i++) {
        Word16 max = -32767;
        for (int j = 0; j < n; j++)
            if (tmp2[j] >= max) {
                max = tmp2[j];
                ix = j;
            }
        tmp2[ix] = -32768;
        tmp[i] = static_cast<Word16>(ix);
    }
    return ind[tmp[n >> 1]];
}

inline void gc_pred_reset(GainPredState& st) {
    for (int i = 0; i < 4; i++) {
        st.past_qua_en[i] = kMinEnergy;
        st.past_qua_en_MR122[i] = kMinEnergyMR122;
    }
}

/// gc_pred: predicted code gain as exponent and fraction (the decoder never
/// needs the innovation energy outputs of MR795).
inline void gc_pred(const GainPredState& st, Word16 mode, const Word16* code, Word16& exp_gcode0,
                    Word16& frac_gcode0) {
    static constexpr Word16 pred[4] = {5571, 4751, 2785, 1556};
    static constexpr Word16 pred_MR122[4] = {44, 37, 22, 12};
    constexpr Word32 kMeanEnerMR122 = 783741;
    Word32 ener_code = energy_sat(code, kLSubfr);  // the L_mac chain of squares, clamped
    Word16 exp, frac;
    if (mode == MR122) {
        ener_code = L_mult(round_fx(ener_code), 26214);
        Log2(ener_code, exp, frac);
        ener_code = L_Comp(sub(exp, 30), frac);
        Word32 ener = kMeanEnerMR122;
        for (int i = 0; i < 4; i++) ener = L_mac(ener, st.past_qua_en_MR122[i], pred_MR122[i]);
        ener = L_shr(L_sub(ener, ener_code), 1);
        L_Extract(ener, exp_gcode0, frac_gcode0);
        return;
    }
    const Word16 exp_code = norm_l(ener_code);
    ener_code = shl_sat32(ener_code, exp_code);
    Log2_norm(ener_code, exp_code, exp, frac);
    Word32 L_tmp = Mpy_32_16(exp, frac, -24660);
    if (mode == MR795) L_tmp = L_mac(L_tmp, 17062, 64);
    else if (mode == MR74) L_tmp = L_mac(L_tmp, 32588, 32);
    else if (mode == MR67) L_tmp = L_mac(L_tmp, 32268, 32);
    else L_tmp = L_mac(L_tmp, 16678, 64);  // MR102 and the rest
    L_tmp = shl_sat32(L_tmp, 10);
    for (int i = 0; i < 4; i++) L_tmp = L_mac(L_tmp, pred[i], st.past_qua_en[i]);
    const Word16 gcode0 = extract_h(L_tmp);
    L_tmp = L_mult(gcode0, mode == MR74 ? Word16{5439} : Word16{5443});
    L_tmp = L_shr(L_tmp, 8);
    L_Extract(L_tmp, exp_gcode0, frac_gcode0);
}

/// gc_pred_update
inline void gc_pred_update(GainPredState& st, Word16 qua_ener_MR122, Word16 qua_ener) {
    for (int i = 3; i > 0; i--) {
        st.past_qua_en[i] = st.past_qua_en[i - 1];
        st.past_qua_en_MR122[i] = st.past_qua_en_MR122[i - 1];
    }
    st.past_qua_en_MR122[0] = qua_ener_MR122;
    st.past_qua_en[0] = qua_ener;
}

/// gc_pred_average_limited
inline void gc_pred_average_limited(const GainPredState& st, Word16& ener_avg_MR122, Word16& ener_avg) {
    Word16 av = 0;
    for (int i = 0; i < 4; i++) av = add(av, st.past_qua_en_MR122[i]);
    av = mult(av, 8192);
    ener_avg_MR122 = av < kMinEnergyMR122 ? kMinEnergyMR122 : av;
    av = 0;
    for (int i = 0; i < 4; i++) av = add(av, st.past_qua_en[i]);
    av = mult(av, 8192);
    ener_avg = av < kMinEnergy ? kMinEnergy : av;
}

/// d_gain_pitch: scalar pitch gain of MR122 (2 LSBs cleared) and MR795.
inline Word16 d_gain_pitch(Word16 mode, Word16 index) {
    const Word16 g = zeps::amr_dec_tab::qua_gain_pitch[index];
    return mode == MR122 ? shl(shr(g, 2), 2) : g;
}

/// d_gain_code: scalar code gain of MR122 and MR795 with the predictor update.
inline Word16 d_gain_code(GainPredState& pred, Word16 mode, Word16 index, const Word16* code) {
    Word16 exp, frac, gain_code;
    gc_pred(pred, mode, code, exp, frac);
    const std::int16_t* p = &zeps::amr_dec_tab::qua_gain_code[add(add(index, index), index)];
    if (mode == MR122) {
        Word16 gcode0 = extract_l(Pow2(exp, frac));
        gcode0 = shl(gcode0, 4);
        gain_code = shl(mult(gcode0, p[0]), 1);
    } else {
        const Word16 gcode0 = extract_l(Pow2(14, frac));
        Word32 L_tmp = L_mult(p[0], gcode0);
        L_tmp = L_shr(L_tmp, sub(9, exp));
        gain_code = extract_h(L_tmp);
    }
    gc_pred_update(pred, p[1], p[2]);
    return gain_code;
}

/// Dec_gain: joint pitch and code gain of MR475 (per subframe pair), MR515,
/// MR59 (lowrates table), MR67, MR74, MR102 (highrates table).
inline void dec_gain(GainPredState& pred, Word16 mode, Word16 index, const Word16* code, Word16 evenSubfr,
                     Word16& gain_pit, Word16& gain_cod) {
    namespace t = zeps::amr_dec_tab;
    index = shl(index, 2);
    Word16 g_code, qua_ener_MR122, qua_ener;
    if (mode == MR102 || mode == MR74 || mode == MR67) {
        const std::int16_t* p = &t::table_gain_highrates[index];
        gain_pit = p[0];
        g_code = p[1];
        qua_ener_MR122 = p[2];
        qua_ener = p[3];
    } else if (mode == MR475) {
        index = add(index, shl(sub(1, evenSubfr), 1));
        const std::int16_t* p = &t::table_gain_MR475[index];
        gain_pit = p[0];
        g_code = p[1];
        Word16 exp, frac;
        Log2(L_deposit_l(g_code), exp, frac);
        exp = sub(exp, 12);
        qua_ener_MR122 = add(shr_r(frac, 5), shl(exp, 10));
        const Word32 L_tmp = Mpy_32_16(exp, frac, 24660);
        qua_ener = round_fx(L_shl(L_tmp, 13));
    } else {
        const std::int16_t* p = &t::table_gain_lowrates[index];
        gain_pit = p[0];
        g_code = p[1];
        qua_ener_MR122 = p[2];
        qua_ener = p[3];
    }
    Word16 exp, frac;
    gc_pred(pred, mode, code, exp, frac);
    const Word16 gcode0 = extract_l(Pow2(14, frac));
    Word32 L_tmp = L_mult(g_code, gcode0);
    L_tmp = L_shr(L_tmp, sub(10, exp));
    gain_cod = extract_h(L_tmp);
    gc_pred_update(pred, qua_ener_MR122, qua_ener);
}

inline void ec_gain_pitch_reset(EcGainPitchState& st) {
    for (Word16& v : st.pbuf) v = 1640;
    st.past_gain_pit = 0;
    st.prev_gp = 16384;
}
inline void ec_gain_code_reset(EcGainCodeState& st) {
    for (Word16& v : st.gbuf) v = 1;
    st.past_gain_code = 0;
    st.prev_gc = 1;
}

/// ec_gain_pitch: concealed pitch gain, min(median, past) attenuated by state.
inline Word16 ec_gain_pitch(const EcGainPitchState& st, Word16 state) {
    static constexpr Word16 pdown[7] = {32767, 32112, 32112, 26214, 9830, 6553, 6553};
    Word16 tmp = gmed_n(st.pbuf, 5);
    if (tmp > st.past_gain_pit) tmp = st.past_gain_pit;
    return mult(tmp, pdown[state]);
}

/// ec_gain_pitch_update
inline void ec_gain_pitch_update(EcGainPitchState& st, Word16 bfi, Word16 prev_bf, Word16& gain_pitch) {
    if (bfi == 0) {
        if (prev_bf != 0 && gain_pitch > st.prev_gp) gain_pitch = st.prev_gp;
        st.prev_gp = gain_pitch;
    }
    st.past_gain_pit = gain_pitch > 16384 ? Word16{16384} : gain_pitch;
    for (int i = 1; i < 5; i++) st.pbuf[i - 1] = st.pbuf[i];
    st.pbuf[4] = st.past_gain_pit;
}

/// ec_gain_code: concealed code gain; the predictor memory takes its average.
inline Word16 ec_gain_code(const EcGainCodeState& st, GainPredState& pred, Word16 state) {
    static constexpr Word16 cdown[7] = {32767, 32112, 32112, 32112, 32112, 32112, 22937};
    Word16 tmp = gmed_n(st.gbuf, 5);
    if (tmp > st.past_gain_code) tmp = st.past_gain_code;
    tmp = mult(tmp, cdown[state]);
    Word16 qua_ener_MR122, qua_ener;
    gc_pred_average_limited(pred, qua_ener_MR122, qua_ener);
    gc_pred_update(pred, qua_ener_MR122, qua_ener);
    return tmp;
}

/// ec_gain_code_update
inline void ec_gain_code_update(EcGainCodeState& st, Word16 bfi, Word16 prev_bf, Word16& gain_code) {
    if (bfi == 0) {
        if (prev_bf != 0 && gain_code > st.prev_gc) gain_code = st.prev_gc;
        st.prev_gc = gain_code;
    }
    st.past_gain_code = gain_code;
    for (int i = 1; i < 5; i++) st.gbuf[i - 1] = st.gbuf[i];
    st.gbuf[4] = gain_code;
}

}  // namespace amr_dec
ZEPS_END_VARIANT

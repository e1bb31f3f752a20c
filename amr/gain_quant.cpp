// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR encoder gain quantisation export (3GPP TS 26.073 gain_q.c
// gainQuant with gc_pred.c, g_code.c, q_gain_c.c, calc_en.c, qua_gain.c).
// The state block holds amr_enc::GainQuantState, copied in and out so that
// any byte alignment of the caller's block is accepted. Gains: pitch Q14,
// code Q1; predictor energies Q10.
#include <cstring>

#include "amr/amr_rate.h"
#include "amr/enc_gain.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kStateSize = 96;
static_assert(sizeof(amr_enc::GainQuantState) <= kStateSize);
constexpr int kL = amr_enc::kLSubfr;

}  // namespace

ZepStatus zepsGainQuantGetStateSize_GSMAMR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kStateSize;
    return zepStsNoErr;
}

ZepStatus zepsGainQuantInit_GSMAMR_16s(ZepGainQuantState_GSMAMR* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    amr_enc::GainQuantState s;
    amr_enc::gain_quant_reset(s);
    std::memset(pState, 0, kStateSize);
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsGainQuant_GSMAMR_16s(ZepGainQuantState_GSMAMR* pState, const Zep16s* pSrcRes, const Zep16s* pSrcExc,
                                   const Zep16s* pSrcCode, const Zep16s* pSrcTarget, const Zep16s* pSrcTarget2,
                                   const Zep16s* pSrcFltAdpt, const Zep16s* pSrcFltCode, const Zep16s* pSrcGCoeff,
                                   Zep16s* pGains, Zep16s* pDstIndex, Zep16s evenSubframe, Zep16s gpLimit,
                                   Zep32s rate) {
    if (any_null(pState, pSrcRes, pSrcExc, pSrcCode, pSrcTarget, pSrcTarget2, pSrcFltAdpt, pSrcFltCode, pSrcGCoeff,
                 pGains, pDstIndex))
        return zepStsNullPtrErr;
    const int m = amr_rate::mode_of_rate(rate);
    if (m < 0) return zepStsRangeErr;
    const auto mode = static_cast<Word16>(m);
    amr_enc::GainQuantState st;
    std::memcpy(&st, pState, sizeof st);
    Word16 res[kL], exc[kL], code[kL], xn[kL], xn2[kL], y1[kL], y2[kL], g_coeff[4];
    for (int i = 0; i < kL; i++) {
        res[i] = pSrcRes[i];
        exc[i] = pSrcExc[i];
        code[i] = pSrcCode[i];
        xn[i] = pSrcTarget[i];
        xn2[i] = pSrcTarget2[i];
        y1[i] = pSrcFltAdpt[i];
        y2[i] = pSrcFltCode[i];
    }
    for (int i = 0; i < 4; i++) g_coeff[i] = pSrcGCoeff[i];
    Word16 exp_gcode0, frac_gcode0, qua_ener_MR122, qua_ener, index[2] = {0, 0};
    Word16 gain_pit = pGains[0], gain_cod = 0, sf0_gain_pit = 0, sf0_gain_cod = 0;
    Word16 frac_coeff[5], exp_coeff[5], cod_gain_frac = 0, cod_gain_exp = 0;
    if (mode == amr_enc::MR475) {
        if (evenSubframe != 0) {
            st.pred_unq = st.pred;
            amr_enc::gc_pred(st.pred_unq, mode, code, st.sf0_exp_gcode0, st.sf0_frac_gcode0);
            amr_enc::calc_filt_energies(mode, xn, xn2, y1, y2, g_coeff, st.sf0_frac_coeff, st.sf0_exp_coeff,
                                        cod_gain_frac, cod_gain_exp);
            gain_cod = shl(cod_gain_frac, add(cod_gain_exp, 1));
            amr_enc::calc_target_energy(xn, st.sf0_exp_target_en, st.sf0_frac_target_en);
            amr_enc::mr475_update_unq_pred(st.pred_unq, st.sf0_exp_gcode0, st.sf0_frac_gcode0, cod_gain_exp,
                                           cod_gain_frac);
        } else {
            Word16 exp_en, frac_en;
            amr_enc::gc_pred(st.pred_unq, mode, code, exp_gcode0, frac_gcode0);
            amr_enc::calc_filt_energies(mode, xn, xn2, y1, y2, g_coeff, frac_coeff, exp_coeff, cod_gain_frac,
                                        cod_gain_exp);
            amr_enc::calc_target_energy(xn, exp_en, frac_en);
            index[0] = amr_enc::mr475_gain_quant(st, code, exp_gcode0, frac_gcode0, exp_coeff, frac_coeff, exp_en,
                                                 frac_en, gpLimit, sf0_gain_pit, sf0_gain_cod, gain_pit, gain_cod);
        }
    } else {
        amr_enc::gc_pred(st.pred, mode, code, exp_gcode0, frac_gcode0);
        if (mode == amr_enc::MR122) {
            gain_cod = amr_enc::g_code(xn2, y2);
            index[0] = amr_enc::q_gain_code(mode, exp_gcode0, frac_gcode0, gain_cod, qua_ener_MR122, qua_ener);
        } else {
            amr_enc::calc_filt_energies(mode, xn, xn2, y1, y2, g_coeff, frac_coeff, exp_coeff, cod_gain_frac,
                                        cod_gain_exp);
            if (mode == amr_enc::MR795) {
                Word16 exp_en, frac_en;
                amr_enc::code_energy(code, exp_en, frac_en);
                amr_enc::mr795_gain_quant(st, res, exc, code, frac_coeff, exp_coeff, exp_en, frac_en, exp_gcode0,
                                          frac_gcode0, cod_gain_frac, cod_gain_exp, gpLimit, gain_pit, gain_cod,
                                          qua_ener_MR122, qua_ener, index);
            } else {
                index[0] = amr_enc::qua_gain(mode, exp_gcode0, frac_gcode0, frac_coeff, exp_coeff, gpLimit, gain_pit,
                                             gain_cod, qua_ener_MR122, qua_ener);
            }
        }
        amr_enc::gc_pred_update(st.pred, qua_ener_MR122, qua_ener);
    }
    std::memcpy(pState, &st, sizeof st);
    pGains[0] = gain_pit;
    pGains[1] = gain_cod;
    pGains[2] = sf0_gain_pit;
    pGains[3] = sf0_gain_cod;
    if (mode != amr_enc::MR475 || evenSubframe == 0) pDstIndex[0] = index[0];
    if (mode == amr_enc::MR795) pDstIndex[1] = index[1];
    return zepStsNoErr;
}

ZEPS_END_VARIANT

/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR comfort-noise decoding (3GPP TS 26.073 dtx_dec.c rx_dtx_handler,
// dtx_dec, dtx_dec_activity_update; b_cn_cod.c; a_refl.c). Log energies Q11
// (log2), LSFs normalised, LSPs Q15.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_excitation.h"
#include "amr/dec_lpc.h"
#include "amr/dec_state.h"
#include "amr/dtx_enc_log_energy.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline constexpr Word32 kPnInitialSeed = 0x70816958;
inline constexpr Word16 kDtxHangConst = 7;
inline constexpr Word16 kDtxElapsedFramesThresh = 24 + 7 - 1;
inline constexpr Word16 kDtxMaxEmptyThresh = 50;

inline void dtx_dec_reset(DtxDecState& st) {
    using zeps::amr_dec_tab::lsp_init_data;
    st.since_last_sid = 0;
    st.true_sid_period_inv = 1 << 13;
    st.log_en = 3500;
    st.old_log_en = 3500;
    st.L_pn_seed_rx = kPnInitialSeed;
    for (int i = 0; i < kM; i++) st.lsp[i] = st.lsp_old[i] = lsp_init_data[i];
    st.lsf_hist_ptr = 0;
    st.log_pg_mean = 0;
    st.log_en_hist_ptr = 0;
    for (int j = 0; j < 8; j++)
        for (int i = 0; i < kM; i++) st.lsf_hist[j * kM + i] = zeps::amr_dtx_tab::mean_lsf_5[i];
    for (Word16& v : st.lsf_hist_mean) v = 0;
    for (Word16& v : st.log_en_hist) v = st.log_en;
    st.log_en_adjust = 0;
    st.dtxHangoverCount = kDtxHangConst;
    st.decAnaElapsedCount = 32767;
    st.sid_frame = 0;
    st.valid_data = 0;
    st.dtxHangoverAdded = 0;
    st.dtxGlobalState = DTX;
    st.data_updated = 0;
}

/// pseudonoise: no_bits bits of the comfort-noise shift register.
inline Word16 pseudonoise(Word32& shift_reg, int no_bits) {
    Word16 noise_bits = 0;
    for (int i = 0; i < no_bits; i++) {
        Word16 Sn = static_cast<Word16>(shift_reg & 1);
        if ((shift_reg & 0x10000000L) != 0) Sn = static_cast<Word16>(Sn ^ 1);
        noise_bits = static_cast<Word16>(shl(noise_bits, 1) | (extract_l(shift_reg) & 1));
        shift_reg = L_shr(shift_reg, 1);
        if (Sn & 1) shift_reg = shift_reg | 0x40000000L;
    }
    return noise_bits;
}

/// build_CN_code: 10 random pulses of +-4096.
inline void build_cn_code(Word32& seed, Word16* cod) {
    for (int i = 0; i < kLSubfr; i++) cod[i] = 0;
    for (int k = 0; k < 10; k++) {
        Word16 i = pseudonoise(seed, 2);
        i = shr(extract_l(L_mult(i, 10)), 1);
        i = add(i, static_cast<Word16>(k));
        const Word16 j = pseudonoise(seed, 1);
        cod[i] = j > 0 ? 4096 : -4096;
    }
}

/// build_CN_param: random parameters for a lost frame of mode with the given widths.
inline void build_cn_param(Word16& seed, int n_param, const std::int16_t* param_size, Word16* parm) {
    seed = extract_l(L_add(L_shr(L_mult(seed, 31821), 1), 13849L));
    const std::int16_t* p = &zeps::amr_dec_tab::window_200_40[seed & 0x7F];
    for (int i = 0; i < n_param; i++)
        parm[i] = static_cast<Word16>(p[i] & ~(0xFFFF << param_size[i]));
}

/// A_Refl: reflection coefficients (Q15) of a[1..10] (Q12) by the backward
/// Levinson recursion; all zero when unstable.
inline void a_refl(const Word16* a, Word16* refl) {
    Word16 aState[kM], bState[kM];
    for (int i = 0; i < kM; i++) aState[i] = a[i];
    for (int i = kM - 1; i >= 0; i--) {
        if (abs_s(aState[i]) >= 4096) goto unstable;
        refl[i] = shl(aState[i], 3);
        {
            Word32 L_acc = L_sub(MAX_32, L_mult(refl[i], refl[i]));
            const Word16 normShift = norm_l(L_acc);
            const Word16 scale = sub(15, normShift);
            L_acc = L_shl(L_acc, normShift);
            const Word16 normProd = round_fx(L_acc);
            const Word16 mul = div_s(16384, normProd);
            for (int j = 0; j < i; j++) {
                L_acc = L_deposit_h(aState[j]);
                L_acc = L_msu(L_acc, refl[i], aState[i - j - 1]);
                const Word16 temp = round_fx(L_acc);
                const Word32 L_temp = L_shr_r(L_mult(mul, temp), scale);
                if (L_abs(L_temp) > 32767) goto unstable;
                bState[j] = extract_l(L_temp);
            }
            for (int j = 0; j < i; j++) aState[j] = bState[j];
        }
    }
    return;
unstable:
    for (int i = 0; i < kM; i++) refl[i] = 0;
}

/// rx_dtx_handler: the decoder's DTX state machine; returns the new state.
inline Word16 rx_dtx_handler(DtxDecState& st, Word16 frame_type) {
    Word16 newState;
    const bool inDtx = st.dtxGlobalState == DTX || st.dtxGlobalState == DTX_MUTE;
    if (frame_type == RX_SID_FIRST || frame_type == RX_SID_UPDATE || frame_type == RX_SID_BAD ||
        (inDtx && (frame_type == RX_NO_DATA || frame_type == RX_SPEECH_BAD || frame_type == RX_ONSET))) {
        newState = DTX;
        if (st.dtxGlobalState == DTX_MUTE && (frame_type == RX_SID_BAD || frame_type == RX_SID_FIRST ||
                                             frame_type == RX_ONSET || frame_type == RX_NO_DATA))
            newState = DTX_MUTE;
        st.since_last_sid = add(st.since_last_sid, 1);
        if (frame_type != RX_SID_UPDATE && st.since_last_sid > kDtxMaxEmptyThresh) newState = DTX_MUTE;
    } else {
        newState = SPEECH;
        st.since_last_sid = 0;
    }
    if (st.data_updated == 0 && frame_type == RX_SID_UPDATE) st.decAnaElapsedCount = 0;
    st.decAnaElapsedCount = add(st.decAnaElapsedCount, 1);
    st.dtxHangoverAdded = 0;
    Word16 encState = SPEECH;
    if (frame_type == RX_SID_FIRST || frame_type == RX_SID_UPDATE || frame_type == RX_SID_BAD ||
        frame_type == RX_ONSET || frame_type == RX_NO_DATA) {
        encState = DTX;
        if (frame_type == RX_NO_DATA && newState == SPEECH) encState = SPEECH;
    }
    if (encState == SPEECH) {
        st.dtxHangoverCount = kDtxHangConst;
    } else if (st.decAnaElapsedCount > kDtxElapsedFramesThresh) {
        st.dtxHangoverAdded = 1;
        st.decAnaElapsedCount = 0;
        st.dtxHangoverCount = 0;
    } else if (st.dtxHangoverCount == 0) {
        st.decAnaElapsedCount = 0;
    } else {
        st.dtxHangoverCount = sub(st.dtxHangoverCount, 1);
    }
    if (newState != SPEECH) {
        st.sid_frame = 0;
        st.valid_data = 0;
        if (frame_type == RX_SID_FIRST) {
            st.sid_frame = 1;
        } else if (frame_type == RX_SID_UPDATE) {
            st.sid_frame = 1;
            st.valid_data = 1;
        } else if (frame_type == RX_SID_BAD) {
            st.sid_frame = 1;
            st.dtxHangoverAdded = 0;
        }
    }
    return newState;
}

/// The averages of the history taken when the encoder's hangover ends
/// (the first part of dtx_dec): mean LSP, mean log energy and the LSF
/// variability vectors.
inline void dtx_dec_hangover_average(DtxDecState& st, Word16 mode) {
    using zeps::amr_dec_tab::lsf_hist_mean_scale;
    st.log_en_adjust = zeps::amr_dec_tab::dtx_log_en_adjust[mode];
    Word16 ptr = add(st.lsf_hist_ptr, kM);
    if (ptr == 80) ptr = 0;
    for (int i = 0; i < kM; i++) st.lsf_hist[ptr + i] = st.lsf_hist[st.lsf_hist_ptr + i];
    ptr = add(st.log_en_hist_ptr, 1);
    if (ptr == 8) ptr = 0;
    st.log_en_hist[ptr] = st.log_en_hist[st.log_en_hist_ptr];
    st.log_en = 0;
    Word32 L_lsf[kM] = {};
    for (int i = 0; i < 8; i++) {
        st.log_en = add(st.log_en, shr(st.log_en_hist[i], 3));
        for (int j = 0; j < kM; j++) L_lsf[j] = L_add(L_lsf[j], L_deposit_l(st.lsf_hist[i * kM + j]));
    }
    Word16 lsf[kM];
    for (int j = 0; j < kM; j++) lsf[j] = extract_l(L_shr(L_lsf[j], 3));
    amr_dtx::lsf_to_lsp(lsf, st.lsp);
    st.log_en = sub(st.log_en, st.log_en_adjust);
    for (int i = 0; i < 80; i++) st.lsf_hist_mean[i] = st.lsf_hist[i];
    for (int i = 0; i < kM; i++) {
        Word32 L_lsf_mean = 0;
        for (int j = 0; j < 8; j++) L_lsf_mean = L_add(L_lsf_mean, L_deposit_l(st.lsf_hist_mean[i + j * kM]));
        const Word16 lsf_mean = extract_l(L_shr(L_lsf_mean, 3));
        for (int j = 0; j < 8; j++) {
            Word16& v = st.lsf_hist_mean[i + j * kM];
            v = sub(v, lsf_mean);
            v = mult(v, lsf_hist_mean_scale[i]);
            const bool negative = v < 0;
            v = abs_s(v);
            if (v > 655) v = add(655, shr(sub(v, 655), 2));
            if (v > 1310) v = 1310;
            if (negative) v = static_cast<Word16>(-v);
        }
    }
}

/// The SID update of dtx_dec: new parameters from a SID frame and the gain
/// predictor memories set from the comfort-noise energy.
inline void dtx_dec_sid_update(DtxDecState& st, LsfState& lsfState, GainPredState& pred, const Word16* parm) {
    for (int i = 0; i < kM; i++) st.lsp_old[i] = st.lsp[i];
    st.old_log_en = st.log_en;
    if (st.valid_data != 0) {
        Word16 tmp_int_length = st.since_last_sid;
        st.since_last_sid = 0;
        if (tmp_int_length > 32) tmp_int_length = 32;
        if (tmp_int_length >= 2) st.true_sid_period_inv = div_s(1 << 10, shl(tmp_int_length, 10));
        else st.true_sid_period_inv = 1 << 14;
        for (int i = 0; i < kM; i++) lsfState.past_r_q[i] = zeps::amr_dtx_tab::past_rq_init[parm[0] * kM + i];
        d_plsf_3(lsfState, MRDTX, 0, &parm[1], st.lsp);
        for (Word16& v : lsfState.past_r_q) v = 0;
        const Word16 log_en_index = parm[4];
        st.log_en = shl(log_en_index, 11 - 2);
        st.log_en = sub(st.log_en, 2560 * 2);
        if (log_en_index == 0) st.log_en = MIN_16;
        if (st.data_updated == 0 || st.dtxGlobalState == SPEECH) {
            for (int i = 0; i < kM; i++) st.lsp_old[i] = st.lsp[i];
            st.old_log_en = st.log_en;
        }
    }
    Word16 ma_pred_init = sub(shr(st.log_en, 1), 9000);
    if (ma_pred_init > 0) ma_pred_init = 0;
    if (ma_pred_init < -14436) ma_pred_init = -14436;
    const Word16 mr122 = mult(5443, ma_pred_init);
    for (int i = 0; i < 4; i++) {
        pred.past_qua_en[i] = ma_pred_init;
        pred.past_qua_en_MR122[i] = mr122;
    }
}

/// dtx_dec: one comfort-noise frame: synth[160], A_t[44] for the post-filter.
inline void dtx_dec(DtxDecState& st, Word16* mem_syn, LsfState& lsfState, GainPredState& pred,
                    CbGainAverageState& aver, Word16 new_state, Word16 mode, const Word16* parm, Word16* synth,
                    Word16* A_t) {
    if (st.dtxHangoverAdded != 0 && st.sid_frame != 0) dtx_dec_hangover_average(st, mode);
    if (st.sid_frame != 0) dtx_dec_sid_update(st, lsfState, pred, parm);

    st.log_en_adjust = add(mult(st.log_en_adjust, 29491),
                           shr(mult(shl(zeps::amr_dec_tab::dtx_log_en_adjust[mode], 5), 3277), 5));
    Word16 int_fac = shl(add(1, st.since_last_sid), 10);
    int_fac = mult(int_fac, st.true_sid_period_inv);
    if (int_fac > 1024) int_fac = 1024;
    int_fac = shl(int_fac, 4);
    Word32 L_log_en_int = L_mult(int_fac, st.log_en);
    Word16 lsp_int[kM];
    for (int i = 0; i < kM; i++) lsp_int[i] = mult(int_fac, st.lsp[i]);
    int_fac = sub(16384, int_fac);
    L_log_en_int = L_mac(L_log_en_int, int_fac, st.old_log_en);
    for (int i = 0; i < kM; i++) {
        lsp_int[i] = add(lsp_int[i], mult(int_fac, st.lsp_old[i]));
        lsp_int[i] = shl(lsp_int[i], 1);
    }
    Word16 lsf_variab_factor = sub(st.log_pg_mean, 2457);
    lsf_variab_factor = sub(4096, mult(lsf_variab_factor, 9830));
    if (lsf_variab_factor > 4096) lsf_variab_factor = 4096;
    if (lsf_variab_factor < 0) lsf_variab_factor = 0;
    lsf_variab_factor = shl(lsf_variab_factor, 3);
    const Word16 lsf_variab_index = pseudonoise(st.L_pn_seed_rx, 3);
    Word16 lsf_int[kM], lsf_int_variab[kM], lsp_int_variab[kM];
    amr_dtx::lsp_to_lsf(lsp_int, lsf_int);
    for (int i = 0; i < kM; i++)
        lsf_int_variab[i] = add(lsf_int[i], mult(lsf_variab_factor, st.lsf_hist_mean[i + lsf_variab_index * kM]));
    amr_dtx::reorder_lsf(lsf_int, amr_dtx::kLsfGap);
    amr_dtx::reorder_lsf(lsf_int_variab, amr_dtx::kLsfGap);
    for (int i = 0; i < kM; i++) lsfState.past_lsf_q[i] = lsf_int[i];
    amr_dtx::lsf_to_lsp(lsf_int, lsp_int);
    amr_dtx::lsf_to_lsp(lsf_int_variab, lsp_int_variab);
    Word16 acoeff[kMp1], acoeff_variab[kMp1], refl[kM];
    lsp_az(lsp_int, acoeff);
    lsp_az(lsp_int_variab, acoeff_variab);
    for (int s = 0; s < 4; s++)
        for (int i = 0; i < kMp1; i++) A_t[s * kMp1 + i] = acoeff[i];
    a_refl(&acoeff[1], refl);
    Word16 pred_err = MAX_16;
    for (int i = 0; i < kM; i++) pred_err = mult(pred_err, sub(MAX_16, mult(refl[i], refl[i])));
    Word16 log_pg_e, log_pg_m;
    Log2(L_deposit_l(pred_err), log_pg_e, log_pg_m);
    Word16 log_pg = shl(sub(log_pg_e, 15), 12);
    log_pg = shr(sub(0, add(log_pg, shr(log_pg_m, 15 - 12))), 1);
    st.log_pg_mean = add(mult(29491, st.log_pg_mean), mult(3277, log_pg));
    L_log_en_int = L_shr(L_log_en_int, 10);
    L_log_en_int = L_add(L_log_en_int, 4 * 65536L);
    L_log_en_int = L_sub(L_log_en_int, L_shl(L_deposit_l(log_pg), 4));
    L_log_en_int = L_add(L_log_en_int, L_shl(L_deposit_l(st.log_en_adjust), 5));
    const Word16 log_en_int_e = extract_h(L_log_en_int);
    const Word16 log_en_int_m = extract_l(L_shr(L_sub(L_log_en_int, L_deposit_h(log_en_int_e)), 1));
    const Word16 level = extract_l(Pow2(log_en_int_e, log_en_int_m));
    for (int s = 0; s < 4; s++) {
        Word16 ex[kLSubfr];
        build_cn_code(st.L_pn_seed_rx, ex);
        for (int j = 0; j < kLSubfr; j++) ex[j] = mult(level, ex[j]);
        syn_filt(acoeff_variab, ex, &synth[s * kLSubfr], kLSubfr, mem_syn, true);
    }
    aver.hangVar = 20;
    aver.hangCount = 0;
    if (new_state == DTX_MUTE) {
        Word16 tmp_int_length = st.since_last_sid;
        if (tmp_int_length > 32) tmp_int_length = 32;
        if (tmp_int_length <= 0) tmp_int_length = 8;
        st.true_sid_period_inv = div_s(1 << 10, shl(tmp_int_length, 10));
        st.since_last_sid = 0;
        for (int i = 0; i < kM; i++) st.lsp_old[i] = st.lsp[i];
        st.old_log_en = st.log_en;
        st.log_en = sub(st.log_en, 256);
    }
    if (st.sid_frame != 0 && (st.valid_data != 0 || st.dtxHangoverAdded != 0)) {
        st.since_last_sid = 0;
        st.data_updated = 1;
    }
}

/// dtx_dec_activity_update: history of LSFs and frame log energies (Q10 log2 - log2(160)).
inline void dtx_dec_activity_update(DtxDecState& st, const Word16* lsf, const Word16* frame) {
    st.lsf_hist_ptr = add(st.lsf_hist_ptr, kM);
    if (st.lsf_hist_ptr == 80) st.lsf_hist_ptr = 0;
    for (int i = 0; i < kM; i++) st.lsf_hist[st.lsf_hist_ptr + i] = lsf[i];
    const Word16 log_en = amr_dtx::frame_log_energy(frame);  // Q10, log2(160) = 7497 + 1024 subtracted
    st.log_en_hist_ptr = add(st.log_en_hist_ptr, 1);
    if (st.log_en_hist_ptr == 8) st.log_en_hist_ptr = 0;
    st.log_en_hist[st.log_en_hist_ptr] = log_en;
}

}  // namespace amr_dec
ZEPS_END_VARIANT

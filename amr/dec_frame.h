// GSM-AMR speech decoder frame (3GPP TS 26.073 dec_amr.c Decoder_amr,
// sp_dec.c Speech_Decode_Frame, bits2prm.c Bits2prm, d_homing.c): LSF
// decoding and interpolation, then per subframe the adaptive and algebraic
// codebooks, the gains with concealment, the anti-sparseness filter, the
// excitation control of background noise and the synthesis filter with its
// overflow rescaling; comfort noise in DTX; post-filter and high-pass.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_codebook.h"
#include "amr/dec_dtx.h"
#include "amr/dec_excitation.h"
#include "amr/dec_gain.h"
#include "amr/dec_lpc.h"
#include "amr/dec_pitch.h"
#include "amr/dec_post.h"
#include "amr/dec_state.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline constexpr int kMaxPrm = 57;    ///< MAX_PRM_SIZE
inline constexpr int kSerialBits = 244;  ///< MAX_SERIAL_SIZE

/// prmno: parameters per mode (MRDTX last).
inline constexpr Word16 kPrmNo[9] = {17, 19, 19, 19, 19, 23, 39, 57, 5};
/// prmnofsf: parameters up to the end of the first subframe.
inline constexpr Word16 kPrmNoFsf[8] = {7, 7, 7, 7, 7, 8, 12, 18};

inline const std::int16_t* bitno(int mode) {
    namespace t = zeps::amr_dec_tab;
    static const std::int16_t* const tab[9] = {t::bitno_MR475, t::bitno_MR515, t::bitno_MR59,
                                               t::bitno_MR67,  t::bitno_MR74,  t::bitno_MR795,
                                               t::bitno_MR102, t::bitno_MR122, t::bitno_MRDTX};
    return tab[mode];
}

/// Bits2prm: serial bits (one a word, nonzero = 1, MSB first) to parameters.
inline void bits2prm(int mode, const Word16* bits, Word16* prm) {
    const std::int16_t* widths = bitno(mode);
    for (int i = 0; i < kPrmNo[mode]; i++) {
        Word16 v = 0;
        for (int b = 0; b < widths[i]; b++) v = static_cast<Word16>((v << 1) | (*bits++ != 0 ? 1 : 0));
        prm[i] = v;
    }
}

/// dhf_test: true when the first nparms parameters of the frame equal the
/// decoder homing frame of the mode.
inline bool homing_frame_test(const Word16* bits, int mode, bool first_subframe_only) {
    namespace t = zeps::amr_dec_tab;
    static const std::int16_t* const dhf[8] = {t::dhf_MR475, t::dhf_MR515, t::dhf_MR59,  t::dhf_MR67,
                                               t::dhf_MR74,  t::dhf_MR795, t::dhf_MR102, t::dhf_MR122};
    Word16 prm[kMaxPrm];
    bits2prm(mode, bits, prm);
    const int n = first_subframe_only ? kPrmNoFsf[mode] : kPrmNo[mode];
    for (int i = 0; i < n; i++)
        if (prm[i] != dhf[mode][i]) return false;
    return true;
}

/// Decoder_amr_reset; mode MRDTX keeps what comfort noise carries over.
inline void decoder_amr_reset(DecoderAmrState& st, Word16 mode) {
    using zeps::amr_dec_tab::lsp_init_data;
    for (int i = 0; i < kExcHist; i++) st.old_exc[i] = 0;
    if (mode != MRDTX)
        for (Word16& v : st.mem_syn) v = 0;
    st.sharp = kSharpMin;
    st.old_T0 = 40;
    if (mode != MRDTX)
        for (int i = 0; i < kM; i++) st.lsp_old[i] = lsp_init_data[i];
    st.prev_bf = 0;
    st.prev_pdf = 0;
    st.state = 0;
    st.T0_lagBuff = 40;
    st.inBackgroundNoise = 0;
    st.voicedHangover = 0;
    if (mode != MRDTX)
        for (Word16& v : st.excEnergyHist) v = 0;
    for (Word16& v : st.ltpGainHistory) v = 0;
    for (Word16& v : st.cb_gain_aver.cbGainHistory) v = 0;
    st.cb_gain_aver.hangVar = 0;
    st.cb_gain_aver.hangCount = 0;
    if (mode != MRDTX)
        for (int i = 0; i < kM; i++) st.lsp_meanSave[i] = zeps::amr_dtx_tab::mean_lsf_5[i];
    lsf_reset(st.lsf);
    ec_gain_pitch_reset(st.ec_gain_p);
    ec_gain_code_reset(st.ec_gain_c);
    if (mode != MRDTX) gc_pred_reset(st.pred);
    bgn_scd_reset(st.background);
    st.nodataSeed = 21845;
    ph_disp_reset(st.ph_disp);
    if (mode != MRDTX) dtx_dec_reset(st.dtx);
}

inline void speech_decoder_reset(SpeechDecoderState& st) {
    for (int i = kExcHist; i < kExcHist + kLSubfr; i++) st.dec.old_exc[i] = 0;
    decoder_amr_reset(st.dec, MR475);
    post_filter_reset(st.post);
    post_process_reset(st.post_hp);
}

inline bool low_rate(Word16 mode) { return mode == MR475 || mode == MR515 || mode == MR59; }

/// The per-frame bad-frame flags of Decoder_amr.
struct FrameFlags {
    Word16 bfi = 0;
    Word16 pdfi = 0;
};

/// The pitch lag and adaptive codebook vector of one subframe.
inline void decode_adaptive(DecoderAmrState& st, Word16 mode, Word16 index, Word16 pit_flag, Word16 bfi,
                            Word16& T0, Word16& T0_frac) {
    Word16* exc = st.old_exc + kExcHist;
    if (mode != MR122) {
        const Word16 flag4 = (mode == MR475 || mode == MR515 || mode == MR59 || mode == MR67) ? 1 : 0;
        const Word16 delta_frc_low = mode == MR795 ? 10 : 5;
        const Word16 delta_frc_range = mode == MR795 ? 19 : 9;
        Word16 t0_min = sub(st.old_T0, delta_frc_low);
        if (t0_min < kPitMin) t0_min = kPitMin;
        Word16 t0_max = add(t0_min, delta_frc_range);
        if (t0_max > kPitMax) {
            t0_max = kPitMax;
            t0_min = sub(t0_max, delta_frc_range);
        }
        dec_lag3(index, t0_min, t0_max, pit_flag, st.old_T0, T0, T0_frac, flag4);
        st.T0_lagBuff = T0;
        if (bfi != 0) {
            if (st.old_T0 < kPitMax) st.old_T0 = add(st.old_T0, 1);
            T0 = st.old_T0;
            T0_frac = 0;
            if (st.inBackgroundNoise != 0 && st.voicedHangover > 4 && low_rate(mode)) T0 = st.T0_lagBuff;
        }
        pred_lt_3or6(exc, T0, T0_frac, kLSubfr, 1);
    } else {
        dec_lag6(index, kPitMinMR122, kPitMax, pit_flag, T0, T0_frac);
        if (!(bfi == 0 && (pit_flag == 0 || index < 61))) {
            st.T0_lagBuff = T0;
            T0 = st.old_T0;
            T0_frac = 0;
        }
        pred_lt_3or6(exc, T0, T0_frac, kLSubfr, 0);
    }
}

/// Decoder_amr: one frame of parameters (or comfort noise) to synth[160]
/// and the four subframes' A(z) in A_t[44].
inline void decoder_amr(DecoderAmrState& st, Word16 mode, Word16* parm, Word16 frame_type, Word16* synth,
                        Word16* A_t) {
    const Word16 newDTXState = rx_dtx_handler(st.dtx, frame_type);
    if (newDTXState != SPEECH) {
        decoder_amr_reset(st, MRDTX);
        dtx_dec(st.dtx, st.mem_syn, st.lsf, st.pred, st.cb_gain_aver, newDTXState, mode, parm, synth, A_t);
        amr_dtx::lsf_to_lsp(st.lsf.past_lsf_q, st.lsp_old);
        lsp_avg(st.lsp_meanSave, st.lsf.past_lsf_q);
        st.dtx.dtxGlobalState = newDTXState;
        return;
    }
    Word16 bfi = 0, pdfi = 0;
    if (frame_type == RX_SPEECH_BAD || frame_type == RX_NO_DATA || frame_type == RX_ONSET) {
        bfi = 1;
        if (frame_type == RX_NO_DATA || frame_type == RX_ONSET)
            build_cn_param(st.nodataSeed, kPrmNo[mode], bitno(mode), parm);
    } else if (frame_type == RX_SPEECH_DEGRADED) {
        pdfi = 1;
    }
    if (bfi != 0) st.state = add(st.state, 1);
    else if (st.state == 6) st.state = 5;
    else st.state = 0;
    if (st.state > 6) st.state = 6;
    if (st.dtx.dtxGlobalState == DTX) {
        st.state = 5;
        st.prev_bf = 0;
    } else if (st.dtx.dtxGlobalState == DTX_MUTE) {
        st.state = 5;
        st.prev_bf = 1;
    }
    Word16 prev_lsf[kM];
    for (int i = 0; i < kM; i++) prev_lsf[i] = st.lsf.past_lsf_q[i];
    Word16 lsp_new[kM], lsp_mid[kM];
    if (mode != MR122) {
        d_plsf_3(st.lsf, mode, bfi, parm, lsp_new);
        parm += 3;
        int_lpc_1to3(st.lsp_old, lsp_new, A_t);
    } else {
        d_plsf_5(st.lsf, bfi, parm, lsp_mid, lsp_new);
        parm += 5;
        int_lpc_1and3(st.lsp_old, lsp_mid, lsp_new, A_t);
    }
    for (int i = 0; i < kM; i++) st.lsp_old[i] = lsp_new[i];

    Word16* exc = st.old_exc + kExcHist;
    const Word16* Az = A_t;
    Word16 evenSubfr = 0, subfrNr = -1, index_mr475 = 0;
    Word16 T0 = 0, T0_frac = 0;  // the MR122 delta lags start from the previous subframe's T0
    for (int i_subfr = 0; i_subfr < kLFrame; i_subfr += kLSubfr, Az += kMp1) {
        subfrNr = add(subfrNr, 1);
        evenSubfr = sub(1, evenSubfr);
        Word16 pit_flag = static_cast<Word16>(i_subfr);
        if (i_subfr == 80 && mode != MR475 && mode != MR515) pit_flag = 0;
        Word16 index = *parm++;
        decode_adaptive(st, mode, index, pit_flag, bfi, T0, T0_frac);

        Word16 code[kLSubfr], gain_pit = 0, gain_code = 0, pit_sharp;
        if (mode == MR475 || mode == MR515) {
            index = *parm++;
            const Word16 sign = *parm++;
            decode_2i40_9bits(subfrNr, sign, index, code);
            pit_sharp = shl(st.sharp, 1);
        } else if (mode == MR59) {
            index = *parm++;
            const Word16 sign = *parm++;
            decode_2i40_11bits(sign, index, code);
            pit_sharp = shl(st.sharp, 1);
        } else if (mode == MR67) {
            index = *parm++;
            const Word16 sign = *parm++;
            decode_3i40_14bits(sign, index, code);
            pit_sharp = shl(st.sharp, 1);
        } else if (mode <= MR795) {
            index = *parm++;
            const Word16 sign = *parm++;
            decode_4i40_17bits(sign, index, code);
            pit_sharp = shl(st.sharp, 1);
        } else if (mode == MR102) {
            dec_8i40_31bits(parm, code);
            parm += 7;
            pit_sharp = shl(st.sharp, 1);
        } else {
            index = *parm++;
            gain_pit = bfi != 0 ? ec_gain_pitch(st.ec_gain_p, st.state) : d_gain_pitch(mode, index);
            ec_gain_pitch_update(st.ec_gain_p, bfi, st.prev_bf, gain_pit);
            dec_10i40_35bits(parm, code);
            parm += 10;
            pit_sharp = shl(gain_pit, 1);
        }
        for (int i = T0; i < kLSubfr; i++) code[i] = add(code[i], mult(code[i - T0], pit_sharp));

        if (mode == MR475 || mode <= MR74 || mode == MR102) {
            if (mode == MR475) {
                if (evenSubfr != 0) index_mr475 = *parm++;
                index = index_mr475;
            } else {
                index = *parm++;
            }
            if (bfi == 0) {
                dec_gain(st.pred, mode, index, code, evenSubfr, gain_pit, gain_code);
            } else {
                gain_pit = ec_gain_pitch(st.ec_gain_p, st.state);
                gain_code = ec_gain_code(st.ec_gain_c, st.pred, st.state);
            }
            ec_gain_pitch_update(st.ec_gain_p, bfi, st.prev_bf, gain_pit);
            ec_gain_code_update(st.ec_gain_c, bfi, st.prev_bf, gain_code);
            pit_sharp = gain_pit > kSharpMax ? kSharpMax : gain_pit;
            if (mode == MR102 && st.old_T0 > kLSubfr + 5) pit_sharp = shr(pit_sharp, 2);
        } else {
            index = *parm++;
            if (mode == MR795) {
                gain_pit = bfi != 0 ? ec_gain_pitch(st.ec_gain_p, st.state) : d_gain_pitch(mode, index);
                ec_gain_pitch_update(st.ec_gain_p, bfi, st.prev_bf, gain_pit);
                index = *parm++;
            }
            gain_code = bfi == 0 ? d_gain_code(st.pred, mode, index, code)
                                 : ec_gain_code(st.ec_gain_c, st.pred, st.state);
            ec_gain_code_update(st.ec_gain_c, bfi, st.prev_bf, gain_code);
            pit_sharp = mode == MR795 && gain_pit > kSharpMax ? kSharpMax : gain_pit;
        }
        if (mode != MR475 || evenSubfr == 0) st.sharp = gain_pit > kSharpMax ? kSharpMax : gain_pit;
        pit_sharp = shl(pit_sharp, 1);
        Word16 excp[kLSubfr];
        if (pit_sharp > 16384) {
            for (int i = 0; i < kLSubfr; i++) {
                Word32 L_temp = L_mult(mult(exc[i], pit_sharp), gain_pit);
                if (mode == MR122) L_temp = L_shr(L_temp, 1);
                excp[i] = round_fx(L_temp);
            }
        }
        if (bfi == 0) {
            for (int i = 0; i < 8; i++) st.ltpGainHistory[i] = st.ltpGainHistory[i + 1];
            st.ltpGainHistory[8] = gain_pit;
        }
        if ((st.prev_bf != 0 || bfi != 0) && st.inBackgroundNoise != 0 && low_rate(mode)) {
            if (gain_pit > 12288) gain_pit = add(shr(sub(gain_pit, 12288), 1), 12288);
            if (gain_pit > 14745) gain_pit = 14745;
        }
        Word16 lsf_i[kM];
        int_lsf(prev_lsf, st.lsf.past_lsf_q, i_subfr, lsf_i);
        Word16 gain_code_mix =
            cb_gain_average(st.cb_gain_aver, mode, gain_code, lsf_i, st.lsp_meanSave, bfi, st.prev_bf, pdfi,
                            st.prev_pdf, st.inBackgroundNoise, st.voicedHangover);
        if (mode > MR67 && mode != MR102) gain_code_mix = gain_code;
        const Word16 pitch_fac = mode <= MR102 ? gain_pit : shr(gain_pit, 1);
        const Word16 tmp_shift = mode <= MR102 ? 1 : 2;
        Word16 exc_enhanced[kLSubfr];
        for (int i = 0; i < kLSubfr; i++) {
            exc_enhanced[i] = exc[i];
            Word32 L_temp = L_mult(exc[i], pitch_fac);
            L_temp = L_mac(L_temp, code[i], gain_code);
            L_temp = L_shl(L_temp, tmp_shift);
            exc[i] = round_fx(L_temp);
        }
        st.ph_disp.lockFull = 0;
        if (low_rate(mode) && st.voicedHangover > 3 && st.inBackgroundNoise != 0 && bfi != 0)
            st.ph_disp.lockFull = 1;
        ph_disp(st.ph_disp, mode, exc_enhanced, gain_code_mix, gain_pit, code, pitch_fac, tmp_shift);

        Word32 L_temp = 0;
        for (int i = 0; i < kLSubfr; i++) L_temp = L_mac(L_temp, exc_enhanced[i], exc_enhanced[i]);
        L_temp = L_shr(L_temp, 1);
        Word16 temp;
        L_temp = sqrt_l_exp(L_temp, temp);
        L_temp = L_shr(L_temp, add(shr(temp, 1), 15));
        L_temp = L_shr(L_temp, 2);
        const Word16 excEnergy = extract_l(L_temp);
        if (low_rate(mode) && st.voicedHangover > 5 && st.inBackgroundNoise != 0 && st.state < 4 &&
            ((pdfi != 0 && st.prev_pdf != 0) || bfi != 0 || st.prev_bf != 0)) {
            const Word16 carefulFlag = pdfi != 0 && bfi == 0 ? 1 : 0;
            ex_ctrl(exc_enhanced, excEnergy, st.excEnergyHist, st.voicedHangover, st.prev_bf, carefulFlag);
        }
        if (!(st.inBackgroundNoise != 0 && (bfi != 0 || st.prev_bf != 0) && st.state < 4)) {
            for (int i = 0; i < 8; i++) st.excEnergyHist[i] = st.excEnergyHist[i + 1];
            st.excEnergyHist[8] = excEnergy;
        }
        bool overflow;
        if (pit_sharp > 16384) {
            for (int i = 0; i < kLSubfr; i++) excp[i] = add(excp[i], exc_enhanced[i]);
            agc2(exc_enhanced, excp, kLSubfr);
            overflow = syn_filt(Az, excp, &synth[i_subfr], kLSubfr, st.mem_syn, false);
        } else {
            overflow = syn_filt(Az, exc_enhanced, &synth[i_subfr], kLSubfr, st.mem_syn, false);
        }
        if (overflow) {
            for (int i = 0; i < kExcHist + kLSubfr; i++) st.old_exc[i] = shr(st.old_exc[i], 2);
            for (int i = 0; i < kLSubfr; i++) exc_enhanced[i] = shr(exc_enhanced[i], 2);
            syn_filt(Az, exc_enhanced, &synth[i_subfr], kLSubfr, st.mem_syn, true);
        } else {
            for (int i = 0; i < kM; i++) st.mem_syn[i] = synth[i_subfr + kLSubfr - kM + i];
        }
        for (int i = 0; i < kExcHist; i++) st.old_exc[i] = st.old_exc[i + kLSubfr];
        st.old_T0 = T0;
    }
    st.inBackgroundNoise = bgn_scd(st.background, st.ltpGainHistory, synth, st.voicedHangover);
    dtx_dec_activity_update(st.dtx, st.lsf.past_lsf_q, synth);
    st.prev_bf = bfi;
    st.prev_pdf = pdfi;
    lsp_avg(st.lsp_meanSave, st.lsf.past_lsf_q);
    st.dtx.dtxGlobalState = newDTXState;
}

/// Speech_Decode_Frame: serial bits to 160 post-filtered, high-passed
/// samples truncated to 13 bits.
inline void speech_decode_frame(SpeechDecoderState& st, Word16 mode, const Word16* serial, Word16 frame_type,
                                Word16* synth) {
    Word16 parm[kMaxPrm + 1] = {};
    Word16 Az_dec[4 * kMp1];
    bits2prm(frame_type == RX_SID_BAD || frame_type == RX_SID_UPDATE ? Word16{MRDTX} : mode, serial, parm);
    decoder_amr(st.dec, mode, parm, frame_type, synth, Az_dec);
    post_filter(st.post, mode, synth, Az_dec);
    post_process(st.post_hp, synth, kLFrame);
    for (int i = 0; i < kLFrame; i++) synth[i] = static_cast<Word16>(synth[i] & 0xfff8);
}

}  // namespace amr_dec
ZEPS_END_VARIANT

/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/amr.h - GSM-AMR and GSM full-rate stages.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_AMR_H
#define ZEPSC_AMR_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup amr_vad GSM-AMR voice activity detection
 *  VAD options 1 and 2, open-loop pitch searches, pre-emphasis and the VAD option 2 FFT (3GPP TS 26.073/26.094).
 *  @{ */
/* ---- amr_vad: declarations go here ---- */
/** VAD option 1 state (3GPP TS 26.073 vad1.c, vadState1), 58 16-bit words
 *  in this order. Set it with zepsVAD1StateReset_GSMAMR before the first
 *  frame. The tone register, the open-loop lag history of the pitch
 *  detector and the best high-pass correlation are kept by the caller (see
 *  zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s) and passed to each call. */
typedef struct ZepVAD1State_GSMAMR {
    Zep16s sub_level[9];        /**< band levels of the look-ahead part of the previous frame */
    Zep16s ave_level[9];        /**< averaged band levels (stationarity test) */
    Zep16s old_level[9];        /**< band levels of the previous frame */
    Zep16s bckr_est[9];         /**< background-noise estimate per band */
    Zep16s a_data5[3][2];       /**< memories of the three 5th-order filter sections */
    Zep16s a_data3[5];          /**< memories of the 3rd-order filter sections */
    Zep16s burst_count;         /**< length of the current speech burst */
    Zep16s hang_count;          /**< hangover counter */
    Zep16s stat_count;          /**< stationarity counter */
    Zep16s vadreg;              /**< intermediate decisions, newest in bit 14 (0x4000) */
    Zep16s complex_high;        /**< high-correlation flags */
    Zep16s complex_low;         /**< medium-correlation flags */
    Zep16s complex_hang_timer;  /**< frames of continuously very high correlation */
    Zep16s complex_hang_count;  /**< complex-signal hangover counter */
    Zep16s complex_warning;     /**< 1 when the complex registers are saturated with flags */
    Zep16s corr_hp_fast;        /**< smoothed high-pass correlation, Q15 */
    Zep16s pitch;               /**< pitch-detection flags (written by the open-loop search) */
} ZepVAD1State_GSMAMR;

/** Sets a VAD option 1 state to the values of the standard's vad1_reset:
 *  all bands' noise estimate, level average and previous level 150, filter
 *  memories, look-ahead levels, counters and registers 0, corr_hp_fast 13106
 *  (0.4 in Q15). The caller's best high-pass correlation starts at 13106 and
 *  its tone register, lag count and last lag at 0. */
static inline void zepsVAD1StateReset_GSMAMR(ZepVAD1State_GSMAMR* st) {
    int i;
    for (i = 0; i < 9; ++i) {
        st->sub_level[i] = 0;
        st->ave_level[i] = 150;
        st->old_level[i] = 150;
        st->bckr_est[i] = 150;
    }
    for (i = 0; i < 3; ++i) st->a_data5[i][0] = st->a_data5[i][1] = 0;
    for (i = 0; i < 5; ++i) st->a_data3[i] = 0;
    st->burst_count = st->hang_count = st->stat_count = st->vadreg = 0;
    st->complex_high = st->complex_low = st->complex_hang_timer = st->complex_hang_count = 0;
    st->complex_warning = 0;
    st->corr_hp_fast = 13106;
    st->pitch = 0;
}

/** VAD option 2 state (3GPP TS 26.073 vad2.c, vadState2), fields in the
 *  reference's order. The pre-emphasis memory is pre_emp_mem (the last
 *  block-normalised sample of the previous half frame) and its scaling
 *  exponent is last_normb_shift (the block-normalisation shift it carries);
 *  each call rescales the memory to the new block's shift. L_R0, L_Rmax and
 *  LTP_flag are the open-loop pitch results the reference keeps here; this
 *  library receives the LTP flag as an argument of each call and stores it
 *  in LTP_flag. Set it with zepsVAD2StateReset_GSMAMR before the first frame. */
typedef struct ZepVAD2State_GSMAMR {
    Zep16s pre_emp_mem;          /**< pre-emphasis memory, block-normalised */
    Zep16s update_cnt;           /**< noise-update counter */
    Zep16s hyster_cnt;           /**< hysteresis counter */
    Zep16s last_update_cnt;      /**< update counter of the previous half frame */
    Zep16s ch_enrg_long_db[16];  /**< long-term channel energies in dB, Q8 */
    Zep32s Lframe_cnt;           /**< half frames processed */
    Zep32s Lch_enrg[16];         /**< channel energies, Q9 (shift state 0) or Q4 (state 1) */
    Zep32s Lch_noise[16];        /**< channel noise estimates, Q9 */
    Zep16s last_normb_shift;     /**< block-normalisation shift of the pre-emphasis memory */
    Zep16s tsnr;                 /**< long-term peak SNR in dB, Q8 */
    Zep16s hangover;             /**< hangover counter */
    Zep16s burstcount;           /**< speech burst counter */
    Zep16s fupdate_flag;         /**< forced noise update in the previous half frame */
    Zep16s negSNRvar;            /**< variance of negative SNR, Q8 */
    Zep16s negSNRbias;           /**< sensitivity bias from negSNRvar */
    Zep16s shift_state;          /**< channel energy scaling: 0 = Q9, 1 = Q4 */
    Zep32s L_R0;                 /**< open-loop energy (kept for the reference layout) */
    Zep32s L_Rmax;               /**< open-loop max correlation (kept for the reference layout) */
    Zep32s LTP_flag;             /**< LTP flag of the current frame (0 or 1) */
} ZepVAD2State_GSMAMR;

/** Sets a VAD option 2 state to the values of the standard's vad2_reset
 *  (every field 0). */
static inline void zepsVAD2StateReset_GSMAMR(ZepVAD2State_GSMAMR* st) {
    int i;
    st->pre_emp_mem = st->update_cnt = st->hyster_cnt = st->last_update_cnt = 0;
    for (i = 0; i < 16; ++i) {
        st->ch_enrg_long_db[i] = 0;
        st->Lch_enrg[i] = 0;
        st->Lch_noise[i] = 0;
    }
    st->Lframe_cnt = 0;
    st->last_normb_shift = st->tsnr = st->hangover = st->burstcount = 0;
    st->fupdate_flag = st->negSNRvar = st->negSNRbias = st->shift_state = 0;
    st->L_R0 = st->L_Rmax = st->LTP_flag = 0;
}

/**
 * GSM-AMR voice activity detection, option 1 (3GPP TS 26.094; bit-exact with
 * vad1 of TS 26.073), one 20 ms frame.
 *
 * The frame power is summed over pSrc[0..159]; the nine-band filter bank runs
 * on pSrc[40..199]. Below power 343040 bits 14-15 of pState->pitch are
 * cleared (and of complex_low below 15000); below 15000 the detector takes
 * its low-power exit (flag 0, counters cleared).
 *
 * @param pSrc       200 pre-processed samples: the last 40 samples of the
 *                   previous frame, then the 160 samples of this frame
 * @param pState     VAD option 1 state, updated
 * @param pVadFlag   out: 1 speech, 0 noise
 * @param bestCorrHp best high-pass filtered normalised correlation of the
 *                   previous frame's open-loop search (Q15 value in 32 bits,
 *                   saturated to 16 bits as the reference's best_corr_hp),
 *                   13106 after reset
 * @param toneFlag   tone register kept by the open-loop search (read only)
 * @return zepStsNullPtrErr (pSrc, pState, pVadFlag in that order), else
 *         zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsVAD1_GSMAMR_16s(const Zep16s* pSrc, ZepVAD1State_GSMAMR* pState, Zep16s* pVadFlag,
                                      Zep32s bestCorrHp, Zep16s toneFlag);

/**
 * GSM-AMR voice activity detection, option 2 (3GPP TS 26.094; bit-exact with
 * vad2 of TS 26.073), one 20 ms frame as two 80-sample halves.
 *
 * Each half: frame count, block normalisation (zepsAutoScale_16s, headroom
 * 2), pre-emphasis by -0.8 (zepsPreemphasize_GSMAMR_16s with -26214, the
 * memory rescaled by shr_r to the new shift), 128-point FFT
 * (zepsFFTFwd_RToPerm_GSMAMR_16s_I, 24 leading zeros, 24 trailing), 16
 * channel energies, voice metric, long-term SNR, hangover, spectral
 * deviation and the noise-update decision, which ltpFlag vetoes as the
 * reference's LTP_flag does.
 *
 * @param pSrc     160 pre-processed samples
 * @param pState   VAD option 2 state, updated (LTP_flag is set from ltpFlag)
 * @param pVadFlag out: 1 when either half is speech, else 0
 * @param ltpFlag  nonzero when the frame's open-loop pitch gain is high
 *                 (LTP_flag_update after the previous open-loop search)
 * @return zepStsNullPtrErr (pSrc, pState, pVadFlag in that order), else
 *         zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsVAD2_GSMAMR_16s(const Zep16s* pSrc, ZepVAD2State_GSMAMR* pState, Zep16s* pVadFlag,
                                      Zep32s ltpFlag);

/**
 * Pre-emphasis of GSM-AMR VAD option 2: pDst[i] = add(pSrc[i],
 * mult(gamma, pSrc[i-1])), with pSrc[-1] = *pMem; afterwards *pMem =
 * pSrc[len-1] (3GPP TS 26.073 vad2.c; gamma = -26214 is the -0.8 of the
 * standard). The factor is applied with mult (truncating Q15 product) and
 * added, as vad2 does; the decoder post-filter's preemphasis routine, which
 * subtracts mult(g, x), gives the same result only where both truncations
 * agree. pSrc and pDst may be the same array.
 *
 * @param pSrc  input samples
 * @param pDst  output samples (len values)
 * @param len   number of samples
 * @param gamma filter factor, Q15
 * @param pMem  in: the sample before pSrc[0]; out: pSrc[len-1]
 * @return zepStsNullPtrErr (pSrc, pDst, pMem in that order), then
 *         zepStsSizeErr when len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPreemphasize_GSMAMR_16s(const Zep16s* pSrc, Zep16s* pDst, Zep32s len, Zep16s gamma,
                                              Zep16s* pMem);

/**
 * In-place 128-point fixed-point real FFT of GSM-AMR VAD option 2 (3GPP
 * TS 26.073 r_fft.c): a 64-point complex decimation-in-time FFT of the
 * samples taken as re/im pairs, halving at each of its six stages, then the
 * real-spectrum split with a further halving. Result in the packed order:
 * pSrcDst[0] = DC, pSrcDst[1] = Nyquist, then re, im of bins 1..63.
 *
 * @param pSrcDst 128 samples in, 128 packed spectrum values out
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsFFTFwd_RToPerm_GSMAMR_16s_I(Zep16s* pSrcDst);

/**
 * GSM-AMR open-loop pitch search without DTX (3GPP TS 26.073 pre_big +
 * ol_ltp, Pitch_ol and Pitch_ol_wgh with dtx = 0), one 20 ms frame.
 *
 * The weighted speech of the four 40-sample subframes is formed as pre_big
 * does (Weight_Ai with gamma1, or gamma1_12k2 for codes 11, 12 and 25, and
 * gamma2; Residu; Syn_filt with the caller's memory) behind the 143 samples
 * of weighted-speech history; then rate 0 and 1 search once over 160 samples
 * (lags 20..143, both lags equal), rate 12 twice over 80 samples (lags
 * 18..143, normalised correlation scaled as the reference's MR122), rate 11
 * twice with the lag-weighted search Pitch_ol_wgh (median of the lag
 * history), the other rates twice over 80 samples (lags 20..143).
 * Rate 25 (DTX) is accepted and searched as the reference's ol_ltp treats
 * MRDTX: gamma1_12k2, two 80-sample searches with lags 18..143, without the
 * MR122 correlation scaling. Rates other than 11 clear the gain flags.
 *
 * @param pSrcLPC        unquantised interpolated A(z) of the 4 subframes, 4 x 11 values, Q12
 * @param pSrcSpch       170 samples: 10 samples of history, then the 160 samples to weight
 * @param pWgtFltMem     10 values: weighting-filter (Syn_filt) memory, updated
 * @param pWgtSpchHist   143 weighted samples before the frame, replaced by the last 143 of the frame
 * @param pOldLags       5 previous closed-loop lags (median history of rate 11), updated by rate 11
 * @param pOlGainFlg     2 open-loop gain flags of the halves, written (0 except rate 11)
 * @param pWghtState     3 values: old_T0_med, ada_w, wght_flg of Pitch_ol_wgh (reset: 40, 0, 0)
 * @param pDstWgtSpch    out: 160 weighted samples of the frame
 * @param pDstOpenLoopLag out: the 2 open-loop lags of the halves
 * @param rate           rate code: 0, 1, 3, 6, 7, 8, 11, 12 or 25
 * @return zepStsNullPtrErr for the first null pointer in argument order,
 *         then zepStsRangeErr for an unsupported rate; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s(const Zep16s* pSrcLPC, const Zep16s* pSrcSpch,
                                                           Zep16s* pWgtFltMem, Zep16s* pWgtSpchHist,
                                                           Zep16s* pOldLags, Zep16s* pOlGainFlg,
                                                           Zep16s* pWghtState, Zep16s* pDstWgtSpch,
                                                           Zep16s* pDstOpenLoopLag, Zep32s rate);

/**
 * GSM-AMR open-loop pitch search with DTX and VAD option 1: as
 * zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s, plus the reference's VAD option 1
 * side effects (dtx = 1): vad_tone_detection_update and vad_tone_detection
 * in every search, hp_max and vad_complex_detection_update on the second
 * (or only) search, then vad_pitch_detection on the two lags.
 *
 * To keep nine pointers, the Pitch_ol_wgh state and the VAD option 1
 * registers the search keeps share one array, pWghtVadRegs (8 values):
 *   [0] old_T0_med, [1] ada_w, [2] wght_flg (reset 40, 0, 0),
 *   [3] tone register (reset 0),
 *   [4] pitch register (reset 0),
 *   [5] oldlag_count, [6] oldlag (reset 0, 0),
 *   [7] best high-pass correlation, Q15 (reset 13106).
 * Frame order of the reference encoder (cod_amr): zepsVAD1_GSMAMR_16s on the
 * frame, then this search on the same frame. The VAD reads what the previous
 * frame's search left: pass [7] as bestCorrHp and [3] as toneFlag, copy [4]
 * into the VAD state's pitch word before the VAD call and back into [4]
 * after it (the VAD clears bits 14-15 of the pitch register on low-power
 * frames, and the search shifts that value).
 * Other arguments, checks and statuses as the non-DTX search.
 */
ZEPSAPI ZepStatus zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(const Zep16s* pSrcLPC, const Zep16s* pSrcSpch,
                                                            Zep16s* pWgtFltMem, Zep16s* pWgtSpchHist,
                                                            Zep16s* pOldLags, Zep16s* pOlGainFlg,
                                                            Zep16s* pWghtVadRegs, Zep16s* pDstWgtSpch,
                                                            Zep16s* pDstOpenLoopLag, Zep32s rate);

/**
 * GSM-AMR open-loop pitch search with DTX and VAD option 2: as
 * zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s, and also returns the sums over
 * the frame's searches of the maximum correlation and of the energy at the
 * chosen lag (the reference's L_Rmax and L_R0 after zeroing them at the
 * start of the frame), from which the LTP flag for zepsVAD2_GSMAMR_16s is
 * formed as LTP_flag_update does: L_Rmax > Mpy_32_16(L_R0, thresh) with
 * thresh 18022 (rates 0, 1), 19660 (rate 11), 21299 (others).
 *
 * @param pDstMaxCorr out: L_Rmax (32-bit)
 * @param pDstEnergy  out: L_R0 (32-bit)
 * Other arguments, checks (the eleven pointers in order, then the rate) and
 * statuses as the non-DTX search.
 */
ZEPSAPI ZepStatus zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(const Zep16s* pSrcLPC, const Zep16s* pSrcSpch,
                                                               Zep16s* pWgtFltMem, Zep16s* pWgtSpchHist,
                                                               Zep16s* pOldLags, Zep16s* pOlGainFlg,
                                                               Zep16s* pWghtState, Zep16s* pDstWgtSpch,
                                                               Zep16s* pDstOpenLoopLag, Zep32s* pDstMaxCorr,
                                                               Zep32s* pDstEnergy, Zep32s rate);
/** @} */

/** @defgroup amr_dtx GSM-AMR DTX
 *  DTX history buffers, the DTX handler, SID parameters and the LSP quantiser (3GPP TS 26.073/26.093).
 *  @{ */
/* ---- amr_dtx: declarations go here ---- */
/**
 * GSM-AMR encoder DTX history update (3GPP TS 26.073 dtx_enc.c, dtx_buffer).
 *
 * Advances the history pointer (7 wraps to 0), copies the LSP vector into
 * row pointer of the LSP history and stores the frame's log energy, halved,
 * at the same place: log_en = (e << 10) + (f >> 5) - 8521, where e, f are the
 * Log2 exponent and Q15 fraction of the saturating sum of 2 x^2 over the 160
 * samples and 8521 = log2(160) in Q10; the history keeps log_en >> 1.
 *
 * @param pSrcSpch          160 speech samples of the frame (the encoder's new_speech, pre-processed)
 * @param pSrcLSP           10 LSPs of the frame, Q15 (the encoder's unquantised lsp_new)
 * @param pHistPtr          in/out: history pointer 0..7 (hist_ptr). A value outside 0..7 is taken
 *                          modulo 8 (the library never writes one; the reference would address
 *                          outside its buffers)
 * @param pLSPHistory       in/out: 8 x 10 LSP history, Q15, row-major (lsp_hist)
 * @param pLogEnergyHistory in/out: 8 log energies, Q10, halved (log_en_hist)
 * @return zepStsNullPtrErr for any null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncDTXBuffer_GSMAMR_16s(const Zep16s* pSrcSpch, const Zep16s* pSrcLSP, Zep16s* pHistPtr,
                                              Zep16s* pLSPHistory, Zep16s* pLogEnergyHistory);

/**
 * GSM-AMR encoder DTX handler (3GPP TS 26.073 dtx_enc.c, tx_dtx_handler).
 *
 * The elapsed count is incremented with saturation (32767 stays 32767) and
 * the SID flag cleared. A nonzero VAD flag sets the hangover count to 7.
 * Otherwise, with a hangover count of 0, the elapsed count is cleared, the
 * used mode becomes 25 (DTX) and the SID flag 1; with a nonzero hangover
 * count, it is decremented and the used mode becomes 25 when elapsed count +
 * hangover count < 30. The used mode is otherwise left as passed.
 *
 * @param pHangoverCount in/out: dtxHangoverCount (reset value 7)
 * @param pElapsedCount  in/out: decAnaElapsedCount, frames since the last SID analysis (reset value 32767)
 * @param pUsedMode      in/out: the frame's rate code; 25 written when the frame becomes a DTX frame
 * @param pSidFlag       out: 1 when a new SID frame may be computed (compute_new_sid_possible), else 0
 * @param vadFlag        the frame's VAD decision, nonzero = speech
 * @return zepStsNullPtrErr for any null pointer (checked in argument order), else zepStsNoErr.
 *         The used mode is not range-checked.
 */
ZEPSAPI ZepStatus zepsEncDTXHandler_GSMAMR_16s(Zep16s* pHangoverCount, Zep16s* pElapsedCount, Zep16s* pUsedMode,
                                               Zep16s* pSidFlag, Zep16s vadFlag);

/**
 * GSM-AMR decoder DTX history update (3GPP TS 26.073 dtx_dec.c,
 * dtx_dec_activity_update), run on every decoded speech frame.
 *
 * As zepsEncDTXBuffer_GSMAMR_16s, but with the decoder's LSF vector and with
 * the log energy stored without halving (the decoder reads it as Q11).
 * The reference keeps two pointers that move together, lsf_hist_ptr (an
 * element offset 0, 10, .., 70) and log_en_hist_ptr (0..7); pHistPtr is
 * log_en_hist_ptr and the LSF row starts at 10 x pHistPtr.
 *
 * @param pSrcSpch          160 synthesised speech samples
 * @param pSrcLSF           10 LSFs of the frame (the decoder's past_lsf_q)
 * @param pHistPtr          in/out: history pointer 0..7; a value outside 0..7 is taken modulo 8
 * @param pLSFHistory       in/out: 8 x 10 LSF history, row-major (lsf_hist)
 * @param pLogEnergyHistory in/out: 8 log energies, Q10 (log_en_hist)
 * @return zepStsNullPtrErr for any null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecDTXBuffer_GSMAMR_16s(const Zep16s* pSrcSpch, const Zep16s* pSrcLSF, Zep16s* pHistPtr,
                                              Zep16s* pLSFHistory, Zep16s* pLogEnergyHistory);

/**
 * GSM-AMR SID parameters (3GPP TS 26.073 dtx_enc.c, dtx_enc, with its
 * Q_plsf_3 call in MRDTX and the gain predictor update).
 *
 * When computeSidFlag is nonzero, or the stored energy index pSidParams[4]
 * is 0 (the reference's log_en_index == 0 test), new parameters are
 * computed: the 8 LSP vectors are averaged (sum >> 3) and the 8 halved log
 * energies averaged as (sum of x >> 2) >> 1; the energy index is
 * (log_en + 2560 + 128) >> 8 limited to 0..63; both gain predictor memories
 * are set from it (past_qua_en = min(0, max(-14436, (index << 8) - 11560)),
 * past_qua_en_MR122 = mult(5443, past_qua_en)); the averaged LSPs are ordered
 * through the LSF domain (Lsp_lsf, Reorder_lsf with gap 205, Lsf_lsp) and
 * quantised by zepsLSPQuant_GSMAMR_16s with rate code 25, which overwrites
 * the predictor memory. Otherwise nothing is written and the stored
 * parameters in pSidParams are the ones to send again.
 *
 * The argument order follows the reference routine: the DTX state (history
 * and stored parameters), the quantiser state, the gain predictor state;
 * the flag comes last by value, as in zepsEncDTXHandler_GSMAMR_16s.
 *
 * @param pLSPHistory       8 x 10 LSP history, Q15 (as zepsEncDTXBuffer_GSMAMR_16s keeps it)
 * @param pLogEnergyHistory 8 log energies, Q10 halved (as zepsEncDTXBuffer_GSMAMR_16s keeps them)
 * @param pSidParams        in/out: the 5 SID parameters in bit-stream order: init_lsf_vq_index
 *                          (3 bits), lsp_index[0..2] (8, 9, 9 bits), log_en_index (6 bits); on
 *                          entry the stored values of the previous SID (zeros at reset)
 * @param pPastRq           in/out: 10 values, the LSP quantiser's predictor memory (past_rq)
 * @param pPastQuaEn        in/out: 4 values, gain predictor memory past_qua_en (Q10, log2)
 * @param pPastQuaEnMR122   in/out: 4 values, gain predictor memory past_qua_en_MR122 (Q10, 20 log10)
 *                          (an encoder keeping them in the gain quantiser's state moves them
 *                          with zepsGainQuantGetPredictor_GSMAMR_16s and
 *                          zepsGainQuantSetPredictor_GSMAMR_16s)
 * @param computeSidFlag    nonzero: compute new parameters (the handler's SID flag)
 * @return zepStsNullPtrErr for any null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncDTXSID_GSMAMR_16s(const Zep16s* pLSPHistory, const Zep16s* pLogEnergyHistory,
                                           Zep16s* pSidParams, Zep16s* pPastRq, Zep16s* pPastQuaEn,
                                           Zep16s* pPastQuaEnMR122, Zep16s computeSidFlag);

/**
 * GSM-AMR LSP quantiser (3GPP TS 26.073 q_plsf_3.c Q_plsf_3 and q_plsf_5.c
 * Q_plsf_5), selected by rate code as the reference encoder does.
 *
 * - Rate 12 (MR122), Q_plsf_5: two LSP vectors (2nd and 4th subframe) after
 *   MA prediction (factor 0.65, mean_lsf_5) quantised jointly by split
 *   matrix quantisation in 5 parts; pSrcLSP, pDstQLSP hold 20 values (the
 *   two vectors one after the other), pDstIndex receives 5 indices.
 * - Rates 0, 1, 3, 6, 7, 8, 11, Q_plsf_3: one LSP vector after MA prediction
 *   (pred_fac_3, mean_lsf_3) quantised by split-VQ 3 + 3 + 4 (codebooks of
 *   MR475/MR515: dico1_lsf_3, half of dico2_lsf_3, mr515_3_lsf; MR795:
 *   mr795_1_lsf, dico2_lsf_3, dico3_lsf_3; others: dico1/2/3_lsf_3);
 *   10 values in and out, 3 indices.
 * - Rate 25 (SID frame), Q_plsf_3 in MRDTX: the predictor memory is replaced
 *   by the start vector of past_rq_init giving the smallest residual energy;
 *   10 values in and out, pDstIndex receives 4 values: the 3 indices, then
 *   that start vector's index (pred_init_i).
 * The quantised LSFs are spaced by at least 205 (Reorder_lsf) before the
 * conversion back to LSPs; the residual is stored as the new predictor
 * memory. Decision where the reference would read outside its cosine table
 * (Lsf_lsp given a quantised LSF outside 0..16384, e.g. from a corrupt
 * predictor memory): an LSF of 16384 or more converts to -32768 (the
 * reference's value at exactly 16384), a negative one to 32767. The same
 * conversion serves zepsEncDTXSID_GSMAMR_16s.
 *
 * Arguments follow the reference's order (state, input, output, indices),
 * with the rate code last.
 *
 * @param pPastRq   in/out: 10 values, predictor memory past_rq (LSF residual, 16384 = 4 kHz)
 * @param pSrcLSP   10 (or 20 for rate 12) unquantised LSPs, Q15
 * @param pDstQLSP  out: 10 (or 20) quantised LSPs, Q15
 * @param pDstIndex out: 3 indices (5 for rate 12, 4 for rate 25)
 * @param rate      rate code: 0, 1, 3, 6, 7, 8, 11, 12 or 25
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), then zepStsRangeErr for
 *         any other rate code; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLSPQuant_GSMAMR_16s(Zep16s* pPastRq, const Zep16s* pSrcLSP, Zep16s* pDstQLSP,
                                          Zep16s* pDstIndex, Zep32s rate);
/** @} */

/** @defgroup amr_cb GSM-AMR algebraic codebook search
 *  The fixed (algebraic) codebook searches of the speech encoder, all eight modes.
 *  @{ */
/**
 * GSM-AMR algebraic codebook search of every mode (3GPP TS 26.073 cbsearch.c
 * with c2_9pf.c, c2_11pf.c, c3_14pf.c, c4_17pf.c, c8_31pf.c, c1035pf.c,
 * s10_8pf.c, cor_h.c and set_sign.c), selected by rate code:
 *
 * | rate | routine | pulses | index words written |
 * |---|---|---|---|
 * | 0, 1 (4.75, 5.15) | code_2i40_9bits | 2 | 2: positions (7 bits), signs (2 bits) |
 * | 3 (5.9) | code_2i40_11bits | 2 | 2: positions (9 bits), signs (2 bits) |
 * | 6 (6.7) | code_3i40_14bits | 3 | 2: positions (11 bits), signs (3 bits) |
 * | 7, 8 (7.4, 7.95) | code_4i40_17bits | 4 | 2: positions (13 bits, Gray-coded), signs (4 bits) |
 * | 11 (10.2) | code_8i40_31bits | 8 | 7: 4 sign bits, then 3 compressed position words (10, 10, 7 bits) |
 * | 12 (12.2) | code_10i40_35bits | 10 | 10: sign bit 3 and Gray-coded position of 5 pulses (4 bits), then 5 Gray-coded positions (3 bits) |
 *
 * The index words are in the order of the standard's parameter list and are
 * what zepsFixedCodebookDecode_GSMAMR_16s takes back. The search correlates
 * the target with the impulse response (cor_h_x; rate 11 with 4 tracks of
 * step 4), fixes the pulse signs (set_sign; for rates 11 and 12 set_sign12k2
 * from the target correlation and the LTP residual), builds the signed
 * autocorrelation matrix of the impulse response (cor_h) and searches the
 * pulse positions depth-first as the reference does.
 *
 * Pitch sharpening: with T0 < 40 the impulse response is sharpened before
 * the search, h[i] += h[i-T0] * g for i = T0..39, and the same is applied to
 * the code vector after it, where g = 2 * pitchSharp (Q14 -> Q15, saturated)
 * for every rate except 12, which uses g = 2 * gainPit. Decision: the
 * impulse response is an input only; the search sharpens a private copy
 * (the reference encoder modifies its h1[] in place but never reads the
 * sharpened response again: it recomputes h1[] for each subframe).
 *
 * Decision: every pointer is required for every rate, although only rates
 * 11 and 12 read pSrcLtpResidual.
 *
 * @param pSrcTarget       target vector x[40] of the codebook search (xn2), Q0
 * @param pSrcImpulse      impulse response h[40] of the weighted synthesis filter, Q12 (not modified)
 * @param T0               integer pitch lag of the subframe, at least 1 (no sharpening from 40 on)
 * @param pitchSharp       last quantised pitch gain (sharp), Q14; read by every rate except 12
 * @param gainPit          pitch gain of the subframe, Q14; read by rate 12 only
 * @param pSrcLtpResidual  long-term prediction residual res2[40], Q0; read by rates 11 and 12
 * @param pDstCode         out: innovative code vector[40], Q13 (Q12 for rate 12), pitch-sharpened
 * @param pDstFiltCode     out: filtered code vector y[40] (unsharpened code filtered by the sharpened response), Q12
 * @param pDstIndex        out: 2, 7 or 10 index words as in the table above
 * @param rate             rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @param subframe         subframe number 0..3 (read by rates 0 and 1, which choose their tracks by it)
 * @return checks in order: pSrcTarget, pSrcImpulse, pSrcLtpResidual, pDstCode, pDstFiltCode,
 *         pDstIndex null -> zepStsNullPtrErr (-8); rate not a GSM-AMR rate -> zepStsRangeErr (-7);
 *         T0 below 1 -> zepStsRangeErr; subframe outside 0..3 -> zepStsRangeErr; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsAlgebraicCodebookSearch_GSMAMR_16s(const Zep16s* pSrcTarget, const Zep16s* pSrcImpulse,
                                                          Zep16s T0, Zep16s pitchSharp, Zep16s gainPit,
                                                          const Zep16s* pSrcLtpResidual, Zep16s* pDstCode,
                                                          Zep16s* pDstFiltCode, Zep16s* pDstIndex, Zep32s rate,
                                                          Zep32s subframe);
/** @} */

/** @defgroup amr_dec GSM-AMR decoder
 *  The stages of the speech decoder of all eight modes with comfort noise, bad-frame
 *  concealment, post-filter and post-processing (3GPP TS 26.073/26.091/26.092).
 *
 *  Frame order (Decoder_amr): zepsBitsToParam_GSMAMR_16s, zepsRxDTXHandler_GSMAMR_16s;
 *  in DTX zepsDTXDecode_GSMAMR_16s and zepsLSPAverage_GSMAMR_16s; else (lost frames:
 *  zepsBuildCNParam_GSMAMR_16s) zepsLSFDecode_GSMAMR_16s, zepsInterpolateLSP_GSMAMR_16s,
 *  per subframe zepsAdaptiveLagDecode_GSMAMR_16s, zepsAdaptiveCodebookDecode_GSMAMR_16s,
 *  zepsFixedCodebookDecode_GSMAMR_16s, zepsPitchSharpening_GSMAMR_16s_I, the gains
 *  (zepsDecodeGain_GSMAMR_16s, zepsDecodePitchGain_GSMAMR_16s, zepsConcealPitchGain_GSMAMR_16s,
 *  zepsConcealCodeGain_GSMAMR_16s), zepsInterpolateLSF_GSMAMR_16s, zepsCbGainAverage_GSMAMR_16s,
 *  zepsPhaseDispersion_GSMAMR_16s, zepsExcitationEnergy_GSMAMR_16s,
 *  zepsExcitationControl_GSMAMR_16s_I, zepsGainControl_GSMAMR_16s_I,
 *  zepsSynthesisFilter_GSMAMR_16s; then zepsBackgroundNoiseDetect_GSMAMR_16s,
 *  zepsDTXDecodeUpdate_GSMAMR_16s and zepsLSPAverage_GSMAMR_16s; last
 *  zepsPostFilter_GSMAMR_16s_I and zepsPostProcess_GSMAMR_16s_I, the output's 3 low bits
 *  cleared. The zepsc tool's amr codec strings them this way.
 *  @{ */
/* ---- amr_dec: declarations go here ---- */
/**
 * Decoder homing frame test (3GPP TS 26.073 d_homing.c,
 * decoder_homing_frame_test and decoder_homing_frame_test_first): whether the
 * parameters of the serial bits equal those of the mode's decoder homing
 * frame, over the whole frame or up to the end of the first subframe. A
 * decoder resets itself after a homing frame and outputs the encoder homing
 * pattern (every sample 0x0008) for a homing frame that follows a reset.
 *
 * @param pSrcBits       the frame's serial bits, one a word (0 or 1; nonzero counts as 1), in the
 *                       standard's parameter order (up to 244 words)
 * @param pFlag          receives 1 for a homing frame, else 0
 * @param rate           rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @param firstSubframe  nonzero: compare only the parameters up to the end of the first subframe
 * @return checks in order: pSrcBits, pFlag null -> zepStsNullPtrErr (-8);
 *         rate not a GSM-AMR rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeHomingFrameTest_GSMAMR_16s(const Zep16s* pSrcBits, Zep16s* pFlag, Zep32s rate,
                                                        Zep32s firstSubframe);

/**
 * GSM-AMR LSF decoding with concealment (3GPP TS 26.073 d_plsf_3.c D_plsf_3,
 * d_plsf_5.c D_plsf_5).
 *
 * - Rates 0, 1, 3, 6, 7, 8, 11 (D_plsf_3): 3 indices of the split VQ
 *   (codebooks as zepsLSPQuant_GSMAMR_16s; MR475/MR515 take every second
 *   entry of dico2_lsf_3), first-order MA prediction with pred_fac_3 around
 *   mean_lsf_3; 10 LSPs out.
 * - Rate 25 (a SID frame, D_plsf_3 in MRDTX): the same codebooks with the
 *   prediction factor 1; the caller first loads the predictor memory with
 *   the start vector the SID frame selects (past_rq_init).
 * - Rate 12 (D_plsf_5): 5 split-matrix indices (the third with its sign in
 *   bit 0), prediction factor 0.65 around mean_lsf_5; 20 LSPs out, the
 *   2nd-subframe vector then the 4th-subframe vector.
 * With bfi nonzero the indices are not read: the LSFs are the past ones
 * moved towards the mean (0.9 past + 0.1 mean; 0.95/0.05 for rate 12) and the
 * residual memory is re-estimated. The LSFs are spaced by at least 205
 * (Reorder_lsf); the last vector is stored as the past LSFs. The LSF to LSP
 * conversion is the one of zepsLSPQuant_GSMAMR_16s (same out-of-table decision).
 *
 * @param pPastRq    in/out: 10 values, predictor memory past_r_q (LSF residual, 16384 = 4 kHz)
 * @param pPastLSFQ  in/out: 10 values, past quantised LSFs past_lsf_q (reset: mean_lsf_5)
 * @param pSrcIndex  3 indices (5 for rate 12)
 * @param pDstLSP    out: 10 LSPs, Q15 (20 for rate 12)
 * @param rate       rate code 0, 1, 3, 6, 7, 8, 11, 12 or 25
 * @param bfi        nonzero: bad frame, conceal
 * @return checks in order: pointers in argument order -> zepStsNullPtrErr (-8);
 *         rate -> zepStsRangeErr (-7); with bfi 0, an index outside its codebook
 *         (sizes 256/256/128 for rates 0 and 1, 512/512/512 for rate 8, 256/512/512
 *         for rates 3, 6, 7, 11, 25; 128/256/512/256/64 for rate 12) ->
 *         zepStsOutOfRangeErr (-11); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLSFDecode_GSMAMR_16s(Zep16s* pPastRq, Zep16s* pPastLSFQ, const Zep16s* pSrcIndex,
                                           Zep16s* pDstLSP, Zep32s rate, Zep32s bfi);

/**
 * GSM-AMR LSP to LP coefficients (3GPP TS 26.073 lsp_az.c Lsp_Az): the sum
 * and difference polynomials of the even and odd LSPs in 32-bit Q24,
 * rounded to Q12.
 *
 * @param pSrcLSP  10 LSPs, Q15
 * @param pDstLPC  out: a[0..10], Q12, a[0] = 4096
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLSPToLPC_GSMAMR_16s(const Zep16s* pSrcLSP, Zep16s* pDstLPC);

/**
 * GSM-AMR LSP interpolation to the four subframes' A(z) (3GPP TS 26.073
 * int_lpc.c): rate 12 Int_lpc_1and3 (subframes 1 and 3 halfway between
 * their neighbours, 2 and 4 the transmitted vectors), the other rates
 * Int_lpc_1to3 (old/new weights 3/4-1/4, 1/2-1/2, 1/4-3/4, then new), each
 * converted by Lsp_Az.
 *
 * @param pLSPOld  10 LSPs of the previous frame's 4th subframe, Q15
 * @param pLSPMid  10 LSPs of the 2nd subframe (read for rate 12 only, always required)
 * @param pLSPNew  10 LSPs of the 4th subframe, Q15
 * @param pDstLPC  out: 4 x 11 coefficients, Q12
 * @param rate     rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsInterpolateLSP_GSMAMR_16s(const Zep16s* pLSPOld, const Zep16s* pLSPMid, const Zep16s* pLSPNew,
                                                Zep16s* pDstLPC, Zep32s rate);

/**
 * GSM-AMR pitch lag decoding (3GPP TS 26.073 dec_lag3.c Dec_lag3, rate 12
 * dec_lag6.c Dec_lag6), with the delta search range of dec_amr.c.
 *
 * Subframes with subframeFlag 0 are coded absolutely (rates other than 12:
 * lags 19 1/3 .. 84 2/3 in thirds, then 85 .. 143; rate 12: 17 3/6 .. 94 in
 * sixths, then 95 .. 143). The others are coded relative to T0Prev: rates
 * other than 12 use the range t0_min = T0Prev - 5 (-10 for rate 8) kept
 * within 20 .. 143 with 9 (19) lags, in thirds or, for rates 0, 1, 3 and 6,
 * the 4-bit code around T0Prev; rate 12 uses T0Prev - 5 .. + 4 within
 * 18 .. 143 in sixths. Pass the decoder's old_T0 for the rates other than 12
 * and the previous subframe's lag for rate 12, as the reference decoder does.
 *
 * @param index         received lag index
 * @param subframeFlag  0: absolute coding (the 1st, and except rates 0 and 1 the 3rd, subframe)
 * @param T0Prev        previous lag, 17..144 (as this function writes them; rate 12 codes 17 3/6 as 17 with fraction 3)
 * @param pT0           out: integer lag
 * @param pT0Frac       out: fraction, -1..1 (thirds) or -2..3 (sixths, rate 12)
 * @param rate          rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pT0, pT0Frac null -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7);
 *         T0Prev outside 17..144 -> zepStsRangeErr (-7); index outside its code (absolute: 0..255,
 *         rate 12 0..511; relative: 0..15 for rates 0, 1, 3, 6; 0..31 for 7, 11; 0..63 for 8, 12) ->
 *         zepStsOutOfRangeErr (-11); else zepStsNoErr. The lag written lies in 17..144.
 */
ZEPSAPI ZepStatus zepsAdaptiveLagDecode_GSMAMR_16s(Zep16s index, Zep16s subframeFlag, Zep16s T0Prev, Zep16s* pT0,
                                                   Zep16s* pT0Frac, Zep32s rate);

/**
 * GSM-AMR adaptive codebook vector (3GPP TS 26.073 pred_lt.c Pred_lt_3or6):
 * the past excitation interpolated at lag T0 - frac/3 (frac/6 for rate 12)
 * with the 1/6-resolution filter inter_6 (every second tap in thirds).
 *
 * @param pSrcDstExc  in/out: 154 + 40 excitation samples: 154 past samples
 *                    (PIT_MAX + L_INTERPOL) followed by the 40 of the subframe, written
 * @param T0          integer lag, 17..144
 * @param frac        fraction, -1..1 (-2..3 for rate 12)
 * @param rate        rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pSrcDstExc null -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7);
 *         T0 or frac outside its range -> zepStsOutOfRangeErr (-11); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsAdaptiveCodebookDecode_GSMAMR_16s(Zep16s* pSrcDstExc, Zep16s T0, Zep16s frac, Zep32s rate);

/**
 * GSM-AMR algebraic codebook vector of one subframe (3GPP TS 26.073
 * decode_2i40_9bits (rates 0, 1; pulses placed by subframe),
 * decode_2i40_11bits (3), decode_3i40_14bits (6), decode_4i40_17bits (7, 8),
 * dec_8i40_31bits (11), dec_10i40_35bits (12)).
 *
 * Pulses are +8191/-8192 (Q13) for rates 0..8, +-8191 for rate 11 and
 * +-4096 (Q12) for rate 12; pulses on one position add up.
 *
 * @param pSrcIndex  the subframe's codebook parameters in bit-stream order: position index then
 *                   signs (2 values, rates 0..8); 4 signs then 3 position codes (rate 11); 10
 *                   pulse codes (rate 12)
 * @param pDstCode   out: 40 samples
 * @param subframe   subframe number 0..3 (read by rates 0 and 1)
 * @param rate       rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); subframe
 *         outside 0..3 -> zepStsRangeErr (-7); a parameter outside its bit width (position/sign:
 *         7/2 bits for rates 0, 1; 9/2 for 3; 11/3 for 6; 13/4 for 7, 8; rate 11: 1, 1, 1, 1, 10,
 *         10, 7; rate 12: 4 bits five times, then 3 bits five times) -> zepStsOutOfRangeErr (-11);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsFixedCodebookDecode_GSMAMR_16s(const Zep16s* pSrcIndex, Zep16s* pDstCode, Zep32s subframe,
                                                     Zep32s rate);

/**
 * GSM-AMR pitch sharpening of the innovation (3GPP TS 26.073 dec_amr.c):
 * code[i] += mult(code[i - T0], sharp) for i = T0 .. 39, in increasing i
 * (so a pulse repeats every T0 samples). The decoder passes 2 x the previous
 * pitch gain limited to 0.8 (rate 12: 2 x the current one).
 *
 * @param pSrcDstCode  in/out: 40 innovation samples
 * @param T0           integer lag; 40 or more leaves the vector as it is
 * @param sharp        factor, Q15
 * @return checks in order: pSrcDstCode null -> zepStsNullPtrErr (-8); T0 below 1 -> zepStsRangeErr (-7);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPitchSharpening_GSMAMR_16s_I(Zep16s* pSrcDstCode, Zep16s T0, Zep16s sharp);

/**
 * GSM-AMR gain decoding of one subframe (3GPP TS 26.073 dec_gain.c
 * Dec_gain; rates 8 and 12 d_gain_pitch and d_gain_code) with the MA
 * prediction of the code gain from the innovation energy (gc_pred) and the
 * predictor update.
 *
 * - Rates 0 (MR475): one joint index for a pair of subframes, read with
 *   evenSubframe nonzero for the first of the pair and 0 for the second
 *   (table_gain_MR475; the predictor memory takes log2 and 20 log10 of the
 *   code gain factor); rates 1, 3: table_gain_lowrates; 6, 7, 11:
 *   table_gain_highrates.
 * - Rates 8 and 12 (d_gain_code): pSrcIndex[0] is the code gain index
 *   (qua_gain_code); the pitch gain is coded apart
 *   (zepsDecodePitchGain_GSMAMR_16s, needed before the pitch sharpening of
 *   rate 12) and pGainPitch is left as it is.
 *
 * @param pPastQuaEn   in/out: 8 values, past_qua_en[4] (20 log10, Q10) then past_qua_en_MR122[4]
 *                     (log2, Q10); reset values -14336 and -2381
 * @param pSrcCode     40 innovation samples after pitch sharpening (Q13; Q12 for rate 12)
 * @param pSrcIndex    1 index
 * @param pGainPitch   out: pitch gain, Q14 (not written for rates 8 and 12)
 * @param pGainCode    out: code gain, Q1 (rate 12: Q1 of the Q12 innovation)
 * @param rate         rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @param evenSubframe rate 0: nonzero for the 1st and 3rd subframes
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); an index
 *         outside its table (256 for rate 0, 64 for 1 and 3, 128 for 6, 7, 11; 32 for 8 and 12) ->
 *         zepStsOutOfRangeErr (-11); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeGain_GSMAMR_16s(Zep16s* pPastQuaEn, const Zep16s* pSrcCode, const Zep16s* pSrcIndex,
                                            Zep16s* pGainPitch, Zep16s* pGainCode, Zep32s rate, Zep32s evenSubframe);

/**
 * GSM-AMR scalar pitch gain of rates 8 and 12 (3GPP TS 26.073 d_gain_p.c
 * d_gain_pitch): qua_gain_pitch[index], Q14, with the 2 LSBs cleared for rate 12.
 *
 * @param index       pitch gain index 0..15
 * @param pGainPitch  out: pitch gain, Q14
 * @param rate        rate code 8 or 12
 * @return checks in order: pGainPitch null -> zepStsNullPtrErr (-8); rate not 8 or 12 ->
 *         zepStsRangeErr (-7); index outside 0..15 -> zepStsOutOfRangeErr (-11); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodePitchGain_GSMAMR_16s(Zep16s index, Zep16s* pGainPitch, Zep32s rate);

/**
 * GSM-AMR pitch gain concealment and history (3GPP TS 26.073 ec_gains.c
 * ec_gain_pitch and ec_gain_pitch_update). With bfi nonzero the gain is
 * replaced by min(median of the last 5, last) x pdown[state]; then (both
 * cases) a good gain after a bad frame is limited to the last good one and
 * the history takes the gain limited to 1.0.
 *
 * @param pECState   in/out: 7 values: pbuf[5], past_gain_pit, prev_gp (reset 1640 x 5, 0, 16384)
 * @param pGainPitch in/out: the decoded pitch gain (Q14), concealed or limited
 * @param state      the decoder's bad-frame state 0..6
 * @param bfi        nonzero: this frame is bad
 * @param prevBF     nonzero: the previous frame was bad
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); state outside 0..6 -> zepStsRangeErr (-7);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsConcealPitchGain_GSMAMR_16s(Zep16s* pECState, Zep16s* pGainPitch, Zep16s state, Zep16s bfi,
                                                  Zep16s prevBF);

/**
 * GSM-AMR code gain concealment and history (3GPP TS 26.073 ec_gains.c
 * ec_gain_code and ec_gain_code_update). With bfi nonzero the gain is
 * replaced by min(median of the last 5, last) x cdown[state] and the gain
 * predictor memory is updated with its limited averages
 * (gc_pred_average_limited); then a good gain after a bad frame is limited
 * to the last good one and the history updated.
 *
 * @param pECState   in/out: 7 values: gbuf[5], past_gain_code, prev_gc (reset 1 x 5, 0, 1)
 * @param pPastQuaEn in/out: the 8 predictor values as for zepsDecodeGain_GSMAMR_16s
 * @param pGainCode  in/out: the decoded code gain, concealed or limited
 * @param state      the decoder's bad-frame state 0..6
 * @param bfi        nonzero: this frame is bad
 * @param prevBF     nonzero: the previous frame was bad
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); state outside 0..6 -> zepStsRangeErr (-7);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsConcealCodeGain_GSMAMR_16s(Zep16s* pECState, Zep16s* pPastQuaEn, Zep16s* pGainCode,
                                                 Zep16s state, Zep16s bfi, Zep16s prevBF);

/**
 * GSM-AMR adaptive phase dispersion (anti-sparseness) and total excitation
 * (3GPP TS 26.073 ph_disp.c ph_disp). The dispersion strength follows the
 * pitch gain and its history with onset detection on the code gain; rates
 * other than 7, 11 and 12 then convolve each pulse of the innovation
 * circularly with the chosen impulse response (rate 8 its own pair). Last
 * the excitation becomes round((exc pitchFac + inno cbGain) << tmpShift).
 *
 * @param pState      in/out: 8 values: gainMem[5], prevState, prevCbGain, onset (reset all 0)
 * @param pSrcDstExc  in/out: 40 samples: the adaptive codebook vector in, the total excitation out
 * @param pSrcDstInno in/out: 40 innovation samples, dispersed when the filter is active
 * @param cbGain      code gain, Q1 (the decoder's averaged gain)
 * @param ltpGain     pitch gain, Q14
 * @param pitchFac    pitch factor (Q14; Q13 for rate 12)
 * @param tmpShift    1 (2 for rate 12)
 * @param rate        rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @param lockFull    nonzero: full dispersion (ph_disp_lock), else ph_disp_release
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); tmpShift
 *         outside 1..2 -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPhaseDispersion_GSMAMR_16s(Zep16s* pState, Zep16s* pSrcDstExc, Zep16s* pSrcDstInno,
                                                 Zep16s cbGain, Zep16s ltpGain, Zep16s pitchFac, Zep32s tmpShift,
                                                 Zep32s rate, Zep32s lockFull);

/**
 * GSM-AMR total excitation of one subframe, in place (3GPP TS 26.073
 * dec_amr.c Decoder_amr, "find the total excitation"): exc[i] =
 * round(L_shl(L_mac(L_mult(exc[i], pitchFac), code[i], gainCode), tmpShift))
 * with the basic operators' saturations. The decoder forms it from the
 * adaptive codebook vector and the undispersed innovation for its
 * excitation history (zepsPhaseDispersion_GSMAMR_16s forms the same sum
 * from the dispersed innovation for the synthesis).
 *
 * @param pSrcDstExc  in/out: 40 samples: the adaptive codebook vector in, the total excitation out
 * @param pSrcCode    40 innovation samples (Q13; Q12 for rate 12)
 * @param pitchFac    pitch factor (Q14; Q13 for rate 12)
 * @param gainCode    code gain, Q1
 * @param tmpShift    1 (2 for rate 12)
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); tmpShift outside 1..2 -> zepStsRangeErr (-7);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsTotalExcitation_GSMAMR_16s_I(Zep16s* pSrcDstExc, const Zep16s* pSrcCode, Zep16s pitchFac,
                                                   Zep16s gainCode, Zep32s tmpShift);

/**
 * GSM-AMR pitch-sharpened excitation of one subframe (3GPP TS 26.073
 * dec_amr.c Decoder_amr, used when 2 x the sharpening factor exceeds 1.0):
 * dst[i] = round(L_mult(mult(exc[i], pitSharp), gainPit)), the product
 * halved (L_shr by 1) before the rounding for rate 12. The decoder adds the
 * dispersed excitation to it and scales the sum with
 * zepsGainControl_GSMAMR_16s_I before the synthesis.
 *
 * @param pSrcExc   40 samples of the adaptive codebook vector (before the total excitation)
 * @param pDst      out: 40 samples
 * @param pitSharp  sharpening factor, Q14 as the decoder doubles it (Q15 read by mult)
 * @param gainPit   pitch gain, Q14
 * @param rate      rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSharpenedExcitation_GSMAMR_16s(const Zep16s* pSrcExc, Zep16s* pDst, Zep16s pitSharp,
                                                     Zep16s gainPit, Zep32s rate);

/**
 * GSM-AMR synthesis filter 1/A(z) (3GPP TS 26.073 syn_filt.c Syn_filt):
 * y[n] = round((x[n] a[0] - sum a[j] y[n-j]) << 3) with saturating
 * arithmetic. The decoder rescales its excitation by 1/4 and filters again
 * when this saturates: the saturation is reported.
 *
 * @param pSrcLPC  a[0..10], Q12
 * @param pSrc     len input samples (may be pDst)
 * @param pDst     out: len samples
 * @param pMem     in/out: 10 past outputs, oldest first; updated to the last 10 outputs when update is nonzero
 * @param len      10..160
 * @param update   nonzero: update pMem
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); len outside 10..160 -> zepStsSizeErr (-6);
 *         zepStsOverflow (12) with everything written when an operation saturated (the reference's
 *         Overflow flag); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSynthesisFilter_GSMAMR_16s(const Zep16s* pSrcLPC, const Zep16s* pSrc, Zep16s* pDst,
                                                 Zep16s* pMem, Zep32s len, Zep32s update);

/** Post-filter state block (opaque; 512 bytes, see zepsPostFilterGetStateSize_GSMAMR_16s).
 *  Any byte alignment is accepted. */
typedef struct ZepPostFilterState_GSMAMR ZepPostFilterState_GSMAMR;

/**
 * Writes the size in bytes of the GSM-AMR post-filter state block: 512.
 *
 * @param pSize  receives the size
 * @return zepStsNullPtrErr (-8) if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterGetStateSize_GSMAMR_16s(Zep32s* pSize);

/**
 * Resets a GSM-AMR post-filter state block (Post_Filter_reset with its agc
 * gain 1.0 and preemphasis memory). The whole block is written.
 *
 * @param pState  the caller's block of at least 512 bytes
 * @return zepStsNullPtrErr (-8) if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterInit_GSMAMR_16s(ZepPostFilterState_GSMAMR* pState);

/**
 * GSM-AMR formant post-filter of one frame, in place (3GPP TS 26.073
 * pstfilt.c Post_Filter): per subframe the residual through A(z/g1), tilt
 * compensation (preemphasis by 0.8 x the first correlation of the
 * truncated impulse response of A(z/g1)/A(z/g2)), 1/A(z/g2), and gain
 * control to the input's energy (agc, factor 0.9). g1/g2 are 0.7/0.75 for
 * rates 11 and 12, 0.55/0.7 for the others.
 *
 * @param pState         state initialised by zepsPostFilterInit_GSMAMR_16s
 * @param pSrcDstSpeech  in/out: 160 synthesised samples
 * @param pSrcLPC        4 x 11 coefficients of the subframes, Q12
 * @param rate           rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilter_GSMAMR_16s_I(ZepPostFilterState_GSMAMR* pState, Zep16s* pSrcDstSpeech,
                                              const Zep16s* pSrcLPC, Zep32s rate);

/**
 * GSM-AMR decoder output high-pass filter, in place (3GPP TS 26.073
 * post_pro.c Post_Process): second order, cut-off 60 Hz, output doubled
 * with saturation; the feedback kept in 32-bit double precision.
 *
 * @param pState   in/out: 6 values y2_hi, y2_lo, y1_hi, y1_lo, x0, x1 (reset all 0)
 * @param pSrcDst  in/out: len samples
 * @param len      number of samples, at least 1
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); len below 1 -> zepStsSizeErr (-6); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostProcess_GSMAMR_16s_I(Zep16s* pState, Zep16s* pSrcDst, Zep32s len);

/**
 * GSM-AMR gain control without smoothing (3GPP TS 26.073 agc.c agc2): the
 * signal is scaled by sqrt(energy(ref) / energy(signal)) (Q12 gain, energies
 * of the samples >> 2 when the plain sum saturates); a silent signal is left
 * as it is, a silent reference gives zeros. The decoder applies it to the
 * pitch-sharpened excitation with the excitation as reference.
 *
 * @param pSrcRef  len reference samples
 * @param pSrcDst  in/out: len samples, scaled
 * @param len      number of samples, at least 1
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); len below 1 -> zepStsSizeErr (-6); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainControl_GSMAMR_16s_I(const Zep16s* pSrcRef, Zep16s* pSrcDst, Zep32s len);

/**
 * GSM-AMR serial bits to decoder parameters (3GPP TS 26.073 bits2prm.c
 * Bits2prm): each parameter is read MSB first with the widths of the rate's
 * layout (rate 25: the 35-bit SID layout, 5 parameters: LSF start vector
 * index, 3 LSF indices, energy index). Counts: 17 for rate 0, 19 for 1, 3, 6
 * and 7, 23 for 8, 39 for 11, 57 for 12, 5 for 25. Decision: a word's
 * nonzero value is a 1 bit; only the bits the layout covers are read.
 *
 * @param pSrcBits   serial bits, one a word (up to 244)
 * @param pDstParam  out: the rate's parameters (at most 57)
 * @param rate       rate code 0, 1, 3, 6, 7, 8, 11, 12 or 25
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsBitsToParam_GSMAMR_16s(const Zep16s* pSrcBits, Zep16s* pDstParam, Zep32s rate);

/**
 * GSM-AMR random parameters of a lost speech frame (3GPP TS 26.073
 * b_cn_cod.c build_CN_param, as Decoder_amr calls it for NO_DATA and ONSET
 * frames outside DTX): the seed advances (seed = 31821 seed / 2 + 13849,
 * kept to 16 bits) and selects a window of the table window_200_40; each
 * parameter keeps the low bits of its width in the rate's layout.
 *
 * @param pSeed      in/out: the decoder's nodataSeed (reset value 21845)
 * @param pDstParam  out: the rate's parameters (counts as zepsBitsToParam_GSMAMR_16s)
 * @param rate       rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsBuildCNParam_GSMAMR_16s(Zep16s* pSeed, Zep16s* pDstParam, Zep32s rate);

/**
 * GSM-AMR LSF interpolation for one subframe (3GPP TS 26.073 int_lsf.c
 * Int_lsf), the weights of Int_lpc_1to3: subframe start 0: 3/4 old + 1/4
 * new, 40: 1/2 + 1/2, 80: 1/4 + 3/4, 120: the new LSFs.
 *
 * @param pLSFOld      10 LSFs of the previous frame
 * @param pLSFNew      10 LSFs of this frame
 * @param subframeStart first sample of the subframe: 0, 40, 80 or 120
 * @param pDstLSF      out: 10 interpolated LSFs
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); subframeStart not 0, 40, 80 or 120 ->
 *         zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsInterpolateLSF_GSMAMR_16s(const Zep16s* pLSFOld, const Zep16s* pLSFNew, Zep32s subframeStart,
                                                Zep16s* pDstLSF);

/**
 * GSM-AMR running mean of the LSFs (3GPP TS 26.073 lsp_avg.c lsp_avg):
 * mean = mean - 0.16 mean + 0.16 new (5243 in Q15, 32-bit accumulation,
 * rounded). The decoder runs it on its past quantised LSFs at the end of
 * every frame; Cb_gain_average compares against the mean.
 *
 * @param pSrcDstMean in/out: 10 mean LSFs (lsp_meanSave; reset: mean_lsf_5)
 * @param pSrcLSF     10 LSFs of the frame
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLSPAverage_GSMAMR_16s(Zep16s* pSrcDstMean, const Zep16s* pSrcLSF);

/**
 * GSM-AMR code gain averaging in background noise (3GPP TS 26.073
 * c_g_aver.c Cb_gain_average): the code gain enters a 7-frame history; the
 * spectral difference of the subframe's LSFs to their running mean drives a
 * hangover; for rates 0, 1, 3, 6 and 11 the gain is mixed with the mean of
 * the history (the whole history for concealed low-rate frames in
 * background noise). The other rates get the gain back as it is, the
 * history and counters updated all the same.
 *
 * @param pState          in/out: 9 values: cbGainHistory[7], hangVar, hangCount (reset all 0)
 * @param gainCode        the decoded code gain
 * @param pSrcLSF         10 LSFs of the subframe (zepsInterpolateLSF_GSMAMR_16s)
 * @param pSrcLSFMean     10 mean LSFs (zepsLSPAverage_GSMAMR_16s); each must be positive
 * @param bfi             nonzero: this frame is bad
 * @param prevBF          nonzero: the previous frame was bad
 * @param pdfi            nonzero: this frame is degraded
 * @param prevPDF         nonzero: the previous frame was degraded
 * @param inBackgroundNoise  the detector's decision of the previous frame (zepsBackgroundNoiseDetect_GSMAMR_16s)
 * @param voicedHangover  its voiced hangover count
 * @param pGainMix        out: the gain for the phase dispersion
 * @param rate            rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); a mean LSF
 *         below 1 -> zepStsOutOfRangeErr (-11) (the reference divides by it); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsCbGainAverage_GSMAMR_16s(Zep16s* pState, Zep16s gainCode, const Zep16s* pSrcLSF,
                                               const Zep16s* pSrcLSFMean, Zep16s bfi, Zep16s prevBF, Zep16s pdfi,
                                               Zep16s prevPDF, Zep16s inBackgroundNoise, Zep16s voicedHangover,
                                               Zep16s* pGainMix, Zep32s rate);

/**
 * GSM-AMR background-noise detector of the decoder (3GPP TS 26.073
 * bgnscd.c Bgn_scd): the synthesised frame's energy against a 60-frame
 * energy history decides whether the decoder is in stationary background
 * noise (after a hangover of 2 frames); the median of the pitch gain
 * history (the last 5, or all 9 after a long hangover) updates the voiced
 * hangover count (0..10).
 *
 * @param pState           in/out: 61 values: frameEnergyHist[60], bgHangover (reset all 0)
 * @param pSrcLTPGainHist  9 past pitch gains, oldest first, Q14 (ltpGainHistory)
 * @param pSrcSpeech       160 synthesised samples of the frame (before the post-filter)
 * @param pVoicedHangover  in/out: voiced hangover count (reset 0)
 * @param pInBackgroundNoise out: 1 in background noise, else 0
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsBackgroundNoiseDetect_GSMAMR_16s(Zep16s* pState, const Zep16s* pSrcLTPGainHist,
                                                       const Zep16s* pSrcSpeech, Zep16s* pVoicedHangover,
                                                       Zep16s* pInBackgroundNoise);

/**
 * GSM-AMR subframe excitation energy (3GPP TS 26.073 dec_amr.c, before
 * Ex_ctrl): sqrt(sum x^2 / 40) from the 32-bit energy by the table square
 * root, truncated to 16 bits, as the decoder keeps it in excEnergyHist.
 *
 * @param pSrcExc  40 excitation samples
 * @param pEnergy  out: the energy value
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsExcitationEnergy_GSMAMR_16s(const Zep16s* pSrcExc, Zep16s* pEnergy);

/**
 * GSM-AMR excitation control in concealed background noise (3GPP TS
 * 26.073 ex_ctrl.c Ex_ctrl): when the subframe's energy lies above 5 and
 * below the median of the 9-subframe energy history, the excitation is
 * scaled towards the lower of that median and 4 x (3 x after a bad frame
 * or with fewer than 7 voiced frames) the last energies; the scale
 * factor (Q11) is limited to 1.5 with carefulFlag.
 *
 * @param pSrcDstExc      in/out: 40 excitation samples
 * @param excEnergy       energy of the subframe (zepsExcitationEnergy_GSMAMR_16s)
 * @param pSrcEnergyHist  9 past subframe energies, oldest first (excEnergyHist)
 * @param voicedHangover  the detector's voiced hangover count
 * @param prevBFI         nonzero: the previous frame was bad
 * @param carefulFlag     nonzero: limit the scale factor
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsExcitationControl_GSMAMR_16s_I(Zep16s* pSrcDstExc, Zep16s excEnergy, const Zep16s* pSrcEnergyHist,
                                                     Zep16s voicedHangover, Zep16s prevBFI, Zep16s carefulFlag);

/** Comfort-noise decoder state block (opaque; 512 bytes, see
 *  zepsDTXDecodeGetStateSize_GSMAMR_16s). Any byte alignment is accepted. */
typedef struct ZepDTXDecodeState_GSMAMR ZepDTXDecodeState_GSMAMR;

/**
 * Writes the size in bytes of the GSM-AMR comfort-noise decoder state block: 512.
 *
 * @param pSize  receives the size
 * @return zepStsNullPtrErr (-8) if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDTXDecodeGetStateSize_GSMAMR_16s(Zep32s* pSize);

/**
 * Resets a GSM-AMR comfort-noise decoder state block (3GPP TS 26.073
 * dtx_dec.c dtx_dec_reset: DTX state machine in DTX, log energies 3500,
 * LSP history of lsp_init_data, LSF history of mean_lsf_5, noise seed
 * 0x70816958). The whole block is written.
 *
 * @param pState  the caller's block of at least 512 bytes
 * @return zepStsNullPtrErr (-8) if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDTXDecodeInit_GSMAMR_16s(ZepDTXDecodeState_GSMAMR* pState);

/**
 * GSM-AMR receiver DTX state machine (3GPP TS 26.073 dtx_dec.c
 * rx_dtx_handler), run first on every frame: from the receiver frame type
 * (0 SPEECH_GOOD, 1 SPEECH_DEGRADED, 2 ONSET, 3 SPEECH_BAD, 4 SID_FIRST,
 * 5 SID_UPDATE, 6 SID_BAD, 7 NO_DATA) the frame's DTX state (0 SPEECH,
 * 1 DTX, 2 DTX_MUTE after more than 50 frames without a SID update), the
 * encoder's hangover as the decoder tracks it and the kind of SID frame.
 * A frame in state SPEECH goes through the speech decoder (ending with
 * zepsDTXDecodeUpdate_GSMAMR_16s), any other through zepsDTXDecode_GSMAMR_16s.
 *
 * Decision: the state of the previous frame (dtxGlobalState, which the
 * speech decoder reads for its bad-frame state: DTX -> 5 with no previous
 * bad frame, DTX_MUTE -> 5 with a previous bad frame) is written to
 * pPrevState; the block stores the new state when the frame's decoding
 * ends (zepsDTXDecode_GSMAMR_16s or zepsDTXDecodeUpdate_GSMAMR_16s), as
 * Decoder_amr does.
 *
 * @param pState     in/out: state from zepsDTXDecodeInit_GSMAMR_16s
 * @param frameType  receiver frame type 0..7
 * @param pNewState  out: the frame's DTX state 0..2
 * @param pPrevState out: the previous frame's DTX state 0..2
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); frameType outside 0..7 -> zepStsRangeErr (-7);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsRxDTXHandler_GSMAMR_16s(ZepDTXDecodeState_GSMAMR* pState, Zep32s frameType, Zep16s* pNewState,
                                              Zep16s* pPrevState);

/**
 * GSM-AMR comfort-noise frame (3GPP TS 26.073 dtx_dec.c dtx_dec): at the
 * end of the encoder's hangover the averages of the LSF and energy history;
 * on a SID frame the new LSFs (D_plsf_3 from the SID's start vector) and
 * energy, and the gain predictor memories set from that energy; then the
 * LSPs and log energy interpolated over the SID period, LSF variability
 * from the history, and four subframes of random pulses through the
 * synthesis filter. In DTX_MUTE the level falls by 256 (Q11) a frame.
 *
 * The caller resets its speech decoder first as Decoder_amr_reset(MRDTX)
 * does (excitation history, lags, concealment, background-noise and
 * dispersion states; not the synthesis memory, LSF mean, excitation energy
 * history or gain predictor). Decision: the LSPs of the new past LSFs
 * (Lsf_lsp, what Decoder_amr stores as the previous frame's LSPs) are
 * written to pDstLSP; the block stores newState as the previous frame's
 * DTX state for the next zepsRxDTXHandler_GSMAMR_16s.
 *
 * @param pState      in/out: state after zepsRxDTXHandler_GSMAMR_16s for this frame
 * @param pMemSyn     in/out: 10 synthesis filter memories (oldest first)
 * @param pPastRq     in/out: 10 LSF predictor memories (as zepsLSFDecode_GSMAMR_16s)
 * @param pPastLSFQ   in/out: 10 past quantised LSFs, replaced by the comfort-noise LSFs
 * @param pPastQuaEn  in/out: 8 gain predictor values (as zepsDecodeGain_GSMAMR_16s), set on a SID frame
 * @param pCbGainAver in/out: 9 values of zepsCbGainAverage_GSMAMR_16s (hangVar set to 20, hangCount to 0)
 * @param pSrcParam   5 SID parameters (zepsBitsToParam_GSMAMR_16s, rate 25); read on SID frames only
 * @param pDstSpeech  out: 160 samples
 * @param pDstLPC     out: 4 x 11 LP coefficients for the post-filter, Q12
 * @param pDstLSP     out: 10 LSPs, Q15
 * @param newState    the frame's DTX state from zepsRxDTXHandler_GSMAMR_16s: 1 or 2
 * @param rate        the speech rate code 0, 1, 3, 6, 7, 8, 11 or 12 of the last speech frame (sets the level adjustment)
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); newState
 *         outside 1..2 -> zepStsRangeErr (-7); SID parameters outside their widths (3, 8, 9, 9, 6
 *         bits) -> zepStsOutOfRangeErr (-11); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDTXDecode_GSMAMR_16s(ZepDTXDecodeState_GSMAMR* pState, Zep16s* pMemSyn, Zep16s* pPastRq,
                                           Zep16s* pPastLSFQ, Zep16s* pPastQuaEn, Zep16s* pCbGainAver,
                                           const Zep16s* pSrcParam, Zep16s* pDstSpeech, Zep16s* pDstLPC,
                                           Zep16s* pDstLSP, Zep32s newState, Zep32s rate);

/**
 * GSM-AMR comfort-noise history of a speech frame (3GPP TS 26.073
 * dtx_dec.c dtx_dec_activity_update): the frame's LSFs and log energy
 * (Q10 log2 of the mean square) enter the 8-frame histories the next
 * comfort-noise period averages. Run at the end of every frame decoded as
 * speech; the block then stores SPEECH as the previous frame's DTX state.
 *
 * @param pState      in/out: state from zepsDTXDecodeInit_GSMAMR_16s
 * @param pSrcLSF     10 past quantised LSFs after the frame's LSF decoding
 * @param pSrcSpeech  160 synthesised samples (before the post-filter)
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDTXDecodeUpdate_GSMAMR_16s(ZepDTXDecodeState_GSMAMR* pState, const Zep16s* pSrcLSF,
                                                 const Zep16s* pSrcSpeech);
/** @} */

/** @defgroup amr_enc GSM-AMR encoder
 *  LP analysis, LSP conversion and interpolation, target and impulse
 *  response, closed-loop pitch search, gain quantisation, the subframe's
 *  state update and the parameter packing of the GSM-AMR encoder (3GPP TS
 *  26.073). Speech Q0, A(z) Q12, LSPs Q15, gains as stated.
 *
 *  Frame order of the encoder (cod_amr): input masked to 13 bits and
 *  high-pass filtered (zepsHighPassFilter_G729_16s_ISfs with the 140 Hz
 *  pre-filter and scale factor 12: the same filter); zepsAutoCorr_GSMAMR_16s32s,
 *  zepsLagWindow_G729_32s_I (the same lag window) and
 *  zepsLevinsonDurbin_GSMAMR_32s16s once (twice for rate 12);
 *  zepsLPCToLSP_GSMAMR_16s, zepsInterpolateLSPAnalysis_GSMAMR_16s_I,
 *  zepsLSPQuant_GSMAMR_16s, zepsInterpolateLSP_GSMAMR_16s; the open-loop
 *  pitch search; then per subframe zepsTargetImpulseResponse_GSMAMR_16s,
 *  zepsClosedLoopPitchSearch_GSMAMR_16s, zepsAlgebraicCodebookSearch_GSMAMR_16s,
 *  zepsGainQuant_GSMAMR_16s, zepsUpdateGpClipping_GSMAMR_16s and
 *  zepsEncoderSubframeUpdate_GSMAMR_16s; zepsParamToBits_GSMAMR_16s.
 *  @{ */

/**
 * GSM-AMR windowed autocorrelation (3GPP TS 26.073 autocorr.c Autocorr),
 * lags 0..10 of 240 windowed samples (mult_r): while r[0] saturates the
 * windowed signal is divided by 4; 1 is added to r[0] and all lags are
 * normalised by norm_l(r[0]).
 *
 * @param pSrc    240 samples
 * @param pDst    out: 11 autocorrelations in double precision, (r_h << 16) + (r_l << 1)
 * @param window  0: the 200 + 40 window of the rates other than 12;
 *                1: the 160 + 80 window and 2: the 232 + 8 window of rate 12's two analyses
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); window outside 0..2 ->
 *         zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsAutoCorr_GSMAMR_16s32s(const Zep16s* pSrc, Zep32s* pDst, Zep32s window);

/**
 * GSM-AMR Levinson-Durbin recursion of order 10 in double precision (3GPP
 * TS 26.073 levinson.c). Decision kept from the standard: the first
 * reflection coefficient is not tested; when a later one exceeds 32750 in
 * magnitude the previous filter (pOldLPC) is returned and the four
 * reflection coefficients are cleared, otherwise pOldLPC receives the new
 * filter.
 *
 * @param pOldLPC      in/out: 11 coefficients of the last stable filter, Q12 (reset: 4096, 0, ...)
 * @param pSrcAutoCorr 11 autocorrelations, (r_h << 16) + (r_l << 1)
 * @param pDstLPC      out: a[0..10], Q12
 * @param pDstRC       out: the first 4 reflection coefficients, Q15
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLevinsonDurbin_GSMAMR_32s16s(Zep16s* pOldLPC, const Zep32s* pSrcAutoCorr, Zep16s* pDstLPC,
                                                   Zep16s* pDstRC);

/**
 * GSM-AMR LP to LSP conversion (3GPP TS 26.073 az_lsp.c Az_lsp): the roots
 * of the sum and difference polynomials searched on a 60-interval cosine
 * grid with Chebyshev evaluation, four bisections and a linear
 * interpolation each. Fewer than 10 roots: the old LSPs are returned.
 *
 * @param pSrcLPC    a[0..10], Q12
 * @param pDstLSP    out: 10 LSPs, Q15
 * @param pSrcOldLSP 10 LSPs used when the search fails, Q15
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLPCToLSP_GSMAMR_16s(const Zep16s* pSrcLPC, Zep16s* pDstLSP, const Zep16s* pSrcOldLSP);

/**
 * GSM-AMR interpolation of the unquantised LSPs (3GPP TS 26.073 int_lpc.c
 * Int_lpc_1and3_2, Int_lpc_1to3_2): the subframes whose A(z) is not the
 * analysed one are rewritten, the others kept. Rate 12: subframes 1 and 3
 * from the LSPs halfway between old and mid, mid and new; other rates:
 * subframes 1..3 with the weights 3/4-1/4, 1/2-1/2, 1/4-3/4.
 *
 * @param pLSPOld     10 unquantised LSPs of the previous frame, Q15
 * @param pLSPMid     10 LSPs of the 2nd subframe (read for rate 12 only, always required)
 * @param pLSPNew     10 LSPs of the 4th subframe, Q15
 * @param pSrcDstLPC  in/out: 4 x 11 coefficients, Q12
 * @param rate        rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsInterpolateLSPAnalysis_GSMAMR_16s_I(const Zep16s* pLSPOld, const Zep16s* pLSPMid,
                                                          const Zep16s* pLSPNew, Zep16s* pSrcDstLPC, Zep32s rate);

/**
 * GSM-AMR resonance check of the LSPs (3GPP TS 26.073 ton_stab.c check_lsp):
 * the count in pToneState[0] grows while the minimum distance of LSPs 4..8
 * is below 1500 or that of LSPs 2..4 below 1100 (800 when lsp[1] > 30500,
 * 600 when > 32000), else it is cleared; the flag is 1 from 12 on (count
 * held at 12).
 *
 * @param pToneState in/out: 8 values: count, then the 7 past pitch gains / 8 (reset: all 0)
 * @param pSrcLSP    10 LSPs of the previous frame (the encoder's lsp_old), Q15
 * @param pFlag      out: resonance flag 0 or 1
 * @return zepStsNullPtrErr (-8) for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsCheckLSP_GSMAMR_16s(Zep16s* pToneState, const Zep16s* pSrcLSP, Zep16s* pFlag);

/**
 * GSM-AMR pitch-gain history of the clipping check (3GPP TS 26.073
 * ton_stab.c update_gp_clipping): the 7 past gains shift and gainPitch >> 3
 * enters last.
 *
 * @param pToneState in/out: 8 values as zepsCheckLSP_GSMAMR_16s
 * @param gainPitch  quantised pitch gain of the subframe, Q14
 * @return zepStsNullPtrErr (-8) for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsUpdateGpClipping_GSMAMR_16s(Zep16s* pToneState, Zep16s gainPitch);

/**
 * GSM-AMR target and impulse response of a subframe (3GPP TS 26.073
 * spreproc.c subframePreProc): A(z/g1) with g1 = 0.9 for rates 11 and 12,
 * 0.94 otherwise, and A(z/0.6); the impulse response of
 * A(z/g1) / (Aq(z) A(z/0.6)); the LP residual of the speech through Aq(z);
 * the target: the residual through 1/Aq(z) with the error memory, then
 * A(z/g1) and 1/A(z/0.6) with the weighting memory. The memories are read,
 * not updated (zepsEncoderSubframeUpdate_GSMAMR_16s renews them).
 *
 * @param pSrcLPC    unquantised A(z) of the subframe, 11 values, Q12
 * @param pSrcLPCQ   quantised A(z) of the subframe, 11 values, Q12
 * @param pSrcSpch   10 past samples followed by the 40 of the subframe (pointer to the first of the 50)
 * @param pMemErr    10 values: error memory (last 10 samples of speech minus synthesis)
 * @param pMemW0     10 values: weighting-filter memory of the target
 * @param pDstExc    out: 40 values: the LP residual (the excitation before the pitch search)
 * @param pDstImp    out: 40 values: impulse response, Q12
 * @param pDstTarget out: 40 values: target of the pitch search
 * @param pDstRes    out: 40 values: LP residual
 * @param rate       rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsTargetImpulseResponse_GSMAMR_16s(const Zep16s* pSrcLPC, const Zep16s* pSrcLPCQ,
                                                       const Zep16s* pSrcSpch, const Zep16s* pMemErr,
                                                       const Zep16s* pMemW0, Zep16s* pDstExc, Zep16s* pDstImp,
                                                       Zep16s* pDstTarget, Zep16s* pDstRes, Zep32s rate);

/**
 * GSM-AMR closed-loop fractional pitch search of a subframe with its
 * adaptive codebook vector and pitch gain (3GPP TS 26.073 cl_ltp.c cl_ltp,
 * pitch_fr.c Pitch_fr, enc_lag3.c, enc_lag6.c, g_pitch.c, q_gain_p.c).
 *
 * Subframes 0 and 2 search absolutely around the open-loop lag of their half
 * (rates 0 and 1: subframe 2 relative), the others relative to the previous
 * subframe's lag; resolution 1/6 for rate 12, 1/3 otherwise. The pitch gain
 * (Q14, at most 1.2) is limited to 0.95 when the resonance flag is set and
 * the clipping check fires (rates 0 and 1 cap it at 0.85 and only lower the
 * limit); rate 12 quantises it here. The target of the codebook search and
 * the LTP residual follow.
 *
 * @param pPrevLag     in/out: the previous subframe's integer lag (reset: 0); at 1/3
 *                     resolution 143 2/3 is written as 144 with fraction -1, so 144 is accepted
 * @param pToneState   8 values of zepsCheckLSP_GSMAMR_16s
 * @param pOpenLoopLag the 2 open-loop lags of the frame
 * @param pSrcImp      40 values: impulse response, Q12
 * @param pSrcDstExc   in/out: 154 past excitation samples followed by the 40 of the subframe,
 *                     which receive the adaptive codebook vector
 * @param pSrcDstRes   in/out: 40 values: LP residual in, LTP residual out
 * @param pSrcTarget   40 values: target of the pitch search
 * @param lspFlag      resonance flag of zepsCheckLSP_GSMAMR_16s
 * @param pDstTarget2  out: 40 values: target of the codebook search
 * @param pDstFltAdpt  out: 40 values: filtered adaptive codebook vector
 * @param pDstPitch    out: 4 values: integer lag, fraction, pitch gain (Q14), gain limit (Q14)
 * @param pDstGCoeff   out: 4 values: energy and correlation of the filtered vector as fraction, exponent pairs
 * @param pDstIndex    out: the lag index; rate 12 also the pitch-gain index (2 values)
 * @param subframe     subframe 0..3
 * @param rate         rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate, then subframe -> zepStsRangeErr (-7);
 *         then an open-loop lag outside 0..143 or a previous lag outside 0..144 -> zepStsOutOfRangeErr (-11);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsClosedLoopPitchSearch_GSMAMR_16s(Zep16s* pPrevLag, const Zep16s* pToneState,
                                                       const Zep16s* pOpenLoopLag, const Zep16s* pSrcImp,
                                                       Zep16s* pSrcDstExc, Zep16s* pSrcDstRes,
                                                       const Zep16s* pSrcTarget, Zep16s lspFlag,
                                                       Zep16s* pDstTarget2, Zep16s* pDstFltAdpt, Zep16s* pDstPitch,
                                                       Zep16s* pDstGCoeff, Zep16s* pDstIndex, Zep32s subframe,
                                                       Zep32s rate);

/** Gain quantiser state (opaque; zepsGainQuantGetStateSize_GSMAMR_16s bytes). */
typedef struct ZepGainQuantState_GSMAMR ZepGainQuantState_GSMAMR;

/**
 * Size of the GSM-AMR gain quantiser state.
 * @param pSize out: bytes
 * @return zepStsNullPtrErr (-8) for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainQuantGetStateSize_GSMAMR_16s(Zep32s* pSize);

/**
 * Initialises the GSM-AMR gain quantiser state (gc_pred_reset of both
 * predictors: past energies -14336 and -2381 in Q10; the rest zero).
 * @param pState state of zepsGainQuantGetStateSize_GSMAMR_16s bytes
 * @return zepStsNullPtrErr (-8) for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainQuantInit_GSMAMR_16s(ZepGainQuantState_GSMAMR* pState);

/**
 * Reads the MA gain predictor memories of a GSM-AMR gain quantiser state
 * (3GPP TS 26.073 gc_pred.c, the gc_predSt of gainQuant, newest energy
 * first), the memories zepsEncDTXSID_GSMAMR_16s updates.
 *
 * Decision: the predictor stays inside the opaque state (the signatures of
 * the quantiser do not change), DTX reaches it through this function and
 * zepsGainQuantSetPredictor_GSMAMR_16s, the reference's dtx_enc writing
 * gc_predSt directly. The second predictor of 4.75 kbit/s (gc_predUnqSt,
 * copied from the first at every even subframe) is not exposed, as dtx_enc
 * leaves it alone.
 *
 * @param pState          state from zepsGainQuantInit_GSMAMR_16s, read only
 * @param pPastQuaEn      out: 4 values, past_qua_en (Q10, log2)
 * @param pPastQuaEnMR122 out: 4 values, past_qua_en_MR122 (Q10, 20 log10)
 * @return zepStsNullPtrErr (-8) for a null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainQuantGetPredictor_GSMAMR_16s(const ZepGainQuantState_GSMAMR* pState, Zep16s* pPastQuaEn,
                                                       Zep16s* pPastQuaEnMR122);

/**
 * Writes the MA gain predictor memories of a GSM-AMR gain quantiser state
 * (the counterpart of zepsGainQuantGetPredictor_GSMAMR_16s). Any values are
 * accepted and stored as given. Nothing else in the state changes.
 *
 * @param pState          in/out: state of zepsGainQuantInit_GSMAMR_16s
 * @param pPastQuaEn      4 values, past_qua_en (Q10, log2)
 * @param pPastQuaEnMR122 4 values, past_qua_en_MR122 (Q10, 20 log10)
 * @return zepStsNullPtrErr (-8) for a null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainQuantSetPredictor_GSMAMR_16s(ZepGainQuantState_GSMAMR* pState, const Zep16s* pPastQuaEn,
                                                       const Zep16s* pPastQuaEnMR122);

/**
 * GSM-AMR gain quantisation of a subframe (3GPP TS 26.073 gain_q.c
 * gainQuant with gc_pred.c, g_code.c, q_gain_c.c, calc_en.c, qua_gain.c,
 * qgain795.c, g_adapt.c, qgain475.c): the MA-predicted code gain (gc_pred),
 * then by rate:
 * - 12: the optimum code gain (G_code) scalar-quantised; the pitch gain was
 *   quantised by the pitch search and passes unchanged;
 * - 1, 3, 6, 7, 11: the joint VQ of both gains (Qua_gain);
 * - 8: the pitch gain scalar-quantised with three candidates, the code gain
 *   searched jointly with them, then requantised with the adaptive
 *   energy-matching criterion (MR795_gain_quant); two indices;
 * - 0: the two subframes of a pair are quantised jointly. The even
 *   subframe only stores its energies (and updates the second predictor
 *   with its optimum gain); pGains[1] then receives that unquantised code
 *   gain for the caller's provisional update. The odd subframe writes the
 *   index of the pair and the quantised gains of both subframes
 *   (pGains[2], pGains[3] for the even one).
 * The predictor memory is updated with the quantised energies.
 *
 * @param pState       in/out: state of zepsGainQuantInit_GSMAMR_16s
 * @param pSrcRes      40 values: LP residual (read by rate 8)
 * @param pSrcExc      40 values: adaptive codebook vector (read by rate 8)
 * @param pSrcCode     40 values: innovation, Q13 (Q12 for rate 12)
 * @param pSrcTarget   40 values: target of the pitch search
 * @param pSrcTarget2  40 values: target of the codebook search
 * @param pSrcFltAdpt  40 values: filtered adaptive codebook vector
 * @param pSrcFltCode  40 values: filtered innovation, Q12
 * @param pSrcGCoeff   4 values of zepsClosedLoopPitchSearch_GSMAMR_16s
 * @param pGains       in/out: 4 values: [0] pitch gain (Q14, in: of the pitch search, out: quantised),
 *                     [1] out: code gain, [2], [3] out: rate 0, odd subframe: the quantised pitch
 *                     and code gains of the even subframe (else 0)
 * @param pDstIndex    out: the gain index (rate 8: pitch, then code index; rate 0: written on odd subframes only)
 * @param evenSubframe 1 for subframes 0 and 2, 0 for 1 and 3 (read by rate 0)
 * @param gpLimit      pitch-gain limit of the pitch search, Q14
 * @param rate         rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainQuant_GSMAMR_16s(ZepGainQuantState_GSMAMR* pState, const Zep16s* pSrcRes,
                                           const Zep16s* pSrcExc, const Zep16s* pSrcCode, const Zep16s* pSrcTarget,
                                           const Zep16s* pSrcTarget2, const Zep16s* pSrcFltAdpt,
                                           const Zep16s* pSrcFltCode, const Zep16s* pSrcGCoeff, Zep16s* pGains,
                                           Zep16s* pDstIndex, Zep16s evenSubframe, Zep16s gpLimit, Zep32s rate);

/**
 * GSM-AMR encoder state update after a subframe (3GPP TS 26.073
 * spstproc.c subframePostProc): excitation gp v + gc c (rate 12: gp / 2 and
 * a doubled shift), the local synthesis through 1/Aq(z), the error memory
 * (speech minus synthesis) and the weighting memory (target minus the
 * filtered contributions) of the last 10 samples; sharp = min(gp, 0.8).
 *
 * @param pSrcSpch    40 speech samples of the subframe
 * @param pSrcLPCQ    quantised A(z) of the subframe, 11 values, Q12
 * @param pSrcTarget  40 values: target of the pitch search
 * @param pSrcCode    40 values: innovation
 * @param pSrcFltAdpt 40 values: filtered adaptive codebook vector
 * @param pSrcFltCode 40 values: filtered innovation
 * @param gainPit     quantised pitch gain, Q14
 * @param gainCode    quantised code gain
 * @param pMemSyn     in/out: 10 values: synthesis filter memory
 * @param pMemErr     out: 10 values: error memory
 * @param pMemW0      out: 10 values: weighting-filter memory
 * @param pSrcDstExc  in/out: 40 values: adaptive codebook vector in, excitation out
 * @param pDstSynth   out: 40 values: local synthesis
 * @param pSharp      out: pitch sharpening factor, Q14
 * @param rate        rate code 0, 1, 3, 6, 7, 8, 11 or 12
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncoderSubframeUpdate_GSMAMR_16s(const Zep16s* pSrcSpch, const Zep16s* pSrcLPCQ,
                                                       const Zep16s* pSrcTarget, const Zep16s* pSrcCode,
                                                       const Zep16s* pSrcFltAdpt, const Zep16s* pSrcFltCode,
                                                       Zep16s gainPit, Zep16s gainCode, Zep16s* pMemSyn,
                                                       Zep16s* pMemErr, Zep16s* pMemW0, Zep16s* pSrcDstExc,
                                                       Zep16s* pDstSynth, Zep16s* pSharp, Zep32s rate);

/**
 * GSM-AMR filtering of an excitation by an impulse response (3GPP TS 26.073
 * convolve.c Convolve): y[n] = sum_{i<=n} x[i] h[n-i] accumulated with L_mac,
 * shifted left by 3 with saturation, high half (h Q12, x and y Q0). The
 * 4.75 kbit/s encoder uses it to refilter the first subframe's adaptive
 * vector of a pair.
 *
 * @param pSrc  len samples
 * @param pImp  len values of the impulse response, Q12
 * @param pDst  out: len samples
 * @param len   1..160
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); len outside 1..160 -> zepStsSizeErr (-6);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsConvolve_GSMAMR_16s(const Zep16s* pSrc, const Zep16s* pImp, Zep16s* pDst, Zep32s len);

/**
 * GSM-AMR encoder parameters to serial bits (3GPP TS 26.073 prm2bits.c
 * Prm2bits), the inverse of zepsBitsToParam_GSMAMR_16s: each parameter
 * written MSB first with the widths of the rate's layout, one bit a word
 * (0 or 1); rate 25 writes the 35 bits of the SID layout. Only the rate's
 * bits are written.
 *
 * @param pSrcParam parameters (counts as zepsBitsToParam_GSMAMR_16s)
 * @param pDstBits  out: serial bits (up to 244)
 * @param rate      rate code 0, 1, 3, 6, 7, 8, 11, 12 or 25
 * @return checks in order: pointers -> zepStsNullPtrErr (-8); rate -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsParamToBits_GSMAMR_16s(const Zep16s* pSrcParam, Zep16s* pDstBits, Zep32s rate);
/** @} */

/** @defgroup gsmfr GSM full rate
 *  The stages of the GSM 06.10 full-rate (RPE-LTP) codec, 13 kbit/s, in the
 *  fixed-point arithmetic of ETSI GSM 06.10 section 4: the encoder's
 *  preprocessing, LPC analysis with LAR quantisation, short-term analysis
 *  filter, long-term predictor and RPE encoder, and the decoder's RPE
 *  decoder, long-term and short-term synthesis filters and postprocessing.
 *  A frame is 160 samples (20 ms at 8 kHz), a sub-frame 40.
 *
 *  Frame order of the encoder: zepsPreprocess_GSMFR_16s,
 *  zepsLPCAnalysis_GSMFR_16s_I, zepsShortTermAnalysisFilter_GSMFR_16s_I on
 *  the same 160 samples; then per sub-frame k (0..3) zepsLongTermPredict_GSMFR_16s
 *  on samples 40k..40k+39, zepsRPEEncode_GSMFR_16s on its residual, and the
 *  caller's update of the reconstructed residual history
 *  dp'[i] = ep[i] + dpp[i] (saturating 16-bit addition, GSM 06.10 4.2.18).
 *  Decoder: per sub-frame zepsRPEDecode_GSMFR_16s and
 *  zepsLongTermSynthesisFilter_GSMFR_16s, then for the frame
 *  zepsShortTermSynthesisFilter_GSMFR_16s and zepsPostprocess_GSMFR_16s.
 *
 *  Parameter codes as the bitstream carries them (unsigned): LARc[0..7] of
 *  6, 6, 5, 5, 4, 4, 3, 3 bits (0..63, 0..63, 0..31, 0..31, 0..15, 0..15,
 *  0..7, 0..7), Nc 7 bits (40..120 from the encoder), bc 2 bits, Mc 2 bits,
 *  xmaxc 6 bits, xMc 3 bits.
 *
 *  State blocks are opaque; any byte alignment is accepted and a block may
 *  be copied byte-wise.
 *  @{ */
/* ---- gsmfr: declarations go here ---- */

/** Preprocessing state (opaque; 8 bytes). */
typedef struct ZepGSMFRPreprocessState ZepGSMFRPreprocessState;
/** Short-term analysis filter state (opaque; 32 bytes). */
typedef struct ZepGSMFRShortTermAnalysisState ZepGSMFRShortTermAnalysisState;
/** Short-term synthesis filter state (opaque; 36 bytes). */
typedef struct ZepGSMFRShortTermSynthesisState ZepGSMFRShortTermSynthesisState;
/** Long-term synthesis filter state (opaque; 244 bytes). */
typedef struct ZepGSMFRLongTermSynthesisState ZepGSMFRLongTermSynthesisState;
/** Postprocessing state (opaque; 4 bytes). */
typedef struct ZepGSMFRPostprocessState ZepGSMFRPostprocessState;

/**
 * Writes the size in bytes of the GSM full-rate preprocessing state: 8.
 * @param pSize receives the size
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPreprocessGetStateSize_GSMFR_16s(Zep32s* pSize);

/**
 * Resets a preprocessing state: offset-compensation memories z1 and L_z2
 * and the pre-emphasis memory mp are 0 (GSM 06.10 home state).
 * @param pState the caller's block of at least 8 bytes
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPreprocessInit_GSMFR_16s(ZepGSMFRPreprocessState* pState);

/**
 * GSM full-rate preprocessing of one frame (GSM 06.10 4.2.1 to 4.2.3):
 * downscaling to the 13-bit input (arithmetic shift right by 3, then left
 * by 2), offset compensation by the high-pass filter
 * sof[k] = so[k] - so[k-1] + 32735/32768 sof[k-1] in extended precision,
 * and pre-emphasis s[k] = sof[k] - 28180/32768 sof[k-1] (saturating).
 *
 * Input: 16-bit linear PCM; its 3 least significant bits are ignored, as
 * the standard's 13-bit left-justified input leaves them undefined. The
 * output is the pre-processed signal s of the standard (Q15 of half
 * full-scale). pSrc and pDst may be the same array.
 *
 * @param pState in/out: state from zepsPreprocessInit_GSMFR_16s
 * @param pSrc   160 input samples
 * @param pDst   160 output samples
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPreprocess_GSMFR_16s(ZepGSMFRPreprocessState* pState, const Zep16s* pSrc, Zep16s* pDst);

/**
 * GSM full-rate LPC analysis with LAR quantisation (GSM 06.10 4.2.4 to
 * 4.2.7): autocorrelation of the 160 samples with dynamic scaling (the
 * samples are scaled down by 1 to 4 bits with rounding when their maximum
 * magnitude needs it, and scaled back by a plain left shift afterwards, so
 * their low bits may change; the rescaled signal is what the short-term
 * analysis filter must be given, hence the in-place vector), reflection
 * coefficients by the Schur recursion in 16-bit arithmetic, conversion to
 * log-area ratios by the piecewise-linear approximation, and their
 * quantisation and coding to LARc.
 *
 * Decisions: the left shift that undoes the scaling keeps the low 16 bits
 * (as the standard's "<<" does); a frame of zeros gives eight zero
 * reflection coefficients, as does the rest of a recursion stopped when
 * |P[1]| exceeds P[0].
 *
 * @param pSrcDst in/out: the 160 pre-processed samples (rescaled on return)
 * @param pLARc   out: 8 coded log-area ratios (unsigned codes, see above)
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLPCAnalysis_GSMFR_16s_I(Zep16s* pSrcDst, Zep16s* pLARc);

/**
 * Writes the size in bytes of the short-term analysis filter state: 32.
 * @param pSize receives the size
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsShortTermAnalysisFilterGetStateSize_GSMFR_16s(Zep32s* pSize);

/**
 * Resets a short-term analysis filter state: the previous frame's decoded
 * LARs LARpp(j-1) and the lattice memories u[0..7] are 0.
 * @param pState the caller's block of at least 32 bytes
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsShortTermAnalysisFilterInit_GSMFR_16s(ZepGSMFRShortTermAnalysisState* pState);

/**
 * GSM full-rate short-term analysis filter (GSM 06.10 4.2.8 to 4.2.10):
 * decoding of the coded LARs, interpolation with the previous frame's set
 * (samples 0..12, 13..26, 27..39 and 40..159), conversion to reflection
 * coefficients rp, and the order-8 lattice filter that turns the signal s
 * into the short-term residual d, in place.
 *
 * @param pState  in/out: state from zepsShortTermAnalysisFilterInit_GSMFR_16s
 * @param pLARc   8 coded log-area ratios, each within its code range
 * @param pSrcDst in/out: 160 samples s (as zepsLPCAnalysis_GSMFR_16s_I left them) -> residual d
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), then
 *         zepStsOutOfRangeErr when a LARc code lies outside its range; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsShortTermAnalysisFilter_GSMFR_16s_I(ZepGSMFRShortTermAnalysisState* pState,
                                                          const Zep16s* pLARc, Zep16s* pSrcDst);

/**
 * GSM full-rate long-term predictor of one sub-frame (GSM 06.10 4.2.11 and
 * 4.2.12): the lag Nc (40..120) of the largest cross-correlation between
 * the scaled residual d and the reconstructed residual history dp', the
 * coded gain bc (0..3, thresholds DLB), the estimate dpp[k] = QLB[bc] x
 * dp'[k - Nc] (rounded) and the long-term residual e = d - dpp
 * (saturating).
 *
 * The history pDp holds the 120 reconstructed short-term residual samples
 * before the sub-frame, oldest first (the standard's dp[-120..-1]); the
 * caller appends ep + dpp after zepsRPEEncode_GSMFR_16s. Decisions: when
 * no correlation is positive, Nc is 40 and bc 0; when the correlation
 * reaches the power, bc is 3.
 *
 * @param pD   40 short-term residual samples d
 * @param pDp  120 samples of history dp', oldest first
 * @param pE   out: 40 long-term residual samples e
 * @param pDpp out: 40 samples of the estimate dpp
 * @param pNc  out: the lag Nc
 * @param pBc  out: the coded gain bc
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLongTermPredict_GSMFR_16s(const Zep16s* pD, const Zep16s* pDp, Zep16s* pE, Zep16s* pDpp,
                                                Zep16s* pNc, Zep16s* pBc);

/**
 * GSM full-rate RPE encoding of one sub-frame (GSM 06.10 4.2.13 to 4.2.17):
 * the weighting filter (11 taps H, the residual taken as zero outside its
 * 40 samples), grid selection (the grid m of 0..3 whose 13 samples
 * x[m + 3i] have the largest energy, the first on ties), APCM quantisation
 * (the block maximum coded to xmaxc by its exponent and mantissa, the 13
 * samples to 3-bit codes xMc by the inverse mantissa NRFAC), and the
 * inverse quantisation and grid positioning that give the reconstructed
 * long-term residual ep (zero off the grid).
 *
 * pSrc and pDst may be the same array (the reference works in place).
 *
 * @param pSrc   40 long-term residual samples e
 * @param pXmaxc out: the coded block maximum xmaxc (0..63)
 * @param pMc    out: the grid position Mc (0..3)
 * @param pXMc   out: 13 coded samples xMc (0..7)
 * @param pDst   out: 40 samples of the reconstructed residual ep
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsRPEEncode_GSMFR_16s(const Zep16s* pSrc, Zep16s* pXmaxc, Zep16s* pMc, Zep16s* pXMc,
                                          Zep16s* pDst);

/**
 * GSM full-rate RPE decoding of one sub-frame (GSM 06.10 4.2.15 to 4.2.17
 * as used by 4.3.1): exponent and mantissa of xmaxc, inverse APCM
 * quantisation of the 13 codes (FAC table) and their placement on grid Mc
 * of the 40-sample reconstructed long-term residual erp.
 *
 * @param xmaxc the coded block maximum, 0..63
 * @param Mc    the grid position, 0..3
 * @param pXMc  13 coded samples, each 0..7
 * @param pDst  out: 40 samples erp
 * @return zepStsNullPtrErr for a null pointer (checked in argument order); then
 *         zepStsRangeErr for xmaxc outside 0..63, then for Mc outside 0..3;
 *         then zepStsOutOfRangeErr for an xMc code outside 0..7; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsRPEDecode_GSMFR_16s(Zep16s xmaxc, Zep16s Mc, const Zep16s* pXMc, Zep16s* pDst);

/**
 * Writes the size in bytes of the long-term synthesis filter state: 244.
 * @param pSize receives the size
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLongTermSynthesisFilterGetStateSize_GSMFR_16s(Zep32s* pSize);

/**
 * Resets a long-term synthesis filter state: the last valid lag nrp is 40
 * and the 120 samples of reconstructed residual history drp are 0.
 * @param pState the caller's block of at least 244 bytes
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLongTermSynthesisFilterInit_GSMFR_16s(ZepGSMFRLongTermSynthesisState* pState);

/**
 * GSM full-rate long-term synthesis filter of one sub-frame (GSM 06.10
 * 4.3.2): drp[k] = erp[k] + QLB[bcr] x drp[k - Nr] (rounded product,
 * saturating sum), with Nr = Ncr when 40 <= Ncr <= 120 and otherwise the
 * last valid lag (the standard's concealment of a lag outside the range);
 * the state keeps the last 120 samples of drp.
 *
 * @param pState in/out: state from zepsLongTermSynthesisFilterInit_GSMFR_16s
 * @param Ncr    the received lag (any value; see above)
 * @param bcr    the received coded gain, 0..3
 * @param pErp   40 samples of reconstructed long-term residual erp
 * @param pDst   out: 40 samples of reconstructed short-term residual drp
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), then
 *         zepStsRangeErr for bcr outside 0..3; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLongTermSynthesisFilter_GSMFR_16s(ZepGSMFRLongTermSynthesisState* pState, Zep16s Ncr,
                                                        Zep16s bcr, const Zep16s* pErp, Zep16s* pDst);

/**
 * Writes the size in bytes of the short-term synthesis filter state: 36.
 * @param pSize receives the size
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsShortTermSynthesisFilterGetStateSize_GSMFR_16s(Zep32s* pSize);

/**
 * Resets a short-term synthesis filter state: the previous frame's decoded
 * LARs and the lattice memories v[0..8] are 0.
 * @param pState the caller's block of at least 36 bytes
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsShortTermSynthesisFilterInit_GSMFR_16s(ZepGSMFRShortTermSynthesisState* pState);

/**
 * GSM full-rate short-term synthesis filter of one frame (GSM 06.10 4.3.3
 * with 4.2.8 and 4.2.9): decoding and interpolation of the received LARs
 * as in the encoder, and the order-8 inverse lattice filter from the
 * reconstructed residual wt to the signal sr (saturating).
 *
 * @param pState in/out: state from zepsShortTermSynthesisFilterInit_GSMFR_16s
 * @param pLARc  8 received coded log-area ratios, each within its code range
 * @param pSrc   160 samples of reconstructed short-term residual
 * @param pDst   out: 160 synthesised samples (may be pSrc)
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), then
 *         zepStsOutOfRangeErr when a LARc code lies outside its range; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsShortTermSynthesisFilter_GSMFR_16s(ZepGSMFRShortTermSynthesisState* pState,
                                                         const Zep16s* pLARc, const Zep16s* pSrc, Zep16s* pDst);

/**
 * Writes the size in bytes of the postprocessing state: 4.
 * @param pSize receives the size
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostprocessGetStateSize_GSMFR_16s(Zep32s* pSize);

/**
 * Resets a postprocessing state: the de-emphasis memory msr is 0.
 * @param pState the caller's block of at least 4 bytes
 * @return zepStsNullPtrErr for a null pointer, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostprocessInit_GSMFR_16s(ZepGSMFRPostprocessState* pState);

/**
 * GSM full-rate postprocessing of one frame (GSM 06.10 4.3.4 to 4.3.6):
 * de-emphasis msr = s + 28180/32768 msr (rounded product, saturating sum),
 * upscaling by 2 (saturating) and truncation to 13 bits: the output is
 * 16-bit PCM with its 3 least significant bits 0. pSrc and pDst may be the
 * same array.
 *
 * @param pState in/out: state from zepsPostprocessInit_GSMFR_16s
 * @param pSrc   160 synthesised samples
 * @param pDst   out: 160 output samples
 * @return zepStsNullPtrErr for a null pointer (checked in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostprocess_GSMFR_16s(ZepGSMFRPostprocessState* pState, const Zep16s* pSrc, Zep16s* pDst);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_AMR_H */

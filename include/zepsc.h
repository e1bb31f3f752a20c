/*
 * zepsc.h - the public interface of the zepsc speech-coding primitives.
 *
 * The library exports the numerical stages of ITU-T and 3GPP speech codecs
 * (G.729 and its annexes, GSM-AMR voice activity detection and DTX, G.726
 * ADPCM, the echo-canceller sub-band filter bank). Each fixed-point stage
 * reproduces the standard's fixed-point reference bit for bit; a caller that
 * chains the stages in the standard's order reproduces the reference codec.
 *
 * Conventions shared by every export:
 *  - Every function returns a ZepStatus (zepscGetLibVersion aside): 0 on
 *    success, a negative error code, or a positive warning.
 *  - Required pointers are checked first, in argument order; the first null
 *    one gives zepStsNullPtrErr. Lengths and ranges are checked next, in the
 *    order each function documents. Nothing is written before all checks
 *    pass, so an error leaves every caller buffer as it was.
 *  - Fixed-point results saturate exactly where the standard's basic
 *    operators saturate.
 *  - No export allocates, locks or keeps hidden state: all memory is the
 *    caller's, so calls on distinct buffers may run on any threads at once.
 *
 * This header compiles as C99, C11 and C++.
 *
 * Every exported function is declared in this file exactly once, in the form
 *     ZEPSAPI <return type> <name>(<parameters>);
 * The build reads these declarations to generate the library's dispatch
 * table and forwarding entries, so the declarations below are the one list
 * of exports.
 */
#ifndef ZEPSC_H
#define ZEPSC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup types Data types
 *  @{ */
typedef uint8_t Zep8u;   /**< unsigned 8-bit integer */
typedef int8_t Zep8s;    /**< signed 8-bit integer */
typedef int16_t Zep16s;  /**< signed 16-bit integer, Q format as the standard prescribes */
typedef int32_t Zep32s;  /**< signed 32-bit integer */
typedef uint32_t Zep32u; /**< unsigned 32-bit integer */
typedef float Zep32f;    /**< 32-bit IEEE floating point */
typedef double Zep64f;   /**< 64-bit IEEE floating point */

/** Complex value with 32-bit integer parts. */
typedef struct Zep32sc {
    Zep32s re; /**< real part */
    Zep32s im; /**< imaginary part */
} Zep32sc;

/** Complex value with 32-bit float parts. */
typedef struct Zep32fc {
    Zep32f re; /**< real part */
    Zep32f im; /**< imaginary part */
} Zep32fc;
/** @} */

/** @defgroup status Status codes
 *  @{ */

/** Result of every export: 0 success, negative error, positive warning. */
typedef int32_t ZepStatus;

/** The values a ZepStatus can take. No other value is ever returned. */
enum ZepStatusCode {
    /** An internal routine the export relies on (a transform set-up, a
     *  sub-band transform) failed after work had begun; the state or output
     *  of that call is undefined and must be initialised again. */
    zepStsErr = -2,
    /** A combination of configuration arguments the routine does not support. */
    zepStsBadArgErr = -5,
    /** A length or count is below 1 or above the routine's limit. */
    zepStsSizeErr = -6,
    /** A numeric parameter outside its interval, or an unsupported rate code. */
    zepStsRangeErr = -7,
    /** A required pointer is null. */
    zepStsNullPtrErr = -8,
    /** An index, lag or code read from the caller lies outside its table. */
    zepStsOutOfRangeErr = -11,
    /** An LSF value would select a negative entry of the cosine table. */
    zepStsNegativeLSFErr = -12,
    /** A scale-factor argument outside its range. */
    zepStsScaleRangeErr = -13,
    /** The number of sub-bands of an echo-canceller filter is outside 1..4097. */
    zepStsSubbandNumErr = -119,
    /** Success: all outputs written. */
    zepStsNoErr = 0,
    /** Warning: an accumulated value left the 32-bit range (see each export). */
    zepStsOverflow = 12,
    /** Warning, outputs written: the decoded LSF vector was raised at its low end. */
    zepStsLSFLowClamped = 13,
    /** Warning, outputs written: the last decoded LSF was lowered. */
    zepStsLSFHighClamped = 14,
    /** Warning, outputs written: both corrections of 13 and 14 were made. */
    zepStsLSFLowHighClamped = 15
};
/** @} */

/** @defgroup rates Rate codes
 *  One library-wide enumeration of speech rates; a stage that depends on the
 *  bit rate takes one of these as a 32-bit code.
 *  @{ */
enum ZepRateCode {
    zepRateGSMAMR_475 = 0,  /**< GSM-AMR 4.75 kbit/s */
    zepRateGSMAMR_515 = 1,  /**< GSM-AMR 5.15 kbit/s */
    zepRateGSMAMR_59 = 3,   /**< GSM-AMR 5.9 kbit/s */
    zepRateAMRWB_660 = 5,   /**< AMR-WB 6.6 kbit/s */
    zepRateGSMAMR_67 = 6,   /**< GSM-AMR 6.7 kbit/s */
    zepRateGSMAMR_74 = 7,   /**< GSM-AMR 7.4 kbit/s */
    zepRateGSMAMR_795 = 8,  /**< GSM-AMR 7.95 kbit/s */
    zepRateGSMAMR_102 = 11, /**< GSM-AMR 10.2 kbit/s */
    zepRateGSMAMR_122 = 12, /**< GSM-AMR 12.2 kbit/s */
    zepRateG726_16 = 17,    /**< G.726 16 kbit/s */
    zepRateG726_24 = 22,    /**< G.726 24 kbit/s */
    zepRateG726_32 = 23,    /**< G.726 32 kbit/s */
    zepRateG726_40 = 24,    /**< G.726 40 kbit/s */
    zepRateDTX = 25         /**< a DTX (SID) frame */
};
/** @} */

/** @defgroup version Library version
 *  @{ */

/** The version record of the processor build the library chose at load. */
typedef struct ZepLibraryVersion {
    int32_t major;          /**< major version: 8 */
    int32_t minor;          /**< minor version: 1 */
    int32_t majorBuild;     /**< major build number: 1 */
    int32_t build;          /**< build number: 42291 */
    char targetCpu[4];      /**< build code, zero-padded: "u8" or "n8" */
    const char* name;       /**< build name: "zepSC SSSE3 (u8)" or "zepSC Lumo (n8)" */
    const char* version;    /**< version text, "8.1.1 (r42291)", one object for both builds */
    const char* buildDate;  /**< build date text, "Apr 10 2014", one object for both builds */
} ZepLibraryVersion;

/** Declares one exported function; see the note at the top of this file. */
#define ZEPSAPI extern

/**
 * Returns the version record of the processor build chosen when the library
 * was loaded: build 0 ("u8", the general SSSE3 build) or build 1 ("n8", the
 * build scheduled for low-power in-order processors with MOVBE).
 *
 * Never fails and never returns null. The record lives as long as the
 * library; the caller must neither modify nor free it.
 */
ZEPSAPI const ZepLibraryVersion* zepscGetLibVersion(void);
/** @} */

/** @defgroup common Common primitives
 *  Dot products, autocorrelation, scaling and vector arithmetic shared by the codec families.
 *  @{ */
/* ---- common: declarations go here ---- */
/**
 * Block normalisation: scales a block of 16-bit samples so that its largest
 * magnitude has `headroom` spare bits (the block_norm routine of the
 * GSM-AMR VAD option 2, 3GPP TS 26.073 vad2.c).
 *
 * With m = max |pSrc[i]| (abs_s, so -32768 counts as 32767):
 *  - m > 0: shift = norm_s(m) - headroom and pDst[i] = shl(pSrc[i], shift)
 *    (a negative shift is an arithmetic right shift);
 *  - m = 0: shift = 16 - headroom and pDst[i] = 0, so an all-zero block
 *    reports the largest shift (low energy), not norm_s(0).
 * The shift is computed with 16-bit saturation, as the reference does.
 * pSrc and pDst may be the same array.
 *
 * @param pSrc     input block
 * @param pDst     scaled block (len values)
 * @param len      number of samples
 * @param pScale   out: the left shift applied (negative: right shift)
 * @param headroom spare bits wanted above the largest magnitude (VAD option 2 uses 2)
 * @return zepStsNullPtrErr for a null pointer (pSrc, pDst, pScale in that
 *         order), then zepStsSizeErr when len < 1, then zepStsScaleRangeErr
 *         when headroom < 0; otherwise zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsAutoScale_16s(const Zep16s* pSrc, Zep16s* pDst, Zep32s len, Zep32s* pScale,
                                    Zep32s headroom);
/** @} */

/** @defgroup g729_lp G.729 LP analysis and LSP quantisation
 *  High-pass pre-processing, windowed autocorrelation, lag window, Levinson-Durbin, LP/LSP/LSF conversions, LSF quantisation and decoding (ITU-T G.729 and Annexes A, B, E).
 *  @{ */
/* ---- g729_lp: declarations go here ---- */
/** @} */

/** @defgroup g729_pitch G.729 pitch analysis and adaptive codebook
 *  Open-loop pitch, closed-loop fractional pitch search, adaptive-vector decoding and gain (ITU-T G.729 and Annexes A, D).
 *  @{ */
/* ---- g729_pitch: declarations go here ---- */
/** @} */

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
/** @} */

/** @defgroup g726 G.726 ADPCM
 *  The G.726 coder at 16, 24, 32 and 40 kbit/s (ITU-T G.726).
 *  @{ */
/* ---- g726: declarations go here ---- */
/** @} */

/** @defgroup ec Echo-canceller sub-band filter bank
 *  Sub-band analysis and synthesis, 16-bit and float.
 *  @{ */
/* ---- ec: declarations go here ---- */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_H */

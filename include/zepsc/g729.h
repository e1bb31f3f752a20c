/*
 * zepsc/g729.h - G.729 family (G.729 and Annexes A, B, D, E, I): 16-bit fixed point and float stages.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_G729_H
#define ZEPSC_G729_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup g729_lp G.729 LP analysis and LSP quantisation
 *  High-pass pre-processing, windowed autocorrelation, lag window, Levinson-Durbin, LP/LSP/LSF conversions, LSF quantisation and decoding (ITU-T G.729 and Annexes A, B, E).
 *  @{ */
/* ---- g729_lp: declarations go here ---- */
/**
 * Size in bytes of the high-pass filter state: writes 24 to *pSize.
 * @return zepStsNullPtrErr if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsHighPassFilterSize_G729(Zep32s* pSize);

/**
 * Initialises the high-pass filter state (G.729 Init_Pre_Process /
 * Init_Post_Process): zeroes the two output memories (32-bit, double
 * precision) and the two input memories, and copies the six coefficients.
 * @param pCoeffs six coefficients in the order b0, b1, b2, a0, a1, a2
 *        (140 Hz pre-filter {1899, -3798, 1899, 4096, 7807, -3733} in Q12,
 *        100 Hz post-filter {7699, -15398, 7699, 8192, 15836, -7667} in Q13);
 *        a0 is stored but not used by the filter.
 * @param pState state of zepsHighPassFilterSize_G729 bytes.
 * @return zepStsNullPtrErr if either pointer is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsHighPassFilterInit_G729(const Zep16s* pCoeffs, Zep8u* pState);

/**
 * Second-order pole/zero high-pass filter in place (G.729 Pre_Process for
 * scaleFactor 12, Post_Process for 13). Per sample: acc = a1*y[n-1] +
 * a2*y[n-2] (Mpy_32_16 on the hi/lo memories) + b0*x[n] + b1*x[n-1] +
 * b2*x[n-2] (L_mac), shifted left by 15 - scaleFactor with saturation; the
 * output is round(acc) and acc becomes y[n-1]. With scaleFactor 13 the
 * output is NOT doubled as Post_Process doubles it.
 * Checks: pSrcDst, pState null -> zepStsNullPtrErr; len < 1 -> zepStsSizeErr;
 * scaleFactor not 12 or 13 -> zepStsScaleRangeErr (data and state unchanged).
 */
ZEPSAPI ZepStatus zepsHighPassFilter_G729_16s_ISfs(Zep16s* pSrcDst, int len, int scaleFactor, Zep8u* pState);

/**
 * Windowed autocorrelation of order 12 (G.729 Annex B Autocorr with NP = 12).
 * pSrc: 240 samples; windowed by hamwindow (Q15, mult_r). Lags 0..12 are
 * computed, the window being divided by 4 (exponent + 4, starting at 1)
 * while the energy overflows; then all lags are normalised by norm_l(r[0]).
 * pDst[i] = (r_h[i] << 16) + (r_l[i] << 1), i = 0..12; *pNormOut = exp_R0.
 * Checks: any null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsAutoCorr_G729B(const Zep16s* pSrc, Zep16s* pNormOut, Zep32s* pDst);

/**
 * Lag window in place (G.729 Lag_window): pSrcDst[i] *= w[i+1], i = 0..len-1,
 * where pSrcDst holds the autocorrelation from lag 1 and w is the lag window
 * (lag_h/lag_l; entries 11 and 12 from G.729 Annex B), both in double
 * precision (Mpy_32).
 * Checks: null -> zepStsNullPtrErr; len < 1 -> zepStsSizeErr; len > 12 ->
 * zepStsRangeErr.
 */
ZEPSAPI ZepStatus zepsLagWindow_G729_32s_I(Zep32s* pSrcDst, int len);

/**
 * Levinson-Durbin recursion in double precision (G.729 Levinson, with the
 * residual energy of Annex B), for any order 1..30.
 * @param pSrcAutoCorr order+1 autocorrelations, (r_h << 16) + (r_l << 1).
 * @param pDstLPC order+1 LP coefficients, Q12, pDstLPC[0] = 4096.
 * @param pDstRC order reflection coefficients, Q15.
 * @param pResultResidualEnergy shr(alp_h, alp_exp): the high half of the
 *        normalised final prediction error shifted right by the total of the
 *        normalisation shifts (Annex B Levinson's Err).
 * Checks: any null -> zepStsNullPtrErr; order < 1 or > 30 -> zepStsRangeErr.
 * Returns zepStsOverflow with nothing written when |r[0]| < 65536 or when a
 * reflection coefficient (the first one included) exceeds 32750 in
 * magnitude; the caller then keeps its previous filter.
 */
ZEPSAPI ZepStatus zepsLevinsonDurbin_G729_32s16s(const Zep32s* pSrcAutoCorr, int order, Zep16s* pDstLPC,
                                                 Zep16s* pDstRC, Zep16s* pResultResidualEnergy);

/**
 * Levinson-Durbin recursion of order 10 (G.729 Annex B Levinson); as
 * zepsLevinsonDurbin_G729_32s16s but only the first two reflection
 * coefficients are written to pDstRC.
 * Checks: pDstRC null -> zepStsNullPtrErr first, then pSrcAutoCorr, pDstLPC,
 * pResultResidualEnergy. Returns the status of the recursion (0 or 12).
 */
ZEPSAPI ZepStatus zepsLevinsonDurbin_G729B(const Zep32s* pSrcAutoCorr, Zep16s* pDstLPC, Zep16s* pDstRC,
                                           Zep16s* pResultResidualEnergy);

/**
 * LP coefficients to LSPs (G.729 Az_lsp): Chebyshev evaluation of F1, F2 on
 * the 60-interval grid, 4 bisections, linear interpolation.
 * pLPC: 11 coefficients Q12; pLSP: 10 LSPs Q15. If fewer than 10 roots are
 * found, pPrevLSP is copied to pLSP (status still zepStsNoErr).
 * Checks: any null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsLPCToLSP_G729_16s(const Zep16s* pLPC, const Zep16s* pPrevLSP, Zep16s* pLSP);

/** As zepsLPCToLSP_G729_16s with G.729 Annex A Az_lsp: 50 grid intervals, 2 bisections. */
ZEPSAPI ZepStatus zepsLPCToLSP_G729A_16s(const Zep16s* pLPC, const Zep16s* pPrevLSP, Zep16s* pLSP);

/**
 * LSPs to LP coefficients (G.729 Lsp_Az: two Get_lsp_pol expansions in Q24,
 * combined with rounding to Q12). pLSP: 10, Q15; pLPC: 11, Q12.
 * Checks: either null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsLSPToLPC_G729_16s(const Zep16s* pLSP, Zep16s* pLPC);

/**
 * LSFs (Q13 radians) to LSPs (Q15) (G.729 Lsf_lsp2): freq = mult(lsf, 20861),
 * index = freq >> 8 limited to 63, lsp = table2[index] + ((slope_cos[index] *
 * (freq & 255)) >> 12).
 * Checks: either null -> zepStsNullPtrErr. An element giving a negative index
 * stops the call with zepStsNegativeLSFErr; the elements before it are
 * written, the rest are not.
 */
ZEPSAPI ZepStatus zepsLSFToLSP_G729_16s(const Zep16s* pLSF, Zep16s* pLSP);

/**
 * LSPs (Q15) to LSFs (Q13 radians) (G.729 Lsp_lsf2), from the last element to
 * the first with a descending table2 search.
 * Checks: either null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsLSPToLSF_G729_16s(const Zep16s* pLSP, Zep16s* pLSF);

/**
 * LSPs (Q15) to normalised LSFs (Q15, 0..0.5 of the sampling rate) (G.729
 * Lsp_lsf with its 65-entry table and slopes). The input must be decreasing,
 * as the reference's search requires; the search stops at index 0.
 * Checks: either null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsLSPToLSF_Norm_G729_16s(const Zep16s* pLSP, Zep16s* pLSF);

/**
 * LSF quantiser (G.729 Lsp_qua_cs: Get_wegt, Relspwed with the caller's MA
 * memory, Lsp_get_quant).
 * @param pLSF 10 LSFs, Q13.
 * @param pPrevFreq MA memory freq_prev, 4 rows of 10 (newest first), Q13; updated.
 * @param pQLSF 10 quantised LSFs, Q13.
 * @param pIdx {mode, L1, L2, L3}; mode 1 only if its distortion is strictly smaller.
 * Checks: any null -> zepStsNullPtrErr. Returns zepStsNoErr (the stability
 * corrections of the decoder step are not reported by the quantiser).
 */
ZEPSAPI ZepStatus zepsLSFQuant_G729_16s(const Zep16s* pLSF, Zep16s* pPrevFreq, Zep16s* pQLSF, Zep16s* pIdx);

/**
 * LSP quantiser (G.729 Qua_lsp): Lsp_lsf2, the LSF quantiser, Lsf_lsp2.
 * pIdx receives the packed indices {(mode << 7) | L1, (L2 << 5) | L3}.
 * Checks: any null -> zepStsNullPtrErr. Returns the status of the final
 * LSF -> LSP conversion.
 */
ZEPSAPI ZepStatus zepsLSPQuant_G729_16s(const Zep16s* pLSP, Zep16s* pPrevFreq, Zep16s* pQLSP, Zep16s* pIdx);

/**
 * LSF decoder for a good frame (G.729 Lsp_get_quant, the good-frame branch of
 * Lsp_iqua_cs). pIdx = {mode, L1, L2, L3} (L1 taken modulo 128, L2 and L3
 * modulo 32 as the reference masks them); pPrevFreq is updated; pQLSF
 * receives the stabilised LSFs (Q13).
 * Checks: any null -> zepStsNullPtrErr; pIdx[0] not 0 or 1 ->
 * zepStsOutOfRangeErr. Returns zepStsLSFLowClamped (first LSF raised to 40),
 * zepStsLSFHighClamped (last lowered to 25681), zepStsLSFLowHighClamped
 * (both), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLSFDecode_G729_16s(const Zep16s* pIdx, Zep16s* pPrevFreq, Zep16s* pQLSF);

/**
 * LSF decoder, erased frame (the erased branch of G.729 Lsp_iqua_cs): the
 * codebook vector that yields pLSF (the last good frame's LSFs, Q13, read
 * only) under MA mode maMode is recomputed (Lsp_prev_extract) and pushed
 * into pPrevFreq (Lsp_prev_update).
 * Checks: pPrevFreq or pLSF null -> zepStsNullPtrErr; maMode not 0 or 1 ->
 * zepStsOutOfRangeErr.
 */
ZEPSAPI ZepStatus zepsLSFDecodeErased_G729_16s(Zep16s maMode, Zep16s* pPrevFreq, const Zep16s* pLSF);

/**
 * Average of two vectors (G.729 Int_qlpc): pDst[i] = add(pSrc1[i] >> 1,
 * pSrc2[i] >> 1), arithmetic shifts, saturating add.
 * Checks: any null -> zepStsNullPtrErr; len < 1 -> zepStsSizeErr.
 */
ZEPSAPI ZepStatus zepsInterpolate_G729_16s(const Zep16s* pSrc1, const Zep16s* pSrc2, Zep16s* pDst, int len);

/**
 * Levinson-Durbin recursion in single precision, following the G.729 Annex C
 * routine levinson (generalised to orders 1..30).
 * @param pSrcAutoCorr order+1 autocorrelations (lag-windowed).
 * @param pDstLPC order+1 LP coefficients, pDstLPC[0] = 1.
 * @param pDstRC order reflection coefficients.
 * @param pResultResidualEnergy final prediction error (floored at 0.001
 *        whenever it drops to zero or below, as Annex C does).
 * Checks: any null -> zepStsNullPtrErr; order < 1 or > 30 -> zepStsRangeErr.
 * Returns zepStsOverflow with nothing written when pSrcAutoCorr[0] is not
 * positive (Annex C's autocorrelation never delivers that) or when the
 * recursion leaves the float range (inf/NaN); decisions taken here so that no
 * non-finite value is ever written.
 */
ZEPSAPI ZepStatus zepsLevinsonDurbin_G729_32f(const Zep32f* pSrcAutoCorr, int order, Zep32f* pDstLPC, Zep32f* pDstRC,
                                              Zep32f* pResultResidualEnergy);

/**
 * LP coefficients (11, a[0] = 1) to LSPs (10, cosines), following the G.729
 * Annex C routine az_lsp: 60 grid intervals, 4 bisections, linear
 * interpolation; the search resumes in the interval of the last root (where
 * the two end values are equal the root is the lower end, as in the
 * fixed-point Az_lsp, instead of Annex C's 0/0). If
 * fewer than 10 roots are found, pPrevLSP is copied to pLSP (as the 16-bit
 * routines do), status zepStsNoErr.
 * Checks: any null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsLPCToLSP_G729_32f(const Zep32f* pLPC, const Zep32f* pPrevLSP, Zep32f* pLSP);

/** As zepsLPCToLSP_G729_32f with the Annex A float az_lsp: 50 grid intervals, 2 bisections. */
ZEPSAPI ZepStatus zepsLPCToLSP_G729A_32f(const Zep32f* pLPC, const Zep32f* pPrevLSP, Zep32f* pLSP);

/**
 * LSPs (10) to LP coefficients (11, a[0] = 1), following the G.729 Annex C
 * routines lsp_az and get_lsp_pol (factor -2.0 times each LSP).
 * Checks: either null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsLSPToLPC_G729_32f(const Zep32f* pLSP, Zep32f* pLPC);

/**
 * LSF decoder for a good frame in single precision, following the G.729
 * Annex C routine lsp_get_quant with its float tables (LSFs in radians).
 * @param pIdx {mode, L1, L2, L3} as for zepsLSFDecode_G729_16s.
 * @param pPrevFreq MA memory, 4 rows of 10, newest first (reset rows are
 *        pi * (j + 1) / 11); updated.
 * @param pQLSF 10 decoded LSFs in radians.
 * Checks: any null -> zepStsNullPtrErr; pIdx[0] not 0 or 1 -> zepStsOutOfRangeErr.
 * Returns zepStsLSFLowClamped / zepStsLSFHighClamped / zepStsLSFLowHighClamped
 * when lsp_stability raised the first LSF to 0.005 / lowered the last to
 * 3.135 / both, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLSFDecode_G729_32f(const Zep16s* pIdx, Zep32f* pPrevFreq, Zep32f* pQLSF);

/**
 * Erased-frame LSF decoder in single precision (the erased branch of the
 * Annex C lsp_iqua_cs): lsp_prev_extract of pLSF (last good LSFs, radians,
 * read only) under maMode, then lsp_prev_update of pPrevFreq.
 * Checks: pPrevFreq or pLSF null -> zepStsNullPtrErr; maMode not 0 or 1 ->
 * zepStsOutOfRangeErr.
 */
ZEPSAPI ZepStatus zepsLSFDecodeErased_G729_32f(int maMode, Zep32f* pPrevFreq, const Zep32f* pLSF);

/** Size in bytes of the Annex E hybrid-window state: writes 124 (the 31
 *  32-bit recursive autocorrelations rexp of autocorr_hyb_window).
 *  @return zepStsNullPtrErr if pSize is null, else zepStsNoErr. */
ZEPSAPI ZepStatus zepsWinHybridGetStateSize_G729E_16s(Zep32s* pSize);

/** Initialises the Annex E hybrid-window state (rexp all zero, as the Annex E
 *  coder's reset). @return zepStsNullPtrErr if pState is null. */
ZEPSAPI ZepStatus zepsWinHybridInit_G729E_16s(Zep8u* pState);

/**
 * Hybrid-window autocorrelation of the G.729 Annex E backward-adaptive
 * order-30 analysis (Annex E autocorr_hyb_window; argument order as there).
 * @param pSrc 145 samples of past synthesised speech (L_ANA_BWD), oldest first.
 * @param pDst 31 autocorrelations r[0..30] (before Lag_window_bwd).
 * @param pState state of zepsWinHybridGetStateSize_G729E_16s bytes; its
 *        recursive part decays by W_FACT = 10368 (Q15) per call.
 * Checks: any null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsWinHybrid_G729E_16s32s(const Zep16s* pSrc, Zep32s* pDst, Zep8u* pState);

/**
 * Annex E forward LSP quantiser (G.729 Annex E Qua_lspe: Lsp_lsf2, Get_wegt,
 * Relspwede, Lsp_get_quante, Lsf_lsp2): the same search as
 * zepsLSPQuant_G729_16s, but the MA memory is only read; the new codebook
 * vector is returned so that the caller pushes it into its memory
 * (Lsp_prev_update) once the frame's forward/backward decision is taken.
 * Outputs in the reference routine's order:
 * @param pQLSP 10 quantised LSPs, Q15.
 * @param pIdx packed indices {(mode << 7) | L1, (L2 << 5) | L3}.
 * @param pFreqCur the 10 codebook values (Q13) for the MA memory (freq_cur).
 * Checks: any of the five pointers null -> zepStsNullPtrErr. Returns the
 * status of the final LSF -> LSP conversion.
 */
ZEPSAPI ZepStatus zepsLSPQuant_G729E_16s(const Zep16s* pLSP, const Zep16s* pPrevFreq, Zep16s* pQLSP, Zep16s* pIdx,
                                         Zep16s* pFreqCur);

/**
 * Annex E forward LSP quantiser in single precision, following the G.729
 * Annex C+ routine qua_lspe (acos/cos conversions, get_wegt, relspwede with
 * the Annex C float codebooks, lsp_get_quante). Argument roles and order as
 * zepsLSPQuant_G729E_16s: pLSP (10 cosines), pPrevFreq (4 x 10 radians,
 * read only), then the outputs pQLSP (10 cosines), pIdx (packed as the
 * 16-bit export) and pFreqCur (10 codebook values, radians).
 * Checks: any of the five pointers null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsLSPQuant_G729E_32f(const Zep32f* pLSP, const Zep32f* pPrevFreq, Zep32f* pQLSP, Zep16s* pIdx,
                                         Zep32f* pFreqCur);

/** Size in bytes of the float hybrid-window state: writes 124 (31 floats rexp).
 *  @return zepStsNullPtrErr if pSize is null, else zepStsNoErr. */
ZEPSAPI ZepStatus zepsWinHybridGetStateSize_G729E_32f(Zep32s* pSize);

/** Initialises the float hybrid-window state (rexp zero). @return zepStsNullPtrErr if pState is null. */
ZEPSAPI ZepStatus zepsWinHybridInit_G729E_32f(Zep8u* pState);

/**
 * Hybrid-window autocorrelation in single precision (G.729 Annex C+
 * autocorr_hyb_window; argument order as there): pSrc 145 samples of past
 * synthesis, pDst 31 autocorrelations, pState the recursive part (decay
 * 0.31640625 per call). Checks: any null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsWinHybrid_G729E_32f(const Zep32f* pSrc, Zep32f* pDst, Zep8u* pState);
/** @} */

/** @defgroup g729_pitch G.729 pitch analysis and adaptive codebook
 *  Open-loop pitch, closed-loop fractional pitch search, adaptive-vector decoding and gain (ITU-T G.729 and Annexes A, D).
 *  @{ */
/* ---- g729_pitch: declarations go here ---- */
/* Conventions of this group: the excitation buffer holds 154 past samples
 * (PIT_MAX + 11) followed by the 40 samples of the current subframe, and the
 * functions take a pointer to its start; a delay record is two values,
 * integer lag then fraction in thirds (-1, 0, 1). Q formats: speech,
 * excitation, targets and filtered vectors Q0, impulse response Q12, gains
 * Q14. All 16-bit members reproduce the ITU-T G.729 fixed-point reference
 * (v3.3, Annex A v1.1, Annex D) bit for bit. */

/**
 * Open-loop pitch lag of one frame (ITU-T G.729 3.4, Pitch_ol).
 * @param pSrc     weighted speech of the 80-sample frame, Q0; pSrc[-143..-1]
 *                 (the past weighted speech) are read too
 * @param pBestLag the lag found, 20..143
 * @return zepStsNullPtrErr if pSrc or pBestLag is null (in that order), else
 *         zepStsNoErr. The signal is scaled as the reference does (down by 3
 *         bits when its energy saturates, up by 3 when below 2^20).
 */
ZEPSAPI ZepStatus zepsOpenLoopPitchSearch_G729_16s(const Zep16s* pSrc, Zep16s* pBestLag);

/**
 * Open-loop pitch lag, Annex A fast search (Pitch_ol_fast): decimated
 * correlations over 20..39, 40..79 and even lags 80..142 refined by +-1,
 * multiples favoured. Arguments and checks as zepsOpenLoopPitchSearch_G729_16s.
 */
ZEPSAPI ZepStatus zepsOpenLoopPitchSearch_G729A_16s(const Zep16s* pSrc, Zep16s* pBestLag);

/**
 * Open-loop pitch lag in float, following the Annex A/C floating-point
 * pitch_ol_fast (normalisation max / sqrt(energy + 0.01); ties keep the
 * smaller lag).
 * @param pSrc     weighted speech of the 80-sample frame; pSrc[-143..-1] are read
 * @param pBestLag the lag found, 20..143
 * @return zepStsNullPtrErr if either pointer is null (in argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsOpenLoopPitchSearch_G729A_32f(const Zep32f* pSrc, Zep32s* pBestLag);

/**
 * Closed-loop fractional pitch search of one subframe (ITU-T G.729 3.7,
 * Pitch_fr3 with Norm_Corr and Interpol_3), then the adaptive vector
 * (Pred_lt_3) built in the excitation buffer.
 * Search range: subframe 0, t_min = max(20, valOpenDelay - 3), t_max = t_min + 6;
 * subframe 1 (valOpenDelay = the first subframe's integer lag),
 * t_min = max(20, valOpenDelay - 5), t_max = t_min + 9; t_max above 143 sets
 * t_max = 143 and t_min = 137 / 134. A later integer lag with an equal
 * correlation wins; in subframe 0 lags above 84 get fraction 0.
 * @param valOpenDelay          open-loop lag (subframe 0) or first subframe's lag (subframe 1), 18..145
 * @param pSrcAdptTarget        target vector, 40 samples, Q0
 * @param pSrcImpulseResponse   impulse response of the weighted synthesis filter, 40 samples, Q12
 * @param pSrcDstPrevExcitation excitation buffer (194 samples); its last 40 are
 *                              read (the LPC residual, for lags below 40) and
 *                              replaced by the adaptive vector
 * @param pDstDelay             delay record: integer lag, fraction
 * @param pDstAdptVector        adaptive vector, 40 samples
 * @param subframe              0 or 1
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if valOpenDelay is outside 18..145 or subframe outside 0..1 (a
 *         negative subframe is rejected too); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsAdaptiveCodebookSearch_G729_16s(Zep16s valOpenDelay, const Zep16s* pSrcAdptTarget,
                                                      const Zep16s* pSrcImpulseResponse,
                                                      Zep16s* pSrcDstPrevExcitation, Zep16s* pDstDelay,
                                                      Zep16s* pDstAdptVector, Zep16s subframe);

/**
 * Annex A closed-loop pitch search (Pitch_fr3_fast), bit for bit: the
 * integer lag maximises the correlation of the backward-filtered target
 * (Cor_h_X) with the past excitation, the first of equal values kept; the
 * fraction is chosen among 0, -1, +1 (in that order, a later one only if
 * strictly larger) on the interpolated vectors; no fraction in subframe 0
 * for lags above 84. Arguments, range rule and checks as
 * zepsAdaptiveCodebookSearch_G729_16s.
 */
ZEPSAPI ZepStatus zepsAdaptiveCodebookSearch_G729A_16s(Zep16s valOpenDelay, const Zep16s* pSrcAdptTarget,
                                                       const Zep16s* pSrcImpulseResponse,
                                                       Zep16s* pSrcDstPrevExcitation, Zep16s* pDstDelay,
                                                       Zep16s* pDstAdptVector, Zep16s subframe);

/**
 * Annex D (6.4 kbit/s) closed-loop pitch search, following the Annex D
 * reference Pitch_fr3D: subframe 0 as the base member; in subframe 1, with
 * m = t_max - 4, the integer lags m - 1 and m search fractions -2..2, lag
 * m - 2 searches 0..2 (starting at 0), lag m + 1 searches -2..0, every other
 * lag keeps fraction 0, so that the 4-bit lag code of Enc_lag3D carries
 * every result. Arguments and checks as zepsAdaptiveCodebookSearch_G729_16s.
 */
ZEPSAPI ZepStatus zepsAdaptiveCodebookSearch_G729D_16s(Zep16s valOpenDelay, const Zep16s* pSrcAdptTarget,
                                                       const Zep16s* pSrcImpulseResponse,
                                                       Zep16s* pSrcDstPrevExcitation, Zep16s* pDstDelay,
                                                       Zep16s* pDstAdptVector, Zep16s subframe);

/**
 * Adaptive-codebook vector from a delay record (ITU-T G.729 3.7.1, Pred_lt_3).
 * Pred_lt_3 works in place: the vector is written to the current subframe
 * of the buffer and copied to pDstAdptVector.
 * @param pSrcDelay             delay record: lag 18..144, fraction -1..1
 * @param pSrcDstPrevExcitation excitation buffer, 194 samples
 * @param pDstAdptVector        adaptive vector, 40 samples
 * @return zepStsNullPtrErr for a null pointer (argument order);
 *         zepStsOutOfRangeErr for a lag or fraction out of range; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeAdaptiveVector_G729_16s(const Zep16s* pSrcDelay, Zep16s* pSrcDstPrevExcitation,
                                                    Zep16s* pDstAdptVector);

/**
 * In-place form of zepsDecodeAdaptiveVector_G729_16s: the vector is written
 * only into the current subframe of the excitation buffer. The argument
 * order (delay record, buffer) follows the out-of-place member.
 * @return zepStsNullPtrErr, zepStsOutOfRangeErr or zepStsNoErr as that member.
 */
ZEPSAPI ZepStatus zepsDecodeAdaptiveVector_G729_16s_I(const Zep16s* pSrcDelay, Zep16s* pSrcDstPrevExcitation);

/**
 * Float in-place adaptive vector (Annex A/C floating-point pred_lt_3, float
 * inter_3l filter). The delay record is two 32-bit values (lag, fraction),
 * matching the 32-bit lag of zepsOpenLoopPitchSearch_G729A_32f.
 * @param pSrcDelay             lag 18..144, fraction -1..1
 * @param pSrcDstPrevExcitation float excitation buffer, 194 samples; samples 154..193 are written
 * @return zepStsNullPtrErr (argument order), zepStsOutOfRangeErr, or zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeAdaptiveVector_G729_32f_I(const Zep32s* pSrcDelay, Zep32f* pSrcDstPrevExcitation);

/**
 * Adaptive-codebook gain (ITU-T G.729 3.7.3): the adaptive vector convolved
 * with the impulse response (Convolve, Q12, 40 samples) and the gain
 * <x,y>/<y,y> of G_pitch in Q14: 0 when the correlation is not positive,
 * at most 19661 (1.2). The value is G_pitch's, before any GPCLIP taming.
 * @param pSrcAdptTarget      target, 40 samples
 * @param pSrcImpulseResponse impulse response, 40 samples, Q12
 * @param pSrcAdptVector      adaptive vector, 40 samples
 * @param pDstFltAdptVector   filtered adaptive vector, 40 samples
 * @param pResultAdptGain     gain, Q14
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsAdaptiveCodebookGain_G729_16s(const Zep16s* pSrcAdptTarget,
                                                    const Zep16s* pSrcImpulseResponse,
                                                    const Zep16s* pSrcAdptVector, Zep16s* pDstFltAdptVector,
                                                    Zep16s* pResultAdptGain);

/**
 * Annex A adaptive-codebook gain (Annex A G_pitch). Takes the impulse
 * response like the base member and filters the vector by convolution with
 * it (the Annex A encoder itself filters with Syn_filt). Arguments and checks as
 * zepsAdaptiveCodebookGain_G729_16s.
 */
ZEPSAPI ZepStatus zepsAdaptiveCodebookGain_G729A_16s(const Zep16s* pSrcAdptTarget,
                                                     const Zep16s* pSrcImpulseResponse,
                                                     const Zep16s* pSrcAdptVector, Zep16s* pDstFltAdptVector,
                                                     Zep16s* pResultAdptGain);

/**
 * Target of the fixed-codebook search (ITU-T G.729 3.8, Coder_ld8k):
 * pDstAdptTarget[i] = sub(pSrcAdptTarget[i], extract_h(L_shl(L_mult(pFltAdptVector[i], gain), 1))),
 * 40 samples.
 * @param gain           pitch gain, Q14
 * @param pFltAdptVector filtered adaptive vector (y1), Q0
 * @param pSrcAdptTarget pitch target (xn), Q0
 * @param pDstAdptTarget updated target (xn2), Q0; may equal pSrcAdptTarget
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsAdaptiveCodebookContribution_G729_16s(Zep16s gain, const Zep16s* pFltAdptVector,
                                                            const Zep16s* pSrcAdptTarget,
                                                            Zep16s* pDstAdptTarget);

/**
 * Float counterpart: pDstAdptTarget[i] = pSrcAdptTarget[i] - pFltAdptVector[i] * gain,
 * 40 samples (Annex C float Coder_ld8a). Arguments and checks as the 16-bit member.
 */
ZEPSAPI ZepStatus zepsAdaptiveCodebookContribution_G729_32f(Zep32f gain, const Zep32f* pFltAdptVector,
                                                            const Zep32f* pSrcAdptTarget,
                                                            Zep32f* pDstAdptTarget);

/**
 * One step of the float closed-loop search's filtered-excitation update
 * (Annex C norm_corr): with h = pSrc and e = val, the excitation sample at
 * the next lag, pSrcDst[j] = pSrcDst[j-1] + e * h[j] for j = len-1 down to
 * 1, then pSrcDst[0] = e.
 * @param pSrc    impulse response, len values
 * @param pSrcDst filtered excitation, len values, updated in place
 * @param len     vector length, at least 1
 * @param val     the new excitation sample
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsSizeErr
 *         if len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsFilteredExcitation_G729_32f(const Zep32f* pSrc, Zep32f* pSrcDst, int len, Zep32f val);

/**
 * Weighted sum pDst[i] = pSrc1[i] * val1 + pSrc2[i] * val2 in float.
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsSizeErr
 *         if len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsInterpolateC_G729_32f(const Zep32f* pSrc1, Zep32f val1, const Zep32f* pSrc2, Zep32f val2,
                                            Zep32f* pDst, int len);

/**
 * Weighted sum in fixed point: each product pSrc[i] * val (16 x 16 -> 32
 * bits, not doubled) is shifted right by scaleFactor separately with
 * rounding (2^(scaleFactor-1) added first, rounding half up), the two terms
 * are added and the sum saturated to 16 bits.
 * @param scaleFactor 0..31 (products fit in 31 bits, so 31 is the last useful shift)
 * @return zepStsNullPtrErr for a null pointer (argument order), then
 *         zepStsScaleRangeErr if scaleFactor is outside 0..31, then
 *         zepStsSizeErr if len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsInterpolateC_G729_16s_Sfs(const Zep16s* pSrc1, Zep16s val1, const Zep16s* pSrc2, Zep16s val2,
                                                Zep16s* pDst, int len, int scaleFactor);

/**
 * As zepsInterpolateC_G729_16s_Sfs with truncation (arithmetic shift, toward
 * minus infinity) instead of rounding. Same checks in the same order.
 */
ZEPSAPI ZepStatus zepsInterpolateC_NR_G729_16s_Sfs(const Zep16s* pSrc1, Zep16s val1, const Zep16s* pSrc2,
                                                   Zep16s val2, Zep16s* pDst, int len, int scaleFactor);
/** @} */

/** @defgroup g729b G.729 Annex B: voice activity detection, DTX and comfort noise
 *  The VAD, the encoder's DTX decision with its SID quantisers, the comfort-noise
 *  excitation and the decoder's SID decoding (ITU-T G.729 Annex B, also used on Annex A).
 *
 *  Encoder, per frame (after the LP analysis: zepsAutoCorr_G729B gives r and
 *  expR0, a copy r' is lag-windowed, Levinson on r' gives the LP filter and
 *  rc, zepsLPCToLSP_G729(A)_16s the LSPs, zepsLSPToLSF_Norm_G729_16s the
 *  normalised LSFs):
 *  1. zepsVAD_G729B_16s(rc[1], lsf, r', expR0, window, frame, pastVad, ppastVad, &vad);
 *  2. zepsDTXUpdate_G729B_16s(r (not lag-windowed), expR0, vad);
 *  3. if vad is 0 (and DTX is on): zepsDTX_G729B_16s(pastVad, prevFilter, &ftyp,
 *     lpc, &gainIdx, &gain); on a SID frame (ftyp 2) zepsLPCToLSP_G729(A)_16s(lpc,
 *     lspOldQ, lsp) and zepsLSPQuant_G729B_16s(lsp, freqPrev, lspSid, idx); then
 *     zepsCNGExcitation_G729B_16s(gain, exc, &seed, pitch) and the taming update
 *     with pitch[2k], pitch[2k+1] per subframe; the quantised filter of the frame
 *     interpolates lspOldQ and lspSid (which the caller keeps from the last SID
 *     frame), and lspOldQ := lspSid.
 *  4. pastVad, ppastVad := vad, pastVad on every frame; on active frames the seed
 *     returns to 11111.
 *  Decoder, per SID (2) or untransmitted (0) frame: zepsSIDGainDecode_G729B_16s,
 *  on a SID frame zepsLSFDecode_G729B_16s and zepsLSFToLSP_G729_16s into lspSid
 *  (kept by the caller; start value 31441, 27566, 21458, 13612, 4663, -4663,
 *  -13612, -21458, -27566, -31441), zepsCNGExcitation_G729B_16s with pitch null;
 *  the seed returns to 11111 on speech frames; after every good frame
 *  zepsFrameEnergy_G729B_16s saves the excitation energy used when a first SID
 *  frame is lost. docs/g729b.md shows both sequences in full.
 *  @{ */

/**
 * Size in bytes of the G.729 Annex B VAD state: writes 80 to *pSize.
 * @return zepStsNullPtrErr if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsVADGetStateSize_G729B(Zep32s* pSize);

/**
 * Initialises the VAD state (G.729 Annex B vad_init): means, minimum buffer
 * and counters zeroed, flag 1, running minimum 32767.
 * @return zepStsNullPtrErr if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsVADInit_G729B(Zep8u* pState);

/**
 * Voice activity decision of one 10 ms frame (G.729 Annex B B.3, vad).
 * @param rc         second reflection coefficient of the frame's LP analysis, Q15
 * @param pLSF       10 normalised LSFs of the unquantised LSPs (zepsLSPToLSF_Norm_G729_16s), Q15
 * @param pAutoCorr  13 lag-windowed autocorrelations, (r_h << 16) + (r_l << 1)
 *                   as zepsAutoCorr_G729B and zepsLagWindow_G729_32s_I give them
 * @param expR0      exponent of the autocorrelation (zepsAutoCorr_G729B's pNormOut)
 * @param pSrc       the 240-sample LP analysis window of pre-processed speech
 *                   (samples 120..200 give the zero-crossing rate)
 * @param frameCount frame number 1, 2, ... (the reference counts from 1 and
 *                   continues at 256 after 32767)
 * @param prevVad    decision of the previous frame (1 at start)
 * @param pprevVad   decision of the frame before (1 at start)
 * @param pVad       the decision: 1 voice, 0 noise
 * @param pState     VAD state, updated
 * Checks: pLSF, pAutoCorr, pSrc, pVad, pState null -> zepStsNullPtrErr;
 * frameCount < 1 -> zepStsRangeErr; prevVad or pprevVad not 0 or 1 ->
 * zepStsRangeErr. The count of low-energy frames of the first 32 indexes a
 * 33-entry table; it is held at 32 should a caller repeat frame numbers.
 */
ZEPSAPI ZepStatus zepsVAD_G729B_16s(Zep16s rc, const Zep16s* pLSF, const Zep32s* pAutoCorr, Zep16s expR0,
                                    const Zep16s* pSrc, Zep16s frameCount, Zep16s prevVad, Zep16s pprevVad,
                                    Zep16s* pVad, Zep8u* pState);

/**
 * Size in bytes of the G.729 Annex B DTX state of the encoder: writes 168 to *pSize.
 * @return zepStsNullPtrErr if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDTXGetStateSize_G729B(Zep32s* pSize);

/**
 * Initialises the DTX state (G.729 Annex B Init_Cod_cng): autocorrelation
 * histories zeroed with exponents 40, energies zeroed, gains and counters 0.
 * @return zepStsNullPtrErr if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDTXInit_G729B(Zep8u* pState);

/**
 * Stores the frame's autocorrelation in the DTX history (G.729 Annex B
 * Update_cng); called on every frame, active or not, after the VAD.
 * @param pAutoCorr 11 autocorrelations before the lag window (zepsAutoCorr_G729B's
 *                  pDst; only the high halves are kept, as the reference keeps r_h)
 * @param expR0     exponent of the autocorrelation
 * @param vad       the frame's VAD decision (0 or 1)
 * Checks: pAutoCorr, pState null -> zepStsNullPtrErr; vad not 0 or 1 -> zepStsRangeErr.
 */
ZEPSAPI ZepStatus zepsDTXUpdate_G729B_16s(const Zep32s* pAutoCorr, Zep16s expR0, Zep16s vad, Zep8u* pState);

/**
 * DTX decision and SID parameters of an inactive frame (G.729 Annex B B.4.1,
 * Cod_cng without the LSP quantisation and the excitation): the residual
 * energy of the last two frames' autocorrelation and its quantisation, the
 * decision (SID on the first inactive frame; afterwards, from the third frame
 * since the last SID, when the filter's Itakura distance to the last sent
 * filter or the quantised energy changed), on a SID frame the filter to send
 * (the past average filter when it is close to the current one, else the
 * current filter), and the target gain of the comfort-noise excitation.
 * @param pastVad           VAD decision of the previous frame (0 or 1)
 * @param pSrcDstPrevFilter 13 values: the last stable LP filter (11, Q12) and its
 *                          first two reflection coefficients (Q15); the recursion
 *                          falls back on it when unstable and replaces it when
 *                          stable, exactly as the encoder's own Levinson calls do,
 *                          so the encoder passes one record to all of them
 *                          (start: 4096, 0, ... 0)
 * @param pDstFrameType     2: SID frame, 0: untransmitted frame
 * @param pDstLPC           11 LP coefficients (Q12) of the filter to quantise as
 *                          the SID LSPs; written on SID frames only
 * @param pDstGainIdx       SID energy index 0..31 (sent on SID frames)
 * @param pDstGain          target gain of zepsCNGExcitation_G729B_16s for this frame
 * @param pState            DTX state, updated
 * Checks: pSrcDstPrevFilter, pDstFrameType, pDstLPC, pDstGainIdx, pDstGain,
 * pState null -> zepStsNullPtrErr; pastVad not 0 or 1 -> zepStsRangeErr.
 */
ZEPSAPI ZepStatus zepsDTX_G729B_16s(Zep16s pastVad, Zep16s* pSrcDstPrevFilter, Zep16s* pDstFrameType,
                                    Zep16s* pDstLPC, Zep16s* pDstGainIdx, Zep16s* pDstGain, Zep8u* pState);

/**
 * SID energy quantiser (G.729 Annex B B.4.2, Qua_Sidgain with Quant_Energy).
 * @param pEner     nbEner residual energies (nbEner 0: one saved frame energy)
 * @param pShEner   their exponents
 * @param nbEner    0..2; 0 quantises the decoder's saved energy pEner[0] x
 *                  2^pShEner[0] (a first SID frame lost)
 * @param pDstEnerQ quantised energy in dB (-12..66)
 * @param pDstIdx   index 0..31 of tab_Sidgain
 * Checks: any null -> zepStsNullPtrErr; nbEner outside 0..2 -> zepStsRangeErr.
 */
ZEPSAPI ZepStatus zepsSIDGainQuant_G729B_16s(const Zep16s* pEner, const Zep16s* pShEner, int nbEner,
                                             Zep16s* pDstEnerQ, Zep16s* pDstIdx);

/**
 * SID LSP quantiser (G.729 Annex B B.4.2, lsfq_noise): LSP -> LSF, spacing
 * (first LSF at least 40, each next at least 642 above the previous, the last
 * at most 25681 and, if it falls below its neighbour, that neighbour set 321
 * below it), weighting, two-stage search over the 32 + 16 SID subsets of lspcb1 and
 * lspcb2 with both MA predictors (4 survivors), gap 10, MA composition with
 * noise_fg, memory update, stability, LSF -> LSP.
 * @param pLSP      10 LSPs, Q15
 * @param pPrevFreq MA memory freq_prev, 4 x 10, Q13, the same record as the
 *                  speech quantiser's; updated
 * @param pQLSP     10 quantised LSPs, Q15
 * @param pIdx      {MA mode 0..1, first-stage index 0..31, second-stage index 0..15}
 * Checks: any null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsLSPQuant_G729B_16s(const Zep16s* pLSP, Zep16s* pPrevFreq, Zep16s* pQLSP, Zep16s* pIdx);

/**
 * SID LSF decoder (G.729 Annex B B.5, sid_lsfq_decode without the final
 * LSF -> LSP conversion): codebook vector from PtrTab_1 / PtrTab_2, gap 10,
 * MA composition with noise_fg, memory update, Lsp_stability.
 * @param pIdx      {MA mode, first-stage index (taken modulo 32), second-stage
 *                  index (taken modulo 16)}
 * @param pPrevFreq MA memory of the decoder, 4 x 10, Q13; updated
 * @param pQLSF     10 LSFs, Q13
 * Checks: any null -> zepStsNullPtrErr; pIdx[0] not 0 or 1 -> zepStsOutOfRangeErr.
 * Returns zepStsLSFLowClamped, zepStsLSFHighClamped or zepStsLSFLowHighClamped
 * when the stability step raised the first LSF to 40, lowered the last to
 * 25681, or both (outputs written), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLSFDecode_G729B_16s(const Zep16s* pIdx, Zep16s* pPrevFreq, Zep16s* pQLSF);

/**
 * Comfort-noise excitation of one frame (G.729 Annex B B.4.4, Calc_exc_rand
 * with its Random and Gauss generators): per subframe a random lag 40..103
 * with fraction, a random pitch gain below 0.5, a scaled Gaussian vector and
 * four random pulses whose gain solves the energy equation (limited to 5000).
 * @param gain       target gain (the reference's cur_gain), 0..32767; 0 gives zeros
 * @param pSrcDstExc excitation buffer of 154 + 80 samples: [0..153] the past
 *                   excitation (read), [154..233] the frame (written)
 * @param pSeed      generator seed (11111 at start and after each active frame); updated
 * @param pDstPitch  optional (may be null): 4 values {pitch gain Q14, lag} of
 *                   subframes 1 and 2, for the encoder's taming update; gain 0
 *                   and lag 41 for both when gain is 0
 * Checks: pSrcDstExc, pSeed null -> zepStsNullPtrErr; gain < 0 -> zepStsRangeErr.
 */
ZEPSAPI ZepStatus zepsCNGExcitation_G729B_16s(Zep16s gain, Zep16s* pSrcDstExc, Zep16s* pSeed, Zep16s* pDstPitch);

/**
 * Size in bytes of the decoder's SID gain state: writes 4 to *pSize.
 * @return zepStsNullPtrErr if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSIDGainDecodeGetStateSize_G729B(Zep32s* pSize);

/**
 * Initialises the decoder's SID gain state (G.729 Annex B Init_Dec_cng):
 * SID gain tab_Sidgain[0], current gain 0.
 * @return zepStsNullPtrErr if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSIDGainDecodeInit_G729B(Zep8u* pState);

/**
 * Comfort-noise gain of a SID or untransmitted frame at the decoder (G.729
 * Annex B B.5, the gain part of Dec_cng): a SID frame sets the SID gain to
 * tab_Sidgain[gainIdx]; an untransmitted frame after a speech frame (a lost
 * first SID) quantises the saved energy; the gain is the SID gain after a
 * speech frame, else 7/8 of the previous gain plus 1/8 of the SID gain.
 * @param frameType     2: SID frame, 0: untransmitted (or erased) frame
 * @param gainIdx       SID energy index 0..31 (used on SID frames; checked on every
 *                      frame, so pass 0 for an untransmitted frame)
 * @param pastFrameType type of the previous frame: 1 speech, 2 SID, 0 untransmitted
 * @param sidSav        saved energy of the last good frame (zepsFrameEnergy_G729B_16s)
 * @param shSidSav      its exponent
 * @param pDstGain      gain for zepsCNGExcitation_G729B_16s
 * @param pState        SID gain state, updated
 * Checks: pDstGain, pState null -> zepStsNullPtrErr; frameType not 0 or 2 ->
 * zepStsRangeErr; pastFrameType outside 0..2 -> zepStsRangeErr; gainIdx
 * outside 0..31 -> zepStsOutOfRangeErr.
 */
ZEPSAPI ZepStatus zepsSIDGainDecode_G729B_16s(Zep16s frameType, Zep16s gainIdx, Zep16s pastFrameType,
                                              Zep16s sidSav, Zep16s shSidSav, Zep16s* pDstGain, Zep8u* pState);

/**
 * Energy of a decoded frame's excitation, saved for a lost first SID frame
 * (G.729 Annex B decoder, after every good frame): e = sum of exc^2 (L_mac,
 * saturating), *pDstEner = round(e << norm_l(e)), *pDstShift = 16 - norm_l(e).
 * @param pSrcExc 80 excitation samples
 * Checks: any null -> zepStsNullPtrErr.
 */
ZEPSAPI ZepStatus zepsFrameEnergy_G729B_16s(const Zep16s* pSrcExc, Zep16s* pDstEner, Zep16s* pDstShift);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_G729_H */

/* SPDX-License-Identifier: BSD-3-Clause */
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

/** @defgroup g729_excitation G.729 excitation, gains and synthesis
 *  Pitch-delay code, fixed-codebook vector, gain prediction and decoding, excitation, LP synthesis and inverse filters (ITU-T G.729 and Annex A).
 *  @{ */
/* Conventions of this group: subframes of 40 samples; LP coefficients Q12
 * (11 values, a[0] = 4096), speech and excitation Q0, fixed-codebook
 * vectors Q13, pitch gains Q14, code gains Q1, past quantised energies Q10
 * (the gain predictor's memory: four values, newest first, reset to -14336
 * each by the caller). Every member reproduces the ITU-T G.729 fixed-point
 * reference (v3.3; Annex A v1.1, whose routines of these stages are the
 * same) bit for bit. */

/**
 * Pitch delay from its code (ITU-T G.729 4.1.3, Dec_lag3).
 * Subframe 0: an 8-bit code; below 197 the lag (index + 2) / 3 + 19 with a
 * fraction, from 197 the integer lag index - 112. Subframe 1: a 5-bit code
 * relative to t0_min = max(20, T1 - 5) (t0_min + 9 at most 143), T1 the
 * first subframe's integer lag, read from pSrcDstDelay[0].
 * @param index        the code: 0..255 (subframe 0) or 0..31 (subframe 1)
 * @param subframe     0 or 1
 * @param pSrcDstDelay delay record (integer lag, fraction -1..1); in subframe 1
 *                     its lag (18..145) is read first
 * @return zepStsNullPtrErr if pSrcDstDelay is null; zepStsRangeErr if subframe
 *         is not 0 or 1; zepStsOutOfRangeErr if the index is outside its code
 *         range or the subframe-1 reference lag outside 18..145; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeLag_G729_16s(Zep16s index, Zep16s subframe, Zep16s* pSrcDstDelay);

/**
 * Pitch-delay code (ITU-T G.729 3.7.2, Enc_lag3): subframe 0, 3 T0 - 58 +
 * frac for lags up to 85 and T0 + 112 above; subframe 1, 3 (T0 - t0_min) +
 * 2 + frac with t0_min = max(20, t0Prev - 5) (t0_min + 9 at most 143).
 * @param pSrcDelay delay record (integer lag, fraction -1..1)
 * @param t0Prev    subframe 1: the first subframe's integer lag, 18..145 (ignored in subframe 0)
 * @param subframe  0 or 1
 * @param pDstIndex the code, 0..255 or 0..31
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         subframe is not 0 or 1, or (subframe 1) t0Prev is outside 18..145;
 *         zepStsOutOfRangeErr if the delay has no code (fraction outside
 *         -1..1, subframe-0 lag outside 19..143 or above 85 with a fraction,
 *         subframe-1 lag outside t0_min - 1 .. t0_min + 10 or code outside 0..31);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncodeLag_G729_16s(const Zep16s* pSrcDelay, Zep16s t0Prev, Zep16s subframe,
                                         Zep16s* pDstIndex);

/**
 * Parity bit of the first subframe's pitch code (ITU-T G.729 3.7.2,
 * Parity_Pitch): 1 XOR the six most significant of its 8 bits. A decoder
 * compares it with the received bit (Check_Parity_Pitch).
 * @param index   8-bit pitch code, 0..255
 * @param pParity the parity bit, 0 or 1
 * @return zepStsNullPtrErr if pParity is null; zepStsOutOfRangeErr if index is
 *         outside 0..255; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsParityPitch_G729_16s(Zep16s index, Zep16s* pParity);

/**
 * Fixed-codebook vector from its codes (ITU-T G.729 4.1.4, Decod_ACELP):
 * 40 samples, zero but for four pulses of +8191 or -8192 (Q13) at positions
 * 5 m0, 5 m1 + 1, 5 m2 + 2, 5 m3 + 3 + j (index bits 0-2, 3-5, 6-8, 10-12;
 * j = bit 9); sign bit k set gives pulse k a positive sign.
 * @param sign  4-bit sign code, 0..15
 * @param index 13-bit position code, 0..8191
 * @param pDst  the vector, 40 samples, Q13
 * @return zepStsNullPtrErr if pDst is null; zepStsOutOfRangeErr if a code is
 *         outside its range; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeFixedCodebook_G729_16s(Zep16s sign, Zep16s index, Zep16s* pDst);

/**
 * Pitch sharpening (ITU-T G.729 3.8): pSrcDst[i] += mult(pSrcDst[i - lag],
 * shl(sharp, 1)) for i = lag..39, in increasing i (so a lag below 20 repeats
 * the pulses). Applied to the fixed-codebook vector (decoder and encoder)
 * and to the impulse response before the codebook search. Nothing changes
 * for lags of 40 and above.
 * @param lag     integer pitch lag, at least 1
 * @param sharp   previous quantised pitch gain bounded to 3277..13017 (0.2..0.8), Q14
 * @param pSrcDst 40 samples, in place
 * @return zepStsNullPtrErr if pSrcDst is null; zepStsRangeErr if lag < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPitchSharpening_G729_16s_I(Zep16s lag, Zep16s sharp, Zep16s* pSrcDst);

/**
 * Predicted fixed-codebook gain (ITU-T G.729 3.9.1, Gain_predict): from the
 * innovation energy of pCode and the MA predictor (pred = {5571, 4751, 2785,
 * 1556}, Q13) over the past quantised energies; the gain is
 * *pGcode0 * 2^-*pExpGcode0 (16768 < *pGcode0 <= 32767 before the exponent).
 * @param pPastQuaEn past quantised energies, 4 values, Q10 (read only)
 * @param pCode      fixed-codebook vector, 40 samples, Q13
 * @param pGcode0    predicted gain mantissa
 * @param pExpGcode0 its Q format
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainPredict_G729_16s(const Zep16s* pPastQuaEn, const Zep16s* pCode, Zep16s* pGcode0,
                                           Zep16s* pExpGcode0);

/**
 * Update of the code-gain predictor memory (ITU-T G.729 3.9.1, Gain_update):
 * the four values shift (oldest dropped) and the newest becomes
 * 20 log10(gbk12 / 8192) in Q10.
 * @param gbk12      the chosen correction factor gbk1[.][1] + gbk2[.][1], Q13, at least 1
 * @param pPastQuaEn past quantised energies, 4 values, Q10, updated
 * @return zepStsNullPtrErr if pPastQuaEn is null; zepStsRangeErr if gbk12 < 1;
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainUpdate_G729_16s(Zep32s gbk12, Zep16s* pPastQuaEn);

/**
 * Gain decoding of a received subframe (ITU-T G.729 4.1.5, Dec_gain): the
 * 7-bit index (3 bits of the first stage, then 4 of the second, each through
 * imap1 / imap2), the pitch gain gbk1[.][0] + gbk2[.][0], the code gain as
 * the predicted gain of pCode times the correction; the predictor memory
 * is updated.
 * @param index      gain index, 0..127
 * @param pCode      the subframe's fixed-codebook vector after pitch sharpening, 40 samples, Q13
 * @param pPastQuaEn past quantised energies, 4 values, Q10, updated
 * @param pDstGain   pitch gain (Q14), code gain (Q1)
 * @return zepStsNullPtrErr for a null pointer (argument order);
 *         zepStsOutOfRangeErr if index is outside 0..127 (nothing written); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeGain_G729_16s(Zep16s index, const Zep16s* pCode, Zep16s* pPastQuaEn,
                                          Zep16s* pDstGain);

/**
 * Gains of an erased subframe (ITU-T G.729 4.4.2, the erasure branch of
 * Dec_gain): pitch gain times 0.9 (29491, Q15), at most 29491; code gain
 * times 0.98 (32111); the predictor memory gets the mean of its four values
 * minus 4 dB (4096), at least -14336 (Gain_update_erasure).
 * @param pPastQuaEn  past quantised energies, 4 values, Q10, updated
 * @param pSrcDstGain the previous subframe's gains in, this subframe's out:
 *                    pitch gain (Q14), code gain (Q1)
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeGainErased_G729_16s(Zep16s* pPastQuaEn, Zep16s* pSrcDstGain);

/**
 * Total excitation of a subframe (ITU-T G.729 4.1.6): pSrcDstExc[i] =
 * round(L_shl(L_mac(L_mult(pSrcDstExc[i], gainPitch), pCode[i], gainCode), 1)),
 * the adaptive vector replaced in place.
 * @param gainPitch  pitch gain, Q14
 * @param gainCode   code gain, Q1
 * @param pCode      fixed-codebook vector, Q13, len samples
 * @param pSrcDstExc adaptive vector in, excitation out, Q0, len samples
 * @param len        number of samples, at least 1 (40 in the codec)
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsSizeErr if
 *         len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsMixExcitation_G729_16s_I(Zep16s gainPitch, Zep16s gainCode, const Zep16s* pCode,
                                               Zep16s* pSrcDstExc, int len);

/**
 * Order-10 synthesis filter 1/A(z) (ITU-T G.729 4.1.6, Syn_filt): per sample
 * s = L_mult(x, a0) - sum L_mult(a[j], y[-j]) (L_msu), y = round(L_shl(s, 3)).
 * pDst may equal pSrc; pSrcDstMem may overlap pDst (it is read before any
 * output is written), as the reference's impulse-response calls do.
 * @param pLPC       A(z), 11 values, Q12
 * @param pSrc       excitation, len samples
 * @param pDst       synthesis, len samples
 * @param len        number of samples, at least 1
 * @param pSrcDstMem the 10 past outputs, oldest first; replaced by the last
 *                   10 outputs (earlier memory values when len < 10) if update is not 0
 * @param update     0: memory left as it is; otherwise updated
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsSizeErr if
 *         len < 1; zepStsOverflow when a basic operator saturated (the
 *         reference's Overflow flag: the decoder then scales its excitation
 *         down by 4 and filters again), with the saturated output written and
 *         the memory handled as on success; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSynthesisFilter_G729_16s(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len,
                                               Zep16s* pSrcDstMem, int update);

/**
 * Order-10 synthesis filter 1/A(z) in single precision (G.729 Annex C
 * syn_filt): per sample s = x, then s -= a[j] * y[-j] for j = 1..10 in that
 * order, y = s. The same float operations in the same order on every
 * processor build. pDst may equal pSrc; pSrcDstMem may overlap pDst (it is
 * read before any output is written).
 * @param pLPC       A(z), 11 values; pLPC[0] is taken as 1 and not read
 * @param pSrc       excitation, len samples
 * @param pDst       synthesis, len samples
 * @param len        number of samples, at least 1 (40 in the codec)
 * @param pSrcDstMem the 10 past outputs, oldest first; replaced by the last
 *                   10 outputs (earlier memory values when len < 10) if update is not 0
 * @param update     0: memory left as it is; otherwise updated
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsSizeErr if
 *         len < 1; else zepStsNoErr. Decision: no check on the values; an
 *         unstable filter runs into IEEE infinities as Annex C's does.
 */
ZEPSAPI ZepStatus zepsSynthesisFilter_G729_32f(const Zep32f* pLPC, const Zep32f* pSrc, Zep32f* pDst, int len,
                                               Zep32f* pSrcDstMem, int update);

/**
 * Order-10 inverse filter A(z) (ITU-T G.729 3.6, Residu): y = round(L_shl(
 * L_mult(x, a0) + sum L_mult(a[j], x[-j]), 3)) with L_mac.
 * @param pLPC A(z), 11 values, Q12
 * @param pSrc input, len samples; pSrc[-10..-1] are read too
 * @param pDst output, len samples; must not overlap pSrc[-10..len-1]
 * @param len  number of samples, at least 1
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsSizeErr if
 *         len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsResidual_G729_16s(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len);

/**
 * Bandwidth expansion A(z/gamma) (ITU-T G.729 3.3, Weight_Az): pDst[0] =
 * pLPC[0], pDst[i] = round(L_mult(pLPC[i], gamma^i)) with gamma^i formed by
 * repeated rounded products.
 * @param pLPC  A(z), 11 values, Q12
 * @param gamma Q15 (the codec's values: 24576 = 0.75 in Annex A, 18022 and 22938 in its post-filter)
 * @param pDst  A(z/gamma), 11 values, Q12; may equal pLPC
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsWeightLPC_G729_16s(const Zep16s* pLPC, Zep16s gamma, Zep16s* pDst);
/** @} */

/** @defgroup g729_encoder G.729 encoder stages
 *  Weighting, fixed-codebook search, pitch gain, gain quantisation, taming and the weighted-error memory (ITU-T G.729 and Annex A).
 *  @{ */
/* Conventions as the g729_excitation group; impulse responses Q12,
 * filtered fixed-codebook vectors Q12. The 32-bit taming record is four
 * values Q14, newest first, reset to 0x00004000 each by the caller. */

/**
 * Annex A weighting denominator (ITU-T G.729 Annex A A.3.3): pDstLPC[0] =
 * 4096, pDstLPC[i] = sub(Ap[i], mult(Ap[i-1], 22938)) for i = 1..10, Ap the
 * weighted filter A(z/0.75); the weighted speech is the LPC residual
 * through 1/pDstLPC(z).
 * @param pSrcWeightedLPC A(z/0.75), 11 values, Q12
 * @param pDstLPC         11 values, Q12; may equal pSrcWeightedLPC
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsWeightingDenominator_G729A_16s(const Zep16s* pSrcWeightedLPC, Zep16s* pDstLPC);

/**
 * Annex A fast fixed-codebook search (ITU-T G.729 Annex A A.3.8,
 * ACELP_Code_A): the impulse response is pitch-sharpened (as
 * zepsPitchSharpening_G729_16s_I) in a copy, its correlations and the
 * backward-filtered target (normalised to 13 bits) are formed, and the
 * four pulses are searched depth first (D4i40_17_fast: for each of tracks
 * 3 and 4, two orders of pulse pairs each starting from the two largest
 * correlations of one track; a later candidate wins only if strictly
 * better). The codeword is returned pitch-sharpened, the filtered codeword
 * from the sharpened response without it.
 * @param pSrcFixedTarget     target of the codebook search, 40 samples, Q0
 * @param pSrcImpulseResponse impulse response of the weighted synthesis filter, 40 samples, Q12 (not changed)
 * @param lag                 integer pitch lag of the subframe, at least 1
 * @param sharp               previous quantised pitch gain bounded to 0.2..0.8, Q14
 * @param pDstFixedVector     codeword, 40 samples, Q13 (pulses +-8191/-8192, sharpened)
 * @param pDstFltFixedVector  filtered codeword, 40 samples, Q12
 * @param pDstIndex           13-bit position code, then 4-bit sign code (the order of the bitstream's C, S)
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         lag < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsFixedCodebookSearch_G729A_16s(const Zep16s* pSrcFixedTarget, const Zep16s* pSrcImpulseResponse,
                                                    Zep16s lag, Zep16s sharp, Zep16s* pDstFixedVector,
                                                    Zep16s* pDstFltFixedVector, Zep16s* pDstIndex);

/**
 * Main-body fixed-codebook search (ITU-T G.729 3.8, ACELP_Codebook with
 * D4i40_17): the impulse response pitch-sharpened in a copy, its
 * correlations and the backward-filtered target as in the Annex A member;
 * four nested pulse loops, the fourth entered only when the first three
 * correlations exceed average + 0.4 (maximum - average); a later candidate
 * wins only if strictly better. The search budget is 75 entries of the
 * fourth loop plus what the previous subframe left: 30 in subframe 0, in
 * subframe 1 the value subframe 0 returned in *pSrcDstBudget.
 * @param pSrcFixedTarget     target of the codebook search, 40 samples, Q0
 * @param pSrcImpulseResponse impulse response, 40 samples, Q12 (not changed)
 * @param lag                 integer pitch lag, at least 1
 * @param sharp               previous quantised pitch gain bounded to 0.2..0.8, Q14
 * @param subframe            0 or 1
 * @param pSrcDstBudget       budget record: read in subframe 1 (-32693..32692; 0..105
 *                            as subframe 0 leaves it), written with what is left
 * @param pDstFixedVector     codeword, 40 samples, Q13 (sharpened)
 * @param pDstFltFixedVector  filtered codeword, 40 samples, Q12
 * @param pDstIndex           13-bit position code, then 4-bit sign code
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         lag < 1, subframe is not 0 or 1, or the subframe-1 budget is out of
 *         range; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsFixedCodebookSearch_G729_16s(const Zep16s* pSrcFixedTarget, const Zep16s* pSrcImpulseResponse,
                                                   Zep16s lag, Zep16s sharp, Zep16s subframe, Zep16s* pSrcDstBudget,
                                                   Zep16s* pDstFixedVector, Zep16s* pDstFltFixedVector,
                                                   Zep16s* pDstIndex);

/**
 * Adaptive perceptual weighting factors of the main body (ITU-T G.729 3.3,
 * perc_var): log-area ratios of the first two reflection coefficients (Q11,
 * three linear segments), averaged with the previous frame's for subframe
 * 0; "smooth" switches off when LAR1 < -1.74 and LAR2 > 0.65 and on again
 * when LAR1 > -1.52 or LAR2 < 0.43; when off, gamma1 = 0.98 and gamma2 =
 * 1 - 6 pi d_min (bounded to 0.4..0.7, d_min the least distance of the
 * normalised LSFs); when on, 0.94 and 0.6.
 * @param pSrcLSFInt LSFs of the interpolated (subframe 0) unquantised LSPs, 10, normalised Q15
 *                   (zepsLSPToLSF_Norm_G729_16s)
 * @param pSrcLSFNew LSFs of the frame's unquantised LSPs, 10, normalised Q15
 * @param pSrcRC     the frame's first two reflection coefficients, Q15
 * @param pSrcDstMem record of three values: the previous frame's two LARs, then
 *                   smooth (0 or 1); reset to {0, 0, 1}; updated
 * @param pDstGamma  gamma1 of subframes 0 and 1, then gamma2 of subframes 0 and 1, Q15
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         the smooth flag is not 0 or 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsWeightingFactors_G729_16s(const Zep16s* pSrcLSFInt, const Zep16s* pSrcLSFNew,
                                                const Zep16s* pSrcRC, Zep16s* pSrcDstMem, Zep16s* pDstGamma);

/**
 * Pitch gain of an already filtered adaptive vector (ITU-T G.729 3.7.3,
 * G_pitch): <x,y>/<y,y> in Q14, 0 when the correlation is not positive, at
 * most 19661 (1.2); energies computed on y / 4 when they saturate. The
 * Annex A encoder filters its adaptive vector with the synthesis filter
 * (zepsSynthesisFilter_G729_16s) rather than by convolution, hence this
 * member beside zepsAdaptiveCodebookGain_G729A_16s.
 * @param pSrcAdptTarget    target, 40 samples, Q0
 * @param pSrcFltAdptVector filtered adaptive vector, 40 samples, Q0
 * @param pResultAdptGain   the gain, Q14
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPitchGain_G729_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcFltAdptVector,
                                         Zep16s* pResultAdptGain);

/**
 * Gain quantisation of a subframe (ITU-T G.729 3.9, Qua_gain with the
 * correlations of G_pitch and Corr_xy2; the same in Annex A): the
 * unquantised optimum gains select 4 first-stage and 8 second-stage
 * candidates (Gbk_presel); among the 32 pairs the one of least weighted
 * error wins (the first on a tie); with tameFlag 1 the optimum pitch gain is
 * limited to 481 (Q9) before pre-selection and pairs with a pitch gain of
 * 16383 or more are skipped. The code-gain predictor memory is updated
 * (Gain_update).
 * @param pSrcAdptTarget     target of the pitch search, 40 samples, Q0
 * @param pSrcFltAdptVector  filtered adaptive vector, 40 samples, Q0
 * @param pSrcFixedVector    codeword (sharpened), 40 samples, Q13
 * @param pSrcFltFixedVector filtered codeword, 40 samples, Q12
 * @param pPastQuaEn         past quantised energies, 4 values, Q10, updated
 * @param tameFlag           1 when taming is needed (zepsTamingTest_G729_16s), else 0
 * @param pDstGain           quantised pitch gain (Q14), code gain (Q1)
 * @param pDstIndex          7-bit gain index: map1[i1] * 16 + map2[i2]
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         tameFlag is not 0 or 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainQuant_G729_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcFltAdptVector,
                                         const Zep16s* pSrcFixedVector, const Zep16s* pSrcFltFixedVector,
                                         Zep16s* pPastQuaEn, Zep16s tameFlag, Zep16s* pDstGain, Zep16s* pDstIndex);

/**
 * Taming test (ITU-T G.729 3.9, test_err): 1 when the largest error
 * estimate over the zones reached by the delay (lag, plus one for a
 * positive fraction, from lag - 50 to lag + 8 samples back) exceeds
 * 983040000 (60000 in Q14), else 0.
 * @param pExcErr   taming record, 4 values (read only)
 * @param pSrcDelay delay record: lag 1..144, fraction -1..1 (144 with fraction 1
 *                  excluded: 144 - 1/3 is the longest delay a code carries)
 * @param pTaming   0 or 1
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         the delay is out of range; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsTamingTest_G729_16s(const Zep32s* pExcErr, const Zep16s* pSrcDelay, Zep16s* pTaming);

/**
 * Taming update (ITU-T G.729 3.9, update_exc_err): the worst of
 * 1 + gp * err over the zones the lag reaches (twice recursively for lags
 * below 40) becomes the newest value of the record.
 * @param gainPitch     the subframe's quantised pitch gain, Q14
 * @param lag           integer pitch lag, 1..144
 * @param pSrcDstExcErr taming record, 4 values, updated
 * @return zepStsNullPtrErr if pSrcDstExcErr is null; zepStsRangeErr if lag is
 *         outside 1..144; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsTamingUpdate_G729_16s(Zep16s gainPitch, Zep16s lag, Zep32s* pSrcDstExcErr);

/**
 * Weighting-filter memory for the next subframe (ITU-T G.729 3.10):
 * pDstMem[j] = sub(x[30+j], add(extract_h(L_shl(L_mult(y1[30+j], gainPitch), 1)),
 * extract_h(L_shl(L_mult(y2[30+j], gainCode), 2)))) for j = 0..9.
 * @param gainPitch          quantised pitch gain, Q14
 * @param gainCode           quantised code gain, Q1
 * @param pSrcAdptTarget     target of the pitch search, 40 samples, Q0
 * @param pSrcFltAdptVector  filtered adaptive vector, 40 samples, Q0
 * @param pSrcFltFixedVector filtered codeword, 40 samples, Q12
 * @param pDstMem            10 values: the memory of the target's weighting filter
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsWeightedErrorMemory_G729_16s(Zep16s gainPitch, Zep16s gainCode, const Zep16s* pSrcAdptTarget,
                                                   const Zep16s* pSrcFltAdptVector, const Zep16s* pSrcFltFixedVector,
                                                   Zep16s* pDstMem);
/** @} */

/** @defgroup g729_postfilter G.729 post-filter and post-processing
 *  Decoder post-filters of the main body and Annex A and the output high-pass (ITU-T G.729 4.2, Annex A A.4.2).
 *  @{ */

/**
 * Size of the Annex A post-filter state: writes 616.
 * @return zepStsNullPtrErr if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterGetStateSize_G729A_16s(Zep32s* pSize);

/**
 * Initialises the Annex A post-filter state (Init_Post_Filter with the
 * filters' own start values): residual histories, filter memories and the
 * last input samples zeroed, tilt memory 0, AGC gain 1.0 (4096, Q12).
 * @return zepStsNullPtrErr if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterInit_G729A_16s(Zep8u* pState);

/**
 * Annex A post-filter of one 40-sample subframe (ITU-T G.729 Annex A A.4.2,
 * Post_Filter for one subframe): residual of A(z/0.55) over the input (the
 * state keeps the last 10 input samples and 143 residual samples); integer
 * long-term delay of maximum correlation in lag-3 .. lag+3 (143 at most),
 * gain from the normalised correlation, off below 3 dB of prediction gain;
 * tilt compensation 1 - mu z^-1 with mu = 0.8 r(1)/r(0) of the 22-sample
 * impulse response of A(z/0.55)/A(z/0.7) (0 when r(1) <= 0); synthesis
 * 1/A(z/0.7); gain control following the input energy with factor 0.9.
 * The reference works on two subframes a call; calling this once per
 * subframe in order gives the same output.
 * @param lag     the subframe's decoded integer pitch lag, 18..145 (a second
 *                subframe's lag can be 144)
 * @param pLPC    the subframe's decoded A(z), 11 values, Q12
 * @param pSrcDst the subframe's synthesis in, post-filtered speech out, 40 samples
 * @param pState  state of zepsPostFilterGetStateSize_G729A_16s bytes
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         lag is outside 18..145; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilter_G729A_16s(Zep16s lag, const Zep16s* pLPC, Zep16s* pSrcDst, Zep8u* pState);

/**
 * Annex A post-filter of one subframe of a comfort-noise frame (ITU-T G.729
 * Annex B with Annex A: Post_Filter with a frame type other than speech):
 * zepsPostFilter_G729A_16s without the long-term (pitch) post-filter, the
 * residual of A(z/0.55) going straight to the tilt compensation; every
 * memory is updated as on speech frames.
 * @param pLPC    the subframe's decoded A(z), 11 values, Q12
 * @param pSrcDst the subframe's synthesis in, post-filtered speech out, 40 samples
 * @param pState  the state of zepsPostFilter_G729A_16s
 * @return zepStsNullPtrErr for a null pointer (argument order); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterInactive_G729A_16s(const Zep16s* pLPC, Zep16s* pSrcDst, Zep8u* pState);

/**
 * Size of the main-body post-filter state: writes 348.
 * @return zepStsNullPtrErr if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterGetStateSize_G729_16s(Zep32s* pSize);

/**
 * Initialises the main-body post-filter state (Init_Post_Filter): residual
 * history, 1/A(z/0.7) memory and the last input samples zeroed, gain 1.0
 * (16384, Q14).
 * @return zepStsNullPtrErr if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterInit_G729_16s(Zep8u* pState);

/**
 * Main-body post-filter of one 40-sample subframe (ITU-T G.729 4.2, Post):
 * residual of A(z/0.55) (the state keeps the last 10 input samples and 152
 * residual samples); long-term delay of 1/8-sample resolution: the best of
 * lag-1, lag, lag+1 (a later one only if strictly better), then the 7
 * phases on either side with the 4-tap filters, the chosen phase again with
 * the 16-tap filter and the better of the two kept; off when the normalised
 * correlation is below 0.5; gain 1/(1 + 0.5 g) with g at most 1; short-term
 * filter A(z/0.55)/A(z/0.7) scaled by the sum of |h| of its 20-sample
 * impulse response when above 1; tilt (1 + mu z^-1)/(1 - |mu|) from that
 * response's first reflection coefficient (weighted 0.2 when positive, 0.9
 * when negative); gain control on sums of absolute values, factor 0.9875.
 * @param lag      the first subframe's decoded integer lag (used for both subframes), 18..143
 * @param pLPC     the subframe's decoded A(z), 11 values, Q12
 * @param pSrc     the subframe's synthesis, 40 samples
 * @param pDst     post-filtered speech, 40 samples; may equal pSrc
 * @param pVoicing the long-term delay found (its integer part), 0 when the
 *                 long-term filter is off: the main-body decoder's voicing
 *                 decision for frame-erasure concealment
 * @param pState   state of zepsPostFilterGetStateSize_G729_16s bytes
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         lag is outside 18..143; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilter_G729_16s(Zep16s lag, const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst,
                                          Zep16s* pVoicing, Zep8u* pState);

/**
 * Main-body post-filter of one subframe of a comfort-noise frame (ITU-T
 * G.729 Annex B: Post with a frame type other than speech):
 * zepsPostFilter_G729_16s without the long-term post-filter (the voicing
 * decision is then 0), every memory updated as on speech frames.
 * @param pLPC    the subframe's decoded A(z), 11 values, Q12
 * @param pSrc    the subframe's synthesis, 40 samples
 * @param pDst    post-filtered speech, 40 samples; may equal pSrc
 * @param pState  the state of zepsPostFilter_G729_16s
 * @return zepStsNullPtrErr for a null pointer (argument order); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterInactive_G729_16s(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst,
                                                  Zep8u* pState);

/**
 * Output high-pass of the decoder (ITU-T G.729 4.2.5, Post_Process), bit for
 * bit: the 100 Hz filter of zepsHighPassFilter_G729_16s_ISfs with
 * scaleFactor 13 on the same state (zepsHighPassFilterInit_G729 with
 * {7699, -15398, 7699, 8192, 15836, -7667}), the output being
 * round(L_shl(acc, 1)) (the speech doubled, with saturation) where that
 * export writes round(acc).
 * @param pSrcDst speech, len samples, in place
 * @param len     number of samples, at least 1
 * @param pState  high-pass filter state (24 bytes)
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsSizeErr if
 *         len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostProcess_G729_16s_I(Zep16s* pSrcDst, int len, Zep8u* pState);
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
 *  the seed returns to 11111 on speech frames; such frames are post-filtered
 *  without the long-term part (zepsPostFilterInactive_G729_16s, Annex A
 *  zepsPostFilterInactive_G729A_16s); after every good frame
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
 * Comfort-noise excitation of one frame of the integrated G.729 decoder
 * (Annex I, Calc_exc_rand on the decoder side): the excitation of
 * zepsCNGExcitation_G729B_16s, and per subframe the gains the decoder feeds
 * to zepsPhaseDispersionUpdate_G729D_16s so that the 6.4 kbit/s phase
 * dispersion follows the comfort noise.
 * @param gain       target gain (the reference's cur_gain), 0..32767; 0 gives zeros
 * @param pSrcDstExc excitation buffer of 154 + 80 samples: [0..153] the past
 *                   excitation (read), [154..233] the frame (written)
 * @param pSeed      generator seed (11111 at start and after each active frame); updated
 * @param pDstGains  4 values {pitch gain Q14, magnitude of the pulse amplitude
 *                   Q0 (at most 5000)} of subframes 1 and 2; all 0 when gain is 0
 * Checks: pSrcDstExc, pSeed, pDstGains null -> zepStsNullPtrErr; gain < 0 -> zepStsRangeErr.
 */
ZEPSAPI ZepStatus zepsCNGExcitation_G729I_16s(Zep16s gain, Zep16s* pSrcDstExc, Zep16s* pSeed, Zep16s* pDstGains);

/**
 * Size in bytes of the music-detection state of the integrated G.729 encoder
 * (Annex I): writes 38 to *pSize.
 * @return zepStsNullPtrErr if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsMusicDetectGetStateSize_G729I(Zep32s* pSize);

/**
 * Initialises the music-detection state: counters, means and the mean
 * reflection coefficients 0, the mean pitch gain 8192 (0.5 in Q14).
 * @return zepStsNullPtrErr if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsMusicDetectInit_G729I(Zep8u* pState);

/**
 * Music detection of the integrated G.729 encoder (Annex I musdetect), run
 * on every frame after zepsVAD_G729B_16s when DTX is on: at 11.8 kbit/s it
 * turns a noise decision into voice for music-like frames; at 6.4 and 8
 * kbit/s it only follows the signal (the decision is left as it is).
 * Decisions: the frame energy is the VAD's (10 log10 of r[0], Q11, less
 * 4875) and the prediction-error energy (r[0] times the product of
 * 1 - k_i^2 over the first four reflection coefficients); on a noise frame
 * the mean coefficients and mean error energy move 1/10 towards the frame's.
 * The mean pitch gain (Q14) moves 1/5 towards the mean of the last five
 * subframes' gains; the pitch flag is set when it exceeds 0.73 (6.4 kbit/s)
 * or 0.63 (otherwise), or, after a voice frame, when it exceeds 0.45 with
 * the last five lags' variance below 1.3^2. Voice frames after a backward
 * frame and pitch flags are counted over periods of 64 frames (frameCount
 * a multiple of 64), whose running means decide together with the spectral
 * distance (above 4915 or 12452, Q15 squared) and the energy rise over the
 * mean (above 819) whether the frame is music: voice at 11.8 kbit/s when
 * the distance and the rise exceed their thresholds with an energy above
 * 10240, either of them with that energy, or the counts' means exceed 2560
 * (pitch flags) or 280 (backward voice frames), or frameCount is below 64,
 * with an energy above 1433.
 * @param rate        the frame's rate: 0 = 6.4, 1 = 8, 2 = 11.8 kbit/s
 * @param r0          the frame's autocorrelation r[0] (zepsAutoCorr_G729B's pDst[0])
 * @param expR0       its exponent (zepsAutoCorr_G729B's pExpR0)
 * @param pRC         the frame's first 10 reflection coefficients (forward
 *                    Levinson-Durbin of order 10), Q15
 * @param pLags       the last five frames' open-loop lags as the encoder keeps them
 *                    (each the lag, half of it or a third of it when it is close to
 *                    two or three times the mean of the previous four; 20 at start)
 * @param pPitchGains the last five subframes' quantised pitch gains, Q14 (8192 for
 *                    comfort-noise subframes; 11469 at start)
 * @param prevMode    the previous frame's LPC mode: 0 forward, 1 backward
 * @param frameCount  the frame number as the VAD takes it, 1.. (256 after 32767)
 * @param prevVad     the previous frame's final decision, 0 or 1
 * @param pSrcDstVad  in: the VAD's decision, 0 or 1; out: the decision after
 *                    the music detection
 * @param pState      music-detection state, updated
 * Checks: pRC, pLags, pPitchGains, pSrcDstVad, pState null -> zepStsNullPtrErr;
 * then rate outside 0..2, prevMode not 0 or 1, frameCount < 1, prevVad not 0
 * or 1, *pSrcDstVad not 0 or 1 -> zepStsRangeErr (in that order).
 */
ZEPSAPI ZepStatus zepsMusicDetect_G729I_16s(int rate, Zep32s r0, Zep16s expR0, const Zep16s* pRC,
                                            const Zep16s* pLags, const Zep16s* pPitchGains, Zep16s prevMode,
                                            Zep16s frameCount, Zep16s prevVad, Zep16s* pSrcDstVad, Zep8u* pState);

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

/** @defgroup g729d G.729 Annex D: the 6.4 kbit/s extension
 * Stages of the lower-rate extension (ITU-T G.729 Annex D v1.3): the 4-bit
 * relative lag code of subframe 1, the 11-bit fixed codebook (two pulses),
 * the 6-bit gain codebooks and the decoder's phase dispersion. The other
 * stages of the 6.4 kbit/s coder are the main body's (LP analysis and LSP
 * quantiser, open-loop pitch, the Annex D closed-loop search
 * zepsAdaptiveCodebookSearch_G729D_16s, gain prediction, taming, synthesis
 * and post-filter); an Annex D coder switching to 8 kbit/s runs the main
 * body's stages, keeping the predictor memory and the phase-dispersion
 * state (zepsPhaseDispersionUpdate_G729D_16s) across the switch. Each
 * member reproduces the Annex D fixed-point reference bit for bit;
 * docs/g729d.md shows the decoder's subframe.
 * @{
 */

/**
 * Pitch delay from its code at 6.4 kbit/s (Annex D, Dec_lag3D). Subframe 0
 * as zepsDecodeLag_G729_16s (8-bit code); subframe 1 a 4-bit code relative
 * to t0_min = max(20, T1 - 5) (t0_min + 9 at most 143; T1 read from
 * pSrcDstDelay[0]): codes 0..3 give t0_min + code, codes 4..11 the delays
 * t0_min + 2 + 1/3 .. t0_min + 5 + 1/3 in thirds (lag t0_min + 2 +
 * (code - frac) / 3, frac = {1, 2, 0}[(code - 4) % 3], a fraction 2 written
 * as the next lag with fraction -1), codes 12..15 give t0_min + code - 6.
 * Decision: the reference masks a subframe-1 code to its 4 bits; this
 * member rejects a code outside 0..15 instead.
 * @param index        the code: 0..255 (subframe 0) or 0..15 (subframe 1)
 * @param subframe     0 or 1
 * @param pSrcDstDelay delay record (integer lag, fraction -1..1); in subframe 1
 *                     its lag (18..145) is read first
 * @return zepStsNullPtrErr if pSrcDstDelay is null; zepStsRangeErr if subframe
 *         is not 0 or 1; zepStsOutOfRangeErr if the index is outside its code
 *         range or the subframe-1 reference lag outside 18..145; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeLag_G729D_16s(Zep16s index, Zep16s subframe, Zep16s* pSrcDstDelay);

/**
 * Pitch-delay code at 6.4 kbit/s (Annex D, Enc_lag3D). Subframe 0 as
 * zepsEncodeLag_G729_16s; subframe 1, with i = T0 - t0_min (t0_min as in
 * zepsDecodeLag_G729D_16s from t0Prev): i for i < 3, 3 (i - 3) + frac + 3
 * for i = 3..6, i + 6 for i = 7..9. The codable delays are those the
 * Annex D closed-loop search returns: integer lags t0_min .. t0_min + 9,
 * fractions +1 on t0_min + 3, -1..1 on t0_min + 4 and + 5, -1 on t0_min + 6.
 * @param pSrcDelay delay record (integer lag, fraction)
 * @param t0Prev    subframe 1: the first subframe's integer lag, 18..145 (ignored in subframe 0)
 * @param subframe  0 or 1
 * @param pDstIndex the code, 0..255 or 0..15
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         subframe is not 0 or 1, or (subframe 1) t0Prev is outside 18..145;
 *         zepStsOutOfRangeErr if the delay has no code; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncodeLag_G729D_16s(const Zep16s* pSrcDelay, Zep16s t0Prev, Zep16s subframe,
                                          Zep16s* pDstIndex);

/**
 * Fixed-codebook vector at 6.4 kbit/s (Annex D, Decod_ACELP64): 40
 * samples, zero but for two pulses of +8191 or -8192 (Q13): pulse 0 at
 * trackTable0[grayDecode[index & 15]] (positions 5k + 1, 5k + 3), pulse 1
 * at trackTable1[grayDecode[index >> 4]] (5k, 5k + 2, 5k + 4, then 5k + 1);
 * sign bit k set gives pulse k a positive sign. Two pulses on one position
 * add (16382, -1 or -16384).
 * @param sign  2-bit sign code, 0..3
 * @param index 9-bit position code, 0..511
 * @param pDst  the vector, 40 samples, Q13
 * @return zepStsNullPtrErr if pDst is null; zepStsOutOfRangeErr if a code is
 *         outside its range; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeFixedCodebook_G729D_16s(Zep16s sign, Zep16s index, Zep16s* pDst);

/**
 * 11-bit fixed-codebook search (Annex D, ACELP_CodebookD with D2i40_11):
 * the impulse response pitch-sharpened in a copy; its correlations at the
 * pulse positions (from the response scaled as in the main body's search)
 * and the backward-filtered target (normalised to 13 bits); the two pulses
 * maximising corr^2 / energy over every pair of the two tracks, searched in
 * eight sub-track pairings in the reference's order (a later pair wins only
 * if strictly better). The codeword is returned pitch-sharpened, the
 * filtered codeword from the sharpened response without it.
 * @param pSrcFixedTarget     target of the codebook search, 40 samples, Q0
 * @param pSrcImpulseResponse impulse response, 40 samples, Q12 (not changed)
 * @param lag                 integer pitch lag of the subframe, at least 1
 * @param sharp               previous quantised pitch gain bounded to 0.2..0.8, Q14
 * @param pDstFixedVector     codeword, 40 samples, Q13 (sharpened)
 * @param pDstFltFixedVector  filtered codeword, 40 samples, Q12
 * @param pDstIndex           9-bit position code, then 2-bit sign code (the order of the bitstream's C, S)
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         lag < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsFixedCodebookSearch_G729D_16s(const Zep16s* pSrcFixedTarget,
                                                    const Zep16s* pSrcImpulseResponse, Zep16s lag, Zep16s sharp,
                                                    Zep16s* pDstFixedVector, Zep16s* pDstFltFixedVector,
                                                    Zep16s* pDstIndex);

/**
 * Gain decoding at 6.4 kbit/s (Annex D, Dec_gain_6k): the 6-bit index (3
 * bits of the first stage, then 3 of the second, each through imap1_6k /
 * imap2_6k), the pitch gain gbk1_6k[.][0] + gbk2_6k[.][0], the code gain as
 * the predicted gain of pCode times the correction (gbk1_6k[.][1] +
 * gbk2_6k[.][1]) / 2 (Q13); the predictor memory is updated with that
 * correction. An erased subframe uses zepsDecodeGainErased_G729_16s.
 * @param index      gain index, 0..63
 * @param pCode      the subframe's fixed-codebook vector after pitch sharpening, 40 samples, Q13
 * @param pPastQuaEn past quantised energies, 4 values, Q10, updated
 * @param pDstGain   pitch gain (Q14), code gain (Q1)
 * @return zepStsNullPtrErr for a null pointer (argument order);
 *         zepStsOutOfRangeErr if index is outside 0..63 (nothing written); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeGain_G729D_16s(Zep16s index, const Zep16s* pCode, Zep16s* pPastQuaEn,
                                           Zep16s* pDstGain);

/**
 * Gain quantisation at 6.4 kbit/s (Annex D, Qua_gain_6k): the correlations
 * and unquantised optimum gains of zepsGainQuant_G729_16s; 6 first-stage and
 * 6 second-stage candidates pre-selected with the Annex D coefficients; among
 * the 36 pairs the one of least weighted error wins (the first on a tie);
 * with tameFlag 1 the optimum pitch gain is limited to 481 (Q9) before
 * pre-selection and pairs with a pitch gain of 16383 or more are skipped.
 * The predictor memory is updated.
 * @param pSrcAdptTarget     target of the pitch search, 40 samples, Q0
 * @param pSrcFltAdptVector  filtered adaptive vector, 40 samples, Q0
 * @param pSrcFixedVector    codeword (sharpened), 40 samples, Q13
 * @param pSrcFltFixedVector filtered codeword, 40 samples, Q12
 * @param pPastQuaEn         past quantised energies, 4 values, Q10, updated
 * @param tameFlag           1 when taming is needed (zepsTamingTest_G729_16s), else 0
 * @param pDstGain           quantised pitch gain (Q14), code gain (Q1)
 * @param pDstIndex          6-bit gain index: map1_6k[i1] * 8 + map2_6k[i2]
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         tameFlag is not 0 or 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsGainQuant_G729D_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcFltAdptVector,
                                          const Zep16s* pSrcFixedVector, const Zep16s* pSrcFltFixedVector,
                                          Zep16s* pPastQuaEn, Zep16s tameFlag, Zep16s* pDstGain, Zep16s* pDstIndex);

/**
 * Size of the phase-dispersion state: 20 bytes (the last six pitch gains,
 * the previous dispersion state and code gain, the onset counter, padding).
 * @param pSize receives the size in bytes
 * @return zepStsNullPtrErr if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPhaseDispersionGetStateSize_G729D(Zep32s* pSize);

/**
 * Resets the phase-dispersion state (all zero, as the reference decoder starts).
 * @param pState state block of zepsPhaseDispersionGetStateSize_G729D bytes
 * @return zepStsNullPtrErr if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPhaseDispersionInit_G729D(Zep8u* pState);

/**
 * Adaptive phase dispersion of a 6.4 kbit/s subframe (Annex D, Syn_filt64
 * before its synthesis filter): the excitation with its fixed-codebook part
 * (round(gainCode * code << 1), per sample) circularly convolved with the
 * low-dispersion response (pitch gain below 0.6), the medium one (0.6 to
 * 0.9) or none; the choice is lowered to strong dispersion when more than
 * two of the last six pitch gains are below 0.6, rises by at most one step a
 * subframe, and an onset (code gain above twice the previous) raises it by
 * one for two subframes. The output feeds the synthesis filter only: the
 * excitation buffer (the adaptive codebook) keeps the undispersed samples.
 * @param pSrcExc   total excitation of the subframe, 40 samples, Q0
 * @param gainCode  quantised code gain, Q1
 * @param gainPitch quantised pitch gain, Q14
 * @param pCode     fixed-codebook vector after pitch sharpening, 40 samples, Q13
 * @param pDst      dispersed excitation, 40 samples, Q0 (may equal pSrcExc)
 * @param pState    phase-dispersion state, updated
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPhaseDispersion_G729D_16s(const Zep16s* pSrcExc, Zep16s gainCode, Zep16s gainPitch,
                                                const Zep16s* pCode, Zep16s* pDst, Zep8u* pState);

/**
 * Phase-dispersion state update of an 8 kbit/s subframe of an Annex D coder
 * (Update64): the pitch gain enters the history, the previous state becomes
 * "no dispersion", the previous code gain gainCode, the onset counter 0.
 * @param gainPitch quantised pitch gain, Q14
 * @param gainCode  quantised code gain, Q1
 * @param pState    phase-dispersion state, updated
 * @return zepStsNullPtrErr if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPhaseDispersionUpdate_G729D_16s(Zep16s gainPitch, Zep16s gainCode, Zep8u* pState);
/** @} */

/** @defgroup g729e G.729 Annex E stages
 *  Backward-adaptive order-30 LP analysis, order-30 filters, the 11.8 kbit/s
 *  fixed codebooks, erasure concealment and post-filter of ITU-T G.729 Annex E.
 *  @{ */
/* Conventions of this group: as the g729_excitation group; LP filters of
 * order m have m + 1 coefficients (Q12, a[0] = 4096), m at most 30 (M_BWD).
 * Every member reproduces the ITU-T G.729 Annex E fixed-point reference
 * (v1.3) bit for bit. The hybrid-window autocorrelation and the forward LSP
 * quantiser of this annex are in the g729_lp group. */

/**
 * Lag window of the backward order-30 analysis (G.729 Annex E
 * Lag_window_bwd): r[i] (i = 1..30) times lag_h_bwd/lag_l_bwd[i-1] in double
 * precision (Mpy_32); then r[0] + 1 and each windowed r[i] + 1 (L_add)
 * shifted left by norm_l(r[0] + 1) and split into hi/lo (L_Extract), the
 * input of zepsLevinsonDurbin_G729E_16s.
 * @param pSrc     31 autocorrelations (zepsWinHybrid_G729E_16s32s), read only
 * @param pDstHigh 31 high halves
 * @param pDstLow  31 low halves
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLagWindow_G729E_32s16s(const Zep32s* pSrc, Zep16s* pDstHigh, Zep16s* pDstLow);

/**
 * Levinson-Durbin recursion of G.729 Annex E (Levinsone; arguments in its
 * order): the double-precision recursion of G.729 with each numerator
 * bounded by its denominator before the division; a reflection coefficient
 * beyond the first above 32750 in magnitude makes the filter unstable.
 * @param order          2..30
 * @param pRh, pRl       order + 1 autocorrelations in hi/lo, normalised (pRh[0] >= 16384)
 * @param pLPC           order + 1 LP coefficients, Q12
 * @param pRC            order reflection coefficients, Q15
 * @param pSrcDstOldLPC  the last stable filter, order + 1 values, Q12 (reset: 4096, 0, ...)
 * @param pSrcDstOldRC   its first two reflection coefficients (reset: 0, 0)
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if order is outside 2..30, then if pRh[0] < 16384 or pRl[0] < 0;
 *         zepStsOverflow (12) on an unstable filter: pLPC receives the last
 *         stable filter, pRC[0..1] its coefficients, pRC[2..] those found
 *         before the unstable one and 0 after, the old records unchanged;
 *         else zepStsNoErr, the old records replaced by the new filter.
 */
ZEPSAPI ZepStatus zepsLevinsonDurbin_G729E_16s(int order, const Zep16s* pRh, const Zep16s* pRl, Zep16s* pLPC,
                                               Zep16s* pRC, Zep16s* pSrcDstOldLPC, Zep16s* pSrcDstOldRC);

/**
 * Synthesis filter 1/A(z) of order 1..30 (G.729 Annex E Syn_filte; arguments
 * in its order): per sample s = L_mult(x, a0) - sum L_mult(a[j], y[-j])
 * (L_msu), y = round(L_shl(s, 3)).
 * @param order      filter order m, 1..30
 * @param pLPC       A(z), m + 1 values, Q12
 * @param pSrc       input, len samples
 * @param pDst       output, len samples; may equal pSrc
 * @param len        at least 1
 * @param pSrcDstMem the m past outputs, oldest first; replaced by the last m
 *                   outputs (earlier memory first when len < m) if update is not 0
 * @param update     0: memory left as it is; otherwise updated
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if order is outside 1..30; zepStsSizeErr if len < 1; zepStsOverflow
 *         when a basic operator saturated (the reference's Overflow flag: the
 *         decoder then scales its excitation down by 4 and filters again),
 *         the saturated output written; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSynthesisFilter_G729E_16s(int order, const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst,
                                                int len, Zep16s* pSrcDstMem, int update);

/** In-place zepsSynthesisFilter_G729E_16s: pSrcDst is input and output;
 *  same checks in the same order. */
ZEPSAPI ZepStatus zepsSynthesisFilter_G729E_16s_I(int order, const Zep16s* pLPC, Zep16s* pSrcDst, int len,
                                                  Zep16s* pSrcDstMem, int update);

/**
 * Inverse filter A(z) of order 1..30 (G.729 Annex E Residue): y =
 * round(L_shl(L_mult(x, a0) + sum L_mult(a[j], x[-j]), 3)) with L_mac.
 * @param pSrc input, len samples; pSrc[-order..-1] are read too
 * @param pDst output, len samples; must not overlap pSrc[-order..len-1]
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if order is outside 1..30; zepStsSizeErr if len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsResidual_G729E_16s(int order, const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len);

/**
 * Bandwidth expansion A(z/gamma) of order 1..30 (G.729 Annex E Weight_Az):
 * pDst[i] = round(L_mult(pLPC[i], gamma^i)), gamma^i by repeated rounded
 * products; the decoder's backward filter takes gamma = 32113 (0.98).
 * @param pDst order + 1 values; may equal pLPC
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if order is outside 1..30; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsWeightLPC_G729E_16s(const Zep16s* pLPC, Zep16s gamma, int order, Zep16s* pDst);

/**
 * Energy of a frame in dB (G.729 Annex E ener_dB), Q11: e = 1 + sum x^2
 * (L_mac, saturating), halved, then shifted right n times until at most 32;
 * the result is 617 (LOG2_Q11) times max(n - 1, 0) + 617 plus tab_log[e - 16],
 * or 1 when e < 16. The decoder counts a frame towards the backward-mode
 * dominance only when this is at least 8192.
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsSizeErr
 *         if len < 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEnergyDB_G729E_16s(const Zep16s* pSrc, int len, Zep16s* pDstEnergy);

/**
 * Pitch tracking of G.729 Annex E (track_pit) for the concealment of erased
 * frames, run after each subframe's lag decoding.
 * @param pSrcDstDelay {integer lag, fraction}: replaced by the last
 *        stationary delay when the lag is a (sub-)multiple of the previous
 *        one (within 4, factors 2..4) and the stationarity count is positive
 * @param pSrcDstTrack record {previous lag, stationarity count 0..7, stationary
 *        lag, its fraction}; reset {30, 0, 0, 0}
 * @return zepStsNullPtrErr for a null pointer (argument order), else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPitchTrack_G729E_16s(Zep16s* pSrcDstDelay, Zep16s* pSrcDstTrack);

/**
 * Fixed-codebook vector of an 11.8 kbit/s subframe from its five codes
 * (G.729 Annex E Dec_ACELP_10i40_35bits / Dec_ACELP_12i40_44bits): 5
 * tracks of 8 positions (5 i + t), pulses of +-4096.
 * @param pIdx five codes: forward mode 7 bits each (two pulses a track);
 *        backward mode 13, 10, 7, 7, 7 bits (three pulses on the first two
 *        tracks; bits 10-12 of the first code the starting track, above 4
 *        read as 4). Only the bits of the format are read.
 * @param mode 0: forward (35 bits), 1: backward (44 bits)
 * @param pDst 40 samples, Q13
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if mode is not 0 or 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeFixedCodebook_G729E_16s(const Zep16s* pIdx, Zep16s mode, Zep16s* pDst);

/**
 * Gains of an erased 11.8 kbit/s subframe (G.729 Annex E Dec_gaine, its
 * erasure branch; at 8 kbit/s the Annex E decoder uses
 * zepsDecodeGainErased_G729_16s): with countBfi < 2 the pitch gain is
 * 16384 (stationary) or 15564 and the code gain kept; otherwise both are the
 * previous gains times the muting factor (mult), which then becomes
 * mult(muting, 32604) when stationary and countBfi > 10, mult(muting, 32112)
 * when not stationary. The predictor memory gets the erasure update of
 * zepsDecodeGainErased_G729_16s.
 * @param pPastQuaEn    past quantised energies, 4 values, Q10, updated
 * @param pSrcDstGain   previous subframe's {pitch gain Q14, code gain Q1} in, this subframe's out
 * @param pSrcDstMuting muting factor, Q15 (32767 after every good frame), updated
 * @param countBfi      erased subframes before this one since the last good frame, >= 0
 * @param stationary    1 after 30 or more backward-mode subframes in a row, else 0
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if countBfi < 0, then if stationary is not 0 or 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeGainErased_G729E_16s(Zep16s* pPastQuaEn, Zep16s* pSrcDstGain, Zep16s* pSrcDstMuting,
                                                 int countBfi, int stationary);

/**
 * Fixed-codebook search of an 11.8 kbit/s subframe (G.729 Annex E
 * ACELP_10i40_35bits in forward mode, ACELP_12i40_44bits in backward mode;
 * arguments in their order, mode last): 5 tracks of 8 positions; the sign of
 * each position is preset from the correlation of the target with the
 * impulse response and from the long-term residual (both normalised by
 * their energies, Inv_sqrt); then a depth-first search of pulse pairs on
 * adjacent tracks from the 3 best starting tracks: 10 pulses (two a track)
 * or 12 (three on the first two tracks). The impulse response is read only
 * (the reference's halving of it is done in a copy).
 * @param pSrcFixedTarget     target, 40 samples, Q0
 * @param pSrcLtpResidual     residual after long-term prediction, 40 samples, Q0
 * @param pSrcImpulseResponse impulse response (after pitch sharpening), 40 samples, Q12
 * @param pDstFixedVector     codeword, 40 samples, pulses +-4096 (Q12)
 * @param pDstFltFixedVector  codeword filtered by the response, Q11
 * @param pDstIdx             five codes in the layout of zepsDecodeFixedCodebook_G729E_16s
 * @param mode                0: forward (35 bits), 1: backward (44 bits)
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if mode is not 0 or 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsFixedCodebookSearch_G729E_16s(const Zep16s* pSrcFixedTarget, const Zep16s* pSrcLtpResidual,
                                                    const Zep16s* pSrcImpulseResponse, Zep16s* pDstFixedVector,
                                                    Zep16s* pDstFltFixedVector, Zep16s* pDstIdx, Zep16s mode);

/**
 * Backward/forward LP mode decision of the 11.8 kbit/s encoder (G.729
 * Annex E set_lpc_mode with Int_bwd, tst_bwd_dominant and calc_stat;
 * arguments in its order, the reference's three stationarity variables and
 * the two dominance counters in one record). At 11.8 kbit/s: the prediction
 * gains (ener_dB of the input minus ener_dB of the residual, Q11) of the
 * backward filter, of the backward filters interpolated with the previous
 * frame's filter (pABwd receives them: subframe 1 in [0..30], subframe 2
 * in [31..61], *pSrcDstCInt decreased by 410, at least 0) and of the
 * quantised forward filters; backward (1) when both backward gains are
 * positive and above the forward gain minus a gap of 205 + 1.5 * (stat >> 7),
 * forward when the stationarity index is below 13000; backward kept after a
 * backward frame when the squared LSP distance is below 64424509 and the
 * index at 32000; forward for a frame below 8192 (its index then at most
 * 13000); otherwise the dominance counters and the index are updated and
 * *pBwdDominant set (1 when backward frames exceed four times the forward
 * ones over the last 10..99 counted frames; left unchanged on a quiet
 * frame). At 8 kbit/s: forward, not dominant, the index decaying by 2621 a
 * frame down to 10000.
 * @param pSignal      the frame's pre-processed input, 80 samples; pSignal[-30..-1] (the
 *                     previous input) are read too
 * @param pAFwd        quantised forward filters of the two subframes, 2 x 11, Q12
 * @param pABwd        2 x 31, Q12: in [31..61] the frame's backward filter (read); at
 *                     11.8 kbit/s both subframes' interpolated filters written
 * @param pMode        0 forward, 1 backward
 * @param pLspNew      the frame's unquantised LSPs, 10, Q15
 * @param pLspOld      the previous frame's unquantised LSPs, 10, Q15
 * @param rate         0: 8 kbit/s, 1: 11.8 kbit/s
 * @param pBwdDominant backward-mode dominance, 0 or 1, updated
 * @param prevMode     the previous frame's mode, 0 or 1
 * @param pPrevFilter  the previous frame's filter (order 30, 31 values, Q12; a forward
 *                     filter padded with zeros)
 * @param pSrcDstCInt  filter interpolation factor, Q12, 0..4506 (4506 at reset; the
 *                     caller sets it back to 4506 after each forward frame)
 * @param pSrcDstStat  record of five values: the stationarity index (Q8, 0..32000),
 *                     the backward frames in a row, the value tied to them, the backward
 *                     and forward frame counters (sum at most 99); reset {10000, 0, 0, 0, 0}
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr if
 *         rate is not 0 or 1, then if prevMode is not 0 or 1, then if *pSrcDstCInt is
 *         outside 0..4506, then if the record is outside its ranges; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsLPCModeDecision_G729E_16s(const Zep16s* pSignal, const Zep16s* pAFwd, Zep16s* pABwd,
                                                Zep16s* pMode, const Zep16s* pLspNew, const Zep16s* pLspOld,
                                                int rate, Zep16s* pBwdDominant, Zep16s prevMode,
                                                const Zep16s* pPrevFilter, Zep16s* pSrcDstCInt,
                                                Zep16s* pSrcDstStat);

/**
 * Perceptual weighting factors of a backward-mode frame (G.729 Annex E
 * perc_vare): gamma1 29491 (0.9), or 32112 (0.98) when the backward mode
 * dominates; gamma2 13107 (0.4); the same for both subframes. Forward-mode
 * frames take zepsWeightingFactors_G729_16s.
 * @param bwdDominant backward-mode dominance (zepsLPCModeDecision_G729E_16s), 0 or 1
 * @param pDstGamma   gamma1 of subframes 0 and 1, then gamma2 of subframes 0 and 1, Q15
 * @return zepStsNullPtrErr if pDstGamma is null; zepStsRangeErr if bwdDominant is
 *         not 0 or 1; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsWeightingFactors_G729E_16s(Zep16s bwdDominant, Zep16s* pDstGamma);

/** Size in bytes of the Annex E post-filter state: writes 428.
 *  @return zepStsNullPtrErr if pSize is null, else zepStsNoErr. */
ZEPSAPI ZepStatus zepsPostFilterGetStateSize_G729E_16s(Zep32s* pSize);

/** Initialises the Annex E post-filter state (Init_Post_Filter): histories
 *  zeroed, gain 1.0 (16384, Q14). @return zepStsNullPtrErr if pState is null. */
ZEPSAPI ZepStatus zepsPostFilterInit_G729E_16s(Zep8u* pState);

/**
 * Post-filter of one 40-sample subframe of G.729 Annex E (Poste; arguments
 * in its order): zepsPostFilter_G729_16s with the LP order, the weighting
 * factors and the impulse-response length as arguments. The harmonic filter
 * gain is 1/(1 + 0.5 g) when gammaHarm is 16384 (g at most 1, as the main
 * body), else 1/(1 + mult_r(g, gammaHarm)) with g bounded to 1. The state
 * keeps the last 30 input samples, 152 residual samples and 30 outputs of
 * 1/A(z/gamma1).
 * @param lag        the first subframe's integer lag, 18..143
 * @param pSrc       the subframe's synthesis, 40 samples
 * @param pLPC       the subframe's A(z), order + 1 values, Q12
 * @param pDst       40 samples; may equal pSrc
 * @param pVoicing   the long-term delay found, 0 when the harmonic filter is off
 * @param gamma1     denominator factor, Q15, >= 0 (22938 at both rates)
 * @param gamma2     numerator factor, Q15, >= 0 (18022 at 8 kbit/s, 21300 at 11.8)
 * @param gammaHarm  harmonic factor, Q15, >= 0 (16384 at 8 kbit/s, 8192 at 11.8)
 * @param lenImpulse impulse-response length, 2..32 (20 at 8 kbit/s, 32 at 11.8)
 * @param order      LP order, 1..30 (10 forward, 30 backward)
 * @param pState     state of zepsPostFilterGetStateSize_G729E_16s bytes
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if lag is outside 18..143, then if a factor is negative, then if
 *         lenImpulse is outside 2..32, then if order is outside 1..30; else
 *         zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilter_G729E_16s(Zep16s lag, const Zep16s* pSrc, const Zep16s* pLPC, Zep16s* pDst,
                                           Zep16s* pVoicing, Zep16s gamma1, Zep16s gamma2, Zep16s gammaHarm,
                                           int lenImpulse, int order, Zep8u* pState);

/**
 * Post-filter of one 40-sample comfort-noise subframe of the integrated
 * G.729 coder (Annex I, Poste with an inactive frame type): as
 * zepsPostFilter_G729E_16s without the harmonic filter (the residual of
 * A(z/gamma2) passes unchanged, as zepsPostFilterInactive_G729_16s does for
 * the main body), so no lag and no voicing. The state is the one of
 * zepsPostFilter_G729E_16s; both keep it up to date.
 * @param pSrc       the subframe's synthesis, 40 samples
 * @param pLPC       the subframe's A(z), order + 1 values, Q12
 * @param pDst       40 samples; may equal pSrc
 * @param gamma1     denominator factor, Q15, >= 0
 * @param gamma2     numerator factor, Q15, >= 0
 * @param lenImpulse impulse-response length, 2..32
 * @param order      LP order, 1..30
 * @param pState     state of zepsPostFilterGetStateSize_G729E_16s bytes
 * @return zepStsNullPtrErr for a null pointer (argument order); zepStsRangeErr
 *         if a factor is negative, then if lenImpulse is outside 2..32, then
 *         if order is outside 1..30; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsPostFilterInactive_G729E_16s(const Zep16s* pSrc, const Zep16s* pLPC, Zep16s* pDst,
                                                   Zep16s gamma1, Zep16s gamma2, int lenImpulse, int order,
                                                   Zep8u* pState);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_G729_H */

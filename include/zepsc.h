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
/** Rate codes accepted by the rate-dependent stages. */
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
 * Dot product with the doubling of the ITU basic operator L_mac, as the
 * G.729 Annex A routines accumulate it: the exact 64-bit sum of
 * pSrc1[i] * pSrc2[i] is doubled and clamped once to the 32-bit range.
 * @param pDp receives the (clamped) result.
 * Checks: pSrc1, pSrc2, pDp null -> zepStsNullPtrErr; len < 1 -> zepStsSizeErr.
 * @return zepStsOverflow with the clamped value written (0x7FFFFFFF or
 *         0x80000000) when the doubled sum left the 32-bit range, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDotProd_G729A_16s32s(const Zep16s* pSrc1, const Zep16s* pSrc2, int len, Zep32s* pDp);

/**
 * Autocorrelation normalised by its energy (G.729 style): r[k] = 2 * sum
 * pSrc[n] * pSrc[n+k] over the len input samples (samples beyond the end
 * count as zero), for k = 0..lenDst-1; *pNorm = norm_l(r[0]) and every lag
 * is shifted left by it (r[0] = 0 gives zeros and a shift of 0).
 * Checks: pSrc, pDst, pNorm null -> zepStsNullPtrErr; len < 1 or lenDst < 1
 * -> zepStsBadArgErr (in that order).
 * @return zepStsOverflow with nothing written when r[0] exceeds 0x3FFFFFFF,
 *         so that the caller can scale its input down and call again.
 */
ZEPSAPI ZepStatus zepsAutoCorr_NormE_16s32s(const Zep16s* pSrc, int len, Zep32s* pDst, int lenDst, int* pNorm);

/**
 * Weighted sum of two vectors without rounding: pDst[i] = saturate16(
 * ((pSrc1[i] * val1) >> val1ScaleFactor) + ((pSrc2[i] * val2) >> val2ScaleFactor)),
 * each 32-bit product shifted arithmetically (toward minus infinity) on its own.
 * Checks: pSrc1, pSrc2, pDst null -> zepStsNullPtrErr; len < 1 ->
 * zepStsSizeErr; val1ScaleFactor < 0, then val2ScaleFactor < 0 -> zepStsScaleRangeErr.
 */
ZEPSAPI ZepStatus zepsInterpolateC_NR_16s(const Zep16s* pSrc1, Zep16s val1, int val1ScaleFactor, const Zep16s* pSrc2,
                                          Zep16s val2, int val2ScaleFactor, Zep16s* pDst, int len);
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

/** @defgroup g726 G.726 ADPCM
 *  The G.726 coder at 16, 24, 32 and 40 kbit/s (ITU-T G.726).
 *  @{ */
/* ---- g726: declarations go here ---- */

/** Encoder state block (opaque; 88 bytes, see zepsEncodeGetStateSize_G726_16s8u).
 *  Any byte alignment is accepted. */
typedef struct ZepG726EncodeState ZepG726EncodeState;
/** Decoder state block (opaque; 92 bytes, see zepsDecodeGetStateSize_G726_8u16s).
 *  Any byte alignment is accepted. */
typedef struct ZepG726DecodeState ZepG726DecodeState;

/**
 * Writes the size in bytes of the G.726 encoder state block: 88.
 *
 * @param pSize  receives the size
 * @return zepStsNullPtrErr (-8) if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncodeGetStateSize_G726_16s8u(Zep32s* pSize);

/**
 * Resets a G.726 encoder state block for one rate (ITU-T G.726 reset values:
 * YL = 34816, YU = 544, predictor coefficients, averages, AP, TD and signs
 * zero, the DQ and SR histories at the floating zero). The whole block is
 * written; its earlier content does not matter.
 *
 * @param pState  the caller's block of at least 88 bytes
 * @param rate    rate code: 17 (16 kbit/s, 2-bit codes), 22 (24 kbit/s, 3 bits),
 *                23 (32 kbit/s, 4 bits) or 24 (40 kbit/s, 5 bits)
 * @return checks in order: pState null -> zepStsNullPtrErr (-8); rate not one
 *         of 17, 22, 23, 24 -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncodeInit_G726_16s8u(ZepG726EncodeState* pState, Zep32s rate);

/**
 * Encodes len samples into len G.726 ADPCM codes (ITU-T G.726 4.2.1 to 4.2.7,
 * reference G726_encode of the ITU-T G.191 STL), carrying the state from
 * call to call: the codes do not depend on how a stream is cut into blocks.
 *
 * Input: each sample is the standard's 14-bit linear input signal SL as it
 * stands (-8192..8191, two's complement, no scaling inside the coder); a
 * caller holding full-scale 16-bit PCM shifts it right by 2 first. Samples
 * outside -8192..8191 are clamped to that range (the nearest value the
 * standard's linear input can represent). This is the reference's linear
 * path with EXPAND bypassed; a G.711 input is first expanded to its 14-bit
 * value (the 16-bit G.711 expansion shifted right by 2).
 *
 * Output: one code per byte, right-aligned (2, 3, 4 or 5 bits by rate, the
 * sign bit being the highest), upper bits zero.
 *
 * @param pState  state initialised by zepsEncodeInit_G726_16s8u
 * @param pSrc    len 14-bit linear samples
 * @param pDst    len codes
 * @param len     number of samples
 * @return checks in order: pState, pSrc, pDst null -> zepStsNullPtrErr (-8);
 *         len == 0 -> zepStsSizeErr (-6); len < 0 -> zepStsNoErr (0) with
 *         nothing done (kept on purpose); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncode_G726_16s8u(ZepG726EncodeState* pState, const Zep16s* pSrc, Zep8u* pDst, Zep32s len);

/**
 * Writes the size in bytes of the G.726 decoder state block: 92.
 *
 * @param pSize  receives the size
 * @return zepStsNullPtrErr (-8) if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeGetStateSize_G726_8u16s(Zep32s* pSize);

/**
 * Resets a G.726 decoder state block for one rate and output law (the
 * encoder's reset values, plus the law). The whole block is written.
 *
 * @param pState  the caller's block of at least 92 bytes
 * @param rate    rate code 17, 22, 23 or 24 (16, 24, 32, 40 kbit/s)
 * @param law     output: 0 mu-law, 1 A-law (G.711 code after the synchronous
 *                coding adjustment), 2 linear (14-bit reconstructed signal)
 * @return checks in order: pState null -> zepStsNullPtrErr (-8); rate not one
 *         of 17, 22, 23, 24 -> zepStsRangeErr (-7); law not 0, 1 or 2 ->
 *         zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeInit_G726_8u16s(ZepG726DecodeState* pState, Zep32s rate, Zep32s law);

/**
 * Decodes len G.726 codes into len output words (ITU-T G.726 4.2.2 to 4.2.8,
 * reference G726_decode of the ITU-T G.191 STL), carrying the state from
 * call to call.
 *
 * Input: one code per byte; only the code width's low bits (2 to 5 by rate)
 * are read, higher bits are ignored.
 *
 * Output by the law given at initialisation:
 *  - 2 (linear): the reconstructed signal SR limited to the 14-bit range
 *    -8192..8191, not rescaled (shift left by 2 for 16-bit full scale);
 *  - 0 (mu-law) / 1 (A-law): the G.711 code word 0..255 after the standard's
 *    output conversion COMPRESS and synchronous coding adjustment SYNC, as on
 *    the line (A-law with its even bits inverted), i.e. what a G.711 connection
 *    carries; it is not expanded to linear. As in the reference (v2.0), SR =
 *    -32768 is compressed as -2 for A-law.
 *
 * @param pState    state initialised by zepsDecodeInit_G726_8u16s
 * @param pSrcCode  len codes
 * @param pDst      len output words
 * @param len       number of codes
 * @return checks in order: pState, pSrcCode, pDst null -> zepStsNullPtrErr
 *         (-8); len == 0 -> zepStsSizeErr (-6); len < 0 -> zepStsNoErr (0)
 *         with nothing done (kept on purpose); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecode_G726_8u16s(ZepG726DecodeState* pState, const Zep8u* pSrcCode, Zep16s* pDst, Zep32s len);
/** @} */

/** @defgroup ec Echo-canceller sub-band filter bank
 *  Sub-band analysis and synthesis, 16-bit and float.
 *  @{ */
/* ---- ec: declarations go here ---- */

/*
 * Sub-band filter bank (weighted overlap-add over a real FFT).
 * N = 2^order FFT points, F = frame size (hop, 1..N), L = window length
 * (a whole multiple of N). One analysis call consumes F time samples and
 * yields the N/2+1 complex sub-band values of bins 0..N/2 (bins 0 and N/2
 * have zero imaginary parts); one synthesis call takes N/2+1 values and
 * yields F samples. Analysis and synthesis each need a state of their own.
 *
 * Analysis of a frame x: the delay line d (L samples, oldest first) moves
 * left by F and takes x at its end; u[n] = sum over m of d[n+mN] w[n+mN]
 * (blocks added in increasing n); the output is the forward real FFT of u.
 * Synthesis of a spectrum v: y = inverse real FFT of v (divided by N); d
 * moves left by F and is zero-filled at its end; d[n] += y[n mod N] w[L-1-n]
 * (the window read backwards) for n = 0..L-1; the output is d[0..F-1].
 *
 * Built-in windows (pWindow null): configuration A (order 5, F 24, L 128)
 * and B (order 6, F 44, L 256), symmetric low-pass prototypes; their 16-bit
 * taps are the float taps times 8192 truncated toward zero (Q13).
 *
 * States and work buffers may be passed at any address: the functions use
 * them from the first 16-byte boundary (the sizes include the slack). A state
 * holds pointers into itself: never copy or move it, initialise it again.
 * The initialisation buffer is needed only during the Init call; its size is
 * 0 (the FFT set-up needs none) and pInitBuf may then be null. The work
 * buffer carries nothing between calls and may be shared by all calls of one
 * thread. Nothing allocates.
 *
 * The 16-bit variant follows the arithmetic of a 16-bit fold: each product
 * d[n]w[n] is rounded in Q13, (p + 4096) >> 13, and saturated to 16 bits, and
 * the running fold sum saturates to 16 bits after every added block; in the
 * synthesis each term (y w + 4096) >> 13 (not saturated on its own) is added
 * to the delay line and the sum saturated to 16 bits. The fixed-point FFT
 * (block-normalised 32-bit butterflies with Q30 twiddles) gives the exactly
 * rounded transform of its input within +-1: analysis output
 * round(X * 2^-scaleFactor), synthesis time block round(x * 2^-scaleFactor)
 * saturated to 16 bits (rounding to nearest, ties up; a negative scale factor
 * shifts left, saturating). The scale factor must lie in -31..31: the FFT
 * stage refuses any other value, which the export reports as zepStsErr (-2).
 */

/**
 * Sizes, in bytes, of the blocks of a 16-bit filter bank.
 *
 * @param order        FFT order, N = 2^order (1..16)
 * @param len          window length L, a multiple of N
 * @param pStateSize   receives round16(S) + 2 round16(2L) + 64
 * @param pInitBufSize receives I (0)
 * @param pBufSize     receives round16(4N) + W + 16
 * (S, W, I: description, work and init sizes of the 32-bit real FFT.)
 * Checks in order: order < 1 or len < 1: zepStsBadArgErr (-5); a null result
 * pointer: zepStsNullPtrErr (-8); len not a multiple of N: -5; order refused
 * by the FFT (above 16), or a size beyond 2^31-1 bytes: -5.
 * Nothing is written on failure.
 */
ZEPSAPI ZepStatus zepsSubbandProcessGetSize_16s(int order, int len, int* pStateSize, int* pInitBufSize,
                                                int* pBufSize);

/**
 * Sizes, in bytes, of the blocks of a float filter bank: state S + 8L + 56,
 * init buffer I (0), work buffer W + 4N + 16, with S, W, I those of the float
 * real FFT. Arguments and checks as zepsSubbandProcessGetSize_16s.
 */
ZEPSAPI ZepStatus zepsSubbandProcessGetSize_32f(int order, int len, int* pStateSize, int* pInitBufSize,
                                                int* pBufSize);

/**
 * Builds a 16-bit filter-bank state (analysis or synthesis).
 *
 * @param pState    block of the queried size, any address
 * @param order     FFT order (N = 2^order)
 * @param frameSize F, 1..N
 * @param len       window length L, a multiple of N
 * @param pWindow   L taps in Q13 (8192 = 1.0), or null for the built-in window
 *                  of configuration A or B
 * @param pInitBuf  init buffer (size 0: unused, may be null)
 * Checks in order: order < 1, frameSize < 1, frameSize > N or len < 1:
 * zepStsBadArgErr (-5); pState null: zepStsNullPtrErr (-8); len not a
 * multiple of N: -5; pWindow null and (order, frameSize, len) neither
 * (5, 24, 128) nor (6, 44, 256): -5; the FFT set-up refusing the order (above
 * 16): zepStsErr (-2), with nothing written.
 * The window is copied; the delay line starts at zero.
 */
ZEPSAPI ZepStatus zepsSubbandProcessInit_16s(Zep8u* pState, int order, int frameSize, int len,
                                             const Zep16s* pWindow, Zep8u* pInitBuf);

/**
 * Builds a float filter-bank state. Arguments and checks as
 * zepsSubbandProcessInit_16s, with pWindow L float taps (or null).
 */
ZEPSAPI ZepStatus zepsSubbandProcessInit_32f(Zep8u* pState, int order, int frameSize, int len,
                                             const Zep32f* pWindow, Zep8u* pInitBuf);

/**
 * One analysis frame, 16-bit samples to 32-bit sub-band values.
 *
 * @param pSrc        F new samples
 * @param pDst        N/2+1 complex values: round(X[k] 2^-scaleFactor),
 *                    saturated to 32 bits, X the real FFT of the folded block
 * @param pState      analysis state from zepsSubbandProcessInit_16s
 * @param scaleFactor -31..31
 * @param pBuf        work buffer of the queried size, any address
 * Checks: pSrc, pDst, pState, pBuf in this order, null: zepStsNullPtrErr (-8).
 * A scale factor outside -31..31 is refused by the FFT stage: zepStsErr (-2),
 * after the delay line has taken the frame; pDst is not written.
 */
ZEPSAPI ZepStatus zepsSubbandAnalysis_16s32sc_Sfs(const Zep16s* pSrc, Zep32sc* pDst, Zep8u* pState,
                                                  int scaleFactor, Zep8u* pBuf);

/**
 * One analysis frame in single precision: pSrc F samples, pDst N/2+1 complex
 * values (the unnormalised real FFT of the folded block; products and sums in
 * single precision, blocks added in increasing order).
 * Checks: pSrc, pDst, pState, pBuf in this order, null: zepStsNullPtrErr (-8).
 */
ZEPSAPI ZepStatus zepsSubbandAnalysis_32f32fc(const Zep32f* pSrc, Zep32fc* pDst, Zep8u* pState, Zep8u* pBuf);

/**
 * One synthesis frame in single precision: pSrc N/2+1 complex values (the
 * imaginary parts of bins 0 and N/2 are ignored), pDst F samples.
 * Checks: pSrc, pDst, pState, pBuf in this order, null: zepStsNullPtrErr (-8).
 */
ZEPSAPI ZepStatus zepsSubbandSynthesis_32fc32f(const Zep32fc* pSrc, Zep32f* pDst, Zep8u* pState, Zep8u* pBuf);

/**
 * One synthesis frame, 32-bit sub-band values to 16-bit samples.
 *
 * @param pSrc        N/2+1 complex values (imaginary parts of bins 0 and N/2
 *                    ignored)
 * @param pDst        F samples
 * @param pState      synthesis state from zepsSubbandProcessInit_16s
 * @param scaleFactor -31..31: the time block is round(x 2^-scaleFactor)
 *                    saturated to 16 bits, x the inverse FFT divided by N
 * @param pBuf        work buffer of the queried size, any address
 * Checks: pSrc, pDst, pState, pBuf in this order, null: zepStsNullPtrErr (-8).
 * A scale factor outside -31..31 is refused by the FFT stage: zepStsErr (-2),
 * before the delay line is touched; pDst is not written.
 */
ZEPSAPI ZepStatus zepsSubbandSynthesis_32sc16s_Sfs(const Zep32sc* pSrc, Zep16s* pDst, Zep8u* pState,
                                                   int scaleFactor, Zep8u* pBuf);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_H */

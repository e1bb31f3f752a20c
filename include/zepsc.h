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
/** @} */

/** @defgroup amr_vad GSM-AMR voice activity detection
 *  VAD options 1 and 2, open-loop pitch searches, pre-emphasis and the VAD option 2 FFT (3GPP TS 26.073/26.094).
 *  @{ */
/* ---- amr_vad: declarations go here ---- */
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

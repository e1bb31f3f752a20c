/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/common.h - Common speech-processing primitives shared by the codec families.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_COMMON_H
#define ZEPSC_COMMON_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

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
 * Order-10 all-pole synthesis filter without rounding (NR): y[n] =
 * saturate16((a[0] x[n] - sum_{j=1..10} a[j] y[n-j]) >> scaleFactor), the
 * 16 x 16-bit products not doubled, accumulated in 32 bits with saturation
 * at every step, the shift arithmetic (truncation toward minus infinity).
 * With Q12 coefficients and scaleFactor 12 it is the G.729 synthesis filter
 * with truncation where the standard rounds (zepsSynthesisFilter_G729_16s
 * is the rounding member).
 * @param pLPC        11 coefficients a[0..10], Q(scaleFactor)
 * @param pSrc        input, len samples
 * @param pDst        output, len samples; may equal pSrc
 * @param len         number of samples, at least 1
 * @param scaleFactor right shift of the accumulator, 0..31
 * @param pMem        the 10 past outputs, oldest first (read only)
 * Checks: pLPC, pSrc, pDst, pMem null -> zepStsNullPtrErr; len < 1 ->
 * zepStsSizeErr; scaleFactor outside 0..31 -> zepStsScaleRangeErr.
 * @return zepStsOverflow when an accumulation or an output saturated, with
 *         the saturated output written (a caller scales its input down and
 *         filters again); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSynthesisFilter_NR_16s_Sfs(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len,
                                                 int scaleFactor, const Zep16s* pMem);

/**
 * In-place form of zepsSynthesisFilter_NR_16s_Sfs whose memory is updated:
 * pMem receives the last 10 outputs (earlier memory values when len < 10),
 * also when zepStsOverflow is returned. Same checks in the same order.
 */
ZEPSAPI ZepStatus zepsSynthesisFilter_NR_16s_ISfs(const Zep16s* pLPC, Zep16s* pSrcDst, int len, int scaleFactor,
                                                  Zep16s* pMem);

/**
 * The NR synthesis filter of a lower order: only a[0..order] are used
 * (pLPC holds order + 1 values), the memory is still the 10 past outputs,
 * updated as by zepsSynthesisFilter_NR_16s_ISfs; saturation is silent (no
 * overflow warning).
 * Checks: pLPC, pSrcDst, pMem null -> zepStsNullPtrErr; len < 1 ->
 * zepStsSizeErr; order outside 1..10 -> zepStsRangeErr; scaleFactor outside
 * 0..31 -> zepStsScaleRangeErr.
 */
ZEPSAPI ZepStatus zepsSynthesisFilterLow_NR_16s_ISfs(const Zep16s* pLPC, Zep16s* pSrcDst, int len, int order,
                                                     int scaleFactor, Zep16s* pMem);

/**
 * Zero-state response of the NR synthesis filter (zero memory): with pSrc
 * the weighted filter's numerator (a[0] = 1 << scaleFactor, the rest zero)
 * it gives the impulse response used by the codebook searches. Saturation
 * is silent.
 * Checks: pLPC, pSrc, pDst null -> zepStsNullPtrErr; len < 1 ->
 * zepStsSizeErr; scaleFactor outside 0..31 -> zepStsScaleRangeErr.
 */
ZEPSAPI ZepStatus zepsSynthesisFilterZeroStateResponse_NR_16s(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst,
                                                              int len, int scaleFactor);

/**
 * Vector times a constant without rounding: pDst[i] = saturate16((pSrc[i] *
 * val) >> scaleFactor), the 32-bit product shifted arithmetically. pDst may
 * equal pSrc.
 * Checks: pSrc, pDst null -> zepStsNullPtrErr; len < 1 -> zepStsSizeErr;
 * scaleFactor outside 0..31 -> zepStsScaleRangeErr.
 */
ZEPSAPI ZepStatus zepsMulC_NR_16s_Sfs(const Zep16s* pSrc, Zep16s val, Zep16s* pDst, int len, int scaleFactor);
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

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_COMMON_H */

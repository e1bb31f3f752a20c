/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * zepsc/ec.h - Echo-cancellation toolkit: sub-band filter bank, adaptive filters, controllers, tone detection, noise filter.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_EC_H
#define ZEPSC_EC_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

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
 * Every analysis and synthesis call checks the state before using it (after
 * the null pointers): a block that is not a complete state of the call's
 * precision built by its Init at this very place (a copied or moved state, a
 * zero or random block, a state whose Init failed, a state of the other
 * precision) gives zepStsBadArgErr (-5) with nothing read through its
 * pointers and nothing written. The check covers the header (a magic value,
 * the lengths, and each inner pointer against the place Init put it); it
 * does not verify the window, delay line or transform tables.
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
 * Checks: pSrc, pDst, pState, pBuf in this order, null: zepStsNullPtrErr (-8);
 * pState not a 16-bit state built in this block: zepStsBadArgErr (-5).
 * A scale factor outside -31..31 is refused by the FFT stage: zepStsErr (-2),
 * after the delay line has taken the frame; pDst is not written.
 */
ZEPSAPI ZepStatus zepsSubbandAnalysis_16s32sc_Sfs(const Zep16s* pSrc, Zep32sc* pDst, Zep8u* pState,
                                                  int scaleFactor, Zep8u* pBuf);

/**
 * One analysis frame in single precision: pSrc F samples, pDst N/2+1 complex
 * values (the unnormalised real FFT of the folded block; products and sums in
 * single precision, blocks added in increasing order).
 * Checks: pSrc, pDst, pState, pBuf in this order, null: zepStsNullPtrErr (-8);
 * pState not a float state built in this block: zepStsBadArgErr (-5).
 */
ZEPSAPI ZepStatus zepsSubbandAnalysis_32f32fc(const Zep32f* pSrc, Zep32fc* pDst, Zep8u* pState, Zep8u* pBuf);

/**
 * One synthesis frame in single precision: pSrc N/2+1 complex values (the
 * imaginary parts of bins 0 and N/2 are ignored), pDst F samples.
 * Checks: pSrc, pDst, pState, pBuf in this order, null: zepStsNullPtrErr (-8);
 * pState not a float state built in this block: zepStsBadArgErr (-5).
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
 * Checks: pSrc, pDst, pState, pBuf in this order, null: zepStsNullPtrErr (-8);
 * pState not a 16-bit state built in this block: zepStsBadArgErr (-5).
 * A scale factor outside -31..31 is refused by the FFT stage: zepStsErr (-2),
 * before the delay line is touched; pDst is not written.
 */
ZEPSAPI ZepStatus zepsSubbandSynthesis_32sc16s_Sfs(const Zep32sc* pSrc, Zep16s* pDst, Zep8u* pState,
                                                   int scaleFactor, Zep8u* pBuf);
/** @} */

/** @defgroup ecadapt Echo canceller: adaptive filters, controllers, tone disabler, noise filter
 *  Sub-band and full-band NLMS filters, the frame controller with its
 *  Geigel double-talk detector, the coefficient guard (two-filter scheme),
 *  non-linear processing with comfort noise,
 *  the 2100 Hz tone disabler and the sub-band noise filter.
 *
 *  Sub-band history layout (filter and update): numSegments spectra of
 *  numBands complex values each, segment s at offset s*numBands, segment 0
 *  the newest far-end spectrum (so a filter of S segments spans S frames of
 *  the filter bank). Sub-band counts outside 1..4097 give
 *  zepStsSubbandNumErr (-119), checked before the segment count (1..255)
 *  and any scale factor (-31..31), both zepStsRangeErr (-7).
 *  Set-up routines (GetSize, Init) check their configuration (-5) before
 *  their pointers. Variable-size states (double-talk detector, noise
 *  filter) are placed at the first 16-byte boundary of the caller's block
 *  and point into themselves: never copy them, initialise again. Every
 *  processing call checks that its state was built by its Init at this
 *  place (a magic value, its lengths, its inner pointer): otherwise
 *  zepStsBadArgErr (-5), nothing written.
 *  @{ */

/** Controller flags (zepsEchoControl_EC_32f). */
enum ZepEcFlag {
    ZEP_EC_FLAG_ADAPT = 1,      /**< adapt this frame with the step returned */
    ZEP_EC_FLAG_DOUBLETALK = 2, /**< double talk (or its 3-frame hold): adaptation frozen */
    ZEP_EC_FLAG_PATHCHANGE = 4, /**< echo-path change detected this frame */
    ZEP_EC_FLAG_CONVERGED = 8,  /**< smoothed ERLE at least 12 dB */
    ZEP_EC_FLAG_NLP = 16        /**< suppress the residual (non-linear processing) */
};

/** Coefficient guard actions (zepsCoefGuard_EC_32f). */
enum ZepEcGuardAction {
    ZEP_EC_GUARD_KEEP = 0,   /**< keep both filters; the output is the adapting filter's error */
    ZEP_EC_GUARD_SAVE = 1,   /**< copy the adapting filter's coefficients into the saved filter */
    ZEP_EC_GUARD_RESTORE = 2, /**< copy the saved coefficients back into the adapting filter; the
                                  output is the saved filter's error */
    ZEP_EC_FDAF_RESTART = 3   /**< zepsFreqDomainLeakUpdate_EC_32f only: keep both filters and
                                  return to the initial steps (echo-path change) */
};

/** Tone detector result flags (zepsToneDetect_EC_16s). */
enum ZepEcToneFlag {
    ZEP_EC_TONE_PRESENT = 1,  /**< 2100 Hz tone present (run of 50 ms or more) */
    ZEP_EC_TONE_REVERSAL = 2, /**< the present tone has had a phase reversal */
    ZEP_EC_TONE_DISABLE = 4   /**< the canceller is to be disabled (G.164/G.165 rule) */
};

/**
 * Sub-band adaptive filter output, complex float:
 * pDst[k] = sum over s of pSrc[s*numBands+k] * pCoef[s*numBands+k].
 *
 * @param pSrc        far-end history, numSegments x numBands values (newest first)
 * @param pCoef       coefficients, same layout
 * @param pDst        numBands values (the echo estimate of the frame)
 * @param numBands    sub-band count, 1..4097 (N/2+1 of the filter bank)
 * @param numSegments 1..255
 * Checks: pSrc, pCoef, pDst null: -8; numBands: zepStsSubbandNumErr (-119);
 * numSegments: zepStsRangeErr (-7). Products and sums in single precision,
 * segments in increasing order.
 */
ZEPSAPI ZepStatus zepsSubbandFilter_EC_32fc(const Zep32fc* pSrc, const Zep32fc* pCoef, Zep32fc* pDst, int numBands,
                                            int numSegments);

/**
 * Sub-band adaptive filter output, complex 32-bit fixed point with Q31
 * coefficients: pDst[k] = round(sum_s X_s[k] C_s[k] 2^-(31+scaleFactor)),
 * the sum exact (128-bit), rounded to nearest (ties up), each part
 * saturated to 32 bits.
 *
 * @param pSrc        far-end history, numSegments x numBands values
 * @param pCoef       coefficients in Q31, same layout
 * @param pDst        numBands values
 * @param numBands    1..4097
 * @param numSegments 1..255
 * @param scaleFactor -31..31
 * Checks: pointers (-8); numBands (-119); numSegments (-7); scaleFactor (-7).
 */
ZEPSAPI ZepStatus zepsSubbandFilter_EC_32sc_Sfs(const Zep32sc* pSrc, const Zep32sc* pCoef, Zep32sc* pDst,
                                                int numBands, int numSegments, int scaleFactor);

/**
 * Sub-band NLMS coefficient update, complex float, in place:
 * P[k] = sum_s |X_s[k]|^2; C_s[k] += step E[k] conj(X_s[k]) / (P[k] + delta).
 *
 * @param pSrc        far-end history the frame's error was formed with
 * @param pErr        numBands error values (near end minus filter output)
 * @param pCoef       coefficients, updated in place
 * @param numBands    1..4097
 * @param numSegments 1..255
 * @param step        0..2 (0: frozen, nothing changes)
 * @param delta       regularisation, above 0 and at most 3e38 (a far-end power floor)
 * Checks: pointers (-8); numBands (-119); numSegments (-7); step outside
 * 0..2 or delta outside (0, 3e38] (not a number included): -7.
 */
ZEPSAPI ZepStatus zepsSubbandCoefUpdate_EC_32fc_I(const Zep32fc* pSrc, const Zep32fc* pErr, Zep32fc* pCoef,
                                                  int numBands, int numSegments, Zep32f step, Zep32f delta);

/**
 * Full-band echo-path filter, float: pDst[n] = sum_k pCoef[k] pSrc[n+taps-1-k].
 *
 * @param pSrc  far-end history of len + taps - 1 samples, oldest first
 * @param pCoef taps coefficients (pCoef[0] weighs the newest sample)
 * @param pDst  len samples
 * @param len   1 or more
 * @param taps  1 or more
 * Checks: pointers (-8); len or taps below 1: zepStsSizeErr (-6).
 */
ZEPSAPI ZepStatus zepsFullbandFilter_EC_32f(const Zep32f* pSrc, const Zep32f* pCoef, Zep32f* pDst, int len,
                                            int taps);

/**
 * Full-band echo-path filter, 16-bit samples, Q15 coefficients: the 64-bit
 * sum of products rounded in Q15 ((acc + 2^14) >> 15) and saturated to 16
 * bits. Arguments and checks as zepsFullbandFilter_EC_32f.
 */
ZEPSAPI ZepStatus zepsFullbandFilter_EC_16s(const Zep16s* pSrc, const Zep16s* pCoef, Zep16s* pDst, int len,
                                            int taps);

/**
 * Full-band NLMS echo canceller (narrow-band line echo), float, sample by
 * sample: e[n] = d[n] - sum_k c[k] u[k], then c[k] += step e[n] u[k] /
 * (|u|^2 + delta), u[k] = pSrc[n+taps-1-k]. |u|^2 is recomputed in double
 * precision every 256 samples and updated by the entering and leaving
 * samples in between.
 *
 * @param pSrc  far-end history of len + taps - 1 samples, oldest first
 * @param pIn   len near-end (line input) samples
 * @param pErr  len output samples, the echo-cancelled signal e
 * @param pCoef taps coefficients, updated in place
 * @param len   1 or more
 * @param taps  1 or more
 * @param step  0..2 (0: filter only)
 * @param delta regularisation, above 0 and at most 3e38
 * Checks: pointers (-8); len or taps below 1 (-6); step outside 0..2 or
 * delta outside (0, 3e38] (not a number included): -7.
 */
ZEPSAPI ZepStatus zepsFullbandNLMS_EC_32f(const Zep32f* pSrc, const Zep32f* pIn, Zep32f* pErr, Zep32f* pCoef,
                                          int len, int taps, Zep32f step, Zep32f delta);

/**
 * Size of a partitioned-block frequency-domain NLMS filter (multi-delay
 * filter, overlap-save) with its saved copy.
 *
 * @param order         FFT order 2..12: N = 2^order points, block B = N/2
 *                      samples per call
 * @param numPartitions 1..255 partitions; the filter spans numPartitions B taps
 * @param pSize         receives the size in bytes (the state is placed at the
 *                      first 16-byte boundary of the caller's block)
 * Checks: order or numPartitions (-5); pSize null (-8).
 */
ZEPSAPI ZepStatus zepsFreqDomainFilterGetSize_EC_32f(int order, int numPartitions, int* pSize);

/**
 * Builds the frequency-domain filter: coefficients of both filters, far-end
 * history and errors zero.
 *
 * @param pState        block of the queried size
 * @param order         as zepsFreqDomainFilterGetSize_EC_32f
 * @param numPartitions as zepsFreqDomainFilterGetSize_EC_32f
 * Checks: order or numPartitions (-5); pState null (-8).
 * Decision: the state holds no pointers (every array's place follows from
 * order and numPartitions), so, unlike the sub-band bank states, it may be
 * copied to another block with the same offset from a 16-byte boundary.
 */
ZEPSAPI ZepStatus zepsFreqDomainFilterInit_EC_32f(Zep8u* pState, int order, int numPartitions);

/**
 * Frequency-domain filter, one block of B samples: the far-end block enters
 * the history (X_0 = FFT of the last 2B far-end samples), both the adapting
 * coefficients W and the saved copy V filter it (y = last B samples of
 * IFFT(sum_p X_p W_p)), and the errors e = near - y are returned and kept
 * for zepsFreqDomainCoefUpdate_EC_32f. While V is W (after Init, a save or
 * a restore, until the next gradient step) the saved filter is not run: its
 * error is e, the same bits.
 *
 * @param pFar      B far-end samples (16-bit units)
 * @param pNear     B near-end samples (the echo plus the near talker)
 * @param pErr      B samples: near end minus the adapting filter's echo estimate
 * @param pErrSaved B samples: near end minus the saved filter's estimate
 * @param pState    filter state
 * Checks: pointers (-8); a state not built by Init (-5).
 */
ZEPSAPI ZepStatus zepsFreqDomainFilter_EC_32f(const Zep32f* pFar, const Zep32f* pNear, Zep32f* pErr,
                                              Zep32f* pErrSaved, Zep8u* pState);

/**
 * Frequency-domain filter, one block of B samples, the adapting filter
 * alone: as zepsFreqDomainFilter_EC_32f without the saved copy's output.
 * The near-end block is kept in the state, so a ZEP_EC_GUARD_RESTORE in the
 * following update still forms the saved filter's error (then, once).
 *
 * @param pFar   B far-end samples (16-bit units)
 * @param pNear  B near-end samples
 * @param pErr   B samples: near end minus the adapting filter's echo estimate
 * @param pState filter state
 * Checks: pointers (-8); a state not built by Init (-5).
 * Decision: for a caller whose coefficient guard has just saved the
 * adapting filter (the copy is then one gradient step old and its error
 * that of the adapting filter within that step, so the guard can only save
 * or keep): one inverse transform and the saved filter's half of the
 * spectrum products fewer per block. pErr, the state's coefficients and
 * every later result are those of zepsFreqDomainFilter_EC_32f, bit for bit.
 */
ZEPSAPI ZepStatus zepsFreqDomainFilterAdapt_EC_32f(const Zep32f* pFar, const Zep32f* pNear, Zep32f* pErr,
                                                   Zep8u* pState);

/**
 * Frequency-domain NLMS update after zepsFreqDomainFilter_EC_32f: first the
 * coefficient guard's action (ZEP_EC_GUARD_SAVE: V = W; ZEP_EC_GUARD_RESTORE:
 * W = V and the saved filter's error becomes the error the update uses),
 * then, when step is above 0, with E = FFT(B zeros, e) and
 * S[k] = sum_p |X_p[k]|^2 (the far-end power in bin k over the filter span):
 * W_p[k] += step E[k] conj(X_p[k]) / (0.9 S[k] + 0.1 mean(S) + delta); then the gradient
 * constraint on partition 0 and on one further partition in turn (inverse
 * transform, last B taps cleared, forward transform).
 *
 * @param action ZEP_EC_GUARD_KEEP, _SAVE or _RESTORE
 * @param step   0..2 (0: only the action)
 * @param delta  regularisation, above 0 and at most 3e38 (a far-end power
 *               floor; N B numPartitions 1000 is about -60 dBov per sample)
 * @param pState filter state
 * Checks: pState null (-8); a state not built by Init (-5); action outside
 * 0..2 (-5); step outside 0..2 or delta outside (0, 3e38] (not a number
 * included) (-7).
 * Decisions: the step is normalised per bin (the far-end power of each bin,
 * not of the whole block), which keeps the coloured spectrum of speech from
 * slowing the weak bins, with a tenth of the mean bin power as a floor, so
 * that bins where the far end is weak do not take full steps on near-end
 * noise; the constraint runs on two partitions a block
 * (the alternately updated multi-delay filter) instead of all: the circular
 * part of the others is cleared within P - 1 blocks, at a fraction of the
 * transforms.
 */
ZEPSAPI ZepStatus zepsFreqDomainCoefUpdate_EC_32f(int action, Zep32f step, Zep32f delta, Zep8u* pState);

/**
 * Frequency-domain update after zepsFreqDomainFilter_EC_32f with a step per
 * bin from a leakage (residual-echo) estimate. First the action
 * (ZEP_EC_GUARD_KEEP, _SAVE, _RESTORE as zepsFreqDomainCoefUpdate_EC_32f;
 * ZEP_EC_FDAF_RESTART: no copy, and the initial steps start again). Then,
 * with E = FFT(B zeros, e) and Y the adapting filter's echo-estimate
 * spectrum (the restored filter's after a restore), the leakage estimate is
 * brought up to date on every call, step 0 included:
 *   Rf = |E[k]|^2, Yf = |Y[k]|^2; their averages Eh, Yh per bin move by
 *   2B/8000 of the difference each call; the fluctuations' cross term
 *   sum (Rf - Eh)(Yf - Yh) / sqrt(sum (Yf - Yh)^2) and norm
 *   sqrt(sum (Yf - Yh)^2) are smoothed at the rate
 *   a = min(2B/8000 Syy, 0.5B/8000 See) / See (Syy = sum Yf, See = sum Rf);
 *   leak = their ratio, within 0.005..1 (the norm floored at 1);
 *   RER = min(0.5, (1e-4 Sxx + 3 leak Syy) / See), Sxx = sum |X_0[k]|^2;
 *   mu[k] = (0.5 min(leak Yf, 0.5 Rf) + 0.5 RER Rf) / Rf (Rf + 1e-3).
 * When step is above 0: the held far-end power H[k] = S[k] where S[k] > H[k],
 * else H[k] = (1 - d) H[k] + d S[k] (d the decay of
 * zepsFreqDomainFilterSetHold_EC_32f, 0.2 after Init; H starts at 0);
 * g[k] = 1.3 and a = 0.03 until the steps taken since Init or the last
 * restart sum to more than 5 numPartitions (the initial steps: the caller's
 * step gates them but does not scale them), then g[k] = min(1.5, step 7 mu[k])
 * and a = 0.25;
 * W_p[k] += g[k] r_p E[k] conj(X_p[k]) / ((1 - a) H[k] + a mean(H) + delta),
 * r_p the partition shares of zepsFreqDomainFilterSetProp_EC_32f (all 1 by
 * default; otherwise S[k] = sum_p r_p |X_p[k]|^2), and the gradient
 * constraint as zepsFreqDomainCoefUpdate_EC_32f.
 *
 * @param action ZEP_EC_GUARD_KEEP, _SAVE, _RESTORE or ZEP_EC_FDAF_RESTART
 * @param step   0..2 (0: the action and the estimate only), the caller's
 *               gate, and its scale once adapted (the controller's step)
 * @param delta  regularisation, above 0 and at most 3e38, as
 *               zepsFreqDomainCoefUpdate_EC_32f
 * @param pState filter state
 * Checks: pState null (-8); a state not built by Init (-5); action outside
 * 0..3 (-5); step outside 0..2 or delta outside (0, 3e38] (not a number
 * included) (-7). Nothing is written before the checks pass.
 * Decisions: the step of each bin is the estimated share of residual echo
 * in that bin's error (the optimal NLMS step is the residual echo's power
 * over the error's), so the filter takes large steps while the echo
 * dominates the error and small ones once the error is near-end noise or
 * near-end speech, which also slows adaptation in double talk the Geigel
 * detector misses; the estimate is the regression of the error's power
 * fluctuations on the echo estimate's (their correlation over time is what
 * the filter has not yet removed). The factor 7 stands for the partitions
 * the normaliser sums over and for the held power, which is at least the
 * current one (without the hold: 4; at 8 partitions 3 and 4 gave the same
 * steady state within 0.2 dB, 6 slowed D7). The held power keeps the steps
 * small while the far end decays after a loud stretch: the error there is
 * mostly near-end noise, and a step normalised by the falling far-end
 * power would let that noise into the coefficients, to come out as
 * residual echo at the next loud stretch. Measured on the G.168 Annex D
 * paths (the tool's canceller, proportionate share 0.4): with the hold at
 * 0.2, the gains above and the mix 0.5 of the two step terms (was 0.7 /
 * 0.3) the steady state is 0.23-0.42 dB higher on every path than with the
 * unheld normaliser, gain 4, means 0.1 / 0.5, 3 numPartitions and the mix
 * 0.7, at the same or earlier convergence; decays 0.3 / 0.5 give 0.1 /
 * 0.4 dB less, 0.15 delays D5's convergence by 0.01 s and 0.1 by 0.54 s
 * (its first talk spurt then ends below 20 dB); the gains above without the
 * hold lose up to 1.2 dB. A bin's step is at most 1.5: the gain 7 over
 * shares up to 0.5 reaches 3.5 at the caller's step 1, beyond the
 * normalised update's stable range (on white noise at step 1 the filter
 * then stalled near -17 dB of misalignment; capped it reaches -60 dB); the
 * canceller's controller, whose step falls to 0.25 as the ERLE grows, gives
 * the same figures within 0.03 dB. The initial steps hold until the
 * estimate has had time to settle; the caller restarts them after an
 * echo-path change. The caller's controller lowers its step as its
 * full-band ERLE grows, which in the first talk spurts says that the bins
 * the far end has excited so far are modelled, not that the error is noise:
 * scaled by it, the initial steps slowed the bins a new sound excites, so
 * the caller's step only gates them (G.168 Annex D paths, the tool's
 * canceller, the gate alone: 20 dB reached 0.01-0.05 s earlier on D3, D8,
 * D9, steady state +0.01 to +0.05 dB on every path, ERLE before the double
 * talk +0.7 dB, after the echo-path change +0.4 dB).
 * Their mean share 0.03 (was 0.07): a far end whose power sits in a few
 * strong bins (a male voice's low harmonics, 20-30 dB above its other bins
 * between syllables) lifts mean(H) so that 0.07 of it cut the other bins'
 * steps to about a quarter, while their error before the filter has
 * adapted is echo, not noise. With the gate, mean share 0.03 and initial
 * step 1.3, 20 dB is reached within 0.32-0.50 s (D5 0.48 s; was 0.38-0.50,
 * D5 0.49); 0.07 / 1.2, 0.03 / 1.2, 0.07 / 1.4: D5 0.49 s; 0.02 / 1.3: D7,
 * D8 0.05-0.07 dB less steady state; 0 / 1.2: D6, D7 0.5 s later; the
 * initial steps normalised by the current power instead of the held one:
 * D5 0.49 s at 0.07 / 1.2, D7 0.52-0.82 s where D5 reaches 0.48 s. Before
 * the gate: measured on the G.168 Annex D paths with the
 * proportionate share 0.5, a double-talk detector that no longer holds
 * adaptation off at the first talk spurt's onset and a guard restoring at
 * 1.5 dB: 20 dB reached on D5, D7, D9 0.35 s earlier with 1.0 to 1.25
 * than with 0.75, on D2 0.07 s earlier with 1.1 to 1.25 than with 1.0, on
 * D9 0.02 s earlier with 1.2 than with 1.1; 1.3 slows D7 by 0.34 s (with a
 * guard restoring at 3 dB 1.5 overshot: D3, D4, D6 0.3 s later); 0.5 is
 * slower. Without the hold the mean share 0.5 once adapted gave 0.2-0.7 dB
 * more steady state than 0.1, while 0.1 during the initial steps kept
 * convergence fast (0.5 throughout: D4 20 dB 0.34 s later); with the hold,
 * 0.25 once adapted (0.15-0.3 within 0.05 dB) and 0.07 during the initial
 * steps (0.05: D2, D3 20 dB 0.05 s earlier, 0.02-0.1 dB less after the
 * double talk; 0.1: D5 0.01 s later), before the gate.
 */
ZEPSAPI ZepStatus zepsFreqDomainLeakUpdate_EC_32f(int action, Zep32f step, Zep32f delta, Zep8u* pState);

/**
 * Proportionate step share of the frequency-domain filter's partitions.
 *
 * Sets how the update (zepsFreqDomainCoefUpdate_EC_32f and
 * zepsFreqDomainLeakUpdate_EC_32f) shares its step between the P partitions:
 * partition p's gradient is scaled by
 *   r_p = (1 - prop) + prop P (n_p + eps) / sum_q (n_q + eps),
 * n_p the norm of partition p's coefficient spectrum (square root of the sum
 * of its squared real and imaginary parts), eps 1e-3 of the largest n_p plus
 * 1e-6; the r_p average 1. prop 0 (what Init sets) gives every partition the
 * step the update documents.
 *
 * @param prop   0..1, the proportionate share
 * @param pState filter state (zepsFreqDomainFilterInit_EC_32f)
 * Checks: pState null (-8); a state not built by Init (-5); prop outside
 * 0..1 (not a number included) (-7). Nothing is written before the checks
 * pass; the setting holds until the next Init.
 * Decisions: an echo path is short and sparse beside the tail the filter
 * spans (the ITU-T G.168 Annex D models hold their energy in 2 to 12 ms of
 * a 64 ms filter), so the partitions that hold it take most of the step
 * (proportionate NLMS, Duttweiler 2000, in the mixed form of Benesty and
 * Gay 2002 so that the empty partitions keep adapting): with 8 partitions
 * and prop 0.5 a single active partition adapts 4.5 times faster while the
 * total step stays that of the equal share.
 */
ZEPSAPI ZepStatus zepsFreqDomainFilterSetProp_EC_32f(Zep32f prop, Zep8u* pState);

/**
 * Hold of the far-end power in the frequency-domain leakage update.
 *
 * Sets the decay d of the held far-end power H[k] by which
 * zepsFreqDomainLeakUpdate_EC_32f normalises its steps: on each call with a
 * step above 0, H[k] = S[k] where the current far-end power S[k] exceeds
 * H[k], else H[k] = (1 - d) H[k] + d S[k]. d 1 normalises by the current
 * power (no hold); Init sets 0.2 (about 5 adapting blocks, 40 ms at 64
 * samples a block, for H to come within 1/e of a fallen S).
 * zepsFreqDomainCoefUpdate_EC_32f does not use it.
 *
 * @param decay  the decay per adapting block, above 0 and at most 1
 * @param pState filter state (zepsFreqDomainFilterInit_EC_32f)
 * Checks: pState null (-8); a state not built by Init (-5); decay outside
 * (0, 1] (not a number included) (-7). Nothing is written before the checks
 * pass; the setting holds until the next Init, the held power is kept.
 * Decisions: speech far ends fall by 20-30 dB within tens of milliseconds;
 * a step normalised by the falling power lets the near-end noise of those
 * blocks into the coefficients, which then leaves residual echo at the next
 * loud stretch. The held power keeps the steps those blocks take near the
 * ones of the loud blocks before them, and rises at once with the far end
 * (a louder far end is never given a larger step). The residual echo on
 * the ITU-T G.168 Annex D paths (see zepsFreqDomainLeakUpdate_EC_32f)
 * falls by 0.2-0.4 dB of ERLE with the decay 0.2.
 */
ZEPSAPI ZepStatus zepsFreqDomainFilterSetHold_EC_32f(Zep32f decay, Zep8u* pState);

/**
 * Size of the frame controller's state (fixed).
 * @param pSize receives the size in bytes (any address is accepted by Init)
 * Checks: pSize null: -8.
 */
ZEPSAPI ZepStatus zepsEchoControlGetSize_EC_32f(int* pSize);

/**
 * Builds the frame controller's state.
 * @param pState block of the queried size, any address
 * @param mode   0: fixed step 1.0; 1: variable step (1.0 until the smoothed
 *               ERLE reaches 12 dB, then max(0.25, 10^(-(ERLE-12)/20)))
 * Checks: mode outside 0..1: -5; pState null: -8.
 */
ZEPSAPI ZepStatus zepsEchoControlInit_EC_32f(Zep8u* pState, int mode);

/**
 * Frame controller: adaptation freeze, step size, echo-path change and the
 * non-linear-processing decision for one frame.
 *
 * @param pLevels    4 mean squares of the frame, 16-bit units squared: far
 *                   end, near end, error (canceller output), echo estimate
 * @param doubleTalk 1 when the double-talk detector flagged the frame, else 0
 * @param pStep      receives the step for the coefficient update (0: frozen)
 * @param pFlags     receives ZEP_EC_FLAG_* bits
 * @param pState     controller state
 * Rules: no adaptation while the far end is silent (mean square at most
 * 1000, about -60 dBov) or while double talk is flagged and for 3 frames
 * after; near-end and error levels smoothed over adapting frames (factor
 * 0.9), ERLE their ratio; echo-path change when, after 25 adapting frames,
 * the smoothed error level exceeded the smoothed near-end level in 4 of
 * the last 6 adapting frames (the ERLE history then restarts);
 * NLP when the far end is active, no double-talk hold, and converged.
 * Checks: pointers (-8); doubleTalk outside 0..1 (-5); a state not built by
 * Init (-5); a level negative or above 3e38 (not a number included) (-7).
 */
ZEPSAPI ZepStatus zepsEchoControl_EC_32f(const Zep32f* pLevels, int doubleTalk, Zep32f* pStep, Zep32s* pFlags,
                                         Zep8u* pState);

/**
 * Size of the coefficient guard's state (fixed).
 * @param pSize receives the size in bytes (any address is accepted by Init)
 * Checks: pSize null (-8).
 */
ZEPSAPI ZepStatus zepsCoefGuardGetSize_EC_32f(int* pSize);

/**
 * Builds the coefficient guard (no copy saved yet, levels zero).
 * @param pState block of the queried size, any address
 * Checks: pState null (-8).
 */
ZEPSAPI ZepStatus zepsCoefGuardInit_EC_32f(Zep8u* pState);

/**
 * Coefficient guard, one call per frame: the two-filter scheme (Ochiai,
 * Araseki and Ogihara, 1977) that keeps double talk from diverging the
 * canceller. The caller runs its adapting filter and a saved copy of its
 * coefficients on the same frame and copies coefficients as the action
 * says. Chosen over a finer double-talk detector because it needs no
 * detection at all to stop divergence: a frame the detector misses makes
 * the adapting filter worse than the saved one, which is then restored; an
 * echo-path change makes the adapting filter better, so it is still
 * followed at once.
 *
 * @param pLevels    3 mean squares of the frame: near end, the adapting
 *                   filter's error, the saved filter's error (any unit, the
 *                   same for the three)
 * @param doubleTalk 1 when the double-talk detector flagged the frame, else 0
 * @param pAction    receives ZEP_EC_GUARD_KEEP, _SAVE or _RESTORE
 * @param pState     guard state
 * Rules: each level smoothed over frames (S = 0.7 S + 0.3 level). RESTORE
 * when a copy has been saved and the saved filter's smoothed error is below
 * the restore ratio (0.5, 3 dB, after Init; see
 * zepsCoefGuardSetRestore_EC_32f) times the adapting filter's; else SAVE when no double talk is
 * flagged and the adapting filter's smoothed error is at most the saved
 * filter's and more than 12 dB below the smoothed near-end level (a near
 * talker keeps that ratio small, so a drifting filter is not saved); else
 * KEEP. After RESTORE or SAVE both smoothed errors take the kept filter's.
 * Checks: pointers (-8); doubleTalk outside 0..1 (-5); a state not built by
 * Init (-5); a level negative or above 3e38 (not a number included) (-7).
 */
ZEPSAPI ZepStatus zepsCoefGuard_EC_32f(const Zep32f* pLevels, int doubleTalk, Zep32s* pAction, Zep8u* pState);

/**
 * Sets the coefficient guard's restore ratio: RESTORE when the saved
 * filter's smoothed error is below ratio times the adapting filter's.
 * @param ratio  above 0 and at most 1 (Init sets 0.5, 3 dB)
 * @param pState guard state (zepsCoefGuardInit_EC_32f)
 * Checks: pState null (-8); a state not built by Init (-5); ratio outside
 * (0, 1] (not a number included) (-7). Nothing is written before the checks
 * pass; the setting holds until the next Init.
 * Decisions: a ratio nearer 1 hands the saved filter back on a smaller
 * lead. A double talk the detector half misses leaves the adapting filter
 * 1 to 3 dB worse than the copy saved before it, which 0.5 keeps; with 0.7
 * (1.5 dB) the frequency-domain canceller of zepsc ec is back at its ERLE
 * from before the double talk (ITU-T G.168 Annex D model D4: 37.2 dB after
 * against 37.7 before, 33.2 dB with 0.5). In steady state a restore hands
 * back a copy at most a few frames old, so the steady state is unchanged or
 * better.
 */
ZEPSAPI ZepStatus zepsCoefGuardSetRestore_EC_32f(Zep32f ratio, Zep8u* pState);

/**
 * Size of a Geigel double-talk detector's state.
 * @param tailLen far-end samples searched for the peak, 1..65536 (the echo
 *                canceller's tail)
 * @param pSize   receives 16 + 48 + round16(4 tailLen) bytes
 * Checks: tailLen (-5); pSize null (-8).
 */
ZEPSAPI ZepStatus zepsDoubleTalkGetSize_EC_32f(int tailLen, int* pSize);

/**
 * Builds a Geigel double-talk detector.
 * @param pState    block of the queried size, any address
 * @param tailLen   1..65536
 * @param threshold near/far ratio, above 0 and at most 16 (0.5: the 6 dB
 *                  echo return loss assumed by ITU-T G.168)
 * @param hangover  samples the decision is held, 0..2^20
 * Checks: tailLen or hangover (-5); pState null (-8); threshold (-7).
 */
ZEPSAPI ZepStatus zepsDoubleTalkInit_EC_32f(Zep8u* pState, int tailLen, Zep32f threshold, int hangover);

/**
 * Geigel double-talk detection over a block: double talk at sample n when
 * |near[n]| >= threshold * max(floor, max |far|), the maximum over the last
 * tailLen far-end samples (including n), and |near[n]| > 0, held for
 * hangover samples (floor: zepsDoubleTalkSetFloor_EC_32f, 0 after Init).
 *
 * @param pFar        len far-end samples
 * @param pNear       len near-end samples (the same instants)
 * @param pDoubleTalk receives 1 when any sample of the block is in double
 *                    talk (or its hangover), else 0
 * @param len         1 or more
 * @param pState      detector state
 * Checks: pointers (-8); len below 1 (-5); a state not built by Init here (-5).
 */
ZEPSAPI ZepStatus zepsDoubleTalk_EC_32f(const Zep32f* pFar, const Zep32f* pNear, Zep32s* pDoubleTalk, int len,
                                        Zep8u* pState);

/**
 * Sets the far-end peak floor of a Geigel detector: double talk needs
 * |near| >= threshold * max(floor, max |far|), so while the far end stays
 * below the floor over the whole tail no near-end signal is double talk.
 * @param floor  0 (the plain rule, what Init sets) up to 3e38, in the
 *               samples' unit
 * @param pState detector state (zepsDoubleTalkInit_EC_32f)
 * Checks: pState null (-8); a state not built by Init here (-5); floor
 * negative or above 3e38 (not a number included) (-7). Nothing is written
 * before the checks pass; the setting holds until the next Init.
 * Decisions: during a far-end pause the tail's peak falls to the far end's
 * own noise, and near-end noise above it was flagged as double talk; the
 * hangover then carried the flag into the far end's next talk spurt and
 * held adaptation off at its onset, the canceller's first chance to
 * converge. A far end below the floor leaves nothing to adapt on (the
 * canceller freezes on far-end silence anyway), so flagging it serves no
 * purpose. zepsc ec --fdaf sets 100 (a peak of -50 dBov in 16-bit units):
 * 20 dB ERLE on the ITU-T G.168 Annex D models D2 and D8 0.3 s earlier.
 */
ZEPSAPI ZepStatus zepsDoubleTalkSetFloor_EC_32f(Zep32f floor, Zep8u* pState);

/**
 * Size of the non-linear processor's state (fixed).
 * @param pSize receives the size in bytes
 * Checks: pSize null (-8).
 */
ZEPSAPI ZepStatus zepsNLPGetSize_EC_32f(int* pSize);

/**
 * Builds the non-linear processor (background level unknown, noise
 * generator seed 12345).
 * @param pState block of the queried size, any address
 * Checks: pState null (-8).
 */
ZEPSAPI ZepStatus zepsNLPInit_EC_32f(Zep8u* pState);

/**
 * Non-linear processing with comfort noise, one block. suppress 0: the
 * block passes unchanged and updates the background level (minimum
 * tracking of the block mean square: falls at once, rises 0.5 dB a block);
 * suppress 1: the block is replaced by uniform white noise of that mean
 * square (32-bit linear congruential generator, multiplier 1664525,
 * increment 1013904223).
 *
 * @param pSrc     len samples (the canceller's output); pDst may equal pSrc
 * @param pDst     len samples
 * @param len      1 or more
 * @param suppress 0 or 1 (ZEP_EC_FLAG_NLP of the controller)
 * @param pState   NLP state
 * Checks: pointers (-8); len below 1 or suppress outside 0..1 (-5); a state
 * not built by Init (-5); a block whose mean square is above 3e38 (-7).
 */
ZEPSAPI ZepStatus zepsNLP_EC_32f(const Zep32f* pSrc, Zep32f* pDst, int len, int suppress, Zep8u* pState);

/**
 * Size of the 2100 Hz tone detector's state (fixed).
 * @param pSize receives the size in bytes
 * Checks: pSize null (-8).
 */
ZEPSAPI ZepStatus zepsToneDetectGetSize_EC_16s(int* pSize);

/**
 * Builds a 2100 Hz tone detector.
 * @param pState     block of the queried size, any address
 * @param sampleFreq 8000 or 16000
 * @param rule       0: ITU-T G.164 (the tone alone disables, after 250 ms);
 *                   1: ITU-T G.165 (only a tone with a phase reversal,
 *                   after at least 200 ms of tone, disables)
 * Checks: sampleFreq or rule (-5); pState null (-8).
 */
ZEPSAPI ZepStatus zepsToneDetectInit_EC_16s(Zep8u* pState, int sampleFreq, int rule);

/**
 * 2100 Hz answer-tone detection and disabling decision, any block length.
 * The input is cut into 10 ms blocks (21 periods of 2100 Hz). A tone block
 * has at least 70 % of its energy in the 2100 Hz phasor and a tone level of
 * -36 dBm0 or more (0 dBm0 = rms 16138); a run of tone blocks survives up
 * to 2 blocks without tone. A phase reversal is a phase advance between
 * tone blocks that departs from the run's steady advance by more than 90
 * degrees (at most one per 150 ms). Release of the disable: 250 ms in which
 * every block is below -36 dBm0.
 *
 * @param pSrc    len samples
 * @param len     1 or more
 * @param pResult receives ZEP_EC_TONE_* bits after the last complete block
 * @param pState  detector state
 * Checks: pointers (-8); len below 1 (-5); a state not built by Init (-5).
 */
ZEPSAPI ZepStatus zepsToneDetect_EC_16s(const Zep16s* pSrc, int len, Zep32s* pResult, Zep8u* pState);

/**
 * Size of a noise filter's state for numBands sub-bands.
 * @param numBands 1..4097
 * @param pSize    receives 16 + 32 + round16(16 numBands) bytes
 * Checks: numBands (-5); pSize null (-8).
 */
ZEPSAPI ZepStatus zepsNoiseFilterGetSize_NR_32f(int numBands, int* pSize);

/**
 * Builds a noise filter (noise estimates unknown until the first frame).
 * @param pState   block of the queried size, any address
 * @param numBands 1..4097
 * Checks: numBands (-5); pState null (-8).
 */
ZEPSAPI ZepStatus zepsNoiseFilterInit_NR_32f(Zep8u* pState, int numBands);

/**
 * Noise filter, one sub-band frame in place (complex float). Per band,
 * P = |Y|^2; smoothed power S = 0.7 S + 0.3 P; noise N = 2 M with M the
 * minimum of S rising at most 0.015 dB a frame; a posteriori SNR g = P/N;
 * a priori SNR by the decision-directed rule xi = 0.98 G'^2 g' + 0.02
 * max(g - 1, 0) (G', g' of the previous frame); gain G = max(xi/(1+xi),
 * 0.178) (Wiener rule, floor -15 dB). A band whose power is not finite is
 * left as it is.
 *
 * @param pSrcDst the state's numBands values, filtered in place
 * @param pState  noise-filter state (it holds the sub-band count)
 * Checks: pointers (-8); a state not built by Init (-5).
 */
ZEPSAPI ZepStatus zepsNoiseFilter_NR_32fc_I(Zep32fc* pSrcDst, Zep8u* pState);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_EC_H */

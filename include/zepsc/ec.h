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

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_EC_H */

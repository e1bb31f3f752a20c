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

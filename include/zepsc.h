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
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_H */

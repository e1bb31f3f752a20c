/*
 * zepsc/g722.h - G.722, G.722.1 and G.726 stages.
 *
 * Included by zepsc.h; see the notes there on the conventions every export
 * follows. Every export of this family is declared here exactly once, as
 *     ZEPSAPI <return type> <name>(<parameters>);
 */
#ifndef ZEPSC_G722_H
#define ZEPSC_G722_H

#include "zepsc/frame.h"

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_G722_H */

/* SPDX-License-Identifier: BSD-3-Clause */
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

/** @defgroup g722 G.722 sub-band ADPCM
 *  The 64, 56 and 48 kbit/s wide-band coder (ITU-T G.722): transmit and
 *  receive QMF, lower and higher sub-band ADPCM encoders and decoders with
 *  their adaptation, bit-exact with the ITU-T G.191 STL G.722 module and the
 *  G.722 Appendix II test sequences.
 *
 *  Codes: one 8-bit G.722 code word per 16-bit element, IH in bits 6-7 and
 *  IL in bits 0-5 (the low byte of the reference's word format; RFC 3551
 *  carries the same byte). The encoder always produces 64 kbit/s codes; the
 *  56 and 48 kbit/s modes are the decoder's (modes 2 and 3 read only the 5
 *  or 4 high bits of IL for the output, and 6 bits are still passed).
 *
 *  State blocks: 144 bytes for either direction (both bands' predictor and
 *  scale-factor memory and the QMF delay line of that direction), any byte
 *  alignment. The encoder and decoder blocks hold the same layout; a block
 *  is used by one direction only.
 *  @{ */

/** G.722 encoder state block (opaque; 144 bytes). */
typedef struct ZepG722EncodeState ZepG722EncodeState;
/** G.722 decoder state block (opaque; 144 bytes). */
typedef struct ZepG722DecodeState ZepG722DecodeState;

/**
 * Writes the size in bytes of the G.722 encoder state block: 144.
 *
 * @param pSize  receives the size
 * @return zepStsNullPtrErr (-8) if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSBADPCMEncodeStateSize_G722_16s(Zep32s* pSize);

/**
 * Writes the size in bytes of the G.722 decoder state block: 144.
 *
 * @param pSize  receives the size
 * @return zepStsNullPtrErr (-8) if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSBADPCMDecodeStateSize_G722_16s(Zep32s* pSize);

/**
 * Resets a G.722 encoder state block (ITU-T G.722 6.1 reset: DETL = 32,
 * DETH = 8, all other band variables and the transmit QMF delay line zero).
 * The whole block is written; its earlier content does not matter. This is
 * also the reset a reset word of the Appendix II test sequences asks for.
 *
 * @param pState  the caller's block of at least 144 bytes
 * @return zepStsNullPtrErr (-8) if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSBADPCMEncodeInit_G722_16s(ZepG722EncodeState* pState);

/**
 * Resets a G.722 decoder state block (the encoder's reset values, with the
 * receive QMF delay line zero). The whole block is written.
 *
 * @param pState  the caller's block of at least 144 bytes
 * @return zepStsNullPtrErr (-8) if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSBADPCMDecodeInit_G722_16s(ZepG722DecodeState* pState);

/**
 * Encodes len 16 kHz samples into len / 2 G.722 code words (reference
 * g722_encode of the ITU-T G.191 STL): transmit QMF (G.722 3.2), then the
 * lower (LSBCOD) and higher (HSBCOD) sub-band ADPCM encoders, one code word
 * per pair of samples, the first sample of each pair being the earlier one.
 * The state is carried from call to call, so the codes do not depend on how
 * a stream is cut into blocks of even length.
 *
 * @param pSrc    len samples, 16-bit linear PCM (full 16-bit range)
 * @param pDst    len / 2 code words, 0..255
 * @param len     number of input samples: even and at least 2 (the
 *                reference silently drops an odd last sample; here an odd
 *                length is refused so that no sample is lost unnoticed)
 * @param pState  state initialised by zepsSBADPCMEncodeInit_G722_16s
 * @return checks in order: pSrc, pDst, pState null -> zepStsNullPtrErr (-8);
 *         len below 2 or odd -> zepStsSizeErr (-6); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSBADPCMEncode_G722_16s(const Zep16s* pSrc, Zep16s* pDst, Zep32s len,
                                             ZepG722EncodeState* pState);

/**
 * Decodes len G.722 code words into 2 * len 16 kHz samples (reference
 * g722_decode of the ITU-T G.191 STL): lower (LSBDEC, with the mode's
 * inverse quantiser) and higher (HSBDEC) sub-band ADPCM decoders, then the
 * receive QMF (G.722 4.4), whose output saturates to the 16-bit range as in
 * the reference (L_shl and extract_h).
 *
 * @param pSrcCode  len code words; each must lie in 0..255 (IL in bits 0-5,
 *                  IH in bits 6-7); in modes 2 and 3 the low 1 or 2 bits of
 *                  IL do not change the output but do drive the adaptation,
 *                  exactly as in the standard
 * @param pDst      2 * len output samples, 16-bit linear PCM
 * @param mode      1 (64 kbit/s), 2 (56 kbit/s) or 3 (48 kbit/s)
 * @param len       number of code words, at least 1
 * @param pState    state initialised by zepsSBADPCMDecodeInit_G722_16s
 * @return checks in order: pSrcCode, pDst, pState null -> zepStsNullPtrErr
 *         (-8); len below 1 -> zepStsSizeErr (-6); mode not 1, 2 or 3 ->
 *         zepStsRangeErr (-7); a code word outside 0..255 ->
 *         zepStsOutOfRangeErr (-11), with output and state untouched (all
 *         codes are checked before the first is decoded); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSBADPCMDecode_G722_16s(const Zep16s* pSrcCode, Zep16s* pDst, Zep32s mode, Zep32s len,
                                             ZepG722DecodeState* pState);

/**
 * The sub-band ADPCM encoders alone, the QMF bypassed (reference lsbcod and
 * hsbcod, the configuration of the G.722 Appendix II encoder test): len
 * lower and higher sub-band samples into len code words. The transmit QMF
 * delay line in the state is neither read nor written.
 *
 * @param pSrcLow   len lower sub-band samples XL (16-bit; the standard's
 *                  QMF output range is -16384..16383, larger values are
 *                  processed with the reference's saturating arithmetic)
 * @param pSrcHigh  len higher sub-band samples XH
 * @param pDst      len code words, 0..255
 * @param len       number of samples, at least 1
 * @param pState    state initialised by zepsSBADPCMEncodeInit_G722_16s
 * @return checks in order: pSrcLow, pSrcHigh, pDst, pState null ->
 *         zepStsNullPtrErr (-8); len below 1 -> zepStsSizeErr (-6); else
 *         zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSBADPCMEncodeBands_G722_16s(const Zep16s* pSrcLow, const Zep16s* pSrcHigh, Zep16s* pDst,
                                                  Zep32s len, ZepG722EncodeState* pState);

/**
 * The sub-band ADPCM decoders alone, the QMF bypassed (reference lsbdec and
 * hsbdec, the configuration of the G.722 Appendix II decoder test): len
 * code words into len lower sub-band samples RL and len higher sub-band
 * samples RH, each limited to -16384..16383 (LIMIT). The receive QMF delay
 * line in the state is neither read nor written.
 *
 * @param pSrcCode  len code words, each in 0..255
 * @param pDstLow   len lower sub-band output samples
 * @param pDstHigh  len higher sub-band output samples
 * @param mode      1, 2 or 3 (lower sub-band inverse quantiser of 6, 5 or 4 bits)
 * @param len       number of code words, at least 1
 * @param pState    state initialised by zepsSBADPCMDecodeInit_G722_16s
 * @return checks in order: pSrcCode, pDstLow, pDstHigh, pState null ->
 *         zepStsNullPtrErr (-8); len below 1 -> zepStsSizeErr (-6); mode
 *         not 1, 2 or 3 -> zepStsRangeErr (-7); a code word outside 0..255
 *         -> zepStsOutOfRangeErr (-11), nothing written; else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsSBADPCMDecodeBands_G722_16s(const Zep16s* pSrcCode, Zep16s* pDstLow, Zep16s* pDstHigh,
                                                  Zep32s mode, Zep32s len, ZepG722DecodeState* pState);
/** @} */

/** @defgroup g7221 G.722.1 transform coder
 *  The 7 kHz coder at 24 and 32 kbit/s (16 kHz sampling, 320-sample
 *  frames, 14 regions of 20 coefficients) and the 14 kHz coder of its
 *  Annex C at 24, 32 and 48 kbit/s (32 kHz sampling, 640-sample frames, 28
 *  regions), bit-exact with the ITU-T G.722.1 fixed-point reference and its
 *  conformance sequences. A frame is coded in two calls each way:
 *  zepsMLTFwd_G7221_16s then zepsEncode_G7221_16s; zepsDecode_G7221_16s
 *  then zepsMLTInv_G7221_16s.
 *
 *  Frame sizes accepted: bitsPerFrame a multiple of 16 in 320..960 (16 to
 *  48 kbit/s in 800 bit/s steps, as the reference accepts them); numRegions
 *  14 (7 kHz, 320 coefficients) or 28 (Annex C, 640 coefficients).
 *  Bitstream words: bitsPerFrame / 16 16-bit words, the first bit of the
 *  frame in the MSB of word 0 (the reference's packed format).
 *  @{ */

/**
 * Forward modulated lapped transform (reference samples_to_rmlt_coefs):
 * windows the previous frame (pHistory) and the new one (pSrc), scales the
 * windowed block by a power of two that brings its peak near 14000, and
 * takes its DCT-IV. pHistory then holds the new frame.
 *
 * @param pSrc       len new samples (16 kHz for 320, 32 kHz for 640)
 * @param pHistory   len samples of the previous frame (zeros before the
 *                   first frame), replaced by pSrc's
 * @param pDst       len MLT coefficients, scaled by 2^(*pMagShift)
 * @param len        320 or 640
 * @param pMagShift  receives the scaling exponent, -1..9
 * @return checks in order: pSrc, pHistory, pDst, pMagShift null ->
 *         zepStsNullPtrErr (-8); len not 320 or 640 -> zepStsSizeErr (-6);
 *         else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsMLTFwd_G7221_16s(const Zep16s* pSrc, Zep16s* pHistory, Zep16s* pDst, Zep32s len,
                                       Zep32s* pMagShift);

/**
 * Inverse modulated lapped transform (reference rmlt_coefs_to_samples):
 * DCT-IV of the coefficients (with the reference's first-stage dither),
 * the 2^magShift scaling undone, then the windowed overlap-add with the
 * half frame kept in pHistory, which then holds the new half frame. The
 * output is one frame behind the encoder's input. (The reference decoder
 * program clears the two low bits of every output sample for its tests;
 * this routine does not.)
 *
 * @param pSrc      len coefficients
 * @param pHistory  len / 2 values kept from the previous call (zeros at the
 *                  start), updated
 * @param pDst      len output samples
 * @param len       320 or 640
 * @param magShift  the frame's scaling exponent, -1..9
 * @return checks in order: pSrc, pHistory, pDst null -> zepStsNullPtrErr
 *         (-8); len not 320 or 640 -> zepStsSizeErr (-6); magShift outside
 *         -1..9 -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsMLTInv_G7221_16s(const Zep16s* pSrc, Zep16s* pHistory, Zep16s* pDst, Zep32s len,
                                       Zep32s magShift);

/**
 * Codes one frame of MLT coefficients (reference encoder()): region powers
 * and their differential Huffman codes, categorisation, quantisation and
 * Huffman coding of each region, the rate control over the categorisations
 * (4 control bits for 14 regions, 5 for 28) and the packing into
 * bitsPerFrame bits, unused bits set to one.
 *
 * The reference keeps 128 bits per region; a region can need up to 180
 * (never seen on real signals), and those are kept whole here.
 *
 * @param bitsPerFrame  bits per frame, a multiple of 16 in 320..960
 * @param numRegions    14 or 28
 * @param pMltCoefs     320 or 640 coefficients from zepsMLTFwd_G7221_16s
 *                      (not modified)
 * @param magShift      the exponent zepsMLTFwd_G7221_16s returned, -1..9
 * @param pDst          bitsPerFrame / 16 words
 * @return checks in order: pMltCoefs, pDst null -> zepStsNullPtrErr (-8);
 *         bitsPerFrame, then numRegions, then magShift outside their values
 *         -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsEncode_G7221_16s(Zep32s bitsPerFrame, Zep32s numRegions, const Zep16s* pMltCoefs,
                                       Zep32s magShift, Zep16s* pDst);

/** G.722.1 decoder state block (opaque; 1296 bytes, any alignment): the last
 *  good frame's coefficients and exponent for concealment, and the noise
 *  generator. */
typedef struct ZepG7221DecodeState ZepG7221DecodeState;

/**
 * Writes the size in bytes of the G.722.1 decoder state block: 1296.
 *
 * @param pSize  receives the size
 * @return zepStsNullPtrErr (-8) if pSize is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeStateSize_G7221_16s(Zep32s* pSize);

/**
 * Resets a G.722.1 decoder state block (previous coefficients and exponent
 * zero, the four noise generator seeds 1, as the reference decoder starts).
 * The same block serves both frame sizes.
 *
 * @param pState  the caller's block of at least 1296 bytes
 * @return zepStsNullPtrErr (-8) if pState is null, else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeInit_G7221_16s(ZepG7221DecodeState* pState);

/**
 * Decodes one frame into MLT coefficients (reference decoder()): envelope,
 * categorisation, Huffman decoding with noise filling of the regions of
 * categories 5 to 7, then the frame checks. An erased frame, or one the
 * checks find corrupt (unused bits not all ones, bits run out, a power
 * index out of range), is replaced by the previous good frame's
 * coefficients, once; a second bad frame in a row gives silence.
 *
 * Any bit pattern is accepted: bits past the frame read as zero, and power
 * indices are kept inside their tables (both only in frames the checks
 * reject).
 *
 * @param pSrc          bitsPerFrame / 16 words (read even when erased is set)
 * @param bitsPerFrame  a multiple of 16 in 320..960
 * @param pState        state initialised by zepsDecodeInit_G7221_16s
 * @param numRegions    14 or 28
 * @param pDstCoefs     320 or 640 coefficients (those above the coded band zero)
 * @param pMagShift     receives the exponent for zepsMLTInv_G7221_16s, -1..9
 * @param frameErased   1 when the frame was lost (its bits are not read), else 0
 * @return checks in order: pSrc, pState, pDstCoefs, pMagShift null ->
 *         zepStsNullPtrErr (-8); bitsPerFrame, then numRegions, then
 *         frameErased outside their values -> zepStsRangeErr (-7); else
 *         zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecode_G7221_16s(const Zep16s* pSrc, Zep32s bitsPerFrame, ZepG7221DecodeState* pState,
                                       Zep32s numRegions, Zep16s* pDstCoefs, Zep32s* pMagShift, Zep32s frameErased);

/** @name G.722.1 stages
 *  The middle of the coder as separate stages, each after the reference
 *  routine of the same role; zepsEncode_G7221_16s is exactly
 *  zepsRegionPowerQuant_G7221_16s, zepsCategorize_G7221_16s (with
 *  bitsPerFrame - envelope bits - control bits available) and
 *  zepsVectorQuantMLT_G7221_16s. The decoder stages read the frame in
 *  order: zepsDecodeEnvelope_G7221_16s, zepsDecodeCategories_G7221_16s,
 *  zepsDecodeVectorQuantMLT_G7221_16s; zepsDecode_G7221_16s runs them and
 *  adds the frame checks and the concealment.
 *
 *  Power indices are the reference's absolute_region_power_index (steps of
 *  3.01 dB; -15..24 as coded, the first region -6..24), categories 0..7
 *  (7: no bits, noise), category balances the region order in which the
 *  categorisation control moves categories (15 entries for 14 regions, 31
 *  for 28). The number of control possibilities (16 or 32) and control
 *  bits (4 or 5) follow from numRegions, so they are not arguments.
 *  The bit reader of the reference (Bit_Obj) is the frame (pSrc,
 *  bitsPerFrame) and the count of bits not yet read, *pBitsLeft
 *  (the reference's number_of_bits_left; below zero once a corrupt frame
 *  ran out of bits; bits past the frame read as zero).
 *  @{ */

/**
 * Region powers and their coding (reference compute_region_powers): the
 * power index of each region of 20 coefficients, corrected for magShift
 * and limited to the coded range, then coded differentially: region 0 in 5
 * bits, each further region's difference (limited to -12..11) by its
 * Huffman code.
 *
 * @param pMltCoefs          numRegions * 20 coefficients from zepsMLTFwd_G7221_16s
 * @param magShift           the exponent zepsMLTFwd_G7221_16s returned, -1..9
 * @param pDrpNumBits        numRegions code lengths (5, then 1..16)
 * @param pDrpCodeBits       numRegions codes, right-justified (bit patterns)
 * @param pRegionPowerIndex  numRegions power indices
 * @param numRegions         14 or 28
 * @param pEnvelopeBits      receives the sum of the code lengths
 * @return checks in order: pMltCoefs, pDrpNumBits, pDrpCodeBits,
 *         pRegionPowerIndex, pEnvelopeBits null -> zepStsNullPtrErr (-8);
 *         magShift outside -1..9, then numRegions not 14 or 28 ->
 *         zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsRegionPowerQuant_G7221_16s(const Zep16s* pMltCoefs, Zep32s magShift, Zep16s* pDrpNumBits,
                                                 Zep16s* pDrpCodeBits, Zep16s* pRegionPowerIndex, Zep32s numRegions,
                                                 Zep32s* pEnvelopeBits);

/**
 * Categorisation (reference categorize with comp_powercat_and_catbalance):
 * the offset whose expected bit count fits the bits available, each
 * region's category at the control's middle, and the balance order in
 * which the rate control lowers or raises categories. Above the frame
 * length (320 or 640) only 5/8 of the extra bits count, as in the
 * reference. Any power index values are accepted.
 *
 * @param availableBits      bits for the coefficients: bits per frame minus
 *                           the envelope bits and the control bits
 *                           (-32768..32767)
 * @param numRegions         14 or 28
 * @param pRegionPowerIndex  numRegions power indices
 * @param pPowerCategories   numRegions categories, 0..7
 * @param pCategoryBalances  15 or 31 region numbers
 * @return checks in order: pRegionPowerIndex, pPowerCategories,
 *         pCategoryBalances null -> zepStsNullPtrErr (-8); availableBits
 *         outside -32768..32767, then numRegions not 14 or 28 ->
 *         zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsCategorize_G7221_16s(Zep32s availableBits, Zep32s numRegions, const Zep16s* pRegionPowerIndex,
                                           Zep16s* pPowerCategories, Zep16s* pCategoryBalances);

/**
 * Vector quantisation and Huffman coding of the coefficients with the rate
 * control, and the frame's bit packing (reference encoder() from the
 * magShift correction of the power indices on: adjust_abs_region_power_index,
 * vector_quantize_mlts, bits_to_words). The regions are coded at the
 * control's middle, then the control moves along the balance order until
 * the bits fit; the frame is the envelope codes, the control, the regions'
 * bits in order, cut at bitsPerFrame, unused bits set to one.
 *
 * Decisions: the bits available follow from bitsPerFrame and
 * pDrpNumBits (bitsPerFrame - their sum - the control bits), so they are
 * not an argument; only the low pDrpNumBits[r] bits of each code are sent.
 * Categories raised past 7 by inconsistent balances code no bits.
 *
 * @param bitsPerFrame            a multiple of 16 in 320..960
 * @param numRegions              14 or 28
 * @param pMltCoefs               numRegions * 20 coefficients (not modified)
 * @param magShift                their exponent, -1..9
 * @param pRegionPowerIndex       numRegions power indices of
 *                                zepsRegionPowerQuant_G7221_16s, -15..24
 * @param pPowerCategories        numRegions categories of
 *                                zepsCategorize_G7221_16s, 0..7; receives the
 *                                categories of the chosen control
 * @param pCategoryBalances       15 or 31 region numbers, 0..numRegions-1
 * @param pDrpNumBits             numRegions envelope code lengths, 0..16
 * @param pDrpCodeBits            numRegions envelope codes
 * @param pCategorizationControl  receives the control value sent, 0..15 or 0..31
 * @param pDst                    bitsPerFrame / 16 words, the first bit in
 *                                the MSB of word 0
 * @return checks in order: pMltCoefs, pRegionPowerIndex, pPowerCategories,
 *         pCategoryBalances, pDrpNumBits, pDrpCodeBits,
 *         pCategorizationControl, pDst null -> zepStsNullPtrErr (-8);
 *         bitsPerFrame, then numRegions, then magShift outside their values
 *         -> zepStsRangeErr (-7); a power index, category, balance or code
 *         length outside its range -> zepStsOutOfRangeErr (-11); else
 *         zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsVectorQuantMLT_G7221_16s(Zep32s bitsPerFrame, Zep32s numRegions, const Zep16s* pMltCoefs,
                                               Zep32s magShift, const Zep16s* pRegionPowerIndex,
                                               Zep16s* pPowerCategories, const Zep16s* pCategoryBalances,
                                               const Zep16s* pDrpNumBits, const Zep16s* pDrpCodeBits,
                                               Zep32s* pCategorizationControl, Zep16s* pDst);

/**
 * Envelope decoding (reference decode_envelope): reads the power indices
 * from the start of the frame (5 bits, then each region's difference code),
 * chooses the exponent magShift that keeps the reconstruction in range and
 * gives each region's standard deviation at that exponent.
 *
 * Any bit pattern is accepted (power indices outside their table select
 * its nearest entry; only corrupt frames have them).
 *
 * @param pSrc               bitsPerFrame / 16 words
 * @param bitsPerFrame       a multiple of 16 in 320..960
 * @param pBitsLeft          receives bitsPerFrame minus the bits read
 * @param numRegions         14 or 28
 * @param pStdDev            numRegions standard deviations
 * @param pRegionPowerIndex  numRegions power indices
 * @param pMagShift          receives the exponent for zepsMLTInv_G7221_16s, -1..9
 * @return checks in order: pSrc, pBitsLeft, pStdDev, pRegionPowerIndex,
 *         pMagShift null -> zepStsNullPtrErr (-8); bitsPerFrame, then
 *         numRegions outside their values -> zepStsRangeErr (-7); else
 *         zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeEnvelope_G7221_16s(const Zep16s* pSrc, Zep32s bitsPerFrame, Zep32s* pBitsLeft,
                                               Zep32s numRegions, Zep16s* pStdDev, Zep16s* pRegionPowerIndex,
                                               Zep32s* pMagShift);

/**
 * Rate control decoding (the categorisation step of reference decoder():
 * the control bits, categorize on the bits left, rate_adjust_categories):
 * reads the categorisation control after the envelope, repeats the
 * encoder's categorisation and raises the categories of the first
 * control regions of the balance order.
 *
 * @param pSrc                    bitsPerFrame / 16 words
 * @param bitsPerFrame            a multiple of 16 in 320..960
 * @param pBitsLeft               bits not yet read (as
 *                                zepsDecodeEnvelope_G7221_16s left it),
 *                                -1024..bitsPerFrame; updated
 * @param numRegions              14 or 28
 * @param pRegionPowerIndex       numRegions decoded power indices (any values)
 * @param pPowerCategories        numRegions categories
 * @param pCategorizationControl  receives the control value read
 * @return checks in order: pSrc, pBitsLeft, pRegionPowerIndex,
 *         pPowerCategories, pCategorizationControl null -> zepStsNullPtrErr
 *         (-8); bitsPerFrame, then *pBitsLeft, then numRegions outside their
 *         values -> zepStsRangeErr (-7); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeCategories_G7221_16s(const Zep16s* pSrc, Zep32s bitsPerFrame, Zep32s* pBitsLeft,
                                                 Zep32s numRegions, const Zep16s* pRegionPowerIndex,
                                                 Zep16s* pPowerCategories, Zep32s* pCategorizationControl);

/**
 * Coefficient decoding with noise filling (reference
 * decode_vector_quantized_mlt_indices): each region of a category below 7
 * decodes its vectors' Huffman codes and sign bits into centroids times the
 * region's standard deviation; regions of categories 5 and 6 fill their
 * zero coefficients, and regions of category 7 all of theirs, with +-noise
 * from the decoder's generator. When the bits run out, that region and the
 * rest become category 7 (pPowerCategories is updated) and *pBitsLeft ends
 * one below its count, as in the reference.
 *
 * The generator is the one in the decoder state block (its four seeds; the
 * rest of the block is neither read nor written).
 *
 * @param pSrc              bitsPerFrame / 16 words
 * @param bitsPerFrame      a multiple of 16 in 320..960
 * @param pBitsLeft         bits not yet read, -1024..bitsPerFrame; updated
 * @param pState            state initialised by zepsDecodeInit_G7221_16s
 * @param numRegions        14 or 28
 * @param pStdDev           numRegions standard deviations
 * @param pPowerCategories  numRegions categories, 0..7; updated
 * @param pDstCoefs         320 or 640 coefficients (those above the coded
 *                          band zero)
 * @return checks in order: pSrc, pBitsLeft, pState, pStdDev,
 *         pPowerCategories, pDstCoefs null -> zepStsNullPtrErr (-8);
 *         bitsPerFrame, then *pBitsLeft, then numRegions outside their
 *         values -> zepStsRangeErr (-7); a category outside 0..7 ->
 *         zepStsOutOfRangeErr (-11); else zepStsNoErr.
 */
ZEPSAPI ZepStatus zepsDecodeVectorQuantMLT_G7221_16s(const Zep16s* pSrc, Zep32s bitsPerFrame, Zep32s* pBitsLeft,
                                                     ZepG7221DecodeState* pState, Zep32s numRegions,
                                                     const Zep16s* pStdDev, Zep16s* pPowerCategories,
                                                     Zep16s* pDstCoefs);
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZEPSC_G722_H */

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

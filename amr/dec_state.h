/* SPDX-License-Identifier: BSD-3-Clause */
// The GSM-AMR decoder's memory between frames (3GPP TS 26.073 sp_dec.h,
// dec_amr.h and the state structs of the routines they call), kept as plain
// 16/32-bit fields so that a caller's buffer holds it as is and a byte copy
// of a state is a valid state.
#pragma once

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline constexpr int kM = 10;           ///< LP order
inline constexpr int kMp1 = 11;         ///< M + 1
inline constexpr int kLFrame = 160;     ///< L_FRAME
inline constexpr int kLSubfr = 40;      ///< L_SUBFR
inline constexpr int kPitMin = 20;      ///< PIT_MIN
inline constexpr int kPitMinMR122 = 18; ///< PIT_MIN_MR122
inline constexpr int kPitMax = 143;     ///< PIT_MAX
inline constexpr int kLInterpol = 11;   ///< L_INTERPOL (10 + 1)
inline constexpr int kExcHist = kPitMax + kLInterpol;  ///< old_exc history before the subframe
inline constexpr Word16 kSharpMax = 13017;  ///< SHARPMAX, 0.8 in Q14
inline constexpr Word16 kSharpMin = 0;      ///< SHARPMIN

/// Internal mode numbers of the reference (enum Mode) and its frame types.
enum Mode : Word16 { MR475 = 0, MR515, MR59, MR67, MR74, MR795, MR102, MR122, MRDTX };
enum RxType : Word16 {
    RX_SPEECH_GOOD = 0, RX_SPEECH_DEGRADED, RX_ONSET, RX_SPEECH_BAD,
    RX_SID_FIRST, RX_SID_UPDATE, RX_SID_BAD, RX_NO_DATA
};
enum DtxState : Word16 { SPEECH = 0, DTX, DTX_MUTE };

/// D_plsfState
struct LsfState {
    Word16 past_r_q[kM];    ///< past quantised LSF residual
    Word16 past_lsf_q[kM];  ///< past quantised LSFs
};
/// gc_predState
struct GainPredState {
    Word16 past_qua_en[4];        ///< 20 log10 of past quantised gain errors, Q10
    Word16 past_qua_en_MR122[4];  ///< log2 of the same, Q10
};
/// ec_gain_pitchState
struct EcGainPitchState {
    Word16 pbuf[5];
    Word16 past_gain_pit;
    Word16 prev_gp;
};
/// ec_gain_codeState
struct EcGainCodeState {
    Word16 gbuf[5];
    Word16 past_gain_code;
    Word16 prev_gc;
};
/// Cb_gain_averageState
struct CbGainAverageState {
    Word16 cbGainHistory[7];
    Word16 hangVar;
    Word16 hangCount;
};
/// Bgn_scdState
struct BgnScdState {
    Word16 frameEnergyHist[60];
    Word16 bgHangover;
};
/// ph_dispState
struct PhDispState {
    Word16 gainMem[5];
    Word16 prevState;
    Word16 prevCbGain;
    Word16 lockFull;
    Word16 onset;
};
/// dtx_decState
struct DtxDecState {
    Word32 L_pn_seed_rx;
    Word16 since_last_sid;
    Word16 true_sid_period_inv;
    Word16 log_en;
    Word16 old_log_en;
    Word16 lsp[kM];
    Word16 lsp_old[kM];
    Word16 lsf_hist[80];
    Word16 lsf_hist_ptr;
    Word16 lsf_hist_mean[80];
    Word16 log_pg_mean;
    Word16 log_en_hist[8];
    Word16 log_en_hist_ptr;
    Word16 log_en_adjust;
    Word16 dtxHangoverCount;
    Word16 decAnaElapsedCount;
    Word16 sid_frame;
    Word16 valid_data;
    Word16 dtxHangoverAdded;
    Word16 dtxGlobalState;
    Word16 data_updated;
};
/// Post_FilterState with its preemphasis and agc states
struct PostFilterState {
    Word16 mem_syn_pst[kM];
    Word16 res2[kLSubfr];
    Word16 synth_buf[kM + kLFrame];
    Word16 past_gain;  ///< agc
    Word16 mem_pre;    ///< preemphasis
};
/// Post_ProcessState
struct PostProcessState {
    Word16 y2_hi, y2_lo, y1_hi, y1_lo, x0, x1;
};
}  // namespace amr_dec
ZEPS_END_VARIANT

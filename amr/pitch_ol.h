/* SPDX-License-Identifier: BSD-3-Clause */
// Internal interface of the GSM-AMR open-loop pitch search (3GPP TS 26.073
// pre_big.c, ol_ltp.c, pitch_ol.c, p_ol_wgh.c, with the VAD hooks of vad1.c
// and the correlation sums of vad2.c).
#pragma once

#include "common/basic_op.h"
#include "zepsc.h"

ZEPS_BEGIN_VARIANT
namespace amr {

constexpr int kPitMax = 143;  // PIT_MAX
constexpr int kFrameLen = 160;
constexpr int kOrder = 10;

/// The VAD side of one open-loop search: none (dtx off), option 1 (tone and
/// pitch registers, best high-pass correlation) or option 2 (correlation sums).
struct OlVad {
    enum Kind { kNone, kVad1, kVad2 } kind = kNone;
    Word16 tone = 0;          // vadState1 tone
    Word16 pitch = 0;         // vadState1 pitch
    Word16 oldlag_count = 0;  // vadState1 oldlag_count
    Word16 oldlag = 0;        // vadState1 oldlag
    Word16 best_corr_hp = 0;  // vadState1 best_corr_hp, Q15
    Word32 L_Rmax = 0;        // vadState2 L_Rmax
    Word32 L_R0 = 0;          // vadState2 L_R0
};

/// Memory of the weighted search Pitch_ol_wgh (pitchOLWghtState).
struct OlWght {
    Word16 old_T0_med;
    Word16 ada_w;
    Word16 wght_flg;
};

/// Caller memories of one frame's search.
struct OlFrame {
    const Word16* lpc;     // 4 x 11 A(z), Q12
    const Word16* speech;  // speech[-10..159]
    Zep16s* mem_w;         // 10
    Zep16s* wsp_hist;      // 143
    Zep16s* old_lags;      // 5
    Zep16s* ol_gain_flg;   // 2
    Zep16s* wsp_out;       // 160
    Zep16s* lags_out;      // 2
};

/// Open-loop lag of signal[0..L_frame-1] (history signal[-143..-1]) with
/// lags pit_min..143 (Pitch_ol); idx 1 marks the frame's last search.
Word16 pitch_ol(OlVad& vad, Zep32s rate, const Word16* signal, int pit_min, int L_frame, int idx);

/// The lag-weighted search of 10.2 kbit/s (Pitch_ol_wgh), updating the lag
/// history and the gain flag of half idx.
Word16 pitch_ol_wgh(OlWght& st, OlVad& vad, const Word16* signal, int pit_min, int L_frame, Zep16s* old_lags,
                    Zep16s* ol_gain_flg, int idx);

/// True for the rate codes the open-loop searches accept.
bool ol_rate_supported(Zep32s rate);

/// Weighted speech, open-loop lags and VAD side effects of one frame
/// (pre_big twice, ol_ltp once or twice, vad_pitch_detection for option 1).
void open_loop_frame(const OlFrame& f, OlWght& wght, OlVad& vad, Zep32s rate);

}  // namespace amr
ZEPS_END_VARIANT

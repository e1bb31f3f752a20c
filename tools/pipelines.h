/* SPDX-License-Identifier: BSD-3-Clause */
// Processing chains of the command-line tool, built from the library's public
// stages in each standard's order. Shared by the subcommands and the demo.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "zepsc.h"

namespace zepsc_cli {

/// Result of the G.729 front end for one 10 ms frame.
struct LpFrame {
    std::array<Zep16s, 2> index{};  ///< packed LSP indices: (mode << 7 | L1), (L2 << 5 | L3)
    std::array<Zep16s, 10> qlsp{};  ///< quantised LSPs, Q15
    Zep16s lag = 0;                 ///< open-loop pitch lag, samples
};

/// G.729 front end: pre-processing high-pass, windowed autocorrelation, lag
/// window, Levinson-Durbin, LP to LSP, LSP quantiser, open-loop pitch. The
/// tool forms the weighted speech for the pitch search itself, through
/// A(z)/A(z/0.75) in floating point; everything else is the library's.
class G729FrontEnd {
public:
    G729FrontEnd();
    /// Processes the next 80 samples (16-bit PCM as it stands).
    LpFrame process(const Zep16s* frame);
    int failures() const { return failures_; }

private:
    std::vector<Zep8u> hp_state_;
    std::array<Zep16s, 240> window_{};     // last 240 pre-processed samples
    std::array<Zep16s, 10> lsp_old_{};
    std::array<Zep16s, 40> freq_prev_{};
    std::array<Zep16s, 11> a_{};
    std::array<Zep16s, 143 + 80> wsp_{};   // weighted speech: history then frame
    std::array<double, 10> res_mem_{}, wsp_mem_{};
    int failures_ = 0;
};

/// AMR transmitted frame types (3GPP TS 26.093).
enum class FrameType { Speech, SidFirst, SidUpdate, NoData };
const char* frame_type_name(FrameType t);

/// One 20 ms frame of the GSM-AMR VAD and DTX chain.
struct VadFrame {
    int vad = 0;
    FrameType type = FrameType::Speech;
};

/// GSM-AMR voice activity detection (option 1 or 2) with the DTX handler:
/// pre-processing high-pass, LP analysis (the G.729 stages stand in for the
/// AMR ones), the open-loop pitch search that feeds the detector its pitch,
/// tone and correlation registers (option 1) or its LTP flag (option 2), the
/// detector, then the DTX handler.
class AmrVad {
public:
    AmrVad(int option, Zep32s rate);
    /// Processes the next 160 samples (16-bit PCM as it stands).
    VadFrame process(const Zep16s* frame);
    int failures() const { return failures_; }

private:
    int option_;
    Zep32s rate_;
    std::vector<Zep8u> hp_state_;
    std::array<Zep16s, 240 + 80> hist_{};  // pre-processed speech, newest last
    ZepVAD1State_GSMAMR vad1_{};
    ZepVAD2State_GSMAMR vad2_{};
    std::array<Zep16s, 10> wgt_mem_{};
    std::array<Zep16s, 143> wsp_hist_{};
    std::array<Zep16s, 5> old_lags_{};
    std::array<Zep16s, 2> gain_flags_{};
    std::array<Zep16s, 8> regs_{};
    Zep32s ltp_flag_ = 0;
    Zep16s hangover_ = 7, elapsed_ = 32767;
    // SID scheduling of the encoder interface (sid_sync): first SID after
    // speech, then an update every 8th DTX frame.
    int sid_update_counter_ = 8;
    FrameType prev_type_ = FrameType::Speech;
    int failures_ = 0;
};

/// G.726 encode then decode (linear) of 16-bit PCM at one rate code; returns
/// the decoded 16-bit PCM (the 14-bit output shifted left by 2).
std::vector<Zep16s> g726_round_trip(const std::vector<Zep16s>& pcm, Zep32s rate, std::vector<Zep8u>* codes = nullptr);

/// Sub-band analysis then synthesis with a built-in configuration ('A' or
/// 'B') in 16-bit or float precision.
struct SubbandResult {
    std::vector<Zep16s> out;
    int delay = 0;
    double gain = 0, snr_db = 0;
};
SubbandResult subband_round_trip(const std::vector<Zep16s>& pcm, char config, bool fixed_point);

/// Delay (0..max_delay) of y against x by normalised correlation, the
/// least-squares gain, and the SNR of x against gain * y, both skipping the
/// first `skip` samples.
void measure_delay_snr(const std::vector<Zep16s>& x, const std::vector<Zep16s>& y, int max_delay, int skip,
                       int& delay, double& gain, double& snr_db);

}  // namespace zepsc_cli

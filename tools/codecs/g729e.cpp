// SPDX-License-Identifier: BSD-3-Clause
// The G.729 Annex E codec of the zepsc tool (11.8 kbit/s with the 8 kbit/s
// frames of the main body in between), assembled from the public exports
// alone: the Annex E reference decoder and encoder, stage by stage, in
// their order. The encoder codes every frame at 11.8 kbit/s, at 8, or at
// the rate of each frame from a rate file.
//
// Bitstream: the ITU-T serial format (SYNC 0x6B21, a size word of 118 or
// 80, then one 16-bit word a bit, 0x0081 = 1, 0x007F = 0). An 11.8 kbit/s
// frame starts with the LPC mode bit (0 forward, 1 backward) and its repeat.
// A frame is erased when one of its bit words but the last two is 0x0000,
// or, at 11.8 kbit/s, when the mode bit and its repeat differ (E.4.4, as the
// reference decoder detects it).
#include "tools/codecs/g729_annex_e.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "zepsc.h"

namespace zepsc_cli::g729e {
namespace {

constexpr int kFrame = 80;
constexpr int kSubfr = 40;
constexpr int kOrder = 10;             // M
constexpr int kOrderBwd = 30;          // M_BWD
constexpr int kPitMax = 143;
constexpr int kExcHistory = kPitMax + 11;
constexpr int kMemSynBwd = kOrderBwd + 35;          // MEM_SYN_BWD
constexpr int kAnaBwd = kFrame + kMemSynBwd;        // L_ANA_BWD
constexpr int kBitsLow = 80;
constexpr int kBitsHigh = 118;
constexpr Zep16s kSharpMin = 3277;
constexpr Zep16s kSharpMax = 13017;
constexpr std::uint16_t kSync = 0x6B21;
constexpr std::uint16_t kBit1 = 0x0081;
constexpr Zep16s kGammaBwd = 32113;        // GAMMA_BWD, 0.98
constexpr Zep16s kGamma1Pst = 22938;       // GAMMA1_PST(_E)
constexpr Zep16s kGamma2Pst = 18022;       // GAMMA2_PST
constexpr Zep16s kGamma2PstE = 21300;      // GAMMA2_PST_E
constexpr Zep16s kGammaHarm = 16384;       // GAMMA_HARM
constexpr Zep16s kGammaHarmE = 8192;       // GAMMA_HARM_E
constexpr Zep16s kCIntReset = 4506;        // filter interpolation factor reset, Q12

constexpr Zep16s kFreqPrevReset[kOrder] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
constexpr Zep16s kLspReset[kOrder] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
constexpr Zep16s kHighPass100[6] = {7699, -15398, 7699, 8192, 15836, -7667};

/// Bits of each parameter, in stream order (after the mode bits at 11.8 kbit/s).
constexpr std::array<int, 11> kBits8k = {8, 10, 8, 1, 13, 4, 7, 5, 13, 4, 7};
constexpr std::array<int, 17> kBitsFwd = {8, 10, 8, 1, 7, 7, 7, 7, 7, 7, 5, 7, 7, 7, 7, 7, 7};
constexpr std::array<int, 15> kBitsBwd = {8, 1, 13, 10, 7, 7, 7, 7, 5, 13, 10, 7, 7, 7, 7};

void check(ZepStatus s, const char* what) {
    if (s < 0) throw CodecError(std::string("G.729 Annex E: ") + what + " failed with status " + std::to_string(s));
}

std::vector<std::uint8_t> state_block(ZepStatus (*size)(Zep32s*)) {
    Zep32s n = 0;
    check(size(&n), "state size query");
    return std::vector<std::uint8_t>(static_cast<std::size_t>(n));
}

template <std::size_t N>
void read_params(const std::uint8_t* bits, const std::array<int, N>& widths, Zep16s* prm) {
    int k = 0;
    for (std::size_t p = 0; p < N; ++p) {
        int v = 0;
        for (int b = 0; b < widths[p]; ++b) v = (v << 1) | bits[k++];
        prm[p] = static_cast<Zep16s>(v);
    }
}

/// Parity check of the first subframe's pitch code: true when wrong. At
/// 11.8 kbit/s the parity bit also covers bit 1 of the code.
bool parity_error(Zep16s index, Zep16s parity, bool high_rate) {
    Zep16s p = 0;
    check(zepsParityPitch_G729_16s(index, &p), "pitch parity");
    if (high_rate) p = static_cast<Zep16s>(p ^ ((index >> 1) & 1));
    return ((p ^ parity) & 1) != 0;
}

// ---- decoder ---------------------------------------------------------------

class Decoder final : public FrameDecoder {
public:
    Decoder() {
        post_ = state_block(zepsPostFilterGetStateSize_G729E_16s);
        check(zepsPostFilterInit_G729E_16s(post_.data()), "post-filter initialisation");
        hp_ = state_block(zepsHighPassFilterSize_G729);
        check(zepsHighPassFilterInit_G729(kHighPass100, hp_.data()), "post-processing initialisation");
        hyb_ = state_block(zepsWinHybridGetStateSize_G729E_16s);
        check(zepsWinHybridInit_G729E_16s(hyb_.data()), "hybrid-window initialisation");
        for (auto& row : freq_prev_) std::memcpy(row, kFreqPrevReset, sizeof row);
        std::memcpy(prev_lsf_, kFreqPrevReset, sizeof prev_lsf_);
        std::memcpy(lsp_old_, kLspReset, sizeof lsp_old_);
        a_bwd_mem_[0] = a_t_bwd_mem_[0] = prev_filter_[0] = old_a_bwd_[0] = 4096;
    }
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }

    std::size_t decode(ByteSource& in, std::int16_t* pcm) override {
        std::uint8_t head[4];
        if (!in.read_exact(head, 4, "frame header")) return 0;
        const unsigned sync = head[0] | (head[1] << 8);
        const unsigned size = head[2] | (head[3] << 8);
        const std::uint64_t at = in.position() - 4;
        if (sync != kSync) throw CodecError("bad SYNC word at byte " + std::to_string(at));
        if (size != kBitsLow && size != kBitsHigh)
            throw CodecError("frame of " + std::to_string(size) + " bits at byte " + std::to_string(at) +
                             ": G.729 Annex E frames have 118 or 80");
        std::uint8_t words[2 * kBitsHigh];
        if (!in.read_exact(words, 2 * size, "frame"))
            throw CodecError("truncated frame at byte " + std::to_string(in.position()) + ": header without bits");
        std::uint8_t bits[kBitsHigh] = {};
        bool erased = false;
        for (unsigned i = 0; i < size; ++i) {
            const unsigned w = words[2 * i] | (words[2 * i + 1] << 8);
            bits[i] = w == kBit1 ? 1 : 0;
            if (w == 0 && i + 2 < size) erased = true;  // the last two words are not checked
        }
        const bool high = size == kBitsHigh;
        // The mode bit: a word other than 0x007F reads as 1.
        const auto word_at = [&](int i) { return static_cast<unsigned>(words[2 * i] | (words[2 * i + 1] << 8)); };
        Zep16s mode_bit = 0;
        if (high) {
            mode_bit = word_at(0) == 0x007F ? 0 : 1;
            const Zep16s repeat = word_at(1) == 0x007F ? 0 : 1;
            if (mode_bit != repeat) {
                erased = true;
                std::memset(bits, 0, sizeof bits);
            }
        }
        decode_frame(high, mode_bit, bits, erased, pcm);
        return kFrame;
    }

private:
    /// Decod_ld8e and the post-filtering of the reference decoder's main loop.
    void decode_frame(bool high, Zep16s mode_bit, const std::uint8_t* bits, bool bfi, Zep16s* out) {
        // Parameters: the LSP codes (2, not in backward mode), then per
        // subframe the pitch code (and parity in subframe 1), the codebook
        // codes and the gain code. An erased frame's codes are not used.
        Zep16s prm[17] = {};
        if (!high)
            read_params(bits, kBits8k, prm);
        else if (mode_bit == 0)
            read_params(bits + 2, kBitsFwd, prm);
        else
            read_params(bits + 2, kBitsBwd, prm);

        Zep16s mode = 0;
        if (high) {
            mode = bfi ? prev_mode_ : mode_bit;
            if (prev_bfi_) voicing_ = prev_voicing_;
        }
        if (!bfi) {
            c_muting_ = 32767;
            count_bfi_ = 0;
        }
        if (high) backward_analysis();
        std::memmove(synth_buf_, synth_buf_ + kFrame, kMemSynBwd * sizeof(Zep16s));

        Zep16s* a_t_bwd_new = a_t_bwd_ + kOrderBwd + 1;
        if (mode == 1 && c_fe_fix_ != 0) {
            // Back from an erasure: mix in the last good backward filter.
            check(zepsInterpolateC_NR_G729_16s_Sfs(a_t_bwd_new, static_cast<Zep16s>(4096 - c_fe_fix_), a_bwd_mem_,
                                                   c_fe_fix_, a_t_bwd_new, kOrderBwd + 1, 12),
                  "filter interpolation");
        }
        if (bfi && !prev_bfi_) std::memcpy(a_bwd_mem_, a_t_bwd_new, sizeof a_bwd_mem_);

        // The subframes' filters.
        const Zep16s* p_lsp = prm;                 // forward 11.8 and 8 kbit/s: lsp codes first
        const Zep16s* p_sub = high && mode_bit == 1 ? prm : prm + 2;
        Zep16s a_t_fwd[2 * (kOrder + 1)];
        const Zep16s* a_sub;
        int m_aq;
        if (mode == 0) {
            decode_lsp(p_lsp, bfi, a_t_fwd);
            c_int_ = kCIntReset;
            a_sub = a_t_fwd;
            m_aq = kOrder;
            std::memset(prev_filter_, 0, sizeof prev_filter_);
            std::memcpy(prev_filter_, a_t_fwd + kOrder + 1, (kOrder + 1) * sizeof(Zep16s));
        } else {
            interpolate_backward();
            a_sub = a_t_bwd_;
            m_aq = kOrderBwd;
            std::memcpy(prev_filter_, a_t_bwd_new, sizeof prev_filter_);
        }

        Zep16s* synth = synth_buf_ + kMemSynBwd;
        Zep16s t0_first = 0;
        const bool bad_parity = !bfi && parity_error(p_sub[0], p_sub[1], high);
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            const Zep16s* q = sf == 0 ? p_sub + 2 : p_sub + (high ? 9 : 6);
            const Zep16s pitch_code = sf == 0 ? p_sub[0] : q[-1];
            Zep16s delay[2] = {t0_, 0};
            if (!(sf == 0 ? (bfi || bad_parity) : bfi)) {
                check(zepsDecodeLag_G729_16s(pitch_code, static_cast<Zep16s>(sf), delay), "pitch delay decoding");
                prev_t0_ = delay[0];
                prev_t0_frac_ = delay[1];
            } else {
                delay[0] = prev_t0_;
                if (high) {
                    delay[1] = prev_t0_frac_;
                } else {
                    delay[1] = 0;
                    if (prev_t0_ < kPitMax) ++prev_t0_;
                }
            }
            t0_ = delay[0];
            if (sf == 0) t0_first = delay[0];
            check(zepsDecodeAdaptiveVector_G729_16s_I(delay, old_exc_ + o), "adaptive vector");

            // Pitch tracking for the concealment.
            Zep16s tracked[2] = {prev_t0_, prev_t0_frac_};
            check(zepsPitchTrack_G729E_16s(tracked, track_), "pitch tracking");
            if (high) {
                prev_t0_ = tracked[0];
                prev_t0_frac_ = tracked[1];
            }

            // Fixed-codebook vector, random codes on an erased frame.
            Zep16s code[kSubfr];
            Zep16s stationary = 0;
            if (!high) {
                Zep16s index = q[0], sign = q[1];
                if (bfi) {
                    index = random();
                    sign = random();
                }
                check(zepsDecodeFixedCodebook_G729_16s(static_cast<Zep16s>(sign & 15),
                                                       static_cast<Zep16s>(index & 0x1fff), code),
                      "fixed-codebook decoding");
                stat_bwd_ = 0;
            } else {
                Zep16s idx[5];
                for (int k = 0; k < 5; ++k) idx[k] = bfi ? random() : q[k];
                check(zepsDecodeFixedCodebook_G729E_16s(idx, mode, code), "fixed-codebook decoding");
                if (mode == 0) {
                    stat_bwd_ = 0;
                } else if (++stat_bwd_ >= 30) {
                    stationary = 1;
                    stat_bwd_ = 30;
                }
            }
            check(zepsPitchSharpening_G729_16s_I(delay[0], sharp_, code), "pitch sharpening");

            // Gains.
            const Zep16s gain_code = q[high ? 5 : 2];
            if (!bfi)
                check(zepsDecodeGain_G729_16s(gain_code, code, past_qua_en_, gains_), "gain decoding");
            else if (high)
                check(zepsDecodeGainErased_G729E_16s(past_qua_en_, gains_, &c_muting_, count_bfi_, stationary),
                      "erased-frame gains");
            else
                check(zepsDecodeGainErased_G729_16s(past_qua_en_, gains_), "erased-frame gains");
            sharp_ = gains_[0] > kSharpMax ? kSharpMax : gains_[0] < kSharpMin ? kSharpMin : gains_[0];

            Zep16s gp = gains_[0], gc = gains_[1];
            if (bfi) {
                ++count_bfi_;
                if (voicing_ == 0)
                    gp = 0;
                else
                    gc = 0;
            }
            check(zepsMixExcitation_G729_16s_I(gp, gc, code, old_exc_ + kExcHistory + o, kSubfr), "excitation");
            synthesise(m_aq, a_sub, o, synth);
            a_sub += m_aq + 1;
        }

        Zep16s energy = 0;
        check(zepsEnergyDB_G729E_16s(synth, kFrame, &energy), "frame energy");
        if (energy >= 8192) backward_dominance(mode);
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));

        prev_bfi_ = bfi;
        prev_mode_ = mode;
        prev_voicing_ = voicing_;
        if (bfi) {
            c_fe_fix_ = 4096;
        } else if (mode == 0) {
            c_fe_fix_ = 0;
        } else {
            c_fe_fix_ = static_cast<Zep16s>(c_fe_fix_ - (bwd_dominant_ ? 410 : 2048));
            if (c_fe_fix_ < 0) c_fe_fix_ = 0;
        }
        post_filter(high, mode, mode == 0 ? a_t_fwd : a_t_bwd_, mode == 0 ? kOrder : kOrderBwd, t0_first, synth,
                    out);
    }

    /// autocorr_hyb_window, Lag_window_bwd, Levinsone, the saturation test
    /// and the bandwidth expansion: the backward filter in a_t_bwd_[31..61].
    void backward_analysis() {
        Zep32s r[kOrderBwd + 1];
        Zep16s rh[kOrderBwd + 1], rl[kOrderBwd + 1], rc[kOrderBwd];
        Zep16s* a = a_t_bwd_ + kOrderBwd + 1;
        check(zepsWinHybrid_G729E_16s32s(synth_buf_, r, hyb_.data()), "hybrid window");
        check(zepsLagWindow_G729E_32s16s(r, rh, rl), "lag window");
        check(zepsLevinsonDurbin_G729E_16s(kOrderBwd, rh, rl, a, rc, old_a_bwd_, old_rc_bwd_), "Levinson-Durbin");
        bool saturated = false;
        for (int i = 0; i <= kOrderBwd; ++i) saturated = saturated || a[i] >= 32767;
        if (saturated)
            std::memcpy(a, a_t_bwd_mem_, sizeof a_t_bwd_mem_);
        else
            std::memcpy(a_t_bwd_mem_, a, sizeof a_t_bwd_mem_);
        check(zepsWeightLPC_G729E_16s(a, kGammaBwd, kOrderBwd, a), "bandwidth expansion");
    }

    /// Int_bwd: the second subframe's filter moves towards the previous
    /// frame's by c_int (decaying by 410 a frame); the first subframe takes
    /// the mean of the two.
    void interpolate_backward() {
        c_int_ = static_cast<Zep16s>(c_int_ - 410 < 0 ? 0 : c_int_ - 410);
        Zep16s* a = a_t_bwd_ + kOrderBwd + 1;
        check(zepsInterpolateC_NR_G729_16s_Sfs(a, static_cast<Zep16s>(4096 - c_int_), prev_filter_, c_int_, a,
                                               kOrderBwd + 1, 12),
              "filter interpolation");
        check(zepsInterpolateC_NR_G729_16s_Sfs(a, 1, prev_filter_, 1, a_t_bwd_, kOrderBwd + 1, 1),
              "filter interpolation");
    }

    /// D_lspe and Int_qlpc (no interpolation after a backward frame).
    void decode_lsp(const Zep16s* prm, bool bfi, Zep16s* az) {
        Zep16s lsf[kOrder];
        if (!bfi) {
            const Zep16s idx[4] = {static_cast<Zep16s>((prm[0] >> 7) & 1), static_cast<Zep16s>(prm[0] & 127),
                                   static_cast<Zep16s>((prm[1] >> 5) & 31), static_cast<Zep16s>(prm[1] & 31)};
            check(zepsLSFDecode_G729_16s(idx, &freq_prev_[0][0], lsf), "LSF decoding");
            std::memcpy(prev_lsf_, lsf, sizeof lsf);
            prev_ma_ = idx[0];
        } else {
            std::memcpy(lsf, prev_lsf_, sizeof lsf);
            check(zepsLSFDecodeErased_G729_16s(prev_ma_, &freq_prev_[0][0], prev_lsf_), "erased LSF decoding");
        }
        Zep16s lsp_new[kOrder];
        check(zepsLSFToLSP_G729_16s(lsf, lsp_new), "LSF to LSP");
        if (prev_mode_ == 0) {
            Zep16s lsp_mid[kOrder];
            check(zepsInterpolate_G729_16s(lsp_old_, lsp_new, lsp_mid, kOrder), "LSP interpolation");
            check(zepsLSPToLPC_G729_16s(lsp_mid, az), "LSP to LPC");
        } else {
            check(zepsLSPToLPC_G729_16s(lsp_new, az), "LSP to LPC");
        }
        check(zepsLSPToLPC_G729_16s(lsp_new, az + kOrder + 1), "LSP to LPC");
        std::memcpy(lsp_old_, lsp_new, sizeof lsp_new);
    }

    /// Synthesis of one subframe; on overflow the excitation buffer is
    /// scaled down by 4 and the subframe filtered again.
    void synthesise(int m, const Zep16s* a, int o, Zep16s* synth) {
        const Zep16s* cur = old_exc_ + kExcHistory + o;
        Zep16s* mem = mem_syn_ + kOrderBwd - m;
        const ZepStatus s = zepsSynthesisFilter_G729E_16s(m, a, cur, synth + o, kSubfr, mem, 0);
        check(s, "synthesis filter");
        if (s == zepStsOverflow) {
            for (Zep16s& e : old_exc_) e = static_cast<Zep16s>(e >> 2);
            check(zepsSynthesisFilter_G729E_16s(m, a, cur, synth + o, kSubfr, mem, 0), "synthesis filter");
        }
        std::memcpy(mem_syn_, synth + o + kSubfr - kOrderBwd, sizeof mem_syn_);
    }

    /// tst_bwd_dominant: backward mode dominates when, over the last 10 to
    /// 100 loud frames, backward frames outnumber 4 times the forward ones.
    void backward_dominance(Zep16s mode) {
        if (mode == 0)
            ++count_fwd_;
        else
            ++count_bwd_;
        int all = count_bwd_ + count_fwd_;
        if (all == 100) {
            all >>= 1;
            count_bwd_ >>= 1;
            count_fwd_ >>= 1;
        }
        bwd_dominant_ = all >= 10 && count_bwd_ > 4 * count_fwd_;
    }

    /// The adaptive post-filter factors, the post-filter and post-processing.
    void post_filter(bool high, Zep16s mode, const Zep16s* az, int m, Zep16s t0_first, const Zep16s* synth,
                     Zep16s* out) {
        int long_h;
        if (!high) {
            long_h = 20;
            ga1_ = kGamma1Pst;
            ga2_ = kGamma2Pst;
            ga_harm_ = kGammaHarm;
        } else {
            long_h = 32;
            const auto step = [](Zep16s v, int d, Zep16s hi) {
                const int r = v + d;
                return static_cast<Zep16s>(r < 0 ? 0 : r > hi ? hi : r);
            };
            const bool down = mode == 1 && bwd_dominant_;
            ga_harm_ = down ? step(ga_harm_, -410, 32767) : step(ga_harm_, 410, kGammaHarmE);
            ga1_ = down ? step(ga1_, -1147, 32767) : step(ga1_, 1147, kGamma1Pst);
            ga2_ = down ? step(ga2_, -1065, 32767) : step(ga2_, 1065, kGamma2PstE);
        }
        voicing_ = 0;
        for (int sf = 0; sf < 2; ++sf) {
            Zep16s v = 0;
            check(zepsPostFilter_G729E_16s(t0_first, synth + sf * kSubfr, az + sf * (m + 1), out + sf * kSubfr, &v,
                                           ga1_, ga2_, ga_harm_, long_h, m, post_.data()),
                  "post-filter");
            if (v != 0) voicing_ = v;
        }
        check(zepsPostProcess_G729_16s_I(out, kFrame, hp_.data()), "post-processing");
    }

    /// The reference decoder's random generator (erased-frame codes).
    Zep16s random() {
        seed_ = static_cast<Zep16s>(seed_ * 31821 + 13849);
        return seed_;
    }

    std::vector<std::uint8_t> post_, hp_, hyb_;
    Zep16s synth_buf_[kAnaBwd] = {};
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s mem_syn_[kOrderBwd] = {};
    Zep16s freq_prev_[4][kOrder];
    Zep16s prev_lsf_[kOrder];
    Zep16s prev_ma_ = 0;
    Zep16s lsp_old_[kOrder];
    Zep16s a_t_bwd_[2 * (kOrderBwd + 1)] = {};
    Zep16s a_bwd_mem_[kOrderBwd + 1] = {};
    Zep16s a_t_bwd_mem_[kOrderBwd + 1] = {};
    Zep16s prev_filter_[kOrderBwd + 1] = {};
    Zep16s old_a_bwd_[kOrderBwd + 1] = {};
    Zep16s old_rc_bwd_[2] = {};
    Zep16s sharp_ = kSharpMin;
    Zep16s t0_ = 60;
    Zep16s prev_t0_ = 60;
    Zep16s prev_t0_frac_ = 0;
    Zep16s track_[4] = {30, 0, 0, 0};
    Zep16s gains_[2] = {0, 0};
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep16s c_muting_ = 32767;
    int count_bfi_ = 0;
    int stat_bwd_ = 0;
    Zep16s c_fe_fix_ = 0;
    Zep16s c_int_ = kCIntReset;
    bool prev_bfi_ = false;
    Zep16s prev_mode_ = 0;
    Zep16s voicing_ = 60;
    Zep16s prev_voicing_ = 0;
    int count_bwd_ = 0, count_fwd_ = 0;
    bool bwd_dominant_ = false;
    Zep16s ga1_ = kGamma1Pst, ga2_ = kGamma2PstE, ga_harm_ = kGammaHarmE;
    Zep16s seed_ = 21845;
};

// ---- encoder ---------------------------------------------------------------

constexpr int kWindow = 240;                      // L_WINDOW = L_TOTAL
constexpr int kSpeechAt = kWindow - kFrame - 40;  // the frame being coded
constexpr Zep16s kGpClip = 15564;                 // pitch-gain ceiling under taming, Q14
constexpr Zep16s kHighPass140[6] = {1899, -3798, 1899, 4096, 7807, -3733};
constexpr std::uint16_t kBit0 = 0x007F;

/// The rate file: one 16-bit little-endian code a frame, 0 = 8, 1 = 11.8 kbit/s.
std::vector<bool> read_schedule(const std::string& path) {
    std::vector<bool> schedule;
    if (path.empty()) return schedule;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) throw CodecError("cannot open the rate file " + path);
    std::uint8_t w[2];
    while (std::fread(w, 1, 2, f) == 2) {
        const unsigned code = w[0] | (w[1] << 8);
        if (code > 1) {
            std::fclose(f);
            throw CodecError("rate file " + path + ": code " + std::to_string(code) + " at frame " +
                             std::to_string(schedule.size()) + " (Annex E: 0 = 8, 1 = 11.8 kbit/s)");
        }
        schedule.push_back(code == 1);
    }
    std::fclose(f);
    return schedule;
}

void put_word(std::vector<std::uint8_t>& out, std::uint16_t w) {
    out.push_back(static_cast<std::uint8_t>(w & 0xFF));
    out.push_back(static_cast<std::uint8_t>(w >> 8));
}

template <std::size_t N>
void put_params(std::vector<std::uint8_t>& out, const std::array<int, N>& widths, const Zep16s* prm) {
    for (std::size_t p = 0; p < N; ++p)
        for (int b = widths[p] - 1; b >= 0; --b) put_word(out, (prm[p] >> b) & 1 ? kBit1 : kBit0);
}

Zep16s bounded_sharp(Zep16s gain) { return gain > kSharpMax ? kSharpMax : gain < kSharpMin ? kSharpMin : gain; }

class Encoder final : public FrameEncoder {
public:
    Encoder(bool high_rate, std::vector<bool> schedule) : high_rate_(high_rate), schedule_(std::move(schedule)) {
        hp_ = state_block(zepsHighPassFilterSize_G729);
        check(zepsHighPassFilterInit_G729(kHighPass140, hp_.data()), "pre-processing initialisation");
        hyb_ = state_block(zepsWinHybridGetStateSize_G729E_16s);
        check(zepsWinHybridInit_G729E_16s(hyb_.data()), "hybrid-window initialisation");
        for (auto& row : freq_prev_) std::memcpy(row, kFreqPrevReset, sizeof row);
        std::memcpy(lsp_old_, kLspReset, sizeof lsp_old_);
        std::memcpy(lsp_old_q_, kLspReset, sizeof lsp_old_q_);
        prev_filter_[0] = a_t_bwd_mem_[0] = old_a_bwd_[0] = old_a_fwd_[0] = 4096;
    }
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return kFrame; }

    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        bool high = high_rate_;
        if (!schedule_.empty()) {
            if (frame_ >= schedule_.size())
                throw CodecError("the rate file ends at frame " + std::to_string(frame_) + ", before the speech");
            high = schedule_[frame_];
        }
        ++frame_;
        Zep16s* new_speech = old_speech_ + kWindow - kFrame;
        std::memcpy(new_speech, pcm, kFrame * sizeof(Zep16s));
        check(zepsHighPassFilter_G729_16s_ISfs(new_speech, kFrame, 12, hp_.data()), "pre-processing");
        Zep16s prm[19] = {};
        const Zep16s mode = code_frame(high, prm);
        std::memmove(old_speech_, old_speech_ + kFrame, (kWindow - kFrame) * sizeof(Zep16s));
        std::memmove(old_wsp_, old_wsp_ + kFrame, kPitMax * sizeof(Zep16s));
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));
        std::memmove(signal_, signal_ + kFrame, kOrderBwd * sizeof(Zep16s));
        prev_mode_ = mode;

        put_word(out, kSync);
        put_word(out, high ? kBitsHigh : kBitsLow);
        if (!high) {
            put_params(out, kBits8k, prm);
        } else {
            put_word(out, mode ? kBit1 : kBit0);
            put_word(out, mode ? kBit1 : kBit0);
            if (mode == 0)
                put_params(out, kBitsFwd, prm);
            else
                put_params(out, kBitsBwd, prm);
        }
    }

private:
    /// Coder_ld8e: backward and forward LP analysis, the mode decision, the
    /// weighting, open-loop pitch, then per subframe the target, the adaptive
    /// and fixed codebooks, the gains and the local synthesis that feeds the
    /// next frame's backward analysis. Returns the LPC mode.
    Zep16s code_frame(bool high, Zep16s* prm) {
        const Zep16s* speech = old_speech_ + kSpeechAt;
        if (high) backward_analysis();
        std::memmove(synth_, synth_ + kFrame, kMemSynBwd * sizeof(Zep16s));
        std::memcpy(signal_ + kOrderBwd, speech, kFrame * sizeof(Zep16s));

        // Forward analysis and quantisation.
        Zep16s a_t_fwd[2 * (kOrder + 1)], a_t_fwd_q[2 * (kOrder + 1)], rc_fwd[kOrder], lsp_new[kOrder];
        forward_analysis(a_t_fwd + kOrder + 1, rc_fwd, lsp_new);
        Zep16s lsp_new_q[kOrder], code_lsp[2], freq_cur[kOrder];
        check(zepsLSPQuant_G729E_16s(lsp_new, &freq_prev_[0][0], lsp_new_q, code_lsp, freq_cur),
              "LSP quantisation");
        Zep16s lsf_int[kOrder], lsf_new[kOrder];
        if (prev_mode_ == 0) {
            Zep16s lsp_mid[kOrder];
            check(zepsInterpolate_G729_16s(lsp_old_, lsp_new, lsp_mid, kOrder), "LSP interpolation");
            check(zepsLSPToLPC_G729_16s(lsp_mid, a_t_fwd), "LSP to LPC");
            check(zepsLSPToLSF_Norm_G729_16s(lsp_mid, lsf_int), "LSP to LSF");
            check(zepsLSPToLSF_Norm_G729_16s(lsp_new, lsf_new), "LSP to LSF");
            check(zepsInterpolate_G729_16s(lsp_old_q_, lsp_new_q, lsp_mid, kOrder), "LSP interpolation");
            check(zepsLSPToLPC_G729_16s(lsp_mid, a_t_fwd_q), "LSP to LPC");
            check(zepsLSPToLPC_G729_16s(lsp_new_q, a_t_fwd_q + kOrder + 1), "LSP to LPC");
        } else {
            // No interpolation after a backward frame.
            check(zepsLSPToLPC_G729_16s(lsp_new, a_t_fwd), "LSP to LPC");
            check(zepsLSPToLSF_Norm_G729_16s(lsp_new, lsf_new), "LSP to LSF");
            std::memcpy(lsf_int, lsf_new, sizeof lsf_int);
            check(zepsLSPToLPC_G729_16s(lsp_new_q, a_t_fwd_q + kOrder + 1), "LSP to LPC");
            std::memcpy(a_t_fwd_q, a_t_fwd_q + kOrder + 1, (kOrder + 1) * sizeof(Zep16s));
        }

        // Forward or backward LP.
        Zep16s mode = 0;
        check(zepsLPCModeDecision_G729E_16s(signal_ + kOrderBwd, a_t_fwd_q, a_t_bwd_, &mode, lsp_new, lsp_old_,
                                            high ? 1 : 0, &bwd_dominant_, prev_mode_, prev_filter_, &c_int_, stat_),
              "LPC mode decision");
        const Zep16s* aq;
        const Zep16s* ap;
        int m_aq, m_ap;
        if (mode == 0) {
            c_int_ = kCIntReset;
            m_aq = m_ap = kOrder;
            aq = a_t_fwd_q;
            ap = bwd_dominant_ == 0 ? a_t_fwd : a_t_fwd_q;
            std::memset(prev_filter_, 0, sizeof prev_filter_);
            std::memcpy(prev_filter_, aq + kOrder + 1, (kOrder + 1) * sizeof(Zep16s));
            std::memset(ai_zero_ + kOrder + 1, 0, (kOrderBwd - kOrder) * sizeof(Zep16s));
        } else {
            m_aq = kOrderBwd;
            aq = a_t_bwd_;
            m_ap = bwd_dominant_ == 0 ? kOrder : kOrderBwd;
            ap = bwd_dominant_ == 0 ? a_t_fwd : a_t_bwd_;
            std::memcpy(prev_filter_, a_t_bwd_ + kOrderBwd + 1, sizeof prev_filter_);
        }
        std::memcpy(lsp_old_, lsp_new, sizeof lsp_old_);

        Zep16s gamma[4];
        if (mode == 0) {
            std::memcpy(lsp_old_q_, lsp_new_q, sizeof lsp_old_q_);
            std::memmove(freq_prev_[1], freq_prev_[0], 3 * sizeof freq_prev_[0]);
            std::memcpy(freq_prev_[0], freq_cur, sizeof freq_cur);
            prm[0] = code_lsp[0];
            prm[1] = code_lsp[1];
            check(zepsWeightingFactors_G729_16s(lsf_int, lsf_new, rc_fwd, weighting_mem_, gamma),
                  "weighting factors");
        } else {
            check(zepsWeightingFactors_G729E_16s(bwd_dominant_, gamma), "weighting factors");
        }
        // Parameters after the LSP codes (none in backward mode).
        Zep16s* q = mode == 0 ? prm + 2 : prm;

        // Weighted speech and open-loop pitch.
        Zep16s* wsp = old_wsp_ + kPitMax;
        Zep16s ap1[2][kOrderBwd + 1], ap2[2][kOrderBwd + 1];
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            const Zep16s* a = ap + sf * (m_ap + 1);
            check(zepsWeightLPC_G729E_16s(a, gamma[sf], m_ap, ap1[sf]), "weighting");
            check(zepsWeightLPC_G729E_16s(a, gamma[2 + sf], m_ap, ap2[sf]), "weighting");
            check(zepsResidual_G729E_16s(m_ap, ap1[sf], speech + o, wsp + o, kSubfr), "weighting filter");
            check(zepsSynthesisFilter_G729E_16s_I(m_ap, ap2[sf], wsp + o, kSubfr, mem_w_ + kOrderBwd - m_ap, 0),
                  "weighting filter");
            std::memcpy(mem_w_, wsp + o + kSubfr - kOrderBwd, sizeof mem_w_);
        }
        Zep16s t_op = 0;
        check(zepsOpenLoopPitchSearch_G729_16s(wsp, &t_op), "open-loop pitch");

        Zep16s* exc = old_exc_ + kExcHistory;
        Zep16s* synth = synth_ + kMemSynBwd;
        Zep16s t0_first = 0;
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            const Zep16s* a_q = aq + sf * (m_aq + 1);
            Zep16s zero[kOrderBwd] = {};

            // Impulse response of W(z)/A(z); the filter input keeps the
            // coefficients of earlier frames beyond the current order.
            Zep16s h1[kSubfr];
            std::memcpy(ai_zero_, ap1[sf], (m_ap + 1) * sizeof(Zep16s));
            check(zepsSynthesisFilter_G729E_16s(m_aq, a_q, ai_zero_, h1, kSubfr, zero, 0),
                  "impulse response");
            check(zepsSynthesisFilter_G729E_16s_I(m_ap, ap2[sf], h1, kSubfr, zero, 0),
                  "impulse response");

            // Target through the error filter.
            check(zepsResidual_G729E_16s(m_aq, a_q, speech + o, exc + o, kSubfr), "LPC residual");
            Zep16s res2[kSubfr];
            std::memcpy(res2, exc + o, sizeof res2);
            Zep16s error[kOrderBwd + kSubfr];
            std::memcpy(error, mem_err_, sizeof mem_err_);
            check(zepsSynthesisFilter_G729E_16s(m_aq, a_q, exc + o, error + kOrderBwd, kSubfr,
                                                mem_err_ + kOrderBwd - m_aq, 0),
                  "error filter");
            Zep16s xn[kSubfr];
            check(zepsResidual_G729E_16s(m_ap, ap1[sf], error + kOrderBwd, xn, kSubfr), "target");
            check(zepsSynthesisFilter_G729E_16s_I(m_ap, ap2[sf], xn, kSubfr, mem_w0_ + kOrderBwd - m_ap, 0), "target");

            // Adaptive codebook.
            Zep16s delay[2], adapt[kSubfr];
            check(zepsAdaptiveCodebookSearch_G729_16s(sf == 0 ? t_op : t0_first, xn, h1, old_exc_ + o, delay, adapt,
                                                      static_cast<Zep16s>(sf)),
                  "closed-loop pitch");
            Zep16s index = 0;
            check(zepsEncodeLag_G729_16s(delay, t0_first, static_cast<Zep16s>(sf), &index), "pitch-delay code");
            if (sf == 0) {
                t0_first = delay[0];
                *q++ = index;
                Zep16s parity = 0;
                check(zepsParityPitch_G729_16s(index, &parity), "pitch parity");
                if (high) parity = static_cast<Zep16s>(parity ^ ((index >> 1) & 1));
                *q++ = parity;
            } else {
                *q++ = index;
            }
            Zep16s y1[kSubfr], gain_pit = 0, taming = 0;
            check(zepsAdaptiveCodebookGain_G729_16s(xn, h1, adapt, y1, &gain_pit), "pitch gain");
            check(zepsTamingTest_G729_16s(exc_err_, delay, &taming), "taming test");
            if (taming == 1 && gain_pit > kGpClip) gain_pit = kGpClip;
            Zep16s xn2[kSubfr];
            check(zepsAdaptiveCodebookContribution_G729_16s(gain_pit, y1, xn, xn2), "codebook target");

            // Fixed codebook.
            Zep16s code[kSubfr], y2[kSubfr];
            if (!high) {
                Zep16s cidx[2];
                check(zepsFixedCodebookSearch_G729_16s(xn2, h1, delay[0], sharp_, static_cast<Zep16s>(sf), &budget_,
                                                       code, y2, cidx),
                      "fixed codebook");
                *q++ = cidx[0];
                *q++ = cidx[1];
            } else {
                check(zepsPitchSharpening_G729_16s_I(delay[0], sharp_, h1), "pitch sharpening");
                Zep16s ltp_res[kSubfr];
                check(zepsAdaptiveCodebookContribution_G729_16s(gain_pit, exc + o, res2, ltp_res), "LTP residual");
                check(zepsFixedCodebookSearch_G729E_16s(xn2, ltp_res, h1, code, y2, q, mode), "fixed codebook");
                q += 5;
                check(zepsPitchSharpening_G729_16s_I(delay[0], sharp_, code), "pitch sharpening");
            }

            // Gains, excitation, synthesis and memories.
            Zep16s gains[2];
            check(zepsGainQuant_G729_16s(xn, y1, code, y2, past_qua_en_, taming, gains, q++), "gain quantisation");
            sharp_ = bounded_sharp(gains[0]);
            check(zepsMixExcitation_G729_16s_I(gains[0], gains[1], code, exc + o, kSubfr), "excitation");
            check(zepsTamingUpdate_G729_16s(gains[0], delay[0], exc_err_), "taming update");
            check(zepsSynthesisFilter_G729E_16s(m_aq, a_q, exc + o, synth + o, kSubfr, mem_syn_ + kOrderBwd - m_aq, 0),
                  "local synthesis");
            std::memcpy(mem_syn_, synth + o + kSubfr - kOrderBwd, sizeof mem_syn_);
            Zep16s diff[kSubfr];
            // speech - synth with saturation: the target update with a gain of 1.0 (Q14).
            check(zepsAdaptiveCodebookContribution_G729_16s(16384, synth + o, speech + o, diff), "error memory");
            std::memcpy(mem_err_, diff + kSubfr - kOrderBwd, sizeof mem_err_);
            weighted_error_memory(gains, xn, y1, y2);
        }
        return mode;
    }

    /// The weighting filter's memory of 30 samples, 10 at a time through
    /// the main body's stage (which computes the last 10 of a subframe).
    void weighted_error_memory(const Zep16s* gains, const Zep16s* xn, const Zep16s* y1, const Zep16s* y2) {
        for (int part = 0; part < kOrderBwd / kOrder; ++part) {
            Zep16s x[kSubfr] = {}, a[kSubfr] = {}, b[kSubfr] = {};
            const int from = kSubfr - kOrderBwd + part * kOrder;
            std::memcpy(x + kSubfr - kOrder, xn + from, kOrder * sizeof(Zep16s));
            std::memcpy(a + kSubfr - kOrder, y1 + from, kOrder * sizeof(Zep16s));
            std::memcpy(b + kSubfr - kOrder, y2 + from, kOrder * sizeof(Zep16s));
            check(zepsWeightedErrorMemory_G729_16s(gains[0], gains[1], x, a, b, mem_w0_ + part * kOrder),
                  "weighting memory");
        }
    }

    /// autocorr_hyb_window, Lag_window_bwd, Levinsone on the local
    /// synthesis, the saturation test and the bandwidth expansion: the
    /// backward filter in a_t_bwd_[31..61].
    void backward_analysis() {
        Zep32s r[kOrderBwd + 1];
        Zep16s rh[kOrderBwd + 1], rl[kOrderBwd + 1], rc[kOrderBwd];
        Zep16s* a = a_t_bwd_ + kOrderBwd + 1;
        check(zepsWinHybrid_G729E_16s32s(synth_, r, hyb_.data()), "hybrid window");
        check(zepsLagWindow_G729E_32s16s(r, rh, rl), "lag window");
        check(zepsLevinsonDurbin_G729E_16s(kOrderBwd, rh, rl, a, rc, old_a_bwd_, old_rc_bwd_), "Levinson-Durbin");
        bool saturated = false;
        for (int i = 0; i <= kOrderBwd; ++i) saturated = saturated || a[i] >= 32767;
        if (saturated)
            std::memcpy(a, a_t_bwd_mem_, sizeof a_t_bwd_mem_);
        else
            std::memcpy(a_t_bwd_mem_, a, sizeof a_t_bwd_mem_);
        check(zepsWeightLPC_G729E_16s(a, kGammaBwd, kOrderBwd, a), "bandwidth expansion");
    }

    /// Autocorr, Lag_window and Levinsone of order 10 (the last stable
    /// filter kept when unstable), then the LSPs.
    void forward_analysis(Zep16s* a, Zep16s* rc, Zep16s* lsp_new) {
        Zep32s r[13];
        Zep16s exp_r0 = 0;
        check(zepsAutoCorr_G729B(old_speech_, &exp_r0, r), "autocorrelation");
        check(zepsLagWindow_G729_32s_I(r + 1, kOrder), "lag window");
        Zep16s rh[kOrder + 1], rl[kOrder + 1];
        for (int i = 0; i <= kOrder; ++i) {
            rh[i] = static_cast<Zep16s>(r[i] >> 16);
            rl[i] = static_cast<Zep16s>((r[i] & 0xFFFF) >> 1);
        }
        check(zepsLevinsonDurbin_G729E_16s(kOrder, rh, rl, a, rc, old_a_fwd_, old_rc_fwd_), "Levinson-Durbin");
        check(zepsLPCToLSP_G729_16s(a, lsp_old_, lsp_new), "LP to LSP");
    }

    bool high_rate_;
    std::vector<bool> schedule_;
    std::size_t frame_ = 0;
    std::vector<std::uint8_t> hp_, hyb_;
    Zep16s old_speech_[kWindow] = {};
    Zep16s old_wsp_[kPitMax + kFrame] = {};
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s ai_zero_[kSubfr] = {};
    Zep16s mem_syn_[kOrderBwd] = {}, mem_w0_[kOrderBwd] = {}, mem_w_[kOrderBwd] = {}, mem_err_[kOrderBwd] = {};
    Zep16s sharp_ = kSharpMin;
    Zep32s exc_err_[4] = {0x4000, 0x4000, 0x4000, 0x4000};
    Zep16s prev_filter_[kOrderBwd + 1] = {};
    Zep16s synth_[kAnaBwd] = {};
    Zep16s prev_mode_ = 0;
    Zep16s signal_[kFrame + kOrderBwd] = {};
    Zep16s a_t_bwd_[2 * (kOrderBwd + 1)] = {};
    Zep16s a_t_bwd_mem_[kOrderBwd + 1] = {};
    Zep16s bwd_dominant_ = 0;
    Zep16s c_int_ = kCIntReset;
    Zep16s stat_[5] = {10000, 0, 0, 0, 0};
    Zep16s old_a_bwd_[kOrderBwd + 1] = {};
    Zep16s old_rc_bwd_[2] = {};
    Zep16s old_a_fwd_[kOrder + 1] = {};
    Zep16s old_rc_fwd_[2] = {};
    Zep16s freq_prev_[4][kOrder];
    Zep16s lsp_old_[kOrder];
    Zep16s lsp_old_q_[kOrder];
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep16s weighting_mem_[3] = {0, 0, 1};
    Zep16s budget_ = 30;
};

}  // namespace

std::unique_ptr<FrameDecoder> make_decoder() { return std::make_unique<Decoder>(); }

std::unique_ptr<FrameEncoder> make_encoder(bool high_rate, const std::string& ratefile) {
    return std::make_unique<Encoder>(high_rate, read_schedule(ratefile));
}

}  // namespace zepsc_cli::g729e

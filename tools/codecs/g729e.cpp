// SPDX-License-Identifier: BSD-3-Clause
// The G.729 Annex E codec of the zepsc tool (11.8 kbit/s with the 8 kbit/s
// frames of the main body in between), assembled from the public exports
// alone: the Annex E reference decoder, stage by stage, in its order. The
// encoder is the integrated coder of Annex I (tools/codecs/g729i_encoder.cpp)
// limited to 8 and 11.8 kbit/s frames without DTX (set up in
// tools/codecs/g729.cpp).
//
// Bitstream: the ITU-T serial format (SYNC 0x6B21, a size word of 118 or
// 80, then one 16-bit word a bit, 0x0081 = 1, 0x007F = 0). An 11.8 kbit/s
// frame starts with the LPC mode bit (0 forward, 1 backward) and its repeat.
// A frame is erased when one of its bit words but the last two is 0x0000,
// or, at 11.8 kbit/s, when the mode bit and its repeat differ (E.4.4, as the
// reference decoder detects it).
#include "tools/codecs/g729_annex_e.h"

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "tools/codecs/g729_backward.h"
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
        for (auto& row : freq_prev_) std::memcpy(row, kFreqPrevReset, sizeof row);
        std::memcpy(prev_lsf_, kFreqPrevReset, sizeof prev_lsf_);
        std::memcpy(lsp_old_, kLspReset, sizeof lsp_old_);
        a_bwd_mem_[0] = 4096;
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
        if (high) bwd_.analyse(synth_buf_);
        std::memmove(synth_buf_, synth_buf_ + kFrame, kMemSynBwd * sizeof(Zep16s));

        // Back from an erasure: mix in the last good backward filter.
        if (mode == 1 && c_fe_fix_ != 0) bwd_.mix_in(a_bwd_mem_, c_fe_fix_);
        if (bfi && !prev_bfi_) std::memcpy(a_bwd_mem_, bwd_.newest(), sizeof a_bwd_mem_);

        // The subframes' filters.
        const Zep16s* p_lsp = prm;                 // forward 11.8 and 8 kbit/s: lsp codes first
        const Zep16s* p_sub = high && mode_bit == 1 ? prm : prm + 2;
        Zep16s a_t_fwd[2 * (kOrder + 1)];
        const Zep16s* a_sub;
        int m_aq;
        if (mode == 0) {
            decode_lsp(p_lsp, bfi, a_t_fwd);
            a_sub = a_t_fwd;
            m_aq = kOrder;
            bwd_.keep_forward(a_t_fwd + kOrder + 1);
        } else {
            bwd_.interpolate();
            a_sub = bwd_.a_t;
            m_aq = kOrderBwd;
            std::memcpy(bwd_.prev_filter, bwd_.newest(), sizeof bwd_.prev_filter);
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
        if (energy >= 8192) dom_.count(mode);
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));

        prev_bfi_ = bfi;
        prev_mode_ = mode;
        prev_voicing_ = voicing_;
        if (bfi) {
            c_fe_fix_ = 4096;
        } else if (mode == 0) {
            c_fe_fix_ = 0;
        } else {
            c_fe_fix_ = static_cast<Zep16s>(c_fe_fix_ - (dom_.dominant ? 410 : 2048));
            if (c_fe_fix_ < 0) c_fe_fix_ = 0;
        }
        post_filter(high, mode, mode == 0 ? a_t_fwd : bwd_.a_t, mode == 0 ? kOrder : kOrderBwd, t0_first, synth,
                    out);
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

    /// The adaptive post-filter factors, the post-filter and post-processing.
    void post_filter(bool high, Zep16s mode, const Zep16s* az, int m, Zep16s t0_first, const Zep16s* synth,
                     Zep16s* out) {
        pf_.next(high, mode == 1 && dom_.dominant);
        voicing_ = 0;
        for (int sf = 0; sf < 2; ++sf) {
            Zep16s v = 0;
            check(zepsPostFilter_G729E_16s(t0_first, synth + sf * kSubfr, az + sf * (m + 1), out + sf * kSubfr, &v,
                                           pf_.ga1, pf_.ga2, pf_.ga_harm, pf_.long_h, m, post_.data()),
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

    std::vector<std::uint8_t> post_, hp_;
    zepsc_g729::BackwardLp bwd_{zepsc_g729::Check{"G.729 Annex E"}};
    zepsc_g729::BackwardDominance dom_;
    zepsc_g729::PostFactors pf_;
    Zep16s synth_buf_[kAnaBwd] = {};
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s mem_syn_[kOrderBwd] = {};
    Zep16s freq_prev_[4][kOrder];
    Zep16s prev_lsf_[kOrder];
    Zep16s prev_ma_ = 0;
    Zep16s lsp_old_[kOrder];
    Zep16s a_bwd_mem_[kOrderBwd + 1] = {};
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
    bool prev_bfi_ = false;
    Zep16s prev_mode_ = 0;
    Zep16s voicing_ = 60;
    Zep16s prev_voicing_ = 0;
    Zep16s seed_ = 21845;
};
}  // namespace

std::unique_ptr<FrameDecoder> make_decoder() { return std::make_unique<Decoder>(); }

}  // namespace zepsc_cli::g729e

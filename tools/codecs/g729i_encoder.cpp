// SPDX-License-Identifier: BSD-3-Clause
// The integrated G.729 encoder of ITU-T G.729 Annex I in the zepsc tool,
// assembled from the public exports alone: one encoder state across the
// rates, each frame coded at 6.4 kbit/s (Annex D), 8 kbit/s (main body) or
// 11.8 kbit/s (Annex E, forward or backward LPC), as a fixed rate or from a
// rate file of one 16-bit code a frame (0 = 6.4, 1 = 8, 2 = 11.8).
//
// The frame loop is the Annex E encoder's (forward analysis of order 10,
// backward analysis of order 30 on the local synthesis at 11.8 kbit/s, the
// LPC mode decision, the weighting, open-loop pitch, then per subframe the
// target, the adaptive and fixed codebooks of the frame's rate and the
// gains); at 6.4 and 8 kbit/s the mode is forward and the backward
// dominance is let decay. With DTX (Annex B) the VAD decides after the
// forward analysis, the music detection may turn an 11.8 kbit/s noise
// decision into voice, and an inactive frame codes comfort noise (a SID or
// an untransmitted frame) at order 10 while the coder's memories follow it.
// The Annex E encoder is this coder limited to 8 and 11.8 kbit/s frames.
// Bitstream: the ITU-T serial format, the size word giving the frame type
// (64, 80, 118; 16 = SID with its padding bit, 0 = untransmitted).
#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tools/codecs/g729_annex_i.h"
#include "tools/codecs/g729_backward.h"
#include "tools/codecs/g729_frame.h"
#include "zepsc.h"

namespace zepsc_g729 {
namespace {

constexpr Check check{"G.729 Annex I"};

constexpr Zep16s kSeedCng = 11111;            // INIT_SEED of the comfort-noise generator
constexpr Zep16s kSidFrame = 2;               // the DTX stage's frame type of a SID frame

/// What a frame is sent as: comfort noise (untransmitted or SID) or speech
/// at the frame's rate.
enum class Sent { Untransmitted, Sid, Speech };

class EncoderI final : public zepsc_cli::FrameEncoder {
public:
    EncoderI(RateI rate, std::vector<RateI> schedule, bool dtx)
        : rate_(rate), schedule_(std::move(schedule)), dtx_on_(dtx) {
        hp_ = high_pass_state(check, kHighPass140, "pre-processing");
        old_a_fwd_[0] = 4096;
        vad_ = initialised_state(check, zepsVADGetStateSize_G729B, zepsVADInit_G729B, "VAD");
        dtx_ = initialised_state(check, zepsDTXGetStateSize_G729B, zepsDTXInit_G729B, "DTX");
        music_ = initialised_state(check, zepsMusicDetectGetStateSize_G729I,
                                   zepsMusicDetectInit_G729I, "music-detection");
    }
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return kFrame; }

    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        const RateI rate = scheduled_rate(schedule_, frame_++, rate_);
        frame_count_ = frame_count_ == 32767 ? Zep16s{256} : static_cast<Zep16s>(frame_count_ + 1);
        Zep16s* new_speech = old_speech_ + kWindow - kFrame;
        std::memcpy(new_speech, pcm, kFrame * sizeof(Zep16s));
        check(zepsHighPassFilter_G729_16s_ISfs(new_speech, kFrame, 12, hp_.data()), "pre-processing");
        Zep16s prm[19] = {};
        Zep16s mode = 0;
        const Sent sent = code_frame(rate, prm, mode);
        std::memmove(old_speech_, old_speech_ + kFrame, (kWindow - kFrame) * sizeof(Zep16s));
        std::memmove(old_wsp_, old_wsp_ + kFrame, kPitMax * sizeof(Zep16s));
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));
        std::memmove(signal_, signal_ + kFrame, kOrderBwd * sizeof(Zep16s));
        prev_mode_ = mode;
        if (sent == Sent::Speech)
            write_frame(rate, mode, prm, out);
        else
            write_noise(sent, out);
    }

private:
    /// A speech frame at its rate; at 11.8 kbit/s the LPC mode bit and its
    /// repeat come first.
    static void write_frame(RateI rate, Zep16s mode, const Zep16s* prm, std::vector<std::uint8_t>& out) {
        std::uint8_t bits[118] = {};
        int n = 0;
        switch (rate) {
            case RateI::R6k4: n = params_to_bits(prm, kBits6k4, bits); break;
            case RateI::R8k: n = params_to_bits(prm, kBits8k, bits); break;
            case RateI::R11k8:
                bits[0] = bits[1] = mode ? 1 : 0;
                n = 2 + (mode == 0 ? params_to_bits(prm, kBitsFwd, bits + 2) : params_to_bits(prm, kBitsBwd, bits + 2));
                break;
        }
        write_frame_bits(bits, n, true, out);
    }

    /// A SID frame (15 bits and the padding bit 0) or an untransmitted frame.
    void write_noise(Sent sent, std::vector<std::uint8_t>& out) const {
        std::uint8_t bits[16] = {};
        params_to_bits(sid_, kBitsSid, bits);
        write_frame_bits(bits, sent == Sent::Sid ? 16 : 0, true, out);
    }

    /// Coder_ld8c for an active frame: backward (11.8 kbit/s) and forward LP
    /// analysis, the mode decision, the weighting, open-loop pitch, then per
    /// subframe the target, the adaptive and fixed codebooks of the rate,
    /// the gains and the local synthesis that feeds the next frame's
    /// backward analysis; with DTX an inactive frame codes comfort noise
    /// instead. Writes the LPC mode; returns what the frame is sent as.
    Sent code_frame(RateI rate, Zep16s* prm, Zep16s& mode) {
        const bool low = rate == RateI::R6k4;
        const Zep16s* speech = old_speech_ + kSpeechAt;

        // Forward analysis and the voice activity.
        Zep16s a_t_fwd[2 * (kOrder + 1)], a_t_fwd_q[2 * (kOrder + 1)], rc_fwd[kOrder], lsp_new[kOrder];
        const Zep16s vad = forward_analysis(rate, a_t_fwd + kOrder + 1, rc_fwd, lsp_new);
        const bool high = rate == RateI::R11k8 && vad == 1;
        if (high) bwd_.analyse(synth_);
        std::memmove(synth_, synth_ + kFrame, kMemSynBwd * sizeof(Zep16s));
        std::memcpy(signal_ + kOrderBwd, speech, kFrame * sizeof(Zep16s));

        Zep16s lsf_int[kOrder], lsf_new[kOrder];
        if (prev_mode_ == 0) {
            Zep16s lsp_mid[kOrder];
            check(zepsInterpolate_G729_16s(lsp_.old, lsp_new, lsp_mid, kOrder), "LSP interpolation");
            check(zepsLSPToLPC_G729_16s(lsp_mid, a_t_fwd), "LSP to LPC");
            check(zepsLSPToLSF_Norm_G729_16s(lsp_mid, lsf_int), "LSP to LSF");
            check(zepsLSPToLSF_Norm_G729_16s(lsp_new, lsf_new), "LSP to LSF");
        } else {
            // No interpolation after a backward frame.
            check(zepsLSPToLPC_G729_16s(lsp_new, a_t_fwd), "LSP to LPC");
            check(zepsLSPToLSF_Norm_G729_16s(lsp_new, lsf_new), "LSP to LSF");
            std::memcpy(lsf_int, lsf_new, sizeof lsf_int);
        }
        // Quantisation (active frames).
        Zep16s lsp_new_q[kOrder] = {}, code_lsp[2] = {}, freq_cur[kOrder] = {};
        if (vad == 1) {
            check(zepsLSPQuant_G729E_16s(lsp_new, &lsp_.freq_prev[0][0], lsp_new_q, code_lsp, freq_cur),
                  "LSP quantisation");
            if (prev_mode_ == 0) {
                interpolate_filters(check, lsp_.old_q, lsp_new_q, a_t_fwd_q);
            } else {
                check(zepsLSPToLPC_G729_16s(lsp_new_q, a_t_fwd_q + kOrder + 1), "LSP to LPC");
                std::memcpy(a_t_fwd_q, a_t_fwd_q + kOrder + 1, (kOrder + 1) * sizeof(Zep16s));
            }
        } else {
            std::memcpy(a_t_fwd_q, a_t_fwd, sizeof a_t_fwd_q);  // read by the decision below, not used
        }

        // Forward or backward LP (forward, dominance decaying, below 11.8
        // kbit/s and on inactive frames).
        mode = 0;
        check(zepsLPCModeDecision_G729E_16s(signal_ + kOrderBwd, a_t_fwd_q, bwd_.a_t, &mode, lsp_new, lsp_.old,
                                            high ? 1 : 0, &bwd_dominant_, prev_mode_, bwd_.prev_filter, &bwd_.c_int,
                                            stat_),
              "LPC mode decision");
        const Zep16s* aq;
        const Zep16s* ap;
        int m_aq, m_ap;
        if (mode == 0) {
            m_aq = m_ap = kOrder;
            aq = a_t_fwd_q;
            ap = bwd_dominant_ == 0 ? a_t_fwd : a_t_fwd_q;
            bwd_.keep_forward(aq + kOrder + 1);
            std::memset(ai_zero_ + kOrder + 1, 0, (kOrderBwd - kOrder) * sizeof(Zep16s));
        } else {
            m_aq = kOrderBwd;
            aq = bwd_.a_t;
            m_ap = bwd_dominant_ == 0 ? kOrder : kOrderBwd;
            ap = bwd_dominant_ == 0 ? a_t_fwd : bwd_.a_t;
            if (bwd_dominant_ == 0) std::memset(ai_zero_ + kOrder + 1, 0, (kOrderBwd - kOrder) * sizeof(Zep16s));
            std::memcpy(bwd_.prev_filter, bwd_.newest(), sizeof bwd_.prev_filter);
        }
        std::memcpy(lsp_.old, lsp_new, sizeof lsp_.old);

        Zep16s gamma[4];
        if (mode == 0)
            check(zepsWeightingFactors_G729_16s(lsf_int, lsf_new, rc_fwd, weighting_mem_, gamma), "weighting factors");
        else
            check(zepsWeightingFactors_G729E_16s(bwd_dominant_, gamma), "weighting factors");

        // Weighted speech.
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
        if (vad == 0) {
            const Sent sent = comfort_noise(a_t_fwd, a_t_fwd_q, gamma);
            mode = 0;
            return sent;
        }
        if (dtx_on_) next_vad(1);
        if (mode == 0) {
            std::memcpy(lsp_.old_q, lsp_new_q, sizeof lsp_.old_q);
            std::memmove(lsp_.freq_prev[1], lsp_.freq_prev[0], 3 * sizeof lsp_.freq_prev[0]);
            std::memcpy(lsp_.freq_prev[0], freq_cur, sizeof freq_cur);
            prm[0] = code_lsp[0];
            prm[1] = code_lsp[1];
        }
        // Parameters after the LSP codes (none in backward mode).
        Zep16s* q = mode == 0 ? prm + 2 : prm;

        // Open-loop pitch.
        Zep16s t_op = 0;
        check(zepsOpenLoopPitchSearch_G729_16s(wsp, &t_op), "open-loop pitch");
        keep_lag(t_op);

        Zep16s* exc = old_exc_ + kExcHistory;
        Zep16s* synth = synth_ + kMemSynBwd;
        Zep16s t0_first = 0;
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            const Zep16s s = static_cast<Zep16s>(sf);
            const Zep16s* a_q = aq + sf * (m_aq + 1);
            Zep16s zero[kOrderBwd] = {};

            // Impulse response of W(z)/A(z); the filter input keeps the
            // coefficients of earlier frames beyond the current order.
            Zep16s h1[kSubfr];
            std::memcpy(ai_zero_, ap1[sf], (m_ap + 1) * sizeof(Zep16s));
            check(zepsSynthesisFilter_G729E_16s(m_aq, a_q, ai_zero_, h1, kSubfr, zero, 0), "impulse response");
            check(zepsSynthesisFilter_G729E_16s_I(m_ap, ap2[sf], h1, kSubfr, zero, 0), "impulse response");

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

            // Adaptive codebook (the Annex D lag resolution at 6.4 kbit/s).
            Zep16s delay[2], adapt[kSubfr];
            const Zep16s open = sf == 0 ? t_op : t0_first;
            check(low ? zepsAdaptiveCodebookSearch_G729D_16s(open, xn, h1, old_exc_ + o, delay, adapt, s)
                      : zepsAdaptiveCodebookSearch_G729_16s(open, xn, h1, old_exc_ + o, delay, adapt, s),
                  "closed-loop pitch");
            Zep16s index = 0;
            check(low ? zepsEncodeLag_G729D_16s(delay, t0_first, s, &index)
                      : zepsEncodeLag_G729_16s(delay, t0_first, s, &index),
                  "pitch-delay code");
            *q++ = index;
            if (sf == 0) {
                t0_first = delay[0];
                if (!low) {
                    Zep16s parity = 0;
                    check(zepsParityPitch_G729_16s(index, &parity), "pitch parity");
                    if (high) parity = static_cast<Zep16s>(parity ^ ((index >> 1) & 1));
                    *q++ = parity;
                }
            }
            Zep16s y1[kSubfr], xn2[kSubfr], taming = 0;
            const Zep16s gain_pit = tamed_pitch_gain(check, xn, h1, adapt, exc_err_, delay, y1, xn2, taming);

            // Fixed codebook.
            Zep16s code[kSubfr], y2[kSubfr];
            if (!high) {
                Zep16s cidx[2];
                check(low ? zepsFixedCodebookSearch_G729D_16s(xn2, h1, delay[0], sharp_, code, y2, cidx)
                          : zepsFixedCodebookSearch_G729_16s(xn2, h1, delay[0], sharp_, s, &budget_, code, y2, cidx),
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
            check(low ? zepsGainQuant_G729D_16s(xn, y1, code, y2, past_qua_en_, taming, gains, q++)
                      : zepsGainQuant_G729_16s(xn, y1, code, y2, past_qua_en_, taming, gains, q++),
                  "gain quantisation");
            keep_pitch_gain(gains[0]);
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
        return Sent::Speech;
    }

    /// The music detection's record of the last five open-loop lags: a lag
    /// close to two or three times the mean of the previous four is kept
    /// halved or divided by three.
    void keep_lag(Zep16s t_op) {
        std::memmove(lag_buf_, lag_buf_ + 1, 4 * sizeof(Zep16s));
        const int mean = (lag_buf_[0] + lag_buf_[1] + lag_buf_[2] + lag_buf_[3] + 2) >> 2;  // mult_r(sum, 8192)
        const int twice = t_op - 2 * mean, thrice = t_op - 3 * mean;
        if (twice > -4 && twice < 4)
            lag_buf_[4] = static_cast<Zep16s>(t_op >> 1);
        else if (thrice > -6 && thrice < 6)
            lag_buf_[4] = static_cast<Zep16s>((t_op * 10923) >> 15);  // mult(t_op, 1/3 in Q15)
        else
            lag_buf_[4] = t_op;
    }

    /// The music detection's record of the last five subframes' pitch gains.
    void keep_pitch_gain(Zep16s gain) {
        std::memmove(pgain_buf_, pgain_buf_ + 1, 4 * sizeof(Zep16s));
        pgain_buf_[4] = gain;
    }

    void next_vad(Zep16s vad) {
        ppast_vad_ = past_vad_;
        past_vad_ = vad;
        if (vad == 1) seed_ = kSeedCng;
    }

    /// Cod_cng and the inactive frame's memories: the DTX decision, on a SID
    /// frame the SID parameters, the comfort-noise excitation with the
    /// taming update and the quantised filters; then the local synthesis at
    /// order 10 and the target memories follow the comfort noise.
    Sent comfort_noise(const Zep16s* a_t_fwd, Zep16s* aq, const Zep16s* gamma) {
        // The DTX stage's Levinson-Durbin shares the forward analysis's last
        // stable filter and reflection coefficients.
        Zep16s last_stable[kOrder + 3];
        std::memcpy(last_stable, old_a_fwd_, sizeof old_a_fwd_);
        std::memcpy(last_stable + kOrder + 1, old_rc_fwd_, sizeof old_rc_fwd_);
        Zep16s ftyp = 0, lpc[kOrder + 1], gain_idx = 0, gain = 0;
        check(zepsDTX_G729B_16s(past_vad_, last_stable, &ftyp, lpc, &gain_idx, &gain, dtx_.data()), "DTX");
        std::memcpy(old_a_fwd_, last_stable, sizeof old_a_fwd_);
        std::memcpy(old_rc_fwd_, last_stable + kOrder + 1, sizeof old_rc_fwd_);
        if (ftyp == kSidFrame) {
            Zep16s lsp[kOrder], idx[3];
            check(zepsLPCToLSP_G729_16s(lpc, lsp_.old_q, lsp), "LP to LSP");
            check(zepsLSPQuant_G729B_16s(lsp, &lsp_.freq_prev[0][0], lsp_sid_, idx), "SID LSP quantisation");
            sid_[0] = idx[0];
            sid_[1] = idx[1];
            sid_[2] = idx[2];
            sid_[3] = gain_idx;
        }
        Zep16s* exc = old_exc_ + kExcHistory;
        comfort_noise_excitation(check, gain, old_exc_, &seed_, exc_err_, lsp_.old_q, lsp_sid_, aq);
        next_vad(0);

        const Zep16s* speech = old_speech_ + kSpeechAt;
        Zep16s* synth = synth_ + kMemSynBwd;
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            Zep16s ap1[kOrder + 1], ap2[kOrder + 1];
            check(zepsWeightLPC_G729E_16s(a_t_fwd + sf * (kOrder + 1), gamma[sf], kOrder, ap1), "weighting");
            check(zepsWeightLPC_G729E_16s(a_t_fwd + sf * (kOrder + 1), gamma[2 + sf], kOrder, ap2), "weighting");
            check(zepsSynthesisFilter_G729E_16s(kOrder, aq + sf * (kOrder + 1), exc + o, synth + o, kSubfr,
                                                mem_syn_ + kOrderBwd - kOrder, 0),
                  "local synthesis");
            std::memcpy(mem_syn_, synth + o + kSubfr - kOrderBwd, sizeof mem_syn_);
            // The error without saturation, as the reference computes it,
            // after the previous error samples.
            Zep16s error_buf[kOrderBwd + kSubfr], xn[kSubfr];
            Zep16s* error = error_buf + kOrderBwd;
            std::memcpy(error_buf, mem_err_, sizeof mem_err_);
            for (int i = 0; i < kSubfr; ++i) error[i] = static_cast<Zep16s>(speech[o + i] - synth[o + i]);
            check(zepsResidual_G729E_16s(kOrder, ap1, error, xn, kSubfr), "target memory");
            check(zepsSynthesisFilter_G729E_16s_I(kOrder, ap2, xn, kSubfr, mem_w0_ + kOrderBwd - kOrder, 0),
                  "target memory");
            std::memcpy(mem_w0_, xn + kSubfr - kOrderBwd, sizeof mem_w0_);
            std::memcpy(mem_err_, error + kSubfr - kOrderBwd, sizeof mem_err_);
            keep_pitch_gain(8192);
        }
        // The previous filter follows the comfort noise's (c_int unchanged).
        std::memset(bwd_.prev_filter, 0, sizeof bwd_.prev_filter);
        std::memcpy(bwd_.prev_filter, aq + kOrder + 1, (kOrder + 1) * sizeof(Zep16s));
        sharp_ = kSharpMin;
        return ftyp == kSidFrame ? Sent::Sid : Sent::Untransmitted;
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

    /// Autocorrelation, lag window and Levinson-Durbin of order 10 (the last
    /// stable filter kept when unstable), then the LSPs; with DTX the VAD
    /// decision and the DTX autocorrelation history. Returns the decision
    /// (1 without DTX).
    Zep16s forward_analysis(RateI rate, Zep16s* a, Zep16s* rc, Zep16s* lsp_new) {
        Zep32s r[13], rw[13];
        Zep16s exp_r0 = 0;
        check(zepsAutoCorr_G729B(old_speech_, &exp_r0, r), "autocorrelation");
        std::memcpy(rw, r, sizeof rw);
        check(zepsLagWindow_G729_32s_I(rw + 1, 12), "lag window");
        Zep16s rh[kOrder + 1], rl[kOrder + 1];
        for (int i = 0; i <= kOrder; ++i) {
            rh[i] = static_cast<Zep16s>(rw[i] >> 16);
            rl[i] = static_cast<Zep16s>((rw[i] & 0xFFFF) >> 1);
        }
        check(zepsLevinsonDurbin_G729E_16s(kOrder, rh, rl, a, rc, old_a_fwd_, old_rc_fwd_), "Levinson-Durbin");
        check(zepsLPCToLSP_G729_16s(a, lsp_.old, lsp_new), "LP to LSP");
        if (!dtx_on_) return 1;
        Zep16s lsf[kOrder], vad = 1;
        check(zepsLSPToLSF_Norm_G729_16s(lsp_new, lsf), "LSP to LSF");
        check(zepsVAD_G729B_16s(rc[1], lsf, rw, exp_r0, old_speech_, frame_count_, past_vad_, ppast_vad_, &vad,
                                vad_.data()),
              "VAD");
        check(zepsMusicDetect_G729I_16s(static_cast<int>(rate), rw[0], exp_r0, rc, lag_buf_, pgain_buf_, prev_mode_,
                                        frame_count_, past_vad_, &vad, music_.data()),
              "music detection");
        check(zepsDTXUpdate_G729B_16s(r, exp_r0, vad, dtx_.data()), "DTX update");
        return vad;
    }

    RateI rate_;
    std::vector<RateI> schedule_;
    bool dtx_on_;
    std::size_t frame_ = 0;
    std::vector<std::uint8_t> hp_, vad_, dtx_, music_;
    BackwardLp bwd_{check};
    Zep16s lag_buf_[5] = {20, 20, 20, 20, 20};
    Zep16s pgain_buf_[5] = {11469, 11469, 11469, 11469, 11469};
    // Annex B.
    Zep16s frame_count_ = 0;
    Zep16s past_vad_ = 1;
    Zep16s ppast_vad_ = 1;
    Zep16s seed_ = kSeedCng;
    Zep16s lsp_sid_[kOrder] = {};
    Zep16s sid_[4] = {};
    Zep16s old_speech_[kWindow] = {};
    Zep16s old_wsp_[kPitMax + kFrame] = {};
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s ai_zero_[kSubfr] = {};
    Zep16s mem_syn_[kOrderBwd] = {}, mem_w0_[kOrderBwd] = {}, mem_w_[kOrderBwd] = {}, mem_err_[kOrderBwd] = {};
    Zep16s sharp_ = kSharpMin;
    Zep32s exc_err_[4] = {0x4000, 0x4000, 0x4000, 0x4000};
    Zep16s synth_[kAnaBwd] = {};
    Zep16s prev_mode_ = 0;
    Zep16s signal_[kFrame + kOrderBwd] = {};
    Zep16s bwd_dominant_ = 0;
    Zep16s stat_[5] = {10000, 0, 0, 0, 0};
    Zep16s old_a_fwd_[kOrder + 1] = {};
    Zep16s old_rc_fwd_[2] = {};
    LspEncoderMemory lsp_;
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep16s weighting_mem_[3] = {0, 0, 1};
    Zep16s budget_ = 30;
};

}  // namespace

std::unique_ptr<zepsc_cli::FrameEncoder> make_g729i_encoder(RateI rate, std::vector<RateI> schedule, bool dtx) {
    return std::make_unique<EncoderI>(rate, std::move(schedule), dtx);
}

}  // namespace zepsc_g729

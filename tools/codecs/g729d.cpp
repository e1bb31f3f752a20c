// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D (6.4 kbit/s, with the 8 kbit/s main body and switching
// between the two at any frame) in the zepsc tool, assembled from the
// public exports alone: the encoder and decoder of the ITU-T Annex D
// reference, stage by stage, in its order.
//
// At 6.4 kbit/s the frame carries 64 bits: L0 1, L1 7, L2 5, L3 5, P1 8,
// C1 9, S1 2, GA1 3, GB1 3, P2 4, C2 9, S2 2, GA2 3, GB2 3 (no parity bit);
// at 8 kbit/s the main body's 80. The two rates share every memory of the
// coder (LSP and gain predictors, excitation, filters), so a stream may
// switch rate at any frame; the decoder keeps its phase-dispersion state
// up to date at 8 kbit/s too. Serial format: the size word (64 or 80) gives
// each frame's rate, a frame with any bit word 0x0000 is erased. RTP
// payloads: 8 or 10 bytes a frame at the one rate given.
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "tools/codecs/g729_annex.h"
#include "tools/codecs/g729_frame.h"
#include "zepsc.h"

namespace zepsc_g729 {
namespace {

using zepsc_cli::CodecError;

constexpr int kMaxBits = 80;
constexpr Check check{"G.729 Annex D"};

/// The parameters of a frame, independent of the rate's bit layout.
struct Params {
    Zep16s lsp[2] = {};      // L0+L1, L2+L3
    Zep16s parity = 0;       // P0 (8 kbit/s only)
    Zep16s lag[2] = {};      // P1, P2
    Zep16s pos[2] = {};      // C1, C2
    Zep16s sign[2] = {};     // S1, S2
    Zep16s gain[2] = {};     // GA+GB of each subframe
};

/// Pointers to a frame's fields in stream order and their bit widths.
std::vector<std::pair<Zep16s*, int>> fields(Params& p, RateD rate) {
    if (rate == RateD::R6k4)
        return {{&p.lsp[0], 8}, {&p.lsp[1], 10}, {&p.lag[0], 8}, {&p.pos[0], 9}, {&p.sign[0], 2},
                {&p.gain[0], 6}, {&p.lag[1], 4}, {&p.pos[1], 9}, {&p.sign[1], 2}, {&p.gain[1], 6}};
    return {{&p.lsp[0], 8}, {&p.lsp[1], 10}, {&p.lag[0], 8},  {&p.parity, 1}, {&p.pos[0], 13}, {&p.sign[0], 4},
            {&p.gain[0], 7}, {&p.lag[1], 5}, {&p.pos[1], 13}, {&p.sign[1], 4}, {&p.gain[1], 7}};
}

int frame_bits(RateD rate) { return rate == RateD::R6k4 ? 64 : 80; }

void params_to_bits(Params p, RateD rate, std::uint8_t* bits) {
    int k = 0;
    for (auto [field, width] : fields(p, rate))
        for (int b = width - 1; b >= 0; --b) bits[k++] = static_cast<std::uint8_t>((*field >> b) & 1);
}

Params bits_to_params(const std::uint8_t* bits, RateD rate) {
    Params p;
    int k = 0;
    for (auto [field, width] : fields(p, rate)) {
        int v = 0;
        for (int b = 0; b < width; ++b) v = (v << 1) | bits[k++];
        *field = static_cast<Zep16s>(v);
    }
    return p;
}

// ---- decoder ---------------------------------------------------------------

class DecoderD final : public zepsc_cli::FrameDecoder {
public:
    DecoderD(RateD rate, bool serial) : rate_(rate), serial_(serial) {
        post_ = initialised_state(check, zepsPostFilterGetStateSize_G729_16s,
                                  zepsPostFilterInit_G729_16s, "post-filter");
        hp_ = high_pass_state(check, kHighPass100, "post-processing");
        disp_ = initialised_state(check, zepsPhaseDispersionGetStateSize_G729D,
                                  zepsPhaseDispersionInit_G729D, "phase-dispersion");
    }
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }

    std::size_t decode(zepsc_cli::ByteSource& in, std::int16_t* pcm) override {
        std::uint8_t bits[kMaxBits] = {};
        bool erased = false;
        RateD rate = rate_;
        if (serial_) {
            std::uint8_t head[4];
            if (!in.read_exact(head, 4, "frame header")) return 0;
            const unsigned size = head[2] | (head[3] << 8);
            if (size != 64 && size != 80)
                throw CodecError("frame of " + std::to_string(size) + " bits at byte " +
                                 std::to_string(in.position() - 4) + ": G.729 Annex D frames have 64 or 80");
            rate = size == 64 ? RateD::R6k4 : RateD::R8k;
            read_bit_words(in, size, bits, erased);
        } else if (!read_payload_bits(in, frame_bits(rate), bits)) {
            return 0;
        }
        Zep16s az[2 * (kOrder + 1)];
        Zep16s synth[kFrame];
        decode_frame(bits_to_params(bits, rate), rate, erased, az, synth);
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));
        post_filter(az, synth, pcm);
        return kFrame;
    }

private:
    /// Decod_ld8kD: the excitation of the two subframes and the synthesis.
    void decode_frame(const Params& prm, RateD rate, bool bfi, Zep16s* az, Zep16s* synth) {
        const bool low = rate == RateD::R6k4;
        lsp_.decode(prm.lsp[0], prm.lsp[1], bfi, az);

        bool bad_pitch = bfi;
        if (!low) {
            Zep16s parity = 0;
            check(zepsParityPitch_G729_16s(prm.lag[0], &parity), "pitch parity");
            bad_pitch = bad_pitch || parity != prm.parity;
        }
        for (int sf = 0; sf < 2; ++sf) {
            const int i_subfr = sf * kSubfr;
            Zep16s* exc = old_exc_ + i_subfr;

            // Pitch delay, with the erasure rule of the main body (4.4.1).
            Zep16s delay[2];
            lags_.next(sf == 0 ? !bad_pitch : !bfi, delay, [&](Zep16s* d) {
                const Zep16s s = static_cast<Zep16s>(sf);
                check(low ? zepsDecodeLag_G729D_16s(prm.lag[sf], s, d) : zepsDecodeLag_G729_16s(prm.lag[sf], s, d),
                      "pitch delay decoding");
            });
            if (sf == 0) t0_first_ = delay[0];
            check(zepsDecodeAdaptiveVector_G729_16s_I(delay, exc), "adaptive vector");

            // Fixed-codebook vector, random codes on an erased frame.
            Zep16s index = prm.pos[sf], sign = prm.sign[sf];
            if (bfi) {
                index = static_cast<Zep16s>(random_.next() & (low ? 0x01ff : 0x1fff));
                sign = static_cast<Zep16s>(random_.next() & (low ? 0x0003 : 0x000f));
            }
            Zep16s code[kSubfr];
            check(low ? zepsDecodeFixedCodebook_G729D_16s(sign, index, code)
                      : zepsDecodeFixedCodebook_G729_16s(sign, index, code),
                  "fixed-codebook decoding");
            check(zepsPitchSharpening_G729_16s_I(delay[0], sharp_, code), "pitch sharpening");

            // Gains.
            if (bfi)
                check(zepsDecodeGainErased_G729_16s(past_qua_en_, gains_), "erased-frame gains");
            else
                check(low ? zepsDecodeGain_G729D_16s(prm.gain[sf], code, past_qua_en_, gains_)
                          : zepsDecodeGain_G729_16s(prm.gain[sf], code, past_qua_en_, gains_),
                      "gain decoding");
            sharp_ = bounded_sharp(gains_[0]);

            // Excitation: an erased frame keeps only the adaptive part of a
            // voiced frame and only the fixed part otherwise.
            Zep16s gp = gains_[0], gc = gains_[1];
            if (bfi) {
                if (voicing_ == 0)
                    gp = 0;
                else
                    gc = 0;
            }
            check(zepsMixExcitation_G729_16s_I(gp, gc, code, exc + kExcHistory, kSubfr), "excitation");
            if (!low) check(zepsPhaseDispersionUpdate_G729D_16s(gains_[0], gains_[1], disp_.data()), "dispersion update");
            synthesise(az + sf * (kOrder + 1), i_subfr, low, code, synth);
        }
    }

    /// Synthesis of one subframe: on overflow of the plain synthesis the
    /// whole excitation buffer is scaled down by 4; at 6.4 kbit/s the
    /// synthesis filter is fed the phase-dispersed excitation.
    void synthesise(const Zep16s* a, int i_subfr, bool low, const Zep16s* code, Zep16s* synth) {
        const Zep16s* cur = old_exc_ + kExcHistory + i_subfr;
        Zep16s* out = synth + i_subfr;
        const ZepStatus s = zepsSynthesisFilter_G729_16s(a, cur, out, kSubfr, mem_syn_, 0);
        check(s, "synthesis filter");
        if (s == zepStsOverflow)
            for (Zep16s& e : old_exc_) e = static_cast<Zep16s>(e >> 2);
        if (low) {
            Zep16s dispersed[kSubfr];
            check(zepsPhaseDispersion_G729D_16s(cur, gains_[1], gains_[0], code, dispersed, disp_.data()),
                  "phase dispersion");
            check(zepsSynthesisFilter_G729_16s(a, dispersed, out, kSubfr, mem_syn_, 0), "synthesis filter");
        } else if (s == zepStsOverflow) {
            check(zepsSynthesisFilter_G729_16s(a, cur, out, kSubfr, mem_syn_, 0), "synthesis filter");
        }
        std::memcpy(mem_syn_, out + kSubfr - kOrder, sizeof mem_syn_);
    }

    /// The main body's post-filter (pitch from the first subframe) and post-processing.
    void post_filter(const Zep16s* az, const Zep16s* synth, Zep16s* out) {
        voicing_ = post_filter_main(check, t0_first_, true, az, synth, out, post_.data());
        check(zepsPostProcess_G729_16s_I(out, kFrame, hp_.data()), "post-processing");
    }

    RateD rate_;
    bool serial_;
    std::vector<std::uint8_t> post_, hp_, disp_;
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    LspDecoder lsp_{check};
    LagMemory lags_;
    ErasureRandom random_;
    Zep16s mem_syn_[kOrder] = {};
    Zep16s sharp_ = kSharpMin;
    Zep16s t0_first_ = 60;
    Zep16s gains_[2] = {0, 0};
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep16s voicing_ = 60;
};

// ---- encoder ---------------------------------------------------------------

class EncoderD final : public zepsc_cli::FrameEncoder {
public:
    EncoderD(RateD rate, std::vector<RateD> schedule, bool serial)
        : rate_(rate), schedule_(std::move(schedule)), serial_(serial) {
        hp_ = high_pass_state(check, kHighPass140, "pre-processing");
        prev_filter_[0] = 4096;
    }
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return kFrame; }

    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        const RateD rate = scheduled_rate(schedule_, frame_++, rate_);
        Zep16s* new_speech = old_speech_ + kWindow - kFrame;
        std::memcpy(new_speech, pcm, kFrame * sizeof(Zep16s));
        check(zepsHighPassFilter_G729_16s_ISfs(new_speech, kFrame, 12, hp_.data()), "pre-processing");
        Params prm;
        code_frame(rate, prm);
        std::memmove(old_speech_, old_speech_ + kFrame, (kWindow - kFrame) * sizeof(Zep16s));
        std::memmove(old_wsp_, old_wsp_ + kFrame, kPitMax * sizeof(Zep16s));
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));
        write_frame(prm, rate, out);
    }

private:
    void write_frame(const Params& prm, RateD rate, std::vector<std::uint8_t>& out) const {
        std::uint8_t bits[kMaxBits];
        params_to_bits(prm, rate, bits);
        write_frame_bits(bits, frame_bits(rate), serial_, out);
    }

    /// Autocorrelation, lag window, Levinson-Durbin (the last stable filter
    /// kept when unstable) and the LSPs.
    void analyse(Zep16s* a, Zep16s* rc, Zep16s* lsp_new) {
        Zep32s r[13];
        Zep16s exp_r0 = 0;
        check(zepsAutoCorr_G729B(old_speech_, &exp_r0, r), "autocorrelation");
        check(zepsLagWindow_G729_32s_I(r + 1, 12), "lag window");
        lp_filter_or_last_stable(check, r, a, rc, prev_filter_);
        check(zepsLPCToLSP_G729_16s(a, lsp_.old, lsp_new), "LP to LSP");
    }

    /// Coder_ld8kD: the main body's analysis and weighting, then per
    /// subframe the target, the adaptive codebook (Annex D lag resolution at
    /// 6.4 kbit/s), the fixed codebook and the gains of the frame's rate.
    void code_frame(RateD rate, Params& prm) {
        const bool low = rate == RateD::R6k4;
        const Zep16s* speech = old_speech_ + kSpeechAt;
        Zep16s rc[kOrder], lsp_new[kOrder];
        Zep16s a_t[2 * (kOrder + 1)], aq[2 * (kOrder + 1)], gamma[4];
        analyse(a_t + kOrder + 1, rc, lsp_new);
        weighting_factors(check, lsp_.old, lsp_new, rc, weighting_mem_, a_t, gamma);

        Zep16s* exc = old_exc_ + kExcHistory;
        Zep16s* wsp = old_wsp_ + kPitMax;
        Zep16s ap1[2][kOrder + 1], ap2[2][kOrder + 1];
        weighted_speech(check, a_t, gamma, speech, wsp, mem_w_, ap1, ap2);
        quantise_lsp(check, lsp_new, &lsp_.freq_prev[0][0], lsp_.old_q, aq, prm.lsp);

        Zep16s t_op = 0;
        check(zepsOpenLoopPitchSearch_G729_16s(wsp, &t_op), "open-loop pitch");

        Zep16s t0_first = 0;
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            const Zep16s s = static_cast<Zep16s>(sf);
            const Zep16s* a_q = aq + sf * (kOrder + 1);
            Zep16s h1[kSubfr], xn[kSubfr];
            main_target(check, a_q, ap1[sf], ap2[sf], speech + o, exc + o, mem_err_, mem_w0_, h1, xn);

            // Adaptive codebook.
            Zep16s delay[2], adapt[kSubfr];
            const Zep16s open = sf == 0 ? t_op : t0_first;
            check(low ? zepsAdaptiveCodebookSearch_G729D_16s(open, xn, h1, old_exc_ + o, delay, adapt, s)
                      : zepsAdaptiveCodebookSearch_G729_16s(open, xn, h1, old_exc_ + o, delay, adapt, s),
                  "closed-loop pitch");
            check(low ? zepsEncodeLag_G729D_16s(delay, t0_first, s, &prm.lag[sf])
                      : zepsEncodeLag_G729_16s(delay, t0_first, s, &prm.lag[sf]),
                  "pitch-delay code");
            if (sf == 0) {
                t0_first = delay[0];
                check(zepsParityPitch_G729_16s(prm.lag[0], &prm.parity), "pitch parity");
            }
            Zep16s y1[kSubfr], xn2[kSubfr], taming = 0;
            tamed_pitch_gain(check, xn, h1, adapt, exc_err_, delay, y1, xn2, taming);

            // Fixed codebook.
            Zep16s code[kSubfr], y2[kSubfr], cidx[2];
            check(low ? zepsFixedCodebookSearch_G729D_16s(xn2, h1, delay[0], sharp_, code, y2, cidx)
                      : zepsFixedCodebookSearch_G729_16s(xn2, h1, delay[0], sharp_, s, &budget_, code, y2, cidx),
                  "fixed codebook");
            prm.pos[sf] = cidx[0];
            prm.sign[sf] = cidx[1];

            // Gains, excitation, synthesis and memories.
            Zep16s gains[2];
            check(low ? zepsGainQuant_G729D_16s(xn, y1, code, y2, past_qua_en_, taming, gains, &prm.gain[sf])
                      : zepsGainQuant_G729_16s(xn, y1, code, y2, past_qua_en_, taming, gains, &prm.gain[sf]),
                  "gain quantisation");
            sharp_ = bounded_sharp(gains[0]);
            main_subframe_memories(check, gains, code, delay[0], a_q, speech + o, xn, y1, y2, exc + o, exc_err_,
                                   mem_syn_, mem_err_, mem_w0_);
        }
    }

    RateD rate_;
    std::vector<RateD> schedule_;
    bool serial_;
    std::size_t frame_ = 0;
    std::vector<std::uint8_t> hp_;
    Zep16s old_speech_[kWindow] = {};
    Zep16s old_wsp_[kPitMax + kFrame] = {};
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s mem_w_[kOrder] = {};
    Zep16s mem_w0_[kOrder] = {};
    Zep16s mem_err_[kOrder] = {};
    Zep16s mem_syn_[kOrder] = {};
    LspEncoderMemory lsp_;
    Zep16s prev_filter_[kOrder + 3] = {};  // last stable A(z) and its rc[0], rc[1]
    Zep16s weighting_mem_[3] = {0, 0, 1};
    Zep16s sharp_ = kSharpMin;
    Zep16s budget_ = 30;
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep32s exc_err_[4] = {0x4000, 0x4000, 0x4000, 0x4000};
};

}  // namespace

std::unique_ptr<zepsc_cli::FrameEncoder> make_g729d_encoder(RateD rate, std::vector<RateD> schedule, bool serial) {
    return std::make_unique<EncoderD>(rate, std::move(schedule), serial);
}

std::unique_ptr<zepsc_cli::FrameDecoder> make_g729d_decoder(RateD rate, bool serial) {
    return std::make_unique<DecoderD>(rate, serial);
}

}  // namespace zepsc_g729

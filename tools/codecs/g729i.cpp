// SPDX-License-Identifier: BSD-3-Clause
// The integrated G.729 decoder of ITU-T G.729 Annex I in the zepsc tool, and
// the Annex E decoder, assembled from the public exports alone: one decoder
// state across the rates, each frame at 6.4 kbit/s (Annex D), 8 kbit/s (main
// body) or 11.8 kbit/s (Annex E, forward or backward LPC), or a comfort-noise
// frame (Annex B: SID or untransmitted). This file reads as the worked example
// of the Annex I decoder's frame loop: every stage the reference decoder runs,
// in its order. The Annex E reference decoder runs the same loop over its 118-
// and 80-bit frames; the few rules by which it differs (which frames it takes,
// how it finds and decodes an erased one) are the DecoderRules below.
//
// Bitstream: the ITU-T serial format; the size word gives the frame type
// (64, 80, 118, 16 = SID with its padding bit, 0 = untransmitted; Annex E
// only 118 and 80). An 11.8 kbit/s frame starts with the LPC mode bit (0
// forward, 1 backward) and its repeat. Annex I: a frame is erased when any
// of its bit words is 0x0000, when an 11.8 kbit/s frame's mode bit and its
// repeat differ, or when an untransmitted frame's SYNC word is not 0x6B21;
// it is decoded at the previous frame's rate (comfort noise after a
// comfort-noise frame). Annex E (E.4.4, as its reference decoder detects
// it): a frame is erased when one of its bit words but the last two is
// 0x0000 or when the mode bit and its repeat differ; it is decoded at the
// rate of its own size.
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "tools/codecs/g729_annex_i.h"
#include "tools/codecs/g729_backward.h"
#include "tools/codecs/g729_frame.h"
#include "zepsc.h"

namespace zepsc_g729 {
namespace {

using zepsc_cli::CodecError;

constexpr int kMaxBits = 118;
constexpr Zep16s kSeedCng = 11111;  // INIT_SEED of the comfort-noise generator
constexpr Zep16s kLspSidReset[kOrder] = {31441, 27566, 21458, 13612, 4663, -4663, -13612, -21458, -27566, -31441};

/// The rules by which the Annex E reference decoder differs from the Annex I
/// one; the frame loop is otherwise the same.
struct DecoderRules {
    const char* codec;        // names the decoder in its messages
    const char* frame_sizes;  // the frame sizes it takes, as its messages list them
    /// 64-bit, SID (16) and untransmitted (0) frames are taken, with the
    /// state they need (phase dispersion, the comfort-noise energy); else
    /// only 118- and 80-bit frames.
    bool all_frame_types;
    /// A 0x0000 among the last two bit words erases the frame too.
    bool last_two_words_checked;
    /// An erased frame is decoded at the previous frame's rate; else at
    /// the rate of its own size.
    bool erased_at_previous_rate;
    /// The first erasure keeps the newest backward filter (for the mix
    /// after the erasure) only when the previous frame was at 11.8 kbit/s;
    /// else after any frame.
    bool backward_kept_after_high_only;
};

constexpr DecoderRules kAnnexI{"G.729 Annex I", "118, 80, 64, 16 (SID) or 0 (untransmitted)", true, true, true, true};
constexpr DecoderRules kAnnexE{"G.729 Annex E", "118 or 80", false, false, false, false};

/// Frame types as the Annex I reference numbers them; rate = type - 2.
enum FrameType : Zep16s { kUntransmitted = 0, kSid = 1, k6k4 = 2, k8k = 3, k11k8 = 4 };

/// The type of a frame of `size` bits; unknown when the rules refuse it.
bool type_of_size(unsigned size, const DecoderRules& rules, FrameType& type) {
    switch (size) {
        case 118: type = k11k8; return true;
        case 80: type = k8k; return true;
        case 64: type = k6k4; return rules.all_frame_types;
        case 16: type = kSid; return rules.all_frame_types;
        case 0: type = kUntransmitted; return rules.all_frame_types;
        default: return false;
    }
}

/// Parity check of the first subframe's pitch code: true when wrong. At
/// 11.8 kbit/s the parity bit also covers bit 1 of the code.
bool parity_error(const Check& check, Zep16s index, Zep16s parity, bool high_rate) {
    Zep16s p = 0;
    check(zepsParityPitch_G729_16s(index, &p), "pitch parity");
    if (high_rate) p = static_cast<Zep16s>(p ^ ((index >> 1) & 1));
    return ((p ^ parity) & 1) != 0;
}

/// One received frame: its type, its mode bit at 11.8 kbit/s, the
/// parameters in stream order and whether it is erased.
struct Frame {
    FrameType type = k8k;
    Zep16s mode_bit = 0;
    Zep16s prm[17] = {};
    bool erased = false;
};

// ---- decoder ---------------------------------------------------------------

class Decoder final : public zepsc_cli::FrameDecoder {
public:
    explicit Decoder(const DecoderRules& rules) : rules_(rules), check_{rules.codec} {
        post_ = initialised_state(check_, zepsPostFilterGetStateSize_G729E_16s,
                                  zepsPostFilterInit_G729E_16s, "post-filter");
        hp_ = high_pass_state(check_, kHighPass100, "post-processing");
        if (rules_.all_frame_types) {
            disp_ = initialised_state(check_, zepsPhaseDispersionGetStateSize_G729D,
                                      zepsPhaseDispersionInit_G729D, "phase-dispersion");
            sid_gain_ = initialised_state(check_, zepsSIDGainDecodeGetStateSize_G729B,
                                          zepsSIDGainDecodeInit_G729B, "SID gain");
        }
        std::memcpy(lsp_sid_, kLspSidReset, sizeof lsp_sid_);
        a_bwd_mem_[0] = 4096;
    }
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }

    std::size_t decode(zepsc_cli::ByteSource& in, std::int16_t* pcm) override {
        Frame f;
        if (!read_frame(in, f)) return 0;
        // Annex I decodes an erased frame at the previous frame's rate:
        // erased speech after speech, comfort noise after comfort noise.
        Zep16s post_type = f.type;
        if (f.erased && rules_.erased_at_previous_rate) {
            f.type = past_ftyp_ == kSid ? kUntransmitted : static_cast<FrameType>(past_ftyp_);
            post_type = prev_post_type_;
        }
        const bool high = f.type == k11k8;
        Zep16s mode = 0;
        if (high) {
            mode = f.erased ? prev_mode_ : f.mode_bit;
            if (prev_bfi_) voicing_ = prev_voicing_;
        }
        decode_frame(f, mode, post_type == k11k8, pcm);
        prev_post_type_ = post_type < k6k4 ? Zep16s{kUntransmitted} : post_type;
        return kFrame;
    }

private:
    /// Reads one serial frame into f; false at the end of the input.
    bool read_frame(zepsc_cli::ByteSource& in, Frame& f) {
        std::uint8_t head[4];
        if (!in.read_exact(head, 4, "frame header")) return false;
        const unsigned sync = head[0] | (head[1] << 8);
        const unsigned size = head[2] | (head[3] << 8);
        const std::uint64_t at = in.position() - 4;
        if (!type_of_size(size, rules_, f.type))
            throw CodecError("frame of " + std::to_string(size) + " bits at byte " + std::to_string(at) + ": " +
                             rules_.codec + " frames have " + rules_.frame_sizes);
        if (size != 0 && sync != kSync) throw CodecError("bad SYNC word at byte " + std::to_string(at));
        std::uint8_t words[2 * kMaxBits];
        if (size != 0 && !in.read_exact(words, 2 * size, "frame"))
            throw CodecError("truncated frame at byte " + std::to_string(in.position()) + ": header without bits");
        const auto word_at = [&](unsigned i) { return static_cast<unsigned>(words[2 * i] | (words[2 * i + 1] << 8)); };
        const unsigned checked = rules_.last_two_words_checked ? size : size - 2;
        std::uint8_t bits[kMaxBits] = {};
        f.erased = size == 0 && sync != kSync;
        for (unsigned i = 0; i < size; ++i) {
            bits[i] = word_at(i) == kBit1 ? 1 : 0;
            if (word_at(i) == 0 && i < checked) f.erased = true;
        }
        switch (f.type) {
            case kUntransmitted: break;
            case kSid: bits_to_params(bits, kBitsSid, f.prm); break;
            case k6k4: bits_to_params(bits, kBits6k4, f.prm); break;
            case k8k: bits_to_params(bits, kBits8k, f.prm); break;
            case k11k8: {
                // The mode bit: a word other than 0x007F reads as 1; a repeat
                // that differs erases the frame.
                f.mode_bit = word_at(0) == kBit0 ? 0 : 1;
                const Zep16s repeat = word_at(1) == kBit0 ? 0 : 1;
                if (f.mode_bit != repeat) f.erased = true;
                if (f.mode_bit == 0)
                    bits_to_params(bits + 2, kBitsFwd, f.prm);
                else
                    bits_to_params(bits + 2, kBitsBwd, f.prm);
                break;
            }
        }
        return true;
    }

    /// Decod_ld8c (Annex E: Decod_ld8e) and the post-filtering of the
    /// reference decoder's loop; post_high: the post-filter's factors are
    /// those of 11.8 kbit/s.
    void decode_frame(const Frame& f, Zep16s mode, bool post_high, Zep16s* out) {
        const bool bfi = f.erased;
        const bool high = f.type == k11k8;
        if (!bfi) {
            c_muting_ = 32767;
            count_bfi_ = 0;
        }
        if (high) bwd_.analyse(synth_buf_);
        std::memmove(synth_buf_, synth_buf_ + kFrame, kMemSynBwd * sizeof(Zep16s));

        // Back from an erasure: mix in the last good backward filter.
        if (mode == 1 && c_fe_fix_ != 0) bwd_.mix_in(a_bwd_mem_, c_fe_fix_);
        if (bfi && !prev_bfi_ && (past_ftyp_ == k11k8 || !rules_.backward_kept_after_high_only))
            std::memcpy(a_bwd_mem_, bwd_.newest(), sizeof a_bwd_mem_);

        Zep16s* synth = synth_buf_ + kMemSynBwd;
        Zep16s a_t_fwd[2 * (kOrder + 1)];
        Zep16s t0_first = 0;
        if (f.type < k6k4)
            t0_first = decode_noise(f, a_t_fwd, synth);
        else
            t0_first = decode_speech(f, mode, a_t_fwd, synth);

        // Annex B: the energy of a good frame's excitation for a later SID gain.
        if (!bfi && rules_.all_frame_types)
            check_(zepsFrameEnergy_G729B_16s(old_exc_ + kExcHistory, &sid_sav_, &sh_sid_sav_), "frame energy");
        past_ftyp_ = f.type;

        Zep16s energy = 0;
        check_(zepsEnergyDB_G729E_16s(synth, kFrame, &energy), "frame energy");
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
        post_filter(post_high, f.type >= k6k4, mode, mode == 0 ? a_t_fwd : bwd_.a_t, mode == 0 ? kOrder : kOrderBwd,
                    t0_first, synth, out);
    }

    /// A comfort-noise frame (Annex B Dec_cng): the gain, on a SID frame the
    /// new filter, the random excitation and the synthesis at order 10.
    /// Returns the lag for the post-filter (the last good one).
    Zep16s decode_noise(const Frame& f, Zep16s* az, Zep16s* synth) {
        // The Annex B stages number the types 0 untransmitted, 1 speech, 2 SID.
        const Zep16s ftyp_b = f.type == kSid ? 2 : 0;
        const Zep16s past_b = past_ftyp_ >= k6k4 ? 1 : past_ftyp_ == kSid ? 2 : 0;
        Zep16s gain = 0;
        check_(zepsSIDGainDecode_G729B_16s(ftyp_b, f.prm[3], past_b, sid_sav_, sh_sid_sav_, &gain, sid_gain_.data()),
               "SID gain decoding");
        if (f.type == kSid) {
            Zep16s lsf[kOrder];
            check_(zepsLSFDecode_G729B_16s(f.prm, &lsp_.freq_prev[0][0], lsf), "SID LSF decoding");
            check_(zepsLSFToLSP_G729_16s(lsf, lsp_sid_), "LSF to LSP");
        }
        // The 6.4 kbit/s phase dispersion follows the comfort noise's gains.
        Zep16s gains[4];
        check_(zepsCNGExcitation_G729I_16s(gain, old_exc_, &seed_cng_, gains), "comfort-noise excitation");
        for (int sf = 0; sf < 2; ++sf)
            check_(zepsPhaseDispersionUpdate_G729D_16s(gains[2 * sf], gains[2 * sf + 1], disp_.data()),
                   "dispersion update");
        interpolate_filters(check_, lsp_.lsp_old, lsp_sid_, az);
        std::memcpy(lsp_.lsp_old, lsp_sid_, sizeof lsp_sid_);
        for (int sf = 0; sf < 2; ++sf) synthesise(kOrder, az + sf * (kOrder + 1), sf * kSubfr, synth);
        sharp_ = kSharpMin;
        stat_bwd_ = 0;
        track_[1] = 0;
        bwd_.keep_forward(az + kOrder + 1);
        return prev_t0_;
    }

    /// An active frame at 6.4, 8 or 11.8 kbit/s (possibly erased): the
    /// filters, the excitation of the two subframes and the synthesis.
    /// Returns the first subframe's integer lag.
    Zep16s decode_speech(const Frame& f, Zep16s mode, Zep16s* a_t_fwd, Zep16s* synth) {
        const bool bfi = f.erased;
        const bool high = f.type == k11k8, low = f.type == k6k4;
        seed_cng_ = kSeedCng;

        // The parameters: the LSP codes (not in backward mode), then per
        // subframe the pitch code (and parity in subframe 1 but at 6.4
        // kbit/s), the codebook codes and the gain code. An erased frame's
        // codes are not used.
        const Zep16s* p_sub = high && f.mode_bit == 1 ? f.prm : f.prm + 2;
        const Zep16s* a_sub;
        int m_aq;
        if (mode == 0) {
            // D_lspe and Int_qlpc (no interpolation after a backward frame).
            lsp_.decode(f.prm[0], f.prm[1], bfi, a_t_fwd, prev_mode_ == 0);
            a_sub = a_t_fwd;
            m_aq = kOrder;
            bwd_.keep_forward(a_t_fwd + kOrder + 1);
        } else {
            bwd_.interpolate();
            a_sub = bwd_.a_t;
            m_aq = kOrderBwd;
            std::memcpy(bwd_.prev_filter, bwd_.newest(), sizeof bwd_.prev_filter);
        }

        Zep16s t0_first = 0;
        const bool bad_parity = !bfi && !low && parity_error(check_, p_sub[0], p_sub[1], high);
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            // Codes of this subframe: q[0..] after the pitch code.
            const int first_codes = low ? 1 : 2;
            const int second_at = low ? 4 : high ? 8 : 5;
            const Zep16s pitch_code = sf == 0 ? p_sub[0] : p_sub[second_at];
            const Zep16s* q = sf == 0 ? p_sub + first_codes : p_sub + second_at + 1;

            Zep16s delay[2] = {t0_, 0};
            if (!(sf == 0 ? (bfi || bad_parity) : bfi)) {
                check_(low ? zepsDecodeLag_G729D_16s(pitch_code, static_cast<Zep16s>(sf), delay)
                           : zepsDecodeLag_G729_16s(pitch_code, static_cast<Zep16s>(sf), delay),
                       "pitch delay decoding");
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
            check_(zepsDecodeAdaptiveVector_G729_16s_I(delay, old_exc_ + o), "adaptive vector");

            // Pitch tracking for the concealment (kept at every rate, used at 11.8).
            Zep16s tracked[2] = {prev_t0_, prev_t0_frac_};
            check_(zepsPitchTrack_G729E_16s(tracked, track_), "pitch tracking");
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
                    index = random_.next();
                    sign = random_.next();
                }
                check_(low ? zepsDecodeFixedCodebook_G729D_16s(static_cast<Zep16s>(sign & 3),
                                                               static_cast<Zep16s>(index & 0x01ff), code)
                           : zepsDecodeFixedCodebook_G729_16s(static_cast<Zep16s>(sign & 15),
                                                              static_cast<Zep16s>(index & 0x1fff), code),
                       "fixed-codebook decoding");
                stat_bwd_ = 0;
            } else {
                Zep16s idx[5];
                for (int k = 0; k < 5; ++k) idx[k] = bfi ? random_.next() : q[k];
                check_(zepsDecodeFixedCodebook_G729E_16s(idx, mode, code), "fixed-codebook decoding");
                if (mode == 0) {
                    stat_bwd_ = 0;
                } else if (++stat_bwd_ >= 30) {
                    stationary = 1;
                    stat_bwd_ = 30;
                }
            }
            check_(zepsPitchSharpening_G729_16s_I(delay[0], sharp_, code), "pitch sharpening");

            // Gains.
            const Zep16s gain_code = q[high ? 5 : 2];
            if (!bfi)
                check_(low ? zepsDecodeGain_G729D_16s(gain_code, code, past_qua_en_, gains_)
                           : zepsDecodeGain_G729_16s(gain_code, code, past_qua_en_, gains_),
                       "gain decoding");
            else if (high)
                check_(zepsDecodeGainErased_G729E_16s(past_qua_en_, gains_, &c_muting_, count_bfi_, stationary),
                       "erased-frame gains");
            else
                check_(zepsDecodeGainErased_G729_16s(past_qua_en_, gains_), "erased-frame gains");
            sharp_ = bounded_sharp(gains_[0]);

            // Excitation: an erased frame keeps only the adaptive part of a
            // voiced frame and only the fixed part otherwise.
            Zep16s gp = gains_[0], gc = gains_[1];
            if (bfi) {
                ++count_bfi_;
                if (voicing_ == 0)
                    gp = 0;
                else
                    gc = 0;
            }
            check_(zepsMixExcitation_G729_16s_I(gp, gc, code, old_exc_ + kExcHistory + o, kSubfr), "excitation");
            if (low) {
                synthesise_dispersed(a_sub, o, code, synth);
            } else {
                synthesise(m_aq, a_sub, o, synth);
                if (rules_.all_frame_types)
                    check_(zepsPhaseDispersionUpdate_G729D_16s(gains_[0], gains_[1], disp_.data()),
                           "dispersion update");
            }
            a_sub += m_aq + 1;
        }
        return t0_first;
    }

    /// Synthesis of one subframe; on overflow the excitation buffer is
    /// scaled down by 4 and the subframe filtered again.
    void synthesise(int m, const Zep16s* a, int o, Zep16s* synth) {
        const Zep16s* cur = old_exc_ + kExcHistory + o;
        Zep16s* mem = mem_syn_ + kOrderBwd - m;
        const ZepStatus s = zepsSynthesisFilter_G729E_16s(m, a, cur, synth + o, kSubfr, mem, 0);
        check_(s, "synthesis filter");
        if (s == zepStsOverflow) {
            for (Zep16s& e : old_exc_) e = static_cast<Zep16s>(e >> 2);
            check_(zepsSynthesisFilter_G729E_16s(m, a, cur, synth + o, kSubfr, mem, 0), "synthesis filter");
        }
        std::memcpy(mem_syn_, synth + o + kSubfr - kOrderBwd, sizeof mem_syn_);
    }

    /// Synthesis of a 6.4 kbit/s subframe: the overflow test on the plain
    /// excitation (scaling the buffer down by 4), then the synthesis of the
    /// phase-dispersed excitation.
    void synthesise_dispersed(const Zep16s* a, int o, const Zep16s* code, Zep16s* synth) {
        const Zep16s* cur = old_exc_ + kExcHistory + o;
        Zep16s* mem = mem_syn_ + kOrderBwd - kOrder;
        const ZepStatus s = zepsSynthesisFilter_G729E_16s(kOrder, a, cur, synth + o, kSubfr, mem, 0);
        check_(s, "synthesis filter");
        if (s == zepStsOverflow)
            for (Zep16s& e : old_exc_) e = static_cast<Zep16s>(e >> 2);
        Zep16s dispersed[kSubfr];
        check_(zepsPhaseDispersion_G729D_16s(cur, gains_[1], gains_[0], code, dispersed, disp_.data()),
               "phase dispersion");
        check_(zepsSynthesisFilter_G729E_16s(kOrder, a, dispersed, synth + o, kSubfr, mem, 0), "synthesis filter");
        std::memcpy(mem_syn_, synth + o + kSubfr - kOrderBwd, sizeof mem_syn_);
    }

    /// The post-filter factors (11.8 kbit/s: eased off while backward mode
    /// dominates), the post-filter (without its harmonic part on
    /// comfort-noise frames) and the post-processing. A corrupt lag code can
    /// decode to 144, which the harmonic search bounds at 143.
    void post_filter(bool high, bool active, Zep16s mode, const Zep16s* az, int m, Zep16s t0_first,
                     const Zep16s* synth, Zep16s* out) {
        pf_.next(high, mode == 1 && dom_.dominant);
        const Zep16s lag = t0_first > kPitMax ? static_cast<Zep16s>(kPitMax) : t0_first;
        voicing_ = 0;
        for (int sf = 0; sf < 2; ++sf) {
            Zep16s v = 0;
            const Zep16s* a = az + sf * (m + 1);
            Zep16s* y = out + sf * kSubfr;
            const Zep16s* x = synth + sf * kSubfr;
            check_(active ? zepsPostFilter_G729E_16s(lag, x, a, y, &v, pf_.ga1, pf_.ga2, pf_.ga_harm, pf_.long_h, m,
                                                     post_.data())
                          : zepsPostFilterInactive_G729E_16s(x, a, y, pf_.ga1, pf_.ga2, pf_.long_h, m, post_.data()),
                   "post-filter");
            if (v != 0) voicing_ = v;
        }
        check_(zepsPostProcess_G729_16s_I(out, kFrame, hp_.data()), "post-processing");
    }

    const DecoderRules& rules_;
    Check check_;
    std::vector<std::uint8_t> post_, hp_, disp_, sid_gain_;
    LspDecoder lsp_{check_};
    BackwardLp bwd_{check_};
    BackwardDominance dom_;
    PostFactors pf_;
    ErasureRandom random_;
    Zep16s synth_buf_[kAnaBwd] = {};
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s mem_syn_[kOrderBwd] = {};
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
    // Annex B.
    Zep16s lsp_sid_[kOrder];
    Zep16s past_ftyp_ = k8k;
    Zep16s prev_post_type_ = k8k;
    Zep16s seed_cng_ = kSeedCng;
    Zep16s sid_sav_ = 0;
    Zep16s sh_sid_sav_ = 1;
};

}  // namespace

std::unique_ptr<zepsc_cli::FrameDecoder> make_g729i_decoder() { return std::make_unique<Decoder>(kAnnexI); }

std::unique_ptr<zepsc_cli::FrameDecoder> make_g729e_decoder() { return std::make_unique<Decoder>(kAnnexE); }

}  // namespace zepsc_g729

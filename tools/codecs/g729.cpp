// SPDX-License-Identifier: BSD-3-Clause
// The G.729 codec of the zepsc tool (ITU-T G.729 main body and Annex A,
// 8 kbit/s, each with or without the Annex B VAD, DTX and comfort noise),
// assembled from the public exports alone: the encoder and decoder of the
// ITU-T reference, stage by stage, in its order.
//
// Bitstreams: "bit", the ITU-T serial format (per 10 ms frame a SYNC word
// 0x6B21, a size word 80, then one 16-bit word a bit, 0x0081 = 1, 0x007F =
// 0); "g729", the RTP payload of RFC 3551 (10 bytes a frame, the 80 bits MSB
// first). In the serial format a frame with any bit word 0x0000 is erased,
// as the ITU-T decoders detect it. Annex B adds SID frames (size 16: the
// 15 SID bits and one padding bit 0x007F) and untransmitted frames (size 0,
// erased when the SYNC word is not 0x6B21); an erased frame is erased
// speech after a speech frame, an untransmitted frame otherwise (B.5).
#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "tools/codec.h"
#include "tools/codecs/g729_annex.h"
#include "tools/codecs/g729_annex_i.h"
#include "tools/codecs/g729_frame.h"
#include "zepsc.h"

namespace {

using zepsc_cli::CodecError;
using namespace zepsc_g729;

constexpr int kBits = 80;
constexpr int kSidBits = 16;  // 15 SID bits and one padding bit
constexpr Zep16s kSeedCng = 11111;  // INIT_SEED of the comfort-noise generator

/// Annex B frame types (the reference's ftyp).
enum FrameType : Zep16s { kUntransmitted = 0, kSpeech = 1, kSid = 2 };

enum class Variant { Main, AnnexA };

/// The codec a command runs: the main body or Annex A, with or without Annex B.
struct Setup {
    Variant variant = Variant::Main;
    bool annex_b = false;
};

/// A status of the library that the codec does not expect ends the run.
constexpr Check check{"G.729"};

/// The parameters of a speech frame in stream order (kBits8k).
using Params = std::array<Zep16s, kBits8k.size()>;

// ---- decoder ---------------------------------------------------------------

class Decoder final : public zepsc_cli::FrameDecoder {
public:
    Decoder(Setup setup, bool serial) : variant_(setup.variant), annex_b_(setup.annex_b), serial_(serial) {
        post_ = variant_ == Variant::AnnexA ? initialised_state(check, zepsPostFilterGetStateSize_G729A_16s,
                                                                zepsPostFilterInit_G729A_16s, "post-filter")
                                            : initialised_state(check, zepsPostFilterGetStateSize_G729_16s,
                                                                zepsPostFilterInit_G729_16s, "post-filter");
        hp_ = high_pass_state(check, kHighPass100, "post-processing");
        sid_gain_ = initialised_state(check, zepsSIDGainDecodeGetStateSize_G729B,
                                      zepsSIDGainDecodeInit_G729B, "SID gain");
    }
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }

    std::size_t decode(zepsc_cli::ByteSource& in, std::int16_t* pcm) override {
        std::uint8_t packed[kBits / 8] = {};  // the frame's bits, MSB first
        bool erased = false;
        Zep16s ftyp = kSpeech;
        if (serial_) {
            std::uint8_t head[4];
            if (!in.read_exact(head, 4, "frame header")) return 0;
            const unsigned size = head[2] | (head[3] << 8);
            ftyp = frame_type(size, in.position() - 4);
            if (ftyp == kUntransmitted) erased = (head[0] | (head[1] << 8)) != kSync;
            read_bit_words_packed(in, size, packed, erased);
        } else if (!in.read_exact(packed, kBits / 8, "frame")) {
            return 0;
        }
        // B.5: a lost frame is erased speech after speech, else comfort noise.
        if (erased && annex_b_) ftyp = past_ftyp_ == kSpeech ? kSpeech : kUntransmitted;

        Zep16s az[2 * (kOrder + 1)];
        Zep16s synth[kFrame];
        Zep16s lags[2];
        if (ftyp == kSpeech) {
            seed_cng_ = kSeedCng;
            Params prm{};
            packed_to_params(packed, kBits8k, prm.data());
            decode_speech(prm, erased, az, synth, lags);
        } else {
            decode_noise(ftyp, packed, az, synth, lags);
        }
        if (annex_b_ && !erased)
            check(zepsFrameEnergy_G729B_16s(old_exc_ + kExcHistory, &sid_sav_, &sh_sid_sav_), "frame energy");
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));
        past_ftyp_ = ftyp;
        post_filter(ftyp == kSpeech, az, synth, lags, pcm);
        return kFrame;
    }

private:
    /// The frame type a serial frame's size word gives.
    Zep16s frame_type(unsigned size, std::uint64_t at) const {
        if (size == kBits) return kSpeech;
        if (annex_b_ && size == kSidBits) return kSid;
        if (annex_b_ && size == 0) return kUntransmitted;
        throw CodecError("frame of " + std::to_string(size) + " bits at byte " + std::to_string(at) +
                         (annex_b_ ? ": G.729 Annex B frames have 80, 16 or 0"
                                   : ": G.729 frames have 80 (SID and untransmitted frames need --annex B or AB)"));
    }

    /// Decod_ld8k / Decod_ld8a of a speech (or erased speech) frame: the
    /// excitation of the two subframes and the synthesis.
    void decode_speech(Params prm, bool bfi, Zep16s* az, Zep16s* synth, Zep16s* lags) {
        lsp_.decode(prm[0], prm[1], bfi, az);

        Zep16s parity = 0;
        check(zepsParityPitch_G729_16s(prm[2], &parity), "pitch parity");
        const bool bad_pitch = bfi || parity != prm[3];

        for (int sf = 0; sf < 2; ++sf) {
            const int i_subfr = sf * kSubfr;
            Zep16s* exc = old_exc_ + i_subfr;  // the buffer as the adaptive-vector stage addresses it

            // Pitch delay, with the erasure rule of 4.4.1.
            Zep16s delay[2];
            lags_.next(sf == 0 ? !bad_pitch : !bfi, delay, [&](Zep16s* d) {
                check(zepsDecodeLag_G729_16s(sf == 0 ? prm[2] : prm[7], static_cast<Zep16s>(sf), d),
                      "pitch delay decoding");
            });
            lags[sf] = delay[0];
            check(zepsDecodeAdaptiveVector_G729_16s_I(delay, exc), "adaptive vector");

            // Fixed-codebook vector, random codes on an erased frame.
            Zep16s index = sf == 0 ? prm[4] : prm[8];
            Zep16s sign = sf == 0 ? prm[5] : prm[9];
            if (bfi) {
                index = static_cast<Zep16s>(random_.next() & 0x1fff);
                sign = static_cast<Zep16s>(random_.next() & 0x000f);
            }
            Zep16s code[kSubfr];
            check(zepsDecodeFixedCodebook_G729_16s(sign, index, code), "fixed-codebook decoding");
            check(zepsPitchSharpening_G729_16s_I(delay[0], sharp_, code), "pitch sharpening");

            // Gains.
            if (bfi)
                check(zepsDecodeGainErased_G729_16s(past_qua_en_, gains_), "erased-frame gains");
            else
                check(zepsDecodeGain_G729_16s(sf == 0 ? prm[6] : prm[10], code, past_qua_en_, gains_),
                      "gain decoding");
            sharp_ = bounded_sharp(gains_[0]);

            // Excitation: on an erased frame the main body keeps only the
            // adaptive part of a voiced frame and only the fixed part otherwise.
            Zep16s gp = gains_[0], gc = gains_[1];
            if (bfi && variant_ == Variant::Main) {
                if (voicing_ == 0)
                    gp = 0;
                else
                    gc = 0;
            }
            check(zepsMixExcitation_G729_16s_I(gp, gc, code, exc + kExcHistory, kSubfr), "excitation");
            synthesise(az + sf * (kOrder + 1), i_subfr, synth);
        }
    }

    /// Dec_cng (Annex B B.5): the comfort-noise gain, on a SID frame the
    /// new filter, the random excitation and the synthesis.
    void decode_noise(Zep16s ftyp, const std::uint8_t* packed, Zep16s* az, Zep16s* synth, Zep16s* lags) {
        Zep16s sid[kBitsSid.size()] = {};
        if (ftyp == kSid) packed_to_params(packed, kBitsSid, sid);
        Zep16s gain = 0;
        check(zepsSIDGainDecode_G729B_16s(ftyp, sid[3], past_ftyp_, sid_sav_, sh_sid_sav_, &gain, sid_gain_.data()),
              "SID gain decoding");
        if (ftyp == kSid) {
            Zep16s lsf[kOrder];
            check(zepsLSFDecode_G729B_16s(sid, &lsp_.freq_prev[0][0], lsf), "SID LSF decoding");
            check(zepsLSFToLSP_G729_16s(lsf, lsp_sid_), "LSF to LSP");
        }
        check(zepsCNGExcitation_G729B_16s(gain, old_exc_, &seed_cng_, nullptr), "comfort-noise excitation");
        interpolate_filters(check, lsp_.lsp_old, lsp_sid_, az);
        std::memcpy(lsp_.lsp_old, lsp_sid_, sizeof lsp_.lsp_old);
        for (int sf = 0; sf < 2; ++sf) {
            synthesise(az + sf * (kOrder + 1), sf * kSubfr, synth);
            lags[sf] = lags_.old_t0;
        }
        sharp_ = kSharpMin;
    }

    /// Synthesis of one subframe; on overflow the whole excitation buffer
    /// is scaled down by 4 and the subframe filtered again.
    void synthesise(const Zep16s* a, int i_subfr, Zep16s* synth) {
        const Zep16s* cur = old_exc_ + kExcHistory + i_subfr;
        const ZepStatus s = zepsSynthesisFilter_G729_16s(a, cur, synth + i_subfr, kSubfr, mem_syn_, 0);
        check(s, "synthesis filter");
        if (s == zepStsOverflow) {
            for (Zep16s& e : old_exc_) e = static_cast<Zep16s>(e >> 2);
            check(zepsSynthesisFilter_G729_16s(a, cur, synth + i_subfr, kSubfr, mem_syn_, 1), "synthesis filter");
        } else {
            std::memcpy(mem_syn_, synth + i_subfr + kSubfr - kOrder, sizeof mem_syn_);
        }
    }

    /// The post-filter (without its long-term part on comfort-noise frames,
    /// Annex B) and the post-processing.
    void post_filter(bool speech, const Zep16s* az, const Zep16s* synth, const Zep16s* lags, Zep16s* out) {
        if (variant_ == Variant::AnnexA) {
            std::memcpy(out, synth, kFrame * sizeof(Zep16s));
            for (int sf = 0; sf < 2; ++sf) {
                const Zep16s* a = az + sf * (kOrder + 1);
                check(speech ? zepsPostFilter_G729A_16s(lags[sf], a, out + sf * kSubfr, post_.data())
                             : zepsPostFilterInactive_G729A_16s(a, out + sf * kSubfr, post_.data()),
                      "post-filter");
            }
        } else {
            voicing_ = post_filter_main(check, lags[0], speech, az, synth, out, post_.data());
        }
        check(zepsPostProcess_G729_16s_I(out, kFrame, hp_.data()), "post-processing");
    }

    Variant variant_;
    bool annex_b_;
    bool serial_;
    std::vector<std::uint8_t> post_, hp_, sid_gain_;
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    LspDecoder lsp_{check};
    LagMemory lags_;
    ErasureRandom random_;
    Zep16s mem_syn_[kOrder] = {};
    Zep16s sharp_ = kSharpMin;
    Zep16s gains_[2] = {0, 0};
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep16s voicing_ = 60;
    // Annex B.
    Zep16s lsp_sid_[kOrder] = {31441, 27566, 21458, 13612, 4663, -4663, -13612, -21458, -27566, -31441};
    Zep16s past_ftyp_ = kSpeech;
    Zep16s seed_cng_ = kSeedCng;
    Zep16s sid_sav_ = 0;
    Zep16s sh_sid_sav_ = 1;
};


// ---- encoder ---------------------------------------------------------------

constexpr Zep16s kGamma1A = 24576;  // 0.75, Annex A weighting

class Encoder final : public zepsc_cli::FrameEncoder {
public:
    Encoder(Setup setup, bool serial) : variant_(setup.variant), dtx_on_(setup.annex_b), serial_(serial) {
        hp_ = high_pass_state(check, kHighPass140, "pre-processing");
        vad_ = initialised_state(check, zepsVADGetStateSize_G729B, zepsVADInit_G729B, "VAD");
        dtx_ = initialised_state(check, zepsDTXGetStateSize_G729B, zepsDTXInit_G729B, "DTX");
        prev_filter_[0] = 4096;
    }
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return kFrame; }

    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        Zep16s* new_speech = old_speech_ + kWindow - kFrame;
        std::memcpy(new_speech, pcm, kFrame * sizeof(Zep16s));
        frame_ = frame_ == 32767 ? Zep16s{256} : static_cast<Zep16s>(frame_ + 1);
        check(zepsHighPassFilter_G729_16s_ISfs(new_speech, kFrame, 12, hp_.data()), "pre-processing");
        Params prm{};
        const Zep16s ftyp = variant_ == Variant::AnnexA ? code_frame(prm) : code_frame_main(prm);
        std::memmove(old_speech_, old_speech_ + kFrame, (kWindow - kFrame) * sizeof(Zep16s));
        std::memmove(old_wsp_, old_wsp_ + kFrame, kPitMax * sizeof(Zep16s));
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));
        if (ftyp == kSpeech)
            write_speech(prm, out);
        else
            write_noise(ftyp, out);
    }

private:
    void write_speech(const Params& prm, std::vector<std::uint8_t>& out) const {
        std::uint8_t bits[kBits];
        params_to_bits(prm.data(), kBits8k, bits);
        write_frame_bits(bits, kBits, serial_, out);
    }

    /// A SID frame (15 bits and the padding bit) or an untransmitted frame.
    void write_noise(Zep16s ftyp, std::vector<std::uint8_t>& out) const {
        std::uint8_t bits[kSidBits] = {};
        params_to_bits(sid_.data(), kBitsSid, bits);
        write_frame_bits(bits, ftyp == kSid ? kSidBits : 0, true, out);
    }

    /// Autocorrelation (12 lags for the VAD), lag window, Levinson-Durbin
    /// (the last stable filter and its first two reflection coefficients
    /// kept when unstable: one record shared with the DTX stage) and the
    /// LSPs. r keeps the autocorrelation before the lag window for the DTX.
    void analyse(Zep32s* r, Zep32s* rw, Zep16s& exp_r0, Zep16s* a, Zep16s* rc, Zep16s* lsp_new) {
        check(zepsAutoCorr_G729B(old_speech_, &exp_r0, r), "autocorrelation");
        std::memcpy(rw, r, 13 * sizeof(Zep32s));
        check(zepsLagWindow_G729_32s_I(rw + 1, 12), "lag window");
        lp_filter_or_last_stable(check, rw, a, rc, prev_filter_);
        check(variant_ == Variant::AnnexA ? zepsLPCToLSP_G729A_16s(a, lsp_.old, lsp_new)
                                          : zepsLPCToLSP_G729_16s(a, lsp_.old, lsp_new),
              "LP to LSP");
    }

    /// Annex B B.3: the VAD decision and the DTX autocorrelation history
    /// (always 1 without Annex B).
    Zep16s voice_activity(const Zep32s* r, const Zep32s* rw, Zep16s exp_r0, Zep16s rc1, const Zep16s* lsp_new) {
        if (!dtx_on_) return 1;
        Zep16s lsf[kOrder], vad = 1;
        check(zepsLSPToLSF_Norm_G729_16s(lsp_new, lsf), "LSP to LSF");
        check(zepsVAD_G729B_16s(rc1, lsf, rw, exp_r0, old_speech_, frame_, past_vad_, ppast_vad_, &vad, vad_.data()),
              "VAD");
        check(zepsDTXUpdate_G729B_16s(r, exp_r0, vad, dtx_.data()), "DTX update");
        return vad;
    }

    /// Cod_cng (Annex B B.4): the DTX decision, on a SID frame the SID
    /// parameters, the comfort-noise excitation with the taming update, and
    /// the quantised filters of the frame (aq, 2 x 11).
    Zep16s comfort_noise(Zep16s* aq) {
        Zep16s ftyp = 0, lpc[kOrder + 1], gain_idx = 0, gain = 0;
        check(zepsDTX_G729B_16s(past_vad_, prev_filter_, &ftyp, lpc, &gain_idx, &gain, dtx_.data()), "DTX");
        if (ftyp == kSid) {
            Zep16s lsp[kOrder], idx[3];
            check(variant_ == Variant::AnnexA ? zepsLPCToLSP_G729A_16s(lpc, lsp_.old_q, lsp)
                                              : zepsLPCToLSP_G729_16s(lpc, lsp_.old_q, lsp),
                  "LP to LSP");
            check(zepsLSPQuant_G729B_16s(lsp, &lsp_.freq_prev[0][0], lsp_sid_, idx), "SID LSP quantisation");
            sid_ = {idx[0], idx[1], idx[2], gain_idx};
        }
        comfort_noise_excitation(check, gain, old_exc_, &seed_, exc_err_, lsp_.old_q, lsp_sid_, aq);
        sharp_ = kSharpMin;
        return ftyp;
    }

    void next_vad(Zep16s vad) {
        ppast_vad_ = past_vad_;
        past_vad_ = vad;
        if (vad == 1) seed_ = kSeedCng;
    }

    /// Coder_ld8a: LP analysis and quantisation, weighting, open-loop pitch,
    /// then per subframe the target, the adaptive and fixed codebooks and the
    /// gains; with Annex B an inactive frame codes comfort noise instead.
    Zep16s code_frame(Params& prm) {
        const Zep16s* speech = old_speech_ + kSpeechAt;
        Zep32s r[13], rw[13];
        Zep16s exp_r0 = 0, a[kOrder + 1], rc[kOrder], lsp_new[kOrder];
        analyse(r, rw, exp_r0, a, rc, lsp_new);
        const Zep16s vad = voice_activity(r, rw, exp_r0, rc[1], lsp_new);
        Zep16s aq[2 * (kOrder + 1)], ap[2 * (kOrder + 1)];
        Zep16s* exc = old_exc_ + kExcHistory;
        Zep16s* wsp = old_wsp_ + kPitMax;
        if (vad == 0) {
            const Zep16s ftyp = comfort_noise(aq);
            next_vad(vad);
            // Weighted speech and the target memory follow the comfort noise.
            for (int sf = 0; sf < 2; ++sf) {
                const int o = sf * kSubfr;
                Zep16s xn[kSubfr], ap1[kOrder + 1];
                check(zepsResidual_G729_16s(aq + sf * (kOrder + 1), speech + o, xn, kSubfr), "LPC residual");
                check(zepsWeightLPC_G729_16s(aq + sf * (kOrder + 1), kGamma1A, ap), "weighting");
                check(zepsWeightingDenominator_G729A_16s(ap, ap1), "weighting filter");
                check(zepsSynthesisFilter_G729_16s(ap1, xn, wsp + o, kSubfr, mem_w_, 1), "weighting filter");
                Zep16s diff[kSubfr];  // residual - excitation: the update with a gain of 1.0 (Q14)
                check(zepsAdaptiveCodebookContribution_G729_16s(16384, exc + o, xn, diff), "target memory");
                check(zepsSynthesisFilter_G729_16s(ap, diff, xn, kSubfr, mem_w0_, 1), "target memory");
            }
            return ftyp;
        }
        next_vad(vad);
        quantise_lsp(check, lsp_new, &lsp_.freq_prev[0][0], lsp_.old_q, aq, prm.data());
        for (int sf = 0; sf < 2; ++sf)
            check(zepsWeightLPC_G729_16s(aq + sf * (kOrder + 1), kGamma1A, ap + sf * (kOrder + 1)), "weighting");
        std::memcpy(lsp_.old, lsp_new, sizeof lsp_.old);

        // LPC residual and weighted speech of the frame.
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            check(zepsResidual_G729_16s(aq + sf * (kOrder + 1), speech + o, exc + o, kSubfr), "LPC residual");
            Zep16s ap1[kOrder + 1];
            check(zepsWeightingDenominator_G729A_16s(ap + sf * (kOrder + 1), ap1), "weighting filter");
            check(zepsSynthesisFilter_G729_16s(ap1, exc + o, wsp + o, kSubfr, mem_w_, 1), "weighting filter");
        }
        Zep16s t_op = 0;
        check(zepsOpenLoopPitchSearch_G729A_16s(wsp, &t_op), "open-loop pitch");

        Zep16s t0_first = 0;
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            const Zep16s* a_w = ap + sf * (kOrder + 1);
            Zep16s zero[kOrder] = {};

            // Impulse response of the weighted synthesis filter, target.
            Zep16s h1[kSubfr] = {4096};
            check(zepsSynthesisFilter_G729_16s(a_w, h1, h1, kSubfr, zero, 0), "impulse response");
            Zep16s xn[kSubfr];
            check(zepsSynthesisFilter_G729_16s(a_w, exc + o, xn, kSubfr, mem_w0_, 0), "target");

            // Adaptive codebook.
            Zep16s delay[2], adapt[kSubfr];
            check(zepsAdaptiveCodebookSearch_G729A_16s(sf == 0 ? t_op : t0_first, xn, h1, old_exc_ + o, delay, adapt,
                                                       static_cast<Zep16s>(sf)),
                  "closed-loop pitch");
            code_lag(delay, sf, t0_first, prm);
            Zep16s y1[kSubfr];
            check(zepsSynthesisFilter_G729_16s(a_w, exc + o, y1, kSubfr, zero, 0),
                  "filtered adaptive vector");
            Zep16s gain_pit = 0, taming = 0;
            check(zepsPitchGain_G729_16s(xn, y1, &gain_pit), "pitch gain");
            check(zepsTamingTest_G729_16s(exc_err_, delay, &taming), "taming test");
            if (taming == 1 && gain_pit > kGpClip) gain_pit = kGpClip;
            Zep16s xn2[kSubfr];
            check(zepsAdaptiveCodebookContribution_G729_16s(gain_pit, y1, xn, xn2), "codebook target");

            // Fixed codebook.
            Zep16s code[kSubfr], y2[kSubfr], cidx[2];
            check(zepsFixedCodebookSearch_G729A_16s(xn2, h1, delay[0], sharp_, code, y2, cidx), "fixed codebook");
            prm[sf == 0 ? 4 : 8] = cidx[0];
            prm[sf == 0 ? 5 : 9] = cidx[1];

            // Gains, excitation and memories.
            Zep16s gains[2];
            check(zepsGainQuant_G729_16s(xn, y1, code, y2, past_qua_en_, taming, gains, &prm[sf == 0 ? 6 : 10]),
                  "gain quantisation");
            sharp_ = bounded_sharp(gains[0]);
            check(zepsMixExcitation_G729_16s_I(gains[0], gains[1], code, exc + o, kSubfr), "excitation");
            check(zepsTamingUpdate_G729_16s(gains[0], delay[0], exc_err_), "taming update");
            check(zepsWeightedErrorMemory_G729_16s(gains[0], gains[1], xn, y1, y2, mem_w0_), "weighting memory");
        }
        return kSpeech;
    }

    /// The pitch-delay code of subframe sf: P1 with its parity P0 (the delay
    /// becomes t0_first, which subframe 2's code is relative to), or P2.
    static void code_lag(const Zep16s* delay, int sf, Zep16s& t0_first, Params& prm) {
        Zep16s index = 0;
        check(zepsEncodeLag_G729_16s(delay, t0_first, static_cast<Zep16s>(sf), &index), "pitch-delay code");
        if (sf == 0) {
            t0_first = delay[0];
            prm[2] = index;
            check(zepsParityPitch_G729_16s(index, &prm[3]), "pitch parity");
        } else {
            prm[7] = index;
        }
    }

    /// Coder_ld8k: the main body's chain, with the unquantised filter for
    /// the weighting, adaptive weighting factors, the error filter memory,
    /// convolution for the filtered adaptive vector and the 17-bit search;
    /// with Annex B an inactive frame codes comfort noise instead.
    Zep16s code_frame_main(Params& prm) {
        const Zep16s* speech = old_speech_ + kSpeechAt;
        Zep32s r[13], rw[13];
        Zep16s exp_r0 = 0, rc[kOrder], lsp_new[kOrder];
        Zep16s a_t[2 * (kOrder + 1)], aq[2 * (kOrder + 1)], gamma[4];
        analyse(r, rw, exp_r0, a_t + kOrder + 1, rc, lsp_new);
        const Zep16s vad = voice_activity(r, rw, exp_r0, rc[1], lsp_new);
        weighting_factors(check, lsp_.old, lsp_new, rc, weighting_mem_, a_t, gamma);

        Zep16s* exc = old_exc_ + kExcHistory;
        Zep16s* wsp = old_wsp_ + kPitMax;
        Zep16s ap1[2][kOrder + 1], ap2[2][kOrder + 1];
        weighted_speech(check, a_t, gamma, speech, wsp, mem_w_, ap1, ap2);
        if (vad == 0) {
            const Zep16s ftyp = comfort_noise(aq);
            next_vad(vad);
            // Local synthesis, error and target memories follow the comfort noise.
            for (int sf = 0; sf < 2; ++sf) {
                const int o = sf * kSubfr;
                // The error follows its last 10 samples: the inverse filter reads them.
                Zep16s synth[kSubfr], error[kOrder + kSubfr], xn[kSubfr];
                std::memcpy(error, mem_err_, sizeof mem_err_);
                check(zepsSynthesisFilter_G729_16s(aq + sf * (kOrder + 1), exc + o, synth, kSubfr, mem_syn_, 1),
                      "local synthesis");
                check(zepsAdaptiveCodebookContribution_G729_16s(16384, synth, speech + o, error + kOrder),
                      "error memory");
                check(zepsResidual_G729_16s(ap1[sf], error + kOrder, xn, kSubfr), "target memory");
                check(zepsSynthesisFilter_G729_16s(ap2[sf], xn, xn, kSubfr, mem_w0_, 1), "target memory");
                std::memcpy(mem_err_, error + kSubfr, sizeof mem_err_);
            }
            return ftyp;
        }
        next_vad(vad);
        quantise_lsp(check, lsp_new, &lsp_.freq_prev[0][0], lsp_.old_q, aq, prm.data());

        Zep16s t_op = 0;
        check(zepsOpenLoopPitchSearch_G729_16s(wsp, &t_op), "open-loop pitch");

        Zep16s t0_first = 0;
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            const Zep16s* a_q = aq + sf * (kOrder + 1);
            Zep16s h1[kSubfr], xn[kSubfr];
            main_target(check, a_q, ap1[sf], ap2[sf], speech + o, exc + o, mem_err_, mem_w0_, h1, xn);

            // Adaptive codebook.
            Zep16s delay[2], adapt[kSubfr];
            check(zepsAdaptiveCodebookSearch_G729_16s(sf == 0 ? t_op : t0_first, xn, h1, old_exc_ + o, delay, adapt,
                                                      static_cast<Zep16s>(sf)),
                  "closed-loop pitch");
            code_lag(delay, sf, t0_first, prm);
            Zep16s y1[kSubfr], xn2[kSubfr], taming = 0;
            tamed_pitch_gain(check, xn, h1, adapt, exc_err_, delay, y1, xn2, taming);

            // Fixed codebook.
            Zep16s code[kSubfr], y2[kSubfr], cidx[2];
            check(zepsFixedCodebookSearch_G729_16s(xn2, h1, delay[0], sharp_, static_cast<Zep16s>(sf), &budget_, code,
                                                   y2, cidx),
                  "fixed codebook");
            prm[sf == 0 ? 4 : 8] = cidx[0];
            prm[sf == 0 ? 5 : 9] = cidx[1];

            // Gains, excitation, synthesis and memories.
            Zep16s gains[2];
            check(zepsGainQuant_G729_16s(xn, y1, code, y2, past_qua_en_, taming, gains, &prm[sf == 0 ? 6 : 10]),
                  "gain quantisation");
            sharp_ = bounded_sharp(gains[0]);
            main_subframe_memories(check, gains, code, delay[0], a_q, speech + o, xn, y1, y2, exc + o, exc_err_,
                                   mem_syn_, mem_err_, mem_w0_);
        }
        return kSpeech;
    }

    Variant variant_;
    bool dtx_on_;
    bool serial_;
    std::vector<std::uint8_t> hp_, vad_, dtx_;
    Zep16s old_speech_[kWindow] = {};
    Zep16s old_wsp_[kPitMax + kFrame] = {};
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s mem_w_[kOrder] = {};
    Zep16s mem_w0_[kOrder] = {};
    LspEncoderMemory lsp_;
    Zep16s prev_filter_[kOrder + 3] = {};  // last stable A(z) and its rc[0], rc[1]
    Zep16s sharp_ = kSharpMin;
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep32s exc_err_[4] = {0x4000, 0x4000, 0x4000, 0x4000};
    // Main body only.
    Zep16s mem_err_[kOrder] = {};
    Zep16s mem_syn_[kOrder] = {};
    Zep16s weighting_mem_[3] = {0, 0, 1};
    Zep16s budget_ = 30;
    // Annex B.
    Zep16s frame_ = 0;
    Zep16s past_vad_ = 1;
    Zep16s ppast_vad_ = 1;
    Zep16s seed_ = kSeedCng;
    Zep16s lsp_sid_[kOrder] = {};  // written by the first SID frame, which always comes first
    std::array<Zep16s, 4> sid_{};
};

/// Annex E (the decoder of tools/codecs/g729i.cpp under Annex E's rules): the .bit format, --rate 8 or 11.8, no DTX.
bool annex_e_of(const zepsc_cli::CodecOptions& o, const std::string& format) {
    if (o.get("annex", "0") != "E") return false;
    if (format != "bit") throw CodecError("Annex E streams (118-bit frames) need the .bit serial format");
    if (o.has("dtx")) throw CodecError("--dtx needs Annex B: --annex B or AB (or I)");
    if (o.get("rate", "11.8") == "6.4") throw CodecError("--rate 6.4 needs --annex D or I");
    return true;
}

Setup setup_of(const zepsc_cli::CodecOptions& o, const std::string& format) {
    const std::string annex = o.get("annex", "0");
    if (annex != "0" && annex != "A" && annex != "B" && annex != "AB")
        throw CodecError("--annex " + annex + " is not available yet: this build codes the main body (0), Annex A, " +
                         "Annex B on either (B, AB), Annex D and Annex E");
    Setup setup;
    setup.variant = annex == "A" || annex == "AB" ? Variant::AnnexA : Variant::Main;
    setup.annex_b = annex == "B" || annex == "AB";
    if (o.has("dtx") && !setup.annex_b) throw CodecError("--dtx needs Annex B: --annex B or AB");
    if (setup.annex_b && format != "bit")
        throw CodecError("Annex B streams (SID and untransmitted frames) need the .bit serial format");
    if (o.get("rate", "8") != "8") throw CodecError("--rate " + o.get("rate") + " needs --annex D, E or I");
    if (o.has("ratefile")) throw CodecError("--ratefile needs --annex E or I");
    return setup;
}

/// Annex I (tools/codecs/g729i.cpp): the .bit format; every frame's rate
/// and type come from its size word.
bool is_annex_i(const zepsc_cli::CodecOptions& o, const std::string& format) {
    if (o.get("annex", "0") != "I") return false;
    if (format != "bit") throw CodecError("Annex I streams (SID and untransmitted frames) need the .bit serial format");
    return true;
}

/// The Annex I encoder: --rate 6.4, 8 or 11.8, or --ratefile (one 16-bit
/// little-endian code a frame: 0 = 6.4, 1 = 8, 2 = 11.8), with or without
/// --dtx (the VAD and DTX of Annex B).
zepsc_g729::RateI annex_i_rate(const zepsc_cli::CodecOptions& o) {
    const std::string rate = o.get("rate", "8");
    if (rate == "6.4") return zepsc_g729::RateI::R6k4;
    if (rate == "11.8") return zepsc_g729::RateI::R11k8;
    if (rate != "8") throw CodecError("--rate " + rate + ": Annex I codes 6.4, 8 or 11.8 kbit/s");
    return zepsc_g729::RateI::R8k;
}

/// The codes of a rate file (one 16-bit little-endian code a frame, as the
/// ITU switching sequences use), each at most max_code; empty without
/// --ratefile. `legend` says what the codes mean, for the error message.
std::vector<unsigned> read_rate_codes(const zepsc_cli::CodecOptions& o, unsigned max_code, const char* legend) {
    std::vector<unsigned> codes;
    if (!o.has("ratefile")) return codes;
    const std::string path = o.get("ratefile");
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) throw CodecError("cannot open the rate file " + path);
    std::uint8_t w[2];
    while (std::fread(w, 1, 2, f) == 2) {
        const unsigned code = w[0] | (w[1] << 8);
        if (code > max_code) {
            std::fclose(f);
            throw CodecError("rate file " + path + ": code " + std::to_string(code) + " at frame " +
                             std::to_string(codes.size()) + " (" + legend + ")");
        }
        codes.push_back(code);
    }
    std::fclose(f);
    return codes;
}

std::vector<zepsc_g729::RateI> annex_i_schedule(const zepsc_cli::CodecOptions& o) {
    std::vector<zepsc_g729::RateI> schedule;
    for (const unsigned code : read_rate_codes(o, 2, "Annex I: 0 = 6.4, 1 = 8, 2 = 11.8 kbit/s"))
        schedule.push_back(static_cast<zepsc_g729::RateI>(code));
    return schedule;
}

// ---- Annex D (tools/codecs/g729d.cpp) ---------------------------------------

bool is_annex_d(const zepsc_cli::CodecOptions& o) { return o.get("annex", "0") == "D"; }

/// Annex D options: --rate 6.4 (the default) or 8, --ratefile one 16-bit
/// little-endian code a frame (0 = 6.4, 1 = 8), as the ITU switching
/// sequences use; no DTX.
zepsc_g729::RateD annex_d_rate(const zepsc_cli::CodecOptions& o) {
    if (o.has("dtx")) throw CodecError("--dtx is not available with --annex D (Annex D has no VAD/DTX of its own)");
    const std::string rate = o.get("rate", "6.4");
    if (rate != "6.4" && rate != "8") throw CodecError("--rate " + rate + ": Annex D codes 6.4 or 8 kbit/s");
    return rate == "8" ? zepsc_g729::RateD::R8k : zepsc_g729::RateD::R6k4;
}

std::vector<zepsc_g729::RateD> annex_d_schedule(const zepsc_cli::CodecOptions& o) {
    std::vector<zepsc_g729::RateD> schedule;
    for (const unsigned code : read_rate_codes(o, 1, "Annex D: 0 = 6.4, 1 = 8 kbit/s"))
        schedule.push_back(code == 0 ? zepsc_g729::RateD::R6k4 : zepsc_g729::RateD::R8k);
    return schedule;
}

/// The Annex E encoder is the integrated (Annex I) encoder held to 8 and
/// 11.8 kbit/s without DTX: --rate 11.8 (the default) or 8, or --ratefile
/// (0 = 8, 1 = 11.8, as the ITU sequences' SWITCH file).
zepsc_g729::RateI annex_e_rate(const zepsc_cli::CodecOptions& o) {
    return o.get("rate", "11.8") == "11.8" ? zepsc_g729::RateI::R11k8 : zepsc_g729::RateI::R8k;
}

std::vector<zepsc_g729::RateI> annex_e_schedule(const zepsc_cli::CodecOptions& o) {
    std::vector<zepsc_g729::RateI> schedule;
    for (const unsigned code : read_rate_codes(o, 1, "Annex E: 0 = 8, 1 = 11.8 kbit/s"))
        schedule.push_back(code == 1 ? zepsc_g729::RateI::R11k8 : zepsc_g729::RateI::R8k);
    return schedule;
}

zepsc_cli::CodecSpec make_spec() {
    zepsc_cli::CodecSpec s;
    s.name = "g729";
    s.summary = "ITU-T G.729 CS-ACELP 8 kbit/s speech codec (main body, Annexes A, B, D, E and I)";
    s.help =
        "Input and output: 8 kHz 16-bit PCM; the encoder codes whole 80-sample frames and drops a\n"
        "final partial frame, as the ITU-T reference does. Bitstreams: .bit, the ITU-T serial\n"
        "format (SYNC 0x6B21, size 80, one word a bit: 0x0081 = 1, 0x007F = 0; a frame with a\n"
        "0x0000 bit word is decoded as erased); .g729, RTP payloads back to back (RFC 3551,\n"
        "10 bytes a frame). --annex 0 is the main body, A the reduced-complexity Annex A; the\n"
        "two decode each other's streams. --annex B (main body) and AB (Annex A) add Annex B:\n"
        "the encoder always runs the VAD with DTX (--dtx is implied; with --annex 0 or A it is\n"
        "refused), sending SID frames (size 16: 15 bits and a padding bit 0x007F) and\n"
        "untransmitted frames (size 0); the decoder adds comfort noise and also decodes plain\n"
        "streams. An erased frame (a 0x0000 bit word, or SYNC other than 0x6B21 on a size-0\n"
        "frame) is erased speech after speech, else comfort noise. Annex B needs the .bit format.\n"
        "--annex D is the 6.4 kbit/s extension (64-bit frames, size word 64); --rate 8 codes its\n"
        "8 kbit/s frames and --ratefile FILE (one 16-bit little-endian code a frame: 0 = 6.4,\n"
        "1 = 8) switches rate per frame; its decoder takes each frame's rate from the size word\n"
        "(RTP payloads: 8 or 10 bytes a frame at --rate) and treats a frame with a 0x0000 bit\n"
        "word as erased. --annex E is the 11.8 kbit/s extension (.bit only; frames of 118 bits\n"
        "with the LPC mode bit and its repeat, or 80 bits): its decoder decodes both frame sizes;\n"
        "a frame is erased when a bit word but the last two is 0x0000 or the mode bit and its\n"
        "repeat differ. Its encoder codes 11.8 kbit/s (choosing forward or backward LPC each\n"
        "frame), --rate 8, or --ratefile FILE (0 = 8, 1 = 11.8). --annex I is the integrated\n"
        "coder (.bit only): its decoder decodes 118-, 80- and 64-bit frames, SID (16) and\n"
        "untransmitted (0) frames with one state; a frame with a 0x0000 bit word (or mode\n"
        "bits that differ, or an untransmitted frame's SYNC other than 0x6B21) is erased and\n"
        "decoded at the previous frame's rate. Its encoder codes --rate 6.4, 8 or 11.8 (at 11.8\n"
        "choosing forward or backward LPC each frame) or --ratefile FILE (0 = 6.4, 1 = 8,\n"
        "2 = 11.8) with one state, and --dtx adds the VAD with SID and untransmitted frames.";
    s.options = {
        {"annex", "0 (main body), A, B, AB, D, E or I", {"0", "A", "B", "AB", "D", "E", "I"}, "0", false},
        {"rate", "bit rate in kbit/s: 6.4, 8 or 11.8 (Annexes D, E, I); default 8, with --annex D 6.4, with --annex E 11.8",
         {"6.4", "8", "11.8"}, "", false},
        {"dtx", "voice activity detection and discontinuous transmission (Annex B)", {}, "", true},
        {"ratefile", "file of one 16-bit rate code a frame: Annex E 0 = 8, 1 = 11.8; Annex I 0 = 6.4, 1 = 8, 2 = 11.8", {}, "", false},
    };
    s.formats = {"bit", "g729"};
    s.pad_last_frame = false;
    s.make_encoder = [](const zepsc_cli::CodecOptions& o,
                        const std::string& format) -> std::unique_ptr<zepsc_cli::FrameEncoder> {
        if (is_annex_d(o))
            return zepsc_g729::make_g729d_encoder(annex_d_rate(o), annex_d_schedule(o), format == "bit");
        if (annex_e_of(o, format))
            return zepsc_g729::make_g729i_encoder(annex_e_rate(o), annex_e_schedule(o), false);
        if (is_annex_i(o, format))
            return zepsc_g729::make_g729i_encoder(annex_i_rate(o), annex_i_schedule(o), o.has("dtx"));
        return std::make_unique<Encoder>(setup_of(o, format), format == "bit");
    };
    s.make_decoder = [](const zepsc_cli::CodecOptions& o,
                        const std::string& format) -> std::unique_ptr<zepsc_cli::FrameDecoder> {
        if (is_annex_d(o)) {
            if (o.has("ratefile")) throw CodecError("--ratefile is an encoder option: the decoder reads each frame's rate");
            return zepsc_g729::make_g729d_decoder(annex_d_rate(o), format == "bit");
        }
        if (annex_e_of(o, format)) return zepsc_g729::make_g729e_decoder();
        if (is_annex_i(o, format)) {
            if (o.has("ratefile")) throw CodecError("--ratefile is an encoder option: the decoder reads each frame's rate");
            return zepsc_g729::make_g729i_decoder();
        }
        return std::make_unique<Decoder>(setup_of(o, format), format == "bit");
    };
    return s;
}

const zepsc_cli::CodecRegistration registration{make_spec()};

}  // namespace

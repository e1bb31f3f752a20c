// SPDX-License-Identifier: BSD-3-Clause
// The G.729 codec of the zepsc tool (ITU-T G.729 main body and Annex A,
// 8 kbit/s), assembled from the public exports alone: the encoder and
// decoder of the ITU-T reference, stage by stage, in its order.
//
// Bitstreams: "bit", the ITU-T serial format (per 10 ms frame a SYNC word
// 0x6B21, a size word 80, then one 16-bit word a bit, 0x0081 = 1, 0x007F =
// 0); "g729", the RTP payload of RFC 3551 (10 bytes a frame, the 80 bits MSB
// first). In the serial format a frame with any bit word 0x0000 is erased,
// as the ITU-T decoders detect it.
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "tools/codec.h"
#include "zepsc.h"

namespace {

using zepsc_cli::CodecError;

constexpr int kFrame = 80;
constexpr int kSubfr = 40;
constexpr int kOrder = 10;
constexpr int kPitMax = 143;
constexpr int kExcHistory = kPitMax + 11;  // PIT_MAX + L_INTERPOL
constexpr int kBits = 80;
constexpr int kPrmSize = 11;
constexpr Zep16s kSharpMin = 3277;   // 0.2 in Q14
constexpr Zep16s kSharpMax = 13017;  // 0.8 in Q14
constexpr std::uint16_t kSync = 0x6B21;
constexpr std::uint16_t kBit0 = 0x007F;
constexpr std::uint16_t kBit1 = 0x0081;

/// Bits of each transmitted parameter, in stream order: L0+L1, L2+L3, P1, P0,
/// C1, S1, GA1+GB1, P2, C2, S2, GA2+GB2.
constexpr std::array<int, kPrmSize> kPrmBits = {8, 10, 8, 1, 13, 4, 7, 5, 13, 4, 7};

constexpr Zep16s kFreqPrevReset[kOrder] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
constexpr Zep16s kLspReset[kOrder] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
constexpr Zep16s kHighPass140[6] = {1899, -3798, 1899, 4096, 7807, -3733};
constexpr Zep16s kHighPass100[6] = {7699, -15398, 7699, 8192, 15836, -7667};

enum class Variant { Main, AnnexA };

/// A status of the library that the codec does not expect ends the run.
void check(ZepStatus s, const char* what) {
    if (s < 0) throw CodecError(std::string("G.729: ") + what + " failed with status " + std::to_string(s));
}

std::vector<std::uint8_t> state_block(ZepStatus (*size)(Zep32s*)) {
    Zep32s n = 0;
    check(size(&n), "state size query");
    return std::vector<std::uint8_t>(static_cast<std::size_t>(n));
}

// ---- parameters <-> bitstreams ---------------------------------------------

using Params = std::array<Zep16s, kPrmSize>;

void params_to_bits(const Params& prm, std::uint8_t* bits /* 80 values 0/1 */) {
    int k = 0;
    for (int p = 0; p < kPrmSize; ++p)
        for (int b = kPrmBits[p] - 1; b >= 0; --b) bits[k++] = static_cast<std::uint8_t>((prm[p] >> b) & 1);
}

Params bits_to_params(const std::uint8_t* bits) {
    Params prm{};
    int k = 0;
    for (int p = 0; p < kPrmSize; ++p) {
        int v = 0;
        for (int b = 0; b < kPrmBits[p]; ++b) v = (v << 1) | bits[k++];
        prm[p] = static_cast<Zep16s>(v);
    }
    return prm;
}

void put_word(std::vector<std::uint8_t>& out, std::uint16_t w) {
    out.push_back(static_cast<std::uint8_t>(w & 0xff));
    out.push_back(static_cast<std::uint8_t>(w >> 8));
}

// ---- decoder ---------------------------------------------------------------

class Decoder final : public zepsc_cli::FrameDecoder {
public:
    Decoder(Variant v, bool serial) : variant_(v), serial_(serial) {
        post_ = variant_ == Variant::AnnexA ? state_block(zepsPostFilterGetStateSize_G729A_16s)
                                            : state_block(zepsPostFilterGetStateSize_G729_16s);
        check(variant_ == Variant::AnnexA ? zepsPostFilterInit_G729A_16s(post_.data())
                                          : zepsPostFilterInit_G729_16s(post_.data()),
              "post-filter initialisation");
        hp_ = state_block(zepsHighPassFilterSize_G729);
        check(zepsHighPassFilterInit_G729(kHighPass100, hp_.data()), "post-processing initialisation");
        for (auto& row : freq_prev_) std::memcpy(row, kFreqPrevReset, sizeof row);
        std::memcpy(prev_lsf_, kFreqPrevReset, sizeof prev_lsf_);
        std::memcpy(lsp_old_, kLspReset, sizeof lsp_old_);
    }
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }

    std::size_t decode(zepsc_cli::ByteSource& in, std::int16_t* pcm) override {
        std::uint8_t bits[kBits];
        bool erased = false;
        if (serial_) {
            std::uint8_t head[4];
            if (!in.read_exact(head, 4, "frame header")) return 0;
            const unsigned size = head[2] | (head[3] << 8);
            if (size != kBits)
                throw CodecError("frame of " + std::to_string(size) + " bits at byte " +
                                 std::to_string(in.position() - 4) + ": G.729 frames have 80 (SID and " +
                                 "untransmitted frames need --annex B or AB)");
            std::uint8_t words[2 * kBits];
            if (!in.read_exact(words, sizeof words, "frame"))
                throw CodecError("truncated frame at byte " + std::to_string(in.position()) + ": header without bits");
            for (int i = 0; i < kBits; ++i) {
                const unsigned w = words[2 * i] | (words[2 * i + 1] << 8);
                bits[i] = w == kBit1 ? 1 : 0;
                if (w == 0) erased = true;
            }
        } else {
            std::uint8_t bytes[kBits / 8];
            if (!in.read_exact(bytes, sizeof bytes, "frame")) return 0;
            for (int i = 0; i < kBits; ++i) bits[i] = (bytes[i / 8] >> (7 - i % 8)) & 1;
        }
        decode_frame(bits_to_params(bits), erased, pcm);
        return kFrame;
    }

private:
    /// Decod_ld8k / Decod_ld8a, then the post-filter and post-processing.
    void decode_frame(Params prm, bool bfi, Zep16s* out) {
        Zep16s az[2 * (kOrder + 1)];
        decode_lp(prm, bfi, az);

        Zep16s parity = 0;
        check(zepsParityPitch_G729_16s(prm[2], &parity), "pitch parity");
        const bool bad_pitch = bfi || parity != prm[3];

        Zep16s synth[kFrame];
        Zep16s lags[2];
        for (int sf = 0; sf < 2; ++sf) {
            const int i_subfr = sf * kSubfr;
            Zep16s* exc = old_exc_ + i_subfr;  // the buffer as the adaptive-vector stage addresses it
            const Zep16s* a = az + sf * (kOrder + 1);

            // Pitch delay, with the erasure rule of 4.4.1.
            Zep16s delay[2] = {t0_, 0};
            if (sf == 0 ? !bad_pitch : !bfi) {
                check(zepsDecodeLag_G729_16s(sf == 0 ? prm[2] : prm[7], static_cast<Zep16s>(sf), delay),
                      "pitch delay decoding");
                old_t0_ = delay[0];
            } else {
                delay[0] = old_t0_;
                delay[1] = 0;
                if (old_t0_ < kPitMax) ++old_t0_;
            }
            t0_ = delay[0];
            lags[sf] = delay[0];
            check(zepsDecodeAdaptiveVector_G729_16s_I(delay, exc), "adaptive vector");

            // Fixed-codebook vector, random codes on an erased frame.
            Zep16s index = sf == 0 ? prm[4] : prm[8];
            Zep16s sign = sf == 0 ? prm[5] : prm[9];
            if (bfi) {
                index = static_cast<Zep16s>(random() & 0x1fff);
                sign = static_cast<Zep16s>(random() & 0x000f);
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
            sharp_ = gains_[0] > kSharpMax ? kSharpMax : gains_[0] < kSharpMin ? kSharpMin : gains_[0];

            // Excitation: on an erased frame the main body keeps only the
            // adaptive part of a voiced frame and only the fixed part otherwise.
            Zep16s gp = gains_[0], gc = gains_[1];
            if (bfi && variant_ == Variant::Main) {
                if (voicing_ == 0)
                    gp = 0;
                else
                    gc = 0;
            }
            Zep16s* cur = exc + kExcHistory;
            check(zepsMixExcitation_G729_16s_I(gp, gc, code, cur, kSubfr), "excitation");

            // Synthesis; on overflow the whole excitation buffer is scaled
            // down by 4 and the subframe filtered again.
            const ZepStatus s = zepsSynthesisFilter_G729_16s(a, cur, synth + i_subfr, kSubfr, mem_syn_, 0);
            check(s, "synthesis filter");
            if (s == zepStsOverflow) {
                for (Zep16s& e : old_exc_) e = static_cast<Zep16s>(e >> 2);
                check(zepsSynthesisFilter_G729_16s(a, cur, synth + i_subfr, kSubfr, mem_syn_, 1), "synthesis filter");
            } else {
                std::memcpy(mem_syn_, synth + i_subfr + kSubfr - kOrder, sizeof mem_syn_);
            }
        }
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));

        if (variant_ == Variant::AnnexA) {
            std::memcpy(out, synth, sizeof synth);
            for (int sf = 0; sf < 2; ++sf)
                check(zepsPostFilter_G729A_16s(lags[sf], az + sf * (kOrder + 1), out + sf * kSubfr, post_.data()),
                      "post-filter");
        } else {
            Zep16s voicing = 0;
            for (int sf = 0; sf < 2; ++sf) {
                Zep16s v = 0;
                check(zepsPostFilter_G729_16s(lags[0], az + sf * (kOrder + 1), synth + sf * kSubfr, out + sf * kSubfr,
                                              &v, post_.data()),
                      "post-filter");
                if (v != 0) voicing = v;
            }
            voicing_ = voicing;
        }
        check(zepsPostProcess_G729_16s_I(out, kFrame, hp_.data()), "post-processing");
    }

    /// D_lsp and Int_qlpc: the frame's LSPs (the last good ones on an
    /// erased frame) and the LP filters of the two subframes.
    void decode_lp(const Params& prm, bool bfi, Zep16s* az) {
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
        Zep16s lsp_new[kOrder], lsp_mid[kOrder];
        check(zepsLSFToLSP_G729_16s(lsf, lsp_new), "LSF to LSP");
        check(zepsInterpolate_G729_16s(lsp_old_, lsp_new, lsp_mid, kOrder), "LSP interpolation");
        check(zepsLSPToLPC_G729_16s(lsp_mid, az), "LSP to LPC");
        check(zepsLSPToLPC_G729_16s(lsp_new, az + kOrder + 1), "LSP to LPC");
        std::memcpy(lsp_old_, lsp_new, sizeof lsp_new);
    }

    /// The reference decoder's random generator for erased fixed-codebook codes.
    Zep16s random() {
        seed_ = static_cast<Zep16s>(seed_ * 31821 + 13849);
        return seed_;
    }

    Variant variant_;
    bool serial_;
    std::vector<std::uint8_t> post_, hp_;
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s freq_prev_[4][kOrder];
    Zep16s prev_lsf_[kOrder];
    Zep16s prev_ma_ = 0;
    Zep16s lsp_old_[kOrder];
    Zep16s mem_syn_[kOrder] = {};
    Zep16s sharp_ = kSharpMin;
    Zep16s old_t0_ = 60;
    Zep16s t0_ = 60;
    Zep16s gains_[2] = {0, 0};
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep16s seed_ = 21845;
    Zep16s voicing_ = 60;
};


// ---- encoder ---------------------------------------------------------------

constexpr int kWindow = 240;               // L_WINDOW = L_TOTAL
constexpr int kSpeechAt = kWindow - kFrame - 40;  // the frame being coded, 40 samples before the newest
constexpr Zep16s kGamma1A = 24576;         // 0.75, Annex A weighting
constexpr Zep16s kGpClip = 15564;          // pitch-gain ceiling under taming, Q14

class Encoder final : public zepsc_cli::FrameEncoder {
public:
    Encoder(Variant v, bool serial) : variant_(v), serial_(serial) {
        hp_ = state_block(zepsHighPassFilterSize_G729);
        check(zepsHighPassFilterInit_G729(kHighPass140, hp_.data()), "pre-processing initialisation");
        for (auto& row : freq_prev_) std::memcpy(row, kFreqPrevReset, sizeof row);
        std::memcpy(lsp_old_, kLspReset, sizeof lsp_old_);
        std::memcpy(lsp_old_q_, kLspReset, sizeof lsp_old_q_);
        old_a_[0] = 4096;
    }
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return kFrame; }

    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        Zep16s* new_speech = old_speech_ + kWindow - kFrame;
        std::memcpy(new_speech, pcm, kFrame * sizeof(Zep16s));
        check(zepsHighPassFilter_G729_16s_ISfs(new_speech, kFrame, 12, hp_.data()), "pre-processing");
        const Params prm = variant_ == Variant::AnnexA ? code_frame() : code_frame_main();
        std::memmove(old_speech_, old_speech_ + kFrame, (kWindow - kFrame) * sizeof(Zep16s));

        std::uint8_t bits[kBits];
        params_to_bits(prm, bits);
        if (serial_) {
            put_word(out, kSync);
            put_word(out, kBits);
            for (std::uint8_t b : bits) put_word(out, b ? kBit1 : kBit0);
        } else {
            for (int i = 0; i < kBits; i += 8) {
                std::uint8_t byte = 0;
                for (int k = 0; k < 8; ++k) byte = static_cast<std::uint8_t>((byte << 1) | bits[i + k]);
                out.push_back(byte);
            }
        }
    }

private:
    /// Coder_ld8a: LP analysis and quantisation, weighting, open-loop pitch,
    /// then per subframe the target, the adaptive and fixed codebooks and the gains.
    Params code_frame() {
        Params prm{};
        const Zep16s* speech = old_speech_ + kSpeechAt;
        Zep16s aq[2 * (kOrder + 1)], ap[2 * (kOrder + 1)];
        analyse_lp(prm, aq, ap);

        // LPC residual and weighted speech of the frame.
        Zep16s* exc = old_exc_ + kExcHistory;
        Zep16s* wsp = old_wsp_ + kPitMax;
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
            Zep16s index = 0;
            check(zepsEncodeLag_G729_16s(delay, t0_first, static_cast<Zep16s>(sf), &index), "pitch-delay code");
            if (sf == 0) {
                t0_first = delay[0];
                prm[2] = index;
                check(zepsParityPitch_G729_16s(index, &prm[3]), "pitch parity");
            } else {
                prm[7] = index;
            }
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
            sharp_ = gains[0] > kSharpMax ? kSharpMax : gains[0] < kSharpMin ? kSharpMin : gains[0];
            check(zepsMixExcitation_G729_16s_I(gains[0], gains[1], code, exc + o, kSubfr), "excitation");
            check(zepsTamingUpdate_G729_16s(gains[0], delay[0], exc_err_), "taming update");
            check(zepsWeightedErrorMemory_G729_16s(gains[0], gains[1], xn, y1, y2, mem_w0_), "weighting memory");
        }
        std::memmove(old_wsp_, old_wsp_ + kFrame, kPitMax * sizeof(Zep16s));
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));
        return prm;
    }

    /// Coder_ld8k: the main body's chain, with the unquantised filter for
    /// the weighting, adaptive weighting factors, the error filter memory,
    /// convolution for the filtered adaptive vector and the 17-bit search.
    Params code_frame_main() {
        Params prm{};
        const Zep16s* speech = old_speech_ + kSpeechAt;
        Zep16s a_t[2 * (kOrder + 1)], aq[2 * (kOrder + 1)], gamma[4];
        analyse_lp_main(prm, a_t, aq, gamma);

        Zep16s* exc = old_exc_ + kExcHistory;
        Zep16s* wsp = old_wsp_ + kPitMax;
        Zep16s ap1[2][kOrder + 1], ap2[2][kOrder + 1];
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            check(zepsWeightLPC_G729_16s(a_t + sf * (kOrder + 1), gamma[sf], ap1[sf]), "weighting");
            check(zepsWeightLPC_G729_16s(a_t + sf * (kOrder + 1), gamma[2 + sf], ap2[sf]), "weighting");
            check(zepsResidual_G729_16s(ap1[sf], speech + o, wsp + o, kSubfr), "weighting filter");
            check(zepsSynthesisFilter_G729_16s(ap2[sf], wsp + o, wsp + o, kSubfr, mem_w_, 1), "weighting filter");
        }
        Zep16s t_op = 0;
        check(zepsOpenLoopPitchSearch_G729_16s(wsp, &t_op), "open-loop pitch");

        Zep16s t0_first = 0;
        for (int sf = 0; sf < 2; ++sf) {
            const int o = sf * kSubfr;
            const Zep16s* a_q = aq + sf * (kOrder + 1);
            Zep16s zero[kOrder] = {};

            // Impulse response of W(z)/A(z), target through the error filter.
            Zep16s ai_zero[kSubfr] = {}, h1[kSubfr];
            std::memcpy(ai_zero, ap1[sf], sizeof ap1[sf]);
            check(zepsSynthesisFilter_G729_16s(a_q, ai_zero, h1, kSubfr, zero, 0), "impulse response");
            check(zepsSynthesisFilter_G729_16s(ap2[sf], h1, h1, kSubfr, zero, 0), "impulse response");
            check(zepsResidual_G729_16s(a_q, speech + o, exc + o, kSubfr), "LPC residual");
            Zep16s error[kOrder + kSubfr];
            std::memcpy(error, mem_err_, sizeof mem_err_);
            check(zepsSynthesisFilter_G729_16s(a_q, exc + o, error + kOrder, kSubfr, mem_err_, 0), "error filter");
            Zep16s xn[kSubfr];
            check(zepsResidual_G729_16s(ap1[sf], error + kOrder, xn, kSubfr), "target");
            check(zepsSynthesisFilter_G729_16s(ap2[sf], xn, xn, kSubfr, mem_w0_, 0), "target");

            // Adaptive codebook.
            Zep16s delay[2], adapt[kSubfr];
            check(zepsAdaptiveCodebookSearch_G729_16s(sf == 0 ? t_op : t0_first, xn, h1, old_exc_ + o, delay, adapt,
                                                      static_cast<Zep16s>(sf)),
                  "closed-loop pitch");
            Zep16s index = 0;
            check(zepsEncodeLag_G729_16s(delay, t0_first, static_cast<Zep16s>(sf), &index), "pitch-delay code");
            if (sf == 0) {
                t0_first = delay[0];
                prm[2] = index;
                check(zepsParityPitch_G729_16s(index, &prm[3]), "pitch parity");
            } else {
                prm[7] = index;
            }
            Zep16s y1[kSubfr], gain_pit = 0, taming = 0;
            check(zepsAdaptiveCodebookGain_G729_16s(xn, h1, adapt, y1, &gain_pit), "pitch gain");
            check(zepsTamingTest_G729_16s(exc_err_, delay, &taming), "taming test");
            if (taming == 1 && gain_pit > kGpClip) gain_pit = kGpClip;
            Zep16s xn2[kSubfr];
            check(zepsAdaptiveCodebookContribution_G729_16s(gain_pit, y1, xn, xn2), "codebook target");

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
            sharp_ = gains[0] > kSharpMax ? kSharpMax : gains[0] < kSharpMin ? kSharpMin : gains[0];
            check(zepsMixExcitation_G729_16s_I(gains[0], gains[1], code, exc + o, kSubfr), "excitation");
            check(zepsTamingUpdate_G729_16s(gains[0], delay[0], exc_err_), "taming update");
            Zep16s synth[kSubfr], diff[kSubfr];
            check(zepsSynthesisFilter_G729_16s(a_q, exc + o, synth, kSubfr, mem_syn_, 1), "local synthesis");
            // speech - synth with saturation: the target update with a gain of 1.0 (Q14).
            check(zepsAdaptiveCodebookContribution_G729_16s(16384, synth, speech + o, diff), "error memory");
            std::memcpy(mem_err_, diff + kSubfr - kOrder, sizeof mem_err_);
            check(zepsWeightedErrorMemory_G729_16s(gains[0], gains[1], xn, y1, y2, mem_w0_), "weighting memory");
        }
        std::memmove(old_wsp_, old_wsp_ + kFrame, kPitMax * sizeof(Zep16s));
        std::memmove(old_exc_, old_exc_ + kFrame, kExcHistory * sizeof(Zep16s));
        return prm;
    }

    /// The main body's LP analysis: the unquantised filter of subframe 1
    /// from Levinson-Durbin and of subframe 0 from the interpolated LSPs
    /// (Int_lpc), the quantised ones as in Annex A, and the weighting factors.
    void analyse_lp_main(Params& prm, Zep16s* a_t, Zep16s* aq, Zep16s* gamma) {
        Zep32s r[13];
        Zep16s norm = 0;
        check(zepsAutoCorr_G729B(old_speech_, &norm, r), "autocorrelation");
        check(zepsLagWindow_G729_32s_I(r + 1, kOrder), "lag window");
        Zep16s* a = a_t + kOrder + 1;
        Zep16s rc[kOrder], err = 0;
        const ZepStatus s = zepsLevinsonDurbin_G729_32s16s(r, kOrder, a, rc, &err);
        check(s, "Levinson-Durbin");
        if (s == zepStsOverflow) {
            std::memcpy(a, old_a_, sizeof old_a_);
            rc[0] = old_rc_[0];
            rc[1] = old_rc_[1];
        } else {
            std::memcpy(old_a_, a, sizeof old_a_);
            old_rc_[0] = rc[0];
            old_rc_[1] = rc[1];
        }
        Zep16s lsp_new[kOrder], lsp_new_q[kOrder], idx[2];
        check(zepsLPCToLSP_G729_16s(a, lsp_old_, lsp_new), "LP to LSP");
        check(zepsLSPQuant_G729_16s(lsp_new, &freq_prev_[0][0], lsp_new_q, idx), "LSP quantisation");
        prm[0] = idx[0];
        prm[1] = idx[1];

        Zep16s lsp_mid[kOrder], lsf_int[kOrder], lsf_new[kOrder];
        check(zepsInterpolate_G729_16s(lsp_old_, lsp_new, lsp_mid, kOrder), "LSP interpolation");
        check(zepsLSPToLPC_G729_16s(lsp_mid, a_t), "LSP to LPC");
        check(zepsLSPToLSF_Norm_G729_16s(lsp_mid, lsf_int), "LSP to LSF");
        check(zepsLSPToLSF_Norm_G729_16s(lsp_new, lsf_new), "LSP to LSF");
        check(zepsInterpolate_G729_16s(lsp_old_q_, lsp_new_q, lsp_mid, kOrder), "LSP interpolation");
        check(zepsLSPToLPC_G729_16s(lsp_mid, aq), "LSP to LPC");
        check(zepsLSPToLPC_G729_16s(lsp_new_q, aq + kOrder + 1), "LSP to LPC");
        std::memcpy(lsp_old_, lsp_new, sizeof lsp_new);
        std::memcpy(lsp_old_q_, lsp_new_q, sizeof lsp_new_q);
        check(zepsWeightingFactors_G729_16s(lsf_int, lsf_new, rc, weighting_mem_, gamma), "weighting factors");
    }

    /// Autocorrelation, lag window, Levinson-Durbin (the last stable filter
    /// kept when unstable), LSP conversion and quantisation, interpolation
    /// and the weighted filters of the two subframes.
    void analyse_lp(Params& prm, Zep16s* aq, Zep16s* ap) {
        Zep32s r[13];
        Zep16s norm = 0;
        check(zepsAutoCorr_G729B(old_speech_, &norm, r), "autocorrelation");
        check(zepsLagWindow_G729_32s_I(r + 1, kOrder), "lag window");
        Zep16s a[kOrder + 1], rc[kOrder], err = 0;
        const ZepStatus s = zepsLevinsonDurbin_G729_32s16s(r, kOrder, a, rc, &err);
        check(s, "Levinson-Durbin");
        if (s == zepStsOverflow)
            std::memcpy(a, old_a_, sizeof a);
        else
            std::memcpy(old_a_, a, sizeof a);

        Zep16s lsp_new[kOrder], lsp_new_q[kOrder], idx[2];
        check(zepsLPCToLSP_G729A_16s(a, lsp_old_, lsp_new), "LP to LSP");
        check(zepsLSPQuant_G729_16s(lsp_new, &freq_prev_[0][0], lsp_new_q, idx), "LSP quantisation");
        prm[0] = idx[0];
        prm[1] = idx[1];
        Zep16s lsp_mid[kOrder];
        check(zepsInterpolate_G729_16s(lsp_old_q_, lsp_new_q, lsp_mid, kOrder), "LSP interpolation");
        check(zepsLSPToLPC_G729_16s(lsp_mid, aq), "LSP to LPC");
        check(zepsLSPToLPC_G729_16s(lsp_new_q, aq + kOrder + 1), "LSP to LPC");
        for (int sf = 0; sf < 2; ++sf)
            check(zepsWeightLPC_G729_16s(aq + sf * (kOrder + 1), kGamma1A, ap + sf * (kOrder + 1)), "weighting");
        std::memcpy(lsp_old_, lsp_new, sizeof lsp_new);
        std::memcpy(lsp_old_q_, lsp_new_q, sizeof lsp_new_q);
    }

    Variant variant_;
    bool serial_;
    std::vector<std::uint8_t> hp_;
    Zep16s old_speech_[kWindow] = {};
    Zep16s old_wsp_[kPitMax + kFrame] = {};
    Zep16s old_exc_[kExcHistory + kFrame] = {};
    Zep16s mem_w_[kOrder] = {};
    Zep16s mem_w0_[kOrder] = {};
    Zep16s freq_prev_[4][kOrder];
    Zep16s lsp_old_[kOrder];
    Zep16s lsp_old_q_[kOrder];
    Zep16s old_a_[kOrder + 1] = {};
    Zep16s sharp_ = kSharpMin;
    Zep16s past_qua_en_[4] = {-14336, -14336, -14336, -14336};
    Zep32s exc_err_[4] = {0x4000, 0x4000, 0x4000, 0x4000};
    // Main body only.
    Zep16s mem_err_[kOrder] = {};
    Zep16s mem_syn_[kOrder] = {};
    Zep16s old_rc_[2] = {};
    Zep16s weighting_mem_[3] = {0, 0, 1};
    Zep16s budget_ = 30;
};

Variant variant_of(const zepsc_cli::CodecOptions& o) {
    const std::string annex = o.get("annex", "0");
    if (annex != "0" && annex != "A")
        throw CodecError("--annex " + annex + " is not available yet: this build codes the main body (0) and Annex A");
    if (o.has("dtx")) throw CodecError("--dtx needs Annex B (--annex B or AB), which is not available yet");
    if (o.get("rate", "8") != "8") throw CodecError("--rate " + o.get("rate") + " needs --annex D, E or I");
    if (o.has("ratefile")) throw CodecError("--ratefile needs --annex E or I");
    return annex == "A" ? Variant::AnnexA : Variant::Main;
}

zepsc_cli::CodecSpec make_spec() {
    zepsc_cli::CodecSpec s;
    s.name = "g729";
    s.summary = "ITU-T G.729 CS-ACELP 8 kbit/s speech codec (main body and Annex A)";
    s.help =
        "Input and output: 8 kHz 16-bit PCM; the encoder codes whole 80-sample frames and drops a\n"
        "final partial frame, as the ITU-T reference does. Bitstreams: .bit, the ITU-T serial\n"
        "format (SYNC 0x6B21, size 80, one word a bit: 0x0081 = 1, 0x007F = 0; a frame with a\n"
        "0x0000 bit word is decoded as erased); .g729, RTP payloads back to back (RFC 3551,\n"
        "10 bytes a frame). --annex 0 is the main body, A the reduced-complexity Annex A; the\n"
        "two decode each other's streams. Annexes B, AB, D, E and I, --rate other than 8,\n"
        "--dtx and --ratefile are declared but not available yet.";
    s.options = {
        {"annex", "0 (main body), A, B, AB, D, E or I", {"0", "A", "B", "AB", "D", "E", "I"}, "0", false},
        {"rate", "bit rate in kbit/s: 6.4, 8 or 11.8 (Annexes D, E, I)", {"6.4", "8", "11.8"}, "8", false},
        {"dtx", "voice activity detection and discontinuous transmission (Annex B)", {}, "", true},
        {"ratefile", "file of one rate code a frame (0 = 6.4, 1 = 8, 2 = 11.8), Annexes E and I", {}, "", false},
    };
    s.formats = {"bit", "g729"};
    s.pad_last_frame = false;
    s.make_encoder = [](const zepsc_cli::CodecOptions& o,
                        const std::string& format) -> std::unique_ptr<zepsc_cli::FrameEncoder> {
        return std::make_unique<Encoder>(variant_of(o), format == "bit");
    };
    s.make_decoder = [](const zepsc_cli::CodecOptions& o,
                        const std::string& format) -> std::unique_ptr<zepsc_cli::FrameDecoder> {
        return std::make_unique<Decoder>(variant_of(o), format == "bit");
    };
    return s;
}

const zepsc_cli::CodecRegistration registration{make_spec()};

}  // namespace

/* SPDX-License-Identifier: BSD-3-Clause */
// Pieces of the G.729 frame that the tool's G.729 coders share: the main
// body and Annexes A and B (tools/codecs/g729.cpp), Annex D
// (tools/codecs/g729d.cpp) and the integrated coder of Annex I, which is also
// the Annex E one (tools/codecs/g729i.cpp, g729i_encoder.cpp), through the
// public exports alone. Common: the main body's constants, the stages' state
// blocks, the parameter layouts of every frame type and their bit packing,
// the serial and RTP framing. Encoders: Int_qlpc, the rate schedule, the LSP
// memories, the LP filter with its last-stable fallback, Annex B's
// comfort-noise excitation, and the main body's (and Annex D's) weighting,
// LSP quantisation, subframe target, pitch-gain taming and end-of-subframe
// memories (ITU-T G.729 3.2 to 3.10).
// Decoders: the LSP decoding (D_lsp, Int_qlpc), the pitch-delay erasure rule
// (4.4.1), the erased frames' random codes and the main body's post-filter.
// LP filters Q12, LSPs Q15, gains Q14 (pitch) and Q1 (code).
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tools/codec.h"
#include "zepsc.h"

namespace zepsc_g729 {

inline constexpr int kFrame = 80;
inline constexpr int kSubfr = 40;
inline constexpr int kOrder = 10;
inline constexpr int kPitMax = 143;
inline constexpr int kExcHistory = kPitMax + 11;  // PIT_MAX + L_INTERPOL
inline constexpr int kWindow = 240;                      // L_WINDOW = L_TOTAL
inline constexpr int kSpeechAt = kWindow - kFrame - 40;  // the frame being coded, 40 samples before the newest
inline constexpr Zep16s kSharpMin = 3277;   // 0.2 in Q14
inline constexpr Zep16s kSharpMax = 13017;  // 0.8 in Q14
inline constexpr Zep16s kGpClip = 15564;    // pitch-gain ceiling under taming, Q14
inline constexpr std::uint16_t kSync = 0x6B21;
inline constexpr std::uint16_t kBit0 = 0x007F;
inline constexpr std::uint16_t kBit1 = 0x0081;

inline constexpr Zep16s kFreqPrevReset[kOrder] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
inline constexpr Zep16s kLspReset[kOrder] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
inline constexpr Zep16s kHighPass140[6] = {1899, -3798, 1899, 4096, 7807, -3733};
inline constexpr Zep16s kHighPass100[6] = {7699, -15398, 7699, 8192, 15836, -7667};

/// A status of the library that the codec does not expect ends the run;
/// the message names the codec.
struct Check {
    const char* codec;
    void operator()(ZepStatus s, const char* what) const {
        if (s < 0)
            throw zepsc_cli::CodecError(std::string(codec) + ": " + what + " failed with status " + std::to_string(s));
    }
};

inline std::vector<std::uint8_t> state_block(const Check& check, ZepStatus (*size)(Zep32s*)) {
    Zep32s n = 0;
    check(size(&n), "state size query");
    return std::vector<std::uint8_t>(static_cast<std::size_t>(n));
}

/// The state block of a stage, sized by its size query and set by its
/// initialiser; `what` names the stage in messages.
inline std::vector<std::uint8_t> initialised_state(const Check& check, ZepStatus (*size)(Zep32s*),
                                                   ZepStatus (*init)(Zep8u*), const char* what) {
    std::vector<std::uint8_t> block = state_block(check, size);
    check(init(block.data()), (std::string(what) + " initialisation").c_str());
    return block;
}

/// The state of the pre-processing (kHighPass140) or post-processing
/// (kHighPass100) high-pass filter.
inline std::vector<std::uint8_t> high_pass_state(const Check& check, const Zep16s* coeffs, const char* what) {
    std::vector<std::uint8_t> block = state_block(check, zepsHighPassFilterSize_G729);
    check(zepsHighPassFilterInit_G729(coeffs, block.data()), (std::string(what) + " initialisation").c_str());
    return block;
}

inline Zep16s bounded_sharp(Zep16s gain_pitch) {
    return gain_pitch > kSharpMax ? kSharpMax : gain_pitch < kSharpMin ? kSharpMin : gain_pitch;
}

// ---- parameters and framing ------------------------------------------------

/// Bits of each transmitted parameter in stream order. 8 kbit/s (main
/// body): L0+L1, L2+L3, P1, P0, C1, S1, GA1+GB1, P2, C2, S2, GA2+GB2.
inline constexpr std::array<int, 11> kBits8k = {8, 10, 8, 1, 13, 4, 7, 5, 13, 4, 7};
/// 6.4 kbit/s (Annex D): L0+L1, L2+L3, P1, C1, S1, GA1+GB1, P2, C2, S2, GA2+GB2.
inline constexpr std::array<int, 10> kBits6k4 = {8, 10, 8, 9, 2, 6, 4, 9, 2, 6};
/// 11.8 kbit/s (Annex E, after the mode bit and its repeat), forward LPC:
/// the LSP codes, then per subframe the pitch code (with P0 in subframe 1),
/// five codebook codes and the gain code.
inline constexpr std::array<int, 17> kBitsFwd = {8, 10, 8, 1, 7, 7, 7, 7, 7, 7, 5, 7, 7, 7, 7, 7, 7};
/// 11.8 kbit/s, backward LPC: no LSP codes; the 13-bit codebook and 10-bit
/// codes come first in each subframe.
inline constexpr std::array<int, 15> kBitsBwd = {8, 1, 13, 10, 7, 7, 7, 7, 5, 13, 10, 7, 7, 7, 7};
/// SID (Annex B B.4.2): LSF predictor switch, first and second stage, energy.
inline constexpr std::array<int, 4> kBitsSid = {1, 5, 4, 5};

/// The parameters prm (widths in stream order) into bits (values 0/1, MSB
/// first); returns the bits written.
template <std::size_t N>
int params_to_bits(const Zep16s* prm, const std::array<int, N>& widths, std::uint8_t* bits) {
    int k = 0;
    for (std::size_t p = 0; p < N; ++p)
        for (int b = widths[p] - 1; b >= 0; --b) bits[k++] = static_cast<std::uint8_t>((prm[p] >> b) & 1);
    return k;
}

/// bits (values 0/1, MSB first) into the parameters prm (widths in stream order).
template <std::size_t N>
void bits_to_params(const std::uint8_t* bits, const std::array<int, N>& widths, Zep16s* prm) {
    int k = 0;
    for (std::size_t p = 0; p < N; ++p) {
        int v = 0;
        for (int b = 0; b < widths[p]; ++b) v = (v << 1) | bits[k++];
        prm[p] = static_cast<Zep16s>(v);
    }
}

/// The parameters prm (widths in stream order, at most 24 bits each) from
/// bits packed MSB first: a few bytes a parameter instead of one step a bit.
template <std::size_t N>
void packed_to_params(const std::uint8_t* packed, const std::array<int, N>& widths, Zep16s* prm) {
    std::uint32_t window = 0;  // the unread bits at its bottom
    int unread = 0;
    for (std::size_t p = 0; p < N; ++p) {
        for (; unread < widths[p]; unread += 8) window = (window << 8) | *packed++;
        unread -= widths[p];
        prm[p] = static_cast<Zep16s>((window >> unread) & ((1u << widths[p]) - 1));
    }
}

inline void put_word(std::vector<std::uint8_t>& out, std::uint16_t w) {
    out.push_back(static_cast<std::uint8_t>(w & 0xff));
    out.push_back(static_cast<std::uint8_t>(w >> 8));
}

/// A speech frame of n bits (values 0/1): in the serial format SYNC, the
/// size and one word a bit; as an RTP payload the bits MSB first.
inline void write_frame_bits(const std::uint8_t* bits, int n, bool serial, std::vector<std::uint8_t>& out) {
    if (serial) {
        put_word(out, kSync);
        put_word(out, static_cast<std::uint16_t>(n));
        for (int i = 0; i < n; ++i) put_word(out, bits[i] ? kBit1 : kBit0);
    } else {
        for (int i = 0; i < n; i += 8) {
            std::uint8_t byte = 0;
            for (int k = 0; k < 8; ++k) byte = static_cast<std::uint8_t>((byte << 1) | bits[i + k]);
            out.push_back(byte);
        }
    }
}

/// The size bit words of a serial frame after its header into bits; a word
/// 0x0000 marks the frame erased.
inline void read_bit_words(zepsc_cli::ByteSource& in, unsigned size, std::uint8_t* bits, bool& erased) {
    std::uint8_t words[2 * 80];
    if (size != 0 && !in.read_exact(words, 2 * size, "frame"))
        throw zepsc_cli::CodecError("truncated frame at byte " + std::to_string(in.position()) +
                                    ": header without bits");
    for (unsigned i = 0; i < size; ++i) {
        const unsigned w = words[2 * i] | (words[2 * i + 1] << 8);
        bits[i] = w == kBit1 ? 1 : 0;
        if (w == 0) erased = true;
    }
}

/// The size bit words of a serial frame after its header, packed MSB first
/// into packed (size / 8 bytes, rounded up); a word 0x0000 marks the frame erased.
inline void read_bit_words_packed(zepsc_cli::ByteSource& in, unsigned size, std::uint8_t* packed, bool& erased) {
    std::uint8_t words[2 * 80];
    if (size != 0 && !in.read_exact(words, 2 * size, "frame"))
        throw zepsc_cli::CodecError("truncated frame at byte " + std::to_string(in.position()) +
                                    ": header without bits");
    bool zero = false;
    for (unsigned i = 0; i < size; i += 8) {
        unsigned byte = 0;
        for (unsigned k = i; k < i + 8; ++k) {
            const unsigned w = k < size ? words[2 * k] | (words[2 * k + 1] << 8) : kBit0;
            byte = (byte << 1) | (w == kBit1 ? 1u : 0u);
            zero |= w == 0;
        }
        packed[i / 8] = static_cast<std::uint8_t>(byte);
    }
    if (zero) erased = true;
}

/// An RTP payload of n bits (MSB first) into bits; false at the end of the input.
inline bool read_payload_bits(zepsc_cli::ByteSource& in, int n, std::uint8_t* bits) {
    std::uint8_t bytes[80 / 8];
    if (!in.read_exact(bytes, static_cast<std::size_t>(n / 8), "frame")) return false;
    for (int i = 0; i < n; ++i) bits[i] = (bytes[i / 8] >> (7 - i % 8)) & 1;
    return true;
}

// ---- encoder ---------------------------------------------------------------

/// Int_qlpc (encoders and decoders): A(z) of subframe 1 from the mean of
/// the old and new LSPs, of subframe 2 from the new ones.
inline void interpolate_filters(const Check& check, const Zep16s* lsp_old, const Zep16s* lsp_new, Zep16s* az) {
    Zep16s lsp_mid[kOrder];
    check(zepsInterpolate_G729_16s(lsp_old, lsp_new, lsp_mid, kOrder), "LSP interpolation");
    check(zepsLSPToLPC_G729_16s(lsp_mid, az), "LSP to LPC");
    check(zepsLSPToLPC_G729_16s(lsp_new, az + kOrder + 1), "LSP to LPC");
}

/// The rate of frame `frame`: schedule[frame] when a rate file gave a
/// schedule (which must not end before the speech), else the fixed rate.
template <class Rate>
Rate scheduled_rate(const std::vector<Rate>& schedule, std::size_t frame, Rate fixed) {
    if (schedule.empty()) return fixed;
    if (frame >= schedule.size())
        throw zepsc_cli::CodecError("the rate file ends at frame " + std::to_string(frame) + ", before the speech");
    return schedule[frame];
}

/// The encoder's LSP memories, at reset: the MA predictor's past LSFs and
/// the previous frame's unquantised and quantised LSPs.
struct LspEncoderMemory {
    LspEncoderMemory() {
        for (auto& row : freq_prev) std::memcpy(row, kFreqPrevReset, sizeof row);
        std::memcpy(old, kLspReset, sizeof old);
        std::memcpy(old_q, kLspReset, sizeof old_q);
    }
    Zep16s freq_prev[4][kOrder];
    Zep16s old[kOrder];
    Zep16s old_q[kOrder];
};

/// Cod_cng's excitation (Annex B B.4): the comfort noise of gain `gain`
/// into old_exc (from old_exc + kExcHistory) with the taming update of its
/// pitch parts, and the frame's filters (aq, 2 x 11) from the old quantised
/// LSPs towards the SID ones; lsp_old_q := lsp_sid.
inline void comfort_noise_excitation(const Check& check, Zep16s gain, Zep16s* old_exc, Zep16s* seed, Zep32s* exc_err,
                                     Zep16s* lsp_old_q, const Zep16s* lsp_sid, Zep16s* aq) {
    Zep16s pitch[4];
    check(zepsCNGExcitation_G729B_16s(gain, old_exc, seed, pitch), "comfort-noise excitation");
    for (int sf = 0; sf < 2; ++sf)
        check(zepsTamingUpdate_G729_16s(pitch[2 * sf], pitch[2 * sf + 1], exc_err), "taming update");
    interpolate_filters(check, lsp_old_q, lsp_sid, aq);
    std::memcpy(lsp_old_q, lsp_sid, kOrder * sizeof(Zep16s));
}

/// Levinson-Durbin of the autocorrelations r into A(z) (a, 11) and the
/// reflection coefficients rc; when the recursion finds the filter unstable
/// the last stable filter and its rc[0], rc[1] (prev_filter, 13) stand in,
/// otherwise they become it.
inline void lp_filter_or_last_stable(const Check& check, const Zep32s* r, Zep16s* a, Zep16s* rc,
                                     Zep16s* prev_filter) {
    Zep16s err = 0;
    const ZepStatus s = zepsLevinsonDurbin_G729_32s16s(r, kOrder, a, rc, &err);
    check(s, "Levinson-Durbin");
    if (s == zepStsOverflow) {
        std::memcpy(a, prev_filter, (kOrder + 1) * sizeof(Zep16s));
        rc[0] = prev_filter[kOrder + 1];
        rc[1] = prev_filter[kOrder + 2];
    } else {
        std::memcpy(prev_filter, a, (kOrder + 1) * sizeof(Zep16s));
        prev_filter[kOrder + 1] = rc[0];
        prev_filter[kOrder + 2] = rc[1];
    }
}

/// Int_lpc and perc_var: the unquantised filter of subframe 1 (a_t[0..10])
/// from the mean of the old and new LSPs, and the weighting factors gamma
/// (gamma1 of the two subframes, then gamma2; Q15); lsp_old := lsp_new.
inline void weighting_factors(const Check& check, Zep16s* lsp_old, const Zep16s* lsp_new, const Zep16s* rc,
                              Zep16s* weighting_mem, Zep16s* a_t, Zep16s* gamma) {
    Zep16s lsp_mid[kOrder], lsf_int[kOrder], lsf_new[kOrder];
    check(zepsInterpolate_G729_16s(lsp_old, lsp_new, lsp_mid, kOrder), "LSP interpolation");
    check(zepsLSPToLPC_G729_16s(lsp_mid, a_t), "LSP to LPC");
    check(zepsLSPToLSF_Norm_G729_16s(lsp_mid, lsf_int), "LSP to LSF");
    check(zepsLSPToLSF_Norm_G729_16s(lsp_new, lsf_new), "LSP to LSF");
    std::memcpy(lsp_old, lsp_new, kOrder * sizeof(Zep16s));
    check(zepsWeightingFactors_G729_16s(lsf_int, lsf_new, rc, weighting_mem, gamma), "weighting factors");
}

/// The main body's weighted speech of a frame (wsp, 80 samples) through
/// W(z) = A(z/gamma1)/A(z/gamma2) of each subframe's unquantised filter
/// (a_t, 2 x 11); ap1, ap2 receive the subframes' A(z/gamma1), A(z/gamma2).
inline void weighted_speech(const Check& check, const Zep16s* a_t, const Zep16s* gamma, const Zep16s* speech,
                            Zep16s* wsp, Zep16s* mem_w, Zep16s (*ap1)[kOrder + 1], Zep16s (*ap2)[kOrder + 1]) {
    for (int sf = 0; sf < 2; ++sf) {
        const int o = sf * kSubfr;
        check(zepsWeightLPC_G729_16s(a_t + sf * (kOrder + 1), gamma[sf], ap1[sf]), "weighting");
        check(zepsWeightLPC_G729_16s(a_t + sf * (kOrder + 1), gamma[2 + sf], ap2[sf]), "weighting");
        check(zepsResidual_G729_16s(ap1[sf], speech + o, wsp + o, kSubfr), "weighting filter");
        check(zepsSynthesisFilter_G729_16s(ap2[sf], wsp + o, wsp + o, kSubfr, mem_w, 1), "weighting filter");
    }
}

/// Qua_lsp and Int_qlpc: the quantised LSPs (codes idx, 2) and the
/// quantised filters of the two subframes (aq, 2 x 11); lsp_old_q := the new.
inline void quantise_lsp(const Check& check, const Zep16s* lsp_new, Zep16s* freq_prev, Zep16s* lsp_old_q, Zep16s* aq,
                         Zep16s* idx) {
    Zep16s lsp_new_q[kOrder];
    check(zepsLSPQuant_G729_16s(lsp_new, freq_prev, lsp_new_q, idx), "LSP quantisation");
    interpolate_filters(check, lsp_old_q, lsp_new_q, aq);
    std::memcpy(lsp_old_q, lsp_new_q, sizeof lsp_new_q);
}

/// The main body's subframe target (3.6): the impulse response h1 of
/// W(z)/A(z) (quantised a_q, weighting ap1, ap2), the LPC residual into exc
/// and the target xn through the error filter (memories mem_err, mem_w0).
inline void main_target(const Check& check, const Zep16s* a_q, const Zep16s* ap1, const Zep16s* ap2,
                        const Zep16s* speech, Zep16s* exc, Zep16s* mem_err, Zep16s* mem_w0, Zep16s* h1, Zep16s* xn) {
    Zep16s zero[kOrder] = {};
    Zep16s ai_zero[kSubfr] = {};
    std::memcpy(ai_zero, ap1, (kOrder + 1) * sizeof(Zep16s));
    check(zepsSynthesisFilter_G729_16s(a_q, ai_zero, h1, kSubfr, zero, 0), "impulse response");
    check(zepsSynthesisFilter_G729_16s(ap2, h1, h1, kSubfr, zero, 0), "impulse response");
    check(zepsResidual_G729_16s(a_q, speech, exc, kSubfr), "LPC residual");
    Zep16s error[kOrder + kSubfr];
    std::memcpy(error, mem_err, kOrder * sizeof(Zep16s));
    check(zepsSynthesisFilter_G729_16s(a_q, exc, error + kOrder, kSubfr, mem_err, 0), "error filter");
    check(zepsResidual_G729_16s(ap1, error + kOrder, xn, kSubfr), "target");
    check(zepsSynthesisFilter_G729_16s(ap2, xn, xn, kSubfr, mem_w0, 0), "target");
}

/// The adaptive-codebook gain (Q14) of the filtered adaptive vector y1,
/// bounded at 0.95 when the taming test (exc_err, the closed-loop delay)
/// finds a risk of error propagation, and the fixed codebook's target xn2.
inline Zep16s tamed_pitch_gain(const Check& check, const Zep16s* xn, const Zep16s* h1, const Zep16s* adapt,
                               const Zep32s* exc_err, const Zep16s* delay, Zep16s* y1, Zep16s* xn2, Zep16s& taming) {
    Zep16s gain_pit = 0;
    taming = 0;
    check(zepsAdaptiveCodebookGain_G729_16s(xn, h1, adapt, y1, &gain_pit), "pitch gain");
    check(zepsTamingTest_G729_16s(exc_err, delay, &taming), "taming test");
    if (taming == 1 && gain_pit > kGpClip) gain_pit = kGpClip;
    check(zepsAdaptiveCodebookContribution_G729_16s(gain_pit, y1, xn, xn2), "codebook target");
    return gain_pit;
}

/// The main body's end of a subframe: the excitation exc from the quantised
/// gains (Q14, Q1), the taming update, the local synthesis and the error and
/// weighting memories.
inline void main_subframe_memories(const Check& check, const Zep16s* gains, const Zep16s* code, Zep16s delay0,
                                   const Zep16s* a_q, const Zep16s* speech, const Zep16s* xn, const Zep16s* y1,
                                   const Zep16s* y2, Zep16s* exc, Zep32s* exc_err, Zep16s* mem_syn, Zep16s* mem_err,
                                   Zep16s* mem_w0) {
    check(zepsMixExcitation_G729_16s_I(gains[0], gains[1], code, exc, kSubfr), "excitation");
    check(zepsTamingUpdate_G729_16s(gains[0], delay0, exc_err), "taming update");
    Zep16s synth[kSubfr], diff[kSubfr];
    check(zepsSynthesisFilter_G729_16s(a_q, exc, synth, kSubfr, mem_syn, 1), "local synthesis");
    // speech - synth with saturation: the target update with a gain of 1.0 (Q14).
    check(zepsAdaptiveCodebookContribution_G729_16s(16384, synth, speech, diff), "error memory");
    std::memcpy(mem_err, diff + kSubfr - kOrder, kOrder * sizeof(Zep16s));
    check(zepsWeightedErrorMemory_G729_16s(gains[0], gains[1], xn, y1, y2, mem_w0), "weighting memory");
}

// ---- decoder ---------------------------------------------------------------

/// The decoder's LSP memories: the MA predictor's past LSFs, the last good
/// LSFs and predictor switch, and the previous frame's LSPs.
struct LspDecoder {
    explicit LspDecoder(Check c) : check(c) {
        for (auto& row : freq_prev) std::memcpy(row, kFreqPrevReset, sizeof row);
        std::memcpy(prev_lsf, kFreqPrevReset, sizeof prev_lsf);
        std::memcpy(lsp_old, kLspReset, sizeof lsp_old);
    }

    /// D_lsp and Int_qlpc: the frame's LSPs from the codes L0+L1, L2+L3 (the
    /// last good ones on an erased frame) and the LP filters of the two
    /// subframes; without interpolation (Annex E after a backward frame)
    /// both subframes take the new LSPs.
    void decode(Zep16s l01, Zep16s l23, bool bfi, Zep16s* az, bool interpolate = true) {
        Zep16s lsf[kOrder];
        if (!bfi) {
            const Zep16s idx[4] = {static_cast<Zep16s>((l01 >> 7) & 1), static_cast<Zep16s>(l01 & 127),
                                   static_cast<Zep16s>((l23 >> 5) & 31), static_cast<Zep16s>(l23 & 31)};
            check(zepsLSFDecode_G729_16s(idx, &freq_prev[0][0], lsf), "LSF decoding");
            std::memcpy(prev_lsf, lsf, sizeof lsf);
            prev_ma = idx[0];
        } else {
            std::memcpy(lsf, prev_lsf, sizeof lsf);
            check(zepsLSFDecodeErased_G729_16s(prev_ma, &freq_prev[0][0], prev_lsf), "erased LSF decoding");
        }
        Zep16s lsp_new[kOrder];
        check(zepsLSFToLSP_G729_16s(lsf, lsp_new), "LSF to LSP");
        if (interpolate) {
            interpolate_filters(check, lsp_old, lsp_new, az);
        } else {
            check(zepsLSPToLPC_G729_16s(lsp_new, az), "LSP to LPC");
            check(zepsLSPToLPC_G729_16s(lsp_new, az + kOrder + 1), "LSP to LPC");
        }
        std::memcpy(lsp_old, lsp_new, sizeof lsp_new);
    }

    Check check;
    Zep16s freq_prev[4][kOrder];
    Zep16s prev_lsf[kOrder];
    Zep16s prev_ma = 0;
    Zep16s lsp_old[kOrder];
};

/// The pitch-delay memories of the decoder and the erasure rule of G.729
/// 4.4.1: a subframe whose code is bad repeats the last good integer delay,
/// which grows by one (up to 143) for the next.
struct LagMemory {
    /// The delay of a subframe: decode(delay) with delay = {last delay, 0}
    /// when its code is good.
    template <class Decode>
    void next(bool good, Zep16s* delay, Decode decode) {
        delay[0] = t0;
        delay[1] = 0;
        if (good) {
            decode(delay);
            old_t0 = delay[0];
        } else {
            delay[0] = old_t0;
            if (old_t0 < kPitMax) ++old_t0;
        }
        t0 = delay[0];
    }

    Zep16s old_t0 = 60;
    Zep16s t0 = 60;
};

/// The reference decoder's random generator for erased fixed-codebook codes.
struct ErasureRandom {
    Zep16s next() {
        seed = static_cast<Zep16s>(seed * 31821 + 13849);
        return seed;
    }
    Zep16s seed = 21845;
};

/// The main body's post-filter of a frame, pitch from the first subframe's
/// lag (without its long-term part on comfort-noise frames, Annex B);
/// returns the voicing of the last subframe that found one, else 0.
/// A corrupt subframe-1 code can decode to lag 144 (t0_min 134 + 10), which
/// an erased frame then repeats; the pitch post-filter ends its search at
/// 143 (beyond it the reference reads outside its buffer), so the lag is
/// bounded there.
inline Zep16s post_filter_main(const Check& check, Zep16s lag0, bool speech, const Zep16s* az, const Zep16s* synth,
                               Zep16s* out, std::uint8_t* state) {
    const Zep16s lag = lag0 > kPitMax ? static_cast<Zep16s>(kPitMax) : lag0;
    Zep16s voicing = 0;
    for (int sf = 0; sf < 2; ++sf) {
        const Zep16s* a = az + sf * (kOrder + 1);
        Zep16s v = 0;
        check(speech ? zepsPostFilter_G729_16s(lag, a, synth + sf * kSubfr, out + sf * kSubfr, &v, state)
                     : zepsPostFilterInactive_G729_16s(a, synth + sf * kSubfr, out + sf * kSubfr, state),
              "post-filter");
        if (v != 0) voicing = v;
    }
    return voicing;
}

}  // namespace zepsc_g729

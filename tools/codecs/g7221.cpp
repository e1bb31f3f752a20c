// SPDX-License-Identifier: BSD-3-Clause
// The G.722.1 codec of the zepsc tool (ITU-T G.722.1 at 24 and 32 kbit/s,
// 16 kHz; Annex C at 24, 32 and 48 kbit/s, 32 kHz), from the public exports
// alone. Bitstreams as the reference programs write them: "pak" = the
// frame's 16-bit words little-endian, "itu" = G.192 serial (sync word
// 0x6B21, bit count, one word per bit, 0x007F = 0, 0x0081 = 1; a frame with
// another sync word or bit value is an erased frame for the decoder).
#include <string>
#include <vector>

#include "tools/codec.h"
#include "zepsc.h"

namespace {

using zepsc_cli::CodecError;

struct Mode {
    int bits;     // bits per 20 ms frame
    int regions;  // 14 or 28
    int samples() const { return regions == 28 ? 640 : 320; }
    int words() const { return bits / 16; }
};

Mode mode_of(const zepsc_cli::CodecOptions& o) {
    return {std::stoi(o.get("rate", "24")) * 20, o.get("annex") == "C" ? 28 : 14};
}

void put16(std::vector<std::uint8_t>& out, int v) {
    out.push_back(static_cast<std::uint8_t>(v & 0xFF));
    out.push_back(static_cast<std::uint8_t>((v >> 8) & 0xFF));
}

class Encoder final : public zepsc_cli::FrameEncoder {
public:
    Encoder(Mode m, bool g192) : m_(m), g192_(g192), history_(static_cast<std::size_t>(m.samples()), 0) {}
    int sample_rate() const override { return m_.regions == 28 ? 32000 : 16000; }
    std::size_t frame_samples() const override { return static_cast<std::size_t>(m_.samples()); }
    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        std::vector<Zep16s> coefs(static_cast<std::size_t>(m_.samples())), words(static_cast<std::size_t>(m_.words()));
        Zep32s shift = 0;
        if (zepsMLTFwd_G7221_16s(pcm, history_.data(), coefs.data(), m_.samples(), &shift) != zepStsNoErr ||
            !code_frame(coefs.data(), shift, words.data()))
            throw CodecError("G.722.1 encoding failed");
        if (g192_) {
            put16(out, 0x6B21);
            put16(out, m_.bits);
            for (Zep16s w : words)
                for (int b = 15; b >= 0; --b) put16(out, (w >> b) & 1 ? 0x0081 : 0x007F);
        } else {
            for (Zep16s w : words) put16(out, w);
        }
    }

private:
    // The frame coder as its three stages (what zepsEncode_G7221_16s does in
    // one call): the envelope, the categorisation on the bits the envelope
    // and the control leave, then quantisation, rate control and packing.
    bool code_frame(const Zep16s* coefs, Zep32s shift, Zep16s* words) const {
        Zep16s drp_bits[28], drp_codes[28], power_index[28], categories[28], balances[31];
        Zep32s envelope_bits = 0, control = 0;
        const int control_bits = m_.regions == 28 ? 5 : 4;
        return zepsRegionPowerQuant_G7221_16s(coefs, shift, drp_bits, drp_codes, power_index, m_.regions,
                                              &envelope_bits) == zepStsNoErr &&
               zepsCategorize_G7221_16s(m_.bits - envelope_bits - control_bits, m_.regions, power_index, categories,
                                        balances) == zepStsNoErr &&
               zepsVectorQuantMLT_G7221_16s(m_.bits, m_.regions, coefs, shift, power_index, categories, balances,
                                            drp_bits, drp_codes, &control, words) == zepStsNoErr;
    }

    Mode m_;
    bool g192_;
    std::vector<Zep16s> history_;
};

class Decoder final : public zepsc_cli::FrameDecoder {
public:
    Decoder(Mode m, bool g192) : m_(m), g192_(g192), history_(static_cast<std::size_t>(m.samples() / 2), 0) {
        Zep32s size = 0;
        zepsDecodeStateSize_G7221_16s(&size);
        state_.resize(static_cast<std::size_t>(size));
        if (zepsDecodeInit_G7221_16s(state()) != zepStsNoErr) throw CodecError("G.722.1 decoder initialisation failed");
    }
    int sample_rate() const override { return m_.regions == 28 ? 32000 : 16000; }
    std::size_t max_frame_samples() const override { return static_cast<std::size_t>(m_.samples()); }
    std::size_t decode(zepsc_cli::ByteSource& in, std::int16_t* pcm) override {
        std::vector<Zep16s> words(static_cast<std::size_t>(m_.words()), 0);
        int erased = 0;
        if (g192_) {
            std::vector<std::uint8_t> b(static_cast<std::size_t>(2 * (m_.bits + 2)));
            if (!in.read_exact(b.data(), b.size())) return 0;
            auto at = [&](std::size_t i) { return b[2 * i] | (b[2 * i + 1] << 8); };
            if (at(0) != 0x6B21) erased = 1;
            for (int i = 0; i < m_.bits && !erased; ++i) {
                const int v = at(static_cast<std::size_t>(2 + i));
                if (v != 0x007F && v != 0x0081) erased = 1;
                words[static_cast<std::size_t>(i / 16)] =
                    static_cast<Zep16s>(words[static_cast<std::size_t>(i / 16)] | ((v == 0x0081) << (15 - i % 16)));
            }
        } else {
            std::vector<std::uint8_t> b(static_cast<std::size_t>(2 * m_.words()));
            if (!in.read_exact(b.data(), b.size())) return 0;
            for (std::size_t i = 0; i < words.size(); ++i) words[i] = static_cast<Zep16s>(b[2 * i] | (b[2 * i + 1] << 8));
        }
        std::vector<Zep16s> coefs(static_cast<std::size_t>(m_.samples()));
        Zep32s shift = 0;
        if (zepsDecode_G7221_16s(words.data(), m_.bits, state(), m_.regions, coefs.data(), &shift, erased) !=
                zepStsNoErr ||
            zepsMLTInv_G7221_16s(coefs.data(), history_.data(), pcm, m_.samples(), shift) != zepStsNoErr)
            throw CodecError("G.722.1 decoding failed at byte " + std::to_string(in.position()));
        // The reference decoder clears the two low bits of every sample.
        for (int i = 0; i < m_.samples(); ++i) pcm[i] = static_cast<std::int16_t>(pcm[i] & 0xFFFC);
        return static_cast<std::size_t>(m_.samples());
    }

private:
    ZepG7221DecodeState* state() { return reinterpret_cast<ZepG7221DecodeState*>(state_.data()); }
    Mode m_;
    bool g192_;
    std::vector<Zep16s> history_;
    std::vector<std::uint8_t> state_;
};

zepsc_cli::CodecSpec make_spec() {
    zepsc_cli::CodecSpec s;
    s.name = "g7221";
    s.summary = "ITU-T G.722.1 transform coder, 24/32 kbit/s at 16 kHz; Annex C 24/32/48 kbit/s at 32 kHz";
    s.help =
        "Input and output: 16 kHz 16-bit PCM, or 32 kHz with --annex C (14 kHz band), 20 ms frames;\n"
        "a final partial frame is dropped and the output lags the input by one frame, as in the\n"
        "reference. Bitstreams: .pak = each frame's rate/800 16-bit words, little-endian, first bit\n"
        "in the MSB; .itu = G.192 serial (0x6B21, bit count, 0x007F/0x0081 per bit; any other sync\n"
        "word or bit value marks an erased frame, which the decoder conceals). As the reference\n"
        "decoder does, the two low bits of every decoded sample are cleared.";
    s.options = {{"rate", "bit rate in kbit/s: 24, 32 or 48", {"24", "32", "48"}, "24", false},
                 {"annex", "C: the 14 kHz mode of Annex C (32 kHz sampling)", {"C"}, "", false}};
    s.formats = {"pak", "itu"};
    s.pad_last_frame = false;
    s.make_encoder = [](const zepsc_cli::CodecOptions& o,
                        const std::string& f) -> std::unique_ptr<zepsc_cli::FrameEncoder> {
        return std::make_unique<Encoder>(mode_of(o), f == "itu");
    };
    s.make_decoder = [](const zepsc_cli::CodecOptions& o,
                        const std::string& f) -> std::unique_ptr<zepsc_cli::FrameDecoder> {
        return std::make_unique<Decoder>(mode_of(o), f == "itu");
    };
    return s;
}

const zepsc_cli::CodecRegistration registration{make_spec()};

}  // namespace

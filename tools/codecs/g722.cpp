// SPDX-License-Identifier: BSD-3-Clause
// The G.722 codec of the zepsc tool (ITU-T G.722 at 64, 56 and 48 kbit/s),
// from the public exports alone: 16 kHz 16-bit PCM in and out, one byte per
// 8-bit code word in the bitstream (the ITU-T test sequences' code in the
// low byte of each word, as RFC 3551 carries G.722).
#include <string>
#include <vector>

#include "tools/codec.h"
#include "zepsc.h"

namespace {

using zepsc_cli::CodecError;

constexpr int kCodesPerRead = 160;  // 20 ms
constexpr std::size_t kFrameSamples = 160;  // 10 ms at 16 kHz

class Encoder final : public zepsc_cli::FrameEncoder {
public:
    Encoder() : state_(size()) {
        if (zepsSBADPCMEncodeInit_G722_16s(reinterpret_cast<ZepG722EncodeState*>(state_.data())) != zepStsNoErr)
            throw CodecError("G.722 encoder initialisation failed");
    }
    int sample_rate() const override { return 16000; }
    // 10 ms per call; one code word per pair of samples, so a stream of any
    // even length is coded whole, as the reference does (an odd last sample
    // is dropped).
    std::size_t frame_samples() const override { return kFrameSamples; }
    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        encode_pairs(pcm, kFrameSamples, out);
    }
    bool encode_partial(const std::int16_t* pcm, std::size_t samples, std::vector<std::uint8_t>& out) override {
        if (samples >= 2) encode_pairs(pcm, samples & ~std::size_t{1}, out);
        return true;
    }

private:
    void encode_pairs(const std::int16_t* pcm, std::size_t samples, std::vector<std::uint8_t>& out) {
        Zep16s codes[kFrameSamples / 2];
        if (zepsSBADPCMEncode_G722_16s(pcm, codes, static_cast<Zep32s>(samples),
                                       reinterpret_cast<ZepG722EncodeState*>(state_.data())) != zepStsNoErr)
            throw CodecError("G.722 encoding failed");
        for (std::size_t i = 0; i < samples / 2; ++i) out.push_back(static_cast<std::uint8_t>(codes[i]));
    }
    static std::size_t size() {
        Zep32s n = 0;
        zepsSBADPCMEncodeStateSize_G722_16s(&n);
        return static_cast<std::size_t>(n);
    }
    std::vector<std::uint8_t> state_;
};

class Decoder final : public zepsc_cli::FrameDecoder {
public:
    explicit Decoder(int mode) : mode_(mode), state_(size()) {
        if (zepsSBADPCMDecodeInit_G722_16s(reinterpret_cast<ZepG722DecodeState*>(state_.data())) != zepStsNoErr)
            throw CodecError("G.722 decoder initialisation failed");
    }
    int sample_rate() const override { return 16000; }
    std::size_t max_frame_samples() const override { return 2 * kCodesPerRead; }
    std::size_t decode(zepsc_cli::ByteSource& in, std::int16_t* pcm) override {
        std::uint8_t bytes[kCodesPerRead];
        const std::size_t k = in.read_some(bytes, kCodesPerRead);
        if (k == 0) return 0;
        Zep16s codes[kCodesPerRead];
        for (std::size_t i = 0; i < k; ++i) codes[i] = bytes[i];
        if (zepsSBADPCMDecode_G722_16s(codes, pcm, mode_, static_cast<Zep32s>(k),
                                       reinterpret_cast<ZepG722DecodeState*>(state_.data())) != zepStsNoErr)
            throw CodecError("G.722 decoding failed");
        return 2 * k;
    }

private:
    static std::size_t size() {
        Zep32s n = 0;
        zepsSBADPCMDecodeStateSize_G722_16s(&n);
        return static_cast<std::size_t>(n);
    }
    int mode_;
    std::vector<std::uint8_t> state_;
};

zepsc_cli::CodecSpec make_spec() {
    zepsc_cli::CodecSpec s;
    s.name = "g722";
    s.summary = "ITU-T G.722 wide-band sub-band ADPCM, 64/56/48 kbit/s (16 kHz)";
    s.help =
        "Input and output: 16 kHz 16-bit PCM. Bitstream (.g722): one byte per 8-bit code word,\n"
        "one code word per pair of samples, as RFC 3551 carries G.722. The encoder always\n"
        "codes at 64 kbit/s; --mode selects the decoder's 64 (1), 56 (2) or 48 (3) kbit/s\n"
        "lower sub-band inverse quantiser.";
    s.options = {{"mode", "decoder mode: 1 = 64, 2 = 56, 3 = 48 kbit/s", {"1", "2", "3"}, "1", false}};
    s.formats = {"g722"};
    s.pad_last_frame = false;
    s.make_encoder = [](const zepsc_cli::CodecOptions&, const std::string&) -> std::unique_ptr<zepsc_cli::FrameEncoder> {
        return std::make_unique<Encoder>();
    };
    s.make_decoder = [](const zepsc_cli::CodecOptions& o,
                        const std::string&) -> std::unique_ptr<zepsc_cli::FrameDecoder> {
        return std::make_unique<Decoder>(std::stoi(o.get("mode", "1")));
    };
    return s;
}

const zepsc_cli::CodecRegistration registration{make_spec()};

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
// Whole G.729 codecs per 10 ms frame, the codec of `zepsc g729` (public
// exports): main body, Annexes A, B (main body with VAD/DTX), AB, D (6.4
// kbit/s) encoders and decoders, and the Annex E decoder (11.8 kbit/s; its
// encoder is not available), through bench/interleaved.h: the public entries
// (the build the library chose), the same calls with each build forced, and
// the peer round by round in one loop on the same frames.
//
// Peer: Debian's libbcg729 (G.729 Annex A, optionally its Annex B VAD/DTX).
// Its channel is made once, outside the timing, and carried across calls as
// ours is. Annex A encoder and decoder: DTX off on both sides, same speech,
// and the decoder of each side reads the same Annex A frames (our encoding,
// 10-byte RTP payloads, which both take). Annex AB: bcg729 with its VAD on
// (x_bcg729_vad), decoding its own encoding; the two VADs decide
// differently, so that ratio also weighs how many frames each sends.
//
// One call = 100 frames (1 s of shared/speech/male.s16, or the first 100
// frames of the Annex E reference stream of that file); the coder state runs
// on from call to call. Counters in ns per frame (see bench/interleaved.h).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "bench/interleaved.h"
#include "bench/speech_file.h"
#include "tools/codec.h"

#if defined(ZEPS_HAVE_LIBBCG729)
extern "C" {  // the library's headers declare C functions without a C++ guard
#include <bcg729/decoder.h>
#include <bcg729/encoder.h>
}
#endif

namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr int kFrame = 80;
constexpr int kFrames = 100;

const std::vector<std::int16_t>& speech() {
    static const std::vector<std::int16_t> s = zb::read_s16_le(ZEPS_SHARED_DIR "/speech/male.s16", kFrame * kFrames);
    return s;
}

const zepsc_cli::CodecSpec& g729() {
    const zepsc_cli::CodecSpec* c = zepsc_cli::find_codec("g729");
    if (c == nullptr) std::abort();
    return *c;
}

zepsc_cli::CodecOptions options(const char* annex) {
    zepsc_cli::CodecOptions o;
    o.values["annex"] = annex;
    return zepsc_cli::with_defaults(g729(), o);
}

/// The Annex E reference encoding of male.s16 (ITU-T serial format), cut
/// after its first kFrames frames (each: SYNC, size word, size bit words).
Bytes annex_e_stream() {
    std::ifstream f(ZEPS_SHARED_DIR "/codecs/g729/g729e/male.bit", std::ios::binary);
    Bytes all((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    std::size_t at = 0;
    for (int n = 0; n < kFrames && at + 4 <= all.size(); ++n) at += 4 + 2 * std::size_t(all[at + 2] | all[at + 3] << 8);
    all.resize(std::min(at, all.size()));
    return all;
}

/// Our encoder of one annex: one call codes the kFrames frames.
zb::Factory our_encoder(const char* annex, const char* fmt) {
    return [annex, fmt] {
        std::shared_ptr<zepsc_cli::FrameEncoder> enc = g729().make_encoder(options(annex), fmt);
        auto out = std::make_shared<Bytes>();
        out->reserve(512 * kFrames);
        return zb::Call([enc, out] {
            out->clear();
            for (int f = 0; f < kFrames; ++f) enc->encode(speech().data() + f * kFrame, *out);
            benchmark::DoNotOptimize(out->data());
        });
    };
}

/// Our decoder of one annex over a stream: one call decodes it whole.
zb::Factory our_decoder(const char* annex, const char* fmt, std::shared_ptr<const Bytes> bits) {
    return [annex, fmt, bits] {
        std::shared_ptr<zepsc_cli::FrameDecoder> dec = g729().make_decoder(options(annex), fmt);
        return zb::Call([dec, bits] {
            zepsc_cli::MemorySource in(bits->data(), bits->size());
            std::int16_t pcm[kFrame];
            while (dec->decode(in, pcm) != 0) benchmark::DoNotOptimize(pcm);
        });
    };
}

std::shared_ptr<const Bytes> our_stream(const char* annex, const char* fmt) {
    return std::make_shared<const Bytes>(
        zepsc_cli::encode_all(g729(), options(annex), fmt, speech().data(), speech().size()));
}

// ---------------------------------------------------------------- peer

#if defined(ZEPS_HAVE_LIBBCG729)
zb::Peer bcg729_encoder(bool vad) {
    auto enc = std::shared_ptr<bcg729EncoderChannelContextStruct>(initBcg729EncoderChannel(vad ? 1 : 0),
                                                                  closeBcg729EncoderChannel);
    auto out = std::make_shared<Bytes>(10 * kFrames);
    return {vad ? "bcg729_vad" : "bcg729", [enc, out] {
                std::uint8_t len = 0;
                for (int f = 0; f < kFrames; ++f)
                    bcg729Encoder(enc.get(), speech().data() + f * kFrame, out->data() + 10 * f, &len);
                benchmark::DoNotOptimize(out->data());
            }};
}

/// bits: 10-byte frames (lens null) or the peer's own frames of lens[f]
/// bytes (10, 2 for SID, 0 untransmitted) at 10-byte strides.
zb::Peer bcg729_decoder(const char* name, std::shared_ptr<const Bytes> bits, std::shared_ptr<const Bytes> lens) {
    auto dec = std::shared_ptr<bcg729DecoderChannelContextStruct>(initBcg729DecoderChannel(), closeBcg729DecoderChannel);
    return {name, [dec, bits, lens] {
                std::int16_t pcm[kFrame];
                for (int f = 0; f < kFrames; ++f) {
                    const std::uint8_t len = lens ? (*lens)[static_cast<std::size_t>(f)] : 10;
                    bcg729Decoder(dec.get(), bits->data() + 10 * f, len, 0, len == 10 ? 0 : 1, 0, pcm);
                    benchmark::DoNotOptimize(pcm);
                }
            }};
}

/// The peer decoding its own VAD/DTX encoding of the speech.
zb::Peer bcg729_vad_decoder() {
    auto bits = std::make_shared<Bytes>(10 * kFrames);
    auto lens = std::make_shared<Bytes>(kFrames);
    bcg729EncoderChannelContextStruct* enc = initBcg729EncoderChannel(1);
    for (int f = 0; f < kFrames; ++f)
        bcg729Encoder(enc, speech().data() + f * kFrame, bits->data() + 10 * f, lens->data() + f);
    closeBcg729EncoderChannel(enc);
    return bcg729_decoder("bcg729_vad", bits, lens);
}
#endif

// ---------------------------------------------------------------- benchmarks

struct Annex {
    const char* annex;
    const char* fmt;
    int peer;  // 0 none, 1 bcg729 without VAD, 2 bcg729 with its VAD
};
constexpr Annex kAnnexes[] = {
    {"0", "g729", 0}, {"A", "g729", 1}, {"B", "bit", 0}, {"AB", "bit", 2}, {"D", "bit", 0},
};

void label(benchmark::State& state, const Annex& a, bool encode) {
    state.SetLabel(std::string(encode ? "encoder" : "decoder") + ", annex " + a.annex + ", ns per frame");
}

void BM_G729Encoder(benchmark::State& state) {
    const Annex& a = kAnnexes[state.range(0)];
    std::vector<zb::Peer> peers;
#if defined(ZEPS_HAVE_LIBBCG729)
    if (a.peer != 0) peers.push_back(bcg729_encoder(a.peer == 2));
#endif
    zb::interleaved(state, our_encoder(a.annex, a.fmt), std::move(peers), kFrames);
    label(state, a, true);
}
BENCHMARK(BM_G729Encoder)->DenseRange(0, 4)->ArgName("annex_0_A_B_AB_D")->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

void BM_G729Decoder(benchmark::State& state) {
    const Annex& a = kAnnexes[state.range(0)];
    const auto bits = our_stream(a.annex, a.fmt);
    std::vector<zb::Peer> peers;
#if defined(ZEPS_HAVE_LIBBCG729)
    if (a.peer == 1) peers.push_back(bcg729_decoder("bcg729", bits, nullptr));
    if (a.peer == 2) peers.push_back(bcg729_vad_decoder());
#endif
    zb::interleaved(state, our_decoder(a.annex, a.fmt, bits), std::move(peers), kFrames);
    label(state, a, false);
}
BENCHMARK(BM_G729Decoder)->DenseRange(0, 4)->ArgName("annex_0_A_B_AB_D")->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

/// Annex E decoder over the first 100 frames of the reference stream (11.8
/// kbit/s); skipped when the shared stream is absent.
void BM_G729EDecoder(benchmark::State& state) {
    auto bits = std::make_shared<const Bytes>(annex_e_stream());
    if (bits->empty()) {
        state.SkipWithError("shared/codecs/g729/g729e/male.bit not found");
        return;
    }
    zb::interleaved(state, our_decoder("E", "bit", bits), {}, kFrames);
    state.SetLabel("decoder, annex E 11.8 kbit/s, ns per frame");
}
BENCHMARK(BM_G729EDecoder)->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

}  // namespace

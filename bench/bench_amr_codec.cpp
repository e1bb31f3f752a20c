// SPDX-License-Identifier: BSD-3-Clause
// Whole GSM-AMR codec per 20 ms frame, the codec of `zepsc amr` (public
// exports), encoder and decoder in each mode 4.75 .. 12.2 with DTX off,
// through bench/interleaved.h: the public entries (the build the library
// chose), the same calls with each build forced, and the peer round by round
// in one loop on the same frames.
//
// Peer: Debian's libopencore-amrnb (its whole-codec interface). Its state is
// made once, outside the timing, and carried across calls as ours is. Both
// encoders code the same speech in the same mode with DTX off; both decoders
// read the same RFC 4867 storage frames (our encoding of that speech, ToC
// byte first, which both take).
//
// One call = 50 frames (1 s of shared/speech/male.s16); the coder state runs
// on from call to call. Counters in ns per frame (see bench/interleaved.h).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench/interleaved.h"
#include "bench/speech_file.h"
#include "tools/codec.h"

#if defined(ZEPS_HAVE_OPENCORE_AMRNB)
#include <opencore-amrnb/interf_dec.h>
#include <opencore-amrnb/interf_enc.h>
#endif

namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr int kFrame = 160;
constexpr int kFrames = 50;
const char* const kModes[8] = {"4.75", "5.15", "5.9", "6.7", "7.4", "7.95", "10.2", "12.2"};
// Storage bytes of a speech frame per mode, ToC byte included.
constexpr int kStorageBytes[8] = {13, 14, 16, 18, 20, 21, 27, 32};

const std::vector<std::int16_t>& speech() {
    static const std::vector<std::int16_t> s = zb::read_s16_le(ZEPS_SHARED_DIR "/speech/male.s16", kFrame * kFrames);
    return s;
}

const zepsc_cli::CodecSpec& amr() {
    const zepsc_cli::CodecSpec* c = zepsc_cli::find_codec("amr");
    if (c == nullptr) std::abort();
    return *c;
}

zepsc_cli::CodecOptions options(int mode) {
    zepsc_cli::CodecOptions o;
    o.values["mode"] = kModes[mode];
    return zepsc_cli::with_defaults(amr(), o);
}

/// Our encoder in one mode: one call codes the kFrames frames.
zb::Factory our_encoder(int mode) {
    return [mode] {
        std::shared_ptr<zepsc_cli::FrameEncoder> enc = amr().make_encoder(options(mode), "amr");
        auto out = std::make_shared<Bytes>();
        out->reserve(32 * kFrames);
        return zb::Call([enc, out] {
            out->clear();
            for (int f = 0; f < kFrames; ++f) enc->encode(speech().data() + f * kFrame, *out);
            benchmark::DoNotOptimize(out->data());
        });
    };
}

/// Our storage-format encoding of the speech in one mode ("#!AMR\n" first).
std::shared_ptr<const Bytes> our_stream(int mode) {
    return std::make_shared<const Bytes>(
        zepsc_cli::encode_all(amr(), options(mode), "amr", speech().data(), speech().size()));
}

/// Our decoder over a storage stream: one call decodes it whole.
zb::Factory our_decoder(std::shared_ptr<const Bytes> bits) {
    return [bits] {
        std::shared_ptr<zepsc_cli::FrameDecoder> dec = amr().make_decoder(options(7), "amr");
        return zb::Call([dec, bits] {
            zepsc_cli::MemorySource in(bits->data(), bits->size());
            dec->begin(in);
            std::int16_t pcm[kFrame];
            while (dec->decode(in, pcm) != 0) benchmark::DoNotOptimize(pcm);
        });
    };
}

// ---------------------------------------------------------------- peer

#if defined(ZEPS_HAVE_OPENCORE_AMRNB)
zb::Peer opencore_encoder(int mode) {
    auto enc = std::shared_ptr<void>(Encoder_Interface_init(0), Encoder_Interface_exit);
    auto out = std::make_shared<Bytes>(32 * kFrames);
    return {"opencore", [enc, out, mode] {
                std::size_t at = 0;
                for (int f = 0; f < kFrames; ++f)
                    at += static_cast<std::size_t>(Encoder_Interface_Encode(
                        enc.get(), static_cast<Mode>(mode), speech().data() + f * kFrame, out->data() + at, 0));
                benchmark::DoNotOptimize(out->data());
            }};
}

/// The peer decoding our stream (header skipped; every frame a speech frame of the mode).
zb::Peer opencore_decoder(int mode, std::shared_ptr<const Bytes> bits) {
    auto dec = std::shared_ptr<void>(Decoder_Interface_init(), Decoder_Interface_exit);
    return {"opencore", [dec, bits, mode] {
                std::int16_t pcm[kFrame];
                const std::size_t size = static_cast<std::size_t>(kStorageBytes[mode]);
                for (std::size_t at = 6; at + size <= bits->size(); at += size) {
                    Decoder_Interface_Decode(dec.get(), bits->data() + at, pcm, 0);
                    benchmark::DoNotOptimize(pcm);
                }
            }};
}
#endif

// ---------------------------------------------------------------- benchmarks

void label(benchmark::State& state, int mode, bool encode) {
    state.SetLabel(std::string(encode ? "encoder" : "decoder") + ", " + kModes[mode] + " kbit/s, ns per frame");
}

void BM_AmrEncoder(benchmark::State& state) {
    const int mode = static_cast<int>(state.range(0));
    std::vector<zb::Peer> peers;
#if defined(ZEPS_HAVE_OPENCORE_AMRNB)
    peers.push_back(opencore_encoder(mode));
#endif
    zb::interleaved(state, our_encoder(mode), std::move(peers), kFrames);
    label(state, mode, true);
}
BENCHMARK(BM_AmrEncoder)->DenseRange(0, 7)->ArgName("mode")->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

void BM_AmrDecoder(benchmark::State& state) {
    const int mode = static_cast<int>(state.range(0));
    const auto bits = our_stream(mode);
    if (bits->size() != 6 + static_cast<std::size_t>(kStorageBytes[mode]) * kFrames) {
        state.SkipWithError("unexpected size of our storage stream");
        return;
    }
    std::vector<zb::Peer> peers;
#if defined(ZEPS_HAVE_OPENCORE_AMRNB)
    peers.push_back(opencore_decoder(mode, bits));
#endif
    zb::interleaved(state, our_decoder(bits), std::move(peers), kFrames);
    label(state, mode, false);
}
BENCHMARK(BM_AmrDecoder)->DenseRange(0, 7)->ArgName("mode")->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

}  // namespace

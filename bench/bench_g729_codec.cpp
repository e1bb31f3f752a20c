// SPDX-License-Identifier: BSD-3-Clause
// Whole G.729 codecs per 10 ms frame: the encoder and decoder of the main
// body and of Annex A assembled from the public exports (the zepsc tool's
// codec), beside Debian's libbcg729 (G.729 Annex A, here without VAD) on
// the same speech. Frames of shared/speech/male.s16, looped.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/codec.h"

#if defined(ZEPS_HAVE_LIBBCG729)
extern "C" {  // the library's headers declare C functions without a C++ guard
#include <bcg729/decoder.h>
#include <bcg729/encoder.h>
}
#endif

namespace {

using V16 = std::vector<std::int16_t>;
constexpr std::size_t kFrame = 80;

const V16& speech() {
    static const V16 s = [] {
        V16 v;
        const std::string path = std::string(ZEPS_SHARED_DIR) + "/speech/male.s16";
        if (FILE* f = std::fopen(path.c_str(), "rb")) {
            std::int16_t buf[4096];
            std::size_t n;
            while ((n = std::fread(buf, sizeof(std::int16_t), 4096, f)) > 0) v.insert(v.end(), buf, buf + n);
            std::fclose(f);
        }
        if (v.size() < 100 * kFrame) v.assign(100 * kFrame, 0);
        v.resize(v.size() / kFrame * kFrame);
        return v;
    }();
    return s;
}

std::size_t frames() { return speech().size() / kFrame; }

zepsc_cli::CodecOptions annex(const char* a) {
    zepsc_cli::CodecOptions o;
    o.values["annex"] = a;
    return o;
}

const zepsc_cli::CodecSpec& g729() {
    const zepsc_cli::CodecSpec* c = zepsc_cli::find_codec("g729");
    if (!c) std::abort();
    return *c;
}

void encoder(benchmark::State& st, const char* a) {
    auto enc = g729().make_encoder(zepsc_cli::with_defaults(g729(), annex(a)), "g729");
    std::vector<std::uint8_t> out;
    out.reserve(16);
    std::size_t f = 0;
    for (auto _ : st) {
        out.clear();
        enc->encode(speech().data() + f * kFrame, out);
        benchmark::DoNotOptimize(out.data());
        if (++f == frames()) f = 0;
    }
    st.SetLabel("per 10 ms frame");
}

void decoder(benchmark::State& st, const char* a) {
    const auto bits = zepsc_cli::encode_all(g729(), annex(a), "g729", speech().data(), speech().size());
    auto dec = g729().make_decoder(zepsc_cli::with_defaults(g729(), annex(a)), "g729");
    std::int16_t pcm[kFrame];
    std::size_t f = 0;
    for (auto _ : st) {
        zepsc_cli::MemorySource src(bits.data() + f * 10, 10);
        benchmark::DoNotOptimize(dec->decode(src, pcm));
        if (++f == bits.size() / 10) f = 0;
    }
    st.SetLabel("per 10 ms frame");
}

void BM_G729_Encoder(benchmark::State& st) { encoder(st, "0"); }
void BM_G729_Decoder(benchmark::State& st) { decoder(st, "0"); }
void BM_G729A_Encoder(benchmark::State& st) { encoder(st, "A"); }
void BM_G729A_Decoder(benchmark::State& st) { decoder(st, "A"); }
BENCHMARK(BM_G729_Encoder);
BENCHMARK(BM_G729_Decoder);
BENCHMARK(BM_G729A_Encoder);
BENCHMARK(BM_G729A_Decoder);

#if defined(ZEPS_HAVE_LIBBCG729)
void BM_G729A_Encoder_bcg729(benchmark::State& st) {
    bcg729EncoderChannelContextStruct* enc = initBcg729EncoderChannel(0);
    std::uint8_t bits[10], len = 0;
    std::size_t f = 0;
    for (auto _ : st) {
        bcg729Encoder(enc, speech().data() + f * kFrame, bits, &len);
        benchmark::DoNotOptimize(bits);
        if (++f == frames()) f = 0;
    }
    closeBcg729EncoderChannel(enc);
    st.SetLabel("per 10 ms frame");
}
void BM_G729A_Decoder_bcg729(benchmark::State& st) {
    const auto bits = zepsc_cli::encode_all(g729(), annex("A"), "g729", speech().data(), speech().size());
    bcg729DecoderChannelContextStruct* dec = initBcg729DecoderChannel();
    std::int16_t pcm[kFrame];
    std::size_t f = 0;
    for (auto _ : st) {
        bcg729Decoder(dec, bits.data() + f * 10, 10, 0, 0, 0, pcm);
        benchmark::DoNotOptimize(pcm);
        if (++f == bits.size() / 10) f = 0;
    }
    closeBcg729DecoderChannel(dec);
    st.SetLabel("per 10 ms frame");
}
BENCHMARK(BM_G729A_Encoder_bcg729);
BENCHMARK(BM_G729A_Decoder_bcg729);
#endif

}  // namespace

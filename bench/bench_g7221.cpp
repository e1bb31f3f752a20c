// SPDX-License-Identifier: BSD-3-Clause
// G.722.1 encoder and decoder per 20 ms frame (MLT and frame coder; frame
// decoder and inverse MLT) at 24 and 32 kbit/s and Annex C 24/32/48 kbit/s,
// on shared speech, through the public entries and each build forced
// (bench/interleaved.h: medians of per-round times, ns per frame). One call
// = 100 frames (2 s); the MLT history and the decoder state run on from call
// to call. No peer: neither spandsp nor FFmpeg has a G.722.1 coder (FFmpeg's
// "siren" decoder reads MSN Siren streams in floating point), and the ITU
// reference has no library to link.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <memory>
#include <vector>

#include "bench/interleaved.h"
#include "zepsc.h"

namespace {

constexpr int kFrames = 100;  // 2 s

struct Config {
    int bits, regions;
    int n() const { return regions == 28 ? 640 : 320; }
};
constexpr Config kConfigs[] = {{480, 14}, {640, 14}, {480, 28}, {640, 28}, {960, 28}};

const std::vector<Zep16s>& speech(int n) {
    static std::vector<Zep16s> s16, s32;
    auto& s = n == 640 ? s32 : s16;
    if (s.empty()) {
        s.resize(static_cast<std::size_t>(kFrames * n));
        std::ifstream f(n == 640 ? ZEPS_SHARED_DIR "/codecs/g7221/input32k/male.s16"
                                 : ZEPS_SHARED_DIR "/codecs/g7221/input16k/male.s16",
                        std::ios::binary);
        for (auto& x : s) {
            unsigned char b[2] = {0, 0};
            f.read(reinterpret_cast<char*>(b), 2);
            x = static_cast<Zep16s>(b[0] | (b[1] << 8));
        }
    }
    return s;
}

using V16 = std::vector<Zep16s>;

void BM_G7221Encode(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    speech(c.n());
    zb::interleaved(
        state,
        [c] {
            auto hist = std::make_shared<V16>(static_cast<std::size_t>(c.n()), 0);
            auto coefs = std::make_shared<V16>(static_cast<std::size_t>(c.n()));
            auto words = std::make_shared<V16>(60);
            return zb::Call([c, hist, coefs, words] {
                const auto& pcm = speech(c.n());
                for (int f = 0; f < kFrames; ++f) {
                    Zep32s shift = 0;
                    zepsMLTFwd_G7221_16s(&pcm[static_cast<std::size_t>(f * c.n())], hist->data(), coefs->data(), c.n(),
                                         &shift);
                    zepsEncode_G7221_16s(c.bits, c.regions, coefs->data(), shift, words->data());
                    benchmark::DoNotOptimize(words->data());
                }
            });
        },
        {}, kFrames);
    state.SetLabel("encoder, ns per frame");
}
BENCHMARK(BM_G7221Encode)->DenseRange(0, 4)->ArgName("config")->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

void BM_G7221Decode(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    const auto& pcm = speech(c.n());
    const std::size_t per = static_cast<std::size_t>(c.bits / 16);
    auto stream = std::make_shared<V16>(kFrames * per);
    {
        V16 hist(static_cast<std::size_t>(c.n()), 0), coefs(hist.size());
        for (int f = 0; f < kFrames; ++f) {
            Zep32s shift = 0;
            zepsMLTFwd_G7221_16s(&pcm[static_cast<std::size_t>(f * c.n())], hist.data(), coefs.data(), c.n(), &shift);
            zepsEncode_G7221_16s(c.bits, c.regions, coefs.data(), shift, &(*stream)[f * per]);
        }
    }
    zb::interleaved(
        state,
        [c, per, stream] {
            Zep32s size = 0;
            zepsDecodeStateSize_G7221_16s(&size);
            auto st = std::make_shared<std::vector<std::uint8_t>>(static_cast<std::size_t>(size));
            zepsDecodeInit_G7221_16s(reinterpret_cast<ZepG7221DecodeState*>(st->data()));
            auto coefs = std::make_shared<V16>(static_cast<std::size_t>(c.n()));
            auto half = std::make_shared<V16>(static_cast<std::size_t>(c.n() / 2), 0);
            auto out = std::make_shared<V16>(static_cast<std::size_t>(c.n()));
            return zb::Call([c, per, stream, st, coefs, half, out] {
                auto* s = reinterpret_cast<ZepG7221DecodeState*>(st->data());
                for (int f = 0; f < kFrames; ++f) {
                    Zep32s shift = 0;
                    zepsDecode_G7221_16s(&(*stream)[f * per], c.bits, s, c.regions, coefs->data(), &shift, 0);
                    zepsMLTInv_G7221_16s(coefs->data(), half->data(), out->data(), c.n(), shift);
                    benchmark::DoNotOptimize(out->data());
                }
            });
        },
        {}, kFrames);
    state.SetLabel("decoder, ns per frame");
}
BENCHMARK(BM_G7221Decode)->DenseRange(0, 4)->ArgName("config")->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
// G.722.1 encoder and decoder time per 20 ms frame (MLT and frame coder;
// inverse MLT and frame decoder) at 24 and 32 kbit/s and Annex C 24/32/48
// kbit/s, on shared speech. Counter: us_per_frame (best pass of all frames
// of 2 s, thread CPU time). The ITU reference has no library to link; its
// figures are in docs/performance.md.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <vector>

#include "frame/variants.h"

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

double cpu_ns() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e9 + static_cast<double>(ts.tv_nsec);
}

void BM_G7221Encode(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    const auto& pcm = speech(c.n());
    std::vector<Zep16s> hist(static_cast<std::size_t>(c.n())), coefs(hist.size()), words(60);
    double best = 1e30;
    for (auto _ : state) {
        std::fill(hist.begin(), hist.end(), 0);
        const double t0 = cpu_ns();
        for (int f = 0; f < kFrames; ++f) {
            Zep32s shift = 0;
            zeps::u8::zepsMLTFwd_G7221_16s(&pcm[static_cast<std::size_t>(f * c.n())], hist.data(), coefs.data(), c.n(), &shift);
            zeps::u8::zepsEncode_G7221_16s(c.bits, c.regions, coefs.data(), shift, words.data());
            benchmark::DoNotOptimize(words.data());
        }
        best = std::min(best, cpu_ns() - t0);
    }
    state.counters["us_per_frame"] = best / kFrames / 1000.0;
}
BENCHMARK(BM_G7221Encode)->DenseRange(0, 4)->ArgName("config");

void BM_G7221Decode(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    const auto& pcm = speech(c.n());
    const std::size_t per = static_cast<std::size_t>(c.bits / 16);
    std::vector<Zep16s> hist(static_cast<std::size_t>(c.n()), 0), coefs(hist.size()), stream(kFrames * per),
        out(hist.size()), half(hist.size() / 2);
    for (int f = 0; f < kFrames; ++f) {
        Zep32s shift = 0;
        zeps::u8::zepsMLTFwd_G7221_16s(&pcm[static_cast<std::size_t>(f * c.n())], hist.data(), coefs.data(), c.n(), &shift);
        zeps::u8::zepsEncode_G7221_16s(c.bits, c.regions, coefs.data(), shift, &stream[f * per]);
    }
    std::vector<std::uint8_t> st(1296);
    auto* s = reinterpret_cast<ZepG7221DecodeState*>(st.data());
    double best = 1e30;
    for (auto _ : state) {
        zeps::u8::zepsDecodeInit_G7221_16s(s);
        std::fill(half.begin(), half.end(), 0);
        const double t0 = cpu_ns();
        for (int f = 0; f < kFrames; ++f) {
            Zep32s shift = 0;
            zeps::u8::zepsDecode_G7221_16s(&stream[f * per], c.bits, s, c.regions, coefs.data(), &shift, 0);
            zeps::u8::zepsMLTInv_G7221_16s(coefs.data(), half.data(), out.data(), c.n(), shift);
            benchmark::DoNotOptimize(out.data());
        }
        best = std::min(best, cpu_ns() - t0);
    }
    state.counters["us_per_frame"] = best / kFrames / 1000.0;
}
BENCHMARK(BM_G7221Decode)->DenseRange(0, 4)->ArgName("config");

}  // namespace

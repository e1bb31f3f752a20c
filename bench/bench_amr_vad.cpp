// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR VAD options 1 and 2, the open-loop pitch searches per rate and the
// VAD option 2 FFT: nanoseconds per 20 ms frame (per call for the FFT), on
// real speech. The peer line is a whole opencore-amrnb encoder frame with
// DTX on (VAD + open loop + everything else), for scale only: opencore
// exposes no single stage.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "frame/variants.h"

#ifdef ZEPS_HAVE_OPENCORE_AMRNB
#include <opencore-amrnb/interf_enc.h>
#endif

namespace zeps::u8::amr {
void r_fft_scalar(std::int16_t* x);  // scalar baseline of the FFT (amr/r_fft.cpp)
}

namespace {

std::vector<Zep16s> speech(const char* name) {
    std::ifstream f(std::string(ZEPS_SHARED_DIR) + "/speech/" + name, std::ios::binary);
    std::vector<char> b((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    std::vector<Zep16s> s(b.size() / 2);
    for (std::size_t i = 0; i < s.size(); ++i)
        s[i] = static_cast<Zep16s>(static_cast<std::uint8_t>(b[2 * i]) | (static_cast<std::uint8_t>(b[2 * i + 1]) << 8));
    return s;
}

const std::vector<Zep16s>& male() {
    static const std::vector<Zep16s> s = speech("male.s16");
    return s;
}

/// Offset of frame k (the 40 samples before it must exist).
std::size_t frame_at(std::size_t k) {
    const std::size_t frames = (male().size() - 40) / 160;
    return 40 + (k % frames) * 160;
}

void BM_VAD1(benchmark::State& state) {
    ZepVAD1State_GSMAMR st;
    zepsVAD1StateReset_GSMAMR(&st);
    Zep16s flag = 0;
    std::size_t k = 0;
    for (auto _ : state) {
        zeps::u8::zepsVAD1_GSMAMR_16s(&male()[frame_at(k++) - 40], &st, &flag, 13106, 0);
        benchmark::DoNotOptimize(flag);
    }
}
BENCHMARK(BM_VAD1);

void BM_VAD2(benchmark::State& state) {
    ZepVAD2State_GSMAMR st;
    zepsVAD2StateReset_GSMAMR(&st);
    Zep16s flag = 0;
    std::size_t k = 0;
    for (auto _ : state) {
        zeps::u8::zepsVAD2_GSMAMR_16s(&male()[frame_at(k++)], &st, &flag, 0);
        benchmark::DoNotOptimize(flag);
    }
}
BENCHMARK(BM_VAD2);

/// Per call, including a 256-byte copy of fresh input (about 10 ns).
void BM_FFT(benchmark::State& state) {
    std::vector<Zep16s> x(128);
    std::size_t k = 0;
    for (auto _ : state) {
        std::copy_n(&male()[frame_at(k++)], 128, x.begin());
        zeps::u8::zepsFFTFwd_RToPerm_GSMAMR_16s_I(x.data());
        benchmark::DoNotOptimize(x.data());
    }
}
BENCHMARK(BM_FFT);

void BM_FFT_ScalarBaseline(benchmark::State& state) {
    std::vector<Zep16s> x(128);
    std::size_t k = 0;
    for (auto _ : state) {
        std::copy_n(&male()[frame_at(k++)], 128, x.begin());
        zeps::u8::amr::r_fft_scalar(x.data());
        benchmark::DoNotOptimize(x.data());
    }
}
BENCHMARK(BM_FFT_ScalarBaseline);

/// Open-loop search per rate; arg 0 = NonDTX, 1 = DTX + VAD1, 2 = DTX + VAD2.
void BM_OpenLoop(benchmark::State& state) {
    const Zep32s rate = static_cast<Zep32s>(state.range(0));
    const int which = static_cast<int>(state.range(1));
    static const Zep16s a[11] = {4096, -2695, 65, -826, 412, -682, 737, -290, 663, -600, 275};
    std::vector<Zep16s> lpc(44), mem(10, 0), hist(143, 0), lags(5, 40), gain(2, 0), wsp(160), T(2);
    std::vector<Zep16s> regs = {40, 0, 0, 0, 0, 0, 0, 13106};
    for (int i = 0; i < 44; ++i) lpc[i] = a[i % 11];
    Zep32s rmax = 0, r0 = 0;
    std::size_t k = 0;
    for (auto _ : state) {
        const Zep16s* sp = &male()[frame_at(k++) - 10];
        if (which == 0)
            zeps::u8::zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s(lpc.data(), sp, mem.data(), hist.data(), lags.data(),
                                                              gain.data(), regs.data(), wsp.data(), T.data(), rate);
        else if (which == 1)
            zeps::u8::zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(lpc.data(), sp, mem.data(), hist.data(), lags.data(),
                                                               gain.data(), regs.data(), wsp.data(), T.data(), rate);
        else
            zeps::u8::zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(lpc.data(), sp, mem.data(), hist.data(),
                                                                  lags.data(), gain.data(), regs.data(), wsp.data(),
                                                                  T.data(), &rmax, &r0, rate);
        benchmark::DoNotOptimize(T.data());
    }
}
BENCHMARK(BM_OpenLoop)->ArgsProduct({{0, 1, 3, 6, 7, 8, 11, 12}, {0, 1, 2}});

#ifdef ZEPS_HAVE_OPENCORE_AMRNB
void BM_Peer_OpencoreEncoderFrameDTX(benchmark::State& state) {
    void* enc = Encoder_Interface_init(1);
    unsigned char out[64];
    std::size_t k = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            Encoder_Interface_Encode(enc, static_cast<Mode>(state.range(0)), &male()[frame_at(k++)], out, 0));
    }
    Encoder_Interface_exit(enc);
}
BENCHMARK(BM_Peer_OpencoreEncoderFrameDTX)->Arg(0)->Arg(7);
#endif

}  // namespace

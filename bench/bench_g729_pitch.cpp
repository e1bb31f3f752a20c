// SPDX-License-Identifier: BSD-3-Clause
// G.729 pitch stages on real speech: ns per call of each export, and ns per
// 10 ms frame for the encoder's pitch path (open-loop search, two closed-loop
// searches, two gains), base codec and Annex A.
//
// Inputs: speech from shared/speech stands in for the weighted speech (open
// loop), for the LPC residual in the excitation buffer and for the target;
// the impulse response is one recorded from the reference encoder. No peer
// library exposes these stages (FFmpeg's G.729 is a decoder with internal
// kernels, spandsp has no G.729), so there is no peer column.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "frame/variants.h"
#include "g729/pitch_kernels.h"

namespace {

using V16 = std::vector<Zep16s>;

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
        if (v.size() < 20000) v.assign(20000, 0);
        for (auto& x : v) x = static_cast<Zep16s>(x / 2);  // keep the weighted-speech headroom
        return v;
    }();
    return s;
}

const Zep16s kH[40] = {4096, 1258, -1009, -89, -139, -185, -11, -62, -10, 100, 146, 1, -67, 8,
                       -14,  -18,  7,     -7,  3,    10,   3,   -1,  -3,  1,   -1,  -2, 1, 0,
                       1,    1,    0,     0,   0,    0,    0,   0,   0,   0,   0,   0};

constexpr int kFrames = 200;
std::size_t frame_start(int f) { return 200 + static_cast<std::size_t>(f) * 80; }

template <class Fn>
void open_loop(benchmark::State& st, Fn fn) {
    const V16& s = speech();
    Zep16s lag = 0;
    int f = 0;
    for (auto _ : st) {
        fn(s.data() + frame_start(f), &lag);
        benchmark::DoNotOptimize(lag);
        f = (f + 1) % kFrames;
    }
}

/// Open-loop lags of the benchmark frames (Annex A search), computed once.
const V16& open_loop_lags() {
    static const V16 lags = [] {
        V16 v(kFrames);
        for (int f = 0; f < kFrames; ++f) zeps::u8::zepsOpenLoopPitchSearch_G729A_16s(speech().data() + frame_start(f), &v[f]);
        return v;
    }();
    return lags;
}

// The excitation buffer is refreshed inside the timed loop (a 388-byte copy,
// a few ns): the search writes its adaptive vector into it.
template <class Fn>
void closed_loop(benchmark::State& st, Fn fn) {
    const V16& s = speech();
    const V16& ol = open_loop_lags();
    V16 exc(194), d(2), v(40);
    int f = 0;
    for (auto _ : st) {
        const Zep16s* p = s.data() + frame_start(f) - 154;
        std::copy(p, p + 194, exc.begin());
        fn(ol[f], s.data() + frame_start(f), kH, exc.data(), d.data(), v.data(), 0);
        benchmark::DoNotOptimize(v.data());
        f = (f + 1) % kFrames;
    }
}

template <class Fn>
void gain(benchmark::State& st, Fn fn) {
    const V16& s = speech();
    V16 y(40);
    Zep16s g = 0;
    int f = 0;
    for (auto _ : st) {
        fn(s.data() + frame_start(f), kH, s.data() + frame_start(f) - 60, y.data(), &g);
        benchmark::DoNotOptimize(g);
        f = (f + 1) % kFrames;
    }
}

/// One 10 ms frame of the encoder's pitch path.
template <class OL, class CL, class G>
void frame_path(benchmark::State& st, OL ol_fn, CL cl_fn, G g_fn) {
    const V16& s = speech();
    std::vector<V16> excs(kFrames);
    for (int f = 0; f < kFrames; ++f) {
        const Zep16s* p = s.data() + frame_start(f) - 154;
        excs[f].assign(p, p + 234);  // two subframes
    }
    V16 exc, d(2), v(40), y(40);
    Zep16s g = 0, ol = 0;
    int f = 0;
    exc.resize(234);
    for (auto _ : st) {
        std::copy(excs[f].begin(), excs[f].end(), exc.begin());  // a few ns, see closed_loop
        const Zep16s* sp = s.data() + frame_start(f);
        ol_fn(sp, &ol);
        cl_fn(ol, sp, kH, exc.data(), d.data(), v.data(), 0);
        g_fn(sp, kH, v.data(), y.data(), &g);
        cl_fn(d[0], sp + 40, kH, exc.data() + 40, d.data(), v.data(), 1);
        g_fn(sp + 40, kH, v.data(), y.data(), &g);
        benchmark::DoNotOptimize(g);
        f = (f + 1) % kFrames;
    }
}

void BM_OpenLoopPitchSearch_G729_16s(benchmark::State& st) { open_loop(st, &zeps::u8::zepsOpenLoopPitchSearch_G729_16s); }
void BM_OpenLoopPitchSearch_G729A_16s(benchmark::State& st) { open_loop(st, &zeps::u8::zepsOpenLoopPitchSearch_G729A_16s); }
void BM_OpenLoopPitchSearch_G729A_32f(benchmark::State& st) {
    const V16& s = speech();
    std::vector<float> fs(s.begin(), s.end());
    Zep32s lag = 0;
    int f = 0;
    for (auto _ : st) {
        zeps::u8::zepsOpenLoopPitchSearch_G729A_32f(fs.data() + frame_start(f), &lag);
        benchmark::DoNotOptimize(lag);
        f = (f + 1) % kFrames;
    }
}
void BM_AdaptiveCodebookSearch_G729_16s(benchmark::State& st) { closed_loop(st, &zeps::u8::zepsAdaptiveCodebookSearch_G729_16s); }
void BM_AdaptiveCodebookSearch_G729A_16s(benchmark::State& st) { closed_loop(st, &zeps::u8::zepsAdaptiveCodebookSearch_G729A_16s); }
void BM_AdaptiveCodebookSearch_G729D_16s(benchmark::State& st) { closed_loop(st, &zeps::u8::zepsAdaptiveCodebookSearch_G729D_16s); }
void BM_AdaptiveCodebookGain_G729_16s(benchmark::State& st) { gain(st, &zeps::u8::zepsAdaptiveCodebookGain_G729_16s); }
void BM_AdaptiveCodebookGain_G729A_16s(benchmark::State& st) { gain(st, &zeps::u8::zepsAdaptiveCodebookGain_G729A_16s); }

void BM_DecodeAdaptiveVector_G729_16s(benchmark::State& st) {
    const V16& s = speech();
    V16 exc(194), v(40);
    int f = 0;
    for (auto _ : st) {
        const Zep16s* p = s.data() + frame_start(f) - 154;
        std::copy(p, p + 194, exc.begin());
        const Zep16s d[2] = {static_cast<Zep16s>(20 + f % 120), static_cast<Zep16s>(f % 3 - 1)};
        zeps::u8::zepsDecodeAdaptiveVector_G729_16s(d, exc.data(), v.data());
        benchmark::DoNotOptimize(v.data());
        f = (f + 1) % kFrames;
    }
}
void BM_DecodeAdaptiveVector_G729_16s_I(benchmark::State& st) {
    const V16& s = speech();
    V16 exc(194);
    int f = 0;
    for (auto _ : st) {
        const Zep16s* p = s.data() + frame_start(f) - 154;
        std::copy(p, p + 194, exc.begin());
        const Zep16s d[2] = {static_cast<Zep16s>(20 + f % 120), static_cast<Zep16s>(f % 3 - 1)};
        zeps::u8::zepsDecodeAdaptiveVector_G729_16s_I(d, exc.data());
        benchmark::DoNotOptimize(exc.data());
        f = (f + 1) % kFrames;
    }
}
void BM_DecodeAdaptiveVector_G729_32f_I(benchmark::State& st) {
    const V16& s = speech();
    std::vector<float> exc(194);
    int f = 0;
    for (auto _ : st) {
        const Zep16s* p = s.data() + frame_start(f) - 154;
        std::copy(p, p + 194, exc.begin());
        const Zep32s d[2] = {20 + f % 120, f % 3 - 1};
        zeps::u8::zepsDecodeAdaptiveVector_G729_32f_I(d, exc.data());
        benchmark::DoNotOptimize(exc.data());
        f = (f + 1) % kFrames;
    }
}
void BM_AdaptiveCodebookContribution_G729_16s(benchmark::State& st) {
    const V16& s = speech();
    V16 o(40);
    int f = 0;
    for (auto _ : st) {
        zeps::u8::zepsAdaptiveCodebookContribution_G729_16s(9830, s.data() + frame_start(f), s.data() + frame_start(f) + 40,
                                                            o.data());
        benchmark::DoNotOptimize(o.data());
        f = (f + 1) % kFrames;
    }
}
void BM_AdaptiveCodebookContribution_G729_32f(benchmark::State& st) {
    const V16& s = speech();
    std::vector<float> fs(s.begin(), s.end()), o(40);
    int f = 0;
    for (auto _ : st) {
        zeps::u8::zepsAdaptiveCodebookContribution_G729_32f(0.6f, fs.data() + frame_start(f), fs.data() + frame_start(f) + 40,
                                                            o.data());
        benchmark::DoNotOptimize(o.data());
        f = (f + 1) % kFrames;
    }
}
void BM_FilteredExcitation_G729_32f(benchmark::State& st) {
    std::vector<float> h(40), y(40, 1.0f);
    for (int i = 0; i < 40; ++i) h[i] = kH[i] / 4096.0f;
    float e = 0.5f;
    for (auto _ : st) {
        zeps::u8::zepsFilteredExcitation_G729_32f(h.data(), y.data(), 40, e);
        benchmark::DoNotOptimize(y.data());
        e = -e;
    }
}
void BM_InterpolateC_G729_16s_Sfs(benchmark::State& st) {
    const V16& s = speech();
    V16 o(40);
    for (auto _ : st) {
        zeps::u8::zepsInterpolateC_G729_16s_Sfs(s.data() + 1000, 24576, s.data() + 2000, 8192, o.data(), 40, 15);
        benchmark::DoNotOptimize(o.data());
    }
}
void BM_InterpolateC_NR_G729_16s_Sfs(benchmark::State& st) {
    const V16& s = speech();
    V16 o(40);
    for (auto _ : st) {
        zeps::u8::zepsInterpolateC_NR_G729_16s_Sfs(s.data() + 1000, 24576, s.data() + 2000, 8192, o.data(), 40, 15);
        benchmark::DoNotOptimize(o.data());
    }
}
void BM_InterpolateC_G729_32f(benchmark::State& st) {
    const V16& s = speech();
    std::vector<float> a(s.begin() + 1000, s.begin() + 1040), b(s.begin() + 2000, s.begin() + 2040), o(40);
    for (auto _ : st) {
        zeps::u8::zepsInterpolateC_G729_32f(a.data(), 0.75f, b.data(), 0.25f, o.data(), 40);
        benchmark::DoNotOptimize(o.data());
    }
}

void BM_PitchFrame_G729(benchmark::State& st) {
    frame_path(st, &zeps::u8::zepsOpenLoopPitchSearch_G729_16s, &zeps::u8::zepsAdaptiveCodebookSearch_G729_16s,
               &zeps::u8::zepsAdaptiveCodebookGain_G729_16s);
}
void BM_PitchFrame_G729A(benchmark::State& st) {
    frame_path(st, &zeps::u8::zepsOpenLoopPitchSearch_G729A_16s, &zeps::u8::zepsAdaptiveCodebookSearch_G729A_16s,
               &zeps::u8::zepsAdaptiveCodebookGain_G729A_16s);
}
void BM_PitchFrame_G729A_n8(benchmark::State& st) {
    frame_path(st, &zeps::n8::zepsOpenLoopPitchSearch_G729A_16s, &zeps::n8::zepsAdaptiveCodebookSearch_G729A_16s,
               &zeps::n8::zepsAdaptiveCodebookGain_G729A_16s);
}
void BM_PitchFrame_G729_n8(benchmark::State& st) {
    frame_path(st, &zeps::n8::zepsOpenLoopPitchSearch_G729_16s, &zeps::n8::zepsAdaptiveCodebookSearch_G729_16s,
               &zeps::n8::zepsAdaptiveCodebookGain_G729_16s);
}

// Vectorised kernels against their plain reference loops (the baseline).
namespace kr = zeps::ref::g729p;
void BM_Kernel_PredLt3_Scalar(benchmark::State& st) {
    V16 exc(speech().begin() + 5000, speech().begin() + 5194);
    for (auto _ : st) {
        kr::pred_lt_3_scalar(exc.data() + 154, 57, 1);
        benchmark::DoNotOptimize(exc.data());
    }
}
void BM_Kernel_PredLt3_Vector(benchmark::State& st) {
    V16 exc(speech().begin() + 5000, speech().begin() + 5194);
    for (auto _ : st) {
        kr::pred_lt_3(exc.data() + 154, 57, 1);
        benchmark::DoNotOptimize(exc.data());
    }
}
void BM_Kernel_NormCorr_Scalar(benchmark::State& st) {
    const Zep16s* e = speech().data() + 5154;
    std::int16_t c[20];
    for (auto _ : st) {
        kr::norm_corr_scalar(e, e + 200, kH, 50, 63, c);
        benchmark::DoNotOptimize(c);
    }
}
void BM_Kernel_NormCorr_Vector(benchmark::State& st) {
    const Zep16s* e = speech().data() + 5154;
    std::int16_t c[20];
    for (auto _ : st) {
        kr::norm_corr(e, e + 200, kH, 50, 63, c);
        benchmark::DoNotOptimize(c);
    }
}

}  // namespace

BENCHMARK(BM_Kernel_PredLt3_Scalar);
BENCHMARK(BM_Kernel_PredLt3_Vector);
BENCHMARK(BM_Kernel_NormCorr_Scalar);
BENCHMARK(BM_Kernel_NormCorr_Vector);
BENCHMARK(BM_OpenLoopPitchSearch_G729_16s);
BENCHMARK(BM_OpenLoopPitchSearch_G729A_16s);
BENCHMARK(BM_OpenLoopPitchSearch_G729A_32f);
BENCHMARK(BM_AdaptiveCodebookSearch_G729_16s);
BENCHMARK(BM_AdaptiveCodebookSearch_G729A_16s);
BENCHMARK(BM_AdaptiveCodebookSearch_G729D_16s);
BENCHMARK(BM_AdaptiveCodebookGain_G729_16s);
BENCHMARK(BM_AdaptiveCodebookGain_G729A_16s);
BENCHMARK(BM_DecodeAdaptiveVector_G729_16s);
BENCHMARK(BM_DecodeAdaptiveVector_G729_16s_I);
BENCHMARK(BM_DecodeAdaptiveVector_G729_32f_I);
BENCHMARK(BM_AdaptiveCodebookContribution_G729_16s);
BENCHMARK(BM_AdaptiveCodebookContribution_G729_32f);
BENCHMARK(BM_FilteredExcitation_G729_32f);
BENCHMARK(BM_InterpolateC_G729_16s_Sfs);
BENCHMARK(BM_InterpolateC_NR_G729_16s_Sfs);
BENCHMARK(BM_InterpolateC_G729_32f);
BENCHMARK(BM_PitchFrame_G729);
BENCHMARK(BM_PitchFrame_G729_n8);
BENCHMARK(BM_PitchFrame_G729A);
BENCHMARK(BM_PitchFrame_G729A_n8);

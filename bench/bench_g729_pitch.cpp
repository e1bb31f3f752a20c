// SPDX-License-Identifier: BSD-3-Clause
// G.729 pitch stages on real speech: ns per call of each export, and ns per
// 10 ms frame for the encoder's pitch path (open-loop search, two closed-loop
// searches, two gains), base codec and Annex A; each through the public
// entry and with builds u8 and n8 forced, interleaved round by round (see
// bench/interleaved.h). The vectorised internal kernels (no public entry)
// are timed against their plain reference loops with plain Google Benchmark
// loops.
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
#include <memory>
#include <string>
#include <vector>

#include "bench/interleaved.h"
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

/// One call of body(frame) per unit over the benchmark frames, through the
/// public entry and with each build forced, interleaved. Every contender
/// runs its own copy of `body` (its own buffers, captured by value) from
/// the first frame.
template <class Body>
void per_frame(benchmark::State& st, Body body) {
    speech();
    zb::interleaved(st, [body] {
        auto b = std::make_shared<Body>(body);
        auto f = std::make_shared<int>(0);
        return zb::Call([b, f] {
            (*b)(*f);
            *f = (*f + 1) % kFrames;
        });
    });
}

using OpenLoopFn = ZepStatus (*)(const Zep16s*, Zep16s*);
using ClosedLoopFn = ZepStatus (*)(Zep16s, const Zep16s*, const Zep16s*, Zep16s*, Zep16s*, Zep16s*, Zep16s);
using GainFn = ZepStatus (*)(const Zep16s*, const Zep16s*, const Zep16s*, Zep16s*, Zep16s*);

void open_loop(benchmark::State& st, OpenLoopFn fn) {
    per_frame(st, [fn](int f) {
        Zep16s lag = 0;
        fn(speech().data() + frame_start(f), &lag);
        benchmark::DoNotOptimize(lag);
    });
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

// The excitation buffer is refreshed inside the timed call (a 388-byte copy,
// a few ns): the search writes its adaptive vector into it.
void closed_loop(benchmark::State& st, ClosedLoopFn fn) {
    open_loop_lags();
    per_frame(st, [fn, exc = V16(194), d = V16(2), v = V16(40)](int f) mutable {
        const V16& s = speech();
        const Zep16s* p = s.data() + frame_start(f) - 154;
        std::copy(p, p + 194, exc.begin());
        fn(open_loop_lags()[f], s.data() + frame_start(f), kH, exc.data(), d.data(), v.data(), 0);
        benchmark::DoNotOptimize(v.data());
    });
}

void gain(benchmark::State& st, GainFn fn) {
    per_frame(st, [fn, y = V16(40)](int f) mutable {
        const V16& s = speech();
        Zep16s g = 0;
        fn(s.data() + frame_start(f), kH, s.data() + frame_start(f) - 60, y.data(), &g);
        benchmark::DoNotOptimize(g);
    });
}

/// One 10 ms frame of the encoder's pitch path.
void frame_path(benchmark::State& st, OpenLoopFn ol_fn, ClosedLoopFn cl_fn, GainFn g_fn) {
    const V16& s = speech();
    auto excs = std::make_shared<std::vector<V16>>(kFrames);
    for (int f = 0; f < kFrames; ++f) {
        const Zep16s* p = s.data() + frame_start(f) - 154;
        (*excs)[f].assign(p, p + 234);  // two subframes
    }
    per_frame(st, [=, exc = V16(234), d = V16(2), v = V16(40), y = V16(40)](int f) mutable {
        Zep16s g = 0, ol = 0;
        std::copy((*excs)[f].begin(), (*excs)[f].end(), exc.begin());  // a few ns, see closed_loop
        const Zep16s* sp = speech().data() + frame_start(f);
        ol_fn(sp, &ol);
        cl_fn(ol, sp, kH, exc.data(), d.data(), v.data(), 0);
        g_fn(sp, kH, v.data(), y.data(), &g);
        cl_fn(d[0], sp + 40, kH, exc.data() + 40, d.data(), v.data(), 1);
        g_fn(sp + 40, kH, v.data(), y.data(), &g);
        benchmark::DoNotOptimize(g);
    });
}

void BM_OpenLoopPitchSearch_G729_16s(benchmark::State& st) { open_loop(st, &zepsOpenLoopPitchSearch_G729_16s); }
void BM_OpenLoopPitchSearch_G729A_16s(benchmark::State& st) { open_loop(st, &zepsOpenLoopPitchSearch_G729A_16s); }
void BM_OpenLoopPitchSearch_G729A_32f(benchmark::State& st) {
    const V16& s = speech();
    auto fs = std::make_shared<std::vector<float>>(s.begin(), s.end());
    per_frame(st, [fs](int f) {
        Zep32s lag = 0;
        zepsOpenLoopPitchSearch_G729A_32f(fs->data() + frame_start(f), &lag);
        benchmark::DoNotOptimize(lag);
    });
}
void BM_AdaptiveCodebookSearch_G729_16s(benchmark::State& st) { closed_loop(st, &zepsAdaptiveCodebookSearch_G729_16s); }
void BM_AdaptiveCodebookSearch_G729A_16s(benchmark::State& st) { closed_loop(st, &zepsAdaptiveCodebookSearch_G729A_16s); }
void BM_AdaptiveCodebookSearch_G729D_16s(benchmark::State& st) { closed_loop(st, &zepsAdaptiveCodebookSearch_G729D_16s); }
void BM_AdaptiveCodebookGain_G729_16s(benchmark::State& st) { gain(st, &zepsAdaptiveCodebookGain_G729_16s); }
void BM_AdaptiveCodebookGain_G729A_16s(benchmark::State& st) { gain(st, &zepsAdaptiveCodebookGain_G729A_16s); }

void BM_DecodeAdaptiveVector_G729_16s(benchmark::State& st) {
    per_frame(st, [exc = V16(194), v = V16(40)](int f) mutable {
        const Zep16s* p = speech().data() + frame_start(f) - 154;
        std::copy(p, p + 194, exc.begin());
        const Zep16s d[2] = {static_cast<Zep16s>(20 + f % 120), static_cast<Zep16s>(f % 3 - 1)};
        zepsDecodeAdaptiveVector_G729_16s(d, exc.data(), v.data());
        benchmark::DoNotOptimize(v.data());
    });
}
void BM_DecodeAdaptiveVector_G729_16s_I(benchmark::State& st) {
    per_frame(st, [exc = V16(194)](int f) mutable {
        const Zep16s* p = speech().data() + frame_start(f) - 154;
        std::copy(p, p + 194, exc.begin());
        const Zep16s d[2] = {static_cast<Zep16s>(20 + f % 120), static_cast<Zep16s>(f % 3 - 1)};
        zepsDecodeAdaptiveVector_G729_16s_I(d, exc.data());
        benchmark::DoNotOptimize(exc.data());
    });
}
void BM_DecodeAdaptiveVector_G729_32f_I(benchmark::State& st) {
    per_frame(st, [exc = std::vector<float>(194)](int f) mutable {
        const Zep16s* p = speech().data() + frame_start(f) - 154;
        std::copy(p, p + 194, exc.begin());
        const Zep32s d[2] = {20 + f % 120, f % 3 - 1};
        zepsDecodeAdaptiveVector_G729_32f_I(d, exc.data());
        benchmark::DoNotOptimize(exc.data());
    });
}
void BM_AdaptiveCodebookContribution_G729_16s(benchmark::State& st) {
    per_frame(st, [o = V16(40)](int f) mutable {
        const V16& s = speech();
        zepsAdaptiveCodebookContribution_G729_16s(9830, s.data() + frame_start(f), s.data() + frame_start(f) + 40, o.data());
        benchmark::DoNotOptimize(o.data());
    });
}
void BM_AdaptiveCodebookContribution_G729_32f(benchmark::State& st) {
    const V16& s = speech();
    auto fs = std::make_shared<std::vector<float>>(s.begin(), s.end());
    per_frame(st, [fs, o = std::vector<float>(40)](int f) mutable {
        zepsAdaptiveCodebookContribution_G729_32f(0.6f, fs->data() + frame_start(f), fs->data() + frame_start(f) + 40,
                                                  o.data());
        benchmark::DoNotOptimize(o.data());
    });
}
void BM_FilteredExcitation_G729_32f(benchmark::State& st) {
    std::vector<float> h(40);
    for (int i = 0; i < 40; ++i) h[i] = kH[i] / 4096.0f;
    zb::interleaved(st, [h] {
        struct S {
            std::vector<float> h, y = std::vector<float>(40, 1.0f);
            float e = 0.5f;
        };
        auto s = std::make_shared<S>();
        s->h = h;
        return zb::Call([s] {
            zepsFilteredExcitation_G729_32f(s->h.data(), s->y.data(), 40, s->e);
            benchmark::DoNotOptimize(s->y.data());
            s->e = -s->e;
        });
    });
}
void BM_InterpolateC_G729_16s_Sfs(benchmark::State& st) {
    per_frame(st, [o = V16(40)](int) mutable {
        const V16& s = speech();
        zepsInterpolateC_G729_16s_Sfs(s.data() + 1000, 24576, s.data() + 2000, 8192, o.data(), 40, 15);
        benchmark::DoNotOptimize(o.data());
    });
}
void BM_InterpolateC_NR_G729_16s_Sfs(benchmark::State& st) {
    per_frame(st, [o = V16(40)](int) mutable {
        const V16& s = speech();
        zepsInterpolateC_NR_G729_16s_Sfs(s.data() + 1000, 24576, s.data() + 2000, 8192, o.data(), 40, 15);
        benchmark::DoNotOptimize(o.data());
    });
}
void BM_InterpolateC_G729_32f(benchmark::State& st) {
    const V16& s = speech();
    per_frame(st, [a = std::vector<float>(s.begin() + 1000, s.begin() + 1040),
                   b = std::vector<float>(s.begin() + 2000, s.begin() + 2040), o = std::vector<float>(40)](int) mutable {
        zepsInterpolateC_G729_32f(a.data(), 0.75f, b.data(), 0.25f, o.data(), 40);
        benchmark::DoNotOptimize(o.data());
    });
}

void BM_PitchFrame_G729(benchmark::State& st) {
    frame_path(st, &zepsOpenLoopPitchSearch_G729_16s, &zepsAdaptiveCodebookSearch_G729_16s,
               &zepsAdaptiveCodebookGain_G729_16s);
}
void BM_PitchFrame_G729A(benchmark::State& st) {
    frame_path(st, &zepsOpenLoopPitchSearch_G729A_16s, &zepsAdaptiveCodebookSearch_G729A_16s,
               &zepsAdaptiveCodebookGain_G729A_16s);
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
BENCHMARK(BM_OpenLoopPitchSearch_G729_16s)->Apply(zb::rounds);
BENCHMARK(BM_OpenLoopPitchSearch_G729A_16s)->Apply(zb::rounds);
BENCHMARK(BM_OpenLoopPitchSearch_G729A_32f)->Apply(zb::rounds);
BENCHMARK(BM_AdaptiveCodebookSearch_G729_16s)->Apply(zb::rounds);
BENCHMARK(BM_AdaptiveCodebookSearch_G729A_16s)->Apply(zb::rounds);
BENCHMARK(BM_AdaptiveCodebookSearch_G729D_16s)->Apply(zb::rounds);
BENCHMARK(BM_AdaptiveCodebookGain_G729_16s)->Apply(zb::rounds);
BENCHMARK(BM_AdaptiveCodebookGain_G729A_16s)->Apply(zb::rounds);
BENCHMARK(BM_DecodeAdaptiveVector_G729_16s)->Apply(zb::rounds);
BENCHMARK(BM_DecodeAdaptiveVector_G729_16s_I)->Apply(zb::rounds);
BENCHMARK(BM_DecodeAdaptiveVector_G729_32f_I)->Apply(zb::rounds);
BENCHMARK(BM_AdaptiveCodebookContribution_G729_16s)->Apply(zb::rounds);
BENCHMARK(BM_AdaptiveCodebookContribution_G729_32f)->Apply(zb::rounds);
BENCHMARK(BM_FilteredExcitation_G729_32f)->Apply(zb::rounds);
BENCHMARK(BM_InterpolateC_G729_16s_Sfs)->Apply(zb::rounds);
BENCHMARK(BM_InterpolateC_NR_G729_16s_Sfs)->Apply(zb::rounds);
BENCHMARK(BM_InterpolateC_G729_32f)->Apply(zb::rounds);
BENCHMARK(BM_PitchFrame_G729)->Apply(zb::rounds);
BENCHMARK(BM_PitchFrame_G729A)->Apply(zb::rounds);

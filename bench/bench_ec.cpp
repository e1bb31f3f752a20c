// SPDX-License-Identifier: BSD-3-Clause
// Echo-canceller sub-band filter bank: ns per analysis and per synthesis
// frame, configurations A (N 32, F 24, L 128) and B (N 64, F 44, L 256), in
// float and 16-bit, beside the same bank written with FFTW 3 (single
// precision r2c/c2r plans made once with FFTW_MEASURE; the 16-bit peer keeps
// the fixed-point fold and overlap-add and rounds at the transform's ends). Also the internal
// real FFT alone, SSE against its scalar twin.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "ec/ec_tables.h"
#include "frame/variants.h"
#include "tests/ec/internal_access.h"

#ifdef ZEPS_HAVE_FFTW3F
#include <fftw3.h>
#endif

namespace {

struct Config {
    int order, F, L;
};
const Config kConfigs[2] = {{5, 24, 128}, {6, 44, 256}};

const std::vector<std::int16_t>& speech() {
    static const std::vector<std::int16_t> s = [] {
        std::vector<std::int16_t> v(40000, 0);
        if (std::FILE* f = std::fopen(ZEPS_SHARED_DIR "/speech/male.s16", "rb")) {
            v.resize(std::fread(v.data(), 2, v.size(), f));
            std::fclose(f);
        }
        v.resize(40000, 0);
        return v;
    }();
    return s;
}

std::vector<float> builtin_window(int len) {
    const float* half = len == 128 ? zeps::kSubbandWinA_32f : zeps::kSubbandWinB_32f;
    std::vector<float> w(len);
    for (int n = 0; n < len / 2; ++n) w[n] = w[len - 1 - n] = half[n];
    return w;
}

/// Spectra of the speech through the float analysis, to feed the syntheses.
std::vector<Zep32fc> analysed(const Config& c, int frames) {
    int ss, is, bs;
    zeps::u8::zepsSubbandProcessGetSize_32f(c.order, c.L, &ss, &is, &bs);
    std::vector<Zep8u> st(ss), buf(bs);
    zeps::u8::zepsSubbandProcessInit_32f(st.data(), c.order, c.F, c.L, nullptr, nullptr);
    const int bins = (1 << c.order) / 2 + 1;
    std::vector<Zep32fc> X(static_cast<std::size_t>(frames) * bins);
    std::vector<float> x(c.F);
    for (int t = 0; t < frames; ++t) {
        for (int n = 0; n < c.F; ++n) x[n] = speech()[8000 + t * c.F + n];
        zeps::u8::zepsSubbandAnalysis_32f32fc(x.data(), X.data() + t * bins, st.data(), buf.data());
    }
    return X;
}

constexpr int kFrames = 256;

// ---------------------------------------------------------------- zepsc

void BM_EcAnalysis_32f(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    int ss, is, bs;
    zeps::u8::zepsSubbandProcessGetSize_32f(c.order, c.L, &ss, &is, &bs);
    std::vector<Zep8u> st(ss), buf(bs);
    zeps::u8::zepsSubbandProcessInit_32f(st.data(), c.order, c.F, c.L, nullptr, nullptr);
    std::vector<float> x(speech().begin() + 8000, speech().begin() + 8000 + kFrames * c.F);
    std::vector<Zep32fc> X((1 << c.order) / 2 + 1);
    int t = 0;
    for (auto _ : state) {
        zeps::u8::zepsSubbandAnalysis_32f32fc(x.data() + t * c.F, X.data(), st.data(), buf.data());
        benchmark::DoNotOptimize(X.data());
        t = (t + 1) % kFrames;
    }
}

void BM_EcSynthesis_32f(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    int ss, is, bs;
    zeps::u8::zepsSubbandProcessGetSize_32f(c.order, c.L, &ss, &is, &bs);
    std::vector<Zep8u> st(ss), buf(bs);
    zeps::u8::zepsSubbandProcessInit_32f(st.data(), c.order, c.F, c.L, nullptr, nullptr);
    const std::vector<Zep32fc> X = analysed(c, kFrames);
    const int bins = (1 << c.order) / 2 + 1;
    std::vector<float> y(c.F);
    int t = 0;
    for (auto _ : state) {
        zeps::u8::zepsSubbandSynthesis_32fc32f(X.data() + t * bins, y.data(), st.data(), buf.data());
        benchmark::DoNotOptimize(y.data());
        t = (t + 1) % kFrames;
    }
}

void BM_EcAnalysis_16s(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    int ss, is, bs;
    zeps::u8::zepsSubbandProcessGetSize_16s(c.order, c.L, &ss, &is, &bs);
    std::vector<Zep8u> st(ss), buf(bs);
    zeps::u8::zepsSubbandProcessInit_16s(st.data(), c.order, c.F, c.L, nullptr, nullptr);
    const Zep16s* x = speech().data() + 8000;
    std::vector<Zep32sc> X((1 << c.order) / 2 + 1);
    int t = 0;
    for (auto _ : state) {
        zeps::u8::zepsSubbandAnalysis_16s32sc_Sfs(x + t * c.F, X.data(), st.data(), 0, buf.data());
        benchmark::DoNotOptimize(X.data());
        t = (t + 1) % kFrames;
    }
}

void BM_EcSynthesis_16s(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    int ss, is, bs;
    zeps::u8::zepsSubbandProcessGetSize_16s(c.order, c.L, &ss, &is, &bs);
    std::vector<Zep8u> st(ss), buf(bs);
    zeps::u8::zepsSubbandProcessInit_16s(st.data(), c.order, c.F, c.L, nullptr, nullptr);
    const std::vector<Zep32fc> Xf = analysed(c, kFrames);
    std::vector<Zep32sc> X(Xf.size());
    for (std::size_t i = 0; i < X.size(); ++i)
        X[i] = {static_cast<Zep32s>(std::lround(Xf[i].re)), static_cast<Zep32s>(std::lround(Xf[i].im))};
    const int bins = (1 << c.order) / 2 + 1;
    std::vector<Zep16s> y(c.F);
    int t = 0;
    for (auto _ : state) {
        zeps::u8::zepsSubbandSynthesis_32sc16s_Sfs(X.data() + t * bins, y.data(), st.data(), 0, buf.data());
        benchmark::DoNotOptimize(y.data());
        t = (t + 1) % kFrames;
    }
}

// The internal real FFT alone, SSE kernels and their scalar twins.
template <bool Sse>
void BM_Rfft_32f_Fwd(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0)), N = 1 << order;
    int S, W, I;
    zeps::u8::rfft_get_size_32f(order, &S, &W, &I);
    std::vector<std::uint8_t> desc(S), work(W);
    auto* s = zeps::u8::rfft_init_32f(order, desc.data());
    std::vector<float> x(N), X(N + 2);
    for (int n = 0; n < N; ++n) x[n] = speech()[9000 + n];
    for (auto _ : state) {
        if (Sse)
            zeps::u8::rfft_fwd_32f(x.data(), X.data(), s, work.data());
        else
            zeps::u8::rfft_fwd_32f_scalar(x.data(), X.data(), s, work.data());
        benchmark::DoNotOptimize(X.data());
    }
}

#ifdef ZEPS_HAVE_FFTW3F
// ---------------------------------------------------------------- FFTW 3 peer
// The same bank: delay line, fold, r2c; c2r, delay line, overlap-add through
// the reversed window (the c2r result scaled by 1/N in the overlap-add).
struct FftwBank {
    int N, F, L;
    std::vector<float> w, d;
    float* u;
    fftwf_complex* X;
    fftwf_plan fwd, inv;
    explicit FftwBank(const Config& c) : N(1 << c.order), F(c.F), L(c.L), w(builtin_window(c.L)), d(c.L, 0.0f) {
        u = fftwf_alloc_real(N);
        X = fftwf_alloc_complex(N / 2 + 1);
        fwd = fftwf_plan_dft_r2c_1d(N, u, X, FFTW_MEASURE);
        inv = fftwf_plan_dft_c2r_1d(N, X, u, FFTW_MEASURE);
    }
    ~FftwBank() {
        fftwf_destroy_plan(fwd);
        fftwf_destroy_plan(inv);
        fftwf_free(u);
        fftwf_free(X);
    }
    void analyse(const float* x, Zep32fc* out) {
        std::memmove(d.data(), d.data() + F, sizeof(float) * (L - F));
        std::memcpy(d.data() + L - F, x, sizeof(float) * F);
        for (int n = 0; n < N; ++n) u[n] = d[n] * w[n];
        for (int b = N; b < L; b += N)
            for (int n = 0; n < N; ++n) u[n] += d[b + n] * w[b + n];
        fftwf_execute(fwd);
        std::memcpy(out, X, sizeof(Zep32fc) * (N / 2 + 1));
    }
    void synthesise(const Zep32fc* in, float* y) {
        std::memcpy(X, in, sizeof(Zep32fc) * (N / 2 + 1));
        fftwf_execute(inv);  // c2r destroys X, which is a copy
        std::memmove(d.data(), d.data() + F, sizeof(float) * (L - F));
        std::memset(d.data() + L - F, 0, sizeof(float) * F);
        const float k = 1.0f / static_cast<float>(N);
        for (int b = 0; b < L; b += N)
            for (int n = 0; n < N; ++n) d[b + n] += (u[n] * k) * w[L - 1 - b - n];
        std::memcpy(y, d.data(), sizeof(float) * F);
    }
};

void BM_EcAnalysis_32f_FFTW(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    FftwBank bank(c);
    std::vector<float> x(speech().begin() + 8000, speech().begin() + 8000 + kFrames * c.F);
    std::vector<Zep32fc> X((1 << c.order) / 2 + 1);
    int t = 0;
    for (auto _ : state) {
        bank.analyse(x.data() + t * c.F, X.data());
        benchmark::DoNotOptimize(X.data());
        t = (t + 1) % kFrames;
    }
}

void BM_EcSynthesis_32f_FFTW(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    FftwBank bank(c);
    const std::vector<Zep32fc> X = analysed(c, kFrames);
    const int bins = (1 << c.order) / 2 + 1;
    std::vector<float> y(c.F);
    int t = 0;
    for (auto _ : state) {
        bank.synthesise(X.data() + t * bins, y.data());
        benchmark::DoNotOptimize(y.data());
        t = (t + 1) % kFrames;
    }
}

// The 16-bit bank with the same fixed-point fold and overlap-add, the
// transform done by FFTW in single precision with rounding at its ends.
struct FftwBank16 {
    FftwBank f;
    std::vector<Zep16s> w, d, y16;
    explicit FftwBank16(const Config& c) : f(c), w(c.L), d(c.L, 0), y16(f.N) {
        for (int n = 0; n < c.L; ++n) w[n] = static_cast<Zep16s>(f.w[n] * 8192.0f);
    }
    static Zep16s sat(std::int32_t v) { return static_cast<Zep16s>(v > 32767 ? 32767 : v < -32768 ? -32768 : v); }
    void analyse(const Zep16s* x, Zep32sc* out) {
        const int N = f.N, F = f.F, L = f.L;
        std::memmove(d.data(), d.data() + F, 2 * (L - F));
        std::memcpy(d.data() + L - F, x, 2 * F);
        for (int n = 0; n < N; ++n) {
            std::int32_t acc = sat((d[n] * w[n] + 4096) >> 13);
            for (int b = N; b < L; b += N) acc = sat(acc + sat((d[b + n] * w[b + n] + 4096) >> 13));
            f.u[n] = static_cast<float>(acc);
        }
        fftwf_execute(f.fwd);
        for (int k = 0; k <= N / 2; ++k) out[k] = {static_cast<Zep32s>(std::lrintf(f.X[k][0])), static_cast<Zep32s>(std::lrintf(f.X[k][1]))};
    }
    void synthesise(const Zep32sc* in, Zep16s* y) {
        const int N = f.N, F = f.F, L = f.L;
        for (int k = 0; k <= N / 2; ++k) f.X[k][0] = static_cast<float>(in[k].re), f.X[k][1] = static_cast<float>(in[k].im);
        fftwf_execute(f.inv);
        const float k = 1.0f / static_cast<float>(N);
        for (int n = 0; n < N; ++n) y16[n] = sat(static_cast<std::int32_t>(std::lrintf(f.u[n] * k)));
        std::memmove(d.data(), d.data() + F, 2 * (L - F));
        std::memset(d.data() + L - F, 0, 2 * F);
        for (int n = 0; n < L; ++n) d[n] = sat(d[n] + ((y16[n % N] * w[L - 1 - n] + 4096) >> 13));
        std::memcpy(y, d.data(), 2 * F);
    }
};

void BM_EcAnalysis_16s_FFTW(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    FftwBank16 bank(c);
    const Zep16s* x = speech().data() + 8000;
    std::vector<Zep32sc> X((1 << c.order) / 2 + 1);
    int t = 0;
    for (auto _ : state) {
        bank.analyse(x + t * c.F, X.data());
        benchmark::DoNotOptimize(X.data());
        t = (t + 1) % kFrames;
    }
}

void BM_EcSynthesis_16s_FFTW(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    FftwBank16 bank(c);
    const std::vector<Zep32fc> Xf = analysed(c, kFrames);
    std::vector<Zep32sc> X(Xf.size());
    for (std::size_t i = 0; i < X.size(); ++i)
        X[i] = {static_cast<Zep32s>(std::lround(Xf[i].re)), static_cast<Zep32s>(std::lround(Xf[i].im))};
    const int bins = (1 << c.order) / 2 + 1;
    std::vector<Zep16s> y(c.F);
    int t = 0;
    for (auto _ : state) {
        bank.synthesise(X.data() + t * bins, y.data());
        benchmark::DoNotOptimize(y.data());
        t = (t + 1) % kFrames;
    }
}

void BM_Rfft_32f_Fwd_FFTW(benchmark::State& state) {
    const Config c = kConfigs[state.range(0) - 5];
    FftwBank bank(c);
    for (int n = 0; n < bank.N; ++n) bank.u[n] = speech()[9000 + n];
    for (auto _ : state) {
        fftwf_execute(bank.fwd);
        benchmark::DoNotOptimize(bank.X);
    }
}
#endif

}  // namespace

BENCHMARK(BM_EcAnalysis_32f)->Arg(0)->Arg(1);
#ifdef ZEPS_HAVE_FFTW3F
BENCHMARK(BM_EcAnalysis_32f_FFTW)->Arg(0)->Arg(1);
#endif
BENCHMARK(BM_EcSynthesis_32f)->Arg(0)->Arg(1);
#ifdef ZEPS_HAVE_FFTW3F
BENCHMARK(BM_EcSynthesis_32f_FFTW)->Arg(0)->Arg(1);
#endif
BENCHMARK(BM_EcAnalysis_16s)->Arg(0)->Arg(1);
#ifdef ZEPS_HAVE_FFTW3F
BENCHMARK(BM_EcAnalysis_16s_FFTW)->Arg(0)->Arg(1);
#endif
BENCHMARK(BM_EcSynthesis_16s)->Arg(0)->Arg(1);
#ifdef ZEPS_HAVE_FFTW3F
BENCHMARK(BM_EcSynthesis_16s_FFTW)->Arg(0)->Arg(1);
#endif
BENCHMARK_TEMPLATE(BM_Rfft_32f_Fwd, true)->Arg(5)->Arg(6);
BENCHMARK_TEMPLATE(BM_Rfft_32f_Fwd, false)->Arg(5)->Arg(6);
#ifdef ZEPS_HAVE_FFTW3F
BENCHMARK(BM_Rfft_32f_Fwd_FFTW)->Arg(5)->Arg(6);
#endif

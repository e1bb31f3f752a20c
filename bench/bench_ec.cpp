// SPDX-License-Identifier: BSD-3-Clause
// Echo-canceller sub-band filter bank: ns per analysis and per synthesis
// frame, configurations A (N 32, F 24, L 128) and B (N 64, F 44, L 256), in
// float and 16-bit, through the public entries (and each build forced),
// interleaved round by round with the same bank written with FFTW 3 (single
// precision r2c/c2r plans made once with FFTW_MEASURE, outside the timing;
// the 16-bit peer keeps the fixed-point fold and overlap-add and rounds at
// the transform's ends with an inline conversion). Also the internal real
// FFT alone, SSE against its scalar twin and FFTW.
#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/interleaved.h"
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

/// The frame after t, without a modulo.
int next(int t) { return t + 1 == kFrames ? 0 : t + 1; }

const std::vector<Zep32sc>& analysed16(const Config& c) {
    static std::vector<Zep32sc> X[2];
    auto& v = X[c.order - 5];
    if (v.empty()) {
        const std::vector<Zep32fc> Xf = analysed(c, kFrames);
        v.resize(Xf.size());
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = {static_cast<Zep32s>(std::lround(Xf[i].re)), static_cast<Zep32s>(std::lround(Xf[i].im))};
    }
    return v;
}

// ---------------------------------------------------------------- zepsc
// Each contender: its own state (made through the public entries) and its
// own position in the input.

struct Bank {
    std::vector<Zep8u> st, buf;
    int t = 0;
    Bank(const Config& c, bool fixed) {
        int ss, is, bs;
        if (fixed) {
            zepsSubbandProcessGetSize_16s(c.order, c.L, &ss, &is, &bs);
            st.resize(ss), buf.resize(bs);
            zepsSubbandProcessInit_16s(st.data(), c.order, c.F, c.L, nullptr, nullptr);
        } else {
            zepsSubbandProcessGetSize_32f(c.order, c.L, &ss, &is, &bs);
            st.resize(ss), buf.resize(bs);
            zepsSubbandProcessInit_32f(st.data(), c.order, c.F, c.L, nullptr, nullptr);
        }
    }
};

zb::Call analysis_32f(const Config& c) {
    auto b = std::make_shared<Bank>(c, false);
    auto x = std::make_shared<std::vector<float>>(speech().begin() + 8000, speech().begin() + 8000 + kFrames * c.F);
    auto X = std::make_shared<std::vector<Zep32fc>>((1 << c.order) / 2 + 1);
    return [=] {
        zepsSubbandAnalysis_32f32fc(x->data() + b->t * c.F, X->data(), b->st.data(), b->buf.data());
        benchmark::DoNotOptimize(X->data());
        b->t = next(b->t);
    };
}

zb::Call synthesis_32f(const Config& c) {
    auto b = std::make_shared<Bank>(c, false);
    auto X = std::make_shared<const std::vector<Zep32fc>>(analysed(c, kFrames));
    auto y = std::make_shared<std::vector<float>>(c.F);
    const int bins = (1 << c.order) / 2 + 1;
    return [=] {
        zepsSubbandSynthesis_32fc32f(X->data() + b->t * bins, y->data(), b->st.data(), b->buf.data());
        benchmark::DoNotOptimize(y->data());
        b->t = next(b->t);
    };
}

zb::Call analysis_16s(const Config& c) {
    auto b = std::make_shared<Bank>(c, true);
    auto X = std::make_shared<std::vector<Zep32sc>>((1 << c.order) / 2 + 1);
    const Zep16s* x = speech().data() + 8000;
    return [=] {
        zepsSubbandAnalysis_16s32sc_Sfs(x + b->t * c.F, X->data(), b->st.data(), 0, b->buf.data());
        benchmark::DoNotOptimize(X->data());
        b->t = next(b->t);
    };
}

zb::Call synthesis_16s(const Config& c) {
    auto b = std::make_shared<Bank>(c, true);
    const Zep32sc* X = analysed16(c).data();
    auto y = std::make_shared<std::vector<Zep16s>>(c.F);
    const int bins = (1 << c.order) / 2 + 1;
    return [=] {
        zepsSubbandSynthesis_32sc16s_Sfs(X + b->t * bins, y->data(), b->st.data(), 0, b->buf.data());
        benchmark::DoNotOptimize(y->data());
        b->t = next(b->t);
    };
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

// The 16-bit bank with the same fixed-point fold and overlap-add, the
// transform done by FFTW in single precision with rounding at its ends.
struct FftwBank16 {
    FftwBank f;
    std::vector<Zep16s> w, d, y16;
    explicit FftwBank16(const Config& c) : f(c), w(c.L), d(c.L, 0), y16(f.N) {
        for (int n = 0; n < c.L; ++n) w[n] = static_cast<Zep16s>(f.w[n] * 8192.0f);
    }
    static Zep16s sat(std::int32_t v) { return static_cast<Zep16s>(v > 32767 ? 32767 : v < -32768 ? -32768 : v); }
    /// Round to nearest (ties to even, as lrintf in the default mode), inline.
    static std::int32_t round_int(float v) { return _mm_cvtss_si32(_mm_set_ss(v)); }
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
        for (int k = 0; k <= N / 2; ++k) out[k] = {round_int(f.X[k][0]), round_int(f.X[k][1])};
    }
    void synthesise(const Zep32sc* in, Zep16s* y) {
        const int N = f.N, F = f.F, L = f.L;
        for (int k = 0; k <= N / 2; ++k) f.X[k][0] = static_cast<float>(in[k].re), f.X[k][1] = static_cast<float>(in[k].im);
        fftwf_execute(f.inv);
        const float k = 1.0f / static_cast<float>(N);
        for (int n = 0; n < N; ++n) y16[n] = sat(round_int(f.u[n] * k));
        std::memmove(d.data(), d.data() + F, 2 * (L - F));
        std::memset(d.data() + L - F, 0, 2 * F);
        for (int b = 0; b < L; b += N)
            for (int n = 0; n < N; ++n) d[b + n] = sat(d[b + n] + ((y16[n] * w[L - 1 - b - n] + 4096) >> 13));
        std::memcpy(y, d.data(), 2 * F);
    }
};


template <class B, class In, class Out>
zb::Peer fftw_peer(const Config& c, const In* in, int in_step, bool analyse) {
    auto bank = std::make_shared<B>(c);
    auto out = std::make_shared<std::vector<Out>>(analyse ? (1 << c.order) / 2 + 1 : c.F);
    auto t = std::make_shared<int>(0);
    return {"fftw", [=] {
                if constexpr (std::is_same_v<B, FftwBank>) {
                    if (analyse)
                        bank->analyse(reinterpret_cast<const float*>(in) + *t * in_step, reinterpret_cast<Zep32fc*>(out->data()));
                    else
                        bank->synthesise(reinterpret_cast<const Zep32fc*>(in) + *t * in_step, reinterpret_cast<float*>(out->data()));
                } else {
                    if (analyse)
                        bank->analyse(reinterpret_cast<const Zep16s*>(in) + *t * in_step, reinterpret_cast<Zep32sc*>(out->data()));
                    else
                        bank->synthesise(reinterpret_cast<const Zep32sc*>(in) + *t * in_step, reinterpret_cast<Zep16s*>(out->data()));
                }
                benchmark::DoNotOptimize(out->data());
                *t = next(*t);
            }};
}
#endif

std::vector<zb::Peer> peers(const Config& c, bool fixed, bool analyse) {
    std::vector<zb::Peer> p;
#ifdef ZEPS_HAVE_FFTW3F
    const int bins = (1 << c.order) / 2 + 1;
    static std::vector<float> xf[2];
    auto& x = xf[c.order - 5];
    if (x.empty()) x.assign(speech().begin() + 8000, speech().begin() + 8000 + kFrames * c.F);
    static std::vector<Zep32fc> Xf[2];
    if (Xf[c.order - 5].empty()) Xf[c.order - 5] = analysed(c, kFrames);
    if (!fixed && analyse) p.push_back(fftw_peer<FftwBank, float, Zep32fc>(c, x.data(), c.F, true));
    if (!fixed && !analyse) p.push_back(fftw_peer<FftwBank, Zep32fc, float>(c, Xf[c.order - 5].data(), bins, false));
    if (fixed && analyse) p.push_back(fftw_peer<FftwBank16, Zep16s, Zep32sc>(c, speech().data() + 8000, c.F, true));
    if (fixed && !analyse) p.push_back(fftw_peer<FftwBank16, Zep32sc, Zep16s>(c, analysed16(c).data(), bins, false));
#else
    (void)c, (void)fixed, (void)analyse;
#endif
    return p;
}

void BM_EcAnalysis_32f(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    zb::interleaved(state, [&] { return analysis_32f(c); }, peers(c, false, true));
}
void BM_EcSynthesis_32f(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    zb::interleaved(state, [&] { return synthesis_32f(c); }, peers(c, false, false));
}
void BM_EcAnalysis_16s(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    zb::interleaved(state, [&] { return analysis_16s(c); }, peers(c, true, true));
}
void BM_EcSynthesis_16s(benchmark::State& state) {
    const Config c = kConfigs[state.range(0)];
    zb::interleaved(state, [&] { return synthesis_16s(c); }, peers(c, true, false));
}

// The internal real FFT alone (no public entry): the SSE kernel of build u8,
// its scalar twin and FFTW's r2c plan, interleaved.
void BM_Rfft_32f_Fwd(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0)), N = 1 << order;
    int S, W, I;
    zeps::u8::rfft_get_size_32f(order, &S, &W, &I);
    struct Fft {
        std::vector<std::uint8_t> desc, work;
        std::vector<float> x, X;
        const void* s;
    };
    auto make = [=] {
        auto f = std::make_shared<Fft>();
        f->desc.resize(S), f->work.resize(W), f->x.resize(N), f->X.resize(N + 2);
        for (int n = 0; n < N; ++n) f->x[n] = speech()[9000 + n];
        return f;
    };
    auto sse = make(), scalar = make();
    auto* s1 = zeps::u8::rfft_init_32f(order, sse->desc.data());
    auto* s2 = zeps::u8::rfft_init_32f(order, scalar->desc.data());
    std::vector<zb::Peer> p;
    p.push_back({"scalar", [=] {
                     zeps::u8::rfft_fwd_32f_scalar(scalar->x.data(), scalar->X.data(), s2, scalar->work.data());
                     benchmark::DoNotOptimize(scalar->X.data());
                 }});
#ifdef ZEPS_HAVE_FFTW3F
    auto bank = std::make_shared<FftwBank>(kConfigs[order - 5]);
    for (int n = 0; n < N; ++n) bank->u[n] = speech()[9000 + n];
    p.push_back({"fftw", [=] {
                     fftwf_execute(bank->fwd);
                     benchmark::DoNotOptimize(bank->X);
                 }});
#endif
    zb::interleaved(
        state,
        [=] {
            return zb::Call([=] {
                zeps::u8::rfft_fwd_32f(sse->x.data(), sse->X.data(), s1, sse->work.data());
                benchmark::DoNotOptimize(sse->X.data());
            });
        },
        std::move(p), 1.0, false);
}

}  // namespace

BENCHMARK(BM_EcAnalysis_32f)->Arg(0)->Arg(1)->Apply(zb::rounds);
BENCHMARK(BM_EcSynthesis_32f)->Arg(0)->Arg(1)->Apply(zb::rounds);
BENCHMARK(BM_EcAnalysis_16s)->Arg(0)->Arg(1)->Apply(zb::rounds);
BENCHMARK(BM_EcSynthesis_16s)->Arg(0)->Arg(1)->Apply(zb::rounds);
BENCHMARK(BM_Rfft_32f_Fwd)->Arg(5)->Arg(6)->Apply(zb::rounds);

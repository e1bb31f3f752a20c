// SPDX-License-Identifier: BSD-3-Clause
// G.729 LP analysis and LSP quantisation: ns per call of every export on
// real speech frames, and ns per 10 ms frame of the encoder's front-end
// chain (high-pass, windowed autocorrelation, lag window, Levinson-Durbin,
// LP to LSP, LSP quantiser, LSP to LP), each through the public entry and
// with builds u8 and n8 forced, interleaved round by round (see
// bench/interleaved.h). The internal kernels with an SSSE3 form (no public
// entry) are timed in this program's compile against their plain scalar
// form with plain Google Benchmark loops.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench/interleaved.h"
#include "frame/variants.h"

namespace zeps::u8 {
void g729_corr240_scalar(const std::int16_t* y, std::int64_t& energy, std::int32_t* r);
void g729_corr240_ssse3(const std::int16_t* y, std::int64_t& energy, std::int32_t* r);
int lsf_first_stage_search(const std::int16_t* target);
int lsf_first_stage_search_scalar(const std::int16_t* target);
std::int16_t chebps_unsaturated(std::int16_t x, const std::int16_t* f, int q);
void chebps_x8(const std::int16_t* x, const std::int16_t* f, int q, std::int16_t* y);
}  // namespace zeps::u8

namespace {
namespace z = zeps::u8;
using V16 = std::vector<std::int16_t>;
using V32 = std::vector<std::int32_t>;

/// Raw s16le speech from the shared folder.
V16 load_speech(const std::string& name) {
    std::ifstream in(std::string(ZEPS_SHARED_DIR) + "/speech/" + name, std::ios::binary);
    V16 s;
    char b[2];
    while (in.read(b, 2)) s.push_back(static_cast<std::int16_t>((static_cast<unsigned char>(b[1]) << 8) | static_cast<unsigned char>(b[0])));
    return s;
}

constexpr std::int16_t kPreFilter[6] = {1899, -3798, 1899, 4096, 7807, -3733};
constexpr std::int16_t kResetRow[10] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};

/// Per-frame data of a pass of the front end over speech, computed once.
struct Frames {
    int count = 0;
    std::vector<V16> window, lpc, lsp, lsf;
    std::vector<V32> r;
    V16 speech;
};

const Frames& frames() {
    static const Frames f = [] {
        Frames d;
        d.speech = load_speech("male.s16");
        d.speech.resize(std::min<std::size_t>(d.speech.size(), 8000 * 20));
        V16 hp = d.speech;
        std::vector<Zep8u> st(24);
        z::zepsHighPassFilterInit_G729(kPreFilter, st.data());
        z::zepsHighPassFilter_G729_16s_ISfs(hp.data(), static_cast<int>(hp.size()), 12, st.data());
        V16 prev(kResetRow, kResetRow + 10);
        for (auto& v : prev) v = 0;
        V16 old = {30000, 26000, 21000, 13000, 4000, -4000, -13000, -21000, -26000, -30000};
        for (std::size_t off = 0; off + 240 <= hp.size(); off += 80) {
            V16 w(hp.begin() + off, hp.begin() + off + 240);
            V32 r(13);
            Zep16s norm, rc[10], err;
            z::zepsAutoCorr_G729B(w.data(), &norm, r.data());
            z::zepsLagWindow_G729_32s_I(r.data() + 1, 10);
            V16 a(11);
            if (z::zepsLevinsonDurbin_G729_32s16s(r.data(), 10, a.data(), rc, &err) != 0) continue;
            V16 lsp(10), lsf(10);
            z::zepsLPCToLSP_G729_16s(a.data(), old.data(), lsp.data());
            old = lsp;
            z::zepsLSPToLSF_G729_16s(lsp.data(), lsf.data());
            d.window.push_back(w);
            d.r.push_back(r);
            d.lpc.push_back(a);
            d.lsp.push_back(lsp);
            d.lsf.push_back(lsf);
        }
        d.count = static_cast<int>(d.window.size());
        return d;
    }();
    return f;
}

V16 reset_memory() {
    V16 m;
    for (int k = 0; k < 4; ++k) m.insert(m.end(), kResetRow, kResetRow + 10);
    return m;
}

/// Internal kernels: runs body(frames, index) once per iteration over the
/// speech frames (plain Google Benchmark loop, this program's compile).
template <class Body>
void kernel_over_frames(benchmark::State& state, Body body) {
    const Frames& f = frames();
    int i = 0;
    for (auto _ : state) {
        body(f, i);
        if (++i == f.count) i = 0;
    }
}

/// Exports: one call of body(frames, index) per unit on the next speech
/// frame, through the public entry and with each build forced, interleaved.
/// Every contender runs its own copy of `body` (its own state and outputs,
/// captured by value) from the first frame.
template <class Body>
void over_frames(benchmark::State& state, Body body) {
    frames();
    zb::interleaved(state, [body] {
        auto b = std::make_shared<Body>(body);
        auto i = std::make_shared<int>(0);
        return zb::Call([b, i] {
            const Frames& f = frames();
            (*b)(f, *i);
            if (++*i == f.count) *i = 0;
        });
    });
}

void BM_G729_HighPassFilter(benchmark::State& state) {
    std::vector<Zep8u> st(24);
    zepsHighPassFilterInit_G729(kPreFilter, st.data());
    over_frames(state, [st, buf = V16(80)](const Frames& f, int i) mutable {
        std::copy(f.speech.begin() + 80 * i, f.speech.begin() + 80 * i + 80, buf.begin());
        benchmark::DoNotOptimize(zepsHighPassFilter_G729_16s_ISfs(buf.data(), 80, 12, st.data()));
    });
}
BENCHMARK(BM_G729_HighPassFilter)->Apply(zb::rounds);

void BM_G729_AutoCorr_G729B(benchmark::State& state) {
    over_frames(state, [r = V32(13)](const Frames& f, int i) mutable {
        Zep16s norm;
        benchmark::DoNotOptimize(zepsAutoCorr_G729B(f.window[i].data(), &norm, r.data()));
    });
}
BENCHMARK(BM_G729_AutoCorr_G729B)->Apply(zb::rounds);

template <bool Simd>
void BM_G729_Corr240Kernel(benchmark::State& state) {
    alignas(16) std::int16_t y[256] = {};
    V32 r(13);
    std::int64_t e;
    kernel_over_frames(state, [&](const Frames& f, int i) {
        for (int j = 0; j < 240; ++j) y[j] = static_cast<std::int16_t>(f.window[i][j] >> 1);
        if (Simd)
            z::g729_corr240_ssse3(y, e, r.data());
        else
            z::g729_corr240_scalar(y, e, r.data());
        benchmark::DoNotOptimize(r.data());
    });
}
BENCHMARK(BM_G729_Corr240Kernel<false>)->Name("BM_G729_Corr240Kernel_Scalar");
BENCHMARK(BM_G729_Corr240Kernel<true>)->Name("BM_G729_Corr240Kernel_SSSE3");

template <bool Simd>
void BM_G729_FirstStageSearch(benchmark::State& state) {
    kernel_over_frames(state, [&](const Frames& f, int i) {
        benchmark::DoNotOptimize(Simd ? z::lsf_first_stage_search(f.lsf[i].data())
                                      : z::lsf_first_stage_search_scalar(f.lsf[i].data()));
    });
}
BENCHMARK(BM_G729_FirstStageSearch<false>)->Name("BM_G729_FirstStageSearch_Scalar");
BENCHMARK(BM_G729_FirstStageSearch<true>)->Name("BM_G729_FirstStageSearch_SSSE3");

/// Chebyshev evaluation of one order-5 polynomial of Az_lsp (Q11) at the
/// first 64 grid points: eight-lane SSSE3 kernel against its scalar form.
template <bool Simd>
void BM_G729_ChebyshevGridKernel(benchmark::State& state) {
    alignas(16) std::int16_t x[64], y[64];
    for (int k = 0; k < 64; ++k) x[k] = static_cast<std::int16_t>(32760 - 1024 * k);
    const std::int16_t f[6] = {2048, -3900, 5800, -6600, 5300, -3000};
    for (auto _ : state) {
        if (Simd)
            for (int k = 0; k < 64; k += 8) z::chebps_x8(x + k, f, 11, y + k);
        else
            for (int k = 0; k < 64; ++k) y[k] = z::chebps_unsaturated(x[k], f, 11);
        benchmark::DoNotOptimize(y);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_G729_ChebyshevGridKernel<false>)->Name("BM_G729_ChebyshevGridKernel_Scalar");
BENCHMARK(BM_G729_ChebyshevGridKernel<true>)->Name("BM_G729_ChebyshevGridKernel_SSSE3");

void BM_G729_LagWindow(benchmark::State& state) {
    // Each contender's lags on their own 64-byte line, so that every run
    // compares the same placement (a 13 ns call: where a heap vector landed
    // moved the n8 / u8 ratio between 0.89 and 1.2 from run to run). The
    // lags are restored by a fixed-size copy the compiler writes inline
    // (16 + 16 + 8 bytes, each store covering whole loads of the kernel's:
    // 16, 16, 4 + 4). The C library's copy stores 40 bytes as two
    // overlapping 32-byte halves, and the kernel's loads then wait for those
    // stores to retire instead of taking their data forwarded: a stall of
    // the benchmark's own making, whose length moved with code placement.
    struct alignas(64) Lags {
        Zep32s v[12];
    };
    over_frames(state, [r = Lags{}](const Frames& f, int i) mutable {
        std::memcpy(r.v, f.r[i].data() + 1, 10 * sizeof(Zep32s));
        benchmark::DoNotOptimize(zepsLagWindow_G729_32s_I(r.v, 10));
    });
}
BENCHMARK(BM_G729_LagWindow)->Apply(zb::rounds);

void BM_G729_LevinsonDurbin(benchmark::State& state) {
    over_frames(state, [a = V16(11), k = V16(10)](const Frames& f, int i) mutable {
        Zep16s e;
        benchmark::DoNotOptimize(zepsLevinsonDurbin_G729_32s16s(f.r[i].data(), 10, a.data(), k.data(), &e));
    });
}
BENCHMARK(BM_G729_LevinsonDurbin)->Apply(zb::rounds);

void BM_G729_LevinsonDurbin_G729B(benchmark::State& state) {
    over_frames(state, [a = V16(11), k = V16(2)](const Frames& f, int i) mutable {
        Zep16s e;
        benchmark::DoNotOptimize(zepsLevinsonDurbin_G729B(f.r[i].data(), a.data(), k.data(), &e));
    });
}
BENCHMARK(BM_G729_LevinsonDurbin_G729B)->Apply(zb::rounds);

void BM_G729_LPCToLSP(benchmark::State& state) {
    over_frames(state, [l = V16(10)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLPCToLSP_G729_16s(f.lpc[i].data(), f.lsp[i].data(), l.data()));
    });
}
BENCHMARK(BM_G729_LPCToLSP)->Apply(zb::rounds);

void BM_G729A_LPCToLSP(benchmark::State& state) {
    over_frames(state, [l = V16(10)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLPCToLSP_G729A_16s(f.lpc[i].data(), f.lsp[i].data(), l.data()));
    });
}
BENCHMARK(BM_G729A_LPCToLSP)->Apply(zb::rounds);

void BM_G729_LSPToLPC(benchmark::State& state) {
    over_frames(state, [a = V16(11)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLSPToLPC_G729_16s(f.lsp[i].data(), a.data()));
    });
}
BENCHMARK(BM_G729_LSPToLPC)->Apply(zb::rounds);

void BM_G729_LSFToLSP(benchmark::State& state) {
    over_frames(state, [l = V16(10)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLSFToLSP_G729_16s(f.lsf[i].data(), l.data()));
    });
}
BENCHMARK(BM_G729_LSFToLSP)->Apply(zb::rounds);

void BM_G729_LSPToLSF(benchmark::State& state) {
    over_frames(state, [l = V16(10)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLSPToLSF_G729_16s(f.lsp[i].data(), l.data()));
    });
}
BENCHMARK(BM_G729_LSPToLSF)->Apply(zb::rounds);

void BM_G729_LSPToLSF_Norm(benchmark::State& state) {
    over_frames(state, [l = V16(10)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLSPToLSF_Norm_G729_16s(f.lsp[i].data(), l.data()));
    });
}
BENCHMARK(BM_G729_LSPToLSF_Norm)->Apply(zb::rounds);

void BM_G729_LSFQuant(benchmark::State& state) {
    over_frames(state, [mem = reset_memory(), q = V16(10), idx = V16(4)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLSFQuant_G729_16s(f.lsf[i].data(), mem.data(), q.data(), idx.data()));
    });
}
BENCHMARK(BM_G729_LSFQuant)->Apply(zb::rounds);

void BM_G729_LSPQuant(benchmark::State& state) {
    over_frames(state, [mem = reset_memory(), q = V16(10), idx = V16(2)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLSPQuant_G729_16s(f.lsp[i].data(), mem.data(), q.data(), idx.data()));
    });
}
BENCHMARK(BM_G729_LSPQuant)->Apply(zb::rounds);

void BM_G729_LSFDecode(benchmark::State& state) {
    over_frames(state, [mem = reset_memory(), q = V16(10)](const Frames&, int i) mutable {
        const std::int16_t idx[4] = {static_cast<std::int16_t>(i & 1), static_cast<std::int16_t>((i * 37) & 127),
                                     static_cast<std::int16_t>((i * 11) & 31), static_cast<std::int16_t>((i * 7) & 31)};
        benchmark::DoNotOptimize(zepsLSFDecode_G729_16s(idx, mem.data(), q.data()));
    });
}
BENCHMARK(BM_G729_LSFDecode)->Apply(zb::rounds);

void BM_G729_LSFDecodeErased(benchmark::State& state) {
    over_frames(state, [mem = reset_memory()](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLSFDecodeErased_G729_16s(static_cast<Zep16s>(i & 1), mem.data(), f.lsf[i].data()));
    });
}
BENCHMARK(BM_G729_LSFDecodeErased)->Apply(zb::rounds);

void BM_G729_Interpolate(benchmark::State& state) {
    over_frames(state, [out = V16(10)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsInterpolate_G729_16s(f.lsp[i].data(), f.lsp[(i + 1) % f.count].data(), out.data(), 10));
    });
}
BENCHMARK(BM_G729_Interpolate)->Apply(zb::rounds);

void BM_Common_DotProd_G729A(benchmark::State& state) {
    over_frames(state, [](const Frames& f, int i) {
        Zep32s d;
        benchmark::DoNotOptimize(zepsDotProd_G729A_16s32s(f.window[i].data(), f.window[i].data() + 40, 40, &d));
        benchmark::DoNotOptimize(d);
    });
}
BENCHMARK(BM_Common_DotProd_G729A)->Apply(zb::rounds);

void BM_Common_AutoCorr_NormE(benchmark::State& state) {
    over_frames(state, [r = V32(11), x = V16(240)](const Frames& f, int i) mutable {
        int norm;
        for (int j = 0; j < 240; ++j) x[j] = static_cast<std::int16_t>(f.window[i][j] >> 3);
        benchmark::DoNotOptimize(zepsAutoCorr_NormE_16s32s(x.data(), 240, r.data(), 11, &norm));
    });
}
BENCHMARK(BM_Common_AutoCorr_NormE)->Apply(zb::rounds);

void BM_Common_InterpolateC_NR(benchmark::State& state) {
    over_frames(state, [out = V16(40)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(
            zepsInterpolateC_NR_16s(f.window[i].data(), 19661, 15, f.window[i].data() + 40, 13107, 15, out.data(), 40));
    });
}
BENCHMARK(BM_Common_InterpolateC_NR)->Apply(zb::rounds);

using VF = std::vector<float>;

/// A per-frame float copy of one of the front end's fixed-point series.
std::vector<VF> to_float(const std::vector<V16>& v, int n, float scale) {
    std::vector<VF> out;
    for (const V16& x : v) {
        VF y(n);
        for (int j = 0; j < n; ++j) y[j] = x[j] / scale;
        out.push_back(y);
    }
    return out;
}

void BM_G729_LevinsonDurbin_32f(benchmark::State& state) {
    auto rf = std::make_shared<std::vector<VF>>();
    for (const V32& r : frames().r) {
        VF v(11);
        for (int j = 0; j < 11; ++j) v[j] = static_cast<float>(r[j] / 2147483648.0);
        rf->push_back(v);
    }
    over_frames(state, [rf, a = VF(11), k = VF(10), e = VF(1)](const Frames&, int i) mutable {
        benchmark::DoNotOptimize(zepsLevinsonDurbin_G729_32f((*rf)[i].data(), 10, a.data(), k.data(), e.data()));
    });
}
BENCHMARK(BM_G729_LevinsonDurbin_32f)->Apply(zb::rounds);

template <bool AnnexA>
void BM_G729_LPCToLSP_32f(benchmark::State& state) {
    auto af = std::make_shared<std::vector<VF>>(to_float(frames().lpc, 11, 4096.0f));
    over_frames(state, [af, old = VF(10, 0.0f), l = VF(10)](const Frames&, int i) mutable {
        benchmark::DoNotOptimize(AnnexA ? zepsLPCToLSP_G729A_32f((*af)[i].data(), old.data(), l.data())
                                        : zepsLPCToLSP_G729_32f((*af)[i].data(), old.data(), l.data()));
    });
}
BENCHMARK(BM_G729_LPCToLSP_32f<false>)->Name("BM_G729_LPCToLSP_32f")->Apply(zb::rounds);
BENCHMARK(BM_G729_LPCToLSP_32f<true>)->Name("BM_G729A_LPCToLSP_32f")->Apply(zb::rounds);

void BM_G729_LSPToLPC_32f(benchmark::State& state) {
    auto lf = std::make_shared<std::vector<VF>>(to_float(frames().lsp, 10, 32768.0f));
    over_frames(state, [lf, a = VF(11)](const Frames&, int i) mutable {
        benchmark::DoNotOptimize(zepsLSPToLPC_G729_32f((*lf)[i].data(), a.data()));
    });
}
BENCHMARK(BM_G729_LSPToLPC_32f)->Apply(zb::rounds);

/// The float LSF predictor memory at reset (the LSFs of the reset LSP row).
VF reset_memory_32f() {
    VF mem(40);
    for (int k = 0; k < 4; ++k)
        for (int j = 0; j < 10; ++j) mem[k * 10 + j] = 0.285599f * (j + 1);
    return mem;
}

void BM_G729_LSFDecode_32f(benchmark::State& state) {
    over_frames(state, [mem = reset_memory_32f(), q = VF(10)](const Frames&, int i) mutable {
        const std::int16_t idx[4] = {static_cast<std::int16_t>(i & 1), static_cast<std::int16_t>((i * 37) & 127), 0, 0};
        benchmark::DoNotOptimize(zepsLSFDecode_G729_32f(idx, mem.data(), q.data()));
    });
}
BENCHMARK(BM_G729_LSFDecode_32f)->Apply(zb::rounds);

void BM_G729_LSFDecodeErased_32f(benchmark::State& state) {
    auto lf = std::make_shared<std::vector<VF>>(to_float(frames().lsf, 10, 8192.0f));  // Q13 -> radians
    // Each contender's memory on its own 64-byte line start: where a plain
    // vector happened to land decided a 1.7x difference between contenders.
    struct alignas(64) Memory {
        float v[40];
    };
    Memory m{};
    const VF init = reset_memory_32f();
    std::copy(init.begin(), init.end(), m.v);
    over_frames(state, [lf, m](const Frames&, int i) mutable {
        benchmark::DoNotOptimize(zepsLSFDecodeErased_G729_32f(i & 1, m.v, (*lf)[i].data()));
    });
}
BENCHMARK(BM_G729_LSFDecodeErased_32f)->Apply(zb::rounds);

void BM_G729E_LSPQuant(benchmark::State& state) {
    over_frames(state, [mem = reset_memory(), q = V16(10), idx = V16(2), cur = V16(10)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsLSPQuant_G729E_16s(f.lsp[i].data(), mem.data(), q.data(), idx.data(), cur.data()));
    });
}
BENCHMARK(BM_G729E_LSPQuant)->Apply(zb::rounds);

void BM_G729E_LSPQuant_32f(benchmark::State& state) {
    VF mem(40);
    for (int k = 0; k < 40; ++k) mem[k] = 0.285599f * (k % 10 + 1);
    auto lf = std::make_shared<std::vector<VF>>(to_float(frames().lsp, 10, 32768.0f));
    over_frames(state, [lf, mem, q = VF(10), cur = VF(10)](const Frames&, int i) mutable {
        std::int16_t idx[2];
        benchmark::DoNotOptimize(zepsLSPQuant_G729E_32f((*lf)[i].data(), mem.data(), q.data(), idx, cur.data()));
    });
}
BENCHMARK(BM_G729E_LSPQuant_32f)->Apply(zb::rounds);

void BM_G729E_WinHybrid(benchmark::State& state) {
    std::vector<Zep8u> st(124);
    zepsWinHybridInit_G729E_16s(st.data());
    over_frames(state, [st, r = V32(31)](const Frames& f, int i) mutable {
        benchmark::DoNotOptimize(zepsWinHybrid_G729E_16s32s(f.speech.data() + 80 * i, r.data(), st.data()));
    });
}
BENCHMARK(BM_G729E_WinHybrid)->Apply(zb::rounds);

void BM_G729E_WinHybrid_32f(benchmark::State& state) {
    std::vector<Zep8u> st(124);
    zepsWinHybridInit_G729E_32f(st.data());
    over_frames(state, [st, x = VF(145), r = VF(31)](const Frames& f, int i) mutable {
        for (int j = 0; j < 145; ++j) x[j] = f.speech[80 * i + j];
        benchmark::DoNotOptimize(zepsWinHybrid_G729E_32f(x.data(), r.data(), st.data()));
    });
}
BENCHMARK(BM_G729E_WinHybrid_32f)->Apply(zb::rounds);

/// The encoder front end for one 10 ms frame, every stage through its
/// public entry.
struct FrontEnd {
    std::vector<Zep8u> st = std::vector<Zep8u>(24);
    V16 win = V16(240, 0), mem = reset_memory(), a = V16(11), k = V16(10), lsp = frames().lsp[0], lsp_new = V16(10),
        qlsp = V16(10), idx = V16(2), aq = V16(11);
    V32 r = V32(13);
    std::size_t pos = 0;

    FrontEnd() { zepsHighPassFilterInit_G729(kPreFilter, st.data()); }
    void frame() {
        const Frames& f = frames();
        Zep16s norm, err;
        if (pos + 80 > f.speech.size()) pos = 0;
        std::copy(win.begin() + 80, win.end(), win.begin());
        std::copy(f.speech.begin() + static_cast<std::ptrdiff_t>(pos), f.speech.begin() + static_cast<std::ptrdiff_t>(pos) + 80,
                  win.begin() + 160);
        pos += 80;
        zepsHighPassFilter_G729_16s_ISfs(win.data() + 160, 80, 12, st.data());
        zepsAutoCorr_G729B(win.data(), &norm, r.data());
        zepsLagWindow_G729_32s_I(r.data() + 1, 10);
        if (zepsLevinsonDurbin_G729_32s16s(r.data(), 10, a.data(), k.data(), &err) == 0)
            zepsLPCToLSP_G729_16s(a.data(), lsp.data(), lsp_new.data());
        zepsLSPQuant_G729_16s(lsp_new.data(), mem.data(), qlsp.data(), idx.data());
        zepsLSPToLPC_G729_16s(qlsp.data(), aq.data());
        lsp = lsp_new;
        benchmark::DoNotOptimize(aq.data());
    }
};

void BM_G729_FrontEndChain(benchmark::State& state) {
    frames();
    zb::interleaved(state, [] {
        auto fe = std::make_shared<FrontEnd>();
        return zb::Call([fe] { fe->frame(); });
    });
    state.SetLabel("ns per 10 ms frame");
}
BENCHMARK(BM_G729_FrontEndChain)->Apply(zb::rounds);

}  // namespace

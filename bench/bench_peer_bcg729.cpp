// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex A stages beside bcg729's own stage functions (its static
// library), interleaved round by round (bench/interleaved.h), through the
// public entries with each build forced: LP to LSP (Az_lsp, Annex A grid),
// LSP to LP (Lsp_Az) and the Annex A open-loop pitch search, on the LP
// coefficients and high-passed speech of male.s16 (the high-passed speech
// stands in for the weighted speech of the open-loop search; both sides get
// the same samples). bcg729 computes these stages with its own 32-bit
// arithmetic: how many of its outputs equal ours is given in each label.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "bench/interleaved.h"
#include "zepsc.h"

#ifdef ZEPS_HAVE_BCG729_STAGES
extern "C" {
int LP2LSPConversion(std::int16_t LPCoefficients[], std::int16_t LSPCoefficients[]);
void qLSP2LP(std::int16_t qLSP[], std::int16_t LP[]);
std::uint16_t findOpenLoopPitchDelay(std::int16_t weightedInputSignal[]);
}

namespace {

using V16 = std::vector<std::int16_t>;

struct Frames {
    V16 hp;                    // high-passed speech
    std::vector<V16> lpc, lsp;  // per 10 ms frame: 11 LP coefficients (Q12), 10 LSPs (Q15)
    int count = 0;
};

const Frames& frames() {
    static const Frames f = [] {
        Frames d;
        std::ifstream in(std::string(ZEPS_SHARED_DIR) + "/speech/male.s16", std::ios::binary);
        char b[2];
        while (in.read(b, 2) && d.hp.size() < 8000 * 20)
            d.hp.push_back(static_cast<std::int16_t>((static_cast<unsigned char>(b[1]) << 8) | static_cast<unsigned char>(b[0])));
        static const std::int16_t kPreFilter[6] = {1899, -3798, 1899, 4096, 7807, -3733};
        std::vector<Zep8u> st(24);
        zepsHighPassFilterInit_G729(kPreFilter, st.data());
        zepsHighPassFilter_G729_16s_ISfs(d.hp.data(), static_cast<int>(d.hp.size()), 12, st.data());
        V16 old = {30000, 26000, 21000, 13000, 4000, -4000, -13000, -21000, -26000, -30000};
        for (std::size_t off = 0; off + 240 <= d.hp.size(); off += 80) {
            std::vector<Zep32s> r(13);
            Zep16s norm, rc[10], err;
            zepsAutoCorr_G729B(d.hp.data() + off, &norm, r.data());
            zepsLagWindow_G729_32s_I(r.data() + 1, 10);
            V16 a(11), lsp(10);
            if (zepsLevinsonDurbin_G729_32s16s(r.data(), 10, a.data(), rc, &err) != 0) continue;
            zepsLPCToLSP_G729A_16s(a.data(), old.data(), lsp.data());
            old = lsp;
            d.lpc.push_back(a);
            d.lsp.push_back(lsp);
        }
        d.count = static_cast<int>(d.lpc.size());
        return d;
    }();
    return f;
}

/// Frame positions of the open-loop search (143 past samples before each).
int pitch_frames() { return static_cast<int>((frames().hp.size() - 143) / 80); }

std::string equal_note(int same, int total) {
    return "bcg729 equal on " + std::to_string(same) + "/" + std::to_string(total) + " frames";
}

/// A contender stepping through frames 0..n-1 with its own position.
template <class Body>
zb::Call stepping(int n, Body body) {
    auto i = std::make_shared<int>(0);
    return [i, n, body] {
        body(*i);
        *i = *i + 1 == n ? 0 : *i + 1;
    };
}

void BM_Bcg729_LPCToLSP_G729A(benchmark::State& state) {
    const Frames& f = frames();
    int same = 0;
    for (int i = 0; i < f.count; ++i) {
        V16 a(f.lpc[i].begin() + 1, f.lpc[i].end()), theirs(10), ours(10);
        const V16& prev = f.lsp[i > 0 ? i - 1 : 0];
        zepsLPCToLSP_G729A_16s(f.lpc[i].data(), prev.data(), ours.data());
        same += LP2LSPConversion(a.data(), theirs.data()) == 1 && theirs == ours;
    }
    auto out = std::make_shared<V16>(10);
    auto a10 = std::make_shared<std::vector<V16>>();
    for (const V16& a : f.lpc) a10->emplace_back(a.begin() + 1, a.end());
    zb::interleaved(
        state,
        [&f] {
            auto l = std::make_shared<V16>(10);
            return stepping(f.count, [l, &f](int i) {
                benchmark::DoNotOptimize(zepsLPCToLSP_G729A_16s(f.lpc[i].data(), f.lsp[i].data(), l->data()));
            });
        },
        {{"bcg729", stepping(f.count, [a10, out](int i) {
              benchmark::DoNotOptimize(LP2LSPConversion((*a10)[i].data(), out->data()));
          })}});
    state.SetLabel(equal_note(same, f.count));
}
BENCHMARK(BM_Bcg729_LPCToLSP_G729A)->Apply(zb::rounds);

void BM_Bcg729_LSPToLPC(benchmark::State& state) {
    const Frames& f = frames();
    int same = 0;
    for (int i = 0; i < f.count; ++i) {
        V16 lsp = f.lsp[i], theirs(10), ours(11);
        zepsLSPToLPC_G729_16s(lsp.data(), ours.data());
        qLSP2LP(lsp.data(), theirs.data());
        same += std::equal(theirs.begin(), theirs.end(), ours.begin() + 1);
    }
    auto lsps = std::make_shared<std::vector<V16>>(f.lsp);
    auto out = std::make_shared<V16>(10);
    zb::interleaved(
        state,
        [&f] {
            auto a = std::make_shared<V16>(11);
            return stepping(f.count, [a, &f](int i) {
                benchmark::DoNotOptimize(zepsLSPToLPC_G729_16s(f.lsp[i].data(), a->data()));
            });
        },
        {{"bcg729", stepping(f.count, [lsps, out](int i) {
              qLSP2LP((*lsps)[i].data(), out->data());
              benchmark::DoNotOptimize(out->data());
          })}});
    state.SetLabel(equal_note(same, f.count));
}
BENCHMARK(BM_Bcg729_LSPToLPC)->Apply(zb::rounds);

void BM_Bcg729_OpenLoopPitch_G729A(benchmark::State& state) {
    const Frames& f = frames();
    const int n = pitch_frames();
    auto sig = std::make_shared<V16>(f.hp);  // bcg729 takes a non-const pointer
    int same = 0;
    for (int i = 0; i < n; ++i) {
        Zep16s lag = 0;
        zepsOpenLoopPitchSearch_G729A_16s(f.hp.data() + 143 + 80 * i, &lag);
        same += findOpenLoopPitchDelay(sig->data() + 143 + 80 * i) == lag;
    }
    zb::interleaved(
        state,
        [&f, n] {
            return stepping(n, [&f](int i) {
                Zep16s lag = 0;
                zepsOpenLoopPitchSearch_G729A_16s(f.hp.data() + 143 + 80 * i, &lag);
                benchmark::DoNotOptimize(lag);
            });
        },
        {{"bcg729", stepping(n, [sig](int i) {
              benchmark::DoNotOptimize(findOpenLoopPitchDelay(sig->data() + 143 + 80 * i));
          })}});
    state.SetLabel(equal_note(same, n));
}
BENCHMARK(BM_Bcg729_OpenLoopPitch_G729A)->Apply(zb::rounds);

}  // namespace
#endif

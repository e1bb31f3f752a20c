// SPDX-License-Identifier: BSD-3-Clause
// Interleaved timing for the benchmarks: zepsc through its public entries
// (the build the library chose on this machine), the same calls with build
// "u8" and build "n8" forced, and every peer, round by round in one loop on
// the same input. Each round times a batch of calls of each contender in
// thread CPU time (the machine may be shared: wall time would count other
// processes' slices), alternating the order from round to round; the
// reported ratios are the medians of the per-round ratios, which cancel the
// slow drifts of a shared machine that separate bursts would not.
//
// Counters (per unit of work, `units` per call):
//   ns          zepsc through the public entry, median ns per unit
//   u8_ns n8_ns the same calls with the build forced
//   n8_u8       median of per-round n8 / u8 time ratios
//   <peer>_ns   a peer, median ns per unit
//   x_<peer>    median of per-round peer / zepsc time ratios (above 1: zepsc faster)
// The Time column is zepsc's mean time per call through the public entry.
//
// Forcing a build: every forwarding entry of libzepsc begins with
// `movslq zeps_variant(%rip), %rax` (the shape tests/abi checks), so the
// module's variant index is found from the entry's own displacement and
// written between batches; it is restored to the library's choice after
// each batch. Whole codecs built from the public exports thus run each build
// through the same entries a caller uses.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zb {

/// One call of a contender (one unit of work times `units`).
using Call = std::function<void()>;
/// Makes a fresh contender (its own state and input position).
using Factory = std::function<Call()>;

struct Peer {
    std::string name;
    Call call;
};

inline double cpu_ns() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e9 + static_cast<double>(ts.tv_nsec);
}

/// The library's variant index, or null when the entries do not have the
/// expected shape (then only the public-entry column is reported).
std::int32_t* variant_slot();
/// The build the library chose at load (0 = u8, 1 = n8).
std::int32_t chosen_build();

inline double median(std::vector<double> v) {
    if (v.empty()) return 0;
    const std::size_t m = v.size() / 2;
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(m), v.end());
    return v[m];
}

/// Registration: manual time (zepsc's per call) and a fixed number of rounds.
inline void rounds(benchmark::internal::Benchmark* b) { b->UseManualTime()->Iterations(200); }
inline void few_rounds(benchmark::internal::Benchmark* b) { b->UseManualTime()->Iterations(100); }

/// Runs zepsc (public entry; forced u8; forced n8; each from its own
/// `make_ours()`) and the peers round by round; see the top of the file.
/// With `builds` false (internal kernels, which have no public entry) only
/// the given call and the peers run.
inline void interleaved(benchmark::State& state, const Factory& make_ours, std::vector<Peer> peers = {},
                        double units = 1.0, bool builds = true) {
    struct Contender {
        std::string name;
        Call call;
        int build;  // -1: leave the library's choice
        std::vector<double> t;
    };
    std::int32_t* slot = builds ? variant_slot() : nullptr;
    const std::int32_t chosen = chosen_build();
    std::vector<Contender> c;
    c.push_back({"zepsc", make_ours(), -1, {}});
    if (slot != nullptr) {
        c.push_back({"u8", make_ours(), 0, {}});
        c.push_back({"n8", make_ours(), 1, {}});
    }
    for (auto& p : peers) c.push_back({p.name, std::move(p.call), -1, {}});

    // Batch size: about 40 us of zepsc per contender and round, found on a
    // separate instance so that every contender starts on the same input.
    int batch = 1;
    {
        Call probe = make_ours();
        probe();
        for (;;) {
            const double t0 = cpu_ns();
            for (int i = 0; i < batch; ++i) probe();
            if (cpu_ns() - t0 >= 40e3 || batch >= (1 << 20)) break;
            batch *= 2;
        }
    }
    const auto run = [&](Contender& k) {
        if (slot != nullptr) *slot = k.build < 0 ? chosen : k.build;
        const double t0 = cpu_ns();
        for (int i = 0; i < batch; ++i) k.call();
        const double dt = cpu_ns() - t0;
        if (slot != nullptr) *slot = chosen;
        return dt;
    };
    std::size_t round = 0;
    for (auto _ : state) {
        double ours = 0;
        for (std::size_t i = 0; i < c.size(); ++i) {
            const std::size_t j = (round & 1) != 0 ? c.size() - 1 - i : i;
            const double dt = run(c[j]);
            c[j].t.push_back(dt);
            if (j == 0) ours = dt;
        }
        state.SetIterationTime(ours * 1e-9 / batch);
        ++round;
    }
    const double per = 1.0 / (batch * units);
    const auto ratio = [&](std::size_t a, std::size_t b) {
        std::vector<double> r(c[a].t.size());
        for (std::size_t i = 0; i < r.size(); ++i) r[i] = c[a].t[i] / c[b].t[i];
        return median(r);
    };
    state.counters["ns"] = median(c[0].t) * per;
    std::size_t first_peer = 1;
    if (slot != nullptr) {
        state.counters["u8_ns"] = median(c[1].t) * per;
        state.counters["n8_ns"] = median(c[2].t) * per;
        state.counters["n8_u8"] = ratio(2, 1);
        first_peer = 3;
    }
    for (std::size_t i = first_peer; i < c.size(); ++i) {
        state.counters[c[i].name + "_ns"] = median(c[i].t) * per;
        state.counters["x_" + c[i].name] = ratio(i, 0);
    }
    state.counters["batch"] = batch;
}

}  // namespace zb

// SPDX-License-Identifier: BSD-3-Clause
// Cost of a call through the public forwarding entry versus a direct call of
// the same build's implementation.
#include <benchmark/benchmark.h>

#include "frame/variants.h"

static void BM_GetLibVersion_Direct(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(zeps::u8::zepscGetLibVersion());
}
BENCHMARK(BM_GetLibVersion_Direct);

static void BM_GetLibVersion_ThroughEntry(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(zepscGetLibVersion());
}
BENCHMARK(BM_GetLibVersion_ThroughEntry);

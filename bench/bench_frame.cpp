// SPDX-License-Identifier: BSD-3-Clause
// Cost of a call through the public forwarding entry versus a direct call of
// the same build's implementation; the build the library chose, in the
// header of every run; how the interleaved timing forces a build.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <cstring>
#include <string>

#include "bench/interleaved.h"
#include "frame/variants.h"

namespace zb {

std::int32_t* variant_slot() {
    static std::int32_t* const slot = []() -> std::int32_t* {
        // movslq disp32(%rip), %rax: 48 63 05 <disp32>, 7 bytes.
        const auto* entry = reinterpret_cast<const unsigned char*>(dlsym(RTLD_DEFAULT, "zepscGetLibVersion"));
        if (entry == nullptr || entry[0] != 0x48 || entry[1] != 0x63 || entry[2] != 0x05) return nullptr;
        std::int32_t disp;
        std::memcpy(&disp, entry + 3, 4);
        auto* s = reinterpret_cast<std::int32_t*>(const_cast<unsigned char*>(entry) + 7 + disp);
        // The index must agree with the version record of each build.
        const std::int32_t keep = *s;
        bool ok = true;
        for (std::int32_t b = 0; b < 2; ++b) {
            *s = b;
            ok = ok && std::strcmp(zepscGetLibVersion()->targetCpu, b == 0 ? "u8" : "n8") == 0;
        }
        *s = keep;
        return ok ? s : nullptr;
    }();
    return slot;
}

std::int32_t chosen_build() {
    static const std::int32_t b = std::strcmp(zepscGetLibVersion()->targetCpu, "n8") == 0 ? 1 : 0;
    return b;
}

}  // namespace zb

namespace {

[[maybe_unused]] const bool kContext = [] {
    const ZepLibraryVersion* v = zepscGetLibVersion();
    benchmark::AddCustomContext("zepsc_build", std::string(v->targetCpu) + " (" + v->name + ")");
    benchmark::AddCustomContext("zepsc_columns",
                                zb::variant_slot() != nullptr
                                    ? "ns = public entry (chosen build); u8_ns, n8_ns = the same entries with the build "
                                      "forced; medians of interleaved rounds, thread CPU time"
                                    : "ns = public entry only (build could not be forced)");
    return true;
}();

/// The public entry (and each build forced) beside the direct call of build
/// u8's implementation (peer "direct_u8", no PLT or forwarding entry): the
/// cost of the dispatch every export pays. All through std::function, whose
/// call is counted in every column alike.
void BM_GetLibVersion(benchmark::State& state) {
    zb::interleaved(
        state,
        [] { return zb::Call([] { benchmark::DoNotOptimize(zepscGetLibVersion()); }); },
        {{"direct_u8", [] { benchmark::DoNotOptimize(zeps::u8::zepscGetLibVersion()); }}});
}
BENCHMARK(BM_GetLibVersion)->Apply(zb::rounds);

}  // namespace

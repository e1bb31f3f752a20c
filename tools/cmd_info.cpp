// zepsc info: version record, processor build chosen, CPU features seen.
#include <CLI/CLI.hpp>

#include <cinttypes>
#include <cstring>

#include "core/zepcore.h"
#include "tools/cli.h"
#include "zepsc.h"

namespace zepsc_cli {

namespace {
void run_info() {
    const ZepLibraryVersion* v = zepscGetLibVersion();
    const std::uint64_t m = zepGetEnabledCpuFeatures();
    std::printf("library      %s\n", v->name);
    std::printf("version      %s (%d.%d.%d build %d), %s\n", v->version, v->major, v->minor, v->majorBuild, v->build,
                v->buildDate);
    std::printf("build        %.4s (%s)\n", v->targetCpu,
                std::strncmp(v->targetCpu, "n8", 2) == 0 ? "SSSE3 + MOVBE, in-order tuning" : "SSSE3, generic tuning");
    static const struct {
        std::uint64_t bit;
        const char* name;
    } kNames[] = {{ZEP_CPU_MMX, "MMX"},      {ZEP_CPU_SSE, "SSE"},     {ZEP_CPU_SSE2, "SSE2"},
                  {ZEP_CPU_SSE3, "SSE3"},    {ZEP_CPU_SSSE3, "SSSE3"}, {ZEP_CPU_MOVBE, "MOVBE"},
                  {ZEP_CPU_SSE41, "SSE4.1"}, {ZEP_CPU_SSE42, "SSE4.2"}, {ZEP_CPU_AVX, "AVX"}};
    std::printf("cpu features 0x%" PRIx64 " ", m);
    for (const auto& f : kNames)
        if (m & f.bit) std::printf(" %s", f.name);
    std::printf("\n");
}
}  // namespace

void add_info(CLI::App& app) {
    app.add_subcommand("info", "version record, processor build chosen, CPU features seen")
        ->footer("Prints the library's version record, the processor build it chose\n"
                 "when loaded (u8 or n8) and the processor features the core library reports.")
        ->callback(run_info);
}

}  // namespace zepsc_cli

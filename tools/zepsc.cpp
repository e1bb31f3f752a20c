// zepsc: command-line front end of the library, a client of the public API only.
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "core/zepcore.h"
#include "zepsc.h"

namespace {

void print_features(std::uint64_t m) {
    static const struct {
        std::uint64_t bit;
        const char* name;
    } kNames[] = {{ZEP_CPU_MMX, "MMX"},     {ZEP_CPU_SSE, "SSE"},     {ZEP_CPU_SSE2, "SSE2"},
                  {ZEP_CPU_SSE3, "SSE3"},   {ZEP_CPU_SSSE3, "SSSE3"}, {ZEP_CPU_MOVBE, "MOVBE"},
                  {ZEP_CPU_SSE41, "SSE4.1"}, {ZEP_CPU_SSE42, "SSE4.2"}, {ZEP_CPU_AVX, "AVX"}};
    std::printf("cpu features: 0x%" PRIx64 " ", m);
    for (const auto& f : kNames)
        if (m & f.bit) std::printf(" %s", f.name);
    std::printf("\n");
}

int cmd_info() {
    const ZepLibraryVersion* v = zepscGetLibVersion();
    std::printf("library:      %s\n", v->name);
    std::printf("version:      %s, %d.%d.%d build %d, built %s\n", v->version, v->major, v->minor,
                v->majorBuild, v->build, v->buildDate);
    std::printf("build chosen: %s\n", v->targetCpu);
    print_features(zepGetEnabledCpuFeatures());
    return 0;
}

void usage(std::FILE* out) {
    std::fprintf(out,
                 "usage: zepsc [info]\n"
                 "  info   version record, processor build chosen, CPU features seen\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || std::strcmp(argv[1], "info") == 0) return cmd_info();
    if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        usage(stdout);
        return 0;
    }
    std::fprintf(stderr, "zepsc: unknown command '%s'\n", argv[1]);
    usage(stderr);
    return 2;
}

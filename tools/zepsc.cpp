// zepsc: the library's command-line tool, a client of the public API only.
#include <cstdio>
#include <cstring>

#include "tools/cli.h"

namespace {

struct Command {
    const char* name;
    const char* summary;
    int (*run)(int, char**);
};

const Command kCommands[] = {
    {"demo", "every family on a built-in speech clip, as a short report", zepsc_cli::cmd_demo},
    {"info", "version record, processor build chosen, CPU features seen", zepsc_cli::cmd_info},
    {"g726", "G.726 encode or decode between WAV and code files", zepsc_cli::cmd_g726},
    {"vad", "GSM-AMR VAD decisions and DTX frame types per frame", zepsc_cli::cmd_vad},
    {"lpc", "G.729 LSP indices, quantised LSPs and pitch lag per frame", zepsc_cli::cmd_lpc},
    {"subband", "sub-band analysis/synthesis round trip with SNR and delay", zepsc_cli::cmd_subband},
};

void usage(std::FILE* out) {
    std::fprintf(out, "usage: zepsc <command> [options]   (zepsc <command> --help for details)\n\ncommands:\n");
    for (const Command& c : kCommands) std::fprintf(out, "  %-9s %s\n", c.name, c.summary);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return kCommands[0].run(1, argv);
    if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "help") == 0) {
        usage(stdout);
        return 0;
    }
    for (const Command& c : kCommands)
        if (std::strcmp(argv[1], c.name) == 0) return c.run(argc - 1, argv + 1);
    std::fprintf(stderr, "zepsc: unknown command '%s'\n", argv[1]);
    usage(stderr);
    return 2;
}

// zepsc lpc: the G.729 front end per 10 ms frame.
#include <cstdio>

#include "tools/cli.h"
#include "tools/pipelines.h"

namespace zepsc_cli {

namespace {
constexpr const char* kHelp =
    "usage: zepsc lpc FILE.wav [--json]\n"
    "\n"
    "Runs the G.729 front end (pre-processing, autocorrelation, lag window,\n"
    "Levinson-Durbin, LP to LSP, LSP quantiser, open-loop pitch) on each 10 ms\n"
    "frame and prints the packed LSP indices, the quantised LSPs (Q15) and the\n"
    "open-loop pitch lag, as CSV (default) or JSON.\n";
}

int cmd_lpc(int argc, char** argv) {
    Args args;
    std::string error;
    if (!args.parse(argc, argv, {"--help", "--json"}, {}, error)) return fail(error + "\n" + kHelp);
    if (args.has("--help")) {
        std::printf("%s", kHelp);
        return 0;
    }
    if (args.positional().size() != 1) return fail(std::string("expected one input file\n") + kHelp);
    Audio audio;
    if (!read_audio(args.positional()[0], audio, error)) return fail(error);
    const bool json = args.has("--json");
    G729FrontEnd fe;
    const long total = static_cast<long>(audio.samples.size());
    Progress progress("lpc", total);
    if (json)
        std::printf("[\n");
    else
        std::printf("frame,index0,index1,lsp0,lsp1,lsp2,lsp3,lsp4,lsp5,lsp6,lsp7,lsp8,lsp9,pitch_lag\n");
    for (long i = 0, frame = 0; i + 80 <= total; i += 80, ++frame) {
        const LpFrame r = fe.process(&audio.samples[i]);
        if (json) {
            std::printf("%s  {\"frame\": %ld, \"index\": [%d, %d], \"lsp\": [", frame ? ",\n" : "", frame, r.index[0],
                        r.index[1]);
            for (int k = 0; k < 10; ++k) std::printf("%s%d", k ? ", " : "", r.qlsp[k]);
            std::printf("], \"pitch_lag\": %d}", r.lag);
        } else {
            std::printf("%ld,%d,%d", frame, r.index[0], r.index[1]);
            for (int k = 0; k < 10; ++k) std::printf(",%d", r.qlsp[k]);
            std::printf(",%d\n", r.lag);
        }
        progress.update(i + 80);
    }
    if (json) std::printf("\n]\n");
    if (fe.failures()) return fail("a library stage failed on " + std::to_string(fe.failures()) + " frame(s)");
    return 0;
}

}  // namespace zepsc_cli

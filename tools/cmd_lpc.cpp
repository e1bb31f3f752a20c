// zepsc lpc: the G.729 front end per 10 ms frame.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>

#include "tools/cli.h"
#include "tools/io.h"
#include "tools/json_rows.h"
#include "tools/pipelines.h"

namespace zepsc_cli {

namespace {

struct LpcArgs {
    std::string in;
    bool json = false;
};

void run_lpc(const LpcArgs& args) {
    const Audio audio = read_audio(args.in);
    G729FrontEnd fe;
    const long total = static_cast<long>(audio.samples.size());
    Progress progress("lpc", total);
    JsonRows rows(stdout);
    if (!args.json) std::printf("frame,index0,index1,lsp0,lsp1,lsp2,lsp3,lsp4,lsp5,lsp6,lsp7,lsp8,lsp9,pitch_lag\n");
    for (long i = 0, frame = 0; i + 80 <= total; i += 80, ++frame) {
        const LpFrame r = fe.process(&audio.samples[i]);
        if (args.json) {
            rows.add({{"frame", frame}, {"index", r.index}, {"lsp", r.qlsp}, {"pitch_lag", r.lag}});
        } else {
            std::printf("%ld,%d,%d", frame, r.index[0], r.index[1]);
            for (int k = 0; k < 10; ++k) std::printf(",%d", r.qlsp[k]);
            std::printf(",%d\n", r.lag);
        }
        progress.update(i + 80);
    }
    if (args.json) rows.close();
    check_stdout();
    if (fe.failures()) throw ToolError("a library stage failed on " + std::to_string(fe.failures()) + " frame(s)");
}

}  // namespace

void add_lpc(CLI::App& app) {
    auto args = std::make_shared<LpcArgs>();
    CLI::App* cmd = app.add_subcommand("lpc", "G.729 LSP indices, quantised LSPs and pitch lag per frame");
    cmd->add_option("FILE", args->in, "mono 8 kHz WAV file")->required();
    cmd->add_flag("--json", args->json, "JSON instead of CSV");
    cmd->footer("Runs the G.729 front end (pre-processing, autocorrelation, lag window,\n"
                "Levinson-Durbin, LP to LSP, LSP quantiser, open-loop pitch) on each 10 ms\n"
                "frame and prints the packed LSP indices, the quantised LSPs (Q15) and the\n"
                "open-loop pitch lag, as CSV (default) or JSON.");
    cmd->callback([args] { run_lpc(*args); });
}

}  // namespace zepsc_cli

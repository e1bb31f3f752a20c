// zepsc demo: every family on the embedded speech clip, in one report.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>
#include <vector>

#include "tools/cli.h"
#include "tools/demo_clip.h"
#include "tools/pipelines.h"

namespace zepsc_cli {

void run_demo() {
    const std::vector<Zep16s> clip(kDemoClip, kDemoClip + kDemoClipLength);
    const ZepLibraryVersion* v = zepscGetLibVersion();
    std::printf("zepsc demo: %s %s, build %.4s; clip 1.5 s (0.4 s noise, then speech)\n\n", v->name, v->version,
                v->targetCpu);

    std::printf("G.729 front end, frames 56..63 (voiced speech, 10 ms each)\n  frame  L0 L1 L2 L3  pitch lag\n");
    G729FrontEnd fe;
    for (int f = 0; f < kDemoClipLength / 80; ++f) {
        const LpFrame r = fe.process(&clip[f * 80]);
        if (f >= 56 && f < 64)
            std::printf("  %5d  %d %3d %2d %2d  %3d\n", f, r.index[0] >> 7, r.index[0] & 127, r.index[1] >> 5,
                        r.index[1] & 31, r.lag);
    }

    std::printf("\nGSM-AMR VAD and DTX at 12.2 kbit/s, one mark per 20 ms frame (1 speech, 0 noise;\n"
                "S speech frame, I SID, . no data)\n");
    for (int option = 1; option <= 2; ++option) {
        AmrVad vad(option, zepRateGSMAMR_122);
        std::string flags, types;
        for (int i = 0; i + 160 <= kDemoClipLength; i += 160) {
            const VadFrame r = vad.process(&clip[i]);
            flags += r.vad ? '1' : '0';
            types += r.type == FrameType::Speech ? 'S' : r.type == FrameType::NoData ? '.' : 'I';
        }
        std::printf("  option %d  vad  %s\n            dtx  %s\n", option, flags.c_str(), types.c_str());
    }

    std::printf("\nG.726 round trip (14-bit input, linear output)\n");
    static const struct {
        Zep32s code;
        int kbps;
    } kRates[] = {{zepRateG726_16, 16}, {zepRateG726_24, 24}, {zepRateG726_32, 32}, {zepRateG726_40, 40}};
    for (const auto& r : kRates) {
        const std::vector<Zep16s> out = g726_round_trip(clip, r.code);
        std::printf("  %2d kbit/s  SNR %5.1f dB\n", r.kbps, snr_db(clip.data(), out.data(), kDemoClipLength));
    }

    std::printf("\nSub-band filter bank round trip (analysis then synthesis)\n");
    for (const char c : {'A', 'B'})
        for (const bool fixed : {true, false}) {
            const SubbandResult r = subband_round_trip(clip, c, fixed);
            std::printf("  config %c %-6s  delay %3d samples  SNR %5.1f dB\n", c, fixed ? "16-bit" : "float", r.delay,
                        r.snr_db);
        }
}

void add_demo(CLI::App& app) {
    app.add_subcommand("demo", "every family on a built-in speech clip, as a short report")
        ->footer("Runs the G.729 front end, GSM-AMR VAD options 1 and 2 with DTX, G.726 at\n"
                 "each rate and the sub-band filter bank on a 1.5 s speech clip built into\n"
                 "the tool, and prints a short report. It is what zepsc runs without a command.")
        ->callback(run_demo);
}

}  // namespace zepsc_cli

// zepsc subband: sub-band analysis/synthesis round trip.
#include <cstdio>

#include "tools/cli.h"
#include "tools/pipelines.h"

namespace zepsc_cli {

namespace {
constexpr const char* kHelp =
    "usage: zepsc subband FILE.wav -o OUT.wav [--config A|B] [--float]\n"
    "\n"
    "Splits the signal into sub-bands with the echo-canceller filter bank and\n"
    "resynthesises it: configuration A (32-point FFT, hop 24, 128 taps, default)\n"
    "or B (64-point FFT, hop 44, 256 taps), 16-bit (default) or float. Writes the\n"
    "resynthesised signal and reports its delay, gain and SNR against the input.\n";
}

int cmd_subband(int argc, char** argv) {
    Args args;
    std::string error;
    if (!args.parse(argc, argv, {"--help", "--float"}, {"-o", "--config"}, error)) return fail(error + "\n" + kHelp);
    if (args.has("--help")) {
        std::printf("%s", kHelp);
        return 0;
    }
    if (args.positional().size() != 1 || !args.has("-o"))
        return fail(std::string("expected one input file and -o OUT.wav\n") + kHelp);
    const std::string config = args.get("--config", "A");
    if (config != "A" && config != "B") return fail("--config takes A or B");
    Audio audio;
    if (!read_audio(args.positional()[0], audio, error)) return fail(error);
    const SubbandResult r = subband_round_trip(audio.samples, config[0], !args.has("--float"));
    if (!write_audio(args.get("-o"), r.out, error)) return fail(error);
    std::printf("configuration %s, %s: delay %d samples (%.2f ms), gain %.4f, SNR %.2f dB\n", config.c_str(),
                args.has("--float") ? "float" : "16-bit", r.delay, r.delay / 8.0, r.gain, r.snr_db);
    return 0;
}

}  // namespace zepsc_cli

// zepsc subband: sub-band analysis/synthesis round trip.
#include <CLI/CLI.hpp>

#include <cstdio>

#include "tools/cli.h"
#include "tools/io.h"
#include "tools/pipelines.h"

namespace zepsc_cli {

namespace {

struct SubbandArgs {
    std::string in, out, config = "A";
    bool floating = false;
};

void run_subband(const SubbandArgs& args) {
    const Audio audio = read_audio(args.in);
    const SubbandResult r = subband_round_trip(audio.samples, args.config[0], !args.floating);
    write_audio(args.out, r.out);
    std::printf("configuration %s, %s: delay %d samples (%.2f ms), gain %.4f, SNR %.2f dB\n", args.config.c_str(),
                args.floating ? "float" : "16-bit", r.delay, r.delay / 8.0, r.gain, r.snr_db);
    check_stdout();
}

}  // namespace

void add_subband(CLI::App& app) {
    auto args = std::make_shared<SubbandArgs>();
    CLI::App* cmd = app.add_subcommand("subband", "sub-band analysis/synthesis round trip with SNR and delay");
    cmd->add_option("FILE", args->in, "mono 8 kHz WAV file")->required();
    cmd->add_option("-o", args->out, "resynthesised signal (WAV, or raw for another extension)")->required();
    cmd->add_option("--config", args->config, "filter bank configuration (default A)")->check(CLI::Validator(one_of({"A", "B"}), "A|B"));
    cmd->add_flag("--float", args->floating, "float filter bank instead of 16-bit");
    cmd->footer("Splits the signal into sub-bands with the echo-canceller filter bank and\n"
                "resynthesises it: configuration A (32-point FFT, hop 24, 128 taps, default)\n"
                "or B (64-point FFT, hop 44, 256 taps), 16-bit (default) or float. Writes the\n"
                "resynthesised signal and reports its delay, gain and SNR against the input.");
    cmd->callback([args] { run_subband(*args); });
}

}  // namespace zepsc_cli

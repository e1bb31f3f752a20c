// SPDX-License-Identifier: BSD-3-Clause
// zepsc bench: encoder and decoder time per frame of every codec the tool
// runs, on the embedded demo clip, and the full-duplex channels (one encoder
// plus one decoder each) one core sustains in real time. It runs the same
// frame loops as the codec commands (encode_all/decode_all), with each
// codec's default options (and, for G.729, each annex that has both an
// encoder and a decoder: A, B, AB and D); the clip is given to a codec at
// its own sampling rate as it stands.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>

#include "tools/cli.h"
#include "tools/codec.h"
#include "tools/demo_clip.h"
#include "tools/io.h"
#include "zepsc.h"

namespace zepsc_cli {

namespace {

struct BenchArgs {
    bool json = false;
    double seconds = 0.3;
    std::string codec;
};

struct Row {
    std::string codec, options;
    double frame_ms = 0, encode_us = 0, decode_us = 0, channels = 0;
};

// Best time of one call over repetitions lasting at least `seconds`.
template <class F>
double best_seconds(double seconds, F&& call) {
    using clock = std::chrono::steady_clock;
    double best = 1e30, spent = 0;
    for (int rep = 0; rep < 3 || spent < seconds; ++rep) {
        const auto t0 = clock::now();
        call();
        const double dt = std::chrono::duration<double>(clock::now() - t0).count();
        best = std::min(best, dt);
        spent += dt;
    }
    return best;
}

/// Option sets timed besides the defaults: the G.729 annexes with both
/// directions (Annex E has no encoder here to code the clip).
std::vector<CodecOptions> variants_of(const CodecSpec& spec) {
    std::vector<CodecOptions> v(1);
    if (spec.name == "g729")
        for (const char* annex : {"A", "B", "AB", "D"}) {
            CodecOptions o;
            o.values["annex"] = annex;
            v.push_back(o);
        }
    return v;
}

Row bench_codec(const CodecSpec& spec, const CodecOptions& given, double seconds) {
    const CodecOptions options = with_defaults(spec, given);
    const std::string format = spec.formats.front();
    const std::vector<std::int16_t> clip(kDemoClip, kDemoClip + kDemoClipLength);
    Row r;
    r.codec = spec.name;
    for (const auto& [name, value] : options.values) r.options += (r.options.empty() ? "" : " ") + name + "=" + value;
    EncodeLoop probe(spec, options, format);
    const std::size_t frame = probe.encoder().frame_samples();
    const int rate = probe.encoder().sample_rate();
    r.frame_ms = 1000.0 * static_cast<double>(frame) / rate;

    std::vector<std::uint8_t> bits;
    const double t_enc = best_seconds(seconds, [&] { bits = encode_all(spec, options, format, clip.data(), clip.size()); });
    std::vector<std::int16_t> pcm;
    const double t_dec = best_seconds(seconds, [&] { pcm = decode_all(spec, options, format, bits.data(), bits.size()); });
    if (pcm.empty()) throw ToolError(spec.name + ": the decoder returned no samples for the demo clip");
    r.encode_us = 1e6 * t_enc * static_cast<double>(frame) / static_cast<double>(clip.size());
    r.decode_us = 1e6 * t_dec * static_cast<double>(frame) / static_cast<double>(pcm.size());
    r.channels = 1000.0 * r.frame_ms / (r.encode_us + r.decode_us);
    return r;
}

void run_bench(const BenchArgs& args) {
    std::vector<Row> rows;
    std::string skipped;  // codecs that cannot run both ways yet, with the reason
    for (const CodecSpec& spec : codec_registry()) {
        if (!args.codec.empty() && args.codec != spec.name) continue;
        try {
            for (const CodecOptions& o : variants_of(spec)) rows.push_back(bench_codec(spec, o, args.seconds));
        } catch (const CodecError& e) {
            if (!args.codec.empty()) throw;  // asked for by name: say why it cannot be timed
            skipped += (skipped.empty() ? "" : "; ") + spec.name + " (" + e.what() + ")";
        }
    }
    if (rows.empty() && !args.codec.empty()) throw ToolError("no codec named '" + args.codec + "'");
    if (args.json) {
        nlohmann::ordered_json out = nlohmann::ordered_json::array();
        for (const Row& r : rows)
            out.push_back({{"codec", r.codec},
                           {"options", r.options},
                           {"frame_ms", r.frame_ms},
                           {"encode_us_per_frame", r.encode_us},
                           {"decode_us_per_frame", r.decode_us},
                           {"full_duplex_channels_per_core", static_cast<long>(r.channels)}});
        std::printf("%s\n", out.dump(2).c_str());
    } else {
        const ZepLibraryVersion* v = zepscGetLibVersion();
        std::printf("zepsc bench: %s; demo clip %.1f s; one core, best of repeated runs\n\n", v->name,
                    kDemoClipLength / 8000.0);
        std::printf("%-8s %-28s %8s %14s %14s %14s\n", "codec", "options", "frame", "encode us/fr", "decode us/fr",
                    "channels/core");
        for (const Row& r : rows)
            std::printf("%-8s %-28s %5.1f ms %14.2f %14.2f %14ld\n", r.codec.c_str(), r.options.c_str(), r.frame_ms,
                        r.encode_us, r.decode_us, static_cast<long>(r.channels));
        if (!skipped.empty()) std::printf("\nnot timed: %s\n", skipped.c_str());
    }
    check_stdout();
}

}  // namespace

void add_bench(CLI::App& app) {
    auto args = std::make_shared<BenchArgs>();
    CLI::App* cmd = app.add_subcommand("bench", "codec speed: time per frame, full-duplex channels per core");
    cmd->add_flag("--json", args->json, "JSON instead of a table");
    cmd->add_option("--seconds", args->seconds, "least time spent timing each direction (default 0.3)")
        ->check(CLI::Range(0.0, 60.0));
    cmd->add_option("--codec", args->codec, "only this codec");
    cmd->footer("Encodes and decodes the demo clip with every codec the tool runs (its default\n"
                "options), through the same frame loops as the codec commands, and reports the\n"
                "best time per frame of each direction and the number of full-duplex channels\n"
                "(an encoder and a decoder each) one core runs in real time.");
    cmd->callback([args] { run_bench(*args); });
}

}  // namespace zepsc_cli

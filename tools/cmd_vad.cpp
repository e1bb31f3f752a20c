// zepsc vad: per-frame GSM-AMR VAD decisions and DTX frame types.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "tools/cli.h"
#include "tools/io.h"
#include "tools/pipelines.h"

namespace zepsc_cli {

namespace {

int parse_rate(const std::string& r) {
    static const struct {
        const char* name;
        int code;
    } kRates[] = {{"4.75", 0}, {"5.15", 1}, {"5.9", 3}, {"6.7", 6}, {"7.4", 7}, {"7.95", 8}, {"10.2", 11}, {"12.2", 12}};
    for (const auto& k : kRates)
        if (r == k.name) return k.code;
    return -1;
}

void write_svg(std::FILE* f, const std::vector<Zep16s>& s, const std::vector<VadFrame>& frames) {
    const int width = 1000, wave_h = 160, track_h = 24;
    const std::size_t n = s.size();
    std::fprintf(f, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\">\n",
                 width, wave_h + 2 * track_h + 30, width, wave_h + 2 * track_h + 30);
    std::fprintf(f, "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n<path fill=\"none\" stroke=\"#246\" d=\"");
    for (int x = 0; x < width && n > 0; ++x) {
        const std::size_t a = n * x / width, b = std::max(a + 1, n * (x + 1) / width);
        Zep16s lo = 32767, hi = -32768;
        for (std::size_t i = a; i < b && i < n; ++i) lo = std::min(lo, s[i]), hi = std::max(hi, s[i]);
        const double y0 = wave_h / 2.0 - hi * (wave_h / 2.0) / 32768.0, y1 = wave_h / 2.0 - lo * (wave_h / 2.0) / 32768.0;
        std::fprintf(f, "M%d %.1fV%.1f", x, y0, y1);
    }
    std::fprintf(f, "\"/>\n");
    const double fw = frames.empty() ? 0 : double(width) / frames.size();
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (frames[i].vad)
            std::fprintf(f, "<rect x=\"%.2f\" y=\"%d\" width=\"%.2f\" height=\"%d\" fill=\"#c33\"/>\n", i * fw,
                         wave_h + 4, fw, track_h - 4);
        const char* color = frames[i].type == FrameType::Speech ? "#393" : frames[i].type == FrameType::NoData ? "#ddd" : "#fa0";
        std::fprintf(f, "<rect x=\"%.2f\" y=\"%d\" width=\"%.2f\" height=\"%d\" fill=\"%s\"/>\n", i * fw,
                     wave_h + track_h + 4, fw, track_h - 4, color);
    }
    std::fprintf(f,
                 "<text x=\"4\" y=\"%d\" font-family=\"sans-serif\" font-size=\"12\">red: VAD speech; "
                 "frame type: green SPEECH, orange SID, grey NO_DATA</text>\n</svg>\n",
                 wave_h + 2 * track_h + 22);
}

struct VadArgs {
    std::string in, option = "1", rate = "12.2", svg;
};

void run_vad(const VadArgs& args) {
    const Audio audio = read_audio(args.in);
    // The drawing is written beside its target and renamed once complete.
    std::unique_ptr<OutputFile> svg;
    if (!args.svg.empty()) svg = std::make_unique<OutputFile>(args.svg);
    AmrVad vad(args.option == "1" ? 1 : 2, parse_rate(args.rate));
    std::vector<VadFrame> frames;
    const long total = static_cast<long>(audio.samples.size());
    Progress progress("vad", total);
    std::printf("time_s,vad,frame_type\n");
    for (long i = 0; i + 160 <= total; i += 160) {
        frames.push_back(vad.process(&audio.samples[i]));
        std::printf("%.2f,%d,%s\n", i / 8000.0, frames.back().vad, frame_type_name(frames.back().type));
        progress.update(i + 160);
    }
    check_stdout();
    if (vad.failures()) throw ToolError("a library stage failed on " + std::to_string(vad.failures()) + " frame(s)");
    if (svg) {
        write_svg(svg->stream(), audio.samples, frames);
        svg->commit();
    }
}

}  // namespace

void add_vad(CLI::App& app) {
    auto args = std::make_shared<VadArgs>();
    CLI::App* cmd = app.add_subcommand("vad", "GSM-AMR VAD decisions and DTX frame types per frame");
    cmd->add_option("FILE", args->in, "mono 8 kHz WAV file")->required();
    cmd->add_option("--option", args->option, "VAD option 1 (default) or 2")->check(CLI::Validator(one_of({"1", "2"}), "1|2"));
    const std::vector<std::string> rates = {"4.75", "5.15", "5.9", "6.7", "7.4", "7.95", "10.2", "12.2"};
    cmd->add_option("--rate", args->rate, "GSM-AMR rate in kbit/s (default 12.2)")
        ->check(CLI::Validator(one_of(rates), "4.75|5.15|5.9|6.7|7.4|7.95|10.2|12.2"));
    cmd->add_option("--svg", args->svg, "draw the waveform with the decisions under it");
    cmd->footer("GSM-AMR voice activity detection (option 1, default, or option 2) and the DTX\n"
                "handler, per 20 ms frame. Prints one line per frame: time, VAD flag, frame type\n"
                "(SPEECH, SID_FIRST, SID_UPDATE, NO_DATA). --svg draws the waveform with the decisions under it.\n"
                "The LP analysis that feeds the open-loop pitch search uses the G.729 stages.");
    cmd->callback([args] { run_vad(*args); });
}

}  // namespace zepsc_cli

// zepsc vad: per-frame GSM-AMR VAD decisions and DTX frame types.
#include <algorithm>
#include <cstdio>
#include <fstream>

#include "tools/cli.h"
#include "tools/pipelines.h"

namespace zepsc_cli {

namespace {

constexpr const char* kHelp =
    "usage: zepsc vad FILE.wav [--option 1|2] [--rate 4.75|5.15|5.9|6.7|7.4|7.95|10.2|12.2] [--svg OUT.svg]\n"
    "\n"
    "GSM-AMR voice activity detection (option 1, default, or option 2) and the DTX\n"
    "handler, per 20 ms frame. Prints one line per frame: time, VAD flag, frame type\n"
    "(SPEECH, SID_FIRST, SID_UPDATE, NO_DATA). --svg draws the waveform with the decisions under it.\n"
    "The LP analysis that feeds the open-loop pitch search uses the G.729 stages.\n";

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

}  // namespace

int cmd_vad(int argc, char** argv) {
    Args args;
    std::string error;
    if (!args.parse(argc, argv, {"--help"}, {"--option", "--rate", "--svg"}, error)) return fail(error + "\n" + kHelp);
    if (args.has("--help")) {
        std::printf("%s", kHelp);
        return 0;
    }
    if (args.positional().size() != 1) return fail(std::string("expected one input file\n") + kHelp);
    const std::string opt = args.get("--option", "1");
    if (opt != "1" && opt != "2") return fail("--option takes 1 or 2");
    const int rate = parse_rate(args.get("--rate", "12.2"));
    if (rate < 0) return fail("--rate takes a GSM-AMR rate in kbit/s (4.75 ... 12.2)");
    Audio audio;
    if (!read_audio(args.positional()[0], audio, error)) return fail(error);

    AmrVad vad(opt == "1" ? 1 : 2, rate);
    std::vector<VadFrame> frames;
    const long total = static_cast<long>(audio.samples.size());
    Progress progress("vad", total);
    std::printf("time_s,vad,frame_type\n");
    for (long i = 0; i + 160 <= total; i += 160) {
        frames.push_back(vad.process(&audio.samples[i]));
        std::printf("%.2f,%d,%s\n", i / 8000.0, frames.back().vad, frame_type_name(frames.back().type));
        progress.update(i + 160);
    }
    if (vad.failures()) return fail("a library stage failed on " + std::to_string(vad.failures()) + " frame(s)");
    if (args.has("--svg")) {
        std::FILE* f = std::fopen(args.get("--svg").c_str(), "w");
        if (f == nullptr) return fail("cannot write '" + args.get("--svg") + "'");
        write_svg(f, audio.samples, frames);
        std::fclose(f);
    }
    return 0;
}

}  // namespace zepsc_cli

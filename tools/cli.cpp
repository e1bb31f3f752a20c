#include "tools/cli.h"
#include "tools/io.h"

#include <unistd.h>

#include <cmath>

namespace zepsc_cli {

Audio read_audio(const std::string& path) {
    PcmReader in(path);
    if (in.sample_rate() == 0) throw ToolError("cannot read '" + path + "': not a WAV file (.wav)");
    in.require(8000);
    Audio audio;
    std::vector<std::int16_t> block(1 << 16);
    while (const std::size_t got = in.read(block.data(), block.size()))
        audio.samples.insert(audio.samples.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got));
    return audio;
}

void write_audio(const std::string& path, const std::vector<std::int16_t>& samples) {
    PcmWriter out(path, 8000, PcmOutput::Linear);
    out.write(samples.data(), samples.size());
    out.commit();
}

std::function<std::string(std::string&)> one_of(const std::vector<std::string>& choices) {
    return [choices](std::string& value) -> std::string {
        for (const std::string& c : choices)
            if (value == c) return {};
        std::string list;
        for (std::size_t i = 0; i < choices.size(); ++i)
            list += (i == 0 ? "" : i + 1 == choices.size() ? " or " : ", ") + choices[i];
        return "takes " + list + ", not '" + value + "'";
    };
}

Progress::Progress(const char* label, long total_samples)
    : Progress(label, total_samples, total_samples > kProgressSeconds * 8000) {}

Progress::Progress(const char* label, long long total, bool long_enough)
    : label_(label), total_(total), enabled_(long_enough && total > 0 && isatty(STDERR_FILENO)) {}

void Progress::enable(bool long_enough) { enabled_ = long_enough && total_ > 0 && isatty(STDERR_FILENO); }

Progress::~Progress() {
    if (enabled_ && last_ >= 0) std::fprintf(stderr, "\r%-60s\r", "");
}

void Progress::update(long long done) {
    if (!enabled_ || total_ <= 0) return;
    const int pct = static_cast<int>(100 * done / total_);
    if (pct == last_) return;
    last_ = pct;
    const int bar = pct * 30 / 100;
    std::fprintf(stderr, "\r%s [%.*s%*s] %3d%%", label_, bar, "##############################", 30 - bar, "", pct);
    std::fflush(stderr);
}

int fail(const std::string& message) {
    std::fprintf(stderr, "zepsc: %s\n", message.c_str());
    return 1;
}

double snr_db(const std::int16_t* ref, const std::int16_t* test, long n, long delay) {
    double sig = 0, err = 0;
    for (long i = 0; i + delay < n; ++i) {
        const double r = ref[i], d = test[i + delay] - r;
        sig += r * r;
        err += d * d;
    }
    if (err == 0) return INFINITY;
    return 10.0 * std::log10(sig / err);
}

const char* status_name(int s) {
    switch (s) {
        case 0: return "zepStsNoErr";
        case -2: return "zepStsErr";
        case -5: return "zepStsBadArgErr";
        case -6: return "zepStsSizeErr";
        case -7: return "zepStsRangeErr";
        case -8: return "zepStsNullPtrErr";
        case -11: return "zepStsOutOfRangeErr";
        case -12: return "zepStsNegativeLSFErr";
        case -13: return "zepStsScaleRangeErr";
        case -119: return "zepStsSubbandNumErr";
        case 12: return "zepStsOverflow";
        case 13: return "zepStsLSFLowClamped";
        case 14: return "zepStsLSFHighClamped";
        case 15: return "zepStsLSFLowHighClamped";
        default: return "unknown status";
    }
}

}  // namespace zepsc_cli

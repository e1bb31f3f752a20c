#include "tools/cli.h"

#include <sndfile.h>
#include <unistd.h>

#include <cmath>

namespace zepsc_cli {

bool Args::parse(int argc, char** argv, const std::vector<std::string>& flags,
                 const std::vector<std::string>& valued, std::string& error) {
    auto listed = [](const std::vector<std::string>& v, const std::string& s) {
        for (const auto& x : v)
            if (x == s) return true;
        return false;
    };
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a.size() > 1 && a[0] == '-') {
            std::string value;
            const auto eq = a.find('=');
            if (eq != std::string::npos) {
                value = a.substr(eq + 1);
                a = a.substr(0, eq);
            }
            if (listed(flags, a)) {
                opts_[a] = "1";
            } else if (listed(valued, a)) {
                if (eq == std::string::npos) {
                    if (i + 1 >= argc) {
                        error = "option " + a + " needs a value";
                        return false;
                    }
                    value = argv[++i];
                }
                opts_[a] = value;
            } else {
                error = "unknown option '" + a + "'";
                return false;
            }
        } else {
            pos_.push_back(a);
        }
    }
    return true;
}

std::string Args::get(const std::string& opt, const std::string& fallback) const {
    const auto it = opts_.find(opt);
    return it == opts_.end() ? fallback : it->second;
}

bool read_audio(const std::string& path, Audio& audio, std::string& error) {
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (f == nullptr) {
        error = "cannot read '" + path + "': " + sf_strerror(nullptr);
        return false;
    }
    if (info.samplerate != 8000 || info.channels != 1) {
        error = "'" + path + "' is " + std::to_string(info.samplerate) + " Hz with " + std::to_string(info.channels) +
                " channel(s); zepsc needs mono 8000 Hz. Convert it with: sox '" + path +
                "' -r 8000 -c 1 -b 16 out.wav";
        sf_close(f);
        return false;
    }
    audio.samples.assign(static_cast<std::size_t>(info.frames), 0);
    const sf_count_t got = sf_read_short(f, audio.samples.data(), info.frames);
    sf_close(f);
    audio.samples.resize(static_cast<std::size_t>(got < 0 ? 0 : got));
    return true;
}

bool write_audio(const std::string& path, const std::vector<std::int16_t>& samples, std::string& error) {
    SF_INFO info{};
    info.samplerate = 8000;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    if (f == nullptr) {
        error = "cannot write '" + path + "': " + sf_strerror(nullptr);
        return false;
    }
    const sf_count_t n = static_cast<sf_count_t>(samples.size());
    const bool ok = sf_write_short(f, samples.data(), n) == n;
    sf_close(f);
    if (!ok) error = "writing '" + path + "' failed";
    return ok;
}

Progress::Progress(const char* label, long total_samples)
    : label_(label), total_(total_samples), enabled_(total_samples > 5 * 8000 && isatty(STDERR_FILENO)) {}

Progress::~Progress() {
    if (enabled_ && last_ >= 0) std::fprintf(stderr, "\r%-60s\r", "");
}

void Progress::update(long done) {
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

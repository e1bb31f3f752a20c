// Shared pieces of the zepsc command-line tool: audio files (libsndfile),
// progress display, error reporting, and the subcommands, each added to the
// CLI11 command line by its own file.
#pragma once

#include <cstdint>
#include <functional>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zepsc_cli {

/// Mono 8 kHz 16-bit audio.
struct Audio {
    std::vector<std::int16_t> samples;
};

/// Reads a sound file; refuses anything but mono 8000 Hz with a message that
/// says how to convert it (throws ToolError).
Audio read_audio(const std::string& path);

/// Writes mono 8000 Hz 16-bit PCM WAV (checked, complete or not at all;
/// throws ToolError).
void write_audio(const std::string& path, const std::vector<std::int16_t>& samples);

/// A progress bar on stderr, shown only when stderr is a terminal and the
/// work is longer than a few seconds of audio.
class Progress {
public:
    Progress(const char* label, long total_samples);
    /// Progress over `total` units of any kind, shown if `long_enough`.
    Progress(const char* label, long long total, bool long_enough);
    ~Progress();
    void update(long long done);
    /// Shows the bar from now on when the work turns out long enough.
    void enable(bool long_enough);

private:
    const char* label_;
    long long total_;
    bool enabled_;
    int last_ = -1;
};

/// Prints "zepsc: <message>" to stderr and returns exit status 1.
int fail(const std::string& message);

/// Seconds of audio after which a progress bar is worth showing.
inline constexpr int kProgressSeconds = 5;

/// Signal-to-noise ratio in dB of `test` against `ref` over n samples, with
/// `test` delayed by `delay` samples.
double snr_db(const std::int16_t* ref, const std::int16_t* test, long n, long delay = 0);

/// Name of a status code, for messages.
const char* status_name(int status);

// Subcommands: each file adds its own to the command line; the callbacks
// throw ToolError or CodecError on failure (main prints one line, exit 1).
void add_demo(CLI::App& app);
void add_info(CLI::App& app);
void add_codec_commands(CLI::App& app);
void add_vad(CLI::App& app);
void add_lpc(CLI::App& app);
void add_subband(CLI::App& app);
void add_bench(CLI::App& app);

/// A validator of an option's value against its allowed choices, with the
/// message "takes a, b or c, not 'x'".
std::function<std::string(std::string&)> one_of(const std::vector<std::string>& choices);

/// The tool's version line ("zepsc 8.1.1, library ...").
std::string version_text();

}  // namespace zepsc_cli

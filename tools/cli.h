// Shared pieces of the zepsc command-line tool: argument parsing, audio files
// (libsndfile), progress display and error reporting.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace zepsc_cli {

/// Command-line arguments of one subcommand: positional words and --options.
class Args {
public:
    /// Parses argv; `flags` are options without a value, `valued` options
    /// that take one. Returns false (with a message) on an unknown option.
    bool parse(int argc, char** argv, const std::vector<std::string>& flags,
               const std::vector<std::string>& valued, std::string& error);
    bool has(const std::string& opt) const { return opts_.count(opt) != 0; }
    std::string get(const std::string& opt, const std::string& fallback = "") const;
    const std::vector<std::string>& positional() const { return pos_; }

private:
    std::map<std::string, std::string> opts_;
    std::vector<std::string> pos_;
};

/// Mono 8 kHz 16-bit audio.
struct Audio {
    std::vector<std::int16_t> samples;
};

/// Reads a sound file; refuses anything but mono 8000 Hz with a message that
/// says how to convert it.
bool read_audio(const std::string& path, Audio& audio, std::string& error);

/// Writes mono 8000 Hz 16-bit PCM WAV.
bool write_audio(const std::string& path, const std::vector<std::int16_t>& samples, std::string& error);

/// A progress bar on stderr, shown only when stderr is a terminal and the
/// work is longer than a few seconds of audio.
class Progress {
public:
    Progress(const char* label, long total_samples);
    ~Progress();
    void update(long done_samples);

private:
    const char* label_;
    long total_;
    bool enabled_;
    int last_ = -1;
};

/// Prints "zepsc: <message>" to stderr and returns exit status 1.
int fail(const std::string& message);

/// Signal-to-noise ratio in dB of `test` against `ref` over n samples, with
/// `test` delayed by `delay` samples.
double snr_db(const std::int16_t* ref, const std::int16_t* test, long n, long delay = 0);

/// Name of a status code, for messages.
const char* status_name(int status);

// Subcommands: each takes argv starting at its own name.
int cmd_info(int argc, char** argv);
int cmd_demo(int argc, char** argv);
int cmd_g726(int argc, char** argv);
int cmd_vad(int argc, char** argv);
int cmd_lpc(int argc, char** argv);
int cmd_subband(int argc, char** argv);

}  // namespace zepsc_cli

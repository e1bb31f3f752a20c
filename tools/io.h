// File input and output of the zepsc tool: PCM (WAV through libsndfile, or
// raw 16-bit little-endian), bitstreams, and output files that appear only
// when complete.
//
// Every output goes to a temporary file beside its target ("OUT.tmp-zepsc-
// <pid>"); every write and the close are checked, and the file is renamed
// onto the target only by commit(). On any error, or when the object is
// destroyed without commit(), the temporary file is removed: no half file is
// ever left behind. A target that exists and is not a regular file (a
// device such as /dev/null or /dev/full, a pipe) is written in place, with
// the same checks.
#pragma once

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/codec.h"

struct sf_private_tag;

namespace zepsc_cli {

/// A fault of the tool's own (unreadable input, failed write, bad usage):
/// main() prints "zepsc: <message>" and exits with status 1.
struct ToolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The system's text for errno, for messages.
std::string errno_text();

/// True when the path names a WAV file (extension .wav, any case).
bool is_wav_path(const std::string& path);
/// The extension of a path in lower case, without the dot ("" if none).
std::string lower_extension(const std::string& path);

/// An output file written through a temporary file and renamed at commit().
class OutputFile {
public:
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Writes bytes; throws ToolError when the write fails.
    void write(const void* data, std::size_t size);
    /// The stdio stream, for formatted text; errors are caught at commit().
    std::FILE* stream() { return file_; }
    /// The path actually written (the temporary file, or the target itself).
    const std::string& write_path() const { return write_path_; }
    const std::string& path() const { return path_; }
    /// Flushes and closes (checked), then renames onto the target.
    void commit();
    /// Closes and removes the temporary file (also done by the destructor).
    void discard();

private:
    void fail_write();
    std::string path_, write_path_;
    std::FILE* file_ = nullptr;
    bool in_place_ = false;
};

/// Mono 16-bit PCM read block by block: a WAV file (any encoding libsndfile
/// reads, converted to 16 bits), or raw 16-bit little-endian for any other
/// extension.
class PcmReader {
public:
    explicit PcmReader(const std::string& path);
    ~PcmReader();
    PcmReader(const PcmReader&) = delete;
    PcmReader& operator=(const PcmReader&) = delete;

    /// The WAV file's rate, or 0 for raw input (the rate is the user's word).
    int sample_rate() const { return rate_; }
    /// Total samples when known (WAV, or a raw regular file), else -1.
    long long length() const { return length_; }
    /// Refuses anything but mono at `rate` Hz, with a message saying how to
    /// convert the file.
    void require(int rate) const;
    /// Reads up to n samples; 0 only at the end. Throws ToolError on a read
    /// error or a raw file ending in half a sample.
    std::size_t read(std::int16_t* dst, std::size_t n);

private:
    std::string path_;
    sf_private_tag* snd_ = nullptr;
    std::FILE* raw_ = nullptr;
    int rate_ = 0, channels_ = 1;
    long long length_ = -1;
};

/// Mono PCM written block by block to a WAV file or raw 16-bit little-endian
/// (one byte a sample for G.711 codes), through an OutputFile.
class PcmWriter {
public:
    PcmWriter(const std::string& path, int rate, PcmOutput kind);
    ~PcmWriter();
    PcmWriter(const PcmWriter&) = delete;
    PcmWriter& operator=(const PcmWriter&) = delete;

    void write(const std::int16_t* pcm, std::size_t n);
    void commit();

private:
    OutputFile out_;
    sf_private_tag* snd_ = nullptr;
    PcmOutput kind_;
    std::vector<std::uint8_t> bytes_;
};

/// A ByteSource over a file, read in blocks.
class FileSource final : public ByteSource {
public:
    explicit FileSource(const std::string& path);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    std::size_t read_some(std::uint8_t* dst, std::size_t n) override;
    /// Size in bytes when the input is a regular file, else -1.
    long long size() const { return size_; }

private:
    std::string path_;
    std::FILE* file_ = nullptr;
    long long size_ = -1;
};

/// Opens a path for reading, refusing directories with a clear message.
std::FILE* open_for_reading(const std::string& path, long long* size);

/// Flushes standard output; throws ToolError when anything written to it
/// was lost (a full disk, a closed pipe).
void check_stdout();

}  // namespace zepsc_cli

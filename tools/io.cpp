// SPDX-License-Identifier: BSD-3-Clause
#include "tools/io.h"

#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cerrno>
#include <cstring>

namespace zepsc_cli {

std::string errno_text() { return std::strerror(errno); }

std::string lower_extension(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    const std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ext = path.substr(dot + 1);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

bool is_wav_path(const std::string& path) { return lower_extension(path) == "wav"; }

// ---------------------------------------------------------------- output

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
    struct stat st {};
    if (stat(path_.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) throw ToolError("cannot write '" + path_ + "': it is a directory");
    in_place_ = stat(path_.c_str(), &st) == 0 && !S_ISREG(st.st_mode);
    write_path_ = in_place_ ? path_ : path_ + ".tmp-zepsc-" + std::to_string(getpid());
    file_ = std::fopen(write_path_.c_str(), "wb");
    if (file_ == nullptr) throw ToolError("cannot write '" + path_ + "': " + errno_text());
}

OutputFile::~OutputFile() { discard(); }

void OutputFile::fail_write() {
    const std::string why = errno_text();
    discard();
    throw ToolError("writing '" + path_ + "' failed: " + why);
}

void OutputFile::write(const void* data, std::size_t size) {
    if (size != 0 && std::fwrite(data, 1, size, file_) != size) fail_write();
}

void OutputFile::commit() {
    if (file_ == nullptr) throw ToolError("writing '" + path_ + "' failed");
    errno = 0;
    const bool flushed = std::fflush(file_) == 0 && !std::ferror(file_);
    if (!flushed) fail_write();
    std::FILE* f = file_;
    file_ = nullptr;
    if (std::fclose(f) != 0) {
        const std::string why = errno_text();
        if (!in_place_) std::remove(write_path_.c_str());
        throw ToolError("writing '" + path_ + "' failed: " + why);
    }
    if (!in_place_ && std::rename(write_path_.c_str(), path_.c_str()) != 0) {
        const std::string why = errno_text();
        std::remove(write_path_.c_str());
        throw ToolError("cannot write '" + path_ + "': " + why);
    }
    write_path_.clear();
}

void OutputFile::discard() {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
    if (!in_place_ && !write_path_.empty()) std::remove(write_path_.c_str());
    write_path_.clear();
}

// ---------------------------------------------------------------- input

std::FILE* open_for_reading(const std::string& path, long long* size) {
    struct stat st {};
    if (stat(path.c_str(), &st) != 0) throw ToolError("cannot read '" + path + "': " + errno_text());
    if (S_ISDIR(st.st_mode)) throw ToolError("cannot read '" + path + "': it is a directory");
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) throw ToolError("cannot read '" + path + "': " + errno_text());
    if (size) *size = S_ISREG(st.st_mode) ? static_cast<long long>(st.st_size) : -1;
    return f;
}

PcmReader::PcmReader(const std::string& path) : path_(path) {
    long long bytes = -1;
    raw_ = open_for_reading(path, &bytes);
    if (!is_wav_path(path)) {
        length_ = bytes < 0 ? -1 : bytes / 2;
        return;
    }
    std::fclose(raw_);
    raw_ = nullptr;
    SF_INFO info{};
    snd_ = sf_open(path.c_str(), SFM_READ, &info);
    if (snd_ == nullptr) throw ToolError("cannot read '" + path + "': " + sf_strerror(nullptr));
    rate_ = info.samplerate;
    channels_ = info.channels;
    length_ = info.frames;
}

PcmReader::~PcmReader() {
    if (snd_) sf_close(snd_);
    if (raw_) std::fclose(raw_);
}

void PcmReader::require(int rate) const {
    if (snd_ == nullptr) return;
    if (rate_ != rate || channels_ != 1)
        throw ToolError("'" + path_ + "' is " + std::to_string(rate_) + " Hz with " + std::to_string(channels_) +
                        " channel(s); this needs mono " + std::to_string(rate) + " Hz. Convert it with: sox '" + path_ +
                        "' -r " + std::to_string(rate) + " -c 1 -b 16 out.wav");
}

std::size_t PcmReader::read(std::int16_t* dst, std::size_t n) {
    if (snd_) {
        const sf_count_t got = sf_read_short(snd_, dst, static_cast<sf_count_t>(n));
        if (got < 0 || sf_error(snd_) != SF_ERR_NO_ERROR) throw ToolError("reading '" + path_ + "' failed: " + sf_strerror(snd_));
        return static_cast<std::size_t>(got);
    }
    std::uint8_t bytes[8192];
    std::size_t done = 0;
    while (done < n) {
        const std::size_t want = std::min(n - done, sizeof bytes / 2);
        const std::size_t got = std::fread(bytes, 1, 2 * want, raw_);
        if (std::ferror(raw_)) throw ToolError("reading '" + path_ + "' failed: " + errno_text());
        if (got % 2 != 0) {
            // A pipe may deliver half a sample; complete it when it can.
            if (std::fread(bytes + got, 1, 1, raw_) != 1)
                throw ToolError("'" + path_ + "' ends in half a sample (an odd number of bytes)");
        }
        const std::size_t samples = (got + 1) / 2;
        for (std::size_t i = 0; i < samples; ++i)
            dst[done + i] = static_cast<std::int16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
        done += samples;
        if (got == 0) break;
    }
    return done;
}

// ---------------------------------------------------------------- PCM out

namespace {
sf_count_t vio_length(void* user) {
    std::FILE* f = static_cast<OutputFile*>(user)->stream();
    const long at = std::ftell(f);
    if (at < 0 || std::fseek(f, 0, SEEK_END) != 0) return 0;
    const long end = std::ftell(f);
    std::fseek(f, at, SEEK_SET);
    return end < 0 ? 0 : end;
}
sf_count_t vio_seek(sf_count_t offset, int whence, void* user) {
    std::FILE* f = static_cast<OutputFile*>(user)->stream();
    if (std::fseek(f, static_cast<long>(offset), whence) != 0) return -1;
    return std::ftell(f);
}
sf_count_t vio_read(void*, sf_count_t, void*) { return 0; }
sf_count_t vio_write(const void* ptr, sf_count_t count, void* user) {
    std::FILE* f = static_cast<OutputFile*>(user)->stream();
    return static_cast<sf_count_t>(std::fwrite(ptr, 1, static_cast<std::size_t>(count), f));
}
sf_count_t vio_tell(void* user) { return std::ftell(static_cast<OutputFile*>(user)->stream()); }
}  // namespace

PcmWriter::PcmWriter(const std::string& path, int rate, PcmOutput kind) : out_(path), kind_(kind) {
    if (!is_wav_path(path)) return;
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV |
                  (kind == PcmOutput::Linear ? SF_FORMAT_PCM_16 : kind == PcmOutput::MuLaw ? SF_FORMAT_ULAW : SF_FORMAT_ALAW);
    // libsndfile writes through the checked output file (its virtual I/O).
    static SF_VIRTUAL_IO vio{vio_length, vio_seek, vio_read, vio_write, vio_tell};
    snd_ = sf_open_virtual(&vio, SFM_WRITE, &info, &out_);
    if (snd_ == nullptr) throw ToolError("cannot write '" + path + "': " + sf_strerror(nullptr));
}

PcmWriter::~PcmWriter() {
    if (snd_) sf_close(snd_);
}

void PcmWriter::write(const std::int16_t* pcm, std::size_t n) {
    if (n == 0) return;
    if (kind_ != PcmOutput::Linear) {
        bytes_.assign(pcm, pcm + n);
        if (snd_) {
            if (sf_write_raw(snd_, bytes_.data(), static_cast<sf_count_t>(n)) != static_cast<sf_count_t>(n))
                throw ToolError("writing '" + out_.path() + "' failed: " + errno_text());
        } else {
            out_.write(bytes_.data(), n);
        }
        return;
    }
    if (snd_) {
        if (sf_write_short(snd_, pcm, static_cast<sf_count_t>(n)) != static_cast<sf_count_t>(n))
            throw ToolError("writing '" + out_.path() + "' failed: " + errno_text());
        return;
    }
    if constexpr (std::endian::native == std::endian::little) {
        // s16le is the host's own layout: the samples go out as they lie.
        out_.write(pcm, 2 * n);
        return;
    }
    bytes_.resize(2 * n);
    for (std::size_t i = 0; i < n; ++i) {
        bytes_[2 * i] = static_cast<std::uint8_t>(pcm[i] & 0xff);
        bytes_[2 * i + 1] = static_cast<std::uint8_t>((pcm[i] >> 8) & 0xff);
    }
    out_.write(bytes_.data(), bytes_.size());
}

void PcmWriter::commit() {
    if (snd_) {
        SNDFILE* s = snd_;
        snd_ = nullptr;
        // Closing rewrites the header sizes through the output file.
        if (sf_close(s) != 0) throw ToolError("writing '" + out_.path() + "' failed");
    }
    out_.commit();
}

// ---------------------------------------------------------------- bytes in

FileSource::FileSource(const std::string& path) : path_(path), file_(open_for_reading(path, &size_)) {}

FileSource::~FileSource() { std::fclose(file_); }

std::size_t FileSource::read_some(std::uint8_t* dst, std::size_t n) {
    const std::size_t got = std::fread(dst, 1, n, file_);
    if (got == 0 && std::ferror(file_)) throw ToolError("reading '" + path_ + "' failed: " + errno_text());
    return got;
}

void check_stdout() {
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        const std::string why = errno ? errno_text() : "write error";
        std::clearerr(stdout);
        throw ToolError("writing standard output failed: " + why);
    }
}

}  // namespace zepsc_cli

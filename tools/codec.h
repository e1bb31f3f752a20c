// What a codec command of the zepsc tool is made of.
//
// Every whole codec the tool runs (`zepsc <codec> encode|decode [options] IN OUT`)
// lives in one file under tools/codecs/ that assembles its encoder and
// decoder from the library's public exports alone and registers itself with
//     static const zepsc_cli::CodecRegistration registration{make_spec()};
// The framework (tools/codec.cpp, tools/cmd_codec.cpp) does everything else:
// the command line and --help, reading WAV or raw 16-bit input, the frame
// loop, bitstream files, progress, errors and `zepsc bench`. The tests replay
// the shared streams through encode_all()/decode_all(), the same code the
// commands run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace zepsc_cli {

/// A fault in the input the codec is given (truncated or corrupt bitstream,
/// a value outside the format, a bad option value). The framework prints the
/// message as is and exits with status 1; a codec never aborts otherwise.
struct CodecError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The options given on the command line, by name without the dashes:
/// "mode" -> "2"; a flag ("dtx") maps to "". Only options the codec declared
/// (CodecSpec::options) appear, already checked against their choices.
struct CodecOptions {
    std::map<std::string, std::string> values;
    bool has(const std::string& name) const { return values.count(name) != 0; }
    std::string get(const std::string& name, const std::string& fallback = "") const {
        auto it = values.find(name);
        return it == values.end() ? fallback : it->second;
    }
};

/// Bytes of an input bitstream, read frame by frame.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    /// Reads up to n bytes; returns how many were read (0 only at the end).
    virtual std::size_t read_some(std::uint8_t* dst, std::size_t n) = 0;

    /// Reads exactly n bytes. Returns false when the input ended before the
    /// first of them; throws CodecError("truncated <what>") when it ended
    /// after some but not all.
    bool read_exact(std::uint8_t* dst, std::size_t n, const char* what = "frame");
    /// Reads up to n bytes, stopping early only at the end of the input;
    /// returns how many were read (never throws for a short read).
    std::size_t read_full(std::uint8_t* dst, std::size_t n);
    /// Bytes consumed so far (for messages: "corrupt frame at byte 1234").
    std::uint64_t position() const { return position_; }

protected:
    std::uint64_t position_ = 0;
};

/// A ByteSource over bytes in memory.
class MemorySource final : public ByteSource {
public:
    MemorySource(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    std::size_t read_some(std::uint8_t* dst, std::size_t n) override;

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

/// One direction of a codec, frame by frame, in one bitstream format.
class FrameEncoder {
public:
    virtual ~FrameEncoder() = default;
    /// Sampling rate of the PCM input in Hz (8000, 16000 or 32000).
    virtual int sample_rate() const = 0;
    /// Samples one encode() call takes.
    virtual std::size_t frame_samples() const = 0;
    /// Bytes before the first frame (a file header such as "#!AMR\n").
    virtual void begin(std::vector<std::uint8_t>& out) { (void)out; }
    /// Encodes exactly frame_samples() samples, appending the frame's bytes.
    virtual void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) = 0;
    /// A final partial frame of 0 < samples < frame_samples(): returns false
    /// (the default) to let the framework zero-pad or drop it as
    /// CodecSpec::pad_last_frame says; a sample-based coder encodes exactly
    /// these samples and returns true.
    virtual bool encode_partial(const std::int16_t* pcm, std::size_t samples, std::vector<std::uint8_t>& out) {
        (void)pcm, (void)samples, (void)out;
        return false;
    }
    /// Bytes after the last frame (the final partial byte of a packed
    /// stream, a trailer).
    virtual void end(std::vector<std::uint8_t>& out) { (void)out; }
};

/// What a decoder's output samples are: 16-bit linear PCM, or G.711 code
/// words 0..255 (written as a mu-law / A-law WAV, or one byte a sample).
enum class PcmOutput { Linear, MuLaw, ALaw };

class FrameDecoder {
public:
    virtual ~FrameDecoder() = default;
    /// Sampling rate of the PCM output in Hz.
    virtual int sample_rate() const = 0;
    /// The most samples one decode() call writes.
    virtual std::size_t max_frame_samples() const = 0;
    /// Reads and checks a file header, if the format has one.
    virtual void begin(ByteSource& in) { (void)in; }
    /// Decodes the next frame into pcm and returns the number of samples
    /// written; returns 0 at the clean end of the stream. Throws CodecError
    /// for a truncated or corrupt frame.
    virtual std::size_t decode(ByteSource& in, std::int16_t* pcm) = 0;
    /// What the samples are (linear unless the codec says otherwise).
    virtual PcmOutput output() const { return PcmOutput::Linear; }
};

/// One command-line option of a codec command.
struct OptionSpec {
    std::string name;                  ///< without dashes: "mode"
    std::string help;                  ///< one line for --help
    std::vector<std::string> choices;  ///< allowed values; empty: any value
    std::string default_value;         ///< used when the option is absent ("" = none)
    bool flag = false;                 ///< takes no value (--dtx)
    /// The direction it applies to: both (the default), encode or decode.
    enum class Side { Both, Encode, Decode } side = Side::Both;
};

/// Everything the framework needs to know about a codec.
struct CodecSpec {
    std::string name;     ///< command name: "g729"
    std::string summary;  ///< one line for `zepsc --help`
    std::string help;     ///< further --help text: formats, what each option does
    std::vector<OptionSpec> options;
    /// Bitstream formats, named by file extension in lower case without the
    /// dot ("bit", "g729"); the extension of the bitstream file picks one
    /// (case-insensitively), else --format; the first is the default.
    std::vector<std::string> formats;
    /// A final partial input frame: zero-padded (true) or dropped (false, as
    /// the ITU and 3GPP reference encoders do).
    bool pad_last_frame = false;
    std::function<std::unique_ptr<FrameEncoder>(const CodecOptions&, const std::string& format)> make_encoder;
    std::function<std::unique_ptr<FrameDecoder>(const CodecOptions&, const std::string& format)> make_decoder;
};

/// Registers a codec at start-up (a static object in the codec's file).
struct CodecRegistration {
    explicit CodecRegistration(CodecSpec spec);
};

/// The registered codecs, sorted by name.
const std::vector<CodecSpec>& codec_registry();
/// The codec of that name, or null.
const CodecSpec* find_codec(const std::string& name);
/// The options with each absent option's default filled in.
CodecOptions with_defaults(const CodecSpec& spec, CodecOptions options);

/// The frame loop of `zepsc <codec> encode`, fed block by block (the
/// command streams its input through it; encode_all() feeds it once).
class EncodeLoop {
public:
    EncodeLoop(const CodecSpec& spec, const CodecOptions& options, const std::string& format);
    FrameEncoder& encoder() { return *enc_; }
    /// Encodes the whole frames of the samples given so far, appending bytes.
    void feed(const std::int16_t* pcm, std::size_t samples, std::vector<std::uint8_t>& out);
    /// Encodes what is left of the last frame and the stream's end.
    void finish(std::vector<std::uint8_t>& out);
    std::uint64_t frames() const { return frames_; }

private:
    const CodecSpec& spec_;
    std::unique_ptr<FrameEncoder> enc_;
    std::vector<std::int16_t> held_;  // samples short of a whole frame
    std::uint64_t frames_ = 0;
    bool begun_ = false;
};

/// The frame loop of `zepsc <codec> decode`: one decoder over one source.
class DecodeLoop {
public:
    DecodeLoop(const CodecSpec& spec, const CodecOptions& options, const std::string& format, ByteSource& in);
    FrameDecoder& decoder() { return *dec_; }
    /// Decodes the next frame; returns its samples (empty at the end). The
    /// span stays valid until the next call.
    std::size_t next(const std::int16_t** pcm);
    std::uint64_t frames() const { return frames_; }

private:
    std::unique_ptr<FrameDecoder> dec_;
    ByteSource& in_;
    std::vector<std::int16_t> frame_;
    std::uint64_t frames_ = 0;
};

/// The format a file's extension names (case-insensitive), if the codec has
/// it; else the explicit choice, else the codec's first. Throws CodecError
/// for an explicit format the codec does not have.
std::string pick_format(const CodecSpec& spec, const std::string& path, const std::string& explicit_format);

/// Encodes a whole signal: the frame loop of `zepsc <codec> encode`.
std::vector<std::uint8_t> encode_all(const CodecSpec& spec, const CodecOptions& options, const std::string& format,
                                     const std::int16_t* pcm, std::size_t samples);
/// Decodes a whole bitstream: the frame loop of `zepsc <codec> decode`.
std::vector<std::int16_t> decode_all(const CodecSpec& spec, const CodecOptions& options, const std::string& format,
                                     const std::uint8_t* bits, std::size_t bytes);

}  // namespace zepsc_cli

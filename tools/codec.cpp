// Codec registry and the frame loops shared by the codec commands, the
// tests and `zepsc bench`.
#include "tools/codec.h"

#include <algorithm>

namespace zepsc_cli {

bool ByteSource::read_exact(std::uint8_t* dst, std::size_t n, const char* what) {
    std::size_t got = 0;
    while (got < n) {
        const std::size_t k = read_some(dst + got, n - got);
        if (k == 0) break;
        got += k;
        position_ += k;
    }
    if (got == n) return true;
    if (got == 0) return false;
    throw CodecError("truncated " + std::string(what) + " at byte " + std::to_string(position_ - got) + ": " +
                     std::to_string(got) + " of " + std::to_string(n) + " bytes");
}

std::size_t MemorySource::read_some(std::uint8_t* dst, std::size_t n) {
    const std::size_t k = std::min(n, size_ - at_);
    std::copy(data_ + at_, data_ + at_ + k, dst);
    at_ += k;
    return k;
}

namespace {
std::vector<CodecSpec>& registry() {
    static std::vector<CodecSpec> codecs;
    return codecs;
}
}  // namespace

CodecRegistration::CodecRegistration(CodecSpec spec) {
    auto& codecs = registry();
    codecs.push_back(std::move(spec));
    std::sort(codecs.begin(), codecs.end(), [](const CodecSpec& a, const CodecSpec& b) { return a.name < b.name; });
}

const std::vector<CodecSpec>& codec_registry() { return registry(); }

const CodecSpec* find_codec(const std::string& name) {
    for (const CodecSpec& c : registry())
        if (c.name == name) return &c;
    return nullptr;
}

CodecOptions with_defaults(const CodecSpec& spec, CodecOptions options) {
    for (const OptionSpec& o : spec.options)
        if (!o.flag && !o.default_value.empty() && !options.has(o.name)) options.values[o.name] = o.default_value;
    return options;
}

std::vector<std::uint8_t> encode_all(const CodecSpec& spec, const CodecOptions& options, const std::string& format,
                                     const std::int16_t* pcm, std::size_t samples) {
    auto enc = spec.make_encoder(with_defaults(spec, options), format);
    const std::size_t n = enc->frame_samples();
    std::vector<std::uint8_t> out;
    enc->begin(out);
    std::size_t at = 0;
    for (; at + n <= samples; at += n) enc->encode(pcm + at, out);
    if (at < samples && spec.pad_last_frame) {
        std::vector<std::int16_t> last(n, 0);
        std::copy(pcm + at, pcm + samples, last.begin());
        enc->encode(last.data(), out);
    }
    return out;
}

std::vector<std::int16_t> decode_all(const CodecSpec& spec, const CodecOptions& options, const std::string& format,
                                     const std::uint8_t* bits, std::size_t bytes) {
    auto dec = spec.make_decoder(with_defaults(spec, options), format);
    MemorySource in(bits, bytes);
    dec->begin(in);
    std::vector<std::int16_t> out, frame(dec->max_frame_samples());
    for (;;) {
        const std::size_t k = dec->decode(in, frame.data());
        if (k == 0) break;
        out.insert(out.end(), frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(k));
    }
    return out;
}

}  // namespace zepsc_cli

// Codec registry and the frame loops shared by the codec commands, the
// tests and `zepsc bench`.
#include "tools/codec.h"

#include <algorithm>
#include <cctype>

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

std::size_t ByteSource::read_full(std::uint8_t* dst, std::size_t n) {
    std::size_t got = 0;
    while (got < n) {
        const std::size_t k = read_some(dst + got, n - got);
        if (k == 0) break;
        got += k;
    }
    position_ += got;
    return got;
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

EncodeLoop::EncodeLoop(const CodecSpec& spec, const CodecOptions& options, const std::string& format)
    : spec_(spec), enc_(spec.make_encoder(with_defaults(spec, options), format)) {}

void EncodeLoop::feed(const std::int16_t* pcm, std::size_t samples, std::vector<std::uint8_t>& out) {
    const std::size_t n = enc_->frame_samples();
    if (!begun_) enc_->begin(out), begun_ = true;
    if (!held_.empty()) {
        const std::size_t k = std::min(n - held_.size(), samples);
        held_.insert(held_.end(), pcm, pcm + k);
        pcm += k;
        samples -= k;
        if (held_.size() < n) return;
        enc_->encode(held_.data(), out);
        ++frames_;
        held_.clear();
    }
    std::size_t at = 0;
    for (; at + n <= samples; at += n, ++frames_) enc_->encode(pcm + at, out);
    held_.assign(pcm + at, pcm + samples);
}

void EncodeLoop::finish(std::vector<std::uint8_t>& out) {
    if (!begun_) enc_->begin(out), begun_ = true;
    if (!held_.empty() && !enc_->encode_partial(held_.data(), held_.size(), out) && spec_.pad_last_frame) {
        held_.resize(enc_->frame_samples(), 0);
        enc_->encode(held_.data(), out);
        ++frames_;
    }
    held_.clear();
    enc_->end(out);
}

DecodeLoop::DecodeLoop(const CodecSpec& spec, const CodecOptions& options, const std::string& format, ByteSource& in)
    : dec_(spec.make_decoder(with_defaults(spec, options), format)), in_(in) {
    frame_.resize(dec_->max_frame_samples());
    dec_->begin(in_);
}

std::size_t DecodeLoop::next(const std::int16_t** pcm) {
    const std::size_t k = dec_->decode(in_, frame_.data());
    if (k > frame_.size()) throw CodecError("decoder wrote " + std::to_string(k) + " samples into a frame of " +
                                            std::to_string(frame_.size()));
    if (k) ++frames_;
    *pcm = frame_.data();
    return k;
}

std::string pick_format(const CodecSpec& spec, const std::string& path, const std::string& explicit_format) {
    auto known = [&](const std::string& f) { return std::find(spec.formats.begin(), spec.formats.end(), f) != spec.formats.end(); };
    if (!explicit_format.empty()) {
        if (known(explicit_format)) return explicit_format;
        std::string list;
        for (const std::string& f : spec.formats) list += (list.empty() ? "" : ", ") + f;
        throw CodecError(spec.name + " has no bitstream format '" + explicit_format + "' (it has " + list + ")");
    }
    const std::size_t slash = path.find_last_of('/'), dot = path.find_last_of('.');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) {
        std::string ext = path.substr(dot + 1);
        for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (known(ext)) return ext;
    }
    if (spec.formats.empty()) throw CodecError(spec.name + " declares no bitstream format");
    return spec.formats.front();
}

std::vector<std::uint8_t> encode_all(const CodecSpec& spec, const CodecOptions& options, const std::string& format,
                                     const std::int16_t* pcm, std::size_t samples) {
    EncodeLoop loop(spec, options, format);
    std::vector<std::uint8_t> out;
    loop.feed(pcm, samples, out);
    loop.finish(out);
    return out;
}

std::vector<std::int16_t> decode_all(const CodecSpec& spec, const CodecOptions& options, const std::string& format,
                                     const std::uint8_t* bits, std::size_t bytes) {
    MemorySource in(bits, bytes);
    DecodeLoop loop(spec, options, format, in);
    std::vector<std::int16_t> out;
    const std::int16_t* pcm = nullptr;
    while (const std::size_t k = loop.next(&pcm)) out.insert(out.end(), pcm, pcm + k);
    return out;
}

}  // namespace zepsc_cli

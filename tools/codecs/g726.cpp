// G.726 ADPCM (ITU-T G.726) for `zepsc g726 encode|decode`, from the public
// exports zepsEncode_G726_16s8u / zepsDecode_G726_8u16s.
//
// Signals: 8 kHz mono. The encoder takes 16-bit PCM and gives the coder its
// 14-bit linear input SL (sample >> 2); the linear decoder output is the
// 14-bit SR shifted left by 2; with --law mulaw|alaw the decoder writes the
// G.711 code words after the synchronous coding adjustment (ITU-T G.726
// 4.2.8), as a G.711 WAV or one byte a sample.
//
// Bitstream formats (one "frame" is 80 codes, 10 ms; the coder itself works
// sample by sample, so a stream may end on any sample):
//   g726  one code a byte, right-aligned; or with --packed, codes packed
//         least significant bits first (RFC 3551 4.5.4), 80 codes filling
//         10 x bits bytes exactly.
//   itu   one code a 16-bit little-endian word, as the ITU-T G.726 digital
//         test sequences store them.
//
// The last byte of a packed stream: N codes of b bits take ceil(N b / 8)
// bytes; the encoder completes the last byte with zero bits. Those bits
// cannot be told from codes by their value alone, so the decoder uses what
// G.726 guarantees: at 24, 32 and 40 kbit/s its quantiser never sends the
// all-zero code (ITU-T G.726 4.2.3, Tables 2 to 4), so zero codes that lie
// wholly in the last byte are padding and are dropped, and bits short of a
// whole code must be zero (else: corrupt stream or wrong --rate). At 16
// kbit/s all four codes occur: a packed stream whose length is not a whole
// number of bytes of codes decodes to 1 to 3 more samples than were encoded
// unless --samples N gives the count; the encoder says so when it pads.
// Packed streams of arbitrary codes (not from an encoder) that end in a zero
// code need --samples too.
//
// What is detected: in one-code-a-byte and ITU input a code wider than the
// rate's code width (a wrong --rate or a packed stream read as unpacked);
// nonzero padding bits; a truncated ITU word. A wrong --rate on a packed
// stream otherwise decodes without error: the format carries no rate.
#include <algorithm>
#include <cstdio>
#include <string>

#include "tools/codec.h"
#include "zepsc.h"

namespace zepsc_cli {
namespace {

constexpr std::size_t kFrame = 80;

struct Rate {
    const char* kbps;
    Zep32s code;
    int bits;
};
constexpr Rate kRates[] = {{"16", zepRateG726_16, 2}, {"24", zepRateG726_24, 3}, {"32", zepRateG726_32, 4}, {"40", zepRateG726_40, 5}};

const Rate& rate_of(const CodecOptions& o) {
    const std::string r = o.get("rate", "32");
    for (const Rate& k : kRates)
        if (r == k.kbps) return k;
    throw CodecError("--rate takes 16, 24, 32 or 40, not '" + r + "'");
}

enum class Layout { Bytes, Packed, Words };

Layout layout_of(const CodecOptions& o, const std::string& format) {
    if (format == "itu") {
        if (o.has("packed")) throw CodecError("--packed applies to the g726 format, not to itu");
        return Layout::Words;
    }
    return o.has("packed") ? Layout::Packed : Layout::Bytes;
}

std::vector<Zep8u> new_state(ZepStatus (*size_of)(Zep32s*)) {
    Zep32s size = 0;
    size_of(&size);
    return std::vector<Zep8u>(static_cast<std::size_t>(size));
}

void check(ZepStatus s, const char* what) {
    if (s != zepStsNoErr) throw CodecError(std::string(what) + " failed with status " + std::to_string(s));
}

// ---------------------------------------------------------------- encoder

class Encoder final : public FrameEncoder {
public:
    Encoder(const Rate& rate, Layout layout) : rate_(rate), layout_(layout), state_(new_state(zepsEncodeGetStateSize_G726_16s8u)) {
        check(zepsEncodeInit_G726_16s8u(st(), rate.code), "G.726 encoder initialisation");
    }
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return kFrame; }
    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override { code(pcm, kFrame, out); }
    bool encode_partial(const std::int16_t* pcm, std::size_t samples, std::vector<std::uint8_t>& out) override {
        code(pcm, samples, out);
        return true;
    }
    void end(std::vector<std::uint8_t>& out) override {
        if (have_ == 0) return;
        out.push_back(static_cast<std::uint8_t>(acc_));
        if (rate_.bits == 2 && have_ <= 6)
            std::fprintf(stderr, "zepsc: note: the last byte of this 16 kbit/s packed stream holds %d padding bits; "
                                 "decode it with --samples %llu\n",
                         8 - have_, static_cast<unsigned long long>(samples_));
        acc_ = 0;
        have_ = 0;
    }

private:
    ZepG726EncodeState* st() { return reinterpret_cast<ZepG726EncodeState*>(state_.data()); }

    void code(const std::int16_t* pcm, std::size_t n, std::vector<std::uint8_t>& out) {
        Zep16s in[kFrame] = {};
        Zep8u codes[kFrame] = {};
        for (std::size_t i = 0; i < n; ++i) in[i] = static_cast<Zep16s>(pcm[i] >> 2);
        check(zepsEncode_G726_16s8u(st(), in, codes, static_cast<Zep32s>(n)), "G.726 encoder");
        samples_ += n;
        for (std::size_t i = 0; i < n; ++i) put(codes[i], out);
    }

    void put(Zep8u c, std::vector<std::uint8_t>& out) {
        switch (layout_) {
            case Layout::Bytes: out.push_back(c); break;
            case Layout::Words:
                out.push_back(c);
                out.push_back(0);
                break;
            case Layout::Packed:
                acc_ |= static_cast<unsigned>(c) << have_;
                have_ += rate_.bits;
                while (have_ >= 8) {
                    out.push_back(static_cast<std::uint8_t>(acc_ & 0xff));
                    acc_ >>= 8;
                    have_ -= 8;
                }
                break;
        }
    }

    const Rate& rate_;
    Layout layout_;
    std::vector<Zep8u> state_;
    unsigned acc_ = 0;
    int have_ = 0;
    std::uint64_t samples_ = 0;
};

// ---------------------------------------------------------------- decoder

class Decoder final : public FrameDecoder {
public:
    Decoder(const Rate& rate, Layout layout, int law, long long limit)
        : rate_(rate), layout_(layout), law_(law), limit_(limit), state_(new_state(zepsDecodeGetStateSize_G726_8u16s)) {
        check(zepsDecodeInit_G726_8u16s(st(), rate.code, law), "G.726 decoder initialisation");
    }
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }
    PcmOutput output() const override { return law_ == 0 ? PcmOutput::MuLaw : law_ == 1 ? PcmOutput::ALaw : PcmOutput::Linear; }

    std::size_t decode(ByteSource& in, std::int16_t* pcm) override {
        Zep8u codes[kFrame] = {};
        std::size_t n = layout_ == Layout::Packed ? unpack_next(in, codes) : read_codes(in, codes);
        if (limit_ >= 0) {
            if (n == 0 && done_ < static_cast<unsigned long long>(limit_))
                throw CodecError("the stream holds " + std::to_string(done_) + " samples, fewer than --samples " +
                                 std::to_string(limit_));
            n = static_cast<std::size_t>(std::min<unsigned long long>(n, static_cast<unsigned long long>(limit_) - done_));
        }
        if (n == 0) return 0;
        Zep16s out[kFrame] = {};
        check(zepsDecode_G726_8u16s(st(), codes, out, static_cast<Zep32s>(n)), "G.726 decoder");
        for (std::size_t i = 0; i < n; ++i) pcm[i] = law_ == 2 ? static_cast<std::int16_t>(out[i] * 4) : out[i];
        done_ += n;
        return n;
    }

private:
    ZepG726DecodeState* st() { return reinterpret_cast<ZepG726DecodeState*>(state_.data()); }

    [[noreturn]] void too_wide(unsigned code, std::uint64_t at) const {
        char hex[8];
        std::snprintf(hex, sizeof hex, "0x%02x", code);
        throw CodecError("code " + std::string(hex) + " at byte " + std::to_string(at) + " is wider than the " +
                         std::to_string(rate_.bits) + "-bit codes of " + rate_.kbps +
                         " kbit/s: wrong --rate, or a packed stream (--packed)?");
    }

    // One code a byte or a 16-bit word.
    std::size_t read_codes(ByteSource& in, Zep8u* codes) {
        const std::size_t width = layout_ == Layout::Words ? 2 : 1;
        std::uint8_t raw[2 * kFrame];
        const std::uint64_t at = in.position();
        const std::size_t got = in.read_full(raw, width * kFrame);
        if (got % width != 0) throw CodecError("truncated stream: it ends in half a 16-bit code word");
        const unsigned top = 1u << rate_.bits;
        const std::size_t n = got / width;
        for (std::size_t i = 0; i < n; ++i) {
            const unsigned c = width == 2 ? raw[2 * i] | (raw[2 * i + 1] << 8) : raw[i];
            if (c >= top) too_wide(c, at + width * i);
            codes[i] = static_cast<Zep8u>(c);
        }
        return n;
    }

    // Packed codes: 80 a frame; the last frame with the padding rules above.
    std::size_t unpack_next(ByteSource& in, Zep8u* codes) {
        const std::size_t frame_bytes = kFrame * static_cast<std::size_t>(rate_.bits) / 8;
        // One byte of look-ahead tells the last frame from the others.
        std::uint8_t buf[5 * kFrame / 8 + 1];
        std::copy(pending_.begin(), pending_.end(), buf);
        const std::size_t have = pending_.size() + in.read_full(buf + pending_.size(), frame_bytes + 1 - pending_.size());
        const bool last = have <= frame_bytes;
        const std::size_t bytes = last ? have : frame_bytes;
        pending_.assign(buf + bytes, buf + have);
        const int b = rate_.bits;
        std::size_t n = bytes * 8 / static_cast<std::size_t>(b);
        unsigned acc = 0;
        int held = 0;
        std::size_t k = 0, at = 0;
        while (k < n) {
            while (held < b) acc |= static_cast<unsigned>(buf[at++]) << held, held += 8;
            codes[k++] = static_cast<Zep8u>(acc & ((1u << b) - 1));
            acc >>= b;
            held -= b;
        }
        if (!last) return n;
        if (held > 0 && (acc & ((1u << held) - 1)) != 0)
            throw CodecError("corrupt packed stream: the padding bits of its last byte are not zero (wrong --rate?)");
        // Zero codes wholly inside the last byte are padding at 24, 32 and 40 kbit/s.
        if (b > 2 && limit_ < 0)
            while (n > 0 && codes[n - 1] == 0 && (n - 1) * static_cast<std::size_t>(b) >= (bytes - 1) * 8) --n;
        return n;
    }

    const Rate& rate_;
    Layout layout_;
    int law_;
    long long limit_;
    std::vector<Zep8u> state_;
    std::vector<std::uint8_t> pending_;
    unsigned long long done_ = 0;
};

long long samples_limit(const CodecOptions& o) {
    if (!o.has("samples")) return -1;
    const std::string v = o.get("samples");
    if (v.empty() || v.size() > 15 || v.find_first_not_of("0123456789") != std::string::npos)
        throw CodecError("--samples takes a count of samples, not '" + v + "'");
    return std::stoll(v);
}

CodecSpec make_spec() {
    CodecSpec s;
    s.name = "g726";
    s.summary = "G.726 ADPCM at 16, 24, 32 or 40 kbit/s";
    s.help =
        "ITU-T G.726 ADPCM, 8 kHz. encode: the 16-bit samples are shifted right by 2 to the\n"
        "coder's 14-bit input. decode: --law linear (default) writes 16-bit PCM (the 14-bit\n"
        "output shifted left by 2); mulaw/alaw write the G.711 code words of the decoder's\n"
        "synchronous coding adjustment (a G.711 WAV, or one byte a sample when raw).\n"
        "Formats: g726 (one code a byte; --packed: codes packed least significant bits\n"
        "first, RFC 3551) and itu (one code a 16-bit little-endian word, as the ITU-T test\n"
        "sequences). A code wider than the rate's code width is an error (wrong --rate?).\n"
        "Packed streams: the encoder completes the last byte with zero bits; at 24, 32 and\n"
        "40 kbit/s the decoder drops them (G.726 never sends the all-zero code at these\n"
        "rates); at 16 kbit/s pass --samples N to drop up to 3 padding codes.";
    s.options = {
        {"rate", "bit rate in kbit/s", {"16", "24", "32", "40"}, "32", false, OptionSpec::Side::Both},
        {"packed", "codes packed into bytes (g726 format)", {}, "", true, OptionSpec::Side::Both},
        {"law", "decoder output: linear PCM or G.711 codes", {"linear", "mulaw", "alaw"}, "linear", false,
         OptionSpec::Side::Decode},
        {"samples", "decode exactly N samples (the count of a packed 16 kbit/s stream)", {}, "", false,
         OptionSpec::Side::Decode},
    };
    s.formats = {"g726", "itu"};
    s.pad_last_frame = false;
    s.make_encoder = [](const CodecOptions& o, const std::string& format) -> std::unique_ptr<FrameEncoder> {
        if (o.has("law") && o.get("law") != "linear") throw CodecError("--law applies to decode only");
        return std::make_unique<Encoder>(rate_of(o), layout_of(o, format));
    };
    s.make_decoder = [](const CodecOptions& o, const std::string& format) -> std::unique_ptr<FrameDecoder> {
        const std::string law = o.get("law", "linear");
        const int code = law == "mulaw" ? 0 : law == "alaw" ? 1 : law == "linear" ? 2 : -1;
        if (code < 0) throw CodecError("--law takes linear, mulaw or alaw, not '" + law + "'");
        return std::make_unique<Decoder>(rate_of(o), layout_of(o, format), code, samples_limit(o));
    };
    return s;
}

const CodecRegistration registration{make_spec()};

}  // namespace
}  // namespace zepsc_cli

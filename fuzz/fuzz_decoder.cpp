// libFuzzer driver for the bitstream decoders of the codec commands: one
// target "decode.<codec>.<format>" per format of every codec registered with
// the tool's framework (tools/codec.h), so a codec file under tools/codecs/
// is fuzzed as soon as it exists, without a line here. ZEPS_FUZZ_TARGET picks
// the target, ZEPS_FUZZ_LIST=1 lists them, ZEPS_FUZZ_SEEDS=<dir> writes seed
// bitstreams (each codec's encoder on pieces of the speech files in
// <dir>/<target>/, from the folder named by ZEPS_SHARED_DIR).
//
// An input is a bitstream (its start) and the choice of the codec's options
// (its last bytes). It is decoded to the end on both processor builds; each
// decode must end cleanly or with CodecError (the documented refusal of a
// truncated or corrupt stream), never write more samples than the decoder
// announces, and both builds must give the same samples and the same
// outcome.
//
// Both builds in one process: this program links the two builds'
// implementations (zeps::u8::, zeps::n8::) and the library's own forwarding
// entries and dispatch table (frame/entries.S, frame/dispatch.cpp), and
// defines the variant index those entries read; the codec files call the
// public C exports, which run the build the index names.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tools/codec.h"
#include "zepsc.h"

extern "C" {
/// Build whose implementation every export runs (0 u8, 1 n8): read by the
/// forwarding entries.
__attribute__((visibility("hidden"))) std::int32_t zeps_variant = 0;
}

using namespace zepsc_cli;

namespace {

// ---------------------------------------------------------------- a model codec
// A G.726 decoder over the public exports, one 2-5 bit code per byte, in the
// shape of a codec file: it proves the driver until the tool's codecs land,
// and stays as the driver's self-test.
class G726Bytes final : public FrameDecoder {
public:
    explicit G726Bytes(int kbits) : bits_(kbits / 8) {
        Zep32s size = 0;
        zepsDecodeGetStateSize_G726_8u16s(&size);
        state_.resize(static_cast<std::size_t>(size));
        if (zepsDecodeInit_G726_8u16s(state(), kbits == 16 ? 17 : kbits == 24 ? 22 : kbits == 32 ? 23 : 24, 2) != 0)
            throw CodecError("cannot initialise the decoder");
    }
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }
    std::size_t decode(ByteSource& in, std::int16_t* pcm) override {
        std::uint8_t codes[kFrame];
        std::size_t n = 0;
        while (n < kFrame) {
            const std::size_t k = in.read_some(codes + n, kFrame - n);
            if (k == 0) break;
            n += k;
        }
        for (std::size_t i = 0; i < n; ++i)
            if (codes[i] >> bits_) throw CodecError("code " + std::to_string(codes[i]) + " above the code width");
        if (n && zepsDecode_G726_8u16s(state(), codes, pcm, static_cast<Zep32s>(n)) != 0)
            throw CodecError("decoder refused the frame");
        return n;
    }

private:
    static constexpr std::size_t kFrame = 80;
    ZepG726DecodeState* state() { return reinterpret_cast<ZepG726DecodeState*>(state_.data()); }
    int bits_;
    std::vector<std::uint8_t> state_;
};

class G726BytesEncoder final : public FrameEncoder {
public:
    explicit G726BytesEncoder(int kbits) {
        Zep32s size = 0;
        zepsEncodeGetStateSize_G726_16s8u(&size);
        state_.resize(static_cast<std::size_t>(size));
        zepsEncodeInit_G726_16s8u(state(), kbits == 16 ? 17 : kbits == 24 ? 22 : kbits == 32 ? 23 : 24);
    }
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return 80; }
    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        std::int16_t x[80];
        for (int i = 0; i < 80; ++i) x[i] = static_cast<std::int16_t>(pcm[i] >> 2);
        const std::size_t at = out.size();
        out.resize(at + 80);
        zepsEncode_G726_16s8u(state(), x, out.data() + at, 80);
    }

private:
    ZepG726EncodeState* state() { return reinterpret_cast<ZepG726EncodeState*>(state_.data()); }
    std::vector<std::uint8_t> state_;
};

CodecSpec g726_bytes_spec() {
    CodecSpec s;
    s.name = "selftest-g726";
    s.summary = "G.726, one code per byte (fuzz driver self-test)";
    s.options = {{"rate", "kbit/s", {"16", "24", "32", "40"}, "32", false}};
    s.formats = {"bytes"};
    s.make_encoder = [](const CodecOptions& o, const std::string&) {
        return std::make_unique<G726BytesEncoder>(std::stoi(o.get("rate", "32")));
    };
    s.make_decoder = [](const CodecOptions& o, const std::string&) {
        return std::make_unique<G726Bytes>(std::stoi(o.get("rate", "32")));
    };
    return s;
}
const CodecRegistration g726_bytes{g726_bytes_spec()};

// ---------------------------------------------------------------- the driver
struct Target {
    const CodecSpec* codec;
    std::string format;
    std::string name() const { return "decode." + codec->name + "." + format; }
};

std::vector<Target> targets() {
    std::vector<Target> t;
    for (const CodecSpec& c : codec_registry())
        if (c.make_decoder)
            for (const std::string& f : c.formats) t.push_back({&c, f});
    return t;
}

Target g_target{};

/// Options from the input's last bytes: each option with choices takes one,
/// each flag is on or off. Returns the bytes left for the bitstream.
std::size_t choose_options(const CodecSpec& c, const std::uint8_t* d, std::size_t n, CodecOptions& o) {
    for (const OptionSpec& opt : c.options) {
        if (!opt.flag && opt.choices.empty()) continue;
        const std::uint8_t b = n ? d[--n] : 0;
        if (opt.flag) {
            if (b & 1) o.values[opt.name] = "";
        } else {
            o.values[opt.name] = opt.choices[b % opt.choices.size()];
        }
    }
    return n;
}

/// What one build made of a bitstream.
struct Outcome {
    std::vector<std::int16_t> pcm;
    std::string refusal;  // CodecError message, empty when the stream ended cleanly
};

Outcome decode_on(int build, const Target& t, const CodecOptions& o, const std::uint8_t* bits, std::size_t n) {
    zeps_variant = build;
    Outcome r;
    try {
        auto dec = t.codec->make_decoder(with_defaults(*t.codec, o), t.format);
        MemorySource in(bits, n);
        dec->begin(in);
        // Exactly as long as the decoder announces: a longer write meets the sanitizer.
        std::vector<std::int16_t> frame(dec->max_frame_samples());
        for (std::size_t frames = 0; frames <= n + 1; ++frames) {
            const std::size_t k = dec->decode(in, frame.data());
            if (k == 0) return r;
            if (k > frame.size()) {
                std::fprintf(stderr, "\n*** %s: decode() reported %zu samples, at most %zu announced\n",
                             t.name().c_str(), k, frame.size());
                std::abort();
            }
            r.pcm.insert(r.pcm.end(), frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(k));
        }
        std::fprintf(stderr, "\n*** %s: more frames than input bytes (the decoder does not end)\n", t.name().c_str());
        std::abort();
    } catch (const CodecError& e) {
        r.refusal = e.what();
        if (r.refusal.empty()) r.refusal = "(empty message)";
    }
    return r;
}

/// ZEPS_FUZZ_SEEDS: each codec's encoder on 0.5 s pieces of every speech file.
void write_seeds(const char* dir) {
    const char* env = std::getenv("ZEPS_SHARED_DIR");
    const std::filesystem::path speech = std::filesystem::path(env && *env ? env : ZEPS_SHARED_DIR) / "speech";
    std::error_code ec;
    for (const Target& t : targets()) {
        const std::filesystem::path out = std::filesystem::path(dir) / t.name();
        std::filesystem::create_directories(out);
        if (!t.codec->make_encoder) continue;
        for (const auto& e : std::filesystem::directory_iterator(speech, ec)) {
            std::ifstream f(e.path(), std::ios::binary);
            std::vector<char> raw((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
            std::vector<std::int16_t> pcm(raw.size() / 2);
            std::memcpy(pcm.data(), raw.data(), pcm.size() * 2);
            const std::size_t piece = 4000, at = pcm.size() > 3 * piece ? pcm.size() / 3 : 0;
            if (pcm.size() < at + piece) continue;
            try {
                const auto bits = encode_all(*t.codec, {}, t.format, pcm.data() + at, piece);
                std::ofstream(out / e.path().stem(), std::ios::binary)
                    .write(reinterpret_cast<const char*>(bits.data()), static_cast<std::streamsize>(bits.size()));
            } catch (const std::exception&) {
                // an encoder that cannot run on this piece (sampling rate): no seed
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (std::getenv("ZEPS_FUZZ_LIST")) {
        for (const Target& t : targets()) std::printf("%s\n", t.name().c_str());
        std::exit(0);
    }
    if (const char* dir = std::getenv("ZEPS_FUZZ_SEEDS")) {
        write_seeds(dir);
        std::exit(0);
    }
    // The public exports must follow the variant index, or both runs would
    // compare one build with itself.
    for (int build : {0, 1}) {
        zeps_variant = build;
        if (std::strcmp(zepscGetLibVersion()->targetCpu, build ? "n8" : "u8") != 0) {
            std::fprintf(stderr, "the exports do not follow the variant index\n");
            std::exit(2);
        }
    }
    const char* want = std::getenv("ZEPS_FUZZ_TARGET");
    for (const Target& t : targets())
        if (want && t.name() == want) g_target = t;
    if (!g_target.codec) {
        std::fprintf(stderr, "set ZEPS_FUZZ_TARGET to a decoder target (ZEPS_FUZZ_LIST=1 lists them)\n");
        std::exit(2);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CodecOptions o;
    const std::size_t n = choose_options(*g_target.codec, data, size, o);
    const Outcome a = decode_on(0, g_target, o, data, n);
    const Outcome b = decode_on(1, g_target, o, data, n);
    if (a.pcm != b.pcm || a.refusal != b.refusal) {
        std::fprintf(stderr, "\n*** %s: the builds differ (%zu vs %zu samples; refusals '%s' vs '%s')\n",
                     g_target.name().c_str(), a.pcm.size(), b.pcm.size(), a.refusal.c_str(), b.refusal.c_str());
        std::abort();
    }
    return 0;
}

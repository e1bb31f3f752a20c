// G.726 through the tool's codec (tools/codecs/g726.cpp): the ITU-T G.726
// digital test sequences (reset versions) replayed through encode_all and
// decode_all in the codec's "itu" format (one code a 16-bit word), then the
// packed format's last byte and the decoder's checks on corrupt streams.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "tests/codecs/codec_replay.h"

namespace zeps::codec_test {
namespace {

using zepsc_cli::CodecError;
using zepsc_cli::CodecOptions;

CodecOptions opts(const std::string& kbps, const std::string& law = "linear", bool packed = false) {
    CodecOptions o;
    o.values["rate"] = kbps;
    o.values["law"] = law;
    if (packed) o.values["packed"] = "";
    return o;
}

// ITU-T G.711 expansion of a code word to 16-bit linear (mu-law: -32124 for
// code 0; A-law as on the line, even bits inverted: -5504 for code 0). The
// codec shifts it right by 2: the 14-bit value G.726 takes as SL.
std::int16_t mulaw_to_linear(unsigned code) {
    const unsigned u = ~code & 0xff;
    int t = static_cast<int>(((u & 0x0f) << 3) + 0x84) << ((u & 0x70) >> 4);
    return static_cast<std::int16_t>((u & 0x80) ? 0x84 - t : t - 0x84);
}

std::int16_t alaw_to_linear(unsigned code) {
    const unsigned a = (code ^ 0x55) & 0xff;
    const int seg = static_cast<int>((a & 0x70) >> 4);
    int t = static_cast<int>((a & 0x0f) << 4);
    t = seg == 0 ? t + 8 : (t + 0x108) << (seg - 1);
    return static_cast<std::int16_t>((a & 0x80) ? t : -t);
}

std::vector<std::uint8_t> as_bytes(const std::vector<std::int16_t>& words) {
    std::vector<std::uint8_t> b;
    for (std::int16_t w : words) b.push_back(static_cast<std::uint8_t>(w & 0xff)), b.push_back(static_cast<std::uint8_t>((w >> 8) & 0xff));
    return b;
}

std::string itu_dir() { return shared_dir() + "/vectors/g726/itu"; }

// Encoder: r{n,v}RRf{a,m}.i are the codes of nrm.{a,m} / ovr.{a,m}.
// Decoder: r{n,v}RRf{a,x}.o decode r?RRfa.i, r{n,v}RRf{m,c}.o decode
// r?RRfm.i, riRRf{a,m}.o decode iRR; a and c give A-law, m and x mu-law.
TEST(G726, ItuSequencesReplay) {
    const zepsc_cli::CodecSpec& g726 = codec("g726");
    const std::regex enc_name("r([nv])(16|24|32|40)f([am])\\.i"), dec_name("r([nvi])(16|24|32|40)f([amxc])\\.o");
    int encoded = 0, decoded = 0;
    for (const auto& entry : std::filesystem::directory_iterator(itu_dir())) {
        const std::string name = entry.path().filename().string();
        std::smatch m;
        if (std::regex_match(name, m, enc_name)) {
            const std::string input = itu_dir() + (m[1] == "n" ? "/nrm." : "/ovr.") + m[3].str();
            std::vector<std::int16_t> pcm = read_pcm(input);
            for (std::int16_t& s : pcm) s = m[3] == "a" ? alaw_to_linear(static_cast<unsigned>(s)) : mulaw_to_linear(static_cast<unsigned>(s));
            const auto bits = zepsc_cli::encode_all(g726, opts(m[2]), "itu", pcm.data(), pcm.size());
            expect_same_bytes(bits, read_bytes(entry.path().string()), 160, name);
            ++encoded;
        } else if (std::regex_match(name, m, dec_name)) {
            const std::string f = m[3];
            const std::string input = m[1] == "i" ? itu_dir() + "/i" + m[2].str()
                                                  : itu_dir() + "/r" + m[1].str() + m[2].str() +
                                                        (f == "a" || f == "x" ? "fa.i" : "fm.i");
            const std::string law = f == "a" || f == "c" ? "alaw" : "mulaw";
            const auto bits = read_bytes(input);
            const auto out = zepsc_cli::decode_all(g726, opts(m[2], law), "itu", bits.data(), bits.size());
            expect_same_bytes(as_bytes(out), read_bytes(entry.path().string()), 160, name);
            ++decoded;
        }
    }
    EXPECT_GT(encoded, 0) << "no encoder sequence in " << itu_dir();
    EXPECT_GT(decoded, 0) << "no decoder sequence in " << itu_dir();
}

// A packed stream decodes to exactly the samples encoded, whatever the
// padding of its last byte (24, 32, 40 kbit/s by G.726's zero-code rule, 16
// kbit/s with the count given), and to the same samples as unpacked codes.
TEST(G726, PackedStreamsDecodeToTheSamplesEncoded) {
    const zepsc_cli::CodecSpec& g726 = codec("g726");
    const std::vector<std::int16_t> speech = read_pcm(shared_dir() + "/speech/female.s16");
    ASSERT_GE(speech.size(), 400u);
    for (const char* kbps : {"16", "24", "32", "40"})
        for (std::size_t n : {1, 2, 3, 7, 8, 9, 79, 80, 81, 100, 101, 160, 163, 397}) {
            SCOPED_TRACE(std::string(kbps) + " kbit/s, " + std::to_string(n) + " samples");
            const std::size_t from = 12000;  // voiced speech
            const auto unpacked = zepsc_cli::encode_all(g726, opts(kbps), "g726", &speech[from], n);
            const auto want = zepsc_cli::decode_all(g726, opts(kbps), "g726", unpacked.data(), unpacked.size());
            ASSERT_EQ(want.size(), n);
            const auto packed = zepsc_cli::encode_all(g726, opts(kbps, "linear", true), "g726", &speech[from], n);
            const int bits = std::string(kbps) == "16" ? 2 : std::string(kbps) == "24" ? 3 : std::string(kbps) == "32" ? 4 : 5;
            EXPECT_EQ(packed.size(), (n * static_cast<std::size_t>(bits) + 7) / 8);
            CodecOptions o = opts(kbps, "linear", true);
            if (std::string(kbps) == "16") o.values["samples"] = std::to_string(n);
            EXPECT_EQ(zepsc_cli::decode_all(g726, o, "g726", packed.data(), packed.size()), want);
        }
}

// Corrupt or mismatched streams: an error, never a silent decode.
TEST(G726, CorruptStreamsAreRefused) {
    const zepsc_cli::CodecSpec& g726 = codec("g726");
    struct Case {
        const char* what;
        CodecOptions options;
        const char* format;
        std::vector<std::uint8_t> bytes;
        const char* message;
    };
    CodecOptions sixteen_of_ten = opts("16", "linear", true);
    sixteen_of_ten.values["samples"] = "10";
    const std::vector<Case> cases = {
        {"40 kbit/s code read at 32", opts("32"), "g726", {3, 15, 31, 2}, "code 0x1f at byte 2 is wider than the 4-bit"},
        {"packed bytes read as codes", opts("24"), "g726", {7, 8}, "code 0x08 at byte 1 is wider than the 3-bit"},
        {"word above the code width", opts("16"), "itu", {1, 0, 0, 1}, "code 0x100 at byte 2 is wider than the 2-bit"},
        {"half a word", opts("40"), "itu", {1, 0, 2}, "ends in half a 16-bit code word"},
        {"nonzero padding bits", opts("24", "linear", true), "g726", {0xff, 0xff, 0xff, 0x80}, "padding bits of its last byte"},
        {"fewer codes than --samples", sixteen_of_ten, "g726", {0x55, 0x55}, "holds 8 samples, fewer than --samples 10"},
    };
    for (const Case& c : cases) {
        try {
            zepsc_cli::decode_all(g726, c.options, c.format, c.bytes.data(), c.bytes.size());
            ADD_FAILURE() << c.what << ": decoded without an error";
        } catch (const CodecError& e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << c.what << ": " << e.what();
        }
    }
}

}  // namespace
}  // namespace zeps::codec_test

// GSM full rate through `zepsc gsmfr`: every shared stream (encoder against
// the .gsm and .cod bitstreams, decoder against the decoded speech) and the
// ETSI GSM 06.10 test sequences, byte for byte; corrupt bitstreams give a
// CodecError.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/codecs/codec_replay.h"

namespace zeps::codec_test {
namespace {

namespace fs = std::filesystem;
using zepsc_cli::CodecError;
using zepsc_cli::CodecOptions;

const std::string kDir = shared_dir() + "/codecs/gsmfr";

std::vector<std::uint8_t> encode(const std::vector<std::int16_t>& pcm, const std::string& format) {
    return zepsc_cli::encode_all(codec("gsmfr"), CodecOptions{}, format, pcm.data(), pcm.size());
}
std::vector<std::int16_t> decode(const std::vector<std::uint8_t>& bits, const std::string& format) {
    return zepsc_cli::decode_all(codec("gsmfr"), CodecOptions{}, format, bits.data(), bits.size());
}

/// Names (without extension) of the files of a folder with that extension.
std::vector<std::string> stems(const std::string& dir, const std::string& ext) {
    std::vector<std::string> out;
    for (const auto& e : fs::directory_iterator(dir))
        if (e.path().extension() == ext) out.push_back(e.path().stem().string());
    std::sort(out.begin(), out.end());
    return out;
}

// Shared speech: encoder to both formats, decoder from both formats.
TEST(GsmfrCodec, SharedStreams) {
    const auto names = stems(kDir, ".gsm");
    ASSERT_GE(names.size(), 6u);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const auto pcm = read_pcm(shared_dir() + "/speech/" + name + ".s16");
        const auto gsm = read_bytes(kDir + "/" + name + ".gsm");
        const auto cod = read_bytes(kDir + "/" + name + ".cod");
        const auto dec = read_pcm(kDir + "/" + name + ".dec.s16");
        expect_same_bytes(encode(pcm, "gsm"), gsm, 33, name + ".gsm encoded");
        expect_same_bytes(encode(pcm, "cod"), cod, 152, name + ".cod encoded");
        expect_same_pcm(decode(gsm, "gsm"), dec, 160, name + ".gsm decoded");
        expect_same_pcm(decode(cod, "cod"), dec, 160, name + ".cod decoded");
    }
}

// ETSI test sequences: SeqNN.inp -> SeqNN.cod -> SeqNN.out (Seq05 has no input).
TEST(GsmfrCodec, EtsiSequences) {
    const std::string dir = kDir + "/conformance";
    const auto names = stems(dir, ".cod");
    ASSERT_EQ(names.size(), 5u);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const auto cod = read_bytes(dir + "/" + name + ".cod");
        const auto out = read_pcm(dir + "/" + name + ".out");
        expect_same_pcm(decode(cod, "cod"), out, 160, name + ".cod decoded");
        if (!fs::exists(dir + "/" + name + ".inp")) continue;
        const auto inp = read_pcm(dir + "/" + name + ".inp");
        expect_same_bytes(encode(inp, "cod"), cod, 152, name + ".inp encoded");
        expect_same_pcm(decode(encode(inp, "gsm"), "gsm"), out, 160, name + ".inp through .gsm");
    }
}

// Corrupt or truncated bitstreams: a CodecError, never a crash or output.
TEST(GsmfrCodec, CorruptBitstreams) {
    auto gsm = read_bytes(kDir + "/male.gsm");
    auto cod = read_bytes(kDir + "/male.cod");
    ASSERT_GE(gsm.size(), 66u);
    ASSERT_GE(cod.size(), 304u);
    struct Case {
        const char* what;
        std::vector<std::uint8_t> bits;
        const char* format;
    };
    std::vector<Case> cases;
    auto bad_nibble = gsm;
    bad_nibble[33] = static_cast<std::uint8_t>((bad_nibble[33] & 0x0F) | 0xC0);
    cases.push_back({"signature nibble 0xC in frame 1", bad_nibble, "gsm"});
    cases.push_back({"a .gsm frame cut short", {gsm.begin(), gsm.begin() + 33 + 20}, "gsm"});
    cases.push_back({"one byte of a .gsm frame", {gsm.begin(), gsm.begin() + 1}, "gsm"});
    cases.push_back({"a .cod frame cut short", {cod.begin(), cod.begin() + 152 + 151}, "cod"});
    // Words out of their field's range: LARc[0] = 64, Nc = 128, xMc = -1.
    for (const auto& [word, value] : std::vector<std::pair<int, int>>{{0, 64}, {8, 128}, {12, -1}, {7, 8}}) {
        auto bad = cod;
        bad[152 + 2 * word] = static_cast<std::uint8_t>(value & 0xFF);
        bad[152 + 2 * word + 1] = static_cast<std::uint8_t>((value >> 8) & 0xFF);
        cases.push_back({"a .cod word outside its range", bad, "cod"});
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_THROW(decode(c.bits, c.format), CodecError);
    }
}

}  // namespace
}  // namespace zeps::codec_test

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D whole-codec replays through the public library: the six
// shared speech streams at 6.4 kbit/s (encoder and decoder) and the ITU-T
// sequence testfile.raw coded at 6.4, at 8 and switching every frame
// (encoder input -> testmid.N -> testout.N), byte for byte; decoders fed
// corrupt streams.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/codecs/codec_replay.h"

namespace {

using zeps::codec_test::expect_same_bytes;
using zeps::codec_test::expect_same_pcm;
using zeps::codec_test::read_bytes;
using zeps::codec_test::read_pcm;
using zeps::codec_test::temp_file;

constexpr std::size_t kFrameSamples = 80;

std::string root() { return zeps::codec_test::shared_dir() + "/codecs/g729"; }

zepsc_cli::CodecOptions annex_d(const std::string& rate = "", const std::string& ratefile = "") {
    zepsc_cli::CodecOptions o;
    o.values.emplace("annex", "D");
    if (!rate.empty()) o.values.emplace("rate", rate);
    if (!ratefile.empty()) o.values.emplace("ratefile", ratefile);
    return o;
}

/// A rate file (16-bit codes, 0 = 6.4, 1 = 8) switching every frame, starting at 8.
std::string switching_rate_file(std::size_t frames) {
    const auto path = temp_file("g729d_switch");
    std::FILE* f = std::fopen(path.c_str(), "wb");
    for (std::size_t i = 0; i < frames; ++i) {
        const std::uint8_t w[2] = {static_cast<std::uint8_t>(i % 2 == 0 ? 1 : 0), 0};
        std::fwrite(w, 1, 2, f);
    }
    std::fclose(f);
    return path;
}

TEST(G729DReplay, SpeechStreams) {
    const auto& codec = zeps::codec_test::codec("g729");
    for (const char* stem : {"female", "loud", "male", "noisy", "quiet", "tones"}) {
        const std::string base = root() + "/g729d/" + stem;
        const auto pcm = read_pcm(zeps::codec_test::shared_dir() + "/speech/" + stem + ".s16");
        const auto want = read_bytes(base + ".bit");
        const auto bits = zepsc_cli::encode_all(codec, annex_d(), "bit", pcm.data(), pcm.size());
        expect_same_bytes(bits, want, 132, std::string("g729d/") + stem + " encoder");
        const auto out = zepsc_cli::decode_all(codec, annex_d(), "bit", want.data(), want.size());
        expect_same_pcm(out, read_pcm(base + ".pst"), kFrameSamples, std::string("g729d/") + stem + " decoder");
    }
}

TEST(G729DReplay, ConformanceAllThreeModes) {
    const auto& codec = zeps::codec_test::codec("g729");
    const std::string dir = root() + "/conformance/g729d/";
    const auto pcm = read_pcm(dir + "testfile.raw");
    const std::string ratefile = switching_rate_file(pcm.size() / kFrameSamples);
    const zepsc_cli::CodecOptions modes[3] = {annex_d("6.4"), annex_d("8"), annex_d("", ratefile)};
    const std::size_t frame_bytes[3] = {132, 164, 148};  // the mean of 164 and 132 for the switching stream
    for (int m = 0; m < 3; ++m) {
        const std::string n = std::to_string(m + 1);
        const auto want = read_bytes(dir + "testmid." + n);
        const auto bits = zepsc_cli::encode_all(codec, modes[m], "bit", pcm.data(), pcm.size());
        expect_same_bytes(bits, want, frame_bytes[m], "testmid." + n + " encoder");
        // The decoder reads each frame's rate from its size word, whatever --rate says.
        const auto out = zepsc_cli::decode_all(codec, annex_d(), "bit", want.data(), want.size());
        expect_same_pcm(out, read_pcm(dir + "testout." + n), kFrameSamples, "testout." + n + " decoder");
    }
    std::filesystem::remove(ratefile);
}

/// The payload bits of each serial frame, packed MSB first: the RTP payloads.
std::vector<std::uint8_t> rtp_payloads(const std::vector<std::uint8_t>& serial) {
    std::vector<std::uint8_t> out;
    for (std::size_t p = 0; p + 4 <= serial.size(); p += 4 + 2 * std::size_t{serial[p + 2]})
        for (std::size_t byte = 0; byte < serial[p + 2] / 8u; ++byte) {
            std::uint8_t v = 0;
            for (std::size_t b = 0; b < 8; ++b) v = static_cast<std::uint8_t>((v << 1) | (serial[p + 4 + 2 * (8 * byte + b)] == 0x81));
            out.push_back(v);
        }
    return out;
}

TEST(G729DReplay, RtpPayloadFormat) {
    const auto& codec = zeps::codec_test::codec("g729");
    const auto pcm = read_pcm(zeps::codec_test::shared_dir() + "/speech/male.s16");
    const auto serial = read_bytes(root() + "/g729d/male.bit");
    const auto payloads = zepsc_cli::encode_all(codec, annex_d("6.4"), "g729", pcm.data(), pcm.size());
    expect_same_bytes(payloads, rtp_payloads(serial), 8, "g729d .g729 encoder");
    const auto out = zepsc_cli::decode_all(codec, annex_d("6.4"), "g729", payloads.data(), payloads.size());
    expect_same_pcm(out, read_pcm(root() + "/g729d/male.pst"), kFrameSamples, "g729d .g729 decoder");
}

/// Decodes bytes that may be corrupt: either decoded (80 samples a frame)
/// or refused with CodecError, as expected.
void decode_corrupt(const std::vector<std::uint8_t>& bits, const std::string& format, bool must_throw,
                    const std::string& rate = "") {
    try {
        const auto out = zepsc_cli::decode_all(zeps::codec_test::codec("g729"), annex_d(rate), format, bits.data(),
                                               bits.size());
        EXPECT_FALSE(must_throw) << format << " " << bits.size() << " bytes";
        EXPECT_EQ(out.size() % kFrameSamples, 0u);
    } catch (const zepsc_cli::CodecError& e) {
        EXPECT_TRUE(must_throw) << e.what();
    }
}

TEST(G729DReplay, CorruptBitstreams) {
    // The switching stream: 6.4 and 8 kbit/s frames alternate.
    const auto good = read_bytes(root() + "/conformance/g729d/testmid.3");
    const std::size_t head_bytes = 30 * 148;
    ASSERT_GE(good.size(), head_bytes);
    const std::vector<std::uint8_t> head(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(head_bytes));
    std::uint32_t seed = 3;
    auto next = [&] { return seed = seed * 1664525u + 1013904223u; };
    // Bit words of any value (0x0000 erases the frame, others count as 0): decoded.
    for (int rep = 0; rep < 20; ++rep) {
        auto bits = head;
        for (std::size_t p = 0; p + 4 <= bits.size(); p += 4 + 2 * std::size_t{bits[p + 2]})
            for (int k = 0; k < 4; ++k) {
                const std::size_t w = p + 4 + 2 * (next() % bits[p + 2]);
                bits[w] = static_cast<std::uint8_t>(next() % 2 ? 0 : next());
                bits[w + 1] = static_cast<std::uint8_t>(next() % 3 == 0 ? next() : 0);
            }
        decode_corrupt(bits, "bit", false);
    }
    // Other sizes and truncated frames are refused; random payloads decode at either rate.
    for (std::uint8_t size : {0, 16, 63, 65, 79, 81, 118}) {
        auto bits = head;
        bits[2] = size;
        decode_corrupt(bits, "bit", true);
    }
    decode_corrupt(std::vector<std::uint8_t>(head.begin(), head.begin() + 100), "bit", true);
    std::vector<std::uint8_t> noise(400);
    for (auto& b : noise) b = static_cast<std::uint8_t>(next() >> 24);
    decode_corrupt(noise, "g729", false, "6.4");
    decode_corrupt(noise, "g729", false, "8");
    decode_corrupt(std::vector<std::uint8_t>(noise.begin(), noise.begin() + 13), "g729", true, "6.4");
}

TEST(G729DReplay, Options) {
    const auto& codec = zeps::codec_test::codec("g729");
    const std::vector<std::int16_t> pcm(800, 0);
    auto refused = [&](zepsc_cli::CodecOptions o) {
        try {
            zepsc_cli::encode_all(codec, o, "bit", pcm.data(), pcm.size());
        } catch (const zepsc_cli::CodecError&) {
            return true;
        }
        return false;
    };
    EXPECT_TRUE(refused(annex_d("11.8")));
    auto dtx = annex_d();
    dtx.values.emplace("dtx", "");
    EXPECT_TRUE(refused(dtx));
    const std::string short_file = switching_rate_file(5);  // 10 frames of speech, 5 rates
    EXPECT_TRUE(refused(annex_d("", short_file)));
    std::filesystem::remove(short_file);
    EXPECT_TRUE(refused(annex_d("", "/nonexistent/rates")));
    EXPECT_FALSE(refused(annex_d("8")));
}

}  // namespace

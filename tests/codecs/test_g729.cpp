// SPDX-License-Identifier: BSD-3-Clause
// G.729 whole-codec replays through the public library: every shared
// stream of the main body and of Annex A, each also with Annex B (six speech
// files and the erased-frame stream), and the ITU-T conformance sequences of
// all four, encoder input -> .bit and decoder .bit -> .pst / .out, byte for byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/codecs/codec_replay.h"
#include "zepsc.h"

namespace {

namespace fs = std::filesystem;
using zeps::codec_test::expect_same_bytes;
using zeps::codec_test::expect_same_pcm;
using zeps::codec_test::read_bytes;
using zeps::codec_test::read_pcm;

constexpr std::size_t kFrameBytes = 164;  // ITU serial format: 82 words
constexpr std::size_t kFrameSamples = 80;

std::string root() { return zeps::codec_test::shared_dir() + "/codecs/g729"; }

zepsc_cli::CodecOptions annex(const std::string& a) {
    zepsc_cli::CodecOptions o;
    o.values["annex"] = a;
    return o;
}

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

/// The file of folder whose name is stem + ext in any letter case, or "".
std::string find_file(const std::string& folder, const std::string& stem, const std::string& ext) {
    for (const auto& e : fs::directory_iterator(folder))
        if (lower(e.path().filename().string()) == lower(stem + ext)) return e.path().string();
    return "";
}

struct Folder {
    const char* path;   // under codecs/g729
    const char* annex;  // codec option
    int streams;        // .bit files with a decoded output expected there
};

/// The decoded output of stem: <stem>.pst, or <stem>.out / <stem>a.out as
/// the Annex B sequences name theirs; "" if none.
std::string find_output(const std::string& dir, const std::string& stem) {
    for (const char* name : {".pst", ".out", "a.out"})
        if (std::string f = find_file(dir, stem, name); !f.empty()) return f;
    return "";
}

/// The encoder input of stem: speech/<stem>.s16 for a codec stream;
/// <stem>.IN, or <stem>.bin (its final "a" dropped on Annex A) for a
/// conformance sequence; "" if none.
std::string find_input(const std::string& dir, const std::string& stem, bool conformance) {
    if (!conformance) return zeps::codec_test::shared_dir() + "/speech/" + stem + ".s16";
    for (const char* ext : {".in", ".bin"})
        if (std::string f = find_file(dir, stem, ext); !f.empty()) return f;
    if (stem.size() > 1 && stem.back() == 'a') return find_file(dir, stem.substr(0, stem.size() - 1), ".bin");
    return "";
}

/// Every .bit of the folder decodes to its output.
void replay_decoder(const Folder& f) {
    const auto& codec = zeps::codec_test::codec("g729");
    const std::string dir = root() + "/" + f.path;
    int streams = 0;
    for (const auto& e : fs::directory_iterator(dir)) {
        if (lower(e.path().extension().string()) != ".bit") continue;
        const std::string stem = e.path().stem().string();
        const std::string pst = find_output(dir, stem);
        ASSERT_FALSE(pst.empty()) << "no output for " << e.path();
        const auto bits = read_bytes(e.path().string());
        const auto out = zepsc_cli::decode_all(codec, annex(f.annex), "bit", bits.data(), bits.size());
        expect_same_pcm(out, read_pcm(pst), kFrameSamples, std::string(f.path) + "/" + stem + " decoder");
        ++streams;
    }
    EXPECT_EQ(streams, f.streams) << f.path;
}

/// Every input of the folder (speech/<stem>.s16 for a codec stream, <stem>.IN
/// for a conformance sequence) encodes to its .bit.
void replay_encoder(const Folder& f, int expected) {
    const auto& codec = zeps::codec_test::codec("g729");
    const std::string dir = root() + "/" + f.path;
    const bool conformance = std::string(f.path).rfind("conformance", 0) == 0;
    int streams = 0;
    for (const auto& e : fs::directory_iterator(dir)) {
        if (lower(e.path().extension().string()) != ".bit") continue;
        const std::string stem = e.path().stem().string();
        const std::string in = find_input(dir, stem, conformance);
        if (in.empty() || !fs::exists(in)) continue;  // decoder-only sequences, erased streams
        const auto pcm = read_pcm(in);
        const auto bits = zepsc_cli::encode_all(codec, annex(f.annex), "bit", pcm.data(), pcm.size());
        expect_same_bytes(bits, read_bytes(e.path().string()), kFrameBytes, std::string(f.path) + "/" + stem + " encoder");
        ++streams;
    }
    EXPECT_EQ(streams, expected) << f.path;
}

const Folder kFolders[] = {
    {"g729a", "A", 7},
    {"conformance/g729a", "A", 10},
    {"g729", "0", 7},
    {"conformance/g729", "0", 9},
    {"g729b", "B", 7},
    {"conformance/g729b", "B", 6},
    {"g729ab", "AB", 7},
    {"conformance/g729ab", "AB", 6},
};

TEST(G729Replay, DecoderStreamsAndConformance) {
    for (const Folder& f : kFolders) replay_decoder(f);
}

// The Annex B decoders decode plain streams as the plain decoders do.
TEST(G729Replay, AnnexBDecodersOnPlainStreams) {
    const Folder plain[] = {
        {"g729", "B", 7}, {"conformance/g729", "B", 9}, {"g729a", "AB", 7}, {"conformance/g729a", "AB", 10}};
    for (const Folder& f : plain) replay_decoder(f);
}

TEST(G729Replay, AnnexAEncoder) {
    replay_encoder(kFolders[0], 6);
    replay_encoder(kFolders[1], 7);
}

TEST(G729Replay, MainBodyEncoder) {
    replay_encoder(kFolders[2], 6);
    replay_encoder(kFolders[3], 6);
}

TEST(G729Replay, AnnexBEncoder) {
    replay_encoder(kFolders[4], 6);
    replay_encoder(kFolders[5], 4);
}

TEST(G729Replay, AnnexABEncoder) {
    replay_encoder(kFolders[6], 6);
    replay_encoder(kFolders[7], 4);
}

/// The 80 bits of each serial frame, packed MSB first: the RTP payloads.
std::vector<std::uint8_t> rtp_payloads(const std::vector<std::uint8_t>& serial) {
    std::vector<std::uint8_t> out;
    for (std::size_t f = 0; f + kFrameBytes <= serial.size(); f += kFrameBytes)
        for (int byte = 0; byte < 10; ++byte) {
            std::uint8_t v = 0;
            for (int b = 0; b < 8; ++b) {
                const std::size_t w = f + 4 + 2 * static_cast<std::size_t>(byte * 8 + b);
                v = static_cast<std::uint8_t>((v << 1) | (serial[w] == 0x81 ? 1 : 0));
            }
            out.push_back(v);
        }
    return out;
}

TEST(G729Replay, RtpPayloadFormat) {
    const auto& codec = zeps::codec_test::codec("g729");
    for (const char* a : {"0", "A"}) {
        const std::string dir = root() + (std::string(a) == "A" ? "/g729a" : "/g729");
        const auto pcm = read_pcm(zeps::codec_test::shared_dir() + "/speech/female.s16");
        const auto serial = read_bytes(dir + "/female.bit");
        const auto payloads = zepsc_cli::encode_all(codec, annex(a), "g729", pcm.data(), pcm.size());
        expect_same_bytes(payloads, rtp_payloads(serial), 10, std::string(a) + " .g729 encoder");
        const auto out = zepsc_cli::decode_all(codec, annex(a), "g729", payloads.data(), payloads.size());
        expect_same_pcm(out, read_pcm(dir + "/female.pst"), kFrameSamples, std::string(a) + " .g729 decoder");
    }
}

/// Runs the decoder on bytes that may be corrupt: it either decodes or
/// throws CodecError, and writes 80 samples a decoded frame.
void decode_corrupt(const std::vector<std::uint8_t>& bits, const std::string& format, bool must_throw,
                    std::initializer_list<const char*> annexes = {"0", "A"}) {
    const auto& codec = zeps::codec_test::codec("g729");
    for (const char* a : annexes) {
        try {
            const auto out = zepsc_cli::decode_all(codec, annex(a), format, bits.data(), bits.size());
            EXPECT_FALSE(must_throw) << format << " " << bits.size() << " bytes";
            EXPECT_EQ(out.size() % kFrameSamples, 0u);
        } catch (const zepsc_cli::CodecError& e) {
            EXPECT_TRUE(must_throw) << e.what();
        }
    }
}

TEST(G729Replay, CorruptBitstreams) {
    const auto good = read_bytes(root() + "/g729a/male.bit");
    ASSERT_GE(good.size(), 20 * kFrameBytes);
    std::vector<std::uint8_t> head(good.begin(), good.begin() + 20 * kFrameBytes);
    std::uint32_t seed = 1;
    auto next = [&] { return seed = seed * 1664525u + 1013904223u; };
    // Bit words of any value (0x0000 erases, others count as 0): decoded.
    for (int rep = 0; rep < 20; ++rep) {
        auto bits = head;
        for (std::size_t f = 0; f < 20; ++f)
            for (int k = 0; k < 8; ++k) {
                const std::size_t w = f * kFrameBytes + 4 + 2 * (next() % 80);
                bits[w] = static_cast<std::uint8_t>(next());
                bits[w + 1] = static_cast<std::uint8_t>(next() % 3 == 0 ? next() : 0);
            }
        decode_corrupt(bits, "bit", false);
    }
    // Random payloads of whole frames decode; truncated frames and foreign sizes are refused.
    std::vector<std::uint8_t> noise(400);
    for (auto& b : noise) b = static_cast<std::uint8_t>(next() >> 24);
    decode_corrupt(noise, "g729", false);
    decode_corrupt(std::vector<std::uint8_t>(noise.begin(), noise.begin() + 15), "g729", true);
    decode_corrupt(std::vector<std::uint8_t>(head.begin(), head.begin() + kFrameBytes + 100), "bit", true);
    auto sid = head;
    sid[kFrameBytes + 2] = 16;  // a SID frame needs Annex B
    decode_corrupt(sid, "bit", true);
}

// The largest codable lag: subframe 0 at 143 (code 255) and the
// subframe-1 code 31 (t0_min 134 + 10 = 144), then an erased frame that
// repeats 144: both decoders go on (the post-filter's search ends at 143).
TEST(G729Replay, LagAbove143ThenErasureDecodes) {
    const auto good = read_bytes(root() + "/g729/male.bit");
    ASSERT_GE(good.size(), 3 * kFrameBytes);
    std::vector<std::uint8_t> bits(good.begin(), good.begin() + 3 * kFrameBytes);
    auto put = [&](std::size_t frame, int first, int width, unsigned value) {
        for (int b = 0; b < width; ++b) {
            const std::size_t word = frame * kFrameBytes + 4 + 2 * std::size_t(first + b);
            bits[word] = ((value >> (width - 1 - b)) & 1) ? 0x81 : 0x7F;
            bits[word + 1] = 0;
        }
    };
    Zep16s parity = 0;
    ASSERT_EQ(zepsParityPitch_G729_16s(255, &parity), zepStsNoErr);
    put(1, 18, 8, 255);     // P1: lag 143
    put(1, 26, 1, static_cast<unsigned>(parity));  // P0: its parity bit
    put(1, 51, 5, 31);   // P2: lag 144
    bits[2 * kFrameBytes + 4 + 2 * 40] = 0;  // frame 2: a 0x0000 bit word erases it
    decode_corrupt(bits, "bit", false);
}

/// The byte offsets of the frames of a serial stream (sizes 80, 16 or 0).
std::vector<std::size_t> frame_offsets(const std::vector<std::uint8_t>& bits) {
    std::vector<std::size_t> at;
    for (std::size_t p = 0; p + 4 <= bits.size(); p += 4 + 2 * std::size_t{bits[p + 2]}) at.push_back(p);
    return at;
}

TEST(G729Replay, CorruptAnnexBBitstreams) {
    const auto good = read_bytes(root() + "/g729b/male.bit");
    const auto at = frame_offsets(good);
    ASSERT_GE(at.size(), 60u);
    const std::vector<std::uint8_t> head(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at[60]));
    std::uint32_t seed = 7;
    auto next = [&] { return seed = seed * 1664525u + 1013904223u; };
    // Bit words of any value, SYNC words changed (erasing untransmitted
    // frames): decoded by both Annex B decoders.
    for (int rep = 0; rep < 20; ++rep) {
        auto bits = head;
        for (std::size_t f = 0; f < 60; ++f) {
            const std::size_t size = bits[at[f] + 2];
            if (next() % 4 == 0) bits[at[f]] = static_cast<std::uint8_t>(next());
            for (std::size_t k = 0; size != 0 && k < 3; ++k) {
                const std::size_t w = at[f] + 4 + 2 * (next() % size);
                bits[w] = static_cast<std::uint8_t>(next() % 2 ? 0 : next());
                bits[w + 1] = static_cast<std::uint8_t>(next() % 3 == 0 ? next() : 0);
            }
        }
        decode_corrupt(bits, "bit", false, {"B", "AB"});
    }
    // Sizes other than 80, 16 and 0, and a truncated SID frame, are refused.
    for (std::uint8_t size : {1, 15, 17, 79, 81}) {
        auto bits = head;
        bits[at[0] + 2] = size;
        decode_corrupt(bits, "bit", true, {"B", "AB"});
    }
    ASSERT_EQ(head[at[0] + 2], 16);  // male starts with a SID frame
    decode_corrupt(std::vector<std::uint8_t>(head.begin(), head.begin() + 20), "bit", true, {"B", "AB"});
}

TEST(G729Replay, AnnexBOptions) {
    const auto& codec = zeps::codec_test::codec("g729");
    struct Case {
        const char* annex;
        bool dtx;
        const char* format;
        bool accepted;
    };
    const Case cases[] = {{"B", true, "bit", true},   {"AB", false, "bit", true}, {"0", true, "bit", false},
                          {"A", true, "bit", false},  {"B", false, "g729", false}, {"AB", true, "g729", false}};
    const std::vector<std::int16_t> pcm(800, 0);
    for (const Case& c : cases) {
        auto o = annex(c.annex);
        if (c.dtx) o.values["dtx"] = "";
        bool ok = true;
        try {
            const auto bits = zepsc_cli::encode_all(codec, o, c.format, pcm.data(), pcm.size());
            zepsc_cli::decode_all(codec, o, c.format, bits.data(), bits.size());
        } catch (const zepsc_cli::CodecError&) {
            ok = false;
        }
        EXPECT_EQ(ok, c.accepted) << c.annex << (c.dtx ? " --dtx " : " ") << c.format;
    }
}

}  // namespace

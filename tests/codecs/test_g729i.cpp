// SPDX-License-Identifier: BSD-3-Clause
// The integrated G.729 coder (Annex I) through the public library: every
// shared DTX stream at 6.4, 8 and 11.8 kbit/s and the ITU-T Annex I
// conformance sequences (DTX at 6.4 and 11.8 kbit/s, per-frame rate
// switching 6.4/11.8 and 6.4/8/11.8), decoder .bit -> output and encoder
// speech -> .bit byte for byte; the decoder's handling of erased and corrupt
// frames.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/codecs/codec_replay.h"

namespace {

namespace fs = std::filesystem;
using zeps::codec_test::expect_same_pcm;
using zeps::codec_test::read_bytes;
using zeps::codec_test::read_pcm;
using zeps::codec_test::temp_file;

zepsc_cli::CodecOptions annex_i() {
    zepsc_cli::CodecOptions o;
    o.values["annex"].assign(1, 'I');
    return o;
}

std::vector<std::int16_t> decode(const std::vector<std::uint8_t>& bits) {
    return zepsc_cli::decode_all(zeps::codec_test::codec("g729"), annex_i(), "bit", bits.data(), bits.size());
}

TEST(G729IReplay, DecoderStreamsAndConformance) {
    const std::string root = zeps::codec_test::shared_dir() + "/codecs/g729/";
    // The shared streams: NAME.bit -> NAME.pst.
    for (const char* folder : {"g729i_6k4_dtx", "g729i_8k_dtx", "g729i_11k8_dtx"}) {
        int streams = 0;
        for (const auto& e : fs::directory_iterator(root + folder)) {
            if (e.path().extension() != ".bit") continue;
            const std::string stem = e.path().stem().string();
            expect_same_pcm(decode(read_bytes(e.path().string())), read_pcm(root + folder + "/" + stem + ".pst"), 80,
                            std::string(folder) + "/" + stem + " decoder");
            ++streams;
        }
        EXPECT_EQ(streams, 6) << folder;
    }
    // The ITU sequences: .b10 -> .o10, .b12 -> .o12, .br02 -> .or02, .br012 -> .or012.
    const std::string dir = root + "conformance/g729i/";
    for (const std::string name : {"dm19", "speech"})
        for (const std::string rate : {"10", "12", "r02", "r012"})
            expect_same_pcm(decode(read_bytes(dir + name + ".b" + rate)), read_pcm(dir + name + ".o" + rate), 80,
                            "conformance/g729i/" + name + ".b" + rate + " decoder");
}

std::vector<std::uint8_t> encode(const std::vector<std::int16_t>& pcm, const zepsc_cli::CodecOptions& o) {
    return zepsc_cli::encode_all(zeps::codec_test::codec("g729"), o, "bit", pcm.data(), pcm.size());
}

/// The shared speech with DTX at each rate: speech/NAME.s16 -> g729i_<rate>_dtx/NAME.bit.
TEST(G729IReplay, EncoderWithDtx) {
    const std::string root = zeps::codec_test::shared_dir() + "/codecs/g729/";
    for (const auto& [folder, rate] : {std::pair<const char*, const char*>{"g729i_6k4_dtx", "6.4"},
                                       {"g729i_8k_dtx", "8"},
                                       {"g729i_11k8_dtx", "11.8"}}) {
        zepsc_cli::CodecOptions o = annex_i();
        o.values["rate"] = rate;
        o.values["dtx"] = "";
        int streams = 0;
        for (const auto& e : fs::directory_iterator(root + folder)) {
            if (e.path().extension() != ".bit") continue;
            const std::string stem = e.path().stem().string();
            const auto pcm = read_pcm(zeps::codec_test::shared_dir() + "/speech/" + stem + ".s16");
            zeps::codec_test::expect_same_bytes(encode(pcm, o), read_bytes(e.path().string()), 1,
                                                std::string(folder) + "/" + stem + " encoder");
            ++streams;
        }
        EXPECT_EQ(streams, 6) << folder;
    }
    // The ITU sequences with DTX at 6.4 kbit/s -> .b10, at 11.8 kbit/s (with
    // the music detection) -> .b12.
    const std::string dir = root + "conformance/g729i/";
    zepsc_cli::CodecOptions o = annex_i();
    o.values["dtx"] = "";
    for (const auto& [rate, ext] : {std::pair<const char*, const char*>{"6.4", ".b10"}, {"11.8", ".b12"}}) {
        o.values["rate"] = rate;
        for (const std::string name : {"dm19", "speech"})
            zeps::codec_test::expect_same_bytes(encode(read_pcm(dir + (name == "dm19" ? "dm19.8k" : name)), o),
                                                read_bytes(dir + name + ext), 1,
                                                "conformance/g729i/" + name + ext + " encoder");
    }
    // A rate other than 6.4, 8 or 11.8 is refused.
    o.values["rate"] = "16";
    EXPECT_THROW(encode(std::vector<std::int16_t>(800, 0), o), zepsc_cli::CodecError);
}

/// The ITU sequences coded without DTX with the rate files: speech and
/// dm19.8k with rate02 -> .br02, with rate012 -> .br012; one encoder state
/// across 6.4, 8 and 11.8 kbit/s frames.
TEST(G729IReplay, EncoderWithRateFiles) {
    const std::string dir = zeps::codec_test::shared_dir() + "/codecs/g729/conformance/g729i/";
    for (const std::string rate : {"02", "012"}) {
        zepsc_cli::CodecOptions o = annex_i();
        o.values["ratefile"] = dir + "rate" + rate;
        for (const std::string name : {"dm19", "speech"}) {
            const std::string in = name == "dm19" ? "dm19.8k" : name;
            zeps::codec_test::expect_same_bytes(encode(read_pcm(dir + in), o), read_bytes(dir + name + ".br" + rate),
                                                1, "conformance/g729i/" + name + ".br" + rate + " encoder");
        }
    }
    // A rate file that ends before the speech, or holds a code above 2, is refused.
    const std::string path = temp_file("g729i_rate_codes");
    const auto refused = [&](std::vector<std::uint8_t> codes) {
        std::FILE* f = std::fopen(path.c_str(), "wb");
        ASSERT_NE(f, nullptr);
        std::fwrite(codes.data(), 1, codes.size(), f);
        std::fclose(f);
        zepsc_cli::CodecOptions o = annex_i();
        o.values["ratefile"] = path;
        EXPECT_THROW(encode(std::vector<std::int16_t>(3 * 80, 0), o), zepsc_cli::CodecError);
    };
    refused({0, 0, 2, 0});
    refused({0, 0, 2, 0, 3, 0});
    fs::remove(path);
}

/// A frame: SYNC, size, one word a bit (0x007F: all codes 0, 0x0081: 1).
std::vector<std::uint8_t> frame(unsigned size, unsigned word = 0x7F, unsigned sync = 0x6B21) {
    std::vector<std::uint8_t> f = {static_cast<std::uint8_t>(sync & 0xff), static_cast<std::uint8_t>(sync >> 8),
                                   static_cast<std::uint8_t>(size & 0xff), static_cast<std::uint8_t>(size >> 8)};
    for (unsigned i = 0; i < size; ++i) {
        f.push_back(static_cast<std::uint8_t>(word & 0xff));
        f.push_back(static_cast<std::uint8_t>(word >> 8));
    }
    return f;
}

std::vector<std::uint8_t> join(std::initializer_list<std::vector<std::uint8_t>> frames) {
    std::vector<std::uint8_t> s;
    for (const auto& f : frames) s.insert(s.end(), f.begin(), f.end());
    return s;
}

TEST(G729IReplay, ErasedAndCorruptFrames) {
    // Every frame type, and erasures after each of them: one frame of
    // output each, no error.
    const auto all_ones = frame(118, 0x81);
    const auto s = join({frame(64), frame(64, 0), frame(80), frame(80, 0), all_ones, frame(118, 0), frame(16),
                         frame(0), frame(16, 0), frame(0, 0, 0x1234), frame(118), frame(64, 0x81), frame(0)});
    EXPECT_EQ(decode(s).size(), 13u * 80);
    // An erased frame is decoded at the previous frame's rate: after an
    // 11.8 kbit/s frame a lost 64-bit frame conceals as a lost 118-bit one.
    EXPECT_EQ(decode(join({all_ones, frame(64, 0)})), decode(join({all_ones, frame(118, 0)})));
    // A mode bit that differs from its repeat erases the frame.
    auto split = frame(118);
    split[4] = 0x81;
    EXPECT_EQ(decode(join({all_ones, split})), decode(join({all_ones, frame(118, 0)})));
    // An untransmitted frame with a bad SYNC word is an erasure.
    EXPECT_EQ(decode(join({frame(64), frame(0, 0, 0x1234)})), decode(join({frame(64), frame(64, 0)})));

    const auto& codec = zeps::codec_test::codec("g729");
    const auto fails = [&](const std::vector<std::uint8_t>& bits) {
        EXPECT_THROW(zepsc_cli::decode_all(codec, annex_i(), "bit", bits.data(), bits.size()), zepsc_cli::CodecError);
    };
    fails(frame(15));                                           // not an Annex I frame size
    fails(frame(80, 0x7F, 0x6B20));                             // bad SYNC on a transmitted frame
    fails(std::vector<std::uint8_t>(all_ones.begin(), all_ones.end() - 6));  // truncated
    zepsc_cli::CodecOptions rtp = annex_i();
    EXPECT_THROW(zepsc_cli::decode_all(codec, rtp, "g729", s.data(), s.size()), zepsc_cli::CodecError);
}

}  // namespace

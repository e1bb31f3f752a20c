// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E whole-codec replays through the public library: every
// shared 11.8 kbit/s stream (six speech files) and the ITU-T Annex E
// conformance sequences (forward/backward switching, 35- and 44-bit
// codebooks, erasures, filter stability, the 8/11.8 kbit/s switching
// stream), encoder speech -> .bit and decoder .bit -> .pst byte for byte;
// the encoder's rate options and the decoder's handling of corrupt streams.
#include <gtest/gtest.h>

#include <cstddef>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/codecs/codec_replay.h"

namespace {

namespace fs = std::filesystem;
using zeps::codec_test::expect_same_bytes;
using zeps::codec_test::expect_same_pcm;
using zeps::codec_test::read_bytes;
using zeps::codec_test::read_pcm;
using zeps::codec_test::temp_file;

zepsc_cli::CodecOptions annex(const std::string& a) {
    zepsc_cli::CodecOptions o;
    o.values["annex"] = a;
    return o;
}

zepsc_cli::CodecOptions annex_e() { return annex("E"); }

std::vector<std::int16_t> decode(const std::vector<std::uint8_t>& bits) {
    return zepsc_cli::decode_all(zeps::codec_test::codec("g729"), annex_e(), "bit", bits.data(), bits.size());
}

TEST(G729EReplay, DecoderStreamsAndConformance) {
    const std::string root = zeps::codec_test::shared_dir() + "/codecs/g729/";
    const struct {
        const char* folder;
        int streams;
    } folders[] = {{"g729e", 6}, {"conformance/g729e", 10}};
    for (const auto& f : folders) {
        int streams = 0;
        for (const auto& e : fs::directory_iterator(root + f.folder)) {
            if (e.path().extension() != ".bit") continue;
            const std::string stem = e.path().stem().string();
            const std::string dir = root + f.folder;
            expect_same_pcm(decode(read_bytes(e.path().string())), read_pcm(dir + "/" + stem + ".pst"), 80,
                            std::string(f.folder) + "/" + stem + " decoder");
            ++streams;
        }
        EXPECT_EQ(streams, f.streams) << f.folder;
    }
}

std::vector<std::uint8_t> encode(const std::vector<std::int16_t>& pcm, const zepsc_cli::CodecOptions& o) {
    return zepsc_cli::encode_all(zeps::codec_test::codec("g729"), o, "bit", pcm.data(), pcm.size());
}

TEST(G729EReplay, EncoderStreamsAndConformance) {
    const std::string root = zeps::codec_test::shared_dir() + "/codecs/g729/";
    // The shared streams from the speech files, all at 11.8 kbit/s.
    for (const char* stem : {"female", "loud", "male", "noisy", "quiet", "tones"}) {
        const auto pcm = read_pcm(zeps::codec_test::shared_dir() + "/speech/" + stem + ".s16");
        expect_same_bytes(encode(pcm, annex_e()), read_bytes(root + "g729e/" + stem + ".bit"), 240,
                          std::string("g729e/") + stem + " encoder");
    }
    // The ITU sequences: NAME.118 -> name.bit; SWITCH.XXX with the rate file SWITCH.
    const std::string dir = root + "conformance/g729e/";
    int sequences = 0;
    for (const auto& e : fs::directory_iterator(dir)) {
        if (e.path().extension() != ".118") continue;
        std::string stem = e.path().stem().string();
        for (char& c : stem) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        expect_same_bytes(encode(read_pcm(e.path().string()), annex_e()), read_bytes(dir + stem + ".bit"), 240,
                          "conformance/g729e/" + stem + " encoder");
        ++sequences;
    }
    EXPECT_EQ(sequences, 7);
    zepsc_cli::CodecOptions switching = annex_e();
    switching.values["ratefile"] = dir + "SWITCH";
    expect_same_bytes(encode(read_pcm(dir + "SWITCH.XXX"), switching), read_bytes(dir + "switch.bit"), 240,
                      "conformance/g729e/switch encoder");
}

TEST(G729EReplay, EncoderRates) {
    const auto pcm = read_pcm(zeps::codec_test::shared_dir() + "/speech/male.s16");
    const std::vector<std::int16_t> head(pcm.begin(), pcm.begin() + 40 * 80);
    // --rate 8: 80-bit frames that the decoder reads back.
    zepsc_cli::CodecOptions low = annex_e();
    low.values["rate"] = "8";
    const auto bits = encode(head, low);
    ASSERT_EQ(bits.size(), 40u * 164);
    EXPECT_EQ(decode(bits).size(), head.size());
    // A rate file of 8 kbit/s codes gives the same stream; one too short
    // for the speech, or with a code other than 0 and 1, is refused.
    const std::string path = temp_file("zeps_g729e_rates");
    const auto with_rates = [&](const std::vector<std::uint8_t>& codes) {
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(codes.data()),
                                                   static_cast<std::streamsize>(codes.size()));
        zepsc_cli::CodecOptions o = annex_e();
        o.values["ratefile"] = path;
        return encode(head, o);
    };
    std::vector<std::uint8_t> codes(2 * 40, 0);
    EXPECT_EQ(with_rates(codes), bits);
    EXPECT_THROW(with_rates(std::vector<std::uint8_t>(codes.begin(), codes.end() - 2)), zepsc_cli::CodecError);
    codes[10] = 2;
    EXPECT_THROW(with_rates(codes), zepsc_cli::CodecError);
    fs::remove(path);
}

/// A frame: SYNC, size, one word a bit (all zero bits but the mode bits).
std::vector<std::uint8_t> frame(unsigned size, unsigned mode, unsigned repeat, unsigned sync = 0x6B21) {
    std::vector<std::uint8_t> f = {static_cast<std::uint8_t>(sync & 0xff), static_cast<std::uint8_t>(sync >> 8),
                                   static_cast<std::uint8_t>(size & 0xff), static_cast<std::uint8_t>(size >> 8)};
    for (unsigned i = 0; i < size; ++i) {
        const unsigned w = (i == 0 && mode) || (i == 1 && repeat) ? 0x81 : 0x7F;
        f.push_back(static_cast<std::uint8_t>(w));
        f.push_back(0);
    }
    return f;
}

TEST(G729EReplay, CorruptStreams) {
    // A mode bit that differs from its repeat erases the frame: decoded as
    // the concealment of a lost frame, not as its (zero) codes.
    std::vector<std::uint8_t> good = frame(118, 0, 0), lost = frame(118, 1, 0);
    std::vector<std::uint8_t> stream = good, stream_lost = good;
    stream.insert(stream.end(), good.begin(), good.end());
    stream_lost.insert(stream_lost.end(), lost.begin(), lost.end());
    EXPECT_EQ(decode(stream).size(), 160u);
    EXPECT_NE(decode(stream), decode(stream_lost));
    // A zero word among the last two bit words is not checked (as the reference).
    std::vector<std::uint8_t> tail = good;
    tail[tail.size() - 2] = 0;
    EXPECT_EQ(decode(tail), decode(good));

    const auto& codec = zeps::codec_test::codec("g729");
    const auto fails = [&](const std::vector<std::uint8_t>& bits) {
        EXPECT_THROW(zepsc_cli::decode_all(codec, annex_e(), "bit", bits.data(), bits.size()), zepsc_cli::CodecError);
    };
    fails(frame(64, 0, 0));                                 // not an Annex E frame size
    fails(frame(118, 0, 0, 0x6B20));                        // bad SYNC
    fails(std::vector<std::uint8_t>(good.begin(), good.end() - 6));  // truncated
}

}  // namespace

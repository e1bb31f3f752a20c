// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR replays: every .amr stream of the shared reference set (eight
// modes, DTX on and off) decoded against the reference decoder's output and
// encoded from its speech against the reference encoder's stream, the
// reference package's check sequence in the 3GPP format (encoded and
// decoded), and corrupt input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/codecs/codec_replay.h"

namespace {

namespace fs = std::filesystem;
using zeps::codec_test::codec;
using zeps::codec_test::expect_same_bytes;
using zeps::codec_test::expect_same_pcm;
using zeps::codec_test::read_bytes;
using zeps::codec_test::read_pcm;
using zeps::codec_test::temp_file;

std::vector<std::int16_t> decode(const std::vector<std::uint8_t>& bits, const std::string& format) {
    return zepsc_cli::decode_all(codec("amr"), {}, format, bits.data(), bits.size());
}

std::vector<std::int16_t> decoded(const std::string& stem, const std::string& format) {
    return decode(read_bytes(stem + "." + format), format);
}

TEST(AmrDecoder, EveryReferenceStream) {
    const fs::path dir = fs::path(zeps::codec_test::shared_dir()) / "codecs" / "amr";
    std::vector<std::string> stems;
    for (const auto& e : fs::directory_iterator(dir))
        if (e.path().extension() == ".amr") stems.push_back((dir / e.path().stem()).string());
    std::sort(stems.begin(), stems.end());
    ASSERT_EQ(stems.size(), 60u);  // six inputs: eight modes, and 4.75 and 12.2 with DTX
    for (const std::string& stem : stems) {
        SCOPED_TRACE(stem);
        expect_same_pcm(decoded(stem, "amr"), read_pcm(stem + ".out"), 160, stem);
    }
}

TEST(AmrDecoder, CheckSequenceAllModesDtx) {
    const std::string stem = zeps::codec_test::shared_dir() + "/codecs/amr/conformance/spch_dos";
    expect_same_pcm(decoded(stem, "cod"), read_pcm(stem + ".out"), 160, stem);
}

// The encoder modes: every stream of these is replayed.
const std::vector<std::pair<std::string, std::string>> kEncoderModes = {
    {"mr475", "4.75"}, {"mr515", "5.15"}, {"mr59", "5.9"}, {"mr67", "6.7"},
    {"mr74", "7.4"},   {"mr795", "7.95"}, {"mr102", "10.2"}, {"mr122", "12.2"},
};

// Every stream, with and without DTX (VAD option 1), from its speech file.
TEST(AmrEncoder, EveryReferenceStream) {
    const fs::path dir = fs::path(zeps::codec_test::shared_dir()) / "codecs" / "amr";
    int streams = 0;
    for (const auto& e : fs::directory_iterator(dir)) {
        if (e.path().extension() != ".amr") continue;
        const std::string stem = e.path().stem().string();
        const std::size_t us = stem.find('_');
        const std::string input = stem.substr(0, us);
        std::string tag = stem.substr(us + 1);
        const bool dtx = tag.size() > 4 && tag.compare(tag.size() - 4, 4, "_dtx") == 0;
        if (dtx) tag.resize(tag.size() - 4);
        for (const auto& [name, rate] : kEncoderModes) {
            if (tag != name) continue;
            SCOPED_TRACE(stem);
            zepsc_cli::CodecOptions o;
            o.values["mode"] = rate;
            if (dtx) o.values["dtx"] = "";
            const std::vector<std::int16_t> pcm =
                read_pcm(zeps::codec_test::shared_dir() + "/speech/" + input + ".s16");
            const auto bits = zepsc_cli::encode_all(codec("amr"), o, "amr", pcm.data(), pcm.size());
            expect_same_bytes(bits, read_bytes(e.path().string()), 1, stem + " encoder");
            ++streams;
        }
    }
    EXPECT_EQ(streams, 6 * (static_cast<int>(kEncoderModes.size()) + 2));
}

// The reference package's check: the mode changes every frame, DTX on, the
// 3GPP test-sequence format (SID_FIRST, SID_UPDATE and NO_DATA frames).
TEST(AmrEncoder, CheckSequenceAllModesDtx) {
    const std::string dir = zeps::codec_test::shared_dir() + "/codecs/amr/conformance/";
    zepsc_cli::CodecOptions o;
    o.values["dtx"] = "";
    o.values["modefile"] = dir + "allmodes.txt";
    const std::vector<std::int16_t> pcm = read_pcm(dir + "spch_dos.inp");
    const auto bits = zepsc_cli::encode_all(codec("amr"), o, "cod", pcm.data(), pcm.size());
    expect_same_bytes(bits, read_bytes(dir + "spch_dos.cod"), 500, "spch_dos encoder");
    // The storage format of the same frames: the frame types, SID bits, STI
    // and mode indications of the reference's frames, and its decoded speech.
    const auto amr = zepsc_cli::encode_all(codec("amr"), o, "amr", pcm.data(), pcm.size());
    static constexpr int kBytes[9] = {12, 13, 15, 17, 19, 20, 26, 31, 5};
    std::size_t at = 6;
    int sid = 0;
    for (std::size_t f = 0; f < bits.size() / 500; f++) {
        auto word = [&](int i) { return static_cast<std::int16_t>(bits[500 * f + 2 * i] | bits[500 * f + 2 * i + 1] << 8); };
        ASSERT_LT(at, amr.size());
        const int ft = amr[at] >> 3 & 15, tx = word(0);
        ASSERT_EQ(ft, tx == 0 ? word(245) : tx == 3 ? 15 : 8) << "frame " << f;
        if (ft != 8) {
            at += 1 + (ft == 15 ? 0 : kBytes[ft]);
            continue;
        }
        const std::uint8_t* p = &amr[at + 1];
        for (int k = 0; k < 35; k++) ASSERT_EQ(p[k >> 3] >> (7 - (k & 7)) & 1, word(1 + k)) << "frame " << f;
        EXPECT_EQ(p[4] >> 4 & 1, tx == 2 ? 1 : 0) << "frame " << f;
        EXPECT_EQ(p[4] >> 1 & 7, word(245)) << "frame " << f;
        at += 6;
        sid++;
    }
    EXPECT_EQ(at, amr.size());
    EXPECT_GT(sid, 10);
    expect_same_pcm(decode(amr, "amr"), read_pcm(dir + "spch_dos.out"), 160, "spch_dos storage");
}

TEST(AmrEncoder, BadModeFileIsRefused) {
    const std::vector<std::int16_t> pcm(480, 0);
    const std::string path = temp_file("zepsc_amr_modes");
    for (const char* text : {"MR122\nMR99\nMR475\n", "MR122\n"}) {  // unknown name; fewer modes than frames
        std::FILE* f = std::fopen(path.c_str(), "wb");
        ASSERT_NE(f, nullptr);
        std::fputs(text, f);
        std::fclose(f);
        zepsc_cli::CodecOptions o;
        o.values["modefile"] = path;
        EXPECT_THROW(zepsc_cli::encode_all(codec("amr"), o, "amr", pcm.data(), pcm.size()), zepsc_cli::CodecError);
    }
    fs::remove(path);
    zepsc_cli::CodecOptions o;
    o.values["modefile"] = path + ".missing";
    EXPECT_THROW(zepsc_cli::encode_all(codec("amr"), o, "amr", pcm.data(), pcm.size()), zepsc_cli::CodecError);
}

// Corrupt input ends in a CodecError, never in a crash or a silent result.
TEST(AmrDecoder, CorruptInputIsReported) {
    const std::vector<std::uint8_t> good = read_bytes(zeps::codec_test::shared_dir() + "/codecs/amr/male_mr795.amr");
    ASSERT_GT(good.size(), 200u);
    struct Case {
        const char* what;
        std::vector<std::uint8_t> bytes;
    };
    auto with = [&](std::size_t at, std::uint8_t v) {
        auto b = good;
        b[at] = v;
        return b;
    };
    const std::vector<Case> cases = {
        {"header", with(2, 'X')},
        {"short header", {'#', '!', 'A'}},
        {"F bit", with(6, static_cast<std::uint8_t>(good[6] | 0x80))},
        {"reserved frame type 12", with(6, 12 << 3 | 4)},
        {"frame type 9", with(6, 9 << 3 | 4)},
        {"truncated frame", std::vector<std::uint8_t>(good.begin(), good.begin() + 6 + 1 + 10)},
        {"ToC byte alone", std::vector<std::uint8_t>(good.begin(), good.begin() + 6 + 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_THROW(decode(c.bytes, "amr"), zepsc_cli::CodecError);
    }
    std::vector<std::uint8_t> cod = read_bytes(zeps::codec_test::shared_dir() + "/codecs/amr/conformance/spch_dos.cod");
    ASSERT_GT(cod.size(), 1000u);
    const std::vector<Case> cod_cases = {
        {"frame type 8", [&] { auto b = cod; b[500] = 8; return b; }()},
        {"bit value 2", [&] { auto b = cod; b[502] = 2; return b; }()},
        {"mode 9", [&] { auto b = cod; b[490] = 9; b[491] = 0; return b; }()},
        {"truncated", std::vector<std::uint8_t>(cod.begin(), cod.begin() + 700)},
    };
    for (const Case& c : cod_cases) {
        SCOPED_TRACE(c.what);
        EXPECT_THROW(decode(c.bytes, "cod"), zepsc_cli::CodecError);
    }
}

// Random ToC bytes and frame bits of valid lengths decode without a fault
// (bad and lost frames, SID frames of any content, mode changes).
TEST(AmrDecoder, RandomFramesDecode) {
    std::uint32_t seed = 12345;
    auto next = [&] { return seed = seed * 1664525u + 1013904223u, seed >> 24; };
    static constexpr int kBytes[16] = {12, 13, 15, 17, 19, 20, 26, 31, 5, -1, -1, -1, -1, -1, -1, 0};
    std::vector<std::uint8_t> s = {'#', '!', 'A', 'M', 'R', '\n'};
    int frames = 0;
    while (frames < 400) {
        const int ft = static_cast<int>(next() % 16);
        if (kBytes[ft] < 0) continue;
        s.push_back(static_cast<std::uint8_t>(ft << 3 | (next() % 4 == 0 ? 0 : 4) | (next() & 3)));
        for (int i = 0; i < kBytes[ft]; i++) s.push_back(static_cast<std::uint8_t>(next()));
        frames++;
    }
    EXPECT_EQ(decode(s, "amr").size(), 400u * 160u);
}

}  // namespace

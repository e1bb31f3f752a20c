// SPDX-License-Identifier: BSD-3-Clause
// G.722.1 whole-codec replays through the public library: every shared
// speech stream (7 kHz at 24 and 32 kbit/s, Annex C at 24, 32 and 48
// kbit/s; encoder and decoder) and the ITU conformance sequences in both
// bitstream formats, with the frame-erasure sequences.
#include <gtest/gtest.h>

#include <string>

#include "tests/codecs/codec_replay.h"

namespace {

using zeps::codec_test::expect_same_bytes;
using zeps::codec_test::expect_same_pcm;
using zeps::codec_test::read_bytes;
using zeps::codec_test::read_pcm;

std::string dir() { return zeps::codec_test::shared_dir() + "/codecs/g7221"; }

zepsc_cli::CodecOptions options(const char* rate, bool annex_c) {
    zepsc_cli::CodecOptions o;
    o.values.emplace("rate", rate);
    if (annex_c) o.values.emplace("annex", "C");
    return o;
}

TEST(G7221Replay, SharedSpeechStreams) {
    const auto& codec = zeps::codec_test::codec("g7221");
    const struct {
        const char* folder;
        const char* rate;
        bool annex_c;
    } kSets[] = {{"g7221_24k", "24", false}, {"g7221_32k", "32", false}, {"annexc_24k", "24", true},
                 {"annexc_32k", "32", true}, {"annexc_48k", "48", true}};
    for (const auto& s : kSets)
        for (const char* name : {"female", "loud", "male", "noisy", "quiet", "tones"}) {
            const std::string what = std::string(s.folder) + "/" + name;
            const auto o = options(s.rate, s.annex_c);
            const auto pcm = read_pcm(dir() + (s.annex_c ? "/input32k/" : "/input16k/") + name + ".s16");
            const auto bits = read_bytes(dir() + "/" + what + ".pak");
            const std::size_t frame_bytes = static_cast<std::size_t>(std::stoi(s.rate)) * 20 / 8;
            expect_same_bytes(zepsc_cli::encode_all(codec, o, "pak", pcm.data(), pcm.size()), bits, frame_bytes,
                              what + " encoder");
            expect_same_pcm(zepsc_cli::decode_all(codec, o, "pak", bits.data(), bits.size()),
                            read_pcm(dir() + "/" + what + ".out"), s.annex_c ? 640 : 320, what + " decoder");
        }
}

TEST(G7221Replay, ConformanceSequences) {
    const auto& codec = zeps::codec_test::codec("g7221");
    const auto in = read_pcm(dir() + "/conformance/g722_1_enc_in.pcm");
    for (const char* rate : {"24", "32"}) {
        const std::string r = std::string(rate) + "000";
        const auto o = options(rate, false);
        for (const char* format : {"pak", "itu"}) {
            const std::string file = dir() + "/conformance/g722_1_enc_out_" + r + "." + format;
            const auto bits = read_bytes(file);
            expect_same_bytes(zepsc_cli::encode_all(codec, o, format, in.data(), in.size()), bits, 120, file);
            expect_same_pcm(zepsc_cli::decode_all(codec, o, format, bits.data(), bits.size()),
                            read_pcm(dir() + "/conformance/g722_1_dec_out_" + r + ".pcm"), 320,
                            file + " decoded");
        }
        const auto fe = read_bytes(dir() + "/conformance/g722_1_dec_in_" + r + "_fe.itu");
        expect_same_pcm(zepsc_cli::decode_all(codec, o, "itu", fe.data(), fe.size()),
                        read_pcm(dir() + "/conformance/g722_1_dec_out_" + r + "_fe.pcm"), 320, r + " erasures");
    }
}

}  // namespace

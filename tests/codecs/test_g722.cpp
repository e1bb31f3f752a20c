// SPDX-License-Identifier: BSD-3-Clause
// G.722 whole-codec replays through the public library: every shared speech
// stream (encoder, decoder modes 1 and 3), the ITU-T G.722 Appendix II full
// codec sequences (inpsp / codspw / outsp1..3) and the Appendix II sub-band
// sequences with the QMF bypassed (encoder bt1c*, decoder bt2r*/bt1d3 in
// modes 1 to 3), the last with their reset words.
#include <gtest/gtest.h>

#include <filesystem>
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

std::string dir() { return zeps::codec_test::shared_dir() + "/codecs/g722"; }
std::string seq(const std::string& f) { return dir() + "/conformance/itu_g722_appII_le/" + f; }

zepsc_cli::CodecOptions mode_option(int mode) {
    zepsc_cli::CodecOptions o;
    o.values["mode"] = std::to_string(mode);
    return o;
}

std::vector<std::uint8_t> low_bytes(const std::vector<std::int16_t>& words) {
    std::vector<std::uint8_t> b(words.size());
    for (std::size_t i = 0; i < words.size(); ++i) b[i] = static_cast<std::uint8_t>(words[i]);
    return b;
}

TEST(G722Replay, SharedSpeechStreams) {
    const auto& codec = zeps::codec_test::codec("g722");
    int streams = 0;
    for (const auto& e : fs::directory_iterator(dir())) {
        if (e.path().extension() != ".g722") continue;
        const std::string name = e.path().stem();
        const auto pcm = read_pcm(dir() + "/input16k/" + name + ".s16");
        const auto want = read_bytes(e.path());
        expect_same_bytes(zepsc_cli::encode_all(codec, {}, "g722", pcm.data(), pcm.size()), want, 160,
                          name + " encoder");
        for (int mode : {1, 3}) {
            const auto out = zepsc_cli::decode_all(codec, mode_option(mode), "g722", want.data(), want.size());
            expect_same_pcm(out, read_pcm(dir() + "/" + name + "_mode" + std::to_string(mode) + ".out"), 320,
                            name + " decoder mode " + std::to_string(mode));
        }
        ++streams;
    }
    EXPECT_EQ(streams, 6);
}

TEST(G722Replay, AppendixIIFullCodec) {
    const auto& codec = zeps::codec_test::codec("g722");
    const auto in = read_pcm(seq("inpsp.bin"));
    const auto codes = low_bytes(read_pcm(seq("codspw.cod")));
    expect_same_bytes(zepsc_cli::encode_all(codec, {}, "g722", in.data(), in.size()), codes, 160, "inpsp encoder");
    for (int mode : {1, 2, 3}) {
        const auto out = zepsc_cli::decode_all(codec, mode_option(mode), "g722", codes.data(), codes.size());
        expect_same_pcm(out, read_pcm(seq("outsp" + std::to_string(mode) + ".bin")), 320,
                        "codspw decoder mode " + std::to_string(mode));
    }
}

// The sub-band test sequences: a word with bit 0 set is a reset (its
// expected output word is 1); the other input words carry the sample in
// bits 1-15 (encoder) or the code word in the high byte (decoder), and the
// expected outputs the code word in the high byte (encoder) or the band
// sample shifted left by one (decoder).
struct Stream {
    std::vector<std::uint8_t> state;
    explicit Stream(bool decoder) {
        Zep32s n = 0;
        decoder ? zepsSBADPCMDecodeStateSize_G722_16s(&n) : zepsSBADPCMEncodeStateSize_G722_16s(&n);
        state.resize(static_cast<std::size_t>(n));
    }
    ZepG722EncodeState* enc() { return reinterpret_cast<ZepG722EncodeState*>(state.data()); }
    ZepG722DecodeState* dec() { return reinterpret_cast<ZepG722DecodeState*>(state.data()); }
};

std::vector<std::int16_t> run_encoder_sequence(const std::vector<std::int16_t>& in) {
    Stream s(false);
    std::vector<std::int16_t> out(in.size());
    for (std::size_t i = 0; i < in.size(); ++i) {
        if (in[i] & 1) {
            EXPECT_EQ(zepsSBADPCMEncodeInit_G722_16s(s.enc()), zepStsNoErr);
            out[i] = 1;
            continue;
        }
        const Zep16s x = static_cast<Zep16s>(in[i] >> 1);
        Zep16s code = -1;
        EXPECT_EQ(zepsSBADPCMEncodeBands_G722_16s(&x, &x, &code, 1, s.enc()), zepStsNoErr);
        out[i] = static_cast<std::int16_t>(code << 8);
    }
    return out;
}

void run_decoder_sequence(const std::vector<std::int16_t>& in, int mode, std::vector<std::int16_t>& low,
                          std::vector<std::int16_t>& high) {
    Stream s(true);
    low.assign(in.size(), 0);
    high.assign(in.size(), 0);
    for (std::size_t i = 0; i < in.size(); ++i) {
        if (in[i] & 1) {
            EXPECT_EQ(zepsSBADPCMDecodeInit_G722_16s(s.dec()), zepStsNoErr);
            low[i] = high[i] = 1;
            continue;
        }
        const Zep16s code = static_cast<Zep16s>((in[i] >> 8) & 0xFF);
        Zep16s rl = 0, rh = 0;
        EXPECT_EQ(zepsSBADPCMDecodeBands_G722_16s(&code, &rl, &rh, mode, 1, s.dec()), zepStsNoErr);
        low[i] = static_cast<std::int16_t>(rl * 2);
        high[i] = static_cast<std::int16_t>(rh * 2);
    }
}

TEST(G722Replay, AppendixIISubbandEncoder) {
    const struct {
        const char* in;
        const char* codes;
    } kCases[] = {{"bt1c1.xmt", "bt2r1.cod"}, {"bt1c2.xmt", "bt2r2.cod"}};
    for (const auto& c : kCases)
        expect_same_pcm(run_encoder_sequence(read_pcm(seq(c.in))), read_pcm(seq(c.codes)), 512, c.in);
}

TEST(G722Replay, AppendixIISubbandDecoder) {
    const struct {
        const char* codes;
        const char* low;  // + mode digit
        const char* high;
    } kCases[] = {{"bt2r1.cod", "bt3l1.rc", "bt3h1.rc0"},
                  {"bt2r2.cod", "bt3l2.rc", "bt3h2.rc0"},
                  {"bt1d3.cod", "bt3l3.rc", "bt3h3.rc0"}};
    for (const auto& c : kCases) {
        const auto in = read_pcm(seq(c.codes));
        for (int mode : {1, 2, 3}) {
            std::vector<std::int16_t> low, high;
            run_decoder_sequence(in, mode, low, high);
            const std::string what = std::string(c.codes) + " mode " + std::to_string(mode);
            expect_same_pcm(low, read_pcm(seq(c.low + std::to_string(mode))), 512, what + " lower band");
            expect_same_pcm(high, read_pcm(seq(c.high)), 512, what + " higher band");
        }
    }
}

}  // namespace

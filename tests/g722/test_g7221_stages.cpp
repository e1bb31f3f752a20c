// G.722.1 encoder and decoder stages chained as the reference codec chains
// them, against the reference bitstreams and outputs in shared/codecs/g7221
// (7 kHz at 24 and 32 kbit/s with the ITU conformance sequences, Annex C at
// 24, 32 and 48 kbit/s).
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "g722/g7221_decoder.h"
#include "g722/g7221_encoder.h"
#include "g722/g7221_mlt.h"
#include "tests/vec_reader.h"

namespace {

namespace g = zeps::ref::g7221;
using zeps::ref::Word16;

std::vector<Word16> read_words(const std::string& rel) {
    std::vector<Word16> v;
    std::FILE* f = std::fopen(zeps::test::shared_path(rel).c_str(), "rb");
    EXPECT_NE(f, nullptr) << rel;
    if (!f) return v;
    Word16 buf[4096];
    for (std::size_t k; (k = std::fread(buf, 2, 4096, f)) > 0;) v.insert(v.end(), buf, buf + k);
    std::fclose(f);
    return v;
}

std::vector<Word16> encode(const std::vector<Word16>& pcm, int bits, bool annex_c) {
    const int n = annex_c ? 640 : 320;
    std::vector<Word16> history(static_cast<std::size_t>(n), 0), coefs(static_cast<std::size_t>(n)), out;
    std::vector<Word16> words(static_cast<std::size_t>(bits / 16));
    for (std::size_t at = 0; at + static_cast<std::size_t>(n) <= pcm.size(); at += static_cast<std::size_t>(n)) {
        const int shift = g::samples_to_rmlt(&pcm[at], history.data(), coefs.data(), n);
        g::encode_frame(coefs.data(), shift, bits, annex_c, words.data());
        out.insert(out.end(), words.begin(), words.end());
    }
    return out;
}

struct Set {
    const char* folder;
    int bits;
    bool annex_c;
};
constexpr Set kSets[] = {{"g7221_24k", 480, false}, {"g7221_32k", 640, false}, {"annexc_24k", 480, true},
                         {"annexc_32k", 640, true}, {"annexc_48k", 960, true}};
constexpr const char* kNames[] = {"female", "loud", "male", "noisy", "quiet", "tones"};

TEST(G7221Stages, EncoderMatchesReferenceStreams) {
    for (int bits : {480, 640}) {
        const auto want = read_words("codecs/g7221/conformance/g722_1_enc_out_" + std::to_string(bits * 50) + ".pak");
        const auto got = encode(read_words("codecs/g7221/conformance/g722_1_enc_in.pcm"), bits, false);
        EXPECT_TRUE(got == want) << bits;
    }
    for (const Set& s : kSets)
        for (const char* name : kNames) {
            const auto pcm = read_words(std::string("codecs/g7221/") + (s.annex_c ? "input32k/" : "input16k/") + name + ".s16");
            const auto want = read_words(std::string("codecs/g7221/") + s.folder + "/" + name + ".pak");
            const auto got = encode(pcm, s.bits, s.annex_c);
            std::size_t i = 0;
            while (i < got.size() && i < want.size() && got[i] == want[i]) ++i;
            EXPECT_TRUE(got == want) << s.folder << "/" << name << " first difference at word " << i << " (frame "
                                     << i / static_cast<std::size_t>(s.bits / 16) << ")";
        }
}

/// Decodes frames of bits / 16 words; erased[i] marks frame i as lost.
std::vector<Word16> decode(const std::vector<Word16>& words, int bits, bool annex_c, const std::vector<bool>& erased) {
    const int n = annex_c ? 640 : 320;
    const std::size_t per = static_cast<std::size_t>(bits / 16);
    g::DecoderMemory m;
    g::reset(m);
    std::vector<Word16> coefs(static_cast<std::size_t>(n)), old(static_cast<std::size_t>(n / 2), 0),
        frame(static_cast<std::size_t>(n)), out;
    for (std::size_t f = 0; (f + 1) * per <= words.size(); ++f) {
        const bool lost = f < erased.size() && erased[f];
        const int shift = g::decode_frame(&words[f * per], bits, annex_c, lost, m, coefs.data());
        g::rmlt_to_samples(coefs.data(), old.data(), frame.data(), n, shift);
        for (auto& x : frame) x = static_cast<Word16>(x & 0xFFFC);
        out.insert(out.end(), frame.begin(), frame.end());
    }
    return out;
}

/// The G.192 serial form: per frame a sync word (0x6B21, else erased), the
/// bit count, one word per bit (0x7F = 0, 0x81 = 1).
void from_g192(const std::vector<Word16>& serial, int bits, std::vector<Word16>& words, std::vector<bool>& erased) {
    const std::size_t per = static_cast<std::size_t>(bits + 2);
    for (std::size_t f = 0; (f + 1) * per <= serial.size(); ++f) {
        const Word16* s = &serial[f * per];
        erased.push_back(s[0] != 0x6B21);
        for (int w = 0; w < bits / 16; ++w) {
            int v = 0;
            for (int b = 0; b < 16; ++b) {
                const Word16 x = s[2 + 16 * w + b];
                if (x != 0x7F && x != 0x81) erased.back() = true;
                v = (v << 1) | (x == 0x81);
            }
            words.push_back(static_cast<Word16>(v));
        }
    }
}

TEST(G7221Stages, DecoderMatchesReferenceOutputs) {
    for (int bits : {480, 640}) {
        const std::string rate = std::to_string(bits * 50);
        const auto want = read_words("codecs/g7221/conformance/g722_1_dec_out_" + rate + ".pcm");
        EXPECT_TRUE(decode(read_words("codecs/g7221/conformance/g722_1_enc_out_" + rate + ".pak"), bits, false, {}) == want) << rate;
        std::vector<Word16> words;
        std::vector<bool> erased;
        from_g192(read_words("codecs/g7221/conformance/g722_1_dec_in_" + rate + "_fe.itu"), bits, words, erased);
        EXPECT_TRUE(decode(words, bits, false, erased) ==
                    read_words("codecs/g7221/conformance/g722_1_dec_out_" + rate + "_fe.pcm")) << rate << " erasures";
    }
    for (const Set& s : kSets)
        for (const char* name : kNames) {
            const auto got = decode(read_words(std::string("codecs/g7221/") + s.folder + "/" + name + ".pak"), s.bits, s.annex_c, {});
            const auto want = read_words(std::string("codecs/g7221/") + s.folder + "/" + name + ".out");
            std::size_t i = 0;
            while (i < got.size() && i < want.size() && got[i] == want[i]) ++i;
            EXPECT_TRUE(got == want) << s.folder << "/" << name << " first difference at sample " << i;
        }
}

}  // namespace

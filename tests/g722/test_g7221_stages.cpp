// SPDX-License-Identifier: BSD-3-Clause
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
#include "frame/variants.h"
#include "tests/variant_check.h"
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
    ZEPS_SKIP_WITHOUT_SHARED_DATA("codecs/g7221");
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
    ZEPS_SKIP_WITHOUT_SHARED_DATA("codecs/g7221");
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

// ---- both builds

namespace {

constexpr Zep32s kBits[] = {320, 480, 640, 960};

/// Speech-like input: a shared file's frame, scaled, or noise.
std::vector<Zep16s> some_frame(zeps::test::Rng& rng, int n) {
    static const auto speech = read_words("codecs/g7221/input32k/loud.s16");
    std::vector<Zep16s> v(static_cast<std::size_t>(n));
    const std::size_t at = static_cast<std::size_t>(rng.uniform(0, static_cast<std::int64_t>(speech.size()) - n));
    const int shift = static_cast<int>(rng.uniform(0, 8));
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = rng.chance(4) ? rng.s16() : static_cast<Zep16s>(speech[at + i] >> shift);
    return v;
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsMLTFwd_G7221_16s) {
    const Zep32s len = rng.chance(8) ? static_cast<Zep32s>(rng.uniform(-1, 700)) : (rng.chance(2) ? 320 : 640);
    const int n = len == 640 ? 640 : 320;
    auto src = some_frame(rng, 640), ha = some_frame(rng, 640), hb = ha;
    std::vector<Zep16s> da(640, 0x5EE5), db(640, 0x5EE5);
    Zep32s sa = 77, sb = 77;
    EXPECT_EQ(zeps::u8::zepsMLTFwd_G7221_16s(src.data(), ha.data(), da.data(), len, &sa),
              zeps::n8::zepsMLTFwd_G7221_16s(src.data(), hb.data(), db.data(), len, &sb));
    (void)n;
    EXPECT_EQ(sa, sb);
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(ha, hb));
}

ZEPS_VARIANT_CHECK(zepsMLTInv_G7221_16s) {
    const Zep32s len = rng.chance(8) ? static_cast<Zep32s>(rng.uniform(-1, 700)) : (rng.chance(2) ? 320 : 640);
    const Zep32s shift = static_cast<Zep32s>(rng.uniform(-3, 11));
    auto src = some_frame(rng, 640), ha = some_frame(rng, 320), hb = ha;
    std::vector<Zep16s> da(640, 0x5EE5), db(640, 0x5EE5);
    EXPECT_EQ(zeps::u8::zepsMLTInv_G7221_16s(src.data(), ha.data(), da.data(), len, shift),
              zeps::n8::zepsMLTInv_G7221_16s(src.data(), hb.data(), db.data(), len, shift));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(ha, hb));
}

ZEPS_VARIANT_CHECK(zepsEncode_G7221_16s) {
    const Zep32s bits = rng.chance(8) ? static_cast<Zep32s>(rng.uniform(300, 1000)) : kBits[rng.uniform(0, 3)];
    const Zep32s regions = rng.chance(8) ? static_cast<Zep32s>(rng.uniform(0, 30)) : (rng.chance(2) ? 14 : 28);
    const Zep32s shift = static_cast<Zep32s>(rng.uniform(-2, 10));
    // Coefficients as the MLT makes them, or arbitrary ones.
    std::vector<Zep16s> coefs(640), hist(640, 0);
    if (rng.chance(3)) {
        coefs = some_frame(rng, 640);
    } else {
        Zep32s s = 0;
        zeps::u8::zepsMLTFwd_G7221_16s(some_frame(rng, 640).data(), hist.data(), coefs.data(), regions == 28 ? 640 : 320, &s);
    }
    std::vector<Zep16s> da(64, 0x5EE5), db(64, 0x5EE5);
    EXPECT_EQ(zeps::u8::zepsEncode_G7221_16s(bits, regions, coefs.data(), shift, da.data()),
              zeps::n8::zepsEncode_G7221_16s(bits, regions, coefs.data(), shift, db.data()));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
}

ZEPS_VARIANT_CHECK(zepsDecodeStateSize_G7221_16s) {
    Zep32s a = 0, b = 0;
    EXPECT_EQ(zeps::u8::zepsDecodeStateSize_G7221_16s(&a), zeps::n8::zepsDecodeStateSize_G7221_16s(&b));
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, 1296);
    EXPECT_EQ(zeps::u8::zepsDecodeStateSize_G7221_16s(nullptr), zeps::n8::zepsDecodeStateSize_G7221_16s(nullptr));
}

ZEPS_VARIANT_CHECK(zepsDecodeInit_G7221_16s) {
    std::vector<std::uint8_t> a(1296), b;
    for (auto& x : a) x = static_cast<std::uint8_t>(rng.next());
    b = a;
    EXPECT_EQ(zeps::u8::zepsDecodeInit_G7221_16s(reinterpret_cast<ZepG7221DecodeState*>(a.data())),
              zeps::n8::zepsDecodeInit_G7221_16s(reinterpret_cast<ZepG7221DecodeState*>(b.data())));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsDecode_G7221_16s) {
    const Zep32s bits = rng.chance(8) ? static_cast<Zep32s>(rng.uniform(300, 1000)) : kBits[rng.uniform(0, 3)];
    const Zep32s regions = rng.chance(8) ? static_cast<Zep32s>(rng.uniform(0, 30)) : (rng.chance(2) ? 14 : 28);
    const Zep32s erased = rng.chance(6) ? static_cast<Zep32s>(rng.uniform(-1, 2)) : 0;
    std::vector<std::uint8_t> sa(1296);
    zeps::u8::zepsDecodeInit_G7221_16s(reinterpret_cast<ZepG7221DecodeState*>(sa.data()));
    auto sb = sa;
    // A valid frame of the encoder, or one with some bits flipped, or noise.
    std::vector<Zep16s> words(64, 0);
    const int valid_bits = bits >= 320 && bits <= 960 && bits % 16 == 0 ? bits : 480;
    std::vector<Zep16s> coefs(640), hist(640, 0);
    Zep32s s = 0;
    zeps::u8::zepsMLTFwd_G7221_16s(some_frame(rng, 640).data(), hist.data(), coefs.data(), regions == 28 ? 640 : 320, &s);
    zeps::u8::zepsEncode_G7221_16s(valid_bits, regions == 28 ? 28 : 14, coefs.data(), s, words.data());
    const int damage = static_cast<int>(rng.uniform(0, 3));
    for (int k = 0; k < damage * 8; ++k) words[static_cast<std::size_t>(rng.uniform(0, valid_bits / 16 - 1))] ^= static_cast<Zep16s>(1 << rng.uniform(0, 15));
    if (rng.chance(5)) for (auto& w : words) w = rng.s16();
    std::vector<Zep16s> da(640, 0x5EE5), db(640, 0x5EE5);
    Zep32s ma = 77, mb = 77;
    for (int frame = 0; frame < 3; ++frame) {  // concealment carries state across frames
        EXPECT_EQ(zeps::u8::zepsDecode_G7221_16s(words.data(), bits, reinterpret_cast<ZepG7221DecodeState*>(sa.data()),
                                                 regions, da.data(), &ma, erased),
                  zeps::n8::zepsDecode_G7221_16s(words.data(), bits, reinterpret_cast<ZepG7221DecodeState*>(sb.data()),
                                                 regions, db.data(), &mb, erased));
        EXPECT_EQ(ma, mb);
        EXPECT_TRUE(zeps::test::same_bytes(da, db));
        EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
        words[static_cast<std::size_t>(frame)] ^= 0x0100;
    }
}

// SPDX-License-Identifier: BSD-3-Clause
// The G.722.1 stage exports: chained, they decode every shared stream exactly
// as the whole-frame decoder does (the encoder chain is the tool's, replayed
// by the codec tests), and both builds agree on them for valid, corrupt and
// out-of-range arguments.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"
#include "tests/vec_reader.h"

namespace {

std::vector<Zep16s> read_words(const std::string& rel) {
    std::vector<Zep16s> v;
    std::FILE* f = std::fopen(zeps::test::shared_path(rel).c_str(), "rb");
    EXPECT_NE(f, nullptr) << rel;
    if (!f) return v;
    Zep16s buf[4096];
    for (std::size_t k; (k = std::fread(buf, 2, 4096, f)) > 0;) v.insert(v.end(), buf, buf + k);
    std::fclose(f);
    return v;
}

ZepG7221DecodeState* as_state(std::vector<std::uint8_t>& b) { return reinterpret_cast<ZepG7221DecodeState*>(b.data()); }

TEST(G7221StageExports, DecoderChainEqualsWholeFrameDecoder) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("codecs/g7221");
    struct Set {
        const char* folder;
        int bits, regions;
    };
    const Set sets[] = {{"g7221_24k", 480, 14}, {"g7221_32k", 640, 14}, {"annexc_24k", 480, 28},
                        {"annexc_32k", 640, 28}, {"annexc_48k", 960, 28}};
    int concealed = 0;
    for (const Set& s : sets)
        for (const char* name : {"female", "loud", "male", "noisy", "quiet", "tones"}) {
            const auto words = read_words(std::string("codecs/g7221/") + s.folder + "/" + name + ".pak");
            std::vector<std::uint8_t> whole(1296), chain(1296);
            zeps::u8::zepsDecodeInit_G7221_16s(as_state(whole));
            zeps::u8::zepsDecodeInit_G7221_16s(as_state(chain));
            const std::size_t per = static_cast<std::size_t>(s.bits / 16);
            std::vector<Zep16s> last_good(640, 0);
            Zep32s last_shift = 0;
            for (std::size_t f = 0; (f + 1) * per <= words.size(); ++f) {
                const Zep16s* w = &words[f * per];
                std::vector<Zep16s> want(640, 0x5EE5), got(640, 0x5EE5);  // 320 or 640 written
                Zep32s want_shift = 0, shift = 0, left = 0, control = 0;
                ASSERT_EQ(zeps::u8::zepsDecode_G7221_16s(w, s.bits, as_state(whole), s.regions, want.data(),
                                                         &want_shift, 0),
                          zepStsNoErr);
                Zep16s std_dev[28], power[28], categories[28];
                ASSERT_EQ(zeps::u8::zepsDecodeEnvelope_G7221_16s(w, s.bits, &left, s.regions, std_dev, power, &shift),
                          zepStsNoErr);
                ASSERT_EQ(zeps::u8::zepsDecodeCategories_G7221_16s(w, s.bits, &left, s.regions, power, categories,
                                                                   &control),
                          zepStsNoErr);
                ASSERT_EQ(zeps::u8::zepsDecodeVectorQuantMLT_G7221_16s(w, s.bits, &left, as_state(chain), s.regions,
                                                                       std_dev, categories, got.data()),
                          zepStsNoErr);
                ASSERT_GE(left, -1);  // -1: the last region ran out of bits, as the reference counts it
                if (shift == want_shift && got == want) {
                    last_good = want;
                    last_shift = want_shift;
                    continue;
                }
                // The frame checks found the frame corrupt (the reference's
                // own streams have a few that run out of bits): the whole
                // decoder repeats the last good frame, once.
                ++concealed;
                ASSERT_EQ(want_shift, last_shift) << s.folder << "/" << name << " frame " << f;
                ASSERT_TRUE(want == last_good) << s.folder << "/" << name << " frame " << f;
                std::fill(last_good.begin(), last_good.begin() + s.regions * 20, 0);
                last_shift = 0;
            }
        }
    EXPECT_LT(concealed, 20);
}

}  // namespace

// ---- both builds

namespace {

constexpr Zep32s kBits[] = {320, 480, 640, 960};

Zep32s some_bits(zeps::test::Rng& rng) {
    return rng.chance(8) ? static_cast<Zep32s>(rng.uniform(300, 1000)) : kBits[rng.uniform(0, 3)];
}
Zep32s some_regions(zeps::test::Rng& rng) {
    return rng.chance(8) ? static_cast<Zep32s>(rng.uniform(0, 30)) : (rng.chance(2) ? 14 : 28);
}
std::vector<Zep16s> values(zeps::test::Rng& rng, std::size_t n, int lo, int hi, int wild_one_in = 10) {
    std::vector<Zep16s> v(n);
    for (auto& x : v) x = rng.chance(static_cast<unsigned>(wild_one_in) * 8) ? rng.s16() : static_cast<Zep16s>(rng.uniform(lo, hi));
    return v;
}
/// MLT coefficients of some input (the transform's, or arbitrary values).
std::vector<Zep16s> some_coefs(zeps::test::Rng& rng, Zep32s* shift) {
    std::vector<Zep16s> src(640), hist(640, 0), coefs(640);
    for (auto& x : src) x = static_cast<Zep16s>(rng.s16() >> rng.uniform(0, 12));
    zeps::u8::zepsMLTFwd_G7221_16s(src.data(), hist.data(), coefs.data(), 640, shift);
    if (rng.chance(4))
        for (auto& x : coefs) x = rng.s16();
    return coefs;
}
/// A frame the encoder made, with some bits flipped, or noise.
std::vector<Zep16s> some_frame(zeps::test::Rng& rng, Zep32s bits, Zep32s regions) {
    const Zep32s valid = bits >= 320 && bits <= 960 && bits % 16 == 0 ? bits : 480;
    Zep32s shift = 0;
    const auto coefs = some_coefs(rng, &shift);
    std::vector<Zep16s> words(64, 0);
    zeps::u8::zepsEncode_G7221_16s(valid, regions == 28 ? 28 : 14, coefs.data(), shift, words.data());
    for (int k = 0, n = static_cast<int>(rng.uniform(0, 3)) * 8; k < n; ++k)
        words[static_cast<std::size_t>(rng.uniform(0, valid / 16 - 1))] ^= static_cast<Zep16s>(1 << rng.uniform(0, 15));
    if (rng.chance(5))
        for (auto& w : words) w = rng.s16();
    return words;
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsRegionPowerQuant_G7221_16s) {
    Zep32s shift = 0;
    const auto coefs = some_coefs(rng, &shift);
    if (rng.chance(6)) shift = static_cast<Zep32s>(rng.uniform(-3, 11));
    const Zep32s regions = some_regions(rng);
    std::vector<Zep16s> a(3 * 28, 0x5EE5), b = a;
    Zep32s ea = 77, eb = 77;
    EXPECT_EQ(zeps::u8::zepsRegionPowerQuant_G7221_16s(coefs.data(), shift, a.data(), a.data() + 28, a.data() + 56,
                                                       regions, &ea),
              zeps::n8::zepsRegionPowerQuant_G7221_16s(coefs.data(), shift, b.data(), b.data() + 28, b.data() + 56,
                                                       regions, &eb));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
    EXPECT_EQ(ea, eb);
}

ZEPS_VARIANT_CHECK(zepsCategorize_G7221_16s) {
    const Zep32s regions = some_regions(rng);
    const Zep32s available = rng.chance(10) ? static_cast<Zep32s>(rng.uniform(-40000, 40000))
                                            : static_cast<Zep32s>(rng.uniform(-150, 950));
    const auto power = values(rng, 28, -15, 24, 2);
    std::vector<Zep16s> a(28 + 31, 0x5EE5), b = a;
    EXPECT_EQ(zeps::u8::zepsCategorize_G7221_16s(available, regions, power.data(), a.data(), a.data() + 28),
              zeps::n8::zepsCategorize_G7221_16s(available, regions, power.data(), b.data(), b.data() + 28));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsVectorQuantMLT_G7221_16s) {
    const Zep32s bits = some_bits(rng), regions = some_regions(rng);
    Zep32s shift = 0;
    const auto coefs = some_coefs(rng, &shift);
    const int n = regions == 28 ? 28 : 14;
    // The stages' own envelope and categories, or arbitrary ones in and out of range.
    std::vector<Zep16s> drp_bits(28), drp_codes(28), power(28), categories(28), balances(31);
    Zep32s envelope = 0;
    zeps::u8::zepsRegionPowerQuant_G7221_16s(coefs.data(), shift, drp_bits.data(), drp_codes.data(), power.data(), n,
                                             &envelope);
    zeps::u8::zepsCategorize_G7221_16s(bits - envelope - (n == 28 ? 5 : 4), n, power.data(), categories.data(),
                                       balances.data());
    if (rng.chance(3)) {
        power = values(rng, 28, -15, 24);
        categories = values(rng, 28, 0, 7);
        balances = values(rng, 31, 0, n - 1);
        drp_bits = values(rng, 28, 0, 16);
        drp_codes = values(rng, 28, -32768, 32767);
    }
    if (rng.chance(8)) shift = static_cast<Zep32s>(rng.uniform(-3, 11));
    auto ca = categories, cb = categories;
    std::vector<Zep16s> da(64, 0x5EE5), db(64, 0x5EE5);
    Zep32s ka = 77, kb = 77;
    EXPECT_EQ(zeps::u8::zepsVectorQuantMLT_G7221_16s(bits, regions, coefs.data(), shift, power.data(), ca.data(),
                                                     balances.data(), drp_bits.data(), drp_codes.data(), &ka, da.data()),
              zeps::n8::zepsVectorQuantMLT_G7221_16s(bits, regions, coefs.data(), shift, power.data(), cb.data(),
                                                     balances.data(), drp_bits.data(), drp_codes.data(), &kb, db.data()));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(ca, cb));
    EXPECT_EQ(ka, kb);
}

ZEPS_VARIANT_CHECK(zepsDecodeEnvelope_G7221_16s) {
    const Zep32s bits = some_bits(rng), regions = some_regions(rng);
    const auto words = some_frame(rng, bits, regions);
    std::vector<Zep16s> a(56, 0x5EE5), b = a;
    Zep32s la = 77, lb = 77, sa = 77, sb = 77;
    EXPECT_EQ(zeps::u8::zepsDecodeEnvelope_G7221_16s(words.data(), bits, &la, regions, a.data(), a.data() + 28, &sa),
              zeps::n8::zepsDecodeEnvelope_G7221_16s(words.data(), bits, &lb, regions, b.data(), b.data() + 28, &sb));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
    EXPECT_EQ(la, lb);
    EXPECT_EQ(sa, sb);
}

ZEPS_VARIANT_CHECK(zepsDecodeCategories_G7221_16s) {
    const Zep32s bits = some_bits(rng), regions = some_regions(rng);
    const auto words = some_frame(rng, bits, regions);
    const auto power = values(rng, 28, -15, 24, 3);
    Zep32s la = rng.chance(6) ? static_cast<Zep32s>(rng.uniform(-1100, 1000)) : static_cast<Zep32s>(rng.uniform(0, 320));
    Zep32s lb = la, ka = 77, kb = 77;
    std::vector<Zep16s> a(28, 0x5EE5), b = a;
    EXPECT_EQ(zeps::u8::zepsDecodeCategories_G7221_16s(words.data(), bits, &la, regions, power.data(), a.data(), &ka),
              zeps::n8::zepsDecodeCategories_G7221_16s(words.data(), bits, &lb, regions, power.data(), b.data(), &kb));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
    EXPECT_EQ(la, lb);
    EXPECT_EQ(ka, kb);
}

ZEPS_VARIANT_CHECK(zepsDecodeVectorQuantMLT_G7221_16s) {
    const Zep32s bits = some_bits(rng), regions = some_regions(rng);
    const auto words = some_frame(rng, bits, regions);
    const auto std_dev = values(rng, 28, 0, 32767, 2);
    auto ca = values(rng, 28, 0, 7, 3), cb = ca;
    std::vector<std::uint8_t> sa(1296);
    zeps::u8::zepsDecodeInit_G7221_16s(as_state(sa));
    for (auto& x : sa) x = static_cast<std::uint8_t>(x ^ (rng.chance(2) ? rng.next() : 0));
    auto sb = sa;
    Zep32s la = rng.chance(6) ? static_cast<Zep32s>(rng.uniform(-1100, 1000)) : static_cast<Zep32s>(rng.uniform(100, 320));
    Zep32s lb = la;
    std::vector<Zep16s> da(640, 0x5EE5), db(640, 0x5EE5);
    EXPECT_EQ(zeps::u8::zepsDecodeVectorQuantMLT_G7221_16s(words.data(), bits, &la, as_state(sa), regions,
                                                           std_dev.data(), ca.data(), da.data()),
              zeps::n8::zepsDecodeVectorQuantMLT_G7221_16s(words.data(), bits, &lb, as_state(sb), regions,
                                                           std_dev.data(), cb.data(), db.data()));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(ca, cb));
    EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
    EXPECT_EQ(la, lb);
}

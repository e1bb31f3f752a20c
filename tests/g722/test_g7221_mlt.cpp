// SPDX-License-Identifier: BSD-3-Clause
// G.722.1 MLT and inverse MLT (7 kHz 320-point and 14 kHz 640-point frames)
// against the fixed-point reference: a 64-bit FNV-1a digest of every
// mag_shift, coefficient and resynthesised sample over shared speech (the
// conformance input and loud speech at 16 kHz, male and loud at 32 kHz), and
// of the inverse transform on arbitrary coefficients and scalings, where its
// saturations occur. The digests were taken from the reference routines
// (samples_to_rmlt_coefs, rmlt_coefs_to_samples) run on the same data.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "g722/g7221_mlt.h"
#include "tests/vec_reader.h"

namespace {

namespace g = zeps::ref::g7221;
using zeps::ref::Word16;

struct Digest {
    std::uint64_t h = 1469598103934665603ull;
    void mix(int v) {
        h ^= static_cast<std::uint16_t>(v);
        h *= 1099511628211ull;
    }
};

std::vector<Word16> read_file(const std::string& rel) {
    std::vector<Word16> v;
    std::FILE* f = std::fopen(zeps::test::shared_path(rel).c_str(), "rb");
    EXPECT_NE(f, nullptr) << rel;
    if (!f) return v;
    Word16 buf[4096];
    for (std::size_t k; (k = std::fread(buf, 2, 4096, f)) > 0;) v.insert(v.end(), buf, buf + k);
    std::fclose(f);
    return v;
}

/// Forward MLT, then the inverse on its output, frame by frame.
std::uint64_t round_trip_digest(const std::vector<Word16>& pcm, int n, int& frames) {
    Digest d;
    std::vector<Word16> old(static_cast<std::size_t>(n), 0), coefs(static_cast<std::size_t>(n)),
        old_out(static_cast<std::size_t>(n / 2), 0), out(static_cast<std::size_t>(n));
    frames = 0;
    for (std::size_t at = 0; at + static_cast<std::size_t>(n) <= pcm.size(); at += static_cast<std::size_t>(n)) {
        const int shift = g::samples_to_rmlt(&pcm[at], old.data(), coefs.data(), n);
        d.mix(shift);
        for (Word16 c : coefs) d.mix(c);
        g::rmlt_to_samples(coefs.data(), old_out.data(), out.data(), n, shift);
        for (Word16 s : out) d.mix(s);
        ++frames;
    }
    return d.h;
}

/// The inverse MLT on 200 frames of arbitrary coefficients (the reference's
/// test generator: a 32-bit LCG, high half), scaled down by 0, 4, 8 or 12
/// bits, with mag_shift cycling through -3..3.
std::uint64_t inverse_digest(int n) {
    Digest d;
    std::uint32_t lcg = 12345;
    std::vector<Word16> coefs(static_cast<std::size_t>(n)), old(static_cast<std::size_t>(n / 2), 0),
        out(static_cast<std::size_t>(n));
    for (int k = 0; k < 200; ++k) {
        for (auto& c : coefs) {
            lcg = lcg * 1103515245u + 12345u;
            c = static_cast<Word16>(static_cast<Word16>(lcg >> 16) >> (4 * (k % 4)));
        }
        g::rmlt_to_samples(coefs.data(), old.data(), out.data(), n, k % 7 - 3);
        for (Word16 s : out) d.mix(s);
    }
    return d.h;
}

TEST(G7221Mlt, MatchesTheReference) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("codecs/g7221");
    const struct {
        const char* file;
        int n;
        int frames;
        std::uint64_t round_trip;
    } kCases[] = {
        {"codecs/g7221/conformance/g722_1_enc_in.pcm", 320, 321, 0x3019edbd25c5555eull},
        {"codecs/g7221/input16k/loud.s16", 320, 535, 0x5a1eb11a986faf08ull},
        {"codecs/g7221/input32k/male.s16", 640, 555, 0xed096230d100e10aull},
        {"codecs/g7221/input32k/loud.s16", 640, 535, 0x7c08e0713c30db42ull},
    };
    for (const auto& c : kCases) {
        int frames = 0;
        EXPECT_EQ(round_trip_digest(read_file(c.file), c.n, frames), c.round_trip) << c.file;
        EXPECT_EQ(frames, c.frames) << c.file;
    }
    EXPECT_EQ(inverse_digest(320), 0xd46476fd75eb4c5full);
    EXPECT_EQ(inverse_digest(640), 0x51705508d57447adull);
}

}  // namespace

namespace {

// The vector rotation stages against the scalar ones on arbitrary and
// extreme inputs (full-scale values, where the saturations occur).
TEST(G7221Mlt, VectorRotationsEqualScalar) {
    const g::RotationPairs analysis(zeps::g7221_a_cos_msin_table), synthesis(zeps::g7221_s_cos_msin_table);
    std::uint32_t lcg = 7;
    auto next = [&] {
        lcg = lcg * 1103515245u + 12345u;
        return static_cast<Word16>(lcg >> 16);
    };
    for (int n : {320, 640})
        for (int k = 0; k < 60; ++k) {
            std::vector<Word16> in(static_cast<std::size_t>(n));
            for (auto& x : in) x = k % 3 == 0 ? (next() & 1 ? 32767 : -32768) : static_cast<Word16>(next() >> (k % 5));
            std::vector<Word16> a = in, b = in, sa(in.size()), sb(in.size()), oa(in.size()), ob(in.size());
            if (k % 2) {
                g::rotation_stages<true>(a.data(), oa.data(), sa.data(), n, zeps::g7221_s_cos_msin_table);
                g::rotation_stages_simd<true>(b.data(), ob.data(), sb.data(), n, synthesis);
            } else {
                g::rotation_stages<false>(a.data(), oa.data(), sa.data(), n, zeps::g7221_a_cos_msin_table);
                g::rotation_stages_simd<false>(b.data(), ob.data(), sb.data(), n, analysis);
            }
            ASSERT_EQ(oa, ob) << n << " " << k;
        }
}

}  // namespace

namespace {

// The vector 10-point core against the scalar one, on groups inside and
// outside its no-saturation bound.
TEST(G7221Mlt, VectorCoreEqualsScalar) {
    const g::CoreColumns ca(zeps::g7221_dct_core_a), cs(zeps::g7221_dct_core_s);
    std::uint32_t lcg = 11;
    auto next = [&] {
        lcg = lcg * 1103515245u + 12345u;
        return static_cast<Word16>(lcg >> 16);
    };
    for (int k = 0; k < 400; ++k) {
        std::vector<Word16> in(640), a(640), b(640);
        for (auto& x : in) x = k % 4 == 0 ? (next() & 1 ? 32767 : -32768) : static_cast<Word16>(next() >> (k % 6));
        const bool synthesis = k % 2;
        const auto& core = synthesis ? zeps::g7221_dct_core_s : zeps::g7221_dct_core_a;
        g::dct_core(in.data(), a.data(), 640, core);
        g::dct_core_simd(in.data(), b.data(), 640, synthesis ? cs : ca, core);
        ASSERT_EQ(a, b) << k;
    }
}

}  // namespace

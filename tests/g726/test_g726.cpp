// SPDX-License-Identifier: BSD-3-Clause
// G.726 coder behaviour beyond the reference streams: block cutting, code
// bits above the width, state blocks of any content, both builds agreeing,
// and the codes of an independent implementation (spandsp).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "g722/g726_decode_vector.h"
#include "tests/g726/g726_test_util.h"
#include "tests/variant_check.h"
#include "tests/vec_reader.h"

#ifdef ZEPS_HAVE_SPANDSP
#include <spandsp.h>
#endif

namespace zeps::test::g726 {
namespace {

constexpr int kEncSize = 88, kDecSize = 92;

std::vector<std::int16_t> speech14(const char* file, std::size_t first, std::size_t n) {
    const auto s = load_speech(file);
    std::vector<std::int16_t> v(s.begin() + first, s.begin() + first + n);
    for (auto& x : v) x = static_cast<std::int16_t>(x >> 2);
    return v;
}

TEST(G726, ResultsDoNotDependOnBlockCutting) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    const auto pcm = speech14("loud.s16", 8000, 160);
    for (const Coder& c : kBuilds) {
        for (std::int32_t rate : kRates) {
            Block whole, single;
            ASSERT_EQ(c.enc_init(whole.enc(), rate), 0);
            ASSERT_EQ(c.enc_init(single.enc(), rate), 0);
            std::vector<std::uint8_t> a(160), b(160);
            ASSERT_EQ(c.encode(whole.enc(), pcm.data(), a.data(), 160), 0);
            for (int n = 0; n < 160; ++n) ASSERT_EQ(c.encode(single.enc(), &pcm[n], &b[n], 1), 0);
            EXPECT_EQ(a, b) << rate;
            EXPECT_EQ(whole.bytes, single.bytes) << rate;
            for (std::int32_t law = 0; law < 3; ++law) {
                Block dw, ds;
                ASSERT_EQ(c.dec_init(dw.dec(), rate, law), 0);
                ASSERT_EQ(c.dec_init(ds.dec(), rate, law), 0);
                std::vector<std::int16_t> x(160), y(160);
                ASSERT_EQ(c.decode(dw.dec(), a.data(), x.data(), 160), 0);
                for (int n = 0; n < 160; ++n) ASSERT_EQ(c.decode(ds.dec(), &a[n], &y[n], 1), 0);
                EXPECT_EQ(x, y) << rate << " law " << law;
                EXPECT_EQ(dw.bytes, ds.bytes) << rate << " law " << law;
            }
        }
    }
}

/// The state words at their G.726 widths (YL 19 bits, YU 13, DMS 12, DML
/// 14, AP 10, TD and the PK signs 1): what the coder reads of any block.
void mask_to_word_widths(std::uint8_t* block) {
    using zeps::ZEPS_VARIANT_NS::g726::Core;
    auto mask = [&](std::size_t off, auto width_mask) {
        decltype(width_mask) w;
        std::memcpy(&w, block + off, sizeof w);
        w = static_cast<decltype(w)>(w & width_mask);
        std::memcpy(block + off, &w, sizeof w);
    };
    mask(offsetof(Core, yl), std::int32_t{0x7FFFF});
    mask(offsetof(Core, yu), std::int16_t{8191});
    mask(offsetof(Core, dms), std::int16_t{4095});
    mask(offsetof(Core, dml), std::int16_t{16383});
    mask(offsetof(Core, ap), std::int16_t{1023});
    for (std::size_t off : {offsetof(Core, td), offsetof(Core, pk1), offsetof(Core, pk2)}) mask(off, std::int16_t{1});
}

// Any bytes in a state block (a zeroed, stale or overwritten block) give
// defined arithmetic (the sanitizer build checks the shifts and sums) and
// the coding of the words read at their widths; both builds agree.
TEST(G726, AnyStateContentIsReadAtTheWordWidths) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    const auto pcm = speech14("loud.s16", 4000, 160);
    std::vector<std::uint8_t> codes(160);
    for (std::size_t n = 0; n < codes.size(); ++n) codes[n] = static_cast<std::uint8_t>((n * 2654435761u) >> 24);
    for (int k = 0; k < 12; ++k) {
        Block garbage;
        constexpr std::uint8_t kFill[4] = {0x00, 0xFF, 0x80, 0x7F};
        if (k < 4) std::fill(garbage.bytes.begin(), garbage.bytes.end(), kFill[k]);
        else
            for (std::size_t i = 0; i < garbage.bytes.size(); ++i)
                garbage.bytes[i] = static_cast<std::uint8_t>(((i + 1) * (k * 40503u + 1)) >> 7);
        Block masked = garbage;
        mask_to_word_widths(masked.bytes.data());
        std::vector<std::uint8_t> first_codes;
        std::vector<std::int16_t> first_pcm;
        for (const Coder& c : kBuilds) {
            Block eg = garbage, em = masked, dg = garbage, dm = masked;
            std::vector<std::uint8_t> a(160), b(160);
            ASSERT_EQ(c.encode(eg.enc(), pcm.data(), a.data(), 160), 0);
            ASSERT_EQ(c.encode(em.enc(), pcm.data(), b.data(), 160), 0);
            EXPECT_EQ(a, b) << "state " << k;
            std::vector<std::int16_t> x(160), y(160);
            ASSERT_EQ(c.decode(dg.dec(), codes.data(), x.data(), 160), 0);
            ASSERT_EQ(c.decode(dm.dec(), codes.data(), y.data(), 160), 0);
            EXPECT_EQ(x, y) << "state " << k;
            if (first_codes.empty()) first_codes = a, first_pcm = x;
            EXPECT_EQ(a, first_codes) << "builds differ, state " << k;
            EXPECT_EQ(x, first_pcm) << "builds differ, state " << k;
        }
    }
}

TEST(G726, DecoderIgnoresBitsAboveTheCodeWidth) {
    Rng rng(726);
    for (int r = 0; r < 4; ++r) {
        std::vector<std::uint8_t> codes(2000), noisy(2000);
        for (std::size_t k = 0; k < codes.size(); ++k) {
            codes[k] = static_cast<std::uint8_t>(rng.uniform(0, (4 << r) - 1));
            noisy[k] = static_cast<std::uint8_t>(codes[k] | (rng.uniform(0, 255) << (r + 2)));
        }
        for (std::int32_t law = 0; law < 3; ++law) {
            Block a, b;
            std::vector<std::int16_t> x(codes.size()), y(codes.size());
            ASSERT_EQ(zeps::u8::zepsDecodeInit_G726_8u16s(a.dec(), kRates[r], law), 0);
            ASSERT_EQ(zeps::u8::zepsDecodeInit_G726_8u16s(b.dec(), kRates[r], law), 0);
            ASSERT_EQ(zeps::u8::zepsDecode_G726_8u16s(a.dec(), codes.data(), x.data(), 2000), 0);
            ASSERT_EQ(zeps::u8::zepsDecode_G726_8u16s(b.dec(), noisy.data(), y.data(), 2000), 0);
            EXPECT_EQ(x, y);
            EXPECT_EQ(a.bytes, b.bytes);
        }
    }
}

TEST(G726, EncoderClampsInputToFourteenBits) {
    Rng rng(14);
    std::vector<std::int16_t> wide(3000), clamped(3000);
    for (std::size_t k = 0; k < wide.size(); ++k) {
        wide[k] = rng.s16();
        clamped[k] = static_cast<std::int16_t>(std::clamp<int>(wide[k], -8192, 8191));
    }
    for (int r = 0; r < 4; ++r) {
        const std::int32_t rate = kRates[r];
        Block a, b;
        std::vector<std::uint8_t> x(3000), y(3000);
        ASSERT_EQ(zeps::u8::zepsEncodeInit_G726_16s8u(a.enc(), rate), 0);
        ASSERT_EQ(zeps::u8::zepsEncodeInit_G726_16s8u(b.enc(), rate), 0);
        ASSERT_EQ(zeps::u8::zepsEncode_G726_16s8u(a.enc(), wide.data(), x.data(), 3000), 0);
        ASSERT_EQ(zeps::u8::zepsEncode_G726_16s8u(b.enc(), clamped.data(), y.data(), 3000), 0);
        EXPECT_EQ(x, y);
        const int top = (4 << r) - 1;
        EXPECT_TRUE(std::all_of(x.begin(), x.end(), [&](std::uint8_t v) { return v <= top; }));
    }
}

// Sizes, and an initialiser writes exactly its block, all of it (the null
// pointers, rates, laws and lengths are in the contract table).
TEST(G726, InitWritesItsWholeBlockOnly) {
    for (int b = 0; b < 2; ++b) {
        const Coder& c = kBuilds[b];
        Zep32s size = -1;
        EXPECT_EQ((b ? zeps::n8::zepsEncodeGetStateSize_G726_16s8u : zeps::u8::zepsEncodeGetStateSize_G726_16s8u)(&size), 0);
        EXPECT_EQ(size, kEncSize);
        EXPECT_EQ((b ? zeps::n8::zepsDecodeGetStateSize_G726_8u16s : zeps::u8::zepsDecodeGetStateSize_G726_8u16s)(&size), 0);
        EXPECT_EQ(size, kDecSize);
        Block zeros, ones;
        std::fill(zeros.bytes.begin(), zeros.bytes.end(), 0x00);
        std::fill(ones.bytes.begin(), ones.bytes.end(), 0xFF);
        ASSERT_EQ(c.enc_init(zeros.enc(), 24), 0);
        ASSERT_EQ(c.enc_init(ones.enc(), 24), 0);
        EXPECT_TRUE(std::equal(zeros.bytes.begin(), zeros.bytes.begin() + kEncSize, ones.bytes.begin()));
        EXPECT_EQ(ones.bytes[kEncSize], 0xFF);
        ASSERT_EQ(c.dec_init(zeros.dec(), 24, 2), 0);
        ASSERT_EQ(c.dec_init(ones.dec(), 24, 2), 0);
        EXPECT_TRUE(std::equal(zeros.bytes.begin(), zeros.bytes.begin() + kDecSize, ones.bytes.begin()));
        EXPECT_EQ(ones.bytes[kDecSize], 0xFF);
    }
}

// The lane decoder against the scalar coder from state s at law L, in
// blocks of varying length: outputs and final states equal.
template <int R, int L>
void compare_decoder_law(const zeps::ref::g726::Core& s, const std::vector<std::uint8_t>& codes, Rng& cut) {
    using zeps::ref::g726::Core;
    Core a = s, v = s;
    const int n = static_cast<int>(codes.size());
    std::vector<std::int16_t> da(codes.size()), dv(codes.size(), 0x5EE5);
    zeps::ref::g726::decode_samples<R, L, zeps::ref::g726::ScalarPredictor<zeps::ref::g726::leak(R)>>(
        a, codes.data(), da.data(), n);
    for (int pos = 0; pos < n;) {
        const int len = std::min(n - pos, static_cast<int>(cut.uniform(1, 700)));
        zeps::ref::g726::decode_samples_vector<R, L>(v, codes.data() + pos, dv.data() + pos, len);
        pos += len;
    }
    ASSERT_EQ(da, dv) << R << " law " << L;
    ASSERT_EQ(0, std::memcmp(&a, &v, sizeof a)) << R << " law " << L;
}

// All three output laws.
template <int R>
void compare_decoders(const zeps::ref::g726::Core& s, const std::vector<std::uint8_t>& codes, Rng& cut) {
    compare_decoder_law<R, zeps::ref::g726::kLinear>(s, codes, cut);
    compare_decoder_law<R, zeps::ref::g726::kALaw>(s, codes, cut);
    compare_decoder_law<R, zeps::ref::g726::kMuLaw>(s, codes, cut);
}

// The vector predictor against the plain scalar one, through the whole
// coder, on signals that drive the coefficients and scale factors to their
// limits (full-scale noise and square waves, silence, tiny signals).
template <int R>
void compare_predictors(const std::vector<std::int16_t>& pcm) {
    using zeps::ref::g726::Core;
    constexpr int kLeak = zeps::ref::g726::leak(R);
    using Scalar = zeps::ref::g726::ScalarPredictor<kLeak>;
    using Vector = zeps::ref::g726::VectorPredictor<kLeak>;
    Core a, b;
    zeps::ref::g726::reset(a, R);
    zeps::ref::g726::reset(b, R);
    const int n = static_cast<int>(pcm.size());
    std::vector<std::uint8_t> ca(pcm.size()), cb(pcm.size());
    zeps::ref::g726::encode_samples<R, Scalar>(a, pcm.data(), ca.data(), n);
    zeps::ref::g726::encode_samples<R, Vector>(b, pcm.data(), cb.data(), n);
    ASSERT_EQ(ca, cb) << R;
    ASSERT_EQ(0, std::memcmp(&a, &b, sizeof a)) << R;
    // The encoder with the whole recursion in lanes, in blocks of varying length.
    Core v;
    zeps::ref::g726::reset(v, R);
    std::vector<std::uint8_t> cv(pcm.size());
    Rng cut(R + 40);
    for (int pos = 0; pos < n;) {
        const int len = std::min(n - pos, static_cast<int>(cut.uniform(1, 700)));
        zeps::ref::g726::encode_samples_vector<R>(v, pcm.data() + pos, cv.data() + pos, len);
        pos += len;
    }
    ASSERT_EQ(ca, cv) << R;
    ASSERT_EQ(0, std::memcmp(&a, &v, sizeof a)) << R;
    // The lane decoder on the codes from reset, then on random codes (bits
    // above the width included) so every code word meets every state.
    Core fresh;
    zeps::ref::g726::reset(fresh, R);
    compare_decoders<R>(fresh, ca, cut);
    Rng rng(R);
    for (auto& c : ca) c = static_cast<std::uint8_t>(rng.next());
    compare_decoders<R>(a, ca, cut);
    std::vector<std::int16_t> da(pcm.size()), db(pcm.size());
    zeps::ref::g726::decode_samples<R, zeps::ref::g726::kLinear, Scalar>(a, ca.data(), da.data(), n);
    zeps::ref::g726::decode_samples<R, zeps::ref::g726::kLinear, Vector>(b, ca.data(), db.data(), n);
    ASSERT_EQ(da, db) << R;
    ASSERT_EQ(0, std::memcmp(&a, &b, sizeof a)) << R;
}

TEST(G726, VectorPredictorEqualsScalar) {
    Rng rng(9);
    std::vector<std::int16_t> pcm;
    for (int seg = 0; seg < 32; ++seg) {
        const int kind = seg % 4, period = static_cast<int>(rng.uniform(2, 60));
        for (int k = 0; k < 4000; ++k) {
            int v = 0;
            switch (kind) {
                case 0: v = static_cast<int>(rng.uniform(-8192, 8191)); break;
                case 1: v = (k / period) & 1 ? 8191 : -8192; break;
                case 2: v = k < 2000 ? 0 : static_cast<int>(rng.uniform(-32768, 32767)); break;
                default: v = static_cast<int>(rng.uniform(-3, 3)); break;
            }
            pcm.push_back(static_cast<std::int16_t>(v));
        }
    }
    compare_predictors<0>(pcm);
    compare_predictors<1>(pcm);
    compare_predictors<2>(pcm);
    compare_predictors<3>(pcm);
}

// The lane encoder against the scalar coder from states of any content (the
// step sizes and coefficients far outside what the recursion reaches).
template <int R>
void compare_from_state(const std::vector<std::int16_t>& pcm, Rng& rng) {
    using zeps::ref::g726::Core;
    Core a;
    auto* bytes = reinterpret_cast<std::uint8_t*>(&a);
    for (std::size_t k = 0; k < sizeof a; ++k) bytes[k] = static_cast<std::uint8_t>(rng.next());
    a.rate = R;
    if (rng.chance(2)) {  // step sizes below their floor: negative scaled levels
        a.yu = static_cast<std::int16_t>(rng.uniform(0, 600));
        a.yl = static_cast<std::int32_t>(rng.uniform(0, 40000));
        if (rng.chance(2)) {  // and a zero estimate, so that D can be 0
            for (auto& w : a.coef) w = 0;
            for (auto& w : a.hist) w = 32;
        }
    }
    const Core start = a;
    Core b = a;
    const int n = static_cast<int>(pcm.size());
    std::vector<std::uint8_t> ca(pcm.size()), cb(pcm.size());
    zeps::ref::g726::encode_samples<R, zeps::ref::g726::ScalarPredictor<zeps::ref::g726::leak(R)>>(a, pcm.data(),
                                                                                                   ca.data(), n);
    zeps::ref::g726::encode_samples_vector<R>(b, pcm.data(), cb.data(), n);
    ASSERT_EQ(ca, cb) << R;
    ASSERT_EQ(0, std::memcmp(&a, &b, sizeof a)) << R;
    // The lane decoder from the same start state, on random codes.
    for (auto& c : ca) c = static_cast<std::uint8_t>(rng.next());
    compare_decoders<R>(start, ca, rng);
}

TEST(G726, VectorCoderEqualsScalarFromAnyState) {
    Rng rng(31);
    std::vector<std::int16_t> pcm(200);
    for (int t = 0; t < 400; ++t) {
        const int amp = t % 3 == 0 ? 8192 : static_cast<int>(rng.uniform(1, 400));
        for (auto& x : pcm) x = static_cast<std::int16_t>(rng.uniform(-amp, amp - 1));
        if (t % 2) pcm[0] = 0;
        compare_from_state<0>(pcm, rng);
        compare_from_state<1>(pcm, rng);
        compare_from_state<2>(pcm, rng);
        compare_from_state<3>(pcm, rng);
    }
}

#ifdef ZEPS_HAVE_SPANDSP
// spandsp takes full-scale 16-bit input and drops the two low bits itself;
// its codes must equal ours for the same 14-bit input, and its G.711 outputs
// (synchronous coding adjustment included) must equal our law 0/1 outputs.
TEST(G726, SameCodesAsSpandsp) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    const int kBitRates[4] = {16000, 24000, 32000, 40000};
    for (const char* file : {"male.s16", "female.s16", "loud.s16", "noisy.s16", "tones.s16", "quiet.s16"}) {
        const auto s16 = load_speech(file);
        std::vector<std::int16_t> s14(s16.size());
        for (std::size_t k = 0; k < s16.size(); ++k) s14[k] = static_cast<std::int16_t>(s16[k] >> 2);
        const int n = static_cast<int>(s16.size());
        for (int r = 0; r < 4; ++r) {
            SCOPED_TRACE(file);
            g726_state_t* peer = g726_init(nullptr, kBitRates[r], G726_ENCODING_LINEAR, G726_PACKING_NONE);
            ASSERT_NE(peer, nullptr);
            std::vector<std::uint8_t> want(s16.size()), got(s16.size());
            g726_encode(peer, want.data(), s16.data(), n);
            g726_free(peer);
            Block st;
            ASSERT_EQ(zeps::u8::zepsEncodeInit_G726_16s8u(st.enc(), kRates[r]), 0);
            ASSERT_EQ(zeps::u8::zepsEncode_G726_16s8u(st.enc(), s14.data(), got.data(), n), 0);
            ASSERT_EQ(got, want) << kBitRates[r];

            for (int law = 0; law < 2; ++law) {
                peer = g726_init(nullptr, kBitRates[r], law == 0 ? G726_ENCODING_ULAW : G726_ENCODING_ALAW,
                                 G726_PACKING_NONE);
                std::vector<std::uint8_t> pcm(s16.size() * 2);
                const int m = g726_decode(peer, reinterpret_cast<std::int16_t*>(pcm.data()), got.data(), n);
                g726_free(peer);
                ASSERT_EQ(m, n);
                std::vector<std::int16_t> ours(s16.size());
                ASSERT_EQ(zeps::u8::zepsDecodeInit_G726_8u16s(st.dec(), kRates[r], law), 0);
                ASSERT_EQ(zeps::u8::zepsDecode_G726_8u16s(st.dec(), got.data(), ours.data(), n), 0);
                for (int k = 0; k < n; ++k) ASSERT_EQ(ours[k], pcm[k]) << "law " << law << " sample " << k;
            }
        }
    }
}
#endif

// ---- both builds

std::vector<std::uint8_t> noisy_block(Rng& rng) {
    std::vector<std::uint8_t> v(128);
    for (auto& x : v) x = static_cast<std::uint8_t>(rng.next());
    return v;
}
std::int32_t some_rate(Rng& rng) {
    return rng.chance(6) ? static_cast<std::int32_t>(rng.uniform(-2, 30)) : kRates[rng.uniform(0, 3)];
}
std::int32_t some_len(Rng& rng) { return rng.chance(8) ? static_cast<std::int32_t>(rng.uniform(-2, 0)) : static_cast<std::int32_t>(rng.uniform(1, 400)); }

}  // namespace
}  // namespace zeps::test::g726

using zeps::test::g726::noisy_block;
using zeps::test::g726::some_len;
using zeps::test::g726::some_rate;

ZEPS_VARIANT_CHECK(zepsEncodeGetStateSize_G726_16s8u) {
    Zep32s a = 0, b = 0;
    EXPECT_EQ(zeps::u8::zepsEncodeGetStateSize_G726_16s8u(&a), zeps::n8::zepsEncodeGetStateSize_G726_16s8u(&b));
    EXPECT_EQ(a, b);
    EXPECT_EQ(zeps::u8::zepsEncodeGetStateSize_G726_16s8u(nullptr), zeps::n8::zepsEncodeGetStateSize_G726_16s8u(nullptr));
}

ZEPS_VARIANT_CHECK(zepsDecodeGetStateSize_G726_8u16s) {
    Zep32s a = 0, b = 0;
    EXPECT_EQ(zeps::u8::zepsDecodeGetStateSize_G726_8u16s(&a), zeps::n8::zepsDecodeGetStateSize_G726_8u16s(&b));
    EXPECT_EQ(a, b);
    EXPECT_EQ(zeps::u8::zepsDecodeGetStateSize_G726_8u16s(nullptr), zeps::n8::zepsDecodeGetStateSize_G726_8u16s(nullptr));
}

ZEPS_VARIANT_CHECK(zepsEncodeInit_G726_16s8u) {
    auto a = noisy_block(rng), b = a;
    const std::int32_t rate = some_rate(rng);
    EXPECT_EQ(zeps::u8::zepsEncodeInit_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(a.data()), rate),
              zeps::n8::zepsEncodeInit_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(b.data()), rate));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsDecodeInit_G726_8u16s) {
    auto a = noisy_block(rng), b = a;
    const std::int32_t rate = some_rate(rng);
    const std::int32_t law = static_cast<std::int32_t>(rng.chance(6) ? rng.uniform(-2, 5) : rng.uniform(0, 2));
    EXPECT_EQ(zeps::u8::zepsDecodeInit_G726_8u16s(reinterpret_cast<ZepG726DecodeState*>(a.data()), rate, law),
              zeps::n8::zepsDecodeInit_G726_8u16s(reinterpret_cast<ZepG726DecodeState*>(b.data()), rate, law));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsEncode_G726_16s8u) {
    std::vector<std::uint8_t> st(128);
    ASSERT_EQ(zeps::u8::zepsEncodeInit_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(st.data()),
                                                  zeps::test::g726::kRates[rng.uniform(0, 3)]),
              0);
    // Warm the state up on speech-like input so the check starts mid-stream.
    auto sa = st, sb = st;
    std::vector<std::int16_t> src = rng.vec<std::int16_t>(400);
    const int scale = static_cast<int>(rng.uniform(0, 4));
    if (scale) for (auto& x : src) x = static_cast<std::int16_t>(x >> (2 * scale));
    const std::int32_t len = some_len(rng);
    std::vector<std::uint8_t> da(400, 0xEE), db(400, 0xEE);
    EXPECT_EQ(zeps::u8::zepsEncode_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(sa.data()), src.data(), da.data(), len),
              zeps::n8::zepsEncode_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(sb.data()), src.data(), db.data(), len));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
}

ZEPS_VARIANT_CHECK(zepsDecode_G726_8u16s) {
    std::vector<std::uint8_t> st(128);
    ASSERT_EQ(zeps::u8::zepsDecodeInit_G726_8u16s(reinterpret_cast<ZepG726DecodeState*>(st.data()),
                                                  zeps::test::g726::kRates[rng.uniform(0, 3)],
                                                  static_cast<std::int32_t>(rng.uniform(0, 2))),
              0);
    auto sa = st, sb = st;
    std::vector<std::uint8_t> src(400);
    const int width = static_cast<int>(rng.uniform(1, 8));
    for (auto& x : src) x = static_cast<std::uint8_t>(rng.next() & ((1u << width) - 1));
    const std::int32_t len = some_len(rng);
    std::vector<std::int16_t> da(400, 0x5EE5), db(400, 0x5EE5);
    EXPECT_EQ(zeps::u8::zepsDecode_G726_8u16s(reinterpret_cast<ZepG726DecodeState*>(sa.data()), src.data(), da.data(), len),
              zeps::n8::zepsDecode_G726_8u16s(reinterpret_cast<ZepG726DecodeState*>(sb.data()), src.data(), db.data(), len));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
}

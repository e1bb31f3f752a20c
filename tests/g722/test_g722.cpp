// SPDX-License-Identifier: BSD-3-Clause
// G.722 coder behaviour beyond the reference streams: the vector QMF,
// quantiser and zero sections against their scalar forms, results
// independent of block cutting, the decoder's range check on code words leaving state
// and output untouched, both builds agreeing, and the comparison with an
// independent implementation (spandsp), whose every difference is listed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "frame/variants.h"
#include "g722/g722_simd.h"
#include "tests/variant_check.h"
#include "tests/vec_reader.h"

#ifdef ZEPS_HAVE_SPANDSP
#include <spandsp.h>
#endif

namespace zeps::test::g722 {
namespace {

using zeps::ref::Word16;

constexpr int kStateSize = 144;

/// A state block with room to spare, so overruns show up in the canary bytes.
struct Block {
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(kStateSize + 16, 0xA5);
    ZepG722EncodeState* enc() { return reinterpret_cast<ZepG722EncodeState*>(bytes.data()); }
    ZepG722DecodeState* dec() { return reinterpret_cast<ZepG722DecodeState*>(bytes.data()); }
};

/// The exports of one build.
struct Coder {
    decltype(&zeps::u8::zepsSBADPCMEncodeInit_G722_16s) enc_init;
    decltype(&zeps::u8::zepsSBADPCMEncode_G722_16s) encode;
    decltype(&zeps::u8::zepsSBADPCMDecodeInit_G722_16s) dec_init;
    decltype(&zeps::u8::zepsSBADPCMDecode_G722_16s) decode;
};
const Coder kBuilds[2] = {
    {zeps::u8::zepsSBADPCMEncodeInit_G722_16s, zeps::u8::zepsSBADPCMEncode_G722_16s,
     zeps::u8::zepsSBADPCMDecodeInit_G722_16s, zeps::u8::zepsSBADPCMDecode_G722_16s},
    {zeps::n8::zepsSBADPCMEncodeInit_G722_16s, zeps::n8::zepsSBADPCMEncode_G722_16s,
     zeps::n8::zepsSBADPCMDecodeInit_G722_16s, zeps::n8::zepsSBADPCMDecode_G722_16s},
};

/// The 16 kHz version of a shared speech file.
std::vector<std::int16_t> speech16k(const std::string& name) {
    std::FILE* f = std::fopen(shared_path("codecs/g722/input16k/" + name + ".s16").c_str(), "rb");
    EXPECT_NE(f, nullptr) << name;
    std::vector<std::int16_t> v;
    if (!f) return v;
    std::int16_t buf[4096];
    for (std::size_t k; (k = std::fread(buf, 2, 4096, f)) > 0;) v.insert(v.end(), buf, buf + k);
    std::fclose(f);
    return v;
}

std::vector<Zep16s> encode(const Coder& c, const std::vector<std::int16_t>& pcm) {
    Block b;
    EXPECT_EQ(c.enc_init(b.enc()), 0);
    std::vector<Zep16s> codes(pcm.size() / 2);
    EXPECT_EQ(c.encode(pcm.data(), codes.data(), static_cast<Zep32s>(codes.size() * 2), b.enc()), 0);
    return codes;
}

[[maybe_unused]] std::vector<Zep16s> decode(const Coder& c, const std::vector<Zep16s>& codes, int mode) {
    Block b;
    EXPECT_EQ(c.dec_init(b.dec()), 0);
    std::vector<Zep16s> pcm(codes.size() * 2);
    EXPECT_EQ(c.decode(codes.data(), pcm.data(), mode, static_cast<Zep32s>(codes.size()), b.dec()), 0);
    return pcm;
}

// Inputs that reach every corner: speech with overload, full-scale noise at
// several levels, and full-scale square waves (QMF outputs at the limits).
std::vector<std::vector<std::int16_t>> hard_inputs() {
    std::vector<std::vector<std::int16_t>> v{speech16k("loud")};
    Rng rng(722);
    for (int shift : {0, 2, 5, 9}) {
        auto x = rng.vec<std::int16_t>(20000);
        for (auto& s : x) s = static_cast<std::int16_t>(s >> shift);
        v.push_back(x);
    }
    for (int period : {2, 4, 7, 16}) {
        std::vector<std::int16_t> x(20000);
        for (std::size_t i = 0; i < x.size(); ++i) x[i] = (i / static_cast<std::size_t>(period)) % 2 ? 32767 : -32768;
        v.push_back(x);
    }
    return v;
}

TEST(G722, VectorFormsEqualScalarForms) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    namespace g = zeps::ref::g722;
    const g::QmfCoefs coefs;
    const g::QuantlLevels levels;
    for (const auto& pcm : hard_inputs()) {
        // Encoder: scalar QMF and bands against the vector ones.
        g::State st;
        g::reset(st);
        g::Band low, high;
        g::load(low, st.low);
        g::load(high, st.high);
        g::QmfRegs q;
        q.load(st.qmf);
        g::FastBand flow, fhigh;
        flow.load(st.low);
        fhigh.load(st.high);
        std::vector<Zep16s> codes;
        for (std::size_t n = 0; n + 1 < pcm.size(); n += 2) {
            Word16 xl, xh, vl, vh;
            g::qmf_tx(st.qmf, pcm[n], pcm[n + 1], xl, xh);
            g::qmf_tx_simd(q, coefs, pcm[n], pcm[n + 1], vl, vh);
            ASSERT_EQ(xl, vl) << n;
            ASSERT_EQ(xh, vh) << n;
            const int il = g::encode_low(low, xl);
            ASSERT_EQ(il, g::encode_low_simd(flow, levels, xl)) << n;
            const int ih = g::encode_high(high, xh);
            g::update_high_simd(fhigh, ih);
            ASSERT_EQ(low.s, flow.w.s) << n;
            ASSERT_EQ(low.sz, flow.w.sz) << n;
            ASSERT_EQ(high.s, fhigh.w.s) << n;
            ASSERT_EQ(high.sz, fhigh.w.sz) << n;
            codes.push_back(g::code_word(il, ih));
        }
        // Decoder: the codes just made, each mode.
        for (int mode = 0; mode < 3; ++mode) {
            g::reset(st);
            g::load(low, st.low);
            g::load(high, st.high);
            q.load(st.qmf);
            flow.load(st.low);
            fhigh.load(st.high);
            for (std::size_t n = 0; n < codes.size(); ++n) {
                const Word16 rl = g::decode_low(low, codes[n] & 0x3F, mode);
                const Word16 rh = g::decode_high(high, codes[n] >> 6);
                ASSERT_EQ(rl, g::decode_low_simd(flow, codes[n] & 0x3F, mode)) << n;
                ASSERT_EQ(rh, g::decode_high_simd(fhigh, codes[n] >> 6)) << n;
                Word16 a[2], b[2];
                g::qmf_rx(st.qmf, rl, rh, a[0], a[1]);
                g::qmf_rx_simd(q, coefs, rl, rh, b);
                ASSERT_EQ(a[0], b[0]) << n;
                ASSERT_EQ(a[1], b[1]) << n;
            }
        }
    }
}

// The vector QUANTL decision on every scale factor the lower band can reach
// (SCALEL of every NBL, and the reset value) and every difference signal.
TEST(G722, VectorQuantlEqualsScalarEverywhere) {
#if !defined(__SSSE3__)
    GTEST_SKIP() << "no vector QUANTL on this host: the scalar one is the only form";
#else
    namespace g = zeps::ref::g722;
    const g::QuantlLevels levels;
    std::vector<Word16> dets{32};
    for (int nb = 0; nb <= g::kLowMax; nb += 64) dets.push_back(g::scale<g::kLowOffset>(static_cast<Word16>(nb)));
    for (const Word16 det : dets)
        for (int el = -32768; el <= 32767; ++el) {
            const Word16 e = static_cast<Word16>(el);
            ASSERT_EQ(g::quantl(e, det), g::low_code(g::quantl_index(levels, e, det)).il) << el << " " << det;
        }
#endif
}

// The pole updates with selects against UPPOL2 then UPPOL1 with branches,
// on every sign pattern of PLT0..2 over a grid of AL1 (the whole 16-bit
// range, so the saturation of shl(AL1, 2) is met) and AL2 (its limits).
TEST(G722, SelectPoleUpdateEqualsBranches) {
    namespace g = zeps::ref::g722;
    std::vector<int> a1s{-32768, -32767, 32767, -27648, 27648, -8192, 8191, -8193, 8192};
    for (int a = -32768; a <= 32767; a += 13) a1s.push_back(a);
    for (const int a1 : a1s)
        for (int a2 = -12288; a2 <= 12288; a2 += 193)
            for (int signs = 0; signs < 8; ++signs) {
                g::Band w{};
                w.a1 = static_cast<Word16>(a1);
                w.a2 = static_cast<Word16>(a2 + (signs == 7 ? 96 : 0));
                w.p0 = static_cast<Word16>(signs & 1 ? -5 : 0);
                w.p1 = static_cast<Word16>(signs & 2 ? -32768 : 7);
                w.p2 = static_cast<Word16>(signs & 4 ? -1 : 32767);
                g::Band v = w;
                g::uppol2(w);
                g::uppol1(w);
                g::uppol_select(v);
                ASSERT_EQ(w.a1, v.a1) << a1 << " " << a2 << " " << signs;
                ASSERT_EQ(w.a2, v.a2) << a1 << " " << a2 << " " << signs;
                ASSERT_EQ(w.p1, v.p1);
                ASSERT_EQ(w.p2, v.p2);
            }
}

// The zero section on arbitrary states within its bounds (|DLT| <= 12404,
// any BL), where saturating sums in FILTEZ do occur.
TEST(G722, VectorZeroSectionEqualsScalar) {
#if !defined(__SSSE3__)
    GTEST_SKIP() << "no vector zero section on this host: the scalar one is the only form";
#else
    namespace g = zeps::ref::g722;
    Rng rng(1722);
    int saturated = 0;
    for (int k = 0; k < 20000; ++k) {
        g::Band w{};
        const int dmax = k % 3 == 0 ? 12404 : 3000;
        for (int i = 1; i <= 6; ++i) {
            w.d[i] = static_cast<Word16>(rng.uniform(-dmax, dmax));
            w.b[i] = k % 2 ? rng.s16() : static_cast<Word16>(rng.uniform(0, 1) ? 32767 : -32768);
        }
        const Word16 dq = static_cast<Word16>(k % 5 == 0 ? 0 : rng.uniform(-dmax, dmax));
        g::ZeroSection z;
        z.load(w);
        w.d[0] = dq;
        g::upzero(w.d, w.b);
        g::upzero_simd(z, dq);
        g::Band v = w;
        z.store(v);
        for (int i = 1; i <= 6; ++i) {
            ASSERT_EQ(w.d[i], v.d[i]) << k;
            ASSERT_EQ(w.b[i], v.b[i]) << k;
        }
        const Word16 sz = g::filtez(w.d, w.b);
        ASSERT_EQ(sz, g::filtez_simd(z)) << k;
        std::int32_t exact = 0;
        for (int i = 1; i <= 6; ++i) exact += zeps::ref::mult(static_cast<Word16>(2 * w.d[i]), w.b[i]);
        saturated += exact != sz;
    }
    EXPECT_GT(saturated, 100);  // the saturating path was taken
#endif
}

TEST(G722, ResultsDoNotDependOnBlockCutting) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    const auto all = speech16k("loud");
    const std::vector<std::int16_t> pcm(all.begin() + 16000, all.begin() + 16640);  // overloaded passage
    for (const Coder& c : kBuilds) {
        Block whole, pieces;
        ASSERT_EQ(c.enc_init(whole.enc()), 0);
        ASSERT_EQ(c.enc_init(pieces.enc()), 0);
        std::vector<Zep16s> a(320), b(320);
        ASSERT_EQ(c.encode(pcm.data(), a.data(), 640, whole.enc()), 0);
        for (int n = 0, step = 1; n < 320; n += step, step = step % 4 + 1)  // 2, 4, 6, 8 samples a call
            ASSERT_EQ(c.encode(&pcm[2 * n], &b[n], 2 * std::min(step, 320 - n), pieces.enc()), 0);
        EXPECT_EQ(a, b);
        EXPECT_EQ(whole.bytes, pieces.bytes);

        for (int mode = 1; mode <= 3; ++mode) {
            ASSERT_EQ(c.dec_init(whole.dec()), 0);
            ASSERT_EQ(c.dec_init(pieces.dec()), 0);
            std::vector<Zep16s> x(640), y(640);
            ASSERT_EQ(c.decode(a.data(), x.data(), mode, 320, whole.dec()), 0);
            for (int n = 0; n < 320; ++n) ASSERT_EQ(c.decode(&a[n], &y[2 * n], mode, 1, pieces.dec()), 0);
            EXPECT_EQ(x, y) << mode;
            EXPECT_EQ(whole.bytes, pieces.bytes) << mode;
        }
    }
}

TEST(G722, CodeOutsideTableLeavesEverythingUntouched) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    const auto codes = encode(kBuilds[0], speech16k("male"));
    const std::vector<Zep16s> head(codes.begin() + 4000, codes.begin() + 4100);
    for (const Coder& c : kBuilds) {
        for (Zep16s bad : {256, -1, 0x1FF, 32767, -32768}) {
            for (std::size_t at : {std::size_t{0}, std::size_t{57}, head.size() - 1}) {
                Block b;
                ASSERT_EQ(c.dec_init(b.dec()), 0);
                std::vector<Zep16s> warm(200);
                ASSERT_EQ(c.decode(codes.data(), warm.data(), 1, 100, b.dec()), 0);
                const auto before = b.bytes;
                auto in = head;
                in[at] = bad;
                std::vector<Zep16s> out(200, 0x5A5A);
                EXPECT_EQ(c.decode(in.data(), out.data(), 2, 100, b.dec()), zepStsOutOfRangeErr) << bad << " at " << at;
                EXPECT_EQ(b.bytes, before);
                EXPECT_EQ(out, std::vector<Zep16s>(200, 0x5A5A));
            }
        }
    }
}

#ifdef ZEPS_HAVE_SPANDSP
// spandsp (an independent G.722 implementation) differs from the ITU-T
// reference on overload only: its QMF and its decoder output wrap around
// where the reference saturates. The encoder's codes agree everywhere except
// from the listed first difference on (the transmit QMF output of `loud`
// leaves the 16-bit range there); every decoded sample that differs is one
// the reference saturated to -32768 or 32767.
struct PeerCase {
    const char* name;
    long first_code_difference;  // index of the first differing code word; -1: all equal
    long saturated_differences[3];  // decoded samples that differ, modes 1, 2, 3
};
constexpr PeerCase kPeerCases[] = {{"female", -1, {0, 0, 0}}, {"loud", 671, {610, 571, 680}},
                                   {"male", -1, {0, 0, 0}},   {"noisy", -1, {0, 0, 0}},
                                   {"quiet", -1, {0, 0, 0}},  {"tones", -1, {0, 0, 0}}};

long first_difference(const std::vector<Zep16s>& a, const std::vector<std::uint8_t>& b) {
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) return static_cast<long>(i);
    return -1;
}

TEST(G722, DiffersFromSpandspOnlyOnOverload) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    for (const PeerCase& pc : kPeerCases) {
        SCOPED_TRACE(pc.name);
        const auto pcm = speech16k(pc.name);
        const auto ours = encode(kBuilds[0], pcm);
        g722_encode_state_t* enc = g722_encode_init(nullptr, 64000, 0);
        ASSERT_NE(enc, nullptr);
        std::vector<std::uint8_t> theirs(ours.size());
        ASSERT_EQ(g722_encode(enc, theirs.data(), pcm.data(), static_cast<int>(ours.size() * 2)),
                  static_cast<int>(ours.size()));
        g722_encode_free(enc);
        EXPECT_EQ(first_difference(ours, theirs), pc.first_code_difference);

        for (int mode = 1; mode <= 3; ++mode) {
            // spandsp takes 8-, 7- or 6-bit code words for 64, 56, 48 kbit/s.
            std::vector<std::uint8_t> packed(ours.size());
            const int drop = mode - 1;
            for (std::size_t i = 0; i < ours.size(); ++i)
                packed[i] = static_cast<std::uint8_t>(((ours[i] >> 6) << (6 - drop)) | ((ours[i] & 0x3F) >> drop));
            g722_decode_state_t* dec = g722_decode_init(nullptr, 64000 - 8000 * drop, 0);
            ASSERT_NE(dec, nullptr);
            std::vector<std::int16_t> peer(ours.size() * 2);
            ASSERT_EQ(g722_decode(dec, peer.data(), packed.data(), static_cast<int>(packed.size())),
                      static_cast<int>(peer.size()));
            g722_decode_free(dec);
            const auto out = decode(kBuilds[0], ours, mode);
            long differing = 0;
            for (std::size_t i = 0; i < out.size(); ++i) {
                if (out[i] == peer[i]) continue;
                ++differing;
                EXPECT_TRUE(out[i] == 32767 || out[i] == -32768)
                    << "mode " << mode << " sample " << i << ": " << out[i] << " against " << peer[i];
            }
            EXPECT_EQ(differing, pc.saturated_differences[mode - 1]) << "mode " << mode;
        }
    }
}
#endif

// ---- both builds

std::vector<std::uint8_t> noisy_block(Rng& rng) {
    std::vector<std::uint8_t> v(kStateSize + 16);
    for (auto& x : v) x = static_cast<std::uint8_t>(rng.next());
    return v;
}
std::int32_t some_len(Rng& rng) {
    return rng.chance(8) ? static_cast<std::int32_t>(rng.uniform(-2, 1)) : static_cast<std::int32_t>(rng.uniform(1, 400));
}
std::int32_t some_mode(Rng& rng) {
    return rng.chance(6) ? static_cast<std::int32_t>(rng.uniform(-1, 5)) : static_cast<std::int32_t>(rng.uniform(1, 3));
}
std::vector<Zep16s> some_codes(Rng& rng, std::size_t n) {
    std::vector<Zep16s> v(n);
    for (auto& x : v) x = static_cast<Zep16s>(rng.next() & 0xFF);
    if (rng.chance(8)) v[rng.next() % n] = rng.s16();
    return v;
}
/// Input with sub-band overload now and then: full-scale noise, scaled.
std::vector<Zep16s> some_pcm(Rng& rng, std::size_t n) {
    auto v = rng.vec<std::int16_t>(n);
    const int shift = static_cast<int>(rng.uniform(0, 6));
    for (auto& x : v) x = static_cast<std::int16_t>(x >> shift);
    return v;
}
/// A state warmed up by 200 code words of input (mid-stream check).
template <bool Decoder>
std::vector<std::uint8_t> warm_state(Rng& rng) {
    std::vector<std::uint8_t> st(kStateSize + 16, 0xA5);
    if (Decoder) {
        zeps::u8::zepsSBADPCMDecodeInit_G722_16s(reinterpret_cast<ZepG722DecodeState*>(st.data()));
        auto c = some_codes(rng, 200);
        for (auto& x : c) x &= 0xFF;
        std::vector<Zep16s> out(400);
        zeps::u8::zepsSBADPCMDecode_G722_16s(c.data(), out.data(), 1, 200, reinterpret_cast<ZepG722DecodeState*>(st.data()));
    } else {
        zeps::u8::zepsSBADPCMEncodeInit_G722_16s(reinterpret_cast<ZepG722EncodeState*>(st.data()));
        const auto pcm = some_pcm(rng, 400);
        std::vector<Zep16s> out(200);
        zeps::u8::zepsSBADPCMEncode_G722_16s(pcm.data(), out.data(), 400, reinterpret_cast<ZepG722EncodeState*>(st.data()));
    }
    return st;
}

}  // namespace
}  // namespace zeps::test::g722

using namespace zeps::test::g722;

ZEPS_VARIANT_CHECK(zepsSBADPCMEncodeStateSize_G722_16s) {
    Zep32s a = 0, b = 0;
    EXPECT_EQ(zeps::u8::zepsSBADPCMEncodeStateSize_G722_16s(&a), zeps::n8::zepsSBADPCMEncodeStateSize_G722_16s(&b));
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, 144);
    EXPECT_EQ(zeps::u8::zepsSBADPCMEncodeStateSize_G722_16s(nullptr), zeps::n8::zepsSBADPCMEncodeStateSize_G722_16s(nullptr));
}

ZEPS_VARIANT_CHECK(zepsSBADPCMDecodeStateSize_G722_16s) {
    Zep32s a = 0, b = 0;
    EXPECT_EQ(zeps::u8::zepsSBADPCMDecodeStateSize_G722_16s(&a), zeps::n8::zepsSBADPCMDecodeStateSize_G722_16s(&b));
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, 144);
    EXPECT_EQ(zeps::u8::zepsSBADPCMDecodeStateSize_G722_16s(nullptr), zeps::n8::zepsSBADPCMDecodeStateSize_G722_16s(nullptr));
}

ZEPS_VARIANT_CHECK(zepsSBADPCMEncodeInit_G722_16s) {
    auto a = noisy_block(rng), b = a;
    EXPECT_EQ(zeps::u8::zepsSBADPCMEncodeInit_G722_16s(reinterpret_cast<ZepG722EncodeState*>(a.data())),
              zeps::n8::zepsSBADPCMEncodeInit_G722_16s(reinterpret_cast<ZepG722EncodeState*>(b.data())));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsSBADPCMDecodeInit_G722_16s) {
    auto a = noisy_block(rng), b = a;
    EXPECT_EQ(zeps::u8::zepsSBADPCMDecodeInit_G722_16s(reinterpret_cast<ZepG722DecodeState*>(a.data())),
              zeps::n8::zepsSBADPCMDecodeInit_G722_16s(reinterpret_cast<ZepG722DecodeState*>(b.data())));
    EXPECT_TRUE(zeps::test::same_bytes(a, b));
}

ZEPS_VARIANT_CHECK(zepsSBADPCMEncode_G722_16s) {
    auto sa = warm_state<false>(rng), sb = sa;
    const auto pcm = some_pcm(rng, 400);
    const std::int32_t len = some_len(rng);
    std::vector<Zep16s> da(200, 0x5EE5), db(200, 0x5EE5);
    EXPECT_EQ(zeps::u8::zepsSBADPCMEncode_G722_16s(pcm.data(), da.data(), len, reinterpret_cast<ZepG722EncodeState*>(sa.data())),
              zeps::n8::zepsSBADPCMEncode_G722_16s(pcm.data(), db.data(), len, reinterpret_cast<ZepG722EncodeState*>(sb.data())));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
}

ZEPS_VARIANT_CHECK(zepsSBADPCMEncodeBands_G722_16s) {
    auto sa = warm_state<false>(rng), sb = sa;
    const auto lo = some_pcm(rng, 400), hi = some_pcm(rng, 400);
    const std::int32_t len = some_len(rng);
    std::vector<Zep16s> da(400, 0x5EE5), db(400, 0x5EE5);
    EXPECT_EQ(zeps::u8::zepsSBADPCMEncodeBands_G722_16s(lo.data(), hi.data(), da.data(), len,
                                                        reinterpret_cast<ZepG722EncodeState*>(sa.data())),
              zeps::n8::zepsSBADPCMEncodeBands_G722_16s(lo.data(), hi.data(), db.data(), len,
                                                        reinterpret_cast<ZepG722EncodeState*>(sb.data())));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
}

ZEPS_VARIANT_CHECK(zepsSBADPCMDecode_G722_16s) {
    auto sa = warm_state<true>(rng), sb = sa;
    const auto codes = some_codes(rng, 400);
    const std::int32_t len = some_len(rng), mode = some_mode(rng);
    std::vector<Zep16s> da(800, 0x5EE5), db(800, 0x5EE5);
    EXPECT_EQ(zeps::u8::zepsSBADPCMDecode_G722_16s(codes.data(), da.data(), mode, len, reinterpret_cast<ZepG722DecodeState*>(sa.data())),
              zeps::n8::zepsSBADPCMDecode_G722_16s(codes.data(), db.data(), mode, len, reinterpret_cast<ZepG722DecodeState*>(sb.data())));
    EXPECT_TRUE(zeps::test::same_bytes(da, db));
    EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
}

ZEPS_VARIANT_CHECK(zepsSBADPCMDecodeBands_G722_16s) {
    auto sa = warm_state<true>(rng), sb = sa;
    const auto codes = some_codes(rng, 400);
    const std::int32_t len = some_len(rng), mode = some_mode(rng);
    std::vector<Zep16s> la(400, 0x5EE5), lb(400, 0x5EE5), ha(400, 0x5EE5), hb(400, 0x5EE5);
    EXPECT_EQ(zeps::u8::zepsSBADPCMDecodeBands_G722_16s(codes.data(), la.data(), ha.data(), mode, len,
                                                        reinterpret_cast<ZepG722DecodeState*>(sa.data())),
              zeps::n8::zepsSBADPCMDecodeBands_G722_16s(codes.data(), lb.data(), hb.data(), mode, len,
                                                        reinterpret_cast<ZepG722DecodeState*>(sb.data())));
    EXPECT_TRUE(zeps::test::same_bytes(la, lb));
    EXPECT_TRUE(zeps::test::same_bytes(ha, hb));
    EXPECT_TRUE(zeps::test::same_bytes(sa, sb));
}

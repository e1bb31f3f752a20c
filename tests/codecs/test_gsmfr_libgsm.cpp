// GSM full rate against libgsm, the independent GSM 06.10 implementation,
// both ways: the encoder on the shared speech and on synthetic signals that
// drive every stage to its limits (full-scale squares, noise, chirps, DC,
// silence), and the decoder on those bitstreams and on random frames, whose
// parameters reach every code (lags outside 40..120 included).
#include <gtest/gtest.h>

#include "tests/codecs/codec_replay.h"

#if ZEPS_HAVE_LIBGSM
#include <gsm.h>

#include <cmath>
#include <functional>
#include <random>

namespace zeps::codec_test {
namespace {

using zepsc_cli::CodecOptions;

struct Peer {
    gsm g = gsm_create();
    ~Peer() { gsm_destroy(g); }
};

std::vector<std::uint8_t> peer_encode(const std::vector<std::int16_t>& pcm) {
    Peer p;
    std::vector<std::uint8_t> out;
    for (std::size_t at = 0; at + 160 <= pcm.size(); at += 160) {
        gsm_signal s[160];
        gsm_frame f;
        std::copy(pcm.begin() + static_cast<std::ptrdiff_t>(at), pcm.begin() + static_cast<std::ptrdiff_t>(at) + 160, s);
        gsm_encode(p.g, s, f);
        out.insert(out.end(), f, f + 33);
    }
    return out;
}

std::vector<std::int16_t> peer_decode(const std::vector<std::uint8_t>& bits) {
    Peer p;
    std::vector<std::int16_t> out;
    for (std::size_t at = 0; at + 33 <= bits.size(); at += 33) {
        gsm_signal s[160];
        gsm_byte f[33];
        std::copy(bits.begin() + static_cast<std::ptrdiff_t>(at), bits.begin() + static_cast<std::ptrdiff_t>(at) + 33, f);
        EXPECT_EQ(gsm_decode(p.g, f, s), 0);
        out.insert(out.end(), s, s + 160);
    }
    return out;
}

std::vector<std::int16_t> synthetic(std::size_t n, const std::function<double(std::size_t)>& f) {
    std::vector<std::int16_t> x(n);
    for (std::size_t i = 0; i < n; ++i) x[i] = static_cast<std::int16_t>(std::clamp(f(i), -32768.0, 32767.0));
    return x;
}

struct Signal {
    std::string name;
    std::vector<std::int16_t> pcm;
};

std::vector<Signal> signals() {
    std::vector<Signal> out;
    for (const char* name : {"female", "loud", "male", "noisy", "quiet", "tones"})
        out.push_back({name, read_pcm(shared_dir() + "/speech/" + name + ".s16")});
    std::mt19937 rng(1);
    std::uniform_int_distribution<int> full(-32768, 32767), low(-24, 24);
    const std::size_t n = 160 * 120;
    out.push_back({"square 100 Hz full scale", synthetic(n, [](std::size_t i) { return (i / 40) % 2 ? 32767 : -32768; })});
    out.push_back({"alternating full scale", synthetic(n, [](std::size_t i) { return i % 2 ? 32767 : -32768; })});
    out.push_back({"white noise full scale", synthetic(n, [&](std::size_t) { return full(rng); })});
    out.push_back({"white noise low level", synthetic(n, [&](std::size_t) { return low(rng); })});
    out.push_back({"chirp 50-3950 Hz full scale", synthetic(n, [&](std::size_t i) {
                       const double t = static_cast<double>(i) / 8000.0, T = static_cast<double>(n) / 8000.0;
                       return 40000.0 * std::sin(2 * M_PI * (50 * t + 3900 / (2 * T) * t * t));
                   })});
    out.push_back({"DC -32768 then silence", synthetic(n, [&](std::size_t i) { return i < n / 2 ? -32768 : 0; })});
    out.push_back({"silence", std::vector<std::int16_t>(n, 0)});
    out.push_back({"impulses", synthetic(n, [](std::size_t i) { return i % 97 == 0 ? 32767 : i % 89 == 0 ? -32768 : 0; })});
    return out;
}

TEST(GsmfrLibgsm, EncoderAndDecoderAgree) {
    for (const Signal& s : signals()) {
        SCOPED_TRACE(s.name);
        const auto bits = zepsc_cli::encode_all(codec("gsmfr"), CodecOptions{}, "gsm", s.pcm.data(), s.pcm.size());
        const auto peer_bits = peer_encode(s.pcm);
        ASSERT_FALSE(peer_bits.empty());
        expect_same_bytes(bits, peer_bits, 33, s.name + " encoded");
        const auto pcm = zepsc_cli::decode_all(codec("gsmfr"), CodecOptions{}, "gsm", peer_bits.data(), peer_bits.size());
        expect_same_pcm(pcm, peer_decode(peer_bits), 160, s.name + " decoded");
    }
}

TEST(GsmfrLibgsm, DecodersAgreeOnRandomFrames) {
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> byte(0, 255);
    std::vector<std::uint8_t> bits(33 * 3000);
    for (std::size_t i = 0; i < bits.size(); ++i) bits[i] = static_cast<std::uint8_t>(byte(rng));
    for (std::size_t at = 0; at < bits.size(); at += 33) bits[at] = static_cast<std::uint8_t>(0xD0 | (bits[at] & 0x0F));
    const auto pcm = zepsc_cli::decode_all(codec("gsmfr"), CodecOptions{}, "gsm", bits.data(), bits.size());
    expect_same_pcm(pcm, peer_decode(bits), 160, "random frames decoded");
}

}  // namespace
}  // namespace zeps::codec_test
#else
TEST(GsmfrLibgsm, EncoderAndDecoderAgree) { GTEST_SKIP() << "libgsm (libgsm1-dev) not found at configure time"; }
#endif

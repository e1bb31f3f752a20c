// SPDX-License-Identifier: BSD-3-Clause
// Whole G.729 codecs per 10 ms frame: the encoder and decoder of the main
// body and of Annexes A, B and AB assembled from the public exports (the
// zepsc tool's codec), beside Debian's libbcg729 (G.729 Annex A, with or
// without its Annex B VAD/DTX) on the same speech. Frames of
// shared/speech/male.s16, looped. The BM_G729*_Rounds benchmarks time both
// implementations round by round (50 frames of ours, then the same 50
// frames of the peer, thread CPU time) and report microseconds per frame of
// each as counters, so that load on the machine strikes both alike.
#include <benchmark/benchmark.h>

#include <time.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/codec.h"

#if defined(ZEPS_HAVE_LIBBCG729)
extern "C" {  // the library's headers declare C functions without a C++ guard
#include <bcg729/decoder.h>
#include <bcg729/encoder.h>
}
#endif

namespace {

using V16 = std::vector<std::int16_t>;
constexpr std::size_t kFrame = 80;

const V16& speech() {
    static const V16 s = [] {
        V16 v;
        const std::string path = std::string(ZEPS_SHARED_DIR) + "/speech/male.s16";
        if (FILE* f = std::fopen(path.c_str(), "rb")) {
            std::int16_t buf[4096];
            std::size_t n;
            while ((n = std::fread(buf, sizeof(std::int16_t), 4096, f)) > 0) v.insert(v.end(), buf, buf + n);
            std::fclose(f);
        }
        if (v.size() < 100 * kFrame) v.assign(100 * kFrame, 0);
        v.resize(v.size() / kFrame * kFrame);
        return v;
    }();
    return s;
}

std::size_t frames() { return speech().size() / kFrame; }

zepsc_cli::CodecOptions annex(const char* a) {
    zepsc_cli::CodecOptions o;
    o.values["annex"] = a;
    return o;
}

const zepsc_cli::CodecSpec& g729() {
    const zepsc_cli::CodecSpec* c = zepsc_cli::find_codec("g729");
    if (!c) std::abort();
    return *c;
}

void encoder(benchmark::State& st, const char* a) {
    auto enc = g729().make_encoder(zepsc_cli::with_defaults(g729(), annex(a)), "g729");
    std::vector<std::uint8_t> out;
    out.reserve(16);
    std::size_t f = 0;
    for (auto _ : st) {
        out.clear();
        enc->encode(speech().data() + f * kFrame, out);
        benchmark::DoNotOptimize(out.data());
        if (++f == frames()) f = 0;
    }
    st.SetLabel("per 10 ms frame");
}

void decoder(benchmark::State& st, const char* a) {
    const auto bits = zepsc_cli::encode_all(g729(), annex(a), "g729", speech().data(), speech().size());
    auto dec = g729().make_decoder(zepsc_cli::with_defaults(g729(), annex(a)), "g729");
    std::int16_t pcm[kFrame];
    std::size_t f = 0;
    for (auto _ : st) {
        zepsc_cli::MemorySource src(bits.data() + f * 10, 10);
        benchmark::DoNotOptimize(dec->decode(src, pcm));
        if (++f == bits.size() / 10) f = 0;
    }
    st.SetLabel("per 10 ms frame");
}

void BM_G729_Encoder(benchmark::State& st) { encoder(st, "0"); }
void BM_G729_Decoder(benchmark::State& st) { decoder(st, "0"); }
void BM_G729A_Encoder(benchmark::State& st) { encoder(st, "A"); }
void BM_G729A_Decoder(benchmark::State& st) { decoder(st, "A"); }
BENCHMARK(BM_G729_Encoder);
BENCHMARK(BM_G729_Decoder);
BENCHMARK(BM_G729A_Encoder);
BENCHMARK(BM_G729A_Decoder);

#if defined(ZEPS_HAVE_LIBBCG729)
void BM_G729A_Encoder_bcg729(benchmark::State& st) {
    bcg729EncoderChannelContextStruct* enc = initBcg729EncoderChannel(0);
    std::uint8_t bits[10], len = 0;
    std::size_t f = 0;
    for (auto _ : st) {
        bcg729Encoder(enc, speech().data() + f * kFrame, bits, &len);
        benchmark::DoNotOptimize(bits);
        if (++f == frames()) f = 0;
    }
    closeBcg729EncoderChannel(enc);
    st.SetLabel("per 10 ms frame");
}
void BM_G729A_Decoder_bcg729(benchmark::State& st) {
    const auto bits = zepsc_cli::encode_all(g729(), annex("A"), "g729", speech().data(), speech().size());
    bcg729DecoderChannelContextStruct* dec = initBcg729DecoderChannel();
    std::int16_t pcm[kFrame];
    std::size_t f = 0;
    for (auto _ : st) {
        bcg729Decoder(dec, bits.data() + f * 10, 10, 0, 0, 0, pcm);
        benchmark::DoNotOptimize(pcm);
        if (++f == bits.size() / 10) f = 0;
    }
    closeBcg729DecoderChannel(dec);
    st.SetLabel("per 10 ms frame");
}
BENCHMARK(BM_G729A_Encoder_bcg729);
BENCHMARK(BM_G729A_Decoder_bcg729);
#endif

// ---- round-by-round timing of ours against the peer on the same frames

double thread_seconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

constexpr int kRound = 50;

/// Runs ours(frame) then peer(frame) (when given) over the same kRound
/// frames per iteration; counters: us per frame of each, and their ratio.
void rounds(benchmark::State& st, const std::function<void(std::size_t)>& ours,
            const std::function<void(std::size_t)>& peer, std::size_t nframes) {
    double t_ours = 0, t_peer = 0;
    std::size_t f = 0, n = 0;
    for (auto _ : st) {
        if (f + kRound > nframes) f = 0;
        double t0 = thread_seconds();
        for (int k = 0; k < kRound; ++k) ours(f + k);
        double t1 = thread_seconds();
        t_ours += t1 - t0;
        if (peer) {
            t0 = thread_seconds();
            for (int k = 0; k < kRound; ++k) peer(f + k);
            t1 = thread_seconds();
            t_peer += t1 - t0;
        }
        f += kRound;
        n += kRound;
    }
    if (n == 0) return;
    st.counters["zepsc_us"] = 1e6 * t_ours / static_cast<double>(n);
    if (peer) {
        st.counters["peer_us"] = 1e6 * t_peer / static_cast<double>(n);
        st.counters["peer/zepsc"] = t_ours > 0 ? t_peer / t_ours : 0;
    }
    st.SetLabel(peer ? "per 10 ms frame; peer: libbcg729" : "per 10 ms frame");
}

/// Our encoder of one annex in one format, frame by frame.
struct OurEncoder {
    std::unique_ptr<zepsc_cli::FrameEncoder> enc;
    std::vector<std::uint8_t> out;
    OurEncoder(const char* a, const char* fmt) {
        zepsc_cli::CodecOptions o = annex(a);
        enc = g729().make_encoder(zepsc_cli::with_defaults(g729(), o), fmt);
        out.reserve(512);
    }
    void frame(std::size_t f) {
        out.clear();
        enc->encode(speech().data() + f * kFrame, out);
        benchmark::DoNotOptimize(out.data());
    }
};

/// Our decoder over our own encoding of the speech, frame by frame
/// (the stream restarts at its end; the decoder state runs on).
struct OurDecoder {
    std::vector<std::uint8_t> bits;
    std::unique_ptr<zepsc_cli::FrameDecoder> dec;
    std::unique_ptr<zepsc_cli::MemorySource> src;
    std::int16_t pcm[kFrame];
    OurDecoder(const char* a, const char* fmt) {
        bits = zepsc_cli::encode_all(g729(), annex(a), fmt, speech().data(), speech().size());
        dec = g729().make_decoder(zepsc_cli::with_defaults(g729(), annex(a)), fmt);
        src = std::make_unique<zepsc_cli::MemorySource>(bits.data(), bits.size());
    }
    void frame(std::size_t) {
        if (dec->decode(*src, pcm) == 0) {
            src = std::make_unique<zepsc_cli::MemorySource>(bits.data(), bits.size());
            dec->decode(*src, pcm);
        }
        benchmark::DoNotOptimize(pcm);
    }
};

void encoder_rounds(benchmark::State& st, const char* a, const char* fmt, int peer_vad) {
    OurEncoder ours(a, fmt);
    std::function<void(std::size_t)> peer;
#if defined(ZEPS_HAVE_LIBBCG729)
    bcg729EncoderChannelContextStruct* enc = nullptr;
    std::uint8_t bits[10];
    std::uint8_t len = 0;
    if (peer_vad >= 0) {
        enc = initBcg729EncoderChannel(static_cast<std::uint8_t>(peer_vad));
        peer = [&](std::size_t f) {
            bcg729Encoder(enc, speech().data() + f * kFrame, bits, &len);
            benchmark::DoNotOptimize(bits);
        };
    }
#else
    (void)peer_vad;
#endif
    rounds(st, [&](std::size_t f) { ours.frame(f); }, peer, frames());
#if defined(ZEPS_HAVE_LIBBCG729)
    if (enc) closeBcg729EncoderChannel(enc);
#endif
}

void decoder_rounds(benchmark::State& st, const char* a, const char* fmt, int peer_vad) {
    OurDecoder ours(a, fmt);
    std::function<void(std::size_t)> peer;
#if defined(ZEPS_HAVE_LIBBCG729)
    // The peer decodes its own encoding of the same speech (frames of 10, 2
    // or 0 bytes with its VAD; untransmitted frames as comfort noise).
    std::vector<std::uint8_t> pbits(frames() * 10);
    std::vector<std::uint8_t> plen(frames());
    bcg729DecoderChannelContextStruct* dec = nullptr;
    std::int16_t pcm[kFrame];
    if (peer_vad >= 0) {
        bcg729EncoderChannelContextStruct* enc = initBcg729EncoderChannel(static_cast<std::uint8_t>(peer_vad));
        for (std::size_t f = 0; f < frames(); ++f) bcg729Encoder(enc, speech().data() + f * kFrame, &pbits[f * 10], &plen[f]);
        closeBcg729EncoderChannel(enc);
        dec = initBcg729DecoderChannel();
        peer = [&](std::size_t f) {
            bcg729Decoder(dec, &pbits[f * 10], plen[f], 0, plen[f] == 10 ? 0 : 1, 0, pcm);
            benchmark::DoNotOptimize(pcm);
        };
    }
#else
    (void)peer_vad;
#endif
    rounds(st, [&](std::size_t f) { ours.frame(f); }, peer, frames());
#if defined(ZEPS_HAVE_LIBBCG729)
    if (dec) closeBcg729DecoderChannel(dec);
#endif
}

void BM_G729_Encoder_Rounds(benchmark::State& st) { encoder_rounds(st, "0", "g729", -1); }
void BM_G729_Decoder_Rounds(benchmark::State& st) { decoder_rounds(st, "0", "g729", -1); }
void BM_G729A_Encoder_Rounds(benchmark::State& st) { encoder_rounds(st, "A", "g729", 0); }
void BM_G729A_Decoder_Rounds(benchmark::State& st) { decoder_rounds(st, "A", "g729", 0); }
void BM_G729B_Encoder_Rounds(benchmark::State& st) { encoder_rounds(st, "B", "bit", -1); }
void BM_G729B_Decoder_Rounds(benchmark::State& st) { decoder_rounds(st, "B", "bit", -1); }
void BM_G729AB_Encoder_Rounds(benchmark::State& st) { encoder_rounds(st, "AB", "bit", 1); }
void BM_G729AB_Decoder_Rounds(benchmark::State& st) { decoder_rounds(st, "AB", "bit", 1); }
BENCHMARK(BM_G729_Encoder_Rounds);
BENCHMARK(BM_G729_Decoder_Rounds);
BENCHMARK(BM_G729A_Encoder_Rounds);
BENCHMARK(BM_G729A_Decoder_Rounds);
BENCHMARK(BM_G729B_Encoder_Rounds);
BENCHMARK(BM_G729B_Decoder_Rounds);
BENCHMARK(BM_G729AB_Encoder_Rounds);
BENCHMARK(BM_G729AB_Decoder_Rounds);

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
// G.726 encoder and decoder throughput at the four rates, beside the peers
// (spandsp, FFmpeg's libavcodec g726) on the same speech in the same run.
// Counters: ns per sample (best pass, thread CPU time), and each peer's ns
// per sample (best of 200 passes) with the speed-up ratio (peer time / our
// time; above 1 means faster than the peer).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <cstdint>
#include <fstream>
#include <functional>
#include <map>
#include <vector>

#include "frame/variants.h"
#include "g722/g726_coder.h"

#ifdef ZEPS_HAVE_SPANDSP
#include <spandsp.h>
#endif
#ifdef ZEPS_HAVE_LIBAVCODEC
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}
#endif

namespace {

constexpr int kSamples = 16000;  // 2 s of speech per iteration
constexpr std::int32_t kRates[4] = {17, 22, 23, 24};
constexpr int kBitRates[4] = {16000, 24000, 32000, 40000};

const std::vector<std::int16_t>& speech16() {
    static const std::vector<std::int16_t> s = [] {
        std::vector<std::int16_t> v(kSamples);
        std::ifstream f(ZEPS_SHARED_DIR "/speech/male.s16", std::ios::binary);
        for (auto& x : v) {
            unsigned char b[2] = {0, 0};
            f.read(reinterpret_cast<char*>(b), 2);
            x = static_cast<std::int16_t>(b[0] | (b[1] << 8));
        }
        return v;
    }();
    return s;
}
const std::vector<std::int16_t>& speech14() {
    static const std::vector<std::int16_t> s = [] {
        auto v = speech16();
        for (auto& x : v) x = static_cast<std::int16_t>(x >> 2);
        return v;
    }();
    return s;
}
const std::vector<std::uint8_t>& codes(int r) {
    static std::map<int, std::vector<std::uint8_t>> cache;
    auto& c = cache[r];
    if (c.empty()) {
        std::vector<std::uint8_t> st(88);
        c.resize(kSamples);
        zeps::u8::zepsEncodeInit_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(st.data()), kRates[r]);
        zeps::u8::zepsEncode_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(st.data()), speech14().data(), c.data(),
                                        kSamples);
    }
    return c;
}

/// CPU time of this thread in ns (the machine is shared: wall time would
/// count other processes' time slices).
double cpu_ns() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e9 + static_cast<double>(ts.tv_nsec);
}

/// Best-of-several CPU time of one pass, in ns per sample.
double ns_per_sample(const std::function<void()>& pass) {
    double best = 1e30;
    for (int k = 0; k < 200; ++k) {
        const double t0 = cpu_ns();
        pass();
        best = std::min(best, (cpu_ns() - t0) / kSamples);
    }
    return best;
}

// ---------------------------------------------------------------- peers

#ifdef ZEPS_HAVE_SPANDSP
void spandsp_encode(int r) {
    static std::vector<std::uint8_t> out(kSamples);
    g726_state_t* s = g726_init(nullptr, kBitRates[r], G726_ENCODING_LINEAR, G726_PACKING_NONE);
    g726_encode(s, out.data(), speech16().data(), kSamples);
    g726_free(s);
    benchmark::DoNotOptimize(out.data());
}
void spandsp_decode(int r) {
    static std::vector<std::int16_t> out(kSamples);
    g726_state_t* s = g726_init(nullptr, kBitRates[r], G726_ENCODING_LINEAR, G726_PACKING_NONE);
    g726_decode(s, out.data(), codes(r).data(), kSamples);
    g726_free(s);
    benchmark::DoNotOptimize(out.data());
}
#endif

#ifdef ZEPS_HAVE_LIBAVCODEC
constexpr int kFrame = 160;

AVCodecContext* open_ffmpeg(bool encoder, int r) {
    const AVCodec* codec = encoder ? avcodec_find_encoder(AV_CODEC_ID_ADPCM_G726)
                                   : avcodec_find_decoder(AV_CODEC_ID_ADPCM_G726);
    if (codec == nullptr) return nullptr;
    AVCodecContext* ctx = avcodec_alloc_context3(codec);
    ctx->sample_rate = 8000;
    av_channel_layout_default(&ctx->ch_layout, 1);
    ctx->sample_fmt = AV_SAMPLE_FMT_S16;
    ctx->bit_rate = kBitRates[r];
    ctx->bits_per_coded_sample = r + 2;
    ctx->frame_size = kFrame;
    if (avcodec_open2(ctx, codec, nullptr) < 0) avcodec_free_context(&ctx);
    return ctx;
}

// FFmpeg's packets (bit-packed codes) for the decoder benchmark.
const std::vector<std::vector<std::uint8_t>>& ffmpeg_packets(int r) {
    static std::map<int, std::vector<std::vector<std::uint8_t>>> cache;
    auto& p = cache[r];
    if (p.empty()) {
        AVCodecContext* ctx = open_ffmpeg(true, r);
        AVFrame* f = av_frame_alloc();
        AVPacket* pkt = av_packet_alloc();
        for (int n = 0; n + kFrame <= kSamples; n += kFrame) {
            f->nb_samples = kFrame;
            f->format = AV_SAMPLE_FMT_S16;
            av_channel_layout_default(&f->ch_layout, 1);
            av_frame_get_buffer(f, 0);
            std::copy_n(speech16().data() + n, kFrame, reinterpret_cast<std::int16_t*>(f->data[0]));
            avcodec_send_frame(ctx, f);
            while (avcodec_receive_packet(ctx, pkt) == 0) {
                p.emplace_back(pkt->data, pkt->data + pkt->size);
                av_packet_unref(pkt);
            }
            av_frame_unref(f);
        }
        av_packet_free(&pkt);
        av_frame_free(&f);
        avcodec_free_context(&ctx);
    }
    return p;
}

void ffmpeg_encode(int r) {
    AVCodecContext* ctx = open_ffmpeg(true, r);
    AVFrame* f = av_frame_alloc();
    AVPacket* pkt = av_packet_alloc();
    f->nb_samples = kFrame;
    f->format = AV_SAMPLE_FMT_S16;
    av_channel_layout_default(&f->ch_layout, 1);
    av_frame_get_buffer(f, 0);
    for (int n = 0; n + kFrame <= kSamples; n += kFrame) {
        av_frame_make_writable(f);
        std::copy_n(speech16().data() + n, kFrame, reinterpret_cast<std::int16_t*>(f->data[0]));
        avcodec_send_frame(ctx, f);
        while (avcodec_receive_packet(ctx, pkt) == 0) av_packet_unref(pkt);
    }
    av_packet_free(&pkt);
    av_frame_free(&f);
    avcodec_free_context(&ctx);
}
void ffmpeg_decode(int r) {
    const auto& packets = ffmpeg_packets(r);
    AVCodecContext* ctx = open_ffmpeg(false, r);
    AVFrame* f = av_frame_alloc();
    AVPacket* pkt = av_packet_alloc();
    for (const auto& p : packets) {
        av_new_packet(pkt, static_cast<int>(p.size()));
        std::copy(p.begin(), p.end(), pkt->data);
        avcodec_send_packet(ctx, pkt);
        av_packet_unref(pkt);
        while (avcodec_receive_frame(ctx, f) == 0) av_frame_unref(f);
    }
    av_packet_free(&pkt);
    av_frame_free(&f);
    avcodec_free_context(&ctx);
}
#endif

// Peer figures, measured once per (direction, rate).
struct PeerTimes {
    double spandsp = 0, ffmpeg = 0;
};
PeerTimes peer_times(bool encode, int r) {
    static std::map<int, PeerTimes> cache;
    const int key = encode * 10 + r;
    auto it = cache.find(key);
    if (it != cache.end()) return it->second;
    PeerTimes t;
#ifdef ZEPS_HAVE_SPANDSP
    t.spandsp = ns_per_sample([&] { encode ? spandsp_encode(r) : spandsp_decode(r); });
#endif
#ifdef ZEPS_HAVE_LIBAVCODEC
    if (!encode) ffmpeg_packets(r);  // packets made before the timing
    t.ffmpeg = ns_per_sample([&] { encode ? ffmpeg_encode(r) : ffmpeg_decode(r); });
#endif
    return cache[key] = t;
}

void report(benchmark::State& state, double ours_ns, bool encode, int r) {
    const PeerTimes p = peer_times(encode, r);
    state.counters["ns_per_sample"] = ours_ns;
    if (p.spandsp > 0) {
        state.counters["spandsp_ns"] = p.spandsp;
        state.counters["x_spandsp"] = p.spandsp / ours_ns;
    }
    if (p.ffmpeg > 0) {
        state.counters["ffmpeg_ns"] = p.ffmpeg;
        state.counters["x_ffmpeg"] = p.ffmpeg / ours_ns;
    }
    state.SetItemsProcessed(state.iterations() * kSamples);
}

// ---------------------------------------------------------------- ours

void BM_G726Encode(benchmark::State& state) {
    const int r = static_cast<int>(state.range(0));
    std::vector<std::uint8_t> st(88), out(kSamples);
    auto* s = reinterpret_cast<ZepG726EncodeState*>(st.data());
    zeps::u8::zepsEncodeInit_G726_16s8u(s, kRates[r]);
    double best = 1e30;
    for (auto _ : state) {
        const double t0 = cpu_ns();
        zeps::u8::zepsEncode_G726_16s8u(s, speech14().data(), out.data(), kSamples);
        benchmark::DoNotOptimize(out.data());
        best = std::min(best, cpu_ns() - t0);
    }
    report(state, best / kSamples, true, r);
}
BENCHMARK(BM_G726Encode)->DenseRange(0, 3)->ArgName("rate_index");

// Baseline: the same coder with the plain scalar predictor.
template <int R>
void encode_scalar(zeps::ref::g726::Core& core, const std::int16_t* src, std::uint8_t* dst) {
    zeps::ref::g726::encode_samples<R, zeps::ref::g726::ScalarPredictor<zeps::ref::g726::leak(R)>>(core, src, dst,
                                                                                                   kSamples);
}
void BM_G726EncodeScalarPredictor(benchmark::State& state) {
    const int r = static_cast<int>(state.range(0));
    std::vector<std::uint8_t> out(kSamples);
    zeps::ref::g726::Core core;
    zeps::ref::g726::reset(core, r);
    double best = 1e30;
    for (auto _ : state) {
        const double t0 = cpu_ns();
        switch (r) {
            case 0: encode_scalar<0>(core, speech14().data(), out.data()); break;
            case 1: encode_scalar<1>(core, speech14().data(), out.data()); break;
            case 2: encode_scalar<2>(core, speech14().data(), out.data()); break;
            default: encode_scalar<3>(core, speech14().data(), out.data()); break;
        }
        benchmark::DoNotOptimize(out.data());
        best = std::min(best, cpu_ns() - t0);
    }
    state.counters["ns_per_sample"] = best / kSamples;
}
BENCHMARK(BM_G726EncodeScalarPredictor)->DenseRange(0, 3)->ArgName("rate_index");

void BM_G726Decode(benchmark::State& state) {
    const int r = static_cast<int>(state.range(0));
    std::vector<std::uint8_t> st(92);
    std::vector<std::int16_t> out(kSamples);
    auto* s = reinterpret_cast<ZepG726DecodeState*>(st.data());
    zeps::u8::zepsDecodeInit_G726_8u16s(s, kRates[r], static_cast<std::int32_t>(state.range(1)));
    const auto& in = codes(r);
    double best = 1e30;
    for (auto _ : state) {
        const double t0 = cpu_ns();
        zeps::u8::zepsDecode_G726_8u16s(s, in.data(), out.data(), kSamples);
        benchmark::DoNotOptimize(out.data());
        best = std::min(best, cpu_ns() - t0);
    }
    // The peers decode to linear; compare the linear output (law 2) with them.
    if (state.range(1) == 2)
        report(state, best / kSamples, false, r);
    else
        state.counters["ns_per_sample"] = best / kSamples;
}
BENCHMARK(BM_G726Decode)->ArgsProduct({{0, 1, 2, 3}, {2, 0}})->ArgNames({"rate_index", "law"});

}  // namespace

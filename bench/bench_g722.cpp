// SPDX-License-Identifier: BSD-3-Clause
// G.722 encoder and decoder throughput (64 kbit/s encoder, decoder modes 1
// and 3) beside the peers (spandsp, FFmpeg's libavcodec g722) on the same
// 16 kHz speech in the same run. Counters: ns per 16 kHz sample (best pass,
// thread CPU time), each peer's ns per sample (best of 200 passes) and the
// speed-up ratio (peer time / our time; above 1 means faster than the peer).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <functional>
#include <map>
#include <vector>

#include "frame/variants.h"

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

constexpr int kSamples = 32000;  // 2 s at 16 kHz per pass
constexpr int kCodes = kSamples / 2;

const std::vector<std::int16_t>& speech() {
    static const std::vector<std::int16_t> s = [] {
        std::vector<std::int16_t> v(kSamples);
        std::ifstream f(ZEPS_SHARED_DIR "/codecs/g722/input16k/male.s16", std::ios::binary);
        for (auto& x : v) {
            unsigned char b[2] = {0, 0};
            f.read(reinterpret_cast<char*>(b), 2);
            x = static_cast<std::int16_t>(b[0] | (b[1] << 8));
        }
        return v;
    }();
    return s;
}
const std::vector<Zep16s>& codes() {
    static const std::vector<Zep16s> c = [] {
        std::vector<std::uint8_t> st(144);
        std::vector<Zep16s> v(kCodes);
        auto* s = reinterpret_cast<ZepG722EncodeState*>(st.data());
        zeps::u8::zepsSBADPCMEncodeInit_G722_16s(s);
        zeps::u8::zepsSBADPCMEncode_G722_16s(speech().data(), v.data(), kSamples, s);
        return v;
    }();
    return c;
}
const std::vector<std::uint8_t>& code_bytes() {
    static const std::vector<std::uint8_t> b(codes().begin(), codes().end());
    return b;
}

/// CPU time of this thread in ns (the machine is shared).
double cpu_ns() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e9 + static_cast<double>(ts.tv_nsec);
}

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
void spandsp_encode() {
    static std::vector<std::uint8_t> out(kCodes);
    g722_encode_state_t* s = g722_encode_init(nullptr, 64000, 0);
    g722_encode(s, out.data(), speech().data(), kSamples);
    g722_encode_free(s);
    benchmark::DoNotOptimize(out.data());
}
void spandsp_decode(int mode) {
    static std::vector<std::int16_t> out(kSamples);
    static std::vector<std::uint8_t> in(kCodes);
    // spandsp takes 6-bit code words at 48 kbit/s.
    for (int i = 0; i < kCodes; ++i)
        in[i] = mode == 3 ? static_cast<std::uint8_t>(((code_bytes()[i] >> 6) << 4) | ((code_bytes()[i] & 0x3F) >> 2))
                          : code_bytes()[i];
    g722_decode_state_t* s = g722_decode_init(nullptr, mode == 3 ? 48000 : 64000, 0);
    g722_decode(s, out.data(), in.data(), kCodes);
    g722_decode_free(s);
    benchmark::DoNotOptimize(out.data());
}
#endif

#ifdef ZEPS_HAVE_LIBAVCODEC
constexpr int kFrame = 320;  // samples per FFmpeg frame (20 ms)

AVCodecContext* open_ffmpeg(bool encoder) {
    const AVCodec* codec =
        encoder ? avcodec_find_encoder(AV_CODEC_ID_ADPCM_G722) : avcodec_find_decoder(AV_CODEC_ID_ADPCM_G722);
    if (codec == nullptr) return nullptr;
    AVCodecContext* ctx = avcodec_alloc_context3(codec);
    ctx->sample_rate = 16000;
    av_channel_layout_default(&ctx->ch_layout, 1);
    ctx->sample_fmt = AV_SAMPLE_FMT_S16;
    ctx->bit_rate = 64000;
    ctx->bits_per_coded_sample = 8;
    ctx->frame_size = kFrame;
    if (avcodec_open2(ctx, codec, nullptr) < 0) avcodec_free_context(&ctx);
    return ctx;
}

void ffmpeg_encode() {
    AVCodecContext* ctx = open_ffmpeg(true);
    if (!ctx) return;
    AVFrame* f = av_frame_alloc();
    AVPacket* pkt = av_packet_alloc();
    f->nb_samples = kFrame;
    f->format = AV_SAMPLE_FMT_S16;
    av_channel_layout_default(&f->ch_layout, 1);
    av_frame_get_buffer(f, 0);
    for (int n = 0; n + kFrame <= kSamples; n += kFrame) {
        av_frame_make_writable(f);
        std::copy_n(speech().data() + n, kFrame, reinterpret_cast<std::int16_t*>(f->data[0]));
        avcodec_send_frame(ctx, f);
        while (avcodec_receive_packet(ctx, pkt) == 0) av_packet_unref(pkt);
    }
    av_packet_free(&pkt);
    av_frame_free(&f);
    avcodec_free_context(&ctx);
}
void ffmpeg_decode() {
    AVCodecContext* ctx = open_ffmpeg(false);
    if (!ctx) return;
    AVFrame* f = av_frame_alloc();
    AVPacket* pkt = av_packet_alloc();
    for (int n = 0; n + kFrame / 2 <= kCodes; n += kFrame / 2) {
        av_new_packet(pkt, kFrame / 2);
        std::copy_n(code_bytes().data() + n, kFrame / 2, pkt->data);
        avcodec_send_packet(ctx, pkt);
        av_packet_unref(pkt);
        while (avcodec_receive_frame(ctx, f) == 0) av_frame_unref(f);
    }
    av_packet_free(&pkt);
    av_frame_free(&f);
    avcodec_free_context(&ctx);
}
#endif

struct PeerTimes {
    double spandsp = 0, ffmpeg = 0;
};
PeerTimes peer_times(bool encode, int mode) {
    static std::map<int, PeerTimes> cache;
    const int key = encode * 10 + mode;
    auto it = cache.find(key);
    if (it != cache.end()) return it->second;
    PeerTimes t;
#ifdef ZEPS_HAVE_SPANDSP
    t.spandsp = ns_per_sample([&] { encode ? spandsp_encode() : spandsp_decode(mode); });
#endif
#ifdef ZEPS_HAVE_LIBAVCODEC
    if (encode || mode == 1) t.ffmpeg = ns_per_sample([&] { encode ? ffmpeg_encode() : ffmpeg_decode(); });
#endif
    return cache[key] = t;
}

void report(benchmark::State& state, double ours_ns, bool encode, int mode) {
    const PeerTimes p = peer_times(encode, mode);
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

void BM_G722Encode(benchmark::State& state) {
    std::vector<std::uint8_t> st(144);
    std::vector<Zep16s> out(kCodes);
    auto* s = reinterpret_cast<ZepG722EncodeState*>(st.data());
    zeps::u8::zepsSBADPCMEncodeInit_G722_16s(s);
    double best = 1e30;
    for (auto _ : state) {
        const double t0 = cpu_ns();
        zeps::u8::zepsSBADPCMEncode_G722_16s(speech().data(), out.data(), kSamples, s);
        benchmark::DoNotOptimize(out.data());
        best = std::min(best, cpu_ns() - t0);
    }
    report(state, best / kSamples, true, 1);
}
BENCHMARK(BM_G722Encode);

void BM_G722Decode(benchmark::State& state) {
    const int mode = static_cast<int>(state.range(0));
    std::vector<std::uint8_t> st(144);
    std::vector<Zep16s> out(kSamples);
    auto* s = reinterpret_cast<ZepG722DecodeState*>(st.data());
    zeps::u8::zepsSBADPCMDecodeInit_G722_16s(s);
    double best = 1e30;
    for (auto _ : state) {
        const double t0 = cpu_ns();
        zeps::u8::zepsSBADPCMDecode_G722_16s(codes().data(), out.data(), mode, kCodes, s);
        benchmark::DoNotOptimize(out.data());
        best = std::min(best, cpu_ns() - t0);
    }
    report(state, best / kSamples, false, mode);
}
BENCHMARK(BM_G722Decode)->Arg(1)->Arg(3)->ArgName("mode");

}  // namespace

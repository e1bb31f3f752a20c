// SPDX-License-Identifier: BSD-3-Clause
// G.722 encoder (64 kbit/s) and decoder (modes 1 and 3) through the public
// entries (and each build forced), round by round in one loop with the
// peers on the same 16 kHz speech (bench/interleaved.h):
//   spandsp   g722_encode/g722_decode, state made once and carried across
//             calls as ours is; at 48 kbit/s it takes 6-bit code words,
//             made from the same codes before the timing
//   ffmpeg    libavcodec adpcm_g722, context, frame and packet made once;
//             320-sample frames / 160-byte packets of the same codes (mode 3:
//             bits_per_coded_sample 6, which reads the same bytes)
// One call = 32000 samples (2 s); counters in ns per 16 kHz sample;
// x_<peer> = median of the per-round peer / zepsc time ratios.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "bench/interleaved.h"
#include "bench/speech_file.h"
#include "zepsc.h"

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

constexpr int kSamples = 32000;  // 2 s at 16 kHz per call
constexpr int kCodes = kSamples / 2;

const std::vector<std::int16_t>& speech() {
    static const std::vector<std::int16_t> s = zb::read_s16_le(ZEPS_SHARED_DIR "/codecs/g722/input16k/male.s16", kSamples);
    return s;
}

template <class T>
std::shared_ptr<std::vector<std::uint8_t>> state_of(ZepStatus (*size)(Zep32s*), ZepStatus (*init)(T*)) {
    Zep32s n = 0;
    size(&n);
    auto st = std::make_shared<std::vector<std::uint8_t>>(static_cast<std::size_t>(n));
    init(reinterpret_cast<T*>(st->data()));
    return st;
}

const std::vector<Zep16s>& codes() {
    static const std::vector<Zep16s> c = [] {
        auto st = state_of(zepsSBADPCMEncodeStateSize_G722_16s, zepsSBADPCMEncodeInit_G722_16s);
        std::vector<Zep16s> v(kCodes);
        zepsSBADPCMEncode_G722_16s(speech().data(), v.data(), kSamples, reinterpret_cast<ZepG722EncodeState*>(st->data()));
        return v;
    }();
    return c;
}
const std::vector<std::uint8_t>& code_bytes() {
    static const std::vector<std::uint8_t> b(codes().begin(), codes().end());
    return b;
}

// ---------------------------------------------------------------- peers

#ifdef ZEPS_HAVE_SPANDSP
zb::Peer spandsp(bool encode, int mode) {
    if (encode) {
        auto s = std::shared_ptr<g722_encode_state_t>(g722_encode_init(nullptr, 64000, 0), g722_encode_free);
        auto out = std::make_shared<std::vector<std::uint8_t>>(kCodes);
        return {"spandsp", [s, out] {
                    g722_encode(s.get(), out->data(), speech().data(), kSamples);
                    benchmark::DoNotOptimize(out->data());
                }};
    }
    auto s = std::shared_ptr<g722_decode_state_t>(g722_decode_init(nullptr, mode == 3 ? 48000 : 64000, 0),
                                                  g722_decode_free);
    auto in = std::make_shared<std::vector<std::uint8_t>>(kCodes);
    for (int i = 0; i < kCodes; ++i) {
        const int c = code_bytes()[static_cast<std::size_t>(i)];
        (*in)[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(mode == 3 ? ((c >> 6) << 4) | ((c & 0x3F) >> 2) : c);
    }
    auto out = std::make_shared<std::vector<std::int16_t>>(kSamples);
    return {"spandsp", [s, in, out] {
                g722_decode(s.get(), out->data(), in->data(), kCodes);
                benchmark::DoNotOptimize(out->data());
            }};
}
#endif

#ifdef ZEPS_HAVE_LIBAVCODEC
constexpr int kFrame = 320;  // samples per FFmpeg frame (20 ms)

AVCodecContext* open_ffmpeg(bool encoder, int mode) {
    const AVCodec* codec =
        encoder ? avcodec_find_encoder(AV_CODEC_ID_ADPCM_G722) : avcodec_find_decoder(AV_CODEC_ID_ADPCM_G722);
    if (codec == nullptr) return nullptr;
    AVCodecContext* ctx = avcodec_alloc_context3(codec);
    ctx->sample_rate = 16000;
    av_channel_layout_default(&ctx->ch_layout, 1);
    ctx->sample_fmt = AV_SAMPLE_FMT_S16;
    ctx->bit_rate = 64000;
    ctx->bits_per_coded_sample = mode == 3 ? 6 : 8;
    ctx->frame_size = kFrame;
    if (avcodec_open2(ctx, codec, nullptr) < 0) avcodec_free_context(&ctx);
    return ctx;
}

struct Ffmpeg {
    AVCodecContext* ctx = nullptr;
    AVFrame* f = av_frame_alloc();
    AVPacket* pkt = av_packet_alloc();
    ~Ffmpeg() {
        av_packet_free(&pkt);
        av_frame_free(&f);
        avcodec_free_context(&ctx);
    }
};

zb::Peer ffmpeg(bool encode, int mode) {
    auto c = std::make_shared<Ffmpeg>();
    c->ctx = open_ffmpeg(encode, mode);
    if (c->ctx == nullptr) return {"", nullptr};
    if (encode) {
        c->f->nb_samples = kFrame;
        c->f->format = AV_SAMPLE_FMT_S16;
        av_channel_layout_default(&c->f->ch_layout, 1);
        av_frame_get_buffer(c->f, 0);
        return {"ffmpeg", [c] {
                    for (int n = 0; n + kFrame <= kSamples; n += kFrame) {
                        av_frame_make_writable(c->f);
                        std::copy_n(speech().data() + n, kFrame, reinterpret_cast<std::int16_t*>(c->f->data[0]));
                        avcodec_send_frame(c->ctx, c->f);
                        while (avcodec_receive_packet(c->ctx, c->pkt) == 0) av_packet_unref(c->pkt);
                    }
                }};
    }
    return {"ffmpeg", [c] {
                for (int n = 0; n + kFrame / 2 <= kCodes; n += kFrame / 2) {
                    av_new_packet(c->pkt, kFrame / 2);
                    std::copy_n(code_bytes().data() + n, kFrame / 2, c->pkt->data);
                    avcodec_send_packet(c->ctx, c->pkt);
                    av_packet_unref(c->pkt);
                    while (avcodec_receive_frame(c->ctx, c->f) == 0) av_frame_unref(c->f);
                }
            }};
}
#endif

std::vector<zb::Peer> peers(bool encode, int mode) {
    std::vector<zb::Peer> p;
#ifdef ZEPS_HAVE_SPANDSP
    p.push_back(spandsp(encode, mode));
#endif
#ifdef ZEPS_HAVE_LIBAVCODEC
    if (zb::Peer f = ffmpeg(encode, mode); f.call) p.push_back(std::move(f));
#endif
    return p;
}

// ---------------------------------------------------------------- ours

void BM_G722Encode(benchmark::State& state) {
    codes();  // the peers' inputs and ours made before the timing
    zb::interleaved(
        state,
        [] {
            auto st = state_of(zepsSBADPCMEncodeStateSize_G722_16s, zepsSBADPCMEncodeInit_G722_16s);
            auto out = std::make_shared<std::vector<Zep16s>>(kCodes);
            return zb::Call([st, out] {
                zepsSBADPCMEncode_G722_16s(speech().data(), out->data(), kSamples,
                                           reinterpret_cast<ZepG722EncodeState*>(st->data()));
                benchmark::DoNotOptimize(out->data());
            });
        },
        peers(true, 1), kSamples);
    state.SetLabel("64 kbit/s, ns per 16 kHz sample");
}
BENCHMARK(BM_G722Encode)->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

void BM_G722Decode(benchmark::State& state) {
    const int mode = static_cast<int>(state.range(0));
    zb::interleaved(
        state,
        [mode] {
            auto st = state_of(zepsSBADPCMDecodeStateSize_G722_16s, zepsSBADPCMDecodeInit_G722_16s);
            auto out = std::make_shared<std::vector<Zep16s>>(kSamples);
            return zb::Call([st, out, mode] {
                zepsSBADPCMDecode_G722_16s(codes().data(), out->data(), mode, kCodes,
                                           reinterpret_cast<ZepG722DecodeState*>(st->data()));
                benchmark::DoNotOptimize(out->data());
            });
        },
        peers(false, mode), kSamples);
    state.SetLabel(mode == 3 ? "mode 3 (48 kbit/s), ns per 16 kHz sample" : "mode 1 (64 kbit/s), ns per 16 kHz sample");
}
BENCHMARK(BM_G722Decode)->Arg(1)->Arg(3)->ArgName("mode")->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

}  // namespace

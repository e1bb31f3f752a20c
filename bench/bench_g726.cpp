// SPDX-License-Identifier: BSD-3-Clause
// G.726 encoder and decoder at the four rates, through the public entries
// (and each build forced), interleaved round by round with the peers on the
// same speech: spandsp (g726_encode/g726_decode, linear, state made once and
// carried across calls as ours is) and FFmpeg's libavcodec g726 (context
// opened once; 160-sample frames / their packets). One call = 16000 samples;
// counters in ns per sample, ratios = peer time / zepsc time (median of the
// per-round ratios; see bench/interleaved.h).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <map>
#include <vector>

#include "bench/interleaved.h"
#include "bench/speech_file.h"
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
    static const std::vector<std::int16_t> s = zb::read_s16_le(ZEPS_SHARED_DIR "/speech/male.s16", kSamples);
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

// ---------------------------------------------------------------- peers

#ifdef ZEPS_HAVE_SPANDSP
zb::Peer spandsp(bool encode, int r) {
    auto st = std::shared_ptr<g726_state_t>(
        g726_init(nullptr, kBitRates[r], G726_ENCODING_LINEAR, G726_PACKING_NONE), g726_free);
    auto out = std::make_shared<std::vector<std::uint8_t>>(2 * kSamples);
    const std::uint8_t* in = codes(r).data();
    return {"spandsp", [=] {
                if (encode)
                    g726_encode(st.get(), out->data(), speech16().data(), kSamples);
                else
                    g726_decode(st.get(), reinterpret_cast<std::int16_t*>(out->data()), in, kSamples);
                benchmark::DoNotOptimize(out->data());
            }};
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

/// The context, frame and packet made once; one call codes the 16000
/// samples frame by frame (encode) or decodes their packets.
zb::Peer ffmpeg(bool encode, int r) {
    struct Ctx {
        AVCodecContext* ctx;
        AVFrame* f = av_frame_alloc();
        AVPacket* pkt = av_packet_alloc();
        ~Ctx() {
            av_packet_free(&pkt);
            av_frame_free(&f);
            avcodec_free_context(&ctx);
        }
    };
    if (!encode) ffmpeg_packets(r);  // packets made before the timing
    auto c = std::make_shared<Ctx>();
    c->ctx = open_ffmpeg(encode, r);
    if (encode) {
        c->f->nb_samples = kFrame;
        c->f->format = AV_SAMPLE_FMT_S16;
        av_channel_layout_default(&c->f->ch_layout, 1);
        av_frame_get_buffer(c->f, 0);
    }
    return {"ffmpeg", [=] {
                if (encode) {
                    for (int n = 0; n + kFrame <= kSamples; n += kFrame) {
                        av_frame_make_writable(c->f);
                        std::copy_n(speech16().data() + n, kFrame, reinterpret_cast<std::int16_t*>(c->f->data[0]));
                        avcodec_send_frame(c->ctx, c->f);
                        while (avcodec_receive_packet(c->ctx, c->pkt) == 0) av_packet_unref(c->pkt);
                    }
                } else {
                    for (const auto& p : ffmpeg_packets(r)) {
                        av_new_packet(c->pkt, static_cast<int>(p.size()));
                        std::copy(p.begin(), p.end(), c->pkt->data);
                        avcodec_send_packet(c->ctx, c->pkt);
                        av_packet_unref(c->pkt);
                        while (avcodec_receive_frame(c->ctx, c->f) == 0) av_frame_unref(c->f);
                    }
                }
            }};
}
#endif

std::vector<zb::Peer> peers(bool encode, int r) {
    std::vector<zb::Peer> p;
#ifdef ZEPS_HAVE_SPANDSP
    p.push_back(spandsp(encode, r));
#endif
#ifdef ZEPS_HAVE_LIBAVCODEC
    p.push_back(ffmpeg(encode, r));
#endif
    return p;
}

// ---------------------------------------------------------------- ours

// Baseline: the same coder with the plain scalar predictor (u8 compile
// of the header templates inside this program).
template <int R>
void encode_scalar(zeps::ref::g726::Core& core, const std::int16_t* src, std::uint8_t* dst) {
    zeps::ref::g726::encode_samples<R, zeps::ref::g726::ScalarPredictor<zeps::ref::g726::leak(R)>>(core, src, dst,
                                                                                                   kSamples);
}
zb::Peer scalar_predictor(int r) {
    auto core = std::make_shared<zeps::ref::g726::Core>();
    zeps::ref::g726::reset(*core, r);
    auto out = std::make_shared<std::vector<std::uint8_t>>(kSamples);
    return {"scalar_predictor", [=] {
                switch (r) {
                    case 0: encode_scalar<0>(*core, speech14().data(), out->data()); break;
                    case 1: encode_scalar<1>(*core, speech14().data(), out->data()); break;
                    case 2: encode_scalar<2>(*core, speech14().data(), out->data()); break;
                    default: encode_scalar<3>(*core, speech14().data(), out->data()); break;
                }
                benchmark::DoNotOptimize(out->data());
            }};
}

void BM_G726Encode(benchmark::State& state) {
    const int r = static_cast<int>(state.range(0));
    auto p = peers(true, r);
    p.push_back(scalar_predictor(r));
    zb::interleaved(
        state,
        [r] {
            auto st = std::make_shared<std::vector<std::uint8_t>>(88);
            auto out = std::make_shared<std::vector<std::uint8_t>>(kSamples);
            zepsEncodeInit_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(st->data()), kRates[r]);
            return zb::Call([st, out] {
                zepsEncode_G726_16s8u(reinterpret_cast<ZepG726EncodeState*>(st->data()), speech14().data(), out->data(),
                                      kSamples);
                benchmark::DoNotOptimize(out->data());
            });
        },
        std::move(p), kSamples);
}
BENCHMARK(BM_G726Encode)->DenseRange(0, 3)->ArgName("rate_index")->Apply(zb::few_rounds);

/// law 2 = linear output (the peers decode to linear and run beside it);
/// 0 and 1 = with the G.711 synchronous coding adjustment, no peer.
void BM_G726Decode(benchmark::State& state) {
    const int r = static_cast<int>(state.range(0));
    const auto law = static_cast<std::int32_t>(state.range(1));
    zb::interleaved(
        state,
        [r, law] {
            auto st = std::make_shared<std::vector<std::uint8_t>>(92);
            auto out = std::make_shared<std::vector<std::int16_t>>(kSamples);
            zepsDecodeInit_G726_8u16s(reinterpret_cast<ZepG726DecodeState*>(st->data()), kRates[r], law);
            return zb::Call([st, out, r] {
                zepsDecode_G726_8u16s(reinterpret_cast<ZepG726DecodeState*>(st->data()), codes(r).data(), out->data(),
                                      kSamples);
                benchmark::DoNotOptimize(out->data());
            });
        },
        law == 2 ? peers(false, r) : std::vector<zb::Peer>{}, kSamples);
}
BENCHMARK(BM_G726Decode)->ArgsProduct({{0, 1, 2, 3}, {2, 0}})->ArgNames({"rate_index", "law"})->Apply(zb::few_rounds);

}  // namespace

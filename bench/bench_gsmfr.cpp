// SPDX-License-Identifier: BSD-3-Clause
// GSM full-rate encoder and decoder per 20 ms frame, the whole codec of
// `zepsc gsmfr` (public entries; each build forced) beside libgsm (Debian
// libgsm1, default options) on the same speech, round by round in one loop
// (bench/interleaved.h). Counters in ns per frame; x_libgsm = median of the
// per-round libgsm / zepsc time ratios. Each call makes its coder (as the
// libgsm pass makes its gsm object): 100 frames a call.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "bench/interleaved.h"
#include "bench/speech_file.h"
#include "tools/codec.h"

#ifdef ZEPS_HAVE_LIBGSM
#include <gsm.h>
#endif

namespace {

constexpr int kFrames = 100;  // 2 s of speech a pass

const std::vector<std::int16_t>& speech() {
    static const std::vector<std::int16_t> s = zb::read_s16_le(ZEPS_SHARED_DIR "/speech/male.s16", 160 * kFrames);
    return s;
}

const zepsc_cli::CodecSpec& gsmfr() { return *zepsc_cli::find_codec("gsmfr"); }

const std::vector<std::uint8_t>& bits() {
    static const std::vector<std::uint8_t> b =
        zepsc_cli::encode_all(gsmfr(), {}, "gsm", speech().data(), speech().size());
    return b;
}

/// One call = the 100 frames through a fresh encoder or decoder of
/// `zepsc gsmfr` (public exports).
void ours(bool encode) {
    if (encode) {
        auto enc = gsmfr().make_encoder({}, "gsm");
        std::vector<std::uint8_t> out;
        out.reserve(33 * kFrames);
        for (int f = 0; f < kFrames; ++f) enc->encode(speech().data() + 160 * f, out);
        benchmark::DoNotOptimize(out.data());
    } else {
        auto dec = gsmfr().make_decoder({}, "gsm");
        zepsc_cli::MemorySource in(bits().data(), bits().size());
        std::int16_t pcm[160];
        while (dec->decode(in, pcm) != 0) benchmark::DoNotOptimize(pcm);
    }
}

#ifdef ZEPS_HAVE_LIBGSM
void libgsm(bool encode) {
    gsm g = gsm_create();
    gsm_signal pcm[160];
    gsm_byte frame[33];
    for (int f = 0; f < kFrames; ++f) {
        if (encode) {
            std::copy_n(speech().data() + 160 * f, 160, pcm);
            gsm_encode(g, pcm, frame);
            benchmark::DoNotOptimize(frame);
        } else {
            std::copy_n(bits().data() + 33 * f, 33, frame);
            gsm_decode(g, frame, pcm);
            benchmark::DoNotOptimize(pcm);
        }
    }
    gsm_destroy(g);
}
#endif

// Both codecs in one loop, round by round (bench/interleaved.h).
void BM_GsmfrFrame(benchmark::State& state) {
    const bool encode = state.range(0) == 1;
    std::vector<zb::Peer> peers;
#ifdef ZEPS_HAVE_LIBGSM
    peers.push_back({"libgsm", [encode] { libgsm(encode); }});
#endif
    zb::interleaved(state, [encode] { return zb::Call([encode] { ours(encode); }); }, std::move(peers), kFrames);
    state.SetLabel(encode ? "encoder, ns per frame" : "decoder, ns per frame");
}
BENCHMARK(BM_GsmfrFrame)->Arg(1)->Arg(0)->Apply(zb::few_rounds)->Unit(benchmark::kMicrosecond);

}  // namespace

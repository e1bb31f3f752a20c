// GSM full-rate encoder and decoder per 20 ms frame, the whole codec of
// `zepsc gsmfr` beside libgsm (Debian libgsm1) on the same speech, timed
// in one loop. Counters: our µs per frame (best pass, thread CPU time),
// libgsm's µs per frame, and the speed-up (libgsm time / our time).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <functional>
#include <vector>

#include "tools/codec.h"

#ifdef ZEPS_HAVE_LIBGSM
#include <gsm.h>
#endif

namespace {

constexpr int kFrames = 100;  // 2 s of speech a pass

const std::vector<std::int16_t>& speech() {
    static const std::vector<std::int16_t> s = [] {
        std::vector<std::int16_t> v(160 * kFrames);
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

const zepsc_cli::CodecSpec& gsmfr() { return *zepsc_cli::find_codec("gsmfr"); }

const std::vector<std::uint8_t>& bits() {
    static const std::vector<std::uint8_t> b =
        zepsc_cli::encode_all(gsmfr(), {}, "gsm", speech().data(), speech().size());
    return b;
}

double cpu_ns() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e9 + static_cast<double>(ts.tv_nsec);
}

/// CPU time of one pass in µs per frame.
double us_per_frame(const std::function<void()>& pass) {
    const double t0 = cpu_ns();
    pass();
    return (cpu_ns() - t0) / 1e3 / kFrames;
}

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

// Both codecs in one loop, alternating passes, best pass of each.
void BM_GsmfrFrame(benchmark::State& state) {
    const bool encode = state.range(0) == 1;
    double best = 1e30, peer = 1e30;
    for (auto _ : state) {
        best = std::min(best, us_per_frame([&] { ours(encode); }));
#ifdef ZEPS_HAVE_LIBGSM
        peer = std::min(peer, us_per_frame([&] { libgsm(encode); }));
#endif
    }
    state.counters["us_per_frame"] = best;
#ifdef ZEPS_HAVE_LIBGSM
    state.counters["libgsm_us_per_frame"] = peer;
    state.counters["x_libgsm"] = peer / best;
#endif
    state.SetLabel(encode ? "encoder" : "decoder");
}
BENCHMARK(BM_GsmfrFrame)->Arg(1)->Arg(0)->Iterations(300)->Unit(benchmark::kMillisecond);

}  // namespace

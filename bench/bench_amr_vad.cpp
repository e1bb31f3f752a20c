// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR VAD options 1 and 2, the open-loop pitch searches per rate and the
// VAD option 2 FFT: ns per 20 ms frame (per call for the FFT), on real
// speech, through the public entries (each build forced), interleaved round
// by round with the peers (bench/interleaved.h): opencore-amrnb's own vad1
// stage (its static library), the scalar FFT baseline. opencore has no VAD
// option 2. Its whole encoder with DTX off is timed alone, for scale (no
// whole GSM-AMR encoder here to set beside it).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "bench/interleaved.h"
#include "frame/variants.h"

#ifdef ZEPS_HAVE_OPENCORE_AMRNB
#include <opencore-amrnb/interf_enc.h>
#endif
#ifdef ZEPS_HAVE_OPENCORE_AMRNB_STAGES
// opencore-amrnb's VAD option 1 (vad1.h of its sources; not installed).
extern "C" {
struct vadState1;
std::int16_t vad1_init(vadState1** st);
void vad1_exit(vadState1** st);
std::int16_t vad1(vadState1* st, std::int16_t in_buf[], int* pOverflow);
}
#endif

namespace zeps::u8::amr {
void r_fft_scalar(std::int16_t* x);  // scalar baseline of the FFT (amr/r_fft.cpp)
}

namespace {

std::vector<Zep16s> speech(const char* name) {
    std::ifstream f(std::string(ZEPS_SHARED_DIR) + "/speech/" + name, std::ios::binary);
    std::vector<char> b((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    std::vector<Zep16s> s(b.size() / 2);
    for (std::size_t i = 0; i < s.size(); ++i)
        s[i] = static_cast<Zep16s>(static_cast<std::uint8_t>(b[2 * i]) | (static_cast<std::uint8_t>(b[2 * i + 1]) << 8));
    return s;
}

const std::vector<Zep16s>& male() {
    static const std::vector<Zep16s> s = speech("male.s16");
    return s;
}

/// Offset of frame k (the 40 samples before it must exist); k wraps
/// without a modulo (see next()).
std::size_t frames() { return (male().size() - 40) / 160; }
std::size_t frame_at(std::size_t k) { return 40 + k * 160; }
std::size_t next(std::size_t k) { return k + 1 == frames() ? 0 : k + 1; }

zb::Call vad1_ours() {
    auto st = std::make_shared<ZepVAD1State_GSMAMR>();
    zepsVAD1StateReset_GSMAMR(st.get());
    auto k = std::make_shared<std::size_t>(0);
    return [st, k] {
        Zep16s flag = 0;
        zepsVAD1_GSMAMR_16s(&male()[frame_at(*k) - 40], st.get(), &flag, 13106, 0);
        benchmark::DoNotOptimize(flag);
        *k = next(*k);
    };
}

#ifdef ZEPS_HAVE_OPENCORE_AMRNB_STAGES
/// opencore's vad1 on the same frames (it reads the 40 samples before the
/// frame through a negative index). Decisions counted against ours once,
/// before the timing.
zb::Peer vad1_opencore(std::string& note) {
    auto in = std::make_shared<std::vector<std::int16_t>>(male());
    auto st = std::shared_ptr<vadState1*>(new vadState1*(nullptr), [](vadState1** p) {
        vad1_exit(p);
        delete p;
    });
    vad1_init(st.get());
    {
        vadState1* chk = nullptr;
        vad1_init(&chk);
        ZepVAD1State_GSMAMR ours;
        zepsVAD1StateReset_GSMAMR(&ours);
        std::size_t same = 0;
        for (std::size_t k = 0; k < frames(); ++k) {
            int ovf = 0;
            Zep16s flag = 0;
            zepsVAD1_GSMAMR_16s(&male()[frame_at(k) - 40], &ours, &flag, 13106, 0);
            same += vad1(chk, &(*in)[frame_at(k)], &ovf) == flag;
        }
        vad1_exit(&chk);
        note = "opencore vad1 decisions equal on " + std::to_string(same) + "/" + std::to_string(frames()) + " frames";
    }
    auto k = std::make_shared<std::size_t>(0);
    return {"opencore", [in, st, k] {
                int ovf = 0;
                benchmark::DoNotOptimize(vad1(*st, &(*in)[frame_at(*k)], &ovf));
                *k = next(*k);
            }};
}
#endif

void BM_VAD1(benchmark::State& state) {
    std::vector<zb::Peer> peers;
    std::string note;
#ifdef ZEPS_HAVE_OPENCORE_AMRNB_STAGES
    peers.push_back(vad1_opencore(note));
#endif
    zb::interleaved(state, vad1_ours, std::move(peers));
    state.SetLabel(note);
}
BENCHMARK(BM_VAD1)->Apply(zb::rounds);

void BM_VAD2(benchmark::State& state) {
    zb::interleaved(state, [] {
        auto st = std::make_shared<ZepVAD2State_GSMAMR>();
        zepsVAD2StateReset_GSMAMR(st.get());
        auto k = std::make_shared<std::size_t>(0);
        return zb::Call([st, k] {
            Zep16s flag = 0;
            zepsVAD2_GSMAMR_16s(&male()[frame_at(*k)], st.get(), &flag, 0);
            benchmark::DoNotOptimize(flag);
            *k = next(*k);
        });
    });
}
BENCHMARK(BM_VAD2)->Apply(zb::rounds);

/// Per call, including a 256-byte copy of fresh input (about 10 ns); the
/// scalar baseline (build u8's internal twin) in the same loop.
zb::Call fft_call(bool scalar) {
    auto x = std::make_shared<std::vector<Zep16s>>(128);
    auto k = std::make_shared<std::size_t>(0);
    return [x, k, scalar] {
        std::copy_n(&male()[frame_at(*k)], 128, x->begin());
        if (scalar)
            zeps::u8::amr::r_fft_scalar(x->data());
        else
            zepsFFTFwd_RToPerm_GSMAMR_16s_I(x->data());
        benchmark::DoNotOptimize(x->data());
        *k = next(*k);
    };
}
void BM_FFT(benchmark::State& state) {
    zb::interleaved(state, [] { return fft_call(false); }, {{"scalar", fft_call(true)}});
}
BENCHMARK(BM_FFT)->Apply(zb::rounds);

/// Open-loop search per rate; arg 0 = NonDTX, 1 = DTX + VAD1, 2 = DTX + VAD2.
void BM_OpenLoop(benchmark::State& state) {
    const Zep32s rate = static_cast<Zep32s>(state.range(0));
    const int which = static_cast<int>(state.range(1));
    zb::interleaved(state, [rate, which] {
        struct S {
            std::vector<Zep16s> lpc = std::vector<Zep16s>(44), mem = std::vector<Zep16s>(10, 0),
                                hist = std::vector<Zep16s>(143, 0), lags = std::vector<Zep16s>(5, 40),
                                gain = std::vector<Zep16s>(2, 0), wsp = std::vector<Zep16s>(160),
                                T = std::vector<Zep16s>(2), regs = {40, 0, 0, 0, 0, 0, 0, 13106};
            Zep32s rmax = 0, r0 = 0;
            std::size_t k = 0;
        };
        static const Zep16s a[11] = {4096, -2695, 65, -826, 412, -682, 737, -290, 663, -600, 275};
        auto s = std::make_shared<S>();
        for (int i = 0; i < 44; ++i) s->lpc[i] = a[i % 11];
        return zb::Call([s, rate, which] {
            const Zep16s* sp = &male()[frame_at(s->k) - 10];
            if (which == 0)
                zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s(s->lpc.data(), sp, s->mem.data(), s->hist.data(),
                                                         s->lags.data(), s->gain.data(), s->regs.data(), s->wsp.data(),
                                                         s->T.data(), rate);
            else if (which == 1)
                zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(s->lpc.data(), sp, s->mem.data(), s->hist.data(),
                                                          s->lags.data(), s->gain.data(), s->regs.data(),
                                                          s->wsp.data(), s->T.data(), rate);
            else
                zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(s->lpc.data(), sp, s->mem.data(), s->hist.data(),
                                                             s->lags.data(), s->gain.data(), s->regs.data(),
                                                             s->wsp.data(), s->T.data(), &s->rmax, &s->r0, rate);
            benchmark::DoNotOptimize(s->T.data());
            s->k = next(s->k);
        });
    });
}
BENCHMARK(BM_OpenLoop)->ArgsProduct({{0, 1, 3, 6, 7, 8, 11, 12}, {0, 1, 2}})->Apply(zb::rounds);

#ifdef ZEPS_HAVE_OPENCORE_AMRNB
/// opencore's whole encoder per 20 ms frame, DTX off (with DTX on, replaying
/// a file marks every frame as noise after a few passes and times mostly the
/// VAD), for scale only. Thread CPU time per frame, median of rounds.
void BM_Peer_OpencoreEncoderFrame(benchmark::State& state) {
    void* enc = Encoder_Interface_init(0);
    unsigned char out[64];
    const auto mode = static_cast<Mode>(state.range(0));
    std::size_t k = 0;
    std::vector<double> t;
    for (auto _ : state) {
        const double t0 = zb::cpu_ns();
        for (int i = 0; i < 20; ++i) {
            benchmark::DoNotOptimize(Encoder_Interface_Encode(enc, mode, &male()[frame_at(k)], out, 0));
            k = next(k);
        }
        const double dt = (zb::cpu_ns() - t0) / 20;
        t.push_back(dt);
        state.SetIterationTime(dt * 1e-9);
    }
    state.counters["ns"] = zb::median(t);
    Encoder_Interface_exit(enc);
}
BENCHMARK(BM_Peer_OpencoreEncoderFrame)->Arg(0)->Arg(7)->Apply(zb::rounds);
#endif

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
// The echo canceller of `zepsc ec` beside the Debian peers on the same
// G.168-style signals (tests/ec/g168_measure.h): far-end male speech through
// each ITU-T G.168 Annex D echo path at a further 6 dB loss, white noise at
// -66 dBov at the near end; 8 kHz, 64 ms tail for everyone.
//
//   zepsc      sub-band and full-band cancellers through the public entries,
//              linear output (NLP off), and sub-band with NLP
//   speexdsp   speex_echo_cancellation, 80-sample frames, 512-tap filter
//   spandsp    echo_can_update, 512 taps, adaptation only (no NLP, no CNG)
//   webrtc     AudioProcessing echo canceller (AEC, 10 ms frames, delay 0):
//              its suppressor cannot be switched off, so it compares with
//              zepsc's output after NLP
//
// Figures per model: convergence to 20 dB ERLE (first 100 ms window with
// the echo active, s), steady-state ERLE (last 3 s, dB), the ERLE in the
// second after a double talk of 3 s (female speech at the far end's level,
// model D4), and the thread CPU time per channel (median of 5 runs over the
// whole 11 s, as microseconds per 10 ms of audio), each canceller timed in
// turn within each round.
#define ZEPSC_EC_LIB  // the public entries: the build this machine selects
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <unistd.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/ec/g168_measure.h"
#include "zepsc.h"

// After the library's headers: spandsp's define names the C++ library uses.
#include <speex/speex_echo.h>
#include <spandsp.h>
#include <webrtc/modules/audio_processing/include/audio_processing.h>
#include <webrtc/modules/interface/module_common_types.h>

namespace {

using namespace zeps::test::g168;

constexpr std::size_t kFrame = 80;  // 10 ms

/// One canceller: input far and near (same length), output aligned with them.
struct Peer {
    const char* name;
    std::function<std::vector<float>(const std::vector<Zep16s>&, const std::vector<Zep16s>&)> run;
};

std::vector<float> zepsc_run(bool subband, bool nlp, const std::vector<Zep16s>& far, const std::vector<Zep16s>& nr,
                             bool fdaf = false) {
    zepsc_ec::EcConfig c;
    c.subband = subband;
    c.fdaf = fdaf;
    c.nlp = nlp;
    const EcRun r = run(c, far, nr);
    if (!nlp) return r.linear;
    return std::vector<float>(r.out.begin(), r.out.end());
}

std::vector<float> speex_run(const std::vector<Zep16s>& far, const std::vector<Zep16s>& nr) {
    SpeexEchoState* st = speex_echo_state_init(kFrame, 512);
    int rate = 8000;
    speex_echo_ctl(st, SPEEX_ECHO_SET_SAMPLING_RATE, &rate);
    std::vector<float> out(far.size(), 0.0f);
    std::vector<spx_int16_t> o(kFrame);
    for (std::size_t i = 0; i + kFrame <= far.size(); i += kFrame) {
        speex_echo_cancellation(st, &nr[i], &far[i], o.data());
        std::copy(o.begin(), o.end(), out.begin() + static_cast<long>(i));
    }
    speex_echo_state_destroy(st);
    return out;
}

std::vector<float> spandsp_run(const std::vector<Zep16s>& far, const std::vector<Zep16s>& nr) {
    echo_can_state_t* ec = echo_can_init(512, ECHO_CAN_USE_ADAPTION);
    std::vector<float> out(far.size());
    for (std::size_t i = 0; i < far.size(); ++i) out[i] = echo_can_update(ec, far[i], nr[i]);
    echo_can_free(ec);
    return out;
}

std::vector<float> webrtc_run(const std::vector<Zep16s>& far, const std::vector<Zep16s>& nr) {
    std::unique_ptr<webrtc::AudioProcessing> apm(webrtc::AudioProcessing::Create());
    apm->echo_cancellation()->enable_drift_compensation(false);
    apm->echo_cancellation()->Enable(true);
    webrtc::AudioFrame f, n;
    for (webrtc::AudioFrame* a : {&f, &n}) {
        a->sample_rate_hz_ = 8000;
        a->num_channels_ = 1;
        a->samples_per_channel_ = kFrame;
    }
    std::vector<float> out(far.size(), 0.0f);
    for (std::size_t i = 0; i + kFrame <= far.size(); i += kFrame) {
        std::copy(&far[i], &far[i] + kFrame, f.data_);
        std::copy(&nr[i], &nr[i] + kFrame, n.data_);
        apm->ProcessReverseStream(&f);
        apm->set_stream_delay_ms(0);
        apm->ProcessStream(&n);
        std::copy(n.data_, n.data_ + kFrame, out.begin() + static_cast<long>(i));
    }
    return out;
}

double thread_seconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

std::string fmt(const char* f, double v) {
    char b[32];
    std::snprintf(b, sizeof b, f, v);
    return b;
}

}  // namespace

int main() {
    // Debian's spandsp prints a trace line per sample from its echo
    // canceller: the tables go to the original standard output, the rest
    // of the process writes to /dev/null.
    std::FILE* report = fdopen(dup(1), "w");
    if (!report || !std::freopen("/dev/null", "w", stdout)) return 1;
    const std::vector<Peer> peers = {
        {"zepsc sub-band", [](auto& f, auto& n) { return zepsc_run(true, false, f, n); }},
        {"zepsc full-band", [](auto& f, auto& n) { return zepsc_run(false, false, f, n); }},
        {"zepsc sub-band + NLP", [](auto& f, auto& n) { return zepsc_run(true, true, f, n); }},
        {"zepsc frequency-domain", [](auto& f, auto& n) { return zepsc_run(true, false, f, n, true); }},
        {"zepsc frequency-domain + NLP", [](auto& f, auto& n) { return zepsc_run(true, true, f, n, true); }},
        {"speexdsp", speex_run},
        {"spandsp", spandsp_run},
        {"webrtc AEC (with its suppressor)", webrtc_run},
    };
    if (read_speech("male.s16").empty()) {
        std::fprintf(stderr, "shared speech not found under " ZEPS_SHARED_DIR "/speech\n");
        return 1;
    }
    std::fprintf(report, "build selected: %s\n\n", zepscGetLibVersion()->targetCpu);

    std::fprintf(report, "| canceller |");
    for (int m = 0; m < 8; ++m) std::fprintf(report, " D%d |", m + 2);
    std::fprintf(report, "\n|---|");
    for (int m = 0; m < 8; ++m) std::fprintf(report, "---|");
    std::fprintf(report, "\n");
    std::vector<Signals> sig;
    for (int m = 0; m < 8; ++m) sig.push_back(make(m));
    for (const Peer& p : peers) {
        std::fprintf(report, "| %s |", p.name);
        for (int m = 0; m < 8; ++m) {
            const Signals& s = sig[static_cast<std::size_t>(m)];
            const auto out = p.run(s.far, s.nearIn);
            const double conv = time_to(s.echo, out, 0, 20.0);
            const double steady = erle(s.echo, out, s.far.size() - 3 * kRate, s.far.size());
            std::fprintf(report, " %s / %.1f |", conv < 0 ? "never" : fmt("%.2f", conv).c_str(), steady);
        }
        std::fprintf(report, "\n");
    }
    std::fprintf(report, "\n(each cell: convergence to 20 dB ERLE in s / steady-state ERLE over the last 3 s in dB)\n\n");

    const Signals dt = make(2, -1, 0, 5 * kRate, 8 * kRate);
    const Signals& d4 = sig[2];
    std::fprintf(report, "| canceller | ERLE before / after double talk (D4) | CPU per channel, us per 10 ms |\n|---|---|---|\n");
    std::vector<std::vector<double>> cpu(peers.size());
    for (int round = 0; round < 5; ++round)
        for (std::size_t k = 0; k < peers.size(); ++k) {
            const double t0 = thread_seconds();
            peers[k].run(d4.far, d4.nearIn);
            cpu[k].push_back((thread_seconds() - t0) * 1e6 / (static_cast<double>(d4.far.size()) / kFrame));
        }
    for (std::size_t k = 0; k < peers.size(); ++k) {
        const auto out = peers[k].run(dt.far, dt.nearIn);
        std::sort(cpu[k].begin(), cpu[k].end());
        std::fprintf(report, "| %s | %.1f / %.1f dB | %.1f |\n", peers[k].name, erle(dt.echo, out, 4 * kRate, 5 * kRate),
                    erle(dt.echo, out, 8 * kRate + kRate / 4, 9 * kRate + kRate / 4), cpu[k][2]);
    }
    return 0;
}

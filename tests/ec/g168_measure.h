/* SPDX-License-Identifier: BSD-3-Clause */
// Measurement of the echo canceller in the manner of ITU-T G.168: the
// Annex D echo-path models, far-end speech from the shared corpus, the
// canceller of tools/echo_canceller.h, and the figures of the G.168 tests
// (convergence time to 20 dB ERLE, steady-state ERLE, ERLE after double
// talk, re-convergence after an echo-path change, tone disabling time).
// Every input is deterministic, so every figure is exact for a build.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "frame/variants.h"
#include "ec/ec_g168_models.h"

#ifndef ZEPSC_EC_LIB
#define ZEPSC_EC_LIB zeps::u8::  // one build, the same on every machine
#endif
#include "tools/echo_canceller.h"

namespace zeps::test::g168 {

/// A speech file of the shared data ($ZEPS_SHARED_DIR, else the folder the
/// build was configured with).
inline std::vector<Zep16s> read_speech(const std::string& name) {
    const char* env = std::getenv("ZEPS_SHARED_DIR");
    const std::string dir = env && *env ? env : ZEPS_SHARED_DIR;
    std::vector<Zep16s> v;
    if (std::FILE* f = std::fopen((dir + "/speech/" + name).c_str(), "rb")) {
        Zep16s buf[4096];
        std::size_t n;
        while ((n = std::fread(buf, 2, 4096, f)) > 0) v.insert(v.end(), buf, buf + n);
        std::fclose(f);
    }
    return v;
}

/// Impulse response of model m (0 = D2 .. 7 = D9) at a further loss of erlDb.
inline std::vector<double> model_response(int m, double erlDb) {
    const auto& md = zeps::kG168Models[m];
    std::vector<double> h(static_cast<std::size_t>(md.len));
    const double g = md.ki * std::pow(10.0, -erlDb / 20.0);
    for (int i = 0; i < md.len; ++i) h[static_cast<std::size_t>(i)] = g * md.coeffs[i];
    return h;
}

/// Echo of x through h (double precision, not rounded).
inline std::vector<double> echo_of(const std::vector<Zep16s>& x, const std::vector<double>& h) {
    std::vector<double> y(x.size(), 0.0);
    for (std::size_t n = 0; n < x.size(); ++n)
        for (std::size_t k = 0; k < h.size() && k <= n; ++k) y[n] += h[k] * x[n - k];
    return y;
}

/// Deterministic white noise of the given rms (LCG, uniform).
inline std::vector<double> noise(std::size_t n, double rms, std::uint32_t seed) {
    std::vector<double> v(n);
    for (auto& x : v) {
        seed = seed * 1664525u + 1013904223u;
        x = rms * std::sqrt(3.0) * (static_cast<std::int32_t>(seed) * 0x1.0p-31);
    }
    return v;
}

inline std::vector<Zep16s> to16(const std::vector<double>& v) {
    std::vector<Zep16s> o(v.size());
    for (std::size_t i = 0; i < v.size(); ++i)
        o[i] = static_cast<Zep16s>(std::lround(std::fmax(-32768.0, std::fmin(32767.0, v[i]))));
    return o;
}

struct EcRun {
    std::vector<float> linear;  // residual before NLP, aligned with the input (delay removed)
    std::vector<Zep16s> out;    // output after NLP, aligned
    std::vector<zepsc_ec::EcEvents> events;
    int frame = 0, failures = 0;
};

inline EcRun run(const zepsc_ec::EcConfig& cfg, const std::vector<Zep16s>& far, const std::vector<Zep16s>& nearIn) {
    zepsc_ec::EchoCanceller ec(cfg);
    EcRun r;
    r.frame = ec.frame();
    const std::size_t F = static_cast<std::size_t>(ec.frame()), D = static_cast<std::size_t>(ec.delay());
    const std::size_t frames = (far.size() + D + F - 1) / F;
    std::vector<Zep16s> fz(frames * F, 0), nz(frames * F, 0), o(frames * F);
    std::vector<float> lin(frames * F);
    std::copy(far.begin(), far.end(), fz.begin());
    std::copy(nearIn.begin(), nearIn.end(), nz.begin());
    for (std::size_t i = 0; i < frames; ++i)
        r.events.push_back(ec.process(&fz[i * F], &nz[i * F], &o[i * F], &lin[i * F]));
    r.linear.assign(lin.begin() + static_cast<long>(D), lin.begin() + static_cast<long>(D + far.size()));
    r.out.assign(o.begin() + static_cast<long>(D), o.begin() + static_cast<long>(D + far.size()));
    r.failures = ec.failures();
    return r;
}

/// ERLE in dB of the residual against the echo over samples [a, b).
inline double erle(const std::vector<double>& echo, const std::vector<float>& res, std::size_t a, std::size_t b) {
    double pe = 1e-9, pr = 1e-9;
    for (std::size_t i = a; i < b && i < echo.size(); ++i) pe += echo[i] * echo[i], pr += double{res[i]} * res[i];
    return 10.0 * std::log10(pe / pr);
}

/// First time (s) from `from` at which the ERLE over the last 100 ms, where
/// the echo is active, reaches `target` dB; -1 when never.
inline double time_to(const std::vector<double>& echo, const std::vector<float>& res, std::size_t from, double target) {
    const std::size_t w = 800;
    for (std::size_t b = from + w; b <= echo.size(); b += 80) {
        double pe = 0;
        for (std::size_t i = b - w; i < b; ++i) pe += echo[i] * echo[i];
        if (pe / w < 100.0 * 100.0) continue;  // echo below -50 dBov: not measured
        if (erle(echo, res, b - w, b) >= target) return static_cast<double>(b - from) / 8000.0;
    }
    return -1.0;
}

constexpr std::size_t kRate = 8000;

struct Signals {
    std::vector<Zep16s> far;
    std::vector<double> echo;     // echo alone
    std::vector<Zep16s> nearIn;   // echo + noise (+ near talker)
};

/// Far-end male speech; echo through model m, switching to model m2 at
/// sample `change` (none when change is 0); near talker (female speech) over
/// [dtFrom, dtTo) samples when dtTo > dtFrom.
inline Signals make(int m, int m2 = -1, std::size_t change = 0, std::size_t dtFrom = 0, std::size_t dtTo = 0) {
    Signals s;
    s.far = read_speech("male.s16");
    s.echo = echo_of(s.far, model_response(m, 6.0));
    if (m2 >= 0) {
        const auto e2 = echo_of(s.far, model_response(m2, 6.0));
        for (std::size_t i = change; i < e2.size(); ++i) s.echo[i] = e2[i];
    }
    const auto n = noise(s.far.size(), 16.0, 7u);
    const auto talker = read_speech("female.s16");
    std::vector<double> d(s.far.size());
    for (std::size_t i = 0; i < d.size(); ++i) {
        d[i] = s.echo[i] + n[i];
        if (i >= dtFrom && i < dtTo && i - dtFrom < talker.size()) d[i] += talker[i - dtFrom + kRate];
    }
    s.nearIn = to16(d);
    return s;
}

}  // namespace zeps::test::g168

/* SPDX-License-Identifier: BSD-3-Clause */
// A complete echo canceller assembled from the library's public echo-
// cancellation stages, shared by `zepsc ec` and the measurement tests.
//
// Sub-band mode (default): a float filter bank of N 32 points and L 128 taps
// at 8 kHz (17 bands) or N 64 and L 256 at 16 kHz (33 bands), hop 16 with a
// windowed-sinc prototype (cut-off pi/N, Blackman window; the synthesis copy
// scaled for unit gain), or with hop 0 the built-in configuration A (hop 24)
// or B (hop 44); a sub-band NLMS filter of ceil(tail / F) + ceil(L / F)
// segments; the output comes out L - F samples late (the bank's delay). Full-band mode: a time-domain NLMS
// filter of tail taps run over 10 ms blocks; no delay. Frequency-domain mode
// (fdaf): the partitioned-block frequency-domain NLMS filter over blocks of
// 2^(fdafOrder-1) samples, ceil(tail / block) partitions, proportionate share
// 0.4, the leakage update's far-end power held at decay 0.2; no delay.
// Both modes: Geigel double-talk detection (threshold 0.5, hangover 30 ms,
// over the tail; fdaf: threshold 1.0 and a far-end peak floor of -50 dBov), the frame controller (variable step), the coefficient
// guard (a saved copy of the filter run beside the adapting one; the copy is
// restored when the adapting filter's error rises above it, 3 dB above, fdaf
// 1.5 dB, which stops double talk from diverging the canceller), two 2100 Hz tone
// disablers (far and near side, G.165 rule by default), and non-linear
// processing with comfort noise (optional).
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "zepsc.h"

// The stages are called through the public entries; the library's own tests
// define ZEPSC_EC_LIB as one processor build's namespace (zeps::u8::) first.
#ifndef ZEPSC_EC_LIB
#define ZEPSC_EC_LIB
#endif

namespace zepsc_ec {

struct EcConfig {
    bool subband = true;
    int rate = 8000;     // 8000 or 16000
    int tailMs = 64;     // echo path length covered
    bool nlp = true;     // non-linear processing with comfort noise
    int toneRule = 1;    // 0: ITU-T G.164, 1: ITU-T G.165
    float dtThreshold = 0.5f;  // Geigel threshold (near / far peak)
    int hop = 16;              // sub-band hop: 0 the built-in configuration A or B, else a windowed-sinc bank of this hop
    bool fdaf = false;         // frequency-domain block NLMS (takes precedence over subband)
    int fdafOrder = 7;         // its FFT order: blocks of 2^(order-1) samples
    float fdafStep = 1.0f;     // its step at the controller's step 1.0
    bool fdafLeak = true;      // its step per bin from the leakage estimate (else the plain normalised step)
    float fdafDtThreshold = 1.0f;  // with the leakage step: the Geigel threshold at least this
    float fdafProp = 0.4f;     // its proportionate share of the partition steps
    float fdafHold = 0.2f;     // its leakage update's far-end power hold (decay per adapting block)
    float fdafDtFloor = 100.0f;    // its double-talk detector's far-end peak floor (16-bit units, -50 dBov)
    float fdafRestore = 0.7f;      // its coefficient guard's restore ratio (1.5 dB)
    int controlMode = 1;       // frame controller: 1 variable step, 0 fixed step 1.0
};

/// What one processing call saw.
struct EcEvents {
    bool doubleTalk = false, pathChange = false, toneDisabled = false, adapted = false, nlp = false;
};

/// A caller's block: aligned storage that never moves (states point into themselves).
class StateBlock {
public:
    explicit StateBlock(int bytes) : mem_(static_cast<std::size_t>(std::max(bytes, 1))) {}
    Zep8u* get() { return mem_.data(); }

private:
    std::vector<Zep8u> mem_;
};

class EchoCanceller {
public:
    explicit EchoCanceller(const EcConfig& c0) : cfg_(c0) {
        if (cfg_.fdaf && cfg_.fdafLeak) cfg_.dtThreshold = std::max(cfg_.dtThreshold, cfg_.fdafDtThreshold);
        const EcConfig& cfg = cfg_;
        const int tail = cfg.tailMs * cfg.rate / 1000;
        if (cfg.fdaf) {
            frame_ = 1 << (cfg.fdafOrder - 1);
            segments_ = std::min(255, (tail + frame_ - 1) / frame_);
            int s = 0;
            ok(ZEPSC_EC_LIB zepsFreqDomainFilterGetSize_EC_32f(cfg.fdafOrder, segments_, &s));
            fdaf_.emplace_back(s);
            ok(ZEPSC_EC_LIB zepsFreqDomainFilterInit_EC_32f(fdaf_.back().get(), cfg.fdafOrder, segments_));
            ok(ZEPSC_EC_LIB zepsFreqDomainFilterSetProp_EC_32f(cfg.fdafProp, fdaf_.back().get()));
            ok(ZEPSC_EC_LIB zepsFreqDomainFilterSetHold_EC_32f(cfg.fdafHold, fdaf_.back().get()));
            fsavedOut_.assign(static_cast<std::size_t>(frame_), 0.0f);
        } else if (cfg.subband) {
            const bool wide = cfg.rate == 16000;
            order_ = wide ? 6 : 5;
            frame_ = cfg.hop > 0 ? cfg.hop : wide ? 44 : 24;
            winLen_ = wide ? 256 : 128;
            bands_ = (1 << order_) / 2 + 1;
            segments_ = std::min(255, (tail + frame_ - 1) / frame_ + (winLen_ + frame_ - 1) / frame_);
            int s = 0, ib = 0, wb = 0;
            ok(ZEPSC_EC_LIB zepsSubbandProcessGetSize_32f(order_, winLen_, &s, &ib, &wb));
            std::vector<float> wa, ws;
            if (cfg.hop > 0) prototype(wa, ws);
            for (auto* p : {&anaFar_, &anaNear_, &syn_}) {
                p->emplace_back(s);
                const float* w = cfg.hop > 0 ? (p == &syn_ ? ws.data() : wa.data()) : nullptr;
                ok(ZEPSC_EC_LIB zepsSubbandProcessInit_32f(p->back().get(), order_, frame_, winLen_, w, nullptr));
            }
            work_.resize(static_cast<std::size_t>(wb));
            hist_.assign(static_cast<std::size_t>(bands_ * segments_), Zep32fc{0, 0});
            coef_ = saved_ = hist_;
            nearSpec_.resize(static_cast<std::size_t>(bands_));
            est_ = err_ = estK_ = errK_ = nearSpec_;
        } else {
            frame_ = cfg.rate / 100;
            taps_ = tail;
            farHist_.assign(static_cast<std::size_t>(taps_ - 1 + frame_), 0.0f);
            fcoef_.assign(static_cast<std::size_t>(taps_), 0.0f);
            fsaved_ = fcoef_;
            fsavedOut_.assign(static_cast<std::size_t>(frame_), 0.0f);
        }
        int s = 0;
        ok(ZEPSC_EC_LIB zepsDoubleTalkGetSize_EC_32f(tail, &s));
        dtd_.emplace_back(s);
        ok(ZEPSC_EC_LIB zepsDoubleTalkInit_EC_32f(dtd_.back().get(), tail, cfg.dtThreshold, cfg.rate * 30 / 1000));
        if (cfg.fdaf) ok(ZEPSC_EC_LIB zepsDoubleTalkSetFloor_EC_32f(cfg.fdafDtFloor, dtd_.back().get()));
        ok(ZEPSC_EC_LIB zepsEchoControlGetSize_EC_32f(&s));
        ctl_.emplace_back(s);
        ok(ZEPSC_EC_LIB zepsEchoControlInit_EC_32f(ctl_.back().get(), cfg.controlMode));
        ok(ZEPSC_EC_LIB zepsCoefGuardGetSize_EC_32f(&s));
        guard_.emplace_back(s);
        ok(ZEPSC_EC_LIB zepsCoefGuardInit_EC_32f(guard_.back().get()));
        if (cfg.fdaf) ok(ZEPSC_EC_LIB zepsCoefGuardSetRestore_EC_32f(cfg.fdafRestore, guard_.back().get()));
        ok(ZEPSC_EC_LIB zepsNLPGetSize_EC_32f(&s));
        nlp_.emplace_back(s);
        ok(ZEPSC_EC_LIB zepsNLPInit_EC_32f(nlp_.back().get()));
        ok(ZEPSC_EC_LIB zepsToneDetectGetSize_EC_16s(&s));
        for (int i = 0; i < 2; ++i) {
            tone_.emplace_back(s);
            ok(ZEPSC_EC_LIB zepsToneDetectInit_EC_16s(tone_.back().get(), cfg.rate, cfg.toneRule));
        }
        farF_.resize(static_cast<std::size_t>(frame_));
        nearF_ = linF_ = outF_ = farF_;
    }

    /// Samples per call.
    int frame() const { return frame_; }
    /// Output delay in samples (the filter bank's).
    int delay() const { return cfg_.subband && !cfg_.fdaf ? winLen_ - frame_ : 0; }
    /// Stage failures so far (a stage returning a status other than 0).
    int failures() const { return failures_; }

    /// One frame: far-end reference and near-end input in, output (after
    /// NLP) and the linear canceller's residual (before NLP) out.
    EcEvents process(const Zep16s* far, const Zep16s* nearIn, Zep16s* out, float* linear) {
        EcEvents ev;
        for (int i = 0; i < frame_; ++i) farF_[i] = far[i], nearF_[i] = nearIn[i];
        Zep32s r0 = 0, r1 = 0, dt = 0;
        ok(ZEPSC_EC_LIB zepsToneDetect_EC_16s(far, frame_, &r0, tone_[0].get()));
        ok(ZEPSC_EC_LIB zepsToneDetect_EC_16s(nearIn, frame_, &r1, tone_[1].get()));
        ev.toneDisabled = ((r0 | r1) & ZEP_EC_TONE_DISABLE) != 0;
        ok(ZEPSC_EC_LIB zepsDoubleTalk_EC_32f(farF_.data(), nearF_.data(), &dt, frame_, dtd_[0].get()));
        // Near-end activity while the far end is silent is not double talk.
        ev.doubleTalk = dt != 0 && mean_square(farF_.data(), frame_) > 1000.0f;
        Zep32f step = 0;
        Zep32s flags = 0;
        if (cfg_.fdaf) fdaf_frame(ev, step, flags);
        else if (cfg_.subband) subband_frame(ev, step, flags);
        else fullband_frame(ev, step, flags);
        ev.adapted = step > 0;
        ev.pathChange = (flags & ZEP_EC_FLAG_PATHCHANGE) != 0;
        ev.nlp = cfg_.nlp && !ev.toneDisabled && (flags & ZEP_EC_FLAG_NLP) != 0;
        for (int i = 0; i < frame_; ++i) linear[i] = linF_[i];
        ok(ZEPSC_EC_LIB zepsNLP_EC_32f(linF_.data(), outF_.data(), frame_, ev.nlp ? 1 : 0, nlp_[0].get()));
        for (int i = 0; i < frame_; ++i) out[i] = clip16(outF_[i]);
        return ev;
    }

private:
    /// Windowed-sinc prototype (cut-off pi/N, Blackman window over L taps);
    /// the synthesis copy scaled by F / sum w^2 for unit gain.
    void prototype(std::vector<float>& wa, std::vector<float>& ws) const {
        const int N = 1 << order_, L = winLen_;
        wa.resize(static_cast<std::size_t>(L));
        double e = 0;
        for (int n = 0; n < L; ++n) {
            const double t = (n - (L - 1) / 2.0) / N, pi = 3.14159265358979323846;
            const double sinc = t == 0 ? 1.0 : std::sin(pi * t) / (pi * t);
            const double b = 0.42 - 0.5 * std::cos(2 * pi * (n + 0.5) / L) + 0.08 * std::cos(4 * pi * (n + 0.5) / L);
            wa[static_cast<std::size_t>(n)] = static_cast<float>(sinc * b);
            e += sinc * b * sinc * b;
        }
        ws = wa;
        for (auto& v : ws) v = static_cast<float>(v * frame_ / e);
    }
    static Zep16s clip16(float v) {
        // Plain compares (no library call): not a number gives 32767, as
        // fmax(-32768, fmin(32767, v)) does.
        const float c = !(v < 32767.0f) ? 32767.0f : v > -32768.0f ? v : -32768.0f;
        return static_cast<Zep16s>(std::lrint(c));
    }
    void ok(ZepStatus st) {
        if (st != zepStsNoErr) ++failures_;
    }
    static float mean_square(const float* x, int n) {
        double s = 0;
        for (int i = 0; i < n; ++i) s += double{x[i]} * x[i];
        return static_cast<float>(s / n);
    }
    static double power(const std::vector<Zep32fc>& v) {
        double s = 0;
        for (const auto& c : v) s += double{c.re} * c.re + double{c.im} * c.im;
        return s;
    }

    /// Coefficient guard: saves the adapting filter or restores the saved
    /// one; returns true when the saved filter was restored.
    /// With noSave the guard is told of double talk (no save this frame).
    bool guard(const EcEvents& ev, float nearL, float errL, float errK, bool noSave = false) {
        const Zep32f levels[3] = {nearL, errL, errK};
        Zep32s action = ZEP_EC_GUARD_KEEP;
        if (!ev.toneDisabled)
            ok(ZEPSC_EC_LIB zepsCoefGuard_EC_32f(levels, ev.doubleTalk || noSave ? 1 : 0, &action, guard_[0].get()));
        guardAction_ = action;
        if (cfg_.fdaf) return action == ZEP_EC_GUARD_RESTORE;
        if (cfg_.subband) {
            if (action == ZEP_EC_GUARD_SAVE) saved_ = coef_;
            if (action == ZEP_EC_GUARD_RESTORE) coef_ = saved_;
        } else {
            if (action == ZEP_EC_GUARD_SAVE) fsaved_ = fcoef_;
            if (action == ZEP_EC_GUARD_RESTORE) fcoef_ = fsaved_;
        }
        return action == ZEP_EC_GUARD_RESTORE;
    }

    void control(EcEvents& ev, float nearL, float errL, float estL, Zep32f& step, Zep32s& flags) {
        const Zep32f levels[4] = {mean_square(farF_.data(), frame_), nearL, errL, estL};
        ok(ZEPSC_EC_LIB zepsEchoControl_EC_32f(levels, ev.doubleTalk ? 1 : 0, &step, &flags, ctl_[0].get()));
        if (ev.toneDisabled) step = 0;
    }

    void subband_frame(EcEvents& ev, Zep32f& step, Zep32s& flags) {
        const std::size_t B = static_cast<std::size_t>(bands_);
        std::memmove(hist_.data() + B, hist_.data(), sizeof(Zep32fc) * B * static_cast<std::size_t>(segments_ - 1));
        ok(ZEPSC_EC_LIB zepsSubbandAnalysis_32f32fc(farF_.data(), hist_.data(), anaFar_[0].get(), work_.data()));
        ok(ZEPSC_EC_LIB zepsSubbandAnalysis_32f32fc(nearF_.data(), nearSpec_.data(), anaNear_[0].get(), work_.data()));
        ok(ZEPSC_EC_LIB zepsSubbandFilter_EC_32fc(hist_.data(), coef_.data(), est_.data(), bands_, segments_));
        ok(ZEPSC_EC_LIB zepsSubbandFilter_EC_32fc(hist_.data(), saved_.data(), estK_.data(), bands_, segments_));
        for (std::size_t k = 0; k < B; ++k) {
            err_[k] = {nearSpec_[k].re - est_[k].re, nearSpec_[k].im - est_[k].im};
            errK_[k] = {nearSpec_[k].re - estK_[k].re, nearSpec_[k].im - estK_[k].im};
        }
        const double pd = power(nearSpec_) + 1e-9;
        const float nearL = mean_square(nearF_.data(), frame_);
        if (guard(ev, nearL, static_cast<float>(nearL * power(err_) / pd), static_cast<float>(nearL * power(errK_) / pd))) {
            est_ = estK_;
            err_ = errK_;
        }
        control(ev, nearL, static_cast<float>(nearL * power(err_) / pd), static_cast<float>(nearL * power(est_) / pd),
                step, flags);
        if (step > 0) {
            // Regularisation: a far-end floor of about -60 dBov in every segment.
            const float delta = 1.0f * static_cast<float>(segments_) * (1 << order_) * 1000.0f;
            ok(ZEPSC_EC_LIB zepsSubbandCoefUpdate_EC_32fc_I(hist_.data(), err_.data(), coef_.data(), bands_, segments_, 0.5f * step,
                                               delta));
        }
        const auto& res = ev.toneDisabled ? nearSpec_ : err_;
        ok(ZEPSC_EC_LIB zepsSubbandSynthesis_32fc32f(res.data(), linF_.data(), syn_[0].get(), work_.data()));
    }

    void fdaf_frame(EcEvents& ev, Zep32f& step, Zep32s& flags) {
        const std::size_t F = static_cast<std::size_t>(frame_);
        // Right after a save the copy is one gradient step old: the adapting
        // filter runs alone, the guard sees its error for both and keeps
        // (a save needs the adapting filter's error shown at most the saved
        // one's, which the next frame compares again).
        const bool alone = guardAction_ == ZEP_EC_GUARD_SAVE;
        if (alone)
            ok(ZEPSC_EC_LIB zepsFreqDomainFilterAdapt_EC_32f(farF_.data(), nearF_.data(), linF_.data(), fdaf_[0].get()));
        else
            ok(ZEPSC_EC_LIB zepsFreqDomainFilter_EC_32f(farF_.data(), nearF_.data(), linF_.data(), fsavedOut_.data(),
                                                         fdaf_[0].get()));
        double pe = 0, pk = 0, py = 0;
        for (std::size_t i = 0; i < F; ++i) pe += double{linF_[i]} * linF_[i];
        if (alone) pk = pe;
        else
            for (std::size_t i = 0; i < F; ++i) pk += double{fsavedOut_[i]} * fsavedOut_[i];
        const float nearL = mean_square(nearF_.data(), frame_);
        if (guard(ev, nearL, static_cast<float>(pe / F), static_cast<float>(pk / F), alone)) {
            linF_ = fsavedOut_;
            pe = pk;
        }
        for (std::size_t i = 0; i < F; ++i) py += double{nearF_[i] - linF_[i]} * (nearF_[i] - linF_[i]);
        control(ev, nearL, static_cast<float>(pe / F), static_cast<float>(py / F), step, flags);
        const float delta = static_cast<float>(segments_) * static_cast<float>(2 * frame_) * 1000.0f;
        if (cfg_.fdafLeak) {
            // Back to the initial steps while the controller's ERLE is low
            // (start, echo-path change); the guard's action takes precedence.
            const bool low = cfg_.controlMode == 0 ? (flags & ZEP_EC_FLAG_CONVERGED) == 0 : step >= 1.0f;
            const bool restart = ((flags & ZEP_EC_FLAG_PATHCHANGE) != 0 || low) && guardAction_ == ZEP_EC_GUARD_KEEP;
            ok(ZEPSC_EC_LIB zepsFreqDomainLeakUpdate_EC_32f(restart ? ZEP_EC_FDAF_RESTART : guardAction_,
                                                             step * cfg_.fdafStep, delta, fdaf_[0].get()));
        } else {
            ok(ZEPSC_EC_LIB zepsFreqDomainCoefUpdate_EC_32f(guardAction_, step * cfg_.fdafStep, delta, fdaf_[0].get()));
        }
        if (ev.toneDisabled) linF_ = nearF_;
    }

    void fullband_frame(EcEvents& ev, Zep32f& step, Zep32s& flags) {
        const std::size_t T = static_cast<std::size_t>(taps_), F = static_cast<std::size_t>(frame_);
        std::memmove(farHist_.data(), farHist_.data() + F, sizeof(float) * (T - 1));
        std::memcpy(farHist_.data() + T - 1, farF_.data(), sizeof(float) * F);
        ok(ZEPSC_EC_LIB zepsFullbandFilter_EC_32f(farHist_.data(), fcoef_.data(), linF_.data(), frame_, taps_));
        ok(ZEPSC_EC_LIB zepsFullbandFilter_EC_32f(farHist_.data(), fsaved_.data(), fsavedOut_.data(), frame_, taps_));
        double pe = 0, py = 0, pk = 0, pyk = 0;
        for (std::size_t i = 0; i < F; ++i) {
            py += double{linF_[i]} * linF_[i];
            pyk += double{fsavedOut_[i]} * fsavedOut_[i];
            linF_[i] = nearF_[i] - linF_[i];
            fsavedOut_[i] = nearF_[i] - fsavedOut_[i];
            pe += double{linF_[i]} * linF_[i];
            pk += double{fsavedOut_[i]} * fsavedOut_[i];
        }
        if (guard(ev, mean_square(nearF_.data(), frame_), static_cast<float>(pe / F), static_cast<float>(pk / F))) {
            linF_ = fsavedOut_;
            pe = pk;
            py = pyk;
        }
        control(ev, mean_square(nearF_.data(), frame_), static_cast<float>(pe / F), static_cast<float>(py / F), step,
                flags);
        if (ev.toneDisabled) {
            linF_ = nearF_;
        } else if (step > 0) {
            ok(ZEPSC_EC_LIB zepsFullbandNLMS_EC_32f(farHist_.data(), nearF_.data(), linF_.data(), fcoef_.data(), frame_, taps_,
                                       0.5f * step, static_cast<float>(taps_) * 1000.0f));
        }
    }

    EcConfig cfg_;
    int order_ = 0, frame_ = 0, winLen_ = 0, bands_ = 0, segments_ = 0, taps_ = 0, failures_ = 0;
    Zep32s guardAction_ = ZEP_EC_GUARD_KEEP;
    std::vector<StateBlock> fdaf_, anaFar_, anaNear_, syn_, dtd_, ctl_, guard_, nlp_, tone_;
    std::vector<Zep8u> work_;
    std::vector<Zep32fc> hist_, coef_, saved_, nearSpec_, est_, err_, estK_, errK_;
    std::vector<float> farHist_, fcoef_, fsaved_, fsavedOut_, farF_, nearF_, linF_, outF_;
};

}  // namespace zepsc_ec

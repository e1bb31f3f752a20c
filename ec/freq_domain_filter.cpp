// SPDX-License-Identifier: BSD-3-Clause
// Partitioned-block frequency-domain NLMS echo canceller (multi-delay filter,
// overlap-save), float, in 16-bit sample units.
//
// Real FFT of N = 2^order points, block B = N/2 samples, P partitions: the
// filter spans P B taps. Per block:
//   x      = the last 2B far-end samples; X_0 = FFT(x), X_p the spectrum p
//            blocks ago (a ring of P spectra, each written twice, at slot
//            j and j + P, so the P newest are contiguous from the newest);
//   Y      = sum_p X_p W_p; y = the last B samples of IFFT(Y); e = d - y;
//            the same with the saved coefficients V_p (two-filter scheme),
//            unless V is W (after Init, a save or a restore, until the next
//            gradient step), when the saved filter's error is e;
//            S[k] = sum_p r_p |X_p[k]|^2 in the same pass (r_p the
//            partitions' step shares, kept from the last update);
//   update (after the caller's coefficient-guard action): E = FFT(B zeros,
//            e); W_p += step E conj(X_p) / (0.9 S[k] + 0.1 mean(S) + delta),
//            S[k] = sum_p |X_p[k]|^2 (per-bin normalised step, the mean bin
//            power a floor under the bins where the far end is weak); the
//            leakage update normalises by the held power H[k] instead
//            (H = S when S rises above it, else H moves by the hold's decay
//            towards S each adapting block);
//   gradient constraint (the alternately updated multi-delay filter):
//            partition 0 and one further partition in turn each block are
//            transformed back, their last B taps cleared and transformed
//            again, so every partition stays a linear (not circular) filter.
// Layout (from the first 16-byte boundary of the caller's block): header
// (56 bytes), FFT description (8 mod 16 bytes, so its tables land aligned),
// then float arrays, each a multiple of 4 floats: x (N), X (2 P C), W, V
// (P C each, C = round4(N + 2) floats of interleaved spectrum), S (C), e and
// the saved filter's error (N each), a time block (N), spectra (C each: the
// saved filter's estimate, the adapting one's, the bin steps, the leakage
// averages of the error and the estimate, the held far-end power H), the
// step shares r and the partition norms (round4(P) each), the FFT's work
// area. No pointers: the arrays' places follow from order and P.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "common/rfft.h"
#include "ec/fdaf_kernels.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic = 0x46414446;  // "FDAF"
constexpr std::int64_t kHeader = 56;
constexpr float kMeanShare = 0.1f;  // share of the mean bin power in each bin's normaliser
constexpr float kDefaultHold = 0.2f;  // decay of the held far-end power after Init
constexpr int kMinOrder = 2, kMaxOrder = 12, kMaxPartitions = 255;

struct FdafHeader {
    std::int32_t magic, order, partitions, turn;
    float pey, pyy, adapt;  // leakage update: smoothed error-echo and echo fluctuations, initial steps so far
    std::int32_t adapted;   // 1 once the initial steps are done
    float prop;             // proportionate share of the partition steps, 0..1 (0: equal steps)
    std::int32_t head;      // ring slot of the newest far-end spectrum, 0..P-1
    std::int32_t same;      // 1 while the saved coefficients V equal W
    std::int32_t single;    // 1 after a block filtered by W alone (ev then holds the near-end block)
    float hold;             // decay of the held far-end power per adapting block, (0, 1] (1: no hold)
};
static_assert(sizeof(FdafHeader) <= kHeader);

struct FdafLayout {
    std::int64_t desc, x, X, W, V, S, e, ev, t, T, Y, M, Eh, Yh, H, r, n, work, total;
    int N, B, C;
};

FdafLayout layout(int order, int partitions) {
    int ds = 0, ws = 0, is = 0;
    rfft_get_size_32f(order, &ds, &ws, &is);
    FdafLayout l{};
    l.N = 1 << order;
    l.B = l.N / 2;
    l.C = (l.N + 2 + 3) & ~3;
    const std::int64_t P = partitions, C = l.C;
    l.desc = kHeader;
    l.x = round16(l.desc + ds);
    l.X = l.x + 4 * std::int64_t{l.N};
    l.W = l.X + 8 * P * C;
    l.V = l.W + 4 * P * C;
    l.S = l.V + 4 * P * C;
    l.e = l.S + 4 * C;
    l.ev = l.e + 4 * std::int64_t{l.N};
    l.t = l.ev + 4 * std::int64_t{l.N};
    l.T = l.t + 4 * std::int64_t{l.N};
    l.Y = l.T + 4 * C;
    l.M = l.Y + 4 * C;
    l.Eh = l.M + 4 * C;
    l.Yh = l.Eh + 4 * C;
    l.H = l.Yh + 4 * C;
    l.r = l.H + 4 * C;
    l.n = l.r + 4 * ((P + 3) & ~std::int64_t{3});
    l.work = l.n + 4 * ((P + 3) & ~std::int64_t{3});
    l.total = round16(l.work + ws);
    return l;
}

/// A hold decay within (0, 1] (not a number excluded).
bool hold_ok(float decay) { return decay > 0.0f && decay <= 1.0f; }

bool config_ok(int order, int partitions) {
    return in_range(order, kMinOrder, kMaxOrder) && in_range(partitions, 1, kMaxPartitions);
}

/// The state at the first 16-byte boundary, or null when it was not built by Init.
FdafHeader* checked(Zep8u* pState) {
    auto* h = align16<FdafHeader>(pState);
    if (h->magic != kMagic || !config_ok(h->order, h->partitions) || !in_range(h->turn, 0, kMaxPartitions) ||
        !in_range(h->adapted, 0, 1) || !(h->prop >= 0.0f && h->prop <= 1.0f) ||
        !in_range(h->head, 0, h->partitions - 1) || !in_range(h->same, 0, 1) ||
        !in_range(h->single, 0, 1) || !hold_ok(h->hold))
        return nullptr;
    const auto* d = reinterpret_cast<const RfftDesc32f*>(reinterpret_cast<Zep8u*>(h) + kHeader);
    if (d->order != h->order) return nullptr;
    return h;
}

template <class T>
T* at(FdafHeader* h, std::int64_t off) {
    return reinterpret_cast<T*>(reinterpret_cast<Zep8u*>(h) + off);
}

/// The P newest far-end spectra, newest first (contiguous in the ring).
float* spectra(FdafHeader* h, const FdafLayout& l) {
    return at<float>(h, l.X) + std::size_t(h->head) * std::size_t(l.C);
}

/// e = d - (the last B samples of the inverse transform of Y).
void residual(const float* Y, const float* pNear, float* e, float* t, const RfftDesc32f* d, Zep8u* work, int B) {
    rfft_inv_32f(Y, t, d, work);
    for (int i = 0; i < B; ++i) e[i] = pNear[i] - t[B + i];
}

/// Clears the circular part of partition w: inverse transform, last B taps
/// set to zero, forward transform.
void constrain(float* w, float* t, const RfftDesc32f* d, Zep8u* work, int B) {
    rfft_inv_32f(w, t, d, work);
    std::fill(t + B, t + 2 * B, 0.0f);
    rfft_fwd_32f(t, w, d, work);
}

/// Step share of each partition into r (P floats, mean 1): with prop = 0
/// all 1; else r_p = (1 - prop) + prop P (|W_p| + eps) / sum_q (|W_q| + eps),
/// |W_p| the norm of partition p's spectrum (proportionate NLMS, the
/// partitions holding the echo path adapting faster), eps 1e-3 of the
/// largest norm plus 1e-6.
/// With `norms`, r holds the partitions' norms already.
void partition_steps(const float* W, float prop, float* r, int P, int C, bool norms = false) {
    if (prop == 0.0f) {
        std::fill(r, r + P, 1.0f);
        return;
    }
    if (!norms) fdaf_norms_32f(W, r, P, C);
    float top = 0.0f;
    for (int p = 0; p < P; ++p) top = std::max(top, r[p]);
    const float eps = 1e-3f * top + 1e-6f;
    float sum = 0.0f;
    for (int p = 0; p < P; ++p) sum += r[p] + eps;
    for (int p = 0; p < P; ++p) r[p] = (1.0f - prop) + prop * static_cast<float>(P) * (r[p] + eps) / sum;
}

/// The partitions' step shares of the current coefficients W into the
/// state (used by the next filter call's far-end power and the next update).
void refresh_shares(FdafHeader* h, const FdafLayout& l) {
    partition_steps(at<float>(h, l.W), h->prop, at<float>(h, l.r), h->partitions, l.C);
}

}  // namespace

ZepStatus zepsFreqDomainFilterGetSize_EC_32f(int order, int numPartitions, int* pSize) {
    if (!config_ok(order, numPartitions)) return zepStsBadArgErr;
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<int>(16 + layout(order, numPartitions).total);
    return zepStsNoErr;
}

ZepStatus zepsFreqDomainFilterInit_EC_32f(Zep8u* pState, int order, int numPartitions) {
    if (!config_ok(order, numPartitions)) return zepStsBadArgErr;
    if (any_null(pState)) return zepStsNullPtrErr;
    auto* h = align16<FdafHeader>(pState);
    const FdafLayout l = layout(order, numPartitions);
    std::memset(reinterpret_cast<Zep8u*>(h), 0, static_cast<std::size_t>(l.total));
    rfft_init_32f(order, at<Zep8u>(h, l.desc));
    h->order = order;
    h->partitions = numPartitions;
    h->turn = 0;
    h->same = 1;
    h->hold = kDefaultHold;
    float* r = at<float>(h, l.r);
    std::fill(r, r + numPartitions, 1.0f);
    h->magic = kMagic;
    return zepStsNoErr;
}

ZepStatus zepsFreqDomainFilterSetProp_EC_32f(Zep32f prop, Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    FdafHeader* h = checked(pState);
    if (h == nullptr) return zepStsBadArgErr;
    if (!(prop >= 0.0f && prop <= 1.0f)) return zepStsRangeErr;
    h->prop = prop;
    const FdafLayout l = layout(h->order, h->partitions);
    refresh_shares(h, l);
    fdaf_weighted_power_32f(spectra(h, l), at<float>(h, l.r), at<float>(h, l.S), h->partitions, l.C);
    return zepStsNoErr;
}

ZepStatus zepsFreqDomainFilterSetHold_EC_32f(Zep32f decay, Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    FdafHeader* h = checked(pState);
    if (h == nullptr) return zepStsBadArgErr;
    if (!hold_ok(decay)) return zepStsRangeErr;
    h->hold = decay;
    return zepStsNoErr;
}

namespace {

/// One block: the far-end spectrum enters the ring, S and the adapting
/// filter's error e are formed; the saved filter's error too when pErrSaved
/// is given (its error is e while V is W), else the near-end block is kept
/// in its place for a restore.
void filter_block(FdafHeader* h, const float* pFar, const float* pNear, float* pErr, float* pErrSaved) {
    const FdafLayout l = layout(h->order, h->partitions);
    const int P = h->partitions, B = l.B, C = l.C;
    const auto* d = at<RfftDesc32f>(h, l.desc);
    float *x = at<float>(h, l.x), *S = at<float>(h, l.S), *t = at<float>(h, l.t);
    float* T = at<float>(h, l.T);
    Zep8u* work = at<Zep8u>(h, l.work);
    std::memmove(x, x + B, sizeof(float) * std::size_t(B));
    std::memcpy(x + B, pFar, sizeof(float) * std::size_t(B));
    h->head = (h->head + P - 1) % P;
    float* X = spectra(h, l);
    rfft_fwd_32f(x, X, d, work);
    std::memcpy(X + std::size_t(P) * std::size_t(C), X, sizeof(float) * std::size_t(C));
    float* e = at<float>(h, l.e);
    float* ev = at<float>(h, l.ev);
    float* Y = at<float>(h, l.Y);
    const bool both = pErrSaved != nullptr && h->same == 0;
    fdaf_accumulate_32f(X, at<float>(h, l.W), both ? at<float>(h, l.V) : nullptr, at<float>(h, l.r), Y, T, S, P, C);
    residual(Y, pNear, e, t, d, work, B);
    std::memcpy(pErr, e, sizeof(float) * std::size_t(B));
    h->single = pErrSaved == nullptr ? 1 : 0;
    if (pErrSaved == nullptr) {
        std::memcpy(ev, pNear, sizeof(float) * std::size_t(B));
        return;
    }
    if (both) {
        residual(T, pNear, ev, t, d, work, B);
    } else {
        std::memcpy(ev, e, sizeof(float) * std::size_t(B));
        std::memcpy(T, Y, sizeof(float) * std::size_t(C));
    }
    std::memcpy(pErrSaved, ev, sizeof(float) * std::size_t(B));
}

/// After a block filtered by W alone: the saved filter's echo-estimate
/// spectrum T and error ev (in place of the kept near-end block).
void saved_filter_late(FdafHeader* h, const FdafLayout& l) {
    float* ev = at<float>(h, l.ev);
    fdaf_accumulate_32f(spectra(h, l), at<float>(h, l.V), nullptr, at<float>(h, l.r), at<float>(h, l.T),
                        nullptr, at<float>(h, l.S), h->partitions, l.C);
    residual(at<float>(h, l.T), ev, ev, at<float>(h, l.t), at<RfftDesc32f>(h, l.desc), at<Zep8u>(h, l.work), l.B);
    h->single = 0;
}

}  // namespace

ZepStatus zepsFreqDomainFilter_EC_32f(const Zep32f* pFar, const Zep32f* pNear, Zep32f* pErr, Zep32f* pErrSaved,
                                      Zep8u* pState) {
    if (any_null(pFar, pNear, pErr, pErrSaved, pState)) return zepStsNullPtrErr;
    FdafHeader* h = checked(pState);
    if (h == nullptr) return zepStsBadArgErr;
    filter_block(h, pFar, pNear, pErr, pErrSaved);
    return zepStsNoErr;
}

ZepStatus zepsFreqDomainFilterAdapt_EC_32f(const Zep32f* pFar, const Zep32f* pNear, Zep32f* pErr, Zep8u* pState) {
    if (any_null(pFar, pNear, pErr, pState)) return zepStsNullPtrErr;
    FdafHeader* h = checked(pState);
    if (h == nullptr) return zepStsBadArgErr;
    filter_block(h, pFar, pNear, pErr, nullptr);
    return zepStsNoErr;
}

namespace {

/// The coefficient guard's action: save W in V, or restore W from V (the
/// saved filter's error and echo-estimate spectrum become the current ones).
void guard_action(FdafHeader* h, const FdafLayout& l, int action) {
    const std::size_t coefFloats = std::size_t(h->partitions) * std::size_t(l.C);
    float *W = at<float>(h, l.W), *V = at<float>(h, l.V);
    if (action == 1 && h->same == 0) std::memcpy(V, W, sizeof(float) * coefFloats);
    if (action == 2 && h->same == 0) {
        if (h->single == 1) saved_filter_late(h, l);
        std::memcpy(W, V, sizeof(float) * coefFloats);
        std::memcpy(at<float>(h, l.e), at<float>(h, l.ev), sizeof(float) * std::size_t(l.B));
        std::memcpy(at<float>(h, l.Y), at<float>(h, l.T), sizeof(float) * std::size_t(l.C));
        // The restored filter's shares, and the far-end power weighted by them.
        refresh_shares(h, l);
        if (h->prop != 0.0f)
            fdaf_weighted_power_32f(spectra(h, l), at<float>(h, l.r), at<float>(h, l.S), h->partitions, l.C);
    }
    if (action == 1 || action == 2) h->same = 1;
}

/// E = FFT(B zeros, e) into the state's spectrum buffer.
float* error_spectrum(FdafHeader* h, const FdafLayout& l) {
    float *t = at<float>(h, l.t), *E = at<float>(h, l.T);
    std::fill(t, t + l.B, 0.0f);
    std::memcpy(t + l.B, at<float>(h, l.e), sizeof(float) * std::size_t(l.B));
    rfft_fwd_32f(t, E, at<RfftDesc32f>(h, l.desc), at<Zep8u>(h, l.work));
    return E;
}

/// g[k] = 1 / (0.9 S[k] + 0.1 mean(S) + delta), the per-bin normaliser, into g.
void normaliser(const float* S, float delta, float* g, int n, float share = kMeanShare) {
    float mean = 0.0f;
    for (int k = 0; k < n; ++k) mean += S[k];
    mean *= share / static_cast<float>(n);
    for (int k = 0; k < n; ++k) g[k] = 1.0f / ((1.0f - share) * S[k] + mean + delta);
}

/// W_p += r_p G conj(X_p) for every partition (G the scaled error spectrum), then
/// the gradient constraint on partition 0 and one further partition in turn;
/// the shares of the new coefficients are kept for the next block (the norms
/// of the unconstrained partitions from the gradient pass).
void apply_gradient(FdafHeader* h, const FdafLayout& l, const float* G) {
    const int P = h->partitions, C = l.C;
    float *W = at<float>(h, l.W), *n = at<float>(h, l.n);
    const bool prop = h->prop != 0.0f;
    fdaf_add_gradient_32f(spectra(h, l), G, at<float>(h, l.r), W, prop ? n : nullptr, P, C);
    h->same = 0;
    const auto* d = at<RfftDesc32f>(h, l.desc);
    float* t = at<float>(h, l.t);
    Zep8u* work = at<Zep8u>(h, l.work);
    constrain(W, t, d, work, l.B);
    if (prop) fdaf_norms_32f(W, n, 1, C);
    if (P > 1) {
        const int p = 1 + h->turn % (P - 1);
        float* wp = W + std::size_t(p) * std::size_t(C);
        constrain(wp, t, d, work, l.B);
        if (prop) fdaf_norms_32f(wp, n + p, 1, C);
        h->turn = (h->turn + 1) % (P - 1);
    }
    float* r = at<float>(h, l.r);
    if (prop) std::copy(n, n + P, r);
    partition_steps(W, h->prop, r, P, C, true);
}

bool update_args_ok(Zep32f step, Zep32f delta) {
    return step >= 0.0f && step <= 2.0f && delta > 0.0f && delta <= 3.0e38f;
}

}  // namespace

ZepStatus zepsFreqDomainCoefUpdate_EC_32f(int action, Zep32f step, Zep32f delta, Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    FdafHeader* h = checked(pState);
    if (h == nullptr) return zepStsBadArgErr;
    if (!in_range(action, 0, 2)) return zepStsBadArgErr;
    if (!update_args_ok(step, delta)) return zepStsRangeErr;
    const FdafLayout l = layout(h->order, h->partitions);
    guard_action(h, l, action);
    if (step == 0.0f) return zepStsNoErr;
    const int n = l.B + 1;
    float* E = error_spectrum(h, l);
    float* g = at<float>(h, l.t);  // the time block is free until the constraint
    normaliser(at<float>(h, l.S), delta, g, n);
    for (int k = 0; k < n; ++k) {
        E[2 * k] *= step * g[k];
        E[2 * k + 1] *= step * g[k];
    }
    apply_gradient(h, l, E);
    return zepStsNoErr;
}

namespace {

constexpr float kSpecAverage = 2.0f / 8000.0f;  // per sample of the block: bin-power averages
constexpr float kLeakRate = 2.0f / 8000.0f, kLeakRateMax = 0.5f / 8000.0f;  // leakage smoothing per sample
constexpr float kMinLeak = 0.005f;
constexpr float kLeakGain = 7.0f;      // residual-echo share -> step (the normaliser spans all partitions)
// The initial steps (before the filter has adapted) take the step kInitialStep
// whenever the caller's step is above 0: the caller's step gates them but does
// not scale them. The caller's controller lowers its step as its full-band
// ERLE grows, which in the first talk spurts means that the bins the far end
// has excited so far are modelled, not that the error is near-end noise; a
// step scaled down there slows the bins a new sound excites. The leakage step
// takes over the scaling once adapted. Their normaliser's mean share is 0.03:
// a far end whose power sits in a few strong bins (a male voice's low
// harmonics, 20-30 dB above its other bins between syllables) raises the
// mean so that 0.07 of it floored the other bins' steps to a quarter, while
// before the filter has adapted their error is echo, not noise.
constexpr float kInitialStep = 1.3f;
constexpr float kAdaptedAfter = 5.0f;  // adapted once the caller's steps sum to this many per partition
constexpr float kInitialMeanShare = 0.03f;  // the normaliser's mean share during the initial steps
constexpr float kAdaptedMeanShare = 0.25f;  // the normaliser's mean share once adapted
constexpr float kMaxBinStep = 1.5f;  // once adapted, a bin's step (caller's step times multiplier) at most this

/// Per-bin step multipliers from the leakage estimate into mu (n floats):
/// the error power Rf = |E|^2 and the echo estimate's power Yf = |Y|^2 of
/// each bin are compared with their slow averages; the regression of the
/// error's fluctuations on the echo estimate's, smoothed at a rate that
/// follows the echo-to-error ratio, is the leakage (the share of the echo
/// estimate's power still in the error). mu[k] = (0.5 min(leak Yf, 0.5 Rf)
/// + 0.5 RER Rf) / Rf with the residual-to-error ratio RER = (1e-4 Sxx +
/// 3 leak Syy) / See at most 0.5 (sums over the bins). yf: n floats of work.
void leak_steps(FdafHeader* h, const FdafLayout& l, const float* E, float* mu, float* yf) {
    const int n = l.B + 1;
    const float *Y = at<float>(h, l.Y), *X0 = spectra(h, l);
    float *Eh = at<float>(h, l.Eh), *Yh = at<float>(h, l.Yh);
    const float avg = kSpecAverage * static_cast<float>(l.B);
    double pey = 0, pyy = 0, see = 0, syy = 0, sxx = 0;
    for (int k = 0; k < n; ++k) {
        const float rf = E[2 * k] * E[2 * k] + E[2 * k + 1] * E[2 * k + 1];
        const float y = Y[2 * k] * Y[2 * k] + Y[2 * k + 1] * Y[2 * k + 1];
        const float de = rf - Eh[k], dy = y - Yh[k];
        pey += double{de} * dy;
        pyy += double{dy} * dy;
        Eh[k] += avg * de;
        Yh[k] += avg * dy;
        see += rf;
        syy += y;
        sxx += X0[2 * k] * X0[2 * k] + X0[2 * k + 1] * X0[2 * k + 1];
        mu[k] = rf;
        yf[k] = y;
    }
    pyy = std::sqrt(pyy);
    pey = pyy > 0 ? pey / pyy : 0.0;
    const double rate = double{kLeakRate} * l.B, rateMax = double{kLeakRateMax} * l.B;
    const double alpha = see > 0 ? std::min(rate * syy, rateMax * see) / see : 0.0;
    h->pey = static_cast<float>((1 - alpha) * h->pey + alpha * pey);
    h->pyy = static_cast<float>((1 - alpha) * h->pyy + alpha * pyy);
    h->pyy = std::max(h->pyy, 1.0f);
    h->pey = std::clamp(h->pey, kMinLeak * h->pyy, h->pyy);
    const float leak = h->pey / h->pyy;
    const float rer = see > 0 ? std::min(static_cast<float>((1e-4 * sxx + 3.0 * leak * syy) / see), 0.5f) : 0.5f;
    for (int k = 0; k < n; ++k) {
        const float rf = mu[k] + 1e-3f;
        mu[k] = (0.5f * std::min(leak * yf[k], 0.5f * rf) + 0.5f * rer * rf) / rf;
    }
}

/// The held far-end power H[k] (n floats in the state): S[k] where S rises
/// above H, else H moves by the hold's decay towards S.
const float* held_power(FdafHeader* h, const FdafLayout& l, int n) {
    const float* S = at<float>(h, l.S);
    float* H = at<float>(h, l.H);
    const float a = h->hold;
    for (int k = 0; k < n; ++k) H[k] = S[k] > H[k] ? S[k] : (1.0f - a) * H[k] + a * S[k];
    return H;
}

}  // namespace

ZepStatus zepsFreqDomainLeakUpdate_EC_32f(int action, Zep32f step, Zep32f delta, Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    FdafHeader* h = checked(pState);
    if (h == nullptr) return zepStsBadArgErr;
    if (!in_range(action, 0, 3)) return zepStsBadArgErr;
    if (!update_args_ok(step, delta)) return zepStsRangeErr;
    const FdafLayout l = layout(h->order, h->partitions);
    guard_action(h, l, action);
    if (action == 3) h->adapted = 0, h->adapt = 0.0f;
    const int n = l.B + 1;
    float* E = error_spectrum(h, l);
    float *mu = at<float>(h, l.M), *yf = at<float>(h, l.t);
    leak_steps(h, l, E, mu, yf);
    if (step == 0.0f) return zepStsNoErr;
    const float share = h->adapted ? kAdaptedMeanShare : kInitialMeanShare;
    const float* S = held_power(h, l, n);
    float mean = 0.0f;
    for (int k = 0; k < n; ++k) mean += S[k];
    mean *= share / static_cast<float>(n);
    const bool initial = h->adapted == 0;
    if (initial) {
        h->adapt += step;
        if (h->adapt > kAdaptedAfter * static_cast<float>(h->partitions)) h->adapted = 1;
    }
    for (int k = 0; k < n; ++k) {  // as normaliser(), with the bin's step in the same pass
        const float m = initial ? kInitialStep : std::min(kMaxBinStep, step * (mu[k] * kLeakGain));
        const float gk = m * (1.0f / ((1.0f - share) * S[k] + mean + delta));
        E[2 * k] *= gk;
        E[2 * k + 1] *= gk;
    }
    apply_gradient(h, l, E);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

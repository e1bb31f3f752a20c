// SPDX-License-Identifier: BSD-3-Clause
// Sub-band filter bank: block sizes and state initialisation, 16-bit (Q13
// window) and float.
//
// Configuration checks come before the state pointer (the set-up routines of
// the echo-canceller toolkit validate their configuration first).
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "ec/ec_tables.h"
#include "ec/subband_kernels.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

/// N = 2^order as a 64-bit value (orders past 62 saturate, no valid L can be
/// a multiple of them anyway).
std::int64_t fft_len(int order) { return std::int64_t{1} << (order > 62 ? 62 : order); }

bool len_fits(int order, int len) { return len % fft_len(order) == 0; }

struct Sizes {
    std::int64_t state, init, buf;
};

/// GetSize checks and sizes; `fft_sizes` is the FFT's size query of the
/// precision, `state_size`/`buf_size` the bank's rules.
template <class FftSizes, class Rule>
ZepStatus get_size(int order, int len, int* pStateSize, int* pInitBufSize, int* pBufSize, FftSizes fft_sizes,
                   Rule rule) {
    if (order <= 0 || len <= 0) return zepStsBadArgErr;
    if (any_null(pStateSize, pInitBufSize, pBufSize)) return zepStsNullPtrErr;
    if (!len_fits(order, len)) return zepStsBadArgErr;
    int S = 0, W = 0, I = 0;
    if (!fft_sizes(order, &S, &W, &I)) return zepStsBadArgErr;
    const Sizes z = rule(S, W, I, std::int64_t{len}, fft_len(order));
    if (z.state > INT32_MAX || z.buf > INT32_MAX || z.init > INT32_MAX) return zepStsBadArgErr;
    *pStateSize = static_cast<int>(z.state);
    *pInitBufSize = static_cast<int>(z.init);
    *pBufSize = static_cast<int>(z.buf);
    return zepStsNoErr;
}

/// Init checks shared by both precisions; zepStsNoErr when the state may be
/// built. `hasWindow` tells whether the caller gave a window.
ZepStatus init_checks(const Zep8u* pState, int order, int frameSize, int len, bool hasWindow) {
    if (order < 1 || frameSize < 1 || frameSize > fft_len(order) || len < 1) return zepStsBadArgErr;
    if (pState == nullptr) return zepStsNullPtrErr;
    if (!len_fits(order, len)) return zepStsBadArgErr;
    if (!hasWindow) {
        const bool isA = order == kSubbandWinAOrder && frameSize == kSubbandWinAFrame && len == kSubbandWinALen;
        const bool isB = order == kSubbandWinBOrder && frameSize == kSubbandWinBFrame && len == kSubbandWinBLen;
        if (!isA && !isB) return zepStsBadArgErr;
    }
    if (order > kRfftMaxOrder) return zepStsErr;  // the FFT set-up refuses it
    return zepStsNoErr;
}

/// The built-in float window of the configuration whose length is len,
/// mirrored: h[L-1-n] = h[n].
void builtin_window_32f(int len, float* w) {
    const float* half = len == kSubbandWinALen ? kSubbandWinA_32f : kSubbandWinB_32f;
    for (int n = 0; n < len / 2; ++n) w[n] = w[len - 1 - n] = half[n];
}

/// Q13 form of a float tap: times 8192, truncated toward zero.
Word16 tap_q13(float h) { return static_cast<Word16>(h * 8192.0f); }

}  // namespace

ZepStatus zepsSubbandProcessGetSize_16s(int order, int len, int* pStateSize, int* pInitBufSize, int* pBufSize) {
    return get_size(order, len, pStateSize, pInitBufSize, pBufSize, rfft_get_size_32s,
                    [](int S, int W, int I, std::int64_t L, std::int64_t N) {
                        return Sizes{round16(S) + 2 * round16(2 * L) + 64, I, round16(4 * N) + W + 16};
                    });
}

ZepStatus zepsSubbandProcessGetSize_32f(int order, int len, int* pStateSize, int* pInitBufSize, int* pBufSize) {
    return get_size(order, len, pStateSize, pInitBufSize, pBufSize, rfft_get_size_32f,
                    [](int S, int W, int I, std::int64_t L, std::int64_t N) {
                        return Sizes{S + 8 * L + 56, I, W + 4 * N + 16};
                    });
}

ZepStatus zepsSubbandProcessInit_16s(Zep8u* pState, int order, int frameSize, int len, const Zep16s* pWindow,
                                     Zep8u* /*pInitBuf*/) {
    const ZepStatus st = init_checks(pState, order, frameSize, len, pWindow != nullptr);
    if (st != zepStsNoErr) return st;
    const std::size_t L = static_cast<std::size_t>(len);
    auto* s = align16<SubbandState16s>(pState);
    auto* base = reinterpret_cast<Zep8u*>(s);
    std::memset(base, 0, kSubbandHeader16s);
    s->pWindow = reinterpret_cast<Word16*>(base + kSubbandHeader16s);
    s->pDelay = reinterpret_cast<Word16*>(base + kSubbandHeader16s + round16(2 * L));
    Zep8u* desc = base + kSubbandHeader16s + 2 * round16(2 * L);
    // 1. the window copy (caller's or built-in), padding cleared
    std::memset(s->pWindow, 0, 2 * round16(2 * L));
    if (pWindow) {
        std::memcpy(s->pWindow, pWindow, 2 * L);
    } else {
        float w[kSubbandWinBLen];
        builtin_window_32f(len, w);
        for (std::size_t n = 0; n < L; ++n) s->pWindow[n] = tap_q13(w[n]);
    }
    // 2. the real FFT, inverse divided by N
    s->pDesc = rfft_init_32s(order, desc);
    if (s->pDesc == nullptr) return zepStsErr;
    // 3. the lengths; the delay line was cleared with the padding above
    s->len = len;
    s->fftLen = 1 << order;
    s->frameSize = frameSize;
    s->narrow = subband_window_is_narrow(s->pWindow, len) ? 1 : 0;
    s->magic = kSubbandMagic16s;  // last: the state is complete
    return zepStsNoErr;
}

ZepStatus zepsSubbandProcessInit_32f(Zep8u* pState, int order, int frameSize, int len, const Zep32f* pWindow,
                                     Zep8u* /*pInitBuf*/) {
    const ZepStatus st = init_checks(pState, order, frameSize, len, pWindow != nullptr);
    if (st != zepStsNoErr) return st;
    const std::size_t L = static_cast<std::size_t>(len);
    int S = 0, W = 0, I = 0;
    rfft_get_size_32f(order, &S, &W, &I);
    auto* s = align16<SubbandState32f>(pState);
    auto* base = reinterpret_cast<Zep8u*>(s);
    std::memset(base, 0, kSubbandHeader32f);
    Zep8u* desc = base + kSubbandHeader32f;
    s->pWindow = reinterpret_cast<float*>(desc + S);
    s->pDelay = s->pWindow + L;
    // 1. the window copy (caller's or built-in)
    if (pWindow)
        std::memcpy(s->pWindow, pWindow, 4 * L);
    else
        builtin_window_32f(len, s->pWindow);
    // 2. the real FFT, inverse divided by N
    s->pDesc = rfft_init_32f(order, desc);
    if (s->pDesc == nullptr) return zepStsErr;
    // 3. the lengths and a silent delay line
    s->len = len;
    s->fftLen = 1 << order;
    s->frameSize = frameSize;
    std::memset(s->pDelay, 0, 4 * L);
    s->magic = kSubbandMagic32f;  // last: the state is complete
    return zepStsNoErr;
}

ZEPS_END_VARIANT

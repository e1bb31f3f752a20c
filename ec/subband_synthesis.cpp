// SPDX-License-Identifier: BSD-3-Clause
// Sub-band synthesis, one frame: inverse real FFT (divided by N), delay-line
// advance with zero fill, overlap-add of the periodically repeated block
// through the time-reversed window, output of the F oldest samples.
// 32-bit bins scaled by 2^-scaleFactor into 16-bit samples with a Q13
// window, and float.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "ec/subband_kernels.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

/// d[k] = d[k+F] for k < L-F, then d[L-F .. L-1] = 0.
template <class T>
void advance_delay(T* d, int L, int F) {
    std::memmove(d, d + F, sizeof(T) * static_cast<std::size_t>(L - F));
    std::memset(d + (L - F), 0, sizeof(T) * static_cast<std::size_t>(F));
}

}  // namespace

ZepStatus zepsSubbandSynthesis_32fc32f(const Zep32fc* pSrc, Zep32f* pDst, Zep8u* pState, Zep8u* pBuf) {
    if (any_null(pSrc, pDst, pState, pBuf)) return zepStsNullPtrErr;
    auto* s = align16<SubbandState32f>(pState);
    if (!subband_state_ok(s)) return zepStsBadArgErr;
    const int L = s->len, N = s->fftLen, F = s->frameSize;
    auto* y = align16<float>(pBuf);
    Zep8u* work = reinterpret_cast<Zep8u*>(y + N);
    if (!rfft_inv_32f(reinterpret_cast<const float*>(pSrc), y, s->pDesc, work)) return zepStsErr;
    subband_shift_ola_32f(s->pDelay, s->pWindow, y, L, N, F);
    std::memcpy(pDst, s->pDelay, sizeof(float) * static_cast<std::size_t>(F));
    return zepStsNoErr;
}

ZepStatus zepsSubbandSynthesis_32sc16s_Sfs(const Zep32sc* pSrc, Zep16s* pDst, Zep8u* pState, int scaleFactor,
                                           Zep8u* pBuf) {
    if (any_null(pSrc, pDst, pState, pBuf)) return zepStsNullPtrErr;
    auto* s = align16<SubbandState16s>(pState);
    if (!subband_state_ok(s)) return zepStsBadArgErr;
    const int L = s->len, N = s->fftLen, F = s->frameSize;
    auto* y = align16<Word32>(pBuf);
    Zep8u* work = reinterpret_cast<Zep8u*>(y) + round16(4 * std::int64_t{N});
    if (!rfft_inv_32s_sfs(reinterpret_cast<const Word32*>(pSrc), y, scaleFactor, s->pDesc, work))
        return zepStsErr;
    advance_delay(s->pDelay, L, F);
    if (s->narrow == 1)
        subband_ola_16s_narrow(s->pDelay, s->pWindow, y, L, N);
    else
        subband_ola_16s(s->pDelay, s->pWindow, y, L, N);
    std::memcpy(pDst, s->pDelay, sizeof(Word16) * static_cast<std::size_t>(F));
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// Sub-band analysis, one frame: delay-line update, windowed fold of the L
// taps onto N points, forward real FFT (N/2+1 bins). 16-bit samples with a
// Q13 window into 32-bit bins scaled by 2^-scaleFactor, and float.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "ec/subband_kernels.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

/// d[k] = d[k+F] for k < L-F, then d[L-F+k] = x[k] for k < F.
template <class T>
void push_frame(T* d, const T* x, int L, int F) {
    std::memmove(d, d + F, sizeof(T) * static_cast<std::size_t>(L - F));
    std::memcpy(d + (L - F), x, sizeof(T) * static_cast<std::size_t>(F));
}

}  // namespace

ZepStatus zepsSubbandAnalysis_16s32sc_Sfs(const Zep16s* pSrc, Zep32sc* pDst, Zep8u* pState, int scaleFactor,
                                          Zep8u* pBuf) {
    if (any_null(pSrc, pDst, pState, pBuf)) return zepStsNullPtrErr;
    auto* s = align16<SubbandState16s>(pState);
    if (!subband_state_ok(s)) return zepStsBadArgErr;
    const int L = s->len, N = s->fftLen;
    push_frame(s->pDelay, pSrc, L, s->frameSize);
    auto* u = align16<Word32>(pBuf);
    if (s->narrow == 1)
        subband_fold_16s_narrow(s->pDelay, s->pWindow, L, N, u);
    else
        subband_fold_16s(s->pDelay, s->pWindow, L, N, u);
    Zep8u* work = reinterpret_cast<Zep8u*>(u) + round16(4 * std::int64_t{N});
    if (!rfft_fwd_32s_sfs(u, reinterpret_cast<Word32*>(pDst), scaleFactor, s->pDesc, work)) return zepStsErr;
    return zepStsNoErr;
}

ZepStatus zepsSubbandAnalysis_32f32fc(const Zep32f* pSrc, Zep32fc* pDst, Zep8u* pState, Zep8u* pBuf) {
    if (any_null(pSrc, pDst, pState, pBuf)) return zepStsNullPtrErr;
    auto* s = align16<SubbandState32f>(pState);
    if (!subband_state_ok(s)) return zepStsBadArgErr;
    const int L = s->len, N = s->fftLen;
    push_frame(s->pDelay, pSrc, L, s->frameSize);
    // The fold is delivered straight into the FFT's split work arrays.
    float* re = align16<float>(pBuf) + N;
    float* im = re + N / 2;
    subband_fold_32f_split(s->pDelay, s->pWindow, L, N, re, im);
    if (!rfft_fwd_32f_split(re, im, reinterpret_cast<float*>(pDst), s->pDesc)) return zepStsErr;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

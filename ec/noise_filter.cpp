// SPDX-License-Identifier: BSD-3-Clause
// Frequency-domain noise filter on the sub-band spectra of the echo
// canceller's filter bank (complex float, in place, one frame per call).
//
// Per band k, with P = |Y[k]|^2 the frame's power:
// - smoothed power S = 0.7 S + 0.3 P (the first frame sets S = P);
// - noise estimate: minimum tracking of S, M = S when S < M, else M grows by
//   0.015 dB a frame (5 dB/s at 24-sample frames of 8 kHz); N = 2 M (the
//   minimum of a smoothed periodogram lies below its mean);
// - a posteriori SNR g = P / N; a priori SNR by the decision-directed rule
//   (Ephraim and Malah 1984): xi = 0.98 G_prev^2 g_prev + 0.02 max(g - 1, 0);
// - gain: Wiener rule G = xi / (1 + xi), floored at 0.178 (-15 dB).
// Variable-size state: header, then per band S, M, G_prev and g_prev;
// placed at the first 16-byte boundary of the caller's block, pointing into
// itself.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "common/args.h"
#include "common/exports.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic = 0x4652524E;  // "NRRF"
constexpr std::int64_t kHeader = 32;
constexpr float kFloorGain = 0.177827941f;
constexpr float kRise = 1.00346009f;  // 0.015 dB

struct NoiseFilterState {
    float* pBand;  // 4 numBands floats: S, M, previous gain, previous a posteriori SNR
    std::int32_t magic, numBands, frames, pad;
};
static_assert(sizeof(NoiseFilterState) <= kHeader);

std::int64_t state_bytes(int numBands) { return 16 + kHeader + round16(16 * std::int64_t{numBands}); }

}  // namespace

ZepStatus zepsNoiseFilterGetSize_NR_32f(int numBands, int* pSize) {
    if (!in_range(numBands, 1, 4097)) return zepStsBadArgErr;
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<int>(state_bytes(numBands));
    return zepStsNoErr;
}

ZepStatus zepsNoiseFilterInit_NR_32f(Zep8u* pState, int numBands) {
    if (!in_range(numBands, 1, 4097)) return zepStsBadArgErr;
    if (any_null(pState)) return zepStsNullPtrErr;
    auto* s = align16<NoiseFilterState>(pState);
    s->pBand = reinterpret_cast<float*>(reinterpret_cast<Zep8u*>(s) + kHeader);
    std::fill(s->pBand, s->pBand + 4 * numBands, 0.0f);
    s->numBands = numBands;
    s->frames = 0;
    s->pad = 0;
    s->magic = kMagic;
    return zepStsNoErr;
}

ZepStatus zepsNoiseFilter_NR_32fc_I(Zep32fc* pSrcDst, Zep8u* pState) {
    if (any_null(pSrcDst, pState)) return zepStsNullPtrErr;
    auto* s = align16<NoiseFilterState>(pState);
    if (s->magic != kMagic || !in_range(s->numBands, 1, 4097) || s->frames < 0 ||
        !points_at(s->pBand, reinterpret_cast<const Zep8u*>(s), kHeader))
        return zepStsBadArgErr;
    const int numBands = s->numBands;
    float* smooth = s->pBand;
    float* noise = smooth + numBands;
    float* gPrev = noise + numBands;
    float* snrPrev = gPrev + numBands;
    for (int k = 0; k < numBands; ++k) {
        const float p = pSrcDst[k].re * pSrcDst[k].re + pSrcDst[k].im * pSrcDst[k].im;
        if (!(p <= 3.0e38f)) continue;  // not a finite power: band left as it is
        smooth[k] = s->frames == 0 ? p : 0.7f * smooth[k] + 0.3f * p;
        if (s->frames == 0 || smooth[k] < noise[k]) noise[k] = smooth[k];
        else noise[k] = std::fmin(smooth[k], noise[k] * kRise);
        const float post = p / (2.0f * noise[k] + 1e-6f);
        const float xi = s->frames == 0 ? std::fmax(post - 1.0f, 0.0f)
                                        : 0.98f * gPrev[k] * gPrev[k] * snrPrev[k] + 0.02f * std::fmax(post - 1.0f, 0.0f);
        const float g = std::fmax(kFloorGain, xi / (1.0f + xi));
        gPrev[k] = g;
        snrPrev[k] = std::fmin(post, 1.0e6f);
        pSrcDst[k].re *= g;
        pSrcDst[k].im *= g;
    }
    if (s->frames < 1000000) ++s->frames;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

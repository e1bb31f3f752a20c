// SPDX-License-Identifier: BSD-3-Clause
// Non-linear processor with comfort noise, float, one block per call.
// The background level is the running minimum-tracking estimate of the
// input's mean square per block (falls at once to a lower block level, rises
// by 0.5 dB a block otherwise), updated only on blocks passed through. A
// block with `suppress` set (the controller's decision: the far end active,
// no double talk, the canceller converged) is replaced by comfort noise of
// the estimated level: uniform white noise from a 32-bit linear congruential
// generator (Numerical Recipes constants) scaled to that mean square.
#include <cmath>
#include <cstdint>

#include "common/args.h"
#include "common/exports.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic = 0x20504C4E;
struct NlpState {
    std::int32_t magic;
    std::uint32_t seed;
    float noise;  // estimated background mean square
    std::int32_t started;
};

}  // namespace

ZepStatus zepsNLPGetSize_EC_32f(int* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<int>(sizeof(NlpState)) + 16;
    return zepStsNoErr;
}

ZepStatus zepsNLPInit_EC_32f(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    *align16<NlpState>(pState) = NlpState{kMagic, 12345u, 0.0f, 0};
    return zepStsNoErr;
}

ZepStatus zepsNLP_EC_32f(const Zep32f* pSrc, Zep32f* pDst, int len, int suppress, Zep8u* pState) {
    if (any_null(pSrc, pDst, pState)) return zepStsNullPtrErr;
    if (len < 1 || !in_range(suppress, 0, 1)) return zepStsBadArgErr;
    auto* s = align16<NlpState>(pState);
    if (s->magic != kMagic || !(s->noise >= 0.0f && s->noise <= 3.0e38f)) return zepStsBadArgErr;
    if (!suppress) {
        double ms = 0.0;
        for (int n = 0; n < len; ++n) ms += double{pSrc[n]} * pSrc[n];
        const float level = static_cast<float>(ms / len);
        if (!(level <= 3.0e38f)) return zepStsRangeErr;
        if (!s->started || level < s->noise) s->noise = level;
        else s->noise = std::fmin(level, s->noise * 1.1220185f);  // +0.5 dB
        s->started = 1;
        for (int n = 0; n < len; ++n) pDst[n] = pSrc[n];
        return zepStsNoErr;
    }
    const float amp = std::sqrt(3.0f * s->noise);  // uniform in [-amp, amp]: mean square amp^2/3
    for (int n = 0; n < len; ++n) {
        s->seed = s->seed * 1664525u + 1013904223u;
        const float u = static_cast<float>(static_cast<std::int32_t>(s->seed)) * 0x1.0p-31f;
        pDst[n] = amp * u;
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

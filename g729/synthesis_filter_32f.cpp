// SPDX-License-Identifier: BSD-3-Clause
// G.729 order-10 synthesis filter 1/A(z) in single precision (the syn_filt
// routine of the G.729 Annex C floating-point coder, 4.1.6): per sample
//     s = x[i];  s -= a[j] * y[i-j]  for j = 1 .. 10 in that order;  y[i] = s
// with a[0] taken as 1 (not read). The same float operations in the same
// order on both builds (no contraction into fused multiply-adds).
#include <cstring>

#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrder = 10;

/// One output sample; past[k] = y[i-1-k] for k = 0 .. 9.
inline float syn_sample(const float* a, float x, const float* past) {
    float s = x;
    for (int j = 1; j <= kOrder; ++j) s -= a[j] * past[j - 1];
    return s;
}

}  // namespace

ZepStatus zepsSynthesisFilter_G729_32f(const Zep32f* pLPC, const Zep32f* pSrc, Zep32f* pDst, int len,
                                       Zep32f* pSrcDstMem, int update) {
    if (any_null(pLPC, pSrc, pDst, pSrcDstMem)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    // past[0] is the newest output: a window sliding back through the
    // memory (read once, before any output is written) and the outputs.
    float past[kOrder];
    for (int k = 0; k < kOrder; ++k) past[k] = pSrcDstMem[kOrder - 1 - k];
    for (int i = 0; i < len; ++i) {
        const float y = syn_sample(pLPC, pSrc[i], past);
        std::memmove(past + 1, past, (kOrder - 1) * sizeof(float));
        past[0] = y;
        pDst[i] = y;
    }
    // past now holds the last 10 outputs (earlier memory values when len < 10).
    if (update != 0)
        for (int k = 0; k < kOrder; ++k) pSrcDstMem[k] = past[kOrder - 1 - k];
    return zepStsNoErr;
}

ZEPS_END_VARIANT

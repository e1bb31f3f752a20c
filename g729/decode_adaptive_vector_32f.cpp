// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 Annex A/C float adaptive-codebook vector (pred_lt_3 of the
// Annex C floating-point reference): the past excitation interpolated at
// T0 + frac/3 with the float inter_3l filter, written in place at the
// current subframe (154 samples after the buffer start). Single precision,
// sums in the reference's order.
#include "common/args.h"
#include "common/exports.h"
#include "g729/g729_pitch_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

inline constexpr int kSubfrF = 40;
inline constexpr int kExcOffsetF = 154;

void pred_lt_3f(float* exc, int t0, int frac) {
    const float* x0 = exc - t0;
    frac = -frac;
    if (frac < 0) {
        frac += kPitchUpSamp;
        --x0;
    }
    const float* c1 = &inter_3l_flt[frac];
    const float* c2 = &inter_3l_flt[kPitchUpSamp - frac];
    for (int j = 0; j < kSubfrF; ++j) {
        const float* x1 = x0++;
        const float* x2 = x0;
        float s = 0.0f;
        for (int i = 0, k = 0; i < kPitchInter10; ++i, k += kPitchUpSamp) s += x1[-i] * c1[k] + x2[i] * c2[k];
        exc[j] = s;
    }
}

}  // namespace

ZepStatus zepsDecodeAdaptiveVector_G729_32f_I(const Zep32s* pSrcDelay, Zep32f* pSrcDstPrevExcitation) {
    if (any_null(pSrcDelay, pSrcDstPrevExcitation)) return zepStsNullPtrErr;
    if (!in_range<Zep32s>(pSrcDelay[0], 18, 144) || !in_range<Zep32s>(pSrcDelay[1], -1, 1))
        return zepStsOutOfRangeErr;
    pred_lt_3f(pSrcDstPrevExcitation + kExcOffsetF, pSrcDelay[0], pSrcDelay[1]);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 pitch-delay code (ITU-T G.729 3.7.2 / 4.1.3): Dec_lag3, the 8-bit
// absolute code of subframe 0 (1/3 resolution below 85, integer above) and
// the 5-bit code of subframe 1 relative to the first subframe's lag; the
// parity bit of the first code (Parity_Pitch, 3.7.2).
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

inline Word16 parity_pitch(Word16 index) {
    Word16 temp = shr(index, 1);
    Word16 sum = 1;
    for (int i = 0; i <= 5; ++i) {
        temp = shr(temp, 1);
        sum = add(sum, static_cast<Word16>(temp & 1));
    }
    return static_cast<Word16>(sum & 1);
}

}  // namespace

ZepStatus zepsDecodeLag_G729_16s(Zep16s index, Zep16s subframe, Zep16s* pSrcDstDelay) {
    if (any_null(pSrcDstDelay)) return zepStsNullPtrErr;
    if (!in_range<Word16>(subframe, 0, 1)) return zepStsRangeErr;
    if (subframe == 0) {
        if (!in_range<Word16>(index, 0, 255)) return zepStsOutOfRangeErr;
        if (index < 197) {
            const Word16 t0 = add(mult(add(index, 2), 10923), 19);
            pSrcDstDelay[0] = t0;
            pSrcDstDelay[1] = add(sub(index, static_cast<Word16>(3 * t0)), 58);
        } else {
            pSrcDstDelay[0] = sub(index, 112);
            pSrcDstDelay[1] = 0;
        }
        return zepStsNoErr;
    }
    if (!in_range<Word16>(index, 0, 31) || !in_range<Word16>(pSrcDstDelay[0], 18, 145)) return zepStsOutOfRangeErr;
    const Word16 i = sub(mult(add(index, 2), 10923), 1);
    pSrcDstDelay[0] = add(i, second_subframe_t0_min(pSrcDstDelay[0]));
    pSrcDstDelay[1] = sub(sub(index, 2), static_cast<Word16>(3 * i));
    return zepStsNoErr;
}

ZepStatus zepsEncodeLag_G729_16s(const Zep16s* pSrcDelay, Zep16s t0Prev, Zep16s subframe, Zep16s* pDstIndex) {
    if (any_null(pSrcDelay, pDstIndex)) return zepStsNullPtrErr;
    if (!in_range<Word16>(subframe, 0, 1)) return zepStsRangeErr;
    if (subframe == 1 && !in_range<Word16>(t0Prev, 18, 145)) return zepStsRangeErr;
    const Word16 t0 = pSrcDelay[0], frac = pSrcDelay[1];
    if (!in_range<Word16>(frac, -1, 1)) return zepStsOutOfRangeErr;
    if (subframe == 0) {
        if (!in_range<Word16>(t0, 19, 143) || (t0 > 85 && frac != 0)) return zepStsOutOfRangeErr;
        // Enc_lag3: 3 T0 - 58 + frac up to 85, T0 + 112 above.
        const Word16 index = t0 <= 85 ? add(sub(static_cast<Word16>(3 * t0), 58), frac) : add(t0, 112);
        if (index < 0) return zepStsOutOfRangeErr;
        *pDstIndex = index;
        return zepStsNoErr;
    }
    const Word16 t0_min = second_subframe_t0_min(t0Prev);
    const Word16 i = sub(t0, t0_min);
    if (!in_range<Word16>(i, -1, 10)) return zepStsOutOfRangeErr;
    const Word16 index = add(add(add(add(i, i), i), 2), frac);
    if (!in_range<Word16>(index, 0, 31)) return zepStsOutOfRangeErr;
    *pDstIndex = index;
    return zepStsNoErr;
}

ZepStatus zepsParityPitch_G729_16s(Zep16s index, Zep16s* pParity) {
    if (any_null(pParity)) return zepStsNullPtrErr;
    if (!in_range<Word16>(index, 0, 255)) return zepStsOutOfRangeErr;
    *pParity = parity_pitch(index);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

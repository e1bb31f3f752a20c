// SPDX-License-Identifier: BSD-3-Clause
// Block normalisation of 16-bit data to a given headroom (3GPP TS 26.073
// vad2.c, block_norm). Q format of the data is preserved up to the returned
// shift: out = in * 2^shift.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

namespace {

/// Largest magnitude of the block, with abs_s (so -32768 counts as 32767).
Word16 max_magnitude(const Word16* x, int n) {
    Word16 m = abs_s(x[0]);
    for (int i = 1; i < n; ++i) {
        const Word16 a = abs_s(x[i]);
        if (a > m) m = a;
    }
    return m;
}

}  // namespace

ZepStatus zepsAutoScale_16s(const Zep16s* pSrc, Zep16s* pDst, Zep32s len, Zep32s* pScale, Zep32s headroom) {
    if (any_null(pSrc, pDst, pScale)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (headroom < 0) return zepStsScaleRangeErr;

    const Word16 room = saturate(headroom);
    const Word16 m = max_magnitude(pSrc, len);
    Word16 shift;
    if (m != 0) {
        shift = sub(norm_s(m), room);
        for (int i = 0; i < len; ++i) pDst[i] = shl(pSrc[i], shift);
    } else {
        shift = sub(16, room);
        for (int i = 0; i < len; ++i) pDst[i] = 0;
    }
    *pScale = shift;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D pitch-delay code (ITU-T G.729 Annex D D.4.7 / D.5.1:
// Enc_lag3D, Dec_lag3D). Subframe 0 keeps the 8-bit code of the main body;
// subframe 1 has 4 bits relative to t0_min = max(20, T1 - 5) (t0_min + 9 at
// most 143, T1 the first subframe's integer lag): codes 0..2 the integer lags
// t0_min..t0_min + 2, codes 3..12 the lags t0_min + 3 .. t0_min + 6 at 1/3
// resolution (t0_min + 2 + 1/3 to t0_min + 6), codes 13..15 the integer
// lags t0_min + 7 .. t0_min + 9.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

/// Dec_lag3D, subframe 1: the delay of a 4-bit code.
inline void decode_relative(Word16 index, Word16 t0_min, Word16& t0, Word16& frac) {
    static constexpr Word16 kModTab[8] = {1, 2, 0, 1, 2, 0, 1, 2};
    if (index <= 3) {
        t0 = add(t0_min, index);
        frac = 0;
    } else if (index < 12) {
        frac = kModTab[index - 4];
        t0 = add(add(mult(sub(index, frac), 10923), t0_min), 2);
        if (frac == 2) {
            frac = -1;
            t0 = add(t0, 1);
        }
    } else {
        t0 = add(t0_min, sub(index, 6));
        frac = 0;
    }
}

}  // namespace

ZepStatus zepsDecodeLag_G729D_16s(Zep16s index, Zep16s subframe, Zep16s* pSrcDstDelay) {
    if (any_null(pSrcDstDelay)) return zepStsNullPtrErr;
    if (!in_range<Word16>(subframe, 0, 1)) return zepStsRangeErr;
    if (subframe == 0) return zepsDecodeLag_G729_16s(index, subframe, pSrcDstDelay);
    if (!in_range<Word16>(index, 0, 15) || !in_range<Word16>(pSrcDstDelay[0], 18, 145)) return zepStsOutOfRangeErr;
    Word16 t0, frac;
    decode_relative(index, second_subframe_t0_min(pSrcDstDelay[0]), t0, frac);
    pSrcDstDelay[0] = t0;
    pSrcDstDelay[1] = frac;
    return zepStsNoErr;
}

ZepStatus zepsEncodeLag_G729D_16s(const Zep16s* pSrcDelay, Zep16s t0Prev, Zep16s subframe, Zep16s* pDstIndex) {
    if (any_null(pSrcDelay, pDstIndex)) return zepStsNullPtrErr;
    if (!in_range<Word16>(subframe, 0, 1)) return zepStsRangeErr;
    if (subframe == 0) return zepsEncodeLag_G729_16s(pSrcDelay, t0Prev, subframe, pDstIndex);
    if (!in_range<Word16>(t0Prev, 18, 145)) return zepStsRangeErr;
    const Word16 frac = pSrcDelay[1];
    const Word16 i = sub(pSrcDelay[0], second_subframe_t0_min(t0Prev));
    // Only the delays the 4-bit code carries: integer lags t0_min..t0_min + 9,
    // fractions on t0_min + 3 (0, +1), + 4, + 5 (-1..1) and + 6 (-1, 0).
    const bool codable = (in_range<Word16>(i, 0, 9) && frac == 0) || (i == 3 && frac == 1) ||
                         (in_range<Word16>(i, 4, 5) && in_range<Word16>(frac, -1, 1)) || (i == 6 && frac == -1);
    if (!codable) return zepStsOutOfRangeErr;
    Word16 index;
    if (i < 3)
        index = i;
    else if (i < 7)
        index = add(static_cast<Word16>(3 * (i - 3)), add(frac, 3));
    else
        index = add(i, 6);
    *pDstIndex = index;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 3.7.1 / 4.1.3, adaptive-codebook vector (Pred_lt_3): the past
// excitation interpolated at the delay T0 + frac/3 with the 1/3-resolution
// filter inter_3l (Q15). Excitation Q0; the buffer holds 154 past samples,
// then the 40 samples of the current subframe.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729p;

/// The decodable delays: lag 18..144 keeps every read inside the buffer.
inline bool delay_ok(const Zep16s* d) { return in_range<Word16>(d[0], 18, 144) && in_range<Word16>(d[1], -1, 1); }

}  // namespace

ZepStatus zepsDecodeAdaptiveVector_G729_16s_I(const Zep16s* pSrcDelay, Zep16s* pSrcDstPrevExcitation) {
    if (any_null(pSrcDelay, pSrcDstPrevExcitation)) return zepStsNullPtrErr;
    if (!delay_ok(pSrcDelay)) return zepStsOutOfRangeErr;
    pred_lt_3(pSrcDstPrevExcitation + kExcOffset, pSrcDelay[0], pSrcDelay[1]);
    return zepStsNoErr;
}

ZepStatus zepsDecodeAdaptiveVector_G729_16s(const Zep16s* pSrcDelay, Zep16s* pSrcDstPrevExcitation,
                                            Zep16s* pDstAdptVector) {
    if (any_null(pSrcDelay, pSrcDstPrevExcitation, pDstAdptVector)) return zepStsNullPtrErr;
    if (!delay_ok(pSrcDelay)) return zepStsOutOfRangeErr;
    Word16* exc = pSrcDstPrevExcitation + kExcOffset;
    pred_lt_3(exc, pSrcDelay[0], pSrcDelay[1]);
    std::memcpy(pDstAdptVector, exc, kSubfr * sizeof(Word16));
    return zepStsNoErr;
}

ZEPS_END_VARIANT

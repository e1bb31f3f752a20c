// SPDX-License-Identifier: BSD-3-Clause
// Autocorrelation normalised by its zero-lag energy, in the G.729 style:
// r[k] = 2 * sum x[n] x[n+k] (the doubling of L_mac), all lags shifted left
// by the normalisation shift of r[0]. Samples Q0/Q15, lags Q31 after the shift.
#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsAutoCorr_NormE_16s32s(const Zep16s* pSrc, int len, Zep32s* pDst, int lenDst, int* pNorm) {
    if (any_null(pSrc, pDst, pNorm)) return zepStsNullPtrErr;
    if (len < 1 || lenDst < 1) return zepStsBadArgErr;
    std::int64_t energy = 0;
    for (int n = 0; n < len; ++n) energy += std::int32_t{pSrc[n]} * pSrc[n];
    energy *= 2;
    if (energy > 0x3fffffff) return zepStsOverflow;  // caller scales down and calls again
    const Word16 norm = norm_l(static_cast<Word32>(energy));
    pDst[0] = static_cast<Word32>(energy) << norm;
    for (int k = 1; k < lenDst; ++k) {
        Word32 s = 0;  // |s| <= energy / 2 by Cauchy-Schwarz: no overflow
        for (int n = 0; n + k < len; ++n) s += std::int32_t{pSrc[n]} * pSrc[n + k];
        // norm + 1 <= 30 (r[0] is positive and even here, or zero with norm 0);
        // the shift is done in 64 bits so that no count is out of range.
        pDst[k] = static_cast<Word32>(static_cast<std::uint32_t>(std::uint64_t{static_cast<std::uint32_t>(s)} << (norm + 1)));
    }
    *pNorm = norm;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 lag window (3.2.1, Lag_window; Annex B extends it to order 12): the
// autocorrelation r[1..len] and the window are both in double precision
// (hi << 16 + lo << 1), multiplied with Mpy_32.
#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsLagWindow_G729_32s_I(Zep32s* pSrcDst, int len) {
    if (any_null(pSrcDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (len > 12) return zepStsRangeErr;
    for (int i = 0; i < len; ++i) {
        const DPF r = L_Extract(pSrcDst[i]);
        // Mpy_32 without its (unreachable) saturation: the window is below 1.
        const std::int32_t p = Word32{r.hi} * lag_h[i] + ((Word32{r.hi} * lag_l[i]) >> 15) +
                               ((Word32{r.lo} * lag_h[i]) >> 15);
        pSrcDst[i] = static_cast<Word32>(static_cast<std::uint32_t>(p) * 2u);
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E lag window of the backward-adaptive order-30 analysis
// (E.3.1, Lag_window_bwd): r[1..30] times the window lag_h_bwd/lag_l_bwd in
// double precision (Mpy_32), then r[0] + 1 and every windowed r[i] + 1
// normalised by the shift that normalises r[0] + 1, and split into hi/lo
// (L_Extract) for the Levinson recursion.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729e_tables.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsLagWindow_G729E_32s16s(const Zep32s* pSrc, Zep16s* pDstHigh, Zep16s* pDstLow) {
    if (any_null(pSrc, pDstHigh, pDstLow)) return zepStsNullPtrErr;
    constexpr int kOrder = 30;
    Word32 r[kOrder + 1];
    r[0] = pSrc[0];
    for (int i = 1; i <= kOrder; ++i) {
        const DPF d = L_Extract(pSrc[i]);
        r[i] = Mpy_32(d.hi, d.lo, lag_h_bwd[i - 1], lag_l_bwd[i - 1]);
    }
    Word32 sum = L_add(r[0], 1);
    const Word16 norm = norm_l(sum);
    for (int i = 0; i <= kOrder; ++i) {
        sum = L_shl(i == 0 ? sum : L_add(r[i], 1), norm);
        L_Extract(sum, pDstHigh[i], pDstLow[i]);
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E perceptual weighting factors of a backward-mode frame
// (E.3.3, perc_vare): gamma1 0.9 (29491) or, when the backward mode
// dominates, 0.98 (32112); gamma2 0.4 (13107); both subframes alike. Q15.
// Forward-mode frames use the main body's adaptive factors
// (zepsWeightingFactors_G729_16s).
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsWeightingFactors_G729E_16s(Zep16s bwdDominant, Zep16s* pDstGamma) {
    if (any_null(pDstGamma)) return zepStsNullPtrErr;
    if (bwdDominant != 0 && bwdDominant != 1) return zepStsRangeErr;
    const Word16 g1 = bwdDominant == 0 ? 29491 : 32112;
    pDstGamma[0] = pDstGamma[1] = g1;
    pDstGamma[2] = pDstGamma[3] = 13107;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

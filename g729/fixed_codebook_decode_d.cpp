// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D fixed-codebook vector (ITU-T G.729 Annex D D.5.2,
// Decod_ACELP64): two signed unit pulses (+8191 / -8192, Q13) in a
// 40-sample subframe, the first on track 0 (16 positions, Gray-coded in
// index bits 0-3), the second on track 1 (32 positions, bits 4-8); sign bit
// k set gives pulse k a positive sign. The tracks share positions 1, 6, ...,
// 36: two pulses on one position add (saturating).
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729d_tables.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsDecodeFixedCodebook_G729D_16s(Zep16s sign, Zep16s index, Zep16s* pDst) {
    if (any_null(pDst)) return zepStsNullPtrErr;
    if (!in_range<Word16>(sign, 0, 3) || !in_range<Word16>(index, 0, 511)) return zepStsOutOfRangeErr;
    const int pos[2] = {trackTable0[grayDecode[index & 15]], trackTable1[grayDecode[(index >> 4) & 31]]};
    std::memset(pDst, 0, 40 * sizeof(Zep16s));
    for (int j = 0; j < 2; ++j)
        pDst[pos[j]] = ((sign >> j) & 1) ? add(pDst[pos[j]], 8191) : sub(pDst[pos[j]], 8192);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

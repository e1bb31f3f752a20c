// SPDX-License-Identifier: BSD-3-Clause
// G.729 fixed-codebook vector (ITU-T G.729 4.1.4, Decod_ACELP): four signed
// unit pulses (+8191 / -8192, Q13) on the tracks i*5, i*5+1, i*5+2 and
// i*5+3+j of a 40-sample subframe, from the 13-bit position code and the
// 4-bit sign code.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsDecodeFixedCodebook_G729_16s(Zep16s sign, Zep16s index, Zep16s* pDst) {
    if (any_null(pDst)) return zepStsNullPtrErr;
    if (!in_range<Word16>(sign, 0, 15) || !in_range<Word16>(index, 0, 8191)) return zepStsOutOfRangeErr;
    int pos[4];
    pos[0] = (index & 7) * 5;
    pos[1] = ((index >> 3) & 7) * 5 + 1;
    pos[2] = ((index >> 6) & 7) * 5 + 2;
    pos[3] = ((index >> 10) & 7) * 5 + 3 + ((index >> 9) & 1);
    std::memset(pDst, 0, 40 * sizeof(Zep16s));
    for (int j = 0; j < 4; ++j) pDst[pos[j]] = ((sign >> j) & 1) ? Zep16s{8191} : Zep16s{-8192};
    return zepStsNoErr;
}

ZEPS_END_VARIANT

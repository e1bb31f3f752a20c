// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.722.1 frame encoder export (G.722.1 clause 3 and Annex C, after
// the MLT); the stages are in g7221_encoder.h.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g722/g7221_encoder.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsEncode_G7221_16s(Zep32s bitsPerFrame, Zep32s numRegions, const Zep16s* pMltCoefs, Zep32s magShift,
                               Zep16s* pDst) {
    if (any_null(pMltCoefs, pDst)) return zepStsNullPtrErr;
    if (!in_range(bitsPerFrame, 320, 960) || bitsPerFrame % 16 != 0) return zepStsRangeErr;
    if (numRegions != 14 && numRegions != 28) return zepStsRangeErr;
    if (!in_range(magShift, -1, 9)) return zepStsRangeErr;
    const bool annex_c = numRegions == 28;
    Word16 coefs[640];
    std::memcpy(coefs, pMltCoefs, sizeof(Word16) * static_cast<std::size_t>(annex_c ? 640 : 320));
    g7221::encode_frame(coefs, magShift, bitsPerFrame, annex_c, pDst);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

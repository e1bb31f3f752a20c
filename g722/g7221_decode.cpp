// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.722.1 frame decoder exports (G.722.1 clause 4 and Annex C, before
// the inverse MLT); the stages are in g7221_decoder.h.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g722/g7221_decoder.h"

ZEPS_BEGIN_VARIANT
namespace {

// Block layout: the decoder memory, the rest of the 1296 bytes zero.
constexpr int kDecoderStateSize = 1296;
static_assert(sizeof(g7221::DecoderMemory) <= kDecoderStateSize);

}  // namespace

ZepStatus zepsDecodeStateSize_G7221_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kDecoderStateSize;
    return zepStsNoErr;
}

ZepStatus zepsDecodeInit_G7221_16s(ZepG7221DecodeState* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    g7221::DecoderMemory m;
    g7221::reset(m);
    std::memset(pState, 0, kDecoderStateSize);
    std::memcpy(pState, &m, sizeof m);
    return zepStsNoErr;
}

ZepStatus zepsDecode_G7221_16s(const Zep16s* pSrc, Zep32s bitsPerFrame, ZepG7221DecodeState* pState,
                               Zep32s numRegions, Zep16s* pDstCoefs, Zep32s* pMagShift, Zep32s frameErased) {
    if (any_null(pSrc, pState, pDstCoefs, pMagShift)) return zepStsNullPtrErr;
    if (!in_range(bitsPerFrame, 320, 960) || bitsPerFrame % 16 != 0) return zepStsRangeErr;
    if (numRegions != 14 && numRegions != 28) return zepStsRangeErr;
    if (frameErased != 0 && frameErased != 1) return zepStsRangeErr;
    g7221::DecoderMemory m;
    std::memcpy(&m, pState, sizeof m);
    *pMagShift = g7221::decode_frame(pSrc, bitsPerFrame, numRegions == 28, frameErased != 0, m, pDstCoefs);
    std::memcpy(pState, &m, sizeof m);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

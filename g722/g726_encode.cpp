// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.726 ADPCM encoder at 16, 24, 32 and 40 kbit/s (G.726 4.2.1 to
// 4.2.7, reference G726_encode of the ITU-T G.191 STL): 14-bit linear input
// SL, one code of 2 to 5 bits per sample.
#include "common/args.h"
#include "common/exports.h"
#include "g722/g726_encode_vector.h"

ZEPS_BEGIN_VARIANT
namespace {

// Block layout: the shared coder words, the rest of the 88 bytes zero.
constexpr int kEncoderStateSize = 88;
static_assert(sizeof(g726::Core) <= kEncoderStateSize);

template <int R>
void encode_block(g726::Core& core, const Zep16s* src, Zep8u* dst, int len) {
    g726::encode_samples_vector<R>(core, src, dst, len);
}

}  // namespace

ZepStatus zepsEncodeGetStateSize_G726_16s8u(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kEncoderStateSize;
    return zepStsNoErr;
}

ZepStatus zepsEncodeInit_G726_16s8u(ZepG726EncodeState* pState, Zep32s rate) {
    if (any_null(pState)) return zepStsNullPtrErr;
    const int r = g726::rate_index(rate);
    if (r < 0) return zepStsRangeErr;
    g726::Core core;
    g726::reset(core, r);
    std::memset(pState, 0, kEncoderStateSize);
    std::memcpy(pState, &core, sizeof core);
    return zepStsNoErr;
}

ZepStatus zepsEncode_G726_16s8u(ZepG726EncodeState* pState, const Zep16s* pSrc, Zep8u* pDst, Zep32s len) {
    if (any_null(pState, pSrc, pDst)) return zepStsNullPtrErr;
    if (len == 0) return zepStsSizeErr;
    if (len < 0) return zepStsNoErr;
    g726::Core core;
    std::memcpy(&core, pState, sizeof core);
    switch (core.rate) {
        case 0: encode_block<0>(core, pSrc, pDst, len); break;
        case 1: encode_block<1>(core, pSrc, pDst, len); break;
        case 2: encode_block<2>(core, pSrc, pDst, len); break;
        default: encode_block<3>(core, pSrc, pDst, len); break;
    }
    std::memcpy(pState, &core, sizeof core);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

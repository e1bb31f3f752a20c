// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.726 ADPCM decoder at 16, 24, 32 and 40 kbit/s (G.726 4.2.2 to
// 4.2.8, reference G726_decode of the ITU-T G.191 STL): one code per byte in,
// the 14-bit reconstructed signal SR or, for a G.711 connection, the output
// PCM word after COMPRESS and the synchronous coding adjustment SYNC.
#include "common/args.h"
#include "common/exports.h"
#include "g722/g726_decode_vector.h"

ZEPS_BEGIN_VARIANT
namespace {

// Block layout: the shared coder words, then the law; the rest of the 92
// bytes zero.
struct DecoderState {
    g726::Core core;
    std::int32_t law;
};
constexpr int kDecoderStateSize = 92;
static_assert(sizeof(DecoderState) <= kDecoderStateSize);

template <int R>
void decode_rate(DecoderState& s, const Zep8u* src, Zep16s* dst, int len) {
    switch (s.law) {
        case g726::kMuLaw: g726::decode_samples_vector<R, g726::kMuLaw>(s.core, src, dst, len); break;
        case g726::kALaw: g726::decode_samples_vector<R, g726::kALaw>(s.core, src, dst, len); break;
        default: g726::decode_samples_vector<R, g726::kLinear>(s.core, src, dst, len); break;
    }
}

}  // namespace

ZepStatus zepsDecodeGetStateSize_G726_8u16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kDecoderStateSize;
    return zepStsNoErr;
}

ZepStatus zepsDecodeInit_G726_8u16s(ZepG726DecodeState* pState, Zep32s rate, Zep32s law) {
    if (any_null(pState)) return zepStsNullPtrErr;
    const int r = g726::rate_index(rate);
    if (r < 0) return zepStsRangeErr;
    if (law < g726::kMuLaw || law > g726::kLinear) return zepStsRangeErr;
    DecoderState s;
    std::memset(&s, 0, sizeof s);
    g726::reset(s.core, r);
    s.law = law;
    std::memset(pState, 0, kDecoderStateSize);
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsDecode_G726_8u16s(ZepG726DecodeState* pState, const Zep8u* pSrcCode, Zep16s* pDst, Zep32s len) {
    if (any_null(pState, pSrcCode, pDst)) return zepStsNullPtrErr;
    if (len == 0) return zepStsSizeErr;
    if (len < 0) return zepStsNoErr;
    DecoderState s;
    std::memcpy(&s, pState, sizeof s);
    switch (s.core.rate) {
        case 0: decode_rate<0>(s, pSrcCode, pDst, len); break;
        case 1: decode_rate<1>(s, pSrcCode, pDst, len); break;
        case 2: decode_rate<2>(s, pSrcCode, pDst, len); break;
        default: decode_rate<3>(s, pSrcCode, pDst, len); break;
    }
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

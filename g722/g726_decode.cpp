// ITU-T G.726 ADPCM decoder at 16, 24, 32 and 40 kbit/s (G.726 4.2.2 to
// 4.2.8, reference G726_decode of the ITU-T G.191 STL): one code per byte in,
// the 14-bit reconstructed signal SR or, for a G.711 connection, the output
// PCM word after COMPRESS and the synchronous coding adjustment SYNC.
#include "common/args.h"
#include "common/exports.h"
#include "g722/g726_adapt.h"

ZEPS_BEGIN_VARIANT
namespace {

enum Law { kMuLaw = 0, kALaw = 1, kLinear = 2 };

// Block layout: the shared coder words, then the law; the rest of the 92
// bytes zero.
struct DecoderState {
    g726::Core core;
    std::int32_t law;
};
constexpr int kDecoderStateSize = 92;
static_assert(sizeof(DecoderState) <= kDecoderStateSize);

/// COMPRESS, A-law: the code with its sign bit set for positive values and
/// the even bits not yet inverted (as the reference keeps it internally).
ZEPS_G726_INLINE int alaw_compress(int sr) {
    const int is = sr < 0;
    int im = is ? (-sr) & 32767 : sr;
    if (sr == -32768) im = 2;  // reference v2.0 correction (test sequence ri40fa)
    int imag = is ? ((im + 1) >> 1) - 1 : im >> 1;
    imag = imag > 4095 ? 4095 : imag;
    const int seg = imag >= 32 ? g726::bit_length(imag) - 5 : 0;
    const int mant = (imag >> (seg ? seg : 1)) & 15;
    return (is ? 0 : 128) | seg << 4 | mant;
}

/// COMPRESS, mu-law: the code as on the line.
ZEPS_G726_INLINE int mulaw_compress(int sr) {
    const int is = sr < 0;
    int imag = is ? (-sr) & 32767 : sr;
    imag = (imag > 8158 ? 8158 : imag) + 33;
    const int seg = g726::bit_length(imag) - 6;
    const int mant = (imag >> (seg + 1)) & 15;
    return ~(is << 7 | seg << 4 | mant) & 255;
}

/// SYNC: moves the PCM code one step down (dir < 0) or up (dir > 0) in
/// signal order, or keeps it; returns the code as on the line.
ZEPS_G726_INLINE int sync_alaw(int sp, int dir) {
    int pos = (sp & 128) ? sp : 127 - sp;
    pos += dir;
    pos = pos < 0 ? 0 : pos > 255 ? 255 : pos;
    return (pos >= 128 ? pos : 127 - pos) ^ 0x55;
}
ZEPS_G726_INLINE int sync_mulaw(int sp, int dir) {
    int pos = (sp & 128) ? 383 - sp : sp;
    // Down from +0 goes to the first negative step: -0 is skipped.
    pos = (pos == 128 && dir < 0) ? 126 : pos + dir;
    pos = pos < 0 ? 0 : pos > 255 ? 255 : pos;
    return pos >= 128 ? 383 - pos : pos;
}

/// The decoder's output for law 0/1: COMPRESS, EXPAND, SUBTA, LOG, SUBTB,
/// then SYNC against the re-quantised code.
template <int R, bool ALaw>
ZEPS_G726_INLINE int adjusted_pcm(int sr, int i, int se, int y) {
    constexpr int kHalf = 1 << (R + 1);
    const int sp = ALaw ? alaw_compress(sr) : mulaw_compress(sr);
    const int slx = (ALaw ? g711_alaw_expand[sp ^ 0x55] : g711_mulaw_expand[sp]) >> 2;
    const int id = g726_quantize[R][g726::log_index(slx - se, y)] ^ kHalf;
    const int im = i ^ kHalf;
    const int dir = (id < im) - (id > im);
    return ALaw ? sync_alaw(sp, dir) : sync_mulaw(sp, dir);
}

template <int R, int L>
void decode_block(g726::Core& core, const Zep8u* src, Zep16s* dst, int len) {
    constexpr int kMask = (1 << (R + 2)) - 1;
    g726::Regs r;
    r.load(core);
    for (int n = 0; n < len; ++n) {
        const int i = src[n] & kMask;
        const g726::Estimate est = g726::estimate(r);
        const int y = g726::scale_factor(r);
        const int sr = g726::adapt<R>(r, i, y, est);
        int out;
        if constexpr (L == kLinear)
            out = sr < -8192 ? -8192 : sr > 8191 ? 8191 : sr;
        else
            out = adjusted_pcm<R, L == kALaw>(sr, i, est.se, y);
        dst[n] = static_cast<Zep16s>(out);
    }
    r.store(core);
}

template <int R>
void decode_rate(DecoderState& s, const Zep8u* src, Zep16s* dst, int len) {
    switch (s.law) {
        case kMuLaw: decode_block<R, kMuLaw>(s.core, src, dst, len); break;
        case kALaw: decode_block<R, kALaw>(s.core, src, dst, len); break;
        default: decode_block<R, kLinear>(s.core, src, dst, len); break;
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
    if (law < kMuLaw || law > kLinear) return zepStsRangeErr;
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

/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.726 encoder and decoder sample loops (G.726 4.2.1 to 4.2.8):
// SUBTA, LOG, SUBTB and QUAN in the encoder; the output PCM conversion
// (COMPRESS, EXPAND) and synchronous coding adjustment (SYNC) in the
// decoder; the shared stages come from g726_adapt.h.
//
// A block loads the state into locals, runs its samples and stores the
// state once; the predictor is a template argument so the plain scalar
// predictor and the vector one run the same loops.
#pragma once

#include "g722/g726_adapt.h"

ZEPS_BEGIN_VARIANT
namespace g726 {

/// Encodes len 14-bit samples (clamped to -8192..8191) at rate index R.
template <int R, class P>
inline void encode_samples(Core& core, const std::int16_t* src, std::uint8_t* dst, int len) {
    Regs r;
    P p;
    r.load(core);
    p.load(core);
    for (int n = 0; n < len; ++n) {
        int sl = src[n];
        sl = sl < -8192 ? -8192 : sl > 8191 ? 8191 : sl;
        const Estimate est = p.estimate();
        const int y = scale_factor(r);
        const int i = g726_quantize[R][log_index(sl - est.se, y)];
        dst[n] = static_cast<std::uint8_t>(i);
        adapt<R>(r, p, i, y, est);
    }
    r.store(core);
    p.store(core);
}

/// Decoder output laws.
enum Law { kMuLaw = 0, kALaw = 1, kLinear = 2 };

/// COMPRESS, A-law: the code with its sign bit set for positive values and
/// the even bits not yet inverted (as the reference keeps it internally).
[[gnu::always_inline]] inline int alaw_compress(int sr) {
    const int is = sr < 0;
    int im = is ? (-sr) & 32767 : sr;
    if (sr == -32768) im = 2;  // reference v2.0 correction (test sequence ri40fa)
    int imag = is ? ((im + 1) >> 1) - 1 : im >> 1;
    imag = imag > 4095 ? 4095 : imag;
    const int seg = imag >= 32 ? bit_length(imag) - 5 : 0;
    const int mant = (imag >> (seg ? seg : 1)) & 15;
    return (is ? 0 : 128) | seg << 4 | mant;
}

/// COMPRESS, mu-law: the code as on the line.
[[gnu::always_inline]] inline int mulaw_compress(int sr) {
    const int is = sr < 0;
    int imag = is ? (-sr) & 32767 : sr;
    imag = (imag > 8158 ? 8158 : imag) + 33;
    const int seg = bit_length(imag) - 6;
    const int mant = (imag >> (seg + 1)) & 15;
    return ~(is << 7 | seg << 4 | mant) & 255;
}

/// SYNC: moves the PCM code one step down (dir < 0) or up (dir > 0) in
/// signal order, or keeps it; returns the code as on the line. The code is
/// usually kept: that case returns at once (the steps branch on the sign of
/// the code, unpredictable in speech).
[[gnu::always_inline]] inline int sync_alaw(int sp, int dir) {
    if (dir == 0) [[likely]]
        return sp ^ 0x55;
    int pos = (sp & 128) ? sp : 127 - sp;
    pos += dir;
    pos = pos < 0 ? 0 : pos > 255 ? 255 : pos;
    return (pos >= 128 ? pos : 127 - pos) ^ 0x55;
}
[[gnu::always_inline]] inline int sync_mulaw(int sp, int dir) {
    if (dir == 0) [[likely]]
        return sp;
    int pos = (sp & 128) ? 383 - sp : sp;
    // Down from +0 goes to the first negative step: -0 is skipped.
    pos = (pos == 128 && dir < 0) ? 126 : pos + dir;
    pos = pos < 0 ? 0 : pos > 255 ? 255 : pos;
    return pos >= 128 ? 383 - pos : pos;
}

/// The decoder's output for law 0/1: COMPRESS, EXPAND, SUBTA, LOG, SUBTB,
/// then SYNC against the re-quantised code.
template <int R, bool ALaw>
[[gnu::always_inline]] inline int adjusted_pcm(int sr, int i, int se, int y) {
    constexpr int kHalf = 1 << (R + 1);
    const int sp = ALaw ? alaw_compress(sr) : mulaw_compress(sr);
    const int slx = (ALaw ? g711_alaw_expand[sp ^ 0x55] : g711_mulaw_expand[sp]) >> 2;
    const int id = g726_quantize[R][log_index(slx - se, y)] ^ kHalf;
    const int im = i ^ kHalf;
    const int dir = (id < im) - (id > im);
    return ALaw ? sync_alaw(sp, dir) : sync_mulaw(sp, dir);
}

/// Decodes len codes (low R + 2 bits of each byte) at rate index R.
template <int R, int L, class P>
inline void decode_samples(Core& core, const std::uint8_t* src, std::int16_t* dst, int len) {
    constexpr int kMask = (1 << (R + 2)) - 1;
    Regs r;
    P p;
    r.load(core);
    p.load(core);
    for (int n = 0; n < len; ++n) {
        const int i = src[n] & kMask;
        const Estimate est = p.estimate();
        const int y = scale_factor(r);
        const int sr = adapt<R>(r, p, i, y, est);
        int out;
        if constexpr (L == kLinear)
            out = sr < -8192 ? -8192 : sr > 8191 ? 8191 : sr;
        else
            out = adjusted_pcm<R, L == kALaw>(sr, i, est.se, y);
        dst[n] = static_cast<std::int16_t>(out);
    }
    r.store(core);
    p.store(core);
}

}  // namespace g726
ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.726 decoder sample loop with the predictor recursion on SSSE3
// vectors (G.726 4.2.3 to 4.2.8): the lane recursion of the encoder
// (LaneRecursion, g726_encode_vector.h: FMULT, ACCUM, ADDB, ADDC, FLOATA,
// FLOATB, UPA1, UPA2, LIMC, LIMD, UPB, TONE, TRANS, TRIGB) fed with the
// inverse quantiser output of the received code I (RECONST, ADDA, ANTILOG,
// scalar: I is known before the sample starts); the step-size words and the
// output conversion (the 14-bit SR clamped, or COMPRESS, EXPAND and SYNC for
// a G.711 connection) are scalar. Results equal those of decode_samples
// (g726_coder.h) for every state.
#pragma once

#include "g722/g726_encode_vector.h"

ZEPS_BEGIN_VARIANT
namespace g726 {

#if defined(__SSSE3__)

/// ADDA and ANTILOG: DQ magnitude of the inverse quantiser output DQLN at
/// the scale factor Y.
[[gnu::always_inline]] inline int code_dq_magnitude(int dqln, int y) {
    const int dql = (dqln + (y >> 2)) & 4095;
    const int dex = (dql >> 7) & 15;
    return dql >= 2048 ? 0 : (((dql & 127) + 128) << 8) >> (15 - dex);
}

/// Decodes len codes (low R + 2 bits of each byte) at rate index R to law L.
template <int R, int L>
inline void decode_samples_vector(Core& core, const std::uint8_t* src, std::int16_t* dst, int len) {
    constexpr int kMask = (1 << (R + 2)) - 1;
    Regs r;
    r.load(core);
    LaneRecursion<R> p;
    p.load(core, r);

    for (int n = 0; n < len; ++n) {
        const int i = src[n] & kMask;
        const G726CodeInfo& ci = g726_code_info[R][i];
        const int y = scale_factor(r);
        const __m128i dqthr = p.trans_threshold(r);
        const __m128i dqmag = _mm_set1_epi16(static_cast<short>(code_dq_magnitude(ci.dqln, y)));
        const __m128i dqs = _mm_set1_epi16(static_cast<short>(-ci.dqs));

        p.predict();
        const __m128i se = p.se;
        const __m128i srv = p.update(dqmag, dqs, dqthr);
        const int flags = p.flags();
        scale_update(r, ci, y, flags & 1, (flags >> 2) & 1);

        const int sr = static_cast<std::int16_t>(_mm_cvtsi128_si32(srv));
        int out;
        if constexpr (L == kLinear)
            out = sr < -8192 ? -8192 : sr > 8191 ? 8191 : sr;
        else
            out = adjusted_pcm<R, L == kALaw>(sr, i, static_cast<std::int16_t>(_mm_cvtsi128_si32(se)), y);
        dst[n] = static_cast<std::int16_t>(out);
    }
    p.store(core, r);
}

#else

template <int R, int L>
inline void decode_samples_vector(Core& core, const std::uint8_t* src, std::int16_t* dst, int len) {
    decode_samples<R, L, VectorPredictor<leak(R)>>(core, src, dst, len);
}

#endif

}  // namespace g726
ZEPS_END_VARIANT

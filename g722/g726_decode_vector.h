// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.726 decoder sample loop with the predictor recursion on SSSE3
// vectors (G.726 4.2.3 to 4.2.8): the lane pieces of the encoder
// (g726_encode_vector.h: estimate_lanes for FMULT and ACCUM, pole_outcomes,
// lane_update for ADDB, ADDC, FLOATA, FLOATB, UPA1, UPA2, LIMC, LIMD, UPB,
// TONE, TRANS and TRIGB) fed with the inverse quantiser output of the
// received code I (RECONST, then ADDA and ANTILOG by a table over DQL: I is
// known before the sample starts, so no lane search); the step-size words
// and the output conversion (SR clamped to 14 bits, or COMPRESS, EXPAND and
// SYNC for a G.711 connection) are scalar. Results equal those of decode_samples
// (g726_coder.h) for every state.
#pragma once

#include "g722/g726_encode_vector.h"

ZEPS_BEGIN_VARIANT
namespace g726 {

#if defined(__SSSE3__)

/// Decodes len codes (low R + 2 bits of each byte) at rate index R to law L.
template <int R, int L>
inline void decode_samples_vector(Core& core, const std::uint8_t* src, std::int16_t* dst, int len) {
    constexpr int kMask = (1 << (R + 2)) - 1;
    constexpr int kLeak = leak(R);
    Regs r;
    r.load(core);
    __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(core.coef));
    __m128i cf = coef_float(c);
    __m128i h = _mm_loadu_si128(reinterpret_cast<const __m128i*>(core.hist));
    __m128i pk1 = _mm_set1_epi16(static_cast<short>(-r.pk1));
    __m128i pk2 = _mm_set1_epi16(static_cast<short>(-r.pk2));
    __m128i td = _mm_set1_epi16(static_cast<short>(-r.td));
    bool td_set = r.td != 0;

    for (int n = 0; n < len; ++n) {
        const int i = src[n] & kMask;
        const G726CodeInfo& ci = g726_code_info[R][i];
        const int y = scale_factor(r);
        __m128i dqthr = _mm_setzero_si128();
        if (td_set) [[unlikely]]
            dqthr = trans_threshold(r.yl);
        // RECONST, ADDA, ANTILOG; the sign of DQ is the code's.
        const __m128i dqmag = _mm_set1_epi16(g726_antilog[(ci.dqln + (y >> 2)) & 4095]);
        const __m128i dqs = _mm_set1_epi16(static_cast<short>(-ci.dqs));

        // The pole outcomes beside the estimate; the recursion.
        const __m128i a_next = pole_outcomes(lane<6>(c), lane<7>(c), pk1, pk2);
        const __m128i af_next = coef_float(a_next);
        __m128i se, sez;
        estimate_lanes(c, cf, h, se, sez);
        const LaneStep u = lane_update<kLeak>(dqmag, dqs, se, sez, dqthr, a_next, af_next, c, h, td);
        c = u.c;
        cf = u.cf;
        h = u.h;
        pk2 = pk1;
        pk1 = u.pk0;
        td = u.td;
        const int flags = _mm_movemask_epi8(_mm_unpacklo_epi16(u.tr, u.tdp));
        scale_update(r, ci, y, flags & 1, (flags >> 2) & 1);
        td_set = (flags & 5) == 4;  // TDP and no TR

        const int sr = static_cast<std::int16_t>(_mm_cvtsi128_si32(u.sr));
        int out;
        if constexpr (L == kLinear)
            out = sr < -8192 ? -8192 : sr > 8191 ? 8191 : sr;
        else
            out = adjusted_pcm<R, L == kALaw>(sr, i, static_cast<std::int16_t>(_mm_cvtsi128_si32(se)), y);
        dst[n] = static_cast<std::int16_t>(out);
    }
    r.td = _mm_cvtsi128_si32(td) & 1;
    r.pk1 = _mm_cvtsi128_si32(pk1) & 1;
    r.pk2 = _mm_cvtsi128_si32(pk2) & 1;
    r.store(core);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(core.coef), c);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(core.hist), h);
}

#else

template <int R, int L>
inline void decode_samples_vector(Core& core, const std::uint8_t* src, std::int16_t* dst, int len) {
    decode_samples<R, L, VectorPredictor<leak(R)>>(core, src, dst, len);
}

#endif

}  // namespace g726
ZEPS_END_VARIANT

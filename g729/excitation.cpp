// SPDX-License-Identifier: BSD-3-Clause
// G.729 total excitation of a subframe (ITU-T G.729 4.1.6, the loop of
// Decod_ld8k and Coder_ld8k): u = round(2 (gp v + gc c)) with the adaptive
// vector v (Q0, in place), the fixed vector c (Q13), gp in Q14, gc in Q1.
//
// With neither gain at -32768 no L_mult saturates and gp v + gc c fits in
// 32 bits (a madd pair); the chain's later saturations (L_mac, L_shl, the
// rounding) all coincide with clamping round(4 (gp v + gc c) / 2^16) =
// (gp v + gc c + 2^13) >> 14 to 16 bits, which the lanes compute eight
// samples a step.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

namespace {

void mix_scalar(Word16 gp, Word16 gc, const Word16* code, Word16* exc, int len) {
    for (int i = 0; i < len; ++i) {
        Word32 t = L_mult(exc[i], gp);
        t = L_mac(t, code[i], gc);
        exc[i] = round_fx(L_shl(t, 1));
    }
}

void mix_lanes(Word16 gp, Word16 gc, const Word16* code, Word16* exc, int len) {
    int i = 0;
#if defined(__SSSE3__)
    if (gp == MIN_16 || gc == MIN_16) return mix_scalar(gp, gc, code, exc, len);
    const __m128i g = _mm_set1_epi32(static_cast<std::int32_t>(static_cast<std::uint16_t>(gp)) |
                                     static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(gc)) << 16));
    const __m128i rnd = _mm_set1_epi32(1 << 13);
    for (; i + 8 <= len; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(exc + i));
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(code + i));
        const __m128i lo = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(v, c), g), rnd), 14);
        const __m128i hi = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(v, c), g), rnd), 14);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(exc + i), _mm_packs_epi32(lo, hi));
    }
#endif
    mix_scalar(gp, gc, code + i, exc + i, len - i);
}

}  // namespace

/// Out-of-line entry for the tests holding the lanes equal to the chain.
void g729_mix_excitation(bool vec, Word16 gp, Word16 gc, const Word16* code, Word16* exc, int len) {
    vec ? mix_lanes(gp, gc, code, exc, len) : mix_scalar(gp, gc, code, exc, len);
}

ZepStatus zepsMixExcitation_G729_16s_I(Zep16s gainPitch, Zep16s gainCode, const Zep16s* pCode, Zep16s* pSrcDstExc,
                                       int len) {
    if (any_null(pCode, pSrcDstExc)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    mix_lanes(gainPitch, gainCode, pCode, pSrcDstExc, len);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

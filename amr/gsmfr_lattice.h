/* SPDX-License-Identifier: BSD-3-Clause */
// GSM 06.10 4.2.10 short-term analysis and 4.3.3 short-term synthesis
// lattice filters over one frame (four coefficient sets for the segments
// 0..12, 13..26, 27..39, 40..159), in two forms giving the same bits:
//
// - the scalar form, stage by stage and sample by sample as the standard
//   writes it (the baseline);
// - an SSSE3 form that runs the eight stages in the eight 16-bit lanes of a
//   register on a skewed schedule (a wavefront: lane i works on stage i of
//   sample t - i at step t) for the analysis filter, and in lane 0 of SSSE3
//   registers, sample by sample, for the synthesis filter. Every operation is the standard's own: paddsw/psubsw are the
//   saturating add/sub, and pmulhrsw is mult_r whenever one factor is not
//   -32768, which holds for every reflection coefficient (rp lies in
//   -32767..32767 by 4.2.9.2). Inactive lanes (before the first or after
//   the last sample of the frame) never feed an active one and never
//   update the memories.
//
// The de-emphasis of the decoder's postprocessing (4.3.4 to 4.3.6) has the
// same two forms: scalar, and its recursion in lane 0 of an SSSE3 register.
//
// Signals in the Q15 of the pre-processed speech, rp in Q15.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace gsmfr {

/// First sample of each interpolation segment, and the end of the frame.
inline constexpr int kSegmentStart[5] = {0, 13, 27, 40, 160};

inline int segment_of(int n) { return n < 13 ? 0 : n < 27 ? 1 : n < 40 ? 2 : 3; }

// ---------------------------------------------------------------- scalar

inline void analysis_frame_scalar(const Word16 (*rp)[8], Word16* u, Word16* s) {
    for (int n = 0; n < 160; ++n) {
        const Word16* r = rp[segment_of(n)];
        Word16 di = s[n], sav = di;
        for (int i = 0; i < 8; ++i) {
            const Word16 ui = u[i];
            u[i] = sav;
            sav = add(ui, mult_r(r[i], di));
            di = add(di, mult_r(r[i], ui));
        }
        s[n] = di;
    }
}

inline void synthesis_frame_scalar(const Word16 (*rrp)[8], Word16* v, const Word16* wt, Word16* sr) {
    for (int n = 0; n < 160; ++n) {
        const Word16* r = rrp[segment_of(n)];
        Word16 sri = wt[n];
        for (int i = 7; i >= 0; --i) {
            sri = sub(sri, mult_r(r[i], v[i]));
            v[i + 1] = add(v[i], mult_r(r[i], sri));
        }
        sr[n] = v[0] = sri;
    }
}

/// De-emphasis msr = s + 28180/32768 msr, upscaling and truncation to 13
/// bits; returns the new memory.
inline Word16 postprocess_frame_scalar(Word16 msr, const Word16* s, Word16* out) {
    for (int k = 0; k < 160; ++k) {
        msr = add(s[k], mult_r(msr, 28180));
        out[k] = static_cast<Word16>(add(msr, msr) & 0xFFF8);
    }
    return msr;
}

#if defined(__SSSE3__)
// ---------------------------------------------------------------- SSSE3

namespace lattice_detail {

inline __m128i load8(const Word16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i select(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}
/// Lanes 0..m set (m < 0: none; m >= 7: all).
inline __m128i lanes_up_to(int m) {
    alignas(16) static const Word16 kOnes[16] = {-1, -1, -1, -1, -1, -1, -1, -1, 0, 0, 0, 0, 0, 0, 0, 0};
    if (m < 0) return _mm_setzero_si128();
    if (m >= 7) return _mm_set1_epi16(-1);
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(kOnes + 7 - m));
}

}  // namespace lattice_detail

/// Analysis: lane i, stage i, sample t - i at step t (t = 0..166).
inline void analysis_frame_simd(const Word16 (*rp)[8], Word16* u, Word16* s) {
    using namespace lattice_detail;
    const __m128i R[4] = {load8(rp[0]), load8(rp[1]), load8(rp[2]), load8(rp[3])};
    __m128i U = load8(u);
    __m128i D = _mm_cvtsi32_si128(static_cast<std::uint16_t>(s[0]));  // d_i and sav_i entering stage i
    __m128i SV = D;
    for (int t = 0; t < 167; ++t) {
        // Coefficients: lane i follows the segment of its sample t - i.
        const int k = segment_of(t < 160 ? t : 159), kl = segment_of(t >= 7 ? (t - 7 < 160 ? t - 7 : 159) : 0);
        const __m128i RP = k == kl ? R[k] : select(lanes_up_to(t - kSegmentStart[k]), R[k], R[k - 1]);
        const __m128i Dn = _mm_adds_epi16(D, _mm_mulhrs_epi16(RP, U));
        const __m128i SVn = _mm_adds_epi16(U, _mm_mulhrs_epi16(RP, D));
        // The memories keep sav_i of the lanes holding a sample of the frame.
        U = t >= 7 && t < 160 ? SV : select(_mm_andnot_si128(lanes_up_to(t - 160), lanes_up_to(t)), SV, U);
        if (t >= 7) s[t - 7] = static_cast<Word16>(_mm_extract_epi16(Dn, 7));
        // Stage outputs move one lane up; the next sample enters lane 0.
        const Word16 next = t + 1 < 160 ? s[t + 1] : 0;
        D = _mm_insert_epi16(_mm_slli_si128(Dn, 2), next, 0);
        SV = _mm_insert_epi16(_mm_slli_si128(SVn, 2), next, 0);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(u), U);
}

/// Synthesis: the standard's order, sample by sample, but every value held
/// in lane 0 of a register so that each stage is one pmulhrsw and one
/// psubsw, then one pmulhrsw and one paddsw. (A wavefront would need two
/// steps per sample here, as stage i reads stage i - 1 of the previous
/// sample; this form runs at the latency of the recursion itself.)
inline void synthesis_frame_simd(const Word16 (*rrp)[8], Word16* v, const Word16* wt, Word16* sr) {
    __m128i v0 = _mm_set1_epi16(v[0]), v1 = _mm_set1_epi16(v[1]), v2 = _mm_set1_epi16(v[2]),
            v3 = _mm_set1_epi16(v[3]), v4 = _mm_set1_epi16(v[4]), v5 = _mm_set1_epi16(v[5]),
            v6 = _mm_set1_epi16(v[6]), v7 = _mm_set1_epi16(v[7]), v8 = _mm_set1_epi16(v[8]);
    for (int seg = 0; seg < 4; ++seg) {
        const Word16* r = rrp[seg];
        const __m128i r0 = _mm_set1_epi16(r[0]), r1 = _mm_set1_epi16(r[1]), r2 = _mm_set1_epi16(r[2]),
                      r3 = _mm_set1_epi16(r[3]), r4 = _mm_set1_epi16(r[4]), r5 = _mm_set1_epi16(r[5]),
                      r6 = _mm_set1_epi16(r[6]), r7 = _mm_set1_epi16(r[7]);
        for (int n = kSegmentStart[seg]; n < kSegmentStart[seg + 1]; ++n) {
            __m128i s = _mm_cvtsi32_si128(static_cast<std::uint16_t>(wt[n]));
            s = _mm_subs_epi16(s, _mm_mulhrs_epi16(r7, v7));
            v8 = _mm_adds_epi16(v7, _mm_mulhrs_epi16(r7, s));
            s = _mm_subs_epi16(s, _mm_mulhrs_epi16(r6, v6));
            v7 = _mm_adds_epi16(v6, _mm_mulhrs_epi16(r6, s));
            s = _mm_subs_epi16(s, _mm_mulhrs_epi16(r5, v5));
            v6 = _mm_adds_epi16(v5, _mm_mulhrs_epi16(r5, s));
            s = _mm_subs_epi16(s, _mm_mulhrs_epi16(r4, v4));
            v5 = _mm_adds_epi16(v4, _mm_mulhrs_epi16(r4, s));
            s = _mm_subs_epi16(s, _mm_mulhrs_epi16(r3, v3));
            v4 = _mm_adds_epi16(v3, _mm_mulhrs_epi16(r3, s));
            s = _mm_subs_epi16(s, _mm_mulhrs_epi16(r2, v2));
            v3 = _mm_adds_epi16(v2, _mm_mulhrs_epi16(r2, s));
            s = _mm_subs_epi16(s, _mm_mulhrs_epi16(r1, v1));
            v2 = _mm_adds_epi16(v1, _mm_mulhrs_epi16(r1, s));
            s = _mm_subs_epi16(s, _mm_mulhrs_epi16(r0, v0));
            v1 = _mm_adds_epi16(v0, _mm_mulhrs_epi16(r0, s));
            v0 = s;
            sr[n] = static_cast<Word16>(_mm_cvtsi128_si32(s));
        }
    }
    const __m128i out[9] = {v0, v1, v2, v3, v4, v5, v6, v7, v8};
    for (int i = 0; i < 9; ++i) v[i] = static_cast<Word16>(_mm_cvtsi128_si32(out[i]));
}

/// The de-emphasis recursion in lane 0: pmulhrsw is mult_r (28180 is not
/// -32768), paddsw is add; eight results are gathered into one store.
inline Word16 postprocess_frame_simd(Word16 msr, const Word16* s, Word16* out) {
    const __m128i c = _mm_set1_epi16(28180), mask = _mm_set1_epi16(static_cast<Word16>(0xFFF8));
    __m128i m = _mm_cvtsi32_si128(static_cast<std::uint16_t>(msr));
    for (int k = 0; k < 160; k += 8) {
        __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + k)), y = _mm_setzero_si128();
        for (int j = 0; j < 8; ++j) {
            m = _mm_adds_epi16(x, _mm_mulhrs_epi16(m, c));  // lane 0: sample k + j
            y = _mm_alignr_epi8(m, y, 2);                     // gathers msr, oldest in lane 0
            x = _mm_srli_si128(x, 2);
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + k), _mm_and_si128(_mm_adds_epi16(y, y), mask));
    }
    return static_cast<Word16>(_mm_cvtsi128_si32(m));
}
#else
// Hosts without SSSE3: the scalar forms (the same results).
inline void analysis_frame_simd(const Word16 (*rp)[8], Word16* u, Word16* s) { analysis_frame_scalar(rp, u, s); }
inline void synthesis_frame_simd(const Word16 (*rrp)[8], Word16* v, const Word16* wt, Word16* sr) {
    synthesis_frame_scalar(rrp, v, wt, sr);
}
inline Word16 postprocess_frame_simd(Word16 msr, const Word16* s, Word16* out) {
    return postprocess_frame_scalar(msr, s, out);
}
#endif

}  // namespace gsmfr
ZEPS_END_VARIANT

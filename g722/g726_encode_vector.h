/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.726 encoder sample loop with the whole predictor recursion on
// SSSE3 vectors (G.726 4.2.1 to 4.2.7): the signal estimate (FMULT, ACCUM),
// the quantiser (SUBTA, LOG, SUBTB, QUAN), the inverse quantiser (RECONST,
// ADDA, ANTILOG), the reconstructed signal (ADDB, ADDC, FLOATA, FLOATB), the
// predictor updates (UPA1, UPA2, LIMC, LIMD, UPB, XOR), TONE, TRANS and
// TRIGB stay in registers across a block; only the code I and the step-size
// words (Y, YL, YU, DMS, DML, AP) are scalar. Results equal those of
// encode_samples (g726_coder.h) for every state. The pieces after the
// quantiser (estimate_lanes, pole_outcomes, lane_update) also run the lane
// decoder (g726_decode_vector.h).
//
// Quantiser as a compare count. LOG gives DL = 128 * EXP + MANT of the
// magnitude DQM = |D| (truncated log2, non-decreasing in DQM) and QUAN
// compares DLN = (DL - Y/4) mod 4096 with the decision levels; read as a
// signed difference t = DL - Y/4 (-2047 < t < 2048), every decision of a rate
// is "t >= T" for an ascending list of T (the levels, and the negative ones
// 3972 - 4096 and so on). t >= T holds exactly when DQM reaches the least
// magnitude whose DL is at least L = T + Y/4: for 0 < L = 128 * E + M that is
// ceil((128 + M) * 2^E / 128), for L <= 0 it is 0; L beyond 1855 is never
// reached (|D| < 24576). So the count c of passed thresholds, found by
// comparing DQM with the sample's thresholds in lanes, is the quantiser's
// magnitude class; the code is c or its mirror by the sign. The inverse
// quantiser output of each class is known from Y beforehand, kept as its
// XOR with the class below, so the XOR over the classes passed (0..c) is the
// DQ magnitude of class c. Thresholds and steps come from a table by Y/4
// over the step sizes the coder reaches from reset (g726_tables.h) and are
// worked out in lanes for any other state.
//
// Lanes: the class-c threshold and DQ step sit in lane c (lane 0: class 0,
// threshold 0); eight lanes carry 16 and 24 kbit/s (2 and 4 classes) and
// 32 kbit/s (8), two vectors 40 kbit/s (16). Predictor words as in
// VectorPredictor (g726_adapt.h): B1..B6, A1, A2 and DQ1..DQ6, SR1, SR2 in
// floating form. Per-sample scalars (the estimate, DQ, SR, the signs) are
// kept broadcast in all lanes.
#pragma once

#include "g722/g726_coder.h"

ZEPS_BEGIN_VARIANT
namespace g726 {

#if defined(__SSSE3__)

/// The code I of magnitude class c and the sign DQS of its DQ (0/1): QUAN
/// with the sign and zero-code adjustments. The codes of sign 1 are the
/// mirrors 2^bits - 1 - c = c ^ (2^bits - 1), and above 16 kbit/s class 0 (the
/// zero code 2^bits - 1) has DQS set; written without a branch (class 0 is
/// frequent and unpredictable in speech).
template <int R>
[[gnu::always_inline]] inline int class_code(int c, int dqs) {
    constexpr int kMax = (1 << (R + 2)) - 1;
    return c ^ (-dqs & kMax);
}

/// Four bytes from memory as an int.
[[gnu::always_inline]] inline int load_u32(const void* p) {
    int v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

/// 2^k in each 16-bit lane for 0 <= k <= 15, 0 for k = 16 (lanes hold k).
[[gnu::always_inline]] inline __m128i pow2_lanes(__m128i k) {
    const __m128i pow2 = _mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i idx = _mm_or_si128(_mm_and_si128(k, _mm_set1_epi16(0x00FF)),
                                     _mm_xor_si128(_mm_slli_epi16(k, 8), _mm_set1_epi16(0x0800)));
    return _mm_shuffle_epi8(pow2, _mm_adds_epu8(idx, _mm_set1_epi8(0x70)));
}

/// Least DQM with DL >= L = level + Y/4 in each lane (see the top).
[[gnu::always_inline]] inline __m128i class_threshold(__m128i level, __m128i y4) {
    __m128i l = _mm_min_epi16(_mm_add_epi16(level, y4), _mm_set1_epi16(1856));
    const __m128i pos = _mm_cmpgt_epi16(l, _mm_setzero_si128());
    const __m128i x = _mm_slli_epi16(_mm_add_epi16(_mm_and_si128(l, _mm_set1_epi16(127)), _mm_set1_epi16(128)), 8);
    const __m128i p = pow2_lanes(_mm_add_epi16(_mm_srli_epi16(l, 7), _mm_set1_epi16(1)));
    const __m128i ceil = _mm_add_epi16(_mm_add_epi16(_mm_mulhi_epu16(x, p), _mm_set1_epi16(1)),
                                       _mm_cmpeq_epi16(_mm_mullo_epi16(x, p), _mm_setzero_si128()));
    return _mm_and_si128(ceil, pos);
}

/// RECONST output DQLN + Y/4 through ADDA and ANTILOG: DQ magnitude (as an
/// unsigned 16-bit word) in each lane.
[[gnu::always_inline]] inline __m128i class_dq(__m128i dqln, __m128i y4) {
    const __m128i dql = _mm_and_si128(_mm_add_epi16(dqln, y4), _mm_set1_epi16(4095));
    const __m128i dex = _mm_and_si128(_mm_srli_epi16(dql, 7), _mm_set1_epi16(15));
    const __m128i x = _mm_slli_epi16(_mm_add_epi16(_mm_and_si128(dql, _mm_set1_epi16(127)), _mm_set1_epi16(128)), 8);
    const __m128i p = pow2_lanes(_mm_add_epi16(dex, _mm_set1_epi16(1)));
    const __m128i mag =
        _mm_or_si128(_mm_mulhi_epu16(x, p), _mm_and_si128(x, _mm_cmpeq_epi16(dex, _mm_set1_epi16(15))));
    return _mm_and_si128(mag, _mm_cmpgt_epi16(_mm_set1_epi16(2048), dql));
}

/// Exponent (bit length) and 6-bit mantissa (leading one included; 32 for
/// zero) of unsigned 16-bit magnitudes, from their exact single-precision
/// conversion.
[[gnu::always_inline]] inline void float_parts(__m128i mag, __m128i& e, __m128i& m) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i flo = _mm_castps_si128(_mm_cvtepi32_ps(_mm_unpacklo_epi16(mag, zero)));
    const __m128i fhi = _mm_castps_si128(_mm_cvtepi32_ps(_mm_unpackhi_epi16(mag, zero)));
    const __m128i t = _mm_packs_epi32(_mm_srli_epi32(flo, 16), _mm_srli_epi32(fhi, 16));  // exp << 7 | 7 bits
    e = _mm_subs_epu16(_mm_srli_epi16(t, 7), _mm_set1_epi16(126));
    m = _mm_or_si128(_mm_and_si128(_mm_srli_epi16(t, 2), _mm_set1_epi16(31)), _mm_set1_epi16(32));
}

/// FLOATA and FLOATB at once: pairs holds DQ's and SR's magnitudes in lanes 0
/// and 1, signs their sign bits; returns the floating forms in lanes 0 and 6
/// (DQ1 and SR1 of the history), the other lanes zero.
[[gnu::always_inline]] inline __m128i float_pair(__m128i pairs, __m128i signs) {
    const __m128i f = _mm_srli_epi32(_mm_castps_si128(_mm_cvtepi32_ps(_mm_unpacklo_epi16(pairs, _mm_setzero_si128()))), 16);
    const __m128i t = _mm_packs_epi32(f, f);  // exp << 7 | 7 bits
    const __m128i e = _mm_subs_epu16(_mm_srli_epi16(t, 7), _mm_set1_epi16(126));
    const __m128i m = _mm_or_si128(_mm_and_si128(_mm_srli_epi16(t, 2), _mm_set1_epi16(31)), _mm_set1_epi16(32));
    const __m128i w = _mm_or_si128(_mm_or_si128(_mm_slli_epi16(e, 8), m), signs);
    return _mm_shuffle_epi8(w, _mm_setr_epi8(0, 1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 2, 3, -1, -1));
}

/// Horizontal XOR of the eight lanes, in every lane.
[[gnu::always_inline]] inline __m128i xor_lanes(__m128i v) {
    v = _mm_xor_si128(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_xor_si128(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_xor_si128(v, _mm_shuffle_epi8(v, _mm_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13)));
}

/// Lane k of v broadcast to all lanes.
template <int K>
[[gnu::always_inline]] inline __m128i lane(__m128i v) {
    return _mm_shuffle_epi8(v, _mm_set1_epi16(static_cast<short>((2 * K + 1) << 8 | 2 * K)));
}

/// The coefficients' side of FMULT: ANMAG (13-bit magnitude of each Q14
/// word) as its single-precision exponent and top seven mantissa bits,
/// exp << 7 | mantissa (0 for ANMAG = 0).
[[gnu::always_inline]] inline __m128i coef_float(__m128i c) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i mag = _mm_and_si128(_mm_abs_epi16(_mm_srai_epi16(c, 2)), _mm_set1_epi16(8191));
    const __m128i flo = _mm_castps_si128(_mm_cvtepi32_ps(_mm_unpacklo_epi16(mag, zero)));
    const __m128i fhi = _mm_castps_si128(_mm_cvtepi32_ps(_mm_unpackhi_epi16(mag, zero)));
    return _mm_packs_epi32(_mm_srli_epi32(flo, 16), _mm_srli_epi32(fhi, 16));
}

/// FMULT of all eight lanes and ACCUM: SE and SEZ broadcast. cf is
/// coef_float of the coefficients c (worked out as soon as they are known).
/// ACCUM adds 16-bit words and only the sum's low 16 bits are kept, so the
/// products are summed with 16-bit adds, each sum ending up in every lane.
[[gnu::always_inline]] inline void estimate_lanes(__m128i c, __m128i cf, __m128i h, __m128i& se, __m128i& sez) {
    const __m128i cs = _mm_srai_epi16(c, 15);
    const __m128i ae = _mm_subs_epu16(_mm_srli_epi16(cf, 7), _mm_set1_epi16(126));
    const __m128i am = _mm_or_si128(_mm_and_si128(_mm_srli_epi16(cf, 2), _mm_set1_epi16(31)), _mm_set1_epi16(32));
    const __m128i sm = _mm_and_si128(h, _mm_set1_epi16(63));
    const __m128i sexp = _mm_and_si128(_mm_srli_epi16(h, 8), _mm_set1_epi16(15));
    const __m128i w7 =
        _mm_slli_epi16(_mm_srli_epi16(_mm_add_epi16(_mm_mullo_epi16(sm, am), _mm_set1_epi16(48)), 4), 7);
    const __m128i e = _mm_add_epi16(sexp, ae);
    const __m128i p1m = pow2_lanes(_mm_sub_epi16(e, _mm_set1_epi16(10)));  // 0 below 10 and from 26
    const __m128i pow2 = _mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i k2 = _mm_sub_epi16(e, _mm_set1_epi16(26));
    const __m128i p2 = _mm_shuffle_epi8(
        pow2, _mm_or_si128(_mm_and_si128(k2, _mm_set1_epi16(0x00FF)), _mm_set1_epi16(static_cast<short>(0x8000))));
    const __m128i wmag =
        _mm_or_si128(_mm_mulhi_epu16(w7, p1m), _mm_and_si128(_mm_mullo_epi16(w7, p2), _mm_set1_epi16(32767)));
    const __m128i sign = _mm_or_si128(_mm_xor_si128(cs, _mm_srai_epi16(h, 15)), _mm_set1_epi16(1));
    const __m128i w = _mm_sign_epi16(wmag, sign);
    const __m128i s1 = _mm_add_epi16(w, _mm_shuffle_epi8(w, _mm_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13)));
    const __m128i s2 = _mm_add_epi16(s1, _mm_shuffle_epi32(s1, _MM_SHUFFLE(2, 3, 0, 1)));
    const __m128i all = _mm_add_epi16(s2, _mm_shuffle_epi32(s2, _MM_SHUFFLE(1, 0, 3, 2)));
    const __m128i poles = _mm_shuffle_epi32(s1, _MM_SHUFFLE(3, 3, 3, 3));  // A1, A2 terms
    se = _mm_srai_epi16(all, 1);
    sez = _mm_srai_epi16(_mm_sub_epi16(all, poles), 1);
}

/// UPA2, LIMC, UPA1, LIMD and TONE's TDP from the old A1, A2 and the sign
/// words PKS1, PKS2 and SIGPK (all broadcast, signs as masks).
[[gnu::always_inline]] inline void pole_update(__m128i a1, __m128i a2, __m128i pks1, __m128i pks2, __m128i sigpk,
                                               __m128i& a1p, __m128i& a2p, __m128i& tdp) {
    const __m128i fa1 =
        _mm_slli_epi16(_mm_max_epi16(_mm_min_epi16(a1, _mm_set1_epi16(8191)), _mm_set1_epi16(-8191)), 2);
    // ((PKS2 ? -16384 : 16384) + (PKS1 ? FA1 : -FA1)) >> 7, the first term
    // a multiple of 128 (so the sum is formed after the shift in 16 bits).
    const __m128i agree = _mm_xor_si128(pks1, _mm_set1_epi16(-1));
    const __m128i term1 = _mm_sub_epi16(_mm_set1_epi16(128), _mm_and_si128(pks2, _mm_set1_epi16(256)));
    const __m128i term2 = _mm_srai_epi16(_mm_sub_epi16(_mm_xor_si128(fa1, agree), agree), 7);
    const __m128i uga2 = _mm_andnot_si128(sigpk, _mm_add_epi16(term1, term2));
    a2p = _mm_sub_epi16(_mm_add_epi16(a2, uga2), _mm_srai_epi16(a2, 7));
    a2p = _mm_max_epi16(_mm_min_epi16(a2p, _mm_set1_epi16(12288)), _mm_set1_epi16(-12288));
    const __m128i uga1 =
        _mm_andnot_si128(sigpk, _mm_sub_epi16(_mm_set1_epi16(192), _mm_and_si128(pks1, _mm_set1_epi16(384))));
    a1p = _mm_sub_epi16(_mm_add_epi16(a1, uga1), _mm_srai_epi16(a1, 8));
    const __m128i a1ul = _mm_sub_epi16(_mm_set1_epi16(15360), a2p);
    a1p = _mm_max_epi16(_mm_min_epi16(a1p, a1ul), _mm_sub_epi16(_mm_setzero_si128(), a1ul));
    tdp = _mm_cmpgt_epi16(_mm_set1_epi16(-11776), a2p);
}

/// UPA2, LIMC, UPA1, LIMD for each outcome of DQ + SEZ, from the old A1, A2
/// and the sign masks PK1, PK2 (broadcast): lanes 0, 1, 2 of the result hold
/// A1' for DQ + SEZ positive, negative and zero, lanes 4, 5, 6 A2' for the
/// same outcomes. The sample then only picks its outcome (pick_poles).
[[gnu::always_inline]] inline __m128i pole_outcomes(__m128i a1, __m128i a2, __m128i pk1, __m128i pk2) {
    const __m128i pk0 = _mm_setr_epi16(0, -1, 0, 0, 0, -1, 0, 0);
    const __m128i sigpk = _mm_setr_epi16(0, 0, -1, 0, 0, 0, -1, 0);
    __m128i a1p, a2p, tdp;
    pole_update(a1, a2, _mm_xor_si128(pk0, pk1), _mm_xor_si128(pk0, pk2), sigpk, a1p, a2p, tdp);
    return _mm_unpacklo_epi64(a1p, a2p);
}

/// PSHUFB control moving the outcome of DQ + SEZ (pk0: sign mask, zero:
/// mask of DQ + SEZ = 0, both broadcast) from a pole_outcomes layout into
/// lanes 6 (A1) and 7 (A2), the other lanes zero.
[[gnu::always_inline]] inline __m128i pick_poles(__m128i pk0, __m128i zero) {
    const __m128i base = _mm_setr_epi8(-128, -128, -128, -128, -128, -128, -128, -128, -128, -128, -128, -128, 0, 1, 8, 9);
    const __m128i neg = _mm_and_si128(pk0, _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 2, 2, 2));
    const __m128i nil = _mm_and_si128(zero, _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 4, 4, 4));
    return _mm_or_si128(base, _mm_or_si128(neg, nil));
}

/// What lane_update hands back: the new coefficients C with their FMULT
/// forms CF, the history H, TD, this sample's sign mask PK0 of DQ + SEZ,
/// its TR and TDP masks and SR (all broadcast but C, CF and H).
struct LaneStep {
    __m128i c, cf, h, td, pk0, tr, tdp, sr;
};

/// The predictor recursion once DQ is known, shared by the lane encoder and
/// decoder: ADDB, ADDC, FLOATA, FLOATB, UPA1, UPA2, LIMC, LIMD (this
/// sample's outcome of pole_outcomes), TONE, TRANS, TRIGB, UPB and the delay
/// lines. dqmag and dqs are DQ's magnitude and sign mask, se and sez the
/// estimate, dqthr the TRANS threshold (used only while TD is set), all
/// broadcast; c, cf (coef_float of c), h and td the words before the sample.
template <int Leak>
[[gnu::always_inline]] inline LaneStep lane_update(__m128i dqmag, __m128i dqs, __m128i se, __m128i sez,
                                                   __m128i dqthr, __m128i a_next, __m128i af_next, __m128i c,
                                                   __m128i h, __m128i td) {
    const __m128i ones = _mm_set1_epi16(-1);
    const __m128i lanes_b = _mm_setr_epi16(-1, -1, -1, -1, -1, -1, 0, 0);
    const __m128i hist_keep = _mm_setr_epi16(0, -1, -1, -1, -1, -1, 0, -1);
    const __m128i dq = _mm_sign_epi16(dqmag, _mm_or_si128(dqs, _mm_set1_epi16(1)));

    // ADDB, ADDC; FLOATA, FLOATB into DQ1 and SR1.
    const __m128i sr = _mm_add_epi16(dq, se);
    const __m128i dqsez = _mm_add_epi16(dq, sez);
    const __m128i srmag = _mm_and_si128(_mm_abs_epi16(sr), _mm_set1_epi16(32767));
    const __m128i fl = float_pair(_mm_unpacklo_epi16(dqmag, srmag),
                                  _mm_slli_epi16(_mm_unpacklo_epi16(dqs, _mm_srai_epi16(sr, 15)), 15));

    // UPA2, LIMC, UPA1, LIMD: this sample's outcome; TONE.
    const __m128i pk0 = _mm_srai_epi16(dqsez, 15);
    const __m128i pick = pick_poles(pk0, _mm_cmpeq_epi16(dqsez, _mm_setzero_si128()));
    const __m128i poles = _mm_shuffle_epi8(a_next, pick);
    const __m128i tdp = _mm_cmpgt_epi16(_mm_set1_epi16(-11776), lane<7>(poles));

    // TRANS, TRIGB.
    const __m128i tr = _mm_andnot_si128(_mm_cmpeq_epi16(_mm_subs_epu16(dqmag, dqthr), _mm_setzero_si128()), td);
    const __m128i keep = _mm_xor_si128(tr, ones);

    // UPB on B1..B6 with the old history signs, then the new words and
    // the FMULT forms of the new coefficients.
    const __m128i x = _mm_xor_si128(_mm_srai_epi16(h, 15), dqs);
    const __m128i gain = _mm_andnot_si128(_mm_cmpeq_epi16(dqmag, _mm_setzero_si128()), _mm_set1_epi16(128));
    const __m128i b = _mm_sub_epi16(_mm_add_epi16(c, _mm_sub_epi16(_mm_xor_si128(gain, x), x)), _mm_srai_epi16(c, Leak));
    return {_mm_and_si128(_mm_or_si128(_mm_and_si128(lanes_b, b), poles), keep),
            _mm_and_si128(_mm_or_si128(_mm_and_si128(lanes_b, coef_float(b)), _mm_shuffle_epi8(af_next, pick)), keep),
            _mm_or_si128(_mm_and_si128(_mm_slli_si128(h, 2), hist_keep), fl),
            _mm_and_si128(tdp, keep),
            pk0,
            tr,
            tdp,
            sr};
}

/// TRANS threshold on DQ's magnitude from the old YL (G.726 4.2.7),
/// broadcast.
[[gnu::always_inline]] inline __m128i trans_threshold(int yl) {
    const int ylint = yl >> 15;
    const int thr = ylint > 9 ? 31744 : (((yl >> 10) & 31) + 32) << ylint;
    return _mm_set1_epi16(static_cast<short>((thr + (thr >> 1)) >> 1));
}

/// The class thresholds and DQ magnitudes of table entry k (unused lanes:
/// thresholds never passed, magnitudes 0).
template <int R>
[[gnu::always_inline]] inline void class_entry(unsigned k, __m128i& th_lo, __m128i& dq_lo, __m128i& th_hi,
                                               __m128i& dq_hi) {
    th_hi = dq_hi = _mm_setzero_si128();  // replaced at 40 kbit/s
    if constexpr (R == 0) {
        const std::int16_t* e = g726_class_16.data() + 4 * k;
        const __m128i v = _mm_cvtsi32_si128(load_u32(e));
        th_lo = _mm_or_si128(v, _mm_setr_epi16(0, 0, 32767, 32767, 32767, 32767, 32767, 32767));
        dq_lo = _mm_cvtsi32_si128(load_u32(e + 2));
    } else if constexpr (R == 1) {
        const std::int16_t* e = g726_class_24.data() + 8 * k;
        th_lo = _mm_or_si128(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(e)),
                             _mm_setr_epi16(0, 0, 0, 0, 32767, 32767, 32767, 32767));
        dq_lo = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(e + 4));
    } else if constexpr (R == 2) {
        const std::int16_t* e = g726_class_32.data() + 16 * k;
        th_lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(e));
        dq_lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(e + 8));
    } else {
        const std::int16_t* e = g726_class_40.data() + 32 * k;
        th_lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(e));
        th_hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(e + 8));
        dq_lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(e + 16));
        dq_hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(e + 24));
    }
}

/// Encodes len 14-bit samples (clamped to -8192..8191) at rate index R.
template <int R>
inline void encode_samples_vector(Core& core, const std::int16_t* src, std::uint8_t* dst, int len) {
    constexpr int kLeak = leak(R);
    const __m128i level_lo = _mm_load_si128(reinterpret_cast<const __m128i*>(g726_class_level[R]));
    const __m128i level_hi = _mm_load_si128(reinterpret_cast<const __m128i*>(g726_class_level[R] + 8));
    const __m128i dqln_lo = _mm_load_si128(reinterpret_cast<const __m128i*>(g726_class_dqln[R]));
    const __m128i dqln_hi = _mm_load_si128(reinterpret_cast<const __m128i*>(g726_class_dqln[R] + 8));
    const __m128i ones = _mm_set1_epi16(-1);

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
        int sl = src[n];
        sl = sl < -8192 ? -8192 : sl > 8191 ? 8191 : sl;
        const int y = scale_factor(r);
        // TRANS threshold from the old YL (needed only while TD is set).
        __m128i dqthr = _mm_setzero_si128();
        if (td_set) [[unlikely]] {
            const int ylint = r.yl >> 15;
            const int thr = ylint > 9 ? 31744 : (((r.yl >> 10) & 31) + 32) << ylint;
            dqthr = _mm_set1_epi16(static_cast<short>((thr + (thr >> 1)) >> 1));
        }

        // Per-class thresholds and DQ magnitudes for this Y.
        __m128i th_lo, dqc_lo, th_hi, dqc_hi;
        const unsigned k = static_cast<unsigned>((y >> 2) - kG726ClassY4Lo);
        if (k < static_cast<unsigned>(kG726ClassY4Count)) [[likely]] {
            class_entry<R>(k, th_lo, dqc_lo, th_hi, dqc_hi);
        } else {
            const __m128i y4 = _mm_set1_epi16(static_cast<short>(y >> 2));
            th_lo = class_threshold(level_lo, y4);
            th_hi = class_threshold(level_hi, y4);
            const __m128i lo = class_dq(dqln_lo, y4), hi = class_dq(dqln_hi, y4);
            dqc_lo = _mm_xor_si128(lo, _mm_slli_si128(lo, 2));
            dqc_hi = _mm_xor_si128(hi, _mm_alignr_epi8(hi, lo, 14));
        }

        // The pole coefficients and their FMULT forms for every outcome of
        // this sample's DQ + SEZ, from the old ones (beside the estimate).
        const __m128i a_next = pole_outcomes(lane<6>(c), lane<7>(c), pk1, pk2);
        const __m128i af_next = coef_float(a_next);

        // SE, SEZ; SUBTA; the quantiser as a compare count.
        __m128i se, sez;
        estimate_lanes(c, cf, h, se, sez);
        const __m128i d = _mm_sub_epi16(_mm_set1_epi16(static_cast<short>(sl)), se);
        const __m128i dm = _mm_abs_epi16(d);
        const __m128i ds = _mm_srai_epi16(d, 15);
        const __m128i fail_lo = _mm_cmpgt_epi16(th_lo, dm);
        __m128i dqmag, failed;
        // The classes passed are 0..c: the XOR of their magnitude steps is
        // the magnitude of class c.
        if constexpr (R == 3) {
            const __m128i fail_hi = _mm_cmpgt_epi16(th_hi, dm);
            dqmag = xor_lanes(_mm_xor_si128(_mm_andnot_si128(fail_lo, dqc_lo), _mm_andnot_si128(fail_hi, dqc_hi)));
            failed = _mm_packs_epi16(fail_lo, fail_hi);
        } else {
            dqmag = xor_lanes(_mm_andnot_si128(fail_lo, dqc_lo));
            failed = _mm_packs_epi16(fail_lo, ones);
        }
        // Sign of DQ: DS, and set for the zero code above 16 kbit/s.
        const __m128i dqs = R > 0 ? _mm_or_si128(ds, lane<1>(fail_lo)) : ds;
        const LaneStep u = lane_update<kLeak>(dqmag, dqs, se, sez, dqthr, a_next, af_next, c, h, td);
        c = u.c;
        cf = u.cf;
        h = u.h;
        pk2 = pk1;
        pk1 = u.pk0;
        td = u.td;
        const __m128i tr = u.tr, tdp = u.tdp;

        // The code and the scalar step-size adaptation.
        const int c_bits = ~_mm_movemask_epi8(failed) & 0xFFFF;
        const int cls = bit_length(c_bits) - 1;
        const int i = class_code<R>(cls, _mm_movemask_epi8(dqs) & 1);
        dst[n] = static_cast<std::uint8_t>(i);
        const int flags = _mm_movemask_epi8(_mm_unpacklo_epi16(tr, tdp));
        scale_update(r, g726_code_info[R][i], y, flags & 1, (flags >> 2) & 1);
        td_set = (flags & 5) == 4;  // TDP and no TR
    }
    r.td = _mm_cvtsi128_si32(td) & 1;
    r.pk1 = _mm_cvtsi128_si32(pk1) & 1;
    r.pk2 = _mm_cvtsi128_si32(pk2) & 1;
    r.store(core);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(core.coef), c);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(core.hist), h);
}

#else

template <int R>
inline void encode_samples_vector(Core& core, const std::int16_t* src, std::uint8_t* dst, int len) {
    encode_samples<R, VectorPredictor<leak(R)>>(core, src, dst, len);
}

#endif

}  // namespace g726
ZEPS_END_VARIANT

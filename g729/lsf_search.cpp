// SPDX-License-Identifier: BSD-3-Clause
// Codebook searches of the G.729 LSF quantiser (3.2.4, Lsp_pre_select,
// Lsp_select_1, Lsp_select_2): squared and weighted Euclidean distances with
// the reference's saturating accumulation; target and codebooks Q13.
#include "g729/lsf_search.h"

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>
#include <cstring>

#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT

int lsf_first_stage_search_scalar(const Word16* target) {
    int cand = 0;
    Word32 dmin = MAX_32;
    for (int i = 0; i < 128; ++i) {
        Word32 d = 0;
        for (int j = 0; j < 10; ++j) {
            const Word16 t = sub(target[j], lspcb1[i][j]);
            d = L_mac(d, t, t);
        }
        if (L_sub(d, dmin) < 0) {
            dmin = d;
            cand = i;
        }
    }
    return cand;
}

#if defined(__SSSE3__)
namespace {

// Smallest and largest value of each lspcb1 column (Q13).
constexpr Word16 kColMin[10] = {679, 1411, 2395, 3322, 5640, 7297, 10597, 12161, 16047, 17514};
constexpr Word16 kColMax[10] = {4499, 6604, 9596, 11742, 14413, 16080, 18330, 19856, 21830, 23533};

/// True when no distance of the search can reach 2^30 (sum of plain squares):
/// then no sub() or L_mac() of the reference saturates and the distances are
/// exact 32-bit sums.
bool first_stage_fits(const Word16* target) {
    std::int64_t bound = 0;
    for (int j = 0; j < 10; ++j) {
        const std::int64_t lo = std::int64_t{target[j]} - kColMax[j], hi = std::int64_t{target[j]} - kColMin[j];
        if (lo < MIN_16 || hi > MAX_16) return false;  // sub() could saturate
        bound += lo * lo > hi * hi ? lo * lo : hi * hi;
    }
    return bound < (std::int64_t{1} << 30);
}

inline __m128i load_pair(const Word16* p) {
    std::int32_t v;
    std::memcpy(&v, p, sizeof v);
    return _mm_cvtsi32_si128(v);
}

/// Running minimum of four distance lanes with the index where each was first
/// reached (strictly smaller replaces, as the reference's L_sub(d, dmin) < 0;
/// distances are below 2^30, so the compare equals it).
struct LaneMin {
    __m128i value = _mm_set1_epi32(MAX_32);
    __m128i index = _mm_setzero_si128();
    void update(__m128i d, __m128i idx) {
        const __m128i lt = _mm_cmplt_epi32(d, value);
        value = _mm_or_si128(_mm_and_si128(lt, d), _mm_andnot_si128(lt, value));
        index = _mm_or_si128(_mm_and_si128(lt, idx), _mm_andnot_si128(lt, index));
    }
    /// The first index of the overall minimum: lane l holds the indices equal
    /// to l mod 4, so among equal minima the smallest index comes first.
    int first() const {
        alignas(16) std::int32_t v[4], i[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(v), value);
        _mm_store_si128(reinterpret_cast<__m128i*>(i), index);
        int best = 0;
        for (int l = 1; l < 4; ++l)
            if (v[l] < v[best] || (v[l] == v[best] && i[l] < i[best])) best = l;
        return i[best];
    }
};

}  // namespace

int lsf_first_stage_search(const Word16* target) {
    if (!first_stage_fits(target)) return lsf_first_stage_search_scalar(target);
    // Four rows per vector: for each column pair, pmaddwd of the differences
    // with themselves adds both squares of a row.
    __m128i tp[5];
    for (int p = 0; p < 5; ++p) tp[p] = _mm_shuffle_epi32(load_pair(target + 2 * p), 0);
    LaneMin best;
    __m128i idx = _mm_setr_epi32(0, 1, 2, 3);
    for (int k = 0; k < 128; k += 4) {
        __m128i s = _mm_setzero_si128();
        for (int p = 0; p < 5; ++p) {
            const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lspcb1_pairs[p] + 2 * k));
            const __m128i d = _mm_sub_epi16(tp[p], c);
            s = _mm_add_epi32(s, _mm_madd_epi16(d, d));
        }
        best.update(s, idx);
        idx = _mm_add_epi32(idx, _mm_set1_epi32(4));
    }
    return best.first();
}
#else
// Hosts without SSSE3: the scalar searches (the same results).
int lsf_first_stage_search(const Word16* target) { return lsf_first_stage_search_scalar(target); }
#endif

int lsf_second_stage_search_scalar(const Word16* target, const Word16* cb1, const Word16* w, int first) {
    Word16 buf[5];
    for (int j = 0; j < 5; ++j) buf[j] = sub(target[first + j], cb1[first + j]);
    int index = 0;
    Word32 dmin = MAX_32;
    for (int k = 0; k < 32; ++k) {
        Word32 d = 0;
        for (int j = 0; j < 5; ++j) {
            const Word16 t = sub(buf[j], lspcb2[k][first + j]);
            d = L_mac(d, mult(w[first + j], t), t);
        }
        if (L_sub(d, dmin) < 0) {
            dmin = d;
            index = k;
        }
    }
    return index;
}

ZEPS_END_VARIANT

ZEPS_BEGIN_VARIANT
#if defined(__SSSE3__)
namespace {

/// As first_stage_fits, for the five residual values buf against lspcb2,
/// with one bound for all columns: |buf[j]| <= kBufReach keeps every
/// t = buf - lspcb2 within kBufReach + kLspcb2AbsMax (so sub() cannot
/// saturate) and the five weighted terms mult(w, t) * t below t^2, whose sum
/// stays under 2^30: no L_mac() saturates. Residuals of real LSFs lie far
/// inside the bound; others take the scalar search.
constexpr std::int32_t kLspcb2AbsMax = 2337;  // largest |lspcb2| entry (the tests check it)
constexpr std::int32_t kBufReach = 12000;
static_assert(5 * std::int64_t{kBufReach + kLspcb2AbsMax} * (kBufReach + kLspcb2AbsMax) < (std::int64_t{1} << 30));

bool second_stage_fits(const Word16* buf) {
    bool fits = true;
    for (int j = 0; j < 5; ++j) fits &= static_cast<std::uint32_t>(buf[j] + kBufReach) <= 2 * kBufReach;
    return fits;
}

}  // namespace

int lsf_second_stage_search(const Word16* target, const Word16* cb1, const Word16* w, int first) {
    Word16 buf[5];
    for (int j = 0; j < 5; ++j) buf[j] = sub(target[first + j], cb1[first + j]);
    if (!second_stage_fits(buf)) return lsf_second_stage_search_scalar(target, cb1, w, first);
    // Eight rows per vector: t = buf - cb2, m = mult(w, t) (floor of the
    // Q15 product from its high and low halves), distance += m * t.
    __m128i acc[8];
    const __m128i zero = _mm_setzero_si128();
    for (auto& a : acc) a = zero;
    for (int j = 0; j < 5; ++j) {
        const __m128i b = _mm_set1_epi16(buf[j]);
        const __m128i wj = _mm_set1_epi16(w[first + j]);
        for (int blk = 0; blk < 4; ++blk) {
            const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lspcb2_cols[first + j] + 8 * blk));
            const __m128i t = _mm_sub_epi16(b, c);
            const __m128i m = _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(wj, t), 1), _mm_srli_epi16(_mm_mullo_epi16(wj, t), 15));
            acc[2 * blk] = _mm_add_epi32(acc[2 * blk], _mm_madd_epi16(_mm_unpacklo_epi16(m, zero), _mm_unpacklo_epi16(t, zero)));
            acc[2 * blk + 1] = _mm_add_epi32(acc[2 * blk + 1], _mm_madd_epi16(_mm_unpackhi_epi16(m, zero), _mm_unpackhi_epi16(t, zero)));
        }
    }
    // acc[2 blk] holds rows 8 blk .. 8 blk + 3, acc[2 blk + 1] the next four.
    LaneMin best;
    for (int i = 0; i < 8; ++i) best.update(acc[i], _mm_add_epi32(_mm_setr_epi32(0, 1, 2, 3), _mm_set1_epi32(4 * i)));
    return best.first();
}
#else
int lsf_second_stage_search(const Word16* target, const Word16* cb1, const Word16* w, int first) {
    return lsf_second_stage_search_scalar(target, cb1, w, first);
}
#endif

ZEPS_END_VARIANT

/* SPDX-License-Identifier: BSD-3-Clause */
// Faster forms of ITU basic operators used in the inner loops of the G.729
// and GSM-AMR LP stages. Each returns exactly what the operator of
// common/basic_op.h returns, for every input: plain 64-bit arithmetic where
// no intermediate can leave the 32-bit range, the operator itself where one
// does.
#pragma once

#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT

inline constexpr bool fits32(std::int64_t v) { return v >= MIN_32 && v <= MAX_32; }

/// norm_l by counting leading bits.
inline Word16 norm_l_fast(Word32 a) {
    if (a == 0) return 0;
    const std::uint32_t v = static_cast<std::uint32_t>(a < 0 ? ~a : a);
    if (v == 0) return 31;  // a == -1
    return static_cast<Word16>(__builtin_clz(v) - 1);
}

/// norm_s by counting leading bits.
inline Word16 norm_s_fast(Word16 a) {
    if (a == 0) return 0;
    const std::uint32_t v = static_cast<std::uint32_t>(a < 0 ? ~Word32{a} : Word32{a});
    if (v == 0) return 15;  // a == -1
    return static_cast<Word16>(__builtin_clz(v) - 17);
}

/// div_s: the reference's 15-step restoring division is floor(num * 2^15 / den).
inline Word16 div_s_fast(Word16 num, Word16 den) {
    if (num <= 0 || den <= 0) return 0;
    if (num >= den) return MAX_16;
    return static_cast<Word16>((Word32{num} << 15) / den);
}

/// L_shl for a non-negative count: the exact shift, clamped.
inline Word32 L_shl_fast(Word32 a, int n) {
    if (n > 31) return L_shl(a, static_cast<Word16>(n));
    const std::int64_t v = static_cast<std::int64_t>(a) * (std::int64_t{1} << n);
    return v > MAX_32 ? MAX_32 : (v < MIN_32 ? MIN_32 : static_cast<Word32>(v));
}

/// Mpy_32 of two hi/lo values.
inline Word32 Mpy_32_fast(Word16 hi1, Word16 lo1, Word16 hi2, Word16 lo2) {
    const std::int64_t s1 = 2 * std::int64_t{hi1} * hi2;
    const std::int64_t s2 = s1 + 2 * ((Word32{hi1} * lo2) >> 15);
    const std::int64_t s3 = s2 + 2 * ((Word32{lo1} * hi2) >> 15);
    if (fits32(s1) && fits32(s2) && fits32(s3)) return static_cast<Word32>(s3);
    return Mpy_32(hi1, lo1, hi2, lo2);
}

/// Mpy_32 when |hi1| <= kStableK (a reflection coefficient that passed the
/// Levinson-Durbin stability test, lo1 and lo2 in 0..32767): |2 hi1 hi2| <=
/// 2 * 32750 * 32768 and the cross terms add at most 2 (32750 + 32768), in
/// all 2 146 435 036 < 2^31, so no step of the reference saturates and the
/// plain sum is Mpy_32.
inline constexpr Word16 kStableK = 32750;
inline constexpr Word32 Mpy_32_bounded(Word16 hi1, Word16 lo1, Word16 hi2, Word16 lo2) {
    return 2 * (Word32{hi1} * hi2 + ((Word32{hi1} * lo2) >> 15) + ((Word32{lo1} * hi2) >> 15));
}

/// Mpy_32_16 of a hi/lo value and a 16-bit value.
inline Word32 Mpy_32_16_fast(Word16 hi, Word16 lo, Word16 n) {
    const std::int64_t s1 = 2 * std::int64_t{hi} * n;
    const std::int64_t s2 = s1 + 2 * ((Word32{lo} * n) >> 15);
    if (fits32(s1) && fits32(s2)) return static_cast<Word32>(s2);
    return Mpy_32_16(hi, lo, n);
}

/// L_Extract: hi = v >> 16, lo = (v >> 1) & 0x7fff (what L_msu leaves).
inline DPF L_Extract_fast(Word32 v) {
    const auto u = static_cast<std::uint32_t>(v);  // the same bits, shifted without a sign
    return {static_cast<Word16>(u >> 16), static_cast<Word16>((u >> 1) & 0x7fff)};
}

inline void L_Extract_fast(Word32 v, Word16& hi, Word16& lo) {
    const DPF d = L_Extract_fast(v);
    hi = d.hi;
    lo = d.lo;
}

/// L_Comp: (hi << 16) + 2 lo, saturated.
inline Word32 L_Comp_fast(Word16 hi, Word16 lo) {
    const std::int64_t v = std::int64_t{hi} * 65536 + 2 * std::int64_t{lo};
    return v > MAX_32 ? MAX_32 : (v < MIN_32 ? MIN_32 : static_cast<Word32>(v));
}

/// Div_32 with the fast operators (same steps as the reference), for any
/// denominator.
inline Word32 Div_32_steps(Word32 L_num, Word16 denom_hi, Word16 denom_lo) {
    const Word16 approx = div_s_fast(0x3fff, denom_hi);
    Word32 t = L_sub(MAX_32, Mpy_32_16_fast(denom_hi, denom_lo, approx));
    DPF x = L_Extract_fast(t);
    t = Mpy_32_16_fast(x.hi, x.lo, approx);
    x = L_Extract_fast(t);
    const DPF n = L_Extract_fast(L_num);
    return L_shl_fast(Mpy_32_fast(n.hi, n.lo, x.hi, x.lo), 2);
}

/// Div_32 (denom_lo in 0..32767). For a normalised denominator (denom_hi >=
/// 16384) and L_num >= 0 the reference's steps in plain arithmetic:
/// approx = div_s(0x3fff, denom_hi) lies in 16383..32766 with denom_hi
/// approx <= 0x3fff 2^15, so Mpy_32_16(denom, approx) < 2^30 and
/// t = MAX_32 - that lies in (2^30, 2^30 + 2^18); Mpy_32_16(t, approx) stays
/// below 2^31, and Mpy_32 of two non-negative hi/lo values below 2^31 is at
/// most 2 (32767^2 + 2 32767) < 2^31: no step but the final L_shl by 2 can
/// saturate.
inline Word32 Div_32_fast(Word32 L_num, Word16 denom_hi, Word16 denom_lo) {
    if (denom_hi < 16384 || L_num < 0) return Div_32_steps(L_num, denom_hi, denom_lo);
    const Word32 approx = (static_cast<Word32>(0x3fff) << 15) / denom_hi;
    const Word32 t = MAX_32 - 2 * (denom_hi * approx + ((denom_lo * approx) >> 15));
    const Word32 th = t >> 16, tl = (t >> 1) & 0x7fff;
    const Word32 u = 2 * (th * approx + ((tl * approx) >> 15));
    const Word32 uh = u >> 16, ul = (u >> 1) & 0x7fff;
    const Word32 nh = L_num >> 16, nl = (L_num >> 1) & 0x7fff;
    return L_shl_fast(2 * (nh * uh + ((nh * ul) >> 15) + ((nl * uh) >> 15)), 2);
}

/// The Levinson-Durbin recursion sum as the reference's chain (G.729 3.2.2):
/// L_add of Mpy_32(R[j], A[i-j]) for j = 1..i-1.
inline Word32 levinson_recursion_sum_chain(const Word16* Rh, const Word16* Rl, const Word16* Ah, const Word16* Al,
                                           int i) {
    Word32 t = 0;
    for (int j = 1; j < i; ++j) t = L_add(t, Mpy_32_fast(Rh[j], Rl[j], Ah[i - j], Al[i - j]));
    return t;
}

/// sum_{j=1}^{i-1} Mpy_32(R[j], A[i-j]) as the reference's L_add chain. The
/// lo halves come from L_Extract (Rl, Al in 0..32767), so each mult inside Mpy_32 is
/// exact and Mpy_32 = 2 (hh + (hl >> 15) + (lh >> 15)) unless a step leaves
/// the 32-bit range. Every step of every Mpy_32 and every partial sum of the
/// chain is at most twice the sum of the pieces' magnitudes, where each
/// |(hl >> 15)| and |(lh >> 15)| is at most 2^15 (a 16-bit hi times a lo
/// below 2^15); when that total fits in 32 bits the plain sum is the chain's
/// result, otherwise the chain itself runs (the coefficients A are not
/// bounded a priori).
inline Word32 levinson_recursion_sum(const Word16* Rh, const Word16* Rl, const Word16* Ah, const Word16* Al, int i) {
    std::int64_t s = 0, mag = 0;
    for (int j = 1; j < i; ++j) {
        const Word32 rh = Rh[j], rl = Rl[j], ah = Ah[i - j], al = Al[i - j];
        const Word32 p = rh * ah;  // |p| <= 2^30
        const Word32 q = (rh * al) >> 15;
        const Word32 r = (rl * ah) >> 15;
        s += static_cast<std::int64_t>(p) + q + r;
        mag += p < 0 ? -p : p;
    }
    if (2 * (mag + static_cast<std::int64_t>(65536) * (i - 1)) <= MAX_32) return static_cast<Word32>(2 * s);
    return levinson_recursion_sum_chain(Rh, Rl, Ah, Al, i);
}

/// The Levinson-Durbin order-i coefficients from those of order i-1
/// (G.729 3.2.2), as hi/lo pairs: An[j] = L_add(Mpy_32(K, A[i-j]),
/// L_Comp(A[j])) for j = 1..i-1 and An[i] = K >> 4. L_Comp of a hi/lo pair
/// never saturates, nor does Mpy_32 with a K that passed the stability test
/// (Mpy_32_bounded); only the L_add may.
inline void levinson_next_coefficients(Word16 Kh, Word16 Kl, Word32 K, const Word16* Ah, const Word16* Al,
                                       Word16* Anh, Word16* Anl, int i) {
    for (int j = 1; j < i; ++j) {
        const std::int64_t s = std::int64_t{Mpy_32_bounded(Kh, Kl, Ah[i - j], Al[i - j])} +
                               std::int64_t{Ah[j]} * 65536 + 2 * Al[j];
        L_Extract_fast(s > MAX_32 ? MAX_32 : (s < MIN_32 ? MIN_32 : static_cast<Word32>(s)), Anh[j], Anl[j]);
    }
    L_Extract_fast(L_shr(K, 4), Anh[i], Anl[i]);
}

/// The next order's prediction error alpha (1 - K^2), renormalised:
/// alp_h / alp_l the normalised value, alp_exp its shifts so far (K passed
/// the stability test, so Mpy_32_bounded).
inline void levinson_next_alpha(Word16 Kh, Word16 Kl, Word16& alp_h, Word16& alp_l, Word16& alp_exp) {
    const DPF f = L_Extract_fast(L_sub(MAX_32, L_abs(Mpy_32_bounded(Kh, Kl, Kh, Kl))));
    const Word32 t0 = Mpy_32_fast(alp_h, alp_l, f.hi, f.lo);
    const Word16 n = norm_l_fast(t0);
    L_Extract_fast(L_shl_fast(t0, n), alp_h, alp_l);
    alp_exp = add(alp_exp, n);
}

ZEPS_END_VARIANT

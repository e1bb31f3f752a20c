/* SPDX-License-Identifier: BSD-3-Clause */
// Saturating fixed-point basic operators of the ITU-T software tool library
// (G.191 STL basicop, as used by the G.729, G.726 and 3GPP AMR references).
//
// Word16 values are Q15 fractions or plain 16-bit integers, Word32 values Q31
// fractions or plain 32-bit integers, as each caller's standard prescribes.
// Every operator is a pure constexpr function: where the reference sets its
// global Overflow flag, the overloads taking a `Flag&` report the same event
// to the caller instead, so no operator touches shared state.
//
// The results equal the reference operators for every input, including the
// shift counts the reference accepts outside the usual ranges.
#pragma once

#include <bit>
#include <cstdint>

#include "common/variant.h"

ZEPS_BEGIN_VARIANT

using Word16 = std::int16_t;
using Word32 = std::int32_t;
using Flag = bool;

inline constexpr Word16 MAX_16 = 32767;
inline constexpr Word16 MIN_16 = -32768;
inline constexpr Word32 MAX_32 = 0x7fffffff;
inline constexpr Word32 MIN_32 = static_cast<Word32>(0x80000000u);

// ---- conversions ---------------------------------------------------------

/// Clamps a 32-bit value to the 16-bit range, noting the clamp in `ovf`.
constexpr Word16 saturate(Word32 v, Flag& ovf) {
    if (v > MAX_16) { ovf = true; return MAX_16; }
    if (v < MIN_16) { ovf = true; return MIN_16; }
    return static_cast<Word16>(v);
}
constexpr Word16 saturate(Word32 v) { Flag f = false; return saturate(v, f); }

/// Clamps a 64-bit value to the 32-bit range, noting the clamp in `ovf`.
constexpr Word32 saturate32(std::int64_t v, Flag& ovf) {
    if (v > MAX_32) { ovf = true; return MAX_32; }
    if (v < MIN_32) { ovf = true; return MIN_32; }
    return static_cast<Word32>(v);
}
constexpr Word32 saturate32(std::int64_t v) { Flag f = false; return saturate32(v, f); }

constexpr Word16 extract_h(Word32 v) { return static_cast<Word16>(v >> 16); }
constexpr Word16 extract_l(Word32 v) { return static_cast<Word16>(v); }
constexpr Word32 L_deposit_h(Word16 v) { return static_cast<Word32>(static_cast<std::uint32_t>(v) << 16); }
constexpr Word32 L_deposit_l(Word16 v) { return v; }

// ---- 16-bit arithmetic ---------------------------------------------------

constexpr Word16 add(Word16 a, Word16 b, Flag& ovf) { return saturate(Word32{a} + b, ovf); }
constexpr Word16 add(Word16 a, Word16 b) { return saturate(Word32{a} + b); }
constexpr Word16 sub(Word16 a, Word16 b, Flag& ovf) { return saturate(Word32{a} - b, ovf); }
constexpr Word16 sub(Word16 a, Word16 b) { return saturate(Word32{a} - b); }
constexpr Word16 abs_s(Word16 a) { return a == MIN_16 ? MAX_16 : static_cast<Word16>(a < 0 ? -a : a); }
constexpr Word16 negate(Word16 a) { return a == MIN_16 ? MAX_16 : static_cast<Word16>(-a); }

/// Q15 product, truncated: (a * b) >> 15, saturated.
constexpr Word16 mult(Word16 a, Word16 b, Flag& ovf) { return saturate((Word32{a} * b) >> 15, ovf); }
constexpr Word16 mult(Word16 a, Word16 b) { Flag f = false; return mult(a, b, f); }

/// Q15 product, rounded: (a * b + 2^14) >> 15, saturated.
constexpr Word16 mult_r(Word16 a, Word16 b, Flag& ovf) {
    return saturate((Word32{a} * b + 0x4000) >> 15, ovf);
}
constexpr Word16 mult_r(Word16 a, Word16 b) { Flag f = false; return mult_r(a, b, f); }

constexpr Word16 shr(Word16 a, Word16 n);

/// Arithmetic left shift with saturation; a negative count shifts right.
constexpr Word16 shl(Word16 a, Word16 n, Flag& ovf) {
    if (n < 0) {
        return shr(a, static_cast<Word16>(n < -16 ? 16 : -n));
    }
    if (a == 0) return 0;
    if (n > 15) { ovf = true; return a > 0 ? MAX_16 : MIN_16; }
    const Word32 r = Word32{a} * (Word32{1} << n);
    if (r != static_cast<Word16>(r)) { ovf = true; return a > 0 ? MAX_16 : MIN_16; }
    return static_cast<Word16>(r);
}
constexpr Word16 shl(Word16 a, Word16 n) { Flag f = false; return shl(a, n, f); }

/// Arithmetic right shift; a negative count shifts left with saturation.
constexpr Word16 shr(Word16 a, Word16 n) {
    if (n < 0) return shl(a, static_cast<Word16>(n < -16 ? 16 : -n));
    if (n >= 15) return a < 0 ? -1 : 0;
    return static_cast<Word16>(a >> n);
}

/// Right shift with rounding (the last bit shifted out is added back).
constexpr Word16 shr_r(Word16 a, Word16 n) {
    if (n > 15) return 0;
    Word16 r = shr(a, n);
    if (n > 0 && (a & (1 << (n - 1))) != 0) ++r;
    return r;
}

/// Number of left shifts that normalise a (0 for 0, 15 for -1).
constexpr Word16 norm_s(Word16 a) {
    if (a == 0) return 0;
    if (a == -1) return 15;
    // Left shifts until bit 14 is set: leading zeros of the 32-bit value less the 17 above bit 15.
    const auto v = static_cast<std::uint32_t>(a < 0 ? ~Word32{a} : Word32{a});
    return static_cast<Word16>(std::countl_zero(v) - 17);
}

/// Fractional division num/den in Q15 for 0 <= num <= den, den > 0.
/// Outside that domain the reference aborts; here the result is 0 for
/// num <= 0 or den <= 0 and MAX_16 for num >= den, so no input can fault.
constexpr Word16 div_s(Word16 num, Word16 den) {
    if (num <= 0 || den <= 0) return 0;
    if (num >= den) return MAX_16;
    // The 15 restoring-division steps of the reference yield floor(num 2^15 / den) for 0 < num < den.
    return static_cast<Word16>((Word32{num} << 15) / den);
}

// ---- 32-bit arithmetic ---------------------------------------------------

constexpr Word32 L_add(Word32 a, Word32 b, Flag& ovf) { return saturate32(std::int64_t{a} + b, ovf); }
constexpr Word32 L_add(Word32 a, Word32 b) { return saturate32(std::int64_t{a} + b); }
constexpr Word32 L_sub(Word32 a, Word32 b, Flag& ovf) { return saturate32(std::int64_t{a} - b, ovf); }
constexpr Word32 L_sub(Word32 a, Word32 b) { return saturate32(std::int64_t{a} - b); }
constexpr Word32 L_negate(Word32 a) { return a == MIN_32 ? MAX_32 : -a; }
constexpr Word32 L_abs(Word32 a) { return a == MIN_32 ? MAX_32 : (a < 0 ? -a : a); }

/// Doubled product a * b * 2 (Q15 x Q15 -> Q31); -1 x -1 saturates.
constexpr Word32 L_mult(Word16 a, Word16 b, Flag& ovf) {
    const Word32 p = Word32{a} * b;
    if (p == 0x40000000) { ovf = true; return MAX_32; }
    return p * 2;
}
constexpr Word32 L_mult(Word16 a, Word16 b) { Flag f = false; return L_mult(a, b, f); }

constexpr Word32 L_mac(Word32 acc, Word16 a, Word16 b, Flag& ovf) { return L_add(acc, L_mult(a, b, ovf), ovf); }
constexpr Word32 L_mac(Word32 acc, Word16 a, Word16 b) { Flag f = false; return L_mac(acc, a, b, f); }
constexpr Word32 L_msu(Word32 acc, Word16 a, Word16 b, Flag& ovf) { return L_sub(acc, L_mult(a, b, ovf), ovf); }
constexpr Word32 L_msu(Word32 acc, Word16 a, Word16 b) { Flag f = false; return L_msu(acc, a, b, f); }

constexpr Word32 L_shr(Word32 a, Word16 n);

/// Arithmetic left shift with saturation; a negative count shifts right.
/// The reference doubles n times, saturating (and flagging) as soon as a
/// doubling would leave 32 bits: the doublings before are exact and the
/// magnitude only grows, so it saturates exactly when a * 2^n is outside
/// the 32-bit range, and a nonzero a is outside it at 32 shifts already.
/// One 64-bit shift and a clamp give that value for every count.
constexpr Word32 L_shl(Word32 a, Word16 n, Flag& ovf) {
    if (n <= 0) return L_shr(a, static_cast<Word16>(n < -32 ? 32 : -n));
    const int k = n > 32 ? 32 : n;
    return saturate32(std::int64_t{a} * (std::int64_t{1} << k), ovf);
}
constexpr Word32 L_shl(Word32 a, Word16 n) { Flag f = false; return L_shl(a, n, f); }

/// Arithmetic right shift; a negative count shifts left with saturation.
constexpr Word32 L_shr(Word32 a, Word16 n) {
    if (n < 0) return L_shl(a, static_cast<Word16>(n < -32 ? 32 : -n));
    if (n >= 31) return a < 0 ? -1 : 0;
    return a >> n;
}

/// Right shift with rounding.
constexpr Word32 L_shr_r(Word32 a, Word16 n) {
    if (n > 31) return 0;
    Word32 r = L_shr(a, n);
    if (n > 0 && (a & (Word32{1} << (n - 1))) != 0) ++r;
    return r;
}

/// Number of left shifts that normalise a (0 for 0, 31 for -1).
constexpr Word16 norm_l(Word32 a) {
    if (a == 0) return 0;
    if (a == -1) return 31;
    const std::uint32_t v = static_cast<std::uint32_t>(a < 0 ? ~a : a);
    return static_cast<Word16>(std::countl_zero(v) - 1);
}

/// The reference's round(): high half of a + 2^15, saturated.
constexpr Word16 round_fx(Word32 a, Flag& ovf) { return extract_h(L_add(a, 0x8000, ovf)); }
constexpr Word16 round_fx(Word32 a) { return extract_h(L_add(a, 0x8000)); }

constexpr Word16 mac_r(Word32 acc, Word16 a, Word16 b) { return round_fx(L_mac(acc, a, b)); }
constexpr Word16 msu_r(Word32 acc, Word16 a, Word16 b) { return round_fx(L_msu(acc, a, b)); }

// ---- double precision (oper_32b) -----------------------------------------
// A 32-bit value is held as hi (upper 16 bits) and lo (15 bits below them):
// L = hi << 16 + lo << 1.

struct DPF {
    Word16 hi;
    Word16 lo;
};

constexpr DPF L_Extract(Word32 v) {
    const Word16 hi = extract_h(v);
    return {hi, extract_l(L_msu(L_shr(v, 1), hi, 16384))};
}
constexpr void L_Extract(Word32 v, Word16& hi, Word16& lo) {
    const DPF d = L_Extract(v);
    hi = d.hi;
    lo = d.lo;
}
constexpr Word32 L_Comp(Word16 hi, Word16 lo) { return L_mac(L_deposit_h(hi), lo, 1); }

/// 32 x 32 -> 32 bit fractional product of two hi/lo values.
constexpr Word32 Mpy_32(Word16 hi1, Word16 lo1, Word16 hi2, Word16 lo2) {
    Word32 r = L_mult(hi1, hi2);
    r = L_mac(r, mult(hi1, lo2), 1);
    return L_mac(r, mult(lo1, hi2), 1);
}

/// 32 x 16 -> 32 bit fractional product of a hi/lo value and a Q15 value.
constexpr Word32 Mpy_32_16(Word16 hi, Word16 lo, Word16 n) {
    return L_mac(L_mult(hi, n), mult(lo, n), 1);
}

/// Fractional division L_num / denom for 0 <= L_num < denom (denom as hi/lo,
/// normalised), result in Q31.
constexpr Word32 Div_32(Word32 L_num, Word16 denom_hi, Word16 denom_lo) {
    const Word16 approx = div_s(0x3fff, denom_hi);  // 1/denom in Q29
    Word32 t = Mpy_32_16(denom_hi, denom_lo, approx);
    t = L_sub(MAX_32, t);  // 2 - denom * approx, Q30
    DPF x = L_Extract(t);
    t = Mpy_32_16(x.hi, x.lo, approx);  // 1/denom in Q29, refined
    x = L_Extract(t);
    const DPF n = L_Extract(L_num);
    return L_shl(Mpy_32(n.hi, n.lo, x.hi, x.lo), 2);
}

ZEPS_END_VARIANT

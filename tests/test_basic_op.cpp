// SPDX-License-Identifier: BSD-3-Clause
// Saturation and rounding boundaries of the basic operators and the
// table-driven functions, against values worked out from the ITU-T
// definitions.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "common/basic_op.h"
#include "common/fixed_math.h"

namespace zeps {
namespace {

TEST(BasicOp, SixteenBitSaturation) {
    EXPECT_EQ(add(32767, 1), 32767);
    EXPECT_EQ(add(-32768, -1), -32768);
    EXPECT_EQ(sub(-32768, 1), -32768);
    EXPECT_EQ(sub(0, -32768), 32767);
    EXPECT_EQ(abs_s(-32768), 32767);
    EXPECT_EQ(negate(-32768), 32767);
    EXPECT_EQ(mult(-32768, -32768), 32767);
    EXPECT_EQ(mult(-32768, 32767), -32767);
    EXPECT_EQ(mult(-1, 1), -1);  // arithmetic shift: truncates toward minus infinity
    EXPECT_EQ(mult_r(-32768, -32768), 32767);
    EXPECT_EQ(mult_r(16384, 1), 1);  // 0.5 LSB rounds up
    Flag ovf = false;
    EXPECT_EQ(add(100, 200, ovf), 300);
    EXPECT_FALSE(ovf);
    EXPECT_EQ(add(32000, 1000, ovf), 32767);
    EXPECT_TRUE(ovf);
}

TEST(BasicOp, ThirtyTwoBitSaturation) {
    EXPECT_EQ(L_add(MAX_32, 1), MAX_32);
    EXPECT_EQ(L_sub(MIN_32, 1), MIN_32);
    EXPECT_EQ(L_mult(-32768, -32768), MAX_32);
    EXPECT_EQ(L_mult(-32768, 32767), -2147418112);
    EXPECT_EQ(L_mac(MAX_32 - 1, 1, 1), MAX_32);
    EXPECT_EQ(L_msu(MIN_32 + 1, 1, 1), MIN_32);
    EXPECT_EQ(L_negate(MIN_32), MAX_32);
    EXPECT_EQ(L_abs(MIN_32), MAX_32);
    EXPECT_EQ(round_fx(0x7fff8000), 32767);  // rounding saturates
    EXPECT_EQ(round_fx(0x00018000), 2);
    EXPECT_EQ(round_fx(static_cast<Word32>(0xffff7fff)), -1);
    Flag ovf = false;
    EXPECT_EQ(L_mac(0, -32768, -32768, ovf), MAX_32);
    EXPECT_TRUE(ovf);
}

TEST(BasicOp, Shifts) {
    EXPECT_EQ(shl(0x4000, 1), 32767);
    EXPECT_EQ(shl(-0x4000, 1), -32768);
    EXPECT_EQ(shl(-0x4001, 1), -32768);
    EXPECT_EQ(shl(1, 14), 16384);
    EXPECT_EQ(shl(1, 16), 32767);
    EXPECT_EQ(shl(0, 100), 0);
    EXPECT_EQ(shl(-8, -2), -2);  // negative count shifts right
    EXPECT_EQ(shr(-1, 20), -1);
    EXPECT_EQ(shr(32767, 15), 0);
    EXPECT_EQ(shr(1, -20), 32767);  // clamped to a left shift of 16
    EXPECT_EQ(shr_r(3, 1), 2);
    EXPECT_EQ(shr_r(-3, 1), -1);
    EXPECT_EQ(shr_r(12345, 16), 0);
    EXPECT_EQ(L_shl(0x40000000, 1), MAX_32);
    EXPECT_EQ(L_shl(static_cast<Word32>(0xbfffffff), 1), MIN_32);
    EXPECT_EQ(L_shl(1, 30), 0x40000000);
    EXPECT_EQ(L_shr(MIN_32, 31), -1);
    EXPECT_EQ(L_shr(MAX_32, 40), 0);
    EXPECT_EQ(L_shr(1, -31), MAX_32);
    EXPECT_EQ(L_shr_r(3, 1), 2);
    EXPECT_EQ(L_shr_r(MAX_32, 31), 1);
    EXPECT_EQ(L_shr_r(MAX_32, 32), 0);
}

/// The reference's L_shl: n doublings, each checked for saturation.
Word32 L_shl_doubling(Word32 a, int n, Flag& ovf) {
    if (n <= 0) return L_shr(a, static_cast<Word16>(n < -32 ? 32 : -n));
    for (; n > 0; --n) {
        if (a > 0x3fffffff) { ovf = true; return MAX_32; }
        if (a < static_cast<Word32>(0xc0000000u)) { ovf = true; return MIN_32; }
        a *= 2;
    }
    return a;
}

TEST(BasicOp, LongLeftShiftMatchesDoubling) {
    // Every power of two, its neighbours and their negatives (the
    // saturation edges of every count), 0, the extremes and a spread of
    // other values, against every count from -40 to 40 and the extremes.
    std::vector<Word32> values = {0, MAX_32, MIN_32, 0x12345678, -0x12345678, 0x5555, -0x2aaaaaab};
    for (int k = 0; k < 31; ++k) {
        const Word32 p = Word32{1} << k;
        for (const Word32 v : {p - 1, p, p + 1}) {
            values.push_back(v);
            values.push_back(-v);
        }
    }
    std::uint32_t x = 1;
    for (int i = 0; i < 200; ++i) {
        x = x * 1664525u + 1013904223u;
        values.push_back(static_cast<Word32>(x) >> (i % 31));
    }
    std::vector<int> counts = {-32768, -100, 100, 1000, 32767};
    for (int n = -40; n <= 40; ++n) counts.push_back(n);
    for (const Word32 a : values) {
        for (const int n : counts) {
            Flag want_ovf = false, got_ovf = false;
            const Word32 want = L_shl_doubling(a, n, want_ovf);
            ASSERT_EQ(L_shl(a, static_cast<Word16>(n), got_ovf), want) << a << " << " << n;
            ASSERT_EQ(got_ovf, want_ovf) << a << " << " << n;
            if (n > 0) {  // a negative right shift is a left shift of at most 32
                ASSERT_EQ(L_shr(a, static_cast<Word16>(-n)), L_shl_doubling(a, n > 32 ? 32 : n, want_ovf))
                    << a << " >> -" << n;
            }
        }
    }
}

TEST(BasicOp, NormalisationAndDivision) {
    EXPECT_EQ(norm_s(0), 0);
    EXPECT_EQ(norm_s(-1), 15);
    EXPECT_EQ(norm_s(1), 14);
    EXPECT_EQ(norm_s(-32768), 0);
    EXPECT_EQ(norm_s(0x4000), 0);
    EXPECT_EQ(norm_l(0), 0);
    EXPECT_EQ(norm_l(-1), 31);
    EXPECT_EQ(norm_l(1), 30);
    EXPECT_EQ(norm_l(MIN_32), 0);
    EXPECT_EQ(div_s(1, 2), 16384);
    EXPECT_EQ(div_s(1, 3), 10922);
    EXPECT_EQ(div_s(5, 5), 32767);
    EXPECT_EQ(div_s(0, 5), 0);
    EXPECT_EQ(div_s(16383, 32767), 16383);
}

TEST(BasicOp, DoublePrecision) {
    Word16 hi = 0, lo = 0;
    L_Extract(0x12345678, hi, lo);
    EXPECT_EQ(hi, 0x1234);
    EXPECT_EQ(lo, 0x5678 >> 1);
    EXPECT_EQ(L_Comp(hi, lo), 0x12345678);
    L_Extract(-2, hi, lo);
    EXPECT_EQ(L_Comp(hi, lo), -2);
    // 0.5 * 0.5 = 0.25 in Q31.
    EXPECT_EQ(Mpy_32(16384, 0, 16384, 0), 0x20000000);
    EXPECT_EQ(Mpy_32_16(16384, 0, 16384), 0x20000000);
    // 0.25 / 0.5: the reference's single Newton step leaves the quotient
    // 8 LSB below 0.5 in Q31.
    EXPECT_EQ(Div_32(0x20000000, 16384, 0), 0x40000000 - 8);
}

TEST(BasicOp, TableFunctions) {
    EXPECT_EQ(Inv_sqrt(0), 0x3fffffff);
    EXPECT_EQ(Inv_sqrt(-5), 0x3fffffff);
    EXPECT_EQ(Inv_sqrt(1), 0x3fff8000);  // table end point, not interpolated
    EXPECT_EQ(Inv_sqrt(4), 0x1fffc000);  // 1/2 in Q30
    Word16 e = 0, f = 0;
    Log2(0, e, f);
    EXPECT_EQ(e, 0);
    EXPECT_EQ(f, 0);
    Log2(1024, e, f);
    EXPECT_EQ(e, 10);
    EXPECT_EQ(f, 0);
    Log2(MAX_32, e, f);
    EXPECT_EQ(e, 30);
    EXPECT_EQ(f, 32766);
    EXPECT_EQ(Pow2(10, 0), 1024);
    EXPECT_EQ(Pow2(0, 0), 1);
}

}  // namespace
}  // namespace zeps

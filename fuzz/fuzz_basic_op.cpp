// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target for the basic operators and the table-interpolated
// functions every fixed-point stage is built from (common/basic_op.h,
// common/fixed_math.h): each 8-byte record of the input picks an operator and
// its operands; the result must equal the operator's definition computed in
// 64-bit arithmetic (saturation, shifts, normalisation, Q15 division), and
// Inv_sqrt, Log2 and Pow2 must stay within their interpolation error, all
// under ASan and UBSan (table reads, shifts, overflow).
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/basic_op.h"
#include "common/fixed_math.h"

using namespace zeps::ZEPS_VARIANT_NS;

namespace {

[[noreturn]] void fail(const char* op, long long a, long long b, long long got, long long want) {
    std::fprintf(stderr, "*** %s(%lld, %lld) = %lld, expected %lld\n", op, a, b, got, want);
    std::abort();
}
long long sat16(long long v) { return v > 32767 ? 32767 : v < -32768 ? -32768 : v; }
long long sat32(long long v) { return v > 2147483647LL ? 2147483647LL : v < -2147483648LL ? -2147483648LL : v; }
void expect(const char* op, long long a, long long b, long long got, long long want) {
    if (got != want) fail(op, a, b, got, want);
}
void near(const char* op, long long a, long long b, double got, double want, double rel) {
    if (std::fabs(got - want) > rel * std::fabs(want) + 2.0) fail(op, a, b, static_cast<long long>(got), static_cast<long long>(want));
}

void one(unsigned op, Word16 a, Word16 b, Word32 L) {
    const long long A = a, B = b, X = L;
    switch (op % 20) {
        case 0: expect("add", A, B, add(a, b), sat16(A + B)); break;
        case 1: expect("sub", A, B, sub(a, b), sat16(A - B)); break;
        case 2: expect("mult", A, B, mult(a, b), sat16((A * B) >> 15)); break;
        case 3: expect("mult_r", A, B, mult_r(a, b), sat16((A * B + 16384) >> 15)); break;
        case 4: expect("L_mult", A, B, L_mult(a, b), sat32(2 * A * B)); break;
        case 5: expect("L_add", X, A << 8, L_add(L, static_cast<Word32>(A << 8)), sat32(X + (A << 8))); break;
        case 6: expect("L_mac", X, A, L_mac(L, a, b), sat32(X + sat32(2 * A * B))); break;
        case 7: expect("L_msu", X, A, L_msu(L, a, b), sat32(X - sat32(2 * A * B))); break;
        case 8: {
            const int n = b & 15;
            expect("shl", A, n, shl(a, static_cast<Word16>(n)), sat16(A * (1LL << n)));
            expect("shr", A, n, shr(a, static_cast<Word16>(n)), A >> n);
            expect("shr(-n)", A, n, shr(a, static_cast<Word16>(-n)), sat16(A * (1LL << n)));
            break;
        }
        case 9: {
            const int n = b & 31;
            expect("L_shl", X, n, L_shl(L, static_cast<Word16>(n)), sat32(X * (1LL << n)));
            expect("L_shr", X, n, L_shr(L, static_cast<Word16>(n)), X >> n);
            expect("L_shr_r", X, n, L_shr_r(L, static_cast<Word16>(n)), n ? (X + (1LL << (n - 1))) >> n : X);
            break;
        }
        case 10: {  // shift counts outside the usual ranges: no fault, saturated results
            (void)shl(a, b), (void)shr(a, b), (void)shr_r(a, b), (void)L_shl(L, b), (void)L_shr(L, b), (void)L_shr_r(L, b);
            break;
        }
        case 11: {
            const int n = norm_s(a);
            if (a != 0 && a != -1) {
                const long long v = A * (1LL << n);
                if (!(v >= 16384 && v <= 32767) && !(v >= -32768 && v < -16384)) fail("norm_s", A, 0, n, -1);
            }
            break;
        }
        case 12: {
            const int n = norm_l(L);
            if (L != 0 && L != -1) {
                const long long v = X * (1LL << n);
                if (!(v >= (1LL << 30) && v < (1LL << 31)) && !(v >= -(1LL << 31) && v < -(1LL << 30))) fail("norm_l", X, 0, n, -1);
            }
            break;
        }
        case 13: {
            const Word16 num = static_cast<Word16>(a & 0x7fff), den = static_cast<Word16>((b & 0x7fff) | 1);
            if (num <= den) expect("div_s", num, den, div_s(num, den), num == den ? 32767 : (static_cast<long long>(num) << 15) / den);
            break;
        }
        case 14: expect("round", X, 0, round_fx(L), sat32(X + 32768) >> 16); break;
        case 15: expect("abs_s", A, 0, abs_s(a), sat16(A < 0 ? -A : A)); expect("negate", A, 0, negate(a), sat16(-A)); break;
        case 16: {
            const DPF d = L_Extract(L);
            expect("L_Comp(L_Extract)", X, 0, L_Comp(d.hi, d.lo), X & ~1LL);
            break;
        }
        case 17:
            if (L > 0) near("Inv_sqrt", X, 0, Inv_sqrt(L), std::ldexp(1.0, 30) / std::sqrt(static_cast<double>(X)), 2e-3);
            else expect("Inv_sqrt", X, 0, Inv_sqrt(L), 0x3fffffff);
            break;
        case 18: {
            Word16 e = 0, f = 0;
            Log2(L, e, f);
            if (L > 0) near("Log2 (x32768)", X, 0, (e + f / 32768.0) * 32768.0, std::log2(static_cast<double>(X)) * 32768.0, 1e-4);
            else expect("Log2", X, 0, e * 65536LL + f, 0);
            break;
        }
        case 19: {
            const Word16 e = static_cast<Word16>((b & 0x7fff) % 31), f = static_cast<Word16>(a & 0x7fff);
            near("Pow2", e, f, Pow2(e, f), std::ldexp(1.0, e) * std::exp2(f / 32768.0), 2e-3);
            break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (std::size_t off = 0; off + 8 <= size; off += 8) {
        std::uint16_t op, a, b;
        std::int32_t L;
        std::memcpy(&op, data + off, 2);
        std::memcpy(&a, data + off + 2, 2);
        std::memcpy(&b, data + off + 4, 2);
        std::memcpy(&L, data + off + 4, 4);  // overlaps b: L_x cases read both halves
        one(op, static_cast<Word16>(a), static_cast<Word16>(b), L);
    }
    return 0;
}

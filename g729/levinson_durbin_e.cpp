// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E Levinson-Durbin recursion (E.3.1, Levinsone): the G.729
// double-precision recursion (3.2.2) for orders 1..30 with each numerator
// bounded by its denominator before Div_32, the stability test from the
// second reflection coefficient on, and the last stable filter (with its
// first two reflection coefficients) kept by the caller and returned on an
// unstable frame. Autocorrelations hi/lo of a normalised Q31 value, LP
// coefficients Q27 internally -> Q12, reflection coefficients Q15.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kMaxOrder = 30;

/// 1 - K^2 (Q31) in hi/lo.
DPF one_minus_square(Word16 kh, Word16 kl) {
    const Word32 t = L_abs(Mpy_32(kh, kl, kh, kl));
    return L_Extract(L_sub(MAX_32, t));
}

/// The recursion; false when a reflection coefficient beyond the first
/// exceeds 32750 in magnitude (rc then holds the coefficients found so far).
bool levinsone(int m, const Word16* Rh, const Word16* Rl, Word16* A, Word16* rc) {
    Word16 Ah[kMaxOrder + 1], Al[kMaxOrder + 1], Anh[kMaxOrder + 1], Anl[kMaxOrder + 1];
    Word32 t1 = L_Comp(Rh[1], Rl[1]);
    const Word32 r0 = L_Comp(Rh[0], Rl[0]);
    if (t1 > r0) t1 = r0;
    Word32 t0 = Div_32(L_abs(t1), Rh[0], Rl[0]);
    if (t1 > 0) t0 = L_negate(t0);
    DPF k = L_Extract(t0);
    rc[0] = k.hi;
    L_Extract(L_shr(t0, 4), Ah[1], Al[1]);
    DPF f = one_minus_square(k.hi, k.lo);
    t0 = Mpy_32(Rh[0], Rl[0], f.hi, f.lo);
    Word16 alp_exp = norm_l(t0);
    DPF alp = L_Extract(L_shl(t0, alp_exp));

    for (int i = 2; i <= m; ++i) {
        t0 = 0;
        for (int j = 1; j < i; ++j) t0 = L_add(t0, Mpy_32(Rh[j], Rl[j], Ah[i - j], Al[i - j]));
        t0 = L_shl(t0, 4);
        t0 = L_add(t0, L_Comp(Rh[i], Rl[i]));
        t1 = L_abs(t0);
        const Word32 a = L_Comp(alp.hi, alp.lo);
        if (t1 > a) t1 = a;
        Word32 t2 = Div_32(t1, alp.hi, alp.lo);
        if (t0 > 0) t2 = L_negate(t2);
        t2 = L_shl(t2, alp_exp);
        k = L_Extract(t2);
        rc[i - 1] = k.hi;
        if (abs_s(k.hi) > 32750) return false;
        for (int j = 1; j < i; ++j) {
            t0 = L_add(Mpy_32(k.hi, k.lo, Ah[i - j], Al[i - j]), L_Comp(Ah[j], Al[j]));
            L_Extract(t0, Anh[j], Anl[j]);
        }
        L_Extract(L_shr(t2, 4), Anh[i], Anl[i]);
        f = one_minus_square(k.hi, k.lo);
        t0 = Mpy_32(alp.hi, alp.lo, f.hi, f.lo);
        const Word16 n = norm_l(t0);
        alp = L_Extract(L_shl(t0, n));
        alp_exp = add(alp_exp, n);
        for (int j = 1; j <= i; ++j) {
            Ah[j] = Anh[j];
            Al[j] = Anl[j];
        }
    }
    A[0] = 4096;
    for (int i = 1; i <= m; ++i) A[i] = round_fx(L_shl(L_Comp(Ah[i], Al[i]), 1));
    return true;
}

}  // namespace

ZepStatus zepsLevinsonDurbin_G729E_16s(int order, const Zep16s* pRh, const Zep16s* pRl, Zep16s* pLPC, Zep16s* pRC,
                                       Zep16s* pSrcDstOldLPC, Zep16s* pSrcDstOldRC) {
    if (any_null(pRh, pRl, pLPC, pRC, pSrcDstOldLPC, pSrcDstOldRC)) return zepStsNullPtrErr;
    if (!in_range(order, 2, kMaxOrder)) return zepStsRangeErr;
    if (pRh[0] < 16384 || pRl[0] < 0) return zepStsRangeErr;
    Word16 a[kMaxOrder + 1], rc[kMaxOrder] = {};
    if (!levinsone(order, pRh, pRl, a, rc)) {
        std::memcpy(pLPC, pSrcDstOldLPC, (order + 1) * sizeof(Zep16s));
        rc[0] = pSrcDstOldRC[0];
        rc[1] = pSrcDstOldRC[1];
        std::memcpy(pRC, rc, order * sizeof(Zep16s));
        return zepStsOverflow;
    }
    std::memcpy(pLPC, a, (order + 1) * sizeof(Zep16s));
    std::memcpy(pRC, rc, order * sizeof(Zep16s));
    std::memcpy(pSrcDstOldLPC, a, (order + 1) * sizeof(Zep16s));
    pSrcDstOldRC[0] = rc[0];
    pSrcDstOldRC[1] = rc[1];
    return zepStsNoErr;
}

ZEPS_END_VARIANT

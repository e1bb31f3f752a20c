/* SPDX-License-Identifier: BSD-3-Clause */
// Table-interpolated fixed-point functions of the ITU-T G.729 reference
// (dspfunc.c: Inv_sqrt, Log2, Pow2), which 3GPP TS 26.073 (inv_sqrt.c,
// log2.c, pow2.c) computes identically.
#pragma once

#include "common/basic_op.h"
#include "common/common_tables.h"

ZEPS_BEGIN_VARIANT

/// 1/sqrt(L_x) in Q30 for L_x in Q0; 0x3fffffff for L_x <= 0.
inline Word32 Inv_sqrt(Word32 L_x) {
    if (L_x <= 0) return 0x3fffffff;
    Word16 exp = norm_l(L_x);
    L_x = L_shl(L_x, exp);
    exp = sub(30, exp);
    if ((exp & 1) == 0) L_x = L_shr(L_x, 1);
    exp = add(shr(exp, 1), 1);
    L_x = L_shr(L_x, 9);
    const Word16 i = sub(extract_h(L_x), 16);  // b25..b31, 16..63 after normalisation
    const Word16 a = static_cast<Word16>(extract_l(L_shr(L_x, 1)) & 0x7fff);
    Word32 y = L_deposit_h(tabsqr[i]);
    y = L_msu(y, sub(tabsqr[i], tabsqr[i + 1]), a);
    return L_shr(y, exp);
}

/// log2 of an already normalised L_x (the 3GPP Log2_norm): exponent = 30 - exp,
/// fraction in Q15.
inline void Log2_norm(Word32 L_x, Word16 exp, Word16& exponent, Word16& fraction) {
    if (L_x <= 0) {
        exponent = 0;
        fraction = 0;
        return;
    }
    exponent = sub(30, exp);
    L_x = L_shr(L_x, 9);
    const Word16 i = sub(extract_h(L_x), 32);  // b25..b31, 32..63
    const Word16 a = static_cast<Word16>(extract_l(L_shr(L_x, 1)) & 0x7fff);
    Word32 y = L_deposit_h(tablog[i]);
    y = L_msu(y, sub(tablog[i], tablog[i + 1]), a);
    fraction = extract_h(y);
}

/// log2(L_x) split into integer exponent (Q0) and fraction (Q15); 0, 0 for L_x <= 0.
inline void Log2(Word32 L_x, Word16& exponent, Word16& fraction) {
    if (L_x <= 0) {
        exponent = 0;
        fraction = 0;
        return;
    }
    const Word16 exp = norm_l(L_x);
    Log2_norm(L_shl(L_x, exp), exp, exponent, fraction);
}

/// 2^(exponent.fraction), exponent 0..30 in Q0 and fraction in Q15.
inline Word32 Pow2(Word16 exponent, Word16 fraction) {
    Word32 L_x = L_mult(fraction, 32);
    const Word16 i = extract_h(L_x);  // b10..b15 of fraction
    L_x = L_shr(L_x, 1);
    const Word16 a = static_cast<Word16>(extract_l(L_x) & 0x7fff);  // b0..b9
    L_x = L_deposit_h(tabpow[i]);
    L_x = L_msu(L_x, sub(tabpow[i], tabpow[i + 1]), a);
    return L_shr_r(L_x, sub(30, exponent));
}

ZEPS_END_VARIANT

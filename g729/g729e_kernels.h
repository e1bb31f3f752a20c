/* SPDX-License-Identifier: BSD-3-Clause */
// Private kernels of the G.729 Annex E stages (ITU-T G.729 Annex E, filtere.c
// and lpcfunc.c): the synthesis filter 1/A(z), the inverse filter A(z) and
// the bandwidth expansion A(z/gamma) of any order up to 30 (Syn_filte,
// Residue, Weight_Az with its order argument). LP coefficients Q12, gamma
// Q15, signals Q0.
#pragma once

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace g729e {

inline constexpr int kMaxOrder = 30;  // M_BWD
inline constexpr int kSubfr = 40;     // L_SUBFR

/// Syn_filte: y = x / A(z) of order m with the memory mem[0..m-1] (oldest
/// first); y may equal x. The memory is not touched. Returns true when a
/// basic operator saturated (the reference's Overflow flag).
inline bool syn_filte(int m, const Word16* a, const Word16* x, Word16* y, int lg, const Word16* mem) {
    Word16 hist[kMaxOrder];
    for (int i = 0; i < m; ++i) hist[i] = mem[i];
    Flag ovf = false;
    for (int i = 0; i < lg; ++i) {
        Word32 s = L_mult(x[i], a[0], ovf);
        for (int j = 1; j <= m; ++j) s = L_msu(s, a[j], i - j >= 0 ? y[i - j] : hist[m + i - j], ovf);
        s = L_shl(s, 3, ovf);
        y[i] = round_fx(s, ovf);
    }
    return ovf;
}

/// Residue: y = A(z) x of order m; x[-m..-1] are read.
inline void residue(int m, const Word16* a, const Word16* x, Word16* y, int lg) {
    for (int i = 0; i < lg; ++i) {
        Word32 s = L_mult(x[i], a[0]);
        for (int j = 1; j <= m; ++j) s = L_mac(s, a[j], x[i - j]);
        y[i] = round_fx(L_shl(s, 3));
    }
}

/// Weight_Az of order m: ap[i] = a[i] * gamma^i (Q12); ap may equal a.
inline void weight_az(const Word16* a, Word16 gamma, int m, Word16* ap) {
    ap[0] = a[0];
    Word16 fac = gamma;
    for (int i = 1; i < m; ++i) {
        ap[i] = round_fx(L_mult(a[i], fac));
        fac = round_fx(L_mult(fac, gamma));
    }
    ap[m] = round_fx(L_mult(a[m], fac));
}

}  // namespace g729e
ZEPS_END_VARIANT

/* SPDX-License-Identifier: BSD-3-Clause */
// Exactness bounds of the multiply-accumulate chains of the GSM-AMR decoder
// (3GPP TS 26.073 residu.c, syn_filt.c, pred_lt.c, agc.c). A chain
// s = L_mac(... L_mac(L_mult(a0, x0), a1, x1) ..., an, xn) has terms 2 ak xk;
// when the sum of their magnitudes is at most MAX_32, no partial sum and no
// L_mult can saturate, and the chain equals the plain integer sum. The fast
// forms below take that path only when these bounds hold on the actual
// operands; otherwise they run the saturating chain.
#pragma once

#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

/// |v| as a 32-bit value (32768 for -32768).
constexpr std::int32_t mag(Word16 v) { return v < 0 ? -std::int32_t{v} : std::int32_t{v}; }

/// Sum of |a[0..n-1]|.
inline std::int32_t mag_sum(const Word16* a, int n) {
    std::int32_t s = 0;
    for (int i = 0; i < n; i++) s += mag(a[i]);
    return s;
}

/// max |x[0..n-1]| (0 for n <= 0).
inline std::int32_t mag_max(const Word16* x, int n) {
    std::int32_t m = 0;
    for (int i = 0; i < n; i++) m = m > mag(x[i]) ? m : mag(x[i]);
    return m;
}

/// True when 2 * weight * m cannot exceed MAX_32: a chain whose terms have
/// magnitudes summing to at most weight * m (Q0 products) cannot saturate.
constexpr bool chain_exact(std::int64_t weight, std::int64_t m) { return 2 * weight * m <= MAX_32; }

/// Sum of squares L_mac(... L_mult(x0, x0) ..., xn, xn): the terms are not
/// negative, so the saturating chain is the plain sum clamped at MAX_32.
/// With shift, of the samples x >> shift.
inline Word32 energy_sat(const Word16* x, int n, int shift = 0) {
    std::int64_t s = 0;
    for (int i = 0; i < n; i++) {
        const std::int64_t v = x[i] >> shift;
        s += 2 * v * v;
    }
    return s > MAX_32 ? MAX_32 : static_cast<Word32>(s);
}

}  // namespace amr_dec
ZEPS_END_VARIANT

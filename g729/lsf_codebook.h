/* SPDX-License-Identifier: BSD-3-Clause */
// Internal routines of the G.729 LSF quantiser and decoder (3.2.4, 4.1.1:
// lspgetq.c): codebook vector reconstruction, gap expansion, MA prediction
// and its memory, stability. LSFs and codebook vectors Q13, MA coefficients
// Q15, fg_sum_inv Q12.
#pragma once

#include <cstdint>

#include "common/basic_op.h"
#include "common/fast_ops.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT

inline constexpr int kLpcOrder = 10;
inline constexpr int kMaOrder = 4;
inline constexpr Word16 kGap1 = 10;
inline constexpr Word16 kGap2 = 5;
inline constexpr Word16 kGap3 = 321;
inline constexpr Word16 kLsfLowLimit = 40;
inline constexpr Word16 kLsfHighLimit = 25681;

/// Minimum-distance expansion of buf[first-1..last] (Lsp_expand_1/_2/_1_2).
inline void lsp_expand(Word16* buf, Word16 gap, int first, int last) {
    for (int j = first; j <= last; ++j) {
        const Word16 tmp = shr(add(sub(buf[j - 1], buf[j]), gap), 1);
        if (tmp > 0) {
            buf[j - 1] = sub(buf[j - 1], tmp);
            buf[j] = add(buf[j], tmp);
        }
    }
}

/// Codebook vector of (L1, L2, L3) with both expansions (the start of Lsp_get_quant).
inline void lsp_codebook_vector(int l1, int l2, int l3, Word16* buf) {
    for (int j = 0; j < 5; ++j) buf[j] = add(lspcb1[l1][j], lspcb2[l2][j]);
    for (int j = 5; j < kLpcOrder; ++j) buf[j] = add(lspcb1[l1][j], lspcb2[l3][j]);
    lsp_expand(buf, kGap1, 1, kLpcOrder - 1);
    lsp_expand(buf, kGap2, 1, kLpcOrder - 1);
}

inline constexpr Word16 kPi04 = 1029;     // pi * 0.04 in Q13
inline constexpr Word16 kPi92 = 23677;    // pi * 0.92 in Q13
inline constexpr Word16 kConst10 = 20480; // 10.0 in Q11
inline constexpr Word16 kConst12 = 19661; // 1.2 in Q14

/// Get_wegt: weighting coefficients (normalised Q11) from the LSF distances.
inline void get_wegt(const Word16* lsf, Word16* w) {
    Word16 buf[kLpcOrder];
    buf[0] = sub(lsf[1], kPi04 + 8192);
    for (int i = 1; i < kLpcOrder - 1; ++i) buf[i] = sub(sub(lsf[i + 1], lsf[i - 1]), 8192);
    buf[kLpcOrder - 1] = sub(kPi92 - 8192, lsf[kLpcOrder - 2]);
    for (int i = 0; i < kLpcOrder; ++i) {
        if (buf[i] > 0) {
            w[i] = 2048;
        } else {
            Word16 tmp = extract_h(L_shl_fast(L_mult(buf[i], buf[i]), 2));
            tmp = extract_h(L_shl_fast(L_mult(tmp, kConst10), 2));
            w[i] = add(tmp, 2048);
        }
    }
    w[4] = extract_h(L_shl_fast(L_mult(w[4], kConst12), 1));
    w[5] = extract_h(L_shl_fast(L_mult(w[5], kConst12), 1));
    Word16 wmax = 0;
    for (int i = 0; i < kLpcOrder; ++i)
        if (w[i] > wmax) wmax = w[i];
    const Word16 sft = norm_s_fast(wmax);
    for (int i = 0; i < kLpcOrder; ++i) w[i] = shl(w[i], sft);
}

/// Lsp_prev_extract: the codebook target of lsf under MA mode `mode`.
inline void lsp_prev_extract(const Word16* lsf, Word16* ele, int mode, const Word16* prev) {
    for (int j = 0; j < kLpcOrder; ++j) {
        Word32 t = L_deposit_h(lsf[j]);
        for (int k = 0; k < kMaOrder; ++k) t = L_msu(t, prev[k * kLpcOrder + j], fg[mode][k][j]);
        const Word16 tmp = extract_h(t);
        ele[j] = extract_h(L_shl_fast(L_mult(tmp, fg_sum_inv[mode][j]), 3));
    }
}

/// Lsp_prev_update: shift the memory one row and store ele as the newest.
inline void lsp_prev_update(const Word16* ele, Word16* prev) {
    for (int k = kMaOrder - 1; k > 0; --k)
        for (int j = 0; j < kLpcOrder; ++j) prev[k * kLpcOrder + j] = prev[(k - 1) * kLpcOrder + j];
    for (int j = 0; j < kLpcOrder; ++j) prev[j] = ele[j];
}

/// Lsp_prev_compose with the reference's L_mult / L_mac chain (the baseline
/// of lsp_prev_compose).
inline void lsp_prev_compose_chain(const Word16* ele, Word16* lsf, int mode, const Word16* prev) {
    for (int j = 0; j < kLpcOrder; ++j) {
        Word32 acc = L_mult(ele[j], fg_sum[mode][j]);
        for (int k = 0; k < kMaOrder; ++k) acc = L_mac(acc, prev[k * kLpcOrder + j], fg[mode][k][j]);
        lsf[j] = extract_h(acc);
    }
}

/// Lsp_prev_compose: MA prediction plus the codebook vector. For every mode
/// and coefficient fg_sum + sum |fg| <= 32767 (the tests hold the tables to
/// it), so each partial sum of the chain is below 2 * 32768 * 32767 in
/// magnitude: no L_mult or L_mac saturates and the chain is the plain
/// doubled sum, for any Word16 inputs.
inline void lsp_prev_compose(const Word16* ele, Word16* lsf, int mode, const Word16* prev) {
    for (int j = 0; j < kLpcOrder; ++j) {
        std::int32_t acc = std::int32_t{ele[j]} * fg_sum[mode][j];
        for (int k = 0; k < kMaOrder; ++k) acc += std::int32_t{prev[k * kLpcOrder + j]} * fg[mode][k][j];
        lsf[j] = extract_h(2 * acc);
    }
}

/// Lsp_stability; returns 0, or 13/14/15 for the low, high or both corrections.
inline int lsp_stability(Word16* buf) {
    for (int j = 0; j < kLpcOrder - 1; ++j) {
        if (buf[j + 1] < buf[j]) {
            const Word16 t = buf[j + 1];
            buf[j + 1] = buf[j];
            buf[j] = t;
        }
    }
    int status = 0;
    if (buf[0] < kLsfLowLimit) {
        buf[0] = kLsfLowLimit;
        status = 13;
    }
    for (int j = 0; j < kLpcOrder - 1; ++j) {
        if (Word32{buf[j + 1]} - buf[j] < kGap3) buf[j + 1] = add(buf[j], kGap3);
    }
    if (buf[kLpcOrder - 1] > kLsfHighLimit) {
        buf[kLpcOrder - 1] = kLsfHighLimit;
        status = status ? 15 : 14;
    }
    return status;
}

/// Lsp_get_quant: decodes (mode, L1, L2, L3), updates prev, writes lsf; returns lsp_stability's code.
inline int lsp_get_quant(int mode, int l1, int l2, int l3, Word16* prev, Word16* lsf) {
    Word16 buf[kLpcOrder];
    lsp_codebook_vector(l1, l2, l3, buf);
    lsp_prev_compose(buf, lsf, mode, prev);
    lsp_prev_update(buf, prev);
    return lsp_stability(lsf);
}

ZEPS_END_VARIANT

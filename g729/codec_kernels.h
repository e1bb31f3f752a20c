/* SPDX-License-Identifier: BSD-3-Clause */
// Private kernels shared by the G.729 excitation, gain, synthesis and
// post-filter stages (ITU-T G.729 3.8 - 4.2): the order-10 synthesis filter
// (Syn_filt, from common/syn_filt10.h, which GSM-AMR shares) and inverse
// filter (Residu), bandwidth expansion (Weight_Az), the MA code-gain
// predictor (Gain_predict, Gain_update, Gain_update_erasure).
//
// Q formats: LP coefficients Q12, bandwidth factors Q15, signals Q0,
// fixed-codebook vectors Q13, past quantised energies Q10, code gains Q1,
// pitch gains Q14.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/basic_op.h"
#include "common/fixed_math.h"
#include "common/syn_filt10.h"
#include "g729/g729_codec_tables.h"
#include "common/pitch_simd.h"

ZEPS_BEGIN_VARIANT
namespace g729c {

inline constexpr int kOrder = 10;   // M
inline constexpr int kSubfr = 40;   // L_SUBFR
inline constexpr int kPitMin = 20;  // PIT_MIN
inline constexpr int kPitMax = 143; // PIT_MAX

/// t0_min of the second subframe's delay code (Dec_lag3, Enc_lag3 and their
/// Annex D forms): 5 below the first subframe's integer delay t0, the
/// 10-delay range kept within PIT_MIN..PIT_MAX.
inline Word16 second_subframe_t0_min(Word16 t0) {
    Word16 t0_min = sub(t0, 5);
    if (t0_min < kPitMin) t0_min = kPitMin;
    if (add(t0_min, 9) > kPitMax) t0_min = kPitMax - 9;
    return t0_min;
}

using syn10::syn_filt;
#if defined(__SSSE3__)
using syn10::syn_filt_lanes;
#endif
using syn10::syn_filt_scalar;

/// Residu: y = A(z) x, a Q12; x[-10..-1] are read. While 2 * sum|a| *
/// max|x| stays within 31 bits the L_mult / L_mac chain is a plain sum.
inline void residu(const Word16* a, const Word16* x, Word16* y, int lg) {
    std::int64_t sum_a = 0;
    for (int j = 0; j <= kOrder; ++j) sum_a += a[j] < 0 ? -std::int64_t{a[j]} : a[j];
    std::int64_t peak = 0;
    for (int i = -kOrder; i < lg; ++i) peak = std::max<std::int64_t>(peak, x[i] < 0 ? -std::int64_t{x[i]} : x[i]);
    const bool plain = 2 * sum_a * peak <= MAX_32;
    for (int i = 0; i < lg; ++i) {
        Word32 s;
        if (plain) {
            s = 2 * Word32{a[0]} * x[i];
            for (int j = 1; j <= kOrder; ++j) s += 2 * Word32{a[j]} * x[i - j];
        } else {
            s = L_mult(x[i], a[0]);
            for (int j = 1; j <= kOrder; ++j) s = L_mac(s, a[j], x[i - j]);
        }
        y[i] = round_fx(L_shl(s, 3));
    }
}

/// Sum of L_mac(a[k], b[k]) over n terms, each partial sum as the reference's
/// saturating chain leaves it; when bound_ok (2 sum|a b| proven below 2^31)
/// the plain sum is that value.
inline Word32 mac_sum(Word32 init, const Word16* a, const Word16* b, int n, bool bound_ok) {
    if (bound_ok) {
        Word32 s = 0;
        for (int k = 0; k < n; ++k) s += Word32{a[k]} * b[k];
        return init + 2 * s;
    }
    Word32 s = init;
    for (int k = 0; k < n; ++k) s = L_mac(s, a[k], b[k]);
    return s;
}

/// Weight_Az: ap[i] = a[i] * gamma^i (Q12), order 10.
inline void weight_az(const Word16* a, Word16 gamma, Word16* ap) {
    ap[0] = a[0];
    Word16 fac = gamma;
    for (int i = 1; i < kOrder; ++i) {
        ap[i] = round_fx(L_mult(a[i], fac));
        fac = round_fx(L_mult(fac, gamma));
    }
    ap[kOrder] = round_fx(L_mult(a[kOrder], fac));
}

/// Gain_predict: predicted code gain gcode0 with its Q format exp_gcode0
/// from the innovation energy of code (Q13, 40 samples) and past_qua_en (Q10).
/// The innovation energy of Gain_predict, the L_mac(code[i], code[i]) chain
/// from 0 over 40 samples, as the reference's operators leave it.
inline Word32 code_energy_chain(const Word16* code) {
    Word32 L_tmp = 0;
    for (int i = 0; i < kSubfr; ++i) L_tmp = L_mac(L_tmp, code[i], code[i]);
    return L_tmp;
}

/// The same value from the exact sum: every term of the chain is
/// non-negative, so its partial sums only grow and, once one saturates, the
/// rest stay at MAX_32: the chain is the exact sum clamped at MAX_32.
inline Word32 code_energy(const Word16* code) {
    const std::int64_t e = 2 * g729p::energy64(code, kSubfr);
    return e > MAX_32 ? MAX_32 : static_cast<Word32>(e);
}

inline void gain_predict(const Word16* past_qua_en, const Word16* code, Word16& gcode0, Word16& exp_gcode0) {
    Word32 L_tmp = code_energy(code);
    Word16 exp, frac;
    Log2(L_tmp, exp, frac);
    L_tmp = Mpy_32_16(exp, frac, -24660);
    L_tmp = L_mac(L_tmp, 32588, 32);
    L_tmp = L_shl(L_tmp, 10);
    for (int i = 0; i < 4; ++i) L_tmp = L_mac(L_tmp, pred[i], past_qua_en[i]);
    gcode0 = extract_h(L_tmp);
    L_tmp = L_mult(gcode0, 5439);
    L_tmp = L_shr(L_tmp, 8);
    L_Extract(L_tmp, exp, frac);
    gcode0 = extract_l(Pow2(14, frac));
    exp_gcode0 = sub(14, exp);
}

/// Gain_update: shifts past_qua_en and stores 20 log10 of the codebook
/// correction L_gbk12 (Q13) in Q10.
inline void gain_update(Word16* past_qua_en, Word32 L_gbk12) {
    for (int i = 3; i > 0; --i) past_qua_en[i] = past_qua_en[i - 1];
    Word16 exp, frac;
    Log2(L_gbk12, exp, frac);
    const Word32 L_acc = L_Comp(sub(exp, 13), frac);
    const Word16 tmp = extract_h(L_shl(L_acc, 13));
    past_qua_en[0] = mult(tmp, 24660);
}

/// Gain_update_erasure: the mean of past_qua_en minus 4 dB, at least -14 dB.
inline void gain_update_erasure(Word16* past_qua_en) {
    Word32 L_tmp = 0;
    for (int i = 0; i < 4; ++i) L_tmp = L_add(L_tmp, L_deposit_l(past_qua_en[i]));
    Word16 av = extract_l(L_shr(L_tmp, 2));
    av = sub(av, 4096);
    if (av < -14336) av = -14336;
    for (int i = 3; i > 0; --i) past_qua_en[i] = past_qua_en[i - 1];
    past_qua_en[0] = av;
}

/// The code gain (Q1) from the predicted gain and the Q13 correction L_gbk12
/// (the last step of Dec_gain and of Qua_gain).
inline Word16 code_gain(Word32 L_gbk12, Word16 gcode0, Word16 exp_gcode0) {
    const Word16 tmp = extract_l(L_shr(L_gbk12, 1));
    Word32 L_acc = L_mult(tmp, gcode0);
    L_acc = L_shl(L_acc, add(negate(exp_gcode0), -12 - 1 + 1 + 16));
    return extract_h(L_acc);
}

}  // namespace g729c
ZEPS_END_VARIANT

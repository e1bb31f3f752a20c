// SPDX-License-Identifier: BSD-3-Clause
// G.729 Levinson-Durbin recursion in double precision (3.2.2, Levinson; the
// residual energy output of Annex B), generalised to orders 1..30.
// Autocorrelations Q31 (hi/lo), reflection coefficients Q31 -> Q15 output,
// LP coefficients Q27 internally -> Q12 output.
#include <utility>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fast_ops.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kMaxOrder = 30;

/// 1 - K^2 of a reflection coefficient K in hi/lo (Q31), |kh| <= kStableK.
inline DPF one_minus_square(Word16 kh, Word16 kl) {
    Word32 t = L_abs(Mpy_32_bounded(kh, kl, kh, kl));
    return L_Extract_fast(L_sub(MAX_32, t));
}

/// The recursion; false (nothing written) when unstable.
bool levinson(const Zep32s* r, int order, Zep16s* lpc, Zep16s* rc, int rcCount, Zep16s* err) {
    Word16 Rh[kMaxOrder + 1], Rl[kMaxOrder + 1];
    for (int i = 0; i <= order; ++i) L_Extract_fast(r[i], Rh[i], Rl[i]);
    // A and the next A in two buffers that swap roles each order (no copy).
    Word16 bufh[2][kMaxOrder + 1] = {}, bufl[2][kMaxOrder + 1] = {};
    Word16 *Ah = bufh[0], *Al = bufl[0], *Anh = bufh[1], *Anl = bufl[1];
    Word16 k_out[kMaxOrder];

    // K = A[1] = -R[1] / R[0]
    Word32 t1 = L_Comp_fast(Rh[1], Rl[1]);
    Word32 t0 = Div_32_fast(L_abs(t1), Rh[0], Rl[0]);
    if (t1 > 0) t0 = L_negate(t0);
    Word16 Kh, Kl;
    L_Extract_fast(t0, Kh, Kl);
    if (abs_s(Kh) > kStableK) return false;
    k_out[0] = Kh;
    L_Extract_fast(L_shr(t0, 4), Ah[1], Al[1]);
    // Alpha = R[0] * (1 - K^2), normalised
    const DPF f = one_minus_square(Kh, Kl);
    t0 = Mpy_32_fast(Rh[0], Rl[0], f.hi, f.lo);
    Word16 alp_exp = norm_l_fast(t0);
    Word16 alp_h, alp_l;
    L_Extract_fast(L_shl_fast(t0, alp_exp), alp_h, alp_l);

    for (int i = 2; i <= order; ++i) {
        t0 = L_shl_fast(levinson_recursion_sum(Rh, Rl, Ah, Al, i), 4);
        t0 = L_add(t0, L_Comp_fast(Rh[i], Rl[i]));
        Word32 t2 = Div_32_fast(L_abs(t0), alp_h, alp_l);
        if (t0 > 0) t2 = L_negate(t2);
        t2 = L_shl_fast(t2, alp_exp);
        L_Extract_fast(t2, Kh, Kl);
        if (abs_s(Kh) > kStableK) return false;
        k_out[i - 1] = Kh;
        levinson_next_coefficients(Kh, Kl, t2, Ah, Al, Anh, Anl, i);
        levinson_next_alpha(Kh, Kl, alp_h, alp_l, alp_exp);
        std::swap(Ah, Anh);
        std::swap(Al, Anl);
    }
    lpc[0] = 4096;
    for (int i = 1; i <= order; ++i) lpc[i] = round_fx(L_shl_fast(L_Comp_fast(Ah[i], Al[i]), 1));
    for (int i = 0; i < rcCount; ++i) rc[i] = k_out[i];
    *err = shr(alp_h, alp_exp);
    return true;
}

ZepStatus levinson_checked(const Zep32s* r, int order, Zep16s* lpc, Zep16s* rc, int rcCount, Zep16s* err) {
    if (L_abs(r[0]) < 65536) return zepStsOverflow;
    return levinson(r, order, lpc, rc, rcCount, err) ? zepStsNoErr : zepStsOverflow;
}

}  // namespace

ZepStatus zepsLevinsonDurbin_G729_32s16s(const Zep32s* pSrcAutoCorr, int order, Zep16s* pDstLPC, Zep16s* pDstRC,
                                         Zep16s* pResultResidualEnergy) {
    if (any_null(pSrcAutoCorr, pDstLPC, pDstRC, pResultResidualEnergy)) return zepStsNullPtrErr;
    if (order < 1 || order > kMaxOrder) return zepStsRangeErr;
    return levinson_checked(pSrcAutoCorr, order, pDstLPC, pDstRC, order, pResultResidualEnergy);
}

ZepStatus zepsLevinsonDurbin_G729B(const Zep32s* pSrcAutoCorr, Zep16s* pDstLPC, Zep16s* pDstRC,
                                   Zep16s* pResultResidualEnergy) {
    if (any_null(pDstRC)) return zepStsNullPtrErr;
    if (any_null(pSrcAutoCorr, pDstLPC, pResultResidualEnergy)) return zepStsNullPtrErr;
    return levinson_checked(pSrcAutoCorr, 10, pDstLPC, pDstRC, 2, pResultResidualEnergy);
}

ZEPS_END_VARIANT

/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR encoder LP analysis (3GPP TS 26.073 autocorr.c, levinson.c,
// az_lsp.c, int_lpc.c Int_lpc_1and3_2 / Int_lpc_1to3_2, ton_stab.c).
//
// Formats: autocorrelations normalised 32-bit in double precision
// (r_h << 16) + (r_l << 1), LP coefficients Q12 with a[0] = 4096, LSPs Q15.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>

#include "amr/dec_lpc.h"
#include "common/fast_ops.h"
#include "common/pitch_simd.h"
#include "g729/g729_tables.h"
#include "g729/lp_kernels.h"

ZEPS_BEGIN_VARIANT
namespace amr_enc {

using namespace amr_dec;

inline constexpr int kLWindow = 240;  ///< L_WINDOW

/// Autocorr: the window applied with mult_r, r[0] recomputed on y >> 2 while
/// it saturates, plus 1, normalised; r[1..10] with the same shift.
/// Reference loops.
inline void autocorr_scalar(const Word16* x, const std::int16_t* wind, Word32* r) {
    Word16 y[kLWindow];
    for (int i = 0; i < kLWindow; i++) y[i] = mult_r(x[i], wind[i]);
    Word32 sum;
    for (;;) {
        sum = 0;
        for (int i = 0; i < kLWindow; i++) sum = L_mac(sum, y[i], y[i]);
        if (sum != MAX_32) break;
        for (int i = 0; i < kLWindow; i++) y[i] = shr(y[i], 2);
    }
    sum = L_add(sum, 1);
    const Word16 norm = norm_l(sum);
    const DPF r0 = L_Extract(L_shl(sum, norm));
    r[0] = L_Comp(r0.hi, r0.lo);
    for (int i = 1; i <= kM; i++) {
        Word32 s = 0;
        for (int j = 0; j < kLWindow - i; j++) s = L_mac(s, y[j], y[j + i]);
        const DPF ri = L_Extract(L_shl(s, norm));
        r[i] = L_Comp(ri.hi, ri.lo);
    }
}

/// Autocorr as computed. The energy is a chain of non-negative terms, so it
/// saturates exactly when its exact 64-bit sum passes MAX_32. Once 2 sum y^2
/// fits, every lag sum does at every partial sum (sum |y_j y_j+i| <= sum
/// y^2), so the lags are exact in 32-bit lanes; y is zero-padded so each lag
/// is a 240-sample dot product.
inline void autocorr(const Word16* x, const std::int16_t* wind, Word32* r) {
    alignas(16) Word16 y[kLWindow + 16] = {};
    for (int i = 0; i < kLWindow; i++) y[i] = mult_r(x[i], wind[i]);
    std::int64_t e = g729p::energy64(y, kLWindow);
    while (2 * e >= MAX_32) {
        for (int i = 0; i < kLWindow; i++) y[i] = shr(y[i], 2);
        e = g729p::energy64(y, kLWindow);
    }
    const Word32 sum = L_add(static_cast<Word32>(2 * e), 1);
    const Word16 norm = norm_l(sum);
    const DPF r0 = L_Extract(L_shl(sum, norm));
    r[0] = L_Comp(r0.hi, r0.lo);
    for (int i = 1; i <= kM; i++) {
        const Word32 s = 2 * g729p::dot_lanes(y, y + i, kLWindow);
        const DPF ri = L_Extract(L_shl(s, norm));
        r[i] = L_Comp(ri.hi, ri.lo);
    }
}

/// Levinson: order-10 recursion in double precision; when a reflection
/// coefficient from the second on exceeds 32750 in magnitude the previous
/// filter old_A is returned and rc[0..3] cleared; otherwise old_A becomes A.
/// Reference operators (the baseline of levinson).
inline void levinson_scalar(Word16* old_A, const Word32* r, Word16* A, Word16* rc) {
    Word16 Rh[kMp1], Rl[kMp1];
    for (int i = 0; i <= kM; i++) L_Extract(r[i], Rh[i], Rl[i]);
    Word16 Ah[kMp1], Al[kMp1], Anh[kMp1], Anl[kMp1];
    Word16 Kh, Kl, hi, lo, alp_h, alp_l;
    Word32 t1 = L_Comp(Rh[1], Rl[1]);
    Word32 t0 = Div_32(L_abs(t1), Rh[0], Rl[0]);
    if (t1 > 0) t0 = L_negate(t0);
    L_Extract(t0, Kh, Kl);
    rc[0] = round_fx(t0);
    L_Extract(L_shr(t0, 4), Ah[1], Al[1]);
    t0 = L_sub(MAX_32, L_abs(Mpy_32(Kh, Kl, Kh, Kl)));
    L_Extract(t0, hi, lo);
    t0 = Mpy_32(Rh[0], Rl[0], hi, lo);
    Word16 alp_exp = norm_l(t0);
    L_Extract(L_shl(t0, alp_exp), alp_h, alp_l);
    for (int i = 2; i <= kM; i++) {
        t0 = 0;
        for (int j = 1; j < i; j++) t0 = L_add(t0, Mpy_32(Rh[j], Rl[j], Ah[i - j], Al[i - j]));
        t0 = L_add(L_shl(t0, 4), L_Comp(Rh[i], Rl[i]));
        Word32 t2 = Div_32(L_abs(t0), alp_h, alp_l);
        if (t0 > 0) t2 = L_negate(t2);
        t2 = L_shl(t2, alp_exp);
        L_Extract(t2, Kh, Kl);
        if (i < 5) rc[i - 1] = round_fx(t2);
        if (abs_s(Kh) > 32750) {
            for (int j = 0; j <= kM; j++) A[j] = old_A[j];
            for (int j = 0; j < 4; j++) rc[j] = 0;
            return;
        }
        for (int j = 1; j < i; j++) {
            t0 = L_add(Mpy_32(Kh, Kl, Ah[i - j], Al[i - j]), L_Comp(Ah[j], Al[j]));
            L_Extract(t0, Anh[j], Anl[j]);
        }
        L_Extract(L_shr(t2, 4), Anh[i], Anl[i]);
        t0 = L_sub(MAX_32, L_abs(Mpy_32(Kh, Kl, Kh, Kl)));
        L_Extract(t0, hi, lo);
        t0 = Mpy_32(alp_h, alp_l, hi, lo);
        const Word16 j = norm_l(t0);
        L_Extract(L_shl(t0, j), alp_h, alp_l);
        alp_exp = add(alp_exp, j);
        for (int k = 1; k <= i; k++) {
            Ah[k] = Anh[k];
            Al[k] = Anl[k];
        }
    }
    A[0] = 4096;
    for (int i = 1; i <= kM; i++) old_A[i] = A[i] = round_fx(L_shl(L_Comp(Ah[i], Al[i]), 1));
    old_A[0] = 4096;
}

/// levinson_scalar with the operators of common/fast_ops.h, each equal to the
/// reference operator for the operands it meets here: every lo half comes
/// from L_Extract (0..32767), so Mpy_32_fast and Div_32_fast hold; the
/// recursion sum is the checked plain sum (the chain where its bound fails);
/// alp_exp, a sum of norm_l counts, is never negative for L_shl_fast. The
/// first coefficient is not tested for stability, so its 1 - K^2 takes
/// Mpy_32_fast; the later ones passed |Kh| <= 32750, so their products take
/// Mpy_32_bounded, and A[j] + K A[i-j] is the clamped 64-bit sum (L_Comp of
/// an extracted pair cannot saturate, the L_add clamps). A and the next A
/// swap buffers instead of being copied.
inline void levinson(Word16* old_A, const Word32* r, Word16* A, Word16* rc) {
    Word16 Rh[kMp1], Rl[kMp1];
    for (int i = 0; i <= kM; i++) L_Extract_fast(r[i], Rh[i], Rl[i]);
    Word16 bufh[2][kMp1] = {}, bufl[2][kMp1] = {};
    Word16 *Ah = bufh[0], *Al = bufl[0], *Anh = bufh[1], *Anl = bufl[1];
    Word16 Kh, Kl, alp_h, alp_l;
    const Word32 t1 = L_Comp_fast(Rh[1], Rl[1]);
    Word32 t0 = Div_32_fast(L_abs(t1), Rh[0], Rl[0]);
    if (t1 > 0) t0 = L_negate(t0);
    L_Extract_fast(t0, Kh, Kl);
    rc[0] = round_fx(t0);
    L_Extract_fast(L_shr(t0, 4), Ah[1], Al[1]);
    const DPF f = L_Extract_fast(L_sub(MAX_32, L_abs(Mpy_32_fast(Kh, Kl, Kh, Kl))));
    t0 = Mpy_32_fast(Rh[0], Rl[0], f.hi, f.lo);
    Word16 alp_exp = norm_l_fast(t0);
    L_Extract_fast(L_shl_fast(t0, alp_exp), alp_h, alp_l);
    for (int i = 2; i <= kM; i++) {
        t0 = L_add(L_shl_fast(levinson_recursion_sum(Rh, Rl, Ah, Al, i), 4), L_Comp_fast(Rh[i], Rl[i]));
        Word32 t2 = Div_32_fast(L_abs(t0), alp_h, alp_l);
        if (t0 > 0) t2 = L_negate(t2);
        t2 = L_shl_fast(t2, alp_exp);
        L_Extract_fast(t2, Kh, Kl);
        if (i < 5) rc[i - 1] = round_fx(t2);
        if (abs_s(Kh) > kStableK) {
            for (int j = 0; j <= kM; j++) A[j] = old_A[j];
            for (int j = 0; j < 4; j++) rc[j] = 0;
            return;
        }
        levinson_next_coefficients(Kh, Kl, t2, Ah, Al, Anh, Anl, i);
        levinson_next_alpha(Kh, Kl, alp_h, alp_l, alp_exp);
        std::swap(Ah, Anh);
        std::swap(Al, Anl);
    }
    A[0] = 4096;
    for (int i = 1; i <= kM; i++) old_A[i] = A[i] = round_fx(L_shl_fast(L_Comp_fast(Ah[i], Al[i]), 1));
    old_A[0] = 4096;
}

/// Chebps: the Chebyshev polynomial of order 5 evaluated at x (Q15), in
/// double precision, result Q8 scaled as the reference.
inline Word16 chebps(Word16 x, const Word16* f) {
    constexpr int kNC = kM / 2;
    Word16 b2_h = 256, b2_l = 0, b1_h, b1_l, b0_h, b0_l;
    Word32 t0 = L_mac(L_mult(x, 512), f[1], 8192);
    L_Extract(t0, b1_h, b1_l);
    for (int i = 2; i < kNC; i++) {
        t0 = L_shl(Mpy_32_16(b1_h, b1_l, x), 1);
        t0 = L_mac(t0, b2_h, static_cast<Word16>(-32768));
        t0 = L_msu(t0, b2_l, 1);
        t0 = L_mac(t0, f[i], 8192);
        L_Extract(t0, b0_h, b0_l);
        b2_l = b1_l;
        b2_h = b1_h;
        b1_l = b0_l;
        b1_h = b0_h;
    }
    t0 = Mpy_32_16(b1_h, b1_l, x);
    t0 = L_mac(t0, b2_h, static_cast<Word16>(-32768));
    t0 = L_msu(t0, b2_l, 1);
    t0 = L_mac(t0, f[kNC], 4096);
    return extract_h(L_shl(t0, 6));
}

/// F1(z) and F2(z) of Az_lsp, Q10 (f[0] = 1024).
inline void az_lsp_polynomials(const Word16* a, Word16* f1, Word16* f2) {
    constexpr int kNC = kM / 2;
    f1[0] = 1024;
    f2[0] = 1024;
    for (int i = 0; i < kNC; i++) {
        Word16 x = extract_h(L_mac(L_mult(a[i + 1], 8192), a[kM - i], 8192));
        f1[i + 1] = sub(x, f1[i]);
        x = extract_h(L_msu(L_mult(a[i + 1], 8192), a[kM - i], 8192));
        f2[i + 1] = add(x, f2[i]);
    }
}

/// The root search of Az_lsp on the 60-point cosine grid, each sign change
/// refined by four bisections and a linear interpolation; fewer than 10
/// roots keep old_lsp. at_grid(j, ip) is Chebps at grid point j and at(x,
/// ip) at any x, of F1 (ip 0) or F2 (ip 1).
template <class AtGrid, class At>
inline void az_lsp_roots(Word16* lsp, const Word16* old_lsp, AtGrid at_grid, At at) {
    constexpr int kGridPoints = 60;
    const std::int16_t* grid = zeps::grid;
    int nf = 0, ip = 0, j = 0;
    Word16 xlow = grid[0], ylow = at_grid(0, ip);
    while (nf < kM && j < kGridPoints) {
        j++;
        Word16 xhigh = xlow, yhigh = ylow;
        xlow = grid[j];
        ylow = at_grid(j, ip);
        if (L_mult(ylow, yhigh) > 0) continue;
        for (int i = 0; i < 4; i++) {
            const Word16 xmid = add(shr(xlow, 1), shr(xhigh, 1));
            const Word16 ymid = at(xmid, ip);
            if (L_mult(ylow, ymid) <= 0) {
                yhigh = ymid;
                xhigh = xmid;
            } else {
                ylow = ymid;
                xlow = xmid;
            }
        }
        const Word16 x = sub(xhigh, xlow);
        Word16 y = sub(yhigh, ylow);
        Word16 xint;
        if (y == 0) {
            xint = xlow;
        } else {
            const Word16 sign = y;
            y = abs_s(y);
            const Word16 exp = norm_s(y);
            y = shl(y, exp);
            y = div_s(16383, y);
            y = extract_l(L_shr(L_mult(x, y), sub(20, exp)));
            if (sign < 0) y = negate(y);
            xint = sub(xlow, extract_l(L_shr(L_mult(ylow, y), 11)));
        }
        lsp[nf++] = xint;
        xlow = xint;
        ip = 1 - ip;
        ylow = at(xlow, ip);
    }
    if (nf < kM)
        for (int i = 0; i < kM; i++) lsp[i] = old_lsp[i];
}

/// Az_lsp with every Chebyshev evaluation by the reference routine.
inline void az_lsp_scalar(const Word16* a, Word16* lsp, const Word16* old_lsp) {
    Word16 f[2][kM / 2 + 1];
    az_lsp_polynomials(a, f[0], f[1]);
    az_lsp_roots(
        lsp, old_lsp, [&](int j, int ip) { return chebps(zeps::grid[j], f[ip]); },
        [&](Word16 x, int ip) { return chebps(x, f[ip]); });
}

/// Az_lsp as computed. Chebps of the Q10 polynomial f is the ITU-T G.729
/// Chebps_11 series of 2 f (L_mac(t, f, 8192) = L_mac(t, 2 f, 4096)) while
/// 2 f fits in 16 bits; when that series provably never saturates for any
/// x, both polynomials are evaluated on the whole grid eight points at a
/// time and the bisection points in plain integer arithmetic.
inline void az_lsp(const Word16* a, Word16* lsp, const Word16* old_lsp) {
    constexpr int kNC = kM / 2, kGridPadded = 64;
    Word16 f[2][kNC + 1], g[2][kNC + 1];
    az_lsp_polynomials(a, f[0], f[1]);
    bool fast = true;
    for (int p = 0; p < 2; p++)
        for (int i = 0; i <= kNC; i++) {
            fast = fast && f[p][i] >= -16384 && f[p][i] < 16384;
            g[p][i] = static_cast<Word16>(2 * f[p][i]);
        }
    fast = fast && zeps::chebps_never_saturates(g[0], 11) && zeps::chebps_never_saturates(g[1], 11);
    if (!fast) {
        az_lsp_scalar(a, lsp, old_lsp);
        return;
    }
    alignas(16) Word16 x[kGridPadded], y[2][kGridPadded];
    for (int j = 0; j < kGridPadded; j++) x[j] = zeps::grid[std::min(j, 60)];
    for (int p = 0; p < 2; p++)
        for (int j = 0; j < kGridPadded; j += 8) zeps::chebps_x8(x + j, g[p], 11, y[p] + j);
    az_lsp_roots(
        lsp, old_lsp, [&](int j, int ip) { return y[ip][j]; },
        [&](Word16 xv, int ip) { return zeps::chebps_unsaturated(xv, g[ip], 11); });
}

/// Int_lpc_1and3_2: A(z) of subframes 1 and 3 from the LSPs halfway
/// between their neighbours (subframes 2 and 4 stay as analysed).
inline void int_lpc_1and3_2(const Word16* lsp_old, const Word16* lsp_mid, const Word16* lsp_new, Word16* Az) {
    Word16 lsp[kM];
    for (int i = 0; i < kM; i++) lsp[i] = add(shr(lsp_mid[i], 1), shr(lsp_old[i], 1));
    lsp_az(lsp, Az);
    for (int i = 0; i < kM; i++) lsp[i] = add(shr(lsp_mid[i], 1), shr(lsp_new[i], 1));
    lsp_az(lsp, Az + 2 * kMp1);
}

/// Int_lpc_1to3_2: A(z) of subframes 1..3 (subframe 4 stays as analysed).
inline void int_lpc_1to3_2(const Word16* lsp_old, const Word16* lsp_new, Word16* Az) {
    Word16 lsp[kM];
    for (int i = 0; i < kM; i++) lsp[i] = add(shr(lsp_new[i], 2), sub(lsp_old[i], shr(lsp_old[i], 2)));
    lsp_az(lsp, Az);
    for (int i = 0; i < kM; i++) lsp[i] = add(shr(lsp_old[i], 1), shr(lsp_new[i], 1));
    lsp_az(lsp, Az + kMp1);
    for (int i = 0; i < kM; i++) lsp[i] = add(shr(lsp_old[i], 2), sub(lsp_new[i], shr(lsp_new[i], 2)));
    lsp_az(lsp, Az + 2 * kMp1);
}

/// Tone-stability record of ton_stab.c: count, then the 7 past pitch gains / 8.
inline constexpr int kNFrame = 7;       ///< N_FRAME
inline constexpr Word16 kGpClip = 15565;  ///< GP_CLIP, 0.95 in Q14

/// check_lsp: 1 after 12 consecutive frames with closely spaced LSPs (resonance).
inline Word16 check_lsp(Word16* ton, const Word16* lsp) {
    Word16 dist_min1 = MAX_16, dist_min2 = MAX_16;
    for (int i = 3; i < kM - 2; i++) dist_min1 = std::min(dist_min1, sub(lsp[i], lsp[i + 1]));
    for (int i = 1; i < 3; i++) dist_min2 = std::min(dist_min2, sub(lsp[i], lsp[i + 1]));
    const Word16 dist_th = lsp[1] > 32000 ? 600 : lsp[1] > 30500 ? 800 : 1100;
    if (dist_min1 < 1500 || dist_min2 < dist_th) ton[0] = add(ton[0], 1);
    else ton[0] = 0;
    if (ton[0] >= 12) {
        ton[0] = 12;
        return 1;
    }
    return 0;
}

/// check_gp_clipping: 1 when g_pitch / 8 plus the 7 past ones exceeds GP_CLIP.
inline Word16 check_gp_clipping(const Word16* ton, Word16 g_pitch) {
    Word16 sum = shr(g_pitch, 3);
    for (int i = 0; i < kNFrame; i++) sum = add(sum, ton[1 + i]);
    return sum > kGpClip ? 1 : 0;
}

/// update_gp_clipping
inline void update_gp_clipping(Word16* ton, Word16 g_pitch) {
    for (int i = 0; i < kNFrame - 1; i++) ton[1 + i] = ton[2 + i];
    ton[kNFrame] = shr(g_pitch, 3);
}

}  // namespace amr_enc
ZEPS_END_VARIANT

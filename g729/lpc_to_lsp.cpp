// G.729 LP to LSP conversion (3.2.3, Az_lsp; Annex A A.3.2.3): roots of the
// sum and difference polynomials F1, F2 by Chebyshev evaluation on a cosine
// grid, bisection and linear interpolation. LP Q12 in, LSP Q15 out; the
// polynomials are Q11 (Q10 when Q11 overflows), Chebyshev sums Q24/Q23.
#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/fast_ops.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrder = 10;
constexpr int kHalf = 5;

/// Chebyshev series C(x) of the order-5 polynomial f (Chebps_11 for q = 11,
/// Chebps_10 for q = 10); result Q14, saturated.
Word16 chebps(Word16 x, const Word16* f, int q) {
    const Word16 one_h = q == 11 ? 256 : 128;
    const Word16 two_x = q == 11 ? 512 : 256;
    Word16 b2_h = one_h, b2_l = 0, b1_h, b1_l;
    L_Extract(L_mac(L_mult(x, two_x), f[1], 4096), b1_h, b1_l);
    for (int i = 2; i < kHalf; ++i) {
        Word32 t0 = L_shl(Mpy_32_16(b1_h, b1_l, x), 1);
        t0 = L_mac(t0, b2_h, MIN_16);
        t0 = L_msu(t0, b2_l, 1);
        t0 = L_mac(t0, f[i], 4096);
        b2_h = b1_h;
        b2_l = b1_l;
        L_Extract(t0, b1_h, b1_l);
    }
    Word32 t0 = Mpy_32_16(b1_h, b1_l, x);
    t0 = L_mac(t0, b2_h, MIN_16);
    t0 = L_msu(t0, b2_l, 1);
    t0 = L_mac(t0, f[kHalf], 2048);
    return extract_h(L_shl(t0, static_cast<Word16>(q == 11 ? 6 : 7)));
}

/// chebps computed with plain 64-bit arithmetic; every intermediate that the
/// reference saturates is range-checked, and the exact routine is used when
/// one of them leaves the 32-bit range (so the result is always chebps's).
Word16 chebps_fast(Word16 x, const Word16* f, int q) {
    const std::int64_t X = x;
    std::int64_t t = X * (q == 11 ? 1024 : 512) + std::int64_t{f[1]} * 8192;
    std::int64_t b1h = t >> 16, b1l = (t >> 1) & 0x7fff;
    std::int64_t b2h = q == 11 ? 256 : 128, b2l = 0;
    bool ok = true;
    for (int i = 2; i < kHalf; ++i) {
        const std::int64_t p1 = 2 * b1h * X;
        const std::int64_t p = p1 + 2 * ((b1l * X) >> 15);
        const std::int64_t p2 = 2 * p;
        const std::int64_t u = -65536 * b2h;
        const std::int64_t s1 = p2 + u;
        const std::int64_t s2 = s1 - 2 * b2l;
        t = s2 + std::int64_t{f[i]} * 8192;
        ok = ok & fits32(p1) & fits32(p) & fits32(p2) & fits32(u) & fits32(s1) & fits32(s2) & fits32(t);
        b2h = b1h;
        b2l = b1l;
        b1h = t >> 16;
        b1l = (t >> 1) & 0x7fff;
    }
    const std::int64_t p1 = 2 * b1h * X;
    const std::int64_t p = p1 + 2 * ((b1l * X) >> 15);
    const std::int64_t u = -65536 * b2h;
    const std::int64_t s1 = p + u;
    const std::int64_t s2 = s1 - 2 * b2l;
    t = s2 + std::int64_t{f[kHalf]} * 4096;
    ok = ok & fits32(p1) & fits32(p) & fits32(u) & fits32(s1) & fits32(s2) & fits32(t);
    if (!ok) return chebps(x, f, q);
    std::int64_t r = t * (q == 11 ? 64 : 128);
    r = r > MAX_32 ? MAX_32 : (r < MIN_32 ? MIN_32 : r);
    return static_cast<Word16>(r >> 16);
}

/// F1 and F2 in Q11; false when a coefficient overflowed.
bool sum_diff_polynomials_q11(const Word16* a, Word16* f1, Word16* f2) {
    Flag ovf = false;
    f1[0] = 2048;
    f2[0] = 2048;
    for (int i = 0; i < kHalf; ++i) {
        f1[i + 1] = sub(extract_h(L_mac(L_mult(a[i + 1], 16384, ovf), a[kOrder - i], 16384, ovf)), f1[i], ovf);
        f2[i + 1] = add(extract_h(L_msu(L_mult(a[i + 1], 16384, ovf), a[kOrder - i], 16384, ovf)), f2[i], ovf);
    }
    return !ovf;
}

void sum_diff_polynomials_q10(const Word16* a, Word16* f1, Word16* f2) {
    f1[0] = 1024;
    f2[0] = 1024;
    for (int i = 0; i < kHalf; ++i) {
        f1[i + 1] = sub(extract_h(L_mac(L_mult(a[i + 1], 8192), a[kOrder - i], 8192)), f1[i]);
        f2[i + 1] = add(extract_h(L_msu(L_mult(a[i + 1], 8192), a[kOrder - i], 8192)), f2[i]);
    }
}

/// Root between xlow and xhigh by linear interpolation (Q15).
Word16 interpolate_root(Word16 xlow, Word16 ylow, Word16 xhigh, Word16 yhigh) {
    const Word16 x = sub(xhigh, xlow);
    Word16 y = sub(yhigh, ylow);
    if (y == 0) return xlow;
    const Word16 sign = y;
    y = abs_s(y);
    const Word16 e = norm_s_fast(y);
    y = shl(y, e);
    y = div_s_fast(16383, y);
    y = extract_l(L_shr(L_mult(x, y), sub(20, e)));
    if (sign < 0) y = negate(y);
    return sub(xlow, extract_l(L_shr(L_mult(ylow, y), 11)));
}

void az_lsp(const Word16* a, const Word16* old_lsp, Word16* lsp_out, const Word16* grid_tab, int grid_points,
            int bisections) {
    Word16 f1[kHalf + 1], f2[kHalf + 1];
    int q = 11;
    if (!sum_diff_polynomials_q11(a, f1, f2)) {
        q = 10;
        sum_diff_polynomials_q10(a, f1, f2);
    }
    Word16 lsp[kOrder];
    int nf = 0;
    const Word16* coef = f1;
    Word16 xlow = grid_tab[0];
    Word16 ylow = chebps_fast(xlow, coef, q);
    int j = 0;
    while (nf < kOrder && j < grid_points) {
        ++j;
        Word16 xhigh = xlow, yhigh = ylow;
        xlow = grid_tab[j];
        ylow = chebps_fast(xlow, coef, q);
        if (L_mult(ylow, yhigh) <= 0) {
            for (int i = 0; i < bisections; ++i) {
                const Word16 xmid = add(shr(xlow, 1), shr(xhigh, 1));
                const Word16 ymid = chebps_fast(xmid, coef, q);
                if (L_mult(ylow, ymid) <= 0) {
                    yhigh = ymid;
                    xhigh = xmid;
                } else {
                    ylow = ymid;
                    xlow = xmid;
                }
            }
            xlow = interpolate_root(xlow, ylow, xhigh, yhigh);
            lsp[nf++] = xlow;
            coef = (coef == f1) ? f2 : f1;
            ylow = chebps_fast(xlow, coef, q);
        }
    }
    const Word16* src = nf < kOrder ? old_lsp : lsp;
    for (int i = 0; i < kOrder; ++i) lsp_out[i] = src[i];
}

}  // namespace

ZepStatus zepsLPCToLSP_G729_16s(const Zep16s* pLPC, const Zep16s* pPrevLSP, Zep16s* pLSP) {
    if (any_null(pLPC, pPrevLSP, pLSP)) return zepStsNullPtrErr;
    az_lsp(pLPC, pPrevLSP, pLSP, grid, 60, 4);
    return zepStsNoErr;
}

ZepStatus zepsLPCToLSP_G729A_16s(const Zep16s* pLPC, const Zep16s* pPrevLSP, Zep16s* pLSP) {
    if (any_null(pLPC, pPrevLSP, pLSP)) return zepStsNullPtrErr;
    az_lsp(pLPC, pPrevLSP, pLSP, grid_a, 50, 2);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 LP to LSP conversion in single-precision floating point, following
// the G.729 Annex C routine az_lsp (base codec: 60 grid intervals, 4
// bisections; Annex A: 50 intervals, 2 bisections). As in Annex C, after a
// root is found the search resumes in the same grid interval.
#include "common/args.h"
#include "common/exports.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrder = 10;
constexpr int kHalf = 5;

/// Annex C chebyshev: C(x) = T5(x) + f1 T4(x) + ... + f4 T1(x) + f5 / 2.
float chebyshev(float x, const float* f) {
    const float x2 = 2.0f * x;
    float b2 = 1.0f;
    float b1 = x2 + f[1];
    for (int i = 2; i < kHalf; ++i) {
        const float b0 = x2 * b1 - b2 + f[i];
        b2 = b1;
        b1 = b0;
    }
    return x * b1 - b2 + 0.5f * f[kHalf];
}

void az_lsp_float(const float* a, const float* old_lsp, float* out, const float* grid_tab, int grid_points,
                  int bisections) {
    float f1[kHalf + 1], f2[kHalf + 1];
    f1[0] = 1.0f;
    f2[0] = 1.0f;
    for (int i = 1, j = kOrder; i <= kHalf; ++i, --j) {
        f1[i] = a[i] + a[j] - f1[i - 1];
        f2[i] = a[i] - a[j] + f2[i - 1];
    }
    float lsp[kOrder];
    int nf = 0;
    const float* coef = f1;
    float xlow = grid_tab[0];
    float ylow = chebyshev(xlow, coef);
    int j = 0;
    while (nf < kOrder && j < grid_points) {
        ++j;
        float xhigh = xlow, yhigh = ylow;
        xlow = grid_tab[j];
        ylow = chebyshev(xlow, coef);
        if (ylow * yhigh <= 0.0f) {
            --j;
            for (int i = 0; i < bisections; ++i) {
                const float xmid = 0.5f * (xlow + xhigh);
                const float ymid = chebyshev(xmid, coef);
                if (ylow * ymid <= 0.0f) {
                    yhigh = ymid;
                    xhigh = xmid;
                } else {
                    ylow = ymid;
                    xlow = xmid;
                }
            }
            // Two equal values (both zero) would divide 0 by 0 in Annex C; the
            // root is then xlow, as in the fixed-point routine.
            const float dy = yhigh - ylow;
            const float xint = dy == 0.0f ? xlow : xlow - ylow * (xhigh - xlow) / dy;
            lsp[nf++] = xint;
            coef = (coef == f1) ? f2 : f1;
            xlow = xint;
            ylow = chebyshev(xlow, coef);
        }
    }
    const float* src = nf < kOrder ? old_lsp : lsp;
    for (int i = 0; i < kOrder; ++i) out[i] = src[i];
}

}  // namespace

ZepStatus zepsLPCToLSP_G729_32f(const Zep32f* pLPC, const Zep32f* pPrevLSP, Zep32f* pLSP) {
    if (any_null(pLPC, pPrevLSP, pLSP)) return zepStsNullPtrErr;
    az_lsp_float(pLPC, pPrevLSP, pLSP, g729f::grid, 60, 4);
    return zepStsNoErr;
}

ZepStatus zepsLPCToLSP_G729A_32f(const Zep32f* pLPC, const Zep32f* pPrevLSP, Zep32f* pLSP) {
    if (any_null(pLPC, pPrevLSP, pLSP)) return zepStsNullPtrErr;
    az_lsp_float(pLPC, pPrevLSP, pLSP, g729f::grid_a, 50, 2);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

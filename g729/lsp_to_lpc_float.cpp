// SPDX-License-Identifier: BSD-3-Clause
// G.729 LSP to LP conversion in single-precision floating point, following
// the G.729 Annex C routines lsp_az and get_lsp_pol (3.2.6): each
// polynomial recursion uses the factor -2.0 times the LSP.
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

void get_lsp_pol_float(const float* lsp, float* f) {
    f[0] = 1.0f;
    float b = -2.0f * lsp[0];
    f[1] = b;
    for (int i = 2; i <= 5; ++i) {
        b = -2.0f * lsp[2 * i - 2];
        f[i] = b * f[i - 1] + 2.0f * f[i - 2];
        for (int j = i - 1; j > 1; --j) f[j] += b * f[j - 1] + f[j - 2];
        f[1] += b;
    }
}

}  // namespace

ZepStatus zepsLSPToLPC_G729_32f(const Zep32f* pLSP, Zep32f* pLPC) {
    if (any_null(pLSP, pLPC)) return zepStsNullPtrErr;
    float f1[6], f2[6];
    get_lsp_pol_float(pLSP, f1);
    get_lsp_pol_float(pLSP + 1, f2);
    for (int i = 5; i > 0; --i) {
        f1[i] += f1[i - 1];
        f2[i] -= f2[i - 1];
    }
    pLPC[0] = 1.0f;
    for (int i = 1, j = 10; i <= 5; ++i, --j) {
        pLPC[i] = 0.5f * (f1[i] + f2[i]);
        pLPC[j] = 0.5f * (f1[i] - f2[i]);
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 LSP to LP conversion (3.2.6, Lsp_Az and Get_lsp_pol): the two
// symmetric polynomials are expanded in Q24 (double precision products),
// combined and rounded to Q12. LSP Q15 in, LP Q12 out.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// Coefficients f[0..5] (Q24) of the polynomial of lsp[0], lsp[2], ... lsp[8].
void get_lsp_pol(const Word16* lsp, Word32* f) {
    f[0] = L_mult(4096, 2048);
    f[1] = L_msu(0, lsp[0], 512);
    for (int i = 2; i <= 5; ++i) {
        const Word16 l = lsp[2 * (i - 1)];
        f[i] = f[i - 2];
        for (int j = i; j > 1; --j) {
            Word16 hi, lo;
            L_Extract(f[j - 1], hi, lo);
            const Word32 t0 = L_shl(Mpy_32_16(hi, lo, l), 1);
            f[j] = L_sub(L_add(f[j], f[j - 2]), t0);
        }
        f[1] = L_msu(f[1], l, 512);
    }
}

}  // namespace

ZepStatus zepsLSPToLPC_G729_16s(const Zep16s* pLSP, Zep16s* pLPC) {
    if (any_null(pLSP, pLPC)) return zepStsNullPtrErr;
    Word32 f1[6], f2[6];
    get_lsp_pol(pLSP, f1);
    get_lsp_pol(pLSP + 1, f2);
    for (int i = 5; i > 0; --i) {
        f1[i] = L_add(f1[i], f1[i - 1]);
        f2[i] = L_sub(f2[i], f2[i - 1]);
    }
    pLPC[0] = 4096;
    for (int i = 1, j = 10; i <= 5; ++i, --j) {
        pLPC[i] = extract_l(L_shr_r(L_add(f1[i], f2[i]), 13));
        pLPC[j] = extract_l(L_shr_r(L_sub(f1[i], f2[i]), 13));
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 LSP to LP conversion (3.2.6, Lsp_Az and Get_lsp_pol): the two
// symmetric polynomials are expanded in Q24 (double precision products),
// combined and rounded to Q12. LSP Q15 in, LP Q12 out.
#include <cstdint>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// Coefficients f[0..5] (Q24) of the polynomial of lsp[0], lsp[2], ... lsp[8],
/// with the reference's saturating operators.
void get_lsp_pol_chain(const Word16* lsp, Word32* f) {
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

/// get_lsp_pol on plain integers. For l > -32768, Mpy_32_16(L_Extract(f),
/// l) = 2 (((f >> 1) l) >> 15) exactly (the operator's own sums cannot
/// saturate), so t0 = 4 (((f >> 1) l) >> 15). While t0 and every new f[j]
/// stay within [-2^30, 2^30), f[j] + f[j-2] lies within [-2^31, 2^31) too,
/// L_shl(., 1) and L_sub have exact results in range and no operator of
/// the chain saturates; f[1] (at most 5 1024 32768 in magnitude) never
/// does. The range test is one OR a value: v ^ (v >> 63) is v, or -v - 1
/// for negative v, so the OR of them all stays below 2^30 exactly when
/// every value lies in [-2^30, 2^30). Returns false when a value left that
/// range (f then undefined).
/// v for v >= 0, ~v = -v - 1 otherwise: at most 2^30 - 1 exactly when v
/// lies in [-2^30, 2^30).
inline std::int64_t magnitude_bits(std::int64_t v) { return v < 0 ? ~v : v; }

bool get_lsp_pol_plain(const Word16* lsp, Word32* f) {
    std::int64_t g[6] = {std::int64_t{1} << 24, -1024 * std::int64_t{lsp[0]}, 0, 0, 0, 0};
    std::int64_t mag = 0;
    // Unrolled whole, g lives in registers.
#pragma GCC unroll 4
    for (int i = 2; i <= 5; ++i) {
        const std::int64_t l = lsp[2 * (i - 1)];
        g[i] = g[i - 2];
#pragma GCC unroll 4
        for (int j = i; j > 1; --j) {
            const std::int64_t t0 = 4 * (((g[j - 1] >> 1) * l) >> 15);
            g[j] = g[j] + g[j - 2] - t0;
            mag |= magnitude_bits(t0) | magnitude_bits(g[j]);
        }
        g[1] -= 1024 * l;
    }
    for (int k = 0; k < 6; ++k) f[k] = static_cast<Word32>(g[k]);
    return (mag >> 30) == 0;
}

/// get_lsp_pol: the plain form when it stays in range, else the chain.
void get_lsp_pol(const Word16* lsp, Word32* f) {
    const bool plain_ok = lsp[2] > MIN_16 && lsp[4] > MIN_16 && lsp[6] > MIN_16 && lsp[8] > MIN_16;
    if (!plain_ok || !get_lsp_pol_plain(lsp, f)) get_lsp_pol_chain(lsp, f);
}

/// Lsp_Az on the given polynomial routine.
template <class Pol>
void lsp_to_lpc(const Zep16s* pLSP, Zep16s* pLPC, Pol pol) {
    Word32 f1[6], f2[6];
    pol(pLSP, f1);
    pol(pLSP + 1, f2);
    for (int i = 5; i > 0; --i) {
        f1[i] = L_add(f1[i], f1[i - 1]);
        f2[i] = L_sub(f2[i], f2[i - 1]);
    }
    pLPC[0] = 4096;
    for (int i = 1, j = 10; i <= 5; ++i, --j) {
        pLPC[i] = extract_l(L_shr_r(L_add(f1[i], f2[i]), 13));
        pLPC[j] = extract_l(L_shr_r(L_sub(f1[i], f2[i]), 13));
    }
}

}  // namespace

ZepStatus zepsLSPToLPC_G729_16s(const Zep16s* pLSP, Zep16s* pLPC) {
    if (any_null(pLSP, pLPC)) return zepStsNullPtrErr;
    lsp_to_lpc(pLSP, pLPC, get_lsp_pol);
    return zepStsNoErr;
}

/// The conversion on the saturating chain alone, for the test holding the
/// plain form equal to it (not exported from the library).
void g729_lsp_to_lpc_chain(const Zep16s* pLSP, Zep16s* pLPC) { lsp_to_lpc(pLSP, pLPC, get_lsp_pol_chain); }

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E LP filters of order 1..30 (E.3, E.4; filtere.c, lpcfunc.c):
// the synthesis filter 1/A(z) with the reference's overflow report
// (Syn_filte and the Overflow flag), the inverse filter A(z) (Residue) and
// the bandwidth expansion A(z/gamma) (Weight_Az with its order). LP
// coefficients Q12, gamma Q15, signals Q0.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/g729e_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

/// The memory after filtering: the last `order` outputs (earlier memory
/// values first when len < order).
void update_memory(int order, const Zep16s* out, int len, Zep16s* mem) {
    Zep16s m[g729e::kMaxOrder];
    const int keep = order > len ? order - len : 0;
    std::memcpy(m, mem + (order - keep), keep * sizeof(Zep16s));
    std::memcpy(m + keep, out + len - (order - keep), (order - keep) * sizeof(Zep16s));
    std::memcpy(mem, m, order * sizeof(Zep16s));
}

ZepStatus synthesis(int order, const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len, Zep16s* pMem,
                    int update) {
    const bool ovf = g729e::syn_filte(order, pLPC, pSrc, pDst, len, pMem);
    if (update != 0) update_memory(order, pDst, len, pMem);
    return ovf ? zepStsOverflow : zepStsNoErr;
}

}  // namespace

ZepStatus zepsSynthesisFilter_G729E_16s(int order, const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len,
                                        Zep16s* pSrcDstMem, int update) {
    if (any_null(pLPC, pSrc, pDst, pSrcDstMem)) return zepStsNullPtrErr;
    if (!in_range(order, 1, g729e::kMaxOrder)) return zepStsRangeErr;
    if (len < 1) return zepStsSizeErr;
    return synthesis(order, pLPC, pSrc, pDst, len, pSrcDstMem, update);
}

ZepStatus zepsSynthesisFilter_G729E_16s_I(int order, const Zep16s* pLPC, Zep16s* pSrcDst, int len,
                                          Zep16s* pSrcDstMem, int update) {
    if (any_null(pLPC, pSrcDst, pSrcDstMem)) return zepStsNullPtrErr;
    if (!in_range(order, 1, g729e::kMaxOrder)) return zepStsRangeErr;
    if (len < 1) return zepStsSizeErr;
    return synthesis(order, pLPC, pSrcDst, pSrcDst, len, pSrcDstMem, update);
}

ZepStatus zepsResidual_G729E_16s(int order, const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len) {
    if (any_null(pLPC, pSrc, pDst)) return zepStsNullPtrErr;
    if (!in_range(order, 1, g729e::kMaxOrder)) return zepStsRangeErr;
    if (len < 1) return zepStsSizeErr;
    g729e::residue(order, pLPC, pSrc, pDst, len);
    return zepStsNoErr;
}

ZepStatus zepsWeightLPC_G729E_16s(const Zep16s* pLPC, Zep16s gamma, int order, Zep16s* pDst) {
    if (any_null(pLPC, pDst)) return zepStsNullPtrErr;
    if (!in_range(order, 1, g729e::kMaxOrder)) return zepStsRangeErr;
    Zep16s ap[g729e::kMaxOrder + 1];
    g729e::weight_az(pLPC, gamma, order, ap);
    std::memcpy(pDst, ap, (order + 1) * sizeof(Zep16s));
    return zepStsNoErr;
}

ZEPS_END_VARIANT

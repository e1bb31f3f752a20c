// SPDX-License-Identifier: BSD-3-Clause
// G.729 order-10 LP filters (ITU-T G.729 3.6, 4.1.6; filter.c, lpcfunc.c):
// the synthesis filter 1/A(z) with the reference's overflow report
// (Syn_filt and its Overflow flag), the inverse filter A(z) (Residu) and the
// bandwidth expansion A(z/gamma) (Weight_Az). LP coefficients Q12, gamma
// Q15, signals Q0.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/codec_kernels.h"
#include "g729/post_filter_simd.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsSynthesisFilter_G729_16s(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len,
                                       Zep16s* pSrcDstMem, int update) {
    if (any_null(pLPC, pSrc, pDst, pSrcDstMem)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    const bool ovf = g729c::syn_filt(pLPC, pSrc, pDst, len, pSrcDstMem);
    if (update != 0) {
        if (len >= g729c::kOrder) {
            std::memmove(pSrcDstMem, pDst + len - g729c::kOrder, g729c::kOrder * sizeof(Zep16s));
        } else {
            Zep16s m[g729c::kOrder];
            const int keep = g729c::kOrder - len;
            std::memcpy(m, pSrcDstMem + len, keep * sizeof(Zep16s));
            std::memcpy(m + keep, pDst, len * sizeof(Zep16s));
            std::memcpy(pSrcDstMem, m, sizeof m);
        }
    }
    return ovf ? zepStsOverflow : zepStsNoErr;
}

ZepStatus zepsResidual_G729_16s(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len) {
    if (any_null(pLPC, pSrc, pDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    // Eight samples a step in 32-bit lanes when 2 sum|a| max|x| (x[-10..len-1])
    // proves every partial sum of the L_mult / L_mac chain exact (the lane
    // form's rounding and saturating pack are then round_fx(L_shl(s, 3)));
    // the reference's chain otherwise.
    if (len % 8 == 0) {
        std::int64_t sum_a = 0, peak = 0;
        for (int j = 0; j <= g729c::kOrder; ++j) sum_a += pLPC[j] < 0 ? -std::int64_t{pLPC[j]} : pLPC[j];
        for (int i = -g729c::kOrder; i < len; ++i)
            peak = std::max<std::int64_t>(peak, pSrc[i] < 0 ? -std::int64_t{pSrc[i]} : pSrc[i]);
        if (2 * sum_a * peak <= MAX_32) {
            g729f::residu_plain(pLPC, pSrc, pDst, len);
            return zepStsNoErr;
        }
    }
    g729c::residu(pLPC, pSrc, pDst, len);
    return zepStsNoErr;
}

ZepStatus zepsWeightLPC_G729_16s(const Zep16s* pLPC, Zep16s gamma, Zep16s* pDst) {
    if (any_null(pLPC, pDst)) return zepStsNullPtrErr;
    Zep16s ap[g729c::kOrder + 1];
    g729c::weight_az(pLPC, gamma, ap);
    std::memcpy(pDst, ap, sizeof ap);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

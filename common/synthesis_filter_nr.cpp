// SPDX-License-Identifier: BSD-3-Clause
// Order-10 all-pole synthesis filters without rounding (the NR members):
// y[n] = saturate16((a[0] x[n] - sum_{j=1..10} a[j] y[n-j]) >> scaleFactor),
// products of 16 x 16 bits not doubled, accumulated in 32 bits with
// saturation at every step, the shift arithmetic (toward minus infinity).
// With LP coefficients in Q12 and scaleFactor 12 this is the G.729
// synthesis filter 1/A(z) with truncation where Syn_filt rounds.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrder = 10;

/// Filters len samples of x into y (y may equal x) from the memory hist
/// (10 past outputs, oldest first), keeping only the first `order`
/// coefficients after a[0]. Returns true when an accumulation or an
/// output saturated.
bool synth_nr(const Word16* a, int order, const Word16* x, Word16* y, int len, int sf, const Word16* mem) {
    Word16 hist[kOrder];
    std::memcpy(hist, mem, sizeof hist);
    bool ovf = false;
    for (int i = 0; i < len; ++i) {
        std::int64_t acc = std::int64_t{a[0]} * x[i];
        for (int j = 1; j <= order; ++j) {
            const Word16 past = i - j >= 0 ? y[i - j] : hist[kOrder + i - j];
            acc -= std::int64_t{a[j]} * past;
            if (acc > MAX_32) { acc = MAX_32; ovf = true; }
            if (acc < MIN_32) { acc = MIN_32; ovf = true; }
        }
        const std::int64_t v = acc >> sf;
        if (v > MAX_16 || v < MIN_16) ovf = true;
        y[i] = v > MAX_16 ? MAX_16 : v < MIN_16 ? MIN_16 : static_cast<Word16>(v);
    }
    return ovf;
}

/// The last 10 outputs (earlier memory values when len < 10) as the new memory.
void update_memory(Word16* mem, const Word16* y, int len) {
    Word16 m[kOrder];
    const int keep = len >= kOrder ? 0 : kOrder - len;
    std::memcpy(m, mem + kOrder - keep, keep * sizeof(Word16));
    std::memcpy(m + keep, y + len - (kOrder - keep), (kOrder - keep) * sizeof(Word16));
    std::memcpy(mem, m, sizeof m);
}

inline bool scale_ok(int sf) { return sf >= 0 && sf <= 31; }

}  // namespace

ZepStatus zepsSynthesisFilter_NR_16s_Sfs(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len, int scaleFactor,
                                         const Zep16s* pMem) {
    if (any_null(pLPC, pSrc, pDst, pMem)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (!scale_ok(scaleFactor)) return zepStsScaleRangeErr;
    return synth_nr(pLPC, kOrder, pSrc, pDst, len, scaleFactor, pMem) ? zepStsOverflow : zepStsNoErr;
}

ZepStatus zepsSynthesisFilter_NR_16s_ISfs(const Zep16s* pLPC, Zep16s* pSrcDst, int len, int scaleFactor, Zep16s* pMem) {
    if (any_null(pLPC, pSrcDst, pMem)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (!scale_ok(scaleFactor)) return zepStsScaleRangeErr;
    const bool ovf = synth_nr(pLPC, kOrder, pSrcDst, pSrcDst, len, scaleFactor, pMem);
    update_memory(pMem, pSrcDst, len);
    return ovf ? zepStsOverflow : zepStsNoErr;
}

ZepStatus zepsSynthesisFilterLow_NR_16s_ISfs(const Zep16s* pLPC, Zep16s* pSrcDst, int len, int order, int scaleFactor,
                                             Zep16s* pMem) {
    if (any_null(pLPC, pSrcDst, pMem)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (order < 1 || order > kOrder) return zepStsRangeErr;
    if (!scale_ok(scaleFactor)) return zepStsScaleRangeErr;
    (void)synth_nr(pLPC, order, pSrcDst, pSrcDst, len, scaleFactor, pMem);
    update_memory(pMem, pSrcDst, len);
    return zepStsNoErr;
}

ZepStatus zepsSynthesisFilterZeroStateResponse_NR_16s(const Zep16s* pLPC, const Zep16s* pSrc, Zep16s* pDst, int len,
                                                      int scaleFactor) {
    if (any_null(pLPC, pSrc, pDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (!scale_ok(scaleFactor)) return zepStsScaleRangeErr;
    const Word16 zero[kOrder] = {};
    (void)synth_nr(pLPC, kOrder, pSrc, pDst, len, scaleFactor, zero);
    return zepStsNoErr;
}

ZepStatus zepsMulC_NR_16s_Sfs(const Zep16s* pSrc, Zep16s val, Zep16s* pDst, int len, int scaleFactor) {
    if (any_null(pSrc, pDst)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    if (!scale_ok(scaleFactor)) return zepStsScaleRangeErr;
    for (int i = 0; i < len; ++i) {
        const Word32 p = (Word32{pSrc[i]} * val) >> scaleFactor;
        pDst[i] = p > MAX_16 ? MAX_16 : p < MIN_16 ? MIN_16 : static_cast<Word16>(p);
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

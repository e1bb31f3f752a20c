// SPDX-License-Identifier: BSD-3-Clause
// zepsBitsToParam_GSMAMR_16s and zepsBuildCNParam_GSMAMR_16s: the decoder's
// parameters from the serial bits (3GPP TS 26.073 bits2prm.c Bits2prm) and
// the random parameters of a lost frame (b_cn_cod.c build_CN_param).
#include "amr/amr_rate.h"
#include "amr/dec_param.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr Zep32s kRateSID = 25;

/// The standard's mode number (MRDTX for the SID layout), or -1.
int layout_of_rate(Zep32s rate) { return rate == kRateSID ? int{amr_dec::MRDTX} : amr_rate::mode_of_rate(rate); }

}  // namespace

ZepStatus zepsBitsToParam_GSMAMR_16s(const Zep16s* pSrcBits, Zep16s* pDstParam, Zep32s rate) {
    if (any_null(pSrcBits, pDstParam)) return zepStsNullPtrErr;
    const int mode = layout_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    amr_dec::bits2prm(mode, pSrcBits, pDstParam);
    return zepStsNoErr;
}

ZepStatus zepsBuildCNParam_GSMAMR_16s(Zep16s* pSeed, Zep16s* pDstParam, Zep32s rate) {
    if (any_null(pSeed, pDstParam)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    amr_dec::build_cn_param(*pSeed, amr_dec::kPrmNo[mode], amr_dec::bitno(mode), pDstParam);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

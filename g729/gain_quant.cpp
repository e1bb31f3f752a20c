// SPDX-License-Identifier: BSD-3-Clause
// G.729 pitch gain and gain quantisation (ITU-T G.729 3.7.3 G_pitch, 3.9
// Qua_gain with Corr_xy2 and Gbk_presel, 3.9.1 Gain_update), identical in
// Annex A: the conjugate-structure codebook (3 + 4 bits) searched over the
// 4 x 8 pre-selected candidates for the least weighted error
// |x - gp y1 - gc y2|^2, pitch gains of 1 and above skipped when taming is
// on. Target and filtered adaptive vector Q0, filtered fixed vector Q12,
// fixed vector Q13, pitch gain Q14, code gain Q1.
#include "common/args.h"
#include "common/exports.h"
#include "g729/g729_codec_tables.h"
#include "g729/gain_quant_search.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

/// The 8 kbit/s book (G.729 3.9.2): 3 + 4 bits, 4 x 8 candidates.
constexpr GainBook kBook8k{.size1 = 8, .size2 = 16, .ncan1 = 4, .ncan2 = 8,
                           .corr_q = 12, .thr1_q = 14, .presel_shift = 7,
                           .inv_coef = -17103,  // INV_COEF, Q19
                           .gbk1 = gbk1, .gbk2 = gbk2, .map1 = map1, .map2 = map2,
                           .coef = coef, .L_coef = L_coef, .thr1 = thr1, .thr2 = thr2};

}  // namespace

ZepStatus zepsPitchGain_G729_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcFltAdptVector, Zep16s* pResultAdptGain) {
    if (any_null(pSrcAdptTarget, pSrcFltAdptVector, pResultAdptGain)) return zepStsNullPtrErr;
    Word16 g_coeff[4];
    *pResultAdptGain = g_pitch(pSrcAdptTarget, pSrcFltAdptVector, g_coeff);
    return zepStsNoErr;
}

ZepStatus zepsGainQuant_G729_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcFltAdptVector,
                                 const Zep16s* pSrcFixedVector, const Zep16s* pSrcFltFixedVector, Zep16s* pPastQuaEn,
                                 Zep16s tameFlag, Zep16s* pDstGain, Zep16s* pDstIndex) {
    if (any_null(pSrcAdptTarget, pSrcFltAdptVector, pSrcFixedVector, pSrcFltFixedVector, pPastQuaEn, pDstGain,
                 pDstIndex))
        return zepStsNullPtrErr;
    if (!in_range<Word16>(tameFlag, 0, 1)) return zepStsRangeErr;
    Word16 cs[5], exp_cs[5];
    gain_correlations(pSrcAdptTarget, pSrcFltAdptVector, pSrcFltFixedVector, cs, exp_cs);
    Word16 gp, gc;
    *pDstIndex = qua_gain(kBook8k, pSrcFixedVector, cs, exp_cs, pPastQuaEn, tameFlag, gp, gc);
    pDstGain[0] = gp;
    pDstGain[1] = gc;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

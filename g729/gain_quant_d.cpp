// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D gain quantisation (ITU-T G.729 Annex D D.4.9, Qua_gain_6k
// with Gbk_presel): the 6.4 kbit/s conjugate-structure codebook (3 + 3
// bits, code-gain corrections Q14) searched over the 6 x 6 pre-selected
// candidates for the least weighted error |x - gp y1 - gc y2|^2; the
// correlations, optimum gains, taming rule and predictor are the main
// body's. Target and filtered adaptive vector Q0, filtered fixed vector
// Q12, fixed vector Q13, pitch gain Q14, code gain Q1.
#include "common/args.h"
#include "common/exports.h"
#include "g729/g729d_tables.h"
#include "g729/gain_quant_search.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

/// The 6.4 kbit/s book (Annex D): 3 + 3 bits, 6 x 6 candidates.
constexpr GainBook kBook6k{.size1 = 8, .size2 = 8, .ncan1 = 6, .ncan2 = 6,
                           .corr_q = 13, .thr1_q = 13, .presel_shift = 6,
                           .inv_coef = -28940,  // INV_COEF_6K, Q20
                           .gbk1 = gbk1_6k, .gbk2 = gbk2_6k, .map1 = map1_6k, .map2 = map2_6k,
                           .coef = coef_6k, .L_coef = L_coef_6k, .thr1 = thr1_6k, .thr2 = thr2_6k};

}  // namespace

ZepStatus zepsGainQuant_G729D_16s(const Zep16s* pSrcAdptTarget, const Zep16s* pSrcFltAdptVector,
                                  const Zep16s* pSrcFixedVector, const Zep16s* pSrcFltFixedVector, Zep16s* pPastQuaEn,
                                  Zep16s tameFlag, Zep16s* pDstGain, Zep16s* pDstIndex) {
    if (any_null(pSrcAdptTarget, pSrcFltAdptVector, pSrcFixedVector, pSrcFltFixedVector, pPastQuaEn, pDstGain,
                 pDstIndex))
        return zepStsNullPtrErr;
    if (!in_range<Word16>(tameFlag, 0, 1)) return zepStsRangeErr;
    Word16 cs[5], exp_cs[5];
    gain_correlations(pSrcAdptTarget, pSrcFltAdptVector, pSrcFltFixedVector, cs, exp_cs);
    Word16 gp, gc;
    *pDstIndex = qua_gain(kBook6k, pSrcFixedVector, cs, exp_cs, pPastQuaEn, tameFlag, gp, gc);
    pDstGain[0] = gp;
    pDstGain[1] = gc;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

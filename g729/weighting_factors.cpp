// SPDX-License-Identifier: BSD-3-Clause
// G.729 adaptive perceptual weighting factors (ITU-T G.729 3.3, perc_var):
// gamma1 and gamma2 of each subframe from the first two reflection
// coefficients (as piecewise-linear log-area ratios, Q11, interpolated for
// subframe 0) with a double threshold and hysteresis ("smooth"), and, for
// flat spectra, gamma2 from the minimum distance of the normalised LSFs
// (Q15 in, doubled as the reference does). Gammas Q15.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr Word16 kA1 = 4567, kA2 = 11776, kA3 = 27443;                // Q11
constexpr Word32 kB1 = 3271557, kB2 = 16357786, kB3 = 46808433;       // Q22
constexpr Word16 kSeg1 = 1299, kSeg2 = 1815, kSeg3 = 1944;            // Q11
constexpr Word16 kThreshL1 = -3562, kThreshL2 = -3116, kThreshH1 = 1336, kThreshH2 = 890;
constexpr Word16 kGamma1_0 = 32113, kGamma1_1 = 30802;
constexpr Word16 kGamma2_0L = 13107, kGamma2_0H = 22938, kGamma2_1 = 19661;
constexpr Word16 kAlpha = 19302, kBeta = 1024;  // 6 pi and 1 in Q10

/// log((1 + rc) / (1 - rc)) approximated in three segments, Q11.
Word16 log_area_ratio(Word16 rc) {
    Word16 cur = shr(abs_s(rc), 4);
    Word16 lar;
    if (cur <= kSeg1) {
        lar = cur;
    } else {
        const Word16 a = cur <= kSeg2 ? kA1 : cur <= kSeg3 ? kA2 : kA3;
        const Word32 b = cur <= kSeg2 ? kB1 : cur <= kSeg3 ? kB2 : kB3;
        cur = shr(cur, 1);
        lar = extract_l(L_shr(L_sub(L_mult(cur, a), b), 11));
    }
    return rc < 0 ? sub(0, lar) : lar;
}

}  // namespace

ZepStatus zepsWeightingFactors_G729_16s(const Zep16s* pSrcLSFInt, const Zep16s* pSrcLSFNew, const Zep16s* pSrcRC,
                                        Zep16s* pSrcDstMem, Zep16s* pDstGamma) {
    if (any_null(pSrcLSFInt, pSrcLSFNew, pSrcRC, pSrcDstMem, pDstGamma)) return zepStsNullPtrErr;
    if (!in_range<Word16>(pSrcDstMem[2], 0, 1)) return zepStsRangeErr;
    Word16 lar[4];
    lar[2] = log_area_ratio(pSrcRC[0]);
    lar[3] = log_area_ratio(pSrcRC[1]);
    lar[0] = shr(add(lar[2], pSrcDstMem[0]), 1);
    lar[1] = shr(add(lar[3], pSrcDstMem[1]), 1);
    Word16 smooth = pSrcDstMem[2];
    Word16 gamma[4];
    for (int k = 0; k < 2; ++k) {
        const Word16 crit0 = lar[2 * k], crit1 = lar[2 * k + 1];
        if (smooth != 0) {
            if (crit0 < kThreshL1 && crit1 > kThreshH1) smooth = 0;
        } else if (crit0 > kThreshL2 || crit1 < kThreshH2) {
            smooth = 1;
        }
        if (smooth == 0) {
            const Zep16s* lsf = k == 0 ? pSrcLSFInt : pSrcLSFNew;
            Word16 d_min = sub(shl(lsf[1], 1), shl(lsf[0], 1));
            for (int i = 1; i < 9; ++i) {
                const Word16 t = sub(shl(lsf[i + 1], 1), shl(lsf[i], 1));
                if (t < d_min) d_min = t;
            }
            Word16 g2 = shl(sub(kBeta, mult(kAlpha, d_min)), 5);
            if (g2 > kGamma2_0H) g2 = kGamma2_0H;
            if (g2 < kGamma2_0L) g2 = kGamma2_0L;
            gamma[k] = kGamma1_0;
            gamma[2 + k] = g2;
        } else {
            gamma[k] = kGamma1_1;
            gamma[2 + k] = kGamma2_1;
        }
    }
    pSrcDstMem[0] = lar[2];
    pSrcDstMem[1] = lar[3];
    pSrcDstMem[2] = smooth;
    for (int i = 0; i < 4; ++i) pDstGamma[i] = gamma[i];
    return zepStsNoErr;
}

ZEPS_END_VARIANT

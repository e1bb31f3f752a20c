// SPDX-License-Identifier: BSD-3-Clause
// GSM 06.10 4.2.13 to 4.2.17 RPE encoding of the full-rate encoder
// (weighting filter, grid selection, APCM quantisation, inverse
// quantisation and grid positioning) and the RPE decoding of 4.3.1.
// Residuals in the Q15 of the pre-processed speech; H in Q13, NRFAC and FAC
// in Q15.
#include "amr/gsmfr_lar.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// 4.2.13: x[k] = sum of H[i] e[k + i - 5] rounded at 2^13 and saturated,
/// the residual taken as zero outside 0..39. The exact sum stays far below
/// 2^31 (|e| <= 2^15, sum of |H| below 2^15).
void weighting_filter(const Word16* e, Word16* x) {
    Word16 wt[50] = {};
    std::memcpy(wt + 5, e, 40 * sizeof(Word16));
    for (int k = 0; k < 40; ++k) {
        Word32 acc = 4096;
        for (int i = 0; i < 11; ++i) acc += Word32{wt[k + i]} * gsmfr_H[i];
        acc >>= 13;
        x[k] = static_cast<Word16>(acc < MIN_16 ? MIN_16 : acc > MAX_16 ? MAX_16 : acc);
    }
}

/// 4.2.14: the grid m (0..3) of largest energy of x[m + 3i], i = 0..12
/// (samples scaled down by 4; the first grid wins ties).
Word16 grid_selection(const Word16* x) {
    Word32 EM = -1;
    Word16 Mc = 0;
    for (int m = 0; m < 4; ++m) {
        Word32 acc = 0;
        for (int i = 0; i < 13; ++i) {
            const Word32 t = x[m + 3 * i] >> 2;
            acc += t * t;
        }
        acc = gsmfr::shl_wrap(acc, 1);
        if (acc > EM) {
            EM = acc;
            Mc = static_cast<Word16>(m);
        }
    }
    return Mc;
}

/// 4.2.15: exponent and mantissa of the decoded block maximum.
void xmaxc_to_exp_mant(Word16 xmaxc, Word16& exp, Word16& mant) {
    exp = xmaxc > 15 ? static_cast<Word16>((xmaxc >> 3) - 1) : 0;
    mant = static_cast<Word16>(xmaxc - (exp << 3));
    if (mant == 0) {
        exp = -4;
        mant = 7;
        return;
    }
    while (mant <= 7) {
        mant = static_cast<Word16>(mant << 1 | 1);
        --exp;
    }
    mant = static_cast<Word16>(mant - 8);
}

/// 4.2.15: xmaxc and the 13 codes xMc of the sub-sequence xM.
void apcm_quantization(const Word16* xM, Word16* xMc, Word16& mant, Word16& exp, Word16& xmaxc) {
    Word16 xmax = 0;
    for (int i = 0; i < 13; ++i) {
        const Word16 t = abs_s(xM[i]);
        if (t > xmax) xmax = t;
    }
    Word16 e = 0;
    Word16 t = static_cast<Word16>(xmax >> 9);
    bool stop = false;
    for (int i = 0; i <= 5; ++i) {
        stop = stop || t <= 0;
        t = static_cast<Word16>(t >> 1);
        if (!stop) ++e;
    }
    xmaxc = add(static_cast<Word16>(xmax >> (e + 5)), static_cast<Word16>(e << 3));
    xmaxc_to_exp_mant(xmaxc, exp, mant);
    const int shift = 6 - exp;
    const Word16 nrfac = gsmfr_NRFAC[mant];
    for (int i = 0; i < 13; ++i) {
        // The shift keeps the product within 16 bits: |xM| < 2^(exp + 10).
        const Word16 v = static_cast<Word16>(xM[i] << shift);
        xMc[i] = static_cast<Word16>((mult(v, nrfac) >> 12) + 4);
    }
}

/// 4.2.16: the 13 decoded samples xMp.
void apcm_inverse_quantization(const Word16* xMc, Word16 mant, Word16 exp, Word16* xMp) {
    const Word16 fac = gsmfr_FAC[mant];
    const Word16 temp2 = sub(6, exp);
    // exp is 0..5 for a 6-bit xmaxc (checked by the export), so temp2 is 1..6.
    const Word16 temp3 = temp2 >= 1 ? static_cast<Word16>(1 << (temp2 - 1)) : 0;  // NOLINT(clang-analyzer-core.UndefinedBinaryOperatorResult): temp2 is 1..6
    for (int i = 0; i < 13; ++i) {
        const Word16 v = static_cast<Word16>(((xMc[i] << 1) - 7) << 12);  // sign restored, Q15
        xMp[i] = static_cast<Word16>(add(mult_r(fac, v), temp3) >> temp2);  // NOLINT(clang-analyzer-core.UndefinedBinaryOperatorResult): temp2 is 1..6
    }
}

/// 4.2.17: ep[Mc + 3i] = xMp[i], zero elsewhere.
void grid_positioning(Word16 Mc, const Word16* xMp, Word16* ep) {
    for (int k = 0; k < 40; ++k) ep[k] = 0;
    for (int i = 0; i < 13; ++i) ep[Mc + 3 * i] = xMp[i];
}

}  // namespace

ZepStatus zepsRPEEncode_GSMFR_16s(const Zep16s* pSrc, Zep16s* pXmaxc, Zep16s* pMc, Zep16s* pXMc, Zep16s* pDst) {
    if (any_null(pSrc, pXmaxc, pMc, pXMc, pDst)) return zepStsNullPtrErr;
    Word16 x[40], xM[13], xMc[13], xMp[13], mant, exp, xmaxc;
    weighting_filter(pSrc, x);
    const Word16 Mc = grid_selection(x);
    for (int i = 0; i < 13; ++i) xM[i] = x[Mc + 3 * i];
    apcm_quantization(xM, xMc, mant, exp, xmaxc);
    apcm_inverse_quantization(xMc, mant, exp, xMp);
    grid_positioning(Mc, xMp, pDst);
    std::memcpy(pXMc, xMc, sizeof xMc);
    *pXmaxc = xmaxc;
    *pMc = Mc;
    return zepStsNoErr;
}

ZepStatus zepsRPEDecode_GSMFR_16s(Zep16s xmaxc, Zep16s Mc, const Zep16s* pXMc, Zep16s* pDst) {
    if (any_null(pXMc, pDst)) return zepStsNullPtrErr;
    if (xmaxc < 0 || xmaxc > 63) return zepStsRangeErr;
    if (Mc < 0 || Mc > 3) return zepStsRangeErr;
    for (int i = 0; i < 13; ++i)
        if (pXMc[i] < 0 || pXMc[i] > 7) return zepStsOutOfRangeErr;
    Word16 exp, mant, xMp[13];
    xmaxc_to_exp_mant(xmaxc, exp, mant);
    apcm_inverse_quantization(pXMc, mant, exp, xMp);
    grid_positioning(Mc, xMp, pDst);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// GSM 06.10 4.2.4 to 4.2.7 LPC analysis of the full-rate encoder:
// autocorrelation of the 160 pre-processed samples with dynamic scaling,
// reflection coefficients r (Q15) by the Schur recursion, log-area ratios
// LAR (Q14) by the piecewise-linear approximation, and their quantisation
// to the unsigned codes LARc.
#include "amr/gsmfr_lar.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// 4.2.4: L_ACF[0..8]. The samples are scaled down (rounded) by scalauto
/// bits when their maximum needs it and scaled back by a plain shift after,
/// as the standard does, so s may lose low bits. Scaled samples stay below
/// 2^11 in magnitude, so the 160-term sums cannot overflow.
void autocorrelation(Word16* s, Word32* L_ACF) {
    Word16 smax = 0;
    for (int k = 0; k < 160; ++k) {
        const Word16 t = abs_s(s[k]);
        if (t > smax) smax = t;
    }
    const Word16 scalauto = smax == 0 ? 0 : static_cast<Word16>(4 - norm_l(L_deposit_h(smax)));
    if (scalauto > 0) {
        const Word16 factor = static_cast<Word16>(16384 >> (scalauto - 1));
        for (int k = 0; k < 160; ++k) s[k] = mult_r(s[k], factor);
    }
    for (int k = 0; k <= 8; ++k) {
        Word32 acc = 0;
        for (int i = k; i < 160; ++i) acc += Word32{s[i]} * s[i - k];
        L_ACF[k] = gsmfr::shl_wrap(acc, 1);
    }
    if (scalauto > 0)
        for (int k = 0; k < 160; ++k) s[k] = static_cast<Word16>(s[k] << scalauto);
}

/// 4.2.5: reflection coefficients r[0..7] by the Schur recursion in 16-bit
/// arithmetic; zeros from the point where the recursion would be unstable.
void schur(const Word32* L_ACF, Word16* r) {
    for (int i = 0; i < 8; ++i) r[i] = 0;
    if (L_ACF[0] == 0) return;
    const Word16 temp = norm_l(L_ACF[0]);
    Word16 ACF[9], P[9], K[9];
    for (int i = 0; i <= 8; ++i) ACF[i] = static_cast<Word16>(gsmfr::shl_wrap(L_ACF[i], temp) >> 16);
    for (int i = 1; i <= 7; ++i) K[i] = ACF[i];
    for (int i = 0; i <= 8; ++i) P[i] = ACF[i];
    for (int n = 1; n <= 8; ++n) {
        const Word16 a = abs_s(P[1]);
        if (P[0] < a) return;
        Word16 rn = div_s(a, P[0]);
        if (P[1] > 0) rn = static_cast<Word16>(-rn);
        r[n - 1] = rn;
        if (n == 8) return;
        P[0] = add(P[0], mult_r(P[1], rn));
        for (int m = 1; m <= 8 - n; ++m) {
            P[m] = add(P[m + 1], mult_r(K[m], rn));
            K[m] = add(K[m], mult_r(P[m + 1], rn));
        }
    }
}

/// 4.2.6: LAR (Q14) of a reflection coefficient (Q15).
Word16 rp_to_lar(Word16 r) {
    Word16 t = abs_s(r);
    if (t < 22118) t = static_cast<Word16>(t >> 1);
    else if (t < 31130) t = static_cast<Word16>(t - 11059);
    else t = static_cast<Word16>((t - 26112) << 2);
    return r < 0 ? static_cast<Word16>(-t) : t;
}

/// 4.2.7: LARc = A x LAR + B rounded at 2^9, limited to MIC..MAC, minus MIC.
Word16 quantize_lar(int i, Word16 lar) {
    Word16 t = mult(gsmfr_A[i], lar);
    t = add(t, gsmfr_B[i]);
    t = add(t, 256);
    t = shr(t, 9);
    return t > gsmfr_MAC[i] ? static_cast<Word16>(gsmfr_MAC[i] - gsmfr_MIC[i])
                            : t < gsmfr_MIC[i] ? 0 : static_cast<Word16>(t - gsmfr_MIC[i]);
}

}  // namespace

ZepStatus zepsLPCAnalysis_GSMFR_16s_I(Zep16s* pSrcDst, Zep16s* pLARc) {
    if (any_null(pSrcDst, pLARc)) return zepStsNullPtrErr;
    Word32 L_ACF[9];
    Word16 r[8];
    autocorrelation(pSrcDst, L_ACF);
    schur(L_ACF, r);
    for (int i = 0; i < 8; ++i) pLARc[i] = quantize_lar(i, rp_to_lar(r[i]));
    return zepStsNoErr;
}

ZEPS_END_VARIANT

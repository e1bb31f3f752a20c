// G.729 Annex B DTX at the encoder (B.4.1, Update_cng and the decision part
// of Cod_cng): autocorrelation histories (high halves with exponents), the
// residual energies of the last two frames, the SID energy quantisation,
// the Itakura-distance stationarity tests (Cmp_filt) and the choice of the
// filter a SID frame carries. LP coefficients Q12, reflection coefficients Q15.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729b_kernels.h"
#include "g729/g729b_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrder = 10;
constexpr int kMp1 = kOrder + 1;
constexpr int kNbSumAcf = 3;
constexpr int kNbCurAcf = 2;
constexpr int kNbGain = 2;
constexpr Word16 kFrSidMin = 3;
constexpr Word16 kFracThresh1 = 4855;
constexpr Word16 kFracThresh2 = 3161;
constexpr Word16 kGainOld = 28672;  // A_GAIN0
constexpr Word16 kGainNew = 4096;   // A_GAIN1

/// The encoder's DTX memory (the statics of the reference's dtx.c), 168 bytes.
struct DtxState {
    Word16 acf[kNbCurAcf * kMp1];     // last two frames' autocorrelations, newest first
    Word16 sh_acf[kNbCurAcf];
    Word16 sum_acf[kNbSumAcf * kMp1];  // sums of pairs of frames, newest first
    Word16 sh_sum_acf[kNbSumAcf];
    Word16 ener[kNbGain];             // residual energies, newest first
    Word16 sh_ener[kNbGain];
    Word16 rcoeff[kMp1];              // autocorrelation of the reference filter
    Word16 sh_rcoeff;
    Word16 fr_cur, cur_gain, nb_ener, sid_gain, flag_chang, prev_energy, count_fr0;
    Word16 pad;
};
static_assert(sizeof(DtxState) == 168);

/// Calc_sum_acf: normalised sum of nb autocorrelations with their exponents.
void calc_sum_acf(const Word16* acf, const Word16* sh_acf, Word16* sum, Word16& sh_sum, int nb) {
    Word16 sh0 = sh_acf[0];
    for (int i = 1; i < nb; ++i)
        if (sh_acf[i] < sh0) sh0 = sh_acf[i];
    sh0 = add(sh0, 14);
    Word32 tab[kMp1] = {};
    for (int i = 0; i < nb; ++i) {
        const Word16 t = sub(sh0, sh_acf[i]);
        for (int j = 0; j < kMp1; ++j) tab[j] = L_add(tab[j], L_shl(L_deposit_l(acf[i * kMp1 + j]), t));
    }
    const Word16 n = norm_l(tab[0]);
    for (int i = 0; i < kMp1; ++i) sum[i] = extract_h(L_shl(tab[i], n));
    sh_sum = add(sh0, sub(n, 16));
}

/// Update_sumAcf: shift the sums and add the newest pair of frames.
void update_sum_acf(DtxState& s) {
    std::memmove(s.sum_acf + kMp1, s.sum_acf, sizeof(Word16) * (kNbSumAcf - 1) * kMp1);
    for (int i = kNbSumAcf - 1; i >= 1; --i) s.sh_sum_acf[i] = s.sh_sum_acf[i - 1];
    calc_sum_acf(s.acf, s.sh_acf, s.sum_acf, s.sh_sum_acf[0], kNbCurAcf);
}

/// Annex B Levinson on a 16-bit autocorrelation (low halves zero). The
/// reference checks stability from the second reflection coefficient on and
/// then returns the last stable filter; `prev` (11 LP + 2 reflection
/// coefficients) is that filter, replaced on success. `err` is left as it
/// was on the fallback, as the reference leaves it.
void levinson_b(const Word16* Rh, Word16* A, Word16* prev, Word16& err) {
    Word16 Ah[kMp1], Al[kMp1], Anh[kMp1], Anl[kMp1], rc[2] = {0, 0};
    const Word16 Rl[kMp1] = {};
    Word32 t1 = L_Comp(Rh[1], Rl[1]);
    Word32 t0 = Div_32(L_abs(t1), Rh[0], Rl[0]);
    if (t1 > 0) t0 = L_negate(t0);
    Word16 Kh, Kl;
    L_Extract(t0, Kh, Kl);
    rc[0] = Kh;
    L_Extract(L_shr(t0, 4), Ah[1], Al[1]);
    auto one_minus_k2 = [](Word16 kh, Word16 kl) { return L_Extract(L_sub(MAX_32, L_abs(Mpy_32(kh, kl, kh, kl)))); };
    DPF f = one_minus_k2(Kh, Kl);
    t0 = Mpy_32(Rh[0], Rl[0], f.hi, f.lo);
    Word16 alp_exp = norm_l(t0);
    Word16 alp_h, alp_l;
    L_Extract(L_shl(t0, alp_exp), alp_h, alp_l);
    for (int i = 2; i <= kOrder; ++i) {
        t0 = 0;
        for (int j = 1; j < i; ++j) t0 = L_add(t0, Mpy_32(Rh[j], Rl[j], Ah[i - j], Al[i - j]));
        t0 = L_add(L_shl(t0, 4), L_Comp(Rh[i], Rl[i]));
        Word32 t2 = Div_32(L_abs(t0), alp_h, alp_l);
        if (t0 > 0) t2 = L_negate(t2);
        t2 = L_shl(t2, alp_exp);
        L_Extract(t2, Kh, Kl);
        if (i == 2) rc[1] = Kh;
        if (abs_s(Kh) > 32750) {
            std::memcpy(A, prev, sizeof(Word16) * kMp1);
            return;
        }
        for (int j = 1; j < i; ++j) L_Extract(L_add(Mpy_32(Kh, Kl, Ah[i - j], Al[i - j]), L_Comp(Ah[j], Al[j])), Anh[j], Anl[j]);
        L_Extract(L_shr(t2, 4), Anh[i], Anl[i]);
        f = one_minus_k2(Kh, Kl);
        t0 = Mpy_32(alp_h, alp_l, f.hi, f.lo);
        const Word16 n = norm_l(t0);
        L_Extract(L_shl(t0, n), alp_h, alp_l);
        alp_exp = add(alp_exp, n);
        for (int j = 1; j <= i; ++j) {
            Ah[j] = Anh[j];
            Al[j] = Anl[j];
        }
    }
    err = shr(alp_h, alp_exp);
    A[0] = 4096;
    for (int i = 1; i <= kOrder; ++i) A[i] = round_fx(L_shl(L_Comp(Ah[i], Al[i]), 1));
    std::memcpy(prev, A, sizeof(Word16) * kMp1);
    prev[kMp1] = rc[0];
    prev[kMp1 + 1] = rc[1];
}

/// Calc_RCoeff: autocorrelation of the filter coefficients, normalised.
void calc_rcoeff(const Word16* a, Word16* r, Word16& sh) {
    Word32 acc = 0;
    for (int j = 0; j <= kOrder; ++j) acc = L_mac(acc, a[j], a[j]);
    sh = norm_l(acc);
    r[0] = round_fx(L_shl(acc, sh));
    for (int i = 1; i <= kOrder; ++i) {
        acc = 0;
        for (int j = 0; j <= kOrder - i; ++j) acc = L_mac(acc, a[j], a[j + i]);
        r[i] = round_fx(L_shl(acc, sh));
    }
}

/// Cmp_filt: true when the Itakura distance of acf to the filter whose
/// autocorrelation is rcoeff exceeds alpha x (1 + thresh).
bool cmp_filt(const Word16* rcoeff, Word16 sh_rcoeff, const Word16* acf, Word16 alpha, Word16 thresh) {
    Word16 sh[2] = {0, 0};
    int ind = 1;
    Word32 L_temp0;
    for (;;) {
        Flag ovf = false;
        L_temp0 = L_shr(L_mult(shr(rcoeff[0], sh[0]), shr(acf[0], sh[1]), ovf), 1);
        for (int i = 1; i <= kOrder; ++i) L_temp0 = L_mac(L_temp0, shr(rcoeff[i], sh[0]), shr(acf[i], sh[1]), ovf);
        if (!ovf) break;
        sh[ind] = add(sh[ind], 1);
        ind = 1 - ind;
    }
    Word32 L_temp1 = L_add(L_deposit_l(mult_r(alpha, thresh)), L_deposit_l(alpha));
    L_temp1 = L_shl(L_temp1, sub(add(sh_rcoeff, 9), add(sh[0], sh[1])));
    return L_sub(L_temp0, L_temp1) > 0;
}

/// Calc_pastfilt: the filter of the sum of the past sums of autocorrelations.
void calc_pastfilt(const DtxState& s, Word16* coeff, Word16* prev) {
    Word16 sum[kMp1], sh, err;
    calc_sum_acf(s.sum_acf, s.sh_sum_acf, sum, sh, kNbSumAcf);
    if (sum[0] == 0) {
        coeff[0] = 4096;
        for (int i = 1; i <= kOrder; ++i) coeff[i] = 0;
        return;
    }
    levinson_b(sum, coeff, prev, err);
}

}  // namespace

ZepStatus zepsDTXGetStateSize_G729B(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(DtxState);
    return zepStsNoErr;
}

ZepStatus zepsDTXInit_G729B(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    DtxState s{};
    for (auto& v : s.sh_sum_acf) v = 40;
    for (auto& v : s.sh_acf) v = 40;
    for (auto& v : s.sh_ener) v = 40;
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsDTXUpdate_G729B_16s(const Zep32s* pAutoCorr, Zep16s expR0, Zep16s vad, Zep8u* pState) {
    if (any_null(pAutoCorr, pState)) return zepStsNullPtrErr;
    if (vad != 0 && vad != 1) return zepStsRangeErr;
    DtxState s;
    std::memcpy(&s, pState, sizeof s);
    std::memmove(s.acf + kMp1, s.acf, sizeof(Word16) * (kNbCurAcf - 1) * kMp1);
    for (int i = kNbCurAcf - 1; i >= 1; --i) s.sh_acf[i] = s.sh_acf[i - 1];
    s.sh_acf[0] = negate(add(16, expR0));
    for (int i = 0; i < kMp1; ++i) s.acf[i] = extract_h(pAutoCorr[i]);
    s.fr_cur = add(s.fr_cur, 1);
    if (s.fr_cur == kNbCurAcf) {
        s.fr_cur = 0;
        if (vad != 0) update_sum_acf(s);
    }
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsDTX_G729B_16s(Zep16s pastVad, Zep16s* pSrcDstPrevFilter, Zep16s* pDstFrameType, Zep16s* pDstLPC,
                            Zep16s* pDstGainIdx, Zep16s* pDstGain, Zep8u* pState) {
    if (any_null(pSrcDstPrevFilter, pDstFrameType, pDstLPC, pDstGainIdx, pDstGain, pState)) return zepStsNullPtrErr;
    if (pastVad != 0 && pastVad != 1) return zepStsRangeErr;
    DtxState s;
    std::memcpy(&s, pState, sizeof s);
    Word16 prev[kMp1 + 2];
    std::memcpy(prev, pSrcDstPrevFilter, sizeof prev);

    // Residual energy of the current pair of frames.
    for (int i = kNbGain - 1; i >= 1; --i) {
        s.ener[i] = s.ener[i - 1];
        s.sh_ener[i] = s.sh_ener[i - 1];
    }
    Word16 cur_acf[kMp1], cur_coeff[kMp1] = {4096};
    calc_sum_acf(s.acf, s.sh_acf, cur_acf, s.sh_ener[0], kNbCurAcf);
    if (cur_acf[0] == 0) {
        s.ener[0] = 0;
    } else {
        levinson_b(cur_acf, cur_coeff, prev, s.ener[0]);
    }

    // Decision: SID on the first inactive frame, then on a change.
    Word16 energyq, igain, ftyp;
    if (pastVad != 0) {
        ftyp = 2;
        s.count_fr0 = 0;
        s.nb_ener = 1;
        igain = qua_sidgain(s.ener, s.sh_ener, s.nb_ener, energyq);
    } else {
        s.nb_ener = add(s.nb_ener, 1);
        if (s.nb_ener > kNbGain) s.nb_ener = kNbGain;
        igain = qua_sidgain(s.ener, s.sh_ener, s.nb_ener, energyq);
        if (cmp_filt(s.rcoeff, s.sh_rcoeff, cur_acf, s.ener[0], kFracThresh1)) s.flag_chang = 1;
        if (sub(abs_s(sub(s.prev_energy, energyq)), 2) > 0) s.flag_chang = 1;
        s.count_fr0 = add(s.count_fr0, 1);
        if (s.count_fr0 < kFrSidMin) {
            ftyp = 0;
        } else {
            ftyp = s.flag_chang != 0 ? 2 : 0;
            s.count_fr0 = kFrSidMin;
        }
    }

    Word16 lpc[kMp1];
    if (ftyp == 2) {
        s.count_fr0 = 0;
        s.flag_chang = 0;
        // The past average filter is sent when the current one is close to it.
        Word16 past_coeff[kMp1];
        calc_pastfilt(s, past_coeff, prev);
        calc_rcoeff(past_coeff, s.rcoeff, s.sh_rcoeff);
        if (!cmp_filt(s.rcoeff, s.sh_rcoeff, cur_acf, s.ener[0], kFracThresh2)) {
            std::memcpy(lpc, past_coeff, sizeof lpc);
        } else {
            std::memcpy(lpc, cur_coeff, sizeof lpc);
            calc_rcoeff(cur_coeff, s.rcoeff, s.sh_rcoeff);
        }
        s.prev_energy = energyq;
        s.sid_gain = tab_Sidgain[igain];
    }

    // Target gain of the excitation.
    if (pastVad != 0) {
        s.cur_gain = s.sid_gain;
    } else {
        s.cur_gain = add(mult_r(s.cur_gain, kGainOld), mult_r(s.sid_gain, kGainNew));
    }
    if (s.fr_cur == 0) update_sum_acf(s);

    std::memcpy(pState, &s, sizeof s);
    std::memcpy(pSrcDstPrevFilter, prev, sizeof prev);
    *pDstFrameType = ftyp;
    if (ftyp == 2) std::memcpy(pDstLPC, lpc, sizeof lpc);
    *pDstGainIdx = igain;
    *pDstGain = s.cur_gain;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

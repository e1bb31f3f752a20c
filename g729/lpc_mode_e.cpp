// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E backward/forward LP mode decision of the encoder (E.3.2,
// set_lpc_mode with Int_bwd, tst_bwd_dominant and calc_stat): prediction
// gains (ener_dB differences, Q11) of the backward filter, of the backward
// filter interpolated with the previous frame's, and of the quantised
// forward filters over the frame's input; a threshold adapted by the global
// stationarity index (Q8, 0..32000); the LSP distance test that keeps a
// stationary backward run; the low-energy override; the backward-dominance
// counters and the stationarity update. LP coefficients Q12, LSPs Q15.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729e_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kFrame = 80;
constexpr int kOrder = 10;
constexpr int kOrderBwd = g729e::kMaxOrder;
constexpr int kSubfr = g729e::kSubfr;

Word16 energy_db(const Word16* x, int len) {
    Word16 e = 0;
    zepsEnergyDB_G729E_16s(x, len, &e);
    return e;
}

/// Int_bwd: the second subframe's filter moved towards the previous frame's
/// by c_int - 410 (at least 0), the first subframe's the mean of the two.
void interpolate_backward(Word16* a_bwd, const Word16* prev_filter, Word16& c_int) {
    Word16* pa = a_bwd + kOrderBwd + 1;
    Word16 c = sub(c_int, 410);
    if (c < 0) c = 0;
    const Word16 w = sub(4096, c);
    for (int i = 0; i <= kOrderBwd; ++i)
        pa[i] = add(extract_l(L_shr(L_mult(pa[i], w), 13)), extract_l(L_shr(L_mult(prev_filter[i], c), 13)));
    for (int i = 0; i <= kOrderBwd; ++i) a_bwd[i] = add(shr(pa[i], 1), shr(prev_filter[i], 1));
    c_int = c;
}

/// tst_bwd_dominant: backward frames more than 4 times the forward ones over
/// the last 10 to 99 loud frames.
Word16 backward_dominant(Word16 mode, Word16& count_bwd, Word16& count_fwd) {
    if (mode == 0)
        ++count_fwd;
    else
        ++count_bwd;
    Word16 all = add(count_bwd, count_fwd);
    if (all == 100) {
        all = shr(all, 1);
        count_bwd = shr(count_bwd, 1);
        count_fwd = shr(count_fwd, 1);
    }
    return all >= 10 && count_bwd > shl(count_fwd, 2) ? Word16{1} : Word16{0};
}

/// calc_stat: the global stationarity index from the decisions and gains.
void update_stationarity(int gpred_b, int gpred_f, Word16 mode, Word16 prev_mode, Word16& glob, Word16& stat_bwd,
                         Word16& val_stat_bwd) {
    if (mode == 1) {
        stat_bwd = add(stat_bwd, 1);
        val_stat_bwd = add(val_stat_bwd, 250);
        if (stat_bwd == 20)
            glob = add(glob, 2500);
        else if (stat_bwd > 20)
            glob = add(glob, 500);
    } else if (prev_mode == 1) {
        if (stat_bwd < 20) glob = sub(glob, sub(5000, val_stat_bwd));
        stat_bwd = 0;
        val_stat_bwd = 0;
    }
    int g = glob;
    if (g < 13000) {
        if (gpred_b > gpred_f + 819)
            g += 3200;
        else if (gpred_b > gpred_f + 614)
            g += 2400;
        else if (gpred_b > gpred_f + 410)
            g += 1600;
        else if (gpred_b > gpred_f + 205)
            g += 800;
        else if (gpred_b > gpred_f)
            g += 400;
    }
    if (gpred_b < gpred_f - 955)
        g -= 6400;
    else if (gpred_b < gpred_f - 819)
        g -= 3200;
    else if (gpred_b < gpred_f - 614)
        g -= 1600;
    else if (gpred_b < gpred_f - 410)
        g -= 800;
    else if (gpred_b < gpred_f - 205)
        g -= 400;
    glob = static_cast<Word16>(g > 32000 ? 32000 : g < 0 ? 0 : g);
}

}  // namespace

ZepStatus zepsLPCModeDecision_G729E_16s(const Zep16s* pSignal, const Zep16s* pAFwd, Zep16s* pABwd, Zep16s* pMode,
                                        const Zep16s* pLspNew, const Zep16s* pLspOld, int rate,
                                        Zep16s* pBwdDominant, Zep16s prevMode, const Zep16s* pPrevFilter,
                                        Zep16s* pSrcDstCInt, Zep16s* pSrcDstStat) {
    if (any_null(pSignal, pAFwd, pABwd, pMode, pLspNew, pLspOld, pBwdDominant, pPrevFilter, pSrcDstCInt,
                 pSrcDstStat))
        return zepStsNullPtrErr;
    if (rate != 0 && rate != 1) return zepStsRangeErr;
    if (prevMode != 0 && prevMode != 1) return zepStsRangeErr;
    if (*pSrcDstCInt < 0 || *pSrcDstCInt > 4506) return zepStsRangeErr;
    if (pSrcDstStat[0] < 0 || pSrcDstStat[0] > 32000 || pSrcDstStat[1] < 0 || pSrcDstStat[3] < 0 ||
        pSrcDstStat[4] < 0 || pSrcDstStat[3] + pSrcDstStat[4] > 99)
        return zepStsRangeErr;

    Word16& glob = pSrcDstStat[0];
    if (rate == 0) {
        // Forward only: the index decays towards 10000.
        if (glob > 10000) {
            glob = sub(glob, 2621);
            if (glob < 10000) glob = 10000;
        }
        *pMode = 0;
        *pBwdDominant = 0;
        return zepStsNoErr;
    }

    Word16 res[kFrame];
    const Word16* pa_bwd = pABwd + kOrderBwd + 1;
    const int energy = energy_db(pSignal, kFrame);
    g729e::residue(kOrderBwd, pa_bwd, pSignal, res, kFrame);
    const int gpred_b = energy - energy_db(res, kFrame);
    interpolate_backward(pABwd, pPrevFilter, *pSrcDstCInt);
    g729e::residue(kOrderBwd, pABwd, pSignal, res, kSubfr);
    g729e::residue(kOrderBwd, pa_bwd, pSignal + kSubfr, res + kSubfr, kSubfr);
    const int gpred_bint = energy - energy_db(res, kFrame);
    g729e::residue(kOrder, pAFwd, pSignal, res, kSubfr);
    g729e::residue(kOrder, pAFwd + kOrder + 1, pSignal + kSubfr, res + kSubfr, kSubfr);
    const int gpred_f = energy - energy_db(res, kFrame);

    // Prediction gains against a threshold adapted to the stationarity.
    const int gap = add(extract_l(L_shr(L_mult(shr(glob, 7), 3), 1)), 205);
    Word16 mode = gpred_bint > gpred_f - gap && gpred_b > gpred_f - gap && gpred_b > 0 && gpred_bint > 0 ? 1 : 0;
    if (glob < 13000) mode = 0;

    // A stationary spectrum keeps the backward mode.
    Word32 dist = 0;
    for (int i = 0; i < kOrder; ++i) {
        const Word16 d = sub(pLspOld[i], pLspNew[i]);
        dist = L_mac(dist, d, d);
    }
    const Word32 thresh = glob < 32000 ? 0 : 64424509;
    if (dist < thresh && mode == 0 && prevMode == 1 && gpred_b > 0 && gpred_bint > 0) mode = 1;

    if (energy < 8192) {
        mode = 0;
        if (glob > 13000) glob = 13000;
    } else {
        *pBwdDominant = backward_dominant(mode, pSrcDstStat[3], pSrcDstStat[4]);
        update_stationarity(gpred_b, gpred_f, mode, prevMode, glob, pSrcDstStat[1], pSrcDstStat[2]);
    }
    *pMode = mode;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

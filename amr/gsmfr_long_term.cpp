// GSM 06.10 4.2.11 and 4.2.12 long-term predictor of the full-rate encoder
// (lag and gain search, long-term analysis filtering) and 4.3.2 long-term
// synthesis filter of the decoder. Residual signals in the Q15 of the
// pre-processed speech; gains DLB and QLB in Q15.
#include <algorithm>
#include <cstddef>

#include "amr/gsmfr_lar.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// Cross-correlation of wt[0..39] with dp[-lag..39-lag] (dp points one past
/// the history). The scaled wt stays below 2^9 in magnitude, so the exact
/// 32-bit sum cannot overflow and its order is free.
inline Word32 cross(const Word16* wt, const Word16* dp, int lag) {
    const Word16* p = dp - lag;
    Word32 acc = 0;
    for (int k = 0; k < 40; ++k) acc += Word32{wt[k]} * p[k];
    return acc;
}

/// 4.2.11: the lag Nc and coded gain bc of one sub-frame.
void ltp_parameters(const Word16* d, const Word16* dp, Word16& Nc_out, Word16& bc_out) {
    Word16 dmax = 0;
    for (int k = 0; k < 40; ++k) dmax = std::max(dmax, abs_s(d[k]));
    const Word16 temp = dmax == 0 ? 0 : norm_l(L_deposit_h(dmax));
    const Word16 scal = temp > 6 ? 0 : static_cast<Word16>(6 - temp);
    Word16 wt[40];
    for (int k = 0; k < 40; ++k) wt[k] = shr(d[k], scal);

    Word32 L_max = 0;
    Word16 Nc = 40;
    for (int lambda = 40; lambda <= 120; ++lambda) {
        const Word32 r = cross(wt, dp, lambda);
        if (r > L_max) {
            Nc = static_cast<Word16>(lambda);
            L_max = r;
        }
    }
    Nc_out = Nc;
    L_max = gsmfr::shl_wrap(L_max, 1) >> (6 - scal);

    Word32 L_power = 0;
    for (int k = 0; k < 40; ++k) {
        const Word32 t = dp[k - Nc] >> 3;
        L_power += t * t;
    }
    L_power = gsmfr::shl_wrap(L_power, 1);

    if (L_max <= 0) {
        bc_out = 0;
        return;
    }
    if (L_max >= L_power) {
        bc_out = 3;
        return;
    }
    const Word16 n = norm_l(L_power);
    const Word16 R = static_cast<Word16>(gsmfr::shl_wrap(L_max, n) >> 16);
    const Word16 S = static_cast<Word16>(gsmfr::shl_wrap(L_power, n) >> 16);
    Word16 bc = 0;
    while (bc <= 2 && R > mult(S, gsmfr_DLB[bc])) ++bc;
    bc_out = bc;
}

struct SynthesisState {
    Word16 nrp;        // last valid lag
    Word16 drp[120];   // reconstructed short-term residual, oldest first
    Word16 pad;
};
static_assert(sizeof(SynthesisState) == 244);

}  // namespace

ZepStatus zepsLongTermPredict_GSMFR_16s(const Zep16s* pD, const Zep16s* pDp, Zep16s* pE, Zep16s* pDpp, Zep16s* pNc,
                                        Zep16s* pBc) {
    if (any_null(pD, pDp, pE, pDpp, pNc, pBc)) return zepStsNullPtrErr;
    const Word16* dp = pDp + 120;  // dp[-120..-1]
    Word16 Nc, bc;
    ltp_parameters(pD, dp, Nc, bc);
    // 4.2.12: estimate and long-term residual.
    const Word16 bp = gsmfr_QLB[bc];
    for (int k = 0; k < 40; ++k) {
        const Word16 est = mult_r(bp, dp[k - Nc]);
        pE[k] = sub(pD[k], est);
        pDpp[k] = est;
    }
    *pNc = Nc;
    *pBc = bc;
    return zepStsNoErr;
}

ZepStatus zepsLongTermSynthesisFilterGetStateSize_GSMFR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(SynthesisState);
    return zepStsNoErr;
}

ZepStatus zepsLongTermSynthesisFilterInit_GSMFR_16s(ZepGSMFRLongTermSynthesisState* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    SynthesisState st{};
    st.nrp = 40;
    gsmfr::store_state(pState, st);
    return zepStsNoErr;
}

ZepStatus zepsLongTermSynthesisFilter_GSMFR_16s(ZepGSMFRLongTermSynthesisState* pState, Zep16s Ncr, Zep16s bcr,
                                                const Zep16s* pErp, Zep16s* pDst) {
    if (any_null(pState, pErp, pDst)) return zepStsNullPtrErr;
    if (bcr < 0 || bcr > 3) return zepStsRangeErr;
    // The block is read and written in place, field by field (no alignment
    // is required of it).
    auto* block = reinterpret_cast<unsigned char*>(pState);
    constexpr std::size_t kNrp = offsetof(SynthesisState, nrp), kDrp = offsetof(SynthesisState, drp);
    Word16 nrp;
    std::memcpy(&nrp, block + kNrp, sizeof nrp);
    // A lag outside 40..120 repeats the last valid one; a state whose stored
    // lag is itself invalid (only a corrupted block) falls back to 40.
    Word16 Nr = Ncr < 40 || Ncr > 120 ? nrp : Ncr;
    if (Nr < 40 || Nr > 120) Nr = 40;
    const Word16 brp = gsmfr_QLB[bcr];
    // History and the new sub-frame in one line: drp[-120..39].
    Word16 line[160];
    std::memcpy(line, block + kDrp, 120 * sizeof(Word16));
    Word16* drp = line + 120;
    for (int k = 0; k < 40; ++k) drp[k] = add(pErp[k], mult_r(brp, drp[k - Nr]));
    std::memcpy(pDst, drp, 40 * sizeof(Word16));
    std::memcpy(block + kDrp, line + 40, 120 * sizeof(Word16));
    std::memcpy(block + kNrp, &Nr, sizeof Nr);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

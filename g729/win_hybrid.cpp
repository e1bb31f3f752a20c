// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E hybrid-window autocorrelation of the backward-adaptive
// order-30 LP analysis (E.3.1, autocorr_hyb_window, the G.728 recursive
// window): 145 samples of past synthesis (Q0) windowed by hw (Q15, applied
// in reverse), 31 lags; the recursive part decays by W_FACT (Q15) per frame.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrderBwd = 30;                        // M_BWD
constexpr int kLags = kOrderBwd + 1;                 // M_BWDP1
constexpr int kRecursiveEnd = kOrderBwd + 80;        // N1 = M_BWD + L_FRAME
constexpr int kAnalysis = 80 + kOrderBwd + 35;       // L_ANA_BWD
constexpr Word16 kDecay = 10368;                     // W_FACT

/// The 124-byte state: the recursive autocorrelation rexp[0..30].
struct WinHybridState {
    Word32 rexp[kLags];
};
static_assert(sizeof(WinHybridState) == 124);

}  // namespace

ZepStatus zepsWinHybridGetStateSize_G729E_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<Zep32s>(sizeof(WinHybridState));
    return zepStsNoErr;
}

ZepStatus zepsWinHybridInit_G729E_16s(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    const WinHybridState st{};
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZepStatus zepsWinHybrid_G729E_16s32s(const Zep16s* pSrc, Zep32s* pDst, Zep8u* pState) {
    if (any_null(pSrc, pDst, pState)) return zepStsNullPtrErr;
    WinHybridState st;
    std::memcpy(&st, pState, sizeof st);
    Word16 ws[kAnalysis];
    for (int n = kAnalysis - 1, k = 0; n >= 0; --n, ++k) ws[n] = mult(pSrc[n], hw[k]);
    for (int i = 0; i < kLags; ++i) {
        Word32 t = 0;
        for (int n = kOrderBwd; n < kRecursiveEnd; ++n) t = L_mac(t, ws[n], ws[n - i]);
        t = L_shr(t, 1);
        const DPF e = L_Extract(st.rexp[i]);
        st.rexp[i] = L_add(Mpy_32_16(e.hi, e.lo, kDecay), t);
    }
    for (int i = 0; i < kLags; ++i) {
        Word32 t = L_shl(st.rexp[i], 1);
        for (int n = kRecursiveEnd; n < kAnalysis; ++n) t = L_mac(t, ws[n], ws[n - i]);
        pDst[i] = L_shr(t, 1);
    }
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

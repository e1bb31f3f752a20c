// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E hybrid-window autocorrelation in single-precision floating
// point, following the G.729 Annex C+ routine autocorr_hyb_window: 145
// samples windowed by hw (applied in reverse), 31 lags, the recursive part
// decaying by W_FACT = 0.31640625 per call.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrderBwd = 30, kLags = 31, kRecursiveEnd = 110, kAnalysis = 145;
constexpr float kDecay = 0.31640625f;

/// The 124-byte state: the recursive autocorrelation rexp[0..30].
struct WinHybridStateF {
    float rexp[kLags];
};
static_assert(sizeof(WinHybridStateF) == 124);

}  // namespace

ZepStatus zepsWinHybridGetStateSize_G729E_32f(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<Zep32s>(sizeof(WinHybridStateF));
    return zepStsNoErr;
}

ZepStatus zepsWinHybridInit_G729E_32f(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    const WinHybridStateF st{};
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZepStatus zepsWinHybrid_G729E_32f(const Zep32f* pSrc, Zep32f* pDst, Zep8u* pState) {
    if (any_null(pSrc, pDst, pState)) return zepStsNullPtrErr;
    WinHybridStateF st;
    std::memcpy(&st, pState, sizeof st);
    float ws[kAnalysis];
    for (int n = kAnalysis - 1, k = 0; n >= 0; --n, ++k) ws[n] = pSrc[n] * g729f::hw[k];
    for (int i = 0; i < kLags; ++i) {
        float t = 0.0f;
        for (int n = kOrderBwd; n < kRecursiveEnd; ++n) t += ws[n] * ws[n - i];
        st.rexp[i] = kDecay * st.rexp[i] + t;
    }
    for (int i = 0; i < kLags; ++i) {
        float r = st.rexp[i];
        for (int n = kRecursiveEnd; n < kAnalysis; ++n) r += ws[n] * ws[n - i];
        pDst[i] = r;
    }
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

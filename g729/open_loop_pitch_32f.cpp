// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.729 Annex A/C float open-loop pitch analysis (pitch_ol_fast of
// the Annex C floating-point reference): correlations on every second
// sample, lags 20..39, 40..79 and the even lags 80..142 refined by +-1,
// each maximum normalised by 1/sqrt(energy + 0.01), then the favouring of
// sub-multiples. Single precision, sums in the reference's order.
#include <cmath>

#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

inline constexpr int kFrameF = 80;
inline constexpr float kMinF = -1.0e38f;  // FLT_MIN_G729

inline float corr2f(const float* s, int lag) {
    float sum = 0.0f;
    for (int j = 0; j < kFrameF; j += 2) sum += s[j] * s[j - lag];
    return sum;
}

int best_lag_f(const float* s, int lo, int hi, int step, float& max) {
    max = kMinF;
    int best = lo;
    for (int i = lo; i <= hi; i += step) {
        const float c = corr2f(s, i);
        if (c > max) {
            max = c;
            best = i;
        }
    }
    return best;
}

float normalise_f(const float* s, int lag, float max) {
    float sum = 0.01f;
    for (int i = 0; i < kFrameF; i += 2) sum += s[i - lag] * s[i - lag];
    return max * (1.0f / std::sqrt(sum));
}

inline int iabs(int v) { return v < 0 ? -v : v; }

}  // namespace

ZepStatus zepsOpenLoopPitchSearch_G729A_32f(const Zep32f* pSrc, Zep32s* pBestLag) {
    if (any_null(pSrc, pBestLag)) return zepStsNullPtrErr;
    float m;
    int T1 = best_lag_f(pSrc, 20, 39, 1, m);
    float max1 = normalise_f(pSrc, T1, m);
    const int T2 = best_lag_f(pSrc, 40, 79, 1, m);
    float max2 = normalise_f(pSrc, T2, m);
    int T3 = best_lag_f(pSrc, 80, 142, 2, m);
    const int t3 = T3;
    float c = corr2f(pSrc, t3 + 1);
    if (c > m) { m = c; T3 = t3 + 1; }
    c = corr2f(pSrc, t3 - 1);
    if (c > m) { m = c; T3 = t3 - 1; }
    const float max3 = normalise_f(pSrc, T3, m);

    if (iabs(T2 * 2 - T3) < 5) max2 += max3 * 0.25f;
    if (iabs(T2 * 3 - T3) < 7) max2 += max3 * 0.25f;
    if (iabs(T1 * 2 - T2) < 5) max1 += max2 * 0.20f;
    if (iabs(T1 * 3 - T2) < 7) max1 += max2 * 0.20f;
    if (max1 < max2) {
        max1 = max2;
        T1 = T2;
    }
    if (max1 < max3) T1 = T3;
    *pBestLag = T1;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

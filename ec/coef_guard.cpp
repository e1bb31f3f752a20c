// SPDX-License-Identifier: BSD-3-Clause
// Coefficient guard of an adaptive echo canceller (two-filter scheme after
// K. Ochiai, T. Araseki and T. Ogihara, "Echo canceller with two echo path
// models", IEEE Trans. Commun. 25(6), 1977), float, one call per frame.
//
// The canceller runs its adapting filter and a saved copy of it side by
// side and hands over three mean squares per frame: near end, the adapting
// filter's error and the saved filter's error. A double-talk frame that the
// detector misses lets the adapting filter drift towards the near talker;
// its error then rises above the saved filter's, and the guard restores the
// saved coefficients. Only a filter that has shown a good, undisturbed
// residual is saved, so ITU-T G.168's criterion (no divergence during
// double talk) holds whatever the double-talk detector misses.
//
// Rules (levels smoothed per frame: S = 0.7 S + 0.3 level):
// - restore (ZEP_EC_GUARD_RESTORE) when a copy has been saved and the saved
//   filter's smoothed error is below the restore ratio (0.5, 3 dB, after
//   Init; zepsCoefGuardSetRestore_EC_32f sets it) times the adapting filter's;
// - save (ZEP_EC_GUARD_SAVE) when no double talk is flagged, the adapting
//   filter's smoothed error is at most the saved filter's, and at least
//   more than 12 dB below the smoothed near-end level (a near talker in the input
//   keeps that ratio small, so a drifted filter is never saved);
// - otherwise keep (ZEP_EC_GUARD_KEEP).
// After a restore or a save both smoothed errors take the kept filter's.
#include <cmath>
#include <cstdint>

#include "common/args.h"
#include "common/exports.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic = 0x44524743;  // "CGRD"
constexpr float kSmooth = 0.7f;
constexpr float kRestoreRatio = 0.5f;      // after Init: saved error 3 dB below the adapting one
constexpr float kSaveErle = 15.848932f;    // 12 dB

struct CoefGuardState {
    std::int32_t magic;
    std::int32_t saved;  // 1 once a copy has been saved
    float nearLevel, adaptErr, savedErr;
    float restore;  // restore ratio, in (0, 1]
};

bool ratio_ok(float r) { return r > 0.0f && r <= 1.0f; }

constexpr int kStateSize = static_cast<int>(sizeof(CoefGuardState)) + 16;

}  // namespace

ZepStatus zepsCoefGuardGetSize_EC_32f(int* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kStateSize;
    return zepStsNoErr;
}

ZepStatus zepsCoefGuardInit_EC_32f(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    *align16<CoefGuardState>(pState) = CoefGuardState{kMagic, 0, 0.0f, 0.0f, 0.0f, kRestoreRatio};
    return zepStsNoErr;
}

ZepStatus zepsCoefGuard_EC_32f(const Zep32f* pLevels, int doubleTalk, Zep32s* pAction, Zep8u* pState) {
    if (any_null(pLevels, pAction, pState)) return zepStsNullPtrErr;
    if (!in_range(doubleTalk, 0, 1)) return zepStsBadArgErr;
    auto* s = align16<CoefGuardState>(pState);
    if (s->magic != kMagic || !in_range(s->saved, 0, 1) || !ratio_ok(s->restore)) return zepStsBadArgErr;
    for (int i = 0; i < 3; ++i)
        if (!(pLevels[i] >= 0.0f && pLevels[i] <= 3.0e38f)) return zepStsRangeErr;
    s->nearLevel = kSmooth * s->nearLevel + (1.0f - kSmooth) * pLevels[0];
    s->adaptErr = kSmooth * s->adaptErr + (1.0f - kSmooth) * pLevels[1];
    s->savedErr = kSmooth * s->savedErr + (1.0f - kSmooth) * pLevels[2];
    Zep32s action = ZEP_EC_GUARD_KEEP;
    if (s->saved == 1 && s->savedErr < s->restore * s->adaptErr) {
        action = ZEP_EC_GUARD_RESTORE;
        s->adaptErr = s->savedErr;
    } else if (doubleTalk == 0 && s->adaptErr <= s->savedErr && kSaveErle * s->adaptErr < s->nearLevel) {
        action = ZEP_EC_GUARD_SAVE;
        s->savedErr = s->adaptErr;
        s->saved = 1;
    }
    *pAction = action;
    return zepStsNoErr;
}

ZepStatus zepsCoefGuardSetRestore_EC_32f(Zep32f ratio, Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    auto* s = align16<CoefGuardState>(pState);
    if (s->magic != kMagic || !in_range(s->saved, 0, 1) || !ratio_ok(s->restore)) return zepStsBadArgErr;
    if (!ratio_ok(ratio)) return zepStsRangeErr;
    s->restore = ratio;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

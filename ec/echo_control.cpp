// SPDX-License-Identifier: BSD-3-Clause
// Echo-canceller controller, one call per frame: adaptation freeze, step
// size, echo-path change detection and the non-linear-processing decision,
// from the frame's mean-square levels (far end, near end, error, echo
// estimate) and the double-talk detector's flag. Float, fixed-size state.
//
// Rules (levels in 16-bit units squared; smoothing factor 0.9 per frame):
// - far end silent (mean square at most 1000, about -60 dBov): no adaptation;
// - double talk flagged: no adaptation, held 3 frames after the flag ends;
// - echo-path change: in 4 of the last 6 adapting frames (after the first
//   25) the smoothed error level was above the smoothed near-end level (the
//   echo estimate adds echo instead of removing it); the ERLE history then
//   restarts;
// - step: mode 0 fixed, 1.0; mode 1 variable: 1.0 until the smoothed ERLE
//   reaches 12 dB, then max(0.25, 10^(-(ERLE-12)/20)) (a smaller
//   misadjustment once converged);
// - converged: smoothed ERLE at least 12 dB after 25 adapting frames;
// - non-linear processing: far end active, no double-talk hold, converged.
#include <cmath>
#include <cstdint>

#include "common/args.h"
#include "common/exports.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic = 0x4C544345;  // "ECTL"
constexpr float kFarFloor = 1000.0f;         // mean square, 16-bit units (rms 31.6, about -60 dBov)
constexpr int kHoldFrames = 3;

struct EchoControlState {
    std::int32_t magic;
    std::int32_t mode;
    float nearLevel, errLevel;  // smoothed mean squares
    float erleDb;               // smoothed ERLE
    std::int32_t hold;          // frames of adaptation hold after double talk
    std::uint32_t worse;        // last adapting frames with error above near end (bit history)
    std::int32_t frames;        // adapting frames since start or path change
};

constexpr int kStateSize = static_cast<int>(sizeof(EchoControlState)) + 16;

float db(float num, float den) { return 10.0f * std::log10((num + 1e-3f) / (den + 1e-3f)); }

int popcount6(std::uint32_t v) {
    int n = 0;
    for (int i = 0; i < 6; ++i) n += (v >> i) & 1;
    return n;
}

}  // namespace

ZepStatus zepsEchoControlGetSize_EC_32f(int* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = kStateSize;
    return zepStsNoErr;
}

ZepStatus zepsEchoControlInit_EC_32f(Zep8u* pState, int mode) {
    if (!in_range(mode, 0, 1)) return zepStsBadArgErr;
    if (any_null(pState)) return zepStsNullPtrErr;
    auto* s = align16<EchoControlState>(pState);
    *s = EchoControlState{kMagic, mode, 0.0f, 0.0f, 0.0f, 0, 0, 0};
    return zepStsNoErr;
}

ZepStatus zepsEchoControl_EC_32f(const Zep32f* pLevels, int doubleTalk, Zep32f* pStep, Zep32s* pFlags,
                                 Zep8u* pState) {
    if (any_null(pLevels, pStep, pFlags, pState)) return zepStsNullPtrErr;
    if (!in_range(doubleTalk, 0, 1)) return zepStsBadArgErr;
    auto* s = align16<EchoControlState>(pState);
    if (s->magic != kMagic || !in_range(s->mode, 0, 1)) return zepStsBadArgErr;
    for (int i = 0; i < 4; ++i)
        if (!(pLevels[i] >= 0.0f && pLevels[i] <= 3.0e38f)) return zepStsRangeErr;
    const float farL = pLevels[0], nearL = pLevels[1], errL = pLevels[2];
    Zep32s flags = 0;
    if (doubleTalk) s->hold = kHoldFrames;
    else if (s->hold > 0) --s->hold;
    const bool farActive = farL > kFarFloor;
    const bool adapt = farActive && s->hold == 0;
    if (s->hold > 0) flags |= ZEP_EC_FLAG_DOUBLETALK;
    if (adapt) {
        s->nearLevel = 0.9f * s->nearLevel + 0.1f * nearL;
        s->errLevel = 0.9f * s->errLevel + 0.1f * errL;
        s->erleDb = db(s->nearLevel, s->errLevel);
        s->worse = ((s->worse << 1) | (s->errLevel > s->nearLevel && s->frames > 25 ? 1u : 0u)) & 63u;
        if (s->frames < 1000000) ++s->frames;
        if (popcount6(s->worse) >= 4) {
            flags |= ZEP_EC_FLAG_PATHCHANGE;
            s->worse = 0;
            s->frames = 0;
            s->nearLevel = nearL;
            s->errLevel = nearL;
            s->erleDb = 0.0f;
        }
    }
    float step = 0.0f;
    if (adapt) {
        flags |= ZEP_EC_FLAG_ADAPT;
        step = 1.0f;
        if (s->mode == 1 && s->erleDb > 12.0f) step = std::fmax(0.25f, std::pow(10.0f, -(s->erleDb - 12.0f) / 20.0f));
    }
    const bool converged = s->erleDb >= 12.0f && s->frames > 25;
    if (converged) flags |= ZEP_EC_FLAG_CONVERGED;
    if (farActive && s->hold == 0 && converged) flags |= ZEP_EC_FLAG_NLP;
    *pStep = step;
    *pFlags = flags;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// Geigel double-talk detector (D. L. Duttweiler, 1978), float: double talk
// is declared at sample n when |d[n]| >= threshold * max |x[n-m]| over the
// last tailLen far-end samples (m = 0..tailLen-1); the decision is held for
// `hangover` samples after the last such sample. With threshold 0.5 the
// detector assumes an echo return loss of at least 6 dB (ITU-T G.168).
// Variable-size state: header, then a ring of tailLen |x| values; placed at
// the first 16-byte boundary of the caller's block, pointing into itself.
// zepsDoubleTalkSetFloor_EC_32f puts a floor under the far-end peak: while
// the far end is silent over the whole tail, near-end noise or a near talker
// alone is not double talk (nothing there can be echo), so its hangover does
// not reach into the far end's next talk spurt.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "common/args.h"
#include "common/exports.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic = 0x44544447;  // "GDTD"
constexpr int kMaxTail = 1 << 16;

struct GeigelState {
    float* pRing;  // tailLen magnitudes, ring
    std::int32_t magic, tailLen, pos, hangover, count;
    float floor;              // far-end peak floor (0: the plain rule)
    float threshold, maxAbs;  // maxAbs: largest value of the ring
};
constexpr std::int64_t kHeader = 48;
static_assert(sizeof(GeigelState) <= kHeader);

bool floor_ok(float f) { return f >= 0.0f && f <= 3.0e38f; }

bool state_ok(const GeigelState* s) {
    return s->magic == kMagic && in_range(s->tailLen, 1, kMaxTail) && in_range(s->pos, 0, s->tailLen - 1) &&
           s->hangover >= 0 && s->count >= 0 && floor_ok(s->floor) && points_at(s->pRing, reinterpret_cast<const Zep8u*>(s), kHeader);
}

/// The largest ring value (the ring holds no NaN: magnitudes >= 0).
float ring_max(const float* r, int n) {
    int i = 0;
    float m = 0.0f;
#if defined(__SSE2__)
    __m128 m4a = _mm_setzero_ps(), m4b = _mm_setzero_ps();
    for (; i + 8 <= n; i += 8) {
        m4a = _mm_max_ps(m4a, _mm_loadu_ps(r + i));
        m4b = _mm_max_ps(m4b, _mm_loadu_ps(r + i + 4));
    }
    alignas(16) float q[4] = {};
    _mm_store_ps(q, _mm_max_ps(m4a, m4b));
    m = std::max(std::max(q[0], q[1]), std::max(q[2], q[3]));
#endif
    for (; i < n; ++i) m = r[i] > m ? r[i] : m;
    return m;
}

}  // namespace

ZepStatus zepsDoubleTalkGetSize_EC_32f(int tailLen, int* pSize) {
    if (!in_range(tailLen, 1, kMaxTail)) return zepStsBadArgErr;
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<int>(16 + kHeader + round16(4 * std::int64_t{tailLen}));
    return zepStsNoErr;
}

ZepStatus zepsDoubleTalkInit_EC_32f(Zep8u* pState, int tailLen, Zep32f threshold, int hangover) {
    if (!in_range(tailLen, 1, kMaxTail) || !in_range(hangover, 0, 1 << 20)) return zepStsBadArgErr;
    if (any_null(pState)) return zepStsNullPtrErr;
    if (!(threshold > 0.0f && threshold <= 16.0f)) return zepStsRangeErr;
    auto* s = align16<GeigelState>(pState);
    s->pRing = reinterpret_cast<float*>(reinterpret_cast<Zep8u*>(s) + kHeader);
    std::memset(s->pRing, 0, 4 * static_cast<std::size_t>(tailLen));
    s->tailLen = tailLen;
    s->pos = 0;
    s->hangover = hangover;
    s->count = 0;
    s->floor = 0.0f;
    s->threshold = threshold;
    s->maxAbs = 0.0f;
    s->magic = kMagic;
    return zepStsNoErr;
}

ZepStatus zepsDoubleTalk_EC_32f(const Zep32f* pFar, const Zep32f* pNear, Zep32s* pDoubleTalk, int len,
                                Zep8u* pState) {
    if (any_null(pFar, pNear, pDoubleTalk, pState)) return zepStsNullPtrErr;
    if (len < 1) return zepStsBadArgErr;
    auto* s = align16<GeigelState>(pState);
    if (!state_ok(s)) return zepStsBadArgErr;
    float* r = s->pRing;
    bool any = false;
    const float fl = s->floor;
    for (int n = 0; n < len; ++n) {
        const float a = std::fabs(pFar[n]);
        const float leaving = r[s->pos], entering = std::isnan(a) ? 0.0f : a;
        r[s->pos] = entering;
        if (++s->pos == s->tailLen) s->pos = 0;
        if (entering >= s->maxAbs) s->maxAbs = entering;
        else if (leaving >= s->maxAbs) s->maxAbs = ring_max(r, s->tailLen);
        const float peak = s->maxAbs > fl ? s->maxAbs : fl;
        if (std::fabs(pNear[n]) >= s->threshold * peak && std::fabs(pNear[n]) > 0.0f) s->count = s->hangover + 1;
        if (s->count > 0) {
            any = true;
            --s->count;
        }
    }
    *pDoubleTalk = any ? 1 : 0;
    return zepStsNoErr;
}

ZepStatus zepsDoubleTalkSetFloor_EC_32f(Zep32f floor, Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    auto* s = align16<GeigelState>(pState);
    if (!state_ok(s)) return zepStsBadArgErr;
    if (!floor_ok(floor)) return zepStsRangeErr;
    s->floor = floor;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

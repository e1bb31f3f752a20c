// SPDX-License-Identifier: BSD-3-Clause
// 2100 Hz answer-tone detector and canceller disabler (ITU-T G.164 and
// G.165 tone disablers), 16-bit samples at 8 or 16 kHz.
//
// The input is cut into 10 ms blocks (21 whole periods of 2100 Hz); each
// block gives the phasor X = sum x[n] exp(-j 2 pi 2100 n / fs) (the
// exponential by complex rotation from the block's start) and the
// energy E = sum x^2 (double precision). A block is a tone block when the
// 2100 Hz component carries at least 70 % of the block's energy
// (2|X|^2 / (N E) >= 0.7; this passes 2100 +-21 Hz and rejects 2000 and
// 2200 Hz) and its level 2|X|^2/N^2 is at least -36 dBm0 (0 dBm0: a mean
// square of 16138^2 in 16-bit units). A tone run survives up to 2 non-tone
// blocks (the block holding a phase reversal loses most of its energy).
// A phase reversal: the phase advance between consecutive tone blocks (or
// across the gap) departs from the run's steady advance by more than 90
// degrees, at most one per 150 ms.
// Disabling: rule 0 (G.164): the tone alone, held 250 ms; rule 1 (G.165):
// only a tone with a phase reversal after at least 200 ms of tone (a tone
// with reversals every 450 ms disables 450 ms after its start). Release:
// 250 ms of input below -36 dBm0 in every block.
// Result flags: ZEP_EC_TONE_PRESENT (a run of 50 ms or more at the end of
// the call), ZEP_EC_TONE_REVERSAL (this run has had a reversal),
// ZEP_EC_TONE_DISABLE (the canceller is to be disabled).
#include <cmath>
#include <cstdint>
#include <numbers>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "common/args.h"
#include "common/exports.h"
#include "ec/subband_state.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr std::int32_t kMagic = 0x30303132;  // "2100"
constexpr double kFloor = 16138.0 * 16138.0 * 2.5118864315095823e-4;  // -36 dBm0 mean square

struct ToneState {
    std::int32_t magic, rate, rule, block;  // block: samples per 10 ms
    std::int32_t fill;                      // samples of the current block
    std::int32_t run, gap, sinceRev, quiet, reversals, disabled, pad;
    double re, im, energy;  // current block sums
    double lastPhase, drift;
    std::int32_t haveDrift, phaseOk;
};

double wrap(double a) {
    while (a > std::numbers::pi) a -= 2.0 * std::numbers::pi;
    while (a < -std::numbers::pi) a += 2.0 * std::numbers::pi;
    return a;
}

void end_block(ToneState* s) {
    const double N = s->block;
    const double mag2 = s->re * s->re + s->im * s->im;
    const double ratio = s->energy > 0.0 ? 2.0 * mag2 / (N * s->energy) : 0.0;
    const bool tone = ratio >= 0.7 && 2.0 * mag2 / (N * N) >= kFloor;
    s->quiet = s->energy / N < kFloor ? s->quiet + 1 : 0;
    if (s->sinceRev < 1000) ++s->sinceRev;
    if (tone) {
        const double ph = std::atan2(s->im, s->re);
        if (s->run > 0 && s->phaseOk) {
            const int steps = s->gap + 1;
            const double adv = wrap(ph - s->lastPhase);
            const double dev = wrap(adv - steps * s->drift);
            if (s->haveDrift && std::fabs(dev) > std::numbers::pi / 2) {
                if (s->sinceRev >= 15) {
                    ++s->reversals;
                    s->sinceRev = 0;
                    if (s->rule == 1 && s->run >= 20) s->disabled = 1;
                }
            } else if (steps == 1) {
                s->drift = s->haveDrift ? wrap(s->drift + 0.25 * wrap(adv - s->drift)) : adv;
                s->haveDrift = 1;
            }
        }
        s->lastPhase = ph;
        s->phaseOk = 1;
        s->gap = 0;
        ++s->run;
        if (s->run > 100000) s->run = 100000;
        if (s->rule == 0 && s->run >= 25) s->disabled = 1;
    } else if (s->run > 0 && s->gap < 2) {
        ++s->gap;
        ++s->run;
    } else {
        s->run = 0;
        s->gap = 0;
        s->reversals = 0;
        s->haveDrift = 0;
        s->phaseOk = 0;
    }
    if (s->quiet >= 25) s->disabled = 0;
    s->re = s->im = s->energy = 0.0;
    s->fill = 0;
}

}  // namespace

ZepStatus zepsToneDetectGetSize_EC_16s(int* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = static_cast<int>(sizeof(ToneState)) + 16;
    return zepStsNoErr;
}

ZepStatus zepsToneDetectInit_EC_16s(Zep8u* pState, int sampleFreq, int rule) {
    if ((sampleFreq != 8000 && sampleFreq != 16000) || !in_range(rule, 0, 1)) return zepStsBadArgErr;
    if (any_null(pState)) return zepStsNullPtrErr;
    ToneState t{};
    t.rate = sampleFreq;
    t.rule = rule;
    t.block = sampleFreq / 100;
    t.sinceRev = 1000;
    t.magic = kMagic;
    *align16<ToneState>(pState) = t;
    return zepStsNoErr;
}

ZepStatus zepsToneDetect_EC_16s(const Zep16s* pSrc, int len, Zep32s* pResult, Zep8u* pState) {
    if (any_null(pSrc, pResult, pState)) return zepStsNullPtrErr;
    if (len < 1) return zepStsBadArgErr;
    auto* s = align16<ToneState>(pState);
    if (s->magic != kMagic || (s->rate != 8000 && s->rate != 16000) || s->block != s->rate / 100 ||
        !in_range(s->rule, 0, 1) || !in_range(s->fill, 0, s->block - 1) || !std::isfinite(s->drift) ||
        !std::isfinite(s->lastPhase) || !std::isfinite(s->energy))
        return zepStsBadArgErr;
    // The phasor exp(-j w fill) by rotation, restarted at every block (at
    // most 160 steps: rounding drift below 1e-13).
    const double w = 2.0 * std::numbers::pi * 2100.0 / s->rate, cw = std::cos(w), sw = std::sin(w);
#if defined(__SSE2__)
    // Lanes (re, im): the same products and sums as the scalar form below
    // (qi cw + pr (-sw) equals qi cw - pr sw exactly).
    __m128d ph = _mm_set_pd(-std::sin(w * s->fill), std::cos(w * s->fill)), acc = _mm_set_pd(s->im, s->re);
    const __m128d c2 = _mm_set1_pd(cw), s2 = _mm_set_pd(-sw, sw);
    for (int n = 0; n < len; ++n) {
        const double x = pSrc[n];
        acc = _mm_add_pd(acc, _mm_mul_pd(_mm_set1_pd(x), ph));
        s->energy += x * x;
        ph = _mm_add_pd(_mm_mul_pd(ph, c2), _mm_mul_pd(_mm_shuffle_pd(ph, ph, 1), s2));
        if (++s->fill == s->block) {
            _mm_storel_pd(&s->re, acc);
            _mm_storeh_pd(&s->im, acc);
            end_block(s);
            ph = _mm_set_pd(0.0, 1.0);
            acc = _mm_setzero_pd();
        }
    }
    _mm_storel_pd(&s->re, acc);
    _mm_storeh_pd(&s->im, acc);
#else
    double pr = std::cos(w * s->fill), qi = -std::sin(w * s->fill);
    for (int n = 0; n < len; ++n) {
        const double x = pSrc[n];
        s->re += x * pr;
        s->im += x * qi;
        s->energy += x * x;
        const double nr = pr * cw + qi * sw;
        qi = qi * cw - pr * sw;
        pr = nr;
        if (++s->fill == s->block) {
            end_block(s);
            pr = 1.0;
            qi = 0.0;
        }
    }
#endif
    Zep32s r = 0;
    if (s->run >= 5) r |= ZEP_EC_TONE_PRESENT;
    if (s->run >= 5 && s->reversals > 0) r |= ZEP_EC_TONE_REVERSAL;
    if (s->disabled) r |= ZEP_EC_TONE_DISABLE;
    *pResult = r;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

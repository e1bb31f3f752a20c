// SPDX-License-Identifier: BSD-3-Clause
// Sub-band adaptive filter, output of one frame: per band k, the sum over
// the segments s of X_s[k] C_s[k], X_s the far-end sub-band spectrum s
// frames ago (segment 0 the newest) and C_s the coefficients. Complex float,
// and complex 32-bit with Q31 coefficients and a caller's scale factor.
#include <cstdint>

#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kMaxBands = 4097;
constexpr int kMaxSegments = 255;

/// Sub-band count, then segment count, in that order.
ZepStatus check_shape(int numBands, int numSegments) {
    if (!in_range(numBands, 1, kMaxBands)) return zepStsSubbandNumErr;
    if (!in_range(numSegments, 1, kMaxSegments)) return zepStsRangeErr;
    return zepStsNoErr;
}

/// round(acc 2^-shift) saturated to 32 bits, shift 0..62 (ties up).
Zep32s round_shift_sat(__int128 acc, int shift) {
    if (shift > 0) acc = (acc + (static_cast<__int128>(1) << (shift - 1))) >> shift;
    if (acc > INT32_MAX) return INT32_MAX;
    if (acc < INT32_MIN) return INT32_MIN;
    return static_cast<Zep32s>(acc);
}

}  // namespace

ZepStatus zepsSubbandFilter_EC_32fc(const Zep32fc* pSrc, const Zep32fc* pCoef, Zep32fc* pDst, int numBands,
                                    int numSegments) {
    if (any_null(pSrc, pCoef, pDst)) return zepStsNullPtrErr;
    if (const ZepStatus st = check_shape(numBands, numSegments); st != zepStsNoErr) return st;
    const std::size_t B = static_cast<std::size_t>(numBands);
    for (std::size_t k = 0; k < B; ++k) {
        float re = 0.0f, im = 0.0f;
        for (std::size_t s = 0; s < static_cast<std::size_t>(numSegments); ++s) {
            const Zep32fc x = pSrc[s * B + k], c = pCoef[s * B + k];
            re += x.re * c.re - x.im * c.im;
            im += x.re * c.im + x.im * c.re;
        }
        pDst[k] = {re, im};
    }
    return zepStsNoErr;
}

ZepStatus zepsSubbandFilter_EC_32sc_Sfs(const Zep32sc* pSrc, const Zep32sc* pCoef, Zep32sc* pDst, int numBands,
                                        int numSegments, int scaleFactor) {
    if (any_null(pSrc, pCoef, pDst)) return zepStsNullPtrErr;
    if (const ZepStatus st = check_shape(numBands, numSegments); st != zepStsNoErr) return st;
    if (!in_range(scaleFactor, -31, 31)) return zepStsRangeErr;
    const std::size_t B = static_cast<std::size_t>(numBands);
    const int shift = 31 + scaleFactor;
    for (std::size_t k = 0; k < B; ++k) {
        __int128 re = 0, im = 0;
        for (std::size_t s = 0; s < static_cast<std::size_t>(numSegments); ++s) {
            const Zep32sc x = pSrc[s * B + k], c = pCoef[s * B + k];
            re += std::int64_t{x.re} * c.re - std::int64_t{x.im} * c.im;
            im += std::int64_t{x.re} * c.im + std::int64_t{x.im} * c.re;
        }
        pDst[k] = {round_shift_sat(re, shift), round_shift_sat(im, shift)};
    }
    return zepStsNoErr;
}

ZEPS_END_VARIANT

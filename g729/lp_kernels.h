// Internal kernels of the G.729 LP analysis shared by the stages, the tests
// and the benchmark. Each vectorised kernel has a plain scalar twin with the
// same results.
#pragma once

#include <cstdint>

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT

inline constexpr int kWindow = 240;       ///< LP analysis window length (L_WINDOW)
inline constexpr int kCorrLags = 12;      ///< highest lag of the Annex B autocorrelation
inline constexpr int kWindowPadded = 256; ///< window buffer with zero padding for the SIMD lags

/// Correlations of the windowed speech y[0..239] (followed by 16 zeros):
/// energy = sum y[j]^2 (exact), r[k] = sum y[j] y[j+k] for k = 1..12
/// (exact whenever 2 * energy fits in 32 bits). Plain products, not doubled.
void g729_corr240_scalar(const Word16* y, std::int64_t& energy, Word32* r);
void g729_corr240_ssse3(const Word16* y, std::int64_t& energy, Word32* r);

ZEPS_END_VARIANT

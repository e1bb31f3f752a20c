/* SPDX-License-Identifier: BSD-3-Clause */
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

/// Chebps_11 (q = 11) or Chebps_10 (q = 10) of G.729 Az_lsp: the order-5
/// series of f at x (Q15), result Q14 saturated.
Word16 chebps(Word16 x, const Word16* f, int q);
/// True when no intermediate of chebps(x, f, q) can saturate for any x.
bool chebps_never_saturates(const Word16* f, int q);
/// chebps in plain integer arithmetic, the scalar form of one chebps_x8
/// lane; equal to chebps when chebps_never_saturates.
Word16 chebps_unsaturated(Word16 x, const Word16* f, int q);
/// chebps at x[0..7] in SSSE3 lanes; equal to chebps when chebps_never_saturates.
void chebps_x8(const Word16* x, const Word16* f, int q, Word16* y);

ZEPS_END_VARIANT

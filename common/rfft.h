/* SPDX-License-Identifier: BSD-3-Clause */
// Real FFT of length N = 2^order (order 1..16), the library's internal
// transform for the echo-canceller filter bank. Not exported.
//
// Forward: X[k] = sum_n x[n] e^(-2 pi i k n / N), k = 0 .. N/2, unnormalised.
// Inverse: x[n] = (1/N) sum_k X[k] e^(+2 pi i k n / N) over the conjugate-
// symmetric spectrum given by bins 0 .. N/2 (the imaginary parts of bins 0
// and N/2 are ignored).
// Spectra are N/2+1 interleaved complex values (re, im).
//
// Method: the N real samples are packed into M = N/2 complex samples, a
// radix-4 decimation-in-frequency complex FFT (one radix-2 stage first when
// log2 M is odd) leaves its result in bit-reversed order, and a split step
// separates the even and odd halves. The inverse runs the same steps
// backwards, with the complex transform conjugated by exchanging the real
// and imaginary arrays.
//
// Two precisions:
//  - 32f: single precision; twiddles in the description block are arranged
//    for four-wide SSE butterflies.
//  - 32s: 32-bit fixed point with Q30 twiddles. The input block is normalised
//    to a common exponent (headroom for the growth of the transform), the
//    butterflies run in 32 bits with 64-bit products rounded to nearest, and
//    the result is shifted right by the scale factor with rounding to
//    nearest (ties up) and saturated to 32 bits. Scale factors -31..31;
//    any other value is refused before anything is written.
//
// Memory (sizes in bytes, from the size query): the description block S
// (twiddles and the bit-reversal table, written by the init routine; no
// pointers inside, so it is position independent), the work buffer W for
// each transform call, the init buffer I (0: the init routine needs none).
// No routine allocates.
#pragma once

#include <cstdint>

#include "common/variant.h"

ZEPS_BEGIN_VARIANT
#include "common/rfft_decl.inc"
ZEPS_END_VARIANT

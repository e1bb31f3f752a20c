/* SPDX-License-Identifier: BSD-3-Clause */
// Test access to the internal real FFT, the filter-bank kernels and the
// frequency-domain filter's kernels of both
// processor builds (zeps::u8::..., zeps::n8::...).
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "frame/variants.h"

namespace zeps {
namespace u8 {
#include "common/rfft_decl.inc"
#include "ec/subband_kernels_decl.inc"
#include "ec/fdaf_kernels_decl.inc"
}  // namespace u8
#if defined(__x86_64__)  // elsewhere n8 names the one generic build, u8
namespace n8 {
#include "common/rfft_decl.inc"
#include "ec/subband_kernels_decl.inc"
#include "ec/fdaf_kernels_decl.inc"
}  // namespace n8
#endif
}  // namespace zeps

namespace zeps::test {

/// Direct DFT in double precision: X[k] = sum x[n] e^(-2 pi i k n / N),
/// k = 0 .. N/2, interleaved.
inline std::vector<double> dft_real(const std::vector<double>& x) {
    const std::size_t N = x.size();
    std::vector<double> X(N + 2);
    for (std::size_t k = 0; k <= N / 2; ++k) {
        double re = 0, im = 0;
        for (std::size_t n = 0; n < N; ++n) {
            const double a = 2.0 * M_PI * static_cast<double>((k * n) % N) / static_cast<double>(N);
            re += x[n] * std::cos(a);
            im -= x[n] * std::sin(a);
        }
        X[2 * k] = re, X[2 * k + 1] = im;
    }
    return X;
}

/// Direct inverse of a conjugate-symmetric spectrum given by bins 0..N/2
/// (imaginary parts of bins 0 and N/2 ignored), divided by N.
inline std::vector<double> idft_real(const std::vector<double>& X, std::size_t N) {
    std::vector<double> x(N);
    for (std::size_t n = 0; n < N; ++n) {
        double s = X[0] + ((n & 1) ? -X[N] : X[N]);
        for (std::size_t k = 1; k < N / 2; ++k) {
            const double a = 2.0 * M_PI * static_cast<double>((k * n) % N) / static_cast<double>(N);
            s += 2.0 * (X[2 * k] * std::cos(a) - X[2 * k + 1] * std::sin(a));
        }
        x[n] = s / static_cast<double>(N);
    }
    return x;
}

}  // namespace zeps::test

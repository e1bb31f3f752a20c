// SPDX-License-Identifier: BSD-3-Clause
// Out-of-line entries to the G.729 Annex A post-filter kernels
// (g729/post_filter_simd.h), vector and scalar forms, for the tests that
// hold them against each other. Not exported from the library.
#include "g729/post_filter_simd.h"

ZEPS_BEGIN_VARIANT

void g729_pst_kernel(int which, bool vec, const Word16* a, const Word16* x, Word16* y, Word16 g0, Word16 g1, int t0) {
    using namespace g729f;
    switch (which) {
        case 0: vec ? ltp_mix(x, t0, g0, g1, y, 40) : ltp_mix_scalar(x, t0, g0, g1, y, 40); break;
        case 1: vec ? preemph(y, g0, g1, 40) : preemph_scalar(y, g0, g1, 40); break;
        case 2: vec ? agc_scale(y, x, 40) : agc_scale_scalar(y, x, 40); break;
        default: vec ? residu_plain(a, x, y, 40) : residu_plain_scalar(a, x, y, 40); break;
    }
}

ZEPS_END_VARIANT

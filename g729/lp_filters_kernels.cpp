// SPDX-License-Identifier: BSD-3-Clause
// Out-of-line entry to the two forms of the G.729 synthesis filter
// (ITU-T G.729 4.1.6, Syn_filt; g729/codec_kernels.h), lane and scalar, for
// the tests that hold them against each other. Not exported from the library.
#include "g729/codec_kernels.h"

ZEPS_BEGIN_VARIANT

bool g729_syn_filt_kernel(bool lanes, const Word16* a, const Word16* x, Word16* y, int lg, const Word16* mem) {
#if defined(__SSSE3__)
    if (lanes) return g729c::syn_filt_lanes(a, x, y, lg, mem);
#else
    (void)lanes;
#endif
    return g729c::syn_filt_scalar(a, x, y, lg, mem);
}

ZEPS_END_VARIANT

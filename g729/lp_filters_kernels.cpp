// SPDX-License-Identifier: BSD-3-Clause
// Out-of-line entries to the two forms of the G.729 synthesis filter
// (ITU-T G.729 4.1.6, Syn_filt) and of the innovation energy of the gain
// predictor (3.9.1, Gain_predict), from common/syn_filt10.h and
// g729/codec_kernels.h, for the tests that hold them against each other. Not exported from the library.
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

Word32 g729_code_energy_kernel(bool exact_sum, const Word16* code) {
    return exact_sum ? g729c::code_energy(code) : g729c::code_energy_chain(code);
}

ZEPS_END_VARIANT

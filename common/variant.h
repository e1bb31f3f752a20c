/* SPDX-License-Identifier: BSD-3-Clause */
// Processor-build namespace.
//
// Every implementation source is compiled twice, once per processor build
// ("u8": SSSE3, generic tuning; "n8": SSSE3 + MOVBE, tuned for in-order
// low-power cores). The build system defines ZEPS_VARIANT_NS (u8 or n8) and
// ZEPS_VARIANT_INDEX (0 or 1) for each compilation. All code of a build,
// including inline helpers from headers, lives in the inline namespace
// zeps::ZEPS_VARIANT_NS, so the two builds never share a symbol and the
// linker can never mix the code of one build into the other.
//
// Constant tables are compiled once and live in plain namespace zeps.
#pragma once

#ifndef ZEPS_VARIANT_NS
#error "ZEPS_VARIANT_NS must name the processor build (u8 or n8)"
#endif
#ifndef ZEPS_VARIANT_INDEX
#define ZEPS_VARIANT_INDEX 0
#endif

// Namespace openers cannot be written as functions.
#define ZEPS_BEGIN_VARIANT \
    namespace zeps {       \
    inline namespace ZEPS_VARIANT_NS {
#define ZEPS_END_VARIANT \
    }                    \
    }

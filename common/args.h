/* SPDX-License-Identifier: BSD-3-Clause */
// Argument-check helpers shared by every export.
//
// Each export checks its required pointers first, in argument order, then
// its lengths and ranges in its documented order, and writes nothing before
// all checks pass:
//
//     if (any_null(pSrc, pDst)) return zepStsNullPtrErr;
//     if (len < 1) return zepStsSizeErr;
//
// Status codes are the public ZepStatusCode values of zepsc.h.
#pragma once

#include "common/variant.h"
#include "zepsc.h"

ZEPS_BEGIN_VARIANT

/// True when any of the given pointers is null.
template <class... P>
constexpr bool any_null(const P*... p) {
    return ((p == nullptr) || ...);
}

/// True when v lies in [lo, hi].
template <class T>
constexpr bool in_range(T v, T lo, T hi) {
    return v >= lo && v <= hi;
}

ZEPS_END_VARIANT

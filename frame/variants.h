/* SPDX-License-Identifier: BSD-3-Clause */
// Declarations of both processor builds of every export, generated from the
// export list. Used by the dispatch table and by internal tests, which call
// zeps::u8::<name> and zeps::n8::<name> directly.
#pragma once

#include "zepsc.h"

namespace zeps {
namespace u8 {
#define ZEPS_FN(ret, name, params) ret name params;
#include "zepsc_exports.inc"
#undef ZEPS_FN
}  // namespace u8
#if defined(__x86_64__)
namespace n8 {
#define ZEPS_FN(ret, name, params) ret name params;
#include "zepsc_exports.inc"
#undef ZEPS_FN
}  // namespace n8
#else
// Hosts other than x86-64 have one generic build (namespace u8): tests
// written for the two builds compare it with itself.
namespace n8 = u8;
#endif
}  // namespace zeps

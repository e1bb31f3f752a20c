/* SPDX-License-Identifier: BSD-3-Clause */
// Declarations of this build's implementation of every export, generated from
// the export list. Implementation files include this header and define their
// exports inside ZEPS_BEGIN_VARIANT ... ZEPS_END_VARIANT with the exact
// signature of the public declaration; a stage that needs another stage calls
// the same build's implementation by its plain name, never the forwarding
// entry.
#pragma once

#include "common/variant.h"
#include "zepsc.h"

ZEPS_BEGIN_VARIANT
#define ZEPS_FN(ret, name, params) ret name params;
#include "zepsc_exports.inc"
#undef ZEPS_FN
ZEPS_END_VARIANT

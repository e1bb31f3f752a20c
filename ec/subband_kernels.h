/* SPDX-License-Identifier: BSD-3-Clause */
// Fold and overlap-add kernels of the sub-band filter bank (see the .inc).
#pragma once

#include <cstdint>

#include "common/variant.h"

ZEPS_BEGIN_VARIANT
#include "ec/subband_kernels_decl.inc"
ZEPS_END_VARIANT

/* SPDX-License-Identifier: BSD-3-Clause */
// Spectrum kernels of the frequency-domain echo-canceller filter (see the .inc).
#pragma once

#include "common/variant.h"

ZEPS_BEGIN_VARIANT
#include "ec/fdaf_kernels_decl.inc"
ZEPS_END_VARIANT

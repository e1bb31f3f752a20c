/* SPDX-License-Identifier: BSD-3-Clause */
// Internal LSF/LSP conversions of the G.729 quantiser (Lsf_lsp2, Lsp_lsf2).
#pragma once

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT

/// Lsf_lsp2 over n elements; false at the first element with a negative
/// table index (the elements before it are written).
bool lsf_to_lsp(const Word16* lsf, Word16* lsp, int n);
/// Lsp_lsf2 over n elements.
void lsp_to_lsf(const Word16* lsp, Word16* lsf, int n);

ZEPS_END_VARIANT

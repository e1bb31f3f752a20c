/* SPDX-License-Identifier: BSD-3-Clause */
// Codebook searches of the G.729 LSF quantiser (3.2.4, Lsp_pre_select,
// Lsp_select_1, Lsp_select_2). Target and codebooks Q13, distances Q26.
#pragma once

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT

/// Lsp_pre_select: index of the lspcb1 row nearest to target (first of equals).
int lsf_first_stage_search(const Word16* target);
int lsf_first_stage_search_scalar(const Word16* target);
/// Lsp_select_1 (first = 0) / Lsp_select_2 (first = 5): the lspcb2 row whose
/// half [first, first+5) best matches target - cb1 under the weights w.
int lsf_second_stage_search(const Word16* target, const Word16* cb1, const Word16* w, int first);
int lsf_second_stage_search_scalar(const Word16* target, const Word16* cb1, const Word16* w, int first);

ZEPS_END_VARIANT

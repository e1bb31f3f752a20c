/* SPDX-License-Identifier: BSD-3-Clause */
// The two GSM-AMR LSP quantisers behind zepsLSPQuant_GSMAMR_16s
// (3GPP TS 26.073 q_plsf_3.c Q_plsf_3 and q_plsf_5.c Q_plsf_5). LSPs Q15,
// predictor memory past_rq in the LSF domain (16384 = 4 kHz).
#pragma once

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT
namespace amr_dtx {

/// Codebook set of Q_plsf_3, chosen by the coding mode.
enum class Plsf3Set { MR475_515, MR795, Other, DTX };

/// Q_plsf_3: one LSP vector, 1st-order MA prediction, split-VQ in 3 parts.
/// Writes lsp1_q[10], indice[3] and, for Plsf3Set::DTX, *pred_init_i.
void q_plsf_3(Word16* past_rq, Plsf3Set set, const Word16* lsp1, Word16* lsp1_q, Word16* indice,
              Word16* pred_init_i);

/// Q_plsf_5 (MR122): two LSP vectors, split matrix quantisation in 5 parts.
void q_plsf_5(Word16* past_rq, const Word16* lsp1, const Word16* lsp2, Word16* lsp1_q, Word16* lsp2_q,
              Word16* indice);

}  // namespace amr_dtx
ZEPS_END_VARIANT

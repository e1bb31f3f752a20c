// SPDX-License-Identifier: BSD-3-Clause
// The last pulse of the GSM-AMR 3- and 4-pulse searches (3GPP TS 26.073
// c3_14pf.c, c4_17pf.c): the track's choice from the start value (-1, 1)
// followed by the test against the codevector so far (psk, alpk). Squares
// Q0 as mult() leaves them, energies Q0 rounded (alp_16).
#pragma once

#include "amr/cb_candidates.h"

ZEPS_BEGIN_VARIANT
namespace amr_cb {

/// False when the choice among the first count candidates cannot replace the
/// codevector (psk, alpk): the choice ends on the start value (-1, 1) or on
/// a candidate, and neither improves on (psk, alpk); the choice itself then
/// need not be made. Needs psk >= -1 (as any_improves).
inline bool last_choice_may_improve(const Candidates& c, int count, Word16 psk, Word16 alpk) {
    return improves(-1, 1, psk, alpk) || any_improves(c, count, psk, alpk);
}

}  // namespace amr_cb
ZEPS_END_VARIANT

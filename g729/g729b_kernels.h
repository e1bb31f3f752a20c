// Internal routines shared by the G.729 Annex B stages: the SID energy
// quantiser (Qua_Sidgain) and the comfort-noise random generator (Random).
#pragma once

#include "common/basic_op.h"

ZEPS_BEGIN_VARIANT

/// Qua_Sidgain: index 0..31 of the averaged energy of nb (0..2) frames;
/// enerq receives the quantised energy in dB.
Word16 qua_sidgain(const Word16* ener, const Word16* sh_ener, int nb, Word16& enerq);

/// Random: seed = extract_l(L_add(L_shr(L_mult(seed, 31821), 1), 13849)).
/// L_mult cannot saturate (31821 is not -32768) and |seed x 31821| + 13849
/// stays below 2^31, so this is the plain product and sum taken modulo 2^16.
inline Word16 random16(Word16& seed) {
    seed = static_cast<Word16>(Word32{seed} * 31821 + 13849);
    return seed;
}

ZEPS_END_VARIANT

/* SPDX-License-Identifier: BSD-3-Clause */
// Internal routines shared by the G.729 Annex B stages: the SID energy
// quantiser (Qua_Sidgain), the comfort-noise random generator (Random) and
// the frame energy in dB (Q11) that the voice-activity and music detectors
// (Annexes B and I) both take from the autocorrelation.
#pragma once

#include "common/basic_op.h"
#include "common/fast_ops.h"
#include "common/fixed_math.h"

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

/// 10 log10 of an energy acc (exponent exp_r0 of its normalisation) in Q11,
/// less the reference's 4875 offset: Log2 scaled by 9864, with the
/// reference's saturating shift.
inline Word16 energy_db(Word32 acc, Word16 exp_r0) {
    Word16 exp = 0, frac = 0;
    if (acc > 0) {
        const Word16 n = norm_l_fast(acc);
        Log2_norm(L_shl_fast(acc, n), n, exp, frac);
    }
    acc = Mpy_32_16(exp, frac, 9864);
    acc = L_mac(acc, 9864, sub(sub(exp_r0, 1), 1));
    acc = L_shl(acc, 11);
    return sub(extract_h(acc), 4875);
}

ZEPS_END_VARIANT

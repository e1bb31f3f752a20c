/* SPDX-License-Identifier: BSD-3-Clause */
// Pulse sign preselection of the GSM-AMR algebraic codebook searches
// (3GPP TS 26.073 set_sign.c: set_sign, set_sign12k2). Signs are +-32767,
// correlations Q0 as cor_h_x scales them.
#pragma once

#include "amr/cb_search.h"
#include "common/fixed_math.h"

ZEPS_BEGIN_VARIANT
namespace amr_cb {

/// set_sign: the sign of each dn[] (dn[] made absolute), and in dn2[] the
/// 8 - n smallest of each of the 5 tracks marked -1 (the n largest kept).
inline void set_sign(Word16* dn, Word16* sign, Word16* dn2, int n) {
    for (int i = 0; i < kLCode; i++) {
        Word16 val = dn[i];
        if (val >= 0) {
            sign[i] = 32767;
        } else {
            sign[i] = -32767;
            val = negate(val);
        }
        dn[i] = val;
        dn2[i] = val;
    }
    for (int i = 0; i < 5; i++) {
        for (int k = 0; k < 8 - n; k++) {
            Word16 min = 0x7fff;
            int pos = 0;
            for (int j = i; j < kLCode; j += 5) {
                if (dn2[j] >= 0 && dn2[j] < min) {
                    min = dn2[j];
                    pos = j;
                }
            }
            dn2[pos] = -1;
        }
    }
}

/// set_sign12k2: signs from the normalised sum of the target correlation and
/// the LTP residual, the position of the largest such sum per track
/// (pos_max) and the track order of the pulses starting at the best track
/// (ipos[0..2 nb_track - 1]).
inline void set_sign12k2(Word16* dn, const Word16* cn, Word16* sign, Word16* pos_max, int nb_track, Word16* ipos,
                         int step) {
    Word32 s = 256;
    for (int i = 0; i < kLCode; i++) s = L_mac(s, cn[i], cn[i]);
    const Word16 k_cn = extract_h(L_shl(Inv_sqrt(s), 5));
    s = 256;
    for (int i = 0; i < kLCode; i++) s = L_mac(s, dn[i], dn[i]);
    const Word16 k_dn = extract_h(L_shl(Inv_sqrt(s), 5));

    Word16 en[kLCode];
    for (int i = 0; i < kLCode; i++) {
        Word16 val = dn[i];
        Word16 cor = round_fx(L_shl(L_mac(L_mult(k_cn, cn[i]), k_dn, val), 10));
        if (cor >= 0) {
            sign[i] = 32767;
        } else {
            sign[i] = -32767;
            cor = negate(cor);
            val = negate(val);
        }
        dn[i] = val;
        en[i] = cor;
    }
    Word16 max_of_all = -1;
    int pos = 0;
    ipos[0] = 0;  // the first track always wins (every en[] >= 0): only keeps the compiler informed
    for (int i = 0; i < nb_track; i++) {
        Word16 max = -1;
        for (int j = i; j < kLCode; j += step) {
            if (sub(en[j], max) > 0) {
                max = en[j];
                pos = j;
            }
        }
        pos_max[i] = static_cast<Word16>(pos);
        if (sub(max, max_of_all) > 0) {
            max_of_all = max;
            ipos[0] = static_cast<Word16>(i);
        }
    }
    Word16 p = ipos[0];
    ipos[nb_track] = p;
    for (int i = 1; i < nb_track; i++) {
        p = static_cast<Word16>(p + 1);
        if (p >= nb_track) p = 0;
        ipos[i] = p;
        ipos[i + nb_track] = p;
    }
}

}  // namespace amr_cb
ZEPS_END_VARIANT

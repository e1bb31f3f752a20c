/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR algebraic codebook decoding (3GPP TS 26.073 d2_9pf.c, d2_11pf.c,
// d3_14pf.c, d4_17pf.c, d8_31pf.c, d1035pf.c). Code vectors of 40 samples:
// pulses of +8191/-8192 (Q13) for the modes below 10.2, +-8191 for MR102
// and +-4096 (Q12) for MR122.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_state.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

inline void place_pulses(const Word16* pos, int n, Word16 sign, Word16* cod) {
    for (int i = 0; i < kLSubfr; i++) cod[i] = 0;
    for (int j = 0; j < n; j++) {
        cod[pos[j]] = (sign & 1) != 0 ? 8191 : -8192;
        sign = shr(sign, 1);
    }
}

/// decode_2i40_9bits (MR475, MR515): 2 pulses, track table by subframe.
inline void decode_2i40_9bits(Word16 subNr, Word16 sign, Word16 index, Word16* cod) {
    using zeps::amr_dec_tab::startPos;
    Word16 pos[2];
    const Word16 j = shr(index & 64, 6);
    Word16 i = index & 7;
    pos[0] = add(add(i, shl(i, 2)), startPos[add(shl(j, 3), shl(subNr, 1))]);
    index = shr(index, 3);
    i = index & 7;
    pos[1] = add(add(i, shl(i, 2)), startPos[add(add(shl(j, 3), shl(subNr, 1)), 1)]);
    place_pulses(pos, 2, sign, cod);
}

/// decode_2i40_11bits (MR59).
inline void decode_2i40_11bits(Word16 sign, Word16 index, Word16* cod) {
    Word16 pos[2];
    Word16 j = index & 1;
    index = shr(index, 1);
    Word16 i = index & 7;
    pos[0] = add(add(add(i, shl(i, 2)), 1), shl(j, 1));
    index = shr(index, 3);
    j = index & 3;
    index = shr(index, 2);
    i = index & 7;
    pos[1] = add(add(i, shl(i, 2)), j == 3 ? Word16{4} : j);
    place_pulses(pos, 2, sign, cod);
}

/// decode_3i40_14bits (MR67).
inline void decode_3i40_14bits(Word16 sign, Word16 index, Word16* cod) {
    Word16 pos[3];
    Word16 i = index & 7;
    pos[0] = add(i, shl(i, 2));
    index = shr(index, 3);
    Word16 j = index & 1;
    index = shr(index, 1);
    i = index & 7;
    pos[1] = add(add(add(i, shl(i, 2)), 1), shl(j, 1));
    index = shr(index, 3);
    j = index & 1;
    index = shr(index, 1);
    i = index & 7;
    pos[2] = add(add(add(i, shl(i, 2)), 2), shl(j, 1));
    place_pulses(pos, 3, sign, cod);
}

/// decode_4i40_17bits (MR74, MR795): Gray-coded positions.
inline void decode_4i40_17bits(Word16 sign, Word16 index, Word16* cod) {
    using zeps::amr_dec_tab::dgray;
    Word16 pos[4];
    Word16 i = dgray[index & 7];
    pos[0] = add(i, shl(i, 2));
    index = shr(index, 3);
    i = dgray[index & 7];
    pos[1] = add(add(i, shl(i, 2)), 1);
    index = shr(index, 3);
    i = dgray[index & 7];
    pos[2] = add(add(i, shl(i, 2)), 2);
    index = shr(index, 3);
    const Word16 j = index & 1;
    index = shr(index, 1);
    i = dgray[index & 7];
    pos[3] = add(add(add(i, shl(i, 2)), 3), j);
    place_pulses(pos, 4, sign, cod);
}

/// decompress10 of d8_31pf.c: three positions from a 7+3-bit index.
inline void decompress10(Word16 MSBs, Word16 LSBs, int index1, int index2, int index3, Word16* pos_indx) {
    if (MSBs > 124) MSBs = 124;
    Word16 ia = mult(MSBs, 1311);
    ia = sub(MSBs, extract_l(L_shr(L_mult(ia, 25), 1)));
    Word16 ib = shl(sub(ia, extract_l(L_shr(L_mult(mult(ia, 6554), 5), 1))), 1);
    Word16 ic = shl(shr(LSBs, 2), 2);
    ic = sub(LSBs, ic);
    pos_indx[index1] = add(ib, ic & 1);
    ib = shl(mult(ia, 6554), 1);
    pos_indx[index2] = add(ib, shr(ic, 1));
    pos_indx[index3] = add(shl(mult(MSBs, 1311), 1), shr(LSBs, 2));
}

/// dec_8i40_31bits (MR102): 4 sign indices, then 3 compressed position indices.
inline void dec_8i40_31bits(const Word16* index, Word16* cod) {
    Word16 pos[8];
    decompress10(shr(index[4], 3), index[4] & 7, 0, 4, 1, pos);
    decompress10(shr(index[5], 3), index[5] & 7, 2, 6, 5, pos);
    const Word16 MSBs = shr(index[6], 2), LSBs = index[6] & 3;
    const Word16 MSBs0_24 = shr(add(extract_l(L_shr(L_mult(MSBs, 25), 1)), 12), 5);
    const Word16 ia = mult(MSBs0_24, 6554) & 1;
    Word16 ib = sub(MSBs0_24, extract_l(L_shr(L_mult(mult(MSBs0_24, 6554), 5), 1)));
    if (ia == 1) ib = sub(4, ib);
    pos[3] = add(shl(ib, 1), LSBs & 1);
    pos[7] = add(shl(mult(MSBs0_24, 6554), 1), shr(LSBs, 1));
    for (int i = 0; i < kLSubfr; i++) cod[i] = 0;
    for (int j = 0; j < 4; j++) {
        const Word16 pos1 = add(extract_l(L_shr(L_mult(pos[j], 4), 1)), j);
        Word16 sign = index[j] == 0 ? 8191 : -8191;
        cod[pos1] = sign;
        const Word16 pos2 = add(extract_l(L_shr(L_mult(pos[j + 4], 4), 1)), j);
        if (pos2 < pos1) sign = negate(sign);
        cod[pos2] = add(cod[pos2], sign);
    }
}

/// dec_10i40_35bits (MR122): 10 pulses on 5 tracks.
inline void dec_10i40_35bits(const Word16* index, Word16* cod) {
    using zeps::amr_dec_tab::dgray;
    for (int i = 0; i < kLSubfr; i++) cod[i] = 0;
    for (int j = 0; j < 5; j++) {
        const Word16 tmp = index[j];
        Word16 i = dgray[tmp & 7];
        const Word16 pos1 = add(extract_l(L_shr(L_mult(i, 5), 1)), j);
        Word16 sign = (shr(tmp, 3) & 1) == 0 ? 4096 : -4096;
        cod[pos1] = sign;
        i = dgray[index[j + 5] & 7];
        const Word16 pos2 = add(extract_l(L_shr(L_mult(i, 5), 1)), j);
        if (pos2 < pos1) sign = negate(sign);
        cod[pos2] = add(cod[pos2], sign);
    }
}

}  // namespace amr_dec
ZEPS_END_VARIANT

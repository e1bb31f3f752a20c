// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E fixed-codebook vectors from their codes (E.4.1,
// Dec_ACELP_10i40_35bits and Dec_ACELP_12i40_44bits): 5 tracks of 8
// positions (track t: 5 i + t). Forward mode, 35 bits: two pulses on every
// track, each code of 7 bits (position 0-2, sign 3, second position 4-6).
// Backward mode, 44 bits: the first code's bits 10-12 give the starting
// track (values above 4 read as 4); three pulses on each of the first two
// tracks (codes of 13 and 10 bits, the third position in bits 7-9), two on
// the next three (7 bits each), the track advancing modulo 5. A pulse is
// +4096 or -4096 (sign bit 1: negative); the second pulse of a track takes
// the opposite sign when it lies after the first, the third the opposite of
// the second's when it lies after the second. Output Q13 (pulses 0.5).
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kSubfr = 40;

/// dec_pulses: the 1 to 3 pulses of one track added into cod.
void dec_pulses(Word16 index, Word16 track, int nb, Word16* cod) {
    Word16 i = extract_l(L_shr(L_mult(static_cast<Word16>(index & 7), 5), 1));
    const Word16 pos1 = add(i, track);
    Word16 sign = (shr(index, 3) & 1) == 0 ? Word16{4096} : Word16{-4096};
    cod[pos1] = sign;
    Word16 pos2 = pos1;
    if (nb >= 2) {
        i = extract_l(L_shr(L_mult(static_cast<Word16>(shr(index, 4) & 7), 5), 1));
        pos2 = add(i, track);
        if (sub(pos2, pos1) > 0) sign = negate(sign);
        cod[pos2] = add(cod[pos2], sign);
    }
    if (nb == 3) {
        i = extract_l(L_shr(L_mult(static_cast<Word16>(shr(index, 7) & 7), 5), 1));
        const Word16 pos3 = add(i, track);
        if (sub(pos3, pos2) > 0) sign = negate(sign);
        cod[pos3] = add(cod[pos3], sign);
    }
}

}  // namespace

ZepStatus zepsDecodeFixedCodebook_G729E_16s(const Zep16s* pIdx, Zep16s mode, Zep16s* pDst) {
    if (any_null(pIdx, pDst)) return zepStsNullPtrErr;
    if (mode != 0 && mode != 1) return zepStsRangeErr;
    Word16 cod[kSubfr] = {};
    if (mode == 0) {
        for (int j = 0; j < 5; ++j) dec_pulses(pIdx[j], static_cast<Word16>(j), 2, cod);
    } else {
        Word16 track = shr(pIdx[0], 10) & 7;
        if (track > 4) track = 4;
        for (int j = 0; j < 5; ++j) {
            dec_pulses(pIdx[j], track, j < 2 ? 3 : 2, cod);
            track = add(track, 1);
            if (track > 4) track = 0;
        }
    }
    std::memcpy(pDst, cod, sizeof cod);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E frame energy in dB (E.4, ener_dB): 1 + sum x^2 (L_mac,
// saturating), halved, reduced to 5 bits by right shifts, the result
// LOG2_Q11 = 617 per shift beyond the first (at least one counted), plus
// the tab_log mantissa; 1 when the reduced energy is below 16. Speech Q0,
// result Q11.
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729e_tables.h"

ZEPS_BEGIN_VARIANT

ZepStatus zepsEnergyDB_G729E_16s(const Zep16s* pSrc, int len, Zep16s* pDstEnergy) {
    if (any_null(pSrc, pDstEnergy)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    constexpr Word16 kLog2Q11 = 617;  // LOG2_Q11
    Word32 e = 1;
    for (int i = 0; i < len; ++i) e = L_mac(e, pSrc[i], pSrc[i]);
    e = L_shr(e, 1);
    int shifts = 0;
    while (e > 32) {
        e = L_shr(e, 1);
        ++shifts;
    }
    const Word16 res = extract_l(e);
    Word16 log_ener = kLog2Q11;
    for (int j = 1; j < shifts; ++j) log_ener = add(log_ener, kLog2Q11);
    const Word16 index = sub(res, 16);
    *pDstEnergy = index >= 0 ? add(tab_log[index], log_ener) : Word16{1};
    return zepStsNoErr;
}

ZEPS_END_VARIANT

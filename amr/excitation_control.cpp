// SPDX-License-Identifier: BSD-3-Clause
// zepsExcitationEnergy_GSMAMR_16s and zepsExcitationControl_GSMAMR_16s_I:
// the subframe excitation energy of the decoder and its limitation in
// concealed background noise (3GPP TS 26.073 dec_amr.c, ex_ctrl.c Ex_ctrl).
// Energy: sqrt of the mean square, integer; scale factor Q11.
#include "amr/dec_excitation.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

Word16 excitation_energy(const Word16* exc) {
    using namespace amr_dec;
    Word32 L_temp = L_shr(energy_sat(exc, kLSubfr), 1);  // the L_mac chain from 0, clamped
    Word16 temp;
    L_temp = sqrt_l_exp(L_temp, temp);
    L_temp = L_shr(L_temp, add(shr(temp, 1), 15));
    L_temp = L_shr(L_temp, 2);
    return extract_l(L_temp);
}

}  // namespace

ZepStatus zepsExcitationEnergy_GSMAMR_16s(const Zep16s* pSrcExc, Zep16s* pEnergy) {
    if (any_null(pSrcExc, pEnergy)) return zepStsNullPtrErr;
    *pEnergy = excitation_energy(pSrcExc);
    return zepStsNoErr;
}

ZepStatus zepsExcitationControl_GSMAMR_16s_I(Zep16s* pSrcDstExc, Zep16s excEnergy, const Zep16s* pSrcEnergyHist,
                                             Zep16s voicedHangover, Zep16s prevBFI, Zep16s carefulFlag) {
    if (any_null(pSrcDstExc, pSrcEnergyHist)) return zepStsNullPtrErr;
    amr_dec::ex_ctrl(pSrcDstExc, excEnergy, pSrcEnergyHist, voicedHangover, prevBFI, carefulFlag);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

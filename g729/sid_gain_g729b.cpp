// G.729 Annex B SID energy: quantisation at the encoder (B.4.2, Qua_Sidgain
// and Quant_Energy), the comfort-noise gain at the decoder (B.5, the gain
// part of Dec_cng) and the excitation energy the decoder saves for a lost
// first SID frame. Energies as mantissa (Q0 residual energy) and exponent;
// quantised energies in dB; gains in the reference's Q3 sample units.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fixed_math.h"
#include "g729/g729b_kernels.h"
#include "g729/g729b_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr Word16 kGainOld = 28672;  // A_GAIN0, 7/8 in Q15
constexpr Word16 kGainNew = 4096;   // A_GAIN1, 1/8 in Q15

/// Quant_Energy: index of 2^10 log2(L_x 2^-sh) on the two-slope scale.
Word16 quant_energy(Word32 L_x, Word16 sh, Word16& enerq) {
    Word16 exp, frac;
    Log2(L_x, exp, frac);
    Word16 e_tmp = shl(sub(exp, sh), 10);
    e_tmp = add(e_tmp, mult_r(frac, 1024));
    if (sub(e_tmp, -2721) <= 0) {  // below -8 dB
        enerq = -12;
        return 0;
    }
    if (sub(e_tmp, 22111) > 0) {  // above 65 dB
        enerq = 66;
        return 31;
    }
    if (sub(e_tmp, 4762) <= 0) {  // up to 14 dB: 4 dB steps
        e_tmp = add(e_tmp, 3401);
        Word16 index = mult(e_tmp, 24);
        if (index < 1) index = 1;
        enerq = sub(shl(index, 2), 8);
        return index;
    }
    e_tmp = sub(e_tmp, 340);  // 2 dB steps
    Word16 index = sub(shr(mult(e_tmp, 193), 2), 1);
    if (index < 6) index = 6;
    enerq = add(shl(index, 1), 4);
    return index;
}

/// The decoder's gain memory (the statics of dec_sid.c), 4 bytes.
struct SidGainState {
    Word16 sid_gain;
    Word16 cur_gain;
};
static_assert(sizeof(SidGainState) == 4);

}  // namespace

Word16 qua_sidgain(const Word16* ener, const Word16* sh_ener, int nb, Word16& enerq) {
    Word32 L_x;
    Word16 sh1;
    if (nb == 0) {
        // The energy saved for the frame-erasure case.
        const DPF d = L_Extract(L_shl(L_deposit_l(ener[0]), sh_ener[0]));
        L_x = Mpy_32_16(d.hi, d.lo, fact[0]);
        sh1 = 0;
    } else {
        // Weighted average of the energies ener[i] x 2^sh_ener[i].
        sh1 = sh_ener[0];
        for (int i = 1; i < nb; ++i)
            if (sh_ener[i] < sh1) sh1 = sh_ener[i];
        sh1 = add(sh1, static_cast<Word16>(16 - marg[nb]));
        L_x = 0;
        for (int i = 0; i < nb; ++i) L_x = L_add(L_x, L_shl(L_deposit_l(ener[i]), sub(sh1, sh_ener[i])));
        const DPF d = L_Extract(L_x);
        L_x = Mpy_32_16(d.hi, d.lo, fact[nb]);
    }
    return quant_energy(L_x, sh1, enerq);
}

ZepStatus zepsSIDGainQuant_G729B_16s(const Zep16s* pEner, const Zep16s* pShEner, int nbEner, Zep16s* pDstEnerQ,
                                     Zep16s* pDstIdx) {
    if (any_null(pEner, pShEner, pDstEnerQ, pDstIdx)) return zepStsNullPtrErr;
    if (nbEner < 0 || nbEner > 2) return zepStsRangeErr;
    Word16 enerq;
    const Word16 idx = qua_sidgain(pEner, pShEner, nbEner, enerq);
    *pDstEnerQ = enerq;
    *pDstIdx = idx;
    return zepStsNoErr;
}

ZepStatus zepsSIDGainDecodeGetStateSize_G729B(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(SidGainState);
    return zepStsNoErr;
}

ZepStatus zepsSIDGainDecodeInit_G729B(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    const SidGainState s{tab_Sidgain[0], 0};
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsSIDGainDecode_G729B_16s(Zep16s frameType, Zep16s gainIdx, Zep16s pastFrameType, Zep16s sidSav,
                                      Zep16s shSidSav, Zep16s* pDstGain, Zep8u* pState) {
    if (any_null(pDstGain, pState)) return zepStsNullPtrErr;
    if (frameType != 0 && frameType != 2) return zepStsRangeErr;
    if (pastFrameType < 0 || pastFrameType > 2) return zepStsRangeErr;
    if (gainIdx < 0 || gainIdx > 31) return zepStsOutOfRangeErr;
    SidGainState s;
    std::memcpy(&s, pState, sizeof s);
    const bool after_speech = pastFrameType == 1;
    if (frameType == 2) {
        s.sid_gain = tab_Sidgain[gainIdx];
    } else if (after_speech) {
        // First SID frame lost: quantise the energy of the last good frame.
        Word16 enerq;
        s.sid_gain = tab_Sidgain[qua_sidgain(&sidSav, &shSidSav, 0, enerq)];
    }
    if (after_speech) {
        s.cur_gain = s.sid_gain;
    } else {
        s.cur_gain = add(mult_r(s.cur_gain, kGainOld), mult_r(s.sid_gain, kGainNew));
    }
    std::memcpy(pState, &s, sizeof s);
    *pDstGain = s.cur_gain;
    return zepStsNoErr;
}

ZepStatus zepsFrameEnergy_G729B_16s(const Zep16s* pSrcExc, Zep16s* pDstEner, Zep16s* pDstShift) {
    if (any_null(pSrcExc, pDstEner, pDstShift)) return zepStsNullPtrErr;
    Word32 e = 0;
    for (int i = 0; i < 80; ++i) e = L_mac(e, pSrcExc[i], pSrcExc[i]);  // may saturate, as in the reference
    const Word16 n = norm_l(e);
    *pDstEner = round_fx(L_shl(e, n));
    *pDstShift = sub(16, n);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

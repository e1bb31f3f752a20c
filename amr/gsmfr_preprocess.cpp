// GSM 06.10 4.2.1 to 4.2.3 preprocessing of the full-rate encoder:
// downscaling of the 13-bit input, offset compensation (high-pass filter
// with a 31-bit recursive memory L_z2, coefficient 32735 in Q15) and
// pre-emphasis (coefficient -28180 in Q15). Input 16-bit PCM, output the
// pre-processed signal in Q15 of half full-scale.
#include "amr/gsmfr_lar.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

struct PreprocessState {
    Word16 z1;    // previous downscaled input sample
    Word16 mp;    // previous offset-compensated sample (pre-emphasis memory)
    Word32 L_z2;  // recursive memory of the offset compensation
};
static_assert(sizeof(PreprocessState) == 8);

}  // namespace

ZepStatus zepsPreprocessGetStateSize_GSMFR_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(PreprocessState);
    return zepStsNoErr;
}

ZepStatus zepsPreprocessInit_GSMFR_16s(ZepGSMFRPreprocessState* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    gsmfr::store_state(pState, PreprocessState{0, 0, 0});
    return zepStsNoErr;
}

ZepStatus zepsPreprocess_GSMFR_16s(ZepGSMFRPreprocessState* pState, const Zep16s* pSrc, Zep16s* pDst) {
    if (any_null(pState, pSrc, pDst)) return zepStsNullPtrErr;
    PreprocessState st = gsmfr::load_state<PreprocessState>(pState);
    Word16 z1 = st.z1, mp = st.mp;
    Word32 L_z2 = st.L_z2;
    for (int k = 0; k < 160; ++k) {
        // 4.2.1: the 13 valid bits, left-justified with two guard bits.
        const Word16 so = static_cast<Word16>((pSrc[k] >> 3) * 4);
        // 4.2.2: non-recursive part (no overflow: |so| <= 16384), then the
        // recursive part as a 31 x 16-bit product in two halves.
        const Word16 s1 = static_cast<Word16>(so - z1);
        z1 = so;
        Word32 L_s2 = Word32{s1} << 15;
        const Word16 msp = static_cast<Word16>(L_z2 >> 15);
        const Word16 lsp = static_cast<Word16>(L_z2 - (Word32{msp} << 15));
        L_s2 += mult_r(lsp, 32735);
        L_z2 = L_add(Word32{msp} * 32735, L_s2);
        // Rounding, then 4.2.3 pre-emphasis.
        const Word32 L_temp = L_add(L_z2, 16384);
        const Word16 emph = mult_r(mp, -28180);
        mp = static_cast<Word16>(L_temp >> 15);
        pDst[k] = add(mp, emph);
    }
    gsmfr::store_state(pState, PreprocessState{z1, mp, L_z2});
    return zepStsNoErr;
}

ZEPS_END_VARIANT

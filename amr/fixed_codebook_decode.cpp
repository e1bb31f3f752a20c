// SPDX-License-Identifier: BSD-3-Clause
// zepsFixedCodebookDecode_GSMAMR_16s and zepsPitchSharpening_GSMAMR_16s_I:
// the algebraic codebook vector of every mode (3GPP TS 26.073 d2_9pf.c,
// d2_11pf.c, d3_14pf.c, d4_17pf.c, d8_31pf.c, d1035pf.c) and the pitch
// sharpening of the innovation done in dec_amr.c Decoder_amr.
#include "amr/amr_rate.h"
#include "amr/dec_codebook.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// Parameter count and bit widths of one subframe's codebook by mode.
struct CodebookLayout {
    int count;
    int bits[10];
};
CodebookLayout layout(int mode) {
    switch (mode) {
        case amr_dec::MR475: case amr_dec::MR515: return {2, {7, 2}};
        case amr_dec::MR59: return {2, {9, 2}};
        case amr_dec::MR67: return {2, {11, 3}};
        case amr_dec::MR74: case amr_dec::MR795: return {2, {13, 4}};
        case amr_dec::MR102: return {7, {1, 1, 1, 1, 10, 10, 7}};
        default: return {10, {4, 4, 4, 4, 4, 3, 3, 3, 3, 3}};
    }
}

}  // namespace

ZepStatus zepsFixedCodebookDecode_GSMAMR_16s(const Zep16s* pSrcIndex, Zep16s* pDstCode, Zep32s subframe, Zep32s rate) {
    using namespace amr_dec;
    if (any_null(pSrcIndex, pDstCode)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    if (subframe < 0 || subframe > 3) return zepStsRangeErr;
    const CodebookLayout lay = layout(mode);
    for (int i = 0; i < lay.count; i++)
        if (pSrcIndex[i] < 0 || pSrcIndex[i] >= (1 << lay.bits[i])) return zepStsOutOfRangeErr;
    Word16 code[kLSubfr];
    switch (mode) {
        case MR475: case MR515: decode_2i40_9bits(static_cast<Word16>(subframe), pSrcIndex[1], pSrcIndex[0], code); break;
        case MR59: decode_2i40_11bits(pSrcIndex[1], pSrcIndex[0], code); break;
        case MR67: decode_3i40_14bits(pSrcIndex[1], pSrcIndex[0], code); break;
        case MR74: case MR795: decode_4i40_17bits(pSrcIndex[1], pSrcIndex[0], code); break;
        case MR102: dec_8i40_31bits(pSrcIndex, code); break;
        default: dec_10i40_35bits(pSrcIndex, code); break;
    }
    for (int i = 0; i < kLSubfr; i++) pDstCode[i] = code[i];
    return zepStsNoErr;
}

ZepStatus zepsPitchSharpening_GSMAMR_16s_I(Zep16s* pSrcDstCode, Zep16s T0, Zep16s sharp) {
    if (any_null(pSrcDstCode)) return zepStsNullPtrErr;
    if (T0 < 1) return zepStsRangeErr;
    for (int i = T0; i < amr_dec::kLSubfr; i++) pSrcDstCode[i] = add(pSrcDstCode[i], mult(pSrcDstCode[i - T0], sharp));
    return zepStsNoErr;
}

ZEPS_END_VARIANT

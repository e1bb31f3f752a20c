// SPDX-License-Identifier: BSD-3-Clause
// zepsAdaptiveLagDecode_GSMAMR_16s and zepsAdaptiveCodebookDecode_GSMAMR_16s:
// pitch lag decoding and the adaptive codebook vector (3GPP TS 26.073
// dec_lag3.c Dec_lag3, dec_lag6.c Dec_lag6, pred_lt.c Pred_lt_3or6, with the
// search-range set-up of dec_amr.c Decoder_amr).
#include "amr/amr_rate.h"
#include "amr/dec_pitch.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// Number of index values of the lag of a subframe (its bit width's range).
int lag_index_count(int mode, bool absolute) {
    if (absolute) return mode == amr_dec::MR122 ? 512 : 256;
    switch (mode) {
        case amr_dec::MR122: case amr_dec::MR795: return 64;
        case amr_dec::MR74: case amr_dec::MR102: return 32;
        default: return 16;
    }
}

}  // namespace

ZepStatus zepsAdaptiveLagDecode_GSMAMR_16s(Zep16s index, Zep16s subframeFlag, Zep16s T0Prev, Zep16s* pT0,
                                           Zep16s* pT0Frac, Zep32s rate) {
    using namespace amr_dec;
    if (any_null(pT0, pT0Frac)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    if (T0Prev < kPitMinMR122 - 1 || T0Prev > kPitMax + 1) return zepStsRangeErr;  // 17 3/6 is the lowest lag
    if (index < 0 || index >= lag_index_count(mode, subframeFlag == 0)) return zepStsOutOfRangeErr;
    Word16 T0 = T0Prev, T0_frac = 0;
    if (mode == MR122) {
        dec_lag6(index, kPitMinMR122, kPitMax, subframeFlag, T0, T0_frac);
    } else {
        const Word16 flag4 = (mode == MR475 || mode == MR515 || mode == MR59 || mode == MR67) ? 1 : 0;
        const Word16 low = mode == MR795 ? 10 : 5, range = mode == MR795 ? 19 : 9;
        Word16 t0_min = sub(T0Prev, low);
        if (t0_min < kPitMin) t0_min = kPitMin;
        Word16 t0_max = add(t0_min, range);
        if (t0_max > kPitMax) {
            t0_max = kPitMax;
            t0_min = sub(t0_max, range);
        }
        dec_lag3(index, t0_min, t0_max, subframeFlag, T0Prev, T0, T0_frac, flag4);
    }
    *pT0 = T0;
    *pT0Frac = T0_frac;
    return zepStsNoErr;
}

ZepStatus zepsAdaptiveCodebookDecode_GSMAMR_16s(Zep16s* pSrcDstExc, Zep16s T0, Zep16s frac, Zep32s rate) {
    using namespace amr_dec;
    if (any_null(pSrcDstExc)) return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    if (T0 < kPitMinMR122 - 1 || T0 > kPitMax + 1) return zepStsOutOfRangeErr;
    const bool six = mode == MR122;
    if (frac < (six ? -2 : -1) || frac > (six ? 3 : 1)) return zepStsOutOfRangeErr;
    pred_lt_3or6(pSrcDstExc + kExcHist, T0, frac, kLSubfr, six ? 0 : 1);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

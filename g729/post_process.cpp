// SPDX-License-Identifier: BSD-3-Clause
// G.729 post-processing (ITU-T G.729 4.2.5, Post_Process): the 100 Hz
// second-order high-pass filter (coefficients Q13) with the output doubled
// and rounded, on the state of zepsHighPassFilterInit_G729. The filter
// memory is the unshifted Q15 accumulator, as in zepsHighPassFilter_G729_16s_ISfs
// with scaleFactor 13; only the output differs (round(2 acc) for round(acc)).
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {

/// The state layout of zepsHighPassFilterInit_G729 (24 bytes).
struct HighPassState {
    Word32 y1, y2;
    Word16 x1, x2;
    Word16 coef[6];
};
static_assert(sizeof(HighPassState) == 24);

}  // namespace

ZepStatus zepsPostProcess_G729_16s_I(Zep16s* pSrcDst, int len, Zep8u* pState) {
    if (any_null(pSrcDst, pState)) return zepStsNullPtrErr;
    if (len < 1) return zepStsSizeErr;
    HighPassState st;
    std::memcpy(&st, pState, sizeof st);
    const Word16 b0 = st.coef[0], b1 = st.coef[1], b2 = st.coef[2], a1 = st.coef[4], a2 = st.coef[5];
    for (int i = 0; i < len; ++i) {
        const Word16 x0 = pSrcDst[i];
        const DPF d1 = L_Extract(st.y1), d2 = L_Extract(st.y2);
        Word32 t = Mpy_32_16(d1.hi, d1.lo, a1);
        t = L_add(t, Mpy_32_16(d2.hi, d2.lo, a2));
        t = L_mac(t, x0, b0);
        t = L_mac(t, st.x1, b1);
        t = L_mac(t, st.x2, b2);
        t = L_shl(t, 2);
        pSrcDst[i] = round_fx(L_shl(t, 1));
        st.y2 = st.y1;
        st.y1 = t;
        st.x2 = st.x1;
        st.x1 = x0;
    }
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

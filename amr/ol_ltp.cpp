// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR open-loop pitch analysis of one 20 ms frame (3GPP TS 26.073
// cod_amr.c with pre_big.c, weight_a.c, residu.c, syn_filt.c, ol_ltp.c and
// vad1.c vad_pitch_detection): perceptually weighted speech through
// A(z/gamma1) / A(z/gamma2), then the open-loop lag search per rate.
// A(z) Q12, speech and weighted speech Q0, gamma factors Q15.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "amr/amr_vad_tables.h"
#include "amr/dec_post.h"
#include "amr/pitch_ol.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace amr {

namespace {

constexpr int kSubfr = 40;
constexpr int kMp1 = kOrder + 1;

/// a_exp[i] = a[i] * fac[i-1], rounded (Weight_Ai).
void weight_ai(const Word16* a, const std::int16_t* fac, Word16* a_exp) {
    a_exp[0] = a[0];
    for (int i = 1; i <= kOrder; ++i) a_exp[i] = round_fx(L_mult(a[i], fac[i - 1]));
}

/// Residual through A(z): y[n] = sum a[j] x[n-j] (Residu; x[-10..-1] known),
/// the decoder's kernel (plain sums under the bound, else the chain).
void residu(const Word16* a, const Word16* x, Word16* y, int lg) { amr_dec::residu(a, x, y, lg); }

/// Synthesis through 1/A(z) with memory update (Syn_filt, update = 1), on the
/// order-10 kernel the decoder and G.729 share.
void syn_filt(const Word16* a, const Word16* x, Word16* y, int lg, Zep16s* mem) {
    amr_dec::syn_filt(a, x, y, lg, mem, true);
}

/// Weighted speech of two subframes starting at `offset` (pre_big).
void pre_big(Zep32s rate, const Word16* A_t, int offset, const Word16* speech, Zep16s* mem_w, Word16* wsp) {
    const std::int16_t* g1 = (rate <= 8) ? gamma1 : gamma1_12k2;  // MR475..MR795 : MR102, MR122, MRDTX
    int a_off = offset > 0 ? 2 * kMp1 : 0;
    for (int i = 0; i < 2; ++i, a_off += kMp1, offset += kSubfr) {
        Word16 ap1[kMp1], ap2[kMp1];
        weight_ai(&A_t[a_off], g1, ap1);
        weight_ai(&A_t[a_off], gamma2, ap2);
        residu(ap1, &speech[offset], &wsp[offset], kSubfr);
        syn_filt(ap2, &wsp[offset], &wsp[offset], kSubfr, mem_w);
    }
}

/// One ol_ltp call: lag of wsp[0..L_frame-1] (history wsp[-143..-1]).
Word16 ol_ltp(OlWght& wght, OlVad& vad, Zep32s rate, const Word16* wsp, Zep16s* old_lags, Zep16s* ol_gain_flg,
              int idx) {
    if (rate != 11) ol_gain_flg[0] = ol_gain_flg[1] = 0;
    if (rate == 0 || rate == 1) return pitch_ol(vad, rate, wsp, 20, kFrameLen, idx);
    if (rate <= 8) return pitch_ol(vad, rate, wsp, 20, kFrameLen / 2, idx);
    if (rate == 11) return pitch_ol_wgh(wght, vad, wsp, 20, kFrameLen / 2, old_lags, ol_gain_flg, idx);
    return pitch_ol(vad, rate, wsp, 18, kFrameLen / 2, idx);  // MR122 and MRDTX
}

/// Pitch flag of VAD option 1 from the frame's two lags (vad_pitch_detection).
void vad_pitch_detection(OlVad& vad, const Word16* T_op) {
    Word16 lagcount = 0;
    for (int i = 0; i < 2; ++i) {
        if (abs_s(sub(vad.oldlag, T_op[i])) < 4) lagcount = add(lagcount, 1);
        vad.oldlag = T_op[i];
    }
    vad.pitch = shr(vad.pitch, 1);
    if (add(vad.oldlag_count, lagcount) >= 4) vad.pitch = static_cast<Word16>(vad.pitch | 0x4000);
    vad.oldlag_count = lagcount;
}

}  // namespace

bool ol_rate_supported(Zep32s rate) {
    switch (rate) {
        case 0: case 1: case 3: case 6: case 7: case 8: case 11: case 12: case 25: return true;
        default: return false;
    }
}

void open_loop_frame(const OlFrame& f, OlWght& wght, OlVad& vad, Zep32s rate) {
    Word16 buf[kPitMax + kFrameLen];
    std::memcpy(buf, f.wsp_hist, sizeof(Word16) * kPitMax);
    Word16* wsp = buf + kPitMax;
    const Word16* speech = f.speech + kOrder;
    Word16 T_op[2];
    if (rate == 0 || rate == 1) {
        pre_big(rate, f.lpc, 0, speech, f.mem_w, wsp);
        pre_big(rate, f.lpc, kFrameLen / 2, speech, f.mem_w, wsp);
        T_op[0] = T_op[1] = ol_ltp(wght, vad, rate, wsp, f.old_lags, f.ol_gain_flg, 1);
    } else {
        for (int k = 0; k < 2; ++k) {
            pre_big(rate, f.lpc, k * kFrameLen / 2, speech, f.mem_w, wsp);
            T_op[k] = ol_ltp(wght, vad, rate, wsp + k * kFrameLen / 2, f.old_lags, f.ol_gain_flg, k);
        }
    }
    if (vad.kind == OlVad::kVad1) vad_pitch_detection(vad, T_op);
    std::memcpy(f.wsp_out, wsp, sizeof(Word16) * kFrameLen);
    std::memcpy(f.wsp_hist, buf + kFrameLen, sizeof(Word16) * kPitMax);
    f.lags_out[0] = T_op[0];
    f.lags_out[1] = T_op[1];
}

}  // namespace amr

ZepStatus zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s(const Zep16s* pSrcLPC, const Zep16s* pSrcSpch, Zep16s* pWgtFltMem,
                                                   Zep16s* pWgtSpchHist, Zep16s* pOldLags, Zep16s* pOlGainFlg,
                                                   Zep16s* pWghtState, Zep16s* pDstWgtSpch, Zep16s* pDstOpenLoopLag,
                                                   Zep32s rate) {
    if (any_null(pSrcLPC, pSrcSpch, pWgtFltMem, pWgtSpchHist, pOldLags, pOlGainFlg, pWghtState, pDstWgtSpch,
                 pDstOpenLoopLag))
        return zepStsNullPtrErr;
    if (!amr::ol_rate_supported(rate)) return zepStsRangeErr;
    amr::OlWght wght{pWghtState[0], pWghtState[1], pWghtState[2]};
    amr::OlVad vad;
    amr::open_loop_frame({pSrcLPC, pSrcSpch, pWgtFltMem, pWgtSpchHist, pOldLags, pOlGainFlg, pDstWgtSpch,
                          pDstOpenLoopLag},
                         wght, vad, rate);
    pWghtState[0] = wght.old_T0_med;
    pWghtState[1] = wght.ada_w;
    pWghtState[2] = wght.wght_flg;
    return zepStsNoErr;
}

ZepStatus zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(const Zep16s* pSrcLPC, const Zep16s* pSrcSpch, Zep16s* pWgtFltMem,
                                                    Zep16s* pWgtSpchHist, Zep16s* pOldLags, Zep16s* pOlGainFlg,
                                                    Zep16s* pWghtVadRegs, Zep16s* pDstWgtSpch,
                                                    Zep16s* pDstOpenLoopLag, Zep32s rate) {
    if (any_null(pSrcLPC, pSrcSpch, pWgtFltMem, pWgtSpchHist, pOldLags, pOlGainFlg, pWghtVadRegs, pDstWgtSpch,
                 pDstOpenLoopLag))
        return zepStsNullPtrErr;
    if (!amr::ol_rate_supported(rate)) return zepStsRangeErr;
    Zep16s* r = pWghtVadRegs;
    amr::OlWght wght{r[0], r[1], r[2]};
    amr::OlVad vad;
    vad.kind = amr::OlVad::kVad1;
    vad.tone = r[3];
    vad.pitch = r[4];
    vad.oldlag_count = r[5];
    vad.oldlag = r[6];
    vad.best_corr_hp = r[7];
    amr::open_loop_frame({pSrcLPC, pSrcSpch, pWgtFltMem, pWgtSpchHist, pOldLags, pOlGainFlg, pDstWgtSpch,
                          pDstOpenLoopLag},
                         wght, vad, rate);
    const Zep16s out[8] = {wght.old_T0_med, wght.ada_w, wght.wght_flg, vad.tone,
                           vad.pitch,       vad.oldlag_count, vad.oldlag, vad.best_corr_hp};
    std::memcpy(r, out, sizeof(out));
    return zepStsNoErr;
}

ZepStatus zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(const Zep16s* pSrcLPC, const Zep16s* pSrcSpch,
                                                       Zep16s* pWgtFltMem, Zep16s* pWgtSpchHist, Zep16s* pOldLags,
                                                       Zep16s* pOlGainFlg, Zep16s* pWghtState, Zep16s* pDstWgtSpch,
                                                       Zep16s* pDstOpenLoopLag, Zep32s* pDstMaxCorr,
                                                       Zep32s* pDstEnergy, Zep32s rate) {
    if (any_null(pSrcLPC, pSrcSpch, pWgtFltMem, pWgtSpchHist, pOldLags, pOlGainFlg, pWghtState, pDstWgtSpch,
                 pDstOpenLoopLag, pDstMaxCorr, pDstEnergy))
        return zepStsNullPtrErr;
    if (!amr::ol_rate_supported(rate)) return zepStsRangeErr;
    amr::OlWght wght{pWghtState[0], pWghtState[1], pWghtState[2]};
    amr::OlVad vad;
    vad.kind = amr::OlVad::kVad2;
    amr::open_loop_frame({pSrcLPC, pSrcSpch, pWgtFltMem, pWgtSpchHist, pOldLags, pOlGainFlg, pDstWgtSpch,
                          pDstOpenLoopLag},
                         wght, vad, rate);
    pWghtState[0] = wght.old_T0_med;
    pWghtState[1] = wght.ada_w;
    pWghtState[2] = wght.wght_flg;
    *pDstMaxCorr = vad.L_Rmax;
    *pDstEnergy = vad.L_R0;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

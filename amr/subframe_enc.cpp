// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR encoder subframe exports (3GPP TS 26.073 spreproc.c
// subframePreProc, cl_ltp.c cl_ltp, spstproc.c subframePostProc). Speech
// and excitation Q0, A(z) Q12, impulse response Q12, pitch gain Q14.
#include "amr/amr_rate.h"
#include "amr/enc_pitch.h"
#include "common/args.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT
namespace {
constexpr int kL = amr_enc::kLSubfr;
constexpr int kHist = amr_enc::kExcHist;
}  // namespace

ZepStatus zepsTargetImpulseResponse_GSMAMR_16s(const Zep16s* pSrcLPC, const Zep16s* pSrcLPCQ,
                                               const Zep16s* pSrcSpch, const Zep16s* pMemErr, const Zep16s* pMemW0,
                                               Zep16s* pDstExc, Zep16s* pDstImp, Zep16s* pDstTarget,
                                               Zep16s* pDstRes, Zep32s rate) {
    if (any_null(pSrcLPC, pSrcLPCQ, pSrcSpch, pMemErr, pMemW0, pDstExc, pDstImp, pDstTarget, pDstRes))
        return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    Word16 A[amr_enc::kMp1], Aq[amr_enc::kMp1], sp[amr_enc::kM + kL], mem_err[amr_enc::kM], mem_w0[amr_enc::kM];
    for (int i = 0; i < amr_enc::kMp1; i++) {
        A[i] = pSrcLPC[i];
        Aq[i] = pSrcLPCQ[i];
    }
    for (int i = 0; i < amr_enc::kM + kL; i++) sp[i] = pSrcSpch[i];
    for (int i = 0; i < amr_enc::kM; i++) {
        mem_err[i] = pMemErr[i];
        mem_w0[i] = pMemW0[i];
    }
    Word16 exc[kL], h1[kL], xn[kL], res[kL];
    amr_enc::subframe_pre_proc(static_cast<Word16>(mode), A, Aq, sp + amr_enc::kM, mem_err, mem_w0, exc, h1, xn,
                               res);
    for (int i = 0; i < kL; i++) {
        pDstExc[i] = exc[i];
        pDstImp[i] = h1[i];
        pDstTarget[i] = xn[i];
        pDstRes[i] = res[i];
    }
    return zepStsNoErr;
}

ZepStatus zepsClosedLoopPitchSearch_GSMAMR_16s(Zep16s* pPrevLag, const Zep16s* pToneState,
                                               const Zep16s* pOpenLoopLag, const Zep16s* pSrcImp,
                                               Zep16s* pSrcDstExc, Zep16s* pSrcDstRes, const Zep16s* pSrcTarget,
                                               Zep16s lspFlag, Zep16s* pDstTarget2, Zep16s* pDstFltAdpt,
                                               Zep16s* pDstPitch, Zep16s* pDstGCoeff, Zep16s* pDstIndex,
                                               Zep32s subframe, Zep32s rate) {
    if (any_null(pPrevLag, pToneState, pOpenLoopLag, pSrcImp, pSrcDstExc, pSrcDstRes, pSrcTarget, pDstTarget2,
                 pDstFltAdpt, pDstPitch, pDstGCoeff, pDstIndex))
        return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0 || subframe < 0 || subframe > 3) return zepStsRangeErr;
    // A lag of 143 2/3 leaves 144 with fraction -1 (searchFrac at 1/3 resolution).
    auto lag_ok = [](Zep16s t, int max) { return t >= 0 && t <= max; };
    if (!lag_ok(*pPrevLag, amr_enc::kPitMax + 1) || !lag_ok(pOpenLoopLag[0], amr_enc::kPitMax) ||
        !lag_ok(pOpenLoopLag[1], amr_enc::kPitMax))
        return zepStsOutOfRangeErr;
    Word16 ton[8], T_op[2] = {pOpenLoopLag[0], pOpenLoopLag[1]}, h1[kL], exc[kHist + kL], res[kL], xn[kL];
    for (int i = 0; i < 8; i++) ton[i] = pToneState[i];
    for (int i = 0; i < kL; i++) {
        h1[i] = pSrcImp[i];
        res[i] = pSrcDstRes[i];
        xn[i] = pSrcTarget[i];
    }
    for (int i = 0; i < kHist + kL; i++) exc[i] = pSrcDstExc[i];
    Word16 prev = *pPrevLag, xn2[kL], y1[kL], T0, T0_frac, gain_pit, g_coeff[4], ana[2] = {0, 0}, gp_limit;
    amr_enc::cl_ltp(prev, ton, static_cast<Word16>(mode), static_cast<Word16>(subframe * kL), T_op, h1, exc + kHist,
                    res, xn, lspFlag, xn2, y1, T0, T0_frac, gain_pit, g_coeff, ana, gp_limit);
    *pPrevLag = prev;
    for (int i = 0; i < kL; i++) {
        pSrcDstExc[kHist + i] = exc[kHist + i];
        pSrcDstRes[i] = res[i];
        pDstTarget2[i] = xn2[i];
        pDstFltAdpt[i] = y1[i];
    }
    pDstPitch[0] = T0;
    pDstPitch[1] = T0_frac;
    pDstPitch[2] = gain_pit;
    pDstPitch[3] = gp_limit;
    for (int i = 0; i < 4; i++) pDstGCoeff[i] = g_coeff[i];
    pDstIndex[0] = ana[0];
    if (mode == amr_enc::MR122) pDstIndex[1] = ana[1];
    return zepStsNoErr;
}

ZepStatus zepsEncoderSubframeUpdate_GSMAMR_16s(const Zep16s* pSrcSpch, const Zep16s* pSrcLPCQ,
                                               const Zep16s* pSrcTarget, const Zep16s* pSrcCode,
                                               const Zep16s* pSrcFltAdpt, const Zep16s* pSrcFltCode, Zep16s gainPit,
                                               Zep16s gainCode, Zep16s* pMemSyn, Zep16s* pMemErr, Zep16s* pMemW0,
                                               Zep16s* pSrcDstExc, Zep16s* pDstSynth, Zep16s* pSharp, Zep32s rate) {
    if (any_null(pSrcSpch, pSrcLPCQ, pSrcTarget, pSrcCode, pSrcFltAdpt, pSrcFltCode, pMemSyn, pMemErr, pMemW0,
                 pSrcDstExc, pDstSynth, pSharp))
        return zepStsNullPtrErr;
    const int mode = amr_rate::mode_of_rate(rate);
    if (mode < 0) return zepStsRangeErr;
    Word16 Aq[amr_enc::kMp1], mem_syn[amr_enc::kM], mem_err[amr_enc::kM], mem_w0[amr_enc::kM];
    Word16 exc[kL], synth[kL], sharp;
    for (int i = 0; i < amr_enc::kMp1; i++) Aq[i] = pSrcLPCQ[i];
    for (int i = 0; i < amr_enc::kM; i++) mem_syn[i] = pMemSyn[i];
    for (int i = 0; i < kL; i++) exc[i] = pSrcDstExc[i];
    amr_enc::subframe_post_proc(pSrcSpch, static_cast<Word16>(mode), gainPit, gainCode, Aq, synth, pSrcTarget,
                                pSrcCode, pSrcFltAdpt, pSrcFltCode, mem_syn, mem_err, mem_w0, exc, sharp);
    for (int i = 0; i < amr_enc::kM; i++) {
        pMemSyn[i] = mem_syn[i];
        pMemErr[i] = mem_err[i];
        pMemW0[i] = mem_w0[i];
    }
    for (int i = 0; i < kL; i++) {
        pSrcDstExc[i] = exc[i];
        pDstSynth[i] = synth[i];
    }
    *pSharp = sharp;
    return zepStsNoErr;
}

ZepStatus zepsConvolve_GSMAMR_16s(const Zep16s* pSrc, const Zep16s* pImp, Zep16s* pDst, Zep32s len) {
    if (any_null(pSrc, pImp, pDst)) return zepStsNullPtrErr;
    if (len < 1 || len > amr_enc::kLFrame) return zepStsSizeErr;
    Word16 y[amr_enc::kLFrame];
    amr_enc::convolve(pSrc, pImp, y, len);
    for (int i = 0; i < len; i++) pDst[i] = y[i];
    return zepStsNoErr;
}

ZEPS_END_VARIANT

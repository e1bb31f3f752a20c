// SPDX-License-Identifier: BSD-3-Clause
// G.729 LSF decoder in single-precision floating point, following the G.729
// Annex C routines lsp_get_quant, lsp_expand_1_2, lsp_prev_compose,
// lsp_prev_extract, lsp_prev_update and lsp_stability (4.1.1). LSFs in
// radians; MA memory 4 x 10, newest row first.
#include "common/args.h"
#include "common/exports.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kM = 10;
constexpr float kGap1 = 0.0012f, kGap2 = 0.0006f, kGap3 = 0.0392f;
constexpr float kLowLimit = 0.005f, kHighLimit = 3.135f;

void expand_float(float* buf, float gap) {
    for (int j = 1; j < kM; ++j) {
        const float tmp = (buf[j - 1] - buf[j] + gap) * 0.5f;
        if (tmp > 0) {
            buf[j - 1] -= tmp;
            buf[j] += tmp;
        }
    }
}

void prev_update_float(const float* ele, float* prev) {
    for (int k = 3; k > 0; --k)
        for (int j = 0; j < kM; ++j) prev[k * kM + j] = prev[(k - 1) * kM + j];
    for (int j = 0; j < kM; ++j) prev[j] = ele[j];
}

int stability_float(float* buf) {
    for (int j = 0; j < kM - 1; ++j) {
        if (buf[j + 1] - buf[j] < 0.0f) {
            const float t = buf[j + 1];
            buf[j + 1] = buf[j];
            buf[j] = t;
        }
    }
    int status = 0;
    if (buf[0] < kLowLimit) {
        buf[0] = kLowLimit;
        status = zepStsLSFLowClamped;
    }
    for (int j = 0; j < kM - 1; ++j)
        if (buf[j + 1] - buf[j] < kGap3) buf[j + 1] = buf[j] + kGap3;
    if (buf[kM - 1] > kHighLimit) {
        buf[kM - 1] = kHighLimit;
        status = status ? zepStsLSFLowHighClamped : zepStsLSFHighClamped;
    }
    return status;
}

}  // namespace

ZepStatus zepsLSFDecode_G729_32f(const Zep16s* pIdx, Zep32f* pPrevFreq, Zep32f* pQLSF) {
    if (any_null(pIdx, pPrevFreq, pQLSF)) return zepStsNullPtrErr;
    if (pIdx[0] != 0 && pIdx[0] != 1) return zepStsOutOfRangeErr;
    const int mode = pIdx[0], l1 = pIdx[1] & 127, l2 = pIdx[2] & 31, l3 = pIdx[3] & 31;
    float buf[kM];
    for (int j = 0; j < 5; ++j) buf[j] = g729f::lspcb1[l1][j] + g729f::lspcb2[l2][j];
    for (int j = 5; j < kM; ++j) buf[j] = g729f::lspcb1[l1][j] + g729f::lspcb2[l3][j];
    expand_float(buf, kGap1);
    expand_float(buf, kGap2);
    for (int j = 0; j < kM; ++j) {
        float v = buf[j] * g729f::fg_sum[mode][j];
        for (int k = 0; k < 4; ++k) v += pPrevFreq[k * kM + j] * g729f::fg[mode][k][j];
        pQLSF[j] = v;
    }
    prev_update_float(buf, pPrevFreq);
    return stability_float(pQLSF);
}

ZepStatus zepsLSFDecodeErased_G729_32f(int maMode, Zep32f* pPrevFreq, const Zep32f* pLSF) {
    if (any_null(pPrevFreq, pLSF)) return zepStsNullPtrErr;
    if (maMode != 0 && maMode != 1) return zepStsOutOfRangeErr;
    float ele[kM];
    for (int j = 0; j < kM; ++j) {
        ele[j] = pLSF[j];
        for (int k = 0; k < 4; ++k) ele[j] -= pPrevFreq[k * kM + j] * g729f::fg[maMode][k][j];
        ele[j] *= g729f::fg_sum_inv[maMode][j];
    }
    prev_update_float(ele, pPrevFreq);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

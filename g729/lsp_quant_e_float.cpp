// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E forward LSP quantiser in single-precision floating point,
// following the G.729 Annex C+ routines qua_lspe, get_wegt, relspwede,
// lsp_pre_select, lsp_select_1/_2, lsp_get_tdist, lsp_last_select and
// lsp_get_quante. LSPs as cosines, LSFs in radians; the MA memory is read
// only and the new codebook vector is returned for the caller's update.
#include <cmath>

#include "common/args.h"
#include "common/exports.h"
#include "g729/g729_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kM = 10;
constexpr float kPi = 3.14159265358979323846f;
constexpr float kGap1 = 0.0012f, kGap2 = 0.0006f, kGap3 = 0.0392f;
constexpr float kLowLimit = 0.005f, kHighLimit = 3.135f;
constexpr float kFltMax = 1.e38f;

void weights(const float* lsf, float* w) {
    auto weight = [](float tmp) { return tmp > 0.0f ? 1.0f : tmp * tmp * 10.0f + 1.0f; };
    w[0] = weight(lsf[1] - kPi * 0.04f - 1.0f);
    for (int i = 1; i < kM - 1; ++i) w[i] = weight(lsf[i + 1] - lsf[i - 1] - 1.0f);
    w[kM - 1] = weight(kPi * 0.92f - lsf[kM - 2] - 1.0f);
    w[4] *= 1.2f;
    w[5] *= 1.2f;
}

void expand(float* buf, float gap, int first, int last) {
    for (int j = first; j <= last; ++j) {
        const float tmp = (buf[j - 1] - buf[j] + gap) * 0.5f;
        if (tmp > 0) {
            buf[j - 1] -= tmp;
            buf[j] += tmp;
        }
    }
}

int first_stage(const float* rbuf) {
    int cand = 0;
    float dmin = kFltMax;
    for (int i = 0; i < 128; ++i) {
        float dist = 0.0f;
        for (int j = 0; j < kM; ++j) {
            const float t = rbuf[j] - g729f::lspcb1[i][j];
            dist += t * t;
        }
        if (dist < dmin) {
            dmin = dist;
            cand = i;
        }
    }
    return cand;
}

int second_stage(const float* rbuf, const float* cb1, const float* w, int first) {
    float buf[kM];
    for (int j = first; j < first + 5; ++j) buf[j] = rbuf[j] - cb1[j];
    int index = 0;
    float dmin = kFltMax;
    for (int k = 0; k < 32; ++k) {
        float dist = 0.0f;
        for (int j = first; j < first + 5; ++j) {
            const float t = buf[j] - g729f::lspcb2[k][j];
            dist += w[j] * t * t;
        }
        if (dist < dmin) {
            dmin = dist;
            index = k;
        }
    }
    return index;
}

void stability(float* buf) {
    for (int j = 0; j < kM - 1; ++j) {
        if (buf[j + 1] - buf[j] < 0.0f) {
            const float t = buf[j + 1];
            buf[j + 1] = buf[j];
            buf[j] = t;
        }
    }
    if (buf[0] < kLowLimit) buf[0] = kLowLimit;
    for (int j = 0; j < kM - 1; ++j)
        if (buf[j + 1] - buf[j] < kGap3) buf[j + 1] = buf[j] + kGap3;
    if (buf[kM - 1] > kHighLimit) buf[kM - 1] = kHighLimit;
}

struct Choice {
    int l1, l2, l3;
    float dist;
};

Choice search_mode(const float* lsf, const float* w, const float* prev, int mode) {
    float rbuf[kM], buf[kM];
    for (int j = 0; j < kM; ++j) {
        rbuf[j] = lsf[j];
        for (int k = 0; k < 4; ++k) rbuf[j] -= prev[k * kM + j] * g729f::fg[mode][k][j];
        rbuf[j] *= g729f::fg_sum_inv[mode][j];
    }
    Choice c;
    c.l1 = first_stage(rbuf);
    c.l2 = second_stage(rbuf, g729f::lspcb1[c.l1], w, 0);
    for (int j = 0; j < 5; ++j) buf[j] = g729f::lspcb1[c.l1][j] + g729f::lspcb2[c.l2][j];
    expand(buf, kGap1, 1, 4);
    c.l3 = second_stage(rbuf, g729f::lspcb1[c.l1], w, 5);
    for (int j = 5; j < kM; ++j) buf[j] = g729f::lspcb1[c.l1][j] + g729f::lspcb2[c.l3][j];
    expand(buf, kGap1, 5, kM - 1);
    expand(buf, kGap2, 1, kM - 1);
    c.dist = 0.0f;
    for (int j = 0; j < kM; ++j) {
        const float t = (buf[j] - rbuf[j]) * g729f::fg_sum[mode][j];
        c.dist += w[j] * t * t;
    }
    return c;
}

}  // namespace

ZepStatus zepsLSPQuant_G729E_32f(const Zep32f* pLSP, const Zep32f* pPrevFreq, Zep32f* pQLSP, Zep16s* pIdx,
                                 Zep32f* pFreqCur) {
    if (any_null(pLSP, pPrevFreq, pQLSP, pIdx, pFreqCur)) return zepStsNullPtrErr;
    float lsf[kM], w[kM];
    for (int i = 0; i < kM; ++i) lsf[i] = static_cast<float>(std::acos(static_cast<double>(pLSP[i])));
    weights(lsf, w);
    const Choice m0 = search_mode(lsf, w, pPrevFreq, 0);
    const Choice m1 = search_mode(lsf, w, pPrevFreq, 1);
    const int mode = m1.dist < m0.dist ? 1 : 0;
    const Choice& c = mode ? m1 : m0;
    float buf[kM], q[kM];
    for (int j = 0; j < 5; ++j) buf[j] = g729f::lspcb1[c.l1][j] + g729f::lspcb2[c.l2][j];
    for (int j = 5; j < kM; ++j) buf[j] = g729f::lspcb1[c.l1][j] + g729f::lspcb2[c.l3][j];
    expand(buf, kGap1, 1, kM - 1);
    expand(buf, kGap2, 1, kM - 1);
    for (int j = 0; j < kM; ++j) {
        q[j] = buf[j] * g729f::fg_sum[mode][j];
        for (int k = 0; k < 4; ++k) q[j] += pPrevFreq[k * kM + j] * g729f::fg[mode][k][j];
    }
    stability(q);
    for (int j = 0; j < kM; ++j) {
        pFreqCur[j] = buf[j];
        pQLSP[j] = static_cast<float>(std::cos(static_cast<double>(q[j])));
    }
    pIdx[0] = static_cast<Zep16s>((mode << 7) | c.l1);
    pIdx[1] = static_cast<Zep16s>((c.l2 << 5) | c.l3);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// G.729 Annex B SID LSF quantiser (B.4.2, lsfq_noise with Qnt_e,
// New_ML_search_1 and New_ML_search_2) and decoder (B.5, sid_lsfq_decode).
// LSFs Q13 radians, LSPs Q15, MA predictors noise_fg Q15 with the same
// 4 x 10 memory freq_prev as the speech quantiser; weights normalised Q11.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "g729/g729b_tables.h"
#include "g729/lsf_codebook.h"
#include "g729/lsf_lsp.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr Word16 kMLimit = 25681;   // M_LIMIT
constexpr int kCandidates = 4;      // survivors of the first stage
constexpr int kSize1 = 32;          // first-stage subset size
constexpr int kSize2 = 16;          // second-stage subset size

/// Lsp_prev_extract with the SID predictor of `mode`.
void noise_prev_extract(const Word16* lsf, Word16* ele, int mode, const Word16* prev) {
    for (int j = 0; j < kLpcOrder; ++j) {
        Word32 t = L_deposit_h(lsf[j]);
        for (int k = 0; k < kMaOrder; ++k) t = L_msu(t, prev[k * kLpcOrder + j], noise_fg[mode][k][j]);
        ele[j] = extract_h(L_shl(L_mult(extract_h(t), noise_fg_sum_inv[mode][j]), 3));
    }
}

/// Lsp_prev_compose with the SID predictor of `mode`.
void noise_prev_compose(const Word16* ele, Word16* lsf, int mode, const Word16* prev) {
    for (int j = 0; j < kLpcOrder; ++j) {
        Word32 acc = L_mult(ele[j], noise_fg_sum[mode][j]);
        for (int k = 0; k < kMaOrder; ++k) acc = L_mac(acc, prev[k * kLpcOrder + j], noise_fg[mode][k][j]);
        lsf[j] = extract_h(acc);
    }
}

/// Second-stage codebook vector of SID index m (low half from PtrTab_2[0], high from PtrTab_2[1]).
inline Word16 cb2(int m, int l) { return lspcb2[PtrTab_2[l < 5 ? 0 : 1][m]][l]; }

/// Picks the k smallest of sum[0..n) in order (first occurrence on ties),
/// as the reference's repeated minimum search does.
void pick_smallest(Word16* sum, int n, int k, int* best) {
    for (int q = 0; q < k; ++q) {
        Word16 mn = MAX_16;
        int at = 0;
        for (int i = 0; i < n; ++i)
            if (sum[i] < mn) {
                mn = sum[i];
                at = i;
            }
        best[q] = at;
        sum[at] = MAX_16;
    }
}

struct SidChoice {
    int mode, i1, i2;
};

/// Qnt_e: first stage over both predictors (4 survivors), weighted second stage.
SidChoice qnt_e(const Word16* errlsf, const Word16* w) {
    // First stage: errors of every (mode, entry), weighted by Mp.
    Word16 sum1[2 * kSize1];
    for (int p = 0; p < 2; ++p)
        for (int m = 0; m < kSize1; ++m) {
            Word32 acc = 0;
            for (int l = 0; l < kLpcOrder; ++l) {
                const Word16 t = sub(errlsf[p * kLpcOrder + l], lspcb1[PtrTab_1[m]][l]);
                acc = L_mac(acc, t, t);
            }
            sum1[p * kSize1 + m] = mult(extract_h(acc), Mp[p]);
        }
    int best1[kCandidates];
    pick_smallest(sum1, 2 * kSize1, kCandidates, best1);
    Word16 d1[kCandidates][kLpcOrder];
    int mode_of[kCandidates], idx_of[kCandidates];
    for (int q = 0; q < kCandidates; ++q) {
        mode_of[q] = best1[q] / kSize1;
        idx_of[q] = best1[q] % kSize1;
        for (int l = 0; l < kLpcOrder; ++l)
            d1[q][l] = sub(errlsf[mode_of[q] * kLpcOrder + l], lspcb1[PtrTab_1[idx_of[q]]][l]);
    }
    // Second stage: weighted errors of every (candidate, entry).
    Word16 sum2[kCandidates * kSize2];
    for (int p = 0; p < kCandidates; ++p)
        for (int m = 0; m < kSize2; ++m) {
            Word32 acc = 0;
            for (int l = 0; l < kLpcOrder; ++l) {
                const Word16 fs = noise_fg_sum[mode_of[p]][l];
                Word16 t1 = extract_h(L_shl(L_mult(fs, fs), 2));
                t1 = mult(t1, w[l]);
                const Word16 t2 = sub(d1[p][l], cb2(m, l));
                t1 = extract_h(L_shl(L_mult(t1, t2), 3));
                acc = L_mac(acc, t1, t2);
            }
            sum2[p * kSize2 + m] = extract_h(acc);
        }
    int best2;
    pick_smallest(sum2, kCandidates * kSize2, 1, &best2);
    const int p = best2 / kSize2;
    return {mode_of[p], idx_of[p], best2 % kSize2};
}

/// The SID codebook vector of (i1, i2) before the gap expansion.
void sid_codebook_vector(int i1, int i2, Word16* buf) {
    for (int l = 0; l < kLpcOrder; ++l) buf[l] = add(lspcb1[PtrTab_1[i1]][l], cb2(i2, l));
}

}  // namespace

ZepStatus zepsLSPQuant_G729B_16s(const Zep16s* pLSP, Zep16s* pPrevFreq, Zep16s* pQLSP, Zep16s* pIdx) {
    if (any_null(pLSP, pPrevFreq, pQLSP, pIdx)) return zepStsNullPtrErr;
    Word16 lsf[kLpcOrder];
    lsp_to_lsf(pLSP, lsf, kLpcOrder);
    // Spacing to about 100 Hz.
    if (lsf[0] < kLsfLowLimit) lsf[0] = kLsfLowLimit;
    for (int i = 0; i < kLpcOrder - 1; ++i)
        if (sub(lsf[i + 1], lsf[i]) < 2 * kGap3) lsf[i + 1] = add(lsf[i], 2 * kGap3);
    if (lsf[kLpcOrder - 1] > kMLimit) lsf[kLpcOrder - 1] = kMLimit;
    if (lsf[kLpcOrder - 1] < lsf[kLpcOrder - 2]) lsf[kLpcOrder - 2] = sub(lsf[kLpcOrder - 1], kGap3);

    Word16 w[kLpcOrder], errlsf[2 * kLpcOrder];
    get_wegt(lsf, w);
    for (int mode = 0; mode < 2; ++mode) noise_prev_extract(lsf, errlsf + mode * kLpcOrder, mode, pPrevFreq);
    const SidChoice c = qnt_e(errlsf, w);

    Word16 buf[kLpcOrder], lsfq[kLpcOrder];
    sid_codebook_vector(c.i1, c.i2, buf);
    lsp_expand(buf, kGap1, 1, kLpcOrder - 1);
    noise_prev_compose(buf, lsfq, c.mode, pPrevFreq);
    lsp_prev_update(buf, pPrevFreq);
    lsp_stability(lsfq);
    lsf_to_lsp(lsfq, pQLSP, kLpcOrder);
    pIdx[0] = static_cast<Zep16s>(c.mode);
    pIdx[1] = static_cast<Zep16s>(c.i1);
    pIdx[2] = static_cast<Zep16s>(c.i2);
    return zepStsNoErr;
}

ZepStatus zepsLSFDecode_G729B_16s(const Zep16s* pIdx, Zep16s* pPrevFreq, Zep16s* pQLSF) {
    if (any_null(pIdx, pPrevFreq, pQLSF)) return zepStsNullPtrErr;
    if (pIdx[0] != 0 && pIdx[0] != 1) return zepStsOutOfRangeErr;
    Word16 buf[kLpcOrder];
    sid_codebook_vector(pIdx[1] & 31, pIdx[2] & 15, buf);
    // Gap 10 with the reference's own rounding: (a - b + 10) / 2 by L_mult/L_mac.
    for (int j = 1; j < kLpcOrder; ++j) {
        Word32 acc = L_mult(buf[j - 1], 16384);
        acc = L_mac(acc, buf[j], -16384);
        acc = L_mac(acc, 10, 16384);
        const Word16 k = extract_h(acc);
        if (k > 0) {
            buf[j - 1] = sub(buf[j - 1], k);
            buf[j] = add(buf[j], k);
        }
    }
    noise_prev_compose(buf, pQLSF, pIdx[0], pPrevFreq);
    lsp_prev_update(buf, pPrevFreq);
    return static_cast<ZepStatus>(lsp_stability(pQLSF));
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex D 11-bit fixed-codebook search (ITU-T G.729 Annex D D.4.8,
// ACELP_CodebookD with Cor_h_D, Cor_h_X and D2i40_11): two signed pulses,
// the first on track 0 = {1,3,6,8,...,36,38} (positions 5k+1 and 5k+3), the
// second on track 1 = {0,2,4,5,7,9,...,37,39} and {1,6,...,36} (5k, 5k+2,
// 5k+4 and 5k+1). The signs follow the backward-filtered target; the pair
// maximising corr^2 / energy is searched exhaustively over eight sub-track
// pairings in the reference's order (a later pair wins only if strictly
// better). Impulse response Q12, target Q0, codeword Q13, filtered
// codeword Q12.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/acelp_kernels.h"
#include "g729/g729d_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

/// The impulse response scaled for the correlations as in Cor_h: halved
/// when its energy's high word exceeds 32000, else normalised.
void scale_response(const Word16* H, Word16* h) {
    Word32 cor = 0;
    for (int i = 0; i < kSubfr; ++i) cor = L_mac(cor, H[i], H[i]);
    if (extract_h(cor) > 32000) {
        for (int i = 0; i < kSubfr; ++i) h[i] = shr(H[i], 1);
    } else {
        const Word16 k = shr(norm_l(cor), 1);
        for (int i = 0; i < kSubfr; ++i) h[i] = shl(H[i], k);
    }
}

/// Correlations of the scaled response for pulses at p and q, every pair:
/// the sum of h[k] h[k + |q - p|] over k = 0 .. 39 - max(p, q), accumulated
/// from k = 0 with saturation (the partial sums of the reference's diagonal
/// walks), one diagonal at a time.
struct Correlations {
    Word16 v[kSubfr][kSubfr];
    explicit Correlations(const Word16* h) {
        for (int d = 0; d < kSubfr; ++d) {
            Word32 c = 0;
            for (int k = 0; k + d < kSubfr; ++k) {
                c = L_mac(c, h[k], h[k + d]);
                const int q = kSubfr - 1 - k, p = q - d;  // the pair whose sum ends at k
                v[p][q] = v[q][p] = extract_h(c);
            }
        }
    }
};

/// One pairing of D2i40_11: the sub-track (position mod 5) of the outer
/// and the inner loop, and whether the outer position is the track-0 pulse.
struct Pairing {
    int outer, inner;
    bool outer_is_first;
};
constexpr Pairing kPairings[8] = {{0, 1, false}, {1, 1, true},  {0, 3, false}, {3, 4, true},
                                  {1, 2, true},  {1, 3, false}, {1, 4, true},  {2, 3, false}};

int index_in(const std::int16_t* table, int n, int pos) {
    int i = 0;
    while (i < n - 1 && table[i] != pos) ++i;
    return i;
}

/// D2i40_11: the two pulses; returns the 9-bit position code and writes the
/// codeword, its filtered form (through the unscaled h) and the 2-bit sign code.
Word16 d2i40_11(Word16* dn, const Word16* h_scaled, const Word16* h, Word16* code, Word16* y, Word16& sign) {
    Word16 p_sign[kSubfr];
    for (int i = 0; i < kSubfr; ++i) {
        if (dn[i] >= 0) {
            p_sign[i] = MAX_16;
        } else {
            p_sign[i] = MIN_16;
            dn[i] = negate(dn[i]);
        }
    }
    const Correlations rr(h_scaled);

    int ip0 = 1, ip1 = 0;
    Word16 psc = 0, alpha = MAX_16;
    for (const Pairing& pr : kPairings) {
        for (int i0 = pr.outer; i0 < kSubfr; i0 += kStep) {
            for (int i1 = pr.inner; i1 < kSubfr; i1 += kStep) {
                const Word16 cross = mult(rr.v[i0][i1], mult(p_sign[i0], p_sign[i1]));
                const Word16 ps1 = add(dn[i0], dn[i1]);
                Word32 alp1 = L_mult(rr.v[i0][i0], 1);
                alp1 = L_mac(alp1, rr.v[i1][i1], 1);
                alp1 = L_mac(alp1, cross, 2);
                const Word16 alp = extract_l(L_shr(alp1, 5));
                const Word16 ps1c = mult(ps1, ps1);
                if (L_msu(L_mult(ps1c, alpha), psc, alp) > 0) {
                    psc = ps1c;
                    alpha = alp;
                    ip0 = pr.outer_is_first ? i0 : i1;
                    ip1 = pr.outer_is_first ? i1 : i0;
                }
            }
        }
    }
    const int k0 = index_in(trackTable0, 16, ip0);
    const int k1 = index_in(trackTable1, 32, ip1);
    const int m0 = trackTable0[k0], m1 = trackTable1[k1];
    const Word16 s0 = p_sign[m0] > 0 ? 1 : 0, s1 = p_sign[m1] > 0 ? 1 : 0;
    std::memset(code, 0, kSubfr * sizeof(Word16));
    code[m0] = shr(p_sign[m0], 2);
    code[m1] = add(code[m1], shr(p_sign[m1], 2));
    sign = add(add(s1, s1), s0);
    for (int i = 0; i < kSubfr; ++i) y[i] = 0;
    for (int i = m0, j = 0; i < kSubfr; ++i, ++j) y[i] = s0 ? h[j] : negate(h[j]);
    for (int i = m1, j = 0; i < kSubfr; ++i, ++j) y[i] = s1 ? add(y[i], h[j]) : sub(y[i], h[j]);
    return add(grayEncode[k0], shl(grayEncode[k1], 4));
}

}  // namespace

ZepStatus zepsFixedCodebookSearch_G729D_16s(const Zep16s* pSrcFixedTarget, const Zep16s* pSrcImpulseResponse,
                                            Zep16s lag, Zep16s sharp, Zep16s* pDstFixedVector,
                                            Zep16s* pDstFltFixedVector, Zep16s* pDstIndex) {
    if (any_null(pSrcFixedTarget, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector, pDstIndex))
        return zepStsNullPtrErr;
    if (lag < 1) return zepStsRangeErr;
    const Word16 beta = shl(sharp, 1);
    Word16 h[kSubfr];
    std::memcpy(h, pSrcImpulseResponse, sizeof h);
    for (int i = lag; i < kSubfr; ++i) h[i] = add(h[i], mult(h[i - lag], beta));
    Word16 h_scaled[kSubfr];
    scale_response(h, h_scaled);
    Word16 dn[kSubfr];
    cor_h_x(h, pSrcFixedTarget, dn);
    Word16 code[kSubfr], y[kSubfr], sign = 0;
    const Word16 index = d2i40_11(dn, h_scaled, h, code, y, sign);
    for (int i = lag; i < kSubfr; ++i) code[i] = add(code[i], mult(code[i - lag], beta));
    std::memcpy(pDstFixedVector, code, sizeof code);
    std::memcpy(pDstFltFixedVector, y, sizeof y);
    pDstIndex[0] = index;
    pDstIndex[1] = sign;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

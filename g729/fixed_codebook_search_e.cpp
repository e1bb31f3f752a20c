// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex E fixed-codebook searches (E.3.8, ACELP_10i40_35bits and
// ACELP_12i40_44bits): 5 tracks of 8 positions, signs preset from the
// target correlation and the long-term residual, then a depth-first search
// of pulse pairs on adjacent tracks from 3 starting tracks (the 3 best of
// the 5 sums of neighbouring tracks' maxima): 10 pulses (2 a track) in
// forward mode, 12 (3 on the first two tracks) in backward mode. Target
// and residual Q0, impulse response Q12, codeword Q12 (pulses 4096),
// filtered codeword Q11.
#include <cstring>
#include <utility>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fixed_math.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kSubfr = 40;
constexpr int kTracks = 5;   // NB_TRACK
constexpr int kPos = 8;      // NB_POS
constexpr int kStep = 5;     // STEP
constexpr int kMsize = 64;   // MSIZE
constexpr Word16 kOneFifth = 6554;  // Q15_1_5
constexpr int kIpos[16] = {0, 1, 2, 3, 4, 0, 1, 2, 3, 4, 0, 1, 2, 3, 4, 0};

/// cor_h_x_e: dn = correlation of the target with h, scaled so that the sum
/// of the tracks' maxima stays below 2^13.
void cor_h_x_e(const Word16* h, const Word16* x, Word16* dn) {
    Word32 y32[kSubfr];
    Word32 tot = 5;
    for (int k = 0; k < kTracks; ++k) {
        Word32 max = 0;
        for (int i = k; i < kSubfr; i += kStep) {
            Word32 s = 0;
            for (int j = i; j < kSubfr; ++j) s = L_mac(s, x[j], h[j - i]);
            y32[i] = s;
            s = L_abs(s);
            if (L_sub(s, max) > 0) max = s;
        }
        tot = L_add(tot, L_shr(max, 1));
    }
    const Word16 j = sub(norm_l(tot), 2);
    for (int i = 0; i < kSubfr; ++i) dn[i] = round_fx(L_shl(y32[i], j));
}

/// set_sign: the sign of each position from k_cn cn + k_dn dn; dn made
/// positive; the best position and its value per track.
void set_sign(const Word16* cn, Word16* dn, Word16* sign, Word16* inv_sign, Word16* pos_max, Word32* corr) {
    Word32 s = 0;
    for (int i = 0; i < kSubfr; ++i) s = L_mac(s, cn[i], cn[i]);
    if (s < 512) s = 512;
    Word16 k_cn = extract_h(L_shl(Inv_sqrt(s), 5));
    k_cn = mult(k_cn, 32767);
    s = 0;
    for (int i = 0; i < kSubfr; ++i) s = L_mac(s, dn[i], dn[i]);
    if (s < 512) s = 512;
    const Word16 k_dn = extract_h(L_shl(Inv_sqrt(s), 5));
    for (int k = 0; k < kTracks; ++k) {
        Word32 max = -1;
        Word16 pos = 0;
        for (int i = k; i < kSubfr; i += kStep) {
            Word16 val = dn[i];
            s = L_mac(L_mult(k_cn, cn[i]), k_dn, val);
            if (s >= 0) {
                sign[i] = 32767;
                inv_sign[i] = -32768;
            } else {
                sign[i] = -32768;
                inv_sign[i] = 32767;
                val = negate(val);
            }
            dn[i] = val;
            s = L_abs(s);
            if (s > max) {
                max = s;
                pos = static_cast<Word16>(i);
            }
        }
        pos_max[k] = pos;
        corr[k] = max;
    }
}

/// cor_h_e: h normalised and scaled, its negation, the energies rrixix of
/// each position and the signed correlations rrixiy of adjacent tracks.
void cor_h_e(const Word16* H, const Word16* sign, const Word16* inv_sign, Word16* h, Word16* h_inv,
             Word16 (*rrixix)[kPos], Word16 (*rrixiy)[kMsize]) {
    Word32 cor = 0;
    for (int i = 0; i < kSubfr; ++i) cor = L_mac(cor, H[i], H[i]);
    Word16 k = shr(norm_l(cor), 1);
    for (int i = 0; i < kSubfr; ++i) h[i] = shl(H[i], k);
    cor = L_shl(cor, add(k, k));
    cor = L_shr(cor, 12);
    k = extract_h(L_shl(Inv_sqrt(cor), 8));
    for (int i = 0; i < kSubfr; ++i) {
        h[i] = mult(h[i], k);
        h_inv[i] = negate(h[i]);
    }

    // Energies: position 8 - 1 - i of track 4 - t uses h[0 .. 5 i + t].
    cor = 0x00010000L;
    const Word16* ph = h;
    for (int i = 0; i < kPos; ++i)
        for (int t = kTracks - 1; t >= 0; --t) {
            cor = L_mac(cor, *ph, *ph);
            ++ph;
            rrixix[t][kPos - 1 - i] = extract_h(cor);
        }
    for (int t = 0; t < kTracks; ++t)
        for (int i = 0; i < kPos; ++i) rrixix[t][i] = shr(rrixix[t][i], 1);

    // Correlations of adjacent tracks, addressed as the reference does in
    // the contiguous [5][64] block (offset t * 64 + position).
    Word16* base = &rrixiy[0][0];
    const auto at = [](int t, int pos) { return t * kMsize + pos; };
    // Track pairs 0-1, 1-2, 2-3, 3-4 and 4-0 (offset 1).
    int pos = kMsize - 1;
    int hf = 1;
    for (int kk = 0; kk < kPos; ++kk) {
        int o4 = at(3, pos), o3 = at(2, pos), o2 = at(1, pos), o1 = at(0, pos), o0 = at(4, pos - kPos);
        cor = 0x00008000L;
        int n1 = 0, n2 = hf;
        for (int i = kk + 1; i < kPos; ++i) {
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o4] = extract_h(cor);
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o3] = extract_h(cor);
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o2] = extract_h(cor);
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o1] = extract_h(cor);
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o0] = extract_h(cor);
            o4 -= kPos + 1;
            o3 -= kPos + 1;
            o2 -= kPos + 1;
            o1 -= kPos + 1;
            o0 -= kPos + 1;
        }
        cor = L_mac(cor, h[n1++], h[n2++]);
        base[o4] = extract_h(cor);
        cor = L_mac(cor, h[n1++], h[n2++]);
        base[o3] = extract_h(cor);
        cor = L_mac(cor, h[n1++], h[n2++]);
        base[o2] = extract_h(cor);
        cor = L_mac(cor, h[n1++], h[n2++]);
        base[o1] = extract_h(cor);
        pos -= kPos;
        hf += kStep;
    }
    // The same pairs with offset 4.
    pos = kMsize - 1;
    hf = 4;
    for (int kk = 0; kk < kPos; ++kk) {
        int o4 = at(4, pos), o3 = at(3, pos - 1), o2 = at(2, pos - 1), o1 = at(1, pos - 1), o0 = at(0, pos - 1);
        cor = 0x00008000L;
        int n1 = 0, n2 = hf;
        for (int i = kk + 1; i < kPos; ++i) {
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o4] = extract_h(cor);
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o3] = extract_h(cor);
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o2] = extract_h(cor);
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o1] = extract_h(cor);
            cor = L_mac(cor, h[n1++], h[n2++]);
            base[o0] = extract_h(cor);
            o4 -= kPos + 1;
            o3 -= kPos + 1;
            o2 -= kPos + 1;
            o1 -= kPos + 1;
            o0 -= kPos + 1;
        }
        cor = L_mac(cor, h[n1++], h[n2++]);
        base[o4] = extract_h(cor);
        --pos;
        hf += kStep;
    }
    // Signs.
    for (int t = 0; t < kTracks; ++t) {
        Word16* p = rrixiy[t];
        for (int i = t; i < kSubfr; i += kStep) {
            const Word16* ps = sign[i] < 0 ? inv_sign : sign;
            for (int j = (t + 1) % kTracks; j < kSubfr; j += kStep) {
                *p = mult(*p, ps[j]);
                ++p;
            }
        }
    }
}

/// cor_h_vec: correlation of the fixed pulses' response vec with h at every
/// position of a track, signed, plus the position's energy.
void cor_h_vec(const Word16* h, const Word16* vec, int track, const Word16* sign, Word16 (*rrixix)[kPos],
               Word16* cor) {
    for (int i = 0, pos = track; i < kPos; ++i, pos += kStep) {
        Word32 s = 0;
        for (int j = pos, n = 0; j < kSubfr; ++j, ++n) s = L_mac(s, h[n], vec[j]);
        cor[i] = add(mult(round_fx(s), sign[pos]), rrixix[track][i]);
    }
}

/// search_ixiy: the best pair of positions on tracks tx, ty given the
/// correlation ps and energy alp of the pulses fixed so far.
void search_ixiy(int tx, int ty, Word16& ps, Word16& alp, Word16& ix, Word16& iy, const Word16* dn,
                 const Word16* cor_x, const Word16* cor_y, Word16 (*rrixiy)[kMsize]) {
    const Word16* p2 = rrixiy[tx];
    Word16 sqk = -1, alpk = 1;
    int xi = 0;
    for (int x = tx; x < kSubfr; x += kStep, ++xi) {
        const Word16 ps1 = add(ps, dn[x]);
        const Word16 alp1 = add(alp, cor_x[xi]);
        int pos = -1;
        int yi = 0;
        for (int y = ty; y < kSubfr; y += kStep, ++yi) {
            const Word16 ps2 = add(ps1, dn[y]);
            const Word16 alp2 = add(alp1, add(cor_y[yi], *p2++));
            const Word16 sq = mult(ps2, ps2);
            const Word32 s = L_msu(L_mult(alpk, sq), sqk, alp2);
            if (s > 0) {
                sqk = sq;
                alpk = alp2;
                pos = y;
            }
        }
        if (pos >= 0) {
            ix = static_cast<Word16>(x);
            iy = static_cast<Word16>(pos);
        }
    }
    ps = add(ps, add(dn[ix], dn[iy]));
    alp = alpk;
}

/// build_code: codeword, filtered codeword (with Hs = H in Q11) and the
/// per-track codes of nb pulses (two pulses of a track share a code).
void build_code(const Word16* codvec, const Word16* sign, int nb, const Word16* Hs, Word16* code, Word16* y,
                Word16* indx) {
    std::memset(code, 0, kSubfr * sizeof(Word16));
    std::memset(y, 0, kSubfr * sizeof(Word16));
    for (int i = 0; i < kTracks; ++i) indx[i] = -1;
    for (int k = 0; k < nb; ++k) {
        const int i = codvec[k];
        Word16 index = mult(static_cast<Word16>(i), kOneFifth);
        const Word16 track = sub(static_cast<Word16>(i), extract_l(L_shr(L_mult(index, 5), 1)));
        if (sign[i] > 0) {
            code[i] = add(code[i], 4096);
            for (int n = i, j = 0; n < kSubfr; ++n, ++j) y[n] = add(y[n], Hs[j]);
        } else {
            code[i] = sub(code[i], 4096);
            index = add(index, 8);
            for (int n = i, j = 0; n < kSubfr; ++n, ++j) y[n] = sub(y[n], Hs[j]);
        }
        Word16& t = indx[track];
        if (t < 0) {
            t = index;
        } else if (((index ^ t) & 8) == 0) {
            t = sub(t, index) <= 0 ? static_cast<Word16>(add(shl(t, 4), index) | 256)
                                   : static_cast<Word16>(add(shl(index, 4), t) | 256);
        } else {
            t = sub(static_cast<Word16>(t & 7), static_cast<Word16>(index & 7)) <= 0
                    ? static_cast<Word16>(add(shl(index, 4), t) | 256)
                    : static_cast<Word16>(add(shl(t, 4), index) | 256);
        }
    }
}

/// pack3: the 10-bit code of three pulses of one track.
Word16 pack3(Word16 i1, Word16 i2, Word16 i3) {
    if ((i1 & 7) > (i2 & 7)) std::swap(i1, i2);
    if ((i1 & 7) > (i3 & 7)) std::swap(i1, i3);
    if ((i2 & 7) > (i3 & 7)) std::swap(i2, i3);
    const Word16 k = add(add(static_cast<Word16>(shr(i1, 1) & 4), static_cast<Word16>(shr(i2, 2) & 2)),
                         static_cast<Word16>(shr(i3, 3) & 1));
    const auto code = [](Word16 a, Word16 b, Word16 c) {
        return add(add(shl(static_cast<Word16>(a & 7), 7), shl(static_cast<Word16>(b & 7), 4)), c);
    };
    switch (k) {
        case 0:
        case 7: return code(i1, i2, i3);
        case 1:
        case 6: return code(i3, i1, i2);
        case 2:
        case 5: return code(i2, i1, i3);
        default: return code(i2, i3, i1);
    }
}

/// The depth-first search shared by both codebooks: nb pulses (10 or 12)
/// in codvec.
void search(const Word16* x, const Word16* cn, const Word16* H, int nb, Word16* sign, Word16* codvec) {
    Word16 h_buf[4 * kSubfr] = {};
    Word16* h = h_buf + kSubfr;
    Word16* h_inv = h_buf + 3 * kSubfr;
    Word16 dn[kSubfr], inv_sign[kSubfr], vec[kSubfr], pos_max[kTracks];
    Word32 corr[kTracks];
    Word16 rrixix[kTracks][kPos], rrixiy[kTracks][kMsize];
    cor_h_x_e(H, x, dn);
    set_sign(cn, dn, sign, inv_sign, pos_max, corr);
    cor_h_e(H, sign, inv_sign, h, h_inv, rrixix, rrixiy);

    Word32 s = L_add(corr[4], corr[0]);
    for (int k = 0; k < kTracks - 1; ++k) corr[k] = L_add(corr[k], corr[k + 1]);
    corr[4] = s;
    int itrk[3];
    for (int k = 0; k < 3; ++k) {
        s = corr[0];
        int track = 0;
        for (int i = 1; i < kTracks; ++i)
            if (L_sub(corr[i], s) > 0) {
                s = corr[i];
                track = i;
            }
        corr[track] = -1;
        itrk[k] = track;
    }

    Word16 psk = -1, alpk = 1;
    for (int p = 0; p < 3; ++p) {
        const int k = itrk[p];
        Word16 ix = pos_max[kIpos[k]], iy = pos_max[kIpos[k + 1]];
        Word16 ps = add(dn[ix], dn[iy]);
        Word16 i = mult(ix, kOneFifth), j = mult(iy, kOneFifth);
        Word16 alp = add(rrixix[kIpos[k]][i], rrixix[kIpos[k + 1]][j]);
        alp = add(alp, rrixiy[kIpos[k]][add(shl(i, 3), j)]);
        Word16 ip[12];
        ip[0] = ix;
        ip[1] = iy;
        std::memset(vec, 0, sizeof vec);
        for (int jj = 2; jj < nb; jj += 2) {
            const Word16* p0 = (sign[ix] < 0 ? h_inv : h) - ix;
            const Word16* p1 = (sign[iy] < 0 ? h_inv : h) - iy;
            for (int n = 0; n < kSubfr; ++n) vec[n] = add(vec[n], add(p0[n], p1[n]));
            Word16 cor_x[kPos], cor_y[kPos];
            cor_h_vec(h, vec, kIpos[k + jj], sign, rrixix, cor_x);
            cor_h_vec(h, vec, kIpos[k + jj + 1], sign, rrixix, cor_y);
            search_ixiy(kIpos[k + jj], kIpos[k + jj + 1], ps, alp, ix, iy, dn, cor_x, cor_y, rrixiy);
            ip[jj] = ix;
            ip[jj + 1] = iy;
        }
        ps = mult(ps, ps);
        s = L_msu(L_mult(alpk, ps), psk, alp);
        if (s > 0) {
            psk = ps;
            alpk = alp;
            std::memcpy(codvec, ip, nb * sizeof(Word16));
        }
    }
}

}  // namespace

ZepStatus zepsFixedCodebookSearch_G729E_16s(const Zep16s* pSrcFixedTarget, const Zep16s* pSrcLtpResidual,
                                            const Zep16s* pSrcImpulseResponse, Zep16s* pDstFixedVector,
                                            Zep16s* pDstFltFixedVector, Zep16s* pDstIdx, Zep16s mode) {
    if (any_null(pSrcFixedTarget, pSrcLtpResidual, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector,
                 pDstIdx))
        return zepStsNullPtrErr;
    if (mode != 0 && mode != 1) return zepStsRangeErr;
    const int nb = mode == 0 ? 10 : 12;
    Word16 sign[kSubfr], codvec[12] = {};
    search(pSrcFixedTarget, pSrcLtpResidual, pSrcImpulseResponse, nb, sign, codvec);

    Word16 hs[kSubfr], code[kSubfr], y[kSubfr], idx[kTracks], out[kTracks];
    for (int i = 0; i < kSubfr; ++i) hs[i] = shr(pSrcImpulseResponse[i], 1);  // Q12 -> Q11
    if (mode == 0) {
        build_code(codvec, sign, 10, hs, code, y, idx);
        for (int i = 0; i < kTracks; ++i) out[i] = static_cast<Word16>(idx[i] & 127);
    } else {
        build_code(codvec + 2, sign, 10, hs, code, y, idx);
        Word16 track = 0;
        for (int k = 0; k < 2; ++k) {
            const int pos = codvec[k];
            Word16 index = mult(static_cast<Word16>(pos), kOneFifth);
            track = sub(static_cast<Word16>(pos), extract_l(L_shr(L_mult(index, 5), 1)));
            if (sign[pos] > 0) {
                code[pos] = add(code[pos], 4096);
                for (int n = pos, j = 0; n < kSubfr; ++n, ++j) y[n] = add(y[n], hs[j]);
            } else {
                code[pos] = sub(code[pos], 4096);
                for (int n = pos, j = 0; n < kSubfr; ++n, ++j) y[n] = sub(y[n], hs[j]);
                index = add(index, 8);
            }
            const Word16 ix = shr(idx[track], 4) & 15, iy = idx[track] & 15;
            index = pack3(ix, iy, index);
            if (k == 0) index = add(shl(track, 10), index);
            out[k] = index;
        }
        for (int k = 2; k < kTracks; ++k) {
            track = add(track, 1);
            if (track >= kTracks) track = 0;
            out[k] = static_cast<Word16>(idx[track] & 127);
        }
    }
    std::memcpy(pDstFixedVector, code, sizeof code);
    std::memcpy(pDstFltFixedVector, y, sizeof y);
    std::memcpy(pDstIdx, out, sizeof out);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

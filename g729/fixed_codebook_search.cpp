// SPDX-License-Identifier: BSD-3-Clause
// G.729 main-body fixed-codebook search (ITU-T G.729 3.8, ACELP_Codebook
// with Cor_h, Cor_h_X and D4i40_17): four nested pulse loops over the
// tracks {0,5,..35}, {1,6,..36}, {2,7,..37}, {3,8,..38 / 4,9,..39}, the
// fourth entered only when the first three correlations exceed a threshold
// (40 % of the way from their average to their maximum), at most 75 + 30
// entries over the two subframes of a frame (the budget left by subframe 0
// carries to subframe 1). Impulse response Q12, target Q0, codeword Q13,
// filtered codeword Q12.
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/acelp_kernels.h"
#include "g729/acelp_simd.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

constexpr Word16 kThreshFcb = 13107;  // THRESHFCB, 0.4
constexpr Word16 kMaxTime = 75;       // MAX_TIME

/// D4i40_17: the four pulse positions and signs; returns the 13-bit
/// position code, writes the codeword, its filtered form and the sign code;
/// extra is the search budget carried between subframes.
Word16 d4i40_17(Word16* dn, RR& rr, const Word16* h, Word16* cod, Word16* y, Word16& sign, Word16& extra) {
    Word16 p_sign[kSubfr];
    for (int i = 0; i < kSubfr; ++i) {
        if (dn[i] >= 0) {
            p_sign[i] = 0x7fff;
        } else {
            p_sign[i] = static_cast<Word16>(0x8000);
            dn[i] = negate(dn[i]);
        }
    }
    Word16 max0 = dn[0], max1 = dn[1], max2 = dn[2];
    for (int i = 5; i < kSubfr; i += kStep) {
        if (dn[i] > max0) max0 = dn[i];
        if (dn[i + 1] > max1) max1 = dn[i + 1];
        if (dn[i + 2] > max2) max2 = dn[i + 2];
    }
    max0 = add(add(max0, max1), max2);
    Word32 L32 = 0;
    for (int i = 0; i < kSubfr; i += kStep) {
        L32 = L_mac(L32, dn[i], 1);
        L32 = L_mac(L32, dn[i + 1], 1);
        L32 = L_mac(L32, dn[i + 2], 1);
    }
    const Word16 average = extract_l(L_shr(L32, 4));
    const Word16 thres = add(mult(sub(max0, average), kThreshFcb), average);

    // Signs into the cross blocks: entry (i, j) of block (a, b) times
    // mult(sign of position i of track a, sign of position j of track b).
    // A sign is 0x7fff or 0x8000: the products for either first sign are
    // set up once per track.
    {
        Word16 gp[kStep][kNbPos], gn[kStep][kNbPos];
        for (int t = 1; t < kStep; ++t)
            for (int k = 0; k < kNbPos; ++k) {
                gp[t][k] = mult(0x7fff, p_sign[t + kStep * k]);
                gn[t][k] = mult(static_cast<Word16>(0x8000), p_sign[t + kStep * k]);
            }
        auto fold = [&](Word16* block, int ta, int tb) {
            for (int r = 0; r < kNbPos; ++r)
                mult8(block + kNbPos * r, p_sign[ta + kStep * r] > 0 ? gp[tb] : gn[tb]);
        };
        fold(rr.i0i1(), 0, 1);
        fold(rr.i0i2(), 0, 2);
        fold(rr.i0i3(), 0, 3);
        fold(rr.i0i4(), 0, 4);
        fold(rr.i1i2(), 1, 2);
        fold(rr.i1i3(), 1, 3);
        fold(rr.i1i4(), 1, 4);
        fold(rr.i2i3(), 2, 3);
        fold(rr.i2i4(), 2, 4);
    }

    Word16 ip0 = 0, ip1 = 1, ip2 = 2, ip3 = 3, psc = 0, alpha = MAX_16;
    Word16 time = add(kMaxTime, extra);
    // dn at the positions of tracks 3 and 4, for the eight-wide fourth pulse.
    Word16 dn3[kNbPos], dn4[kNbPos];
    for (int k = 0; k < kNbPos; ++k) {
        dn3[k] = dn[3 + kStep * k];
        dn4[k] = dn[4 + kStep * k];
    }
    // The fourth pulse on one track (first position first): keep a candidate
    // when ps3^2/alp3 beats the best so far.
    auto fourth_track = [&](Word16 ps2, Word32 alp2, const Word16* dn8, const Word16* rd, const Word16* r0,
                            const Word16* r1, const Word16* r2, int i0, int i1, int i2, int first) {
        Word16 sq[kNbPos], al[kNbPos];
        fourth_pulse(ps2, alp2, dn8, rd, r0, r1, r2, sq, al);
        for (int k = 0; k < kNbPos; ++k)
            if (L_msu(L_mult(sq[k], alpha), psc, al[k]) > 0) {
                psc = sq[k];
                alpha = al[k];
                ip0 = static_cast<Word16>(i0);
                ip1 = static_cast<Word16>(i1);
                ip2 = static_cast<Word16>(i2);
                ip3 = static_cast<Word16>(first + kStep * k);
            }
    };
    const Word16 *r00 = rr.i0i0(), *r01 = rr.i0i1(), *r02 = rr.i0i2(), *r03 = rr.i0i3(), *r04 = rr.i0i4();
    for (int i0 = 0; i0 < kSubfr; i0 += kStep) {
        const Word16 ps0 = dn[i0];
        const Word16 alp0 = *r00++;
        const Word16 *r11 = rr.i1i1(), *r12 = rr.i1i2(), *r13 = rr.i1i3(), *r14 = rr.i1i4();
        for (int i1 = 1; i1 < kSubfr; i1 += kStep) {
            const Word16 ps1 = add(ps0, dn[i1]);
            Word32 alp1 = L_mult(alp0, 1);
            alp1 = L_mac(alp1, *r11++, 1);
            alp1 = L_mac(alp1, *r01++, 2);
            const Word16 *r22 = rr.i2i2(), *r23 = rr.i2i3(), *r24 = rr.i2i4();
            for (int i2 = 2; i2 < kSubfr; i2 += kStep) {
                const Word16 ps2 = add(ps1, dn[i2]);
                Word32 alp2 = L_mac(alp1, *r22++, 1);
                alp2 = L_mac(alp2, *r02++, 2);
                alp2 = L_mac(alp2, *r12++, 2);
                if (ps2 > thres) {
                    fourth_track(ps2, alp2, dn3, rr.i3i3(), r03, r13, r23, i0, i1, i2, 3);
                    fourth_track(ps2, alp2, dn4, rr.i4i4(), r04, r14, r24, i0, i1, i2, 4);
                    time = sub(time, 1);
                    if (time <= 0) goto end_search;
                }
                r23 += kNbPos;
                r24 += kNbPos;
            }
            r02 -= kNbPos;
            r13 += kNbPos;
            r14 += kNbPos;
        }
        r02 += kNbPos;
        r03 += kNbPos;
        r04 += kNbPos;
    }
end_search:
    extra = time;

    const Word16 s0 = p_sign[ip0], s1 = p_sign[ip1], s2 = p_sign[ip2], s3 = p_sign[ip3];
    std::memset(cod, 0, kSubfr * sizeof(Word16));
    cod[ip0] = shr(s0, 2);
    cod[ip1] = shr(s1, 2);
    cod[ip2] = shr(s2, 2);
    cod[ip3] = shr(s3, 2);
    std::memset(y, 0, kSubfr * sizeof(Word16));
    const Word16 ips[4] = {ip0, ip1, ip2, ip3};
    const Word16 sgs[4] = {s0, s1, s2, s3};
    for (int k = 0; k < 4; ++k)
        for (int i = ips[k], j = 0; i < kSubfr; ++i, ++j) y[i] = sgs[k] > 0 ? add(y[i], h[j]) : sub(y[i], h[j]);
    sign = static_cast<Word16>((s0 > 0 ? 1 : 0) + (s1 > 0 ? 2 : 0) + (s2 > 0 ? 4 : 0) + (s3 > 0 ? 8 : 0));
    const Word16 q0 = mult(ip0, 6554), q1 = mult(ip1, 6554), q2 = mult(ip2, 6554), q = mult(ip3, 6554);
    const Word16 j = sub(ip3, add(add(q, shl(q, 2)), 3));
    const Word16 q3 = add(shl(q, 1), j);
    return add(add(add(q0, shl(q1, 3)), shl(q2, 6)), shl(q3, 9));
}

}  // namespace

ZepStatus zepsFixedCodebookSearch_G729_16s(const Zep16s* pSrcFixedTarget, const Zep16s* pSrcImpulseResponse,
                                           Zep16s lag, Zep16s sharp, Zep16s subframe, Zep16s* pSrcDstBudget,
                                           Zep16s* pDstFixedVector, Zep16s* pDstFltFixedVector, Zep16s* pDstIndex) {
    if (any_null(pSrcFixedTarget, pSrcImpulseResponse, pSrcDstBudget, pDstFixedVector, pDstFltFixedVector, pDstIndex))
        return zepStsNullPtrErr;
    if (lag < 1 || !in_range<Word16>(subframe, 0, 1)) return zepStsRangeErr;
    Word16 extra = subframe == 0 ? Word16{30} : *pSrcDstBudget;
    if (!in_range<Word16>(extra, -32768 + kMaxTime, 32767 - kMaxTime)) return zepStsRangeErr;
    const Word16 beta = shl(sharp, 1);
    Word16 h[kSubfr];
    std::memcpy(h, pSrcImpulseResponse, sizeof h);
    for (int i = lag; i < kSubfr; ++i) h[i] = add(h[i], mult(h[i - lag], beta));
    RR rr;
    cor_h(h, rr);
    Word16 dn[kSubfr];
    cor_h_x(h, pSrcFixedTarget, dn);
    Word16 code[kSubfr], y[kSubfr], sign = 0;
    const Word16 index = d4i40_17(dn, rr, h, code, y, sign, extra);
    for (int i = lag; i < kSubfr; ++i) code[i] = add(code[i], mult(code[i - lag], beta));
    std::memcpy(pDstFixedVector, code, sizeof code);
    std::memcpy(pDstFltFixedVector, y, sizeof y);
    pDstIndex[0] = index;
    pDstIndex[1] = sign;
    *pSrcDstBudget = extra;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

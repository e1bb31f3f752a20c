// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex A fast fixed-codebook search (ITU-T G.729 Annex A A.3.8,
// ACELP_Code_A with Cor_h, Cor_h_X and D4i40_17_fast): four pulses on the
// tracks {0,5,..35}, {1,6,..36}, {2,7,..37}, {3,8,..38 / 4,9,..39}; the
// signs follow the backward-filtered target; a depth-first search over the
// two track-3/4 choices, each starting from the two largest correlations of
// one track. Impulse response Q12, target Q0, codeword Q13, filtered
// codeword Q12.
#include <bit>
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "g729/acelp_kernels.h"
#include "g729/acelp_simd.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

/// The best of the candidates so far: keep (sq2, alp2) when sq2/alp2 > sq/alp.
inline bool better(Word16 sq2, Word16 alp2, Word16 sq, Word16 alp) { return fcb_better(sq2, alp2, sq, alp); }

/// round_fx(L_mac(L_mac(L_mult(a, 1/4), b, 1/4), c, 1/8)): the sum lies
/// within +-(2^30 + 2^28), so neither the chain nor the rounding saturates.
constexpr Word16 third_row(Word16 a, Word16 b, Word16 c) {
    return static_cast<Word16>((16384 * (Word32{a} + b) + 8192 * Word32{c} + 32768) >> 16);
}

/// Against the reference's operators at every corner of its range.
constexpr bool plain_sums_hold() {
    constexpr Word16 ends[2] = {MIN_16, MAX_16};
    for (Word16 a : ends)
        for (Word16 b : ends)
            for (Word16 c : ends)
                if (third_row(a, b, c) != round_fx(L_mac(L_mac(L_mult(a, k1_4), b, k1_4), c, k1_8))) return false;
    return true;
}
static_assert(plain_sums_hold());

/// The first of the candidates from..7 that improves on (sq, alp), 8 when
/// none does. The reference's choice keeps the best so far over the
/// candidates in order; it changes only at such a first improvement, so
/// stepping from one to the next makes the same choice. sq >= -1 and every
/// sq8[k] is a square: the lane test applies.
inline int next_better(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp, int from) {
    const unsigned m = better_mask8(sq8, alp8, sq, alp) >> from;
    return m == 0 ? kNbPos : from + std::countr_zero(m);
}

/// D4i40_17_fast: the four pulse positions and signs; returns the 13-bit
/// position code, writes the codeword, its filtered form and the sign code.
Word16 d4i40_17_fast(Word16* dn, RR& rr, const Word16* h, Word16* cod, Word16* y, Word16& sign) {
    Word16 sign_dn[kSubfr], sign_dn_inv[kSubfr];
    target_signs(dn, sign_dn, sign_dn_inv);
    // Signs into the cross blocks: row i of block (a, b) times the signs of
    // track b (or their opposites when position i of track a is negative),
    // the signs as masks (-1 for MIN_16).
    {
        Word16 sg[kStep][kNbPos], sgi[kStep][kNbPos];
        for (int t = 1; t < kStep; ++t)
            for (int k = 0; k < kNbPos; ++k) {
                sg[t][k] = sign_dn[t + kStep * k] < 0 ? Word16{-1} : Word16{0};
                sgi[t][k] = static_cast<Word16>(~sg[t][k]);
            }
        auto fold = [&](Word16* block, int ta, int tb) {
            for (int r = 0; r < kNbPos; ++r)
                fold8(block + kNbPos * r, sign_dn[ta + kStep * r] < 0 ? sgi[tb] : sg[tb]);
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

    // dn at the positions of each track, for the eight-wide candidates, and
    // the largest magnitude of each row of the blocks the last pair reads.
    Word16 dnt[kStep][kNbPos], tmp_vect[kNbPos];
    for (int t = 0; t < kStep; ++t)
        for (int k = 0; k < kNbPos; ++k) dnt[t][k] = dn[t + kStep * k];
    const Word16* dn1 = dnt[1];
    const Word16* dn2 = dnt[2];
    std::int32_t max01[kNbPos], max12[kNbPos];
    for (int r = 0; r < kNbPos; ++r) {
        max01[r] = max_abs8(rr.i0i1() + kNbPos * r);
        max12[r] = max_abs8(rr.i1i2() + kNbPos * r);
    }
    // The first pair: pulse i0 with each position of a track (dn8, cross
    // correlations t, diagonal d), the best kept in position order.
    auto first_pair = [&](Word16 i0, Word16 r0, const Word16* dn8, const Word16* t, const Word16* d, int first,
                          Word16& sq, Word16& alp, Word16& ps, Word16& ix, Word16& iy) {
        Word16 ps8[kNbPos], sq8[kNbPos], alp8[kNbPos];
        first_pair_a(dn[i0], r0, dn8, t, d, ps8, sq8, alp8);
        for (int k = next_better(sq8, alp8, sq, alp, 0); k < kNbPos; k = next_better(sq8, alp8, sq, alp, k + 1)) {
            sq = sq8[k];
            ps = ps8[k];
            alp = alp8[k];
            ix = i0;
            iy = static_cast<Word16>(first + kStep * k);
        }
    };
    auto last_pair = [&](Word16 ps1, Word32 alp1, const Word16* dn8, const Word16* row, bool fits, int i2, int first,
                         Word16& sq, Word16& alp, Word16& ix, Word16& iy) {
        Word16 sq8[kNbPos], alp8[kNbPos];
        pair_pulse_a_fit(ps1, alp1, dn8, row, tmp_vect, fits, sq8, alp8);
        for (int k = next_better(sq8, alp8, sq, alp, 0); k < kNbPos; k = next_better(sq8, alp8, sq, alp, k + 1)) {
            sq = sq8[k];
            alp = alp8[k];
            ix = static_cast<Word16>(i2);
            iy = static_cast<Word16>(first + kStep * k);
        }
    };
    Word16 psk = -1, alpk = 1;
    Word16* ptr_rri0i3_i4 = rr.i0i3();
    Word16* ptr_rri1i3_i4 = rr.i1i3();
    Word16* ptr_rri2i3_i4 = rr.i2i3();
    Word16* ptr_rri3i3_i4 = rr.i3i3();
    Word16 ip0 = 0, ip1 = 1, ip2 = 2, ip3 = 3, ix = 0, iy = 0, ps = 0;
    for (int track = 3; track < 5; ++track) {
        // Pulses in tracks 2 and 3/4 first, then tracks 0 and 1.
        // The two largest dn of track 2 (the first of equal ones first).
        Word16 sq = -1, alp = 1;
        for (int i = 0, skip = -1; i < 2; ++i) {
            skip = first_max8(dnt[2], skip);
            const auto i0 = static_cast<Word16>(2 + kStep * skip);
            const auto j = static_cast<Word16>(skip);
            first_pair(i0, rr.i2i2()[j], dnt[track], ptr_rri2i3_i4 + shl(j, 3), ptr_rri3i3_i4, track, sq, alp, ps,
                       ix, iy);
        }
        Word16 i0b = ix, i1b = iy;
        Word16 ps0 = ps;
        Word32 alp0 = L_mult(alp, k1_4);
        sq = -1;
        alp = 1;
        {
            const Word16* p0 = rr.i1i2() + mult(i0b, 6554);
            const Word16* p1 = ptr_rri1i3_i4 + mult(i1b, 6554);
            const Word16* p2 = rr.i1i1();
            Word16* p3 = tmp_vect;
            for (int i3 = 1; i3 < kSubfr; i3 += kStep) {
                *p3++ = third_row(*p0, *p1, *p2++);
                p0 += kNbPos;
                p1 += kNbPos;
            }
            // Columns i0b of the track-0 / track-2 block and i1b of the
            // track-0 / track-3|4 block, then all eight rows' sums at once.
            const Word16* c02 = rr.i0i2() + mult(i0b, 6554);
            const Word16* c03 = ptr_rri0i3_i4 + mult(i1b, 6554);
            Word16 ca[kNbPos], cb[kNbPos], ps1[kNbPos];
            Word32 alp1[kNbPos];
            for (int r = 0; r < kNbPos; ++r) {
                ca[r] = c02[kNbPos * r];
                cb[r] = c03[kNbPos * r];
            }
            pair_rows_a(ps0, alp0, dnt[0], ca, cb, rr.i0i0(), ps1, alp1);
            const unsigned fits = pair_lanes_fit8(alp1, max01, max_abs8(tmp_vect));
            for (int r = 0; r < kNbPos; ++r)
                last_pair(ps1[r], alp1[r], dn1, rr.i0i1() + kNbPos * r, (fits >> r) & 1u, kStep * r, 1, sq, alp, ix, iy);
        }
        if (better(sq, alp, psk, alpk)) {
            psk = sq;
            alpk = alp;
            ip2 = i0b;
            ip3 = i1b;
            ip0 = ix;
            ip1 = iy;
        }

        // Pulses in tracks 3/4 and 0 first, then tracks 1 and 2.
        sq = -1;
        alp = 1;
        for (int i = 0, skip = -1; i < 2; ++i) {
            skip = first_max8(dnt[track], skip);
            const auto i0 = static_cast<Word16>(track + kStep * skip);
            const auto j = static_cast<Word16>(skip);
            Word16 col[kNbPos];  // column j of the track-0 / track-3|4 block
            for (int k = 0; k < kNbPos; ++k) col[k] = ptr_rri0i3_i4[j + kNbPos * k];
            first_pair(i0, ptr_rri3i3_i4[j], dnt[0], col, rr.i0i0(), 0, sq, alp, ps, ix, iy);
        }
        i0b = ix;
        i1b = iy;
        const Word16 i1_offset = shl(mult(i1b, 6554), 3);
        ps0 = ps;
        alp0 = L_mult(alp, k1_4);
        sq = -1;
        alp = 1;
        {
            // Column of the track-2 / track-3|4 block read by index: a pointer
            // stepping past the last row would leave the rr array.
            const Word16* col = ptr_rri2i3_i4 + mult(i0b, 6554);
            const Word16* p1 = rr.i0i2() + i1_offset;
            const Word16* p2 = rr.i2i2();
            for (int k = 0; k < kNbPos; ++k) tmp_vect[k] = third_row(col[k * kNbPos], *p1++, *p2++);
            // Column i0b of the track-1 / track-3|4 block, row i1b of the
            // track-0 / track-1 block, then all eight rows' sums at once.
            const Word16* c13 = ptr_rri1i3_i4 + mult(i0b, 6554);
            Word16 ca[kNbPos], ps1[kNbPos];
            Word32 alp1[kNbPos];
            for (int r = 0; r < kNbPos; ++r) ca[r] = c13[kNbPos * r];
            pair_rows_a(ps0, alp0, dnt[1], ca, rr.i0i1() + i1_offset, rr.i1i1(), ps1, alp1);
            const unsigned fits = pair_lanes_fit8(alp1, max12, max_abs8(tmp_vect));
            for (int r = 0; r < kNbPos; ++r)
                last_pair(ps1[r], alp1[r], dn2, rr.i1i2() + kNbPos * r, (fits >> r) & 1u, 1 + kStep * r, 2, sq, alp, ix,
                          iy);
        }
        if (better(sq, alp, psk, alpk)) {
            psk = sq;
            alpk = alp;
            ip3 = i0b;
            ip0 = i1b;
            ip1 = ix;
            ip2 = iy;
        }
        ptr_rri0i3_i4 = rr.i0i4();
        ptr_rri1i3_i4 = rr.i1i4();
        ptr_rri2i3_i4 = rr.i2i4();
        ptr_rri3i3_i4 = rr.i4i4();
    }

    const Word16 s0 = sign_dn[ip0], s1 = sign_dn[ip1], s2 = sign_dn[ip2], s3 = sign_dn[ip3];
    std::memset(cod, 0, kSubfr * sizeof(Word16));
    cod[ip0] = shr(s0, 2);
    cod[ip1] = shr(s1, 2);
    cod[ip2] = shr(s2, 2);
    cod[ip3] = shr(s3, 2);
    // y = +-h at ip0 (sub(0, h) is negate(h)), then the other three pulses.
    Word16 hz[2 * kSubfr] = {};
    std::memcpy(hz + kSubfr, h, kSubfr * sizeof(Word16));
    std::memset(y, 0, kSubfr * sizeof(Word16));
    const Word16 ips[4] = {ip0, ip1, ip2, ip3};
    const Word16 sgs[4] = {s0, s1, s2, s3};
    for (int k = 0; k < 4; ++k) add_pulse_response(y, hz, ips[k], sgs[k] > 0);
    sign = static_cast<Word16>((s0 > 0 ? 1 : 0) + (s1 > 0 ? 2 : 0) + (s2 > 0 ? 4 : 0) + (s3 > 0 ? 8 : 0));
    const Word16 q0 = mult(ip0, 6554), q1 = mult(ip1, 6554), q2 = mult(ip2, 6554), q = mult(ip3, 6554);
    const Word16 j = sub(ip3, add(add(q, shl(q, 2)), 3));
    const Word16 q3 = add(shl(q, 1), j);
    return add(add(add(q0, shl(q1, 3)), shl(q2, 6)), shl(q3, 9));
}

}  // namespace

ZepStatus zepsFixedCodebookSearch_G729A_16s(const Zep16s* pSrcFixedTarget, const Zep16s* pSrcImpulseResponse,
                                            Zep16s lag, Zep16s sharp, Zep16s* pDstFixedVector,
                                            Zep16s* pDstFltFixedVector, Zep16s* pDstIndex) {
    if (any_null(pSrcFixedTarget, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector, pDstIndex))
        return zepStsNullPtrErr;
    if (lag < 1) return zepStsRangeErr;
    const Word16 beta = shl(sharp, 1);
    Word16 h[kSubfr];
    std::memcpy(h, pSrcImpulseResponse, sizeof h);
    for (int i = lag; i < kSubfr; ++i) h[i] = add(h[i], mult(h[i - lag], beta));
    RR rr;
    cor_h(h, rr);
    Word16 dn[kSubfr];
    cor_h_x(h, pSrcFixedTarget, dn);
    Word16 code[kSubfr], y[kSubfr], sign = 0;
    const Word16 index = d4i40_17_fast(dn, rr, h, code, y, sign);
    for (int i = lag; i < kSubfr; ++i) code[i] = add(code[i], mult(code[i - lag], beta));
    std::memcpy(pDstFixedVector, code, sizeof code);
    std::memcpy(pDstFltFixedVector, y, sizeof y);
    pDstIndex[0] = index;
    pDstIndex[1] = sign;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

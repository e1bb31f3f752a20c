// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR algebraic codebooks of 8 and 10 pulses (3GPP TS 26.073
// c8_31pf.c MR102, c1035pf.c MR122, s10_8pf.c search_10and8i40): signs
// from set_sign12k2, the pulse-pair search over the track orders, the
// pulse indices (MR102 compressed 3-pulse words, MR122 Gray-coded) and the
// filtered code. Target Q0, LTP residual Q0, impulse response Q12; pulses
// +-8191 (MR102, Q13) or +-4096 (MR122, Q12), filtered code Q12.
#include <cstdint>

#include "amr/amr_cb_tables.h"
#include "amr/cb_candidates.h"
#include "amr/cb_correlation.h"
#include "amr/cb_search.h"
#include "amr/cb_sign.h"

ZEPS_BEGIN_VARIANT
namespace amr_cb {
namespace {

/// One pulse-pair level of search_10and8i40: the fixed pulses' cross terms
/// with the second pulse's track in rrv[], then the best pair (ia, ib).
struct PairLevel {
    Word16 sq = -1, alp = 1, ps = 0;
    int ia, ib;
};

/// The sequential choice over the candidates c of the second pulse (first
/// pulse at i2) once some of them improves on the best: the first of the
/// greatest ratio sq / alp where every alp is positive (an exact reading of
/// the reference's loop there), the loop itself otherwise.
[[gnu::always_inline]] inline void take_best(const Candidates& c, int count, int i2, int tb, int step, PairLevel& best) {
    int w = best.alp > 0 ? first_greatest_ratio(c, count) : -1;
    if (w < 0) w = sequential_choice(c, 0, count, best.sq, best.alp);
    if (w < 0) return;
    best.sq = c.sq[w];
    best.ps = c.ps[w];
    best.alp = c.alp[w];
    best.ia = i2;
    best.ib = tb + step * w;
}

/// Search one pair of tracks (ta, tb) given the pulses fixed so far. alp0
/// carries their energy; the shifts are the reference's fractions of each
/// term (L_mult(v, 2^(shift - 1))): rrv[] = the fixed pulses' cross terms
/// with track tb, then for each position of ta its cross terms, then the
/// pairs.
PairLevel search_pair(const TrackMatrix& tm, const Word16* fixed, int nfixed, Word16 ps0, Word32 alp0, int ta, int tb,
                      int rrv_diag, int rrv_cross, int alp_diag, int alp_cross, int pair_rrv, int pair_cross) {
    const int step = tm.step;
    const int count = step == 4 ? 10 : 8;  // positions on a track of step 4 or 5
    const Strided dnb = tm.dn_track(tb);
    Term terms[10];
    terms[0] = {tm.diagonal(tb), rrv_diag};
    for (int k = 0; k < nfixed; k++) terms[k + 1] = {tm.track(fixed[k], tb), rrv_cross};
    Candidates rrv{};
    evaluate_track(0, 0, dnb, terms, nfixed + 1, count, rrv);

    terms[0] = {tm.diagonal(ta), alp_diag};
    for (int k = 0; k < nfixed; k++) terms[k + 1] = {tm.track(fixed[k], ta), alp_cross};
    Sums first;
    track_sums(ps0, alp0, tm.dn_track(ta), terms, nfixed + 1, count, first);

    PairLevel best;
    best.ia = ta;
    best.ib = tb;
    const TrackWithFixedTerm second(dnb, {{rrv.alp, 1}, pair_rrv}, count);
    const bool exact = all_within(first.alp, count, second.exact_limit(pair_cross));
    for (int ka = 0; ka < count; ka++) {
        const int i2 = ta + step * ka;
        Candidates c;
        if (exact) {
            if (!second.improving(first.ps[ka], first.alp[ka], tm.track(i2, tb).p, pair_cross, best.sq, best.alp, c))
                continue;  // the best stays as it is
        } else {
            second.evaluate(first.ps[ka], first.alp[ka], {tm.track(i2, tb), pair_cross}, c);
            if (!any_improves(c, count, best.sq, best.alp)) continue;
        }
        take_best(c, count, i2, tb, step, best);
    }
    return best;
}

/// search_10and8i40: pulse 0 at the maximum of the best track, pulse 1 at
/// the maximum of each other track in turn, then pairs of pulses.
void search_10and8i40(int nbPulse, int step, int nbTracks, const Word16* dn, const CorrMatrix& rr, Word16* ipos,
                      const Word16* pos_max, Word16* codvec) {
    const bool tenPulses = nbPulse == 10;
    const TrackMatrix tm(rr, dn, step);
    const int i0 = pos_max[ipos[0]];
    Word16 psk = -1, alpk = 1;
    for (int i = 0; i < nbPulse; i++) codvec[i] = static_cast<Word16>(i);
    for (int t = 1; t < nbTracks; t++) {
        Word16 p[10];
        p[0] = static_cast<Word16>(i0);
        p[1] = pos_max[ipos[1]];
        const int i1 = p[1];
        Word16 ps0 = add(dn[i0], dn[i1]);
        Word32 alp0 = L_mult(rr[i0][i0], 2048);
        alp0 = L_mac(alp0, rr[i1][i1], 2048);
        alp0 = L_mac(alp0, rr[i0][i1], 4096);
        // pulses 2, 3
        PairLevel l = search_pair(tm, p, 2, ps0, alp0, ipos[2], ipos[3], 13, 14, 12, 13, 15, 13);
        p[2] = static_cast<Word16>(l.ia);
        p[3] = static_cast<Word16>(l.ib);
        // pulses 4, 5
        l = search_pair(tm, p, 4, l.ps, L_mult(l.alp, 16384), ipos[4], ipos[5], 13, 14, 11, 12, 14, 12);
        p[4] = static_cast<Word16>(l.ia);
        p[5] = static_cast<Word16>(l.ib);
        // pulses 6, 7
        l = search_pair(tm, p, 6, l.ps, L_mult(l.alp, 16384), ipos[6], ipos[7], 12, 13, 10, 11, 14, 11);
        p[6] = static_cast<Word16>(l.ia);
        p[7] = static_cast<Word16>(l.ib);
        if (tenPulses) {
            // pulses 8, 9
            l = search_pair(tm, p, 8, l.ps, L_mult(l.alp, 16384), ipos[8], ipos[9], 12, 13, 9, 10, 13,
                            10);
            p[8] = static_cast<Word16>(l.ia);
            p[9] = static_cast<Word16>(l.ib);
        }
        if (improves(l.sq, l.alp, psk, alpk)) {
            psk = l.sq;
            alpk = l.alp;
            for (int k = 0; k < nbPulse; k++) codvec[k] = p[k];
        }
        // cycle the track order of pulses 1 .. nbPulse-1
        const Word16 pos = ipos[1];
        for (int j = 1, k = 2; k < nbPulse; j++, k++) ipos[j] = ipos[k];
        ipos[nbPulse - 1] = pos;
    }
}

/// MR102 pulses, signs and the position indices of the two rows of 4 tracks.
void build_code_8i40(const Word16* codvec, const Word16* sign, Word16* cod, const PaddedResponse& h, Word16* y,
                     Word16* sign_indx, Word16* pos_indx) {
    constexpr int kTracks = 4;
    Word16 sgn[8];
    for (int i = 0; i < kLCode; i++) cod[i] = 0;
    for (int i = 0; i < kTracks; i++) pos_indx[i] = sign_indx[i] = -1;
    for (int k = 0; k < 8; k++) {
        const int i = codvec[k];
        const Word16 pos_index = static_cast<Word16>(i >> 2);
        const int track = i & 3;
        Word16 sign_index;
        if (sign[i] > 0) {
            cod[i] = add(cod[i], 8191);
            sgn[k] = 32767;
            sign_index = 0;
        } else {
            cod[i] = sub(cod[i], 8191);
            sgn[k] = MIN_16;
            sign_index = 1;
        }
        if (pos_indx[track] < 0) {
            pos_indx[track] = pos_index;
            sign_indx[track] = sign_index;
            continue;
        }
        // second pulse of the track: the order of the two positions carries the second sign
        const bool sameSign = ((sign_index ^ sign_indx[track]) & 1) == 0;
        const bool inOrder = pos_indx[track] <= pos_index;
        if (sameSign == inOrder) {
            pos_indx[track + kTracks] = pos_index;
        } else {
            pos_indx[track + kTracks] = pos_indx[track];
            pos_indx[track] = pos_index;
            sign_indx[track] = sign_index;
        }
    }
    filter_pulses(h, codvec, sgn, 8, y);
}

/// Three 3-level position indices in 10 bits (compress10).
Word16 compress10(Word16 a, Word16 b, Word16 c) {
    const Word16 hi = static_cast<Word16>((a >> 1) + (b >> 1) * 5 + (c >> 1) * 25);
    return static_cast<Word16>((hi << 3) + (a & 1) + ((b & 1) << 1) + ((c & 1) << 2));
}

/// compress_code: 4 sign bits, then the 8 positions in 10, 10 and 7 bits.
void compress_code(const Word16* sign_indx, const Word16* pos_indx, Word16* indx) {
    for (int i = 0; i < 4; i++) indx[i] = sign_indx[i];
    indx[4] = compress10(pos_indx[0], pos_indx[4], pos_indx[1]);
    indx[5] = compress10(pos_indx[2], pos_indx[6], pos_indx[5]);
    const Word16 ia = ((pos_indx[7] >> 1) & 1) == 1 ? static_cast<Word16>(4 - (pos_indx[3] >> 1))
                                                    : static_cast<Word16>(pos_indx[3] >> 1);
    const Word16 ib = static_cast<Word16>(((ia + (pos_indx[7] >> 1) * 5) << 5) + 12);
    const Word16 ic = static_cast<Word16>(mult(ib, 1311) << 2);
    indx[6] = static_cast<Word16>((pos_indx[3] & 1) + ((pos_indx[7] & 1) << 1) + ic);
}

/// MR122 pulses, filtered code and the signed position index of each
/// track's two pulses (sign bit 3 on the first, order carrying the second).
void build_code_10i40(const Word16* codvec, const Word16* sign, Word16* cod, const PaddedResponse& h, Word16* y,
                      Word16* indx) {
    Word16 sgn[10];
    for (int i = 0; i < kLCode; i++) cod[i] = 0;
    for (int i = 0; i < 5; i++) indx[i] = -1;
    for (int k = 0; k < 10; k++) {
        const int i = codvec[k];
        Word16 index = static_cast<Word16>(i / 5);
        const int track = i % 5;
        if (sign[i] > 0) {
            cod[i] = add(cod[i], 4096);
            sgn[k] = 8192;
        } else {
            cod[i] = sub(cod[i], 4096);
            sgn[k] = -8192;
            index = static_cast<Word16>(index + 8);
        }
        if (indx[track] < 0) {
            indx[track] = index;
            continue;
        }
        bool keepFirst;
        if (((index ^ indx[track]) & 8) == 0) {
            keepFirst = indx[track] <= index;
        } else {
            keepFirst = (indx[track] & 7) > (index & 7);
        }
        if (keepFirst) {
            indx[track + 5] = index;
        } else {
            indx[track + 5] = indx[track];
            indx[track] = index;
        }
    }
    filter_pulses(h, codvec, sgn, 10, y);
}

/// q_p: Gray coding of the position bits (the first five keep their sign bit).
void gray_code_positions(Word16* indx) {
    for (int n = 0; n < 10; n++) {
        const Word16 tmp = indx[n];
        indx[n] = n < 5 ? static_cast<Word16>((tmp & 8) | amr_cb_tab::gray[tmp & 7]) : amr_cb_tab::gray[tmp & 7];
    }
}

}  // namespace

void code_8i40_31bits(const Word16* x, const Word16* cn, const PaddedResponse& h, Word16* cod, Word16* y,
                      Word16* indx) {
    Word16 ipos[8], pos_max[4], codvec[8], dn[kLCode] = {}, sign[kLCode];
    CorrMatrix rr;
    cor_h_x2(h.h(), x, dn, 2, 4, 4);
    set_sign12k2(dn, cn, sign, pos_max, 4, ipos, 4);
    cor_h(h.h(), sign, rr);
    search_10and8i40(8, 4, 4, dn, rr, ipos, pos_max, codvec);
    Word16 sign_indx[4], pos_indx[8];
    build_code_8i40(codvec, sign, cod, h, y, sign_indx, pos_indx);
    compress_code(sign_indx, pos_indx, indx);
}

void code_10i40_35bits(const Word16* x, const Word16* cn, const PaddedResponse& h, Word16* cod, Word16* y,
                       Word16* indx) {
    Word16 ipos[10], pos_max[5], codvec[10], dn[kLCode] = {}, sign[kLCode];
    CorrMatrix rr;
    cor_h_x2(h.h(), x, dn, 2, 5, 5);
    set_sign12k2(dn, cn, sign, pos_max, 5, ipos, 5);
    cor_h(h.h(), sign, rr);
    search_10and8i40(10, 5, 5, dn, rr, ipos, pos_max, codvec);
    build_code_10i40(codvec, sign, cod, h, y, indx);
    gray_code_positions(indx);
}

}  // namespace amr_cb
ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR algebraic codebooks of 2 to 4 pulses (3GPP TS 26.073 c2_9pf.c
// MR475/MR515, c2_11pf.c MR59, c3_14pf.c MR67, c4_17pf.c MR74/MR795):
// pitch sharpening of the impulse response, sign preselection, depth-first
// position search (each track's 8 candidates evaluated together, see
// cb_candidates.h) and the index of the chosen pulses. The last pulse's
// choice is made only where it could replace the codevector
// (cb_last_choice.h), in every search here; search_3i40's track orders share their second pulses.
// Target Q0, impulse response Q12, pulses +8191/-8192 (Q13), filtered code Q12.
#include "amr/amr_cb_tables.h"
#include "amr/amr_dec_tables.h"
#include "amr/cb_candidates.h"
#include "amr/cb_correlation.h"
#include "amr/cb_last_choice.h"
#include "amr/cb_search.h"
#include "amr/cb_sign.h"

ZEPS_BEGIN_VARIANT
namespace amr_cb {
namespace {

// Fractions of the L_mac terms as shifts of L_mult: 1/2 -> 15, 1/4 -> 14, 1/8 -> 13, 1/16 -> 12.
constexpr Word16 k1_4 = 8192;

/// Running best of one search level: the candidate replaces the best when
/// sq1 / alp1 > sq / alp (cross-multiplied as the reference does).
struct Best {
    Word16 sq = -1, alp = 1, ps = 0;
    int ix = 0;
    Best() = default;  // a slot of SecondPulseMemo, written before it is read
    explicit Best(int first) : sq(-1), alp(1), ps(0), ix(first) {}
    /// The track's 8 candidates in position order (first, first + 5, ...),
    /// chosen from the start values (-1, 1).
    void choose(const Candidates& c, int first) {
        int w = first_greatest_ratio(c);
        if (w < 0) w = sequential_choice(c, 0, 8, sq, alp);
        if (w < 0) return;
        sq = c.sq[w];
        ps = c.ps[w];
        alp = c.alp[w];
        ix = first + 5 * w;
    }
};

/// The diagonal and a row of rr[][] along the track starting at first.
Strided diagonal(const CorrMatrix& rr, int first) { return {&rr[first][first], 5 * (kLCode + 1)}; }
Strided row(const CorrMatrix& rr, int i, int first) { return {&rr[i][first], 5}; }

/// The codevector of the whole search (psk / alpk).
struct Chosen {
    Word16 psk = -1, alpk = 1;
    bool may_improve(const Candidates& cand) const { return last_choice_may_improve(cand, 8, psk, alpk); }
    bool better(Word16 sq, Word16 alp) {
        if (improves(sq, alp, psk, alpk)) {
            psk = sq;
            alpk = alp;
            return true;
        }
        return false;
    }
};

/// The track starting at `start` with its dn[] and the diagonal term
/// (shift 14 for the second pulse, 12 for the third and fourth) loaded once.
TrackWithFixedTerm track_with_diagonal(const Word16* dn, const CorrMatrix& rr, int start, int diag_shift) {
    return TrackWithFixedTerm({dn + start, 5}, {diagonal(rr, start), diag_shift}, 8);
}

/// Best second pulse after i0 on the track starting at start (t1 its
/// track_with_diagonal of shift 14).
[[gnu::always_inline]] inline void second_pulse_candidates(const Word16* dn, const CorrMatrix& rr,
                                                            const TrackWithFixedTerm& t1, int i0, int start,
                                                            Candidates& c) {
    t1.evaluate(dn[i0], L_mult(rr[i0][i0], k1_4), {row(rr, i0, start), 15}, c);  // 1/4 diagonal, 1/2 row
}

[[gnu::always_inline]] inline Best second_pulse(const Word16* dn, const CorrMatrix& rr, const TrackWithFixedTerm& t1, int i0, int start) {
    Candidates c;
    second_pulse_candidates(dn, rr, t1, i0, start, c);
    Best b(start);
    b.choose(c, start);
    return b;
}

/// search_2i40 of c2_9pf.c (trackPairs from startPos by subframe) and c2_11pf.c.
void search_2i40(const Word16* dn, const CorrMatrix& rr, const Word16 (*pairs)[2], int npairs, Word16* codvec) {
    Chosen c;
    codvec[0] = 0;
    codvec[1] = 1;
    for (int p = 0; p < npairs; p++) {
        const TrackWithFixedTerm t1 = track_with_diagonal(dn, rr, pairs[p][1], 14);
        for (int i0 = pairs[p][0]; i0 < kLCode; i0 += 5) {
            Candidates cand;
            second_pulse_candidates(dn, rr, t1, i0, pairs[p][1], cand);
            if (!c.may_improve(cand)) continue;
            Best b(pairs[p][1]);
            b.choose(cand, pairs[p][1]);
            if (c.better(b.sq, b.alp)) {
                codvec[0] = static_cast<Word16>(i0);
                codvec[1] = static_cast<Word16>(b.ix);
            }
        }
    }
}

/// The next track order of search_3i40 and search_4i40: the last track becomes the first.
void rotate_tracks(Word16* ipos, int npulse) {
    const Word16 pos = ipos[npulse - 1];
    for (int k = npulse - 1; k > 0; k--) ipos[k] = ipos[k - 1];
    ipos[0] = pos;
}

/// The second pulses chosen after each first pulse, by the first two
/// tracks: the track orders of search_3i40 meet the same first two tracks
/// twice, and the choice depends on them and the first pulse alone.
struct SecondPulseMemo {
    Best second[5][5][8];  // [track of i0][track of i1][i0 / 5]
    bool have[5][5] = {};
};

/// search_4i40 (c4_17pf.c): for each track order, each i0 whose dn2
/// survived preselection, the pulses after it one at a time.
void search_4i40(const Word16* dn, const Word16* dn2, const CorrMatrix& rr, Word16* ipos, Chosen& c, Word16* codvec) {
    for (int i = 0; i < 4; i++) {
        const int t2 = ipos[2], t3 = ipos[3];
        const TrackWithFixedTerm track1 = track_with_diagonal(dn, rr, ipos[1], 14);
        const TrackWithFixedTerm track2 = track_with_diagonal(dn, rr, t2, 12);
        const TrackWithFixedTerm track3 = track_with_diagonal(dn, rr, t3, 12);
        for (int i0 = ipos[0]; i0 < kLCode; i0 += 5) {
            if (dn2[i0] < 0) continue;
            const Best b1 = second_pulse(dn, rr, track1, i0, ipos[1]);
            const int i1 = b1.ix;
            Candidates cand;
            const Term rows2[2] = {{row(rr, i1, t2), 13}, {row(rr, i0, t2), 13}};
            track2.evaluate(b1.ps, L_mult(b1.alp, k1_4), rows2, 2, cand);
            Best b2(t2);
            b2.choose(cand, t2);
            const int i2 = b2.ix;
            const Term rows3[3] = {{row(rr, i2, t3), 13}, {row(rr, i1, t3), 13}, {row(rr, i0, t3), 13}};
            track3.evaluate(b2.ps, L_deposit_h(b2.alp), rows3, 3, cand);
            if (!c.may_improve(cand)) continue;
            Best b3(t3);
            b3.choose(cand, t3);
            if (c.better(b3.sq, b3.alp)) {
                codvec[0] = static_cast<Word16>(i0);
                codvec[1] = static_cast<Word16>(i1);
                codvec[2] = static_cast<Word16>(i2);
                codvec[3] = static_cast<Word16>(b3.ix);
            }
        }
        rotate_tracks(ipos, 4);
    }
}

/// search_3i40 (c3_14pf.c), the same for three pulses, the second pulses
/// shared through memo by the track orders that begin alike.
void search_3i40(const Word16* dn, const Word16* dn2, const CorrMatrix& rr, Word16* ipos, Chosen& c,
                 SecondPulseMemo& memo, Word16* codvec) {
    for (int i = 0; i < 3; i++) {
        const int t0 = ipos[0], t1 = ipos[1], t2 = ipos[2];
        const bool known = memo.have[t0][t1];
        Best* const seconds = memo.second[t0][t1];
        const TrackWithFixedTerm track1 = track_with_diagonal(dn, rr, t1, 14);
        const TrackWithFixedTerm track2 = track_with_diagonal(dn, rr, t2, 12);
        for (int k = 0; k < 8; k++) {
            const int i0 = t0 + 5 * k;
            if (dn2[i0] < 0) continue;
            if (!known) seconds[k] = second_pulse(dn, rr, track1, i0, t1);
            const Best b1 = seconds[k];
            Candidates cand;
            const Term rows2[2] = {{row(rr, b1.ix, t2), 13}, {row(rr, i0, t2), 13}};
            track2.evaluate(b1.ps, L_mult(b1.alp, k1_4), rows2, 2, cand);
            if (!c.may_improve(cand)) continue;
            Best b2(t2);
            b2.choose(cand, t2);
            if (c.better(b2.sq, b2.alp)) {
                codvec[0] = static_cast<Word16>(i0);
                codvec[1] = static_cast<Word16>(b1.ix);
                codvec[2] = static_cast<Word16>(b2.ix);
            }
        }
        memo.have[t0][t1] = true;
        rotate_tracks(ipos, 3);
    }
}

/// Position index of a pulse, its sign bit number, by mode.
struct PulseCode {
    Word16 index;
    int track;
};

using IndexRule = PulseCode (*)(int pos, int k, const Word16* trackRow);

/// build_code shared by the 2..4-pulse codebooks: pulses, sign bits,
/// position index and the filtered code.
Word16 build_code(const Word16* codvec, int npulse, const Word16* dn_sign, IndexRule rule, const Word16* trackRow,
                  Word16* cod, const PaddedResponse& h, Word16* y, Word16* sign) {
    for (int i = 0; i < kLCode; i++) cod[i] = 0;
    Word16 indx = 0, rsign = 0, sgn[4];
    for (int k = 0; k < npulse; k++) {
        const int i = codvec[k];
        const PulseCode pc = rule(i, k, trackRow);
        if (dn_sign[i] > 0) {
            cod[i] = 8191;
            sgn[k] = 32767;
            rsign = add(rsign, shl(1, static_cast<Word16>(pc.track)));
        } else {
            cod[i] = -8192;
            sgn[k] = MIN_16;
        }
        indx = add(indx, pc.index);
    }
    *sign = rsign;
    filter_pulses(h, codvec, sgn, npulse, y);
    return indx;
}

PulseCode index_2i40_9bits(int pos, int k, const Word16* trackRow) {
    const Word16 index = static_cast<Word16>(pos / 5);
    if (k == 0) return {static_cast<Word16>(trackRow[pos % 5] != 0 ? index + 64 : index), 0};
    return {static_cast<Word16>(index << 3), 1};
}

PulseCode index_2i40_11bits(int pos, int k, const Word16*) {
    const Word16 index = static_cast<Word16>(pos / 5);
    switch (pos % 5) {
        case 0: return {static_cast<Word16>(index << 6), 1};
        case 1: return k == 0 ? PulseCode{static_cast<Word16>(index << 1), 0}
                              : PulseCode{static_cast<Word16>((index << 6) + 16), 1};
        case 2: return {static_cast<Word16>((index << 6) + 32), 1};
        case 3: return {static_cast<Word16>((index << 1) + 1), 0};
        default: return {static_cast<Word16>((index << 6) + 48), 1};
    }
}

PulseCode index_3i40_14bits(int pos, int, const Word16*) {
    const Word16 index = static_cast<Word16>(pos / 5);
    switch (pos % 5) {
        case 0: return {index, 0};
        case 1: return {static_cast<Word16>(index << 4), 1};
        case 2: return {static_cast<Word16>(index << 8), 2};
        case 3: return {static_cast<Word16>((index << 4) + 8), 1};
        default: return {static_cast<Word16>((index << 8) + 128), 2};
    }
}

PulseCode index_4i40_17bits(int pos, int, const Word16*) {
    const Word16 index = amr_cb_tab::gray[pos / 5];
    switch (pos % 5) {
        case 0: return {index, 0};
        case 1: return {static_cast<Word16>(index << 3), 1};
        case 2: return {static_cast<Word16>(index << 6), 2};
        case 3: return {static_cast<Word16>(index << 10), 3};
        default: return {static_cast<Word16>((index << 10) + 512), 3};
    }
}

/// Common frame of the four searches: sharpened response, dn[], signs, rr[].
struct Prepared {
    Word16 dn[kLCode], dn2[kLCode], dn_sign[kLCode];
    CorrMatrix rr;
};

Word16 sharpen(PaddedResponse& h, Word16 T0, Word16 pitch_sharp) {
    const Word16 sharp = shl(pitch_sharp, 1);
    if (T0 < kLCode) add_pitch_contribution(h.h(), T0, sharp);
    return sharp;
}

void prepare(const Word16* x, const PaddedResponse& h, int n, Prepared& p) {
    cor_h_x2(h.h(), x, p.dn, 1, 5, 5);
    set_sign(p.dn, p.dn_sign, p.dn2, n);
    cor_h(h.h(), p.dn_sign, p.rr);
}

void finish(Word16* code, Word16 T0, Word16 sharp) {
    if (T0 < kLCode) add_pitch_contribution(code, T0, sharp);
}

}  // namespace

Word16 code_2i40_9bits(Word16 subNr, const Word16* x, PaddedResponse& h, Word16 T0, Word16 pitch_sharp,
                       Word16* code, Word16* y, Word16* sign) {
    const Word16 sharp = sharpen(h, T0, pitch_sharp);
    Prepared p;
    prepare(x, h, 8, p);
    using amr_dec_tab::startPos;
    const Word16 pairs[2][2] = {{startPos[subNr * 2], startPos[subNr * 2 + 1]},
                                {startPos[subNr * 2 + 8], startPos[subNr * 2 + 9]}};
    Word16 codvec[2];
    search_2i40(p.dn, p.rr, pairs, 2, codvec);
    const Word16 index = build_code(codvec, 2, p.dn_sign, index_2i40_9bits, &amr_cb_tab::trackTable[subNr * 5], code,
                                    h, y, sign);
    finish(code, T0, sharp);
    return index;
}

Word16 code_2i40_11bits(const Word16* x, PaddedResponse& h, Word16 T0, Word16 pitch_sharp, Word16* code, Word16* y,
                        Word16* sign) {
    const Word16 sharp = sharpen(h, T0, pitch_sharp);
    Prepared p;
    prepare(x, h, 8, p);
    Word16 pairs[8][2];
    for (int t1 = 0; t1 < 2; t1++)
        for (int t2 = 0; t2 < 4; t2++) {
            pairs[t1 * 4 + t2][0] = amr_cb_tab::startPos1[t1];
            pairs[t1 * 4 + t2][1] = amr_cb_tab::startPos2[t2];
        }
    Word16 codvec[2];
    search_2i40(p.dn, p.rr, pairs, 8, codvec);
    const Word16 index = build_code(codvec, 2, p.dn_sign, index_2i40_11bits, nullptr, code, h, y, sign);
    finish(code, T0, sharp);
    return index;
}

Word16 code_3i40_14bits(const Word16* x, PaddedResponse& h, Word16 T0, Word16 pitch_sharp, Word16* code, Word16* y,
                        Word16* sign) {
    const Word16 sharp = sharpen(h, T0, pitch_sharp);
    Prepared p;
    prepare(x, h, 6, p);
    Word16 codvec[3] = {0, 1, 2};
    Chosen c;
    SecondPulseMemo memo;
    for (Word16 track1 = 1; track1 < 4; track1 += 2)
        for (Word16 track2 = 2; track2 < 5; track2 += 2) {
            Word16 ipos[3] = {0, track1, track2};
            search_3i40(p.dn, p.dn2, p.rr, ipos, c, memo, codvec);
        }
    const Word16 index = build_code(codvec, 3, p.dn_sign, index_3i40_14bits, nullptr, code, h, y, sign);
    finish(code, T0, sharp);
    return index;
}

Word16 code_4i40_17bits(const Word16* x, PaddedResponse& h, Word16 T0, Word16 pitch_sharp, Word16* code, Word16* y,
                        Word16* sign) {
    const Word16 sharp = sharpen(h, T0, pitch_sharp);
    Prepared p;
    prepare(x, h, 4, p);
    Word16 codvec[4] = {0, 1, 2, 3};
    Chosen c;
    for (Word16 track = 3; track < 5; track++) {
        Word16 ipos[4] = {0, 1, 2, track};
        search_4i40(p.dn, p.dn2, p.rr, ipos, c, codvec);
    }
    const Word16 index = build_code(codvec, 4, p.dn_sign, index_4i40_17bits, nullptr, code, h, y, sign);
    finish(code, T0, sharp);
    return index;
}

}  // namespace amr_cb
ZEPS_END_VARIANT

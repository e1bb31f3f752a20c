// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR algebraic codebook search: recorded calls of the 3GPP TS 26.073
// reference encoder's cbsearch() replayed through both processor builds
// (every mode, the shared speech files and the package's all-modes check
// sequence), and the vectorised correlations against their plain loops.
//
// data/cbsearch.rec: records of 216 little-endian int16 words: mode
// (0 = MR475 .. 7 = MR122), subframe, T0, pitch_sharp, gain_pit, x[40],
// h[40], res2[40], then the reference's code[40], y[40], the index count and
// the index words (10, unused ones 0).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <vector>

#include "amr/cb_candidates.h"
#include "amr/cb_correlation.h"
#include "amr/cb_sign.h"
#include "frame/variants.h"
#include "tests/variant_check.h"

namespace {

using V16 = std::vector<std::int16_t>;
constexpr std::int32_t kRates[8] = {0, 1, 3, 6, 7, 8, 11, 12};
constexpr std::size_t kRecWords = 216;

V16 read_records() {
    std::ifstream f(ZEPS_TESTS_SOURCE_DIR "/amrcb/data/cbsearch.rec", std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    V16 w(bytes.size() / 2);
    for (std::size_t i = 0; i < w.size(); i++)
        w[i] = static_cast<std::int16_t>(static_cast<std::uint8_t>(bytes[2 * i]) |
                                         (static_cast<std::uint8_t>(bytes[2 * i + 1]) << 8));
    return w;
}

using Search = decltype(&zeps::u8::zepsAlgebraicCodebookSearch_GSMAMR_16s);

TEST(AmrCbSearch, ReferenceRecordsEveryModeBothBuilds) {
    const V16 rec = read_records();
    ASSERT_EQ(rec.size() % kRecWords, 0u);
    ASSERT_GE(rec.size() / kRecWords, 392u);
    int perMode[8] = {};
    for (Search search : {zeps::u8::zepsAlgebraicCodebookSearch_GSMAMR_16s,
                          zeps::n8::zepsAlgebraicCodebookSearch_GSMAMR_16s}) {
        int bad = 0;
        for (std::size_t r = 0; r < rec.size() && bad < 5; r += kRecWords) {
            const std::int16_t* w = rec.data() + r;
            const int mode = w[0];
            ASSERT_TRUE(mode >= 0 && mode < 8);
            perMode[mode]++;
            V16 code(40, 0x5a5a), y(40, 0x5a5a), idx(10, 0);
            ASSERT_EQ(search(w + 5, w + 45, w[2], w[3], w[4], w + 85, code.data(), y.data(), idx.data(), kRates[mode],
                             w[1]),
                      zepStsNoErr);
            const bool same = code == V16(w + 125, w + 165) && y == V16(w + 165, w + 205) &&
                              idx == V16(w + 206, w + 216) && w[205] == (mode == 6 ? 7 : mode == 7 ? 10 : 2);
            if (!same) {
                ++bad;
                ADD_FAILURE() << "record " << r / kRecWords << " mode " << mode << " subframe " << w[1];
            }
        }
    }
    for (int m = 0; m < 8; m++) EXPECT_GE(perMode[m], 2 * 49) << "mode " << m;
}

/// A vector whose level spans silence to saturated runs.
V16 levelled(zeps::test::Rng& rng, int n) {
    static const int kLevels[] = {0, 3, 300, 3000, 9000, 18000, 25000, 32767};
    const int lvl = kLevels[rng.uniform(0, 7)];
    V16 v(static_cast<std::size_t>(n));
    for (auto& x : v) x = static_cast<std::int16_t>(rng.uniform(-lvl, lvl));
    if (rng.chance(6))
        for (auto i = static_cast<std::size_t>(rng.uniform(0, n - 1)); i < v.size(); i += 3)
            v[i] = rng.chance(2) ? -32768 : 32767;
    return v;
}

TEST(AmrCbSearch, VectorCorrelationsEqualReferenceLoops) {
    namespace k = zeps::ref::amr_cb;
    zeps::test::Rng rng(26073);
    for (int round = 0; round < 3000; ++round) {
        V16 h = levelled(rng, 40);
        if (rng.chance(2)) h[0] = 4096;
        const V16 x = levelled(rng, 40);
        V16 sign(40);
        for (auto& s : sign) s = rng.chance(2) ? 32767 : -32767;
        if (round % 8 == 0)  // rows of other signs take the per-block products
            for (auto& s : sign)
                if (rng.chance(3)) s = static_cast<std::int16_t>(rng.uniform(-32767, 32767));
        // the scaling of cor_h also on sparse responses (one to three values:
        // small energies, where the inverse square root saturates) and full scale
        V16 hs(40, 0);
        for (int n = static_cast<int>(rng.uniform(1, 3)); n > 0; n--) hs[rng.uniform(0, 39)] = rng.s16();
        if (rng.chance(50)) hs.assign(40, rng.chance(2) ? -32768 : 32767);
        for (const V16* v : {&h, &hs}) {
            V16 sa(40), sb(40);
            k::scale_response(v->data(), sa.data());
            k::scale_response_scalar(v->data(), sb.data());
            ASSERT_EQ(sa, sb) << "scaled response round " << round;
            ASSERT_EQ(k::energy(v->data()), k::energy_scalar(v->data())) << "energy round " << round;
        }
        k::CorrMatrix a, b;
        k::cor_h(h.data(), sign.data(), a);
        k::cor_h_scalar(h.data(), sign.data(), b);
        for (int i = 0; i < 40; i++)
            for (int j = 0; j < 40; j++) ASSERT_EQ(a[i][j], b[i][j]) << "cor_h round " << round << " " << i << "," << j;
        // its tracks rearranged from transposed blocks (the matrix is symmetric) and one value at a time
        for (const int step : {4, 5}) {
            const k::TrackMatrix tm(a, x.data(), step);
            k::TrackMatrix plain = tm;
            plain.fill_rows_scalar(a);
            for (int i = 0; i < 40; i++)
                for (int j = 0; j < tm.step * tm.width; j++)  // the entries the tracks read
                    ASSERT_EQ(tm.row[i][j], plain.row[i][j]) << "tracks round " << round;
        }
        const bool mr102 = rng.chance(2);
        const std::int16_t sf = mr102 || rng.chance(2) ? 2 : 1;
        const int tracks = mr102 ? 4 : 5;
        V16 da(40), db(40);
        k::cor_h_x2(h.data(), x.data(), da.data(), sf, tracks, tracks);
        k::cor_h_x2_scalar(h.data(), x.data(), db.data(), sf, tracks, tracks);
        ASSERT_EQ(da, db) << "cor_h_x2 round " << round;
        // the filtered code of 2..10 pulses (positions may repeat), with the
        // codebooks' signs and full-scale ones that saturate L_mult and the chain
        k::PaddedResponse hp{};
        for (int i = 0; i < 40; i++) hp.h()[i] = h[i];
        const int n = static_cast<int>(rng.uniform(2, 10));
        std::int16_t pos[10], sgn[10];
        static const std::int16_t kSigns[] = {32767, -32768, 8192, -8192};
        for (int k = 0; k < n; k++) {
            pos[k] = static_cast<std::int16_t>(rng.chance(4) && k > 0 ? pos[k - 1] : rng.uniform(0, 39));
            sgn[k] = rng.chance(5) ? rng.s16() : kSigns[rng.uniform(0, 3)];
        }
        V16 ya(40), yb(40);
        k::filter_pulses(hp, pos, sgn, n, ya.data());
        k::filter_pulses_scalar(hp, pos, sgn, n, yb.data());
        ASSERT_EQ(ya, yb) << "filtered code round " << round;
    }
}

TEST(AmrCbSearch, VectorTrackCandidatesEqualReferenceLoops) {
    namespace k = zeps::ref::amr_cb;
    zeps::test::Rng rng(102);
    for (int round = 0; round < 3000; ++round) {
        // rr-like rows and dn, from small to full scale, with saturating sums
        const V16 m = levelled(rng, 1600), dn = levelled(rng, 40);
        const int step = rng.chance(2) ? 4 : 5, count = step == 4 ? 10 : 8;
        const int first = static_cast<int>(rng.uniform(0, step - 1));
        const int nterms = static_cast<int>(rng.uniform(1, 9));
        k::Term terms[9];
        for (int t = 0; t < nterms; t++) {
            const int row = static_cast<int>(rng.uniform(0, 39));
            terms[t] = {{m.data() + 40 * row + first, t == 0 ? 41 * step : step}, static_cast<int>(rng.uniform(9, 15))};
            if (t == 0) terms[t].v.p = m.data() + 41 * first;
        }
        const std::int16_t ps0 = rng.s16();
        const std::int32_t alp0 = rng.chance(2) ? rng.s32() : static_cast<std::int32_t>(rng.uniform(-(1 << 28), 1 << 28));
        const k::Strided d{dn.data() + first, step};
        k::Candidates a{}, b{};
        k::evaluate_track(ps0, alp0, d, terms, nterms, count, a);
        k::evaluate_track_scalar(ps0, alp0, d, terms, nterms, count, b);
        for (int i = 0; i < count; i++)
            ASSERT_TRUE(a.ps[i] == b.ps[i] && a.sq[i] == b.sq[i] && a.alp[i] == b.alp[i]) << "round " << round << " " << i;
        k::Sums sa{}, sb{};
        k::track_sums(ps0, alp0, d, terms, nterms, count, sa);
        k::track_sums_scalar(ps0, alp0, d, terms, nterms, count, sb);
        for (int i = 0; i < count; i++)
            ASSERT_TRUE(sa.ps[i] == sb.ps[i] && sa.alp[i] == sb.alp[i]) << "sums round " << round << " " << i;
        // the exactness bound of a loop of starts: at and around a start's magnitude, and the extremes
        // (lanes past count hold values beyond any bound)
        alignas(16) std::int32_t starts[16];
        for (int i = 0; i < 16; i++) starts[i] = i < count ? (rng.chance(6) ? (rng.chance(2) ? INT32_MIN : INT32_MAX) : sa.alp[i]) : INT32_MIN;
        const std::int32_t at = starts[rng.uniform(0, count - 1)];
        const std::int64_t mag = at < 0 ? -std::int64_t{at} : at;
        for (const std::int64_t lim : {mag - 1, mag, mag + 1, std::int64_t{-1}, std::int64_t{0}, std::int64_t{INT32_MAX}, mag + INT32_MAX})
            ASSERT_EQ(k::all_within(starts, count, lim), k::all_within_scalar(starts, count, lim)) << "round " << round << " " << lim;
        // the same terms read as track-ordered runs (stride 1, 8 readable values past the track)
        k::Term runs[9];
        for (int t = 0; t < nterms; t++) runs[t] = {{m.data() + 40 * rng.uniform(0, 38), 1}, terms[t].shift};
        k::evaluate_track(ps0, alp0, d, runs, nterms, count, a);
        k::evaluate_track_scalar(ps0, alp0, d, runs, nterms, count, b);
        for (int i = 0; i < count; i++)
            ASSERT_TRUE(a.ps[i] == b.ps[i] && a.sq[i] == b.sq[i] && a.alp[i] == b.alp[i]) << "runs round " << round;
        // the prefilter of the sequential choice, against a best from the candidates or the start (-1, 1)
        const int pick = static_cast<int>(rng.uniform(-1, count - 1));
        const std::int16_t bsq = pick < 0 ? -1 : b.sq[pick], balp = pick < 0 ? 1 : rng.chance(2) ? b.alp[pick] : rng.s16();
        ASSERT_EQ(k::any_improves(b, count, bsq, balp), k::any_improves_scalar(b, count, bsq, balp)) << "round " << round;
        const k::TrackWithFixedTerm pair(d, terms[0], count);
        const k::Term second{{m.data() + 40 * rng.uniform(0, 39) + first, step}, static_cast<int>(rng.uniform(9, 15))};
        pair.evaluate(ps0, alp0, second, a);
        pair.evaluate_scalar(ps0, alp0, second, b);
        for (int i = 0; i < count; i++)
            ASSERT_TRUE(a.ps[i] == b.ps[i] && a.sq[i] == b.sq[i] && a.alp[i] == b.alp[i]) << "pair round " << round;
        // up to four more terms after the fixed one (the 3- and 4-pulse searches' rows)
        k::Term rest[k::TrackWithFixedTerm::kMaxRest];
        const int nrest = static_cast<int>(rng.uniform(1, k::TrackWithFixedTerm::kMaxRest));
        for (auto& r : rest) r = {{m.data() + 40 * rng.uniform(0, 39) + first, step}, static_cast<int>(rng.uniform(9, 15))};
        pair.evaluate(ps0, alp0, rest, nrest, a);
        pair.evaluate_scalar(ps0, alp0, rest, nrest, b);
        for (int i = 0; i < count; i++)
            ASSERT_TRUE(a.ps[i] == b.ps[i] && a.sq[i] == b.sq[i] && a.alp[i] == b.alp[i]) << "rest round " << round;
        // the pair searches' fused step (candidates and the prefilter) on a track-ordered run, where the
        // chain is exact: a start alp0 up to the bound, a best from the plain candidates or the start
        alignas(16) std::int16_t run[16];
        for (int i = 0; i < 16; i++) run[i] = i < count ? m[static_cast<std::size_t>(rng.uniform(0, 1599))] : 0;
        const int shift = static_cast<int>(rng.uniform(9, 15));
        const std::int64_t room = std::int64_t{0x7fffffff} - 0x8000 - (std::int64_t{1} << (15 + terms[0].shift)) - (std::int64_t{1} << (15 + shift));
        if (room >= 0) {
            const auto lim = static_cast<std::int32_t>(rng.chance(4) ? room : std::min<std::int64_t>(room, 1 << 26));
            const std::int32_t start = rng.chance(8) ? (rng.chance(2) ? lim : -lim) : static_cast<std::int32_t>(rng.uniform(-lim, lim));
            ASSERT_TRUE(pair.exact_for(start < 0 ? -std::int64_t{start} : start, shift));
            pair.evaluate_scalar(ps0, start, k::Term{{run, 1}, shift}, b);
            const int bk = static_cast<int>(rng.uniform(-1, count - 1));
            const std::int16_t fsq = bk < 0 ? -1 : b.sq[bk], falp = bk < 0 ? 1 : rng.chance(2) ? b.alp[bk] : rng.s16();
            const bool fa = pair.improving(ps0, start, run, shift, fsq, falp, a);
            const bool fb = pair.improving_scalar(ps0, start, run, shift, fsq, falp, b);
            ASSERT_EQ(fa, fb) << "fused round " << round;
            for (int i = 0; i < count; i++)
                ASSERT_TRUE(a.ps[i] == b.ps[i] && a.sq[i] == b.sq[i] && a.alp[i] == b.alp[i]) << "fused round " << round;
        }
    }
}

// The sign terms of set_sign12k2 in lanes against the L_mult/L_mac/L_shl
// chain: every L_shl saturation and rounding edge (sums near +-2^20),
// -32768 inputs, the normalisation factors' extremes (and a negative one,
// which takes the chain); the energies from 256 up to saturation.
TEST(AmrCbSearch, SignTermsEqualReferenceChain) {
    namespace k = zeps::ref::amr_cb;
    zeps::test::Rng rng(1222);
    const std::int16_t factors[] = {0, 1, 32, 4096, 32767, -1};
    for (int round = 0; round < 20000; ++round) {
        V16 cn(40), dn(40);
        const int kind = static_cast<int>(rng.uniform(0, 3));
        for (int i = 0; i < 40; i++) {
            cn[i] = kind == 0 ? static_cast<std::int16_t>(rng.uniform(-64, 64)) : rng.s16();
            dn[i] = kind == 1 ? static_cast<std::int16_t>(rng.chance(2) ? -32768 : 32767) : rng.s16();
        }
        std::int16_t kc = rng.chance(4) ? factors[rng.uniform(0, 5)] : static_cast<std::int16_t>(rng.uniform(0, 32767));
        std::int16_t kd = rng.chance(4) ? factors[rng.uniform(0, 5)] : static_cast<std::int16_t>(rng.uniform(0, 32767));
        if (kind == 2) {  // sums k_cn cn + k_dn dn at the edges 2^20 - 16 .. 2^20 and -2^20 - 1 .. -2^20 + 1
            kc = 1024;
            kd = 1;
            for (int i = 0; i < 40; i++) {
                const int target = (rng.chance(2) ? 1 : -1) * (1 << 20) + static_cast<int>(rng.uniform(-17, 1));
                cn[i] = static_cast<std::int16_t>(target >> 10);
                dn[i] = static_cast<std::int16_t>(target - (target >> 10) * 1024);
            }
        }
        V16 da = dn, db = dn, sa(40, 0x5a5a), sb(40, 0x5a5a), ea(40, 0x5a5a), eb(40, 0x5a5a);
        k::sign_terms(kc, kd, cn.data(), da.data(), sa.data(), ea.data());
        k::sign_terms_scalar(kc, kd, cn.data(), db.data(), sb.data(), eb.data());
        ASSERT_TRUE(da == db && sa == sb && ea == eb) << "round " << round << " k " << kc << " " << kd;
        for (const V16* v : {&cn, &dn}) ASSERT_EQ(k::energy_256(v->data()), k::energy_256_scalar(v->data())) << "round " << round;
    }
}

// The rounded, shifted correlations of cor_h_x2 in lanes against round(L_shl()):
// every shift, values at the left shift's saturation edge and at the extremes.
TEST(AmrCbSearch, RoundedShiftEqualsReferenceChain) {
    namespace k = zeps::ref::amr_cb;
    zeps::test::Rng rng(2040);
    for (int round = 0; round < 2000; ++round) {
        const int n = static_cast<int>(rng.uniform(-32, 31));
        std::int32_t y[40];
        for (auto& v : y) {
            const std::int64_t edge = n > 0 ? (std::int64_t{1} << (31 - n)) : std::int64_t{1} << 30;
            switch (rng.uniform(0, 3)) {
                case 0: v = static_cast<std::int32_t>(rng.chance(2) ? edge - rng.uniform(0, 2) : rng.uniform(0, 2) - edge); break;
                case 1: v = rng.chance(2) ? INT32_MIN : INT32_MAX; break;
                case 2: v = static_cast<std::int32_t>(rng.uniform(-65536, 65536)) * 32768 + static_cast<std::int32_t>(rng.uniform(-2, 2)); break;
                default: v = static_cast<std::int32_t>(rng.uniform(INT32_MIN, INT32_MAX));
            }
        }
        V16 a(40, 0x5a5a), b(40, 0x5a5a);
        k::round_shifted(y, n, a.data());
        k::round_shifted_scalar(y, n, b.data());
        ASSERT_EQ(a, b) << "round " << round << " shift " << n;
        for (int i = 0; i < 40; i++)
            ASSERT_EQ(b[i], zeps::ref::round_fx(zeps::ref::L_shl(y[i], static_cast<std::int16_t>(n)))) << "round " << round;
    }
}

// The lane choice among 8 or 10 candidates against the reference's
// sequential loop, from (-1, 1) and, where some candidate improves on it,
// from a running best; the library's own sequential loop from any start:
// equal ratios in many places (small values, multiples), the extremes 1
// and 32767, and energy terms <= 0 (where the lane choice must decline).
TEST(AmrCbSearch, LaneChoiceEqualsSequentialChoice) {
    namespace k = zeps::ref::amr_cb;
    zeps::test::Rng rng(67);
    auto sequential = [](const k::Candidates& c, int count, std::int16_t sq, std::int16_t alp) {
        using namespace zeps::ref;
        int ix = -1;
        for (int i = 0; i < count; i++)
            if (L_msu(L_mult(alp, c.sq[i]), sq, c.alp[i]) > 0) {
                sq = c.sq[i];
                alp = c.alp[i];
                ix = i;
            }
        return ix;
    };
    const std::int16_t small[] = {0, 1, 2, 3, 4, 6, 8, 12};
    int taken = 0, from_best = 0;
    for (int round = 0; round < 200000; ++round) {
        k::Candidates c{};
        const int count = rng.chance(3) ? 10 : 8;
        const int kind = static_cast<int>(rng.uniform(0, 4));
        const auto unit_sq = static_cast<std::int16_t>(rng.uniform(1, 40)), unit_alp = static_cast<std::int16_t>(rng.uniform(1, 40));
        for (int i = 0; i < 16; i++) {
            switch (kind) {
                case 0:  // small values: many equal ratios
                    c.sq[i] = small[rng.uniform(0, 7)];
                    c.alp[i] = static_cast<std::int16_t>(small[rng.uniform(1, 7)]);
                    break;
                case 1: {  // multiples of one ratio, up to full scale
                    const auto m = static_cast<std::int16_t>(rng.uniform(1, 800));
                    c.sq[i] = static_cast<std::int16_t>(unit_sq * m);
                    c.alp[i] = static_cast<std::int16_t>(unit_alp * m);
                    break;
                }
                case 2:  // extremes
                    c.sq[i] = rng.chance(2) ? 32767 : static_cast<std::int16_t>(rng.uniform(0, 1));
                    c.alp[i] = rng.chance(2) ? 32767 : 1;
                    break;
                default:  // anything a search can produce, energy terms <= 0 included
                    c.sq[i] = static_cast<std::int16_t>(rng.uniform(0, 32767));
                    c.alp[i] = rng.chance(16) ? static_cast<std::int16_t>(rng.uniform(-32768, 0)) : static_cast<std::int16_t>(rng.uniform(1, 32767));
            }
            c.ps[i] = rng.s16();
        }
        bool positive = true;
        for (int i = 0; i < count; i++) positive = positive && c.alp[i] > 0;
        // the library's sequential loop (any energy terms, any start)
        const std::int16_t ssq = rng.chance(4) ? -1 : static_cast<std::int16_t>(rng.uniform(-1, 32767));
        const std::int16_t salp = rng.chance(4) ? 1 : rng.s16();
        ASSERT_EQ(k::sequential_choice(c, 0, count, ssq, salp), sequential(c, count, ssq, salp)) << "round " << round;
        const int w = k::first_greatest_ratio(c, count);
        if (w < 0) {
            ASSERT_FALSE(positive) << "round " << round;
            continue;
        }
        ASSERT_TRUE(positive) << "round " << round;
        ASSERT_EQ(w, sequential(c, count, -1, 1)) << "round " << round;
        taken++;
        // a running best (a candidate's values or any positive energy) that some candidate improves on
        const int pick = static_cast<int>(rng.uniform(0, count - 1));
        const std::int16_t bsq = rng.chance(2) ? c.sq[pick] : static_cast<std::int16_t>(rng.uniform(-1, 32767));
        const std::int16_t balp = rng.chance(2) ? c.alp[pick] : static_cast<std::int16_t>(rng.uniform(1, 32767));
        if (!k::any_improves(c, count, bsq, balp)) continue;
        ASSERT_EQ(w, sequential(c, count, bsq, balp)) << "round " << round;
        from_best++;
    }
    EXPECT_GT(taken, 100000);
    EXPECT_GT(from_best, 20000);
}

TEST(AmrCbSearch, CriterionEqualsReferenceForm) {
    namespace k = zeps::ref::amr_cb;
    zeps::test::Rng rng(475);
    const std::int16_t sqs[] = {-1, 0, 1, 2, 16384, 32766, 32767};
    const std::int16_t alps[] = {-32768, -32767, -1, 0, 1, 2, 16384, 32767};
    auto ref = [](std::int16_t sq1, std::int16_t alp1, std::int16_t sq, std::int16_t alp) {
        using namespace zeps::ref;
        return L_msu(L_mult(alp, sq1), sq, alp1) > 0;
    };
    for (auto a : sqs)
        for (auto b : alps)
            for (auto c : sqs)
                for (auto d : alps) ASSERT_EQ(k::improves(a, b, c, d), ref(a, b, c, d)) << a << " " << b << " " << c << " " << d;
    for (int t = 0; t < 100000; t++) {
        const auto a = static_cast<std::int16_t>(rng.uniform(-1, 32767)), c = static_cast<std::int16_t>(rng.uniform(-1, 32767));
        const std::int16_t b = rng.s16(), d = rng.s16();
        ASSERT_EQ(k::improves(a, b, c, d), ref(a, b, c, d)) << a << " " << b << " " << c << " " << d;
    }
}

}  // namespace

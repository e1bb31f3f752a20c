// SPDX-License-Identifier: BSD-3-Clause
// The GSM-AMR encoder's bounded fast paths (Norm_Corr, Convolve, G_pitch, gain energies,
// Autocorr, Az_lsp, the open-loop lag correlations, the MR475, MR795 and Qua_gain searches) against their reference loops,
// on inputs on both sides of the bounds that select them: silence, speech
// levels, full-scale and -32768 runs, polynomials too large for the
// vectorised Chebyshev series, gain coefficients that could saturate.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "amr/amr_dec_tables.h"
#include "amr/amr_enc_tables.h"
#include "amr/enc_gain.h"
#include "amr/ol_corr_lanes.h"
#include "tests/variant_check.h"

// The G.729 Chebyshev kernels that Az_lsp shares are compiled in the
// processor builds only: the reference-namespace inline stages here call
// the u8 build's.
namespace zeps::u8 {
bool chebps_never_saturates(const std::int16_t* f, int q);
void chebps_x8(const std::int16_t* x, const std::int16_t* f, int q, std::int16_t* y);
std::int16_t chebps_unsaturated(std::int16_t x, const std::int16_t* f, int q);
}  // namespace zeps::u8
namespace zeps::ref {
bool chebps_never_saturates(const Word16* f, int q) { return u8::chebps_never_saturates(f, q); }
void chebps_x8(const Word16* x, const Word16* f, int q, Word16* y) { u8::chebps_x8(x, f, q, y); }
Word16 chebps_unsaturated(Word16 x, const Word16* f, int q) { return u8::chebps_unsaturated(x, f, q); }
}  // namespace zeps::ref

namespace {

namespace e = zeps::ref::amr_enc;
using zeps::test::Rng;
using V16 = std::vector<std::int16_t>;
using zeps::ref::Word16;
using zeps::ref::Word32;
using zeps::ref::MAX_32;

/// Samples at one of several levels, sometimes with saturated runs.
V16 levelled(Rng& rng, std::size_t n) {
    static const int kLevels[] = {0, 3, 300, 3000, 9000, 18000, 18001, 25000, 32767};
    const int lvl = kLevels[rng.uniform(0, 8)];
    V16 v(n);
    for (auto& x : v) x = static_cast<std::int16_t>(rng.uniform(-lvl, lvl));
    if (rng.chance(6))
        for (auto i = static_cast<std::size_t>(rng.uniform(0, static_cast<std::int64_t>(n) - 1)); i < n; i += 3)
            v[i] = rng.chance(2) ? -32768 : 32767;
    return v;
}

TEST(AmrEncKernels, PitchStagesEqualReferenceLoops) {
    Rng rng(122);
    for (int round = 0; round < 3000; ++round) {
        const V16 exc = levelled(rng, 154 + 40), xn = levelled(rng, 40);
        V16 h = levelled(rng, 40);
        if (rng.chance(2)) h[0] = 4096;
        const Word16* ex = exc.data() + 154;

        // the widest search of any mode: 20 lags plus the interpolation margins
        const int t_min = static_cast<int>(rng.uniform(14, 126)), t_max = t_min + static_cast<int>(rng.uniform(0, 27));
        e::LagCorr a{}, b{};
        a.t_min = b.t_min = t_min;
        e::norm_corr(ex, xn.data(), h.data(), t_min, t_max, a);
        e::norm_corr_scalar(ex, xn.data(), h.data(), t_min, t_max, b);
        for (int t = t_min; t <= t_max; ++t) ASSERT_EQ(a[t], b[t]) << "Norm_Corr round " << round << " lag " << t;

        V16 ya(40), yb(40);
        e::convolve(ex - t_min, h.data(), ya.data(), 40);
        e::convolve_scalar(ex - t_min, h.data(), yb.data(), 40);
        ASSERT_EQ(ya, yb) << "Convolve round " << round;

        const V16 y1 = rng.chance(2) ? ya : levelled(rng, 40);
        for (Word16 mode : {Word16{0}, Word16{7}}) {
            Word16 ca[4], cb[4];
            ASSERT_EQ(e::g_pitch(mode, xn.data(), y1.data(), ca), e::g_pitch_scalar(mode, xn.data(), y1.data(), cb))
                << "G_pitch round " << round;
            for (int i = 0; i < 4; ++i) ASSERT_EQ(ca[i], cb[i]) << "G_pitch coefficient " << i << " round " << round;
        }
    }
}

/// Doubled energy of the windowed signal, as Autocorr's first sum before it
/// saturates.
std::int64_t windowed_energy2(const V16& x, const std::int16_t* w) {
    std::int64_t e = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const std::int64_t y = zeps::ref::mult_r(x[i], w[i]);
        e += y * y;
    }
    return 2 * e;
}

TEST(AmrEncKernels, AutocorrEqualsReferenceLoop) {
    Rng rng(240);
    const std::int16_t* const wind[3] = {zeps::amr_dec_tab::window_200_40, zeps::amr_enc_tab::window_160_80,
                                         zeps::amr_enc_tab::window_232_8};
    for (int round = 0; round < 1500; ++round) {
        const std::int16_t* w = wind[round % 3];
        V16 x = levelled(rng, 240);
        if (round % 50 == 0) x.assign(240, round % 100 == 0 ? -32768 : 32767);  // rescaled twice or more
        if (round % 4 == 1) {
            // scaled so that the energy sits on the saturation edge, from either side
            const V16 base = levelled(rng, 240);
            auto scaled = [&](std::int64_t g) {
                V16 v(240);
                for (std::size_t i = 0; i < 240; ++i) v[i] = static_cast<std::int16_t>(base[i] * g / 65536);
                return v;
            };
            std::int64_t lo = 0, hi = 65536 * 64;
            if (windowed_energy2(scaled(hi), w) > MAX_32) {
                while (hi - lo > 1) {
                    const std::int64_t mid = (lo + hi) / 2;
                    (windowed_energy2(scaled(mid), w) > MAX_32 ? hi : lo) = mid;
                }
                x = scaled(rng.chance(2) ? lo : hi);
            }
        }
        Word32 ra[11], rb[11];
        e::autocorr(x.data(), w, ra);
        e::autocorr_scalar(x.data(), w, rb);
        for (int i = 0; i < 11; ++i) ASSERT_EQ(ra[i], rb[i]) << "r[" << i << "] round " << round;
    }
}

// Levinson on the autocorrelations of speech-like, square-wave and
// full-scale frames, of low-pass noise, and on arbitrary lags beside a
// normalised r[0] (unstable filters, saturating recursion sums); outputs
// canary-filled, the previous filter alike in both.
TEST(AmrEncKernels, LevinsonEqualsReferenceRecursion) {
    Rng rng(1010);
    int unstable = 0;
    for (int round = 0; round < 3000; ++round) {
        Word32 r[11];
        if (round % 2 == 0) {
            V16 x = levelled(rng, 240);
            if (round % 6 == 2) {
                const auto period = static_cast<std::size_t>(rng.uniform(2, 40));
                for (std::size_t i = 0; i < 240; ++i) x[i] = static_cast<std::int16_t>((i / period) % 2 ? 20000 : -20000);
            }
            e::autocorr(x.data(), zeps::amr_enc_tab::window_160_80, r);
        } else if (round % 4 == 1) {
            // noise through ten poles at rho: near-singular lags, unstable from the second to the eighth order
            const double rho = static_cast<double>(rng.uniform(30, 90)) / 100.0;
            std::vector<double> x(2000), y(11, 0.0);
            double st[10] = {};
            for (auto& v : x) {
                double u = static_cast<double>(rng.uniform(-1000, 1000));
                for (double& m : st) u = m = u + rho * m;
                v = u;
            }
            for (int i = 0; i < 11; ++i)
                for (std::size_t n = static_cast<std::size_t>(i); n < x.size(); ++n) y[static_cast<std::size_t>(i)] += x[n] * x[n - static_cast<std::size_t>(i)];
            for (int i = 0; i < 11; ++i) r[i] = static_cast<Word32>(y[static_cast<std::size_t>(i)] / y[0] * 2147483000.0);
        } else {
            r[0] = static_cast<Word32>(rng.uniform(1 << 30, MAX_32));
            for (int i = 1; i < 11; ++i)
                r[i] = rng.chance(3) ? rng.s32() : static_cast<Word32>(rng.uniform(-r[0], r[0]));
        }
        std::int16_t oa[11], ob[11], aa[11], ab[11], ka[4], kb[4];
        for (int i = 0; i < 11; ++i) oa[i] = ob[i] = rng.s16();
        std::fill(aa, aa + 11, 0x5a5a);
        std::fill(ab, ab + 11, 0x5a5a);
        std::fill(ka, ka + 4, 0x5a5a);
        std::fill(kb, kb + 4, 0x5a5a);
        e::levinson(oa, r, aa, ka);
        e::levinson_scalar(ob, r, ab, kb);
        for (int i = 0; i < 11; ++i) ASSERT_TRUE(aa[i] == ab[i] && oa[i] == ob[i]) << "round " << round << " " << i;
        for (int i = 0; i < 4; ++i) ASSERT_EQ(ka[i], kb[i]) << "rc round " << round;
        unstable += kb[0] == 0 && kb[1] == 0 && kb[2] == 0 && kb[3] == 0;
    }
    EXPECT_GT(unstable, 100);
}

TEST(AmrEncKernels, AzLspEqualsReferenceRoutine) {
    Rng rng(15);
    static const int kLevels[] = {500, 2000, 4000, 8000, 16000, 32767};
    int roots = 0;
    for (int round = 0; round < 3000; ++round) {
        // damped resonances make realistic filters; raw coefficients reach the
        // polynomials that leave the vectorised series
        V16 a(11);
        a[0] = 4096;
        const int lvl = kLevels[rng.uniform(0, 5)];
        for (int i = 1; i <= 10; ++i) a[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(rng.uniform(-lvl, lvl) / i);
        if (round % 3 == 0)  // raw 16-bit coefficients: F1, F2 past 2^14, saturating series
            for (int i = 1; i <= 10; ++i) a[static_cast<std::size_t>(i)] = rng.s16();
        if (round % 6 == 1)  // alternating full-scale pairs: F1, F2 at the 16-bit limits
            for (int i = 1; i <= 10; ++i)
                a[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(((i + round / 6) % 2 ? 32767 : -32768) + rng.uniform(0, 2000) * ((i % 2) ? -1 : 1));
        V16 old(10), la(10), lb(10);
        for (int i = 0; i < 10; ++i) old[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(30000 - 6000 * i);
        e::az_lsp(a.data(), la.data(), old.data());
        e::az_lsp_scalar(a.data(), lb.data(), old.data());
        ASSERT_EQ(la, lb) << "Az_lsp round " << round;
        roots += la != old;
    }
    EXPECT_GT(roots, 300);  // the root search itself ran, not only the fallback to old_lsp
}

TEST(AmrEncKernels, GainEnergiesEqualReferenceChains) {
    using zeps::ref::L_mac;
    Rng rng(4040);
    for (int round = 0; round < 4000; ++round) {
        const V16 a = levelled(rng, 40), b = rng.chance(4) ? a : levelled(rng, 40);
        const Word32 init = rng.chance(2) ? 0 : rng.chance(2) ? 1 : rng.s32();
        Word32 sq = init < 0 ? 0 : init, ab = init;
        for (int i = 0; i < 40; ++i) {
            sq = L_mac(sq, a[i], a[i]);
            ab = L_mac(ab, a[i], b[i]);
        }
        ASSERT_EQ(e::sum_sq_sat(a.data(), init < 0 ? 0 : init), sq) << "energy round " << round;
        ASSERT_EQ(e::mac_chain(a.data(), b.data(), init), ab) << "correlation round " << round;
        const Word32 v = rng.chance(8) ? (rng.chance(2) ? -1 : 0) : rng.s32() >> rng.uniform(0, 31);
        ASSERT_EQ(e::normalised(v), zeps::ref::L_shl(v, zeps::ref::norm_l(v))) << v;
    }
}

TEST(AmrEncKernels, Mr475SearchEqualsReferenceLoop) {
    std::int32_t col[4] = {};  // the column bounds the search relies on
    for (int i = 0; i < 1024; ++i) col[i & 3] = std::max<std::int32_t>(col[i & 3], zeps::amr_dec_tab::table_gain_MR475[i]);
    for (int c = 0; c < 4; ++c) ASSERT_EQ(col[c], e::kMr475ColumnMax[c]);
    ASSERT_GT(*std::min_element(zeps::amr_dec_tab::table_gain_MR475, zeps::amr_dec_tab::table_gain_MR475 + 1024), 0);
    Rng rng(475);
    for (int round = 0; round < 2000; ++round) {
        // normalised coefficients as MR475_gain_quant makes them (|hi| < 2^14),
        // sometimes full 16-bit ones past the bound of the plain sums
        const int hi_max = rng.chance(4) ? 32767 : static_cast<int>(rng.uniform(1, 16383));
        Word16 hi[10], lo[10];
        for (int k = 0; k < 10; ++k) {
            hi[k] = static_cast<Word16>(rng.uniform(-hi_max - (hi_max == 32767), hi_max) >> rng.uniform(0, 8));
            lo[k] = static_cast<Word16>(rng.uniform(0, 32767));
        }
        auto g0 = static_cast<Word16>(rng.uniform(16384, 32767)), g1 = static_cast<Word16>(rng.uniform(16384, 32767));
        Word16 limit = rng.chance(3) ? Word16{32767} : static_cast<Word16>(rng.uniform(0, 20000));
        if (round % 5 == 0) {  // errors that saturate the chain: ties at MAX_32, sums past it and back
            for (int k = 0; k < 10; ++k) hi[k] = static_cast<Word16>(rng.chance(3) ? rng.s16() : (round % 10 ? 32767 : -32768));
            g0 = g1 = limit = 32767;
        }
        const int want = e::mr475_search_scalar(hi, lo, g0, g1, limit);
        ASSERT_EQ(e::mr475_search(hi, lo, g0, g1, limit), want) << "MR475 search round " << round;
        std::int64_t n_max[10];
        e::gain_term_bounds(e::kMr475ColumnMax[0], e::kMr475ColumnMax[1], g0, n_max);
        e::gain_term_bounds(e::kMr475ColumnMax[2], e::kMr475ColumnMax[3], g1, n_max + 5);
        if (e::gain_chain_is_exact(hi, n_max, 10)) {
            ASSERT_EQ(e::mr475_search_plain(hi, lo, g0, g1, limit), want) << "MR475 plain search round " << round;
        }
    }
}

/// Random normalised gain coefficients (|hi| < 2^14, as the quantisers make
/// them), sometimes full 16-bit ones past the plain sums' bound, sometimes
/// all at one extreme (errors tied at MAX_32 or saturating and coming back).
void gain_coefficients(Rng& rng, int round, int n, Word16* hi, Word16* lo) {
    const int hi_max = rng.chance(4) ? 32767 : static_cast<int>(rng.uniform(1, 16383));
    for (int k = 0; k < n; ++k) {
        hi[k] = static_cast<Word16>(rng.uniform(-hi_max - (hi_max == 32767), hi_max) >> rng.uniform(0, 8));
        lo[k] = static_cast<Word16>(rng.uniform(0, 32767));
    }
    if (round % 5 == 0)
        for (int k = 0; k < n; ++k) hi[k] = static_cast<Word16>(rng.chance(3) ? rng.s16() : (round % 10 ? 32767 : -32768));
}

TEST(AmrEncKernels, QuaGainSearchEqualsReferenceLoop) {
    struct Table {
        const std::int16_t* rows;
        int len;
        const std::int32_t* column_max;
    };
    const Table tables[] = {{zeps::amr_dec_tab::table_gain_highrates, 128, e::kHighRatesColumnMax},
                            {zeps::amr_dec_tab::table_gain_lowrates, 64, e::kLowRatesColumnMax}};
    for (const Table& t : tables) {  // the column bounds the search relies on
        for (int c = 0; c < 2; ++c) {
            std::int32_t mx = 0, mn = 32767;
            for (int i = 0; i < t.len; ++i) {
                mx = std::max<std::int32_t>(mx, t.rows[4 * i + c]);
                mn = std::min<std::int32_t>(mn, t.rows[4 * i + c]);
            }
            ASSERT_EQ(mx, t.column_max[c]);
            ASSERT_GE(mn, 0);
        }
    }
    Rng rng(67);
    for (int round = 0; round < 3000; ++round) {
        const Table& t = tables[round & 1];
        Word16 hi[5], lo[5];
        gain_coefficients(rng, round, 5, hi, lo);
        auto g0 = static_cast<Word16>(rng.uniform(16384, 32767));
        Word16 limit = rng.chance(3) ? Word16{32767} : static_cast<Word16>(rng.uniform(-1, 22000));
        if (round % 5 == 0) g0 = limit = 32767;
        ASSERT_EQ(e::qua_gain_search(t.rows, t.len, t.column_max, g0, hi, lo, limit),
                  e::qua_gain_search_scalar(t.rows, t.len, g0, hi, lo, limit))
            << "Qua_gain search round " << round;
    }
}

TEST(AmrEncKernels, Mr795CodeSearchEqualsReferenceLoop) {
    std::int32_t mx = 0, mn = 32767;  // the column bound the search relies on
    for (int i = 0; i < 32; ++i) {
        mx = std::max<std::int32_t>(mx, zeps::amr_dec_tab::qua_gain_code[3 * i]);
        mn = std::min<std::int32_t>(mn, zeps::amr_dec_tab::qua_gain_code[3 * i]);
    }
    ASSERT_EQ(mx, e::kQuaGainCodeMax);
    ASSERT_GE(mn, 0);
    Rng rng(795);
    for (int round = 0; round < 3000; ++round) {
        Word16 hi[5], lo[5], cand[3];
        gain_coefficients(rng, round, 5, hi, lo);
        auto g0 = static_cast<Word16>(rng.uniform(16384, 32767));
        for (auto& c : cand) c = static_cast<Word16>(rng.chance(8) ? 32767 : rng.uniform(0, 20000));
        if (round % 5 == 0) g0 = cand[0] = cand[1] = cand[2] = 32767;
        if (round % 7 == 0) cand[1] = cand[2] = cand[0];  // ties between candidates keep the first
        ASSERT_EQ(e::mr795_code_search(hi, lo, g0, cand), e::mr795_code_search_scalar(hi, lo, g0, cand))
            << "MR795 code gain search round " << round;
    }
}

}  // namespace

TEST(AmrEncKernels, OpenLoopLagCorrelationsEqualPlainSums) {
    Rng rng(143);
    for (int round = 0; round < 600; ++round) {
        const int n = rng.chance(2) ? 160 : 80 + static_cast<int>(rng.uniform(-7, 7));  // frames and odd tails
        // amplitudes up to the bound the search proves (energy below 2^30)
        const int lvl = static_cast<int>(rng.uniform(0, 1)) != 0 ? 32767 / 16 : static_cast<int>(rng.uniform(0, 2500));
        V16 v(143 + 160);
        for (auto& x : v) x = static_cast<std::int16_t>(rng.uniform(-lvl, lvl));
        std::int64_t e = 0;
        for (int i = -143; i < n; ++i) e += std::int32_t{v[143 + i]} * v[143 + i];
        if (e >= (std::int64_t{1} << 30)) continue;
        const int lag_min = static_cast<int>(rng.uniform(17, 40)), lag_max = static_cast<int>(rng.uniform(lag_min, 143));
        std::vector<Word32> a(144, 7), b(144, 7);
        zeps::ref::amr::doubled_lag_dots(v.data() + 143, n, lag_max, lag_min, a.data());
        zeps::ref::amr::doubled_lag_dots_scalar(v.data() + 143, n, lag_max, lag_min, b.data());
        ASSERT_EQ(a, b) << "round " << round;
    }
}

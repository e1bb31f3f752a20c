// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR decoder kernels that replace a saturating multiply-accumulate chain
// by a plain sum when the operands bound it (amr/mac_bound.h): each against
// the reference's chain written out here, on random operands swept in
// amplitude across the bound (where the fast forms switch path and the
// chains begin to saturate), at full scale and on -32768; and div_s against
// the reference's restoring division, norm_s and norm_l against their shift loops.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "amr/dec_excitation.h"
#include "amr/dec_lpc.h"
#include "amr/dec_param.h"
#include "amr/dec_pitch.h"
#include "amr/dec_post.h"

namespace {

using namespace zeps::ref;
using namespace zeps::ref::amr_dec;
using V16 = std::vector<std::int16_t>;

/// Random samples of magnitude at most amp (amp 32768 includes -32768).
V16 noise(std::mt19937& g, int n, std::int32_t amp) {
    std::uniform_int_distribution<std::int32_t> d(-amp, amp > 32767 ? 32767 : amp);
    V16 v(static_cast<std::size_t>(n));
    for (auto& x : v) x = static_cast<std::int16_t>(d(g));
    return v;
}

/// Amplitudes from quiet to full scale, dense around the bounds of 11-tap Q12 filters.
const std::int32_t kAmps[] = {1, 300, 3000, 9000, 16000, 24000, 32000, 32768};

TEST(AmrDecBounds, DivSIsTheRestoringDivision) {
    auto restoring = [](Word16 num, Word16 den) {
        Word32 n = num;
        Word16 out = 0;
        for (int i = 0; i < 15; ++i) {
            out = static_cast<Word16>(out << 1);
            n <<= 1;
            if (n >= den) { n -= den; ++out; }
        }
        return out;
    };
    const Word16 dens[] = {1, 2, 3, 7, 255, 4096, 16383, 16384, 16385, 32766, 32767};
    for (Word16 den : dens)
        for (std::int32_t num = 1; num < den; num++) ASSERT_EQ(div_s(static_cast<Word16>(num), den), restoring(static_cast<Word16>(num), den)) << num << "/" << den;
    std::mt19937 g(7);
    std::uniform_int_distribution<int> d(1, 32767);
    for (int k = 0; k < 200000; k++) {
        Word16 a = static_cast<Word16>(d(g)), b = static_cast<Word16>(d(g));
        if (a > b) std::swap(a, b);
        if (a == b) continue;
        ASSERT_EQ(div_s(a, b), restoring(a, b)) << a << "/" << b;
    }
}

TEST(AmrDecBounds, NormIsTheShiftLoop) {
    auto loop = [](std::int64_t v, std::int64_t top) {
        if (v == 0) return 0;
        if (v < 0) v = ~v;
        int n = 0;
        for (; v < top; v <<= 1) n++;
        return n;
    };
    for (std::int32_t a = -32768; a <= 32767; a++) {
        const int want = a == -1 ? 15 : loop(a, 0x4000);
        ASSERT_EQ(norm_s(static_cast<Word16>(a)), want) << a;
        const Word32 l = static_cast<Word32>(static_cast<std::uint32_t>(a) * 65537u);  // both halves set
        ASSERT_EQ(norm_l(l), l == -1 ? 31 : loop(l, 0x40000000)) << l;
        ASSERT_EQ(norm_l(a), a == -1 ? 31 : loop(a, 0x40000000)) << a;
    }
    EXPECT_EQ(norm_l(MIN_32), 0);
    EXPECT_EQ(norm_l(MAX_32), 0);
}

TEST(AmrDecBounds, EnergyIsTheClampedChain) {
    std::mt19937 g(1);
    for (std::int32_t amp : kAmps)
        for (int n : {1, 7, 8, 22, 40, 160})
            for (int shift : {0, 2}) {
                V16 x = noise(g, n, amp);
                if (amp == 32768) std::fill(x.begin(), x.begin() + std::min(n, 2), std::int16_t{-32768});  // one pmaddwd of two -32768
                Word32 chain = L_mult(shr(x[0], static_cast<Word16>(shift)), shr(x[0], static_cast<Word16>(shift)));
                for (int i = 1; i < n; i++)
                    chain = L_mac(chain, shr(x[i], static_cast<Word16>(shift)), shr(x[i], static_cast<Word16>(shift)));
                EXPECT_EQ(energy_sat(x.data(), n, shift), chain) << amp << " " << n << " " << shift;
                const std::int64_t plain = sum_squares_scalar(x.data(), n, shift);
                EXPECT_EQ(std::min<std::int64_t>(2 * plain, MAX_32), chain) << amp << " " << n << " " << shift;
#if defined(__SSSE3__)
                EXPECT_EQ(sum_squares_lanes(x.data(), n, shift), plain) << amp << " " << n << " " << shift;
#endif
            }
}

/// Q12 filter a(0) = 4096 with random taps of magnitude at most amp.
V16 filter(std::mt19937& g, std::int32_t amp) {
    V16 a = noise(g, kMp1, amp);
    a[0] = 4096;
    return a;
}

/// residu and, on operands inside the plain bound, each plain form against the chain
/// (x[-10..lg-1] in a vector of exactly that size, so that ASan sees any read outside it).
void check_residu(const V16& a, const V16& x, int lg, const char* what) {
    V16 fast(static_cast<std::size_t>(lg), 0x5a5a), chain(static_cast<std::size_t>(lg));
    residu(a.data(), x.data() + kM, fast.data(), lg);
    residu_chain(a.data(), x.data() + kM, chain.data(), lg);
    ASSERT_EQ(fast, chain) << what;
    if (!chain_exact(mag_sum(a.data(), kMp1), mag_max(x.data(), lg + kM))) return;
    V16 plain(static_cast<std::size_t>(lg), 0x5a5a);
    residu_plain_scalar(a.data(), x.data() + kM, plain.data(), lg);
    ASSERT_EQ(plain, chain) << what;
#if defined(__SSSE3__)
    V16 lanes(static_cast<std::size_t>(lg), 0x5a5a);
    residu_plain_lanes(a.data(), x.data() + kM, lanes.data(), lg);
    ASSERT_EQ(lanes, chain) << what;
    if (lg != kLSubfr) return;
    V16 paired(static_cast<std::size_t>(lg), 0x5a5a);
    residu_plain_pairs40(a.data(), x.data() + kM, paired.data());
    ASSERT_EQ(paired, chain) << what;
#endif
}

TEST(AmrDecBounds, ResiduIsTheChain) {
    std::mt19937 g(2);
    for (int lg : {kLSubfr, 13})  // whole blocks of eight; a scalar tail
        for (std::int32_t famp : {2000, 6000, 12000, 32768})
            for (std::int32_t amp : kAmps)
                for (int k = 0; k < 40; k++) {
                    const V16 a = filter(g, famp);
                    const V16 x = noise(g, kM + lg, amp);
                    check_residu(a, x, lg, "random");
                    if (HasFatalFailure()) return;
                }
    // At the bound: taps summing to 32767 on -32768 take the plain sums (2 * 32767 * 32768 <= MAX_32),
    // one more LSB of tap takes the chain; both end at the chain's values. With the signs of
    // the samples matched to the taps', the plain sums reach the rounding's and the shift's
    // saturations (2 s beyond 2^28).
    for (Word16 last : {Word16{1671}, Word16{1672}})
        for (int signs = 0; signs < 2; signs++) {
            V16 a(kMp1, 3000), x(kM + kLSubfr, -32768);
            a[0] = 4096;
            a[kM] = last;
            if (signs != 0)
                for (int i = 0; i < kM + kLSubfr; i++) x[static_cast<std::size_t>(i)] = (i % 3 == 0) ? 32767 : -32768;
            check_residu(a, x, kLSubfr, "bound");
        }
    // Sums just around the saturations of round(L_shl(2 s, 3)) (s = 4096 q + r in output 0):
    // the rounding's carry at s = 0x07fff800, the shift's at |2 s| = 2^28.
    for (std::int32_t s : {0x07fff7ff, 0x07fff800, 0x08000000, -0x08000000, -0x08000001}) {
        const std::int32_t q = std::clamp(s / 4096, -32768, 32767);
        V16 a(kMp1, 0), x(kM + kLSubfr, 0);
        a[0] = 4096;
        a[1] = 1;
        x[kM] = static_cast<Word16>(q);
        x[kM - 1] = static_cast<Word16>(s - 4096 * q);
        check_residu(a, x, kLSubfr, "rounding");
    }
}

/// Syn_filt with the reference's chain for every output, and its saturation report.
bool syn_filt_ref(const Word16* a, const Word16* x, Word16* y, int lg, Word16* mem) {
    Word16 tmp[kM + kLFrame];
    Flag ovf = false;
    for (int i = 0; i < kM; i++) tmp[i] = mem[i];
    for (int i = 0; i < lg; i++) {
        const Word32 s = L_shl(syn_filt_chain(a, x[i], &tmp[kM + i], ovf), 3, ovf);
        tmp[kM + i] = round_fx(s, ovf);
    }
    for (int i = 0; i < lg; i++) y[i] = tmp[kM + i];
    for (int i = 0; i < kM; i++) mem[i] = y[lg - kM + i];
    return ovf;
}

TEST(AmrDecBounds, SynthesisFilterIsTheChain) {
    std::mt19937 g(3);
    int saturated = 0;
    // Whole blocks of ten, a tail (22: the post-filter's impulse response, 37), subframe and frame.
    for (int lg : {kM, 22, 37, kLSubfr, kLFrame})
        for (std::int32_t famp : {500, 1500, 4000, 32768})
            for (std::int32_t amp : kAmps)
                for (int k = 0; k < 30; k++) {
                    const V16 a = filter(g, famp);
                    const V16 x = noise(g, lg, amp);
                    V16 mem_fast = noise(g, kM, amp), mem_ref = mem_fast;
                    V16 fast(static_cast<std::size_t>(lg), 0x5a5a), ref(static_cast<std::size_t>(lg));
                    const bool ovf_fast = syn_filt(a.data(), x.data(), fast.data(), lg, mem_fast.data(), true);
                    const bool ovf_ref = syn_filt_ref(a.data(), x.data(), ref.data(), lg, mem_ref.data());
                    ASSERT_EQ(fast, ref) << lg << " " << famp << " " << amp << " " << k;
                    ASSERT_EQ(mem_fast, mem_ref);
                    ASSERT_EQ(ovf_fast, ovf_ref) << lg << " " << famp << " " << amp << " " << k;
                    saturated += ovf_ref;
                    // In place with the memory inside the output (the post-filter's h[22], mem h[11..20]),
                    // the memory not updated.
                    V16 h(22);
                    for (int i = 0; i < 22; i++) h[static_cast<std::size_t>(i)] = i < lg ? x[static_cast<std::size_t>(i)] : 0;
                    V16 h_mem(h.begin() + 11, h.begin() + 21), h_ref(22);
                    const bool ovf_h_ref = syn_filt_ref(a.data(), h.data(), h_ref.data(), 22, h_mem.data());
                    ASSERT_EQ(syn_filt(a.data(), h.data(), h.data(), 22, h.data() + 11, false), ovf_h_ref);
                    ASSERT_EQ(h, h_ref) << lg << " " << famp << " " << amp << " " << k;
                }
    EXPECT_GT(saturated, 0);  // the sweep reaches the saturating chains
}

/// Pred_lt_3or6 with the reference's chain for every output.
void pred_lt_ref(Word16* exc, Word16 T0, Word16 frac, Word16 flag3) {
    Word16* x0 = exc - T0;
    frac = negate(frac);
    if (flag3 != 0) frac = shl(frac, 1);
    if (frac < 0) {
        frac = add(frac, 6);
        x0--;
    }
    for (int j = 0; j < kLSubfr; j++) {
        const Word16* x1 = x0++;
        const Word16* x2 = x0;
        Word32 s = 0;
        for (int i = 0, k = 0; i < 10; i++, k += 6) {
            s = L_mac(s, x1[-i], zeps::amr_dec_tab::inter_6[frac + k]);
            s = L_mac(s, x2[i], zeps::amr_dec_tab::inter_6[6 - frac + k]);
        }
        exc[j] = round_fx(s);
    }
}

TEST(AmrDecBounds, PitchInterpolationIsTheChain) {
    std::mt19937 g(4);
    for (std::int32_t amp : kAmps)
        for (Word16 T0 = kPitMinMR122 - 1; T0 <= kPitMax + 1; T0 = static_cast<Word16>(T0 + (T0 < 24 ? 1 : 3)))
            for (Word16 flag3 : {Word16{0}, Word16{1}})
                for (Word16 frac = flag3 != 0 ? -1 : -2; frac <= (flag3 != 0 ? 1 : 3); frac++) {
                    V16 fast = noise(g, kExcHist + kLSubfr, amp);
                    if (amp == 32768) fast[kExcHist - static_cast<std::size_t>(T0)] = -32768;
                    V16 ref = fast;
                    pred_lt_3or6(fast.data() + kExcHist, T0, frac, kLSubfr, flag3);
                    pred_lt_ref(ref.data() + kExcHist, T0, frac, flag3);
                    ASSERT_EQ(fast, ref) << amp << " " << T0 << " " << frac << " " << flag3;
                }
}

}  // namespace

namespace {

TEST(AmrDecBounds, PostProcessIsTheChain) {
    std::mt19937 g(5);
    std::uniform_int_distribution<int> d16(-32768, 32767), dlo(0, 32767);
    for (std::int32_t amp : kAmps)
        for (int trial = 0; trial < 40; trial++) {
            // any state, including hi/lo pairs outside what the filter leaves behind
            PostProcessState s0{};
            Word16* f[6] = {&s0.y2_hi, &s0.y2_lo, &s0.y1_hi, &s0.y1_lo, &s0.x0, &s0.x1};
            for (Word16* v : f) *v = static_cast<Word16>(trial % 4 == 0 ? d16(g) : (trial % 4 == 1 ? -32768 : dlo(g)));
            V16 fast = noise(g, 160, amp);
            if (trial % 3 == 0)
                for (std::size_t i = 0; i < fast.size(); i += 2) fast[i] = static_cast<Word16>(i % 4 == 0 ? -32768 : 32767);
            V16 ref = fast;
            PostProcessState a = s0, b = s0;
            // in calls of 1 .. 113 samples (a one-sample call passes its pair state on as it was)
            for (int at = 0, k = 0; at < 160; k++) {
                const int n = std::min(160 - at, trial % 2 ? 160 : std::array<int, 6>{1, 1, 2, 3, 40, 113}[k % 6]);
                post_process(a, fast.data() + at, n);
                post_process_chain(b, ref.data() + at, n);
                at += n;
            }
            ASSERT_EQ(fast, ref) << amp << " " << trial;
            ASSERT_EQ(std::vector<Word16>({a.y2_hi, a.y2_lo, a.y1_hi, a.y1_lo, a.x0, a.x1}),
                      std::vector<Word16>({b.y2_hi, b.y2_lo, b.y1_hi, b.y1_lo, b.x0, b.x1})) << amp << " " << trial;
        }
}

TEST(AmrDecBounds, PostProcessInputIsTheWideSum) {
    // at full scale of both signs (the largest sums) and random, every tail length
    std::mt19937 g(9);
    for (int pattern = 0; pattern < 4; pattern++)
        for (int n = 1; n <= 83; n += (n < 17 ? 1 : 11)) {
            V16 x = noise(g, n + 2, 32768);
            for (std::size_t i = 0; pattern < 3 && i < x.size(); i++)
                x[i] = static_cast<Word16>((i % 2 == 0) == (pattern == 0) ? -32768 : (pattern == 2 ? 0 : 32767));
            std::vector<std::int32_t> wide(static_cast<std::size_t>(n)), lanes(wide.size(), 0x5a5a5a5a), scalar(wide.size(), 0x5a5a5a5a);
            for (int i = 0; i < n; i++)
                wide[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(2 * (7699 * std::int64_t{x[i + 2]} - 15398 * std::int64_t{x[i + 1]} + 7699 * std::int64_t{x[i]}));
            post_hp::input_part(x.data() + 2, lanes.data(), n, kPostProcessTaps);
            post_hp::input_part_scalar(x.data() + 2, scalar.data(), n, kPostProcessTaps);
            ASSERT_EQ(lanes, wide) << pattern << " " << n;
            ASSERT_EQ(scalar, wide) << pattern << " " << n;
        }
}

TEST(AmrDecBounds, LsfInterpolationIsTheChain) {
    // every pair of edge values in every lane, at each subframe weight
    const std::int16_t edges[] = {-32768, -32767, -16385, -3, -1, 0, 1, 3, 16383, 32766, 32767};
    for (int start : {0, 40, 80, 120})
        for (std::int16_t o : edges)
            for (std::int16_t n : edges) {
                V16 old_lsf(kM), new_lsf(kM);
                for (int i = 0; i < kM; i++) {
                    old_lsf[static_cast<std::size_t>(i)] = i % 2 ? o : n;
                    new_lsf[static_cast<std::size_t>(i)] = i % 2 ? n : o;
                }
                V16 out(kM, 0x5a5a), ref(kM);
                int_lsf(old_lsf.data(), new_lsf.data(), start, out.data());
                for (int i = 0; i < kM; i++) {
                    const Word16 a = old_lsf[static_cast<std::size_t>(i)], b = new_lsf[static_cast<std::size_t>(i)];
                    ref[static_cast<std::size_t>(i)] = start == 0    ? add(sub(a, shr(a, 2)), shr(b, 2))
                                                       : start == 40 ? add(shr(a, 1), shr(b, 1))
                                                       : start == 80 ? add(shr(a, 2), sub(b, shr(b, 2)))
                                                                     : b;
                }
                ASSERT_EQ(out, ref) << start << " " << o << " " << n;
            }
}

TEST(AmrDecBounds, DispersionIsTheChain) {
    namespace t = zeps::amr_dec_tab;
    const std::int16_t* imps[] = {t::ph_imp_low, t::ph_imp_mid, t::ph_imp_low_MR795, t::ph_imp_mid_MR795};
    std::mt19937 g(17);
    std::uniform_int_distribution<int> count(1, 10), at(0, kLSubfr - 1), sign(0, 1);
    for (const std::int16_t* imp : imps)
        for (int trial = 0; trial < 400; trial++) {
            // pulses whose magnitudes sum to at most 32767 (full scale in one pulse or shared)
            V16 sav(kLSubfr, 0);
            const int want = trial < 80 ? 1 : count(g);
            std::int32_t budget = trial % 3 == 0 ? 32767 : 1 + static_cast<std::int32_t>(g() % 32767);
            for (int k = 0; k < want && budget > 0; k++) {
                const std::int32_t m = k + 1 == want ? budget : 1 + static_cast<std::int32_t>(g() % static_cast<std::uint32_t>(budget));
                std::int16_t& slot = sav[static_cast<std::size_t>(trial < 80 ? trial % kLSubfr : at(g))];
                if (slot != 0) continue;
                slot = static_cast<std::int16_t>(sign(g) ? m : -m);
                budget -= m;
            }
            V16 pos;
            for (int i = 0; i < kLSubfr; i++)
                if (sav[static_cast<std::size_t>(i)] != 0) pos.push_back(static_cast<std::int16_t>(i));
            const int nze = static_cast<int>(pos.size());
            V16 chain(kLSubfr, 0), lanes(kLSubfr, 0), scalar(kLSubfr, 0);
            for (int n = 0; n < nze; n++) disperse_chain(chain.data(), sav[static_cast<std::size_t>(pos[static_cast<std::size_t>(n)])], pos[static_cast<std::size_t>(n)], imp);
            disperse_plain(lanes.data(), sav.data(), pos.data(), nze, imp);
            disperse_plain_scalar(scalar.data(), sav.data(), pos.data(), nze, imp);
            ASSERT_EQ(lanes, chain) << trial;
            ASSERT_EQ(scalar, chain) << trial;
        }
}

TEST(AmrDecBounds, ShiftAndScaleAreTheOperators) {
    const Word32 vals[] = {0, 1, -1, 0x7fff, 0x8000, -0x8000, -0x8001, 0x3fff7fff, 0x3fff8000, 0x0fffffff, 0x10000000, -0x10000000, -0x10000001, 0x3fffffff, 0x40000000,
                           MAX_32, MIN_32, 12345678, -87654321};
    for (Word32 v : vals)
        for (int n = 0; n <= 31; n++) {
            ASSERT_EQ(shl_sat32(v, n), L_shl(v, static_cast<Word16>(n))) << v << " " << n;
            // the rounded shift of the excitation sum (ph_disp)
            const std::int64_t o = ((std::int64_t{v} << n) + 0x8000) >> 16;
            ASSERT_EQ(static_cast<Word16>(std::clamp<std::int64_t>(o, MIN_16, MAX_16)), round_fx(L_shl(v, static_cast<Word16>(n)))) << v << " " << n;
        }
    const Word16 s[] = {-32768, -32767, -4097, -4096, -1, 0, 1, 4095, 4096, 8191, 32767};
    for (Word16 x : s)
        for (Word16 y : s) ASSERT_EQ(scale_q12(x, y), extract_h(L_shl(L_mult(x, y), 3))) << x << " " << y;
    std::mt19937 g(6);
    std::uniform_int_distribution<int> d16(-32768, 32767);
    for (int k = 0; k < 100000; k++) {
        const Word16 x = static_cast<Word16>(d16(g)), y = static_cast<Word16>(d16(g));
        ASSERT_EQ(scale_q12(x, y), extract_h(L_shl(L_mult(x, y), 3))) << x << " " << y;
    }
}

}  // namespace

namespace {

TEST(AmrDecBounds, TiltCorrelationAndAgcAreTheChains) {
    std::mt19937 g(8);
    for (std::int32_t amp : kAmps)
        for (int trial = 0; trial < 30; trial++) {
            V16 h = noise(g, 22, amp);
            if (trial % 5 == 1) std::fill(h.begin() + 3, h.begin() + 5, std::int16_t{-32768});
            if (trial % 5 == 2) std::fill(h.begin(), h.end(), static_cast<std::int16_t>(trial % 2 ? 32767 : -32768));
            Word32 chain = L_mult(h[0], h[1]);
            for (int i = 1; i < 21; i++) chain = L_mac(chain, h[i], h[i + 1]);
            ASSERT_EQ(lag1_correlation(h.data(), 22, 2 * sum_squares_scalar(h.data(), 22, 0)), chain) << amp << " " << trial;

            // agc against its loop with the basic operators, from any past gain,
            // on a subframe and on a length the gain steps leave a tail of
            const int len = trial % 2 ? 40 : 13;
            const V16 in = noise(g, len, amp), out0 = noise(g, len, std::max<std::int32_t>(1, amp / 2));
            for (Word16 fac : {Word16{29491}, Word16{0}, Word16{32767}, Word16{-3}}) {
                const Word16 past = static_cast<Word16>(trial % 3 == 0 ? -32768 : (trial % 3 == 1 ? 32767 : 4096));
                V16 fast = out0, ref = out0;
                Word16 pf = past, pr = past;
                agc(pf, in.data(), fast.data(), fac, len);
                Word16 g0 = 0;
                if (!agc_gain(in.data(), ref.data(), len, g0)) {
                    pr = 0;
                } else {
                    g0 = mult(g0, sub(32767, fac));
                    for (int i = 0; i < len; i++) {
                        pr = add(mult(pr, fac), g0);
                        ref[i] = extract_h(L_shl(L_mult(ref[i], pr), 3));
                    }
                }
                ASSERT_EQ(fast, ref) << amp << " " << trial << " " << fac;
                ASSERT_EQ(pf, pr) << amp << " " << trial << " " << fac;
            }
        }
}

}  // namespace

namespace {

TEST(AmrDecBounds, LspPolynomialIsTheChain) {
    std::mt19937 g(9);
    std::uniform_int_distribution<int> d16(-32768, 32767);
    int fell_back = 0;
    for (int k = 0; k < 20000; k++) {
        Word16 lsp[kM];
        for (Word16& v : lsp) v = static_cast<Word16>(d16(g));
        if (k % 4 == 0) std::sort(lsp, lsp + kM, [](Word16 a, Word16 b) { return a > b; });  // as LSPs are
        if (k % 7 == 0)
            for (int i = 0; i < kM; i += 2) lsp[i] = static_cast<Word16>(k % 2 ? -32768 : 32767);
        for (int odd = 0; odd < 2; odd++) {
            Word32 plain[6], chain[6];
            get_lsp_pol(lsp + odd, chain);
            if (!get_lsp_pol_plain(lsp + odd, plain)) {
                fell_back++;
                continue;
            }
            for (int i = 0; i < 6; i++) ASSERT_EQ(plain[i], chain[i]) << k << " " << i;
        }
        Word32 f1[6], f2[6], c1[6], c2[6];
        get_lsp_pol(lsp, c1);
        get_lsp_pol(lsp + 1, c2);
        Word32 p1[6], p2[6];
        const bool both = get_lsp_pol_plain(lsp, p1) && get_lsp_pol_plain(lsp + 1, p2);
        ASSERT_EQ(get_lsp_pols_plain(lsp, f1, f2), both) << k;
        if (both) {
            for (int i = 0; i < 6; i++) ASSERT_TRUE(f1[i] == c1[i] && f2[i] == c2[i]) << k << " " << i;
        }
    }
    EXPECT_GT(fell_back, 0);  // the saturating inputs were reached
}

}  // namespace

namespace {

TEST(AmrDecBounds, ExcitationMixIsTheChain) {
    std::mt19937 g(10);
    std::uniform_int_distribution<int> d16(-32768, 32767);
    for (std::int32_t amp : kAmps)
        for (int trial = 0; trial < 40; trial++) {
            const V16 x0 = noise(g, 40, amp), inno = noise(g, 40, amp);
            const Word16 gains[] = {static_cast<Word16>(d16(g)), 0, 1, 32767, -32767, -32768, 16384};
            const Word16 pf = gains[trial % 7], cb = gains[(trial / 7) % 7];
            for (int shift : {1, 2}) {
                // the reference's operators on each sample
                V16 ref = x0;
                for (int i = 0; i < 40; i++)
                    ref[i] = round_fx(L_shl(L_mac(L_mult(ref[i], pf), inno[i], cb), static_cast<Word16>(shift)));
                V16 fast = x0, chain = x0;
                excitation_mix(fast.data(), inno.data(), pf, cb, shift, 40);
                excitation_mix_chain(chain.data(), inno.data(), pf, cb, shift, 40);
                ASSERT_EQ(fast, ref) << amp << " " << pf << " " << cb << " " << shift;
                ASSERT_EQ(chain, ref) << amp << " " << pf << " " << cb << " " << shift;
                if (pf == MIN_16 || cb == MIN_16) continue;
                V16 plain = x0;
                excitation_mix_plain_scalar(plain.data(), inno.data(), pf, cb, shift, 37);  // a tail too
                ASSERT_TRUE(std::equal(plain.begin(), plain.begin() + 37, ref.begin())) << amp << " " << pf << " " << cb;
            }
        }
}

}  // namespace

namespace {

TEST(AmrDecBounds, SharpenedExcitationIsTheChain) {
    std::mt19937 g(16);
    std::uniform_int_distribution<int> d16(-32768, 32767);
    for (std::int32_t amp : kAmps)
        for (int trial = 0; trial < 40; trial++) {
            V16 x = noise(g, 40, amp);
            if (trial % 5 == 0) x[static_cast<std::size_t>(trial % 40)] = MIN_16;
            const Word16 gains[] = {static_cast<Word16>(d16(g)), 0, 1, 32767, -32767, -32768, 16385};
            const Word16 sharp = gains[trial % 7], gp = gains[(trial / 7) % 7];
            for (int down : {0, 1}) {
                V16 ref(40), fast(40, 0x5a5a), chain(40, 0x5a5a);
                for (int i = 0; i < 40; i++)
                    ref[i] = round_fx(L_shr(L_mult(mult(x[i], sharp), gp), static_cast<Word16>(down)));
                sharpened_excitation(x.data(), fast.data(), sharp, gp, down, 40);
                sharpened_excitation_chain(x.data(), chain.data(), sharp, gp, down, 40);
                ASSERT_EQ(fast, ref) << amp << " " << sharp << " " << gp << " " << down;
                ASSERT_EQ(chain, ref) << amp << " " << sharp << " " << gp << " " << down;
                if (sharp == MIN_16) continue;
                V16 plain(40, 0x5a5a);
                sharpened_excitation_plain(x.data(), plain.data(), sharp, gp, down, 40);
                ASSERT_EQ(plain, ref) << amp << " " << sharp << " " << gp << " " << down;
            }
        }
}

TEST(AmrDecBounds, WeightAiAndScaleQ12AreTheChains) {
    namespace t = zeps::amr_dec_tab;
    std::mt19937 g(17);
    std::uniform_int_distribution<int> d16(-32768, 32767);
    const std::int16_t* const facs[] = {t::gamma3, t::gamma4, t::gamma3_MR122, t::gamma4_MR122};
    for (int trial = 0; trial < 400; trial++) {
        V16 a(11);
        for (auto& v : a) v = static_cast<Word16>(trial % 4 == 0 ? (d16(g) < 0 ? MIN_16 : MAX_16) : d16(g));
        V16 fast(11, 0x5a5a), chain(11, 0x5a5a);
        weight_ai(a.data(), facs[trial % 4], fast.data());
        weight_ai_chain(a.data(), facs[trial % 4], chain.data());
        ASSERT_EQ(fast, chain) << trial;
        // per-sample Q12 gains over the whole range, a tail too
        V16 x = noise(g, 43, trial % 3 == 0 ? 32768 : 3000), gains(43), ref;
        for (auto& v : gains) v = static_cast<Word16>(trial % 5 == 0 ? MIN_16 : d16(g));
        ref = x;
        for (int i = 0; i < 43; i++) ref[i] = extract_h(L_shl(L_mult(ref[i], gains[i]), 3));
        scale_q12_block(x.data(), gains.data(), 43);
        ASSERT_EQ(x, ref) << trial;
    }
}

TEST(AmrDecBounds, PreemphasisIsTheChain) {
    std::mt19937 g(11);
    std::uniform_int_distribution<int> d16(-32768, 32767);
    for (std::int32_t amp : kAmps)
        for (int L : {1, 8, 9, 16, 17, 40})
            for (Word16 gain : {Word16{0}, Word16{1}, Word16{21299}, Word16{32767}, Word16{-1}, Word16{-32767}, Word16{-32768},
                                static_cast<Word16>(d16(g))}) {
                V16 fast = noise(g, L, amp);
                if (amp == 32768) fast[0] = -32768;
                V16 ref = fast;
                Word16 mf = static_cast<Word16>(d16(g)), mr = mf;
                preemphasis(mf, fast.data(), gain, L);
                preemphasis_chain(mr, ref.data(), gain, L);
                ASSERT_EQ(fast, ref) << amp << " " << L << " " << gain;
                ASSERT_EQ(mf, mr);
            }
}

}  // namespace

TEST(AmrDecBounds, PackedBitsToParamIsTheSerialForm) {
    std::mt19937 g(7);
    std::uniform_int_distribution<int> pick(0, 3);
    for (int mode = 0; mode <= MRDTX; mode++) {
        int widths = 0;
        for (int i = 0; i < kPrmNo[mode]; i++) widths += bitno(mode)[i];
        ASSERT_EQ(kBitsNo[mode], widths) << "mode " << mode;
    }
    for (int mode = 0; mode <= MRDTX; mode++)
        for (int trial = 0; trial < 200; trial++) {
            // Words 0 and 1 mostly, some other nonzero values (read as 1), some frames all zero or all one.
            V16 bits(kSerialBits);
            for (auto& b : bits) {
                const int c = pick(g);
                b = static_cast<std::int16_t>(trial == 0 ? 0 : trial == 1 ? 1 : c < 2 ? c : c == 2 ? -32768 : 0x100);
            }
            std::array<Word16, kMaxPrm> fast{}, ref{};
            bits2prm(mode, bits.data(), fast.data());
            bits2prm_serial(mode, bits.data(), ref.data());
            ASSERT_EQ(fast, ref) << "mode " << mode << " trial " << trial;
        }
}

TEST(AmrDecBounds, MagnitudeMaxIsTheScalarForm) {
    std::mt19937 g(11);
    const std::int16_t peaks[] = {0, 1, -1, 32767, -32767, -32768};
    for (int n = 0; n <= 60; n++)
        for (std::int32_t amp : kAmps)
            for (int at = 0; at < n; at += 3)
                for (std::int16_t peak : peaks) {
                    V16 x = noise(g, n + 1, amp);
                    x[static_cast<std::size_t>(at)] = peak;
                    ASSERT_EQ(mag_max(x.data(), n), mag_max_scalar(x.data(), n)) << n << " " << amp << " " << at;
                }
}

TEST(AmrDecBounds, LsfDeviationIsTheChain) {
    std::mt19937 g(13);
    std::uniform_int_distribution<int> any(-32768, 32767), pos(1, 32767);
    const std::int16_t edges[] = {-32768, -32767, -16385, -16384, -1, 0, 1, 2, 3, 8191, 8192, 16383, 16384, 32766, 32767};
    auto check = [](std::int16_t lsp, std::int16_t aver) {
        ASSERT_EQ(lsf_deviation(lsp, aver), lsf_deviation_chain(lsp, aver)) << lsp << " " << aver;
    };
    for (std::int16_t lsp : edges)
        for (std::int16_t aver : edges) check(lsp, aver);
    for (int k = 0; k < 200000; k++) {
        const auto aver = static_cast<std::int16_t>(k % 4 == 0 ? (1 << (k / 4 % 15)) + (k / 64 % 3) - 1 : pos(g));
        const int near = aver + (any(g) >> (k % 16));
        check(static_cast<std::int16_t>(k % 2 == 0 ? std::clamp(near, -32768, 32767) : any(g)), aver);
    }
}

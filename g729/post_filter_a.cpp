// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex A post-filter of one 40-sample subframe (ITU-T G.729 Annex A
// A.4.2, postfilt.c): long-term filter on the residual of A(z/0.55) with an
// integer delay searched around the decoded lag, tilt compensation from the
// impulse response of A(z/0.55)/A(z/0.7), short-term filter 1/A(z/0.7) and
// adaptive gain control (AGC factor 0.9). Speech Q0, LP coefficients Q12,
// gains Q15 / Q12.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/args.h"
#include "common/exports.h"
#include "common/fast_ops.h"
#include "common/pitch_simd.h"
#include "g729/codec_kernels.h"
#include "g729/post_filter_simd.h"

ZEPS_BEGIN_VARIANT
namespace {

using namespace g729c;

constexpr int kLh = 22;              // L_H
constexpr Word16 kGamma2 = 18022;    // GAMMA2_PST, 0.55
constexpr Word16 kGamma1 = 22938;    // GAMMA1_PST, 0.70
constexpr Word16 kMu = 26214;        // MU, 0.8
constexpr Word16 kAgcFac = 29491;    // AGC_FAC, 0.9
constexpr Word16 kAgcFac1 = 32767 - kAgcFac;
constexpr Word16 kGammaP = 16384;    // GAMMAP, 0.5
constexpr Word16 kInvGammaP = 21845; // 1 / (1 + GAMMAP)
constexpr Word16 kGammaP2 = 10923;   // GAMMAP / (1 + GAMMAP)

/// The 616-byte state: the residual history, the memory of 1/A(z/0.7), the
/// last 10 input samples, the tilt filter's memory and the AGC gain (Q12).
/// The reference's second history, the residual divided by 4, is shr(res2,
/// 2) sample for sample: it is formed from res2 over the span a subframe
/// reads and not kept (its place in the block stays zero).
struct PostFilterAState {
    Word16 res2[kPitMax];
    Word16 unused[kPitMax];
    Word16 mem_syn_pst[kOrder];
    Word16 syn[kOrder];
    Word16 mem_pre;
    Word16 past_gain;
};
static_assert(sizeof(PostFilterAState) == 616);

/// The correlations of scal with scal delayed by t0_min .. t0_min + 6 (the
/// reference's L_mac chains from 0); plain when the caller's bound proves
/// the chains exact, then the seven in lanes, four delays a pass (the
/// eighth lane repeats the last delay: nothing before scal - t0_min - 6 is
/// read).
void candidate_correlations(const Word16* scal, int t0_min, bool plain, Word32* corr) {
#if defined(__SSSE3__)
    if (plain) {
        const Word16* d = scal - t0_min;
        alignas(16) std::int32_t c[8] = {};
        _mm_store_si128(reinterpret_cast<__m128i*>(c), g729p::dot4_lanes(scal, d, d - 1, d - 2, d - 3, kSubfr));
        _mm_store_si128(reinterpret_cast<__m128i*>(c + 4), g729p::dot4_lanes(scal, d - 4, d - 5, d - 6, d - 6, kSubfr));
        for (int k = 0; k < 7; ++k) corr[k] = 2 * c[k];
        return;
    }
#endif
    for (int k = 0; k < 7; ++k)
        corr[k] = plain ? 2 * g729p::dot_lanes(scal, scal - t0_min - k, kSubfr)
                        : mac_sum(0, scal, scal - t0_min - k, kSubfr, false);
}

/// pit_pst_filt: res and scal point at the current subframe of buffers
/// holding kPitMax past samples (scal from -t0_max on, followed by zeros to
/// whole lanes of eight).
void pitch_postfilter(const Word16* res, const Word16* scal, Word16 t0_min, Word16 t0_max, Word16* out) {
    // Every correlation and energy below is a sum of 40 products of samples
    // of scal[-t0_max .. 39]; by Cauchy-Schwarz none of their partial sums
    // exceeds the energy of that span, so twice that energy (plus the 1 the
    // energies start from) within 31 bits proves the saturating chains exact.
    // The span is rounded up to whole lanes of eight: the caller's buffer
    // ends in zeros, which add nothing.
    const std::int64_t span = g729p::energy64(scal - t0_max, (t0_max + kSubfr + 7) & ~7);
    const bool plain = 2 * span + 1 <= MAX_32;
    Word32 cor_max = MIN_32;
    Word16 t0 = t0_min;
    // Under that bound every pair sum of the 32-bit lanes is exact too.
    auto dot = [plain](Word32 init, const Word16* a, const Word16* b) {
        return plain ? init + 2 * g729p::dot_lanes(a, b, kSubfr) : mac_sum(init, a, b, kSubfr, false);
    };
    Word32 corr[7] = {};  // t0_max = t0_min + 6
    candidate_correlations(scal, t0_min, plain, corr);
    for (int k = 0; k < 7; ++k) {
        if (L_sub(corr[k], cor_max) > 0) {
            cor_max = corr[k];
            t0 = static_cast<Word16>(t0_min + k);
        }
    }
    const Word32 ener = dot(1, scal - t0, scal - t0);
    const Word32 ener0 = dot(1, scal, scal);
    if (cor_max < 0) cor_max = 0;
    Word32 temp = cor_max;
    if (ener > temp) temp = ener;
    if (ener0 > temp) temp = ener0;
    const Word16 j = norm_l(temp);
    // j normalises the largest of the three: none of the shifts saturates.
    Word16 cmax = round_fx(L_shl_fast(cor_max, j));
    Word16 en = round_fx(L_shl_fast(ener, j));
    const Word16 en0 = round_fx(L_shl_fast(ener0, j));
    temp = L_mult(cmax, cmax);
    temp = L_sub(temp, L_shr(L_mult(en, en0), 1));
    if (temp < 0) {  // prediction gain below 3 dB: no long-term filtering
        std::memcpy(out, res, kSubfr * sizeof(Word16));
        return;
    }
    Word16 g0, gain;
    if (cmax > en) {
        g0 = kInvGammaP;
        gain = kGammaP2;
    } else {
        cmax = shr(mult(cmax, kGammaP), 1);
        en = shr(en, 1);
        const Word16 s = add(cmax, en);
        if (s > 0) {
            gain = div_s(cmax, s);
            g0 = sub(32767, gain);
        } else {
            g0 = 32767;
            gain = 0;
        }
    }
    g729f::ltp_mix(res, t0, g0, gain, out, kSubfr);
}

/// Tilt factor of the compensation filter: MU * r(1)/r(0) of the impulse
/// response of A(z/0.55)/A(z/0.7), 0 when r(1) <= 0.
Word16 tilt_factor(const Word16* ap3, const Word16* ap4) {
    // h[22..31] stay zero: whole lanes of eight, the lag-1 lanes reading h[24].
    alignas(16) Word16 h[kLh + 10] = {};
    std::memcpy(h, ap3, (kOrder + 1) * sizeof(Word16));
    const Word16 zero[kOrder] = {};
    syn_filt(ap4, h, h, kLh, zero);
    // The energy chain's terms are non-negative: it is the doubled exact sum
    // clamped at MAX_32. Within 31 bits it bounds (Cauchy-Schwarz) every
    // partial sum of the lag-1 chain, which is then a plain sum too (in any
    // order: the lanes; the zero padding adds nothing).
    const std::int64_t e = g729p::energy64(h, 24);
    const bool plain = 2 * e <= MAX_32;
    const Word16 temp1 = extract_h(plain ? static_cast<Word32>(2 * e) : MAX_32);
    Word32 L_tmp;
    if (plain) {
        L_tmp = 2 * g729p::dot_lanes(h, h + 1, 24);
    } else {
        L_tmp = L_mult(h[0], h[1]);
        for (int i = 1; i < kLh - 1; ++i) L_tmp = L_mac(L_tmp, h[i], h[i + 1]);
    }
    Word16 temp2 = extract_h(L_tmp);
    if (temp2 <= 0) return 0;
    temp2 = mult(temp2, kMu);
    return div_s(temp2, temp1);
}

/// preemphasis: x[n] -= g x[n-1], with the last sample of the previous call in mem.
void preemphasis(Word16* x, Word16 g, Word16& mem) {
    const Word16 last = x[kSubfr - 1];
    g729f::preemph(x, g, mem, kSubfr);
    mem = last;
}

/// The L_mac chain of (x >> 2)^2 over a subframe: its terms are
/// non-negative, so the chain is the exact doubled sum clamped at MAX_32.
inline Word32 quarter_energy(const Word16* x) {
    std::int64_t e = 0;  // at most 40 * 8192^2 < 2^32
#if defined(__SSSE3__)
    __m128i acc = _mm_setzero_si128();  // each lane at most 10 * 8192^2
    for (int i = 0; i < kSubfr; i += 8) {
        const __m128i v = _mm_srai_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i)), 2);
        acc = _mm_add_epi32(acc, _mm_madd_epi16(v, v));
    }
    alignas(16) std::uint32_t lanes[4] = {};
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes), acc);
    e = std::int64_t{lanes[0]} + lanes[1] + lanes[2] + lanes[3];
#else
    for (int i = 0; i < kSubfr; ++i) {
        const std::int32_t v = x[i] >> 2;
        e += v * v;
    }
#endif
    const std::int64_t d = 2 * e;
    return d > MAX_32 ? MAX_32 : static_cast<Word32>(d);
}

/// Residu of one subframe through A(z/0.55): in lanes when 2 sum|a|
/// max|x| (x[-10..39]) proves every partial sum exact, else the reference's chain.
void residual(const Word16* a, const Word16* x, Word16* y) {
    std::int32_t sum_a = 0;
    for (int j = 0; j <= kOrder; ++j) sum_a += a[j] < 0 ? -std::int32_t{a[j]} : a[j];
    std::int64_t peak = g729p::max_abs(x - 8, kSubfr + 8);
    for (int j = -kOrder; j < -8; ++j) peak = std::max<std::int64_t>(peak, x[j] < 0 ? -std::int64_t{x[j]} : x[j]);
    if (2 * std::int64_t{sum_a} * peak <= MAX_32)
        g729f::residu_plain(a, x, y, kSubfr);
    else
        residu(a, x, y, kSubfr);
}

/// agc: scales out so that its energy follows the input's, smoothed by AGC_FAC.
void agc(const Word16* in, Word16* out, Word16& past_gain) {
    Word32 s = quarter_energy(out);
    if (s == 0) {
        past_gain = 0;
        return;
    }
    Word16 exp = sub(norm_l(s), 1);
    const Word16 gain_out = round_fx(exp < 0 ? L_shr(s, 1) : L_shl_fast(s, exp));
    s = quarter_energy(in);
    Word16 g0;
    if (s == 0) {
        g0 = 0;
    } else {
        const Word16 i = norm_l(s);
        const Word16 gain_in = round_fx(L_shl_fast(s, i));
        exp = sub(exp, i);
        s = L_deposit_l(div_s(gain_out, gain_in));
        s = L_shl_fast(s, 7);
        s = exp < 0 ? L_shl_fast(s, -exp) : L_shr(s, exp);
        s = Inv_sqrt(s);
        g0 = mult(round_fx(L_shl_fast(s, 9)), kAgcFac1);
    }
    // The gain recursion does not depend on the samples: run it first, then
    // scale eight samples a step. |mult(gain, AGC_FAC)| <= 29491 and
    // |g0| <= 32767 - 29491: add and mult are plain (one multiply, shift
    // and add a step).
    Word16 gains[kSubfr];
    std::int32_t g = past_gain;
#pragma GCC unroll 40
    for (int i = 0; i < kSubfr; ++i) {
        g = ((g * kAgcFac) >> 15) + g0;
        gains[i] = static_cast<Word16>(g);
    }
    g729f::agc_scale(out, gains, kSubfr);
    past_gain = static_cast<Word16>(g);
}

}  // namespace

ZepStatus zepsPostFilterGetStateSize_G729A_16s(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(PostFilterAState);
    return zepStsNoErr;
}

ZepStatus zepsPostFilterInit_G729A_16s(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    PostFilterAState st{};
    st.past_gain = 4096;
    std::memcpy(pState, &st, sizeof st);
    return zepStsNoErr;
}

namespace {

/// Post_Filter of one subframe; harmonic false skips pit_pst_filt (G.729
/// Annex B: SID and untransmitted frames), the residual passing through.
void post_subframe_a(Word16 lag, bool harmonic, const Zep16s* pLPC, Zep16s* pSrcDst, Zep8u* pState) {
    // The residual histories go straight between the state and the working
    // buffers (no whole-state copy in and out); the small fields by value.
    auto load = [pState](void* dst, std::size_t at, std::size_t n) { std::memcpy(dst, pState + at, n); };
    auto store = [pState](std::size_t at, const void* src, std::size_t n) { std::memcpy(pState + at, src, n); };
    Word16 mem_syn_pst[kOrder], mem_pre, past_gain;
    load(mem_syn_pst, offsetof(PostFilterAState, mem_syn_pst), sizeof mem_syn_pst);
    load(&mem_pre, offsetof(PostFilterAState, mem_pre), sizeof mem_pre);
    load(&past_gain, offsetof(PostFilterAState, past_gain), sizeof past_gain);

    Word16 t0_min = sub(lag, 3);
    Word16 t0_max = add(t0_min, 6);
    if (t0_max > kPitMax) {
        t0_max = kPitMax;
        t0_min = kPitMax - 6;
    }
    Word16 ap3[kOrder + 1], ap4[kOrder + 1];
    weight_az(pLPC, kGamma2, ap3);
    weight_az(pLPC, kGamma1, ap4);

    Word16 syn[kOrder + kSubfr];
    load(syn, offsetof(PostFilterAState, syn), kOrder * sizeof(Word16));
    std::memcpy(syn + kOrder, pSrcDst, kSubfr * sizeof(Word16));
    // res2 ends in 8 zeros: the divided residual is formed over whole lanes.
    Word16 res2[kPitMax + kSubfr + 8];
    load(res2, offsetof(PostFilterAState, res2), kPitMax * sizeof(Word16));
    std::memset(res2 + kPitMax + kSubfr, 0, 8 * sizeof(Word16));
    residual(ap3, syn + kOrder, res2 + kPitMax);

    Word16 res2_pst[kSubfr];
    if (harmonic) {
        Word16 scal[kPitMax + kSubfr + 8] = {};  // only [from, ...) is read
        const int from = kPitMax - t0_max;
        g729f::quarter(res2 + from, scal + from, (t0_max + kSubfr + 7) & ~7);
        pitch_postfilter(res2 + kPitMax, scal + kPitMax, t0_min, t0_max, res2_pst);
    } else {
        std::memcpy(res2_pst, res2 + kPitMax, sizeof res2_pst);
    }
    preemphasis(res2_pst, tilt_factor(ap3, ap4), mem_pre);
    Word16 out[kSubfr];
    syn_filt(ap4, res2_pst, out, kSubfr, mem_syn_pst);
    std::memcpy(mem_syn_pst, out + kSubfr - kOrder, sizeof mem_syn_pst);  // before the AGC scales out
    agc(syn + kOrder, out, past_gain);

    store(offsetof(PostFilterAState, res2), res2 + kSubfr, kPitMax * sizeof(Word16));
    store(offsetof(PostFilterAState, mem_syn_pst), mem_syn_pst, sizeof mem_syn_pst);
    store(offsetof(PostFilterAState, syn), syn + kSubfr, kOrder * sizeof(Word16));
    store(offsetof(PostFilterAState, mem_pre), &mem_pre, sizeof mem_pre);
    store(offsetof(PostFilterAState, past_gain), &past_gain, sizeof past_gain);
    std::memcpy(pSrcDst, out, sizeof out);
}

}  // namespace

ZepStatus zepsPostFilter_G729A_16s(Zep16s lag, const Zep16s* pLPC, Zep16s* pSrcDst, Zep8u* pState) {
    if (any_null(pLPC, pSrcDst, pState)) return zepStsNullPtrErr;
    if (!in_range<Word16>(lag, 18, 145)) return zepStsRangeErr;
    post_subframe_a(lag, true, pLPC, pSrcDst, pState);
    return zepStsNoErr;
}

ZepStatus zepsPostFilterInactive_G729A_16s(const Zep16s* pLPC, Zep16s* pSrcDst, Zep8u* pState) {
    if (any_null(pLPC, pSrcDst, pState)) return zepStsNullPtrErr;
    post_subframe_a(60, false, pLPC, pSrcDst, pState);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

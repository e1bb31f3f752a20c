// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR open-loop pitch lag search on weighted speech (3GPP TS 26.073
// pitch_ol.c Pitch_ol, p_ol_wgh.c Pitch_ol_wgh, calc_cor.c comp_corr,
// hp_max.c, gmed_n.c) with the VAD option 1 tone/complex hooks (vad1.c) and
// the VAD option 2 correlation sums. Signal Q0 (scaled by 2^-3, 1 or 2^3 for
// the search), correlations Q0 doubled as L_mac leaves them, normalised
// correlations Q15.
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>

#include "amr/amr_vad_tables.h"
#include "amr/ol_corr_lanes.h"
#include "amr/pitch_ol.h"
#include "common/pitch_simd.h"
#include "common/fixed_math.h"

ZEPS_BEGIN_VARIANT
namespace amr {

namespace {

constexpr Word16 kThreshold = 27853;  // favours lower lag ranges (0.85)
constexpr Word16 kToneThr = 21298;    // TONE_THR, 0.65

/// Exact sum(x[i] y[i]) when every partial sum stays below 2^30, scalar.
std::int32_t dot_exact_scalar(const Word16* x, const Word16* y, int n) {
    std::int32_t s = 0;
    for (int i = 0; i < n; ++i) s += std::int32_t{x[i]} * y[i];
    return s;
}

#if defined(__SSSE3__)
/// The same with pmaddwd, eight products per step: every lane and pair sum is
/// a partial sum over a subset of the terms, bounded like the whole sum.
std::int32_t dot_exact_ssse3(const Word16* x, const Word16* y, int n) {
    __m128i acc = _mm_setzero_si128();
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + i));
        acc = _mm_add_epi32(acc, _mm_madd_epi16(a, b));
    }
    acc = _mm_add_epi32(acc, _mm_shuffle_epi32(acc, _MM_SHUFFLE(1, 0, 3, 2)));
    acc = _mm_add_epi32(acc, _mm_shuffle_epi32(acc, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(acc) + dot_exact_scalar(x + i, y + i, n - i);
}
#else
/// Hosts without SSSE3: the scalar sum (the same result).
std::int32_t dot_exact_ssse3(const Word16* x, const Word16* y, int n) { return dot_exact_scalar(x, y, n); }
#endif

/// L_mac chain sum(2 x[i] y[i]). `exact` promises that no partial sum can
/// saturate (by Cauchy-Schwarz: the search signal's energy is below 2^30),
/// so the sum is formed directly; otherwise the saturating chain runs sample
/// by sample.
Word32 mac_sum(const Word16* x, const Word16* y, int n, bool exact) {
    if (exact) return dot_exact_ssse3(x, y, n) * 2;
    Word32 s = 0;
    for (int i = 0; i < n; ++i) s = L_mac(s, x[i], y[i]);
    return s;
}

/// The search signal: scal[-kPitMax .. L_frame-1], scaled as Pitch_ol does.
struct Scaled {
    Word16 buf[kPitMax + kFrameLen] = {};
    Word16* sig;
    Word16 fac;   // 3: scaled down, -3: scaled up, 0: as is
    bool exact;   // no L_mac chain over the signal can saturate
};

/// The energy chain L_mac(... L_mac(0, x0, x0) ...): its terms are not
/// negative, so it is the plain sum clamped at MAX_32.
Word32 energy_chain(const Word16* x, int n) {
    const std::int64_t e = 2 * g729p::energy64(x, n);
    return e > MAX_32 ? MAX_32 : static_cast<Word32>(e);
}

void scale_signal(const Word16* signal, int L_frame, Scaled& s) {
    const Word32 t0 = energy_chain(signal - kPitMax, kPitMax + L_frame);
    s.sig = s.buf + kPitMax;
    s.fac = static_cast<Word16>(scale_for_search(signal - kPitMax, kPitMax + L_frame, t0, s.buf));
    s.exact = g729p::energy64(s.buf, kPitMax + L_frame) < (std::int64_t{1} << 30);
}

/// corr[t] = <sig[n], sig[n-t]> for t = lag_min..lag_max (comp_corr).
void comp_corr(const Scaled& s, int L_frame, int lag_max, int lag_min, Word32* corr) {
    if (s.exact) {
        doubled_lag_dots(s.sig, L_frame, lag_max, lag_min, corr);
        return;
    }
    for (int t = lag_max; t >= lag_min; --t) corr[t] = mac_sum(s.sig, s.sig - t, L_frame, false);
}

/// Largest high-pass filtered correlation, normalised by the high-pass
/// filtered energy, Q15 (hp_max).
Word16 hp_max(const Word32* corr, const Scaled& s, int L_frame, int lag_max, int lag_min) {
    Word32 max = MIN_32;
    for (int i = lag_max - 1; i > lag_min; --i) {
        const Word32 t = L_abs(L_sub(L_sub(L_shl(corr[i], 1), corr[i + 1]), corr[i - 1]));
        if (t >= max) max = t;
    }
    const Word32 t0 = mac_sum(s.sig, s.sig, L_frame, s.exact);
    const Word32 t1 = mac_sum(s.sig, s.sig - 1, L_frame, s.exact);
    const Word32 e = L_abs(L_sub(L_shl(t0, 1), L_shl(t1, 1)));
    const Word16 shift1 = sub(norm_l(max), 1);
    const Word16 max16 = extract_h(L_shl(max, shift1));
    const Word16 shift2 = norm_l(e);
    const Word16 e16 = extract_h(L_shl(e, shift2));
    const Word16 cor = e16 != 0 ? div_s(max16, e16) : Word16{0};
    const Word16 shift = sub(shift1, shift2);
    return shift >= 0 ? shr(cor, shift) : shl(cor, negate(shift));
}

void tone_detection_update(OlVad& vad, bool one_lag_per_frame) {
    vad.tone = shr(vad.tone, 1);
    if (one_lag_per_frame) vad.tone = static_cast<Word16>(shr(vad.tone, 1) | 0x2000);
}

void tone_detection(OlVad& vad, Word32 t0, Word32 t1) {
    const Word16 t = round_fx(t1);
    if (t > 0 && L_msu(t0, t, kToneThr) > 0) vad.tone = static_cast<Word16>(vad.tone | 0x4000);
}

struct LagResult {
    Word16 lag;
    Word16 cor_max;  // normalised correlation
    Word32 rmax;     // correlation at the lag
    Word32 r0;       // energy of the delayed signal
};

/// Best lag of one section of Pitch_ol and its normalised correlation (Lag_max).
LagResult lag_max(OlVad& vad, const Word32* corr, const Scaled& s, bool scal_flag, int L_frame, int lag_max,
                  int lag_min) {
    Word32 max = MIN_32;
    Word16 p_max = static_cast<Word16>(lag_max);
    for (int i = lag_max; i >= lag_min; --i) {
        if (corr[i] >= max) {
            max = corr[i];
            p_max = static_cast<Word16>(i);
        }
    }
    Word32 t0 = mac_sum(s.sig - p_max, s.sig - p_max, L_frame, s.exact);
    const LagResult r0{p_max, 0, max, t0};
    if (vad.kind == OlVad::kVad1) tone_detection(vad, max, t0);
    t0 = Inv_sqrt(t0);
    if (scal_flag) t0 = L_shl(t0, 1);
    const DPF m = L_Extract(max);
    const DPF e = L_Extract(t0);
    t0 = Mpy_32(m.hi, m.lo, e.hi, e.lo);
    LagResult r = r0;
    if (scal_flag) {
        t0 = L_shr(t0, s.fac);
        r.cor_max = extract_h(L_shl(t0, 15));
    } else {
        r.cor_max = extract_l(t0);
    }
    return r;
}

/// Median of the five stored lags (gmed_n with n = 5).
Word16 median5(const Zep16s* ind) {
    constexpr int n = 5;
    Word16 tmp2[n], order[n];
    for (int i = 0; i < n; ++i) tmp2[i] = ind[i];
    int ix = 0;
    for (int i = 0; i < n; ++i) {
        Word16 max = -32767;
        for (int j = 0; j < n; ++j) {
            if (tmp2[j] >= max) {
                max = tmp2[j];
                ix = j;
            }
        }
        tmp2[ix] = -32768;
        order[i] = static_cast<Word16>(ix);
    }
    return ind[order[n >> 1]];
}

/// corrweight entry, kept inside the table for any stored old lag.
Word16 weight_at(int index) {
    return corrweight[index < 0 ? 0 : (index > 250 ? 250 : index)];
}

}  // namespace

Word16 pitch_ol(OlVad& vad, Zep32s rate, const Word16* signal, int pit_min, int L_frame, int idx) {
    if (vad.kind == OlVad::kVad1) tone_detection_update(vad, rate == 0 || rate == 1);
    Scaled s;
    scale_signal(signal, L_frame, s);
    Word32 corr[kPitMax + 1];
    comp_corr(s, L_frame, kPitMax, pit_min, corr);
    const bool scal_flag = rate == 12;

    const int j4 = 4 * pit_min, j2 = 2 * pit_min;
    LagResult r1 = lag_max(vad, corr, s, scal_flag, L_frame, kPitMax, j4);
    const LagResult r2 = lag_max(vad, corr, s, scal_flag, L_frame, j4 - 1, j2);
    const LagResult r3 = lag_max(vad, corr, s, scal_flag, L_frame, j2 - 1, pit_min);
    if (vad.kind == OlVad::kVad1 && idx == 1) vad.best_corr_hp = hp_max(corr, s, L_frame, kPitMax, pit_min);

    if (mult(r1.cor_max, kThreshold) < r2.cor_max) r1 = r2;
    if (mult(r1.cor_max, kThreshold) < r3.cor_max) {
        r1.lag = r3.lag;
        r1.rmax = r3.rmax;
        r1.r0 = r3.r0;
    }
    if (vad.kind == OlVad::kVad2) {
        vad.L_Rmax = L_add(vad.L_Rmax, r1.rmax);
        vad.L_R0 = L_add(vad.L_R0, r1.r0);
    }
    return r1.lag;
}

Word16 pitch_ol_wgh(OlWght& st, OlVad& vad, const Word16* signal, int pit_min, int L_frame, Zep16s* old_lags,
                    Zep16s* ol_gain_flg, int idx) {
    Scaled s;
    scale_signal(signal, L_frame, s);
    Word32 corr[kPitMax + 1];
    comp_corr(s, L_frame, kPitMax, pit_min, corr);

    // Lag_max of p_ol_wgh.c: correlation weighted by lag and around the old lag.
    Word32 max = MIN_32;
    Word16 p_max = kPitMax;
    for (int i = kPitMax; i >= pit_min; --i) {
        DPF c = L_Extract(corr[i]);
        Word32 t0 = Mpy_32_16(c.hi, c.lo, corrweight[250 - (kPitMax - i)]);
        if (st.wght_flg > 0) {
            c = L_Extract(t0);
            t0 = Mpy_32_16(c.hi, c.lo, weight_at(123 + i - st.old_T0_med));
        }
        if (t0 >= max) {
            max = t0;
            p_max = static_cast<Word16>(i);
        }
    }
    const Word32 t0 = mac_sum(s.sig, s.sig - p_max, L_frame, s.exact);
    const Word32 t1 = mac_sum(s.sig - p_max, s.sig - p_max, L_frame, s.exact);
    if (vad.kind == OlVad::kVad2) {
        vad.L_Rmax = L_add(vad.L_Rmax, t0);
        vad.L_R0 = L_add(vad.L_R0, t1);
    } else if (vad.kind == OlVad::kVad1) {
        tone_detection_update(vad, false);
        tone_detection(vad, t0, t1);
    }
    ol_gain_flg[idx] = round_fx(L_msu(t0, round_fx(t1), 13107));  // gain > 0.4

    if (ol_gain_flg[idx] > 0) {
        for (int i = 4; i > 0; --i) old_lags[i] = old_lags[i - 1];
        old_lags[0] = p_max;
        st.old_T0_med = median5(old_lags);
        st.ada_w = 32767;
    } else {
        st.old_T0_med = p_max;
        st.ada_w = mult(st.ada_w, 29491);
    }
    st.wght_flg = st.ada_w < 9830 ? 0 : 1;
    if (vad.kind == OlVad::kVad1 && idx == 1) vad.best_corr_hp = hp_max(corr, s, L_frame, kPitMax, pit_min);
    return p_max;
}

}  // namespace amr
ZEPS_END_VARIANT

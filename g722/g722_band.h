/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.722 sub-band ADPCM stages (G.722 clause 6, block by block as the
// reference functions of the ITU-T G.191 STL: QUANTL, QUANTH, INVQAL, INVQBL,
// INVQAH, LOGSCL, LOGSCH, SCALEL, SCALEH, UPZERO, UPPOL1, UPPOL2, FILTEZ,
// FILTEP, LIMIT) and the transmit and receive QMF (G.722 3.2, 4.4).
//
// Signals (EL, EH, DLT, DH, RLT, RH, SL, SH, SZ, SP) are 16-bit two's
// complement with the standard's 15-bit scaling; the scale factors DETL and
// DETH are Q15 multipliers (32..16384, 8..2048 at rest); the log scale
// factors NBL and NBH lie in 0..18432 and 0..22528; the predictor
// coefficients AL1, AL2 and BL1..BL6 are Q14/Q15 words. Every operation is
// the standard's saturating 16-bit arithmetic (common/basic_op.h) where a
// saturation can occur, and plain integer arithmetic where the value range
// proves it cannot.
#pragma once

#include <cstdint>
#include <cstring>

#include "common/basic_op.h"
#include "g722/g722_tables.h"

ZEPS_BEGIN_VARIANT
namespace g722 {

/// add / sub of the reference (16-bit saturation), written as a clamp so
/// that it compiles to conditional moves.
[[gnu::always_inline]] inline Word16 sat16(int x) {
    return static_cast<Word16>(x > 32767 ? 32767 : x < -32768 ? -32768 : x);
}

/// One sub-band's predictor and quantiser adaptation, named and indexed as
/// in the standard: b[1..6], d[0..6] with [0] the current sample, the pole
/// section's AL1, AL2, PLT0..2, RLT0..2 as scalars (so that they live in
/// registers across a block).
struct Band {
    Word16 a1, a2;
    Word16 b[7];
    Word16 d[7];
    Word16 p0, p1, p2;
    Word16 r0, r1, r2;
    Word16 det;
    Word16 nb;
    Word16 s;   ///< signal estimate SL / SH
    Word16 sz;  ///< zero-section estimate SZL / SZH
};

/// The stored form of a band (no current-sample slots): 22 words.
struct StoredBand {
    Word16 a[2], b[6], d[6], p[2], r[2];
    Word16 det, nb, s, sz;
};

/// The 144-byte state block of the encoder and the decoder: both bands and
/// the delay line of the QMF of that direction (x(j-2)..x(j-23) of the
/// transmit QMF, or the receive QMF's sum/difference history).
struct State {
    StoredBand low, high;
    Word16 qmf[24];
    Word16 reserved[4];
};
static_assert(sizeof(State) == 144);

[[gnu::always_inline]] inline void load(Band& w, const StoredBand& s) {
    w.a1 = s.a[0];
    w.a2 = s.a[1];
    w.b[0] = 0;
    std::memcpy(w.b + 1, s.b, sizeof s.b);
    w.d[0] = 0;
    std::memcpy(w.d + 1, s.d, sizeof s.d);
    w.p0 = 0;
    w.p1 = s.p[0];
    w.p2 = s.p[1];
    w.r0 = 0;
    w.r1 = s.r[0];
    w.r2 = s.r[1];
    w.det = s.det;
    w.nb = s.nb;
    w.s = s.s;
    w.sz = s.sz;
}

[[gnu::always_inline]] inline void store(StoredBand& s, const Band& w) {
    s.a[0] = w.a1;
    s.a[1] = w.a2;
    std::memcpy(s.b, w.b + 1, sizeof s.b);
    std::memcpy(s.d, w.d + 1, sizeof s.d);
    s.p[0] = w.p1;
    s.p[1] = w.p2;
    s.r[0] = w.r1;
    s.r[1] = w.r2;
    s.det = w.det;
    s.nb = w.nb;
    s.s = w.s;
    s.sz = w.sz;
}

/// Reset values (G.722 6.1): DETL = 32, DETH = 8, everything else zero.
inline void reset(State& st) {
    std::memset(&st, 0, sizeof st);
    st.low.det = 32;
    st.high.det = 8;
}

// ------------------------------------------------------------ quantisers

/// QUANTL: 6-bit code IL of the lower sub-band difference el. The decision
/// levels scaled by DETL grow with the level index, so the reference's
/// linear search (first level above |el|, at most level 30) is a binary
/// search.
[[gnu::always_inline]] inline int quantl(Word16 el, Word16 detl) {
    const int sil = el < 0;
    const int wd = sil ? ~el & 0x7FFF : el;  // MAX_16 - (el & MAX_16) for a negative el
    int lo = 0, hi = 30;                      // answer in lo..hi
    while (lo < hi) {
        const int mid = (lo + hi) >> 1;
        if ((g722_q6_x8[mid] * detl) >> 15 > wd) hi = mid;
        else lo = mid + 1;
    }
    return g722_misil[1 - sil][lo];
}

/// QUANTH: 2-bit code IH of the higher sub-band difference eh.
[[gnu::always_inline]] inline int quanth(Word16 eh, Word16 deth) {
    const int sih = eh < 0;
    const int wd = sih ? ~eh & 0x7FFF : eh;
    const int mih = wd >= ((564 * 8 * deth) >> 15) ? 2 : 1;
    static constexpr std::int8_t kMisih[2][3] = {{0, 3, 2}, {0, 1, 0}};  // [positive][mih], [negative][mih]
    return kMisih[sih][mih];
}

/// The inverse quantisers: the signed level times the scale factor
/// (mult(detl, x) of INVQAL, INVQBL, INVQAH; |x| <= 24808, det <= 16384,
/// so the product never saturates).
[[gnu::always_inline]] inline Word16 scaled(Word16 det, int level) {
    return static_cast<Word16>((det * level) >> 15);
}

// ------------------------------------------------------------ adaptation

/// LOGSCL / LOGSCH: the log scale factor update with its limit.
template <int Max>
[[gnu::always_inline]] inline Word16 log_scale(Word16 nb, int w) {
    int nbp = ((nb * 32512) >> 15) + w;  // mult(nb, 32512) + W: no saturation within 0..22528
    nbp = nbp < 0 ? 0 : nbp > Max ? Max : nbp;
    return static_cast<Word16>(nbp);
}

/// SCALEL / SCALEH: the linear scale factor from the log one (offset 64
/// selects the lower band's part of ILA).
template <int Offset>
[[gnu::always_inline]] inline Word16 scale(Word16 nbp) {
    return static_cast<Word16>((g722_ila[((nbp >> 6) & 511) + Offset] + 1) << 2);
}

/// UPZERO: sign-sign update of the six zero-section coefficients, then the
/// shift of the difference line.
[[gnu::always_inline]] inline void upzero(Word16* d, Word16* b) {
    const Word16 wd1 = d[0] == 0 ? 0 : 128;
    const Word16 sg0 = static_cast<Word16>(d[0] >> 15);
    for (int i = 6; i > 0; --i) {
        const Word16 wd2 = (d[i] >> 15) == sg0 ? wd1 : static_cast<Word16>(-wd1);
        b[i] = add(wd2, mult(b[i], 32640));
        d[i] = d[i - 1];
    }
}

/// -1 when the two signals have different signs, else 0 (the reference's
/// comparisons of shr(x, 15)).
[[gnu::always_inline]] inline int signs_differ(Word16 x, Word16 y) { return (x ^ y) >> 15; }

/// UPPOL2: second pole coefficient, limited to +-12288. |AL1| <= 27648
/// (UPPOL1's limit) and |AL2| <= 12288, so only shl(AL1, 2) can saturate;
/// mult(AL2, 32512) and the sums are exact in plain arithmetic. This is
/// the baseline form with the reference's tests as branches; the block
/// coders use uppol_select (g722_simd.h), tested equal to it.
[[gnu::always_inline]] inline void uppol2(Band& w) {
    const int wd1 = sat16(w.a1 * 4);
    int wd2 = wd1, wd3 = -128;
    if (signs_differ(w.p0, w.p1) == 0) wd2 = sat16(-wd1);
    if (signs_differ(w.p0, w.p2) == 0) wd3 = 128;
    const int apl2 = (wd2 >> 7) + wd3 + ((w.a2 * 32512) >> 15);
    w.a2 = static_cast<Word16>(apl2 > 12288 ? 12288 : apl2 < -12288 ? -12288 : apl2);
}

/// UPPOL1: first pole coefficient, limited to +-(15360 - AL2); shifts PLT.
/// (The reference's tests apl1 > wd3, then add(apl1, wd3) < 0 are this
/// clamp: wd3 lies in 3072..27648, and the saturating sum keeps its sign;
/// |AL1| <= 27648 keeps mult(AL1, 32640) + 192 exact.)
[[gnu::always_inline]] inline void uppol1(Band& w) {
    int apl1 = (w.a1 * 32640) >> 15;
    if (signs_differ(w.p0, w.p1) == 0) apl1 += 192;
    else apl1 -= 192;
    const int wd3 = 15360 - w.a2;
    w.p2 = w.p1;
    w.p1 = w.p0;
    w.a1 = static_cast<Word16>(apl1 > wd3 ? wd3 : apl1 < -wd3 ? -wd3 : apl1);
}

/// FILTEZ: zero-section prediction, accumulated from b6 down to b1 with
/// saturation at every step as in the reference.
[[gnu::always_inline]] inline Word16 filtez(const Word16* d, const Word16* b) {
    Word16 sz = 0;
    for (int i = 6; i > 0; --i) sz = add(sz, mult(add(d[i], d[i]), b[i]));
    return sz;
}

/// FILTEP: pole-section prediction; shifts RLT. |AL1| <= 27648 and |AL2|
/// <= 12288, so the two mult() are plain products; add(r, r) and the sum
/// saturate.
[[gnu::always_inline]] inline Word16 filtep(Band& w) {
    w.r2 = w.r1;
    w.r1 = w.r0;
    return sat16(((w.a1 * sat16(2 * w.r1)) >> 15) + ((w.a2 * sat16(2 * w.r2)) >> 15));
}

/// LIMIT: the reconstructed signal to -16384..16383.
[[gnu::always_inline]] inline Word16 limit(int x) {
    return static_cast<Word16>(x > 16383 ? 16383 : x < -16384 ? -16384 : x);
}

/// The common adaptation of a band after its quantised difference dq and
/// its new log scale factor are known (PARREC, RECONS, UPZERO, UPPOL2,
/// UPPOL1, FILTEZ, FILTEP, PREDIC).
template <int Offset>
[[gnu::always_inline]] inline void adapt(Band& w, Word16 dq, Word16 nbp) {
    w.d[0] = dq;
    w.nb = nbp;
    w.det = scale<Offset>(nbp);
    w.p0 = sat16(dq + w.sz);
    w.r0 = sat16(w.s + dq);
    upzero(w.d, w.b);
    uppol2(w);
    uppol1(w);
    w.sz = filtez(w.d, w.b);
    w.s = sat16(filtep(w) + w.sz);
}

constexpr int kLowMax = 18432, kHighMax = 22528;
constexpr int kLowOffset = 64, kHighOffset = 0;

/// The lower sub-band adaptation to the code il (INVQAL, LOGSCL, SCALEL and
/// the predictor), the same in encoder and decoder.
[[gnu::always_inline]] inline void update_low(Band& w, int il) {
    const Word16 dq = scaled(w.det, g722_invqal[il >> 2]);
    adapt<kLowOffset>(w, dq, log_scale<kLowMax>(w.nb, g722_wl_code[il >> 2]));
}

/// Lower sub-band encoder (LSBCOD): one sample xl to its 6-bit code.
[[gnu::always_inline]] inline int encode_low(Band& w, Word16 xl) {
    const int il = quantl(sat16(xl - w.s), w.det);
    update_low(w, il);
    return il;
}

/// Higher sub-band encoder (HSBCOD): one sample xh to its 2-bit code.
[[gnu::always_inline]] inline int encode_high(Band& w, Word16 xh) {
    const int ih = quanth(sat16(xh - w.s), w.det);
    const Word16 dq = scaled(w.det, g722_invqah[ih]);
    adapt<kHighOffset>(w, dq, log_scale<kHighMax>(w.nb, g722_wh_code[ih]));
    return ih;
}

/// Lower sub-band decoder (LSBDEC): the 6-bit code to the limited
/// reconstructed signal, with the mode's inverse quantiser INVQBL
/// (mode index 0..2 for modes 1..3) for the output.
[[gnu::always_inline]] inline Word16 decode_low(Band& w, int il, int mode_index) {
    const Word16 dl = scaled(w.det, g722_invqbl[mode_index][il]);
    const Word16 yl = limit(w.s + dl);  // add, then LIMIT: the clamp of the exact sum
    update_low(w, il);
    return yl;
}

/// Higher sub-band decoder (HSBDEC): the 2-bit code to the limited
/// reconstructed signal.
[[gnu::always_inline]] inline Word16 decode_high(Band& w, int ih) {
    const Word16 dq = scaled(w.det, g722_invqah[ih]);
    adapt<kHighOffset>(w, dq, log_scale<kHighMax>(w.nb, g722_wh_code[ih]));
    return limit(w.r0);
}

// ------------------------------------------------------------ QMF

/// Transmit QMF (G.722 3.2): the pair of input samples (first, second) to
/// the lower and higher sub-band samples. delay[0..23] holds the input
/// history with the newest sample at [0]; the accumulators cannot
/// saturate (sum |h| * 2^15 * 4 < 2^31), so plain integer sums are exact.
[[gnu::always_inline]] inline void qmf_tx(Word16* delay, Word16 first, Word16 second, Word16& xl, Word16& xh) {
    delay[1] = first;
    delay[0] = second;
    std::int32_t even = 0, odd = 0;
    for (int i = 0; i < 24; i += 2) {
        even += g722_qmf_coef[i] * delay[i];
        odd += g722_qmf_coef[i + 1] * delay[i + 1];
    }
    std::memmove(delay + 2, delay, 22 * sizeof(Word16));
    xl = limit((2 * (even + odd)) >> 16);
    xh = limit((2 * (even - odd)) >> 16);
}

/// Receive QMF (G.722 4.4): the reconstructed sub-band samples to two
/// output samples. rl, rh lie in -16384..16383, so their sum and difference
/// fit 16 bits; the output is the accumulator shifted left by 4 with 32-bit
/// saturation, high word (L_shl, extract_h), i.e. acc >> 12 clamped.
[[gnu::always_inline]] inline void qmf_rx(Word16* delay, Word16 rl, Word16 rh, Word16& first, Word16& second) {
    delay[1] = static_cast<Word16>(rl + rh);
    delay[0] = static_cast<Word16>(rl - rh);
    std::int32_t even = 0, odd = 0;
    for (int i = 0; i < 24; i += 2) {
        even += g722_qmf_coef[i] * delay[i];
        odd += g722_qmf_coef[i + 1] * delay[i + 1];
    }
    std::memmove(delay + 2, delay, 22 * sizeof(Word16));
    first = saturate(even >> 12);
    second = saturate(odd >> 12);
}

/// G.722 code word: IH in bits 6-7, IL in bits 0-5.
[[gnu::always_inline]] inline Word16 code_word(int il, int ih) { return static_cast<Word16>(((ih << 6) + il) & 0xFF); }

}  // namespace g722
ZEPS_END_VARIANT

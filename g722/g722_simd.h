/* SPDX-License-Identifier: BSD-3-Clause */
// SSSE3 forms of the G.722 QMF banks and the lower sub-band quantiser
// decision (G.722 3.2, 4.4, 6.2.1.2), equal to the scalar forms of
// g722_band.h for every input; tests run both on the same data.
//
// Bounds that make the vector arithmetic exact:
//  - QMF: |h| sums to 12964 (24 taps, doubled in the table), so a 24-tap
//    sum of 16-bit samples stays below 2^30: the 32-bit pmaddwd lanes and
//    their sums never wrap, and the transmit outputs equal the reference's
//    L_shr / limit, the receive outputs its L_shl(4) / extract_h
//    (the packs saturation is that clamp).
//  - QUANTL: Q6 << 3 <= 25600 and 0 < DETL <= 16384, so mult(Q6 << 3,
//    DETL) is the exact (q * det) >> 15, which is the unsigned high word
//    (pmulhuw) of (Q6 << 4) * DETL (Q6 << 4 <= 51200 fits 16 unsigned bits), and is
//    non-decreasing in the level index: counting the levels at or below
//    |el| finds the reference's first level above it.
#pragma once

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "g722/g722_band.h"

ZEPS_BEGIN_VARIANT
namespace g722 {

/// add / sub of two 16-bit values with the reference's saturation: the
/// wrapped result unless the sum overflowed, then the limit on the side of
/// a's sign (overflow is rare, so this costs a predicted branch or one
/// conditional move rather than the two clamps of sat16).
[[gnu::always_inline]] inline Word16 add16(Word16 a, Word16 b) {
    Word16 r;
    return __builtin_add_overflow(a, b, &r) ? static_cast<Word16>((a >> 15) ^ 0x7FFF) : r;
}
[[gnu::always_inline]] inline Word16 sub16(Word16 a, Word16 b) {
    Word16 r;
    return __builtin_sub_overflow(a, b, &r) ? static_cast<Word16>((a >> 15) ^ 0x7FFF) : r;
}

/// UPPOL2 then UPPOL1 (see uppol2, uppol1) with the sign tests as selects
/// instead of branches: the same arithmetic and bounds. On speech the signs
/// of PLT (and more so of PH) change too often for the branches to be
/// predicted, and a mispredicted branch costs more than the selects.
[[gnu::always_inline]] inline void uppol_select(Band& w) {
    const int d01 = signs_differ(w.p0, w.p1), d02 = signs_differ(w.p0, w.p2);  // -1 or 0
    const int wd1 = sat16(w.a1 * 4);
    const int neg = wd1 == -32768 ? 32767 : -wd1;  // sat16(-wd1)
    const int wd2 = d01 ? wd1 : neg;
    const int wd3 = (128 ^ d02) - d02;  // -128 when the signs differ, else 128
    const int apl2 = (wd2 >> 7) + wd3 + ((w.a2 * 32512) >> 15);
    w.a2 = static_cast<Word16>(apl2 > 12288 ? 12288 : apl2 < -12288 ? -12288 : apl2);
    const int apl1 = ((w.a1 * 32640) >> 15) + ((192 ^ d01) - d01);  // -192 when the signs differ
    const int wd4 = 15360 - w.a2;
    w.p2 = w.p1;
    w.p1 = w.p0;
    w.a1 = static_cast<Word16>(apl1 > wd4 ? wd4 : apl1 < -wd4 ? -wd4 : apl1);
}

#if defined(__SSSE3__)
/// A QMF delay line held in three registers, newest sample in lane 0:
/// lanes 0..23 = delay[0..23] of the reference.
struct QmfRegs {
    __m128i d0, d1, d2;
    void load(const Word16* delay) {
        d0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(delay));
        d1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(delay + 8));
        d2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(delay + 16));
    }
    void store(Word16* delay) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(delay), d0);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(delay + 8), d1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(delay + 16), d2);
    }
    /// delay[1] = older, delay[0] = newer, as the reference writes them.
    [[gnu::always_inline]] void put(Word16 older, Word16 newer) {
        const int pair = static_cast<std::uint16_t>(newer) | (static_cast<int>(static_cast<std::uint16_t>(older)) << 16);
        d0 = _mm_or_si128(_mm_and_si128(d0, _mm_set_epi32(-1, -1, -1, 0)), _mm_cvtsi32_si128(pair));
    }
    /// The two sums of lanes times c (pmaddwd pairs), reduced: lane 0 of
    /// the result = sum over a, lane 1 = sum over b.
    [[gnu::always_inline]] __m128i sums(const __m128i* a, const __m128i* b) const {
        const __m128i sa = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(d0, a[0]), _mm_madd_epi16(d1, a[1])),
                                         _mm_madd_epi16(d2, a[2]));
        const __m128i sb = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(d0, b[0]), _mm_madd_epi16(d1, b[1])),
                                         _mm_madd_epi16(d2, b[2]));
        const __m128i ha = _mm_add_epi32(sa, _mm_shuffle_epi32(sa, 0x4E));  // lanes 0+2, 1+3
        const __m128i hb = _mm_add_epi32(sb, _mm_shuffle_epi32(sb, 0x4E));
        const __m128i h = _mm_unpacklo_epi32(ha, hb);
        return _mm_add_epi32(h, _mm_shuffle_epi32(h, 0x4E));
    }
    /// The reference's shift of the delay line by two samples.
    [[gnu::always_inline]] void shift() {
        d2 = _mm_alignr_epi8(d2, d1, 12);
        d1 = _mm_alignr_epi8(d1, d0, 12);
        d0 = _mm_slli_si128(d0, 4);
    }
};

/// Coefficient vectors: all taps, taps with alternating sign (h_even -
/// h_odd), even taps only, odd taps only.
struct QmfCoefs {
    __m128i all[3], alt[3], even[3], odd[3];
    QmfCoefs() {
        for (int v = 0; v < 3; ++v) {
            alignas(16) Word16 a[8], s[8], e[8], o[8];
            for (int k = 0; k < 8; ++k) {
                const Word16 c = g722_qmf_coef[8 * v + k];
                a[k] = c;
                s[k] = static_cast<Word16>(k % 2 ? -c : c);
                e[k] = k % 2 ? 0 : c;
                o[k] = k % 2 ? c : 0;
            }
            all[v] = _mm_load_si128(reinterpret_cast<const __m128i*>(a));
            alt[v] = _mm_load_si128(reinterpret_cast<const __m128i*>(s));
            even[v] = _mm_load_si128(reinterpret_cast<const __m128i*>(e));
            odd[v] = _mm_load_si128(reinterpret_cast<const __m128i*>(o));
        }
    }
};

/// Transmit QMF (see qmf_tx).
[[gnu::always_inline]] inline void qmf_tx_simd(QmfRegs& q, const QmfCoefs& c, Word16 first, Word16 second, Word16& xl,
                                               Word16& xh) {
    q.put(first, second);
    const __m128i s = q.sums(c.all, c.alt);  // even + odd, even - odd
    q.shift();
    xl = limit((2 * _mm_cvtsi128_si32(s)) >> 16);
    xh = limit((2 * _mm_cvtsi128_si32(_mm_srli_si128(s, 4))) >> 16);
}

/// Receive QMF (see qmf_rx).
[[gnu::always_inline]] inline void qmf_rx_simd(QmfRegs& q, const QmfCoefs& c, Word16 rl, Word16 rh, Word16* out) {
    q.put(static_cast<Word16>(rl + rh), static_cast<Word16>(rl - rh));
    const __m128i s = _mm_srai_epi32(q.sums(c.even, c.odd), 12);
    q.shift();
    const int both = _mm_cvtsi128_si32(_mm_packs_epi32(s, s));
    std::memcpy(out, &both, 4);
}

/// The lower sub-band quantiser decision levels Q6 << 4 (unsigned) in
/// lanes 0..30 (lane 31 is padding, masked off).
struct QuantlLevels {
    __m128i q[4];
    QuantlLevels() {
        alignas(16) std::uint16_t t[32];
        for (int i = 0; i < 31; ++i) t[i] = static_cast<std::uint16_t>(g722_q6_x8[i] * 2);
        t[31] = 0;
        for (int v = 0; v < 4; ++v) q[v] = _mm_load_si128(reinterpret_cast<const __m128i*>(t + 8 * v));
    }
};

/// The vector constants, built once when the library is loaded, so no call
/// pays for (or locks on) a first-use initialisation.
inline const QmfCoefs kQmfCoefs;
inline const QuantlLevels kQuantlLevels;

/// QUANTL with the level search as a count (see quantl), returning the
/// sign (1 negative) times 32 plus the interval mil; low_code() maps it to
/// the code IL.
[[gnu::always_inline]] inline int quantl_index(const QuantlLevels& lv, Word16 el, Word16 detl) {
    const int sil = el < 0;
    const int wd = sil ? ~el & 0x7FFF : el;
    const __m128i det = _mm_set1_epi16(detl);
    const __m128i w = _mm_set1_epi16(static_cast<Word16>(wd));
    __m128i gt[4];
    for (int v = 0; v < 4; ++v) {
        // (2 Q6 << 3) * DETL >> 16 unsigned = (Q6 << 3) * DETL >> 15: below 2^14
        const __m128i val = _mm_mulhi_epu16(lv.q[v], det);
        gt[v] = _mm_cmpgt_epi16(val, w);
    }
    // bit i set: level i lies above wd. The levels above wd are a suffix of
    // 0..30: the first one is the lowest set bit; bit 30 forced caps the
    // search at level 30.
    const unsigned above = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(gt[0], gt[1]))) |
                           static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(gt[2], gt[3]))) << 16;
    return sil * 32 + __builtin_ctz(above | (1u << 30));
}

/// The lower sub-band code and its adaptation entries for a QUANTL result
/// (sign * 32 + interval, as quantl_index returns it).
[[gnu::always_inline]] inline const G722LowCode& low_code(int index) { return g722_low_code[index]; }

// ------------------------------------------------------------ zero section

/// The zero section of one band in two registers: d holds DLT in lanes
/// 0..6 (lane 0 the current difference), b holds BL1..BL6 in lanes 1..6 and
/// zero in lanes 0 and 7. Exactness: |DLT| <= 12404 (|level| <= 24808 times
/// a scale factor <= 16384, >> 15), so 2 * DLT fits 16 bits and no product
/// is the (-32768)^2 case of mult; mult is formed exactly from pmulhw /
/// pmullw, and paddsw is add.
struct ZeroSection {
    __m128i d, b;
    void load(const Band& w) {
        alignas(16) Word16 dd[8] = {0}, bb[8] = {0};
        for (int i = 1; i <= 6; ++i) {
            dd[i] = w.d[i];
            bb[i] = w.b[i];
        }
        d = _mm_load_si128(reinterpret_cast<const __m128i*>(dd));
        b = _mm_load_si128(reinterpret_cast<const __m128i*>(bb));
    }
    void store(Band& w) const {
        alignas(16) Word16 dd[8], bb[8];
        _mm_store_si128(reinterpret_cast<__m128i*>(dd), d);
        _mm_store_si128(reinterpret_cast<__m128i*>(bb), b);
        for (int i = 1; i <= 6; ++i) {
            w.d[i] = dd[i];
            w.b[i] = bb[i];
        }
    }
};

/// mult(a, b) lane by lane, for products that are not (-32768)^2.
[[gnu::always_inline]] inline __m128i mult_lanes(__m128i a, __m128i b) {
    return _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(a, b), 1), _mm_srli_epi16(_mm_mullo_epi16(a, b), 15));
}

/// UPZERO (see upzero): BL updated from the signs of DLT, then DLT shifted
/// with dq entering at DLT1.
[[gnu::always_inline]] inline void upzero_simd(ZeroSection& z, Word16 dq) {
    const __m128i vdq = _mm_set1_epi16(dq);
    // +1 where DLT's sign equals dq's, -1 where not, 0 everywhere for dq = 0
    const __m128i sign = _mm_andnot_si128(
        _mm_cmpeq_epi16(vdq, _mm_setzero_si128()),
        _mm_or_si128(_mm_xor_si128(_mm_srai_epi16(z.d, 15), _mm_srai_epi16(vdq, 15)), _mm_set1_epi16(1)));
    const __m128i wd1 = _mm_set_epi16(0, 128, 128, 128, 128, 128, 128, 0);  // lanes 1..6
    z.b = _mm_adds_epi16(_mm_sign_epi16(wd1, sign), mult_lanes(z.b, _mm_set1_epi16(32640)));
    z.d = _mm_insert_epi16(_mm_slli_si128(z.d, 2), dq, 1);
}

/// FILTEZ (see filtez). The reference accumulates from BL6 down to BL1
/// with saturation at each step. When no product exceeds 5461 in magnitude,
/// no partial sum of the six can pass 6 * 5461 = 32766, so no step
/// saturates and the plain sum is that result (the common case, tested with
/// one compare); otherwise, when the magnitudes of the six products sum to
/// at most 32767 the same holds, and only past that the steps are taken one
/// by one.
[[gnu::always_inline]] inline Word16 filtez_simd(const ZeroSection& z) {
    const __m128i p = mult_lanes(_mm_adds_epi16(z.d, z.d), z.b);  // lanes 0 and 7 zero (b)
    const __m128i ones = _mm_set1_epi16(1);
    const __m128i magnitudes = _mm_abs_epi16(p);
    __m128i s = _mm_madd_epi16(p, ones);
    s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0x4E));
    s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0xB1));
    const int sum = _mm_cvtsi128_si32(s);
    if (_mm_movemask_epi8(_mm_cmpgt_epi16(magnitudes, _mm_set1_epi16(5461))) == 0) [[likely]]
        return static_cast<Word16>(sum);
    __m128i m = _mm_madd_epi16(magnitudes, ones);
    m = _mm_add_epi32(m, _mm_shuffle_epi32(m, 0x4E));
    m = _mm_add_epi32(m, _mm_shuffle_epi32(m, 0xB1));
    if (_mm_cvtsi128_si32(m) <= 32767) return static_cast<Word16>(sum);
    alignas(16) Word16 t[8];
    _mm_store_si128(reinterpret_cast<__m128i*>(t), p);
    Word16 sz = 0;
    for (int i = 6; i > 0; --i) sz = add(sz, t[i]);
    return sz;
}

/// FILTEP (see filtep) with the same 16-bit saturating steps.
[[gnu::always_inline]] inline Word16 filtep_fast(Band& w) {
    w.r2 = w.r1;
    w.r1 = w.r0;
    return add16(static_cast<Word16>((w.a1 * add16(w.r1, w.r1)) >> 15),
                 static_cast<Word16>((w.a2 * add16(w.r2, w.r2)) >> 15));
}

/// The band adaptation of g722_band.h (adapt) with the zero section in
/// registers.
template <int Offset>
[[gnu::always_inline]] inline void adapt_simd(Band& w, ZeroSection& z, Word16 dq, Word16 nbp) {
    w.nb = nbp;
    w.det = scale<Offset>(nbp);
    w.p0 = add16(dq, w.sz);
    w.r0 = add16(w.s, dq);
    upzero_simd(z, dq);
    uppol_select(w);
    w.sz = filtez_simd(z);
    w.s = add16(filtep_fast(w), w.sz);
}

/// A band with its zero section in registers.
struct FastBand {
    Band w;
    ZeroSection z;
    void load(const StoredBand& s) {
        g722::load(w, s);
        z.load(w);
    }
    void store(StoredBand& s) {
        z.store(w);
        g722::store(s, w);
    }
};

[[gnu::always_inline]] inline void update_low_simd(FastBand& f, int il) {
    const Word16 dq = scaled(f.w.det, g722_invqal[il >> 2]);
    adapt_simd<kLowOffset>(f.w, f.z, dq, log_scale<kLowMax>(f.w.nb, g722_wl_code[il >> 2]));
}

/// QUANTL and the lower sub-band adaptation in one step: the code's table
/// entry carries its inverse-quantiser level and log scale-factor adder.
[[gnu::always_inline]] inline int encode_low_simd(FastBand& f, const QuantlLevels& lv, Word16 xl) {
    const G722LowCode& c = low_code(quantl_index(lv, sub16(xl, f.w.s), f.w.det));
    adapt_simd<kLowOffset>(f.w, f.z, scaled(f.w.det, c.invqal), log_scale<kLowMax>(f.w.nb, c.wl));
    return c.il;
}

[[gnu::always_inline]] inline void update_high_simd(FastBand& f, int ih) {
    const Word16 dq = scaled(f.w.det, g722_invqah[ih]);
    adapt_simd<kHighOffset>(f.w, f.z, dq, log_scale<kHighMax>(f.w.nb, g722_wh_code[ih]));
}

/// LSBDEC / HSBDEC with the register zero sections (see decode_low, decode_high).
[[gnu::always_inline]] inline Word16 decode_low_simd(FastBand& f, int il, int mode_index) {
    const Word16 yl = limit(f.w.s + scaled(f.w.det, g722_invqbl[mode_index][il]));
    update_low_simd(f, il);
    return yl;
}
[[gnu::always_inline]] inline Word16 decode_high_simd(FastBand& f, int ih) {
    update_high_simd(f, ih);
    return limit(f.w.r0);
}
#else
// Hosts without SSSE3: the same interface on the scalar stages of
// g722_band.h (the same results).
struct QmfRegs {
    Word16 d[24];
    void load(const Word16* delay) { std::memcpy(d, delay, sizeof d); }
    void store(Word16* delay) const { std::memcpy(delay, d, sizeof d); }
};
struct QmfCoefs {};
struct QuantlLevels {};
inline constexpr QmfCoefs kQmfCoefs{};
inline constexpr QuantlLevels kQuantlLevels{};

[[gnu::always_inline]] inline void qmf_tx_simd(QmfRegs& q, const QmfCoefs&, Word16 first, Word16 second, Word16& xl,
                                               Word16& xh) {
    qmf_tx(q.d, first, second, xl, xh);
}
[[gnu::always_inline]] inline void qmf_rx_simd(QmfRegs& q, const QmfCoefs&, Word16 rl, Word16 rh, Word16* out) {
    qmf_rx(q.d, rl, rh, out[0], out[1]);
}

struct FastBand {
    Band w;
    void load(const StoredBand& s) { g722::load(w, s); }
    void store(StoredBand& s) { g722::store(s, w); }
};
[[gnu::always_inline]] inline int encode_low_simd(FastBand& f, const QuantlLevels&, Word16 xl) {
    return encode_low(f.w, xl);
}
[[gnu::always_inline]] inline void update_high_simd(FastBand& f, int ih) {
    const Word16 dq = scaled(f.w.det, g722_invqah[ih]);
    adapt<kHighOffset>(f.w, dq, log_scale<kHighMax>(f.w.nb, g722_wh_code[ih]));
}
[[gnu::always_inline]] inline Word16 decode_low_simd(FastBand& f, int il, int mode_index) {
    return decode_low(f.w, il, mode_index);
}
[[gnu::always_inline]] inline Word16 decode_high_simd(FastBand& f, int ih) { return decode_high(f.w, ih); }
#endif

}  // namespace g722
ZEPS_END_VARIANT

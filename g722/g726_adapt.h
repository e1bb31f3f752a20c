/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.726 ADPCM, the stages shared by encoder and decoder (G.726 4.2.2
// to 4.2.7): adaptive predictor and signal estimate (FMULT, ACCUM), scale
// factor (MIX, FILTD, LIMB, FILTE), speed control (FILTA, FILTB, SUBTC,
// FILTC, LIMA), inverse quantiser (RECONST, ADDA, ANTILOG), predictor updates
// (ADDB, ADDC, FLOATA, FLOATB, UPA1, UPA2, LIMC, LIMD, UPB, XOR) and tone and
// transition detection (TONE, TRANS, TRIGA, TRIGB).
//
// Word formats are the standard's: SL and SR 14-bit (two's complement), SE
// and SEZ 15-bit, DQ 16-bit sign-magnitude, Y 13-bit and YL 19-bit scale
// factors (Y/4 is the log step), A1, A2 and B1..B6 Q14 two's complement,
// DL/DLN/DQLN 12-bit log words. The reference (ITU-T G.191 STL g726.c)
// keeps each word unsigned and masks after every step; here each word is a
// signed integer and the masks that can change a value are kept, so every
// result equals the reference's for every reachable state.
//
// For speed the whole recursion is inline: a block loads the state into
// locals, runs the samples and stores the state once.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include "common/variant.h"
#include "g722/g726_tables.h"

ZEPS_BEGIN_VARIANT
namespace g726 {

/// State words shared by both directions (the block layout of the state).
///
/// The G.726 floating-point words of the predictor histories (DQ1..DQ6 and
/// SR1, SR2: sign, 4-bit exponent, 6-bit mantissa) are kept as 16-bit words
/// sign << 15 | exponent << 8 | mantissa, next to their coefficients in the
/// same lane order, so the predictor loads both as two vectors.
struct Core {
    std::int32_t yl;        ///< slow scale factor YL, 19 bits
    std::int16_t rate;      ///< rate index 0..3 (16, 24, 32, 40 kbit/s)
    std::int16_t yu;        ///< fast scale factor YU, 13 bits
    std::int16_t dms;       ///< short-term average of F(I), 12 bits
    std::int16_t dml;       ///< long-term average of F(I), 14 bits
    std::int16_t ap;        ///< speed-control parameter AP, 10 bits
    std::int16_t td;        ///< tone detector flag TD
    std::int16_t pk1;       ///< sign of DQ + SEZ one sample back
    std::int16_t pk2;       ///< sign of DQ + SEZ two samples back
    std::int16_t coef[8];   ///< B1..B6, A1, A2 (Q14)
    std::int16_t hist[8];   ///< DQ1..DQ6, SR1, SR2 in floating form
};

/// Reset values of G.726 (DELAYA..DELAYD with the reset input set).
inline void reset(Core& c, int rate_index) {
    std::memset(&c, 0, sizeof c);
    c.yl = 34816;
    c.yu = 544;
    c.rate = static_cast<std::int16_t>(rate_index);
    for (std::int16_t& f : c.hist) f = 32;  // floating zero: exponent 0, mantissa 32
}

/// Rate index 0..3 of a library rate code, -1 when not a G.726 rate.
constexpr int rate_index(std::int32_t rate) {
    switch (rate) {
        case 17: return 0;
        case 22: return 1;
        case 23: return 2;
        case 24: return 3;
        default: return -1;
    }
}

/// Number of significant bits of 0 <= x < 2^30 (0 for 0).
[[gnu::always_inline]] inline int bit_length(int x) { return __builtin_clz(static_cast<unsigned>(x) * 2u + 1u) ^ 31; }

/// FLOATA/FLOATB: floating form of a magnitude below 2^15 and a sign (0/1).
[[gnu::always_inline]] inline int to_float(int mag, int sign) {
    const int e = bit_length(mag);
    const int m = ((mag << 6) >> e) | 32;  // mantissa with its leading one; 32 for zero
    return (sign << 15) | (e << 8) | m;
}

/// FMULT: product of a Q14 coefficient and a floating history word, as the
/// standard's 16-bit two's-complement word (returned sign-extended).
[[gnu::always_inline]] inline int fmult(int an, int f) {
    const int as = an >> 15;                          // 0 or -1
    const int mag = (((an >> 2) ^ as) - as) & 8191;  // ANMAG of the 13-bit magnitude
    const int ae = bit_length(mag);
    const int am = ((mag << 6) >> ae) | 32;
    const int w = ((f & 63) * am + 48) >> 4;          // WANMANT
    const int e = ((f >> 8) & 15) + ae;               // WANEXP
    const int wmag = static_cast<int>((static_cast<std::uint64_t>(w) << e) >> 19) & 32767;
    const int s = (static_cast<std::int16_t>(f) >> 15) ^ as;
    return (wmag ^ s) - s;
}

/// Signal estimate SE and partial estimate SEZ (ACCUM), 15-bit.
struct Estimate {
    int se, sez;
};

/// What the adaptation hands to the predictor at the end of a sample.
struct PredictorUpdate {
    int dq_float, sr_float;  // new DQ1 and SR1 in floating form
    int a1, a2;              // updated and limited pole coefficients (before TRIGB)
    int gain;                // UPB gain magnitude: 0 for DQ = 0, else 128
    int sign;                // sign of DQ as a mask, 0 or -1
    int keep;                // TRIGB: -1 keeps, 0 clears the coefficients
};

/// The predictor with plain scalar arithmetic (FMULT, ACCUM, UPB, XOR).
template <int Leak>
struct ScalarPredictor {
    int c[8];  // B1..B6, A1, A2
    int h[8];  // DQ1..DQ6, SR1, SR2 floating forms

    [[gnu::always_inline]] inline void load(const Core& s) {
        for (int k = 0; k < 8; ++k) c[k] = s.coef[k], h[k] = s.hist[k];
    }
    [[gnu::always_inline]] inline void store(Core& s) const {
        for (int k = 0; k < 8; ++k) s.coef[k] = static_cast<std::int16_t>(c[k]), s.hist[k] = static_cast<std::int16_t>(h[k]);
    }
    [[gnu::always_inline]] inline int a1() const { return c[6]; }
    [[gnu::always_inline]] inline int a2() const { return c[7]; }
    [[gnu::always_inline]] inline Estimate estimate() const {
        int sezi = 0;
        for (int k = 0; k < 6; ++k) sezi += fmult(c[k], h[k]);
        const int sei = sezi + fmult(c[6], h[6]) + fmult(c[7], h[7]);
        return {static_cast<std::int16_t>(sei) >> 1, static_cast<std::int16_t>(sezi) >> 1};
    }
    [[gnu::always_inline]] inline void update(const PredictorUpdate& u) {
        for (int k = 0; k < 6; ++k) {
            const int x = (static_cast<std::int16_t>(h[k]) >> 15) ^ u.sign;  // 0 when the signs agree
            c[k] = static_cast<std::int16_t>(c[k] + ((u.gain ^ x) - x) - (c[k] >> Leak)) & u.keep;
        }
        c[6] = u.a1 & u.keep;
        c[7] = u.a2 & u.keep;
        for (int k = 5; k > 0; --k) h[k] = h[k - 1];
        h[0] = u.dq_float;
        h[7] = h[6];
        h[6] = u.sr_float;
    }
};

#if defined(__SSSE3__)
/// The same predictor on SSSE3 vectors: the eight coefficients and history
/// words stay in two registers across a block; all eight FMULTs run at once.
///
/// Per lane, with ANMAG the 13-bit coefficient magnitude: its exponent and
/// 6-bit mantissa come from the single-precision conversion of ANMAG (exact);
/// WANMANT = (SRNMANT * ANMANT + 48) >> 4 by a 16-bit multiply; the shift of
/// WANMANT by WANEXP - 19 becomes a multiply by a power of two picked with
/// PSHUFB: high half of WANMANT << 7 times 2^(WANEXP - 10) for WANEXP
/// 10..25, low half times 2^(WANEXP - 26) for 26..28, zero below 10.
template <int Leak>
struct VectorPredictor {
    __m128i c;  // B1..B6, A1, A2
    __m128i h;  // DQ1..DQ6, SR1, SR2 floating forms
    int a1_, a2_;

    [[gnu::always_inline]] inline void load(const Core& s) {
        c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.coef));
        h = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.hist));
        a1_ = s.coef[6];
        a2_ = s.coef[7];
    }
    [[gnu::always_inline]] inline void store(Core& s) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.coef), c);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.hist), h);
    }
    [[gnu::always_inline]] inline int a1() const { return a1_; }
    [[gnu::always_inline]] inline int a2() const { return a2_; }

    [[gnu::always_inline]] inline Estimate estimate() const {
        const __m128i zero = _mm_setzero_si128();
        // ANMAG, its exponent ANEXP and mantissa ANMANT.
        const __m128i cs = _mm_srai_epi16(c, 15);
        const __m128i mag =
            _mm_and_si128(_mm_sub_epi16(_mm_xor_si128(_mm_srai_epi16(c, 2), cs), cs), _mm_set1_epi16(8191));
        const __m128i flo = _mm_castps_si128(_mm_cvtepi32_ps(_mm_unpacklo_epi16(mag, zero)));
        const __m128i fhi = _mm_castps_si128(_mm_cvtepi32_ps(_mm_unpackhi_epi16(mag, zero)));
        const __m128i t = _mm_packs_epi32(_mm_srli_epi32(flo, 16), _mm_srli_epi32(fhi, 16));  // exp << 7 | 7 bits
        const __m128i ae = _mm_subs_epu16(_mm_srli_epi16(t, 7), _mm_set1_epi16(126));
        const __m128i am = _mm_or_si128(_mm_and_si128(_mm_srli_epi16(t, 2), _mm_set1_epi16(31)), _mm_set1_epi16(32));
        // WANMANT and WANEXP.
        const __m128i sm = _mm_and_si128(h, _mm_set1_epi16(63));
        const __m128i se = _mm_and_si128(_mm_srli_epi16(h, 8), _mm_set1_epi16(15));
        const __m128i w7 = _mm_slli_epi16(
            _mm_srli_epi16(_mm_add_epi16(_mm_mullo_epi16(sm, am), _mm_set1_epi16(48)), 4), 7);
        const __m128i e = _mm_add_epi16(se, ae);
        // Powers of two by PSHUFB: table entry j is 2^j for j < 8, else 0;
        // a lane's high byte looks up j ^ 8, so the pair forms 2^j for 0..15.
        const __m128i pow2 = _mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
        const __m128i k1 = _mm_sub_epi16(e, _mm_set1_epi16(10));
        const __m128i i1 = _mm_or_si128(_mm_and_si128(k1, _mm_set1_epi16(0x00FF)),
                                        _mm_xor_si128(_mm_slli_epi16(k1, 8), _mm_set1_epi16(0x0800)));
        const __m128i p1 = _mm_shuffle_epi8(pow2, _mm_adds_epu8(i1, _mm_set1_epi8(0x70)));
        const __m128i k2 = _mm_sub_epi16(e, _mm_set1_epi16(26));
        const __m128i p2 = _mm_shuffle_epi8(
            pow2, _mm_or_si128(_mm_and_si128(k2, _mm_set1_epi16(0x00FF)), _mm_set1_epi16(static_cast<short>(0x8000))));
        const __m128i wmag = _mm_or_si128(_mm_mulhi_epu16(w7, p1),
                                          _mm_and_si128(_mm_mullo_epi16(w7, p2), _mm_set1_epi16(32767)));
        // ACCUM: signs as +-1 multipliers of the pair sums, then SEZ over the
        // six zeros and SE over all.
        const __m128i sign = _mm_or_si128(_mm_xor_si128(cs, _mm_srai_epi16(h, 15)), _mm_set1_epi16(1));
        const __m128i pairs = _mm_madd_epi16(wmag, sign);
        const __m128i q = _mm_add_epi32(pairs, _mm_shuffle_epi32(pairs, _MM_SHUFFLE(1, 0, 3, 2)));  // p0+p2 p1+p3 ..
        const int all = _mm_cvtsi128_si32(_mm_add_epi32(q, _mm_shuffle_epi32(q, _MM_SHUFFLE(2, 3, 0, 1))));
        const int poles = _mm_cvtsi128_si32(_mm_shuffle_epi32(pairs, _MM_SHUFFLE(3, 3, 3, 3)));
        return {static_cast<std::int16_t>(all) >> 1, static_cast<std::int16_t>(all - poles) >> 1};
    }

    [[gnu::always_inline]] inline void update(const PredictorUpdate& u) {
        // UPB on the six zeros (the two pole lanes are replaced below).
        const __m128i sign = _mm_set1_epi16(static_cast<short>(u.sign));
        const __m128i x = _mm_xor_si128(_mm_srai_epi16(h, 15), sign);
        const __m128i gain = _mm_sub_epi16(_mm_xor_si128(_mm_set1_epi16(static_cast<short>(u.gain)), x), x);
        __m128i b = _mm_sub_epi16(_mm_add_epi16(c, gain), _mm_srai_epi16(c, Leak));
        b = _mm_insert_epi16(b, u.a1, 6);
        b = _mm_insert_epi16(b, u.a2, 7);
        c = _mm_and_si128(b, _mm_set1_epi16(static_cast<short>(u.keep)));
        a1_ = u.a1 & u.keep;
        a2_ = u.a2 & u.keep;
        // Delay lines: DQ shifts up one lane, SR1 moves to SR2.
        __m128i g = _mm_slli_si128(h, 2);
        g = _mm_insert_epi16(g, u.dq_float, 0);
        h = _mm_insert_epi16(g, u.sr_float, 6);
    }
};
#else
/// Hosts without SSSE3: the scalar predictor (the same results).
template <int Leak>
struct VectorPredictor : ScalarPredictor<Leak> {};
#endif

/// The scalar adaptation state inside a block (held in registers).
struct Regs {
    int yl, yu, dms, dml, ap, td, pk1, pk2;

    /// Each word is read at its G.726 width (YL 19 bits, YU 13, DMS 12,
    /// DML 14, AP 10, the flags 1): every state the coder reaches holds
    /// words of these widths, so the masks change nothing there, and any
    /// other block content gives words the recursion keeps in range (no
    /// negative shift in TRANS, no overflow in MIX or FILTE).
    [[gnu::always_inline]] inline void load(const Core& c) {
        yl = c.yl & 0x7FFFF;
        yu = c.yu & 8191;
        dms = c.dms & 4095;
        dml = c.dml & 16383;
        ap = c.ap & 1023;
        td = c.td & 1;
        pk1 = c.pk1 & 1;
        pk2 = c.pk2 & 1;
    }
    [[gnu::always_inline]] inline void store(Core& c) const {
        c.yl = yl;
        c.yu = static_cast<std::int16_t>(yu);
        c.dms = static_cast<std::int16_t>(dms);
        c.dml = static_cast<std::int16_t>(dml);
        c.ap = static_cast<std::int16_t>(ap);
        c.td = static_cast<std::int16_t>(td);
        c.pk1 = static_cast<std::int16_t>(pk1);
        c.pk2 = static_cast<std::int16_t>(pk2);
    }
};

/// Quantiser scale factor Y (LIMA, MIX), 13 bits.
[[gnu::always_inline]] inline int scale_factor(const Regs& r) {
    const int al = r.ap >= 256 ? 64 : r.ap >> 2;
    const int ylq = r.yl >> 6;
    return ylq + (r.yu - ylq) * al / 64;  // the product's magnitude is truncated
}

/// LOG and SUBTB: the quantiser table index (DLN << 1) | DS of a difference
/// signal D (|D| < 2^15) for the scale factor Y.
[[gnu::always_inline]] inline int log_index(int d, int y) {
    const int ds = static_cast<int>(static_cast<unsigned>(d) >> 31);
    const int dqm = d < 0 ? -d : d;
    const int ex = bit_length(dqm >> 1);  // exponent: floor(log2(DQM)), 0 for 0 and 1
    const int dl = (ex << 7) + (((dqm << 7) >> ex) & 127);
    return (((dl - (y >> 2)) & 4095) << 1) | ds;
}

/// FILTA, FILTB; FUNCTW, FILTD, LIMB, FILTE; SUBTC, FILTC, TRIGA: the scale
/// factors and the speed control after the code (ci) of a sample quantised
/// with Y, given TRANS's TR and TONE's TDP.
[[gnu::always_inline]] inline void scale_update(Regs& r, const G726CodeInfo& ci, int y, int tr, int tdp) {
    const int dmsp = r.dms + ((ci.fi * 512 - r.dms) >> 5);
    const int dmlp = r.dml + ((ci.fi * 2048 - r.dml) >> 7);
    int yut = (y + ((ci.wi * 32 - y) >> 5)) & 8191;
    yut = yut < 544 ? 544 : yut > 5120 ? 5120 : yut;
    r.yl = r.yl + yut + ((-r.yl) >> 6);
    r.yu = yut;
    r.dms = dmsp;
    r.dml = dmlp;
    const int dif = 4 * dmsp - dmlp;
    const int ax = (y >= 1536 && (dif < 0 ? -dif : dif) < (dmlp >> 3) && !tdp) ? 0 : 1;
    const int app = r.ap + ((ax * 512 - r.ap) >> 4);
    r.ap = tr ? 256 : app;
}

/// One sample's adaptation after the code I is known: inverse quantiser,
/// scale factor and speed control, transition detector, predictor update.
/// Returns the reconstructed signal SR (16-bit).
template <int R, class P>
[[gnu::always_inline]] inline int adapt(Regs& r, P& p, int i, int y, Estimate est) {
    const G726CodeInfo& ci = g726_code_info[R][i];

    // RECONST, ADDA, ANTILOG: DQ as sign DQS and magnitude.
    const int dql = (ci.dqln + (y >> 2)) & 4095;
    const int dex = (dql >> 7) & 15;
    const int dqmag = dql >= 2048 ? 0 : (((dql & 127) + 128) << 8) >> (15 - dex);
    const int dqs = ci.dqs;
    const int dq = dqs ? -dqmag : dqmag;

    // TRANS with the old YL and TD.
    const int ylint = r.yl >> 15;
    const int thr = ylint > 9 ? 31744 : (((r.yl >> 10) & 31) + 32) << ylint;
    const int tr = r.td & (dqmag > ((thr + (thr >> 1)) >> 1));

    // ADDC, ADDB, FLOATA, FLOATB.
    const int dqsez = static_cast<std::int16_t>(dq + est.sez);
    const int pk0 = dqsez < 0;
    const int sigpk = dqsez == 0;
    const int sr = static_cast<std::int16_t>(dq + est.se);
    const int srs = sr < 0;

    // UPA2, LIMC.
    const int a1 = p.a1(), a2 = p.a2();
    const int pks1 = pk0 ^ r.pk1;
    const int pks2 = pk0 ^ r.pk2;
    const int fa1 = (a1 < -8191 ? -8191 : a1 > 8191 ? 8191 : a1) * 4;
    const int uga2 = sigpk ? 0 : ((pks2 ? -16384 : 16384) + (pks1 ? fa1 : -fa1)) >> 7;
    int a2p = static_cast<std::int16_t>(a2 + uga2 - (a2 >> 7));
    a2p = a2p < -12288 ? -12288 : a2p > 12288 ? 12288 : a2p;

    // UPA1, LIMD.
    const int uga1 = sigpk ? 0 : (pks1 ? -192 : 192);
    int a1p = static_cast<std::int16_t>(a1 + uga1 - (a1 >> 8));
    const int a1ul = 15360 - a2p;
    a1p = a1p < -a1ul ? -a1ul : a1p > a1ul ? a1ul : a1p;

    // TONE; the scale factor and speed control.
    const int tdp = a2p < -11776;
    scale_update(r, ci, y, tr, tdp);

    // TRIGB, UPB and the delay lines.
    const int keep = tr - 1;
    r.td = tdp & keep;
    r.pk2 = r.pk1;
    r.pk1 = pk0;
    p.update({to_float(dqmag, dqs), to_float(srs ? (-sr) & 32767 : sr, srs), a1p, a2p, dqmag == 0 ? 0 : 128, -dqs,
              keep});
    return sr;
}

/// The UPB leak shift: 2^-9 at 40 kbit/s, else 2^-8.
constexpr int leak(int rate_index) { return rate_index == 3 ? 9 : 8; }

}  // namespace g726
ZEPS_END_VARIANT

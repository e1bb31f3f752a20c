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

#include "common/variant.h"
#include "g722/g726_tables.h"

ZEPS_BEGIN_VARIANT
namespace g726 {

#define ZEPS_G726_INLINE inline __attribute__((always_inline))

/// State words shared by both directions (the block layout of the state).
///
/// The G.726 floating-point words of the predictor histories (DQ1..DQ6 and
/// SR1, SR2; sign, 4-bit exponent, 6-bit mantissa) are kept as
/// sign << 31 | exponent << 8 | mantissa.
struct Core {
    std::int32_t yl;     ///< slow scale factor YL, 19 bits
    std::int16_t rate;   ///< rate index 0..3 (16, 24, 32, 40 kbit/s)
    std::int16_t yu;     ///< fast scale factor YU, 13 bits
    std::int16_t dms;    ///< short-term average of F(I), 12 bits
    std::int16_t dml;    ///< long-term average of F(I), 14 bits
    std::int16_t ap;     ///< speed-control parameter AP, 10 bits
    std::int16_t td;     ///< tone detector flag TD
    std::int16_t pk1;    ///< sign of DQ + SEZ one sample back
    std::int16_t pk2;    ///< sign of DQ + SEZ two samples back
    std::int16_t a[2];   ///< pole coefficients A1, A2
    std::int16_t b[6];   ///< zero coefficients B1..B6
    std::int32_t dq[6];  ///< DQ1..DQ6 in floating form
    std::int32_t sr[2];  ///< SR1, SR2 in floating form
};

/// Reset values of G.726 (DELAYA..DELAYD with the reset input set).
inline void reset(Core& c, int rate_index) {
    std::memset(&c, 0, sizeof c);
    c.yl = 34816;
    c.yu = 544;
    c.rate = static_cast<std::int16_t>(rate_index);
    for (std::int32_t& f : c.dq) f = 32;  // floating zero: exponent 0, mantissa 32
    for (std::int32_t& f : c.sr) f = 32;
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
ZEPS_G726_INLINE int bit_length(int x) { return 31 - __builtin_clz(static_cast<unsigned>(x) * 2u + 1u); }

/// FLOATA/FLOATB: floating form of a magnitude and a sign (0 or 1).
ZEPS_G726_INLINE std::int32_t to_float(int mag, int sign) {
    const int e = bit_length(mag);
    const int m = ((mag << 6) >> e) | 32;  // mantissa with its leading one; 32 for zero
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(sign) << 31) | static_cast<std::uint32_t>(e << 8 | m));
}

/// FMULT: product of a Q14 coefficient and a floating history word, as the
/// standard's 16-bit two's-complement word (returned sign-extended).
ZEPS_G726_INLINE int fmult(int an, std::int32_t f) {
    const int as = an >> 15;                          // 0 or -1
    const int mag = (((an >> 2) ^ as) - as) & 8191;  // ANMAG of the 13-bit magnitude
    const int ae = bit_length(mag);
    const int am = ((mag << 6) >> ae) | 32;
    const int w = ((f & 63) * am + 48) >> 4;          // WANMANT
    const int e = ((f >> 8) & 31) + ae;               // WANEXP
    const int wmag = static_cast<int>((static_cast<std::uint64_t>(w) << e) >> 19) & 32767;
    const int s = (f >> 31) ^ as;
    return (wmag ^ s) - s;
}

/// The working copy of the state inside a block (held in registers).
struct Regs {
    int yl, yu, dms, dml, ap, td, pk1, pk2;
    int a1, a2, b1, b2, b3, b4, b5, b6;
    std::int32_t dq1, dq2, dq3, dq4, dq5, dq6, sr1, sr2;

    ZEPS_G726_INLINE void load(const Core& c) {
        yl = c.yl; yu = c.yu; dms = c.dms; dml = c.dml; ap = c.ap; td = c.td; pk1 = c.pk1; pk2 = c.pk2;
        a1 = c.a[0]; a2 = c.a[1];
        b1 = c.b[0]; b2 = c.b[1]; b3 = c.b[2]; b4 = c.b[3]; b5 = c.b[4]; b6 = c.b[5];
        dq1 = c.dq[0]; dq2 = c.dq[1]; dq3 = c.dq[2]; dq4 = c.dq[3]; dq5 = c.dq[4]; dq6 = c.dq[5];
        sr1 = c.sr[0]; sr2 = c.sr[1];
    }
    ZEPS_G726_INLINE void store(Core& c) const {
        c.yl = yl;
        c.yu = static_cast<std::int16_t>(yu);
        c.dms = static_cast<std::int16_t>(dms);
        c.dml = static_cast<std::int16_t>(dml);
        c.ap = static_cast<std::int16_t>(ap);
        c.td = static_cast<std::int16_t>(td);
        c.pk1 = static_cast<std::int16_t>(pk1);
        c.pk2 = static_cast<std::int16_t>(pk2);
        c.a[0] = static_cast<std::int16_t>(a1); c.a[1] = static_cast<std::int16_t>(a2);
        c.b[0] = static_cast<std::int16_t>(b1); c.b[1] = static_cast<std::int16_t>(b2);
        c.b[2] = static_cast<std::int16_t>(b3); c.b[3] = static_cast<std::int16_t>(b4);
        c.b[4] = static_cast<std::int16_t>(b5); c.b[5] = static_cast<std::int16_t>(b6);
        c.dq[0] = dq1; c.dq[1] = dq2; c.dq[2] = dq3; c.dq[3] = dq4; c.dq[4] = dq5; c.dq[5] = dq6;
        c.sr[0] = sr1; c.sr[1] = sr2;
    }
};

/// Signal estimate SE and partial estimate SEZ (FMULT, ACCUM), 15-bit.
struct Estimate {
    int se, sez;
};
ZEPS_G726_INLINE Estimate estimate(const Regs& r) {
    const int sezi = fmult(r.b1, r.dq1) + fmult(r.b2, r.dq2) + fmult(r.b3, r.dq3) + fmult(r.b4, r.dq4) +
                     fmult(r.b5, r.dq5) + fmult(r.b6, r.dq6);
    const int sei = sezi + fmult(r.a2, r.sr2) + fmult(r.a1, r.sr1);
    return {static_cast<std::int16_t>(sei) >> 1, static_cast<std::int16_t>(sezi) >> 1};
}

/// Quantiser scale factor Y (LIMA, MIX), 13 bits.
ZEPS_G726_INLINE int scale_factor(const Regs& r) {
    const int al = r.ap >= 256 ? 64 : r.ap >> 2;
    const int ylq = r.yl >> 6;
    return ylq + (r.yu - ylq) * al / 64;  // the product's magnitude is truncated
}

/// LOG and SUBTB: the quantiser table index (DLN << 1) | DS of a difference
/// signal D (|D| < 2^15) for the scale factor Y.
ZEPS_G726_INLINE int log_index(int d, int y) {
    const int ds = static_cast<int>(static_cast<unsigned>(d) >> 31);
    const int dqm = d < 0 ? -d : d;
    const int ex = bit_length(dqm >> 1);  // exponent: floor(log2(DQM)), 0 for 0 and 1
    const int dl = (ex << 7) + (((dqm << 7) >> ex) & 127);
    return (((dl - (y >> 2)) & 4095) << 1) | ds;
}

/// Result of one sample's adaptation: the reconstructed signal SR (16-bit).
template <int R>
ZEPS_G726_INLINE int adapt(Regs& r, int i, int y, Estimate est) {
    constexpr int kLeak = R == 3 ? 9 : 8;  // UPB leak 2^-9 at 40 kbit/s, else 2^-8
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

    // FILTA, FILTB; FUNCTW, FILTD, LIMB, FILTE.
    const int dmsp = r.dms + ((ci.fi * 512 - r.dms) >> 5);
    const int dmlp = r.dml + ((ci.fi * 2048 - r.dml) >> 7);
    int yut = (y + ((ci.wi * 32 - y) >> 5)) & 8191;
    yut = yut < 544 ? 544 : yut > 5120 ? 5120 : yut;
    r.yl = r.yl + yut + ((-r.yl) >> 6);
    r.yu = yut;
    r.dms = dmsp;
    r.dml = dmlp;

    // ADDC, ADDB, FLOATA, FLOATB.
    const int dqsez = static_cast<std::int16_t>(dq + est.sez);
    const int pk0 = dqsez < 0;
    const int sigpk = dqsez == 0;
    const int sr = static_cast<std::int16_t>(dq + est.se);
    const int srs = sr < 0;
    const std::int32_t sr0 = to_float(srs ? (-sr) & 32767 : sr, srs);
    const std::int32_t dq0 = to_float(dqmag, dqs);

    // UPA2, LIMC.
    const int pks1 = pk0 ^ r.pk1;
    const int pks2 = pk0 ^ r.pk2;
    const int fa1 = (r.a1 < -8191 ? -8191 : r.a1 > 8191 ? 8191 : r.a1) * 4;
    const int uga2 = sigpk ? 0 : ((pks2 ? -16384 : 16384) + (pks1 ? fa1 : -fa1)) >> 7;
    int a2p = static_cast<std::int16_t>(r.a2 + uga2 - (r.a2 >> 7));
    a2p = a2p < -12288 ? -12288 : a2p > 12288 ? 12288 : a2p;

    // UPA1, LIMD.
    const int uga1 = sigpk ? 0 : (pks1 ? -192 : 192);
    int a1p = static_cast<std::int16_t>(r.a1 + uga1 - (r.a1 >> 8));
    const int a1ul = 15360 - a2p;
    a1p = a1p < -a1ul ? -a1ul : a1p > a1ul ? a1ul : a1p;

    // TONE; SUBTC, FILTC, TRIGA.
    const int tdp = a2p < -11776;
    const int dif = 4 * dmsp - dmlp;
    const int ax = (y >= 1536 && (dif < 0 ? -dif : dif) < (dmlp >> 3) && !tdp) ? 0 : 1;
    const int app = r.ap + ((ax * 512 - r.ap) >> 4);
    r.ap = tr ? 256 : app;

    // XOR, UPB: gain 0 for a zero DQ, else +-2^-7 by the sign agreement.
    const int gain = dqmag == 0 ? 0 : 128;
    const int sgn = -dqs;  // 0 or -1
    auto upb = [&](int b, std::int32_t past) {
        const int u = (past >> 31) ^ sgn;  // 0 when the signs agree
        return static_cast<int>(static_cast<std::int16_t>(b + ((gain ^ u) - u) - (b >> kLeak)));
    };
    const int keep = tr - 1;  // TRIGB: everything cleared on a transition
    r.b1 = upb(r.b1, r.dq1) & keep;
    r.b2 = upb(r.b2, r.dq2) & keep;
    r.b3 = upb(r.b3, r.dq3) & keep;
    r.b4 = upb(r.b4, r.dq4) & keep;
    r.b5 = upb(r.b5, r.dq5) & keep;
    r.b6 = upb(r.b6, r.dq6) & keep;
    r.a1 = a1p & keep;
    r.a2 = a2p & keep;
    r.td = tdp & keep;

    // Delay lines.
    r.pk2 = r.pk1;
    r.pk1 = pk0;
    r.dq6 = r.dq5; r.dq5 = r.dq4; r.dq4 = r.dq3; r.dq3 = r.dq2; r.dq2 = r.dq1; r.dq1 = dq0;
    r.sr2 = r.sr1; r.sr1 = sr0;
    return sr;
}

}  // namespace g726
ZEPS_END_VARIANT

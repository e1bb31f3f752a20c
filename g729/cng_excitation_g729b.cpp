// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex B comfort-noise excitation (B.4.4, Calc_exc_rand with Gauss,
// Random and its 14-step square root): per 40-sample subframe a random
// adaptive vector (lag 40..103, fraction -1..1, gain below 0.5 in Q14), a
// Gaussian vector scaled to the target gain and four random pulses whose
// amplitude solves 4x^2 + 2bx + c = 0. Excitation Q0; gains in the
// reference's units (cur_gain Q3 sample amplitude).
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fixed_math.h"
#include "g729/g729b_kernels.h"
#include "g729/pitch_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kSub = 40;
constexpr int kHistory = 154;  // PIT_MAX + L_INTERPOL
constexpr Word16 kFrac1 = 19043;  // (sqrt(40) x 0.5 / 2 - 1) in Q15
constexpr Word16 kK0 = 24576;     // 1 - alpha^2 in Q15
constexpr Word16 kGMax = 5000;

/// Gauss: sum of 12 uniform values, Q9-scaled normal sample.
Word16 gauss(Word16& seed) {
    Word32 acc = 0;
    for (int i = 0; i < 12; ++i) acc = L_add(acc, L_deposit_l(random16(seed)));
    return extract_l(L_shr(acc, 7));
}

/// The reference's Sqrt: sqrt(num / 2), 14 bits by restoring search.
Word16 sqrt_half(Word32 num) {
    Word16 rez = 0, e = 0x4000;
    for (int i = 0; i < 14; ++i) {
        const Word16 t = add(rez, e);
        if (L_sub(num, L_mult(t, t)) >= 0) rez = t;
        e = shr(e, 1);
    }
    return rez;
}

struct Pulses {
    Word16 pos[4];
    Word16 sign[4];
};

/// The random codebook parameters of one subframe: lag, fraction, pulses, pitch gain.
void draw_parameters(Word16& seed, Word16& t0, Word16& frac, Pulses& p, Word16& gp) {
    Word16 r = random16(seed);
    frac = sub(static_cast<Word16>(r & 3), 1);
    if (frac == 2) frac = 0;
    r = shr(r, 2);
    t0 = add(static_cast<Word16>(r & 0x3f), 40);
    r = shr(r, 6);
    Word16 x = static_cast<Word16>(r & 7);
    p.pos[0] = add(shl(x, 2), x);
    r = shr(r, 3);
    p.sign[0] = static_cast<Word16>(r & 1);
    r = shr(r, 1);
    x = static_cast<Word16>(r & 7);
    p.pos[1] = add(add(shl(x, 2), x), 1);
    r = shr(r, 3);
    p.sign[1] = static_cast<Word16>(r & 1);
    r = random16(seed);
    x = static_cast<Word16>(r & 7);
    p.pos[2] = add(add(shl(x, 2), x), 2);
    r = shr(r, 3);
    p.sign[2] = static_cast<Word16>(r & 1);
    r = shr(r, 1);
    x = static_cast<Word16>(r & 0xf);
    p.pos[3] = add(static_cast<Word16>(x & 1), 3);
    x = static_cast<Word16>(shr(x, 1) & 7);
    p.pos[3] = add(p.pos[3], add(shl(x, 2), x));
    r = shr(r, 4);
    p.sign[3] = static_cast<Word16>(r & 1);
    gp = static_cast<Word16>(random16(seed) & 0x1fff);
}

/// b: the signed sum of the pulse positions' samples, each shifted right by sh.
Word16 pulse_sum(const Word16* v, const Pulses& p, Word16 sh) {
    Word16 b = 0;
    for (int i = 0; i < 4; ++i) {
        const Word16 t = shr(v[p.pos[i]], sh);
        b = p.sign[i] == 0 ? sub(b, t) : add(b, t);
    }
    return b;
}

/// One subframe of comfort noise into exc[0..39] (exc[-154..-1] is the past).
void cng_subframe(Word16 cur_gain, Word16* exc, Word16& seed, Word16& gp_out, Word16& t0_out, Word16& g_out) {
    Word16 t0, frac, gp;
    Pulses p;
    draw_parameters(seed, t0, frac, p, gp);
    Word16 gp2 = shl(gp, 1);

    // Gaussian excitation scaled to alpha x cur_gain x sqrt(40 / energy).
    Word16 excg[kSub];
    Word32 acc = 0;
    for (int i = 0; i < kSub; ++i) {
        excg[i] = gauss(seed);
        acc = L_mac(acc, excg[i], excg[i]);
    }
    acc = Inv_sqrt(L_shr(acc, 1));
    DPF d = L_Extract(acc);
    Word16 t1 = add(cur_gain, mult_r(cur_gain, kFrac1));
    acc = Mpy_32_16(d.hi, d.lo, t1);
    Word16 sh = norm_l(acc);
    t1 = extract_h(L_shl(acc, sh));
    sh = sub(sh, 14);
    for (int i = 0; i < kSub; ++i) excg[i] = shr_r(mult_r(excg[i], t1), sh);

    // Random adaptive excitation plus the Gaussian part.
    g729p::pred_lt_3(exc, t0, frac);
    Word16 mx = 0;
    for (int i = 0; i < kSub; ++i) {
        exc[i] = add(mult_r(exc[i], gp2), excg[i]);
        const Word16 a = abs_s(exc[i]);
        if (a > mx) mx = a;
    }
    sh = 0;
    if (mx != 0) {
        sh = sub(3, norm_s(mx));
        if (sh <= 0) sh = 0;
    }
    Word16 excs[kSub];
    for (int i = 0; i < kSub; ++i) excs[i] = shr(exc[i], sh);

    // Pulse gain x from 4x^2 + 2bx + c = 0 (c: energy less the target).
    Word32 ener = 0;
    for (int i = 0; i < kSub; ++i) ener = L_mac(ener, excs[i], excs[i]);
    Word16 b = pulse_sum(excs, p, 0);
    const Word16 t40 = extract_l(L_shr(L_mult(cur_gain, kSub), 6));
    const Word32 L_k = L_mult(cur_gain, t40);
    acc = L_shr(L_k, add(1, shl(sh, 1)));
    acc = L_sub(acc, ener);
    b = shr(b, 1);
    acc = L_mac(acc, b, b);
    sh = add(sh, 1);
    if (acc < 0) {
        // No real root: drop the adaptive part, Gaussian excitation only.
        std::memcpy(exc, excg, sizeof excg);
        const Word16 any = static_cast<Word16>(abs_s(excg[p.pos[0]]) | abs_s(excg[p.pos[1]]) |
                                               abs_s(excg[p.pos[2]]) | abs_s(excg[p.pos[3]]));
        sh = (any & 0x4000) == 0 ? 1 : 2;
        b = pulse_sum(excg, p, sh);
        d = L_Extract(L_k);
        acc = Mpy_32_16(d.hi, d.lo, kK0);
        acc = L_shr(acc, sub(shl(sh, 1), 1));
        acc = L_mac(acc, b, b);
        gp = 0;
    }
    const Word16 root = sqrt_half(acc);
    Word16 x1 = sub(root, b);
    const Word16 x2 = negate(add(b, root));
    if (abs_s(x2) < abs_s(x1)) x1 = x2;
    Word16 g = shr_r(x1, sub(2, sh));
    if (g >= 0) {
        if (g > kGMax) g = kGMax;
    } else if (add(g, kGMax) < 0) {
        g = negate(kGMax);
    }
    for (int i = 0; i < 4; ++i) {
        const int j = p.pos[i];
        exc[j] = p.sign[i] != 0 ? add(exc[j], g) : sub(exc[j], g);
    }
    gp_out = gp;
    t0_out = t0;
    g_out = g;
}

/// Calc_exc_rand of a frame: per subframe {pitch gain, lag} into pitch and
/// the pulse amplitude into pulse.
void cng_frame(Word16 gain, Word16* exc, Word16* pSeed, Word16* pitch, Word16* pulse) {
    if (gain == 0) {
        std::memset(exc, 0, sizeof(Word16) * 2 * kSub);
        pitch[0] = pitch[2] = 0;
        pitch[1] = pitch[3] = kSub + 1;
        pulse[0] = pulse[1] = 0;
        return;
    }
    Word16 seed = *pSeed;
    for (int s = 0; s < 2; ++s) cng_subframe(gain, exc + s * kSub, seed, pitch[2 * s], pitch[2 * s + 1], pulse[s]);
    *pSeed = seed;
}

}  // namespace

ZepStatus zepsCNGExcitation_G729B_16s(Zep16s gain, Zep16s* pSrcDstExc, Zep16s* pSeed, Zep16s* pDstPitch) {
    if (any_null(pSrcDstExc, pSeed)) return zepStsNullPtrErr;
    if (gain < 0) return zepStsRangeErr;
    Word16 pitch[4], pulse[2];
    cng_frame(gain, pSrcDstExc + kHistory, pSeed, pitch, pulse);
    if (pDstPitch != nullptr) std::memcpy(pDstPitch, pitch, sizeof pitch);
    return zepStsNoErr;
}

ZepStatus zepsCNGExcitation_G729I_16s(Zep16s gain, Zep16s* pSrcDstExc, Zep16s* pSeed, Zep16s* pDstGains) {
    if (any_null(pSrcDstExc, pSeed, pDstGains)) return zepStsNullPtrErr;
    if (gain < 0) return zepStsRangeErr;
    Word16 pitch[4], pulse[2];
    cng_frame(gain, pSrcDstExc + kHistory, pSeed, pitch, pulse);
    const Word16 gains[4] = {pitch[0], abs_s(pulse[0]), pitch[2], abs_s(pulse[1])};
    std::memcpy(pDstGains, gains, sizeof gains);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex B voice activity detector (B.3, vad and MakeDec).
// Energies in dB-like Q11 (full band and low band), spectral distortion
// against the running mean LSFs (normalised LSFs, Q15), zero-crossing rate
// Q15 (410 per crossing); running means and minima kept in the state.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fast_ops.h"
#include "common/fixed_math.h"
#include "g729/g729b_kernels.h"
#include "g729/g729b_tables.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrder = 10;
constexpr int kNp = 12;
constexpr Word16 kNoise = 0;
constexpr Word16 kVoice = 1;
constexpr Word16 kInitFrame = 32;
constexpr Word16 kInitCount = 20;
constexpr int kZcStart = 120;
constexpr int kZcEnd = 200;

/// The detector's memory (the statics of the reference's vad.c), 80 bytes.
struct VadState {
    Word16 mean_lsf[kOrder];
    Word16 min_buffer[16];
    Word16 prev_min, next_min, min;
    Word16 mean_e, mean_se, mean_sle, mean_szc;
    Word16 prev_energy;
    Word16 count_sil, count_update, count_ext;
    Word16 flag, v_flag, less_count;
};
static_assert(sizeof(VadState) == 80);

/// The reference's `x++` on a 16-bit counter (wraps at 32767).
inline Word16 incr(Word16 x) { return static_cast<Word16>(static_cast<std::uint16_t>(x) + 1u); }

/// One of MakeDec's linear boundaries: (L_mult(a, ca) + L_mult(b, cb)) >> sh
/// plus the high-placed value d.
inline Word32 boundary(Word16 a, Word16 ca, Word16 b, Word16 cb, Word16 sh, Word16 d) {
    Word32 acc = L_mult(a, ca);
    acc = L_mac(acc, b, cb);
    acc = L_shr(acc, sh);
    return L_add(acc, L_deposit_h(d));
}

/// MakeDec: the fourteen boundaries of the initial voice decision.
Word16 make_decision(Word16 dSLE, Word16 dSE, Word16 SD, Word16 dSZC) {
    if (boundary(dSZC, -14680, 8192, -28521, 8, SD) > 0) return kVoice;
    if (boundary(dSZC, 19065, 8192, -19446, 7, SD) > 0) return kVoice;
    if (boundary(dSZC, 20480, 8192, 16384, 2, dSE) < 0) return kVoice;
    if (boundary(dSZC, -16384, 8192, 19660, 2, dSE) < 0) return kVoice;
    if (L_mac(L_mult(dSE, 32767), 1024, 30802) < 0) return kVoice;
    if (L_mac(L_mac(L_mult(SD, -28160), 64, 19988), dSE, 512) < 0) return kVoice;
    if (L_mac(L_mult(SD, 32767), 32, -30199) > 0) return kVoice;
    if (boundary(dSZC, -20480, 8192, 22938, 2, dSE) < 0) return kVoice;
    if (boundary(dSZC, 23831, 4096, 31576, 2, dSE) < 0) return kVoice;
    if (L_mac(L_mult(dSE, 32767), 2048, 17367) < 0) return kVoice;
    if (L_mac(L_mac(L_mult(SD, -22400), 32, 25395), dSLE, 256) < 0) return kVoice;
    if (L_add(L_mac(L_mult(dSE, -30427), 256, -29959), L_deposit_h(dSLE)) > 0) return kVoice;
    if (L_add(L_mac(L_mult(dSE, -23406), 512, 28087), L_deposit_h(dSLE)) < 0) return kVoice;
    if (L_mac(L_mac(L_mult(dSE, 24576), 1024, 29491), dSLE, 16384) < 0) return kVoice;
    return kNoise;
}

/// Running minima of the full-band energy over the last 128 frames.
void track_minimum(VadState& s, Word16 energy, Word16 frm) {
    if (frm < 129) {
        if (energy < s.min) {
            s.min = energy;
            s.prev_min = energy;
        }
        if ((frm & 7) == 0) {
            s.min_buffer[sub(shr(frm, 3), 1)] = s.min;
            s.min = MAX_16;
        }
    }
    if ((frm & 7) == 0) {
        s.prev_min = s.min_buffer[0];
        for (int i = 1; i < 16; ++i)
            if (s.min_buffer[i] < s.prev_min) s.prev_min = s.min_buffer[i];
    }
    if (frm >= 129) {
        if ((frm & 7) == 1) {
            s.min = s.prev_min;
            s.next_min = MAX_16;
        }
        if (energy < s.min) s.min = energy;
        if (energy < s.next_min) s.next_min = energy;
        if ((frm & 7) == 0) {
            for (int i = 0; i < 15; ++i) s.min_buffer[i] = s.min_buffer[i + 1];
            s.min_buffer[15] = s.next_min;
            s.prev_min = s.min_buffer[0];
            for (int i = 1; i < 16; ++i)
                if (s.min_buffer[i] < s.prev_min) s.prev_min = s.min_buffer[i];
        }
    }
}

/// Smoothing coefficients of the running means, by update count.
struct MeanCoefs {
    Word16 e, c_e, zc, c_zc, sd, c_sd;
};
MeanCoefs mean_coefs(Word16 count) {
    if (count < kInitCount) return {24576, 8192, 26214, 6554, 19661, 13017};
    if (count < kInitCount + 10) return {31130, 1638, 30147, 2621, 21299, 11469};
    if (count < kInitCount + 20) return {31785, 983, 30802, 1966, 22938, 9830};
    if (count < kInitCount + 30) return {32440, 328, 31457, 1311, 24576, 8192};
    if (count < kInitCount + 40) return {32604, 164, 32440, 328, 24576, 8192};
    return {32604, 164, 32702, 66, 24576, 8192};
}

inline Word16 smooth(Word16 c, Word16 mean, Word16 cx, Word16 x) { return extract_h(L_mac(L_mult(c, mean), cx, x)); }

}  // namespace

ZepStatus zepsVADGetStateSize_G729B(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(VadState);
    return zepStsNoErr;
}

ZepStatus zepsVADInit_G729B(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    VadState s{};
    s.flag = 1;
    s.min = MAX_16;
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsVAD_G729B_16s(Zep16s rc, const Zep16s* pLSF, const Zep32s* pAutoCorr, Zep16s expR0, const Zep16s* pSrc,
                            Zep16s frameCount, Zep16s prevVad, Zep16s pprevVad, Zep16s* pVad, Zep8u* pState) {
    if (any_null(pLSF, pAutoCorr, pSrc, pVad, pState)) return zepStsNullPtrErr;
    if (frameCount < 1) return zepStsRangeErr;
    if ((prevVad != 0 && prevVad != 1) || (pprevVad != 0 && pprevVad != 1)) return zepStsRangeErr;
    VadState s;
    std::memcpy(&s, pState, sizeof s);
    const Word16 frm = frameCount;

    // Full-band energy from r[0], low-band energy through lbf_corr.
    const Word16 energy = energy_db(pAutoCorr[0], expR0);
    Word32 acc = 0;
    for (int i = 1; i <= kNp; ++i) acc = L_mac(acc, extract_h(pAutoCorr[i]), lbf_corr[i]);
    acc = L_shl(acc, 1);
    acc = L_mac(acc, extract_h(pAutoCorr[0]), lbf_corr[0]);
    const Word16 energy_low = energy_db(acc, expR0);

    // Spectral distortion and zero-crossing rate.
    acc = 0;
    for (int i = 0; i < kOrder; ++i) {
        const Word16 d = sub(pLSF[i], s.mean_lsf[i]);
        acc = L_mac(acc, d, d);
    }
    const Word16 SD = extract_h(acc);
    Word16 ZC = 0;
    for (int i = kZcStart + 1; i <= kZcEnd; ++i)  // mult(a, b) < 0 exactly when a * b < 0
        if (Word32{pSrc[i - 1]} * pSrc[i] < 0) ZC = add(ZC, 410);

    track_minimum(s, energy, frm);

    Word16 marker = kNoise;
    if (frm <= kInitFrame) {
        if (energy < 3072) {
            marker = kNoise;
            s.less_count = incr(s.less_count);
        } else {
            marker = kVoice;
            s.mean_e = extract_h(L_mac(L_deposit_h(s.mean_e), energy, 1024));
            s.mean_szc = extract_h(L_mac(L_deposit_h(s.mean_szc), ZC, 1024));
            for (int i = 0; i < kOrder; ++i) s.mean_lsf[i] = extract_h(L_mac(L_deposit_h(s.mean_lsf[i]), pLSF[i], 1024));
        }
    }

    if (frm >= kInitFrame) {
        if (frm == kInitFrame) {
            // Means of the voiced start frames: divide the sums by their count.
            const int k = (s.less_count < 0 || s.less_count > 32) ? 32 : s.less_count;
            s.mean_e = extract_h(L_shl(L_mult(s.mean_e, factor_fx[k]), shift_fx[k]));
            s.mean_szc = extract_h(L_shl(L_mult(s.mean_szc, factor_fx[k]), shift_fx[k]));
            for (int i = 0; i < kOrder; ++i)
                s.mean_lsf[i] = extract_h(L_shl(L_mult(s.mean_lsf[i], factor_fx[k]), shift_fx[k]));
            s.mean_se = sub(s.mean_e, 2048);
            s.mean_sle = sub(s.mean_e, 2458);
        }
        const Word16 dSE = sub(s.mean_se, energy);
        const Word16 dSLE = sub(s.mean_sle, energy_low);
        const Word16 dSZC = sub(s.mean_szc, ZC);

        marker = energy < 3072 ? kNoise : make_decision(dSLE, dSE, SD, dSZC);

        // Smoothing of the decision: hangover after voice, extension, silence count.
        s.v_flag = 0;
        if (prevVad == kVoice && marker == kNoise && add(dSE, 410) < 0 && energy > 3072) {
            marker = kVoice;
            s.v_flag = 1;
        }
        if (s.flag == 1) {
            if (pprevVad == kVoice && prevVad == kVoice && marker == kNoise &&
                abs_s(sub(s.prev_energy, energy)) <= 614) {
                s.count_ext = incr(s.count_ext);
                marker = kVoice;
                s.v_flag = 1;
                if (s.count_ext <= 4) {
                    s.flag = 1;
                } else {
                    s.count_ext = 0;
                    s.flag = 0;
                }
            }
        } else {
            s.flag = 1;
        }
        if (marker == kNoise) s.count_sil = incr(s.count_sil);
        if (marker == kVoice && s.count_sil > 10 && sub(energy, s.prev_energy) <= 614) {
            marker = kNoise;
            s.count_sil = 0;
        }
        if (marker == kVoice) s.count_sil = 0;
        if (sub(energy, 614) < s.mean_se && frm > 128 && !s.v_flag && rc < 19661) marker = kNoise;

        // Background-noise means follow quiet, stationary frames.
        if (sub(energy, 614) < s.mean_se && rc < 24576 && SD < 83) {
            s.count_update = incr(s.count_update);
            const MeanCoefs c = mean_coefs(s.count_update);
            s.mean_se = smooth(c.e, s.mean_se, c.c_e, energy);
            s.mean_sle = smooth(c.e, s.mean_sle, c.c_e, energy_low);
            s.mean_szc = smooth(c.zc, s.mean_szc, c.c_zc, ZC);
            for (int i = 0; i < kOrder; ++i) s.mean_lsf[i] = smooth(c.sd, s.mean_lsf[i], c.c_sd, pLSF[i]);
        }
        if (frm > 128 && ((s.mean_se < s.min && SD < 83) || sub(s.mean_se, s.min) > 2048)) {
            s.mean_se = s.min;
            s.count_update = 0;
        }
    }
    s.prev_energy = energy;
    std::memcpy(pState, &s, sizeof s);
    *pVad = marker;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

// SPDX-License-Identifier: BSD-3-Clause
// G.729 Annex I music detection (I.3, musdetect): corrects the VAD decision
// of an 11.8 kbit/s frame so that music is coded as active. Frame energy
// from r[0] and the prediction error of the first four reflection
// coefficients (dB-like Q11, as the VAD's), spectral distance to the running
// mean reflection coefficients (Q15), running mean pitch gain (Q14) and the
// lag variance (scaled by 25 x 128), counters in Q8.
#include <cstring>

#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"
#include "common/fast_ops.h"
#include "common/fixed_math.h"
#include "g729/g729b_kernels.h"

ZEPS_BEGIN_VARIANT
namespace {

constexpr int kOrder = 10;
constexpr Word16 kVoice = 1;
constexpr int kRate6k4 = 0;
constexpr int kRate11k8 = 2;

/// The detector's memory (the statics of the reference's mus_dtct.c), 38 bytes.
struct MusicState {
    Word16 count_music, mcount_music, count_consc;
    Word16 mean_pgain;
    Word16 count_pflag, mcount_pflag, count_consc_pflag, count_consc_rflag;
    Word16 mrc[kOrder];
    Word16 mean_se;
};
static_assert(sizeof(MusicState) == 38);

/// The update of a 64-frame count's running mean: weights c and cx (Q15).
inline Word16 smooth(Word16 c, Word16 mean, Word16 cx, Word16 x) { return extract_h(L_mac(L_mult(c, mean), cx, x)); }

/// PFLAG: the pitch gain is high on average, or steady with a steady lag.
Word16 pitch_flag(MusicState& s, int rate, const Zep16s* lags, const Zep16s* gains, Word16 prev_vad) {
    Word32 acc = 0;
    Word16 lagsum = 0;
    for (int i = 0; i < 5; ++i) {
        acc = L_mac(acc, gains[i], 6554);  // 1/5 in Q15
        lagsum = add(lagsum, lags[i]);
    }
    acc = L_mult(extract_h(acc), 6554);
    acc = L_mac(acc, s.mean_pgain, 26214);
    s.mean_pgain = extract_h(acc);
    acc = 0;
    for (int i = 0; i < 5; ++i) {
        const Word16 j = sub(add(shl(lags[i], 2), lags[i]), lagsum);  // 5 lags[i] - sum
        acc = L_mac(acc, j, j);
    }
    const Word16 variance = extract_h(L_shl(acc, 22));
    const Word16 thres = rate == kRate6k4 ? 11960 : 10322;  // 0.73, 0.63 in Q14
    const Word16 flag2 = s.mean_pgain > thres ? 1 : 0;
    const Word16 flag1 = variance < 21632 && s.mean_pgain > 7373 ? 1 : 0;
    return static_cast<Word16>((prev_vad & (flag1 | flag2)) | flag2);
}

/// The 64-frame counts of backward-mode voice frames and of pitch flags.
void update_counts(MusicState& s, Word16 prev_mode, Word16 vad, Word16 pflag, Word16 frm) {
    const bool period = (frm & 0x003f) == 0;
    if (prev_mode == 1 && vad == kVoice) s.count_music = add(s.count_music, 256);
    if (period) s.mcount_music = frm == 64 ? s.count_music : smooth(29491, s.mcount_music, 3277, s.count_music);
    s.count_consc = s.count_music == 0 ? add(s.count_consc, 1) : Word16{0};
    if (s.count_consc > 500 || s.count_consc_rflag > 150) s.mcount_music = 0;
    if (period) s.count_music = 0;

    if (pflag == 1) s.count_pflag = add(s.count_pflag, 256);
    if (period) {
        if (frm == 64) {
            s.mcount_pflag = s.count_pflag;
        } else if (s.count_pflag > 6400) {
            s.mcount_pflag = smooth(32113, s.mcount_pflag, 655, s.count_pflag);
        } else if (s.count_pflag > 5120) {
            s.mcount_pflag = smooth(31130, s.mcount_pflag, 1638, s.count_pflag);
        } else {
            s.mcount_pflag = smooth(29491, s.mcount_pflag, 3277, s.count_pflag);
        }
    }
    s.count_consc_pflag = s.count_pflag == 0 ? add(s.count_consc_pflag, 1) : Word16{0};
    if (s.count_consc_pflag > 100 || s.count_consc_rflag > 150) s.mcount_pflag = 0;
    if (period) s.count_pflag = 0;
}

}  // namespace

ZepStatus zepsMusicDetectGetStateSize_G729I(Zep32s* pSize) {
    if (any_null(pSize)) return zepStsNullPtrErr;
    *pSize = sizeof(MusicState);
    return zepStsNoErr;
}

ZepStatus zepsMusicDetectInit_G729I(Zep8u* pState) {
    if (any_null(pState)) return zepStsNullPtrErr;
    MusicState s{};
    s.mean_pgain = 8192;
    std::memcpy(pState, &s, sizeof s);
    return zepStsNoErr;
}

ZepStatus zepsMusicDetect_G729I_16s(int rate, Zep32s r0, Zep16s expR0, const Zep16s* pRC, const Zep16s* pLags,
                                    const Zep16s* pPitchGains, Zep16s prevMode, Zep16s frameCount, Zep16s prevVad,
                                    Zep16s* pSrcDstVad, Zep8u* pState) {
    if (any_null(pRC, pLags, pPitchGains, pSrcDstVad, pState)) return zepStsNullPtrErr;
    if (rate < 0 || rate > 2) return zepStsRangeErr;
    if (prevMode != 0 && prevMode != 1) return zepStsRangeErr;
    if (frameCount < 1) return zepStsRangeErr;
    if (prevVad != 0 && prevVad != 1) return zepStsRangeErr;
    if (*pSrcDstVad != 0 && *pSrcDstVad != 1) return zepStsRangeErr;
    MusicState s;
    std::memcpy(&s, pState, sizeof s);
    Word16 vad = *pSrcDstVad;
    const Word16 frm = frameCount;

    // Energies: the VAD's full-band energy and the prediction-error energy.
    const Word16 r_h = extract_h(r0);
    const Word16 r_l = static_cast<Word16>((r0 & 0xffff) >> 1);
    const Word16 full_energy = energy_db(L_Comp(r_h, r_l), expR0);
    Word16 pderr = 32767;
    for (int i = 0; i < 4; ++i) pderr = mult(pderr, sub(32767, mult(pRC[i], pRC[i])));
    const Word16 energy = energy_db(Mpy_32_16(r_h, r_l, pderr), expR0);

    // Spectral distance to the mean of the noise frames' coefficients.
    Word32 acc = 0;
    for (int i = 0; i < kOrder; ++i) {
        const Word16 j = sub(s.mrc[i], pRC[i]);
        acc = L_mac(acc, j, j);
    }
    const Word16 sd = extract_h(acc);
    if (vad != kVoice) {
        for (int i = 0; i < kOrder; ++i) s.mrc[i] = smooth(29491, s.mrc[i], 3277, pRC[i]);
        s.mean_se = smooth(29491, s.mean_se, 3277, energy);
    }

    const Word16 pflag = pitch_flag(s, rate, pLags, pPitchGains, prevVad);
    if (pRC[1] <= 14746 && pRC[1] >= 0 && s.mean_pgain < 8192)
        s.count_consc_rflag = add(s.count_consc_rflag, 1);
    else
        s.count_consc_rflag = 0;
    update_counts(s, prevMode, vad, pflag, frm);

    if (rate == kRate11k8) {
        const bool loud = full_energy > 10240;
        const bool rise = sub(energy, s.mean_se) > 819;
        // The reference's three voicing rules; its first (sd > 4915 with a
        // rise) is contained in the second (a rise or sd > 12452).
        const bool music = s.mcount_pflag > 2560 || s.mcount_music > 280 || frm < 64;
        if ((loud && (sd > 12452 || rise)) || (music && full_energy > 1433)) vad = kVoice;
    }
    std::memcpy(pState, &s, sizeof s);
    *pSrcDstVad = vad;
    return zepStsNoErr;
}

ZEPS_END_VARIANT

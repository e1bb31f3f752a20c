// 128-point fixed-point real FFT of GSM-AMR VAD option 2 (3GPP TS 26.073
// r_fft.c: c_fft + r_fft). Input: 128 real samples (Q0, block-normalised by
// the caller). A 64-point complex radix-2 decimation-in-time FFT halves its
// data at each of the six stages (total scaling 1/64), and the real-spectrum
// split halves once more. Twiddles phs_tbl are Q15.
#include "amr/amr_vad_tables.h"
#include "common/args.h"
#include "common/basic_op.h"
#include "common/exports.h"

ZEPS_BEGIN_VARIANT

namespace {

constexpr int kSize = 128;
constexpr int kHalf = 64;
constexpr int kStages = 6;

/// Swaps the complex samples (re/im pairs) into bit-reversed order (c_fft).
void bit_reverse(Word16* x) {
    for (int i = 0, j = 0; i < kSize - 2; i += 2) {
        if (j > i) {
            const Word16 re = x[i], im = x[i + 1];
            x[i] = x[j];
            x[i + 1] = x[j + 1];
            x[j] = re;
            x[j + 1] = im;
        }
        int k = kHalf;
        while (j >= k) {
            j -= k;
            k >>= 1;
        }
        j += k;
    }
}

/// One radix-2 butterfly with twiddle (c, s), both outputs halved.
inline void butterfly(Word16* top, Word16* bot, Word16 c, Word16 s) {
    const Word16 re = round_fx(L_msu(L_mult(bot[0], c), bot[1], s));
    const Word16 im = round_fx(L_mac(L_mult(bot[1], c), bot[0], s));
    bot[0] = shr(sub(top[0], re), 1);
    bot[1] = shr(sub(top[1], im), 1);
    top[0] = shr(add(top[0], re), 1);
    top[1] = shr(add(top[1], im), 1);
}

/// 64-point complex FFT of re/im pairs, scaled by 1/64 (c_fft).
void complex_fft(Word16* x) {
    bit_reverse(x);
    for (int stage = 0; stage < kStages; ++stage) {
        const int span = 2 << stage;          // butterfly distance in Word16s
        const int step = kSize >> stage;      // twiddle index step (2 * number of FFTs)
        for (int j = 0, ji = 0; j < span; j += 2, ji += step) {
            const Word16 c = phs_tbl[ji], s = phs_tbl[ji + 1];
            for (int k = j; k < kSize; k += 2 * span) butterfly(&x[k], &x[k + span], c, s);
        }
    }
}

/// Splits the complex spectrum of the packed real sequence into the real
/// spectrum, halving it (r_fft).
void real_split(Word16* x) {
    const Word16 dc = x[0], ny = x[1];
    x[0] = add(dc, ny);
    x[1] = sub(dc, ny);
    for (int i = 2; i <= kHalf; i += 2) {
        const int j = kSize - i;
        const Word16 r1 = add(x[i], x[j]);
        const Word16 i1 = sub(x[i + 1], x[j + 1]);
        const Word16 r2 = add(x[i + 1], x[j + 1]);
        const Word16 i2 = sub(x[j], x[i]);
        const Word32 lr1 = L_deposit_h(r1);
        const Word32 li1 = L_deposit_h(i1);
        x[i] = round_fx(L_shr(L_msu(L_mac(lr1, r2, phs_tbl[i]), i2, phs_tbl[i + 1]), 1));
        x[i + 1] = round_fx(L_shr(L_mac(L_mac(li1, i2, phs_tbl[i]), r2, phs_tbl[i + 1]), 1));
        x[j] = round_fx(L_shr(L_mac(L_mac(lr1, r2, phs_tbl[j]), i2, phs_tbl[j + 1]), 1));
        x[j + 1] = round_fx(L_shr(L_mac(L_msu(L_negate(li1), i2, phs_tbl[j]), r2, phs_tbl[j + 1]), 1));
    }
}

}  // namespace

ZepStatus zepsFFTFwd_RToPerm_GSMAMR_16s_I(Zep16s* pSrcDst) {
    if (any_null(pSrcDst)) return zepStsNullPtrErr;
    complex_fft(pSrcDst);
    real_split(pSrcDst);
    return zepStsNoErr;
}

ZEPS_END_VARIANT

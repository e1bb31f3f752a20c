// SPDX-License-Identifier: BSD-3-Clause
// The VAD option 2 FFT forms the reference's saturating operator chains
// directly (and four butterflies at a time with SSSE3); here the r_fft.c
// chains, written with the basic operators, are run on extreme inputs that
// the speech vectors never reach (full-scale values, -32768 everywhere).
#include <gtest/gtest.h>

#include <vector>

#include "amr/amr_vad_tables.h"
#include "common/basic_op.h"
#include "tests/amrvad/amrvad_util.h"
#include "tests/variant_check.h"

namespace zeps::u8::amr {
void r_fft_scalar(std::int16_t* x);
}
#if defined(__x86_64__)  // elsewhere n8 names the one generic build, u8
namespace zeps::n8::amr {
void r_fft_scalar(std::int16_t* x);
}
#endif

namespace zeps::test::amrvad {
namespace {

using zeps::ref::Word16;
using zeps::ref::Word32;

/// c_fft + r_fft of TS 26.073, operator by operator.
void reference_r_fft(Word16* x) {
    using namespace zeps::ref;
    for (int i = 0, j = 0; i < 126; i += 2) {
        if (j > i) {
            std::swap(x[i], x[j]);
            std::swap(x[i + 1], x[j + 1]);
        }
        int k = 64;
        while (j >= k) {
            j -= k;
            k >>= 1;
        }
        j += k;
    }
    for (int st = 0; st < 6; ++st) {
        const int jj = 2 << st, kk = 2 * jj, ii2 = 128 >> st;
        for (int j = 0, ji = 0; j < jj; j += 2, ji += ii2) {
            for (int k = j; k < 128; k += kk) {
                const int kj = k + jj;
                const Word16 t1 = round_fx(L_msu(L_mult(x[kj], phs_tbl[ji]), x[kj + 1], phs_tbl[ji + 1]));
                const Word16 t2 = round_fx(L_mac(L_mult(x[kj + 1], phs_tbl[ji]), x[kj], phs_tbl[ji + 1]));
                x[kj] = shr(sub(x[k], t1), 1);
                x[kj + 1] = shr(sub(x[k + 1], t2), 1);
                x[k] = shr(add(x[k], t1), 1);
                x[k + 1] = shr(add(x[k + 1], t2), 1);
            }
        }
    }
    const Word16 a = x[0], b = x[1];
    x[0] = add(a, b);
    x[1] = sub(a, b);
    for (int i = 2; i <= 64; i += 2) {
        const int j = 128 - i;
        const Word16 r1 = add(x[i], x[j]), i1 = sub(x[i + 1], x[j + 1]);
        const Word16 r2 = add(x[i + 1], x[j + 1]), i2 = sub(x[j], x[i]);
        const Word32 lr = L_deposit_h(r1), li = L_deposit_h(i1);
        x[i] = round_fx(L_shr(L_msu(L_mac(lr, r2, phs_tbl[i]), i2, phs_tbl[i + 1]), 1));
        x[i + 1] = round_fx(L_shr(L_mac(L_mac(li, i2, phs_tbl[i]), r2, phs_tbl[i + 1]), 1));
        x[j] = round_fx(L_shr(L_mac(L_mac(lr, r2, phs_tbl[j]), i2, phs_tbl[j + 1]), 1));
        x[j + 1] = round_fx(L_shr(L_mac(L_msu(L_negate(li), i2, phs_tbl[j]), r2, phs_tbl[j + 1]), 1));
    }
}

TEST(AmrVadFft, DirectFormsEqualTheOperatorChainsOnExtremes) {
    Rng rng(2024);
    for (int round = 0; round < 4000; ++round) {
        std::vector<Word16> x(128);
        const int kind = round % 4;
        for (auto& v : x) {
            if (kind == 0) v = rng.s16();
            else if (kind == 1) v = static_cast<Word16>(rng.chance(2) ? -32768 : 32767);
            else if (kind == 2) v = static_cast<Word16>(rng.chance(3) ? -32768 : rng.uniform(-32768, 32767));
            else v = static_cast<Word16>(rng.uniform(-64, 64) * 512);
        }
        std::vector<Word16> want = x, simd_u8 = x, simd_n8 = x, scal_u8 = x, scal_n8 = x;
        reference_r_fft(want.data());
        zeps::u8::zepsFFTFwd_RToPerm_GSMAMR_16s_I(simd_u8.data());
        zeps::n8::zepsFFTFwd_RToPerm_GSMAMR_16s_I(simd_n8.data());
        zeps::u8::amr::r_fft_scalar(scal_u8.data());
        zeps::n8::amr::r_fft_scalar(scal_n8.data());
        ASSERT_EQ(simd_u8, want) << "round " << round;
        ASSERT_EQ(simd_n8, want) << "round " << round;
        ASSERT_EQ(scal_u8, want) << "round " << round;
        ASSERT_EQ(scal_n8, want) << "round " << round;
    }
}

}  // namespace
}  // namespace zeps::test::amrvad

/* SPDX-License-Identifier: BSD-3-Clause */
// GSM-AMR decoder LP parameters (3GPP TS 26.073 d_plsf_3.c, d_plsf_5.c,
// lsp_az.c, int_lpc.c, int_lsf.c, lsp_avg.c).
//
// Formats: LSFs normalised 0..16384 (= 0..4 kHz), LSPs Q15 cosines, LP
// coefficients Q12 with a[0] = 4096.
#pragma once

#include "amr/amr_dec_tables.h"
#include "amr/dec_state.h"
#include "amr/lsp_quant_lsf.h"

ZEPS_BEGIN_VARIANT
namespace amr_dec {

/// D_plsf_reset
inline void lsf_reset(LsfState& st) {
    for (int i = 0; i < kM; i++) {
        st.past_r_q[i] = 0;
        st.past_lsf_q[i] = zeps::amr_dtx_tab::mean_lsf_5[i];
    }
}

/// D_plsf_3: split-VQ 3+3+4 with first-order MA prediction; on a bad frame
/// the past LSFs drift towards the mean (ALPHA 0.9) and the residual memory
/// is re-estimated. mode MRDTX takes the predictor factor 1 (SID frames).
inline void d_plsf_3(LsfState& st, Word16 mode, Word16 bfi, const Word16* indice, Word16* lsp1_q) {
    namespace t = zeps::amr_dtx_tab;
    constexpr Word16 kAlpha = 29491, kOneAlpha = 3277;
    Word16 lsf1_q[kM];
    if (bfi != 0) {
        for (int i = 0; i < kM; i++)
            lsf1_q[i] = add(mult(st.past_lsf_q[i], kAlpha), mult(t::mean_lsf_3[i], kOneAlpha));
        for (int i = 0; i < kM; i++) {
            const Word16 pred = mode != MRDTX ? mult(st.past_r_q[i], t::pred_fac_3[i]) : st.past_r_q[i];
            st.past_r_q[i] = sub(lsf1_q[i], add(t::mean_lsf_3[i], pred));
        }
    } else {
        const std::int16_t *cb1 = t::dico1_lsf_3, *cb2 = t::dico2_lsf_3, *cb3 = t::dico3_lsf_3;
        const bool low = mode == MR475 || mode == MR515;
        if (low) cb3 = t::mr515_3_lsf;
        else if (mode == MR795) cb1 = t::mr795_1_lsf;
        Word16 lsf1_r[kM];
        const int i1 = indice[0] * 3;
        const int i2 = (low ? indice[1] * 2 : indice[1]) * 3;
        const int i3 = indice[2] * 4;
        for (int k = 0; k < 3; k++) lsf1_r[k] = cb1[i1 + k];
        for (int k = 0; k < 3; k++) lsf1_r[3 + k] = cb2[i2 + k];
        for (int k = 0; k < 4; k++) lsf1_r[6 + k] = cb3[i3 + k];
        for (int i = 0; i < kM; i++) {
            const Word16 pred = mode != MRDTX ? mult(st.past_r_q[i], t::pred_fac_3[i]) : st.past_r_q[i];
            lsf1_q[i] = add(lsf1_r[i], add(t::mean_lsf_3[i], pred));
            st.past_r_q[i] = lsf1_r[i];
        }
    }
    amr_dtx::reorder_lsf(lsf1_q, amr_dtx::kLsfGap);
    for (int i = 0; i < kM; i++) st.past_lsf_q[i] = lsf1_q[i];
    amr_dtx::lsf_to_lsp(lsf1_q, lsp1_q);
}

/// D_plsf_5: split-matrix quantiser of MR122, two LSP vectors a frame
/// (2nd and 4th subframe), MA prediction factor 0.65; ALPHA 0.95 on a bad frame.
inline void d_plsf_5(LsfState& st, Word16 bfi, const Word16* indice, Word16* lsp1_q, Word16* lsp2_q) {
    namespace t = zeps::amr_dtx_tab;
    constexpr Word16 kAlpha = 31128, kOneAlpha = 1639;
    Word16 lsf1_q[kM], lsf2_q[kM];
    if (bfi != 0) {
        for (int i = 0; i < kM; i++) {
            lsf1_q[i] = add(mult(st.past_lsf_q[i], kAlpha), mult(t::mean_lsf_5[i], kOneAlpha));
            lsf2_q[i] = lsf1_q[i];
        }
        for (int i = 0; i < kM; i++) {
            const Word16 temp = add(t::mean_lsf_5[i], mult(st.past_r_q[i], amr_dtx::kLspPredFacMR122));
            st.past_r_q[i] = sub(lsf2_q[i], temp);
        }
    } else {
        Word16 lsf1_r[kM], lsf2_r[kM];
        const std::int16_t* books[5] = {t::dico1_lsf_5, t::dico2_lsf_5, t::dico3_lsf_5, t::dico4_lsf_5,
                                        t::dico5_lsf_5};
        for (int s = 0; s < 5; s++) {
            Word16 idx = indice[s];
            bool neg = false;
            if (s == 2) {
                neg = (idx & 1) != 0;
                idx = shr(idx, 1);
            }
            const std::int16_t* p = &books[s][idx * 4];
            Word16 v[4] = {p[0], p[1], p[2], p[3]};
            if (neg)
                for (Word16& x : v) x = negate(x);
            lsf1_r[2 * s] = v[0];
            lsf1_r[2 * s + 1] = v[1];
            lsf2_r[2 * s] = v[2];
            lsf2_r[2 * s + 1] = v[3];
        }
        for (int i = 0; i < kM; i++) {
            const Word16 temp = add(t::mean_lsf_5[i], mult(st.past_r_q[i], amr_dtx::kLspPredFacMR122));
            lsf1_q[i] = add(lsf1_r[i], temp);
            lsf2_q[i] = add(lsf2_r[i], temp);
            st.past_r_q[i] = lsf2_r[i];
        }
    }
    amr_dtx::reorder_lsf(lsf1_q, amr_dtx::kLsfGap);
    amr_dtx::reorder_lsf(lsf2_q, amr_dtx::kLsfGap);
    for (int i = 0; i < kM; i++) st.past_lsf_q[i] = lsf2_q[i];
    amr_dtx::lsf_to_lsp(lsf1_q, lsp1_q);
    amr_dtx::lsf_to_lsp(lsf2_q, lsp2_q);
}

/// Get_lsp_pol: coefficients of F1(z) or F2(z) from every second LSP, Q24.
inline void get_lsp_pol(const Word16* lsp, Word32* f) {
    f[0] = L_mult(4096, 2048);
    f[1] = L_msu(0, lsp[0], 512);
    for (int i = 2; i <= 5; i++) {
        const Word16 l = lsp[2 * (i - 1)];
        f[i] = f[i - 2];
        for (int j = i; j > 1; j--) {
            Word16 hi, lo;
            L_Extract(f[j - 1], hi, lo);
            const Word32 t0 = L_shl(Mpy_32_16(hi, lo, l), 1);
            f[j] = L_sub(L_add(f[j], f[j - 2]), t0);
        }
        f[1] = L_msu(f[1], l, 512);
    }
}

/// True when v lies in the 32-bit range.
constexpr bool in_word32(std::int64_t v) { return v >= MIN_32 && v <= MAX_32; }

/// Get_lsp_pol on 64-bit integers. Mpy_32_16(hi, lo, l) is 2 hi l + 2 mult(lo, l)
/// (lo in 0..32767) except at hi = l = -32768, where its L_mult saturates;
/// there the doubled product exceeds 32 bits anyway. So each step is exact
/// while its doubled product, its sum and its difference stay within 32
/// bits. Returns false when one did not (the caller then runs get_lsp_pol).
inline bool get_lsp_pol_plain(const Word16* lsp, Word32* f) {
    std::int64_t g[6] = {std::int64_t{1} << 24, -1024 * std::int64_t{lsp[0]}, 0, 0, 0, 0};
    bool ok = true;
    for (int i = 2; i <= 5; i++) {
        const std::int64_t l = lsp[2 * (i - 1)];
        g[i] = g[i - 2];
        for (int j = i; j > 1; j--) {
            const Word32 v = static_cast<Word32>(g[j - 1]);
            const std::int64_t hi = v >> 16, lo = (v >> 1) & 0x7fff;
            const std::int64_t t0 = 4 * (hi * l) + 4 * ((lo * l) >> 15);
            const std::int64_t sum = g[j] + g[j - 2];
            g[j] = sum - t0;
            ok = ok && in_word32(t0) && in_word32(sum) && in_word32(g[j]);
        }
        g[1] -= 1024 * l;
    }
    for (int i = 0; i < 6; i++) f[i] = static_cast<Word32>(g[i]);
    return ok;
}

/// get_lsp_pol_plain of the even (f1) and odd (f2) LSPs side by side, so
/// that the two recursions overlap; false when either left 32 bits. Each
/// value v of the chain is in 32 bits exactly when v + 2^31 has no bit
/// above 31 (every |v| here stays below 2^40): the tests OR into one word.
inline bool get_lsp_pols_plain(const Word16* lsp, Word32* f1, Word32* f2) {
    constexpr std::int64_t kBias = std::int64_t{1} << 31;
    std::int64_t g[2][6] = {{std::int64_t{1} << 24, -1024 * std::int64_t{lsp[0]}, 0, 0, 0, 0},
                            {std::int64_t{1} << 24, -1024 * std::int64_t{lsp[1]}, 0, 0, 0, 0}};
    std::uint64_t outside = 0;
    for (int i = 2; i <= 5; i++) {
        const std::int64_t l[2] = {lsp[2 * (i - 1)], lsp[2 * (i - 1) + 1]};
        for (int p = 0; p < 2; p++) g[p][i] = g[p][i - 2];
        for (int j = i; j > 1; j--)
            for (int p = 0; p < 2; p++) {
                // the half value of g (hi 2^15 + lo of L_Extract) times l, doubled twice
                const std::int64_t t0 = 4 * (((g[p][j - 1] >> 1) * l[p]) >> 15);
                const std::int64_t sum = g[p][j] + g[p][j - 2];
                g[p][j] = sum - t0;
                outside |= static_cast<std::uint64_t>(t0 + kBias) | static_cast<std::uint64_t>(sum + kBias) |
                           static_cast<std::uint64_t>(g[p][j] + kBias);
            }
        for (int p = 0; p < 2; p++) g[p][1] -= 1024 * l[p];
    }
    for (int i = 0; i < 6; i++) {
        f1[i] = static_cast<Word32>(g[0][i]);
        f2[i] = static_cast<Word32>(g[1][i]);
    }
    return (outside >> 32) == 0;
}

/// Lsp_Az: LSPs (Q15) to LP coefficients a[0..10] (Q12).
inline void lsp_az(const Word16* lsp, Word16* a) {
    Word32 f1[6], f2[6];
    if (!get_lsp_pols_plain(lsp, f1, f2)) {
        get_lsp_pol(&lsp[0], f1);
        get_lsp_pol(&lsp[1], f2);
    }
    for (int i = 5; i > 0; i--) {
        f1[i] = L_add(f1[i], f1[i - 1]);
        f2[i] = L_sub(f2[i], f2[i - 1]);
    }
    a[0] = 4096;
    for (int i = 1, j = 10; i <= 5; i++, j--) {
        a[i] = extract_l(L_shr_r(L_add(f1[i], f2[i]), 13));
        a[j] = extract_l(L_shr_r(L_sub(f1[i], f2[i]), 13));
    }
}

/// Int_lsf: the LSFs of subframe i_subfr (0, 40, 80, 120) interpolated as Int_lpc_1to3 does.
/// No operator of the chains can saturate for any 16-bit LSFs (x - (x >> 2) and
/// the quarters and halves keep every sum within -32768 .. 32766), so each
/// weight is a plain sum, chosen once for the subframe.
inline void int_lsf(const Word16* lsf_old, const Word16* lsf_new, int i_subfr, Word16* lsf_out) {
    switch (i_subfr) {
    case 0:
        for (int i = 0; i < kM; i++) lsf_out[i] = static_cast<Word16>(lsf_old[i] - (lsf_old[i] >> 2) + (lsf_new[i] >> 2));
        break;
    case 40:
        for (int i = 0; i < kM; i++) lsf_out[i] = static_cast<Word16>((lsf_old[i] >> 1) + (lsf_new[i] >> 1));
        break;
    case 80:
        for (int i = 0; i < kM; i++) lsf_out[i] = static_cast<Word16>((lsf_old[i] >> 2) + lsf_new[i] - (lsf_new[i] >> 2));
        break;
    default:
        for (int i = 0; i < kM; i++) lsf_out[i] = lsf_new[i];
        break;
    }
}

/// Int_lpc_1to3: A(z) of the four subframes from the old and new LSPs
/// (weights 3/4-1/4, 1/2-1/2, 1/4-3/4, new). The weighted LSPs are Int_lsf's
/// sums (the same operators on the same operands).
inline void int_lpc_1to3(const Word16* lsp_old, const Word16* lsp_new, Word16* Az) {
    Word16 lsp[kM];
    int_lsf(lsp_old, lsp_new, 0, lsp);
    lsp_az(lsp, Az);
    int_lsf(lsp_old, lsp_new, 40, lsp);
    lsp_az(lsp, Az + kMp1);
    int_lsf(lsp_old, lsp_new, 80, lsp);
    lsp_az(lsp, Az + 2 * kMp1);
    lsp_az(lsp_new, Az + 3 * kMp1);
}

/// Int_lpc_1and3: A(z) of the four subframes when the mid-frame LSPs are
/// transmitted (MR122): subframes 1 and 3 interpolated (halves, as Int_lsf), 2 and 4 as sent.
inline void int_lpc_1and3(const Word16* lsp_old, const Word16* lsp_mid, const Word16* lsp_new, Word16* Az) {
    Word16 lsp[kM];
    int_lsf(lsp_old, lsp_mid, 40, lsp);
    lsp_az(lsp, Az);
    lsp_az(lsp_mid, Az + kMp1);
    int_lsf(lsp_mid, lsp_new, 40, lsp);
    lsp_az(lsp, Az + 2 * kMp1);
    lsp_az(lsp_new, Az + 3 * kMp1);
}

/// lsp_avg: mean = 0.84 mean + 0.16 new (EXPCONST 5243).
inline void lsp_avg(Word16* lsp_meanSave, const Word16* lsp) {
    constexpr Word16 kExpConst = 5243;
    for (int i = 0; i < kM; i++) {
        Word32 L_tmp = L_deposit_h(lsp_meanSave[i]);
        L_tmp = L_msu(L_tmp, kExpConst, lsp_meanSave[i]);
        L_tmp = L_mac(L_tmp, kExpConst, lsp[i]);
        lsp_meanSave[i] = round_fx(L_tmp);
    }
}

}  // namespace amr_dec
ZEPS_END_VARIANT

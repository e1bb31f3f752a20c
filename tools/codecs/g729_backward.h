/* SPDX-License-Identifier: BSD-3-Clause */
// Pieces of the G.729 Annex E coder that the tool's integrated decoder
// (tools/codecs/g729i.cpp, which is also its Annex E decoder) and encoder
// (tools/codecs/g729i_encoder.cpp) use, through the public exports alone: the
// backward-adaptive LP filter of order 30 (ITU-T G.729 Annex E E.3.1) with
// its interpolation, the backward-mode dominance count and the adaptive
// post-filter factors (E.4.2). Filters Q12, factors Q15.
#pragma once

#include <cstring>
#include <vector>

#include "tools/codecs/g729_frame.h"
#include "zepsc.h"

namespace zepsc_g729 {

inline constexpr int kOrderBwd = 30;                // M_BWD
inline constexpr int kMemSynBwd = kOrderBwd + 35;   // MEM_SYN_BWD
inline constexpr int kAnaBwd = kFrame + kMemSynBwd; // L_ANA_BWD
inline constexpr Zep16s kCIntReset = 4506;          // interpolation factor reset, Q12

/// The backward LP filter and its memories: a_t holds the two subframes'
/// filters (31 values each), the newest in a_t[31..61]; prev_filter is the
/// previous frame's filter and c_int the interpolation factor (decoder's
/// Int_bwd, encoder's mode decision).
struct BackwardLp {
    explicit BackwardLp(Check c) : check(c) {
        hyb = initialised_state(check, zepsWinHybridGetStateSize_G729E_16s,
                                zepsWinHybridInit_G729E_16s, "hybrid-window");
        a_t_mem[0] = prev_filter[0] = old_a[0] = 4096;
    }

    Zep16s* newest() { return a_t + kOrderBwd + 1; }

    /// autocorr_hyb_window, Lag_window_bwd, Levinson, the saturation test
    /// (a saturated filter is replaced by the last good one) and the
    /// bandwidth expansion by 0.98, from the synthesis buffer (kAnaBwd samples).
    void analyse(const Zep16s* synth_buf) {
        Zep32s r[kOrderBwd + 1];
        Zep16s rh[kOrderBwd + 1], rl[kOrderBwd + 1], rc[kOrderBwd];
        Zep16s* a = newest();
        check(zepsWinHybrid_G729E_16s32s(synth_buf, r, hyb.data()), "hybrid window");
        check(zepsLagWindow_G729E_32s16s(r, rh, rl), "lag window");
        check(zepsLevinsonDurbin_G729E_16s(kOrderBwd, rh, rl, a, rc, old_a, old_rc), "Levinson-Durbin");
        bool saturated = false;
        for (int i = 0; i <= kOrderBwd; ++i) saturated = saturated || a[i] >= 32767;
        if (saturated)
            std::memcpy(a, a_t_mem, sizeof a_t_mem);
        else
            std::memcpy(a_t_mem, a, sizeof a_t_mem);
        check(zepsWeightLPC_G729E_16s(a, 32113, kOrderBwd, a), "bandwidth expansion");  // GAMMA_BWD
    }

    /// Back from an erasure: the newest filter mixed with mem by c_fe (Q12).
    void mix_in(const Zep16s* mem, Zep16s c_fe) {
        check(zepsInterpolateC_NR_G729_16s_Sfs(newest(), static_cast<Zep16s>(4096 - c_fe), mem, c_fe, newest(),
                                               kOrderBwd + 1, 12),
              "filter interpolation");
    }

    /// Int_bwd: the second subframe's filter moves towards the previous
    /// frame's by c_int (decaying by 410 a frame); the first subframe takes
    /// the mean of the two.
    void interpolate() {
        c_int = static_cast<Zep16s>(c_int - 410 < 0 ? 0 : c_int - 410);
        Zep16s* a = newest();
        check(zepsInterpolateC_NR_G729_16s_Sfs(a, static_cast<Zep16s>(4096 - c_int), prev_filter, c_int, a,
                                               kOrderBwd + 1, 12),
              "filter interpolation");
        check(zepsInterpolateC_NR_G729_16s_Sfs(a, 1, prev_filter, 1, a_t, kOrderBwd + 1, 1), "filter interpolation");
    }

    /// The previous filter after a forward (or comfort-noise) frame: its
    /// second subframe's order-10 filter, zero above.
    void keep_forward(const Zep16s* a2) {
        std::memset(prev_filter, 0, sizeof prev_filter);
        std::memcpy(prev_filter, a2, (kOrder + 1) * sizeof(Zep16s));
        c_int = kCIntReset;
    }

    Check check;
    std::vector<std::uint8_t> hyb;
    Zep16s a_t[2 * (kOrderBwd + 1)] = {};
    Zep16s a_t_mem[kOrderBwd + 1] = {};
    Zep16s prev_filter[kOrderBwd + 1] = {};
    Zep16s old_a[kOrderBwd + 1] = {};
    Zep16s old_rc[2] = {};
    Zep16s c_int = kCIntReset;
};

/// tst_bwd_dominant: backward mode dominates when, over the last 10 to 100
/// loud frames, backward frames outnumber 4 times the forward ones.
struct BackwardDominance {
    void count(Zep16s mode) {
        if (mode == 0)
            ++fwd;
        else
            ++bwd;
        int all = bwd + fwd;
        if (all == 100) {
            all >>= 1;
            bwd >>= 1;
            fwd >>= 1;
        }
        dominant = all >= 10 && bwd > 4 * fwd;
    }
    int bwd = 0, fwd = 0;
    bool dominant = false;
};

/// The post-filter's factors: the main body's below 11.8 kbit/s; at 11.8
/// kbit/s eased off step by step while backward mode dominates, else back
/// towards GAMMA1_PST_E, GAMMA2_PST_E, GAMMA_HARM_E.
struct PostFactors {
    void next(bool high, bool backward_dominant) {
        if (!high) {
            long_h = 20;
            ga1 = 22938;
            ga2 = 18022;
            ga_harm = 16384;
            return;
        }
        long_h = 32;
        const auto step = [](Zep16s v, int d, Zep16s hi) {
            const int r = v + d;
            return static_cast<Zep16s>(r < 0 ? 0 : r > hi ? hi : r);
        };
        const bool down = backward_dominant;
        ga_harm = down ? step(ga_harm, -410, 32767) : step(ga_harm, 410, 8192);
        ga1 = down ? step(ga1, -1147, 32767) : step(ga1, 1147, 22938);
        ga2 = down ? step(ga2, -1065, 32767) : step(ga2, 1065, 21300);
    }
    int long_h = 32;
    Zep16s ga1 = 22938, ga2 = 21300, ga_harm = 8192;
};

}  // namespace zepsc_g729

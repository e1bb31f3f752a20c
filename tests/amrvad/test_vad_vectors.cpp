// GSM-AMR VAD options 1 and 2 and the VAD option 2 FFT against the 3GPP
// reference streams: every flag and every state word after every frame.
#include <gtest/gtest.h>

#include "tests/amrvad/amrvad_util.h"

namespace zeps::test::amrvad {
namespace {

TEST(AmrVad, Vad1StreamMatchesReference) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const VecFile f = load_vec(shared_path("vectors/amr/zepsVAD1_GSMAMR_16s.vec"));
    for (const Build& b : kBuilds) {
        SCOPED_TRACE(b.name);
        ZepVAD1State_GSMAMR st;
        for (const VecCase& c : f.cases) {
            if (c.reset) {
                zepsVAD1StateReset_GSMAMR(&st);
                continue;
            }
            const auto src = c.in("pSrc").as<Zep16s>();
            st.pitch = c.in("statePitch").as<Zep16s>()[0];
            Zep16s flag = -1;
            ASSERT_EQ(b.vad1(src.data(), &st, &flag, c.in("bestCorrHp").as<Zep32s>()[0],
                             c.in("toneFlag").as<Zep16s>()[0]),
                      c.ret);
            ASSERT_EQ(flag, c.out("pVadFlag").ints[0]) << "case " << c.number;
            ASSERT_EQ(widen(st.bckr_est, 9), comment_values(c, "bckr_est")) << "case " << c.number;
            ASSERT_EQ(widen(st.ave_level, 9), comment_values(c, "ave_level")) << "case " << c.number;
            ASSERT_EQ(widen(st.old_level, 9), comment_values(c, "old_level")) << "case " << c.number;
            ASSERT_EQ(widen(st.sub_level, 9), comment_values(c, "sub_level")) << "case " << c.number;
            ASSERT_EQ(widen(&st.a_data5[0][0], 6), comment_values(c, "a_data5")) << "case " << c.number;
            ASSERT_EQ(widen(st.a_data3, 5), comment_values(c, "a_data3")) << "case " << c.number;
            // burst, hang, stat, vadreg, pitch, tone, c_high, c_low, oldlag_count,
            // oldlag, c_hang_count, c_hang_timer, best_corr_hp, decision, warning,
            // sp_burst_count, corr_hp_fast
            const auto r = comment_values(c, "burst_count");
            ASSERT_EQ(r.size(), 17u);
            const std::vector<long long> mine = {st.burst_count, st.hang_count, st.stat_count, st.vadreg, st.pitch,
                                                 st.complex_high, st.complex_low, st.complex_hang_count,
                                                 st.complex_hang_timer, st.complex_warning, st.corr_hp_fast};
            const std::vector<long long> ref = {r[0], r[1], r[2], r[3], r[4], r[6], r[7], r[10], r[11], r[14], r[16]};
            ASSERT_EQ(mine, ref) << "case " << c.number;
        }
    }
}

TEST(AmrVad, Vad2StreamMatchesReference) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const VecFile f = load_vec(shared_path("vectors/amr/zepsVAD2_GSMAMR_16s.vec"));
    for (const Build& b : kBuilds) {
        SCOPED_TRACE(b.name);
        ZepVAD2State_GSMAMR st;
        for (const VecCase& c : f.cases) {
            if (c.reset) {
                zepsVAD2StateReset_GSMAMR(&st);
                continue;
            }
            const auto src = c.in("pSrc").as<Zep16s>();
            Zep16s flag = -1;
            ASSERT_EQ(b.vad2(src.data(), &st, &flag, c.in("ltpFlag").as<Zep32s>()[0]), c.ret);
            ASSERT_EQ(flag, c.out("pVadFlag").ints[0]) << "case " << c.number;
            const auto head = comment_values(c, "pre_emp_mem");
            ASSERT_EQ((std::vector<long long>{st.pre_emp_mem, st.update_cnt, st.hyster_cnt, st.last_update_cnt}), head)
                << "case " << c.number;
            ASSERT_EQ(widen(st.ch_enrg_long_db, 16), comment_values(c, "ch_enrg_long_db")) << "case " << c.number;
            ASSERT_EQ(std::vector<long long>{st.Lframe_cnt}, comment_values(c, "Lframe_cnt"));
            ASSERT_EQ(widen(st.Lch_enrg, 16), comment_values(c, "Lch_enrg")) << "case " << c.number;
            ASSERT_EQ(widen(st.Lch_noise, 16), comment_values(c, "Lch_noise")) << "case " << c.number;
            ASSERT_EQ((std::vector<long long>{st.last_normb_shift, st.tsnr, st.hangover, st.burstcount,
                                              st.fupdate_flag, st.negSNRvar, st.negSNRbias}),
                      comment_values(c, "last_normb_shift"))
                << "case " << c.number;
            ASSERT_EQ(std::vector<long long>{st.shift_state}, comment_values(c, "shift_state"));
        }
    }
}

TEST(AmrVad, FftMatchesReference) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const VecFile f = load_vec(shared_path("vectors/amr/zepsFFTFwd_RToPerm_GSMAMR_16s_I.vec"));
    for (const Build& b : kBuilds) {
        for (const VecCase& c : f.cases) {
            auto x = c.in("pSrcDst").as<Zep16s>();
            ASSERT_EQ(b.fft(x.data()), c.ret);
            ASSERT_EQ(x, c.out("pSrcDst").as<Zep16s>()) << b.name << " case " << c.number;
        }
    }
}

}  // namespace
}  // namespace zeps::test::amrvad

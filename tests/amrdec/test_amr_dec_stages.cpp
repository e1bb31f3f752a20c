// GSM-AMR decoder stages: the speech decoder of rates 7.4, 7.95 and 12.2
// rebuilt from the stage exports (as 3GPP TS 26.073 Decoder_amr strings them
// for good frames, where the background-noise stages do not act) gives the
// frame decoder's output bit for bit on random frames; plus the stages'
// boundary behaviour.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/variant_check.h"
#include "frame/variants.h"

namespace {

using V16 = std::vector<std::int16_t>;

// The few saturating operators the decoder's glue uses (3GPP basic operators).
std::int16_t sat(std::int64_t v) { return static_cast<std::int16_t>(std::clamp<std::int64_t>(v, -32768, 32767)); }
std::int32_t sat32(std::int64_t v) { return static_cast<std::int32_t>(std::clamp<std::int64_t>(v, INT32_MIN, INT32_MAX)); }
std::int16_t mult(std::int16_t a, std::int16_t b) { return sat((std::int64_t{a} * b) >> 15); }
std::int32_t L_mult(std::int16_t a, std::int16_t b) { return sat32(2 * std::int64_t{a} * b); }
std::int32_t L_mac(std::int32_t acc, std::int16_t a, std::int16_t b) { return sat32(std::int64_t{acc} + L_mult(a, b)); }
std::int32_t L_shl(std::int32_t a, int n) { return sat32(std::int64_t{a} * (std::int64_t{1} << n)); }
std::int16_t round16(std::int32_t a) { return static_cast<std::int16_t>(sat32(std::int64_t{a} + 0x8000) >> 16); }

struct Layout {
    std::int32_t rate;
    std::vector<int> bits;  // parameter widths in frame order
};
const Layout kLayouts[] = {
    {7, {8, 9, 9, 8, 13, 4, 7, 5, 13, 4, 7, 8, 13, 4, 7, 5, 13, 4, 7}},
    {8, {9, 9, 9, 8, 13, 4, 4, 5, 6, 13, 4, 4, 5, 8, 13, 4, 4, 5, 6, 13, 4, 4, 5}},
    {12, {7, 8, 9, 8, 6, 9, 4, 4, 4, 4, 4, 4, 3, 3, 3, 3, 3, 5, 6, 4, 4, 4, 4, 4, 4, 3, 3, 3, 3, 3,
          5, 9, 4, 4, 4, 4, 4, 4, 3, 3, 3, 3, 3, 5, 6, 4, 4, 4, 4, 4, 4, 3, 3, 3, 3, 3, 5}},
};

// Speech decoder of one good frame from the stage exports.
class StageDecoder {
public:
    StageDecoder() : post_(512) {
        EXPECT_EQ(zeps::u8::zepsPostFilterInit_GSMAMR_16s(reinterpret_cast<ZepPostFilterState_GSMAMR*>(post_.data())), 0);
    }
    void frame(std::int32_t rate, const std::vector<int>& widths, const V16& bits, std::int16_t* out) {
        V16 prm;
        std::size_t at = 0;
        for (int w : widths) {
            std::int16_t v = 0;
            for (int b = 0; b < w; b++) v = static_cast<std::int16_t>((v << 1) | bits[at++]);
            prm.push_back(v);
        }
        const std::int16_t* p = prm.data();
        V16 lsp(20), az(44);
        ASSERT_EQ(zeps::u8::zepsLSFDecode_GSMAMR_16s(past_rq_, past_lsf_, p, lsp.data(), rate, 0), 0);
        p += rate == 12 ? 5 : 3;
        const std::int16_t* lsp_new = rate == 12 ? &lsp[10] : &lsp[0];
        ASSERT_EQ(zeps::u8::zepsInterpolateLSP_GSMAMR_16s(lsp_old_, lsp.data(), lsp_new, az.data(), rate), 0);
        std::copy(lsp_new, lsp_new + 10, lsp_old_);
        std::int16_t synth[160];
        for (int sf = 0; sf < 4; sf++) subframe(rate, sf, p, &az[static_cast<std::size_t>(11 * sf)], &synth[40 * sf]);
        ASSERT_EQ(zeps::u8::zepsPostFilter_GSMAMR_16s_I(reinterpret_cast<ZepPostFilterState_GSMAMR*>(post_.data()), synth,
                                              az.data(), rate), 0);
        ASSERT_EQ(zeps::u8::zepsPostProcess_GSMAMR_16s_I(hp_, synth, 160), 0);
        for (int i = 0; i < 160; i++) out[i] = static_cast<std::int16_t>(synth[i] & 0xfff8);
    }

private:
    void subframe(std::int32_t rate, int sf, const std::int16_t*& p, const std::int16_t* a, std::int16_t* synth) {
        std::int16_t* exc = exc_ + 154;
        const std::int16_t flag = sf == 0 || sf == 2 ? 0 : 1;
        const std::int16_t index = *p++;
        std::int16_t T0 = 0, frac = 0;
        ASSERT_EQ(zeps::u8::zepsAdaptiveLagDecode_GSMAMR_16s(index, flag, rate == 12 ? t0_ : old_t0_, &T0, &frac, rate), 0);
        if (rate == 12 && flag != 0 && index >= 61) {  // the reference rejects these delta codes
            T0 = old_t0_;
            frac = 0;
        }
        t0_ = T0;
        ASSERT_EQ(zeps::u8::zepsAdaptiveCodebookDecode_GSMAMR_16s(exc_, T0, frac, rate), 0);
        V16 code(40);
        std::int16_t gain_pit = 0, gain_code = 0, sharp;
        if (rate == 12) {
            ASSERT_EQ(zeps::u8::zepsDecodePitchGain_GSMAMR_16s(*p++, &gain_pit, rate), 0);
            ASSERT_EQ(zeps::u8::zepsFixedCodebookDecode_GSMAMR_16s(p, code.data(), sf, rate), 0);
            p += 10;
            sharp = sat(2 * gain_pit);
        } else {
            ASSERT_EQ(zeps::u8::zepsFixedCodebookDecode_GSMAMR_16s(p, code.data(), sf, rate), 0);
            p += 2;
            sharp = sat(2 * sharp_);
        }
        ASSERT_EQ(zeps::u8::zepsPitchSharpening_GSMAMR_16s_I(code.data(), T0, sharp), 0);
        if (rate == 8) {
            ASSERT_EQ(zeps::u8::zepsDecodePitchGain_GSMAMR_16s(*p++, &gain_pit, rate), 0);
        }
        ASSERT_EQ(zeps::u8::zepsDecodeGain_GSMAMR_16s(past_qua_en_, code.data(), p++, &gain_pit, &gain_code, rate, 0), 0);
        ASSERT_EQ(zeps::u8::zepsConcealPitchGain_GSMAMR_16s(ec_p_, &gain_pit, 0, 0, 0), 0);
        ASSERT_EQ(zeps::u8::zepsConcealCodeGain_GSMAMR_16s(ec_c_, past_qua_en_, &gain_code, 0, 0, 0), 0);
        sharp_ = std::min<std::int16_t>(gain_pit, 13017);
        sharp = sat(2 * (rate == 12 ? gain_pit : sharp_));
        std::int16_t excp[40];
        if (sharp > 16384)
            for (int i = 0; i < 40; i++) {
                std::int32_t t = L_mult(mult(exc[i], sharp), gain_pit);
                if (rate == 12) t >>= 1;
                excp[i] = round16(t);
            }
        const std::int16_t pitch_fac = rate == 12 ? static_cast<std::int16_t>(gain_pit >> 1) : gain_pit;
        const int shift = rate == 12 ? 2 : 1;
        std::int16_t enh[40];
        for (int i = 0; i < 40; i++) {
            enh[i] = exc[i];
            exc[i] = round16(L_shl(L_mac(L_mult(exc[i], pitch_fac), code[static_cast<std::size_t>(i)], gain_code), shift));
        }
        ASSERT_EQ(zeps::u8::zepsPhaseDispersion_GSMAMR_16s(ph_, enh, code.data(), gain_code, gain_pit, pitch_fac, shift, rate, 0), 0);
        const std::int16_t* src = enh;
        if (sharp > 16384) {
            for (int i = 0; i < 40; i++) excp[i] = sat(std::int32_t{excp[i]} + enh[i]);
            ASSERT_EQ(zeps::u8::zepsGainControl_GSMAMR_16s_I(enh, excp, 40), 0);
            src = excp;
        }
        std::int16_t mem[10];
        std::copy(mem_, mem_ + 10, mem);
        const ZepStatus st = zeps::u8::zepsSynthesisFilter_GSMAMR_16s(a, src, synth, mem, 40, 0);
        if (st == zepStsOverflow) {  // rescale the excitation history and filter again
            overflows++;
            for (std::int16_t& v : exc_) v = static_cast<std::int16_t>(v >> 2);
            for (std::int16_t& v : enh) v = static_cast<std::int16_t>(v >> 2);
            const ZepStatus again = zeps::u8::zepsSynthesisFilter_GSMAMR_16s(a, enh, synth, mem_, 40, 1);
            ASSERT_TRUE(again == zepStsNoErr || again == zepStsOverflow);  // the reference keeps this one
        } else {
            ASSERT_EQ(st, 0);
            std::copy(synth + 30, synth + 40, mem_);
        }
        std::copy(exc_ + 40, exc_ + 194, exc_);
        old_t0_ = T0;
    }

    std::int16_t exc_[194] = {};
    std::int16_t lsp_old_[10] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    std::int16_t mem_[10] = {};
    std::int16_t past_rq_[10] = {};
    std::int16_t past_lsf_[10] = {1384, 2077, 3420, 5108, 6742, 8122, 9863, 11092, 12714, 13701};
    std::int16_t past_qua_en_[8] = {-14336, -14336, -14336, -14336, -2381, -2381, -2381, -2381};
    std::int16_t ec_p_[7] = {1640, 1640, 1640, 1640, 1640, 0, 16384};
    std::int16_t ec_c_[7] = {1, 1, 1, 1, 1, 0, 1};
    std::int16_t ph_[8] = {};
    std::int16_t hp_[6] = {};
    std::int16_t sharp_ = 0, old_t0_ = 40, t0_ = 40;
    std::vector<std::uint8_t> post_;

public:
    int overflows = 0;
};

TEST(AmrDecStages, RebuildTheFrameDecoder) {
    zeps::test::Rng rng(2026);
    int overflows = 0;
    for (const Layout& lay : kLayouts) {
        SCOPED_TRACE(lay.rate);
        std::vector<std::uint8_t> st(2048);
        auto* state = reinterpret_cast<ZepDecodeState_GSMAMR*>(st.data());
        ASSERT_EQ(zeps::u8::zepsDecodeInit_GSMAMR_16s(state), 0);
        StageDecoder stages;
        for (int f = 0; f < 150; f++) {
            V16 bits(244, 0);
            for (int i = 0; i < 244; i++) bits[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(rng.uniform(0, 1));
            V16 want(160), got(160);
            ASSERT_EQ(zeps::u8::zepsDecode_GSMAMR_16s(bits.data(), state, want.data(), lay.rate, 0), 0);
            stages.frame(lay.rate, lay.bits, bits, got.data());
            ASSERT_EQ(got, want) << "frame " << f;
        }
        overflows += stages.overflows;
    }
    EXPECT_GT(overflows, 0) << "random frames should drive the synthesis filter into saturation";
}

TEST(AmrDecStages, LagAndCodebookBoundaries) {
    struct Lag {
        std::int16_t index, flag, prev;
        std::int32_t rate;
        std::int16_t T0, frac;
    };
    const Lag lags[] = {
        {0, 0, 40, 7, 19, 1},      {196, 0, 40, 7, 85, -1},   {197, 0, 40, 7, 85, 0},   {255, 0, 40, 7, 143, 0},
        {0, 0, 40, 12, 17, 3},     {462, 0, 40, 12, 94, 3},  {463, 0, 40, 12, 95, 0},  {511, 0, 40, 12, 143, 0},
        {63, 1, 143, 12, 144, 0},  {63, 1, 143, 8, 144, 1},  {31, 1, 143, 11, 144, -1}, {0, 1, 20, 0, 15 + 5, 0},
        {15, 1, 143, 0, 143, 0},   {4, 1, 60, 3, 58, 1},
    };
    for (const Lag& l : lags) {
        std::int16_t T0 = 0, frac = 0;
        ASSERT_EQ(zeps::u8::zepsAdaptiveLagDecode_GSMAMR_16s(l.index, l.flag, l.prev, &T0, &frac, l.rate), 0) << l.index;
        EXPECT_EQ(T0, l.T0) << "index " << l.index << " rate " << l.rate;
        EXPECT_EQ(frac, l.frac) << "index " << l.index << " rate " << l.rate;
    }
    std::int16_t T0 = 0x5a5a, frac = 0x5a5a;
    EXPECT_EQ(zeps::u8::zepsAdaptiveLagDecode_GSMAMR_16s(16, 1, 60, &T0, &frac, 0), zepStsOutOfRangeErr);
    EXPECT_EQ(zeps::u8::zepsAdaptiveLagDecode_GSMAMR_16s(256, 0, 60, &T0, &frac, 11), zepStsOutOfRangeErr);
    EXPECT_EQ(zeps::u8::zepsAdaptiveLagDecode_GSMAMR_16s(0, 0, 16, &T0, &frac, 11), zepStsRangeErr);
    EXPECT_EQ(T0, 0x5a5a);
    EXPECT_EQ(frac, 0x5a5a);

    // Two pulses of MR102 on one position add up; a code outside its width is refused.
    const std::int16_t mr102[7] = {0, 1, 0, 0, 0, 0, 0};
    V16 code(40, 0x5a5a);
    ASSERT_EQ(zeps::u8::zepsFixedCodebookDecode_GSMAMR_16s(mr102, code.data(), 0, 11), 0);
    V16 want(40, 0);
    want[0] = want[2] = want[3] = 16382;
    want[1] = -16382;
    EXPECT_EQ(code, want);
    const std::int16_t bad[2] = {128, 0};
    V16 canary(40, 0x5a5a);
    EXPECT_EQ(zeps::u8::zepsFixedCodebookDecode_GSMAMR_16s(bad, canary.data(), 0, 0), zepStsOutOfRangeErr);
    EXPECT_EQ(canary, V16(40, 0x5a5a));
}

}  // namespace

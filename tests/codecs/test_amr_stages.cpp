// SPDX-License-Identifier: BSD-3-Clause
// The GSM-AMR decoder of the zepsc tool against a decoder of good frames
// of rates 7.4, 7.95 and 12.2 strung independently from the stage exports
// (as 3GPP TS 26.073 Decoder_amr strings them for good frames, where the
// background-noise stages do not act): the same output bit for bit on random
// frames, with the synthesis filter driven into saturation.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/codecs/codec_replay.h"
#include "zepsc.h"

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
        EXPECT_EQ(zepsPostFilterInit_GSMAMR_16s(reinterpret_cast<ZepPostFilterState_GSMAMR*>(post_.data())), 0);
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
        ASSERT_EQ(zepsLSFDecode_GSMAMR_16s(past_rq_, past_lsf_, p, lsp.data(), rate, 0), 0);
        p += rate == 12 ? 5 : 3;
        const std::int16_t* lsp_new = rate == 12 ? &lsp[10] : &lsp[0];
        ASSERT_EQ(zepsInterpolateLSP_GSMAMR_16s(lsp_old_, lsp.data(), lsp_new, az.data(), rate), 0);
        std::copy(lsp_new, lsp_new + 10, lsp_old_);
        std::int16_t synth[160];
        for (int sf = 0; sf < 4; sf++) subframe(rate, sf, p, &az[static_cast<std::size_t>(11 * sf)], &synth[40 * sf]);
        ASSERT_EQ(zepsPostFilter_GSMAMR_16s_I(reinterpret_cast<ZepPostFilterState_GSMAMR*>(post_.data()), synth,
                                              az.data(), rate), 0);
        ASSERT_EQ(zepsPostProcess_GSMAMR_16s_I(hp_, synth, 160), 0);
        for (int i = 0; i < 160; i++) out[i] = static_cast<std::int16_t>(synth[i] & 0xfff8);
    }

private:
    void subframe(std::int32_t rate, int sf, const std::int16_t*& p, const std::int16_t* a, std::int16_t* synth) {
        std::int16_t* exc = exc_ + 154;
        const std::int16_t flag = sf == 0 || sf == 2 ? 0 : 1;
        const std::int16_t index = *p++;
        std::int16_t T0 = 0, frac = 0;
        ASSERT_EQ(zepsAdaptiveLagDecode_GSMAMR_16s(index, flag, rate == 12 ? t0_ : old_t0_, &T0, &frac, rate), 0);
        if (rate == 12 && flag != 0 && index >= 61) {  // the reference rejects these delta codes
            T0 = old_t0_;
            frac = 0;
        }
        t0_ = T0;
        ASSERT_EQ(zepsAdaptiveCodebookDecode_GSMAMR_16s(exc_, T0, frac, rate), 0);
        V16 code(40);
        std::int16_t gain_pit = 0, gain_code = 0, sharp;
        if (rate == 12) {
            ASSERT_EQ(zepsDecodePitchGain_GSMAMR_16s(*p++, &gain_pit, rate), 0);
            ASSERT_EQ(zepsFixedCodebookDecode_GSMAMR_16s(p, code.data(), sf, rate), 0);
            p += 10;
            sharp = sat(2 * gain_pit);
        } else {
            ASSERT_EQ(zepsFixedCodebookDecode_GSMAMR_16s(p, code.data(), sf, rate), 0);
            p += 2;
            sharp = sat(2 * sharp_);
        }
        ASSERT_EQ(zepsPitchSharpening_GSMAMR_16s_I(code.data(), T0, sharp), 0);
        if (rate == 8) {
            ASSERT_EQ(zepsDecodePitchGain_GSMAMR_16s(*p++, &gain_pit, rate), 0);
        }
        ASSERT_EQ(zepsDecodeGain_GSMAMR_16s(past_qua_en_, code.data(), p++, &gain_pit, &gain_code, rate, 0), 0);
        ASSERT_EQ(zepsConcealPitchGain_GSMAMR_16s(ec_p_, &gain_pit, 0, 0, 0), 0);
        ASSERT_EQ(zepsConcealCodeGain_GSMAMR_16s(ec_c_, past_qua_en_, &gain_code, 0, 0, 0), 0);
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
        ASSERT_EQ(zepsPhaseDispersion_GSMAMR_16s(ph_, enh, code.data(), gain_code, gain_pit, pitch_fac, shift, rate, 0), 0);
        const std::int16_t* src = enh;
        if (sharp > 16384) {
            for (int i = 0; i < 40; i++) excp[i] = sat(std::int32_t{excp[i]} + enh[i]);
            ASSERT_EQ(zepsGainControl_GSMAMR_16s_I(enh, excp, 40), 0);
            src = excp;
        }
        std::int16_t mem[10];
        std::copy(mem_, mem_ + 10, mem);
        const ZepStatus st = zepsSynthesisFilter_GSMAMR_16s(a, src, synth, mem, 40, 0);
        if (st == zepStsOverflow) {  // rescale the excitation history and filter again
            overflows++;
            for (std::int16_t& v : exc_) v = static_cast<std::int16_t>(v >> 2);
            for (std::int16_t& v : enh) v = static_cast<std::int16_t>(v >> 2);
            const ZepStatus again = zepsSynthesisFilter_GSMAMR_16s(a, enh, synth, mem_, 40, 1);
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

TEST(AmrStages, ToolDecoderEqualsTheStageChain) {
    std::uint32_t seed = 2026;
    auto bit = [&] { return seed = seed * 1664525u + 1013904223u, static_cast<std::int16_t>(seed >> 31); };
    int overflows = 0;
    for (const Layout& lay : kLayouts) {
        SCOPED_TRACE(lay.rate);
        const std::int16_t mode = lay.rate == 7 ? 4 : lay.rate == 8 ? 5 : 7;
        constexpr int kFrames = 150;
        std::vector<std::uint8_t> cod;  // 3GPP test-sequence format: type, 244 bits, mode, 4 unused words
        StageDecoder stages;
        V16 want(160 * kFrames);
        auto word = [&](std::int16_t w) {
            cod.push_back(static_cast<std::uint8_t>(w & 0xff));
            cod.push_back(static_cast<std::uint8_t>((w >> 8) & 0xff));
        };
        for (int f = 0; f < kFrames; f++) {
            V16 bits(244);
            for (auto& b : bits) b = bit();
            word(0);
            for (std::int16_t b : bits) word(b);
            word(mode);
            for (int i = 0; i < 4; i++) word(0);
            stages.frame(lay.rate, lay.bits, bits, &want[static_cast<std::size_t>(160 * f)]);
        }
        const V16 got = zepsc_cli::decode_all(zeps::codec_test::codec("amr"), {}, "cod", cod.data(), cod.size());
        ASSERT_EQ(got.size(), want.size());
        for (std::size_t i = 0; i < got.size(); i++) ASSERT_EQ(got[i], want[i]) << "frame " << i / 160;
        overflows += stages.overflows;
    }
    EXPECT_GT(overflows, 0) << "random frames should drive the synthesis filter into saturation";
}

}  // namespace

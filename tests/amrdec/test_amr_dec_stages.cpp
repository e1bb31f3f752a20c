// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR decoder stages: boundary behaviour of the lag and codebook
// decoders (the whole decoder strung from the stages is replayed through the
// zepsc tool's codec, tests/codecs).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/variant_check.h"
#include "frame/variants.h"

namespace {

using V16 = std::vector<std::int16_t>;

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

// Refused arguments that only the content of the inputs reveals leave every output as it was.
TEST(AmrDecStages, ContentChecksWriteNothing) {
    const V16 lsf(10, 3000);
    V16 mean(10, 3000);
    mean[9] = 0;  // the averaging divides by each mean LSF
    V16 aver(9, 0x5a5a);
    std::int16_t mix = 0x5a5a;
    EXPECT_EQ(zeps::u8::zepsCbGainAverage_GSMAMR_16s(aver.data(), 100, lsf.data(), mean.data(), 0, 0, 0, 0, 0, 0, &mix,
                                                     0),
              zepStsOutOfRangeErr);
    EXPECT_EQ(aver, V16(9, 0x5a5a));
    EXPECT_EQ(mix, 0x5a5a);

    // A SID update whose parameters exceed their widths (3, 8, 9, 9, 6 bits).
    const V16 bad_sid[] = {{8, 0, 0, 0, 0}, {0, 256, 0, 0, 0}, {0, 0, 512, 0, 0}, {0, 0, 0, 512, 0},
                           {0, 0, 0, 0, 64}, {-1, 0, 0, 0, 0}};
    for (const V16& prm : bad_sid) {
        std::vector<std::uint8_t> st(512);
        auto* dtx = reinterpret_cast<ZepDTXDecodeState_GSMAMR*>(st.data());
        ASSERT_EQ(zeps::u8::zepsDTXDecodeInit_GSMAMR_16s(dtx), 0);
        std::int16_t next = 0, prev = 0;
        ASSERT_EQ(zeps::u8::zepsRxDTXHandler_GSMAMR_16s(dtx, 5, &next, &prev), 0);  // SID_UPDATE
        ASSERT_EQ(next, 1);
        const std::vector<std::uint8_t> before = st;
        V16 mem(10, 7), rq(10, 7), past(10, 7), qua(8, 7), cb(9, 7), speech(160, 7), lpc(44, 7), lsp(10, 7);
        EXPECT_EQ(zeps::u8::zepsDTXDecode_GSMAMR_16s(dtx, mem.data(), rq.data(), past.data(), qua.data(), cb.data(),
                                                     prm.data(), speech.data(), lpc.data(), lsp.data(), next, 7),
                  zepStsOutOfRangeErr);
        EXPECT_EQ(st, before);
        for (const V16* v : {&mem, &rq, &past, &qua, &cb, &speech, &lpc, &lsp})
            EXPECT_TRUE(std::all_of(v->begin(), v->end(), [](std::int16_t x) { return x == 7; }));
    }
}

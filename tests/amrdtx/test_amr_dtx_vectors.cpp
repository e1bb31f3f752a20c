// Replays of the GSM-AMR DTX reference vectors (3GPP TS 26.073 dtx_buffer,
// tx_dtx_handler, dtx_dec_activity_update, dtx_enc with Q_plsf_3 in MRDTX)
// on both processor builds: every output element and the status must match.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "frame/variants.h"
#include "tests/vec_reader.h"

namespace {

using zeps::test::VecCase;
using V16 = std::vector<std::int16_t>;

zeps::test::VecFile amr_vectors(const std::string& name) {
    return zeps::test::load_vec(zeps::test::shared_path("vectors/amr/" + name + ".vec"));
}

V16 in16(const VecCase& c, const char* name) { return c.in(name).as<std::int16_t>(); }
V16 out16(const VecCase& c, const char* name) { return c.out(name).as<std::int16_t>(); }

/// Runs `call(build, case)` for both builds on every case of a file; `call`
/// returns the status and EXPECTs the outputs.
template <class Call>
void replay(const std::string& file, Call call) {
    const auto vf = amr_vectors(file);
    for (const auto& c : vf.cases) {
        for (int build = 0; build < 2; build++) {
            EXPECT_EQ(call(build, c), c.ret) << file << " case " << c.number << " build " << build;
            if (::testing::Test::HasFailure()) return;  // one failing case is enough to read
        }
    }
}

/// Both history-buffer exports share argument shapes.
using BufferFn = ZepStatus (*)(const Zep16s*, const Zep16s*, Zep16s*, Zep16s*, Zep16s*);

ZepStatus replay_buffer(BufferFn fn, const VecCase& c, const char* vec_name, const char* hist_name) {
    const V16 spch = in16(c, "pSrcSpch"), vec = in16(c, vec_name);
    V16 ptr = in16(c, "pHistPtr"), hist = in16(c, hist_name), log_en = in16(c, "pLogEnergyHistory");
    const ZepStatus st = fn(spch.data(), vec.data(), ptr.data(), hist.data(), log_en.data());
    EXPECT_EQ(ptr, out16(c, "pHistPtr")) << "case " << c.number;
    EXPECT_EQ(hist, out16(c, hist_name)) << "case " << c.number;
    EXPECT_EQ(log_en, out16(c, "pLogEnergyHistory")) << "case " << c.number;
    return st;
}

TEST(AmrDtxVectors, EncDTXBuffer) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const BufferFn fn[2] = {zeps::u8::zepsEncDTXBuffer_GSMAMR_16s, zeps::n8::zepsEncDTXBuffer_GSMAMR_16s};
    replay("zepsEncDTXBuffer_GSMAMR_16s",
           [&](int b, const VecCase& c) { return replay_buffer(fn[b], c, "pSrcLSP", "pLSPHistory"); });
}

TEST(AmrDtxVectors, DecDTXBuffer) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    const BufferFn fn[2] = {zeps::u8::zepsDecDTXBuffer_GSMAMR_16s, zeps::n8::zepsDecDTXBuffer_GSMAMR_16s};
    replay("zepsDecDTXBuffer_GSMAMR_16s",
           [&](int b, const VecCase& c) { return replay_buffer(fn[b], c, "pSrcLSF", "pLSFHistory"); });
}

TEST(AmrDtxVectors, EncDTXHandler) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    decltype(&zeps::u8::zepsEncDTXHandler_GSMAMR_16s) fn[2] = {zeps::u8::zepsEncDTXHandler_GSMAMR_16s,
                                                                zeps::n8::zepsEncDTXHandler_GSMAMR_16s};
    replay("zepsEncDTXHandler_GSMAMR_16s", [&](int b, const VecCase& c) {
        V16 hang = in16(c, "pHangoverCount"), elapsed = in16(c, "pElapsedCount"), mode = in16(c, "pUsedMode");
        V16 sid = {-1};
        const ZepStatus st = fn[b](hang.data(), elapsed.data(), mode.data(), sid.data(), in16(c, "vadFlag")[0]);
        EXPECT_EQ(hang, out16(c, "pHangoverCount")) << "case " << c.number;
        EXPECT_EQ(elapsed, out16(c, "pElapsedCount")) << "case " << c.number;
        EXPECT_EQ(mode, out16(c, "pUsedMode")) << "case " << c.number;
        EXPECT_EQ(sid, out16(c, "pSidFlag")) << "case " << c.number;
        return st;
    });
}

TEST(AmrDtxVectors, EncDTXSID) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/amr");
    decltype(&zeps::u8::zepsEncDTXSID_GSMAMR_16s) fn[2] = {zeps::u8::zepsEncDTXSID_GSMAMR_16s,
                                                            zeps::n8::zepsEncDTXSID_GSMAMR_16s};
    replay("zepsEncDTXSID_GSMAMR_16s", [&](int b, const VecCase& c) {
        const V16 lsp_hist = in16(c, "pLSPHistory"), log_en = in16(c, "pLogEnergyHistory");
        V16 sid = in16(c, "pSidParams"), past_rq = in16(c, "pPastRq");
        V16 qua = in16(c, "pPastQuaEn"), qua122 = in16(c, "pPastQuaEnMR122");
        const ZepStatus st = fn[b](lsp_hist.data(), log_en.data(), sid.data(), past_rq.data(), qua.data(),
                                   qua122.data(), in16(c, "computeSidFlag")[0]);
        EXPECT_EQ(sid, out16(c, "pSidParams")) << "case " << c.number;
        EXPECT_EQ(past_rq, out16(c, "pPastRq")) << "case " << c.number;
        EXPECT_EQ(qua, out16(c, "pPastQuaEn")) << "case " << c.number;
        EXPECT_EQ(qua122, out16(c, "pPastQuaEnMR122")) << "case " << c.number;
        return st;
    });
}

}  // namespace

// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR DTX stages: ns per call of each export, both processor builds, on
// frames of shared/speech/noisy.s16 and a realistic LSP history.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "amr/amr_dtx_tables.h"
#include "amr/lsp_quant_vq.h"
#include "frame/variants.h"

namespace {

using V16 = std::vector<std::int16_t>;

V16 speech() {
    std::ifstream f(std::string(ZEPS_SHARED_DIR) + "/speech/noisy.s16", std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    V16 s(bytes.size() / 2);
    for (std::size_t i = 0; i < s.size(); i++)
        s[i] = static_cast<std::int16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
    if (s.size() < 160 * 64) s.resize(160 * 64, 0);
    return s;
}

/// 8 ordered LSP vectors (Q15 cosines) spread around a typical noise spectrum.
V16 lsp_history() {
    const std::int16_t base[10] = {31895, 30315, 23453, 16325, 9799, -1826, -11418, -18534, -26974, -29861};
    V16 h;
    for (int r = 0; r < 8; r++)
        for (int i = 0; i < 10; i++) h.push_back(static_cast<std::int16_t>(base[i] - 97 * r * (i % 3 - 1)));
    return h;
}

template <class Fn>
void enc_or_dec_buffer(benchmark::State& state, Fn fn) {
    const V16 s = speech(), lsp_hist = lsp_history();
    V16 ptr = {0}, hist(80), log_en(8);
    std::size_t frame = 0;
    for (auto _ : state) {
        fn(&s[160 * frame], &lsp_hist[10 * (frame & 7)], ptr.data(), hist.data(), log_en.data());
        benchmark::ClobberMemory();
        frame = (frame + 1) & 63;
    }
}

void BM_EncDTXBuffer_u8(benchmark::State& st) { enc_or_dec_buffer(st, zeps::u8::zepsEncDTXBuffer_GSMAMR_16s); }
void BM_EncDTXBuffer_n8(benchmark::State& st) { enc_or_dec_buffer(st, zeps::n8::zepsEncDTXBuffer_GSMAMR_16s); }
void BM_DecDTXBuffer_u8(benchmark::State& st) { enc_or_dec_buffer(st, zeps::u8::zepsDecDTXBuffer_GSMAMR_16s); }
void BM_DecDTXBuffer_n8(benchmark::State& st) { enc_or_dec_buffer(st, zeps::n8::zepsDecDTXBuffer_GSMAMR_16s); }

template <class Fn>
void handler(benchmark::State& state, Fn fn) {
    V16 v = {7, 32767, 7, 0};
    std::int16_t vad = 0;
    for (auto _ : state) {
        fn(&v[0], &v[1], &v[2], &v[3], vad);
        benchmark::ClobberMemory();
        vad = static_cast<std::int16_t>(v[1] & 1);  // a data-dependent mix of both branches
        v[2] = 7;
    }
}
void BM_EncDTXHandler_u8(benchmark::State& st) { handler(st, zeps::u8::zepsEncDTXHandler_GSMAMR_16s); }
void BM_EncDTXHandler_n8(benchmark::State& st) { handler(st, zeps::n8::zepsEncDTXHandler_GSMAMR_16s); }

template <class Fn>
void sid(benchmark::State& state, Fn fn) {
    const V16 lsp_hist = lsp_history(), log_en = {6134, 5812, 5971, 5985, 6039, 5850, 5884, 5845};
    V16 params(5), past_rq(10), qua(4), qua122(4);
    for (auto _ : state) {
        fn(lsp_hist.data(), log_en.data(), params.data(), past_rq.data(), qua.data(), qua122.data(), 1);
        benchmark::ClobberMemory();
    }
}
void BM_EncDTXSID_u8(benchmark::State& st) { sid(st, zeps::u8::zepsEncDTXSID_GSMAMR_16s); }
void BM_EncDTXSID_n8(benchmark::State& st) { sid(st, zeps::n8::zepsEncDTXSID_GSMAMR_16s); }

template <class Fn>
void lsp_quant(benchmark::State& state, Fn fn) {
    const auto rate = static_cast<Zep32s>(state.range(0));
    const V16 lsp_hist = lsp_history();
    V16 past_rq(10), q(20), idx(5);
    std::size_t frame = 0;
    for (auto _ : state) {
        fn(past_rq.data(), &lsp_hist[10 * (frame & 3)], q.data(), idx.data(), rate);
        benchmark::ClobberMemory();
        frame++;
    }
}
void BM_LSPQuant_u8(benchmark::State& st) { lsp_quant(st, zeps::u8::zepsLSPQuant_GSMAMR_16s); }
void BM_LSPQuant_n8(benchmark::State& st) { lsp_quant(st, zeps::n8::zepsLSPQuant_GSMAMR_16s); }

/// One codebook search of the LSP quantiser, SSSE3 scores against the plain
/// scalar scores (the baseline): arg 3 = dico2_lsf_3 (512 x 3), 4 = dico3_lsf_3 (512 x 4).
void vq_search_bench(benchmark::State& state, bool simd) {
    const std::int16_t r[4] = {120, -340, 55, 410}, wf[4] = {9000, 14000, 11000, 12500};
    int sink = 0;
    for (auto _ : state) {
        if (state.range(0) == 3)
            sink += zeps::ref::amr_dtx::vq_search<3>(r, zeps::amr_dtx_tab::dico2_lsf_3, wf, 512, 1, false, simd);
        else
            sink += zeps::ref::amr_dtx::vq_search<4>(r, zeps::amr_dtx_tab::dico3_lsf_3, wf, 512, 1, false, simd);
        benchmark::DoNotOptimize(sink);
    }
}
void BM_LSPQuantSearch_ssse3(benchmark::State& st) { vq_search_bench(st, true); }
void BM_LSPQuantSearch_scalar(benchmark::State& st) { vq_search_bench(st, false); }

}  // namespace

BENCHMARK(BM_LSPQuantSearch_ssse3)->Arg(3)->Arg(4);
BENCHMARK(BM_LSPQuantSearch_scalar)->Arg(3)->Arg(4);
BENCHMARK(BM_EncDTXBuffer_u8);
BENCHMARK(BM_EncDTXBuffer_n8);
BENCHMARK(BM_DecDTXBuffer_u8);
BENCHMARK(BM_DecDTXBuffer_n8);
BENCHMARK(BM_EncDTXHandler_u8);
BENCHMARK(BM_EncDTXHandler_n8);
BENCHMARK(BM_EncDTXSID_u8);
BENCHMARK(BM_EncDTXSID_n8);
// Rate codes: 0 MR475, 7 MR74, 8 MR795, 12 MR122 (two vectors), 25 SID.
BENCHMARK(BM_LSPQuant_u8)->Arg(0)->Arg(7)->Arg(8)->Arg(12)->Arg(25);
BENCHMARK(BM_LSPQuant_n8)->Arg(0)->Arg(7)->Arg(8)->Arg(12)->Arg(25);

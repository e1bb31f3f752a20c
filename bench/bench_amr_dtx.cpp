// SPDX-License-Identifier: BSD-3-Clause
// GSM-AMR DTX stages: ns per call of each export through the public entry
// and with each build forced, interleaved round by round
// (bench/interleaved.h), on frames of shared/speech/noisy.s16 and a
// realistic LSP history. No peer: opencore-amrnb's DTX stages take its own
// encoder state structures, which its installed headers do not describe.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "amr/amr_dtx_tables.h"
#include "amr/lsp_quant_vq.h"
#include "bench/interleaved.h"
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
zb::Call enc_or_dec_buffer(Fn fn) {
    struct S {
        V16 s = speech(), lsp_hist = lsp_history(), ptr = {0}, hist = V16(80), log_en = V16(8);
        std::size_t frame = 0;
    };
    auto s = std::make_shared<S>();
    return [s, fn] {
        fn(&s->s[160 * s->frame], &s->lsp_hist[10 * (s->frame & 7)], s->ptr.data(), s->hist.data(), s->log_en.data());
        benchmark::ClobberMemory();
        s->frame = (s->frame + 1) & 63;
    };
}
void BM_EncDTXBuffer(benchmark::State& st) {
    zb::interleaved(st, [] { return enc_or_dec_buffer(zepsEncDTXBuffer_GSMAMR_16s); });
}
void BM_DecDTXBuffer(benchmark::State& st) {
    zb::interleaved(st, [] { return enc_or_dec_buffer(zepsDecDTXBuffer_GSMAMR_16s); });
}

void BM_EncDTXHandler(benchmark::State& st) {
    zb::interleaved(st, [] {
        auto v = std::make_shared<V16>(V16{7, 32767, 7, 0});
        auto vad = std::make_shared<std::int16_t>(0);
        return zb::Call([v, vad] {
            V16& w = *v;
            zepsEncDTXHandler_GSMAMR_16s(&w[0], &w[1], &w[2], &w[3], *vad);
            benchmark::ClobberMemory();
            *vad = static_cast<std::int16_t>(w[1] & 1);  // a data-dependent mix of both branches
            w[2] = 7;
        });
    });
}

void BM_EncDTXSID(benchmark::State& st) {
    zb::interleaved(st, [] {
        struct S {
            V16 lsp_hist = lsp_history(), log_en = {6134, 5812, 5971, 5985, 6039, 5850, 5884, 5845}, params = V16(5),
                past_rq = V16(10), qua = V16(4), qua122 = V16(4);
        };
        auto s = std::make_shared<S>();
        return zb::Call([s] {
            zepsEncDTXSID_GSMAMR_16s(s->lsp_hist.data(), s->log_en.data(), s->params.data(), s->past_rq.data(),
                                     s->qua.data(), s->qua122.data(), 1);
            benchmark::ClobberMemory();
        });
    });
}

void BM_LSPQuant(benchmark::State& st) {
    const auto rate = static_cast<Zep32s>(st.range(0));
    zb::interleaved(st, [rate] {
        struct S {
            V16 lsp_hist = lsp_history(), past_rq = V16(10), q = V16(20), idx = V16(5);
            std::size_t frame = 0;
        };
        auto s = std::make_shared<S>();
        return zb::Call([s, rate] {
            zepsLSPQuant_GSMAMR_16s(s->past_rq.data(), &s->lsp_hist[10 * (s->frame & 3)], s->q.data(), s->idx.data(),
                                    rate);
            benchmark::ClobberMemory();
            s->frame++;
        });
    });
}

/// One codebook search of the LSP quantiser (internal, this program's
/// compile), SSSE3 scores against the plain scalar scores (the baseline) in
/// one loop: arg 3 = dico2_lsf_3 (512 x 3), 4 = dico3_lsf_3 (512 x 4).
zb::Call vq_search_call(int which, bool simd) {
    auto sink = std::make_shared<int>(0);
    return [sink, which, simd] {
        static const std::int16_t r[4] = {120, -340, 55, 410}, wf[4] = {9000, 14000, 11000, 12500};
        if (which == 3)
            *sink += zeps::ref::amr_dtx::vq_search<3>(r, zeps::amr_dtx_tab::dico2_lsf_3, wf, 512, 1, false, simd);
        else
            *sink += zeps::ref::amr_dtx::vq_search<4>(r, zeps::amr_dtx_tab::dico3_lsf_3, wf, 512, 1, false, simd);
        benchmark::DoNotOptimize(*sink);
    };
}
void BM_LSPQuantSearch(benchmark::State& st) {
    const int which = static_cast<int>(st.range(0));
    zb::interleaved(
        st, [which] { return vq_search_call(which, true); }, {{"scalar", vq_search_call(which, false)}}, 1.0, false);
}

}  // namespace

BENCHMARK(BM_LSPQuantSearch)->Arg(3)->Arg(4)->Apply(zb::rounds);
BENCHMARK(BM_EncDTXBuffer)->Apply(zb::rounds);
BENCHMARK(BM_DecDTXBuffer)->Apply(zb::rounds);
BENCHMARK(BM_EncDTXHandler)->Apply(zb::rounds);
BENCHMARK(BM_EncDTXSID)->Apply(zb::rounds);
// Rate codes: 0 MR475, 7 MR74, 8 MR795, 12 MR122 (two vectors), 25 SID.
BENCHMARK(BM_LSPQuant)->Arg(0)->Arg(7)->Arg(8)->Arg(12)->Arg(25)->Apply(zb::rounds);

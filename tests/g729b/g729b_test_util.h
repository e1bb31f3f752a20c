// Helpers of the G.729 Annex B tests: both builds' exports side by side,
// raw 16-bit recordings and ITU serial bitstreams.
#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "frame/variants.h"

namespace zeps::test::g729b {

using V16 = std::vector<Zep16s>;
using V32 = std::vector<Zep32s>;

#define ZEPS_G729B_BUILD(ns)                                                                                  \
    Build {                                                                                                   \
        #ns, ns::zepsHighPassFilterInit_G729, ns::zepsHighPassFilter_G729_16s_ISfs, ns::zepsAutoCorr_G729B,   \
            ns::zepsLagWindow_G729_32s_I, ns::zepsLevinsonDurbin_G729B, ns::zepsLPCToLSP_G729_16s,             \
            ns::zepsLPCToLSP_G729A_16s, ns::zepsLSPToLSF_Norm_G729_16s, ns::zepsLSPQuant_G729_16s,             \
            ns::zepsVADInit_G729B, ns::zepsVAD_G729B_16s, ns::zepsDTXInit_G729B, ns::zepsDTXUpdate_G729B_16s, \
            ns::zepsDTX_G729B_16s, ns::zepsLSPQuant_G729B_16s, ns::zepsLSFDecode_G729B_16s,                   \
            ns::zepsCNGExcitation_G729B_16s, ns::zepsSIDGainDecodeInit_G729B, ns::zepsSIDGainDecode_G729B_16s, \
            ns::zepsFrameEnergy_G729B_16s, ns::zepsSIDGainQuant_G729B_16s                                     \
    }

/// The exports the replays chain, of one processor build.
struct Build {
    const char* name;
    decltype(&zeps::u8::zepsHighPassFilterInit_G729) hpInit;
    decltype(&zeps::u8::zepsHighPassFilter_G729_16s_ISfs) hp;
    decltype(&zeps::u8::zepsAutoCorr_G729B) autoCorr;
    decltype(&zeps::u8::zepsLagWindow_G729_32s_I) lagWindow;
    decltype(&zeps::u8::zepsLevinsonDurbin_G729B) levinson;
    decltype(&zeps::u8::zepsLPCToLSP_G729_16s) lpcToLsp;
    decltype(&zeps::u8::zepsLPCToLSP_G729A_16s) lpcToLspA;
    decltype(&zeps::u8::zepsLSPToLSF_Norm_G729_16s) lspToLsfNorm;
    decltype(&zeps::u8::zepsLSPQuant_G729_16s) lspQuant;
    decltype(&zeps::u8::zepsVADInit_G729B) vadInit;
    decltype(&zeps::u8::zepsVAD_G729B_16s) vad;
    decltype(&zeps::u8::zepsDTXInit_G729B) dtxInit;
    decltype(&zeps::u8::zepsDTXUpdate_G729B_16s) dtxUpdate;
    decltype(&zeps::u8::zepsDTX_G729B_16s) dtx;
    decltype(&zeps::u8::zepsLSPQuant_G729B_16s) sidLspQuant;
    decltype(&zeps::u8::zepsLSFDecode_G729B_16s) sidLsfDecode;
    decltype(&zeps::u8::zepsCNGExcitation_G729B_16s) cngExc;
    decltype(&zeps::u8::zepsSIDGainDecodeInit_G729B) gainDecInit;
    decltype(&zeps::u8::zepsSIDGainDecode_G729B_16s) gainDec;
    decltype(&zeps::u8::zepsFrameEnergy_G729B_16s) frameEnergy;
    decltype(&zeps::u8::zepsSIDGainQuant_G729B_16s) gainQuant;
};

inline const Build kBuilds[] = {ZEPS_G729B_BUILD(zeps::u8), ZEPS_G729B_BUILD(zeps::n8)};
#undef ZEPS_G729B_BUILD

/// Whole file of 16-bit little-endian words.
inline V16 read_words(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    if (!f) throw std::runtime_error("cannot open " + path);
    const std::vector<char> b((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    V16 w(b.size() / 2);
    for (std::size_t i = 0; i < w.size(); ++i)
        w[i] = static_cast<Zep16s>(static_cast<unsigned char>(b[2 * i]) | (static_cast<unsigned char>(b[2 * i + 1]) << 8));
    return w;
}

/// A recording of this folder's data/ directory.
inline V16 read_data(const std::string& name) { return read_words(std::string(ZEPS_TESTS_SOURCE_DIR) + "/g729b/data/" + name); }

/// One frame of an ITU serial bitstream: its size word and its bits (0/1).
struct SerialFrame {
    int size;
    std::vector<int> bits;
    /// The value of `n` bits from bit `at`, MSB first.
    int field(int at, int n) const {
        int v = 0;
        for (int i = 0; i < n; ++i) v = (v << 1) | bits[at + i];
        return v;
    }
};

inline std::vector<SerialFrame> read_serial(const std::string& path) {
    const V16 w = read_words(path);
    std::vector<SerialFrame> frames;
    for (std::size_t i = 0; i + 1 < w.size();) {
        SerialFrame f{w[i + 1], {}};
        for (int k = 0; k < f.size; ++k) f.bits.push_back(w[i + 2 + k] == 0x0081 ? 1 : 0);
        i += 2 + static_cast<std::size_t>(f.size);
        frames.push_back(std::move(f));
    }
    return frames;
}

}  // namespace zeps::test::g729b

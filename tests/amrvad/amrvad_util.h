/* SPDX-License-Identifier: BSD-3-Clause */
// Shared helpers of the GSM-AMR VAD tests: both builds as a table, and the
// reference state dumps of the stream vectors.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "frame/variants.h"
#include "tests/vec_reader.h"

namespace zeps::test::amrvad {

struct Build {
    const char* name;
    decltype(&zeps::u8::zepsVAD1_GSMAMR_16s) vad1;
    decltype(&zeps::u8::zepsVAD2_GSMAMR_16s) vad2;
    decltype(&zeps::u8::zepsFFTFwd_RToPerm_GSMAMR_16s_I) fft;
    decltype(&zeps::u8::zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s) ol;
    decltype(&zeps::u8::zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s) ol1;
    decltype(&zeps::u8::zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s) ol2;
};

inline const Build kBuilds[2] = {
    {"u8", zeps::u8::zepsVAD1_GSMAMR_16s, zeps::u8::zepsVAD2_GSMAMR_16s, zeps::u8::zepsFFTFwd_RToPerm_GSMAMR_16s_I,
     zeps::u8::zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s, zeps::u8::zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s,
     zeps::u8::zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s},
    {"n8", zeps::n8::zepsVAD1_GSMAMR_16s, zeps::n8::zepsVAD2_GSMAMR_16s, zeps::n8::zepsFFTFwd_RToPerm_GSMAMR_16s_I,
     zeps::n8::zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s, zeps::n8::zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s,
     zeps::n8::zepsOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s},
};

/// Numbers of the comment line "<key> v v v", "<names> = v v v" or "<text>: v v" of a case.
inline std::vector<long long> comment_values(const VecCase& c, const std::string& key) {
    for (const std::string& line : c.comments) {
        if (line.rfind(key, 0) != 0) continue;
        std::string rest = line.substr(key.size());
        const auto eq = rest.find_last_of("=:");
        if (eq != std::string::npos) rest = rest.substr(eq + 1);
        std::istringstream in(rest);
        std::vector<long long> v;
        long long x;
        while (in >> x) v.push_back(x);
        return v;
    }
    ADD_FAILURE() << "case " << c.number << " has no comment " << key;
    return {};
}

template <class T>
std::vector<long long> widen(const T* p, int n) {
    return std::vector<long long>(p, p + n);
}

}  // namespace zeps::test::amrvad

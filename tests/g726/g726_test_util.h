/* SPDX-License-Identifier: BSD-3-Clause */
// Helpers of the G.726 tests: state blocks and calls through either build.
#pragma once

#include <cstdint>
#include <vector>

#include "frame/variants.h"

namespace zeps::test::g726 {

/// A state block with room to spare, so overruns show up in the canary bytes.
struct Block {
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(128, 0xA5);
    ZepG726EncodeState* enc() { return reinterpret_cast<ZepG726EncodeState*>(bytes.data()); }
    ZepG726DecodeState* dec() { return reinterpret_cast<ZepG726DecodeState*>(bytes.data()); }
};

/// The exports of one build, selected at run time.
struct Coder {
    decltype(&zeps::u8::zepsEncodeInit_G726_16s8u) enc_init;
    decltype(&zeps::u8::zepsEncode_G726_16s8u) encode;
    decltype(&zeps::u8::zepsDecodeInit_G726_8u16s) dec_init;
    decltype(&zeps::u8::zepsDecode_G726_8u16s) decode;
};
inline const Coder kBuilds[2] = {
    {zeps::u8::zepsEncodeInit_G726_16s8u, zeps::u8::zepsEncode_G726_16s8u, zeps::u8::zepsDecodeInit_G726_8u16s,
     zeps::u8::zepsDecode_G726_8u16s},
    {zeps::n8::zepsEncodeInit_G726_16s8u, zeps::n8::zepsEncode_G726_16s8u, zeps::n8::zepsDecodeInit_G726_8u16s,
     zeps::n8::zepsDecode_G726_8u16s},
};
inline const char* const kBuildNames[2] = {"u8", "n8"};

inline constexpr std::int32_t kRates[4] = {17, 22, 23, 24};

}  // namespace zeps::test::g726

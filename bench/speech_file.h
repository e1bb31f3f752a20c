// SPDX-License-Identifier: BSD-3-Clause
// Speech for the benchmarks: the first n samples of a raw 16-bit
// little-endian file, zeros past its end (so a missing file still gives
// a well-formed, if silent, input).
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace zb {

inline std::vector<std::int16_t> read_s16_le(const std::string& path, std::size_t n) {
    std::vector<std::int16_t> v(n);
    std::ifstream f(path, std::ios::binary);
    for (auto& x : v) {
        unsigned char b[2] = {0, 0};
        f.read(reinterpret_cast<char*>(b), 2);
        x = static_cast<std::int16_t>(b[0] | (b[1] << 8));
    }
    return v;
}

}  // namespace zb

/* SPDX-License-Identifier: BSD-3-Clause */
// The GSM-AMR modes of the library-wide rate enumeration (0 = 4.75, 1 = 5.15,
// 3 = 5.9, 6 = 6.7, 7 = 7.4, 8 = 7.95, 11 = 10.2, 12 = 12.2 kbit/s) mapped to
// the standard's mode numbers MR475 .. MR122 (0 .. 7).
#pragma once

#include <cstdint>

namespace zeps::amr_rate {

/// The standard's mode number of a rate code, or -1 for any other code.
constexpr int mode_of_rate(std::int32_t rate) {
    switch (rate) {
        case 0: return 0;
        case 1: return 1;
        case 3: return 2;
        case 6: return 3;
        case 7: return 4;
        case 8: return 5;
        case 11: return 6;
        case 12: return 7;
        default: return -1;
    }
}

}  // namespace zeps::amr_rate

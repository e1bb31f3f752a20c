// SPDX-License-Identifier: BSD-3-Clause
// Constant tables of the GSM-AMR algebraic codebook searches (3GPP TS 26.073),
// transcribed from the standard's fixed-point tables.
#include "amr/amr_cb_tables.h"

namespace zeps::amr_cb_tab {

const std::int16_t gray[8] = {0, 1, 3, 2, 6, 4, 5, 7};

const std::int16_t trackTable[20] = {
    0, 1, 0, 1, -1,  // subframe 1
    0, -1, 1, 0, 1,  // subframe 2
    0, 1, 0, -1, 1,  // subframe 3
    0, 1, -1, 0, 1,  // subframe 4
};

const std::int16_t startPos1[2] = {1, 3};
const std::int16_t startPos2[4] = {0, 1, 2, 4};

}  // namespace zeps::amr_cb_tab

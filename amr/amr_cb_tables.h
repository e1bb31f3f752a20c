/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the GSM-AMR algebraic codebook searches (3GPP TS 26.073
// gray.tab, c2_9pf.c, c2_11pf.tab), shared by both processor builds. The
// first-track positions of the 2i40_9bits codebook (c2_9pf.tab startPos) are
// the decoder's amr_dec_tab::startPos.
#pragma once

#include <cstdint>

namespace zeps::amr_cb_tab {

/// Gray encoding of a 3-bit position index (gray.tab gray)
extern const std::int16_t gray[8];
/// 2i40_9bits: per subframe and track, 0 = the position's track pair bit is 0, 1 = it is 1, -1 = not used; 4 x 5 (c2_9pf.c trackTable)
extern const std::int16_t trackTable[20];
/// 2i40_11bits: first positions of the tracks of pulse 0 and pulse 1 (c2_11pf.tab)
extern const std::int16_t startPos1[2];
extern const std::int16_t startPos2[4];

}  // namespace zeps::amr_cb_tab

/* SPDX-License-Identifier: BSD-3-Clause */
// Frame log energy of the GSM-AMR DTX history buffers (3GPP TS 26.073
// dtx_enc.c dtx_buffer, dtx_dec.c dtx_dec_activity_update): log2 of the
// mean square of 160 samples in Q10, i.e. (e << 10) + (f >> 5) - 8521 with
// 8521 = log2(160) in Q10 and the 32-bit energy from saturating L_mac.
#pragma once

#include <cstdint>

#include "common/basic_op.h"
#include "common/fixed_math.h"

ZEPS_BEGIN_VARIANT
namespace amr_dtx {

inline constexpr int kFrame = 160;    ///< L_FRAME
inline constexpr int kHistSize = 8;   ///< DTX_HIST_SIZE

/// Q10 log2 of the per-sample energy of one 160-sample frame.
inline Word16 frame_log_energy(const Word16* speech) {
    // The reference accumulates L_mac(x, x); every term is >= 0, so the
    // saturating sum equals min(2 * sum of x^2, MAX_32) (a term of
    // (-32768)^2 saturates alone and the whole sum with it).
    std::int64_t sum = 0;
    for (int i = 0; i < kFrame; i++) sum += std::int32_t{speech[i]} * speech[i];
    const Word32 L_frame_en = sum >= 0x40000000 ? MAX_32 : static_cast<Word32>(2 * sum);
    Word16 log_en_e, log_en_m;
    Log2(L_frame_en, log_en_e, log_en_m);
    Word16 log_en = shl(log_en_e, 10);
    log_en = add(log_en, shr(log_en_m, 15 - 10));
    return sub(log_en, 8521);
}

/// Next history slot: the reference's increment with wrap from 8 to 0. A
/// pointer outside 0..7 (never written by the library) is taken modulo 8,
/// so the history arrays are never addressed outside their 8 rows.
inline Word16 next_hist_ptr(Word16 ptr) {
    return static_cast<Word16>((static_cast<int>(ptr) + 1) & (kHistSize - 1));
}

}  // namespace amr_dtx
ZEPS_END_VARIANT

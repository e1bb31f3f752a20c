/* SPDX-License-Identifier: BSD-3-Clause */
// ITU-T G.726 constant tables: quantiser decision levels, inverse-quantiser
// outputs, scale-factor multipliers and speed-control weights for the four
// rates (G.726 Tables 1 to 4, 4.2.2 QUAN, 4.2.3 RECONST, 4.2.4 FUNCTW,
// 4.2.5 FUNCTF), the G.711 expansion tables used by the decoder's
// synchronous coding adjustment, and the lookup tables the coder derives
// from them at compile time.
//
// Rate index r: 0 = 16, 1 = 24, 2 = 32, 3 = 40 kbit/s; codes have r + 2 bits.
// Log-domain values (decision levels, DQLN) are the standard's 12-bit words:
// 7-bit mantissa and 4-bit exponent of log2, values of 2048 and above
// standing for negative logarithms.
#pragma once

#include <array>
#include <cstdint>

namespace zeps {

/// Inverse quantiser outputs DQLN, indexed by the code I (G.726 RECONST).
extern const std::int16_t g726_dqln_16[4];
extern const std::int16_t g726_dqln_24[8];
extern const std::int16_t g726_dqln_32[16];
extern const std::int16_t g726_dqln_40[32];

/// Scale-factor multipliers W(I) by code magnitude, 12-bit two's complement
/// (G.726 FUNCTW).
extern const std::int16_t g726_witab_16[2];
extern const std::int16_t g726_witab_24[4];
extern const std::int16_t g726_witab_32[8];
extern const std::int16_t g726_witab_40[16];

/// Speed-control weights F(I) by code magnitude (G.726 FUNCTF).
extern const std::int16_t g726_fitab_16[2];
extern const std::int16_t g726_fitab_24[4];
extern const std::int16_t g726_fitab_32[8];
extern const std::int16_t g726_fitab_40[16];

/// Quantiser decision levels of DLN in ascending order (G.726 QUAN).
extern const std::int16_t g726_qlevels_16[1];
extern const std::int16_t g726_qlevels_24[3];
extern const std::int16_t g726_qlevels_32[6];
extern const std::int16_t g726_qlevels_40[13];

/// G.711 expansion to 16-bit linear, indexed by the code word as on the line
/// (A-law with even bits inverted); the G.726 14-bit values are these >> 2.
extern const std::array<std::int16_t, 256> g711_mulaw_expand;
extern const std::array<std::int16_t, 256> g711_alaw_expand;

/// Everything the coder needs about one ADPCM code I at one rate.
struct G726CodeInfo {
    std::int16_t dqln;  ///< DQLN, inverse quantiser output (12-bit log word)
    std::int16_t wi;    ///< W(I), signed
    std::int16_t fi;    ///< F(I)
    std::int16_t dqs;   ///< sign bit of I
};

/// Per rate index: the code for every (DLN, sign) pair, index (DLN << 1) | DS
/// (the whole QUAN decision, sign adjustment included).
extern const std::array<std::array<std::uint8_t, 8192>, 4> g726_quantize;
/// Per rate index: code properties by code I (codes 0..2^bits-1).
extern const std::array<std::array<G726CodeInfo, 32>, 4> g726_code_info;

/// ADDA and ANTILOG: the DQ magnitude of each 12-bit DQL = DQLN + Y/4 (mod
/// 4096), 0 for DQL >= 2048 (the decoder's inverse quantiser without a
/// branch on the zero output).
extern const std::array<std::int16_t, 4096> g726_antilog;

/// The quantiser as a compare count (the encoder's lane form): per rate
/// index, the decision levels as signed DL - Y/4 in ascending order by
/// magnitude class (class 0 first, always passed; 4000: unused class, never
/// passed) and the DQLN of each class (2048: zero output).
alignas(16) extern const std::int16_t g726_class_level[4][16];
alignas(16) extern const std::int16_t g726_class_dqln[4][16];

/// Per Y/4 from kG726ClassY4Lo (the range of Y the recursion reaches from
/// reset: 544..5120), the class thresholds (least DQM of each class) and the
/// DQ magnitudes of the classes, each XORed with the one of the class below
/// (so that the XOR over the classes passed gives the class's magnitude):
/// 2, 4, 8 and 16 classes a rate, thresholds then magnitudes, 2 * classes
/// words an entry.
inline constexpr int kG726ClassY4Lo = 136;
inline constexpr int kG726ClassY4Count = 1280 - 136 + 1;
extern const std::array<std::int16_t, kG726ClassY4Count * 4> g726_class_16;
extern const std::array<std::int16_t, kG726ClassY4Count * 8> g726_class_24;
extern const std::array<std::int16_t, kG726ClassY4Count * 16> g726_class_32;
extern const std::array<std::int16_t, kG726ClassY4Count * 32> g726_class_40;

}  // namespace zeps

/* SPDX-License-Identifier: BSD-3-Clause */
// Constant tables of the GSM-AMR voice activity detectors and open-loop pitch
// search (3GPP TS 26.073: corrwght.tab, cod_amr.c, r_fft.c, vad2.c).
#pragma once

#include <cstdint>

namespace zeps {

/// Spectral expansion factors of the perceptual weighting filter, Q15
/// (cod_amr.c gamma1, gamma1_12k2 for 10.2/12.2 kbit/s, gamma2).
extern const std::int16_t gamma1[10];
extern const std::int16_t gamma1_12k2[10];
extern const std::int16_t gamma2[10];

/// Lag weighting of the 10.2 kbit/s open-loop search (corrwght.tab), Q15.
extern const std::int16_t corrweight[251];

/// Twiddle factors of the 128-point real FFT of VAD option 2 (r_fft.c),
/// cos/-sin pairs in Q15.
extern const std::int16_t phs_tbl[128];

/// VAD option 2 (vad2.c): first and last FFT bin of each of the 16 channels,
/// 1/bins of each channel (Q15), voice metric per quantised SNR, and the
/// hangover, burst and voice-metric thresholds per 3 dB step of long-term SNR.
extern const std::int16_t ch_tbl[16][2];
extern const std::int16_t ch_tbl_sh[16];
extern const std::int16_t vm_tbl[90];
extern const std::int16_t hangover_table[20];
extern const std::int16_t burstcount_table[20];
extern const std::int16_t vm_threshold_table[20];

}  // namespace zeps

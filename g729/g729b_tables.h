// Constant tables of ITU-T G.729 Annex B (VAD, DTX and comfort noise; names
// as in the standard's tab_dtx.c), compiled once.
#pragma once

#include <cstdint>

namespace zeps {

extern const std::int16_t lbf_corr[13];           ///< low-band filter autocorrelation (VAD), Q15
extern const std::int16_t shift_fx[33];           ///< VAD initial means: shifts of 1 / frame count
extern const std::int16_t factor_fx[33];          ///< VAD initial means: mantissas of 1 / frame count, Q15
extern const std::int16_t fact[3];                ///< SID energy averaging factors by count 0..2
extern const std::int16_t marg[3];                ///< SID energy averaging margins by count 0..2
extern const std::int16_t tab_Sidgain[32];        ///< SID gain codebook (decoded gains)
extern const std::int16_t noise_fg[2][4][10];     ///< SID LSF MA predictors, Q15
extern const std::int16_t noise_fg_sum[2][10];    ///< 1 - sum of noise_fg per mode, Q15
extern const std::int16_t noise_fg_sum_inv[2][10];///< 1 / noise_fg_sum per mode, Q12
extern const std::int16_t PtrTab_1[32];           ///< SID first-stage subset of lspcb1
extern const std::int16_t PtrTab_2[2][16];        ///< SID second-stage subsets of lspcb2 (low, high half)
extern const std::int16_t Mp[2];                  ///< SID first-stage mode weights, Q15

}  // namespace zeps

// ETSI GSM 06.10 full-rate constant tables (GSM 06.10 Tables 4.1 to 4.6),
// under the standard's names.
#pragma once

#include <cstdint>

namespace zeps {

/// LAR quantiser (Table 4.1): A[i] in Q10 and B[i] in Q9 (as 1024 and 512
/// times the real values), the smallest code MIC[i] and largest MAC[i] of
/// each signed LAR code, and INVA[i] = 32768 x 8 / A[i] for the decoder.
extern const std::int16_t gsmfr_A[8];
extern const std::int16_t gsmfr_B[8];
extern const std::int16_t gsmfr_MIC[8];
extern const std::int16_t gsmfr_MAC[8];
extern const std::int16_t gsmfr_INVA[8];

/// LTP gain decision levels DLB (Table 4.3a) and quantised gains QLB
/// (Table 4.3b), Q15.
extern const std::int16_t gsmfr_DLB[4];
extern const std::int16_t gsmfr_QLB[4];

/// Weighting-filter impulse response H (Table 4.4), Q13.
extern const std::int16_t gsmfr_H[11];

/// Inverse mantissas NRFAC (Table 4.5) and mantissas FAC (Table 4.6), Q15.
extern const std::int16_t gsmfr_NRFAC[8];
extern const std::int16_t gsmfr_FAC[8];

}  // namespace zeps

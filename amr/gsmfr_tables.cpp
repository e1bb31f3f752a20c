// ETSI GSM 06.10 full-rate constant tables (GSM 06.10 Tables 4.1 to 4.6).
#include "amr/gsmfr_tables.h"

namespace zeps {

const std::int16_t gsmfr_A[8] = {20480, 20480, 20480, 20480, 13964, 15360, 8534, 9036};
const std::int16_t gsmfr_B[8] = {0, 0, 2048, -2560, 94, -1792, -341, -1144};
const std::int16_t gsmfr_MIC[8] = {-32, -32, -16, -16, -8, -8, -4, -4};
const std::int16_t gsmfr_MAC[8] = {31, 31, 15, 15, 7, 7, 3, 3};
const std::int16_t gsmfr_INVA[8] = {13107, 13107, 13107, 13107, 19223, 17476, 31454, 29708};

const std::int16_t gsmfr_DLB[4] = {6554, 16384, 26214, 32767};
const std::int16_t gsmfr_QLB[4] = {3277, 11469, 21299, 32767};

const std::int16_t gsmfr_H[11] = {-134, -374, 0, 2054, 5741, 8192, 5741, 2054, 0, -374, -134};

const std::int16_t gsmfr_NRFAC[8] = {29128, 26215, 23832, 21846, 20165, 18725, 17476, 16384};
const std::int16_t gsmfr_FAC[8] = {18431, 20479, 22527, 24575, 26623, 28671, 30719, 32767};

}  // namespace zeps

/* SPDX-License-Identifier: BSD-3-Clause */
// Echo-path models of ITU-T G.168 Annex D (clauses D.2 to D.9), used to
// measure the echo canceller; tables in ec_g168_models_tables.cpp.
#pragma once

namespace zeps {

struct G168Model {
    const char* name;   // "D2" .. "D9"
    const int* coeffs;  // impulse response, 8 kHz
    int len;
    float ki;           // published normalising factor Ki
};

extern const int kG168ModelD2[64];
extern const int kG168ModelD3[96];
extern const int kG168ModelD4[96];
extern const int kG168ModelD5[128];
extern const int kG168ModelD6[96];
extern const int kG168ModelD7[120];
extern const int kG168ModelD8[96];
extern const int kG168ModelD9[99];
/// The eight models D2..D9 in order.
extern const G168Model kG168Models[8];

}  // namespace zeps

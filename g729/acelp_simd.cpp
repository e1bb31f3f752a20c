// SPDX-License-Identifier: BSD-3-Clause
// Out-of-line entries to the G.729 fixed-codebook kernels (g729/acelp_simd.h,
// g729/acelp_kernels.h) and the gain search's distances (g729/gain_lanes.h),
// vector and scalar forms, for the tests that hold
// them against each other. Not exported from the library.
#include "g729/acelp_kernels.h"
#include "g729/acelp_simd.h"
#include "g729/gain_lanes.h"

ZEPS_BEGIN_VARIANT

void g729_fourth_pulse(Word16 ps2, Word32 alp2, const Word16* dn8, const Word16* rd, const Word16* r0,
                       const Word16* r1, const Word16* r2, Word16* ps_sq, Word16* alp) {
    g729c::fourth_pulse(ps2, alp2, dn8, rd, r0, r1, r2, ps_sq, alp);
}

void g729_fourth_pulse_scalar(Word16 ps2, Word32 alp2, const Word16* dn8, const Word16* rd, const Word16* r0,
                              const Word16* r1, const Word16* r2, Word16* ps_sq, Word16* alp) {
    g729c::fourth_pulse_scalar(ps2, alp2, dn8, rd, r0, r1, r2, ps_sq, alp);
}

void g729_pair_pulse_a(Word16 ps1, Word32 alp1, const Word16* dn8, const Word16* r, const Word16* t, Word16* ps_sq,
                       Word16* alp) {
    g729c::pair_pulse_a(ps1, alp1, dn8, r, t, g729c::max_abs8(r), g729c::max_abs8(t), ps_sq, alp);
}

void g729_pair_pulse_a_scalar(Word16 ps1, Word32 alp1, const Word16* dn8, const Word16* r, const Word16* t,
                              Word16* ps_sq, Word16* alp) {
    g729c::pair_pulse_a_scalar(ps1, alp1, dn8, r, t, ps_sq, alp);
}

void g729_first_pair_a(Word16 ps1, Word16 r0, const Word16* dn8, const Word16* t, const Word16* d, Word16* ps,
                       Word16* ps_sq, Word16* alp) {
    g729c::first_pair_a(ps1, r0, dn8, t, d, ps, ps_sq, alp);
}

void g729_first_pair_a_scalar(Word16 ps1, Word16 r0, const Word16* dn8, const Word16* t, const Word16* d, Word16* ps,
                              Word16* ps_sq, Word16* alp) {
    g729c::first_pair_a_scalar(ps1, r0, dn8, t, d, ps, ps_sq, alp);
}

void g729_add_pulse_response(Word16* y, const Word16* hz, int at, bool positive) {
    g729c::add_pulse_response(y, hz, at, positive);
}

void g729_add_pulse_response_scalar(Word16* y, const Word16* h, int at, bool positive) {
    g729c::add_pulse_response_scalar(y, h, at, positive);
}

void g729_gain_dist8(const Word16* chi, const Word16* clo, Word16 gcode0, Word16 p1, Word16 c1, const Word16* p2,
                     const Word16* c2, bool tame, Word32* d) {
    g729c::gain_dist8(chi, clo, gcode0, p1, c1, p2, c2, tame, d);
}

void g729_gain_dist8_scalar(const Word16* chi, const Word16* clo, Word16 gcode0, Word16 p1, Word16 c1,
                            const Word16* p2, const Word16* c2, bool tame, Word32* d) {
    g729c::gain_dist8_scalar(chi, clo, gcode0, p1, c1, p2, c2, tame, d);
}

unsigned g729_better_mask8(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp) {
    return g729c::better_mask8(sq8, alp8, sq, alp);
}

unsigned g729_better_mask8_scalar(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp) {
    return g729c::better_mask8_scalar(sq8, alp8, sq, alp);
}

void g729_target_signs(Word16* d, Word16* sign, Word16* inv) { g729c::target_signs(d, sign, inv); }
void g729_target_signs_scalar(Word16* d, Word16* sign, Word16* inv) { g729c::target_signs_scalar(d, sign, inv); }

bool g729_any_better8(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp) {
    return g729c::any_better8(sq8, alp8, sq, alp);
}

bool g729_any_better8_scalar(const Word16* sq8, const Word16* alp8, Word16 sq, Word16 alp) {
    return g729c::any_better8_scalar(sq8, alp8, sq, alp);
}

std::int32_t g729_max_abs8(const Word16* v) { return g729c::max_abs8(v); }
std::int32_t g729_max_abs8_scalar(const Word16* v) { return g729c::max_abs8_scalar(v); }

void g729_pair_rows_a(Word16 ps0, Word32 alp0, const Word16* dn8, const Word16* a, const Word16* b, const Word16* c,
                      Word16* ps1, Word32* alp1) {
    g729c::pair_rows_a(ps0, alp0, dn8, a, b, c, ps1, alp1);
}
void g729_pair_rows_a_scalar(Word16 ps0, Word32 alp0, const Word16* dn8, const Word16* a, const Word16* b,
                             const Word16* c, Word16* ps1, Word32* alp1) {
    g729c::pair_rows_a_scalar(ps0, alp0, dn8, a, b, c, ps1, alp1);
}

unsigned g729_pair_lanes_fit8(const Word32* alp1, const std::int32_t* rmax, std::int32_t tmax) {
    return g729c::pair_lanes_fit8(alp1, rmax, tmax);
}
unsigned g729_pair_lanes_fit8_scalar(const Word32* alp1, const std::int32_t* rmax, std::int32_t tmax) {
    return g729c::pair_lanes_fit8_scalar(alp1, rmax, tmax);
}

void g729_fold8(Word16* row, const Word16* neg) { g729c::fold8(row, neg); }
void g729_fold8_scalar(Word16* row, const Word16* neg) { g729c::fold8_scalar(row, neg); }

void g729_mult8(Word16* row, const Word16* g) { g729c::mult8(row, g); }
void g729_mult8_scalar(Word16* row, const Word16* g) { g729c::mult8_scalar(row, g); }

/// Cor_h's correlation chains over an already scaled h, as plain sums
/// (plain true, valid when 2 sum h^2 fits in 31 bits) or with L_mac.
void g729_cor_h_chains(const Word16* h, Word16* rr, bool plain) {
    g729c::RR m;
    if (plain)
        g729c::cor_h_chains<true>(h, m);
    else
        g729c::cor_h_chains<false>(h, m);
    for (int i = 0; i < g729c::kDimRR; ++i) rr[i] = m.v[i];
}

/// The plain chains built block row by block row (same validity as plain).
void g729_cor_h_lanes(const Word16* h, Word16* rr) { g729c::cor_h_chains_lanes(h, rr); }

int g729_first_max8(const Word16* v, int skip) { return g729c::first_max8(v, skip); }
int g729_first_max8_scalar(const Word16* v, int skip) { return g729c::first_max8_scalar(v, skip); }

void g729_cor_h_scale(const Word16* H, bool halve, Word16 k, Word16* h) { g729c::cor_h_scale(H, halve, k, h); }
void g729_cor_h_scale_scalar(const Word16* H, bool halve, Word16 k, Word16* h) {
    g729c::cor_h_scale_scalar(H, halve, k, h);
}

ZEPS_END_VARIANT

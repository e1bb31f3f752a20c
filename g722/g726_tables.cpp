// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.726 constant tables (Tables 1 to 4 and the tables of RECONST,
// FUNCTW and FUNCTF), the G.711 expansion tables, and the lookup tables
// derived from them at compile time. See g726_tables.h for the formats.
#include "g722/g726_tables.h"

namespace zeps {

// ---------------------------------------------------------------- standard

constexpr std::int16_t g726_dqln_16[4] = {116, 365, 365, 116};
constexpr std::int16_t g726_dqln_24[8] = {2048, 135, 273, 373, 373, 273, 135, 2048};
constexpr std::int16_t g726_dqln_32[16] = {2048, 4, 135, 213, 273, 323, 373, 425,
                                           425,  373, 323, 273, 213, 135, 4,   2048};
constexpr std::int16_t g726_dqln_40[32] = {2048, 4030, 28,  104, 169, 224, 274, 318, 358, 395, 429,
                                           459,  488,  514, 539, 566, 566, 539, 514, 488, 459, 429,
                                           395,  358,  318, 274, 224, 169, 104, 28,  4030, 2048};

// W(I); the standard writes the negative entries in 12-bit two's complement
// (4074 = -22, 4092 = -4, 4084 = -12).
constexpr std::int16_t g726_witab_16[2] = {4074 - 4096, 439};
constexpr std::int16_t g726_witab_24[4] = {4092 - 4096, 30, 137, 582};
constexpr std::int16_t g726_witab_32[8] = {4084 - 4096, 18, 41, 64, 112, 198, 355, 1122};
constexpr std::int16_t g726_witab_40[16] = {14, 14, 24, 39, 40, 41, 58, 100, 141, 179, 219, 280, 358, 440, 529, 696};

constexpr std::int16_t g726_fitab_16[2] = {0, 7};
constexpr std::int16_t g726_fitab_24[4] = {0, 1, 2, 7};
constexpr std::int16_t g726_fitab_32[8] = {0, 0, 0, 1, 1, 1, 3, 7};
constexpr std::int16_t g726_fitab_40[16] = {0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 2, 3, 4, 5, 6, 6};

constexpr std::int16_t g726_qlevels_16[1] = {261};
constexpr std::int16_t g726_qlevels_24[3] = {8, 218, 331};
constexpr std::int16_t g726_qlevels_32[6] = {80, 178, 246, 300, 349, 400};
constexpr std::int16_t g726_qlevels_40[13] = {68, 139, 198, 250, 298, 339, 378, 413, 445, 475, 502, 528, 553};

// The quantiser as a compare count (g726_tables.h): the decision levels of
// Tables 1 to 4 less Y/4 by magnitude class, and the RECONST outputs of the
// classes.
alignas(16) constexpr std::int16_t g726_class_level[4][16] = {
    {-4096, 261, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000},
    {-4096, 8, 218, 331, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000},
    {-4096, 3972 - 4096, 80, 178, 246, 300, 349, 400, 4000, 4000, 4000, 4000, 4000, 4000, 4000, 4000},
    {-4096, 3974 - 4096, 4080 - 4096, 68, 139, 198, 250, 298, 339, 378, 413, 445, 475, 502, 528, 553},
};
alignas(16) constexpr std::int16_t g726_class_dqln[4][16] = {
    {116, 365, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048},
    {2048, 135, 273, 373, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048},
    {2048, 4, 135, 213, 273, 323, 373, 425, 2048, 2048, 2048, 2048, 2048, 2048, 2048, 2048},
    {2048, 4030, 28, 104, 169, 224, 274, 318, 358, 395, 429, 459, 488, 514, 539, 566},
};

// ---------------------------------------------------------------- G.711

namespace {

// G.711 expansion of one code word as on the line.
constexpr std::int16_t mulaw_expand(int code) {
    const int u = ~code & 0xFF;
    const int t = (((u & 15) << 3) + 0x84) << ((u >> 4) & 7);
    return static_cast<std::int16_t>((u & 0x80) ? 0x84 - t : t - 0x84);
}
constexpr std::int16_t alaw_expand(int code) {
    const int a = code ^ 0x55;
    const int seg = (a >> 4) & 7;
    const int t = seg == 0 ? ((a & 15) << 4) + 8 : (((a & 15) << 4) + 0x108) << (seg - 1);
    return static_cast<std::int16_t>((a & 0x80) ? t : -t);
}
template <std::int16_t (*F)(int)>
constexpr std::array<std::int16_t, 256> expansion() {
    std::array<std::int16_t, 256> t{};
    for (int c = 0; c < 256; ++c) t[c] = F(c);
    return t;
}

}  // namespace

constexpr std::array<std::int16_t, 256> g711_mulaw_expand = expansion<mulaw_expand>();
constexpr std::array<std::int16_t, 256> g711_alaw_expand = expansion<alaw_expand>();
static_assert(g711_mulaw_expand[0] == -32124 && g711_mulaw_expand[0xFF] == 0 && g711_mulaw_expand[0x7F] == 0 &&
              g711_mulaw_expand[0x80] == 32124);
static_assert(g711_alaw_expand[0] == -5504 && g711_alaw_expand[0xD5] == 8 && g711_alaw_expand[0x55] == -8 &&
              g711_alaw_expand[0xAA] == 32256);

// ---------------------------------------------------------------- derived

namespace {

struct RateDef {
    int bits;
    const std::int16_t* dqln;
    const std::int16_t* wi;
    const std::int16_t* fi;
};
constexpr RateDef kRates[4] = {{2, g726_dqln_16, g726_witab_16, g726_fitab_16},
                               {3, g726_dqln_24, g726_witab_24, g726_fitab_24},
                               {4, g726_dqln_32, g726_witab_32, g726_fitab_32},
                               {5, g726_dqln_40, g726_witab_40, g726_fitab_40}};

template <int N>
constexpr int levels_passed(const std::int16_t (&lev)[N], int dln) {
    int c = 0;
    for (int k = 0; k < N; ++k) c += (dln >= lev[k]);
    return c;
}

// G.726 QUAN: the code I for the scaled log difference DLN (12-bit word) and
// the sign DS of the difference signal.
constexpr int quan(int r, int dln, int ds) {
    int i = 0;
    switch (r) {
        case 0:  // 16 kbit/s: every code carries a magnitude, no zero-code fix
            i = dln >= 2048 ? 0 : levels_passed(g726_qlevels_16, dln);
            return ds ? 3 - i : i;
        case 1:
            i = (dln >= 2048 || dln < g726_qlevels_24[0]) ? 7 : levels_passed(g726_qlevels_24, dln);
            i = ds ? 7 - i : i;
            return i == 0 ? 7 : i;
        case 2:
            i = dln >= 3972 ? 1 : dln >= 2048 ? 15 : 1 + levels_passed(g726_qlevels_32, dln);
            i = ds ? 15 - i : i;
            return i == 0 ? 15 : i;
        default:
            i = dln >= 4080 ? 2 : dln >= 3974 ? 1 : dln >= 2048 ? 31 : 2 + levels_passed(g726_qlevels_40, dln);
            i = ds ? 31 - i : i;
            return i == 0 ? 31 : i;
    }
}

constexpr std::array<std::array<std::uint8_t, 8192>, 4> build_quantize() {
    std::array<std::array<std::uint8_t, 8192>, 4> t{};
    for (int r = 0; r < 4; ++r)
        for (int dln = 0; dln < 4096; ++dln)
            for (int ds = 0; ds < 2; ++ds) t[r][(dln << 1) | ds] = static_cast<std::uint8_t>(quan(r, dln, ds));
    return t;
}

constexpr std::array<std::array<G726CodeInfo, 32>, 4> build_code_info() {
    std::array<std::array<G726CodeInfo, 32>, 4> t{};
    for (int r = 0; r < 4; ++r) {
        const RateDef& d = kRates[r];
        const int n = 1 << d.bits, half = n >> 1;
        for (int i = 0; i < n; ++i) {
            const int is = i >> (d.bits - 1);
            const int im = (is == 0 ? i : n - 1 - i) & (half - 1);  // magnitude index of FUNCTW/FUNCTF
            t[r][i] = G726CodeInfo{d.dqln[i], d.wi[im], d.fi[im], static_cast<std::int16_t>(is)};
        }
    }
    return t;
}

// Least DQM whose LOG output DL reaches L (DL is non-decreasing in DQM; no
// |D| below 24576 reaches 1856).
constexpr int class_threshold(int l) {
    if (l <= 0) return 0;
    const int c = l < 1856 ? l : 1856;
    return (((128 + (c & 127)) << (c >> 7)) + 127) >> 7;
}
// ADDA and ANTILOG: DQ magnitude of DQLN at the scale Y/4.
constexpr int class_dq(int dqln, int y4) {
    const int dql = (dqln + y4) & 4095;
    if (dql >= 2048) return 0;
    return (((dql & 127) + 128) << 8) >> (15 - ((dql >> 7) & 15));
}
constexpr std::array<std::int16_t, 4096> build_antilog() {
    std::array<std::int16_t, 4096> t{};
    for (int dql = 0; dql < 4096; ++dql) t[dql] = static_cast<std::int16_t>(class_dq(dql, 0));
    return t;
}
template <int R, int Classes>
constexpr std::array<std::int16_t, kG726ClassY4Count * 2 * Classes> build_class_table() {
    std::array<std::int16_t, kG726ClassY4Count * 2 * Classes> t{};
    for (int k = 0; k < kG726ClassY4Count; ++k)
        for (int c = 0; c < Classes; ++c) {
            const int y4 = kG726ClassY4Lo + k;
            t[k * 2 * Classes + c] = static_cast<std::int16_t>(class_threshold(g726_class_level[R][c] + y4));
            const int prev = c > 0 ? class_dq(g726_class_dqln[R][c - 1], y4) : 0;
            t[k * 2 * Classes + Classes + c] = static_cast<std::int16_t>(class_dq(g726_class_dqln[R][c], y4) ^ prev);
        }
    return t;
}

}  // namespace

alignas(64) constexpr std::array<std::int16_t, kG726ClassY4Count * 4> g726_class_16 = build_class_table<0, 2>();
alignas(64) constexpr std::array<std::int16_t, kG726ClassY4Count * 8> g726_class_24 = build_class_table<1, 4>();
alignas(64) constexpr std::array<std::int16_t, kG726ClassY4Count * 16> g726_class_32 = build_class_table<2, 8>();
alignas(64) constexpr std::array<std::int16_t, kG726ClassY4Count * 32> g726_class_40 = build_class_table<3, 16>();

alignas(64) constexpr std::array<std::int16_t, 4096> g726_antilog = build_antilog();

constexpr std::array<std::array<std::uint8_t, 8192>, 4> g726_quantize = build_quantize();
constexpr std::array<std::array<G726CodeInfo, 32>, 4> g726_code_info = build_code_info();

}  // namespace zeps

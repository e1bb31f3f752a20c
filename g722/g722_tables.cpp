// SPDX-License-Identifier: BSD-3-Clause
// ITU-T G.722 constant tables and the lookups derived from them; see
// g722_tables.h for the formats.
#include "g722/g722_tables.h"

namespace zeps {

// ---------------------------------------------------------------- standard

constexpr std::int16_t g722_q6[31] = {0,   35,  72,  110, 150, 190, 233, 276,  323,  370,  422,  473,  530,  587,  650, 714,
                                      786, 858, 940, 1023, 1121, 1219, 1339, 1458, 1612, 1765, 1980, 2195, 2557, 2919, 3200};

constexpr std::int16_t g722_misil[2][32] = {
    {0x00, 0x3F, 0x3E, 0x1F, 0x1E, 0x1D, 0x1C, 0x1B, 0x1A, 0x19, 0x18, 0x17, 0x16, 0x15, 0x14, 0x13,
     0x12, 0x11, 0x10, 0x0F, 0x0E, 0x0D, 0x0C, 0x0B, 0x0A, 0x09, 0x08, 0x07, 0x06, 0x05, 0x04, 0x00},
    {0x00, 0x3D, 0x3C, 0x3B, 0x3A, 0x39, 0x38, 0x37, 0x36, 0x35, 0x34, 0x33, 0x32, 0x31, 0x30, 0x2F,
     0x2E, 0x2D, 0x2C, 0x2B, 0x2A, 0x29, 0x28, 0x27, 0x26, 0x25, 0x24, 0x23, 0x22, 0x21, 0x20, 0x00}};

constexpr std::int16_t g722_qq4[8] = {0, 150, 323, 530, 786, 1121, 1612, 2557};
constexpr std::int16_t g722_qq5[16] = {0, 35, 110, 190, 276, 370, 473, 587, 714, 858, 1023, 1219, 1458, 1765, 2195, 2919};
constexpr std::int16_t g722_qq6[31] = {0,    17,   54,   91,   130,  170,  211,  254,  300,  347,  396,
                                       447,  501,  558,  618,  682,  750,  822,  899,  982,  1072, 1170,
                                       1279, 1399, 1535, 1689, 1873, 2088, 2376, 2738, 3101};
constexpr std::int16_t g722_qq2[3] = {0, 202, 926};

constexpr std::int16_t g722_ril4[16] = {0, 7, 6, 5, 4, 3, 2, 1, 7, 6, 5, 4, 3, 2, 1, 0};
constexpr std::int16_t g722_risi4[16] = {0, -1, -1, -1, -1, -1, -1, -1, 0, 0, 0, 0, 0, 0, 0, 0};
constexpr std::int16_t g722_ril5[32] = {1,  1,  15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2,
                                        15, 14, 13, 12, 11, 10, 9,  8,  7, 6, 5, 4, 3, 2, 1, 1};
constexpr std::int16_t g722_risi5[32] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                         0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  -1};
constexpr std::int16_t g722_ril6[64] = {1,  1,  1,  1,  30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19,
                                        18, 17, 16, 15, 14, 13, 12, 11, 10, 9,  8,  7,  6,  5,  4,  3,
                                        30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15,
                                        14, 13, 12, 11, 10, 9,  8,  7,  6,  5,  4,  3,  2,  1,  2,  1};
constexpr std::int16_t g722_risi6[64] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                         -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                         0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
                                         0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  -1, -1};
constexpr std::int16_t g722_ih2[4] = {2, 1, 2, 1};
constexpr std::int16_t g722_sih[4] = {-1, -1, 0, 0};

constexpr std::int16_t g722_wl[8] = {-60, -30, 58, 172, 334, 538, 1198, 3042};
constexpr std::int16_t g722_wh[3] = {0, -214, 798};

constexpr std::int16_t g722_ila[353] = {
    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,    1,
    1,    2,    2,    2,    2,    2,    2,    2,    2,    2,    2,    2,    2,    2,    3,    3,    3,    3,
    3,    3,    3,    3,    3,    3,    3,    4,    4,    4,    4,    4,    4,    4,    4,    5,    5,    5,
    5,    5,    5,    5,    6,    6,    6,    6,    6,    6,    7,    7,    7,    7,    7,    7,    8,    8,
    8,    8,    8,    9,    9,    9,    9,    10,   10,   10,   10,   11,   11,   11,   11,   12,   12,   12,
    13,   13,   13,   13,   14,   14,   15,   15,   15,   16,   16,   16,   17,   17,   18,   18,   18,   19,
    19,   20,   20,   21,   21,   22,   22,   23,   23,   24,   24,   25,   25,   26,   27,   27,   28,   28,
    29,   30,   31,   31,   32,   33,   33,   34,   35,   36,   37,   37,   38,   39,   40,   41,   42,   43,
    44,   45,   46,   47,   48,   49,   50,   51,   52,   54,   55,   56,   57,   58,   60,   61,   63,   64,
    65,   67,   68,   70,   71,   73,   75,   76,   78,   80,   82,   83,   85,   87,   89,   91,   93,   95,
    97,   99,   102,  104,  106,  109,  111,  113,  116,  118,  121,  124,  127,  129,  132,  135,  138,  141,
    144,  147,  151,  154,  157,  161,  165,  168,  172,  176,  180,  184,  188,  192,  196,  200,  205,  209,
    214,  219,  223,  228,  233,  238,  244,  249,  255,  260,  266,  272,  278,  284,  290,  296,  303,  310,
    316,  323,  331,  338,  345,  353,  361,  369,  377,  385,  393,  402,  411,  420,  429,  439,  448,  458,
    468,  478,  489,  500,  511,  522,  533,  545,  557,  569,  582,  594,  607,  621,  634,  648,  663,  677,
    692,  707,  723,  739,  755,  771,  788,  806,  823,  841,  860,  879,  898,  918,  938,  958,  979,  1001,
    1023, 1045, 1068, 1092, 1115, 1140, 1165, 1190, 1216, 1243, 1270, 1298, 1327, 1356, 1386, 1416, 1447, 1479,
    1511, 1544, 1578, 1613, 1648, 1684, 1721, 1759, 1797, 1837, 1877, 1918, 1960, 2003, 2047, 2092, 2138, 2185,
    2232, 2281, 2331, 2382, 2434, 2488, 2542, 2598, 2655, 2713, 2773, 2833, 2895, 2959, 3024, 3090, 3157, 3227,
    3297, 3370, 3443, 3519, 3596, 3675, 3755, 3837, 3921, 4007, 4095};

constexpr std::int16_t g722_qmf_coef[24] = {3 * 2,    -11 * 2, -11 * 2,  53 * 2,   12 * 2,   -156 * 2,
                                            32 * 2,   362 * 2, -210 * 2, -805 * 2, 951 * 2,  3876 * 2,
                                            3876 * 2, 951 * 2, -805 * 2, -210 * 2, 362 * 2,  32 * 2,
                                            -156 * 2, 12 * 2,  53 * 2,   -11 * 2,  -11 * 2,  3 * 2};

// ---------------------------------------------------------------- derived

namespace {

// The signed multiplicand of an inverse quantiser: level << 3, negated when
// the code's sign entry is -1 (sub(0, x) never saturates here: levels < 4096).
constexpr std::int16_t signed_level(std::int16_t level, std::int16_t sign) {
    const int x = level * 8;
    return static_cast<std::int16_t>(sign == 0 ? x : -x);
}

constexpr std::array<std::int16_t, 16> build_invqal() {
    std::array<std::int16_t, 16> t{};
    for (int r = 0; r < 16; ++r) t[r] = signed_level(g722_qq4[g722_ril4[r]], g722_risi4[r]);
    return t;
}

// Mode 1: 6-bit code; mode 2: code >> 1 (5 bits); mode 3: code >> 2 (4 bits).
constexpr std::array<std::array<std::int16_t, 64>, 3> build_invqbl() {
    std::array<std::array<std::int16_t, 64>, 3> t{};
    for (int il = 0; il < 64; ++il) {
        t[0][il] = signed_level(g722_qq6[g722_ril6[il]], g722_risi6[il]);
        t[1][il] = signed_level(g722_qq5[g722_ril5[il >> 1]], g722_risi5[il >> 1]);
        t[2][il] = signed_level(g722_qq4[g722_ril4[il >> 2]], g722_risi4[il >> 2]);
    }
    return t;
}

constexpr std::array<std::int16_t, 4> build_invqah() {
    std::array<std::int16_t, 4> t{};
    for (int ih = 0; ih < 4; ++ih) t[ih] = signed_level(g722_qq2[g722_ih2[ih]], g722_sih[ih]);
    return t;
}

constexpr std::array<std::int16_t, 16> build_wl_code() {
    std::array<std::int16_t, 16> t{};
    for (int r = 0; r < 16; ++r) t[r] = g722_wl[g722_ril4[r]];
    return t;
}

constexpr std::array<std::int16_t, 4> build_wh_code() {
    std::array<std::int16_t, 4> t{};
    for (int ih = 0; ih < 4; ++ih) t[ih] = g722_wh[g722_ih2[ih]];
    return t;
}

constexpr std::array<std::int16_t, 31> build_q6_x8() {
    std::array<std::int16_t, 31> t{};
    for (int i = 0; i < 31; ++i) t[i] = static_cast<std::int16_t>(g722_q6[i] * 8);
    return t;
}

constexpr std::array<G722LowCode, 64> build_low_code() {
    std::array<G722LowCode, 64> t{};
    for (int neg = 0; neg < 2; ++neg)
        for (int mil = 0; mil < 32; ++mil) {
            const int il = g722_misil[1 - neg][mil];
            t[neg * 32 + mil] = {static_cast<std::int16_t>(il),
                                 signed_level(g722_qq4[g722_ril4[il >> 2]], g722_risi4[il >> 2]),
                                 g722_wl[g722_ril4[il >> 2]]};
        }
    return t;
}

}  // namespace

constexpr std::array<G722LowCode, 64> g722_low_code = build_low_code();
constexpr std::array<std::int16_t, 16> g722_invqal = build_invqal();
constexpr std::array<std::array<std::int16_t, 64>, 3> g722_invqbl = build_invqbl();
constexpr std::array<std::int16_t, 4> g722_invqah = build_invqah();
constexpr std::array<std::int16_t, 16> g722_wl_code = build_wl_code();
constexpr std::array<std::int16_t, 4> g722_wh_code = build_wh_code();
constexpr std::array<std::int16_t, 31> g722_q6_x8 = build_q6_x8();

}  // namespace zeps

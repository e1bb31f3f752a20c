// G.729 float members against values computed with the ITU-T G.729 Annex C
// floating-point routines (levinson, az_lsp of the base codec and of Annex A,
// lsp_az, lsp_get_quant, lsp_prev_extract/update), built in single precision
// (FLOAT = float) on the same inputs. Tolerance: 2e-6 absolute on every
// element (a few float ulps for values below 4), to allow for a different
// but equally valid instruction order; both builds must agree bit for bit.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"

namespace {
namespace u8 = zeps::u8;
namespace n8 = zeps::n8;
using VF = std::vector<float>;
constexpr float kTol = 2e-6f;

// Annex C outputs (single precision) for the inputs below.
const std::vector<std::vector<float>> k_lev_a = {
    {1.0f, -0.641041219f, -0.667990506f, 0.0727692544f, 0.0434780307f, -0.0564234331f, -0.0263830945f, 0.417651474f, 0.471367359f, -0.424503922f, -0.129041031f},
    {1.0f, -0.662589788f, -0.156345651f, -0.708537281f, 0.0297928229f, 0.237529799f, 0.657916486f, -0.0216807574f, 0.312772095f, -0.733091116f, 0.148889869f},
    {1.0f, -1.31241703f, 0.811635852f, -0.431584299f, 0.386728525f, -0.45594418f, 1.0697974f, -1.18836522f, 0.595311344f, -0.307022095f, 0.186941653f},
};
const std::vector<std::vector<float>> k_lev_rc = {
    {-0.960527003f, 0.0349752754f, 0.52649796f, 0.270251781f, 0.202399015f, 0.215909302f, 0.183062181f, 0.0363799408f, -0.515813649f, -0.129041031f},
    {-0.916446507f, 0.11187581f, 0.18971017f, 0.51502943f, 0.42203787f, 0.274134159f, -0.108775787f, -0.040680889f, -0.648821414f, 0.148889869f},
    {-0.67594403f, 0.250270426f, 0.289325595f, 0.219752923f, -0.0303883813f, 0.37678194f, -0.727361917f, 0.378077179f, -0.0639101639f, 0.186941653f},
};
const std::vector<std::vector<float>> k_lev_err = {
    {0.023937488f},
    {0.0275913347f},
    {0.135948867f},
};
const std::vector<std::vector<float>> k_azlsp = {
    {0.99235034f, 0.977508426f, 0.946202338f, 0.745099187f, 0.614091218f, 0.12767534f, -0.20226343f, -0.472735375f, -0.87795639f, -0.950542092f},
    {0.968870103f, 0.925089478f, 0.707437754f, 0.137258843f, -0.0945979059f, -0.348984152f, -0.419635832f, -0.676046669f, -0.850177646f, -0.923428535f},
    {0.955538273f, 0.911060452f, 0.84872371f, 0.645441353f, 0.228312254f, 0.191495761f, -0.303374559f, -0.390333414f, -0.692820191f, -0.941645205f},
    {0.899999976f, 0.720000029f, 0.540000021f, 0.360000014f, 0.180000007f, 1.11022302e-16f, -0.180000007f, -0.360000014f, -0.540000021f, -0.720000029f},
};
const std::vector<std::vector<float>> k_azlspA = {
    {0.992343545f, 0.977490187f, 0.946240187f, 0.745132387f, 0.614151835f, 0.127682656f, -0.202256277f, -0.472689837f, -0.877929151f, -0.950532973f},
    {0.968865156f, 0.925067067f, 0.707445204f, 0.137131751f, -0.0946159512f, -0.349069446f, -0.419519454f, -0.676024914f, -0.850119054f, -0.923424602f},
    {0.955534637f, 0.911062658f, 0.848819673f, 0.645439148f, 0.228312016f, 0.191520095f, -0.303322852f, -0.390252233f, -0.692703605f, -0.941626966f},
    {0.899999976f, 0.720000029f, 0.540000021f, 0.360000014f, 0.180000007f, 1.11022302e-16f, -0.180000007f, -0.360000014f, -0.540000021f, -0.720000029f},
};
const std::vector<std::vector<float>> k_lspaz = {
    {1.0f, -0.0208435059f, -0.0410208106f, -0.0199859738f, 0.0205185413f, -0.00951123238f, 0.0313727856f, -0.0152523518f, 0.00105839968f, -0.0174379945f, -0.00149536133f},
    {1.0f, -0.50100708f, -0.0984500647f, -1.17420709f, 0.451469183f, -0.055760026f, 1.05848229f, -0.315968275f, 0.0581153631f, -0.402499318f, 0.171295166f},
    {1.0f, -0.262268066f, 0.00291097164f, -0.216717601f, 0.0555790663f, 0.00599586964f, 0.103085399f, -0.154852748f, 0.128583789f, -0.0289138556f, 0.184753418f},
};
const std::vector<std::vector<float>> k_dec = {
    {0.292239428f, 0.592132628f, 0.857800066f, 1.11015296f, 1.4334538f, 1.7199353f, 2.00344968f, 2.25627112f, 2.54503131f, 2.86723423f},
    {0.24909839f, 0.41907382f, 0.558211207f, 0.90762651f, 1.19246149f, 1.509835f, 1.87751675f, 2.01158237f, 2.35464001f, 2.7283926f},
    {0.239114076f, 0.430741459f, 0.697352827f, 1.05520368f, 1.31881523f, 1.61257875f, 1.98295581f, 2.14981651f, 2.49228287f, 2.78747749f},
    {0.135623813f, 0.251409948f, 0.719731271f, 0.985297859f, 1.23360038f, 1.56483006f, 1.98665214f, 2.16769218f, 2.37970972f, 2.60949945f},
};
const std::vector<std::vector<float>> k_mem = {
    {0.13217622f, 0.246933237f, 0.726468861f, 1.00524592f, 1.25150323f, 1.58090973f, 2.00373363f, 2.19657826f, 2.40469933f, 2.60483694f, 0.0318999887f, 0.163499996f, 0.728799999f, 0.852200031f, 1.11310005f, 1.49370003f, 1.92689991f, 2.13389993f, 2.19589996f, 2.40919995f, 0.169699997f, 0.288100004f, 0.771499991f, 1.32470012f, 1.50220001f, 1.74870002f, 2.2052002f, 2.39429998f, 2.75329995f, 2.8499999f, 0.188799992f, 0.264400005f, 0.360300004f, 0.758899987f, 0.947099984f, 1.29530001f, 1.72670007f, 1.75730002f, 2.17760015f, 2.5691998f},
};

// Inputs: lag-windowed autocorrelations (Q31 integers scaled to float), Q12
// LP vectors (the last one has fewer than 10 roots), Q15 LSP vectors.
const double kR[3][11] = {
    {1558466800, 1496949502, 1433642178, 1309437340, 1166187138, 986667124, 784829552, 561831878, 334266214, 140281316, -61448944},
    {1246046198, 1141934774, 1024200224, 878501180, 645470808, 374315752, 102167436, -147309118, -398475686, -548635602, -696491276},
    {1977527962, 1336698224, 634744096, -89376976, -662169204, -811862744, -1011241978, -294177106, 323548042, 650448292, 750023634}};
const double kA[4][11] = {{4096, -7780, 2384, 3094, -2157, 1088, -847, -1683, 3384, -1346, -186},
                          {4096, 2352, 128, -3758, -3074, -355, 2551, 1793, 1143, -633, -811},
                          {4096, -5949, 4288, -2947, 940, 1318, -1019, 1586, -374, -1993, 1555},
                          {4096, -6653, -1344, -6962, 7638, 6030, -5748, -2323, 3146, 4598, -4304}};
const double kL[3][10] = {{31486, 27688, 21934, 13842, 4707, -4635, -13732, -21660, -27645, -31302},
                          {32051, 31605, 29257, 14560, -559, -4291, -13505, -19828, -25458, -27415},
                          {31596, 29322, 22345, 15965, 3884, -4108, -12604, -19690, -27567, -30549}};
const std::int16_t kIdx[4][4] = {{0, 120, 31, 10}, {1, 7, 3, 22}, {0, 64, 0, 31}, {1, 127, 17, 5}};

VF scaled(const double* v, int n, double s) {
    VF f(n);
    for (int i = 0; i < n; ++i) f[i] = static_cast<float>(v[i] / s);
    return f;
}
VF old_lsp() {
    VF f(10);
    for (int i = 0; i < 10; ++i) f[i] = static_cast<float>(0.9 - 0.18 * i);
    return f;
}
VF reset_memory() {
    const float r[10] = {0.285599f, 0.571199f, 0.856798f, 1.142397f, 1.427997f,
                         1.713596f, 1.999195f, 2.284795f, 2.570394f, 2.855993f};
    VF m;
    for (int k = 0; k < 4; ++k) m.insert(m.end(), r, r + 10);
    return m;
}
void expect_near(const VF& got, const std::vector<float>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], kTol) << "element " << i;
}

TEST(G729LpFloat, LevinsonMatchesAnnexC) {
    for (int c = 0; c < 3; ++c) {
        const VF r = scaled(kR[c], 11, 2147483648.0);
        VF a(11), k(10), e(1);
        ASSERT_EQ(u8::zepsLevinsonDurbin_G729_32f(r.data(), 10, a.data(), k.data(), e.data()), 0);
        expect_near(a, k_lev_a[c]);
        expect_near(k, k_lev_rc[c]);
        expect_near(e, k_lev_err[c]);
    }
    VF zero(11, 0.0f), a(11, -1.0f), k(10), e(1);
    EXPECT_EQ(u8::zepsLevinsonDurbin_G729_32f(zero.data(), 10, a.data(), k.data(), e.data()), zepStsOverflow);
    EXPECT_EQ(a, VF(11, -1.0f));
    EXPECT_EQ(u8::zepsLevinsonDurbin_G729_32f(zero.data(), 31, a.data(), k.data(), e.data()), zepStsRangeErr);
}

TEST(G729LpFloat, LspConversionsMatchAnnexC) {
    const VF old = old_lsp();
    for (int c = 0; c < 4; ++c) {
        const VF a = scaled(kA[c], 11, 4096.0);
        VF l(10);
        ASSERT_EQ(u8::zepsLPCToLSP_G729_32f(a.data(), old.data(), l.data()), 0);
        expect_near(l, k_azlsp[c]);
        ASSERT_EQ(u8::zepsLPCToLSP_G729A_32f(a.data(), old.data(), l.data()), 0);
        expect_near(l, k_azlspA[c]);
    }
    for (int c = 0; c < 3; ++c) {
        const VF l = scaled(kL[c], 10, 32768.0);
        VF a(11);
        ASSERT_EQ(u8::zepsLSPToLPC_G729_32f(l.data(), a.data()), 0);
        expect_near(a, k_lspaz[c]);
    }
}

TEST(G729LpFloat, DecoderSequenceMatchesAnnexC) {
    VF mem = reset_memory(), q(10);
    for (int c = 0; c < 4; ++c) {
        ASSERT_EQ(u8::zepsLSFDecode_G729_32f(kIdx[c], mem.data(), q.data()), 0);
        expect_near(q, k_dec[c]);
    }
    ASSERT_EQ(u8::zepsLSFDecodeErased_G729_32f(1, mem.data(), q.data()), 0);
    expect_near(mem, k_mem[0]);
    const VF keep = mem;
    const std::int16_t bad[4] = {2, 0, 0, 0};
    EXPECT_EQ(u8::zepsLSFDecode_G729_32f(bad, mem.data(), q.data()), zepStsOutOfRangeErr);
    EXPECT_EQ(u8::zepsLSFDecodeErased_G729_32f(-1, mem.data(), q.data()), zepStsOutOfRangeErr);
    EXPECT_EQ(u8::zepsLSFDecodeErased_G729_32f(0, nullptr, q.data()), zepStsNullPtrErr);
    EXPECT_EQ(mem, keep);
    // Low and high clamps of lsp_stability.
    VF low(40, -8.0f), high(40, 8.0f), both(40);
    for (int i = 0; i < 40; ++i) both[i] = (i % 10) < 5 ? -8.0f : 8.0f;
    const std::int16_t idx0[4] = {0, 0, 0, 0};
    EXPECT_EQ(u8::zepsLSFDecode_G729_32f(idx0, low.data(), q.data()), zepStsLSFLowClamped);
    EXPECT_EQ(u8::zepsLSFDecode_G729_32f(idx0, high.data(), q.data()), zepStsLSFHighClamped);
    EXPECT_EQ(u8::zepsLSFDecode_G729_32f(idx0, both.data(), q.data()), zepStsLSFLowHighClamped);
}

template <class T>
bool same(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

}  // namespace

ZEPS_VARIANT_CHECK(zepsLevinsonDurbin_G729_32f) {
    for (int rep = 0; rep < 30; ++rep) {
        VF r = scaled(kR[rep % 3], 11, 2147483648.0);
        r.resize(31, 0.0f);
        for (std::size_t i = 1; i < r.size(); ++i) r[i] += rng.f32(0.01f);
        if (rep % 10 == 9) r[0] = -1.0f;
        const int order = static_cast<int>(rng.uniform(0, 31));
        VF a1(31, -1), k1(30, -1), e1(1, -1), a2 = a1, k2 = k1, e2 = e1;
        EXPECT_EQ(u8::zepsLevinsonDurbin_G729_32f(r.data(), order, a1.data(), k1.data(), e1.data()),
                  n8::zepsLevinsonDurbin_G729_32f(r.data(), order, a2.data(), k2.data(), e2.data()));
        EXPECT_TRUE(same(a1, a2) && same(k1, k2) && same(e1, e2));
    }
}

#define CHECK_FLOAT_AZ_LSP(name)                                                                            \
    ZEPS_VARIANT_CHECK(name) {                                                                              \
        const VF old = old_lsp();                                                                           \
        for (int rep = 0; rep < 30; ++rep) {                                                                \
            VF a = scaled(kA[rep % 4], 11, 4096.0);                                                         \
            for (int i = 1; i < 11; ++i) a[i] += rng.f32(rep < 15 ? 0.01f : 2.0f);                          \
            VF x(10, -1), y(10, -1);                                                                        \
            EXPECT_EQ(u8::name(a.data(), old.data(), x.data()), n8::name(a.data(), old.data(), y.data()));  \
            EXPECT_TRUE(same(x, y));                                                                        \
        }                                                                                                   \
    }
CHECK_FLOAT_AZ_LSP(zepsLPCToLSP_G729_32f)
CHECK_FLOAT_AZ_LSP(zepsLPCToLSP_G729A_32f)

ZEPS_VARIANT_CHECK(zepsLSPToLPC_G729_32f) {
    for (int rep = 0; rep < 30; ++rep) {
        VF l = scaled(kL[rep % 3], 10, 32768.0);
        for (auto& v : l) v += rng.f32(0.05f);
        VF x(11, -1), y(11, -1);
        EXPECT_EQ(u8::zepsLSPToLPC_G729_32f(l.data(), x.data()), n8::zepsLSPToLPC_G729_32f(l.data(), y.data()));
        EXPECT_TRUE(same(x, y));
    }
}

ZEPS_VARIANT_CHECK(zepsLSFDecode_G729_32f) {
    VF m1 = reset_memory(), m2 = m1;
    for (int rep = 0; rep < 40; ++rep) {
        const std::int16_t idx[4] = {static_cast<std::int16_t>(rng.uniform(-1, 2)), static_cast<std::int16_t>(rng.uniform(0, 127)),
                                     static_cast<std::int16_t>(rng.uniform(0, 31)), static_cast<std::int16_t>(rng.uniform(0, 31))};
        VF q1(10, -1), q2(10, -1);
        EXPECT_EQ(u8::zepsLSFDecode_G729_32f(idx, m1.data(), q1.data()), n8::zepsLSFDecode_G729_32f(idx, m2.data(), q2.data()));
        EXPECT_TRUE(same(m1, m2) && same(q1, q2));
    }
}

ZEPS_VARIANT_CHECK(zepsLSFDecodeErased_G729_32f) {
    VF m1 = reset_memory(), m2 = m1;
    for (int rep = 0; rep < 40; ++rep) {
        VF lsf(10);
        for (int j = 0; j < 10; ++j) lsf[j] = 0.28f * (j + 1) + rng.f32(0.1f);
        const int mode = static_cast<int>(rng.uniform(-1, 2));
        EXPECT_EQ(u8::zepsLSFDecodeErased_G729_32f(mode, m1.data(), lsf.data()),
                  n8::zepsLSFDecodeErased_G729_32f(mode, m2.data(), lsf.data()));
        EXPECT_TRUE(same(m1, m2));
    }
}

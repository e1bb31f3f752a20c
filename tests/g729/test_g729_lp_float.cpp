// G.729 float members against values computed with the ITU-T G.729 Annex C
// floating-point routines (levinson, az_lsp of the base codec and of Annex A,
// lsp_az, lsp_get_quant, lsp_prev_extract/update), built in single precision
// (FLOAT = float) on the same inputs. Tolerance: 2e-6 absolute on every
// element (a few float ulps for values below 4), to allow for a different
// but equally valid instruction order; both builds must agree bit for bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "frame/variants.h"
#include "tests/variant_check.h"
#include "tests/vec_reader.h"

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

// Annex C+ (single precision) outputs of qua_lspe and autocorr_hyb_window.
const std::vector<std::vector<float>> k_eq = {
    {0.960866809f, 0.853100538f, 0.676461756f, 0.42080915f, 0.138400197f, -0.132280409f, -0.422207743f, -0.666398823f, -0.856227994f, -0.950838804f},
    {0.974428952f, 0.933079839f, 0.860466361f, 0.436247498f, 0.0289267041f, -0.118671522f, -0.37571615f, -0.60332793f, -0.758837402f, -0.870702028f},
    {0.961863577f, 0.900426209f, 0.713571489f, 0.495749861f, 0.0892685056f, -0.144264907f, -0.367859036f, -0.620811999f, -0.853315175f, -0.93359977f},
};
const std::vector<std::vector<float>> k_ecur = {
    {0.226300001f, 0.453600019f, 0.709800005f, 1.08670008f, 1.41110003f, 1.64400005f, 1.9957999f, 2.3118f, 2.64520001f, 2.7125001f},
    {0.139600009f, 0.201499999f, 0.318799973f, 1.09160006f, 1.64660001f, 1.65799999f, 1.89529991f, 2.13160014f, 2.27919984f, 2.36800003f},
    {0.252900004f, 0.34829998f, 0.719200015f, 0.96450001f, 1.52600002f, 1.70940006f, 1.87699997f, 2.17919993f, 2.60760021f, 2.67610002f},
};
const std::int16_t k_eidx[3][2] = {
    {120, 312},
    {152, 316},
    {176, 472},
};
const std::vector<std::vector<float>> k_hyb = {
    {575369280.0f, 490704384.0f, 389795744.0f, 303866944.0f, 227508272.0f, 160559680.0f, 102608760.0f, 36927424.0f, -115414296.0f, -285057664.0f, -359695840.0f, -377861344.0f, -383911968.0f, -339323968.0f, -313235616.0f, -302025248.0f, -309441120.0f, -236969632.0f, -110525264.0f, -8061393.5f, 92237936.0f, 163078800.0f, 188972736.0f, 193017712.0f, 219891040.0f, 262475024.0f, 277566656.0f, 245737216.0f, 199528400.0f, 116825296.0f, 34208728.0f},
    {579502400.0f, 500522400.0f, 401432576.0f, 310858528.0f, 228288720.0f, 158934624.0f, 101332888.0f, 36201276.0f, -107191288.0f, -271358176.0f, -354593440.0f, -385005696.0f, -394936416.0f, -346276896.0f, -311053920.0f, -292233600.0f, -295969632.0f, -236758256.0f, -130374832.0f, -36153128.0f, 65792364.0f, 146256816.0f, 178611984.0f, 183115280.0f, 201165920.0f, 230112432.0f, 242098912.0f, 222507856.0f, 194296000.0f, 129423256.0f, 54528960.0f},
    {463871392.0f, 406644544.0f, 329766112.0f, 253796448.0f, 183189328.0f, 126227528.0f, 79094584.0f, 26703832.0f, -78888368.0f, -204108000.0f, -276960224.0f, -310930688.0f, -322384480.0f, -283127872.0f, -248703792.0f, -224704976.0f, -221059392.0f, -182189760.0f, -112016408.0f, -43794784.0f, 36262736.0f, 106543776.0f, 140374128.0f, 148310192.0f, 157005216.0f, 168688368.0f, 173450720.0f, 161910720.0f, 148476976.0f, 108757192.0f, 56508052.0f},
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

TEST(G729LpFloat, AnnexEMatchesAnnexCPlus) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("speech");
    // qua_lspe with a memory of reset rows plus 0.01 per row.
    VF mem = reset_memory();
    for (int k = 0; k < 4; ++k)
        for (int j = 0; j < 10; ++j) mem[k * 10 + j] += static_cast<float>(0.01 * k);
    const VF keep = mem;
    for (int c = 0; c < 3; ++c) {
        const VF l = scaled(kL[c], 10, 32768.0);
        VF q(10), cur(10);
        std::int16_t idx[2];
        ASSERT_EQ(u8::zepsLSPQuant_G729E_32f(l.data(), mem.data(), q.data(), idx, cur.data()), 0);
        expect_near(q, k_eq[c]);
        expect_near(cur, k_ecur[c]);
        EXPECT_EQ(idx[0], k_eidx[c][0]);
        EXPECT_EQ(idx[1], k_eidx[c][1]);
    }
    EXPECT_EQ(mem, keep);
    // Hybrid window on male.s16 from sample 8000, three frames from reset;
    // relative tolerance 2e-6 of r[0] (sums of 115 products of size ~1e6).
    const std::vector<std::int16_t> s = zeps::test::load_speech("male.s16");
    Zep32s size = 0;
    ASSERT_EQ(u8::zepsWinHybridGetStateSize_G729E_32f(&size), 0);
    ASSERT_EQ(size, 124);
    std::vector<Zep8u> st(124, 0xa5);
    ASSERT_EQ(u8::zepsWinHybridInit_G729E_32f(st.data()), 0);
    for (int c = 0; c < 3; ++c) {
        VF x(145), r(31);
        for (int i = 0; i < 145; ++i) x[i] = s[8000 + 80 * c + i];
        ASSERT_EQ(u8::zepsWinHybrid_G729E_32f(x.data(), r.data(), st.data()), 0);
        for (int i = 0; i < 31; ++i) EXPECT_NEAR(r[i], k_hyb[c][i], 2e-6f * k_hyb[c][0]) << "frame " << c << " lag " << i;
    }
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

ZEPS_VARIANT_CHECK(zepsLSPQuant_G729E_32f) {
    const VF mem = reset_memory();
    for (int rep = 0; rep < 30; ++rep) {
        VF l = scaled(kL[rep % 3], 10, 32768.0);
        for (auto& v : l) v = std::max(-0.999f, std::min(0.999f, v + rng.f32(0.02f)));
        VF q1(10, -1), q2(10, -1), c1(10, -1), c2(10, -1);
        std::int16_t i1[2] = {-1, -1}, i2[2] = {-1, -1};
        EXPECT_EQ(u8::zepsLSPQuant_G729E_32f(l.data(), mem.data(), q1.data(), i1, c1.data()),
                  n8::zepsLSPQuant_G729E_32f(l.data(), mem.data(), q2.data(), i2, c2.data()));
        EXPECT_TRUE(same(q1, q2) && same(c1, c2) && i1[0] == i2[0] && i1[1] == i2[1]);
    }
}

ZEPS_VARIANT_CHECK(zepsWinHybridGetStateSize_G729E_32f) {
    Zep32s a = 0, b = 1;
    EXPECT_EQ(u8::zepsWinHybridGetStateSize_G729E_32f(&a), n8::zepsWinHybridGetStateSize_G729E_32f(&b));
    EXPECT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsWinHybridInit_G729E_32f) {
    std::vector<Zep8u> a(124, 1), b(124, 2);
    EXPECT_EQ(u8::zepsWinHybridInit_G729E_32f(a.data()), n8::zepsWinHybridInit_G729E_32f(b.data()));
    EXPECT_EQ(a, b);
}

ZEPS_VARIANT_CHECK(zepsWinHybrid_G729E_32f) {
    std::vector<Zep8u> sa(124), sb(124);
    u8::zepsWinHybridInit_G729E_32f(sa.data());
    n8::zepsWinHybridInit_G729E_32f(sb.data());
    for (int rep = 0; rep < 20; ++rep) {
        VF x(145);
        for (auto& v : x) v = rng.f32(20000.0f);
        VF ra(31, -1), rb(31, -1);
        EXPECT_EQ(u8::zepsWinHybrid_G729E_32f(x.data(), ra.data(), sa.data()),
                  n8::zepsWinHybrid_G729E_32f(x.data(), rb.data(), sb.data()));
        EXPECT_TRUE(same(ra, rb) && same(sa, sb));
    }
}

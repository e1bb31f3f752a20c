// G.726 encoder and decoder against the ITU-T G.191 STL reference: the
// recorded streams (.vec) and the ITU-T G.726 digital test sequences, both
// builds, every output element and status.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <string_view>

#include "tests/g726/g726_test_util.h"
#include "tests/vec_reader.h"

namespace zeps::test::g726 {
namespace {

void replay_encoder(const std::string& file) {
    const VecFile vf = load_vec(shared_path("vectors/g726/" + file));
    for (int b = 0; b < 2; ++b) {
        SCOPED_TRACE(kBuildNames[b]);
        Block st;
        for (const VecCase& c : vf.cases) {
            if (c.reset) {
                ASSERT_EQ(kBuilds[b].enc_init(st.enc(), c.in("rate").as<std::int32_t>()[0]), c.ret);
                continue;
            }
            const auto src = c.in("pSrc").as<std::int16_t>();
            const auto want = c.out("pDst").as<std::uint8_t>();
            std::vector<std::uint8_t> got(want.size(), 0xEE);
            ASSERT_EQ(kBuilds[b].encode(st.enc(), src.data(), got.data(), c.in("len").as<std::int32_t>()[0]), c.ret)
                << "case " << c.number;
            ASSERT_EQ(got, want) << file << " case " << c.number;
        }
    }
}

void replay_decoder(const std::string& file) {
    const VecFile vf = load_vec(shared_path("vectors/g726/" + file));
    for (int b = 0; b < 2; ++b) {
        SCOPED_TRACE(kBuildNames[b]);
        Block st;
        for (const VecCase& c : vf.cases) {
            if (c.reset) {
                ASSERT_EQ(kBuilds[b].dec_init(st.dec(), c.in("rate").as<std::int32_t>()[0],
                                              c.in("law").as<std::int32_t>()[0]),
                          c.ret);
                continue;
            }
            const auto src = c.in("pSrcCode").as<std::uint8_t>();
            const auto want = c.out("pDst").as<std::int16_t>();
            std::vector<std::int16_t> got(want.size(), 0x5EE5);
            ASSERT_EQ(kBuilds[b].decode(st.dec(), src.data(), got.data(), c.in("len").as<std::int32_t>()[0]), c.ret)
                << "case " << c.number;
            ASSERT_EQ(got, want) << file << " case " << c.number;
        }
    }
}

TEST(G726Vectors, EncoderSpeech) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g726");
    replay_encoder("zepsEncode_G726_16s8u.vec");
}
TEST(G726Vectors, DecoderSpeechAndRandomCodes) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g726");
    replay_decoder("zepsDecode_G726_8u16s.vec");
}
TEST(G726Vectors, EncoderItuRestated) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g726");
    replay_encoder("zepsEncode_G726_16s8u_itu.vec");
}
TEST(G726Vectors, DecoderItuRestated) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g726");
    replay_decoder("zepsDecode_G726_8u16s_itu.vec");
}

// ---- the ITU-T digital test sequences themselves (raw 16-bit words)

std::vector<std::int16_t> load_words(const std::string& name) {
    std::ifstream f(shared_path("vectors/g726/itu/" + name), std::ios::binary);
    if (!f) throw std::runtime_error("cannot open " + name);
    std::vector<std::int16_t> w;
    unsigned char b[2];
    while (f.read(reinterpret_cast<char*>(b), 2)) w.push_back(static_cast<std::int16_t>(b[0] | (b[1] << 8)));
    return w;
}

// G.711 expansion to the 14-bit linear SL of G.726 EXPAND (line codes).
int expand14(int code, bool alaw) {
    if (alaw) {
        const int a = code ^ 0x55, seg = (a >> 4) & 7, m = a & 15;
        const int mag = seg == 0 ? 2 * m + 1 : (2 * m + 33) << (seg - 1);  // 13-bit magnitude
        return (a & 0x80) ? 2 * mag : -2 * mag;
    }
    const int u = ~code & 0xFF, seg = (u >> 4) & 7;
    const int mag = ((2 * (u & 15) + 33) << seg) - 33;
    return (u & 0x80) ? -mag : mag;
}

// Joins name parts (append, not operator+: keeps GCC 12's -Wrestrict quiet).
std::string cat(std::initializer_list<std::string_view> parts) {
    std::string s;
    for (std::string_view p : parts) s.append(p);
    return s;
}

TEST(G726Itu, AllResetSequencesBitExact) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("vectors/g726/itu");
    const char* const kbits[4] = {"16", "24", "32", "40"};
    int pairs = 0;
    for (int b = 0; b < 2; ++b) {
        SCOPED_TRACE(kBuildNames[b]);
        for (int r = 0; r < 4; ++r) {
            const std::string rr = kbits[r];
            // Encoder: nrm/ovr, A-law and mu-law input -> r?RRf?.i
            for (const char* seq : {"n", "v"}) {
                for (const char law : {'a', 'm'}) {
                    const std::string_view lw(&law, 1);
                    const auto pcm = load_words(cat({seq[0] == 'n' ? "nrm." : "ovr.", lw}));
                    const auto want = load_words(cat({"r", seq, rr, "f", lw, ".i"}));
                    std::vector<std::int16_t> sl(pcm.size());
                    for (std::size_t k = 0; k < pcm.size(); ++k)
                        sl[k] = static_cast<std::int16_t>(expand14(pcm[k], law == 'a'));
                    std::vector<std::uint8_t> codes(sl.size());
                    Block st;
                    ASSERT_EQ(kBuilds[b].enc_init(st.enc(), kRates[r]), 0);
                    ASSERT_EQ(kBuilds[b].encode(st.enc(), sl.data(), codes.data(), static_cast<int>(sl.size())), 0);
                    ASSERT_EQ(std::vector<std::int16_t>(codes.begin(), codes.end()), want) << seq << rr << lw;
                    ++pairs;
                }
            }
            // Decoder: (input codes, output law, expected)
            struct Dec {
                std::string in, out;
                int law;
            };
            std::vector<Dec> decs;
            for (const char* seq : {"n", "v"}) {
                const std::string base = cat({"r", seq, rr});
                decs.push_back({cat({base, "fa.i"}), cat({base, "fa.o"}), 1});
                decs.push_back({cat({base, "fa.i"}), cat({base, "fx.o"}), 0});
                decs.push_back({cat({base, "fm.i"}), cat({base, "fm.o"}), 0});
                decs.push_back({cat({base, "fm.i"}), cat({base, "fc.o"}), 1});
            }
            decs.push_back({cat({"i", rr}), cat({"ri", rr, "fa.o"}), 1});
            decs.push_back({cat({"i", rr}), cat({"ri", rr, "fm.o"}), 0});
            for (const Dec& d : decs) {
                const auto in = load_words(d.in);
                const auto want = load_words(d.out);
                std::vector<std::uint8_t> codes(in.begin(), in.end());
                std::vector<std::int16_t> got(codes.size());
                Block st;
                ASSERT_EQ(kBuilds[b].dec_init(st.dec(), kRates[r], d.law), 0);
                ASSERT_EQ(kBuilds[b].decode(st.dec(), codes.data(), got.data(), static_cast<int>(codes.size())), 0);
                ASSERT_EQ(got, want) << d.in << " -> " << d.out;
                ++pairs;
            }
        }
    }
    EXPECT_EQ(pairs, 2 * 56);
}

}  // namespace
}  // namespace zeps::test::g726

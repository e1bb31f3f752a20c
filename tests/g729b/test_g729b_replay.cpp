// SPDX-License-Identifier: BSD-3-Clause
// Bit-exact replays of the G.729 Annex B stages on both builds.
//
// Encoder: the front end of the reference encoder (pre-processing, Annex B
// autocorrelation, lag window, Levinson with the last stable filter kept,
// LP -> LSP of the main body or of Annex A, normalised LSFs) chained from
// the library's exports drives the VAD, the DTX history and decision and
// both LSP quantisers; every frame type (speech, SID, untransmitted), every
// SID parameter and the LSP indices of every speech frame must equal the ITU
// reference bitstreams of shared/codecs/g729 (g729b, g729ab and the Annex B
// conformance sequences), and every comfort-noise gain the reference
// encoder's.
//
// Decoder and excitation: recordings of the ITU-T G.729 Annex B v1.5
// reference (Software Package Release 2, main-body build c_codeB), made by
// instrumenting its routines and running its coder (VAD on) and decoder on
// shared data. Files in data/, 16-bit little-endian words:
//   enc_<b|ab>_<stream>.gain  Cod_cng -> Calc_exc_rand: cur_gain of every
//                             inactive frame of the encoder (c_codeB for b,
//                             c_codeBA for ab) on speech/<stream>.s16 or the
//                             conformance tstseqN.bin.
//   dec_<stream>.gain         Dec_cng, every inactive frame of the decoder on
//                             codecs/g729/g729b/<stream>.bit (or conformance
//                             tstseqN.bit): past_ftyp, parm[0] (frame type),
//                             parm[4] (gain index), sid_sav, sh_sid_sav, and
//                             the resulting cur_gain (6 words).
//   dec_<stream>.lsf          sid_lsfq_decode on the same runs: index[3],
//                             freq_prev[4][10] on entry, lsfq after
//                             Lsp_stability (53 words per SID frame).
//   cng.exc                   Calc_exc_rand records (242 words): flag_cod,
//                             cur_gain, seed, exc[-154..-1], exc[0..79] and
//                             seed on return, Gp and t0 of both subframes as
//                             passed to update_exc_err. Records 0..599: a
//                             driver calling Calc_exc_rand on generated inputs
//                             (past excitation of amplitude 8 to full scale,
//                             gains 0..32767, random seeds; 401 of them take
//                             the branch without a real root); then 60 records
//                             each of the encoder runs b/quiet, ab/noisy,
//                             b/tstseq1, ab/tstseq3 and the decoder runs on
//                             quiet, male_erased17, tstseq6, tones.
//   energy.bin                decoder, after each good frame: exc[0..79],
//                             sid_sav, sh_sid_sav (82 words); the first 100
//                             good frames of tones, loud and tstseq3.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "tests/g729b/g729b_test_util.h"
#include "tests/vec_reader.h"

using namespace zeps::test::g729b;

namespace {

constexpr Zep16s kHpCoeffs[6] = {1899, -3798, 1899, 4096, 7807, -3733};
constexpr Zep16s kLspStart[10] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
constexpr Zep16s kFreqPrevReset[10] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};

/// The LP front end and the Annex B decisions of the encoder, from the exports.
class AnnexBEncoderFront {
public:
    AnnexBEncoderFront(const Build& b, bool annexA) : b_(b), annexA_(annexA) {
        std::copy(kLspStart, kLspStart + 10, lspOld_);
        std::copy(kLspStart, kLspStart + 10, lspOldQ_);
        for (int k = 0; k < 4; ++k) std::copy(kFreqPrevReset, kFreqPrevReset + 10, freqPrev_ + 10 * k);
        prevFilter_[0] = 4096;
        Zep32s n = 0;
        EXPECT_EQ(zeps::u8::zepsVADGetStateSize_G729B(&n), 0);
        vad_.assign(static_cast<std::size_t>(n), 0xa5);
        EXPECT_EQ(zeps::u8::zepsDTXGetStateSize_G729B(&n), 0);
        dtx_.assign(static_cast<std::size_t>(n), 0xa5);
        EXPECT_EQ(b.hpInit(kHpCoeffs, hp_.data()), 0);
        EXPECT_EQ(b.vadInit(vad_.data()), 0);
        EXPECT_EQ(b.dtxInit(dtx_.data()), 0);
    }

    struct Result {
        int type;                 // 1 speech, 2 SID, 0 untransmitted
        std::array<int, 4> sid;   // SID: mode, first stage, second stage, energy; speech: packed LSP indices
        Zep16s gain;              // comfort-noise gain of an inactive frame
    };

    Result frame(const Zep16s* x) {
        std::copy(window_ + 80, window_ + 240, window_);
        std::copy(x, x + 80, window_ + 160);
        EXPECT_EQ(b_.hp(window_ + 160, 80, 12, hp_.data()), 0);
        Zep16s expR0 = 0;
        Zep32s r[13], rw[13];
        EXPECT_EQ(b_.autoCorr(window_, &expR0, r), 0);
        std::copy(r, r + 13, rw);
        EXPECT_EQ(b_.lagWindow(rw + 1, 12), 0);
        Zep16s a[11], rc[2], err;
        if (b_.levinson(rw, a, rc, &err) == 0) {
            std::copy(a, a + 11, prevFilter_);
            std::copy(rc, rc + 2, prevFilter_ + 11);
        } else {  // unstable: the reference keeps its last stable filter
            std::copy(prevFilter_, prevFilter_ + 11, a);
            std::copy(prevFilter_ + 11, prevFilter_ + 13, rc);
        }
        Zep16s lsp[10], lsf[10];
        EXPECT_EQ((annexA_ ? b_.lpcToLspA : b_.lpcToLsp)(a, lspOld_, lsp), 0);
        EXPECT_EQ(b_.lspToLsfNorm(lsp, lsf), 0);
        frameCount_ = frameCount_ == 32767 ? Zep16s{256} : static_cast<Zep16s>(frameCount_ + 1);
        Zep16s vad = -1;
        EXPECT_EQ(b_.vad(rc[1], lsf, rw, expR0, window_, frameCount_, pastVad_, ppastVad_, &vad, vad_.data()), 0);
        EXPECT_EQ(b_.dtxUpdate(r, expR0, vad, dtx_.data()), 0);
        std::copy(lsp, lsp + 10, lspOld_);

        Result res{1, {}, 0};
        if (vad == 1) {
            Zep16s idx[2];
            EXPECT_EQ(b_.lspQuant(lsp, freqPrev_, lspOldQ_, idx), 0);
            res.sid = {idx[0], idx[1], 0, 0};
        } else {
            Zep16s ftyp = -1, lpc[11], gainIdx = -1;
            EXPECT_EQ(b_.dtx(pastVad_, prevFilter_, &ftyp, lpc, &gainIdx, &res.gain, dtx_.data()), 0);
            res.type = ftyp;
            if (ftyp == 2) {
                Zep16s lspNew[10], idx[3];
                EXPECT_EQ((annexA_ ? b_.lpcToLspA : b_.lpcToLsp)(lpc, lspOldQ_, lspNew), 0);
                EXPECT_EQ(b_.sidLspQuant(lspNew, freqPrev_, lspSid_, idx), 0);
                res.sid = {idx[0], idx[1], idx[2], gainIdx};
            }
            std::copy(lspSid_, lspSid_ + 10, lspOldQ_);
        }
        ppastVad_ = pastVad_;
        pastVad_ = vad;
        return res;
    }

private:
    const Build& b_;
    bool annexA_;
    std::vector<Zep8u> hp_ = std::vector<Zep8u>(24);
    std::vector<Zep8u> vad_, dtx_;
    Zep16s window_[240] = {};
    Zep16s lspOld_[10], lspOldQ_[10], lspSid_[10] = {}, freqPrev_[40];
    Zep16s prevFilter_[13] = {};
    Zep16s frameCount_ = 0, pastVad_ = 1, ppastVad_ = 1;
};

struct EncoderStream {
    const char* input;      // below shared/
    const char* bitstream;  // below shared/codecs/g729/
    const char* gains;      // data/ recording of the encoder's gains
    bool annexA;
};

constexpr EncoderStream kEncoderStreams[] = {
    {"speech/female.s16", "g729b/female.bit", "enc_b_female.gain", false},
    {"speech/loud.s16", "g729b/loud.bit", "enc_b_loud.gain", false},
    {"speech/male.s16", "g729b/male.bit", "enc_b_male.gain", false},
    {"speech/noisy.s16", "g729b/noisy.bit", "enc_b_noisy.gain", false},
    {"speech/quiet.s16", "g729b/quiet.bit", "enc_b_quiet.gain", false},
    {"speech/tones.s16", "g729b/tones.bit", "enc_b_tones.gain", false},
    {"speech/female.s16", "g729ab/female.bit", "enc_ab_female.gain", true},
    {"speech/loud.s16", "g729ab/loud.bit", "enc_ab_loud.gain", true},
    {"speech/male.s16", "g729ab/male.bit", "enc_ab_male.gain", true},
    {"speech/noisy.s16", "g729ab/noisy.bit", "enc_ab_noisy.gain", true},
    {"speech/quiet.s16", "g729ab/quiet.bit", "enc_ab_quiet.gain", true},
    {"speech/tones.s16", "g729ab/tones.bit", "enc_ab_tones.gain", true},
    {"codecs/g729/conformance/g729b/tstseq1.bin", "conformance/g729b/tstseq1.bit", "enc_b_tstseq1.gain", false},
    {"codecs/g729/conformance/g729b/tstseq2.bin", "conformance/g729b/tstseq2.bit", "enc_b_tstseq2.gain", false},
    {"codecs/g729/conformance/g729b/tstseq3.bin", "conformance/g729b/tstseq3.bit", "enc_b_tstseq3.gain", false},
    {"codecs/g729/conformance/g729b/tstseq4.bin", "conformance/g729b/tstseq4.bit", "enc_b_tstseq4.gain", false},
    {"codecs/g729/conformance/g729b/tstseq1.bin", "conformance/g729ab/tstseq1a.bit", "enc_ab_tstseq1.gain", true},
    {"codecs/g729/conformance/g729b/tstseq2.bin", "conformance/g729ab/tstseq2a.bit", "enc_ab_tstseq2.gain", true},
    {"codecs/g729/conformance/g729b/tstseq3.bin", "conformance/g729ab/tstseq3a.bit", "enc_ab_tstseq3.gain", true},
    {"codecs/g729/conformance/g729b/tstseq4.bin", "conformance/g729ab/tstseq4a.bit", "enc_ab_tstseq4.gain", true},
};

}  // namespace

TEST(G729BReplay, EncoderDecisionsAndSidParametersMatchReferenceBitstreams) {
    ZEPS_SKIP_WITHOUT_SHARED_DATA("codecs/g729");
    for (const Build& b : kBuilds) {
        for (const EncoderStream& s : kEncoderStreams) {
            SCOPED_TRACE(std::string(b.name) + " " + s.bitstream);
            const V16 speech = read_words(zeps::test::shared_path(s.input));
            const auto frames = read_serial(zeps::test::shared_path(std::string("codecs/g729/") + s.bitstream));
            const V16 gains = read_data(s.gains);
            ASSERT_EQ(frames.size(), speech.size() / 80);
            AnnexBEncoderFront enc(b, s.annexA);
            std::size_t inactive = 0;
            int bad = 0;
            for (std::size_t f = 0; f < frames.size() && bad < 5; ++f) {
                const auto res = enc.frame(speech.data() + 80 * f);
                const int want = frames[f].size == 80 ? 1 : frames[f].size == 16 ? 2 : 0;
                if (res.type != want) {
                    ADD_FAILURE() << "frame " << f << ": type " << res.type << ", reference " << want;
                    ++bad;
                    continue;
                }
                if (want == 1) {
                    // The speech quantiser shares its MA memory with the SID quantiser.
                    const std::array<int, 4> ref = {frames[f].field(0, 8), frames[f].field(8, 10), 0, 0};
                    if (res.sid != ref) {
                        ADD_FAILURE() << "frame " << f << ": speech LSP indices differ";
                        ++bad;
                    }
                    continue;
                }
                ASSERT_LT(inactive, gains.size());
                if (res.gain != gains[inactive]) {
                    ADD_FAILURE() << "frame " << f << ": gain " << res.gain << ", reference " << gains[inactive];
                    ++bad;
                }
                ++inactive;
                if (want == 2) {
                    const SerialFrame& sf = frames[f];
                    const std::array<int, 4> ref = {sf.field(0, 1), sf.field(1, 5), sf.field(6, 4), sf.field(10, 5)};
                    if (res.sid != ref) {
                        ADD_FAILURE() << "frame " << f << ": SID parameters differ";
                        ++bad;
                    }
                }
            }
            EXPECT_EQ(inactive, gains.size());
        }
    }
}

namespace {
constexpr const char* kDecoderStreams[] = {"female", "loud", "male", "male_erased17", "noisy", "quiet", "tones",
                                           "tstseq1", "tstseq2", "tstseq3", "tstseq4", "tstseq5", "tstseq6"};
}  // namespace

TEST(G729BReplay, DecoderSidGainAndLsfMatchReference) {
    for (const Build& b : kBuilds) {
        for (const char* name : kDecoderStreams) {
            SCOPED_TRACE(std::string(b.name) + " " + name);
            const V16 g = read_data(std::string("dec_") + name + ".gain");
            std::vector<Zep8u> st(4, 0xa5);
            ASSERT_EQ(b.gainDecInit(st.data()), 0);
            for (std::size_t i = 0; i + 6 <= g.size(); i += 6) {
                Zep16s gain = -1;
                const Zep16s ftyp = g[i + 1] != 0 ? Zep16s{2} : Zep16s{0};
                ASSERT_EQ(b.gainDec(ftyp, g[i + 2], g[i], g[i + 3], g[i + 4], &gain, st.data()), 0);
                ASSERT_EQ(gain, g[i + 5]) << "inactive frame " << i / 6;
            }
            const V16 l = read_data(std::string("dec_") + name + ".lsf");
            for (std::size_t i = 0; i + 53 <= l.size(); i += 53) {
                V16 prev(l.begin() + static_cast<long>(i) + 3, l.begin() + static_cast<long>(i) + 43);
                V16 lsf(10, 0x5a5a);
                const int status = b.sidLsfDecode(&l[i], prev.data(), lsf.data());
                ASSERT_GE(status, 0);
                ASSERT_TRUE(std::equal(lsf.begin(), lsf.end(), l.begin() + static_cast<long>(i) + 43))
                    << "SID frame " << i / 53;
                // The memory's newest row is the codebook vector, the rest shift.
                ASSERT_TRUE(std::equal(prev.begin() + 10, prev.end(), l.begin() + static_cast<long>(i) + 3));
            }
        }
    }
}

TEST(G729BReplay, ComfortNoiseExcitationMatchesReference) {
    const V16 d = read_data("cng.exc");
    ASSERT_GT(d.size(), 0u);
    for (const Build& b : kBuilds) {
        int nonzeroPitch = 0;
        for (std::size_t i = 0; i + 242 <= d.size(); i += 242) {
            const Zep16s* r = &d[i];
            V16 exc(234, 0x5a5a);
            std::copy(r + 3, r + 157, exc.begin());
            Zep16s seed = r[2];
            Zep16s pitch[4] = {-1, -1, -1, -1};
            ASSERT_EQ(b.cngExc(r[1], exc.data(), &seed, r[0] != 0 ? pitch : nullptr), 0);
            ASSERT_TRUE(std::equal(exc.begin() + 154, exc.end(), r + 157)) << b.name << " record " << i / 242;
            ASSERT_TRUE(std::equal(exc.begin(), exc.begin() + 154, r + 3)) << "history changed";
            ASSERT_EQ(seed, r[237]);
            if (r[0] != 0) {
                ASSERT_TRUE(std::equal(pitch, pitch + 4, r + 238)) << b.name << " record " << i / 242;
                nonzeroPitch += pitch[0] != 0;
            }
        }
        EXPECT_GT(nonzeroPitch, 0);
    }
}

TEST(G729BReplay, FrameEnergyMatchesReference) {
    const V16 d = read_data("energy.bin");
    ASSERT_GT(d.size(), 0u);
    for (const Build& b : kBuilds) {
        for (std::size_t i = 0; i + 82 <= d.size(); i += 82) {
            Zep16s e = 0, sh = 0;
            ASSERT_EQ(b.frameEnergy(&d[i], &e, &sh), 0);
            ASSERT_EQ(e, d[i + 80]) << b.name << " record " << i / 82;
            ASSERT_EQ(sh, d[i + 81]) << b.name << " record " << i / 82;
        }
    }
}

// SPDX-License-Identifier: BSD-3-Clause
// zepsc amr: the GSM-AMR encoder and decoder (3GPP TS 26.071..26.073)
// assembled from the library's public exports. Bitstreams:
//  - "amr": the RFC 4867 single-channel storage format: "#!AMR\n", then per
//    frame a ToC byte (F = 0, FT, Q, 2 padding bits) and the class-sorted
//    speech bits packed MSB first and padded to whole octets; FT 8 is a SID
//    frame (35 bits, STI, 3-bit mode indication), FT 15 NO_DATA.
//  - "cod": the 3GPP test-sequence format, 250 little-endian 16-bit words a
//    frame: TX frame type, the 244 serial bits, the mode, 4 unused words.
// The decoder follows the reference decoder program: a NO_DATA frame is
// decoded in the mode of the last frame that carried one, a decoder homing
// frame resets the decoder, and one that follows a reset yields the encoder
// homing pattern. The encoder follows the reference encoder program: the
// input is masked to 13 bits, the mode comes from --mode or, frame by frame,
// from --modefile, and an encoder homing frame resets the encoder after it is
// coded. With --dtx, VAD option 1 decides speech and background noise; the
// DTX handler's frames carry SID parameters and sid_sync decides which are
// sent (SID_FIRST, SID_UPDATE every 8th frame) and which are NO_DATA.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tools/codec.h"
#include "zepsc.h"

namespace {

using zepsc_cli::ByteSource;
using zepsc_cli::CodecError;

// Class-sorted bit order of the storage format per frame type (the
// reference's MMS_IO tables): storage bit k is serial bit sort_x[k].
const std::uint8_t sort_475[95] = {
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
    23, 24, 25, 26, 27, 28, 48, 49, 61, 62, 82, 83, 47, 46, 45, 44,
    81, 80, 79, 78, 17, 18, 20, 22, 77, 76, 75, 74, 29, 30, 43, 42,
    41, 40, 38, 39, 16, 19, 21, 50, 51, 59, 60, 63, 64, 72, 73, 84,
    85, 93, 94, 32, 33, 35, 36, 53, 54, 56, 57, 66, 67, 69, 70, 87,
    88, 90, 91, 34, 55, 68, 89, 37, 58, 71, 92, 31, 52, 65, 86,
};
const std::uint8_t sort_515[103] = {
    7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8,
    23, 24, 25, 26, 27, 46, 65, 84, 45, 44, 43, 64, 63, 62, 83, 82,
    81, 102, 101, 100, 42, 61, 80, 99, 28, 47, 66, 85, 18, 41, 60, 79,
    98, 29, 48, 67, 17, 20, 22, 40, 59, 78, 97, 21, 30, 49, 68, 86,
    19, 16, 87, 39, 38, 58, 57, 77, 35, 54, 73, 92, 76, 96, 95, 36,
    55, 74, 93, 32, 51, 33, 52, 70, 71, 89, 90, 31, 50, 69, 88, 37,
    56, 75, 94, 34, 53, 72, 91,
};
const std::uint8_t sort_59[118] = {
    0, 1, 4, 5, 3, 6, 7, 2, 13, 15, 8, 9, 11, 12, 14, 10,
    16, 28, 74, 29, 75, 27, 73, 26, 72, 30, 76, 51, 97, 50, 71, 96,
    117, 31, 77, 52, 98, 49, 70, 95, 116, 53, 99, 32, 78, 33, 79, 48,
    69, 94, 115, 47, 68, 93, 114, 46, 67, 92, 113, 19, 21, 23, 22, 18,
    17, 20, 24, 111, 43, 89, 110, 64, 65, 44, 90, 25, 45, 66, 91, 112,
    54, 100, 40, 61, 86, 107, 39, 60, 85, 106, 36, 57, 82, 103, 35, 56,
    81, 102, 34, 55, 80, 101, 42, 63, 88, 109, 41, 62, 87, 108, 38, 59,
    84, 105, 37, 58, 83, 104,
};
const std::uint8_t sort_67[134] = {
    0, 1, 4, 3, 5, 6, 13, 7, 2, 8, 9, 11, 15, 12, 14, 10,
    28, 82, 29, 83, 27, 81, 26, 80, 30, 84, 16, 55, 109, 56, 110, 31,
    85, 57, 111, 48, 73, 102, 127, 32, 86, 51, 76, 105, 130, 52, 77, 106,
    131, 58, 112, 33, 87, 19, 23, 53, 78, 107, 132, 21, 22, 18, 17, 20,
    24, 25, 50, 75, 104, 129, 47, 72, 101, 126, 54, 79, 108, 133, 46, 71,
    100, 125, 128, 103, 74, 49, 45, 70, 99, 124, 42, 67, 96, 121, 39, 64,
    93, 118, 38, 63, 92, 117, 35, 60, 89, 114, 34, 59, 88, 113, 44, 69,
    98, 123, 43, 68, 97, 122, 41, 66, 95, 120, 40, 65, 94, 119, 37, 62,
    91, 116, 36, 61, 90, 115,
};
const std::uint8_t sort_74[148] = {
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
    16, 26, 87, 27, 88, 28, 89, 29, 90, 30, 91, 51, 80, 112, 141, 52,
    81, 113, 142, 54, 83, 115, 144, 55, 84, 116, 145, 58, 119, 59, 120, 21,
    22, 23, 17, 18, 19, 31, 60, 92, 121, 56, 85, 117, 146, 20, 24, 25,
    50, 79, 111, 140, 57, 86, 118, 147, 49, 78, 110, 139, 48, 77, 53, 82,
    114, 143, 109, 138, 47, 76, 108, 137, 32, 33, 61, 62, 93, 94, 122, 123,
    41, 42, 43, 44, 45, 46, 70, 71, 72, 73, 74, 75, 102, 103, 104, 105,
    106, 107, 131, 132, 133, 134, 135, 136, 34, 63, 95, 124, 35, 64, 96, 125,
    36, 65, 97, 126, 37, 66, 98, 127, 38, 67, 99, 128, 39, 68, 100, 129,
    40, 69, 101, 130,
};
const std::uint8_t sort_795[159] = {
    8, 7, 6, 5, 4, 3, 2, 14, 16, 9, 10, 12, 13, 15, 11, 17,
    20, 22, 24, 23, 19, 18, 21, 56, 88, 122, 154, 57, 89, 123, 155, 58,
    90, 124, 156, 52, 84, 118, 150, 53, 85, 119, 151, 27, 93, 28, 94, 29,
    95, 30, 96, 31, 97, 61, 127, 62, 128, 63, 129, 59, 91, 125, 157, 32,
    98, 64, 130, 1, 0, 25, 26, 33, 99, 34, 100, 65, 131, 66, 132, 54,
    86, 120, 152, 60, 92, 126, 158, 55, 87, 121, 153, 117, 116, 115, 46, 78,
    112, 144, 43, 75, 109, 141, 40, 72, 106, 138, 36, 68, 102, 134, 114, 149,
    148, 147, 146, 83, 82, 81, 80, 51, 50, 49, 48, 47, 45, 44, 42, 39,
    35, 79, 77, 76, 74, 71, 67, 113, 111, 110, 108, 105, 101, 145, 143, 142,
    140, 137, 133, 41, 73, 107, 139, 37, 69, 103, 135, 38, 70, 104, 136,
};
const std::uint8_t sort_102[204] = {
    7, 6, 5, 4, 3, 2, 1, 0, 16, 15, 14, 13, 12, 11, 10, 9,
    8, 26, 27, 28, 29, 30, 31, 115, 116, 117, 118, 119, 120, 72, 73, 161,
    162, 65, 68, 69, 108, 111, 112, 154, 157, 158, 197, 200, 201, 32, 33, 121,
    122, 74, 75, 163, 164, 66, 109, 155, 198, 19, 23, 21, 22, 18, 17, 20,
    24, 25, 37, 36, 35, 34, 80, 79, 78, 77, 126, 125, 124, 123, 169, 168,
    167, 166, 70, 67, 71, 113, 110, 114, 159, 156, 160, 202, 199, 203, 76, 165,
    81, 82, 92, 91, 93, 83, 95, 85, 84, 94, 101, 102, 96, 104, 86, 103,
    87, 97, 127, 128, 138, 137, 139, 129, 141, 131, 130, 140, 147, 148, 142, 150,
    132, 149, 133, 143, 170, 171, 181, 180, 182, 172, 184, 174, 173, 183, 190, 191,
    185, 193, 175, 192, 176, 186, 38, 39, 49, 48, 50, 40, 52, 42, 41, 51,
    58, 59, 53, 61, 43, 60, 44, 54, 194, 179, 189, 196, 177, 195, 178, 187,
    188, 151, 136, 146, 153, 134, 152, 135, 144, 145, 105, 90, 100, 107, 88, 106,
    89, 98, 99, 62, 47, 57, 64, 45, 63, 46, 55, 56,
};
const std::uint8_t sort_122[244] = {
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 23,
    15, 16, 17, 18, 19, 20, 21, 22, 24, 25, 26, 27, 28, 38, 141, 39,
    142, 40, 143, 41, 144, 42, 145, 43, 146, 44, 147, 45, 148, 46, 149, 47,
    97, 150, 200, 48, 98, 151, 201, 49, 99, 152, 202, 86, 136, 189, 239, 87,
    137, 190, 240, 88, 138, 191, 241, 91, 194, 92, 195, 93, 196, 94, 197, 95,
    198, 29, 30, 31, 32, 33, 34, 35, 50, 100, 153, 203, 89, 139, 192, 242,
    51, 101, 154, 204, 55, 105, 158, 208, 90, 140, 193, 243, 59, 109, 162, 212,
    63, 113, 166, 216, 67, 117, 170, 220, 36, 37, 54, 53, 52, 58, 57, 56,
    62, 61, 60, 66, 65, 64, 70, 69, 68, 104, 103, 102, 108, 107, 106, 112,
    111, 110, 116, 115, 114, 120, 119, 118, 157, 156, 155, 161, 160, 159, 165, 164,
    163, 169, 168, 167, 173, 172, 171, 207, 206, 205, 211, 210, 209, 215, 214, 213,
    219, 218, 217, 223, 222, 221, 73, 72, 71, 76, 75, 74, 79, 78, 77, 82,
    81, 80, 85, 84, 83, 123, 122, 121, 126, 125, 124, 129, 128, 127, 132, 131,
    130, 135, 134, 133, 176, 175, 174, 179, 178, 177, 182, 181, 180, 185, 184, 183,
    188, 187, 186, 226, 225, 224, 229, 228, 227, 232, 231, 230, 235, 234, 233, 238,
    237, 236, 96, 199,
};
const std::uint8_t sort_SID[35] = {
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
    16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31,
    32, 33, 34,
};

const std::uint8_t* const kSort[9] = {sort_475, sort_515, sort_59, sort_67, sort_74,
                                       sort_795, sort_102, sort_122, sort_SID};
// Speech bits and bytes after the ToC byte per frame type 0..8.
constexpr int kBits[9] = {95, 103, 118, 134, 148, 159, 204, 244, 35};
constexpr int kBytes[9] = {12, 13, 15, 17, 19, 20, 26, 31, 5};
// Rate codes of the library for the modes MR475 .. MR122.
constexpr std::int32_t kRate[8] = {0, 1, 3, 6, 7, 8, 11, 12};
// Receiver frame types (zepsRxDTXHandler_GSMAMR_16s) and DTX states.
enum Rx : std::int32_t { kSpeechGood = 0, kSpeechDegraded, kOnset, kSpeechBad, kSidFirst, kSidUpdate, kSidBad, kNoData };
enum Dtx : Zep16s { kSpeech = 0, kDtx, kDtxMute };

constexpr int kSerial = 244;
constexpr int kFrame = 160;
constexpr int kSubfr = 40;
constexpr int kM = 10;
constexpr int kExcHist = 154;      // PIT_MAX + L_INTERPOL: past excitation before the subframe
constexpr Zep16s kPitMax = 143;
constexpr Zep16s kSharpMax = 13017;  // 0.8, Q14
constexpr std::int32_t kRateSID = 25;

// Reset values of the decoder's memories (3GPP TS 26.073 Decoder_amr_reset).
constexpr Zep16s kLspInit[kM] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
constexpr Zep16s kMeanLsf[kM] = {1384, 2077, 3420, 5108, 6742, 8122, 9863, 11092, 12714, 13701};

// The saturating arithmetic of the decoder's own glue (ITU-T / ETSI basic operators).
Zep16s sat16(std::int64_t v) { return static_cast<Zep16s>(v > 32767 ? 32767 : v < -32768 ? -32768 : v); }
Zep16s add(Zep16s a, Zep16s b) { return sat16(std::int64_t{a} + b); }
Zep16s shl1(Zep16s a) { return sat16(2 * std::int64_t{a}); }

bool low_rate(int mode) { return mode <= 2; }  // 4.75, 5.15, 5.9

// The speech decoder (3GPP TS 26.073 Speech_Decode_Frame with Decoder_amr)
// strung from the stage exports, with its memories.
class SpeechDecoder {
public:
    SpeechDecoder() : post_(block_size(zepsPostFilterGetStateSize_GSMAMR_16s)),
                      dtx_(block_size(zepsDTXDecodeGetStateSize_GSMAMR_16s)) { reset(); }

    /// Speech_Decode_Frame_reset.
    void reset() {
        std::fill(std::begin(exc_buf_), std::end(exc_buf_), Zep16s{0});
        std::fill(std::begin(mem_syn_), std::end(mem_syn_), Zep16s{0});
        std::copy(std::begin(kLspInit), std::end(kLspInit), lsp_old_);
        std::fill(std::begin(exc_energy_hist_), std::end(exc_energy_hist_), Zep16s{0});
        std::copy(std::begin(kMeanLsf), std::end(kMeanLsf), lsf_mean_);
        for (int i = 0; i < 4; i++) {
            past_qua_en_[i] = -14336;
            past_qua_en_[4 + i] = -2381;
        }
        check(zepsDTXDecodeInit_GSMAMR_16s(dtx()));
        reset_for_comfort_noise();
        check(zepsPostFilterInit_GSMAMR_16s(post()));
        std::fill(std::begin(post_hp_), std::end(post_hp_), Zep16s{0});
    }

    /// One frame: serial bits of the receiver frame type in mode (0..7) to 160 samples.
    void decode(const Zep16s* serial, int mode, std::int32_t rx, Zep16s* pcm) {
        const std::int32_t rate = kRate[mode];
        Zep16s parm[57] = {};
        check(zepsBitsToParam_GSMAMR_16s(serial, parm, rx == kSidBad || rx == kSidUpdate ? kRateSID : rate));
        Zep16s new_state = 0, prev_state = 0;
        check(zepsRxDTXHandler_GSMAMR_16s(dtx(), rx, &new_state, &prev_state));
        Zep16s a_t[4 * 11];
        if (new_state != kSpeech) {
            reset_for_comfort_noise();
            check(zepsDTXDecode_GSMAMR_16s(dtx(), mem_syn_, past_rq_, past_lsf_q_, past_qua_en_, cb_gain_aver_, parm,
                                           pcm, a_t, lsp_old_, new_state, rate));
            check(zepsLSPAverage_GSMAMR_16s(lsf_mean_, past_lsf_q_));
        } else {
            speech_frame(mode, rx, prev_state, parm, pcm, a_t);
        }
        check(zepsPostFilter_GSMAMR_16s_I(post(), pcm, a_t, rate));
        check(zepsPostProcess_GSMAMR_16s_I(post_hp_, pcm, kFrame));
        for (int i = 0; i < kFrame; i++) pcm[i] = static_cast<Zep16s>(pcm[i] & 0xfff8);
    }

private:
    static std::size_t block_size(ZepStatus (*query)(Zep32s*)) {
        Zep32s n = 0;
        if (query(&n) != zepStsNoErr || n <= 0) throw CodecError("decoder state size");
        return static_cast<std::size_t>(n);
    }
    static void check(ZepStatus s) {
        if (s != zepStsNoErr) throw CodecError("GSM-AMR decoder stage failed with status " + std::to_string(s));
    }
    ZepPostFilterState_GSMAMR* post() { return reinterpret_cast<ZepPostFilterState_GSMAMR*>(post_.data()); }
    ZepDTXDecodeState_GSMAMR* dtx() { return reinterpret_cast<ZepDTXDecodeState_GSMAMR*>(dtx_.data()); }

    /// Decoder_amr_reset(MRDTX): what comfort noise does not carry over.
    void reset_for_comfort_noise() {
        exc_at_ = 0;
        std::fill(exc_buf_, exc_buf_ + kExcHist, Zep16s{0});
        sharp_ = 0;
        old_t0_ = 40;
        prev_bf_ = prev_pdf_ = bf_state_ = 0;
        t0_lag_buff_ = 40;
        in_background_noise_ = voiced_hangover_ = 0;
        std::fill(std::begin(ltp_gain_hist_), std::end(ltp_gain_hist_), Zep16s{0});
        std::fill(std::begin(cb_gain_aver_), std::end(cb_gain_aver_), Zep16s{0});
        std::fill(std::begin(past_rq_), std::end(past_rq_), Zep16s{0});
        std::copy(std::begin(kMeanLsf), std::end(kMeanLsf), past_lsf_q_);
        for (int i = 0; i < 5; i++) {
            ec_pitch_[i] = 1640;
            ec_code_[i] = 1;
        }
        ec_pitch_[5] = 0;
        ec_pitch_[6] = 16384;
        ec_code_[5] = 0;
        ec_code_[6] = 1;
        std::fill(std::begin(bgn_), std::end(bgn_), Zep16s{0});
        nodata_seed_ = 21845;
        std::fill(std::begin(ph_disp_), std::end(ph_disp_), Zep16s{0});
    }

    /// Decoder_amr for a frame in the SPEECH state.
    void speech_frame(int mode, std::int32_t rx, Zep16s prev_state, Zep16s* parm, Zep16s* synth, Zep16s* a_t) {
        const std::int32_t rate = kRate[mode];
        Zep16s bfi = 0, pdfi = 0;
        if (rx == kSpeechBad || rx == kNoData || rx == kOnset) {
            bfi = 1;
            if (rx == kNoData || rx == kOnset) check(zepsBuildCNParam_GSMAMR_16s(&nodata_seed_, parm, rate));
        } else if (rx == kSpeechDegraded) {
            pdfi = 1;
        }
        if (bfi != 0) bf_state_ = add(bf_state_, 1);
        else if (bf_state_ == 6) bf_state_ = 5;
        else bf_state_ = 0;
        if (bf_state_ > 6) bf_state_ = 6;
        if (prev_state == kDtx) {
            bf_state_ = 5;
            prev_bf_ = 0;
        } else if (prev_state == kDtxMute) {
            bf_state_ = 5;
            prev_bf_ = 1;
        }

        Zep16s prev_lsf[kM];
        std::copy(past_lsf_q_, past_lsf_q_ + kM, prev_lsf);
        Zep16s lsp[2 * kM];
        check(zepsLSFDecode_GSMAMR_16s(past_rq_, past_lsf_q_, parm, lsp, rate, bfi));
        const Zep16s* lsp_new = mode == 7 ? lsp + kM : lsp;
        check(zepsInterpolateLSP_GSMAMR_16s(lsp_old_, lsp, lsp_new, a_t, rate));
        std::copy(lsp_new, lsp_new + kM, lsp_old_);
        parm += mode == 7 ? 5 : 3;

        Zep16s even = 0, t0 = 0, index_mr475 = 0;
        for (int sf = 0; sf < 4; sf++) {
            even = static_cast<Zep16s>(1 - even);
            const bool relative = sf == 1 || sf == 3 || (sf == 2 && mode <= 1);
            subframe(mode, sf, relative, even, bfi, pdfi, prev_lsf, parm, index_mr475, t0, &a_t[11 * sf],
                     &synth[kSubfr * sf]);
        }
        check(zepsBackgroundNoiseDetect_GSMAMR_16s(bgn_, ltp_gain_hist_, synth, &voiced_hangover_,
                                                   &in_background_noise_));
        check(zepsDTXDecodeUpdate_GSMAMR_16s(dtx(), past_lsf_q_, synth));
        prev_bf_ = bfi;
        prev_pdf_ = pdfi;
        check(zepsLSPAverage_GSMAMR_16s(lsf_mean_, past_lsf_q_));
    }

    /// The lag and adaptive codebook vector, with the concealment of bad frames.
    void adaptive(int mode, bool relative, Zep16s bfi, Zep16s index, Zep16s& t0) {
        const std::int32_t rate = kRate[mode];
        Zep16s frac = 0;
        if (mode != 7) {
            check(zepsAdaptiveLagDecode_GSMAMR_16s(index, relative ? 1 : 0, old_t0_, &t0, &frac, rate));
            t0_lag_buff_ = t0;
            if (bfi != 0) {
                if (old_t0_ < kPitMax) old_t0_ = add(old_t0_, 1);
                t0 = old_t0_;
                frac = 0;
                if (in_background_noise_ != 0 && voiced_hangover_ > 4 && low_rate(mode)) t0 = t0_lag_buff_;
            }
        } else {
            // the previous subframe's lag (any lag for the absolute first subframe)
            const Zep16s prev = relative ? t0 : old_t0_;
            check(zepsAdaptiveLagDecode_GSMAMR_16s(index, relative ? 1 : 0, prev, &t0, &frac, rate));
            if (!(bfi == 0 && (!relative || index < 61))) {
                t0_lag_buff_ = t0;
                t0 = old_t0_;
                frac = 0;
            }
        }
        check(zepsAdaptiveCodebookDecode_GSMAMR_16s(exc_buf_ + exc_at_, t0, frac, rate));
    }

    void subframe(int mode, int sf, bool relative, Zep16s even, Zep16s bfi, Zep16s pdfi, const Zep16s* prev_lsf,
                  Zep16s*& parm, Zep16s& index_mr475, Zep16s& t0, const Zep16s* az, Zep16s* synth) {
        const std::int32_t rate = kRate[mode];
        Zep16s* exc = exc_buf_ + exc_at_ + kExcHist;
        adaptive(mode, relative, bfi, *parm++, t0);

        // innovation and its pitch sharpening
        Zep16s code[kSubfr], gain_pit = 0, gain_code = 0, pit_sharp;
        if (mode == 7) {
            const Zep16s index = *parm++;
            if (bfi == 0) check(zepsDecodePitchGain_GSMAMR_16s(index, &gain_pit, rate));
            check(zepsConcealPitchGain_GSMAMR_16s(ec_pitch_, &gain_pit, bf_state_, bfi, prev_bf_));
            check(zepsFixedCodebookDecode_GSMAMR_16s(parm, code, sf, rate));
            parm += 10;
            pit_sharp = shl1(gain_pit);
        } else {
            check(zepsFixedCodebookDecode_GSMAMR_16s(parm, code, sf, rate));
            parm += mode == 6 ? 7 : 2;
            pit_sharp = shl1(sharp_);
        }
        check(zepsPitchSharpening_GSMAMR_16s_I(code, t0, pit_sharp));

        // gains with their concealment
        if (mode != 5 && mode != 7) {
            Zep16s index;
            if (mode == 0) {
                if (even != 0) index_mr475 = *parm++;
                index = index_mr475;
            } else {
                index = *parm++;
            }
            if (bfi == 0) check(zepsDecodeGain_GSMAMR_16s(past_qua_en_, code, &index, &gain_pit, &gain_code, rate, even));
            check(zepsConcealPitchGain_GSMAMR_16s(ec_pitch_, &gain_pit, bf_state_, bfi, prev_bf_));
            check(zepsConcealCodeGain_GSMAMR_16s(ec_code_, past_qua_en_, &gain_code, bf_state_, bfi, prev_bf_));
            pit_sharp = gain_pit > kSharpMax ? kSharpMax : gain_pit;
            if (mode == 6 && old_t0_ > kSubfr + 5) pit_sharp = static_cast<Zep16s>(pit_sharp >> 2);
        } else {
            if (mode == 5) {
                const Zep16s index = *parm++;
                if (bfi == 0) check(zepsDecodePitchGain_GSMAMR_16s(index, &gain_pit, rate));
                check(zepsConcealPitchGain_GSMAMR_16s(ec_pitch_, &gain_pit, bf_state_, bfi, prev_bf_));
            }
            const Zep16s index = *parm++;
            if (bfi == 0) check(zepsDecodeGain_GSMAMR_16s(past_qua_en_, code, &index, &gain_pit, &gain_code, rate, even));
            check(zepsConcealCodeGain_GSMAMR_16s(ec_code_, past_qua_en_, &gain_code, bf_state_, bfi, prev_bf_));
            pit_sharp = mode == 5 && gain_pit > kSharpMax ? kSharpMax : gain_pit;
        }
        if (mode != 0 || even == 0) sharp_ = gain_pit > kSharpMax ? kSharpMax : gain_pit;
        pit_sharp = shl1(pit_sharp);
        Zep16s excp[kSubfr];
        if (pit_sharp > 16384) check(zepsSharpenedExcitation_GSMAMR_16s(exc, excp, pit_sharp, gain_pit, rate));
        if (bfi == 0) {
            std::copy(ltp_gain_hist_ + 1, ltp_gain_hist_ + 9, ltp_gain_hist_);
            ltp_gain_hist_[8] = gain_pit;
        }
        if ((prev_bf_ != 0 || bfi != 0) && in_background_noise_ != 0 && low_rate(mode)) {
            if (gain_pit > 12288) gain_pit = add(static_cast<Zep16s>((gain_pit - 12288) >> 1), 12288);
            if (gain_pit > 14745) gain_pit = 14745;
        }

        // code gain smoothing in background noise, excitation, dispersion
        Zep16s lsf_i[kM], gain_code_mix = 0;
        check(zepsInterpolateLSF_GSMAMR_16s(prev_lsf, past_lsf_q_, kSubfr * sf, lsf_i));
        check(zepsCbGainAverage_GSMAMR_16s(cb_gain_aver_, gain_code, lsf_i, lsf_mean_, bfi, prev_bf_, pdfi, prev_pdf_,
                                           in_background_noise_, voiced_hangover_, &gain_code_mix, rate));
        if (mode > 3 && mode != 6) gain_code_mix = gain_code;
        const Zep16s pitch_fac = mode == 7 ? static_cast<Zep16s>(gain_pit >> 1) : gain_pit;
        const int shift = mode == 7 ? 2 : 1;
        Zep16s exc_enh[kSubfr];
        std::copy(exc, exc + kSubfr, exc_enh);
        check(zepsTotalExcitation_GSMAMR_16s_I(exc, code, pitch_fac, gain_code, shift));
        const bool lock = low_rate(mode) && voiced_hangover_ > 3 && in_background_noise_ != 0 && bfi != 0;
        check(zepsPhaseDispersion_GSMAMR_16s(ph_disp_, exc_enh, code, gain_code_mix, gain_pit, pitch_fac, shift, rate,
                                             lock ? 1 : 0));

        // excitation control in concealed background noise
        Zep16s energy = 0;
        check(zepsExcitationEnergy_GSMAMR_16s(exc_enh, &energy));
        if (low_rate(mode) && voiced_hangover_ > 5 && in_background_noise_ != 0 && bf_state_ < 4 &&
            ((pdfi != 0 && prev_pdf_ != 0) || bfi != 0 || prev_bf_ != 0)) {
            const Zep16s careful = pdfi != 0 && bfi == 0 ? 1 : 0;
            check(zepsExcitationControl_GSMAMR_16s_I(exc_enh, energy, exc_energy_hist_, voiced_hangover_, prev_bf_,
                                                     careful));
        }
        if (!(in_background_noise_ != 0 && (bfi != 0 || prev_bf_ != 0) && bf_state_ < 4)) {
            std::copy(exc_energy_hist_ + 1, exc_energy_hist_ + 9, exc_energy_hist_);
            exc_energy_hist_[8] = energy;
        }

        // synthesis; on saturation the excitation history is scaled down and the subframe filtered again
        const Zep16s* src = exc_enh;
        if (pit_sharp > 16384) {
            for (int i = 0; i < kSubfr; i++) excp[i] = add(excp[i], exc_enh[i]);
            check(zepsGainControl_GSMAMR_16s_I(exc_enh, excp, kSubfr));
            src = excp;
        }
        const ZepStatus st = zepsSynthesisFilter_GSMAMR_16s(az, src, synth, mem_syn_, kSubfr, 0);
        if (st == zepStsOverflow) {
            for (Zep16s* v = exc - kExcHist; v < exc + kSubfr; v++) *v = static_cast<Zep16s>(*v >> 2);
            for (Zep16s& v : exc_enh) v = static_cast<Zep16s>(v >> 2);
            const ZepStatus again = zepsSynthesisFilter_GSMAMR_16s(az, exc_enh, synth, mem_syn_, kSubfr, 1);
            if (again != zepStsOverflow) check(again);  // the reference keeps a second saturation
        } else {
            check(st);
            std::copy(synth + kSubfr - kM, synth + kSubfr, mem_syn_);
        }
        advance_excitation();
        old_t0_ = t0;
    }

    /// The history window moves on by a subframe; only when it reaches the
    /// end of the buffer is it copied back to the start (once in kExcRuns subframes).
    void advance_excitation() {
        exc_at_ += kSubfr;
        if (exc_at_ + kExcHist + kSubfr > kExcBuf) {
            std::copy(exc_buf_ + exc_at_, exc_buf_ + exc_at_ + kExcHist, exc_buf_);
            exc_at_ = 0;
        }
    }

    static constexpr int kExcRuns = 16;
    static constexpr int kExcBuf = kExcHist + kExcRuns * kSubfr;
    // The past excitation of the subframe (PIT_MAX + L_INTERPOL samples)
    // starts at exc_buf_ + exc_at_, the subframe's own follows it.
    Zep16s exc_buf_[kExcBuf];
    int exc_at_ = 0;
    Zep16s mem_syn_[kM];
    Zep16s lsp_old_[kM];
    Zep16s past_rq_[kM], past_lsf_q_[kM];
    Zep16s lsf_mean_[kM];
    Zep16s past_qua_en_[8];
    Zep16s ec_pitch_[7], ec_code_[7];
    Zep16s cb_gain_aver_[9];
    Zep16s bgn_[61];
    Zep16s ph_disp_[8];
    Zep16s ltp_gain_hist_[9];
    Zep16s exc_energy_hist_[9];
    Zep16s post_hp_[6];
    Zep16s sharp_ = 0, old_t0_ = 40, prev_bf_ = 0, prev_pdf_ = 0, bf_state_ = 0, t0_lag_buff_ = 40;
    Zep16s in_background_noise_ = 0, voiced_hangover_ = 0, nodata_seed_ = 21845;
    std::vector<std::uint8_t> post_;
    std::vector<std::uint8_t> dtx_;
};

// The frame loop of the reference decoder program over one bitstream format.
class AmrDecoder : public zepsc_cli::FrameDecoder {
public:
    explicit AmrDecoder(bool storage) : storage_(storage) { serial_.fill(0); }
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }

    void begin(ByteSource& in) override {
        if (!storage_) return;
        std::uint8_t magic[6];
        if (!in.read_exact(magic, sizeof magic, "file header") || std::memcmp(magic, "#!AMR\n", 6) != 0)
            throw CodecError("not an AMR storage file: the header \"#!AMR\\n\" is missing");
    }

    std::size_t decode(ByteSource& in, std::int16_t* pcm) override {
        int mode = 0;
        std::int32_t rx = 0;
        if (!(storage_ ? read_storage(in, mode, rx) : read_cod(in, mode, rx))) return 0;
        if (rx == kNoData) mode = prev_mode_;
        else prev_mode_ = mode;
        Zep16s reset = 0;
        if (homed_) check(zepsDecodeHomingFrameTest_GSMAMR_16s(serial_.data(), &reset, kRate[mode], 1));
        if (reset != 0 && homed_) {
            for (int i = 0; i < kFrame; i++) pcm[i] = 0x0008;
        } else {
            decoder_.decode(serial_.data(), mode, rx, pcm);
        }
        if (!homed_) check(zepsDecodeHomingFrameTest_GSMAMR_16s(serial_.data(), &reset, kRate[mode], 0));
        if (reset != 0) {
            decoder_.reset();
            prev_mode_ = 0;
        }
        homed_ = reset != 0;
        return kFrame;
    }

private:
    static void check(ZepStatus s) {
        if (s != zepStsNoErr) throw CodecError("GSM-AMR decoder stage failed with status " + std::to_string(s));
    }

    // RFC 4867 storage: ToC byte, then the sorted bits (UnpackBits of the reference).
    bool read_storage(ByteSource& in, int& mode, std::int32_t& rx) {
        std::uint8_t toc;
        const std::uint64_t at = in.position();
        if (!in.read_exact(&toc, 1, "frame")) return false;
        const int ft = (toc >> 3) & 0x0F;
        const bool q = (toc & 0x04) != 0;
        if ((toc & 0x80) != 0)
            throw CodecError("corrupt frame at byte " + std::to_string(at) + ": the ToC byte " + std::to_string(toc) +
                             " has the F bit set, which the storage format does not allow");
        if (ft == 15) {
            rx = kNoData;
            return true;
        }
        if (ft > 8)
            throw CodecError("corrupt frame at byte " + std::to_string(at) + ": frame type " + std::to_string(ft) +
                             " is not a GSM-AMR speech, SID or NO_DATA frame");
        std::uint8_t packed[31];
        if (!in.read_exact(packed, static_cast<std::size_t>(kBytes[ft]), "frame"))
            throw CodecError("truncated frame at byte " + std::to_string(at) + ": the ToC byte has no frame bits");
        const std::uint8_t* sort = kSort[ft];
        const int nbits = kBits[ft];
        scatter_bits(packed, sort, nbits);
        if (ft == 8) {
            const std::uint8_t last = packed[4];  // bits 32..39: 3 SID bits, STI, mode indication
            const bool sti = (last & 0x10) != 0;
            mode = (last >> 1) & 0x07;
            rx = !q ? kSidBad : (sti ? kSidUpdate : kSidFirst);
        } else {
            mode = ft;
            rx = q ? kSpeechGood : kSpeechBad;
        }
        return true;
    }

    // Bit k of the packed frame (MSB first) to serial word sort[k], a byte at a time.
    void scatter_bits(const std::uint8_t* packed, const std::uint8_t* sort, int nbits) {
        Zep16s* serial = serial_.data();
        int k = 0;
        for (; k + 8 <= nbits; k += 8, sort += 8) {
            const unsigned b = packed[k >> 3];
            for (int j = 0; j < 8; j++) serial[sort[j]] = static_cast<Zep16s>((b >> (7 - j)) & 1);
        }
        const unsigned b = packed[k >> 3];
        for (int j = 0; k + j < nbits; j++) serial[sort[j]] = static_cast<Zep16s>((b >> (7 - j)) & 1);
    }

    // 3GPP test-sequence format: 250 words a frame.
    bool read_cod(ByteSource& in, int& mode, std::int32_t& rx) {
        std::uint8_t raw[500];
        const std::uint64_t at = in.position();
        if (!in.read_exact(raw, sizeof raw, "frame")) return false;
        auto word = [&](int i) { return static_cast<std::int16_t>(raw[2 * i] | (raw[2 * i + 1] << 8)); };
        // TX frame types 0..7 to the receiver's (tx_to_rx of the reference decoder).
        static constexpr std::int32_t kTxToRx[8] = {kSpeechGood, kSidFirst, kSidUpdate, kNoData,
                                                    kSpeechDegraded, kSpeechBad, kSidBad, kOnset};
        const std::int16_t tx = word(0);
        if (tx < 0 || tx > 7)
            throw CodecError("corrupt frame at byte " + std::to_string(at) + ": frame type " + std::to_string(tx));
        rx = kTxToRx[tx];
        for (int i = 0; i < kSerial; i++) {
            const std::int16_t b = word(1 + i);
            if (b != 0 && b != 1)
                throw CodecError("corrupt frame at byte " + std::to_string(at) + ": serial bit " + std::to_string(i) +
                                 " is " + std::to_string(b));
            serial_[static_cast<std::size_t>(i)] = b;
        }
        const std::int16_t m = word(1 + kSerial);
        if (rx != kNoData && (m < 0 || m > 7))
            throw CodecError("corrupt frame at byte " + std::to_string(at) + ": mode " + std::to_string(m));
        mode = rx == kNoData ? 0 : m;
        return true;
    }

    bool storage_;
    SpeechDecoder decoder_;
    std::array<Zep16s, kSerial> serial_{};
    int prev_mode_ = 0;
    bool homed_ = true;
};

// ---------------------------------------------------------------------------
// The encoder (the reference's Speech_Encode_Frame and cod_amr) from the
// public stages, one 20 ms frame at a time.

constexpr int kTotal = 320;    // L_TOTAL: speech buffer of the LP analysis
constexpr int kMp1 = kM + 1;
constexpr int kAnaMax = 57;
// Modes whose whole encoder is available.
constexpr bool kEncoderMode[8] = {true, true, true, true, true, true, true, true};
const char* const kModeName[8] = {"MR475", "MR515", "MR59", "MR67", "MR74", "MR795", "MR102", "MR122"};
const char* const kModeRate[8] = {"4.75", "5.15", "5.9", "6.7", "7.4", "7.95", "10.2", "12.2"};

class SpeechEncoder {
public:
    explicit SpeechEncoder(bool dtx) : dtx_(dtx) {
        Zep32s size = 0;
        check(zepsGainQuantGetStateSize_GSMAMR_16s(&size));
        gain_state_.assign(static_cast<std::size_t>(size), 0);
        check(zepsHighPassFilterSize_G729(&size));
        hp_state_.assign(static_cast<std::size_t>(size), 0);
        reset();
    }

    void reset() {
        static constexpr Zep16s kHp[6] = {1899, -3798, 1899, 4096, 7807, -3733};
        static constexpr Zep16s kLspInit[kM] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
        check(zepsHighPassFilterInit_G729(kHp, hp_state_.data()));
        check(zepsGainQuantInit_GSMAMR_16s(gain()));
        std::fill(std::begin(old_speech_), std::end(old_speech_), Zep16s{0});
        std::fill(std::begin(old_exc_), std::end(old_exc_), Zep16s{0});
        std::fill(std::begin(old_wsp_), std::end(old_wsp_), Zep16s{0});
        std::fill(std::begin(mem_syn_), std::end(mem_syn_), Zep16s{0});
        std::fill(std::begin(mem_w_), std::end(mem_w_), Zep16s{0});
        std::fill(std::begin(mem_w0_), std::end(mem_w0_), Zep16s{0});
        std::fill(std::begin(mem_err_), std::end(mem_err_), Zep16s{0});
        std::fill(std::begin(old_lags_), std::end(old_lags_), Zep16s{40});
        std::fill(std::begin(ol_gain_flg_), std::end(ol_gain_flg_), Zep16s{0});
        std::fill(std::begin(past_rq_), std::end(past_rq_), Zep16s{0});
        std::fill(std::begin(tone_), std::end(tone_), Zep16s{0});
        std::fill(std::begin(old_a_), std::end(old_a_), Zep16s{0});
        old_a_[0] = 4096;
        std::fill(std::begin(wght_), std::end(wght_), Zep16s{0});
        wght_[0] = 40;        // old_T0_med
        wght_[7] = 13106;     // best high-pass correlation (VAD option 1)
        zepsVAD1StateReset_GSMAMR(&vad_);
        dtx_hist_ptr_ = 0;
        for (int i = 0; i < kDtxHist; i++) std::copy(std::begin(kLspInit), std::end(kLspInit), lsp_hist_ + i * kM);
        std::fill(std::begin(log_en_hist_), std::end(log_en_hist_), Zep16s{0});
        std::fill(std::begin(sid_), std::end(sid_), Zep16s{0});
        dtx_hangover_ = 7;
        dtx_elapsed_ = 32767;
        std::copy(std::begin(kLspInit), std::end(kLspInit), lsp_old_);
        std::copy(std::begin(kLspInit), std::end(kLspInit), lsp_old_q_);
        sharp_ = 0;
        prev_lag_ = 0;
    }

    /// Codes one frame of 160 samples (changed in place: masked to 13 bits
    /// and high-pass filtered) in mode 0..7; writes the serial bits. Returns
    /// true when DTX made the frame a SID frame (the SID parameters' bits).
    bool encode(Zep16s* speech, int mode, Zep16s* serial) {
        const Zep32s rate = kRate[mode];
        for (int i = 0; i < kFrame; i++) speech[i] = static_cast<Zep16s>(speech[i] & 0xfff8);
        check(zepsHighPassFilter_G729_16s_ISfs(speech, kFrame, 12, hp_state_.data()));
        std::copy(speech, speech + kFrame, old_speech_ + kTotal - kFrame);
        const Zep16s* new_speech = old_speech_ + kTotal - kFrame;

        Zep16s sid_flag = 0;
        const bool sid = dtx_ && voice_activity(rate, sid_flag);
        Zep16s ana[kAnaMax] = {};
        Zep16s* a = ana;
        Zep16s A[4 * kMp1], Aq[4 * kMp1], lsp_new[kM];
        lp_analysis(mode, !sid, A, Aq, lsp_new, a);
        check(zepsEncDTXBuffer_GSMAMR_16s(new_speech, lsp_new, &dtx_hist_ptr_, lsp_hist_, log_en_hist_));
        Zep16s lsp_flag = 0;
        if (sid) sid_parameters(sid_flag, lsp_new, ana);
        else check(zepsCheckLSP_GSMAMR_16s(tone_, lsp_old_, &lsp_flag));

        Zep16s* sp = old_speech_ + kTotal - kFrame - kSubfr;  // the frame analysed, 40 samples behind
        Zep16s wsp[kFrame], t_op[2];
        if (dtx_)
            check(zepsOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(A, sp - kM, mem_w_, old_wsp_, old_lags_, ol_gain_flg_,
                                                            wght_, wsp, t_op, rate));
        else
            check(zepsOpenLoopPitchSearchNonDTX_GSMAMR_16s(A, sp - kM, mem_w_, old_wsp_, old_lags_, ol_gain_flg_,
                                                           wght_, wsp, t_op, rate));
        if (!sid) {
            for (int sf = 0; sf < 4; sf++) subframe(mode, sf, A + sf * kMp1, Aq + sf * kMp1, sp, t_op, lsp_flag, a);
            std::copy(old_exc_ + kFrame, old_exc_ + kFrame + kExcHist, old_exc_);
        }
        std::copy(old_speech_ + kFrame, old_speech_ + kTotal, old_speech_);
        check(zepsParamToBits_GSMAMR_16s(ana, serial, sid ? kRateSID : rate));
        return sid;
    }

private:
    ZepGainQuantState_GSMAMR* gain() { return reinterpret_cast<ZepGainQuantState_GSMAMR*>(gain_state_.data()); }

    static void check(ZepStatus s) {
        if (s != zepStsNoErr) throw CodecError("GSM-AMR encoder stage failed with status " + std::to_string(s));
    }

    /// VAD option 1 on the frame (with the 40 samples before it) and the
    /// DTX handler: true when the frame becomes a SID frame; sid_flag is set
    /// when new SID parameters may be computed.
    bool voice_activity(Zep32s rate, Zep16s& sid_flag) {
        Zep16s vad_flag = 0;
        vad_.pitch = wght_[4];
        check(zepsVAD1_GSMAMR_16s(old_speech_ + kTotal - kFrame - kSubfr, &vad_, &vad_flag, wght_[7], wght_[3]));
        wght_[4] = vad_.pitch;
        Zep16s used = static_cast<Zep16s>(rate);
        check(zepsEncDTXHandler_GSMAMR_16s(&dtx_hangover_, &dtx_elapsed_, &used, &sid_flag, vad_flag));
        return used == kRateSID;
    }

    /// dtx_enc and the resets of cod_amr in a SID frame: the SID parameters
    /// (which set the gain predictor to the comfort-noise energy), then the
    /// memories that speech coding restarts from.
    void sid_parameters(Zep16s sid_flag, const Zep16s* lsp_new, Zep16s* ana) {
        Zep16s qua_en[4], qua_en_122[4];
        check(zepsGainQuantGetPredictor_GSMAMR_16s(gain(), qua_en, qua_en_122));
        check(zepsEncDTXSID_GSMAMR_16s(lsp_hist_, log_en_hist_, sid_, past_rq_, qua_en, qua_en_122, sid_flag));
        check(zepsGainQuantSetPredictor_GSMAMR_16s(gain(), qua_en, qua_en_122));
        std::copy(std::begin(sid_), std::end(sid_), ana);
        std::fill(old_exc_, old_exc_ + kExcHist, Zep16s{0});
        std::fill(std::begin(mem_w0_), std::end(mem_w0_), Zep16s{0});
        std::fill(std::begin(mem_err_), std::end(mem_err_), Zep16s{0});
        std::fill(std::begin(past_rq_), std::end(past_rq_), Zep16s{0});
        std::copy(lsp_new, lsp_new + kM, lsp_old_);
        std::copy(lsp_new, lsp_new + kM, lsp_old_q_);
        prev_lag_ = 0;
        sharp_ = 0;
    }

    /// lpc() and lsp() of the reference: A(z) of the four subframes,
    /// unquantised and (when quantise) quantised, and the LSP indices.
    void lp_analysis(int mode, bool quantise, Zep16s* A, Zep16s* Aq, Zep16s* lsp_new, Zep16s*& a) {
        const Zep32s rate = kRate[mode];
        Zep32s r[kMp1];
        Zep16s rc[4];
        std::fill(A, A + 4 * kMp1, Zep16s{0});
        Zep16s lsp_new_q[kM] = {};
        if (mode == 7) {
            const Zep16s* w = old_speech_ + kTotal - 240 - kSubfr;
            Zep16s lsp[2 * kM], lsp_q[2 * kM] = {};
            check(zepsAutoCorr_GSMAMR_16s32s(w, r, 1));
            check(zepsLagWindow_G729_32s_I(r + 1, kM));
            check(zepsLevinsonDurbin_GSMAMR_32s16s(old_a_, r, A + kMp1, rc));
            check(zepsAutoCorr_GSMAMR_16s32s(w, r, 2));
            check(zepsLagWindow_G729_32s_I(r + 1, kM));
            check(zepsLevinsonDurbin_GSMAMR_32s16s(old_a_, r, A + 3 * kMp1, rc));
            check(zepsLPCToLSP_GSMAMR_16s(A + kMp1, lsp, lsp_old_));
            check(zepsLPCToLSP_GSMAMR_16s(A + 3 * kMp1, lsp + kM, lsp));
            check(zepsInterpolateLSPAnalysis_GSMAMR_16s_I(lsp_old_, lsp, lsp + kM, A, rate));
            if (quantise) {
                check(zepsLSPQuant_GSMAMR_16s(past_rq_, lsp, lsp_q, a, rate));
                check(zepsInterpolateLSP_GSMAMR_16s(lsp_old_q_, lsp_q, lsp_q + kM, Aq, rate));
                a += 5;
            }
            std::copy(lsp + kM, lsp + 2 * kM, lsp_new);
            std::copy(lsp_q + kM, lsp_q + 2 * kM, lsp_new_q);
        } else {
            check(zepsAutoCorr_GSMAMR_16s32s(old_speech_ + kTotal - 240, r, 0));
            check(zepsLagWindow_G729_32s_I(r + 1, kM));
            check(zepsLevinsonDurbin_GSMAMR_32s16s(old_a_, r, A + 3 * kMp1, rc));
            check(zepsLPCToLSP_GSMAMR_16s(A + 3 * kMp1, lsp_new, lsp_old_));
            check(zepsInterpolateLSPAnalysis_GSMAMR_16s_I(lsp_old_, lsp_new, lsp_new, A, rate));
            if (quantise) {
                check(zepsLSPQuant_GSMAMR_16s(past_rq_, lsp_new, lsp_new_q, a, rate));
                check(zepsInterpolateLSP_GSMAMR_16s(lsp_old_q_, lsp_new_q, lsp_new_q, Aq, rate));
                a += 3;
            }
        }
        std::copy(lsp_new, lsp_new + kM, lsp_old_);
        if (quantise) std::copy(lsp_new_q, lsp_new_q + kM, lsp_old_q_);
    }

    /// One subframe of cod_amr. At 4.75 kbit/s the even subframe is first
    /// coded with its unquantised gains on copies of the memories; the odd
    /// one quantises the gains of both, then both are coded again.
    void subframe(int mode, int sf, const Zep16s* A, const Zep16s* Aq, const Zep16s* sp, const Zep16s* t_op,
                  Zep16s lsp_flag, Zep16s*& a) {
        const Zep32s rate = kRate[mode];
        const bool even = (sf & 1) == 0, mr475 = mode == 0;
        const int at = sf * kSubfr;
        Zep16s* exc = old_exc_ + kExcHist + at;
        Zep16s res[kSubfr], res2[kSubfr], xn2[kSubfr], y1[kSubfr], y2[kSubfr];
        Zep16s code[kSubfr], pitch[4], g_coeff[4], synth[kSubfr];
        if (mr475 && even) {
            std::copy(mem_syn_, mem_syn_ + kM, sf0_.mem_syn);
            std::copy(mem_w0_, mem_w0_ + kM, sf0_.mem_w0);
            std::copy(mem_err_, mem_err_ + kM, sf0_.mem_err);
            sf0_.sharp = sharp_;
        }
        check(zepsTargetImpulseResponse_GSMAMR_16s(A, Aq, sp + at - kM, mem_err_, mr475 ? sf0_.mem_w0 : mem_w0_, exc,
                                                   h1_, xn_, res, rate));
        if (mr475 && even) std::copy(h1_, h1_ + kSubfr, sf0_.h1);
        std::copy(res, res + kSubfr, res2);
        check(zepsClosedLoopPitchSearch_GSMAMR_16s(&prev_lag_, tone_, t_op, h1_, exc - kExcHist, res2, xn_, lsp_flag,
                                                   xn2, y1, pitch, g_coeff, a, sf, rate));
        a += mode == 7 ? 2 : 1;
        const Zep16s t0 = pitch[0];
        if (sf == 0 && ol_gain_flg_[0] > 0) old_lags_[1] = t0;
        if (sf == 3 && ol_gain_flg_[1] > 0) old_lags_[0] = t0;
        check(zepsAlgebraicCodebookSearch_GSMAMR_16s(xn2, h1_, t0, sharp_, pitch[2], res2, code, y2, a, rate, sf));
        a += kCbParams[mode];
        Zep16s gains[4] = {pitch[2], 0, 0, 0};
        Zep16s* index = a;
        if (mr475 && !even) index = gain_slot_;
        check(zepsGainQuant_GSMAMR_16s(gain(), res, exc, code, xn_, xn2, y1, y2, g_coeff, gains, index,
                                       static_cast<Zep16s>(even ? 1 : 0), pitch[3], rate));
        if (mr475 && even) gain_slot_ = a;
        if (!mr475 || even) a += mode == 5 ? 2 : 1;
        check(zepsUpdateGpClipping_GSMAMR_16s(tone_, gains[0]));
        if (!mr475) {
            check(zepsEncoderSubframeUpdate_GSMAMR_16s(sp + at, Aq, xn_, code, y1, y2, gains[0], gains[1], mem_syn_,
                                                       mem_err_, mem_w0_, exc, synth, &sharp_, rate));
        } else if (even) {
            sf0_.at = at;
            std::copy(xn_, xn_ + kSubfr, sf0_.xn);
            std::copy(y2, y2 + kSubfr, sf0_.y2);
            std::copy(code, code + kSubfr, sf0_.code);
            sf0_.t0 = t0;
            sf0_.frac = pitch[1];
            Zep16s err[kM];
            check(zepsEncoderSubframeUpdate_GSMAMR_16s(sp + at, Aq, xn_, code, y1, y2, gains[0], gains[1], sf0_.mem_syn,
                                                       err, sf0_.mem_w0, exc, synth, &sharp_, rate));
            std::copy(err, err + kM, mem_err_);
            sharp_ = sf0_.sharp;
        } else {
            // The pair's first subframe again with its quantised gains, then this one.
            std::copy(sf0_.mem_err, sf0_.mem_err + kM, mem_err_);
            Zep16s* exc0 = old_exc_ + kExcHist + sf0_.at;
            check(zepsAdaptiveCodebookDecode_GSMAMR_16s(exc0 - kExcHist, sf0_.t0, sf0_.frac, rate));
            check(zepsConvolve_GSMAMR_16s(exc0, sf0_.h1, y1, kSubfr));
            check(zepsEncoderSubframeUpdate_GSMAMR_16s(sp + sf0_.at, Aq - kMp1, sf0_.xn, sf0_.code, y1, sf0_.y2,
                                                       gains[2], gains[3], mem_syn_, mem_err_, mem_w0_, exc0, synth,
                                                       &sf0_.sharp, rate));
            check(zepsTargetImpulseResponse_GSMAMR_16s(A, Aq, sp + at - kM, mem_err_, mem_w0_, exc, h1_, xn_, res,
                                                       rate));
            check(zepsAdaptiveCodebookDecode_GSMAMR_16s(exc - kExcHist, t0, pitch[1], rate));
            check(zepsConvolve_GSMAMR_16s(exc, h1_, y1, kSubfr));
            check(zepsEncoderSubframeUpdate_GSMAMR_16s(sp + at, Aq, xn_, code, y1, y2, gains[0], gains[1], mem_syn_,
                                                       mem_err_, mem_w0_, exc, synth, &sharp_, rate));
        }
    }

    /// What the 4.75 kbit/s pair keeps of its first subframe.
    struct PairStart {
        Zep16s mem_syn[kM], mem_w0[kM], mem_err[kM], sharp;
        Zep16s h1[kSubfr], xn[kSubfr], y2[kSubfr], code[kSubfr];
        Zep16s t0, frac;
        int at;
    };
    PairStart sf0_{};
    Zep16s* gain_slot_ = nullptr;
    Zep16s h1_[kSubfr]{}, xn_[kSubfr]{};

    // Index words of the codebook search per mode.
    static constexpr int kCbParams[8] = {2, 2, 2, 2, 2, 2, 7, 10};

    std::vector<std::uint8_t> gain_state_, hp_state_;
    Zep16s old_speech_[kTotal]{};
    Zep16s old_exc_[kExcHist + kFrame]{};
    Zep16s old_wsp_[kPitMax]{};
    Zep16s mem_syn_[kM]{}, mem_w_[kM]{}, mem_w0_[kM]{}, mem_err_[kM]{};
    Zep16s old_lags_[5]{}, ol_gain_flg_[2]{};
    // Pitch_ol_wgh state, then the VAD option 1 registers of the open-loop search.
    Zep16s wght_[8]{};
    Zep16s past_rq_[kM]{}, tone_[8]{}, old_a_[kMp1]{};
    Zep16s lsp_old_[kM]{}, lsp_old_q_[kM]{};
    Zep16s sharp_ = 0, prev_lag_ = 0;

    // Discontinuous transmission: VAD option 1 and the DTX encoder (dtx_encState).
    static constexpr int kDtxHist = 8;
    bool dtx_;
    ZepVAD1State_GSMAMR vad_{};
    Zep16s dtx_hist_ptr_ = 0, lsp_hist_[kDtxHist * kM]{}, log_en_hist_[kDtxHist]{};
    Zep16s sid_[5]{};  // init_lsf_vq_index, lsp_index[3], log_en_index
    Zep16s dtx_hangover_ = 7, dtx_elapsed_ = 32767;
};

/// Mode number 0..7 of a mode name as the 3GPP mode files write it ("MR122").
int mode_of_name(const std::string& name) {
    for (int m = 0; m < 8; m++)
        if (name == kModeName[m]) return m;
    return -1;
}

// The frame loop of the reference encoder program over one bitstream format.
class AmrEncoder : public zepsc_cli::FrameEncoder {
public:
    AmrEncoder(bool storage, int mode, std::vector<int> modes, bool dtx)
        : storage_(storage), mode_(mode), modes_(std::move(modes)), encoder_(dtx) {}
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return kFrame; }
    void begin(std::vector<std::uint8_t>& out) override {
        if (storage_) out.insert(out.end(), {'#', '!', 'A', 'M', 'R', '\n'});
    }
    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        int mode = mode_;
        if (!modes_.empty()) {
            if (frame_ >= modes_.size()) throw CodecError("the mode file has fewer modes than the input has frames");
            mode = modes_[frame_];
        }
        frame_++;
        Zep16s speech[kFrame];
        bool homing = true;
        for (int i = 0; i < kFrame; i++) {
            speech[i] = pcm[i];
            homing = homing && pcm[i] == 0x0008;
        }
        std::array<Zep16s, kSerial> serial{};
        const Tx tx = sid_sync(encoder_.encode(speech, mode, serial.data()));
        if (storage_) write_storage(mode, tx, serial.data(), out);
        else write_cod(mode, tx, serial.data(), out);
        if (homing) {
            encoder_.reset();
            sid_sync_reset();
        }
    }

private:
    // TX frame types of the 3GPP test-sequence format.
    enum Tx : int { kTxSpeech = 0, kTxSidFirst, kTxSidUpdate, kTxNoData };

    /// sid_sync of the reference: which DTX frames are sent as SID_FIRST or
    /// SID_UPDATE (every 8th frame) and which are not sent (NO_DATA).
    Tx sid_sync(bool sid) {
        Tx tx = kTxSpeech;
        if (!sid) {
            sid_update_counter_ = 8;
        } else {
            sid_update_counter_--;
            if (prev_tx_ == kTxSpeech) {
                tx = kTxSidFirst;
                sid_update_counter_ = 3;
            } else if (sid_update_counter_ == 0) {
                tx = kTxSidUpdate;
                sid_update_counter_ = 8;
            } else {
                tx = kTxNoData;
            }
        }
        prev_tx_ = tx;
        return tx;
    }
    void sid_sync_reset() {
        sid_update_counter_ = 3;
        prev_tx_ = kTxSpeech;
    }

    /// One storage frame: a SID frame is its 35 parameter bits, the STI bit
    /// (1 for SID_UPDATE) and the requested mode in bits 36..38, most
    /// significant bit first as the reference's MMS_IO packing writes it and
    /// its unpacking (and this decoder) reads it.
    static void write_storage(int mode, Tx tx, const Zep16s* serial, std::vector<std::uint8_t>& out) {
        if (tx == kTxNoData) {
            out.push_back(15 << 3 | 4);
            return;
        }
        const int ft = tx == kTxSpeech ? mode : 8;
        out.push_back(static_cast<std::uint8_t>(ft << 3 | 4));
        std::uint8_t packed[32] = {};
        auto set = [&](int k) { packed[k >> 3] = static_cast<std::uint8_t>(packed[k >> 3] | 0x80 >> (k & 7)); };
        const std::uint8_t* sort = kSort[ft];
        for (int k = 0; k < kBits[ft]; k++)
            if (serial[sort[k]] != 0) set(k);
        if (ft == 8) {
            if (tx == kTxSidUpdate) set(35);
            for (int i = 0; i < 3; i++)
                if ((mode >> (2 - i) & 1) != 0) set(36 + i);
        }
        out.insert(out.end(), packed, packed + kBytes[ft]);
    }
    /// One test-sequence frame: the frame type, the serial bits (the SID
    /// parameters in DTX frames, also those not sent), the mode (-1 for NO_DATA).
    static void write_cod(int mode, Tx tx, const Zep16s* serial, std::vector<std::uint8_t>& out) {
        auto put = [&](int v) {
            out.push_back(static_cast<std::uint8_t>(v & 0xff));
            out.push_back(static_cast<std::uint8_t>((v >> 8) & 0xff));
        };
        put(tx);
        for (int i = 0; i < kSerial; i++) put(serial[i]);
        put(tx == kTxNoData ? -1 : mode);
        for (int i = 0; i < 4; i++) put(0);
    }

    bool storage_;
    int mode_;
    std::vector<int> modes_;
    std::size_t frame_ = 0;
    SpeechEncoder encoder_;
    int sid_update_counter_ = 3;
    Tx prev_tx_ = kTxSpeech;
};

/// The encoder's mode per frame from --mode or --modefile; an unavailable mode is refused.
std::unique_ptr<zepsc_cli::FrameEncoder> make_encoder(const zepsc_cli::CodecOptions& options, const std::string& format) {
    auto refuse = [](int m) {
        if (!kEncoderMode[m])
            throw CodecError(std::string("GSM-AMR encoder: mode ") + kModeRate[m] + " is not available yet");
    };
    std::vector<int> modes;
    if (options.has("modefile")) {
        const std::string path = options.get("modefile");
        std::FILE* f = std::fopen(path.c_str(), "rb");
        if (f == nullptr) throw CodecError("cannot open the mode file " + path);
        std::string text;
        char buf[4096];
        for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;) text.append(buf, n);
        std::fclose(f);
        std::size_t at = 0;
        while (at < text.size()) {
            const std::size_t begin = text.find_first_not_of(" \t\r\n", at);
            if (begin == std::string::npos) break;
            const std::size_t end = std::min(text.find_first_of(" \t\r\n", begin), text.size());
            const std::string name = text.substr(begin, end - begin);
            const int m = mode_of_name(name);
            if (m < 0) throw CodecError("mode file " + path + ": unknown mode \"" + name + "\"");
            refuse(m);
            modes.push_back(m);
            at = end;
        }
    }
    const std::string rate = options.get("mode", "12.2");
    int mode = 7;
    for (int m = 0; m < 8; m++)
        if (rate == kModeRate[m]) mode = m;
    if (modes.empty()) refuse(mode);
    return std::make_unique<AmrEncoder>(format == "amr", mode, std::move(modes), options.has("dtx"));
}

zepsc_cli::CodecSpec make_spec() {
    zepsc_cli::CodecSpec spec;
    spec.name = "amr";
    spec.summary = "GSM-AMR narrow-band speech codec, 4.75 to 12.2 kbit/s with DTX (3GPP TS 26.071)";
    spec.help =
        "Bitstream formats: .amr = RFC 4867 storage format (\"#!AMR\\n\", one ToC byte a frame,\n"
        "SID and NO_DATA frames included); .cod = the 3GPP test-sequence format (250 16-bit words a frame).\n"
        "The decoder takes the mode of each frame from the bitstream.";
    spec.options = {
        {"mode", "encoder mode in kbit/s", {"4.75", "5.15", "5.9", "6.7", "7.4", "7.95", "10.2", "12.2"}, "12.2", false},
        {"dtx", "encoder: discontinuous transmission (VAD option 1)", {}, "", true},
        {"modefile", "encoder: file with one mode a frame (as the 3GPP check sequence)", {}, "", false},
    };
    spec.formats = {"amr", "cod"};
    spec.pad_last_frame = false;
    spec.make_encoder = make_encoder;
    spec.make_decoder = [](const zepsc_cli::CodecOptions&, const std::string& format) -> std::unique_ptr<zepsc_cli::FrameDecoder> {
        return std::make_unique<AmrDecoder>(format == "amr");
    };
    return spec;
}

const zepsc_cli::CodecRegistration registration{make_spec()};

}  // namespace

// GSM full rate (ETSI GSM 06.10, 13 kbit/s RPE-LTP), assembled from the
// library's GSMFR stages: `zepsc gsmfr encode|decode IN OUT`.
//
// Bitstream formats:
//   gsm  33 bytes a frame, the RTP "GSM" payload layout (RFC 3551 4.5.8):
//        the signature nibble 0xD, then the 260 parameter bits MSB first:
//        LARc[0..7] (6,6,5,5,4,4,3,3 bits), then 4 sub-frames of Nc (7),
//        bc (2), Mc (2), xmaxc (6) and 13 xMc (3).
//   cod  the ETSI test-sequence format: 76 little-endian 16-bit words a
//        frame, one parameter a word, in the same order.
#include <array>
#include <cstring>
#include <string>

#include "tools/codec.h"
#include "zepsc.h"

namespace zepsc_cli {
namespace {

constexpr std::size_t kFrame = 160;
constexpr std::size_t kGsmBytes = 33;
constexpr std::size_t kCodWords = 76;

/// The 76 parameters of a frame in bitstream order, with their widths.
using Params = std::array<Zep16s, kCodWords>;

constexpr int kLarBits[8] = {6, 6, 5, 5, 4, 4, 3, 3};

constexpr int param_bits(std::size_t i) {
    if (i < 8) return kLarBits[i];
    const std::size_t j = (i - 8) % 17;
    return j == 0 ? 7 : j == 1 ? 2 : j == 2 ? 2 : j == 3 ? 6 : 3;
}

void check(ZepStatus st, const char* stage) {
    if (st != zepStsNoErr) throw CodecError(std::string("gsmfr: ") + stage + " failed with status " + std::to_string(st));
}

/// A state block of the size its query reports.
template <class S>
struct Block {
    std::vector<unsigned char> bytes;
    S* get() { return reinterpret_cast<S*>(bytes.data()); }
    template <class Size, class Init>
    Block(Size size, Init init) {
        Zep32s n = 0;
        size(&n);
        bytes.resize(static_cast<std::size_t>(n));
        init(get());
    }
};

Zep16s add_sat(Zep16s a, Zep16s b) {
    const int s = a + b;
    return static_cast<Zep16s>(s > 32767 ? 32767 : s < -32768 ? -32768 : s);
}

class Encoder final : public FrameEncoder {
public:
    explicit Encoder(bool cod) : cod_(cod) {}
    int sample_rate() const override { return 8000; }
    std::size_t frame_samples() const override { return kFrame; }

    void encode(const std::int16_t* pcm, std::vector<std::uint8_t>& out) override {
        Params p{};
        Zep16s s[kFrame];
        check(zepsPreprocess_GSMFR_16s(pre_.get(), pcm, s), "preprocessing");
        check(zepsLPCAnalysis_GSMFR_16s_I(s, p.data()), "LPC analysis");
        check(zepsShortTermAnalysisFilter_GSMFR_16s_I(stf_.get(), p.data(), s), "short-term analysis");
        for (int k = 0; k < 4; ++k) {
            Zep16s* q = p.data() + 8 + 17 * k;
            Zep16s e[40], dpp[40], ep[40];
            Zep16s* dp = dp_ + 120 + 40 * k;
            check(zepsLongTermPredict_GSMFR_16s(s + 40 * k, dp - 120, e, dpp, &q[0], &q[1]), "long-term prediction");
            check(zepsRPEEncode_GSMFR_16s(e, &q[3], &q[2], &q[4], ep), "RPE encoding");
            for (int i = 0; i < 40; ++i) dp[i] = add_sat(ep[i], dpp[i]);
        }
        std::memmove(dp_, dp_ + 160, 120 * sizeof(Zep16s));
        cod_ ? write_cod(p, out) : write_gsm(p, out);
    }

private:
    static void write_cod(const Params& p, std::vector<std::uint8_t>& out) {
        for (Zep16s w : p) {
            out.push_back(static_cast<std::uint8_t>(w & 0xFF));
            out.push_back(static_cast<std::uint8_t>((w >> 8) & 0xFF));
        }
    }
    static void write_gsm(const Params& p, std::vector<std::uint8_t>& out) {
        std::uint8_t frame[kGsmBytes] = {};
        unsigned at = 0;  // bit position, MSB first
        auto put = [&](unsigned v, int bits) {
            for (int b = bits - 1; b >= 0; --b, ++at)
                if ((v >> b) & 1u) frame[at >> 3] = static_cast<std::uint8_t>(frame[at >> 3] | (0x80u >> (at & 7)));
        };
        put(0xD, 4);
        for (std::size_t i = 0; i < kCodWords; ++i) put(static_cast<unsigned>(p[i]), param_bits(i));
        out.insert(out.end(), frame, frame + kGsmBytes);
    }

    bool cod_;
    Block<ZepGSMFRPreprocessState> pre_{zepsPreprocessGetStateSize_GSMFR_16s, zepsPreprocessInit_GSMFR_16s};
    Block<ZepGSMFRShortTermAnalysisState> stf_{zepsShortTermAnalysisFilterGetStateSize_GSMFR_16s,
                                               zepsShortTermAnalysisFilterInit_GSMFR_16s};
    Zep16s dp_[280] = {};  // reconstructed short-term residual: 120 of history, then the frame
};

class Decoder final : public FrameDecoder {
public:
    explicit Decoder(bool cod) : cod_(cod) {}
    int sample_rate() const override { return 8000; }
    std::size_t max_frame_samples() const override { return kFrame; }

    std::size_t decode(ByteSource& in, std::int16_t* pcm) override {
        Params p{};
        if (!(cod_ ? read_cod(in, p) : read_gsm(in, p))) return 0;
        Zep16s wt[kFrame];
        for (int k = 0; k < 4; ++k) {
            const Zep16s* q = p.data() + 8 + 17 * k;
            Zep16s erp[40];
            check(zepsRPEDecode_GSMFR_16s(q[3], q[2], &q[4], erp), "RPE decoding");
            check(zepsLongTermSynthesisFilter_GSMFR_16s(lts_.get(), q[0], q[1], erp, wt + 40 * k),
                  "long-term synthesis");
        }
        check(zepsShortTermSynthesisFilter_GSMFR_16s(sts_.get(), p.data(), wt, wt), "short-term synthesis");
        check(zepsPostprocess_GSMFR_16s(post_.get(), wt, pcm), "postprocessing");
        return kFrame;
    }

private:
    static bool read_gsm(ByteSource& in, Params& p) {
        std::uint8_t frame[kGsmBytes];
        const std::uint64_t at_byte = in.position();
        if (!in.read_exact(frame, kGsmBytes, "33-byte frame")) return false;
        if ((frame[0] >> 4) != 0xD)
            throw CodecError("corrupt frame at byte " + std::to_string(at_byte) + ": signature nibble " +
                             std::to_string(frame[0] >> 4) + ", not 13 (0xD)");
        // MSB-first bit reader: a 64-bit window refilled a byte at a time.
        std::uint64_t acc = frame[0] & 0x0Fu;
        int have = 4;
        std::size_t next = 1;
        for (std::size_t i = 0; i < kCodWords; ++i) {
            const int n = param_bits(i);
            while (have < n) {
                acc = acc << 8 | frame[next++];
                have += 8;
            }
            have -= n;
            p[i] = static_cast<Zep16s>((acc >> have) & ((1u << n) - 1));
        }
        return true;
    }
    static bool read_cod(ByteSource& in, Params& p) {
        std::uint8_t raw[2 * kCodWords];
        const std::uint64_t at_byte = in.position();
        if (!in.read_exact(raw, sizeof raw, "76-word frame")) return false;
        for (std::size_t i = 0; i < kCodWords; ++i) {
            p[i] = static_cast<Zep16s>(raw[2 * i] | raw[2 * i + 1] << 8);
            if (p[i] < 0 || p[i] >= (1 << param_bits(i)))
                throw CodecError("corrupt frame at byte " + std::to_string(at_byte) + ": parameter " +
                                 std::to_string(i) + " is " + std::to_string(p[i]) + ", outside its " +
                                 std::to_string(param_bits(i)) + "-bit range");
        }
        return true;
    }

    bool cod_;
    Block<ZepGSMFRLongTermSynthesisState> lts_{zepsLongTermSynthesisFilterGetStateSize_GSMFR_16s,
                                               zepsLongTermSynthesisFilterInit_GSMFR_16s};
    Block<ZepGSMFRShortTermSynthesisState> sts_{zepsShortTermSynthesisFilterGetStateSize_GSMFR_16s,
                                                zepsShortTermSynthesisFilterInit_GSMFR_16s};
    Block<ZepGSMFRPostprocessState> post_{zepsPostprocessGetStateSize_GSMFR_16s, zepsPostprocessInit_GSMFR_16s};
};

CodecSpec make_spec() {
    CodecSpec s;
    s.name = "gsmfr";
    s.summary = "GSM full rate (GSM 06.10, 13 kbit/s RPE-LTP) encoder and decoder";
    s.help =
        "Formats: .gsm = 33-byte frames (the RTP GSM payload layout, signature nibble 0xD, as libgsm writes "
        "them); .cod = the ETSI test-sequence format, 76 little-endian 16-bit words a frame. The encoder uses "
        "the 13 most significant bits of each input sample; decoded samples have their 3 low bits 0. A final "
        "partial frame of input is dropped.";
    s.formats = {"gsm", "cod"};
    s.pad_last_frame = false;
    s.make_encoder = [](const CodecOptions&, const std::string& format) -> std::unique_ptr<FrameEncoder> {
        return std::make_unique<Encoder>(format == "cod");
    };
    s.make_decoder = [](const CodecOptions&, const std::string& format) -> std::unique_ptr<FrameDecoder> {
        return std::make_unique<Decoder>(format == "cod");
    };
    return s;
}

const CodecRegistration registration{make_spec()};

}  // namespace
}  // namespace zepsc_cli

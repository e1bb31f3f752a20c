// zepsc g726 encode|decode: G.726 ADPCM between WAV files and code files.
#include <cstdio>
#include <fstream>
#include <iterator>

#include "tools/cli.h"
#include "tools/pipelines.h"

#include <sndfile.h>

namespace zepsc_cli {

namespace {

constexpr const char* kHelp =
    "usage: zepsc g726 encode IN.wav OUT.g726 [--rate 16|24|32|40] [--packed]\n"
    "       zepsc g726 decode IN.g726 OUT.wav [--rate 16|24|32|40] [--law linear|mulaw|alaw] [--packed]\n"
    "\n"
    "ITU-T G.726 ADPCM at 16, 24, 32 or 40 kbit/s (default 32).\n"
    "encode: mono 8 kHz 16-bit WAV in; the 16-bit samples are shifted right by 2 to\n"
    "        the coder's 14-bit input. Codes out, one per byte, or packed with\n"
    "        --packed (RFC 3551: first code in the least significant bits).\n"
    "decode: codes in; --law linear (default) writes 16-bit PCM (the 14-bit output\n"
    "        shifted left by 2); mulaw/alaw write the G.711 bytes of the decoder's\n"
    "        synchronous coding adjustment as a G.711 WAV.\n";

int rate_code(const std::string& kbps) {
    if (kbps == "16") return zepRateG726_16;
    if (kbps == "24") return zepRateG726_24;
    if (kbps == "32") return zepRateG726_32;
    if (kbps == "40") return zepRateG726_40;
    return -1;
}

int bits_of(int rate) { return rate == zepRateG726_16 ? 2 : rate == zepRateG726_24 ? 3 : rate == zepRateG726_32 ? 4 : 5; }

std::vector<Zep8u> pack(const std::vector<Zep8u>& codes, int bits) {
    std::vector<Zep8u> out;
    unsigned acc = 0;
    int have = 0;
    for (Zep8u c : codes) {
        acc |= static_cast<unsigned>(c & ((1u << bits) - 1)) << have;
        have += bits;
        while (have >= 8) {
            out.push_back(static_cast<Zep8u>(acc & 0xff));
            acc >>= 8;
            have -= 8;
        }
    }
    if (have > 0) out.push_back(static_cast<Zep8u>(acc & 0xff));
    return out;
}

std::vector<Zep8u> unpack(const std::vector<Zep8u>& bytes, int bits) {
    std::vector<Zep8u> out;
    unsigned acc = 0;
    int have = 0;
    for (Zep8u b : bytes) {
        acc |= static_cast<unsigned>(b) << have;
        have += 8;
        while (have >= bits) {
            out.push_back(static_cast<Zep8u>(acc & ((1u << bits) - 1)));
            acc >>= bits;
            have -= bits;
        }
    }
    return out;
}

int encode(const Args& args, int rate) {
    Audio audio;
    std::string error;
    if (!read_audio(args.positional()[1], audio, error)) return fail(error);
    const long n = static_cast<long>(audio.samples.size());
    Zep32s size = 0;
    zepsEncodeGetStateSize_G726_16s8u(&size);
    std::vector<Zep8u> state(static_cast<std::size_t>(size)), codes(audio.samples.size());
    auto* st = reinterpret_cast<ZepG726EncodeState*>(state.data());
    zepsEncodeInit_G726_16s8u(st, rate);
    Progress progress("encoding", n);
    for (long i = 0; i < n; i += 8000) {
        const long len = std::min(8000L, n - i);
        std::vector<Zep16s> in(audio.samples.begin() + i, audio.samples.begin() + i + len);
        for (Zep16s& s : in) s = static_cast<Zep16s>(s >> 2);
        const ZepStatus s = zepsEncode_G726_16s8u(st, in.data(), codes.data() + i, static_cast<Zep32s>(len));
        if (s != zepStsNoErr) return fail(std::string("encoder: ") + status_name(s));
        progress.update(i + len);
    }
    const std::vector<Zep8u> out = args.has("--packed") ? pack(codes, bits_of(rate)) : codes;
    std::ofstream f(args.positional()[2], std::ios::binary);
    if (!f.write(reinterpret_cast<const char*>(out.data()), static_cast<std::streamsize>(out.size())))
        return fail("cannot write '" + args.positional()[2] + "'");
    std::fprintf(stderr, "%ld samples -> %zu bytes\n", n, out.size());
    return 0;
}

int decode(const Args& args, int rate) {
    const std::string law_name = args.get("--law", "linear");
    const int law = law_name == "mulaw" ? 0 : law_name == "alaw" ? 1 : law_name == "linear" ? 2 : -1;
    if (law < 0) return fail("--law takes linear, mulaw or alaw, not '" + law_name + "'");
    std::ifstream f(args.positional()[1], std::ios::binary);
    if (!f) return fail("cannot read '" + args.positional()[1] + "'");
    std::vector<Zep8u> bytes((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    const std::vector<Zep8u> codes = args.has("--packed") ? unpack(bytes, bits_of(rate)) : bytes;
    if (codes.empty()) return fail("'" + args.positional()[1] + "' holds no codes");
    Zep32s size = 0;
    zepsDecodeGetStateSize_G726_8u16s(&size);
    std::vector<Zep8u> state(static_cast<std::size_t>(size));
    auto* st = reinterpret_cast<ZepG726DecodeState*>(state.data());
    zepsDecodeInit_G726_8u16s(st, rate, law);
    std::vector<Zep16s> out(codes.size());
    const ZepStatus s = zepsDecode_G726_8u16s(st, codes.data(), out.data(), static_cast<Zep32s>(codes.size()));
    if (s != zepStsNoErr) return fail(std::string("decoder: ") + status_name(s));
    std::string error;
    if (law == 2) {
        for (Zep16s& v : out) v = static_cast<Zep16s>(v * 4);
        if (!write_audio(args.positional()[2], out, error)) return fail(error);
    } else {
        SF_INFO info{};
        info.samplerate = 8000;
        info.channels = 1;
        info.format = SF_FORMAT_WAV | (law == 0 ? SF_FORMAT_ULAW : SF_FORMAT_ALAW);
        SNDFILE* wf = sf_open(args.positional()[2].c_str(), SFM_WRITE, &info);
        if (wf == nullptr) return fail("cannot write '" + args.positional()[2] + "'");
        std::vector<unsigned char> g711(out.begin(), out.end());
        const bool ok = sf_write_raw(wf, g711.data(), static_cast<sf_count_t>(g711.size())) ==
                        static_cast<sf_count_t>(g711.size());
        sf_close(wf);
        if (!ok) return fail("writing '" + args.positional()[2] + "' failed");
    }
    std::fprintf(stderr, "%zu codes -> %zu samples (%s)\n", codes.size(), out.size(), law_name.c_str());
    return 0;
}

}  // namespace

int cmd_g726(int argc, char** argv) {
    Args args;
    std::string error;
    if (!args.parse(argc, argv, {"--help", "--packed"}, {"--rate", "--law"}, error)) return fail(error + "\n" + kHelp);
    if (args.has("--help")) {
        std::printf("%s", kHelp);
        return 0;
    }
    const auto& pos = args.positional();
    if (pos.size() != 3 || (pos[0] != "encode" && pos[0] != "decode")) return fail(std::string("bad arguments\n") + kHelp);
    const int rate = rate_code(args.get("--rate", "32"));
    if (rate < 0) return fail("--rate takes 16, 24, 32 or 40, not '" + args.get("--rate") + "'");
    if (pos[0] == "encode") {
        if (args.has("--law")) return fail("--law applies to decode only");
        return encode(args, rate);
    }
    return decode(args, rate);
}

}  // namespace zepsc_cli

// zepsc <codec> encode|decode [options] IN OUT: one command a registered
// codec (tools/codecs/), its options and --help generated from its CodecSpec.
//
// encode: PCM in (WAV, or raw 16-bit little-endian for any other extension),
//         streamed block by block through the codec's frame loop.
// decode: bitstream in, PCM out (WAV or raw likewise).
// The bitstream format comes from the bitstream file's extension (any case:
// the ITU sequences are named like ALGTHM.BIT), else --format, else the
// codec's first. Outputs appear only when complete (tools/io.h).
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "tools/cli.h"
#include "tools/codec.h"
#include "tools/io.h"

namespace zepsc_cli {

namespace {

// Samples (or bytes) read at a time: bounded, whatever the input's length.
constexpr std::size_t kBlock = 1 << 15;

struct CodecArgs {
    std::string in, out, format;
    std::map<std::string, std::string> values;
    std::map<std::string, bool> flags;
};

CodecOptions options_given(const CodecSpec& spec, const CodecArgs& a, CLI::App* cmd) {
    CodecOptions o;
    for (const OptionSpec& s : spec.options) {
        const CLI::Option* opt = cmd->get_option_no_throw("--" + s.name);
        if (opt == nullptr || opt->count() == 0) continue;
        o.values[s.name] = s.flag ? "" : a.values.at(s.name);
    }
    return o;
}

void run_encode(const CodecSpec& spec, const CodecArgs& a, const CodecOptions& o) {
    const std::string format = pick_format(spec, a.out, a.format);
    EncodeLoop loop(spec, o, format);
    PcmReader in(a.in);
    const int rate = loop.encoder().sample_rate();
    in.require(rate);
    OutputFile out(a.out);
    Progress progress("encoding", in.length(), in.length() > static_cast<long long>(kProgressSeconds) * rate);
    std::vector<std::int16_t> block(kBlock);
    std::vector<std::uint8_t> bytes;
    std::uint64_t samples = 0, written = 0;
    while (const std::size_t got = in.read(block.data(), block.size())) {
        bytes.clear();
        loop.feed(block.data(), got, bytes);
        out.write(bytes.data(), bytes.size());
        samples += got;
        written += bytes.size();
        progress.update(static_cast<long long>(samples));
    }
    bytes.clear();
    loop.finish(bytes);
    out.write(bytes.data(), bytes.size());
    written += bytes.size();
    out.commit();
    std::fprintf(stderr, "%llu samples -> %llu bytes (%s)\n", static_cast<unsigned long long>(samples),
                 static_cast<unsigned long long>(written), format.c_str());
}

void run_decode(const CodecSpec& spec, const CodecArgs& a, const CodecOptions& o) {
    const std::string format = pick_format(spec, a.in, a.format);
    FileSource src(a.in);
    DecodeLoop loop(spec, o, format, src);
    const int rate = loop.decoder().sample_rate();
    PcmWriter out(a.out, rate, loop.decoder().output());
    Progress progress("decoding", src.size(), false);
    std::uint64_t samples = 0;
    const std::int16_t* pcm = nullptr;
    while (const std::size_t k = loop.next(&pcm)) {
        out.write(pcm, k);
        if (samples == 0 && src.position() > 0)  // seconds of audio the whole input holds, from its first frame
            progress.enable(static_cast<double>(src.size()) / static_cast<double>(src.position()) * static_cast<double>(k) >
                            kProgressSeconds * rate);
        samples += k;
        progress.update(static_cast<long long>(src.position()));
    }
    out.commit();
    std::fprintf(stderr, "%llu bytes -> %llu samples (%s)\n", static_cast<unsigned long long>(src.position()),
                 static_cast<unsigned long long>(samples), format.c_str());
}

std::string list_of(const std::vector<std::string>& v, const char* sep) {
    std::string s;
    for (const std::string& x : v) s += (s.empty() ? "" : sep) + x;
    return s;
}

void add_direction(CLI::App& codec_cmd, const CodecSpec& spec, bool encode) {
    auto args = std::make_shared<CodecArgs>();
    CLI::App* cmd = codec_cmd.add_subcommand(encode ? "encode" : "decode",
                                             encode ? "PCM (WAV or raw 16-bit) to bitstream" : "bitstream to PCM (WAV or raw 16-bit)");
    cmd->add_option("IN", args->in, encode ? "PCM input: .wav, or raw 16-bit little-endian" : "bitstream input")->required();
    cmd->add_option("OUT", args->out, encode ? "bitstream output" : "PCM output: .wav, or raw 16-bit little-endian")->required();
    for (const OptionSpec& s : spec.options) {
        if (s.side == (encode ? OptionSpec::Side::Decode : OptionSpec::Side::Encode)) continue;
        const std::string name = "--" + s.name;
        if (s.flag) {
            cmd->add_flag(name, s.help);
            continue;
        }
        std::string help = s.help;
        if (!s.default_value.empty()) help += " (default " + s.default_value + ")";
        CLI::Option* opt = cmd->add_option(name, args->values[s.name], help);
        if (!s.choices.empty()) opt->check(CLI::Validator(one_of(s.choices), list_of(s.choices, "|")));
    }
    cmd->add_option("--format", args->format,
                    "bitstream format when the file's extension names none (default " + spec.formats.front() + ")")
        ->check(CLI::Validator(one_of(spec.formats), list_of(spec.formats, "|")));
    cmd->footer(spec.help);
    const CodecSpec* codec = &spec;
    cmd->callback([codec, args, cmd, encode] {
        const CodecOptions o = options_given(*codec, *args, cmd);
        if (encode)
            run_encode(*codec, *args, o);
        else
            run_decode(*codec, *args, o);
    });
}

}  // namespace

void add_codec_commands(CLI::App& app) {
    for (const CodecSpec& spec : codec_registry()) {
        CLI::App* cmd = app.add_subcommand(spec.name, spec.summary);
        cmd->require_subcommand(1);
        cmd->footer("Bitstream formats: " + list_of(spec.formats, ", ") + " (by the file's extension, any case, or --format).\n" +
                    "zepsc " + spec.name + " encode --help and zepsc " + spec.name + " decode --help list the options.");
        add_direction(*cmd, spec, true);
        add_direction(*cmd, spec, false);
    }
}

}  // namespace zepsc_cli

// zepsc: the library's command-line tool, a client of the public API only.
// The command line is CLI11's; every failure ends as one line on stderr and
// a non-zero exit status (1 for a bad input or option, 2 for an unknown
// command), never as an escaped exception.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

#include "tools/cli.h"
#include "tools/codec.h"
#include "tools/io.h"
#include "zepsc.h"

#ifndef ZEPSC_TOOL_VERSION
#define ZEPSC_TOOL_VERSION "unknown"
#endif

namespace zepsc_cli {

std::string version_text() {
    const ZepLibraryVersion* v = zepscGetLibVersion();
    return std::string("zepsc ") + ZEPSC_TOOL_VERSION + "\nlibrary " + v->name + " " + v->version + ", built " +
           v->buildDate + "\n";
}

}  // namespace zepsc_cli

namespace {

// Help as "usage: zepsc <command> ..." first, then what the command does.
class HelpFormatter final : public CLI::Formatter {
public:
    HelpFormatter() { label("Usage", "usage"); }
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        if (mode == CLI::AppFormatMode::Sub) return make_expanded(app);
        std::string out = make_usage(app, name) + "\n" + make_description(app);
        out += make_positionals(app);
        out += make_groups(app, mode);
        out += make_subcommands(app, mode);
        const std::string footer = make_footer(app);
        if (!footer.empty()) out += "\n" + footer;
        return out;
    }
};

// One line for a parse error; CLI11's wording where it is already clear.
std::string parse_message(const CLI::ParseError& e) {
    std::string m = e.what();
    if (dynamic_cast<const CLI::ExtrasError*>(&e)) {
        const std::size_t colon = m.find(": ");
        const std::string words = colon == std::string::npos ? m : m.substr(colon + 2);
        const std::size_t dash = words.find('-') == 0 ? 0 : words.find(" -");
        std::string word = words.substr(dash == std::string::npos ? 0 : dash == 0 ? 0 : dash + 1);
        word = word.substr(0, word.find(' '));
        return (word.size() > 1 && word[0] == '-' ? "unknown option '" : "unexpected argument '") + word + "'";
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&e) && m.find(" missing") != std::string::npos)
        return m.substr(0, m.find(':')) + " needs a value";
    if (dynamic_cast<const CLI::ValidationError*>(&e)) {
        const std::size_t at = m.find(": takes ");
        if (at != std::string::npos) m.erase(at, 1);  // "--rate takes 16, 24, 32 or 40, not '33'"
    }
    return m;
}

int run(int argc, char** argv) {
    CLI::App app("zepsc: the zepsc speech-coding library's command-line tool", "zepsc");
    app.formatter(std::make_shared<HelpFormatter>());
    app.require_subcommand(0, 1);
    app.set_help_flag("-h,--help", "this help (zepsc <command> --help for a command's)");
    bool version = false;
    app.add_flag("--version", version, "tool and library versions");
    app.footer("Without a command, zepsc runs demo.");
    zepsc_cli::add_demo(app);
    zepsc_cli::add_info(app);
    zepsc_cli::add_codec_commands(app);
    zepsc_cli::add_vad(app);
    zepsc_cli::add_lpc(app);
    zepsc_cli::add_subband(app);
    zepsc_cli::add_bench(app);
    for (CLI::App* sub : app.get_subcommands([](CLI::App*) { return true; })) {
        sub->set_help_flag("-h,--help", "this help");
        for (CLI::App* s : sub->get_subcommands([](CLI::App*) { return true; })) s->set_help_flag("-h,--help", "this help");
    }

    // A first word that is neither an option nor a command.
    const std::string first = argc >= 2 ? argv[1] : "";
    const bool known = !app.get_subcommands([&](CLI::App* s) { return s->get_name() == first; }).empty();
    if (argc >= 2 && first[0] != '-' && first != "help" && !known) {
        std::fprintf(stderr, "zepsc: unknown command '%s'\n%s", argv[1], app.help().c_str());
        return 2;
    }
    if (argc >= 2 && std::strcmp(argv[1], "help") == 0) {
        std::printf("%s", app.help().c_str());
        return 0;
    }
    try {
        if (argc < 2) {
            const char* demo[] = {argv[0], "demo"};
            app.parse(2, const_cast<char**>(demo));
        } else {
            app.parse(argc, argv);
        }
    } catch (const CLI::CallForHelp&) {
        std::printf("%s", app.help().c_str());
        zepsc_cli::check_stdout();
        return 0;
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "zepsc: %s\n", parse_message(e).c_str());
        return 1;
    }
    if (version) std::printf("%s", zepsc_cli::version_text().c_str());
    else if (app.get_subcommands().empty()) std::printf("%s", app.help().c_str());
    zepsc_cli::check_stdout();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const zepsc_cli::CodecError& e) {
        return zepsc_cli::fail(e.what());
    } catch (const zepsc_cli::ToolError& e) {
        return zepsc_cli::fail(e.what());
    } catch (const std::bad_alloc&) {
        return zepsc_cli::fail("out of memory");
    } catch (const std::exception& e) {
        return zepsc_cli::fail(std::string("internal error: ") + e.what());
    } catch (...) {
        return zepsc_cli::fail("internal error");
    }
}

// SPDX-License-Identifier: BSD-3-Clause
// zepsc ec: echo cancellation of a near-end (line or microphone) input
// against its far-end reference, with ERLE and convergence figures and an
// optional SVG of ERLE over time.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "tools/cli.h"
#include "tools/echo_canceller.h"
#include "tools/io.h"
#include "tools/json_rows.h"

namespace zepsc_cli {

namespace {

constexpr int kWindow = 800;  // ERLE window: 100 ms

struct EcArgs {
    std::string far, in, out, svg;
    bool fullband = false, subband = false, fdaf = false, json = false, noNlp = false;
    std::string toneRule = "g165";
};

/// One 100 ms window of the measurement.
struct Window {
    double erleDb = 0;
    bool measured = false;  // far end active, no double talk, canceller enabled
    bool doubleTalk = false, tone = false, pathChange = false;
};

struct Figures {
    double steadyDb = NAN, convergenceS = -1, doubleTalkS = 0, toneS = -1;
    int pathChanges = 0;
};

/// A WAV file at 8 kHz, or raw 16-bit little-endian samples taken as 8 kHz.
std::vector<std::int16_t> read_pcm8k(const std::string& path) {
    PcmReader in(path);
    if (in.sample_rate() != 0) in.require(8000);
    std::vector<std::int16_t> v, block(1 << 16);
    while (const std::size_t got = in.read(block.data(), block.size()))
        v.insert(v.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got));
    return v;
}

double energy(const std::vector<std::int16_t>& x, std::size_t a, std::size_t b) {
    double s = 0;
    for (std::size_t i = a; i < b && i < x.size(); ++i) s += static_cast<double>(x[i]) * x[i];
    return s;
}

Figures measure(const std::vector<std::int16_t>& far, const std::vector<std::int16_t>& nearIn,
                const std::vector<float>& res, const std::vector<zepsc_ec::EcEvents>& ev, int frame,
                std::vector<Window>& windows) {
    Figures f;
    const std::size_t n = nearIn.size();
    std::size_t farStart = n;
    for (std::size_t i = 0; i < far.size() && i < n; ++i)
        if (std::abs(far[i]) > 100) {
            farStart = i;
            break;
        }
    double steadyNear = 0, steadyRes = 0;
    for (std::size_t a = 0; a + kWindow <= n; a += kWindow) {
        Window w;
        for (std::size_t k = a / frame; k < (a + kWindow) / frame && k < ev.size(); ++k) {
            w.doubleTalk |= ev[k].doubleTalk;
            w.tone |= ev[k].toneDisabled;
            w.pathChange |= ev[k].pathChange;
        }
        double pr = 1e-9;
        for (std::size_t i = a; i < a + kWindow; ++i) pr += double{res[i]} * res[i];
        const double pn = energy(nearIn, a, a + kWindow) + 1e-9;
        w.erleDb = 10.0 * std::log10(pn / pr);
        w.measured = energy(far, a, a + kWindow) / kWindow > 100.0 * 100.0 && pn / kWindow > 10.0 * 10.0 &&
                     !w.doubleTalk && !w.tone;
        if (w.measured && f.convergenceS < 0 && w.erleDb >= 20.0 && a + kWindow > farStart)
            f.convergenceS = static_cast<double>(a + kWindow - farStart) / 8000.0;
        if (w.measured && a >= 2 * n / 3) steadyNear += pn, steadyRes += pr;
        if (w.doubleTalk) f.doubleTalkS += kWindow / 8000.0;
        if (w.tone && f.toneS < 0) f.toneS = static_cast<double>(a) / 8000.0;
        f.pathChanges += w.pathChange;
        windows.push_back(w);
    }
    if (steadyNear > 0) f.steadyDb = 10.0 * std::log10(steadyNear / steadyRes);
    return f;
}

void write_svg(std::FILE* f, const std::vector<Window>& w) {
    const int width = 1000, plot_h = 200, track_h = 16, top = 10;
    const double top_db = 50.0;
    std::fprintf(f, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\">\n",
                 width, plot_h + 2 * track_h + 50, width, plot_h + 2 * track_h + 50);
    std::fprintf(f, "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n");
    for (int db = 0; db <= 50; db += 10) {
        const double y = top + plot_h * (1.0 - db / top_db);
        std::fprintf(f, "<line x1=\"0\" x2=\"%d\" y1=\"%.1f\" y2=\"%.1f\" stroke=\"#ddd\"/>", width, y, y);
        std::fprintf(f, "<text x=\"2\" y=\"%.1f\" font-family=\"sans-serif\" font-size=\"10\">%d dB</text>\n", y - 2, db);
    }
    const double ww = w.empty() ? 0 : double(width) / w.size();
    std::fprintf(f, "<path fill=\"none\" stroke=\"#246\" stroke-width=\"1.5\" d=\"");
    for (std::size_t i = 0; i < w.size(); ++i) {
        const double db = std::clamp(w[i].erleDb, 0.0, top_db);
        std::fprintf(f, "%c%.1f %.1f", i == 0 ? 'M' : 'L', (i + 0.5) * ww, top + plot_h * (1.0 - db / top_db));
    }
    std::fprintf(f, "\"/>\n");
    for (std::size_t i = 0; i < w.size(); ++i) {
        if (w[i].doubleTalk)
            std::fprintf(f, "<rect x=\"%.2f\" y=\"%d\" width=\"%.2f\" height=\"%d\" fill=\"#c33\"/>\n", i * ww,
                         top + plot_h + 4, ww, track_h - 4);
        if (w[i].tone)
            std::fprintf(f, "<rect x=\"%.2f\" y=\"%d\" width=\"%.2f\" height=\"%d\" fill=\"#36c\"/>\n", i * ww,
                         top + plot_h + track_h + 4, ww, track_h - 4);
        if (w[i].pathChange)
            std::fprintf(f, "<line x1=\"%.1f\" x2=\"%.1f\" y1=\"%d\" y2=\"%d\" stroke=\"#f80\" stroke-width=\"2\"/>\n",
                         i * ww, i * ww, top, top + plot_h);
    }
    std::fprintf(f,
                 "<text x=\"4\" y=\"%d\" font-family=\"sans-serif\" font-size=\"12\">ERLE per 100 ms (blue line); "
                 "red: double talk; blue: 2100 Hz tone disabler; orange: echo-path change</text>\n</svg>\n",
                 top + plot_h + 2 * track_h + 22);
}

void run_ec(const EcArgs& args) {
    const Audio far{read_pcm8k(args.far)}, nearIn{read_pcm8k(args.in)};
    std::unique_ptr<OutputFile> svg;
    if (!args.svg.empty()) svg = std::make_unique<OutputFile>(args.svg);
    zepsc_ec::EcConfig cfg;
    cfg.subband = !args.fullband;
    cfg.fdaf = args.fdaf;
    cfg.nlp = !args.noNlp;
    cfg.toneRule = args.toneRule == "g164" ? 0 : 1;
    zepsc_ec::EchoCanceller ec(cfg);
    const std::size_t F = static_cast<std::size_t>(ec.frame()), D = static_cast<std::size_t>(ec.delay());
    const std::size_t n = nearIn.samples.size(), frames = (n + D + F - 1) / F;
    std::vector<std::int16_t> fz(frames * F, 0), nz(frames * F, 0), out(frames * F);
    std::vector<float> lin(frames * F);
    std::copy_n(far.samples.begin(), std::min(far.samples.size(), n), fz.begin());
    std::copy(nearIn.samples.begin(), nearIn.samples.end(), nz.begin());
    std::vector<zepsc_ec::EcEvents> events;
    Progress progress("ec", static_cast<long>(n));
    for (std::size_t i = 0; i < frames; ++i) {
        events.push_back(ec.process(&fz[i * F], &nz[i * F], &out[i * F], &lin[i * F]));
        progress.update(static_cast<long long>(std::min(n, (i + 1) * F)));
    }
    if (ec.failures()) throw ToolError("a library stage failed " + std::to_string(ec.failures()) + " time(s)");
    // The output and the residual come D samples late: drop the bank's delay.
    const std::vector<std::int16_t> o(out.begin() + static_cast<long>(D), out.begin() + static_cast<long>(D + n));
    const std::vector<float> res(lin.begin() + static_cast<long>(D), lin.begin() + static_cast<long>(D + n));
    std::vector<zepsc_ec::EcEvents> aligned;  // events per frame of the aligned output
    for (std::size_t i = D / F; i < events.size(); ++i) aligned.push_back(events[i]);
    std::vector<Window> windows;
    const Figures fig = measure(far.samples, nearIn.samples, res, aligned, static_cast<int>(F), windows);
    write_audio(args.out, o);
    const char* mode = cfg.fdaf ? "fdaf" : cfg.subband ? "subband" : "fullband";
    if (args.json) {
        nlohmann::ordered_json j;
        j["mode"] = mode;
        j["samples"] = n;
        j["erle_db"] = std::isnan(fig.steadyDb) ? nlohmann::ordered_json() : nlohmann::ordered_json(std::round(fig.steadyDb * 10) / 10);
        j["convergence_s"] = fig.convergenceS < 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(fig.convergenceS);
        j["double_talk_s"] = fig.doubleTalkS;
        j["tone_disabled_at_s"] = fig.toneS < 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(fig.toneS);
        j["path_changes"] = fig.pathChanges;
        std::printf("%s\n", json_line(j).c_str());
    } else {
        std::printf("mode: %s, %.2f s\n", mode, n / 8000.0);
        if (std::isnan(fig.steadyDb)) std::printf("ERLE: not measured (no far-end activity without double talk)\n");
        else std::printf("ERLE (steady state, last third): %.1f dB\n", fig.steadyDb);
        if (fig.convergenceS < 0) std::printf("convergence to 20 dB ERLE: not reached\n");
        else std::printf("convergence to 20 dB ERLE: %.2f s\n", fig.convergenceS);
        std::printf("double talk: %.1f s; echo-path changes: %d\n", fig.doubleTalkS, fig.pathChanges);
        if (fig.toneS >= 0) std::printf("2100 Hz tone disabler: canceller disabled from %.1f s\n", fig.toneS);
    }
    check_stdout();
    if (svg) {
        write_svg(svg->stream(), windows);
        svg->commit();
    }
}

}  // namespace

void add_ec(CLI::App& app) {
    auto args = std::make_shared<EcArgs>();
    CLI::App* cmd = app.add_subcommand("ec", "echo canceller: ERLE, convergence, cancelled output");
    cmd->add_option("FAR", args->far, "far-end reference (mono 8 kHz WAV or raw)")->required();
    cmd->add_option("IN", args->in, "near-end input with the echo (mono 8 kHz)")->required();
    cmd->add_option("OUT", args->out, "echo-cancelled output (WAV)")->required();
    auto* full = cmd->add_flag("--fullband", args->fullband, "time-domain NLMS filter (64 ms)");
    auto* sub = cmd->add_flag("--subband", args->subband, "sub-band NLMS filter (default)");
    auto* fd = cmd->add_flag("--fdaf", args->fdaf, "frequency-domain block NLMS filter (64 ms, 8 ms blocks)");
    full->excludes(sub);
    fd->excludes(full);
    fd->excludes(sub);
    cmd->add_option("--svg", args->svg, "draw ERLE over time with double-talk and tone events");
    cmd->add_flag("--json", args->json, "print the figures as one JSON object");
    cmd->add_flag("--no-nlp", args->noNlp, "no non-linear processing (linear canceller only)");
    cmd->add_option("--tone-rule", args->toneRule, "tone disabler: g165 (phase reversals, default) or g164")
        ->check(CLI::Validator(one_of({"g165", "g164"}), "g165|g164"));
    cmd->footer("Cancels the echo of FAR in IN and writes OUT. ERLE is measured on the linear\n"
                "canceller's residual (before non-linear processing) per 100 ms where the far end is\n"
                "active and no double talk or tone is flagged; the steady-state figure covers the\n"
                "last third of the input, the convergence time counts from the far end's first activity.");
    cmd->callback([args] { run_ec(*args); });
}

}  // namespace zepsc_cli

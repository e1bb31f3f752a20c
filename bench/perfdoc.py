#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Writes docs/performance.md from one run of the benchmark programs.

Runs build-bench/bench/zepsc_bench (every benchmark, JSON output) and
build-bench/bench/zepsc_ec_peers (the echo-canceller peers), then writes the
page: how the figures were measured (machine, load, date, build, commands,
method), a flag list of every benchmark where build n8 is more than 5 %
slower than build u8, and one section per family with a table made from
that run alone. The prose of each section (what is vectorised, what the peer
is, exactness notes) is kept below in FAMILIES; every figure comes from the
run.

Usage (from the source tree, after building the two programs):

    cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DZEPS_BUILD_BENCH=ON
    cmake --build build-bench -j2 --target zepsc_bench zepsc_ec_peers
    python3 bench/perfdoc.py                       # whole run, writes docs/performance.md
    python3 bench/perfdoc.py --filter '^BM_Gsmfr' --no-ec --out /tmp/p.md
    python3 bench/perfdoc.py --json run.json --ec-output ec.txt   # re-render a saved run

A filtered run writes a page with only the families it ran (the page says
so); the page is always one run, never pieces of several.
"""

import argparse
import datetime
import json
import os
import re
import shlex
import subprocess
import sys
import time

SLOW = 1.05  # n8 / u8 above this is flagged

# ---------------------------------------------------------------------------
# Families: (key, title, name regex, unit, text). unit: (divisor, heading)
# applied to the "ns" style figures (ns per unit of work of the benchmark).
# ---------------------------------------------------------------------------

NS = (1.0, "ns")
US = (1000.0, "us")

FAMILIES = [
    dict(key="frame", title="Frame", match=r"^BM_GetLibVersion", unit=NS, text="""
`zepscGetLibVersion` through the exported entry (PLT and the forwarding
entry that reads the chosen build; u8 and n8 with the build forced) beside
the direct call of build u8's implementation (`direct_u8`, no entry): the
cost of the dispatch every export pays (every column also pays one
std::function call).
"""),
    dict(key="g729_lp", title="G.729 LP analysis and LSP quantisation",
         match=r"^BM_(G729_|G729A_LPCToLSP|G729E_|Common_)", unit=NS, text="""
ns per call of each export through its public entry (the build the library
chose), and the same calls with build u8 and build n8 forced, interleaved
round by round. Inputs are real 10 ms frames of `speech/male.s16`
(240-sample analysis windows, their LP coefficients, LSPs and LSFs computed
by the front end itself), one frame per call in turn.
`G729_FrontEndChain` is the encoder's front end per frame through the public
entries: high-pass of 80 samples, Annex B windowed autocorrelation, lag
window, Levinson-Durbin, LP to LSP, LSP quantiser, LSP to LP (target: 4 us
a frame).

The `_Scalar` and `_SSSE3` rows (second table, Google Benchmark's CPU time
per call) time internal kernels, which have no public entry, in this
program's compile: the vectorised kernels against their plain forms (same
results bit for bit): the 240-sample correlation over lags 0..12, the
first-stage LSF codebook search (128 x 10) and the Chebyshev series of one
Az_lsp polynomial at 64 grid points.

Every SIMD or 64-bit path is taken only when a bound computed from the inputs
proves that none of the reference's saturating operations can saturate (the
saturating result then equals the plain integer result); otherwise the stage
runs the basic operators. The high-pass filter's bound depends only on its
coefficients: with the 140 Hz pre-filter (Q12) no partial sum of a sample
leaves the 32-bit range, so the call runs one 64-bit recursion and only the
final L_shl clamps; the 100 Hz post-filter (Q13) keeps the per-sample checked
path. The Chebyshev bound is taken per coefficient (b_k <= 2 b_(k+1) +
b_(k+2) + |f_k|). No peer package exposes these stages through a public
interface, so there is no peer column here; the Annex A LP to LSP and LSP to
LP stages are set beside bcg729's internal stage functions in their own
section below.
"""),
    dict(key="g729_pitch", title="G.729 pitch analysis and adaptive codebook",
         match=r"^BM_(OpenLoopPitchSearch_G729|AdaptiveCodebook|DecodeAdaptiveVector|FilteredExcitation|InterpolateC|PitchFrame|Kernel_)",
         unit=NS, text="""
ns per call of each export through its public entry (the build the library
chose), and the same calls with build u8 and build n8 forced, interleaved
round by round. Inputs from `speech/male.s16` (weighted speech and residual
stand-ins, an impulse response recorded from the reference encoder), one
frame per call in turn. `PitchFrame_G729` is a 10 ms frame of the main body
through the public entries (open loop, two adaptive-codebook searches, two
gains; target 6 us), `PitchFrame_G729A` the same for Annex A (target 3 us).
`Kernel_PredLt3` and `Kernel_NormCorr` (over 14 lags; second table, Google
Benchmark's CPU time per call) are internal kernels with no public entry,
timed in this program's compile: the plain reference loop against the
SSSE3 form. The vector forms run only where an energy bound proves that no
partial sum of the reference's saturating L_mac chain can saturate, so
saturating inputs cost the scalar figures. No peer package exposes these
stages through a public interface, so there is no peer column here (the
Annex A open-loop search is set beside bcg729's internal function below).
"""),
    dict(key="g729_codec", title="G.729 whole codecs",
         match=r"^BM_G729(Encoder|Decoder|EDecoder)", unit=US, text="""
The codec of `zepsc g729` (`tools/codecs/g729.cpp`, public exports only),
100 frames of `speech/male.s16` a call (RTP payloads for the main body and
Annex A, the ITU serial format for B, AB and D), coder state carried from
call to call; the decoders read our own encoding of those frames, the Annex
E decoder the first 100 frames of `codecs/g729/g729e/male.bit` (11.8 kbit/s).
Microseconds per 10 ms frame. Peer in the same rounds: Debian's libbcg729
(Annex A; channel made once and carried across calls). Annex A rows: VAD/DTX
off on both sides, both decoders read the same frames (ours). Annex AB rows:
bcg729 with its VAD on (`bcg729_vad`), decoding its own encoding; the two
VADs decide differently, so that ratio also weighs how many frames each
sends. Targets: main-body encoder 25 us; Annex A encoder and decoder 3 x
bcg729 (and 10 us / 2 us).

The searches run in SSSE3 lanes where bounds prove the reference's chains
exact: the fixed-codebook searches (sign folding, pulse pairs eight
positions of a track at a time, the choice kept sequential as the
reference's strict-improvement test), Cor_h and Cor_h_X, the gain
quantiser's distances, the synthesis filter (ten-sample blocks, eight
oldest taps in one pmaddwd, the newest scalar, the scalar per-sample path
taking over when a block breaks the bound), the post-filter's residual,
AGC and tilt, the open-loop search's correlations under a Cauchy-Schwarz
bound. Scalar twins are kept and tested against (`tests/g729/test_g729_*_kernels.cpp`).
"""),
    dict(key="g729_bcg729", title="G.729 Annex A stages beside bcg729",
         match=r"^BM_Bcg729_", unit=NS, text="""
ns per call, against the stage functions of Debian's bcg729 (its static
library), on the LP coefficients and high-passed speech of `male.s16` (the
high-passed speech stands in for the weighted speech of the open-loop
search; both sides get the same samples). bcg729 computes these stages with
its own 32-bit arithmetic, not the reference's saturating operators (the
label counts its outputs equal to ours); its LP to LSP conversion finds the
same roots to within a few LSBs but refines them differently, so its cost is
no measure of the reference's Az_lsp, which zepsc reproduces.
"""),
    dict(key="amr_vad", title="GSM-AMR voice activity detection, open-loop search and DTX",
         match=r"^BM_(VAD1|VAD2|FFT|OpenLoop/|EncDTX|DecDTX|LSPQuant/|LSPQuantSearch|Peer_Opencore)",
         unit=NS, text="""
ns per 20 ms frame of `speech/male.s16` (VAD, open-loop search), per call
for the FFT, the DTX stages and the LSP quantiser (20 ms frames of
`noisy.s16`, realistic LSP histories). `OpenLoop/<rate>/<dtx>` is the
open-loop pitch search per frame (weighting filters and lag search; dtx 0 =
off, 1 = VAD option 1, 2 = VAD option 2). `LSPQuant/<rate>`: rate 0 MR475,
7 MR74, 8 MR795 (Q_plsf_3), 12 MR122 (Q_plsf_5), 25 SID. `LSPQuantSearch/3`
and `/4` time one codebook search (dico2_lsf_3, 512 rows x 3; dico3_lsf_3,
512 rows x 4), an internal kernel with no public entry (so no u8 / n8
columns), in SSSE3 against its scalar scoring (exact: the saturating
distance equals min(2 S, 2^31 - 1) for the exact sum of squares S). Peers:
opencore-amrnb's `vad1` (its static library; the label counts equal
decisions) and, for scale, its whole encoder (`Peer_OpencoreEncoderFrame`,
DTX off). The FFT of VAD option 2 is set beside its scalar baseline: its
butterflies run four per SSSE3 step (pmaddwd rotation, saturating pack),
exact because the reference chain's value always fits 32 bits. The DTX
buffers sum the frame energy exactly in 64 bits and clamp once (equal to the
saturating L_mac chain of non-negative terms). opencore's DTX and quantiser
stages take its own encoder structures, which its headers do not describe,
so they have no peer.
"""),
    dict(key="amr_codec", title="GSM-AMR whole codec",
         match=r"^BM_Amr(Encoder|Decoder)", unit=US, text="""
The codec of `zepsc amr` (`tools/codecs/amr.cpp`, public exports only), 50
frames of `speech/male.s16` a call, DTX off, coder state carried from call to
call; microseconds per 20 ms frame. Peer in the same rounds: Debian's
libopencore-amrnb (`Encoder_Interface_Encode` in the same mode on the same
speech, DTX off; `Decoder_Interface_Decode`), state made once. Both decoders
read the same RFC 4867 storage frames (our encoding). Targets: encoder
20 us, decoder 4 us a frame.

The joint gain searches run eight table rows at a time when the table's
column maxima bound the L_add chain; the codebook searches load each
track's terms once per track order and skip blocks of second pulses when
one pmaddwd shows none improves; the order-10 synthesis filters and Residu
are the G.729 lane kernels under their plain-sum bounds; sums of squares
are exact 64-bit sums clamped as the chain saturates. Each fast form keeps
its reference loop, and `AmrEncKernels` / `AmrDecBounds` hold them equal
across the bounds.
"""),
    dict(key="gsmfr", title="GSM full rate (GSM 06.10)",
         match=r"^BM_Gsmfr", unit=NS, text="""
The whole codec of `zepsc gsmfr` (public exports, `.gsm` format; each call
makes its coder and codes 100 frames of `male.s16`) beside Debian's libgsm
(default options, one `gsm` object a call), ns per 20 ms frame. Target:
2 x libgsm. The analysis lattice runs its eight stages in the eight lanes of
one SSSE3 register on a skewed schedule; the synthesis lattice and the
de-emphasis keep the standard's order, one pmulhrsw (equal to mult_r when
one factor is not -32768, true of every reflection coefficient and of
28180) and one saturating add per stage. The scalar forms are kept and
tested against (`GsmfrKernels`).
"""),
    dict(key="g726", title="G.726 ADPCM",
         match=r"^BM_G726", unit=NS, text="""
ns per sample, 16000 samples of speech a call, coder state carried across
calls. Peers in the same rounds: Debian's spandsp (`g726_encode` /
`g726_decode`) and FFmpeg's libavcodec (`adpcm_g726`); both decode to
linear, so `law:2` (linear output) is the comparable decoder row and the
G.711 rows (`law:0`, with the synchronous coding adjustment) have no peer
figure worth comparing. `scalar_predictor` is the same encoder with the
plain scalar predictor. Target: 3 x spandsp. The recursion is serial per
sample; encoder and decoder keep it in SSSE3 lanes through one shared
update (the eight FMULTs, six UPB updates, pole updates worked out for the
three signs beside the estimate, tone and transition detection); the
encoder's quantiser is a compare count, the decoder's inverse quantiser a
table lookup. The scalar coder is kept and tested against.
"""),
    dict(key="g722", title="G.722 sub-band ADPCM",
         match=r"^BM_G722(Encode|Decode)", unit=NS, text="""
`zepsSBADPCMEncode_G722_16s` and `zepsSBADPCMDecode_G722_16s`, 32000 samples
(2 s) of `codecs/g722/input16k/male.s16` a call (decoders: our 16000 codes
of them), state carried across calls; ns per 16 kHz sample. Peers in the
same rounds: Debian's spandsp (`g722_encode` / `g722_decode`, 64 kbit/s and
48 kbit/s with its 6-bit code words made from the same codes) and FFmpeg's
libavcodec `adpcm_g722` (320-sample frames / 160-byte packets of the same
codes). The QMF delay lines sit in three SSSE3 registers (pmaddwd, exact: a
24-tap sum stays below 2^30), the lower-band quantiser decision is one
vector compare of all 31 scaled levels (pmulhuw), each band's zero section
is two registers with FILTEZ's saturation taken only when a product could
reach it, and the pole updates' sign tests are selects. The scalar stages
stay the tested baseline.
"""),
    dict(key="g7221", title="G.722.1 and Annex C",
         match=r"^BM_G7221", unit=US, text="""
Encoder = `zepsMLTFwd_G7221_16s` + `zepsEncode_G7221_16s`, decoder =
`zepsDecode_G7221_16s` + `zepsMLTInv_G7221_16s`, 100 frames (2 s) of
`codecs/g7221/input16k/male.s16` (Annex C: `input32k`) a call, MLT history
and decoder state carried across calls; microseconds per 20 ms frame.
Config 0/1: 24/32 kbit/s; 2/3/4: Annex C 24/32/48 kbit/s. No peer: neither
spandsp nor FFmpeg codes G.722.1. The DCT-IV's rotation stages run on
pmaddwd (every coefficient pair sums exactly in a 32-bit lane), and so does
the 10-point core wherever the inputs are small enough that no step of the
saturating L_mac chain can clip; other groups take the scalar path.
"""),
    dict(key="ec_bank", title="Echo-canceller sub-band filter bank",
         match=r"^BM_(Ec(Analysis|Synthesis)|Rfft)", unit=NS, text="""
ns per frame, configuration 0 = A (N 32, F 24, L 128), 1 = B (N 64, F 44,
L 256), 256 frames of `male.s16` in turn. Peer: the same bank (delay line,
fold, transform, overlap-add through the reversed window) written with FFTW
single precision, plans made once with FFTW_MEASURE outside the timing (the
16-bit peer keeps the Q13 fold and overlap-add and converts around FFTW).
`Rfft_32f_Fwd/<order>` is the internal real FFT alone (32 and 64 points; no
public entry, so no u8 / n8 columns) against its scalar twin and FFTW's r2c plan. The float FFT is a radix-4
decimation-in-frequency transform on split arrays, four butterflies per SSE
instruction, natural-order output without a bit-reversal pass. The 16-bit
path's block-floating-point FFT runs its twiddled butterflies four at a time
(Q30 products from SSE2's unsigned multiply with the sign bits flipped,
exact for every 32-bit word); its fold and overlap-add run eight taps per
instruction (one rounding high multiply per tap for windows whose Q13 taps
lie in -8191..8191); the scalar passes are kept and tested against.
The float analysis's n8 / u8 ratio moves from run to run by more than 10 %
either way (it follows where each instance's buffers land), so a flag on
it in a single run needs repeating before it means anything.
"""),
]

EC_TEXT = """
`zepsc_ec_peers` (`bench/ec_peers.cpp`): the cancellers of `zepsc ec` and
the peers speexdsp, spandsp and webrtc-audio-processing (Debian packages) on
the same synthetic G.168-style signals made from `speech/male.s16` (echo
paths D2..D9). First table: convergence and steady-state ERLE; second: ERLE
around a double-talk burst and CPU per channel (thread CPU time of a whole
D4 run, median of 5 rounds that alternate the cancellers), us per 10 ms.
Target: half the CPU of the fastest peer. Accuracy and the signals are
described in docs/ec.md.
"""

# ---------------------------------------------------------------------------


def run(cmd, **kw):
    print("+ " + " ".join(shlex.quote(c) for c in cmd), file=sys.stderr)
    return subprocess.run(cmd, check=True, **kw)


def cpu_model():
    model, flags, n = "unknown", set(), 0
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                k, _, v = line.partition(":")
                k = k.strip()
                if k == "model name":
                    model = v.strip()
                    n += 1
                elif k == "flags" and not flags:
                    flags = set(v.split())
    except OSError:
        pass
    ext = ", ".join(x.upper() for x in ("ssse3", "sse4_1", "movbe", "avx2") if x in flags)
    return f"{model}, {n} logical CPUs ({ext or 'no SSSE3'})"


def git_rev(root):
    try:
        rev = subprocess.run(["git", "-C", root, "rev-parse", "--short", "HEAD"], capture_output=True,
                             text=True, check=True).stdout.strip()
        dirty = subprocess.run(["git", "-C", root, "status", "--porcelain", "--untracked-files=no"],
                               capture_output=True, text=True, check=True).stdout.strip()
        return rev + (" with uncommitted changes" if dirty else "")
    except (OSError, subprocess.CalledProcessError):
        return "unknown"


def short_name(name):
    name = re.sub(r"/(iterations:\d+|manual_time|repeats:\d+)", "", name)
    return name[3:] if name.startswith("BM_") else name


def label_of(b):
    """The benchmark's label without its unit (the column heading gives it)."""
    lab = re.sub(r",?\s*ns per [^,]*$", "", b.get("label", "")).strip()
    return f" ({lab})" if lab else ""


def fmt(v):
    if v is None:
        return "-"
    a = abs(v)
    if a >= 1000:
        return f"{v:,.0f}".replace(",", " ")
    if a >= 100:
        return f"{v:.0f}"
    if a >= 10:
        return f"{v:.1f}"
    if a >= 1:
        return f"{v:.2f}"
    return f"{v:.3f}"


def ns_of(b):
    """Google Benchmark's CPU time of a plain benchmark, in ns per call."""
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[b.get("time_unit", "ns")]
    return b["cpu_time"] * scale


def peers_of(b):
    return sorted(k[:-3] for k in b if k.endswith("_ns") and k not in ("u8_ns", "n8_ns") and "x_" + k[:-3] in b)


# Targets: (regex on the short name, text, test(b) -> bool or None).
def _x(peer, goal):
    return lambda b: b.get("x_" + peer, 0) >= goal if "x_" + peer in b else None


def _us(goal):
    return lambda b: b["ns"] / 1000.0 <= goal if "ns" in b else None


TARGETS = [
    (r"^G729Encoder/annex_0_A_B_AB_D:0$", "25 us", _us(25)),
    (r"^G729(Encoder|Decoder)/annex_0_A_B_AB_D:1$", "3 x bcg729", _x("bcg729", 3.0)),
    (r"^AmrEncoder/", "20 us", _us(20)),
    (r"^AmrDecoder/", "4 us", _us(4)),
    (r"^GsmfrFrame/", "2 x libgsm", _x("libgsm", 2.0)),
    (r"^G726(Encode|Decode/rate_index:\d/law:2)", "3 x spandsp", _x("spandsp", 3.0)),
    (r"^G729_FrontEndChain$", "4 us", lambda b: b.get("ns", ns_of(b)) <= 4000),
    (r"^PitchFrame_G729$", "6 us", lambda b: b.get("ns", ns_of(b)) <= 6000),
    (r"^PitchFrame_G729A$", "3 us", lambda b: b.get("ns", ns_of(b)) <= 3000),
]


def target_of(short):
    for rx, text, test in TARGETS:
        if re.search(rx, short):
            return text, test
    return None


def family_table(benchmarks, fam):
    """Markdown table of one family; returns (lines, slow rows)."""
    div, unit = fam["unit"]
    inter = [b for b in benchmarks if "n8_u8" in b or "ns" in b]
    plain = [b for b in benchmarks if b not in inter]
    out, slow = [], []
    if inter:
        peers = []
        for b in inter:
            for p in peers_of(b):
                if p not in peers:
                    peers.append(p)
        has_builds = any("n8_u8" in b for b in inter)
        has_target = any(target_of(short_name(b["name"])) for b in inter)
        head = ["benchmark", f"zepsc {unit}"]
        if has_builds:
            head += [f"u8 {unit}", f"n8 {unit}", "n8 / u8"]
        for p in peers:
            head += [f"{p} {unit}", f"x {p}"]
        if has_target:
            head += ["target"]
        out.append("| " + " | ".join(head) + " |")
        out.append("|---|" + "---:|" * (len(head) - 1 - has_target) + ("---|" if has_target else ""))
        for b in inter:
            s = short_name(b["name"])
            name = f"`{s}`" + label_of(b)
            if s.startswith("Peer_"):
                name += " (the peer alone; its time in the zepsc column)"
            row = [name, fmt(b.get("ns", ns_of(b)) / div)]
            if has_builds:
                r = b.get("n8_u8")
                flag = ""
                if r is not None and r > SLOW:
                    flag = " **slow**"
                    slow.append((s, r))
                row += [fmt(b["u8_ns"] / div) if "u8_ns" in b else "-",
                        fmt(b["n8_ns"] / div) if "n8_ns" in b else "-",
                        (f"{r:.3f}" + flag) if r is not None else "-"]
            for p in peers:
                row += [fmt(b[p + "_ns"] / div) if p + "_ns" in b else "-",
                        f"{b['x_' + p]:.2f}" if "x_" + p in b else "-"]
            if has_target:
                t = target_of(s)
                if t:
                    ok = t[1](b)
                    row.append(t[0] + (" (met)" if ok else " (not met)" if ok is not None else ""))
                else:
                    row.append("")
            out.append("| " + " | ".join(row) + " |")
    if plain:
        if out:
            out.append("")
        has_target = any(target_of(short_name(b["name"])) for b in plain)
        out.append("| benchmark | ns per call (CPU)" + (" | target |" if has_target else " |"))
        out.append("|---|---:|" + ("---|" if has_target else ""))
        for b in plain:
            s = short_name(b["name"])
            name = f"`{s}`" + label_of(b)
            row = [name, fmt(ns_of(b))]
            if has_target:
                t = target_of(s)
                row.append(t[0] + (" (met)" if t[1](b) else " (not met)") if t else "")
            out.append("| " + " | ".join(row) + " |")
    return out, slow


def ec_target(ec_text):
    """Line on the CPU target from the second table of zepsc_ec_peers."""
    rows = []
    for line in ec_text.splitlines():
        m = re.match(r"^\|\s*([^|]+?)\s*\|\s*[^|]*dB\s*\|\s*([0-9.]+)\s*\|$", line)
        if m:
            rows.append((m.group(1), float(m.group(2))))
    peers = [(n, c) for n, c in rows if not n.startswith("zepsc")]
    ours = [(n, c) for n, c in rows if n.startswith("zepsc")]
    if not peers or not ours:
        return ""
    fast = min(peers, key=lambda r: r[1])
    goal = fast[1] / 2
    parts = [f"{n} {c:.1f} us ({c / fast[1]:.2f} of {fast[0]}, {'met' if c <= goal else 'not met'})" for n, c in ours]
    return (f"Target: half the CPU of the fastest peer ({fast[0]}, {fast[1]:.1f} us per 10 ms, so "
            f"{goal:.1f} us). In this run: " + "; ".join(parts) + ".")


def render(data, ec_text, meta):
    ctx = data.get("context", {})
    benches = [b for b in data.get("benchmarks", []) if b.get("run_type", "iteration") == "iteration"
               or b.get("aggregate_name") == "median"]
    reps = 1
    if any(b.get("aggregate_name") == "median" for b in benches):
        benches = [dict(b, name=b.get("run_name", b["name"])) for b in benches if b.get("aggregate_name") == "median"]
        reps = max(int(b.get("repetitions", 1)) for b in benches)
    L = ["# Performance", "",
         "<!-- Written by bench/perfdoc.py from one run; edit the script, not this page. -->", "",
         "## How the figures are measured", ""]
    took = f" (the run took {meta['minutes']:.0f} min)" if meta.get("minutes") else ""
    L += [f"- Date: {meta['date']}{took}.",
          f"- Machine: {meta['cpu']}.",
          f"- Load average (1 min) at start {meta['load0']:.2f}, at end {meta['load1']:.2f}.",
          f"- Library: tree {meta['rev']}, Release build of `{meta['build_dir']}`; the build the library "
          f"chose on this machine: {ctx.get('zepsc_build', 'unknown')}.",
          "- Commands:", ""]
    L += ["      " + c for c in meta["commands"]]
    if meta.get("filter"):
        L += ["", f"This is a partial run (filter `{meta['filter']}`): families it did not run are absent."]
    if reps > 1:
        L += ["", f"Every benchmark ran {reps} times in this run (`--benchmark_repetitions`); each figure "
              f"below is the median of its {reps} repetitions' figures (a short call's n8 / u8 ratio moves "
              "by several per cent between repetitions with where its buffers land)."]
    L += ["", """Interleaved benchmarks (`bench/interleaved.h`; every table with u8 and n8
columns): zepsc is called through its public entries (column zepsc, the build
the library chose), then through the same entries with build u8 and build n8
forced (the entry's variant index is written between batches), then each
peer, round by round in one loop on the same input, each contender with its
own state. A round times a batch of about 40 us of calls of each contender
(or one call, when a call is longer) in thread CPU time, alternating the
order from round to round; 200 rounds (100 for whole codecs). Figures are the
medians over the rounds per unit of work; `n8 / u8` and `x <peer>` (peer
time / zepsc time, above 1: zepsc faster) are medians of the per-round
ratios, which cancel the slow drifts of a shared machine. Under load the
absolute figures move by several per cent from run to run; the ratios much
less. Other tables (no u8/n8 columns) are plain Google Benchmark loops of
build u8 called directly, CPU time per call.

Build n8 is compiled `-mssse3 -mmovbe -mtune=bonnell` (in-order scheduling)
with GCC's switches `-mtune-ctrl=sse_unaligned_load_optimal,
sse_unaligned_store_optimal,^opt_agu,^avoid_lea_for_addr,
fuse_cmp_and_branch_32,fuse_cmp_and_branch_64,fuse_cmp_and_branch_soflags,
fuse_alu_and_branch` and `--param=vect-max-peeling-for-alignment=0` (without
them the in-order tuning splits unaligned 16-byte loads and stores, peels
vectorised loops to alignment, rewrites address arithmetic for an in-order
address unit and schedules instructions between a loop's compare and branch,
which out-of-order cores then cannot fuse);
both builds align loops to 32 bytes. Both builds give the same results (the
variant-equality tests); only their speed differs.
"""]
    fams, used, slow_all, body = [], set(), [], []
    for fam in FAMILIES:
        members = [b for b in benches if re.search(fam["match"], b["name"]) and b["name"] not in used]
        used.update(b["name"] for b in members)
        fams.append((fam, members))
    rest = [b for b in benches if b["name"] not in used]
    if rest:
        fams.append((dict(key="other", title="Other benchmarks", unit=NS,
                          text="\nBenchmarks of `zepsc_bench` that no section above describes.\n"), rest))
    for fam, members in fams:
        if not members:
            continue
        table, slow = family_table(members, fam)
        slow_all += slow
        body += [f"<!-- {fam['key']} -->", f"## {fam['title']}", fam["text"].rstrip(), ""] + table + [""]
    if ec_text is not None:
        body += ["<!-- ec -->", "## Echo canceller beside its peers", EC_TEXT.rstrip(), "",
                 ec_text.strip(), ""]
        t = ec_target(ec_text)
        if t:
            body += [t, ""]
    L += ["## Build n8 against build u8", ""]
    inter_n = sum(1 for b in benches if "n8_u8" in b)
    if slow_all:
        L += [f"Of {inter_n} interleaved benchmarks, n8 is more than {round((SLOW - 1) * 100)} % slower "
              f"than u8 (median per-round ratio) on:", ""]
        chosen = ctx.get("zepsc_build", "")
        by_short = {short_name(b["name"]): b for b in benches}

        def entry_note(name):
            # The public entry runs the chosen build; when that is n8, its
            # figure is a second measurement of n8 on other buffers.
            b = by_short.get(name, {})
            if not chosen.startswith("n8") or not b.get("u8_ns") or not b.get("ns"):
                return ""
            return f" (the public entry, which runs n8 here: {b['ns'] / b['u8_ns']:.3f} of u8)"
        L += [f"- `{s}`: {r:.3f}{entry_note(s)}" for s, r in slow_all]
    else:
        L += [f"On all {inter_n} interleaved benchmarks n8 is within {round((SLOW - 1) * 100)} % of u8 "
              "(median per-round ratio)."]
    if inter_n:
        rs = [b["n8_u8"] for b in benches if "n8_u8" in b]
        L += ["", f"The ratios range from {min(rs):.3f} to {max(rs):.3f}."]
    L += [""]
    return "\n".join(L + body).rstrip() + "\n"


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--build-dir", default=os.path.join(root, "build-bench"))
    ap.add_argument("--out", default=os.path.join(root, "docs", "performance.md"))
    ap.add_argument("--filter", help="run only the benchmarks matching this regex (--benchmark_filter)")
    ap.add_argument("--no-ec", action="store_true", help="skip zepsc_ec_peers")
    ap.add_argument("--json", help="render this saved zepsc_bench JSON instead of running")
    ap.add_argument("--ec-output", help="with --json: the saved output of zepsc_ec_peers")
    ap.add_argument("--save", help="keep the run's JSON and EC output under this prefix")
    ap.add_argument("--repetitions", type=int, default=3,
                    help="runs of every benchmark; the page gives the median of their figures")
    a = ap.parse_args()

    bench = os.path.join(a.build_dir, "bench", "zepsc_bench")
    ecp = os.path.join(a.build_dir, "bench", "zepsc_ec_peers")
    meta = dict(cpu=cpu_model(), rev=git_rev(root), build_dir=os.path.relpath(a.build_dir, root),
                filter=a.filter, date=datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC"))
    meta["load0"] = os.getloadavg()[0]
    t0 = time.time()
    if a.json:
        with open(a.json) as f:
            data = json.load(f)
        ec_text = open(a.ec_output).read() if a.ec_output else None
        meta["commands"] = ["(re-rendered from " + a.json + ")"]
        meta["load0"] = data.get("context", {}).get("load_avg", [meta["load0"]])[0]
        meta["date"] = data.get("context", {}).get("date", meta["date"])
    else:
        out_json = (a.save or "/tmp/zepsc_perfdoc") + ".json"
        cmd = [bench, "--benchmark_out=" + out_json, "--benchmark_out_format=json"]
        if a.filter:
            cmd.append("--benchmark_filter=" + a.filter)
        if a.repetitions > 1:
            cmd += [f"--benchmark_repetitions={a.repetitions}", "--benchmark_report_aggregates_only=true"]
        run(cmd, stdout=subprocess.DEVNULL)
        with open(out_json) as f:
            data = json.load(f)
        rel = lambda p: os.path.relpath(p, root)
        meta["commands"] = [" ".join([rel(bench)] + [shlex.quote(c) for c in cmd[1:]])]
        ec_text = None
        if not a.no_ec:
            ec_text = run([ecp], capture_output=True, text=True).stdout
            meta["commands"].append(rel(ecp))
            if a.save:
                with open(a.save + ".ec.txt", "w") as f:
                    f.write(ec_text)
    meta["load1"] = os.getloadavg()[0]
    meta["minutes"] = None if a.json else (time.time() - t0) / 60
    page = render(data, ec_text, meta)
    with open(a.out, "w") as f:
        f.write(page)
    print(f"wrote {a.out}", file=sys.stderr)


if __name__ == "__main__":
    main()

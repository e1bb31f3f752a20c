#!/usr/bin/env bash
# Builds the libFuzzer drivers (clang, ASan + UBSan) and runs every target.
#
# Gate (default, what CI runs): deterministic. For each target, the committed
# regression corpus fuzz/corpus/<target>/ is replayed input by input, then the
# target is fuzzed from that corpus and from seeds cut from the shared speech
# files, with a fixed seed (derived from the target's name) and a fixed
# number of executions, with address-space randomisation off. The same tree
# therefore runs the same inputs on every machine: a failure is a fault of
# the tree, reproduced by the command the summary prints, never a chance
# draw. Each target also has a time cap, so the step stays bounded however
# many targets the families add: a target that reaches its cap has run a
# prefix of its fixed sequence (marked "capped" in the summary).
#
#   FUZZ_RUNS_TOTAL  executions over all targets (default 600000); each target
#                    runs FUZZ_RUNS_TOTAL / targets, at least 300
#   FUZZ_BUDGET      wall-clock seconds for the fuzzing of all targets
#                    (default 300); the cap per target is FUZZ_BUDGET * jobs /
#                    targets, at least 1 s
#   FUZZ_JOBS        targets run at once (default: number of processors)
#   FUZZ_TARGETS     a regular expression: only the targets it matches
#
# Exploration (FUZZ_MODE=explore, outside the gate): open-ended fuzzing with
# random seeds for FUZZ_SECONDS per target (default 60), new coverage merged
# into fuzz/corpus/<target>/. Commit what it adds: every finding, once fixed,
# becomes a corpus entry that the gate replays.
#
# Results: build-fuzz/fuzz-summary.txt (executions per target), logs and any
# failing input under build-fuzz/fuzz-out/.
set -euo pipefail
cd "$(dirname "$0")/.."
shared=${ZEPS_SHARED_DIR:-$PWD/../shared}
bdir=${FUZZ_BUILD_DIR:-build-fuzz}
jobs=${FUZZ_JOBS:-$(nproc)}
mode=${FUZZ_MODE:-gate}

CC=clang CXX=clang++ cmake -S . -B "$bdir" -DZEPS_WERROR=ON -DZEPS_FUZZ=ON -DZEPS_BUILD_TESTS=OFF \
  -DZEPS_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZEPS_SHARED_DIR="$shared" >/dev/null
cmake --build "$bdir" -j"$(nproc)" --target zepsc_fuzz zepsc_fuzz_basic_op zepsc_fuzz_decoder

export FUZZER="$PWD/$bdir/fuzz/zepsc_fuzz" OUT="$PWD/$bdir/fuzz-out" SEEDS="$PWD/$bdir/fuzz-seeds" MODE=$mode
# Targets: every contract row (zepsc_fuzz), every decoder of the codec
# commands (zepsc_fuzz_decoder, "decode.<codec>.<format>"), the basic operators.
mapfile -t targets < <({ ZEPS_FUZZ_LIST=1 "$FUZZER"; ZEPS_FUZZ_LIST=1 "${FUZZER}_decoder"; echo basic_op; } |
                       grep -E "${FUZZ_TARGETS:-.}")
n=${#targets[@]}
if [ "$mode" = explore ]; then
  export RUNS=-1 CAP=${FUZZ_SECONDS:-60}
  echo "exploring $n targets, $CAP s each, random seeds, $jobs at once"
else
  runs=$(( ${FUZZ_RUNS_TOTAL:-600000} / n ))
  cap=$(( ${FUZZ_BUDGET:-300} * jobs / n ))
  export RUNS=$(( runs < 300 ? 300 : runs )) CAP=$(( cap < 1 ? 1 : cap ))
  echo "fuzzing $n targets: corpus replay, then $RUNS executions each with a fixed seed (cap $CAP s), $jobs at once"
fi

# Seeds: 2 KiB pieces of each speech file (sample data for the buffers);
# for the decoders, each codec's bitstream of a piece of each speech file.
rm -rf "$SEEDS" "$OUT" && mkdir -p "$SEEDS/speech" "$SEEDS/decode" "$OUT"
ZEPS_SHARED_DIR="$shared" ZEPS_FUZZ_SEEDS="$SEEDS/decode" "${FUZZER}_decoder"
for f in "$shared"/speech/*.s16; do
  [ -e "$f" ] || { echo "no speech files under $shared/speech: fuzzing from the corpus alone"; break; }
  for k in 0 8 24; do
    dd if="$f" of="$SEEDS/speech/$(basename "$f" .s16)_$k" bs=1024 skip=$k count=2 status=none
  done
done

# Fixed addresses (no ASLR) where the system allows it, so the values the
# fuzzer learns from comparisons with addresses are the same on every run.
norand=()
if setarch "$(uname -m)" -R true 2>/dev/null; then norand=(setarch "$(uname -m)" -R); fi
export NORAND="${norand[*]}"

run_one() {
  local t=$1 work="$OUT/work/$1" reg="fuzz/corpus/$1" log="$OUT/$1.log" bin=$FUZZER seed seeds=$SEEDS/speech
  if [ "$t" = basic_op ]; then bin=${FUZZER}_basic_op; fi
  case $t in decode.*) bin=${FUZZER}_decoder seeds=$SEEDS/decode/$t ;; esac
  mkdir -p "$work" "$reg"
  local opts=(-max_len=4096 -timeout=30 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$OUT/$t-")
  # 1. Corpus replay: every committed input, one by one.
  local inputs=("$reg"/*)
  if [ -e "${inputs[0]}" ] && ! ZEPS_FUZZ_TARGET="$t" $NORAND "$bin" "${opts[@]}" "${inputs[@]}" >"$log" 2>&1; then
    printf '%-44s FAILED in corpus replay (see %s)\n' "$t" "$log"
    grep -m5 -E 'ERROR|violation|runtime error|Running' "$log" | tail -5 || true
    return 1
  fi
  # 2. Fuzzing: fixed seed and execution count (gate) or open-ended (explore).
  if [ "$MODE" = explore ]; then seed=0; else seed=$(printf %s "$t" | cksum | cut -d' ' -f1); fi
  if ZEPS_FUZZ_TARGET="$t" $NORAND "$bin" "${opts[@]}" -seed="$seed" -runs="$RUNS" -max_total_time="$CAP" \
       "$work" "$reg" "$seeds" >>"$log" 2>&1; then
    if [ "$MODE" = explore ]; then
      ZEPS_FUZZ_TARGET="$t" "$bin" -merge=1 -max_len=1024 "$reg" "$work" >>"$log" 2>&1
      find "$reg" -type f -size +1k -delete
    fi
    local done_runs
    done_runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    printf '%-44s %12s executions  ok%s\n' "$t" "$done_runs" \
      "$([ "$MODE" != explore ] && [ "${done_runs:-0}" -lt "$RUNS" ] && echo ' (capped)')"
  else
    printf '%-44s FAILED (see %s); reproduce: ZEPS_FUZZ_TARGET=%s %s %s -seed=%s -runs=%s DIRS\n' \
      "$t" "$log" "$t" "$NORAND" "$bin" "$seed" "$RUNS"
    grep -m5 -E 'ERROR|violation|runtime error' "$log" || true
    return 1
  fi
}
export -f run_one
status=0
printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} bash -c 'run_one "$@"' _ {} | tee "$bdir/fuzz-summary.txt" || status=1
exit $status

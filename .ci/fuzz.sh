#!/usr/bin/env bash
# Builds the libFuzzer driver (clang, ASan + UBSan) and runs every contract
# target for a bounded time: the committed regression corpus
# fuzz/corpus/<target>/ first, then fuzzing from it and from seeds cut from
# the shared speech files at run time.
#
#   FUZZ_SECONDS   seconds per target (default 20)
#   FUZZ_BUDGET    wall-clock seconds for all targets (default 480); the time
#                  per target shrinks (not below 5 s) to keep within it
#   FUZZ_JOBS      targets run at once (default: number of processors)
#   FUZZ_UPDATE_CORPUS=1  merge inputs that reach new coverage into
#                  fuzz/corpus/<target>/ (then commit them)
# Results: build-fuzz/fuzz-summary.txt (executions per target), logs and any
# crashing input under build-fuzz/fuzz-out/.
set -euo pipefail
cd "$(dirname "$0")/.."
shared=${ZEPS_SHARED_DIR:-$PWD/../shared}
bdir=${FUZZ_BUILD_DIR:-build-fuzz}
jobs=${FUZZ_JOBS:-$(nproc)}

CC=clang CXX=clang++ cmake -S . -B "$bdir" -DZEPS_WERROR=ON -DZEPS_FUZZ=ON -DZEPS_BUILD_TESTS=OFF \
  -DZEPS_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZEPS_SHARED_DIR="$shared" >/dev/null
cmake --build "$bdir" -j"$(nproc)" --target zepsc_fuzz zepsc_fuzz_basic_op

export FUZZER="$PWD/$bdir/fuzz/zepsc_fuzz" OUT="$PWD/$bdir/fuzz-out" SEEDS="$PWD/$bdir/fuzz-seeds"
# Targets: every contract row of zepsc_fuzz, plus the basic operators.
mapfile -t targets < <(ZEPS_FUZZ_LIST=1 "$FUZZER"; echo basic_op)
n=${#targets[@]}
per=${FUZZ_SECONDS:-20}
fit=$(( ${FUZZ_BUDGET:-480} * jobs / n ))
[ "$fit" -lt "$per" ] && per=$(( fit < 5 ? 5 : fit ))
export PER=$per UPDATE=${FUZZ_UPDATE_CORPUS:-0}
echo "fuzzing $n targets, $per s each, $jobs at once"

# Seeds: 2 KiB pieces of each speech file (sample data for the buffers).
rm -rf "$SEEDS" "$OUT" && mkdir -p "$SEEDS" "$OUT"
for f in "$shared"/speech/*.s16; do
  for k in 0 8 24; do
    dd if="$f" of="$SEEDS/$(basename "$f" .s16)_$k" bs=1024 skip=$k count=2 status=none
  done
done

run_one() {
  local t=$1 work="$OUT/work/$1" reg="fuzz/corpus/$1" log="$OUT/$1.log" bin=$FUZZER
  if [ "$t" = basic_op ]; then bin=${FUZZER}_basic_op; fi
  mkdir -p "$work" "$reg"
  if ZEPS_FUZZ_TARGET="$t" "$bin" -max_total_time="$PER" -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
       -print_final_stats=1 -artifact_prefix="$OUT/$t-" "$work" "$reg" "$SEEDS" >"$log" 2>&1; then
    if [ "$UPDATE" = 1 ]; then
      ZEPS_FUZZ_TARGET="$t" "$bin" -merge=1 -max_len=1024 "$reg" "$work" >>"$log" 2>&1
      find "$reg" -type f -size +1k -delete
    fi
    printf '%-44s %12s executions  ok\n' "$t" "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
  else
    printf '%-44s FAILED (see %s)\n' "$t" "$log"
    grep -m5 -E 'ERROR|violation|runtime error' "$log" || true
    return 1
  fi
}
export -f run_one
status=0
printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} bash -c 'run_one "$@"' _ {} | tee "$bdir/fuzz-summary.txt" || status=1
exit $status

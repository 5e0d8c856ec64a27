#!/usr/bin/env bash
# Runs the fuzz targets, each for a fixed time, then prints the slowest
# input of each target's corpus and its time per MB.
#
#   fuzz/run.sh [--seconds N | --minutes N] [--jobs N] [--bin DIR]
#               [--work DIR] [TARGET...]
#
# Targets: reader, dovinspect, scene_streams, api (default: all). Without
# --bin the targets are built first in build-fuzz (clang, libFuzzer, ASan,
# UBSan). With --bin DIR the fuzz_* binaries in DIR are run as they are:
# they need only the system's libstdc++ and zlib, so they can be copied to
# another machine together with fuzz/corpus (or this whole checkout).
# --jobs N runs N fuzzing processes per target (libFuzzer's fork mode).
# The growing corpus of each target stays in WORK/corpus/TARGET (default
# WORK: build-fuzz), the seeds in fuzz/corpus/TARGET are only read. An input
# that fails lands in WORK/artifacts, and the script exits with 1.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=60 jobs=1 bin="" work=build-fuzz targets=()
while [ $# -gt 0 ]; do
  case "$1" in
    --seconds) seconds=$2; shift 2 ;;
    --minutes) seconds=$(($2 * 60)); shift 2 ;;
    --jobs) jobs=$2; shift 2 ;;
    --bin) bin=$2; shift 2 ;;
    --work) work=$2; shift 2 ;;
    -h|--help) awk 'NR > 1 && !/^#/ { exit } NR > 1 { sub(/^# ?/, ""); print }' "$0"; exit 0 ;;
    -*) echo "unknown option $1" >&2; exit 2 ;;
    *) targets+=("$1"); shift ;;
  esac
done
[ ${#targets[@]} -gt 0 ] || targets=(reader dovinspect scene_streams api)

if [ -z "$bin" ]; then
  launcher=()
  command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
        -DDOVWRITER_BUILD_FUZZ=ON -DDOVWRITER_BUILD_TESTS=OFF -DDOVWRITER_BUILD_EXAMPLES=OFF \
        -DDOVWRITER_BUILD_PYTHON=OFF -DDOVWRITER_BUILD_FORTRAN=OFF \
        "${launcher[@]}" >/dev/null
  cmake --build build-fuzz -j "$(nproc)" --target $(printf 'fuzz_%s ' "${targets[@]}")
  bin=build-fuzz/fuzz
fi
mkdir -p "$work/artifacts"

# The slowest input of a corpus: each input runs once in one process, and
# libFuzzer reports the time of each.
slowest() {
  local target=$1 corpus=$2
  { find "$corpus" "fuzz/corpus/$target" -type f -print0 | xargs -0 -r "$bin/fuzz_$target" 2>&1 || true; } |
    sed -n 's/^Executed \(.*\) in \([0-9]*\) ms$/\2 \1/p' | sort -n | tail -1 |
    while read -r ms file; do
      bytes=$(stat -c %s "$file")
      awk -v t="$target" -v f="$file" -v ms="$ms" -v b="$bytes" 'BEGIN {
        printf "%-14s slowest input %s: %d bytes, %d ms, %.0f ms per MB\n",
               t, f, b, ms, ms / (b > 0 ? b : 1) * 1048576 }'
    done
}

failed=0 report=()
for target in "${targets[@]}"; do
  corpus="$work/corpus/$target"
  mkdir -p "$corpus"
  fork=()
  [ "$jobs" -gt 1 ] && fork=(-fork="$jobs")
  echo "== fuzz_$target: $seconds s, $jobs job(s)"
  if ! "$bin/fuzz_$target" "${fork[@]}" -max_total_time="$seconds" -timeout=30 \
       -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$work/artifacts/$target-" \
       "$corpus" "fuzz/corpus/$target" >"$work/fuzz_$target.log" 2>&1; then
    failed=1
    echo "fuzz_$target found a failure:" >&2
    grep -A40 -m1 -E "^==[0-9]+==ERROR|^\*\*\*|runtime error|deadly signal|Timeout|out-of-memory" \
      "$work/fuzz_$target.log" >&2 || tail -40 "$work/fuzz_$target.log" >&2
  fi
  grep -E "^stat::number_of_executed_units|^#[0-9]+: cov" "$work/fuzz_$target.log" | tail -1 || true
  report+=("$(slowest "$target" "$corpus")")
done
printf '%s\n' "${report[@]}"
exit "$failed"

#!/usr/bin/env bash
# Builds the library in Release with the benchmark, runs it and plots the
# result. Arguments go to dovbench (for example --quick, --max-nodes 1e6).
#   bash bench/run.sh [dovbench options]
# The table goes to the terminal and to build-bench/dovbench.txt, the rows to
# build-bench/dovbench.csv and the plot to build-bench/dovbench.png.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
out="$root/build-bench"

bash "$root/scripts/deps.sh" --bench
cmake -S "$root" -B "$out" -DCMAKE_BUILD_TYPE=Release -DDOVWRITER_BUILD_BENCH=ON \
  -DDOVWRITER_BUILD_TESTS=OFF -DDOVWRITER_BUILD_TOOLS=OFF -DDOVWRITER_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$out" -j2 --target dovbench >/dev/null

"$out/bench/dovbench" --csv "$out/dovbench.csv" --dir "${DOVBENCH_DIR:-/tmp/dovbench}" "$@" |
  tee "$out/dovbench.txt"
bash "$root/bench/plot" "$out/dovbench.csv" "$out/dovbench.png"
echo "plot: $out/dovbench.png"

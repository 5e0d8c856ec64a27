#!/usr/bin/env bash
# Builds the library in Release with the benchmark, runs it and plots the
# result. Arguments go to dovbench (for example --quick, --max-nodes 1e6,
# --threads 16, --modes fast1,fastN).
#   bash bench/run.sh [dovbench options]
#   bash bench/run.sh --bundle DIR
#       builds, then copies dovbench and the shared libraries it needs into
#       DIR (with run.sh and plot), to carry to another machine; glibc's own
#       (libc, libm, ld-linux, libresolv) stay the machine's.
#   bash bench/run.sh --binary PATH [dovbench options]
#       runs an already-built dovbench without building anything; libraries
#       beside it come first (LD_LIBRARY_PATH).
#   bash bench/run.sh --mpi RANKS [dovbench_mpi options]
#       the MPI row: builds dovbench_mpi (where MPI is found) and runs it
#       under mpirun with RANKS ranks; an already-built one runs as
#       mpirun -np RANKS --oversubscribe PATH/dovbench_mpi [options].
# dovbench needs libDovWriter.so.0, libdeflate.so.0, libz.so.1,
# libhdf5_serial.so.103 (which brings libsz, libaec, libcurl and theirs),
# libstdc++ and libgcc_s: `ldd dovbench` lists them all.
# The table goes to the terminal and to OUT/dovbench.txt, the rows to
# OUT/dovbench.csv and, where gnuplot is there, the plot to
# OUT/dovbench.png; OUT is build-bench, or beside the binary with --binary.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"

build() {
  bash "$root/scripts/deps.sh" --bench
  cmake -S "$root" -B "$root/build-bench" -DCMAKE_BUILD_TYPE=Release -DDOVWRITER_BUILD_BENCH=ON \
    -DDOVWRITER_BUILD_TESTS=OFF -DDOVWRITER_BUILD_TOOLS=OFF -DDOVWRITER_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build "$root/build-bench" -j2 --target dovbench >/dev/null
  if cmake --build "$root/build-bench" --target help | grep -q dovbench_mpi; then
    cmake --build "$root/build-bench" -j2 --target dovbench_mpi >/dev/null
  fi
}

# mpi RANKS [options]: the MPI row, its table beside dovbench's.
mpi() {
  local ranks=$1 out="$root/build-bench" root_flag=()
  shift
  build
  [ "$(id -u)" -eq 0 ] && root_flag=(--allow-run-as-root)
  mpirun -np "$ranks" --bind-to none --oversubscribe "${root_flag[@]}" "$out/bench/dovbench_mpi" \
    --dir "${DOVBENCH_DIR:-/tmp/dovbench}" "$@" | tee "$out/dovbench_mpi.txt"
}

bundle() {
  local dir=$1
  mkdir -p "$dir"
  local programs=("$root/build-bench/bench/dovbench")
  [ -f "$root/build-bench/bench/dovbench_mpi" ] && programs+=("$root/build-bench/bench/dovbench_mpi")
  cp "${programs[@]}" "$root/bench/run.sh" "$root/bench/plot" "$dir/"
  ldd "${programs[@]}" | awk '/=> \//{print $3}' | sort -u |
    grep -vE '/(libc|libm|ld-linux[^/]*|libresolv)\.so' | xargs -I{} cp -L {} "$dir/"
  echo "bundle: $dir ($(du -sh "$dir" | cut -f1)); run: bash $dir/run.sh --binary $dir/dovbench"
}

binary=""
case "${1:-}" in
  --bundle) build; bundle "${2:?--bundle needs a folder}"; exit 0 ;;
  --mpi) shift; mpi "${1:?--mpi needs a rank count}" "${@:2}"; exit 0 ;;
  --binary) binary="${2:?--binary needs a path}"; shift 2 ;;
esac

if [ -n "$binary" ]; then
  out="$(cd "$(dirname "$binary")" && pwd)"
  export LD_LIBRARY_PATH="$out${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}"
  plot="$out/plot"
  [ -f "$plot" ] || plot="$root/bench/plot"
else
  build
  out="$root/build-bench"
  binary="$out/bench/dovbench"
  plot="$root/bench/plot"
fi

"$binary" --csv "$out/dovbench.csv" --dir "${DOVBENCH_DIR:-/tmp/dovbench}" "$@" |
  tee "$out/dovbench.txt"
if command -v gnuplot >/dev/null; then
  bash "$plot" "$out/dovbench.csv" "$out/dovbench.png"
  echo "plot: $out/dovbench.png"
fi

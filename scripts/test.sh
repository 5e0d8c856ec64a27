#!/usr/bin/env bash
# Builds the library and runs every test stage: the demo of the README's
# first command, a release build with the whole suite, the ParaView reader
# plugin with its pvpython tests, the suite again under AddressSanitizer and
# UndefinedBehaviorSanitizer, then the threaded tests under ThreadSanitizer,
# then a short run of every fuzz target. Each stage prints how long it took,
# and a summary of all stages closes the run.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc 2>/dev/null || echo 2)
summary=()

# stage TITLE FUNCTION: runs FUNCTION under a heading and records its time.
stage() {
  local title=$1 started=$SECONDS
  echo "== $title"
  "$2"
  local took=$((SECONDS - started))
  summary+=("$(printf '%-48s %4d min %02d s' "$title" $((took / 60)) $((took % 60)))")
  echo "== $title: $((took / 60)) min $((took % 60)) s"
}

dependencies() { bash scripts/deps.sh --tests; }

# The README's first command: it leaves build/ configured without tests,
# which the release stage must switch on again (and ctest refuses to pass
# without tests).
demo() { bash scripts/setup-and-demo.sh; }

release() {
  cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DDOVWRITER_BUILD_TESTS=ON \
        -DDOVWRITER_BUILD_PARAVIEW=OFF >/dev/null
  cmake --build build -j "$jobs"
  (cd build && ctest --output-on-failure --no-tests=error -j "$jobs" -LE mpi)
}

# The ParaView reader plugin on the release build: installing ParaView is
# large on a bare machine, so it has its own stage (budget: 8 minutes).
paraview_plugin() {
  bash scripts/deps.sh --paraview
  cmake -S . -B build -DDOVWRITER_BUILD_PARAVIEW=ON >/dev/null
  cmake --build build -j "$jobs" --target DovReader plate_model
  (cd build && ctest --output-on-failure --no-tests=error -j "$jobs" -L paraview)
}

sanitizers() {
  cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDOVWRITER_SANITIZE=ON \
        -DDOVWRITER_BUILD_TESTS=ON -DDOVWRITER_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build build-asan -j "$jobs"
  (cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
     ctest --output-on-failure --no-tests=error -j "$jobs" -LE no-sanitizer)
}

# Only the programs that hold threaded tests (label "threads") are built.
threads() {
  cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDOVWRITER_TSAN=ON \
        -DDOVWRITER_BUILD_TESTS=ON -DDOVWRITER_BUILD_EXAMPLES=OFF -DDOVWRITER_BUILD_TOOLS=OFF \
        -DDOVWRITER_BUILD_PYTHON=OFF -DDOVWRITER_BUILD_FORTRAN=OFF >/dev/null
  cmake --build build-tsan -j "$jobs" --target threads_tests
  (cd build-tsan && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
     ctest --output-on-failure --no-tests=error -j "$jobs" -L threads)
}

# One file written by all ranks of an MPI job: the release build's MPI
# test program under mpirun with 1, 2 and 4 ranks (label `mpi`), one run at
# a time, since 4 ranks already fill 2 cores twice. Budget: 2 minutes.
mpi() {
  cmake --build build -j "$jobs" --target test_mpi
  (cd build && ctest --output-on-failure --no-tests=error -L mpi)
}

# The fuzz targets under clang with ASan and UBSan, each for a short fixed
# time from the seed corpus, so that a regression that fuzzing finds at once
# fails the run; then the slowest input of each corpus and its time per MB.
fuzzing() { bash fuzz/run.sh --seconds 25; }

stage "Dependencies" dependencies
stage "Demo (the README's first command)" demo
stage "Release build and tests" release
stage "MPI: one file from 1, 2 and 4 ranks" mpi
stage "ParaView reader plugin and pvpython tests" paraview_plugin
stage "Sanitizer build (ASan + UBSan) and tests" sanitizers
stage "ThreadSanitizer build and threaded tests" threads
stage "Fuzzing (4 targets, 25 s each)" fuzzing

echo "== Stage times"
printf '%s\n' "${summary[@]}"

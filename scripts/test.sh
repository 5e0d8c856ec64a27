#!/usr/bin/env bash
# Builds the library and runs the whole test suite twice: a release build,
# then a build under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/deps.sh --tests
jobs=$(nproc 2>/dev/null || echo 2)

echo "== Release build and tests"
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j "$jobs"
(cd build && ctest --output-on-failure -j "$jobs")

echo "== Sanitizer build (ASan + UBSan) and tests"
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DDOVWRITER_SANITIZE=ON \
      -DDOVWRITER_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build-asan -j "$jobs"
(cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
   ctest --output-on-failure -j "$jobs" -LE no-sanitizer)

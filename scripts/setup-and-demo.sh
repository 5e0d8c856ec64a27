#!/usr/bin/env bash
# Builds the library and runs the example host.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/deps.sh
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j "$jobs"
./build/examples/hello_scene

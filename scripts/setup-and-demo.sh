#!/usr/bin/env bash
# Builds the library, writes the demo model with the example host, and
# shows what is in the file by reading it back.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/deps.sh
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j "$jobs"

model=build/plate_model.dov
time ./build/examples/plate_model "$model"
./build/examples/show_model "$model"

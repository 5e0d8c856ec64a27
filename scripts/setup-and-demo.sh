#!/usr/bin/env bash
# Builds what the demo needs (the library, the two examples and dovinspect;
# no tests), writes the demo model with the example host, and shows what is
# in the file by reading it back.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/deps.sh
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DDOVWRITER_BUILD_TESTS=OFF >/dev/null
cmake --build build -j "$jobs" --target plate_model show_model dovinspect

model=build/plate_model.dov
time ./build/examples/plate_model "$model"
./build/examples/show_model "$model"

echo "== dovinspect info"
./build/tools/dovinspect info "$model"
echo "== dovinspect verify"
./build/tools/dovinspect verify "$model"
echo "== dovinspect check"
./build/tools/dovinspect check "$model"

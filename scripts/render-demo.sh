#!/usr/bin/env bash
# Renders the demo model with ParaView, offscreen, to docs/demo.png: builds
# the reader plugin and the demo host, writes the model, and draws it with
# pvpython (paraview/render_demo.py). As root on a bare Debian 12 it
# installs what is missing first.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/deps.sh --paraview
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DDOVWRITER_BUILD_PARAVIEW=ON >/dev/null
cmake --build build -j "$jobs" --target DovReader plate_model
./build/examples/plate_model build/plate_model.dov
plugin=$(find build -name DovReader.so -path '*/plugins/DovReader/*' | head -n 1)
paraview/offscreen.sh pvpython --force-offscreen-rendering paraview/render_demo.py \
  --plugin "$plugin" build/plate_model.dov docs/demo.png --check

#!/usr/bin/env bash
# Installs what building and testing need, from Debian packages, only where
# something is missing. Run as root on a bare machine; harmless elsewhere.
set -euo pipefail

# Building the library, the examples and the tools (the demo needs no more).
packages=(cmake gcc g++ make pkg-config zlib1g-dev libdeflate-dev libboost-dev)
installed() {
  dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "install ok installed"
}
if [ "${1:-}" = "--tests" ]; then
  # GoogleTest; gfortran builds the Fortran module (left out where no
  # Fortran compiler is found, but the tests want it); an independent VTK
  # reader checks the files that dovinspect exports, and Python's json
  # module its JSON; the Python module is built with pybind11 and tested
  # with pytest, its meshio conversion with meshio; the fuzz targets need clang and its libFuzzer and
  # sanitizer runtimes; the MPI library and its tests need MPI's headers
  # and mpirun. ParaView's Python package brings VTK too and
  # conflicts with Debian's own, so where ParaView is installed it serves.
  packages+=(libgtest-dev googletest gfortran python3 python3-numpy python3-dev \
             pybind11-dev python3-pytest python3-meshio clang libclang-rt-14-dev \
             libopenmpi-dev openmpi-bin)
  installed python3-paraview || packages+=(python3-vtk9)
fi
if [ "${1:-}" = "--paraview" ]; then
  # The reader plugin: ParaView's headers and what its CMake package looks
  # for (MPI's C interface, Python's headers, expat, lzma), pvpython, and an
  # X server in memory with a software OpenGL for rendering offscreen.
  packages+=(paraview-dev python3-paraview libopenmpi-dev python3-dev libexpat1-dev liblzma-dev
             xvfb libgl1-mesa-dri)
fi
if [ "${1:-}" = "--bench" ]; then
  packages+=(libhdf5-dev gnuplot-nox libopenmpi-dev openmpi-bin)
fi

missing=()
for p in "${packages[@]}"; do
  installed "$p" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi
echo "Installing: ${missing[*]}"
if [ "$(id -u)" -ne 0 ]; then
  echo "Missing packages and not root; install them first: ${missing[*]}" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null

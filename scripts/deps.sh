#!/usr/bin/env bash
# Installs what building and testing need, from Debian packages, only where
# something is missing. Run as root on a bare machine; harmless elsewhere.
set -euo pipefail

# Building the library, the examples and the tools (the demo needs no more).
packages=(cmake gcc g++ make pkg-config zlib1g-dev libdeflate-dev libboost-dev)
if [ "${1:-}" = "--tests" ]; then
  # GoogleTest; gfortran builds the Fortran module (left out where no
  # Fortran compiler is found, but the tests want it); an independent VTK
  # reader checks the files that dovinspect exports, and Python's json
  # module its JSON; the Python module is built with pybind11 and tested
  # with pytest; the fuzz targets need clang and its libFuzzer and
  # sanitizer runtimes; the MPI library and its tests need MPI's headers
  # and mpirun.
  packages+=(libgtest-dev googletest gfortran python3 python3-vtk9 python3-numpy python3-dev \
             pybind11-dev python3-pytest clang libclang-rt-14-dev libopenmpi-dev openmpi-bin)
fi
if [ "${1:-}" = "--bench" ]; then
  packages+=(libhdf5-dev gnuplot-nox libopenmpi-dev openmpi-bin)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
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

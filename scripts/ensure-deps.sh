#!/usr/bin/env bash
# Installs the Debian packages the build needs, only those that are missing.
set -euo pipefail

# Build: compilers, CMake, GoogleTest, Google Benchmark, libsndfile (afx), the LADSPA and LV2 headers (bridges),
# pybind11 and Python's headers with NumPy and soundfile (the Python package and its demo).
# Tests: clang with libFuzzer (fuzz/run.sh), the real hosts the bridges are tried in, and the Python
# package's test tools (pytest, matplotlib, dask.distributed, pip and venv for the install check), and
# Ardour 7 for the plug-ins (its harness is driven by Debian's Python with NumPy, and exports under valgrind's
# core when Ardour's own exports keep aborting).
packages=(cmake g++ make pkg-config libgtest-dev libgmock-dev libbenchmark-dev libsndfile1-dev ladspa-sdk lv2-dev
  pybind11-dev python3-dev python3-numpy python3-soundfile)
if [ "${1:-}" = --tests ]; then
  packages+=(clang libclang-rt-14-dev ffmpeg sox ecasound lv2file lilv-utils sordi ardour valgrind
    python3-pytest python3-matplotlib python3-distributed python3-pip python3-venv python3-setuptools)
fi
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing missing packages: ${missing[*]}"
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then SUDO=sudo; else
    echo "error: these Debian packages are missing and this user cannot install them: ${missing[*]}" >&2
    echo "       run as root: apt-get update && apt-get install -y ${missing[*]}" >&2
    exit 1
  fi
else
  SUDO=
fi
export DEBIAN_FRONTEND=noninteractive
if ! { $SUDO apt-get update -qq && $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >/tmp/af-apt.log 2>&1; then
  echo "error: apt-get could not install: ${missing[*]} (log: /tmp/af-apt.log)" >&2
  echo "       check the package archive is reachable, then run: apt-get install -y ${missing[*]}" >&2
  exit 1
fi

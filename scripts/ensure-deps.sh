#!/usr/bin/env bash
# Installs the Debian packages the build needs, only those that are missing.
set -euo pipefail

# Build: compilers, CMake, GoogleTest, Google Benchmark, libsndfile (afx), the LADSPA and LV2 headers (bridges).
# Tests: clang with libFuzzer (fuzz/run.sh) and the real hosts the bridges are tried in.
packages=(cmake g++ make pkg-config libgtest-dev libgmock-dev libbenchmark-dev libsndfile1-dev ladspa-sdk lv2-dev)
if [ "${1:-}" = --tests ]; then
  packages+=(clang libclang-rt-14-dev ffmpeg sox ecasound lv2file lilv-utils sordi)
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

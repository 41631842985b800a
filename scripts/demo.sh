#!/usr/bin/env bash
# Builds the module and the reference host, then renders the bundled example.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/ensure-deps.sh
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DAF_BUILD_BENCH=OFF >build.configure.log 2>&1 || { cat build.configure.log; exit 1; }
cmake --build build -j"$jobs" --target AudioFilters afx >/dev/null
build/bin/afx demo "$@"

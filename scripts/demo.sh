#!/usr/bin/env bash
# Builds the module, the reference host and the Python package, then renders the
# bundled example with afx and again with the Python package.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/ensure-deps.sh
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DAF_BUILD_BENCH=OFF >build.configure.log 2>&1 || { cat build.configure.log; exit 1; }
cmake --build build -j"$jobs" --target AudioFilters afx audiofilters_python >/dev/null
build/bin/afx demo "$@"
output=afx-demo.wav
[ $# -gt 0 ] && [ "${1#-}" = "$1" ] && output=$1
PYTHONPATH=build/python /usr/bin/python3 examples/python-demo.py build/bin/examples/afx-demo-input.wav "$output"

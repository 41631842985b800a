#!/usr/bin/env bash
# Builds and runs every test: a Release build with the Python package, the VST 2,
# LV2 and LADSPA plug-ins in Ardour 7 headless, the suite again with the plain
# loops, then under the address and undefined-behaviour sanitizers, under the
# thread sanitizer, built by clang, the Python package installed by pip, the
# validator over every registered effect, and each fuzzer for a minute.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/ensure-deps.sh --tests
jobs=$(nproc 2>/dev/null || echo 2)

run_suite() {  # build folder, extra CMake arguments...
  local folder=$1; shift
  echo "== Building $folder"
  cmake -S . -B "$folder" -DAF_BUILD_BENCH=OFF "$@" >"$folder.configure.log" 2>&1 || { cat "$folder.configure.log"; exit 1; }
  cmake --build "$folder" -j"$jobs"
  echo "== Testing $folder"
  ctest --test-dir "$folder" -j"$jobs" --output-on-failure --timeout 900
}

run_suite build -DCMAKE_BUILD_TYPE=Release
echo "== All VST 2 plug-in files, installed, in Ardour 7 (headless), each compared with afx bit for bit"
sh tests/hosts/ardour/vst2-installed.sh build
echo "== Every LV2 and LADSPA plug-in in Ardour 7 (headless), values set in Hz and dB, each compared with afx bit for bit"
LADSPA_PATH=$PWD/build/bin LV2_PATH=$PWD/build/lv2 /usr/bin/python3 tests/hosts/ardour/bridges.py --afx build/bin/afx
echo "== The Release suite again with the vector kernels switched off (plain per-channel loops)"
AF_FORCE_SCALAR=1 build/bin/af_unit_tests --gtest_brief=1
AF_FORCE_SCALAR=1 build/bin/af_host_tests --gtest_brief=1
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  run_suite build-sanitize -DCMAKE_BUILD_TYPE=Debug -DAF_SANITIZE=ON
echo "== The suite under the thread sanitizer (the render pipeline's threads, the module's load and unload)"
# The external hosts (FFmpeg, SoX, ecasound, lv2file) cannot load instrumented libraries: those tests are left out here.
cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DAF_SANITIZE_THREAD=ON -DAF_BUILD_BENCH=OFF \
  >build-tsan.configure.log 2>&1 || { cat build-tsan.configure.log; exit 1; }
cmake --build build-tsan -j"$jobs" --target af_unit_tests af_host_tests
TSAN_OPTIONS=halt_on_error=1 build-tsan/bin/af_unit_tests --gtest_brief=1
TSAN_OPTIONS=halt_on_error=1 build-tsan/bin/af_host_tests --gtest_brief=1 --gtest_filter='-Effects/Hosts.*:Listings.*:Bridges/DefaultsInHosts.*:UncheckedValues.*:Lv2Metadata.*:FivePointOne.*'
echo "== The test programs built by clang (the compiler of the fuzzers), Release"
CC=clang CXX=clang++ cmake -S . -B build-clang -DCMAKE_BUILD_TYPE=Release -DAF_BUILD_BENCH=OFF \
  >build-clang.configure.log 2>&1 || { cat build-clang.configure.log; exit 1; }
cmake --build build-clang -j"$jobs" --target af_unit_tests af_host_tests
build-clang/bin/af_unit_tests --gtest_brief=1
build-clang/bin/af_host_tests --gtest_brief=1
echo "== The Python package installed by pip from ./python (Debian's packages only, nothing downloaded)"
rm -rf build-python-venv
/usr/bin/python3 -m venv --system-site-packages build-python-venv
AF_CMAKE_BUILD="$PWD/build" build-python-venv/bin/pip install --quiet --no-build-isolation --no-index ./python \
  >build-python-pip.log 2>&1 ||
  { cat build-python-pip.log; exit 1; }
build-python-venv/bin/python -c 'import audiofilters, sys; sys.exit("build-python-venv" not in audiofilters.__file__)'
(cd python/tests && AF_BIN="$PWD/../../build/bin" ../../build-python-venv/bin/python -m pytest -q -p no:cacheprovider \
  test_parameters.py test_against_afx.py)
echo "== Validating every registered effect (Release, level 5; sanitizers, level 2)"
build/bin/afx validate --level 5
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  build-sanitize/bin/afx validate --level 2

echo "== Fuzzing: each target for 60 seconds"
bash fuzz/run.sh 60

echo "All tests passed (Release with the Python package, pip install, scalar, address/UB and thread sanitizers, clang, validator, fuzzers)."

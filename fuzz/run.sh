#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (a build of their own, in build-fuzz)
# and runs each for the given number of seconds.
#
#   bash fuzz/run.sh [SECONDS] [TARGET...]     targets: dispatcher process strings (default: all)
#   bash fuzz/run.sh --build-only
#
# The build is the project's CMake build with AF_BUILD_FUZZ (the fuzz targets
# and the fuzzer's coverage instrumentation) and AF_SANITIZE (address and
# undefined behaviour), so the arithmetic flags are the project's own. New
# inputs go to build-fuzz/corpus/<target>; the seeds in fuzz/corpus/<target>
# are read only. A crash leaves its input in build-fuzz/artifacts/ and makes
# this script fail; replay it with: build-fuzz/fuzz_<target> build-fuzz/artifacts/<file>
set -euo pipefail
cd "$(dirname "$0")/.."

build_only=0
seconds=60
if [[ ${1:-} == --build-only ]]; then build_only=1; shift; elif [[ -n ${1:-} ]]; then seconds=$1; shift; fi
targets=("$@")
[[ ${#targets[@]} -eq 0 ]] && targets=(dispatcher process strings)

out=build-fuzz
mkdir -p "$out/artifacts"
CXX=${CXX:-clang++} cmake -S . -B "$out" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-g -O1" \
  -DAF_BUILD_FUZZ=ON -DAF_SANITIZE=ON -DAF_BUILD_TESTS=OFF -DAF_BUILD_BENCH=OFF >/dev/null
cmake --build "$out" -j2 --target "${targets[@]/#/fuzz_}"
[[ $build_only -eq 1 ]] && exit 0

# Huge sample rates are folded back by the targets; a failed allocation must
# come back as null (the module's documented answer), not abort.
export ASAN_OPTIONS=${ASAN_OPTIONS:-allocator_may_return_null=1:detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
status=0
for target in "${targets[@]}"; do
  mkdir -p "$out/corpus/$target"
  echo "== fuzz_$target for ${seconds}s"
  "$out/fuzz_$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 -print_final_stats=1 \
    -artifact_prefix="$out/artifacts/$target-" "$out/corpus/$target" "fuzz/corpus/$target" || status=1
done
exit $status

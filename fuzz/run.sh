#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (outside the main g++ build) and runs
# each for the given number of seconds.
#
#   bash fuzz/run.sh [SECONDS] [TARGET...]     targets: dispatcher process strings (default: all)
#   bash fuzz/run.sh --build-only
#
# The module's sources (platform, frame, module, effects) are compiled straight
# into each target with -fsanitize=fuzzer,address,undefined. New inputs go to
# build-fuzz/corpus/<target>; the seeds in fuzz/corpus/<target> are read only.
# A crash leaves its input in build-fuzz/artifacts/ and makes this script fail;
# replay it with: build-fuzz/fuzz_<target> build-fuzz/artifacts/<file>
set -euo pipefail
cd "$(dirname "$0")/.."

build_only=0
seconds=60
if [[ ${1:-} == --build-only ]]; then build_only=1; shift; elif [[ -n ${1:-} ]]; then seconds=$1; shift; fi
targets=("$@")
[[ ${#targets[@]} -eq 0 ]] && targets=(dispatcher process strings)

CXX=${CXX:-clang++}
out=build-fuzz
mkdir -p "$out/obj" "$out/artifacts"
flags=(-std=c++20 -g -O1 -ffp-contract=off -fno-fast-math -fno-omit-frame-pointer
       -fsanitize=address,undefined -fno-sanitize-recover=undefined
       -Iplatform/include -Iframe -Imodule -I. -Ifuzz)

# Compile the module's sources once; again when a source or any header is newer.
newest_header=$(find platform frame module effects -name '*.h' -printf '%T@\n' | sort -n | tail -1)
objects=()
stale=()
for source in platform/src/*.cpp frame/*.cpp module/*.cpp effects/*/*.cpp; do
  object="$out/obj/${source//\//_}.o"
  objects+=("$object")
  if [[ ! -f $object ]] || [[ $source -nt $object ]] ||
     awk -v h="$newest_header" -v o="$(stat -c %Y "$object")" 'BEGIN { exit !(h > o) }'; then
    stale+=("$source" "$object")
  fi
done
if [[ ${#stale[@]} -gt 0 ]]; then
  printf '%s\n' "${stale[@]}" |
    xargs -P 2 -n 2 sh -c "$CXX ${flags[*]} -fsanitize=fuzzer-no-link -c \"\$0\" -o \"\$1\""
fi

for target in "${targets[@]}"; do
  "$CXX" "${flags[@]}" -fsanitize=fuzzer "fuzz/fuzz_$target.cpp" "${objects[@]}" -ldl -o "$out/fuzz_$target"
done
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

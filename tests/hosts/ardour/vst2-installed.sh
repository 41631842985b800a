#!/bin/sh
# The installed VST 2 plug-in files in Ardour 7, headless: installs the build
# into a scratch prefix, checks that every file exports only VSTPluginMain and
# main and points nowhere into the build tree, then runs all of them in Ardour
# against afx (vst2.py). Usage: vst2-installed.sh BUILD_DIR
set -eu
build=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
table="$here/../../../bridges/vst2/Variants.cmake"
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
folder="$prefix/lib/vst/AudioFilters"
expected=$(grep -c '^ *"Internal ' "$table")
count=0
for file in "$folder"/*.so; do
    exported=$(nm -D --defined-only "$file" | awk '{print $3}' | sort | tr '\n' ' ')
    [ "$exported" = "VSTPluginMain main " ] || { echo "$file exports: $exported" >&2; exit 1; }
    if readelf -d "$file" | grep -q "$build"; then echo "$file points into the build tree" >&2; exit 1; fi
    count=$((count + 1))
done
[ "$count" -eq "$expected" ] || { echo "$count plug-in files installed, $expected in the table" >&2; exit 1; }
echo "installed: $count VST 2 files in $folder, each exporting only VSTPluginMain and main"
unset AF_MODULE_PATH
/usr/bin/python3 "$here/vst2.py" "$folder" --afx "$build/bin/afx" --table "$table"

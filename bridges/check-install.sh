#!/bin/sh
# Installs the build into a scratch prefix and checks that the installed
# bridges find the module on their own: the LADSPA plug-in from lib/ladspa
# (module in lib/audiofilters) and the self-contained LV2 bundle in lib/lv2.
# Usage: check-install.sh BUILD_DIR
set -eu
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
for tool in analyseplugin lv2info; do
    command -v "$tool" >/dev/null 2>&1 || { echo "missing $tool: apt-get install -y ladspa-sdk lilv-utils" >&2; exit 1; }
done
cmake --install "$build" --prefix "$prefix" >/dev/null
test -f "$prefix/lib/ladspa/audiofilters-ladspa.so"
test -f "$prefix/lib/audiofilters/libAudioFilters.so"
test -f "$prefix/lib/lv2/AudioFilters.lv2/manifest.ttl"
test -f "$prefix/lib/lv2/AudioFilters.lv2/libAudioFilters.so"
# Nothing points back into the build tree.
unset AF_MODULE_PATH
out=$(LADSPA_PATH="$prefix/lib/ladspa" analyseplugin audiofilters-ladspa af_volume_stereo)
echo "$out" | grep -q '"Level (dB)" input, control, -999 to 6, default 0' || { echo "$out" >&2; exit 1; }
out=$(LV2_PATH="$prefix/lib/lv2" lv2info urn:audiofilters:volume-stereo)
echo "$out" | grep -q 'Symbol: *level' || { echo "$out" >&2; exit 1; }
echo "installed bridges load the installed module"

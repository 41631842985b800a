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
said=$(cmake --install "$build" --prefix "$prefix")
# The install says where the plug-ins went.
echo "$said" | grep -q "LADSPA plug-in: $prefix/lib/ladspa/audiofilters-ladspa.so" || { echo "$said" >&2; exit 1; }
echo "$said" | grep -q "LV2 bundle .*: $prefix/lib/lv2/AudioFilters.lv2" || { echo "$said" >&2; exit 1; }
test -f "$prefix/lib/ladspa/audiofilters-ladspa.so"
test -f "$prefix/lib/audiofilters/libAudioFilters.so"
test -f "$prefix/lib/lv2/AudioFilters.lv2/manifest.ttl"
test -f "$prefix/lib/lv2/AudioFilters.lv2/libAudioFilters.so"
test -f "$prefix/lib/lv2/AudioFilters.lv2/presets.ttl"
# Nothing points back into the build tree.
unset AF_MODULE_PATH
out=$(LADSPA_PATH="$prefix/lib/ladspa" analyseplugin audiofilters-ladspa af_volume_stereo)
echo "$out" | grep -q '"Level (dB)" input, control, -90 to 6, default 0' || { echo "$out" >&2; exit 1; }
out=$(LV2_PATH="$prefix/lib/lv2" lv2info urn:audiofilters:volume-stereo)
echo "$out" | grep -q 'Symbol: *level' || { echo "$out" >&2; exit 1; }
# A link or a lone copy elsewhere (/usr/lib/ladspa, ~/.ladspa) finds the
# libraries in the folder the build installs them into (here: the configured
# prefix, not the scratch one, so that case is only checked as written).
out=$(readelf -d "$prefix/lib/ladspa/audiofilters-ladspa.so")
echo "$out" | grep -q "RUNPATH.*\$ORIGIN/../audiofilters:.*/lib/audiofilters\]" || { echo "$out" >&2; exit 1; }
out=$(LADSPA_PATH="$prefix/lib/ladspa" analyseplugin audiofilters-ladspa af_notch_stereo)
echo "$out" | grep -q 'Plugin Label: "af_notch_stereo"' || { echo "$out" >&2; exit 1; }
echo "installed bridges load the installed module"

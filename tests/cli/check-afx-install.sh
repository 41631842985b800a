#!/bin/bash
# Installs the build into a scratch prefix and checks the installed afx on its
# own: it finds the installed module and demo input, its man page formats,
# and its bash completion offers effect and parameter names.
# Usage: check-afx-install.sh BUILD_DIR
set -euo pipefail
build=$1
prefix=$(mktemp -d)
work=$(mktemp -d)
trap 'rm -rf "$prefix" "$work"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
afx=$prefix/bin/afx
test -x "$afx"
test -f "$prefix/share/man/man1/afx.1"
test -f "$prefix/share/bash-completion/completions/afx"
# Nothing of the build tree is used: the module comes from the prefix.
out=$("$afx" list)
echo "$out" | grep -q 'Internal Highpass Stereo' || { echo "$out" >&2; exit 1; }
(cd "$work" && "$afx" demo -q out.wav) && test -s "$work/out.wav"
if command -v groff >/dev/null 2>&1; then
    warnings=$(groff -man -ww -z "$prefix/share/man/man1/afx.1" 2>&1)
    [ -z "$warnings" ] || { echo "$warnings" >&2; exit 1; }
    text=$(groff -man -Tutf8 -P-cbou "$prefix/share/man/man1/afx.1")
    echo "$text" | grep -q 'render audio files through the AudioFilters effects' || { echo "$text" >&2; exit 1; }
fi
# Completion, as bash runs it at a prompt.
complete_words() {
    PATH="$prefix/bin:$PATH" bash -c '
        source "$1"; shift
        COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _afx
        printf "%s\n" "${COMPREPLY[@]}"' completion "$prefix/share/bash-completion/completions/afx" "$@"
}
[ "$(complete_words afx rend)" = render ] || { complete_words afx rend >&2; exit 1; }
[ "$(complete_words afx render in.wav out.wav -e parametric)" = parametric-eq ] || exit 1
got=$(complete_words afx render in.wav out.wav -e multitap-delay -p dela)
[ "$got" = "$(printf 'delay1=\ndelay2=\ndelay3=\ndelay4=')" ] || { echo "got: $got" >&2; exit 1; }
[ "$(complete_words afx render in.wav out.wav -e highpass -p c)" = cutoff= ] || exit 1
echo "installed afx finds the installed module; man page and completion work"

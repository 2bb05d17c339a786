#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of its own in the build folder above the program (or in WINEPREFIX).
# The prefix is made once; several programs may start at the same time.
set -eu
program=$1
if [ -z "${WINEPREFIX:-}" ]; then
    folder=$(cd "$(dirname "$program")" && pwd)
    while [ ! -f "$folder/CMakeCache.txt" ] && [ "$folder" != / ]; do
        folder=$(dirname "$folder")
    done
    [ "$folder" != / ] || { echo "wine.sh: $program stands in no build folder" >&2; exit 2; }
    WINEPREFIX=$folder/wine
fi
export LC_ALL=C.UTF-8   # file names, and the locale of a user in the United States
export WINEPREFIX WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=d;mshtml=d;winedbg.exe=d"   # no debugger: a crash ends with its code
if [ ! -f "$WINEPREFIX/ready" ]; then
    exec 9>"$WINEPREFIX.lock"
    flock 9
    [ -f "$WINEPREFIX/ready" ] || { wineboot --init >/dev/null 2>&1 9>&- && wineserver -w 9>&- && : >"$WINEPREFIX/ready"; }
    exec 9>&-
fi
[ -t 1 ] && exec wine "$@"
# Wine's services outlive the program by minutes and keep what they were started with. A file does not make whoever reads
# our output wait for them, as a pipe would.
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
status=0
wine "$@" >"$output/out" 2>"$output/err" || status=$?
cat "$output/out"
cat "$output/err" >&2
exit "$status"

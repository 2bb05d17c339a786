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
export WINEPREFIX WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=d;mshtml=d"
if [ ! -f "$WINEPREFIX/ready" ]; then
    exec 9>"$WINEPREFIX.lock"
    flock 9
    [ -f "$WINEPREFIX/ready" ] || { wineboot --init >/dev/null 2>&1 9>&- && wineserver -w 9>&- && : >"$WINEPREFIX/ready"; }
    exec 9>&-
fi
exec wine "$@"

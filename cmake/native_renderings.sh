#!/usr/bin/env bash
# What the native program makes of the sample, for the windows build to be held against: FOLDER/NAME.wav for each line
# "NAME OPTIONS" of FOLDER/cases, the saved state of a run, and the listings. The release build has the program.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
folder=$1
vantor=$root/build/release/tools/vantor
mkdir -p "$folder"
cat >"$folder/cases" <<'CASES'
efficient -m efficient -t 1.3 -p 4
pro -m pro -t 1.3 -p 4
pro-held -m pro -t 0.7 -p -5 -F 0 -c 4
soloist-mono -m soloist-mono -t 1.3 -p 4
soloist-speech -m soloist-speech -t 0.8 -p -3
CASES
"$vantor" -q -m efficient --bits 32f "$root/examples/sample.flac" "$folder/in.wav"
while read -r name options; do
    # shellcheck disable=SC2086
    "$vantor" -q $options --bits 32f --save-state "$folder/$name.state" "$folder/in.wav" "$folder/$name.wav"
done <"$folder/cases"
"$vantor" --list-params >"$folder/params"
"$vantor" --list-presets >"$folder/presets"

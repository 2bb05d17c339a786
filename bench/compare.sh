#!/usr/bin/env bash
# Times whole programs on the same file in the same run: vantor in each mode that is built, rubberband with both of its
# engines, soundstretch. Prints medians and ratios; above 1.00 the peer took longer than vantor's efficient mode. Without a
# FILE also both Soloist modes on 20 s of one voice, beside rubberband -3 and soundstretch -speech, as ratios to Soloist
# mono.
#   bench/compare.sh [FILE [RUNS]]       FILE: a WAV file; 60 s of stereo are made when none is given. RUNS: 5
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/cmake/packages.sh"
need_packages "${build_packages[@]}" rubberband-cli soundstretch
(cd "$root" && build_preset release --target vantor make_sample)
bin=$root/build/release/tools
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

file=${1:-}
runs=${2:-5}
if [ -z "$file" ]; then
    file=$work/in.wav
    "$bin/make_sample" --seconds 60 "$file"
fi

# name|command, with the stretch and the semitones put in by printf
programs=("efficient|$bin/vantor -q -m efficient -t %s -p %s $file $work/out.wav")
for mode in pro soloist-mono soloist-speech; do
    "$bin/vantor" -q -m "$mode" "$root/examples/sample.flac" "$work/probe.wav" 2>/dev/null &&
        programs+=("$mode|$bin/vantor -q -m $mode -t %s -p %s $file $work/out.wav")
done
if [[ ${programs[*]} == *"pro|"* ]]; then   # formants held: only where the pitch moves does it cost more
    programs+=("pro -F 0|$bin/vantor -q -m pro -F 0 -c 3 -t %s -p %s $file $work/out.wav")
fi
programs+=("rubberband -2|rubberband -q -2 -t %s -p %s $file $work/out.wav")
programs+=("rubberband -3|rubberband -q -3 -t %s -p %s $file $work/out.wav")
programs+=("soundstretch|soundstretch $file $work/out.wav -tempo=%s -pitch=%s")

milliseconds() {   # of processor time of one run of a command, all threads and the system's part
    local TIMEFORMAT='%U %S'
    { time "$@" >/dev/null 2>&1; } 2>&1 | awk '{ print 1000 * ($1 + $2) }'
}

median() { sort -n | awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# One block of lines: each program's median and its ratio to the first one's.
compare() {   # stretch pitch
    local stretch=$1 pitch=$2 tempo run i factor own ms command
    tempo=$(awk -v t="$stretch" 'BEGIN { printf "%.6f", 100 / t - 100 }')   # percent of change
    rm -f "$work"/times.*
    for ((run = 0; run < runs; ++run)); do   # in turn, so that a busy machine is busy for all
        for i in "${!programs[@]}"; do
            factor=$stretch
            [[ ${programs[i]} == soundstretch* ]] && factor=$tempo
            # shellcheck disable=SC2059
            read -ra command <<<"$(printf "${programs[i]#*|}" "$factor" "$pitch")"
            milliseconds "${command[@]}" >>"$work/times.$i"
        done
    done
    echo "stretch $stretch, pitch $pitch"
    own=$(median <"$work/times.0")
    for i in "${!programs[@]}"; do
        ms=$(median <"$work/times.$i")
        awk -v name="${programs[i]%%|*}" -v ms="$ms" -v own="$own" \
            'BEGIN { printf "  %-20s %7.1f ms   %6.2f\n", name, ms, ms / own }'
    done
}

if [ -z "${1:-}" ]; then
    voice=$work/voice.wav
    "$bin/make_sample" --part voice --mono --seconds 20 "$voice"
    music=("${programs[@]}")
    programs=("soloist-mono|$bin/vantor -q -m soloist-mono -t %s -p %s $voice $work/out.wav"
              "soloist-speech|$bin/vantor -q -m soloist-speech -t %s -p %s $voice $work/out.wav"
              "rubberband -3|rubberband -q -3 -t %s -p %s $voice $work/out.wav"
              "soundstretch -speech|soundstretch $voice $work/out.wav -tempo=%s -pitch=%s -speech")
    echo "20 s of one voice"
    for setting in "1.25 0" "2 0" "0.5 0" "1 7"; do
        read -r stretch pitch <<<"$setting"
        compare "$stretch" "$pitch"
    done
    programs=("${music[@]}")
    echo "60 s of stereo"
fi
for setting in "0.5 0" "0.8 0" "1.25 0" "2 0" "1 7" "1.5 3" "2 7"; do
    read -r stretch pitch <<<"$setting"
    compare "$stretch" "$pitch"
done

#!/usr/bin/env bash
# Counts the instructions of one second of each mode and compares them with bench/counts.txt, which depends on the compiler
# but neither on the machine nor on its load. Fails when a count is off by more than 3 % either way: a gain is to be kept
# as much as a loss is to be told.
#   bench/counts.sh            compares
#   bench/counts.sh --write    writes the file anew
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
. cmake/packages.sh
need_packages "${build_packages[@]}" libbenchmark-dev valgrind
kept=bench/counts.txt

log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { cmake --preset release -B build/bench -DQX_BUILD_BENCH=ON -DQX_BUILD_TESTS=OFF &&
       cmake --build build/bench --target one_second; } >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi

# The C library's copies by single instructions of the processor, which are counted byte by byte, stay out of it.
tunables=glibc.cpu.x86_rep_movsb_threshold=1000000000:glibc.cpu.x86_rep_stosb_threshold=1000000000
count() {   # class mode
    QX_VECTOR_CLASS=$1 GLIBC_TUNABLES=$tunables valgrind --tool=callgrind --callgrind-out-file=/dev/null --collect-atstart=no \
        --toggle-collect=OneSecond build/bench/bench/one_second "$2" 2>&1 | sed -n 's/.*Collected : \([0-9]*\).*/\1/p'
}

classes=(portable)
if grep -qw avx2 /proc/cpuinfo && grep -qw fma /proc/cpuinfo; then   # valgrind knows no AVX-512
    classes+=(avx2)
else
    echo "counts: this processor has no AVX2; its rows are left out"
fi
measured=$(for class in "${classes[@]}"; do
    for mode in efficient pro pro-held soloist-mono soloist-speech; do
        echo "$class $mode $(count "$class" "$mode")"
    done
done)
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build/bench/CMakeCache.txt)
version=$("$compiler" --version | head -n 1)

if [ "${1:-}" = --write ]; then
    [ "${#classes[@]}" -eq 2 ] || { echo "counts: writing needs a processor with AVX2" >&2; exit 1; }
    { echo "# Instructions for one second of each mode, written by bench/counts.sh --write"
      echo "# compiler: $version"
      echo "$measured"; } >"$kept"
    exit 0
fi
was=$(sed -n 's/^# compiler: //p' "$kept")
[ "$was" = "$version" ] || echo "counts: taken with $was, and this is $version" >&2
awk 'NR == FNR { if ($0 !~ /^#/) kept[$1 " " $2] = $3; next }
     { name = $1 " " $2; was = kept[name]; change = was && $3 ? 100 * ($3 / was - 1) : 1e9
       bad = change > 3 || change < -3; missed += bad
       printf "%-26s %12d   %s%s\n", name, $3, was ? sprintf("%+.2f %%", change) : "not in the file",
              bad ? "   more than 3 % off" : "" }
     END { if (missed) { print "counts: " missed " rows are off; if that is meant, run bench/counts.sh --write" ; exit 1 } }' \
    "$kept" - <<<"$measured"

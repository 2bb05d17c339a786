#!/usr/bin/env bash
# Installs what is missing, builds and runs the tests. --sanitize does so under the address and undefined behaviour
# sanitizers instead, --threads those of what threads share under the thread sanitizer, --windows all with the cross build
# under Wine; --fuzz runs each fuzzer for a minute and speaks only of what it finds.
set -eu
cd "$(dirname "$0")"
. cmake/packages.sh

fuzz() {
    local log corpus target
    need_packages "${build_packages[@]}" "${fuzz_packages[@]}"
    build_preset fuzz --target fuzz_load fuzz_print fuzz_res
    for target in load print res; do
        log=$(mktemp)
        corpus=$(mktemp -d)
        if ! (cd "$corpus" && "$OLDPWD/build/fuzz/fuzz/fuzz_$target" -max_total_time=60 -max_len=4096 -timeout=10 \
                "$corpus" "$OLDPWD/fuzz/corpus/$target") >"$log" 2>&1; then
            tail -n 60 "$log" >&2
            echo "fuzz_$target failed; the input is in $corpus" >&2
            return 1
        fi
        echo "fuzz_$target: $(grep -o 'Done .*' "$log")"
        rm -rf "$log" "$corpus"
    done
}

targets=() labels=()
case "${1:-}" in
    "") preset=release ;;
    --sanitize) preset=asan ;;
    --threads)
        preset=tsan
        targets=(--target test_kernel test_platform test_media test_qxvantor)
        labels=(-L '^(kernel|platform|media|qxvantor)$')
        ;;
    --windows)
        preset=windows
        need_packages "${windows_packages[@]}"
        ;;
    --fuzz) fuzz; exit ;;
    *) echo "usage: ./test.sh [--sanitize|--threads|--windows|--fuzz]" >&2; exit 2 ;;
esac
need_packages "${build_packages[@]}" "${test_packages[@]}"
build_preset "$preset" "${targets[@]}"
if [ "$preset" = windows ]; then   # the native program's work, to hold the windows build's against
    build_preset release --target vantor
    cmake/native_renderings.sh build/native_renderings
fi
ctest --preset "$preset" "${labels[@]}" -j "$(nproc)"

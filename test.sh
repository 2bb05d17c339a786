#!/usr/bin/env bash
# Installs what is missing, builds and runs the tests. --sanitize does so under the address and undefined behaviour
# sanitizers instead.
set -eu
cd "$(dirname "$0")"
. cmake/packages.sh
case "${1:-}" in
    "") preset=release ;;
    --sanitize) preset=asan ;;
    *) echo "usage: ./test.sh [--sanitize]" >&2; exit 2 ;;
esac
need_packages "${build_packages[@]}" "${test_packages[@]}"
build_preset "$preset"
ctest --preset "$preset" -j "$(nproc)"

#!/usr/bin/env bash
# Installs what is missing, builds the release preset, and runs vantor with the arguments given.
set -eu
root=$(cd "$(dirname "$0")" && pwd)
. "$root/cmake/packages.sh"
need_packages "${build_packages[@]}" "${test_packages[@]}"
(cd "$root" && build_preset release --target vantor)
exec "$root/build/release/tools/vantor" "$@"

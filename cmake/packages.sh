# Sourced by run.sh and test.sh. Installs Debian packages quietly, and only those that are missing.
build_packages=(g++ cmake ninja-build pkg-config libsndfile1-dev libpng-dev libcairo2-dev fonts-dejavu-core
                libicu-dev libsqlite3-dev binutils-mingw-w64-x86-64)
fuzz_packages=(clang libclang-rt-14-dev)
test_packages=(libgtest-dev espeak-ng)
windows_packages=(g++-mingw-w64-x86-64-posix googletest wine wine64 xvfb xauth fonts-liberation)

need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get -qq update &&
           DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get -qq install -y --no-install-recommends \
               "${missing[@]}"; } >"$log" 2>&1 </dev/null; then
        echo "cannot install ${missing[*]}:" >&2
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

# Configures a preset once and builds what has changed; speaks only when that fails.
build_preset() {
    local preset=$1
    shift
    local log
    log=$(mktemp)
    if ! { { [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset"; } &&
           cmake --build --preset "$preset" "$@"; } >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

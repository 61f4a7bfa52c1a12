# shellcheck shell=bash
# Shared by the scripts: paths, messages, and the packages of each kind of work. To be sourced by bash.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=${JOBS:-$(nproc)}
# Slow builds are kept here, under names that contain the hash of their recipe.
cache=${HALVEX_CACHE:-$HOME/.cache/halvex}
# Clones share the compiler cache: paths below the root count as relative.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

# Packages of Debian 12. No other file names a package to install.
declare -A packages=(
    [build]="g++ cmake ninja-build pkg-config qtbase5-dev libudev-dev libsystemd-dev libmicrohttpd-dev libsqlite3-dev libjs-dygraphs"
    [test]="ccache exim4-daemon-light mandoc openssl"
    [web]="chromium chromium-driver python3-selenium"
    [npm]="nodejs npm"
    [fleet]="prometheus prometheus-alertmanager python3"
    [benchmark]="libbenchmark-dev xxd python3 prometheus prometheus-node-exporter"
    [lint]="git clang-format clang-tidy"
    [mutate]="python3"
    [fuzz]="clang libclang-rt-14-dev llvm"
    [qt-source]="qtbase5-dev-tools dpkg-dev patch make perl"
    [windows]="g++-mingw-w64-x86-64-posix tcl wine wine64 nsis openssl python3"
    [windows32]="g++-mingw-w64-i686-posix qemu-system-x86 busybox-static cpio e2fsprogs"
    [package]="dpkg-dev debootstrap"
    [qemu]="qemu-system-x86 busybox-static cpio e2fsprogs binutils"
)

# The name of the running script.
speaker=$(basename "$0")

say() { printf '%s: %s\n' "$speaker" "$*"; }

fail() {
    printf '%s: %s\n' "$speaker" "$*" >&2
    exit 1
}

as_root() {
    if ((EUID == 0)); then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "this needs root, or sudo: $*"
    fi
}

# need GROUP...: installs what is missing of these groups of packages.
need() {
    local group wanted=() missing=()
    for group; do
        read -ra wanted -d '' <<<"${wanted[*]} ${packages[$group]}" || true
    done
    command -v dpkg-query >/dev/null || fail "this is not Debian: install the equivalents of ${wanted[*]}"
    mapfile -t missing < <(comm -23 <(printf '%s\n' "${wanted[@]}" | sort -u) \
        <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null |
            sed -n 's/^installed //p' | sort -u))
    ((${#missing[@]})) || return 0

    say "installing ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { as_root apt-get -q update && as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y \
        -o DPkg::Lock::Timeout=300 --no-install-recommends install "${missing[@]}"; } >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        fail "these packages could not be installed: ${missing[*]}"
    fi
    rm -f "$log"
}

# build PRESET [TARGET...]: configures and compiles. On a terminal ninja shows its progress.
build() {
    local preset=$1 log quiet=()
    shift
    [[ -t 1 ]] || quiet=(-- --quiet)
    cd "$root" || exit
    say "building in build/$preset"
    log=$(cmake --preset "$preset" 2>&1) || {
        printf '%s\n' "$log" >&2
        fail "configuring $preset failed"
    }
    cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"} "${quiet[@]}" || fail "building $preset failed"
}

# shellcheck shell=bash
# Shared by the scripts at the root, which source it: messages, packages, logged
# steps.

me=$(basename "$0")
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
logs=$root/build/log
jobs=${VANTREL_JOBS:-$(nproc)} # builds and tests that run at the same time
packages=(g++ cmake ninja-build ccache qtbase5-dev libtinyxml-dev libgtest-dev libbenchmark-dev
    pkg-config git fonts-dejavu-core valgrind libc6-dbg)

say() { printf '%s: %s\n' "$me" "$*"; }

# fail <verdict> [log file]: the relevant part of the log, then the verdict.
fail() {
    if [[ -n ${2-} ]]; then
        show_failure "$2"
        say "the whole log is in ${2#"$root"/}"
    fi
    say "FAILED: $1 ($SECONDS s)"
    exit 1
}

# The failing part of a log: from the first error of the build, the output of
# the tests that failed, or else its end.
show_failure() {
    local lines=80
    if grep -q '\*\*\*' "$1" && grep -q 'tests failed out of' "$1"; then
        awk '/^ *[0-9]+\/[0-9]+ Test +#/ { failing = /\*\*\*/ }
             /^[0-9]+% tests passed/ { failing = 1 }
             failing && !/^ +Start +[0-9]+:/' "$1" | tail -n 200
    elif grep -q '^FAILED: ' "$1"; then
        sed -n '/^FAILED: /,$p' "$1" | head -n "$lines"
    else
        tail -n "$lines" "$1"
    fi
}

# logged <log name> <what it is> <command...>: runs a step with its output in a
# log, and ends the script when it fails.
logged() {
    local log=$logs/$1.log what=$2
    shift 2
    mkdir -p "$logs"
    "$@" >"$log" 2>&1 </dev/null || fail "$what" "$log"
}

as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    else
        sudo --non-interactive "$@"
    fi
}

apt_install() {
    local apt=(as_root env DEBIAN_FRONTEND=noninteractive apt-get
        --option=DPkg::Lock::Timeout=300 --option=Acquire::Retries=3)
    "${apt[@]}" update && "${apt[@]}" install --yes --no-install-recommends "$@"
}

# ensure_packages <package...>: installs those that are missing.
ensure_packages() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "this is no Debian system; expecting what these packages hold: $*"
        return
    fi
    local package missing=()
    for package in "$@"; do
        if ! dpkg-query --show --showformat='${db:Status-Status}\n' "$package" 2>/dev/null |
            grep --line-regexp installed >/dev/null; then
            missing+=("$package")
        fi
    done
    if [[ ${#missing[@]} -gt 0 ]]; then
        say "installing the missing packages: ${missing[*]}"
        logged packages "installing packages" apt_install "${missing[@]}"
    fi
}

# configure <preset>
configure() {
    say "configuring the preset $1"
    logged "$1-configure" "configuring $1" cmake --preset "$1"
}

# build <preset> <what it is> [cmake option...]
build() {
    local preset=$1 what=$2
    shift 2
    say "building $what with the preset $preset, $jobs jobs"
    logged "$preset-build" "building $what" \
        cmake --build --preset "$preset" --parallel "$jobs" "$@"
}

#!/usr/bin/env bash
# Builds and runs the console examples: ./demo.sh
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/tools/common.sh"
cd "$root"

if [[ $# -gt 0 ]]; then
    say "usage: ./demo.sh" >&2
    exit 2
fi

ensure_packages "${packages[@]}"
configure dev
build dev "the examples" --target demo

# run <what it shows> <program> [argument...]
run() {
    say "$1: build/dev/bin/$2"
    "build/dev/bin/$2" "${@:3}" || fail "$2 ended with exit code $?"
    printf '\n'
}

mkdir -p build/demo
run "a toolkit of its own, driven by names" toolkit_demo
run "objects found by name" search_demo examples/addressbook.objectmap
run "a gesture of two fingers" gesture_demo build/demo
say "PASSED: the examples ran to their ends; the picture is build/demo/gesture.svg ($SECONDS s)"

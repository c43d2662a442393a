#!/usr/bin/env bash
# Builds the examples and shows them: ./demo.sh [--show]
#
# The main one drives an ordinary application, which is opened as it is. It
# leaves a page with pictures in build/demo. With --show the application is on
# the display of the user, else nowhere.
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/tools/common.sh"
cd "$root"

show=()
case $*:$# in
    :0) ;;
    --show:1) show=(--show) ;;
    *)
        say "usage: ./demo.sh [--show]" >&2
        exit 2
        ;;
esac

ensure_packages "${packages[@]}"
configure dev
build dev "the examples" --target demo

bin=build/dev/bin
out=$root/build/demo
rm -rf "$out"
mkdir -p "$out"

# run <what it shows> <program> [argument...]
run() {
    say "$1: ${*:2}"
    "${@:2}" || fail "$2 ended with exit code $?"
    printf '\n'
}

run "a toolkit of its own, driven by names" $bin/toolkit_demo
run "objects found by name" $bin/search_demo examples/addressbook.objectmap
run "a gesture of two fingers" $bin/gesture_demo "$out"
# Of the platform without a display, which tells each time what it cannot do.
[[ ${#show[@]} -gt 0 ]] || export QT_LOGGING_RULES="default.warning=false"
run "an ordinary application, opened as it is and driven" $bin/vantrel run "${show[@]}" \
    build/dev/lib/libcontacts_script.so "$root/examples/contacts_script/contacts.objectmap" "$out" \
    -- $bin/contacts
run "what is in it" $bin/vantrel find "{type='QPushButton'}" -- $bin/contacts
say "PASSED: the examples ran to their ends; the page is build/demo/index.html ($SECONDS s)"

#!/usr/bin/env bash
# Builds everything and runs all tests: ./test.sh [preset]
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/tools/common.sh"
cd "$root"

preset=${1:-dev}
case $preset in
    dev | release | asan) ;;
    clang) packages+=(clang) ;;
    *)
        say "usage: ./test.sh [dev|release|asan|clang]" >&2
        exit 2
        ;;
esac

ensure_packages "${packages[@]}"
configure "$preset"
build "$preset" "everything"

say "running the tests of the preset $preset"
logged "$preset-test" "the tests of $preset" ctest --preset "$preset" --parallel "$jobs"
grep -E '^[0-9]+% tests passed|^Total Test time' "$logs/$preset-test.log"
say "PASSED: the preset $preset builds and all its tests pass ($SECONDS s)"

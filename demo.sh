#!/usr/bin/env bash
# Builds and runs the console example, a small toolkit of its own: ./demo.sh
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/tools/common.sh"
cd "$root"

if [[ $# -gt 0 ]]; then
    say "usage: ./demo.sh" >&2
    exit 2
fi

ensure_packages "${packages[@]}"
configure dev
build dev "the example" --target toolkit_demo

say "running build/dev/bin/toolkit_demo"
build/dev/bin/toolkit_demo || fail "the example ended with exit code $?"
say "PASSED: the example ran to its end ($SECONDS s)"

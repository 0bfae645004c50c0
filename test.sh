#!/usr/bin/env bash
# Builds everything with a preset and runs the tests: ./test.sh [release|asan|tsan]
set -euo pipefail

# shellcheck source=packaging/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/packaging/setup.sh"

build_and_test() {
    build_everything "$1"
    ctest --preset "$1"
}

preset=${1:-release}
if [[ $# -gt 1 || ! $preset =~ ^(release|asan|tsan)$ ]]; then
    say "Usage: ./test.sh [release|asan|tsan]"
    exit 2
fi
install_packages packages-run.txt packages-test.txt
with_lock "$preset" build_and_test "$preset"

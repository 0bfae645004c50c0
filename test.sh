#!/usr/bin/env bash
# Builds everything with a preset and runs the tests: ./test.sh [release|asan|tsan]
# ./test.sh fuzz [SECONDS]: for each place where foreign bytes enter, tries damaged ones for that time (60 s unless
# given), under sanitizers, and tells what was covered of the code.
set -euo pipefail

# shellcheck source=packaging/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/packaging/setup.sh"

build_and_test() {
    build_everything "$1"
    ctest --preset "$1" --parallel "$(nproc)"
}

fuzz() {
    cd -- "$root" || return
    is_configured fuzz || configure fuzz
    compile fuzz fuzz_targets
    tests/fuzz/run.py --seconds "$1"
}

arguments="${*:-release}"
if [[ ! $arguments =~ ^(release|asan|tsan|fuzz( [1-9][0-9]*)?)$ ]]; then
    say "Usage: ./test.sh [release|asan|tsan|fuzz [SECONDS]]"
    exit 2
fi
preset=${1:-release}
if [[ $preset == fuzz ]]; then
    install_packages packages-run.txt packages-fuzz.txt
    with_lock fuzz fuzz "${2:-60}"
    exit
fi
install_packages packages-run.txt packages-test.txt
with_lock "$preset" build_and_test "$preset"

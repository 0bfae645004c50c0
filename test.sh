#!/usr/bin/env bash
# Builds everything with a preset and runs the tests: ./test.sh [release|asan|tsan]
# ./test.sh fuzz: reads a million damaged MIDI files, under sanitizers.
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
    compile fuzz midi_fuzz
    mkdir -p build/fuzz/found
    build/fuzz/tests/fuzz/midi_fuzz -runs=1000000 -max_len=4096 -timeout=1 -rss_limit_mb=200 build/fuzz/found \
        tests/fuzz/corpus
}

preset=${1:-release}
if [[ $# -gt 1 || ! $preset =~ ^(release|asan|tsan|fuzz)$ ]]; then
    say "Usage: ./test.sh [release|asan|tsan|fuzz]"
    exit 2
fi
if [[ $preset == fuzz ]]; then
    install_packages packages-run.txt packages-fuzz.txt
    with_lock fuzz fuzz
    exit
fi
install_packages packages-run.txt packages-test.txt
with_lock "$preset" build_and_test "$preset"

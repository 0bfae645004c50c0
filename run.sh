#!/usr/bin/env bash
# With arguments: mixes without a window (./run.sh --help tells how). Without: opens the window.
# ./run.sh package: makes a package for Debian 12 and prints its name.
# Before that installs the packages that are missing and builds what has changed.
set -euo pipefail

# shellcheck source=packaging/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/packaging/setup.sh"

if [[ "$*" == package ]]; then
    install_packages packages-run.txt packages-package.txt
    with_lock package make_package
    exit
fi
install_packages packages-run.txt
with_lock release build_programs

if (($#)); then
    exec "$root/build/release/melvane-mix" "$@"
fi
if [[ -z ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
    fail "there is no display for the window. To mix without one: ./run.sh SONG VOICE MIX.mp3"
fi
exec "$root/build/release/melvane"

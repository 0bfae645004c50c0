# shellcheck shell=bash
# Sourced by run.sh and test.sh: installs the packages that are missing and builds a preset. Says on standard error
# only what takes long or goes wrong.
set -euo pipefail

root=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")

say() { printf '%s\n' "$*" >&2; }

fail() {
    say "Melvane: $*"
    exit 1
}

# with_lock NAME COMMAND...: runs the command while no other run holds the lock NAME.
# What the command starts doesn't inherit the lock: a daemon left behind would keep it for ever.
with_lock() {
    local file="$root/build/$1.lock"
    shift
    if [[ ! -e $file ]]; then
        { mkdir -p -- "$root/build" && touch -- "$file"; } || fail "nothing can be written to $root/build."
    fi
    (
        exec 9<"$file"
        if ! flock --nonblock 9; then
            say "Waiting for another run of these scripts to finish..."
            flock 9
        fi
        "$@" 9>&-
    )
}

# logged NAME COMMAND...: keeps the command's output in a log and shows its end only when the command fails.
logged() {
    local log="$root/build/$1.log"
    shift
    : >"$log" || fail "$log can't be written to. Was it made by another user?"
    "$@" >"$log" 2>&1 </dev/null && return
    tail -n 40 -- "$log" >&2
    say "(All of it: $log)"
    return 1
}

# packages_of LIST...: the packages that the lists name, one a line, sorted.
packages_of() {
    sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "${@/#/$root/packaging/}" | sort -u
}

# missing_packages LIST...: which packages of the lists aren't installed, one a line.
missing_packages() {
    local wanted installed
    wanted=$(packages_of "$@")
    # shellcheck disable=SC2016,SC2086 # The fields are dpkg-query's own; the names are to be split.
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' $wanted 2>/dev/null | sed -n 's/^installed //p') ||
        true # It fails over names that it doesn't know: packages never installed.
    comm -23 <(printf '%s\n' "$wanted") <(sort -u <<<"$installed")
}

# as_root COMMAND...: through sudo for everyone but root; sudo asks for the password on the terminal itself.
as_root() {
    if ((EUID == 0)); then "$@"; else sudo -- "$@"; fi
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get --quiet -o DPkg::Lock::Timeout=300 -o Acquire::Retries=2 "$@"
}

# The lists are fetched first: a fresh machine has none, and old ones name packages that are gone.
fetch_lists() {
    apt_get update || echo "The package lists couldn't be fetched; trying with those at hand."
}

# removed_by PACKAGE...: which packages of our lists installing these would remove, one a line. Packages of one list can
# exclude those of another, and apt then takes away in silence what the build needs.
removed_by() {
    apt-get --simulate --no-install-recommends install "$@" 2>/dev/null | sed -n 's/^Remv \([^ :]*\).*/\1/p' | sort -u |
        comm -12 - <(cd -- "$root/packaging" && packages_of packages-*.txt)
}

install_missing() {
    local missing removed
    mapfile -t missing < <(missing_packages "$@")
    ((${#missing[@]})) || return 0
    ((EUID == 0)) || command -v sudo >/dev/null ||
        fail "missing packages, and neither root nor sudo to install them with: ${missing[*]}"
    ((EUID == 0)) || sudo -v || fail "sudo was refused; these packages are missing: ${missing[*]}"
    say "Installing ${missing[*]}..."
    logged packages fetch_lists
    mapfile -t removed < <(removed_by "${missing[@]}")
    ((${#removed[@]} == 0)) ||
        fail "nothing was installed: ${missing[*]} would take away ${removed[*]}, which Melvane needs too."
    logged packages apt_get install --yes --no-install-recommends "${missing[@]}" ||
        fail "these packages couldn't be installed (is there a network connection?): ${missing[*]}"
}

# install_packages LIST...: LIST is the name of a file beside this one.
install_packages() {
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        fail "this script needs Debian 12 or a relative of it (apt-get and dpkg-query)."
    fi
    [[ -z $(missing_packages "$@") ]] || with_lock packages install_missing "$@"
}

# Whether the build folder of a preset was configured from this very checkout: a copied one wasn't.
cache_is_ours() {
    grep --quiet --line-regexp --fixed-strings "CMAKE_HOME_DIRECTORY:INTERNAL=$root" \
        "$root/build/$1/CMakeCache.txt" 2>/dev/null
}

# has_tests PRESET: whether its folder is configured with the tests.
has_tests() {
    grep --quiet --line-regexp 'MELVANE_TESTS:[A-Z]*=ON' "$root/build/$1/CMakeCache.txt" 2>/dev/null
}

# Ninja itself configures again after a change of a CMakeLists.txt, but not after one of the presets.
is_configured() {
    local ninja="$root/build/$1/build.ninja"
    cache_is_ours "$1" && [[ -f $ninja && ! $root/CMakePresets.json -nt $ninja ]]
}

# configure PRESET [OPTION...]
configure() {
    local preset=$1 fresh=()
    shift
    cache_is_ours "$preset" || fresh=(--fresh)
    say "Configuring ($preset)..."
    logged "$preset" cmake --preset "$preset" "${fresh[@]}" "$@" || fail "the build couldn't be configured."
}

# compile PRESET TARGET...
compile() {
    local preset=$1
    shift
    [[ $(ninja -C "build/$preset" -n "$@" 2>&1) != *"no work to do"* ]] || return 0
    say "Building ($preset)..."
    if [[ -t 2 ]]; then
        cmake --build "build/$preset" --target "$@" >&2 || fail "the build failed."
    else
        logged "$preset" cmake --build "build/$preset" --target "$@" || fail "the build failed."
    fi
}

# The programs alone; a folder that is configured with tests keeps them.
build_programs() {
    local without_tests=()
    cd -- "$root" || return
    cache_is_ours release || without_tests=(-DMELVANE_TESTS=OFF -DMELVANE_BENCHMARKS=OFF)
    is_configured release || configure release "${without_tests[@]}"
    compile release bass melvane melvane-mix
}

# build_everything PRESET: also the tests and, where the preset has them, the benchmarks.
build_everything() {
    cd -- "$root" || return
    if ! is_configured "$1" || ! has_tests "$1"; then
        local options=(-DMELVANE_TESTS=ON)
        [[ $1 != release ]] || options+=(-DMELVANE_BENCHMARKS=ON)
        configure "$1" "${options[@]}"
    fi
    compile "$1" all
}

# The package in the top folder, in place of earlier ones; prints its name. What lintian has against it fails.
make_package() {
    local package
    cd -- "$root" || return
    umask 022 # which is what the folders in the package get
    is_configured package || configure package
    compile package all
    rm -f -- build/package/melvane_*.deb
    logged cpack cpack --config build/package/CPackConfig.cmake -B build/package || fail "the package couldn't be made."
    package=$(basename -- build/package/melvane_*.deb)
    lintian --allow-root --fail-on error,warning -- "build/package/$package" >&2 || fail "lintian refuses build/package/$package."
    rm -f -- melvane_*.deb
    mv -- "build/package/$package" .
    printf '%s\n' "$package"
}

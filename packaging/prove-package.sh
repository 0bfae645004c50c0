#!/usr/bin/env bash
# Proves the package in a bare Debian 12 of its own, as root: packaging/prove-package.sh [BASE.tar]
# BASE.tar is such a system as mmdebstrap makes it; without it one is fetched.
set -euo pipefail

# shellcheck source=packaging/setup.sh
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/setup.sh"

# prove SYSTEM: runs the journey there, in a mount and process space that ends with it.
prove() {
    local system=$1
    # What is mounted goes with this process, and so does what was started.
    mount --make-rprivate /
    mount -t proc proc "$system/proc"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=620,gid=5 devpts "$system/dev/pts"
    mount -t tmpfs -o mode=1777 tmpfs "$system/dev/shm"
    chroot "$system" env -i HOME=/root LANG=C.UTF-8 PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        DEBIAN_FRONTEND=noninteractive bash /srv/melvane/prove-inside.sh
}

if [[ ${1-} == --inside ]]; then
    prove "$2"
    exit
fi
((EUID == 0)) || fail "only root can make a system of its own."
package=$("$root/run.sh" package)
system=$(mktemp --directory)
trap 'rm -rf --one-file-system -- "$system"' EXIT
if (($#)); then
    tar --extract --file "$1" --directory "$system"
else
    install_packages packages-prove.txt
    logged system mmdebstrap --variant=minbase --mode=root bookworm "$system" || fail "no bare system could be fetched."
fi
chmod 755 -- "$system"
cp -- /etc/resolv.conf "$system/etc/"
mkdir -p -- "$system/srv/melvane"
cp -- "$root/$package" "$root/packaging/prove-inside.sh" "$root/samples/"*.{mp3,kar,wav} "$system/srv/melvane/"
unshare --mount --pid --fork --kill-child "${BASH_SOURCE[0]}" --inside "$system"

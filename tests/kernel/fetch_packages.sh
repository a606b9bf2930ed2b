#!/usr/bin/env bash
# Downloads Debian's present kernel for an architecture, what building a module for it takes, and
# busybox, unless they are there already.
#
#   fetch_packages.sh x86-64|armhf FOLDER
#
# The packages come through roots of apt's own: the system's may know another architecture only, and no
# lists at all. Ends with status 77 if they cannot be had.
set -euo pipefail

case $1 in
x86-64) architecture=amd64 image=linux-image-amd64 ;;
armhf) architecture=armhf image=linux-image-armmp ;;
esac
native=$(dpkg --print-architecture)

mkdir -p "$2"
folder=$(realpath "$2")
cd "$folder"
[ ! -e complete ] || exit 0
rm -rf ./*.deb apt-* log

unavailable() {
    echo "fetch_packages: $1; see $folder/log" >&2
    exit 77
}

# in_root ARCHITECTURE COMMAND...
in_root() {
    local root=$folder/apt-$1 architecture=$1 command=$2
    shift 2
    timeout 300 "$command" -qq -o APT::Architecture="$architecture" \
        -o APT::Architectures="$architecture" -o Dir::State="$root" \
        -o Dir::State::status="$root/status" -o Dir::State::lists="$root/lists" \
        -o Dir::Cache="$root/cache" -o Dir::Etc::sourcelist=/dev/null \
        -o Dir::Etc::sourceparts="$root/parts" -o APT::Sandbox::User="$(id -un)" \
        -o Acquire::Languages=none -o Acquire::Retries=3 "$@" 2>>log
}

# Asks the mirrors that the system uses for Debian itself. Where one index is missing, the packages may
# be found all the same.
begin_root() {
    local root=$folder/apt-$1
    mkdir -p "$root"/{lists/partial,cache/archives/partial,parts}
    : >"$root/status"
    cp /etc/apt/sources.list.d/debian.sources "$root/parts/" 2>/dev/null ||
        cp /etc/apt/sources.list "$root/parts/debian.list"
    in_root "$1" apt-get update || true
}

# dependency PACKAGE PATTERN: the package on which it depends, by its name
dependency() {
    in_root "$architecture" apt-cache depends "$1" |
        sed -n "s/^ *Depends: \($2\)\$/\1/p" | head -n 1
}

begin_root "$architecture"
kernel=$(dependency "$image" 'linux-image-[0-9].*') || true
[ -n "$kernel" ] || unavailable "$image is in none of the mirrors"
headers=linux-headers-${kernel#linux-image-}
common=$(dependency "$headers" 'linux-headers-.*-common')
tools=$(dependency "$headers" 'linux-kbuild-.*')
version=$(in_root "$architecture" apt-cache show --no-all-versions "$kernel" |
    sed -n 's/^Version: //p' | head -n 1)

# The tools run here, and only those of the kernel's exact version fit.
[ "$native" = "$architecture" ] || begin_root "$native"
in_root "$architecture" apt-get download \
    "$kernel=$version" "$headers=$version" "$common=$version" busybox-static >>log ||
    unavailable "$kernel cannot be downloaded"
in_root "$native" apt-get download "$tools=$version" >>log ||
    unavailable "$tools $version cannot be downloaded"
rm -rf apt-*
echo "${kernel#linux-image-}" >complete

#!/bin/sh
# Installs what building and testing velmora need and this machine lacks (Debian and its relatives), and the packages
# given beside. Quick and silent when nothing is missing.
# usage: setup.sh [PACKAGE...]
set -eu

packages="$* g++ cmake ninja-build libexpat1-dev libarchive-dev zstd libgtest-dev libbenchmark-dev libsqlite3-dev curl mdbtools python3"

if ! command -v dpkg-query >/dev/null 2>&1; then
    echo "setup: this system has no Debian packages; the build goes on with what is installed." >&2
    echo "setup: needed are a C++20 compiler, CMake 3.25, Ninja, expat, libarchive, GoogleTest, curl, mdbtools and Python 3.11." >&2
    [ $# -eq 0 ] || echo "setup: and for this target: $*." >&2
    exit 0
fi

missing=""
for package in $packages; do
    state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

echo "setup: installing$missing"
as_root=""
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null 2>&1; then
        echo "setup: this needs root and there is no sudo; run as root:" >&2
        echo "    apt-get install --no-install-recommends$missing" >&2
        exit 1
    fi
    as_root="sudo"
fi

# shellcheck disable=SC2086 # both variables are lists of words
install() {
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends $missing
}
# A fresh machine has no package lists yet; where there are some, they are tried first.
if ! install; then
    if ! { $as_root apt-get update -q && install; }; then
        echo "setup: could not install the packages; with a working network, run as root:" >&2
        echo "    apt-get update && apt-get install --no-install-recommends$missing" >&2
        exit 1
    fi
fi

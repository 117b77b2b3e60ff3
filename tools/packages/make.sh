#!/bin/sh
# Builds Debian's packages from build/package into build/packages, and has lintian look at them. Every file in them
# carries the time of the last commit, so that two builds of one commit are the same, byte for byte.
# usage: make.sh JOBS
set -eu

SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)}
export SOURCE_DATE_EPOCH
umask 022

cmake --preset package --log-level=WARNING
cmake --build --preset package --parallel "$1"
rm -rf build/packages
mkdir -p build/packages
(cd build/package && cpack -B "$PWD/packing" >packing.log) || { cat build/package/packing.log; exit 1; }
cp build/package/packing/*.deb build/packages/
lintian --fail-on error,warning --allow-root --tag-display-limit 0 build/packages/*.deb
ls -l build/packages

#!/bin/sh
# What must hold before a release, tried on a clean clone of the last commit: its documents, both runs of the tests, the
# packages, the program for Windows, and that two builds are the same.
# usage: check.sh VERSION JOBS
set -eu

version=$1
jobs=$2
VELMORA_SHARED=${VELMORA_SHARED:-$(realpath ../shared)}
export VELMORA_SHARED
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
git clone -q . "$work/velmora"
cd "$work/velmora"

step() {
    echo "release-check: $*"
}
step "documents"
python3 tools/release/documents.py . "$version"
grep -q '^## .*not yet released' CHANGELOG.md && echo "note: CHANGELOG.md says that $version is not yet released"
step "tests of the optimised build"
make test JOBS="$jobs"
step "tests under the sanitizers"
make test-sanitize JOBS="$jobs"
step "packages"
make package JOBS="$jobs"
step "the program for Windows"
make windows JOBS="$jobs"
[ -e build/windows/archive.built ] || { echo "velmora.exe reads no packed sources" >&2; exit 1; }
step "the same again"
make dist
tools/release/reproduce.sh "build/packages/velmora-$version.tar.gz" "$jobs"
step "done"

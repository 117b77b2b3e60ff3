#!/bin/sh
# Builds the packages of a source archive and the ZIP for Windows twice, in folders of different names and without
# ccache, and compares them.
# usage: reproduce.sh ARCHIVE JOBS
set -eu

archive=$(realpath "$1")
jobs=$2
here=$PWD
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for folder in one a/second/folder; do
    mkdir -p "$work/$folder"
    tar -xf "$archive" -C "$work/$folder" --strip-components=1
    (
        cd "$work/$folder"
        CCACHE_DISABLE=1
        export CCACHE_DISABLE
        tools/packages/make.sh "$jobs"
        tools/windows/build.sh build/windows "$jobs"
        cp build/windows/*.zip build/packages
    ) >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
    (cd "$work/$folder/build/packages" && sha256sum -- *) >"$work/$(basename "$folder").sums"
done
cat "$work/one.sums"
if ! cmp "$work/one.sums" "$work/folder.sums"; then
    rm -rf "$here/build/different"
    mkdir -p "$here/build/different"
    mv "$work/one/build/packages" "$here/build/different/one"
    mv "$work/a/second/folder/build/packages" "$here/build/different/two"
    echo "the two builds differ; both are in build/different" >&2
    exit 1
fi
echo "two builds in different folders are the same"

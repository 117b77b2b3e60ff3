#!/bin/sh
# Writes the sources of the last commit into an archive that builds without git.
# usage: archive.sh FILE
set -eu

name=$(basename "$1" .tar.gz)
mkdir -p "$(dirname "$1")"
git archive --format=tar --prefix="$name/" HEAD | gzip -9n >"$1"

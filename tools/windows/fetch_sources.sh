#!/bin/sh
# Fetches the sources of the libraries that velmora.exe is linked with, as this Debian has them, and unpacks them below
# FOLDER. apt does it, with lists and settings of its own: nothing of the machine's is changed, no root is needed, and
# every file is held against the archive's signature. Prints the versions.
# usage: fetch_sources.sh FOLDER PACKAGE...
set -eu

folder=$1
shift
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
apt=$folder/apt
mkdir -p "$apt/lists/partial" "$apt/cache/archives/partial" "$apt/sources"

# The mirrors that this machine takes its packages from have their sources as well.
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$list" ] && sed -n 's/^deb /deb-src /p' "$list" >"$apt/sources/$(basename "$list" .list).list"
done
for list in /etc/apt/sources.list.d/*.sources; do
    [ -f "$list" ] && sed 's/^Types:.*/Types: deb-src/' "$list" >"$apt/sources/$(basename "$list")"
done
cat >"$apt/apt.conf" <<END
Dir::Etc::sourcelist "/dev/null";
Dir::Etc::sourceparts "$apt/sources";
Dir::State "$apt";
Dir::State::lists "$apt/lists";
Dir::Cache "$apt/cache";
APT::Sandbox::User "";
END
APT_CONFIG=$apt/apt.conf
export APT_CONFIG

cd "$folder"
apt-get update -q >"$apt/update.log" 2>&1 || { cat "$apt/update.log" >&2; exit 1; }

# The newest version first: a mirror may already have lost what its list still names.
fetch() {
    newest=""
    for version in $(apt-cache showsrc --only-source "$1" | sed -n 's/^Version: //p' | sort -rV); do
        if apt-get source -q --only-source "$1=$version" >"$apt/$1.log" 2>&1; then
            echo "$1 $version${newest:+ ($newest is named by the mirror, and is not there)}"
            return
        fi
        newest=${newest:-$version}
    done
    if [ -n "$newest" ]; then
        cat "$apt/$1.log" >&2
    else
        echo "fetch_sources: no sources of $1 at the mirrors of /etc/apt" >&2
    fi
    return 1
}

missing=""
for package in "$@"; do
    set -- "$folder/$package"-[0-9]*/
    if [ -d "$1" ]; then
        echo "$(basename "$1") is there"
    else
        fetch "$package" || missing="$missing $package"
    fi
done
[ -z "$missing" ] || { echo "fetch_sources: cannot be had:$missing" >&2; exit 1; }

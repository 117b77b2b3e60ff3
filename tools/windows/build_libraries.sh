#!/bin/sh
# Builds the libraries that velmora.exe is linked with, static, from FOLDER/sources into FOLDER/libraries. Where the
# sources of one that unpacks cannot be had, velmora.exe is built all the same and refuses packed sources; where one
# cannot be built, nothing is.
# usage: build_libraries.sh FOLDER JOBS
set -eu

here=$(cd "$(dirname "$0")" && pwd)
folder=$(cd "$1" && pwd)
jobs=$2
toolchain=$(cd "$here/../../cmake" && pwd)/mingw-w64.cmake
prefix=$folder/libraries
export CFLAGS="-O2 -ffile-prefix-map=$folder=."

# The folder with the sources of a library.
source_of() {
    case $1 in
    xz) package=xz-utils ;;
    zstd | archive) package=lib$1 ;;
    *) package=$1 ;;
    esac
    for candidate in "$folder/sources/$package"-[0-9]*/; do
        [ -d "$candidate" ] && echo "$candidate" && return
    done
    return 1
}

# with_cmake NAME SOURCE [OPTION...]
with_cmake() {
    name=$1
    source=$2
    shift 2
    cmake -S "$source" -B "$folder/$name" -G Ninja --log-level=ERROR -Wno-dev -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_FIND_ROOT_PATH="$prefix" \
        -DCMAKE_POLICY_DEFAULT_CMP0074=NEW -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF "$@"
    cmake --build "$folder/$name" --parallel "$jobs"
    cmake --install "$folder/$name"
}

# of_sources NAME SOURCE HEADERS FILE...: a library whose own build knows too little of other systems.
of_sources() {
    name=$1
    source=$2
    headers=$3
    shift 3
    mkdir -p "$folder/$name" "$prefix/lib" "$prefix/include"
    for file in "$@"; do
        # shellcheck disable=SC2086 # a list of options
        x86_64-w64-mingw32-gcc-posix $CFLAGS -c "$source/$file.c" -o "$folder/$name/$file.o"
    done
    rm -f "$prefix/lib/lib$name.a"
    (cd "$folder/$name" && x86_64-w64-mingw32-ar rcsD "$prefix/lib/lib$name.a" ./*.o)
    for header in $headers; do
        cp "$source/$header" "$prefix/include"
    done
}

build() {
    case $1 in
    expat)
        # With what its own build finds out on other systems.
        mkdir -p "$folder/expat"
        printf '#define %s\n' "XML_NS 1" "XML_DTD 1" "XML_CONTEXT_BYTES 1024" "BYTEORDER 1234" "HAVE_MEMMOVE 1" \
            >"$folder/expat/expat_config.h"
        CFLAGS="$CFLAGS -DXML_STATIC -I$folder/expat" of_sources expat "$(source_of expat)/expat/lib" \
            "expat.h expat_external.h" xmlparse xmlrole xmltok
        ;;
    zlib)
        of_sources z "$(source_of zlib)" "zlib.h zconf.h" adler32 compress crc32 deflate infback inffast inflate \
            inftrees trees uncompr zutil
        ;;
    bzip2)
        of_sources bz2 "$(source_of bzip2)" bzlib.h blocksort huffman crctable randtable compress decompress bzlib
        ;;
    xz)
        with_cmake xz "$(source_of xz)"
        ;;
    zstd)
        with_cmake zstd "$(source_of zstd)/build/cmake" -DZSTD_BUILD_SHARED=OFF -DZSTD_BUILD_STATIC=ON \
            -DZSTD_BUILD_PROGRAMS=OFF -DZSTD_BUILD_TESTS=OFF -DZSTD_LEGACY_SUPPORT=OFF
        ;;
    archive)
        # With the settings that it keeps for this compiler, but for the libraries above and for the Windows meant here:
        # the older one that they name lacks what the digests are made by.
        source=$(source_of archive)
        files=$(cd "$source/libarchive" && ls ./*.c | sed 's/^\.\///; s/\.c$//' | grep -v -x archive_disk_acl_.*)
        mkdir -p "$folder/archive"
        sed 's/^\(#define \(WINVER\|_WIN32_WINNT\)\) .*/\1 0x0601/; s/^#define NTDDI_VERSION.*//' \
            "$source/contrib/android/config/windows_host.h" >"$folder/archive/config.h"
        packed="-DHAVE_ZLIB_H=1 -DHAVE_LIBZ=1 -DHAVE_BZLIB_H=1 -DHAVE_LIBBZ2=1 -DHAVE_LZMA_H=1 -DHAVE_LIBLZMA=1
            -DHAVE_ZSTD_H=1 -DHAVE_LIBZSTD=1 -DLZMA_API_STATIC -DLIBARCHIVE_STATIC"
        # shellcheck disable=SC2086 # a list of files
        CFLAGS="$CFLAGS $packed -w -I$prefix/include -DHAVE_CONFIG_H -D__LIBARCHIVE_CONFIG_H_INCLUDED=1 -I$folder/archive" \
            of_sources archive "$source/libarchive" "archive.h archive_entry.h" $files
        ;;
    esac
}

for library in expat zlib bzip2 xz zstd archive; do
    [ ! -e "$folder/$library.built" ] || continue
    if [ "$library" != expat ] && ! source_of "$library" >"$folder/$library.log"; then
        echo "build_libraries: there are no sources of $library; velmora.exe will read no packed sources" >&2
        exit 0
    fi
    echo "building $library for Windows"
    # Not as a condition, in which a step that fails would not end it.
    (set -e; build "$library") >"$folder/$library.log" 2>&1 &
    if ! wait $!; then
        tail -n 20 "$folder/$library.log" >&2
        echo "build_libraries: $library cannot be built (see $folder/$library.log)" >&2
        exit 1
    fi
    : >"$folder/$library.built"
done

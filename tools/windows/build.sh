#!/bin/sh
# Builds velmora.exe and its ZIP into FOLDER: the libraries first, unless they are there.
# usage: build.sh FOLDER JOBS
set -eu

cd "$(dirname "$0")/../.."
folder=$1
jobs=$2
version=$(awk '/^project/ { print $3 }' CMakeLists.txt)

SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)}
export SOURCE_DATE_EPOCH

mkdir -p "$folder"
tools/windows/fetch_sources.sh "$folder/sources" expat
tools/windows/fetch_sources.sh "$folder/sources" zlib bzip2 xz-utils libzstd libarchive ||
    echo "build: without them velmora.exe reads no packed sources" >&2
tools/windows/build_libraries.sh "$folder" "$jobs"
cmake -S . -B "$folder/program" -G Ninja --log-level=WARNING -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" \
    -DCMAKE_FIND_ROOT_PATH="$PWD/$folder/libraries" -DCMAKE_BUILD_TYPE=Release -DVELMORA_TESTS=OFF \
    -DVELMORA_WINDOW=OFF -DVELMORA_WERROR=ON
cmake --build "$folder/program" --parallel "$jobs" --target velmora
cp "$folder/program/velmora.exe" "$folder/velmora.exe"

# What Windows brings itself; anything else would have to be copied beside the program.
others=$(x86_64-w64-mingw32-objdump -p "$folder/velmora.exe" | sed -n 's/.*DLL Name: //p' |
    grep -v -i -x -e advapi32.dll -e bcrypt.dll -e kernel32.dll -e msvcrt.dll -e shell32.dll || true)
[ -z "$others" ] || { echo "build: velmora.exe needs libraries that Windows lacks: $others" >&2; exit 1; }

# What stands in their place knows long paths (src/platform/windows/long_paths.cpp).
if x86_64-w64-mingw32-objdump -p "$folder/velmora.exe" | grep -w -e _wstat64 -e _wfindfirst64; then
    echo "build: velmora.exe calls functions that know no long paths" >&2
    exit 1
fi

name=velmora-$version-windows-x64
rm -rf "${folder:?}/$name" "$folder/$name.zip"
mkdir "$folder/$name"
cp "$folder/velmora.exe" LICENSE docs/manual.md examples/orders.xml "$folder/$name"
python3 tools/windows/pack.py "$folder/$name.zip" "$folder/$name" "$SOURCE_DATE_EPOCH"
rm -r "${folder:?}/$name"
ls -l "$folder/velmora.exe" "$folder/$name.zip"

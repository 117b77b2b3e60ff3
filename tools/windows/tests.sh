#!/bin/sh
# Builds the tests of the engine, and of what asks the system, for Windows, and runs them under Wine.
# usage: tests.sh FOLDER JOBS
set -eu

cd "$(dirname "$0")/../.."
folder=$PWD/$1
jobs=$2
programs="jet_base_test jet_store_test jet_index_test jet_table_test jet_relations_test jet_sql_test jet_face_test
    jet_savepoint_test platform_test"

for_windows() {
    source=$1
    build=$2
    shift 2
    cmake -S "$source" -B "$build" -G Ninja --log-level=WARNING -Wno-dev \
        -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" -DCMAKE_FIND_ROOT_PATH="$folder/libraries" \
        -DCMAKE_BUILD_TYPE=Release "$@"
}
if [ ! -e "$folder/libraries/lib/libgtest.a" ]; then
    for_windows /usr/src/googletest "$folder/gtest" -DBUILD_GMOCK=OFF -DCMAKE_INSTALL_PREFIX="$folder/libraries"
    cmake --build "$folder/gtest" --parallel "$jobs" --target install
fi
for_windows . "$folder/tests" -DVELMORA_WINDOW=OFF
# shellcheck disable=SC2086 # a list of names
cmake --build "$folder/tests" --parallel "$jobs" --target $programs

# Without the shared folder: its checker is not for this system.
unset VELMORA_SHARED
export WINEPREFIX="$folder/tests/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
# They make symbolic links, or ask other programs.
elsewhere=FileListing.GivesOrdinaryFilesInBytewiseOrder:Paths.OneFileIsRecognisedUnderItsOtherNames
elsewhere=$elsewhere:Connection.EachOfManyTablesIsFoundByItsName:Connection.TablesAndColumnsHaveProperties
failed=""
for program in $programs; do
    found=$(find "$folder/tests/tests" -name "$program.exe")
    timeout 600 wine "$found" --gtest_brief=1 --gtest_filter="-$elsewhere" || failed="$failed $program"
done
[ -z "$failed" ] || { echo "tests: failed under Wine:$failed" >&2; exit 1; }

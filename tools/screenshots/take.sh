#!/bin/sh
# usage: take.sh PROGRAM XML FOLDER
# Pictures of the window in FOLDER: light and dark, at 100 and 200 percent, and in German.
set -eu
program=$1
xml=$2
folder=$3
mkdir -p "$folder"
export QT_QPA_PLATFORM=offscreen
for scale in 1 2; do
    for theme in light dark; do
        QT_SCALE_FACTOR=$scale LC_ALL=C.UTF-8 "$program" "$xml" "$folder" "$theme-${scale}00" "$theme" 2>/dev/null
        QT_SCALE_FACTOR=$scale LC_ALL=de_DE.UTF-8 "$program" "$xml" "$folder" "$theme-${scale}00-de" "$theme" 2>/dev/null
    done
done
rm -f "$folder"/*.mdb
echo "pictures in $folder"

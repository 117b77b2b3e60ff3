#!/bin/sh
# usage: take.sh PROGRAM XML FOLDER
# Pictures of the window in FOLDER: light and dark, at 100, 150 and 200 percent, and in German.
set -eu
program=$1
xml=$2
folder=$3
mkdir -p "$folder"
export QT_QPA_PLATFORM=offscreen
for percent in 100 150 200; do
    for theme in light dark; do
        for language in C de_DE; do
            QT_SCALE_FACTOR=$((percent / 100)).$((percent % 100)) LC_ALL=$language.UTF-8 \
                "$program" "$xml" "$folder" "$theme-$percent-$language" "$theme" 2>/dev/null
        done
    done
done
echo "pictures in $folder"

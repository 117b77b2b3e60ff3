#!/bin/sh
# Converts the example orders and shows the database that came out. usage: run.sh PROGRAM
set -eu
program=$1
examples=$(dirname "$0")
mdb=build/orders.mdb

echo "\$ velmora xml=\"$examples/orders.xml\" mdb=\"$mdb\" +quiet"
"$program" xml="$examples/orders.xml" mdb="$mdb" +quiet

mdb-tables -1 "$mdb" | while read -r table; do
    echo
    echo "$table"
    mdb-export "$mdb" "$table" | sed 's/^/    /'
done

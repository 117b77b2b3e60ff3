#!/bin/sh
# Runs every fuzz target for some seconds, several at a time: over the examples in fuzz/corpus, real files where the
# shared folder is there, and what earlier runs have found. A target that fails shows the end of its output; the input
# stands beside its finds.
# usage: run.sh BUILD_FOLDER SECONDS JOBS
set -eu

build=$1 seconds=$2 jobs=$3
# Where memory was allocated is told by two frames: deeper stacks, walked for each allocation, make the runs slower.
export ASAN_OPTIONS="malloc_context_size=2${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
here=$(dirname "$0")
shared=${VELMORA_SHARED:-$here/../../shared}

# Copies the real files that are short enough for a target to `real`, and what fuzzing has found before.
take_real_files() {
    case $target in
    xml | segments) find "$shared/corpus/xml" -name '*.xml' -size -20k -exec cp -u {} "$real" \; ;;
    jet) find "$shared/corpus/mdb" "$shared/corpus/fuzz" -name '*.mdb' -size -140k -exec cp -u {} "$real" \; ;;
    esac
}

# Runs one target with further options of libFuzzer.
run() {
    target=$1
    shift
    finds=$build/finds/$target
    real=$finds/real
    mkdir -p "$finds/corpus" "$real"
    [ ! -d "$shared/corpus" ] || take_real_files
    if "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$finds/" "$@" "$finds/corpus" "$here/corpus/$target" "$real" >"$finds/log" 2>&1; then
        echo "fuzz_$target: $(sed -n 's/^stat::average_exec_per_sec: *//p' "$finds/log") inputs a second, nothing found"
    else
        tail -n 60 "$finds/log"
        echo "fuzz_$target: failed; the input is in $finds" >&2
        return 1
    fi
}

if [ $# -gt 3 ]; then
    shift 3
    run "$@"
    exit
fi
# As many at a time as there are jobs, each in a process of this script. To weigh each database and to look for shorter
# ones would take libFuzzer most of the time.
xargs -P "$jobs" -L 1 "$0" "$build" "$seconds" "$jobs" <<EOF
jet -max_len=150000 -entropic=0 -reduce_inputs=0
sql -max_len=2000
xml -max_len=20000
segments -max_len=5000
mapping -max_len=2000
command_line -max_len=500
EOF

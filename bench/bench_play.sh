#!/bin/sh
# Interactive playback headless: `qms play` of a 244-frame scene at 24 frames a second,
# about ten seconds (a tick every 1000 / 24 = 41 ms, so 24.39 frames a second is the aim).
# Prints the rate achieved and how late the timer's thread woke for its deadlines.
#   bench/bench_play.sh [BUILD_DIR] [RUNS]
set -eu
build=${1:-build/release}
runs=${2:-1}
qms=$build/apps/qms
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config"

"$qms" new "$work" Bench > /dev/null
project="$work/Bench/Bench.qmp"
"$qms" cells "$project" 1 Drawing set 1 A > /dev/null
"$qms" cells "$project" 1 Drawing set 244 B > /dev/null

i=1
while [ "$i" -le "$runs" ]; do
    "$qms" play "$project" 1 --fps 24 | grep '^#'
    i=$((i + 1))
done

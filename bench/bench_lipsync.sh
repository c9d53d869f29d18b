#!/usr/bin/env bash
# Speed of `qms lipsync` on a 10-minute file, as a multiple of real time on one core,
# beside pocketsphinx_continuous -allphone (Debian pocketsphinx) on the same audio.
#   bench/bench_lipsync.sh [BUILD_DIR]
# Both run pinned to core 0. The multiple is taken from the processor time (user + system)
# so that other work on a shared machine does not count; the wall time is shown beside it.
# pocketsphinx is optional (apt-get install pocketsphinx pocketsphinx-en-us).
set -euo pipefail
build=${1:-build/release}
qms=$build/apps/qms
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Ten minutes of speech: espeak-ng reading the GPL, at 8 kHz, 16 bits, mono for qms and at
# 16 kHz for pocketsphinx, whose English models are made for that rate.
head -c 60000 /usr/share/common-licenses/GPL-3 > "$work/text.txt"
espeak-ng -v en-us -f "$work/text.txt" -w "$work/long.wav"
sox "$work/long.wav" -r 8000 -b 16 -c 1 "$work/speech8k.wav" trim 0 600
sox "$work/long.wav" -r 16000 -b 16 -c 1 "$work/speech16k.wav" trim 0 600
seconds=$(soxi -D "$work/speech8k.wav")

# run LABEL command... : prints processor and wall time and the multiple of real time.
run() {
    local label=$1
    shift
    local TIMEFORMAT='%U %S %R'
    local times
    times=$({ time taskset -c 0 "$@" > "$work/out.txt" 2> "$work/err.txt"; } 2>&1)
    read -r user sys wall <<< "$times"
    printf '%s: %.0f s of audio, %.2f s processor (%.2f s wall): %.0fx real time\n' "$label" "$seconds" \
        "$(echo "$user + $sys" | bc -l)" "$wall" "$(echo "$seconds / ($user + $sys)" | bc -l)"
}

run "qms lipsync" "$qms" lipsync "$work/speech8k.wav" --fps 24

if command -v pocketsphinx_continuous > /dev/null 2>&1; then
    model=/usr/share/pocketsphinx/model/en-us
    # Context-independent phone loop with the usual beams; with triphones (the default)
    # it runs far below real time.
    run "pocketsphinx_continuous -allphone" pocketsphinx_continuous -infile "$work/speech16k.wav" \
        -hmm "$model/en-us" -allphone "$model/en-us-phone.lm.bin" -allphone_ci yes -beam 1e-20 -pbeam 1e-20 \
        -lw 2.0 -backtrace yes
else
    echo "pocketsphinx_continuous is not installed (apt-get install pocketsphinx pocketsphinx-en-us)"
fi

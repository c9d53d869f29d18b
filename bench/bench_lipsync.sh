#!/bin/sh
# Speed of `qms lipsync` on a 10-minute file, as a multiple of real time, beside
# pocketsphinx_continuous -allphone (Debian pocketsphinx) on the same audio.
#   bench/bench_lipsync.sh [BUILD_DIR]
set -eu
build=${1:-build}
qms=$build/apps/qms
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Ten minutes of speech: espeak-ng reading the GPL, at 8 kHz, 16 bits, mono.
head -c 60000 /usr/share/common-licenses/GPL-3 > "$work/text.txt"
espeak-ng -v en-us -f "$work/text.txt" -w "$work/long.wav"
sox "$work/long.wav" -r 8000 -b 16 -c 1 "$work/speech8k.wav" trim 0 600
sox "$work/long.wav" -r 16000 -b 16 -c 1 "$work/speech16k.wav" trim 0 600
seconds=$(soxi -D "$work/speech8k.wav")

elapsed() { # command... -> seconds of wall time on stdout
    start=$(date +%s.%N)
    "$@" > /dev/null 2>&1
    end=$(date +%s.%N)
    echo "$end - $start" | bc -l
}

t=$(elapsed taskset -c 0 "$qms" lipsync "$work/speech8k.wav" --fps 24)
printf 'qms lipsync: %.1f s of audio in %.2f s: %.0fx real time\n' "$seconds" "$t" "$(echo "$seconds / $t" | bc -l)"

if command -v pocketsphinx_continuous > /dev/null 2>&1; then
    model=/usr/share/pocketsphinx/model/en-us
    t=$(elapsed taskset -c 0 pocketsphinx_continuous -infile "$work/speech16k.wav" -hmm "$model/en-us" \
        -allphone "$model/en-us-phone.lm.bin" -backtrace yes)
    printf 'pocketsphinx_continuous -allphone: %.2f s: %.0fx real time\n' "$t" "$(echo "$seconds / $t" | bc -l)"
else
    echo "pocketsphinx_continuous is not installed (apt-get install pocketsphinx pocketsphinx-en-us)"
fi

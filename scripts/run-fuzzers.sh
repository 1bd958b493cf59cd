#!/usr/bin/env bash
# Runs every libFuzzer program in a directory for the given number of seconds each, with a corpus
# kept under fuzz/corpus-<name>/ (not versioned). Usage: run-fuzzers.sh <dir> <seconds>
set -euo pipefail
dir=${1:?fuzzer directory}
seconds=${2:-60}
root=$(cd "$(dirname "$0")/.." && pwd)
status=0
for fuzzer in "$dir"/*_fuzz; do
    [[ -x "$fuzzer" ]] || continue
    name=$(basename "$fuzzer")
    corpus="$root/fuzz/corpus-$name"
    mkdir -p "$corpus"
    echo "== $name: ${seconds}s"
    "$fuzzer" "$corpus" -max_total_time="$seconds" -max_len=4096 -rss_limit_mb=2048 \
        -print_final_stats=1 2>&1 | tail -n 12 || status=1
done
exit $status

#!/usr/bin/env bash
# Runs every libFuzzer target of a fuzz build for a fixed time, two at a time, starting from the
# committed seeds (copied, so the repository's corpus stays as committed). A crash leaves its input
# in <build>/fuzz-artifacts/ and fails the run.
#   scripts/fuzz.sh <build-dir> [seconds-per-target]
set -euo pipefail
build=${1:?build dir}
seconds=${2:-60}
root=$(cd "$(dirname "$0")/.." && pwd)
list="$build/fuzzers.txt"
[ -f "$list" ] || { echo "fuzz: no target list in $build"; exit 1; }
mkdir -p "$build/fuzz-artifacts" "$build/fuzz-work"

run_one() {
    local name=$1 work="$build/fuzz-work/$1" seeds="$root/fuzz/corpus/$1"
    rm -rf "$work"; mkdir -p "$work"
    [ -d "$seeds" ] && cp -r "$seeds/." "$work/"
    if "$build/fuzzers/$name" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 \
        -print_final_stats=1 -artifact_prefix="$build/fuzz-artifacts/$name-" "$work" \
        >"$build/fuzz-work/$name.log" 2>&1; then
        echo "fuzz $name: clean, $(grep -m1 -o 'stat::number_of_executed_units: *[0-9]*' \
            "$build/fuzz-work/$name.log" | grep -o '[0-9]*$') runs in ${seconds} s"
    else
        echo "fuzz $name: FAILED"; tail -40 "$build/fuzz-work/$name.log"; return 1
    fi
}
export -f run_one
export build seconds root
targets=$(grep . "$list" || true)
[ -n "$targets" ] || { echo "fuzz: no targets"; exit 0; }
xargs -P 2 -I{} bash -c 'run_one {}' <<<"$targets"

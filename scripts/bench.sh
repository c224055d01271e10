#!/usr/bin/env bash
# Builds the optimised tree and runs every benchmark in it, printing Google Benchmark's tables.
#   scripts/bench.sh [filter-regex]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ >/dev/null
cmake --build build/release -j "$(nproc)"
found=0
for b in $(find build/release/bench -type f -executable -name '*_bench' | sort); do
    found=1
    echo "== $(basename "$b")"
    "$b" ${1:+--benchmark_filter="$1"}
done
[ "$found" -eq 1 ] || echo "no benchmarks built"

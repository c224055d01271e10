#!/usr/bin/env bash
# Builds and starts the simulated host with the plug-in and the sample project. Extra arguments go
# to the simulated host (see hostsim/main.cpp), for example:
#   bash scripts/run.sh --execute requeststatus --execute news
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/release --target hostsim Quillo -j "$(nproc)"
exec build/release/hostsim/hostsim "$@"

#!/usr/bin/env bash
# Sets up (packages, build; both idempotent) and opens the simulated host on screen with the plug-in
# and the sample project. Its files (the simulated disk, settings, captures) go to a fresh folder
# under /tmp, never the real home.
#   - With a display ($DISPLAY answers): the host opens there; quit it from its menu or with Ctrl+C.
#   - Without one: starts Xvfb itself, runs the scripted walkthrough (scripts/walkthrough.sh) and
#     names the folder with its screenshots and transcript at the end.
#   bash scripts/run.sh --walkthrough         the walkthrough even when there is a display
#   bash scripts/run.sh --batch [args]        the command-line session instead (hostsim/main.cpp),
#                                             e.g. --batch --execute requeststatus --execute news
# Extra arguments otherwise go to the host application (see hostsim/app/main.mm).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/release --target hostsim hostsim-app -j "$(nproc)"

if [ "${1:-}" = "--batch" ]; then
    shift
    exec build/release/hostsim/hostsim "$@"
fi
if [ "${1:-}" = "--walkthrough" ]; then
    shift
    exec bash scripts/walkthrough.sh "$@"
fi
if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
    root=$(mktemp -d /tmp/quillo-host-XXXXXX)
    mkdir -p "$root/home"
    echo "run: simulated host on $DISPLAY, files under $root"
    HOME="$root/home" exec build/release/hostsim/app/hostsim-app --root "$root/disk" "$@"
fi
echo "run: no display; starting Xvfb and the walkthrough"
exec bash scripts/walkthrough.sh "$@"

#!/usr/bin/env bash
# The walkthrough of the Windows build under Wine, the sibling of scripts/walkthrough.sh: its own
# Xvfb and Wine prefix (scripts/wine-env.sh over a folder of this run), hostsim-win with Quillo.aex,
# xdotool as the artist. The steps are those of tests/win32/onscreen/onscreen_scene.py, with the
# figures of scripts/onscreen_figures_win32.py: the chord opens the popup (repeated for the
# chord-to-popup-painted figure), "blur" is typed and Return applies the first row, the chord and
# Escape close it, the console's screenshot word saves a frame, and the popup is grabbed again after
# a second start in the Light theme. The folder named at the end holds popup-dark.png,
# popup-light.png, popup-empty.png, capture.png, the transcript ("ok:"/"failed:" per step, the
# medians) and the host's log.
# Expects the Windows build in build/win32 (hostsim-win and Quillo built: see scripts/wine-env.sh).
#   $1  chord runs for the figure (default 8)
set -uo pipefail
cd "$(dirname "$0")/.."
repo=$(pwd)
exe="$repo/build/win32/hostsim/Adobe After Effects CC 2018/Support Files/hostsim-win.exe"
plugins=$repo/build/win32/host/Plug-ins
[ -f "$exe" ] && [ -f "$plugins/Quillo.aex" ] || {
    echo "walkthrough-win32: $exe or $plugins/Quillo.aex is missing; build build/win32 first" >&2
    exit 1
}
out=$repo/build/walkthrough-win32/$(date -u +%Y%m%d-%H%M%S)
mkdir -p "$out"
unset QUILLO_WINE_DISPLAY # an Xvfb of this run's own
# shellcheck source=wine-env.sh
source "$repo/scripts/wine-env.sh" "$out"
[ -n "${QUILLO_WINE_DISPLAY:-}" ] || { echo "walkthrough-win32: no Xvfb" >&2; exit 1; }
trap wine_env_stop EXIT
{
    echo "Walkthrough of hostsim-win under $(wine --version 2>/dev/null | head -1) on $DISPLAY ($(date -u +%FT%TZ))"
    echo "host: $exe"
    echo "plug-in: $plugins/Quillo.aex"
} | tee "$out/transcript.txt"
python3 "$repo/scripts/onscreen_figures_win32.py" --exe "$exe" --plugins "$plugins" --out "$out" \
    --presses "${1:-8}"
status=$?
echo
echo "walkthrough folder: $out"
exit "$status"

#!/usr/bin/env bash
# Installs the plug-in's bundle into a host installation's Plug-ins folder and the script panel
# (panel/Quillo.jsx, when it is there) into its "Scripts/ScriptUI Panels" folder; --uninstall
# removes both again.
#
#   bash scripts/install.sh [--uninstall] [--version V | --into DIR] [--bundle PATH] [--panel FILE]
#
#   (nothing)       every host installation found (the Mac: /Applications/<host name> <version>)
#   --version V     only the installation of that version (the folder name's end, e.g. 2025)
#   --into DIR      the installation folder DIR (any system; the simulated host's on Linux)
#   --bundle PATH   the bundle to install (default: build/release/host/Plug-ins/Quillo.plugin)
#   --panel FILE    the panel to install (default: panel/Quillo.jsx)
#
# Installing into an installation under /Applications usually needs sudo. Quit the host first: it
# reads its plug-ins when it starts.
set -euo pipefail
repo=$(cd "$(dirname "$0")/.." && pwd)

# Where the host's installations live: one folder per version, "<prefix><version>"
# (QUILLO_HOST_PREFIX overrides it).
host_prefix=${QUILLO_HOST_PREFIX:-"/Applications/Adobe After Effects "}
bundle=$repo/build/release/host/Plug-ins/Quillo.plugin
panel=$repo/panel/Quillo.jsx
uninstall=0
version=""
into=""

usage() {
    sed -n '2,16p' "$0" | sed 's/^# \{0,1\}//' >&2
    exit 2
}
while [ $# -gt 0 ]; do
    case $1 in
    --uninstall) uninstall=1 ;;
    --version) [ $# -ge 2 ] || usage; version=$2; shift ;;
    --into) [ $# -ge 2 ] || usage; into=$2; shift ;;
    --bundle) [ $# -ge 2 ] || usage; bundle=$2; shift ;;
    --panel) [ $# -ge 2 ] || usage; panel=$2; shift ;;
    *) usage ;;
    esac
    shift
done

targets=()
if [ -n "$into" ]; then
    [ -d "$into" ] || { echo "install: no folder $into" >&2; exit 1; }
    targets=("$into")
else
    for dir in "$host_prefix"*; do
        [ -d "$dir" ] || continue
        [ -z "$version" ] || [ "${dir#"$host_prefix"}" = "$version" ] || continue
        targets+=("$dir")
    done
    if [ ${#targets[@]} -eq 0 ]; then
        echo "install: no host installation matches \"$host_prefix*\"${version:+ with version $version}; use --into DIR" >&2
        exit 1
    fi
fi

if [ "$uninstall" -eq 0 ]; then
    [ -f "$bundle/Contents/Info.plist" ] && [ -d "$bundle/Contents/MacOS" ] ||
        { echo "install: no bundle at $bundle; build first (cmake --build build/release)" >&2; exit 1; }
    [ -f "$panel" ] || echo "install: $panel is not there; installing the plug-in only"
fi

for dir in "${targets[@]}"; do
    plugins=$dir/Plug-ins
    panels=$dir/Scripts/ScriptUI\ Panels
    if [ "$uninstall" -eq 1 ]; then
        rm -rf "$plugins/Quillo.plugin"
        rm -f "$panels/Quillo.jsx"
        echo "removed Quillo from $dir"
        continue
    fi
    mkdir -p "$plugins"
    # A fresh copy: nothing of an older version's bundle may linger inside the new one.
    rm -rf "$plugins/Quillo.plugin"
    cp -Rp "$bundle" "$plugins/Quillo.plugin"
    if [ -f "$panel" ]; then
        mkdir -p "$panels"
        cp "$panel" "$panels/Quillo.jsx"
    fi
    echo "installed Quillo into $dir"
done

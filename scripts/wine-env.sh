# Sourced by scripts/test.sh (and by hand: `source scripts/wine-env.sh build/win32`) before the Windows
# build's tests: a Wine prefix of the build's own, a private Xvfb for the windows the tests open, and a
# wineserver kept running so that each test process starts in a fraction of a second.
#   $1  the Windows build folder (default build/win32)
_win32_dir=$(realpath -m "${1:-build/win32}")
export WINEPREFIX="$_win32_dir/wineprefix" WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
mkdir -p "$_win32_dir"
if [ -z "${QUILLO_WINE_DISPLAY:-}" ]; then
    # Xvfb picks a free display itself and writes its number to the pipe.
    exec {_xvfb_fd}< <(exec Xvfb -displayfd 1 -screen 0 1600x1000x24 -nolisten tcp 2>/dev/null)
    _wine_xvfb_pid=$!
    read -r -t 20 _xvfb_display <&"$_xvfb_fd" || { echo "wine-env: Xvfb did not start" >&2; return 1; }
    export QUILLO_WINE_DISPLAY=":$_xvfb_display"
fi
# Ends the wineserver and the Xvfb started here.
wine_env_stop() {
    wineserver -k 2>/dev/null || true
    [ -n "${_wine_xvfb_pid:-}" ] && kill "$_wine_xvfb_pid" 2>/dev/null || true
    unset QUILLO_WINE_DISPLAY _wine_xvfb_pid
}
export DISPLAY=$QUILLO_WINE_DISPLAY
# The server first, kept for a minute after its last client, so that wineboot and every test share it.
# (It refuses when one already serves this prefix, which is as good.)
mkdir -p "$WINEPREFIX"
wineserver -p 60 2>/dev/null || true
wineboot -i >/dev/null 2>&1 || true

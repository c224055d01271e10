#!/usr/bin/env bash
# The scripted walkthrough of the simulated host: its own Xvfb, the host with the plug-in and the
# sample project, xdotool as the artist. Every step is written to a transcript as "ok" or "failed";
# screenshots (popup-dark.png and popup-light.png: the popup open in each theme; capture-flash.png:
# the screenshot button's flash, and capture.png the frame it saved; gallery.png and
# gallery-light.png: the gallery with four captures previewed; popup-did-you-mean.png: near misses
# of a typo; preferences-dark.png and preferences-light.png: the preferences window before and after
# its theme is switched), the transcript with the measured latencies, and the host's session record
# go to a folder named at the end. Expects
# the release build (scripts/run.sh makes it).
set -uo pipefail
cd "$(dirname "$0")/.."
repo=$(pwd)
app=$repo/build/release/hostsim/app/hostsim-app
project=$repo/hostsim/sample_project.json
# The bundle of the plug-in whose windows are real (AppKit over GNUstep); see host/CMakeLists.txt.
# It is installed into the run's host folder, where the host finds it through its PiPL.
plugin=$repo/build/release/host/Plug-ins.appkit/Quillo.plugin
[ -x "$app" ] && [ -d "$plugin" ] || { echo "walkthrough: $app or $plugin is missing; run scripts/run.sh" >&2; exit 1; }

out=$repo/build/walkthrough/$(date -u +%Y%m%d-%H%M%S)
mkdir -p "$out" "$out/run/home" "$out/run/host"
# Installed as an artist would install it, into this run's own host folder.
bash "$repo/scripts/install.sh" --into "$out/run/host" --bundle "$plugin" >/dev/null
plugins=$out/run/host/Plug-ins
transcript=$out/transcript.txt
record=$out/session.json
say() { echo "$*" | tee -a "$transcript"; }
failures=0
step_ok() { say "ok: $*"; }
step_failed() { say "failed: $*"; failures=$((failures + 1)); }

# ---- An X server of our own: the first free display from 90 on. No reset when a client leaves,
# since every xdotool call is a client that comes and goes.
xvfb_pid=""
app_pid=""
cleanup() {
    [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null && wait "$app_pid" 2>/dev/null
    [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null && wait "$xvfb_pid" 2>/dev/null
    exec 7>&- 2>/dev/null
    rm -f "$out/run/control"
}
trap cleanup EXIT
for n in $(seq 90 140); do
    [ -e "/tmp/.X$n-lock" ] && continue
    Xvfb ":$n" -screen 0 1280x800x24 -nolisten tcp -noreset 2>/dev/null &
    xvfb_pid=$!
    for _ in $(seq 50); do
        xdpyinfo -display ":$n" >/dev/null 2>&1 && break
        kill -0 "$xvfb_pid" 2>/dev/null || break
        sleep 0.1
    done
    if xdpyinfo -display ":$n" >/dev/null 2>&1; then export DISPLAY=":$n"; break; fi
    kill "$xvfb_pid" 2>/dev/null; wait "$xvfb_pid" 2>/dev/null; xvfb_pid=""
done
[ -n "$xvfb_pid" ] || { echo "walkthrough: cannot start Xvfb" >&2; exit 1; }

# ---- Helpers: the record, windows, clicks, screenshots.
# wait_record <python expression over the record r> [seconds]: true once it holds.
wait_record() {
    python3 - "$record" "$1" "${2:-10}" <<'PY'
import json, sys, time
path, expr, timeout = sys.argv[1], sys.argv[2], float(sys.argv[3])
end = time.time() + timeout
while time.time() < end:
    try:
        r = json.load(open(path))
        if eval(expr, {"r": r}):
            sys.exit(0)
    except (OSError, ValueError, KeyError, IndexError, TypeError):
        pass
    time.sleep(0.03)
sys.exit(1)
PY
}
# query <python expression over the record r>: prints its value.
query() {
    python3 -c 'import json,sys; r=json.load(open(sys.argv[1])); print(eval(sys.argv[2]))' "$record" "$1" 2>/dev/null
}
active_layer_effects() { # layer name -> its effects, comma-separated
    query "', '.join(next(l['effects'] for c in r['compositions'] if c['active'] for l in c['layers'] if l['name'] == '$1'))"
}
windows() { # one line per visible window: id x y width height
    for w in $(xdotool search --onlyvisible --name . 2>/dev/null); do
        eval "$(xdotool getwindowgeometry --shell "$w" 2>/dev/null)" || continue
        echo "$w $X $Y $WIDTH $HEIGHT"
    done
}
click() { xdotool mousemove "$1" "$2" mousedown 1 sleep 0.1 mouseup 1; }
shot() { import -window root "$out/$1.png" && say "   screenshot $1.png"; }
# Menus are columns of 20-pixel rows under a title row; a submenu opens against the right edge of
# its parent. menu_open <x of the menu> <row>: clicks the row and prints the opened submenu's x.
menu_open() {
    local x=$1 row=$2 width edge
    width=$(windows | awk -v x="$x" '$2 == x && $3 == 0 {print $4; exit}')
    [ -n "$width" ] || return 1
    click $((x + width / 3)) $((31 + 20 * row))
    edge=$((x + width))
    for _ in $(seq 100); do
        windows | awk -v e="$edge" '$2 == e {found=1} END {exit !found}' && { echo "$edge"; return 0; }
        sleep 0.05
    done
    echo "$edge"
    return 1
}
menu_row_of() { # category [item] -> the Effect menu's row of the category, or the item's row in it
    python3 - "$project" "$@" <<'PY'
import json, sys
model = json.load(open(sys.argv[1]))
categories = []
for group in model["effects"]:
    c = group["category"]
    if c and c != "_Obsolete" and c not in [k for k, _ in categories]:
        categories.append((c, []))
    for k, names in categories:
        if k == c:
            names.extend(group["names"])
rows = {k: i + 2 for i, (k, _) in enumerate(categories)}  # after "Effect Controls", "Remove All"
if len(sys.argv) == 3:
    print(rows[sys.argv[2]])
else:
    print(dict(categories)[sys.argv[2]].index(sys.argv[3]))
PY
}

# ---- The artist's files, laid down before the first start as an installation would seed them
# (machine-wide; the plug-in copies them into the user's folder when it saves): an alias and two
# shortcut slots.
common=$out/run/disk/Library/Common/Tarvelo
user=$out/run/disk/Library/Application\ Support/Tarvelo
mkdir -p "$common"
printf 'blurry = Glow\n' >"$common/effects_search.txt"
printf 'Box = Box Blur\nGlow = Glow\n' >"$common/effects_shortcuts.txt"

# ---- The host: started again (same disk) for the second theme.
title="Simulated Host - Launch Teaser.aep"
start_host() {
    rm -f "$record"
    [ -p "$out/run/control" ] || mkfifo "$out/run/control"
    exec 7<>"$out/run/control"
    HOME=$out/run/home "$app" --plugins "$plugins" --project "$project" --root "$out/run/disk" --record "$record" \
        --news-url http://127.0.0.1:9/news --control <"$out/run/control" >>"$out/host.log" 2>&1 &
    app_pid=$!
    xdotool search --sync --onlyvisible --name "$title" >/dev/null 2>&1 &&
        wait_record "'compositions' in r and r['active'] and r['idleTicks'] > 0"
}
quit_host() { # through the application menu's Quit; true when the host ended
    local x1
    x1=$(menu_open 0 0) && click $((x1 + 30)) 31
    for _ in $(seq 100); do kill -0 "$app_pid" 2>/dev/null || break; sleep 0.05; done
    kill -0 "$app_pid" 2>/dev/null && return 1
    wait "$app_pid"
    quit_status=$?
    app_pid=""
    return 0
}
say "Walkthrough of the simulated host on $DISPLAY ($(date -u +%FT%TZ))"
say "host: $app"
say "project: $project"
say "plug-in: $plugin"

if start_host; then
    step_ok "host window \"$title\" is up; idle hooks $(query "r['idleHooks']"), death hooks $(query "r['deathHooks']"), host active: $(query "r['active']")"
    shot 01-host
else
    step_failed "host window did not appear (see host.log)"
    exit 1
fi

# ---- The search popup: chord, typing, navigation, application, preset, shortcut digit, theme.
# Key presses are X events (xdotool); the chord is read by the plug-in's idle hook from the X
# server's key state. The host records when each window's first paint was done and, for every key
# press that reached a window, the press time as the X server stamped it and the time its repaint
# ended (see hostsim/app/event_timing.h).
popup_shown() { wait_record "any(w['title'] == 'Effects Popup' for w in r['windows'])" "${1:-5}"; }
popup_hidden() { wait_record "all(w['title'] != 'Effects Popup' for w in r['windows'])" "${1:-5}"; }
# chord: plays Ctrl+Space as fingers do (both held for a moment); prints the monotonic time in ms
# just before the keys were sent.
chord() {
    python3 -c '
import subprocess, time
t = time.monotonic() * 1000
subprocess.run(["xdotool", "keydown", "ctrl", "keydown", "space", "sleep", "0.1", "keyup", "space", "keyup", "ctrl"])
print(t)'
}
# chord_latency <sent ms>: from the Space press (as the X server stamped it, or the sending time when
# the press went to no window of the host) to the first paint of the popup shown after it.
chord_latency() {
    python3 - "$record" "$1" <<'PY'
import json, sys
r, sent = json.load(open(sys.argv[1])), float(sys.argv[2])
painted = [w["paintedAtMs"] for w in r["shownWindows"] if w["title"] == "Effects Popup" and w["paintedAtMs"] > sent]
presses = [k["pressedAtMs"] for k in r["keys"] if k["keyCode"] == 65 and k["pressedAtMs"] >= sent - 1]
if painted:
    start = presses[0] if presses else sent
    print("%.1f %s" % (painted[0] - start, "x" if presses else "s"))
PY
}
median() { python3 -c 'import statistics,sys; v=[float(x) for x in sys.argv[1:]]; print("%.1f" % statistics.median(v) if v else "n/a")' "$@"; }
headline() { active_layer_effects Headline; }
effects_changed_from() { wait_record "', '.join(next(l['effects'] for c in r['compositions'] if c['active'] for l in c['layers'] if l['name'] == 'Headline')) != '$1'" 5; }

# Chord to visible popup, repeated: open, then the chord again closes it. The pointer rests over
# the host's project outline, where the popup opens.
xdotool mousemove 560 330
chord_times=()
kinds=""
for i in $(seq 8); do
    sent=$(chord)
    if popup_shown; then
        read -r ms kind < <(chord_latency "$sent")
        [ -n "$ms" ] && chord_times+=("$ms") && kinds="$kinds$kind"
        [ "$i" -eq 1 ] && { step_ok "Ctrl+Space opened the popup at the pointer: $(query "[(w['x'], w['y'], w['width'], w['height']) for w in r['windows'] if w['title'] == 'Effects Popup'][0]") (x, y, width, height)"; shot 02-popup-open; }
        chord >/dev/null
        popup_hidden || { step_failed "Ctrl+Space again did not hide the popup"; break; }
        [ "$i" -eq 1 ] && step_ok "Ctrl+Space again hid it"
    else
        step_failed "Ctrl+Space: no popup within 5 s"
        break
    fi
    sleep 0.2
done
chord_median=$(median "${chord_times[@]}")
say "   chord to popup painted over ${#chord_times[@]} runs: ${chord_times[*]} ms, measured from $(grep -o x <<<"$kinds" | wc -l) X-stamped presses and $(grep -o s <<<"$kinds" | wc -l) sending times"

# Typing filters; Down and Return apply the second row through the Effect menu.
open_popup() { chord >/dev/null && popup_shown && sleep 0.35; } # the search field takes focus after 250 ms
if open_popup; then
    xdotool type --delay 80 blur
    sleep 0.3
    shot popup-dark
    step_ok "typed \"blur\": the alias's effect (Glow) first, then the effects containing it"
    before=$(headline); menu_before=$(query "r['menuActionsSent']")
    xdotool key --delay 80 Down Return
    if effects_changed_from "$before"; then
        sleep 0.3
        step_ok "Down, Return: Headline now has $(headline); menu actions $menu_before -> $(query "r['menuActionsSent']"), direct applications $(query "r['suiteApplications']")"
    else
        step_failed "Down, Return: Headline's effects did not change ($before)"
    fi
else
    step_failed "the popup did not open for typing"
fi

# A preset: Tab jumps to the first preset row; the host runs the plug-in's script.
if open_popup; then
    xdotool type --delay 80 teal
    sleep 0.2
    shot 03-popup-preset
    xdotool key --delay 80 Tab Return
    if wait_record "any('Teal Orange' in p for c in r['compositions'] if c['active'] for l in c['layers'] if l['name'] == 'Headline' for p in l['presets'])" 5; then
        step_ok "\"teal\", Tab, Return: preset applied by the host's script: $(query "r['scripts'][-1]")"
    else
        step_failed "the preset did not reach the layer"
    fi
fi

# A shortcut digit: the bar shows the slots while the search text is empty; 2 applies slot 2.
if open_popup; then
    shot 04-popup-shortcuts
    before=$(headline)
    xdotool key 2
    if effects_changed_from "$before"; then
        step_ok "digit 2: slot 2 (Glow) applied; Headline has $(headline)"
    else
        step_failed "digit 2 applied nothing"
    fi
    popup_hidden 2 || chord >/dev/null
fi

# Keystroke to repainted rows, over a few searches typed at an artist's pace.
measure_keys() {
    local from
    from=$(query "len(r['keys'])")
    for word in gaussian blur glow sharpen; do
        open_popup || continue
        xdotool type --delay 90 "$word"
        xdotool key --delay 90 BackSpace BackSpace BackSpace
        sleep 0.1
        chord >/dev/null
        popup_hidden
    done
    python3 - "$record" "$from" <<'PY'
import json, sys
r = json.load(open(sys.argv[1]))
keys = [k for k in r["keys"][int(sys.argv[2]):] if k["window"] == "Effects Popup" and k["latencyMs"] >= 0]
print(" ".join("%.1f" % k["latencyMs"] for k in keys))
PY
}
key_times=$(measure_keys)
key_median=$(median $key_times)
say "   keystroke to repainted rows, $(wc -w <<<"$key_times") presses: median $key_median ms"

# ---- The Effect menu, as the artist uses it: Blur & Sharpen > Gaussian Blur.
effects_before=$(active_layer_effects Headline)
actions_before=$(query "r['menuActionsSent']")
row=$(menu_row_of "Blur & Sharpen")
item=$(menu_row_of "Blur & Sharpen" "Gaussian Blur")
if x1=$(menu_open 0 5) && x2=$(menu_open "$x1" "$row"); then
    shot 04-effect-menu
    width=$(windows | awk -v x="$x2" '$2 == x {print $4; exit}')
    click $((x2 + width / 3)) $((31 + 20 * item))
    if wait_record "r['menuActionsSent'] > $actions_before"; then
        sleep 0.1
        step_ok "Effect > Blur & Sharpen > Gaussian Blur: Headline has $(active_layer_effects Headline) (was $effects_before); menu actions $(query "r['menuActionsSent']"), direct applications $(query "r['suiteApplications']")"
    else
        step_failed "the Effect menu item did not reach the host"
    fi
    menu_open 0 5 >/dev/null # closes the menus again
    shot 05-effect-applied
else
    step_failed "could not open Effect > Blur & Sharpen"
fi
say "   disabled categories in this project: $(python3 -c 'import json,sys; print(json.load(open(sys.argv[1]))["host"].get("disabledCategories", []))' "$project")"

# ---- Frame capture: the popup's screenshot button renders the current frame into the capture
# folder (the default one, under the simulated documents), then a white flash over the popup fades
# out in ten steps of 100 ms. The render and the save come first, and take a second or more on a
# loaded machine, so the screen is grabbed again and again for a few seconds from the click (raw
# grabs: ImageMagick's PNG writing would take longer than the flash lasts) and the grab where the
# popup is brightest is kept. The capture may be written after the click returns: the file is
# waited for.
captures=$out/run/disk/Documents/Tarvelo/Quillo/Capture
popup_geometry() { query "[(w['x'], w['y'], w['width'], w['height']) for w in r['windows'] if w['title'] == 'Effects Popup'][0]" | tr -d '(),'; }
brightness() { # image x y width height -> the area's mean grey, 0..1
    convert "$1" -crop "$4x$5+$2+$3" +repage -colorspace gray -format '%[fx:mean]' info: 2>/dev/null
}
capture_png() { # the newest PNG in the capture folder, once one is there
    for _ in $(seq 200); do
        f=$(ls -t "$captures"/*.png 2>/dev/null | head -1)
        [ -n "$f" ] && { echo "$f"; return 0; }
        sleep 0.05
    done
    return 1
}
png_size() { python3 -c 'import struct,sys; d=open(sys.argv[1],"rb").read(24); print("%d x %d" % struct.unpack(">II", d[16:24]))' "$1"; }
xdotool mousemove 560 330 # the popup opens over the project outline again, clear of the menus
if open_popup; then
    read -r px py pw ph < <(popup_geometry)
    import -window root "$out/run/before-flash.bmp"
    before_grey=$(brightness "$out/run/before-flash.bmp" "$px" "$py" "$pw" "$ph")
    click $((px + pw - 209 + 14)) $((py + 8 + 14))
    start=$(date +%s%N)
    n=0
    while [ $(( ($(date +%s%N) - start) / 1000000 )) -lt 6000 ]; do
        n=$((n + 1))
        import -window root "$out/run/flash-$n.bmp"
    done
    best=0 flash_grey=0
    for i in $(seq "$n"); do
        grey=$(brightness "$out/run/flash-$i.bmp" "$px" "$py" "$pw" "$ph")
        python3 -c 'import sys; sys.exit(0 if float(sys.argv[1]) > float(sys.argv[2]) else 1)' "${grey:-0}" "$flash_grey" &&
            best=$i flash_grey=$grey
    done
    if python3 -c 'import sys; sys.exit(0 if float(sys.argv[2]) > float(sys.argv[1]) + 0.1 else 1)' "$before_grey" "$flash_grey"; then
        convert "$out/run/flash-$best.bmp" "$out/capture-flash.png"
        step_ok "screenshot button: the flash over the popup in grab $best of $n (the popup's mean grey $before_grey before the click, $flash_grey then)"
        say "   screenshot capture-flash.png"
    else
        step_failed "none of $n grabs showed the flash over the popup (mean grey $before_grey before the click, at most $flash_grey)"
    fi
    rm -f "$out"/run/flash-*.bmp "$out/run/before-flash.bmp"
    if png=$(capture_png); then
        step_ok "the capture: $(basename "$png") ($(png_size "$png"), $(stat -c %s "$png") bytes) in the capture folder"
        cp "$png" "$out/capture.png"
        say "   capture folder: $(cd "$captures" && ls | tr '\n' ' ')"
    else
        step_failed "the capture: nothing in $captures within 10 s"
    fi
    xdotool key Escape
    popup_hidden
else
    step_failed "the popup did not open for the screenshot button"
fi

# ---- The gallery: three more captures (Shift+F5 with the popup open), then F5 opens the gallery
# over the capture folder; Option (Super under GNUstep) + A selects all four, and the preview shows
# them once decoded. gallery_shot <name>: the steps up to the screenshot of the gallery's window.
gallery_title="Quillo Image Gallery"
gallery_shown() { wait_record "any(w['title'] == '$gallery_title' for w in r['windows'])" "${1:-5}"; }
gallery_hidden() { wait_record "all(w['title'] != '$gallery_title' for w in r['windows'])" "${1:-5}"; }
capture_count() { ls "$captures"/*.png 2>/dev/null | wc -l; }
gallery_shot() {
    open_popup || { step_failed "the popup did not open for the gallery"; return 1; }
    xdotool key F5
    if ! gallery_shown; then
        step_failed "F5 with the popup open: no gallery window within 5 s"
        return 1
    fi
    sleep 0.5
    xdotool key super+a
    sleep 3 # the four full pictures decoded off the main thread
    local id
    id=$(xdotool search --onlyvisible --name "^$gallery_title\$" 2>/dev/null | tail -1)
    if [ -n "$id" ] && import -window "$id" "$out/$1.png"; then
        step_ok "F5 opened \"$gallery_title\" ($(query "[(w['x'], w['y'], w['width'], w['height']) for w in r['windows'] if w['title'] == '$gallery_title'][0]") (x, y, width, height)) with $(capture_count) captures, then Option+A"
        say "   screenshot $1.png"
    else
        step_failed "no screenshot of the gallery window"
    fi
    xdotool key Escape
    gallery_hidden || step_failed "Escape did not hide the gallery"
    # Under GNUstep the main menu ignores its next click after the gallery was shown; a click on the
    # host's window (away from its fields) first keeps the Quit of the menu working.
    click 240 200
}
xdotool mousemove 560 330
if open_popup; then
    for _ in 1 2 3; do
        before=$(capture_count)
        xdotool keydown shift keydown F5 sleep 0.12 keyup F5 keyup shift
        for _ in $(seq 100); do [ "$(capture_count)" -gt "$before" ] && break; sleep 0.1; done
    done
    n=$(capture_count)
    if [ "$n" -ge 4 ]; then step_ok "Shift+F5 three times: $n captures in the capture folder"; else step_failed "Shift+F5 three times: only $n captures"; fi
    xdotool key Escape
    popup_hidden
    sleep 1 # the last capture written whole
    gallery_shot gallery
else
    step_failed "the popup did not open for more captures"
fi

# ---- The preferences window (a modal window of the plug-in). Its controls' places are those of
# PreferencesWindow (preferences/preferences_window.h): the theme's drop-down at 130, 12, 150 x 24.
# prefs_window: waits for it and prints its inside's x and y.
prefs_window() {
    local id
    for _ in $(seq 100); do
        id=$(xdotool search --onlyvisible --name '^Preferences$' 2>/dev/null | tail -1)
        [ -n "$id" ] && break
        sleep 0.05
    done
    [ -n "$id" ] || return 1
    sleep 0.5
    eval "$(xdotool getwindowgeometry --shell "$id")"
    echo "$X $Y"
}
# choose_from_drop_down <x> <y> <index>: the drop-down's menu follows the held button and takes the
# item the button is released over; it opens at the pointer, a title row and then rows of 20 pixels.
choose_from_drop_down() {
    local menu_x menu_y
    xdotool mousemove "$1" "$2" mousedown 1
    for _ in $(seq 50); do
        read -r menu_x menu_y < <(windows | awk -v y="$2" '$5 > 22 && $4 < 260 && ($3 - y) ^ 2 < 1600 {print $2, $3}' | tail -1)
        [ -n "$menu_x" ] && break
        sleep 0.05
    done
    [ -n "$menu_x" ] || { xdotool mouseup 1; return 1; }
    xdotool mousemove $((menu_x + 30)) $((menu_y + 22 + 20 * $3 + 10)) sleep 0.2 mouseup 1
}

# ---- The script console: words typed into the host's console field, as a script panel sends them.
eval "$(xdotool search --onlyvisible --name "$title" getwindowgeometry --shell 2>/dev/null | head -5)"
click $((X + WIDTH / 2)) $((Y + HEIGHT - 151))
n=0
for word in news preferences requeststatus Shortcut; do
    xdotool type --delay 30 "$word"
    xdotool key Return
    if [ "$word" = preferences ]; then # the preferences window, closed again before the result
        if prefs_window >/dev/null; then
            shot preferences-dark
            xdotool key Escape
        else
            step_failed "console \"preferences\" opened no preferences window"
        fi
    fi
    n=$((n + 1))
    if wait_record "len(r['console']) >= $n" 5; then
        result=$(query "r['console'][$((n - 1))]['result'].split(chr(10))[0:2]")
        step_ok "console \"$word\" -> status $(query "r['console'][$((n - 1))]['status']"), $result"
    else
        step_failed "console \"$word\" got no answer"
    fi
done
shot 06-console

# ---- The other theme, chosen in the preferences window (the popup's gear button): the window
# turns Light at once, and the popup saves the choice when it closes; the host is started again and
# the popup reads it when the plug-in sets it up.
theme_through_window() {
    local px py pw ph wx wy
    open_popup || return 1
    read -r px py pw ph < <(popup_geometry)
    click $((px + pw - 80 + 14)) $((py + 8 + 14)) # the gear: EffectsPopupWindow::ToolButtonRight
    read -r wx wy < <(prefs_window) || return 1
    choose_from_drop_down $((wx + 130 + 75)) $((wy + 12 + 12)) 1 || return 1
    sleep 0.5
    shot preferences-light
    xdotool key Escape
    wait_record "all(w['title'] != 'Preferences' for w in r['windows'])" 5
}
light_chosen=0
if theme_through_window; then
    light_chosen=1
    step_ok "preferences window: UI Color set to Light through its drop-down; the popup saves it on closing"
else
    step_failed "the preferences window did not switch the theme to Light"
fi

# ---- Quit from the application menu: the death hook runs, every suite is back, the plug-in's
# files are in the user's folder.
if quit_host; then
    step_ok "Quit: host exited with $quit_status; death hooks run $(query "r['deathHooksRun']"), suites outstanding $(query "r['suitesOutstanding']"); user files: $(cd "$user" 2>/dev/null && ls | tr '\n' ' ')"
else
    step_failed "Quit did not end the host"
fi

if [ "$light_chosen" = 1 ]; then
    if start_host; then
        step_ok "host started again on the same disk"
        shot 07-host-restarted
        xdotool mousemove 560 330
        if open_popup; then
            xdotool type --delay 80 blur
            sleep 0.3
            shot popup-light
            step_ok "Light theme: typed \"blur\""
            chord >/dev/null
            popup_hidden
        else
            step_failed "the popup did not open in the Light theme"
        fi
        # A mistyped search: near misses under "Did you mean", the letters that match highlighted.
        if open_popup; then
            xdotool type --delay 80 gausian
            sleep 0.3
            shot popup-did-you-mean
            step_ok "typed \"gausian\", a typo: near misses under \"Did you mean\""
            chord >/dev/null
            popup_hidden
        fi
        if open_popup; then
            before=$(headline)
            xdotool key 1
            if effects_changed_from "$before"; then
                step_ok "digit 1 after the restart: slot 1 (Box Blur) read back from the user's files; Headline has $(headline)"
            else
                step_failed "digit 1 after the restart applied nothing"
            fi
        fi
        light_keys=$(measure_keys)
        key_times="$key_times $light_keys"
        key_median=$(median $key_times)
        gallery_shot gallery-light
        quit_host || step_failed "Quit did not end the restarted host"
    else
        step_failed "the host did not start again"
    fi
fi

say "figures (medians): chord to popup visible $chord_median ms over ${#chord_times[@]} runs; keystroke to repainted rows $key_median ms over $(wc -w <<<"$key_times") presses (both themes)"
say "screenshots of the popup: popup-dark.png, popup-light.png, popup-did-you-mean.png; of the gallery: gallery.png, gallery-light.png; of the preferences window: preferences-dark.png, preferences-light.png"
say "steps failed: $failures"
echo
echo "walkthrough folder: $out"
[ "$failures" -eq 0 ]

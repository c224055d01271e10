#!/usr/bin/env python3
"""The popup on screen under Wine: hostsim-win with the plug-in, xdotool as the artist.

Runs in the environment of scripts/wine-env.sh (WINEPREFIX, DISPLAY of a private Xvfb). Starts
`wine hostsim-win.exe --control ...`, plays the chord, types, applies, closes, captures a frame and
grabs the popup in both themes, checking each step against the host's session record and the X
display. Every step prints "ok: ..." or "failed: ..."; the exit status is the number of failures
(capped). With --out, the grabs are kept there as PNG and the figures (chord to popup painted,
keystroke to rows repainted) are measured over --presses runs and printed as medians.
"""

import argparse
import glob
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

POPUP = "Effects Popup"
HOST_TITLE = "Simulated Host"
VK_SPACE = 0x20


def now_ms():
    # The clock Wine's performance counter reads, which the host's figures are on.
    return time.clock_gettime(time.CLOCK_MONOTONIC_RAW) * 1000.0


class Scene:
    def __init__(self, args):
        self.args = args
        self.failures = 0
        self.work = tempfile.mkdtemp(prefix="quillo-onscreen-")
        self.out = args.out
        self.transcript = open(os.path.join(self.out, "transcript.txt"), "a") if self.out else None
        self.host = None
        self.record_path = None
        self.log = None

    # ---- reporting
    def say(self, text):
        print(text, flush=True)
        if self.transcript:
            self.transcript.write(text + "\n")
            self.transcript.flush()

    def ok(self, text):
        self.say("ok: " + text)

    def failed(self, text):
        self.say("failed: " + text)
        self.failures += 1

    # ---- the record
    def record(self):
        try:
            with open(self.record_path) as f:
                return json.load(f)
        except (OSError, ValueError):
            return None

    def wait(self, predicate, timeout=5.0):
        """The record once predicate holds for it, or None after timeout seconds."""
        end = time.time() + timeout
        while time.time() < end:
            r = self.record()
            try:
                if r is not None and predicate(r):
                    return r
            except (KeyError, IndexError, TypeError, StopIteration):
                pass
            if self.host is not None and self.host.poll() is not None:
                return None
            time.sleep(0.03)
        return None

    def popup(self, r):
        return next((w for w in r["windows"] if w["title"] == POPUP), None)

    def popup_shown(self, timeout=5.0):
        return self.wait(lambda r: self.popup(r) is not None, timeout)

    def popup_hidden(self, timeout=5.0):
        return self.wait(lambda r: self.popup(r) is None, timeout)

    @staticmethod
    def effects(r, layer="Headline"):
        return next(l["effects"] for c in r["compositions"] if c["active"] for l in c["layers"]
                    if l["name"] == layer)

    # ---- the host
    def start_host(self, root):
        self.record_path = os.path.join(root, "session.json")
        if os.path.exists(self.record_path):
            os.remove(self.record_path)
        self.log = open(os.path.join(self.out or self.work, "host.log"), "a")
        self.started_ms = now_ms()
        self.host = subprocess.Popen(
            ["wine", self.args.exe, "--control", "--plugins", self.args.plugins, "--root", root,
             "--record", self.record_path, "--news-url", "http://127.0.0.1:9/news"],
            stdin=subprocess.PIPE, stdout=self.log, stderr=self.log, text=True)
        # Wine's first start in a fresh prefix takes a while.
        r = self.wait(lambda r: r["idleTicks"] > 0 and any(
            w["title"].startswith(HOST_TITLE) for w in r["windows"]), 60)
        if r is None:
            return None
        self.control("select Headline")
        main = next(w for w in r["windows"] if w["title"].startswith(HOST_TITLE))
        # The keys go where the pointer is (no window manager), and the chord is read from the
        # key state Wine keeps for its windows: the pointer rests over the host's window.
        self.xdotool("mousemove", str(main["x"] + main["width"] // 2), str(main["y"] + main["height"] // 3))
        wid = self.xdo_out("search", "--onlyvisible", "--name", HOST_TITLE).split()
        if wid:
            self.xdotool("windowfocus", wid[0])
        return r

    def control(self, line):
        try:
            self.host.stdin.write(line + "\n")
            self.host.stdin.flush()
        except (OSError, ValueError):
            pass

    def quit_host(self):
        if self.host is None:
            return None
        self.control("quit")
        try:
            status = self.host.wait(15)
        except subprocess.TimeoutExpired:
            self.host.kill()
            status = None
        self.host = None
        return status

    # ---- the artist
    def xdotool(self, *args):
        subprocess.run(["xdotool", *args], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def xdo_out(self, *args):
        return subprocess.run(["xdotool", *args], capture_output=True, text=True).stdout

    def chord(self):
        """Ctrl+Space held like fingers; the time just before the keys were sent."""
        sent = now_ms()
        self.xdotool("keydown", "ctrl", "keydown", "space", "sleep", "0.1", "keyup", "space", "keyup", "ctrl")
        return sent

    def open_popup(self):
        self.chord()
        r = self.popup_shown()
        if r is not None:
            time.sleep(0.35)  # the search field takes the keys a moment after the popup shows
        return r

    def close_popup(self):
        if self.popup_hidden(0.1) is None:
            self.xdotool("key", "Escape")
            if self.popup_hidden(2) is None:
                self.chord()
                self.popup_hidden(2)

    # ---- the screen
    def grab(self, rect, name):
        """The rect (x, y, width, height) of the screen as (width, height, RGB bytes)."""
        x, y, w, h = rect
        path = os.path.join(self.work, name + ".ppm")
        subprocess.run(["import", "-window", "root", "-crop", "%dx%d+%d+%d" % (w, h, x, y), "+repage",
                        "-depth", "8", path], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if self.out:
            subprocess.run(["convert", path, os.path.join(self.out, name + ".png")],
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            return read_ppm(path)
        except (OSError, ValueError):
            return None

    def popup_rect(self, r):
        p = self.popup(r)
        return (p["x"], p["y"], p["width"], p["height"])

    # ---- the steps
    def run(self):
        root = os.path.join(self.work, "root")
        os.makedirs(root)
        r = self.start_host(root)
        if r is None:
            self.failed("hostsim-win did not show its window with idle calls going (see host.log)")
            return
        host_painted = [w["paintedAtMs"] for w in r["shownWindows"]]
        self.ok("host window up after %.1f s; idle hooks %d; windows %s" % (
            (now_ms() - self.started_ms) / 1000, r["idleHooks"], [w["title"] for w in r["windows"]]))
        if host_painted and not self.started_ms <= min(host_painted) <= now_ms():
            self.say("   note: the host's clock is not the script's (first paint %.0f, start %.0f)" % (
                min(host_painted), self.started_ms))

        self.stamped = 0  # chord figures measured from the press's own time stamp
        chord_times = self.chord_runs(self.args.presses)
        dark = self.type_and_apply()
        key_times = self.measure_keys() if self.out else []
        self.escape_closes()
        self.capture(root)
        light = self.light_theme(root)
        if dark and light:
            d, l = mean_grey(dark), mean_grey(light)
            if l > d + 0.2:
                self.ok("both themes painted: popup mean grey %.2f dark, %.2f light" % (d, l))
            else:
                self.failed("the themes' grabs do not differ as they should: %.2f dark, %.2f light" % (d, l))
        key_times += self.measure_keys() if self.out and light else []
        status = self.quit_host()
        (self.ok if status == 0 else self.failed)("quit: host exited with %s" % status)
        if self.out:
            self.say("   chord to popup painted, %d runs: %s ms (%d from the Space press's time stamp, the "
                     "others from the sending time)" % (len(chord_times), ", ".join("%.1f" % t for t in chord_times),
                                                        self.stamped))
            self.say("figures (medians): chord to popup painted %s ms over %d runs; keystroke to "
                     "repainted rows %s ms over %d presses" % (
                         median(chord_times), len(chord_times), median(key_times), len(key_times)))

    def chord_runs(self, runs):
        times = []
        for i in range(runs):
            sent = self.chord()
            r = self.popup_shown()
            if r is None:
                self.failed("Ctrl+Space: no popup within 5 s")
                return times
            r = self.wait(lambda r: any(w["title"] == POPUP and w["paintedAtMs"] > sent
                                        for w in r["shownWindows"]), 2) or r
            painted = [w["paintedAtMs"] for w in r["shownWindows"] if w["title"] == POPUP and w["paintedAtMs"] > sent]
            presses = [k["pressedAtMs"] for k in r["keys"] if k["keyCode"] == VK_SPACE and k["pressedAtMs"] >= sent - 1]
            if painted:
                times.append(painted[0] - (presses[0] if presses else sent))
                self.stamped += 1 if presses else 0
            if i == 0:
                self.ok("Ctrl+Space opened the popup: %s (x, y, width, height)" % (self.popup_rect(r),))
            self.chord()
            if self.popup_hidden() is None:
                self.failed("Ctrl+Space again did not hide the popup")
                return times
            if i == 0:
                self.ok("Ctrl+Space again hid it")
            time.sleep(0.2)
        return times

    def type_and_apply(self):
        r = self.open_popup()
        if r is None:
            self.failed("the popup did not open for typing")
            return None
        rect = self.popup_rect(r)
        empty = self.grab(rect, "popup-empty")
        keys_before = len(r["keys"])
        self.xdotool("type", "--delay", "80", "blur")
        r = self.wait(lambda r: sum(1 for k in r["keys"][keys_before:] if k["window"] == POPUP) >= 4, 3)
        time.sleep(0.3)
        r = self.record()
        rect = self.popup_rect(r) if self.popup(r) else rect
        dark = self.grab(rect, "popup-dark")
        typed = [k for k in r["keys"][keys_before:] if k["window"] == POPUP]
        if len(typed) >= 4 and all(k["latencyMs"] >= 0 for k in typed):
            self.ok("typed \"blur\": %d key presses reached the popup, repainted after %s ms" % (
                len(typed), ", ".join("%.1f" % k["latencyMs"] for k in typed)))
        else:
            self.failed("typed \"blur\": the record shows %d timed presses in the popup" % len(typed))
        if empty and dark and empty != dark:
            self.ok("the popup's grab after \"blur\" differs from the empty search's")
        else:
            self.failed("the popup looks the same after typing \"blur\"")
        before = self.effects(r)
        self.xdotool("key", "Return")
        r = self.wait(lambda r: self.effects(r) != before, 5)
        if r is not None:
            self.ok("Return: Headline now has %s (was %s); menu actions %d, direct applications %d" % (
                self.effects(r), before, r["menuActionsSent"], r["suiteApplications"]))
        else:
            self.failed("Return: Headline's effects did not change (%s)" % before)
        self.close_popup()
        return dark

    def escape_closes(self):
        if self.open_popup() is None:
            self.failed("the chord did not open the popup again")
            return
        self.xdotool("key", "Escape")
        (self.ok if self.popup_hidden() else self.failed)("the chord again, then Escape closes the popup")

    def measure_keys(self):
        """Keystroke to repainted rows while searches are typed; the latencies in ms."""
        # By time, not by index: the record keeps the latest 200 presses only.
        start = now_ms()
        for word in ["gaussian", "blur", "glow", "sharpen"]:
            if self.open_popup() is None:
                continue
            self.xdotool("type", "--delay", "90", word)
            self.xdotool("key", "--delay", "90", "BackSpace", "BackSpace", "BackSpace")
            time.sleep(0.1)
            # The chord closes it as the Linux walkthrough does (Escape is checked on its own).
            self.chord()
            if self.popup_hidden() is None:
                self.close_popup()
        r = self.record() or {"keys": []}
        return [k["latencyMs"] for k in r["keys"]
                if k["window"] == POPUP and k["latencyMs"] >= 0 and k["pressedAtMs"] >= start]

    def capture_folders(self, root):
        prefix = os.environ.get("WINEPREFIX", "")
        return [root] + glob.glob(os.path.join(prefix, "drive_c", "users", "*"))

    def find_captures(self, root):
        found = []
        for folder in self.capture_folders(root):
            found += glob.glob(os.path.join(folder, "**", "Capture", "*.png"), recursive=True)
        return found

    def capture(self, root):
        before = set(self.find_captures(root))
        started = time.time()
        self.control("console screenshot")
        png = None
        while png is None and time.time() - started < 15:
            new = [f for f in self.find_captures(root) if f not in before]
            if new:
                time.sleep(0.2)  # the file may still be being written
                png = new[0]
            else:
                time.sleep(0.1)
        if png is None:
            self.failed("console screenshot: no PNG in a capture folder within 15 s")
            return
        with open(png, "rb") as f:
            data = f.read()
        decoded = subprocess.run(["convert", png, "-format", "%wx%h", "info:"], capture_output=True,
                                 text=True).stdout.strip()
        if data.startswith(b"\x89PNG\r\n\x1a\n") and decoded:
            self.ok("console screenshot: %s (%d bytes, %s, decodes)" % (png, len(data), decoded))
            if self.out:
                shutil.copy(png, os.path.join(self.out, "capture.png"))
        else:
            self.failed("console screenshot: %s is no PNG that decodes" % png)

    def x_window(self, name, timeout=5.0):
        """The geometry (x, y, width, height) of the visible X window named name, once there."""
        end = time.time() + timeout
        while time.time() < end:
            ids = self.xdo_out("search", "--onlyvisible", "--name", name).split()
            if ids:
                g = dict(line.split("=", 1) for line in
                         self.xdo_out("getwindowgeometry", "--shell", ids[-1]).split() if "=" in line)
                if all(k in g for k in ("X", "Y", "WIDTH", "HEIGHT")):  # not gone meanwhile
                    return int(g["X"]), int(g["Y"]), int(g["WIDTH"]), int(g["HEIGHT"])
            time.sleep(0.05)
        return None

    def theme_through_window(self):
        """Light chosen in the preferences window (the popup's gear), as the artist does it."""
        r = self.open_popup()
        if r is None:
            return False
        px, py, pw, _ = self.popup_rect(r)
        # The gear: the popup's right tool button; the theme's drop-down at 130, 12 (150 x 24) in
        # the window, its native menu's second row 16 pixels under the first.
        self.xdotool("mousemove", str(px + pw - 80 + 14), str(py + 8 + 14), "click", "1")
        prefs = self.x_window("^Preferences$")
        if prefs is None:
            self.close_popup()
            return False
        time.sleep(0.5)
        x, y = prefs[0] + 130 + 75, prefs[1] + 12 + 12
        self.xdotool("mousemove", str(x), str(y), "mousedown", "1", "sleep", "0.5",
                     "mousemove", str(x - 45), str(y + 39), "sleep", "0.3", "mouseup", "1")
        time.sleep(0.5)
        self.xdotool("key", "Escape")
        end = time.time() + 5
        while self.x_window("^Preferences$", 0.1) is not None and time.time() < end:
            time.sleep(0.1)
        self.close_popup()
        return True

    def light_theme(self, root):
        """The popup in the Light theme, after a second start: chosen in the preferences window, or
        else written into the settings file the first start saved."""
        through_window = self.theme_through_window()
        status = self.quit_host()
        settings = [f for f in self.capture_folders(root)
                    for f in glob.glob(os.path.join(f, "**", "effects_settings"), recursive=True)]
        if through_window and settings and all(get_theme(path) == 1 for path in settings):
            self.ok("preferences window: UI Color set to Light through its drop-down, saved on closing")
        else:
            self.say("   note: the preferences window did not switch the theme (%s); the settings file "
                     "is set to Light instead" % ("it did not open" if not through_window else "not saved"))
            if not settings:
                self.failed("no settings file was saved by the first start (status %s)" % status)
                return None
            for path in settings:
                set_theme(path, 1)
        if self.start_host(root) is None:
            self.failed("the host did not start again")
            return None
        r = self.open_popup()
        if r is None:
            self.failed("the popup did not open in the Light theme")
            return None
        self.xdotool("type", "--delay", "80", "blur")
        time.sleep(0.5)
        r = self.record()
        light = self.grab(self.popup_rect(r), "popup-light")
        self.ok("second start with the theme Light in %s: typed \"blur\"" % settings[0])
        self.close_popup()
        return light


def read_ppm(path):
    with open(path, "rb") as f:
        data = f.read()
    fields, at = [], 0
    while len(fields) < 4:
        while data[at:at + 1].isspace():
            at += 1
        end = at
        while not data[end:end + 1].isspace():
            end += 1
        fields.append(data[at:end])
        at = end
    if fields[0] != b"P6":
        raise ValueError("not a binary PPM")
    width, height = int(fields[1]), int(fields[2])
    return width, height, data[at + 1:at + 1 + width * height * 3]


def mean_grey(image):
    _, _, pixels = image
    return sum(pixels) / (255.0 * len(pixels)) if pixels else 0


def theme_chunks(data):
    """The offsets of the theme chunk's (id 1, four bytes) values in settings bytes."""
    at, found = 8, []
    while at + 8 <= len(data):
        ident = int.from_bytes(data[at:at + 4], "little")
        size = int.from_bytes(data[at + 4:at + 8], "little")
        if ident == 1 and size == 4:
            found.append(at + 8)
        at += 8 + size
    return found


def get_theme(path):
    with open(path, "rb") as f:
        data = f.read()
    values = [int.from_bytes(data[at:at + 4], "little") for at in theme_chunks(data)]
    return values[-1] if values else None


def set_theme(path, theme):
    """Sets the theme chunk (id 1, four bytes) of a settings file, its other chunks kept."""
    with open(path, "rb") as f:
        data = bytearray(f.read())
    for at in theme_chunks(data):
        data[at:at + 4] = theme.to_bytes(4, "little")
    with open(path, "wb") as f:
        f.write(data)


def median(values):
    return "%.1f" % statistics.median(values) if values else "n/a"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--exe", required=True, help="hostsim-win.exe")
    parser.add_argument("--plugins", required=True, help="a Plug-ins folder holding Quillo.aex")
    parser.add_argument("--out", help="a folder for the grabs, the capture and the transcript")
    parser.add_argument("--presses", type=int, default=2, help="chord runs for the figure")
    args = parser.parse_args()
    if args.out:
        os.makedirs(args.out, exist_ok=True)
    scene = Scene(args)
    started = time.time()
    try:
        scene.run()
    finally:
        if scene.host is not None:
            scene.host.kill()
        if scene.log:
            scene.log.close()
    scene.say("steps failed: %d (%.1f s)" % (scene.failures, time.time() - started))
    if scene.failures and not args.out:
        log = os.path.join(scene.work, "host.log")
        if os.path.exists(log):
            sys.stdout.write(open(log, errors="replace").read()[-3000:])
    shutil.rmtree(scene.work, ignore_errors=True)
    sys.exit(min(scene.failures, 100))


if __name__ == "__main__":
    main()

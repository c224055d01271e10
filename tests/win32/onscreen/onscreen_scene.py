#!/usr/bin/env python3
"""The popup on screen under Wine: hostsim-win with the plug-in, xdotool as the artist.

In the environment of scripts/wine-env.sh (WINEPREFIX, DISPLAY of a private Xvfb): plays the chord,
types, applies, closes, captures a frame, switches to Light in the preferences window and grabs the
popup in both themes, checking each step against the host's session record and the X display.
Prints "ok: ..." or "failed: ..." per step; exits with the number of failures (capped). With --out,
the grabs and a transcript are kept there (scripts/walkthrough-win32.sh adds its figures).
"""

import argparse
import glob
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

POPUP = "Effects Popup"
HOST_TITLE = "Simulated Host"


class Scene:
    def __init__(self, args):
        self.args = args
        self.out = args.out
        self.failures = 0
        self.work = tempfile.mkdtemp(prefix="quillo-onscreen-")
        self.root = os.path.join(self.work, "root")
        self.host = self.log = None
        self.transcript = open(os.path.join(self.out, "transcript.txt"), "a") if self.out else None

    def say(self, text):
        print(text, flush=True)
        if self.transcript:
            self.transcript.write(text + "\n")
            self.transcript.flush()

    def check(self, holds, text):
        """A step's verdict, said as "ok: text" or "failed: text"; whether it held."""
        self.say(("ok: " if holds else "failed: ") + text)
        self.failures += 0 if holds else 1
        return bool(holds)

    def record(self):
        try:
            with open(self.record_path) as f:
                return json.load(f)
        except (OSError, ValueError):
            return None

    def poll(self, get, timeout=5.0):
        """get()'s first answer that holds (a lookup that fails is none), or None after timeout seconds
        or once the host has ended."""
        end = time.time() + timeout
        while time.time() < end and (self.host is None or self.host.poll() is None):
            try:
                value = get()
                if value:
                    return value
            except (KeyError, IndexError, TypeError, ValueError, StopIteration):
                pass
            time.sleep(0.03)
        return None

    def wait(self, predicate, timeout=5.0):
        """The record once predicate holds for it, or None after timeout seconds."""
        return self.poll(lambda: predicate(r := self.record()) and r, timeout)

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

    def find(self, pattern):
        """Files matching pattern anywhere below the host's root or the Wine prefix's user folders."""
        folders = [self.root] + glob.glob(os.path.join(os.environ.get("WINEPREFIX", ""), "drive_c", "users", "*"))
        return [f for d in folders for f in glob.glob(os.path.join(d, "**", pattern), recursive=True)]

    def start_host(self):
        self.record_path = os.path.join(self.root, "session.json")
        if os.path.exists(self.record_path):
            os.remove(self.record_path)
        self.log = open(os.path.join(self.out or self.work, "host.log"), "a")
        started = time.time()
        self.host = subprocess.Popen(
            ["wine", self.args.exe, "--control", "--plugins", self.args.plugins, "--root", self.root,
             "--record", self.record_path, "--news-url", "http://127.0.0.1:9/news"],
            stdin=subprocess.PIPE, stdout=self.log, stderr=self.log, text=True)
        # Wine's first start in a fresh prefix takes a while.
        r = self.wait(lambda r: r["idleTicks"] > 0 and any(
            w["title"].startswith(HOST_TITLE) for w in r["windows"]), 60)
        if not self.check(r is not None, "host window up with idle calls going after %.1f s" % (
                time.time() - started)):
            return None
        self.control("select Headline")
        main = next(w for w in r["windows"] if w["title"].startswith(HOST_TITLE))
        # The keys go where the pointer is (no window manager), and the chord is read from the
        # key state Wine keeps for its windows: the pointer rests over the host's window.
        self.xdo("mousemove", str(main["x"] + main["width"] // 2), str(main["y"] + main["height"] // 3))
        self.xdo("search", "--onlyvisible", "--name", HOST_TITLE, "windowfocus")
        return r

    def control(self, line):
        try:
            self.host.stdin.write(line + "\n")
            self.host.stdin.flush()
        except (OSError, ValueError):
            pass

    def quit_host(self):
        self.control("quit")
        try:
            status = self.host.wait(15)
        except subprocess.TimeoutExpired:
            self.host.kill()
            status = None
        self.host = None
        return status

    def xdo(self, *args):
        return subprocess.run(["xdotool", *args], capture_output=True, text=True).stdout

    def chord(self):
        """Ctrl+Space held like fingers."""
        self.xdo("keydown", "ctrl", "keydown", "space", "sleep", "0.1", "keyup", "space", "keyup", "ctrl")

    def open_popup(self):
        self.chord()
        r = self.popup_shown()
        if r is not None:
            time.sleep(0.35)  # the search field takes the keys a moment after the popup shows
        return r

    def close_popup(self):
        if self.popup_hidden(0.1) is None:
            self.xdo("key", "Escape")
            if self.popup_hidden(2) is None:
                self.chord()
                self.popup_hidden(2)

    def type_word(self, r, word):
        """Types word into the popup shown in record r; the record once the presses are in, and their
        latencies (keystroke to repainted rows)."""
        before = len(r["keys"])
        self.xdo("type", "--delay", "80", word)
        self.wait(lambda r: sum(k["window"] == POPUP for k in r["keys"][before:]) >= len(word), 3)
        time.sleep(0.3)
        r = self.record() or r
        return r, [k["latencyMs"] for k in r["keys"][before:] if k["window"] == POPUP]

    def grab(self, r, name):
        """The popup's rectangle of the screen as RGB bytes, or None."""
        p = self.popup(r) if r else None
        if p is None:
            return None
        path = os.path.join(self.work, name + ".ppm")
        subprocess.run(["import", "-window", "root", "-crop", "%dx%d+%d+%d" % (
            p["width"], p["height"], p["x"], p["y"]), "+repage", "-depth", "8", path])
        if self.out:
            subprocess.run(["convert", path, os.path.join(self.out, name + ".png")])
        try:
            with open(path, "rb") as f:
                return f.read().split(b"\n", 3)[3]  # after "P6", the size and the depth
        except (OSError, IndexError):
            return None

    def x_window(self, name, timeout=5.0):
        """The geometry (x, y, width, height) of the visible X window named name, once there."""
        def geometry():  # a KeyError when the window went meanwhile
            ids = self.xdo("search", "--onlyvisible", "--name", name).split()
            g = dict(line.split("=", 1) for line in self.xdo("getwindowgeometry", "--shell", ids[-1]).split())
            return tuple(int(g[k]) for k in ("X", "Y", "WIDTH", "HEIGHT"))
        return self.poll(geometry, timeout)

    def run(self):
        os.makedirs(self.root)
        if self.start_host() is None:
            return
        self.chord_toggles()
        dark = self.type_and_apply()
        self.escape_closes()
        self.capture()
        self.compare_themes(dark, self.light_theme())
        status = self.quit_host()
        self.check(status == 0, "quit: host exited with %s" % status)

    def chord_toggles(self):
        # Settled first, as for typing: a chord while the popup takes the focus may go unseen.
        if self.check(self.open_popup() is not None, "Ctrl+Space opened the popup"):
            self.chord()
            self.check(self.popup_hidden() is not None, "Ctrl+Space again hid it")
            time.sleep(0.2)

    def type_and_apply(self):
        r = self.open_popup()
        if not self.check(r is not None, "the popup opened for typing"):
            return None
        empty = self.grab(r, "popup-empty")
        r, typed = self.type_word(r, "blur")
        dark = self.grab(r, "popup-dark")
        self.check(len(typed) >= 4 and min(typed) >= 0, "typed \"blur\": %d timed presses reached the popup, "
                   "repainted after %s ms" % (len(typed), ", ".join("%.1f" % t for t in typed)))
        self.check(empty and dark and empty != dark, "the popup's grab after \"blur\" differs from the empty search's")
        before = self.effects(r)
        self.xdo("key", "Return")
        r = self.wait(lambda r: self.effects(r) != before)
        self.check(r is not None and r["menuActionsSent"] > 0, "Return applied through the Effect menu: "
                   "Headline has %s (was %s)" % (r and self.effects(r), before))
        self.close_popup()
        return dark

    def escape_closes(self):
        if self.check(self.open_popup() is not None, "the chord opened the popup again"):
            self.xdo("key", "Escape")
            self.check(self.popup_hidden() is not None, "Escape closed it")

    def capture(self):
        before = set(self.find("Capture/*.png"))
        self.control("console screenshot")
        new = self.poll(lambda: [f for f in self.find("Capture/*.png") if f not in before], 15) or []
        time.sleep(0.2)  # the file may still be being written
        png = new[0] if new else os.devnull
        kind = subprocess.run(["convert", png, "-format", "%m of %wx%h", "info:"], capture_output=True,
                              text=True).stdout.strip()  # read by its content, whatever its name
        self.check(kind.startswith("PNG of "), "console screenshot: %s, a %s that decodes, in a capture "
                   "folder within 15 s" % (png, kind))
        if self.out and new:
            shutil.copy(new[0], os.path.join(self.out, "capture.png"))

    def light_theme(self):
        """Light chosen in the preferences window (the popup's gear) as the artist does it, saved on
        closing: the popup grabbed in it after a second start."""
        r = self.open_popup()
        if not self.check(r is not None, "the popup opened for its gear"):
            return None
        p = self.popup(r)
        # The gear: the popup's right tool button; the theme's drop-down at 130, 12 (150 x 24) in
        # the window, its native menu's second row 16 pixels under the first.
        self.xdo("mousemove", str(p["x"] + p["width"] - 66), str(p["y"] + 22), "click", "1")
        prefs = self.x_window("^Preferences$")
        if self.check(prefs is not None, "the gear opened the preferences window"):
            time.sleep(0.5)
            x, y = prefs[0] + 130 + 75, prefs[1] + 12 + 12
            self.xdo("mousemove", str(x), str(y), "mousedown", "1", "sleep", "0.5",
                     "mousemove", str(x - 45), str(y + 39), "sleep", "0.3", "mouseup", "1")
            time.sleep(0.5)
            self.xdo("key", "Escape")
            self.poll(lambda: self.x_window("^Preferences$", 0.1) is None)
        self.close_popup()
        status = self.quit_host()
        if not self.check(status == 0 and self.find("effects_settings") and self.start_host() is not None,
                          "settings saved, the host quit (status %s) and started again" % status):
            return None
        r = self.open_popup()
        if not self.check(r is not None, "the popup opened after the second start"):
            return None
        light = self.grab(self.type_word(r, "blur")[0], "popup-light")
        self.close_popup()
        return light

    def compare_themes(self, dark, light):
        if dark and light:
            d, l = (sum(p) / (255.0 * len(p)) for p in (dark, light))
            self.check(l > d + 0.2, "popup mean grey %.2f dark, %.2f light after the second start" % (d, l))


def main(scene_class=Scene, parser=None):
    parser = parser or argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--exe", required=True, help="hostsim-win.exe")
    parser.add_argument("--plugins", required=True, help="a Plug-ins folder holding Quillo.aex")
    parser.add_argument("--out", help="a folder for the grabs, the capture and the transcript")
    args = parser.parse_args()
    if args.out:
        os.makedirs(args.out, exist_ok=True)
    scene = scene_class(args)
    started = time.time()
    try:
        scene.run()
    finally:
        if scene.host is not None:
            scene.host.kill()
        if scene.log:
            scene.log.close()
    scene.say("steps failed: %d (%.1f s)" % (scene.failures, time.time() - started))
    log = os.path.join(scene.work, "host.log")
    if scene.failures and os.path.exists(log):
        sys.stdout.write(open(log, errors="replace").read()[-3000:])
    shutil.rmtree(scene.work, ignore_errors=True)
    sys.exit(min(scene.failures, 100))


if __name__ == "__main__":
    main()

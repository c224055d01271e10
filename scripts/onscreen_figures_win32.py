#!/usr/bin/env python3
"""The Windows walkthrough's figures over the on-screen scene's steps (tests/win32/onscreen).

The steps and their checks are the scene's; here the chord is repeated --presses times for the
chord-to-popup-painted figure, and searches are typed in both themes for the keystroke-to-repainted-
rows figure, both from the host's session record and printed as medians.
"""

import argparse
import os
import statistics
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "win32", "onscreen"))
import onscreen_scene  # noqa: E402

POPUP = onscreen_scene.POPUP
VK_SPACE = 0x20


def now_ms():
    # The clock Wine's performance counter reads, which the host's figures are on.
    return time.clock_gettime(time.CLOCK_MONOTONIC_RAW) * 1000.0


def median(values):
    return "%.1f" % statistics.median(values) if values else "n/a"


class FiguredScene(onscreen_scene.Scene):
    def run(self):
        os.makedirs(self.root)
        if self.start_host() is None:
            return
        chord_times = self.chord_runs()
        dark = self.type_and_apply()
        key_times = self.measure_keys()
        self.escape_closes()
        self.capture()
        light = self.light_theme()
        self.compare_themes(dark, light)
        key_times += self.measure_keys() if light else []
        status = self.quit_host()
        self.check(status == 0, "quit: host exited with %s" % status)
        self.say("   chord to popup painted, %d runs: %s ms" % (
            len(chord_times), ", ".join("%.1f" % t for t in chord_times)))
        self.say("figures (medians): chord to popup painted %s ms over %d runs; keystroke to "
                 "repainted rows %s ms over %d presses" % (
                     median(chord_times), len(chord_times), median(key_times), len(key_times)))

    def chord_runs(self):
        """Chord (the Space press's own time stamp, else the sending time) to popup painted, per run."""
        times = []
        for _ in range(self.args.presses):
            sent = now_ms()
            self.chord()
            r = self.popup_shown()
            if not self.check(r is not None, "Ctrl+Space opened the popup"):
                break
            r = self.wait(lambda r: any(w["title"] == POPUP and w["paintedAtMs"] > sent
                                        for w in r["shownWindows"]), 2) or r
            painted = [w["paintedAtMs"] for w in r["shownWindows"] if w["title"] == POPUP and w["paintedAtMs"] > sent]
            presses = [k["pressedAtMs"] for k in r["keys"] if k["keyCode"] == VK_SPACE and k["pressedAtMs"] >= sent - 1]
            if painted:
                times.append(painted[0] - (presses + [sent])[0])
            self.chord()
            if not self.check(self.popup_hidden() is not None, "Ctrl+Space again hid it"):
                break
            time.sleep(0.2)
        return times

    def measure_keys(self):
        """Keystroke to repainted rows while searches are typed; the latencies in ms."""
        # By time, not by index: the record keeps the latest 200 presses only.
        start = now_ms()
        for word in ["gaussian", "blur", "glow", "sharpen"]:
            if self.open_popup() is None:
                continue
            self.xdo("type", "--delay", "90", word)
            self.xdo("key", "--delay", "90", "BackSpace", "BackSpace", "BackSpace")
            time.sleep(0.1)
            # The chord closes it as the Linux walkthrough does (Escape is checked on its own).
            self.chord()
            if self.popup_hidden() is None:
                self.close_popup()
        r = self.record() or {"keys": []}
        return [k["latencyMs"] for k in r["keys"]
                if k["window"] == POPUP and k["latencyMs"] >= 0 and k["pressedAtMs"] >= start]


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--presses", type=int, default=8, help="chord runs for the figure")
    onscreen_scene.main(FiguredScene, parser)

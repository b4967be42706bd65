#!/usr/bin/env python3
# SPDX-License-Identifier: ISC
"""windows.py BUILD OUTDIR: the Windows plug-in in brezan.exe under Wine, on a screen of its own, worked by a real pointer and
keyboard: knobs, lever, a name with umlauts, a bank saved and loaded in a folder with Japanese letters, a key for the host, the
manual that is missing. Tells each check; pictures go to OUTDIR and are to be looked at. BUILD has QLXBrezan.dll and brezan.exe.
Needs the packages wine64 xvfb openbox xdotool x11-utils x11-xkb-utils imagemagick."""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

KEY = r"HKCU\Software\Meridane\QLXBRZ1"
PATIENCE = 10.0  # seconds


def wine_program():
    for path in ("/usr/lib/wine/wine64", "/usr/bin/wine64"):
        if os.access(path, os.X_OK):
            return path
    sys.exit("windows.py: there is no Wine")


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def until(what):
    """The first true answer."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        answer = what()
        if answer:
            return answer
        time.sleep(0.1)
    return None


class Desk:
    """A screen with Wine on it and the editor in brezan.exe."""

    def __init__(self, build, out, home):
        self.build, self.out, self.home = build, out, home
        self.wine = wine_program()
        self.failures = 0
        self.log = home / "log"
        self.read = 0
        self.manager, self.editor, self.corner = None, None, [0, 0]
        reader, writer = os.pipe()
        self.screen = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1000x900x24"], pass_fds=[writer],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writer)
        number = os.read(reader, 20).decode().strip()
        self.environment = dict(os.environ, DISPLAY=":" + number, WINEPREFIX=os.environ.get("WINEPREFIX", str(home / "wine")), WINEDEBUG="-all",
                                WINEDLLOVERRIDES="mscoree,mshtml=", LC_ALL="C.UTF-8")
        # Letters that the keyboard lacks would be given keys in turn while they are typed, which Wine does not always see.
        subprocess.run(["setxkbmap", "de"], env=self.environment, check=True)
        # Who gives a window that has come the keyboard.
        self.manager = subprocess.Popen(["openbox"], env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.run("reg", "add", r"HKCU\Software\Wine\WineDbg", "/v", "ShowCrashDialog", "/t", "REG_DWORD", "/d", "0", "/f")

    def run(self, *words):
        return subprocess.run([self.wine, *words], env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              check=False).stdout.decode(errors="replace")

    def stored(self, name):
        """A value of the plug-in's key: hexadecimal digits, or text."""
        found = re.search(rf"{name}\s+REG_(?:BINARY|SZ)\s+(.*)", self.run("reg", "query", KEY, "/v", name))
        return found.group(1).strip() if found else ""

    def start(self):
        command = [self.wine, str(self.build / "brezan.exe"), "edit", "--log", "--plugin",
                   windows_path(self.build / "QLXBrezan.dll"), "--scale", "1"]
        for name, value in {"HSlowSpd": 0.1, "Bottom": 0.5, "Drive": 0.5, "HGain": 0.2, "Lever": 0, "Stop": 0, "Bypass": 0}.items():
            command += ["--set", f"{name}=norm:{value}"]
        with open(self.log, "ab") as log:
            self.editor = subprocess.Popen(command, env=self.environment, stdout=log, stderr=log)
        if not until(lambda: "open" in self.heard()):
            sys.exit(f"windows.py: no editor: {self.log.read_text()}")
        shown = until(lambda: self.window("QLX Brezan"))
        geometry = subprocess.run(["xwininfo", "-id", shown], env=self.environment, check=True,
                                  stdout=subprocess.PIPE).stdout.decode()
        self.corner = [int(re.search(rf"Absolute upper-left {axis}: *(\d+)", geometry).group(1)) for axis in "XY"]
        print("the window's inside is at", self.corner, flush=True)
        time.sleep(1.0)

    def end(self):
        for process in (self.editor, self.manager, self.screen):
            if process is not None and process.poll() is None:
                process.terminate()
                process.wait()
        subprocess.run(["wineserver", "-k"], env=dict(self.environment, PATH="/usr/lib/wine:" + os.environ["PATH"]), check=False)

    def hand(self, moves):
        """xdotool's words; places in the editor's pixels."""
        words = moves.split()
        for i, word in enumerate(words):
            if word == "mousemove":
                words[i + 1] = str(int(words[i + 1]) + self.corner[0])
                words[i + 2] = str(int(words[i + 2]) + self.corner[1])
        subprocess.run(["xdotool", *words], env=self.environment, check=True, stdout=subprocess.DEVNULL)

    def type(self, text):
        subprocess.run(["xdotool", "type", "--delay", "400", text], env=self.environment, check=True)

    def window(self, title):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", title], env=self.environment, check=False,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.split()
        return found[0].decode() if found else None

    def picture(self, name):
        subprocess.run(["import", "-window", "root", str(self.out / f"{name}.png")], env=self.environment, check=True)

    def heard(self):
        """What was logged since the last call."""
        text = self.log.read_bytes() if self.log.exists() else b""
        fresh, self.read = text[self.read:], len(text)
        return fresh.decode(errors="replace")

    def check(self, what, is_so, details=""):
        print(("ok    " if is_so else "WRONG ") + what + ("" if is_so else f": {details!r}"), flush=True)
        self.failures += not is_so

    def gesture(self, what, moves, *expected):
        """The moves, then every expected text in what the host hears within the time."""
        self.heard()
        seen = ""
        self.hand(moves)

        def complete():
            nonlocal seen
            seen += self.heard()
            return all(text in seen for text in expected)
        self.check(what, bool(until(complete)) if expected else (time.sleep(1.0) or not self.heard()), seen)


def gestures(desk):
    desk.gesture("drag beyond the window", "mousemove 42 75 mousedown 1 mousemove 42 40 mousemove 42 -60 mousemove 42 -85 mouseup 1",
                 "begin edit 17", "automate 17 HSlowSpd 0.5", "end edit 17")
    desk.gesture("double click", "mousemove 360 75 click --repeat 2 --delay 60 1", "automate 23 HGain 0.5")
    desk.gesture("wheel", "mousemove 96 224 click 4", "automate 6 Bottom 0.55")
    desk.gesture("stop", "mousemove 372 365 click 1", "automate 4 Stop 1")
    desk.gesture("lever", "mousemove 357 187 mousedown 1 mousemove 357 215 mousemove 357 244 mouseup 1", "automate 2 Lever 0.5")
    desk.gesture("key of the lever", "key Up", "automate 2 Lever 0.48")
    desk.gesture("a key that the editor does not use", "key k", "key 0 k")


def names(desk):
    desk.hand("mousemove 204 561 click 1")
    time.sleep(1.0)
    desk.type("Schöne Größe für")
    time.sleep(0.5)
    desk.picture("name-edit")
    desk.hand("key Return")
    desk.hand("mousemove 317 561 click 1")  # store A
    name = "Schöne Größe für".encode().hex().upper()
    desk.check("a name with umlauts, taken by Enter", bool(until(lambda: name in desk.stored("MemoA"))), desk.stored("MemoA")[:200])
    desk.hand("mousemove 204 561 click 1")
    time.sleep(1.0)
    desk.type("nicht")
    desk.hand("key Escape")
    desk.hand("mousemove 355 561 click 1")  # store B
    desk.check("a name given up by Escape", bool(until(lambda: name in desk.stored("MemoB"))), desk.stored("MemoB")[:200])
    desk.hand("mousemove 204 561 click 1")
    time.sleep(1.0)
    desk.type("Klick")
    desk.hand("mousemove 200 280 click 1")
    time.sleep(0.5)
    desk.hand("mousemove 355 561 click 1")
    klick = b"Klick".hex().upper()
    desk.check("a name taken by a press elsewhere", bool(until(lambda: klick in desk.stored("MemoB"))), desk.stored("MemoB")[:200])
    desk.gesture("keys reach the host again", "key k", "key 0 k")


def files(desk, folder):
    def answer(place, title, name):
        desk.hand(f"mousemove {place} 561 click 1")
        desk.check(f"dialog '{title}'", bool(until(lambda: desk.window(title))))
        time.sleep(2.0)
        desk.type(name)
        time.sleep(0.5)
        desk.picture(title.lower().replace(" ", "-"))
        desk.hand("key Return")
        until(lambda: not desk.window(title))

    answer(10, "Save bank", "alle")
    bank = folder / "alle.qlb"
    desk.check("a bank in a folder with Japanese letters", bool(until(lambda: bank.exists() and bank.stat().st_size == 42281)))
    answer(75, "Save preset", "eins")
    first = folder / "eins.qlx"
    until(lambda: first.exists() and first.stat().st_size == 1361)
    desk.hand("mousemove 302 561 click 1")  # another preset
    time.sleep(0.5)
    answer(60, "Load bank", "alle.qlb")
    time.sleep(0.5)
    answer(75, "Save preset", "zwei")
    second = folder / "zwei.qlx"
    desk.check("loaded again", bool(until(lambda: second.exists() and second.read_bytes() == first.read_bytes())))


def manual(desk):
    desk.hand("mousemove 392 561 click 1")
    # Its title is empty: it is the last window that has come.
    time.sleep(3.0)
    desk.picture("no-manual")
    desk.gesture("the box keeps the pointer from the knobs", "mousemove 96 224", *[])
    desk.hand("key Return")
    time.sleep(1.0)
    desk.gesture("after it", "mousemove 96 224 click 4", "automate 6")


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: windows.py BUILD OUTDIR")
    build, out = (pathlib.Path(word).resolve() for word in sys.argv[1:])
    out.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as temporary:
        home = pathlib.Path(temporary)
        folder = home / "日本の音"
        folder.mkdir()
        desk = Desk(build, out, home)
        try:
            desk.run("reg", "add", KEY, "/v", "CurrDir", "/t", "REG_SZ", "/d", windows_path(folder) + "\\", "/f")
            desk.start()
            desk.picture("editor")
            gestures(desk)
            names(desk)
            desk.hand("mousemove 269 561 click 1")
            time.sleep(1.0)
            desk.picture("menu")
            desk.hand("key Escape")
            files(desk, folder)
            manual(desk)
        finally:
            desk.end()
    print(f"{desk.failures} wrong")
    return 1 if desk.failures else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
# SPDX-License-Identifier: ISC
"""kill_saves.py BREZAN [--kills N] [--seed S]: kills `brezan` with SIGKILL at random moments while it replaces presets, banks,
states, settings, sound files and pictures; then lets each of these saves meet a full disk, a quota, a limit of file size, a
folder that is read-only and one that vanishes. Afterwards there must be the whole old or the whole new file, and, once a save has succeeded,
nothing beside it. Prints how often each was found."""
import argparse
import collections
import contextlib
import math
import os
import pathlib
import random
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import wave

VARIANTS = ("2dB", "5dB")
REASONS = {"limit of file size": "File too large", "full disk": "No space left", "read-only": "Read-only", "quota": "quota exceeded"}


class Save:
    """A command that replaces one file by content that depends on `variant` alone."""

    def __init__(self, name, target, arguments):
        self.name, self.target, self.arguments = name, target, arguments


def saves(home):
    def to(name):
        return str(home / "out" / name)

    tune = str(home / "in.wav")
    return [
        Save("preset", to("one.qlx"), lambda out, v: ["presets", "save", out, "--index", "3", "--set", f"Drive={v}"]),
        Save("bank", to("all.qlb"), lambda out, v: ["presets", "save", out, "--set", f"Drive={v}"]),
        Save("state", to("host.state"), lambda out, v: ["presets", "load", str(home / f"bank{v}.qlb"), "--save-state", out]),
        Save("settings", str(next((home / "config").rglob("ManualPath"))), lambda out, v: ["manual", "--set", str(home / f"manual{v}.html")]),
        Save("sound", to("render.wav"), lambda out, v: ["render", tune, out, "--set", f"Drive={v}"]),
        Save("picture", to("editor.png"), lambda out, v: ["picture", str(home / f"sound{v}.wav"), out]),
    ]


class Bench:
    def __init__(self, brezan, home):
        self.brezan, self.home = str(brezan), home
        self.environment = dict(os.environ, HOME=str(home), XDG_CONFIG_HOME=str(home / "config"),
                                XDG_DATA_HOME=str(home / "data"), TMPDIR=str(home / "tmp"))
        for folder in ("out", "tmp", "config", "data"):
            (home / folder).mkdir()

    def start(self, arguments, **more):
        return subprocess.Popen([self.brezan, *arguments], env=self.environment, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, **more)

    def run(self, arguments, **more):
        process = self.start(arguments, **more)
        said = process.communicate()[1].decode(errors="replace")
        return process.returncode, said

    def must(self, *arguments):
        code, said = self.run(list(arguments))
        if code != 0:
            sys.exit(f"kill_saves: brezan {' '.join(arguments)}: {said}")

    def prepare(self):
        with wave.open(str(self.home / "in.wav"), "wb") as sound:
            sound.setparams((1, 2, 48000, 0, "NONE", ""))
            sound.writeframes(b"".join(struct.pack("<h", int(9000 * math.sin(i * 0.03))) for i in range(48000)))
        for v in VARIANTS:
            self.must("presets", "save", str(self.home / f"bank{v}.qlb"), "--set", f"Drive={v}")
            self.must("render", str(self.home / "in.wav"), str(self.home / f"sound{v}.wav"), "--set", f"Drive={v}")
            (self.home / f"manual{v}.html").write_text(v)
            self.must("manual", "--set", str(self.home / f"manual{v}.html"))


def content(path):
    try:
        return pathlib.Path(path).read_bytes()
    except FileNotFoundError:
        return None


def around(path):
    folder = pathlib.Path(path).parent
    return sorted(p.name for p in folder.iterdir()) if folder.is_dir() else []


def learn(bench, save):
    """Content for both variants, what lies around them, and how long a save takes."""
    results, took = [], []
    for v in VARIANTS:
        began = time.monotonic()
        bench.must(*save.arguments(save.target, v))
        took.append(time.monotonic() - began)
        results.append(content(save.target))
    assert results[0] != results[1] and None not in results, save.name
    return results, around(save.target), max(took)


def kill_some(bench, save, kills, random_numbers):
    (first, second), neighbours, took = learn(bench, save)
    found, most_left = collections.Counter(), 0
    for _ in range(kills):
        old = content(save.target)
        now = 0 if old == second else 1
        share = random_numbers.uniform(0.0, 1.1) if random_numbers.random() < 0.3 else random_numbers.uniform(0.85, 1.1)
        process = bench.start(save.arguments(save.target, VARIANTS[now]))
        time.sleep(took * share)
        process.send_signal(signal.SIGKILL)
        process.communicate()
        ended = "ended before" if process.returncode == 0 else "killed"
        # Most kills are to meet the moment at which the file is replaced.
        took *= 0.97 if ended != "killed" else 1.03
        after = content(save.target)
        if after not in (first, second):
            return f"{save.name}: neither the old nor the new content after a kill", found
        found[f"{ended}, {'old' if after == old else 'new'}"] += 1
        most_left = max(most_left, len(around(save.target)) - len(neighbours))
    bench.must(*save.arguments(save.target, VARIANTS[0]))
    left = [name for name in around(save.target) if name not in neighbours]
    if left or os.listdir(bench.home / "tmp"):
        return f"{save.name}: left behind: {left} {os.listdir(bench.home / 'tmp')}", found
    found["most part files at a time"] = most_left
    return "", found


def make_quota(image, folder):
    """FOLDER becomes a subvolume of btrfs, to which limit_quota may set a limit."""
    with open(image, "wb") as file:
        file.truncate(256 << 20)
    subprocess.run(["mkfs.btrfs", "-q", image], stdout=subprocess.DEVNULL, check=True)
    subprocess.run(["mount", "-o", "loop", image, folder], check=True)
    subprocess.run(["btrfs", "-q", "quota", "enable", folder], check=True)
    subprocess.run(["btrfs", "-q", "subvolume", "create", folder / "limited"], check=True)
    subprocess.run(["umount", folder], check=True)
    subprocess.run(["mount", "-o", "loop,subvol=limited", image, folder], check=True)


def limit_quota(folder):
    """No byte more than there is now."""
    subprocess.run(["btrfs", "-q", "quota", "rescan", "-w", folder], check=True)
    subprocess.run(["btrfs", "-q", "qgroup", "limit", "1", folder], check=True)


@contextlib.contextmanager
def disk_with(fault, folder, home):
    """FOLDER with all that is in it lies on a file system of its own that has the fault."""
    kept, image = home / "kept", home / "image"
    shutil.move(folder, kept)
    folder.mkdir()
    if fault == "quota":
        make_quota(image, folder)
    else:
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=8m", "tmpfs", folder], check=True)
    shutil.copytree(kept, folder, dirs_exist_ok=True)
    if fault == "full disk":
        space = os.statvfs(folder)
        with open(folder / "filler", "wb") as filler:
            filler.write(b"x" * (space.f_bavail * space.f_frsize))
    elif fault == "read-only":
        subprocess.run(["mount", "-o", "remount,ro", folder], check=True)
    else:
        limit_quota(folder)
    try:
        yield
    finally:
        subprocess.run(["umount", folder], check=True)
        folder.rmdir()
        shutil.move(kept, folder)
        image.unlink(missing_ok=True)


def meet_faults(bench, save, root):
    """Names of the faults met; a word on the first that does harm."""
    (first, _), _, _ = learn(bench, save)
    bench.must(*save.arguments(save.target, VARIANTS[0]))
    target = pathlib.Path(save.target)
    met = []

    def expect_refusal(fault, **more):
        neighbours = around(target)
        code, said = bench.run(save.arguments(save.target, VARIANTS[1]), **more)
        met.append(fault)
        if code == 0 or REASONS[fault] not in said and save.name != "settings" or not said.strip():
            return f"{save.name}, {fault}: exit code {code}, '{said.strip()}'"
        if content(target) != first or around(target) != neighbours:
            return f"{save.name}, {fault}: the old file is harmed, or something is left: {around(target)}"
        return ""

    def limit():
        resource.setrlimit(resource.RLIMIT_FSIZE, (16, 16))
        signal.signal(signal.SIGXFSZ, signal.SIG_DFL)

    wrong = expect_refusal("limit of file size", preexec_fn=limit)
    for fault in list(REASONS)[1:] if root else ():
        if fault == "quota" and not shutil.which("mkfs.btrfs"):
            met.append("quota not tried: no btrfs-progs")
        elif not wrong:
            with disk_with(fault, target.parent, bench.home):
                wrong = expect_refusal(fault)
    if not wrong:
        gone = target.parent.with_name("gone")
        target.parent.rename(gone)
        code, said = bench.run(save.arguments(save.target, VARIANTS[1]))
        met.append("vanished folder")
        if save.name != "settings" and (code == 0 or not said.strip()):
            wrong = f"{save.name}, vanished folder: exit code {code}, '{said.strip()}'"
        shutil.rmtree(target.parent, ignore_errors=True)  # settings make their folder
        gone.rename(target.parent)
    return wrong, met


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("brezan", type=pathlib.Path)
    parser.add_argument("--kills", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    may_mount = os.geteuid() == 0 and subprocess.run(["unshare", "-m", "true"], stderr=subprocess.DEVNULL).returncode == 0
    if may_mount and "KILL_SAVES_MAY_MOUNT" not in os.environ:
        # File systems that are mounted here are seen by nobody else and go with this process.
        os.environ["KILL_SAVES_MAY_MOUNT"] = "yes"
        os.execvp("unshare", ["unshare", "-m", sys.executable, *sys.argv])
    random_numbers = random.Random(options.seed)
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        bench = Bench(options.brezan.resolve(), pathlib.Path(folder))
        bench.prepare()
        all_saves = saves(bench.home)
        root = "KILL_SAVES_MAY_MOUNT" in os.environ
        for number, save in enumerate(all_saves):
            kills = options.kills // len(all_saves) + (number < options.kills % len(all_saves))
            wrong, found = kill_some(bench, save, kills, random_numbers)
            print(f"{save.name}: {kills} kills:", ", ".join(f"{what} {n}" for what, n in sorted(found.items())), wrong, flush=True)
            failures += [wrong] if wrong else []
            wrong, met = meet_faults(bench, save, root)
            print(f"{save.name}: met {', '.join(met)}", wrong, flush=True)
            failures += [wrong] if wrong else []
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# SPDX-License-Identifier: ISC
"""clang-tidy over the sources that a build folder of clang compiles, but tests and benchmarks.
Usage: tidy.py ROOT BUILD [--limit MINUTES] [--files REGEX]
A source is read again only if it, a header of the project that it includes, its command line, .clang-tidy or the
program has changed since it was found clean. Exit code: 1 findings, 3 not all sources read within the limit."""
import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import time

# What makes a compiler take a precompiled header, which a folder that is configured but not built has none of; the header's
# text is included beside it.
PRECOMPILED = re.compile(r" -Xclang -include-pch -Xclang \S+")
NOT_CHECKED = re.compile(r"^(tests|bench|build)/")
INCLUDE = re.compile(rb'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


class Includes:
    """The project's files that a file includes, directly or not, itself among them; names are relative to the root."""

    def __init__(self, root):
        self.root = root
        self.direct = {}
        self.sums = {}

    def read(self, name):
        if name in self.direct:
            return
        data = (self.root / name).read_bytes()
        self.sums[name] = hashlib.sha256(data).hexdigest()
        candidates = [c for text in INCLUDE.findall(data) for c in self.places(name, text.decode())]
        self.direct[name] = [c for c in candidates if (self.root / c).is_file()]

    @staticmethod
    def places(name, target):
        return target, os.path.normpath(os.path.join(os.path.dirname(name), target))

    def closure(self, name):
        found, waiting = set(), [name]
        while waiting:
            name = waiting.pop()
            if name not in found:
                found.add(name)
                self.read(name)
                waiting += self.direct[name]
        return sorted(found)


def without_precompiled(build, to):
    """Entries of the compilation database of BUILD, which are also written into the folder TO."""
    text = PRECOMPILED.sub("", (build / "compile_commands.json").read_text(encoding="utf-8"))
    to.mkdir(exist_ok=True)
    (to / "compile_commands.json").write_text(text, encoding="utf-8")
    return json.loads(text)


def sources(root, entries, pattern):
    """(file, command) of what is to be checked."""
    for entry in entries:
        path = pathlib.Path(entry["directory"], entry["file"]).resolve()
        name = str(path.relative_to(root)) if path.is_relative_to(root) else ""
        if path.suffix == ".cpp" and name and not NOT_CHECKED.match(name) and re.search(pattern, name):
            yield name, entry["command"]


class Tidy:
    """Runs clang-tidy on several sources at once, until a point in time if one is given."""

    def __init__(self, root, database, end):
        self.root, self.database, self.end = root, database, end

    def check(self, name):
        """(exit code, text); code None: not finished in time."""
        left = None if self.end is None else self.end - time.monotonic()
        if left is not None and left <= 0:
            return None, ""
        command = ["clang-tidy", "-p", str(self.database), "--quiet", str(self.root / name)]
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              start_new_session=True) as process:
            try:
                out, errors = process.communicate(timeout=left)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.communicate()
                return None, "stopped"
        ignored = re.compile(r"warnings? generated|^Suppressed|^Use -header-filter")
        errors = "\n".join(line for line in errors.splitlines() if not ignored.search(line))
        return process.returncode, (out + errors).strip()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("build", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("--limit", type=float)
    parser.add_argument("--files", default="")
    options = parser.parse_args()
    root, build = options.root, options.build
    end = None if options.limit is None else time.monotonic() + 60 * options.limit

    database = build / "tidy-commands"
    entries = without_precompiled(build, database)
    stamps = build / "tidy"
    stamps.mkdir(exist_ok=True)
    common = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    common += (root / ".clang-tidy").read_text(encoding="utf-8")
    includes = Includes(root)
    waiting = {}
    total = 0
    for name, command in sources(root, entries, options.files):
        total += 1
        key = [common, command] + [f"{part} {includes.sums[part]}" for part in includes.closure(name)]
        stamp = stamps / hashlib.sha256("\n".join(key).encode()).hexdigest()
        if stamp.exists():
            stamp.touch()
        else:
            waiting[name] = stamp
    if total == 0:
        print(f"tidy: no source matches '{options.files}'")
        return 1
    print(f"tidy: {total - len(waiting)} of {total} sources are known to be clean", flush=True)

    tidy = Tidy(root, database, end)
    faulty, stopped, unread, done = [], [], [], 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        futures = {pool.submit(tidy.check, name): name for name in waiting}
        for future in concurrent.futures.as_completed(futures):
            name = futures[future]
            code, text = future.result()
            if code is None:
                (stopped if text else unread).append(name)
                continue
            done += 1
            print(f"tidy: [{done}/{len(waiting)}] {name}{'' if code == 0 else ': FINDINGS'}", flush=True)
            if code == 0:
                waiting[name].touch()
            else:
                faulty.append(name)
                print(text, flush=True)

    # Stamps that nothing has asked for within a month belong to states that are gone.
    for stamp in stamps.iterdir():
        if time.time() - stamp.stat().st_mtime > 30 * 86400:
            stamp.unlink()
    if faulty:
        print(f"tidy: findings in {', '.join(sorted(faulty))}")
    if stopped or unread:
        print(f"tidy: STOPPED after {options.limit:g} minutes at {', '.join(sorted(stopped)) or 'no file'}; "
              f"not read: {len(stopped) + len(unread)} of {total}: {', '.join(sorted(stopped + unread))}")
    if not (faulty or stopped or unread):
        print("tidy: clean")
    return 1 if faulty else 3 if stopped or unread else 0


if __name__ == "__main__":
    sys.exit(main())

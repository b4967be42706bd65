#!/usr/bin/env python3
# SPDX-License-Identifier: ISC
"""Checks which module includes which, and that engine/, sdk/ and others include no library but the standard one. A module
is a top folder, or a folder in it that stands in the table on its own. Usage: dependencies.py ROOT. Prints every include
that is not allowed; exit 1 if there is one."""
import pathlib
import re
import sys

ALLOWED = {
    "engine": set(),
    "sdk": set(),
    "platform": set(),
    "gui": {"platform"},
    "resources": {"engine", "platform", "gui"},
    "presets/format": set(),
    "presets/store": {"presets/format", "sdk", "platform"},
    "presets/panel": {"presets/format", "presets/store", "sdk", "platform", "gui", "resources"},
    "midi": {"sdk"},
    "plugin/parameters": {"midi"},
    "editor": {"sdk", "platform", "gui", "resources", "presets/store", "presets/panel", "plugin/parameters"},
    "plugin": {"engine", "sdk", "platform", "resources", "presets/format", "presets/store", "midi", "plugin/parameters",
               "editor"},
    "lv2": {"plugin", "plugin/parameters", "sdk", "presets/store", "presets/panel", "gui"},
    "live": {"sdk"},
    "brezan": {"sdk", "engine", "platform", "gui", "resources", "presets/format", "presets/store", "live"},
}
# Pairs of modules of which the first may include these headers of the second only.
ONLY = {
    ("resources", "engine"): {"engine/rotor/Recordings.h"},
    ("resources", "gui"): {"gui/drawing/GlyphPack.h", "gui/drawing/PackedImage.h", "gui/drawing/PngImage.h"},
    ("brezan", "engine"): {"engine/rotor/Recordings.h"},
    ("brezan", "gui"): {"gui/CRect.h", "gui/drawing/PixelBuffer.h", "gui/drawing/PixelMath.h", "gui/drawing/ShapeFiller.h",
                        "gui/drawing/Utf8.h"},
    ("resources", "platform"): {"platform/ModuleResources.h", "platform/PixelRect.h"},
    ("presets/panel", "resources"): {"resources/images/Images.h", "resources/images/WindowLayout.h"},
    ("editor", "resources"): {"resources/images/Images.h", "resources/images/WindowLayout.h"},
    ("lv2", "presets/panel"): {"presets/panel/CPresetSystemEditor.h"},
    ("lv2", "presets/store"): {"presets/store/ThreadMarks.h"},
    ("lv2", "gui"): {"gui/CFrame.h"},
}
STANDARD_ONLY = {"engine", "sdk", "gui", "midi", "presets/format", "presets/store", "presets/panel", "plugin/parameters",
                 "editor", "plugin"}
# Headers that are compiled into this file alone.
COMPILED_IN = {"gui/drawing/PngImage.cpp": "stb_image.h"}
SYSTEM_FOLDERS = {"linux", "windows"}
STANDARD = re.compile(r"^[a-z_]+$|^immintrin\.h$|^xmmintrin\.h$")
POSIX = {"unistd.h", "dlfcn.h", "fcntl.h", "pthread.h", "poll.h", "signal.h"}


def module_of(name):
    """The module of a file named from the root; its top folder where that is no module."""
    folders = name.split("/")
    inner = "/".join(folders[:2])
    return inner if inner in ALLOWED else folders[0]


def problems(root):
    for top in sorted({module.split("/")[0] for module in ALLOWED}):
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in {".h", ".cpp", ".S"}:
                continue
            rel = path.relative_to(root)
            module = module_of(rel.as_posix())
            allowed = ALLOWED.get(module, set())
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                where = f"{rel}:{number}"
                own = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
                system = re.match(r"\s*#\s*include\s+<([^>]+)>", line)
                if own:
                    target = own.group(1)
                    other = module_of(target)
                    if not (root / target).is_file():
                        if not path.suffix == ".S":
                            yield f"{where}: {target} is not named from the root"
                    elif other != module and other not in allowed:
                        yield f"{where}: {module}/ must not include {other}/"
                    elif (module, other) in ONLY and target not in ONLY[(module, other)]:
                        yield f"{where}: {module}/ must not include {target}"
                    elif (set(target.split("/")) & SYSTEM_FOLDERS and module != "platform"):
                        yield f"{where}: only platform/ knows the operating system"
                elif system:
                    header = system.group(1)
                    if (module in STANDARD_ONLY and not STANDARD.match(header)
                            and COMPILED_IN.get(str(rel)) != header):
                        yield f"{where}: {module}/ includes the standard library only, not <{header}>"
                    outside = module not in {"platform", "brezan"}
                    if outside and (header in POSIX or header.startswith(("sys/", "xcb", "X11/"))):
                        yield f"{where}: only platform/ may assume POSIX or a window system"


def main():
    found = list(problems(pathlib.Path(sys.argv[1]).resolve()))
    print("\n".join(found) if found else "dependencies: every include is allowed")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())

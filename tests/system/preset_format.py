#!/usr/bin/env python3
# SPDX-License-Identifier: ISC
"""preset_format.py BREZAN: writes and reads presets as docs/preset-format.md tells, without a line of the plug-in's code, and
holds them against the plug-in: as stored defaults and as a host's state it takes what is written here, in both byte orders and all
layouts, and what it writes is read here."""
import os
import pathlib
import random
import struct
import subprocess
import sys
import tempfile

IDENTIFIER = 0x5162725A
PRESET, BANK, OLD_PRESET, OLD_BANK = 0x22, 0x38, 0x21, 0x37
STATE, OLD_STATE = 0x02000000, 0x01000000
COMMON = (0, 1, 2, 3, 4, 35)
TEMPLATE = ("Default", [float(row.split("|")[3]) for row in (
    pathlib.Path(__file__).parents[2] / "docs" / "preset-format.md").read_text("utf-8").split("| template |")[1].splitlines()[2:]])


def f32(value):
    return struct.unpack("<f", struct.pack("<f", value))[0]


def name_record(order, preset, name):
    return struct.pack(order + "IIi24s132x", 0, 156, preset, name.encode())


def value_record(order, preset, parameter, value):
    return struct.pack(order + "IIii8xf4x", 1, 20, preset, parameter, value)


def image(order, kind, current, records):
    head = struct.pack(order + "IBIIiiI16x", IDENTIFIER, kind, 0x01000000, 36, len(records), current, sum(map(len, records)))
    return head + b"".join(records)


def records(order, presets):
    return [record for number, (name, values) in enumerate(presets) for record in
            [name_record(order, number, name), *(value_record(order, number, p, v) for p, v in enumerate(values))]]


def bank(order, presets, current=0):
    return image(order, BANK, current, records(order, presets))


def preset(order, one):
    return image(order, PRESET, 0, records(order, [one]))


def state(order, presets, current):
    return struct.pack(order + "II", STATE, IDENTIFIER) + bank(order, presets, current)


def entries(order, presets, count):
    return b"".join(struct.pack(f"{order}24s{count}f", name.encode(), *(values + [0.25] * 99)[:count]) for name, values in presets)


def old_preset(order, one, count):
    return struct.pack(order + "IB", IDENTIFIER, OLD_PRESET) + entries(order, [one], count)


def old_bank(order, presets, count):
    return struct.pack(order + "IB", IDENTIFIER, OLD_BANK) + entries(order, presets, count)


def old_state(order, presets, count, current):
    return struct.pack(order + "IIii16x", OLD_STATE, IDENTIFIER, len(presets), current) + entries(order, presets, count)


def read(data):
    """Kind, current preset and {number: [name, values by parameter]} of a file, or of the bank in a state."""
    orders = {struct.pack(order + "I", IDENTIFIER): order for order in "<>"}
    at = 8 if data[4:8] in orders else 0
    order = orders[data[at:at + 4]]
    _, kind, _, _, left, current, size = struct.unpack_from(order + "IBIIiiI", data, at)
    at += 41
    assert len(data) == at + size
    found = {}
    while left > 0:
        kind_of_record, length, number = struct.unpack_from(order + "IIi", data, at)
        body = data[at + 12:at + 12 + length]
        if kind_of_record == 0:
            found[number] = [body[:24].rstrip(b"\0").decode(), {}]
        elif kind_of_record == 1:
            parameter, value = struct.unpack_from(order + "i8xf", body)
            found[number][1][parameter] = value
        at, left = at + 12 + length, left - 1
    return kind, current, {n: (name, [values[p] for p in range(36)]) for n, (name, values) in found.items()}


class PlugIn:
    """A new instance of a user with the stored values given."""

    def __init__(self, brezan, folder):
        self.brezan, self.folder = os.path.abspath(brezan), pathlib.Path(folder)

    def run(self, *words, stored=(), good=True):
        home = self.folder / "home"
        settings = home / "Meridane" / "QLXBRZ1"
        settings.mkdir(parents=True, exist_ok=True)
        for old in settings.iterdir():
            old.unlink()
        for name, data in dict(stored).items():
            (settings / name).write_bytes(data)
        done = subprocess.run([self.brezan, *words], env={**os.environ, "XDG_CONFIG_HOME": str(home)}, cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        assert (done.returncode == 0) == good, f"{words}: {done.stdout}"
        return done.stdout

    def bank(self, *words, **stored):
        self.run("presets", "save", "out.qlb", *words, stored=stored)
        data = (self.folder / "out.qlb").read_bytes()
        assert len(data) == 42281
        kind, current, presets = read(data)
        assert kind == BANK and sorted(presets) == list(range(32))
        return current, [presets[n] for n in range(32)]

    def file(self, name, data):
        (self.folder / name).write_bytes(data)
        return name


def check(plugin):
    chance = random.Random(1)
    common = dict(zip(COMMON, map(f32, (1.0, 0.0, 0.3, 0.0, 1.0, 0.7))))
    mine = [((f"Preset {n} \u00fc" if n else "All twenty-four letters!"),
             [common.get(p, f32(chance.random())) for p in range(36)]) for n in range(32)]
    cut = [(name, values[:20] + [common.get(p, f32(TEMPLATE[1][p])) for p in range(20, 36)]) for name, values in mine]
    default = (TEMPLATE[0], list(map(f32, TEMPLATE[1])))
    factory = plugin.bank()[1]
    assert factory[0] == default, factory[0]
    # An old entry without the MIDI channel leaves that at the template's, in all presets.
    for _, values in cut:
        values[35] = default[1][35]

    for order in "<>":
        for data, expected in ((bank(order, mine), mine), (old_bank(order, mine, 36), mine), (old_bank(order, mine, 40), mine),
                               (old_bank(order, mine, 20), cut)):
            plugin.run("presets", "show", plugin.file("x.qlb", data))
            assert plugin.bank(DefaultBank=data) == (0, expected)
        for data, expected in ((preset(order, mine[3]), mine[3]), (old_preset(order, mine[3], 36), mine[3]),
                               (old_preset(order, mine[3], 20), cut[3])):
            plugin.run("presets", "show", plugin.file("x.qlx", data))
            current, found = plugin.bank(DefaultPreset=data)
            assert (current, found[0]) == (0, expected)
            assert [f[0] for f in found[1:]] == [f[0] for f in factory[1:]]
        for data, expected in ((state(order, mine, 7), mine), (old_state(order, mine, 36, 7), mine), (old_state(order, mine, 20, 7), cut)):
            assert plugin.bank("--state", plugin.file("x.state", data)) == (7, expected)
        plugin.run("presets", "load", plugin.file("x.qlb", bank(order, mine)), "--save-state", "y.state")
        written = (plugin.folder / "y.state").read_bytes()
        assert len(written) == 42289 and written == state("<", mine, 0)

        # What a reader passes over, repairs and refuses.
        foreign = struct.pack(order + "IIi40x", 7, 40, 0)
        wide = struct.pack(order + "IIi24s140x", 0, 164, 1, b"Wide")
        odd = [name_record(order, 0, "Odd"), foreign, value_record(order, 0, 13, 1.5), value_record(order, 0, 99, 0.1),
               value_record(order, 40, 13, 0.1), value_record(order, 0, 5, float("nan")), wide]
        current, found = plugin.bank(DefaultBank=image(order, BANK, 9, odd))
        assert found[0] == ("Odd", [1.0 if p == 13 else 0.0 if p == 5 else v for p, v in enumerate(default[1])])
        assert found[1][0] == "Wide" and found[2:] == factory[2:]
        refused = image(order, PRESET, 0, [name_record(order, 0, "Bad"), value_record(order, 0, 13, 1.5)])
        plugin.run("presets", "show", plugin.file("x.qlx", refused), good=False)
        assert plugin.bank(DefaultPreset=refused) == (0, factory)
        assert plugin.bank(DefaultBank=bank(order, mine)[:41 + 1320 + 100])[1] == [mine[0], *(
            (f[0], [common.get(p, v) for p, v in enumerate(f[1])]) for f in factory[1:])]

    plugin.run("presets", "save", "out.qlx", "--state", "x.state")
    written = (plugin.folder / "out.qlx").read_bytes()
    assert len(written) == 1361 and read(written) == (PRESET, 0, {0: cut[7]})


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as place:
        check(PlugIn(sys.argv[1], place))

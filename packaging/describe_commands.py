#!/usr/bin/env python3
# SPDX-License-Identifier: ISC
"""Makes the man page and the bash completion of the command-line host from what it says about itself:
describe_commands.py BREZAN VERSION DATE TEMPLATE OUTDIR writes brezan.1 and brezan.bash, the latter from TEMPLATE."""
import dataclasses
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

COLUMN = 30  # of the second column in the help


@dataclasses.dataclass
class Help:
    about: str = ""
    usage: str = ""
    sections: dict = dataclasses.field(default_factory=dict)  # title -> [(first column, second column)]
    footer: str = ""


def ask(brezan, *words):
    """What a user without settings is told."""
    with tempfile.TemporaryDirectory() as empty:
        return subprocess.run([brezan, *words], check=True, stdout=subprocess.PIPE, text=True,
                              env={**os.environ, "XDG_CONFIG_HOME": empty}).stdout


def read_help(text):
    found = Help()
    about, _, rest = text.partition("Usage: ")
    found.about = about.strip()
    found.usage, _, rest = rest.partition("\n")
    entries = None
    blocks = rest.strip("\n").split("\n\n")
    for number, block in enumerate(blocks):
        title, *lines = block.split("\n")
        if title not in ("Positionals:", "Options:", "Subcommands:"):
            found.footer = "\n\n".join(blocks[number:]).strip()
            break
        entries = found.sections.setdefault(title[:-1], [])
        for line in lines:
            if line.startswith(" " * COLUMN):
                entries[-1][1] = f"{entries[-1][1]} {line.strip()}".strip()
            elif line[COLUMN - 1:COLUMN] == " " and line[:COLUMN].count("[") == line[:COLUMN].count("]"):
                entries.append([line[:COLUMN].strip(), line[COLUMN:].strip()])
            else:
                entries.append([line.strip(), ""])
    return found


def read_all(brezan, words=()):
    """Help of every command by its words, () for the program itself."""
    found = {words: read_help(ask(brezan, *words, "--help"))}
    for name, _ in found[words].sections.get("Subcommands", []):
        found.update(read_all(brezan, (*words, name)))
    return found


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"^([.'])", r"\\&\1", text, flags=re.MULTILINE)


def entry_heading(text):
    """'--rate FLOAT:FLOAT in [8 - 9]' without the names of C++ types."""
    text = re.sub(r"\b([A-Z]+):\1\b", r"\1", text).replace(" REQUIRED", "")
    text = re.sub(r" (Excludes|Needs):.*", "", text)
    text = re.sub(r"(FLOAT|INT|UINT|NUMBER) in \[(.*?) - (.*?)\]", r"NUMBER (\2 to \3)", text)
    return re.sub(r"\b(FLOAT|INT|UINT)\b", "NUMBER", text).replace(",--", ", --")


def man_page(commands, version, date):
    top = commands[()]
    lines = [r'.\" Made from the help of brezan.', f'.TH BREZAN 1 "{date}" "QLX Brezan {version}" "User Commands"',
             ".SH NAME", "brezan \\- " + roff(top.about.removeprefix("brezan: ")),
             ".SH SYNOPSIS", ".B brezan", ".I COMMAND", r"[\fIOPTION\fR]... [\fIFILE\fR]..."]
    lines += [".SH DESCRIPTION", "QLX Brezan is a rotary speaker as a VST 2.4 effect. brezan loads it, plays sound files "
              "through it and shows what it does."]
    for words, said in commands.items():
        if words:
            lines += [f'.SS "{roff(" ".join(words))}"', roff(said.about) + ".", ".PP", r"\fB" + roff(said.usage) + r"\fR"]
        else:
            lines += [".SH COMMANDS"]
        for title in ("Positionals", "Options", "Subcommands"):
            for heading, text in said.sections.get(title, []):
                if words and (title == "Subcommands" or "--help" in heading):
                    continue
                text = re.sub(r"^(Excludes|Needs):( --[\w-]+)+ ", "", text)
                lines += [".TP", r"\fB" + roff(entry_heading(heading)) + r"\fR", roff(text)]
        if words and said.footer:
            lines += [".PP", ".nf", roff(said.footer), ".fi"]
    lines += [".SH EXIT STATUS", ".TP", "0", "Done.", ".TP", "1", "It failed; standard error says why.", ".TP", "2",
              "The command line was wrong.", ".TP", "130", r"Interrupted by Ctrl\-C.",
              ".SH ENVIRONMENT", ".TP", r"\fBVST_PATH\fR", "Folders of plug-ins, separated by colons.", ".TP",
              r"\fBQLX_ISA\fR", r"\fBbaseline\fR: the code for every x86\-64 processor even where a faster one could run; \fBavx2\fR, \fBavx512\fR: those, where they can.",
              ".TP", r"\fBXDG_CONFIG_HOME\fR", r"Where settings are kept, instead of \fI~/.config\fR.",
              ".SH FILES", ".TP", r"\fI~/.config/Meridane/QLXBRZ1\fR", "Stored defaults, memories and the last folders.",
              ".SH SEE ALSO", r"The user manual, \fImanual.pdf\fR and \fImanual.html\fR in \fI/usr/share/doc/qlx\-brezan\fR",
              r"or wherever \fBbrezan manual\fR says."]
    return "\n".join(lines) + "\n"


def completion(commands, template, presets, parameters, checks):
    def table(title, words_of):
        rows = []
        for words, said in commands.items():
            found = [word for heading, _ in said.sections.get(title, []) for word in words_of(heading)]
            if words == ("help",):
                found += [name for name, _ in commands[()].sections["Subcommands"] if title == "Subcommands"]
            # Bash has no empty key: the program itself is "brezan".
            rows.append(f'    [{shlex.quote(" ".join(("brezan", *words)))}]={shlex.quote(" ".join(found))}')
        return "\n".join(rows)

    subcommands = table("Subcommands", lambda heading: [heading])
    options = table("Options", lambda heading: re.findall(r"(?<![\w-])--?[A-Za-z][\w-]*", heading.split(" ")[0]))
    values = {"SUBCOMMANDS": subcommands, "OPTIONS": options,
              "PRESETS": "\n".join("    " + shlex.quote(name) for name in presets), "PARAMETERS": " ".join(parameters),
              "CHECKS": " ".join(dict.fromkeys([check.split(".")[0] for check in checks] + checks))}
    return re.sub(r"@(\w+)@", lambda m: values[m[1]], template)


def main(brezan, version, date, template, folder):
    commands = read_all(brezan)
    if len(commands) < 10 or not all(said.about and said.usage for said in commands.values()):
        sys.exit("describe_commands: the help of brezan is not laid out as expected")
    presets = list(dict.fromkeys(preset["name"] for preset in json.loads(ask(brezan, "presets", "--json"))))
    parameters = [parameter["name"] for parameter in json.loads(ask(brezan, "params", "--json")) if parameter["name"]]
    checks = [line.split()[0] for line in ask(brezan, "validate", "--list").splitlines()[1:]]
    out = pathlib.Path(folder)
    out.mkdir(parents=True, exist_ok=True)
    (out / "brezan.1").write_text(man_page(commands, version, date))
    (out / "brezan.bash").write_text(completion(commands, pathlib.Path(template).read_text(), presets, parameters, checks))


if __name__ == "__main__":
    main(*sys.argv[1:])

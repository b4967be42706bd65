#!/usr/bin/env python3
# SPDX-License-Identifier: ISC
"""Builds the user manual: build_manual.py BREZAN VERSION OUTDIR writes manual.html, one file with everything inside, and
manual.pdf. The list of parameters comes from the plug-in itself, through the command-line host BREZAN; a control or preset that
the manual does not tell about, or one that does not exist, is an error, and so is a link that leads nowhere."""
import base64
import html
import io
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import markdown
import weasyprint
from fontTools import subset, ttLib

HERE = pathlib.Path(__file__).resolve().parent
FONTS = HERE.parent.parent / "resources" / "fonts"
WINDOW = (401, 570)

# Numbers on the pictures: centre in pixels of the editor's window.
PANEL_MARKS = [(77, 18), (350, 18), (170, 167), (38, 276), (163, 276), (318, 224), (357, 190), (357, 389), (88, 377),
               (245, 377), (77, 411), (160, 526), (265, 527), (369, 527), (160, 561)]
STRIP_MARKS = [10, 34, 60, 75, 104, 134, 204, 269, 293, 328, 366, 392]


def ask(brezan, command):
    """What a new instance of a user without settings answers."""
    with tempfile.TemporaryDirectory() as empty:
        asked = subprocess.run([brezan, command, "--json"], check=True, stdout=subprocess.PIPE, text=True,
                               env={**os.environ, "XDG_CONFIG_HOME": empty})
    return json.loads(asked.stdout)


def data_url(path, kind):
    return f"data:{kind};base64," + base64.b64encode(path.read_bytes()).decode()


def picture(name, alt):
    return f'<img src="{data_url(HERE / "pictures" / name, "image/png")}" alt="{alt}">'


def mark(number, x, y):
    return f'<b class="mark" style="left:{x:.2f}%;top:{y:.2f}%">{number}</b>'


def panel():
    marks = [mark(i, 100 * x / WINDOW[0], 100 * y / WINDOW[1]) for i, (x, y) in enumerate(PANEL_MARKS, 1)]
    return f'<figure class="panel">{picture("window.png", "The window")}{"".join(marks)}</figure>'


def strip():
    marks = [mark(i, 100 * x / WINDOW[0], 0) for i, x in enumerate(STRIP_MARKS, 1)]
    return f'<figure class="strip">{picture("window.png", "The preset strip")}{"".join(marks)}</figure>'


def parameter_table(parameters):
    rows = []
    for p in parameters:
        if p["name"]:
            start = f'{p["display"]} {p["unit"]}'.strip() or "–"
            ends = f'{p["lowest"]} … {p["highest"]}' if p["lowest"] != p["highest"] else "–"
            rows.append(f'<tr><td>{p["index"]}</td><td><a href="#{p["name"]}">{p["name"]}</a></td>'
                        f"<td>{html.escape(ends)}</td><td>{html.escape(start)}</td></tr>")
    return ('<div class="parameters"><table><thead><tr><th></th><th>name</th><th>from … to</th><th>start</th></tr></thead>'
            f'<tbody>{"".join(rows)}</tbody></table></div>')


def problems(text, parameters, presets):
    told = set(re.findall(r'<span id="(\w+)">', text))
    names = {p["name"] for p in parameters if p["name"]}
    for name in sorted(names ^ told):
        yield f"{name}: " + ("the manual does not tell about it" if name in names else "there is no such control")
    for preset in presets:
        if preset["name"] != "Init" and f'| {preset["number"]} | **{preset["name"]}** |' not in text:
            yield f'preset {preset["number"]}, {preset["name"]}: the manual does not tell about it'


def dead_links(body):
    places = set(re.findall(r'id="([^"]+)"', body))
    for link in re.findall(r'href="#([^"]+)"', body):
        if link not in places:
            yield f"#{link}: a link that leads nowhere"


def font_face(family, weight, file, characters):
    """The font cut down to the characters in use."""
    font = ttLib.TTFont(FONTS / file)
    cutter = subset.Subsetter(subset.Options(layout_features=["kern", "liga"], notdef_outline=True, drop_tables=["FFTM"]))
    cutter.populate(text=characters)
    cutter.subset(font)
    font.flavor = "woff2"
    data = io.BytesIO()
    font.save(data)
    return (f'@font-face {{ font-family: "{family}"; font-weight: {weight}; '
            f'src: url("data:font/woff2;base64,{base64.b64encode(data.getvalue()).decode()}") format("woff2"); }}\n')


def page(text, version, parameters):
    for name, made in {"panel": panel(), "strip": strip(), "signal path": (HERE / "signal-path.svg").read_text("utf-8"),
                       "lever": f'<figure class="aside">{picture("tremolo.png", "The window at tremolo")}</figure>',
                       "ardour pins": f'<figure class="wide">{picture("ardour-pins.png", "Pin Connections in Ardour")}</figure>',
                       "menu": f'<figure class="wide">{picture("menu.png", "The menu of presets")}</figure>',
                       "parameters": parameter_table(parameters)}.items():
        text = text.replace(f"[[{name}]]", made)
    body = markdown.markdown(text, extensions=["extra", "smarty", "toc"],
                             extension_configs={"toc": {"toc_depth": "1-2", "title": "Contents"}})
    cover = (f'<header class="cover">{picture("cabinet.png", "The cabinet")}<h1>QLX Brezan</h1>'
             f"<p>Rotary speaker</p><p>User manual · version {version}</p></header>")
    characters = "".join(sorted(set(html.unescape(body + cover).upper() + html.unescape(body + cover) + "0123456789")))
    style = (font_face("Body", 400, "RobotoCondensed-Regular.ttf", characters) +
             font_face("Body", 700, "RobotoCondensed-Bold.ttf", characters) +
             font_face("Title", 700, "texgyreadventor-bold.otf", characters) + (HERE / "manual.css").read_text("utf-8"))
    return ('<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8">'
            '<meta name="viewport" content="width=device-width"><title>QLX Brezan user manual</title>'
            f"<style>{style}</style></head><body>{cover}<main>{body}</main></body></html>\n")


def main(brezan, version, folder):
    parameters = ask(brezan, "params")
    text = (HERE / "manual.md").read_text("utf-8")
    document = page(text, version, parameters)
    found = [*problems(text, parameters, ask(brezan, "presets")), *dead_links(document)]
    for problem in found:
        print(f"manual: {problem}", file=sys.stderr)
    if found:
        return 1
    out = pathlib.Path(folder)
    out.mkdir(parents=True, exist_ok=True)
    (out / "manual.html").write_text(document, "utf-8")
    weasyprint.HTML(string=document).write_pdf(out / "manual.pdf")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

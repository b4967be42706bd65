#!/usr/bin/env bash
# SPDX-License-Identifier: ISC
# lv2.sh BUNDLE OUTDIR: the bundle in jalv and Qtractor, under a JACK server without a sound card, and in Ardour 7, on a
# screen of its own: editor opened and worked, a factory preset, automation recorded, sessions saved and loaded. Pictures
# and logs go to OUTDIR; they are to be looked at. Needs the packages jalv jackd2 xvfb openbox xdotool imagemagick
# x11-utils, and qtractor gcc and ardour for their parts.
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: lv2.sh BUNDLE OUTDIR" >&2; exit 2; }
bundle=$(readlink -f "$1")
mkdir -p "$2"
out=$(readlink -f "$2")
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
started=()
finish() {
  local p
  for p in "${started[@]}"; do kill "$p" 2>/dev/null || true; done
  wait
  rm -rf "$work"
}
trap finish EXIT
background() { # LOG COMMAND...
  local log=$1
  shift
  "$@" >"$out/$log" 2>&1 &
  started+=("$!")
}
fail() { echo "lv2: $*" >&2; exit 1; }
alive() { kill -0 "${started[-1]}" 2>/dev/null || fail "$1 has ended"; }
window() { # PATTERN: the first visible window with such a title, within 40 s
  local i id
  for i in $(seq 80); do
    id=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | head -n 1 || true)
    [ -z "$id" ] || { echo "$id"; return; }
    sleep 0.5
  done
  fail "no window '$1'"
}
# The editor's own window is the one of its size.
editor() { xwininfo -id "$1" -tree | awk '/ 401x570[+-]/ { print $1; exit }'; }
# A drag of the Mech knob upwards; answers whether the picture has changed.
drag() { # WINDOW NAME
  local i inner
  inner=$(editor "$1")
  [ -n "$inner" ] || fail "no editor in the host's window"
  import -window "$inner" "$out/$2.png"
  xdotool mousemove --window "$inner" 39 220 mousedown 1
  for i in 1 2 3 4 5 6 7 8; do xdotool mousemove --window "$inner" 39 $((220 - 10 * i)) sleep 0.05; done
  xdotool mouseup 1 sleep 1
  import -window "$inner" "$out/$2-dragged.png"
  ! cmp -s "$out/$2.png" "$out/$2-dragged.png" || fail "$2: the drag changed nothing"
}
# What a saved session keeps for a port.
port() { sed -n "s/.*<Port symbol=\"$1\" value=\"\([^\"]*\)\".*/\1/p" "$work/session/session.ardour" | head -n 1; }

export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_RUNTIME_DIR=$work/run JACK_NO_AUDIO_RESERVATION=1
export JACK_DEFAULT_SERVER=brezan-trial LC_ALL=C.UTF-8 NO_AT_BRIDGE=1
mkdir -p "$XDG_CONFIG_HOME" "$XDG_RUNTIME_DIR" "$work/lv2"
ln -s "$bundle" "$work/lv2/"
export LV2_PATH=$work/lv2:/usr/lib/lv2
Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3>"$work/display" >"$out/x.log" 2>&1 &
started+=("$!")
for _ in $(seq 100); do [ -s "$work/display" ] && break; sleep 0.1; done
DISPLAY=:$(cat "$work/display")
export DISPLAY
background openbox.log openbox

background jack.log jackd -n brezan-trial --no-realtime -d dummy -r 48000 -p 512
sleep 2
background jalv.log jalv.gtk3 --preset "https://meridane.example/lv2/qlx-brezan#preset04" https://meridane.example/lv2/qlx-brezan
drag "$(window 'QLX Brezan|Old Rotary')" jalv
alive jalv
kill "${started[-1]}"
wait "${started[-1]}" || true # it writes its log when it ends
grep -q '^horn_slow_speed = 0\.998' "$out/jalv.log" || fail "the preset did not reach jalv's ports"
echo "jalv: editor, knob and preset"

qtractor_part() {
  local s=$work/session.qtr main shown values
  gcc -shared -fPIC -o "$work/no_sequencer.so" "$here/no_sequencer.c"
  cat >"$s" <<X
<!DOCTYPE qtractorSession>
<session version="Qtractor 0.9.31" name="session">
 <properties><directory>$work</directory><sample-rate>48000</sample-rate><tempo>120</tempo></properties>
 <devices><audio-engine><audio-bus name="Master" mode="duplex"><monitor>0</monitor><channels>2</channels></audio-bus></audio-engine></devices>
 <tracks><track type="audio" name="in">
  <properties><input-bus>Master</input-bus><output-bus>Master</output-bus></properties>
  <state><mute>0</mute><solo>0</solo><record>0</record><monitor>0</monitor><gain>1</gain><panning>0</panning></state>
  <view><height>96</height></view>
  <plugins><plugin type="LV2"><filename>https://meridane.example/lv2/qlx-brezan</filename><index>0</index><label>QLX Brezan</label><activated>1</activated></plugin></plugins>
 </track></tracks>
</session>
X
  for round in saved loaded; do
    LD_PRELOAD=$work/no_sequencer.so background qtractor.log qtractor "$s"
    for _ in $(seq 80); do
      main=$(xwininfo -root -tree | awk '/ Qtractor":/ && !n++ { print $1 }') # xdotool does not find its name
      [ -z "$main" ] || break
      sleep 0.5
    done
    [ -n "$main" ] || fail "no window of Qtractor"
    sleep 3
    xdotool windowactivate --sync "$main" mousemove --window "$main" 182 180 click --repeat 2 --delay 100 1
    shown=$(window '^QLX Brezan - in')
    sleep 2
    if [ $round = saved ]; then drag "$shown" qtractor; else import -window "$shown" "$out/qtractor-loaded.png"; fi
    xdotool windowactivate --sync "$main" mousemove --window "$main" 600 450 click 1 key ctrl+s
    sleep 2
    alive Qtractor
    values=$(grep -o '<param[^>]*>[^<]*' "$s" | sort) # the order is of no meaning
    [ -n "$values" ] && echo "$values" >"$out/qtractor-$round.txt"
    kill "${started[-1]}"
    wait "${started[-1]}" || true
  done
  diff "$out/qtractor-saved.txt" "$out/qtractor-loaded.txt" || fail "Qtractor: values changed over save and load"
  grep -q '"10"[^>]*>8\.' "$out/qtractor-loaded.txt" || fail "Qtractor: the knob did not reach the host"
  echo "Qtractor: editor, knob, values kept"
}
if command -v qtractor >/dev/null; then qtractor_part; else echo "Qtractor is not installed"; fi

command -v ardour7-lua >/dev/null || { echo "Ardour is not installed"; exit 0; }
values() { timeout 90 ardour7-lua "$here/lv2_ardour.lua" "$@" 2>"$out/ardour-lua.log" | grep '^value'; }
values create "$work/session" >"$out/created.txt"
values values "$work/session" >"$out/loaded.txt"
diff "$out/created.txt" "$out/loaded.txt" || fail "Ardour: values changed over save and load"
grep -qx 'value 17 1.25' "$out/loaded.txt" || fail "Ardour: the value did not arrive"
ls "$work"/session/plugins/*/state*/state.ttl >/dev/null || fail "Ardour saved no state"
echo "Ardour: values and state kept"

config=$XDG_CONFIG_HOME/ardour7
mkdir -p "$config"
touch "$config/.a7" # no first-run questions
echo '<?xml version="1.0"?><instant><no-memory-warning/></instant>' >"$config/instant.xml"
cat >"$config/config" <<X
<?xml version="1.0" encoding="UTF-8"?>
<Ardour version="7.3"><Config><Option name="try-autostart-engine" value="1"/><Option name="hide-dummy-backend" value="0"/>
<Option name="discover-plugins-on-start" value="0"/></Config><Extra><AudioMIDISetup><EngineStates>
<State backend="None (Dummy)" driver="Normal Speed" device="Silence" input-device="" output-device="" sample-rate="48000" buffer-size="1024" n-periods="2" input-latency="0" output-latency="0" lm-input="0" lm-output="0" active="1" use-buffered-io="0" midi-option="No MIDI I/O" lru="1"><MIDIDevices/></State>
</EngineStates></AudioMIDISetup></Extra></Ardour>
X
# The session opens with the editor's window.
python3 - "$work/session/session.ardour" <<'P'
import sys
import xml.etree.ElementTree as ET
tree = ET.parse(sys.argv[1])
root = tree.getroot()
for e in root.findall("EngineHints"):  # else Ardour asks whether the sound device has changed
    root.remove(e)
extra = root.find("Extra")
extra = ET.SubElement(root, "Extra") if extra is None else extra
ui = extra.find("UI")
ui = ET.SubElement(extra, "UI") if ui is None else ui
for route in root.iter("Route"):
    for p in route.iter("Processor"):
        if p.get("type") == "lv2":
            ET.SubElement(ui, "Window", {"name": "P-%s-%s" % (route.get("id"), p.get("id")), "visible": "1", "x-off": "60",
                                         "y-off": "60", "x-size": "-1", "y-size": "-1", "custom-ui": "1"})
tree.write(sys.argv[1], encoding="UTF-8", xml_declaration=True)
P
before=$(port motor_noise)
background ardour.log ardour --no-announcements --no-splash "$work/session/session.ardour"
shown=$(window '\[LV2\]$|QLX Brezan')
sleep 3
import -window root "$out/ardour-screen.png"
drag "$shown" ardour
main=$(window 'session - Ardour$')
save() {
  xdotool windowactivate --sync "$main" key ctrl+s
  sleep 3
  alive Ardour
}
save
[ "$(port motor_noise)" != "$before" ] || fail "Ardour: the knob did not reach the host's port"
echo "Ardour: knob reached the port, $before -> $(port motor_noise) dB"
xdotool windowactivate --sync "$main" key space sleep 1 # plays
drag "$shown" ardour-playing
xdotool windowactivate --sync "$main" key space sleep 1
save
import -window root "$out/ardour-recorded.png"
events=$(python3 - "$work/session/session.ardour" <<'P'
import sys
import xml.etree.ElementTree as ET
for a in ET.parse(sys.argv[1]).getroot().iter("AutomationList"):
    if a.get("automation-id") == "parameter-10":
        print(len((a.findtext("events") or "").split("\n")))
        break
P
)
[ "${events:-0}" -gt 3 ] || fail "Ardour: the knob's moves were not recorded"
echo "Ardour: $events moments of the knob recorded"

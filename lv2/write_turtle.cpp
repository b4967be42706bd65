// SPDX-License-Identifier: ISC
// write_turtle FOLDER MINOR MICRO: writes what hosts read about the bundle before they load it,
// from the tables that the plug-in itself runs by.
#include "lv2/ChangeRequest.h"
#include "lv2/Identity.h"
#include "lv2/Ports.h"
#include "plugin/FactoryPresets.h"
#include "plugin/ParameterTable.h"
#include "plugin/parameters/ParameterFormatter.h"

#include <charconv>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace qlx;
using lv2::ControlPort;
using lv2::kControlPorts;
using plugin::PortKind;
using plugin::PortScale;
using plugin::PortUnit;

constexpr std::string_view kPrefixes = R"(@prefix atom: <http://lv2plug.in/ns/ext/atom#> .
@prefix bufsz: <http://lv2plug.in/ns/ext/buf-size#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix log: <http://lv2plug.in/ns/ext/log#> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix midi: <http://lv2plug.in/ns/ext/midi#> .
@prefix opts: <http://lv2plug.in/ns/ext/options#> .
@prefix owl: <http://www.w3.org/2002/07/owl#> .
@prefix param: <http://lv2plug.in/ns/ext/parameters#> .
@prefix pg: <http://lv2plug.in/ns/ext/port-groups#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix state: <http://lv2plug.in/ns/ext/state#> .
@prefix time: <http://lv2plug.in/ns/ext/time#> .
@prefix ui: <http://lv2plug.in/ns/extensions/ui#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix urid: <http://lv2plug.in/ns/ext/urid#> .
@prefix xsd: <http://www.w3.org/2001/XMLSchema#> .

)";

/// A file of the bundle; it is complete or not there.
class TurtleFile {
 public:
  TurtleFile(const std::filesystem::path& folder, std::string_view name)
      : m_file(folder / name), m_stream(m_file) {
    m_stream << kPrefixes;
  }
  void finish() {
    m_stream.close();
    if (!m_stream) throw std::runtime_error("cannot write " + m_file.string());
  }
  template <typename T>
  TurtleFile& operator<<(const T& text) {
    m_stream << text;
    return *this;
  }

 private:
  std::filesystem::path m_file;
  std::ofstream m_stream;
};

/// The shortest decimal that reads back as the same float, with a point unless `whole`.
std::string number(float value, bool whole = false) {
  std::array<char, 64> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed)
          .ptr;
  std::string text(buffer.data(), end);
  if (!whole && text.find('.') == std::string::npos) text += ".0";
  return text;
}

bool isWhole(const PortScale& scale) {
  return scale.kind == PortKind::kToggled || scale.kind == PortKind::kChoice;
}

std::string uri(std::string_view suffix = "") {
  return "<" + std::string(lv2::kPluginUri) + std::string(suffix) + ">";
}

std::string presetUri(std::size_t preset) {
  const std::string digits = std::to_string(preset + 1);
  return "<" + std::string(lv2::kPresetUri) + (digits.size() < 2 ? "0" : "") + digits + ">";
}

/// The factory's sounds that are not neutral slots.
std::size_t soundCount() {
  const auto bank = plugin::factoryPresets();
  std::size_t count = bank.size();
  while (count > 0 && bank[count - 1] == bank.back()) --count;
  return count;
}

std::string displayText(const ControlPort& port, float value) {
  if (port.parameter == plugin::kSetup) {
    const plugin::ParameterFormatter format;
    const std::string_view detail = format.micSetupDetail(value);
    return std::string(format.micSetup(value)) + (detail.empty() ? "" : " ") + std::string(detail);
  }
  return std::string(plugin::parameterRow(port.parameter)->display.text(value).view());
}

void point(TurtleFile& file, std::string_view label, const std::string& value) {
  file << "    lv2:scalePoint [ rdfs:label \"" << label << "\" ; rdf:value " << value << " ] ;\n";
}

/// Names of places on the control: every choice, and the ends that the display shows as a word.
void points(TurtleFile& file, const ControlPort& port, const PortScale& scale) {
  if (scale.kind == PortKind::kChoice) {
    const int last = static_cast<int>(scale.maximum());
    for (int choice = static_cast<int>(scale.minimum()); choice <= last; ++choice) {
      const auto at = static_cast<float>(choice);
      point(file, displayText(port, scale.toValue(at)), number(at, true));
    }
  } else if (scale.kind != PortKind::kToggled) {
    for (const float end : {0.0F, 1.0F}) {
      const std::string text = displayText(port, end);
      const bool isNumber = text.find_first_not_of("-.0123456789") == std::string::npos;
      if (!isNumber) point(file, text, number(scale.toPort(end)));
    }
  }
}

std::string_view unitOf(PortUnit unit) {
  switch (unit) {
  case PortUnit::kHertz: return "units:hz";
  case PortUnit::kSeconds: return "units:s";
  case PortUnit::kDecibels: return "units:db";
  case PortUnit::kMetres: return "units:m";
  case PortUnit::kPercent: return "units:pc";
  case PortUnit::kNone: break;
  }
  return "";
}

std::string_view propertiesOf(PortKind kind) {
  switch (kind) {
  case PortKind::kToggled: return "lv2:integer , lv2:toggled";
  case PortKind::kChoice: return "lv2:integer , lv2:enumeration";
  case PortKind::kLogarithmic: return "pprops:logarithmic";
  case PortKind::kLinear: break;
  }
  return "";
}

void control(TurtleFile& file, std::size_t index) {
  const ControlPort& port = kControlPorts[index];
  const PortScale& scale = lv2::scaleOf(port);
  const bool whole = isWhole(scale);
  const float start =
      plugin::factoryPresets().front().values[static_cast<std::size_t>(port.parameter)];
  file << "  ] , [\n    a lv2:InputPort , lv2:ControlPort ;\n    lv2:index "
       << lv2::kFirstControl + index << " ;\n    lv2:symbol \"" << port.symbol
       << "\" ;\n    lv2:name \"" << port.name << "\" ;\n";
  if (port.parameter == plugin::kBypass) file << "    lv2:designation lv2:enabled ;\n";
  // The editor's button and nothing else: it throws the lever.
  if (port.parameter == plugin::kSpeed) file << "    lv2:portProperty pprops:notOnGUI ;\n";
  if (port.group.symbol[0] != '\0')
    file << "    pg:group " << uri("#" + std::string(port.group.symbol)) << " ;\n";
  const std::string_view properties = propertiesOf(scale.kind);
  if (!properties.empty()) file << "    lv2:portProperty " << properties << " ;\n";
  const std::string_view unit = unitOf(scale.unit);
  if (!unit.empty()) file << "    units:unit " << unit << " ;\n";
  points(file, port, scale);
  file << "    lv2:minimum " << number(scale.minimum(), whole) << " ;\n    lv2:maximum "
       << number(scale.maximum(), whole) << " ;\n    lv2:default "
       << number(scale.toPort(start), whole) << "\n";
}

void audioPort(TurtleFile& file, unsigned index, std::string_view direction,
               std::string_view symbol, std::string_view name, std::string_view side) {
  file << "    a lv2:" << direction << "Port , lv2:AudioPort ;\n    lv2:index " << index
       << " ;\n    lv2:symbol \"" << symbol << "\" ;\n    lv2:name \"" << name
       << "\" ;\n    pg:group " << uri("#audio" + std::string(direction))
       << " ;\n    lv2:designation pg:" << side << "\n";
}

void writeManifest(const std::filesystem::path& folder) {
  TurtleFile file(folder, "manifest.ttl");
  file << uri() << "\n  a lv2:Plugin ;\n  lv2:binary <brezan.so> ;\n"
       << "  rdfs:seeAlso <brezan.ttl> .\n\n<" << lv2::kUiUri
       << ">\n  a ui:X11UI ;\n  lv2:binary <brezan.so> ;\n  rdfs:seeAlso <brezan.ttl> .\n";
  for (std::size_t i = 0; i < soundCount(); ++i) {
    file << "\n"
         << presetUri(i) << "\n  a pset:Preset ;\n  lv2:appliesTo " << uri()
         << " ;\n  rdfs:seeAlso <presets.ttl> .\n";
  }
  file.finish();
}

void writePlugin(const std::filesystem::path& folder, std::string_view minor,
                 std::string_view micro) {
  TurtleFile file(folder, "brezan.ttl");
  file << "<" << lv2::kFactoryPresetUri << ">\n  a rdf:Property , owl:DatatypeProperty ;\n"
       << "  rdfs:label \"Number of a factory preset\" ;\n  rdfs:range xsd:integer .\n\n<"
       << lv2::kChangeRequestUri << ">\n  a lv2:Feature .\n\n";
  for (const lv2::PortGroup* group : lv2::kGroups) {
    file << uri("#" + std::string(group->symbol)) << "\n  a pg:InputGroup ;\n  lv2:symbol \""
         << group->symbol << "\" ;\n  lv2:name \"" << group->name << "\" .\n\n";
  }
  for (const std::string direction : {"Input", "Output"}) {
    file << uri("#audio" + direction) << "\n  a pg:" << direction
         << "Group , pg:StereoGroup ;\n  lv2:symbol \"audio_"
         << (direction == "Input" ? "in" : "out") << "\" ;\n  lv2:name \"Audio "
         << (direction == "Input" ? "input" : "output") << "\"";
    if (direction == "Output") file << " ;\n  pg:source " << uri("#audioInput");
    file << " .\n\n";
  }
  file << uri() << "\n  a lv2:Plugin , lv2:ModulatorPlugin , doap:Project ;\n"
       << "  doap:name \"QLX Brezan\" ;\n"
       << "  doap:shortdesc \"Rotary speaker emulator\" ;\n"
       << "  doap:license <https://spdx.org/licenses/ISC> ;\n"
       << "  doap:maintainer [ a foaf:Organization ; foaf:name \"Meridane\" ;"
       << " foaf:homepage <https://meridane.example/> ] ;\n"
       << "  lv2:minorVersion " << minor << " ;\n  lv2:microVersion " << micro << " ;\n"
       << "  lv2:requiredFeature urid:map ;\n"
       << "  lv2:optionalFeature lv2:hardRTCapable , state:threadSafeRestore , opts:options , "
          "log:log ,\n    <"
       << lv2::kChangeRequestUri << "> ;\n"
       << "  opts:supportedOption bufsz:maxBlockLength , param:sampleRate ;\n"
       << "  lv2:extensionData state:interface , opts:interface ;\n"
       << "  pg:mainInput " << uri("#audioInput") << " ;\n  pg:mainOutput " << uri("#audioOutput")
       << " ;\n  ui:ui <" << lv2::kUiUri << "> ;\n  lv2:port [\n";
  audioPort(file, lv2::kLeftInput, "Input", "left_in", "Left input", "left");
  file << "  ] , [\n";
  audioPort(file, lv2::kRightInput, "Input", "right_in", "Right input", "right");
  file << "  ] , [\n";
  audioPort(file, lv2::kLeftOutput, "Output", "left_out", "Left output", "left");
  file << "  ] , [\n";
  audioPort(file, lv2::kRightOutput, "Output", "right_out", "Right output", "right");
  file << "  ] , [\n    a lv2:InputPort , atom:AtomPort ;\n    lv2:index " << lv2::kEvents
       << " ;\n    lv2:symbol \"events\" ;\n    lv2:name \"MIDI\" ;\n"
       << "    atom:bufferType atom:Sequence ;\n"
       << "    atom:supports midi:MidiEvent , time:Position ;\n"
       << "    lv2:designation lv2:control\n";
  for (std::size_t i = 0; i < kControlPorts.size(); ++i) control(file, i);
  file << "  ] .\n\n<" << lv2::kUiUri << ">\n  a ui:X11UI ;\n"
       << "  lv2:requiredFeature ui:idleInterface , ui:parent ,\n"
       << "    <http://lv2plug.in/ns/ext/instance-access> ;\n"
       << "  lv2:optionalFeature ui:resize , ui:touch , ui:fixedSize , ui:noUserResize , "
          "opts:options , urid:map , log:log ;\n"
       << "  opts:supportedOption ui:scaleFactor ;\n"
       << "  lv2:extensionData ui:idleInterface , opts:interface .\n";
  file.finish();
}

/// Values that all presets share stay out of them.
void writePresets(const std::filesystem::path& folder) {
  TurtleFile file(folder, "presets.ttl");
  const auto bank = plugin::factoryPresets();
  for (std::size_t i = 0; i < soundCount(); ++i) {
    file << presetUri(i) << "\n  a pset:Preset ;\n  lv2:appliesTo " << uri()
         << " ;\n  rdfs:label \"" << bank[i].nameText() << "\" ;\n  state:state [ <"
         << lv2::kFactoryPresetUri << "> " << i << " ] ;\n  lv2:port ";
    std::string_view between = "[\n";
    for (const ControlPort& port : kControlPorts) {
      if (plugin::parameterRow(port.parameter)->keeping == plugin::kInAllPresets) continue;
      const PortScale& scale = lv2::scaleOf(port);
      const float value = bank[i].values[static_cast<std::size_t>(port.parameter)];
      file << between << "    lv2:symbol \"" << port.symbol << "\" ;\n    pset:value "
           << number(scale.toPort(value), isWhole(scale)) << "\n";
      between = "  ] , [\n";
    }
    file << "  ] .\n\n";
  }
  file.finish();
}

} // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 4) throw std::runtime_error("usage: write_turtle FOLDER MINOR MICRO");
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    writeManifest(folder);
    writePlugin(folder, argv[2], argv[3]);
    writePresets(folder);
  } catch (const std::exception& e) {
    std::cerr << "write_turtle: " << e.what() << "\n";
    return 1;
  }
  return 0;
}

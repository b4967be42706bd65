// SPDX-License-Identifier: ISC
// Who the effect says it is, and whether its texts fit where hosts have them written.
#include "brezan/validate/host/Effect.h"

#include <algorithm>
#include <array>
#include <string>

namespace qlx::validate {

namespace {

using sdk::EffectOpcode;

constexpr char kCanary = '\x7E';
// Nominally 24; names of 31 letters are so common that hosts in use give more.
constexpr std::size_t kProgramNameRoom = 64;

struct Text {
  const char* name;
  EffectOpcode opcode;
  std::size_t room; ///< bytes with the final zero, the least that hosts in use give
};

constexpr std::array<Text, 3> kParameterTexts{{
    {"name", EffectOpcode::GetParameterName, 24},
    {"label", EffectOpcode::GetParameterLabel, 24},
    {"display", EffectOpcode::GetParameterDisplay, 24},
}};
constexpr std::array<Text, 4> kTexts{{
    {"effect name", EffectOpcode::GetEffectName, sdk::kEffectNameLength},
    {"vendor", EffectOpcode::GetVendorString, sdk::kVendorTextLength},
    {"product", EffectOpcode::GetProductString, sdk::kVendorTextLength},
    {"program name", EffectOpcode::GetProgramName, kProgramNameRoom},
}};

/// Reads a text into a buffer full of canaries and looks what was written where.
std::string readText(const Effect& effect, const Text& text, int index, std::intptr_t value = 0) {
  CheckRun& run = effect.run();
  std::array<char, 4096> buffer{};
  buffer.fill(kCanary);
  char* const begin = buffer.data() + buffer.size() / 2;
  effect.call(text.opcode, index, value, begin);
  run.require(std::all_of(buffer.data(), begin, [](char c) { return c == kCanary; }),
              "bytes in front of the buffer were written");
  const auto last =
      std::find_if(buffer.rbegin(), buffer.rend(), [](char c) { return c != kCanary; });
  const auto written = last.base() - buffer.begin() - static_cast<long>(buffer.size() / 2);
  if (written <= 0) return ""; // it has no such text
  if (written > static_cast<long>(text.room))
    run.fail(std::to_string(written) + " bytes were written; hosts have " +
             std::to_string(text.room));
  char* const end = std::find(begin, begin + text.room, '\0');
  run.require(end != begin + text.room, "the text has no end");
  std::string words(begin, end);
  run.require(std::none_of(words.begin(), words.end(),
                           [](unsigned char c) { return c < ' ' || c == 0x7F; }),
              "a control character is in the text");
  return words;
}

void requireSameTwice(const Effect& effect, const Text& text, int index) {
  const std::string first = readText(effect, text, index);
  effect.run().require(readText(effect, text, index) == first,
                       "the text differs from call to call");
}

void identity(CheckRun& run) {
  const Effect effect(run);
  const Effect other(run);
  const sdk::EffectRecord& r = effect.record();
  run.require(r.uniqueId != 0, "the unique ID is 0");
  run.require(r.uniqueId == other.record().uniqueId, "two effects differ in their unique ID");
  run.require(r.numPrograms >= 0 && r.numParams >= 0 && r.numInputs >= 0 && r.numOutputs >= 0,
              "a count of the record is negative");
  run.require(r.initialDelay >= 0, "the latency is negative");
  run.require(!effect.has(sdk::kCanDoubleReplacing) || r.processDoubleReplacing != nullptr,
              "it claims double precision without a function for it");
  run.require(effect.has(sdk::kCanReplacing), "it does not claim to replace its outputs");
  const auto version = effect.call(EffectOpcode::GetVstVersion);
  run.require(version == 0 || version == 2 || (version >= 2000 && version <= 2400),
              "the VST version is none");
  const std::string name = readText(effect, kTexts[0], 0);
  run.require(!name.empty(), "it has no name");
}

void texts(CheckRun& run) {
  const Effect effect(run);
  for (const Text& text : kTexts) {
    run.trying(text.name);
    requireSameTwice(effect, text, 0);
  }
}

void parameterTexts(CheckRun& run) {
  const Effect effect(run);
  for (int i = 0; i < effect.parameters(); ++i)
    for (const Text& text : kParameterTexts) {
      run.trying(std::string(text.name) + " of parameter " + std::to_string(i));
      requireSameTwice(effect, text, i);
    }
}

void displays(CheckRun& run) {
  const Effect effect(run);
  const int values = run.rounds(5, 200);
  for (int i = 0; i < effect.parameters(); ++i)
    for (int v = 0; v <= values; ++v) {
      const float value = v < 2 ? static_cast<float>(v) : run.random().value();
      effect.set(i, value);
      run.trying("display of parameter " + std::to_string(i) + " at " + std::to_string(value));
      readText(effect, kParameterTexts[2], i);
    }
}

void programTexts(CheckRun& run) {
  const Effect effect(run);
  const Text indexed{"program name", EffectOpcode::GetProgramNameIndexed, kProgramNameRoom};
  for (int i = 0; i < effect.record().numPrograms; ++i) {
    run.trying("name of program " + std::to_string(i));
    readText(effect, indexed, i, -1);
    readText(effect, indexed, i, 0);
  }
}

/// An empty record of the interface between canaries.
template <typename Record>
struct Fenced {
  std::array<char, 64> before;
  Record record;
  std::array<char, 64> behind;

  Fenced() : record{} {
    before.fill(kCanary);
    behind.fill(kCanary);
  }
  bool whole() const {
    const auto intact = [](char c) { return c == kCanary; };
    return std::all_of(before.begin(), before.end(), intact) &&
           std::all_of(behind.begin(), behind.end(), intact);
  }
};

template <std::size_t N>
bool ends(const char (&text)[N]) {
  return std::find(std::begin(text), std::end(text), '\0') != std::end(text);
}

template <typename Record>
void requireProperties(const Effect& effect, EffectOpcode opcode, int index) {
  Fenced<Record> fenced;
  const bool known = effect.call(opcode, index, 0, &fenced.record) != 0;
  effect.run().require(fenced.whole(), "bytes around the properties were written");
  effect.run().require(!known || (ends(fenced.record.label) && ends(fenced.record.shortLabel)),
                       "a label has no end");
}

void properties(CheckRun& run) {
  const Effect effect(run);
  for (int i = 0; i < effect.parameters(); ++i) {
    run.trying("properties of parameter " + std::to_string(i));
    requireProperties<sdk::ParameterProperties>(effect, EffectOpcode::GetParameterProperties, i);
  }
  const sdk::EffectRecord& r = effect.record();
  for (int i = 0; i < std::max(r.numInputs, r.numOutputs); ++i) {
    run.trying("properties of pin " + std::to_string(i));
    requireProperties<sdk::PinProperties>(effect, EffectOpcode::GetInputProperties, i);
    requireProperties<sdk::PinProperties>(effect, EffectOpcode::GetOutputProperties, i);
  }
}

constexpr Check kChecks[] = {
    {"texts", "identity", 1, "ID, version, counts and flags of the record", identity},
    {"texts", "names", 1, "names and vendor fit into hosts' buffers and have an end", texts},
    {"texts", "parameters", 1, "so do names, labels and displays of parameters", parameterTexts},
    {"texts", "displays", 2, "displays over many values", displays},
    {"texts", "programs", 1, "names of programs", programTexts},
    {"texts", "properties", 1, "properties of parameters and pins stay in their records",
     properties},
};

} // namespace

std::span<const Check> textChecks() { return kChecks; }

} // namespace qlx::validate

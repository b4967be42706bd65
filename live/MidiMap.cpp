// SPDX-License-Identifier: ISC
#include "live/MidiMap.h"

#include <charconv>

namespace qlx::live {

namespace {

constexpr std::string_view kSpace = " \t\r";
// A file of more lines is none of these; every controller of every channel has room.
constexpr int kMostLines = 10000;

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) + 1 - first);
}

// The first word of `line`, which loses it.
std::string_view nextWord(std::string_view& line) {
  const std::size_t end = std::min(line.find_first_of(kSpace), line.size());
  const std::string_view word = line.substr(0, end);
  line = trimmed(line.substr(end));
  return word;
}

std::optional<int> number(std::string_view word, int least, int most) {
  int value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc() || end != word.data() + word.size() || value < least || value > most)
    return std::nullopt;
  return value;
}

} // namespace

MidiMap MidiMap::parse(std::string_view text, const Find& find, std::vector<std::string>& faults) {
  MidiMap map;
  for (int lineNumber = 1; !text.empty(); ++lineNumber) {
    if (lineNumber > kMostLines) {
      faults.push_back("line " + std::to_string(lineNumber) + ": too many lines");
      break;
    }
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    line = trimmed(line.substr(0, line.find('#')));
    if (line.empty()) continue;
    const auto fault = [&](const std::string& what) {
      faults.push_back("line " + std::to_string(lineNumber) + ": " + what);
    };
    const auto channel = number(nextWord(line), 1, kChannels);
    const auto controller = number(nextWord(line), 0, kControllers - 1);
    if (!channel)
      fault("the channel is not 1 to 16");
    else if (!controller)
      fault("the controller is not 0 to 119");
    else if (const auto parameter = line.empty() ? std::nullopt : find(line); !parameter)
      fault("no control of this name");
    else
      map.assign({*channel, *controller}, *parameter);
  }
  return map;
}

std::string MidiMap::text(const Name& name) const {
  std::string text = "# MIDI controllers: channel, controller, control\n";
  for (const auto& [controller, parameter] : m_entries)
    text += std::to_string(controller.channel) + ' ' + std::to_string(controller.number) + ' ' +
            name(parameter) + '\n';
  return text;
}

void MidiMap::assign(Controller controller, int parameter) {
  forget(parameter);
  m_entries[controller] = parameter;
}

void MidiMap::forget(int parameter) {
  std::erase_if(m_entries, [parameter](const auto& entry) { return entry.second == parameter; });
}

std::optional<Controller> MidiMap::controllerOf(int parameter) const {
  for (const auto& [controller, moved] : m_entries)
    if (moved == parameter) return controller;
  return std::nullopt;
}

void MidiMap::apply(EffectPlayer& player) const {
  for (int channel = 1; channel <= kChannels; ++channel)
    for (int number = 0; number < kControllers; ++number) {
      const auto entry = m_entries.find({channel, number});
      player.assign({channel, number},
                    entry == m_entries.end() ? EffectPlayer::kNoParameter : entry->second);
    }
}

} // namespace qlx::live

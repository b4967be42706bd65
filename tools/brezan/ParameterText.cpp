#include "tools/brezan/ParameterText.h"

#include "tools/brezan/Words.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <stdexcept>

namespace qlx::tools {

namespace {

// Finer than the steps of any display text.
constexpr int kGrid = 2000;
// Parts of the range on which words are usually placed, coarse ones first; 17 is a MIDI channel
// selector with "off" and "all".
constexpr int kRoundParts[] = {1, 2, 4, 5, 10, 17, 20, 100, 1000};
// More different words than this are amounts, not names to choose from.
constexpr std::size_t kMostChoices = 20;

// The value to stand for a stretch of the grid: an end of the range if it reaches there, else its
// middle, rounded where a round value is as good.
float representative(int first, int last) {
  if (first == 0) return 0.0F;
  if (last == kGrid) return 1.0F;
  const double middle = 0.5 * (first + last) / kGrid;
  for (const int parts : kRoundParts) {
    const double round = std::round(middle * parts) / parts;
    const bool inside = round * kGrid >= first && round * kGrid <= last;
    if (inside && std::abs(round - middle) <= 1.0 / kGrid) return static_cast<float>(round);
  }
  return static_cast<float>(middle);
}

struct Amount {
  double number;
  std::string unit;
};

// "-6.5db" as a number and a unit.
std::optional<Amount> amount(const std::string& text) {
  const std::size_t end = text.find_last_of("0123456789");
  if (end == std::string::npos) return std::nullopt;
  const std::optional<double> number = asNumber(text.substr(0, end + 1));
  if (!number) return std::nullopt;
  return Amount{*number, text.substr(end + 1)};
}

} // namespace

ParameterText::ParameterText(const std::filesystem::path& pluginFile) : m_scratch(pluginFile) {
  for (int i = 0; i < m_scratch.parameterCount(); ++i)
    m_names.push_back(m_scratch.parameter(i).name);
}

int ParameterText::index(std::string_view name) {
  const std::string wanted = folded(name);
  if (!wanted.empty())
    for (std::size_t i = 0; i < m_names.size(); ++i)
      if (folded(m_names[i]) == wanted) return static_cast<int>(i);
  if (const auto number = asNumber(wanted); number && *number >= 0.0 &&
                                            *number < static_cast<double>(m_names.size()) &&
                                            *number == std::floor(*number))
    return static_cast<int>(*number);
  throw std::runtime_error("no parameter '" + std::string(name) + "'; 'brezan params' lists them");
}

const std::vector<ParameterText::Shown>& ParameterText::shown(int index) {
  std::vector<Shown>& list = m_shown[index];
  if (!list.empty()) return list;
  const float before = m_scratch.value(index);
  int first = 0; // of the stretch that shows the same
  for (int i = 0; i <= kGrid; ++i) {
    m_scratch.setValue(index, static_cast<float>(i) / kGrid);
    const std::string display = folded(m_scratch.display(index));
    const std::string label = folded(m_scratch.label(index));
    if (list.empty() || list.back().display != display || list.back().label != label) {
      list.push_back({0.0F, display, label});
      first = i;
    }
    list.back().value = representative(first, i);
  }
  m_scratch.setValue(index, before);
  return list;
}

std::string ParameterText::hint(int index) {
  std::vector<std::string> choices;
  std::set<std::string> seen;
  const float before = m_scratch.value(index);
  for (int i = 0; i <= 100; ++i) {
    m_scratch.setValue(index, static_cast<float>(i) / 100.0F);
    const std::string display = m_scratch.display(index);
    if (!display.empty() && seen.insert(display).second) choices.push_back(display);
  }
  m_scratch.setValue(index, before);
  if (choices.empty()) return "a number in 0..1";
  const std::string label = m_scratch.label(index);
  const std::string unit = label == " " ? "" : label;
  if (choices.size() > kMostChoices)
    return "a number in 0..1, or " + choices.front() + unit + " to " + choices.back() + unit;
  std::string words;
  for (const std::string& choice : choices) words += (words.empty() ? "" : ", ") + choice;
  return "a number in 0..1, or one of " + words;
}

std::optional<float> ParameterText::showing(int index, const std::string& wanted) {
  for (const Shown& candidate : shown(index))
    if (candidate.display == wanted || candidate.display + candidate.label == wanted)
      return candidate.value;
  return std::nullopt;
}

std::optional<float> ParameterText::nearest(int index, double number, const std::string& unit) {
  const Shown* best = nullptr;
  double distance = 0.0;
  double lowest = 0.0;
  double highest = 0.0;
  for (const Shown& candidate : shown(index)) {
    const std::optional<double> here = asNumber(candidate.display);
    if (candidate.label != unit || !here) continue;
    lowest = best == nullptr ? *here : std::min(lowest, *here);
    highest = best == nullptr ? *here : std::max(highest, *here);
    if (const double apart = std::abs(*here - number); best == nullptr || apart < distance) {
      best = &candidate;
      distance = apart;
    }
  }
  if (best == nullptr || number < lowest || number > highest) return std::nullopt;
  return best->value;
}

float ParameterText::value(int index, std::string_view text) {
  const std::string wanted = folded(text);
  const std::optional<double> number = asNumber(wanted);
  if (number && *number >= 0.0 && *number <= 1.0) return static_cast<float>(*number);
  if (!wanted.empty())
    if (const auto found = showing(index, wanted)) return *found;
  if (const auto asked = amount(wanted); asked && !asked->unit.empty())
    if (const auto found = nearest(index, asked->number, asked->unit)) return *found;
  throw std::runtime_error("'" + std::string(text) + "' is no value of " +
                           (name(index).empty() ? std::to_string(index) : name(index)) + ": give " +
                           hint(index));
}

ParameterValue ParameterText::assignment(std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos)
    throw std::runtime_error("'" + std::string(text) + "' is not of the form NAME=VALUE");
  const int which = index(text.substr(0, equals));
  return {which, value(which, text.substr(equals + 1))};
}

} // namespace qlx::tools

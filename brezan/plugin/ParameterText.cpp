// SPDX-License-Identifier: ISC
#include "brezan/plugin/ParameterText.h"

#include "brezan/Words.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <set>
#include <stdexcept>
#include <tuple>

namespace qlx::tools {

namespace {

// Steps of the values that are tried to see what a display can show at all. Displays with finer
// steps are searched between two of them.
constexpr int kGrid = 2000;
// Halvings that narrow a value in 0..1 down to single precision.
constexpr int kHalvings = 26;
// Parts of the range on which settings usually stand, coarse ones first; 17 is a MIDI channel
// selector with "off" and "all".
constexpr int kRoundParts[] = {1, 2, 4, 5, 10, 17, 20, 100, 1000};
// More different words than this are amounts, not names to choose from.
constexpr std::size_t kMostChoices = 20;

struct Unit {
  std::string_view name;
  std::string_view base;
  double factor; ///< to the base
};
constexpr Unit kUnits[] = {{"khz", "hz", 1e3},
                           {"rpm", "hz", 1.0 / 60.0},
                           {"ms", "s", 1e-3},
                           {"mm", "m", 1e-3},
                           {"cm", "m", 1e-2}};

Unit unitNamed(std::string_view name) {
  for (const Unit& unit : kUnits)
    if (unit.name == name) return unit;
  return {name, name, 1.0};
}

// Rounding of a displayed number when it is converted to its base unit.
bool alike(double a, double b) { return std::abs(a - b) <= 1e-9 * std::max(1.0, std::abs(b)); }

// The value to stand for a stretch of values: an end of the range if it reaches there, else its
// middle, rounded where a round value is as good.
double representative(double first, double last) {
  if (first <= 0.0) return 0.0;
  if (last >= 1.0) return 1.0;
  const double middle = 0.5 * (first + last);
  for (const int parts : kRoundParts) {
    const double round = std::round(middle * parts) / parts;
    if (round >= first && round <= last && std::abs(round - middle) <= 1.0 / kGrid) return round;
  }
  return middle;
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

// The neighbouring values between which `reached` becomes true; `high` reaches.
template <typename Reached>
std::pair<float, float> edge(float low, float high, Reached reached) {
  for (int i = 0; i < kHalvings; ++i) {
    const float middle = 0.5F * (low + high);
    (reached(middle) ? high : low) = middle;
  }
  return {low, high};
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
  for (int i = 0; i <= kGrid; ++i) {
    const float value = static_cast<float>(i) / kGrid;
    m_scratch.setValue(index, value);
    const std::string display = folded(m_scratch.display(index));
    const std::string label = folded(m_scratch.label(index));
    if (list.empty() || list.back().display != display || list.back().label != label)
      list.push_back({value, value, display, label});
    list.back().last = value;
  }
  return list;
}

std::string ParameterText::hint(int index) {
  constexpr const char* kAny = "norm:0 to norm:1";
  std::vector<std::string> choices;
  for (const Shown& one : shown(index)) {
    m_scratch.setValue(index, one.first);
    const std::string display = m_scratch.display(index);
    const std::string label = m_scratch.label(index);
    if (!display.empty()) choices.push_back(display + (label == " " ? "" : label));
  }
  if (choices.empty()) return m_scratch.parameter(index).isSwitch ? "0 or 1" : std::string(kAny);
  if (choices.size() > kMostChoices)
    return choices.front() + " to " + choices.back() + ", or " + kAny;
  std::string words;
  for (const std::string& choice : choices) words += (words.empty() ? "" : ", ") + choice;
  return "one of " + words + ", or " + kAny;
}

void ParameterText::refuse(int index, std::string_view text, const std::string& instead) {
  throw std::runtime_error("'" + std::string(text) + "' is no value of " +
                           (name(index).empty() ? std::to_string(index) : name(index)) + ": give " +
                           instead);
}

std::optional<float> ParameterText::word(int index, const std::string& wanted) {
  for (const Shown& one : shown(index))
    if (!one.display.empty() && (one.display == wanted || one.display + one.label == wanted))
      return static_cast<float>(
          representative(static_cast<double>(one.first), static_cast<double>(one.last)));
  return std::nullopt;
}

std::optional<double> ParameterText::amountAt(int index, float value, const std::string& base) {
  m_scratch.setValue(index, value);
  const auto number = asNumber(folded(m_scratch.display(index)));
  const std::string label = folded(m_scratch.label(index));
  const Unit unit = unitNamed(label);
  if (!number || unit.base != base) return std::nullopt;
  return *number * unit.factor;
}

std::optional<float> ParameterText::showing(int index, double amount, const std::string& base) {
  std::optional<float> from;
  float to = 0.0F;
  for (const Shown& one : shown(index)) {
    if (!amountAt(index, one.first, base)) continue;
    if (!from) from = one.first;
    to = one.last;
  }
  if (!from) return std::nullopt;
  // Words at an end, such as "Off", may begin between two values of the grid.
  constexpr float kStep = 1.0F / kGrid;
  const auto isAmount = [&](float value) { return amountAt(index, value, base).has_value(); };
  if (*from > 0.0F) from = edge(*from - kStep, *from, isAmount).second;
  if (to < 1.0F) to = edge(to, to + kStep, [&](float value) { return !isAmount(value); }).first;

  const auto at = [&](float value) { return amountAt(index, value, base).value_or(0.0); };
  const double sign = at(to) < at(*from) ? -1.0 : 1.0; // displays rise or fall all the way
  const auto reaches = [&](double level) {
    return [&at, sign, level](float value) {
      const double here = at(value);
      return alike(here, level) || sign * here > sign * level;
    };
  };
  const auto passes = [&](double level) {
    return [&at, sign, level](float value) {
      const double here = at(value);
      return !alike(here, level) && sign * here > sign * level;
    };
  };
  if (passes(amount)(*from) || !reaches(amount)(to)) return std::nullopt;
  const auto place = [&](double level) {
    const float first = reaches(level)(*from) ? *from : edge(*from, to, reaches(level)).second;
    const float last = passes(level)(to) ? edge(first, to, passes(level)).first : to;
    return representative(static_cast<double>(first), static_cast<double>(last));
  };
  if (reaches(amount)(*from)) return static_cast<float>(place(amount));
  const auto [below, reached] = edge(*from, to, reaches(amount));
  const double next = at(reached);
  if (alike(next, amount)) return static_cast<float>(place(amount));
  const double before = at(below);
  const double part = (amount - before) / (next - before);
  return static_cast<float>(std::lerp(place(before), place(next), part));
}

std::optional<float> ParameterText::plainNumber(int index, double number, const std::string& text) {
  struct Found {
    float value;
    std::string label;
    int rank; ///< 0: shown so to the letter, 1: shown, 2: between two that are shown
  };
  std::vector<Found> found;
  std::set<std::string> labels;
  for (const Shown& one : shown(index)) {
    if (!asNumber(one.display) || !labels.insert(one.label).second) continue;
    const Unit unit = unitNamed(one.label);
    const auto value = showing(index, number * unit.factor, std::string(unit.base));
    if (!value) continue;
    m_scratch.setValue(index, *value);
    const std::string display = folded(m_scratch.display(index));
    if (folded(m_scratch.label(index)) != one.label) continue;
    found.push_back(
        {*value, m_scratch.label(index),
         display == text ? 0 : (alike(asNumber(display).value_or(0.0), number) ? 1 : 2)});
  }
  std::ranges::stable_sort(found, {}, &Found::rank);
  if (found.empty()) return std::nullopt;
  if (found.size() > 1 && found[0].rank == found[1].rank)
    refuse(index, text, text + found[0].label + " or " + text + found[1].label);
  return found[0].value;
}

// Numbers for what is shown as words: that of "Ch 3", the ends of a count ("Chorale", 1 .. 99,
// "Tremolo"), and 0 and 1 of a switch.
std::optional<float> ParameterText::numberOfWord(int index, double number) {
  const std::vector<Shown>& list = shown(index);
  for (const Shown& one : list)
    if (const auto digits = one.display.find_first_of("0123456789");
        digits != std::string::npos && asNumber(one.display.substr(digits)) == number &&
        !asNumber(one.display))
      return word(index, one.display);
  if (list.size() > kMostChoices) {
    const std::array ends{std::tuple{list.front(), list[1], list[2]},
                          std::tuple{list.back(), list[list.size() - 2], list[list.size() - 3]}};
    for (const auto& [end, next, over] : ends) {
      const auto a = asNumber(next.display);
      const auto b = asNumber(over.display);
      if (!asNumber(end.display) && next.label.empty() && a && b && std::abs(*a - *b) == 1.0 &&
          number == 2.0 * *a - *b)
        return word(index, end.display);
    }
  }
  if (m_scratch.parameter(index).isSwitch && (number == 0.0 || number == 1.0))
    return static_cast<float>(number);
  return std::nullopt;
}

float ParameterText::value(int index, std::string_view text) {
  constexpr std::string_view kNormalised = "norm:";
  const std::string wanted = folded(text);
  if (wanted.starts_with(kNormalised)) {
    const auto number = asNumber(std::string_view(wanted).substr(kNormalised.size()));
    if (!number || *number < 0.0 || *number > 1.0) refuse(index, text, "norm:0 to norm:1");
    return static_cast<float>(*number);
  }
  const auto asked = amount(wanted);
  std::optional<float> found;
  if (!asked) {
    found = word(index, wanted.starts_with("-inf") ? "-oo" + wanted.substr(4) : wanted);
  } else if (asked->unit.empty()) {
    found = plainNumber(index, asked->number, wanted);
    if (!found) found = numberOfWord(index, asked->number);
  } else {
    const Unit unit = unitNamed(asked->unit);
    found = showing(index, asked->number * unit.factor, std::string(unit.base));
  }
  if (!found) refuse(index, text, hint(index));
  return *found;
}

ParameterValue ParameterText::assignment(std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos)
    throw std::runtime_error("'" + std::string(text) + "' is not of the form NAME=VALUE");
  const int which = index(text.substr(0, equals));
  return {which, value(which, text.substr(equals + 1))};
}

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#include "brezan/plugin/Automation.h"

#include "brezan/Words.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace qlx::tools {

namespace {

// A ramp is written in steps of this many frames, as fine as hosts do.
constexpr long long kRampStep = 32;

double seconds(const std::string& text, const char* what) {
  const std::optional<double> number = asNumber(text);
  if (!number || *number < 0.0)
    throw std::runtime_error("'" + text + "' is no " + what + " in seconds");
  return *number;
}

AutomationLine parseLine(const std::string& line, int number) {
  std::istringstream words(line);
  std::string when;
  std::string ramp;
  std::string more;
  AutomationLine result{number, 0.0, "", "", 0.0};
  words >> when >> result.parameter >> result.value;
  if (result.value.empty()) throw std::runtime_error("a line is: seconds parameter value [ramp]");
  if (!(words >> ramp)) ramp = "0";
  if (words >> more) throw std::runtime_error("too many words, from '" + more + "' on");
  result.seconds = seconds(when, "time");
  result.ramp = seconds(ramp, "ramp");
  return result;
}

// Runs `read`, and puts the line's place before what it complains about.
template <typename Read>
auto atLine(const std::string& source, int number, Read read) {
  try {
    return read();
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(source + ", line " + std::to_string(number) + ": " + error.what());
  }
}

} // namespace

std::vector<AutomationLine> readAutomation(std::istream& in, const std::string& source) {
  std::vector<AutomationLine> lines;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    line.resize(std::min(line.size(), line.find('#')));
    if (folded(line).empty()) continue;
    lines.push_back(atLine(source, number, [&] { return parseLine(line, number); }));
  }
  std::stable_sort(lines.begin(), lines.end(),
                   [](const auto& a, const auto& b) { return a.seconds < b.seconds; });
  return lines;
}

std::vector<AutomationMove> resolved(const std::vector<AutomationLine>& lines,
                                     const std::string& source, ParameterText& parameters) {
  std::vector<AutomationMove> moves;
  moves.reserve(lines.size());
  for (const AutomationLine& line : lines)
    moves.push_back(atLine(source, line.number, [&] {
      const int index = parameters.index(line.parameter);
      return AutomationMove{line.seconds, index, parameters.value(index, line.value), line.ramp};
    }));
  return moves;
}

AutomationPlayer::AutomationPlayer(std::span<const AutomationMove> moves, double rate) {
  m_moves.reserve(moves.size());
  for (const AutomationMove& move : moves)
    m_moves.push_back({std::llround(move.seconds * rate),
                       std::llround((move.seconds + move.ramp) * rate), move.index, move.value});
}

int AutomationPlayer::advance(PluginHost& host, long long now, int most) {
  for (; m_next < m_moves.size() && m_moves[m_next].first <= now; ++m_next) {
    Move move = m_moves[m_next];
    move.from = host.value(move.index);
    std::erase_if(m_running, [&](const Move& other) { return other.index == move.index; });
    m_running.push_back(move);
  }
  for (const Move& move : m_running) {
    const auto length = static_cast<double>(move.last - move.first);
    const double part = now >= move.last ? 1.0 : static_cast<double>(now - move.first) / length;
    host.setValue(move.index,
                  part >= 1.0 ? move.target
                              : static_cast<float>(move.from + part * (move.target - move.from)));
  }
  std::erase_if(m_running, [now](const Move& move) { return now >= move.last; });
  return static_cast<int>(std::min<long long>(most, framesUntilNextChange(now)));
}

long long AutomationPlayer::framesUntilNextChange(long long now) const {
  long long frames = std::numeric_limits<int>::max();
  if (m_next < m_moves.size()) frames = std::min(frames, m_moves[m_next].first - now);
  for (const Move& move : m_running)
    frames = std::min({frames, kRampStep, std::max(1LL, move.last - now)});
  return frames;
}

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#include "brezan/analysis/LeverMarks.h"

#include "brezan/Words.h"

#include <algorithm>
#include <optional>

namespace qlx::tools {

namespace {

enum class Part { Lever, Brake };

struct Move {
  double seconds;
  Part part;
  LeverState lever; ///< of the lever
  bool braked;      ///< of the brake
};

constexpr int kModulationWheel = 1;
constexpr int kSustainPedal = 64;

LeverState leverAt(double value) {
  if (value <= 0.005) return LeverState::Slow;
  return value >= 0.995 ? LeverState::Fast : LeverState::Moving;
}

std::optional<Move> move(const TimedMidi& message) {
  if ((message.bytes[0] & 0xF0) != 0xB0) return std::nullopt;
  if (message.bytes[1] == kSustainPedal)
    return Move{message.seconds, Part::Lever,
                message.bytes[2] >= 64 ? LeverState::Fast : LeverState::Slow, false};
  if (message.bytes[1] == kModulationWheel)
    return Move{message.seconds, Part::Lever, leverAt(message.bytes[2] / 127.0), false};
  return std::nullopt;
}

std::optional<Move> move(const AutomationLine& line) {
  const std::string name = folded(line.parameter);
  const std::string word = folded(line.value);
  double value = 0.5;
  if (word == "tremolo" || word == "stopped") value = 1.0;
  if (word == "chorale" || word == "running") value = 0.0;
  if (word.starts_with("norm:")) value = asNumber(word.substr(5)).value_or(value);
  if (const auto number = asNumber(word)) value = name == "lever" ? *number / 100.0 : *number;
  if (name == "lever") return Move{line.seconds, Part::Lever, leverAt(value), false};
  if (name == "stop") return Move{line.seconds, Part::Brake, LeverState::Slow, value >= 0.5};
  return std::nullopt;
}

const char* words(LeverState state) {
  switch (state) {
  case LeverState::Slow: return "slow";
  case LeverState::Fast: return "fast";
  case LeverState::Stopped: return "stop";
  default: return "between";
  }
}

} // namespace

std::vector<LeverMark> leverMarks(std::span<const TimedMidi> midi,
                                  std::span<const AutomationLine> automation) {
  std::vector<Move> moves;
  const auto collect = [&moves](const auto& list) {
    for (const auto& entry : list)
      if (const auto found = move(entry)) moves.push_back(*found);
  };
  collect(automation);
  collect(midi);
  std::stable_sort(moves.begin(), moves.end(),
                   [](const Move& a, const Move& b) { return a.seconds < b.seconds; });
  std::vector<LeverMark> marks{{0.0, LeverState::Slow, words(LeverState::Slow)}};
  LeverState lever = LeverState::Slow;
  for (const Move& m : moves) {
    if (m.part == Part::Lever) lever = m.lever;
    const LeverState now = m.braked ? LeverState::Stopped : lever;
    if (now == marks.back().state) continue;
    if (m.seconds <= marks.back().seconds)
      marks.back() = {m.seconds, now, words(now)};
    else
      marks.push_back({m.seconds, now, words(now)});
  }
  return marks;
}

} // namespace qlx::tools

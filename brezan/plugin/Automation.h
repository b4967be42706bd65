// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/ParameterText.h"

#include <istream>
#include <span>
#include <string>
#include <vector>

namespace qlx::tools {

/// One automated move: at `seconds` the parameter goes to `value`, at once or in a straight line
/// that takes `ramp` seconds.
struct AutomationMove {
  double seconds;
  int index;
  float value;
  double ramp;
};

/// One line of an automation file as it was written.
struct AutomationLine {
  int number; ///< in its file, from 1
  double seconds;
  std::string parameter;
  std::string value;
  double ramp; ///< seconds
};

/// Reads lines "seconds parameter value [ramp]"; '#' begins a comment. Lines come back in the
/// order of time. Throws std::runtime_error with `source` and the line's number.
std::vector<AutomationLine> readAutomation(std::istream& in, const std::string& source);

/// The lines with their names and values looked up. Throws like readAutomation.
std::vector<AutomationMove> resolved(const std::vector<AutomationLine>& lines,
                                     const std::string& source, ParameterText& parameters);

/// Plays moves on a host, whose audio runs at `rate`.
class AutomationPlayer {
 public:
  AutomationPlayer(std::span<const AutomationMove> moves, double rate);

  /// Writes to the host what holds at frame `now`, and answers how many frames may be processed
  /// until the next call: at least 1, at most `most`.
  int advance(PluginHost& host, long long now, int most);

 private:
  struct Move {
    long long first; ///< frame of the start
    long long last;  ///< frame at which the value is reached
    int index;
    float target;
    float from = 0.0F;
  };
  long long framesUntilNextChange(long long now) const;

  std::vector<Move> m_moves;
  std::size_t m_next = 0;      ///< first move not begun
  std::vector<Move> m_running; ///< ramps under way, one a parameter
};

} // namespace qlx::tools

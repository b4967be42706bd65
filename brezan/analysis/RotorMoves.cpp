// SPDX-License-Identifier: ISC
#include "brezan/analysis/RotorMoves.h"

#include <algorithm>
#include <cmath>

namespace qlx::tools {

namespace {

constexpr double kSmallestChange = 0.1; // revolutions a second
constexpr double kEndSeconds = 0.5;     // over which the speed at the end is averaged
constexpr double kSettledPart = 0.02;   // of the way, that may still be gone in that time

// Over whole turns where there are any, since the trace's error repeats with the turn.
double meanSpeed(const RotorTrace& trace, double from, double to) {
  const double end = trace.turns(to);
  const double whole = std::floor(end - trace.turns(from));
  if (whole >= 1.0)
    while (trace.turns(from) < end - whole) from += RotorTrace::kStepSeconds;
  return to > from ? (end - trace.turns(from)) / (to - from) : 0.0;
}

} // namespace

std::vector<RotorMove> rotorMoves(const RotorTrace& trace, std::span<const double> times,
                                  double end) {
  std::vector<RotorMove> moves;
  double before = 0.0;
  for (std::size_t i = 0; i < times.size(); ++i) {
    const double from = times[i];
    const double to = i + 1 < times.size() ? times[i + 1] : end;
    const double last = std::min(kEndSeconds, (to - from) / 4.0);
    RotorMove move{meanSpeed(trace, to - last, to), {}, true};
    const double way = move.reached - before;
    if (i > 0 && std::abs(way) >= kSmallestChange) {
      // Time spent between the two is not disturbed by the trace's wavering, as crossings would be.
      double seconds = 0.0;
      const auto steps = static_cast<int>((to - from) / RotorTrace::kStepSeconds);
      for (int step = 0; step < steps; ++step) {
        const double now = from + step * RotorTrace::kStepSeconds;
        if (const double gone = (trace.speed(now) - before) / way; gone >= 0.1 && gone < 0.9)
          seconds += RotorTrace::kStepSeconds;
      }
      move.tenToNinety = seconds;
      const double earlier = meanSpeed(trace, to - 2.0 * last, to - last);
      move.settled = std::abs(move.reached - earlier) < kSettledPart * std::abs(way);
    }
    before = move.reached;
    moves.push_back(move);
  }
  return moves;
}

} // namespace qlx::tools

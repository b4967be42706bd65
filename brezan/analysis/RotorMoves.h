// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/analysis/RotorTrace.h"

#include <optional>
#include <span>
#include <vector>

namespace qlx::tools {

/// What a rotor does from one move of lever or brake to the next.
struct RotorMove {
  double reached; ///< revolutions a second at the end
  /// Seconds between 10 % and 90 % of the way from the speed before; nothing when it hardly
  /// changes.
  std::optional<double> tenToNinety;
  bool settled; ///< false when the speed is still changing at the end
};

/// One entry a time; the last lasts to `end`. All in the trace's seconds, in order.
std::vector<RotorMove> rotorMoves(const RotorTrace& trace, std::span<const double> times,
                                  double end);

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/bench/Workload.h"

#include <functional>
#include <optional>

namespace qlx::tools {

/// Time that one kind of work takes, each block the shortest of several identical runs, so that
/// what the machine does besides does not show.
struct BlockTimes {
  double cpuNs;    ///< processor time of a host sample, on average
  double medianUs; ///< of a block, by the clock
  double worstUs;  ///< of the slowest block, by the clock
};

/// Plays `seconds` of sound several times, each with a new instance; calls `played` after each run
/// with the part done, 0..1. May throw std::runtime_error and what `played` throws.
BlockTimes measureBlocks(WorkloadPlan& plan, const WorkloadCase& what, double seconds,
                         const std::function<void(double)>& played);

/// Milliseconds that making an instance takes, median of several; without loading the library.
double creationMilliseconds(const std::filesystem::path& plugin);

/// Main memory of one more instance that has played, in bytes; nothing where the system does not
/// tell.
std::optional<std::size_t> instanceBytes(WorkloadPlan& plan);

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/bench/Workload.h"

#include <functional>
#include <iosfwd>

namespace qlx::tools {

/// One amount of steadily fast work.
struct GrowthPoint {
  WorkloadCase what{48000.0, true, Use::SteadyFast};
  int blockFrames = Workload::kBlockFrames;
  int instances = 1;
  int cores = 1;            ///< the instances are shared out evenly
  double nsPerSample = 0.0; ///< processor time of a host sample and instance
  double load = 0.0;        ///< part of its time that the busiest core is at work
};

/// How processor time grows.
struct Growth {
  std::vector<GrowthPoint> instances; ///< by their number, on one core and, where there is, on two
  std::vector<GrowthPoint> blocks;    ///< by block size, both modes
  std::vector<GrowthPoint> rates;     ///< by host rate, both modes
};

/// Plays `seconds` of sound at each point and takes its least disturbed part; calls `played` after
/// each with the part done, 0..1. Threads of its own play, one a core. May throw
/// std::runtime_error and what `played` throws.
Growth measureGrowth(WorkloadPlan& plan, double seconds, const std::function<void(double)>& played);

void printGrowth(const Growth& growth, std::ostream& out);

/// Three diagrams side by side in a PNG file. Throws std::runtime_error.
void drawGrowth(const Growth& growth, const std::filesystem::path& path);

} // namespace qlx::tools

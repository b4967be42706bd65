// SPDX-License-Identifier: ISC
#include "brezan/bench/BlockTimes.h"

#include "brezan/System.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>

namespace qlx::tools {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRuns = 5;
constexpr double kWarmUpSeconds = 0.5;
constexpr int kCreations = 9;
constexpr int kResidents = 64;
constexpr double kResidentSeconds = 0.25;

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void play(Workload& work, double seconds) {
  for (long long i = work.stepsIn(seconds); i > 0; --i) work.step();
}

} // namespace

BlockTimes measureBlocks(WorkloadPlan& plan, const WorkloadCase& what, double seconds,
                         const std::function<void(double)>& played) {
  std::vector<double> blocks; // µs
  double cpu = std::numeric_limits<double>::infinity();
  for (int run = 0; run < kRuns; ++run) {
    Workload work(plan, what);
    play(work, kWarmUpSeconds);
    blocks.resize(static_cast<std::size_t>(work.stepsIn(seconds)),
                  std::numeric_limits<double>::infinity());
    const double begun = threadCpuSeconds();
    for (double& block : blocks) {
      const auto begin = Clock::now();
      work.step();
      block =
          std::min(block, std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
    }
    cpu = std::min(cpu, threadCpuSeconds() - begun);
    played((run + 1.0) / kRuns);
  }
  return {1e9 * cpu / static_cast<double>(blocks.size()) / Workload::kBlockFrames, median(blocks),
          *std::max_element(blocks.begin(), blocks.end())};
}

double creationMilliseconds(const std::filesystem::path& plugin) {
  const PluginHost loaded(plugin); // so that the library's own loading does not count
  std::vector<double> times(kCreations);
  for (double& time : times) {
    const auto begin = Clock::now();
    const PluginHost host(plugin);
    time = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
  }
  return median(times);
}

std::optional<std::size_t> instanceBytes(WorkloadPlan& plan) {
  const WorkloadCase what{48000.0, true, Use::SteadyFast};
  // The first one brings what all share.
  Workload first(plan, what);
  play(first, kResidentSeconds);
  const std::optional<std::size_t> before = residentBytes();
  std::vector<std::unique_ptr<Workload>> residents;
  for (int i = 0; i < kResidents; ++i) {
    residents.push_back(std::make_unique<Workload>(plan, what));
    play(*residents.back(), kResidentSeconds);
  }
  const std::optional<std::size_t> after = residentBytes();
  if (!before || !after) return std::nullopt;
  return *after > *before ? (*after - *before) / kResidents : 0;
}

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#include "brezan/bench/Growth.h"

#include "brezan/System.h"
#include "brezan/Table.h"

#include <algorithm>
#include <barrier>
#include <memory>
#include <numeric>
#include <thread>

namespace qlx::tools {

namespace {

constexpr int kRounds = 5;
constexpr double kWarmUpSeconds = 0.5;
constexpr int kInstances[] = {1, 2, 4, 8, 16, 32, 64};
constexpr int kBlocks[] = {16, 32, 64, 128, 256, 512, 1024, 2048, 4096};
constexpr double kRates[] = {44100.0, 48000.0, 88200.0, 96000.0, 176400.0, 192000.0};

Growth pointsToMeasure() {
  Growth growth;
  for (const int cores : {1, 2})
    for (const int instances : kInstances) {
      if (instances < cores || (cores > 1 && std::thread::hardware_concurrency() < 2)) continue;
      GrowthPoint& point = growth.instances.emplace_back();
      point.instances = instances;
      point.cores = cores;
    }
  for (const bool brilliant : {false, true}) {
    for (const int frames : kBlocks) {
      GrowthPoint& point = growth.blocks.emplace_back();
      point.what.brilliant = brilliant;
      point.blockFrames = frames;
    }
    for (const double rate : kRates) {
      GrowthPoint& point = growth.rates.emplace_back();
      point.what.brilliant = brilliant;
      point.what.rate = rate;
    }
  }
  return growth;
}

using Instances = std::vector<std::unique_ptr<Workload>>;

/// Block by block through all instances, as a host goes through its tracks.
void play(const Instances& instances, double seconds) {
  for (long long i = instances.front()->stepsIn(seconds); i > 0; --i)
    for (const auto& instance : instances) instance->step();
}

void measure(WorkloadPlan& plan, double seconds, GrowthPoint& point) {
  const auto cores = static_cast<std::size_t>(point.cores);
  std::vector<Instances> shares(cores);
  for (int i = 0; i < point.instances; ++i)
    shares[static_cast<std::size_t>(i) % cores].push_back(
        std::make_unique<Workload>(plan, point.what, point.blockFrames));
  // Processor seconds by round and core.
  std::vector<std::vector<double>> spent(kRounds, std::vector<double>(cores));
  {
    std::barrier together(point.cores);
    std::vector<std::jthread> threads;
    for (std::size_t core = 0; core < cores; ++core)
      threads.emplace_back([&, core] {
        pinThread(static_cast<int>(core)); // where it can't be had the system places well enough
        play(shares[core], std::min(kWarmUpSeconds, seconds));
        for (auto& round : spent) {
          together.arrive_and_wait();
          const double begun = threadCpuSeconds();
          play(shares[core], seconds / kRounds);
          round[core] = threadCpuSeconds() - begun;
        }
      });
  }
  const auto sum = [](const std::vector<double>& round) {
    return std::accumulate(round.begin(), round.end(), 0.0);
  };
  const auto& best =
      *std::min_element(spent.begin(), spent.end(), [&sum](const auto& left, const auto& right) {
        return sum(left) < sum(right);
      });
  const auto frames =
      static_cast<double>(shares.front().front()->stepsIn(seconds / kRounds) * point.blockFrames);
  point.nsPerSample = 1e9 * sum(best) / frames / point.instances;
  point.load = *std::max_element(best.begin(), best.end()) * point.what.rate / frames;
}

void printPoints(const std::vector<GrowthPoint>& points, std::ostream& out) {
  Table table({"instances", "cores", "block", "rate", "mode", "CPU ns/sample", "% of a core"});
  for (const GrowthPoint& point : points)
    table.add({std::to_string(point.instances), std::to_string(point.cores),
               std::to_string(point.blockFrames), fixed(point.what.rate, 0), point.what.modeName(),
               fixed(point.nsPerSample, 1), fixed(100.0 * point.load, 2)});
  table.print(out);
}

} // namespace

Growth measureGrowth(WorkloadPlan& plan, double seconds,
                     const std::function<void(double)>& played) {
  Growth growth = pointsToMeasure();
  double total = 0.0, done = 0.0;
  const auto effort = [](const GrowthPoint& point) { return point.instances * point.what.rate; };
  for (auto* points : {&growth.instances, &growth.blocks, &growth.rates})
    for (const GrowthPoint& point : *points) total += effort(point);
  for (auto* points : {&growth.instances, &growth.blocks, &growth.rates})
    for (GrowthPoint& point : *points) {
      measure(plan, seconds, point);
      played((done += effort(point)) / total);
    }
  return growth;
}

void printGrowth(const Growth& growth, std::ostream& out) {
  for (const auto* points : {&growth.instances, &growth.blocks, &growth.rates}) {
    printPoints(*points, out);
    out << '\n';
  }
  out << "Steadily fast. CPU time is that of a sample and instance; % is that of the busiest "
         "core.\n";
}

} // namespace qlx::tools

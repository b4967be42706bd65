// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/PluginHost.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace qlx::tools {

/// How the effect is used while its processor time is measured.
enum class Use { SteadyFast, LeverMoving, ParametersAutomated, GeometryRebuilt };

struct WorkloadCase {
  double rate;    ///< Hz
  bool brilliant; ///< the better of the two processing modes
  Use use;

  std::string useName() const;
  std::string modeName() const;
};

/// Every rate, mode and use that benchmarks go over.
std::vector<WorkloadCase> workloadCases();

/// What all workloads of one plug-in share: its parameters and the chord, so that many instances
/// share the input's memory as in a studio. One thread. Throws std::runtime_error.
class WorkloadPlan {
 public:
  static constexpr int kLongestBlock = 4096; ///< frames

  explicit WorkloadPlan(const std::filesystem::path& pluginFile);

  /// One second of an organ-like chord without a seam, and so much of the next one that a block of
  /// `kLongestBlock` can start anywhere in the first. Stays where it is as long as the plan lives.
  const std::vector<float>& chord(double rate);

  const std::filesystem::path pluginFile;
  int lever = 0;
  int mode = 0;
  float modeValue[2]{}; ///< of LowCPU and Brilliant
  std::vector<int> automated;
  std::vector<int> geometry; ///< parameters for which the cabinet is rebuilt behind a mute

 private:
  std::map<double, std::vector<float>> m_chords; ///< by rate
};

/// One effect at work: each `step` does what a host does for one block of a chord. Made on one
/// thread; may step on another. The plan must outlive it.
class Workload {
 public:
  static constexpr int kBlockFrames = 64;

  Workload(WorkloadPlan& plan, const WorkloadCase& what, int blockFrames = kBlockFrames);
  void step();
  /// Blocks in at least so much sound.
  long long stepsIn(double seconds) const;
  int blockFrames() const { return m_blockFrames; }
  /// The block that the last step made.
  const std::array<std::vector<float>, 2>& output() const { return m_out; }

 private:
  void move();

  const WorkloadPlan& m_plan;
  PluginHost m_host;
  WorkloadCase m_case;
  int m_blockFrames;
  const std::vector<float>& m_chord;
  long long m_frame = 0;
  std::array<std::vector<float>, 2> m_out;
};

} // namespace qlx::tools

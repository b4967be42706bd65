#pragma once

#include "tools/brezan/PluginHost.h"

#include <array>
#include <string>
#include <vector>

namespace qlx::tools {

/// How the effect is used while its processor time is measured.
enum class Use { SteadyFast, LeverMoving, ParametersAutomated };

struct WorkloadCase {
  double rate;    ///< Hz
  bool brilliant; ///< the better of the two processing modes
  Use use;

  std::string useName() const;
  std::string modeName() const;
};

/// Every rate, mode and use that benchmarks go over.
std::vector<WorkloadCase> workloadCases();

/// One effect at work: each `step` does what a host does for one block of a chord.
class Workload {
 public:
  static constexpr int kBlockFrames = 64;

  Workload(const std::filesystem::path& pluginFile, const WorkloadCase& what);
  void step();
  long long stepsIn(double seconds) const;

 private:
  void move();

  PluginHost m_host;
  WorkloadCase m_case;
  int m_lever;
  std::vector<int> m_automated;
  std::vector<float> m_loop; ///< the chord, one second of it
  std::size_t m_position = 0;
  long long m_step = 0;
  std::array<float, kBlockFrames> m_out[2]{};
};

} // namespace qlx::tools

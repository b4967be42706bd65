#include "tools/brezan/Workload.h"

#include "tools/brezan/ParameterText.h"

#include <cmath>
#include <numbers>

namespace qlx::tools {

namespace {

// Turned by a player while music runs: tone, drive, levels, motor speeds. Those that rebuild the
// cabinet (Setup, distances, CPUmode) are left out, since the sound fades to dry for them.
constexpr const char* kAutomated[] = {"Bottom", "LoMid", "Presence", "Top",   "Input",
                                      "Drive",  "Mech",  "HGain",    "DGain", "HFastSpd"};
constexpr double kLeverMoveSeconds = 1.0;
constexpr double kSweepSeconds = 2.0;

// An organ-like chord with whole periods in one second, so that the loop has no seam.
std::vector<float> chord(double rate) {
  constexpr double kFrequencies[] = {65.0, 131.0, 262.0, 330.0, 392.0, 524.0, 1048.0, 2096.0};
  std::vector<float> loop(static_cast<std::size_t>(rate));
  for (std::size_t i = 0; i < loop.size(); ++i)
    for (const double frequency : kFrequencies)
      loop[i] += static_cast<float>(
          0.06 * std::sin(2.0 * std::numbers::pi * frequency * static_cast<double>(i) / rate));
  return loop;
}

} // namespace

std::string WorkloadCase::useName() const {
  switch (use) {
  case Use::SteadyFast: return "steady fast";
  case Use::LeverMoving: return "lever moving";
  default: return "parameters automated";
  }
}

std::string WorkloadCase::modeName() const { return brilliant ? "Brilliant" : "LowCPU"; }

std::vector<WorkloadCase> workloadCases() {
  std::vector<WorkloadCase> cases;
  for (const double rate : {44100.0, 48000.0, 96000.0})
    for (const bool brilliant : {false, true})
      for (const Use use : {Use::SteadyFast, Use::LeverMoving, Use::ParametersAutomated})
        cases.push_back({rate, brilliant, use});
  return cases;
}

Workload::Workload(const std::filesystem::path& pluginFile, const WorkloadCase& what)
    : m_host(pluginFile), m_case(what), m_loop(chord(what.rate)) {
  ParameterText parameters(pluginFile);
  m_lever = parameters.index("Lever");
  const int mode = parameters.index("CPUmode");
  for (const char* name : kAutomated) m_automated.push_back(parameters.index(name));
  m_host.setValue(mode, parameters.value(mode, what.modeName()));
  m_host.setValue(m_lever, 1.0F);
  m_host.start(what.rate, kBlockFrames, 2, 2);
}

long long Workload::stepsIn(double seconds) const {
  return std::llround(std::ceil(seconds * m_case.rate / kBlockFrames));
}

void Workload::move() {
  const double seconds = static_cast<double>(m_step) * kBlockFrames / m_case.rate;
  if (m_case.use == Use::LeverMoving) {
    const bool fast = std::fmod(seconds, 2.0 * kLeverMoveSeconds) < kLeverMoveSeconds;
    if (const float wanted = fast ? 1.0F : 0.0F; m_host.value(m_lever) != wanted)
      m_host.setValue(m_lever, wanted);
  } else if (m_case.use == Use::ParametersAutomated) {
    const double turn = 2.0 * std::numbers::pi * seconds / kSweepSeconds;
    for (std::size_t i = 0; i < m_automated.size(); ++i)
      m_host.setValue(m_automated[i],
                      static_cast<float>(0.5 + 0.2 * std::sin(turn + static_cast<double>(i))));
  }
}

void Workload::step() {
  move();
  if (m_position + kBlockFrames > m_loop.size()) m_position = 0;
  float* in[2] = {m_loop.data() + m_position, m_loop.data() + m_position};
  float* out[2] = {m_out[0].data(), m_out[1].data()};
  m_host.process(in, out, kBlockFrames);
  m_position += kBlockFrames;
  ++m_step;
}

} // namespace qlx::tools

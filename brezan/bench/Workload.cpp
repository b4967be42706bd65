// SPDX-License-Identifier: ISC
#include "brezan/bench/Workload.h"

#include "brezan/plugin/ParameterText.h"

#include <cmath>
#include <numbers>

namespace qlx::tools {

namespace {

// Turned by a player while music runs: tone, drive, levels, motor speeds. Those that rebuild the
// cabinet (Setup, distances, CPUmode) are left out, since the sound fades to dry for them.
constexpr const char* kAutomated[] = {"Bottom", "LoMid", "Presence", "Top",   "Input",
                                      "Drive",  "Mech",  "HGain",    "DGain", "HFastSpd"};
constexpr const char* kGeometry[] = {"Setup", "HDistance", "DDistance"};
constexpr const char* kModes[] = {"LowCPU", "Brilliant"};
constexpr double kLeverMoveSeconds = 1.0;
constexpr double kSweepSeconds = 2.0;
constexpr double kGeometrySeconds = 0.5;
// Steps through 0..1 that come near each other late.
constexpr double kGeometryStep = 0.381966;

// Whole periods in one second.
constexpr double kChordHz[] = {65.0, 131.0, 262.0, 330.0, 392.0, 524.0, 1048.0, 2096.0};
constexpr double kToneLevel = 0.06;

} // namespace

std::string WorkloadCase::useName() const {
  switch (use) {
  case Use::SteadyFast: return "steady fast";
  case Use::LeverMoving: return "lever moving";
  case Use::ParametersAutomated: return "parameters automated";
  default: return "geometry rebuilt";
  }
}

std::string WorkloadCase::modeName() const { return kModes[brilliant ? 1 : 0]; }

std::vector<WorkloadCase> workloadCases() {
  std::vector<WorkloadCase> cases;
  for (const double rate : {44100.0, 48000.0, 96000.0})
    for (const bool brilliant : {false, true})
      for (const Use use :
           {Use::SteadyFast, Use::LeverMoving, Use::ParametersAutomated, Use::GeometryRebuilt})
        cases.push_back({rate, brilliant, use});
  return cases;
}

WorkloadPlan::WorkloadPlan(const std::filesystem::path& file) : pluginFile(file) {
  ParameterText parameters(file);
  lever = parameters.index("Lever");
  mode = parameters.index("CPUmode");
  for (std::size_t i = 0; i < std::size(kModes); ++i)
    modeValue[i] = parameters.value(mode, kModes[i]);
  for (const char* name : kAutomated) automated.push_back(parameters.index(name));
  for (const char* name : kGeometry) geometry.push_back(parameters.index(name));
}

const std::vector<float>& WorkloadPlan::chord(double rate) {
  std::vector<float>& chord = m_chords[rate];
  if (!chord.empty()) return chord;
  chord.resize(static_cast<std::size_t>(rate) + kLongestBlock);
  for (std::size_t i = 0; i < chord.size(); ++i)
    for (const double hz : kChordHz)
      chord[i] += static_cast<float>(
          kToneLevel * std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(i) / rate));
  return chord;
}

Workload::Workload(WorkloadPlan& plan, const WorkloadCase& what, int blockFrames)
    : m_plan(plan), m_host(plan.pluginFile), m_case(what), m_blockFrames(blockFrames),
      m_chord(plan.chord(what.rate)) {
  for (auto& channel : m_out) channel.resize(static_cast<std::size_t>(blockFrames));
  m_host.setValue(plan.mode, plan.modeValue[what.brilliant ? 1 : 0]);
  m_host.setValue(plan.lever, 1.0F);
  m_host.start(what.rate, blockFrames, 2, 2);
}

long long Workload::stepsIn(double seconds) const {
  return std::llround(std::ceil(seconds * m_case.rate / m_blockFrames));
}

void Workload::move() {
  const double seconds = static_cast<double>(m_frame) / m_case.rate;
  if (m_case.use == Use::LeverMoving) {
    const bool fast = std::fmod(seconds, 2.0 * kLeverMoveSeconds) < kLeverMoveSeconds;
    if (const float wanted = fast ? 1.0F : 0.0F; m_host.value(m_plan.lever) != wanted)
      m_host.setValue(m_plan.lever, wanted);
  } else if (m_case.use == Use::ParametersAutomated) {
    const double turn = 2.0 * std::numbers::pi * seconds / kSweepSeconds;
    for (std::size_t i = 0; i < m_plan.automated.size(); ++i)
      m_host.setValue(m_plan.automated[i],
                      static_cast<float>(0.5 + 0.2 * std::sin(turn + static_cast<double>(i))));
  } else if (m_case.use == Use::GeometryRebuilt) {
    const double moves = std::floor(seconds / kGeometrySeconds);
    if (moves == std::floor((seconds - m_blockFrames / m_case.rate) / kGeometrySeconds)) return;
    for (std::size_t i = 0; i < m_plan.geometry.size(); ++i)
      m_host.setValue(
          m_plan.geometry[i],
          static_cast<float>(std::fmod(kGeometryStep * moves + 0.3 * static_cast<double>(i), 1.0)));
  }
}

void Workload::step() {
  move();
  const auto place = m_frame % static_cast<long long>(m_case.rate);
  // The interface has no const; inputs are only read.
  float* chord = const_cast<float*>(m_chord.data()) + place;
  float* in[2] = {chord, chord};
  float* out[2] = {m_out[0].data(), m_out[1].data()};
  m_host.process(in, out, m_blockFrames);
  m_frame += m_blockFrames;
}

} // namespace qlx::tools

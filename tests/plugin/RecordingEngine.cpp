// SPDX-License-Identifier: ISC
#include "tests/plugin/RecordingEngine.h"

#include "engine/SignalPath.h"
#include "engine/settings/SettingTable.h"

#include <algorithm>

namespace qlx::test {

EngineLog& engineLog() {
  static EngineLog log;
  return log;
}

void EngineLog::clear() {
  engine::MicrophonePlacement* const kept = placement;
  *this = {};
  placement = kept;
}

std::optional<double> EngineLog::last(engine::Setting setting) const {
  const auto call = std::find_if(sets.rbegin(), sets.rend(),
                                 [&](const EngineCall& c) { return c.setting == setting; });
  return call == sets.rend() ? std::nullopt : std::optional(call->value);
}

} // namespace qlx::test

namespace qlx::engine {

using test::engineLog;

RotaryEngine::RotaryEngine(const Recordings& /*recordings*/, MicrophonePlacement& placement)
    : m_placement(placement) {
  engineLog() = {};
  engineLog().placement = &placement;
}
RotaryEngine::~RotaryEngine() = default;

void RotaryEngine::set(Setting setting, double value) noexcept {
  engineLog().sets.push_back({setting, value});
  engineLog().requested |= settingRow(setting).stale;
}
void RotaryEngine::request(std::uint32_t work) noexcept { engineLog().requested |= work; }
void RotaryEngine::setHostRate(double hz) noexcept { engineLog().rates.push_back(hz); }
void RotaryEngine::setCpuMode(CpuMode mode) noexcept { engineLog().modes.push_back(mode); }
void RotaryEngine::switchOff() noexcept { ++engineLog().switchedOff; }
void RotaryEngine::switchOn() noexcept { ++engineLog().switchedOn; }
void RotaryEngine::performAllPendingWork() noexcept { engineLog().placement->applyPlacement(); }
void RotaryEngine::process(const float* /*in0*/, const float* /*in1*/, float* /*out0*/,
                           float* /*out1*/, int /*frames*/) noexcept {}
void RotaryEngine::process(const double* /*in0*/, const double* /*in1*/, double* /*out0*/,
                           double* /*out1*/, int /*frames*/) noexcept {}
double RotaryEngine::hornPhase(std::chrono::steady_clock::time_point /*now*/) const noexcept {
  return 0.25;
}
double RotaryEngine::drumPhase(std::chrono::steady_clock::time_point /*now*/) const noexcept {
  return 0.75;
}
double RotaryEngine::hostRate() const noexcept { return 44100.0; }

} // namespace qlx::engine

// SPDX-License-Identifier: ISC
#include "engine/RotaryEngine.h"

#include "engine/EngineFrame.h"

namespace qlx::engine {

RotaryEngine::RotaryEngine(const Recordings& recordings, MicrophonePlacement& placement)
    : m_frame(std::make_unique<Frame>(recordings, placement)) {}

RotaryEngine::~RotaryEngine() = default;

void RotaryEngine::set(Setting setting, double value) noexcept { m_frame->set(setting, value); }

void RotaryEngine::request(std::uint32_t work) noexcept { m_frame->request(work); }

void RotaryEngine::setHostRate(double hz) noexcept { m_frame->setHostRate(hz); }

void RotaryEngine::setCpuMode(CpuMode mode) noexcept { m_frame->setCpuMode(mode); }

void RotaryEngine::switchOff() noexcept { m_frame->switchOff(); }

void RotaryEngine::switchOn() noexcept { m_frame->switchOn(); }

void RotaryEngine::performAllPendingWork() noexcept { m_frame->performAllPendingWork(); }

void RotaryEngine::process(const float* in0, const float* in1, float* out0, float* out1,
                           int frames) noexcept {
  m_frame->process(in0, in1, out0, out1, frames);
}

void RotaryEngine::process(const double* in0, const double* in1, double* out0, double* out1,
                           int frames) noexcept {
  m_frame->process(in0, in1, out0, out1, frames);
}

double RotaryEngine::hornPhase(std::chrono::steady_clock::time_point now) const noexcept {
  return m_frame->rotors().hornPhase(now);
}

double RotaryEngine::drumPhase(std::chrono::steady_clock::time_point now) const noexcept {
  return m_frame->rotors().drumPhase(now);
}

double RotaryEngine::hostRate() const noexcept { return m_frame->hostRate(); }

} // namespace qlx::engine

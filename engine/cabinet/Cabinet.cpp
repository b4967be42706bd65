// SPDX-License-Identifier: ISC
#include "engine/cabinet/Cabinet.h"

#include "engine/cabinet/KernelContract.h"

namespace qlx::engine {

namespace {

constexpr double kDrumShelfHz = 250.0;
constexpr double kDrumShelfQ = 0.5;
constexpr double kDrumShelfDb = 6.0;

} // namespace

Cabinet::Cabinet(const Recordings& recordings, const kernels::Kernels& kernels)
    : m_drumShelf(44100.0, Response::LowShelf, kDrumShelfHz, kDrumShelfQ, kDrumShelfDb),
      m_driverFilters(kernels), m_horn(hornSettings, recordings, kernels),
      m_drum(drumSettings, recordings, kernels), m_reduced(hornSettings, drumSettings, kernels),
      m_room(kernels), m_microphoneMix(kernels) {
  m_drumShelf.setEnabled(true);
}

void Cabinet::triggerHornNoise() noexcept {
  for (const std::size_t number : {0U, 1U}) m_horn.microphone(number).noisePlayer().trigger();
}

void Cabinet::setLever(double v) noexcept {
  if (m_hornHistory.motion.setLever(v) == RotorMotion::Event::Start) triggerHornNoise();
  if (m_drumHistory.motion.setLever(v) == RotorMotion::Event::Start) m_drum.noisePlayer().trigger();
}

void Cabinet::setStop(double v) noexcept {
  if (m_hornHistory.motion.setStop(v) != RotorMotion::Event::None) triggerHornNoise();
  if (m_drumHistory.motion.setStop(v) != RotorMotion::Event::None) m_drum.noisePlayer().trigger();
}

void Cabinet::setHornFlip(double sign) noexcept {
  const bool changed = (sign >= 0.0) != (hornSettings.cabinet.flipSign >= 0.0);
  hornSettings.cabinet.flipSign = sign;
  m_hornHistory.motion.setFlip(sign);
  if (!changed) return;
  clearHorns();
  resetHornFilters();
}

void Cabinet::setDrumFlip(double sign) noexcept {
  const bool changed = (sign >= 0.0) != (drumSettings.cabinet.flipSign >= 0.0);
  drumSettings.cabinet.flipSign = sign;
  m_drumHistory.motion.setFlip(sign);
  if (!changed) return;
  clearDrums();
  resetDrumFilters();
}

void Cabinet::setHornReflectionLpf(double octaves) noexcept {
  hornSettings.cabinet.reflectionLpfOctaves = octaves;
  m_horn.updateReflectionPoles();
}

void Cabinet::setDrumReflectionLpf(double octaves) noexcept {
  drumSettings.cabinet.reflectionLpfOctaves = octaves;
  m_drum.updateReflectionPoles();
}

void Cabinet::setHornStaticCutoff(double hz) noexcept {
  hornSettings.cabinet.staticCutoffHz = hz;
  m_horn.updateStaticPole();
  m_reduced.updateHornStaticPole();
}

void Cabinet::setDrumStaticCutoff(double hz) noexcept {
  drumSettings.cabinet.staticCutoffHz = hz;
  m_drum.updateStaticPole();
  m_reduced.updateDrumStaticPole();
}

void Cabinet::setDrumSplitter(double hz) noexcept {
  drumSettings.splitterHz = hz;
  m_drum.updateSplitter();
}

void Cabinet::setModelRates(double engineRate, int factor) noexcept {
  m_engineRate = engineRate;
  m_hornHistory.setSampleRate(engineRate, factor);
  m_drumHistory.setSampleRate(engineRate, factor);
  m_horn.setSampleRate(engineRate);
  m_drum.setSampleRate(engineRate);
  m_reduced.setSampleRate(engineRate);
}

void Cabinet::clearHorns() noexcept {
  m_hornHistory.clear();
  m_hornLine.clear();
  m_reducedHornLine.clear();
  m_horn.clear();
  m_reduced.clearHorn();
}

void Cabinet::clearDrums() noexcept {
  m_drumHistory.clear();
  m_drumLine.clear();
  m_driverFilters.clearDrum();
  m_drum.clear();
  m_reduced.clearDrum();
}

void Cabinet::clearState() noexcept {
  m_driverFilters.clearHorn();
  m_microphoneMix.clear();
  m_crossTalk.clearSmoothers();
  setInstantUpdate();
  clearHorns();
  clearDrums();
}

void Cabinet::setInstantUpdate() noexcept {
  m_drumShelf.setInstantUpdate(true);
  m_driverFilters.setHornInstantUpdate();
  m_crossTalk.setInstantUpdate();
  m_microphoneMix.setInstantUpdate();
}

void Cabinet::resetHornFilters() noexcept {
  m_horn.resetFilters();
  m_reduced.resetHornFilters();
}

void Cabinet::resetDrumFilters() noexcept {
  m_driverFilters.setDrumRate(m_engineRate);
  m_drum.resetFilters();
  m_reduced.resetDrumFilters();
}

void Cabinet::updateFilterRates(double engineRate) noexcept {
  m_drumShelf.setSampleRate(engineRate);
  m_drumShelf.setInstantUpdate(false);
  m_driverFilters.setHornRate(engineRate);
  m_crossTalk.setSampleRate(engineRate);
  m_microphoneMix.setSampleRate(engineRate);
  resetHornFilters();
  resetDrumFilters();
}

void Cabinet::computeCrossDelays(SmoothedSettings& settings) noexcept {
  m_crossTalk.computeTargets({m_drum.microphone(), drumSettings.cabinet.amRadius,
                              m_horn.microphone(0).position(), hornSettings.cabinet.amRadius,
                              m_reduced.hornAttenuation(), m_reduced.drumAttenuation()},
                             settings);
}

void Cabinet::clearEverything() noexcept {
  clearState();
  m_crossTalk.clearRings();
  m_crossTalk.clearFilters();
  m_room.clear();
  m_drumShelf.clearState();
  m_driverFilters.clearFilters();
  m_microphoneMix.clearFilters();
}

void Cabinet::runRotors(const SubBlock& x, const SmoothedValues& settings, int n,
                        MicrophoneSignals& mics, Reduced& reduced) noexcept {
  const auto size = static_cast<std::size_t>(n);
  DriverFilters::Output feeds;
  feeds.drum = x;
  m_drumShelf.processFixed({feeds.drum.data(), size});
  for (std::size_t k = 0; k < size; ++k) feeds.drum[k] *= settings[Smoothed::DrumFeedGain][k];
  m_driverFilters.process(x, settings[Smoothed::HornFeedGain], n, feeds);

  m_drumHistory.advance(n);
  m_hornHistory.advance(n);
  m_drumLine.write(m_drumHistory.writeIndex(0), {feeds.drum.data(), size});
  m_hornLine.write(m_hornHistory.writeIndex(0), {feeds.horn.data(), size});
  m_reducedHornLine.write(m_hornHistory.writeIndex(0), {feeds.reducedHorn.data(), size});
  m_drum.process(m_drumHistory, m_drumLine, n, mics.drum);
  m_horn.process(m_hornHistory, m_hornLine, n, mics.horn1, mics.horn2);
  m_reduced.process({m_hornHistory, m_reducedHornLine}, {m_drumHistory, m_drumLine}, n,
                    reduced.horn, reduced.drum);
  runNoise(n, mics);
  m_drumHistory.finish(n);
  m_hornHistory.finish(n);
}

void Cabinet::runNoise(int n, MicrophoneSignals& mics) noexcept {
  const auto size = static_cast<std::size_t>(n);
  const auto hearing = [&](std::size_t number, SubBlock& out) {
    HornMicrophone& microphone = m_horn.microphone(number);
    return HornNoisePlayer::Hearing{microphone.noisePlayer(), microphone.position().angle,
                                    microphone.staticLevel() * hornSettings.noiseLevel, out};
  };
  HornNoisePlayer::process(hearing(0, mics.noise1), hearing(1, mics.noise2),
                           m_hornHistory.speeds(n));
  m_drum.noisePlayer().process(m_drumHistory.speeds(n), m_drum.microphone().angle,
                               m_drum.staticLevel() * drumSettings.noiseLevel,
                               {mics.drumNoise.data(), size});
}

void Cabinet::process(const SubBlock& x, const SmoothedValues& settings, int n, SubBlock& left,
                      SubBlock& right) noexcept {
  MicrophoneSignals mics;
  Reduced reduced;
  runRotors(x, settings, n, mics, reduced);
  m_crossTalk.process(reduced.drum, reduced.horn, x, settings, n, mics.cross);
  const MicrophoneMix::RoomLevels levels{m_horn.microphone(0).staticLevel(),
                                         m_horn.microphone(1).staticLevel(), m_drum.staticLevel()};
  m_microphoneMix.process(mics, m_room, levels, settings, n, left, right);
}

} // namespace qlx::engine

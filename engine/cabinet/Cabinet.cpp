// SPDX-License-Identifier: ISC
#include "engine/cabinet/Cabinet.h"

namespace qlx::engine {

namespace {

constexpr double kDrumShelfHz = 250.0;
constexpr double kDrumShelfQ = 0.5;
constexpr double kColorMidHz = 1500.0;
constexpr double kColorMidQ = 0.5;
constexpr double kColorLowHz = 350.0;
constexpr double kColorLowQ = 0.6;

} // namespace

Cabinet::Cabinet(const Recordings& recordings, const kernels::Kernels& kernels)
    : m_kernels(kernels), m_drumShelf(44100.0, Response::LowShelf, kDrumShelfHz, kDrumShelfQ, 6.0),
      m_driverFilters(kernels), m_horn(hornSettings, recordings, kernels),
      m_drum(drumSettings, recordings, kernels), m_reduced(hornSettings, drumSettings, kernels),
      m_room(kernels), m_pairs(kernels), m_microphoneMix(kernels) {
  m_drumShelf.setEnabled(true);
  for (ColorFilters& color : m_color) {
    color[0].init(44100.0, Response::Peaking, kColorMidHz, kColorMidQ, 0.0);
    color[1].init(44100.0, Response::LowShelf, kColorLowHz, kColorLowQ, 0.0);
    color[0].setEnabled(true);
    color[1].setEnabled(true);
  }
}

void Cabinet::setLever(double v) noexcept {
  if (m_hornHistory.motion.setLever(v) == RotorMotion::Event::Start)
    forHornPlayers([](HornNoisePlayer& player) { player.trigger(); });
  if (m_drumHistory.motion.setLever(v) == RotorMotion::Event::Start) m_drum.noisePlayer().trigger();
}

void Cabinet::setStop(double v) noexcept {
  if (m_hornHistory.motion.setStop(v) != RotorMotion::Event::None)
    forHornPlayers([](HornNoisePlayer& player) { player.trigger(); });
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

void Cabinet::setColor(double midDb, double lowDb) noexcept {
  for (ColorFilters& color : m_color) {
    if (!color[0].standsAt(kColorMidHz, kColorMidQ, midDb)) color[0].setGainDb(midDb);
    if (!color[1].standsAt(kColorLowHz, kColorLowQ, lowDb)) color[1].setGainDb(lowDb);
  }
}

void Cabinet::applyHornReflectionLpf() noexcept { m_horn.updateReflectionPoles(); }

void Cabinet::applyHornStaticCutoff() noexcept {
  m_horn.updateStaticPole();
  m_reduced.updateHornStaticPole();
}

void Cabinet::applyDrumStaticCutoff() noexcept {
  m_drum.updateStaticPole();
  m_reduced.updateDrumStaticPole();
}

void Cabinet::applyDrumReflectionLpf() noexcept { m_drum.updateReflectionPoles(); }

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
  for (ColorFilters& color : m_color) {
    color[0].setInstantUpdate(true);
    color[1].setInstantUpdate(true);
  }
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
  for (ColorFilters& color : m_color) {
    color[0].setSampleRate(engineRate);
    color[1].setSampleRate(engineRate);
    color[0].setInstantUpdate(false);
    color[1].setInstantUpdate(false);
  }
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
  for (ColorFilters& color : m_color) {
    color[0].clearState();
    color[1].clearState();
  }
}

void Cabinet::runRotors(const SubBlock& x, const SmoothedValues& settings, int n, Microphones& mics,
                        Reduced& reduced) noexcept {
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

void Cabinet::runNoise(int n, Microphones& mics) noexcept {
  const auto size = static_cast<std::size_t>(n);
  HornMicrophone &first = m_horn.microphone(0), &second = m_horn.microphone(1);
  first.noisePlayer().read(m_hornHistory.speeds(n), first.position().angle,
                           {mics.noise1.data(), size});
  second.noisePlayer().read(m_hornHistory.speeds(n), second.position().angle,
                            {mics.noise2.data(), size});
  m_pairs.process({&first.noisePlayer().bandPass(), 1}, {&second.noisePlayer().bandPass(), 1}, n,
                  mics.noise1, mics.noise2);
  const double gain1 = first.noisePlayer().gain(first.staticLevel() * hornSettings.noiseLevel);
  const double gain2 = second.noisePlayer().gain(second.staticLevel() * hornSettings.noiseLevel);
  for (std::size_t k = 0; k < size; ++k) {
    mics.noise1[k] *= gain1;
    mics.noise2[k] *= gain2;
  }
  m_drum.noisePlayer().process(m_drumHistory.speeds(n), m_drum.microphone().angle,
                               m_drum.staticLevel() * drumSettings.noiseLevel,
                               {mics.drumNoise.data(), size});
}

kernels::MixGains Cabinet::mixGains(const SmoothedValues& s) const noexcept {
  const auto of = [&](Smoothed setting) { return s[setting].data(); };
  return {of(Smoothed::HornGain),
          of(Smoothed::HornMic2Gain),
          of(Smoothed::DrumGain),
          of(Smoothed::Mic1PanLeft),
          of(Smoothed::Mic1PanRight),
          of(Smoothed::Mic2PanLeft),
          of(Smoothed::Mic2PanRight),
          of(Smoothed::DrumPanLeft),
          of(Smoothed::DrumPanRight),
          of(Smoothed::NoisePanA),
          of(Smoothed::NoisePanB),
          hornLevel,
          noiseSendGain};
}

void Cabinet::addRoom(const SmoothedValues& s, const kernels::MixSignals& signals,
                      const kernels::MixGains& gains, int n) noexcept {
  SubBlock sendLeft, sendRight, left, right;
  m_kernels.mixSends(signals, gains, sendLeft.data(), sendRight.data(), n);
  m_room.process(sendLeft, sendRight, s[Smoothed::RoomReturnGain], n, left, right);
  m_pairs.process(m_color[0], m_color[1], n, left, right);
  const double levels[] = {m_horn.microphone(0).staticLevel(), m_horn.microphone(1).staticLevel(),
                           m_drum.staticLevel()};
  m_kernels.mixRoom(signals, gains, left.data(), right.data(), levels, n);
}

void Cabinet::process(const SubBlock& x, const SmoothedValues& settings, int n, SubBlock& left,
                      SubBlock& right) noexcept {
  Microphones mics;
  Reduced reduced;
  runRotors(x, settings, n, mics, reduced);
  m_crossTalk.process(reduced.drum, reduced.horn, x, settings, n, mics.cross);
  const kernels::MixSignals signals{
      mics.horn1.data(),         mics.horn2.data(),          mics.drum.data(),
      mics.noise1.data(),        mics.noise2.data(),         mics.drumNoise.data(),
      mics.cross.toHorns.data(), mics.cross.hornEcho.data(), mics.cross.toDrum.data()};
  const kernels::MixGains gains = mixGains(settings);
  addRoom(settings, signals, gains, n);
  m_microphoneMix.process(signals, gains, settings, n, left, right);
}

} // namespace qlx::engine

#include "engine/Cabinet.h"

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
    : m_drumShelf(44100.0, Response::LowShelf, kDrumShelfHz, kDrumShelfQ, 6.0), m_feeds(kernels),
      m_horn(hornSettings, recordings, kernels), m_drum(drumSettings, recordings, kernels),
      m_reduced(hornSettings, drumSettings, kernels), m_room(kernels), m_pairs(kernels),
      m_output(kernels) {
  m_drumShelf.setEnabled(true);
  for (ColorFilters& color : m_color) {
    color[0].init(44100.0, Response::Peaking, kColorMidHz, kColorMidQ, 0.0);
    color[1].init(44100.0, Response::LowShelf, kColorLowHz, kColorLowQ, 0.0);
    color[0].setEnabled(true);
    color[1].setEnabled(true);
  }
}

void Cabinet::setLever(double v) noexcept {
  if (m_hornTrack.motion.setLever(v) == RotorMotion::Event::Start)
    forHornPlayers([](HornNoisePlayer& player) { player.trigger(); });
  if (m_drumTrack.motion.setLever(v) == RotorMotion::Event::Start) m_drum.noisePlayer().trigger();
}

void Cabinet::setStop(double v) noexcept {
  if (m_hornTrack.motion.setStop(v) != RotorMotion::Event::None)
    forHornPlayers([](HornNoisePlayer& player) { player.trigger(); });
  if (m_drumTrack.motion.setStop(v) != RotorMotion::Event::None) m_drum.noisePlayer().trigger();
}

void Cabinet::setHornFlip(double sign) noexcept {
  const bool changed = (sign >= 0.0) != (hornSettings.cabinet.flipSign >= 0.0);
  hornSettings.cabinet.flipSign = sign;
  m_hornTrack.motion.setFlip(sign);
  if (!changed) return;
  clearHorns();
  resetHornFilters();
}

void Cabinet::setDrumFlip(double sign) noexcept {
  const bool changed = (sign >= 0.0) != (drumSettings.cabinet.flipSign >= 0.0);
  drumSettings.cabinet.flipSign = sign;
  m_drumTrack.motion.setFlip(sign);
  if (!changed) return;
  clearDrums();
  resetDrumFilters();
}

void Cabinet::setColor(double midDb, double lowDb) noexcept {
  for (ColorFilters& color : m_color) {
    color[0].setGainDb(midDb);
    color[1].setGainDb(lowDb);
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
  m_hornTrack.setSampleRate(engineRate, factor);
  m_drumTrack.setSampleRate(engineRate, factor);
  m_horn.setSampleRate(engineRate);
  m_drum.setSampleRate(engineRate);
  m_reduced.setSampleRate(engineRate);
}

void Cabinet::clearHorns() noexcept {
  m_hornTrack.clear();
  m_hornLine.clear();
  m_reducedHornLine.clear();
  m_horn.clear();
  m_reduced.clearHorn();
}

void Cabinet::clearDrums() noexcept {
  m_drumTrack.clear();
  m_drumLine.clear();
  m_feeds.clearDrum();
  m_drum.clear();
  m_reduced.clearDrum();
}

void Cabinet::clearState() noexcept {
  m_feeds.clearHorn();
  m_output.clear();
  m_crossTalk.clearSmoothers();
  setInstantUpdate();
  clearHorns();
  clearDrums();
}

void Cabinet::setInstantUpdate() noexcept {
  m_drumShelf.setInstantUpdate(true);
  m_feeds.setHornInstantUpdate();
  m_crossTalk.setInstantUpdate();
  m_output.setInstantUpdate();
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
  m_feeds.setDrumRate(m_engineRate);
  m_drum.resetFilters();
  m_reduced.resetDrumFilters();
}

void Cabinet::updateFilterRates(double engineRate) noexcept {
  m_drumShelf.setSampleRate(engineRate);
  m_drumShelf.setInstantUpdate(false);
  m_feeds.setHornRate(engineRate);
  m_crossTalk.setSampleRate(engineRate);
  m_output.setSampleRate(engineRate);
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
  m_feeds.clearFilters();
  m_output.clearFilters();
  for (ColorFilters& color : m_color) {
    color[0].clearState();
    color[1].clearState();
  }
}

void Cabinet::runRotors(const RunBuffer& x, const SmoothedRun& settings, int n, Microphones& mics,
                        Reduced& reduced) noexcept {
  const auto size = static_cast<std::size_t>(n);
  SpeakerFeeds::Output feeds;
  feeds.drum = x;
  m_drumShelf.processFixed({feeds.drum.data(), size});
  for (std::size_t k = 0; k < size; ++k) feeds.drum[k] *= settings[Smoothed::DrumFeedGain][k];
  m_feeds.process(x, settings[Smoothed::HornFeedGain], n, feeds);

  m_drumTrack.advance(n);
  m_hornTrack.advance(n);
  m_drumLine.writeRun(m_drumTrack.writeIndex(0), {feeds.drum.data(), size});
  m_hornLine.writeRun(m_hornTrack.writeIndex(0), {feeds.horn.data(), size});
  m_reducedHornLine.writeRun(m_hornTrack.writeIndex(0), {feeds.reducedHorn.data(), size});
  m_drum.process(m_drumTrack, m_drumLine, n, mics.drum);
  m_horn.process(m_hornTrack, m_hornLine, n, mics.horn1, mics.horn2);
  m_reduced.process({m_hornTrack, m_reducedHornLine}, {m_drumTrack, m_drumLine}, n, reduced.horn,
                    reduced.drum);
  runNoise(n, mics);
  m_drumTrack.finish(n);
  m_hornTrack.finish(n);
}

void Cabinet::runNoise(int n, Microphones& mics) noexcept {
  const auto size = static_cast<std::size_t>(n);
  for (std::size_t m = 0; m < 2; ++m) {
    HornMicrophone& microphone = m_horn.microphone(m);
    RunBuffer& noise = m == 0 ? mics.noise1 : mics.noise2;
    microphone.noisePlayer().process(m_hornTrack.speeds(n), microphone.position().angle,
                                     microphone.staticLevel() * hornSettings.noiseLevel,
                                     {noise.data(), size});
  }
  m_drum.noisePlayer().process(m_drumTrack.speeds(n), m_drum.microphone().angle,
                               m_drum.staticLevel() * drumSettings.noiseLevel,
                               {mics.drumNoise.data(), size});
}

void Cabinet::setLevels(const SmoothedRun& s, int n, Microphones& mics) const noexcept {
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
    const double shared = mics.cross.toHorns[k] + mics.cross.hornEcho[k];
    const double hornGain = s[Smoothed::HornGain][k] * hornLevel;
    mics.horn1[k] = (mics.horn1[k] * 0.5 + shared) * hornGain;
    mics.horn2[k] = (mics.horn2[k] * 0.5 + shared) * hornGain * s[Smoothed::HornMic2Gain][k];
    mics.drum[k] = (mics.cross.toDrum[k] + mics.drum[k]) * s[Smoothed::DrumGain][k];
    mics.noise1[k] *= 0.5;
  }
}

void Cabinet::addRoom(const SmoothedRun& s, int n, Microphones& mics) noexcept {
  const auto size = static_cast<std::size_t>(n);
  RunBuffer sendLeft, sendRight, own1, own2;
  for (std::size_t k = 0; k < size; ++k) {
    // Each horn microphone hears mostly its own side of the motor's noise.
    const double a = s[Smoothed::NoisePanA][k], b = s[Smoothed::NoisePanB][k];
    own1[k] = b * mics.noise1[k] + a * mics.noise2[k];
    own2[k] = b * mics.noise2[k] + a * mics.noise1[k];
    sendLeft[k] =
        mics.horn2[k] * s[Smoothed::Mic2PanLeft][k] + mics.horn1[k] * s[Smoothed::Mic1PanLeft][k] +
        mics.drum[k] * s[Smoothed::DrumPanLeft][k] + (own1[k] + mics.drumNoise[k]) * noiseSendGain;
    sendRight[k] = mics.horn2[k] * s[Smoothed::Mic2PanRight][k] +
                   mics.horn1[k] * s[Smoothed::Mic1PanRight][k] +
                   mics.drum[k] * s[Smoothed::DrumPanRight][k] +
                   (own2[k] + mics.drumNoise[k]) * noiseSendGain;
  }
  RunBuffer left, right;
  m_room.process(sendLeft, sendRight, s[Smoothed::RoomReturnGain], n, left, right);
  m_pairs.process(m_color[0], m_color[1], n, left, right);

  const double level1 = m_horn.microphone(0).staticLevel();
  const double level2 = m_horn.microphone(1).staticLevel();
  const double drumLevel = m_drum.staticLevel();
  for (std::size_t k = 0; k < size; ++k) {
    const double hornGain = s[Smoothed::HornGain][k] * hornLevel;
    mics.horn1[k] += (left[k] * level1 + own1[k]) * hornGain;
    mics.horn2[k] += (right[k] * level2 + own2[k]) * hornGain * s[Smoothed::HornMic2Gain][k];
    mics.drum[k] += (left[k] * drumLevel + mics.drumNoise[k]) * s[Smoothed::DrumGain][k];
  }
}

void Cabinet::process(const RunBuffer& x, const SmoothedRun& settings, int n, RunBuffer& left,
                      RunBuffer& right) noexcept {
  Microphones mics;
  Reduced reduced;
  runRotors(x, settings, n, mics, reduced);
  m_crossTalk.process(reduced.drum, reduced.horn, x, settings, n, mics.cross);
  setLevels(settings, n, mics);
  addRoom(settings, n, mics);
  m_output.process(mics.horn1, mics.horn2, mics.drum, settings, n, left, right);
}

} // namespace qlx::engine

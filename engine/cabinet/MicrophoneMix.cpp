// SPDX-License-Identifier: ISC
#include "engine/cabinet/MicrophoneMix.h"

#include <algorithm>

namespace qlx::engine {

namespace {

constexpr double kHighPassQ = 0.5;
constexpr double kColorMidHz = 1500.0;
constexpr double kColorMidQ = 0.5;
constexpr double kColorLowHz = 350.0;
constexpr double kColorLowQ = 0.6;

} // namespace

MicrophoneMix::MicrophoneMix(const kernels::Kernels& kernels)
    : m_kernels(kernels), m_pairs(kernels) {
  for (Biquad& filter : m_highPass) {
    filter.init(m_sampleRate, Response::HighPass, m_hornHighPassHz, kHighPassQ, 0);
    filter.setEnabled(true);
  }
  for (ColorFilters& color : m_color) {
    color[0].init(m_sampleRate, Response::Peaking, kColorMidHz, kColorMidQ, 0.0);
    color[1].init(m_sampleRate, Response::LowShelf, kColorLowHz, kColorLowQ, 0.0);
    for (Biquad& filter : color) filter.setEnabled(true);
  }
}

double MicrophoneMix::inRange(double hz) const noexcept {
  return std::clamp(hz, 20.0, m_sampleRate * 0.5);
}

void MicrophoneMix::setSampleRate(double hz) noexcept {
  m_sampleRate = hz;
  for (Biquad& filter : m_highPass) filter.setSampleRate(hz);
  setHornHighPass(m_hornHighPassHz);
  for (Biquad& filter : m_highPass) filter.setInstantUpdate(false);
  setDrumLowPass(m_drumLowPassHz);
  for (ColorFilters& color : m_color) {
    for (Biquad& filter : color) {
      filter.setSampleRate(hz);
      filter.setInstantUpdate(false);
    }
  }
}

void MicrophoneMix::setColor(double midDb, double lowDb) noexcept {
  for (ColorFilters& color : m_color) {
    if (!color[0].standsAt(kColorMidHz, kColorMidQ, midDb)) color[0].setGainDb(midDb);
    if (!color[1].standsAt(kColorLowHz, kColorLowQ, lowDb)) color[1].setGainDb(lowDb);
  }
}

void MicrophoneMix::setHornHighPass(double hz) noexcept {
  m_hornHighPassHz = hz;
  for (Biquad& filter : m_highPass) filter.setFrequency(inRange(hz));
}

void MicrophoneMix::setDrumLowPass(double hz) noexcept {
  m_drumLowPassHz = hz;
  m_drumPole = settlingPole(inRange(hz), m_sampleRate);
}

void MicrophoneMix::clear() noexcept { m_drumLowPass = {}; }

void MicrophoneMix::clearFilters() noexcept {
  for (Biquad& filter : m_highPass) filter.clearState();
  for (ColorFilters& color : m_color)
    for (Biquad& filter : color) filter.clearState();
}

void MicrophoneMix::setInstantUpdate() noexcept {
  for (Biquad& filter : m_highPass) filter.setInstantUpdate(true);
  for (ColorFilters& color : m_color)
    for (Biquad& filter : color) filter.setInstantUpdate(true);
}

kernels::MixGains MicrophoneMix::gains(const SmoothedValues& s) const noexcept {
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

void MicrophoneMix::process(MicrophoneSignals& mics, Room& room, const RoomLevels& levels,
                            const SmoothedValues& s, int n, SubBlock& left,
                            SubBlock& right) noexcept {
  const kernels::MixSignals signals{
      mics.horn1.data(),         mics.horn2.data(),          mics.drum.data(),
      mics.noise1.data(),        mics.noise2.data(),         mics.drumNoise.data(),
      mics.cross.toHorns.data(), mics.cross.hornEcho.data(), mics.cross.toDrum.data()};
  const kernels::MixGains mixGains = gains(s);

  SubBlock sendLeft, sendRight, returnLeft, returnRight;
  m_kernels.mixSends(signals, mixGains, sendLeft.data(), sendRight.data(), n);
  room.process(sendLeft, sendRight, s[Smoothed::RoomReturnGain], n, returnLeft, returnRight);
  m_pairs.process(m_color[0], m_color[1], n, returnLeft, returnRight);
  const double roomLevels[] = {levels.horn1, levels.horn2, levels.drum};
  m_kernels.mixRoom(signals, mixGains, returnLeft.data(), returnRight.data(), roomLevels, n);

  SubBlock horn1 = mics.horn1, horn2 = mics.horn2, drum = mics.drum;
  m_pairs.process({&m_highPass[0], 1}, {&m_highPass[1], 1}, n, horn1, horn2);
  m_drumLowPass.process({drum.data(), static_cast<std::size_t>(n)}, m_drumPole);
  const kernels::MixFilters filters{horn1.data(), horn2.data(), drum.data(),
                                    s[Smoothed::HornHighPassOn].data(),
                                    s[Smoothed::DrumLowPassOn].data()};
  m_kernels.mixOutput(signals, mixGains, filters, left.data(), right.data(), n);
}

} // namespace qlx::engine

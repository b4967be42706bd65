#include "engine/CrossTalk.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kVerticalOffset = 0.77; // metres from the drum's plane up to the horn's
constexpr double kVerticalSquare = 0.5929;
constexpr double kDrumReturnHz = 3200.0;
constexpr double kHornReturnHz = 4500.0;
constexpr double kPortHz = 70.0;
constexpr double kPortQ = 9.0;

double spanTo(double x, double y) { return std::sqrt(y * y + x * x + kVerticalSquare); }

/// A microphone's place measured in circles of its rotor.
Point scaledPosition(const MicrophonePosition& microphone, double amRadius) {
  const Point p = planePosition(microphone);
  return {p.x / amRadius, p.y / amRadius};
}

} // namespace

CrossTalk::CrossTalk() : m_portFilter(44100.0, Response::BandPass, kPortHz, kPortQ, 0) {
  m_portFilter.setEnabled(true);
}

void CrossTalk::setSampleRate(double hz) noexcept {
  m_sampleRate = hz;
  m_drumPole = lowPassPole(kDrumReturnHz, hz);
  m_hornPole = lowPassPole(kHornReturnHz, hz);
  m_portFilter.setSampleRate(hz);
  m_portFilter.setFrequencyAndQ(kPortHz, kPortQ);
  m_portFilter.setInstantUpdate(false);
}

void CrossTalk::clearSmoothers() noexcept {
  m_drumSmoother = {};
  m_hornSmoother = {};
}

void CrossTalk::clearRings() noexcept {
  for (Ring* ring : {&m_drumReturn, &m_hornReturn, &m_port}) ring->clear();
}

void CrossTalk::computeTargets(const Geometry& g, SmoothedSettings& settings) const noexcept {
  const double samples = m_sampleRate * kInverseSpeedOfSound;
  const Point drum = scaledPosition(g.drumMicrophone, g.drumAmRadius);
  const Point horn = scaledPosition(g.hornMicrophone, g.hornAmRadius);
  const double portToDrum = std::sqrt(drum.x * drum.x + drum.y * drum.y);
  const double hornToDrum = spanTo(drum.x, drum.y - g.hornAmRadius);
  const double hornEcho = spanTo(horn.x, horn.y - g.hornAmRadius);
  const double drumToHorn = spanTo(horn.x, horn.y);

  const auto set = [&](Smoothed delay, double metres, Smoothed level, double value) {
    settings.setTarget(delay, metres * samples);
    settings.setTarget(level, value);
  };
  set(Smoothed::PortToDrumDelay, portToDrum, Smoothed::PortToDrumLevel,
      g.drumLaw.rawAt(portToDrum));
  set(Smoothed::HornToDrumDelay, hornToDrum - kVerticalOffset, Smoothed::HornToDrumLevel,
      g.hornLaw.rawAt(hornToDrum));
  set(Smoothed::HornEchoDelay, hornEcho - kVerticalOffset, Smoothed::HornEchoLevel,
      g.hornLaw.rawAt(hornEcho));
  set(Smoothed::DrumToHornDelay, drumToHorn - kVerticalOffset, Smoothed::DrumToHornLevel,
      g.drumLaw.rawAt(drumToHorn));
  set(Smoothed::PortToHornDelay, drumToHorn, Smoothed::PortToHornLevel,
      g.drumLaw.rawAt(drumToHorn));
}

double CrossTalk::tap(const Ring& ring, double delay) const noexcept {
  double position = m_writeIndex - delay;
  while (position < 0.0) position += kRingSize;
  const int i = static_cast<int>(position);
  const double fraction = position - i;
  return (1.0 - fraction) * ring.at(i) + fraction * ring.at(i + 1);
}

void CrossTalk::process(const RunBuffer& drum, const RunBuffer& horn, const RunBuffer& input,
                        const SmoothedRun& s, int n, Output& out) noexcept {
  RunBuffer port;
  for (int j = 0; j < n; ++j)
    port[static_cast<std::size_t>(j)] = input[static_cast<std::size_t>(j)] * 8.0;
  m_portFilter.processGlide({port.data(), static_cast<std::size_t>(n)});

  // Lines are read before they are written, sample by sample: a delay may be shorter than a
  // stretch.
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
    const double drumToHorn = tap(m_drumReturn, s[Smoothed::DrumToHornDelay][k]) *
                              s[Smoothed::DrumToHornLevel][k] * s[Smoothed::DrumToHornGain][k];
    const double portToHorn = tap(m_port, s[Smoothed::PortToHornDelay][k]) *
                              s[Smoothed::PortToHornLevel][k] * s[Smoothed::PortToHornGain][k] *
                              4.0;
    const double hornToDrum = tap(m_hornReturn, s[Smoothed::HornToDrumDelay][k]) *
                              s[Smoothed::HornToDrumLevel][k] * s[Smoothed::HornToDrumGain][k] *
                              0.25;
    const double portToDrum = tap(m_port, s[Smoothed::PortToDrumDelay][k]) *
                              s[Smoothed::PortToDrumLevel][k] * s[Smoothed::PortToDrumGain][k] *
                              4.0;
    out.toHorns[k] = drumToHorn + portToHorn;
    out.toDrum[k] = hornToDrum + portToDrum;
    out.hornEcho[k] =
        tap(m_hornReturn, s[Smoothed::HornEchoDelay][k]) * s[Smoothed::HornEchoLevel][k] * 0.1575;

    m_drumReturn.write(m_writeIndex, m_drumSmoother.next(drum[k] * 4.0, m_drumPole));
    m_hornReturn.write(m_writeIndex, m_hornSmoother.next(horn[k] * 4.0, m_hornPole));
    m_port.write(m_writeIndex, port[k] * s[Smoothed::DrumFeedGain][k] * 8.0);
    m_writeIndex = (m_writeIndex + 1) & (kRingSize - 1);
  }
}

} // namespace qlx::engine

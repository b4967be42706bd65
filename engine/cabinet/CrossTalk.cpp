// SPDX-License-Identifier: ISC
#include "engine/cabinet/CrossTalk.h"

#include "engine/signal/SpeedOfSound.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kVerticalOffset = 0.77;   // metres from the drum's plane up to the horn's
constexpr double kVerticalSquare = 0.5929; // of it
constexpr double kDrumReturnHz = 3200.0;
constexpr double kHornReturnHz = 4500.0;
constexpr double kPortHz = 70.0;
constexpr double kPortQ = 9.0;

// Levels of the paths against each other, tuned by ear.
constexpr double kReturnGain = 4.0; ///< +12 dB: the reduced models into their delay lines
/// +18 dB ahead of the port's resonance and again behind it: its 8 Hz wide band holds little.
constexpr double kPortGain = 8.0;
constexpr double kPortPathGain = 4.0;    ///< +12 dB: the port at the microphones
constexpr double kHornToDrumPath = 0.25; ///< -12 dB: undoes kReturnGain
constexpr double kHornEchoPath = 0.1575; ///< -16 dB

double spanTo(double x, double y) { return std::sqrt(y * y + x * x + kVerticalSquare); }

/// A microphone's position in units of the radius on which its rotor's source moves.
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

double CrossTalk::tap(const Ring& ring, int writeIndex, double delay) noexcept {
  double position = writeIndex - delay;
  while (position < 0.0) position += kRingSize;
  const int i = static_cast<int>(position);
  const double fraction = position - i;
  return (1.0 - fraction) * ring.at(i) + fraction * ring.at(i + 1);
}

bool CrossTalk::readAhead(Path& path, const SmoothedValues& settings, int n) const noexcept {
  const SubBlock& delay = settings[path.delay];
  const double samples = delay[0];
  if (samples != delay[static_cast<std::size_t>(n - 1)] || samples < n + 1 || samples >= kRingSize)
    return false;
  const double position = m_writeIndex + kRingSize - samples;
  const int whole = static_cast<int>(position);
  const double newer = position - whole, older = 1.0 - newer;
  const double* at = path.ring.data() + (whole & (kRingSize - 1));
  for (int j = 0; j < n; ++j)
    path.value[static_cast<std::size_t>(j)] = older * at[j] + newer * at[j + 1];
  return true;
}

void CrossTalk::process(const SubBlock& drum, const SubBlock& horn, const SubBlock& input,
                        const SmoothedValues& s, int n, Output& out) noexcept {
  const auto size = static_cast<std::size_t>(n);
  SubBlock port;
  for (std::size_t k = 0; k < size; ++k) port[k] = input[k] * kPortGain;
  m_portFilter.processGlide({port.data(), size});
  SubBlock drumReturn, hornReturn;
  for (std::size_t k = 0; k < size; ++k) {
    port[k] *= s[Smoothed::DrumFeedGain][k] * kPortGain;
    drumReturn[k] = drum[k] * kReturnGain;
    hornReturn[k] = horn[k] * kReturnGain;
  }
  processPair(m_drumSmoother, drumReturn.data(), m_drumPole, m_hornSmoother, hornReturn.data(),
              m_hornPole, size);

  Path paths[] = {{m_drumReturn, Smoothed::DrumToHornDelay, {}},
                  {m_port, Smoothed::PortToHornDelay, {}},
                  {m_hornReturn, Smoothed::HornToDrumDelay, {}},
                  {m_port, Smoothed::PortToDrumDelay, {}},
                  {m_hornReturn, Smoothed::HornEchoDelay, {}}};
  // Lines are read before they are written, sample by sample, unless all delays stand still and
  // are longer than the sub-block.
  const bool ahead = std::all_of(std::begin(paths), std::end(paths),
                                 [&](Path& path) { return readAhead(path, s, n); });
  for (std::size_t k = 0; k < size; ++k) {
    if (!ahead) {
      for (Path& path : paths)
        path.value[k] = tap(path.ring, m_writeIndex + static_cast<int>(k), s[path.delay][k]);
    }
    m_drumReturn.write(m_writeIndex + static_cast<int>(k), drumReturn[k]);
    m_hornReturn.write(m_writeIndex + static_cast<int>(k), hornReturn[k]);
    m_port.write(m_writeIndex + static_cast<int>(k), port[k]);
  }
  m_writeIndex = (m_writeIndex + n) & (kRingSize - 1);
  for (std::size_t k = 0; k < size; ++k) {
    out.toHorns[k] =
        paths[0].value[k] * s[Smoothed::DrumToHornLevel][k] * s[Smoothed::DrumToHornGain][k] +
        paths[1].value[k] * s[Smoothed::PortToHornLevel][k] * s[Smoothed::PortToHornGain][k] *
            kPortPathGain;
    out.toDrum[k] = paths[2].value[k] * s[Smoothed::HornToDrumLevel][k] *
                        s[Smoothed::HornToDrumGain][k] * kHornToDrumPath +
                    paths[3].value[k] * s[Smoothed::PortToDrumLevel][k] *
                        s[Smoothed::PortToDrumGain][k] * kPortPathGain;
    out.hornEcho[k] = paths[4].value[k] * s[Smoothed::HornEchoLevel][k] * kHornEchoPath;
  }
}

} // namespace qlx::engine

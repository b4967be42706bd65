// SPDX-License-Identifier: ISC
#include "brezan/analysis/RotorTrace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <stdexcept>

namespace qlx::tools {

namespace {

// Low enough that the sound's phase turns little during the window even at full speed.
constexpr std::array<double, 3> kHornHz = {1000.0, 1400.0, 1800.0};
// Where the drum answers strongest and next to nothing comes over from the horn.
constexpr std::array<double, 2> kDrumHz = {200.0, 400.0};

constexpr std::size_t kPlaces = 360; // in the picture of a turn
constexpr double kSlowestTurnSeconds = 8.0;

// A tone's amplitude and phase around one moment: the mean under a raised cosine, over which the
// other tones have whole numbers of periods.
std::complex<double> toneAt(const std::vector<double>& sound, double rate, double hz,
                            double centreSeconds, double windowSeconds) {
  const double middle = centreSeconds * rate;
  const double half = 0.5 * windowSeconds * rate;
  const auto first = std::max(0LL, static_cast<long long>(std::ceil(middle - half)));
  const auto last = std::min(static_cast<long long>(sound.size()) - 1,
                             static_cast<long long>(std::floor(middle + half)));
  std::complex<double> sum = 0.0;
  for (long long i = first; i <= last; ++i) {
    const double away = (static_cast<double>(i) - middle) / half;
    const double turn = 2.0 * std::numbers::pi * hz * static_cast<double>(i) / rate;
    sum += std::polar(
        (1.0 + std::cos(std::numbers::pi * away)) * sound[static_cast<std::size_t>(i)], -turn);
  }
  return sum / half;
}

template <typename View>
double distance(const View& a, const View& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::norm(a[i] - b[i]);
  return sum;
}

// Where a parabola through three neighbouring values has its lowest point, from the middle one.
double lowestPoint(double before, double middle, double after) {
  const double bend = before - 2.0 * middle + after;
  return bend > 0.0 ? 0.5 * (before - after) / bend : 0.0;
}

} // namespace

const PilotTones kHornPilot{kHornHz, 0.005, 0.1};
const PilotTones kDrumPilot{kDrumHz, 0.01, 0.25};

std::vector<double> pilotSound(const PilotTones& tones, double rate, double seconds, double peak) {
  std::vector<double> sound(static_cast<std::size_t>(std::llround(seconds * rate)));
  const double level = peak / static_cast<double>(tones.hz.size());
  for (std::size_t i = 0; i < sound.size(); ++i)
    for (const double hz : tones.hz)
      sound[i] += level * std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(i) / rate);
  return sound;
}

RotorTrace::RotorTrace(std::span<const std::vector<double>> channels, double rate,
                       const PilotTones& tones, double from, double to)
    : m_speedSeconds(tones.speedSeconds) {
  const double length = static_cast<double>(channels.front().size()) / rate;
  const auto steps = static_cast<std::size_t>(length / kStepSeconds);
  m_views.resize(steps);
  for (std::size_t step = 0; step < steps; ++step)
    for (const std::vector<double>& channel : channels)
      for (const double hz : tones.hz)
        m_views[step].push_back(toneAt(channel, rate, hz, static_cast<double>(step) * kStepSeconds,
                                       tones.windowSeconds));
  const auto first = static_cast<std::size_t>(from / kStepSeconds);
  const auto last = std::min(steps, static_cast<std::size_t>(to / kStepSeconds));
  if (last <= first) throw std::runtime_error("the sound is too short to see a rotor turn");
  learn(first, last - first);
  follow();
}

RotorTrace::View RotorTrace::viewAt(double step) const {
  const double whole = std::floor(step);
  const auto i = std::min(static_cast<std::size_t>(whole), m_views.size() - 2);
  View view(m_views[i].size());
  for (std::size_t k = 0; k < view.size(); ++k)
    view[k] = m_views[i][k] + (step - whole) * (m_views[i + 1][k] - m_views[i][k]);
  return view;
}

// Steps in a turn, from how unlike the views are that lie a given number of steps apart.
double RotorTrace::evenPeriod(std::size_t first, std::size_t count) const {
  const auto unlikeness = [&](std::size_t apart) {
    double sum = 0.0;
    for (std::size_t i = first; i + apart < first + count; ++i)
      sum += distance(m_views[i], m_views[i + apart]);
    return sum / static_cast<double>(count - apart);
  };
  const auto most =
      std::min(static_cast<std::size_t>(kSlowestTurnSeconds / kStepSeconds), count / 2);
  std::vector<double> unlike(most + 1, 0.0);
  for (std::size_t apart = 1; apart <= most; ++apart) unlike[apart] = unlikeness(apart);
  const double usual = *std::max_element(unlike.begin(), unlike.end());
  constexpr double kAlike = 0.05; // of the greatest unlikeness: the same view again
  constexpr double kApart = 0.3;  // the views in between differ clearly
  auto away =
      std::find_if(unlike.begin(), unlike.end(), [&](double u) { return u > kApart * usual; });
  const auto again = std::find_if(away, unlike.end(), [&](double u) { return u < kAlike * usual; });
  double level = 0.0; // of the tones themselves
  for (std::size_t i = first; i < first + count; ++i)
    for (const auto& tone : m_views[i]) level += std::norm(tone) / static_cast<double>(count);
  // A turning horn swings by more than the level, a drum by an eighth and more; what leaks over
  // from the other rotor while this one stands, by a hundredth.
  constexpr double kStill = 0.04;
  if (again == unlike.end() || usual < kStill * level)
    throw std::runtime_error("no turn of the rotor can be recognised");
  // Down to that minimum.
  auto lowest = again;
  while (lowest + 1 != unlike.end() && *(lowest + 1) < *lowest) ++lowest;
  auto turn = static_cast<double>(lowest - unlike.begin());
  // The same view many turns later divides the error by their number.
  const auto turns = static_cast<int>(0.6 * static_cast<double>(count) / turn);
  for (int n = 1; n <= turns; ++n) {
    const auto apart = static_cast<std::size_t>(std::llround(n * turn));
    std::array<double, 3> around{};
    std::size_t middle = apart;
    for (int tries = 0; tries < 5; ++tries) {
      around = {unlikeness(middle - 1), unlikeness(middle), unlikeness(middle + 1)};
      if (around[0] < around[1])
        --middle;
      else if (around[2] < around[1])
        ++middle;
      else
        break;
    }
    turn = (static_cast<double>(middle) + lowestPoint(around[0], around[1], around[2])) / n;
  }
  return turn;
}

void RotorTrace::learn(std::size_t first, std::size_t count) {
  const double turn = evenPeriod(first, count);
  const auto turns = static_cast<int>((static_cast<double>(count) - 2.0) / turn);
  const std::size_t size = m_views.front().size();
  m_turn.assign(kPlaces, View(size));
  for (std::size_t place = 0; place < kPlaces; ++place)
    for (int n = 0; n < turns; ++n) {
      const double part = static_cast<double>(place) / kPlaces + n;
      const View view = viewAt(static_cast<double>(first) + part * turn);
      for (std::size_t k = 0; k < size; ++k)
        m_turn[place][k] += view[k] / static_cast<double>(turns);
    }
}

// The course of places, each at most the highest speed's travel after the one before, whose views
// are all in all nearest to what was heard (dynamic programming over all courses).
void RotorTrace::follow() {
  const auto reach = static_cast<std::size_t>(kHighestSpeed * kStepSeconds * kPlaces) + 1;
  std::vector<double> cost(kPlaces);
  std::vector<double> previous(kPlaces);
  std::vector<std::array<std::uint8_t, kPlaces>> travel(m_views.size());
  for (std::size_t step = 0; step < m_views.size(); ++step) {
    previous.swap(cost);
    for (std::size_t place = 0; place < kPlaces; ++place) {
      double best = step == 0 ? 0.0 : std::numeric_limits<double>::infinity();
      for (std::size_t moved = 0; step > 0 && moved <= reach; ++moved)
        if (const double c = previous[(place + kPlaces - moved) % kPlaces]; c < best) {
          best = c;
          travel[step][place] = static_cast<std::uint8_t>(moved);
        }
      cost[place] = best + distance(m_views[step], m_turn[place]);
    }
  }
  auto place = static_cast<std::size_t>(std::min_element(cost.begin(), cost.end()) - cost.begin());
  m_turns.assign(m_views.size(), 0.0);
  double back = 0.0; // places gone back from the end
  for (std::size_t step = m_views.size(); step-- > 0;) {
    m_turns[step] = -back / static_cast<double>(kPlaces);
    const std::size_t moved = travel[step][place];
    back += static_cast<double>(moved);
    place = (place + kPlaces - moved) % kPlaces;
  }
  const double start = m_turns.front();
  for (double& turns : m_turns) turns -= start;
}

double RotorTrace::turns(double seconds) const {
  const double step =
      std::clamp(seconds / kStepSeconds, 0.0, static_cast<double>(m_turns.size() - 1));
  const auto i = std::min(static_cast<std::size_t>(step), m_turns.size() - 2);
  return m_turns[i] + (step - static_cast<double>(i)) * (m_turns[i + 1] - m_turns[i]);
}

double RotorTrace::speed(double seconds) const {
  const double end = this->seconds() - kStepSeconds;
  const double from = std::clamp(seconds - 0.5 * m_speedSeconds, 0.0, end - m_speedSeconds);
  return (turns(from + m_speedSeconds) - turns(from)) / m_speedSeconds;
}

} // namespace qlx::tools

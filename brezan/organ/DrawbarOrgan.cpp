// SPDX-License-Identifier: ISC
#include "brezan/organ/DrawbarOrgan.h"

#include "brezan/Interrupt.h"
#include "brezan/organ/OrganToneWheels.h"

#include <algorithm>
#include <cmath>

namespace qlx::tools {

namespace {

// Semitones of the drawbars over the key's own pitch, 16' to 1'.
constexpr int kFootage[9] = {-12, 7, 0, 12, 19, 24, 28, 31, 36};
constexpr int kManualFirstWheel = 13; // 8' of the lowest key
constexpr std::size_t kPercussionDrawbar = 4;
constexpr std::size_t kTopDrawbar = 8;

// A key's nine contacts close one after the other while it travels, and each bounces.
constexpr double kContactSpreadSeconds = 0.007;
constexpr double kBounceSeconds = 0.0011;
// The matching transformer and preamplifier round a contact's step off.
constexpr double kContactSmoothingSeconds = 0.00007;
constexpr double kPercussionDecaySeconds = 0.22; // to 1/e
constexpr double kPercussionLevel = 1.5;
// The tone of a wheel leaks into its neighbours' wires; all wheels are faintly heard at rest.
constexpr double kNeighbourLeak = 0.0035;
constexpr double kOctaveLeak = 0.002;
constexpr double kIdleLeak = 1.2e-5;
// Several keys on one wheel share its coil and get a little less than their sum.
constexpr double kRobbing = 0.05;
// The pedal's two drawbars are fed more strongly than the manuals' nine.
constexpr double kPedalGain = 1.9;
constexpr double kClosedSwellDb = -32.0;

// A number in 0..1 from where it is used: the same for every run, without a pattern to hear.
double scatter(std::uint64_t seed) {
  seed += 0x9E3779B97F4A7C15ULL;
  seed = (seed ^ (seed >> 30)) * 0xBF58476D1CE4E5B9ULL;
  seed = (seed ^ (seed >> 27)) * 0x94D049BB133111EBULL;
  return static_cast<double>((seed ^ (seed >> 31)) >> 11) * 0x1.0p-53;
}

enum class Bus : std::uint8_t { Drawbars, Percussion };

// At `frame` the wheel's gain on a bus changes by `change`.
struct ContactEvent {
  long long frame;
  Bus bus;
  int wheel;
  double change;
};

using Gains = std::array<double, kWheels>;

class ContactBoard {
 public:
  ContactBoard(const OrganScore& score, double rate) : m_score(score), m_rate(rate) {
    std::uint64_t seed = 1;
    for (const OrganKey& key : score.keys) wire(key, seed++ * 1000);
    std::stable_sort(m_events.begin(), m_events.end(),
                     [](const auto& a, const auto& b) { return a.frame < b.frame; });
  }
  const std::vector<ContactEvent>& events() const { return m_events; }

 private:
  const OrganRegistration* registration(const OrganKey& key) const {
    const OrganRegistration* found = nullptr;
    for (const OrganRegistration& r : m_score.registrations)
      if (r.manual == key.manual && r.seconds <= key.seconds) found = &r;
    return found;
  }

  void wire(const OrganKey& key, std::uint64_t seed) {
    const OrganRegistration* r = registration(key);
    if (r == nullptr) return;
    for (std::size_t d = 0; d < 9; ++d) {
      const int wheel = drawbarWheel(key.manual, key.key, static_cast<int>(d));
      double gain = drawbarGain(r->drawbars[d]);
      if (key.manual == Manual::Pedal) gain *= kPedalGain;
      // The percussion takes its trigger from the 1' contacts, which fall silent for it.
      if (r->percussion && d == kTopDrawbar) gain = 0.0;
      if (gain > 0.0) contact(key, Bus::Drawbars, wheel, gain, seed + 20 * d);
      if (r->percussion && d == kPercussionDrawbar)
        contact(key, Bus::Percussion, wheel, kPercussionLevel, seed + 500);
    }
  }

  // Closing and opening, each with a bounce.
  void contact(const OrganKey& key, Bus bus, int wheel, double gain, std::uint64_t seed) {
    const double place = scatter(seed) * kContactSpreadSeconds;
    const double down = key.seconds + place;
    const double up = key.seconds + key.length + kContactSpreadSeconds - place;
    change(down, bus, wheel, gain);
    bounce(down, bus, wheel, -gain, seed + 1);
    change(up, bus, wheel, -gain);
    bounce(up, bus, wheel, gain, seed + 5);
  }

  void bounce(double seconds, Bus bus, int wheel, double change1, std::uint64_t seed) {
    const double apart = seconds + kBounceSeconds * (0.3 + 0.7 * scatter(seed));
    const double back = apart + kBounceSeconds * (0.2 + 0.8 * scatter(seed + 1));
    change(apart, bus, wheel, change1);
    change(back, bus, wheel, -change1);
  }

  void change(double seconds, Bus bus, int wheel, double amount) {
    const long long frame = std::llround(seconds * m_rate);
    const auto leak = [&](int neighbour, double part) {
      if (neighbour >= 1 && neighbour <= kWheels)
        m_events.push_back({frame, bus, neighbour, amount * part});
    };
    leak(wheel, 1.0);
    leak(wheel - 1, kNeighbourLeak);
    leak(wheel + 1, kNeighbourLeak);
    leak(wheel + 12, kOctaveLeak);
  }

  const OrganScore& m_score;
  double m_rate;
  std::vector<ContactEvent> m_events;
};

// Moments at which the percussion's capacitor is full and a key discharges it: the first upper
// key after all were up.
std::vector<long long> percussionStarts(const OrganScore& score, double rate) {
  std::vector<OrganKey> upper;
  std::copy_if(score.keys.begin(), score.keys.end(), std::back_inserter(upper),
               [](const OrganKey& key) { return key.manual == Manual::Upper; });
  std::sort(upper.begin(), upper.end(),
            [](const auto& a, const auto& b) { return a.seconds < b.seconds; });
  std::vector<long long> starts;
  double heldUntil = -1.0;
  for (const OrganKey& key : upper) {
    if (key.seconds > heldUntil) starts.push_back(std::llround(key.seconds * rate));
    heldUntil = std::max(heldUntil, key.seconds + key.length);
  }
  return starts;
}

class Swell {
 public:
  Swell(const std::vector<SwellPoint>& points, double rate) : m_points(points), m_rate(rate) {}

  double gain(long long frame) {
    if (m_points.empty()) return 1.0;
    const double now = static_cast<double>(frame) / m_rate;
    while (m_next < m_points.size() && m_points[m_next].seconds <= now) ++m_next;
    const SwellPoint& before = m_points[m_next == 0 ? 0 : m_next - 1];
    const SwellPoint& after = m_points[std::min(m_next, m_points.size() - 1)];
    const double span = after.seconds - before.seconds;
    const double part = span > 0.0 ? (now - before.seconds) / span : 0.0;
    const double opening =
        before.opening + std::clamp(part, 0.0, 1.0) * (after.opening - before.opening);
    return std::pow(10.0, kClosedSwellDb * (1.0 - opening) / 20.0);
  }

 private:
  const std::vector<SwellPoint>& m_points;
  double m_rate;
  std::size_t m_next = 0;
};

} // namespace

double drawbarGain(int drawbar) {
  return drawbar <= 0 ? 0.0 : std::pow(10.0, 3.0 * (drawbar - 8) / 20.0);
}

int drawbarWheel(Manual manual, int key, int drawbar) {
  // The pedal's 16' is the generator's lowest octave; manuals fold back there.
  const int lowest = manual == Manual::Pedal ? 1 : kManualFirstWheel;
  int wheel = key + kManualFirstWheel + kFootage[drawbar];
  while (wheel < lowest) wheel += 12;
  while (wheel > kWheels) wheel -= 12;
  return wheel;
}

std::vector<double> playOrgan(const OrganScore& score, double rate, double peak) {
  const ContactBoard board(score, rate);
  const std::vector<long long> starts = percussionStarts(score, rate);
  OrganToneWheels wheels(rate);
  Swell swell(score.swell, rate);
  const double smoothing = 1.0 - std::exp(-1.0 / (kContactSmoothingSeconds * rate));
  const double decay = std::exp(-1.0 / (kPercussionDecaySeconds * rate));
  std::array<Gains, 2> closed{}; // sums of the closed contacts
  Gains heard{};
  double percussion = 0.0;
  auto event = board.events().begin();
  auto start = starts.begin();
  std::vector<double> sound(static_cast<std::size_t>(std::llround(score.seconds * rate)));
  for (std::size_t i = 0; i < sound.size(); ++i) {
    if (i % 4096 == 0) throwIfInterrupted();
    const auto frame = static_cast<long long>(i);
    for (; event != board.events().end() && event->frame <= frame; ++event)
      closed[static_cast<std::size_t>(event->bus)][static_cast<std::size_t>(event->wheel - 1)] +=
          event->change;
    percussion *= decay;
    for (; start != starts.end() && *start <= frame; ++start) percussion = 1.0;
    for (std::size_t w = 0; w < kWheels; ++w) {
      const double wanted = std::max(0.0, closed[0][w]);
      const double gain =
          wanted / (1.0 + kRobbing * wanted) + percussion * closed[1][w] + kIdleLeak;
      heard[w] += smoothing * (gain - heard[w]);
    }
    sound[i] = wheels.sum(heard) * swell.gain(frame);
  }
  double highest = 0.0;
  for (const double sample : sound) highest = std::max(highest, std::abs(sample));
  if (highest > 0.0)
    for (double& sample : sound) sample *= peak / highest;
  return sound;
}

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#include "brezan/organ/OrganToneWheels.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace qlx::tools {

namespace {

constexpr double kMotorTurns = 20.0; // a second

struct Gears {
  int driving;
  int driven;
};
// C to B.
constexpr Gears kGears[12] = {{85, 104}, {71, 82}, {67, 73}, {105, 108}, {103, 100}, {84, 77},
                              {74, 64},  {98, 80}, {96, 74}, {88, 64},   {67, 46},   {108, 70}};
constexpr int kLastRegularWheel = 84; // seven octaves with 2 to 256 teeth
constexpr int kTopTeeth = 192;        // the last wheels borrow the gears of the fourth below
constexpr int kComplexWheels = 12;    // the pedal's lowest octave, cut to a squarer wave

// The generator's filters: full level up to the middle, falling towards the treble.
double wheelLevel(int wheel) {
  constexpr int kFlatUpTo = 54;
  constexpr double kTopDb = -8.0;
  if (wheel <= kFlatUpTo) return 1.0;
  return std::pow(10.0, kTopDb / 20.0 * (wheel - kFlatUpTo) / (kWheels - kFlatUpTo));
}

} // namespace

double wheelFrequency(int wheel) {
  if (wheel > kLastRegularWheel) {
    const Gears& gears = kGears[wheel - kLastRegularWheel - 1 + 5];
    return kMotorTurns * gears.driving / gears.driven * kTopTeeth;
  }
  const Gears& gears = kGears[(wheel - 1) % 12];
  const int teeth = 2 << ((wheel - 1) / 12);
  return kMotorTurns * gears.driving / gears.driven * teeth;
}

OrganToneWheels::OrganToneWheels(double rate) {
  for (std::size_t i = 0; i < kWheels; ++i) {
    const int wheel = static_cast<int>(i) + 1;
    const double frequency = wheelFrequency(wheel);
    const double turn = 2.0 * std::numbers::pi * frequency / rate;
    // Wheels sit on their shafts as they happened to be put there; the golden ratio scatters them.
    const double phase = 2.0 * std::numbers::pi * std::fmod(wheel * std::numbers::phi, 1.0);
    m_sine[i] = std::sin(phase);
    m_cosine[i] = std::cos(phase);
    m_turnSine[i] = std::sin(turn);
    m_turnCosine[i] = std::cos(turn);
    m_level[i] = frequency < 0.45 * rate ? wheelLevel(wheel) : 0.0;
  }
}

double OrganToneWheels::sum(const std::array<double, kWheels>& gains) {
  double total = 0.0;
  for (std::size_t i = 0; i < kComplexWheels; ++i) {
    // Third and fifth harmonic from the fundamental: sin 3x = 3s - 4s^3, sin 5x = 5s - 20s^3 +
    // 16s^5.
    constexpr double kThird = 0.28;
    constexpr double kFifth = 0.10;
    const double s = m_sine[i];
    const double s2 = s * s;
    const double wave =
        s + kThird * s * (3.0 - 4.0 * s2) + kFifth * s * (5.0 - s2 * (20.0 - 16.0 * s2));
    total += gains[i] * m_level[i] * wave;
  }
  for (std::size_t i = kComplexWheels; i < kWheels; ++i) {
    constexpr double kSecond = 0.01; // what the filters leave of a tooth's imperfect shape
    total += gains[i] * m_level[i] * m_sine[i] * (1.0 + 2.0 * kSecond * m_cosine[i]);
  }
  for (std::size_t i = 0; i < kWheels; ++i) {
    const double s = m_sine[i] * m_turnCosine[i] + m_cosine[i] * m_turnSine[i];
    const double c = m_cosine[i] * m_turnCosine[i] - m_sine[i] * m_turnSine[i];
    // One Newton step keeps the pointer's length at 1 however long it turns.
    const double scale = 1.5 - 0.5 * (s * s + c * c);
    m_sine[i] = s * scale;
    m_cosine[i] = c * scale;
  }
  return total;
}

} // namespace qlx::tools

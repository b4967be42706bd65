// SPDX-License-Identifier: ISC
#pragma once

#include <array>

namespace qlx::tools {

inline constexpr int kWheels = 91;

/// Frequency in Hz of tone wheel 1..91 of an organ whose motor turns 20 times a second. Twelve
/// pairs of gears give the notes of the octave, the number of a wheel's teeth gives the octave.
/// The ratios of whole numbers miss equal temperament by up to 0.71 cents, 2 at the top.
double wheelFrequency(int wheel);

/// The organ's generator: every wheel turns all the time, heard or not, so a key finds its tones
/// at whatever phase they have.
class OrganToneWheels {
 public:
  explicit OrganToneWheels(double rate);

  /// The tones of the next sample, weighted with `gains` by wheel number less 1.
  double sum(const std::array<double, kWheels>& gains);

 private:
  // Each wheel as a pointer on the unit circle and its turn in one sample.
  std::array<double, kWheels> m_sine{};
  std::array<double, kWheels> m_cosine{};
  std::array<double, kWheels> m_turnSine{};
  std::array<double, kWheels> m_turnCosine{};
  std::array<double, kWheels> m_level{}; ///< 0 where the rate cannot hold the tone
};

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#include "brezan/analysis/LeverMarks.h"
#include "brezan/organ/DrawbarOrgan.h"
#include "brezan/organ/OrganPhrase.h"
#include "brezan/organ/OrganToneWheels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <sstream>

namespace qlx::test {
using namespace tools;
namespace {

constexpr double kRate = 44100.0;

// Amplitude of one frequency in a stretch of sound.
double amplitude(const std::vector<double>& sound, double from, double to, double frequency) {
  double sine = 0.0;
  double cosine = 0.0;
  const auto first = static_cast<std::size_t>(from * kRate);
  const auto last = static_cast<std::size_t>(to * kRate);
  for (std::size_t i = first; i < last; ++i) {
    const double turn = 2.0 * std::numbers::pi * frequency * static_cast<double>(i) / kRate;
    const double window = 1.0 - std::cos(2.0 * std::numbers::pi * static_cast<double>(i - first) /
                                         static_cast<double>(last - first));
    sine += sound[i] * std::sin(turn) * window;
    cosine += sound[i] * std::cos(turn) * window;
  }
  return 2.0 * std::hypot(sine, cosine) / static_cast<double>(last - first);
}

double rms(const std::vector<double>& sound, double from, double to) {
  double sum = 0.0;
  const auto first = static_cast<std::size_t>(from * kRate);
  const auto last = static_cast<std::size_t>(to * kRate);
  for (std::size_t i = first; i < last; ++i) sum += sound[i] * sound[i];
  return std::sqrt(sum / static_cast<double>(last - first));
}

OrganScore upperOnly(std::array<int, 9> drawbars, bool percussion, std::vector<OrganKey> keys) {
  return {std::move(keys), {{0.0, Manual::Upper, drawbars, percussion}}, {}, 2.0};
}

} // namespace

TEST(Organ, WheelsAreInTuneAndInOrder) {
  for (int wheel = 1; wheel <= kWheels; ++wheel) {
    const double tempered = 440.0 * std::exp2((wheel - 46) / 12.0); // wheel 46 is the A of 440 Hz
    const double cents = 1200.0 * std::log2(wheelFrequency(wheel) / tempered);
    // The top seven stand a pure fifth above the gears they borrow.
    EXPECT_NEAR(cents, 0.0, wheel <= 84 ? 0.75 : 2.0) << "wheel " << wheel;
  }
  EXPECT_DOUBLE_EQ(wheelFrequency(46), 440.0) << "88 : 64 teeth at 20 turns a second";
}

TEST(Organ, FoldsBackWhereTheGeneratorEnds) {
  const struct {
    Manual manual;
    int key;
    int drawbar;
    int wheel;
  } cases[] = {{Manual::Upper, 0, 2, 13},  {Manual::Upper, 0, 0, 13},  {Manual::Upper, 11, 0, 24},
               {Manual::Upper, 12, 0, 13}, {Manual::Upper, 60, 2, 73}, {Manual::Upper, 60, 5, 85},
               {Manual::Upper, 42, 8, 91}, {Manual::Upper, 43, 8, 80}, {Manual::Pedal, 0, 0, 1},
               {Manual::Pedal, 0, 2, 13}};
  for (const auto& c : cases)
    EXPECT_EQ(drawbarWheel(c.manual, c.key, c.drawbar), c.wheel) << c.key << " " << c.drawbar;
}

TEST(Organ, DrawbarsSetTheLevelsOfTheirTones) {
  EXPECT_EQ(drawbarGain(0), 0.0);
  EXPECT_NEAR(20.0 * std::log10(drawbarGain(8) / drawbarGain(1)), 21.0, 1e-9);
  // A of 440 Hz at 8', full; its octave 9 dB less; nothing else.
  const OrganScore score =
      upperOnly({0, 0, 8, 5, 0, 0, 0, 0, 0}, false, {{0.1, 1.8, Manual::Upper, 33}});
  const std::vector<double> sound = playOrgan(score, kRate, 0.5);
  const double main = amplitude(sound, 0.3, 1.8, 440.0);
  const auto relative = [&](double hz) {
    return 20.0 * std::log10(amplitude(sound, 0.3, 1.8, hz) / main);
  };
  EXPECT_NEAR(relative(880.0), -9.0, 1.0);
  EXPECT_LT(relative(1320.0), -50.0);
  EXPECT_LT(relative(220.0), -60.0);
}

TEST(Organ, PercussionStrikesOnlyAfterAllKeysWereUp) {
  // A, then C while A is held, then C again after silence. The third harmonic is the percussion's.
  const OrganScore score = upperOnly({0, 0, 8, 0, 0, 0, 0, 0, 0}, true,
                                     {{0.1, 0.9, Manual::Upper, 33},
                                      {0.7, 0.5, Manual::Upper, 36},
                                      {1.4, 0.5, Manual::Upper, 36}});
  const std::vector<double> sound = playOrgan(score, kRate, 0.5);
  const double ofA = 3.0 * 440.0;
  const double ofC = wheelFrequency(drawbarWheel(Manual::Upper, 36, 4));
  const double struck = amplitude(sound, 0.11, 0.21, 1318.5);
  EXPECT_LT(amplitude(sound, 0.55, 0.65, ofA), 0.2 * struck) << "it dies away";
  EXPECT_LT(amplitude(sound, 0.72, 0.82, ofC), 0.12 * struck) << "legato: no new stroke";
  EXPECT_GT(amplitude(sound, 1.41, 1.51, ofC), 0.7 * struck) << "detached: a new stroke";
}

TEST(Organ, KeysClick) {
  // A low soft tone: what is above 3 kHz can only be the contacts.
  const OrganScore score =
      upperOnly({8, 8, 8, 0, 0, 0, 0, 0, 0}, false, {{0.5, 1.0, Manual::Upper, 12}});
  std::vector<double> sound = playOrgan(score, kRate, 0.5);
  for (int pass = 0; pass < 4; ++pass) // a steep difference as a high-pass
    for (std::size_t i = sound.size() - 1; i > 0; --i) sound[i] -= sound[i - 1];
  EXPECT_GT(rms(sound, 0.5, 0.51), 20.0 * rms(sound, 0.9, 1.2));
}

TEST(Organ, TheSwellPedalScalesTheSound) {
  OrganScore score = upperOnly({0, 0, 8, 0, 0, 0, 0, 0, 0}, false, {{0.0, 2.0, Manual::Upper, 33}});
  score.swell = {{0.5, 1.0}, {1.0, 0.5}, {1.5, 0.5}};
  const std::vector<double> sound = playOrgan(score, kRate, 0.5);
  const double open = rms(sound, 0.2, 0.5);
  EXPECT_NEAR(20.0 * std::log10(rms(sound, 1.1, 1.9) / open), -16.0, 0.3);
  EXPECT_NEAR(20.0 * std::log10(rms(sound, 0.74, 0.76) / open), -8.0, 0.5)
      << "half-way, half of it";
}

TEST(OrganPhrase, IsPlayableAndHalfAMinuteLong) {
  const OrganScore score = organPhrase();
  EXPECT_NEAR(score.seconds, 31.0, 2.0);
  for (const OrganKey& key : score.keys) {
    EXPECT_GE(key.key, 0) << key.seconds;
    EXPECT_LT(key.key, key.manual == Manual::Pedal ? 25 : 61) << key.seconds;
    EXPECT_GT(key.length, 0.0) << key.seconds;
    EXPECT_LT(key.seconds + key.length, score.seconds - 0.8) << "silence at the end";
    // One key can't be pressed twice at once, and one pedal is played at a time.
    for (const OrganKey& other : score.keys)
      if (&other != &key && other.manual == key.manual && other.seconds >= key.seconds &&
          (other.key == key.key || key.manual == Manual::Pedal)) {
        EXPECT_GE(other.seconds, key.seconds + key.length) << "key " << key.key;
      }
  }
}

TEST(OrganPhrase, SoundsTheSameEveryTimeAndHasRoom) {
  const std::vector<double> first = playOrgan(organPhrase(), kRate, 0.7);
  EXPECT_EQ(first, playOrgan(organPhrase(), kRate, 0.7));
  const auto [low, high] = std::minmax_element(first.begin(), first.end());
  EXPECT_DOUBLE_EQ(std::max(-*low, *high), 0.7);
  EXPECT_NEAR((*high + *low) / 2.0, 0.0, 0.15) << "no offset";
  // The rest in which the machine is heard: fast before the pedal comes up, slow after.
  const double pedalUp = phrasePedal().back().seconds;
  EXPECT_LT(rms(first, pedalUp - 0.05, pedalUp + 1.0), 1e-4);
  EXPECT_GT(rms(first, pedalUp - 2.0, pedalUp - 1.0), 0.05);
}

TEST(OrganPhrase, LeverGoesSlowFastSlowStopSlow) {
  std::istringstream brake(phraseBrake());
  const auto marks = leverMarks(phrasePedal(), readAutomation(brake, "brake"));
  std::vector<LeverState> states;
  for (const LeverMark& mark : marks) states.push_back(mark.state);
  EXPECT_EQ(states, (std::vector{LeverState::Slow, LeverState::Fast, LeverState::Slow,
                                 LeverState::Stopped, LeverState::Slow}));
  for (std::size_t i = 1; i < marks.size(); ++i)
    EXPECT_GT(marks[i].seconds - marks[i - 1].seconds, 3.0) << "long enough to be heard";
}

} // namespace qlx::test

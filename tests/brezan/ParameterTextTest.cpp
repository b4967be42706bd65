// SPDX-License-Identifier: ISC
#include "brezan/plugin/ParameterText.h"

#include <gmock/gmock.h>

namespace qlx::test {
using namespace tools;

using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(ParameterText, FindsValues) {
  ParameterText parameters(TEST_EFFECT);
  struct Case {
    const char* text;
    int index;
    double value;
    double tolerance;
  };
  const Case cases[] = {
      {"Gain=norm:0.25", 0, 0.25, 0},
      {"gain=6", 0, 0.9976, 0.003}, // a plain number is decibels as the display
      {"0=+0", 0, 0.5, 0},
      {"Gain=-oo", 0, 0.0, 0},
      {"Gain=-6dB", 0, 0.2506, 0.003}, // 20 log10(2v)
      {"Gain=6 dB", 0, 0.9976, 0.003},
      {"Gain=-3.00dB", 0, 0.354, 0.003},
      {"Mode=Red", 1, 0.0, 0},
      {"MODE=green", 1, 0.5, 0},
      {"Mode=Blue Sky", 1, 1.0, 0},
      {"Lever=Tremolo", 2, 1.0, 0},
      {"Lever=50", 2, 0.5, 0},
      {"3=0.75", 3, 0.0075, 1e-6},
  };
  for (const Case& c : cases) {
    const ParameterValue got = parameters.assignment(c.text);
    EXPECT_EQ(got.index, c.index) << c.text;
    EXPECT_NEAR(static_cast<double>(got.value), c.value, c.tolerance) << c.text;
  }
}

TEST(ParameterText, SaysWhatWouldBeRight) {
  ParameterText parameters(TEST_EFFECT);
  const std::pair<const char*, const char*> cases[] = {
      {"Volume=1", "no parameter 'Volume'"},
      {"5=1", "no parameter '5'"},
      {"-1=1", "no parameter '-1'"},
      {"1.5=1", "no parameter '1.5'"},
      {"=1", "no parameter ''"},
      {"Gain", "NAME=VALUE"},
      {"Mode=Yellow", "one of Red, Green, BlueSky"},
      {"Mode=", "one of Red, Green, BlueSky"},
      {"Gain=7dB", "-oodB to 6.0dB"}, // beyond the range
      {"Gain=nan", "is no value of Gain"},
      {"Gain=1e999", "is no value of Gain"},
      {"Gain=6ms", "is no value of Gain"},
      {"Gain=norm:1.5", "norm:0 to norm:1"},
  };
  for (const auto& [text, words] : cases)
    EXPECT_THAT(([&parameters, text = text] { parameters.assignment(text); }),
                ThrowsMessage<std::runtime_error>(HasSubstr(words)))
        << text;
}

} // namespace qlx::test

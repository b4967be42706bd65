// SPDX-License-Identifier: ISC
#include "plugin/parameters/ParameterFormatter.h"
#include "plugin/parameters/ShortText.h"
#include "tests/support/EffectFixture.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

namespace qlx::test {
namespace {

class ParameterDisplayTest : public EffectFixture {};

struct Shown {
  std::int32_t index;
  float v;
  const char* text;
  const char* label;
};

// clang-format off
const std::vector<Shown> kWords = {
    {kBypass, 0.49F, "Off", " "}, {kBypass, 0.5F, "On", " "},
    {kCPUmode, 0.0F, "LowCPU", " "}, {kCPUmode, 1.0F, "Brilliant", " "},
    {kLever, 0.004F, "Chorale", " "}, {kLever, 0.5F, "50", " "}, {kLever, 0.996F, "Tremolo", " "},
    {kSpeed, 1.0F, "", " "},
    {kStop, 0.49F, "Running", " "}, {kStop, 0.5F, "Stopped", " "},
    {kSetup, 0.0F, "AmpOnly", " "}, {kSetup, 0.2F, "FrontSide", " "}, {kSetup, 0.4F, "FrontDiagonal", " "},
    {kSetup, 0.6F, "FrontRear", " "}, {kSetup, 0.8F, "OppositeDiagonal", " "}, {kSetup, 1.0F, "Mono", " "},
    {kSetup, 1.5F, "", " "}, {kSetup, -0.5F, "", " "},
    {kType, 0.0F, "Thru", " "}, {kType, 0.5F, "Tube", " "}, {kType, 1.0F, "Solid", " "}, {kType, 2.0F, "", " "},
    {kSize, 0.12F, "1", " "}, {kSize, 0.13F, "2", " "}, {kSize, 1.0F, "5", " "},
    {kMIDIchl, 0.0F, "OFF", " "}, {kMIDIchl, 1.0F / 17, "Ch 1", " "}, {kMIDIchl, 16.0F / 17, "Ch 16", " "},
    {kMIDIchl, 1.0F, "OMNI", " "}, {kMIDIchl, 2.0F, "OMNI", " "}, {kMIDIchl, -1.0F, "OFF", " "},
    {31, 0.5F, "", " "}, {57, 0.0F, "", " "},
    {kHornFlip, 0.5F, "Off", " "}, {kHornFlip, 0.51F, "On", " "},
    {kHornOpenBackMode, 0.5F, "On", " "}, {kDrumOpenBackMode, 0.0F, "Not implemented", " "},
    {kSlowSpeedButton, 1.0F, "On", " "},
};

const std::vector<Shown> kEnds = {
    {kMech, 0.0F, "-oo", "dB"}, {kMech, 0.5F, "0.0", "dB"}, {kMech, 1.0F, "12.0", "dB"},
    {kBottom, 0.0F, "-12.0", "dB"}, {kTop, 1.0F, "12.0", "dB"},
    {kHHPF, 0.0F, "Off", " "}, {kHHPF, 0.01F, "Off", " "}, {kHHPF, 0.0101F, "20", "Hz"},
    {kHHPF, 0.5F, "200", "Hz"}, {kHHPF, 1.0F, "1.00", "kHz"},
    {kDLPF, 0.0F, "200", "Hz"}, {kDLPF, 0.5F, "2.00", "kHz"}, {kDLPF, 0.999F, "19.91", "kHz"}, {kDLPF, 1.0F, "Off", " "},
    {kHDistance, 0.0F, "0", "cm"}, {kHDistance, 0.5F, "65", "cm"}, {kHDistance, 0.51F, "66", "cm"},
    {kHDistance, 0.77F, "1.00", "m"}, {kHDistance, 1.0F, "1.30", "m"}, {kDDistance, -0.1F, "0", "cm"},
    {kHAccel, 0.0F, "100", "ms"}, {kHAccel, 0.282037F, "367", "ms"}, {kHDecel, 0.349485F, "500", "ms"}, {kDAccel, 0.650514F, "2.0", "s"}, {kDDecel, 1.0F, "10.0", "s"},
    {kHornLPFCutHigh, 1.0F, "20.00", "kHz"},
};

/// One row per display rule and two places of the control, worked out by hand from the laws.
const std::vector<Shown> kNumbers = {
    {5, 0.37F, "-4.0", "dB"}, {5, 0.81F, "7.8", "dB"}, {6, 0.37F, "-3.1", "dB"}, {6, 0.81F, "7.4", "dB"},
    {11, 0.37F, "-4.0", "dB"}, {11, 0.81F, "7.8", "dB"}, {13, 0.37F, "-5.2", "dB"}, {13, 0.81F, "12.4", "dB"},
    {15, 0.37F, "37.0", "%"}, {15, 0.81F, "81.0", "%"}, {16, 0.37F, "-4.0", "dB"}, {16, 0.81F, "7.8", "dB"},
    {17, 0.37F, "3.70", "Hz"}, {17, 0.81F, "8.10", "Hz"}, {19, 0.37F, "550", "ms"}, {19, 0.81F, "4.2", "s"},
    {38, 0.37F, "-46.8", "deg"}, {38, 0.81F, "111.6", "deg"}, {39, 0.37F, "-26.0", "%"}, {39, 0.81F, "62.0", "%"},
    {41, 0.37F, "-5.2%", "%"}, {41, 0.81F, "12.4%", "%"}, {44, 0.37F, "16.4", "cm"}, {44, 0.81F, "22.1", "cm"},
    {45, 0.37F, "0.74", " "}, {45, 0.81F, "1.62", " "}, {46, 0.37F, "0.37", " "}, {46, 0.81F, "0.81", " "},
    {53, 0.37F, "1.10", "kHz"}, {53, 0.81F, "8.34", "kHz"}, {55, 0.37F, "-16.0", "dB"}, {55, 0.81F, "-4.2", "dB"},
    {60, 0.37F, "0.74", "oct"}, {60, 0.81F, "1.62", "oct"}, {90, 0.37F, "55", "cm"}, {90, 0.81F, "417", "cm"},
    {91, 0.085F, "25", "cm"}, {91, 0.37F, "111", "cm"}, {91, 0.81F, "243", "cm"}, {93, 0.37F, "0.84", " "},
    {93, 0.81F, "1.54", " "}, {99, 0.37F, "0.78", " "}, {99, 0.81F, "2.22", " "}, {100, 0.37F, "0.70", " "},
    {100, 0.81F, "2.36", " "}, {101, 0.37F, "35.2", "cm"}, {101, 0.81F, "96.8", "cm"}, {116, 0.37F, "117", "Hz"},
    {116, 0.81F, "323", "Hz"},
};
// clang-format on

TEST_F(ParameterDisplayTest, TextsAndLabels) {
  for (const auto* table : {&kWords, &kEnds, &kNumbers}) {
    for (const Shown& shown : *table) {
      EXPECT_EQ(display(shown.index, shown.v), shown.text) << shown.index << " at " << shown.v;
      EXPECT_EQ(label(shown.index), shown.label) << shown.index << " at " << shown.v;
    }
  }
}

TEST_F(ParameterDisplayTest, IndicesOutsideTheTableShowNothing) {
  for (const std::int32_t index : {-1, 120, 5000}) {
    EXPECT_EQ(display(index, 0.5F), "");
    EXPECT_EQ(label(index), " ");
    EXPECT_EQ(name(index), "");
  }
}

TEST_F(ParameterDisplayTest, NamesComeWhole) {
  EXPECT_EQ(name(0), "Bypass");
  EXPECT_EQ(name(35), "MIDIchl");
  EXPECT_EQ(name(34), "");
  EXPECT_EQ(name(100), "Early Refl. Virtual Room Size");
  EXPECT_EQ(name(119), "Horn Amplitude Clip");
}

TEST_F(ParameterDisplayTest, Properties) {
  struct Case {
    std::int32_t index;
    std::int32_t flags;
    float step, smallStep;
    const char* label;
    const char* shortLabel;
  };
  constexpr float kFine = 0.028571429F;
  constexpr float kSmall = 0.014285714F;
  for (const Case& c :
       {Case{0, 5, 1, 1, "Bypass", "Bypass"}, Case{2, 4, kFine, kSmall, "Lever", "Lever"},
        Case{4, 5, 1, 1, "Stop", "Stop"}, Case{8, 4, kFine, kSmall, "Presence", "Presenc"},
        Case{10, 4, 0.2F, 0.2F, "Setup", "Setup"}, Case{12, 4, 0.5F, 0.5F, "Type", "Type"},
        Case{14, 4, 0.25F, 0.25F, "Size", "Size"}, Case{31, 4, kFine, kSmall, "", ""},
        Case{120, 4, kFine, kSmall, "", ""}}) {
    SCOPED_TRACE(c.index);
    sdk::ParameterProperties p;
    std::memset(&p, 0x5A, sizeof p);
    EXPECT_TRUE(effect->getParameterProperties(c.index, &p));
    EXPECT_EQ(p.flags, c.flags);
    EXPECT_EQ(p.stepFloat, c.step);
    EXPECT_EQ(p.smallStepFloat, c.smallStep);
    EXPECT_EQ(p.largeStepFloat, c.step);
    EXPECT_STREQ(p.label, c.label);
    EXPECT_STREQ(p.shortLabel, c.shortLabel);
    EXPECT_EQ(p.minInteger, 0x5A5A5A5A) << "fields that are not ours stay";
    EXPECT_EQ(effect->canParameterBeAutomated(c.index), c.index < 36);
  }
}

TEST(ShortTextTest, NumbersAreRoundedAsPrintfRounds) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> numbers(-2000.0, 2000.0);
  for (int i = 0; i < 2000; ++i) {
    // Many of them halfway between two texts.
    const double number = i % 2 == 0 ? numbers(random) : static_cast<int>(numbers(random)) / 8.0;
    for (const int decimals : {0, 1, 2}) {
      char expected[64];
      std::snprintf(expected, sizeof expected, "%.*f", decimals, number);
      ASSERT_EQ(ShortText::fixed(number, decimals).view(), expected);
    }
  }
}

#ifdef LOCALES
TEST(ShortTextTest, TheDecimalSignIsAPointInEveryLocale) {
  ASSERT_EQ(setenv("LOCPATH", LOCALES, 1), 0);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  const char sign = *std::localeconv()->decimal_point;
  const ShortText text = ShortText::fixed(0.5, 1);
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(sign, ',');
  EXPECT_EQ(text.view(), "0.5");
}
#endif

TEST(ShortTextTest, LongTextsAreCut) {
  ShortText text("twelve chars");
  text.append(" and some more");
  char buffer[24];
  text.copyTo(buffer);
  EXPECT_STREQ(buffer, "twelve chars and some m");
  EXPECT_EQ(ShortText::fixed(1e300, 2).view(), "1000000000.00");
}

} // namespace
} // namespace qlx::test

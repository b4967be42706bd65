// SPDX-License-Identifier: ISC
#include "editor/Layout.h"
#include "gui/drawing/CDrawContext.h"
#include "plugin/ParameterTable.h"
#include "plugin/parameters/ParameterFormatter.h"
#include "plugin/parameters/ParameterIndex.h"
#include "tests/support/EditorRig.h"

#include <gtest/gtest.h>

#include <array>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace qlx::test {
namespace {

using namespace editor;

std::string textOf(gui::CParamDisplayConverter convert, float value, void* formatter) {
  std::array<char, gui::kDisplayTextSize> text{};
  convert(value, text.data(), formatter);
  return text.data();
}

struct TextCase {
  gui::CParamDisplayConverter convert;
  float value;
  const char* text;
};

/// What they share with the host is compared below.
const TextCase kTexts[] = {
    {formatRampTime, 0.282037F, "366 ms"}, // 366.5 ms as near as single precision comes
    {formatDistance, -0.1F, "0 cm"},
    {formatEqGain, 0.5F, "0.0 dB"},
    {formatEqGain, 0.0F, "-12.0 dB"},
    {formatDriveGain, 0.25F, "-10.0 dB"},
    {formatDriveGain, 1.0F, "20.0 dB"},
    {formatMicSetup, 0.0F, "Amp"},
    {formatMicSetup, 0.2F, "Front"},
    {formatMicSetup, 0.69F, "Front"},
    {formatMicSetup, 0.8F, "Opposite"},
    {formatMicSetup, 1.0F, "Mono"},
    {formatMicSetup, 1.3F, ""},
    {formatMicSetupDetail, 0.0F, "Only"},
    {formatMicSetupDetail, 0.2F, "Side"},
    {formatMicSetupDetail, 0.4F, "Diagonal"},
    {formatMicSetupDetail, 0.6F, "Rear"},
    {formatMicSetupDetail, 0.8F, "Diagonal"},
    {formatMicSetupDetail, 1.0F, ""},
    {formatAmpType, 0.24F, "Thru"},
    {formatAmpType, 0.5F, "Tube"},
    {formatAmpType, 1.0F, "Solid"},
    {formatAmpType, -0.8F, ""},
    {formatRoomSize, 0.12F, "1"},
    {formatRoomSize, 0.13F, "2"},
    {formatRoomSize, 1.0F, "5"},
    {formatPercent, 0.5F, "50.0 %"},
};

TEST(DisplayConverters, SayWhatTheKnobsMean) {
  plugin::ParameterFormatter formatter;
  for (const TextCase& row : kTexts) {
    EXPECT_EQ(textOf(row.convert, row.value, &formatter), row.text) << row.value;
  }
}

TEST(DisplayConverters, NeedTheFormatterOnlyForWhatTheyShareWithTheHost) {
  for (const auto convert :
       {formatRotorSpeed, formatRampTime, formatDistance, formatHighPass, formatLowPass,
        formatLevelDb, formatMicSetup, formatMicSetupDetail, formatAmpType}) {
    EXPECT_EQ(textOf(convert, 0.4F, nullptr), "");
  }
  for (const auto convert : {formatEqGain, formatDriveGain, formatRoomSize, formatPercent}) {
    EXPECT_NE(textOf(convert, 0.4F, nullptr), "");
  }
}

TEST(DisplayConverters, AgreeWithTheHostsDisplays) {
  plugin::ParameterFormatter formatter;
  const std::pair<std::int32_t, gui::CParamDisplayConverter> shared[] = {
      {plugin::kHSlowSpd, formatRotorSpeed}, {plugin::kDAccel, formatRampTime},
      {plugin::kHDistance, formatDistance},  {plugin::kHHPF, formatHighPass},
      {plugin::kDLPF, formatLowPass},        {plugin::kHGain, formatLevelDb}};
  for (const auto& [index, convert] : shared) {
    const plugin::Display& display = plugin::parameterRow(index)->display;
    for (int i = 0; i <= 1000; ++i) {
      const float v = static_cast<float>(i) / 1000.0F;
      EXPECT_EQ(textOf(convert, v, &formatter),
                std::string(display.text(v).view()) + " " + display.unit(v))
          << index << " at " << v;
    }
  }
  for (float v = 0.0F; v <= 1.0F; v += 0.1F) {
    EXPECT_EQ(plugin::parameterRow(plugin::kSetup)->display.text(v).view(),
              textOf(formatMicSetup, v, &formatter) + textOf(formatMicSetupDetail, v, &formatter));
    EXPECT_EQ(plugin::parameterRow(plugin::kType)->display.text(v).view(),
              textOf(formatAmpType, v, &formatter));
  }
}

/// A text in its field, and around it what the field would have cut off, all in pixels.
std::vector<std::uint32_t> drawnText(const std::string& text, const gui::CTypeface& typeface,
                                     const layout::PixelRect& field, double margin) {
  // Whole pairs of pixels from the window's corner, for a scale of one and a half.
  const gui::CRect place = gui::CRect::of(field);
  const gui::CPoint corner{place.left - 20.0 - field.left % 2, place.top - 20.0 - field.top % 2};
  const double scale = typeface.scale();
  gui::PixelBuffer picture(static_cast<int>(100 * scale), static_cast<int>(60 * scale));
  gui::CDrawContext context(picture, &typeface, scale);
  context.setFont(gui::kNormalFontSmall);
  context.setFontColor(gui::kWhiteCColor);
  const gui::CRect moved = gui::CRect{place.left - corner.x, place.top - corner.y,
                                      place.right - corner.x, place.bottom - corner.y};
  context.drawString(text, moved.insetBy(-margin, -margin), gui::CHoriTxtAlign::kCenterText);
  return picture.pixels;
}

TEST(DisplayConverters, TextsFitTheirFieldsAtEveryScale) {
  EditorRig rig;
  ASSERT_TRUE(rig.open());
  plugin::ParameterFormatter formatter;
  std::vector<KnobPlace> knobs(std::begin(kHornKnobs), std::end(kHornKnobs));
  knobs.insert(knobs.end(), std::begin(kOtherKnobs), std::end(kOtherKnobs));
  for (const double scale : gui::kWindowScales) {
    const auto typeface = rig.frame().getTypeface()->atScale(scale);
    for (const KnobPlace& knob : knobs) {
      for (const auto& [convert, field] : {std::pair{knob.converter, knob.place.display},
                                           {knob.detailConverter, layout::kSetupDetail}}) {
        for (int i = 0; i <= 250 && convert != nullptr; ++i) {
          const std::string text = textOf(convert, static_cast<float>(i) / 250.0F, &formatter);
          ASSERT_TRUE(drawnText(text, *typeface, field, 0.0) ==
                      drawnText(text, *typeface, field, 8.0))
              << text << " at " << scale << " of " << knob.name;
        }
      }
    }
  }
}

} // namespace
} // namespace qlx::test

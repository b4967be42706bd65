// SPDX-License-Identifier: ISC
#include "resources/artwork/Preview.h"

#include "resources/artwork/ArtworkSet.h"
#include "resources/artwork/Layout.h"
#include "resources/artwork/drawing/Palette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace qlx::artwork {
namespace {

/// Text in the displays and the name field, as the editor sets it.
void writeTexts(Picture& window, const Lettering& lettering) {
  Canvas texts(window.width(), window.height(), 1);
  const LetterStyle small{Face::Text, 9.0, 0.0, false};
  constexpr std::array<const char*, 4> kSamples{"5.00 Hz", "500 ms", "0.0 dB", "2.00 kHz"};
  for (const auto& place : layout::kKnobs) {
    const char* sample =
        place.tag == 10 ? "Front" : kSamples[static_cast<std::size_t>(place.tag) % 4];
    texts.fill(lettering.line(texts, sample, small, Lettering::Align::Centre,
                              place.display.centreX(), place.display.top + 9.0),
               {1, 1, 1});
    if (place.tag == 10) {
      texts.fill(lettering.line(texts, "Diagonal", small, Lettering::Align::Centre,
                                place.display.centreX(), place.display.top + 20.0),
                 {1, 1, 1});
    }
  }
  texts.fill(lettering.line(texts, "Jazz Club Front", {Face::Text, 11.0, 0.0, false},
                            Lettering::Align::Centre, layout::kName.centreX(), 565.0),
             srgb(palette::kInk));
  window.composite(texts.finished(), 0, window.width(), window.height(), 0, 0);
}

} // namespace

Picture previewed(const Lettering& lettering, const Pose& pose) {
  Picture window = drawn(artwork(4000), lettering, 1);
  auto put = [&](int number, int frame, const PixelRect& place) {
    const Artwork& art = artwork(number);
    window.composite(drawn(art, lettering, 1), frame * art.frameHeight, art.width, art.frameHeight,
                     place.left, place.top);
  };
  const Picture knob = drawn(artwork(2002), lettering, 1);
  for (const auto& place : layout::kKnobs) {
    double turn = pose.knobs;
    if (place.marks != 11) {
      turn = std::floor((place.marks - 1) * turn + 0.5) / (place.marks - 1) *
                 (place.high - place.low) +
             place.low;
    }
    window.composite(knob, 44 * static_cast<int>(100.0 * turn + 0.5), 44, 44, place.knob.left,
                     place.knob.top);
  }
  const int on = pose.lit ? 1 : 0;
  put(2005, static_cast<int>(64.0 * (1.0 - pose.lever) + 0.5), layout::kLever);
  put(2003, on, layout::kStop);
  put(2004, on, layout::kSpeed);
  for (const bool horn : {true, false}) {
    const PixelRect& slot = horn ? layout::kHornSlot : layout::kDrumSlot;
    Picture strip = drawn(artwork(horn ? 2008 : 2013), lettering, 1);
    double turn = 1.0 - pose.rotors + 0.5;
    if (turn > 1.0) turn -= 1.0;
    strip.composite(drawn(artwork(horn ? 2009 : 2010), lettering, 1), 0, 120, 14,
                    static_cast<int>(std::floor(turn * 418.0)) - 120, 0);
    window.composite(strip, 0, slot.width() - 1, slot.height(), slot.left, slot.top);
  }
  put(19997, pose.lit ? 4 : 0, layout::kMidiRocker);
  put(4005, pose.lit ? 12 : 17, layout::kMidiChannel);
  put(4001, on, layout::kBypass);
  put(4002, on, layout::kMode);
  put(4003, on, layout::kModulationLamp);
  put(4004, on, layout::kSustainLamp);
  put(19997, pose.lit ? 1 : 0, layout::kPresetRocker);
  const int cap = pose.lit ? 2 : 0;
  put(19993, cap, layout::kLoadBank);
  put(19994, cap, layout::kSaveBank);
  put(19990, cap, layout::kBankDefault);
  put(19998, cap, layout::kLoadPreset);
  put(19999, cap, layout::kSavePreset);
  put(19899, cap, layout::kPresetDefault);
  put(19991, cap, layout::kRecallA);
  put(19995, cap, layout::kStoreA);
  put(19992, on, layout::kRecallB);
  put(19996, on, layout::kStoreB);
  put(989, cap, layout::kManual);
  writeTexts(window, lettering);
  return window;
}

Picture contactSheet(const Lettering& lettering, int scale) {
  constexpr int kWidth = 960;
  constexpr int kGap = 4;
  constexpr int kLargestWidth = 300; // wider ones are backgrounds, not controls
  std::vector<const Artwork*> controls;
  for (const Artwork& art : artworkSet())
    if (art.width < kLargestWidth) controls.push_back(&art);
  // Low rows first: the small caps together, the lever last.
  std::ranges::stable_sort(controls, {}, &Artwork::frameHeight);
  struct Place {
    const Artwork* art;
    int frame;
    int x;
    int y;
  };
  std::vector<Place> places;
  int x = kGap;
  int y = kGap;
  int rowHeight = 0;
  for (const Artwork* art : controls) {
    for (int i = 0; i < art->frames; ++i) {
      if (x + art->width + kGap > kWidth ||
          (i == 0 && art->frameHeight > 2 * rowHeight && x > kGap)) {
        x = kGap;
        y += rowHeight + kGap;
        rowHeight = 0;
      }
      places.push_back({art, i, x, y});
      x += art->width + kGap;
      rowHeight = std::max(rowHeight, art->frameHeight);
    }
  }
  Canvas panel(kWidth, y + rowHeight + kGap, scale);
  panel.shade(panel.box(), [](Point, Colour& colour, double& cover) {
    cover = 1.0;
    colour = srgb(palette::kSteel);
  });
  Picture sheet = panel.finished();
  for (const Place& place : places) {
    const Picture frame = drawnFrame(*place.art, lettering, scale, place.frame);
    sheet.composite(frame, 0, frame.width(), frame.height(), place.x * scale, place.y * scale);
  }
  return sheet;
}

} // namespace qlx::artwork

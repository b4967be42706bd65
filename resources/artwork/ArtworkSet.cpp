// SPDX-License-Identifier: ISC
#include "resources/artwork/ArtworkSet.h"

#include "resources/artwork/Drawings.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

namespace qlx::artwork {
namespace {

constexpr std::array<Artwork, 27> kSet{{
    {989, 16, 14, 3, drawManual},
    {2002, 44, 44, 101, drawKnob},
    {2003, 26, 36, 2, drawStopKey},
    {2004, 27, 36, 2, drawSpeedKey},
    {2005, 55, 186, 65, drawLever},
    {2008, 298, 12, 1, drawRotorSlot},
    {2009, 120, 14, 1, drawHornLight},
    {2010, 120, 14, 1, drawDrumLight},
    {2013, 298, 12, 1, drawRotorSlot},
    {3999, 400, 533, 1, drawAbout},
    {4000, 401, 570, 1, drawWindow},
    {4001, 58, 14, 2, drawBypass},
    {4002, 140, 14, 2, drawMode},
    {4003, 56, 14, 2, drawModulationLamp},
    {4004, 62, 14, 2, drawSustainLamp},
    {4005, 30, 14, 18, drawMidiChannel},
    {19899, 47, 10, 3, drawPresetDefault, ".bmp"},
    {19990, 37, 10, 3, drawBankDefault, ".bmp"},
    {19991, 12, 14, 3, drawRecallA},
    {19992, 12, 14, 3, drawRecallB},
    {19993, 12, 14, 3, drawLoad},
    {19994, 12, 14, 3, drawSave},
    {19995, 12, 14, 3, drawStoreA},
    {19996, 12, 14, 3, drawStoreB},
    {19997, 31, 14, 5, drawRocker},
    {19998, 12, 14, 3, drawLoad},
    {19999, 12, 14, 3, drawSave},
}};

} // namespace

std::span<const Artwork> artworkSet() { return kSet; }

const Artwork& artwork(int number) {
  const auto found = std::ranges::find(kSet, number, &Artwork::number);
  if (found == kSet.end()) throw std::out_of_range("no image " + std::to_string(number));
  return *found;
}

Picture drawnFrame(const Artwork& artwork, const Lettering& lettering, int scale, int index) {
  Canvas canvas(artwork.width, artwork.frameHeight, scale);
  Frame frame{canvas, lettering, index};
  artwork.draw(frame);
  return canvas.finished();
}

Picture drawn(const Artwork& artwork, const Lettering& lettering, int scale) {
  Picture strip(artwork.width * scale, artwork.frameHeight * artwork.frames * scale);
  for (int i = 0; i < artwork.frames; ++i) {
    strip.place(drawnFrame(artwork, lettering, scale, i), 0, i * artwork.frameHeight * scale);
  }
  return strip;
}

} // namespace qlx::artwork

// SPDX-License-Identifier: ISC
#include "resources/artwork/Icon.h"

#include "resources/artwork/Drawings.h"
#include "resources/artwork/Fittings.h"
#include "resources/artwork/drawing/Materials.h"

#include <numeric>

namespace qlx::artwork {
namespace {

constexpr int kSide = 64; // layout pixels
constexpr Slab kCabinet{2.0, 1.0, 62.0, 61.0, 7.0};
constexpr int kSlotLeft = 9;
constexpr int kSlotTop = 5;
constexpr int kSlotWidth = 46;
constexpr int kSlotHeight = 12;
constexpr int kKnobSide = 44;
constexpr int kKnobTop = 15;
constexpr int kKnobFrame = 72; // of 0 to 100: the pointer stands to the upper right

template <class Draw>
void drawPart(Canvas& onto, const Lettering& lettering, PixelRect place, int index,
              const Draw& draw) {
  Canvas part(place.width(), place.height(), onto.scale());
  Frame frame{part, lettering, index};
  draw(frame);
  onto.overlay(part, place.left, place.top);
}

/// Means of `factor` by `factor` pixels, weighted by their alpha.
Picture reduced(const Picture& large, int factor) {
  Picture small(large.width() / factor, large.height() / factor);
  for (int y = 0; y < small.height(); ++y) {
    for (int x = 0; x < small.width(); ++x) {
      int alpha = 0;
      std::array<int, 3> colour{};
      for (int i = 0; i < factor * factor; ++i) {
        const auto& pixel = large.at(x * factor + i % factor, y * factor + i / factor);
        alpha += pixel[3];
        for (std::size_t c = 0; c < 3; ++c) colour[c] += pixel[c] * pixel[3];
      }
      auto& mean = small.at(x, y);
      for (std::size_t c = 0; c < 3 && alpha > 0; ++c)
        mean[c] = static_cast<std::uint8_t>((colour[c] + alpha / 2) / alpha);
      mean[3] = static_cast<std::uint8_t>(alpha / (factor * factor));
    }
  }
  return small;
}

} // namespace

Picture drawnIcon(const Lettering& lettering, int side) {
  const int fine = std::lcm(kSide, side);
  Canvas canvas(kSide, kSide, fine / kSide);
  const Mask cabinet = kCabinet.mask(canvas);
  canvas.fill(cabinet.moved(0.6, 1.0).blurred(0.8), {}, 0.55);
  canvas.paint(cabinet, [](Point p) { return walnut(p.x, p.y, 3) * 1.5; });
  // The upper edge catches the light, the lower one lies in shade.
  canvas.fill(cabinet.without(cabinet.moved(0.5, 0.9)), {1.0, 0.8, 0.55}, 0.30);
  canvas.fill(cabinet.without(cabinet.moved(-0.5, -0.9)), {}, 0.45);

  const PixelRect slot{kSlotLeft, kSlotTop, kSlotLeft + kSlotWidth, kSlotTop + kSlotHeight};
  drawPart(canvas, lettering, slot, 0, drawRotorSlot);
  drawPart(canvas, lettering, slot, 0, drawHornLight);
  const int left = (kSide - kKnobSide) / 2;
  drawPart(canvas, lettering, {left, kKnobTop, left + kKnobSide, kKnobTop + kKnobSide}, kKnobFrame,
           drawKnob);
  return reduced(canvas.finished(), fine / side);
}

} // namespace qlx::artwork

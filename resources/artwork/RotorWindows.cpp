// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/drawing/Palette.h"

#include <numbers>

namespace qlx::artwork {
namespace {

constexpr double kSlotHeight = 12.0;
constexpr double kLouvrePitch = 6.0;
constexpr double kLip = 0.82;       // of a pitch, where a louvre's lip is lightest
constexpr double kFirstLip = 4.5;   // as far from the left end as the last one from the right
constexpr double kShownWidth = 297; // the marker leaves the strip's last column out

/// The light that a passing rotor throws through its window: `edge` colour at the fringe, `core`
/// in the middle. It swells and fades as a raised cosine, so that passing looks like turning.
void drawRotorLight(Frame& frame, const Colour& fringe, const Colour& core) {
  const double width = frame.canvas.width();
  frame.canvas.shade(frame.canvas.box(), [&](Point p, Colour& colour, double& cover) {
    const double swell = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * p.x / width);
    const double across = std::abs(p.y - 0.5 * kSlotHeight) / (0.5 * kSlotHeight);
    const double profile = 1.0 - smoothstep(0.25, 1.15, across);
    const double light = swell * profile;
    cover = 0.94 * std::pow(light, 0.9);
    colour = mix(mix(fringe * 0.35, fringe, smoothstep(0.0, 0.6, light)), core,
                 smoothstep(0.55, 1.0, light));
  });
}

} // namespace

void drawRotorSlot(Frame& frame) {
  frame.canvas.shade(frame.canvas.box(), [&](Point p, Colour& colour, double& cover) {
    cover = 1.0;
    // A dark cavity behind slanted louvres; their lower lips catch a little light.
    const double turns = (p.x - kFirstLip) / kLouvrePitch + kLip;
    const double phase = turns - std::floor(turns);
    const double lip = smoothstep(0.62, 0.80, phase) * (1.0 - smoothstep(0.86, 1.0, phase));
    const double depth = smoothstep(0.0, 0.5 * kSlotHeight, p.y);
    const double ends = smoothstep(0.0, 10.0, std::min(p.x, kShownWidth - p.x));
    const double tone = mix(0.25, 1.0, depth) * mix(0.45, 1.0, ends);
    colour = mix(srgb(0x0a0908), srgb(0x2a221b), lip * 0.8 + 0.12) * tone;
  });
}

void drawHornLight(Frame& frame) {
  drawRotorLight(frame, srgb(palette::kAmber), srgb(palette::kAmberCore));
}

void drawDrumLight(Frame& frame) {
  drawRotorLight(frame, srgb(palette::kGarnet), srgb(palette::kGarnetCore));
}

} // namespace qlx::artwork

// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/Panels.h"
#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

namespace qlx::artwork {
namespace {

constexpr double kPanelRadius = 4.0;
constexpr double kStripRadius = 2.0;

double radiusOf(const PixelRect& panel) {
  return panel.height() < 20 ? kStripRadius : kPanelRadius;
}

/// The board a place belongs to: uprights at the sides and between cabinet and lever, mitred
/// against the top and bottom bars; rails between the panels.
Colour board(Point p) {
  const PixelRect& window = layout::kWindow;
  const double side = std::min(p.x, window.right - p.x);
  const double end = std::min(p.y, window.bottom - p.y);
  const bool between = p.x > layout::kCabinetPanel.right - 1.0 &&
                       p.x < layout::kLeverPanel.left + 1.0 && p.y > layout::kCabinetPanel.top &&
                       p.y < layout::kCabinetPanel.bottom;
  if (between) return walnut(p.y, p.x, 5);
  if (side < 5.0 && side < end) return walnut(p.y, p.x, p.x < 200.0 ? 1 : 2);
  return walnut(p.x, p.y, p.y < 200.0 ? 3 : 4);
}

void drawPanel(Canvas& canvas, const PixelRect& panel) {
  const double radius = radiusOf(panel);
  const Mask shape = slab(panel, radius).mask(canvas);
  // The wood's rounded edge: dark where it turns away from the lamp, light where it faces it.
  const Mask rim = slab(panel.grown(1), radius + 1.0).mask(canvas).without(shape);
  canvas.paint(
      rim,
      [&](Point p) {
        const bool upperLeft = p.y < panel.top || (p.x < panel.left && p.y < panel.bottom);
        return upperLeft ? srgb(0x0d0704) : srgb(0x8a6038);
      },
      0.55);
  canvas.paint(shape, crackle);
  // Hairline bevel, then the shadow that the wood throws on the panel.
  const Mask inner =
      Slab{panel.left + 1.0, panel.top + 1.0, panel.right - 1.0, panel.bottom - 1.0, radius - 1.0}
          .mask(canvas);
  const Mask hairline = shape.without(inner);
  canvas.fill(hairline.without(shape.moved(-1, -1)), srgb(palette::kSteelLit), 0.7);
  canvas.fill(hairline.without(shape.moved(1, 1)), srgb(palette::kSteelShade), 0.9);
  const Mask cast = shape.without(shape.moved(2.0, 3.0)).blurred(1.8).within(shape);
  canvas.fill(cast, {}, 0.75);
}

} // namespace

void drawCarcass(Canvas& canvas) {
  canvas.shade(canvas.box(), [](Point p, Colour& colour, double& cover) {
    cover = 1.0;
    colour = board(p);
  });
  // The outer edge is rounded over: lit at the top and left, in shade at the bottom and right.
  const Mask whole = slab(layout::kWindow, 0.1).mask(canvas);
  canvas.fill(whole.without(whole.moved(0, canvas.hairline())), srgb(0xc9a06a), 0.35);
  canvas.fill(whole.without(whole.moved(canvas.hairline(), 0)), srgb(0xc9a06a), 0.25);
  canvas.fill(whole.without(whole.moved(0, -canvas.hairline())), {}, 0.6);
  canvas.fill(whole.without(whole.moved(-canvas.hairline(), 0)), {}, 0.6);
  for (const PixelRect& panel : layout::kPanels) drawPanel(canvas, panel);
}

void drawWindow(Frame& frame) {
  drawCarcass(frame.canvas);
  drawRotorWindows(frame);
  drawNamePlate(frame);
  drawVents(frame);
  drawLeverField(frame);
  drawBottomBar(frame);
  drawPresetStrip(frame);
  drawGroups(frame);
  drawKnobPlaces(frame);
}

} // namespace qlx::artwork

// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/Fittings.h"
#include "resources/artwork/Layout.h"
#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

#include <numbers>

/// The about screen: the cabinet from the front, its rotors behind the louvres in warm light.
namespace qlx::artwork {
namespace {

using Align = Lettering::Align;

constexpr PixelRect kTopBoard{30, 22, 370, 36};
constexpr PixelRect kFront{38, 36, 362, 492};
constexpr PixelRect kPlinth{32, 492, 368, 510};
constexpr PixelRect kHornWindow{62, 54, 338, 144};
constexpr PixelRect kDrumWindow{62, 266, 338, 470};
constexpr PixelRect kPlate{52, 162, 348, 246};
// A well around the field of the version text.
constexpr PixelRect kVersion{layout::kAboutVersion.left - 6, layout::kAboutVersion.top - 3,
                             layout::kAboutVersion.left + 46, layout::kAboutVersion.bottom + 4};
constexpr double kSlatPitch = 14.0;
constexpr double kSlatHeight = 6.5;

void drawBackdrop(Canvas& canvas) {
  canvas.shade(canvas.box(), [](Point p, Colour& colour, double& cover) {
    cover = 1.0;
    // A dark room; the lamp warms the wall at the upper left, the floor begins at the plinth.
    const double lamp = std::hypot(p.x - 70.0, p.y - 60.0) / 520.0;
    colour = mix(srgb(0x3d3026), srgb(0x0d0a08), smoothstep(0.0, 1.0, lamp));
    if (p.y > kPlinth.bottom - 6.0) {
      const double far = clamp01((p.y - kPlinth.bottom + 6.0) / 29.0);
      colour = mix(srgb(0x17110c), srgb(0x2a1f16), far) * mix(1.2, 0.5, p.x / 400.0);
    }
  });
  const Mask body =
      slab({kFront.left, kTopBoard.top, kFront.right, kPlinth.bottom}, 3.0).mask(canvas);
  canvas.fill(body.moved(9, 5).blurred(8.0), {}, 0.75);
  canvas.fill(slab({kPlinth.left, kPlinth.bottom - 3, kPlinth.right, kPlinth.bottom + 3}, 2.0)
                  .mask(canvas)
                  .blurred(2.0),
              {}, 0.9);
}

/// A walnut board with rounded edges; `upright` turns its grain.
void drawBoard(Canvas& canvas, const PixelRect& box, double radius, bool upright,
               std::uint32_t piece) {
  const Mask shape = slab(box, radius).mask(canvas);
  canvas.paint(shape, [&](Point p) {
    const double light = 1.18 - 0.0011 * (p.x - 40.0) - 0.0006 * (p.y - 20.0);
    return (upright ? walnut(p.y, p.x, piece) : walnut(p.x, p.y, piece)) * light;
  });
  const Colour oil = srgb(0xd8ae78);
  canvas.fill(shape.without(shape.moved(0, 1)), oil, 0.45);
  canvas.fill(shape.without(shape.moved(1, 0)), oil, 0.28);
  canvas.fill(shape.without(shape.moved(0, -1.5)), {}, 0.55);
  canvas.fill(shape.without(shape.moved(-1.5, 0)), {}, 0.45);
}

/// What stands in a compartment, lit from inside: colour at a place, or nothing.
struct Seen {
  bool found = false;
  Direction normal;
  double warmth = 1.0;
};

/// The horn: two bells back to back on a hub that turns about an upright shaft.
Seen hornAt(Point p) {
  constexpr double kX = 200.0;
  constexpr double kY = 99.0;
  constexpr double kReach = 112.0;
  constexpr double kMouth = 34.0;
  const double along = std::abs(p.x - kX);
  const double aside = p.y - kY;
  const double outwards = p.x < kX ? -1.0 : 1.0;
  // The mouths, turned a little towards us: a rolled rim, and light that comes up the throat.
  const double across = (along - kReach) / 9.0;
  const double mouth = std::hypot(across, aside / kMouth);
  if (mouth < 1.0) {
    if (mouth > 0.84) return {true, unit({0.6 * across, 0.8 * aside / kMouth, 0.7}), 1.7};
    return {true, unit({-0.4 * across, -0.5 * aside / kMouth, 0.8}),
            mix(2.6, 0.50, smoothstep(0.0, 0.8, mouth))};
  }
  // The hub, a ball on the shaft, before the bells' throats.
  const double hub = std::hypot((p.x - kX) / 16.0, aside / 19.0);
  if (hub < 1.0)
    return {true, unit({(p.x - kX) / 16.0, aside / 19.0, std::sqrt(1.0 - hub * hub) + 0.1}), 1.05};
  if (along < kReach) {
    const double t = along / kReach;
    const double half = 6.5 + 2.5 * t + 24.4 * std::pow(t, 3.2);
    if (std::abs(aside) < half) {
      const double u = aside / half;
      const double flare = -outwards * std::min(1.2, 2.6 * t * t) * 0.35;
      return {true, unit({flare, 0.8 * u, std::sqrt(1.0 - u * u) + 0.15}), 1.0};
    }
  }
  if (along < 4.0) {
    const double u = (p.x - kX) / 4.0;
    return {true, unit({u, 0.0, std::sqrt(1.0 - u * u)}), 0.7};
  }
  return {};
}

/// The drum: a wide cylinder on an upright shaft, seen from a little above, with its scoop turned
/// towards us: a wall that curves from the mouth's near edge back up to the upper rim, its hollow
/// lit from the loudspeaker above.
Seen drumAt(Point p) {
  constexpr double kX = 200.0;
  constexpr double kTop = 302.0;
  constexpr double kBottom = 440.0;
  constexpr double kRadius = 112.0;
  constexpr double kOval = 0.13; // height of a rim's ellipse over its width
  constexpr double kRim = 9.0;
  const double u = (p.x - kX) / kRadius;
  const double shaft = (p.x - kX) / 5.0;
  const Seen rod{true, unit({shaft, 0.0, std::sqrt(std::max(0.0, 1.0 - shaft * shaft))}), 0.7};
  if (std::abs(u) >= 1.0) return {};
  const double sag = kOval * kRadius * std::sqrt(1.0 - u * u);
  if (p.y > kBottom + sag) return std::abs(shaft) < 1.0 ? rod : Seen{};
  if (p.y < kTop + sag) {
    // The lid: its ellipse, with the shaft rising from the middle.
    if (std::abs(shaft) < 1.0 && p.y < kTop + 2.0) return rod;
    if (p.y < kTop - sag) return {};
    const double v = (p.y - kTop) / (kOval * kRadius);
    const double r = std::hypot(u, v);
    return {true, unit({0.1 * u, -0.75, 0.66}), r > 0.90 ? 1.35 : mix(0.75, 0.5, r)};
  }
  const Direction side{u, 0.0, std::sqrt(1.0 - u * u)};
  const double below = p.y - kTop - sag; // from the upper rim down the wall
  const double height = kBottom - kTop;
  if (below < kRim || below > height - kRim) {
    const double edge = below < kRim ? below : height - below;
    const double bulge = 2.0 * edge / kRim - 1.0;
    return {true, unit({side.x, 0.5 * bulge * (below < kRim ? 1.0 : -1.0), side.z}), 1.15};
  }
  // The scoop's mouth: from the near upright edge on the left to the cut edge, which sweeps down
  // the wall from the upper right to the lower middle.
  const double t = (below - kRim) / (height - 2.0 * kRim);
  const double left = -0.74;
  const double right = 0.70 - 0.62 * t * t;
  const double w = (2.0 * u - left - right) / (right - left);
  if (std::abs(w) > 1.0) {
    const bool cut = w > 1.0 && u - right < 0.045;
    return {true, unit(side), cut ? 1.7 : 0.80};
  }
  // Inside, a wall curves from the back, under the upper rim, down to the cut edge; it is lit where
  // it lies open to the loudspeaker above and dark under the rim and behind the near edge.
  const double bend = t * std::numbers::pi / 2.0;
  const double behind = smoothstep(-1.0, -0.15, w);
  const double overhang = smoothstep(0.0, 0.22, t);
  const double lamp =
      std::exp(-std::pow((t - 0.55) / 0.33, 2.0) - std::pow((w - 0.35) / 0.55, 2.0));
  return {true, unit({-0.5 - 0.3 * w, -std::sin(bend), 0.25 + std::cos(bend)}),
          mix(0.06, 0.35 + 1.9 * lamp, behind * overhang)};
}

void drawWindowOf(Canvas& canvas, const PixelRect& window, Seen (*seenAt)(Point),
                  const Colour& glow, std::uint32_t piece) {
  const Mask opening = slab(window, 5.0).mask(canvas);
  canvas.fill(slab(window.grown(1), 6.0).mask(canvas).without(opening), srgb(0xc79a62), 0.35);
  constexpr double kGap = kSlatPitch - kSlatHeight;
  const double centreY = window.centreY();
  Material rotor = bakelite();
  rotor.body = srgb(0x7a5a3c);
  canvas.paint(opening, [&](Point p) {
    const double x = (p.x - window.centreX()) / (0.5 * window.width());
    const double y = (p.y - centreY) / (0.5 * window.height());
    const double pool = std::exp(-1.6 * (x * x + 0.8 * y * y));
    const Seen seen = seenAt(p);
    const Colour air = glow * (0.07 * pool) + Colour{0.003, 0.002, 0.002};
    if (!seen.found) return air;
    const Colour warm = mix(glow, Colour{1.0, 0.9, 0.75}, 0.35);
    return lit(rotor, seen.normal) * warm * (1.5 * seen.warmth * (0.15 + pool)) + air * 0.4;
  });
  // Slats: rounded on top, throwing the gap below them into shade.
  const double slats = std::floor((window.height() - kGap) / kSlatPitch);
  const double first = window.top + 0.5 * (window.height() - slats * kSlatPitch + kGap);
  const auto count = static_cast<int>(std::ceil((window.bottom - kGap - first) / kSlatPitch));
  for (int i = 0; i < count; ++i) {
    const double top = first + i * kSlatPitch;
    const Mask gapShade = Slab{static_cast<double>(window.left), top + kSlatHeight,
                               static_cast<double>(window.right), top + kSlatHeight + 3.0, 0.1}
                              .mask(canvas)
                              .blurred(0.8)
                              .within(opening);
    canvas.fill(gapShade, {}, 0.7);
    const Mask slat = Slab{static_cast<double>(window.left), top, static_cast<double>(window.right),
                           top + kSlatHeight, 2.5}
                          .mask(canvas)
                          .within(opening);
    canvas.paint(slat, [&](Point p) {
      const double t = (p.y - top) / kSlatHeight * 2.0 - 1.0;
      const double facing = clamp01(0.62 - 0.62 * t + 0.15 * std::sqrt(std::max(0.0, 1.0 - t * t)));
      const double light = 1.15 - 0.0012 * (p.x - 60.0);
      const auto board = piece + static_cast<std::uint32_t>(top);
      return walnut(p.x, p.y, board) * (light * mix(0.25, 1.25, facing));
    });
    canvas.fill(slat.without(slat.moved(0, 1)), srgb(0xe0b883), 0.35);
  }
  // The window is let in: its upper left edge shades slats and gaps alike.
  canvas.fill(opening.without(opening.moved(3.0, 5.0)).blurred(2.4).within(opening), {}, 0.85);
  const Mask rim = slab(window.grown(2), 7.0).mask(canvas).without(opening);
  canvas.fill(rim.without(rim.moved(1, 1)), {}, 0.5);
}

void drawTitle(Frame& frame) {
  Canvas& canvas = frame.canvas;
  layPlate(canvas, slab(kPlate, 5.0), 0.66, 0.40);
  for (const auto& [x, y] : {std::pair{60.0, 169.5}, std::pair{340.0, 169.5},
                             std::pair{60.0, 238.5}, std::pair{340.0, 238.5}}) {
    screw(canvas, {x, y}, 3.0, 20.0 + 0.7 * x + 0.3 * y);
  }
  engrave(canvas, frame.lettering.line(canvas, "QLX BREZAN", {Face::Plate, 24.0, 2.0, false},
                                       Align::Left, 72.0, 197.0));
  engrave(canvas, canvas.mask({72, 208, 328, 210}, [](cairo_t* cr) {
    cairo_rectangle(cr, 72.0, 208.0, 256.0, 1.0);
    cairo_fill(cr);
  }));
  // Letters this small are inlaid, not cut: a cut's lit edge would double their stems.
  canvas.fill(frame.lettering.line(canvas, "Rotary speaker: horn, drum, cabinet and room",
                                   {Face::Text, 11.5, 0.15, true}, Align::Centre, 200.0, 227.0),
              srgb(0x241704), 0.94);
  sinkWell(canvas, slab(kVersion, 3.0).mask(canvas), srgb(palette::kWell));
}

} // namespace

void drawAbout(Frame& frame) {
  Canvas& canvas = frame.canvas;
  drawBackdrop(canvas);
  drawBoard(canvas, kFront, 2.0, true, 21);
  // Inner face between the two uprights, its grain lying.
  drawBoard(canvas, {kFront.left + 14, kFront.top, kFront.right - 14, kFront.bottom}, 0.5, false,
            22);
  drawBoard(canvas, kTopBoard, 4.0, false, 23);
  canvas.fill(slab({kFront.left, kTopBoard.bottom, kFront.right, kTopBoard.bottom + 5}, 0.5)
                  .mask(canvas)
                  .blurred(1.5),
              {}, 0.55);
  drawBoard(canvas, kPlinth, 3.0, false, 24);
  drawWindowOf(canvas, kHornWindow, hornAt, srgb(palette::kAmber), 30);
  drawWindowOf(canvas, kDrumWindow, drumAt, srgb(palette::kAmber), 60);
  drawTitle(frame);
}

} // namespace qlx::artwork

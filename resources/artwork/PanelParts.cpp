// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/Panels.h"
#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

#include <numbers>

namespace qlx::artwork {
namespace {

using Align = Lettering::Align;

void drawHornEmblem(Canvas& canvas, double x, double y) {
  // The mouth of a horn, seen from the side.
  const Mask mark = canvas.mask([&](cairo_t* cr) {
    cairo_move_to(cr, x, y - 1.0);
    cairo_curve_to(cr, x + 7.0, y - 1.2, x + 9.5, y - 2.5, x + 11.5, y - 5.5);
    cairo_line_to(cr, x + 11.5, y + 5.5);
    cairo_curve_to(cr, x + 9.5, y + 2.5, x + 7.0, y + 1.2, x, y + 1.0);
    cairo_close_path(cr);
    cairo_fill(cr);
    cairo_set_line_width(cr, 1.0);
    cairo_move_to(cr, x + 13.5, y - 4.0);
    cairo_curve_to(cr, x + 15.2, y - 2.0, x + 15.2, y + 2.0, x + 13.5, y + 4.0);
    cairo_stroke(cr);
  });
  print(canvas, mark, srgb(palette::kBrass));
}

void drawDrumEmblem(Canvas& canvas, double x, double y) {
  // A drum from above: its wall, and the solid half that the scoop leaves.
  const Mask mark = canvas.mask([&](cairo_t* cr) {
    cairo_set_line_width(cr, 1.2);
    cairo_arc(cr, x + 6.0, y, 4.9, 0.0, 2.0 * std::numbers::pi);
    cairo_stroke(cr);
    cairo_arc(cr, x + 6.0, y, 4.9, 0.25 * std::numbers::pi, 1.25 * std::numbers::pi);
    cairo_curve_to(cr, x + 5.0, y - 2.0, x + 4.5, y + 2.5, x + 9.5, y + 3.5);
    cairo_close_path(cr);
    cairo_fill(cr);
  });
  print(canvas, mark, srgb(palette::kBrass));
}

/// The opening of a slot pressed into the panel, its lips already drawn.
Mask pressedSlot(Canvas& canvas, const Slab& place) {
  Mask opening = place.mask(canvas);
  canvas.fill(opening.moved(0, 1).without(opening), srgb(0x4a4541), 0.8);
  canvas.fill(opening.moved(0, -1.5).blurred(0.8).without(opening), {}, 0.6);
  return opening;
}

void drawRotorWindow(Frame& frame, const PixelRect& place, const char* name) {
  Canvas& canvas = frame.canvas;
  // The marker shows all but the last column of its place.
  const PixelRect slot{place.left, place.top, place.right - 1, place.bottom};
  // The bezel with its end caps, then the same cavity that the marker's strip shows.
  const Slab bezel{slot.left - 3.0, slot.top - 2.0, slot.right + 3.0, slot.bottom + 2.0, 3.0};
  const Mask outer = bezel.mask(canvas);
  const Mask opening = slab(slot, 1.0).mask(canvas);
  canvas.fill(outer.moved(0, 1).without(outer), srgb(palette::kSteelLit), 0.8);
  canvas.paint(outer, [&](Point p) {
    const double t = (p.y - bezel.top) / (bezel.bottom - bezel.top);
    return mix(srgb(0x45403b), srgb(0x14110f), smoothstep(0.0, 1.0, t));
  });
  canvas.fill(outer.without(outer.moved(0, 1)), srgb(0x6b635b), 0.8);
  canvas.fill(outer.without(outer.moved(0, -1)), {}, 0.6);
  const Mask lip = opening.moved(0, 1).without(opening);
  canvas.fill(lip, srgb(0x5d554d), 0.8);
  canvas.fill(opening, {});
  Canvas cavity(slot.width(), slot.height(), canvas.scale());
  Frame inside{cavity, frame.lettering, 0};
  drawRotorSlot(inside);
  canvas.overlay(cavity, slot.left, slot.top);
  print(canvas,
        frame.lettering.line(canvas, name, headingStyle(2.0), Align::Left, 36.0, slot.top + 10.0),
        mix(srgb(palette::kBrass), srgb(palette::kBrassLit), 0.35));
}

} // namespace

void drawRotorWindows(Frame& frame) {
  drawRotorWindow(frame, layout::kHornSlot, "HORN");
  drawRotorWindow(frame, layout::kDrumSlot, "DRUM");
  drawHornEmblem(frame.canvas, 14.0, layout::kHornSlot.centreY());
  drawDrumEmblem(frame.canvas, 16.0, layout::kDrumSlot.centreY());
}

void drawNamePlate(Frame& frame) {
  Canvas& canvas = frame.canvas;
  const PixelRect& plate = layout::kNamePlate;
  layPlate(canvas, slab(plate, 3.0), 0.62, 0.38);
  screw(canvas, {plate.left + 8.5, plate.centreY()}, 3.4, 35.0);
  screw(canvas, {plate.right - 8.5, plate.centreY()}, 3.4, 110.0);
  const LetterStyle style{Face::Plate, 14.0, 3.0, false};
  engrave(canvas, frame.lettering.line(canvas, "QLX BREZAN", style, Align::Centre, plate.centreX(),
                                       plate.top + 16.0));
  print(canvas,
        frame.lettering.line(canvas, "ROTARY SPEAKER", captionStyle(3.0), Align::Centre,
                             plate.centreX(), plate.top - 7.0),
        srgb(palette::kIvoryDim));
}

void drawVents(Frame& frame) {
  Canvas& canvas = frame.canvas;
  // Louvres beside the plate, where the valves' warmth shows.
  for (int i = 0; i < 5; ++i) {
    const double y = 140.0 + 8.0 * i;
    const Mask opening = pressedSlot(canvas, {204.0, y, 308.0, y + 4.0, 2.0});
    canvas.paint(opening, [&](Point p) {
      auto valve = [&](double x) {
        return std::exp(-std::pow((p.x - x) / 11.0, 2.0) - std::pow((p.y - 160.0) / 14.0, 2.0));
      };
      const double warmth = (valve(236.0) + valve(276.0)) * smoothstep(y, y + 3.0, p.y);
      return mix(srgb(0x060504), srgb(0x8a3c12), 0.85 * warmth);
    });
  }
  // Two rows of short slots along the foot let the air in.
  for (int i = 0; i < 18; ++i) {
    for (const int row : {0, 1}) {
      if (row == 1 && i == 17) continue;
      const double left = 21.0 + 16.4 * i + 8.2 * row;
      const double y = 371.0 + 8.0 * row;
      canvas.fill(pressedSlot(canvas, {left, y, left + 10.0, y + 4.0, 2.0}), srgb(0x050404));
    }
  }
}

void drawLeverField(Frame& frame) {
  Canvas& canvas = frame.canvas;
  constexpr double kAxisY = 244.0;
  constexpr double kArm = 88.7;
  const double centreX = layout::kLever.centreX();
  layPlate(canvas, {centreX - 20.5, 166.0, centreX + 20.5, 322.0, 6.0}, 0.50, 0.30);
  // An engraved line runs round it.
  engrave(canvas, canvas.mask(layout::kLever, [&](cairo_t* cr) {
    roundedRectangle(cr, centreX - 17.0, 169.5, centreX + 17.0, 318.5, 3.5);
    cairo_set_line_width(cr, 1.0);
    cairo_stroke(cr);
  }));
  screw(canvas, {centreX, 175.5}, 2.8, 60.0);
  screw(canvas, {centreX, 312.5}, 2.8, 150.0);
  print(canvas,
        frame.lettering.line(canvas, "TREMOLO", captionStyle(), Align::Centre, centreX, 161.0),
        srgb(palette::kIvory));
  print(canvas,
        frame.lettering.line(canvas, "CHORALE", captionStyle(), Align::Centre, centreX, 334.0),
        srgb(palette::kIvory));
  const Mask scale = canvas.mask([&](cairo_t* cr) {
    for (int step = -4; step <= 4; ++step) {
      const double y = kAxisY - kArm * std::sin(step * std::numbers::pi / 18.0);
      const double length = step % 4 == 0 ? 7.0 : 4.0;
      cairo_rectangle(cr, 383.0, std::round(y - 0.5), length, 1.0);
    }
    cairo_fill(cr);
  });
  print(canvas, scale, srgb(palette::kIvory));
  for (const auto& [word, x] : {std::pair{"SPEED", 343.5}, std::pair{"STOP", 372.0}}) {
    print(canvas, frame.lettering.line(canvas, word, captionStyle(), Align::Centre, x, 346.0),
          srgb(palette::kIvory));
  }
}

void drawBottomBar(Frame& frame) {
  Canvas& canvas = frame.canvas;
  auto seat = [&](double left, double right, double radius) {
    const Mask shape =
        Slab{left, layout::kMode.top - 1.0, right, layout::kMode.bottom + 1.0, radius}.mask(canvas);
    canvas.fill(shape.moved(0, 1).without(shape), srgb(palette::kSteelLit), 0.7);
    canvas.fill(shape, srgb(0x070606));
  };
  seat(38.0, 69.0, 3.0);
  seat(195.0, 335.0, 3.5);
  seat(340.0, 396.0, 3.5);
  const Slab channel{7.0, 536.0, 35.0, 550.0, 2.5};
  sinkWell(canvas, channel.mask(canvas), srgb(palette::kWell));
}

void drawPresetStrip(Frame& frame) {
  Canvas& canvas = frame.canvas;
  auto trough = [&](double left, double right) {
    const Mask shape = Slab{left, 553.5, right, 568.5, 2.5}.mask(canvas);
    canvas.fill(shape, srgb(0x090808));
  };
  trough(3.5, 66.5);
  trough(68.5, 140.5);
  trough(277.5, 309.5);
  trough(310.5, 345.5);
  trough(348.5, 383.5);
  for (const double x : {328.0, 366.0}) {
    canvas.fill(canvas.mask([&](cairo_t* cr) {
      cairo_move_to(cr, x - 2.0, 558.0);
      cairo_line_to(cr, x + 2.0, 561.0);
      cairo_line_to(cr, x - 2.0, 564.0);
      cairo_close_path(cr);
      cairo_fill(cr);
    }),
                srgb(palette::kIvoryDim), 0.8);
  }
  // The name on paper under a rim.
  const Mask paper = Slab{145.0, 554.0, 263.0, 568.0, 1.5}.mask(canvas);
  canvas.fill(paper.moved(0, 1).without(paper), srgb(palette::kSteelLit));
  canvas.paint(paper, [](Point p) {
    return mix(srgb(0xb8ab88), srgb(palette::kPaper), smoothstep(554.0, 561.0, p.y));
  });
  canvas.fill(paper.without(paper.moved(1.0, 2.0)).blurred(1.0).within(paper), srgb(0x1a1006),
              0.85);
  canvas.fill(paper.without(paper.moved(-0.5, -0.5)).within(paper), srgb(0x1a1006), 0.25);
  const Mask arrow = canvas.mask([](cairo_t* cr) {
    cairo_move_to(cr, 266.0, 559.5);
    cairo_line_to(cr, 272.0, 559.5);
    cairo_line_to(cr, 269.0, 563.0);
    cairo_close_path(cr);
    cairo_fill(cr);
  });
  pushCap(canvas, slab(layout::kPresetMenu, 2.5), CapState::Rest, arrow);
}

} // namespace qlx::artwork

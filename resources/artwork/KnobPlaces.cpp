// SPDX-License-Identifier: ISC
#include "resources/artwork/Panels.h"
#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

#include <array>
#include <numbers>
#include <vector>

namespace qlx::artwork {
namespace {

constexpr double kSeatRadius = 20.0;
constexpr double kTickFrom = 20.2;
constexpr double kTickTo = 22.3;
constexpr int kCaptionGap = 4; // from a caption's baseline to its knob

void drawSeat(Canvas& canvas, const PixelRect& knob) {
  const Point centre{knob.centreX(), knob.centreY()};
  const double edge = canvas.density();
  canvas.shade(knob.grown(12), [&](Point p, Colour& colour, double& cover) {
    // The knob's long shadow on the panel.
    colour = {};
    const double distance = std::hypot(p.x - centre.x - 3.2, p.y - centre.y - 4.4);
    cover = 0.55 * (1.0 - smoothstep(14.5, 24.0, distance));
  });
  canvas.shade(knob, [&](Point p, Colour& colour, double& cover) {
    // A shallow turned ring: its wall is dark towards the lamp and catches it opposite.
    const double x = p.x - centre.x;
    const double y = p.y - centre.y;
    const double r = std::hypot(x, y);
    const double towards = r > 0.0 ? (x + y) / (std::numbers::sqrt2 * r) : 0.0;
    const double wall = clamp01((kSeatRadius - r) * edge + 0.5);
    colour = mix(srgb(palette::kSteelShade), srgb(0x4a4642), smoothstep(-0.1, 1.0, towards));
    const double floor = clamp01((kSeatRadius - 0.7 - r) * edge + 0.5);
    colour = mix(colour, srgb(0x0b0a0a), floor);
    cover = wall;
  });
}

void drawTicks(Canvas& canvas, const layout::KnobPlace& place) {
  // A stepped knob stops at each of its ticks; of the others only both ends and the middle stand
  // out, so that the rings of neighbours don't meet as colons.
  const auto standsOut = [&](int i) {
    return place.marks != layout::kPlainMarks || i % (layout::kPlainMarks / 2) == 0;
  };
  const auto ticks = [&](bool main) {
    return canvas.mask(place.knob.grown(1), [&](cairo_t* cr) {
      cairo_set_line_width(cr, main ? 1.5 : 1.0);
      cairo_translate(cr, place.knob.centreX(), place.knob.centreY());
      for (int i = 0; i < place.marks; ++i) {
        if (standsOut(i) != main) continue;
        const double turn = mix(place.low, place.high, static_cast<double>(i) / (place.marks - 1));
        const double angle = (turn - 0.5) * 1.5 * std::numbers::pi;
        cairo_move_to(cr, kTickFrom * std::sin(angle), -kTickFrom * std::cos(angle));
        cairo_line_to(cr, kTickTo * std::sin(angle), -kTickTo * std::cos(angle));
      }
      cairo_stroke(cr);
    });
  };
  canvas.fill(ticks(false), srgb(palette::kIvoryDim), 0.5);
  canvas.fill(ticks(true), srgb(palette::kIvory));
}

/// The wells: displays that overlap share one.
std::vector<PixelRect> wells() {
  std::vector<PixelRect> result;
  for (const auto& place : layout::kKnobs) {
    const PixelRect well = place.display.grown(1);
    PixelRect* last = result.empty() ? nullptr : &result.back();
    const bool shared = last != nullptr && last->top == well.top && well.left < last->right &&
                        well.left > last->left;
    if (shared) {
      last->right = well.right;
    } else {
      result.push_back(well);
    }
  }
  return result;
}

} // namespace

void drawKnobPlaces(Frame& frame) {
  Canvas& canvas = frame.canvas;
  for (const PixelRect& well : wells()) {
    sinkWell(canvas, slab(well, 2.0).mask(canvas), srgb(palette::kWell));
  }
  for (const auto& place : layout::kKnobs) drawSeat(canvas, place.knob);
  for (const auto& place : layout::kKnobs) {
    drawTicks(canvas, place);
    print(canvas,
          frame.lettering.line(canvas, place.caption, captionStyle(), Lettering::Align::Centre,
                               place.knob.centreX(), place.knob.top - kCaptionGap),
          srgb(palette::kIvory));
  }
}

void drawRule(Frame& frame, int left, int right, int y, const char* name, double tracking) {
  constexpr double kNameGap = 5.0;
  constexpr double kDrop = 2.0;
  Canvas& canvas = frame.canvas;
  double gapLeft = 0.5 * (left + right);
  double gapRight = gapLeft;
  const Colour colour = srgb(palette::kBrass);
  if (name != nullptr) {
    const LetterStyle style = headingStyle(tracking);
    const double width = frame.lettering.extent(name, style, canvas.scale()).width();
    gapLeft -= 0.5 * width + kNameGap;
    gapRight += 0.5 * width + kNameGap;
    print(canvas,
          frame.lettering.line(canvas, name, style, Lettering::Align::Centre, 0.5 * (left + right),
                               y + 4.0),
          mix(colour, srgb(palette::kBrassLit), 0.35));
  }
  const Mask rule = canvas.mask({left, y, right, y + 5}, [&](cairo_t* cr) {
    const double leftEnd = std::floor(gapLeft);
    const double rightStart = name == nullptr ? leftEnd : std::ceil(gapRight);
    if (leftEnd > left) {
      cairo_rectangle(cr, left, y, leftEnd - left, 1.0);
      cairo_rectangle(cr, left, y + 1.0, 1.0, kDrop);
    }
    if (rightStart < right) {
      cairo_rectangle(cr, rightStart, y, right - rightStart, 1.0);
      cairo_rectangle(cr, right - 1.0, y + 1.0, 1.0, kDrop);
    }
    cairo_fill(cr);
  });
  print(canvas, rule, colour, 0.85);
}

void drawGroups(Frame& frame) {
  struct Group {
    int left;
    int right;
    int y;
    const char* name;
    double tracking = 1.0;
  };
  constexpr std::array<Group, 13> kGroups{{
      {20, 109, 36, nullptr},
      {134, 223, 36, nullptr},
      {248, 382, 36, nullptr},
      {16, 60, 183, nullptr},
      {74, 253, 183, "TONE"},
      {265, 313, 183, "MICS", 0.5},
      {20, 154, 283, "AMPLIFIER"},
      {178, 312, 283, "ROOM"},
      {20, 109, 428, nullptr},
      {134, 223, 428, nullptr},
      {248, 382, 428, nullptr},
      {332, 390, 140, "LEVER"},
      {8, 183, 529, "MIDI"},
  }};
  for (const Group& group : kGroups) {
    drawRule(frame, group.left, group.right, group.y, group.name, group.tracking);
  }
}

} // namespace qlx::artwork

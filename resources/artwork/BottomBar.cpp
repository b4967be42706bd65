// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/Fittings.h"
#include "resources/artwork/Layout.h"
#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

#include <array>
#include <string>
#include <string_view>

/// The bottom bar's controls: MIDI channel, rocker, lamps, mode and bypass.
namespace qlx::artwork {
namespace {

using Align = Lettering::Align;

/// Segments of a seven-segment cell: a top, b upper right, c lower right, d bottom, e lower left,
/// f upper left, g middle, as bits 0 to 6.
unsigned segmentsOf(char c) {
  constexpr std::array<unsigned, 10> kDigits{0x3f, 0x06, 0x5b, 0x4f, 0x66,
                                             0x6d, 0x7d, 0x07, 0x7f, 0x6f};
  if (c >= '0' && c <= '9') return kDigits[static_cast<std::size_t>(c - '0')];
  switch (c) {
  case 'O': return 0x3f;
  case 'F': return 0x71;
  case 'A': return 0x77;
  case 'L': return 0x38;
  default: return 0;
  }
}

/// The bars of one cell of 5 x 10 pixels at (x, y), one pixel thick, in whole pixels.
void traceSegments(cairo_t* cr, unsigned segments, double x, double y) {
  constexpr double kBars[7][4] = {{1, 0, 3, 1}, {4, 1, 1, 3}, {4, 5, 1, 4}, {1, 9, 3, 1},
                                  {0, 5, 1, 4}, {0, 1, 1, 3}, {1, 4, 3, 1}};
  for (std::size_t i = 0; i < 7; ++i) {
    if ((segments >> i & 1U) == 0) continue;
    cairo_rectangle(cr, x + kBars[i][0], y + kBars[i][1], kBars[i][2], kBars[i][3]);
  }
}

void lampWithWord(Frame& frame, double lampX, std::string_view word, double wordX,
                  double tracking) {
  const bool on = frame.index == 1;
  signalLamp(frame.canvas, {lampX, 7.0}, 2.6, on, srgb(palette::kLampOff), srgb(palette::kLampOn));
  const Mask letters =
      frame.lettering.line(frame.canvas, word, captionStyle(tracking), Align::Left, wordX, 11.0);
  if (on) frame.canvas.fill(letters.blurred(1.0), srgb(palette::kLampOn), 0.35);
  print(frame.canvas, letters, srgb(on ? 0xffe9c4 : palette::kUnlit));
}

/// A cap for a whole button: stands proud at rest, sunk and lit when on.
void buttonCap(Canvas& canvas, const Slab& place, bool on) {
  const Mask whole = place.mask(canvas);
  const Mask inner =
      Slab{place.left + 1, place.top + 1, place.right - 1, place.bottom - 1, place.radius - 1}.mask(
          canvas);
  canvas.fill(whole, srgb(0x060505));
  const double height = place.bottom - place.top;
  canvas.paint(inner, [&](Point p) {
    const double t = (p.y - place.top) / height;
    return srgb(palette::kBakelite) * (on ? mix(0.45, 0.75, t) : mix(1.25, 0.65, t));
  });
  if (on) {
    canvas.fill(inner.without(inner.moved(0, 1)), {}, 0.6);
  } else {
    canvas.fill(inner.without(inner.moved(0, 1)), srgb(palette::kBakeliteLit), 0.85);
    canvas.fill(inner.without(inner.moved(0, -1)), {}, 0.4);
  }
}

} // namespace

void drawMidiChannel(Frame& frame) {
  constexpr int kChannels = 16;
  std::string text = frame.index == 0          ? "OFF"
                     : frame.index > kChannels ? "ALL"
                                               : std::to_string(frame.index);
  Canvas& canvas = frame.canvas;
  sinkWell(canvas, Slab{1, 0, 29, 14, 2.5}.mask(canvas), srgb(palette::kWell));
  constexpr double kCell = 8.0;
  constexpr double kLeft = 4.0;
  constexpr double kTop = 2.0;
  const std::size_t first = 3 - text.size();
  const Mask ghost = canvas.mask([&](cairo_t* cr) {
    for (int i = 0; i < 3; ++i) traceSegments(cr, 0x7f, kLeft + kCell * i, kTop);
    cairo_fill(cr);
  });
  const Mask lit = canvas.mask([&](cairo_t* cr) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      traceSegments(cr, segmentsOf(text[i]), kLeft + kCell * static_cast<double>(first + i), kTop);
    }
    cairo_fill(cr);
  });
  canvas.fill(ghost, srgb(palette::kAmber), 0.025);
  canvas.glow(lit.blurred(1.3), srgb(palette::kAmber), 0.25);
  canvas.fill(lit, mix(srgb(palette::kAmber), srgb(palette::kAmberCore), 0.15));
}

void drawRocker(Frame& frame) {
  Canvas& canvas = frame.canvas;
  // Frames: rest, hover left, hover right, pressed left, pressed right.
  auto state = [&](bool left) {
    if (frame.index == (left ? 3 : 4)) return CapState::Pressed;
    return frame.index == (left ? 1 : 2) ? CapState::Hover : CapState::Rest;
  };
  for (const bool left : {true, false}) {
    const double from = left ? 1.0 : 15.0;
    const double tip = left ? 6.0 : 25.0;
    const double base = left ? 10.0 : 21.0;
    const Mask arrow = canvas.mask([&](cairo_t* cr) {
      cairo_move_to(cr, tip, 7.0);
      cairo_line_to(cr, base, 3.5);
      cairo_line_to(cr, base, 10.5);
      cairo_close_path(cr);
      cairo_fill(cr);
    });
    pushCap(canvas, {from, 0.0, from + 15.0, 14.0, 2.5}, state(left), arrow);
  }
}

void drawSustainLamp(Frame& frame) { lampWithWord(frame, 8.5, "SUSTAIN", 15.0, 0.05); }

void drawModulationLamp(Frame& frame) { lampWithWord(frame, 8.5, "WHEEL", 15.0, 0.05); }

void drawMode(Frame& frame) {
  Canvas& canvas = frame.canvas;
  const bool brilliant = frame.index == 1;
  buttonCap(canvas, {1, 0, 139, 14, 3}, false);
  canvas.fill(canvas.mask([](cairo_t* cr) {
    cairo_rectangle(cr, 69.0, 2.0, 1.0, 10.0);
    cairo_fill(cr);
  }),
              {}, 0.7);
  struct Half {
    const char* word;
    double lampX;
    double centre;
    bool on;
  };
  for (const Half& half :
       {Half{"LOW CPU", 12.0, 40.0, !brilliant}, Half{"BRILLIANT", 78.0, 109.5, brilliant}}) {
    signalLamp(canvas, {half.lampX, 7.0}, 2.2, half.on, srgb(0x33240f), srgb(palette::kAmber));
    const Mask letters = frame.lettering.line(canvas, half.word, headingStyle(0.0), Align::Centre,
                                              half.centre, 11.0);
    if (half.on) canvas.fill(letters.blurred(1.2), srgb(palette::kAmber), 0.35);
    print(canvas, letters, srgb(half.on ? 0xffdf9e : palette::kUnlit));
  }
}

void drawBypass(Frame& frame) {
  Canvas& canvas = frame.canvas;
  const bool on = frame.index == 1;
  buttonCap(canvas, {1, 0, 55, 14, 3}, on);
  signalLamp(canvas, {9.0, 7.0}, 2.2, on, srgb(palette::kLampOff), srgb(palette::kLampOn));
  const Mask letters =
      frame.lettering.line(canvas, "BYPASS", headingStyle(0.0), Align::Centre, 33.0, 11.0);
  if (on) canvas.fill(letters.blurred(1.2), srgb(palette::kLampOn), 0.35);
  print(canvas, letters, srgb(on ? 0xffd9b8 : palette::kUnlit));
}

} // namespace qlx::artwork

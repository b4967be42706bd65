// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/Fittings.h"
#include "resources/artwork/drawing/Palette.h"

#include <string_view>

/// The buttons of the preset strip; frames: rest, hover, pressed.
namespace qlx::artwork {
namespace {

using Align = Lettering::Align;

constexpr Slab kSmallCap{0, 0, 12, 14, 2.5};

CapState stateOf(const Frame& frame) {
  return frame.index == 2 ? CapState::Pressed : frame.index == 1 ? CapState::Hover : CapState::Rest;
}

/// An arrow of five pixels' width pointing down, tip at (x, y).
void traceDownArrow(cairo_t* cr, double x, double y, double shaft) {
  cairo_rectangle(cr, x - 0.5, y - 3.0 - shaft, 1.0, shaft + 0.5);
  cairo_move_to(cr, x, y);
  cairo_line_to(cr, x - 2.75, y - 3.0);
  cairo_line_to(cr, x + 2.75, y - 3.0);
  cairo_close_path(cr);
}

void wordCap(Frame& frame, double width, std::string_view word) {
  Canvas& canvas = frame.canvas;
  const Mask letters =
      frame.lettering.line(canvas, word, headingStyle(0.0), Align::Centre, width / 2.0, 9.0);
  pushCap(canvas, {0.0, -1.0, width, 11.0, 1.0}, stateOf(frame), letters);
}

void memoryCap(Frame& frame, std::string_view letter, bool store) {
  Canvas& canvas = frame.canvas;
  const CapState state = stateOf(frame);
  const Mask mark =
      frame.lettering.line(canvas, letter, headingStyle(), Align::Centre, store ? 5.0 : 6.0, 11.0);
  pushCap(canvas, kSmallCap, state, mark);
  if (store) {
    // The recording dot.
    canvas.fill(canvas.mask([](cairo_t* cr) {
      cairo_arc(cr, 9.5, 3.7, 1.5, 0.0, 6.2831853);
      cairo_fill(cr);
    }),
                srgb(palette::kLampOn));
  } else if (state != CapState::Pressed) {
    canvas.fill(mark.blurred(1.2), srgb(palette::kAmber), 0.25);
    canvas.fill(mark, mix(srgb(palette::kAmber), srgb(palette::kAmberCore),
                          state == CapState::Hover ? 0.7 : 0.15));
  }
}

} // namespace

void drawLoad(Frame& frame) {
  // An arrow into a tray.
  const Mask mark = frame.canvas.mask([](cairo_t* cr) {
    traceDownArrow(cr, 6.0, 8.5, 2.5);
    cairo_rectangle(cr, 2.0, 8.0, 1.0, 3.0);
    cairo_rectangle(cr, 9.0, 8.0, 1.0, 3.0);
    cairo_rectangle(cr, 2.0, 10.0, 8.0, 1.0);
    cairo_fill(cr);
  });
  pushCap(frame.canvas, kSmallCap, stateOf(frame), mark);
}

void drawSave(Frame& frame) {
  // A floppy disk: shutter above, label below.
  const Mask disk = frame.canvas.mask([](cairo_t* cr) {
    cairo_move_to(cr, 2.0, 3.0);
    cairo_line_to(cr, 9.0, 3.0);
    cairo_line_to(cr, 10.0, 4.0);
    cairo_line_to(cr, 10.0, 11.0);
    cairo_line_to(cr, 2.0, 11.0);
    cairo_close_path(cr);
    cairo_fill(cr);
  });
  const Mask cuts = frame.canvas.mask([](cairo_t* cr) {
    cairo_rectangle(cr, 4.0, 3.0, 4.0, 2.0);
    cairo_rectangle(cr, 3.0, 7.0, 6.0, 3.0);
    cairo_fill(cr);
  });
  const Mask shutter = frame.canvas.mask([](cairo_t* cr) {
    cairo_rectangle(cr, 6.0, 3.0, 1.0, 2.0);
    cairo_fill(cr);
  });
  pushCap(frame.canvas, kSmallCap, stateOf(frame), disk.without(cuts.without(shutter)));
}

void drawBankDefault(Frame& frame) { wordCap(frame, 37.0, "BANK"); }
void drawPresetDefault(Frame& frame) { wordCap(frame, 47.0, "PRESET"); }

void drawStoreA(Frame& frame) { memoryCap(frame, "A", true); }
void drawStoreB(Frame& frame) { memoryCap(frame, "B", true); }
void drawRecallA(Frame& frame) { memoryCap(frame, "A", false); }
void drawRecallB(Frame& frame) { memoryCap(frame, "B", false); }

void drawManual(Frame& frame) {
  const Mask mark =
      frame.lettering.line(frame.canvas, "?", headingStyle(), Align::Centre, 7.0, 11.0);
  pushCap(frame.canvas, {0, 0, 14, 14, 2.5}, stateOf(frame), mark);
}

} // namespace qlx::artwork

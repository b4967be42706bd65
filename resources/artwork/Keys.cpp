// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/Fittings.h"
#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

#include <functional>

/// The two piano-switch keys under the lever; frames: at rest, pressed.
namespace qlx::artwork {
namespace {

/// The mark as a lens in the key with a lamp behind it: its light falls on the bone around.
void lightMark(Canvas& canvas, const Mask& mark, const Mask& key) {
  canvas.fill(key, srgb(0x2a1404), 0.45);
  canvas.fill(mark.blurred(3.0).within(key), srgb(0x5a2604), 0.95);
  canvas.fill(mark.blurred(1.6).within(key), srgb(0xff9a2a), 0.8);
  Mask rim = mark.blurred(0.55);
  for (int y = 0; y < rim.rows(); ++y)
    for (int x = 0; x < rim.columns(); ++x) rim.at(x, y) = std::min(1.0F, 3.0F * rim.at(x, y));
  canvas.fill(rim.within(key), srgb(0x3a1a04), 0.95);
  canvas.fill(mark, srgb(palette::kAmber));
  canvas.fill(mark.blurred(0.5).within(mark), srgb(palette::kAmberCore), 0.35);
}

/// A key of 24 x 31 whose resting top left corner is at `origin`. Pressed it sinks, loses its
/// shadow and shows a lit edge.
void drawKey(Frame& frame, Point origin, const std::function<void(cairo_t*)>& traceMark,
             bool lamp = false) {
  constexpr double kWidth = 24.0;
  constexpr double kHeight = 31.0;
  Canvas& canvas = frame.canvas;
  const bool pressed = frame.index == 1;
  const double sink = pressed ? 1.5 : 0.0;
  const Slab frameSlab{origin.x - 0.5, origin.y - 0.5, origin.x + kWidth + 0.5,
                       origin.y + kHeight + 2.0, 3.0};
  canvas.fill(frameSlab.mask(canvas), srgb(0x050404));
  // The front face shows below the top one while the key stands proud.
  const double front = pressed ? 1.5 : 3.5;
  const Slab whole{origin.x, origin.y + sink, origin.x + kWidth, origin.y + kHeight, 2.5};
  const Slab key{whole.left, whole.top, whole.right, origin.y + kHeight + 1.0 - 3.5 + sink, 2.5};
  const Material bone = ivory();
  const Mask body = whole.mask(canvas);
  if (!pressed) canvas.fill(body.moved(0.8, 1.6).blurred(0.7), {}, 0.7);
  canvas.paint(body, [&](Point p) {
    const double t = clamp01((p.y - (whole.bottom - front)) / front);
    return lit(bone, unit({0.0, 1.0, 0.9}), mix(0.85, 0.45, t));
  });
  const Mask top = key.mask(canvas).within(body);
  canvas.paint(top, [&](Point p) {
    // A shallow dish across, rounded away at the edges.
    const double u = (p.x - key.left) / kWidth * 2.0 - 1.0;
    const double v = (p.y - key.top) / (key.bottom - key.top) * 2.0 - 1.0;
    auto lean = [](double t) {
      return -0.25 * t + 0.9 * std::copysign(smoothstep(0.80, 1.0, std::abs(t)), t);
    };
    const Direction normal = unit({lean(u), lean(v) + (pressed ? 0.22 : -0.06), 1.0});
    return lit(bone, normal, pressed ? 0.72 : 0.95);
  });
  const Mask mark = canvas.mask([&](cairo_t* cr) {
    cairo_translate(cr, 0.0, sink);
    traceMark(cr);
  });
  if (pressed && lamp) {
    lightMark(canvas, mark, top);
  } else {
    canvas.fill(mark.moved(0.25, 0.75).without(mark), srgb(0xfffaf0), 0.55);
    canvas.fill(mark, srgb(0x2a1c12), 0.92);
  }
  if (pressed) {
    const Mask line = Slab{key.left + 2, key.top, key.right - 2, key.top + 1.0, 0.4}.mask(canvas);
    canvas.fill(line.blurred(1.6).within(frameSlab.mask(canvas)), srgb(palette::kAmber), 0.8);
    canvas.fill(line, srgb(palette::kAmberCore), 0.9);
  }
}

} // namespace

void drawSpeedKey(Frame& frame) {
  drawKey(frame, {1.5, 1.0}, [](cairo_t* cr) {
    // Up and down: the key throws the lever to the other speed.
    cairo_move_to(cr, 13.5, 7.0);
    cairo_line_to(cr, 18.0, 13.0);
    cairo_line_to(cr, 9.0, 13.0);
    cairo_close_path(cr);
    cairo_move_to(cr, 13.5, 25.0);
    cairo_line_to(cr, 18.0, 19.0);
    cairo_line_to(cr, 9.0, 19.0);
    cairo_close_path(cr);
    cairo_rectangle(cr, 12.5, 13.0, 2.0, 6.0);
    cairo_fill(cr);
  });
}

void drawStopKey(Frame& frame) {
  drawKey(
      frame, {1.0, 2.0},
      [](cairo_t* cr) {
        // A brake drum between its two shoes.
        cairo_set_line_width(cr, 1.6);
        cairo_arc(cr, 13.0, 17.0, 3.6, 0.0, 6.2831853);
        cairo_stroke(cr);
        cairo_arc(cr, 13.0, 17.0, 6.9, -0.95, 0.95);
        cairo_stroke(cr);
        cairo_arc(cr, 13.0, 17.0, 6.9, 3.14159265 - 0.95, 3.14159265 + 0.95);
        cairo_stroke(cr);
      },
      true);
}

} // namespace qlx::artwork

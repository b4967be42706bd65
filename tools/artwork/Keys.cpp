#include "tools/artwork/Drawings.h"
#include "tools/artwork/Fittings.h"
#include "tools/artwork/Materials.h"
#include "tools/artwork/Palette.h"

#include <functional>

/// The two piano-switch keys under the lever; frames: at rest, pressed.
namespace qlx::artwork {
namespace {

/// A key of 24 x 31 whose resting top left corner is at `origin`. Pressed it sinks, loses its
/// shadow and shows a lit edge.
void drawKey(Frame& frame, Point origin, const std::function<void(cairo_t*)>& traceMark) {
  constexpr double kWidth = 24.0;
  constexpr double kHeight = 31.0;
  Canvas& canvas = frame.canvas;
  const bool pressed = frame.index == 1;
  const double sink = pressed ? 1.5 : 0.0;
  const Slab frameSlab{origin.x - 0.5, origin.y - 0.5, origin.x + kWidth + 0.5,
                       origin.y + kHeight + 2.0, 3.0};
  canvas.fill(frameSlab.mask(canvas), srgb(0x050404));
  const Slab key{origin.x, origin.y + sink, origin.x + kWidth, origin.y + kHeight + sink - 0.5,
                 2.5};
  const Mask body = key.mask(canvas);
  if (!pressed) canvas.fill(body.moved(0.8, 1.6).blurred(0.7), {}, 0.7);
  const Material bone = ivory();
  canvas.paint(body, [&](Point p) {
    // A shallow dish across, rounded away at the edges.
    const double u = (p.x - key.left) / kWidth * 2.0 - 1.0;
    const double v = (p.y - key.top) / (key.bottom - key.top) * 2.0 - 1.0;
    auto lean = [](double t) {
      return -0.28 * t + 1.1 * std::copysign(smoothstep(0.78, 1.0, std::abs(t)), t);
    };
    const Direction normal = unit({lean(u), lean(v) * 0.9 + (pressed ? 0.22 : -0.06), 1.0});
    return lit(bone, normal, pressed ? 0.72 : 0.95);
  });
  const Mask mark = canvas.mask([&](cairo_t* cr) {
    cairo_translate(cr, 0.0, sink);
    traceMark(cr);
  });
  canvas.fill(mark.moved(0.5, 1.0).without(mark), srgb(0xfffaf0), 0.6);
  canvas.fill(mark, srgb(0x2a1c12), 0.92);
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
    cairo_rectangle(cr, 12.5, 12.5, 2.0, 7.0);
    cairo_fill(cr);
  });
}

void drawStopKey(Frame& frame) {
  drawKey(frame, {1.0, 2.0}, [](cairo_t* cr) {
    // A brake drum between its two shoes.
    cairo_set_line_width(cr, 1.6);
    cairo_arc(cr, 13.0, 17.0, 3.6, 0.0, 6.2831853);
    cairo_stroke(cr);
    cairo_arc(cr, 13.0, 17.0, 6.9, -0.95, 0.95);
    cairo_stroke(cr);
    cairo_arc(cr, 13.0, 17.0, 6.9, 3.14159265 - 0.95, 3.14159265 + 0.95);
    cairo_stroke(cr);
  });
}

} // namespace qlx::artwork

// SPDX-License-Identifier: ISC
#include "resources/artwork/Fittings.h"

#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

#include <numbers>

namespace qlx::artwork {

PixelRect Slab::box() const {
  return {static_cast<int>(std::floor(left)), static_cast<int>(std::floor(top)),
          static_cast<int>(std::ceil(right)), static_cast<int>(std::ceil(bottom))};
}

Mask Slab::mask(const Canvas& canvas) const {
  return canvas.mask(box(), [this](cairo_t* cr) {
    roundedRectangle(cr, left, top, right, bottom, radius);
    cairo_fill(cr);
  });
}

Slab slab(const PixelRect& box, double radius) {
  return {static_cast<double>(box.left), static_cast<double>(box.top),
          static_cast<double>(box.right), static_cast<double>(box.bottom), radius};
}

LetterStyle captionStyle(double tracking) { return {Face::Caption, 9.5, tracking, true}; }
LetterStyle headingStyle(double tracking) { return {Face::CaptionBold, 9.5, tracking, true}; }

void print(Canvas& canvas, const Mask& letters, const Colour& colour, double opacity) {
  canvas.fill(letters.moved(0, 1), {}, 0.6 * opacity);
  canvas.fill(letters, colour, opacity);
}

void sinkWell(Canvas& canvas, const Mask& shape, const Colour& floor) {
  // Lip: the lower right edge turns towards the lamp, the upper left one away from it.
  canvas.fill(shape.moved(0, canvas.hairline()).without(shape), srgb(palette::kSteelLit), 0.9);
  canvas.fill(shape.moved(0.5, 0.5).without(shape), srgb(palette::kSteelLit), 0.5);
  canvas.fill(shape.moved(0, -canvas.hairline()).without(shape), {}, 0.75);
  canvas.fill(shape.moved(-canvas.hairline(), 0).without(shape), {}, 0.5);
  canvas.fill(shape, floor);
  // What the upper and left edge keep from the floor.
  const Mask cast = shape.without(shape.moved(1.0, 1.5)).blurred(1.1).within(shape);
  canvas.fill(cast, {}, 0.85);
}

void pushCap(Canvas& canvas, const Slab& place, CapState state, const Mask& mark) {
  const bool pressed = state == CapState::Pressed;
  const Mask whole = place.mask(canvas);
  const Mask inner = Slab{place.left + 1, place.top + 1, place.right - 1, place.bottom - 1,
                          std::max(0.5, place.radius - 1)}
                         .mask(canvas);
  canvas.fill(whole, srgb(0x080706));
  const double lift = state == CapState::Hover ? 1.55 : 1.0;
  const double height = place.bottom - place.top;
  canvas.paint(inner, [&](Point p) {
    const double t = (p.y - place.top) / height;
    const double slope = pressed ? mix(0.50, 0.72, t) : mix(1.28, 0.66, t);
    return srgb(palette::kBakelite) * (slope * lift);
  });
  if (!pressed) {
    canvas.fill(inner.without(inner.moved(0, canvas.hairline())), srgb(palette::kBakeliteLit), 0.9);
    canvas.fill(inner.without(inner.moved(canvas.hairline(), 0)), srgb(palette::kBakeliteLit),
                0.45);
    canvas.fill(inner.without(inner.moved(0, -canvas.hairline())), {}, 0.45);
  } else {
    canvas.fill(inner.without(inner.moved(0, canvas.hairline())), {}, 0.6);
  }
  const Colour colour =
      pressed ? srgb(palette::kAmber) : srgb(state == CapState::Hover ? 0xfffaf0 : palette::kIvory);
  canvas.fill(mark.moved(0, canvas.hairline()).within(inner), {}, 0.55);
  if (pressed) canvas.glow(mark.blurred(1.2).within(inner), srgb(palette::kAmber), 0.35);
  canvas.fill(mark, colour);
}

void signalLamp(Canvas& canvas, Point centre, double radius, bool on, const Colour& off,
                const Colour& lit) {
  const double edge = canvas.density();
  const PixelRect box{
      static_cast<int>(centre.x - 2.5 * radius) - 2, static_cast<int>(centre.y - 2.5 * radius) - 2,
      static_cast<int>(centre.x + 2.5 * radius) + 2, static_cast<int>(centre.y + 2.5 * radius) + 2};
  if (on) {
    canvas.shade(box, [&](Point p, Colour& colour, double& cover) {
      const double r = std::hypot(p.x - centre.x, p.y - centre.y) / radius;
      const double margin = std::min({p.x, canvas.width() - p.x, p.y, canvas.height() - p.y});
      cover = 0.55 * std::pow(1.0 - smoothstep(0.8, 2.3, r), 1.6) * smoothstep(0.0, 2.5, margin);
      colour = lit;
    });
  }
  canvas.shade(box, [&](Point p, Colour& colour, double& cover) {
    const double x = p.x - centre.x;
    const double y = p.y - centre.y;
    const double r = std::hypot(x, y);
    cover = clamp01((radius + 0.9 - r) * edge + 0.5);
    if (cover <= 0.0) return;
    // The bezel: a dark ring whose lower right edge is lit.
    const double towards = (x + y) / (1.414 * std::max(r, 0.1));
    colour = mix(srgb(0x070606), srgb(palette::kSteelLit), 0.5 + 0.5 * towards);
    const double glass = clamp01((radius - r) * edge + 0.5);
    const double t = clamp01(r / radius);
    const Colour core = mix(lit, Colour{1.0, 0.92, 0.75}, on ? 0.85 : 0.0);
    const Colour body = on ? mix(core, lit, smoothstep(0.1, 0.75, t)) * mix(1.0, 0.72, t * t)
                           : mix(off * 1.5, off * 0.55, smoothstep(0.0, 1.0, t));
    colour = mix(colour, body, glass);
    const double spark =
        1.0 - smoothstep(0.12, 0.36, std::hypot(x / radius + 0.36, y / radius + 0.40));
    colour = mix(colour, {1.0, 0.95, 0.88}, glass * spark * (on ? 0.75 : 0.30));
  });
}

void screw(Canvas& canvas, Point centre, double radius, double slotDegrees) {
  const double edge = canvas.density();
  const double angle = slotDegrees * std::numbers::pi / 180.0;
  const PixelRect box{
      static_cast<int>(centre.x - radius) - 3, static_cast<int>(centre.y - radius) - 3,
      static_cast<int>(centre.x + radius) + 3, static_cast<int>(centre.y + radius) + 3};
  canvas.shade(box, [&](Point p, Colour& colour, double& cover) {
    colour = {};
    cover = 0.6 * (1.0 - smoothstep(radius - 0.4, radius + 1.2,
                                    std::hypot(p.x - centre.x - 0.4, p.y - centre.y - 0.6)));
  });
  const Material head = brass();
  canvas.shade(box, [&](Point p, Colour& colour, double& cover) {
    const double x = p.x - centre.x;
    const double y = p.y - centre.y;
    const double r = std::hypot(x, y) / radius;
    cover = clamp01((1.0 - r) * radius * edge + 0.5);
    if (cover <= 0.0) return;
    const double fall = 0.25 * r + 0.6 * smoothstep(0.7, 1.0, r);
    const double k = r > 0.0 ? std::sin(fall) / (r * radius) : 0.0;
    colour = lit(head, unit({x * k, y * k, std::cos(fall)}));
    const double aside = std::abs(x * std::sin(angle) - y * std::cos(angle));
    const double slot = clamp01((0.22 * radius - aside) * edge + 0.5) * (r < 0.95 ? 1.0 : 0.0);
    colour = mix(colour, srgb(0x1c1206), 0.9 * slot);
  });
}

void layPlate(Canvas& canvas, const Slab& place, double shineTop, double shineBottom) {
  const Mask plate = place.mask(canvas);
  canvas.fill(plate.moved(1.2, 1.8).blurred(1.4), {}, 0.8);
  canvas.fill(plate.moved(0, canvas.hairline()).without(plate), {}, 0.6);
  const double height = place.bottom - place.top;
  const double width = place.right - place.left;
  canvas.paint(plate, [&](Point p) {
    const double t = (p.y - place.top) / height;
    // A soft reflection of the lamp runs slantwise over the metal.
    const double slant = (p.x - place.left) / width - 0.25 * t;
    const double sheen = std::exp(-std::pow((slant - 0.22) / 0.20, 2.0));
    return brushedBrass(p, mix(shineTop, shineBottom, t) + 0.22 * sheen);
  });
  canvas.fill(plate.without(plate.moved(0, canvas.hairline())), srgb(0xffe9b0), 0.75);
  canvas.fill(plate.without(plate.moved(canvas.hairline(), 0)), srgb(0xffe9b0), 0.40);
  canvas.fill(plate.without(plate.moved(0, -canvas.hairline())), srgb(0x2c1e08), 0.75);
  canvas.fill(plate.without(plate.moved(-canvas.hairline(), 0)), srgb(0x2c1e08), 0.55);
}

void engrave(Canvas& canvas, const Mask& letters) {
  canvas.fill(letters.moved(0.5 * canvas.hairline(), canvas.hairline()).without(letters),
              srgb(0xfff0bd), 0.75);
  canvas.fill(letters, srgb(0x241704), 0.94);
  canvas.fill(letters.without(letters.moved(0.5 * canvas.hairline(), canvas.hairline())), {}, 0.5);
}

} // namespace qlx::artwork

// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

#include <numbers>

namespace qlx::artwork {
namespace {

constexpr double kCentre = 22.0;
constexpr double kDomeRadius = 13.8;
constexpr double kBodyRadius = 17.0;
constexpr double kSkirtRadius = 19.5;
constexpr double kDomeFall = 0.38; // radians, where the dome turns into the body's edge
constexpr int kFlutes = 45;
constexpr double kFluteDepth = 0.22;
constexpr double kPointerFrom = 7.0;
constexpr double kPointerTo = 17.0;
constexpr double kPointerHalfWidth = 1.0;
constexpr double kGrooveWidth = 1.1; // the groove that the inlay lies in, beside it
// The lamp's image on the dome: its distance from the middle and its half axes, across and along
// the line to the lamp.
constexpr double kSparkRadius = 10.4;
constexpr double kSparkHalfLength = 2.5;
constexpr double kSparkHalfWidth = 1.5;
constexpr double kTravelDegrees = 270.0;
constexpr int kFrames = 101;

/// A point of the knob's surface: how steeply it falls outwards (radians from level), how far it
/// leans round the axis, and how much of the room it sees.
struct Relief {
  double fall;
  double lean;
  double open;
};

Relief relief(double radius, double angle) {
  if (radius < kDomeRadius) return {kDomeFall * radius / kDomeRadius, 0.0, 1.0};
  if (radius < kBodyRadius) {
    const double t = (radius - kDomeRadius) / (kBodyRadius - kDomeRadius);
    return {mix(kDomeFall, 1.30, t), 0.0, 1.0};
  }
  // The skirt: flutes that fade in from a groove under the body.
  const double t = (radius - kBodyRadius) / (kSkirtRadius - kBodyRadius);
  const double flute = std::sin(angle * kFlutes);
  return {0.30 + 0.75 * t * t, 0.85 * smoothstep(0.1, 0.4, t) * flute,
          mix(0.30, 1.0, smoothstep(0.0, 0.35, t)) * (0.78 + 0.22 * std::cos(angle * kFlutes))};
}

/// Distance from the pointer's outline, negative inside.
double pointerDistance(double x, double y, double angle) {
  const double along = x * std::sin(angle) - y * std::cos(angle);
  const double aside = x * std::cos(angle) + y * std::sin(angle);
  const double end = std::clamp(along, kPointerFrom + kPointerHalfWidth, kPointerTo - 0.3);
  return std::hypot(along - end, aside) - kPointerHalfWidth;
}

/// Brightness of the lamp's image, 0..1.
double spark(double x, double y) {
  const double level = std::hypot(kLamp.x, kLamp.y);
  const double towards = (x * kLamp.x + y * kLamp.y) / level - kSparkRadius;
  // It bends with the dome.
  const double across = (x * kLamp.y - y * kLamp.x) / level;
  const double bent = towards + across * across / (2.0 * kSparkRadius);
  const double r = std::hypot(across / kSparkHalfLength, bent / kSparkHalfWidth);
  return 1.0 - smoothstep(0.35, 1.25, r);
}

} // namespace

void drawKnob(Frame& frame) {
  const double degrees = kTravelDegrees * (static_cast<double>(frame.index) / (kFrames - 1) - 0.5);
  const double turn = degrees * std::numbers::pi / 180.0;
  const double edge = frame.canvas.density();
  Material body = bakelite();
  body.roughness = 0.45;
  body.mirror = {0.055, 0.050, 0.044};
  Material inlay = ivory();
  inlay.body = srgb(palette::kIvory) * 0.98;
  inlay.mirror = {0.02, 0.02, 0.02};

  frame.canvas.shade(frame.canvas.box(), [&](Point p, Colour& colour, double& cover) {
    const double radius = std::hypot(p.x - kCentre - 0.8, p.y - kCentre - 1.0);
    cover = 0.60 * (1.0 - smoothstep(17.8, 21.0, radius));
    colour = {};
  });
  frame.canvas.shade(frame.canvas.box(), [&](Point p, Colour& colour, double& cover) {
    const double x = p.x - kCentre;
    const double y = p.y - kCentre;
    const double radius = std::hypot(x, y);
    const double angle = std::atan2(x, -y) - turn;
    const double rim = kSkirtRadius - kFluteDepth * (0.5 - 0.5 * std::cos(angle * kFlutes));
    cover = clamp01((rim - radius) * edge + 0.5);
    if (cover <= 0.0) return;

    const Relief at = relief(radius, angle);
    const double outX = radius > 0.0 ? x / radius : 0.0;
    const double outY = radius > 0.0 ? y / radius : 0.0;
    const Direction normal = unit({std::sin(at.fall) * outX - at.lean * outY,
                                   std::sin(at.fall) * outY + at.lean * outX, std::cos(at.fall)});
    colour = lit(body, normal, at.open);
    colour = mix(colour, Colour{0.62, 0.46, 0.28}, 0.58 * spark(x, y));
    // The pointer's shadow, then its groove, which sets it off where the dome shines.
    const double shadow = pointerDistance(x - 0.8, y - 1.1, turn);
    colour = colour * (1.0 - 0.80 * (1.0 - smoothstep(-0.6, 1.2, shadow)));
    const double groove = pointerDistance(x, y, turn) - kGrooveWidth;
    if (radius < kBodyRadius)
      colour = colour * (1.0 - 0.72 * (1.0 - smoothstep(-0.7, 0.3, groove)));
    const double inlaid = clamp01(-pointerDistance(x, y, turn) * edge + 0.5);
    if (inlaid > 0.0 && radius < kBodyRadius) {
      // The inlay is flat across and follows the dome only in part, so that it reads evenly.
      const Direction level = unit({0.4 * normal.x, 0.4 * normal.y, normal.z});
      colour = mix(colour, lit(inlay, level), inlaid);
    }
  });
}

} // namespace qlx::artwork

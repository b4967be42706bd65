// SPDX-License-Identifier: ISC
#include "resources/artwork/Drawings.h"
#include "resources/artwork/drawing/Materials.h"
#include "resources/artwork/drawing/Palette.h"

#include <numbers>

namespace qlx::artwork {
namespace {

// The lever in its 55 x 186 frame: the arm turns about an axis behind the panel, across the
// frame's middle. Heights are pixels above the panel.
constexpr int kFrames = 65;
constexpr double kSwingDegrees = 40.0;
constexpr double kAxisX = 27.5;
constexpr double kAxisY = 95.0;
constexpr double kAxisDepth = 22.0;
constexpr double kArmLength = 88.7;
constexpr double kBallRadius = 14.5;
constexpr double kArmRadius = 3.2;
constexpr double kFerruleRadius = 5.2;
constexpr double kFerruleFrom = 68.0; // along the arm from its axis
constexpr double kSlotHalfWidth = 5.0;
constexpr double kSlotHalfHeight = 37.0;
// How far a shadow falls aside for each pixel of height: the lamp stands high.
constexpr double kShadowX = 0.11;
constexpr double kShadowY = 0.24;

struct Pose {
  double sine;
  double cosine;
  double ballY;
  double ballHeight;
};

Pose poseOf(int index) {
  const double angle =
      kSwingDegrees * (1.0 - 2.0 * index / (kFrames - 1)) * std::numbers::pi / 180.0;
  const double sine = std::sin(angle);
  const double cosine = std::cos(angle);
  return {sine, cosine, kAxisY - kArmLength * sine, kArmLength * cosine - kAxisDepth};
}

double slotDistance(Point p) {
  const double y = std::max(0.0, std::abs(p.y - kAxisY) - (kSlotHalfHeight - kSlotHalfWidth));
  return std::hypot(p.x - kAxisX, y) - kSlotHalfWidth;
}

/// Where the arm's visible surface is hit, looking straight at the panel.
struct Hit {
  bool found = false;
  Direction normal;
  double along = 0;
};

Hit hitRod(const Pose& pose, Point p, double radius, double from, double to) {
  const double aside = (p.x - kAxisX) / radius;
  if (std::abs(aside) >= 1.0 || std::abs(pose.sine) < 1e-6) return {};
  const double bulge = std::sqrt(1.0 - aside * aside);
  // Across the arm, in the plane of its swing, towards the viewer.
  const double side = pose.sine > 0.0 ? 1.0 : -1.0;
  const Direction across{0.0, side * pose.cosine, side * pose.sine};
  const double along = (kAxisY + radius * bulge * across.y - p.y) / pose.sine;
  if (along < from || along > to) return {};
  const double height = -kAxisDepth + pose.cosine * along + radius * bulge * across.z;
  if (height < 0.0 && slotDistance(p) > 0.0) return {};
  // A slim rod mirrors the whole room in a few pixels: its shading keeps only part of the arm's
  // tilt, so that the lamp's streak stays on it in every position.
  const double tilt = mix(bulge * across.y, -0.32, 0.8);
  return {true, unit({aside, tilt, bulge * std::max(0.6, across.z)}), along};
}

/// What a chromed surface mirrors of the brass plate around the slot.
Colour plateSeenIn(const Direction& normal) {
  const double towardsPlate = 1.0 - 2.0 * normal.z * normal.z;
  return srgb(palette::kBrass) * (0.5 * smoothstep(0.1, 0.9, towardsPlate));
}

/// Share of the lamp that the lever hides from a point of the panel.
double shadowAt(const Pose& pose, Point p) {
  // Undo the shadow's lean for a blob at each height along the arm: the ball, then the rod.
  auto blob = [&](double x, double y, double height, double radius) {
    const double softness = 1.5 + 0.13 * height;
    const double distance = std::hypot(p.x - x - kShadowX * height, p.y - y - kShadowY * height);
    return 1.0 - smoothstep(radius - softness, radius + softness, distance);
  };
  double hidden = 0.80 * blob(kAxisX, pose.ballY, pose.ballHeight, kBallRadius);
  constexpr int kSteps = 24;
  for (int i = 0; i <= kSteps; ++i) {
    const double along = mix(kAxisDepth, kArmLength, static_cast<double>(i) / kSteps);
    const double height = pose.cosine * along - kAxisDepth;
    if (height < 0.0) continue;
    hidden = std::max(hidden, 0.75 * blob(kAxisX, kAxisY - pose.sine * along, height,
                                          along > kFerruleFrom ? kFerruleRadius : kArmRadius));
  }
  // Nothing may end at the frame's edge.
  const double margin = std::min({p.x, 55.0 - p.x, p.y, 186.0 - p.y});
  return hidden * smoothstep(0.0, 8.0, margin);
}

void drawSlot(Frame& frame, const Pose& pose) {
  const double edge = frame.canvas.density();
  frame.canvas.shade(frame.canvas.box(), [&](Point p, Colour& colour, double& cover) {
    cover = clamp01(0.5 - slotDistance(p) * edge);
    if (cover <= 0.0) return;
    // Dark bristles meet in the middle; the arm parts them.
    const double root = kAxisY - kAxisDepth * pose.sine / pose.cosine;
    const double parted = std::exp(-std::pow((p.y - root) / 6.0, 2.0));
    const double bristle = 0.5 + 0.5 * std::sin(p.y * 4.2 + 1.6 * std::sin(p.y * 1.7));
    const double depth = clamp01(-slotDistance(p) / kSlotHalfWidth);
    const double shade = smoothstep(0.05, 0.5, depth) * (1.0 - parted);
    colour = mix(srgb(0x050505), srgb(0x1d1a17), shade * bristle * (1.0 - 0.5 * depth));
  });
}

} // namespace

void drawLever(Frame& frame) {
  const Pose pose = poseOf(frame.index);
  const double edge = frame.canvas.density();
  drawSlot(frame, pose);
  const PixelRect all = frame.canvas.box();
  frame.canvas.shade(all, [&](Point p, Colour& colour, double& cover) {
    colour = {};
    cover = shadowAt(pose, p);
  });
  const Material metal = chrome();
  for (const bool ferrule : {false, true}) {
    const double radius = ferrule ? kFerruleRadius : kArmRadius;
    const double from = ferrule ? kFerruleFrom : kAxisDepth - 8.0;
    frame.canvas.shade(all, [&](Point p, Colour& colour, double& cover) {
      const Hit hit = hitRod(pose, p, radius, from, kArmLength);
      if (!hit.found) return;
      cover = clamp01((radius - std::abs(p.x - kAxisX)) * edge + 0.5);
      // The ball's dark underside is mirrored where the arm nears it; the slot where it leaves.
      const double near =
          smoothstep(kArmLength - kBallRadius - 14.0, kArmLength - kBallRadius, hit.along);
      const double far =
          smoothstep(kAxisDepth / pose.cosine + 5.0, kAxisDepth / pose.cosine - 2.0, hit.along);
      colour = (lit(metal, hit.normal) + plateSeenIn(hit.normal)) *
               ((1.0 - 0.6 * near) * (1.0 - 0.75 * far));
    });
  }
  Material ball = bakelite();
  ball.body = srgb(palette::kBakeliteDark);
  ball.mirror = {0.075, 0.073, 0.07};
  ball.roughness = 0.10;
  ball.grazing = 0.55;
  frame.canvas.shade(all, [&](Point p, Colour& colour, double& cover) {
    const double x = (p.x - kAxisX) / kBallRadius;
    const double y = (p.y - pose.ballY) / kBallRadius;
    const double radius = std::hypot(x, y);
    cover = clamp01((1.0 - radius) * kBallRadius * edge + 0.5);
    if (cover <= 0.0) return;
    const double z = std::sqrt(std::max(0.0, 1.0 - radius * radius));
    // The knob is a little flattened on top: its polar cap turns with the arm.
    Direction normal = unit({x, y, z});
    const Direction pole{0.0, -pose.sine, pose.cosine};
    const double cap = smoothstep(0.80, 0.98, dot(normal, pole));
    normal = unit(normal + pole * (0.8 * cap));
    colour = lit(ball, normal);
  });
}

} // namespace qlx::artwork

// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <cmath>

/// How large a window is drawn: pixels of the screen for a pixel of the layout. Layout, input and
/// the controls' arithmetic know the pixels of the layout only.
namespace qlx::gui {

inline constexpr std::array<double, 4> kWindowScales{1.0, 1.5, 2.0, 3.0};

/// The nearest of kWindowScales, the smaller one of two that are as near.
inline double nearestWindowScale(double wanted) {
  double nearest = kWindowScales.front();
  for (const double scale : kWindowScales)
    if (std::abs(scale - wanted) < std::abs(nearest - wanted)) nearest = scale;
  return nearest;
}

/// How many times its plain size a picture is drawn from: pictures for a scale of one and a half
/// are the threefold ones, every two by two pixels of them averaged.
constexpr int artworkScale(double windowScale) {
  return windowScale == 1.5 ? 3 : static_cast<int>(windowScale);
}

} // namespace qlx::gui

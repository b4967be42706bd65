// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

namespace qlx::gui {

/// Straight (not premultiplied) sRGB colour with opacity.
struct CColor {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  std::uint8_t alpha = 255;

  constexpr bool operator==(const CColor&) const = default;
  /// Nearer to white than to black for the eye, which sees most by green.
  constexpr bool isLight() const { return red * 3 + green * 6 + blue >= 10 * 128; }
};

inline constexpr CColor kBlackCColor{0, 0, 0, 255};
inline constexpr CColor kWhiteCColor{255, 255, 255, 255};
inline constexpr CColor kTransparentCColor{0, 0, 0, 0};

} // namespace qlx::gui

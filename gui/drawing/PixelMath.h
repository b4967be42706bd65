// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

/// Arithmetic on 32-bit pixels 0xAARRGGBB.
namespace qlx::gui {

/// A channel at its fullest.
inline constexpr std::uint32_t kFull = 255;

/// x / 255 to the nearest for x up to 255 x 255, on two channels at once: 0x00XX00YY.
constexpr std::uint32_t divideBy255(std::uint32_t pair) {
  const std::uint32_t biased = pair + 0x00800080U;
  return ((biased + ((biased >> 8) & 0x00FF00FFU)) >> 8) & 0x00FF00FFU;
}

/// Every channel of a pixel times factor / 255.
constexpr std::uint32_t scaled(std::uint32_t pixel, std::uint32_t factor) {
  const std::uint32_t redBlue = divideBy255((pixel & 0x00FF00FFU) * factor);
  const std::uint32_t alphaGreen = divideBy255(((pixel >> 8) & 0x00FF00FFU) * factor);
  return redBlue | (alphaGreen << 8);
}

/// One premultiplied pixel over another.
constexpr std::uint32_t over(std::uint32_t above, std::uint32_t below) {
  return above + scaled(below, kFull - (above >> 24));
}

/// The mean of up to four pixels, those left out transparent.
class QuarteredPixels {
 public:
  void clear() { m_redBlue = m_alphaGreen = 0; }
  void add(std::uint32_t pixel) {
    m_redBlue += pixel & 0x00FF00FFU;
    m_alphaGreen += (pixel >> 8) & 0x00FF00FFU;
  }
  std::uint32_t mean() const { return quarter(m_redBlue) | (quarter(m_alphaGreen) << 8); }

 private:
  static std::uint32_t quarter(std::uint32_t pair) {
    return ((pair + 0x00020002U) >> 2) & 0x00FF00FFU;
  }

  std::uint32_t m_redBlue = 0;
  std::uint32_t m_alphaGreen = 0;
};

} // namespace qlx::gui

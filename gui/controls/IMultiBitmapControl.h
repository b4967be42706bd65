// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CPoint.h"

#include <cstdint>

namespace qlx::gui {

/// What controls that draw one frame of a strip have in common.
class IMultiBitmapControl {
 public:
  virtual ~IMultiBitmapControl() = default;

  CCoord getHeightOfOneImage() const { return m_heightOfOneImage; }
  std::int32_t getNumSubPixmaps() const { return m_subPixmaps; }
  /// Where in the strip the frame for a normalised value begins: frame (int)(value x (frames - 1) +
  /// 0.5).
  CCoord getFrameTop(float normalized) const {
    constexpr float kHalf = 0.5F;
    const float last = static_cast<float>(m_subPixmaps - 1);
    return static_cast<std::int32_t>(normalized * last + kHalf) * m_heightOfOneImage;
  }

 protected:
  IMultiBitmapControl(CCoord heightOfOneImage, std::int32_t subPixmaps)
      : m_heightOfOneImage(heightOfOneImage), m_subPixmaps(subPixmaps) {}
  IMultiBitmapControl(const IMultiBitmapControl&) = default;
  IMultiBitmapControl& operator=(const IMultiBitmapControl&) = default;

 private:
  CCoord m_heightOfOneImage;
  std::int32_t m_subPixmaps;
};

} // namespace qlx::gui

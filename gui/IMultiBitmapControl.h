#pragma once

#include "gui/CPoint.h"

#include <cstdint>

namespace qlx::gui {

/// What controls that draw one frame of a strip have in common.
class IMultiBitmapControl {
 public:
  virtual ~IMultiBitmapControl() = default;

  void setHeightOfOneImage(CCoord height) { m_heightOfOneImage = height; }
  CCoord getHeightOfOneImage() const { return m_heightOfOneImage; }
  void setNumSubPixmaps(std::int32_t count) { m_subPixmaps = count; }
  std::int32_t getNumSubPixmaps() const { return m_subPixmaps; }

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

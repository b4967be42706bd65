// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"
#include "gui/drawing/COffscreenContext.h"

#include <memory>

namespace qlx::editor {

/// Shows a rotor's position: a light that passes behind a slot once per turn, from right to left.
/// Its value is the rotor's phase in turns.
class QLXMarker final : public gui::CControl {
 public:
  /// How phase becomes place.
  struct Travel {
    gui::CPoint handleOffset;     ///< origin of the handle's travel, from the strip's corner
    float phaseOffset = 0.0F;     ///< in turns
    gui::CCoord stripWidth = 0.0; ///< the handle travels this far and its own width
  };

  QLXMarker(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
            const Travel& travel, gui::CBitmapRef handle, gui::CBitmapRef strip);

  bool isTypeOf(std::string_view className) const override {
    return className == "QLXMarker" || CControl::isTypeOf(className);
  }
  std::unique_ptr<gui::CView> newCopy() const override;
  void draw(gui::CDrawContext& context) override;

  void setHandleOffset(const gui::CPoint& offset);

  /// Where the handle is drawn at present, from the strip's corner.
  gui::CRect handlePlace() const { return handlePlace(getValue()); }

 private:
  QLXMarker(const QLXMarker& other);
  bool looksAlike(float a, float b) const override { return handlePlace(a) == handlePlace(b); }
  gui::CRect handlePlace(float value) const;
  void composeStrip();
  void drawDirectly(gui::CDrawContext& context) const;

  gui::CBitmapRef m_handle;
  gui::CBitmapRef m_strip;
  Travel m_travel;
  gui::CCoord m_way = 0.0; ///< of one turn, in pixels
  gui::CCoord m_minLeft = 0.0;
  gui::CCoord m_maxRight = 0.0;
  gui::CRect m_copyRect;
  std::unique_ptr<gui::COffscreenContext> m_offscreen;
  bool m_stripIsOpaque = false; ///< at the surface's scale
};

} // namespace qlx::editor

// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"

namespace qlx::gui {

/// A control that is turned by dragging along a line: right and up raise; 200 pixels for the whole
/// range, five times as many with Shift. Control with the left button goes to the default. Derived
/// classes draw it.
class CKnob : public CControl {
 public:
  CKnob(const CRect& size, CControlListener* listener, std::int32_t tag, CBitmapRef background);

  bool isTypeOf(std::string_view className) const override {
    return className == "CKnob" || CControl::isTypeOf(className);
  }
  platform::PointerShape getPointerShape() const override {
    return platform::PointerShape::kUpDown;
  }
  /// Clear of the ticks at the edge.
  CRect getRingPlace() const override { return getViewSize().insetBy(-1.0, -1.0); }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  /// Ends the edit; handled.
  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseMoved(const CPoint& where, const CButtonState& buttons) override;

 protected:
  CKnob(const CKnob&) = default;

 private:
  CPoint m_lastPoint;
  float m_exact = 0.0F;
};

} // namespace qlx::gui

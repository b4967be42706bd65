// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"

namespace qlx::gui {

/// A two-state button on a two-frame strip: the upper half while off, the lower half while on. A
/// press toggles it and tells the listener.
class COnOffButton : public CControl {
 public:
  COnOffButton(const CRect& size, CControlListener* listener, std::int32_t tag, CBitmapRef strip);

  bool isTypeOf(std::string_view className) const override {
    return className == "COnOffButton" || CControl::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;
  platform::PointerShape getPointerShape() const override { return platform::PointerShape::kHand; }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  bool onKeyAction(KeyAction action, const CButtonState& modifiers) override;

 protected:
  COnOffButton(const COnOffButton&) = default;
  std::string textOfValue() const override { return isOn() ? "on" : "off"; }

 private:
  bool isOn() const { return getValue() >= (getMin() + getMax()) * 0.5F; }
};

} // namespace qlx::gui

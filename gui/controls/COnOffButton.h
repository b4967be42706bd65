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

 protected:
  COnOffButton(const COnOffButton&) = default;
};

} // namespace qlx::gui

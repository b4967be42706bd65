// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"
#include "gui/controls/IMultiBitmapControl.h"

namespace qlx::gui {

/// A button that is down while it is held: frame 1 of a two-frame strip while its value is not 0,
/// else frame 0. The listener is told of the press and of the release when it happens inside.
class CKickButton : public CControl, public IMultiBitmapControl {
 public:
  CKickButton(const CRect& size, CControlListener* listener, std::int32_t tag,
              CCoord heightOfOneImage, CBitmapRef strip, const CPoint& offset = {});

  bool isTypeOf(std::string_view className) const override {
    return className == "CKickButton" || CControl::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;
  platform::PointerShape getPointerShape() const override { return platform::PointerShape::kHand; }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons) override;
  /// A press of a key is one that the pointer makes and ends.
  bool onKeyAction(KeyAction action, const CButtonState& modifiers) override;
  /// With the left button: the maximum while the pointer is inside, else the minimum; redraws a
  /// change, tells nobody.
  CMouseEventResult onMouseMoved(const CPoint& where, const CButtonState& buttons) override;

 protected:
  CKickButton(const CKickButton&) = default;
  std::string textOfValue() const override {
    return getValue() != getMin() ? "pressed" : "released";
  }
};

} // namespace qlx::gui

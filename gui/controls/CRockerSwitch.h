// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"
#include "gui/controls/IMultiBitmapControl.h"

namespace qlx::gui {

/// Bits of a rocker switch's style.
enum CRockerStyle : std::int32_t { kHorizontal = 1, kVertical = 2 };

/// A switch with two sides that springs back: value -1 while its left or upper side is held, +1 for
/// the other one, else 0. Its strip has three frames, for -1, 0 and +1. The listener is told of the
/// press and of the return.
class CRockerSwitch : public CControl, public IMultiBitmapControl {
 public:
  CRockerSwitch(const CRect& size, CControlListener* listener, std::int32_t tag,
                CCoord heightOfOneImage, CBitmapRef strip, const CPoint& offset = {},
                std::int32_t style = kHorizontal);

  bool isTypeOf(std::string_view className) const override {
    return className == "CRockerSwitch" || CControl::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;
  platform::PointerShape getPointerShape() const override { return platform::PointerShape::kHand; }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons) override;

  /// Steps press its sides.
  bool onKeyAction(KeyAction action, const CButtonState& modifiers) override;

  std::int32_t getStyle() const { return m_style; }

 protected:
  CRockerSwitch(const CRockerSwitch&) = default;
  std::string textOfValue() const override { return getValue() != 0.0F ? "pressed" : "released"; }
  /// -1 for the left or upper side, +1 for the other one.
  float sideAt(const CPoint& where) const;

 private:
  std::int32_t m_style;
};

} // namespace qlx::gui

// SPDX-License-Identifier: ISC
#include "presets/panel/CPSRockerSwitch.h"

namespace qlx::presets {

using gui::CMouseEventResult;

namespace {

/// Frames of the left half come before those of the right half.
int frameOfSide(float side, int left) { return side < 0.0F ? left : left + 1; }

} // namespace

CPSRockerSwitch::CPSRockerSwitch(const gui::CRect& size, gui::CControlListener* listener,
                                 std::int32_t tag, gui::CCoord heightOfOneImage,
                                 gui::CBitmapRef strip)
    : CRockerSwitch(size, listener, tag, heightOfOneImage, std::move(strip), {}, gui::kHorizontal) {
}

void CPSRockerSwitch::draw(gui::CDrawContext& context) {
  int frame = 0;
  if (const float side = drawnValue(); side != 0.0F) {
    frame = frameOfSide(side, 3);
  } else if (m_hoverSide != 0.0F) {
    frame = frameOfSide(m_hoverSide, 1);
  }
  drawBackground(context, {0.0, frame * getHeightOfOneImage()});
  setDirty(false);
}

void CPSRockerSwitch::setHoverSide(float side) {
  if (side == m_hoverSide) return;
  m_hoverSide = side;
  invalid();
}

CMouseEventResult CPSRockerSwitch::onMouseDown(const gui::CPoint& where,
                                               const gui::CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  setValue(sideAt(where));
  invalid();
  valueChanged();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CPSRockerSwitch::onMouseUp(const gui::CPoint& /*where*/,
                                             const gui::CButtonState& /*buttons*/) {
  setValue(0.0F);
  invalid();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CPSRockerSwitch::onMouseMoved(const gui::CPoint& where,
                                                const gui::CButtonState& buttons) {
  if (!buttons.anyButton()) setHoverSide(sideAt(where));
  return CMouseEventResult::kHandled;
}

CMouseEventResult CPSRockerSwitch::onMouseExited(const gui::CPoint& /*where*/,
                                                 const gui::CButtonState& /*buttons*/) {
  setHoverSide(0.0F);
  return CMouseEventResult::kHandled;
}

} // namespace qlx::presets

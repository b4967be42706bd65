// SPDX-License-Identifier: ISC
#include "presets/panel/CPSKickButton.h"

namespace qlx::presets {

using gui::CMouseEventResult;

CPSKickButton::CPSKickButton(const gui::CRect& size, gui::CControlListener* listener,
                             std::int32_t tag, gui::CCoord heightOfOneImage, gui::CBitmapRef strip,
                             Press press)
    : CKickButton(size, listener, tag, heightOfOneImage, std::move(strip)),
      m_needsDoubleClick(press == Press::kDouble) {}

void CPSKickButton::draw(gui::CDrawContext& context) {
  const int frame = m_pressed ? 2 : (m_hover ? 1 : 0);
  drawBackground(context, {0.0, frame * getHeightOfOneImage()});
  setDirty(false);
}

CMouseEventResult CPSKickButton::onMouseDown(const gui::CPoint& /*where*/,
                                             const gui::CButtonState& buttons) {
  const bool wanted = buttons.isLeftButton() && (!m_needsDoubleClick || buttons.isDoubleClick());
  if (!wanted) return CMouseEventResult::kHandledDontNeedMoves;
  m_pressed = true;
  setValue(m_needsDoubleClick && buttons.isControlSet() ? 0.5F : 1.0F);
  invalid();
  valueChanged();
  return CMouseEventResult::kHandled;
}

bool CPSKickButton::onKeyAction(gui::KeyAction action, const gui::CButtonState& modifiers) {
  if (!m_needsDoubleClick) return CKickButton::onKeyAction(action, modifiers);
  if (action != gui::KeyAction::kPress || !m_choiceWanted) return false;
  m_choiceWanted();
  return true;
}

void CPSKickButton::doublePress(bool control) {
  pressAt(getViewSize().centre(), gui::kDoubleClick | (control ? gui::kControl : 0U));
}

void CPSKickButton::release() {
  setValue(0.0F);
  m_pressed = false;
  invalid();
}

CMouseEventResult CPSKickButton::onMouseUp(const gui::CPoint& /*where*/,
                                           const gui::CButtonState& /*buttons*/) {
  release();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CPSKickButton::onMouseEntered(const gui::CPoint& /*where*/,
                                                const gui::CButtonState& /*buttons*/) {
  m_hover = true;
  invalid();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CPSKickButton::onMouseExited(const gui::CPoint& /*where*/,
                                               const gui::CButtonState& /*buttons*/) {
  m_hover = false;
  invalid();
  return CMouseEventResult::kHandled;
}

} // namespace qlx::presets

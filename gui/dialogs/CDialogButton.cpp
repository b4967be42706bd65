// SPDX-License-Identifier: ISC
#include "gui/dialogs/CDialogButton.h"

#include "gui/dialogs/DialogLook.h"
#include "gui/drawing/CDrawContext.h"

namespace qlx::gui {

CDialogButton::CDialogButton(const CRect& size, std::string_view title,
                             std::function<void()> pressed, std::function<void()> entered)
    : CView(size), m_title(title), m_pressed(std::move(pressed)), m_entered(std::move(entered)) {}

void CDialogButton::setHighlighted(bool highlighted) {
  if (highlighted == m_highlighted) return;
  m_highlighted = highlighted;
  setDirty();
}

void CDialogButton::draw(CDrawContext& context) {
  context.fillRoundRect(getViewSize(), 4.0, m_highlighted ? kDialogHighlight : kDialogButton);
  context.setFont(kDialogFont);
  context.setFontColor(m_highlighted ? kDialogHighlightText : kDialogText);
  context.drawString(m_title, getViewSize());
}

CMouseEventResult CDialogButton::onMouseDown(const CPoint& /*where*/, const CButtonState& buttons) {
  return buttons.isLeftButton() ? CMouseEventResult::kHandled : CMouseEventResult::kNotHandled;
}

CMouseEventResult CDialogButton::onMouseUp(const CPoint& where, const CButtonState& /*buttons*/) {
  if (getViewSize().contains(where)) m_pressed();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CDialogButton::onMouseEntered(const CPoint& /*where*/,
                                                const CButtonState& /*buttons*/) {
  m_entered();
  return CMouseEventResult::kHandled;
}

} // namespace qlx::gui

// SPDX-License-Identifier: ISC
#include "editor/MyFrame.h"

namespace qlx::editor {

namespace {

bool isMenuKey(const gui::CKeyCode& key) {
  return (key.virtualKey == gui::VirtualKey::kMenu && key.modifiers == 0U) ||
         (key.virtualKey == gui::VirtualKey::kF10 && key.modifiers == platform::kModifierShift);
}

} // namespace

gui::CMouseEventResult MyFrame::platformOnMouseDown(const gui::CPoint& where,
                                                    const gui::CButtonState& buttons) {
  takeKeyboardFocus();
  const bool modal = getModalView() != nullptr;
  const auto result = CFrame::platformOnMouseDown(where, buttons);
  const bool free = result == gui::CMouseEventResult::kNotHandled && !modal;
  if (!free || !buttons.isRightButton() || !m_openContextMenu) return result;
  m_openContextMenu(getViewAt(where), where);
  return gui::CMouseEventResult::kHandledDontNeedMoves;
}

bool MyFrame::platformOnKeyDown(const gui::CKeyCode& key) {
  if (CFrame::platformOnKeyDown(key)) return true;
  const bool busy = getModalView() != nullptr || isInGesture() ||
                    (getFocusView() != nullptr && getFocusView()->isEditingText());
  if (busy || !isMenuKey(key) || !m_openContextMenu) return false;
  const gui::CView* const view = getRingView() != nullptr ? getRingView() : getFocusView();
  const gui::CRect place = view != nullptr ? view->getRingPlace() : getViewSize();
  m_openContextMenu(view, view != nullptr ? gui::CPoint{place.left, place.bottom} : place.centre());
  return true;
}

} // namespace qlx::editor

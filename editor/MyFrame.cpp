// SPDX-License-Identifier: ISC
#include "editor/MyFrame.h"

namespace qlx::editor {

gui::CMouseEventResult MyFrame::platformOnMouseDown(const gui::CPoint& where,
                                                    const gui::CButtonState& buttons) {
  takeKeyboardFocus();
  const bool modal = getModalView() != nullptr;
  const auto result = CFrame::platformOnMouseDown(where, buttons);
  const bool free = result == gui::CMouseEventResult::kNotHandled && !modal;
  if (!free || !buttons.isRightButton() || !m_contextClicked) return result;
  m_contextClicked(where);
  return gui::CMouseEventResult::kHandledDontNeedMoves;
}

} // namespace qlx::editor

// SPDX-License-Identifier: ISC
#include "editor/MyFrame.h"

namespace qlx::editor {

gui::CMouseEventResult MyFrame::platformOnMouseDown(const gui::CPoint& where,
                                                    const gui::CButtonState& buttons) {
  takeKeyboardFocus();
  return CFrame::platformOnMouseDown(where, buttons);
}

} // namespace qlx::editor

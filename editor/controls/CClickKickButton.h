// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CKickButton.h"

namespace qlx::editor {

/// A momentary button: 1 while it is held, 0 after. The listener is told of both.
class CClickKickButton final : public gui::CKickButton {
 public:
  using CKickButton::CKickButton;

  gui::CMouseEventResult onMouseDown(const gui::CPoint& where,
                                     const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseUp(const gui::CPoint& where,
                                   const gui::CButtonState& buttons) override;

 private:
  void tellIfChanged();
};

} // namespace qlx::editor

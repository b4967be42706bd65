// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CKickButton.h"

namespace qlx::presets {

/// A button of the preset panel that opens a file dialog; three frames: rest, pointer over it,
/// pressed. While the listener is told, the value is 1, or 0.5 for the right button alone. The
/// press is over at once: the mouse belongs to the dialog then.
class CSaveLoadButton final : public gui::CKickButton {
 public:
  using CKickButton::CKickButton;

  void draw(gui::CDrawContext& context) override;
  gui::CMouseEventResult onMouseDown(const gui::CPoint& where,
                                     const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseEntered(const gui::CPoint& where,
                                        const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseExited(const gui::CPoint& where,
                                       const gui::CButtonState& buttons) override;

 private:
  bool m_hover = false;
};

} // namespace qlx::presets

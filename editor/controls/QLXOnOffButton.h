// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/COnOffButton.h"

namespace qlx::editor {

/// A two-state button that tells its listener twice per press: the value it had and the value it
/// has now.
class QLXOnOffButton final : public gui::COnOffButton {
 public:
  using COnOffButton::COnOffButton;

  void draw(gui::CDrawContext& context) override;
  gui::CMouseEventResult onMouseDown(const gui::CPoint& where,
                                     const gui::CButtonState& buttons) override;
};

} // namespace qlx::editor

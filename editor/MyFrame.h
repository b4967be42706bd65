// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CFrame.h"

namespace qlx::editor {

/// The editor's frame. A click into it asks for the keyboard, so that keys reach the lever without
/// the host's giving the window the focus first.
class MyFrame final : public gui::CFrame {
 public:
  using CFrame::CFrame;

  gui::CMouseEventResult platformOnMouseDown(const gui::CPoint& where,
                                             const gui::CButtonState& buttons) override;
};

} // namespace qlx::editor

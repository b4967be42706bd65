// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CFrame.h"

#include <functional>
#include <utility>

namespace qlx::editor {

/// The editor's frame. A click into it asks for the keyboard, so that keys reach the lever without
/// the host's giving the window the focus first. A right click that no view takes is the frame's.
class MyFrame final : public gui::CFrame {
 public:
  using CFrame::CFrame;

  gui::CMouseEventResult platformOnMouseDown(const gui::CPoint& where,
                                             const gui::CButtonState& buttons) override;

  /// Called with the place of a right click that no view took; not behind a modal view.
  void onContextClick(std::function<void(const gui::CPoint& where)> clicked) {
    m_contextClicked = std::move(clicked);
  }

 private:
  std::function<void(const gui::CPoint& where)> m_contextClicked;
};

} // namespace qlx::editor
